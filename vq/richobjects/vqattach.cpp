// VQAttachment and its body.
#include "vq/richobjects/vqattach.h"

#include <optional>

#include "engine/database.h"
#include "engine/memory.h"
#include "engine/ods.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richobjects/attachnames.h"
#include "vq/richtext/recsrc.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqdtime.h"

namespace {

constexpr unsigned long kTypeWord = 2;
constexpr char kFile[] = "VQATTACH";

struct FileValue {
  FILEOBJECT File{};
  std::string Name;
  std::string Path;
};

// Nothing for a value that holds no file, or less of it than the record says.
std::optional<FileValue> ReadFileValue(const BLOCKID& block, unsigned long size) {
  const unsigned long fixed = EngOdsLength(ODS_FILEOBJECT);
  std::uint32_t present = 0;
  if (size < kTypeWord + fixed || EngMemGetSize(block.Pool, &present) != ENG_OK) return std::nullopt;
  if (block.Block > present || size > present - block.Block) return std::nullopt;
  const vq::MemoryLock lock(block.Pool);
  if (!lock.GetBytes()) return std::nullopt;
  unsigned char* record = lock.GetBytes() + block.Block + kTypeWord;
  FileValue value;
  void* cursor = record;
  if (EngOdsRead(&cursor, ODS_FILEOBJECT, &value.File, 1) != ENG_OK) return std::nullopt;
  const std::string_view text(reinterpret_cast<const char*>(record) + fixed, size - kTypeWord - fixed);
  const bool isFile = (value.File.Header.ObjectType & OBJECT_TYPE_MASK) == OBJECT_FILE;
  if (!isFile || value.File.FileNameLength == 0 || value.File.FileNameLength > text.size()) return std::nullopt;
  value.Name = text.substr(0, value.File.FileNameLength);
  value.Path = text.size() > value.Name.size() ? std::string(text.substr(value.Name.size())) : value.Name;
  return value;
}

// The last item of a slate, which has just been appended.
VQSTATUS LastItem(VQSlateBody* slate, vq::ItemPlace* place) {
  slate->SetDirty();
  const unsigned long count = slate->ItemCount();
  ENGSTATUS result = EngSlateItemAt(slate->GetHandle(), static_cast<std::uint32_t>(count - 1), &place->Item);
  if (result == ENG_OK) {
    result = EngItemQuery(slate->GetHandle(), place->Item, nullptr, 0, nullptr, nullptr, &place->Type, &place->Value,
                          &place->Size);
  }
  return vq::FromEngine(result);
}

}  // namespace

VQAttachmentBody::VQAttachmentBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : VQItemBody(slate, name, place), FileObject{} {
  const unsigned short itemtype = place.Type;
  const long valuesize = static_cast<long>(place.Size);
  const long least = static_cast<long>(EngOdsLength(ODS_FILEOBJECT) + kTypeWord);
  VQ_ASSERT_TEXT(itemtype == TYPE_OBJECT && valuesize >= least,
                 "itemtype == TYPE_OBJECT && valuesize >= (VQINT) (ODSLength(_FILEOBJECT) + sizeof(WORD))", kFile);
  vq::ThrowIfError(ReadODS(0, ODS_FILEOBJECT, &FileObject));
  VQ_ASSERT((FileObject.Header.ObjectType & OBJECT_TYPE_MASK) == OBJECT_FILE, kFile);
  vq::ThrowIfError(ReadRecord());
}

VQAttachmentBody::~VQAttachmentBody() { VQItemBody::Close(); }

VQCLASSID VQAttachmentBody::GetClassID() const { return VQCLASSID_VQATTACHMENTBODY; }

VQSTATUS VQAttachmentBody::ReadRecord() {
  const std::optional<FileValue> value = ReadFileValue(ValueBlockID, ValueSize);
  SetState(kHasFileObject, value.has_value());
  if (!value) return VQERR_ITEM_UNINITIALIZED;
  FileObject = value->File;
  AttachmentName = value->Name;
  FilePath = value->Path;
  return VQ_OK;
}

VQSTATUS VQAttachmentBody::Rebound() { return ReadRecord(); }

void VQAttachmentBody::MarkDeleted() {
  VQItemBody::MarkDeleted();
  SetState(kHasFileObject, false);
}

VQSTATUS VQAttachmentBody::Detach(const std::string& path) {
  if (!Slate || !Slate->IsOpen()) return VQERR_SLATE_NOT_OPEN;
  if (path.empty()) return VQERR_NULL_STRING;
  if (!HasFileObject()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (IsDirty()) {
    if (VQSTATUS status = Flush()) return status;
  }
  return vq::FromEngine(EngItemExtractFile(Slate->GetHandle(), ItemBlockID, path.c_str(), 0));
}

VQSTATUS VQAttachmentBody::CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                    vq::ItemPlace* first) {
  return CopyTo(slate, name, flags, first);
}

VQSTATUS VQAttachmentBody::CopyTo(VQSlateBody* slate, std::string_view itemName, unsigned short itemFlags,
                                  vq::ItemPlace* place) {
  if (!HasFileObject() || !Slate || !Slate->IsOpen()) return VQERR_ATTACHMENT_UNINITIALIZED;
  if (FileObject.Flags & FILEFLAG_SIGNED) return VQERR_ATTACHMENT_SIGNED;
  vq::AttachmentNames names;
  if (VQSTATUS status = names.Read(slate)) return status;
  const std::string name = names.MakeUnique(AttachmentName);
  // The path stands behind the name, which may have become longer.
  const long bytes_to_move = static_cast<long>(ValueSize - kTypeWord - EngOdsLength(ODS_FILEOBJECT)) -
                             static_cast<long>(FileObject.FileNameLength);
  VQ_ASSERT(bytes_to_move >= 0, kFile);
  const std::string text = bytes_to_move > 0 ? name + FilePath : name;
  const ENGHANDLE target = slate->GetDatabaseBody()->GetHandle();
  ENGFILEDESCRIPTOR descriptor{};
  descriptor.File = FileObject;
  descriptor.File.Flags &= static_cast<std::uint16_t>(~FILEFLAG_IN_RICH_TEXT);
  descriptor.File.FileNameLength = static_cast<std::uint16_t>(name.size());
  descriptor.Text = vq::EngineText(text);
  descriptor.TextLength = static_cast<std::uint32_t>(text.size());
  descriptor.ItemFlags = itemFlags;
  std::uint32_t& object = descriptor.File.Header.ObjectID;
  ENGSTATUS result = EngItemCopyObject(Slate->GetHandle(), ItemBlockID, target, &object);
  if (result != ENG_OK) return vq::FromEngine(result);
  result = EngSlateAppendObjectItem(slate->GetHandle(), vq::EngineText(std::string(itemName)), &descriptor);
  if (result != ENG_OK) {
    EngObjectFree(target, object);
    return vq::FromEngine(result);
  }
  vq::ItemPlace made;
  const VQSTATUS status = LastItem(slate, &made);
  if (status == VQ_OK && place) *place = made;
  return status;
}

VQSTATUS VQAttachmentBody::SetFlag(unsigned short bits, bool on) {
  if (!HasFileObject()) return VQERR_OBJECT_NOT_INITIALIZED;
  FILEOBJECT record = FileObject;
  record.Flags = static_cast<std::uint16_t>(on ? record.Flags | bits : record.Flags & ~bits);
  if (record.Flags == FileObject.Flags) return VQ_OK;
  const VQSTATUS status = WriteODS(0, ODS_FILEOBJECT, &record);
  if (status == VQ_OK) FileObject = record;
  return status;
}

namespace vq {

VQItemBody* MakeObjectBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place) {
  if (ReadFileValue(place.Value, place.Size)) return new VQAttachmentBody(slate, name, place);
  return new VQSlateItemBody(slate, name, place);
}

VQSTATUS ForEachAttachment(VQSlateBody* slate, const AttachmentVisitor& visit) {
  const unsigned long count = slate->ItemCount();
  for (unsigned long i = 0; i < count; ++i) {
    ItemPlace place;
    ENGSTATUS result = EngSlateItemAt(slate->GetHandle(), static_cast<std::uint32_t>(i), &place.Item);
    const auto query = [&](BLOCKID* value) {
      return EngItemQuery(slate->GetHandle(), place.Item, nullptr, 0, nullptr, nullptr, &place.Type, value,
                          &place.Size);
    };
    if (result == ENG_OK) result = query(nullptr);
    if (result == ENG_OK && place.Type != TYPE_OBJECT) continue;
    if (result == ENG_OK) result = query(&place.Value);
    if (result != ENG_OK) return FromEngine(result);
    const std::optional<FileValue> value = ReadFileValue(place.Value, place.Size);
    if (value && !visit(place, value->Name)) return VQ_OK;
  }
  return VQ_OK;
}

VQSTATUS AttachmentAt(VQSlateBody* slate, const ItemPlace& place, VQAttachment* attachment) {
  std::string name(0xFFFF, '\0');
  std::uint16_t length = 0;
  const ENGSTATUS result = EngItemQuery(slate->GetHandle(), place.Item, reinterpret_cast<ENGCHAR*>(name.data()), 0xFFFF,
                                        &length, nullptr, nullptr, nullptr, nullptr);
  if (result != ENG_OK) return FromEngine(result);
  VQItemBody* body = nullptr;
  const VQSTATUS status = slate->BodyFor({name.data(), length}, place, &body);
  if (status != VQ_OK) return status;
  const VQItem hold(body);
  return attachment->Assign(slate, body);
}

VQSTATUS FindAttachment(VQSlateBody* slate, std::string_view name, VQAttachment* attachment) {
  std::optional<ItemPlace> found;
  const VQSTATUS status = ForEachAttachment(slate, [&](const ItemPlace& place, const std::string& present) {
    if (present == name) found = place;
    return !found;
  });
  if (status != VQ_OK) return status;
  if (!found) return VQWARN_NOT_FOUND;
  return attachment ? AttachmentAt(slate, *found, attachment) : VQ_OK;
}

VQSTATUS AttachFile(VQSlateBody* slate, const std::string& path, std::string_view name, Compression compression,
                    VQAttachment* attachment) {
  if (path.empty() || name.empty()) return VQERR_NULL_STRING;
  AttachmentNames names;
  if (VQSTATUS status = names.Read(slate)) return status;
  const std::string unique = names.MakeUnique(std::string(name));
  const std::uint16_t flags = compression == Compression::kStream ? ENG_ATTACH_COMPRESS : 0;
  ItemPlace place;
  const ENGSTATUS result =
      EngSlateAttachFile(slate->GetHandle(), EngineText(kAttachmentItem), EngineText(unique),
                         static_cast<std::uint16_t>(unique.size()), path.c_str(), flags, &place.Item);
  if (result != ENG_OK) return FromEngine(result);
  VQSTATUS status = LastItem(slate, &place);
  if (status == VQ_OK && attachment) status = AttachmentAt(slate, place, attachment);
  return status;
}

VQSTATUS CopyAttachment(const VQAttachment& source, VQSlateBody* slate, VQAttachment* attachment) {
  if (source.IsNull()) return VQERR_ATTACHMENT_UNINITIALIZED;
  ItemPlace place;
  VQSTATUS status = source.GetAttachmentBody()->CopyTo(slate, kAttachmentItem, 0, &place);
  if (status == VQ_OK && attachment) status = AttachmentAt(slate, place, attachment);
  return status;
}

}  // namespace vq

VQAttachment::VQAttachment(const VQItem& item) { VQAttachment::operator=(item); }

VQAttachment::VQAttachment(VQAttachmentBody* body) : VQItem(body) {}

VQAttachment& VQAttachment::operator=(const VQItem& item) {
  VQItemBody* body = item.GetItemBody();
  if (body && body->GetClassID() != VQCLASSID_VQATTACHMENTBODY) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
  VQItem::operator=(item);
  return *this;
}

VQCLASSID VQAttachment::GetClassID() const { return VQCLASSID_VQATTACHMENT; }

namespace {

const VQAttachmentBody& Require(const VQAttachment& attachment) {
  const VQAttachmentBody* body = attachment.GetAttachmentBody();
  if (!body || !body->HasFileObject()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return *body;
}

const FILEOBJECT& FileOf(const VQAttachment& attachment) { return Require(attachment).GetFileObject(); }

}  // namespace

VQSTATUS VQAttachment::Detach(const VQString& path) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(vq::Caught([&] { return GetAttachmentBody()->Detach(path.GetPlatformTextPtr()); }));
}

VQSTATUS VQAttachment::Check() const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  const VQAttachmentBody& body = *GetAttachmentBody();
  if (!body.GetSlateBody() || !body.GetSlateBody()->IsOpen()) return vq::Apply(VQERR_SLATE_NOT_OPEN);
  if (!body.HasFileObject()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(vq::FromEngine(EngItemCheckFile(body.GetSlateBody()->GetHandle(), body.GetItemBlock())));
}

VQString VQAttachment::GetAttachmentName() const { return vq::StringOf(Require(*this).GetAttachmentName()); }
unsigned short VQAttachment::GetAttachmentType() const { return FileOf(*this).HostType & HOST_TYPE_MASK; }
VQDatetime VQAttachment::GetFileLastModified() const { return VQDatetime(FileOf(*this).FileModified); }
VQString VQAttachment::GetFilepath() const { return vq::StringOf(Require(*this).GetFilepath()); }
unsigned long VQAttachment::GetFileSize() const { return FileOf(*this).FileSize; }

int VQAttachment::IsCompressed() const { return (FileOf(*this).CompressionType & COMPRESS_MASK) == COMPRESS_STREAM; }
int VQAttachment::IsFilePrivate() const { return (FileOf(*this).FileAttributes & FILEATTRIBUTE_PRIVATE) != 0; }
int VQAttachment::IsFileReadOnly() const { return (FileOf(*this).FileAttributes & FILEATTRIBUTE_READ_ONLY) != 0; }
int VQAttachment::IsInRichText() const { return (FileOf(*this).Flags & FILEFLAG_IN_RICH_TEXT) != 0; }
int VQAttachment::IsSigned() const { return (FileOf(*this).Flags & FILEFLAG_SIGNED) != 0; }
