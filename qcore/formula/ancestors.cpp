#include "qcore/formula/ancestors.h"

#include "qcore/formula/slatesource.h"
#include "qcore/store/wire.h"

namespace qcore::formula {

ENGSTATUS Ancestors::Read(const UNIVERSALSLATEID& id, Known* known) {
  std::uint32_t slate_id = 0;
  if (!names_) names_ = CurrentNames();
  {
    Readability readability{};
    const std::lock_guard lock(database_->mutex());
    ENGSTATUS status = database_->store().FindUniversal(id, &slate_id);
    if (status == ENG_OK) status = CheckReaders(*database_, slate_id, *names_, &readability);
    if (status != ENG_OK || !readability.may_read) return status;
  }
  ENGHANDLE handle = 0;
  const ENGSTATUS status = Slate::Open(database_, slate_id, &handle);
  if (status != ENG_OK) return status;
  Slate& slate = *Slate::Find(handle);
  known->parent = slate.header().parent;
  if (!evaluator_) evaluator_.emplace(selection_.shared_program());
  SlateSource source(slate, Assignments::kDropped);
  // One on which the selection fails is not selected.
  if (evaluator_->Selects(source, &known->selected) != ENG_OK) known->selected = false;
  return Slate::Close(handle);
}

Ancestors::Known& Ancestors::Look(const UNIVERSALSLATEID& id) {
  const auto [place, fresh] = known_.try_emplace({Pack(id.File), Pack(id.Slate)});
  // One that is not there, or can't be read, ends the way up.
  if (fresh && Read(id, &place->second) != ENG_OK) place->second = {};
  return place->second;
}

bool Ancestors::AnySelected(const std::optional<UNIVERSALSLATEID>& parent, bool deep) {
  if (parent && !deep) return Look(*parent).selected;
  std::vector<Known*> way;
  bool found = false;
  for (std::optional<UNIVERSALSLATEID> at = parent; at;) {
    Known& known = Look(*at);
    found = known.selected || known.any_above.value_or(false);
    if (found || known.any_above) break;
    known.any_above = false;  // where a loop of responses ends
    way.push_back(&known);
    at = known.parent;
  }
  for (Known* known : way) known->any_above = found;
  return found;
}

}  // namespace qcore::formula
