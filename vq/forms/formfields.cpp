// VQFormBody: the list of fields, and the items that are derived from it.
#include <algorithm>
#include <iterator>

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/forms/fieldplaces.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/store/storetext.h"

namespace {

constexpr std::string_view kFields = "$Fields";

// Items of the form itself, for which no field's name can stand.
constexpr std::string_view kOwnItems[] = {"$TITLE",
                                          "$$ScriptName",
                                          "$Flags",
                                          "$Body",
                                          "$Fields",
                                          "$Info",
                                          "$AUTOLAUNCH",
                                          "$HTMLBodyTag",
                                          "$WEBQueryOpen",
                                          "$WEBQuerySave",
                                          "$WindowTitle",
                                          "$ConflictAction",
                                          "$Class",
                                          "$FormUsers",
                                          "$Readers",
                                          "$PublicAccess",
                                          "SecretEncryptionKeys",
                                          "$KeepPrivate",
                                          "$NoBackgroundOverride",
                                          "$WebFlags",
                                          "$Background",
                                          "$SubForms",
                                          "$ACTIONS",
                                          "$Fonts",
                                          "$Links",
                                          "$FormLinks",
                                          "$UpdatedBy"};

bool IsOwnItem(std::string_view name) {
  if (name.empty() || (name.front() != '$' && (name.front() | 0x20) != 's')) return false;
  const auto same = [](char a, char b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return lower(a) == lower(b);
  };
  return std::any_of(std::begin(kOwnItems), std::end(kOwnItems), [&](std::string_view own) {
    return std::equal(own.begin(), own.end(), name.begin(), name.end(), same);
  });
}

// Placeholders of other programs too: an empty value, or one number or time that goes with no summary.
bool LooksLikePlaceholder(ENGHANDLE slate, const vq::ItemPlace& place) {
  std::uint16_t flags = 0;
  std::uint16_t type = 0;
  const ENGSTATUS result = EngItemQuery(slate, place.Item, nullptr, 0, nullptr, &flags, &type, nullptr, nullptr);
  if (result != ENG_OK) return false;
  if (type == 0) return (flags & VQITEMFLAGS_PLACEHOLDER) != 0;
  return flags == VQITEMFLAGS_SIGN && (type == TYPE_NUMBER || type == TYPE_TIME);
}

// The type that a field's placeholder has.
unsigned short PlaceholderType(unsigned short type) {
  switch (type) {
    case TYPE_NUMBER:
    case TYPE_NUMBER_RANGE:
      return TYPE_TIME;
    case TYPE_TIME:
    case TYPE_TIME_RANGE:
      return TYPE_NUMBER;
    default:
      return 0;
  }
}

bool IsZero(const BLOCKID& place, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(EngMemLock(place.Pool));
  if (bytes == nullptr) return false;
  const bool zero = std::all_of(bytes + place.Block, bytes + place.Block + size, [](int byte) { return byte == 0; });
  EngMemUnlock(place.Pool);
  return zero;
}

// Whether the item of that index is what a save writes for a field of that name, whose placeholder's type it gives.
bool IsOwnPlaceholder(ENGHANDLE slate, unsigned long index, std::string_view name, vq::ItemPlace* place) {
  constexpr std::uint16_t kLongest = 64;
  constexpr std::uint32_t kTypeWord = 2;
  ENGCHAR text[kLongest];
  std::uint16_t length = 0;
  std::uint16_t flags = 0;
  ENGSTATUS result = EngSlateItemAt(slate, static_cast<std::uint32_t>(index), &place->Item);
  if (result == ENG_OK) {
    result = EngItemQuery(slate, place->Item, text, kLongest, &length, &flags, &place->Type, nullptr, &place->Size);
  }
  if (result != ENG_OK || length > kLongest) return false;
  if (std::string_view(reinterpret_cast<const char*>(text), length) != name) return false;
  if (place->Type == 0) return flags == VQITEMFLAGS_PLACEHOLDER && place->Size == kTypeWord;
  if (place->Type != TYPE_TIME && place->Type != TYPE_NUMBER) return false;
  if (flags != VQITEMFLAGS_SIGN || place->Size != kTypeWord + sizeof(TIMEDATE)) return false;
  result = EngItemQuery(slate, place->Item, nullptr, 0, nullptr, nullptr, nullptr, &place->Value, nullptr);
  if (result != ENG_OK) return false;
  const BLOCKID value{place->Value.Pool, static_cast<std::uint16_t>(place->Value.Block + kTypeWord)};
  return IsZero(value, sizeof(TIMEDATE));
}

// Whether the slate has the rich text still, with the objects that it had.
bool IsAsListed(const VQSlateBody& slate, const VQRichTextBody* text, std::uint32_t structure) {
  const VQItemBody* kept = slate.GetKeptItem();
  return kept != nullptr && kept == text && (kept->GetState() & VQItemBody::kDeleted) == 0 &&
         text->IsInitialized() != 0 && structure == text->GetStructure();
}

// Whether the answer is yes for a field of an open subform.
template <typename Ask>
bool HasField(const VQSubform& subform, Ask ask) {
  VQRichTextBody* text = nullptr;
  if (vq::FindBodyText(subform.GetSlateBody(), &text) != VQ_OK || text->IsInitialized() == 0) return false;
  VQRTContainerBody* top = text->GetTop();
  for (VQRTObjectBody* field = top->FirstOfType(VQRTTYPE_FORM_FIELD); field != nullptr;
       field = top->NextOfType(field, VQRTTYPE_FORM_FIELD)) {
    if (ask(static_cast<const VQFormFieldBody&>(*field))) return true;
  }
  return false;
}

// In its slate, or in the definition of a shared field there.
bool IsChanged(const VQSubform& subform) {
  if (subform.IsOpen() == 0 || subform.IsModified() != 0) return subform.IsOpen() != 0;
  return HasField(subform, [](const VQFormFieldBody& field) { return field.GetChangedDefinition() != nullptr; });
}

// Whether it is, with the definitions that were looked at, as it is stored.
bool IsAsStored(const VQSubform& subform) {
  return subform.IsOpen() != 0 && subform.GetSlateBody()->IsCurrent() &&
         !HasField(subform, [](const VQFormFieldBody& field) { return field.HasStaleDefinition(); });
}

}  // namespace

VQSTATUS VQFormBody::GetFormBody(VQRichText* body) {
  VQRichTextBody* text = nullptr;
  const VQSTATUS status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) *body = VQRichText(text);
  return status;
}

// Where the list stands among the items, if it is as a save writes it, with as many items ahead of it.
bool VQFormBody::FindFieldsItem(std::size_t names, unsigned long* index) const {
  vq::ItemPlace list;
  if (PlaceOf(kFields, &list) != VQ_OK || list.Type != TYPE_TEXT_LIST) return false;
  std::uint16_t flags = 0;
  ENGSTATUS result = EngItemQuery(GetHandle(), list.Item, nullptr, 0, nullptr, &flags, nullptr, nullptr, nullptr);
  if (result != ENG_OK || flags != VQITEMFLAGS_SUMMARY) return false;
  for (*index = ItemCount(); result == ENG_OK && (*index)-- > names;) {
    BLOCKID item{};
    result = EngSlateItemAt(GetHandle(), static_cast<std::uint32_t>(*index), &item);
    if (result == ENG_OK && vq::SameBlock(item, list.Item)) return true;
  }
  return false;
}

// A save writes them one behind the other in the order of the fields, and their list behind them. Where all are as it
// does, the slate keeps them for the next save of the same fields.
bool VQFormBody::SetPlaceholdersAside(std::vector<std::string> names) {
  unsigned long list = 0;
  if (names.empty() || !FindFieldsItem(names.size(), &list)) return false;
  const unsigned long first = list - names.size();
  std::vector<unsigned short> types;
  types.reserve(names.size());
  for (const std::string& name : names) {
    vq::ItemPlace place;
    if (!IsOwnPlaceholder(GetHandle(), first + types.size(), name, &place)) return false;
    types.push_back(place.Type);
  }
  if (TakeItemsAside(first, names.size() + 1) != VQ_OK) return false;
  KeptNames = std::move(names);
  KeptTypes = std::move(types);
  return true;
}

bool VQFormBody::RestorePlaceholders(const std::vector<std::string>& names, const std::vector<unsigned short>& types) {
  return !names.empty() && names == KeptNames && types == KeptTypes && RestoreItems() == VQ_OK;
}

// Of a field's name, what a save has left; an item that is something else stays. The last one goes first, as it is
// found next to the end.
VQSTATUS VQFormBody::RemovePlaceholders() {
  if (!HasItem(kFields)) return VQ_OK;
  std::vector<std::string> names;
  ReadTexts(kFields, &names);
  if (SetPlaceholdersAside(names)) return VQ_OK;
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    vq::ItemPlace place;
    if (IsOwnItem(*name) || PlaceOf(*name, &place) != VQ_OK || !LooksLikePlaceholder(GetHandle(), place)) continue;
    if (VQSTATUS status = DropItem(place)) return status;
  }
  return Remove(kFields);
}

VQSTATUS VQFormBody::AddFields(VQRichTextBody* text) {
  if (VQSTATUS status = text->Initialize()) return status;
  VQRTContainerBody* top = text->GetTop();
  for (VQRTObjectBody* field = top->FirstOfType(VQRTTYPE_FORM_FIELD); field != nullptr;
       field = top->NextOfType(field, VQRTTYPE_FORM_FIELD)) {
    if (VQSTATUS status = FieldList.AddObject(field)) return status;
  }
  return VQ_OK;
}

// A subform that is not there, or that can't be read, has no fields; forms that insert it open all the same. One that
// is inserted again, in itself perhaps, has brought its fields.
VQSTATUS VQFormBody::AddSubformFields(VQRichTextBody* text, unsigned depth) {
  VQRTContainerBody* top = text->GetTop();
  for (VQRTObjectBody* place = top->FirstOfType(VQRTTYPE_RT_SUBFORM); place != nullptr;
       place = top->NextOfType(place, VQRTTYPE_RT_SUBFORM)) {
    HasSubforms = true;
    VQSubform subform;
    VQRichTextBody* inner = nullptr;
    const VQSTATUS found = vq::Caught([&]() -> VQSTATUS {
      if (VQSTATUS status = FindInserted(*place, &subform)) return status;
      if (HasFieldsOf(subform.GetSlateID())) return VQWARN_NOT_FOUND;
      if (VQSTATUS status = OpenSubform(&subform)) return status;
      return vq::FindBodyText(subform.GetSlateBody(), &inner);
    });
    if (found != VQ_OK || inner->Initialize() != VQ_OK) continue;
    Subforms.push_back({subform, inner, inner->GetStructure()});
    VQSTATUS status = AddFields(inner);
    if (status == VQ_OK && depth + 1 < vq::kDeepestSubform) status = AddSubformFields(inner, depth + 1);
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

// One that was changed through a field of the list is not let go of when somebody deletes or renames it, so that the
// save tells.
VQSTATUS VQFormBody::FindInserted(const VQRTObjectBody& place, VQSubform* subform) const {
  const VQSTATUS found = vq::FindSubform(place, subform);
  std::string name;
  if (found != VQERR_NO_SUBFORM || vq::ReadSubformName(place, &name) != VQ_OK) return found;
  for (const VQSubform& former : FormerSubforms) {
    const std::vector<std::string> names =
        former.IsOpen() != 0 ? former.GetSlateBody()->NamesInTitle() : std::vector<std::string>();
    if (std::find(names.begin(), names.end(), name) == names.end() || !IsChanged(former)) continue;
    *subform = former;
    return VQ_OK;
  }
  return found;
}

// The one at hand, with what clients hold of it, when it was changed through a field of the list or is as stored.
VQSTATUS VQFormBody::OpenSubform(VQSubform* subform) {
  const auto take = [=](const VQSubform& present) {
    if (present.GetSlateID() != subform->GetSlateID() || !(IsChanged(present) || IsAsStored(present))) return false;
    *subform = present;
    return true;
  };
  for (const VQSubform& present : FormerSubforms) {
    if (take(present)) return VQ_OK;
  }
  for (const ListedSubform& present : Subforms) {
    if (take(present.Slate)) return VQ_OK;
  }
  return subform->CreateSlateBody(0, 0, 0);
}

// What was changed through the list and stands in other slates, ready to be stored.
VQSTATUS VQFormBody::PrepareReferenced(std::vector<VQSlateBody*>* slates) {
  for (const ListedSubform& subform : Subforms) {
    if (subform.Slate.IsModified() != 0) slates->push_back(subform.Slate.GetSlateBody());
  }
  for (VQQuillonClass* each = FieldList.GetFirst(); each != nullptr; each = FieldList.GetNext(each)) {
    VQSlateBody* changed = static_cast<VQFormFieldBody*>(static_cast<VQRTObjectBody*>(each))->GetChangedDefinition();
    const bool known = std::find(slates->begin(), slates->end(), changed) != slates->end();
    if (changed != nullptr && !known) slates->push_back(changed);
  }
  for (VQSlateBody* slate : *slates) {
    if (VQSTATUS status = slate->PrepareSave()) return status;
  }
  return VQ_OK;
}

bool VQFormBody::HasFieldsOf(unsigned long subform) const {
  return std::any_of(Subforms.begin(), Subforms.end(),
                     [=](const ListedSubform& present) { return present.Slate.GetSlateID() == subform; });
}

// Whether the list is that of the rich texts as they are now.
bool VQFormBody::IsListValid() const {
  return FieldListBuilt != 0 && IsAsListed(*this, ListText, ListStructure) &&
         std::all_of(Subforms.begin(), Subforms.end(), [](const ListedSubform& subform) {
           return IsAsListed(*subform.Slate.GetSlateBody(), subform.Text, subform.Structure);
         });
}

VQSTATUS VQFormBody::BuildFieldList() {
  if (FormOpen == 0) return VQERR_FORM_NOT_OPEN;
  if (IsListValid()) return VQ_OK;
  VQRichTextBody* text = nullptr;
  VQSTATUS status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) status = text->Initialize();
  if (status != VQ_OK) return status;
  for (const ListedSubform& subform : Subforms) FormerSubforms.push_back(subform.Slate);
  ReleaseFieldList();
  ++ListGeneration;
  status = RemovePlaceholders();
  if (status == VQ_OK) status = AddFields(text);
  if (status == VQ_OK) status = AddSubformFields(text, 0);
  if (status != VQ_OK) {
    ReleaseFieldList();
    return status;
  }
  FormerSubforms.clear();
  FieldListBuilt = 1;
  ListText = text;
  ListStructure = text->GetStructure();
  return VQ_OK;
}

VQFormBody* VQFormBody::ListingFormOf(const VQFormFieldBody& field) {
  VQObjectList* list = VQObjectList::GetListOf(&field);
  return list != nullptr ? static_cast<FieldElements*>(list)->GetForm() : nullptr;
}

// In the rich texts, as the list may be an older one.
VQSTATUS VQFormBody::CheckOthers(std::string_view name, const VQFormFieldBody& own) {
  VQRichTextBody* text = nullptr;
  if (VQSTATUS status = vq::FindBodyText(this, &text)) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  if (VQSTATUS status = vq::CheckFieldNames(*text, name, own)) return status;
  for (const ListedSubform& subform : Subforms) {
    if (subform.Slate.IsOpen() == 0 || subform.Slate.GetSlateBody()->GetKeptItem() != subform.Text) continue;
    if (VQSTATUS status = vq::CheckFieldNames(*subform.Text, name, own)) return status;
  }
  return VQ_OK;
}

VQSTATUS VQFormBody::FindField(const VQString& name, VQFormFieldBody** field) {
  if (VQSTATUS status = BuildFieldList()) return status;
  for (VQQuillonClass* each = FieldList.GetFirst(); each != nullptr; each = FieldList.GetNext(each)) {
    auto* candidate = static_cast<VQFormFieldBody*>(static_cast<VQRTObjectBody*>(each));
    std::string theirs;
    // A field that can't be read has no name to be found by.
    if (candidate->ReadName(&theirs) != VQ_OK || theirs != vq::ViewOf(name)) continue;
    *field = candidate;
    return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

// As forms have always had them: for a field of numbers a time, for one of times a number. An item of that name that is
// something else stays.
VQSTATUS VQFormBody::SavePlaceholder(const std::string& name, unsigned short type) {
  vq::ItemPlace place;
  const VQSTATUS present = PlaceOf(name, &place);
  if (IsOwnItem(name) || VQIsError(present)) return IsOwnItem(name) ? VQ_OK : present;
  if (present == VQ_OK) {
    if (!LooksLikePlaceholder(GetHandle(), place)) return VQ_OK;
    if (VQSTATUS status = DropItem(place)) return status;
  }
  const unsigned char value[sizeof(TIMEDATE)] = {};
  if (type == 0) return AppendItem(name, 0, nullptr, 0, VQITEMFLAGS_PLACEHOLDER, nullptr);
  return AppendItem(name, type, value, sizeof value, VQITEMFLAGS_SIGN, nullptr);
}

// All fields are asked before an item changes, so that a field that is refused leaves no placeholder that no list
// names.
VQSTATUS VQFormBody::SaveFields() {
  // Subforms may be others by now.
  if (HasSubforms) FieldListBuilt = 0;
  if (VQSTATUS status = BuildFieldList()) return status;
  std::vector<std::string> names;
  std::vector<unsigned short> types;
  names.reserve(FieldList.GetCount());
  types.reserve(FieldList.GetCount());
  for (VQQuillonClass* each = FieldList.GetFirst(); each != nullptr; each = FieldList.GetNext(each)) {
    auto* field = static_cast<VQFormFieldBody*>(static_cast<VQRTObjectBody*>(each));
    names.emplace_back();
    types.emplace_back();
    if (VQSTATUS status = field->PrepareSave(&names.back(), &types.back())) return status;
    types.back() = PlaceholderType(types.back());
  }
  std::size_t size = 2 * (names.size() + 1);
  for (const std::string& name : names) size += name.size();
  if (size > 0xFFFF - 2) return VQERR_TEXT_TOO_LONG;
  // Those of an earlier save.
  VQSTATUS status = RemovePlaceholders();
  if (status == VQ_OK && RestorePlaceholders(names, types)) return VQ_OK;
  for (std::size_t i = 0; status == VQ_OK && i < names.size(); ++i) status = SavePlaceholder(names[i], types[i]);
  if (status != VQ_OK || names.empty()) return status;
  return SaveValue(kFields, TYPE_TEXT_LIST, vq::TextListValue(names), VQITEMFLAGS_SUMMARY);
}
