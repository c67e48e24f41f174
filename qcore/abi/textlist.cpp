#include "qcore/text/textlist.h"

#include "engine/status.h"
#include "engine/text.h"
#include "qcore/abi/guard.h"
#include "qcore/memory/memory.h"

namespace memory = qcore::memory;
namespace text = qcore::text;
using qcore::abi::Guard;
using text::Entries;
using text::Prefix;

namespace {

Prefix PrefixOf(int prefixed) { return prefixed ? Prefix::kType : Prefix::kNone; }

const ENGCHAR* Bytes(const void* value) { return static_cast<const ENGCHAR*>(value); }

std::string_view View(const ENGCHAR* from, uint16_t length) {
  return {reinterpret_cast<const char*>(from), from ? length : std::size_t{0}};
}

template <typename Edit>
ENGSTATUS EditGuarded(ENGHANDLE handle, int prefixed, uint16_t* size, Edit edit) {
  if (!size) return ENG_ERR_ARGUMENT;
  return Guard([&] { return text::EditList(handle, PrefixOf(prefixed), size, edit); });
}

}  // namespace

ENGSTATUS EngTextListCreate(uint16_t count, uint16_t flags, ENGHANDLE* handle, void** value, uint16_t* size) {
  if (!handle || !size) return ENG_ERR_ARGUMENT;
  *handle = 0;
  return Guard([&]() -> ENGSTATUS {
    const auto bytes = text::WriteList(Entries(count), PrefixOf(flags));
    if (!bytes) return ENG_ERR_LIST_FULL;
    const auto length = static_cast<std::uint16_t>(bytes->size());
    const ENGSTATUS status = memory::Allocate(qcore::Kind::kMemory, length, memory::Fill::kNone, handle);
    if (status != ENG_OK) return status;
    bytes->copy(reinterpret_cast<char*>(memory::LockedBlock(*handle).bytes()), length);
    if (value) *value = memory::Lock(*handle);
    *size = length;
    return ENG_OK;
  });
}

uint16_t EngTextListCount(const void* value, int prefixed) {
  return value ? text::ListCount(Bytes(value), PrefixOf(prefixed)) : 0;
}

ENGSTATUS EngTextListGetEntry(const void* value, int prefixed, uint16_t index, const ENGCHAR** entry,
                              uint16_t* length) {
  if (!value || !entry || !length) return ENG_ERR_ARGUMENT;
  const auto found = text::ListEntry(Bytes(value), PrefixOf(prefixed), index);
  if (!found) return ENG_ERR_LIST_INDEX;
  *entry = reinterpret_cast<const ENGCHAR*>(found->data());
  *length = static_cast<uint16_t>(found->size());
  return ENG_OK;
}

ENGSTATUS EngTextListSetEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index, const ENGCHAR* from,
                              uint16_t length) {
  return EditGuarded(handle, prefixed, size, [&](Entries& entries) -> ENGSTATUS {
    if (index >= entries.size()) return ENG_ERR_LIST_INDEX;
    entries[index] = View(from, length);
    return ENG_OK;
  });
}

ENGSTATUS EngTextListAddEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index, const ENGCHAR* from,
                              uint16_t length) {
  return EditGuarded(handle, prefixed, size, [&](Entries& entries) -> ENGSTATUS {
    if (index > entries.size()) return ENG_ERR_LIST_INDEX;
    entries.insert(entries.begin() + index, View(from, length));
    return ENG_OK;
  });
}

ENGSTATUS EngTextListRemoveEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index) {
  return EditGuarded(handle, prefixed, size, [&](Entries& entries) -> ENGSTATUS {
    if (index >= entries.size()) return ENG_ERR_LIST_INDEX;
    entries.erase(entries.begin() + index);
    return ENG_OK;
  });
}

ENGSTATUS EngTextListRemoveAll(ENGHANDLE handle, int prefixed, uint16_t* size) {
  return EditGuarded(handle, prefixed, size, [&](Entries& entries) -> ENGSTATUS {
    entries.clear();
    return ENG_OK;
  });
}

uint16_t EngTextListSize(const void* value, int prefixed) {
  return value ? text::ListSize(Bytes(value), PrefixOf(prefixed)) : 0;
}

ENGSTATUS EngTextListVerify(const void* value, int prefixed, uint32_t size) {
  if (!value) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    return text::IsList({Bytes(value), size}, PrefixOf(prefixed)) ? ENG_OK : ENG_ERR_LIST_DAMAGED;
  });
}
