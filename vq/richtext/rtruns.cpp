// Runs in ranges: copies of a part, fonts of a part.
#include "vq/richtext/font.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"

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
  // The font table may be full, which must show before the run is split.
  VQSTATUS status = mask & VQFONTMASK_FACE ? vq::EnterStyle(*this, style) : VQ_OK;
  if (status == VQ_OK && part.To < count) status = SplitText(part.To + 1);
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
