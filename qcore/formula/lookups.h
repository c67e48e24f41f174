// Look-ups in views, which a higher room makes: the place where it leaves its maker.
#ifndef QUILLON_QCORE_FORMULA_LOOKUPS_H
#define QUILLON_QCORE_FORMULA_LOOKUPS_H

#include <memory>

#include "qcore/formula/source.h"
#include "qcore/store/database.h"

namespace qcore::formula {

// The look-ups of one evaluation, or of a search. What they open stays open, and as it was then, until they go.
class Lookups {
 public:
  virtual ~Lookups() = default;
  // See Source::LookUp.
  [[nodiscard]] virtual ENGSTATUS LookUp(const Lookup& lookup, const TakeValue& take) = 0;
};

// `own` is the document's database, null without one.
using LookupsMaker = std::unique_ptr<Lookups> (*)(std::shared_ptr<Database> own);
// At the start of the engine.
void SetLookupsMaker(LookupsMaker maker);

// Look-ups that are made when the first one is asked for.
class LateLookups {
 public:
  explicit LateLookups(const std::shared_ptr<Database>* own) : own_(own) {}
  // ENG_ERR_FORMULA_LOOKUP where nobody makes any.
  [[nodiscard]] ENGSTATUS LookUp(const Lookup& lookup, const TakeValue& take);

 private:
  const std::shared_ptr<Database>* own_;  // null for none
  std::unique_ptr<Lookups> made_;
};

}  // namespace qcore::formula

#endif
