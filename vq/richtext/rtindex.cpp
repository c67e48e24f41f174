// Index values and links of a tree: how children get their places in the order.
#include <limits>

#include "vq/richtext/pabindex.h"
#include "vq/richtext/vqrtbody.h"

namespace {

constexpr std::uint32_t kDetached = static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE);
constexpr unsigned long kSmallestGap = 1000;
constexpr unsigned long kSmallestRunGap = 4;  // where the whole run comes in at once
constexpr unsigned long kLargestGap = 1000000;
constexpr unsigned long kWideGap = 100000;

}  // namespace

VQSTATUS VQRTBaseContainerBody::Link(VQRTObjectBody* child, VQRTObjectBody* previous, VQRTObjectBody* next,
                                     bool countBack) {
  if (child->Parent) return VQERR_RT_ALREADY_MEMBER;
  if (child->Type == VQRTTYPE_RICH_TEXT) return VQERR_CANT_INSERT_TYPE;  // it is its rich text's own
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  if (top == child) return VQERR_INVALID_PARAMETER;
  if (top->IndexValue == kDetached) {  // a tree of its own gets the full range
    top->IndexValue = VQRT_MIN_INDEX_VALUE;
    top->EndIndexValue = VQRT_MAX_INDEX_VALUE;
    if (top->FirstChild) {
      const VQSTATUS status = top->Renumber();
      if (status != VQ_OK) return status;
    }
  }

  const unsigned long slots = child->GetIndexCount() + 2;
  unsigned long lower = 0, upper = 0, gap = 0;
  for (int round = 0;; ++round) {
    lower = previous ? previous->GetEndIndexValue() : IndexValue;
    upper = next ? next->GetIndexValue() : EndIndexValue;
    gap = upper > lower ? (upper - lower) / slots : 0;
    if (gap >= kSmallestGap) break;
    if (round == 2) {
      if (gap < 2 || upper - lower < slots) return VQERR_CORRUPTED;
      break;
    }
    // A range that is used up here may still be widened from the top.
    const VQSTATUS status = round == 0 ? Renumber(next == nullptr) : top->Renumber(next == nullptr);
    if (round == 1 && status != VQ_OK) return status;
  }
  if (gap > kLargestGap) gap = kWideGap;

  const unsigned long first = countBack ? upper - (slots - 1) * gap : lower + gap;
  const unsigned long last = countBack ? upper - gap : lower + (slots - 1) * gap;
  if (first <= lower || last >= upper) return VQERR_CORRUPTED;
  child->IndexValue = static_cast<std::uint32_t>(first);
  LinkPointers(child, previous, next);
  MarkDirty();
  OutdateAround(*child, *top);
  if (top->RichText) top->RichText->NoteStructure();
  if (vq::PABIndex* index = top->RichText ? top->RichText->FindPABIndex() : nullptr) index->Take(*child);
  VQRTBaseContainerBody* container = child->AsBase();
  if (!container) return VQ_OK;
  container->EndIndexValue = static_cast<std::uint32_t>(last);
  if (!container->FirstChild) return VQ_OK;
  const VQSTATUS status = container->Renumber();
  if (status != VQ_OK) Unlink(child);
  return status;
}

void VQRTBaseContainerBody::OutdateAround(const VQRTObjectBody& child, const VQRTBaseContainerBody& top) {
  const VQRTObjectBody* before = top.PreviousInTree(&child);
  const auto outdate = [](const VQRTObjectBody& object) {
    if (vq::RecordSource* source = object.Content.GetSource()) source->SetOutdated();
  };
  if (before) outdate(*before);
  // A record that leads its object may stand in the block before the object's.
  if (before && before->LeadsParent()) outdate(*before->Parent);
}

void VQRTBaseContainerBody::LinkPointers(VQRTObjectBody* child, VQRTObjectBody* previous, VQRTObjectBody* next) {
  child->AddReference();
  child->Parent = this;
  child->Previous = previous;
  child->Next = next;
  (previous ? previous->Next : FirstChild) = child;
  (next ? next->Previous : LastChild) = child;
  ++ChildCount;
  if (WatchesChildren) ChildrenChanged();
}

void VQRTBaseContainerBody::LinkUnnumbered(VQRTObjectBody* child, VQRTObjectBody* next) {
  LinkPointers(child, next ? next->Previous : LastChild, next);
  const VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  MarkDirty();
  OutdateAround(*child, *top);
  if (vq::PABIndex* index = top->RichText ? top->RichText->FindPABIndex() : nullptr) index->Take(*child);
}

VQSTATUS VQRTBaseContainerBody::LinkAll(const std::vector<VQRTObject>& objects, VQRTObjectBody* before) {
  for (const VQRTObject& object : objects) {
    const VQRTObjectBody* body = object.GetRTObjectBody();
    if (body->Parent) return VQERR_RT_ALREADY_MEMBER;
    if (body->Type == VQRTTYPE_RICH_TEXT) return VQERR_CANT_INSERT_TYPE;
  }
  for (const VQRTObject& object : objects) LinkUnnumbered(object.GetRTObjectBody(), before);
  return objects.empty() ? VQ_OK : NumberRun(objects.front().GetRTObjectBody(), before);
}

VQSTATUS VQRTBaseContainerBody::NumberRun(VQRTObjectBody* first, VQRTObjectBody* next) {
  if (IndexValue == kDetached) return NumberChildren();
  unsigned long slots = 1;
  for (const VQRTObjectBody* child = first; child != next; child = child->Next) slots += child->GetIndexCount() + 1;
  unsigned long value = first->Previous ? first->Previous->GetEndIndexValue() : IndexValue;
  const unsigned long gap = ((next ? next->IndexValue : EndIndexValue) - value) / slots;
  if (gap < kSmallestRunGap) return NumberChildren();
  for (VQRTObjectBody* child = first; child != next; child = child->Next) {
    child->IndexValue = static_cast<std::uint32_t>(value + gap);
    value += (child->GetIndexCount() + 1) * gap;
    VQRTBaseContainerBody* container = child->AsBase();
    if (!container) continue;
    container->EndIndexValue = static_cast<std::uint32_t>(value);
    if (!container->FirstChild) continue;
    if (VQSTATUS status = container->Renumber()) return status;
  }
  return VQ_OK;
}

VQSTATUS VQRTBaseContainerBody::NumberChildren() {
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  if (top->IndexValue == kDetached) {
    top->IndexValue = VQRT_MIN_INDEX_VALUE;
    top->EndIndexValue = VQRT_MAX_INDEX_VALUE;
    return top->Renumber();
  }
  const bool roomy = (EndIndexValue - IndexValue) / GetIndexCount() >= kSmallestGap;
  return roomy ? Renumber() : top->Renumber();
}

void VQRTBaseContainerBody::ForgetParagraphs(VQRTObjectBody* leaving) const {
  if (!leaving->HoldsChildren && !vq::PABIndex::Holds(leaving->GetType())) return;
  VQRichTextBody* owner = GetRichTextBody();
  if (vq::PABIndex* index = owner ? owner->FindPABIndex() : nullptr) index->Forget(*leaving);
}

void VQRTBaseContainerBody::Unlink(VQRTObjectBody* child) {
  MarkDirty();
  if (VQRichTextBody* owner = GetRichTextBody()) owner->NoteStructure();
  ForgetParagraphs(child);
  if (child == FirstChild) VQ_ASSERT_TEXT(!child->Previous, "PreviousSibling.IsNull()", "VQRTOBJB");
  (child->Previous ? child->Previous->Next : FirstChild) = child->Next;
  (child->Next ? child->Next->Previous : LastChild) = child->Previous;
  --ChildCount;
  if (WatchesChildren) ChildrenChanged();
  child->Parent = nullptr;
  child->Previous = nullptr;
  child->Next = nullptr;
  child->IndexValue = kDetached;
  if (VQRTBaseContainerBody* container = child->AsBase()) container->EndIndexValue = kDetached;
  child->Release();
}

VQSTATUS VQRTBaseContainerBody::Renumber(bool leaveRoom) {
  const unsigned long count = GetIndexCount();
  unsigned long range = EndIndexValue - IndexValue;
  if (leaveRoom && range / 2 > count) range /= 2;
  const unsigned long gap = range / count;
  if (gap == 0) return VQERR_CORRUPTED;
  unsigned long value = IndexValue;
  for (VQRTObjectBody* child = FirstChild; child; child = child->Next) {
    child->IndexValue = static_cast<std::uint32_t>(value + gap);
    value += gap + child->GetIndexCount() * gap;
    VQRTBaseContainerBody* container = child->AsBase();
    if (!container) continue;
    container->EndIndexValue = static_cast<std::uint32_t>(value);
    if (!container->FirstChild) continue;
    const VQSTATUS status = container->Renumber();
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

int VQRTBaseContainerBody::Contains(const VQRTObjectBody* object) const {
  while (object && object != this) object = object->GetParent();
  return object == this;
}
