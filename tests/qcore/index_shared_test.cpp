// Views beside other things: another process, folders, unread lists, more collations, marks, stores of a former
// version.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "engine/formula.h"
#include "qcore/index/viewindex.h"
#include "qcore/store/database.h"
#include "tests/qcore/index_fixture.h"

namespace {

using qtest::AllRows;
using qtest::At;
using qtest::Length;
using qtest::OpenCollection;
using qtest::Show;
using qtest::Store;
using qtest::TestColumn;

using Strings = std::vector<std::string>;

std::string Joined(const Strings& rows) {
  std::string text;
  for (const std::string& row : rows) text += row + "\n";
  return text;
}

struct Shared : qtest::IndexTest {
  static ENGHANDLE Table(const std::vector<std::uint32_t>& ids) {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    for (const std::uint32_t id : ids) EXPECT_EQ(EngIdTableInsert(table, id, nullptr), ENG_OK);
    return table;
  }
  static std::string Go(ENGHANDLE collection, COLLECTIONPOSITION position, std::uint16_t code) {
    ENGHANDLE block = 0;
    const ENGSTATUS status = EngCollectionRead(collection, &position, code, 1, ENG_GO_CURRENT, 1, ENG_READ_ID, &block,
                                               nullptr, nullptr, nullptr, nullptr);
    if (status != ENG_OK) return "?" + std::to_string(status);
    EXPECT_EQ(EngMemFree(block), ENG_OK);
    return Show(position);
  }

  // The other process: for each byte that comes in it updates its collection, which stays open, and tells the rows;
  // for 'w' it saves a document before that and writes the index, for 'd' it changes the view, others are edits.
  [[noreturn]] void Answer(std::uint32_t view, int in, int out) {
    db_ = Open();
    auto collection = std::make_unique<OpenCollection>(db_, view);
    for (char what = 0; read(in, &what, 1) == 1;) {
      if (what == 'w') {
        Doc({{"Name", "other"}, {"Kind", "o"}});
        collection.reset();
        collection = std::make_unique<OpenCollection>(db_, view);
      }
      if (what == 'd') SortDownwards(view);
      Edit(what);
      if (EngCollectionUpdate(collection->get()) != ENG_OK) _exit(1);
      const std::string rows = Joined(AllRows(collection->get())) + '\0';
      if (write(out, rows.data(), rows.size()) != static_cast<ssize_t>(rows.size())) _exit(2);
    }
    _exit(HasFailure() ? 3 : 0);
  }
  // Of the next documents: 'c' changes one, 's' leaves a deletion stub, 'r' leaves nothing, 't' all that in a
  // transaction, 'b' in one that is undone, 'm' changes one so often that the feed is trimmed.
  void Edit(char what) {
    if (what == 't' || what == 'b' || what == 'm') {
      EXPECT_EQ(EngDbBegin(db_), ENG_OK);
      for (const char part : {'c', 's', 'r', 'c'}) Edit(part);
      for (int i = 0; what == 'm' && i < 5000; ++i) SaveAndClose(OpenSlate(ids_.back()));
      EXPECT_EQ((what == 'b' ? EngDbRollback : EngDbCommit)(db_), ENG_OK);
    }
    if (what == 'c') Change(ids_[next_++], {{"Name", "changed " + std::to_string(next_)}, {"Kind", "new"}});
    if (what == 's' || what == 'r') {
      EXPECT_EQ(EngSlateDelete(db_, ids_[next_++], what == 's' ? 0 : ENG_UPDATE_NO_STUB), ENG_OK);
    }
  }
  void SortDownwards(std::uint32_t view) {
    const ENGHANDLE slate = OpenSlate(view);
    EXPECT_EQ(EngItemDeleteByName(slate, Store("$Collation"), 10), ENG_OK);
    EXPECT_EQ(qtest::Append(slate, "$Collation", qtest::Collation({{"Name", 5}}), 2), ENG_OK);
    SaveAndClose(slate);
  }

  // The database is opened again on both sides.
  void StartOther(std::uint32_t view) {
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    db_ = 0;
    int to[2], from[2];
    ASSERT_EQ(pipe(to), 0);
    ASSERT_EQ(pipe(from), 0);
    other_ = fork();
    if (other_ == 0) {
      close(to[1]);
      Answer(view, to[0], from[1]);
    }
    close(from[1]);
    close(to[0]);
    to_other_ = to[1];
    from_other_ = from[0];
    db_ = Open();
  }
  std::string Ask(char what) {
    EXPECT_EQ(write(to_other_, &what, 1), 1);
    std::string rows;
    char c = 0;
    while (read(from_other_, &c, 1) == 1 && c != 0) rows += c;
    return rows;
  }
  void EndOther() {
    close(to_other_);
    int how = 0;
    ASSERT_EQ(waitpid(other_, &how, 0), other_);
    EXPECT_TRUE(WIFEXITED(how) && WEXITSTATUS(how) == 0) << how;
    close(from_other_);
  }

  std::vector<std::uint32_t> ids_;
  std::size_t next_ = 0;
  pid_t other_ = 0;
  int to_other_ = -1;
  int from_other_ = -1;
};

TEST_F(Shared, TwoProcessesSeeOneAnothersSaves) {
  const std::uint32_t view = MakeView({{"Kind", 3}, {"Name", 1}, {"nSize", 0, 4}});
  std::vector<std::uint32_t> ids;
  for (int i = 0; i < 300; ++i) {
    ids.push_back(Doc({{"Name", "n" + std::to_string(i)}, {"Kind", std::to_string(i % 7)}, {"nSize", "1"}}));
  }
  ASSERT_NO_FATAL_FAILURE(StartOther(view));
  for (unsigned round = 0; round < 6; ++round) {
    const OpenCollection collection(db_, view);
    const std::string other = Ask(round % 2 == 0 ? 'u' : 'w');
    ASSERT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    ASSERT_EQ(Joined(AllRows(collection.get())), other) << round;
    Change(ids[round * 11], {{"Name", "changed"}, {"Kind", "new"}});
    ASSERT_EQ(EngSlateDelete(db_, ids[200 + round], 0), ENG_OK);
    {
      const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
      ASSERT_EQ(Joined(AllRows(rebuilt.get())), Ask('u')) << round;
    }
  }
  ASSERT_NO_FATAL_FAILURE(EndOther());
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Shared, AnotherProcessChangesAndRemovesWhatAnOpenViewShows) {
  const std::uint32_t view = MakeView({{"Kind", 3}, {"Name", 1}});
  for (int i = 0; i < 60; ++i) ids_.push_back(Doc({{"Name", std::to_string(i)}, {"Kind", std::to_string(i % 3)}}));
  ASSERT_NO_FATAL_FAILURE(StartOther(view));
  {
    const OpenCollection collection(db_, view);
    std::size_t rows = 63;
    const std::pair<char, int> edits[] = {{'c', 1},  {'s', -1}, {'r', -1}, {'b', 0}, {'t', -2},
                                          {'m', -2}, {'c', 0},  {'t', -2}, {'b', 0}, {'r', -1}};
    for (const auto& [what, more] : edits) {
      SCOPED_TRACE(what);
      const std::string other = Ask(what);
      rows = static_cast<std::size_t>(static_cast<int>(rows) + more);
      if (what == 's') continue;  // brought in with the next one
      ASSERT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
      EXPECT_EQ(Joined(AllRows(collection.get())), other);
      EXPECT_EQ(AllRows(collection.get()).size(), rows);
    }
    const std::string rows_then = Joined(AllRows(collection.get()));
    const OpenCollection rebuilt(db_, view, ENG_COLLECTION_REBUILD);
    EXPECT_EQ(Joined(AllRows(rebuilt.get())), rows_then);
  }
  ASSERT_NO_FATAL_FAILURE(EndOther());
  EXPECT_EQ(Check(), ENG_OK);
}

// Whose rows are read from what another process keeps by then.
TEST_F(Shared, AnotherProcessChangesTheDesign) {
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  for (int i = 0; i < 900; ++i) Doc({{"Name", "n" + std::to_string(i)}});
  ASSERT_EQ(EngDbCommit(db_), ENG_OK);
  const std::uint32_t view = MakeView({{"Name", 1}});
  { const OpenCollection kept(db_, view); }
  ASSERT_NO_FATAL_FAILURE(StartOther(view));
  const OpenCollection collection(db_, view);
  Ask('d');
  EXPECT_EQ(AllRows(collection.get()).size(), 900u);
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()).front(), "1 d n99");
  ASSERT_NO_FATAL_FAILURE(EndOther());
}

// How many indexes a piece of work builds.
int BuildsOf(const std::function<void()>& work) {
  int builds = 0;
  const auto count = [](void* context, std::uint32_t, std::uint32_t) { ++*static_cast<int*>(context); };
  EXPECT_EQ(EngCollectionSetProgress(count, &builds), ENG_OK);
  work();
  EXPECT_EQ(EngCollectionSetProgress(nullptr, nullptr), ENG_OK);
  return builds;
}

TEST_F(Shared, PageNumbersAreUsedAgainAfterAnOpening) {
  for (int i = 0; i < 100; ++i) Doc({{"Name", "stays " + std::to_string(i)}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  const auto look = [&] { EXPECT_EQ(BuildsOf([&] { OpenCollection(db_, view); }), 0); };
  { const OpenCollection built(db_, view); }
  std::int64_t pages = 0;
  for (int round = 0; round < 4; ++round) {
    std::vector<std::uint32_t> ids;
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    for (int i = 0; i < 700; ++i)
      ids.push_back(Doc({{"Name", std::to_string(i * 7 % 700) + qtest::Repeated(300, 'a')}}));
    ASSERT_EQ(EngDbCommit(db_), ENG_OK);
    look();
    Reopen();
    const std::int64_t highest = Count("SELECT max(id&16777215) FROM page WHERE id&16777215<8388607");
    if (round == 0) pages = highest;
    EXPECT_LE(highest, pages + pages / 4) << round;
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    for (const std::uint32_t id : ids) EXPECT_EQ(EngSlateDelete(db_, id, 0), ENG_OK);
    ASSERT_EQ(EngDbCommit(db_), ENG_OK);
    look();
    Reopen();
  }
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()).size(), 100u);
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Shared, ANumberedCollationSortsOneHandlesRows) {
  Doc({{"Name", "a"}, {"nSize", "3"}});
  Doc({{"Name", "b"}, {"nSize", "1"}});
  const std::vector<TestColumn> columns = {{"Name", 1}, {"nSize"}};
  const std::uint32_t view = MakeView(columns);
  const ENGHANDLE slate = OpenSlate(view);
  EXPECT_EQ(qtest::Append(slate, "$Collation1", qtest::Collation({{"Name"}, {"nSize", 1}}), 2), ENG_OK);
  SaveAndClose(slate);
  {
    const OpenCollection collection(db_, view);
    const OpenCollection first(db_, view);
    EXPECT_EQ(EngCollectionSetCollation(collection.get(), 2), ENG_ERR_NO_COLLECTION);
    EXPECT_EQ(EngCollectionSetCollation(collection.get(), 1), ENG_OK);
    Doc({{"Name", "c"}, {"nSize", "2"}});
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d b|1.0", "2 d c|2.0", "3 d a|3.0"}));
    EXPECT_EQ(AllRows(first.get()), (Strings{"1 d a|3.0", "2 d b|1.0", "3 d c|2.0"}));
    EXPECT_EQ(EngCollectionSetCollation(collection.get(), 0), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()), AllRows(first.get()));
  }
  Reopen();
  Doc({{"Name", "d"}, {"nSize", "0"}});
  const OpenCollection later(db_, view);
  EXPECT_EQ(EngCollectionSetCollation(later.get(), 1), ENG_OK);
  EXPECT_EQ(AllRows(later.get()), (Strings{"1 d d|0.0", "2 d b|1.0", "3 d c|2.0", "4 d a|3.0"}));
}

TEST_F(Shared, UnreadRowsAreSteppedTo) {
  const std::uint32_t one = Doc({{"Kind", "a"}, {"Name", "1"}});
  const std::uint32_t two = Doc({{"Kind", "a"}, {"Name", "2"}});
  const std::uint32_t below = Doc({{"Name", "3"}}, two);
  Doc({{"Kind", "b"}, {"Name", "4"}});
  const std::uint32_t view = MakeView({{"Kind", 3}, {"Name", 1}});
  const ENGHANDLE unread = Table({one, below});
  {
    const OpenCollection collection(db_, view, 0, unread);
    EXPECT_EQ(AllRows(collection.get()),
              (Strings{"1 c* a|-", "1.1 d* a|1", "1.2 d a|2", "1.2.1 d1* -|3", "2 c b|-", "2.1 d b|4"}));
    const struct {
      std::vector<std::uint32_t> from;
      std::uint16_t code;
      const char* to;
    } steps[] = {{{0}, ENG_GO_NEXT_UNREAD, "1.1"},         {{1, 1}, ENG_GO_NEXT_UNREAD, "1.2.1"},
                 {{1, 2, 1}, ENG_GO_NEXT_UNREAD, "?1028"}, {{2, 1}, ENG_GO_PREV_UNREAD, "1.2.1"},
                 {{1, 1}, ENG_GO_PREV_UNREAD, "?1028"},    {{1, 1}, ENG_GO_NEXT_UNREAD_MAIN, "?1028"},
                 {{2}, ENG_GO_PREV_UNREAD_MAIN, "1.1"},    {{1}, ENG_GO_NEXT_UNREAD_MAIN, "1.1"}};
    for (const auto& step : steps) {
      EXPECT_EQ(Go(collection.get(), At(step.from), step.code), step.to) << Show(At(step.from)) << " " << step.code;
    }
    EXPECT_EQ(EngIdTableInsert(unread, two, nullptr), ENG_OK);
    EXPECT_EQ(Go(collection.get(), At({1, 1}), ENG_GO_NEXT_UNREAD_MAIN), "1.2");
  }
  EXPECT_EQ(EngIdTableDestroy(unread), ENG_OK);
}

TEST_F(Shared, UnreadRowsFarAwayAreSteppedTo) {
  std::vector<std::uint32_t> ids;
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  for (int i = 100; i < 700; ++i) ids.push_back(Doc({{"Name", std::to_string(i)}}));
  const std::uint32_t below = Doc({{"Name", "0"}}, ids[299]);
  ASSERT_EQ(EngDbCommit(db_), ENG_OK);
  const std::uint32_t gone = Doc({{"Name", "150"}, {"Form", "Gone"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  EXPECT_EQ(EngSlateDelete(db_, gone, 0), ENG_OK);
  const ENGHANDLE unread = Table({ids[0], below, ids[599], gone});
  {
    const OpenCollection collection(db_, view, 0, unread);
    const struct {
      std::vector<std::uint32_t> from;
      std::uint16_t code;
      const char* to;
    } steps[] = {{{1}, ENG_GO_NEXT_UNREAD, "300.1"},    {{300, 1}, ENG_GO_NEXT_UNREAD, "600"},
                 {{600}, ENG_GO_PREV_UNREAD, "300.1"},  {{300, 1}, ENG_GO_PREV_UNREAD, "1"},
                 {{1}, ENG_GO_NEXT_UNREAD_MAIN, "600"}, {{600}, ENG_GO_PREV_UNREAD_MAIN, "1"},
                 {{600}, ENG_GO_NEXT_UNREAD, "?1028"},  {{1}, ENG_GO_PREV_UNREAD, "?1028"},
                 {{2}, ENG_GO_PREV_UNREAD, "1"},        {{599}, ENG_GO_NEXT_UNREAD, "600"}};
    for (const auto& step : steps) {
      EXPECT_EQ(Go(collection.get(), At(step.from), step.code), step.to) << Show(At(step.from)) << " " << step.code;
    }
  }
  const OpenCollection halves(db_, MakeView({{"Half", 3, 0, "@If(Name < \"400\"; \"a\"; \"b\")"}, {"Name", 1}}), 0,
                              unread);
  const auto marks = [&] {
    Strings rows = AllRows(halves.get());
    std::erase_if(rows, [](const std::string& row) { return row.find(" c") == std::string::npos; });
    return rows;
  };
  const struct {
    std::uint32_t id;
    bool unread;
    Strings marks;
  } edits[] = {{ids[0], false, {"1 c* a|-", "2 c* b|-"}},
               {below, false, {"1 c a|-", "2 c* b|-"}},
               {ids[250], true, {"1 c* a|-", "2 c* b|-"}},
               {ids[599], false, {"1 c* a|-", "2 c b|-"}}};
  for (const auto& edit : edits) {
    EXPECT_EQ((edit.unread ? EngIdTableInsert : EngIdTableDelete)(unread, edit.id, nullptr), ENG_OK);
    EXPECT_EQ(marks(), edit.marks) << edit.id;
  }
  EXPECT_EQ(Go(halves.get(), At({1, 1}), ENG_GO_NEXT_UNREAD), "1.251");
  EXPECT_EQ(Go(halves.get(), At({2, 300}), ENG_GO_PREV_UNREAD), "1.251");
  Change(ids[250], {{"Name", "699"}});
  EXPECT_EQ(EngCollectionUpdate(halves.get()), ENG_OK);
  EXPECT_EQ(marks(), (Strings{"1 c a|-", "2 c* b|-"}));
  EXPECT_EQ(Go(halves.get(), At({1, 1}), ENG_GO_NEXT_UNREAD), "2.300");
}

TEST_F(Shared, AReadGoesOnWhileAnotherKeepsItsOwnAgainAndAgain) {
  std::vector<std::uint32_t> ids;
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  for (int i = 0; i < 2000; ++i) ids.push_back(Doc({{"Name", std::to_string(i)}}));
  ASSERT_EQ(EngDbCommit(db_), ENG_OK);
  const std::uint32_t view = MakeView({{"Name", 1}});
  const ENGHANDLE other = Open();
  { const OpenCollection kept(db_, view); }
  {
    const OpenCollection collection(db_, view);
    const auto database = qcore::Database::Find(db_);
    int reads = 0;
    const auto read = [&](qcore::index::IndexTree& tree) {
      ++reads;
      { const OpenCollection rebuilt(other, view, ENG_COLLECTION_REBUILD); }
      std::uint32_t rows = 0;
      for (auto row = tree.rows().At(0); row.at_row(); ++rows) tree.rows().Next(&row);
      EXPECT_EQ(rows, ids.size());
      return ENGSTATUS{ENG_OK};
    };
    EXPECT_EQ(qcore::index::ViewIndex::Find(database, database, view)->With(0, read), ENG_OK);
    EXPECT_EQ(reads, 5) << "the last one of a tree that was built here";
    Change(ids[7], {{"Name", "zzz"}});
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()).back(), "2000 d zzz");
  }
  EXPECT_EQ(EngDbClose(other), ENG_OK);
}

TEST_F(Shared, WhatWasUndoneDuringABuildIsNotKept) {
  Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  struct Turns {
    std::promise<void> built;
    std::promise<void> undone;
    int calls = 0;
  } turns;
  const auto wait = [](void* context, std::uint32_t, std::uint32_t) {
    Turns& at = *static_cast<Turns*>(context);
    if (at.calls++ != 0) return;
    at.built.set_value();
    at.undone.get_future().wait();
  };
  ASSERT_EQ(EngCollectionSetProgress(wait, &turns), ENG_OK);
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  Doc({{"Name", "b"}});
  std::thread reader([&] { EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), Strings{"1 d a"}); });
  turns.built.get_future().wait();
  EXPECT_EQ(EngDbRollback(db_), ENG_OK);
  turns.undone.set_value();
  reader.join();
  EXPECT_EQ(EngCollectionSetProgress(nullptr, nullptr), ENG_OK);
  Reopen();
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), Strings{"1 d a"});
}

TEST_F(Shared, AFoldersRowsAreItsMembers) {
  const std::uint32_t a = Doc({{"Name", "a"}});
  const std::uint32_t b = Doc({{"Name", "b"}});
  const std::uint32_t c = Doc({{"Name", "c"}}, b);
  const std::uint32_t view = MakeView({{"Name", 1}});
  std::uint32_t folder = 0;
  ASSERT_EQ(EngFolderCreate(db_, 0, view, db_, Store("In"), 2, 0, 0, &folder), ENG_OK);
  const OpenCollection collection(db_, folder);
  const struct {
    bool add;
    std::vector<std::uint32_t> ids;
    Strings rows;
  } edits[] = {{true, {}, {}},
               {true, {a, c}, {"1 d a", "2 d c"}},
               {true, {b}, {"1 d a", "2 d b", "2.1 d1 c"}},
               {false, {a, b}, {"1 d c"}},
               {false, {c}, {}},
               {true, {a, b, c}, {"1 d a", "2 d b", "2.1 d1 c"}}};
  for (const auto& edit : edits) {
    const ENGHANDLE table = Table(edit.ids);
    EXPECT_EQ((edit.add ? EngFolderDocAdd : EngFolderDocRemove)(db_, 0, folder, table, 0), ENG_OK);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    ASSERT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()), edit.rows);
  }
  Change(a, {{"Name", "z"}});
  EXPECT_EQ(EngSlateDelete(db_, b, 0), ENG_OK);
  Doc({{"Name", "outside"}});
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d c", "2 d z"}));
}

TEST_F(Shared, UsersWhoTakeTurnsKeepTheirIndexes) {
  Doc({{"Name", "all"}, {"To", "B"}});
  Doc({{"Name", "of A"}, {"To", "A"}, {"$Readers", "A"}});
  Doc({{"Name", "of B"}, {"To", "B"}, {"$Readers", "B"}});
  const struct {
    std::uint32_t view;
    Strings a, b, others;
  } views[] = {{MakeView({{"Name", 1}}), {"1 d all", "2 d of A"}, {"1 d all", "2 d of B"}, {"1 d all"}},
               {MakeView({{"Name", 1}}, 0, "SELECT To = @UserName"), {"1 d of A"}, {"1 d all", "2 d of B"}, {}}};
  const std::pair<const char*, int> turns[] = {{"A", 1}, {"B", 1}, {"A", 0}, {"B", 0}, {"C", 1}, {"D", 1},
                                               {"B", 0}, {"E", 1}, {"A", 1}, {"E", 0}, {"B", 1}};
  for (const auto& [view, a, b, others] : views) {
    for (const auto& [user, builds] : turns) {
      ASSERT_EQ(EngEnvSetString("UserName", user), ENG_OK);
      const Strings& rows = *user == 'A' ? a : *user == 'B' ? b : others;
      const auto look = [&, view = view] { EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), rows) << user; };
      EXPECT_EQ(BuildsOf(look), builds) << user;
    }
  }
  EXPECT_EQ(Check(), ENG_OK);
}

// Another user in the same process, while the index is the same for all.
TEST_F(Shared, ADocumentsFirstReadersAreThoseOfTheUser) {
  ASSERT_EQ(EngEnvSetString("UserName", "A"), ENG_OK);
  Doc({{"Name", "all"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}}));
  ASSERT_EQ(EngEnvSetString("UserName", "B"), ENG_OK);
  Doc({{"Name", "of A"}, {"$Readers", "A"}});
  Doc({{"Name", "of B"}, {"$Readers", "B"}});
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d all", "2 d of B"}));
}

TEST_F(Shared, AnOpeningCountsResponsesAnew) {
  qtest::StandingClock clock;
  const std::uint32_t main = Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}, {"No", 0, 0, "@Text(@Responses)"}}, kFlat, "SELECT Name = \"a\"");
  const OpenCollection collection(db_, view);
  EXPECT_EQ(AllRows(collection.get()), Strings{"1 d a|0"});
  EXPECT_EQ(BuildsOf([&] { OpenCollection(db_, view); }), 0);
  Doc({{"Name", "b"}}, main);
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), Strings{"1 d a|1"});
}

// Look-ups fail in a view's formulas, today and tomorrow.
TEST_F(Shared, AViewOfLookUpsIsNotBuiltByOpenings) {
  qtest::StandingClock clock;
  Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}, {"Found", 0, 0, R"(@Text(@DbColumn(""; ""; "view"; 1)))"}});
  const OpenCollection held(db_, view);
  for (const int hours : {0, 1, 30}) {
    clock.Sleep(std::chrono::hours(hours));
    Doc({{"Name", "b"}});
    EXPECT_EQ(BuildsOf([&] { OpenCollection(db_, view); }), 0) << hours;
  }
  EXPECT_EQ(AllRows(held.get()), (Strings{"1 d a|-", "2 d b|-", "3 d b|-", "4 d b|-"}));
}

TEST_F(Shared, RowsThatDependOnTheTimeAreBuiltWhenTheyAreOld) {
  qtest::StandingClock clock;
  Doc({{"Name", "a"}});
  const std::uint32_t now = MakeView({{"Name", 1}}, 0, "SELECT @Now > [01/01/1990]");
  const std::uint32_t today = MakeView({{"Name", 1}}, 0, "SELECT @Today > [01/01/1990]");
  const struct {
    std::uint32_t view;
    int seconds;
    bool shared;
    int builds;
  } rows[] = {{now, 0, true, 0},    {now, 59, true, 0},          {now, 60, true, 1},   {now, 1, false, 1},
              {today, 60, true, 0}, {today, 25 * 3600, true, 1}, {today, 1, false, 1}, {now, 25 * 3600, true, 1}};
  for (const auto& [view, seconds, shared, builds] : rows) {
    auto first = std::make_unique<OpenCollection>(db_, view);
    clock.Sleep(std::chrono::seconds(seconds));
    if (!shared) first.reset();
    EXPECT_EQ(BuildsOf([&, view = view] { OpenCollection(db_, view); }), builds) << view << " " << seconds;
  }
  const struct {
    std::uint32_t view;
    int seconds;
    int builds;
  } updates[] = {{now, 0, 0}, {now, 59, 0}, {now, 1, 1}, {today, 60, 0}, {today, 25 * 3600, 1}, {now, 1, 1}};
  const OpenCollection collections[] = {OpenCollection(db_, now), OpenCollection(db_, today)};
  for (const auto& [view, seconds, builds] : updates) {
    clock.Sleep(std::chrono::seconds(seconds));
    const ENGHANDLE collection = collections[view == now ? 0 : 1].get();
    EXPECT_EQ(BuildsOf([&] { EXPECT_EQ(EngCollectionUpdate(collection), ENG_OK); }), builds) << view << " " << seconds;
  }
}

// Two copies of a database: a folder of the one shown over the documents of the other, where a folder has its ID.
TEST_F(Shared, AFolderOfAnotherDatabaseIsNotTheOneOfItsNumber) {
  const std::vector<std::uint32_t> ids{Doc({{"Name", "a"}}), Doc({{"Name", "b"}})};
  std::uint32_t folder = 0;
  ASSERT_EQ(EngFolderCreate(db_, 0, MakeView({{"Name", 1}}), db_, Store("In"), 2, 0, 0, &folder), ENG_OK);
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  std::filesystem::copy_file(file(), folder_.File("data/copy.vlt"));
  db_ = Open();
  const ENGHANDLE copy = Open("copy");
  for (const auto& [db, id] : {std::pair(db_, ids[0]), std::pair(copy, ids[1])}) {
    const ENGHANDLE table = Table({id});
    EXPECT_EQ(EngFolderDocAdd(db, 0, folder, table, 0), ENG_OK);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }
  for (int turn = 0; turn < 2; ++turn) {
    ENGHANDLE crossed = 0;
    ASSERT_EQ(EngCollectionOpen(copy, db_, folder, 0, 0, &crossed, nullptr, nullptr, nullptr, nullptr), ENG_OK);
    EXPECT_EQ(AllRows(crossed), Strings{"1 d b"});
    EXPECT_EQ(EngCollectionClose(crossed), ENG_OK);
    EXPECT_EQ(AllRows(OpenCollection(db_, folder).get()), Strings{"1 d a"});
  }
  EXPECT_EQ(EngDbClose(copy), ENG_OK);
}

TEST_F(Shared, ASearchOverRowsFindsTheirDocumentsOnly) {
  Doc({{"Name", "apple pie"}});
  const std::uint32_t cake = Doc({{"Name", "apple cake"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}}, 0, "SELECT @Contains(Name; \"cake\")"));
  ASSERT_EQ(EngFtIndex(db_, 0, nullptr, nullptr, nullptr), ENG_OK);
  ASSERT_EQ(EngDbCreate("other", 255, 0), ENG_OK);
  const ENGHANDLE other = Open("other");
  ASSERT_EQ(EngFtIndex(other, 0, nullptr, nullptr, nullptr), ENG_OK);
  ENGHANDLE search = 0;
  ENGHANDLE table = 0;
  std::uint32_t hits = 0;
  ASSERT_EQ(EngFtOpen(&search), ENG_OK);
  const auto find = [&](ENGHANDLE db) {
    return EngFtSearch(db, &search, collection.get(), Store("apple"), ENG_FT_COLLECTION | ENG_FT_TABLE, 0, 0, &hits,
                       nullptr, &table);
  };
  EXPECT_EQ(find(other), ENG_ERR_ARGUMENT);
  ASSERT_EQ(find(db_), ENG_OK);
  EXPECT_EQ(qtest::Ids(table), std::vector<std::uint32_t>{cake});
  EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  EXPECT_EQ(EngFtClose(search), ENG_OK);
  EXPECT_EQ(EngDbClose(other), ENG_OK);
}

TEST_F(Shared, AStoreOfTheFirstVersionShowsItsViews) {
  Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  MakeVersion(1);
  db_ = Open();
  for (const char* name : {"b", "c"}) {
    const OpenCollection collection(db_, view);
    const std::size_t rows = AllRows(collection.get()).size();
    Doc({{"Name", name}});
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()).size(), rows + 1);
  }
  Reopen();
  const OpenCollection kept(db_, view, ENG_COLLECTION_NO_UPDATE | ENG_COLLECTION_NO_CREATE);
  EXPECT_EQ(AllRows(kept.get()), (Strings{"1 d a", "2 d b", "3 d c"}));
  EXPECT_EQ(Check(), ENG_OK);
}

// The mark that a formula gives, as a row of five children and no descendants shows it.
std::string Expanded(const std::string& text, std::uint32_t id = 4) {
  const COLLECTIONPOSITION position = At({2, 1, 5});
  const std::uint32_t statistics[] = {7, 1, 0};
  ENGCHAR output[64];
  std::uint16_t length = 0;
  const ENGSTATUS status =
      EngCollectionTranslateSpecial(Store(text), Length(text), output, sizeof output, id, &position, statistics,
                                    nullptr, 0, Store("Db"), Store("View"), &length);
  return status == ENG_OK ? std::string(reinterpret_cast<char*>(output), length) : "?" + std::to_string(status);
}

std::string Evaluated(const std::string& formula) {
  const std::string code = qtest::Compiled(formula);
  ENGHANDLE compute = 0;
  char value[200];
  std::uint32_t length = 0;
  std::uint16_t flags = 0;
  EXPECT_EQ(EngFormulaComputeStart(0, code.data(), &compute), ENG_OK);
  EXPECT_EQ(EngFormulaEvaluateTo(compute, 0, value, sizeof value, &length, &flags), ENG_OK) << formula;
  EXPECT_EQ(EngFormulaComputeStop(compute), ENG_OK);
  return std::string(value + 2, length - 2);
}

TEST_F(Shared, RowsKnowTheirViewAndDatabase) {
  Doc({{"Name", "a"}});
  const std::uint32_t view =
      MakeView({{"Name", 1}, {"In", 0, 0, "@ViewTitle + @DbTitle + @RightBack(@DbName; \"/\")"}});
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), (Strings{"1 d a|viewmain.vlt"}));
  Change(view, {{"$TITLE", "Names|view"}});
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), (Strings{"1 d a|Namesmain.vlt"}));
  ASSERT_EQ(EngDbSetInfo(db_, qtest::Store("Books")), ENG_OK);
  Reopen();
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), (Strings{"1 d a|NamesBooksmain.vlt"}));
}

TEST_F(Shared, MarksOfFormulasAreExpanded) {
  const std::pair<const char*, const char*> rows[] = {
      {"\"<\" + @DocNumber + \">\"", "<2.1.5>"},
      {"@DocNumber(\"-\")", "2-1-5"},
      {"@DocNumber(\"\")", "5"},
      {"@DocParentNumber", "2.1"},
      {"@DocParentNumber(\"\") + @DocLevel", "12"},
      {"@DocSiblings", "7"},
      {"@DocChildren + @DocDescendants", "10"},
      {"@DocChildren(\"% of them\")", "1 of them"},
      {"@DocChildren(\"%\"; \"none\"; \"one\")", "one"},
      {"@DocDescendants(\"%\"; \"none %\"; \"one\")", "none 0"},
      {"@IsCategory + @IsCategory(\"yes\"; \"no\")", "no"},
      {"@IsExpandable + @IsExpandable(\"yes\")", "+yes"},
  };
  for (const auto& [formula, text] : rows) EXPECT_EQ(Expanded(Evaluated(formula)), text) << formula;
  EXPECT_EQ(Expanded(Evaluated("@IsCategory"), ENG_ROW_NO_DOCUMENT | 1), "*");
  for (const std::string& text : {std::string("\x7F"), std::string("a\x7FN"), std::string("\x7Fz\x7F"),
                                  std::string("\x7FNx\x7F"), std::string("\x7F\x7F\x7F")}) {
    EXPECT_EQ(Expanded(text), text);
  }
  EXPECT_EQ(Expanded(std::string(60, '-') + "\x7FN\x7F"), "?" + std::to_string(ENG_ERR_BUFFER_SIZE));
  const std::uint32_t parent = Doc({{"Name", "a"}});
  Doc({{"Name", "\x7FN\x7F"}}, parent);
  const OpenCollection collection(db_, MakeView({{"Name", 1}, {"No", 0, 0, "@DocNumber + \" \" + Name"}}));
  EXPECT_EQ(AllRows(collection.get())[0], "1 d a|1 a");
  EXPECT_EQ(AllRows(collection.get())[1].substr(0, 8), "1.1 d1 \x7F") << "an item's own text stays";
  const std::string category = R"(@DocNumber + @IsCategory(":"; "?") + @DocChildren("%"))";
  const OpenCollection numbered(db_, MakeView({{"No", 3, 0, category}, {"Name", 1}}));
  EXPECT_EQ(AllRows(numbered.get())[0], "1 c 1:1|-");
  EXPECT_EQ(AllRows(numbered.get())[1], "1.1 d 1.1?1|a");
  const OpenCollection parted(db_, MakeView({{"No", 3, 0, R"({a\} + @IsCategory({b\c}; {d\e}) + {\f})"}}));
  EXPECT_EQ(AllRows(parted.get())[0], "1 c a");
  EXPECT_EQ(AllRows(parted.get())[1], R"(1.1 c b\c)");
  EXPECT_EQ(AllRows(parted.get())[2], "1.1.1 c f");
}

}  // namespace
