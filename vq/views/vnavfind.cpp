// Finding by key.
#include "engine/collection.h"
#include "engine/status.h"
#include "vq/values/vqdtime.h"
#include "vq/views/viewbody.h"

VQSTATUS VQVFNavigatorBody::FindInCollection(const VQVFFindKeys& keys, unsigned short flags, bool counted,
                                             COLLECTIONPOSITION* position, std::uint32_t* count) {
  const void* table = nullptr;
  if (VQSTATUS status = keys.BuildTable(&table)) return status;
  ENGSTATUS result = EngCollectionFind(Collection, table, flags, position, counted ? count : nullptr);
  if (counted && (result & ENG_ERROR_MASK) == ENG_ERR_COUNT_UNSUPPORTED) {
    *count = 1;
    result = EngCollectionFind(Collection, table, flags, position, nullptr);
  }
  switch (result & ENG_ERROR_MASK) {
    case ENG_ERR_NO_ENTRY:
      return VQWARN_NOT_FOUND;
    case ENG_ERR_TOO_MANY_KEYS:
      return VQERR_TOO_MANY_SEARCH_KEYS;
    default:
      return vq::FromEngine(result);
  }
}

// A key of a category names the category, and the engine gives the first row below.
VQSTATUS VQVFNavigatorBody::StepOutOfCategory(COLLECTIONPOSITION* position, std::uint32_t* count) {
  COLLECTIONPOSITION parent = *position;
  --parent.Level;
  bool category = false;
  if (VQSTATUS status = IsCategoryAt(parent, &category)) return status;
  if (!category) return VQ_OK;
  *position = parent;
  *count = 1;
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::Find(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFPosition* position,
                                 VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  if (Collection == 0) return OpenStatus;
  if (IsSearch()) return VQERR_INVALID_FOR_SEARCH_NAVIGATOR;
  if (keys.GetCount() == 0) return VQERR_UNINITIALIZED_ARGUMENT;
  const unsigned short flags = options != nullptr ? options->GetFlags() : VQVFFindOptions::kDefaultFlags;
  const bool ordered = (flags & VQVFFindOptions::kComparisonMask) != 0;
  COLLECTIONPOSITION found{};
  std::uint32_t matches = 1;
  VQSTATUS status = FindInCollection(keys, flags, count != nullptr || navigator != nullptr, &found, &matches);
  if (status == VQ_OK && keys.GetCount() == 1 && !ordered && found.Level > 0) {
    status = StepOutOfCategory(&found, &matches);
  }
  if (status == VQ_OK && !Contains(found)) status = VQWARN_NOT_FOUND;
  if (count != nullptr) *count = status == VQ_OK ? matches : 0;
  if (status != VQ_OK) return status;
  *position = &found;
  if (entry != nullptr) {
    if (VQSTATUS read = GetEntry(*position, false, entry)) return read;
  }
  if (navigator == nullptr) return VQ_OK;
  // Of several rows an ordered comparison gave the last.
  if (ordered && matches > 1) found.Tumbler[found.Level] -= matches - 1;
  const VQVFPosition start(&found);
  const auto open_flags = static_cast<std::uint32_t>(ViewFolder->GetOpenFlags() | VQViewFolderBody::kFromFind);
  return HandOut(ViewFolder, &start, matches, open_flags, navigator);
}

// The place is LastIndex's no more, also where fetching what was found failed.
VQSTATUS VQVFNavigator::FindKeys(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFEntry* entry,
                                 unsigned long* count, VQVFNavigator* navigator) {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  // *navigator may be this handle, and the only one.
  const VQVFNavigator keep(*this);
  VQVFPosition place = Position;
  status = body->Find(keys, options, &place, entry, count, navigator);
  if (navigator != this && !(place == Position)) LastIndex = 0;
  if (navigator != this) Position = place;
  return vq::Apply(status);
}

template <typename Key>
VQSTATUS VQVFNavigator::FindKey(const Key& key, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                                VQVFNavigator* navigator) {
  VQVFFindKeys keys;
  if (VQSTATUS status = keys.Append(key)) return status;
  return FindKeys(keys, options, entry, count, navigator);
}

VQSTATUS VQVFNavigator::Find(const VQString& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const VQString& key, const VQVFFindOptions& options, VQVFEntry* entry,
                             unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const VQDatetime& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const VQDatetime& key, const VQVFFindOptions& options, VQVFEntry* entry,
                             unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const double& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const double& key, const VQVFFindOptions& options, VQVFEntry* entry, unsigned long* count,
                             VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const VQVFFindKeys& keys, VQVFEntry* entry, unsigned long* count,
                             VQVFNavigator* navigator) {
  return FindKeys(keys, nullptr, entry, count, navigator);
}
VQSTATUS VQVFNavigator::Find(const VQVFFindKeys& keys, const VQVFFindOptions& options, VQVFEntry* entry,
                             unsigned long* count, VQVFNavigator* navigator) {
  return FindKeys(keys, &options, entry, count, navigator);
}
