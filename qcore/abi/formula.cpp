#include "engine/formula.h"

#include <cstring>

#include "qcore/abi/lookup.h"
#include "qcore/formula/compute.h"
#include "qcore/formula/formula.h"
#include "qcore/formula/search.h"
#include "qcore/idtables/idtable.h"
#include "qcore/memory/memory.h"
#include "qcore/text/textlist.h"

namespace formula = qcore::formula;
using qcore::abi::Guard;

namespace {

std::string_view View(const ENGCHAR* text, std::size_t length) { return {reinterpret_cast<const char*>(text), length}; }

formula::Bytes CodeOf(const void* code, std::uint32_t length) {
  return {static_cast<const std::uint8_t*>(code), code ? length : 0};
}

// Code that says its own length.
formula::Bytes CodeOf(const void* code) {
  return CodeOf(code, formula::LengthOf(static_cast<const std::uint8_t*>(code)));
}

// A block with these bytes, which are at most 65,535.
ENGSTATUS Block(const void* bytes, std::size_t size, ENGHANDLE* handle, uint16_t* length) {
  if (size > UINT16_MAX) return ENG_ERR_FORMULA_TOO_LARGE;
  const ENGSTATUS status = qcore::memory::Allocate(qcore::Kind::kMemory, static_cast<std::uint32_t>(size),
                                                   qcore::memory::Fill::kNone, handle);
  if (status != ENG_OK) return status;
  std::memcpy(qcore::memory::LockedBlock(*handle).bytes(), bytes, size);
  *length = static_cast<uint16_t>(size);
  return ENG_OK;
}

uint16_t FlagsOf(const formula::Result& result) {
  return static_cast<uint16_t>((result.selected ? ENG_FORMULA_SELECTED : 0) |
                               (result.modified ? ENG_FORMULA_MODIFIED : 0) |
                               (result.deleted ? ENG_FORMULA_DELETED : 0));
}

// Evaluates, and gives the value to `take`.
template <typename Take>
ENGSTATUS Evaluated(ENGHANDLE handle, ENGHANDLE slate, uint16_t* flags, Take take) {
  return Guard([&]() -> ENGSTATUS {
    formula::Compute* compute = formula::Compute::Find(handle);
    if (!compute) return ENG_ERR_INVALID_HANDLE;
    formula::Result result;
    const ENGSTATUS status = compute->Evaluate(slate, &result, take);
    *flags = FlagsOf(result);
    return status;
  });
}

ENGSTATUS NamesOf(const formula::Program& program, uint16_t which, std::vector<std::string>* names) {
  switch (which) {
    case ENG_FORMULA_NAMES_READ:
      *names = program.item_names();
      return ENG_OK;
    case ENG_FORMULA_NAMES_SUMMARY:
      *names = program.summary_names();
      return ENG_OK;
    case ENG_FORMULA_NAMES_COLUMNS:
      for (std::size_t i = 1; i < program.section_count(); ++i) names->emplace_back(program.section_name(i));
      return ENG_OK;
    default:
      return ENG_ERR_ARGUMENT;
  }
}

ENGSTATUS Inform(const formula::Compute& compute, uint16_t selector, void* target) {
  const formula::Program& program = compute.program();
  const auto word = [target](std::size_t value) {
    *static_cast<uint16_t*>(target) = static_cast<uint16_t>(value);
    return ENGSTATUS{ENG_OK};
  };
  switch (selector) {
    case ENG_FORMULA_INFO_TIME:
      return word(program.depends_on_time());
    case ENG_FORMULA_INFO_RESPONSES:
      return word((program.selects_responses() ? 1u : 0u) | (program.selects_descendants() ? 2u : 0u));
    case ENG_FORMULA_INFO_SELECTS:
      return word(program.has_select());
    case ENG_FORMULA_INFO_COLUMNS:
      return word(program.section_count() - 1);
    case ENG_FORMULA_INFO_LENGTH:
      *static_cast<uint32_t*>(target) = compute.code_length();
      return ENG_OK;
    default:
      return ENG_ERR_ARGUMENT;
  }
}

}  // namespace

ENGSTATUS EngFormulaCompile(const ENGCHAR* text, uint16_t length, ENGHANDLE* code, uint16_t* code_length,
                            ENGFORMULAERROR* error) {
  if (!text || !code || !code_length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    formula::Code made;
    formula::Place place;
    const ENGSTATUS status = formula::Compile(View(text, length), &made, &place);
    if (status != ENG_OK && error) *error = {place.offset, place.length};
    return status == ENG_OK ? Block(made.data(), made.size(), code, code_length) : status;
  });
}

ENGSTATUS EngFormulaDecompile(const void* code, uint16_t flags, ENGHANDLE* text, uint16_t* length) {
  if (!code || !text || !length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const bool selection = (flags & ENG_DECOMPILE_SELECTION) != 0;
    std::string made;
    const ENGSTATUS status =
        formula::Decompile(CodeOf(code), selection ? formula::Extent::kSelection : formula::Extent::kAll, &made);
    return status == ENG_OK ? Block(made.data(), made.size(), text, length) : status;
  });
}

ENGSTATUS EngFormulaVerify(const void* code, uint32_t code_length) {
  if (!code) return ENG_ERR_ARGUMENT;
  return Guard([&] { return formula::Verify(CodeOf(code, code_length)); });
}

ENGSTATUS EngFormulaMergeColumn(const void* selection, uint32_t selection_length, const ENGCHAR* name,
                                uint16_t name_length, const void* column, uint32_t column_length, ENGHANDLE* code,
                                uint16_t* code_length) {
  if (!selection || !name || !column || !code || !code_length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    formula::Code merged;
    const ENGSTATUS status = formula::MergeColumn(CodeOf(selection, selection_length), View(name, name_length),
                                                  CodeOf(column, column_length), &merged);
    return status == ENG_OK ? Block(merged.data(), merged.size(), code, code_length) : status;
  });
}

ENGSTATUS EngFormulaAddSummaryName(const void* selection, uint32_t selection_length, const ENGCHAR* name,
                                   uint16_t name_length, ENGHANDLE* code, uint16_t* code_length) {
  if (!selection || !name || !code || !code_length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    formula::Code merged;
    const ENGSTATUS status =
        formula::AddSummaryName(CodeOf(selection, selection_length), View(name, name_length), &merged);
    return status == ENG_OK ? Block(merged.data(), merged.size(), code, code_length) : status;
  });
}

ENGSTATUS EngFormulaGetNames(const void* code, uint32_t code_length, uint16_t which, ENGHANDLE* list, uint16_t* size) {
  if (!code || !list || !size) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    std::shared_ptr<const formula::Program> program;
    ENGSTATUS status = formula::Program::Load(CodeOf(code, code_length), &program);
    std::vector<std::string> names;
    if (status == ENG_OK) status = NamesOf(*program, which, &names);
    if (status != ENG_OK) return status;
    const auto value = qcore::text::WriteList({names.begin(), names.end()}, qcore::text::Prefix::kType);
    return value ? Block(value->data(), value->size(), list, size) : ENGSTATUS{ENG_ERR_LIST_FULL};
  });
}

ENGSTATUS EngFormulaRelease(ENGHANDLE code) {
  return Guard([&] { return qcore::memory::Free(qcore::Kind::kMemory, code); });
}

ENGSTATUS EngFormulaComputeStart(uint16_t flags, const void* code, ENGHANDLE* compute) {
  if (!code || !compute) return ENG_ERR_ARGUMENT;
  return Guard([&] { return formula::Compute::Start(CodeOf(code), flags, compute); });
}

ENGSTATUS EngFormulaComputeStop(ENGHANDLE compute) {
  return Guard([&] { return formula::Compute::Stop(compute); });
}

ENGSTATUS EngFormulaGetInfo(ENGHANDLE handle, uint16_t selector, void* target) {
  if (!target) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const formula::Compute* compute = formula::Compute::Find(handle);
    return compute ? Inform(*compute, selector, target) : ENGSTATUS{ENG_ERR_INVALID_HANDLE};
  });
}

ENGSTATUS EngFormulaEvaluate(ENGHANDLE compute, ENGHANDLE slate, ENGHANDLE* result, uint16_t* length, uint16_t* flags) {
  if (!result || !length || !flags) return ENG_ERR_ARGUMENT;
  ENGHANDLE block = 0;
  const ENGSTATUS status = Evaluated(
      compute, slate, flags, [&](formula::Bytes value) { return Block(value.data(), value.size(), &block, length); });
  if (status == ENG_OK) {
    *result = block;
  } else if (block != 0) {
    qcore::memory::Release(qcore::Kind::kMemory, block);
  }
  return status;
}

ENGSTATUS EngFormulaEvaluateTo(ENGHANDLE compute, ENGHANDLE slate, void* buffer, uint32_t size, uint32_t* length,
                               uint16_t* flags) {
  if (!buffer || !length || !flags) return ENG_ERR_ARGUMENT;
  return Evaluated(compute, slate, flags, [&](formula::Bytes value) -> ENGSTATUS {
    *length = static_cast<uint32_t>(value.size());
    if (value.size() > size) return ENG_ERR_BUFFER_SIZE;
    std::memcpy(buffer, value.data(), value.size());
    return ENG_OK;
  });
}

ENGSTATUS EngDbSearchFormula(ENGHANDLE db, const void* code, uint32_t code_length, uint16_t class_mask,
                             const TIMEDATE* since, const TIMEDATE* until, uint32_t limit, TIMEDATE* completed,
                             ENGHANDLE* table) {
  if (!code || !table) return ENG_ERR_ARGUMENT;
  return qcore::abi::WithStore(db, [&](const auto& database) {
    formula::SearchScope scope{class_mask, std::nullopt, std::nullopt, limit};
    if (since) scope.since = *since;
    if (until) scope.until = *until;
    std::vector<uint32_t> ids;
    TIMEDATE horizon{};
    ENGSTATUS status =
        formula::SearchDatabase(database, {static_cast<const uint8_t*>(code), code_length}, scope, &horizon, &ids);
    if (status == ENG_OK) status = qcore::idtable::Make(ids, table);
    if (status == ENG_OK && completed) *completed = horizon;
    return status;
  });
}
