#include "vq/automation/formulacode.h"

namespace vq {

bool HasCode(const VQFormula& formula) {
  return !formula.IsNull() && formula.GetFormulaBody()->GetCode() != nullptr &&
         formula.GetFormulaBody()->GetCodeLength() != 0;
}

std::string_view CodeOf(const VQFormula& formula) {
  if (!HasCode(formula)) return {};
  return {formula.GetFormulaBody()->GetCode(), formula.GetFormulaBody()->GetCodeLength()};
}

VQSTATUS CompileFormula(const VQString& text, VQFormula* formula) {
  const VQFormula made(new VQFormulaBody);
  if (VQSTATUS status = made.GetFormulaBody()->Compile(text, nullptr, nullptr)) return status;
  *formula = made;
  return VQ_OK;
}

VQSTATUS TakeCode(std::string_view code, VQFormula* formula) {
  const VQFormula made(new VQFormulaBody);
  if (VQSTATUS status = made.GetFormulaBody()->TakeCode(code.data(), code.size(), 0)) return status;
  *formula = made;
  return VQ_OK;
}

VQSTATUS CopyFormula(const VQFormula& source, VQFormula* copy) {
  if (!HasCode(source)) {
    *copy = VQFormula();
    return VQ_OK;
  }
  const VQString text = source.GetFormulaBody()->GetText();
  return text.IsNull() ? TakeCode(CodeOf(source), copy) : CompileFormula(text, copy);
}

}  // namespace vq
