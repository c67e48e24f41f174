// VFCache: the block of rows that a navigator has read last, so that a walk needs one read for each block.
#ifndef QUILLON_VQ_VIEWS_VFCACHE_H
#define QUILLON_VQ_VIEWS_VFCACHE_H

#include "vq/frame/vqcommon.h"

class VQVFEntry;
class VQVFNavigatorBody;
class VQVFPosition;
enum VQNAVIGATION : unsigned int;

inline constexpr std::uint32_t INDEX_UNKNOWN = 0xFFFFFFFF;
// Sizes of a row's fixed head, without and with the score.
inline constexpr unsigned short VFENTRYDATA_SIZE = 10;
inline constexpr unsigned short VFFTENTRYDATA_SIZE = 12;

// The getters answer VQWARN_NO_CACHE when the caller must read for itself.
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
  [[nodiscard]] VQSTATUS GotoEntry(VQNAVIGATION code, VQVFPosition* position, VQVFEntry* entry);

 private:
  ENGHANDLE CacheHandle = 0;
  unsigned char* CachePtr = nullptr;  // null while unlocked
  std::uint32_t Count = 0;
  std::uint32_t CurrentIndex = INDEX_UNKNOWN;
  ENGHANDLE IndexHandle = 0;
  std::uint32_t* IndexPtr = nullptr;  // offsets of the rows in the block
  std::uint32_t MaxCount = 0;         // 0: the cache is off
  VQVFNavigatorBody* Navigator = nullptr;
  std::uint32_t FirstIndex = INDEX_UNKNOWN;
  std::uint16_t SignalFlags = 0;
};

#endif
