// VQItem: a named, typed value, in a slate or standing alone.
//
// A value is a type word and data. Offsets count from the first byte behind the type word; sizes of whole values
// count the type word. Handles on one item share one body: while any handle of the item lives, the slate gives out
// that body again. A change goes into the open slate and reaches the store with VQSlate::Save. A handle keeps its
// slate's body alive; once the slate is closed, value operations give VQERR_ITEM_UNINITIALIZED.
//
// Operations on a handle without a body give VQERR_OBJECT_NOT_INITIALIZED, or throw it where the result is no status.
#ifndef QUILLON_VQ_STORE_VQITEM_H
#define QUILLON_VQ_STORE_VQITEM_H

#include <string>
#include <string_view>

#include "vq/frame/vqcommon.h"
#include "vq/store/itemplace.h"

class VQDatetime;
class VQSlate;
class VQString;

// Value types.
inline constexpr unsigned short TYPE_COMPOSITE = 0x0001;
inline constexpr unsigned short TYPE_OBJECT = 0x0003;
inline constexpr unsigned short TYPE_NUMBER = 0x0300;
inline constexpr unsigned short TYPE_NUMBER_RANGE = 0x0301;
inline constexpr unsigned short TYPE_TIME = 0x0400;
inline constexpr unsigned short TYPE_TIME_RANGE = 0x0401;
inline constexpr unsigned short TYPE_TEXT = 0x0500;
inline constexpr unsigned short TYPE_TEXT_LIST = 0x0501;

// Item flags.
inline constexpr unsigned short VQITEMFLAGS_SIGN = 0x0001;
inline constexpr unsigned short VQITEMFLAGS_SEAL = 0x0002;
inline constexpr unsigned short VQITEMFLAGS_SUMMARY = 0x0004;
inline constexpr unsigned short VQITEMFLAGS_READERS_WRITERS = 0x0020;
inline constexpr unsigned short VQITEMFLAGS_NAMES = 0x0040;
inline constexpr unsigned short VQITEMFLAGS_PLACEHOLDER = 0x0100;
inline constexpr unsigned short VQITEMFLAGS_PROTECTED = 0x0200;
inline constexpr unsigned short VQITEMFLAGS_READERS = 0x0400;

// What VQSlate::CreateItem does when the name is in use.
enum VQITEMOPTION : unsigned int {
  // The new value's entries or records join the one item of that name. VQERR_ITEM_EXISTS when the name stands
  // several times or its value can't be joined, VQERR_INCORRECT_ITEM_TYPE when the two values differ in kind.
  VQITEMOPTION_APPEND = 0x10000,
  VQITEMOPTION_REPLACE = 0x20000,  // all items of that name go
  VQITEMOPTION_UNIQUE = 0x30000,   // VQERR_ITEM_EXISTS
};

// The value of an item. Bodies of items in a slate are made by the slate (vq/store/makers.h); the constructors here
// are for values that stand alone.
class VQ_API VQItemBody : public VQBody {
 public:
  // State bits.
  static constexpr unsigned short kDirty = 1;
  static constexpr unsigned short kExpandOnSave = 2;
  static constexpr unsigned short kOwnsValue = 4;
  static constexpr unsigned short kOpen = 8;
  static constexpr unsigned short kDeleted = 32;

  // Without a value. Throws VQERR_NOT_INITIALIZED when no session is.
  VQItemBody();
  // From a value block whose bytes stay the caller's; a size below 2 throws VQERR_INVALID_PARAMETER.
  VQItemBody(std::string_view name, unsigned short flags, unsigned short type, const BLOCKID& value,
             unsigned long size);
  // From data behind a type word: a value of 2 to 65,535 bytes in all, else VQERR_INVALID_PARAMETER is thrown.
  VQItemBody(unsigned short type, const void* data, unsigned long length);
  // An item that is in the slate.
  VQItemBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  // As above, found by name; throws VQERR_ITEM_DOES_NOT_EXIST.
  VQItemBody(VQSlateBody* slate, std::string_view name);
  ~VQItemBody() override;
  VQItemBody(const VQItemBody&) = delete;
  VQItemBody& operator=(const VQItemBody&) = delete;

  // Flushes what is dirty while the slate is open, then lets the value go. A subclass whose Flush does more than
  // this class's calls Close in its own destructor. VQWARN_NOT_OPEN the second time.
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  // Virtual operations return their status and leave the throw rule to the handle.
  // Down to the type word; a list falls back to its single type.
  virtual VQSTATUS Clear();
  // Opens a gap of `size` bytes of unspecified content.
  virtual VQSTATUS Expand(unsigned long offset, unsigned long size);
  // Entries of a text, number or time value; 0 for a value of size 2; 1 for any other type.
  virtual unsigned long GetEntryCount();
  virtual unsigned short GetFlags();
  virtual const char* GetName() const;
  virtual unsigned long GetValueSize();
  // Whether this is the item at that place of the open slate.
  virtual int IsBlock(ENGHANDLE pool, unsigned short offset) const;
  virtual int IsDirty();
  // Called when the item's place was asked afresh (after a save, or a read back): places kept beside it are void,
  // and AddBlockID follows for each later item of the name.
  virtual VQSTATUS Rebound();
  // Drops what is kept beside the value and was read from it: the value may have been changed by others.
  virtual void ForgetContent() {}
  // Address of the type word; null when the value is gone. Locks nest.
  virtual void* Lock();
  virtual VQSTATUS Read(unsigned long offset, unsigned long size, void* buffer);
  virtual VQSTATUS ReadODS(unsigned long offset, unsigned short type, void* target);
  // The whole value's new size, 2 or more; bytes up to the smaller size stay. Refused while locked.
  virtual VQSTATUS Resize(unsigned long size);
  // Puts what is kept outside the slate into it. The value of a plain item is there already: the engine is told that
  // it changed, and the dirty bit clears. On failure the item stays dirty.
  virtual VQSTATUS Flush();
  virtual void SetDirty(int dirty);
  // Closes a gap.
  virtual VQSTATUS Shorten(unsigned long offset, unsigned long size);
  virtual VQSTATUS Unlock();
  // Lets the value go, and frees it when this body owns it.
  virtual VQSTATUS Free();
  virtual VQSTATUS Write(unsigned long offset, unsigned long size, const void* data);
  virtual VQSTATUS WriteODS(unsigned long offset, unsigned short type, const void* source);
  // A number or time list of one single entry becomes the single form; anything else stays as it is.
  virtual VQSTATUS Collapse();
  // A single number or time becomes a list; an empty one a list of no entries. Other types stay as they are.
  virtual VQSTATUS MakeList();

  // The value as `type` word and `length` bytes of data: one step, and on failure the old value is still there.
  VQSTATUS ReplaceValue(unsigned short type, const void* data, unsigned long length);
  // For values that stand alone: zero bytes, or the bytes behind a type word of the present type.
  VQSTATUS Allocate(unsigned long size, unsigned long offset);
  // List form as asked for by the expand-on-save bit, single form otherwise. Runs once per item and save.
  VQSTATUS PrepareForSave();
  // Adds the value to another slate as an item of that name, behind all items; *first tells where.
  virtual VQSTATUS CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags, vq::ItemPlace* first);
  // Adds another item's content behind this one's; VQERR_ITEM_EXISTS where values of this kind can't be joined.
  virtual VQSTATUS Join(VQItemBody* source);
  // Takes the item's new place in the open slate.
  VQSTATUS Rebind(const vq::ItemPlace& place);
  // The slate no longer has the item.
  virtual void MarkDeleted();
  // Whether one of the references is the slate's own.
  void SetKept(bool kept) { OwnReferences = kept ? 1 : 0; }
  // VQERR_ITEM_UNINITIALIZED unless there is a value: for an item in a slate, one whose slate is open.
  [[nodiscard]] VQSTATUS CheckValue() const;

  unsigned short GetType() const { return ValueType; }
  // For changes that keep the bytes; a type word in a value that is in memory is written too.
  VQSTATUS SetType(unsigned short type);
  unsigned short GetState() const { return State; }
  void SetState(unsigned short bits, bool on);
  bool IsSlateItem() const { return Slate != nullptr; }
  VQSlateBody* GetSlateBody() const { return Slate; }
  const BLOCKID& GetItemBlock() const { return ItemBlockID; }
  const BLOCKID& GetValueBlock() const { return ValueBlockID; }
  // Store text, as the slate spells it.
  std::string_view GetNameText() const;
  // Takes effect in the slate at once for an item that is in one.
  VQSTATUS SetName(std::string_view name);
  // The name only, where the slate has it already.
  void TakeName(std::string_view name) { Name = name; }
  // Forgets what is known of the entries after a change of the bytes.
  void ForgetEntryCount() {
    EntryCount = -1;
    EntriesChecked = false;
  }

 protected:
  // Whether [offset, offset + size) lies in the data.
  [[nodiscard]] VQSTATUS CheckRange(unsigned long offset, unsigned long size) const;
  VQSTATUS ReallocateValue(unsigned long size);

 private:
  void ReleaseOwnParts() override;
  void BindSlate(VQSlateBody* slate);
  void DetachFromSlate();
  void QueryItem() const;
  VQSTATUS KeepChanges();
  bool IsSingleEntryList();

 protected:
  std::int32_t EntryCount;  // -1: not known
  std::uint16_t State;
  mutable std::uint16_t Flags;
  std::uint16_t ValueType;
  mutable bool QueryDone;  // name and flags are the engine's
  bool EntriesChecked;     // EntryCount is known, and the entries fill the value
  BLOCKID ItemBlockID;
  VQSlateBody* Slate;  // counted; null for a value that stands alone
  BLOCKID ValueBlockID;
  unsigned char* ValuePtr;  // null while unlocked
  std::int32_t LockCount;
  std::uint32_t ValueSize;
  mutable std::string Name;
};

// Pairs Lock with Unlock.
class VQItemLock {
 public:
  explicit VQItemLock(VQItemBody* body) : Item(body), Bytes(static_cast<unsigned char*>(body->Lock())) {}
  ~VQItemLock() {
    if (Bytes != nullptr) Item->Unlock();
  }
  VQItemLock(const VQItemLock&) = delete;
  VQItemLock& operator=(const VQItemLock&) = delete;
  // Null when there is no value.
  unsigned char* Value() const { return Bytes; }
  unsigned char* Data() const { return Bytes + 2; }

 private:
  VQItemBody* Item;
  unsigned char* Bytes;
};

// The body that a VQItem gets for a value type without a view of its own.
class VQ_API VQSlateItemBody : public VQItemBody {
 public:
  using VQItemBody::VQItemBody;
  VQCLASSID GetClassID() const override;
};

class VQ_API VQItem : public VQSmartPtr {
 public:
  VQItem();
  VQItem(const VQItem& other);
  explicit VQItem(VQItemBody* body);
  VQItem& operator=(const VQItem& other);
  VQItem& operator=(VQItemBody* body);
  VQCLASSID GetClassID() const override;

  // Gives a value of its own of `size` bytes (2 or more, type word included), zero behind byte `offset`; bytes in
  // front of it are kept. VQERR_INVALID_FOR_SLATE_ITEM for an item in a slate.
  VQSTATUS Alloc(unsigned long size, unsigned long offset);
  // Attaches. The body must be one that this class of handle may hold, else VQERR_INCORRECT_ITEM_TYPE. `slate` is
  // the slate that the body stands in, null for a value that stands alone.
  VQSTATUS Assign(VQSlateBody* slate, VQItemBody* body);
  VQSTATUS Expand(unsigned long offset, unsigned long size);
  VQSTATUS Shorten(unsigned long offset, unsigned long size);
  VQString GetName() const;
  unsigned long GetType() const;
  unsigned short GetFlags() const;
  unsigned long GetValueSize() const;
  // Throws VQERR_NOT_IN_SLATE for a value that stands alone.
  VQSlate GetSlate() const;
  // VQERR_NOT_IN_SLATE for a value that stands alone, VQERR_ITEM_UNINITIALIZED without a value; thrown.
  VQDatetime GetLastModified() const;
  int GetExpandOnSave() const;
  VQSTATUS SetExpandOnSave(int flag);
  int IsDeleted() const;
  int IsDirty() const;
  int IsSlateItem() const;
  int IsType(unsigned long type) const;
  // VQERR_ITEM_OFFSET, and nothing read or written, when the range leaves the value.
  VQSTATUS Read(unsigned long offset, unsigned long size, void* buffer) const;
  VQSTATUS ReadODS(unsigned long offset, unsigned short type, void* target) const;
  VQSTATUS Write(unsigned long offset, unsigned long size, const void* data);
  VQSTATUS WriteODS(unsigned long offset, unsigned short type, const void* source);

  // For the library's own code: the body, or null.
  VQItemBody* GetItemBody() const { return static_cast<VQItemBody*>(Body); }

 protected:
  // The body, or VQERR_OBJECT_NOT_INITIALIZED thrown.
  VQItemBody* RequireBody() const;
};

#endif
