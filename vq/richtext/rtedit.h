// Edits of a tree that are done whole or not at all.
#ifndef QUILLON_VQ_RICHTEXT_RTEDIT_H
#define QUILLON_VQ_RICHTEXT_RTEDIT_H

#include <memory>
#include <unordered_map>
#include <vector>

#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqstyltx.h"

namespace vq {

// One step of an edit, and the way back, which takes no memory.
class Change {
 public:
  virtual ~Change() = default;
  virtual void Undo() = 0;
};

// While one lives, what its thread changes in the tree is noted: records, places of objects, closed objects, cursors,
// numbers given out. All of it is taken back when the edit goes without having been kept. What a text's tables and its
// slate take in is not the tree's: FontGuard and ObjectGuard take care of that. An edit inside an edit of the same tree
// is part of it. Objects outside of the tree are not watched: those that an edit makes go with it.
//
// Handles on characters are back at their places afterwards; those that came to stand on what the edit had made are on
// no character.
class Edit {
 public:
  // Of the tree that the object stands in.
  explicit Edit(VQRTObjectBody& object);
  ~Edit();
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;
  void Keep();

  // The edit of the object's tree, null when there is none.
  static Edit* Of(const VQRTObjectBody& object);
  // The tree goes: there is nothing to take back any more.
  static void Abandon(const VQRTObjectBody& top);
  // A handle goes.
  static void Forget(VQRTObject* handle);

  // For those who change something, before they do. Out of memory, they throw, and nothing is to be changed then.
  void Links(VQRTBaseContainerBody& parent, VQRTObjectBody& first, VQRTObjectBody& last);
  void Unlinks(VQRTObjectBody& child);
  // The object's content is moved out of it.
  void TakesContent(VQRTObjectBody& object);
  // Writes into bytes of its own: these are kept.
  void Writes(VQRTObjectBody& object, std::uint32_t offset, std::uint32_t size);
  // Bytes of a run's record, whose text ends at `end`, become others: those that go are kept.
  void Splices(VQStylizedTextBody& run, std::uint32_t end, std::uint32_t offset, std::uint32_t oldBytes,
               std::uint32_t newBytes);
  // The character handles of a run come, go or move.
  void MovesCharacters(VQStylizedTextBody& run);
  // A member of an object in the tree gets another value.
  template <typename Value>
  void Sets(VQRTObjectBody& object, Value& member);
  void Add(std::unique_ptr<Change> change) { Changes.push_back(std::move(change)); }

 private:
  struct LinkChange;
  struct UnlinkChange;
  struct ContentChange;
  struct WriteChange;
  struct SpliceChange;
  using Characters = VQStylizedTextBody::Characters;
  struct Place {
    VQStylizedTextBody* Run;
    unsigned long Offset;
    int Edge;
  };
  struct Touched {
    VQRTObject Run;
    std::unique_ptr<Characters> Before;  // null where there were none
  };

  void Leave();
  void TakeBack();
  void RestoreCharacters();

  Edit* Outer;
  VQRTObjectBody* Top = nullptr;  // null for a part of an outer edit
  VQRTObject HoldTop;
  unsigned short HighestPABID = 0;
  std::vector<std::unique_ptr<Change>> Changes;
  std::unordered_map<VQStylizedTextBody*, Touched> Runs;
  std::unordered_map<VQRTObject*, Place> Handles;  // where they were
};

// Runs an operation as one edit, which is kept unless there is an error.
template <typename Operation>
[[nodiscard]] VQSTATUS Whole(VQRTObjectBody& object, Operation operation) {
  Edit edit(object);
  const VQSTATUS status = operation();
  if (!VQIsError(status)) edit.Keep();
  return status;
}

template <typename Value>
class MemberChange : public Change {
 public:
  MemberChange(VQRTObjectBody& object, Value& member) : Object(&object), Member(member), Before(member) {}
  void Undo() override { Member = std::move(Before); }

 private:
  VQRTObject Object;
  Value& Member;
  Value Before;
};

template <typename Value>
void Edit::Sets(VQRTObjectBody& object, Value& member) {
  Add(std::make_unique<MemberChange<Value>>(object, member));
}

}  // namespace vq

#endif
