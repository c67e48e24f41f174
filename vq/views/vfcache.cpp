// VFCache: filling a block, and the rows that it has.
#include "vq/views/vfcache.h"

#include <algorithm>

#include "engine/memory.h"
#include "engine/process.h"
#include "vq/store/storetext.h"
#include "vq/values/vqnumber.h"
#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/ventbody.h"

namespace {

constexpr char kFile[] = "VFCACHE";
constexpr char kLimitKey[] = "$VQCPPAPI_MAX_CACHE_ENTRIES";
constexpr double kHighestLimit = 4294967295.0;

}  // namespace

VFCache::Locked::Locked(VFCache* cache) : Cache(cache) {
  VQ_ASSERT_TEXT(cache->CachePtr == nullptr && cache->CacheHandle != 0, "CachePtr == 0 && CacheHandle", kFile);
  cache->CachePtr = static_cast<const unsigned char*>(EngMemLock(cache->CacheHandle));
  cache->IndexPtr = static_cast<const std::uint32_t*>(EngMemLock(cache->IndexHandle));
  if (cache->CachePtr != nullptr && cache->IndexPtr != nullptr) return;
  Unlock();
  vq::Throw(VQERR_READ_ENTRIES);
}

VFCache::Locked::~Locked() { Unlock(); }

void VFCache::Locked::Unlock() {
  if (Cache->CachePtr != nullptr) EngMemUnlock(Cache->CacheHandle);
  if (Cache->IndexPtr != nullptr) EngMemUnlock(Cache->IndexHandle);
  Cache->CachePtr = nullptr;
  Cache->IndexPtr = nullptr;
}

VFCache::~VFCache() { Clear(); }

void VFCache::Bind(VQVFNavigatorBody* navigator) {
  Navigator = navigator;
  MaxCount = 0xFFFFFFFF;
  try {
    ReadLimit();
  } catch (...) {
    // A text that is no number is as good as none.
    MaxCount = 0xFFFFFFFF;
  }
}

void VFCache::ReadLimit() {
  char text[255];
  const std::uint16_t length = EngEnvGetString(kLimitKey, text, sizeof text);
  if (length == 0) return;
  const double limit = VQNumber(VQString(text, length));
  if (limit >= 0 && limit <= kHighestLimit) MaxCount = static_cast<std::uint32_t>(limit);
}

void VFCache::Clear() {
  if (CacheHandle != 0) EngMemFree(CacheHandle);
  if (IndexHandle != 0) EngMemFree(IndexHandle);
  CacheHandle = IndexHandle = 0;
  CacheSize = 0;
  Count = 0;
  CurrentIndex = FirstIndex = INDEX_UNKNOWN;
  SignalFlags = 0;
}

void VFCache::Close() {
  Clear();
  Navigator = nullptr;
  MaxCount = 0;
}

bool VFCache::KnowsEntryCount(std::uint32_t* count) { return Navigator->GetCount(count) == VQ_OK; }

VQSTATUS VFCache::Fill(const vq::NavigatorMove& move) {
  VQ_ASSERT(MaxCount > 0, kFile);
  COLLECTIONPOSITION position = move.From;
  Navigator->Limit(&position);
  std::uint32_t entries = 0;
  if (VQSTATUS status = Navigator->GetCount(&entries)) return status;
  vq::EntryRows rows;
  const VQSTATUS status =
      Navigator->ReadEntries(&position, move.Skip, move.SkipCount, Navigator->StepCode(move.Backward),
                             std::max(1U, std::min(MaxCount, entries)), Navigator->EntryMask() | ENG_READ_POSITION,
                             &rows.Buffer, &rows.Length, &rows.Skipped, &rows.Returned, &rows.Signals);
  if (status != VQ_OK) return status;
  if (move.MustMove && rows.Skipped == 0) return VQWARN_NOT_FOUND;
  return Adopt(&rows, move);
}

// A read of a find's rows goes on among their peers; what is behind the run is cut off.
VQSTATUS VFCache::RowsInside(const COLLECTIONPOSITION& first, bool backward, std::uint32_t* count) const {
  if (!Navigator->Contains(first)) return VQWARN_NOT_FOUND;
  if (!Navigator->IsFind()) return VQ_OK;
  const COLLECTIONPOSITION& start = *Navigator->StartPosition.GetPosition();
  const std::uint32_t offset = first.Tumbler[start.Level] - start.Tumbler[start.Level];
  *count = std::min(*count, backward ? offset + 1 : Navigator->EntryCount - offset);
  VQ_ASSERT(*count != 0, kFile);
  return VQ_OK;
}

VQSTATUS VFCache::IndexRows(vq::EntryRows* rows, const vq::NavigatorMove& move, std::uint32_t* index,
                            std::uint32_t* count) const {
  const unsigned char* bytes = rows->Lock();
  if (bytes == nullptr || index == nullptr) return VQERR_READ_ENTRIES;
  *count = rows->Returned;
  std::size_t at = 0;
  for (std::uint32_t i = 0; i < *count; ++i) {
    COLLECTIONPOSITION position;
    vq::EntryRow row;
    std::size_t used = 0;
    const VQSTATUS read = vq::ReadRow(bytes + at, rows->Length - at, Navigator->IsFTSearch(), &position, &row, &used);
    if (read != VQ_OK) return VQERR_READ_ENTRIES;
    if (i == 0) {
      if (move.Misses(position)) return VQWARN_NOT_FOUND;
      if (VQSTATUS status = RowsInside(position, move.Backward, count)) return status;
    }
    index[i] = static_cast<std::uint32_t>(at);
    at += used;
  }
  if (move.Backward) std::reverse(index, index + *count);
  return VQ_OK;
}

// The old block stays unless all of the new one is sound.
VQSTATUS VFCache::Adopt(vq::EntryRows* rows, const vq::NavigatorMove& move) {
  ENGHANDLE block = 0;
  const std::uint64_t size = std::uint64_t{rows->Returned} * sizeof(std::uint32_t);
  if (size > 0xFFFFFFFF) return VQERR_INSUFFICIENT_MEMORY;
  if (VQSTATUS status = vq::FromEngine(EngMemAlloc(0, static_cast<std::uint32_t>(size), &block))) return status;
  std::uint32_t count = 0;
  const VQSTATUS status = IndexRows(rows, move, static_cast<std::uint32_t*>(EngMemLock(block)), &count);
  EngMemUnlock(block);
  if (status != VQ_OK) {
    EngMemFree(block);
    return status;
  }
  Clear();
  CacheSize = rows->Length;
  SignalFlags = rows->Signals;
  CacheHandle = rows->Give();
  IndexHandle = block;
  Count = count;
  std::uint32_t entries = 0;
  if (KnowsEntryCount(&entries) && entries == Count) FirstIndex = 0;
  return VQ_OK;
}

std::uint32_t VFCache::IDAt(std::uint32_t index) const { return vq::LoadLong(CachePtr + IndexPtr[index]); }

unsigned VFCache::LevelAt(std::uint32_t index) const {
  const bool scored = Navigator->IsFTSearch();
  return vq::LoadWord(CachePtr + IndexPtr[index] + (scored ? VFFTENTRYDATA_SIZE : VFENTRYDATA_SIZE));
}

bool VFCache::IsMainAt(std::uint32_t index) const {
  return (IDAt(index) & ENG_ROW_NO_DOCUMENT) == 0 && vq::LoadWord(CachePtr + IndexPtr[index] + 6) == 0;
}

bool VFCache::IsUnreadAt(std::uint32_t index) const {
  if ((IDAt(index) & ENG_ROW_NO_DOCUMENT) != 0) return false;
  const bool scored = Navigator->IsFTSearch();
  return vq::LoadWord(CachePtr + IndexPtr[index] + (scored ? VFFTENTRYDATA_SIZE : VFENTRYDATA_SIZE) - 2) != 0;
}

// Order of a row against a place: below 0 when the row is in front.
int VFCache::ComparePlace(std::uint32_t index, const COLLECTIONPOSITION& place) const {
  const bool scored = Navigator->IsFTSearch();
  const unsigned char* bytes = CachePtr + IndexPtr[index] + (scored ? VFFTENTRYDATA_SIZE : VFENTRYDATA_SIZE);
  const unsigned level = vq::LoadWord(bytes);
  for (unsigned i = 0; i <= std::min<unsigned>(level, place.Level); ++i) {
    const std::uint32_t ordinal = vq::LoadLong(bytes + 4 + 4 * i);
    if (ordinal != place.Tumbler[i]) return ordinal < place.Tumbler[i] ? -1 : 1;
  }
  return level == place.Level ? 0 : (level < place.Level ? -1 : 1);
}

VFCache::Landing VFCache::Locate(const COLLECTIONPOSITION& place) const {
  if (ComparePlace(0, place) > 0 || ComparePlace(Count - 1, place) < 0) return kOutside;
  std::uint32_t low = 0;
  std::uint32_t high = Count;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    if (ComparePlace(middle, place) < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < Count && ComparePlace(low, place) == 0 ? low : kNone;
}

VFCache::Landing VFCache::LocateCurrent(const COLLECTIONPOSITION& place) const {
  if (CurrentIndex < Count && ComparePlace(CurrentIndex, place) == 0) return CurrentIndex;
  return Locate(place);
}

VFCache::Landing VFCache::LocateIndex(std::uint32_t index, std::uint32_t last_index,
                                      const COLLECTIONPOSITION& last_place) {
  if (Navigator->IsFTSearch()) {
    // Hits whose documents have left the view since leave gaps in the block.
    COLLECTIONPOSITION hit{};
    hit.Tumbler[0] = index + 1;
    return Locate(hit);
  }
  if (FirstIndex == INDEX_UNKNOWN && last_index > 0) {
    const Landing landing = Locate(last_place);
    if (landing == kNone) return kNone;
    if (IsRow(landing) && landing <= last_index) FirstIndex = last_index - landing;
  }
  const bool inside = FirstIndex != INDEX_UNKNOWN && index >= FirstIndex && index - FirstIndex < Count;
  return inside ? index - FirstIndex : kOutside;
}

VQSTATUS VFCache::CopyOut(std::uint32_t index, VQVFPosition* position, VQVFEntry* entry) const {
  COLLECTIONPOSITION place;
  vq::EntryRow row;
  std::size_t used = 0;
  const std::uint32_t at = IndexPtr[index];
  VQSTATUS status = vq::ReadRow(CachePtr + at, CacheSize - at, Navigator->IsFTSearch(), &place, &row, &used);
  if (status == VQ_OK && entry != nullptr) status = Navigator->MakeEntry(place, row, entry);
  if (status == VQ_OK && position != nullptr) *position = &place;
  return status;
}

VQSTATUS VFCache::GetEntry(const VQVFPosition& position, VQVFEntry* entry, bool no_cache) {
  if (MaxCount == 0) return VQWARN_NO_CACHE;
  if (HasBlock()) {
    const Locked locked(this);
    const Landing landing = Locate(*position.GetPosition());
    if (landing == kNone) return VQWARN_NOT_FOUND;
    if (IsRow(landing)) {
      CurrentIndex = landing;
      return CopyOut(landing, nullptr, entry);
    }
  }
  if (no_cache) {
    Clear();
    return VQWARN_NO_CACHE;
  }
  const vq::NavigatorMove stay{*position.GetPosition(), ENG_GO_CURRENT, 0, false, false, true};
  const VQSTATUS status = Fill(stay);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQERR_INVALID_PARAMETER : status;
  CurrentIndex = 0;
  const Locked locked(this);
  return CopyOut(0, nullptr, entry);
}

VQSTATUS VFCache::GetIndexedEntry(std::uint32_t index, std::uint32_t last_index, VQVFPosition* position,
                                  VQVFEntry* entry) {
  if (MaxCount == 0) return VQWARN_NO_CACHE;
  if (HasBlock()) {
    const Locked locked(this);
    const Landing landing = LocateIndex(index, last_index, *position->GetPosition());
    if (landing == kNone) return VQWARN_NOT_FOUND;
    if (IsRow(landing)) {
      CurrentIndex = landing;
      return CopyOut(landing, position, entry);
    }
  }
  const vq::NavigatorMove move = Navigator->PlanIndex(index, last_index, *position);
  if (VQSTATUS status = Fill(move)) return status;
  CurrentIndex = move.Backward ? Count - 1 : 0;
  if (index >= CurrentIndex) FirstIndex = index - CurrentIndex;
  const Locked locked(this);
  return CopyOut(CurrentIndex, position, entry);
}
