// A search over a database's slates by formula.
#ifndef QUILLON_QCORE_FORMULA_SEARCH_H
#define QUILLON_QCORE_FORMULA_SEARCH_H

#include <memory>
#include <optional>
#include <vector>

#include "qcore/formula/formula.h"
#include "qcore/store/database.h"

namespace qcore::formula {

struct SearchScope {
  std::uint16_t class_mask = 1;
  std::optional<TIMEDATE> since;  // changed in this file at or after
  std::optional<TIMEDATE> until;  // and at or before
  std::uint32_t limit = 0;        // the lowest IDs; 0 for all
};

// The slates that the code selects and the user may read, in ascending order. One on which the code fails is not
// selected. `horizon` is the moment to go on from in a later search: `until` where that is earlier, and `since` (both
// words wild without one) where the limit left slates out.
[[nodiscard]] ENGSTATUS SearchDatabase(const std::shared_ptr<Database>& database, Bytes code, const SearchScope& scope,
                                       TIMEDATE* horizon, std::vector<std::uint32_t>* ids);

}  // namespace qcore::formula

#endif
