// Databases: paths, handles, info text, replication record, searches, objects, transactions.
//
// A path is "[port!!]server!!file" or a file alone; a relative file starts from the data directory and gets
// the ending ".vlt" where it has none. A handle may be used from any thread, one call at a time.
#ifndef QUILLON_ENGINE_DATABASE_H
#define QUILLON_ENGINE_DATABASE_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ENG_PATH_SIZE 256  // bytes of a path buffer, with terminator
#define ENG_INFO_SIZE 128  // bytes of an info text buffer, with terminator

#define ENG_INFO_TITLE 0
#define ENG_INFO_CATEGORIES 1
#define ENG_INFO_TEMPLATE 2
#define ENG_INFO_INHERITS 3

#define ENG_DB_KIND_DATABASE 1
#define ENG_DB_KIND_DIRECTORY 2

// EngDbGetSpecialSlate selectors
#define ENG_SPECIAL_ABOUT 32770
#define ENG_SPECIAL_FORM 32772
#define ENG_SPECIAL_VIEW 32776
#define ENG_SPECIAL_ICON 32784
#define ENG_SPECIAL_USING 33024
// Slate identifier that stands for the icon slate in EngSlateOpen.
#define ENG_SLATE_ID_ICON 0xFFFF0010u

// EngDbCreate options
#define ENG_CREATE_OVERWRITE 0x0001  // an existing file is replaced once the new one is complete

ENG_API ENGSTATUS EngPathBuild(const char* port, const char* server, const char* file, char* path);
ENG_API ENGSTATUS EngPathSplit(const char* path, char* port, char* server, char* file);

// Makes an empty database; the file appears whole or not at all. ENG_ERR_DB_EXISTS without OVERWRITE.
ENG_API ENGSTATUS EngDbCreate(const char* path, uint16_t db_class, uint16_t options);
// ENG_ERR_DB_IN_USE while any process has it open.
ENG_API ENGSTATUS EngDbDelete(const char* path);
// before and after may be null. ENG_ERR_DB_IN_USE while another handle has it open.
ENG_API ENGSTATUS EngDbCompact(const char* path, uint16_t options, uint32_t statistics[2]);
ENG_API ENGSTATUS EngDbOpen(const char* path, ENGHANDLE* db);
// A directory opens too, as kind ENG_DB_KIND_DIRECTORY. A file that is no store, is damaged or is newer than
// this engine gives ENG_ERR_DB_NOT_STORE, ENG_ERR_DB_DAMAGED or ENG_ERR_DB_NEWER and is not written to.
ENG_API ENGSTATUS EngDbOpenExtended(const char* path, uint32_t flags, uint32_t reserved1, uint32_t reserved2,
                                    ENGHANDLE* db, TIMEDATE* data_modified, TIMEDATE* design_modified);
// Open slates of the database are closed first; an open transaction is rolled back.
ENG_API ENGSTATUS EngDbClose(ENGHANDLE db);

// An addition of this engine: several updates as one. Transactions do not nest (ENG_ERR_DB_TRANSACTION).
// A crash inside leaves the state before EngDbBegin.
ENG_API ENGSTATUS EngDbBegin(ENGHANDLE db);
// A failure rolls back: nothing of the transaction is stored.
ENG_API ENGSTATUS EngDbCommit(ENGHANDLE db);
ENG_API ENGSTATUS EngDbRollback(ENGHANDLE db);

ENG_API ENGSTATUS EngDbGetClass(ENGHANDLE db, uint16_t* db_class);
ENG_API ENGSTATUS EngDbGetFullPath(ENGHANDLE db, uint16_t reserved, char* path);
ENG_API ENGSTATUS EngDbGetID(ENGHANDLE db, TIMEDATE* id);
ENG_API ENGSTATUS EngDbGetInfo(ENGHANDLE db, ENGCHAR* buffer);
ENG_API ENGSTATUS EngDbSetInfo(ENGHANDLE db, const ENGCHAR* buffer);
ENG_API ENGSTATUS EngDbGetKind(ENGHANDLE db, uint16_t* kind);
ENG_API ENGSTATUS EngDbGetModifiedTime(ENGHANDLE db, TIMEDATE* data, TIMEDATE* design);
ENG_API ENGSTATUS EngDbGetReplicaInfo(ENGHANDLE db, REPLICAINFO* info);
ENG_API ENGSTATUS EngDbSetReplicaInfo(ENGHANDLE db, const REPLICAINFO* info);
ENG_API ENGSTATUS EngDbGetSpace(ENGHANDLE db, uint64_t* used, uint64_t* unused);
ENG_API ENGSTATUS EngDbGetBuild(ENGHANDLE db, uint16_t* build);
// ENG_ERR_NO_SPECIAL_SLATE when there is none.
ENG_API ENGSTATUS EngDbGetSpecialSlate(ENGHANDLE db, uint16_t selector, uint32_t* id);
ENG_API ENGSTATUS EngDbNewOrigin(ENGHANDLE db, ORIGINATORID* origin);

// The info buffer is four fields in one NUL-terminated text; a field that does not fit is cut at a character.
ENG_API void EngDbInfoParse(const ENGCHAR* buffer, uint16_t selector, ENGCHAR* output, uint16_t limit);
ENG_API void EngDbInfoModify(ENGCHAR* buffer, uint16_t selector, const ENGCHAR* value);

ENG_API ENGSTATUS EngDbDeleteSlates(ENGHANDLE db, ENGHANDLE id_table, uint16_t flags);
ENG_API ENGSTATUS EngSlateDeleteList(ENGHANDLE db, ENGHANDLE id_table, uint16_t flags);
// Null outputs are passed over.
ENG_API ENGSTATUS EngDbGetSlateInfo(ENGHANDLE db, uint32_t id, ORIGINATORID* origin, TIMEDATE* modified,
                                    uint16_t* slate_class, uint16_t* flags);
// The slates of the given classes changed at or after `since` (null: all), deletion stubs not among them.
// *until (may be null) is the moment to pass as `since` next time. The caller destroys *id_table.
ENG_API ENGSTATUS EngDbSearchClass(ENGHANDLE db, uint16_t class_mask, const TIMEDATE* since, TIMEDATE* until,
                                   ENGHANDLE* id_table);
// Takes out of a table what is gone, and what the user may not read.
ENG_API ENGSTATUS EngDbKeepReadable(ENGHANDLE db, ENGHANDLE id_table);
// As EngDbSearchClass with deletion stubs among the result, their bit 31 set.
ENG_API ENGSTATUS EngDbGetModifiedSlates(ENGHANDLE db, uint16_t class_mask, const TIMEDATE* since, TIMEDATE* until,
                                         ENGHANDLE* id_table);

// Runs over the entries of a directory handle; a status other than 0 from the callback ends the search and is
// returned. `path` is relative to the data directory; `info` is null for a directory.
// Flags: 0x2000 go down into directories, 2 databases and directories, 4 databases, 5 databases and templates.
typedef ENGSTATUS (*ENGDBFOUND)(void* context, const char* path, int is_directory, const ENGCHAR* info);
ENG_API ENGSTATUS EngDbSearch(ENGHANDLE directory, uint16_t flags, ENGDBFOUND callback, void* context);

// Design elements by class and name (or any synonym in $TITLE, compared exactly); ENG_ERR_NO_DESIGN_ELEMENT.
ENG_API ENGSTATUS EngDesignFind(ENGHANDLE db, uint16_t slate_class, const ENGCHAR* name, uint32_t* id);
ENG_API ENGSTATUS EngDesignFindAgent(ENGHANDLE db, const ENGCHAR* name, uint32_t* id);

// Reads every page and record chain; ENG_ERR_DB_DAMAGED with what was wrong first in `report` (may be null). With
// ENG_OK the report is empty, or tells of objects that no slate owns and this handle has not made: those of others, or
// what was cut off. Compaction frees them.
ENG_API ENGSTATUS EngDbCheck(ENGHANDLE db, char* report, uint16_t size);

// Objects: byte ranges beside the slates, for attachments. An object belongs to the slate that an update first
// finds it named in. A reserved one that no update has named goes away with the last slate that was given it and is
// closed, else with the handle.
ENG_API ENGSTATUS EngObjectCreate(ENGHANDLE db, uint16_t object_class, uint32_t* object);
// A reserved object; ENG_ERR_NO_OBJECT for one that a slate owns, which goes with the slate's last item that names it.
ENG_API ENGSTATUS EngObjectFree(ENGHANDLE db, uint32_t object);
ENG_API ENGSTATUS EngObjectGetSize(ENGHANDLE db, uint32_t object, uint32_t* size, uint16_t* object_class);
ENG_API ENGSTATUS EngObjectRead(ENGHANDLE db, uint32_t object, uint32_t offset, uint32_t length, ENGHANDLE* memory);
// Replaces the object's bytes by the first `size` bytes of the block; the block stays the caller's.
ENG_API ENGSTATUS EngObjectWrite(ENGHANDLE db, uint32_t object, ENGHANDLE memory, uint32_t size);
// Writes one range and grows the object to its end.
ENG_API ENGSTATUS EngObjectWriteRange(ENGHANDLE db, uint32_t object, uint32_t offset, ENGHANDLE memory, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
