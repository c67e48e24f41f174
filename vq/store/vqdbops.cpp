// VQDatabase: opening, transactions and slates.
#include "engine/database.h"
#include "engine/idtable.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqdoc.h"
#include "vq/store/vqidtab.h"
#include "vq/values/entrycount.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqtext.h"

namespace {

constexpr std::uint32_t kDeletedBit = 0x80000000;

// Keeps a source open for one copy and closes what it opened itself.
class OpenForCopy {
 public:
  explicit OpenForCopy(VQSlate& slate) : Source(slate) {}
  // The copy may have gone into the source's own handle.
  ~OpenForCopy() {
    if (!Opened.IsNull()) Opened.GetSlateBody()->Close();
  }
  OpenForCopy(const OpenForCopy&) = delete;
  OpenForCopy& operator=(const OpenForCopy&) = delete;

  VQSTATUS Open() {
    if (Source.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
    VQDatabaseBody* database = Source.GetDatabaseBody();
    if (database == nullptr || !database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
    if (Source.IsOpen()) return VQ_OK;
    const VQSTATUS status = Source.VQSlate::CreateSlateBody(0, 0, 0);
    if (status == VQ_OK) Opened = Source.GetSlateBody();
    return status;
  }

 private:
  VQSlate& Source;
  VQSlate Opened;
};

}  // namespace

VQDatabase::VQDatabase() = default;
VQDatabase::VQDatabase(const VQDatabase& other) = default;
VQDatabase::VQDatabase(VQDatabaseBody* body) : VQSmartPtr(body) {}

VQDatabase& VQDatabase::operator=(const VQDatabase& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQDatabase& VQDatabase::operator=(VQDatabaseBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQDatabase::GetClassID() const { return VQCLASSID_VQDATABASE; }

VQDatabaseBody* VQDatabase::RequireBody() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetDatabaseBody();
}

VQDatabaseBody* VQDatabase::RequireOpen() const {
  VQDatabaseBody* body = nullptr;
  vq::ThrowIfError(CheckOpen(&body));
  return body;
}

VQSTATUS VQDatabase::CheckOpen(VQDatabaseBody** body) const {
  if (Body == nullptr) return VQERR_OBJECT_NOT_INITIALIZED;
  if (!GetDatabaseBody()->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  *body = GetDatabaseBody();
  return VQ_OK;
}

VQSTATUS VQDatabase::CreateDatabaseBody(VQQuillonSession* session, const VQString& path, const VQString& server) {
  return vq::Apply(CreateBody(session, path, server, VQString()));
}

VQSTATUS VQDatabase::CreateBody(VQQuillonSession* session, const VQString& path, const VQString& server,
                                const VQString& port) {
  VQSTATUS status = VQ_OK;
  auto* body = new VQDatabaseBody(session, path.GetPlatformTextPtr(), server.GetPlatformTextPtr(),
                                  port.GetPlatformTextPtr(), &status);
  if (status != VQ_OK) {
    delete body;
    return status;
  }
  *this = body;
  return VQ_OK;
}

VQSTATUS VQDatabase::Open() { return Open(VQDBOPENFLAGS_OF_SESSION); }

VQSTATUS VQDatabase::Open(unsigned long flags) {
  return vq::Apply(Body != nullptr ? GetDatabaseBody()->Open(flags) : VQERR_OBJECT_NOT_INITIALIZED);
}

VQSTATUS VQDatabase::Close() { return vq::Apply(Body != nullptr ? GetDatabaseBody()->Close() : VQWARN_NOT_OPEN); }

int VQDatabase::IsOpen() const { return Body != nullptr && GetDatabaseBody()->IsOpen(); }
int VQDatabase::IsRemote() const { return RequireBody()->IsRemote(); }
unsigned long VQDatabase::GetDatabaseOpenFlags() const { return RequireOpen()->GetOpenFlags(); }

void* VQDatabase::GetDatabaseHandle(int keep) {
  VQDatabaseBody* body = RequireOpen();
  if (keep != 0) return vq::FromHandle(body->GetHandle());
  const ENGHANDLE handle = body->GiveHandleAway();
  DeleteBody();
  return vq::FromHandle(handle);
}

VQString VQDatabase::GetFilename() const {
  const std::string name(RequireBody()->GetFilename());
  return VQString(name.c_str());
}

VQString VQDatabase::GetFilepath() const { return VQString(RequireBody()->GetFilepath().c_str()); }
VQString VQDatabase::GetServer() const { return VQString(RequireBody()->GetServer().c_str()); }
VQString VQDatabase::GetPort() const { return VQString(RequireBody()->GetPort().c_str()); }

VQSTATUS VQDatabase::BeginTransaction() {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? vq::FromEngine(EngDbBegin(body->GetHandle())) : status);
}

VQSTATUS VQDatabase::CommitTransaction() {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? vq::FromEngine(EngDbCommit(body->GetHandle())) : status);
}

VQSTATUS VQDatabase::RollbackTransaction() {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? vq::FromEngine(EngDbRollback(body->GetHandle())) : status);
}

VQSTATUS VQDatabase::GetSlate(const unsigned long id, VQSlate* slate) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && id == 0) status = VQERR_INVALID_PARAMETER;
  return vq::Apply(status == VQ_OK ? slate->BindTo(body, id) : status);
}

VQSTATUS VQDatabase::GetSlate(const UNIVERSALSLATEID* universal, VQSlate* slate) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && (slate == nullptr || universal == nullptr)) status = VQERR_NULL_POINTER;
  return vq::Apply(status == VQ_OK ? slate->BindTo(body, universal) : status);
}

VQSTATUS VQDatabase::GetSlate(void* handle, VQSlate* slate) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && handle == nullptr) status = VQERR_INVALID_PARAMETER;
  return vq::Apply(status == VQ_OK ? slate->BindToHandle(body, vq::ToHandle(handle)) : status);
}

VQSTATUS VQDatabase::GetDesignSlate(unsigned long type, const VQString& name, VQSlate* slate) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  std::uint32_t id = 0;
  if (status == VQ_OK) {
    status = body->FindDesign(static_cast<unsigned short>(type & VQSLATECLASS_ALL),
                              static_cast<unsigned short>(type >> 16), vq::ViewOf(name), &id);
  }
  return vq::Apply(status == VQ_OK ? slate->BindTo(body, id) : status);
}

VQSTATUS VQDatabase::GetDocument(const unsigned long id, VQDocument* document) const { return GetSlate(id, document); }
VQSTATUS VQDatabase::GetDocument(const UNIVERSALSLATEID* universal, VQDocument* document) const {
  return GetSlate(universal, document);
}
VQSTATUS VQDatabase::GetDocument(void* handle, VQDocument* document) const { return GetSlate(handle, document); }

// A fresh engine table into an array; the table goes with the array or, on failure, at once.
VQSTATUS VQDatabase::FillArray(ENGHANDLE table, unsigned long slate_class, VQSlateArray* slates) const {
  VQIDTable* held = nullptr;
  try {
    held = new VQIDTable(table);
  } catch (...) {
    EngIdTableDestroy(table);
    throw;
  }
  return slates->Assign(GetDatabaseBody(), held, slate_class);
}

VQSTATUS VQDatabase::ListClass(unsigned short classes, VQSlateArray* slates) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates == nullptr) status = VQERR_NULL_POINTER;
  ENGHANDLE table = 0;
  if (status == VQ_OK) {
    status = vq::FromEngine(EngDbSearchClass(body->GetHandle(), classes, nullptr, nullptr, &table));
  }
  return vq::Apply(status == VQ_OK ? FillArray(table, classes, slates) : status);
}

VQSTATUS VQDatabase::GetSlates(VQSlateArray* slates) const { return ListClass(VQSLATECLASS_ALL, slates); }
VQSTATUS VQDatabase::GetDocuments(VQDocumentArray* documents) const {
  return ListClass(VQSLATECLASS_DOCUMENT, documents);
}

VQSTATUS VQDatabase::GetModifiedSlates(const VQDatetime& since, VQSlateArray* slates, unsigned long classes,
                                       VQDatetime* until) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && since.IsUninitialized()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status == VQ_OK && (classes == 0 || classes > 0xFFFF)) status = VQERR_INVALID_PARAMETER;
  if (status != VQ_OK) return vq::Apply(status);
  ENGHANDLE table = 0;
  TIMEDATE read_at{};
  status = vq::FromEngine(EngDbGetModifiedSlates(body->GetHandle(), static_cast<std::uint16_t>(classes),
                                                 since.GetTIMEDATE(), &read_at, &table));
  if (status == VQ_OK) status = FillArray(table, classes, slates);
  if (status == VQ_OK && until != nullptr) *until = read_at;
  return vq::Apply(status);
}

int VQDatabase::DesignExists(unsigned long type, const VQString& name) const {
  std::uint32_t id = 0;
  const VQSTATUS status = RequireOpen()->FindDesign(static_cast<unsigned short>(type),
                                                    static_cast<unsigned short>(type >> 16), vq::ViewOf(name), &id);
  if (status == VQERR_NOT_FOUND) return 0;
  vq::ThrowIfError(status);
  return 1;
}

int VQDatabase::AgentExists(const VQString& name) const {
  return DesignExists(VQSLATECLASS_AGENT | VQDESIGNKIND_AGENT << 16, name);
}
int VQDatabase::FormExists(const VQString& name) const {
  return DesignExists(VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16, name);
}
int VQDatabase::SubformExists(const VQString& name) const {
  return DesignExists(VQSLATECLASS_FORM | VQDESIGNKIND_SUBFORM << 16, name);
}
int VQDatabase::SharedFieldExists(const VQString& name) const { return DesignExists(VQSLATECLASS_FIELD, name); }
int VQDatabase::ViewFolderExists(const VQString& name) const {
  return DesignExists(VQSLATECLASS_VIEW | VQDESIGNKIND_VIEW << 16, name);
}

VQSTATUS VQDatabase::CreateSlate(unsigned long type, VQSlate* slate) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) status = slate->ValidateSlateType(type);
  VQSlateBody* made = nullptr;
  if (status == VQ_OK) status = body->CreateSlate(type, &made);
  if (status == VQ_OK) *slate = made;
  return vq::Apply(status);
}

VQSTATUS VQDatabase::CreateDocument(VQDocument* document) { return CreateSlate(VQSLATECLASS_DOCUMENT, document); }

VQSTATUS VQDatabase::CopyInto(VQSlate& source, unsigned short slate_class, VQSlate* target) {
  VQDatabaseBody* body = nullptr;
  if (source.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQSTATUS status = CheckOpen(&body);
  OpenForCopy open(source);
  if (status == VQ_OK) status = open.Open();
  if (status != VQ_OK) return status;
  const unsigned long type = slate_class != 0 ? slate_class : source.GetSlateType();
  if (target != nullptr) status = target->ValidateSlateType(type);
  ENGHANDLE copy = 0;
  if (status == VQ_OK) status = body->CopySlate(source.GetSlateBody(), slate_class, &copy);
  if (status != VQ_OK) return status;
  if (target == nullptr) return vq::FromEngine(EngSlateClose(copy));
  status = target->BindToHandle(body, copy);
  if (status != VQ_OK) EngSlateClose(copy);
  return status;
}

VQSTATUS VQDatabase::CreateSlate(VQSlate& source, VQSlate* target) { return vq::Apply(CopyInto(source, 0, target)); }
VQSTATUS VQDatabase::CreateDocument(VQDocument& source, VQDocument* target) { return CreateSlate(source, target); }

// An encryption that fails takes the copy away again.
VQSTATUS VQDatabase::FinishEncrypted(VQSTATUS encrypted, VQSlate* target) {
  const VQSTATUS status = encrypted == VQ_OK ? target->GetSlateBody()->Save(0) : encrypted;
  if (status == VQ_OK) return VQ_OK;
  RemoveSlate(target);
  return status;
}

VQSTATUS VQDatabase::CreateEncryptedSlate(VQSlate& source, VQENCRYPTOPTION option, VQSlate* target) {
  if (target == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQSTATUS status = CopyInto(source, 0, target);
  if (status == VQ_OK) status = FinishEncrypted(target->EncryptCopy(option), target);
  return vq::Apply(status);
}

VQSTATUS VQDatabase::CreateEncryptedSlate(VQSlate& source, const VQString& key, VQSlate* target) {
  VQText keys;
  if (!key.IsNull()) keys << key;
  return CreateEncryptedSlate(source, keys, target);
}

VQSTATUS VQDatabase::CreateEncryptedSlate(VQSlate& source, const VQText& keys, VQSlate* target) {
  if (target == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  unsigned long count = 0;
  VQSTATUS status = vq::CountEntries(keys.GetItemBody(), &count);
  if (status == VQ_OK && count == 0) status = VQERR_NULL_STRING;
  if (status == VQ_OK) status = CopyInto(source, 0, target);
  if (status == VQ_OK) status = FinishEncrypted(target->EncryptCopy(keys), target);
  return vq::Apply(status);
}

// The handle is unbound whatever happens.
VQSTATUS VQDatabase::RemoveSlate(VQSlate* slate) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return status;
  const auto id = static_cast<std::uint32_t>(slate->GetSlateID()) & ~kDeletedBit;
  if (slate->IsOpen()) {
    slate->GetSlateBody()->SetDeleteOnClose(0);
    status = slate->GetSlateBody()->Close();
  }
  const VQSTATUS deleted = body->DeleteSlate(id);
  *slate = static_cast<VQSlateBody*>(nullptr);
  return deleted == VQ_OK ? status : deleted;
}

VQSTATUS VQDatabase::DeleteSlate(VQSlate* slate) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && (slate->IsNull() || slate->GetSlateID() == 0)) status = VQERR_INVALID_PARAMETER;
  if (status == VQ_OK && slate->GetDatabaseBody() != body) status = VQERR_DIFFERENT_DATABASE;
  return vq::Apply(status == VQ_OK ? RemoveSlate(slate) : status);
}

VQSTATUS VQDatabase::DeleteDocument(VQDocument* document) { return DeleteSlate(document); }

VQSTATUS VQDatabase::DeleteSlates(const VQSlateArray& slates) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates.IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status == VQ_OK && slates.GetCount() == 0) status = VQERR_EMPTY_ARRAY;
  if (status == VQ_OK && slates.GetDatabase().GetDatabaseBody() != body) status = VQERR_DIFFERENT_DATABASE;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::FromEngine(EngSlateDeleteList(body->GetHandle(), slates.GetIDTable(), body->GetUpdateFlags())));
}

VQSTATUS VQDatabase::GetSpecial(unsigned short selector, VQSlate* slate) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slate == nullptr) status = VQERR_NULL_POINTER;
  std::uint32_t id = 0;
  if (status == VQ_OK) status = body->FindSpecial(selector, &id);
  return vq::Apply(status == VQ_OK ? slate->BindTo(body, id) : status);
}

VQSTATUS VQDatabase::GetAboutDatabaseDocument(VQDocument* document) const {
  return GetSpecial(ENG_SPECIAL_ABOUT, document);
}
VQSTATUS VQDatabase::GetUsingDatabaseDocument(VQDocument* document) const {
  return GetSpecial(ENG_SPECIAL_USING, document);
}
VQSTATUS VQDatabase::GetIcon(VQSlate* slate) const { return GetSpecial(ENG_SPECIAL_ICON, slate); }
VQSTATUS VQDatabase::GetDefaultForm(VQSlate* form) const {
  if (form != nullptr && form->GetClassID() != VQCLASSID_VQFORM && form->GetClassID() != VQCLASSID_VQSLATE) {
    return vq::Apply(VQERR_INCORRECT_SLATE_TYPE);
  }
  return GetSpecial(ENG_SPECIAL_FORM, form);
}
VQSTATUS VQDatabase::GetDefaultViewFolder(VQSlate* view) const { return GetSpecial(ENG_SPECIAL_VIEW, view); }

// A selector is the class of the special slate. The present one goes only once the new one is complete.
VQSTATUS VQDatabase::CreateSpecial(unsigned short selector, VQSlate* source, VQSlate* target) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && target == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) status = target->ValidateSlateType(static_cast<unsigned long>(selector));
  if (status != VQ_OK) return vq::Apply(status);
  std::uint32_t present = 0;
  status = body->FindSpecial(selector, &present);
  if (VQIsError(status)) return vq::Apply(status);
  if (source != nullptr) {
    status = CopyInto(*source, selector, target);
  } else {
    VQSlateBody* made = nullptr;
    status = body->CreateSlate(selector, &made);
    if (status == VQ_OK) *target = made;
  }
  if (status == VQ_OK && present != 0) status = body->DeleteSlate(present);
  return vq::Apply(status);
}

VQSTATUS VQDatabase::CreateAboutDatabaseDocument(VQDocument* document) {
  return CreateSpecial(ENG_SPECIAL_ABOUT, nullptr, document);
}
VQSTATUS VQDatabase::CreateAboutDatabaseDocument(VQDocument& source, VQDocument* document) {
  return CreateSpecial(ENG_SPECIAL_ABOUT, &source, document);
}
VQSTATUS VQDatabase::CreateUsingDatabaseDocument(VQDocument* document) {
  return CreateSpecial(ENG_SPECIAL_USING, nullptr, document);
}
VQSTATUS VQDatabase::CreateUsingDatabaseDocument(VQDocument& source, VQDocument* document) {
  return CreateSpecial(ENG_SPECIAL_USING, &source, document);
}
VQSTATUS VQDatabase::CreateIcon(VQSlate* icon) { return CreateSpecial(ENG_SPECIAL_ICON, nullptr, icon); }
VQSTATUS VQDatabase::CreateIcon(VQSlate& source, VQSlate* icon) {
  return CreateSpecial(ENG_SPECIAL_ICON, &source, icon);
}
