// VQSlateBody: lifetime, header and saving of an open slate.
#include <algorithm>
#include <utility>

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/storetext.h"
#include "vq/store/vqidtab.h"
#include "vq/store/vqslate.h"

namespace {

VQSTATUS UpdateAll(std::span<VQSlateBody* const> slates, unsigned short flags) {
  const VQDatabaseBody& database = *slates.front()->GetDatabaseBody();
  if (!database.IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  const auto all_flags = static_cast<std::uint16_t>(flags | database.GetUpdateFlags());
  std::vector<ENGHANDLE> handles;
  for (const VQSlateBody* slate : slates) handles.push_back(slate->GetHandle());
  const auto count = static_cast<std::uint32_t>(handles.size());
  return vq::FromEngine(EngSlateUpdateSeveral(handles.data(), count, all_flags));
}

}  // namespace

VQSlateBody::VQSlateBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQBody(database->GetSession()),
      AttachmentCount(0),
      OLEObjectCount(0),
      Database(database),
      DeleteOnClose(0),
      Dirty(0),
      Detached(0),
      FontTable(nullptr),
      KeptItem(nullptr),
      Modified{},
      SlateHandle(0),
      SlateID(0),
      SlateClass(static_cast<std::uint16_t>(type)),
      DesignKind(static_cast<std::uint16_t>(type >> 16)),
      Table(nullptr),
      OpenFlags(0),
      Originator{},
      LostChange(VQ_OK) {
  TakeHandle(handle);
  Database->AddReference();
}

// Handles that Close builds and lets go must not bring the count to zero again.
VQSlateBody::~VQSlateBody() {
  ++RefCount;
  try {
    VQSlateBody::Close();
  } catch (...) {
    // The status of a close that a destructor runs is lost.
  }
  LeaveLists();
  Database->Release();
}

VQCLASSID VQSlateBody::GetClassID() const { return VQCLASSID_VQSLATEBODY; }

void VQSlateBody::KeepItem(VQItemBody* item) {
  if (item == KeptItem) return;
  VQItemBody* old = std::exchange(KeptItem, item);
  OwnReferences = item != nullptr ? 1 : 0;
  if (item != nullptr) {
    item->AddReference();
    item->SetKept(true);
  }
  if (old == nullptr) return;
  old->SetKept(false);
  old->Release();
}

void VQSlateBody::ReleaseOwnParts() {
  if (KeptItem->GetOutsideRefCount() == 0) KeepItem(nullptr);
}

// A body that is open stands in its database's list, so that closing the database reaches it.
// Without the memory for that the handle stays the caller's.
void VQSlateBody::TakeHandle(ENGHANDLE handle) {
  VQElement* element = nullptr;
  if (handle != 0 && Database->GetObjects().GetElement(this, &element) != VQ_OK) {
    vq::ThrowIfError(Database->GetObjects().AddObject(this));
  }
  SlateHandle = handle;
  Detached = 0;
}

void VQSlateBody::LeaveLists() {
  VQElement* element = nullptr;
  if (Database->GetObjects().GetElement(this, &element) == VQ_OK) Database->GetObjects().DeleteElement(element);
  LeaveTable();
}

void VQSlateBody::LeaveTable() {
  VQIDTable* table = Table;
  Table = nullptr;
  if (table != nullptr) table->RemoveBody(this);
}

void VQSlateBody::SetTable(VQIDTable* table) { Table = table; }

void VQSlateBody::TableGone(VQIDTable* table) {
  if (Table == table) Table = nullptr;
}

VQSTATUS VQSlateBody::Close() {
  if (SlateHandle == 0) return VQWARN_NOT_OPEN;
  const ENGHANDLE handle = SlateHandle;
  SlateHandle = 0;
  KeepItem(nullptr);
  Items.DeleteAllObjects();
  ObjectLists.DeleteAllObjects();
  AttachmentCount = OLEObjectCount = 0;
  FontTable = nullptr;
  Dirty = 0;
  OpenFlags = 0;
  LostChange = VQ_OK;
  VQSTATUS status = VQ_OK;
  if (Detached == 0) {
    status = vq::FromEngine(EngSlateClose(handle));
    if (status == VQ_OK && DeleteOnClose != 0 && SlateID != 0) status = Database->DeleteSlate(SlateID);
  }
  DeleteOnClose = 0;
  // The table's count on this body may be the last one.
  ++RefCount;
  LeaveTable();
  --RefCount;
  return status;
}

VQSTATUS VQSlateBody::Open(unsigned long flags) {
  if (SlateHandle != 0) return VQWARN_ALREADY_OPEN;
  if (!Database->IsOpen()) return VQERR_DATABASE_NOT_OPEN;
  if (flags > 0xFFFF) return VQERR_INVALID_PARAMETER;
  ENGHANDLE handle = 0;
  VQSTATUS status =
      vq::FromEngine(EngSlateOpen(Database->GetHandle(), SlateID, static_cast<std::uint16_t>(flags), &handle));
  if (status != VQ_OK) return status;
  TakeHandle(handle);
  OpenFlags = static_cast<std::uint32_t>(flags);
  status = ReadHeader();
  if (status != VQ_OK) VQSlateBody::Close();
  return status;
}

void VQSlateBody::SetBinding(std::uint32_t id, const ORIGINATORID& originator, const TIMEDATE& modified) {
  SlateID = id;
  Originator = originator;
  Modified = modified;
}

VQSTATUS VQSlateBody::ReadHeader() {
  std::uint16_t slate_class = 0;
  ENGSTATUS result = EngSlateGetHeader(SlateHandle, ENG_SLATE_ID, &SlateID);
  if (result == ENG_OK) result = EngSlateGetHeader(SlateHandle, ENG_SLATE_ORIGINATOR, &Originator);
  if (result == ENG_OK) result = EngSlateGetHeader(SlateHandle, ENG_SLATE_MODIFIED, &Modified);
  if (result == ENG_OK) result = EngSlateGetHeader(SlateHandle, ENG_SLATE_CLASS, &slate_class);
  if (result == ENG_OK) SlateClass = slate_class;
  return vq::FromEngine(result);
}

int VQSlateBody::HasPendingChanges() { return 0; }
VQSTATUS VQSlateBody::FlushDesign() { return VQ_OK; }
VQSTATUS VQSlateBody::AdmitObjects(VQRichTextBody&, const VQRTObjectBody&, const VQSlateBody*) { return VQ_OK; }

int VQSlateBody::IsModified() {
  if (Dirty != 0 || HasPendingChanges() != 0) return 1;
  for (VQElement* e = Items.GetFirstElement(); e != nullptr; e = e->Next) {
    if (e->Object != nullptr && static_cast<VQItemBody*>(e->Object)->IsDirty()) return 1;
  }
  std::uint16_t modified = 0;
  vq::ThrowIfError(vq::FromEngine(EngSlateGetHeader(SlateHandle, ENG_SLATE_IS_MODIFIED, &modified)));
  return modified != 0;
}

VQSTATUS VQSlateBody::PrepareSave() { return VQ_OK; }

VQSTATUS VQSlateBody::Save(unsigned short flags) {
  VQSlateBody* const slates[] = {this};
  return SaveTogether(slates, flags);
}

VQSTATUS VQSlateBody::SaveTogether(std::span<VQSlateBody* const> slates, unsigned short flags) {
  for (VQSlateBody* slate : slates) {
    if (VQSTATUS status = slate->TakeLostChange()) return status;
  }
  std::vector<std::vector<const VQItemBody*>> dirty;
  for (const VQSlateBody* slate : slates) dirty.push_back(slate->DirtyItems());
  VQSTATUS status = VQ_OK;
  for (std::size_t i = 0; status == VQ_OK && i < slates.size(); ++i) status = slates[i]->WriteOutItems();
  if (status == VQ_OK) status = UpdateAll(slates, flags);
  if (status != VQ_OK) {
    for (std::size_t i = 0; i < slates.size(); ++i) slates[i]->MarkDirty(dirty[i]);
    return status;
  }
  for (VQSlateBody* slate : slates) {
    const VQSTATUS finished = slate->FinishSave();
    if (status == VQ_OK) status = finished;
  }
  return status;
}

VQSTATUS VQSlateBody::TakeLostChange() {
  if (SlateHandle == 0) return VQERR_SLATE_NOT_OPEN;
  return VQIsError(LostChange) ? std::exchange(LostChange, VQ_OK) : VQ_OK;
}

VQSTATUS VQSlateBody::WriteOutItems() {
  const VQSTATUS status = FlushItems();
  return status == VQ_OK ? PrepareItems() : status;
}

VQSTATUS VQSlateBody::FinishSave() {
  DeleteOnClose = 0;
  Dirty = 0;
  const VQSTATUS status = ReadHeader();
  const VQSTATUS bound = RebindItems();
  return status == VQ_OK ? bound : status;
}

bool VQSlateBody::IsCurrent() const {
  ORIGINATORID stored{};
  if (SlateHandle == 0 || !Database->IsOpen()) return false;
  const ENGSTATUS result = EngSlateGetInfo(Database->GetHandle(), SlateID, &stored, nullptr, nullptr);
  return result == ENG_OK && stored.Sequence == Originator.Sequence &&
         stored.SequenceTime.TimeWord == Originator.SequenceTime.TimeWord &&
         stored.SequenceTime.DateWord == Originator.SequenceTime.DateWord;
}

std::vector<const VQItemBody*> VQSlateBody::DirtyItems() const {
  std::vector<const VQItemBody*> dirty;
  for (VQElement* e = Items.GetFirstElement(); e != nullptr; e = e->Next) {
    auto* item = static_cast<VQItemBody*>(e->Object);
    if (item != nullptr && item->IsDirty()) dirty.push_back(item);
  }
  std::sort(dirty.begin(), dirty.end());
  return dirty;
}

// What a failed save has put into the engine's slate is in no file yet.
void VQSlateBody::MarkDirty(const std::vector<const VQItemBody*>& items) {
  for (VQElement* e = Items.GetFirstElement(); e != nullptr; e = e->Next) {
    auto* item = static_cast<VQItemBody*>(e->Object);
    if (std::binary_search(items.begin(), items.end(), item)) item->SetDirty(1);
  }
}

ENGHANDLE VQSlateBody::Detach() {
  Detached = 1;
  return SlateHandle;
}

VQSTATUS VQSlateBody::ReplaceHandle(ENGHANDLE handle) {
  const ENGHANDLE old = SlateHandle;
  SlateHandle = handle;
  Dirty = 1;
  const VQSTATUS bound = RebindItems();
  const VQSTATUS closed = vq::FromEngine(EngSlateClose(old));
  return bound == VQ_OK ? closed : bound;
}

std::string VQSlateBody::TextOf(std::string_view name) const {
  std::vector<std::string> texts;
  ReadTexts(name, &texts);
  return texts.empty() ? std::string() : texts.front();
}

std::vector<std::string> VQSlateBody::NamesInTitle() const {
  std::vector<std::string> texts;
  ReadTexts("$TITLE", &texts);
  std::vector<std::string> names;
  for (const std::string& text : texts) {
    for (std::size_t from = 0; from <= text.size();) {
      const std::size_t bar = std::min(text.find('|', from), text.size());
      names.push_back(text.substr(from, bar - from));
      from = bar + 1;
    }
  }
  return names;
}

VQString VQSlateBody::GetName() {
  const std::vector<std::string> names = NamesInTitle();
  return vq::StringOf(names.empty() ? std::string_view() : names.front());
}

VQString VQSlateBody::GetAlias() {
  const std::vector<std::string> names = NamesInTitle();
  return vq::StringOf(names.size() < 2 ? std::string_view() : names.back());
}
