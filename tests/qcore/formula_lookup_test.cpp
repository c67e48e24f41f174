// What formulas ask of other documents: look-ups in views, and whether one above a response is selected.
#include "engine/formula.h"
#include "tests/qcore/index_fixture.h"

namespace {

using qtest::Store;
using qtest::TestColumn;
using Ids = std::vector<std::uint32_t>;

struct Lookups : qtest::IndexTest {
  // The value as the fixture shows it, or "?" and the status.
  static std::string Evaluated(const std::string& text, ENGHANDLE slate) {
    ENGHANDLE compute = 0;
    char value[1000];
    std::uint32_t length = 0;
    std::uint16_t flags = 0;
    EXPECT_EQ(EngFormulaComputeStart(0, qtest::Compiled(text).data(), &compute), ENG_OK);
    const ENGSTATUS status = EngFormulaEvaluateTo(compute, slate, value, sizeof value, &length, &flags);
    EXPECT_EQ(EngFormulaComputeStop(compute), ENG_OK);
    if (status != ENG_OK) return "?" + std::to_string(status);
    return qtest::ShowValue({reinterpret_cast<const std::uint8_t*>(value), length});
  }
  Ids Found(const std::string& selection, const TIMEDATE* since = nullptr, std::uint32_t limit = 0) const {
    const std::string code = qtest::Compiled(selection);
    ENGHANDLE table = 0;
    EXPECT_EQ(EngDbSearchFormula(db_, code.data(), qtest::Length(code), 1, since, nullptr, limit, nullptr, &table),
              ENG_OK);
    const Ids ids = qtest::Ids(table);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    return ids;
  }
  // Colours by kind, with a response to the first one, and one that only somebody else may read.
  void MakeColours() {
    const std::uint32_t red = Doc({{"Kind", "warm"}, {"Name", "Red"}, {"nSize", "3"}, {"Tags", "a,b"}});
    Doc({{"Kind", "warm"}, {"Name", "orange"}, {"nSize", "1"}});
    Doc({{"Kind", "cold\\sea"}, {"Name", "blue"}, {"nSize", "2"}, {"Tags", "c"}});
    Doc({{"Kind", "warm"}, {"Name", "answer"}}, red);
    Doc({{"Kind", "warm"}, {"Name", "secret"}, {"$Readers", "CN=Somebody Else"}});
    const std::uint32_t kinds = MakeView({{"Kind", 0x4003}, {"Name", 0x4001}, {"nSize"}, {"No", 0, 0, "@DocNumber"}});
    Change(kinds, {{"$TITLE", "By kind|Kinds"}});
    Change(MakeView({{"nSize", 1}, {"Name"}}, kFlat), {{"$TITLE", "Sizes"}});
    Change(MakeView({{"Name"}}, kFlat), {{"$TITLE", "Unsorted"}});
  }
};

TEST_F(Lookups, ReadViews) {
  MakeColours();
  const ENGHANDLE slate = OpenSlate(Doc({{"Wanted", "BLUE"}}));
  const struct {
    const char* formula;
    const char* value;
  } rows[] = {{R"(@Implode(@DbColumn(""; ""; "Kinds"; 2)))", "blue orange Red answer"},
              {R"(@Implode(@DbColumn(""; ""; "By kind"; 1)))", "cold\\sea warm"},
              {R"(@Implode(@Text(@DbColumn([NOCACHE]; ""; "Kinds"; 3))))", "2 1 3"},
              {R"(@Implode(@DbColumn(""; ""; "Kinds"; 4)))", "1.1 2.1.1 3.1 3.2 3.2.1"},
              {R"(@DbColumn(""; ""; "Kinds"; 5))", "?661"},
              {R"(@DbColumn(""; ""; "None"; 1))", "?1030"},
              {R"(@DbColumn("SQL"; ""; "Kinds"; 1))", "?661"},
              {R"(@DbLookup(1; ""; "Kinds"; "WARM"; 2))", "?660"},
              {R"(@Implode(@DbLookup("NOCACHE"; ""; "Kinds"; "WARM"; 2)))", "orange Red"},
              {R"(@DbColumn(""; "nowhere"; "Kinds"; 1))", "?512"},
              {R"(@DbColumn(""; "host":"main"; "Kinds"; 1))", "?525"},
              {R"(@DbColumn(""; "":"main"; "Sizes"; 1) * 10 = 10:20:30)", "1.0"},
              {R"(@Implode(@DbLookup(""; ""; "Kinds"; "WARM"; 2)))", "orange Red"},
              {R"(@DbLookup(""; ""; "Kinds"; "wa"; 2))", "?1028"},
              {R"(@DbLookup(""; ""; "Kinds"; "wa"; 1; [PARTIALMATCH]))", "warm"},
              {R"(@DbLookup(""; ""; "Kinds"; "cold\\sea"; 2))", "blue"},
              {R"(@DbLookup(""; ""; "Kinds"; "cold"; 2))", "blue"},
              {R"(@Implode(@DbLookup(""; ""; "Kinds"; "warm":"none":"cold"; "Tags")))", "a b c"},
              {R"(@DbLookup(""; ""; "Kinds"; "warm"; "Missing"))", ""},
              {R"(@Implode(@DbLookup(""; ""; "Sizes"; 3:2; "Name")))", "Red blue"},
              {R"(@DbLookup(""; ""; "Sizes"; 9; "Name"; [FAILSILENT]))", ""},
              {R"(@DbLookup(""; ""; "Sizes"; [01/01/1997 - 01/02/1997]; "Name"))", "?660"},
              {R"(@DbLookup(""; ""; "Kinds"; "cold":"warm"; "nSize") + @DbLookup(""; ""; "Sizes"; 1; "Name"))", "?660"},
              {R"(@DbLookup(""; ""; "Unsorted"; "Red"; 1))", "?816"},
              {R"(@If(@Contains(@DbColumn(""; ""; "Kinds"; 2); @Lowercase(Wanted)); "there"; "no"))", "there"},
              {R"(@For(i := 0; i < 100000; i := i + 1; @DbLookup(""; ""; "Sizes"; 3; 2)))", "?658"}};
  for (const auto& row : rows) EXPECT_EQ(Evaluated(row.formula, slate), row.value) << row.formula;
  EXPECT_EQ(Evaluated(R"(@DbColumn(""; ""; "Sizes"; 1))", 0), "?663");
  EXPECT_EQ(Evaluated(R"(@Implode(@DbColumn(""; "main"; "Sizes"; 2)))", 0), "answer orange blue Red");
  Doc({{"Kind", "warm"}, {"Name", "Pink"}});
  EXPECT_EQ(Evaluated(R"(@Implode(@DbLookup(""; ""; "Kinds"; "warm"; 2)))", slate), "orange Pink Red");
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Lookups, ReachOtherDatabases) {
  MakeColours();
  const ENGHANDLE first = db_;
  ASSERT_EQ(EngDbCreate("other", 255, 0), ENG_OK);
  db_ = Open("other");
  const ENGHANDLE slate = NewSlate();
  EXPECT_EQ(Evaluated(R"(@DbLookup(""; "main.vlt"; "Kinds"; "cold"; 2))", slate), "blue");
  EXPECT_EQ(Evaluated(R"(@DbLookup(""; ""; "Kinds"; "cold"; 2))", slate), "?1030");
  // Nothing of it stays open, and what it reads in a transaction goes with it.
  EXPECT_EQ(EngDbClose(first), ENG_OK);
  EXPECT_EQ(EngDbBegin(db_), ENG_OK);
  Change(MakeView({{"Name", 1}}), {{"$TITLE", "Names"}});
  Doc({{"Name", "passing"}});
  EXPECT_EQ(Evaluated(R"(@DbColumn(""; ""; "Names"; 1))", slate), "passing");
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(EngDbRollback(db_), ENG_OK);
  EXPECT_EQ(EngDbDelete("main"), ENG_OK);
  EXPECT_EQ(Check(), ENG_OK);
}

// A view that looked up itself would have no end.
TEST_F(Lookups, AreNotForViews) {
  MakeColours();
  const std::string lookup = R"(@DbColumn(""; ""; "Sizes"; 2))";
  const std::uint32_t columns = MakeView({{"Name", 1}, {"Up", 0, 0, lookup}}, kFlat, "SELECT nSize > 1");
  EXPECT_EQ(qtest::AllRows(qtest::OpenCollection(db_, columns).get()),
            (std::vector<std::string>{"1 d blue|-", "2 d Red|-"}));
  const std::uint32_t selection = MakeView({{"Name", 1}}, kFlat, "SELECT @IsMember(Name; " + lookup + ")");
  EXPECT_TRUE(qtest::AllRows(qtest::OpenCollection(db_, selection).get()).empty());
  EXPECT_EQ(Found("SELECT @IsMember(Name; @Subset(" + lookup + "; 2))").size(), 2u);
}

TEST_F(Lookups, ResponsesAreBelowWhatIsSelected) {
  qtest::StandingClock clock;
  const std::uint32_t main = Doc({{"Form", "Main"}});
  const std::uint32_t child = Doc({{"Form", "Child"}}, main);
  const std::uint32_t grandchild = Doc({{"Form", "Child"}}, child);
  const std::uint32_t stray = Doc({{"Form", "Child"}}, Doc({{"Form", "Other"}}));
  const std::uint32_t loop = Doc({{"Form", "Child"}});
  Change(loop, {{"Form", "Child"}}, loop);
  const std::uint32_t hidden = Doc({{"Form", "Child"}}, Doc({{"Form", "Main"}, {"$Readers", "CN=Somebody Else"}}));
  TIMEDATE since{};
  clock.Sleep(std::chrono::seconds(1));
  Search(1, nullptr, &since);
  Change(grandchild, {{"Form", "Child"}, {"Changed", "1"}});
  const std::string deep = R"(SELECT Form = "Main" | @AllDescendants)";
  const std::string shallow = R"(SELECT Form = "Main" | @AllChildren)";
  EXPECT_EQ(Found(deep), (Ids{main, child, grandchild}));
  EXPECT_EQ(Found(shallow), (Ids{main, child}));
  EXPECT_EQ(Found(deep, nullptr, 2), (Ids{main, child}));
  // What is above has not changed since.
  EXPECT_EQ(Found(deep, &since), (Ids{grandchild}));
  for (const std::uint32_t id : {main, child, grandchild, stray, loop, hidden}) {
    const ENGHANDLE slate = OpenSlate(id);
    const bool selected = id == main || id == child || id == grandchild;
    EXPECT_EQ(Evaluated(deep, slate), selected ? "1.0" : "0.0") << id;
    EXPECT_EQ(Evaluated(shallow, slate), selected && id != grandchild ? "1.0" : "0.0") << id;
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  }
  const std::uint32_t view = MakeView({{"Form", 1}}, 0, deep);
  EXPECT_EQ(qtest::AllRows(qtest::OpenCollection(db_, view).get()),
            (std::vector<std::string>{"1 d Main", "1.1 d1 Child", "1.1.1 d2 Child"}));
}

}  // namespace
