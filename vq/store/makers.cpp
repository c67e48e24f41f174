#include "vq/store/makers.h"

#include <algorithm>
#include <cctype>

#include "vq/store/vqslate.h"

namespace vq {

namespace {

bool SameName(std::string_view a, std::string_view b) {
  const auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c + 32 : static_cast<int>(c); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](unsigned char x, unsigned char y) { return lower(x) == lower(y); });
}

const ItemMakerRow* FindItemMaker(std::uint16_t type, std::string_view name) {
  for (const ItemMakerRow& row : kItemMakers) {
    if (row.Type == type && (row.Name.empty() || SameName(row.Name, name))) return &row;
  }
  return nullptr;
}

const SlateMakerRow* FindSlateMaker(unsigned long type) {
  const auto classes = static_cast<std::uint16_t>(type & VQSLATECLASS_ALL);
  const auto kind = static_cast<std::uint16_t>(type >> 16);
  for (const SlateMakerRow& row : kSlateMakers) {
    if ((row.ClassMask & classes) != 0 && (row.Kind == 0 || row.Kind == kind)) return &row;
  }
  return nullptr;
}

}  // namespace

VQCLASSID ItemBodyClass(std::uint16_t type, std::string_view name) {
  const ItemMakerRow* row = FindItemMaker(type, name);
  return row != nullptr ? row->Body : VQCLASSID_VQSLATEITEMBODY;
}

VQItemBody* MakeItemBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place) {
  const ItemMakerRow* row = FindItemMaker(place.Type, name);
  if (row != nullptr) return row->Make(slate, name, place);
  return new VQSlateItemBody(slate, name, place);
}

VQSTATUS MakeSlateBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle, VQSlateBody** body) {
  const SlateMakerRow* row = FindSlateMaker(type);
  try {
    *body = row != nullptr ? row->Make(database, type, handle) : new VQSlateBody(database, type, handle);
    return VQ_OK;
  } catch (VQSTATUS status) {
    return status;
  }
}

VQCLASSID SlateBodyClass(unsigned long type) {
  const SlateMakerRow* row = FindSlateMaker(type);
  return row != nullptr ? row->Body : VQCLASSID_VQSLATEBODY;
}

const ItemKindRow* FindItemKind(VQCLASSID handle) {
  for (const ItemKindRow& row : kItemKinds) {
    if (row.Handle == handle) return &row;
  }
  return nullptr;
}

bool AcceptsItemBody(VQCLASSID handle, VQCLASSID body) {
  const ItemKindRow* row = FindItemKind(handle);
  return row == nullptr || row->Body == body;
}

}  // namespace vq
