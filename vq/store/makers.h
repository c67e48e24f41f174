// Which body is built for which slate and for which item value: one table each, filled by vq/library.cpp.
#ifndef QUILLON_VQ_STORE_MAKERS_H
#define QUILLON_VQ_STORE_MAKERS_H

#include <span>
#include <string_view>

#include "vq/store/itemplace.h"

class VQDatabaseBody;

namespace vq {

struct ItemMakerRow {
  std::uint32_t Type;
  // The item's name when only items of that name get this body; empty for all. Named rows come before others of their
  // type.
  std::string_view Name;
  VQCLASSID Body;
  ItemMaker Make;
};

// What a class of item handle holds: its body, the type of an empty value, and a new body without a slate.
struct ItemKindRow {
  VQCLASSID Handle;
  VQCLASSID Body;
  std::uint16_t Type;
  VQItemBody* (*MakeEmpty)();  // null for a kind that is only ever an item of a slate
};

using SlateMaker = VQSlateBody* (*)(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);

// The first row that fits counts: a class bit in common, and the kind unless that is 0.
struct SlateMakerRow {
  std::uint16_t ClassMask;
  std::uint16_t Kind;
  VQCLASSID Body;
  SlateMaker Make;
};

extern const std::span<const ItemMakerRow> kItemMakers;
extern const std::span<const ItemKindRow> kItemKinds;
extern const std::span<const SlateMakerRow> kSlateMakers;

// VQSlateItemBody for a type without a row.
VQCLASSID ItemBodyClass(std::uint16_t type, std::string_view name);
VQItemBody* MakeItemBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place);
// VQSlateBody for a type without a row.
[[nodiscard]] VQSTATUS MakeSlateBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle,
                                     VQSlateBody** body);
VQCLASSID SlateBodyClass(unsigned long type);
// Null for VQItem and unknown classes, which hold any body.
const ItemKindRow* FindItemKind(VQCLASSID handle);
// Whether that class of handle may hold that class of body.
bool AcceptsItemBody(VQCLASSID handle, VQCLASSID body);

}  // namespace vq

#endif
