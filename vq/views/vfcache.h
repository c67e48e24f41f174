// VFCache: the block of rows that a navigator has read last, so that a walk needs one read for each block.
#ifndef QUILLON_VQ_VIEWS_VFCACHE_H
#define QUILLON_VQ_VIEWS_VFCACHE_H

#include "vq/frame/vqcommon.h"

struct COLLECTIONPOSITION;
class VQVFEntry;
class VQVFNavigatorBody;
class VQVFPosition;
enum VQNAVIGATION : unsigned int;
namespace vq {
class EntryRows;
struct NavigatorMove;
}  // namespace vq

inline constexpr std::uint32_t INDEX_UNKNOWN = 0xFFFFFFFF;
// Sizes of a row's fixed head, without and with the score.
inline constexpr unsigned short VFENTRYDATA_SIZE = 10;
inline constexpr unsigned short VFFTENTRYDATA_SIZE = 12;

// The getters answer VQWARN_NO_CACHE when the caller must read for itself. Rows stand in the navigator's order.
class VFCache {
 public:
  VFCache() = default;
  ~VFCache();
  VFCache(const VFCache&) = delete;
  VFCache& operator=(const VFCache&) = delete;

  // Sets the limit of rows a block from the session's settings.
  void Bind(VQVFNavigatorBody* navigator);
  // Drops the block and keeps the limit.
  void Clear();
  void Close();
  [[nodiscard]] VQSTATUS GetEntry(const VQVFPosition& position, VQVFEntry* entry, bool no_cache);
  [[nodiscard]] VQSTATUS GetIndexedEntry(std::uint32_t index, std::uint32_t last_index, VQVFPosition* position,
                                         VQVFEntry* entry);
  // The code is one that VQVFNavigatorBody::Translate gave.
  [[nodiscard]] VQSTATUS GotoEntry(VQNAVIGATION code, VQVFPosition* position, VQVFEntry* entry);

 private:
  // The block in memory, for one operation.
  class Locked {
   public:
    explicit Locked(VFCache* cache);
    ~Locked();
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

   private:
    void Unlock();
    VFCache* Cache;
  };

  // Where a place is, or a move leads to: a row's index, or one of these.
  using Landing = std::uint32_t;
  static constexpr Landing kUnclear = 0xFFFFFFFF;  // the block can't tell
  static constexpr Landing kOutside = 0xFFFFFFFE;  // to be read from the engine
  static constexpr Landing kNone = 0xFFFFFFFD;     // there is no such row
  static bool IsRow(Landing landing) { return landing < kNone; }

  bool HasBlock() const { return CacheHandle != 0; }
  void ReadLimit();
  [[nodiscard]] VQSTATUS Fill(const vq::NavigatorMove& move);
  [[nodiscard]] VQSTATUS Adopt(vq::EntryRows* rows, const vq::NavigatorMove& move);
  // The number of rows that are the navigator's goes to *count, their offsets in order to `index`.
  [[nodiscard]] VQSTATUS IndexRows(vq::EntryRows* rows, const vq::NavigatorMove& move, std::uint32_t* index,
                                   std::uint32_t* count) const;
  [[nodiscard]] VQSTATUS RowsInside(const COLLECTIONPOSITION& first, bool backward, std::uint32_t* count) const;
  // The operations below need the block locked.
  Landing Locate(const COLLECTIONPOSITION& place) const;
  Landing LocateCurrent(const COLLECTIONPOSITION& place) const;
  Landing LocateIndex(std::uint32_t index, std::uint32_t last_index, const COLLECTIONPOSITION& last_place);
  Landing Navigate(VQNAVIGATION code);
  Landing GoToEnd(VQNAVIGATION code);
  Landing Scan(VQNAVIGATION code, bool backward);
  bool IsNavigatorEdge(bool backward);
  bool KnowsEntryCount(std::uint32_t* count);
  int ComparePlace(std::uint32_t index, const COLLECTIONPOSITION& place) const;
  unsigned LevelAt(std::uint32_t index) const;
  std::uint32_t IDAt(std::uint32_t index) const;
  bool IsMainAt(std::uint32_t index) const;
  bool IsUnreadAt(std::uint32_t index) const;
  [[nodiscard]] VQSTATUS CopyOut(std::uint32_t index, VQVFPosition* position, VQVFEntry* entry) const;

  ENGHANDLE CacheHandle = 0;
  const unsigned char* CachePtr = nullptr;  // null while unlocked
  std::uint32_t CacheSize = 0;
  std::uint32_t Count = 0;
  std::uint32_t CurrentIndex = INDEX_UNKNOWN;
  ENGHANDLE IndexHandle = 0;                // offsets of the rows in the block
  const std::uint32_t* IndexPtr = nullptr;  // null while unlocked
  std::uint32_t MaxCount = 0;               // 0: the cache is off
  VQVFNavigatorBody* Navigator = nullptr;
  std::uint32_t FirstIndex = INDEX_UNKNOWN;  // ordinal of the block's first row in the navigator
  std::uint16_t SignalFlags = 0;
};

#endif
