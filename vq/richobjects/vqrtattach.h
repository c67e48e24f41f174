// VQRTEmbeddedObject and VQRTAttachment: what a rich text shows of the files of its slate.
#ifndef QUILLON_VQ_RICHOBJECTS_VQRTATTACH_H
#define QUILLON_VQ_RICHOBJECTS_VQRTATTACH_H

#include <string>
#include <vector>

#include "vq/richobjects/vqattach.h"
#include "vq/richobjects/vqgraphic.h"
#include "vq/richtext/font.h"
#include "vq/richtext/vqrtbase.h"

// A hotspot with data that refers to something stored beside the text. Its children are what it shows and, as the last,
// its end.
class VQ_API VQRTEmbeddedObjectBody : public VQRTElementBody {
 public:
  VQRTEmbeddedObjectBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // A new one, with its end.
  VQRTEmbeddedObjectBody(VQRTTYPE type, unsigned short hotspotType);

  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;

  // The begin record and the bytes behind it; VQERR_RT_INVALID for a record that is shorter than it says.
  [[nodiscard]] VQSTATUS ReadBegin(CDHOTSPOTBEGIN* record, std::vector<unsigned char>* data) const;
  [[nodiscard]] VQSTATUS WriteBegin(CDHOTSPOTBEGIN record, const std::vector<unsigned char>& data);
  // The data as GetData gave it last.
  std::vector<unsigned char>& GetDataCopy() { return DataCopy; }

 protected:
  struct Unmade {};
  VQRTEmbeddedObjectBody(VQRTTYPE type, Unmade);

 private:
  std::vector<unsigned char> DataCopy;
};

// The one of an attachment: the data is the attachment's name and the path of its file, each with a NUL behind it.
class VQ_API VQRTAttachmentBody : public VQRTEmbeddedObjectBody {
 public:
  VQRTAttachmentBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  VQRTAttachmentBody();

  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
  VQSTATUS Close() override;
  // The copy can still find the attachment, as long as the slate that has it stays open.
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  VQSTATUS ConvertObjects(VQRichText* source, VQRichText* target) override;
  VQSTATUS CarryObjects(VQSlateBody* slate) override;

  [[nodiscard]] VQSTATUS ReadNames(std::string* name, std::string* path) const;
  [[nodiscard]] VQSTATUS WriteNames(std::string_view name, std::string_view path);
  // The attachment that the name stands for; VQWARN_NOT_FOUND.
  [[nodiscard]] VQSTATUS Resolve(VQAttachment* attachment) const;
  // Shows that attachment, or a file that is attached when the object comes into the rich text of a slate.
  void Keep(const VQAttachment& attachment) { Kept = attachment; }
  void KeepFile(const std::string& path) { File = path; }

  // Names the attachment, of the slate that the text is on or is about to be.
  [[nodiscard]] VQSTATUS Show(const VQAttachment& attachment);

 private:
  explicit VQRTAttachmentBody(Unmade unmade);
  bool HasSlate() const;
  [[nodiscard]] VQSTATUS LoseAttachment(VQSlateBody* slate, const std::string& name, const std::string& path);

  VQAttachment Kept;  // where it is outside the slate's own rich text
  std::string File;   // platform text
};

// Getters throw, VQERR_OBJECT_NOT_INITIALIZED on a null handle.
class VQ_API VQRTEmbeddedObject : public VQRTElement {
 public:
  VQRTEmbeddedObject() = default;
  VQRTEmbeddedObject(const VQRTObject& object);
  VQRTEmbeddedObject(const VQRTEmbeddedObject& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQRTEmbeddedObject& operator=(const VQRTEmbeddedObject& other) = default;
  VQCLASSID GetClassID() const override;

  // The hotspot's data; VQERR_NULL_POINTER. The bytes are the object's: good until its next GetData or until it goes.
  VQSTATUS GetData(unsigned short* length, char** data) const;
  // From `offset` on, which is at most the present length, the data becomes these `length` bytes and ends there.
  // VQERR_INVALID_PARAMETER, also for more than 65,000 bytes in all.
  VQSTATUS SetData(unsigned short offset, unsigned short length, char* data);
  unsigned long GetHotspotFlags() const;
  VQSTATUS SetHotspotFlags(unsigned long flags);
  unsigned short GetHotspotType() const;
  // The number in the record; what class of object it is stays until it is loaded again.
  VQSTATUS SetHotspotType(unsigned short type);

  VQRTEmbeddedObjectBody* GetEmbeddedBody() const { return static_cast<VQRTEmbeddedObjectBody*>(GetRTObjectBody()); }

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// An attachment shown in a rich text: a graphic, a text under it, and the name of the attachment. Put into the rich
// text of another slate, the attachment is copied there, and a file that is none yet is attached:
// VQERR_ATTACHMENT_NO_SLATE for a rich text that stands alone, VQERR_ATTACHMENT_SIGNED, VQERR_ATTACHMENT_UNINITIALIZED
// when the attachment is not to be had any more.
class VQ_API VQRTAttachment : public VQRTEmbeddedObject {
 public:
  VQRTAttachment() = default;
  // A file, and the name that its attachment is to get: the file's own when it is empty. Throws VQERR_NULL_STRING for
  // no path, VQERR_INVALID_PARAMETER for a name that has a NUL or more bytes than the object holds.
  VQRTAttachment(const VQString& path, const VQString& name);
  // Throws VQERR_ATTACHMENT_UNINITIALIZED or VQERR_ATTACHMENT_SIGNED.
  explicit VQRTAttachment(const VQAttachment& attachment);
  VQRTAttachment(const VQRTObject& object);
  VQRTAttachment(const VQRTAttachment& other) : VQRTEmbeddedObject(other) {}
  using VQRTObject::operator=;
  VQRTAttachment& operator=(const VQRTAttachment& other) = default;
  VQCLASSID GetClassID() const override;

  // As VQAttachment::Detach. VQWARN_NOT_FOUND when the slate has no attachment of the name.
  VQSTATUS Detach(const VQString& path) const;
  VQSTATUS GetAttachment(VQAttachment* attachment) const;
  // Shows another attachment; one of another slate is copied. The display text stays. VQERR_ATTACHMENT_UNINITIALIZED,
  // VQERR_ATTACHMENT_SIGNED.
  VQSTATUS SetAttachment(const VQAttachment& attachment);
  VQString GetAttachmentName() const;
  // The name and the size, such as "plan.pdf - 1204 bytes", unless something else was set. Empty when there is none.
  VQString GetDisplayText() const;
  VQSTATUS SetDisplayText(const VQString& text);
  VQFontStyle GetDisplayTextFontStyle() const;
  VQSTATUS SetDisplayTextFontStyle(const VQFontStyle& style);
  // The last part of the path.
  VQString GetFilename() const;
  VQString GetFilepath() const;
  // VQWARN_NOT_FOUND when it has none.
  VQSTATUS GetGraphic(VQGraphic* graphic) const;
  // A copy takes the place of the graphic; a null one leaves none.
  VQSTATUS SetGraphic(const VQGraphic& graphic);

  VQRTAttachmentBody* GetAttachmentBody() const { return static_cast<VQRTAttachmentBody*>(GetRTObjectBody()); }

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
