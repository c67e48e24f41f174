#include "engine/compute.h"

#include <algorithm>
#include <cstring>

#include "engine/status.h"
#include "qcore/abi/lookup.h"
#include "qcore/forms/compute.h"
#include "qcore/text/utf8.h"

namespace {

template <std::size_t N>
std::uint16_t Copy(std::string_view text, ENGCHAR (&target)[N]) {
  const std::size_t length = qcore::text::CutLength(qcore::text::AsText(text), N);
  std::memcpy(target, text.data(), length);
  return static_cast<std::uint16_t>(length);
}

}  // namespace

ENGSTATUS EngSlateCompute(ENGHANDLE slate, uint16_t, int continue_on_error, ENGCOMPUTEFAILURE* failure, void*) {
  return qcore::abi::WithSlate(slate, [&](qcore::Slate& open) {
    qcore::forms::Failure failed;
    const auto on_error = continue_on_error ? qcore::forms::OnError::kContinue : qcore::forms::OnError::kStop;
    const ENGSTATUS status = qcore::forms::ComputeSlate(open, on_error, &failed);
    if (failure) {
      *failure = {};
      failure->FieldLength = Copy(failed.field, failure->Field);
      failure->MessageLength = Copy(failed.message, failure->Message);
    }
    return status;
  });
}
