// Where the definitions, hide records, style names and references of a tree stand, by identifier and by settings.
#ifndef QUILLON_VQ_RICHTEXT_PABINDEX_H
#define QUILLON_VQ_RICHTEXT_PABINDEX_H

#include <set>
#include <unordered_map>
#include <unordered_set>

#include "engine/records.h"
#include "vq/richtext/vqrtbase.h"

namespace vq {

// Made when a style is first asked for, and kept right through edits: the tree tells it what comes, goes and changes.
// References, which every paragraph has, are held from when a user of an identifier is first asked for.
// Objects are sorted by their place, which edits elsewhere leave as it is; what came or changed is read when the next
// answer is wanted.
class PABIndex {
 public:
  struct InOrder {
    bool operator()(const VQRTObjectBody* a, const VQRTObjectBody* b) const {
      return a->GetIndexValue() < b->GetIndexValue();
    }
  };
  using Objects = std::set<VQRTObjectBody*, InOrder>;

  explicit PABIndex(const VQRTBaseContainerBody& tree);

  static bool Holds(VQRTTYPE type) {
    return type == VQRTTYPE_PAB_DEFINITION || type == VQRTTYPE_PAB_HIDE || type == VQRTTYPE_PAB_STYLE_NAME ||
           IsReference(type);
  }

  // The object, and all that is in it, has come into the tree or has changed.
  void Take(VQRTObjectBody& object);
  // The same is about to leave the tree.
  void Forget(VQRTObjectBody& object);

  // The nearest object of the type with that identifier left of `from`.
  VQRTObjectBody* FindLeft(VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid);
  // The same, or else the first such object of the tree.
  VQRTObjectBody* Find(VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid);
  // The first reference at or behind `from` that carries the identifier, as either of its two.
  VQRTObjectBody* FindUser(VQRTObjectBody* from, std::uint16_t pabid);
  // Definitions with these settings, whatever their identifiers, and perhaps others; all style names. Good until the
  // tree changes.
  const Objects& GetDefinitions(const CDPABDEFINITION& settings);
  const Objects& GetNames();

 private:
  using Key = std::uint32_t;
  using Fingerprint = std::uint64_t;
  struct Entry {
    Key ID;
    Key OtherID;           // of a formula reference, else the same
    Fingerprint Settings;  // of a definition
  };

  static bool IsReference(VQRTTYPE type) {
    return type == VQRTTYPE_PAB_REFERENCE || type == VQRTTYPE_PAB_FORMULA_REFERENCE;
  }
  static Key KeyOf(VQRTTYPE type, std::uint16_t pabid) {
    const VQRTTYPE kind = IsReference(type) ? VQRTTYPE_PAB_REFERENCE : type;
    return static_cast<Key>(kind) << 16 | pabid;
  }
  // Calls `work` for the object and each one in it that has a place here.
  template <typename Work>
  static void ForEach(VQRTObjectBody& object, Work work);
  void Enter(VQRTObjectBody* object);
  void Drop(VQRTObjectBody* object);
  void Settle();
  void TakeReferences();

  const VQRTBaseContainerBody& Tree;
  bool HasReferences = false;
  std::unordered_map<Key, Objects> ByID;
  std::unordered_map<Fingerprint, Objects> BySettings;
  Objects Names;
  std::unordered_map<VQRTObjectBody*, Entry> Entries;
  std::unordered_set<VQRTObjectBody*> Unread;
};

}  // namespace vq

#endif
