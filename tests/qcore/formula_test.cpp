// The formula language, by the rows of data/formulas.txt.
#include "qcore/formula/formula.h"

#include <cmath>
#include <fstream>
#include <set>

#include "qcore/formula/functions.h"
#include "tests/qcore/engine.h"
#include "tests/qcore/formula_source.h"

namespace {

namespace formula = qcore::formula;
using qtest::MapSource;

std::uint32_t WordAt(formula::Bytes bytes, std::size_t at) { return bytes[at] | std::uint32_t{bytes[at + 1]} << 8; }

std::string TimeText(formula::Bytes at) {
  TIMEDATE moment{};
  std::memcpy(&moment, at.data(), sizeof moment);
  const bool day = moment.TimeWord == ENG_TIME_WILD;
  const TFMT format{0, 0, 0, static_cast<std::uint8_t>(day ? 0 : moment.DateWord == ENG_TIME_WILD ? 1 : 2)};
  ENGCHAR text[80];
  std::uint16_t length = 0;
  if (EngTimeToText(nullptr, &format, &moment, text, sizeof text, &length) != ENG_OK) return "?";
  return {reinterpret_cast<const char*>(text), length};
}

std::string NumberText(formula::Bytes at) {
  double number = 0;
  std::memcpy(&number, at.data(), sizeof number);
  char text[40];
  std::snprintf(text, sizeof text, "%.10g", number);
  return text;
}

// As a formula would write it.
std::string Printed(formula::Bytes value) {
  std::string text;
  const std::uint32_t type = WordAt(value, 0);
  const auto add = [&text](const std::string& entry) { text += (text.empty() ? "" : ":") + entry; };
  if (type == 0x500) return '"' + std::string(value.begin() + 2, value.end()) + '"';
  if (type == 0x300) return NumberText(value.subspan(2));
  if (type == 0x400) return '[' + TimeText(value.subspan(2)) + ']';
  const std::uint32_t count = WordAt(value, 2);
  std::size_t at = 4;
  if (type == 0x501) {
    at += 2 * count;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::size_t size = WordAt(value, 4 + 2 * i);
      add('"' + std::string(value.begin() + at, value.begin() + at + size) + '"');
      at += size;
    }
    return text;
  }
  at = 6;
  for (std::uint32_t i = 0; i < count; ++i, at += 8) {
    add(type == 0x301 ? NumberText(value.subspan(at)) : '[' + TimeText(value.subspan(at)) + ']');
  }
  for (std::uint32_t i = 0; i < WordAt(value, 4); ++i, at += 16) {
    add('[' + TimeText(value.subspan(at)) + " - " + TimeText(value.subspan(at + 8)) + ']');
  }
  return text;
}

struct Row {
  int line = 0;
  std::string formula;
  std::string items;
  std::string expected;
};

std::string Stripped(std::string text) {
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::vector<Row> Rows() {
  std::vector<Row> rows;
  std::ifstream file(QUILLON_TEST_DATA "/formulas.txt");
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    const std::size_t first = line.find("##");
    const std::size_t second = line.find("##", first + 2);
    EXPECT_NE(second, std::string::npos) << "line " << number;
    rows.push_back({number, Stripped(line.substr(0, first)), Stripped(line.substr(first + 2, second - first - 2)),
                    Stripped(line.substr(second + 2))});
  }
  return rows;
}

struct Formulas : qtest::Engine {
  qtest::StandingClock clock;
  Formulas() {
    setenv("TZ", "GMT0", 1);
    tzset();
  }

  // The value, or "error N", or "at OFFSET LENGTH error N" for a text that does not compile; and what it says of the
  // document.
  static std::string Evaluated(const std::string& text, MapSource* source) {
    formula::Code code;
    formula::Place place;
    const ENGSTATUS compiled = formula::Compile(text, &code, &place);
    if (compiled != ENG_OK) {
      return "at " + std::to_string(place.offset) + " " + std::to_string(place.length) + " error " +
             std::to_string(compiled);
    }
    std::shared_ptr<const formula::Program> program;
    if (formula::Program::Load(code, &program) != ENG_OK) return "not loaded";
    formula::Evaluator evaluator(program);
    formula::Result result;
    const ENGSTATUS status = evaluator.Evaluate(*source, 0, &result);
    std::string answer = status == ENG_OK ? Printed(result.value) : "error " + std::to_string(status);
    if (program->has_select()) answer += result.selected ? " selected" : " passed over";
    if (result.modified) answer += " modified";
    if (result.deleted) answer += " deleted";
    return answer;
  }
};

TEST_F(Formulas, GiveWhatTheRowsSay) {
  const std::vector<Row> rows = Rows();
  EXPECT_GT(rows.size(), 300u);
  for (const Row& row : rows) {
    MapSource source;
    source.below_selected = row.items.empty();
    if (!row.items.empty()) {
      EXPECT_EQ(Evaluated(row.items, &source).find("error"), std::string::npos) << row.line;
    }
    EXPECT_EQ(Evaluated(row.formula, &source), row.expected) << "line " << row.line << ": " << row.formula;
  }
}

TEST_F(Formulas, EveryFunctionHasARow) {
  std::set<std::string> named;
  for (const Row& row : Rows()) {
    for (std::size_t at = row.formula.find('@'); at != std::string::npos; at = row.formula.find('@', at + 1)) {
      std::size_t end = at + 1;
      while (end < row.formula.size() && isalnum(static_cast<unsigned char>(row.formula[end]))) ++end;
      named.insert(row.formula.substr(at + 1, end - at - 1));
    }
  }
  EXPECT_GE(formula::AllFunctions().size(), 120u);
  for (const formula::Function& function : formula::AllFunctions()) {
    EXPECT_TRUE(named.contains(function.name)) << function.name;
    EXPECT_EQ(formula::FindFunction(function.name), &function);
    EXPECT_EQ(formula::FindFunction(function.number), &function);
  }
}

TEST_F(Formulas, DecompiledTextGivesTheSameCode) {
  for (const Row& row : Rows()) {
    formula::Code code, again;
    formula::Place place;
    std::string text;
    if (formula::Compile(row.formula, &code, &place) != ENG_OK) continue;
    ASSERT_EQ(formula::Decompile(code, formula::Extent::kAll, &text), ENG_OK) << row.formula;
    EXPECT_EQ(formula::Compile(text, &again, &place), ENG_OK) << row.formula << " became " << text;
    EXPECT_EQ(code, again) << row.formula << " became " << text;
  }
}

}  // namespace
