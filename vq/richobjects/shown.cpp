// Which attachments the rich texts of a slate show, by their stored records: the attachments' own records tell it too.
#include <algorithm>

#include "engine/memory.h"
#include "engine/ods.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richobjects/attachnames.h"
#include "vq/richtext/recsrc.h"
#include "vq/richtext/signature.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr std::uint32_t kTypeWord = 2;
constexpr std::uint16_t kAttachmentHotspot = 4;

using Names = std::set<std::string>;

void AddName(const unsigned char* bytes, std::uint32_t length, Names* names) {
  const std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  CDHOTSPOTBEGIN record{};
  void* cursor = const_cast<unsigned char*>(bytes);
  if (length < fixed || EngOdsRead(&cursor, ODS_CDHOTSPOTBEGIN, &record, 1) != ENG_OK) return;
  if (record.Type != kAttachmentHotspot || record.DataLength > length - fixed) return;
  const unsigned char* data = bytes + fixed;
  names->emplace(data, std::find(data, data + record.DataLength, 0));
}

// False for a value whose records cannot all be read.
bool AddNames(const unsigned char* value, std::uint32_t size, Names* names) {
  for (std::uint32_t at = kTypeWord; at + 1 < size;) {
    vq::RecordHeader header;
    if (!vq::ReadRecordHeader(value + at, size - at, &header)) return false;
    if (header.Length < header.HeaderSize || header.Length > size - at) return false;
    const bool begin = header.Signature == SIG_CD_HOTSPOTBEGIN || header.Signature == SIG_CD_V4HOTSPOTBEGIN;
    if (begin) AddName(value + at, header.Length, names);
    at += vq::Padded(header.Length);
  }
  return true;
}

bool AddNamesAt(const BLOCKID& value, std::uint32_t size, Names* names) {
  std::uint32_t present = 0;
  if (EngMemGetSize(value.Pool, &present) != ENG_OK) return false;
  if (value.Block > present || size > present - value.Block) return false;
  const vq::MemoryLock lock(value.Pool);
  return lock.GetBytes() && AddNames(lock.GetBytes() + value.Block, size, names);
}

bool AddNamesOf(ENGHANDLE slate, const BLOCKID& item, Names* names) {
  vq::ItemPlace place;
  const auto query = [&](BLOCKID* value) {
    return EngItemQuery(slate, item, nullptr, 0, nullptr, nullptr, &place.Type, value, &place.Size) == ENG_OK;
  };
  if (!query(nullptr)) return false;
  if (place.Type != TYPE_COMPOSITE) return true;
  return query(&place.Value) && AddNamesAt(place.Value, place.Size, names);
}

}  // namespace

bool VQSlateBody::MayShow() const {
  constexpr auto kLength = static_cast<std::uint16_t>(vq::kAttachmentItem.size());
  return EngItemIsPresent(SlateHandle, vq::EngineText(vq::kAttachmentItem), kLength) != 0;
}

void VQSlateBody::NoteShown(const BLOCKID& item) {
  if (MayShow()) static_cast<void>(AddNamesOf(SlateHandle, item, &ShownNames));
}

void VQSlateBody::NoteShown(const vq::ItemBlock& block) {
  if (MayShow()) static_cast<void>(AddNamesAt(BLOCKID{block.Memory, 0}, block.Size, &ShownNames));
}

VQSTATUS VQSlateBody::SettleShown() {
  if (ShownNames.empty()) return VQ_OK;
  Names shown;
  bool all = true;
  const unsigned long count = ItemCount();
  for (unsigned long i = 0; i < count; ++i) {
    BLOCKID item{};
    const ENGSTATUS result = EngSlateItemAt(SlateHandle, static_cast<std::uint32_t>(i), &item);
    if (result != ENG_OK) return vq::FromEngine(result);
    all = AddNamesOf(SlateHandle, item, &shown) && all;
  }
  for (const std::string& name : ShownNames) {
    const bool is_shown = shown.contains(name);
    // A text that cannot be read may show it.
    if (!is_shown && !all) continue;
    VQAttachment attachment;
    VQSTATUS status = vq::FindAttachment(this, name, &attachment);
    if (status == VQWARN_NOT_FOUND) continue;
    VQAttachmentBody* body = attachment.GetAttachmentBody();
    if (status == VQ_OK) status = body->SetFlag(FILEFLAG_IN_RICH_TEXT, is_shown);
    if (status == VQ_OK && body->IsDirty()) status = body->Flush();
    if (status != VQ_OK) return status;
  }
  ShownNames.clear();
  return VQ_OK;
}
