// Compiled formulas as strangers may have written them, merged columns, and the operations of the seam.
#include <gmock/gmock.h>

#include <random>
#include <tuple>

#include "engine/formula.h"
#include "tests/qcore/formula_source.h"
#include "tests/qcore/store_fixture.h"

namespace {

namespace formula = qcore::formula;

formula::Code Compiled(const std::string& text) {
  formula::Code code;
  formula::Place place;
  EXPECT_EQ(formula::Compile(text, &code, &place), ENG_OK) << text << " at " << place.offset;
  return code;
}

std::string TextOf(const formula::Code& code, formula::Extent extent) {
  std::string text;
  EXPECT_EQ(formula::Decompile(code, extent, &text), ENG_OK);
  return text;
}

// A formula with every kind of operation.
constexpr char kAll[] =
    "REM \"all\"; x := -a:(1 * -2); FIELD y := x + \"t\"; DEFAULT z := [03/05/1997]; @If(a & !b | c; @Do(d; 2); "
    "@Transform(x; \"e\"; e + 1)); @For(i := 0; i < 3; i := i + 1; @While(0; 1)); SELECT @Name([CN]; a) = \"b\"; "
    "COLUMN \"$1\"; Subject; SUMMARY \"$REF\"";

struct Hostile : qtest::Engine {};

TEST_F(Hostile, NoChangedByteGetsThrough) {
  const formula::Code good = Compiled(kAll);
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(formula::Verify({good.data(), size}), ENG_ERR_FORMULA_CODE) << size;
  }
  std::mt19937 random(1);
  int sound = 0;
  for (int round = 0; round < 20000; ++round) {
    formula::Code code = good;
    for (int i = 0; i <= round % 3; ++i) code[random() % code.size()] = static_cast<std::uint8_t>(random());
    std::shared_ptr<const formula::Program> program;
    const ENGSTATUS status = formula::Program::Load(code, &program);
    EXPECT_EQ(formula::Verify(code), status);
    if (status != ENG_OK) continue;
    ++sound;
    qtest::MapSource source;
    formula::Result result;
    formula::Evaluator evaluator(program, {100000, 1 << 20});
    for (std::size_t i = 0; i < program->section_count(); ++i) {
      static_cast<void>(evaluator.Evaluate(source, i, &result));
    }
    // Strangers may have written a name in two ways; what the compiler makes of it stays.
    const formula::Code again = Compiled(TextOf(code, formula::Extent::kAll));
    EXPECT_EQ(Compiled(TextOf(again, formula::Extent::kAll)), again);
  }
  EXPECT_GT(sound, 100);
}

TEST_F(Hostile, ALaterVersionSaysSo) {
  formula::Code code = Compiled("1");
  code[2] = 2;
  EXPECT_EQ(formula::Verify(code), ENG_ERR_FORMULA_VERSION);
}

TEST_F(Hostile, ColumnsOfOneNameAreNoCode) {
  formula::Code code = Compiled("1; COLUMN \"aa\"; 2; COLUMN \"bb\"; 3");
  std::replace(code.begin(), code.end(), std::uint8_t{'b'}, std::uint8_t{'A'});
  EXPECT_EQ(formula::Verify(code), ENG_ERR_FORMULA_CODE);
}

// A long text that is named a thousand times would be a long formula.
TEST_F(Hostile, TextsOfCodeHaveABound) {
  std::string many = "x := \"" + std::string(5000, 'x') + "\"; ";
  for (int i = 0; i < 1000; ++i) many += "a = \"short\" | ";
  formula::Code code = Compiled(many + "1");
  std::string text = "kept";
  ASSERT_EQ(formula::Decompile(code, formula::Extent::kAll, &text), ENG_OK);
  // The short text's number becomes that of the long one.
  const std::uint8_t from[] = {1, 3, 0};
  const std::uint8_t to[] = {1, 1, 0};
  int changed = 0;
  for (auto at = code.begin(); (at = std::search(at, code.end(), std::begin(from), std::end(from))) != code.end();
       ++changed) {
    std::copy(std::begin(to), std::end(to), at);
  }
  ASSERT_EQ(changed, 1000);
  ASSERT_EQ(formula::Verify(code), ENG_OK);
  EXPECT_EQ(formula::Decompile(code, formula::Extent::kAll, &text), ENG_ERR_FORMULA_TOO_LARGE);
}

// Random formulas in two forms: as they are, and with every value behind @Do, where it is nothing special.
class Twins {
 public:
  using Pair = std::pair<std::string, std::string>;

  Pair Make(int depth) {
    if (depth == 0) {
      const std::string leaf = Pick(
          {"\"a\"", "\"Memo\"", "\"Memo\":\"x\"", "1", "0", "-2.5", "1:2:0", "[03/05/1997]", "a", "b", "none", "t"});
      return {leaf, "@Do(" + leaf + ")"};
    }
    const Pair left = Make(depth - 1);
    const Pair right = Make(static_cast<int>(random_() % static_cast<unsigned>(depth)));
    const std::vector<std::vector<std::string>> forms = {
        {"@If(", "; ", "; 7)"}, {"@Transform(", "; \"t\"; ", ")"}, {"(t := ", ") + (", ")"}, {"!(", ") | -(", ")"}};
    const std::size_t form = random_() % 8;
    if (form < forms.size()) return Join(forms[form], left, right);
    const std::string op = Pick({"+", "+", "+", "-", "=", "!=", "<", ">=", "&", "|", ":", "*+"});
    const Pair joined = Join({"(", ") " + op + " (", ")"}, left, right);
    return {joined.first, "@Do(" + joined.second + ")"};
  }

 private:
  std::string Pick(const std::vector<std::string>& from) { return from[random_() % from.size()]; }
  static Pair Join(const std::vector<std::string>& form, const Pair& left, const Pair& right) {
    return {form[0] + left.first + form[1] + right.first + form[2],
            form[0] + left.second + form[1] + right.second + form[2]};
  }

  std::mt19937 random_{7};
};

TEST_F(Hostile, FusedInstructionsChangeNothing) {
  qtest::MapSource source;
  source.items = {{"a", {0x00, 0x05, 'M', 'e', 'm', 'o'}}, {"b", {0x00, 0x03, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}}};
  const auto answer = [&](const std::string& text) {
    std::shared_ptr<const formula::Program> program;
    EXPECT_EQ(formula::Program::Load(Compiled(text), &program), ENG_OK);
    formula::Evaluator evaluator(program, {100000, 1 << 20});
    formula::Result result;
    const ENGSTATUS status = evaluator.Evaluate(source, 0, &result);
    return std::tuple(status, result.selected, std::vector(result.value.begin(), result.value.end()));
  };
  Twins twins;
  int good = 0;
  for (int round = 0; round < 3000; ++round) {
    const auto [fused, plain] = twins.Make(1 + round % 4);
    const auto expected = answer("SELECT " + plain);
    good += std::get<0>(expected) == ENG_OK;
    ASSERT_EQ(answer("SELECT " + fused), expected) << fused;
    const formula::Code code = Compiled(fused);
    ASSERT_EQ(Compiled(TextOf(code, formula::Extent::kAll)), code) << fused;
  }
  EXPECT_GT(good, 300);
}

TEST_F(Hostile, DepthHasABound) {
  const auto nested = [](const std::string& open, int count, const std::string& inside, const std::string& close) {
    std::string text;
    for (int i = 0; i < count; ++i) text += open;
    text += inside;
    for (int i = 0; i < count; ++i) text += close;
    return text;
  };
  formula::Code code;
  formula::Place place;
  for (const auto& [open, close] : {std::pair("(", ")"), {"!", ""}, {"@Abs(", ")"}, {"@If(1;", ";0)"}, {"x := ", ""}}) {
    EXPECT_EQ(formula::Compile(nested(open, 190, "1", close), &code, &place), ENG_OK) << open;
    EXPECT_EQ(formula::Compile(nested(open, 20000 / 5, "1", close), &code, &place), ENG_ERR_FORMULA_NESTING) << open;
  }
  // Length alone is no depth.
  EXPECT_EQ(formula::Compile(nested("1 + ", 10000, "1", ""), &code, &place), ENG_OK);
  EXPECT_EQ(formula::Compile(nested("\"a\" : ", 10000, "\"a\"", ""), &code, &place), ENG_OK);
  EXPECT_EQ(formula::Compile(nested("1 + ", 30000, "1", ""), &code, &place), ENG_ERR_FORMULA_TOO_LARGE);
}

struct Seam : qtest::Database {
  // Reads a block of the engine's and frees it.
  static std::string Take(ENGHANDLE block, std::uint32_t size) {
    const std::string bytes(static_cast<const char*>(EngMemLock(block)), size);
    EngMemUnlock(block);
    EXPECT_EQ(EngFormulaRelease(block), ENG_OK);
    return bytes;
  }
  static std::string Made(const std::string& text) {
    ENGHANDLE block = 0;
    std::uint16_t size = 0;
    EXPECT_EQ(EngFormulaCompile(qtest::Store(text), static_cast<std::uint16_t>(text.size()), &block, &size, nullptr),
              ENG_OK);
    return Take(block, size);
  }
  static std::string Merged(const std::string& selection, const std::string& name, const std::string& column) {
    ENGHANDLE block = 0;
    std::uint16_t size = 0;
    EXPECT_EQ(EngFormulaMergeColumn(selection.data(), static_cast<std::uint32_t>(selection.size()), qtest::Store(name),
                                    static_cast<std::uint16_t>(name.size()), column.data(),
                                    static_cast<std::uint32_t>(column.size()), &block, &size),
              ENG_OK);
    return Take(block, size);
  }
  static std::string Summarised(const std::string& selection, const std::string& name) {
    ENGHANDLE block = 0;
    std::uint16_t size = 0;
    EXPECT_EQ(EngFormulaAddSummaryName(selection.data(), static_cast<std::uint32_t>(selection.size()),
                                       qtest::Store(name), static_cast<std::uint16_t>(name.size()), &block, &size),
              ENG_OK);
    return Take(block, size);
  }
  static std::string Decompiled(const std::string& code, std::uint16_t flags) {
    ENGHANDLE block = 0;
    std::uint16_t size = 0;
    EXPECT_EQ(EngFormulaDecompile(code.data(), flags, &block, &size), ENG_OK);
    return Take(block, size);
  }
};

TEST_F(Seam, ColumnsAreMergedAndStripped) {
  const std::string selection = Made("@@SELECT@@ @@102@@");
  std::string code = Merged(selection, "$1", Made("a := Subject; a"));
  code = Summarised(Summarised(code, "$REF"), "$Conflict");
  code = Merged(code, "$2", Made("@@146@@"));
  EXPECT_EQ(Decompiled(code, 0),
            "SELECT @All; COLUMN \"$1\"; a := Subject; a; SUMMARY \"$REF\"; SUMMARY \"$Conflict\"; COLUMN \"$2\"; "
            "@DocNumber");
  EXPECT_EQ(Decompiled(code, ENG_DECOMPILE_SELECTION), "SELECT @All");
  EXPECT_EQ(Made(Decompiled(code, ENG_DECOMPILE_SELECTION)), selection);
  EXPECT_EQ(Made(Decompiled(code, 0)), code);
  EXPECT_EQ(Decompiled(Merged(Summarised(code, "$ref"), "$1", Made("2")), 0),
            "SELECT @All; SUMMARY \"$Conflict\"; COLUMN \"$2\"; @DocNumber; SUMMARY \"$ref\"; COLUMN \"$1\"; 2");
  const struct {
    std::uint16_t which;
    const char* names;
  } rows[] = {{ENG_FORMULA_NAMES_READ, "Subject"},
              {ENG_FORMULA_NAMES_COLUMNS, "$1$2"},
              {ENG_FORMULA_NAMES_SUMMARY, "$1$REF$Conflict$2"}};
  for (const auto& row : rows) {
    ENGHANDLE list = 0;
    std::uint16_t size = 0;
    ASSERT_EQ(EngFormulaGetNames(code.data(), static_cast<std::uint32_t>(code.size()), row.which, &list, &size),
              ENG_OK);
    EXPECT_THAT(Take(list, size), testing::EndsWith(row.names));
  }
  ENGHANDLE block = 0;
  std::uint16_t size = 0;
  EXPECT_EQ(EngFormulaMergeColumn(code.data(), 5, qtest::Store("a"), 1, code.data(), 5, &block, &size),
            ENG_ERR_FORMULA_CODE);
}

TEST_F(Seam, AssignmentsReachTheSlateWhenAsked) {
  const std::string code = Made("FIELD Subject := Subject + \"!\"; FIELD Gone := @DeleteField; Subject");
  const std::string failing = Made("FIELD Subject := \"half\"; FIELD Other := 1 / 0");
  const ENGHANDLE slate = NewSlate();
  ASSERT_EQ(qtest::Append(slate, "Subject", "Hi"), ENG_OK);
  ASSERT_EQ(qtest::Append(slate, "Gone", "x"), ENG_OK);
  const struct {
    const std::string* code;
    std::uint16_t flags;
    std::uint32_t room;
    ENGSTATUS status;
    const char* subject;
  } rows[] = {{&code, 0, 100, ENG_OK, "Hi"},
              {&code, ENG_COMPUTE_ASSIGN, 3, ENG_ERR_BUFFER_SIZE, "Hi"},
              {&failing, ENG_COMPUTE_ASSIGN, 100, ENG_ERR_FORMULA_DIVISION, "Hi"},
              {&code, ENG_COMPUTE_ASSIGN, 100, ENG_OK, "Hi!"}};
  for (const auto& row : rows) {
    ENGHANDLE compute = 0;
    char buffer[100];
    std::uint32_t length = 0;
    std::uint16_t flags = 0;
    ASSERT_EQ(EngFormulaComputeStart(row.flags, row.code->data(), &compute), ENG_OK);
    EXPECT_EQ(EngFormulaEvaluateTo(compute, slate, buffer, row.room, &length, &flags), row.status);
    EXPECT_EQ(flags & ENG_FORMULA_MODIFIED, ENG_FORMULA_MODIFIED);
    EXPECT_EQ(qtest::Data(slate, "Subject"), row.subject);
    EXPECT_EQ(EngFormulaComputeStop(compute), ENG_OK);
    EXPECT_EQ(EngFormulaEvaluateTo(compute, slate, buffer, 3, &length, &flags), ENG_ERR_INVALID_HANDLE);
  }
  EXPECT_FALSE(EngItemIsPresent(slate, qtest::Store("Gone"), 4));
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

// File objects as they are stored, whatever their item's name: name, size and time. Objects of other kinds are no
// files.
TEST_F(Seam, ReadsAttachments) {
  const std::string code = Made("@AttachmentNames : @Text(@AttachmentLengths) : @Text(@Attachments)");
  const ENGHANDLE slate = NewSlate();
  const struct {
    const char* item;
    char kind, name, size;
  } rows[] = {{"$FILE", 0, 4, 5}, {"Copy", 0, 4, 7}, {"$FILE", 3, 4, 6}, {"$FILE", 0, 0, 8}, {"$FILE", 0, 5, 9}};
  for (const auto& row : rows) {
    std::string record(36, '\0');
    record[0] = row.kind;
    record[6] = row.name;
    record[16] = row.size;
    ASSERT_EQ(qtest::Append(slate, row.item, record + "a.tx", qtest::kObject), ENG_OK);
  }
  ASSERT_EQ(qtest::Append(slate, "$FILE", "damaged", qtest::kObject), ENG_OK);
  ENGHANDLE compute = 0, result = 0;
  std::uint16_t length = 0, flags = 0;
  ASSERT_EQ(EngFormulaComputeStart(0, code.data(), &compute), ENG_OK);
  ASSERT_EQ(EngFormulaEvaluate(compute, slate, &result, &length, &flags), ENG_OK);
  EXPECT_THAT(Take(result, length), testing::EndsWith("a.txa.tx572"));
  EXPECT_EQ(EngFormulaEvaluate(compute, db_, &result, &length, &flags), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Seam, SaysWhatAFormulaDependsOn) {
  const struct {
    const char* text;
    std::uint16_t selector;
    std::uint16_t answer;
  } rows[] = {{"@Now", ENG_FORMULA_INFO_TIME, 1},
              {"Subject", ENG_FORMULA_INFO_TIME, 0},
              {"SELECT a | @AllChildren", ENG_FORMULA_INFO_RESPONSES, 1},
              {"SELECT a | @AllDescendants", ENG_FORMULA_INFO_RESPONSES, 2},
              {"SELECT a", ENG_FORMULA_INFO_SELECTS, 1},
              {"a; COLUMN \"b\"; c", ENG_FORMULA_INFO_COLUMNS, 1}};
  for (const auto& row : rows) {
    ENGHANDLE compute = 0;
    std::uint16_t answer = 0xFFFF;
    ASSERT_EQ(EngFormulaComputeStart(0, Made(row.text).data(), &compute), ENG_OK);
    EXPECT_EQ(EngFormulaGetInfo(compute, row.selector, &answer), ENG_OK);
    EXPECT_EQ(answer, row.answer) << row.text;
    EXPECT_EQ(EngFormulaGetInfo(compute, 99, &answer), ENG_ERR_ARGUMENT);
    EXPECT_EQ(EngFormulaComputeStop(compute), ENG_OK);
  }
}

}  // namespace
