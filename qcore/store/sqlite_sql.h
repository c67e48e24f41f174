// The statements of the SQLite store and its schema.
#ifndef QUILLON_QCORE_STORE_SQLITE_SQL_H
#define QUILLON_QCORE_STORE_SQLITE_SQL_H

#include "qcore/store/sqlite_store.h"

namespace qcore {

inline constexpr int kTables = 5;  // of the first version

// The full-text index. Its words know a text by a number: a fourth of the slate's ID at first, and one from
// kFirstVersion up for each later text of the slate, since words without the text behind them cannot be taken back.
// Texts that are replaced or gone stay as dead numbers. What a part of an update adds is gathered in up to 16 MB, so
// that few segments are left to merge.
inline constexpr std::uint64_t kFirstVersion = std::uint64_t{1} << 32;
inline constexpr char kTextSchema[] =
    "CREATE VIRTUAL TABLE words USING fts5(body,content='',tokenize='quillon');"
    "INSERT INTO words(words,rank)VALUES('hashsize',16777216);"
    "CREATE TABLE text_version(number INTEGER PRIMARY KEY,slate INTEGER NOT NULL);"
    "CREATE INDEX text_slate ON text_version(slate);"
    "CREATE TABLE text_dead(number INTEGER PRIMARY KEY);"
    "CREATE TABLE text_guarded(slate INTEGER PRIMARY KEY);";
inline constexpr char kDropTextSchema[] =
    "DROP TABLE IF EXISTS words;DROP TABLE IF EXISTS text_version;DROP TABLE IF EXISTS text_dead;"
    "DROP TABLE IF EXISTS text_guarded;";

// slate.state: class in bits 0 to 15, flags in bits 16 to 31, bit 32 for a deletion stub.
// Times are numbers: the date word above the time word. chunk.id: value number above 16 bits of place.
inline constexpr char kSchema[] =
    "CREATE TABLE setting(key INTEGER PRIMARY KEY,value BLOB NOT NULL);"
    "CREATE TABLE name(id INTEGER PRIMARY KEY,text BLOB NOT NULL);"
    "CREATE TABLE slate(id INTEGER PRIMARY KEY,feed INTEGER NOT NULL,here INTEGER NOT NULL,state INTEGER NOT NULL,"
    "universal BLOB NOT NULL,sequence INTEGER NOT NULL,sequenced INTEGER NOT NULL,modified INTEGER NOT NULL,"
    "added INTEGER NOT NULL,accessed INTEGER NOT NULL,sum INTEGER NOT NULL,parent BLOB,packed BLOB);"
    "CREATE INDEX slate_universal ON slate(universal);"
    "CREATE INDEX slate_parent ON slate(parent) WHERE parent IS NOT NULL;"
    "CREATE TABLE chunk(id INTEGER PRIMARY KEY,data BLOB NOT NULL);"
    "CREATE TABLE object(id INTEGER PRIMARY KEY,class INTEGER NOT NULL,size INTEGER NOT NULL,slate INTEGER NOT NULL,"
    "value INTEGER NOT NULL);"
    "CREATE INDEX object_slate ON object(slate);";

// What version 2 has beside that; a store of version 1 gets it with its first change.
inline constexpr char kSchema2[] =
    "CREATE TABLE member(slate INTEGER NOT NULL,folder INTEGER NOT NULL,change INTEGER NOT NULL,present INTEGER NOT "
    "NULL,PRIMARY KEY(slate,folder))WITHOUT ROWID;"
    "CREATE INDEX member_folder ON member(folder,change,present);"
    "CREATE TABLE unread(id INTEGER PRIMARY KEY,user BLOB NOT NULL UNIQUE,feed INTEGER NOT NULL,ids BLOB NOT NULL);"
    "CREATE TABLE own(user INTEGER NOT NULL,slate INTEGER NOT NULL,feed INTEGER NOT NULL,PRIMARY KEY(user,slate))"
    "WITHOUT ROWID;"
    "CREATE TABLE page(id INTEGER PRIMARY KEY,data BLOB NOT NULL);";

// What version 3 has. Those before had an index on the slates for the feed, and version 2 a table of those that went;
// their index of designs names the time of the change too, so that no document could be written without a look at it.
inline constexpr char kSchema3[] =
    "CREATE INDEX slate_design ON slate(state) WHERE state&65535<>1;"
    "CREATE TABLE change(feed INTEGER PRIMARY KEY,here INTEGER NOT NULL,entries BLOB NOT NULL);"
    "PRAGMA user_version=3;";
inline constexpr char kDropIndexes[] = "DROP INDEX slate_feed;DROP INDEX slate_design;DROP TABLE IF EXISTS removed;";

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
  kUpdateSlateAll,
  kMakeDeletionStub,
  kRemoveSlate,
  kReadBlocks,
  kLastBlock,
  kLastDesign,
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
  kReadIndexedFeed,
  kReadRemoved,
  kReadBlocksBehind,
  kAppendToFeed,
  kClearFeed,
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
  kTextExists,
  kTextStored,
  kTextEnd,
  kTextVersion,
  kTextLastVersion,
  kAddTextVersion,
  kAddText,
  kTextIsDead,
  kAddDeadText,
  kGuardText,
  kUnguardText,
  kReadDeadTexts,
  kReadGuardedTexts,
  kSlateOfText,
  kCountTexts,
  kFindText,
  kRankText,
  kScanSlates,
  kHighestSlate,
  kReadPage,
  kReadPages,
  kWritePage,
  kDropPages,
  kCount,
};

}  // namespace qcore

#endif
