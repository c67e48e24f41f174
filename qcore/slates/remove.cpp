#include "qcore/slates/remove.h"

#include <set>

#include "engine/slate.h"
#include "qcore/idtables/idtable.h"
#include "qcore/slates/packed.h"
#include "qcore/slates/search.h"
#include "qcore/store/moment.h"

namespace qcore {

namespace {

bool IsDamage(ENGSTATUS status) { return status == ENG_ERR_DB_DAMAGED || status == ENG_ERR_ITEM_DAMAGED; }

// Adds the values that the row holds aside.
ENGSTATUS ListValues(Store& store, std::uint32_t id, std::set<Store::ValueId>* values) {
  return store.ReadSlate(id, [values](const SlateHeader& header, Bytes packed) {
    PackedReader reader;
    ENGSTATUS read = reader.Start(packed, header.id);
    for (std::uint32_t i = 0; read == ENG_OK && i < reader.count(); ++i) {
      PackedItem item;
      read = reader.Next(&item);
      if (read == ENG_OK && item.aside != 0) values->insert(item.aside);
    }
    return read;
  });
}

ENGSTATUS FreeObjects(Store& store, std::uint32_t id) {
  std::vector<std::uint32_t> objects;
  ENGSTATUS status = store.FindObjects(id, &objects);
  for (std::size_t i = 0; status == ENG_OK && i < objects.size(); ++i) status = store.FreeObject(objects[i]);
  return status;
}

// What a row that is gone held aside can be told only by what all others hold. One of them that cannot be read may hold
// any, so that the last damaged slate to go takes the values of all.
ENGSTATUS FreeUnowned(Store& store) {
  std::vector<FeedEntry> entries;
  ENGSTATUS status = store.ReadFeed(nullptr, [&entries](const FeedEntry& entry) { entries.push_back(entry); });
  std::set<Store::ValueId> known;
  for (std::size_t i = 0; status == ENG_OK && i < entries.size(); ++i) {
    if (!entries[i].deleted) status = ListValues(store, entries[i].id, &known);
  }
  std::string fault;
  if (status == ENG_OK) status = store.Check(&fault);  // a damaged index could hide an owner
  if (IsDamage(status)) return ENG_OK;
  return status == ENG_OK ? store.FreeUnowned(known) : status;
}

// A header that cannot be trusted names no slate that others could be told of, so that nothing is left of it.
ENGSTATUS DeleteDamaged(Store& store, const SlateHeader& header, bool leave_nothing) {
  ENGSTATUS status = FreeObjects(store, header.id);
  SlateHeader left = header;
  if (status == ENG_OK) status = leave_nothing ? store.RemoveSlate(header) : store.MakeDeletionStub(&left);
  return status == ENG_OK ? FreeUnowned(store) : status;
}

ENGSTATUS DeleteLocked(Database& database, std::uint32_t id, std::uint16_t flags) {
  Store& store = database.store();
  const bool leave_nothing = (flags & ENG_UPDATE_NO_STUB) != 0;
  SlateHeader header;
  ENGSTATUS status = store.ReadHeader(id, &header);
  header.id = id;
  if (IsDamage(status)) return DeleteDamaged(store, header, true);
  if (status != ENG_OK) return status;
  if (header.deleted) return leave_nothing ? store.RemoveSlate(header) : ENGSTATUS{ENG_ERR_SLATE_DELETED};
  std::set<Store::ValueId> values;
  status = ListValues(store, id, &values);
  ++header.origin.Sequence;
  header.origin.SequenceTime = Now();
  header.modified = header.origin.SequenceTime;
  if (IsDamage(status)) return DeleteDamaged(store, header, leave_nothing);
  for (auto value = values.begin(); status == ENG_OK && value != values.end(); ++value) {
    status = store.FreeValue(*value);
  }
  if (status == ENG_OK) status = FreeObjects(store, id);
  if (status != ENG_OK) return status;
  return leave_nothing ? store.RemoveSlate(header) : store.MakeDeletionStub(&header);
}

}  // namespace

ENGSTATUS ResolveSlateId(Database& database, std::uint32_t* id) {
  if (*id != ENG_SLATE_ID_ICON) return ENG_OK;
  const ENGSTATUS status = FindSpecialSlate(database, ENG_SPECIAL_ICON, id);
  return status == ENG_ERR_NO_SPECIAL_SLATE ? ENGSTATUS{ENG_ERR_NO_SLATE} : status;
}

ENGSTATUS ReadSlateHeader(Database& database, std::uint32_t id, SlateHeader* header) {
  const std::lock_guard lock(database.mutex());
  return database.store().ReadHeader(id, header);
}

ENGSTATUS FindSlate(Database& database, const UNIVERSALSLATEID& universal, SlateHeader* header) {
  const std::lock_guard lock(database.mutex());
  std::uint32_t id = 0;
  const ENGSTATUS status = database.store().FindUniversal(universal, &id);
  return status == ENG_OK ? database.store().ReadHeader(id, header) : status;
}

ENGSTATUS DeleteSlate(Database& database, std::uint32_t id, std::uint16_t flags) {
  ENGSTATUS status = ResolveSlateId(database, &id);
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database.mutex());
  Change change(database);
  status = change.Begin();
  if (status == ENG_OK) status = DeleteLocked(database, id, flags);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS DeleteSlates(Database& database, ENGHANDLE id_table, std::uint16_t flags) {
  std::vector<std::uint32_t> ids;
  ENGSTATUS status = idtable::ForEach(id_table, [&ids](std::uint32_t id) { ids.push_back(id); });
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database.mutex());
  Change change(database);
  status = change.Begin();
  for (std::size_t i = 0; status == ENG_OK && i < ids.size(); ++i) {
    status = DeleteLocked(database, ids[i], flags);
    if (status == ENG_ERR_SLATE_DELETED || status == ENG_ERR_NO_SLATE) status = ENG_OK;
  }
  return status == ENG_OK ? change.Commit() : status;
}

}  // namespace qcore
