// Formulas on the command line.
#ifndef QUILLON_TOOLS_QUILLON_FORMULAS_H
#define QUILLON_TOOLS_QUILLON_FORMULAS_H

#include <string>

#include "vq/vq.h"

namespace tool {

// Failure{kExitFailed} with the place of an error marked under the text.
VQFormula CompileFormula(const std::string& text);

}  // namespace tool

#endif
