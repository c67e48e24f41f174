// VQDatabaseBody: paths, opening and closing, and the slates below.
#include "vq/store/vqdbbody.h"

#include <algorithm>

#include "engine/database.h"
#include "engine/idtable.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/frame/session.h"
#include "vq/frame/state.h"
#include "vq/store/desflags.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr std::uint16_t kNoStubs = 1;
constexpr std::uint16_t kClosing = 2;
constexpr std::uint16_t kFTFlagsAtStart = 256;
constexpr std::size_t kMaximumDesignName = 64;

}  // namespace

VQDatabaseBody::VQDatabaseBody(VQQuillonSession* session, std::string_view path, std::string_view server,
                               std::string_view port, VQSTATUS* status)
    : VQBody(session),
      ACL(nullptr),
      Handle(0),
      BodyFlags(0),
      FTFlags(kFTFlagsAtStart),
      OpenFlags(0),
      BodySession(session) {
  char full[ENG_PATH_SIZE];
  *status = path.empty() ? VQERR_INVALID_DATABASE_PATH
                         : vq::FromEngine(EngPathBuild(std::string(port).c_str(), std::string(server).c_str(),
                                                       std::string(path).c_str(), full));
  if (*status == VQ_OK) *status = SplitPath(full);
}

VQDatabaseBody::VQDatabaseBody(VQQuillonSession* session, std::string_view full_path, ENGHANDLE handle,
                               VQSTATUS* status)
    : VQBody(session),
      ACL(nullptr),
      Handle(handle),
      BodyFlags(0),
      FTFlags(kFTFlagsAtStart),
      OpenFlags(0),
      BodySession(session) {
  *status = full_path.empty() ? VQERR_INVALID_DATABASE_PATH : SplitPath(full_path);
  // A body that can't be used leaves the engine's database to the caller.
  if (*status != VQ_OK) Handle = 0;
}

VQDatabaseBody::~VQDatabaseBody() {
  ++RefCount;
  try {
    VQDatabaseBody::Close();
  } catch (...) {
    // The status of a close that a destructor runs is lost.
  }
}

VQCLASSID VQDatabaseBody::GetClassID() const { return VQCLASSID_VQDATABASEBODY; }

VQSTATUS VQDatabaseBody::SplitPath(std::string_view full_path) {
  char port[ENG_PATH_SIZE];
  char server[ENG_PATH_SIZE];
  char file[ENG_PATH_SIZE];
  FullPath = full_path;
  const VQSTATUS status = vq::FromEngine(EngPathSplit(FullPath.c_str(), port, server, file));
  if (status != VQ_OK) return status;
  Port = port;
  Server = server;
  Filepath = file;
  return VQ_OK;
}

// Bytes of a separator never stand inside a character of the platform's UTF-8.
std::string_view VQDatabaseBody::GetFilename() const {
  const std::string_view path = Filepath;
  const std::size_t last = path.find_last_of("/\\:");
  return last == std::string_view::npos ? path : path.substr(last + 1);
}

std::string VQDatabaseBody::GetServer() const {
  if (Handle == 0 || (OpenFlags & VQDBOPENFLAGS_FAILOVER) == 0) return Server;
  char full[ENG_PATH_SIZE];
  char port[ENG_PATH_SIZE];
  char server[ENG_PATH_SIZE];
  char file[ENG_PATH_SIZE];
  vq::ThrowIfError(vq::FromEngine(EngDbGetFullPath(Handle, 0, full)));
  vq::ThrowIfError(vq::FromEngine(EngPathSplit(full, port, server, file)));
  return server;
}

unsigned short VQDatabaseBody::GetUpdateFlags() const { return (BodyFlags & kNoStubs) != 0 ? ENG_UPDATE_NO_STUB : 0; }

VQSTATUS VQDatabaseBody::Open(unsigned long flags) {
  if (Handle != 0) return VQWARN_ALREADY_OPEN;
  if (!vq::IsInitialized()) return VQERR_NOT_INITIALIZED;
  if (flags == VQDBOPENFLAGS_OF_SESSION) {
    if (!VQQuillonSession::IsUsable(BodySession)) return VQERR_NOT_INITIALIZED;
    flags = BodySession->GetDatabaseOpenFlags();
  } else if ((flags & ~VQDBOPENFLAGS_MASK) != 0) {
    return VQERR_INVALID_PARAMETER;
  }
  ENGHANDLE handle = 0;
  VQSTATUS status = vq::FromEngine(
      EngDbOpenExtended(FullPath.c_str(), static_cast<std::uint32_t>(flags), 0, 0, &handle, nullptr, nullptr));
  if (status != VQ_OK) return status;
  std::uint16_t kind = 0;
  status = vq::FromEngine(EngDbGetKind(handle, &kind));
  if (status == VQ_OK && kind != ENG_DB_KIND_DATABASE) status = VQERR_PATH_IS_DIRECTORY;
  if (status != VQ_OK) {
    EngDbClose(handle);
    return status;
  }
  Handle = handle;
  BodyFlags = (flags & VQDBOPENFLAGS_NO_STUBS) != 0 ? kNoStubs : 0;
  OpenFlags = static_cast<std::uint32_t>(flags);
  Title.clear();
  return VQ_OK;
}

// What is open below may reach back here, which the closing bit ends. Handles that the close lets go must not
// destroy this body while it runs.
VQSTATUS VQDatabaseBody::Close() {
  if (Handle == 0) return VQWARN_NOT_OPEN;
  if ((BodyFlags & kClosing) != 0) return VQ_OK;
  ++RefCount;
  BodyFlags |= kClosing;
  Objects.DeleteAllObjects();
  ACL = nullptr;
  const ENGHANDLE handle = Handle;
  Handle = 0;
  BodyFlags &= static_cast<std::uint16_t>(~kClosing);
  --RefCount;
  return vq::FromEngine(EngDbClose(handle));
}

ENGHANDLE VQDatabaseBody::GiveHandleAway() {
  ++RefCount;
  BodyFlags |= kClosing;
  Objects.DeleteAllObjects();
  --RefCount;
  const ENGHANDLE handle = Handle;
  ACL = nullptr;
  Handle = 0;
  BodyFlags = 0;
  OpenFlags = 0;
  Title.clear();
  return handle;
}

VQSTATUS VQDatabaseBody::FirstSynonym(std::string_view name, std::string* first) {
  const std::size_t begin = std::min(name.find_first_not_of("|;"), name.size());
  const std::size_t end = std::min(name.find_first_of("|;", begin), name.size());
  if (begin != 0 || begin == end) return VQERR_INVALID_PARAMETER;
  if (end > kMaximumDesignName) return VQERR_SLATE_NAME_TOO_LONG;
  *first = name.substr(0, end);
  return VQ_OK;
}

// Names are compared byte for byte, as VQStringCompare does with flags 0.
// VQWARN_NOT_FOUND for an element of another kind or name, and for one that went meanwhile.
VQSTATUS VQDatabaseBody::CompareName(std::uint32_t id, unsigned short slate_class, unsigned short kind,
                                     std::string_view name) {
  ENGHANDLE handle = 0;
  const ENGSTATUS opened = EngSlateOpen(Handle, id, 0, &handle);
  if ((opened & ENG_ERROR_MASK) == ENG_ERR_SLATE_DELETED) return VQWARN_NOT_FOUND;
  if (opened != ENG_OK) return vq::FromEngine(opened);
  VQSlateBody* body = nullptr;
  VQSTATUS status = vq::MakeSlateBody(this, slate_class, handle, &body);
  if (status != VQ_OK) {
    EngSlateClose(handle);
    return status;
  }
  const VQSlate slate(body);
  std::uint16_t found = 0;
  status = vq::ReadDesignKindOf(handle, slate_class, &found);
  if (status != VQ_OK) return status;
  const std::vector<std::string> names = body->NamesInTitle();
  return found == kind && std::count(names.begin(), names.end(), name) != 0 ? VQ_OK : VQWARN_NOT_FOUND;
}

VQSTATUS VQDatabaseBody::FindDesign(unsigned short slate_class, unsigned short kind, std::string_view name,
                                    std::uint32_t* id) {
  std::string first;
  const VQSTATUS status = FirstSynonym(name, &first);
  return status == VQ_OK ? FindByName(slate_class, kind, first, id) : status;
}

VQSTATUS VQDatabaseBody::FindReferenced(unsigned short slate_class, unsigned short kind, std::string_view name,
                                        std::uint32_t* id) {
  const std::string first(name.substr(0, name.find_first_of("|;")));
  return first.empty() ? VQERR_NOT_FOUND : FindByName(slate_class, kind, first, id);
}

VQSTATUS VQDatabaseBody::FindByName(unsigned short slate_class, unsigned short kind, const std::string& name,
                                    std::uint32_t* id) {
  std::uint32_t found = 0;
  const auto* text = vq::EngineText(name);
  const ENGSTATUS result = slate_class == VQSLATECLASS_AGENT ? EngDesignFindAgent(Handle, text, &found)
                                                             : EngDesignFind(Handle, slate_class, text, &found);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_DESIGN_ELEMENT) return VQERR_NOT_FOUND;
  if (result != ENG_OK) return vq::FromEngine(result);
  std::uint16_t found_kind = 0;
  const VQSTATUS status = vq::ReadDesignKind(this, found, slate_class, &found_kind);
  if (status != VQ_OK) return status;
  if (found_kind != kind) return SearchDesign(slate_class, kind, name, id);
  *id = found;
  return VQ_OK;
}

// The element of that name is of another kind: one further on may be the one.
VQSTATUS VQDatabaseBody::SearchDesign(unsigned short slate_class, unsigned short kind, std::string_view name,
                                      std::uint32_t* id) {
  ENGHANDLE table = 0;
  VQSTATUS status = vq::FromEngine(EngDbSearchClass(Handle, slate_class, nullptr, nullptr, &table));
  if (status != VQ_OK) return status;
  status = vq::FromEngine(EngDbKeepReadable(Handle, table));
  std::uint32_t candidate = 0;
  VQSTATUS found = status == VQ_OK ? VQWARN_NOT_FOUND : status;
  for (int more = EngIdTableScan(table, 1, &candidate); more != 0 && found == VQWARN_NOT_FOUND;
       more = EngIdTableScan(table, 0, &candidate)) {
    found = CompareName(candidate, slate_class, kind, name);
    if (found == VQ_OK) *id = candidate;
  }
  EngIdTableDestroy(table);
  return found == VQWARN_NOT_FOUND ? VQERR_NOT_FOUND : found;
}

VQSTATUS VQDatabaseBody::FindSpecial(unsigned short selector, std::uint32_t* id) {
  const ENGSTATUS result = EngDbGetSpecialSlate(Handle, selector, id);
  return (result & ENG_ERROR_MASK) == ENG_ERR_NO_SPECIAL_SLATE ? VQWARN_NOT_FOUND : vq::FromEngine(result);
}

VQSTATUS VQDatabaseBody::CreateSlate(unsigned long type, VQSlateBody** body) {
  const auto slate_class = static_cast<std::uint16_t>(type);
  auto kind = static_cast<std::uint16_t>(type >> 16);
  if (type > UINT32_MAX || (slate_class & VQSLATECLASS_ALL) == 0) return VQERR_INVALID_PARAMETER;
  if (kind == 0) kind = vq::DesignKindOf(slate_class, "");
  if (!vq::IsValidDesignKind(slate_class, kind)) return VQERR_INVALID_PARAMETER;
  ENGHANDLE handle = 0;
  ENGSTATUS result = EngSlateCreate(Handle, &handle);
  if (result != ENG_OK) return vq::FromEngine(result);
  result = EngSlateSetHeader(handle, ENG_SLATE_CLASS, &slate_class);
  if (result != ENG_OK) {
    EngSlateClose(handle);
    return vq::FromEngine(result);
  }
  VQSlateBody* made = nullptr;
  VQSTATUS status = vq::MakeSlateBody(this, slate_class | static_cast<unsigned long>(kind) << 16, handle, &made);
  if (status != VQ_OK) {
    EngSlateClose(handle);
    return status;
  }
  status = made->ReadHeader();
  const char letter = vq::LetterOfDesignKind(slate_class, kind);
  if (status == VQ_OK && letter != 0) {
    VQDesignFlags flags;
    flags.SetLetter(letter, true);
    status = flags.Write(made);
  }
  if (status != VQ_OK) {
    delete made;
    return status;
  }
  *body = made;
  return VQ_OK;
}

// The copy is a new slate of this database; `slate_class` 0 keeps the source's class.
VQSTATUS VQDatabaseBody::CopySlate(VQSlateBody* source, std::uint16_t slate_class, ENGHANDLE* copy) {
  VQSTATUS status = source->FlushDesign();
  if (status == VQ_OK) status = source->FlushItems();
  if (status != VQ_OK) return status;
  ENGHANDLE made = 0;
  ENGSTATUS result = EngSlateCopy(source->GetHandle(), &made);
  if (result != ENG_OK) return vq::FromEngine(result);
  ORIGINATORID origin{};
  const std::uint32_t no_id = 0;
  result = EngDbNewOrigin(Handle, &origin);
  if (result == ENG_OK) result = EngSlateSetHeader(made, ENG_SLATE_ORIGINATOR, &origin);
  if (result == ENG_OK) result = EngSlateSetHeader(made, ENG_SLATE_ID, &no_id);
  if (result == ENG_OK) result = EngSlateSetHeader(made, ENG_SLATE_DB, &Handle);
  if (result == ENG_OK && slate_class != 0) result = EngSlateSetHeader(made, ENG_SLATE_CLASS, &slate_class);
  if (result == ENG_OK) result = EngSlateUpdate(made, GetUpdateFlags());
  if (result != ENG_OK) {
    EngSlateClose(made);
    return vq::FromEngine(result);
  }
  *copy = made;
  return VQ_OK;
}

VQSTATUS VQDatabaseBody::DeleteSlate(std::uint32_t id) {
  return vq::FromEngine(EngSlateDelete(Handle, id, GetUpdateFlags()));
}
