#include "vq/richtext/pabindex.h"

#include <iterator>

#include "vq/richtext/pabtree.h"

namespace vq {

template <typename Work>
void PABIndex::ForEach(VQRTObjectBody& object, Work work) {
  if (Holds(object.GetType())) work(&object);
  const VQRTBaseContainerBody* container = object.AsBase();
  if (!container) return;
  for (VQRTObjectBody* inside = container->NextInTree(container); inside; inside = container->NextInTree(inside)) {
    if (Holds(inside->GetType())) work(inside);
  }
}

PABIndex::PABIndex(const VQRTBaseContainerBody& tree) {
  for (VQRTObjectBody* child = tree.GetFirstChild(); child; child = child->GetNext()) Take(*child);
}

void PABIndex::Take(VQRTObjectBody& object) {
  ForEach(object, [this](VQRTObjectBody* each) { Unread.insert(each); });
}

void PABIndex::Forget(VQRTObjectBody& object) {
  ForEach(object, [this](VQRTObjectBody* each) {
    Unread.erase(each);
    Drop(each);
  });
}

void PABIndex::Drop(VQRTObjectBody* object) {
  auto known = Keys.find(object);
  if (known == Keys.end()) return;
  auto same = ByID.find(known->second);
  same->second.erase(object);
  if (same->second.empty()) ByID.erase(same);
  Definitions.erase(object);
  Keys.erase(known);
}

void PABIndex::Settle() {
  for (VQRTObjectBody* object : Unread) {
    Drop(object);
    const Key key = KeyOf(object->GetType(), pab::IDsOf(*object).First);
    Keys.emplace(object, key);
    ByID[key].insert(object);
    if (object->GetType() == VQRTTYPE_PAB_DEFINITION) Definitions.insert(object);
  }
  Unread.clear();
}

VQRTObjectBody* PABIndex::FindLeft(VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid) {
  Settle();
  auto same = ByID.find(KeyOf(type, pabid));
  if (same == ByID.end()) return nullptr;
  auto behind = same->second.lower_bound(from);
  return behind == same->second.begin() ? nullptr : *std::prev(behind);
}

VQRTObjectBody* PABIndex::Find(VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid) {
  if (VQRTObjectBody* left = FindLeft(from, type, pabid)) return left;
  auto same = ByID.find(KeyOf(type, pabid));
  return same == ByID.end() ? nullptr : *same->second.begin();
}

const PABIndex::Objects& PABIndex::GetDefinitions() {
  Settle();
  return Definitions;
}

}  // namespace vq
