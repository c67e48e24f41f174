#include "qcore/formula/machine.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "qcore/store/names.h"
#include "qcore/store/wire.h"
#include "qcore/text/composite.h"
#include "qcore/time/moment.h"
#include "qcore/time/zone.h"

namespace qcore::formula {

namespace {

// A document may have as many items as there are words to look among.
constexpr std::uint64_t kStepsOfItem = 50;
constexpr std::uint16_t kComposite = 0x0001;
constexpr std::uint16_t kNumberType = 0x0300;
constexpr std::uint16_t kNumberList = 0x0301;
constexpr std::uint16_t kTimeType = 0x0400;
constexpr std::uint16_t kTimeList = 0x0401;
constexpr std::uint16_t kTextType = 0x0500;
constexpr std::uint16_t kTextList = 0x0501;

std::uint16_t WordAt(const std::uint8_t* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }
std::uint32_t WideAt(const std::uint8_t* at) { return WordAt(at) | std::uint32_t{WordAt(at + 2)} << 16; }

double NumberAt(const std::uint8_t* at) { return std::bit_cast<double>(LoadLittle<std::uint64_t>(at)); }

TIMEDATE MomentAt(const std::uint8_t* at) { return {WideAt(at), WideAt(at + 4)}; }

struct ListHeader {
  std::uint32_t singles;
  std::uint32_t ranges;
};
// Singles of 8 bytes and ranges of 16 behind the header.
bool ReadHeader(Bytes data, ListHeader* header) {
  if (data.size() < 4) return false;
  *header = {WordAt(data.data()), WordAt(data.data() + 2)};
  return data.size() - 4 >= std::size_t{8} * header->singles + std::size_t{16} * header->ranges;
}

Value DecodeTexts(Arena& arena, Bytes data) {
  if (data.empty()) return {};
  if (data.size() < 2) return Value::Error(ENG_ERR_ITEM_DAMAGED);
  const std::size_t count = WordAt(data.data());
  if (count == 0) return {};
  if (data.size() < 2 + 2 * count) return Value::Error(ENG_ERR_ITEM_DAMAGED);
  TextRef* texts = arena.Array<TextRef>(count);
  std::size_t at = 2 + 2 * count;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t size = WordAt(data.data() + 2 + 2 * i);
    if (data.size() - at < size) return Value::Error(ENG_ERR_ITEM_DAMAGED);
    texts[i] = {reinterpret_cast<const char*>(data.data() + at), size};
    at += size;
  }
  return Value::Texts(texts, static_cast<std::uint32_t>(count));
}

// Both ends of a range of numbers are entries.
Value DecodeNumbers(Arena& arena, Bytes data) {
  ListHeader header{};
  if (data.empty()) return {};
  if (!ReadHeader(data, &header)) return Value::Error(ENG_ERR_ITEM_DAMAGED);
  const std::uint32_t count = header.singles + 2 * header.ranges;
  if (count == 0) return {};
  double* numbers = arena.Array<double>(count);
  for (std::uint32_t i = 0; i < count; ++i) numbers[i] = NumberAt(data.data() + 4 + 8 * i);
  return Value::Numbers(numbers, count);
}

Value DecodeTimes(Arena& arena, Bytes data) {
  ListHeader header{};
  if (data.empty()) return {};
  if (!ReadHeader(data, &header)) return Value::Error(ENG_ERR_ITEM_DAMAGED);
  const std::uint32_t count = header.singles + header.ranges;
  if (count == 0) return {};
  Moment* moments = arena.Array<Moment>(count);
  const std::uint8_t* at = data.data() + 4;
  for (std::uint32_t i = 0; i < count; ++i) {
    moments[i] = {MomentAt(at), {ENG_TIME_WILD, ENG_TIME_WILD}};
    at += 8;
    if (i < header.singles) continue;
    moments[i].upper = MomentAt(at);
    at += 8;
  }
  return Value::Moments(moments, count);
}

}  // namespace

TruthValue TruthOfList(const Value& value) {
  if (value.is_error()) return {false, value.error};
  if (!value.is_number()) return {false, ENG_ERR_FORMULA_TYPE};
  const double* numbers = value.numbers();
  return {std::any_of(numbers, numbers + value.count, [](double number) { return number != 0; }), ENG_OK};
}

Machine::Machine(const LoadedProgram& program, const Limits& limits)
    : program_(program),
      limits_(limits),
      arena_(limits.memory),
      stack_(program.most_stack() + 1),
      slots_(program.slots().size()) {}

void Machine::Start(Source& source) {
  arena_.Reset();
  for (SlotValue& slot : slots_) slot.state = State::kUnread;
  iterations_.clear();
  assigned_.clear();
  source_ = &source;
  steps_ = limits_.steps;
  now_.reset();
  settings_.reset();
  selected_ = true;
  modified_ = false;
  deleted_ = false;
  open_list_ = nullptr;
}

Value Machine::DecodeComposite(Bytes records) {
  const auto text = text::FromComposite(records, "\n", 0);
  return text ? Text(*text) : Value::Error(ENG_ERR_ITEM_DAMAGED);
}

Value Machine::Decode(const ItemValue& item) {
  const Bytes data = item.data;
  switch (item.type) {
    case kTextType:
      return Value::Text(reinterpret_cast<const char*>(data.data()), data.size());
    case kNumberType:
      if (data.empty()) return {};
      return data.size() < 8 ? Value::Error(ENG_ERR_ITEM_DAMAGED) : Value::Number(NumberAt(data.data()));
    case kTimeType:
      if (data.empty()) return {};
      return data.size() < 8 ? Value::Error(ENG_ERR_ITEM_DAMAGED) : Value::Time(MomentAt(data.data()));
    case kTextList:
      return DecodeTexts(arena_, data);
    case kNumberList:
      return DecodeNumbers(arena_, data);
    case kTimeList:
      return DecodeTimes(arena_, data);
    case kComposite:
      return DecodeComposite(data);
    default:
      return Value::Error(ENG_ERR_FORMULA_TYPE);
  }
}

void Machine::Fetch(std::uint32_t index) {
  SlotValue& slot = slots_[index];
  const Slot& name = program_.slots()[index];
  ItemValue item;
  const Value* const assigned = FindAssigned(name.name);
  if (assigned) {
    slot.state = assigned->type == Type::kRemoval ? State::kMissing : State::kItem;
    slot.value = assigned->type == Type::kRemoval ? Value() : *assigned;
  } else if (source_->FindItem(name.item, name.name, &item)) {
    slot.state = State::kItem;
    if (item.type == kNumberType && item.data.size() >= 8) {
      slot.value = Value::Number(NumberAt(item.data.data()));
    } else if (item.type == kTextType) {
      slot.value = Value::Text(reinterpret_cast<const char*>(item.data.data()), item.data.size());
    } else {
      slot.value = Decode(item);
    }
  } else {
    slot.value = Value();
    slot.state = State::kMissing;
  }
}

Value* Machine::SearchAssigned(std::string_view name) {
  Charge(assigned_.size());
  const auto found = std::ranges::find_if(assigned_, [name](const Assigned& a) { return SameName(a.name, name); });
  return found != assigned_.end() ? &found->value : nullptr;
}

Value Machine::ReadItem(std::string_view name) {
  Charge(kStepsOfItem);
  const Value* const assigned = FindAssigned(name);
  if (assigned) return assigned->type == Type::kRemoval ? Value() : *assigned;
  ItemValue item;
  if (!source_->FindItem(Source::kNoIndex, name, &item)) return {};
  ChargeText(item.data.size());
  return Decode(item);
}

bool Machine::HasItem(std::string_view name) {
  Charge(kStepsOfItem);
  const Value* const assigned = FindAssigned(name);
  if (assigned) return assigned->type != Type::kRemoval;
  ItemValue item;
  return source_->FindItem(Source::kNoIndex, name, &item);
}

Value Machine::DecodeCopy(Bytes value) {
  if (value.size() < 2) return Value::Error(ENG_ERR_ITEM_DAMAGED);
  const char* const copy = arena_.Copy({reinterpret_cast<const char*>(value.data()), value.size()});
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(copy);
  return Decode({WordAt(bytes), 0, {bytes + 2, value.size() - 2}});
}

void Machine::SetTemp(std::string_view name, const Value& value) {
  const std::uint32_t slot = program_.FindSlot(name);
  if (slot != Source::kNoIndex) slots_[slot] = {State::kTemp, value};
}

Value Machine::SetItem(std::string_view name, const Value& value) {
  Charge(kStepsOfItem);
  return Assign(program_.FindSlot(name), name, value);
}

Value Machine::Assign(std::uint32_t slot, std::string_view name, const Value& value) {
  if (value.is_error()) return value;
  std::vector<std::uint8_t> bytes;
  if (value.type != Type::kRemoval) {
    const ENGSTATUS status = Encode(value, &bytes);
    if (status != ENG_OK) return Value::Error(status);
  }
  ChargeText(bytes.size());
  ItemValue present;
  const bool found = source_->FindItem(Source::kNoIndex, name, &present);
  const bool same = bytes.empty() ? !found
                                  : found && present.type == WordAt(bytes.data()) &&
                                        std::ranges::equal(present.data, std::span(bytes).subspan(2));
  if (!same) {
    modified_ = true;
    arena_.Spend(bytes.size());  // the source may keep it
    const ENGSTATUS status = source_->Assign(name, bytes);
    if (status != ENG_OK) return Value::Error(status);
  }
  const bool gone = value.type == Type::kRemoval;
  const Value kept = gone ? Value() : value;
  Value* const before = FindAssigned(name);
  if (before) {
    *before = value;
  } else {
    assigned_.push_back({{arena_.Copy(name), name.size()}, value});
  }
  if (slot != Source::kNoIndex) slots_[slot] = {gone ? State::kMissing : State::kTemp, kept};
  return kept;
}

const TIMEDATE& Machine::Now() {
  if (!now_) now_ = source_->Now().value_or(time::Now());
  return *now_;
}

const INTLFORMAT& Machine::settings() {
  if (!settings_) settings_ = time::OwnSettings();
  return *settings_;
}

Value Machine::Join(const Value& left, const Value& right) {
  if (left.is_error()) return left;
  if (right.is_error()) return right;
  if (left.type != right.type || left.type == Type::kRemoval) return Value::Error(ENG_ERR_FORMULA_TYPE);
  const auto join = [&]<typename T>(const T* first, const T* second) -> T* {
    const std::uint32_t count = left.count + right.count;
    T* list = const_cast<T*>(first);
    if (left.count == 1 || open_list_ != first || open_count_ != left.count || open_room_ < count) {
      Charge(left.count);
      open_room_ = left.count == 1 ? count : count * 2;
      list = arena_.Array<T>(open_room_);
      std::copy_n(first, left.count, list);
    }
    Charge(right.count);
    std::copy_n(second, right.count, list + left.count);
    open_list_ = list;
    open_count_ = count;
    return list;
  };
  const std::uint32_t count = left.count + right.count;
  if (left.is_text()) return Value::Texts(join(left.texts(), right.texts()), count);
  if (left.is_number()) return Value::Numbers(join(left.numbers(), right.numbers()), count);
  return Value::Moments(join(left.moments(), right.moments()), count);
}

Value Machine::BinaryValues(Op op, const Value& left, const Value& right) {
  if (op == Op::kList) return Join(left, right);
  if (left.is_error()) return left;
  if (right.is_error()) return right;
  if (op >= Op::kEachEqual || (op >= Op::kEqual && op <= Op::kGreaterEqual)) {
    return Compare(*this, op, left, right);
  }
  return Calculate(*this, op, left, right);
}

[[gnu::always_inline]] inline bool Machine::CompareQuickly(Op op, const Value& left, const Value& right, bool* truth) {
  if (left.type != right.type || left.count != 1) return false;
  if (left.is_number() && right.count == 1) {
    *truth = HoldsFor(op, left.number, right.number);
    return true;
  }
  if (!left.is_text() || left.text.size >= 64) return false;
  if (right.count == 1 && (op == Op::kEqual || op == Op::kNotEqual)) {
    *truth = SameText(left.text, right.text) == (op == Op::kEqual);
    return true;
  }
  if (right.count == 1 || op != Op::kEqual) return false;
  Charge(right.count);
  const TextRef* at = right.text_list;
  const TextRef* const end = at + right.count;
  while (at != end && !SameText(left.text, *at)) ++at;
  *truth = at != end;
  return true;
}

inline Machine::Delivered Machine::Deliver(const Instruction* code, const Instruction* at, bool truth, Value* top) {
  for (;;) {
    const Instruction& next = at[1];
    switch (next.run) {
      case Run::kAnd:
      case Run::kOr:
        if (truth == (next.run == Run::kAnd)) return {at + 1, 0};
        at = code + next.b - 1;
        break;
      case Run::kCondition:
        return {truth ? at + 1 : code + next.b - 1, 0};
      case Run::kNot:
        truth = !truth;
        ++at;
        break;
      case Run::kSelect:
        selected_ = truth;
        ++at;
        break;
      case Run::kTruth:
        ++at;
        break;
      default:
        *top = Value::Truth(truth);
        return {at, 1};
    }
  }
}

// Two numbers need no detour: the left one becomes the result.
[[gnu::always_inline]] inline void Machine::Binary(Op op, Value* left, const Value& right) {
  if (left->is_number() && right.is_number() && left->count == 1 && right.count == 1) [[likely]] {
    double result = 0;
    switch (op) {
      case Op::kAdd:
        result = left->number + right.number;
        break;
      case Op::kSubtract:
        result = left->number - right.number;
        break;
      case Op::kMultiply:
        result = left->number * right.number;
        break;
      default:
        *left = BinaryValues(op, *left, right);
        return;
    }
    if (std::isfinite(result)) [[likely]] {
      left->number = result;
      return;
    }
  }
  *left = BinaryValues(op, *left, right);
}

Value Machine::AddMany(std::span<const Value> values) {
  std::size_t size = 0;
  const bool texts = std::ranges::all_of(values, [&size](const Value& value) {
    if (!value.is_text() || value.count != 1) return false;
    size += value.text.size;
    return true;
  });
  if (texts) {
    char* const joined = arena_.Array<char>(size);
    char* at = joined;
    for (const Value& value : values) at = PutBytes(at, value.text.data, value.text.size);
    return Value::Text(joined, size);
  }
  Value sum = values[0];
  for (const Value& value : values.subspan(1)) Binary(Op::kAdd, &sum, value);
  return sum;
}

Value Machine::Call(const Function& function, std::span<const Value> arguments) {
  if (function.form != Form::kEagerErrors) {
    for (const Value& argument : arguments) {
      if (argument.is_error()) return argument;
      if (argument.type == Type::kRemoval && function.form != Form::kEagerRemoval) {
        return Value::Error(ENG_ERR_FORMULA_TYPE);
      }
    }
  }
  Charge(1);
  return function.body(*this, arguments);
}

bool Machine::Iterate(std::uint32_t slot, const Value& list) {
  if (list.type == Type::kRemoval) return false;
  iterations_.push_back({slot, slots_[slot], list, 0, std::nullopt});
  return true;
}

bool Machine::Next() {
  Iteration& iteration = iterations_.back();
  if (iteration.next == iteration.list.count) return false;
  const std::uint32_t i = iteration.next++;
  const Value& list = iteration.list;
  const Value entry = list.is_text()     ? Value::Texts(list.texts() + i, 1)
                      : list.is_number() ? Value::Numbers(list.numbers() + i, 1)
                                         : Value::Moments(list.moments() + i, 1);
  slots_[iteration.slot] = {State::kTemp, entry};
  return true;
}

Value Machine::EndIteration() {
  const Value result = iterations_.back().result.value_or(Value());
  slots_[iterations_.back().slot] = iterations_.back().outer;
  iterations_.pop_back();
  return result;
}

Value Machine::RunSection(Source& source, std::size_t section_index) {
  Start(source);
  const auto& section = program_.section(section_index);
  const Instruction* const code = section.instructions.data();
  const Value* const constants = program_.constants().data();
  Value* top = stack_.data();  // the first free place
  const Instruction* at = code;
  // Inlined, so that the places stay in registers.
  const auto deliver = [&](bool truth) __attribute__((always_inline)) {
    const Delivered delivered = Deliver(code, at, truth, top);
    at = delivered.at;
    top += delivered.values;
  };
  const auto compare = [&](const Value& left, const Value& right) __attribute__((always_inline)) {
    bool truth = false;
    if (CompareQuickly(static_cast<Op>(at->a), left, right, &truth)) [[likely]] {
      deliver(truth);
    } else {
      *top++ = BinaryValues(static_cast<Op>(at->a), left, right);
    }
  };
  for (;; ++at) {
    switch (at->run) {
      case Run::kConstant:
        *top++ = constants[at->b];
        break;
      case Run::kName:
        *top++ = Read(at->b);
        break;
      case Run::kTemp:
        *top++ = slots_[at->b].value;
        break;
      case Run::kNegate:
        top[-1] = Negate(*this, top[-1]);
        break;
      case Run::kNot: {
        const TruthValue truth = TruthOf(top[-1]);
        top[-1] = truth.error ? Value::Error(truth.error) : Value::Truth(!truth.truth);
        break;
      }
      case Run::kBinary:
        --top;
        top[-1] = BinaryValues(static_cast<Op>(at->a), top[-1], top[0]);
        break;
      case Run::kArithmetic:
        --top;
        Binary(static_cast<Op>(at->a), &top[-1], top[0]);
        break;
      case Run::kArithmeticConstant:
        Binary(static_cast<Op>(at->a), &top[-1], constants[at->b]);
        break;
      case Run::kCompare:
        top -= 2;
        compare(*top, top[1]);
        break;
      case Run::kCompareConstant:
        --top;
        compare(*top, constants[at->b]);
        break;
      case Run::kNameCompare:
        compare(Read(at->b), constants[at->c]);
        break;
      case Run::kNameCompareNumber: {
        const Value& left = Read(at->b);
        const Value& right = constants[at->c];
        if (left.is_number() && left.count == 1) [[likely]] {
          deliver(HoldsFor(static_cast<Op>(at->a), left.number, right.number));
        } else {
          *top++ = BinaryValues(static_cast<Op>(at->a), left, right);
        }
        break;
      }
      case Run::kAddMany:
        top -= at->a;
        *top = AddMany({top, at->a});
        ++top;
        break;
      case Run::kAnd:
      case Run::kOr: {
        const TruthValue truth = TruthOf(top[-1]);
        if (truth.error == ENG_OK && truth.truth == (at->run == Run::kAnd)) {
          --top;
          break;
        }
        top[-1] = truth.error ? Value::Error(truth.error) : Value::Truth(truth.truth);
        at = code + at->b - 1;
        break;
      }
      case Run::kTruth: {
        const TruthValue truth = TruthOf(top[-1]);
        top[-1] = truth.error ? Value::Error(truth.error) : Value::Truth(truth.truth);
        break;
      }
      case Run::kCondition: {
        const TruthValue truth = TruthOf(top[-1]);
        if (truth.error) {
          top[-1] = Value::Error(truth.error);
          at = code + at->c - 1;
          break;
        }
        --top;
        if (!truth.truth) at = code + at->b - 1;
        break;
      }
      case Run::kLoop:
        Charge(static_cast<std::uint64_t>(at - code) + 1 - at->b);
        [[fallthrough]];
      case Run::kJump:
        at = code + at->b - 1;
        break;
      case Run::kPop:
        --top;
        break;
      case Run::kIfError:
        if (top[-1].is_error()) {
          --top;
        } else {
          at = code + at->b - 1;
        }
        break;
      case Run::kCall: {
        Value* const arguments = top - at->a;
        const Value value = Call(*at->function, {arguments, at->a});
        top = arguments;
        *top++ = value;
        break;
      }
      case Run::kReturn:
        return top[-1];
      case Run::kSetTemp:
        slots_[at->b] = {State::kTemp, top[-1]};
        break;
      case Run::kSetItem:
        top[-1] = Assign(at->b, program_.slots()[at->b].name, top[-1]);
        break;
      case Run::kSetDefault:
        Read(at->b);
        if (slots_[at->b].state == State::kMissing) slots_[at->b] = {State::kTemp, top[-1]};
        break;
      case Run::kSelect: {
        const TruthValue truth = TruthOf(top[-1]);
        selected_ = truth.truth;
        top[-1] = truth.error ? Value::Error(truth.error) : Value::Truth(truth.truth);
        break;
      }
      case Run::kIsAvailable: {
        Read(at->b);
        const bool available = slots_[at->b].state != State::kMissing;
        *top++ = Value::Truth(available != (at->a != 0));
        break;
      }
      case Run::kIterate:
        if (top[-1].is_error() || !Iterate(at->b, top[-1])) {
          if (!top[-1].is_error()) top[-1] = Value::Error(ENG_ERR_FORMULA_TYPE);
          at = code + at->c - 1;
        } else {
          --top;
        }
        break;
      case Run::kNext:
        if (!Next()) {
          *top++ = EndIteration();
          at = code + at->b - 1;
        }
        break;
      case Run::kCollect: {
        std::optional<Value>& collected = iterations_.back().result;
        collected = collected ? Join(*collected, top[-1]) : top[-1];
        if (collected->is_error()) {
          top[-1] = EndIteration();
          at = code + at->b - 1;
        } else {
          --top;
        }
        break;
      }
    }
  }
}

// What an evaluator keeps between documents.
class Evaluator::State {
 public:
  State(const LoadedProgram& program, const Limits& limits) : machine(program, limits) {}

  Machine machine;
  std::vector<std::uint8_t> bytes;
};

Evaluator::Evaluator(std::shared_ptr<const Program> program, const Limits& limits) : program_(std::move(program)) {
  state_ = std::make_unique<State>(static_cast<const LoadedProgram&>(*program_), limits);
}
Evaluator::~Evaluator() = default;
Evaluator::Evaluator(Evaluator&&) noexcept = default;

ENGSTATUS Evaluator::Evaluate(Source& source, std::size_t section, Result* result) {
  *result = {};
  if (section >= program_->section_count()) return ENG_ERR_ARGUMENT;
  Machine& machine = state_->machine;
  ENGSTATUS status = ENG_OK;
  try {
    const Value value = machine.RunSection(source, section);
    status = Encode(value, &state_->bytes);
  } catch (const LimitReached& reached) {
    status = reached.status;
  }
  result->selected = status == ENG_OK && machine.selected();
  result->modified = machine.modified();
  result->deleted = machine.deleted();
  if (status != ENG_OK) return status;
  result->value = state_->bytes;
  result->type = WordAt(state_->bytes.data());
  return ENG_OK;
}

ENGSTATUS Evaluator::Selects(Source& source, bool* selected) {
  *selected = false;
  Machine& machine = state_->machine;
  try {
    const Value value = machine.RunSection(source, 0);
    if (value.is_error()) return value.error;
    *selected = machine.selected();
    return ENG_OK;
  } catch (const LimitReached& reached) {
    return reached.status;
  }
}

}  // namespace qcore::formula
