// Databases as files, searches, deletion, transactions, objects and ID tables.
#include <fstream>
#include <set>

#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Append;
using qtest::Data;
using qtest::Header;
using qtest::IdOf;
using qtest::Ids;
using qtest::Repeated;
using qtest::Store;

struct Databases : qtest::Database {
  std::vector<std::string> Found(const char* directory, std::uint16_t flags) {
    std::vector<std::string> found;
    const ENGHANDLE handle = Open(directory);
    const auto add = [](void* context, const char* path, int is_directory, const ENGCHAR*) -> ENGSTATUS {
      static_cast<std::vector<std::string>*>(context)->push_back(std::string(path) + (is_directory ? "/" : ""));
      return ENG_OK;
    };
    EXPECT_EQ(EngDbSearch(handle, flags, add, &found), ENG_OK);
    EXPECT_EQ(EngDbClose(handle), ENG_OK);
    return found;
  }
};

TEST_F(Databases, PathsSplitAndBuild) {
  struct Row {
    const char* path;
    const char* port;
    const char* server;
    const char* file;
  };
  for (const Row& row : {Row{"a.vlt", "", "", "a.vlt"}, Row{"S!!d/a", "", "S", "d/a"}, Row{"P!!S!!a", "P", "S", "a"},
                         Row{"", "", "", ""}}) {
    char parts[4][ENG_PATH_SIZE];
    ASSERT_EQ(EngPathSplit(row.path, parts[0], parts[1], parts[2]), ENG_OK);
    EXPECT_STREQ(parts[0], row.port);
    EXPECT_STREQ(parts[1], row.server);
    EXPECT_STREQ(parts[2], row.file);
    ASSERT_EQ(EngPathBuild(parts[0], parts[1], parts[2], parts[3]), ENG_OK);
    EXPECT_STREQ(parts[3], row.path);
  }
  EXPECT_EQ(EngPathSplit("a!!b!!c!!d", nullptr, nullptr, nullptr), ENG_ERR_PATH);
  EXPECT_EQ(EngPathSplit(std::string(256, 'a').c_str(), nullptr, nullptr, nullptr), ENG_ERR_PATH);
}

TEST_F(Databases, OpenAndCreateRefuse) {
  folder_.Write("data/text.vlt", "a text file, and a long one " + std::string(5000, 'x'));
  folder_.Write("data/empty.vlt", "");
  std::filesystem::create_directory(folder_.File("data/folder.vlt"));
  struct Row {
    const char* path;
    ENGSTATUS open;
    ENGSTATUS create;
    ENGSTATUS remove;
  };
  const Row rows[] = {
      {"missing/x", ENG_ERR_DB_NOT_FOUND, ENG_ERR_DB_NOT_FOUND, ENG_ERR_DB_NOT_FOUND},
      {"S!!x", ENG_ERR_SERVER, ENG_ERR_SERVER, ENG_ERR_SERVER},
      {"text", ENG_ERR_DB_NOT_STORE, ENG_ERR_DB_EXISTS, ENG_ERR_DB_NOT_STORE},
      {"empty", ENG_ERR_DB_NOT_STORE, ENG_ERR_DB_EXISTS, ENG_ERR_DB_NOT_STORE},
      {"main", ENG_OK, ENG_ERR_DB_EXISTS, ENG_ERR_DB_IN_USE},
      {"folder.vlt", ENG_OK, ENG_ERR_DB_IS_DIRECTORY, ENG_ERR_DB_IS_DIRECTORY},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    ENGHANDLE db = 0;
    EXPECT_EQ(EngDbOpen(row.path, &db), row.open);
    if (row.open == ENG_OK) {
      EXPECT_EQ(EngDbClose(db), ENG_OK);
    }
    EXPECT_EQ(EngDbCreate(row.path, 255, 0), row.create);
    EXPECT_EQ(EngDbDelete(row.path), row.remove);
  }
  EXPECT_EQ(folder_.Read("data/empty.vlt"), "");
  EXPECT_EQ(EngDbCreate("main", 255, ENG_CREATE_OVERWRITE), ENG_ERR_DB_IN_USE);
  EXPECT_EQ(EngDbCompact("main", 0, nullptr), ENG_ERR_DB_IN_USE);
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.File("data"))) {
    names.insert(entry.path().filename());
  }
  EXPECT_EQ(names.size(), 6u) << "main with its log and index, text, empty, folder, and nothing left behind";
}

TEST_F(Databases, OverwriteCompactAndDelete) {
  const std::uint32_t id = Make({{"A", Repeated(300000, 'a')}});
  ASSERT_EQ(EngSlateDelete(db_, id, 0), ENG_OK);
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  std::uint32_t sizes[2] = {};
  ASSERT_EQ(EngDbCompact("main", 0, sizes), ENG_OK);
  EXPECT_LT(sizes[1] + 290000, sizes[0]);
  db_ = Open();
  EXPECT_EQ(EngSlateGetInfo(db_, id, nullptr, nullptr, nullptr), ENG_ERR_SLATE_DELETED);
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  ASSERT_EQ(EngDbCreate("main", 7, ENG_CREATE_OVERWRITE), ENG_OK);
  db_ = Open();
  std::uint16_t kind = 0;
  EXPECT_EQ(EngDbGetClass(db_, &kind), ENG_OK);
  EXPECT_EQ(kind, 7);
  EXPECT_EQ(EngSlateGetInfo(db_, id, nullptr, nullptr, nullptr), ENG_ERR_NO_SLATE);
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  EXPECT_EQ(EngDbDelete("main"), ENG_OK);
  EXPECT_EQ(EngDbOpen("main", &db_), ENG_ERR_DB_NOT_FOUND);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.File("data")));
}

TEST_F(Databases, DirectorySearch) {
  std::filesystem::create_directory(folder_.File("data/sub"));
  for (const char* path : {"pattern", "sub/deep"}) ASSERT_EQ(EngDbCreate(path, 255, 0), ENG_OK);
  folder_.Write("data/bad.vlt", "no store");
  // Files that no path can name.
  const std::string store = folder_.File("data/sub/deep.vlt");
  for (const std::string& directory : {std::string("a!!b"), std::string(250, 'd') + "/" + std::string(10, 'd')}) {
    std::filesystem::create_directories(folder_.File("data/" + directory));
    std::filesystem::copy_file(store, folder_.File("data/" + directory + "/x.vlt"));
  }
  const ENGHANDLE pattern = Open("pattern");
  ENGCHAR info[ENG_INFO_SIZE] = "";
  EngDbInfoModify(info, ENG_INFO_TEMPLATE, Store("Pattern"));
  ASSERT_EQ(EngDbSetInfo(pattern, info), ENG_OK);
  ASSERT_EQ(EngDbClose(pattern), ENG_OK);
  using Names = std::vector<std::string>;
  EXPECT_EQ(Found("", 4), (Names{"main.vlt"}));
  EXPECT_EQ(Found("", 5), (Names{"main.vlt", "pattern.vlt"}));
  EXPECT_EQ(Found("", 2), (Names{std::string(250, 'd') + "/", "main.vlt", "pattern.vlt", "sub/"}));
  EXPECT_EQ(Found("", 0x2004), (Names{"main.vlt", "sub/deep.vlt"}));
  EXPECT_EQ(Found("sub", 4), (Names{"sub/deep.vlt"}));
}

TEST_F(Databases, InfoTextFields) {
  ENGCHAR info[ENG_INFO_SIZE] = "";
  EngDbInfoModify(info, ENG_INFO_INHERITS, Store("base"));
  EngDbInfoModify(info, ENG_INFO_TITLE, Store("A\ntitle"));
  EngDbInfoModify(info, ENG_INFO_CATEGORIES, Store(std::string(107, 'c') + "\xC3\xA9"));
  ASSERT_EQ(EngDbSetInfo(db_, info), ENG_OK);
  Reopen();
  ENGCHAR read[ENG_INFO_SIZE] = "";
  ASSERT_EQ(EngDbGetInfo(db_, read), ENG_OK);
  const std::string expected[] = {"A title", std::string(107, 'c') + "\xC3\xA9", "", "base"};
  for (std::uint16_t i = 0; i < 4; ++i) {
    ENGCHAR field[ENG_INFO_SIZE];
    EngDbInfoParse(read, i, field, sizeof field);
    EXPECT_EQ(reinterpret_cast<const char*>(field), expected[i]);
  }
  EngDbInfoModify(read, ENG_INFO_TITLE, Store("A title with more"));
  ENGCHAR field[ENG_INFO_SIZE];
  EngDbInfoParse(read, ENG_INFO_TITLE, field, sizeof field);
  EXPECT_STREQ(reinterpret_cast<const char*>(field), "A title wit") << "cut to the room that is left";
}

TEST_F(Databases, SearchByClassAndTime) {
  qtest::StandingClock clock;
  const std::uint32_t document = Make({{"A", "1"}});
  const std::uint32_t form = Make({{"$TITLE", "Main|Memo"}}, 0x8004);
  const std::uint32_t view = Make({{"$TITLE", "All"}}, 8);
  const std::uint32_t gone = Make({{"A", "2"}});
  using List = std::vector<std::uint32_t>;
  EXPECT_EQ(Search(1), (List{document, gone}));
  EXPECT_EQ(Search(0x7FFF), (List{document, form, view, gone}));
  EXPECT_EQ(Search(0x800C), (List{form, view})) << "the default bit is no class";
  EXPECT_EQ(Search(0x8000), List{});
  clock.Sleep(std::chrono::seconds(5));
  TIMEDATE until{};
  Search(1, nullptr, &until);
  ASSERT_EQ(EngSlateDelete(db_, gone, 0), ENG_OK);
  const ENGHANDLE slate = OpenSlate(view);
  SaveAndClose(slate);
  EXPECT_EQ(Search(0x7FFF, &until), (List{view}));
  ENGHANDLE table = 0;
  ASSERT_EQ(EngDbGetModifiedSlates(db_, 0x7FFF, &until, nullptr, &table), ENG_OK);
  EXPECT_EQ(Ids(table), (List{view, gone | 0x80000000u}));
  EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  clock.Sleep(std::chrono::milliseconds(10));
  Search(1, nullptr, &until);
  EXPECT_EQ(Search(0x7FFF, &until), List{});
}

TEST_F(Databases, SpecialSlatesAndDesignNames) {
  const std::uint32_t plain = Make({{"$TITLE", "Other"}}, 4);
  const std::uint32_t form = Make({{"$TITLE", "Main|Memo"}}, 0x8004);
  const std::uint32_t about = Make({}, 2);
  const std::uint32_t icon = Make({{"$TITLE", "t"}}, 0x10);
  std::uint32_t id = 0;
  struct Row {
    std::uint16_t selector;
    ENGSTATUS status;
    std::uint32_t id;
  };
  for (const Row& row : {Row{ENG_SPECIAL_FORM, 0, form}, Row{ENG_SPECIAL_ABOUT, 0, about},
                         Row{ENG_SPECIAL_ICON, 0, icon}, Row{ENG_SPECIAL_VIEW, ENG_ERR_NO_SPECIAL_SLATE, icon},
                         Row{ENG_SPECIAL_USING, ENG_ERR_NO_SPECIAL_SLATE, icon}, Row{4, ENG_ERR_ARGUMENT, icon}}) {
    EXPECT_EQ(EngDbGetSpecialSlate(db_, row.selector, &id), row.status) << row.selector;
    EXPECT_EQ(id, row.id);
  }
  const ENGHANDLE slate = OpenSlate(ENG_SLATE_ID_ICON);
  EXPECT_EQ(IdOf(slate), icon);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  for (const auto& [name, status, found] :
       {std::tuple("Memo", 0, form), std::tuple("Main", 0, form), std::tuple("Other", 0, plain),
        std::tuple("main", ENG_ERR_NO_DESIGN_ELEMENT, plain),
        std::tuple("Main|Memo", ENG_ERR_NO_DESIGN_ELEMENT, plain)}) {
    EXPECT_EQ(EngDesignFind(db_, 4, Store(name), &id), status) << name;
    EXPECT_EQ(id, found);
  }
  EXPECT_EQ(EngDesignFindAgent(db_, Store("Memo"), &id), ENG_ERR_NO_DESIGN_ELEMENT);
}

TEST_F(Databases, DeletedSlatesLeaveStubsAndIdsAreNotUsedAgain) {
  const std::uint32_t first = Make({{"Body", Repeated(9000, 'a')}});
  const std::uint32_t last = Make({{"A", "1"}});
  const ENGHANDLE open = OpenSlate(last);
  ORIGINATORID origin = Header<ORIGINATORID>(open, ENG_SLATE_ORIGINATOR);
  ASSERT_EQ(EngSlateDelete(db_, first, 0), ENG_OK);
  ASSERT_EQ(EngSlateDelete(db_, last, 0), ENG_OK);
  EXPECT_EQ(EngSlateDelete(db_, last, 0), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(EngSlateUpdate(open, ENG_UPDATE_FORCE), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(EngSlateClose(open), ENG_OK);
  ENGHANDLE slate = 0;
  EXPECT_EQ(EngSlateOpen(db_, last, 0, &slate), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(EngSlateOpen(db_, last + 4, 0, &slate), ENG_ERR_NO_SLATE);
  const UNIVERSALSLATEID universal{origin.File, origin.Slate};
  std::uint32_t id = 0;
  EXPECT_EQ(EngSlateGetInfoByUniversalID(db_, &universal, &id, &origin, nullptr, nullptr), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(id, last);
  EXPECT_EQ(origin.Sequence, 2u);
  ASSERT_EQ(EngSlateDelete(db_, last, ENG_UPDATE_NO_STUB), ENG_OK);
  EXPECT_EQ(EngSlateGetInfo(db_, last, nullptr, nullptr, nullptr), ENG_ERR_NO_SLATE);
  Reopen();
  EXPECT_GT(Make({}), last);
}

TEST_F(Databases, ResponsesFollowTheReference) {
  const std::uint32_t parent = Make({});
  ENGHANDLE slate = OpenSlate(parent);
  const auto origin = Header<ORIGINATORID>(slate, ENG_SLATE_ORIGINATOR);
  std::string reference(16, '\0');
  std::memcpy(reference.data(), &origin, 16);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  const std::uint32_t one = Make({{"$REF", reference}});
  const std::uint32_t two = Make({{"$ref", std::string("\1\0", 2) + reference}});
  slate = OpenSlate(parent);
  EXPECT_EQ(Header<std::uint32_t>(slate, ENG_SLATE_RESPONSE_COUNT), 2u);
  EXPECT_EQ(Ids(Header<ENGHANDLE>(slate, ENG_SLATE_RESPONSES)), (std::vector<std::uint32_t>{one, two}));
  EXPECT_EQ(Header<std::uint32_t>(slate, ENG_SLATE_PARENT), 0u);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  slate = OpenSlate(two);
  EXPECT_EQ(Header<std::uint32_t>(slate, ENG_SLATE_PARENT), parent);
  ASSERT_EQ(EngItemDeleteByName(slate, Store("$REF"), 4), ENG_OK);
  SaveAndClose(slate);
  // A long reference is stored apart, and not read by a save that does not change it.
  const std::uint32_t long_one = Make({{"$REF", std::string("\1\0", 2) + reference + std::string(16 * 999, 'x')}});
  slate = OpenSlate(long_one);
  Append(slate, "Subject", "changed");
  SaveAndClose(slate);
  slate = OpenSlate(long_one);
  EXPECT_EQ(Header<std::uint32_t>(slate, ENG_SLATE_PARENT), parent);
  ASSERT_EQ(EngItemDeleteByName(slate, Store("$REF"), 4), ENG_OK);
  SaveAndClose(slate);
  slate = OpenSlate(parent);
  EXPECT_EQ(Header<std::uint32_t>(slate, ENG_SLATE_RESPONSE_COUNT), 1u);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Databases, TransactionsRollBackInMemoryToo) {
  const std::uint32_t kept = Make({{"Body", Repeated(9000, 'a')}});
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  EXPECT_EQ(EngDbBegin(db_), ENG_ERR_DB_TRANSACTION);
  const ENGHANDLE fresh = NewSlate();
  Append(fresh, "New name", "1");
  ASSERT_EQ(EngSlateUpdate(fresh, 0), ENG_OK);
  const std::uint32_t lost = IdOf(fresh);
  const ENGHANDLE old = OpenSlate(kept);
  Append(old, "B", "2");
  ASSERT_EQ(EngItemDeleteByName(old, Store("Body"), 4), ENG_OK);
  ASSERT_EQ(EngSlateUpdate(old, 0), ENG_OK);
  ASSERT_EQ(EngDbRollback(db_), ENG_OK);
  EXPECT_EQ(EngDbCommit(db_), ENG_ERR_DB_TRANSACTION);
  EXPECT_EQ(IdOf(fresh), 0u);
  EXPECT_EQ(Header<std::uint16_t>(fresh, ENG_SLATE_IS_MODIFIED), 1);
  ENGHANDLE slate = 0;
  EXPECT_EQ(EngSlateOpen(db_, lost, 0, &slate), ENG_ERR_NO_SLATE);
  EXPECT_EQ(Search(1), (std::vector<std::uint32_t>{kept}));
  const std::uint32_t again = SaveAndClose(fresh);
  EXPECT_GT(again, lost);
  EXPECT_EQ(SaveAndClose(old), kept);
  Reopen();
  slate = OpenSlate(kept);
  EXPECT_EQ(qtest::Items(slate), (std::vector<std::pair<std::string, std::string>>{{"B", "2"}}));
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  slate = OpenSlate(again);
  EXPECT_EQ(Data(slate, "New name"), "1");
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Databases, ConflictsLoseNothing) {
  const std::uint32_t id = Make({{"A", "1"}, {"Body", Repeated(9000, 'a')}});
  const ENGHANDLE other_db = Open();
  const ENGHANDLE mine = OpenSlate(id);
  ENGHANDLE other = 0;
  ASSERT_EQ(EngSlateOpen(other_db, id, 0, &other), ENG_OK);
  Append(other, "Theirs", Repeated(7000, 'z'));
  ASSERT_EQ(EngSlateUpdate(other, 0), ENG_OK);
  Append(mine, "Mine", "m");
  EXPECT_EQ(EngSlateUpdate(mine, 0), ENG_ERR_SLATE_CONFLICT);
  EXPECT_EQ(Data(mine, "Mine"), "m");
  EXPECT_EQ(Header<std::uint16_t>(mine, ENG_SLATE_IS_MODIFIED), 1);
  ASSERT_EQ(EngSlateUpdate(mine, ENG_UPDATE_FORCE), ENG_OK);
  EXPECT_EQ(Header<ORIGINATORID>(mine, ENG_SLATE_ORIGINATOR).Sequence, 3u);
  EXPECT_EQ(EngSlateUpdate(other, 0), ENG_ERR_SLATE_CONFLICT);
  EXPECT_EQ(EngDbClose(other_db), ENG_OK);
  EXPECT_EQ(EngSlateClose(mine), ENG_OK);
  const ENGHANDLE slate = OpenSlate(id);
  EXPECT_EQ(Data(slate, "Theirs"), "?546");
  EXPECT_EQ(Data(slate, "Body"), Repeated(9000, 'a'));
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Databases, OpeningAfterALookUpSeesWhatOthersSavedBetween) {
  const std::uint32_t id = Make({{"A", "1"}});
  const ENGHANDLE other_db = Open();
  TIMEDATE modified{};
  for (const char* text : {"2", "3"}) {
    ASSERT_EQ(EngSlateGetInfo(db_, id, nullptr, &modified, nullptr), ENG_OK);
    ENGHANDLE other = 0;
    ASSERT_EQ(EngSlateOpen(other_db, id, 0, &other), ENG_OK);
    ASSERT_EQ(EngItemSetText(other, Store("A"), Store(text), 10), ENG_OK);
    ASSERT_EQ(EngSlateUpdate(other, 0), ENG_OK);
    ASSERT_EQ(EngSlateClose(other), ENG_OK);
    const ENGHANDLE mine = OpenSlate(id);
    EXPECT_EQ(Data(mine, "A"), text);
    EXPECT_EQ(EngSlateClose(mine), ENG_OK);
  }
  ASSERT_EQ(EngSlateGetInfo(db_, id, nullptr, &modified, nullptr), ENG_OK);
  ASSERT_EQ(EngSlateDelete(other_db, id, 0), ENG_OK);
  ENGHANDLE gone = 0;
  EXPECT_EQ(EngSlateOpen(db_, id, 0, &gone), ENG_ERR_SLATE_DELETED);
  EXPECT_EQ(EngDbClose(other_db), ENG_OK);
}

TEST_F(Databases, ObjectsByRange) {
  std::uint32_t object = 0;
  ASSERT_EQ(EngObjectCreate(db_, 9, &object), ENG_OK);
  const auto write = [&](std::uint32_t offset, const std::string& bytes) {
    ENGHANDLE memory = 0;
    EXPECT_EQ(EngMemAlloc(0, static_cast<std::uint32_t>(bytes.size()), &memory), ENG_OK);
    std::memcpy(EngMemLock(memory), bytes.data(), bytes.size());
    EngMemUnlock(memory);
    EXPECT_EQ(EngObjectWriteRange(db_, object, offset, memory, static_cast<std::uint32_t>(bytes.size())), ENG_OK);
    EXPECT_EQ(EngMemFree(memory), ENG_OK);
  };
  std::string expected = Repeated(70000, 'a');
  write(0, expected);
  write(65530, "across the border");
  expected.replace(65530, 17, "across the border");
  write(200000, "far");
  expected.resize(200000);
  expected += "far";
  std::string record(6, '\0');
  std::memcpy(record.data() + 2, &object, 4);
  const ENGHANDLE slate = NewSlate();
  Append(slate, "$FILE", record, qtest::kObject);
  const std::uint32_t id = SaveAndClose(slate);
  Reopen();
  std::uint32_t size = 0;
  std::uint16_t object_class = 0;
  ASSERT_EQ(EngObjectGetSize(db_, object, &size, &object_class), ENG_OK) << "it belongs to a slate now";
  EXPECT_EQ(size, expected.size());
  EXPECT_EQ(object_class, 9);
  EXPECT_EQ(EngObjectFree(db_, object), ENG_ERR_NO_OBJECT);
  ENGHANDLE memory = 0;
  ASSERT_EQ(EngObjectRead(db_, object, 0, size, &memory), ENG_OK);
  EXPECT_EQ(std::string(static_cast<char*>(EngMemLock(memory)), size), expected);
  EngMemUnlock(memory);
  EXPECT_EQ(EngMemFree(memory), ENG_OK);
  EXPECT_EQ(EngObjectRead(db_, object, 1, size, &memory), ENG_ERR_OBJECT_RANGE);
  EXPECT_EQ(Check(), ENG_OK);
  ASSERT_EQ(EngSlateDelete(db_, id, 0), ENG_OK);
  EXPECT_EQ(EngObjectGetSize(db_, object, &size, nullptr), ENG_ERR_NO_OBJECT);
  ASSERT_EQ(EngObjectCreate(db_, 9, &object), ENG_OK);
  EXPECT_EQ(EngObjectFree(db_, object), ENG_OK);
  EXPECT_EQ(EngObjectFree(db_, object), ENG_ERR_NO_OBJECT);
  ASSERT_EQ(EngObjectCreate(db_, 9, &object), ENG_OK);
  Reopen();
  EXPECT_EQ(EngObjectGetSize(db_, object, &size, nullptr), ENG_ERR_NO_OBJECT) << "reserved and never named";
}

}  // namespace
