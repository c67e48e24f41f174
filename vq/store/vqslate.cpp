// VQSlate: binding, opening and closing.
#include "vq/store/vqslate.h"

#include "engine/database.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/desflags.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqidtab.h"

namespace {

constexpr std::uint32_t kDeletedBit = 0x80000000;

}  // namespace

VQSlate::VQSlate()
    : IDTable(nullptr), SlateID(0), Modified{}, SlateClass(0), DesignKind(0), Originator{}, Universal{} {}

VQSlate::VQSlate(VQDatabaseBody* database, unsigned long id) : VQSlate() { Assign(database, id); }

VQSlate::VQSlate(const VQSlate& other) : VQSlate() { CopyFields(other); }

VQSlate::VQSlate(VQSlateBody* body) : VQSlate() {
  if (body != nullptr) Attach(body);
}

VQSlate::~VQSlate() { Unbind(); }

VQSlate& VQSlate::operator=(const VQSlate& other) {
  if (this == &other) return *this;
  vq::ThrowIfError(ValidateSlateType(other));
  Unbind();
  CopyFields(other);
  return *this;
}

VQSlate& VQSlate::operator=(VQSlateBody* body) {
  if (body == nullptr) {
    Unbind();
    return *this;
  }
  vq::ThrowIfError(ValidateSlateType(body));
  if (body == Body) return *this;
  const VQSlate keep(body);
  // A table that the old slate came from knows nothing of the new one.
  Unbind();
  Attach(body);
  return *this;
}

VQCLASSID VQSlate::GetClassID() const { return VQCLASSID_VQSLATE; }

const VQQuillonSession* VQSlate::GetSession() const {
  return Body != nullptr ? Body->GetSession() : Database.GetSession();
}

int VQSlate::IsNull() const { return SlateClass == 0 && (SlateID & kDeletedBit) == 0; }

void VQSlate::CopyFields(const VQSlate& other) {
  VQSmartPtr::operator=(other.Body);
  Database = other.Database;
  SlateID = other.SlateID;
  Modified = other.Modified;
  SlateClass = other.SlateClass;
  DesignKind = other.DesignKind;
  Originator = other.Originator;
  SetIDTable(other.IDTable);
}

void VQSlate::TakeFields(const VQSlateBody* body) {
  SlateID = body->GetID();
  Modified = body->GetModified();
  SlateClass = body->GetSlateClass();
  DesignKind = body->GetDesignKind();
  Originator = body->GetOriginator();
}

void VQSlate::Attach(VQSlateBody* body) {
  VQSmartPtr::operator=(body);
  if (Database.GetDatabaseBody() != body->GetDatabaseBody()) Database = body->GetDatabaseBody();
  TakeFields(body);
}

void VQSlate::AttachClosed(VQSlateBody* body) {
  body->SetBinding(SlateID & ~kDeletedBit, Originator, Modified);
  LeaveBody();
  Attach(body);
}

void VQSlate::BodyOpened() {
  TakeFields(GetSlateBody());
  if (IDTable != nullptr) IDTable->AddBody(GetSlateBody());
}

// A table counts the bodies that were opened through it; the last handle to go must not leave one open there.
void VQSlate::LeaveBody() {
  if (IDTable != nullptr && Body != nullptr && Body->GetOutsideRefCount() == 2) IDTable->RemoveBody(GetSlateBody());
  VQSmartPtr::DeleteBody();
}

void VQSlate::Unbind() {
  LeaveBody();
  SetIDTable(nullptr);
  SlateClass = DesignKind = 0;
  SlateID = 0;
  Modified = {};
  Originator = {};
  Database.DeleteBody();
}

void VQSlate::SetIDTable(VQIDTable* table) {
  // A closed table keeps no bodies, and none is missed there.
  const VQSTATUS status = table != nullptr && IsOpen() ? table->AddBody(GetSlateBody()) : VQ_OK;
  if (status == VQERR_INSUFFICIENT_MEMORY) vq::Throw(status);
  if (table != nullptr) table->AddReference();
  VQIDTable* old = IDTable;
  IDTable = table;
  if (old != nullptr) old->Release();
}

void VQSlate::Assign(VQDatabaseBody* database, unsigned long id) { vq::ThrowIfError(BindTo(database, id)); }

void VQSlate::Assign(VQDatabaseBody* database, const UNIVERSALSLATEID* universal) {
  vq::ThrowIfError(BindTo(database, universal));
}

void VQSlate::Assign(VQDatabaseBody* database, void* handle) {
  VQ_ASSERT_TEXT(handle, "handle", "VQSLATE");
  vq::ThrowIfError(BindToHandle(database, vq::ToHandle(handle)));
}

VQSTATUS VQSlate::BindTo(VQDatabaseBody* database, unsigned long id) {
  const VQDatabase keep(database);
  Unbind();
  return database == nullptr || id == 0 ? VQ_OK : Bind(database, id);
}

VQSTATUS VQSlate::BindTo(VQDatabaseBody* database, const UNIVERSALSLATEID* universal) {
  const VQDatabase keep(database);
  Unbind();
  if (database == nullptr || universal == nullptr) return VQ_OK;
  if (!database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  std::uint32_t id = 0;
  const ENGSTATUS result =
      EngSlateGetInfoByUniversalID(database->GetHandle(), universal, &id, nullptr, nullptr, nullptr);
  if (result != ENG_OK && (result & ENG_ERROR_MASK) != ENG_ERR_SLATE_DELETED) return vq::FromEngine(result);
  return Bind(database, id);
}

// Only design classes have kinds, and only they need a look into the slate.
VQSTATUS VQSlate::Bind(VQDatabaseBody* database, unsigned long id) {
  if (!database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  if (id > UINT32_MAX) return VQERR_INVALID_PARAMETER;
  const auto engine_id = static_cast<std::uint32_t>(id & ~static_cast<unsigned long>(kDeletedBit));
  ORIGINATORID originator{};
  TIMEDATE modified{};
  std::uint16_t slate_class = 0;
  const ENGSTATUS result = EngSlateGetInfo(database->GetHandle(), engine_id, &originator, &modified, &slate_class);
  const bool deleted = (result & ENG_ERROR_MASK) == ENG_ERR_SLATE_DELETED;
  if (result != ENG_OK && !deleted) return vq::FromEngine(result);
  std::uint16_t kind = 0;
  VQSTATUS status = deleted ? VQ_OK : vq::ReadDesignKind(database, engine_id, slate_class, &kind);
  const unsigned long type = slate_class | static_cast<unsigned long>(kind) << 16;
  if (status == VQ_OK) status = ValidateSlateType(type);
  if (status != VQ_OK) return status;
  Originator = originator;
  Modified = modified;
  SlateClass = slate_class;
  DesignKind = kind;
  SlateID = deleted ? engine_id | kDeletedBit : engine_id;
  Database = database;
  return VQ_OK;
}

VQSTATUS VQSlate::BindToHandle(VQDatabaseBody* database, ENGHANDLE handle) {
  const VQDatabase keep(database);
  Unbind();
  if (!database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  std::uint16_t slate_class = 0;
  std::uint16_t kind = 0;
  VQSTATUS status = vq::FromEngine(EngSlateGetHeader(handle, ENG_SLATE_CLASS, &slate_class));
  if (status == VQ_OK) status = vq::ReadDesignKindOf(handle, slate_class, &kind);
  const unsigned long type = slate_class | static_cast<unsigned long>(kind) << 16;
  if (status == VQ_OK) status = ValidateSlateType(type);
  return status == VQ_OK ? AttachHandle(database, type, handle) : status;
}

VQSTATUS VQSlate::AttachHandle(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = vq::MakeSlateBody(database, type, handle, &body);
  if (status != VQ_OK) return status;
  status = body->ReadHeader();
  if (status == VQ_OK && IDTable != nullptr) status = IDTable->AddBody(body);
  if (status != VQ_OK) {
    body->Detach();
    delete body;
    return status;
  }
  Attach(body);
  return VQ_OK;
}

VQSTATUS VQSlate::Open(unsigned long flags) { return CreateSlateBody(flags, 0, 0); }
VQSTATUS VQSlate::Open(unsigned long flags, unsigned long argument, int argument2) {
  return CreateSlateBody(flags, argument, argument2);
}

// A body that another handle or the database's close has closed is let go for a fresh one.
VQSTATUS VQSlate::CreateSlateBody(unsigned long flags, unsigned long /*argument*/, int /*argument2*/) {
  if (IsOpen()) return VQ_OK;
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  VQDatabaseBody* database = Database.GetDatabaseBody();
  if (database == nullptr || !database->IsOpen()) return vq::Apply(VQERR_DATABASE_NOT_OPEN);
  if (flags > 0xFFFF) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQSTATUS status = ValidateSlateType(GetSlateType());
  if (status != VQ_OK) return vq::Apply(status);
  LeaveBody();
  VQ_ASSERT_TEXT(SlateID, "SlateID", "VQSLATE");
  ENGHANDLE handle = 0;
  status = vq::FromEngine(
      EngSlateOpen(database->GetHandle(), SlateID & ~kDeletedBit, static_cast<std::uint16_t>(flags), &handle));
  if (status != VQ_OK) return vq::Apply(status);
  std::uint16_t opened = 0;
  status = vq::FromEngine(EngSlateGetHeader(handle, ENG_SLATE_CLASS, &opened));
  if (status == VQ_OK && ((opened ^ SlateClass) & VQSLATECLASS_ALL) != 0) status = VQERR_INCORRECT_SLATE_TYPE;
  if (status == VQ_OK) status = AttachHandle(database, GetSlateType(), handle);
  if (status != VQ_OK) EngSlateClose(handle);
  return vq::Apply(status);
}

VQSTATUS VQSlate::Close() {
  if (Body == nullptr) return VQWARN_NOT_OPEN;
  VQSlateBody* body = GetSlateBody();
  VQSTATUS status = VQ_OK;
  if (body->IsOpen()) {
    const bool stays = body->GetDeleteOnClose() == 0;
    status = body->ReadHeader();
    if (stays && status == VQ_OK) TakeFields(body);
    const VQSTATUS closed = body->Close();
    if (!VQIsError(status)) status = closed;
  } else {
    status = VQWARN_NOT_OPEN;
  }
  VQSmartPtr::DeleteBody();
  return vq::Apply(status);
}

VQSTATUS VQSlate::ValidateSlateType(const VQSlate& other) const {
  return other.IsNull() ? VQ_OK : ValidateSlateType(other.GetSlateType());
}

VQSTATUS VQSlate::ValidateSlateType(const VQSlateBody* body) const { return ValidateSlateType(body->GetType()); }

VQSTATUS VQSlate::ValidateSlateType(unsigned long /*type*/) const { return VQ_OK; }

int VQSlate::IsOpen() const { return Body != nullptr && GetSlateBody()->IsOpen(); }

VQSTATUS VQSlate::CheckOpen(VQSlateBody** body) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (!IsOpen()) return VQERR_SLATE_NOT_OPEN;
  *body = GetSlateBody();
  return VQ_OK;
}

VQSlateBody* VQSlate::RequireOpen() const {
  VQSlateBody* body = nullptr;
  vq::ThrowIfError(CheckOpen(&body));
  return body;
}

void VQSlate::RequireBound() const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
}

VQSTATUS VQSlate::Save(unsigned short flags) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  status = body->Save(flags);
  if (status == VQ_OK) TakeFields(body);
  return vq::Apply(status);
}

void* VQSlate::GetSlateHandle(int keep) {
  VQSlateBody* body = RequireOpen();
  if (keep != 0) return vq::FromHandle(body->GetHandle());
  vq::ThrowIfError(body->FlushItems());
  const ENGHANDLE handle = body->Detach();
  const VQSlate hold(body);
  body->Close();
  Unbind();
  return vq::FromHandle(handle);
}
