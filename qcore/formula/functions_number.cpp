// Numbers.
#include <limits>
#include <numbers>

#include "qcore/formula/functions_support.h"
#include "qcore/settings/platform.h"

namespace qcore::formula {

namespace {

template <double (*kOf)(double)>
Value Mapped(Machine& machine, Arguments arguments) {
  return MapNumbers(machine, arguments[0], [](double number) { return kOf(number); });
}

double SignOf(double number) { return number > 0 ? 1 : number < 0 ? -1 : 0; }
double Truncated(double number) { return std::trunc(number); }
double Absolute(double number) { return std::abs(number); }
double SquareRoot(double number) { return std::sqrt(number); }
double Exponential(double number) { return std::exp(number); }
double NaturalLog(double number) { return std::log(number); }
double DecimalLog(double number) { return std::log10(number); }
double Sine(double number) { return std::sin(number); }
double Cosine(double number) { return std::cos(number); }
double Tangent(double number) { return std::tan(number); }
double ArcSine(double number) { return std::asin(number); }
double ArcCosine(double number) { return std::acos(number); }
double ArcTangent(double number) { return std::atan(number); }
double Above(double number) { return std::ceil(number); }
double Below(double number) { return std::floor(number); }

// Two lists pairwise, the last entry repeated.
template <typename Map>
Value MapPairs(Machine& machine, const Value& left, const Value& right, Map map) {
  if (!left.is_number() || !right.is_number()) return TypeError();
  bool finite = true;
  const Value mapped = MakeNumbers(machine, std::max(left.count, right.count), [&](std::uint32_t i) {
    const double number =
        map(left.numbers()[std::min(i, left.count - 1)], right.numbers()[std::min(i, right.count - 1)]);
    finite &= std::isfinite(number);
    return number;
  });
  return finite ? mapped : RangeError();
}

Value Modulo(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_number() || !arguments[1].is_number()) return TypeError();
  if (std::any_of(arguments[1].numbers(), arguments[1].numbers() + arguments[1].count,
                  [](double number) { return number == 0; })) {
    return Value::Error(ENG_ERR_FORMULA_DIVISION);
  }
  return MapPairs(machine, arguments[0], arguments[1], [](double a, double b) { return std::fmod(a, b); });
}

Value Power(Machine& machine, Arguments arguments) {
  return MapPairs(machine, arguments[0], arguments[1], [](double a, double b) { return std::pow(a, b); });
}

Value ArcTangent2(Machine& machine, Arguments arguments) {
  return MapPairs(machine, arguments[0], arguments[1], [](double x, double y) { return std::atan2(y, x); });
}

// To the nearest multiple of the second number, halves away from 0.
Value Round(Machine& machine, Arguments arguments) {
  const Value unit = arguments.size() > 1 ? arguments[1] : Value::Number(1);
  return MapPairs(machine, arguments[0], unit, [](double number, double factor) {
    return factor == 0 ? number : std::round(number / factor) * factor;
  });
}

Value FloatEqual(Machine& machine, Arguments arguments) {
  const double tolerance =
      arguments.size() > 2 && arguments[2].is_number() ? std::abs(*arguments[2].numbers()) : 0.0001;
  if (arguments.size() > 2 && !arguments[2].is_number()) return TypeError();
  const Value near = MapPairs(machine, arguments[0], arguments[1],
                              [&](double a, double b) { return std::abs(a - b) <= tolerance ? 1.0 : 0.0; });
  if (near.is_error()) return near;
  return Value::Truth(std::all_of(near.numbers(), near.numbers() + near.count, [](double yes) { return yes != 0; }));
}

// One list: its extreme. Two: the extremes of the pairs.
template <bool kGreatest>
Value Extreme(Machine& machine, Arguments arguments) {
  const auto better = [](double a, double b) { return (kGreatest ? a > b : a < b) ? a : b; };
  if (arguments.size() == 2) return MapPairs(machine, arguments[0], arguments[1], better);
  const Value& list = arguments[0];
  if (!list.is_number()) return TypeError();
  machine.Charge(list.count);
  double best = list.numbers()[0];
  for (std::uint32_t i = 1; i < list.count; ++i) best = better(list.numbers()[i], best);
  return Value::Number(best);
}

struct Total {
  double sum = 0;
  double count = 0;
  bool numbers = true;
};

Total TotalOf(Machine& machine, Arguments arguments) {
  Total total;
  for (const Value& list : arguments) {
    total.numbers &= list.is_number();
    if (!total.numbers) return total;
    machine.Charge(list.count);
    for (std::uint32_t i = 0; i < list.count; ++i) total.sum += list.numbers()[i];
    total.count += list.count;
  }
  return total;
}

Value Sum(Machine& machine, Arguments arguments) {
  const Total total = TotalOf(machine, arguments);
  if (!total.numbers) return TypeError();
  return std::isfinite(total.sum) ? Value::Number(total.sum) : RangeError();
}

Value Average(Machine& machine, Arguments arguments) {
  const Total total = TotalOf(machine, arguments);
  if (!total.numbers) return TypeError();
  return std::isfinite(total.sum) ? Value::Number(total.sum / total.count) : RangeError();
}

Value Pi(Machine&, Arguments) { return Value::Number(std::numbers::pi); }

// At least 0 and below 1.
Value Random(Machine&, Arguments) {
  std::uint8_t bytes[8];
  CurrentPlatform().Random(bytes);
  std::uint64_t bits = 0;
  for (const std::uint8_t byte : bytes) bits = bits << 8 | byte;
  return Value::Number(static_cast<double>(bits >> 11) * 0x1p-53);
}

constexpr Function kFunctions[] = {
    {400, "Abs", 1, 1, Form::kEager, kNothing, Mapped<Absolute>, nullptr},
    {401, "Sign", 1, 1, Form::kEager, kNothing, Mapped<SignOf>, nullptr},
    {402, "Integer", 1, 1, Form::kEager, kNothing, Mapped<Truncated>, nullptr},
    {403, "Round", 1, 2, Form::kEager, kNothing, Round, nullptr},
    {404, "Modulo", 2, 2, Form::kEager, kNothing, Modulo, nullptr},
    {405, "Power", 2, 2, Form::kEager, kNothing, Power, nullptr},
    {406, "Sqrt", 1, 1, Form::kEager, kNothing, Mapped<SquareRoot>, nullptr},
    {407, "Exp", 1, 1, Form::kEager, kNothing, Mapped<Exponential>, nullptr},
    {408, "Ln", 1, 1, Form::kEager, kNothing, Mapped<NaturalLog>, nullptr},
    {409, "Log", 1, 1, Form::kEager, kNothing, Mapped<DecimalLog>, nullptr},
    {410, "Pi", 0, 0, Form::kEager, kNothing, Pi, nullptr},
    {411, "Sin", 1, 1, Form::kEager, kNothing, Mapped<Sine>, nullptr},
    {412, "Cos", 1, 1, Form::kEager, kNothing, Mapped<Cosine>, nullptr},
    {413, "Tan", 1, 1, Form::kEager, kNothing, Mapped<Tangent>, nullptr},
    {414, "ASin", 1, 1, Form::kEager, kNothing, Mapped<ArcSine>, nullptr},
    {415, "ACos", 1, 1, Form::kEager, kNothing, Mapped<ArcCosine>, nullptr},
    {416, "ATan", 1, 1, Form::kEager, kNothing, Mapped<ArcTangent>, nullptr},
    {417, "ATan2", 2, 2, Form::kEager, kNothing, ArcTangent2, nullptr},
    {418, "Random", 0, 0, Form::kEager, kOnTime, Random, nullptr},
    {419, "FloatEq", 2, 3, Form::kEager, kNothing, FloatEqual, nullptr},
    {420, "Max", 1, 2, Form::kEager, kNothing, Extreme<true>, nullptr},
    {421, "Min", 1, 2, Form::kEager, kNothing, Extreme<false>, nullptr},
    {422, "Sum", 1, kAnyNumber, Form::kEager, kNothing, Sum, nullptr},
    {423, "Average", 1, kAnyNumber, Form::kEager, kNothing, Average, nullptr},
    {424, "Ceiling", 1, 1, Form::kEager, kNothing, Mapped<Above>, nullptr},
    {425, "Floor", 1, 1, Form::kEager, kNothing, Mapped<Below>, nullptr},
};

}  // namespace

std::span<const Function> NumberFunctions() { return kFunctions; }

}  // namespace qcore::formula
