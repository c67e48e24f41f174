// The handle on a run.
#include "vq/richtext/font.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQStylizedText::VQStylizedText(const VQString& text) {
  const VQRTObject made(new VQStylizedTextBody());
  vq::ThrowIfError(static_cast<VQStylizedTextBody*>(made.GetRTObjectBody())->InsertText(0, text));
  Attach(made.GetRTObjectBody(), 0);
}

VQStylizedText::VQStylizedText(const VQRTObject& object) {
  if (object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  VQStylizedText::ValidateRTType(object.GetRTObjectBody());
  Attach(object.GetRTObjectBody(), 0);
}

VQStylizedText::VQStylizedText(VQStylizedTextBody* body) { Attach(body, 0); }

VQCLASSID VQStylizedText::GetClassID() const { return VQCLASSID_VQSTYLIZEDTEXT; }

void VQStylizedText::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_STYLIZED_TEXT)) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQStylizedTextBody* VQStylizedText::GetStylizedTextBody() const { return static_cast<VQStylizedTextBody*>(Body); }

VQSTATUS VQStylizedText::Append(const VQString& text, int convertNewlines) {
  if (!IsNull()) return vq::Apply(GetStylizedTextBody()->Append(text, convertNewlines));
  const VQRTObject made(new VQStylizedTextBody());
  const VQSTATUS status = static_cast<VQStylizedTextBody*>(made.GetRTObjectBody())->Append(text, convertNewlines);
  if (!VQIsError(status)) Attach(made.GetRTObjectBody(), 0);
  return vq::Apply(status);
}

unsigned long VQStylizedText::GetByteCount() const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetStylizedTextBody()->GetByteCount();
}

unsigned long VQStylizedText::GetCharacterCount() const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetStylizedTextBody()->GetCharacterCount();
}

VQSTATUS VQStylizedText::GetFontStyle(VQFontStyle* style) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetStylizedTextBody()->GetFontStyle(style));
}

VQSTATUS VQStylizedText::SetFontStyle(const VQFontStyle& style) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (style.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(GetStylizedTextBody()->ApplyFontStyle(style, VQFONTMASK_ALL));
}

VQSTATUS VQStylizedText::SplitText(unsigned long offset) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  VQStylizedTextBody& body = *GetStylizedTextBody();
  return vq::Apply(vq::Whole(body, [&] { return body.SplitText(offset); }));
}
