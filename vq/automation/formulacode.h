// Formulas as the code that designs store.
#ifndef QUILLON_VQ_AUTOMATION_FORMULACODE_H
#define QUILLON_VQ_AUTOMATION_FORMULACODE_H

#include <string_view>

#include "vq/automation/vqformula.h"

namespace vq {

bool HasCode(const VQFormula& formula);
std::string_view CodeOf(const VQFormula& formula);
[[nodiscard]] VQSTATUS CompileFormula(const VQString& text, VQFormula* formula);
// As it stands, unchecked.
[[nodiscard]] VQSTATUS TakeCode(std::string_view code, VQFormula* formula);
// A formula of its own with the source's text and code; a null one for an empty source.
[[nodiscard]] VQSTATUS CopyFormula(const VQFormula& source, VQFormula* copy);

}  // namespace vq

#endif
