// Where the engine keeps an item of an open slate, and how a body is made for it.
#ifndef QUILLON_VQ_STORE_ITEMPLACE_H
#define QUILLON_VQ_STORE_ITEMPLACE_H

#include <string_view>

#include "vq/frame/vqcommon.h"

class VQItemBody;
class VQSlateBody;

namespace vq {

// Good until the item is reallocated, replaced or deleted, or its slate is saved or closed.
struct ItemPlace {
  BLOCKID Item{};
  BLOCKID Value{};
  std::uint32_t Size = 0;  // with the type word
  std::uint16_t Type = 0;
};

constexpr bool SameBlock(const BLOCKID& a, const BLOCKID& b) { return a.Pool == b.Pool && a.Block == b.Block; }
constexpr bool IsNullBlock(const BLOCKID& block) { return block.Pool == 0 && block.Block == 0; }

// One piece of a composite value on its way into a slate. The engine memory starts with the type word.
struct ItemBlock {
  ENGHANDLE Memory = 0;  // set to 0 once the slate has taken the block
  std::uint32_t Size = 0;
  bool Kept = false;  // stands for the value that the item in this place has already; without memory
};

// Builds the body of an item that is in the slate already.
using ItemMaker = VQItemBody* (*)(VQSlateBody* slate, std::string_view name, const ItemPlace& place);

}  // namespace vq

#endif
