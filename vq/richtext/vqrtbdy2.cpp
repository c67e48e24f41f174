// The handle on a rich text: parses on first use, then works on the top container.
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/store/makers.h"
#include "vq/values/vqstring.h"

VQRichText::VQRichText(const VQItem& item) { VQRichText::operator=(item); }

VQRichText::VQRichText(VQRichTextBody* body) : VQItem(body) {}

VQRichText& VQRichText::operator=(const VQItem& item) {
  VQItemBody* body = item.GetItemBody();
  if (body && body->GetClassID() != VQCLASSID_VQRICHTEXTBODY) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
  VQItem::operator=(item);
  return *this;
}

VQCLASSID VQRichText::GetClassID() const { return VQCLASSID_VQRICHTEXT; }

VQSTATUS VQRichText::Create() {
  VQSmartPtr::operator=(new VQRichTextBody());
  return VQ_OK;
}

VQSTATUS VQRichText::Top(VQRTContainerBody** top) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  const VQSTATUS status = GetRichTextBody()->Initialize();
  if (status == VQ_OK) *top = GetRichTextBody()->GetTop();
  return status;
}

VQSTATUS VQRichText::GetTopContainer(VQRTContainer* container) const {
  if (!container) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQRTContainerBody* top = nullptr;
  const VQSTATUS status = Top(&top);
  if (status == VQ_OK) static_cast<VQRTObject&>(*container) = top;
  return vq::Apply(status);
}

unsigned long VQRichText::GetSize() const {
  VQRTContainerBody* top = nullptr;
  vq::ThrowIfError(Top(&top));
  return top->GetSize();
}

VQSTATUS VQRichText::Update() {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetRichTextBody()->Flush());
}

VQRichText& VQRichText::operator<<(const VQString& text) {
  vq::ThrowIfError(Append(text));
  return *this;
}
VQRichText& VQRichText::operator<<(const VQRichText& richText) {
  vq::ThrowIfError(Append(richText));
  return *this;
}
VQRichText& VQRichText::operator<<(const VQRTObject& object) {
  vq::ThrowIfError(Append(object));
  return *this;
}

namespace {

VQRTContainer Container(const VQRichText& text) {
  VQRTContainer top;
  vq::ThrowIfError(text.GetTopContainer(&top));
  return top;
}

}  // namespace

template <typename Operation>
VQSTATUS VQRichText::Run(Operation operation) const {
  VQRTContainerBody* top = nullptr;
  const VQSTATUS status = Top(&top);
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Returned([&] { return vq::Whole(*top, [&] { return operation(*top); }); }));
}

VQSTATUS VQRichText::Append(const VQString& text, int convertNewlines) {
  return Run([&](VQRTContainerBody& body) { return body.Append(text, convertNewlines); });
}

VQSTATUS VQRichText::Append(const VQRichText& richText) {
  return Run([&](VQRTContainerBody& body) { return body.Append(richText); });
}

VQSTATUS VQRichText::Append(const VQRTObject& object, VQRTObject* appended) {
  return Run([&](VQRTContainerBody& body) { return body.Append(object, appended); });
}

VQSTATUS VQRichText::ClearHotspot(VQRTObject* hotspot) {
  return Run([&](VQRTContainerBody& body) { return body.ClearHotspot(hotspot); });
}

VQSTATUS VQRichText::ClearHotspotRange(const VQRTCursor& start, const VQRTCursor& end) {
  return Run([&](VQRTContainerBody& body) { return body.ClearHotspotRange(start, end); });
}

VQSTATUS VQRichText::CreateTable(unsigned long rows, unsigned long columns, VQRTCursor* cursor, VQTable* table) {
  return Run([&](VQRTContainerBody& body) { return body.CreateTable(rows, columns, cursor, table); });
}

VQSTATUS VQRichText::Delete(VQRTCursor* start, VQRTCursor* end) {
  return Run([&](VQRTContainerBody& body) { return body.Delete(start, end); });
}

VQSTATUS VQRichText::Delete(VQRTCursor* start, unsigned long count) {
  return Run([&](VQRTContainerBody& body) { return body.Delete(start, count); });
}

VQSTATUS VQRichText::Delete(VQRTObject* object) {
  return Run([&](VQRTContainerBody& body) { return body.Delete(object); });
}

VQSTATUS VQRichText::FindFirst(VQRTTYPE type, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.FindFirst(type, found); });
}

VQSTATUS VQRichText::FindLast(VQRTTYPE type, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.FindLast(type, found); });
}

VQSTATUS VQRichText::FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.FindNext(from, type, found); });
}

VQSTATUS VQRichText::FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.FindPrevious(from, type, found); });
}

VQSTATUS VQRichText::FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style) const {
  return Run([&](VQRTContainerBody& body) { return body.FindParagraphStyle(object, style); });
}

VQSTATUS VQRichText::FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style) const {
  return Run([&](VQRTContainerBody& body) { return body.FindParagraphStyle(cursor, style); });
}

VQSTATUS VQRichText::GetCursor(VQRTCursor* cursor) const {
  return Run([&](VQRTContainerBody& body) { return body.GetCursor(cursor); });
}

VQSTATUS VQRichText::GetEndCursor(VQRTCursor* cursor) const {
  return Run([&](VQRTContainerBody& body) { return body.GetEndCursor(cursor); });
}

VQSTATUS VQRichText::GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText) const {
  return Run([&](VQRTContainerBody& body) { return body.GetRichText(start, end, richText); });
}

VQSTATUS VQRichText::GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText) const {
  return Run([&](VQRTContainerBody& body) { return body.GetRichText(start, count, richText); });
}

VQSTATUS VQRichText::GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText) const {
  return Run([&](VQRTContainerBody& body) { return body.GetRichText(start, type, richText); });
}

VQSTATUS VQRichText::GetRichText(const VQRTObject& object, VQRichText* richText) const {
  return Run([&](VQRTContainerBody& body) { return body.GetRichText(object, richText); });
}

VQSTATUS VQRichText::Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines) {
  return Run([&](VQRTContainerBody& body) { return body.Insert(text, cursor, convertNewlines); });
}

VQSTATUS VQRichText::Insert(const VQRichText& richText, VQRTCursor* cursor) {
  return Run([&](VQRTContainerBody& body) { return body.Insert(richText, cursor); });
}

VQSTATUS VQRichText::Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted) {
  return Run([&](VQRTContainerBody& body) { return body.Insert(object, cursor, inserted); });
}

int VQRichText::IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection) const {
  return Container(*this).IsSelectionValid(start, end, selection);
}

int VQRichText::IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection) const {
  return Container(*this).IsSelectionValid(start, count, selection);
}

int VQRichText::IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection) const {
  return Container(*this).IsSelectionValid(start, type, selection);
}

int VQRichText::IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) const {
  return Container(*this).IsSelectionValid(object, selection);
}

VQSTATUS VQRichText::MergeNextParagraph(VQRTCursor* cursor) {
  return Run([&](VQRTContainerBody& body) { return body.MergeNextParagraph(cursor); });
}

VQSTATUS VQRichText::MergeParagraphs(VQRTCursor* start, VQRTCursor* end) {
  return Run([&](VQRTContainerBody& body) { return body.MergeParagraphs(start, end); });
}

VQSTATUS VQRichText::MergePreviousParagraph(VQRTCursor* cursor) {
  return Run([&](VQRTContainerBody& body) { return body.MergePreviousParagraph(cursor); });
}

VQSTATUS VQRichText::SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                                  unsigned long mask) {
  return Run([&](VQRTContainerBody& body) { return body.SetFontStyle(start, end, style, mask); });
}

VQSTATUS VQRichText::SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end, const VQParagraphStyle& style) {
  return Run([&](VQRTContainerBody& body) { return body.SetParagraphStyle(start, end, style); });
}

VQSTATUS VQRichText::SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style) {
  return Run([&](VQRTContainerBody& body) { return body.SetParagraphStyle(cursor, style); });
}

VQSTATUS VQRichText::SetValue(const VQString& text, int convertNewlines) {
  return Run([&](VQRTContainerBody& body) { return body.SetValue(text, convertNewlines); });
}

VQSTATUS VQRichText::StartNewParagraph(VQRTCursor* cursor) {
  return Run([&](VQRTContainerBody& body) { return body.StartNewParagraph(cursor); });
}

VQSTATUS VQRichText::GetText(VQString* text) const {
  return Run([&](VQRTContainerBody& body) { return body.GetText(text); });
}

VQSTATUS VQRichText::GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) const {
  return Run([&](VQRTContainerBody& body) { return body.GetText(start, end, text); });
}

VQSTATUS VQRichText::CreateAttachment(const VQString& path, VQRTCursor* cursor, VQRTObject* created) {
  return Run([&](VQRTContainerBody& body) { return body.CreateAttachment(path, cursor, created); });
}

VQSTATUS VQRichText::CreateAttachment(const VQString& path, const VQString& name, VQRTCursor* cursor,
                                      VQRTObject* created) {
  return Run([&](VQRTContainerBody& body) { return body.CreateAttachment(path, name, cursor, created); });
}

VQSTATUS VQRichText::CreateAttachment(const VQAttachment& source, VQRTCursor* cursor, VQRTObject* created) {
  return Run([&](VQRTContainerBody& body) { return body.CreateAttachment(source, cursor, created); });
}

VQSTATUS VQRichText::CreateAttachment(const VQAttachment& source, const VQString& displayText, VQRTCursor* cursor,
                                      VQRTObject* created) {
  return Run([&](VQRTContainerBody& body) { return body.CreateAttachment(source, displayText, cursor, created); });
}

VQSTATUS VQRichText::GetAttachment(const VQString& name, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.GetAttachment(name, found); });
}

VQSTATUS VQRichText::DeleteAttachment(const VQString& name) {
  return Run([&](VQRTContainerBody& body) { return body.DeleteAttachment(name); });
}

VQSTATUS VQRichText::CreateFormField(const VQString& name, VQRTTYPE type, VQRTCursor* cursor, VQRTObject* created) {
  return Run([&](VQRTContainerBody& body) { return body.CreateFormField(name, type, cursor, created); });
}

VQSTATUS VQRichText::GetFormField(const VQString& name, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.GetFormField(name, found); });
}

VQSTATUS VQRichText::DeleteFormField(const VQString& name) {
  return Run([&](VQRTContainerBody& body) { return body.DeleteFormField(name); });
}

VQSTATUS VQRichText::GetRTSubform(const VQString& name, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.GetRTSubform(name, found); });
}

VQSTATUS VQRichText::DeleteRTSubform(const VQString& name) {
  return Run([&](VQRTContainerBody& body) { return body.DeleteRTSubform(name); });
}

VQSTATUS VQRichText::GetOLEObject(const VQString& name, VQRTObject* found) const {
  return Run([&](VQRTContainerBody& body) { return body.GetOLEObject(name, found); });
}

VQSTATUS VQRichText::DeleteOLEObject(const VQString& name) {
  return Run([&](VQRTContainerBody& body) { return body.DeleteOLEObject(name); });
}
