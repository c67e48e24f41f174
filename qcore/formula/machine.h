// One evaluation at a time of one program. Functions get at everything through this.
#ifndef QUILLON_QCORE_FORMULA_MACHINE_H
#define QUILLON_QCORE_FORMULA_MACHINE_H

#include <optional>
#include <string>
#include <vector>

#include "qcore/formula/formula.h"
#include "qcore/formula/program.h"
#include "qcore/formula/value.h"

namespace qcore::formula {

// True for numbers of which one is not 0; an error for other types.
struct TruthValue {
  bool truth = false;
  ENGSTATUS error = ENG_OK;
};
TruthValue TruthOfList(const Value& value);
inline TruthValue TruthOf(const Value& value) {
  return value.is_number() && value.count == 1 ? TruthValue{value.number != 0, ENG_OK} : TruthOfList(value);
}

// Whether kEqual to kGreaterEqual is so; of what is no number only kNotEqual is.
// By kHolding: a bit for each of: not comparable, less, greater, equal.
inline constexpr std::uint8_t kHolding[] = {8, 7, 2, 4, 10, 12};
inline bool HoldsFor(Op op, double left, double right) {
  const unsigned order = (left < right ? 1u : 0u) + (left > right ? 2u : 0u) + (left == right ? 3u : 0u);
  return (kHolding[static_cast<std::size_t>(op) - static_cast<std::size_t>(Op::kEqual)] >> order & 1) != 0;
}

class Machine {
 public:
  Machine(const LoadedProgram& program, const Limits& limits);

  // Throws LimitReached.
  Value RunSection(Source& source, std::size_t section);

  // For functions.
  Source& source() { return *source_; }
  Arena& arena() { return arena_; }
  // Counts work that grows with a list or a text.
  void Charge(std::uint64_t steps) {
    if (steps > steps_) throw LimitReached{ENG_ERR_FORMULA_STEPS};
    steps_ -= steps;
  }
  // The same for a text that is looked at.
  void ChargeText(std::size_t size) {
    if (size >= 64) Charge(size / 64);
  }
  Value Text(std::string_view text) { return Value::Text(arena_.Copy(text), text.size()); }
  // The list that both make; an error for two types.
  Value Join(const Value& left, const Value& right);
  const TIMEDATE& Now();
  const INTLFORMAT& settings();
  // The item's value as it was assigned or as the document has it, whatever temporaries there are.
  Value ReadItem(std::string_view name);
  bool HasItem(std::string_view name);
  // Of a value with its type word, of which a copy is kept.
  Value DecodeCopy(Bytes value);
  void SetTemp(std::string_view name, const Value& value);
  Value SetItem(std::string_view name, const Value& value);
  void Delete() { deleted_ = true; }

  bool selected() const { return selected_; }
  bool modified() const { return modified_; }
  bool deleted() const { return deleted_; }

 private:
  enum class State : std::uint8_t { kUnread, kItem, kMissing, kTemp };
  struct SlotValue {
    State state = State::kUnread;
    Value value;
  };
  struct Iteration {
    std::uint32_t slot;
    SlotValue outer;  // what the variable's name stood for
    Value list;
    std::uint32_t next = 0;
    std::optional<Value> result;
  };

  struct Assigned {
    std::string_view name;
    Value value;
  };

  void Start(Source& source);
  // Null for an item that was not assigned.
  Value* FindAssigned(std::string_view name) { return assigned_.empty() ? nullptr : SearchAssigned(name); }
  Value* SearchAssigned(std::string_view name);
  const Value& Read(std::uint32_t slot) {
    if (slots_[slot].state == State::kUnread) Fetch(slot);
    return slots_[slot].value;
  }
  void Fetch(std::uint32_t slot);
  Value Decode(const ItemValue& item);
  Value DecodeComposite(Bytes records);
  // Compares two single values of one type, or a text with a few, as most formulas do; false leaves it to BinaryValues.
  bool CompareQuickly(Op op, const Value& left, const Value& right, bool* truth);
  // Hands a comparison's outcome to the instructions behind `at` that take it, without making a value of it. Goes on
  // behind the result's `at`, with `values` more at `top`.
  struct Delivered {
    const Instruction* at;
    std::ptrdiff_t values;
  };
  Delivered Deliver(const Instruction* code, const Instruction* at, bool truth, Value* top);
  void Binary(Op op, Value* left, const Value& right);
  Value BinaryValues(Op op, const Value& left, const Value& right);
  // One after the other, or all at once where all are single texts.
  Value AddMany(std::span<const Value> values);
  Value Call(const Function& function, std::span<const Value> arguments);
  bool Iterate(std::uint32_t slot, const Value& list);
  // The next entry into the variable; false at the end.
  bool Next();
  Value EndIteration();
  // Compares with the item and hands the value to the source.
  Value Assign(std::uint32_t slot, std::string_view name, const Value& value);

  const LoadedProgram& program_;
  const Limits limits_;
  Arena arena_;
  std::vector<Value> stack_;
  std::vector<SlotValue> slots_;
  std::vector<Iteration> iterations_;
  std::vector<Assigned> assigned_;  // items, whether the source takes them or not
  Source* source_ = nullptr;
  std::uint64_t steps_ = 0;
  std::optional<TIMEDATE> now_;
  std::optional<INTLFORMAT> settings_;
  bool selected_ = true;
  bool modified_ = false;
  bool deleted_ = false;
  // The list that ends the arena's last list allocation, and its room: another entry needs no copy.
  const void* open_list_ = nullptr;
  std::uint32_t open_count_ = 0;
  std::uint32_t open_room_ = 0;
};

// Operators on two values that are no errors.
Value Calculate(Machine& machine, Op op, const Value& left, const Value& right);
Value Compare(Machine& machine, Op op, const Value& left, const Value& right);
Value Negate(Machine& machine, const Value& value);
// Order of two entries of one type.
int CompareTexts(const TextRef& left, const TextRef& right);
int CompareMoments(const Moment& left, const Moment& right);

// The type word and the value as items store it. ENG_ERR_FORMULA_RESULT for what no item holds.
[[nodiscard]] ENGSTATUS Encode(const Value& value, std::vector<std::uint8_t>* bytes);

}  // namespace qcore::formula

#endif
