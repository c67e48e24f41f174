// Operators over lists: pairwise with the last entry of the shorter list repeated, or each entry with each.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "qcore/formula/machine.h"
#include "qcore/store/wire.h"
#include "qcore/time/moment.h"

namespace qcore::formula {

namespace {

// Which operator, and whether it takes each entry with each.
struct Plan {
  Op op;
  bool each;
};

Plan PlanOf(Op op) {
  if (op < Op::kEachMultiply) return {op, false};
  const int distance = static_cast<int>(Op::kEachMultiply) - static_cast<int>(Op::kMultiply);
  return {static_cast<Op>(static_cast<int>(op) - distance), true};
}

// Runs `step` with the entries' places; it gives false to stop.
template <typename Step>
void ForPairs(Machine& machine, bool each, std::uint32_t left, std::uint32_t right, Step step) {
  if (each) {
    for (std::uint32_t i = 0; i < left; ++i) {
      machine.Charge(right);
      for (std::uint32_t j = 0; j < right; ++j) {
        if (!step(i, j)) return;
      }
    }
    return;
  }
  const std::uint32_t count = std::max(left, right);
  machine.Charge(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!step(std::min(i, left - 1), std::min(i, right - 1))) return;
  }
}

std::uint64_t PairCount(bool each, std::uint32_t left, std::uint32_t right) {
  return each ? std::uint64_t{left} * right : std::max(left, right);
}

template <typename T>
T* PairArray(Machine& machine, std::uint64_t count) {
  if (count > 0xFFFFFFFF) throw LimitReached{ENG_ERR_FORMULA_MEMORY};
  return machine.arena().Array<T>(count);
}

ENGSTATUS Apply(Op op, double left, double right, double* result) {
  switch (op) {
    case Op::kMultiply:
      *result = left * right;
      break;
    case Op::kDivide:
      if (right == 0) return ENG_ERR_FORMULA_DIVISION;
      *result = left / right;
      break;
    case Op::kAdd:
      *result = left + right;
      break;
    default:
      *result = left - right;
  }
  return std::isfinite(*result) ? ENG_OK : ENG_ERR_FORMULA_VALUE;
}

Value CalculateNumbers(Machine& machine, Plan plan, const Value& left, const Value& right) {
  ENGSTATUS status = ENG_OK;
  if (left.count == 1 && right.count == 1) {
    double result = 0;
    status = Apply(plan.op, left.number, right.number, &result);
    return status == ENG_OK ? Value::Number(result) : Value::Error(status);
  }
  const std::uint64_t count = PairCount(plan.each, left.count, right.count);
  double* results = PairArray<double>(machine, count);
  double* at = results;
  ForPairs(machine, plan.each, left.count, right.count, [&](std::uint32_t i, std::uint32_t j) {
    status = Apply(plan.op, left.numbers()[i], right.numbers()[j], at++);
    return status == ENG_OK;
  });
  return status == ENG_OK ? Value::Numbers(results, static_cast<std::uint32_t>(count)) : Value::Error(status);
}

TextRef Concatenate(Machine& machine, const TextRef& left, const TextRef& right) {
  char* joined = machine.arena().Array<char>(left.size + right.size);
  if (left.size > 0) std::memcpy(joined, left.data, left.size);
  if (right.size > 0) std::memcpy(joined + left.size, right.data, right.size);
  return {joined, left.size + right.size};
}

Value AddTexts(Machine& machine, Plan plan, const Value& left, const Value& right) {
  if (left.count == 1 && right.count == 1) {
    const TextRef joined = Concatenate(machine, left.text, right.text);
    return Value::Text(joined.data, joined.size);
  }
  const std::uint64_t count = PairCount(plan.each, left.count, right.count);
  TextRef* results = PairArray<TextRef>(machine, count);
  TextRef* at = results;
  ForPairs(machine, plan.each, left.count, right.count, [&](std::uint32_t i, std::uint32_t j) {
    *at++ = Concatenate(machine, left.texts()[i], right.texts()[j]);
    return true;
  });
  return Value::Texts(results, static_cast<std::uint32_t>(count));
}

ENGSTATUS Shift(const TIMEDATE& moment, double seconds, TIMEDATE* shifted) {
  const double ticks = std::round(seconds * static_cast<double>(time::kTicksPerSecond));
  constexpr double kMost = 1e15;
  if (!(std::abs(ticks) < kMost)) return ENG_ERR_FORMULA_VALUE;
  const auto whole = static_cast<std::int64_t>(ticks);
  const bool days = time::HasDate(moment) && !time::HasTime(moment) && whole % time::kTicksPerDay == 0;
  const auto result =
      days ? time::AddCalendar(moment, {whole / time::kTicksPerDay, 0, 0}) : time::AddTicks(moment, whole);
  if (!result) return ENG_ERR_FORMULA_VALUE;
  *shifted = *result;
  return ENG_OK;
}

ENGSTATUS ShiftMoment(const Moment& moment, double seconds, Moment* shifted) {
  *shifted = moment;
  const ENGSTATUS status = Shift(moment.lower, seconds, &shifted->lower);
  return status == ENG_OK && moment.is_range() ? Shift(moment.upper, seconds, &shifted->upper) : status;
}

// A time and seconds.
Value ShiftTimes(Machine& machine, Plan plan, const Value& times, const Value& seconds, double sign) {
  const std::uint64_t count = PairCount(plan.each, times.count, seconds.count);
  Moment* results = PairArray<Moment>(machine, count);
  Moment* at = results;
  ENGSTATUS status = ENG_OK;
  ForPairs(machine, plan.each, times.count, seconds.count, [&](std::uint32_t i, std::uint32_t j) {
    status = ShiftMoment(times.moments()[i], sign * seconds.numbers()[j], at++);
    return status == ENG_OK;
  });
  return status == ENG_OK ? Value::Moments(results, static_cast<std::uint32_t>(count)) : Value::Error(status);
}

// Seconds between two times; whole days where one has no time of day.
double Distance(const TIMEDATE& left, const TIMEDATE& right) {
  const auto from = time::TicksOf(left);
  const auto to = time::TicksOf(right);
  if (from && to) return static_cast<double>(*from - *to) / static_cast<double>(time::kTicksPerSecond);
  if (!time::HasDate(left) || !time::HasDate(right)) return time::DifferenceInSeconds(left, right);
  const auto day = [](const TIMEDATE& moment) { return static_cast<double>(moment.DateWord & time::kDayMask); };
  constexpr double kSecondsPerDay = 86400;
  return (day(left) - day(right)) * kSecondsPerDay;
}

Value SubtractTimes(Machine& machine, Plan plan, const Value& left, const Value& right) {
  const std::uint64_t count = PairCount(plan.each, left.count, right.count);
  double* results = PairArray<double>(machine, count);
  double* at = results;
  ForPairs(machine, plan.each, left.count, right.count, [&](std::uint32_t i, std::uint32_t j) {
    *at++ = Distance(left.moments()[i].lower, right.moments()[j].lower);
    return true;
  });
  return Value::Numbers(results, static_cast<std::uint32_t>(count));
}

bool Holds(Op op, int order) {
  switch (op) {
    case Op::kEqual:
      return order == 0;
    case Op::kNotEqual:
      return order != 0;
    case Op::kLess:
      return order < 0;
    case Op::kGreater:
      return order > 0;
    case Op::kLessEqual:
      return order <= 0;
    default:
      return order >= 0;
  }
}

// Whether any pair is as the operator says.
template <typename Test>
Value AnyPair(Machine& machine, Plan plan, const Value& left, const Value& right, Test test) {
  bool found = false;
  ForPairs(machine, plan.each, left.count, right.count, [&](std::uint32_t i, std::uint32_t j) {
    found = test(i, j);
    return !found;
  });
  return Value::Truth(found);
}

bool EqualPair(const TextRef& left, const TextRef& right) {
  return left.size == right.size && (left.size == 0 || std::memcmp(left.data, right.data, left.size) == 0);
}

Value CompareTextLists(Machine& machine, Plan plan, const Value& left, const Value& right) {
  if (plan.op == Op::kEqual) {
    return AnyPair(machine, plan, left, right, [&](std::uint32_t i, std::uint32_t j) {
      machine.ChargeText(left.texts()[i].size);
      return EqualPair(left.texts()[i], right.texts()[j]);
    });
  }
  return AnyPair(machine, plan, left, right, [&](std::uint32_t i, std::uint32_t j) {
    machine.ChargeText(left.texts()[i].size);
    return Holds(plan.op, CompareTexts(left.texts()[i], right.texts()[j]));
  });
}

// Writes into room that was made before.
class ValueWriter {
 public:
  ValueWriter(std::vector<std::uint8_t>* bytes, std::size_t size) {
    bytes->resize(size);
    at_ = bytes->data();
  }
  void Word(std::uint32_t word) { Put(word, 2); }
  void Wide(std::uint32_t word) { Put(word, 4); }
  void Number(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    Put(bits, 8);
  }
  void Moment(const TIMEDATE& moment) { Put(moment.TimeWord | std::uint64_t{moment.DateWord} << 32, 8); }
  void Text(const TextRef& text) {
    if (text.size != 0) std::memcpy(at_, text.data, text.size);
    at_ += text.size;
  }

 private:
  void Put(std::uint64_t word, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) *at_++ = static_cast<std::uint8_t>(word >> (8 * i));
  }

  std::uint8_t* at_;
};

constexpr std::size_t kMostResult = 65535;

ENGSTATUS EncodeTexts(const Value& value, std::vector<std::uint8_t>* bytes) {
  std::size_t size = value.count == 1 ? 2 : 4 + std::size_t{2} * value.count;
  for (std::uint32_t i = 0; i < value.count && size <= kMostResult; ++i) size += value.texts()[i].size;
  if (size > kMostResult) return ENG_ERR_FORMULA_RESULT;
  ValueWriter writer(bytes, size);
  writer.Word(value.count == 1 ? 0x0500 : 0x0501);
  if (value.count > 1) {
    writer.Word(value.count);
    for (std::uint32_t i = 0; i < value.count; ++i) writer.Word(static_cast<std::uint32_t>(value.texts()[i].size));
  }
  for (std::uint32_t i = 0; i < value.count; ++i) writer.Text(value.texts()[i]);
  return ENG_OK;
}

// As most columns are.
ENGSTATUS EncodeNumber(double number, std::vector<std::uint8_t>* bytes) {
  bytes->resize(2 + sizeof number);
  StoreLittle(bytes->data(), std::uint16_t{0x0300});
  StoreLittle(bytes->data() + 2, std::bit_cast<std::uint64_t>(number));
  return ENG_OK;
}

ENGSTATUS EncodeNumbers(const Value& value, std::vector<std::uint8_t>* bytes) {
  const std::uint64_t size = (value.count == 1 ? 2 : 6) + std::uint64_t{8} * value.count;
  if (size > kMostResult) return ENG_ERR_FORMULA_RESULT;
  ValueWriter writer(bytes, size);
  writer.Word(value.count == 1 ? 0x0300 : 0x0301);
  if (value.count > 1) writer.Wide(value.count);
  for (std::uint32_t i = 0; i < value.count; ++i) writer.Number(value.numbers()[i]);
  return ENG_OK;
}

// Single times stand in front of ranges.
ENGSTATUS EncodeTimes(const Value& value, std::vector<std::uint8_t>* bytes) {
  const Moment* const begin = value.moments();
  const Moment* const end = begin + value.count;
  const auto ranges =
      static_cast<std::uint32_t>(std::count_if(begin, end, [](const Moment& moment) { return moment.is_range(); }));
  const std::uint32_t singles = value.count - ranges;
  const bool single = value.count == 1 && ranges == 0;
  const std::uint64_t size = (single ? 2 : 6) + std::uint64_t{8} * singles + std::uint64_t{16} * ranges;
  if (size > kMostResult) return ENG_ERR_FORMULA_RESULT;
  ValueWriter writer(bytes, size);
  writer.Word(single ? 0x0400 : 0x0401);
  if (!single) writer.Wide(singles | ranges << 16);
  for (const Moment* moment = begin; moment != end; ++moment) {
    if (!moment->is_range()) writer.Moment(moment->lower);
  }
  for (const Moment* moment = begin; ranges > 0 && moment != end; ++moment) {
    if (!moment->is_range()) continue;
    writer.Moment(moment->lower);
    writer.Moment(moment->upper);
  }
  return ENG_OK;
}

}  // namespace

int CompareTexts(const TextRef& left, const TextRef& right) {
  const std::size_t common = std::min(left.size, right.size);
  const int order = common == 0 ? 0 : std::memcmp(left.data, right.data, common);
  if (order != 0) return order;
  return left.size < right.size ? -1 : left.size > right.size ? 1 : 0;
}

int CompareMoments(const Moment& left, const Moment& right) {
  const int order = time::Compare(left.lower, right.lower);
  if (order != 0 || !left.is_range() || !right.is_range()) return order;
  return time::Compare(left.upper, right.upper);
}

Value Negate(Machine& machine, const Value& value) {
  if (value.is_error()) return value;
  if (!value.is_number()) return Value::Error(ENG_ERR_FORMULA_TYPE);
  if (value.count == 1) return Value::Number(-value.number);
  machine.Charge(value.count);
  double* numbers = machine.arena().Array<double>(value.count);
  std::transform(value.numbers(), value.numbers() + value.count, numbers, [](double number) { return -number; });
  return Value::Numbers(numbers, value.count);
}

Value Calculate(Machine& machine, Op op, const Value& left, const Value& right) {
  const Plan plan = PlanOf(op);
  if (left.is_number() && right.is_number()) return CalculateNumbers(machine, plan, left, right);
  if (plan.op == Op::kAdd) {
    if (left.is_text() && right.is_text()) return AddTexts(machine, plan, left, right);
    if (left.is_time() && right.is_number()) return ShiftTimes(machine, plan, left, right, 1);
    if (left.is_number() && right.is_time()) return ShiftTimes(machine, plan, right, left, 1);
  }
  if (plan.op == Op::kSubtract && left.is_time()) {
    if (right.is_number()) return ShiftTimes(machine, plan, left, right, -1);
    if (right.is_time()) return SubtractTimes(machine, plan, left, right);
  }
  return Value::Error(ENG_ERR_FORMULA_TYPE);
}

Value Compare(Machine& machine, Op op, const Value& left, const Value& right) {
  const Plan plan = PlanOf(op);
  if (left.type == Type::kRemoval || right.type == Type::kRemoval) return Value::Error(ENG_ERR_FORMULA_TYPE);
  if (left.type != right.type) {
    if (plan.op == Op::kEqual) return Value::Truth(false);
    return plan.op == Op::kNotEqual ? Value::Truth(true) : Value::Error(ENG_ERR_FORMULA_TYPE);
  }
  if (left.is_text()) return CompareTextLists(machine, plan, left, right);
  if (left.is_number()) {
    return AnyPair(machine, plan, left, right, [&](std::uint32_t i, std::uint32_t j) {
      return HoldsFor(plan.op, left.numbers()[i], right.numbers()[j]);
    });
  }
  return AnyPair(machine, plan, left, right, [&](std::uint32_t i, std::uint32_t j) {
    return Holds(plan.op, CompareMoments(left.moments()[i], right.moments()[j]));
  });
}

ENGSTATUS Encode(const Value& value, std::vector<std::uint8_t>* bytes) {
  switch (value.type) {
    case Type::kText:
      return EncodeTexts(value, bytes);
    case Type::kNumber:
      return value.count == 1 ? EncodeNumber(value.number, bytes) : EncodeNumbers(value, bytes);
    case Type::kTime:
      return EncodeTimes(value, bytes);
    case Type::kError:
      return value.error;
    default:
      return ENG_ERR_FORMULA_TYPE;
  }
}

}  // namespace qcore::formula
