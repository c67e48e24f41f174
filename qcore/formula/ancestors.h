// Which slates above a response a selection takes by themselves: what @AllChildren and @AllDescendants ask.
#ifndef QUILLON_QCORE_FORMULA_ANCESTORS_H
#define QUILLON_QCORE_FORMULA_ANCESTORS_H

#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "qcore/formula/formula.h"
#include "qcore/slates/readers.h"

namespace qcore::formula {

// Looks up from one response or from many, and remembers what it found: slates are taken to stay as they are meanwhile.
// A slate that the user may not read is not selected.
class Ancestors {
 public:
  Ancestors(const std::shared_ptr<Database>& database, const Evaluator& evaluator)
      : database_(database), selection_(evaluator) {}

  // Whether the parent, or one `deep` above it, is selected.
  bool AnySelected(const std::optional<UNIVERSALSLATEID>& parent, bool deep);

 private:
  using Key = std::pair<std::uint64_t, std::uint64_t>;
  struct Known {
    bool selected = false;
    std::optional<bool> any_above;  // whether one above it is selected
    std::optional<UNIVERSALSLATEID> parent;
  };

  Known& Look(const UNIVERSALSLATEID& id);
  [[nodiscard]] ENGSTATUS Read(const UNIVERSALSLATEID& id, Known* known);

  const std::shared_ptr<Database>& database_;
  const Evaluator& selection_;
  std::optional<Evaluator> evaluator_;
  std::optional<NamesList> names_;
  std::map<Key, Known> known_;
};

}  // namespace qcore::formula

#endif
