#include "vq/richtext/vqrtbase.h"

#include "vq/richtext/fontplace.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrtwrit.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQRTBaseContainerBody::VQRTBaseContainerBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset,
                                             std::uint32_t length)
    : VQRTObjectBody(type, source, offset, length),
      ChildCount(0),
      EndIndexValue(static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE)),
      FirstChild(nullptr),
      LastChild(nullptr),
      RichText(nullptr) {
  HoldsChildren = true;
}

VQRTBaseContainerBody::VQRTBaseContainerBody(VQRTTYPE type, unsigned short signature)
    : VQRTObjectBody(type, signature),
      ChildCount(0),
      EndIndexValue(static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE)),
      FirstChild(nullptr),
      LastChild(nullptr),
      RichText(nullptr) {
  HoldsChildren = true;
}

VQRTBaseContainerBody::~VQRTBaseContainerBody() { VQRTBaseContainerBody::Close(); }

VQSTATUS VQRTBaseContainerBody::Close() {
  if (Closed) return VQWARN_NOT_OPEN;
  const VQSTATUS status = VQRTBaseContainerBody::DeleteAllChildren();
  RichText = nullptr;
  EndIndexValue = static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE);
  const VQSTATUS closed = VQRTObjectBody::Close();
  return status != VQ_OK ? status : closed;
}

VQCLASSID VQRTBaseContainerBody::GetClassID() const { return VQCLASSID_VQRTBASECONTAINERBODY; }

VQRTObjectBody* VQRTBaseContainerBody::MakeSame() const {
  return new VQRTBaseContainerBody(GetType(), static_cast<unsigned short>(0));
}

namespace {

template <typename Visit>
VQSTATUS VisitChildren(const VQRTBaseContainerBody& container, Visit visit) {
  for (VQRTObjectBody* child = container.GetFirstChild(); child; child = child->GetNext()) {
    const VQSTATUS status = visit(*child);
    if (VQIsError(status)) return status;
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQRTBaseContainerBody::ConvertLinks(VQRichText* source, VQRichText* target) {
  const auto body = [](const VQRichText* text) { return text && !text->IsNull() ? text->GetRichTextBody() : nullptr; };
  return vq::BringLinks(*this, body(source), body(target));
}

VQSTATUS VQRTBaseContainerBody::CarryObjects(VQSlateBody* slate) {
  return VisitChildren(*this, [&](VQRTObjectBody& child) { return child.CarryObjects(slate); });
}
VQSTATUS VQRTBaseContainerBody::ConvertObjects(VQRichText* source, VQRichText* target) {
  return VisitChildren(*this, [&](VQRTObjectBody& child) { return child.ConvertObjects(source, target); });
}

VQSTATUS VQRTBaseContainerBody::ShiftLinkIndex(int, unsigned long delta) { return vq::ShiftLinks(*this, delta); }

VQSTATUS VQRTBaseContainerBody::ConvertFonts(VQItem* table) {
  return VisitChildren(*this, [&](VQRTObjectBody& child) { return child.ConvertFonts(table); });
}

VQSTATUS VQRTBaseContainerBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (source && source != this && Contains(source)) return VQERR_INVALID_PARAMETER;
  VQSTATUS status = VQRTObjectBody::Copy(source, options);
  if (status != VQ_OK || options == VQRTCOPYOPTIONS_KEEP_LINKS) return status;
  status = VQRTBaseContainerBody::DeleteAllChildren();
  if (status != VQ_OK || options != VQRTCOPYOPTIONS_DEEP || !source->AsBase()) return status;
  for (VQRTObjectBody* child = source->AsBase()->FirstChild; child; child = child->GetNext()) {
    VQRTObjectBody* copy = child->MakeSame();
    const VQRTObject hold(copy);
    status = copy->Copy(child, VQRTCOPYOPTIONS_DEEP);
    if (status == VQ_OK) status = Append(copy);
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

unsigned long VQRTBaseContainerBody::GetEndIndexValue() const { return EndIndexValue; }

unsigned long VQRTBaseContainerBody::GetIndexCount() const {
  unsigned long count = 1;
  for (const VQRTObjectBody* child = FirstChild; child; child = child->GetNext()) count += child->GetIndexCount() + 1;
  return count;
}

VQSTATUS VQRTBaseContainerBody::GetText(VQString* text) {
  if (!text) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  return vq::CollectText(*this, nullptr, nullptr, text);
}

VQSTATUS VQRTBaseContainerBody::GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) {
  if (!text) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!start.IsValid(this) || !end.IsValid(this)) return VQERR_CURSOR_INVALID;
  if (start > end) return VQERR_CURSOR_ORDER;
  const vq::TextPlace from(start), to(end);
  if (vq::EnclosingTable(from.Node) != vq::EnclosingTable(to.Node)) return VQERR_RT_SELECTION_INVALID;
  if (!vq::IsTextPlace(from.Node) || !vq::IsTextPlace(to.Node)) return VQERR_CELL_CHILD;
  return vq::CollectText(*this, &from, &to, text);
}

VQSTATUS VQRTBaseContainerBody::RemoveThis(int keepInTree) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!Parent) return VQERR_RT_NOT_MEMBER;
  if (!keepInTree) {
    const VQSTATUS status = DeleteAllChildren();
    if (status != VQ_OK) return status;
    VQ_ASSERT_TEXT(!FirstChild, "FirstChild.IsNull()", "VQRTOBJB");
  }
  for (VQRTObjectBody* object = this; object; object = NextInTree(object)) object->KeepContent();
  Parent->Unlink(this);
  return VQ_OK;
}

VQSTATUS VQRTBaseContainerBody::SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                                             unsigned long mask) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!start.IsValid() || !end.IsValid()) return VQERR_CURSOR_INVALID;
  if (!Contains(start.GetElementBody()) || !Contains(end.GetElementBody())) return VQERR_RT_NOT_MEMBER;
  if (start > end) return VQERR_INVALID_PARAMETER;
  const vq::TextPlace from(start), to(end);
  vq::FontGuard fonts(GetRichTextBody());
  for (VQRTObjectBody *object = from.Node, *next; object; object = next) {
    next = NextInTree(object);
    if (object->GetType() != VQRTTYPE_STYLIZED_TEXT) continue;
    // The run may be split, and may lose its style extension: both are its own work.
    if (VQRTObjectBody* extension = object->AsBase()->GetLastChild()) next = NextInTree(extension);
    if (object != from.Node && object->IsLeftOf(from.Node)) continue;
    if (object != to.Node && to.Node->IsLeftOf(object)) break;
    const VQSTATUS status = object->SetFontStyle(start, end, style, mask);
    if (VQIsError(status)) return status;
    if (object == to.Node) break;
  }
  fonts.Keep();
  return VQ_OK;
}

unsigned long VQRTBaseContainerBody::GetSize() const {
  unsigned long size = GetRecordSize();
  for (const VQRTObjectBody* child = FirstChild; child; child = child->GetNext()) size += child->GetSize();
  return size;
}

int VQRTBaseContainerBody::IsValid() const {
  if (!VQRTObjectBody::IsValid()) return 0;
  for (const VQRTObjectBody* child = FirstChild; child; child = child->GetNext()) {
    if (!child->IsValid()) return 0;
  }
  return 1;
}

VQSTATUS VQRTBaseContainerBody::SetDirty(int dirty) {
  if (!dirty) {
    const VQSTATUS status = VisitChildren(*this, [](VQRTObjectBody& child) { return child.SetDirty(0); });
    if (status != VQ_OK) return status;
  }
  return VQRTObjectBody::SetDirty(dirty);
}

VQSTATUS VQRTBaseContainerBody::Update(vq::RecordWriter& writer) {
  for (VQRTObjectBody* child = FirstChild; child && child->LeadsParent(); child = child->GetNext()) {
    const VQSTATUS status = child->Update(writer);
    if (status != VQ_OK) return status;
  }
  return writer.Add(*this);
}

VQSTATUS VQRTBaseContainerBody::AppendChild(VQRTObject* child) {
  if (!child || child->IsNull()) return VQERR_INVALID_PARAMETER;
  VQ_ASSERT_TEXT(!child->HasOffset(), "!inputChild->IsType(VQRTTYPE_CHAR)", "VQRTOBJB");
  return Append(child->GetRTObjectBody());
}

VQSTATUS VQRTBaseContainerBody::Append(VQRTObjectBody* child) {
  if (!child) return VQERR_INVALID_PARAMETER;
  if (Closed || child->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (!LastChild && ChildCount != 0) return VQERR_RT_INVALID;
  return Link(child, LastChild, nullptr, false);
}

VQSTATUS VQRTBaseContainerBody::GetCursor(VQRTCursor* cursor) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  VQRTObject first;
  const VQSTATUS status = FindFirst(VQRTTYPE_ELEMENT, &first);
  if (status != VQ_OK) return status;
  return cursor->Assign(VQRTElement(first), 0);
}

int VQRTBaseContainerBody::HasChildren() const { return ChildCount != 0; }

VQSTATUS VQRTBaseContainerBody::DeleteAllChildren() {
  if (!FirstChild) return VQ_OK;
  if (vq::Edit::Of(*this)) return CloseChildren();
  MarkDirty();
  ForgetParagraphs(this);
  if (WatchesChildren) ChildrenChanged();
  while (VQRTObjectBody* child = FirstChild) {
    FirstChild = child->Next;
    if (FirstChild) FirstChild->Previous = nullptr;
    --ChildCount;
    child->Parent = nullptr;
    child->Next = nullptr;
    child->IndexValue = static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE);
    if (child->GetRefCount() > 1) child->Close();
    child->Release();
  }
  LastChild = nullptr;
  return VQ_OK;
}

// One after the other, so that they can come back.
VQSTATUS VQRTBaseContainerBody::CloseChildren() {
  while (FirstChild) {
    const VQRTObject child(FirstChild);
    const VQSTATUS status = child.GetRTObjectBody()->Close();
    if (VQIsError(status)) return status;
    if (child.GetRTObjectBody() == FirstChild) Unlink(FirstChild);
  }
  return VQ_OK;
}

VQRTElementBody::VQRTElementBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTBaseContainerBody(type, source, offset, length) {}

VQRTElementBody::VQRTElementBody(VQRTTYPE type, unsigned short signature) : VQRTBaseContainerBody(type, signature) {}

VQCLASSID VQRTElementBody::GetClassID() const { return VQCLASSID_VQRTELEMENTBODY; }

VQRTObjectBody* VQRTElementBody::MakeSame() const {
  return new VQRTElementBody(GetType(), static_cast<unsigned short>(0));
}
