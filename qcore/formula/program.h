// Code made ready to run: blocks as jumps, constants as values, names as slots.
#ifndef QUILLON_QCORE_FORMULA_PROGRAM_H
#define QUILLON_QCORE_FORMULA_PROGRAM_H

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/formula/code.h"
#include "qcore/formula/functions.h"
#include "qcore/formula/value.h"

namespace qcore::formula {

enum class Run : std::uint8_t {
  kConstant,  // b constant
  kName,      // b slot, which may hold a temporary
  kTemp,      // b slot, which does
  kNegate,
  kNot,
  kBinary,              // a Op
  kArithmetic,          // a Op, kMultiply to kSubtract
  kArithmeticConstant,  // as kArithmetic, the right one being constant b, a single number
  kCompare,             // a Op, kEqual to kGreaterEqual
  kCompareConstant,     // as kCompare, the right one being constant b
  kNameCompare,         // a Op, slot b against constant c
  kNameCompareNumber,   // the same, the constant being a single number
  kAddMany,             // the sum of a values, from the left
  kAnd,                 // a false or failing top ends at b
  kOr,                  // a true or failing top ends at b
  kTruth,               // the top becomes 0 or 1
  kCondition,           // takes the top; false goes to b, an error stays and goes to c
  kJump,                // to b
  kLoop,                // to b, and counts
  kPop,
  kIfError,     // takes an error away; any other value goes to b
  kCall,        // function, a arguments
  kReturn,      // ends with the top as the value
  kSetTemp,     // b slot
  kSetItem,     // b slot
  kSetDefault,  // b slot
  kSelect,
  kIsAvailable,  // b slot; a 1 for the opposite
  kIterate,      // the top becomes what slot b runs through; an error goes to c
  kNext,         // sets the variable, or makes the result and goes to b
  kCollect,      // takes the top into the result; an error ends the loop at b
};

struct Instruction {
  Run run;
  std::uint16_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
  const Function* function = nullptr;
};

struct Slot {
  std::string name;
  std::uint32_t item = Source::kNoIndex;  // its place among the names that are read
};

struct RunSection {
  std::string name;
  std::vector<Instruction> instructions;
  bool selects = false;
};

// Without ASCII case.
struct LessName {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

class LoadedProgram final : public Program {
 public:
  [[nodiscard]] ENGSTATUS LoadCode(Bytes code);

  std::size_t section_count() const override { return sections_.size(); }
  std::string_view section_name(std::size_t section) const override { return sections_[section].name; }
  const std::vector<std::string>& summary_names() const override { return summary_names_; }
  const std::vector<std::string>& item_names() const override { return item_names_; }
  bool has_select() const override { return sections_[0].selects; }
  bool depends_on_place() const override { return (depends_ & kOnPlace) != 0; }
  bool depends_on_time() const override { return (depends_ & (kOnTime | kOnDay | kOnCount | kOnOthers)) != 0; }
  bool depends_on_time_alone() const override { return (depends_ & (kOnTime | kOnDay | kOnCount)) != 0; }
  bool depends_on_hour() const override { return (depends_ & kOnTime) != 0; }
  bool counts_responses() const override { return (depends_ & kOnCount) != 0; }
  bool depends_on_user() const override { return (depends_ & kOnUser) != 0; }
  bool selects_responses() const override { return (depends_ & kOnResponses) != 0; }
  bool selects_descendants() const override { return (depends_ & kOnDescendants) != 0; }
  bool marks_rows() const override { return (depends_ & kOnRow) != 0; }
  bool reads_any_item() const override { return (depends_ & kOnItems) != 0; }

  const RunSection& section(std::size_t index) const { return sections_[index]; }
  const std::vector<Value>& constants() const { return constants_; }
  const std::vector<Slot>& slots() const { return slots_; }
  std::uint32_t most_stack() const { return most_stack_; }
  // kNoIndex for a name that nothing in the code mentions.
  std::uint32_t FindSlot(std::string_view name) const;

 private:
  friend class Lowering;

  std::vector<std::uint8_t> code_;
  std::vector<RunSection> sections_;
  std::vector<std::string> summary_names_;
  std::vector<std::string> item_names_;
  std::vector<Value> constants_;
  std::deque<std::vector<TextRef>> text_lists_;
  std::deque<std::vector<double>> number_lists_;
  std::deque<std::vector<Moment>> moment_lists_;
  std::vector<Slot> slots_;
  std::map<std::string, std::uint32_t, LessName> slots_by_name_;
  std::uint32_t most_stack_ = 0;
  std::uint16_t depends_ = 0;
};

}  // namespace qcore::formula

#endif
