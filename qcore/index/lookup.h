// Look-ups of formulas: values from the documents of a view, in the view's order.
#ifndef QUILLON_QCORE_INDEX_LOOKUP_H
#define QUILLON_QCORE_INDEX_LOOKUP_H

#include <memory>

#include "qcore/formula/lookups.h"

namespace qcore::index {

// Views are found by their titles; they are those of the moment of the first look-up, by what the user may read. Errors
// of a look-up: ENG_ERR_FORMULA_DOCUMENT for the own database where there is none, ENG_ERR_FORMULA_VALUE for a column
// that the view does not have or that has no values, ENG_ERR_FORMULA_TYPE for a key that is a range,
// ENG_ERR_NO_DESIGN_ELEMENT for a view that is not there, ENG_ERR_TOO_MANY_KEYS for a key where nothing is sorted, and
// what opening a database gives.
std::unique_ptr<formula::Lookups> MakeLookups(std::shared_ptr<Database> own);

}  // namespace qcore::index

#endif
