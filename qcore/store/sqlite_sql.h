// The statements of the SQLite store and its schema.
#ifndef QUILLON_QCORE_STORE_SQLITE_SQL_H
#define QUILLON_QCORE_STORE_SQLITE_SQL_H

#include "qcore/store/sqlite_store.h"

namespace qcore {

inline constexpr int kTables = 5;  // of the first version

// slate.state: class in bits 0 to 15, flags in bits 16 to 31, bit 32 for a deletion stub.
// Times are numbers: the date word above the time word. chunk.id: value number above 16 bits of place.
inline constexpr char kSchema[] =
    "CREATE TABLE setting(key INTEGER PRIMARY KEY,value BLOB NOT NULL);"
    "CREATE TABLE name(id INTEGER PRIMARY KEY,text BLOB NOT NULL);"
    "CREATE TABLE slate(id INTEGER PRIMARY KEY,feed INTEGER NOT NULL,here INTEGER NOT NULL,state INTEGER NOT NULL,"
    "universal BLOB NOT NULL,sequence INTEGER NOT NULL,sequenced INTEGER NOT NULL,modified INTEGER NOT NULL,"
    "added INTEGER NOT NULL,accessed INTEGER NOT NULL,sum INTEGER NOT NULL,parent BLOB,packed BLOB);"
    "CREATE INDEX slate_universal ON slate(universal);"
    "CREATE INDEX slate_feed ON slate(feed,here,state);"
    "CREATE INDEX slate_parent ON slate(parent) WHERE parent IS NOT NULL;"
    "CREATE INDEX slate_design ON slate(state,here) WHERE state&65535<>1;"
    "CREATE TABLE chunk(id INTEGER PRIMARY KEY,data BLOB NOT NULL);"
    "CREATE TABLE object(id INTEGER PRIMARY KEY,class INTEGER NOT NULL,size INTEGER NOT NULL,slate INTEGER NOT NULL,"
    "value INTEGER NOT NULL);"
    "CREATE INDEX object_slate ON object(slate);";

// What version 2 has beside that; a store of version 1 gets it with its first change.
inline constexpr char kSchema2[] =
    "CREATE TABLE removed(feed INTEGER PRIMARY KEY,id INTEGER NOT NULL,state INTEGER NOT NULL);"
    "CREATE TABLE member(slate INTEGER NOT NULL,folder INTEGER NOT NULL,change INTEGER NOT NULL,present INTEGER NOT "
    "NULL,PRIMARY KEY(slate,folder))WITHOUT ROWID;"
    "CREATE INDEX member_folder ON member(folder,change,present);"
    "CREATE TABLE unread(id INTEGER PRIMARY KEY,user BLOB NOT NULL UNIQUE,feed INTEGER NOT NULL,ids BLOB NOT NULL);"
    "CREATE TABLE own(user INTEGER NOT NULL,slate INTEGER NOT NULL,feed INTEGER NOT NULL,PRIMARY KEY(user,slate))"
    "WITHOUT ROWID;"
    "PRAGMA user_version=2";

enum class SqliteStore::Sql : std::size_t {
  kBegin,
  kBeginRead,
  kCommit,
  kRollback,
  kMark,
  kReleaseMark,
  kRollbackToMark,
  kDataVersion,
  kCounters,
  kGetSetting,
  kSetSetting,
  kReadNames,
  kAddName,
  kReadSlate,
  kReadHeader,
  kInsertSlate,
  kUpdateSlate,
  kUpdateSlateLinks,
  kMakeDeletionStub,
  kRemoveSlate,
  kReadFeed,
  kLastData,
  kLastDesign,
  kLastHere,
  kFindUniversal,
  kFindResponses,
  kFindDesign,
  kReadChunks,
  kReadChunk,
  kWriteChunk,
  kFreeChunks,
  kTrimChunks,
  kCreateObject,
  kGetObject,
  kResizeObject,
  kOwnObject,
  kFreeObject,
  kFindObjects,
  kReadFeedBehind,
  kReadRemovedBehind,
  kFeedEnd,
  kNoteRemoved,
  kSetMember,
  kUnsetMember,
  kLastMemberChange,
  kReadMembers,
  kDropMember,
  kDropMembers,
  kGetUnread,
  kAddUnread,
  kPutUnread,
  kDropOwnSaves,
  kNoteOwnSave,
  kReadOwnSaves,
  kCount,
};

}  // namespace qcore

#endif
