#include "qcore/formula/functions.h"

#include <algorithm>
#include <array>
#include <vector>

#include "qcore/formula/functions_support.h"

namespace qcore::formula {

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool LessWithoutCase(std::string_view a, std::string_view b) {
  return std::ranges::lexicographical_compare(a, b, {}, Lower, Lower);
}

struct Index {
  std::vector<Function> functions;  // by number
  std::vector<const Function*> by_name;

  Index() {
    const std::array families = {LogicFunctions(), DocumentFunctions(), TextFunctions(), ConversionFunctions(),
                                 ListFunctions(),  NumberFunctions(),   TimeFunctions(), NameFunctions()};
    for (const auto& family : families) functions.insert(functions.end(), family.begin(), family.end());
    std::ranges::sort(functions, {}, &Function::number);
    for (const Function& function : functions) by_name.push_back(&function);
    std::ranges::sort(by_name, LessWithoutCase, &Function::name);
  }
};

const Index& TheIndex() {
  static const Index index;
  return index;
}

}  // namespace

const Function* FindFunction(std::string_view name) {
  const auto& by_name = TheIndex().by_name;
  const auto found = std::ranges::lower_bound(by_name, name, LessWithoutCase, &Function::name);
  return found != by_name.end() && !LessWithoutCase(name, (*found)->name) ? *found : nullptr;
}

const Function* FindFunction(std::uint16_t number) {
  const auto& functions = TheIndex().functions;
  const auto found = std::ranges::lower_bound(functions, number, {}, &Function::number);
  return found != functions.end() && found->number == number ? &*found : nullptr;
}

bool TakesArguments(const Function& function, std::uint32_t count) {
  if (count < function.least || count > function.most) return false;
  return function.form != Form::kIf || count % 2 == 1;
}

bool KnowsKeyword(const Function& function, std::string_view keyword) {
  if (!function.keywords) return false;
  std::string_view rest = function.keywords;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    if (rest.substr(0, end) == keyword) return true;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

std::span<const Function> AllFunctions() { return TheIndex().functions; }

}  // namespace qcore::formula
