// VQFormBody: the list of fields, and the items that are derived from it.
#include <algorithm>

#include "engine/ods.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/store/storetext.h"
#include "vq/values/vqdtime.h"

namespace {

constexpr std::string_view kFields = "$Fields";
constexpr unsigned kDeepestSubform = 8;

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
  std::uint16_t length = 0;
  const ENGSTATUS result = EngItemQuery(slate, place.Item, nullptr, 0, &length, &flags, nullptr, nullptr, nullptr);
  if (result != ENG_OK) return false;
  if (place.Type == 0) return (flags & VQITEMFLAGS_PLACEHOLDER) != 0;
  return flags == VQITEMFLAGS_SIGN && (place.Type == TYPE_NUMBER || place.Type == TYPE_TIME);
}

}  // namespace

VQSTATUS VQFormBody::GetFormBody(VQRichText* body) {
  VQRichTextBody* text = nullptr;
  const VQSTATUS status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) *body = VQRichText(text);
  return status;
}

// Of a field's name, what a save has left; an item that is something else stays.
VQSTATUS VQFormBody::RemovePlaceholders() {
  std::vector<std::string> names;
  ReadTexts(kFields, &names);
  for (const std::string& name : names) {
    vq::ItemPlace place;
    if (IsOwnItem(name) || PlaceOf(name, &place) != VQ_OK || !LooksLikePlaceholder(GetHandle(), place)) continue;
    if (VQSTATUS status = Remove(name)) return status;
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

// A subform that is not there, or that can't be read, has no fields; forms that insert it open all the same.
VQSTATUS VQFormBody::AddSubformFields(VQRichTextBody* text, unsigned depth) {
  VQRTContainerBody* top = text->GetTop();
  for (VQRTObjectBody* place = top->FirstOfType(VQRTTYPE_RT_SUBFORM); place != nullptr;
       place = top->NextOfType(place, VQRTTYPE_RT_SUBFORM)) {
    VQSubform subform;
    VQRichTextBody* inner = nullptr;
    const VQSTATUS found = vq::Caught([&]() -> VQSTATUS {
      if (VQSTATUS status = vq::FindSubform(*place, &subform)) return status;
      if (VQSTATUS status = subform.CreateSlateBody(0, 0, 0)) return status;
      return vq::FindBodyText(subform.GetSlateBody(), &inner);
    });
    if (found != VQ_OK || inner->Initialize() != VQ_OK) continue;
    Subforms.push_back(subform);
    VQSTATUS status = AddFields(inner);
    if (status == VQ_OK && depth < kDeepestSubform) status = AddSubformFields(inner, depth + 1);
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

VQSTATUS VQFormBody::BuildFieldList() {
  VQRichTextBody* text = nullptr;
  VQSTATUS status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) status = text->Initialize();
  if (status != VQ_OK) return status;
  if (FieldListBuilt != 0 && ListText == text && ListStructure == text->GetStructure()) return VQ_OK;
  ReleaseFieldList();
  ++ListGeneration;
  status = RemovePlaceholders();
  if (status == VQ_OK) status = AddFields(text);
  if (status == VQ_OK) status = AddSubformFields(text, 0);
  if (status != VQ_OK) {
    ReleaseFieldList();
    return status;
  }
  FieldListBuilt = 1;
  ListText = text;
  ListStructure = text->GetStructure();
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

// As forms have always had them: for a field of numbers a time, for one of times a number.
VQSTATUS VQFormBody::SavePlaceholder(const std::string& name, unsigned short type) {
  vq::ItemPlace place;
  const VQSTATUS present = PlaceOf(name, &place);
  if (IsOwnItem(name) || (present == VQ_OK && !LooksLikePlaceholder(GetHandle(), place))) return VQ_OK;
  unsigned char value[8] = {};
  switch (type) {
    case TYPE_NUMBER:
    case TYPE_NUMBER_RANGE: {
      const VQDatetime moment(VQDATETIMESPECIAL_MINIMUM);
      void* cursor = value;
      const ENGSTATUS result = EngOdsWrite(&cursor, ODS_TIMEDATE, moment.GetTIMEDATE(), 1);
      if (result != ENG_OK) return vq::FromEngine(result);
      return SaveValue(name, TYPE_TIME, {reinterpret_cast<char*>(value), sizeof value}, VQITEMFLAGS_SIGN);
    }
    case TYPE_TIME:
    case TYPE_TIME_RANGE:
      return SaveValue(name, TYPE_NUMBER, {reinterpret_cast<char*>(value), sizeof value}, VQITEMFLAGS_SIGN);
    default:
      return SaveValue(name, 0, {}, VQITEMFLAGS_PLACEHOLDER);
  }
}

VQSTATUS VQFormBody::SaveFields() {
  FieldListBuilt = 0;
  if (VQSTATUS status = BuildFieldList()) return status;
  std::vector<std::string> names;
  for (VQQuillonClass* each = FieldList.GetFirst(); each != nullptr; each = FieldList.GetNext(each)) {
    auto* field = static_cast<VQFormFieldBody*>(static_cast<VQRTObjectBody*>(each));
    VQFormFieldBody* design = nullptr;
    std::string name;
    unsigned short type = 0;
    VQSTATUS status = field->PrepareSave();
    if (status == VQ_OK) status = field->ReadName(&name);
    if (status == VQ_OK) status = field->Resolve(&design);
    if (status == VQ_OK) status = design->ReadDataType(&type);
    if (status == VQ_OK) status = SavePlaceholder(name, type);
    if (status != VQ_OK) return status;
    names.push_back(name);
  }
  if (names.empty()) return VQ_OK;
  const std::string value = vq::TextListValue(names);
  if (names.size() > 0xFFFF || value.size() > 0xFFFF - 2) return VQERR_TEXT_TOO_LONG;
  return SaveValue(kFields, TYPE_TEXT_LIST, value, VQITEMFLAGS_SUMMARY);
}
