// The container operations on attachments in a rich text.
#include "vq/richobjects/attachnames.h"
#include "vq/richobjects/vqrtattach.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

VQSTATUS CheckSlate(const VQRTContainerBody& container) {
  const VQRichTextBody* text = container.GetRichTextBody();
  return text && text->GetSlateBody() ? VQ_OK : VQERR_ATTACHMENT_NO_SLATE;
}

template <typename Make>
VQSTATUS Create(VQRTContainerBody& container, Make make, VQRTCursor* cursor, VQRTObject* created) {
  if (VQSTATUS status = CheckSlate(container)) return status;
  return vq::Caught([&] { return container.InsertAt(make(), 0, created, cursor); });
}

}  // namespace

VQSTATUS VQRTContainerBody::CreateAttachment(const VQString& path, VQRTCursor* cursor, VQRTObject* created) {
  return CreateAttachment(path, VQString(), cursor, created);
}

VQSTATUS VQRTContainerBody::CreateAttachment(const VQString& path, const VQString& name, VQRTCursor* cursor,
                                             VQRTObject* created) {
  if (vq::ViewOf(path).empty()) return VQERR_NULL_STRING;
  return Create(
      *this, [&] { return VQRTAttachment(path, name); }, cursor, created);
}

VQSTATUS VQRTContainerBody::CreateAttachment(const VQAttachment& source, VQRTCursor* cursor, VQRTObject* created) {
  return Create(
      *this, [&] { return VQRTAttachment(source); }, cursor, created);
}

VQSTATUS VQRTContainerBody::CreateAttachment(const VQAttachment& source, const VQString& displayText,
                                             VQRTCursor* cursor, VQRTObject* created) {
  const auto make = [&] {
    VQRTAttachment made(source);
    vq::ThrowIfError(made.SetDisplayText(displayText));
    return made;
  };
  return Create(*this, make, cursor, created);
}

VQSTATUS VQRTContainerBody::GetAttachment(const VQString& name, VQRTObject* found) {
  if (!found) return VQERR_NULL_POINTER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  for (VQRTObjectBody* object = FirstOfType(VQRTTYPE_ATTACHMENT); object;
       object = NextOfType(object, VQRTTYPE_ATTACHMENT)) {
    std::string present, path;
    const auto* body = dynamic_cast<const VQRTAttachmentBody*>(object);
    if (!body || body->ReadNames(&present, &path) != VQ_OK || present != vq::ViewOf(name)) continue;
    *found = VQRTObject(object);
    return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQRTContainerBody::DeleteAttachment(const VQString& name) {
  const VQString wanted(name);
  VQRTObject shown;
  VQSTATUS status = GetAttachment(wanted, &shown);
  if (status != VQ_OK) return status;
  VQAttachment attachment;
  VQSlateBody* slate = GetRichTextBody() ? GetRichTextBody()->GetSlateBody() : nullptr;
  if (slate) status = vq::FindAttachment(slate, vq::ViewOf(wanted), &attachment);
  while (!VQIsError(status) && GetAttachment(wanted, &shown) == VQ_OK) status = Delete(&shown);
  if (VQIsError(status) || attachment.IsNull()) return VQIsError(status) ? status : VQ_OK;
  // What is shown outside this container keeps its file.
  if (GetRichTextBody()->GetTop()->GetAttachment(wanted, &shown) == VQ_OK) return VQ_OK;
  return slate->DeleteOneItem(attachment.GetItemBody());
}
