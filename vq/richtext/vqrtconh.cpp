// The handle on a container: checks, then the body's operation.
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrtobj.h"
#include "vq/values/vqstring.h"

VQRTContainer::VQRTContainer(const VQRTObject& object) {
  if (object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  VQRTContainer::ValidateRTType(object.GetRTObjectBody());
  Attach(object.GetRTObjectBody(), 0);
}

VQCLASSID VQRTContainer::GetClassID() const { return VQCLASSID_VQRTCONTAINER; }

void VQRTContainer::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_CONTAINER)) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQRTContainerBody* VQRTContainer::GetRTContainerBody() const { return static_cast<VQRTContainerBody*>(Body); }

namespace {

template <typename Operation>
VQSTATUS Run(const VQRTContainer& container, Operation operation) {
  if (container.IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  VQRTContainerBody* body = container.GetRTContainerBody();
  if (body->IsClosed()) return vq::Apply(VQERR_OBJECT_CLOSED);
  return vq::Apply(vq::Returned([&] { return vq::Whole(*body, [&] { return operation(*body); }); }));
}

}  // namespace

VQRTContainer& VQRTContainer::operator<<(const VQString& text) {
  vq::ThrowIfError(Append(text));
  return *this;
}
VQRTContainer& VQRTContainer::operator<<(const VQRichText& richText) {
  vq::ThrowIfError(Append(richText));
  return *this;
}
VQRTContainer& VQRTContainer::operator<<(const VQRTObject& object) {
  vq::ThrowIfError(Append(object));
  return *this;
}

VQSTATUS VQRTContainer::Append(const VQString& text, int convertNewlines) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Append(text, convertNewlines); });
}

VQSTATUS VQRTContainer::Append(const VQRichText& richText) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Append(richText); });
}

VQSTATUS VQRTContainer::Append(const VQRTObject& object, VQRTObject* appended) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Append(object, appended); });
}

VQSTATUS VQRTContainer::ClearHotspot(VQRTObject* hotspot) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.ClearHotspot(hotspot); });
}

VQSTATUS VQRTContainer::ClearHotspotRange(const VQRTCursor& start, const VQRTCursor& end) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.ClearHotspotRange(start, end); });
}

VQSTATUS VQRTContainer::CreateTable(unsigned long rows, unsigned long columns, VQRTCursor* cursor, VQTable* table) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.CreateTable(rows, columns, cursor, table); });
}

VQSTATUS VQRTContainer::Delete(VQRTCursor* start, VQRTCursor* end) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Delete(start, end); });
}

VQSTATUS VQRTContainer::Delete(VQRTCursor* start, unsigned long count) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Delete(start, count); });
}

VQSTATUS VQRTContainer::Delete(VQRTObject* object) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Delete(object); });
}

VQSTATUS VQRTContainer::FindFirst(VQRTTYPE type, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindFirst(type, found); });
}

VQSTATUS VQRTContainer::FindLast(VQRTTYPE type, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindLast(type, found); });
}

VQSTATUS VQRTContainer::FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindNext(from, type, found); });
}

VQSTATUS VQRTContainer::FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindPrevious(from, type, found); });
}

VQSTATUS VQRTContainer::FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindParagraphStyle(object, style); });
}

VQSTATUS VQRTContainer::FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.FindParagraphStyle(cursor, style); });
}

VQSTATUS VQRTContainer::GetCursor(VQRTCursor* cursor) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetCursor(cursor); });
}

VQSTATUS VQRTContainer::GetEndCursor(VQRTCursor* cursor) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetEndCursor(cursor); });
}

VQSTATUS VQRTContainer::GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetRichText(start, end, richText); });
}

VQSTATUS VQRTContainer::GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetRichText(start, count, richText); });
}

VQSTATUS VQRTContainer::GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetRichText(start, type, richText); });
}

VQSTATUS VQRTContainer::GetRichText(const VQRTObject& object, VQRichText* richText) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetRichText(object, richText); });
}

VQSTATUS VQRTContainer::Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Insert(text, cursor, convertNewlines); });
}

VQSTATUS VQRTContainer::Insert(const VQRichText& richText, VQRTCursor* cursor) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Insert(richText, cursor); });
}

VQSTATUS VQRTContainer::Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.Insert(object, cursor, inserted); });
}

VQSTATUS VQRTContainer::MergeNextParagraph(VQRTCursor* cursor) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.MergeNextParagraph(cursor); });
}

VQSTATUS VQRTContainer::MergeParagraphs(VQRTCursor* start, VQRTCursor* end) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.MergeParagraphs(start, end); });
}

VQSTATUS VQRTContainer::MergePreviousParagraph(VQRTCursor* cursor) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.MergePreviousParagraph(cursor); });
}

VQSTATUS VQRTContainer::SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                                     unsigned long mask) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.SetFontStyle(start, end, style, mask); });
}

VQSTATUS VQRTContainer::SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end,
                                          const VQParagraphStyle& style) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.SetParagraphStyle(start, end, style); });
}

VQSTATUS VQRTContainer::SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.SetParagraphStyle(cursor, style); });
}

VQSTATUS VQRTContainer::SetValue(const VQString& text, int convertNewlines) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.SetValue(text, convertNewlines); });
}

VQSTATUS VQRTContainer::StartNewParagraph(VQRTCursor* cursor) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.StartNewParagraph(cursor); });
}

VQSTATUS VQRTContainer::CreateAttachment(const VQString& path, VQRTCursor* cursor, VQRTObject* created) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.CreateAttachment(path, cursor, created); });
}

VQSTATUS VQRTContainer::CreateAttachment(const VQString& path, const VQString& name, VQRTCursor* cursor,
                                         VQRTObject* created) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.CreateAttachment(path, name, cursor, created); });
}

VQSTATUS VQRTContainer::CreateAttachment(const VQAttachment& source, VQRTCursor* cursor, VQRTObject* created) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.CreateAttachment(source, cursor, created); });
}

VQSTATUS VQRTContainer::CreateAttachment(const VQAttachment& source, const VQString& displayText, VQRTCursor* cursor,
                                         VQRTObject* created) {
  return Run(*this,
             [&](VQRTContainerBody& body) { return body.CreateAttachment(source, displayText, cursor, created); });
}

VQSTATUS VQRTContainer::GetAttachment(const VQString& name, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetAttachment(name, found); });
}

VQSTATUS VQRTContainer::DeleteAttachment(const VQString& name) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.DeleteAttachment(name); });
}

int VQRTContainer::CanInsertType(VQRTTYPE type) const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetRTContainerBody()->CanInsertType(type);
}

namespace {

VQRTContainerBody& Open(const VQRTContainer& container) {
  if (container.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  VQRTContainerBody& body = *container.GetRTContainerBody();
  if (body.IsClosed()) vq::Throw(VQERR_OBJECT_CLOSED);
  return body;
}

}  // namespace

int VQRTContainer::IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection) const {
  return Open(*this).IsSelectionValid(start, end, selection);
}

int VQRTContainer::IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection) const {
  return Open(*this).IsSelectionValid(start, count, selection);
}

int VQRTContainer::IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection) const {
  return Open(*this).IsSelectionValid(start, type, selection);
}

int VQRTContainer::IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) const {
  return Open(*this).IsSelectionValid(object, selection);
}

VQSTATUS VQRTContainer::CreateFormField(const VQString& name, VQRTTYPE type, VQRTCursor* cursor, VQRTObject* created) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.CreateFormField(name, type, cursor, created); });
}

VQSTATUS VQRTContainer::GetFormField(const VQString& name, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetFormField(name, found); });
}

VQSTATUS VQRTContainer::DeleteFormField(const VQString& name) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.DeleteFormField(name); });
}

VQSTATUS VQRTContainer::GetRTSubform(const VQString& name, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetRTSubform(name, found); });
}

VQSTATUS VQRTContainer::DeleteRTSubform(const VQString& name) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.DeleteRTSubform(name); });
}

VQSTATUS VQRTContainer::GetOLEObject(const VQString& name, VQRTObject* found) const {
  return Run(*this, [&](VQRTContainerBody& body) { return body.GetOLEObject(name, found); });
}

VQSTATUS VQRTContainer::DeleteOLEObject(const VQString& name) {
  return Run(*this, [&](VQRTContainerBody& body) { return body.DeleteOLEObject(name); });
}
