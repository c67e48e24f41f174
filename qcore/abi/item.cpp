#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "engine/records.h"
#include "qcore/abi/lookup.h"
#include "qcore/memory/memory.h"
#include "qcore/settings/settings.h"
#include "qcore/slates/slate.h"
#include "qcore/store/wire.h"

using qcore::Bytes;
using qcore::LoadLittle;
using qcore::Slate;
using qcore::abi::GuardValue;
using qcore::abi::WithItem;
using qcore::abi::WithSlate;

namespace {

constexpr uint16_t kTypeNumber = 0x0300;
constexpr uint16_t kTypeNumberRange = 0x0301;
constexpr uint16_t kTypeText = 0x0500;
constexpr uint16_t kTypeTextList = 0x0501;

std::string_view Text(const ENGCHAR* text, size_t length) {
  return {reinterpret_cast<const char*>(text), text ? length : 0};
}

std::string_view Text(const ENGCHAR* text) {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

// A value that stands aside is read only when its place is asked for.
ENGSTATUS GiveValue(Slate& slate, Slate::Slot slot, uint16_t* type, BLOCKID* value, uint32_t* value_size) {
  Slate::Value found = slate.FactsOf(slot);
  const ENGSTATUS status = value ? slate.GetValue(slot, &found) : ENGSTATUS{ENG_OK};
  if (status != ENG_OK) return status;
  if (type) *type = found.type;
  if (value) *value = found.place;
  if (value_size) *value_size = found.size;
  return ENG_OK;
}

ENGSTATUS GiveItem(Slate& slate, Slate::Slot slot, BLOCKID* item, uint16_t* type, BLOCKID* value,
                   uint32_t* value_size) {
  const ENGSTATUS status = GiveValue(slate, slot, type, value, value_size);
  if (status == ENG_OK && item) *item = slate.IdOf(slot);
  return status;
}

// Runs `body` with the type and the bytes behind the type word of the first item of the name.
template <typename Body>
bool WithData(ENGHANDLE handle, const ENGCHAR* name, Body&& body) {
  Slate* slate = Slate::Find(handle);
  Slate::Slot slot = 0;
  Slate::Value value{};
  if (!slate || slate->FindItem(Text(name), &slot) != ENG_OK || slate->GetValue(slot, &value) != ENG_OK) return false;
  const qcore::memory::LockedBlock block(value.place.Pool);
  if (!block.bytes() || block.size() < value.place.Block + value.size) return false;
  return body(value.type, Bytes(block.bytes() + value.place.Block, value.size).subspan(qcore::kSmallestValue));
}

bool TextEntry(uint16_t type, Bytes data, uint16_t index, std::string_view* text) {
  if (type == kTypeText && index == 0) {
    *text = Text(data.data(), data.size());
    return true;
  }
  if (type != kTypeTextList) return false;
  qcore::WireReader reader(data);
  const auto count = reader.Take<uint16_t>();
  const uint8_t* lengths = reader.Skip(size_t{count} * 2);
  if (!lengths || index >= count) return false;
  for (uint16_t i = 0; i < index; ++i) reader.Skip(LoadLittle<uint16_t>(lengths + 2 * i));
  const uint16_t length = LoadLittle<uint16_t>(lengths + 2 * index);
  const uint8_t* entry = reader.Skip(length);
  if (entry) *text = Text(entry, length);
  return entry != nullptr;
}

}  // namespace

ENGSTATUS EngSlateGetItemInfo(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length, BLOCKID* item, uint16_t* type,
                              BLOCKID* value, uint32_t* value_size) {
  return WithSlate(slate, [&](Slate& source) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const ENGSTATUS status = source.FindItem(Text(name, name_length), &slot);
    return status == ENG_OK ? GiveItem(source, slot, item, type, value, value_size) : status;
  });
}

ENGSTATUS EngSlateGetNextItemInfo(ENGHANDLE slate, BLOCKID previous, const ENGCHAR* name, uint16_t name_length,
                                  BLOCKID* item, uint16_t* type, BLOCKID* value, uint32_t* value_size) {
  return WithItem(slate, previous, [&](Slate& source, Slate::Slot before) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const ENGSTATUS status = source.FindNextItem(before, Text(name, name_length), &slot);
    return status == ENG_OK ? GiveItem(source, slot, item, type, value, value_size) : status;
  });
}

ENGSTATUS EngSlateItemCount(ENGHANDLE slate, uint32_t* count) {
  if (!count) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& source) -> ENGSTATUS {
    *count = source.ItemCount();
    return ENG_OK;
  });
}

ENGSTATUS EngSlateItemAt(ENGHANDLE slate, uint32_t index, BLOCKID* item) {
  if (!item) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& source) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const ENGSTATUS status = source.ItemAt(index, &slot);
    if (status == ENG_OK) *item = source.IdOf(slot);
    return status;
  });
}

ENGSTATUS EngSlateSetItemsAside(ENGHANDLE slate, uint32_t first, uint32_t count) {
  return WithSlate(slate, [&](Slate& target) { return target.SetAside(first, count); });
}

ENGSTATUS EngSlateRestoreItems(ENGHANDLE slate) {
  return WithSlate(slate, [](Slate& target) { return target.RestoreSetAside(); });
}

ENGSTATUS EngItemQuery(ENGHANDLE slate, BLOCKID item, ENGCHAR* name, uint16_t name_size, uint16_t* name_length,
                       uint16_t* flags, uint16_t* type, BLOCKID* value, uint32_t* value_size) {
  return WithItem(slate, item, [&](Slate& source, Slate::Slot slot) -> ENGSTATUS {
    const ENGSTATUS status = GiveValue(source, slot, type, value, value_size);
    if (status != ENG_OK) return status;
    const std::string_view text = source.NameOf(slot);
    if (name) std::memcpy(name, text.data(), std::min<size_t>(text.size(), name_size));
    if (name_length) *name_length = static_cast<uint16_t>(text.size());
    if (flags) *flags = source.FlagsOf(slot);
    return ENG_OK;
  });
}

ENGSTATUS EngItemGetModified(ENGHANDLE slate, BLOCKID item, TIMEDATE* modified) {
  if (!modified) return ENG_ERR_ARGUMENT;
  return WithItem(slate, item, [&](Slate& source, Slate::Slot slot) -> ENGSTATUS {
    *modified = source.ModifiedOf(slot);
    return ENG_OK;
  });
}

ENGSTATUS EngItemAppend(ENGHANDLE slate, uint16_t flags, const ENGCHAR* name, uint16_t name_length, uint16_t type,
                        const void* data, uint32_t size, BLOCKID* item, BLOCKID* value) {
  if (!data && size != 0) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& target) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const Bytes bytes(static_cast<const uint8_t*>(data), size);
    const ENGSTATUS status = target.Append(flags, Text(name, name_length), type, bytes, &slot);
    if (status != ENG_OK) return status;
    if (item) *item = target.IdOf(slot);
    if (value) *value = target.PlaceOf(slot);
    return ENG_OK;
  });
}

ENGSTATUS EngItemAppendBlock(ENGHANDLE slate, uint16_t flags, const ENGCHAR* name, uint16_t name_length,
                             ENGHANDLE memory, uint32_t size, BLOCKID* item) {
  return WithSlate(slate, [&](Slate& target) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const ENGSTATUS status = target.AppendBlock(flags, Text(name, name_length), memory, size, &slot);
    if (status == ENG_OK && item) *item = target.IdOf(slot);
    return status;
  });
}

ENGSTATUS EngItemReplaceBlock(ENGHANDLE slate, BLOCKID item, ENGHANDLE memory, uint32_t size) {
  return WithItem(slate, item,
                  [&](Slate& target, Slate::Slot slot) { return target.ReplaceBlock(slot, memory, size); });
}

ENGSTATUS EngItemReallocate(ENGHANDLE slate, BLOCKID item, BLOCKID* value, uint32_t new_size) {
  return WithItem(slate, item, [&](Slate& target, Slate::Slot slot) -> ENGSTATUS {
    const ENGSTATUS status = target.Reallocate(slot, new_size);
    if (status == ENG_OK && value) *value = target.PlaceOf(slot);
    return status;
  });
}

ENGSTATUS EngItemTouch(ENGHANDLE slate, BLOCKID item) {
  return WithItem(slate, item, [&](Slate& target, Slate::Slot slot) -> ENGSTATUS {
    target.Touch(slot);
    return ENG_OK;
  });
}

ENGSTATUS EngItemSetFlags(ENGHANDLE slate, BLOCKID item, uint16_t flags) {
  return WithItem(slate, item, [&](Slate& target, Slate::Slot slot) -> ENGSTATUS {
    target.SetItemFlags(slot, flags);
    return ENG_OK;
  });
}

ENGSTATUS EngItemDelete(ENGHANDLE slate, BLOCKID item) {
  return WithItem(slate, item, [](Slate& target, Slate::Slot slot) { return target.Delete(slot); });
}

ENGSTATUS EngItemDeleteByName(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length) {
  return WithSlate(slate, [&](Slate& target) { return target.DeleteByName(Text(name, name_length)); });
}

ENGSTATUS EngItemRename(ENGHANDLE slate, BLOCKID item, const ENGCHAR* name, uint16_t name_length) {
  return WithItem(slate, item,
                  [&](Slate& target, Slate::Slot slot) { return target.Rename(slot, Text(name, name_length)); });
}

int EngItemGetNumber(ENGHANDLE slate, const ENGCHAR* name, double* number) {
  if (!number) return 0;
  return GuardValue(0, [&] {
    return WithData(slate, name, [number](uint16_t type, Bytes data) {
      if (type != kTypeNumber && type != kTypeNumberRange) return false;
      qcore::WireReader reader(data);
      if (type == kTypeNumberRange && (reader.Take<uint16_t>() == 0 || !reader.Skip(sizeof(uint16_t)))) return false;
      const auto bits = reader.Take<uint64_t>();
      if (reader.good()) *number = std::bit_cast<double>(bits);
      return reader.good();
    });
  });
}

uint16_t EngItemGetText(ENGHANDLE slate, const ENGCHAR* name, ENGCHAR* buffer, uint16_t size) {
  return EngItemGetTextAtIndex(slate, name, 0, buffer, size);
}

uint16_t EngItemGetTextAtIndex(ENGHANDLE slate, const ENGCHAR* name, uint16_t index, ENGCHAR* buffer, uint16_t size) {
  if (!buffer || size == 0) return 0;
  buffer[0] = 0;
  return GuardValue(uint16_t{0}, [&] {
    uint16_t length = 0;
    WithData(slate, name, [&](uint16_t type, Bytes data) {
      std::string_view text;
      if (!TextEntry(type, data, index, &text)) return false;
      length = qcore::settings::CopyText(text, reinterpret_cast<char*>(buffer), size);
      return true;
    });
    return length;
  });
}

int EngItemIsPresent(ENGHANDLE slate, const ENGCHAR* name, uint16_t name_length) {
  return GuardValue(0, [&] {
    Slate* source = Slate::Find(slate);
    Slate::Slot slot = 0;
    return source && source->FindItem(Text(name, name_length), &slot) == ENG_OK ? 1 : 0;
  });
}

ENGSTATUS EngItemSetText(ENGHANDLE slate, const ENGCHAR* name, const ENGCHAR* text, uint16_t limit) {
  return WithSlate(slate, [&](Slate& target) { return target.SetText(Text(name), Text(text), limit); });
}
