// VQDatabase: one store file, local or on a server, and everything that is reached through it.
//
// Handles share a body that holds the engine's database; the last handle to go closes it, and closing closes every
// slate that is open in it. A session keeps its databases in a list and closes them at its end.
//
// Operations on a handle without a body give VQERR_OBJECT_NOT_INITIALIZED, those that need the open database on a
// closed one VQERR_DATABASE_NOT_OPEN; thrown where the result is no status. A null output gives VQERR_NULL_POINTER.
#ifndef QUILLON_VQ_STORE_VQDBBODY_H
#define QUILLON_VQ_STORE_VQDBBODY_H

#include <string>
#include <string_view>

#include "vq/frame/objlist.h"
#include "vq/frame/vqcommon.h"

class VQACL;
class VQDatabaseBody;
class VQDatetime;
class VQDocument;
class VQDocumentArray;
class VQFTIndexStatistics;
class VQFTSearchOptions;
class VQForm;
class VQFormArray;
class VQFormField;
class VQFormula;
class VQSearchOptions;
class VQSharedField;
class VQSharedFieldArray;
class VQSlate;
class VQSlateArray;
class VQSlateBody;
class VQString;
class VQSubform;
class VQSubformArray;
class VQText;
class VQViewFolder;
class VQViewFolderArray;
enum VQENCRYPTOPTION : unsigned int;
enum VQVFSHARINGOPTION : unsigned int;

// The value of GetReplicationPriority, in place in the replication flags.
enum VQREPLICATIONPRIORITY : unsigned int {
  VQREPLICATIONPRIORITY_MEDIUM = 0x0000,
  VQREPLICATIONPRIORITY_HIGH = 0x4000,
  VQREPLICATIONPRIORITY_LOW = 0xC000,
};

// VQDatabase::Open flags: the bits of this mask.
inline constexpr unsigned long VQDBOPENFLAGS_MASK = 0x103BF;
inline constexpr unsigned long VQDBOPENFLAGS_FAILOVER = 0x80;       // GetServer asks where the database really is
inline constexpr unsigned long VQDBOPENFLAGS_NO_STUBS = 0x10000;    // deletions and saves leave no deletion stubs
inline constexpr unsigned long VQDBOPENFLAGS_OF_SESSION = 0x20000;  // stands for no argument

class VQ_API VQDatabase : public VQSmartPtr {
 public:
  VQDatabase();
  VQDatabase(const VQDatabase& other);
  explicit VQDatabase(VQDatabaseBody* body);
  VQDatabase& operator=(const VQDatabase& other);
  VQDatabase& operator=(VQDatabaseBody* body);
  VQCLASSID GetClassID() const override;

  // VQWARN_ALREADY_OPEN on an open database. A bit outside VQDBOPENFLAGS_MASK gives VQERR_INVALID_PARAMETER, a
  // directory VQERR_PATH_IS_DIRECTORY; a file that is no store, is damaged or newer the engine's status. After a
  // failure the database is closed.
  VQSTATUS Open();
  VQSTATUS Open(unsigned long flags);
  // VQWARN_NOT_OPEN on a closed database and on a null handle.
  VQSTATUS Close();
  int IsOpen() const;
  int IsRemote() const;
  // The engine's database. With keep 0 it becomes the caller's (EngDbClose): open slates are closed, and this handle
  // lets go of its body.
  void* GetDatabaseHandle(int keep = 1);
  unsigned long GetDatabaseOpenFlags() const;
  // Known while closed too.
  VQString GetFilename() const;
  VQString GetFilepath() const;
  VQString GetServer() const;
  VQString GetPort() const;

  // An addition to the open and save operations: several saves and deletions as one. A crash inside leaves the state
  // before BeginTransaction, and so do RollbackTransaction and closing the database. Transactions do not nest (the
  // engine's status 521). Slates that are open across a rollback hold what was rolled back as unsaved changes.
  VQSTATUS BeginTransaction();
  // A failure rolls the transaction back: nothing of it is stored, and open slates hold their changes as unsaved ones.
  VQSTATUS CommitTransaction();
  VQSTATUS RollbackTransaction();

  // Reads every page and value chain of the file and changes nothing. Damage gives the engine's status 515
  // (ENG_ERR_DB_DAMAGED), and *report, which may be null, then says what was wrong first.
  VQSTATUS Check(VQString* report) const;

  // Bind without opening.
  VQSTATUS GetSlate(const unsigned long id, VQSlate* slate) const;
  VQSTATUS GetSlate(const UNIVERSALSLATEID* universal, VQSlate* slate) const;
  // An open engine slate, which the handle takes over.
  VQSTATUS GetSlate(void* handle, VQSlate* slate) const;
  // A design element by type (class and design kind, as VQSlate::GetSlateType gives it) and name: any of the names
  // in its $TITLE, compared exactly. Of a name with several synonyms the first counts. VQERR_NOT_FOUND;
  // VQERR_SLATE_NAME_TOO_LONG above 64 bytes, VQERR_INVALID_PARAMETER for an empty one.
  VQSTATUS GetDesignSlate(unsigned long type, const VQString& name, VQSlate* slate) const;
  VQSTATUS GetDocument(const unsigned long id, VQDocument* document) const;
  VQSTATUS GetDocument(const UNIVERSALSLATEID* universal, VQDocument* document) const;
  VQSTATUS GetDocument(void* handle, VQDocument* document) const;
  VQSTATUS GetSlates(VQSlateArray* slates) const;
  VQSTATUS GetDocuments(VQDocumentArray* documents) const;
  // The slates of the classes that changed at or after `since` (VQDATETIMESPECIAL_MINIMUM: all); the deleted ones among
  // them have bit 31 set in their identifiers. `until`, which may be null, is the moment to pass as `since` the next
  // time.
  VQSTATUS GetModifiedSlates(const VQDatetime& since, VQSlateArray* slates, unsigned long classes,
                             VQDatetime* until) const;
  VQSTATUS GetViewFolder(const unsigned long id, VQViewFolder* view) const;
  VQSTATUS GetViewFolder(const UNIVERSALSLATEID* universal, VQViewFolder* view) const;
  VQSTATUS GetViewFolder(void* handle, VQViewFolder* view) const;
  // By any of its names; statuses as GetDesignSlate.
  VQSTATUS GetViewFolder(const VQString& name, VQViewFolder* view) const;
  VQSTATUS GetViews(VQViewFolderArray* views) const;
  VQSTATUS GetFolders(VQViewFolderArray* folders) const;
  VQSTATUS GetViewFolders(VQViewFolderArray* views) const;
  // Forms, subforms and shared fields: as views, without a mixture of kinds. A slate that is damaged, so that its kind
  // can't be read, is in each list; binding it gives its status.
  VQSTATUS GetForm(const unsigned long id, VQForm* form) const;
  VQSTATUS GetForm(const UNIVERSALSLATEID* universal, VQForm* form) const;
  VQSTATUS GetForm(void* handle, VQForm* form) const;
  VQSTATUS GetForm(const VQString& name, VQForm* form) const;
  VQSTATUS GetForms(VQFormArray* forms) const;
  VQSTATUS GetSubform(const unsigned long id, VQSubform* subform) const;
  VQSTATUS GetSubform(const UNIVERSALSLATEID* universal, VQSubform* subform) const;
  VQSTATUS GetSubform(void* handle, VQSubform* subform) const;
  VQSTATUS GetSubform(const VQString& name, VQSubform* subform) const;
  VQSTATUS GetSubforms(VQSubformArray* subforms) const;
  VQSTATUS GetSharedField(const unsigned long id, VQSharedField* field) const;
  VQSTATUS GetSharedField(const UNIVERSALSLATEID* universal, VQSharedField* field) const;
  VQSTATUS GetSharedField(void* handle, VQSharedField* field) const;
  VQSTATUS GetSharedField(const VQString& name, VQSharedField* field) const;
  VQSTATUS GetSharedFields(VQSharedFieldArray* fields) const;
  int AgentExists(const VQString& name) const;
  int FormExists(const VQString& name) const;
  int SubformExists(const VQString& name) const;
  int SharedFieldExists(const VQString& name) const;
  int ViewFolderExists(const VQString& name) const;

  // A new, open, unsaved slate of the type.
  VQSTATUS CreateSlate(unsigned long type, VQSlate* slate);
  VQSTATUS CreateDocument(VQDocument* document);
  // A saved copy of any open database's slate, new in this database; `target` may be null. Pending item changes of
  // the source are copied too, and a source that is closed is opened for the copy and closed again.
  VQSTATUS CreateSlate(VQSlate& source, VQSlate* target);
  VQSTATUS CreateDocument(VQDocument& source, VQDocument* target);
  // A copy that is encrypted with the named keys; see VQSlate::Encrypt.
  VQSTATUS CreateEncryptedSlate(VQSlate& source, VQENCRYPTOPTION option, VQSlate* target);
  VQSTATUS CreateEncryptedSlate(VQSlate& source, const VQString& key, VQSlate* target);
  VQSTATUS CreateEncryptedSlate(VQSlate& source, const VQText& keys, VQSlate* target);
  // Views and folders. `template_`, which may be null, is a closed view or folder of any database that the design is
  // taken from. The new one is handed out open for its design, and goes again with its handles unless it is saved or
  // takes documents; with a null `view` it is saved at once. VQERR_NULL_STRING, VQERR_STRING_TOO_LONG from 64 bytes of
  // name on, VQERR_INVALID_PARAMETER for a sharing option other than shared and private; the engine's 0x251
  // (ENG_ERR_FOLDER_EXISTS) when a view or folder has the name.
  VQSTATUS CreateView(const VQString& name, const VQViewFolder* template_, VQViewFolder* view);
  VQSTATUS CreateFolder(const VQString& name, VQVFSHARINGOPTION sharing, const VQViewFolder* template_,
                        VQViewFolder* folder);
  // A copy of a view, or of a folder of this database with its documents.
  VQSTATUS CreateViewFolder(const VQString& name, const VQViewFolder& template_, VQViewFolder* view);
  // A new form, open and unsaved; the name as VQForm::SetName takes it.
  VQSTATUS CreateForm(const VQString& name, VQForm* form);
  // A saved copy of any open database's form, with its unsaved changes: what VQForm::Save refuses is refused. The copy
  // has the source's names, and its design is read by VQForm::Open. `form` may be null.
  VQSTATUS CreateForm(VQForm& source, VQForm* form);
  VQSTATUS DeleteForm(VQForm* form);
  VQSTATUS DeleteForm(const VQString& name);
  VQSTATUS CreateSubform(const VQString& name, VQSubform* subform);
  VQSTATUS CreateSubform(VQSubform& source, VQSubform* subform);
  VQSTATUS DeleteSubform(VQSubform* subform);
  VQSTATUS DeleteSubform(const VQString& name);
  // A saved shared field with the design and the name of a field, which stays as it is: VQERR_SHARED_FIELD_EXISTS.
  // `shared` may be null.
  VQSTATUS CreateSharedField(const VQFormField& field, VQSharedField* shared);
  VQSTATUS CreateSharedField(VQSharedField& source, VQSharedField* shared);
  VQSTATUS DeleteSharedField(VQSharedField* field);
  VQSTATUS DeleteSharedField(const VQString& name);
  VQSTATUS DeleteViewFolder(VQViewFolder* view);
  VQSTATUS DeleteViewFolder(const VQString& name);
  // Closes the slate, deletes it and unbinds the handle, whatever the result.
  VQSTATUS DeleteSlate(VQSlate* slate);
  VQSTATUS DeleteDocument(VQDocument* document);
  // One step for all of them. VQERR_EMPTY_ARRAY for an empty array.
  VQSTATUS DeleteSlates(const VQSlateArray& slates);

  // VQWARN_NOT_FOUND when the database has none. Of several forms or views that are marked as the default, the one that
  // was made first.
  VQSTATUS GetAboutDatabaseDocument(VQDocument* document) const;
  VQSTATUS GetUsingDatabaseDocument(VQDocument* document) const;
  VQSTATUS GetIcon(VQSlate* slate) const;
  VQSTATUS GetDefaultForm(VQSlate* form) const;
  VQSTATUS GetDefaultViewFolder(VQSlate* view) const;
  // Made anew after a present one is deleted: open and unsaved, or a saved copy of the source.
  VQSTATUS CreateAboutDatabaseDocument(VQDocument* document);
  VQSTATUS CreateAboutDatabaseDocument(VQDocument& source, VQDocument* document);
  VQSTATUS CreateUsingDatabaseDocument(VQDocument* document);
  VQSTATUS CreateUsingDatabaseDocument(VQDocument& source, VQDocument* document);
  VQSTATUS CreateIcon(VQSlate* icon);
  VQSTATUS CreateIcon(VQSlate& source, VQSlate* icon);

  // Properties. Setters give VQERR_DATABASE_NOT_OPEN on a closed database, getters throw it. Texts that are too long
  // for the database's info block (127 bytes for all four) are cut at a character.
  VQString GetTitle() const;
  VQSTATUS SetTitle(const VQString& title);
  VQText GetDatabaseCatalogCategories() const;
  VQSTATUS SetDatabaseCatalogCategories(const VQText& categories);
  VQString GetTemplateName() const;
  VQSTATUS SetTemplateName(const VQString& name);
  VQString GetInheritsFromTemplateName() const;
  VQSTATUS SetInheritsFromTemplateName(const VQString& name);
  // Kept in this object only.
  VQString GetOwnerName() const;
  VQSTATUS SetOwnerName(const VQString& name);
  // When the file was made, which tells it from any other.
  TIMEDATE GetDatabaseID() const;
  // The same in every replica; not a moment of any meaning.
  TIMEDATE GetReplicaID() const;
  VQDatetime GetCreated() const;
  VQDatetime GetDataLastModified() const;
  VQDatetime GetDesignLastModified() const;
  VQDatetime GetLastModified() const;
  double GetPercentageUsed() const;
  // Bytes.
  double GetSize() const;
  unsigned long GetType() const;
  unsigned short GetBuild() const;
  int GetDisableReplication() const;
  VQSTATUS SetDisableReplication(int flag);
  int GetHideDesign() const;
  VQSTATUS SetHideDesign(int flag);
  int GetListInDatabaseCatalog() const;
  VQSTATUS SetListInDatabaseCatalog(int flag);
  int GetRemoveOldDocuments() const;
  VQSTATUS SetRemoveOldDocuments(int flag);
  unsigned long GetRemoveOldDocumentsDays() const;
  // 0 to 65,535, else VQERR_OUT_OF_RANGE.
  VQSTATUS SetRemoveOldDocumentsDays(unsigned long days);
  int GetNeverReplicate() const;
  VQSTATUS SetNeverReplicate(int flag);
  int GetReplicateReceiveSummaries() const;
  VQSTATUS SetReplicateReceiveSummaries(int flag);
  int GetShowInOpenDatabaseDialog() const;
  VQSTATUS SetShowInOpenDatabaseDialog(int flag);
  int GetDisableBackgroundAgents() const;
  VQSTATUS SetDisableBackgroundAgents(int flag);
  int GetReplicateSendDeletions() const;
  VQSTATUS SetReplicateSendDeletions(int flag);
  VQREPLICATIONPRIORITY GetReplicationPriority() const;
  // A value with other bits than 0xC000 gives VQERR_INVALID_PARAMETER.
  VQSTATUS SetReplicationPriority(VQREPLICATIONPRIORITY priority);
  int GetReplicateSendTitleAndCatalogInfo() const;
  VQSTATUS SetReplicateSendTitleAndCatalogInfo(int flag);
  int IsFTIndexed() const;
  // The engine's status (ENG_ERR_NO_FULL_TEXT) when there is no full text index.
  VQSTATUS GetLastFTIndexed(VQDatetime* moment) const;
  VQSTATUS GetFTIndexFlags(unsigned short* flags) const;
  // The full text index stands in the database and covers texts, names and rich text of its documents as they were at
  // its last update. CreateFTIndex throws away what is there, the others need an index. `statistics` may be null;
  // `progress` is called between the parts of a long update, each of which is kept.
  VQSTATUS CreateFTIndex(VQFTIndexStatistics* statistics = nullptr,
                         void (*progress)(void* context, unsigned long done, unsigned long all) = nullptr,
                         void* context = nullptr);
  VQSTATUS UpdateFTIndex(VQFTIndexStatistics* statistics = nullptr,
                         void (*progress)(void* context, unsigned long done, unsigned long all) = nullptr,
                         void* context = nullptr);
  VQSTATUS DeleteFTIndex();
  // The query language is that of docs/full-text.md; a query that is not of it gives the engine's status
  // (ENG_ERR_TEXT_QUERY), an empty one VQERR_NULL_STRING. The array gets the hits in their order; none give
  // VQWARN_NOT_FOUND and an array without entries. `restriction` leaves only its own entries.
  VQSTATUS FTSearch(const VQString& query, VQDocumentArray* documents) const;
  VQSTATUS FTSearch(const VQString& query, VQDocumentArray* documents, const VQFTSearchOptions& options) const;
  VQSTATUS FTSearch(const VQString& query, VQDocumentArray* documents, const VQFTSearchOptions& options,
                    const VQSlateArray& restriction) const;
  // The slates that the formula selects. Options may be null; their completed date is set.
  VQSTATUS Search(const VQFormula& formula, VQSlateArray* slates, VQSearchOptions* options = nullptr) const;

  // The documents that are new or changed for a user and may be read by that user, who is the session's where none is
  // named; the first reading starts the user's list with all documents. SetUnreadList replaces the list,
  // UpdateUnreadList does what differs between two arrays, so that documents that came in meanwhile stay unread.
  // Entries that are no documents are passed over.
  VQSTATUS GetUnreadList(VQSlateArray* slates) const;
  VQSTATUS GetUnreadList(VQSlateArray* slates, const VQString& user) const;
  VQSTATUS SetUnreadList(const VQSlateArray& slates);
  VQSTATUS SetUnreadList(const VQSlateArray& slates, const VQString& user);
  VQSTATUS UpdateUnreadList(const VQSlateArray& before, const VQSlateArray& after);
  VQSTATUS UpdateUnreadList(const VQSlateArray& before, const VQSlateArray& after, const VQString& user);

  // For the library's own code: the body, or null.
  VQDatabaseBody* GetDatabaseBody() const;
  // Makes a closed body for a path; VQERR_INVALID_DATABASE_PATH for an empty one.
  VQSTATUS CreateDatabaseBody(VQQuillonSession* session, const VQString& path, const VQString& server);

 private:
  friend class VQQuillonSession;

  VQDatabaseBody* RequireBody() const;
  VQDatabaseBody* RequireOpen() const;
  VQSTATUS CheckOpen(VQDatabaseBody** body) const;
  VQSTATUS GetSpecial(unsigned short selector, VQSlate* slate) const;
  VQSTATUS CreateBody(VQQuillonSession* session, const VQString& path, const VQString& server, const VQString& port);
  VQSTATUS CreateSpecial(unsigned short selector, VQSlate* source, VQSlate* target);
  VQSTATUS CopyInto(VQSlate& source, unsigned short slate_class, VQSlate* target);
  VQSTATUS FinishEncrypted(VQSTATUS encrypted, VQSlate* target);
  VQSTATUS RemoveSlate(VQSlate* slate);
  VQString GetInfoText(unsigned short selector) const;
  VQSTATUS SetInfoText(unsigned short selector, const VQString& text);
  VQSTATUS ChangeFlags(unsigned short mask, unsigned short value);
  VQSTATUS FillArray(ENGHANDLE table, unsigned long slate_class, VQSlateArray* slates) const;
  VQSTATUS RunFTSearch(const VQString& query, VQDocumentArray* documents, const VQFTSearchOptions& options,
                       ENGHANDLE restriction) const;
  VQSTATUS RunFTIndex(unsigned short options, VQFTIndexStatistics* statistics,
                      void (*progress)(void* context, unsigned long done, unsigned long all), void* context);
  VQSTATUS ReadUnread(const VQString& user, VQSlateArray* slates) const;
  VQSTATUS WriteUnread(const VQString& user, const VQSlateArray* before, const VQSlateArray& after);
  VQString CurrentUser() const;
  VQSTATUS ListClass(unsigned short classes, VQSlateArray* slates) const;
  int DesignExists(unsigned long type, const VQString& name) const;
  // By class and design kind.
  VQSTATUS ListDesigns(unsigned long type, VQSlateArray* slates) const;
  // Bits of VQVFTYPE values.
  VQSTATUS ListViews(unsigned types, VQViewFolderArray* views) const;
  VQSTATUS MakeFolder(const VQString& name, unsigned sharing, const VQViewFolder* template_, std::uint32_t* id);
  VQSTATUS OpenMade(std::uint32_t id, VQViewFolder* view);
  VQSTATUS HandOutView(VQViewFolder& made, VQViewFolder* view);
  VQSTATUS CopyViewFolder(const VQString& name, const VQViewFolder& template_, VQViewFolder* view);
};

// The open database. Operations return their status and leave the throw rule to the handle.
class VQ_API VQDatabaseBody : public VQBody {
 public:
  // A closed body; what is wrong with the path goes to *status.
  VQDatabaseBody(VQQuillonSession* session, std::string_view path, std::string_view server, std::string_view port,
                 VQSTATUS* status);
  // For an engine database that is open, which the body takes over.
  VQDatabaseBody(VQQuillonSession* session, std::string_view full_path, ENGHANDLE handle, VQSTATUS* status);
  ~VQDatabaseBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  VQSTATUS Open(unsigned long flags);
  // As Close, without closing the engine's database.
  ENGHANDLE GiveHandleAway();
  // Finds a design element of class and kind by its exact name. VQERR_NOT_FOUND.
  VQSTATUS FindDesign(unsigned short slate_class, unsigned short kind, std::string_view name, std::uint32_t* id);
  // The same by a name that an item or a record carries: of any length, and not found where it can be no element's.
  VQSTATUS FindReferenced(unsigned short slate_class, unsigned short kind, std::string_view name, std::uint32_t* id);
  // VQERR_SLATE_NAME_TOO_LONG, VQERR_INVALID_PARAMETER; else the first synonym.
  static VQSTATUS FirstSynonym(std::string_view name, std::string* first);
  // VQWARN_NOT_FOUND.
  VQSTATUS FindSpecial(unsigned short selector, std::uint32_t* id);
  VQSTATUS CreateSlate(unsigned long type, VQSlateBody** body);
  // Saved in this database, with the source's class unless one is given; *copy is an open engine slate, which the
  // caller closes.
  VQSTATUS CopySlate(VQSlateBody* source, std::uint16_t slate_class, ENGHANDLE* copy);
  VQSTATUS DeleteSlate(std::uint32_t id);
  VQSTATUS ReadInfo(unsigned short selector, std::string* text);
  VQSTATUS WriteInfo(unsigned short selector, std::string_view text);
  // Replication flags: the bits of `mask` become those of `value`.
  VQSTATUS ChangeReplicaFlags(unsigned short mask, unsigned short value);

  bool IsOpen() const { return Handle != 0; }
  ENGHANDLE GetHandle() const { return Handle; }
  VQQuillonSession* GetOwnerSession() const { return BodySession; }
  unsigned long GetOpenFlags() const { return OpenFlags; }
  // ENG_UPDATE_NO_STUB in a database opened with VQDBOPENFLAGS_NO_STUBS, else 0.
  unsigned short GetUpdateFlags() const;
  std::string_view GetFilename() const;
  const std::string& GetFilepath() const { return Filepath; }
  const std::string& GetFullPath() const { return FullPath; }
  const std::string& GetPort() const { return Port; }
  std::string GetServer() const;
  bool IsRemote() const { return !Server.empty(); }
  VQObjectList& GetObjects() { return Objects; }
  std::string& GetCachedTitle() { return Title; }
  std::string& GetOwnerName() { return OwnerName; }
  unsigned short GetFTFlags() const { return FTFlags; }

 private:
  VQSTATUS SplitPath(std::string_view full_path);
  VQSTATUS MirrorInfo(const ENGCHAR* info);
  VQSTATUS FindByName(unsigned short slate_class, unsigned short kind, const std::string& name, std::uint32_t* id);
  VQSTATUS SearchDesign(unsigned short slate_class, unsigned short kind, std::string_view name, std::uint32_t* id);
  VQSTATUS CompareName(std::uint32_t id, unsigned short slate_class, unsigned short kind, std::string_view name);

  VQACL* ACL;  // the one object handed out, null if none
  ENGHANDLE Handle;
  std::uint16_t BodyFlags;
  std::string Filepath;  // as it stands on its server
  std::uint16_t FTFlags;
  std::string FullPath;
  VQObjectList Objects;  // slates open in this database
  std::uint32_t OpenFlags;
  std::string OwnerName;
  std::string Port;
  std::string Server;
  VQQuillonSession* BodySession;
  std::string Title;  // empty until read
};

inline VQDatabaseBody* VQDatabase::GetDatabaseBody() const { return static_cast<VQDatabaseBody*>(Body); }

namespace vq {

// Engine handles where a client signature has void*.
inline void* FromHandle(ENGHANDLE handle) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(handle)); }
inline ENGHANDLE ToHandle(const void* pointer) {
  return static_cast<ENGHANDLE>(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace vq

#endif
