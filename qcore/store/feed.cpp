#include "qcore/store/feed.h"

#include <algorithm>

#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::uint32_t kSlateStep = 4;
constexpr std::uint32_t kHighestSlate = 0x7FFFFFFF;
constexpr std::uint64_t kDeleted = 1;
constexpr std::uint64_t kGone = 2;
constexpr int kClassAt = 2;

std::uint64_t SeedOf(std::uint64_t number, std::uint64_t here) { return number ^ (here << 32 | here >> 32); }

}  // namespace

bool SlateSet::Add(std::uint32_t id) {
  const std::size_t place = id / kSlateStep;
  if (place >= slates_.size()) slates_.resize(std::max(place + 1, 2 * slates_.size()));
  const bool fresh = !slates_[place];
  slates_[place] = true;
  return fresh;
}

std::vector<std::uint8_t> EncodeFeedBlock(std::span<const FeedRecord> records) {
  const FeedRecord& last = records.back();
  std::vector<std::uint8_t> bytes;
  WireWriter writer(&bytes);
  for (const FeedRecord& record : records) {
    const FeedEntry& entry = record.change.entry;
    writer.PutVarint(last.change.feed - record.change.feed);
    writer.PutVarint(entry.id);
    writer.PutVarint(std::uint64_t{entry.slate_class} << kClassAt | (entry.deleted ? kDeleted : 0) |
                     (record.gone ? kGone : 0));
    writer.PutVarint(last.here - record.here);
  }
  return Sealed(bytes, SeedOf(last.change.feed, last.here));
}

bool DecodeFeedBlock(std::uint64_t number, std::uint64_t here, Bytes stored, std::vector<FeedRecord>* records) {
  Bytes bytes;
  if (!Unseal(stored, SeedOf(number, here), &bytes)) return false;
  WireReader reader(bytes);
  while (!reader.at_end()) {
    const std::uint64_t before = reader.TakeVarint();
    const std::uint64_t id = reader.TakeVarint();
    const std::uint64_t state = reader.TakeVarint();
    const std::uint64_t earlier = reader.TakeVarint();
    if (!reader.good() || before >= number || id > kHighestSlate || state >> kClassAt > UINT16_MAX || earlier > here) {
      return false;
    }
    records->push_back(
        {{number - before,
          {static_cast<std::uint32_t>(id), static_cast<std::uint16_t>(state >> kClassAt), (state & kDeleted) != 0}},
         here - earlier,
         (state & kGone) != 0});
  }
  return true;
}

void KeepLast(std::vector<FeedRecord>* records) {
  SlateSet seen;
  auto kept = records->end();
  for (auto at = records->end(); at != records->begin();) {
    if (seen.Add((--at)->change.entry.id)) *--kept = *at;
  }
  records->erase(records->begin(), kept);
}

}  // namespace qcore
