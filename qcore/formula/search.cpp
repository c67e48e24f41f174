#include "qcore/formula/search.h"

#include <algorithm>

#include "qcore/formula/slatesource.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/search.h"
#include "qcore/store/wire.h"

namespace qcore::formula {

namespace {

class Search {
 public:
  Search(const std::shared_ptr<Database>& database, std::shared_ptr<const Program> program, const SearchScope& scope)
      : database_(database), evaluator_(std::move(program)), scope_(scope) {}

  ENGSTATUS Take(std::uint32_t id, bool* selected) {
    *selected = false;
    Readability readability{};
    {
      const std::lock_guard lock(database_->mutex());
      const ENGSTATUS status = CheckReaders(*database_, id, names_, &readability);
      if (IsLost(status)) return ENG_OK;
      if (status != ENG_OK) return status;
    }
    if (!readability.may_read) return ENG_OK;
    ENGHANDLE handle = 0;
    const ENGSTATUS status = Slate::Open(database_, id, &handle);
    if (IsLost(status)) return ENG_OK;
    if (status != ENG_OK) return status;
    *selected = Selects(*Slate::Find(handle));
    return Slate::Close(handle);
  }

 private:
  bool Selects(Slate& slate) {
    const SlateHeader& header = slate.header();
    if (scope_.until && Pack(header.modified_here) > Pack(*scope_.until)) return false;
    SlateSource source(slate, Assignments::kDropped);
    source.SetSurroundings(&ancestors_, &lookups_);
    bool selected = false;
    return evaluator_.Selects(source, &selected) == ENG_OK && selected;
  }

  std::shared_ptr<Database> database_;
  Evaluator evaluator_;
  const SearchScope& scope_;
  NamesList names_ = CurrentNames();
  Ancestors ancestors_{database_, evaluator_};
  LateLookups lookups_{&database_};
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
  // What was not looked at, or not yet taken, is left to the later search.
  constexpr TIMEDATE kNever{ENG_TIME_WILD, ENG_TIME_WILD};
  if (scope.until && Pack(*scope.until) < Pack(*horizon)) *horizon = *scope.until;
  Search search(database, program, scope);
  for (const std::uint32_t id : candidates) {
    if (scope.limit != 0 && ids->size() >= scope.limit) {
      *horizon = scope.since.value_or(kNever);
      break;
    }
    bool selected = false;
    status = search.Take(id, &selected);
    if (status != ENG_OK) return status;
    if (selected) ids->push_back(id);
  }
  return ENG_OK;
}

}  // namespace qcore::formula
