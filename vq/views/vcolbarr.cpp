#include "vq/views/vcolbarr.h"

#include <algorithm>
#include <new>
#include <vector>

#include "vq/views/viewbody.h"

namespace {

constexpr std::uint32_t kStep = 32;
constexpr unsigned long kLooseTitle = 3;  // without case and accents

}  // namespace

VQVFColumnBodyArray::VQVFColumnBodyArray(VQViewFolderBody* owner) : Capacity(0), Count(0), Owner(owner) {}

VQVFColumnBodyArray::~VQVFColumnBodyArray() { Release(); }

VQCLASSID VQVFColumnBodyArray::GetClassID() const { return VQCLASSID_VQVFCOLUMNBODYARRAY; }

VQSTATUS VQVFColumnBodyArray::Reserve(std::uint32_t count) {
  if (count <= Capacity) return VQ_OK;
  const std::uint32_t capacity = (count + kStep - 1) / kStep * kStep;
  std::unique_ptr<VQVFColumnBody*[]> items(new (std::nothrow) VQVFColumnBody*[capacity]());
  if (items == nullptr) return VQERR_INSUFFICIENT_MEMORY;
  std::copy_n(Items.get(), Count, items.get());
  Items = std::move(items);
  Capacity = capacity;
  return VQ_OK;
}

VQSTATUS VQVFColumnBodyArray::Insert(std::uint32_t at, VQVFColumnBody* body) {
  if (at > Count) return VQERR_OUT_OF_RANGE;
  if (body == nullptr) return VQERR_NULL_POINTER;
  if (Count == kMaximum) return VQERR_CANT_ADD_COLUMNS;
  if (VQSTATUS status = Reserve(Count + 1)) return status;
  Shift(at, at + 1);
  Place(at, body);
  Count += 1;
  MarkChanged();
  return VQ_OK;
}

VQSTATUS VQVFColumnBodyArray::Load(VQVFColumnBody* body) {
  if (Count == kMaximum) return VQERR_CANT_ADD_COLUMNS;
  if (VQSTATUS status = Reserve(Count + 1)) return status;
  Place(Count, body);
  Count += 1;
  return VQ_OK;
}

VQSTATUS VQVFColumnBodyArray::InsertNew(std::uint32_t at, std::uint32_t count) {
  if (at > Count || count == 0) return VQERR_OUT_OF_RANGE;
  if (count > kMaximum - Count) return VQERR_CANT_ADD_COLUMNS;
  if (VQSTATUS status = Reserve(Count + count)) return status;
  std::vector<VQVFColumn> made(count);
  for (VQVFColumn& column : made) column = new VQVFColumnBody(Owner);
  Shift(at, at + count);
  for (std::uint32_t i = 0; i < count; ++i) Place(at + i, made[i].GetColumnBody());
  Count += count;
  MarkChanged();
  return VQ_OK;
}

VQSTATUS VQVFColumnBodyArray::Delete(std::uint32_t at, std::uint32_t count) {
  if (count == 0 || at >= Count || count > Count - at) return VQERR_OUT_OF_RANGE;
  const std::vector<VQVFColumnBody*> gone(Items.get() + at, Items.get() + at + count);
  if (count < Count) Shift(at + count, at);
  Count -= count;
  MarkChanged();
  for (VQVFColumnBody* body : gone) LetGo(body);
  return VQ_OK;
}

void VQVFColumnBodyArray::Release() {
  const std::uint32_t count = Count;
  Count = 0;
  for (std::uint32_t i = 0; i < count; ++i) LetGo(Items[i]);
}

VQSTATUS VQVFColumnBodyArray::Find(const VQString& title, std::uint32_t* index) const {
  for (std::uint32_t i = 0; i < Count; ++i) {
    if (VQStringCompare(Items[i]->GetTitle(), title, kLooseTitle) != 0) continue;
    *index = i;
    return VQ_OK;
  }
  return VQERR_NOT_FOUND;
}

bool VQVFColumnBodyArray::HasName(std::string_view name) const {
  return std::any_of(Items.get(), Items.get() + Count,
                     [&](const VQVFColumnBody* column) { return column->GetStoredName() == name; });
}

void VQVFColumnBodyArray::Place(std::uint32_t at, VQVFColumnBody* body) {
  body->AddReference();
  body->SetOwner(Owner);
  body->SetNumber(at);
  Items[at] = body;
}

void VQVFColumnBodyArray::LetGo(VQVFColumnBody* body) {
  body->SetOwner(nullptr);
  body->Release();
}

// A secondary sort follows its column; one by a column that is written over goes.
void VQVFColumnBodyArray::Shift(std::uint32_t from, std::uint32_t to) {
  VQ_ASSERT_TEXT(from != to, "source != dest", "VCOLBARR");
  for (std::uint32_t i = from; i < Count; ++i) Items[i]->SetNumber(to + (i - from));
  for (std::uint32_t i = 0; i < Count; ++i) {
    if (!Items[i]->HasFlag(VIEWCOLUMN_SECOND_SORT)) continue;
    const std::uint32_t second = Items[i]->Extension().SecondarySortColumn;
    if (from <= second) {
      Items[i]->Extension().SecondarySortColumn = static_cast<std::uint16_t>(second + to - from);
    } else if (second >= to) {
      Items[i]->ClearSecondarySort();
    }
  }
  if (from < to) {
    std::copy_backward(Items.get() + from, Items.get() + Count, Items.get() + Count + (to - from));
  } else {
    std::copy(Items.get() + from, Items.get() + Count, Items.get() + to);
  }
}

// Other columns make other rows: selection and sort records are made anew with the design.
void VQVFColumnBodyArray::MarkChanged() {
  Owner->SetState(
      VQViewFolderBody::kDesignChanged | VQViewFolderBody::kColumnsChanged | VQViewFolderBody::kRebuildFormula, true);
  Owner->ForgetTrailer();
  Owner->SetState(VQViewFolderBody::kResponsesColumnKnown | VQViewFolderBody::kColumnsMatched, false);
}
