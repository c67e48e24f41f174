// What navigators and their cache share: a planned move, and the rows of one read.
#ifndef QUILLON_VQ_VIEWS_NAVMOVE_H
#define QUILLON_VQ_VIEWS_NAVMOVE_H

#include <algorithm>

#include "engine/collection.h"
#include "engine/memory.h"

namespace vq {

inline constexpr std::uint32_t kToTheEnd = 0xFFFFFFFF;

// `SkipCount` times `Skip` from `From`, which has the navigator's limits.
struct NavigatorMove {
  COLLECTIONPOSITION From;
  unsigned short Skip;
  std::uint32_t SkipCount;
  bool MustMove;  // a move by nothing is no match
  bool Backward;  // a block that is read along ends at the row
  bool Exact;     // with no skip: the row at the place or none, not the next hit that is still there

  bool Misses(const COLLECTIONPOSITION& reached) const {
    if (!Exact || SkipCount != 0) return false;
    return reached.Level != From.Level || !std::equal(From.Tumbler, From.Tumbler + From.Level + 1, reached.Tumbler);
  }
};

// A block of rows, freed with this object.
class EntryRows {
 public:
  EntryRows() = default;
  ~EntryRows() {
    Unlock();
    if (Buffer != 0) EngMemFree(Buffer);
  }
  EntryRows(const EntryRows&) = delete;
  EntryRows& operator=(const EntryRows&) = delete;

  const unsigned char* Lock() {
    if (Bytes == nullptr) Bytes = static_cast<const unsigned char*>(EngMemLock(Buffer));
    return Bytes;
  }
  void Unlock() {
    if (Bytes != nullptr) EngMemUnlock(Buffer);
    Bytes = nullptr;
  }
  // The block becomes the caller's.
  ENGHANDLE Give() {
    Unlock();
    const ENGHANDLE block = Buffer;
    Buffer = 0;
    return block;
  }

  ENGHANDLE Buffer = 0;
  std::uint32_t Length = 0;
  std::uint32_t Skipped = 0;
  std::uint32_t Returned = 0;
  std::uint16_t Signals = 0;

 private:
  const unsigned char* Bytes = nullptr;
};

}  // namespace vq

#endif
