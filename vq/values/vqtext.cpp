// Text bodies: entries of a stored text or text list.
#include "vq/values/vqtext.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/store/storetext.h"
#include "vq/values/entrycount.h"

namespace {

constexpr char kFile[] = "VQTEXT";
constexpr unsigned long kTypeWord = 2;
constexpr unsigned long kLargestList = 65535;  // with the type word

const void* CheckedValue(unsigned short type, const void* value, unsigned long length) {
  VQ_ASSERT_TEXT(type == TYPE_TEXT || type == TYPE_TEXT_LIST, "vaulttype == TYPE_TEXT || vaulttype == TYPE_TEXT_LIST",
                 kFile);
  if (length != 0) VQ_ASSERT(value, kFile);
  return value;
}

// A string's bytes as they are stored: line breaks are zero bytes. Good as long as the string is unchanged.
class StoredText {
 public:
  explicit StoredText(const VQString& text) : Bytes(text.GetBuf()), Size(text.GetBufLength()) {
    if (std::memchr(Bytes, kLineFeed, Size) == nullptr) return;
    Copy.assign(Bytes, Bytes + Size);
    Bytes = Copy.data();
    for (VQCHAR *at = Copy.data(), *end = at + Size; (at = FindLineFeed(at, end)) != nullptr; ++at) *at = 0;
  }
  StoredText(const StoredText&) = delete;
  StoredText& operator=(const StoredText&) = delete;
  const VQCHAR* data() const { return Bytes; }
  unsigned long size() const { return Size; }

 private:
  static constexpr VQCHAR kLineFeed = 10;

  static VQCHAR* FindLineFeed(VQCHAR* from, const VQCHAR* end) {
    return static_cast<VQCHAR*>(std::memchr(from, kLineFeed, static_cast<std::size_t>(end - from)));
  }

  const VQCHAR* Bytes;
  unsigned long Size;
  std::vector<VQCHAR> Copy;
};

void AppendWord(std::vector<VQCHAR>* bytes, unsigned long word) {
  bytes->push_back(static_cast<VQCHAR>(word & 0xFF));
  bytes->push_back(static_cast<VQCHAR>(word >> 8));
}

// The entry count of a list, whose lengths lie inside its bytes.
VQSTATUS CountIn(const VQItemLock& value, unsigned long size, unsigned long* count) {
  if (size < 2 * kTypeWord) return vq::FromEngine(ENG_ERR_LIST_DAMAGED);
  *count = EngTextListCount(value.Value(), 1);
  return 2 * kTypeWord + 2 * *count > size ? vq::FromEngine(ENG_ERR_LIST_DAMAGED) : VQ_OK;
}

using Entry = std::span<const VQCHAR>;

// The entries of a value where they lie, good as long as it is locked.
VQSTATUS FindEntries(const VQItemLock& value, unsigned short type, unsigned long size, std::vector<Entry>* entries) {
  if (size == kTypeWord) return VQ_OK;
  if (type != TYPE_TEXT_LIST) {
    entries->emplace_back(value.Data(), size - kTypeWord);
    return VQ_OK;
  }
  const ENGSTATUS result = EngTextListVerify(value.Value(), 1, static_cast<std::uint32_t>(size));
  if (result != ENG_OK) return vq::FromEngine(result);
  const unsigned long count = EngTextListCount(value.Value(), 1);
  const VQCHAR* lengths = value.Data() + kTypeWord;
  const VQCHAR* at = lengths + 2 * count;
  entries->reserve(count + 1);
  for (unsigned long i = 0; i < count; ++i) {
    entries->emplace_back(at, lengths[2 * i] | lengths[2 * i + 1] << 8);
    at += entries->back().size();
  }
  return VQ_OK;
}

// The stored list behind its type word. One that was too large before may stay so, but grows no more.
VQSTATUS WriteList(std::span<const Entry> entries, unsigned long present, std::vector<VQCHAR>* bytes) {
  unsigned long size = 2 * kTypeWord + 2 * entries.size();
  for (const Entry& entry : entries) size += entry.size();
  if (size > std::max(kLargestList, present)) return vq::FromEngine(ENG_ERR_LIST_FULL);
  size -= kTypeWord;
  bytes->resize(size);
  VQCHAR* length = bytes->data();
  VQCHAR* text = length + kTypeWord + 2 * entries.size();
  vq::StoreWord(length, static_cast<unsigned>(entries.size()));
  for (const Entry& entry : entries) {
    vq::StoreWord(length += 2, static_cast<unsigned>(entry.size()));
    text = std::copy(entry.begin(), entry.end(), text);
  }
  return VQ_OK;
}

}  // namespace

VQTextBody::VQTextBody(unsigned short type, const void* value, unsigned long length)
    : VQItemBody(type, CheckedValue(type, value, length), length) {}

VQTextBody::VQTextBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : VQItemBody(slate, name, place) {}

VQCLASSID VQTextBody::GetClassID() const { return VQCLASSID_VQTEXTBODY; }

VQSTATUS VQTextBody::CheckEditable() const {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  return CheckValue();
}

VQSTATUS VQTextBody::SetText(const VQString& text) {
  if (const VQSTATUS status = CheckEditable()) return status;
  const StoredText bytes(text);
  return ReplaceValue(TYPE_TEXT, bytes.data(), bytes.size());
}

VQSTATUS VQTextBody::SetValueOf(VQTextBody& source) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (&source == this) return VQ_OK;
  const VQItemLock value(&source);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  return ReplaceValue(source.GetType(), value.Data(), source.GetValueSize() - kTypeWord);
}

// The stored form is written here in one go: entry by entry the engine would read the growing list anew each time.
VQSTATUS VQTextBody::SetEntries(std::span<const VQString> entries) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (entries.empty()) return ReplaceValue(TYPE_TEXT, nullptr, 0);
  unsigned long size = 2 * kTypeWord + 2 * entries.size();
  for (const VQString& entry : entries) size += entry.GetBufLength();
  if (size > 65535) return vq::FromEngine(ENG_ERR_LIST_FULL);
  std::vector<VQCHAR> bytes;
  bytes.reserve(size);
  AppendWord(&bytes, entries.size());
  for (const VQString& entry : entries) AppendWord(&bytes, entry.GetBufLength());
  for (const VQString& entry : entries)
    bytes.insert(bytes.end(), entry.GetBuf(), entry.GetBuf() + entry.GetBufLength());
  std::replace(bytes.end() - static_cast<std::ptrdiff_t>(size - 2 * kTypeWord - 2 * entries.size()), bytes.end(),
               VQCHAR{10}, VQCHAR{0});
  return ReplaceValue(TYPE_TEXT_LIST, bytes.data(), bytes.size());
}

VQSTATUS VQTextBody::ReadEntry(unsigned long index, VQString* text) {
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  const unsigned long size = GetValueSize();
  const ENGCHAR* entry = value.Data();
  unsigned long length = size - kTypeWord;
  if (GetType() != TYPE_TEXT && length != 0) {
    VQ_ASSERT_TEXT(GetType() == TYPE_TEXT_LIST, "vaulttype==TYPE_TEXT_LIST", kFile);
    unsigned long count = 0;
    if (const VQSTATUS status = CountIn(value, size, &count)) return status;
    std::uint16_t bytes = 0;
    const auto place = static_cast<std::uint16_t>(std::min(index, 0xFFFFUL));
    const bool empty = index == 0 && count == 0;
    const ENGSTATUS result = empty ? ENG_OK : EngTextListGetEntry(value.Value(), 1, place, &entry, &bytes);
    if (result != ENG_OK) return vq::FromEngine(result);
    length = bytes;
    if (static_cast<unsigned long>(entry - value.Value()) + length > size) return vq::FromEngine(ENG_ERR_LIST_DAMAGED);
  }
  if (length > VQStringBody::kMaximumBytes) return VQERR_STRING_TOO_LONG;
  text->Setup(entry, length);
  return VQ_OK;
}

// In one walk: entry by entry the engine would add up the lengths in front of each.
VQSTATUS VQTextBody::ReadEntries(std::vector<VQString>* entries) {
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  const unsigned long size = GetValueSize();
  entries->clear();
  if (size == kTypeWord) return VQ_OK;
  if (GetType() == TYPE_TEXT) {
    if (size - kTypeWord > VQStringBody::kMaximumBytes) return VQERR_STRING_TOO_LONG;
    entries->emplace_back(value.Data(), size - kTypeWord);
    return VQ_OK;
  }
  VQ_ASSERT_TEXT(GetType() == TYPE_TEXT_LIST, "vaulttype==TYPE_TEXT_LIST", kFile);
  if (const VQSTATUS status = vq::FromEngine(EngTextListVerify(value.Value(), 1, size))) return status;
  const unsigned long count = EngTextListCount(value.Value(), 1);
  const VQCHAR* lengths = value.Data() + kTypeWord;
  const VQCHAR* entry = lengths + 2 * count;
  entries->reserve(count);
  for (unsigned long i = 0; i < count; ++i) {
    const unsigned long length = lengths[2 * i] | lengths[2 * i + 1] << 8;
    if (length > VQStringBody::kMaximumBytes) return VQERR_STRING_TOO_LONG;
    entries->emplace_back(entry, length);
    entry += length;
  }
  return VQ_OK;
}

VQSTATUS VQTextBody::InsertEntry(unsigned long index, const VQString& text) {
  if (const VQSTATUS status = CheckEditable()) return status;
  unsigned long entries = 0;
  if (const VQSTATUS status = vq::CountEntries(this, &entries)) return status;
  if (index > entries) return VQERR_OUT_OF_RANGE;
  const StoredText bytes(text);
  const Entry entry(bytes.data(), bytes.size());
  return PutEntries(index, 0, {&entry, 1});
}

// The list is made aside, so that entries that do not fit leave the value as it was.
VQSTATUS VQTextBody::PutEntries(unsigned long index, unsigned long replaced, std::span<const Entry> added) {
  if (EntriesChecked && ValueType == TYPE_TEXT_LIST && static_cast<unsigned long>(EntryCount) == index &&
      replaced == 0) {
    return AppendEntries(added);
  }
  std::vector<VQCHAR> list;
  std::vector<Entry> entries;
  {
    const VQItemLock value(this);
    if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
    if (const VQSTATUS status = FindEntries(value, GetType(), GetValueSize(), &entries)) return status;
    if (index > entries.size() || replaced > entries.size() - index) return VQERR_OUT_OF_RANGE;
    const auto at = entries.begin() + static_cast<std::ptrdiff_t>(index);
    entries.erase(at, at + static_cast<std::ptrdiff_t>(replaced));
    entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(index), added.begin(), added.end());
    if (const VQSTATUS status = WriteList(entries, GetValueSize(), &list)) return status;
  }
  if (entries.empty()) return ReplaceValue(TYPE_TEXT, nullptr, 0);
  if (const VQSTATUS status = ReplaceValue(TYPE_TEXT_LIST, list.data(), list.size())) return status;
  EntryCount = static_cast<std::int32_t>(entries.size());
  EntriesChecked = true;
  return VQ_OK;
}

// A list known to be sound grows where it is: text by text it would be read and written anew each time.
VQSTATUS VQTextBody::AppendEntries(std::span<const Entry> added) {
  unsigned long size = 2 * added.size();
  for (const Entry& entry : added) size += entry.size();
  if (ValueSize + size > kLargestList) return vq::FromEngine(ENG_ERR_LIST_FULL);
  const auto count = static_cast<std::uint32_t>(EntryCount);
  const unsigned long texts = kTypeWord + 2UL * count;
  const unsigned long length = ValueSize - kTypeWord - texts;
  if (const VQSTATUS status = ReallocateValue(ValueSize + size)) return status;
  const VQItemLock value(this);
  if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
  VQCHAR* const behind = value.Data() + texts;
  VQCHAR* text = std::copy_backward(behind, behind + length, behind + 2 * added.size() + length) + length;
  VQCHAR* word = behind;
  for (const Entry& entry : added) {
    vq::StoreWord(word, static_cast<unsigned>(entry.size()));
    word += 2;
    text = std::copy(entry.begin(), entry.end(), text);
  }
  EntryCount = static_cast<std::int32_t>(count + added.size());
  vq::StoreWord(value.Data(), static_cast<unsigned>(EntryCount));
  EntriesChecked = true;
  return VQ_OK;
}

// The source's entries are copied: the engine may hold both values in one block, which it moves to make room.
VQSTATUS VQTextBody::InsertEntries(unsigned long index, VQTextBody& source) {
  if (const VQSTATUS status = CheckEditable()) return status;
  if (source.CheckValue() != VQ_OK) return VQERR_UNINITIALIZED_ARGUMENT;
  if (&source == this) return VQERR_INVALID_PARAMETER;
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(this, &count)) return status;
  if (index > count) return VQERR_OUT_OF_RANGE;
  std::vector<Entry> entries;
  std::vector<VQCHAR> bytes;
  {
    const VQItemLock value(&source);
    if (value.Value() == nullptr) return VQERR_ITEM_UNINITIALIZED;
    if (const VQSTATUS status = FindEntries(value, source.GetType(), source.GetValueSize(), &entries)) return status;
    bytes.assign(value.Value(), value.Value() + source.GetValueSize());
    for (Entry& entry : entries) entry = Entry(bytes.data() + (entry.data() - value.Value()), entry.size());
  }
  return PutEntries(index, 0, entries);
}

VQSTATUS VQTextBody::DeleteEntries(unsigned long index, unsigned long count) {
  if (const VQSTATUS status = CheckEditable()) return status;
  return count == 0 ? VQ_OK : PutEntries(index, count, {});
}

VQSTATUS VQTextBody::ReplaceEntry(unsigned long index, const VQString& text) {
  if (const VQSTATUS status = CheckEditable()) return status;
  unsigned long entries = 0;
  if (const VQSTATUS status = vq::CountEntries(this, &entries)) return status;
  if (index != 0 && index >= entries) return VQERR_OUT_OF_RANGE;
  if (GetType() == TYPE_TEXT || entries == 0) return SetText(text);
  const StoredText bytes(text);
  const Entry entry(bytes.data(), bytes.size());
  return PutEntries(index, 1, {&entry, 1});
}
