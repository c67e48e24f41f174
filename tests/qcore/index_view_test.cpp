// Rows of views: categories, responses, totals, readers, navigation, finding, changes.
#include "tests/qcore/index_fixture.h"

namespace {

using qtest::AllRows;
using qtest::At;
using qtest::OpenCollection;
using qtest::Show;
using qtest::TestColumn;

using Strings = std::vector<std::string>;

struct Views : qtest::IndexTest {
  // The place that a step leads to, or its status.
  static std::string Go(ENGHANDLE collection, COLLECTIONPOSITION position, std::uint16_t code,
                        std::uint32_t count = 1) {
    ENGHANDLE block = 0;
    const ENGSTATUS status = EngCollectionRead(collection, &position, code, count, ENG_GO_CURRENT, 1, ENG_READ_ID,
                                               &block, nullptr, nullptr, nullptr, nullptr);
    if (block != 0) {
      EXPECT_EQ(EngMemFree(block), ENG_OK);
    }
    return status == ENG_OK ? Show(position) : "?" + std::to_string(status);
  }
  static std::uint32_t Count(ENGHANDLE collection, COLLECTIONPOSITION position, std::uint16_t code) {
    std::uint32_t skipped = 0;
    EXPECT_EQ(EngCollectionRead(collection, &position, code, UINT32_MAX, ENG_GO_CURRENT, 0, 0, nullptr, nullptr,
                                &skipped, nullptr, nullptr),
              ENG_OK);
    return skipped;
  }
  // "place count", or the status.
  static std::string Find(ENGHANDLE collection, const Strings& keys, std::uint16_t flags) {
    std::string lengths;
    std::string values;
    for (const std::string& key : keys) {
      qtest::Put16(&lengths, 0);
      qtest::Put16(&lengths, static_cast<unsigned>(key.size() + 2));
      qtest::Put16(&values, 0x0500);
      values += key;
    }
    std::string table;
    qtest::Put16(&table, static_cast<unsigned>(4 + lengths.size() + values.size()));
    qtest::Put16(&table, static_cast<unsigned>(keys.size()));
    table += lengths + values;
    COLLECTIONPOSITION position{};
    std::uint32_t matches = 0;
    const ENGSTATUS status = EngCollectionFind(collection, table.data(), flags, &position, &matches);
    return status == ENG_OK ? Show(position) + " " + std::to_string(matches) : "?" + std::to_string(status);
  }
};

TEST_F(Views, SortedRowsFollowTheirDocuments) {
  Doc({{"Name", "beta"}});
  const std::uint32_t first = Doc({{"Name", "Alpha"}});
  Doc({{"Name", "gamma"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}}));
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d Alpha", "2 d beta", "3 d gamma"}));
  std::uint64_t since = 0;
  ENGHANDLE changes = 0;
  std::uint32_t count = 0;
  int complete = 0;
  EXPECT_EQ(EngCollectionGetChanges(collection.get(), &since, &changes, &count, &complete), ENG_OK);
  Change(first, {{"Name", "zeta"}});
  Doc({{"Name", "delta"}});
  EXPECT_EQ(AllRows(collection.get()).size(), 3u);
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d beta", "2 d delta", "3 d gamma", "4 d zeta"}));
  EXPECT_EQ(EngCollectionGetChanges(collection.get(), &since, &changes, &count, &complete), ENG_OK);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(complete, 1);
  const auto* list = static_cast<const COLLECTIONCHANGE*>(EngMemLock(changes));
  EXPECT_EQ(list[0].Kind, ENG_ROW_MOVED);
  EXPECT_EQ(list[0].ID, first);
  EXPECT_EQ(Show(list[0].Position), "4");
  EXPECT_EQ(list[1].Kind, ENG_ROW_INSERTED);
  EXPECT_EQ(Show(list[1].Position), "2");
  EXPECT_EQ(EngMemUnlock(changes), ENG_OK);
  EXPECT_EQ(EngMemFree(changes), ENG_OK);
}

struct Tree : Views {
  Tree() {
    const std::uint32_t one = Doc({{"Kind", "a\\x"}, {"Name", "one"}, {"nSize", "1"}});
    const std::uint32_t two = Doc({{"Name", "two"}, {"nSize", "2"}}, one);
    Doc({{"Name", "three"}, {"nSize", "3"}}, two);
    Doc({{"Kind", "a"}, {"Name", "four"}, {"nSize", "4"}});
    Doc({{"Kind", "b,A"}, {"Name", "five"}, {"nSize", "5"}});
    view_ = MakeView({{"Kind", 0x4003}, {"Name", 1}, {"nSize", 0, 4}});
  }
  std::uint32_t view_;
};

TEST_F(Tree, CategoriesNestAndAddUp) {
  const OpenCollection collection(db_, view_);
  EXPECT_EQ(
      AllRows(collection.get()),
      (Strings{"1 c A|-|15.0", "1.1 d A|five|5.0", "1.2 d a|four|4.0", "1.3 c x|-|6.0", "1.3.1 d a\\x|one|1.0",
               "1.3.1.1 d1 -|two|2.0", "1.3.1.1.1 d2 -|three|3.0", "2 c b|-|5.0", "2.1 d b|five|5.0", "3 t -|-|20.0"}));
}

struct Step {
  std::vector<std::uint32_t> from;
  std::uint16_t code;
  const char* to;
};
const Step kSteps[] = {
    {{0}, ENG_GO_NEXT, "1"},
    {{1, 3}, ENG_GO_CHILD, "1.3.1"},
    {{1, 1}, ENG_GO_CHILD, "?1028"},
    {{1, 3, 1, 1}, ENG_GO_PARENT, "1.3.1"},
    {{1}, ENG_GO_PARENT, "?1028"},
    {{1, 1}, ENG_GO_NEXT_PEER, "1.2"},
    {{1, 3}, ENG_GO_NEXT_PEER, "?1028"},
    {{2}, ENG_GO_PREV_PEER, "1"},
    {{1, 2}, ENG_GO_FIRST_PEER, "1.1"},
    {{1}, ENG_GO_LAST_PEER, "3"},
    {{1, 3, 1}, ENG_GO_PREV, "1.3"},
    {{2}, ENG_GO_PREV, "1.3.1.1.1"},
    {{1, 3, 1, 1, 1}, ENG_GO_MAIN, "1.3.1"},
    {{1}, ENG_GO_MAIN, "?1028"},
    {{1, 3, 1, 1}, ENG_GO_NEXT_MAIN, "2.1"},
    {{2, 1}, ENG_GO_PREV_MAIN, "1.3.1"},
    {{1, 3, 1, 1}, ENG_GO_NEXT_PARENT, "2"},
    {{2, 1}, ENG_GO_PREV_PARENT, "1"},
    {{1, 1}, ENG_GO_NEXT_CATEGORY, "1.3"},
    {{2, 1}, ENG_GO_NEXT_CATEGORY, "?1028"},
    {{2, 1}, ENG_GO_PREV_CATEGORY, "2"},
    {{1, 2}, ENG_GO_NEXT_DOCUMENT, "1.3.1"},
    {{2}, ENG_GO_PREV_DOCUMENT, "1.3.1.1.1"},
    {{4}, ENG_GO_NEXT, "?1028"},
    {{1, 4}, ENG_GO_CURRENT, "?1028"},
    {{3}, ENG_GO_NEXT_UNREAD, "?1028"},
    {{1}, 0x77, "?262"},
};

TEST_F(Tree, StepsLeadAlongTheTree) {
  const OpenCollection collection(db_, view_);
  for (const Step& step : kSteps) {
    EXPECT_EQ(Go(collection.get(), At(step.from), step.code), step.to) << Show(At(step.from)) << " " << step.code;
  }
  EXPECT_EQ(Go(collection.get(), At({0}), ENG_GO_NEXT | ENG_GO_CONTINUE, UINT32_MAX), "3");
  EXPECT_EQ(Count(collection.get(), At({0}), ENG_GO_NEXT), 10u);
  EXPECT_EQ(Count(collection.get(), At({1}), ENG_GO_DESCENDANTS), 6u);
  COLLECTIONPOSITION limited = At({1, 1});
  limited.MinLevel = 1;
  limited.MaxLevel = 2;
  EXPECT_EQ(Count(collection.get(), limited, ENG_GO_NEXT | ENG_GO_MIN_LEVEL), 5u);
  EXPECT_EQ(Count(collection.get(), limited, ENG_GO_NEXT | ENG_GO_MIN_LEVEL | ENG_GO_MAX_LEVEL), 3u);
}

struct KeySearch {
  Strings keys;
  std::uint16_t flags;
  const char* result;
};
const KeySearch kSearches[] = {
    {{"a"}, 0, "1.1 3"},         {{"A\\X"}, 0x0A, "1.3.1 1"},    {{"a", "four"}, 0, "1.2 1"},
    {{"a", "f"}, 0x0B, "1.1 2"}, {{"a", "FOUR"}, 0x02, "1.2 1"}, {{"a", "FOUR"}, 0, "?1028"},
    {{"c"}, 0, "?1028"},         {{"b"}, 0x40, "1 1"},           {{"a"}, 0xC0, "2 1"},
    {{"a", "f"}, 0x81, "1.2 2"}, {{"a", "b", "c"}, 0, "?816"},
};

TEST_F(Tree, KeysFindRows) {
  const OpenCollection collection(db_, view_);
  for (const KeySearch& search : kSearches) {
    EXPECT_EQ(Find(collection.get(), search.keys, search.flags), search.result) << search.keys[0] << search.flags;
  }
}

TEST_F(Views, HostileDocumentsStillGiveRows) {
  const std::uint32_t first = Doc({{"Name", "first"}});
  const std::uint32_t second = Doc({{"Name", "second"}}, first);
  Change(first, {}, second);
  const std::uint32_t own = Doc({{"Name", "own"}});
  Change(own, {}, own);
  std::string kinds;
  for (int i = 0; i < 10000; ++i) kinds += (i == 0 ? "k" : ",k") + std::to_string(i);
  Doc({{"Name", "many"}, {"Kind", kinds}});
  const OpenCollection flat(db_, MakeView({{"Name", 1}, {"Up", 0, 0, "1 / @Length(Name) - @Error"}}));
  EXPECT_EQ(AllRows(flat.get()), (Strings{"1 d first|-", "1.1 d1 second|-", "2 d many|-", "3 d own|-"}));
  const OpenCollection many(db_, MakeView({{"Kind", 3}}));
  EXPECT_EQ(Count(many.get(), At({0}), ENG_GO_NEXT), 20004u);
  const std::uint32_t deep0 = Doc({{"Name", "deep0"}});
  const std::uint32_t chain = Doc({{"Name", "deep"}});
  std::uint32_t parent = chain;
  for (int i = 0; i < 40; ++i) parent = Doc({{"Name", "deep"}}, parent);
  EXPECT_EQ(EngCollectionUpdate(flat.get()), ENG_OK);
  EXPECT_EQ(AllRows(flat.get()).size(), 46u);
  const std::string top = "SELECT Name = \"deep0\" | @AllDescendants";
  const OpenCollection deep(db_, MakeView({{"Name", 1}}, 0, top));
  EXPECT_EQ(AllRows(deep.get()), Strings{"1 d deep0"});
  Change(chain, {}, deep0);
  EXPECT_EQ(EngCollectionUpdate(deep.get()), ENG_OK);
  EXPECT_EQ(AllRows(deep.get()).size(), 42u);
  Change(deep0, {}, parent);
  EXPECT_EQ(EngCollectionUpdate(deep.get()), ENG_OK);
  EXPECT_EQ(AllRows(deep.get()).size(), 42u) << "a circle";
}

TEST_F(Views, AnotherUniversalIdLetsResponsesGo) {
  const std::uint32_t top = Doc({{"Name", "top"}});
  const std::uint32_t parent = Doc({{"Name", "parent"}}, top);
  const std::uint32_t child = Doc({{"Name", "child"}}, parent);
  Doc({{"Name", "grandchild"}}, child);
  const OpenCollection all(db_, MakeView({{"Name", 1}}));
  const OpenCollection flat(db_, MakeView({{"Name", 1}}, kFlat, R"(SELECT Name = "top" | @AllDescendants)"));
  ORIGINATORID former{};
  ASSERT_EQ(EngSlateGetInfo(db_, parent, &former, nullptr, nullptr), ENG_OK);
  ORIGINATORID other = former;
  other.Slate.DateWord ^= 1;
  struct Rows {
    ORIGINATORID id;
    Strings all, flat;
  };
  const Rows apart{other, {"1 d child", "1.1 d1 grandchild", "2 d top", "2.1 d1 parent"}, {"1 d parent", "2 d top"}};
  const Rows together{former,
                      {"1 d top", "1.1 d1 parent", "1.1.1 d2 child", "1.1.1.1 d3 grandchild"},
                      {"1 d child", "2 d grandchild", "3 d parent", "4 d top"}};
  for (const std::uint16_t flags : {0, ENG_UPDATE_FORCE}) {
    for (const Rows* rows : {&apart, &together}) {
      const ENGHANDLE slate = OpenSlate(parent);
      EXPECT_EQ(EngSlateSetHeader(slate, ENG_SLATE_ORIGINATOR, &rows->id), ENG_OK);
      EXPECT_EQ(EngSlateUpdate(slate, flags), ENG_OK);
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      for (const auto& [collection, expected] : {std::pair(all.get(), rows->all), {flat.get(), rows->flat}}) {
        EXPECT_EQ(EngCollectionUpdate(collection), ENG_OK);
        EXPECT_EQ(AllRows(collection), expected) << flags;
      }
    }
  }
}

TEST_F(Views, WhatIsNoDocumentAnyMoreHasNoRow) {
  Doc({{"Name", "stays"}});
  const std::uint32_t goes = Doc({{"Name", "goes"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}}));
  for (const auto& [slate_class, rows] : {std::pair<std::uint16_t, Strings>{0x40, {"1 d stays"}},
                                          std::pair<std::uint16_t, Strings>{1, {"1 d goes", "2 d stays"}}}) {
    const ENGHANDLE slate = OpenSlate(goes);
    EXPECT_EQ(EngSlateSetHeader(slate, ENG_SLATE_CLASS, &slate_class), ENG_OK);
    SaveAndClose(slate);
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()), rows);
  }
}

TEST_F(Views, ReadersLeaveRowsAndCountsOut) {
  Doc({{"Name", "open"}});
  const ENGHANDLE slate = NewSlate();
  Fill(slate, {{"Name", "closed"}});
  EXPECT_EQ(EngItemAppend(slate, ENG_ITEM_READERS, qtest::Store("Who"), 3, qtest::kText, "Somebody Else", 13, nullptr,
                          nullptr),
            ENG_OK);
  const std::uint32_t closed = SaveAndClose(slate);
  const OpenCollection collection(db_, MakeView({{"Name", 1}}));
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d open"}));
  EXPECT_EQ(Count(collection.get(), At({0}), ENG_GO_NEXT), 1u);
  Change(closed, {{"Who", "*"}});
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()).size(), 2u);
}

TEST_F(Views, RolledBackDocumentsHaveNoRows) {
  Doc({{"Name", "stays"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}}));
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  Doc({{"Name", "goes"}});
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()).size(), 2u);
  ASSERT_EQ(EngDbRollback(db_), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d stays"}));
}

TEST_F(Views, CountsOfResponsesAreThoseOfTheOpening) {
  const std::uint32_t parent = Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}, {"Count", 0, 0, "@Responses"}}, kFlat);
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), (Strings{"1 d a|0.0"}));
  Doc({{"Name", "b"}}, parent);
  EXPECT_EQ(AllRows(OpenCollection(db_, view).get()), (Strings{"1 d a|1.0", "2 d b|0.0"}));
}

TEST_F(Views, WhatWasRolledBackIsNotKept) {
  Doc({{"Name", "stays"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  {
    const OpenCollection collection(db_, view);
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    Doc({{"Name", "goes"}});
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    ASSERT_EQ(EngDbRollback(db_), ENG_OK);
  }
  Doc({{"Name", "comes"}});
  const OpenCollection collection(db_, view);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d comes", "2 d stays"}));
}

TEST_F(Views, UniqueKeysFollowChangesByThemselves) {
  const std::uint32_t first = Doc({{"Name", "a"}, {"Text", "1"}});
  const std::uint32_t second = Doc({{"Name", "b"}, {"Text", "2"}});
  const std::uint32_t third = Doc({{"Name", "b"}, {"Text", "3"}});
  const OpenCollection collection(db_, MakeView({{"Name", 1}, {"Text"}}, 0, "", 1));
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d a|1", "2 d b|2"}));
  const struct {
    std::uint32_t id;
    const char* name;
    const char* text;
    Strings rows;
    int followed;  // 0: the index was built anew
  } changes[] = {
      {third, "b", "4", {"1 d a|1", "2 d b|2"}, 1},             // loses as before
      {second, "b", "5", {"1 d a|1", "2 d b|5"}, 1},            // wins as before
      {third, "c", "6", {"1 d a|1", "2 d b|5", "3 d c|6"}, 1},  // has a key of its own
      {second, "c", "7", {"1 d a|1", "2 d c|7"}, 0},            // another may win what it leaves
      {first, "c", "8", {"1 d c|8"}, 1},                        // takes a key that two had
      {second, "a", "9", {"1 d a|9", "2 d c|8"}, 1},
      {first, "d", "8", {"1 d a|9", "2 d c|6", "3 d d|8"}, 0},
  };
  ENGHANDLE block = 0;
  std::uint32_t count = 0;
  int complete = 0;
  for (const auto& change : changes) {
    std::uint64_t since = 0;
    EXPECT_EQ(EngCollectionGetChanges(collection.get(), &since, &block, &count, &complete), ENG_OK);
    Change(change.id, {{"Name", change.name}, {"Text", change.text}});
    EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
    EXPECT_EQ(AllRows(collection.get()), change.rows) << change.text;
    EXPECT_EQ(EngCollectionGetChanges(collection.get(), &since, &block, &count, &complete), ENG_OK);
    EXPECT_EQ(complete, change.followed) << change.text;
    if (block != 0) {
      EXPECT_EQ(EngMemFree(block), ENG_OK);
    }
  }
}

TEST_F(Views, DamagedPagesAreMadeAnew) {
  for (int i = 0; i < 400; ++i) Doc({{"Name", std::to_string(i % 50) + qtest::Repeated(300, 'a')}, {"nSize", "1"}});
  const std::uint32_t view = MakeView({{"Name", 3}, {"nSize", 1, 4}});
  const Strings rows = AllRows(OpenCollection(db_, view).get());
  const char* const damages[] = {
      "UPDATE page SET data=x'00'",
      "UPDATE page SET data=zeroblob(length(data)) WHERE id%16=9",
      "UPDATE page SET data=(SELECT p.data FROM page p WHERE p.id=page.id+1) WHERE id%3=2 AND EXISTS(SELECT 1 FROM "
      "page "
      "p WHERE p.id=page.id+1)",
      "UPDATE page SET data=substr(data,1,length(data)-1)",
      "UPDATE page SET data=data||x'00'",
      "DELETE FROM page WHERE id%2=0",
      "DELETE FROM page WHERE id%2=1",
  };
  for (const char* damage : damages) {
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    Execute(damage);
    db_ = Open();
    const OpenCollection collection(db_, view);
    EXPECT_EQ(AllRows(collection.get()), rows) << damage;
  }
}

TEST_F(Views, ADamagedDocumentHasNoRow) {
  const std::string bad = std::to_string(Doc({{"Name", "b"}}));
  const std::uint32_t good = Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  for (const std::string& damage : {std::string("modified=modified+1"), std::string("packed=zeroblob(90)")}) {
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    Execute(("UPDATE slate SET " + damage + " WHERE id=" + bad).c_str());
    db_ = Open();
    const OpenCollection collection(db_, view, ENG_COLLECTION_REBUILD);
    EXPECT_EQ(AllRows(collection.get()), Strings{"1 d a"}) << damage;
    const std::string code = qtest::Compiled("SELECT @All");
    ENGHANDLE found = 0;
    EXPECT_EQ(EngDbSearchFormula(db_, code.data(), static_cast<std::uint32_t>(code.size()), 1, nullptr, nullptr, 0,
                                 nullptr, &found),
              ENG_OK);
    EXPECT_EQ(qtest::Ids(found), std::vector<std::uint32_t>{good}) << damage;
    EXPECT_EQ(EngIdTableDestroy(found), ENG_OK);
  }
}

TEST_F(Views, OpeningSaysWhatIsMissing) {
  const std::uint32_t document = Doc({{"Name", "a"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  const ENGHANDLE damaged = NewSlate();
  const std::uint16_t view_class = 8;
  EXPECT_EQ(EngSlateSetHeader(damaged, ENG_SLATE_CLASS, &view_class), ENG_OK);
  EXPECT_EQ(qtest::Append(damaged, "$ViewFormat", "\1", 5), ENG_OK);
  const std::uint32_t bad = SaveAndClose(damaged);
  const struct {
    std::uint32_t view;
    std::uint16_t flags;
    ENGSTATUS status;
  } rows[] = {{0, 0, ENG_ERR_NO_COLLECTION},
              {document, 0, ENG_ERR_NO_COLLECTION},
              {bad, 0, ENG_ERR_VIEW_DESIGN},
              {view, 4, ENG_ERR_NO_COLLECTION},
              {view, 0x1000, ENG_ERR_ARGUMENT},
              {view, 0, ENG_OK},
              {view, 4, ENG_OK}};
  for (const auto& row : rows) {
    ENGHANDLE collection = 0;
    EXPECT_EQ(EngCollectionOpen(db_, db_, row.view, row.flags, 0, &collection, nullptr, nullptr, nullptr, nullptr),
              row.status);
    if (collection != 0) {
      EXPECT_EQ(EngCollectionClose(collection), ENG_OK);
    }
  }
}

}  // namespace
