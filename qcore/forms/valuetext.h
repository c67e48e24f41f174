// Values of items as fields show them.
#ifndef QUILLON_QCORE_FORMS_VALUETEXT_H
#define QUILLON_QCORE_FORMS_VALUETEXT_H

#include <string>

#include "qcore/slates/slate.h"
#include "qcore/text/number.h"
#include "qcore/time/timetext.h"

namespace qcore::forms {

// How a field shows its value.
struct Formats {
  NFMT number = text::kGeneralFormat;
  TFMT time = time::kUsualFormat;
};

// `value` begins with its type word; entries of lists are told with ", " between. Empty for a value of another kind.
std::string ValueText(Bytes value, const Formats& formats);

}  // namespace qcore::forms

#endif
