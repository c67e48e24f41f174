// Formulas: any text compiles to code that is sound, that becomes text of the same code and that runs within its
// limits; any bytes as code are refused or run.
#include "qcore/formula/formula.h"

#include <algorithm>

#include "fuzz/support.h"
#include "tests/qcore/formula_source.h"

namespace {

namespace formula = qcore::formula;
using fuzz::Claim;

constexpr formula::Limits kLimits = {200000, 1 << 20};

void AddItem(qtest::MapSource* source, const char* text) {
  formula::Code code;
  formula::Place place;
  std::shared_ptr<const formula::Program> program;
  Claim(formula::Compile(text, &code, &place) == ENG_OK, "the items' formula compiles");
  Claim(formula::Program::Load(code, &program) == ENG_OK, "and loads");
  formula::Result result;
  Claim(formula::Evaluator(program).Evaluate(*source, 0, &result) == ENG_OK, "and runs");
}

void Run(formula::Bytes code) {
  std::shared_ptr<const formula::Program> program;
  Claim(formula::Program::Load(code, &program) == ENG_OK, "sound code loads");
  qtest::MapSource source;
  AddItem(&source, "FIELD a := \"x\":\"y\"; FIELD b := 1:2:3; FIELD c := [03/05/1997]; FIELD Subject := \"Hi\"");
  formula::Evaluator evaluator(program, kLimits);
  formula::Result result;
  for (std::size_t i = 0; i < std::min<std::size_t>(program->section_count(), 4); ++i) {
    if (evaluator.Evaluate(source, i, &result) == ENG_OK) Claim(result.value.size() >= 2, "a value has its type");
  }
}

void CompileText(std::string_view text) {
  formula::Code code;
  formula::Code again;
  formula::Place place;
  std::string made;
  if (formula::Compile(text, &code, &place) != ENG_OK) {
    Claim(std::size_t{place.offset} + place.length <= text.size(), "an error lies in the text");
    return;
  }
  Claim(formula::Verify(code) == ENG_OK, "compiled code is sound");
  Claim(formula::Decompile(code, formula::Extent::kAll, &made) == ENG_OK, "and becomes text");
  Claim(formula::Compile(made, &again, &place) == ENG_OK && again == code, "which is that code");
  Run(code);
}

void TakeCode(formula::Bytes code) {
  if (formula::Verify(code) != ENG_OK) return;
  std::string made;
  formula::Code again;
  formula::Place place;
  ENGSTATUS status = formula::Decompile(code, formula::Extent::kAll, &made);
  Claim(status == ENG_OK || status == ENG_ERR_FORMULA_TOO_LARGE, "sound code becomes text");
  if (status == ENG_OK) status = formula::Compile(made, &again, &place);
  Claim(status == ENG_OK || status == ENG_ERR_FORMULA_TOO_LARGE, "which compiles");
  formula::Code merged;
  static_cast<void>(formula::MergeColumn(code, "$1", code, &merged));
  Run(code);
}

}  // namespace

// The first byte tells text, code, or a text's code with some bytes changed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::World::Get();
  if (size == 0 || size > 8000) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 4 == 1) {
    formula::Code code(data + 1, data + size);
    if (code.size() >= formula::kHeaderSize) {
      code[4] = static_cast<std::uint8_t>(code.size());
      code[5] = static_cast<std::uint8_t>(code.size() >> 8);
    }
    TakeCode(code);
  } else if (data[0] % 4 == 2 && size > 4) {
    formula::Code code;
    formula::Place place;
    if (formula::Compile(text.substr(3), &code, &place) != ENG_OK) return 0;
    code[(data[1] | data[2] << 8) % code.size()] = data[3];
    TakeCode(code);
  } else {
    CompileText(text);
  }
  return 0;
}
