// VQVFNavigator: the handle, with a place of its own.
#include "engine/collection.h"
#include "vq/views/viewbody.h"

VQVFNavigator::VQVFNavigator() : LastIndex(0), Status(VQERR_OBJECT_NOT_INITIALIZED) {}
VQVFNavigator::VQVFNavigator(const VQVFNavigator& other) = default;

VQVFNavigator::VQVFNavigator(VQVFNavigatorBody* body)
    : VQSmartPtr(body), LastIndex(0), Status(VQERR_OBJECT_NOT_INITIALIZED) {
  if (body != nullptr) Position = body->GetStartPosition();
}

VQVFNavigator& VQVFNavigator::operator=(const VQVFNavigator& other) = default;

VQVFNavigator& VQVFNavigator::operator=(VQVFNavigatorBody* body) {
  VQSmartPtr::operator=(body);
  LastIndex = 0;
  Status = VQERR_OBJECT_NOT_INITIALIZED;
  if (body != nullptr) {
    Position = body->GetStartPosition();
  } else {
    Position.Reset();
  }
  return *this;
}

VQCLASSID VQVFNavigator::GetClassID() const { return VQCLASSID_VQVFNAVIGATOR; }

VQSTATUS VQVFNavigator::CheckOpen(VQVFNavigatorBody** body) const {
  *body = GetNavigatorBody();
  return *body == nullptr ? Status : (*body)->GetOpenStatus();
}

VQVFNavigatorBody* VQVFNavigator::RequireOpen() const {
  VQVFNavigatorBody* body = nullptr;
  if (VQSTATUS status = CheckOpen(&body)) vq::Throw(status);
  return body;
}

VQSTATUS VQVFNavigator::Moved(VQSTATUS status) {
  if (status == VQ_OK) LastIndex = 0;
  return vq::Apply(status);
}

VQSTATUS VQVFNavigator::Close() {
  if (Body == nullptr) return vq::Apply(VQWARN_NOT_OPEN);
  const VQSTATUS status = GetNavigatorBody()->Close();
  LastIndex = 0;
  Position.Reset();
  return vq::Apply(status);
}

VQVFEntry VQVFNavigator::operator[](unsigned long index) {
  VQVFNavigatorBody* body = RequireOpen();
  if (index > 0xFFFFFFFFUL) vq::Throw(body->IsEmpty() ? VQERR_NO_ENTRIES : VQERR_BAD_SUBSCRIPT);
  const auto ordinal = static_cast<std::uint32_t>(index);
  VQVFEntry entry;
  if (VQSTATUS status = body->GetIndexed(ordinal, LastIndex, &Position, &entry)) vq::Throw(status);
  LastIndex = ordinal;
  return entry;
}

VQSTATUS VQVFNavigator::Goto(VQNAVIGATION code, VQVFEntry* entry) {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->Goto(code, &Position, entry);
  return Moved(status);
}

VQSTATUS VQVFNavigator::GetEntry(VQVFEntry* entry) { return GetEntry(entry, Position); }

VQSTATUS VQVFNavigator::GetEntry(VQVFEntry* entry, const VQVFPosition& position) {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->GetEntry(position, true, entry);
  return vq::Apply(status);
}

unsigned long VQVFNavigator::GetEntryCount() const {
  std::uint32_t count = 0;
  vq::ThrowIfError(RequireOpen()->GetCount(&count));
  return count;
}

VQDatabase VQVFNavigator::GetEntryDatabase() const { return RequireOpen()->GetViewFolderBody()->GetEntryDatabase(); }

VQSTATUS VQVFNavigator::GetViewFolder(VQViewFolder* view) const {
  VQVFNavigatorBody* body = nullptr;
  if (VQSTATUS status = CheckOpen(&body)) return vq::Apply(status);
  if (view == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  *view = body->GetViewFolderBody();
  return VQ_OK;
}

VQSTATUS VQVFNavigator::GetPosition(VQVFPosition* position) const {
  VQVFNavigatorBody* body = nullptr;
  if (VQSTATUS status = CheckOpen(&body)) return vq::Apply(status);
  if (position == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  *position = Position;
  COLLECTIONPOSITION* cpos = position->GetPosition();
  if (!body->IsFTSearch() || cpos == nullptr || cpos->Tumbler[0] != 0) return VQ_OK;
  VQ_ASSERT(cpos->Level == 0, "VNAVBODY");
  if (!body->IsEmpty()) cpos->Tumbler[0] = 1;
  return VQ_OK;
}

VQSTATUS VQVFNavigator::SetPosition(const VQVFPosition& position) {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->CheckPosition(position);
  if (status == VQ_OK) status = body->CheckRow(*position.GetPosition());
  if (status == VQ_OK) Position = position;
  return Moved(status);
}

VQSTATUS VQVFNavigator::ResetPosition() {
  VQVFNavigatorBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) Position = body->GetStartPosition();
  return Moved(status);
}

int VQVFNavigator::IsCategorized() const { return RequireOpen()->HasFlag(VQVFNavigatorBody::kCategorized); }
int VQVFNavigator::IsFTSearch() const { return RequireOpen()->IsFTSearch(); }

VQSTATUS VQVFNavigator::Refresh() {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->Refresh();
  if (status == VQ_OK) Position = body->GetStartPosition();
  return Moved(status);
}

VQSTATUS VQVFNavigator::GetIDTable(void** table) {
  VQVFNavigatorBody* body = nullptr;
  ENGHANDLE handle = 0;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && table == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) status = body->GetTable(&handle);
  if (status == VQ_OK) *table = vq::FromHandle(handle);
  return vq::Apply(status);
}

VQSTATUS VQVFNavigator::DeleteAllEntries() {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->DeleteAllEntries();
  return vq::Apply(status);
}

VQSTATUS VQVFNavigator::DeleteEntries(VQVFEntry* entry, int withDescendants) {
  VQVFNavigatorBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && entry == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) status = body->DeleteEntries(entry->GetEntryBody(), withDescendants != 0);
  if (status == VQ_OK) *entry = static_cast<VQVFEntryBody*>(nullptr);
  return vq::Apply(status);
}

VQSTATUS VQVFNavigator::DeleteEntries(const VQVFPosition& position, int withDescendants) {
  VQVFNavigatorBody* body = nullptr;
  VQVFEntry entry;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->GetEntry(position, true, &entry);
  if (status == VQ_OK) status = body->DeleteEntries(entry.GetEntryBody(), withDescendants != 0);
  return vq::Apply(status);
}
