// Incremental against rebuilt: after every batch of random changes the index must be the one that is built from
// nothing.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "tests/qcore/index_fixture.h"

namespace {

using qtest::AllRows;
using qtest::OpenCollection;
using qtest::Show;
using qtest::TestColumn;

using Items = std::vector<std::pair<std::string, std::string>>;

struct Case {
  const char* title;
  std::vector<TestColumn> columns;
  unsigned table_flags;
  const char* selection;
  std::uint8_t collation_flags;
  bool folder = false;
};

const Case kCases[] = {
    {"nothing sorted", {{"Name"}}, 0, "", 0},
    {"flat, descending", {{"Name", 0xC005}, {"nSize", 1}}, 2, "", 0},
    {"categories", {{"Kind", 0x4003}, {"Name", 1}, {"nSize", 1, 4}}, 0, "", 0},
    {"two categories", {{"Kind", 7}, {"Place", 3}, {"Name", 5}}, 0, "", 0},
    {"rows for values", {{"Place", 1, 0x100}, {"Name", 1}}, 0, "", 0},
    {"selection", {{"Kind", 3}, {"Up", 1, 0, "@UpperCase(Name)"}}, 0, "SELECT nSize > 30", 0},
    {"responses selected", {{"Kind", 3}, {"Name", 1}}, 0, "SELECT nSize > 60 | @AllChildren", 0},
    {"descendants selected", {{"Name", 1}, {"nSize", 0, 8}}, 0, "SELECT nSize > 60 | @AllDescendants", 0},
    {"failing column", {{"Bad", 3, 0, "@TextToNumber(Name) + 1"}, {"Name", 1}}, 0, "", 0},
    {"unique", {{"Place", 1}}, 0, "", 1},
    {"unique in categories", {{"Kind", 3}, {"Place", 1, 0x100}, {"nSize", 0, 4}}, 0, "", 1},
    {"unique among descendants", {{"Place", 1}, {"nSize", 0, 4}}, 0, "SELECT nSize > 60 | @AllDescendants", 1},
    {"unique and flat", {{"Kind", 0x4003}, {"Place", 1}}, 2, "SELECT nSize > 20", 1},
    {"folder", {{"Kind", 3}, {"Name", 1}}, 0, "", 0, true},
    {"unique folder", {{"Kind", 3}, {"Place", 1, 0x100}}, 0, "", 1, true},
    {"folder of descendants", {{"Place", 3}, {"Name", 1}}, 0, "SELECT nSize > 60 | @AllDescendants", 0, true},
    {"flat rows for values", {{"Kind", 0x4003}, {"Place", 1, 0x100}, {"nSize", 0, 4}}, 2, "", 0},
    {"flat categories", {{"Kind", 7, 0x100}, {"Place", 3}, {"Name", 5}}, 2, "SELECT nSize > 20", 0},
    {"flat folder", {{"Kind", 3}, {"Name", 1}, {"nSize", 0, 8}}, 2, "", 0, true},
    {"of the user", {{"Kind", 3}, {"Name", 1}}, 0, "SELECT Place = @UserName | nSize > 50", 0},
};

// What a row's place in the tree tells: its number, its ordinals, and how many rows are beside and below it.
struct RowFacts {
  std::uint32_t id = 0;
  std::array<std::uint32_t, 3> counts{};  // siblings, children, descendants
  bool unread = false;
  COLLECTIONPOSITION place{};
  bool is_document() const { return (id & ENG_ROW_NO_DOCUMENT) == 0; }
  std::string Text() const {
    return Show(place) + " " + std::to_string(id) + " " + std::to_string(counts[0]) + " " + std::to_string(counts[1]) +
           " " + std::to_string(counts[2]);
  }
};

std::vector<RowFacts> FactsOf(ENGHANDLE collection) {
  std::vector<RowFacts> rows;
  COLLECTIONPOSITION position = qtest::At({0});
  for (std::uint16_t signals = ENG_SIGNAL_MORE_TO_DO; (signals & ENG_SIGNAL_MORE_TO_DO) != 0;) {
    ENGHANDLE block = 0;
    std::uint32_t length = 0;
    if (EngCollectionRead(collection, &position, ENG_GO_NEXT, 1, ENG_GO_NEXT, UINT32_MAX, 0x4439, &block, &length,
                          nullptr, nullptr, &signals) != ENG_OK) {
      break;
    }
    qcore::WireReader reader(qtest::Span(static_cast<const std::uint8_t*>(EngMemLock(block)), length));
    while (!reader.at_end()) {
      RowFacts& row = rows.emplace_back();
      row.id = reader.Take<std::uint32_t>();
      for (std::uint32_t& count : row.counts) count = reader.Take<std::uint32_t>();
      row.unread = reader.Take<std::uint16_t>() != 0;
      row.place.Level = reader.Take<std::uint16_t>();
      reader.Skip(2);
      for (unsigned level = 0; level <= row.place.Level; ++level)
        row.place.Tumbler[level] = reader.Take<std::uint32_t>();
    }
    EXPECT_EQ(EngMemUnlock(block), ENG_OK);
    EXPECT_EQ(EngMemFree(block), ENG_OK);
  }
  return rows;
}

// The same counts and ordinals, counted from the rows as they follow one another.
std::vector<RowFacts> Recounted(std::vector<RowFacts> rows) {
  std::map<std::size_t, std::uint32_t> children;  // by row, SIZE_MAX for the outermost
  std::vector<std::size_t> above;
  std::vector<std::size_t> parents;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    RowFacts& row = rows[i];
    above.resize(row.place.Level);
    for (const std::size_t a : above) ++rows[a].counts[2];
    parents.push_back(above.empty() ? SIZE_MAX : above.back());
    if (!above.empty()) std::copy_n(rows[above.back()].place.Tumbler, row.place.Level, row.place.Tumbler);
    row.place.Tumbler[row.place.Level] = ++children[parents.back()];
    row.counts = {};
    above.push_back(i);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].counts[0] = children[parents[i]];
    rows[i].counts[1] = children[i];
  }
  return rows;
}

std::vector<std::string> Texts(const std::vector<RowFacts>& facts) {
  std::vector<std::string> texts;
  for (const RowFacts& row : facts) texts.push_back(row.Text());
  return texts;
}

class Random : public qtest::IndexTest, public testing::WithParamInterface<Case> {
 protected:
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
  std::uint32_t AnyId() { return ids_[Below(static_cast<std::uint32_t>(ids_.size()))]; }

  Items NewItems() {
    static const char* const kKinds[] = {"a", "A", "b\\c", "b\\d\\e", "b", "c,d", "B\\C,a,b", "", "\\"};
    static const char* const kPlaces[] = {"x", "y", "x,y,z", "z\\z", "X", "A"};
    static const char* const kReaders[] = {"Somebody Else", "A", "B", "*", "", "", "", "", "", ""};
    return {{"Kind", kKinds[Below(9)]},
            {"Place", kPlaces[Below(6)]},
            {"Name", "name " + std::to_string(Below(20)) + (Below(8) == 0 ? qtest::Repeated(3000, 'a') : "")},
            {"nSize", std::to_string(Below(100))},
            {"$Readers", kReaders[Below(10)]}};
  }

  void ChangeSomething() {
    const std::uint32_t what = ids_.size() < 20 ? 0 : Below(10);
    const std::uint32_t parent = !ids_.empty() && Below(3) == 0 ? AnyId() : 0;
    if (what < 4) {
      ids_.push_back(Doc(NewItems(), parent));
      if (folder_ != 0 && Below(4) != 0) File(ids_.back(), true);
    } else if (what < 8) {
      Change(AnyId(), NewItems(), parent);
    } else if (what == 8 && folder_ != 0) {
      File(AnyId(), Below(3) != 0);
    } else if (what == 8 && parent != 0) {
      const ENGHANDLE slate = OpenSlate(parent);
      static_cast<void>(EngItemDeleteByName(slate, qtest::Store("$REF"), 4));
      SaveAndClose(slate);
    } else {
      const std::uint32_t at = Below(static_cast<std::uint32_t>(ids_.size()));
      EXPECT_EQ(EngSlateDelete(db_, ids_[at], Below(2) == 0 ? ENG_UPDATE_NO_STUB : 0), ENG_OK);
      ids_.erase(ids_.begin() + at);
    }
  }

  void File(std::uint32_t id, bool in) {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    EXPECT_EQ(EngIdTableInsert(table, id, nullptr), ENG_OK);
    EXPECT_EQ((in ? EngFolderDocAdd : EngFolderDocRemove)(db_, 0, folder_, table, 0), ENG_OK);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }
  static void TakeUser(const char* name) { EXPECT_EQ(EngEnvSetString("UserName", name), ENG_OK); }
  // A transaction, which may be undone, looked at from within or not.
  void ChangeMuch(std::uint32_t count, ENGHANDLE collection) {
    const std::vector<std::uint32_t> ids = ids_;
    const bool stays = Below(5) != 0;
    const bool looks = Below(3) == 0;
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    for (std::uint32_t i = 0; i < count; ++i) {
      ChangeSomething();
      EXPECT_TRUE(!looks || EngCollectionUpdate(collection) == ENG_OK);
    }
    ASSERT_EQ((stays ? EngDbCommit : EngDbRollback)(db_), ENG_OK);
    if (!stays) ids_ = ids;
  }
  std::uint32_t MakeCase(const Case& test) {
    const std::uint32_t view = MakeView(test.columns, test.table_flags, test.selection, test.collation_flags);
    if (!test.folder) return view;
    EXPECT_EQ(EngFolderCreate(db_, 0, view, db_, qtest::Store("In"), 2, 0, 0, &folder_), ENG_OK);
    return folder_;
  }
  // Every row, after what the tree says of each was held against the rows as they follow one another.
  static std::vector<std::string> CheckedRows(ENGHANDLE collection) {
    std::vector<std::string> rows = AllRows(collection);
    const std::vector<RowFacts> facts = FactsOf(collection);
    EXPECT_EQ(Texts(facts), Texts(Recounted(facts)));
    for (std::size_t i = 0; i < facts.size(); i += 7) {
      COLLECTIONPOSITION place = facts[i].place;
      ENGHANDLE block = 0;
      EXPECT_EQ(EngCollectionRead(collection, &place, ENG_GO_CURRENT, 0, ENG_GO_CURRENT, 1, ENG_READ_ID, &block,
                                  nullptr, nullptr, nullptr, nullptr),
                ENG_OK);
      EXPECT_EQ(*static_cast<const std::uint32_t*>(EngMemLock(block)), facts[i].id);
      EXPECT_EQ(EngMemUnlock(block), ENG_OK);
      EXPECT_EQ(EngMemFree(block), ENG_OK);
    }
    for (const std::string& text : Texts(facts)) rows.push_back(text);
    return rows;
  }

  // Where the steps of a code lead from a place on.
  static std::vector<std::string> Ways(ENGHANDLE collection, COLLECTIONPOSITION place, std::uint16_t code) {
    std::vector<std::string> ways;
    for (std::uint32_t steps = 1;; ways.push_back(Show(place))) {
      EXPECT_EQ(EngCollectionRead(collection, &place, code, 1, ENG_GO_CURRENT, 0, 0, nullptr, nullptr, &steps, nullptr,
                                  nullptr),
                ENG_OK);
      if (steps == 0) return ways;
    }
  }
  // Marks of unread rows, and steps to them, against the rows as they follow one another.
  void CheckUnread(std::uint32_t view) {
    ENGHANDLE table = 0;
    ASSERT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    for (std::uint32_t i = Below(4); i > 0; --i) EXPECT_EQ(EngIdTableInsert(table, AnyId(), nullptr), ENG_OK);
    {
      const OpenCollection collection(db_, view, 0, table);
      const std::vector<RowFacts> rows = FactsOf(collection.get());
      std::vector<std::string> places;
      for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto is_unread = [table](const RowFacts& row) {
          return row.is_document() && EngIdTableLookup(table, row.id) != 0;
        };
        const auto from = rows.begin() + static_cast<std::ptrdiff_t>(i);
        const bool category = (rows[i].id & (ENG_ROW_NO_DOCUMENT | ENG_ROW_TOTAL)) == ENG_ROW_NO_DOCUMENT;
        const bool below = category && std::any_of(from, from + 1 + rows[i].counts[2], is_unread);
        EXPECT_EQ(rows[i].unread, is_unread(rows[i]) || below) << rows[i].Text();
        if (is_unread(rows[i])) places.push_back(Show(rows[i].place));
      }
      EXPECT_EQ(Ways(collection.get(), qtest::At({0}), ENG_GO_NEXT_UNREAD), places);
      std::ranges::reverse(places);
      if (!rows.empty() && !rows.back().unread) {
        EXPECT_EQ(Ways(collection.get(), rows.back().place, ENG_GO_PREV_UNREAD), places);
      }
    }
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }

  std::mt19937 random_{21};
  std::vector<std::uint32_t> ids_;
  std::uint32_t folder_ = 0;
};

TEST_P(Random, IncrementalIsRebuilt) {
  const Case& test = GetParam();
  const std::uint32_t view = MakeCase(test);
  auto collection = std::make_unique<OpenCollection>(db_, view);
  for (int round = 0; round < 120; ++round) {
    ASSERT_NO_FATAL_FAILURE(ChangeMuch(1 + Below(round % 10 == 0 ? 60 : 6), collection->get()));
    if (round % 7 == 3) {
      collection.reset();
      if (round % 14 == 3) TakeUser(Below(2) == 0 ? "A" : "B");
      collection = std::make_unique<OpenCollection>(db_, view);
    }
    if (round % 11 == 5) TakeUser(Below(2) == 0 ? "A" : "C");
    ASSERT_EQ(EngCollectionUpdate(collection->get()), ENG_OK);
    const auto rows = CheckedRows(collection->get());
    // What was built from nothing is what later rounds start from: seldom, so that trees grow by changes.
    if (round % 4 != 0) continue;
    ASSERT_NO_FATAL_FAILURE(CheckUnread(view));
    const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
    ASSERT_EQ(rows, CheckedRows(rebuilt.get())) << test.title << ", round " << round;
    ASSERT_FALSE(rows.empty());
  }
}

struct Killed : Random {
  // Saves, brings in and keeps until the end comes from outside.
  [[noreturn]] void Work(std::uint32_t view, unsigned seed) {
    random_.seed(seed);
    db_ = Open();
    ids_ = Search(1);
    for (;;) {
      const OpenCollection collection(db_, view);
      for (int i = 0; i < 3; ++i) ChangeSomething();
      if (EngCollectionUpdate(collection.get()) != ENG_OK) _exit(1);
    }
  }
  static void Kill(pid_t child) {
    kill(child, SIGKILL);
    int how = 0;
    ASSERT_EQ(waitpid(child, &how, 0), child);
    ASSERT_TRUE(WIFSIGNALED(how)) << WEXITSTATUS(how);
  }
};

TEST_P(Killed, AReopenedIndexIsARebuiltOne) {
  const Case& test = GetParam();
  const std::uint32_t view = MakeCase(test);
  for (int i = 0; i < 60; ++i) ChangeSomething();
  for (unsigned round = 0; round < 8; ++round) {
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    db_ = 0;
    const pid_t child = fork();
    if (child == 0) Work(view, round);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20 + 9 * round);
    std::vector<std::string> rows;
    if (round % 2 == 0) {
      // Beside it, on pages that both keep.
      db_ = Open();
      const OpenCollection collection(db_, view);
      while (std::chrono::steady_clock::now() < end) {
        Doc(NewItems());
        ASSERT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
        AllRows(collection.get());
      }
      ASSERT_NO_FATAL_FAILURE(Kill(child));
      ASSERT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
      rows = CheckedRows(collection.get());
    } else {
      std::this_thread::sleep_until(end);
      ASSERT_NO_FATAL_FAILURE(Kill(child));
      db_ = Open();
    }
    {
      const OpenCollection collection(db_, view);
      const std::vector<std::string> reopened = CheckedRows(collection.get());
      if (rows.empty()) rows = reopened;
      ASSERT_EQ(rows, reopened) << round;
    }
    const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
    ASSERT_EQ(rows, CheckedRows(rebuilt.get())) << round;
  }
  EXPECT_EQ(Check(), ENG_OK);
}

INSTANTIATE_TEST_SUITE_P(Index, Killed, testing::Values(kCases[2], kCases[5], kCases[10], kCases[13]));

INSTANTIATE_TEST_SUITE_P(Index, Random, testing::ValuesIn(kCases), [](const auto& info) {
  std::string name = info.param.title;
  std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
  return name;
});

}  // namespace
