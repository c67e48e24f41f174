#include "engine/collection.h"

#include <cstring>

#include "qcore/abi/lookup.h"
#include "qcore/abi/output.h"
#include "qcore/idtables/idtable.h"
#include "qcore/index/collection.h"
#include "qcore/index/find.h"
#include "qcore/index/special.h"
#include "qcore/memory/memory.h"
#include "qcore/store/wire.h"

using qcore::Database;
using qcore::abi::Guard;
using qcore::abi::WithStore;
using qcore::index::Collection;

namespace {

template <typename Body>
ENGSTATUS WithCollection(ENGHANDLE handle, Body&& body) noexcept {
  return Guard([&]() -> ENGSTATUS {
    Collection* collection = Collection::Find(handle);
    return collection ? body(*collection) : ENGSTATUS{ENG_ERR_INVALID_HANDLE};
  });
}

template <typename T>
void Give(T* target, T value) {
  if (target) *target = value;
}

ENGSTATUS MakeBlock(const void* bytes, std::size_t size, ENGHANDLE* block) {
  const ENGSTATUS status =
      qcore::memory::Allocate(qcore::Kind::kMemory, static_cast<uint32_t>(size), qcore::memory::Fill::kNone, block);
  if (status == ENG_OK && size != 0) std::memcpy(qcore::memory::BytesOf(*block).data(), bytes, size);
  return status;
}

}  // namespace

ENGSTATUS EngCollectionOpen(ENGHANDLE db, ENGHANDLE entries_db, uint32_t view, uint16_t flags, ENGHANDLE unread,
                            ENGHANDLE* collection, ENGHANDLE*, void*, ENGHANDLE*, ENGHANDLE*) {
  if (!collection) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const std::shared_ptr<Database>& design) {
    return WithStore(entries_db, [&](const std::shared_ptr<Database>& entries) {
      return Collection::Open(design, entries, view, flags, unread, collection);
    });
  });
}

ENGSTATUS EngCollectionClose(ENGHANDLE collection) {
  return Guard([&] { return Collection::Close(collection); });
}

ENGSTATUS EngCollectionUpdate(ENGHANDLE handle) {
  return WithCollection(handle, [](Collection& collection) { return collection.Update(); });
}

ENGSTATUS EngCollectionRead(ENGHANDLE handle, void* position, uint16_t skip, uint32_t skip_count, uint16_t navigation,
                            uint32_t count, uint32_t mask, ENGHANDLE* buffer, uint32_t* buffer_length,
                            uint32_t* skipped, uint32_t* returned, uint16_t* signals) {
  if (!position || (count != 0 && !buffer)) return ENG_ERR_ARGUMENT;
  return WithCollection(handle, [&](Collection& collection) {
    COLLECTIONPOSITION place{};
    std::memcpy(&place, position, 4);
    const std::size_t levels = std::min<std::size_t>(place.Level + std::size_t{1}, ENG_COLLECTION_LEVELS);
    std::memcpy(&place, position, 4 + 4 * levels);
    Collection::ReadResult result;
    ENGSTATUS status = collection.Read({skip, skip_count, navigation, count, mask}, &place, &result);
    ENGHANDLE block = 0;
    const uint32_t length = result.rows.size();
    if (status == ENG_OK && count != 0) status = result.rows.Publish(qcore::Kind::kMemory, &block);
    if (buffer) *buffer = block;
    Give(buffer_length, status == ENG_OK ? length : 0u);
    Give(skipped, result.skipped);
    Give(returned, status == ENG_OK ? result.returned : 0u);
    Give(signals, result.signals);
    if (status == ENG_OK) std::memcpy(position, &place, 4 + 4 * (std::size_t{place.Level} + 1));
    return status;
  });
}

ENGSTATUS EngCollectionFind(ENGHANDLE handle, const void* keys, uint16_t flags, void* position, uint32_t* matches) {
  if (!keys || !position) return ENG_ERR_ARGUMENT;
  return WithCollection(handle, [&](Collection& collection) {
    const auto* table = static_cast<const uint8_t*>(keys);
    std::vector<qcore::index::Value> values;
    if (!qcore::index::DecodeKeys(table, qcore::LoadLittle<uint16_t>(table), &values)) {
      return ENGSTATUS{ENG_ERR_ARGUMENT};
    }
    COLLECTIONPOSITION place{};
    const ENGSTATUS status = collection.FindByKey(values, flags, &place, matches);
    if (status == ENG_OK) std::memcpy(position, &place, sizeof place);
    return status;
  });
}

ENGSTATUS EngCollectionTranslateSpecial(const ENGCHAR* text, uint16_t length, ENGCHAR* output, uint16_t output_size,
                                        uint32_t id, const void* position, const void* statistics, const void*,
                                        ENGHANDLE table, const ENGCHAR* db_title, const ENGCHAR* view_title,
                                        uint16_t* output_length) {
  if ((!text && length != 0) || !output || !output_length) return ENG_ERR_ARGUMENT;
  return Guard([&] {
    using qcore::abi::Terminated;
    qcore::index::SpecialFacts facts;
    COLLECTIONPOSITION place{};
    if (position) {
      std::memcpy(&place, position, 4);
      const std::size_t levels = std::min<std::size_t>(place.Level + std::size_t{1}, ENG_COLLECTION_LEVELS);
      std::memcpy(&place, position, 4 + 4 * levels);
      facts.position = &place;
    }
    if (statistics) {
      const auto* words = static_cast<const uint8_t*>(statistics);
      facts.siblings = qcore::LoadLittle<uint32_t>(words);
      facts.children = qcore::LoadLittle<uint32_t>(words + 4);
      facts.descendants = qcore::LoadLittle<uint32_t>(words + 8);
    }
    facts.id = id;
    facts.unread = qcore::idtable::Contains(table, id);
    if (db_title) facts.db_title = Terminated(db_title, UINT16_MAX);
    if (view_title) facts.view_title = Terminated(view_title, UINT16_MAX);
    const std::string expanded = qcore::index::ExpandSpecial({reinterpret_cast<const char*>(text), length}, facts);
    return qcore::abi::Output(expanded, output, output_size, output_length);
  });
}

ENGSTATUS EngCollectionSetCollation(ENGHANDLE handle, uint16_t number) {
  return WithCollection(handle, [&](Collection& collection) { return collection.SetCollation(number); });
}

ENGSTATUS EngCollectionSetProgress(ENGCOLLECTIONPROGRESS callback, void* context) {
  return Guard([&] {
    qcore::index::SetBuildProgress(callback, context);
    return ENGSTATUS{ENG_OK};
  });
}

ENGSTATUS EngCollectionGetChanges(ENGHANDLE handle, uint64_t* since, ENGHANDLE* changes, uint32_t* count,
                                  int* complete) {
  if (!since || !changes || !count || !complete) return ENG_ERR_ARGUMENT;
  return WithCollection(handle, [&](Collection& collection) {
    std::vector<COLLECTIONCHANGE> list;
    uint64_t number = *since;
    bool all = true;
    ENGSTATUS status = collection.GetChanges(&number, &list, &all);
    ENGHANDLE block = 0;
    if (status == ENG_OK && !list.empty()) {
      status = MakeBlock(list.data(), list.size() * sizeof(COLLECTIONCHANGE), &block);
    }
    if (status != ENG_OK) return status;
    *since = number;
    *changes = block;
    *count = static_cast<uint32_t>(list.size());
    *complete = all ? 1 : 0;
    return ENGSTATUS{ENG_OK};
  });
}
