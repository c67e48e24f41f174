// Entries and their columns, finding by key, searches, and the observer.
#include <functional>

#include "tests/vq/support/entries_fixture.h"
#include "vq/store/vqftsrch.h"
#include "vq/values/vqdtime.h"
#include "vq/views/entryrow.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

VQVFPosition PlaceOf(std::initializer_list<std::uint32_t> ordinals) {
  COLLECTIONPOSITION position{};
  position.Level = static_cast<std::uint16_t>(ordinals.size() - 1);
  position.MaxLevel = ENG_COLLECTION_NO_LIMIT;
  std::copy(ordinals.begin(), ordinals.end(), position.Tumbler);
  return VQVFPosition(&position);
}

struct OrderRow {
  std::initializer_list<std::uint32_t> a, b;
  int order;
};

class Keys : public vqtest::EngineFixture {};

TEST_F(Keys, PlacesAreOrderedByOrdinalsThenDepth) {
  const OrderRow rows[] = {
      {{1, 2}, {1, 2, 1}, -1}, {{1, 3}, {1, 2, 1}, 1}, {{7}, {7}, 0}, {{2, 9, 9}, {3}, -1}, {{4000000000}, {1}, 1},
  };
  for (const OrderRow& row : rows) {
    const VQVFPosition a = PlaceOf(row.a), b = PlaceOf(row.b);
    EXPECT_EQ(a.Compare(b.GetPosition()), row.order);
    EXPECT_EQ(b.Compare(a.GetPosition()), -row.order);
    EXPECT_EQ(a == b, row.order == 0);
    EXPECT_EQ(a < b, row.order < 0);
    EXPECT_EQ(a > b, row.order > 0);
  }
  EXPECT_EQ(TextOf(PlaceOf({1, 20, 4294967295}).GetDocNumber("::")), "1::20::4294967295");
  COLLECTIONPOSITION deep{};
  deep.Level = ENG_COLLECTION_LEVELS;
  EXPECT_EQ(StatusOf([&] { return VQVFPosition(&deep); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(StatusOf([] { return VQVFPosition(static_cast<COLLECTIONPOSITION*>(nullptr)); }), VQERR_NULL_POINTER);
}

struct KeyRow {
  std::size_t bytes;
  VQSTATUS key, table;
};

TEST_F(Keys, LengthsEndAtWhatATableTakes) {
  const KeyRow rows[] = {
      {0, VQERR_OUT_OF_RANGE, VQ_OK},
      {1, VQ_OK, VQ_OK},
      {65525, VQ_OK, VQ_OK},
      {65526, VQ_OK, VQERR_ITEM_TABLE_SIZE},
      {65533, VQ_OK, VQERR_ITEM_TABLE_SIZE},
      {65534, VQERR_STRING_TOO_LONG, VQ_OK},
  };
  for (const KeyRow& row : rows) {
    const VQString text = Store(std::string(row.bytes, 'x'));
    unsigned long status = 0;
    const VQVFFindKey key(text, &status);
    EXPECT_EQ(status, row.key) << row.bytes;
    EXPECT_EQ(StatusOf([&] { return VQVFFindKey(text); }), row.key) << row.bytes;
    VQVFFindKeys keys;
    EXPECT_EQ(keys.Append(text), row.key) << row.bytes;
    const void* table = nullptr;
    EXPECT_EQ(keys.GetItemTable(&table), row.table) << row.bytes;
  }
}

TEST_F(Keys, ATableHasEachKeyInOrder) {
  VQVFFindKeys keys;
  ASSERT_EQ(keys.Append(VQString("ab")), VQ_OK);
  const void* table = nullptr;
  ASSERT_EQ(keys.GetItemTable(&table), VQ_OK);
  ASSERT_EQ(keys.Append(2.5), VQ_OK);
  ASSERT_EQ(keys.Append(new VQVFFindKey(VQDatetime(TIMEDATE{0, 0x256859}))), VQ_OK);
  ASSERT_EQ(keys.GetItemTable(&table), VQ_OK);
  const std::string bytes(static_cast<const char*>(table), 40);
  EXPECT_EQ(
      bytes,
      std::string("\x28\0\3\0\0\0\4\0\0\0\x0A\0\0\0\x0A\0\0\5ab\0\3\0\0\0\0\0\0\4@\0\4\0\0\0\0\x59\x68\x25\0", 40));
  EXPECT_EQ(static_cast<double>(keys[1]), 2.5);
  EXPECT_EQ(TextOf(keys[0]), "ab");
  EXPECT_EQ(StatusOf([&] { return static_cast<double>(keys[0]); }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(StatusOf([&] { return keys[3].GetLength(); }), VQERR_BAD_SUBSCRIPT);
  const VQVFFindKeys copy(keys);
  keys.Free();
  EXPECT_EQ(copy.GetCount(), 3U);
  EXPECT_EQ(keys.GetCount(), 0U);
}

// A row with a position and a summary of two items, cut anywhere.
TEST(EntryRows, NothingIsReadBehindTheBytes) {
  const std::string head("\x08\0\0\0\1\0\2\0\1\0", 10), position("\1\0\0\x1F\3\0\0\0\4\0\0\0", 12);
  const std::string summary("\x12\0\2\0\1\0\2\0\1\0\2\0a\0\5b\0\5", 18);
  const std::string row = head + position + summary;
  const auto* bytes = reinterpret_cast<const unsigned char*>(row.data());
  COLLECTIONPOSITION place;
  vq::EntryRow read;
  std::size_t used = 0;
  for (std::size_t size = 0; size < row.size(); ++size) {
    EXPECT_EQ(vq::ReadRow(bytes, size, false, &place, &read, &used), VQERR_CANT_CREATE_ENTRY) << size;
  }
  ASSERT_EQ(vq::ReadRow(bytes, row.size(), false, &place, &read, &used), VQ_OK);
  EXPECT_TRUE(used == row.size() && read.ID == 8 && read.IndentLevels == 2 && read.Unread == 1);
  EXPECT_TRUE(place.Level == 1 && place.MaxLevel == 31 && place.Tumbler[0] == 3 && place.Tumbler[1] == 4);
  std::span<const unsigned char> value;
  for (std::size_t size = 0; size < summary.size(); ++size) {
    EXPECT_FALSE(vq::FindInSummary({read.Summary, size}, 1, "b", &value)) << size;
  }
  EXPECT_TRUE(vq::FindInSummary({read.Summary, read.SummarySize}, 1, "b", &value) && value.size() == 2);
  EXPECT_FALSE(vq::FindInSummary({read.Summary, read.SummarySize}, 2, "b", &value));
  std::string deep = row;
  deep[10] = 32;
  EXPECT_EQ(vq::ReadRow(reinterpret_cast<const unsigned char*>(deep.data()), deep.size(), false, &place, &read, &used),
            VQERR_CANT_CREATE_ENTRY);
}

TEST(SearchOptions, LimitAndOrderAgree) {
  VQFTSearchOptions options;
  EXPECT_EQ(options.GetOptions(), 0x288U);
  EXPECT_EQ(options.SetMaxDocuments(65536), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(options.SetMaxDocuments(0), VQ_OK);
  EXPECT_EQ(options.SetSortOrder(8), VQ_OK);
  EXPECT_EQ(options.GetOptions(), 0x208U);
  EXPECT_EQ(options.SetMaxDocuments(5), VQ_OK);
  EXPECT_EQ(options.GetOptions(), 0x288U);
  EXPECT_EQ(options.SetSortOrder(96), VQ_OK);
  EXPECT_EQ(options.GetOptions(), 0x260U);
  EXPECT_EQ(options.GetSortOrder(), 96U);
  for (const unsigned long order : {0UL, 9UL, 64UL, 0xE8UL})
    EXPECT_EQ(options.SetSortOrder(order), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(options.SetSortOrder(32), VQ_OK);
  EXPECT_EQ(options.GetSortOrder(), 32U);
}

class Entries : public vqtest::EntriesFixture {
 protected:
  // The rows of a navigator, in one line.
  static std::string Names(VQVFNavigator& navigator) {
    std::string names;
    for (unsigned long i = 0; i < navigator.GetEntryCount(); ++i) {
      const VQVFEntry entry = navigator[i];
      names += (i == 0 ? "" : " ") + (entry.IsCategory() ? Column(entry, 0) : Column(entry, 1));
    }
    return names;
  }
};

TEST_F(Entries, ARowTellsWhatItIsAndHas) {
  AddTree();
  VQViewFolder view = OpenTree();
  struct RowFacts {
    const char* place;
    VQVFENTRYTYPE type;
    unsigned long indent, children, descendants, siblings;
    const char* columns;
  };
  const RowFacts rows[] = {
      {"1 a", VQVFENTRYTYPE_CATEGORY, 0, 2, 5, 3, "a - - -"},
      {"1.1 a1", VQVFENTRYTYPE_MAIN_TOPIC, 0, 2, 3, 2, "- a1 const 9"},
      {"1.1.1 r1", VQVFENTRYTYPE_RESPONSE, 1, 1, 1, 2, "- r1 const 9"},
      {"1.1.1.1 r11", VQVFENTRYTYPE_RESPONSE, 2, 0, 0, 1, "- r11 const 9"},
  };
  VQVFNavigator entries;
  ASSERT_EQ(view.GetEntries(&entries), VQ_OK);
  for (unsigned long i = 0; i < std::size(rows); ++i) {
    const VQVFEntry entry = entries[i];
    const RowFacts& row = rows[i];
    EXPECT_EQ(Row(entry), row.place);
    EXPECT_EQ(entry.GetType(), row.type) << row.place;
    EXPECT_EQ(entry.GetIndentLevels(), row.indent) << row.place;
    EXPECT_EQ(entry.GetChildCount(), row.children) << row.place;
    EXPECT_EQ(entry.GetDescendantCount(), row.descendants) << row.place;
    EXPECT_EQ(entry.GetSiblingCount(), row.siblings) << row.place;
    std::string columns;
    for (unsigned long c = 0; c < 4; ++c) columns += (c == 0 ? "" : " ") + Column(entry, c, 1);
    EXPECT_EQ(columns, row.columns) << row.place;
    EXPECT_EQ(Column(entry, 3), "-") << "hidden";
    VQDocument document;
    const VQSTATUS bound = entry.GetDocument(&document);
    EXPECT_EQ(bound, entry.IsCategory() ? VQERR_NO_DOCUMENT_FOR_CATEGORY : VQ_OK) << row.place;
    if (bound == VQ_OK) {
      EXPECT_EQ(document.GetSlateID(), entry.GetSlateID());
    }
  }
  const VQVFEntry entry = entries[1];
  EXPECT_EQ(StatusOf([&] { return entry.GetColumnItem(4); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(StatusOf([&] { return entry.GetColumnItem("no such title"); }), VQERR_NOT_FOUND);
  VQString text;
  EXPECT_EQ(VQText(entry.GetColumnItem("sUBJECT")).GetText(&text), VQ_OK);
  EXPECT_EQ(TextOf(text), "a1");
  EXPECT_EQ(StatusOf([] { return VQVFEntry().GetType(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_F(Entries, AConstantIsExpandedForEachRow) {
  AddTree();
  VQViewFolder view = OpenTree();
  VQVFColumnBody* column = view[2].GetColumnBody();
  column->Formula() = VQFormula();
  column->SetInternalName(VQString());
  struct ConstantRow {
    std::string value, expected;
  };
  const std::string text("\0\5", 2), list("\1\5\2\0\3\0\2\0", 8);
  const ConstantRow rows[] = {
      {text + "plain", "plain"},
      {text + "<\x7FN\x7F>", "<1.1.1>"},
      {text + "\x7FL\x7F/\x7F"
              "C\x7F/\x7F"
              "D\x7F/\x7FS\x7F",
       "2/1/1/2"},
      {text + "\x7F", "\x7F"},
      {text + std::string(40, '-') + "\x7FV\x7F", std::string(40, '-') + "Tree"},
      {list + "\x7FN\x7F"
              "bc",
       "1.1.1|bc"},
      {text, "-"},
  };
  for (const ConstantRow& row : rows) {
    column->ConstantValue() = row.value;
    view.GetViewFolderBody()->SetState(VQViewFolderBody::kColumnsMatched, false);
    VQVFNavigator entries;
    ASSERT_EQ(view.GetEntries(&entries), VQ_OK);
    EXPECT_EQ(Column(entries[2], 2), row.expected);
  }
  column->ConstantValue() = list.substr(0, 6) + "\x7F";
  EXPECT_EQ(StatusOf([&] {
              VQVFNavigator entries;
              view.GetEntries(&entries);
              return entries[2].GetColumnItem(2);
            }),
            VQERR_CANT_TRANSLATE_SPECIAL);
  column->ConstantValue().clear();
  column->Formula() = VQFormula(VQString("Subject + 1"));
  VQVFNavigator entries;
  ASSERT_EQ(view.GetEntries(&entries), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return entries[2].GetColumnItem(2); }), VQERR_CANT_EVALUATE_COLUMN);
}

TEST_F(Entries, AFormulasMarksShowTheRow) {
  for (const char* subject : {"x", "y", "z"}) Add("k", subject);
  VQViewFolder view = MakeView(false);
  const auto numbers = [&](unsigned long column) {
    VQViewFolder opened;
    EXPECT_EQ(Db.GetViewFolder(view.GetSlateID(), &opened), VQ_OK);
    EXPECT_EQ(opened.Open(), VQ_OK);
    VQVFNavigator entries;
    EXPECT_EQ(opened.GetEntries(&entries), VQ_OK);
    std::string shown;
    for (unsigned long i = 0; i < 3; ++i) shown += Column(entries[i], column) + " ";
    return shown;
  };
  ASSERT_EQ(view[2].SetFormula(VQFormula(VQString("@DocNumber"))), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(numbers(2), "1 2 3 ");
  VQSlate design(Db.GetDatabaseBody(), view.GetSlateID());
  ASSERT_EQ(design.Open(), VQ_OK);
  ASSERT_EQ(design.DeleteItem("$ViewFormat"), VQ_OK);
  ASSERT_EQ(design.Save(), VQ_OK);
  EXPECT_EQ(numbers(0), "1 2 3 ") << "the column of a design without a format";
}

struct FindRow {
  const char* what;
  const char* key;
  const char* second;
  VQVFCOMPARISON comparison;
  VQSTATUS status;
  const char* place;
  unsigned long count;
  const char* rows;
};

TEST_F(Entries, FindLeadsToTheRowsOfAKey) {
  AddTree();
  Add("b", "b2");
  Add("b", "B1");
  VQViewFolder view = OpenTree();
  const FindRow rows[] = {
      {"a category", "b", nullptr, VQVFCOMPARISON_EQUAL, VQ_OK, "2 b", 1, "b"},
      {"in another case", "B", nullptr, VQVFCOMPARISON_EQUAL, VQ_OK, "2 b", 1, "b"},
      {"a category below another", "c\\d", nullptr, VQVFCOMPARISON_EQUAL, VQ_OK, "3.2 d", 1, "d"},
      {"documents of a category", "b", "b1", VQVFCOMPARISON_EQUAL, VQ_OK, "2.1 b1", 2, "b1 B1"},
      {"the last of them", "b", "b1", VQVFCOMPARISON_LAST_EQUAL, VQ_OK, "2.2 B1", 2, "b1 B1"},
      {"those before a key", "b", "b2", VQVFCOMPARISON_LESS, VQ_OK, "2.2 B1", 2, "b1 B1"},
      {"those behind it", "b", "b1", VQVFCOMPARISON_GREATER, VQ_OK, "2.3 b2", 1, "b2"},
      {"none", "x", nullptr, VQVFCOMPARISON_EQUAL, VQWARN_NOT_FOUND, "", 0, ""},
      {"none in the category", "a", "zz", VQVFCOMPARISON_EQUAL, VQWARN_NOT_FOUND, "", 0, ""},
  };
  for (const FindRow& row : rows) {
    SCOPED_TRACE(row.what);
    VQVFFindKeys keys;
    ASSERT_EQ(keys.Append(VQString(row.key)), VQ_OK);
    if (row.second != nullptr) {
      ASSERT_EQ(keys.Append(VQString(row.second)), VQ_OK);
    }
    VQVFFindOptions options;
    ASSERT_EQ(options.SetComparison(row.comparison), VQ_OK);
    VQVFNavigator whole, found;
    ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
    VQVFEntry entry;
    unsigned long count = 77;
    EXPECT_EQ(whole.Find(keys, options, &entry, &count, &found), row.status);
    EXPECT_EQ(count, row.count);
    if (row.status != VQ_OK) continue;
    EXPECT_EQ(Row(entry), row.place);
    EXPECT_EQ(Names(found), row.rows);
    EXPECT_EQ(found.GetEntryCount(), row.count);
    EXPECT_EQ(found.Refresh(), VQERR_INVALID_FOR_SEARCH_NAVIGATOR);
    EXPECT_EQ(found.Find(VQString("b"), &entry), VQERR_INVALID_FOR_SEARCH_NAVIGATOR);
  }
}

TEST_F(Entries, RowsThatStandApartAreNotCounted) {
  for (const char* kind : {"e", "E", "\xC3\xA9", "f"}) {
    for (const char* subject : {"x", "X", "y"}) Add(kind, subject);
  }
  VQViewFolder view = OpenTree();
  const FindRow rows[] = {
      {"the first", "e", "x", VQVFCOMPARISON_EQUAL, VQ_OK, "1.1 x", 1, "x"},
      {"the last", "e", "x", VQVFCOMPARISON_LAST_EQUAL, VQ_OK, "3.2 X", 1, "X"},
      {"categories are peers", "e", nullptr, VQVFCOMPARISON_LAST_EQUAL, VQ_OK, "3 \xC3\xA9", 3, "e E \xC3\xA9"},
  };
  for (const FindRow& row : rows) {
    VQVFFindKeys keys;
    ASSERT_EQ(keys.Append(VQString(row.key)), VQ_OK);
    if (row.second != nullptr) {
      ASSERT_EQ(keys.Append(VQString(row.second)), VQ_OK);
    }
    VQVFFindOptions options;
    ASSERT_EQ(options.SetComparison(row.comparison), VQ_OK);
    VQVFNavigator found;
    VQVFEntry entry;
    unsigned long count = 77;
    EXPECT_EQ(view.Find(keys, options, &entry, &count, &found), row.status) << row.what;
    EXPECT_EQ(Row(entry), row.place) << row.what;
    EXPECT_EQ(count, row.count) << row.what;
    EXPECT_EQ(Names(found), row.rows) << row.what;
  }
}

// Three documents for each number, a day apart; the days run backwards.
TEST_F(Entries, NumbersAndMomentsAreFound) {
  VQViewFolder view;
  ASSERT_EQ(Db.CreateView("Numbers", nullptr, &view), VQ_OK);
  ASSERT_EQ(view.AppendColumns(2 - view.GetColumnCount()), VQ_OK);
  ASSERT_EQ(view[0].SetFieldName("N"), VQ_OK);
  ASSERT_EQ(view[1].SetFieldName("T"), VQ_OK);
  ASSERT_EQ(view[0].SetSortOption(VQVFSORTOPTION_ASCENDING), VQ_OK);
  ASSERT_EQ(view[1].SetSortOption(VQVFSORTOPTION_DESCENDING), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  const auto day = [](unsigned number) { return VQDatetime(TIMEDATE{0xFFFFFFFF, 0x256859U + number}); };
  for (unsigned i = 0; i < 9; ++i) {
    VQDocument document = NewDocument("d");
    const double number = i / 3;
    const VQDatetime date = day(i);
    ASSERT_EQ(document.CreateItem("N", TYPE_NUMBER, &number, sizeof number, VQITEMFLAGS_SUMMARY), VQ_OK);
    ASSERT_EQ(document.CreateItem("T", TYPE_TIME, date.GetTIMEDATE(), sizeof(TIMEDATE), VQITEMFLAGS_SUMMARY), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
  }
  ASSERT_EQ(view.Open(), VQ_OK);
  VQVFNavigator whole, run;
  VQVFEntry entry;
  unsigned long count = 0;
  ASSERT_EQ(view.GetEntries(&whole), VQ_OK);
  VQVFFindOptions less, greater;
  ASSERT_EQ(less.SetComparison(VQVFCOMPARISON_LESS), VQ_OK);
  ASSERT_EQ(greater.SetComparison(VQVFCOMPARISON_GREATER), VQ_OK);
  VQVFFindKeys one;
  ASSERT_EQ(one.Append(1.0), VQ_OK);
  ASSERT_EQ(one.Append(day(4)), VQ_OK);
  const struct {
    const char* what;
    std::function<VQSTATUS()> find;
    VQSTATUS status;
    const char* place;
    unsigned long count;
  } rows[] = {
      {"a number", [&] { return whole.Find(1.0, &entry, &count, &run); }, VQ_OK, "4", 3},
      {"below it", [&] { return whole.Find(1.0, less, &entry, &count, &run); }, VQ_OK, "3", 3},
      {"above what is not there", [&] { return view.Find(0.5, greater, &entry, &count, &run); }, VQ_OK, "9", 6},
      {"none", [&] { return view.Find(7.0, &entry, &count, &run); }, VQWARN_NOT_FOUND, "", 0},
      {"both", [&] { return whole.Find(one, &entry, &count, &run); }, VQ_OK, "5", 1},
      {"later in view order", [&] { return view.Find(one, greater, &entry, &count, &run); }, VQ_OK, "6", 1},
      {"a moment among numbers", [&] { return whole.Find(day(4), &entry, &count, &run); }, VQWARN_NOT_FOUND, "", 0},
      {"none behind it", [&] { return view.Find(day(4), greater, &entry, &count, &run); }, VQWARN_NOT_FOUND, "", 0},
      {"numbers in front of it", [&] { return view.Find(day(4), less, &entry, &count, &run); }, VQ_OK, "9", 9},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(row.find(), row.status);
    EXPECT_EQ(count, row.count);
    if (row.status != VQ_OK) continue;
    EXPECT_EQ(Place(entry), row.place);
    EXPECT_EQ(run.GetEntryCount(), row.count);
  }
  EXPECT_EQ(static_cast<VQDatetime>(one[1]).GetTIMEDATE()->DateWord, 0x25685DU);
}

TEST_F(Entries, AFindKeepsToItsNavigator) {
  AddTree();
  VQViewFolder view = OpenTree();
  VQVFNavigator a;
  ASSERT_EQ(view.GetDescendants(&a), VQ_OK);
  ASSERT_EQ(a.Goto(VQNAVIGATE_LAST), VQ_OK);
  VQVFEntry entry;
  unsigned long count = 5;
  EXPECT_EQ(a.Find(VQString("b"), &entry, &count), VQWARN_NOT_FOUND);
  EXPECT_EQ(count, 0U);
  VQVFPosition place;
  ASSERT_EQ(a.GetPosition(&place), VQ_OK);
  EXPECT_EQ(Place(place), "1.2");
  VQVFFindKeys keys;
  for (const char* key : {"a", "a1", "x"}) ASSERT_EQ(keys.Append(VQString(key)), VQ_OK);
  EXPECT_EQ(a.Find(keys, &entry), VQERR_TOO_MANY_SEARCH_KEYS);
  // The found run takes over the handle that asked.
  EXPECT_EQ(view.Find(VQString("c"), nullptr, nullptr, &a), VQ_OK);
  EXPECT_EQ(Names(a), "c");
  for (const int throws : {0, 1}) {
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return view.Find(VQString(), &entry); }), VQERR_OUT_OF_RANGE);
    EXPECT_EQ(ReturnedStatusOf([&] { return view.Find(VQDatetime(), &entry); }), VQERR_UNINITIALIZED_ARGUMENT);
    EXPECT_EQ(ReturnedStatusOf([&] { return VQViewFolder().Find(VQString("c"), &entry); }),
              VQERR_OBJECT_NOT_INITIALIZED);
    VQSetThrowAllErrors(0);
  }
}

TEST_F(Entries, AFoundRunWalksItsPeersOnly) {
  AddTree();
  for (const char* name : {"b1", "b1", "b1"}) Add("b", name);
  VQViewFolder view = OpenTree();
  VQVFFindKeys keys;
  ASSERT_EQ(keys.Append(VQString("b")), VQ_OK);
  ASSERT_EQ(keys.Append(VQString("b1")), VQ_OK);
  for (const char* limit : {"0", "1", ""}) {
    LimitCache(limit);
    VQVFNavigator run;
    VQVFEntry entry;
    ASSERT_EQ(view.Find(keys, nullptr, nullptr, &run), VQ_OK);
    EXPECT_EQ(run.GetEntryCount(), 4U);
    std::string walked;
    for (VQSTATUS s = run.Goto(VQNAVIGATE_LAST, &entry); s == VQ_OK; s = run.Goto(VQNAVIGATE_PREV, &entry)) {
      walked += Place(entry) + " ";
    }
    EXPECT_EQ(walked, "2.4 2.3 2.2 2.1 ") << limit;
    EXPECT_EQ(run.Goto(VQNAVIGATE_NEXT_CATEGORY), VQWARN_NOT_FOUND);
    EXPECT_EQ(run.Goto(VQNAVIGATE_PARENT), VQWARN_NOT_FOUND);
    EXPECT_EQ(run.Goto(VQNAVIGATE_NEXT_DOCUMENT, &entry), VQ_OK);
    EXPECT_EQ(Place(entry), "2.2");
    VQDocumentArray documents{run};
    EXPECT_EQ(documents.GetCount(), 4U);
  }
}

TEST_F(Entries, ASearchGivesItsHits) {
  AddTree();
  Add("b", "needle one");
  Add("a", "needle two needle");
  VQViewFolder view = OpenTree();
  VQVFNavigator hits;
  EXPECT_TRUE(VQIsError(view.FTSearch("needle", &hits)));
  ASSERT_EQ(EngFtIndex(vq::ToHandle(Db.GetDatabaseHandle()), 0, nullptr, nullptr, nullptr), ENG_OK);
  VQFTSearchOptions plain;
  ASSERT_EQ(plain.SetSortOrder(VQFTSORTORDER_OLDEST_FIRST), VQ_OK);
  VQVFNavigator a;
  ASSERT_EQ(view.GetDescendants(&a), VQ_OK);
  for (const char* limit : {"0", "1", ""}) {
    LimitCache(limit);
    ASSERT_EQ(view.FTSearch("needle", &hits), VQ_OK);
    EXPECT_TRUE(hits.IsFTSearch() != 0 && hits.GetEntryCount() == 2 && hits.IsCategorized() == 0);
    VQVFEntry entry;
    ASSERT_EQ(hits.Goto(VQNAVIGATE_FIRST, &entry), VQ_OK);
    EXPECT_EQ(entry.GetFTSearchScore(), 100U);
    EXPECT_EQ(entry.GetSiblingCount(), 2U);
    EXPECT_EQ(hits.Goto(VQNAVIGATE_NEXT_MAIN, &entry), VQ_OK);
    EXPECT_EQ(Place(entry), "2");
    EXPECT_EQ(hits.Goto(VQNAVIGATE_NEXT, &entry), VQWARN_NOT_FOUND);
    EXPECT_EQ(hits.Goto(VQNAVIGATE_FIRST_SIBLING, &entry), VQ_OK);
    EXPECT_EQ(Place(entry), "1");
    EXPECT_EQ(hits.Goto(VQNAVIGATE_PARENT), VQWARN_NOT_FOUND);
    ASSERT_EQ(view.FTSearch("needle", &hits, plain), VQ_OK);
    EXPECT_EQ(Names(hits), "needle one needle two needle");
    EXPECT_EQ(VQDocumentArray(hits).GetCount(), 2U);
    ASSERT_EQ(view.FTSearch("needle", &hits, plain, a), VQ_OK);
    EXPECT_EQ(Names(hits), "needle two needle");
    EXPECT_EQ(view.FTSearch("nowhere", &hits), VQWARN_NOT_FOUND);
    EXPECT_EQ(hits.GetEntryCount(), 0U);
    EXPECT_EQ(hits.Goto(VQNAVIGATE_FIRST, &entry), VQWARN_NOT_FOUND);
  }
  EXPECT_EQ(view.FTSearch("", &hits), VQERR_NULL_STRING);
  EXPECT_EQ(view.FTSearch("needle", nullptr), VQERR_NULL_POINTER);
  EXPECT_EQ(view.FTSearch("needle", &hits, plain, VQVFNavigator()), VQERR_UNINITIALIZED_ARGUMENT);
  VQDatabase other;
  VQViewFolder strange;
  VQVFNavigator elsewhere;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  ASSERT_EQ(other.CreateView("View", nullptr, &strange), VQ_OK);
  ASSERT_EQ(strange.Save(), VQ_OK);
  ASSERT_EQ(strange.Open(), VQ_OK);
  ASSERT_EQ(strange.GetEntries(&elsewhere), VQ_OK);
  EXPECT_EQ(view.FTSearch("needle", &hits, plain, elsewhere), VQERR_DIFFERENT_DATABASE);
}

TEST_F(Entries, AnObserverTellsWhatHappened) {
  AddTree();
  VQViewFolder view = OpenTree();
  VQVFObserver observer;
  std::vector<VQVFChange> changes;
  EXPECT_EQ(observer.GetChanges(&changes), VQERR_OBJECT_NOT_INITIALIZED);
  ASSERT_EQ(observer.Register(view), VQ_OK);
  EXPECT_EQ(observer.GetChanges(&changes), VQWARN_NOT_FOUND);
  const VQDocument made = Add("b", "b0");
  int complete = 0;
  ASSERT_EQ(observer.GetChanges(&changes, &complete), VQ_OK);
  EXPECT_EQ(complete, 1);
  bool inserted = false;
  for (const VQVFChange& change : changes) {
    if (change.SlateID != made.GetSlateID()) continue;
    inserted = change.Kind == VQVFCHANGEKIND_INSERTED && !change.IsGone && change.Type == VQVFENTRYTYPE_MAIN_TOPIC;
    EXPECT_EQ(Place(change.Position), "2.1");
  }
  EXPECT_TRUE(inserted);
  VQVFEntry entry;
  ASSERT_EQ(view.GetEntry(&entry, changes.back().Position), VQ_OK);
  ASSERT_EQ(Db.DeleteSlates(VQSlateArray(view)), VQ_OK);
  VQVFObserver copy = observer;
  ASSERT_EQ(observer.GetChanges(&changes, &complete), VQ_OK);
  std::size_t gone = 0;
  for (const VQVFChange& change : changes) gone += change.IsGone && change.Kind == VQVFCHANGEKIND_REMOVED;
  EXPECT_EQ(gone, 14U);
  EXPECT_EQ(copy.GetChanges(&changes), VQ_OK);
  EXPECT_EQ(observer.GetChanges(&changes), VQWARN_NOT_FOUND);
  EXPECT_EQ(observer.Register(VQViewFolder()), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(copy.Unregister(), VQ_OK);
  EXPECT_EQ(copy.GetChanges(&changes), VQERR_OBJECT_NOT_INITIALIZED);
  ASSERT_EQ(view.Close(), VQ_OK);
  EXPECT_EQ(observer.GetChanges(&changes), VQERR_NO_COLLECTION);
}

}  // namespace
