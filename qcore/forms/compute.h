// Running an open slate through its form.
#ifndef QUILLON_QCORE_FORMS_COMPUTE_H
#define QUILLON_QCORE_FORMS_COMPUTE_H

#include <string>

#include "qcore/slates/slate.h"

namespace qcore::forms {

struct Failure {
  std::string field;
  std::string message;
};

enum class OnError { kStop, kContinue };

// See EngSlateCompute. The first failure's status; *failure says where it was.
[[nodiscard]] ENGSTATUS ComputeSlate(Slate& slate, OnError on_error, Failure* failure);

}  // namespace qcore::forms

#endif
