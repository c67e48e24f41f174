// VQItemBody: size and form of the value.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/memory.h"
#include "engine/records.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr unsigned long kTypeWord = 2;
constexpr unsigned long kListHeader = 4;
constexpr unsigned long kEntry = 8;
constexpr unsigned long kMaximumValue = 65535;

bool IsRangeType(std::uint16_t type) { return type == TYPE_NUMBER_RANGE || type == TYPE_TIME_RANGE; }
bool IsListType(std::uint16_t type) { return IsRangeType(type) || type == TYPE_TEXT_LIST; }
bool IsSingleType(std::uint16_t type) { return type == TYPE_NUMBER || type == TYPE_TIME; }

// Single and list types of one family differ in bit 0.
std::uint16_t SingleTypeOf(std::uint16_t type) { return IsListType(type) ? type & 0xFFFE : type; }

}  // namespace

unsigned long VQItemBody::GetEntryCount() {
  if (EntryCount != -1) return static_cast<unsigned long>(EntryCount);
  vq::ThrowIfError(CheckValue());
  unsigned long count = ValueSize > kTypeWord ? 1 : 0;
  if (count != 0 && ValueType == TYPE_TEXT_LIST) {
    std::uint16_t entries = 0;
    vq::ThrowIfError(ReadODS(0, ODS_WORD, &entries));
    count = entries;
  } else if (count != 0 && IsRangeType(ValueType)) {
    RANGE header{};
    vq::ThrowIfError(ReadODS(0, ODS_RANGE, &header));
    count = static_cast<unsigned long>(header.ListCount) + header.RangeCount;
    const unsigned long bytes = header.ListCount * kEntry + header.RangeCount * 2 * kEntry;
    if (bytes > ValueSize - kTypeWord - kListHeader) vq::Throw(VQERR_CORRUPTED);
  }
  EntryCount = static_cast<std::int32_t>(count);
  return count;
}

VQSTATUS VQItemBody::SetType(unsigned short type) {
  if (CheckValue() == VQ_OK) {
    const VQItemLock value(this);
    if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
    vq::StoreWord(value.Value(), type);
    SetDirty(1);
  }
  ValueType = type;
  ForgetEntryCount();
  return VQ_OK;
}

VQSTATUS VQItemBody::ReallocateValue(unsigned long size) {
  if (LockCount > 0) return vq::FromEngine(ENG_ERR_MEMORY_LOCKED);
  if (size > UINT32_MAX - ValueBlockID.Block) return VQERR_INVALID_PARAMETER;
  const auto new_size = static_cast<std::uint32_t>(size);
  const ENGSTATUS result = Slate != nullptr
                               ? EngItemReallocate(Slate->GetHandle(), ItemBlockID, &ValueBlockID, new_size)
                               : EngMemRealloc(ValueBlockID.Pool, ValueBlockID.Block + new_size);
  if (result != ENG_OK) return vq::FromEngine(result);
  ValueSize = new_size;
  ForgetEntryCount();
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQItemBody::Resize(unsigned long size) {
  if (size < kTypeWord) return VQERR_INVALID_PARAMETER;
  const VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  if (size == ValueSize) {
    SetDirty(1);
    return VQ_OK;
  }
  return ReallocateValue(size);
}

VQSTATUS VQItemBody::Clear() {
  const VQSTATUS status = Resize(kTypeWord);
  return status == VQ_OK ? SetType(SingleTypeOf(ValueType)) : status;
}

VQSTATUS VQItemBody::Expand(unsigned long offset, unsigned long size) {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  if (offset > ValueSize - kTypeWord) return VQERR_ITEM_OFFSET;
  if (size > UINT32_MAX - ValueSize) return VQERR_INVALID_PARAMETER;
  if (size == 0) return VQ_OK;
  const unsigned long tail = ValueSize - kTypeWord - offset;
  status = ReallocateValue(ValueSize + size);
  if (status != VQ_OK) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  std::memmove(value.Data() + offset + size, value.Data() + offset, tail);
  return VQ_OK;
}

VQSTATUS VQItemBody::Shorten(unsigned long offset, unsigned long size) {
  VQSTATUS status = CheckValue();
  if (status == VQ_OK) status = CheckRange(offset, size);
  if (status != VQ_OK || size == 0) return status;
  // The size changes first: when that fails, the value is whole.
  std::vector<unsigned char> tail(ValueSize - kTypeWord - offset - size);
  status = Read(offset + size, tail.size(), tail.data());
  if (status == VQ_OK) status = ReallocateValue(ValueSize - size);
  return status == VQ_OK ? Write(offset, tail.size(), tail.data()) : status;
}

VQSTATUS VQItemBody::Allocate(unsigned long size, unsigned long offset) {
  if (Slate != nullptr) return VQERR_INVALID_FOR_SLATE_ITEM;
  if (size < kTypeWord || size > kMaximumValue) return VQERR_INVALID_PARAMETER;
  if (offset > size) return VQERR_ITEM_OFFSET;
  ENGHANDLE fresh = 0;
  const ENGSTATUS result = EngMemAlloc(ENG_MEM_SHARED | ENG_MEM_ZERO, static_cast<std::uint32_t>(size), &fresh);
  if (result != ENG_OK) return vq::FromEngine(result);
  auto* bytes = static_cast<unsigned char*>(EngMemLock(fresh));
  if (bytes == nullptr) {
    EngMemFree(fresh);
    return VQERR_INSUFFICIENT_MEMORY;
  }
  if (!vq::IsNullBlock(ValueBlockID)) {
    const VQItemLock old(this);
    if (old.Value() != nullptr) std::memcpy(bytes, old.Value(), std::min<unsigned long>(offset, ValueSize));
  }
  vq::StoreWord(bytes, ValueType);
  EngMemUnlock(fresh);
  Free();
  ValueBlockID = {fresh, 0};
  ValueSize = static_cast<std::uint32_t>(size);
  State |= kOpen | kOwnsValue;
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQItemBody::ReplaceValue(unsigned short type, const void* data, unsigned long length) {
  if (length > UINT32_MAX - kTypeWord) return VQERR_INVALID_PARAMETER;
  if (length != 0 && data == nullptr) return VQERR_NULL_POINTER;
  VQSTATUS status = CheckValue();
  if (status != VQ_OK && Slate != nullptr) return status;
  status = status == VQ_OK ? Resize(kTypeWord + length) : Allocate(kTypeWord + length, 0);
  if (status != VQ_OK) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  vq::StoreWord(value.Value(), type);
  if (length != 0) std::memcpy(value.Data(), data, length);
  ValueType = type;
  ForgetEntryCount();
  SetDirty(1);
  return VQ_OK;
}

bool VQItemBody::IsSingleEntryList() {
  if (!IsRangeType(ValueType) || ValueSize != kTypeWord + kListHeader + kEntry) return false;
  RANGE header{};
  return ReadODS(0, ODS_RANGE, &header) == VQ_OK && header.ListCount == 1 && header.RangeCount == 0;
}

// The size changes first: when that fails, the value is whole.
VQSTATUS VQItemBody::Collapse() {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK || !IsSingleEntryList()) return status;
  unsigned char entry[kEntry];
  status = Read(kListHeader, kEntry, entry);
  if (status == VQ_OK) status = ReallocateValue(kTypeWord + kEntry);
  if (status == VQ_OK) status = Write(0, kEntry, entry);
  return status == VQ_OK ? SetType(SingleTypeOf(ValueType)) : status;
}

VQSTATUS VQItemBody::MakeList() {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK || !IsSingleType(ValueType)) return status;
  const unsigned long length = ValueSize - kTypeWord;
  if (length != 0 && length != kEntry) return VQERR_CORRUPTED;
  status = Expand(0, kListHeader);
  if (status != VQ_OK) return status;
  const RANGE header{static_cast<std::uint16_t>(length != 0 ? 1 : 0), 0};
  status = WriteODS(0, ODS_RANGE, &header);
  return status == VQ_OK ? SetType(ValueType | 1) : status;
}

VQSTATUS VQItemBody::PrepareForSave() {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  const bool empty_single = IsSingleType(ValueType) && ValueSize == kTypeWord;
  const bool expand = (State & kExpandOnSave) != 0 || empty_single;
  status = expand ? MakeList() : Collapse();
  if (status != VQ_OK) return status;
  return IsDirty() ? VQItemBody::Flush() : VQ_OK;
}
