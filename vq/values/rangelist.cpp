// Lists of 8-byte entries and 16-byte ranges.
#include "vq/values/rangelist.h"

#include <algorithm>
#include <cstring>

#include "engine/engine.h"
#include "engine/records.h"
#include "vq/frame/state.h"

namespace vq {

namespace {

constexpr unsigned long kTypeWord = 2;
constexpr unsigned long kHeaderSize = 4;

using Bytes = std::vector<unsigned char>;

Bytes::iterator At(Bytes& list, unsigned long bytes) { return list.begin() + static_cast<std::ptrdiff_t>(bytes); }

void InsertAt(Bytes* list, unsigned long position, const unsigned char* bytes, unsigned long count) {
  list->insert(At(*list, position), bytes, bytes + count);
}

void EraseAt(Bytes* list, unsigned long position, unsigned long count) {
  list->erase(At(*list, position), At(*list, position + count));
}

const void* CheckedValue(unsigned short single_type, unsigned short type, const void* value, unsigned long length) {
  if (single_type == TYPE_TIME) {
    VQ_ASSERT_TEXT(type == TYPE_TIME || type == TYPE_TIME_RANGE,
                   "vaulttype == TYPE_TIME || vaulttype == TYPE_TIME_RANGE", "VQDTS");
  } else {
    VQ_ASSERT_TEXT(type == TYPE_NUMBER || type == TYPE_NUMBER_RANGE,
                   "vaulttype == TYPE_NUMBER || vaulttype == TYPE_NUMBER_RANGE", "VQNUMBER");
  }
  VQ_ASSERT_TEXT(value != nullptr || length == 0, "value", single_type == TYPE_TIME ? "VQDTS" : "VQNUMBER");
  return value;
}

}  // namespace

RangeListBody::RangeListBody(unsigned short single_type, unsigned short type, const void* value, unsigned long length)
    : VQItemBody(type, CheckedValue(single_type, type, value, length), length), SingleType(single_type) {}

RangeListBody::RangeListBody(unsigned short single_type, VQSlateBody* slate, std::string_view name,
                             const ItemPlace& place)
    : VQItemBody(slate, name, place), SingleType(single_type) {}

VQSTATUS RangeListBody::CheckEditable() const {
  if (const VQSTATUS status = CheckInitialized()) return status;
  return CheckValue();
}

VQSTATUS RangeListBody::ReadLists(Lists* lists) {
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  const unsigned long length = GetValueSize() - kTypeWord;
  if (length == 0) return VQ_OK;
  unsigned char* data = value.Data();
  if (GetType() == SingleType) {
    if (length < kSingleSize) return VQERR_CORRUPTED;
    lists->Singles.assign(data, data + kSingleSize);
    return VQ_OK;
  }
  if (GetType() != ListType()) return VQERR_INCORRECT_ITEM_TYPE;
  if (length < kHeaderSize) return VQERR_CORRUPTED;
  RANGE header{};
  void* cursor = data;
  if (const VQSTATUS status = FromEngine(EngOdsRead(&cursor, ODS_RANGE, &header, 1))) return status;
  const unsigned long singles = header.ListCount * kSingleSize;
  const unsigned long ranges = header.RangeCount * kRangeSize;
  if (kHeaderSize + singles + ranges > length) return VQERR_CORRUPTED;
  const unsigned char* entries = data + kHeaderSize;
  lists->Singles.assign(entries, entries + singles);
  lists->Ranges.assign(entries + singles, entries + singles + ranges);
  return VQ_OK;
}

VQSTATUS RangeListBody::WriteLists(const Lists& lists) {
  if (lists.Singles.empty() && lists.Ranges.empty()) return ReplaceValue(SingleType, nullptr, 0);
  const unsigned long singles = lists.Singles.size() / kSingleSize;
  const unsigned long ranges = lists.Ranges.size() / kRangeSize;
  if (singles > 0xFFFF || ranges > 0xFFFF) return VQERR_OUT_OF_RANGE;
  RANGE header{static_cast<std::uint16_t>(singles), static_cast<std::uint16_t>(ranges)};
  Bytes data(kHeaderSize);
  void* cursor = data.data();
  if (const VQSTATUS status = FromEngine(EngOdsWrite(&cursor, ODS_RANGE, &header, 1))) return status;
  data.insert(data.end(), lists.Singles.begin(), lists.Singles.end());
  data.insert(data.end(), lists.Ranges.begin(), lists.Ranges.end());
  return ReplaceValue(ListType(), data.data(), data.size());
}

VQSTATUS RangeListBody::GetCounts(Counts* counts) {
  Lists lists;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  counts->Singles = lists.Singles.size() / kSingleSize;
  counts->Ranges = lists.Ranges.size() / kRangeSize;
  return VQ_OK;
}

VQSTATUS RangeListBody::ReadEntry(unsigned long index, unsigned char* entry, bool* is_range) {
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  const unsigned long length = GetValueSize() - kTypeWord;
  unsigned long offset = 0;
  *is_range = false;
  if (GetType() == SingleType) {
    if (index != 0 || length == 0) return VQERR_OUT_OF_RANGE;
  } else {
    if (length < kHeaderSize) return VQERR_OUT_OF_RANGE;
    RANGE header{};
    void* cursor = value.Data();
    if (const VQSTATUS status = FromEngine(EngOdsRead(&cursor, ODS_RANGE, &header, 1))) return status;
    const unsigned long singles = header.ListCount;
    if (index >= singles + header.RangeCount) return VQERR_OUT_OF_RANGE;
    *is_range = index >= singles;
    offset = kHeaderSize + std::min(index, singles) * kSingleSize;
    if (*is_range) offset += (index - singles) * kRangeSize;
  }
  const unsigned long size = *is_range ? kRangeSize : kSingleSize;
  if (offset + size > length) return VQERR_CORRUPTED;
  std::memcpy(entry, value.Data() + offset, size);
  return VQ_OK;
}

VQSTATUS RangeListBody::WriteEntry(unsigned long index, const unsigned char* entry, bool is_range) {
  if (const VQSTATUS status = CheckEditable()) return status;
  Lists lists;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  const unsigned long singles = lists.Singles.size() / kSingleSize;
  if (index >= singles + lists.Ranges.size() / kRangeSize) return VQERR_OUT_OF_RANGE;
  if ((index >= singles) != is_range) return VQERR_INAPPROPRIATE;
  if (is_range) {
    std::copy_n(entry, kRangeSize, At(lists.Ranges, (index - singles) * kRangeSize));
  } else {
    std::copy_n(entry, kSingleSize, At(lists.Singles, index * kSingleSize));
  }
  return GetType() == SingleType ? SetSingle(entry) : WriteLists(lists);
}

VQSTATUS RangeListBody::InsertSingles(unsigned long index, const unsigned char* entries, unsigned long count) {
  if (const VQSTATUS status = CheckEditable()) return status;
  Lists lists;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  const auto position = std::min<unsigned long>(index * kSingleSize, lists.Singles.size());
  InsertAt(&lists.Singles, position, entries, count * kSingleSize);
  return WriteLists(lists);
}

VQSTATUS RangeListBody::InsertRanges(unsigned long index, const unsigned char* entries, unsigned long count) {
  if (const VQSTATUS status = CheckEditable()) return status;
  Lists lists;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  const unsigned long singles = lists.Singles.size() / kSingleSize;
  if (index < singles || (index - singles) * kRangeSize > lists.Ranges.size()) return VQERR_OUT_OF_RANGE;
  InsertAt(&lists.Ranges, (index - singles) * kRangeSize, entries, count * kRangeSize);
  return WriteLists(lists);
}

VQSTATUS RangeListBody::InsertAll(unsigned long single_at, unsigned long range_at, RangeListBody& source) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (source.CheckValue() != VQ_OK) return VQERR_UNINITIALIZED_ARGUMENT;
  Lists lists;
  Lists added;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  if (const VQSTATUS status = source.ReadLists(&added)) return status;
  const auto single_byte = std::min<unsigned long>(single_at * kSingleSize, lists.Singles.size());
  const auto range_byte = std::min<unsigned long>(range_at * kRangeSize, lists.Ranges.size());
  InsertAt(&lists.Singles, single_byte, added.Singles.data(), added.Singles.size());
  InsertAt(&lists.Ranges, range_byte, added.Ranges.data(), added.Ranges.size());
  return WriteLists(lists);
}

VQSTATUS RangeListBody::DeleteEntries(unsigned long index, unsigned long count) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (count == 0) return VQERR_INVALID_PARAMETER;
  Lists lists;
  if (const VQSTATUS status = ReadLists(&lists)) return status;
  const unsigned long singles = lists.Singles.size() / kSingleSize;
  const unsigned long total = singles + lists.Ranges.size() / kRangeSize;
  if (index >= total || count > total - index) return VQERR_OUT_OF_RANGE;
  const unsigned long end = index + count;
  const unsigned long first_range = std::max(index, singles) - singles;
  if (end > singles) EraseAt(&lists.Ranges, first_range * kRangeSize, (end - singles - first_range) * kRangeSize);
  if (index < singles) EraseAt(&lists.Singles, index * kSingleSize, (std::min(end, singles) - index) * kSingleSize);
  return WriteLists(lists);
}

VQSTATUS RangeListBody::SetSingle(const unsigned char* entry) {
  if (const VQSTATUS status = CheckEditable()) return status;
  return ReplaceValue(SingleType, entry, kSingleSize);
}

VQSTATUS RangeListBody::SetRange(const unsigned char* entry) {
  if (const VQSTATUS status = CheckEditable()) return status;
  Lists lists;
  lists.Ranges.assign(entry, entry + kRangeSize);
  return WriteLists(lists);
}

VQSTATUS RangeListBody::SetValueOf(RangeListBody& source) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (&source == this) return VQ_OK;
  const VQItemLock value(&source);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  return ReplaceValue(source.GetType(), value.Data(), source.GetValueSize() - kTypeWord);
}

}  // namespace vq
