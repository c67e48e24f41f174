// VQSlate: header, items and encryption.
#include "engine/database.h"
#include "engine/later.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqtext.h"

namespace {

constexpr std::uint32_t kDeletedBit = 0x80000000;
constexpr std::string_view kKeysItem = "SecretEncryptionKeys";

}  // namespace

unsigned long VQSlate::GetSlateID() const {
  RequireBound();
  return Body != nullptr && IsOpen() ? GetSlateBody()->GetID() : SlateID;
}

const ORIGINATORID* VQSlate::GetOriginatorID() const {
  RequireBound();
  return IsOpen() ? &GetSlateBody()->GetOriginator() : &Originator;
}

// The first two members of the originator are the universal identifier.
const UNIVERSALSLATEID* VQSlate::GetUniversalID() const {
  const ORIGINATORID* origin = GetOriginatorID();
  Universal = {origin->File, origin->Slate};
  return &Universal;
}

unsigned long VQSlate::GetSlateType() const {
  RequireBound();
  return SlateClass | static_cast<unsigned long>(DesignKind) << 16;
}

VQDatabase VQSlate::GetDatabase() const {
  RequireBound();
  return Database;
}

VQString VQSlate::GetName() const { return RequireOpen()->GetName(); }
VQString VQSlate::GetAlias() const { return RequireOpen()->GetAlias(); }

VQDatetime VQSlate::HeaderTime(unsigned short member) const {
  TIMEDATE moment{};
  vq::ThrowIfError(vq::FromEngine(EngSlateGetHeader(RequireOpen()->GetHandle(), member, &moment)));
  return VQDatetime(moment);
}

VQDatetime VQSlate::GetAddedToFile() const { return HeaderTime(ENG_SLATE_ADDED); }
VQDatetime VQSlate::GetLastAccessed() const { return HeaderTime(ENG_SLATE_ACCESSED); }
VQDatetime VQSlate::GetCreated() const { return VQDatetime(GetOriginatorID()->Slate); }

VQDatetime VQSlate::GetLastModified() const {
  RequireBound();
  return VQDatetime(IsOpen() ? GetSlateBody()->GetModified() : Modified);
}

VQText VQSlate::GetAuthor() const {
  const VQSlateBody* body = RequireOpen();
  std::vector<std::string> names;
  body->ReadTexts("$UpdatedBy", &names);
  if (names.empty()) body->ReadTexts("From", &names);
  VQText author;
  for (const std::string& name : names) author << vq::StringOf(name);
  return author;
}

unsigned long VQSlate::GetSize() const {
  std::uint32_t size = 0;
  const ENGSTATUS result = EngSlateGetHeader(RequireOpen()->GetHandle(), ENG_SLATE_SIZE, &size);
  if (result != ENG_OK) vq::Throw(VQERR_CANT_GET_SLATE_SIZE);
  return size;
}

int VQSlate::IsDeleted() const {
  RequireBound();
  if ((SlateID & kDeletedBit) != 0) return 1;
  const unsigned long id = GetSlateID();
  VQDatabaseBody* database = GetDatabaseBody();
  if (id == 0) return 0;
  if (!database->IsOpen()) vq::Throw(VQERR_DATABASE_NOT_OPEN);
  const ENGSTATUS result =
      EngSlateGetInfo(database->GetHandle(), static_cast<std::uint32_t>(id), nullptr, nullptr, nullptr);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_SLATE_DELETED) return 1;
  vq::ThrowIfError(vq::FromEngine(result));
  return 0;
}

int VQSlate::HeaderFlag(unsigned short mask) const {
  std::uint16_t flags = 0;
  vq::ThrowIfError(vq::FromEngine(EngSlateGetHeader(RequireOpen()->GetHandle(), ENG_SLATE_FLAGS, &flags)));
  return (flags & mask) != 0;
}

int VQSlate::IsEncrypted() const { return HeaderFlag(ENG_SLATE_FLAG_ENCRYPTED); }
int VQSlate::IsSigned() const { return HeaderFlag(ENG_SLATE_FLAG_SIGNED); }
int VQSlate::IsModified() const { return RequireOpen()->IsModified(); }

VQSTATUS VQSlate::EncryptWith(VQSlateBody* body, VQENCRYPTOPTION option) {
  VQSTATUS status = body->FlushItems();
  if (status != VQ_OK) return status;
  ENGHANDLE encrypted = 0;
  status = vq::FromEngine(EngSlateEncrypt(body->GetHandle(), static_cast<std::uint16_t>(option), &encrypted));
  return status == VQ_OK ? body->ReplaceHandle(encrypted) : status;
}

VQSTATUS VQSlate::Encrypt(VQENCRYPTOPTION option) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? EncryptWith(body, option) : status);
}

VQSTATUS VQSlate::EncryptWith(VQSlateBody* body, const VQText& keys) {
  VQSTATUS status = vq::Caught([&]() -> VQSTATUS {
    const unsigned long count = keys.GetCount();
    for (unsigned long i = 0; i < count; ++i) {
      if (VQString(keys[i]).IsNull()) return VQERR_NULL_STRING;
    }
    return count != 0 ? VQ_OK : VQERR_NULL_STRING;
  });
  if (status != VQ_OK) return status;
  status = body->CreateCopy(kKeysItem, keys.GetItemBody(), VQITEMFLAGS_SUMMARY, VQITEMOPTION_REPLACE, nullptr);
  return status == VQ_OK ? EncryptWith(body, VQENCRYPTOPTION_SECRET_KEYS) : status;
}

VQSTATUS VQSlate::Encrypt(const VQString& key) {
  VQText keys;
  if (!key.IsNull()) keys << key;
  return Encrypt(keys);
}

VQSTATUS VQSlate::Encrypt(const VQText& keys) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? EncryptWith(body, keys) : status);
}

VQSTATUS VQSlate::Decrypt() {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = vq::FromEngine(EngSlateDecrypt(body->GetHandle(), 0));
  return vq::Apply(status == VQ_OK ? body->RebindItems() : status);
}

// The engine rewrites the signature, so that no body of the old one may stay.
VQSTATUS VQSlate::Sign() {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = body->FlushItems();
  if (status == VQ_OK) status = vq::FromEngine(EngSlateSign(body->GetHandle()));
  return vq::Apply(status == VQ_OK ? body->RebindItems() : status);
}

VQSTATUS VQSlate::Unsign() {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = vq::FromEngine(EngSlateUnsign(body->GetHandle()));
  return vq::Apply(status == VQ_OK ? body->RebindItems() : status);
}

VQSTATUS VQSlate::HandOut(VQSlateBody* body, VQItemBody* item, VQItem* target) const {
  const VQItem hold(item);
  return target->Assign(body, item);
}

VQSTATUS VQSlate::GetItem(const VQString& name, VQItem* item) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && item == nullptr) status = VQERR_NULL_POINTER;
  VQItemBody* found = nullptr;
  if (status == VQ_OK) status = vq::Caught([&] { return body->FindItem(vq::ViewOf(name), &found); });
  return vq::Apply(status == VQ_OK ? HandOut(body, found, item) : status);
}

VQSTATUS VQSlate::CreateItem(const VQString& name, VQItem* item, unsigned short flags, VQITEMOPTION option) {
  const vq::ItemKindRow* kind = item != nullptr ? vq::FindItemKind(item->GetClassID()) : nullptr;
  return CreateItem(name, kind != nullptr ? kind->Type : 0, nullptr, 0, flags, option, item);
}

// What the target can't hold is refused before anything is made.
VQSTATUS VQSlate::CreateItem(const VQString& name, unsigned long type, const void* data, unsigned long size,
                             unsigned short flags, VQITEMOPTION option, VQItem* item) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (type > 0xFFFF) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (data == nullptr && size != 0) return vq::Apply(VQERR_NULL_POINTER);
  const std::string_view text = vq::ViewOf(name);
  const auto word = static_cast<unsigned short>(type);
  if (item != nullptr && !vq::AcceptsItemBody(item->GetClassID(), vq::ItemBodyClass(word, text))) {
    return vq::Apply(VQERR_INCORRECT_ITEM_TYPE);
  }
  vq::ItemPlace place;
  status = vq::Caught([&] { return body->CreateItem(text, word, data, size, flags, option, &place); });
  return vq::Apply(status == VQ_OK ? HandOutPlace(body, text, place, item) : status);
}

VQSTATUS VQSlate::HandOutPlace(VQSlateBody* body, std::string_view name, const vq::ItemPlace& place,
                               VQItem* item) const {
  if (item == nullptr) return VQ_OK;
  VQItemBody* found = nullptr;
  const VQSTATUS status = vq::Caught([&] { return body->BodyFor(name, place, &found); });
  return status == VQ_OK ? HandOut(body, found, item) : status;
}

VQSTATUS VQSlate::CreateItem(const VQItem& source, VQITEMOPTION option, VQItem* item) {
  if (source.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(vq::Caught([&] { return CreateItem(source.GetName(), source, source.GetFlags(), option, item); }));
}

VQSTATUS VQSlate::CreateItem(const VQString& name, const VQItem& source, unsigned short flags, VQITEMOPTION option,
                             VQItem* item) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && source.IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status != VQ_OK) return vq::Apply(status);
  const std::string_view text = vq::ViewOf(name);
  VQItemBody* from = source.GetItemBody();
  // What an object item is shows in its value.
  const VQCLASSID made = from->GetType() == TYPE_OBJECT ? from->GetClassID() : vq::ItemBodyClass(from->GetType(), text);
  if (item != nullptr && !vq::AcceptsItemBody(item->GetClassID(), made)) {
    return vq::Apply(VQERR_INCORRECT_ITEM_TYPE);
  }
  const VQItem hold(source);
  vq::ItemPlace place;
  status = vq::Caught([&] { return body->CreateCopy(text, from, flags, option, &place); });
  return vq::Apply(status == VQ_OK ? HandOutPlace(body, text, place, item) : status);
}

VQSTATUS VQSlate::GetItems(VQItemArray* items, unsigned long flags) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && items == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  *items = new VQItemArrayBody(body, flags);
  return VQ_OK;
}

unsigned long VQSlate::GetItemCount() const { return RequireOpen()->ItemCount(); }

unsigned long VQSlate::GetItemType(const VQString& name) const {
  vq::ItemPlace place;
  vq::ThrowIfError(RequireOpen()->PlaceOf(vq::ViewOf(name), &place));
  return place.Type;
}

int VQSlate::HasItem(const VQString& name) const {
  const VQSTATUS status = RequireOpen()->PlaceOf(vq::ViewOf(name), nullptr);
  vq::ThrowIfError(status);
  return status == VQ_OK;
}

VQSTATUS VQSlate::DeleteItem(const VQString& name) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->DeleteItems(vq::ViewOf(name)) : status);
}

VQSTATUS VQSlate::DeleteItem(VQItem* item) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && item == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && item->IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status == VQ_OK && item->GetItemBody()->GetSlateBody() != body) status = VQERR_NOT_IN_SLATE;
  if (status == VQ_OK) status = body->DeleteOneItem(item->GetItemBody());
  if (status == VQ_OK) item->DeleteBody();
  return vq::Apply(status);
}

VQSTATUS VQSlate::DeleteAllItems() {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->DeleteAllItems() : status);
}

VQSTATUS VQSlate::RenameItem(const VQString& name, const VQString& new_name) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Caught([&] { return body->RenameItems(vq::ViewOf(name), vq::ViewOf(new_name)); }));
}

VQSTATUS VQSlate::RenameItem(VQItem& item, const VQString& new_name) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && item.IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status == VQ_OK && item.GetItemBody()->GetSlateBody() != body) status = VQERR_NOT_IN_SLATE;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Caught([&] { return body->RenameOneItem(item.GetItemBody(), vq::ViewOf(new_name)); }));
}

VQSTATUS VQSlate::RefreshSlateHandleFromObject() {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->FlushItems() : status);
}

VQSTATUS VQSlate::RefreshObjectFromSlateHandle() {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? body->RereadItems() : status);
}
