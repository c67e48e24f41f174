// Runs in ranges: copies of a part, fonts of a part, searches.
#include <algorithm>
#include <vector>

#include "engine/text.h"
#include "vq/richtext/font.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

namespace {

// The characters of a run that lie between two places: [From, To), counted from 0.
struct Part {
  unsigned long From;
  unsigned long To;
};

Part PartBetween(const VQStylizedTextBody& run, const VQRTCursor& start, const VQRTCursor& end) {
  Part part = {0, run.GetCharacterCount()};
  if (!start.IsNull()) {
    const vq::TextPlace place(start);
    if (place.Node == &run) part.From = place.Before;
  }
  if (!end.IsNull()) {
    const vq::TextPlace place(end);
    if (place.Node == &run) part.To = place.Before;
  }
  return part;
}

}  // namespace

VQSTATUS VQStylizedTextBody::CopyChildren(const VQRTCursor& start, const VQRTCursor& end, VQRTBaseContainerBody* source,
                                          VQRTObject*) {
  if (!source) return VQERR_INVALID_PARAMETER;
  if (Closed || source->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (source->GetType() != VQRTTYPE_STYLIZED_TEXT) return VQERR_INAPPROPRIATE;
  if (source->GetRecordSize() == 0) return VQERR_CORRUPTED;
  const auto& run = static_cast<const VQStylizedTextBody&>(*source);
  const Part part = PartBetween(run, start, end);
  VQSTATUS status = Copy(source, VQRTCOPYOPTIONS_DEEP);
  if (status != VQ_OK) return status;
  const unsigned long count = GetCharacterCount();
  if (part.From > part.To || part.To > count) return VQERR_INVALID_PARAMETER;
  if (part.To < count) status = RemoveText(part.To + 1, count - part.To);
  if (status == VQ_OK && part.From > 0) status = RemoveText(1, part.From);
  return status;
}

VQSTATUS VQStylizedTextBody::SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                                          unsigned long mask) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!start.IsValid() || !end.IsValid()) return VQERR_CURSOR_INVALID;
  const unsigned long count = GetCharacterCount();
  const Part part = PartBetween(*this, start, end);
  if (part.To < part.From) return VQERR_INVALID_PARAMETER;
  if (count == 0) return ApplyFontStyle(style, mask);
  if (part.From == part.To) return VQ_OK;
  VQSTATUS status = VQ_OK;
  if (part.To < count) status = SplitText(part.To + 1);
  if (status == VQ_OK && part.From > 0) status = SplitText(part.From + 1);
  if (status != VQ_OK) return status;
  if (part.From == 0) return ApplyFontStyle(style, mask);
  VQRTObjectBody* next = GetNext();
  if (!next || next->GetType() != VQRTTYPE_STYLIZED_TEXT) return VQERR_CORRUPTED;
  return static_cast<VQStylizedTextBody*>(next)->ApplyFontStyle(style, mask);
}

VQSTATUS VQStylizedTextBody::SetFontStyle(const VQRTCursor& cursor, const VQFontStyle& style) {
  if (!cursor.IsValid(this)) return VQERR_CURSOR_INVALID;
  return ApplyFontStyle(style, VQFONTMASK_ALL);
}

VQSTATUS VQStylizedTextBody::FindText(const VQString& text, unsigned long options, unsigned long start, int backwards,
                                      unsigned long* offset) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const auto pattern = static_cast<std::uint32_t>(text.GetBufLength());
  if (!offset || pattern == 0) return VQERR_INVALID_PARAMETER;
  const TextBytes bytes(*this);
  if (bytes.Size == 0) return VQWARN_NOT_FOUND;
  std::vector<unsigned char> sought(text.GetBuf(), text.GetBuf() + pattern);
  std::replace(sought.begin(), sought.end(), static_cast<unsigned char>('\n'), static_cast<unsigned char>(0));

  std::uint32_t from = 0, limit = bytes.Size;
  if (start > 1 || backwards) {
    // Behind the end of the run: nothing to find forwards, everything backwards.
    const auto characters = static_cast<std::uint32_t>(backwards ? start : start - 1);
    std::uint32_t span = 0;
    if (EngTextSpanBytes(bytes.Text, bytes.Size, characters, &span) != 0) span = bytes.Size;
    (backwards ? limit : from) = span;
  }
  const std::uint32_t flags =
      static_cast<std::uint32_t>(options) & (ENG_COMPARE_IGNORE_CASE | ENG_COMPARE_IGNORE_ACCENTS);
  const ENGCHAR* hit = nullptr;
  for (const ENGCHAR* at = bytes.Text + from; at < bytes.Text + bytes.Size; ++at) {
    std::uint32_t matched = 0;
    const auto left = static_cast<std::uint32_t>(bytes.Text + bytes.Size - at);
    if (EngTextSearch(&at, left, sought.data(), pattern, flags, &matched) != 0 || at >= bytes.Text + limit) break;
    hit = at;
    if (!backwards) break;
  }
  if (!hit) return VQWARN_NOT_FOUND;
  std::uint32_t before = 0;
  if (hit > bytes.Text && EngTextSpanChars(bytes.Text, static_cast<std::uint32_t>(hit - bytes.Text), &before) != 0) {
    return VQERR_STRING_SIZE;
  }
  *offset = before + 1;
  return VQ_OK;
}
