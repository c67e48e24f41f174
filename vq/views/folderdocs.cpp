// VQViewFolder: the documents of a folder.
#include "engine/folder.h"
#include "engine/idtable.h"
#include "engine/status.h"
#include "vq/views/viewbody.h"

namespace {

// A table of one document, for the time of a change.
class SingleTable {
 public:
  ~SingleTable() {
    if (Handle != 0) EngIdTableDestroy(Handle);
  }
  [[nodiscard]] VQSTATUS Fill(std::uint32_t id) {
    const ENGSTATUS result = EngIdTableCreate(sizeof id, &Handle);
    return vq::FromEngine(result == ENG_OK ? EngIdTableInsert(Handle, id, nullptr) : result);
  }
  ENGHANDLE Get() const { return Handle; }

 private:
  ENGHANDLE Handle = 0;
};

}  // namespace

VQSTATUS VQViewFolder::CheckFolder() const {
  VQVFTYPE type = VQVFTYPE_UNKNOWN;
  if (VQSTATUS status = FindType(&type)) return status;
  if (type != VQVFTYPE_FOLDER) return VQERR_FOLDER_ONLY;
  if (!GetDatabaseBody()->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  return GetSlateID() != 0 ? VQ_OK : VQERR_VIEW_NOT_SAVED;
}

// The engine changes the folder's slate under an open handle. A folder that takes documents is there to stay.
VQSTATUS VQViewFolder::ChangeFolder(Change change, ENGHANDLE table) {
  if (table == 0) return VQERR_INVALID_PARAMETER;
  const ENGHANDLE database = GetDatabaseBody()->GetHandle();
  const auto id = static_cast<std::uint32_t>(GetSlateID());
  const ENGSTATUS result = change == Change::Add ? EngFolderDocAdd(database, 0, id, table, 0)
                                                 : EngFolderDocRemove(database, 0, id, table, 0);
  return FolderChanged(vq::FromEngine(result));
}

VQSTATUS VQViewFolder::FolderChanged(VQSTATUS status) {
  if (status != VQ_OK || Body == nullptr) return status;
  GetViewFolderBody()->SetDeleteOnClose(0);
  return GetViewFolderBody()->ReopenUnmodified();
}

VQSTATUS VQViewFolder::ChangeOne(Change change, unsigned long id) {
  VQSTATUS status = CheckFolder();
  if (status == VQ_OK && (id == 0 || id > UINT32_MAX)) status = VQERR_INVALID_PARAMETER;
  SingleTable table;
  if (status == VQ_OK) status = table.Fill(static_cast<std::uint32_t>(id));
  return vq::Apply(status == VQ_OK ? ChangeFolder(change, table.Get()) : status);
}

VQSTATUS VQViewFolder::ChangeSlate(Change change, const VQSlate& document) {
  const VQSTATUS status = CheckFolder();
  if (status != VQ_OK) return vq::Apply(status);
  const bool stored = document.IsNull() == 0 && document.GetSlateID() != 0;
  if (!stored && change == Change::Remove) return VQ_OK;
  if (!stored) return vq::Apply(document.IsNull() != 0 ? VQERR_UNINITIALIZED_ARGUMENT : VQERR_SLATE_NOT_SAVED);
  if (document.GetDatabase().GetDatabaseBody() != GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return ChangeOne(change, document.GetSlateID());
}

VQSTATUS VQViewFolder::ChangeMany(Change change, const VQDatabase& database, ENGHANDLE table) {
  if (EngIdTableEntries(table) == 0) return vq::Apply(VQERR_EMPTY_ARRAY);
  if (database.GetDatabaseBody() != GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return vq::Apply(ChangeFolder(change, table));
}

VQSTATUS VQViewFolder::ChangeArray(Change change, const VQSlateArray& documents) {
  VQSTATUS status = CheckFolder();
  if (status == VQ_OK && documents.IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  return status == VQ_OK ? ChangeMany(change, documents.GetDatabase(), documents.GetIDTable()) : vq::Apply(status);
}

// The documents that a view or navigator shows.
template <typename Source>
VQSTATUS VQViewFolder::ChangeFrom(Change change, Source source) {
  VQSTATUS status = CheckFolder();
  if (status == VQ_OK && source.IsNull() != 0) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status != VQ_OK) return vq::Apply(status);
  void* table = nullptr;
  status = source.GetIDTable(&table);
  return status == VQ_OK ? ChangeMany(change, source.GetEntryDatabase(), vq::ToHandle(table)) : status;
}

VQSTATUS VQViewFolder::ChangeTable(Change change, void* idtable) {
  const VQSTATUS status = CheckFolder();
  return vq::Apply(status == VQ_OK ? ChangeFolder(change, vq::ToHandle(idtable)) : status);
}

VQSTATUS VQViewFolder::FolderAddDocument(const VQSlate& document) { return ChangeSlate(Change::Add, document); }
VQSTATUS VQViewFolder::FolderAddDocument(unsigned long id) { return ChangeOne(Change::Add, id); }
VQSTATUS VQViewFolder::FolderAddDocuments(const VQSlateArray& documents) { return ChangeArray(Change::Add, documents); }
VQSTATUS VQViewFolder::FolderAddDocuments(const VQViewFolder& source) { return ChangeFrom(Change::Add, source); }
VQSTATUS VQViewFolder::FolderAddDocuments(const VQVFNavigator& source) { return ChangeFrom(Change::Add, source); }
VQSTATUS VQViewFolder::FolderAddDocuments(void* idtable) { return ChangeTable(Change::Add, idtable); }

VQSTATUS VQViewFolder::FolderRemoveDocument(const VQSlate& document) { return ChangeSlate(Change::Remove, document); }
VQSTATUS VQViewFolder::FolderRemoveDocument(unsigned long id) { return ChangeOne(Change::Remove, id); }
VQSTATUS VQViewFolder::FolderRemoveDocuments(const VQSlateArray& documents) {
  return ChangeArray(Change::Remove, documents);
}
VQSTATUS VQViewFolder::FolderRemoveDocuments(const VQViewFolder& source) { return ChangeFrom(Change::Remove, source); }
VQSTATUS VQViewFolder::FolderRemoveDocuments(const VQVFNavigator& source) { return ChangeFrom(Change::Remove, source); }
VQSTATUS VQViewFolder::FolderRemoveDocuments(void* idtable) { return ChangeTable(Change::Remove, idtable); }

VQSTATUS VQViewFolder::FolderRemoveAllDocuments() {
  const VQSTATUS status = CheckFolder();
  if (status != VQ_OK) return vq::Apply(status);
  const ENGHANDLE database = GetDatabaseBody()->GetHandle();
  return vq::Apply(
      FolderChanged(vq::FromEngine(EngFolderDocRemoveAll(database, 0, static_cast<std::uint32_t>(GetSlateID()), 0))));
}
