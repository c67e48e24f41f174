// Finding and placing paragraph records in a tree.
//
// A paragraph is (paragraph record, definition, hide or style name, reference, text): every reference comes behind its
// definition, every paragraph has a text run.
#ifndef QUILLON_VQ_RICHTEXT_PABTREE_H
#define QUILLON_VQ_RICHTEXT_PABTREE_H

#include <optional>
#include <vector>

#include "vq/richtext/pabindex.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtcrsr.h"

namespace vq::pab {

// The editable container at the top of the tree that this one is in, itself if it is the top.
VQRTContainerBody& Root(VQRTContainerBody& container);

// The identifiers of a paragraph object, zero when its record is damaged.
PABIDs IDsOf(const VQRTObjectBody& object);

// The reference in force at an object: itself or the nearest one left of it. Null when there is none.
VQRTObjectBody* ReferenceFor(const VQRTBaseContainerBody& root, VQRTObjectBody* object);

// The index of a tree: that of the rich text which owns it, else one made for the occasion.
class IndexOf {
 public:
  explicit IndexOf(const VQRTBaseContainerBody& root);
  PABIndex* operator->() { return Index; }

 private:
  std::optional<PABIndex> Own;
  PABIndex* Index;
};

// The nearest object of the type with that identifier left of `from`.
VQRTObjectBody* FindLeft(const VQRTBaseContainerBody& root, VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid);
// The same, or else the first such object of the tree.
VQRTObjectBody* FindByPABID(const VQRTBaseContainerBody& root, VQRTObjectBody* from, VQRTTYPE type,
                            std::uint16_t pabid);
// The hide record or style name directly behind a definition that carries its identifier.
VQRTObjectBody* Companion(const VQRTObjectBody& definition);
// The definition directly before a style name that carries its identifier.
VQRTObjectBody* NamedBy(const VQRTObjectBody& name);

// A place between two neighbours of one container.
struct Place {
  VQRTBaseContainerBody* Parent = nullptr;
  VQRTObjectBody* Before = nullptr;  // null: at the container's end

  VQRTObjectBody* Previous() const { return Before ? Before->GetPrevious() : Parent->GetLastChild(); }
};
// The place where a cursor stands; a run that it stands inside of is split there.
[[nodiscard]] VQSTATUS SplitAt(const VQRTCursor& cursor, Place* place);
// Puts a detached object there.
[[nodiscard]] VQSTATUS InsertAt(const Place& place, VQRTObjectBody* object);

// An empty run in the font of the run that it stands beside, if any.
[[nodiscard]] VQSTATUS MakeEmptyText(const VQRTObjectBody* beside, VQRTObject* text);
// Whether the object is content of a paragraph, not one of its records.
bool IsContent(const VQRTObjectBody* object);

// Puts the cursor at the start or end of a run, an element or what a container holds.
[[nodiscard]] VQSTATUS PutCursor(VQRTCursor* cursor, VQRTObjectBody* element, bool atEnd);

// Puts copies of the definitions, hides and names that references in `copy` need, and do not find there, in front of
// them; `copy` is one of objects that stand at `start` in the source.
[[nodiscard]] VQSTATUS CompleteReferences(const VQRTBaseContainerBody& source, VQRTObjectBody* start,
                                          VQRTContainerBody& copy);

// A detached copy of the object.
[[nodiscard]] VQSTATUS CopyOf(VQRTObjectBody* source, VQRTObject* copy);

}  // namespace vq::pab

#endif
