#include "vq/richtext/pabindex.h"

#include <iterator>

#include "engine/ods.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/paragraph_settings.h"

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

PABIndex::PABIndex(const VQRTBaseContainerBody& tree) : Tree(tree) {
  for (VQRTObjectBody* child = tree.GetFirstChild(); child; child = child->GetNext()) Take(*child);
}

void PABIndex::Take(VQRTObjectBody& object) {
  ForEach(object, [this](VQRTObjectBody* each) {
    if (HasReferences || !IsReference(each->GetType())) Unread.insert(each);
  });
}

void PABIndex::Forget(VQRTObjectBody& object) {
  ForEach(object, [this](VQRTObjectBody* each) {
    Unread.erase(each);
    Drop(each);
  });
}

namespace {

template <typename Sets, typename Key>
void EraseFrom(Sets& sets, Key key, VQRTObjectBody* object) {
  auto same = sets.find(key);
  if (same == sets.end()) return;
  same->second.erase(object);
  if (same->second.empty()) sets.erase(same);
}

// What equal definitions share; a damaged one has a number of its own.
std::uint64_t FingerprintOf(const VQRTObjectBody& object) {
  CDPABDEFINITION record{};
  if (object.ReadODS(ODS_CDPABDEFINITION, &record, 0) != VQ_OK) return 0;
  return paragraph::Fingerprint(record);
}

}  // namespace

void PABIndex::Drop(VQRTObjectBody* object) {
  auto known = Entries.find(object);
  if (known == Entries.end()) return;
  EraseFrom(ByID, known->second.ID, object);
  EraseFrom(ByID, known->second.OtherID, object);
  EraseFrom(BySettings, known->second.Settings, object);
  Names.erase(object);
  Entries.erase(known);
}

void PABIndex::Enter(VQRTObjectBody* object) {
  const PABIDs ids = pab::IDsOf(*object);
  const VQRTTYPE type = object->GetType();
  Entry entry{KeyOf(type, ids.First), KeyOf(type, IsReference(type) ? ids.Second : ids.First), 0};
  ByID[entry.ID].insert(object);
  ByID[entry.OtherID].insert(object);
  if (object->GetType() == VQRTTYPE_PAB_STYLE_NAME) Names.insert(object);
  if (object->GetType() == VQRTTYPE_PAB_DEFINITION) {
    entry.Settings = FingerprintOf(*object);
    BySettings[entry.Settings].insert(object);
  }
  Entries.emplace(object, entry);
}

void PABIndex::Settle() {
  for (VQRTObjectBody* object : Unread) {
    Drop(object);
    Enter(object);
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

void PABIndex::TakeReferences() {
  HasReferences = true;
  VQRTObjectBody* reference = Tree.FirstOfType(VQRTTYPE_PAB_REFERENCE);
  for (; reference; reference = Tree.NextOfType(reference, VQRTTYPE_PAB_REFERENCE)) Unread.insert(reference);
}

VQRTObjectBody* PABIndex::FindUser(VQRTObjectBody* from, std::uint16_t pabid) {
  if (!from) return nullptr;
  if (!HasReferences) TakeReferences();
  Settle();
  auto same = ByID.find(KeyOf(VQRTTYPE_PAB_REFERENCE, pabid));
  if (same == ByID.end()) return nullptr;
  auto user = same->second.lower_bound(from);
  return user == same->second.end() ? nullptr : *user;
}

const PABIndex::Objects& PABIndex::GetDefinitions(const CDPABDEFINITION& settings) {
  static const Objects kNone;
  Settle();
  auto same = BySettings.find(paragraph::Fingerprint(settings));
  return same == BySettings.end() ? kNone : same->second;
}

const PABIndex::Objects& PABIndex::GetNames() {
  Settle();
  return Names;
}

}  // namespace vq
