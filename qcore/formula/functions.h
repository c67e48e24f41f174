// The table of functions: what the compiler, the walk and the evaluator know of each.
//
// Numbers are stored in compiled code and never change meaning; what each function does stands in docs/formulas.md.
#ifndef QUILLON_QCORE_FORMULA_FUNCTIONS_H
#define QUILLON_QCORE_FORMULA_FUNCTIONS_H

#include <cstdint>
#include <span>
#include <string_view>

#include "qcore/formula/value.h"

namespace qcore::formula {

class Machine;

// How the arguments are handled.
enum class Form : std::uint8_t {
  kEager,
  kEagerErrors,   // eager, and takes error values
  kEagerRemoval,  // eager, and takes what removes an item
  kReturn,
  // Blocks from here on.
  kIf,
  kDo,
  kFor,
  kWhile,
  kDoWhile,
  kIfError,
  kTransform,
  kIsAvailable,
  kIsUnavailable,
};

// What the result depends on beside the arguments.
enum Depends : std::uint16_t {
  kNothing = 0,
  kOnTime = 1,  // of the evaluation
  kOnItems = 2,
  kOnResponses = 4,
  kOnDescendants = 8,
  kOnRow = 16,
  kOnPlace = 32,  // the database or the view
  kOnUser = 64,
  kOnDay = 128,    // on the time, but the same all day
  kOnCount = 256,  // how many responses there are
  kOnOthers = 512  // on what look-ups find
};

inline constexpr std::uint16_t kAnyNumber = 0xFFFF;

using Body = Value (*)(Machine& machine, std::span<const Value> arguments);

struct Function {
  std::uint16_t number;
  const char* name;  // without the '@'
  std::uint16_t least;
  std::uint16_t most;
  Form form;
  std::uint16_t depends;
  Body body;
  // Keywords that may stand as an argument, separated by spaces; null for none.
  const char* keywords;
};

// Null when there is none. Names compare without case.
const Function* FindFunction(std::string_view name);
const Function* FindFunction(std::uint16_t number);
inline bool IsLazy(Form form) { return form >= Form::kIf; }
// Counts and their parity.
bool TakesArguments(const Function& function, std::uint32_t count);
bool KnowsKeyword(const Function& function, std::string_view keyword);
std::span<const Function> AllFunctions();

}  // namespace qcore::formula

#endif
