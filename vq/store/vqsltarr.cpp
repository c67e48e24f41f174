// VQSlateArray and VQDocumentArray.
#include "engine/idtable.h"
#include "vq/store/vqdoc.h"
#include "vq/store/vqidtab.h"

namespace {

constexpr std::uint16_t kElementSize = 4;

}  // namespace

VQSlateArray::VQSlateArray() : SlateClass(0) {}

VQSlateArray::VQSlateArray(const VQDatabase& database) : SlateClass(VQSLATECLASS_ALL) {
  if (!database.IsOpen()) vq::Throw(VQERR_UNINITIALIZED_ARGUMENT);
  vq::ThrowIfError(Assign(database.GetDatabaseBody(), nullptr, VQSLATECLASS_ALL));
}

VQSlateArray::VQSlateArray(const VQSlateArray& other) = default;

VQSlateArray& VQSlateArray::operator=(const VQSlateArray& other) {
  if (this == &other) return *this;
  VQSmartPtr::operator=(other);
  Database = other.Database;
  SlateClass = other.SlateClass;
  return *this;
}

VQCLASSID VQSlateArray::GetClassID() const { return VQCLASSID_VQSLATEARRAY; }
VQCLASSID VQDocumentArray::GetClassID() const { return VQCLASSID_VQDOCUMENTARRAY; }

VQIDTable* VQSlateArray::RequireTable() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return Table();
}

VQSTATUS VQSlateArray::CheckChange() const {
  if (Body == nullptr) return VQERR_OBJECT_NOT_INITIALIZED;
  return Table()->IsFullText() != 0 ? VQERR_INVALID_FOR_FULL_TEXT : VQ_OK;
}

void VQSlateArray::CreateVQIDTable(ENGHANDLE table) {
  try {
    VQSmartPtr::operator=(new VQIDTable(table));
  } catch (...) {
    EngIdTableDestroy(table);
    throw;
  }
}

VQSTATUS VQSlateArray::Assign(VQDatabaseBody* database, VQIDTable* table, unsigned long slate_class) {
  Database = database;
  SlateClass = static_cast<std::uint32_t>(slate_class);
  if (table != nullptr) {
    VQSmartPtr::operator=(table);
    return VQ_OK;
  }
  ENGHANDLE fresh = 0;
  const VQSTATUS status = vq::FromEngine(EngIdTableCreate(kElementSize, &fresh));
  if (status != VQ_OK) {
    VQSmartPtr::DeleteBody();
    return vq::Apply(status);
  }
  CreateVQIDTable(fresh);
  return VQ_OK;
}

VQSlate VQSlateArray::operator[](unsigned long index) const {
  RequireTable();
  VQSlate slate;
  vq::ThrowIfError(GetSlate(index, &slate));
  return slate;
}

VQSTATUS VQSlateArray::Add(const VQSlate& slate) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (slate.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const unsigned long id = slate.GetSlateID();
  if (id == 0) return vq::Apply(VQERR_SLATE_NOT_SAVED);
  if (slate.GetDatabaseBody() != Database.GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return Add(id);
}

VQSTATUS VQSlateArray::Add(unsigned long id) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (id == 0 || id > UINT32_MAX) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = CheckChange();
  return vq::Apply(status == VQ_OK ? Table()->Add(static_cast<std::uint32_t>(id)) : status);
}

VQSTATUS VQSlateArray::Add(const VQSlateArray& other) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (other.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (other.Database.GetDatabaseBody() != Database.GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return Add(vq::FromHandle(other.GetIDTable()));
}

VQSTATUS VQSlateArray::Add(void* idtable) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  const ENGHANDLE table = vq::ToHandle(idtable);
  if (table == 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (EngIdTableEntries(table) == 0) return vq::Apply(VQERR_EMPTY_ARRAY);
  const VQSTATUS status = CheckChange();
  return vq::Apply(status == VQ_OK ? Table()->AddTable(table) : status);
}

VQSTATUS VQSlateArray::Copy(VQSlateArray* copy) const {
  if (copy == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  ENGHANDLE fresh = 0;
  const VQSTATUS status = vq::FromEngine(EngIdTableCopy(Table()->GetHandle(), &fresh));
  if (status != VQ_OK) return vq::Apply(status);
  copy->Database = Database;
  copy->SlateClass = SlateClass;
  copy->CreateVQIDTable(fresh);
  return VQ_OK;
}

int VQSlateArray::Contains(const VQSlate& slate) const {
  if (slate.IsNull()) vq::Throw(VQERR_UNINITIALIZED_ARGUMENT);
  if (slate.GetDatabaseBody() != Database.GetDatabaseBody()) return 0;
  return Contains(slate.GetSlateID());
}

int VQSlateArray::Contains(unsigned long id) const {
  VQIDTable* table = RequireTable();
  return id != 0 && id <= UINT32_MAX && table->Contains(static_cast<std::uint32_t>(id)) != 0;
}

VQSTATUS VQSlateArray::Remove(const VQSlate& slate) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (slate.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  // An identifier says nothing about the slates of another database.
  if (slate.GetDatabaseBody() != Database.GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return Remove(slate.GetSlateID());
}

VQSTATUS VQSlateArray::Remove(unsigned long id) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (id == 0 || id > UINT32_MAX) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = CheckChange();
  return vq::Apply(status == VQ_OK ? Table()->Remove(static_cast<std::uint32_t>(id)) : status);
}

VQSTATUS VQSlateArray::Remove(const VQSlateArray& other) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (other.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (other.Body == Body) return RemoveAll();
  return Remove(vq::FromHandle(other.GetIDTable()));
}

VQSTATUS VQSlateArray::Remove(void* idtable) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  const ENGHANDLE table = vq::ToHandle(idtable);
  if (table == 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (EngIdTableEntries(table) == 0) return vq::Apply(VQERR_EMPTY_ARRAY);
  const VQSTATUS status = CheckChange();
  return vq::Apply(status == VQ_OK ? Table()->RemoveTable(table) : status);
}

VQSTATUS VQSlateArray::RemoveAll() {
  const VQSTATUS status = CheckChange();
  return vq::Apply(status == VQ_OK ? Table()->RemoveAll() : status);
}

unsigned long VQSlateArray::GetCount() const { return Body != nullptr ? Table()->GetCount() : 0; }
ENGHANDLE VQSlateArray::GetIDTable() const { return RequireTable()->GetHandle(); }
unsigned long VQSlateArray::GetSlateID(unsigned long index) const { return RequireTable()->GetID(index); }

VQSTATUS VQSlateArray::GetSlate(unsigned long index, VQSlate* slate) const {
  VQIDTable* table = RequireTable();
  if (slate == nullptr) vq::Throw(VQERR_NULL_POINTER);
  const std::uint32_t id = table->GetID(index);
  VQSlateBody* body = table->FindBody(id);
  if (body != nullptr) {
    *slate = body;
  } else {
    slate->Assign(Database.GetDatabaseBody(), id);
  }
  slate->SetIDTable(table);
  return VQ_OK;
}

VQDocument VQDocumentArray::operator[](unsigned long index) const {
  RequireTable();
  VQDocument document;
  vq::ThrowIfError(GetSlate(index, &document));
  document.SetFTSearchScore(GetFTSearchScore(index));
  return document;
}

int VQDocumentArray::IsFTSearch() const { return Body != nullptr && Table()->IsFullText() != 0; }

unsigned short VQDocumentArray::GetFTSearchScore(unsigned long index) const {
  VQIDTable* table = RequireTable();
  if (index >= table->GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return table->GetScore(index);
}
