// Compute handles: a program with its evaluator.
#ifndef QUILLON_QCORE_FORMULA_COMPUTE_H
#define QUILLON_QCORE_FORMULA_COMPUTE_H

#include "qcore/formula/formula.h"
#include "qcore/formula/slatesource.h"
#include "qcore/handles/handles.h"
#include "qcore/store/names.h"

namespace qcore::formula {

class Compute {
 public:
  [[nodiscard]] static ENGSTATUS Start(Bytes code, std::uint16_t flags, ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Stop(ENGHANDLE handle);
  static Compute* Find(ENGHANDLE handle) { return handle_table.FindAs<Compute>(Kind::kCompute, handle); }
  // For the end of the engine.
  static void StopAll();

  const Program& program() const { return evaluator_.program(); }
  std::uint32_t code_length() const { return code_length_; }
  // Slate 0 is no document. Assignments are made when `take` has taken the result, which is good until the next
  // evaluation; *result has the flags of a failure too.
  template <typename Take>
  [[nodiscard]] ENGSTATUS Evaluate(ENGHANDLE slate_handle, Result* result, Take take) {
    if (slate_handle == 0) {
      NoSlate none;
      const ENGSTATUS status = evaluator_.Evaluate(none, 0, result);
      return status == ENG_OK ? take(result->value) : status;
    }
    Slate* slate = Slate::Find(slate_handle);
    if (!slate) return ENG_ERR_INVALID_HANDLE;
    SlateSource source(*slate, assigns_ ? Assignments::kKept : Assignments::kDropped, hashes_);
    std::optional<Ancestors> ancestors;
    if (looks_above_) ancestors.emplace(slate->shared_database(), evaluator_);
    LateLookups lookups(&slate->shared_database());
    source.SetSurroundings(ancestors ? &*ancestors : nullptr, &lookups);
    ENGSTATUS status = evaluator_.Evaluate(source, 0, result);
    if (status == ENG_OK) status = take(result->value);
    return status == ENG_OK ? source.Apply() : status;
  }

 private:
  // Look-ups that name their database need no document.
  class NoSlate final : public Source {
   public:
    bool FindItem(std::uint32_t, std::string_view, ItemValue*) override { return false; }
    ENGSTATUS LookUp(const Lookup& lookup, const TakeValue& take) override { return lookups_.LookUp(lookup, take); }

   private:
    LateLookups lookups_{nullptr};
  };

  Compute(std::shared_ptr<const Program> program, std::uint32_t code_length, bool assigns)
      : evaluator_(std::move(program)), code_length_(code_length), assigns_(assigns) {
    looks_above_ = evaluator_.program().selects_responses() || evaluator_.program().selects_descendants();
    for (const std::string& name : evaluator_.program().item_names()) hashes_.push_back(FoldedHash(name));
  }

  Evaluator evaluator_;
  std::vector<std::uint32_t> hashes_;  // of the names that the formula reads
  std::uint32_t code_length_;
  bool assigns_;
  bool looks_above_ = false;
};

}  // namespace qcore::formula

#endif
