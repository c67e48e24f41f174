#include "vq/richtext/vqrtchar.h"

#include "engine/text.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQRTChar::VQRTChar(const VQRTObject& object) {
  if (!object.IsNull() && !object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  Attach(object.GetRTObjectBody(), object.GetOffset());
}

VQCLASSID VQRTChar::GetClassID() const { return VQCLASSID_VQRTCHAR; }

void VQRTChar::ValidateRTType(const VQRTObjectBody* body) const {
  // Characters are told by the offset before this; no body alone is one.
  if (body) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQSTATUS VQRTChar::GetCharacter(VQString* text) const {
  if (!text) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (!HasOffset()) return vq::Apply(VQERR_OBJECT_CLOSED);
  VQString run;
  const VQSTATUS status = static_cast<VQStylizedTextBody*>(Body)->GetText(&run);
  if (status != VQ_OK) return vq::Apply(status);
  std::uint32_t from = 0, to = 0;
  const auto bytes = static_cast<std::uint32_t>(run.GetBufLength());
  const auto offset = static_cast<std::uint32_t>(Offset);
  if (offset > 1) EngTextSpanBytes(run.GetBuf(), bytes, offset - 1, &from);
  EngTextSpanBytes(run.GetBuf(), bytes, offset, &to);  // an empty run's place spans nothing
  *text = VQString(run.GetBuf() + from, to - from);
  return VQ_OK;
}
