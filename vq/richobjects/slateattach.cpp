// The operations of VQSlate on attached files.
#include "engine/text.h"
#include "vq/richobjects/attachnames.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

VQSTATUS VQSlate::CreateAttachment(const VQString& path, VQAttachment* attachment, int compress) {
  return CreateAttachment(path, vq::StringOf(vq::LastPart(vq::ViewOf(path))), attachment, compress);
}

VQSTATUS VQSlate::CreateAttachment(const VQString& path, const VQString& name, VQAttachment* attachment, int compress) {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  const vq::Compression compression = compress ? vq::Compression::kStream : vq::Compression::kNone;
  return vq::Apply(vq::Caught(
      [&] { return vq::AttachFile(body, path.GetPlatformTextPtr(), vq::ViewOf(name), compression, attachment); }));
}

VQSTATUS VQSlate::CreateAttachment(const VQAttachment& source, VQAttachment* attachment) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return vq::Apply(status);
  const VQAttachment hold(source);
  return vq::Apply(vq::Caught([&] { return vq::CopyAttachment(hold, body, attachment); }));
}

VQSTATUS VQSlate::GetAttachment(const VQString& name, VQAttachment* attachment) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && attachment == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Caught([&] { return vq::FindAttachment(body, vq::ViewOf(name), attachment); }));
}

VQSTATUS VQSlate::GetAttachments(VQItemArray* attachments) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && attachments == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  *attachments = new VQItemArrayBody(body, TYPE_OBJECT, VQCLASSID_VQATTACHMENTBODY);
  return VQ_OK;
}

VQSTATUS VQSlate::DeleteAttachment(const VQString& name) {
  VQAttachment attachment;
  const VQSTATUS status = GetAttachment(name, &attachment);
  return status == VQ_OK ? DeleteItem(&attachment) : status;
}

VQSTATUS VQSlate::DeleteAttachment(VQAttachment* attachment) { return DeleteItem(attachment); }

VQSTATUS VQSlate::Detach(const VQString& name, const VQString& path) const {
  VQAttachment attachment;
  const VQSTATUS status = GetAttachment(name, &attachment);
  return status == VQ_OK ? attachment.Detach(path) : status;
}

int VQSlate::HasAttachment(const VQString& name) const {
  const VQSTATUS status = vq::FindAttachment(RequireOpen(), vq::ViewOf(name), nullptr);
  vq::ThrowIfError(status);
  return status == VQ_OK;
}

int VQSlate::HasAttachments() const {
  int found = 0;
  const auto first = [&found](const vq::ItemPlace&, const std::string&) { return (found = 1) == 0; };
  vq::ThrowIfError(vq::ForEachAttachment(RequireOpen(), first));
  return found;
}
