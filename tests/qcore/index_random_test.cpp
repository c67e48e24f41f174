// Incremental against rebuilt: after every batch of random changes the index must be the one that is built from
// nothing.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "tests/qcore/index_fixture.h"

namespace {

using qtest::AllRows;
using qtest::OpenCollection;
using qtest::TestColumn;

using Items = std::vector<std::pair<std::string, std::string>>;

struct Case {
  const char* title;
  std::vector<TestColumn> columns;
  unsigned table_flags;
  const char* selection;
  std::uint8_t collation_flags;
};

const Case kCases[] = {
    {"nothing sorted", {{"Name"}}, 0, "", 0},
    {"flat, descending", {{"Name", 0xC005}, {"nSize", 1}}, 2, "", 0},
    {"categories", {{"Kind", 0x4003}, {"Name", 1}, {"nSize", 1, 4}}, 0, "", 0},
    {"two categories", {{"Kind", 7}, {"Place", 3}, {"Name", 5}}, 0, "", 0},
    {"rows for values", {{"Place", 1, 0x100}, {"Name", 1}}, 0, "", 0},
    {"selection", {{"Kind", 3}, {"Up", 1, 0, "@UpperCase(Name)"}}, 0, "SELECT nSize > 30", 0},
    {"unique", {{"Place", 1}}, 0, "", 1},
};

class Random : public qtest::IndexTest, public testing::WithParamInterface<Case> {
 protected:
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
  std::uint32_t AnyId() { return ids_[Below(static_cast<std::uint32_t>(ids_.size()))]; }

  Items NewItems() {
    static const char* const kKinds[] = {"a", "A", "b\\c", "b\\d\\e", "b", "c,d", "B\\C,a,b", "", "\\"};
    static const char* const kPlaces[] = {"x", "y", "x,y,z", "z\\z", "X"};
    return {{"Kind", kKinds[Below(9)]},
            {"Place", kPlaces[Below(5)]},
            {"Name", "name " + std::to_string(Below(20)) + (Below(8) == 0 ? qtest::Repeated(3000, 'a') : "")},
            {"nSize", std::to_string(Below(100))}};
  }

  void ChangeSomething() {
    const std::uint32_t what = ids_.size() < 20 ? 0 : Below(10);
    const std::uint32_t parent = !ids_.empty() && Below(3) == 0 ? AnyId() : 0;
    if (what < 4) {
      ids_.push_back(Doc(NewItems(), parent));
    } else if (what < 8) {
      Change(AnyId(), NewItems(), parent);
    } else {
      const std::uint32_t at = Below(static_cast<std::uint32_t>(ids_.size()));
      EXPECT_EQ(EngSlateDelete(db_, ids_[at], Below(2) == 0 ? ENG_UPDATE_NO_STUB : 0), ENG_OK);
      ids_.erase(ids_.begin() + at);
    }
  }

  std::mt19937 random_{42};
  std::vector<std::uint32_t> ids_;
};

TEST_P(Random, IncrementalIsRebuilt) {
  const Case& test = GetParam();
  const std::uint32_t view = MakeView(test.columns, test.table_flags, test.selection, test.collation_flags);
  auto collection = std::make_unique<OpenCollection>(db_, view);
  for (int round = 0; round < 60; ++round) {
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    for (std::uint32_t i = 0, count = 1 + Below(round % 10 == 0 ? 60 : 6); i < count; ++i) ChangeSomething();
    ASSERT_EQ(EngDbCommit(db_), ENG_OK);
    if (round % 7 == 3) {
      collection.reset();
      collection = std::make_unique<OpenCollection>(db_, view);
    }
    ASSERT_EQ(EngCollectionUpdate(collection->get()), ENG_OK);
    const auto rows = AllRows(collection->get());
    const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
    ASSERT_EQ(rows, AllRows(rebuilt.get())) << test.title << ", round " << round;
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
};

TEST_P(Killed, AReopenedIndexIsARebuiltOne) {
  const Case& test = GetParam();
  const std::uint32_t view = MakeView(test.columns, test.table_flags, test.selection, test.collation_flags);
  for (int i = 0; i < 60; ++i) ChangeSomething();
  for (unsigned round = 0; round < 8; ++round) {
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    db_ = 0;
    const pid_t child = fork();
    if (child == 0) Work(view, round);
    std::this_thread::sleep_for(std::chrono::milliseconds(20 + 9 * round));
    kill(child, SIGKILL);
    int how = 0;
    ASSERT_EQ(waitpid(child, &how, 0), child);
    ASSERT_TRUE(WIFSIGNALED(how)) << WEXITSTATUS(how);
    db_ = Open();
    std::vector<std::string> rows;
    {
      const OpenCollection collection(db_, view);
      rows = AllRows(collection.get());
    }
    const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
    ASSERT_EQ(rows, AllRows(rebuilt.get())) << round;
  }
  EXPECT_EQ(Check(), ENG_OK);
}

INSTANTIATE_TEST_SUITE_P(Index, Killed, testing::Values(kCases[2]));

INSTANTIATE_TEST_SUITE_P(Index, Random, testing::ValuesIn(kCases), [](const auto& info) {
  std::string name = info.param.title;
  std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
  return name;
});

}  // namespace
