// Slates and their items.
//
// An open slate is a private copy: changes stay in the handle until EngSlateUpdate, which writes all or nothing.
// Values start with their type word. A value's BLOCKID stays good until the item is reallocated, replaced or
// deleted, or the slate is updated or closed; after an update ask for it again.
#ifndef QUILLON_ENGINE_SLATE_H
#define QUILLON_ENGINE_SLATE_H

#include "engine/records.h"
#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// EngSlateGetHeader and EngSlateSetHeader members. Only 0 to 3 and 7 can be set.
#define ENG_SLATE_DB 0               // ENGHANDLE
#define ENG_SLATE_ID 1               // uint32_t, 0 before the first update
#define ENG_SLATE_ORIGINATOR 2       // ORIGINATORID
#define ENG_SLATE_CLASS 3            // uint16_t
#define ENG_SLATE_MODIFIED 4         // TIMEDATE, last update anywhere
#define ENG_SLATE_MODIFIED_HERE 5    // TIMEDATE, last update in this file
#define ENG_SLATE_ACCESSED 6         // TIMEDATE, kept to the day
#define ENG_SLATE_FLAGS 7            // uint16_t, ENG_SLATE_FLAG_...
#define ENG_SLATE_ADDED 9            // TIMEDATE, first update in this file
#define ENG_SLATE_PARENT 10          // uint32_t, 0 when $REF names no slate of this database
#define ENG_SLATE_RESPONSE_COUNT 11  // uint32_t
#define ENG_SLATE_RESPONSES 12       // ENGHANDLE of an ID table that the slate handle owns
#define ENG_SLATE_SIZE 13            // uint32_t, bytes of all values, objects included
#define ENG_SLATE_IS_MODIFIED 14     // uint16_t, 1 when the handle holds changes

#define ENG_SLATE_FLAG_SIGNED 0x0001
#define ENG_SLATE_FLAG_ENCRYPTED 0x0002
#define ENG_SLATE_FLAG_ABSTRACTED 0x0080

// EngSlateUpdate flags
#define ENG_UPDATE_FORCE 0x0001    // overwrite what another handle or process has saved since the open
#define ENG_UPDATE_NO_STUB 0x0004  // accepted with deletes: leave no deletion stub behind

// Item flags
#define ENG_ITEM_SIGN 0x0001
#define ENG_ITEM_SEAL 0x0002
#define ENG_ITEM_SUMMARY 0x0004
#define ENG_ITEM_READERS_WRITERS 0x0020
#define ENG_ITEM_NAMES 0x0040
#define ENG_ITEM_PLACEHOLDER 0x0100
#define ENG_ITEM_PROTECTED 0x0200
#define ENG_ITEM_READERS 0x0400

ENG_API ENGSTATUS EngSlateCreate(ENGHANDLE db, ENGHANDLE* slate);
// ENG_ERR_SLATE_DELETED for a deletion stub, ENG_ERR_NO_SLATE for an ID that was never given out.
ENG_API ENGSTATUS EngSlateOpen(ENGHANDLE db, uint32_t id, uint16_t flags, ENGHANDLE* slate);
ENG_API ENGSTATUS EngSlateClose(ENGHANDLE slate);
ENG_API ENGSTATUS EngSlateCopy(ENGHANDLE slate, ENGHANDLE* copy);
// One transaction, durable when it returns. ENG_ERR_SLATE_CONFLICT when someone saved in between (if forced, only when
// a value that was not read, or the object of an item, went with that), ENG_ERR_SLATE_DELETED when someone deleted it.
// After any failure the handle still holds its changes.
ENG_API ENGSTATUS EngSlateUpdate(ENGHANDLE slate, uint16_t flags);
// Slates of one database: all are updated in one transaction or, after any failure, none. ENG_ERR_ARGUMENT for no
// slates, one that is named twice, or another database's.
ENG_API ENGSTATUS EngSlateUpdateSeveral(const ENGHANDLE* slates, uint32_t count, uint16_t flags);
ENG_API ENGSTATUS EngSlateDelete(ENGHANDLE db, uint32_t id, uint16_t flags);
ENG_API ENGSTATUS EngSlateGetHeader(ENGHANDLE slate, uint16_t member, void* target);
ENG_API ENGSTATUS EngSlateSetHeader(ENGHANDLE slate, uint16_t member, const void* source);
// Null outputs are passed over. ENG_ERR_SLATE_DELETED for a deletion stub, with the outputs filled.
ENG_API ENGSTATUS EngSlateGetInfo(ENGHANDLE db, uint32_t id, ORIGINATORID* origin, TIMEDATE* modified,
                                  uint16_t* slate_class);
ENG_API ENGSTATUS EngSlateGetInfoByUniversalID(ENGHANDLE db, const UNIVERSALSLATEID* universal, uint32_t* id,
                                               ORIGINATORID* origin, TIMEDATE* modified, uint16_t* slate_class);

// The first item of a name; names compare without ASCII case. ENG_ERR_NO_ITEM. Null outputs are passed over.
ENG_API ENGSTATUS EngSlateGetItemInfo(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length, BLOCKID* item,
                                      uint16_t* type, BLOCKID* value, uint32_t* value_size);
// The next item of that name behind `previous`.
ENG_API ENGSTATUS EngSlateGetNextItemInfo(ENGHANDLE slate, BLOCKID previous, const ENGCHAR* name, uint16_t name_length,
                                          BLOCKID* item, uint16_t* type, BLOCKID* value, uint32_t* value_size);
ENG_API ENGSTATUS EngSlateItemCount(ENGHANDLE slate, uint32_t* count);
// Items in the order in which they were added.
ENG_API ENGSTATUS EngSlateItemAt(ENGHANDLE slate, uint32_t index, BLOCKID* item);
// `name` gets at most name_size bytes without a terminator, *name_length the full length.
ENG_API ENGSTATUS EngItemQuery(ENGHANDLE slate, BLOCKID item, ENGCHAR* name, uint16_t name_size, uint16_t* name_length,
                               uint16_t* flags, uint16_t* type, BLOCKID* value, uint32_t* value_size);
// The item's own change time; for one that was never saved the time of the call.
ENG_API ENGSTATUS EngItemGetModified(ENGHANDLE slate, BLOCKID item, TIMEDATE* modified);

// Files as objects. An item of type 3 holds the record; the file's bytes are an object of the database, which belongs
// to the slate from its next update on. A copy of a slate in another database, or as a new slate, gets copies of its
// objects when it is updated.
typedef struct ENGFILEDESCRIPTOR {
  FILEOBJECT File;      // FileNameLength of the text are the attachment's name, what follows is the path
  const ENGCHAR* Text;  // store text
  uint32_t TextLength;
  uint16_t ItemFlags;
} ENGFILEDESCRIPTOR;

// EngSlateAttachFile flags
#define ENG_ATTACH_COMPRESS 0x0001

// Appends an item for an object that the database has: ENG_ERR_NO_OBJECT when it has none of that ID or when another
// slate owns it, ENG_ERR_ARGUMENT for a descriptor whose lengths do not fit. The item is the last one of the slate.
ENG_API ENGSTATUS EngSlateAppendObjectItem(ENGHANDLE slate, const ENGCHAR* name, const ENGFILEDESCRIPTOR* descriptor);
// Stores a file as a new object, in pieces, and appends its item, which `item` (may be null) gets. The attachment gets
// `name`; its path is that of the file. ENG_ERR_FILE_OPEN (no regular file, a store that this process has open, or
// closed to this user), ENG_ERR_FILE_READ, ENG_ERR_OBJECT_RANGE (4 GB or more), ENG_ERR_ARGUMENT for a name that is
// empty or has a NUL. After a failure nothing is left of it. A rollback of the transaction that it was made in takes
// the object away: ENG_ERR_NO_OBJECT from an update of a slate that still has the item.
ENG_API ENGSTATUS EngSlateAttachFile(ENGHANDLE slate, const ENGCHAR* item_name, const ENGCHAR* name,
                                     uint16_t name_length, const char* path, uint16_t flags, BLOCKID* item);
// Writes an item's file to `path`, which then has all of it or is what it was; a regular file there is replaced, but
// for a store that this process has open. Change time and the attributes go along. ENG_ERR_NO_OBJECT,
// ENG_ERR_OBJECT_CONTENT, ENG_ERR_FILE_OPEN, ENG_ERR_FILE_WRITE.
ENG_API ENGSTATUS EngItemExtractFile(ENGHANDLE slate, BLOCKID item, const char* path, uint16_t reserved);
// The object that an item names as a new reserved one of `target`, which may be the same database. ENG_ERR_NO_OBJECT.
ENG_API ENGSTATUS EngItemCopyObject(ENGHANDLE slate, BLOCKID item, ENGHANDLE target, uint32_t* copy);
// Whether EngItemExtractFile would find the object, and of a size that fits the record: ENG_ERR_NO_OBJECT,
// ENG_ERR_OBJECT_CONTENT, ENG_ERR_ITEM_DAMAGED for an item that holds no file.
ENG_API ENGSTATUS EngItemCheckFile(ENGHANDLE slate, BLOCKID item);

// `data` lies behind the type word; names are 1 to 65,535 bytes without NUL. `item` gets the new item, `value` the
// place of its value; either may be null.
ENG_API ENGSTATUS EngItemAppend(ENGHANDLE slate, uint16_t flags, const ENGCHAR* name, uint16_t name_length,
                                uint16_t type, const void* data, uint32_t size, BLOCKID* item, BLOCKID* value);
// The slate takes the block, whose first two bytes are the type word; on failure it stays the caller's.
ENG_API ENGSTATUS EngItemAppendBlock(ENGHANDLE slate, uint16_t flags, const ENGCHAR* name, uint16_t name_length,
                                     ENGHANDLE memory, uint32_t size, BLOCKID* item);
// Puts a block in place of the item's value; ownership as with EngItemAppendBlock.
ENG_API ENGSTATUS EngItemReplaceBlock(ENGHANDLE slate, BLOCKID item, ENGHANDLE memory, uint32_t size);
// Keeps the bytes up to the smaller size; *value is the value's new place.
ENG_API ENGSTATUS EngItemReallocate(ENGHANDLE slate, BLOCKID item, BLOCKID* value, uint32_t new_size);
// Tells the engine that the value's bytes were changed in place; without it a change may not be written.
ENG_API ENGSTATUS EngItemTouch(ENGHANDLE slate, BLOCKID item);
ENG_API ENGSTATUS EngItemSetFlags(ENGHANDLE slate, BLOCKID item, uint16_t flags);
ENG_API ENGSTATUS EngItemDelete(ENGHANDLE slate, BLOCKID item);
// Deletes `count` items from that place on, so that they can be put back: ENG_ERR_NO_ITEM when there are fewer,
// ENG_ERR_MEMORY_LOCKED when one is locked, ENG_ERR_ARGUMENT for one with an object; nothing is deleted then. Those of
// an earlier call are gone for good.
ENG_API ENGSTATUS EngSlateSetItemsAside(ENGHANDLE slate, uint32_t first, uint32_t count);
// The items of the last call, behind the others, with their IDs and as changed. ENG_ERR_NO_ITEM when there are none, or
// an item was added or renamed or the slate updated meanwhile.
ENG_API ENGSTATUS EngSlateRestoreItems(ENGHANDLE slate);
// All items of the name.
ENG_API ENGSTATUS EngItemDeleteByName(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length);
// ENG_ERR_ITEM_EXISTS when the new name is in use.
ENG_API ENGSTATUS EngItemRename(ENGHANDLE slate, BLOCKID item, const ENGCHAR* name, uint16_t name_length);

ENG_API int EngItemGetNumber(ENGHANDLE slate, const ENGCHAR* name, double* number);
// First text entry, cut to size - 1 bytes and terminated; the length written.
ENG_API uint16_t EngItemGetText(ENGHANDLE slate, const ENGCHAR* name, ENGCHAR* buffer, uint16_t size);
ENG_API uint16_t EngItemGetTextAtIndex(ENGHANDLE slate, const ENGCHAR* name, uint16_t index, ENGCHAR* buffer,
                                       uint16_t size);
ENG_API int EngItemIsPresent(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length);
// Replaces all items of the name by one summary text item of at most `limit` bytes.
ENG_API ENGSTATUS EngItemSetText(ENGHANDLE slate, const ENGCHAR* name, const ENGCHAR* text, uint16_t limit);

#ifdef __cplusplus
}
#endif

#endif
