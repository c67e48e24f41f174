// VQRTObjectBody: one record of a rich text tree.
#ifndef QUILLON_VQ_RICHTEXT_VQRTOBJB_H
#define QUILLON_VQ_RICHTEXT_VQRTOBJB_H

#include <memory>
#include <vector>

#include "vq/richtext/recbytes.h"
#include "vq/richtext/rtfwd.h"
#include "vq/richtext/rttype.h"
#include "vq/richtext/signature.h"

namespace vq {
class Edit;
class RecordBytes;
class RecordWriter;
}  // namespace vq

// Of an object that has changed since the last write, or holds one that has.
inline constexpr unsigned char VQRTOBJECTBODY_DIRTY = 0x01;
// Of one whose record in the stream is not its own bytes.
inline constexpr unsigned char VQRTOBJECTBODY_CDOUTDATED = 0x10;

// A leaf of the tree, and base of all other bodies. Its content is a view on a loaded block until the first change
// makes a value block of its own; the value block always has an even size. A parent counts each of its children
// once; links to parent and siblings are not counted, so that a tree goes when its owner goes, and a handle that
// is left on one of its objects then sits on a closed body.
//
// Operations return their status and leave the throw rule to the handles. Nearly all of them give
// VQERR_OBJECT_CLOSED on a closed body.
class VQ_API VQRTObjectBody : public VQBody {
 public:
  // A record in a loaded block; `length` may be odd where the block ends. Counts on the source.
  VQRTObjectBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // A new record: the header alone, in the form of the signature. Signature 0 makes no record.
  VQRTObjectBody(VQRTTYPE type, unsigned short signature);
  ~VQRTObjectBody() override;

  // Leaves the tree, drops the content and the session's view of it. VQWARN_NOT_OPEN when repeated.
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  // The virtual operations that subclasses replace, in slot order.
  virtual VQSTATUS ConvertLinks(VQRichText* source, VQRichText* target);
  virtual VQSTATUS ConvertObjects(VQRichText* source, VQRichText* target);
  // The object's own font where that is one of a font table, else VQWARN_NOT_FOUND.
  virtual VQSTATUS FindTableFont(VQFontStyle* style);
  // What ConvertObjects does about stored objects, for a text that is on its way into a slate.
  virtual VQSTATUS CarryObjects(VQSlateBody* slate);
  // Takes the content of an object of the same type; reopens a closed body. VQERR_INVALID_PARAMETER for null or
  // itself, VQERR_INAPPROPRIATE for another type.
  virtual VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options);
  virtual VQSTATUS Delete();
  virtual VQSTATUS FindContainer(VQRTTYPE type, VQRTObject* container);
  virtual unsigned long GetEndIndexValue() const;
  virtual unsigned long GetIndexCount() const;
  virtual unsigned long GetIndexValue() const;
  virtual VQSTATUS GetRichText(VQRichText* richText);
  virtual VQSTATUS GetText(VQString* text);
  virtual VQSTATUS GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text);
  // Keeps paragraph records and tables apart from their neighbours after an insert; `cursor` may be null.
  virtual VQSTATUS AdjustNeighbours(int before, int after, VQRTCursor* cursor);
  virtual int IsClosable() const;
  virtual int IsSelectionValid(const VQRTObject& object, VQRTSelection* selection);
  // Takes the object out of its tree with its content kept, and with it the tree's count: hold a handle; with
  // keepInTree 0 a container loses its children.
  virtual VQSTATUS RemoveThis(int keepInTree);
  virtual VQSTATUS ShiftLinkIndex(int kind, unsigned long delta);
  virtual VQSTATUS SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                                unsigned long mask);
  virtual VQSTATUS SetFontStyle(const VQRTCursor& cursor, const VQFontStyle& style);
  // Padded bytes of the record, of a container with all that is in it.
  virtual unsigned long GetSize() const;
  virtual int IsValid() const;
  virtual VQSTATUS ConvertFonts(VQItem* table);
  virtual VQSTATUS SetDirty(int dirty);
  virtual void SetIndexValue(unsigned long value);
  // Hands the record to the writer, with those ahead of it that lead it. Children are the writer's own work.
  virtual VQSTATUS Update(vq::RecordWriter& writer);
  virtual VQSTATUS WriteValueBlock();

  // An empty body of the same class and type, for copies.
  [[nodiscard]] virtual VQRTObjectBody* MakeSame() const;
  // A record that stands ahead of its parent's in the stream.
  int LeadsParent() const { return Type == VQRTTYPE_TEXT_STYLE_EXT || Type == VQRTTYPE_FIELD_EXTENSION; }

  int IsClosed() const { return Closed; }
  int IsDirty() const { return RTObjectBodyFlags & VQRTOBJECTBODY_DIRTY; }
  VQRTTYPE GetType() const { return static_cast<VQRTTYPE>(Type); }
  // For objects that change their kind in place, as paragraph references do.
  void SetType(VQRTTYPE type) { Type = static_cast<unsigned char>(type); }
  int IsType(VQRTTYPE type) const { return vq::IsRTType(Type, type); }
  int UseValueBlock() const { return Content.IsOwn(); }

  // This body as one that can hold others; null when it cannot.
  VQRTBaseContainerBody* AsBase();
  const VQRTBaseContainerBody* AsBase() const;
  VQRTBaseContainerBody* GetParent() const { return Parent; }
  VQRTObjectBody* GetPrevious() const { return Previous; }
  VQRTObjectBody* GetNext() const { return Next; }
  // The container at the top of the tree, of any kind; null for an object outside one.
  VQRTBaseContainerBody* GetTop() const;
  // The rich text that owns the tree, null when none does.
  VQRichTextBody* GetRichTextBody() const;
  // Null objects are right of everything. Other than at handles, characters play no part.
  int IsLeftOf(const VQRTObjectBody* other) const;

  // A detached object is put beside this one, which must stand in a container: VQERR_RT_ALREADY_MEMBER,
  // VQERR_RT_NOT_MEMBER, VQERR_CORRUPTED when the index range is used up.
  [[nodiscard]] VQSTATUS InsertNextSibling(VQRTObjectBody* object);
  [[nodiscard]] VQSTATUS InsertPreviousSibling(VQRTObjectBody* object);

  // The record as it stands. Sizes are padded, offsets from the record's start.
  unsigned short GetCDSignature() const;
  std::uint32_t GetRecordSize() const;
  [[nodiscard]] VQSTATUS ReadRecord(std::uint32_t offset, void* buffer, std::uint32_t size) const;
  [[nodiscard]] VQSTATUS ReadODS(unsigned short code, void* target, std::uint32_t offset) const;
  // Write into the value block, which grows as needed. The header's length is the caller's to keep right.
  [[nodiscard]] VQSTATUS WriteRecord(std::uint32_t offset, const void* bytes, std::uint32_t size);
  [[nodiscard]] VQSTATUS WriteODS(unsigned short code, const void* source, std::uint32_t offset);
  // Replaces the whole record; `length` bytes, padded here.
  [[nodiscard]] VQSTATUS SetRecord(const void* bytes, std::uint32_t length);

 protected:
  friend class VQRTBaseContainerBody;
  friend class VQRTContainerBody;
  friend class VQRichTextBody;
  friend class VQRichTextParser;
  friend class vq::Edit;
  friend class vq::RecordWriter;
  friend class vq::RecordBytes;

  void SetFlag(unsigned char flag, bool on) {
    RTObjectBodyFlags = static_cast<unsigned char>(on ? RTObjectBodyFlags | flag : RTObjectBodyFlags & ~flag);
  }
  // Copies the record into a value block of at least `size` bytes and marks the object dirty.
  void MakeValue(std::uint32_t size);
  // Points at the same bytes in their new place and drops the value block.
  void Rebind(vq::RecordSource* source, std::uint32_t offset, std::uint32_t size);
  void DropContent();
  void NoteWrite(std::uint32_t offset, std::uint32_t size);
  // The same for an edit that may be taken back.
  void GiveUpContent();
  // By an edit that was taken back: what was remembered of the bytes no longer holds.
  virtual void ContentRestored() { Counted = false; }
  // Takes the bytes along before the object leaves the block that they lie in.
  void KeepContent();
  // Dirty bit and that of all above, whose blocks will be written anew.
  void MarkDirty();
  // A copy of another object's bytes, whatever the types.
  void TakeRecord(const VQRTObjectBody& source);

  bool Closed : 1;
  bool HoldsChildren : 1;    // this is a VQRTBaseContainerBody
  bool WatchesChildren : 1;  // and wants to hear of them
  // For runs: what they have counted still holds for the bytes.
  mutable bool Counted : 1;
  unsigned char Type;
  unsigned char RTObjectBodyFlags;  // VQRTOBJECTBODY_...
  std::uint32_t IndexValue;
  VQRTBaseContainerBody* Parent;
  VQRTObjectBody* Previous;
  VQRTObjectBody* Next;
  vq::RecordContent Content;
};

namespace vq {

// The bytes of a record for as long as this object lives; the body must not change meanwhile.
class RecordBytes {
 public:
  explicit RecordBytes(const VQRTObjectBody& body) : RecordBytes(body, Lock) {}
  // For walks: the lock stays from one object of a block to the next.
  RecordBytes(const VQRTObjectBody& body, MemoryLock& lock);

  const unsigned char* Get() const { return Bytes; }
  std::uint32_t GetSize() const { return Size; }

 private:
  MemoryLock Lock;  // unless another one serves
  const unsigned char* Bytes;
  std::uint32_t Size;
};

}  // namespace vq

#endif
