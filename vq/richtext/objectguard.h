// What comes into a slate with rich text: whether it may, and the stored objects of it.
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

// Whether the target's slate takes what comes from `source`; either may be null.
[[nodiscard]] VQSTATUS CheckAdmitted(VQRichTextBody* target, const VQRTObjectBody& incoming,
                                     const VQRichTextBody* source);

// The objects of what is about to come into a rich text; null has none.
[[nodiscard]] VQSTATUS BringObjects(VQRTObjectBody& incoming, VQRichTextBody* target);

}  // namespace vq

#endif
