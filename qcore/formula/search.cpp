#include "qcore/formula/search.h"

#include <algorithm>
#include <map>
#include <set>

#include "qcore/formula/slatesource.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/search.h"
#include "qcore/store/wire.h"

namespace qcore::formula {

namespace {

using Universal = std::pair<std::uint64_t, std::uint64_t>;

Universal KeyOf(const UNIVERSALSLATEID& id) { return {Pack(id.File), Pack(id.Slate)}; }

// Who is a response to whom among the slates that were looked at, and which of them were selected by themselves.
struct Family {
  std::map<Universal, std::optional<Universal>> parents;
  std::set<Universal> selected;
  bool complete = false;  // until then nobody is below anybody

  bool IsBelowSelected(const std::optional<UNIVERSALSLATEID>& parent, bool deep) const {
    std::optional<Universal> at = parent ? std::optional(KeyOf(*parent)) : std::nullopt;
    // A loop of responses has no more links than there are slates.
    for (std::size_t links = 0; complete && at && links <= parents.size(); ++links) {
      if (selected.contains(*at)) return true;
      const auto next = parents.find(*at);
      if (!deep || next == parents.end()) return false;
      at = next->second;
    }
    return false;
  }
};

class FamilySource final : public SlateSource {
 public:
  FamilySource(Slate& slate, const Family& family)
      : SlateSource(slate, Assignments::kDropped), parent_(slate.header().parent), family_(family) {}
  bool IsBelowSelected(bool deep) override { return family_.IsBelowSelected(parent_, deep); }

 private:
  std::optional<UNIVERSALSLATEID> parent_;
  const Family& family_;
};

class Search {
 public:
  Search(const std::shared_ptr<Database>& database, std::shared_ptr<const Program> program, const SearchScope& scope)
      : database_(database), evaluator_(std::move(program)), scope_(scope) {}

  // Every slate has been taken once.
  void CompleteFamily() { family_.complete = true; }

  ENGSTATUS Take(std::uint32_t id, bool* selected) {
    *selected = false;
    Readability readability{};
    {
      const std::lock_guard lock(database_->mutex());
      const ENGSTATUS status = CheckReaders(*database_, id, names_, &readability);
      if (IsGone(status)) return ENG_OK;
      if (status != ENG_OK) return status;
    }
    if (!readability.may_read) return ENG_OK;
    ENGHANDLE handle = 0;
    const ENGSTATUS status = Slate::Open(database_, id, &handle);
    if (IsGone(status)) return ENG_OK;
    if (status != ENG_OK) return status;
    *selected = Selects(*Slate::Find(handle));
    return Slate::Close(handle);
  }

 private:
  static bool IsGone(ENGSTATUS status) {
    return status == ENG_ERR_SLATE_DELETED || status == ENG_ERR_NO_SLATE || status == ENG_ERR_ITEM_DAMAGED;
  }

  bool Selects(Slate& slate) {
    const SlateHeader& header = slate.header();
    if (scope_.until && Pack(header.modified_here) > Pack(*scope_.until)) return false;
    FamilySource source(slate, family_);
    bool selected = false;
    if (evaluator_.Selects(source, &selected) != ENG_OK) selected = false;
    const bool has_family = evaluator_.program().selects_responses() || evaluator_.program().selects_descendants();
    if (!has_family || family_.complete) return selected;
    const Universal self = KeyOf({header.origin.File, header.origin.Slate});
    family_.parents[self] = header.parent ? std::optional(KeyOf(*header.parent)) : std::nullopt;
    if (selected) family_.selected.insert(self);
    return selected;
  }

  std::shared_ptr<Database> database_;
  Evaluator evaluator_;
  const SearchScope& scope_;
  NamesList names_ = CurrentNames();
  Family family_;
};

}  // namespace

ENGSTATUS SearchDatabase(const std::shared_ptr<Database>& database, Bytes code, const SearchScope& scope,
                         TIMEDATE* horizon, std::vector<std::uint32_t>* ids) {
  std::shared_ptr<const Program> program;
  ENGSTATUS status = Program::Load(code, &program);
  std::vector<std::uint32_t> candidates;
  const TIMEDATE* since = scope.since ? &*scope.since : nullptr;
  if (status == ENG_OK) status = ListClass(*database, scope.class_mask, since, horizon, &candidates);
  if (status != ENG_OK) return status;
  Search search(database, program, scope);
  std::vector<bool> taken(candidates.size());
  // Responses may come before the slate that they are below: what the first round has found takes them in the second.
  const int rounds = program->selects_responses() || program->selects_descendants() ? 2 : 1;
  std::size_t count = 0;
  for (int round = 1; round <= rounds; ++round) {
    if (round == 2) search.CompleteFamily();
    const bool limited = round == rounds && scope.limit != 0;
    for (std::size_t i = 0; i < candidates.size() && !(limited && count >= scope.limit); ++i) {
      if (taken[i]) continue;
      bool selected = false;
      status = search.Take(candidates[i], &selected);
      if (status != ENG_OK) return status;
      taken[i] = selected;
      if (selected) ++count;
    }
  }
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (taken[i] && (scope.limit == 0 || ids->size() < scope.limit)) ids->push_back(candidates[i]);
  }
  return ENG_OK;
}

}  // namespace qcore::formula
