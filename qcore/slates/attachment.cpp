#include "qcore/slates/attachment.h"

#include <algorithm>
#include <optional>

#include "engine/text.h"
#include "qcore/records/layouts.h"
#include "qcore/slates/compression.h"
#include "qcore/slates/hostfile.h"
#include "qcore/store/objects.h"
#include "qcore/store/wire.h"
#include "qcore/text/charset.h"
#include "qcore/text/translate.h"

namespace qcore {

namespace {

constexpr std::uint16_t kObjectType = 3;
constexpr std::size_t kPieceSize = std::size_t{1} << 20;

const records::Layout& FileLayout() { return *records::Find(ODS_FILEOBJECT); }

bool IsCompressed(const FILEOBJECT& file) { return (file.CompressionType & COMPRESS_MASK) == COMPRESS_STREAM; }

// Takes the file's bytes, and gives how many there were.
ENGSTATUS StoreFile(HostFileReader& file, bool compress, ObjectWriter& object, std::uint32_t* size) {
  const ByteSink sink = [&object](Bytes bytes) { return object.Append(bytes); };
  std::optional<Compressor> compressor;
  if (compress) compressor.emplace();
  std::vector<std::uint8_t> buffer(kPieceSize);
  std::uint64_t total = 0;
  for (std::size_t count = buffer.size(); count == buffer.size();) {
    ENGSTATUS status = file.Read(buffer, &count);
    total += count;
    if (status == ENG_OK && total > UINT32_MAX) status = ENG_ERR_OBJECT_RANGE;
    const Bytes bytes(buffer.data(), count);
    if (status == ENG_OK) status = compressor ? compressor->Put(bytes, sink) : object.Append(bytes);
    if (status != ENG_OK) return status;
  }
  *size = static_cast<std::uint32_t>(total);
  return compressor ? compressor->Finish(sink) : ENGSTATUS{ENG_OK};
}

// An object that the slate may name: its own, or one that is reserved.
ENGSTATUS CheckObject(const Slate::Objects& objects, std::uint32_t object, ObjectInfo* info) {
  const ENGSTATUS status = GetObjectInfo(*objects.database, object, info);
  if (status != ENG_OK) return status;
  return info->owner == 0 || info->owner == objects.owner ? ENG_OK : ENG_ERR_NO_OBJECT;
}

// The record of an item, and its object.
ENGSTATUS FindFile(Slate& slate, Slate::Slot slot, FILEOBJECT* file, ObjectInfo* info) {
  Bytes value;
  ENGSTATUS status = slate.GetBytes(slot, &value);
  if (status == ENG_OK) status = DecodeFileValue(value, file);
  if (status == ENG_OK) status = CheckObject(slate.ObjectsOf(slot), file->Header.ObjectID, info);
  if (status != ENG_OK || IsCompressed(*file) || info->size == file->FileSize) return status;
  return ENG_ERR_OBJECT_CONTENT;
}

// Everything that the record tells of goes into the file, and nothing else.
ENGSTATUS WriteFile(Database& database, const FILEOBJECT& file, std::uint32_t stored, HostFileWriter& target) {
  std::uint64_t left = file.FileSize;
  const ByteSink sink = [&](Bytes bytes) -> ENGSTATUS {
    if (bytes.size() > left) return ENG_ERR_OBJECT_CONTENT;
    left -= bytes.size();
    return target.Write(bytes);
  };
  std::optional<Decompressor> decompressor;
  if (IsCompressed(file)) decompressor.emplace();
  std::vector<std::uint8_t> buffer(std::min<std::size_t>(kPieceSize, stored));
  for (std::uint32_t at = 0; at < stored;) {
    const std::span<std::uint8_t> piece = std::span(buffer).first(std::min<std::size_t>(buffer.size(), stored - at));
    ENGSTATUS status = ReadObjectBytes(database, file.Header.ObjectID, at, piece);
    if (status == ENG_OK) status = decompressor ? decompressor->Put(piece, sink) : sink(piece);
    if (status != ENG_OK) return status;
    at += static_cast<std::uint32_t>(piece.size());
  }
  return left == 0 && (!decompressor || decompressor->IsComplete()) ? ENG_OK : ENG_ERR_OBJECT_CONTENT;
}

}  // namespace

ENGSTATUS EncodeFileValue(const ENGFILEDESCRIPTOR& descriptor, std::vector<std::uint8_t>* data) {
  const FILEOBJECT& file = descriptor.File;
  if (file.FileNameLength == 0 || file.FileNameLength > descriptor.TextLength || !descriptor.Text) {
    return ENG_ERR_ARGUMENT;
  }
  if ((file.Header.ObjectType & OBJECT_TYPE_MASK) != OBJECT_FILE) return ENG_ERR_ARGUMENT;
  const records::Layout& layout = FileLayout();
  data->resize(layout.length);
  records::Write(layout, &file, reinterpret_cast<std::byte*>(data->data()), 1);
  data->insert(data->end(), descriptor.Text, descriptor.Text + descriptor.TextLength);
  return ENG_OK;
}

ENGSTATUS DecodeFileValue(Bytes value, FILEOBJECT* file) {
  const records::Layout& layout = FileLayout();
  if (value.size() < kSmallestValue + layout.length || LoadLittle<std::uint16_t>(value.data()) != kObjectType) {
    return ENG_ERR_ITEM_DAMAGED;
  }
  records::Read(layout, reinterpret_cast<const std::byte*>(value.data() + kSmallestValue), file, 1);
  const std::size_t text = value.size() - kSmallestValue - layout.length;
  const bool is_file = (file->Header.ObjectType & OBJECT_TYPE_MASK) == OBJECT_FILE;
  return is_file && file->FileNameLength <= text ? ENG_OK : ENG_ERR_ITEM_DAMAGED;
}

ENGSTATUS AppendObjectItem(Slate& slate, std::string_view item_name, const ENGFILEDESCRIPTOR& descriptor) {
  std::vector<std::uint8_t> data;
  ENGSTATUS status = EncodeFileValue(descriptor, &data);
  ObjectInfo info{};
  if (status == ENG_OK) status = CheckObject(slate.OwnObjects(), descriptor.File.Header.ObjectID, &info);
  Slate::Slot slot = 0;
  if (status == ENG_OK) status = slate.Append(descriptor.ItemFlags, item_name, kObjectType, data, &slot);
  if (status == ENG_OK) slate.NoteObject(slot);
  return status;
}

ENGSTATUS AttachFile(Slate& slate, std::string_view item_name, std::string_view name, const std::string& path,
                     std::uint16_t flags, Slate::Slot* slot) {
  if (name.find('\0') != std::string_view::npos) return ENG_ERR_ARGUMENT;
  HostFileReader file;
  ENGSTATUS status = file.Open(path);
  if (status != ENG_OK) return status;
  if (file.facts().size > UINT32_MAX) return ENG_ERR_OBJECT_RANGE;
  const bool compress = (flags & ENG_ATTACH_COMPRESS) != 0;
  std::string text(name);
  text += text::Translate(ENG_TRANSLATE_PLATFORM_TO_STORE, text::AsText(path), UINT16_MAX);
  ENGFILEDESCRIPTOR descriptor{};
  descriptor.Text = reinterpret_cast<const ENGCHAR*>(text.data());
  descriptor.TextLength = static_cast<std::uint32_t>(text.size());
  FILEOBJECT& record = descriptor.File;
  record.Header.ObjectType = OBJECT_FILE;
  record.FileNameLength = static_cast<std::uint16_t>(name.size());
  record.HostType = HOST_POSIX;
  record.CompressionType = compress ? COMPRESS_STREAM : COMPRESS_NONE;
  record.FileAttributes = file.facts().attributes;
  record.FileCreated = file.facts().created;
  record.FileModified = file.facts().modified;
  ObjectWriter object(slate.database(), OBJECT_FILE);
  std::vector<std::uint8_t> data;
  status = EncodeFileValue(descriptor, &data);
  if (status == ENG_OK) status = StoreFile(file, compress, object, &record.FileSize);
  if (status == ENG_OK) status = object.Finish(&record.Header.ObjectID);
  if (status == ENG_OK) status = EncodeFileValue(descriptor, &data);
  if (status == ENG_OK) status = slate.Append(0, item_name, kObjectType, data, slot);
  if (status != ENG_OK) return status;
  object.Keep();
  slate.NoteObject(*slot);
  return ENG_OK;
}

ENGSTATUS CheckFile(Slate& slate, Slate::Slot slot) {
  FILEOBJECT file{};
  ObjectInfo info{};
  return FindFile(slate, slot, &file, &info);
}

ENGSTATUS CopyObjectOf(Slate& slate, Slate::Slot slot, Database& target, std::uint32_t* copy) {
  FILEOBJECT file{};
  ObjectInfo info{};
  const ENGSTATUS status = FindFile(slate, slot, &file, &info);
  if (status != ENG_OK) return status;
  return CopyObject(*slate.ObjectsOf(slot).database, file.Header.ObjectID, target, copy);
}

ENGSTATUS ExtractFile(Slate& slate, Slate::Slot slot, const std::string& path) {
  FILEOBJECT file{};
  ObjectInfo info{};
  ENGSTATUS status = FindFile(slate, slot, &file, &info);
  HostFileWriter target;
  if (status == ENG_OK) status = target.Open(path, file.FileAttributes);
  if (status == ENG_OK) status = WriteFile(*slate.ObjectsOf(slot).database, file, info.size, target);
  return status == ENG_OK ? target.Finish({0, file.FileCreated, file.FileModified, file.FileAttributes}) : status;
}

}  // namespace qcore
