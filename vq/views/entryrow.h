// One row of a read buffer, as engine/collection.h lays it out for the masks that entries are read with.
#ifndef QUILLON_VQ_VIEWS_ENTRYROW_H
#define QUILLON_VQ_VIEWS_ENTRYROW_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "engine/collection.h"
#include "vq/frame/status.h"

namespace vq {

inline constexpr std::uint32_t kEntryMask =
    ENG_READ_ID | ENG_READ_CLASS | ENG_READ_INDENT | ENG_READ_UNREAD | ENG_READ_SUMMARY;
inline constexpr std::uint32_t kHitMask = kEntryMask | ENG_READ_SCORE;
inline constexpr std::uint32_t kStatisticsMask =
    ENG_READ_SIBLINGS | ENG_READ_CHILDREN | ENG_READ_DESCENDANTS | ENG_READ_UNREAD;
inline constexpr std::uint32_t kStatisticsSize = 14;

struct EntryRow {
  std::uint32_t ID;
  std::uint16_t IndentLevels;
  std::uint16_t FTScore;
  std::uint16_t Unread;
  const unsigned char* Summary;  // in the buffer
  std::uint32_t SummarySize;
};

inline std::uint32_t LoadLong(const unsigned char* bytes) {
  return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16 |
         static_cast<std::uint32_t>(bytes[3]) << 24;
}

// Reads a row at the front of `size` bytes; with a position when one is asked for. *used is the row's length.
// VQERR_CANT_CREATE_ENTRY for a row that leads out of the bytes.
[[nodiscard]] VQSTATUS ReadRow(const unsigned char* bytes, std::size_t size, bool scored, COLLECTIONPOSITION* position,
                               EntryRow* row, std::size_t* used);

// The value, type word first, of the summary's item at `index`, when that item has this name and lies inside `summary`.
bool FindInSummary(std::span<const unsigned char> summary, std::uint16_t index, std::string_view name,
                   std::span<const unsigned char>* value);

}  // namespace vq

#endif
