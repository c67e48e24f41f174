// The client's entry: one session for the process, and one for each further thread that uses the engine.
//
// A session is new, process-initialised (Init) or thread-initialised (InitThread), and can go back to new and up again.
// Handles may be destroyed after Term; their bodies are closed by then. A client's session is not locked: start and end
// belong to one thread while no other uses the library. Every operation below the lifecycle gives VQERR_NOT_INITIALIZED
// on a new session, a null output VQERR_NULL_POINTER; an empty server name means this machine.
#ifndef QUILLON_VQ_FRAME_SESSION_H
#define QUILLON_VQ_FRAME_SESSION_H

#include "vq/frame/objlist.h"
#include "vq/values/vqstring.h"

class VQCreateDatabaseOptions;
class VQDatabase;
class VQDatabaseArray;
class VQDatabaseBody;
class VQDatetime;
class VQInternational;
struct VQRTPARSERERRORDATA;

// Called where the rich text parser meets a damaged record: 0 goes on, a status ends the parse with it.
using VQRTPARSERERRORHANDLER = VQSTATUS (*)(const VQRTPARSERERRORDATA& data);

class VQ_API VQQuillonSession : public VQQuillonClass {
 public:
  VQQuillonSession();
  // Ends what is initialised, as Term(0) or TermThread.
  ~VQQuillonSession() override;
  VQQuillonSession(const VQQuillonSession&) = delete;
  VQQuillonSession& operator=(const VQQuillonSession&) = delete;

  // Sessions live on the plain allocator, out of reach of the tracked heap.
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t, void* place) { return place; }
  static void operator delete(void* object);
  static void operator delete(void*, void*) {}

  VQCLASSID GetClassID() const override;

  // `configpath` names QUILLON.INI or its directory and excludes argc and argv; null lets the engine search.
  // A failure leaves the session new.
  VQSTATUS Initialize(unsigned long version, int argc, char** argv, const char* configpath);
  VQSTATUS Init() { return Initialize(VQ_API_LIBRARY_VERSION, 0, nullptr, nullptr); }
  VQSTATUS Init(int argc, char** argv) { return Initialize(VQ_API_LIBRARY_VERSION, argc, argv, nullptr); }
  VQSTATUS Init(const char* configpath) { return Initialize(VQ_API_LIBRARY_VERSION, 0, nullptr, configpath); }
  // Needs a session that is process-initialised already.
  VQSTATUS InitThread();
  // Closes what this session handed out. The last session also clears the tracked heap: VQWARN_LEAKED tells of
  // objects that were left there, 0 instead unless `reportleaks`. VQERR_NOT_INITIALIZED on a new session is never
  // thrown.
  VQSTATUS Term(int reportleaks = 0);
  // On the thread that called InitThread.
  VQSTATUS TermThread();
  // Whether that session still exists and is initialised; for bodies, which outlive their session with their handles.
  static int IsUsable(const VQQuillonSession* session);
  int IsInitialized() const { return (Flags & (kProcessFlag | kThreadFlag)) != 0; }

  // Databases. Those handed out are unopened unless told otherwise, and are closed by the end of this session.
  VQSTATUS GetDatabase(const VQString& path, VQDatabase* database, const VQString& server = VQString());
  // A plain char* would else be taken for an engine handle.
  VQSTATUS GetDatabase(const char* path, VQDatabase* database, const VQString& server = VQString()) {
    return GetDatabase(VQString(path), database, server);
  }
  // The first database in the server's data directory with that replica identifier; VQWARN_NOT_FOUND.
  VQSTATUS GetDatabase(const TIMEDATE& replicaid, VQDatabase* database, const VQString& server = VQString());
  // Takes over an open engine handle.
  VQSTATUS GetDatabase(void* handle, VQDatabase* database);
  // The databases below a directory of the data directory; `kinds` bits: 0 databases, 1 directories too, 2 go down into
  // directories. VQWARN_NOT_FOUND if there is none.
  VQSTATUS GetDatabases(VQDatabaseArray* databases, const VQString& server, const VQString& directory,
                        unsigned short kinds);
  // Makes the file, open in *database on success. VQERR_DATABASE_EXISTS unless the options overwrite.
  VQSTATUS CreateDatabase(const VQString& path, VQDatabase* database, const VQCreateDatabaseOptions& options,
                          const VQString& server = VQString());
  // Bytes before and after; either pointer may be null.
  VQSTATUS CompactDatabase(const VQString& path, unsigned long* before, unsigned long* after) const;
  VQSTATUS CompactDatabase(const VQDatabase& database, unsigned long* before, unsigned long* after) const;
  VQSTATUS DeleteDatabase(const VQString& path, const VQString& server = VQString());
  // Closes it first and detaches the handle.
  VQSTATUS DeleteDatabase(VQDatabase* database);
  // `out` has room for 256 bytes with the terminator.
  VQSTATUS ConstructNetPathname(const VQString& server, const VQString& file, char* out) const;
  unsigned long GetDatabaseOpenFlags() const;
  // For databases that are opened without flags of their own: 0, or a value with a bit that VQDatabase::Open knows.
  VQSTATUS SetDatabaseOpenFlags(unsigned long flags);
  // Build number of the engine behind the server's names.vlt, or the data directory's.
  VQSTATUS GetQuillonVersion(unsigned short* build, const VQString& server = VQString());

  // Keys of the settings file. A missing key reads as an empty text or 0; texts over 254 bytes are cut.
  VQString GetEnvironmentString(const VQString& key) const;
  long GetEnvironmentValue(const VQString& key) const;
  VQSTATUS SetEnvironmentString(const VQString& key, const VQString& value) const;
  VQSTATUS SetEnvironmentValue(const VQString& key, long value) const;

  VQString GetDataDirectory();
  // Asked of the engine each time.
  VQString GetUserNameText();
  // Key MailSystem, read once.
  long GetMailProgram();
  VQDatetime GetCurrentDatetime() const;
  VQInternational GetInternational() const;

  VQRTPARSERERRORHANDLER GetRTParserErrorHandler() const;
  VQSTATUS SetRTParserErrorHandler(VQRTPARSERERRORHANDLER handler);

 private:
  static constexpr std::uint16_t kProcessFlag = 1;
  static constexpr std::uint16_t kThreadFlag = 2;
  static constexpr std::uint32_t kMailProgramUnread = 9999;

  // VQERR_NOT_INITIALIZED unless this session is initialised for the process or a thread.
  [[nodiscard]] VQSTATUS CheckInitialized() const;
  [[nodiscard]] VQSTATUS BuildPath(const VQString& server, const VQString& file, char* out) const;
  VQSTATUS AdoptDatabase(VQDatabaseBody* body, VQDatabase* database);
  VQSTATUS SearchDirectory(VQDatabaseArray* databases, const VQString& server, const VQString& directory,
                           unsigned short kinds);
  static VQSTATUS WriteOptions(VQDatabaseBody* body, const VQCreateDatabaseOptions& options);
  [[nodiscard]] VQSTATUS StartEngine(unsigned long version, int argc, char** argv, const char* configpath);
  VQSTATUS TearDown();
  void FreeCaches();

  std::uint32_t DatabaseOpenFlags;
  std::unique_ptr<char[]> DataDirectory;
  std::uint16_t Flags;
  std::uint32_t MailProgram;
  std::uint16_t LocalVersion;  // 0 while unread
  VQString PortName;
  VQObjectList Objects;
  VQRTPARSERERRORHANDLER RTParserErrorHandler;
  VQQuillonClass* ServerAddin;  // the one add-in, closed at the end
};

#endif
