// Compute handles: a program with its evaluator.
#ifndef QUILLON_QCORE_FORMULA_COMPUTE_H
#define QUILLON_QCORE_FORMULA_COMPUTE_H

#include <functional>

#include "qcore/formula/formula.h"
#include "qcore/handles/handles.h"

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
  [[nodiscard]] ENGSTATUS Evaluate(ENGHANDLE slate, Result* result, const std::function<ENGSTATUS(Bytes)>& take);

 private:
  Compute(std::shared_ptr<const Program> program, std::uint32_t code_length, bool assigns)
      : evaluator_(std::move(program)), code_length_(code_length), assigns_(assigns) {}

  Evaluator evaluator_;
  std::uint32_t code_length_;
  bool assigns_;
};

}  // namespace qcore::formula

#endif
