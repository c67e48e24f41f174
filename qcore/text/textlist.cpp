#include "qcore/text/textlist.h"

#include <cstring>

#include "qcore/memory/memory.h"

namespace qcore::text {

namespace {

std::uint16_t Word(const ENGCHAR* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }

void AppendWord(std::size_t word, std::string* bytes) {
  bytes->push_back(static_cast<char>(word & 0xFF));
  bytes->push_back(static_cast<char>(word >> 8));
}

std::size_t PrefixSize(Prefix prefix) { return prefix == Prefix::kType ? 2 : 0; }

// Where the texts begin.
std::size_t HeaderSize(std::size_t count, Prefix prefix) { return PrefixSize(prefix) + 2 + 2 * count; }

std::string_view View(const ENGCHAR* at, std::size_t length) { return {reinterpret_cast<const char*>(at), length}; }

}  // namespace

namespace {

// Gives each entry to `take`; false for bytes that are no list.
template <typename Take>
bool WalkList(Text value, Prefix prefix, Take&& take) {
  const std::size_t start = PrefixSize(prefix);
  if (value.size() < start + 2) return false;
  if (prefix == Prefix::kType && Word(value.data()) != kTextListType) return false;
  const std::size_t count = Word(value.data() + start);
  std::size_t at = HeaderSize(count, prefix);
  if (value.size() < at) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t length = Word(value.data() + start + 2 + 2 * i);
    if (value.size() - at < length) return false;
    take(View(value.data() + at, length));
    at += length;
  }
  return true;
}

}  // namespace

bool IsList(Text value, Prefix prefix) {
  return WalkList(value, prefix, [](std::string_view) {});
}

std::optional<Entries> ReadList(Text value, Prefix prefix) {
  Entries entries;
  if (!WalkList(value, prefix, [&entries](std::string_view entry) { entries.push_back(entry); })) return std::nullopt;
  return entries;
}

std::optional<std::string> WriteList(const Entries& entries, Prefix prefix) {
  std::size_t size = HeaderSize(entries.size(), prefix);
  for (std::string_view entry : entries) size += entry.size();
  if (size > kLargestList) return std::nullopt;
  std::string bytes;
  bytes.reserve(size);
  if (prefix == Prefix::kType) AppendWord(kTextListType, &bytes);
  AppendWord(entries.size(), &bytes);
  for (std::string_view entry : entries) AppendWord(entry.size(), &bytes);
  for (std::string_view entry : entries) bytes += entry;
  return bytes;
}

std::uint16_t ListCount(const ENGCHAR* value, Prefix prefix) { return Word(value + PrefixSize(prefix)); }

std::uint16_t ListSize(const ENGCHAR* value, Prefix prefix) {
  const std::size_t count = ListCount(value, prefix);
  const ENGCHAR* lengths = value + HeaderSize(0, prefix);
  std::size_t size = HeaderSize(count, prefix);
  for (std::size_t i = 0; i < count && size <= kLargestList; ++i) size += Word(lengths + 2 * i);
  return size <= kLargestList ? static_cast<std::uint16_t>(size) : 0;
}

std::optional<std::string_view> ListEntry(const ENGCHAR* value, Prefix prefix, std::uint16_t index) {
  const std::size_t count = ListCount(value, prefix);
  if (index >= count) return std::nullopt;
  const ENGCHAR* lengths = value + HeaderSize(0, prefix);
  std::size_t at = HeaderSize(count, prefix);
  for (std::size_t i = 0; i < index; ++i) at += Word(lengths + 2 * i);
  return View(value + at, Word(lengths + 2 * index));
}

ENGSTATUS EditList(ENGHANDLE block, Prefix prefix, std::uint16_t* size,
                   const std::function<ENGSTATUS(Entries&)>& edit) {
  std::optional<std::string> changed;
  {
    const memory::LockedBlock locked(block);
    if (!locked.bytes()) return ENG_ERR_INVALID_HANDLE;
    if (*size > locked.size()) return ENG_ERR_LIST_DAMAGED;
    std::optional<Entries> entries = ReadList({locked.bytes(), *size}, prefix);
    if (!entries) return ENG_ERR_LIST_DAMAGED;
    const ENGSTATUS status = edit(*entries);
    if (status != ENG_OK) return status;
    changed = WriteList(*entries, prefix);
  }
  if (!changed) return ENG_ERR_LIST_FULL;
  const ENGSTATUS status = memory::Resize(Kind::kMemory, block, static_cast<std::uint32_t>(changed->size()));
  if (status != ENG_OK) return status;
  const memory::LockedBlock locked(block);
  std::memcpy(locked.bytes(), changed->data(), changed->size());
  *size = static_cast<std::uint16_t>(changed->size());
  return ENG_OK;
}

}  // namespace qcore::text
