// Keys of a find, their list, and how they compare.
#include "vq/views/vfindkey.h"

#include <cstring>
#include <new>

#include "vq/store/storetext.h"
#include "vq/store/vqitem.h"
#include "vq/values/vqdtime.h"

namespace {

constexpr unsigned long kTypeWord = 2;
constexpr unsigned long kLongestKey = 0xFFFD;
constexpr unsigned long kMaximumKeys = 65535;
constexpr unsigned long kLargestTable = 0xFFFF;
constexpr unsigned long kTableHead = 4;
constexpr unsigned long kItemHead = 4;

void Report(VQSTATUS status, unsigned long* target) {
  if (target != nullptr) {
    *target = vq::Apply(status);
  } else {
    vq::ThrowIfError(status);
  }
}

}  // namespace

VQVFFindKey::VQVFFindKey(const VQString& text, unsigned long* status) : Length(0) {
  const unsigned long size = text.GetBufLength();
  Report(size > kLongestKey ? VQERR_STRING_TOO_LONG : Assign(text.GetBuf(), size, TYPE_TEXT), status);
}

VQVFFindKey::VQVFFindKey(const VQDatetime& moment, unsigned long* status) : Length(0) {
  const bool set = !moment.IsUninitialized();
  Report(set ? Assign(moment.GetTIMEDATE(), sizeof(TIMEDATE), TYPE_TIME) : VQERR_UNINITIALIZED_ARGUMENT, status);
}

VQVFFindKey::VQVFFindKey(const double& number, unsigned long* status) : Length(0) {
  Report(Assign(&number, sizeof number, TYPE_NUMBER), status);
}

VQVFFindKey::VQVFFindKey(const VQVFFindKey& other) : VQQuillonClass(other), Length(0) {
  if (other.Length != 0) {
    vq::ThrowIfError(Assign(other.Value.get() + kTypeWord, other.Length - kTypeWord, other.Type()));
  }
}

VQVFFindKey::~VQVFFindKey() = default;

VQVFFindKey& VQVFFindKey::operator=(const VQVFFindKey& other) {
  if (this == &other) return *this;
  VQVFFindKey copy(other);
  VQQuillonClass::operator=(other);
  Value = std::move(copy.Value);
  Length = copy.Length;
  return *this;
}

VQCLASSID VQVFFindKey::GetClassID() const { return VQCLASSID_VQVFFINDKEY; }

VQSTATUS VQVFFindKey::Assign(const void* value, unsigned long length, unsigned short type) {
  if (length == 0) return VQERR_OUT_OF_RANGE;
  std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[length + kTypeWord]);
  if (block == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  vq::StoreWord(block.get(), type);
  std::memcpy(block.get() + kTypeWord, value, length);
  Value = std::move(block);
  Length = static_cast<std::uint16_t>(length + kTypeWord);
  return VQ_OK;
}

unsigned short VQVFFindKey::Type() const {
  return Length != 0 ? vq::LoadWord(Value.get()) : static_cast<unsigned short>(0);
}

VQVFFindKey::operator VQString() const {
  if (Type() != TYPE_TEXT) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
  return {Value.get() + kTypeWord, Length - kTypeWord};
}

VQVFFindKey::operator VQDatetime() const {
  if (Type() != TYPE_TIME) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
  TIMEDATE value;
  std::memcpy(&value, Value.get() + kTypeWord, sizeof value);
  return VQDatetime(value);
}

VQVFFindKey::operator double() const {
  if (Type() != TYPE_NUMBER) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
  double value = 0;
  std::memcpy(&value, Value.get() + kTypeWord, sizeof value);
  return value;
}

VQVFFindKeys::VQVFFindKeys() = default;
VQVFFindKeys::VQVFFindKeys(const VQVFFindKeys& other) : VQQuillonClass(other) { vq::ThrowIfError(Copy(other)); }
VQVFFindKeys::~VQVFFindKeys() { Free(); }
VQCLASSID VQVFFindKeys::GetClassID() const { return VQCLASSID_VQVFFINDKEYS; }

VQVFFindKeys& VQVFFindKeys::operator=(const VQVFFindKeys& other) {
  if (this == &other) return *this;
  VQQuillonClass::operator=(other);
  vq::ThrowIfError(Copy(other));
  return *this;
}

VQVFFindKey& VQVFFindKeys::operator[](unsigned long index) const {
  const VQQuillonClass* at = index < GetCount() ? Keys.GetFirst() : nullptr;
  for (; at != nullptr && index > 0; --index) at = Keys.GetNext(at);
  if (at == nullptr) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return const_cast<VQVFFindKey&>(static_cast<const VQVFFindKey&>(*at));
}

VQSTATUS VQVFFindKeys::Append(const VQString& text) {
  if (text.GetBufLength() > kLongestKey) return vq::Apply(VQERR_STRING_TOO_LONG);
  if (text.GetBufLength() == 0) return vq::Apply(VQERR_OUT_OF_RANGE);
  return Append(new VQVFFindKey(text));
}

VQSTATUS VQVFFindKeys::Append(const VQDatetime& moment) {
  if (moment.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return Append(new VQVFFindKey(moment));
}

VQSTATUS VQVFFindKeys::Append(const double& number) { return Append(new VQVFFindKey(number)); }

VQSTATUS VQVFFindKeys::Append(VQVFFindKey* key) {
  if (key == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQSTATUS status = Keys.CheckObject(key);
  // On the stack, or another list's.
  if (status != VQ_OK) return vq::Apply(status);
  if (key->GetLength() == 0) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (GetCount() >= kMaximumKeys) status = VQERR_TOO_MANY_FIND_KEYS;
  if (status == VQ_OK) {
    ItemTable.reset();
    status = Keys.AddObject(key);
  }
  if (status != VQ_OK) delete key;
  return vq::Apply(status);
}

VQSTATUS VQVFFindKeys::Copy(const VQVFFindKeys& other) {
  if (this == &other) return VQ_OK;
  Free();
  for (const VQQuillonClass* at = other.Keys.GetFirst(); at != nullptr; at = other.Keys.GetNext(at)) {
    const VQSTATUS status = Append(new VQVFFindKey(static_cast<const VQVFFindKey&>(*at)));
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

void VQVFFindKeys::Free() {
  ItemTable.reset();
  Keys.DeleteAllObjects();
}

VQSTATUS VQVFFindKeys::GetItemTable(const void** table) const { return vq::Apply(BuildTable(table)); }

VQSTATUS VQVFFindKeys::BuildTable(const void** table) const {
  if (table == nullptr) return VQERR_NULL_POINTER;
  const VQSTATUS status = ItemTable != nullptr ? VQ_OK : FillItemTable();
  if (status == VQ_OK) *table = ItemTable.get();
  return status;
}

VQSTATUS VQVFFindKeys::FillItemTable() const {
  unsigned long size = kTableHead;
  unsigned long count = 0;
  for (const VQQuillonClass* at = Keys.GetFirst(); at != nullptr; at = Keys.GetNext(at), ++count) {
    size += kItemHead + static_cast<const VQVFFindKey*>(at)->GetLength();
  }
  if (size > kLargestTable) return VQERR_ITEM_TABLE_SIZE;
  std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[size]);
  if (block == nullptr) return VQERR_INSUFFICIENT_MEMORY;
  vq::StoreWord(block.get(), static_cast<unsigned>(size));
  vq::StoreWord(block.get() + 2, static_cast<unsigned>(count));
  unsigned char* head = block.get() + kTableHead;
  unsigned char* value = head + count * kItemHead;
  for (const VQQuillonClass* at = Keys.GetFirst(); at != nullptr; at = Keys.GetNext(at)) {
    const auto& key = static_cast<const VQVFFindKey&>(*at);
    vq::StoreWord(head, 0);
    vq::StoreWord(head + 2, key.GetLength());
    std::memcpy(value, key.GetValue(), key.GetLength());
    head += kItemHead;
    value += key.GetLength();
  }
  ItemTable = std::move(block);
  return VQ_OK;
}

VQVFFindOptions::VQVFFindOptions() : Flags(kDefaultFlags) {}
VQVFFindOptions::VQVFFindOptions(const VQVFFindOptions& other) = default;

VQVFFindOptions& VQVFFindOptions::operator=(const VQVFFindOptions& other) {
  VQQuillonClass::operator=(other);
  Flags = other.Flags;
  return *this;
}

VQCLASSID VQVFFindOptions::GetClassID() const { return VQCLASSID_VQVFFINDOPTIONS; }

VQVFCOMPARISON VQVFFindOptions::GetComparison() const { return static_cast<VQVFCOMPARISON>(Flags & kComparisonMask); }

VQSTATUS VQVFFindOptions::SetComparison(VQVFCOMPARISON comparison) {
  if ((comparison & ~unsigned{kComparisonMask}) != 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  Flags = static_cast<std::uint16_t>((Flags & ~kComparisonMask) | comparison);
  return VQ_OK;
}

int VQVFFindOptions::GetFlag(unsigned short mask) const { return (Flags & mask) != 0; }

VQSTATUS VQVFFindOptions::SetFlag(unsigned short mask, int on) {
  Flags = static_cast<std::uint16_t>(on != 0 ? Flags | mask : Flags & ~mask);
  return VQ_OK;
}
