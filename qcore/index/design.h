// What an index needs of a view's stored design: columns, collations, selection, flags.
//
// Stored designs are written by strangers: nothing is taken from them that does not lie in the value.
#ifndef QUILLON_QCORE_INDEX_DESIGN_H
#define QUILLON_QCORE_INDEX_DESIGN_H

#include <memory>
#include <string>
#include <vector>

#include "qcore/index/sortkey.h"
#include "qcore/store/database.h"

namespace qcore::index {

enum class Totals : std::uint8_t { kNone, kSum, kPerChild, kPerDocument, kPercentOfParent, kPercentOfAll };

struct Column {
  std::string name;  // internal name
  std::vector<std::uint8_t> formula;
  Totals totals = Totals::kNone;
  bool has_constant = false;
  bool separate = false;

  // Only such columns have a value in the rows' summary.
  bool in_summary() const { return !name.empty() && !has_constant; }
};

struct SortColumn {
  std::string name;
  SortOptions options;
  bool category = false;
  bool separate = false;  // a row for each of several values

  bool operator==(const SortColumn&) const = default;
};

struct Collation {
  std::uint16_t number = 0;  // 0 for $Collation
  bool unique = false;       // of rows with equal keys the one with the lowest slate ID stands for all
  std::vector<SortColumn> columns;

  bool operator==(const Collation&) const = default;
};

struct Design {
  std::vector<Column> columns;
  std::vector<Collation> collations;  // the first one is number 0, with no columns where nothing is sorted
  std::vector<std::uint8_t> selection;
  std::string title;  // the first of its synonyms; takes no part in `sum`
  bool hierarchy = false;
  bool folder = false;
  std::uint64_t sum = 0;  // over all that was read: two designs of one sum give the same index
};

// One value of item $ViewFormat or $Collation behind its type word. False for one that can't be read; the target is
// then of no use.
[[nodiscard]] bool DecodeViewFormat(std::span<const std::uint8_t> value, Design* design);
[[nodiscard]] bool DecodeCollation(std::span<const std::uint8_t> value, Collation* collation);

// ENG_ERR_NO_COLLECTION when there is no such slate or it is no view, ENG_ERR_VIEW_DESIGN.
[[nodiscard]] ENGSTATUS ReadDesign(const std::shared_ptr<Database>& database, std::uint32_t view, Design* design);

}  // namespace qcore::index

#endif
