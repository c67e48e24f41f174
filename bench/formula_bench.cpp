// A selection and a column formula of ten operations each on a document, beside the same in Lua with the document's
// values in local variables.
#include <benchmark/benchmark.h>

#include <lua.hpp>

#include "bench/support.h"
#include "engine/engine.h"

namespace {

constexpr char kSelection[] =
    R"(SELECT (Form = "Memo":"Reply") & Amount > 100 & (Status != "Closed" | Priority >= 3) & Quantity * 2 < 50)";
constexpr char kColumn[] =
    R"(@If(Amount * Quantity - Discount > 1000; "Big "; "Small ") + Subject + " (" + Status + ") " + Owner + "!")";

constexpr char kDocument[] = R"(
  local Form, Status, Subject, Owner = "Reply", "Open", "Quarterly figures of the north", "Ada King"
  local Amount, Quantity, Discount, Priority = 125.5, 12, 20, 2
  function Selection()
    return (Form == "Memo" or Form == "Reply") and Amount > 100 and (Status ~= "Closed" or Priority >= 3)
           and Quantity * 2 < 50
  end
  function Column()
    return (Amount * Quantity - Discount > 1000 and "Big " or "Small ") .. Subject .. " (" .. Status .. ") " ..
           Owner .. "!"
  end
)";

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

void CallLua(benchmark::State& state, const char* function) {
  lua_State* const lua = luaL_newstate();
  luaL_openlibs(lua);
  if (luaL_dostring(lua, kDocument) != LUA_OK) state.SkipWithError(lua_tostring(lua, -1));
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

void SelectFormula(benchmark::State& state) { EvaluateFormula(state, kSelection); }
BENCHMARK(SelectFormula);
void SelectLua(benchmark::State& state) { CallLua(state, "Selection"); }
BENCHMARK(SelectLua);
void ColumnFormula(benchmark::State& state) { EvaluateFormula(state, kColumn); }
BENCHMARK(ColumnFormula);
void ColumnLua(benchmark::State& state) { CallLua(state, "Column"); }
BENCHMARK(ColumnLua);

}  // namespace
