#include "vq/views/vfobserver.h"

#include "engine/collection.h"
#include "engine/memory.h"
#include "vq/views/navmove.h"
#include "vq/views/viewbody.h"

namespace {

VQVFENTRYTYPE TypeOf(const COLLECTIONCHANGE& change) {
  if ((change.ID & ENG_ROW_TOTAL) != 0 && (change.ID & ENG_ROW_NO_DOCUMENT) != 0) return VQVFENTRYTYPE_TOTAL;
  if ((change.ID & ENG_ROW_NO_DOCUMENT) != 0) return VQVFENTRYTYPE_CATEGORY;
  return change.Indent == 0 ? VQVFENTRYTYPE_MAIN_TOPIC : VQVFENTRYTYPE_RESPONSE;
}

VQVFChange MakeChange(const COLLECTIONCHANGE& change) {
  const bool gone = change.Position.Level == 0 && change.Position.Tumbler[0] == 0;
  return {static_cast<VQVFCHANGEKIND>(change.Kind),
          TypeOf(change),
          change.ID,
          change.Indent,
          gone,
          VQVFPosition(&change.Position)};
}

}  // namespace

VQVFObserver::VQVFObserver() : Since(0) {}

VQSTATUS VQVFObserver::Register(const VQViewFolder& view) {
  if (view.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  VQVFNavigator entries;
  VQSTATUS status = view.GetEntries(&entries);
  if (status != VQ_OK) return status;
  std::uint64_t now = 0;
  ENGHANDLE none = 0;
  std::uint32_t count = 0;
  int complete = 0;
  status = vq::FromEngine(
      EngCollectionGetChanges(entries.GetNavigatorBody()->GetCollectionHandle(), &now, &none, &count, &complete));
  if (status != VQ_OK) return vq::Apply(status);
  Entries = entries;
  Since = now;
  return VQ_OK;
}

VQSTATUS VQVFObserver::Unregister() {
  if (!IsRegistered()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  Entries = static_cast<VQVFNavigatorBody*>(nullptr);
  Since = 0;
  return VQ_OK;
}

VQSTATUS VQVFObserver::Read(std::vector<VQVFChange>* changes, int* complete) {
  VQVFNavigatorBody* body = Entries.GetNavigatorBody();
  if (VQSTATUS status = body->GetOpenStatus()) return status;
  const ENGHANDLE collection = body->GetCollectionHandle();
  std::uint64_t since = Since;
  vq::EntryRows block;
  ENGSTATUS result = EngCollectionUpdate(collection);
  if (result == 0) result = EngCollectionGetChanges(collection, &since, &block.Buffer, &block.Returned, complete);
  if (result != 0) return vq::FromEngine(result);
  std::vector<VQVFChange> list;
  if (*complete != 0 && block.Returned != 0) {
    const auto* rows = static_cast<const COLLECTIONCHANGE*>(static_cast<const void*>(block.Lock()));
    if (rows == nullptr) return VQERR_READ_ENTRIES;
    list.reserve(block.Returned);
    for (std::uint32_t i = 0; i < block.Returned; ++i) list.push_back(MakeChange(rows[i]));
  }
  Since = since;
  changes->swap(list);
  return changes->empty() && *complete != 0 ? VQWARN_NOT_FOUND : VQ_OK;
}

VQSTATUS VQVFObserver::GetChanges(std::vector<VQVFChange>* changes, int* complete) {
  if (!IsRegistered()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (changes == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  int all = 1;
  const VQSTATUS status = Read(changes, &all);
  if (complete != nullptr && !VQIsError(status)) *complete = all;
  return vq::Apply(status);
}
