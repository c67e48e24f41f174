// A selection and a column formula of ten operations each on a document, beside the same in Lua: with the document's
// values in local variables, and reading them from the document as the formula does.
#include <benchmark/benchmark.h>

#include <cstring>
#include <lua.hpp>

#include "bench/formula_texts.h"
#include "bench/support.h"
#include "engine/engine.h"

namespace {

const ENGCHAR* Store(const char* text) { return reinterpret_cast<const ENGCHAR*>(text); }
std::uint16_t Length(const char* text) { return static_cast<std::uint16_t>(std::char_traits<char>::length(text)); }

// The document among others of a store, with twelve items, opened again.
ENGHANDLE Document() {
  static VQDatabase database = bench::Home::Get().Create("formula");
  static VQDocument document;
  if (document.IsOpen()) return document.GetSlateBody()->GetHandle();
  vq::ThrowIfError(database.CreateDocument(&document));
  const ENGHANDLE slate = document.GetSlateBody()->GetHandle();
  const auto text = [slate](const char* name, const char* value) {
    vq::ThrowIfError(EngItemAppend(slate, ENG_ITEM_SUMMARY, Store(name), Length(name), 0x0500, value, Length(value),
                                   nullptr, nullptr));
  };
  const auto number = [slate](const char* name, double value) {
    vq::ThrowIfError(EngItemAppend(slate, ENG_ITEM_SUMMARY, Store(name), Length(name), 0x0300, &value, sizeof value,
                                   nullptr, nullptr));
  };
  text("Form", "Reply");
  text("Subject", "Quarterly figures of the north");
  text("Status", "Open");
  text("Owner", "Ada King");
  number("Amount", 125.5);
  number("Quantity", 12);
  number("Discount", 20);
  number("Priority", 2);
  for (const char* name : {"Region", "Team", "Remarks", "Body"}) text(name, "other");
  vq::ThrowIfError(document.Save());
  vq::ThrowIfError(document.Close());
  vq::ThrowIfError(document.Open());
  return document.GetSlateBody()->GetHandle();
}

void EvaluateFormula(benchmark::State& state, const char* text) {
  const ENGHANDLE slate = Document();
  ENGHANDLE code = 0;
  ENGHANDLE compute = 0;
  std::uint16_t size = 0;
  vq::ThrowIfError(EngFormulaCompile(Store(text), Length(text), &code, &size, nullptr));
  vq::ThrowIfError(EngFormulaComputeStart(0, EngMemLock(code), &compute));
  char value[200];
  std::uint32_t length = 0;
  std::uint16_t flags = 0;
  for (auto _ : state) {
    vq::ThrowIfError(EngFormulaEvaluateTo(compute, slate, value, sizeof value, &length, &flags));
    benchmark::DoNotOptimize(value);
  }
  state.SetLabel(length == 10 ? (flags & ENG_FORMULA_SELECTED ? "selected" : "passed over")
                              : std::string(value + 2, length - 2));
  EngFormulaComputeStop(compute);
  EngMemUnlock(code);
  EngFormulaRelease(code);
}

// Hands an item's value to Lua.
void PushItem(lua_State* lua, ENGHANDLE slate, const char* name) {
  BLOCKID value{};
  std::uint16_t type = 0;
  std::uint32_t size = 0;
  vq::ThrowIfError(EngSlateGetItemInfo(slate, Store(name), Length(name), nullptr, &type, &value, &size));
  const char* const bytes = static_cast<const char*>(EngMemLock(value.Pool)) + value.Block + 2;
  if (type == 0x0300) {
    double number = 0;
    std::memcpy(&number, bytes, sizeof number);
    lua_pushnumber(lua, number);
  } else {
    lua_pushlstring(lua, bytes, size - 2);
  }
  EngMemUnlock(value.Pool);
}

// `items` are what the function takes.
void CallLua(benchmark::State& state, const char* function, const std::vector<const char*>& items = {}) {
  const ENGHANDLE slate = Document();
  lua_State* const lua = luaL_newstate();
  luaL_openlibs(lua);
  if (luaL_dostring(lua, bench::kLua) != LUA_OK) state.SkipWithError(lua_tostring(lua, -1));
  lua_getglobal(lua, function);
  for (auto _ : state) {
    lua_pushvalue(lua, -1);
    for (const char* item : items) PushItem(lua, slate, item);
    lua_call(lua, static_cast<int>(items.size()), 1);
    benchmark::DoNotOptimize(lua_toboolean(lua, -1));
    benchmark::DoNotOptimize(lua_tostring(lua, -1));
    lua_pop(lua, 1);
  }
  lua_close(lua);
}

void SelectFormula(benchmark::State& state) { EvaluateFormula(state, bench::kSelection); }
BENCHMARK(SelectFormula);
void SelectLua(benchmark::State& state) { CallLua(state, "Selection"); }
BENCHMARK(SelectLua);
void SelectLuaOnDocument(benchmark::State& state) {
  CallLua(state, "SelectionOf", {"Form", "Amount", "Status", "Priority", "Quantity"});
}
BENCHMARK(SelectLuaOnDocument);
void ColumnFormula(benchmark::State& state) { EvaluateFormula(state, bench::kColumn); }
BENCHMARK(ColumnFormula);
void ColumnLua(benchmark::State& state) { CallLua(state, "Column"); }
BENCHMARK(ColumnLua);
void ColumnLuaOnDocument(benchmark::State& state) {
  CallLua(state, "ColumnOf", {"Amount", "Quantity", "Discount", "Subject", "Status", "Owner"});
}
BENCHMARK(ColumnLuaOnDocument);

}  // namespace
