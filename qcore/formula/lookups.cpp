#include "qcore/formula/lookups.h"

#include <atomic>

namespace qcore::formula {

namespace {

std::atomic<LookupsMaker> the_maker;

}  // namespace

void SetLookupsMaker(LookupsMaker maker) { the_maker = maker; }

ENGSTATUS LateLookups::LookUp(const Lookup& lookup, const TakeValue& take) {
  const LookupsMaker maker = the_maker;
  if (!made_ && maker) made_ = maker(own_ ? *own_ : nullptr);
  return made_ ? made_->LookUp(lookup, take) : ENGSTATUS{ENG_ERR_FORMULA_LOOKUP};
}

}  // namespace qcore::formula
