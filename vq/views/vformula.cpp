// Formulas of a design: copies, and code from a store.
#include "engine/formula.h"
#include "engine/status.h"
#include "vq/frame/vqcommon.h"
#include "vq/store/storetext.h"
#include "vq/views/mergedformula.h"
#include "vq/views/vdesign.h"

namespace vq::viewdesign {

namespace {

// A block of the engine, freed at the end.
class EngineBlock {
 public:
  EngineBlock() = default;
  ~EngineBlock() {
    if (Handle != 0) EngFormulaRelease(Handle);
  }
  EngineBlock(const EngineBlock&) = delete;
  EngineBlock& operator=(const EngineBlock&) = delete;
  ENGHANDLE* Out() { return &Handle; }
  VQSTATUS CopyTo(std::string* bytes, std::size_t length) const {
    const void* address = EngMemLock(Handle);
    if (address == nullptr) return VQERR_CORRUPTED;
    bytes->assign(static_cast<const char*>(address), length);
    EngMemUnlock(Handle);
    return VQ_OK;
  }

 private:
  ENGHANDLE Handle = 0;
};

VQSTATUS TextOf(std::string_view code, bool selection, std::string* text) {
  if (VQSTATUS status = FromEngine(EngFormulaVerify(code.data(), static_cast<std::uint32_t>(code.size())))) {
    return status;
  }
  EngineBlock block;
  std::uint16_t length = 0;
  const std::uint16_t flags = selection ? ENG_DECOMPILE_SELECTION : 0;
  if (VQSTATUS status = FromEngine(EngFormulaDecompile(code.data(), flags, block.Out(), &length))) return status;
  return block.CopyTo(text, length);
}

}  // namespace

VQSTATUS LoadFormula(std::string_view code, bool selection, VQFormula* formula) {
  *formula = VQFormula();
  if (code.empty()) return VQ_OK;
  std::string text;
  if (VQSTATUS status = TextOf(code, selection, &text)) return status;
  if (selection) return text.empty() ? VQ_OK : CompileFormula(StringOf(text), formula);
  VQFormula made;
  VQSTATUS status = TakeCode(code, &made);
  if (status == VQ_OK) status = made.GetFormulaBody()->EnsureText();
  if (status == VQ_OK) *formula = made;
  return status;
}

MergedFormula::MergedFormula(const VQFormula& selection) : Bytes(CodeOf(selection)) {}

VQSTATUS MergedFormula::Take(ENGSTATUS result, ENGHANDLE made, std::uint16_t length) {
  if (result != ENG_OK) return FromEngine(result);
  EngineBlock block;
  *block.Out() = made;
  return block.CopyTo(&Bytes, length);
}

VQSTATUS MergedFormula::AddName(std::string_view name) {
  ENGHANDLE made = 0;
  std::uint16_t length = 0;
  const ENGSTATUS result =
      EngFormulaAddSummaryName(Bytes.data(), static_cast<std::uint32_t>(Bytes.size()), EngineText(name),
                               static_cast<std::uint16_t>(name.size()), &made, &length);
  const VQSTATUS status = Take(result, made, length);
  if (status == VQ_OK) HasNames = true;
  return status;
}

VQSTATUS MergedFormula::AddColumn(std::string_view name, std::string_view code) {
  ENGHANDLE made = 0;
  std::uint16_t length = 0;
  const ENGSTATUS result = EngFormulaMergeColumn(Bytes.data(), static_cast<std::uint32_t>(Bytes.size()),
                                                 EngineText(name), static_cast<std::uint16_t>(name.size()), code.data(),
                                                 static_cast<std::uint32_t>(code.size()), &made, &length);
  const VQSTATUS status = Take(result, made, length);
  if (status == VQ_OK) HasNames = true;
  return status;
}

}  // namespace vq::viewdesign
