#include "vq/store/dbarray.h"

#include "engine/database.h"
#include "engine/status.h"
#include "vq/frame/session.h"
#include "vq/store/storetext.h"

namespace {

constexpr std::uint16_t kGoDown = 0x2000;

std::uint16_t SearchFlags(unsigned short kinds) {
  const std::uint16_t down = (kinds & 4) != 0 ? kGoDown : 0;
  if ((kinds & 3) == 3) return down | 2;
  return down | ((kinds & 1) != 0 ? 5 : 4);
}

}  // namespace

VQDatabaseArrayBody::VQDatabaseArrayBody(VQQuillonSession* session, const char* directory, unsigned short kinds,
                                         VQSTATUS* error)
    : VQBody(session), Owner(session) {
  VQ_ASSERT_TEXT(session && error, "session && error", "DBARRAY");
  *error = Search(directory, kinds);
  if (*error == VQ_OK && Entries.empty()) *error = VQWARN_NOT_FOUND;
}

VQDatabaseArrayBody::~VQDatabaseArrayBody() {
  for (const Entry& entry : Entries) entry.Database->Release();
}

VQCLASSID VQDatabaseArrayBody::GetClassID() const { return VQCLASSID_VQDATABASEARRAYBODY; }

VQSTATUS VQDatabaseArrayBody::Search(const char* directory, unsigned short kinds) {
  char port[ENG_PATH_SIZE];
  char server[ENG_PATH_SIZE];
  char file[ENG_PATH_SIZE];
  ENGSTATUS result = EngPathSplit(directory, port, server, file);
  if (result != ENG_OK) return vq::FromEngine(result);
  Port = port;
  Server = server;
  ENGHANDLE handle = 0;
  result = EngDbOpen(directory, &handle);
  if (result != ENG_OK) return vq::FromEngine(result);
  VQSTATUS failure = VQ_OK;
  std::pair<VQDatabaseArrayBody*, VQSTATUS*> context{this, &failure};
  // A failure of ours ends the search by a status of the engine's and is given instead of it.
  const auto found = [](void* passed, const char* path, int is_directory, const ENGCHAR* info) -> ENGSTATUS {
    auto* target = static_cast<std::pair<VQDatabaseArrayBody*, VQSTATUS*>*>(passed);
    try {
      *target->second = target->first->AddEntry(path, is_directory != 0 ? nullptr : info);
    } catch (unsigned long status) {
      *target->second = status;
    } catch (...) {
      *target->second = VQERR_INSUFFICIENT_MEMORY;
    }
    return *target->second == VQ_OK ? ENG_OK : ENG_ERR_INTERNAL;
  };
  result = EngDbSearch(handle, SearchFlags(kinds), found, &context);
  EngDbClose(handle);
  return failure != VQ_OK ? failure : vq::FromEngine(result);
}

VQSTATUS VQDatabaseArrayBody::AddEntry(const char* path, const ENGCHAR* info) {
  VQ_ASSERT_TEXT(path, "summarybuf", "DBARRAY");
  VQSTATUS status = VQ_OK;
  auto* database = new VQDatabaseBody(Owner, path, Server, Port, &status);
  const VQDatabase keep(database);
  if (status != VQ_OK) return status;
  Entries.push_back({database, info != nullptr ? reinterpret_cast<const char*>(info) : ""});
  database->AddReference();
  return VQ_OK;
}

VQDatabaseArray::VQDatabaseArray() = default;
VQDatabaseArray::VQDatabaseArray(const VQDatabaseArray& other) = default;
VQDatabaseArray::VQDatabaseArray(VQDatabaseArrayBody* body) : VQSmartPtr(body) {}

VQDatabaseArray& VQDatabaseArray::operator=(const VQDatabaseArray& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQDatabaseArray& VQDatabaseArray::operator=(VQDatabaseArrayBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQDatabaseArray::GetClassID() const { return VQCLASSID_VQDATABASEARRAY; }

VQDatabase VQDatabaseArray::operator[](unsigned long index) const {
  if (index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return VQDatabase(static_cast<VQDatabaseArrayBody*>(Body)->GetDatabaseBody(index));
}

unsigned long VQDatabaseArray::GetCount() const {
  return Body != nullptr ? static_cast<VQDatabaseArrayBody*>(Body)->GetCount() : 0;
}

VQString VQDatabaseArray::GetInfo(unsigned long index) const {
  if (index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return vq::StringOf(static_cast<VQDatabaseArrayBody*>(Body)->GetInfo(index));
}
