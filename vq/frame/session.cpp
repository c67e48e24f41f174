// Sessions: start and end, and what needs no other room.
#include "vq/frame/session.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>
#include <vector>

#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/frame/throwrule.h"

namespace {

constexpr char kFile[] = "SESSION";
constexpr std::uint16_t kTextSize = 256;
constexpr unsigned long kOpenFlagsMask = 0x103BF;

// Sessions that exist, so that a body which outlives its session can tell. Never destroyed: static sessions may go
// after it.
struct LiveSessions {
  std::mutex Lock;
  std::vector<const VQQuillonSession*> Sessions;

  static LiveSessions& Get() {
    static LiveSessions& live = *new LiveSessions;
    return live;
  }
};

std::unique_ptr<char[]> CopyText(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  std::unique_ptr<char[]> copy(new (std::nothrow) char[size]);
  if (!copy) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  std::memcpy(copy.get(), text, size);
  return copy;
}

}  // namespace

namespace vq {

VQSTATUS StartLibrary(unsigned long version) {
  if (gState.InitCount++ != 0) return VQ_OK;
  if (version != VQGetAPILibraryVersion()) {
    --gState.InitCount;
    return VQERR_INCOMPATIBLE_VERSION;
  }
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  return VQ_OK;
}

VQSTATUS EndLibrary() {
  if (gState.InitCount == 0) return VQERR_NOT_INITIALIZED;
  if (--gState.InitCount != 0) return VQ_OK;
  return VQDeleteAllObjects() != 0 ? VQWARN_LEAKED : VQ_OK;
}

}  // namespace vq

VQQuillonSession::VQQuillonSession()
    : DatabaseOpenFlags(0),
      Flags(0),
      MailProgram(kMailProgramUnread),
      LocalVersion(0),
      RTParserErrorHandler(nullptr),
      ServerAddin(nullptr) {
  LiveSessions& live = LiveSessions::Get();
  const std::lock_guard guard(live.Lock);
  live.Sessions.push_back(this);
}

VQQuillonSession::~VQQuillonSession() {
  const vq::OwnThrowRule quiet(false);  // what a Close raises on the way down is lost, and must not cut the way short
  if (Flags & kProcessFlag) {
    Term(0);
  } else if (Flags & kThreadFlag) {
    TermThread();
  }
  LiveSessions& live = LiveSessions::Get();
  const std::lock_guard guard(live.Lock);
  std::erase(live.Sessions, this);
}

int VQQuillonSession::IsUsable(const VQQuillonSession* session) {
  LiveSessions& live = LiveSessions::Get();
  const std::lock_guard guard(live.Lock);
  return std::count(live.Sessions.begin(), live.Sessions.end(), session) != 0 && session->IsInitialized();
}

void* VQQuillonSession::operator new(std::size_t size) {
  void* memory = ::operator new(size, std::nothrow);
  if (memory == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  return memory;
}

void VQQuillonSession::operator delete(void* object) { ::operator delete(object); }

VQCLASSID VQQuillonSession::GetClassID() const { return VQCLASSID_VQQUILLONSESSION; }

VQSTATUS VQQuillonSession::CheckInitialized() const { return IsInitialized() ? VQ_OK : VQERR_NOT_INITIALIZED; }

VQSTATUS VQQuillonSession::StartEngine(unsigned long version, int argc, char** argv, const char* configpath) {
  if (const VQSTATUS status = vq::StartLibrary(version)) return status;
  ENGSTATUS result;
  if (configpath == nullptr) {
    result = EngInit(argc, argv);
  } else {
    result = EngInitWithConfig(configpath);
  }
  const VQSTATUS status = vq::FromEngine(result);
  // The engine's refusal is what the caller hears of; nothing of this session is on the heap yet.
  if (status != VQ_OK) static_cast<void>(vq::EndLibrary());
  return status;
}

VQSTATUS VQQuillonSession::Initialize(unsigned long version, int argc, char** argv, const char* configpath) {
  if (IsInitialized()) return vq::Apply(VQERR_ALREADY_INITIALIZED);
  if (configpath != nullptr && (argc != 0 || argv != nullptr)) {
    vq::AssertionFailed("argc == 0 && argv == 0", kFile, 3254);
  }
  if (const VQSTATUS status = StartEngine(version, argc, argv, configpath)) return vq::Apply(status);
  if (PortName.VQSmartPtr::IsNull()) PortName = VQString();
  Flags |= kProcessFlag;
  return VQ_OK;
}

VQSTATUS VQQuillonSession::InitThread() {
  if (IsInitialized()) return vq::Apply(VQERR_ALREADY_INITIALIZED);
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (const VQSTATUS status = vq::FromEngine(EngThreadInit())) return vq::Apply(status);
  Flags |= kThreadFlag;
  return VQ_OK;
}

// The engine goes last: bodies that the heap walk closes still need it.
VQSTATUS VQQuillonSession::TearDown() {
  const vq::OwnThrowRule quiet(false);  // what a Close raises on the way down is lost, and must not cut the way short
  Objects.DeleteAllObjects();
  Flags &= static_cast<std::uint16_t>(~kProcessFlag);
  if (ServerAddin != nullptr) ServerAddin->Close();
  ServerAddin = nullptr;
  PortName.DeleteBody();
  const VQSTATUS result = vq::EndLibrary();
  EngTerm();
  FreeCaches();
  return result;
}

void VQQuillonSession::FreeCaches() {
  DataDirectory.reset();
  DatabaseOpenFlags = 0;
  MailProgram = kMailProgramUnread;
  RTParserErrorHandler = nullptr;
}

VQSTATUS VQQuillonSession::Term(int reportleaks) {
  if (!(Flags & kProcessFlag)) return VQERR_NOT_INITIALIZED;
  VQSTATUS result = VQ_OK;
  try {
    result = TearDown();
  } catch (VQSTATUS thrown) {
    result = thrown;
  } catch (const std::bad_alloc&) {
    result = VQERR_INSUFFICIENT_MEMORY;
  }
  return result == VQWARN_LEAKED && !reportleaks ? VQ_OK : result;
}

VQSTATUS VQQuillonSession::TermThread() {
  if (!(Flags & kThreadFlag)) return vq::Apply(VQERR_NOT_INITIALIZED);
  Objects.DeleteAllObjects();
  Flags &= static_cast<std::uint16_t>(~kThreadFlag);
  return vq::Apply(vq::FromEngine(EngThreadTerm()));
}

unsigned long VQQuillonSession::GetDatabaseOpenFlags() const {
  vq::ThrowIfError(CheckInitialized());
  return DatabaseOpenFlags;
}

VQSTATUS VQQuillonSession::SetDatabaseOpenFlags(unsigned long flags) {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (flags != 0 && (flags & kOpenFlagsMask) == 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  DatabaseOpenFlags = static_cast<std::uint32_t>(flags);
  return VQ_OK;
}

VQSTATUS VQQuillonSession::BuildPath(const VQString& server, const VQString& file, char* out) const {
  return vq::FromEngine(
      EngPathBuild(PortName.GetPlatformTextPtr(), server.GetPlatformTextPtr(), file.GetPlatformTextPtr(), out));
}

VQSTATUS VQQuillonSession::ConstructNetPathname(const VQString& server, const VQString& file, char* out) const {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  VQ_ASSERT_TEXT(out, "buffer", kFile);
  return vq::Apply(BuildPath(server, file, out));
}

VQSTATUS VQQuillonSession::CompactDatabase(const VQString& path, unsigned long* before, unsigned long* after) const {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (path.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  std::uint32_t sizes[2] = {};
  if (const VQSTATUS status = vq::FromEngine(EngDbCompact(path.GetPlatformTextPtr(), 0, sizes))) {
    return vq::Apply(status);
  }
  if (before != nullptr) *before = sizes[0];
  if (after != nullptr) *after = sizes[1];
  return VQ_OK;
}

VQSTATUS VQQuillonSession::DeleteDatabase(const VQString& path, const VQString& server) {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (path.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  char full[ENG_PATH_SIZE];
  if (const VQSTATUS status = BuildPath(server, path, full)) return vq::Apply(status);
  return vq::Apply(vq::FromEngine(EngDbDelete(full)));
}

VQSTATUS VQQuillonSession::GetQuillonVersion(unsigned short* build, const VQString& server) {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (build == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  std::uint16_t number = server.IsNull() ? LocalVersion : 0;
  if (number == 0) {
    char path[ENG_PATH_SIZE];
    if (const VQSTATUS status = BuildPath(server, "names.vlt", path)) return vq::Apply(status);
    ENGHANDLE database = 0;
    if (const VQSTATUS status = vq::FromEngine(EngDbOpen(path, &database))) return vq::Apply(status);
    const VQSTATUS read = vq::FromEngine(EngDbGetBuild(database, &number));
    const VQSTATUS closed = vq::FromEngine(EngDbClose(database));
    if (read != VQ_OK || closed != VQ_OK) return vq::Apply(read != VQ_OK ? read : closed);
  }
  if (server.IsNull()) LocalVersion = number;
  *build = number;
  return VQ_OK;
}

VQString VQQuillonSession::GetEnvironmentString(const VQString& key) const {
  vq::ThrowIfError(CheckInitialized());
  char text[255];
  const std::uint16_t length = EngEnvGetString(key.GetPlatformTextPtr(), text, sizeof text);
  return VQString(text, length);
}

long VQQuillonSession::GetEnvironmentValue(const VQString& key) const {
  vq::ThrowIfError(CheckInitialized());
  return EngEnvGetInt(key.GetPlatformTextPtr());
}

VQSTATUS VQQuillonSession::SetEnvironmentString(const VQString& key, const VQString& value) const {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (key.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  return vq::Apply(vq::FromEngine(EngEnvSetString(key.GetPlatformTextPtr(), value.GetPlatformTextPtr())));
}

VQSTATUS VQQuillonSession::SetEnvironmentValue(const VQString& key, long value) const {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  if (key.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  return vq::Apply(vq::FromEngine(EngEnvSetInt(key.GetPlatformTextPtr(), value)));
}

VQString VQQuillonSession::GetDataDirectory() {
  vq::ThrowIfError(CheckInitialized());
  if (!DataDirectory) {
    char path[kTextSize];
    EngDataDirectory(path);
    DataDirectory = CopyText(path);
  }
  return VQString(DataDirectory.get());
}

VQString VQQuillonSession::GetUserNameText() {
  vq::ThrowIfError(CheckInitialized());
  ENGCHAR name[kTextSize];
  vq::ThrowIfError(vq::FromEngine(EngUserNameGet(name)));
  return VQString(name);
}

long VQQuillonSession::GetMailProgram() {
  vq::ThrowIfError(CheckInitialized());
  if (MailProgram == kMailProgramUnread) MailProgram = static_cast<std::uint32_t>(EngEnvGetInt("MailSystem"));
  return static_cast<std::int32_t>(MailProgram);
}

VQRTPARSERERRORHANDLER VQQuillonSession::GetRTParserErrorHandler() const {
  vq::ThrowIfError(CheckInitialized());
  return RTParserErrorHandler;
}

VQSTATUS VQQuillonSession::SetRTParserErrorHandler(VQRTPARSERERRORHANDLER handler) {
  if (const VQSTATUS status = CheckInitialized()) return vq::Apply(status);
  RTParserErrorHandler = handler;
  return VQ_OK;
}
