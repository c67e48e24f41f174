// Embedded objects and attachments in a rich text.
#include "vq/richobjects/vqrtattach.h"

#include <algorithm>
#include <filesystem>

#include "engine/ods.h"
#include "vq/richobjects/attachnames.h"
#include "vq/richtext/objectguard.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr std::uint16_t kAttachmentHotspot = 4;
constexpr std::size_t kMostData = 65000;

// The default display text.
std::string NameAndSize(std::string_view name, std::uintmax_t size) {
  return std::string(name) + " - " + std::to_string(size) + (size == 1 ? " byte" : " bytes");
}

VQStylizedTextBody* RunFrom(VQRTObjectBody* child) {
  while (child && child->GetType() != VQRTTYPE_STYLIZED_TEXT) child = child->GetNext();
  return static_cast<VQStylizedTextBody*>(child);
}

VQStylizedTextBody* FirstRun(const VQRTEmbeddedObjectBody& object) { return RunFrom(object.GetFirstChild()); }

VQRTObjectBody* GraphicOf(const VQRTEmbeddedObjectBody& object) {
  VQRTObjectBody* child = object.GetFirstChild();
  while (child && child->GetType() != VQRTTYPE_GRAPHIC) child = child->GetNext();
  return child;
}

// Ahead of its end, or at the end of one that has none.
VQSTATUS AddShown(VQRTEmbeddedObjectBody& object, VQRTObjectBody* shown) {
  VQRTObjectBody* last = object.GetLastChild();
  return last && last->GetType() == VQRTTYPE_HOTSPOT_END ? last->InsertPreviousSibling(shown) : object.Append(shown);
}

VQSTATUS ShowText(VQRTEmbeddedObjectBody& object, const VQString& text) {
  VQStylizedTextBody* run = FirstRun(object);
  if (!run) {
    const VQStylizedText made(text);
    return text.GetBufLength() == 0 ? VQ_OK : AddShown(object, made.GetRTObjectBody());
  }
  // What does not fit leaves all runs.
  const VQSTATUS set = text.GetBufLength() == 0 ? VQ_OK : run->SetValue(text, 0);
  if (VQIsError(set)) return set;
  for (VQStylizedTextBody* more = RunFrom(run->GetNext()); more; more = RunFrom(run->GetNext())) {
    if (VQSTATUS status = more->Delete()) return status;
  }
  return text.GetBufLength() == 0 ? run->Delete() : set;
}

}  // namespace

VQRTEmbeddedObjectBody::VQRTEmbeddedObjectBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset,
                                               std::uint32_t length)
    : VQRTElementBody(type, source, offset, length) {}

VQRTEmbeddedObjectBody::VQRTEmbeddedObjectBody(VQRTTYPE type, Unmade)
    : VQRTElementBody(type, static_cast<unsigned short>(0)) {}

VQRTEmbeddedObjectBody::VQRTEmbeddedObjectBody(VQRTTYPE type, unsigned short hotspotType)
    : VQRTEmbeddedObjectBody(type, Unmade{}) {
  CDHOTSPOTBEGIN record{};
  record.Header.Signature = SIG_CD_HOTSPOTBEGIN;
  record.Type = hotspotType;
  const VQRTObject end(new VQRTObjectBody(VQRTTYPE_HOTSPOT_END, SIG_CD_HOTSPOTEND));
  vq::ThrowIfError(WriteBegin(record, {}));
  vq::ThrowIfError(Append(end.GetRTObjectBody()));
}

VQCLASSID VQRTEmbeddedObjectBody::GetClassID() const { return VQCLASSID_VQRTEMBEDDEDOBJECTBODY; }
VQRTObjectBody* VQRTEmbeddedObjectBody::MakeSame() const { return new VQRTEmbeddedObjectBody(GetType(), Unmade{}); }

VQSTATUS VQRTEmbeddedObjectBody::ReadBegin(CDHOTSPOTBEGIN* record, std::vector<unsigned char>* data) const {
  if (VQSTATUS status = ReadODS(ODS_CDHOTSPOTBEGIN, record, 0)) return status;
  const std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  const std::uint32_t length = record->Header.Length;
  if (length < fixed || length > GetRecordSize() || record->DataLength > length - fixed) return VQERR_RT_INVALID;
  data->resize(record->DataLength);
  return data->empty() ? VQ_OK : ReadRecord(fixed, data->data(), record->DataLength);
}

VQSTATUS VQRTEmbeddedObjectBody::WriteBegin(CDHOTSPOTBEGIN record, const std::vector<unsigned char>& data) {
  if (data.size() > kMostData) return VQERR_INVALID_PARAMETER;
  const std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  std::vector<unsigned char> bytes(fixed + data.size());
  record.Header.Length = static_cast<std::uint16_t>(bytes.size());
  record.DataLength = static_cast<std::uint16_t>(data.size());
  void* cursor = bytes.data();
  if (VQSTATUS status = vq::FromEngine(EngOdsWrite(&cursor, ODS_CDHOTSPOTBEGIN, &record, 1))) return status;
  std::copy(data.begin(), data.end(), bytes.begin() + fixed);
  return SetRecord(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

VQRTAttachmentBody::VQRTAttachmentBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset,
                                       std::uint32_t length)
    : VQRTEmbeddedObjectBody(type, source, offset, length) {}

VQRTAttachmentBody::VQRTAttachmentBody() : VQRTEmbeddedObjectBody(VQRTTYPE_ATTACHMENT, kAttachmentHotspot) {}

VQRTAttachmentBody::VQRTAttachmentBody(Unmade unmade) : VQRTEmbeddedObjectBody(VQRTTYPE_ATTACHMENT, unmade) {}

VQCLASSID VQRTAttachmentBody::GetClassID() const { return VQCLASSID_VQRTATTACHMENTBODY; }
VQRTObjectBody* VQRTAttachmentBody::MakeSame() const { return new VQRTAttachmentBody(Unmade{}); }

VQSTATUS VQRTAttachmentBody::Close() {
  if (vq::Edit* edit = vq::Edit::Of(*this)) {
    edit->Sets(*this, Kept);
    edit->Sets(*this, File);
  }
  const VQSTATUS status = VQRTEmbeddedObjectBody::Close();
  Kept = VQAttachment();
  File.clear();
  return status;
}

VQSTATUS VQRTAttachmentBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (VQSTATUS status = VQRTEmbeddedObjectBody::Copy(source, options)) return status;
  const auto* from = dynamic_cast<const VQRTAttachmentBody*>(source);
  if (!from) return VQ_OK;
  VQAttachment found;
  const VQSTATUS status = from->Resolve(&found);
  const bool resolved = status == VQ_OK;
  std::string name, path;
  // What nobody can read, or not now, comes along as it is.
  const bool odd = status == VQERR_SLATE_NOT_OPEN || from->ReadNames(&name, &path) != VQ_OK;
  if (VQIsError(status) && !odd) return status;
  Kept = resolved ? found : from->HasSlate() ? VQAttachment() : from->Kept;
  File = from->File;
  return VQ_OK;
}

VQSTATUS VQRTAttachmentBody::ReadNames(std::string* name, std::string* path) const {
  CDHOTSPOTBEGIN record{};
  std::vector<unsigned char> data;
  if (VQSTATUS status = ReadBegin(&record, &data)) return status;
  const auto end = std::find(data.begin(), data.end(), 0);
  name->assign(data.begin(), end);
  const auto second = end == data.end() ? end : end + 1;
  path->assign(second, std::find(second, data.end(), 0));
  return VQ_OK;
}

VQSTATUS VQRTAttachmentBody::WriteNames(std::string_view name, std::string_view path) {
  CDHOTSPOTBEGIN record{};
  std::vector<unsigned char> data;
  if (VQSTATUS status = ReadBegin(&record, &data)) return status;
  // It would be read as another name.
  if (name.find('\0') != std::string_view::npos) return VQERR_INVALID_PARAMETER;
  data.assign(name.begin(), name.end());
  data.push_back(0);
  // A path that does not fit is worth less than the object.
  if (name.size() + path.size() + 2 <= kMostData) data.insert(data.end(), path.begin(), path.end());
  data.push_back(0);
  return WriteBegin(record, data);
}

bool VQRTAttachmentBody::HasSlate() const {
  const VQRichTextBody* text = GetRichTextBody();
  return text && text->GetSlateBody();
}

VQSTATUS VQRTAttachmentBody::Resolve(VQAttachment* attachment) const {
  const VQRichTextBody* text = GetRichTextBody();
  VQSlateBody* slate = text ? text->GetSlateBody() : nullptr;
  if (!slate) {
    if (Kept.IsNull() || !Kept.GetAttachmentBody()->HasFileObject()) return VQWARN_NOT_FOUND;
    *attachment = Kept;
    return VQ_OK;
  }
  if (!slate->IsOpen()) return VQERR_SLATE_NOT_OPEN;
  std::string name, path;
  if (VQSTATUS status = ReadNames(&name, &path)) return status;
  return vq::FindAttachment(slate, name, attachment);
}

VQSTATUS VQRTAttachmentBody::ConvertObjects(VQRichText*, VQRichText* target) {
  VQSlateBody* slate = target && !target->IsNull() ? target->GetRichTextBody()->GetSlateBody() : nullptr;
  if (slate) return CarryObjects(slate);
  return File.empty() ? VQ_OK : VQERR_ATTACHMENT_NO_SLATE;
}

VQSTATUS VQRTAttachmentBody::CarryObjects(VQSlateBody* slate) {
  std::string name, path;
  // A record that nobody can read goes along as it is.
  if (ReadNames(&name, &path) != VQ_OK) return VQ_OK;
  VQAttachment made;
  VQSTATUS status = VQ_OK;
  if (!File.empty()) {
    status = vq::AttachFile(slate, File, name, vq::Compression::kNone, &made);
  } else {
    status = Resolve(&made);
    // Its slate was closed on the way.
    if (status == VQWARN_NOT_FOUND && !HasSlate() && !Kept.IsNull()) return VQERR_ATTACHMENT_UNINITIALIZED;
    if (status == VQWARN_NOT_FOUND) return LoseAttachment(slate, name, path);
    const bool elsewhere = status == VQ_OK && made.GetAttachmentBody()->GetSlateBody() != slate;
    if (elsewhere) status = vq::CopyAttachment(VQAttachment(made), slate, &made);
  }
  return status == VQ_OK ? Show(made) : status;
}

VQSTATUS VQRTAttachmentBody::Show(const VQAttachment& attachment) {
  VQAttachmentBody& body = *attachment.GetAttachmentBody();
  if (VQSTATUS status = WriteNames(body.GetAttachmentName(), body.GetFilepath())) return status;
  Kept = attachment;
  File.clear();
  return body.SetFlag(FILEFLAG_IN_RICH_TEXT, true);
}

// What has lost its attachment must not come to show another one that happens to have its name.
VQSTATUS VQRTAttachmentBody::LoseAttachment(VQSlateBody* slate, const std::string& name, const std::string& path) {
  const VQRichTextBody* text = GetRichTextBody();
  if (text && text->GetSlateBody() == slate) return VQ_OK;
  vq::AttachmentNames names;
  if (VQSTATUS status = names.Read(slate)) return status;
  const std::string unused = names.MakeUnique(name);
  return unused == name ? VQ_OK : WriteNames(unused, path);
}

VQRTEmbeddedObject::VQRTEmbeddedObject(const VQRTObject& object) { *this = object; }

VQCLASSID VQRTEmbeddedObject::GetClassID() const { return VQCLASSID_VQRTEMBEDDEDOBJECT; }

void VQRTEmbeddedObject::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !dynamic_cast<const VQRTEmbeddedObjectBody*>(body)) vq::Throw(VQERR_CONVERSION_FAILED);
}

namespace {

VQSTATUS Check(const VQRTObject& object) {
  if (object.IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  return object.GetRTObjectBody()->IsClosed() ? VQERR_OBJECT_CLOSED : VQ_OK;
}

CDHOTSPOTBEGIN BeginOf(const VQRTEmbeddedObject& object) {
  vq::ThrowIfError(Check(object));
  CDHOTSPOTBEGIN record{};
  std::vector<unsigned char> data;
  vq::ThrowIfError(object.GetEmbeddedBody()->ReadBegin(&record, &data));
  return record;
}

template <typename Edit>
VQSTATUS EditBegin(const VQRTEmbeddedObject& object, Edit edit) {
  if (VQSTATUS status = Check(object)) return status;
  CDHOTSPOTBEGIN record{};
  std::vector<unsigned char> data;
  if (VQSTATUS status = object.GetEmbeddedBody()->ReadBegin(&record, &data)) return status;
  const VQSTATUS status = edit(record, data);
  return status == VQ_OK ? object.GetEmbeddedBody()->WriteBegin(record, data) : status;
}

}  // namespace

VQSTATUS VQRTEmbeddedObject::GetData(unsigned short* length, char** data) const {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  if (!length || !data) return vq::Apply(VQERR_NULL_POINTER);
  CDHOTSPOTBEGIN record{};
  std::vector<unsigned char>& copy = GetEmbeddedBody()->GetDataCopy();
  if (VQSTATUS status = GetEmbeddedBody()->ReadBegin(&record, &copy)) return vq::Apply(status);
  *length = static_cast<unsigned short>(copy.size());
  *data = reinterpret_cast<char*>(copy.data());
  return VQ_OK;
}

VQSTATUS VQRTEmbeddedObject::SetData(unsigned short offset, unsigned short length, char* data) {
  return vq::Apply(EditBegin(*this, [&](CDHOTSPOTBEGIN&, std::vector<unsigned char>& present) {
    if ((!data && length > 0) || offset > present.size()) return VQERR_INVALID_PARAMETER;
    std::vector<unsigned char> changed(present.begin(), present.begin() + offset);
    changed.insert(changed.end(), data, data + length);
    present.swap(changed);
    return VQ_OK;
  }));
}

unsigned long VQRTEmbeddedObject::GetHotspotFlags() const { return BeginOf(*this).Flags; }
unsigned short VQRTEmbeddedObject::GetHotspotType() const { return BeginOf(*this).Type; }

VQSTATUS VQRTEmbeddedObject::SetHotspotFlags(unsigned long flags) {
  if (flags > UINT32_MAX) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(EditBegin(*this, [&](CDHOTSPOTBEGIN& record, std::vector<unsigned char>&) {
    record.Flags = static_cast<std::uint32_t>(flags);
    return VQ_OK;
  }));
}

VQSTATUS VQRTEmbeddedObject::SetHotspotType(unsigned short type) {
  return vq::Apply(EditBegin(*this, [&](CDHOTSPOTBEGIN& record, std::vector<unsigned char>&) {
    record.Type = type;
    return VQ_OK;
  }));
}

VQRTAttachment::VQRTAttachment(const VQString& path, const VQString& name) {
  if (path.GetBufLength() == 0) vq::Throw(VQERR_NULL_STRING);
  auto* body = new VQRTAttachmentBody();
  Attach(body, 0);
  const std::string_view given = vq::ViewOf(name);
  const std::string_view used = given.empty() ? vq::LastPart(vq::ViewOf(path)) : given;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path.GetPlatformTextPtr(), error);
  body->KeepFile(path.GetPlatformTextPtr());
  vq::ThrowIfError(body->WriteNames(used, vq::ViewOf(path)));
  vq::ThrowIfError(ShowText(*body, vq::StringOf(error ? std::string(used) : NameAndSize(used, size))));
}

namespace {

VQSTATUS CheckSource(const VQAttachment& attachment) {
  const VQAttachmentBody* body = attachment.GetAttachmentBody();
  if (!body || !body->HasFileObject()) return VQERR_ATTACHMENT_UNINITIALIZED;
  return body->GetFileObject().Flags & FILEFLAG_SIGNED ? VQERR_ATTACHMENT_SIGNED : VQ_OK;
}

}  // namespace

VQRTAttachment::VQRTAttachment(const VQAttachment& attachment) {
  vq::ThrowIfError(CheckSource(attachment));
  const VQAttachmentBody* shown = attachment.GetAttachmentBody();
  auto* body = new VQRTAttachmentBody();
  Attach(body, 0);
  body->Keep(attachment);
  vq::ThrowIfError(body->WriteNames(shown->GetAttachmentName(), shown->GetFilepath()));
  const std::string text = NameAndSize(shown->GetAttachmentName(), shown->GetFileObject().FileSize);
  vq::ThrowIfError(ShowText(*body, vq::StringOf(text)));
}

VQRTAttachment::VQRTAttachment(const VQRTObject& object) { *this = object; }

VQCLASSID VQRTAttachment::GetClassID() const { return VQCLASSID_VQRTATTACHMENT; }

void VQRTAttachment::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !dynamic_cast<const VQRTAttachmentBody*>(body)) vq::Throw(VQERR_CONVERSION_FAILED);
}

namespace {

VQRTAttachmentBody& Open(const VQRTAttachment& attachment) {
  vq::ThrowIfError(Check(attachment));
  return *attachment.GetAttachmentBody();
}

struct Names {
  std::string Name, Path;
};

Names NamesOf(const VQRTAttachment& attachment) {
  Names names;
  vq::ThrowIfError(Open(attachment).ReadNames(&names.Name, &names.Path));
  return names;
}

}  // namespace

VQSTATUS VQRTAttachment::Detach(const VQString& path) const {
  VQAttachment attachment;
  const VQSTATUS status = GetAttachment(&attachment);
  return status == VQ_OK ? attachment.Detach(path) : status;
}

VQSTATUS VQRTAttachment::GetAttachment(VQAttachment* attachment) const {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  if (!attachment) return vq::Apply(VQERR_NULL_POINTER);
  return vq::Apply(vq::Caught([&] { return GetAttachmentBody()->Resolve(attachment); }));
}

VQSTATUS VQRTAttachment::SetAttachment(const VQAttachment& attachment) {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  if (VQSTATUS status = CheckSource(attachment)) return vq::Apply(status);
  VQRTAttachmentBody& body = *GetAttachmentBody();
  const VQRichTextBody* text = body.GetRichTextBody();
  VQSlateBody* slate = text ? text->GetSlateBody() : nullptr;
  vq::ObjectGuard objects(slate);
  VQAttachment shown = attachment;
  VQSTATUS status = VQ_OK;
  if (slate && attachment.GetAttachmentBody()->GetSlateBody() != slate) {
    status = vq::Caught([&] { return vq::CopyAttachment(attachment, slate, &shown); });
  }
  if (status == VQ_OK) status = body.Show(shown);
  if (status == VQ_OK) objects.Keep();
  return vq::Apply(status);
}

VQString VQRTAttachment::GetAttachmentName() const { return vq::StringOf(NamesOf(*this).Name); }
VQString VQRTAttachment::GetFilepath() const { return vq::StringOf(NamesOf(*this).Path); }

VQString VQRTAttachment::GetFilename() const {
  const Names names = NamesOf(*this);
  return vq::StringOf(vq::LastPart(names.Path.empty() ? names.Name : names.Path));
}

VQString VQRTAttachment::GetDisplayText() const {
  std::string text;
  for (VQStylizedTextBody* run = FirstRun(Open(*this)); run; run = RunFrom(run->GetNext())) {
    VQString part;
    vq::ThrowIfError(run->GetText(&part));
    text += vq::ViewOf(part);
  }
  return vq::StringOf(text);
}

VQSTATUS VQRTAttachment::SetDisplayText(const VQString& text) {
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTAttachmentBody& body = *GetAttachmentBody();
  return vq::Apply(vq::Caught([&] { return vq::Whole(body, [&] { return ShowText(body, text); }); }));
}

VQFontStyle VQRTAttachment::GetDisplayTextFontStyle() const {
  VQFontStyle style(VQ_DEFAULT_FONT_ID, static_cast<const VQFontTable*>(nullptr));
  if (VQStylizedTextBody* run = FirstRun(Open(*this))) vq::ThrowIfError(run->GetFontStyle(&style));
  return style;
}

VQSTATUS VQRTAttachment::SetDisplayTextFontStyle(const VQFontStyle& style) {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  VQStylizedTextBody* run = FirstRun(*GetAttachmentBody());
  VQSTATUS status = run ? VQ_OK : VQWARN_NOT_FOUND;
  for (; run && status == VQ_OK; run = RunFrom(run->GetNext())) {
    status = run->ApplyFontStyle(style, VQFONTMASK_ALL);
  }
  return vq::Apply(status);
}

VQSTATUS VQRTAttachment::GetGraphic(VQGraphic* graphic) const {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  if (!graphic) return vq::Apply(VQERR_NULL_POINTER);
  VQRTObjectBody* found = GraphicOf(*GetAttachmentBody());
  *graphic = VQGraphic(VQRTObject(found));
  return vq::Apply(found ? VQ_OK : VQWARN_NOT_FOUND);
}

VQSTATUS VQRTAttachment::SetGraphic(const VQGraphic& graphic) {
  if (VQSTATUS status = Check(*this)) return vq::Apply(status);
  VQRTAttachmentBody& body = *GetAttachmentBody();
  VQRTObject copy;
  if (!graphic.IsNull()) {
    if (VQSTATUS status = vq::pab::CopyOf(graphic.GetRTObjectBody(), &copy)) return vq::Apply(status);
  }
  // The old one goes when the new one stands.
  VQRTObjectBody* old = GraphicOf(body);
  if (!copy.IsNull()) {
    VQRTObjectBody* first = body.GetFirstChild();
    VQRTObjectBody* placed = copy.GetRTObjectBody();
    if (VQSTATUS status = first ? first->InsertPreviousSibling(placed) : body.Append(placed)) return vq::Apply(status);
  }
  return old ? vq::Apply(old->Delete()) : VQ_OK;
}
