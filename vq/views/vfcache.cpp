#include "vq/views/vfcache.h"

#include "engine/memory.h"
#include "engine/process.h"
#include "vq/values/vqnumber.h"
#include "vq/views/vnavbody.h"

namespace {

constexpr const char* kLimitKey = "$VQCPPAPI_MAX_CACHE_ENTRIES";
constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

// A text that is no number leaves the default.
std::uint32_t LimitOf(const VQString& text) {
  try {
    const double limit = VQNumber(text);
    return limit >= 0 && limit <= 4294967295.0 ? static_cast<std::uint32_t>(limit) : kNoLimit;
  } catch (VQSTATUS) {
    return kNoLimit;
  }
}

}  // namespace

VFCache::~VFCache() { Close(); }

void VFCache::Clear() {
  if (CacheHandle != 0) EngMemFree(CacheHandle);
  if (IndexHandle != 0) EngMemFree(IndexHandle);
  CacheHandle = IndexHandle = 0;
  Count = 0;
  CurrentIndex = FirstIndex = INDEX_UNKNOWN;
  SignalFlags = 0;
}

void VFCache::Close() {
  Clear();
  Navigator = nullptr;
  MaxCount = 0;
}

void VFCache::Bind(VQVFNavigatorBody* navigator) {
  Navigator = navigator;
  MaxCount = kNoLimit;
  char text[255];
  const std::uint16_t length = EngEnvGetString(kLimitKey, text, sizeof text);
  if (length != 0) MaxCount = LimitOf(VQString(text, length));
}
