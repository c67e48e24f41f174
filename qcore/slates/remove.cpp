#include "qcore/slates/remove.h"

#include "engine/slate.h"
#include "qcore/idtables/idtable.h"
#include "qcore/slates/packed.h"
#include "qcore/slates/search.h"
#include "qcore/store/moment.h"

namespace qcore {

namespace {

// Frees what the row holds aside. A packed value that cannot be read any more keeps nothing from being deleted.
ENGSTATUS FreeValues(Store& store, std::uint32_t id) {
  std::vector<Store::ValueId> values;
  ENGSTATUS status = store.ReadSlate(id, [&values](const SlateHeader& header, Bytes packed) -> ENGSTATUS {
    PackedReader reader;
    ENGSTATUS read = reader.Start(packed, header.id);
    for (std::uint32_t i = 0; read == ENG_OK && i < reader.count(); ++i) {
      PackedItem item;
      read = reader.Next(&item);
      if (read == ENG_OK && item.aside != 0) values.push_back(item.aside);
    }
    return ENG_OK;
  });
  for (std::size_t i = 0; status == ENG_OK && i < values.size(); ++i) status = store.FreeValue(values[i]);
  std::vector<std::uint32_t> objects;
  if (status == ENG_OK) status = store.FindObjects(id, &objects);
  for (std::size_t i = 0; status == ENG_OK && i < objects.size(); ++i) status = store.FreeObject(objects[i]);
  return status;
}

ENGSTATUS DeleteLocked(Database& database, std::uint32_t id, std::uint16_t flags) {
  Store& store = database.store();
  const bool leave_nothing = (flags & ENG_UPDATE_NO_STUB) != 0;
  SlateHeader header;
  ENGSTATUS status = store.ReadHeader(id, &header);
  if (status != ENG_OK) return status;
  if (header.deleted) return leave_nothing ? store.RemoveSlate(header) : ENGSTATUS{ENG_ERR_SLATE_DELETED};
  status = FreeValues(store, id);
  if (status != ENG_OK) return status;
  if (leave_nothing) return store.RemoveSlate(header);
  ++header.origin.Sequence;
  header.origin.SequenceTime = Now();
  header.modified = header.origin.SequenceTime;
  return store.MakeDeletionStub(&header);
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
