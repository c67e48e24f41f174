// The evaluator from inside, with the document's values at hand, beside Lua with the same values in local variables.
#include <benchmark/benchmark.h>

#include <cstring>
#include <lua.hpp>
#include <map>

#include "bench/formula_texts.h"
#include "bench/support.h"
#include "qcore/formula/formula.h"

namespace {

namespace formula = qcore::formula;

// Values in an array, by the places that a program asks for.
class Hand final : public formula::Source {
 public:
  explicit Hand(const formula::Program& program) {
    const std::map<std::string, std::string> texts = {
        {"Form", "Reply"}, {"Subject", "Quarterly figures of the north"}, {"Status", "Open"}, {"Owner", "Ada King"}};
    const std::map<std::string, double> numbers = {
        {"Amount", 125.5}, {"Quantity", 12}, {"Discount", 20}, {"Priority", 2}};
    for (const std::string& name : program.item_names()) {
      const auto text = texts.find(name);
      std::string bytes = text != texts.end() ? text->second : std::string(sizeof(double), '\0');
      if (text == texts.end()) std::memcpy(bytes.data(), &numbers.at(name), sizeof(double));
      types_.push_back(text != texts.end() ? 0x0500 : 0x0300);
      values_.emplace_back(bytes.begin(), bytes.end());
    }
  }
  bool FindItem(std::uint32_t index, std::string_view, formula::ItemValue* item) override {
    if (index >= values_.size()) return false;
    *item = {types_[index], 0, values_[index]};
    return true;
  }

 private:
  std::vector<std::uint16_t> types_;
  std::vector<std::vector<std::uint8_t>> values_;
};

formula::Evaluator Made(const char* text) {
  bench::Home::Get();
  formula::Code code;
  formula::Place place;
  std::shared_ptr<const formula::Program> program;
  vq::ThrowIfError(formula::Compile(text, &code, &place));
  vq::ThrowIfError(formula::Program::Load(code, &program));
  return formula::Evaluator(program);
}

// As a view asks.
void SelectAtHand(benchmark::State& state) {
  formula::Evaluator evaluator = Made(bench::kSelection);
  Hand hand(evaluator.program());
  bool selected = false;
  for (auto _ : state) {
    vq::ThrowIfError(evaluator.Selects(hand, &selected));
    benchmark::DoNotOptimize(selected);
  }
  state.SetLabel(selected ? "selected" : "passed over");
}
BENCHMARK(SelectAtHand);

void ColumnAtHand(benchmark::State& state) {
  formula::Evaluator evaluator = Made(bench::kColumn);
  Hand hand(evaluator.program());
  formula::Result result;
  for (auto _ : state) {
    vq::ThrowIfError(evaluator.Evaluate(hand, 0, &result));
    benchmark::DoNotOptimize(result.value.data());
  }
  state.SetLabel(std::string(result.value.begin() + 2, result.value.end()));
}
BENCHMARK(ColumnAtHand);

void CallLua(benchmark::State& state, const char* function) {
  lua_State* const lua = luaL_newstate();
  luaL_openlibs(lua);
  if (luaL_dostring(lua, bench::kLua) != LUA_OK) state.SkipWithError(lua_tostring(lua, -1));
  lua_getglobal(lua, function);
  for (auto _ : state) {
    lua_pushvalue(lua, -1);
    lua_call(lua, 0, 1);
    benchmark::DoNotOptimize(lua_toboolean(lua, -1));
    benchmark::DoNotOptimize(lua_tostring(lua, -1));
    lua_pop(lua, 1);
  }
  lua_close(lua);
}
void SelectLua(benchmark::State& state) { CallLua(state, "Selection"); }
BENCHMARK(SelectLua);
void ColumnLua(benchmark::State& state) { CallLua(state, "Column"); }
BENCHMARK(ColumnLua);

}  // namespace
