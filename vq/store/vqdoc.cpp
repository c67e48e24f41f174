#include "vq/store/vqdoc.h"

#include <set>
#include <vector>

#include "engine/idtable.h"
#include "engine/ods.h"
#include "engine/records.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqidtab.h"
#include "vq/values/entrycount.h"
#include "vq/values/vqtext.h"

namespace {

// Universal identifiers of 16 bytes, back to back.
constexpr unsigned short kTypeReferenceList = 0x0004;
constexpr std::uint16_t kTableElement = 4;

class OwnedTable {
 public:
  OwnedTable() = default;
  ~OwnedTable() {
    if (Handle != 0) EngIdTableDestroy(Handle);
  }
  OwnedTable(const OwnedTable&) = delete;
  OwnedTable& operator=(const OwnedTable&) = delete;
  ENGHANDLE* Out() { return &Handle; }
  ENGHANDLE Get() const { return Handle; }
  ENGHANDLE Release() {
    const ENGHANDLE handle = Handle;
    Handle = 0;
    return handle;
  }

 private:
  ENGHANDLE Handle = 0;
};

std::vector<std::uint32_t> IdentifiersOf(ENGHANDLE table) {
  std::vector<std::uint32_t> ids;
  std::uint32_t id = 0;
  for (int more = EngIdTableScan(table, 1, &id); more != 0; more = EngIdTableScan(table, 0, &id)) ids.push_back(id);
  return ids;
}

VQSTATUS CopyTableOf(ENGHANDLE slate, ENGHANDLE* copy) {
  ENGHANDLE table = 0;
  ENGSTATUS result = EngSlateGetHeader(slate, ENG_SLATE_RESPONSES, &table);
  if (result == ENG_OK) result = table != 0 ? EngIdTableCopy(table, copy) : EngIdTableCreate(kTableElement, copy);
  return vq::FromEngine(result);
}

// The responses as they are stored, whatever the document's open handle has read before.
VQSTATUS StoredResponses(VQDatabaseBody* database, std::uint32_t id, ENGHANDLE* copy) {
  ENGHANDLE slate = 0;
  const ENGSTATUS result = EngSlateOpen(database->GetHandle(), id, 0, &slate);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_SLATE_DELETED) return vq::FromEngine(EngIdTableCreate(kTableElement, copy));
  if (result != ENG_OK) return vq::FromEngine(result);
  const VQSTATUS status = CopyTableOf(slate, copy);
  EngSlateClose(slate);
  return status;
}

}  // namespace

VQDocumentBody::VQDocumentBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQSlateBody(database, type, handle), MailType(VQMAILMSGTYPE_DOCUMENT) {}

VQCLASSID VQDocumentBody::GetClassID() const { return VQCLASSID_VQDOCUMENTBODY; }

VQSTATUS VQDocumentBody::SetForm(std::string_view name) {
  return CreateItem("Form", TYPE_TEXT, name.data(), name.size(), VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE, nullptr);
}

VQSTATUS VQDocumentBody::MakeResponse(const UNIVERSALSLATEID& parent) {
  unsigned char value[sizeof(UNIVERSALSLATEID)];
  void* cursor = value;
  ENGSTATUS result = EngOdsWrite(&cursor, ODS_TIMEDATE, &parent.File, 1);
  if (result == ENG_OK) result = EngOdsWrite(&cursor, ODS_TIMEDATE, &parent.Slate, 1);
  if (result != ENG_OK) return vq::FromEngine(result);
  return CreateItem("$REF", kTypeReferenceList, value, sizeof value, VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE,
                    nullptr);
}

VQSTATUS VQDocumentBody::CopyResponses(ENGHANDLE* table) {
  if (GetID() == 0) return CopyTableOf(GetHandle(), table);
  return StoredResponses(GetDatabaseBody(), GetID(), table);
}

// Level by level; a document that is its own ancestor is taken once.
VQSTATUS VQDocumentBody::CollectResponses(ENGHANDLE total) {
  OwnedTable direct;
  VQSTATUS status = CopyResponses(direct.Out());
  if (status != VQ_OK) return status;
  std::vector<std::uint32_t> waiting = IdentifiersOf(direct.Get());
  std::set<std::uint32_t> seen{GetID()};
  while (!waiting.empty()) {
    const std::uint32_t id = waiting.back();
    waiting.pop_back();
    if (!seen.insert(id).second) continue;
    status = vq::FromEngine(EngIdTableInsert(total, id, nullptr));
    OwnedTable below;
    if (status == VQ_OK) status = StoredResponses(GetDatabaseBody(), id, below.Out());
    if (status != VQ_OK) return status;
    const std::vector<std::uint32_t> more = IdentifiersOf(below.Get());
    waiting.insert(waiting.end(), more.begin(), more.end());
  }
  return VQ_OK;
}

VQDocument::VQDocument() : FTSearchScore(0), CloseDatabase(0) {}
VQDocument::VQDocument(VQDatabaseBody* database, unsigned long id, unsigned long /*reserved*/) : VQDocument() {
  Assign(database, id);
}
VQDocument::VQDocument(const VQDocument& other) = default;
VQDocument::VQDocument(const VQSlate& other, unsigned long /*reserved*/) : VQDocument() { *this = other; }
VQDocument::VQDocument(VQDocumentBody* body) : VQSlate(body), FTSearchScore(0), CloseDatabase(0) {}
VQDocument::~VQDocument() = default;

VQDocument& VQDocument::operator=(const VQDocument& other) {
  if (this == &other) return *this;
  VQSlate::operator=(other);
  FTSearchScore = other.FTSearchScore;
  CloseDatabase = other.CloseDatabase;
  return *this;
}

VQDocument& VQDocument::operator=(const VQSlate& other) {
  VQSlate::operator=(other);
  return *this;
}

VQDocument& VQDocument::operator=(VQSlateBody* body) {
  VQSlate::operator=(body);
  return *this;
}

VQCLASSID VQDocument::GetClassID() const { return VQCLASSID_VQDOCUMENT; }

VQSTATUS VQDocument::Close() {
  const VQDatabase database = CloseDatabase != 0 ? GetDatabase() : VQDatabase();
  const VQSTATUS status = VQSlate::Close();
  if (CloseDatabase == 0 || VQIsError(status)) return status;
  VQDatabase closing(database);
  const VQSTATUS closed = closing.Close();
  return status == VQ_OK ? closed : status;
}

VQSTATUS VQDocument::ValidateSlateType(unsigned long type) const {
  return vq::SlateBodyClass(type) == VQCLASSID_VQDOCUMENTBODY ? VQ_OK : VQERR_INCORRECT_SLATE_TYPE;
}

VQSTATUS VQDocument::CheckDocument(VQDocumentBody** body) const {
  VQSlateBody* slate = nullptr;
  const VQSTATUS status = CheckOpen(&slate);
  if (status == VQ_OK) *body = static_cast<VQDocumentBody*>(slate);
  return status;
}

VQText VQDocument::GetCategories() const {
  RequireOpen();
  VQText categories;
  vq::ThrowIfError(GetItem(vq::StringOf("Categories"), &categories));
  return categories;
}

VQSTATUS VQDocument::GetFormSlate(VQString* name) const {
  VQDocumentBody* body = nullptr;
  const VQSTATUS status = CheckDocument(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (name == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  *name = vq::StringOf(body->TextOf("Form"));
  return VQ_OK;
}

VQSTATUS VQDocument::SetFormSlate(const VQString& name) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status == VQ_OK && name.IsNull()) status = VQERR_NULL_STRING;
  return vq::Apply(status == VQ_OK ? body->SetForm(vq::ViewOf(name)) : status);
}

VQSTATUS VQDocument::SetFormSlate(const VQText& name) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  unsigned long entries = 0;
  if (status == VQ_OK) status = vq::CountEntries(name.GetItemBody(), &entries);
  if (status == VQ_OK && entries == 0) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(body->CreateCopy("Form", name.GetItemBody(), VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE, nullptr));
}

int VQDocument::IsAbstracted() const {
  std::uint16_t flags = 0;
  vq::ThrowIfError(vq::FromEngine(EngSlateGetHeader(RequireOpen()->GetHandle(), ENG_SLATE_FLAGS, &flags)));
  return (flags & ENG_SLATE_FLAG_ABSTRACTED) != 0;
}

int VQDocument::IsResponse() const { return HasItem(vq::StringOf("$REF")); }

VQSTATUS VQDocument::MakeResponse(const VQDocument& parent) const {
  VQDocumentBody* body = nullptr;
  const VQSTATUS status = CheckDocument(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (!parent.IsOpen() || parent.GetDatabaseBody() != GetDatabaseBody()) return vq::Apply(VQERR_RESPONSE_DATABASE);
  if (parent.GetSlateID() == 0) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(body->MakeResponse(*parent.GetUniversalID()));
}

VQSTATUS VQDocument::GetParentDocument(VQDocument* parent) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (parent == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  std::uint32_t id = 0;
  status = vq::FromEngine(EngSlateGetHeader(body->GetHandle(), ENG_SLATE_PARENT, &id));
  if (status == VQ_OK && (id == 0 || IsResponse() == 0)) status = VQWARN_NOT_FOUND;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(parent->BindTo(body->GetDatabaseBody(), id));
}

VQSTATUS VQDocument::GetResponses(VQDocumentArray* responses) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (responses == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  OwnedTable table;
  status = body->CopyResponses(table.Out());
  if (status != VQ_OK) return vq::Apply(status);
  auto* held = new VQIDTable(table.Get());
  table.Release();
  return vq::Apply(responses->Assign(body->GetDatabaseBody(), held, VQSLATECLASS_DOCUMENT));
}

VQSTATUS VQDocument::GetAllResponses(VQDocumentArray* responses) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (responses == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  OwnedTable table;
  status = vq::FromEngine(EngIdTableCreate(kTableElement, table.Out()));
  if (status == VQ_OK) status = body->CollectResponses(table.Get());
  if (status != VQ_OK) return vq::Apply(status);
  auto* held = new VQIDTable(table.Get());
  table.Release();
  return vq::Apply(responses->Assign(body->GetDatabaseBody(), held, VQSLATECLASS_DOCUMENT));
}

unsigned long VQDocument::GetResponseCount() const {
  std::uint32_t count = 0;
  vq::ThrowIfError(vq::FromEngine(EngSlateGetHeader(RequireOpen()->GetHandle(), ENG_SLATE_RESPONSE_COUNT, &count)));
  return count;
}
