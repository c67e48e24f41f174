// Conditions, loops, errors, names that are computed.
#include "qcore/formula/functions_support.h"

namespace qcore::formula {

namespace {

Value True(Machine&, Arguments) { return Value::Truth(true); }
Value False(Machine&, Arguments) { return Value::Truth(false); }

// A text refuses by what it says; an empty one would accept, 0 does not.
Value Failure(Machine&, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  const std::string_view text = FirstText(arguments[0]);
  return text.empty() ? Value::Truth(false) : Value::Text(text.data(), text.size());
}

Value Error(Machine&, Arguments) { return Value::Error(ENG_ERR_FORMULA_FAILED); }

Value IsError(Machine&, Arguments arguments) { return Value::Truth(arguments[0].is_error()); }
Value IsText(Machine&, Arguments arguments) { return Value::Truth(arguments[0].is_text()); }
Value IsNumber(Machine&, Arguments arguments) { return Value::Truth(arguments[0].is_number()); }
Value IsTime(Machine&, Arguments arguments) { return Value::Truth(arguments[0].is_time()); }
Value IsNull(Machine&, Arguments arguments) { return Value::Truth(arguments[0].is_null()); }

// The value at the place; the last one for a place behind.
Value Select(Machine&, Arguments arguments) {
  const auto place = AsInteger(arguments[0]);
  if (!place) return arguments[0].is_error() ? arguments[0] : TypeError();
  if (*place < 1) return RangeError();
  return arguments[std::min<std::size_t>(static_cast<std::size_t>(*place), arguments.size() - 1)];
}

Value Set(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  machine.SetTemp(FirstText(arguments[0]), arguments[1]);
  return Value::Truth(true);
}

Value GetField(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  return machine.ReadItem(FirstText(arguments[0]));
}

Value SetField(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  if (FirstText(arguments[0]).empty()) return RangeError();
  return machine.SetItem(FirstText(arguments[0]), arguments[1]);
}

Value DeleteField(Machine&, Arguments) { return Value::Removal(); }

Value HasField(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  return Value::Truth(machine.HasItem(FirstText(arguments[0])));
}

Value And(Machine&, Arguments arguments) {
  for (const Value& argument : arguments) {
    const TruthValue truth = TruthOf(argument);
    if (truth.error) return Value::Error(truth.error);
    if (!truth.truth) return Value::Truth(false);
  }
  return Value::Truth(true);
}

Value Or(Machine&, Arguments arguments) {
  for (const Value& argument : arguments) {
    const TruthValue truth = TruthOf(argument);
    if (truth.error) return Value::Error(truth.error);
    if (truth.truth) return Value::Truth(true);
  }
  return Value::Truth(false);
}

Value ErrorNumber(Machine&, Arguments arguments) {
  return Value::Number(arguments[0].is_error() ? arguments[0].error : 0);
}

// Whether the text is a formula: "1", or the engine's number for what is wrong and where.
Value CheckFormulaSyntax(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  const std::string_view text = FirstText(arguments[0]);
  machine.Charge(text.size());
  Code code;
  Place place;
  const ENGSTATUS status = Compile(text, &code, &place);
  if (status == ENG_OK) return Value::Text("1");
  TextList list(machine);
  for (const std::uint32_t number : {std::uint32_t{status}, place.offset, place.length}) {
    list.Add(Kept(machine, std::to_string(number)));
  }
  return list.Finish();
}

constexpr Function kFunctions[] = {
    {1, "If", 3, kAnyNumber, Form::kIf, kNothing, nullptr, nullptr},
    {2, "Do", 1, kAnyNumber, Form::kDo, kNothing, nullptr, nullptr},
    {3, "For", 3, kAnyNumber, Form::kFor, kNothing, nullptr, nullptr},
    {4, "While", 1, kAnyNumber, Form::kWhile, kNothing, nullptr, nullptr},
    {5, "DoWhile", 1, kAnyNumber, Form::kDoWhile, kNothing, nullptr, nullptr},
    {6, "Return", 1, 1, Form::kReturn, kNothing, nullptr, nullptr},
    {7, "IfError", 2, 2, Form::kIfError, kNothing, nullptr, nullptr},
    {8, "Transform", 3, 3, Form::kTransform, kNothing, nullptr, nullptr},
    {9, "IsAvailable", 1, 1, Form::kIsAvailable, kNothing, nullptr, nullptr},
    {10, "IsUnavailable", 1, 1, Form::kIsUnavailable, kNothing, nullptr, nullptr},
    {11, "True", 0, 0, Form::kEager, kNothing, True, nullptr},
    {12, "False", 0, 0, Form::kEager, kNothing, False, nullptr},
    {13, "Yes", 0, 0, Form::kEager, kNothing, True, nullptr},
    {14, "No", 0, 0, Form::kEager, kNothing, False, nullptr},
    {15, "Success", 0, 0, Form::kEager, kNothing, True, nullptr},
    {16, "Error", 0, 0, Form::kEager, kNothing, Error, nullptr},
    {17, "IsError", 1, 1, Form::kEagerErrors, kNothing, IsError, nullptr},
    {18, "IsText", 1, 1, Form::kEager, kNothing, IsText, nullptr},
    {19, "IsNumber", 1, 1, Form::kEager, kNothing, IsNumber, nullptr},
    {20, "IsTime", 1, 1, Form::kEager, kNothing, IsTime, nullptr},
    {21, "IsNull", 1, 1, Form::kEager, kNothing, IsNull, nullptr},
    {22, "Select", 2, kAnyNumber, Form::kEagerErrors, kNothing, Select, nullptr},
    {23, "Set", 2, 2, Form::kEagerRemoval, kNothing, Set, nullptr},
    {24, "GetField", 1, 1, Form::kEager, kOnItems, GetField, nullptr},
    {25, "SetField", 2, 2, Form::kEagerRemoval, kOnItems, SetField, nullptr},
    {26, "DeleteField", 0, 0, Form::kEager, kNothing, DeleteField, nullptr},
    {27, "HasField", 1, 1, Form::kEager, kOnItems, HasField, nullptr},
    {28, "And", 1, kAnyNumber, Form::kEager, kNothing, And, nullptr},
    {29, "Or", 1, kAnyNumber, Form::kEager, kNothing, Or, nullptr},
    {30, "ErrorNumber", 1, 1, Form::kEagerErrors, kNothing, ErrorNumber, nullptr},
    {31, "CheckFormulaSyntax", 1, 1, Form::kEager, kNothing, CheckFormulaSyntax, nullptr},
    {32, "Failure", 1, 1, Form::kEager, kNothing, Failure, nullptr},
};

}  // namespace

std::span<const Function> LogicFunctions() { return kFunctions; }

}  // namespace qcore::formula
