// VQViewFolder: entries, by the navigator that is built in.
#include <algorithm>
#include <mutex>

#include "engine/collection.h"
#include "vq/values/vqdtime.h"
#include "vq/views/viewbody.h"

namespace {

struct IndexProgress {
  void (*Tell)(void* context, unsigned long done, unsigned long all) = nullptr;
  void* Context = nullptr;
};

std::mutex progress_lock;
IndexProgress index_progress;

void TellIndexProgress(void*, std::uint32_t done, std::uint32_t all) {
  IndexProgress progress;
  {
    const std::lock_guard lock(progress_lock);
    progress = index_progress;
  }
  if (progress.Tell != nullptr) progress.Tell(progress.Context, done, all);
}

}  // namespace

VQSTATUS VQViewFolder::SetIndexProgress(void (*progress)(void* context, unsigned long done, unsigned long all),
                                        void* context) {
  {
    const std::lock_guard lock(progress_lock);
    index_progress = {progress, context};
  }
  return vq::Apply(
      vq::FromEngine(EngCollectionSetProgress(progress != nullptr ? TellIndexProgress : nullptr, nullptr)));
}

VQSTATUS VQViewFolder::CheckEntries(VQViewFolderBody** body) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (Body == nullptr) return VQERR_VIEW_NOT_OPEN;
  *body = GetViewFolderBody();
  if (VQSTATUS status = (*body)->OpenNew()) return status;
  return (*body)->GetNavigatorStatus();
}

VQVFNavigator& VQViewFolder::RequireEntries() const {
  VQViewFolderBody* body = nullptr;
  if (VQSTATUS status = CheckEntries(&body)) vq::Throw(status);
  return body->GetNavigator();
}

// The navigator's operation ends in the throw rule itself.
template <typename Operation>
VQSTATUS VQViewFolder::WithEntries(Operation operation) const {
  VQViewFolderBody* body = nullptr;
  if (VQSTATUS status = CheckEntries(&body)) return vq::Apply(status);
  return operation(body->GetNavigator());
}

template <typename Key>
VQSTATUS VQViewFolder::FindKey(const Key& key, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                               VQVFNavigator* navigator) {
  VQVFFindKeys keys;
  if (VQSTATUS status = keys.Append(key)) return status;
  return FindKeys(keys, options, entry, count, navigator);
}

VQSTATUS VQViewFolder::FindKeys(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFEntry* entry,
                                unsigned long* count, VQVFNavigator* navigator) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.FindKeys(keys, options, entry, count, navigator); });
}

VQSTATUS VQViewFolder::Find(const VQString& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const VQString& key, const VQVFFindOptions& options, VQVFEntry* entry, unsigned long* count,
                            VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const VQDatetime& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const VQDatetime& key, const VQVFFindOptions& options, VQVFEntry* entry,
                            unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const double& key, VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator) {
  return FindKey(key, nullptr, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const double& key, const VQVFFindOptions& options, VQVFEntry* entry, unsigned long* count,
                            VQVFNavigator* navigator) {
  return FindKey(key, &options, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const VQVFFindKeys& keys, VQVFEntry* entry, unsigned long* count,
                            VQVFNavigator* navigator) {
  return FindKeys(keys, nullptr, entry, count, navigator);
}
VQSTATUS VQViewFolder::Find(const VQVFFindKeys& keys, const VQVFFindOptions& options, VQVFEntry* entry,
                            unsigned long* count, VQVFNavigator* navigator) {
  return FindKeys(keys, &options, entry, count, navigator);
}

// A navigator of its own over all entries.
VQSTATUS VQViewFolder::GetEntries(VQVFNavigator* navigator) const { return MakeNavigator(nullptr, 0, navigator); }

VQSTATUS VQViewFolder::MakeNavigator(const VQVFPosition* start, std::uint32_t levels, VQVFNavigator* navigator) const {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckEntries(&body);
  if (status == VQ_OK && navigator == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) {
    const auto flags = static_cast<std::uint32_t>(body->GetOpenFlags() & ~VQVFOPENFLAGS_REBUILD_INDEX);
    status = VQVFNavigatorBody::HandOut(body, start, levels, flags, navigator);
  }
  return vq::Apply(status);
}

VQSTATUS VQViewFolder::GetDescendants(VQVFNavigator* navigator) const {
  VQVFPosition start;
  const VQSTATUS status = GetPosition(&start);
  return status == VQ_OK ? MakeNavigator(&start, 0, navigator) : status;
}

VQSTATUS VQViewFolder::GetDescendants(VQVFNavigator* navigator, unsigned long levels) const {
  VQVFPosition start;
  const VQSTATUS status = GetPosition(&start);
  if (status != VQ_OK) return status;
  if (levels == 0) return vq::Apply(VQERR_OUT_OF_RANGE);
  return MakeNavigator(&start, static_cast<std::uint32_t>(std::min(levels, 32UL)), navigator);
}

VQSTATUS VQViewFolder::GetEntry(VQVFEntry* entry) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.GetEntry(entry); });
}
VQSTATUS VQViewFolder::GetEntry(VQVFEntry* entry, const VQVFPosition& position) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.GetEntry(entry, position); });
}
unsigned long VQViewFolder::GetEntryCount() const { return RequireEntries().GetEntryCount(); }
VQDatabase VQViewFolder::GetEntryDatabase() const { return RequireEntries().GetEntryDatabase(); }

VQSTATUS VQViewFolder::GetIDTable(void** table) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.GetIDTable(table); });
}
VQSTATUS VQViewFolder::GetPosition(VQVFPosition* position) const {
  return WithEntries([&](VQVFNavigator& entries) { return entries.GetPosition(position); });
}
VQSTATUS VQViewFolder::SetPosition(const VQVFPosition& position) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.SetPosition(position); });
}
VQSTATUS VQViewFolder::ResetPosition() {
  return WithEntries([](VQVFNavigator& entries) { return entries.ResetPosition(); });
}
VQSTATUS VQViewFolder::Goto(VQNAVIGATION code, VQVFEntry* entry) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.Goto(code, entry); });
}
VQSTATUS VQViewFolder::Refresh() {
  return WithEntries([](VQVFNavigator& entries) { return entries.Refresh(); });
}
VQSTATUS VQViewFolder::DeleteAllEntries() {
  return WithEntries([](VQVFNavigator& entries) { return entries.DeleteAllEntries(); });
}
VQSTATUS VQViewFolder::DeleteEntries(VQVFEntry* entry, int withDescendants) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.DeleteEntries(entry, withDescendants); });
}
VQSTATUS VQViewFolder::DeleteEntries(const VQVFPosition& position, int withDescendants) {
  return WithEntries([&](VQVFNavigator& entries) { return entries.DeleteEntries(position, withDescendants); });
}
