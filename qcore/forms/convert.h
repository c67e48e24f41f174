// Values of formulas in the type that a field has.
#ifndef QUILLON_QCORE_FORMS_CONVERT_H
#define QUILLON_QCORE_FORMS_CONVERT_H

#include <cstdint>
#include <vector>

#include "qcore/forms/design.h"
#include "qcore/formula/source.h"

namespace qcore::forms {

// `value` and *converted begin with their type words. One empty text stays what it is in every field.
// ENG_ERR_FORMULA_TYPE, ENG_ERR_NUMBER_PARSE, ENG_ERR_TIME_PARSE, ENG_ERR_FORMULA_RESULT.
[[nodiscard]] ENGSTATUS Convert(formula::Bytes value, const Field& field, std::vector<std::uint8_t>* converted);

}  // namespace qcore::forms

#endif
