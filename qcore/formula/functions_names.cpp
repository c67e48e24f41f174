// The user and names of people.
#include "engine/text.h"
#include "qcore/formula/functions_support.h"
#include "qcore/formula/personname.h"
#include "qcore/settings/settings.h"
#include "qcore/text/translate.h"

namespace qcore::formula {

namespace {

// The settings are asked, and the groups may be many.
constexpr std::uint64_t kStepsOfUser = 100;

std::string CurrentUser(Machine& machine) {
  machine.Charge(kStepsOfUser);
  const auto names = machine.source().UserNames();
  if (!names.empty()) return names.front();
  const std::string platform = settings::UserName();
  return text::Translate(ENG_TRANSLATE_PLATFORM_TO_STORE, text::AsText(platform), UINT16_MAX);
}

Value UserName(Machine& machine, Arguments) { return machine.Text(CurrentUser(machine)); }

bool IsRole(std::string_view name) { return name.starts_with('[') && name.ends_with(']'); }

// The user and the groups, or the roles.
Value NamesOf(Machine& machine, bool roles) {
  TextList list(machine);
  machine.Charge(kStepsOfUser);
  const auto names = machine.source().UserNames();
  if (names.empty() && !roles) return machine.Text(CurrentUser(machine));
  for (const std::string& name : names) {
    if (!roles || IsRole(name)) list.Add(Kept(machine, name));
  }
  return list.Finish();
}
Value UserNamesList(Machine& machine, Arguments) { return NamesOf(machine, false); }
Value UserRoles(Machine& machine, Arguments) { return NamesOf(machine, true); }

Value Name(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_text()) return TypeError();
  const bool known = AreKeywords(arguments.first(1), {"CN", "O", "OU1", "OU2", "OU3", "OU4", "C", "ABBREVIATE",
                                                      "CANONICALIZE", "HIERARCHYONLY", "TOKEYWORD"});
  if (!known || HasLongText(arguments[1])) return RangeError();
  const std::string_view keyword = FirstText(arguments[0]);
  return MapTexts(machine, arguments[1], [&](std::string_view name) {
    machine.Charge(name.size());
    return Kept(machine, NameAs(name, keyword));
  });
}

constexpr Function kFunctions[] = {
    {600, "UserName", 0, 0, Form::kEager, kOnUser, UserName, nullptr},
    {601, "UserNamesList", 0, 0, Form::kEager, kOnUser, UserNamesList, nullptr},
    {602, "UserRoles", 0, 0, Form::kEager, kOnUser, UserRoles, nullptr},
    {603, "Name", 2, 2, Form::kEager, kNothing, Name,
     "CN O OU1 OU2 OU3 OU4 C ABBREVIATE CANONICALIZE HIERARCHYONLY TOKEYWORD"},
};

}  // namespace

std::span<const Function> NameFunctions() { return kFunctions; }

}  // namespace qcore::formula
