// Text of stretches of a tree.
#ifndef QUILLON_VQ_RICHTEXT_RTTEXT_H
#define QUILLON_VQ_RICHTEXT_RTTEXT_H

#include "vq/richtext/rtfwd.h"

namespace vq {

// A cursor's position as a node and how much of it lies left: characters of a run, 0 or 1 of a leaf.
struct TextPlace {
  explicit TextPlace(const VQRTCursor& cursor);
  TextPlace(VQRTObjectBody* node, unsigned long before) : Node(node), Before(before) {}

  VQStylizedTextBody* Run() const;

  VQRTObjectBody* Node;
  unsigned long Before;
};

// The container that the object stands in, runs passed over; null at the top.
VQRTBaseContainerBody* EnclosingContainer(const VQRTObjectBody* object);
// The innermost table around the object, null outside of tables.
const VQRTObjectBody* EnclosingTable(const VQRTObjectBody* object);
// Whether a table around the object holds it in a cell.
bool IsTextPlace(const VQRTObjectBody* object);

// Text of the subtree between the places (null: from the start, to the end): newlines for paragraph records, other than
// those that cells begin with, and line breaks, a tab behind each table cell and a newline behind each row.
[[nodiscard]] VQSTATUS CollectText(const VQRTBaseContainerBody& container, const TextPlace* start, const TextPlace* end,
                                   VQString* text);

}  // namespace vq

#endif
