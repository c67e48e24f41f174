#include "vq/views/entryrow.h"

#include <algorithm>

#include "vq/store/storetext.h"
#include "vq/views/vfcache.h"

namespace vq {

namespace {

constexpr std::size_t kPositionHead = 4;
constexpr std::size_t kSummaryHead = 4;
constexpr std::size_t kItemHead = 4;  // lengths of a name and a value

// The bytes of the position, 0 when it leads out.
std::size_t ReadPosition(const unsigned char* bytes, std::size_t size, COLLECTIONPOSITION* position) {
  if (size < kPositionHead) return 0;
  position->Level = LoadWord(bytes);
  if (position->Level >= ENG_COLLECTION_LEVELS) return 0;
  const std::size_t length = (position->Level + std::size_t{2}) * 4;
  if (size < length) return 0;
  position->MinLevel = bytes[2];
  position->MaxLevel = bytes[3];
  for (unsigned i = 0; i <= position->Level; ++i) position->Tumbler[i] = LoadLong(bytes + kPositionHead + 4 * i);
  return length;
}

}  // namespace

VQSTATUS ReadRow(const unsigned char* bytes, std::size_t size, bool scored, COLLECTIONPOSITION* position, EntryRow* row,
                 std::size_t* used) {
  std::size_t at = scored ? VFFTENTRYDATA_SIZE : VFENTRYDATA_SIZE;
  if (size < at) return VQERR_CANT_CREATE_ENTRY;
  row->ID = LoadLong(bytes);
  row->IndentLevels = LoadWord(bytes + 6);
  row->FTScore = scored ? LoadWord(bytes + 8) : std::uint16_t{0};
  row->Unread = LoadWord(bytes + at - 2);
  if (position != nullptr) {
    const std::size_t length = ReadPosition(bytes + at, size - at, position);
    if (length == 0) return VQERR_CANT_CREATE_ENTRY;
    at += length;
  }
  if (size - at < kSummaryHead) return VQERR_CANT_CREATE_ENTRY;
  row->Summary = bytes + at;
  row->SummarySize = LoadWord(bytes + at);
  if (row->SummarySize < kSummaryHead || size - at < row->SummarySize) return VQERR_CANT_CREATE_ENTRY;
  *used = at + row->SummarySize;
  return VQ_OK;
}

bool FindInSummary(std::span<const unsigned char> summary, std::uint16_t index, std::string_view name,
                   std::span<const unsigned char>* value) {
  if (summary.size() < kSummaryHead) return false;
  const unsigned char* bytes = summary.data();
  const std::size_t items = LoadWord(bytes + 2);
  std::size_t at = kSummaryHead + items * kItemHead;
  if (index >= items || at > summary.size()) return false;
  const unsigned char* head = bytes + kSummaryHead;
  for (; index > 0; --index, head += kItemHead) at += LoadWord(head) + std::size_t{LoadWord(head + 2)};
  const std::size_t name_size = LoadWord(head);
  const std::size_t value_size = LoadWord(head + 2);
  if (at > summary.size() || summary.size() - at < name_size + value_size) return false;
  if (name_size != name.size() || !std::equal(name.begin(), name.end(), reinterpret_cast<const char*>(bytes + at))) {
    return false;
  }
  *value = summary.subspan(at + name_size, value_size);
  return true;
}

}  // namespace vq
