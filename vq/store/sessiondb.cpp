// The session's operations on databases.
#include "engine/database.h"
#include "engine/status.h"
#include "vq/frame/session.h"
#include "vq/store/dbarray.h"
#include "vq/store/storetext.h"
#include "vq/store/vqcreate.h"

namespace {

constexpr unsigned short kAllBelow = 5;  // databases, down into directories

}  // namespace

VQSTATUS VQQuillonSession::AdoptDatabase(VQDatabaseBody* body, VQDatabase* database) {
  *database = body;
  const VQSTATUS error = Objects.AddObject(body);
  VQ_ASSERT_TEXT(error == VQ_OK, "error == 0", "SESSION");
  return VQ_OK;
}

VQSTATUS VQQuillonSession::GetDatabase(const VQString& path, VQDatabase* database, const VQString& server) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && database == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  VQDatabase made;
  status = made.CreateBody(this, path, server, PortName);
  return vq::Apply(status == VQ_OK ? AdoptDatabase(made.GetDatabaseBody(), database) : status);
}

VQSTATUS VQQuillonSession::GetDatabase(void* handle, VQDatabase* database) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && database == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && handle == nullptr) status = VQERR_INVALID_PARAMETER;
  char full[ENG_PATH_SIZE];
  if (status == VQ_OK) status = vq::FromEngine(EngDbGetFullPath(vq::ToHandle(handle), 0, full));
  if (status != VQ_OK) return vq::Apply(status);
  auto* body = new VQDatabaseBody(this, full, vq::ToHandle(handle), &status);
  if (status != VQ_OK) {
    delete body;
    return vq::Apply(status);
  }
  return vq::Apply(AdoptDatabase(body, database));
}

// A database that can't be opened is no candidate; the others are looked at all the same.
VQSTATUS VQQuillonSession::GetDatabase(const TIMEDATE& replicaid, VQDatabase* database, const VQString& server) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && database == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  VQDatabaseArray candidates;
  status = SearchDirectory(&candidates, server, VQString(), kAllBelow);
  if (status != VQ_OK) return vq::Apply(status);
  for (unsigned long i = 0; i < candidates.GetCount(); ++i) {
    const VQDatabase entry = candidates[i];
    const std::string& path = entry.GetDatabaseBody()->GetFullPath();
    ENGHANDLE handle = 0;
    if (EngDbOpen(path.c_str(), &handle) != ENG_OK) continue;
    REPLICAINFO info{};
    const ENGSTATUS read = EngDbGetReplicaInfo(handle, &info);
    EngDbClose(handle);
    const bool same = info.ID.DateWord == replicaid.DateWord && info.ID.TimeWord == replicaid.TimeWord;
    if (read == ENG_OK && same) return vq::Apply(AdoptDatabase(entry.GetDatabaseBody(), database));
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQQuillonSession::SearchDirectory(VQDatabaseArray* databases, const VQString& server,
                                           const VQString& directory, unsigned short kinds) {
  char full[ENG_PATH_SIZE];
  VQSTATUS status = BuildPath(server, directory, full);
  if (status != VQ_OK) return status;
  const VQDatabaseArray found(new VQDatabaseArrayBody(this, full, kinds, &status));
  if (status == VQ_OK) *databases = found;
  return status;
}

VQSTATUS VQQuillonSession::GetDatabases(VQDatabaseArray* databases, const VQString& server, const VQString& directory,
                                        unsigned short kinds) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && databases == nullptr) status = VQERR_NULL_POINTER;
  return vq::Apply(status == VQ_OK ? SearchDirectory(databases, server, directory, kinds) : status);
}

// A file that could not be finished goes away again.
VQSTATUS VQQuillonSession::CreateDatabase(const VQString& path, VQDatabase* database,
                                          const VQCreateDatabaseOptions& options, const VQString& server) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && database == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  VQDatabase made;
  status = made.CreateBody(this, path, server, PortName);
  if (status != VQ_OK) return vq::Apply(status);
  VQDatabaseBody* body = made.GetDatabaseBody();
  const std::uint16_t flags = options.GetOverwriteExisting() != 0 ? ENG_CREATE_OVERWRITE : 0;
  const ENGSTATUS result =
      EngDbCreate(body->GetFullPath().c_str(), static_cast<std::uint16_t>(options.GetDatabaseType()), flags);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_DB_EXISTS) return vq::Apply(VQERR_DATABASE_EXISTS);
  if (result != ENG_OK) return vq::Apply(vq::FromEngine(result));
  status = body->Open(VQDBOPENFLAGS_OF_SESSION);
  if (status == VQ_OK) status = WriteOptions(body, options);
  if (status == VQ_OK) return vq::Apply(AdoptDatabase(body, database));
  body->Close();
  EngDbDelete(body->GetFullPath().c_str());
  return vq::Apply(status);
}

VQSTATUS VQQuillonSession::WriteOptions(VQDatabaseBody* body, const VQCreateDatabaseOptions& options) {
  const std::pair<unsigned short, VQString> fields[] = {{ENG_INFO_TITLE, options.GetTitle()},
                                                        {ENG_INFO_CATEGORIES, options.GetCategories()},
                                                        {ENG_INFO_TEMPLATE, options.GetTemplateName()},
                                                        {ENG_INFO_INHERITS, options.GetInheritsFrom()}};
  for (const auto& [selector, text] : fields) {
    if (text.IsNull()) continue;
    const VQSTATUS status = body->WriteInfo(selector, vq::ViewOf(text));
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

VQSTATUS VQQuillonSession::CompactDatabase(const VQDatabase& database, unsigned long* before,
                                           unsigned long* after) const {
  const VQSTATUS status = CheckInitialized();
  if (status != VQ_OK) return vq::Apply(status);
  if (database.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return CompactDatabase(VQString(database.GetDatabaseBody()->GetFullPath().c_str()), before, after);
}

VQSTATUS VQQuillonSession::DeleteDatabase(VQDatabase* database) {
  VQSTATUS status = CheckInitialized();
  if (status == VQ_OK && database == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && database->IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status != VQ_OK) return vq::Apply(status);
  VQDatabaseBody* body = database->GetDatabaseBody();
  status = body->Close();
  if (VQIsError(status)) return vq::Apply(status);
  status = vq::FromEngine(EngDbDelete(body->GetFullPath().c_str()));
  if (status != VQ_OK) return vq::Apply(status);
  VQElement* element = nullptr;
  if (Objects.GetElement(body, &element) == VQ_OK) Objects.DeleteElement(element);
  database->DeleteBody();
  return VQ_OK;
}
