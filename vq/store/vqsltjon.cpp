// VQSlateBody: a new value that joins the one item of its name.
#include <cstring>

#include "engine/records.h"
#include "engine/status.h"
#include "engine/text.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr std::size_t kEntry = 8;
constexpr std::size_t kListHeader = 4;
constexpr std::size_t kTypeWord = 2;

// Number, time and text: the types of one family differ in bit 0.
bool IsListFamily(std::uint16_t type) {
  const unsigned family = type & 0xFFFEU;
  return family == TYPE_NUMBER || family == TYPE_TIME || family == TYPE_TEXT;
}

using Bytes = std::vector<unsigned char>;

// The entries of a value, apart from their list form.
struct Entries {
  std::vector<Bytes> Texts;
  Bytes Singles;
  Bytes Ranges;

  VQSTATUS Take(std::uint16_t type, const unsigned char* data, std::size_t size);
  VQSTATUS TakeTextList(const unsigned char* data, std::size_t size);
  VQSTATUS TakeRanges(const unsigned char* data, std::size_t size);
  VQSTATUS Build(std::uint16_t type, Bytes* value) const;
};

VQSTATUS Entries::Take(std::uint16_t type, const unsigned char* data, std::size_t size) {
  if (size == 0) return VQ_OK;
  if (type == TYPE_TEXT_LIST) return TakeTextList(data, size);
  if (type == TYPE_TEXT) {
    Texts.emplace_back(data, data + size);
    return VQ_OK;
  }
  if ((type & 1) != 0) return TakeRanges(data, size);
  if (size != kEntry) return VQERR_CORRUPTED;
  Singles.insert(Singles.end(), data, data + kEntry);
  return VQ_OK;
}

VQSTATUS Entries::TakeTextList(const unsigned char* data, std::size_t size) {
  const ENGSTATUS result = EngTextListVerify(data, 0, static_cast<std::uint32_t>(size));
  if (result != ENG_OK) return vq::FromEngine(result);
  const std::uint16_t count = EngTextListCount(data, 0);
  for (std::uint16_t i = 0; i < count; ++i) {
    const ENGCHAR* text = nullptr;
    std::uint16_t length = 0;
    const ENGSTATUS got = EngTextListGetEntry(data, 0, i, &text, &length);
    if (got != ENG_OK) return vq::FromEngine(got);
    Texts.emplace_back(text, text + length);
  }
  return VQ_OK;
}

VQSTATUS Entries::TakeRanges(const unsigned char* data, std::size_t size) {
  if (size < kListHeader) return VQERR_CORRUPTED;
  const std::size_t singles = vq::LoadWord(data) * kEntry;
  const std::size_t ranges = vq::LoadWord(data + 2) * 2 * kEntry;
  if (singles + ranges > size - kListHeader) return VQERR_CORRUPTED;
  const unsigned char* entries = data + kListHeader;
  Singles.insert(Singles.end(), entries, entries + singles);
  Ranges.insert(Ranges.end(), entries + singles, entries + singles + ranges);
  return VQ_OK;
}

void AddWord(Bytes* value, std::size_t word) {
  value->push_back(static_cast<unsigned char>(word));
  value->push_back(static_cast<unsigned char>(word >> 8));
}

// Data behind the type word of the list type.
VQSTATUS Entries::Build(std::uint16_t type, Bytes* value) const {
  if (type == TYPE_TEXT_LIST) {
    AddWord(value, Texts.size());
    for (const Bytes& text : Texts) AddWord(value, text.size());
    for (const Bytes& text : Texts) value->insert(value->end(), text.begin(), text.end());
  } else {
    AddWord(value, Singles.size() / kEntry);
    AddWord(value, Ranges.size() / (2 * kEntry));
    value->insert(value->end(), Singles.begin(), Singles.end());
    value->insert(value->end(), Ranges.begin(), Ranges.end());
  }
  return value->size() + kTypeWord > 0xFFFF ? vq::FromEngine(ENG_ERR_LIST_FULL) : VQ_OK;
}

}  // namespace

VQSTATUS VQSlateBody::JoinItem(std::string_view name, const vq::ItemPlace& present, unsigned short type,
                               const void* data, unsigned long size, vq::ItemPlace* place) {
  const bool composite = present.Type == TYPE_COMPOSITE;
  if (!composite && !IsListFamily(present.Type)) return VQERR_ITEM_EXISTS;
  if (composite ? type != TYPE_COMPOSITE : (type & 0xFFFE) != (present.Type & 0xFFFE)) {
    return VQERR_INCORRECT_ITEM_TYPE;
  }
  VQItemBody* body = nullptr;
  VQSTATUS status = BodyFor(name, present, &body);
  if (status != VQ_OK) return status;
  const VQItem hold(body);
  if (body->IsDirty()) status = body->Flush();
  if (status != VQ_OK) return status;
  if (composite) {
    status = AppendItem(name, type, data, size, body->GetFlags(), nullptr);
    if (status == VQ_OK) status = RebindOne(body);
  } else {
    status = JoinEntries(body, type, data, size);
  }
  return status == VQ_OK && place != nullptr ? PlaceOf(name, place) : status;
}

VQSTATUS VQSlateBody::JoinEntries(VQItemBody* body, unsigned short type, const void* data, unsigned long size) {
  Entries entries;
  VQSTATUS status = VQ_OK;
  {
    const VQItemLock value(body);
    if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
    status = entries.Take(body->GetType(), value.Data(), body->GetValueSize() - kTypeWord);
  }
  if (status == VQ_OK) status = entries.Take(type, static_cast<const unsigned char*>(data), size);
  Bytes joined;
  const auto list_type = static_cast<std::uint16_t>(type | 1);
  if (status == VQ_OK) status = entries.Build(list_type, &joined);
  return status == VQ_OK ? body->ReplaceValue(list_type, joined.data(), joined.size()) : status;
}
