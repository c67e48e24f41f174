// Folders and unread lists, with a second handle on the same file in the place of another process.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "tests/qcore/store_fixture.h"

namespace qtest {
namespace {

using Ids_ = std::vector<std::uint32_t>;

class Folders : public Database {
 protected:
  std::uint32_t Folder(const std::string& name, std::uint16_t sharing = ENG_FOLDER_SHARED, std::uint32_t format = 0) {
    std::uint32_t id = 0;
    EXPECT_EQ(EngFolderCreate(db_, 0, format, 0, Store(name), Length(name), sharing, 0, &id), ENG_OK) << name;
    return id;
  }
  ENGHANDLE Table(const Ids_& ids) const {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    for (std::uint32_t id : ids) EXPECT_EQ(EngIdTableInsert(table, id, nullptr), ENG_OK);
    return table;
  }
  ENGSTATUS Add(std::uint32_t folder, const Ids_& ids) {
    const ENGHANDLE table = Table(ids);
    const ENGSTATUS status = EngFolderDocAdd(db_, 0, folder, table, 0);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    return status;
  }
  static Ids_ TakeIds(ENGHANDLE table) {
    const Ids_ ids = Ids(table);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    return ids;
  }
  Ids_ Members(std::uint32_t folder) const {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngFolderGetTable(db_, folder, &table), ENG_OK);
    return TakeIds(table);
  }
  ENGHANDLE UnreadTable(const std::string& user, ENGHANDLE db) {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngDbGetUnreadTable(db, Store(user), Length(user), 1, &table), ENG_OK);
    return table;
  }
  Ids_ Unread(const std::string& user) { return TakeIds(UnreadTable(user, db_)); }
  ENGSTATUS SetUnread(const std::string& user, const Ids_& before, const Ids_& after) {
    const ENGHANDLE from = before.empty() ? 0 : Table(before);
    const ENGHANDLE to = Table(after);
    const ENGSTATUS status = EngDbSetUnreadTable(db_, Store(user), Length(user), from, to);
    EXPECT_TRUE(from == 0 || EngIdTableDestroy(from) == ENG_OK);
    EXPECT_EQ(EngIdTableDestroy(to), ENG_OK);
    return status;
  }
};

TEST_F(Folders, DeletionsLeaveEveryFolder) {
  const std::uint32_t a = Make({{"Subject", "a"}});
  const std::uint32_t b = Make({{"Subject", "b"}});
  const std::uint32_t c = Make({{"Subject", "c"}});
  const std::uint32_t first = Folder("First");
  const std::uint32_t second = Folder("Second|Zweiter");
  EXPECT_EQ(Add(first, {a, b, c}), ENG_OK);
  EXPECT_EQ(Add(first, {b}), ENG_OK);
  EXPECT_EQ(Add(second, {b}), ENG_OK);
  std::uint32_t copy = 0;
  ASSERT_EQ(EngFolderCopy(db_, 0, first, 0, Store("Copy"), 4, 0, &copy), ENG_OK);
  EXPECT_EQ(EngSlateDelete(db_, b, 0), ENG_OK);
  EXPECT_EQ(EngSlateDelete(db_, c, ENG_UPDATE_NO_STUB), ENG_OK);
  Reopen();
  EXPECT_EQ(Members(first), Ids_{a});
  EXPECT_EQ(Members(second), Ids_{});
  EXPECT_EQ(Members(copy), Ids_{a});
  EXPECT_EQ(EngFolderDocRemoveAll(db_, 0, first, 0), ENG_OK);
  EXPECT_EQ(Members(first), Ids_{});
  EXPECT_EQ(Members(copy), Ids_{a});
  EXPECT_EQ(EngSlateDelete(db_, copy, 0), ENG_OK);
  EXPECT_EQ(EngFolderClose(db_, 0, copy, 0), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Folders, RefusalsChangeNothing) {
  const std::uint32_t document = Make({{"Subject", "a"}});
  const std::uint32_t gone = Make({{"Subject", "b"}});
  const std::uint32_t view = Make({{"$TITLE", "By Date|Dates"}}, 8);
  const std::uint32_t folder = Folder("Kept|K");
  ASSERT_EQ(EngSlateDelete(db_, gone, 0), ENG_OK);
  const struct {
    const char* what;
    std::uint32_t folder;
    Ids_ ids;
    ENGSTATUS status;
  } additions[] = {
      {"a deleted slate", folder, {document, gone}, ENG_ERR_SLATE_DELETED},
      {"an ID of elsewhere", folder, {document, 0x40000}, ENG_ERR_NO_SLATE},
      {"an ID marked as deleted", folder, {document, gone | 0x80000000u}, ENG_ERR_NO_SLATE},
      {"a design slate", folder, {document, view}, ENG_ERR_NOT_DOCUMENT},
      {"to a view", view, {document}, ENG_ERR_NOT_FOLDER},
      {"to a document", document, {document}, ENG_ERR_NOT_FOLDER},
      {"to what is gone", gone, {document}, ENG_ERR_SLATE_DELETED},
  };
  for (const auto& row : additions) EXPECT_EQ(Add(row.folder, row.ids), row.status) << row.what;
  const std::string long_name(256, 'n');
  const struct {
    std::string name;
    std::uint32_t format;
    ENGSTATUS status;
  } names[] = {{"", 0, ENG_ERR_FOLDER_NAME},          {long_name, 0, ENG_ERR_FOLDER_NAME},
               {"|x", 0, ENG_ERR_FOLDER_NAME},        {"Kept", 0, ENG_ERR_FOLDER_EXISTS},
               {"New|K", 0, ENG_ERR_FOLDER_EXISTS},   {"Dates", 0, ENG_ERR_FOLDER_EXISTS},
               {"New", document, ENG_ERR_NOT_FOLDER}, {"New", gone, ENG_ERR_SLATE_DELETED}};
  for (const auto& row : names) {
    std::uint32_t id = 0;
    EXPECT_EQ(EngFolderCreate(db_, 0, row.format, 0, Store(row.name), Length(row.name), 0, 0, &id), row.status)
        << row.name;
  }
  EXPECT_EQ(EngFolderRename(db_, 0, folder, Store("Dates"), 5, 0), ENG_ERR_FOLDER_EXISTS);
  EXPECT_EQ(EngFolderRename(db_, 0, folder, Store("K||Kept"), 7, 0), ENG_OK);
  std::uint32_t other = 0;
  EXPECT_EQ(EngFolderCreate(db_, 0, 0, 0, Store("New|"), 4, 0, 0, &other), ENG_OK) << "no synonym is none";
  EXPECT_EQ(EngSlateDelete(db_, other, ENG_UPDATE_NO_STUB), ENG_OK);
  EXPECT_EQ(Members(folder), Ids_{});
  EXPECT_EQ(Search(8), (Ids_{view, folder}));
}

TEST_F(Folders, APrivateFolderIsItsMakersAlone) {
  const std::uint32_t folder = Folder("Mine", ENG_FOLDER_PRIVATE);
  std::uint32_t found = 0;
  EXPECT_EQ(EngDesignFind(db_, 8, Store("Mine"), &found), ENG_OK);
  EXPECT_EQ(found, folder);
  ASSERT_EQ(EngEnvSetString("UserName", "CN=Another/O=Acme"), ENG_OK);
  Reopen();
  EXPECT_EQ(EngDesignFind(db_, 8, Store("Mine"), &found), ENG_ERR_NO_DESIGN_ELEMENT);
  const std::uint32_t document = Make({{"Subject", "a"}});
  const ENGHANDLE table = Table({folder, document});
  ENGHANDLE members = 0;
  const std::pair<const char*, ENGSTATUS> refused[] = {
      {"add", Add(folder, {document})},
      {"remove", EngFolderDocRemove(db_, 0, folder, table, 0)},
      {"empty", EngFolderDocRemoveAll(db_, 0, folder, 0)},
      {"rename", EngFolderRename(db_, 0, folder, Store("Yours"), 5, 0)},
      {"copy", EngFolderCopy(db_, 0, folder, 0, Store("Yours"), 5, 0, &found)},
      {"look", EngFolderGetTable(db_, folder, &members)},
  };
  for (const auto& [what, status] : refused) EXPECT_EQ(status, ENG_ERR_NO_SLATE) << what;
  EXPECT_EQ(EngDbKeepReadable(db_, table), ENG_OK);
  EXPECT_EQ(TakeIds(table), Ids_{document});
  EXPECT_NE(Folder("Mine"), folder);
}

TEST_F(Folders, AStoreOfTheFirstVersionOpensAndIsBroughtUp) {
  const std::uint32_t document = Make({{"Subject", "a"}});
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  MakeVersion(1);
  db_ = Open();
  const ENGHANDLE other = Open();
  ENGHANDLE table = 0;
  EXPECT_EQ(EngDbGetUnreadTable(other, Store("U"), 1, 0, &table), ENG_OK);
  EXPECT_EQ(TakeIds(table), Ids_{document});
  const std::uint32_t folder = Folder("New");
  EXPECT_EQ(Add(folder, {document}), ENG_OK);
  ASSERT_EQ(EngFolderGetTable(other, folder, &table), ENG_OK);
  EXPECT_EQ(TakeIds(table), Ids_{document});
  EXPECT_EQ(EngDbClose(other), ENG_OK);
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Folders, NewAndChangedDocumentsAreUnreadForOthers) {
  const std::uint32_t a = Make({{"Subject", "a"}});
  const std::uint32_t b = Make({{"Subject", "b"}});
  char me[256];
  ASSERT_EQ(EngUserNameGet(reinterpret_cast<ENGCHAR*>(me)), ENG_OK);
  EXPECT_EQ(Unread(me), (Ids_{a, b}));
  EXPECT_EQ(Unread("Jane"), (Ids_{a, b}));
  EXPECT_EQ(SetUnread(me, {}, {b}), ENG_OK);
  EXPECT_EQ(SetUnread("Jane", {}, {}), ENG_OK);
  const std::uint32_t c = Make({{"Subject", "c"}});
  const ENGHANDLE slate = OpenSlate(a);
  EXPECT_EQ(Append(slate, "More", "x"), ENG_OK);
  SaveAndClose(slate);
  Make({{"$TITLE", "a form"}}, 4);
  EXPECT_EQ(Unread(me), Ids_{b}) << "own saves are read";
  EXPECT_EQ(Unread("Jane"), (Ids_{a, c}));
  EXPECT_EQ(EngSlateDelete(db_, c, 0), ENG_OK);
  EXPECT_EQ(SetUnread("Jane", {a}, {b, c}), ENG_OK) << "a deleted document cannot be unread";
  Reopen();
  EXPECT_EQ(Unread("Jane"), Ids_{b});
  EXPECT_EQ(Unread(me), Ids_{b});
  const ENGHANDLE mine = OpenSlate(b);
  EXPECT_EQ(Append(mine, "More", "x"), ENG_OK);
  SaveAndClose(mine);
  EXPECT_EQ(Unread(me), Ids_{}) << "saving reads what was unread, too";
  EXPECT_EQ(SetUnread("", {}, {}), ENG_ERR_USER_NAME);
}

TEST_F(Folders, AListIsReadWhereNoneCanBeMade) {
  const std::uint32_t a = Make({{"Subject", "a"}});
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  ASSERT_EQ(chmod(file().c_str(), 0444), 0);
  ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
  const uid_t user = geteuid();
  ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
  ASSERT_EQ(EngDbOpen("main", &db_), ENG_OK);
  EXPECT_EQ(EngDbBegin(db_), ENG_ERR_DB_READ_ONLY);
  const ENGHANDLE table = UnreadTable("Jane", db_);
  EXPECT_EQ(TakeIds(table), Ids_{a});
  EXPECT_EQ(SetUnread("Jane", {a}, {}), ENG_ERR_DB_READ_ONLY);
  ASSERT_EQ(seteuid(user), 0);
}

TEST_F(Folders, UnreadListsLeaveOutWhatTheUserMayNotRead) {
  const std::string jane = "CN=Jane/O=Acme";
  const std::uint32_t open = Make({{"Subject", "a"}});
  const std::uint32_t hidden = Make({{"Subject", "b"}, {"$Readers", "CN=Bob/O=Acme"}});
  const std::uint32_t hers = Make({{"Subject", "c"}, {"$Readers", jane}});
  const ENGHANDLE table = UnreadTable(jane, db_);
  EXPECT_EQ(Ids(table), (Ids_{open, hers}));
  EXPECT_EQ(Unread("Bob/Acme"), (Ids_{open, hidden}));
  const auto set_readers = [&](std::uint32_t id, const char* name) {
    const ENGHANDLE slate = OpenSlate(id);
    EXPECT_EQ(EngItemSetText(slate, Store("$Readers"), Store(name), 100), ENG_OK);
    SaveAndClose(slate);
  };
  set_readers(open, "Bob/Acme");
  set_readers(hidden, "*");
  int changed = 0;
  EXPECT_EQ(EngDbRefreshUnreadTable(db_, table, &changed), ENG_OK);
  EXPECT_EQ(TakeIds(table), (Ids_{hidden, hers}));
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  set_readers(hers, "Bob/Acme");
  EXPECT_EQ(Unread(jane), Ids_{hidden});
  ASSERT_EQ(EngDbRollback(db_), ENG_OK);
  set_readers(hidden, "Bob/Acme");  // its change has the number of the one that was undone
  EXPECT_EQ(Unread(jane), Ids_{hers});
  EXPECT_EQ(SetUnread(jane, {}, {}), ENG_OK);
  EXPECT_EQ(Unread(jane), Ids_{});
  EXPECT_EQ(Unread("Bob/Acme"), (Ids_{open, hidden}));
}

TEST_F(Folders, AListThatMuchHasComeBehindIsStoredAnew) {
  Unread("Jane");
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  Ids_ all;
  for (int i = 0; i <= 5000; ++i) all.push_back(Make({{"Subject", "a"}}));
  ASSERT_EQ(EngDbCommit(db_), ENG_OK);
  EXPECT_EQ(Unread("Jane"), all);
  Execute(
      "CREATE TEMP TABLE same(yes CHECK(yes=1));"
      "INSERT INTO same SELECT (SELECT feed FROM unread)=(SELECT max(feed) FROM slate)");
  EXPECT_EQ(Unread("Jane"), all);
}

TEST_F(Folders, AnUnreadTableFollowsAnotherHandle) {
  const std::uint32_t a = Make({{"Subject", "a"}});
  const ENGHANDLE other = Open();
  const ENGHANDLE table = UnreadTable("Jane", other);
  EXPECT_EQ(SetUnread("Jane", {a}, {}), ENG_OK);
  const std::uint32_t b = Make({{"Subject", "b"}});
  EXPECT_EQ(SetUnread("Jane", {a}, {}), ENG_OK) << "what came in meanwhile stays";
  int changed = 0;
  ASSERT_NE(EngMemLock(table), nullptr);
  EXPECT_EQ(EngDbRefreshUnreadTable(other, table, &changed), ENG_ERR_MEMORY_LOCKED);
  EXPECT_EQ(EngMemUnlock(table), ENG_OK);
  EXPECT_EQ(EngDbRefreshUnreadTable(other, table, &changed), ENG_OK);
  EXPECT_EQ(changed, 1);
  const auto refreshed = [&] {
    EXPECT_EQ(EngDbRefreshUnreadTable(other, table, &changed), ENG_OK);
    return std::pair(Ids(table), changed);
  };
  EXPECT_EQ(refreshed(), std::pair(Ids_{b}, 0));
  EXPECT_EQ(EngIdTableDelete(table, b, nullptr), ENG_OK);
  EXPECT_EQ(refreshed(), std::pair(Ids_{b}, 1)) << "a client's own change";
  const std::uint32_t c = Make({{"Subject", "c"}});
  EXPECT_EQ(refreshed(), std::pair(Ids_({b, c}), 1));
  EXPECT_EQ(SetUnread("Jane", {c}, {}), ENG_OK);
  EXPECT_EQ(refreshed(), std::pair(Ids_{b}, 1)) << "stored as it was, but for later changes";
  EXPECT_EQ(TakeIds(table), Ids_{b});
  ENGHANDLE rows = 0;
  EXPECT_EQ(EngDbRefreshUnreadTable(other, other, &changed), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngCollectionOpen(other, other, a, 0, other, &rows, nullptr, nullptr, nullptr, nullptr),
            ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngDbClose(other), ENG_OK);
}

}  // namespace
}  // namespace qtest
