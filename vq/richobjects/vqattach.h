// VQAttachment: a file that is attached to a slate.
#ifndef QUILLON_VQ_RICHOBJECTS_VQATTACH_H
#define QUILLON_VQ_RICHOBJECTS_VQATTACH_H

#include <string>

#include "engine/records.h"
#include "vq/store/vqitem.h"
#include "vq/values/vqstring.h"

class VQDatetime;

// The item of an attachment, with its record read. State bit 8 says that it has one: it goes when the item is closed or
// deleted. The record is a copy, which a save or a read back of the slate makes anew.
class VQ_API VQAttachmentBody : public VQItemBody {
 public:
  static constexpr unsigned short kHasFileObject = kOpen;

  VQAttachmentBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  ~VQAttachmentBody() override;

  VQCLASSID GetClassID() const override;
  VQSTATUS Rebound() override;
  void ForgetContent() override { static_cast<void>(ReadRecord()); }
  void MarkDeleted() override;
  // The object's bytes become a new object of that slate's database; the copy's name is one that no attachment there
  // has.
  VQSTATUS CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags, vq::ItemPlace* first) override;

  int HasFileObject() const { return (State & kHasFileObject) != 0; }
  const FILEOBJECT& GetFileObject() const { return FileObject; }
  const std::string& GetAttachmentName() const { return AttachmentName; }
  const std::string& GetFilepath() const { return FilePath; }
  // Platform text. Writes all of the file or leaves what is there.
  [[nodiscard]] VQSTATUS Detach(const std::string& path);
  // The same; `place` may be null.
  [[nodiscard]] VQSTATUS CopyTo(VQSlateBody* slate, std::string_view itemName, unsigned short itemFlags,
                                vq::ItemPlace* place);
  // Sets or clears bits of the record's flags.
  [[nodiscard]] VQSTATUS SetFlag(unsigned short bits, bool on);

 private:
  [[nodiscard]] VQSTATUS ReadRecord();

  FILEOBJECT FileObject;
  std::string AttachmentName;
  std::string FilePath;
};

// A read view of an attached file. A handle without a file object, because it is null or its item has gone, gives
// VQERR_OBJECT_NOT_INITIALIZED, thrown by the getters. Names of attachments are compared exactly and are each one's own
// in a slate.
class VQ_API VQAttachment : public VQItem {
 public:
  VQAttachment() = default;
  VQAttachment(const VQAttachment& other) : VQItem(other) {}
  // Throws VQERR_INCORRECT_ITEM_TYPE for an item that is no attached file.
  VQAttachment(const VQItem& item);
  explicit VQAttachment(VQAttachmentBody* body);
  VQAttachment& operator=(const VQAttachment& other) = default;
  VQAttachment& operator=(const VQItem& item);
  VQCLASSID GetClassID() const override;

  // Writes the file to `path`: all of it, or what was there stays. A file of that name is replaced; nothing is written
  // elsewhere, whatever the attachment's own name is. Its change time and read-only attribute go along.
  // VQERR_SLATE_NOT_OPEN, VQERR_NULL_STRING, and engine statuses: ENG_ERR_NO_OBJECT and ENG_ERR_OBJECT_CONTENT for an
  // attachment whose bytes are gone or are not those that its record tells of, ENG_ERR_FILE_OPEN, ENG_ERR_FILE_WRITE.
  VQSTATUS Detach(const VQString& path) const;
  // Whether the bytes are there, as far as their size tells: the statuses of Detach.
  VQSTATUS Check() const;
  VQString GetAttachmentName() const;
  // Where the file comes from: the record's host type and 0x0F00.
  unsigned short GetAttachmentType() const;
  VQDatetime GetFileLastModified() const;
  // The path that the file had when it was attached, as it was given; the name where none was kept.
  VQString GetFilepath() const;
  // Bytes of the file, however they are stored.
  unsigned long GetFileSize() const;
  int IsCompressed() const;
  int IsFilePrivate() const;
  int IsFileReadOnly() const;
  // Whether a rich text of the slate shows it: known from when it is put there, and until a save without it.
  int IsInRichText() const;
  int IsSigned() const;

  // For the library's own code: the body, or null.
  VQAttachmentBody* GetAttachmentBody() const { return static_cast<VQAttachmentBody*>(Body); }
};

namespace vq {

// The name under which a slate keeps its attachments.
inline constexpr std::string_view kAttachmentItem = "$FILE";

// The body for an item of type 3: VQAttachmentBody for a file, VQSlateItemBody for anything else.
VQItemBody* MakeObjectBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place);
// The attachment of that name; VQWARN_NOT_FOUND. `attachment` may be null.
[[nodiscard]] VQSTATUS FindAttachment(VQSlateBody* slate, std::string_view name, VQAttachment* attachment);
// Attaches the file under that name, or under one made from it where that is in use.
enum class Compression { kNone, kStream };
[[nodiscard]] VQSTATUS AttachFile(VQSlateBody* slate, const std::string& path, std::string_view name,
                                  Compression compression, VQAttachment* attachment);
// A copy of an attachment of any open slate. VQERR_ATTACHMENT_UNINITIALIZED, VQERR_ATTACHMENT_SIGNED.
[[nodiscard]] VQSTATUS CopyAttachment(const VQAttachment& source, VQSlateBody* slate, VQAttachment* attachment);

}  // namespace vq

#endif
