// Slates and items through a save and a reopen.
#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Append;
using qtest::Data;
using qtest::Find;
using qtest::Header;
using qtest::IdOf;
using qtest::Items;
using qtest::Length;
using qtest::Repeated;
using qtest::Store;

using List = std::vector<std::pair<std::string, std::string>>;

struct Slates : qtest::Database {};

void Resize(ENGHANDLE slate, const char* name, const std::string& data) {
  const BLOCKID item = Find(slate, name);
  BLOCKID value{};
  ASSERT_EQ(EngItemReallocate(slate, item, &value, static_cast<std::uint32_t>(data.size() + 2)), ENG_OK);
  std::memcpy(static_cast<char*>(EngMemLock(value.Pool)) + value.Block + 2, data.data(), data.size());
  ASSERT_EQ(EngMemUnlock(value.Pool), ENG_OK);
  ASSERT_EQ(EngItemTouch(slate, item), ENG_OK);
}

const std::string kBig = Repeated(150000, 'a');
const std::string kOther = Repeated(70001, 'A');

struct Edit {
  const char* title;
  List before;
  void (*edit)(ENGHANDLE slate);
  List after;
};

const Edit kEdits[] = {
    {"nothing", {{"A", "1"}, {"B", ""}}, [](ENGHANDLE) {}, {{"A", "1"}, {"B", ""}}},
    {"grow in place",
     {{"A", "1"}, {"B", "2"}},
     [](ENGHANDLE s) { Resize(s, "a", "longer"); },
     {{"A", "longer"}, {"B", "2"}}},
    {"small to large", {{"A", "1"}, {"B", "2"}}, [](ENGHANDLE s) { Resize(s, "A", kBig); }, {{"A", kBig}, {"B", "2"}}},
    {"large to small", {{"A", kBig}, {"B", "2"}}, [](ENGHANDLE s) { Resize(s, "A", "x"); }, {{"A", "x"}, {"B", "2"}}},
    {"large to large",
     {{"A", kBig}, {"B", kBig}},
     [](ENGHANDLE s) { Resize(s, "A", kOther); },
     {{"A", kOther}, {"B", kBig}}},
    {"beside an untouched large one",
     {{"A", kBig}, {"B", "2"}},
     [](ENGHANDLE s) { Resize(s, "B", "two"); },
     {{"A", kBig}, {"B", "two"}}},
    {"delete a large one",
     {{"A", kBig}, {"B", "2"}},
     [](ENGHANDLE s) { EngItemDelete(s, Find(s, "A")); },
     {{"B", "2"}}},
    {"delete all of a name",
     {{"A", "1"}, {"B", "2"}, {"a", "3"}},
     [](ENGHANDLE s) { EngItemDeleteByName(s, Store("A"), 1); },
     {{"B", "2"}}},
    {"rename", {{"A", "1"}}, [](ENGHANDLE s) { EngItemRename(s, Find(s, "A"), Store("Name"), 4); }, {{"Name", "1"}}},
    {"many small ones past 64 KB", List(40, {"N", Repeated(4000, 'k')}), [](ENGHANDLE s) { Append(s, "Last", "1"); },
     [] {
       List all(40, {"N", Repeated(4000, 'k')});
       all.emplace_back("Last", "1");
       return all;
     }()},
    {"new ones that grow in turn",
     {{"A", "1"}},
     [](ENGHANDLE s) {
       Append(s, "B", "");
       Append(s, "C", "");
       Resize(s, "B", "first");
       Resize(s, "C", Repeated(700, 'c'));
       Resize(s, "C", "short");
       Append(s, "D", "4");
       Resize(s, "C", "longer again");
       Resize(s, "D", Repeated(3000, 'd'));
     },
     {{"A", "1"}, {"B", "first"}, {"C", "longer again"}, {"D", Repeated(3000, 'd')}}},
    {"more new ones than share their blocks",
     {},
     [](ENGHANDLE s) {
       for (int i = 0; i < 60; ++i) Append(s, "N", Repeated(900, 'n'));
       Resize(s, "N", "1");
     },
     [] {
       List all(60, {"N", Repeated(900, 'n')});
       all[0].second = "1";
       return all;
     }()},
    {"one in place of another, whatever their number",
     {{"Here", "x"}},
     [](ENGHANDLE s) {
       for (int i = 0; i < 200; ++i) {
         Append(s, "N", "1");
         const BLOCKID old = Find(s, "Here");
         Append(s, "Here", std::to_string(i));
         EXPECT_EQ(EngItemDelete(s, old), ENG_OK);
         EXPECT_EQ(qtest::DataAt(s, Find(s, "Here")), std::to_string(i));
       }
       Resize(s, "Here", "found");
     },
     [] {
       List all(200, {"N", "1"});
       all.emplace_back("Here", "found");
       return all;
     }()},
    {"set a text, cut at a character",
     {{"A", "1"}, {"A", "2"}},
     [](ENGHANDLE s) { EngItemSetText(s, Store("A"), Store("ab\xC3\xA9"), 3); },
     {{"A", "ab"}}},
};

TEST_F(Slates, EditsSurviveAReopen) {
  for (const Edit& row : kEdits) {
    SCOPED_TRACE(row.title);
    const std::uint32_t id = Make(row.before);
    ENGHANDLE slate = OpenSlate(id);
    ASSERT_EQ(Items(slate), row.before);
    row.edit(slate);
    EXPECT_EQ(Items(slate), row.after);
    SaveAndClose(slate);
    Reopen();
    slate = OpenSlate(id);
    EXPECT_EQ(Items(slate), row.after);
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    EXPECT_EQ(Check(), ENG_OK);
  }
}

TEST_F(Slates, ASecondSaveOfTheSameHandleKeepsEverything) {
  const ENGHANDLE slate = NewSlate();
  Append(slate, "Body", kBig);
  ASSERT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
  Append(slate, "Subject", "s");
  ASSERT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
  Resize(slate, "Body", kOther);
  const std::uint32_t id = SaveAndClose(slate);
  const ENGHANDLE again = OpenSlate(id);
  EXPECT_EQ(Items(again), (List{{"Body", kOther}, {"Subject", "s"}}));
  EXPECT_EQ(Header<ORIGINATORID>(again, ENG_SLATE_ORIGINATOR).Sequence, 3u);
  EXPECT_EQ(EngSlateClose(again), ENG_OK);
}

TEST_F(Slates, LeftoversOfLargeValuesAreFreed) {
  const std::uint32_t id = Make({{"Body", kBig}});
  std::uint64_t used = 0;
  std::uint64_t unused = 0;
  ASSERT_EQ(EngDbGetSpace(db_, &used, &unused), ENG_OK);
  for (int i = 0; i < 5; ++i) {
    const ENGHANDLE slate = OpenSlate(id);
    Resize(slate, "Body", Repeated(150000, static_cast<char>('b' + i)));
    SaveAndClose(slate);
  }
  std::uint64_t now = 0;
  ASSERT_EQ(EngDbGetSpace(db_, &now, &unused), ENG_OK);
  EXPECT_LT(now, used + 150000);
}

struct Refusal {
  const char* title;
  ENGSTATUS (*call)(ENGHANDLE slate);
  ENGSTATUS status;
};

TEST_F(Slates, RefusalsChangeNothing) {
  static const std::string long_name(65535, 'n');
  const Refusal rows[] = {
      {"empty name", [](ENGHANDLE s) { return Append(s, "", "x"); }, ENG_ERR_ITEM_NAME},
      {"NUL in a name", [](ENGHANDLE s) { return Append(s, std::string("a\0b", 3), "x"); }, ENG_ERR_ITEM_NAME},
      {"no bytes", [](ENGHANDLE s) { return EngItemAppend(s, 0, Store("x"), 1, 0, nullptr, 4, nullptr, nullptr); },
       ENG_ERR_ARGUMENT},
      {"size 1", [](ENGHANDLE s) { return EngItemReallocate(s, Find(s, "A"), nullptr, 1); }, ENG_ERR_ITEM_SIZE},
      {"a name in use", [](ENGHANDLE s) { return EngItemRename(s, Find(s, "A"), Store("b"), 1); }, ENG_ERR_ITEM_EXISTS},
      {"a missing name", [](ENGHANDLE s) { return EngItemDeleteByName(s, Store("C"), 1); }, ENG_ERR_NO_ITEM},
      {"a foreign item",
       [](ENGHANDLE s) {
         return EngItemDelete(s, {s + 1, 0});
       },
       ENG_ERR_NO_ITEM},
      {"an item out of range",
       [](ENGHANDLE s) {
         return EngItemDelete(s, {s, 2});
       },
       ENG_ERR_NO_ITEM},
      {"a block that is none", [](ENGHANDLE s) { return EngItemAppendBlock(s, 0, Store("x"), 1, s, 4, nullptr); },
       ENG_ERR_INVALID_HANDLE},
      {"a header member that is computed",
       [](ENGHANDLE s) { return EngSlateSetHeader(s, ENG_SLATE_SIZE, long_name.data()); }, ENG_ERR_HEADER_MEMBER},
      {"another slate's ID",
       [](ENGHANDLE s) {
         const std::uint32_t id = 4000;
         return EngSlateSetHeader(s, ENG_SLATE_ID, &id);
       },
       ENG_ERR_ARGUMENT},
      {"a locked value",
       [](ENGHANDLE s) {
         BLOCKID value{};
         EngItemReallocate(s, Find(s, "A"), &value, 3);
         EngMemLock(value.Pool);
         const ENGSTATUS status = EngItemDelete(s, Find(s, "A"));
         EXPECT_EQ(EngItemReallocate(s, Find(s, "A"), nullptr, 9), ENG_ERR_MEMORY_LOCKED);
         EngMemUnlock(value.Pool);
         return status;
       },
       ENG_ERR_MEMORY_LOCKED},
  };
  const List items{{"A", "1"}, {"B", "2"}};
  const ENGHANDLE slate = OpenSlate(Make(items));
  for (const Refusal& row : rows) {
    SCOPED_TRACE(row.title);
    EXPECT_EQ(row.call(slate), row.status);
    EXPECT_EQ(Items(slate), items);
  }
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(EngSlateClose(slate), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngSlateUpdate(slate, 0), ENG_ERR_INVALID_HANDLE);
}

TEST_F(Slates, NamesCompareWithoutCaseOfAsciiAlone) {
  const ENGHANDLE slate = OpenSlate(Make({}));
  for (std::size_t size : {1, 3, 4, 7, 8, 9, 16, 20}) {
    for (int byte = 1; byte < 256; ++byte) {
      std::string name(size, 'k');
      name.back() = static_cast<char>(byte);
      ASSERT_EQ(Append(slate, name, "1"), ENG_OK);
      name.back() = static_cast<char>(byte ^ 0x20);
      const bool letter = (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z';
      EXPECT_EQ(EngItemIsPresent(slate, Store(name), Length(name)) != 0, letter) << size << ' ' << byte;
      name.back() = static_cast<char>(byte);
      ASSERT_EQ(EngItemDeleteByName(slate, Store(name), Length(name)), ENG_OK);
    }
  }
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Slates, ItemTimesTellWhichItemsChanged) {
  qtest::StandingClock clock;
  const std::uint32_t id = Make({{"A", "1"}, {"B", "2"}});
  clock.Sleep(std::chrono::hours(1));
  ENGHANDLE slate = OpenSlate(id);
  Resize(slate, "B", "two");
  SaveAndClose(slate);
  Reopen();
  slate = OpenSlate(id);
  TIMEDATE a{};
  TIMEDATE b{};
  EXPECT_EQ(EngItemGetModified(slate, Find(slate, "A"), &a), ENG_OK);
  EXPECT_EQ(EngItemGetModified(slate, Find(slate, "B"), &b), ENG_OK);
  EXPECT_EQ(b.TimeWord - a.TimeWord, 360000u);
  const auto added = Header<TIMEDATE>(slate, ENG_SLATE_ADDED);
  EXPECT_EQ(added.TimeWord, a.TimeWord);
  EXPECT_EQ(Header<TIMEDATE>(slate, ENG_SLATE_MODIFIED).TimeWord, b.TimeWord);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Slates, ACopyIsPrivateAndBecomesANewSlateElsewhere) {
  const std::uint32_t id = Make({{"A", "1"}, {"Body", kBig}});
  const ENGHANDLE source = OpenSlate(id);
  ASSERT_EQ(Append(source, "New", "2"), ENG_OK);
  ENGHANDLE copy = 0;
  ASSERT_EQ(EngSlateCopy(source, &copy), ENG_OK);
  Resize(copy, "A", "changed");
  Resize(copy, "New", "changed");
  EXPECT_EQ(Data(source, "A"), "1");
  EXPECT_EQ(Data(source, "New"), "2");
  ASSERT_EQ(EngDbCreate("other", 255, 0), ENG_OK);
  const ENGHANDLE other = Open("other");
  ORIGINATORID origin{};
  ASSERT_EQ(EngDbNewOrigin(other, &origin), ENG_OK);
  const std::uint32_t none = 0;
  ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_ORIGINATOR, &origin), ENG_OK);
  ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_ID, &none), ENG_OK);
  ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_DB, &other), ENG_OK);
  ASSERT_EQ(EngSlateClose(source), ENG_OK);
  const std::uint32_t copied = SaveAndClose(copy);
  ENGHANDLE slate = 0;
  ASSERT_EQ(EngSlateOpen(other, copied, 0, &slate), ENG_OK);
  EXPECT_EQ(Items(slate), (List{{"A", "changed"}, {"Body", kBig}, {"New", "changed"}}));
  EXPECT_EQ(EngDbClose(other), ENG_OK);
  EXPECT_EQ(EngSlateClose(slate), ENG_ERR_INVALID_HANDLE) << "closed with its database";
}

}  // namespace
