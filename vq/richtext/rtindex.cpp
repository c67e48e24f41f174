// Index values and links of a tree: how children get their places in the order.
#include <algorithm>
#include <utility>

#include "vq/richtext/pabindex.h"
#include "vq/richtext/rtedit.h"
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
    if (gap >= top->EnoughGap()) break;
    if (round == 2) {
      if (gap < 2 || upper - lower < slots) return VQERR_CORRUPTED;
      break;
    }
    // A range that is used up here may still be widened from the top.
    if (this == top) round = 1;
    const VQSTATUS status = round == 0 ? Renumber(next == nullptr) : RenumberTree(next);
    if (round == 1 && status != VQ_OK) return status;
  }
  if (gap > kLargestGap) gap = kWideGap;

  const unsigned long first = countBack ? upper - (slots - 1) * gap : lower + gap;
  const unsigned long last = countBack ? upper - gap : lower + (slots - 1) * gap;
  if (first <= lower || last >= upper) return VQERR_CORRUPTED;
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->Links(*this, *child, *child);
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
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->Links(*this, *child, *child);
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

VQSTATUS VQRTBaseContainerBody::TakeChildren(VQRTBaseContainerBody& from, VQRTObjectBody* before) {
  VQRTObjectBody* const first = from.FirstChild;
  if (!first) return VQ_OK;
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->Links(*this, *first, *from.LastChild);
  from.MarkDirty();
  from.ForgetParagraphs(&from);
  if (VQRichTextBody* owner = from.GetRichTextBody()) owner->NoteStructure();
  vq::PABIndex* index = top->RichText ? top->RichText->FindPABIndex() : nullptr;
  unsigned long slots = 1;
  for (VQRTObjectBody* child = first; child; child = child->Next) {
    child->Parent = this;
    slots += child->GetIndexCount() + 1;
  }
  VQRTObjectBody* const last = from.LastChild;
  first->Previous = before ? before->Previous : LastChild;
  last->Next = before;
  (first->Previous ? first->Previous->Next : FirstChild) = first;
  (before ? before->Previous : LastChild) = last;
  ChildCount += std::exchange(from.ChildCount, 0);
  from.FirstChild = from.LastChild = nullptr;
  for (VQRTBaseContainerBody* each : {this, &from}) {
    if (each->WatchesChildren) each->ChildrenChanged();
  }
  MarkDirty();
  OutdateAround(*first, *top);
  if (top->RichText) top->RichText->NoteStructure();
  if (VQSTATUS status = NumberRun(first, before, slots)) return status;
  for (VQRTObjectBody* child = first; index && child != before; child = child->Next) index->Take(*child);
  return VQ_OK;
}

VQSTATUS VQRTBaseContainerBody::NumberRun(VQRTObjectBody* first, VQRTObjectBody* next) {
  unsigned long slots = 1;
  for (const VQRTObjectBody* child = first; child != next; child = child->Next) slots += child->GetIndexCount() + 1;
  return NumberRun(first, next, slots);
}

VQSTATUS VQRTBaseContainerBody::NumberRun(VQRTObjectBody* first, VQRTObjectBody* next, unsigned long slots) {
  if (IndexValue == kDetached) return NumberChildren();
  const unsigned long value = first->Previous ? first->Previous->GetEndIndexValue() : IndexValue;
  unsigned long gap = ((next ? next->IndexValue : EndIndexValue) - value) / slots;
  if (gap < kSmallestRunGap) {
    if (Parent && IsRoomy()) return Renumber();
    if (!MakeRoom(next, slots)) return NumberChildren();
    gap = ((next ? next->IndexValue : EndIndexValue) - value) / slots;
  }
  NumberFrom(first, next, value, gap);
  return VQ_OK;
}

// Of a tree so large that renumbering could not give much more, less is enough.
unsigned long VQRTBaseContainerBody::EnoughGap() const {
  constexpr unsigned long kPart = 32;  // of what there is for each child
  return std::min(kSmallestGap, (EndIndexValue - IndexValue) / (2UL * ChildCount + 1) / kPart);
}

// A quarter of the range comes to stand free in front of the child, where more is likely to come, and one at the end.
VQSTATUS VQRTBaseContainerBody::RenumberTree(VQRTObjectBody* before) {
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  const VQSTATUS status = top->Renumber(true);
  const unsigned long end = top->LastChild ? top->LastChild->GetEndIndexValue() : 0;
  const unsigned long room = top->EndIndexValue - end;
  if (status == VQ_OK && room > end) MoveUp(before, static_cast<std::uint32_t>(room / 2));
  return status;
}

// What stands behind moves up where the tree has room at its end, so that all else keeps its values.
bool VQRTBaseContainerBody::MakeRoom(VQRTObjectBody* before, unsigned long slots) {
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  const unsigned long room = (top->EndIndexValue - top->LastChild->GetEndIndexValue()) / 2;
  const unsigned long gap = std::min(room / slots, kWideGap);
  if (gap < kSmallestRunGap || (this == top && !before)) return false;
  MoveUp(before, static_cast<std::uint32_t>(gap * slots));
  return true;
}

void VQRTBaseContainerBody::MoveUp(VQRTObjectBody* before, std::uint32_t distance) {
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  VQRTObjectBody* behind = before;
  for (VQRTBaseContainerBody* each = this; !behind && each != top; each = each->Parent) behind = each->Next;
  for (VQRTBaseContainerBody* each = this; each != top; each = each->Parent) each->EndIndexValue += distance;
  for (; behind; behind = top->NextInTree(behind)) {
    behind->IndexValue += distance;
    if (VQRTBaseContainerBody* container = behind->AsBase()) container->EndIndexValue += distance;
  }
}

unsigned long VQRTBaseContainerBody::NumberFrom(VQRTObjectBody* first, const VQRTObjectBody* next, unsigned long value,
                                                unsigned long gap) {
  for (VQRTObjectBody* child = first; child != next; child = child->Next) {
    value += gap;
    child->IndexValue = static_cast<std::uint32_t>(value);
    VQRTBaseContainerBody* container = child->AsBase();
    if (container && container->FirstChild) value = NumberFrom(container->FirstChild, nullptr, value, gap);
    value += gap;
    if (container) container->EndIndexValue = static_cast<std::uint32_t>(value);
  }
  return value;
}

void VQRTBaseContainerBody::NumberAgain() {
  if (IndexValue != kDetached && FirstChild) static_cast<void>(Renumber());
}

bool VQRTBaseContainerBody::IsRoomy() const { return (EndIndexValue - IndexValue) / GetIndexCount() >= kSmallestGap; }

VQSTATUS VQRTBaseContainerBody::NumberChildren() {
  VQRTBaseContainerBody* top = this;
  while (top->Parent) top = top->Parent;
  if (top->IndexValue == kDetached) {
    top->IndexValue = VQRT_MIN_INDEX_VALUE;
    top->EndIndexValue = VQRT_MAX_INDEX_VALUE;
    return top->Renumber();
  }
  return IsRoomy() ? Renumber() : top->Renumber();
}

void VQRTBaseContainerBody::ForgetParagraphs(VQRTObjectBody* leaving) const {
  if (!leaving->HoldsChildren && !vq::PABIndex::Holds(leaving->GetType())) return;
  VQRichTextBody* owner = GetRichTextBody();
  if (vq::PABIndex* index = owner ? owner->FindPABIndex() : nullptr) index->Forget(*leaving);
}

void VQRTBaseContainerBody::Unlink(VQRTObjectBody* child) {
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->Unlinks(*child);
  MarkDirty();
  if (VQRichTextBody* owner = GetRichTextBody()) owner->NoteStructure();
  ForgetParagraphs(child);
  if (child == FirstChild) VQ_ASSERT_TEXT(!child->Previous, "PreviousSibling.IsNull()", "VQRTOBJB");
  UnlinkPointers(child);
}

void VQRTBaseContainerBody::UnlinkPointers(VQRTObjectBody* child) {
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
  NumberFrom(FirstChild, nullptr, IndexValue, gap);
  return VQ_OK;
}

int VQRTBaseContainerBody::Contains(const VQRTObjectBody* object) const {
  while (object && object != this) object = object->GetParent();
  return object == this;
}
