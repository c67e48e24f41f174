// VQVFNavigatorBody: the documents as an ID table, and deleting them.
#include <algorithm>
#include <vector>

#include "engine/database.h"
#include "engine/idtable.h"
#include "engine/status.h"
#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/viewbody.h"

namespace {

// A table of the engine's, destroyed with this object.
class OwnTable {
 public:
  OwnTable() = default;
  ~OwnTable() {
    if (Handle != 0) EngIdTableDestroy(Handle);
  }
  OwnTable(const OwnTable&) = delete;
  OwnTable& operator=(const OwnTable&) = delete;

  ENGHANDLE Give() {
    const ENGHANDLE table = Handle;
    Handle = 0;
    return table;
  }

  ENGHANDLE Handle = 0;
};

// Rows stand in view order; ascending identifiers go into a table fastest.
VQSTATUS MakeTable(std::vector<std::uint32_t>* ids, ENGHANDLE* table) {
  std::sort(ids->begin(), ids->end());
  ids->erase(std::unique(ids->begin(), ids->end()), ids->end());
  OwnTable made;
  ENGSTATUS result = EngIdTableCreate(sizeof(std::uint32_t), &made.Handle);
  for (std::size_t i = 0; result == ENG_OK && i < ids->size(); ++i) {
    result = EngIdTableInsert(made.Handle, (*ids)[i], nullptr);
  }
  if (result == ENG_OK) *table = made.Give();
  return vq::FromEngine(result);
}

VQSTATUS TakeDocuments(vq::EntryRows* rows, std::vector<std::uint32_t>* ids) {
  const unsigned char* bytes = rows->Lock();
  if (bytes == nullptr || rows->Length / sizeof(std::uint32_t) < rows->Returned) return VQERR_READ_ENTRIES;
  for (std::uint32_t i = 0; i < rows->Returned; ++i) {
    const std::uint32_t id = vq::LoadLong(bytes + std::size_t{4} * i);
    if ((id & ENG_ROW_NO_DOCUMENT) == 0) ids->push_back(id);
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQVFNavigatorBody::BuildIDTable(const COLLECTIONPOSITION& position, unsigned short skip,
                                         std::uint32_t skipCount, unsigned short navigation, std::uint32_t count,
                                         ENGHANDLE* table) {
  COLLECTIONPOSITION at = position;
  std::vector<std::uint32_t> ids;
  bool more = count != 0;
  while (more) {
    vq::EntryRows rows;
    VQSTATUS status = ReadEntries(&at, skip, skipCount, navigation, count, ENG_READ_ID, &rows.Buffer, &rows.Length,
                                  nullptr, &rows.Returned, &rows.Signals);
    if (status == VQWARN_NOT_FOUND) break;
    if (status == VQ_OK) status = TakeDocuments(&rows, &ids);
    if (status != VQ_OK) return status;
    // The next block starts behind the last row of this one.
    skip = navigation;
    skipCount = 1;
    if (count != vq::kToTheEnd) count -= std::min(count, rows.Returned);
    more = count != 0 && (rows.Signals & ENG_SIGNAL_MORE_TO_DO) != 0;
  }
  return MakeTable(&ids, table);
}

VQSTATUS VQVFNavigatorBody::GetTable(ENGHANDLE* table) {
  if (IDTable == 0) {
    const std::uint32_t count = IsSearch() ? EntryCount : vq::kToTheEnd;
    const COLLECTIONPOSITION& start = *StartPosition.GetPosition();
    if (VQSTATUS status = BuildIDTable(start, ENG_GO_CURRENT, 0, StepCode(false), count, &IDTable)) return status;
  }
  *table = IDTable;
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::DeleteAllEntries() {
  ENGHANDLE table = 0;
  if (VQSTATUS status = GetTable(&table)) return status;
  VQDatabaseBody* database = ViewFolder->GetEntryDatabase().GetDatabaseBody();
  VQSTATUS status = VQ_OK;
  if (EngIdTableEntries(table) != 0) {
    status = vq::FromEngine(EngDbDeleteSlates(database->GetHandle(), table, database->GetUpdateFlags()));
  }
  EngIdTableDestroy(IDTable);
  IDTable = 0;
  return status;
}

VQSTATUS VQVFNavigatorBody::DeleteEntries(VQVFEntryBody* entry, bool with_descendants) {
  if (with_descendants && IsSearch()) return VQERR_INVALID_FOR_SEARCH_NAVIGATOR;
  if (entry == nullptr || entry->GetNavigatorBody() == nullptr) return VQERR_UNINITIALIZED_ARGUMENT;
  if (entry->GetNavigatorBody() != this) return VQERR_NOT_OF_THIS_NAVIGATOR;
  const bool document = (entry->GetSlateID() & ENG_ROW_NO_DOCUMENT) == 0;
  if (!with_descendants && !document) return VQERR_CANT_DELETE_CATEGORY;
  if (with_descendants) {
    if (VQSTATUS status = entry->ReadStatistics()) return status;
    if (!document || entry->GetChildCount() != 0) return DeleteWithDescendants(entry);
  }
  return ViewFolder->GetEntryDatabase().GetDatabaseBody()->DeleteSlate(entry->GetSlateID());
}

VQSTATUS VQVFNavigatorBody::DeleteWithDescendants(VQVFEntryBody* entry) {
  const bool limited = IsRestricted() && StartPosition.GetPosition()->MaxLevel < ENG_COLLECTION_NO_LIMIT;
  if (limited) return VQERR_NOT_OF_THIS_NAVIGATOR;
  // All that lies deeper than the entry, up to the next row that does not.
  COLLECTIONPOSITION from = *entry->GetPosition().GetPosition();
  from.MinLevel = static_cast<std::uint8_t>(from.Level + 1);
  const auto below = static_cast<unsigned short>(ENG_GO_NEXT | ENG_GO_MIN_LEVEL);
  OwnTable table;
  VQSTATUS status = BuildIDTable(from, below, 1, below, vq::kToTheEnd, &table.Handle);
  if (status == VQ_OK && (entry->GetSlateID() & ENG_ROW_NO_DOCUMENT) == 0) {
    status = vq::FromEngine(EngIdTableInsert(table.Handle, entry->GetSlateID(), nullptr));
  }
  if (status != VQ_OK || EngIdTableEntries(table.Handle) == 0) return status;
  VQDatabaseBody* database = ViewFolder->GetEntryDatabase().GetDatabaseBody();
  return vq::FromEngine(EngDbDeleteSlates(database->GetHandle(), table.Handle, database->GetUpdateFlags()));
}
