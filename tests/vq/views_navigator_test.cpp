// Navigators: every move from every row, with every cache, against a plain list of the rows.
#include <algorithm>

#include "tests/vq/support/entries_fixture.h"

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
      return row.Category ? kNone : Scan(rows, at, -1, [](const Line& r) { return r.Main; });
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

  // r2 and b1 stay unread.
  void ReadAllBut(VQViewFolder& view, const std::string& first, const std::string& second) {
    VQVFNavigator entries;
    ASSERT_EQ(view.GetEntries(&entries), VQ_OK);
    ENGHANDLE unread = 0;
    ASSERT_EQ(EngIdTableCreate(4, &unread), ENG_OK);
    for (unsigned long i = 0; i < entries.GetEntryCount(); ++i) {
      const VQVFEntry entry = entries[i];
      const std::string name = Column(entry, 1);
      if (name != first && name != second) continue;
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
  VQViewFolder view = OpenTree();
  ReadAllBut(view, "r2", "b1");
  ASSERT_EQ(view.Close(), VQ_OK);
  ASSERT_EQ(view.Open(VQVFOPENFLAGS_USE_UNREAD_LIST), VQ_OK);
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
  VQViewFolder view = OpenTree();
  VQVFNavigator whole;
  ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
  const Lines all = AllRows(whole);
  const PartRow parts[] = {
      {"all below a", 0, 0, "1.1 a1\n1.1.1 r1\n1.1.1.1 r11\n1.1.2 r2\n1.2 a2\n"},
      {"one level below a", 0, 1, "1.1 a1\n1.2 a2\n"},
      {"two levels below a", 0, 2, "1.1 a1\n1.1.1 r1\n1.1.2 r2\n1.2 a2\n"},
      {"below a1", 1, 0, "1.1.1 r1\n1.1.1.1 r11\n1.1.2 r2\n"},
      {"below c, where a category is deeper", 8, 0, "3.1 c1\n3.1.1 q1\n3.2 d\n3.2.1 d1\n"},
      {"more levels than there are", 0, 4000000000UL, "1.1 a1\n1.1.1 r1\n1.1.1.1 r11\n1.1.2 r2\n1.2 a2\n"},
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
      for (unsigned code = 0; code <= VQNAVIGATE_PREV_SIBLING; ++code) {
        const bool categories = code == VQNAVIGATE_NEXT_CATEGORY || code == VQNAVIGATE_PREV_CATEGORY;
        if (categories) {
          EXPECT_EQ(below.Goto(static_cast<VQNAVIGATION>(code)), VQWARN_NOT_FOUND);
        }
        for (std::size_t at = 0; !categories && at < rows.size(); ++at) {
          const bool unread = code == VQNAVIGATE_NEXT_UNREAD || code == VQNAVIGATE_NEXT_UNREAD_MAIN;
          if (!unread) ExpectMove(below, rows, static_cast<VQNAVIGATION>(code), at, true);
          if (!unread) ExpectMove(below, rows, static_cast<VQNAVIGATION>(code), at, false);
        }
      }
      EXPECT_EQ(below.SetPosition(all[7].Position), VQERR_OUT_OF_RANGE);
    }
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
  for (const int throws : {0, 1}) {
    VQVFNavigator navigator, none;
    ASSERT_EQ(view.GetEntries(&navigator), VQ_OK);
    ASSERT_EQ(navigator.Goto(VQNAVIGATE_LAST), VQ_OK);
    VQSetThrowAllErrors(throws);
    for (const RefusedMove& row : rows) {
      EXPECT_EQ(ReturnedStatusOf([&] { return row.operation(navigator); }), row.status) << row.what;
      EXPECT_EQ(ReturnedStatusOf([&] { return row.operation(none); }), VQERR_OBJECT_NOT_INITIALIZED) << row.what;
    }
    VQSetThrowAllErrors(0);
    VQVFPosition now;
    ASSERT_EQ(navigator.GetPosition(&now), VQ_OK);
    EXPECT_EQ(Place(now), "3.2.1");
  }
}

}  // namespace
