// VQSlate: a document or design element of a database, bound by its identifier and opened at need.
//
// A handle is unbound, bound (it knows identifier, class and universal identifier) or open (it shares a body that
// holds the engine's slate). Handles copied from an open one share its body: closing one closes all. Changes stay
// in the open slate until Save. A body keeps its database's body alive; closing the database closes the slate.
//
// Operations on an unbound handle give VQERR_OBJECT_NOT_INITIALIZED, those that need the open slate on a closed one
// VQERR_SLATE_NOT_OPEN; thrown where the result is no status.
#ifndef QUILLON_VQ_STORE_VQSLATE_H
#define QUILLON_VQ_STORE_VQSLATE_H

#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vq/frame/objlist.h"
#include "vq/store/vqdbbody.h"
#include "vq/store/vqitem.h"

class VQAttachment;
class VQDatetime;
class VQIDTable;
class VQItemArray;
class VQRTObjectBody;
class VQRichTextBody;
class VQText;

// The bits of a slate's class, in the low word of a slate type.
inline constexpr unsigned short VQSLATECLASS_DOCUMENT = 0x0001;
inline constexpr unsigned short VQSLATECLASS_INFO = 0x0002;  // the about document
inline constexpr unsigned short VQSLATECLASS_FORM = 0x0004;
inline constexpr unsigned short VQSLATECLASS_VIEW = 0x0008;
inline constexpr unsigned short VQSLATECLASS_ICON = 0x0010;
inline constexpr unsigned short VQSLATECLASS_DESIGN = 0x0020;
inline constexpr unsigned short VQSLATECLASS_ACL = 0x0040;
inline constexpr unsigned short VQSLATECLASS_HELP_INDEX = 0x0080;
inline constexpr unsigned short VQSLATECLASS_HELP = 0x0100;  // the using document
inline constexpr unsigned short VQSLATECLASS_AGENT = 0x0200;
inline constexpr unsigned short VQSLATECLASS_FIELD = 0x0400;
inline constexpr unsigned short VQSLATECLASS_PRIVATE = 0x1000;  // one user's own; stands beside the bit of its class
inline constexpr unsigned short VQSLATECLASS_DEFAULT = 0x8000;  // the default design element of its class
inline constexpr unsigned short VQSLATECLASS_ALL = 0x7FFF;

// Design kinds, in the high word of a slate type.
enum VQDESIGNKIND : unsigned short {
  VQDESIGNKIND_NONE = 0,
  VQDESIGNKIND_FORM = 1,
  VQDESIGNKIND_SUBFORM = 2,
  VQDESIGNKIND_AGENT = 8,
  VQDESIGNKIND_VIEW = 14,
};

// VQSlate::Save flags.
inline constexpr unsigned short VQSAVE_FORCE = 0x0001;    // overwrite what someone else saved since the open
inline constexpr unsigned short VQSAVE_NO_STUB = 0x0004;  // set by itself in a database opened with 0x10000

// What VQSlate::Encrypt uses besides the key names of item SecretEncryptionKeys.
enum VQENCRYPTOPTION : unsigned int {
  VQENCRYPTOPTION_SECRET_KEYS = 0,
  VQENCRYPTOPTION_PUBLIC_KEY = 1,
};

class VQ_API VQSlate : public VQSmartPtr {
 public:
  VQSlate();
  // As Assign; a failure throws.
  VQSlate(VQDatabaseBody* database, unsigned long id);
  VQSlate(const VQSlate& other);
  // Binds to an open body; null gives an unbound handle.
  explicit VQSlate(VQSlateBody* body);
  ~VQSlate();
  // A slate of a type that this class of handle can't hold throws VQERR_INCORRECT_SLATE_TYPE and changes nothing.
  VQSlate& operator=(const VQSlate& other);
  VQSlate& operator=(VQSlateBody* body);

  VQCLASSID GetClassID() const override;
  const VQQuillonSession* GetSession() const override;
  // Whether the handle is unbound. A deletion stub and a bound, closed slate are not null.
  int IsNull() const override;

  // VQWARN_NOT_OPEN on a closed slate. Unsaved changes are dropped.
  virtual VQSTATUS Close();
  // 0 when it is open already. The engine's status (a deleted slate: 549) leaves the handle bound and closed.
  virtual VQSTATUS Open(unsigned long flags = 0);
  // For derived classes whose opening takes more.
  virtual VQSTATUS Open(unsigned long flags, unsigned long argument, int argument2 = 0);
  virtual VQSTATUS CreateSlateBody(unsigned long flags, unsigned long argument, int argument2);
  // Whether this class of handle may hold that slate: 0 or VQERR_INCORRECT_SLATE_TYPE. VQSlate takes every type.
  virtual VQSTATUS ValidateSlateType(const VQSlate& other) const;
  virtual VQSTATUS ValidateSlateType(const VQSlateBody* body) const;
  virtual VQSTATUS ValidateSlateType(unsigned long type) const;

  // Binds without opening, after letting go of what it held; a failure throws and leaves the handle unbound. A
  // deletion stub binds, with bit 31 of its identifier set.
  void Assign(VQDatabaseBody* database, unsigned long id);
  void Assign(VQDatabaseBody* database, const UNIVERSALSLATEID* universal);
  // Takes over an open engine slate.
  void Assign(VQDatabaseBody* database, void* handle);

  int IsOpen() const;
  // Writes all changes in one durable step. A slate that someone else saved since the open gives the engine's
  // status 551 (ENG_ERR_SLATE_CONFLICT) unless VQSAVE_FORCE is given, and then too if that save took an attachment or
  // a large value away that this slate still has and cannot bring back; after any failure the slate is open, its
  // changes are unsaved, and Save can be called again. A new slate has an identifier after its first save.
  VQSTATUS Save(unsigned short flags = 0);
  // With keep 0 the engine's slate becomes the caller's (EngSlateClose), with the item changes in it, and this
  // handle is unbound.
  void* GetSlateHandle(int keep = 1);
  // The two below are good as long as the handle is bound to the slate.
  const UNIVERSALSLATEID* GetUniversalID() const;
  const ORIGINATORID* GetOriginatorID() const;
  // 0 before the first save; bit 31 marks a deleted slate.
  unsigned long GetSlateID() const;
  // Class bits in the low word, design kind in the high word.
  unsigned long GetSlateType() const;
  // The first and the last of the names in $TITLE; an alias only when there are several.
  VQString GetName() const;
  VQString GetAlias() const;
  VQDatetime GetAddedToFile() const;
  VQDatetime GetCreated() const;
  VQDatetime GetLastAccessed() const;
  // Known without opening.
  VQDatetime GetLastModified() const;
  // Who saved it: the entries of $UpdatedBy, else of From; empty when neither is there.
  VQText GetAuthor() const;
  // Bytes of all values, attached objects with them.
  unsigned long GetSize() const;
  // Asks the engine, 1 also when a handle elsewhere deleted it.
  int IsDeleted() const;
  int IsEncrypted() const;
  int IsSigned() const;
  int IsModified() const;
  // The key names go into item SecretEncryptionKeys first; an empty name gives VQERR_NULL_STRING.
  VQSTATUS Encrypt(VQENCRYPTOPTION option);
  VQSTATUS Encrypt(const VQString& key);
  VQSTATUS Encrypt(const VQText& keys);
  VQSTATUS Decrypt();
  VQSTATUS Sign();
  VQSTATUS Unsign();
  VQDatabase GetDatabase() const;

  // An empty value of the kind that `item`'s class holds; a plain VQItem gets type 0. `item` may be null.
  VQSTATUS CreateItem(const VQString& name, VQItem* item, unsigned short flags = 0,
                      VQITEMOPTION option = VQITEMOPTION_UNIQUE);
  // `data` lies behind the type word.
  VQSTATUS CreateItem(const VQString& name, unsigned long type, const void* data, unsigned long size,
                      unsigned short flags = 0, VQITEMOPTION option = VQITEMOPTION_UNIQUE, VQItem* item = nullptr);
  // Copies, under the source's name and flags or under new ones.
  VQSTATUS CreateItem(const VQItem& source, VQITEMOPTION option = VQITEMOPTION_UNIQUE, VQItem* item = nullptr);
  VQSTATUS CreateItem(const VQString& name, const VQItem& source, unsigned short flags = 0,
                      VQITEMOPTION option = VQITEMOPTION_UNIQUE, VQItem* item = nullptr);
  // The first item of the name. VQWARN_NOT_FOUND leaves `item` alone, VQERR_INCORRECT_ITEM_TYPE when its class
  // can't hold the value.
  VQSTATUS GetItem(const VQString& name, VQItem* item) const;
  // All items, or those that have one of the given item flags.
  VQSTATUS GetItems(VQItemArray* items, unsigned long flags = 0) const;
  unsigned long GetItemCount() const;
  // The first one's type, 0 when there is no such item.
  unsigned long GetItemType(const VQString& name) const;
  // All items of the name; VQWARN_NOT_FOUND when there are none.
  VQSTATUS DeleteItem(const VQString& name);
  // This one item; the handle is detached.
  VQSTATUS DeleteItem(VQItem* item);
  VQSTATUS DeleteAllItems();
  int HasItem(const VQString& name) const;
  // VQERR_ITEM_EXISTS when the new name is in use, VQWARN_NOT_FOUND when the old one isn't. By name, all items of that
  // name are renamed; by handle, this one.
  VQSTATUS RenameItem(const VQString& name, const VQString& new_name);
  VQSTATUS RenameItem(VQItem& item, const VQString& new_name);

  // Attached files. A name that is in use is not used again: the new attachment gets one made from it ("plan(1).pdf"),
  // which its handle tells. The file is stored at once, in pieces; it belongs to the slate from the next Save on, and
  // goes with the last handle of the database when there is none. Engine statuses ENG_ERR_FILE_OPEN, ENG_ERR_FILE_READ
  // and, for 4 GB or more, ENG_ERR_OBJECT_RANGE leave the slate as it was; VQERR_NULL_STRING for an empty path or name.
  VQSTATUS CreateAttachment(const VQString& path, VQAttachment* attachment = nullptr, int compress = 0);
  VQSTATUS CreateAttachment(const VQString& path, const VQString& name, VQAttachment* attachment = nullptr,
                            int compress = 0);
  // A copy of an attachment of this or another open slate, in any database. VQERR_ATTACHMENT_UNINITIALIZED,
  // VQERR_ATTACHMENT_SIGNED.
  VQSTATUS CreateAttachment(const VQAttachment& source, VQAttachment* attachment = nullptr);
  // By their exact names; VQWARN_NOT_FOUND.
  VQSTATUS GetAttachment(const VQString& name, VQAttachment* attachment) const;
  VQSTATUS DeleteAttachment(const VQString& name);
  VQSTATUS DeleteAttachment(VQAttachment* attachment);
  VQSTATUS GetAttachments(VQItemArray* attachments) const;
  // VQAttachment::Detach of the one of that name.
  VQSTATUS Detach(const VQString& name, const VQString& path) const;
  int HasAttachment(const VQString& name) const;
  int HasAttachments() const;

  // Puts the items' pending changes into the engine's slate, without saving.
  VQSTATUS RefreshSlateHandleFromObject();
  // Drops what the items hold and reads them afresh from the engine's slate.
  VQSTATUS RefreshObjectFromSlateHandle();

  // For the library's own code. Bind as Assign does, and give the status; on failure an engine slate stays the
  // caller's.
  VQSTATUS BindTo(VQDatabaseBody* database, unsigned long id);
  VQSTATUS BindTo(VQDatabaseBody* database, const UNIVERSALSLATEID* universal);
  // Encrypt without the throw rule, on an open slate.
  VQSTATUS EncryptCopy(VQENCRYPTOPTION option) { return EncryptWith(GetSlateBody(), option); }
  VQSTATUS EncryptCopy(const VQText& keys) { return EncryptWith(GetSlateBody(), keys); }
  VQSTATUS BindToHandle(VQDatabaseBody* database, ENGHANDLE handle);
  VQSlateBody* GetSlateBody() const;
  VQDatabaseBody* GetDatabaseBody() const { return Database.GetDatabaseBody(); }
  // Registers the handle with a table: an opened body is shared through it. Null takes it off.
  void SetIDTable(VQIDTable* table);

 protected:
  // The open body, or the status that says why there is none.
  VQSTATUS CheckOpen(VQSlateBody** body) const;
  VQSlateBody* RequireOpen() const;
  void RequireBound() const;

  // A body of the slate that stays closed in the handle, for classes that open more than the slate.
  void AttachClosed(VQSlateBody* body);
  // The attached body has opened its slate.
  void BodyOpened();

 private:
  void CopyFields(const VQSlate& other);
  void TakeFields(const VQSlateBody* body);
  void Unbind();
  void LeaveBody();
  VQSTATUS Bind(VQDatabaseBody* database, unsigned long id);
  VQSTATUS AttachHandle(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  void Attach(VQSlateBody* body);
  VQDatetime HeaderTime(unsigned short member) const;
  int HeaderFlag(unsigned short mask) const;
  VQSTATUS EncryptWith(VQSlateBody* body, VQENCRYPTOPTION option);
  VQSTATUS EncryptWith(VQSlateBody* body, const VQText& keys);
  VQSTATUS HandOut(VQSlateBody* body, VQItemBody* item, VQItem* target) const;
  VQSTATUS HandOutPlace(VQSlateBody* body, std::string_view name, const vq::ItemPlace& place, VQItem* item) const;

  VQDatabase Database;
  VQIDTable* IDTable;  // counted
  std::uint32_t SlateID;
  TIMEDATE Modified;
  std::uint16_t SlateClass;
  std::uint16_t DesignKind;
  ORIGINATORID Originator;
  mutable UNIVERSALSLATEID Universal;  // what GetUniversalID points at
};

// The open slate. Operations return their status and leave the throw rule to the handle.
class VQ_API VQSlateBody : public VQBody {
 public:
  // Takes the engine's slate over; `handle` 0 gives a closed body.
  VQSlateBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  ~VQSlateBody() override;
  VQSlateBody(const VQSlateBody&) = delete;
  VQSlateBody& operator=(const VQSlateBody&) = delete;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  virtual VQString GetAlias();
  // Whether a derived body holds changes that are in no item yet.
  virtual int HasPendingChanges();
  virtual VQString GetName();
  virtual int IsModified();
  virtual VQSTATUS Open(unsigned long flags);
  virtual VQSTATUS Save(unsigned short flags);
  // The table that the body is registered with goes away.
  virtual void TableGone(VQIDTable* table);
  // Whether objects may come into a rich text of this slate; `from` is the slate of the rich text that they come from,
  // null for none. VQ_OK unless a derived body minds.
  virtual VQSTATUS AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from);
  // Before a copy is taken: puts what a derived body keeps beside the items into them. Nothing is stored.
  virtual VQSTATUS FlushDesign();
  // Before the slate is saved with others: checks, and puts into the items, what a derived body's Save does.
  virtual VQSTATUS PrepareSave();
  // Stores slates of one database, all or none, as they stand. After a failure each has its changes still, to be saved
  // again.
  [[nodiscard]] static VQSTATUS SaveTogether(std::span<VQSlateBody* const> slates, unsigned short flags);
  // Whether the stored slate is the one that was opened or saved here.
  bool IsCurrent() const;
  void SetTable(VQIDTable* table);
  VQIDTable* GetTable() const { return Table; }

  VQSTATUS CreateItem(std::string_view name, unsigned short type, const void* data, unsigned long size,
                      unsigned short flags, VQITEMOPTION option, vq::ItemPlace* place);
  VQSTATUS AppendItem(std::string_view name, unsigned short type, const void* data, unsigned long size,
                      unsigned short flags, vq::ItemPlace* place);
  // A copy of a value that lies in any engine memory.
  VQSTATUS AppendCopy(std::string_view name, unsigned short flags, const vq::ItemPlace& source);
  // As CreateItem; the source's pending changes go along.
  VQSTATUS CreateCopy(std::string_view name, VQItemBody* source, unsigned short flags, VQITEMOPTION option,
                      vq::ItemPlace* place);
  // Takes the body of an item that it has given out already, else builds it. VQWARN_NOT_FOUND.
  VQSTATUS FindItem(std::string_view name, VQItemBody** body);
  VQSTATUS BodyFor(std::string_view name, const vq::ItemPlace& place, VQItemBody** body);
  // As BodyFor, for an item that is known to have no body yet.
  VQSTATUS MakeBody(std::string_view name, const vq::ItemPlace& place, VQItemBody** body);
  // The items that have bodies, by their places in the slate.
  std::map<std::uint16_t, VQItemBody*> CachedItems() const;
  // VQWARN_NOT_FOUND; `place` may be null.
  VQSTATUS PlaceOf(std::string_view name, vq::ItemPlace* place) const;
  VQSTATUS NextPlaceOf(std::string_view name, const BLOCKID& item, vq::ItemPlace* place) const;
  // Appends to the cache; a body that the list refuses is destroyed.
  VQSTATUS AddItem(VQItemBody* item);
  void RemoveItem(VQItemBody* item);
  VQSTATUS DeleteItems(std::string_view name);
  // One item of its name, of several perhaps.
  VQSTATUS DropItem(const vq::ItemPlace& place);
  // Drops items by their places; they come back with RestoreItems as long as no other is added or renamed.
  VQSTATUS TakeItemsAside(unsigned long first, unsigned long count);
  VQSTATUS RestoreItems();
  VQSTATUS DeleteItemsOfType(unsigned short type);
  VQSTATUS DeleteOneItem(VQItemBody* item);
  VQSTATUS DeleteAllItems();
  // All items of the name.
  VQSTATUS RenameItems(std::string_view name, std::string_view new_name);
  VQSTATUS RenameOneItem(VQItemBody* item, std::string_view new_name);
  unsigned long ItemCount() const;
  // Texts of a text item: none when it is missing, of another type or damaged.
  void ReadTexts(std::string_view name, std::vector<std::string>* texts) const;
  std::string TextOf(std::string_view name) const;
  std::vector<std::string> NamesInTitle() const;
  // Pending item changes into the engine's slate, the font table's last.
  VQSTATUS FlushItems();
  // Asks the engine anew where each item is; items that are gone are marked deleted.
  VQSTATUS RebindItems();
  // The same, and what items hold of their values is read afresh.
  VQSTATUS RereadItems();
  VQSTATUS ReadHeader();
  // A flush that failed when its item's last handle went; the next Save gives it instead of saving.
  void NoteLostChange(VQSTATUS status) { LostChange = status; }
  // Gives the engine's slate away: Close then leaves it alone.
  ENGHANDLE Detach();
  // Swaps in another engine slate (an encrypted copy) and closes the old one.
  VQSTATUS ReplaceHandle(ENGHANDLE handle);

  // Of a composite value that is about to go, or to come: which attachments it shows. The next flush of the items tells
  // the attachments what became of that.
  void NoteShown(const BLOCKID& item);
  void NoteShown(const vq::ItemBlock& block);

  bool IsOpen() const { return SlateHandle != 0; }
  ENGHANDLE GetHandle() const { return SlateHandle; }
  VQDatabaseBody* GetDatabaseBody() const { return Database; }
  unsigned long GetType() const { return SlateClass | static_cast<unsigned long>(DesignKind) << 16; }
  std::uint32_t GetID() const { return SlateID; }
  void SetID(std::uint32_t id) { SlateID = id; }
  std::uint16_t GetSlateClass() const { return SlateClass; }
  std::uint16_t GetDesignKind() const { return DesignKind; }
  const TIMEDATE& GetModified() const { return Modified; }
  const ORIGINATORID& GetOriginator() const { return Originator; }
  void SetBinding(std::uint32_t id, const ORIGINATORID& originator, const TIMEDATE& modified);
  void SetDirty() { Dirty = 1; }
  // An item of this slate that stays built for as long as the slate is open or somebody has a handle on either; null
  // lets go of it.
  void KeepItem(VQItemBody* item);
  VQItemBody* GetKeptItem() const { return KeptItem; }
  // The $Fonts item, saved after all others.
  void SetFontTable(VQItemBody* table) { FontTable = table; }
  VQItemBody* GetFontTable() const { return FontTable; }
  // The slate is deleted when this body closes.
  void SetDeleteOnClose(int flag) { DeleteOnClose = flag; }
  int GetDeleteOnClose() const { return DeleteOnClose; }
  // Objects that live and die with the open slate.
  VQObjectList& GetOwnedObjects() { return ObjectLists; }
  unsigned long GetAttachmentCount() const { return AttachmentCount; }
  unsigned long GetOLEObjectCount() const { return OLEObjectCount; }

 private:
  // Walks and prunes, which the plain list offers to its own classes only.
  class ItemList : public VQObjectList {
   public:
    VQElement* GetFirstElement() const { return First; }
  };

  void ReleaseOwnParts() override;
  void TakeHandle(ENGHANDLE handle);
  void LeaveLists();
  void LeaveTable();
  VQSTATUS PlacesOf(std::string_view name, std::vector<vq::ItemPlace>* places) const;
  VQItemBody* CachedItem(const BLOCKID& item) const;
  VQSTATUS ResolveOption(std::string_view name, VQITEMOPTION option, std::vector<vq::ItemPlace>* present,
                         bool* join) const;
  VQSTATUS JoinItem(std::string_view name, const vq::ItemPlace& present, unsigned short type, const void* data,
                    unsigned long size, vq::ItemPlace* place);
  VQSTATUS JoinEntries(VQItemBody* body, unsigned short type, const void* data, unsigned long size);
  VQSTATUS DropItems(const std::vector<vq::ItemPlace>& places);
  VQSTATUS RenameSeveral(const std::vector<vq::ItemPlace>& places, VQItemBody* first, std::string_view new_name);
  VQSTATUS GatherMore(VQItemBody* item);
  VQSTATUS ForEachItem(VQSTATUS (VQSlateBody::*step)(VQItemBody*));
  VQSTATUS FlushOne(VQItemBody* item);
  VQSTATUS PrepareOne(VQItemBody* item);
  VQSTATUS RebindOne(VQItemBody* item);
  VQSTATUS RereadOne(VQItemBody* item);
  bool MayShow() const;
  VQSTATUS SettleShown();
  VQSTATUS PrepareItems();
  VQSTATUS TakeLostChange();
  VQSTATUS WriteOutItems();
  VQSTATUS FinishSave();
  std::vector<const VQItemBody*> DirtyItems() const;
  void MarkDirty(const std::vector<const VQItemBody*>& items);

  std::uint32_t AttachmentCount;
  std::uint32_t OLEObjectCount;
  VQDatabaseBody* Database;  // counted
  int DeleteOnClose;
  int Dirty;  // a change went through this body
  int Detached;
  VQItemBody* FontTable;
  VQItemBody* KeptItem;  // counted, and counting this body
  ItemList Items;
  TIMEDATE Modified;
  ENGHANDLE SlateHandle;
  std::uint32_t SlateID;
  std::uint16_t SlateClass;
  std::uint16_t DesignKind;
  VQObjectList ObjectLists;
  VQIDTable* Table;  // knows this body, uncounted
  std::uint32_t OpenFlags;
  ORIGINATORID Originator;
  VQSTATUS LostChange;
  std::set<std::string> ShownNames;  // of attachments that a rich text has come or ceased to show
};

inline VQSlateBody* VQSlate::GetSlateBody() const { return static_cast<VQSlateBody*>(Body); }

// The items of a slate at one moment, each with a counted body.
class VQ_API VQItemArrayBody : public VQBody {
 public:
  // Throws when the slate isn't open. Flags 0 takes all items.
  VQItemArrayBody(VQSlateBody* slate, unsigned long flags);
  // The items of one type whose bodies are of one class.
  VQItemArrayBody(VQSlateBody* slate, unsigned short type, VQCLASSID bodyClass);
  ~VQItemArrayBody() override;
  VQCLASSID GetClassID() const override;
  unsigned long GetCount() const { return static_cast<unsigned long>(Entries.size()); }
  VQItemBody* GetItemBody(unsigned long index) const { return Entries[index]; }
  VQSlateBody* GetSlateBody() const { return Slate; }

 private:
  VQItemArrayBody(VQSlateBody* slate, unsigned long flags, unsigned short type, VQCLASSID bodyClass);
  // Type 0 takes all.
  void TakeItems(unsigned long flags, unsigned short type, VQCLASSID bodyClass);
  void Take(VQItemBody* item);
  void ReleaseAll();

  VQSlateBody* Slate;  // counted
  std::vector<VQItemBody*> Entries;
};

class VQ_API VQItemArray : public VQSmartPtr {
 public:
  VQItemArray();
  VQItemArray(const VQItemArray& other);
  explicit VQItemArray(VQItemArrayBody* body);
  VQItemArray& operator=(const VQItemArray& other);
  VQItemArray& operator=(VQItemArrayBody* body);
  VQCLASSID GetClassID() const override;
  // Throws VQERR_BAD_SUBSCRIPT.
  VQItem operator[](unsigned long index) const;
  // 0 for an array that was never filled.
  unsigned long GetCount() const;
  VQSlate GetSlate() const;
};

#endif
