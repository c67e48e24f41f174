#include "vq/richtext/objectguard.h"

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/vqslate.h"

namespace vq {

ObjectGuard::ObjectGuard(const VQRichTextBody* text) : ObjectGuard(text ? text->GetSlateBody() : nullptr) {}

ObjectGuard::ObjectGuard(VQSlateBody* slate) : Slate(slate && slate->IsOpen() ? slate : nullptr) {
  if (Slate) Before = Slate->ItemCount();
}

ObjectGuard::~ObjectGuard() {
  std::uint32_t count = 0;
  if (!Slate || EngSlateItemCount(Slate->GetHandle(), &count) != ENG_OK) return;
  while (count > Before) Drop(--count);
}

void ObjectGuard::Drop(unsigned long index) {
  ItemPlace place;
  ENGSTATUS result = EngSlateItemAt(Slate->GetHandle(), static_cast<std::uint32_t>(index), &place.Item);
  if (result == ENG_OK) {
    result = EngItemQuery(Slate->GetHandle(), place.Item, nullptr, 0, nullptr, nullptr, &place.Type, &place.Value,
                          &place.Size);
  }
  if (result != ENG_OK || place.Type != TYPE_OBJECT) return;
  // What cannot be taken back is an attachment that nothing shows.
  static_cast<void>(Caught([&] {
    VQItemBody* body = nullptr;
    if (VQSTATUS status = Slate->BodyFor({}, place, &body)) return status;
    const VQItem hold(body);
    return Slate->DeleteOneItem(body);
  }));
}

VQSTATUS CheckAdmitted(VQRichTextBody* target, const VQRTObjectBody& incoming, const VQRichTextBody* source) {
  VQSlateBody* slate = target ? target->GetSlateBody() : nullptr;
  if (!slate) return VQ_OK;
  return slate->AdmitObjects(*target, incoming, source ? source->GetSlateBody() : nullptr);
}

VQSTATUS BringObjects(VQRTObjectBody& incoming, VQRichTextBody* target) {
  if (!target) return VQ_OK;
  VQRichText text(target);
  return incoming.ConvertObjects(nullptr, &text);
}

}  // namespace vq
