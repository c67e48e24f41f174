// Splitting a string into a text list.
#include <utility>
#include <vector>

#include "vq/frame/state.h"
#include "vq/values/vqstring.h"
#include "vq/values/vqtext.h"

namespace {

constexpr unsigned short kTrim = 1;
constexpr unsigned short kSplitOnce = 2;

VQString Piece(const VQString& text, unsigned long from, unsigned long to) {
  VQString piece;
  if (from < to) vq::ThrowIfError(text.GetSubString(from, to - from, &piece));
  return piece;
}

VQString Trimmed(const VQString& text) {
  unsigned long end = text.GetLength();
  unsigned long start = 0;
  while (start < end && text[start].IsSpace()) ++start;
  while (end > start && text[end - 1].IsSpace()) --end;
  return Piece(text, start, end);
}

struct Split {
  std::vector<VQString> Pieces;
  bool Separated = false;
};

Split SplitText(const VQString& text, const VQString& separators, bool once) {
  Split split;
  const unsigned long length = text.GetLength();
  unsigned long start = 0;
  unsigned long found = 0;
  while (start < length && !(once && split.Separated)) {
    const VQSTATUS status = text.FindChar(separators, start, &found);
    if (status == VQWARN_NOT_FOUND) break;
    vq::ThrowIfError(status);
    split.Separated = true;
    if (found > start) split.Pieces.push_back(Piece(text, start, found));
    start = found + 1;
  }
  if (start < length) split.Pieces.push_back(Piece(text, start, length));
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
