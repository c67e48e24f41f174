#include "vq/richtext/tabstops.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "vq/frame/vqcommon.h"

namespace vq::tabs {

namespace {

constexpr unsigned kMaxAlignment = 3;
constexpr double kSmallestInterval = 2.0;

std::uint32_t AlignmentBits(unsigned index, unsigned alignment) {
  return index < kMaxAlignments ? std::uint32_t{alignment} << (2 * index) : 0;
}

// The bits of all entries below `index`.
std::uint32_t Below(unsigned index) { return index >= kMaxAlignments ? ~0U : (1U << (2 * index)) - 1; }

unsigned InsertionPoint(const CDPABDEFINITION& record, long position) {
  unsigned index = 0;
  while (index < Count(record) && std::labs(record.Tabs[index]) < std::labs(position)) ++index;
  return index;
}

// Whether the types at and above `index` can move up one without losing one.
bool TypesCanShift(const CDPABDEFINITION& record, unsigned index) {
  return index >= kMaxAlignments || Alignment(record, kMaxAlignments - 1) == 0;
}

}  // namespace

unsigned Count(const CDPABDEFINITION& record) { return std::min<unsigned>(record.TabCount, kMaxTabs); }

unsigned Find(const CDPABDEFINITION& record, long position) {
  for (unsigned index = 0; index < Count(record); ++index) {
    if (std::labs(std::labs(record.Tabs[index]) - std::labs(position)) < 2) return index;
  }
  return kAbsent;
}

unsigned Alignment(const CDPABDEFINITION& record, unsigned index) {
  return index < kMaxAlignments ? record.TabTypes >> (2 * index) & 3 : 0;
}

VQSTATUS Add(CDPABDEFINITION* record, long position, unsigned alignment) {
  if (std::labs(position) > kMaxPosition || alignment > kMaxAlignment) return VQERR_INVALID_PARAMETER;
  unsigned count = Count(*record);
  if (count >= kMaxTabs) return VQERR_TABS_FULL;
  if (Find(*record, position) != kAbsent) return VQWARN_TAB_EXISTS;
  unsigned index = InsertionPoint(*record, position);
  if ((index >= kMaxAlignments && alignment != 0) || !TypesCanShift(*record, index)) return VQERR_TABS_FULL;
  std::copy_backward(record->Tabs + index, record->Tabs + count, record->Tabs + count + 1);
  record->Tabs[index] = static_cast<std::int16_t>(position);
  std::uint32_t below = record->TabTypes & Below(index);
  std::uint32_t above = record->TabTypes & ~Below(index);
  record->TabTypes = below | (above << 2) | AlignmentBits(index, alignment);
  record->TabCount = static_cast<std::uint16_t>(count + 1);
  return VQ_OK;
}

VQSTATUS Remove(CDPABDEFINITION* record, long position) {
  unsigned index = Find(*record, position);
  if (index == kAbsent) return VQWARN_NOT_FOUND;
  unsigned count = Count(*record);
  std::copy(record->Tabs + index + 1, record->Tabs + count, record->Tabs + index);
  record->Tabs[count - 1] = 0;
  std::uint32_t below = record->TabTypes & Below(index);
  std::uint32_t above = record->TabTypes & ~Below(index + 1);
  record->TabTypes = below | (above >> 2);
  record->TabCount = static_cast<std::uint16_t>(count - 1);
  return VQ_OK;
}

void RemoveAll(CDPABDEFINITION* record) {
  std::fill_n(record->Tabs, Count(*record), std::int16_t{0});
  record->TabCount = 0;
  record->TabTypes = 0;
}

VQSTATUS SetAlignment(CDPABDEFINITION* record, long position, unsigned alignment) {
  if (alignment > kMaxAlignment) return VQERR_INVALID_PARAMETER;
  unsigned index = Find(*record, position);
  if (index == kAbsent) return VQWARN_NOT_FOUND;
  if (Alignment(*record, index) == alignment) return VQ_OK;
  if (index >= kMaxAlignments) return VQERR_OUT_OF_RANGE;
  std::uint32_t shiftBitmask = AlignmentBits(index, 3);
  std::uint32_t shiftAlignment = AlignmentBits(index, alignment);
  std::uint32_t newTabTypes = (record->TabTypes & ~shiftBitmask) | shiftAlignment;
  VQ_ASSERT_TEXT(newTabTypes != record->TabTypes, "newTabTypes != pabdef.TabTypes", "VQPABDEF");
  VQ_ASSERT((newTabTypes & shiftBitmask) == shiftAlignment, "VQPABDEF");
  record->TabTypes = newTabTypes;
  return VQ_OK;
}

VQSTATUS SetInterval(CDPABDEFINITION* record, double distance, unsigned alignment) {
  if (!(distance >= kSmallestInterval) || std::lround(distance) > kMaxInterval || alignment > kMaxAlignment) {
    return VQERR_INVALID_PARAMETER;
  }
  RemoveAll(record);
  unsigned room = alignment == 0 ? kMaxTabs : kMaxAlignments;
  for (unsigned index = 0; index < room; ++index) {
    long position = std::lround(distance * (index + 1));
    if (position > kMaxInterval) break;
    record->Tabs[index] = static_cast<std::int16_t>(position);
    record->TabTypes |= AlignmentBits(index, alignment);
    record->TabCount = static_cast<std::uint16_t>(index + 1);
  }
  return VQ_OK;
}

}  // namespace vq::tabs
