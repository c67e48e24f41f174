// Navigators: every move from every row, with every cache, against a plain list of the rows.
#include <algorithm>
#include <set>

#include "tests/vq/support/entries_fixture.h"
#include "vq/store/vqftsrch.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::TextOf;

struct Line {
  std::string Name;
  VQVFPosition Position;
  unsigned Level;
  bool Category, Main, Unread;
};
using Lines = std::vector<Line>;

constexpr int kNone = -1;

int Scan(const Lines& rows, int from, int step, auto&& stop) {
  for (int i = from + step; i >= 0 && i < static_cast<int>(rows.size()); i += step) {
    if (stop(rows[static_cast<std::size_t>(i)])) return i;
  }
  return kNone;
}

int Peer(const Lines& rows, int at, int step) {
  const unsigned level = rows[static_cast<std::size_t>(at)].Level;
  const int found = Scan(rows, at, step, [&](const Line& row) { return row.Level <= level; });
  return found != kNone && rows[static_cast<std::size_t>(found)].Level == level ? found : kNone;
}

int LastPeer(const Lines& rows, int at, int step) {
  for (int next = at; next != kNone; next = Peer(rows, next, step)) at = next;
  return at;
}

int Parent(const Lines& rows, int at, int step) {
  const unsigned level = rows[static_cast<std::size_t>(at)].Level;
  return Scan(rows, at, step, [&](const Line& row) { return row.Level < level; });
}

int PreviousParent(const Lines& rows, int at) {
  int peer = kNone;
  for (int parent = Parent(rows, at, -1); parent != kNone && peer == kNone; parent = Parent(rows, parent, -1)) {
    peer = Peer(rows, parent, -1);
  }
  return peer;
}

// Where a code leads from a row of a list.
int Expected(const Lines& rows, VQNAVIGATION code, int at) {
  const Line& row = rows[static_cast<std::size_t>(at)];
  const int last = static_cast<int>(rows.size()) - 1;
  const int step = code >= VQNAVIGATE_PARENT || code == VQNAVIGATE_MAIN ? -1 : 1;
  switch (code) {
    case VQNAVIGATE_CHILD:
      return at < last && rows[static_cast<std::size_t>(at + 1)].Level > row.Level ? at + 1 : kNone;
    case VQNAVIGATE_FIRST:
      return 0;
    case VQNAVIGATE_LAST:
      return last;
    case VQNAVIGATE_FIRST_SIBLING:
      return LastPeer(rows, at, -1);
    case VQNAVIGATE_LAST_SIBLING:
      return LastPeer(rows, at, 1);
    case VQNAVIGATE_MAIN:
      if (row.Main) return at;
      return row.Level == 1 || row.Category ? kNone : Scan(rows, at, -1, [](const Line& r) { return r.Main; });
    case VQNAVIGATE_NEXT:
    case VQNAVIGATE_PREV:
      return Scan(rows, at, step, [](const Line&) { return true; });
    case VQNAVIGATE_NEXT_CATEGORY:
    case VQNAVIGATE_PREV_CATEGORY:
      return Scan(rows, at, step, [](const Line& r) { return r.Category; });
    case VQNAVIGATE_NEXT_MAIN:
    case VQNAVIGATE_PREV_MAIN:
      return Scan(rows, at, step, [](const Line& r) { return r.Main; });
    case VQNAVIGATE_NEXT_DOCUMENT:
    case VQNAVIGATE_PREV_DOCUMENT:
      return Scan(rows, at, step, [](const Line& r) { return !r.Category; });
    case VQNAVIGATE_NEXT_PARENT:
    case VQNAVIGATE_PARENT:
      return Parent(rows, at, step);
    case VQNAVIGATE_PREV_PARENT:
      return PreviousParent(rows, at);
    case VQNAVIGATE_NEXT_SIBLING:
    case VQNAVIGATE_PREV_SIBLING:
      return Peer(rows, at, step);
    case VQNAVIGATE_NEXT_UNREAD:
    case VQNAVIGATE_PREV_UNREAD:
      return Scan(rows, at, step, [](const Line& r) { return r.Unread; });
    default:
      return Scan(rows, at, step, [](const Line& r) { return r.Unread && r.Main; });
  }
}

class Navigators : public vqtest::EntriesFixture {
 protected:
  // Read by ordinals, each from the start.
  static Lines AllRows(const VQVFNavigator& navigator) {
    Lines rows;
    for (unsigned long i = 0; i < navigator.GetEntryCount(); ++i) {
      VQVFNavigator fresh(navigator.GetNavigatorBody());
      const VQVFEntry entry = fresh[i];
      VQVFPosition position;
      EXPECT_EQ(entry.GetPosition(&position), VQ_OK);
      const bool unread = entry.IsUnread() != 0 && entry.IsCategory() == 0;
      rows.push_back({Row(entry), position, static_cast<unsigned>(entry.GetDocLevel()), entry.IsCategory() != 0,
                      entry.IsMainTopic() != 0, unread});
    }
    return rows;
  }

  static std::string Listing(const Lines& rows) {
    std::string text;
    for (const Line& row : rows) text += row.Name + (row.Unread ? "*\n" : "\n");
    return text;
  }

  static void ExpectMove(VQVFNavigator& navigator, const Lines& rows, VQNAVIGATION code, std::size_t at, bool fetch) {
    const int target = Expected(rows, code, static_cast<int>(at));
    ASSERT_EQ(navigator.SetPosition(rows[at].Position), VQ_OK);
    VQVFEntry entry;
    const VQSTATUS status = navigator.Goto(code, fetch ? &entry : nullptr);
    VQVFPosition now;
    ASSERT_EQ(navigator.GetPosition(&now), VQ_OK);
    const std::string where = rows[at].Name + " by " + std::to_string(code);
    EXPECT_EQ(status, target == kNone ? VQWARN_NOT_FOUND : VQ_OK) << where;
    const Line& there = rows[target == kNone ? at : static_cast<std::size_t>(target)];
    EXPECT_EQ(Place(now), Place(there.Position)) << where;
    if (fetch && target != kNone && status == VQ_OK) {
      EXPECT_EQ(Row(entry), there.Name) << where;
    }
  }

  static void ExpectAllMoves(VQVFNavigator& navigator, const Lines& rows, unsigned codes) {
    for (unsigned code = 0; code < codes; ++code) {
      for (std::size_t at = 0; at < rows.size(); ++at) {
        ExpectMove(navigator, rows, static_cast<VQNAVIGATION>(code), at, true);
        ExpectMove(navigator, rows, static_cast<VQNAVIGATION>(code), at, false);
      }
    }
    for (std::size_t i = 0; i < 3 * rows.size(); ++i) {
      const std::size_t index = i * 7 % rows.size();
      EXPECT_EQ(Row(navigator[index]), rows[index].Name) << index;
    }
    EXPECT_EQ(StatusOf([&] { return navigator[rows.size()]; }), VQERR_BAD_SUBSCRIPT);
  }

  // The tree, where these alone are unread.
  VQViewFolder OpenUnread(const std::set<std::string>& names) {
    VQViewFolder view = OpenTree();
    ReadAllBut(view, names);
    EXPECT_EQ(view.Close(), VQ_OK);
    EXPECT_EQ(view.Open(VQVFOPENFLAGS_USE_UNREAD_LIST), VQ_OK);
    return view;
  }

  void ReadAllBut(VQViewFolder& view, const std::set<std::string>& names) {
    VQVFNavigator entries;
    ASSERT_EQ(view.GetEntries(&entries), VQ_OK);
    ENGHANDLE unread = 0;
    ASSERT_EQ(EngIdTableCreate(4, &unread), ENG_OK);
    for (unsigned long i = 0; i < entries.GetEntryCount(); ++i) {
      const VQVFEntry entry = entries[i];
      if (entry.IsCategory() != 0 || !names.contains(Column(entry, 1))) continue;
      ASSERT_EQ(EngIdTableInsert(unread, static_cast<std::uint32_t>(entry.GetSlateID()), nullptr), ENG_OK);
    }
    ENGCHAR user[256];
    ASSERT_EQ(EngUserNameGet(user), ENG_OK);
    const auto length = static_cast<std::uint16_t>(std::find(user, user + 255, 0) - user);
    const ENGHANDLE db = vq::ToHandle(Db.GetDatabaseHandle());
    ENGHANDLE table = 0;
    ASSERT_EQ(EngDbGetUnreadTable(db, user, length, 1, &table), ENG_OK);
    ASSERT_EQ(EngDbSetUnreadTable(db, user, length, 0, unread), ENG_OK);
    EngIdTableDestroy(table);
    EngIdTableDestroy(unread);
  }
};

constexpr const char* kLimits[] = {"0", "1", "3", "", "abc", "5000000000"};

TEST_F(Navigators, EveryCacheGivesTheSameMoves) {
  AddTree();
  VQViewFolder view = OpenUnread({"r2", "b1"});
  for (const char* limit : kLimits) {
    LimitCache(limit);
    SCOPED_TRACE(limit);
    VQVFNavigator whole;
    ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
    const Lines rows = AllRows(whole);
    EXPECT_EQ(Listing(rows),
              "1 a\n1.1 a1\n1.1.1 r1\n1.1.1.1 r11\n1.1.2 r2*\n1.2 a2\n2 b\n2.1 b1*\n3 c\n3.1 c1\n3.1.1 q1\n"
              "3.2 d\n3.2.1 d1\n");
    ExpectAllMoves(whole, rows, 23);
  }
}

struct PartRow {
  const char* what;
  std::size_t start;
  unsigned long levels;
  const char* rows;
};

TEST_F(Navigators, PartsOfAViewAreClosedWorlds) {
  AddTree();
  VQViewFolder view = OpenUnread({"r11", "r2", "b1", "d1"});
  VQVFNavigator whole;
  ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
  const Lines all = AllRows(whole);
  const PartRow parts[] = {
      {"all below a", 0, 0, "1.1 a1\n1.1.1 r1\n1.1.1.1 r11*\n1.1.2 r2*\n1.2 a2\n"},
      {"one level below a", 0, 1, "1.1 a1\n1.2 a2\n"},
      {"two levels below a", 0, 2, "1.1 a1\n1.1.1 r1\n1.1.2 r2*\n1.2 a2\n"},
      {"below a1", 1, 0, "1.1.1 r1\n1.1.1.1 r11*\n1.1.2 r2*\n"},
      {"below c, where a category is deeper", 8, 0, "3.1 c1\n3.1.1 q1\n3.2 d\n3.2.1 d1*\n"},
      {"more levels than there are", 0, 4000000000UL, "1.1 a1\n1.1.1 r1\n1.1.1.1 r11*\n1.1.2 r2*\n1.2 a2\n"},
  };
  for (const char* limit : kLimits) {
    LimitCache(limit);
    for (const PartRow& part : parts) {
      SCOPED_TRACE(std::string(part.what) + " with " + limit);
      ASSERT_EQ(view.SetPosition(all[part.start].Position), VQ_OK);
      VQVFNavigator below;
      ASSERT_EQ(part.levels == 0 ? view.GetDescendants(&below) : view.GetDescendants(&below, part.levels), VQ_OK);
      const Lines rows = AllRows(below);
      EXPECT_EQ(Listing(rows), part.rows);
      // Category codes are for parts that start with one.
      for (unsigned code = 0; code < 23; ++code) {
        const bool categories = code == VQNAVIGATE_NEXT_CATEGORY || code == VQNAVIGATE_PREV_CATEGORY;
        if (categories) {
          EXPECT_EQ(below.Goto(static_cast<VQNAVIGATION>(code)), VQWARN_NOT_FOUND);
        }
        for (std::size_t at = 0; !categories && at < rows.size(); ++at) {
          ExpectMove(below, rows, static_cast<VQNAVIGATION>(code), at, true);
          ExpectMove(below, rows, static_cast<VQNAVIGATION>(code), at, false);
        }
      }
      EXPECT_EQ(below.SetPosition(all[7].Position), VQERR_OUT_OF_RANGE);
    }
  }
}

// Rows of one document at several places, and the totals row at the end, which is no category and no document.
TEST_F(Navigators, TotalsAndRepeatedRowsAreWalkedLikeAny) {
  AddTree();
  VQDocument both = Add("a", "both");
  VQText kinds;
  ASSERT_EQ(both.GetItem("Kind", &kinds), VQ_OK);
  kinds << VQString("b");
  ASSERT_EQ(both.Save(), VQ_OK);
  VQDocument answer = Add("a", "answer", &both);
  const double seven = 7;
  ASSERT_EQ(answer.CreateItem("Size", TYPE_NUMBER, &seven, sizeof seven, VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE),
            VQ_OK);
  ASSERT_EQ(answer.Save(), VQ_OK);
  VQViewFolder view = MakeView(true);
  ASSERT_EQ(view[3].SetTotalsOption(VQVFTOTALSOPTION_TOTAL), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Open(), VQ_OK);
  ReadAllBut(view, {"both", "d1"});
  ASSERT_EQ(view.Close(), VQ_OK);
  ASSERT_EQ(view.Open(VQVFOPENFLAGS_USE_UNREAD_LIST), VQ_OK);
  for (const char* limit : kLimits) {
    LimitCache(limit);
    SCOPED_TRACE(limit);
    VQVFNavigator whole;
    ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
    const Lines rows = AllRows(whole);
    EXPECT_EQ(Listing(rows),
              "1 a\n1.1 a1\n1.1.1 r1\n1.1.1.1 r11\n1.1.2 r2\n1.2 a2\n1.3 both*\n1.3.1 answer\n2 b\n2.1 b1\n"
              "2.2 both*\n2.2.1 answer\n3 c\n3.1 c1\n3.1.1 q1\n3.2 d\n3.2.1 d1*\n4 -\n");
    ExpectAllMoves(whole, rows, 23);
    const VQVFEntry total = whole[17];
    EXPECT_TRUE(total.IsTotal() != 0 && total.IsMainTopic() == 0 && total.GetDescendantCount() == 0);
    EXPECT_EQ(static_cast<double>(VQNumbers(total.GetColumnItem(3, 1))[0]), 14.0);
    EXPECT_EQ(Column(total, 2), "-");
    VQDocument none;
    EXPECT_EQ(total.GetDocument(&none), VQERR_NO_DOCUMENT_FOR_CATEGORY);
    EXPECT_EQ(VQDocumentArray(whole).GetCount(), 11U);
  }
}

// The rows of a find and the hits of a search are flat, and end where they end.
TEST_F(Navigators, FoundRowsAndHitsAreWalkedLikeAny) {
  AddTree();
  for (const char* name : {"b1", "b1", "b2", "b1"}) Add("b", name);
  VQViewFolder view = OpenUnread({"b1", "r11", "b2"});
  ASSERT_EQ(EngFtIndex(vq::ToHandle(Db.GetDatabaseHandle()), 0, nullptr, nullptr, nullptr), ENG_OK);
  VQVFFindKeys keys;
  VQVFFindOptions behind;
  ASSERT_EQ(keys.Append(VQString("b")), VQ_OK);
  ASSERT_EQ(behind.SetComparison(VQVFCOMPARISON_GREATER), VQ_OK);
  VQFTSearchOptions plain;
  ASSERT_EQ(plain.SetSortOrder(VQFTSORTORDER_OLDEST_FIRST), VQ_OK);
  for (const char* limit : kLimits) {
    LimitCache(limit);
    SCOPED_TRACE(limit);
    VQVFNavigator run;
    ASSERT_EQ(keys.Append(VQString("b1")), VQ_OK);
    ASSERT_EQ(view.Find(keys, nullptr, nullptr, &run), VQ_OK);
    Lines rows = AllRows(run);
    EXPECT_EQ(Listing(rows), "2.1 b1*\n2.2 b1*\n2.3 b1*\n2.4 b1*\n");
    ExpectAllMoves(run, rows, 23);
    keys.Free();
    ASSERT_EQ(keys.Append(VQString("a")), VQ_OK);
    ASSERT_EQ(view.Find(keys, behind, nullptr, nullptr, &run), VQ_OK);
    rows = AllRows(run);
    EXPECT_EQ(Listing(rows), "2 b\n3 c\n");
    ExpectAllMoves(run, rows, 23);
    keys.Free();
    ASSERT_EQ(keys.Append(VQString("b")), VQ_OK);
    ASSERT_EQ(view.FTSearch("r11 or b1 or c1 or r2", &run, plain), VQ_OK);
    rows = AllRows(run);
    for (Line& row : rows) row.Main = true;
    EXPECT_EQ(Listing(rows), "1 r11*\n2 r2\n3 b1*\n4 c1\n5 b1*\n6 b1*\n7 b1*\n");
    ExpectAllMoves(run, rows, 23);
  }
}

TEST_F(Navigators, AHitThatHasGoneLeavesTheOthersTheirNumbers) {
  VQViewFolder view = OpenTree();
  VQFTSearchOptions plain;
  ASSERT_EQ(plain.SetSortOrder(VQFTSORTORDER_OLDEST_FIRST), VQ_OK);
  for (const char* limit : kLimits) {
    LimitCache(limit);
    SCOPED_TRACE(limit);
    Add("a", "needle 1");
    VQDocument second = Add("a", "needle 2");
    Add("a", "needle 3");
    ASSERT_EQ(EngFtIndex(vq::ToHandle(Db.GetDatabaseHandle()), 0, nullptr, nullptr, nullptr), ENG_OK);
    VQVFNavigator walk, fetch, whole;
    ASSERT_EQ(view.FTSearch("needle", &walk, plain), VQ_OK);
    ASSERT_EQ(view.FTSearch("needle", &fetch, plain), VQ_OK);
    ASSERT_EQ(Db.DeleteSlate(&second), VQ_OK);
    ASSERT_EQ(view.Refresh(), VQ_OK);
    COLLECTIONPOSITION gone{};
    gone.Tumbler[0] = 2;
    VQVFEntry entry;
    EXPECT_EQ(fetch.GetEntry(&entry, VQVFPosition(&gone)), VQERR_INVALID_PARAMETER);
    EXPECT_TRUE(entry.IsNull());
    EXPECT_EQ(Row(fetch[2]), "3 needle 3");
    EXPECT_EQ(Row(fetch[0]), "1 needle 1");
    EXPECT_EQ(StatusOf([&] { return fetch[1]; }), VQERR_BAD_SUBSCRIPT);
    std::string walked;
    for (VQSTATUS s = walk.Goto(VQNAVIGATE_FIRST, &entry); s == VQ_OK; s = walk.Goto(VQNAVIGATE_NEXT, &entry)) {
      walked += Row(entry) + "|";
    }
    for (VQSTATUS s = walk.Goto(VQNAVIGATE_LAST, &entry); s == VQ_OK; s = walk.Goto(VQNAVIGATE_PREV, &entry)) {
      walked += Row(entry) + "|";
    }
    EXPECT_EQ(walked, "1 needle 1|3 needle 3|3 needle 3|1 needle 1|");
    ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
    ASSERT_EQ(whole.DeleteAllEntries(), VQ_OK);
    ASSERT_EQ(view.Refresh(), VQ_OK);
  }
}

TEST_F(Navigators, ARefreshShowsWhatHasBeenSaved) {
  VQViewFolder view = OpenTree();
  EXPECT_EQ(view.GetEntryCount(), 0U);
  EXPECT_EQ(view.Goto(VQNAVIGATE_FIRST), VQWARN_NOT_FOUND);
  AddTree();
  EXPECT_EQ(view.GetEntryCount(), 0U);
  ASSERT_EQ(view.Refresh(), VQ_OK);
  EXPECT_EQ(view.GetEntryCount(), 13U);
  VQVFEntry entry;
  EXPECT_EQ(view.Goto(VQNAVIGATE_NEXT_CATEGORY, &entry), VQ_OK);
  EXPECT_EQ(Row(entry), "2 b");
  VQVFNavigator a;
  ASSERT_EQ(view.ResetPosition(), VQ_OK);
  ASSERT_EQ(view.GetDescendants(&a), VQ_OK);
  Add("a", "a3");
  ASSERT_EQ(a.Refresh(), VQ_OK);
  EXPECT_EQ(a.GetEntryCount(), 6U);
  EXPECT_EQ(Row(a[5]), "1.3 a3");
}

TEST_F(Navigators, DeletingTakesWhatIsAskedFor) {
  AddTree();
  VQViewFolder view = OpenTree();
  VQVFNavigator whole, levels;
  ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
  ASSERT_EQ(view.GetDescendants(&levels, 1), VQ_OK);
  VQVFEntry category = whole[0], first = whole[1], foreign = levels[0], none;
  EXPECT_EQ(whole.DeleteEntries(&category), VQERR_CANT_DELETE_CATEGORY);
  EXPECT_EQ(whole.DeleteEntries(&foreign), VQERR_NOT_OF_THIS_NAVIGATOR);
  EXPECT_EQ(whole.DeleteEntries(&none), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(whole.DeleteEntries(static_cast<VQVFEntry*>(nullptr)), VQERR_NULL_POINTER);
  EXPECT_EQ(whole.DeleteEntries(&first, 1), VQ_OK);
  EXPECT_TRUE(first.IsNull());
  ASSERT_EQ(whole.Refresh(), VQ_OK);
  EXPECT_EQ(Listing(AllRows(whole)), "1 a\n1.1 a2\n2 b\n2.1 b1\n3 c\n3.1 c1\n3.1.1 q1\n3.2 d\n3.2.1 d1\n");
  category = whole[4];
  EXPECT_EQ(whole.DeleteEntries(&category, 1), VQ_OK);
  ASSERT_EQ(whole.Refresh(), VQ_OK);
  EXPECT_EQ(Listing(AllRows(whole)), "1 a\n1.1 a2\n2 b\n2.1 b1\n");
  EXPECT_EQ(whole.DeleteEntries(VQVFPosition()), VQERR_CANT_DELETE_CATEGORY);
  ASSERT_EQ(view.Refresh(), VQ_OK);
  ASSERT_EQ(view.Goto(VQNAVIGATE_CHILD, &first), VQ_OK);
  EXPECT_EQ(view.DeleteEntries(&first), VQ_OK);
  ASSERT_EQ(view.Refresh(), VQ_OK);
  EXPECT_EQ(view.DeleteEntries(VQVFPosition(), 1), VQ_OK);
  EXPECT_EQ(view.DeleteAllEntries(), VQ_OK) << "what is gone already is no failure";
  ASSERT_EQ(whole.Refresh(), VQ_OK);
  EXPECT_EQ(Listing(AllRows(whole)), "");
  Add("a", "last");
  ASSERT_EQ(whole.Refresh(), VQ_OK);
  EXPECT_EQ(whole.GetEntryCount(), 2U);
  EXPECT_EQ(whole.DeleteAllEntries(), VQ_OK);
  ASSERT_EQ(whole.Refresh(), VQ_OK);
  EXPECT_EQ(whole.GetEntryCount(), 0U);
  EXPECT_EQ(whole.DeleteAllEntries(), VQ_OK);
}

TEST_F(Navigators, ALimitedPartDeletesNoDescendants) {
  AddTree();
  VQViewFolder view = OpenTree();
  VQVFNavigator two;
  ASSERT_EQ(view.GetDescendants(&two, 2), VQ_OK);
  VQVFEntry entry = two[0];
  EXPECT_EQ(entry.GetChildCount(), 2U);
  EXPECT_EQ(entry.GetDescendantCount(), 2U);
  EXPECT_EQ(two[1].GetChildCount(), 0U);
  EXPECT_EQ(two.DeleteEntries(&entry, 1), VQERR_NOT_OF_THIS_NAVIGATOR);
  EXPECT_EQ(two.DeleteEntries(&entry), VQ_OK);
}

TEST_F(Navigators, ArraysTakeTheDocumentsOnce) {
  AddTree();
  Add("a", "two");
  VQDocument twice;
  VQViewFolder view = OpenTree();
  const VQDocumentArray all{view};
  EXPECT_EQ(all.GetCount(), 10U);
  EXPECT_EQ(all.GetSlateClass(), VQSLATECLASS_DOCUMENT);
  VQVFNavigator a;
  ASSERT_EQ(view.GetDescendants(&a), VQ_OK);
  VQSlateArray array(Db);
  EXPECT_EQ(array.Add(a), VQ_OK);
  EXPECT_EQ(array.GetCount(), 6U);
  EXPECT_EQ(array.Add(view), VQ_OK);
  EXPECT_EQ(array.Remove(a), VQ_OK);
  EXPECT_EQ(array.GetCount(), 4U);
  EXPECT_EQ(array.Add(VQVFNavigator()), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(StatusOf([] { return VQSlateArray(VQViewFolder()); }), VQERR_UNINITIALIZED_ARGUMENT);
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  VQSlateArray foreign(other);
  EXPECT_EQ(foreign.Add(view), VQERR_DIFFERENT_DATABASE);
}

// What a navigator that outlives its handles, its view or its database does.
TEST_F(Navigators, NavigatorsAndEntriesKeepTheirViewAlive) {
  AddTree();
  VQVFNavigator navigator;
  VQVFEntry entry;
  {
    VQViewFolder view = OpenTree();
    ASSERT_EQ(view.GetEntries(&navigator), VQ_OK);
    ASSERT_EQ(view.GetEntry(&entry), VQ_OK);
  }
  EXPECT_EQ(Row(entry), "1 a");
  EXPECT_EQ(entry.GetChildCount(), 2U);
  EXPECT_EQ(Row(navigator[1]), "1.1 a1");
  VQViewFolder view;
  ASSERT_EQ(navigator.GetViewFolder(&view), VQ_OK);
  ASSERT_EQ(view.Close(), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return navigator.GetEntryCount(); }), VQERR_NO_COLLECTION);
  EXPECT_EQ(navigator.Goto(VQNAVIGATE_NEXT), VQERR_NO_COLLECTION);
  EXPECT_EQ(StatusOf([&] { return entry.GetColumnItem(0); }), VQERR_NO_COLLECTION);
  EXPECT_EQ(entry.GetSlateID() >> 31, 1U);
}

struct RefusedMove {
  const char* what;
  VQSTATUS (*operation)(VQVFNavigator& navigator);
  VQSTATUS status;
};

TEST_F(Navigators, RefusalsLeaveThePlace) {
  AddTree();
  VQViewFolder view = OpenTree();
  const RefusedMove rows[] = {
      {"a code that is none", [](VQVFNavigator& n) { return n.Goto(static_cast<VQNAVIGATION>(23)); },
       VQERR_INVALID_PARAMETER},
      {"unread without a list", [](VQVFNavigator& n) { return n.Goto(VQNAVIGATE_NEXT_UNREAD); },
       VQERR_UNREAD_LIST_REQUIRED},
      {"a place without a row",
       [](VQVFNavigator& n) {
         COLLECTIONPOSITION far{};
         far.MaxLevel = 31;
         far.Tumbler[0] = 77;
         return n.SetPosition(VQVFPosition(&far));
       },
       VQERR_INVALID_PARAMETER},
      {"the place before the first row",
       [](VQVFNavigator& n) {
         const COLLECTIONPOSITION before{};
         return n.SetPosition(VQVFPosition(&before));
       },
       VQERR_INVALID_PARAMETER},
      {"no entry handle", [](VQVFNavigator& n) { return n.GetEntry(nullptr); }, VQERR_NULL_POINTER},
      {"no table", [](VQVFNavigator& n) { return n.GetIDTable(nullptr); }, VQERR_NULL_POINTER},
      {"no position", [](VQVFNavigator& n) { return n.GetPosition(nullptr); }, VQERR_NULL_POINTER},
      {"keys that are none",
       [](VQVFNavigator& n) {
         VQVFEntry entry;
         return n.Find(VQVFFindKeys(), &entry);
       },
       VQERR_UNINITIALIZED_ARGUMENT},
  };
  VQVFNavigator closed;
  ASSERT_EQ(view.GetEntries(&closed), VQ_OK);
  EXPECT_EQ(closed.Close(), VQ_OK);
  EXPECT_EQ(closed.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(VQVFNavigator().Close(), VQWARN_NOT_OPEN);
  for (const int throws : {0, 1}) {
    VQVFNavigator navigator, none;
    ASSERT_EQ(view.GetEntries(&navigator), VQ_OK);
    ASSERT_EQ(navigator.Goto(VQNAVIGATE_LAST), VQ_OK);
    VQSetThrowAllErrors(throws);
    for (const RefusedMove& row : rows) {
      EXPECT_EQ(ReturnedStatusOf([&] { return row.operation(navigator); }), row.status) << row.what;
      EXPECT_EQ(ReturnedStatusOf([&] { return row.operation(none); }), VQERR_OBJECT_NOT_INITIALIZED) << row.what;
      EXPECT_EQ(ReturnedStatusOf([&] { return row.operation(closed); }), VQERR_NO_COLLECTION) << row.what;
    }
    VQSetThrowAllErrors(0);
    VQVFPosition now;
    ASSERT_EQ(navigator.GetPosition(&now), VQ_OK);
    EXPECT_EQ(Place(now), "3.2.1");
  }
}

}  // namespace
