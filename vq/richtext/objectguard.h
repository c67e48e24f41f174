// Stored objects that come into a slate with rich text.
#ifndef QUILLON_VQ_RICHTEXT_OBJECTGUARD_H
#define QUILLON_VQ_RICHTEXT_OBJECTGUARD_H

#include "vq/richtext/rtfwd.h"

namespace vq {

// Attachments that a refused operation has made on the way go again.
class ObjectGuard {
 public:
  explicit ObjectGuard(const VQRichTextBody* text);  // null: of nothing
  explicit ObjectGuard(VQSlateBody* slate);
  ~ObjectGuard();
  ObjectGuard(const ObjectGuard&) = delete;
  ObjectGuard& operator=(const ObjectGuard&) = delete;
  // The operation has come to where it succeeds.
  void Keep() { Slate = nullptr; }

 private:
  void Drop(unsigned long index);

  VQSlateBody* Slate = nullptr;
  unsigned long Before = 0;
};

// The objects of what is about to come into a rich text; null has none.
[[nodiscard]] VQSTATUS BringObjects(VQRTObjectBody& incoming, VQRichTextBody* target);

}  // namespace vq

#endif
