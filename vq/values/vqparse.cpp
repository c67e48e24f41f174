// Splitting a string into a text list.
#include <utility>
#include <vector>

#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/vqstring.h"
#include "vq/values/vqtext.h"

namespace {

constexpr unsigned short kTrim = 1;
constexpr unsigned short kSplitOnce = 2;

// Scanned forwards alone: a step back would count from the start again.
VQString Trimmed(const VQString& text) {
  const unsigned long length = text.GetLength();
  unsigned long start = 0;
  unsigned long end = 0;
  for (unsigned long at = 0; at < length; ++at) {
    if (text[at].IsSpace()) continue;
    if (end == 0) start = at;
    end = at + 1;
  }
  VQString trimmed;
  if (end != 0) vq::ThrowIfError(text.GetSubString(start, end - start, &trimmed));
  return trimmed;
}

// The first separator from `at` on, or the end.
const VQCHAR* FindSeparator(const VQCHAR* at, const VQCHAR* end, const VQString& separators) {
  const auto length = static_cast<std::uint16_t>(end - at);
  const ENGSTATUS result = EngTextFindAny(&at, length, separators.GetBuf(), EngTextCharset());
  if (result == ENG_OK) return at;
  if ((result & ENG_ERROR_MASK) != ENG_ERR_TEXT_NOT_FOUND) vq::Throw(vq::FromEngine(result));
  return end;
}

struct Split {
  std::vector<VQString> Pieces;
  bool Separated = false;
};

Split SplitText(const VQString& text, const VQString& separators, bool once) {
  Split split;
  const VQCHAR* at = text.GetBuf();
  const VQCHAR* const end = at + text.GetBufLength();
  while (at < end) {
    const VQCHAR* stop = once && split.Separated ? end : FindSeparator(at, end, separators);
    if (stop > at) split.Pieces.emplace_back(at, static_cast<unsigned long>(stop - at));
    at = stop;
    if (stop == end) break;
    std::uint32_t size = 0;
    vq::ThrowIfError(vq::FromEngine(EngTextSpanBytes(stop, static_cast<std::uint32_t>(end - stop), 1, &size)));
    at += size;
    split.Separated = true;
  }
  if (split.Pieces.empty()) split.Pieces.emplace_back();
  return split;
}

VQSTATUS StorePieces(Split split, bool trim, VQText* result) {
  if (trim) {
    for (VQString& piece : split.Pieces) piece = Trimmed(piece);
  }
  VQText list(new VQTextBody(TYPE_TEXT, nullptr, 0));
  if (const VQSTATUS status = list.SetEntries(split.Pieces)) return status;
  *result = list;
  return VQ_OK;
}

}  // namespace

VQSTATUS VQString::Parse(const VQString& separators, VQText* result, unsigned short flags) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (separators.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  if (result == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  if (flags >= 4) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQSTATUS status = VQ_OK;
  bool separated = false;
  try {
    Split split = SplitText(*this, separators, (flags & kSplitOnce) != 0);
    separated = split.Separated;
    status = StorePieces(std::move(split), (flags & kTrim) != 0, result);
  } catch (VQSTATUS thrown) {
    status = thrown;
  }
  if (status != VQ_OK) return vq::Apply(status);
  return separated ? VQ_OK : VQWARN_NOT_FOUND;
}
