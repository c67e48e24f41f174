// VQItemBody: where the value lies, its lifetime, reading and writing.
#include <algorithm>
#include <cstring>

#include "engine/memory.h"
#include "engine/ods.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr unsigned long kTypeWord = 2;
constexpr unsigned long kMaximumValue = 65535;

void CheckSession() {
  if (!VQIsQuillonInitialized()) vq::Throw(VQERR_NOT_INITIALIZED);
}

}  // namespace

VQItemBody::VQItemBody()
    : EntryCount(-1),
      State(kOpen),
      Flags(0),
      ValueType(0),
      QueryDone(true),
      EntriesChecked(false),
      ItemBlockID{},
      Slate(nullptr),
      ValueBlockID{},
      ValuePtr(nullptr),
      LockCount(0),
      ValueSize(0) {
  CheckSession();
}

VQItemBody::VQItemBody(std::string_view name, unsigned short flags, unsigned short type, const BLOCKID& value,
                       unsigned long size)
    : VQItemBody() {
  if (size < kTypeWord || size > UINT32_MAX) vq::Throw(VQERR_INVALID_PARAMETER);
  Name = name;
  Flags = flags;
  ValueType = type;
  ValueBlockID = value;
  ValueSize = static_cast<std::uint32_t>(size);
}

VQItemBody::VQItemBody(unsigned short type, const void* data, unsigned long length) : VQItemBody() {
  if (length > kMaximumValue - kTypeWord) vq::Throw(VQERR_INVALID_PARAMETER);
  vq::ThrowIfError(ReplaceValue(type, data, length));
}

VQItemBody::VQItemBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place) : VQItemBody() {
  VQ_ASSERT_TEXT(slate, "slate", "VQITEM");
  Name = name;
  QueryDone = false;
  ItemBlockID = place.Item;
  ValueBlockID = place.Value;
  ValueSize = place.Size;
  ValueType = place.Type;
  BindSlate(slate);
}

VQItemBody::VQItemBody(VQSlateBody* slate, std::string_view name) : VQItemBody() {
  VQ_ASSERT_TEXT(slate, "slate", "VQITEM");
  vq::ItemPlace place;
  const VQSTATUS status = slate->PlaceOf(name, &place);
  if (status != VQ_OK) vq::Throw(status == VQWARN_NOT_FOUND ? VQERR_ITEM_DOES_NOT_EXIST : status);
  Name = name;
  QueryDone = false;
  ItemBlockID = place.Item;
  ValueBlockID = place.Value;
  ValueSize = place.Size;
  ValueType = place.Type;
  BindSlate(slate);
}

VQItemBody::~VQItemBody() {
  VQItemBody::Close();
  DetachFromSlate();
}

VQCLASSID VQItemBody::GetClassID() const { return VQCLASSID_VQITEMBODY; }
VQCLASSID VQSlateItemBody::GetClassID() const { return VQCLASSID_VQSLATEITEMBODY; }

void VQItemBody::BindSlate(VQSlateBody* slate) {
  Slate = slate;
  Slate->AddReference();
  Session = slate->GetSession();
}

// A slate that nobody has a handle on goes with the last handle on the item that it keeps.
void VQItemBody::ReleaseOwnParts() {
  if (Slate->GetOutsideRefCount() == 0) Slate->KeepItem(nullptr);
}

// The slate may be destroyed by this, so that it comes last of all.
void VQItemBody::DetachFromSlate() {
  if (Slate == nullptr) return;
  VQSlateBody* slate = Slate;
  slate->RemoveItem(this);
  Slate = nullptr;
  slate->Release();
}

VQSTATUS VQItemBody::Close() {
  if ((State & kOpen) == 0) return VQWARN_NOT_OPEN;
  const VQSTATUS status = KeepChanges();
  State &= static_cast<std::uint16_t>(~(kOpen | kDirty));
  Free();
  return status;
}

// Changes of an item whose last handle goes stay in the open slate, as those of an item that lives on do. What prevents
// that reaches the client by the next save: a destructor has no other way.
VQSTATUS VQItemBody::KeepChanges() {
  if (Slate == nullptr || !Slate->IsOpen() || (State & kDeleted) != 0 || !IsDirty()) return VQ_OK;
  VQSTATUS status = VQ_OK;
  try {
    status = Flush();
    if (!VQIsError(status)) status = PrepareForSave();
  } catch (VQSTATUS thrown) {
    status = thrown;
  }
  if (VQIsError(status)) Slate->NoteLostChange(status);
  return status;
}

VQSTATUS VQItemBody::Free() {
  while (LockCount > 0) Unlock();
  const ENGHANDLE owned = (State & kOwnsValue) != 0 ? ValueBlockID.Pool : 0;
  State &= static_cast<std::uint16_t>(~kOwnsValue);
  ValueBlockID = {};
  ValueSize = 0;
  ForgetEntryCount();
  return owned != 0 ? vq::FromEngine(EngMemFree(owned)) : VQ_OK;
}

VQSTATUS VQItemBody::Rebind(const vq::ItemPlace& place) {
  if (ValuePtr != nullptr && !vq::SameBlock(place.Value, ValueBlockID)) {
    while (LockCount > 0) Unlock();
  }
  ItemBlockID = place.Item;
  ValueBlockID = place.Value;
  ValueSize = place.Size;
  ValueType = place.Type;
  ForgetEntryCount();
  return Rebound();
}

VQSTATUS VQItemBody::Rebound() { return VQ_OK; }

void VQItemBody::MarkDeleted() {
  State |= kDeleted;
  State &= static_cast<std::uint16_t>(~kDirty);
  Free();
  ItemBlockID = {};
}

void VQItemBody::SetState(unsigned short bits, bool on) {
  State = static_cast<std::uint16_t>(on ? State | bits : State & ~bits);
}

VQSTATUS VQItemBody::CheckValue() const {
  if ((State & kOpen) == 0 || vq::IsNullBlock(ValueBlockID)) return VQERR_ITEM_UNINITIALIZED;
  return Slate == nullptr || Slate->IsOpen() ? VQ_OK : VQERR_ITEM_UNINITIALIZED;
}

// A range of no bytes may stand anywhere up to the value's size; bytes must lie in the data.
VQSTATUS VQItemBody::CheckRange(unsigned long offset, unsigned long size) const {
  if (offset > ValueSize || size > ValueSize - offset) return VQERR_ITEM_OFFSET;
  return size == 0 || offset + size <= ValueSize - kTypeWord ? VQ_OK : VQERR_ITEM_OFFSET;
}

// Spelling and flags are asked for only when somebody wants them.
void VQItemBody::QueryItem() const {
  if (QueryDone || (State & kDeleted) != 0 || Slate == nullptr || !Slate->IsOpen()) return;
  std::string name(Name.size(), '\0');
  std::uint16_t length = 0;
  const ENGSTATUS result =
      EngItemQuery(Slate->GetHandle(), ItemBlockID, reinterpret_cast<ENGCHAR*>(name.data()),
                   static_cast<std::uint16_t>(name.size()), &length, &Flags, nullptr, nullptr, nullptr);
  vq::ThrowIfError(vq::FromEngine(result));
  if (length == name.size()) Name = name;
  QueryDone = true;
}

unsigned short VQItemBody::GetFlags() {
  QueryItem();
  return Flags;
}

std::string_view VQItemBody::GetNameText() const {
  QueryItem();
  return Name;
}

const char* VQItemBody::GetName() const {
  QueryItem();
  return Name.c_str();
}

VQSTATUS VQItemBody::SetName(std::string_view name) {
  if (Slate != nullptr) {
    if (name.empty()) return VQERR_NAME_REQUIRED;
    const ENGSTATUS result =
        EngItemRename(Slate->GetHandle(), ItemBlockID, vq::EngineText(name), static_cast<std::uint16_t>(name.size()));
    if ((result & ENG_ERROR_MASK) == ENG_ERR_ITEM_EXISTS) return VQERR_ITEM_EXISTS;
    if (result != ENG_OK) return vq::FromEngine(result);
  }
  QueryItem();
  Name = name;
  return VQ_OK;
}

unsigned long VQItemBody::GetValueSize() { return ValueSize; }

int VQItemBody::IsBlock(ENGHANDLE pool, unsigned short offset) const {
  return ItemBlockID.Pool == pool && ItemBlockID.Block == offset;
}

int VQItemBody::IsDirty() { return (State & kDirty) != 0; }

void VQItemBody::SetDirty(int dirty) {
  SetState(kDirty, dirty != 0);
  if (dirty != 0 && Slate != nullptr) Slate->SetDirty();
}

VQSTATUS VQItemBody::Flush() {
  if (Slate != nullptr && IsDirty()) {
    const ENGSTATUS result = EngItemTouch(Slate->GetHandle(), ItemBlockID);
    if (result != ENG_OK) return vq::FromEngine(result);
  }
  State &= static_cast<std::uint16_t>(~kDirty);
  return VQ_OK;
}

void* VQItemBody::Lock() {
  if (ValuePtr == nullptr) {
    if (CheckValue() != VQ_OK) return nullptr;
    auto* start = static_cast<unsigned char*>(EngMemLock(ValueBlockID.Pool));
    if (start == nullptr) return nullptr;
    ValuePtr = start + ValueBlockID.Block;
    LockCount = 0;
  }
  ++LockCount;
  return ValuePtr;
}

VQSTATUS VQItemBody::Unlock() {
  if (LockCount == 0) return VQ_OK;
  if (--LockCount > 0) return VQ_OK;
  ValuePtr = nullptr;
  return vq::FromEngine(EngMemUnlock(ValueBlockID.Pool));
}

VQSTATUS VQItemBody::Read(unsigned long offset, unsigned long size, void* buffer) {
  VQSTATUS status = CheckValue();
  if (status == VQ_OK) status = CheckRange(offset, size);
  if (status != VQ_OK || size == 0) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  std::memcpy(buffer, value.Data() + offset, size);
  return VQ_OK;
}

VQSTATUS VQItemBody::Write(unsigned long offset, unsigned long size, const void* data) {
  VQSTATUS status = CheckValue();
  if (status == VQ_OK) status = CheckRange(offset, size);
  if (status != VQ_OK || size == 0) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  std::memcpy(value.Data() + offset, data, size);
  ForgetEntryCount();
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQItemBody::ReadODS(unsigned long offset, unsigned short type, void* target) {
  VQSTATUS status = CheckValue();
  if (status == VQ_OK) status = CheckRange(offset, EngOdsLength(type));
  if (status != VQ_OK) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  void* cursor = value.Data() + offset;
  return vq::FromEngine(EngOdsRead(&cursor, type, target, 1));
}

VQSTATUS VQItemBody::WriteODS(unsigned long offset, unsigned short type, const void* source) {
  VQSTATUS status = CheckValue();
  if (status == VQ_OK) status = CheckRange(offset, EngOdsLength(type));
  if (status != VQ_OK) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  void* cursor = value.Data() + offset;
  status = vq::FromEngine(EngOdsWrite(&cursor, type, source, 1));
  if (status != VQ_OK) return status;
  ForgetEntryCount();
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQItemBody::CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags, vq::ItemPlace* first) {
  const VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  return slate->AppendItem(name, ValueType, value.Data(), ValueSize - kTypeWord, flags, first);
}

VQSTATUS VQItemBody::Join(VQItemBody*) { return VQERR_ITEM_EXISTS; }
