// Items of an open slate.
#include <algorithm>
#include <bit>

#include "qcore/memory/memory.h"
#include "qcore/slates/slate.h"
#include "qcore/store/moment.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

// Blocks keep room for their 32-bit size.
constexpr std::size_t kLargestValue = 0xFFFFFFF0u;

// A block that no item has yet.
struct FreshBlock {
  FreshBlock() = default;
  FreshBlock(const FreshBlock&) = delete;
  FreshBlock& operator=(const FreshBlock&) = delete;
  ~FreshBlock() {
    if (block != 0) memory::Release(Kind::kMemory, block);
  }
  ENGHANDLE block = 0;
};

}  // namespace

bool IsItemName(std::string_view name) {
  return !name.empty() && name.size() <= UINT16_MAX && name.find('\0') == std::string_view::npos;
}

ENGSTATUS Slate::SlotOf(BLOCKID item, Slot* slot) const {
  if (item.Pool != handle_ || item.Block >= items_.size() || !items_[item.Block].live) return ENG_ERR_NO_ITEM;
  *slot = item.Block;
  return ENG_OK;
}

void Slate::ManyNames::Reserve(std::size_t count) {
  hashes.clear();
  hashes.reserve(2 * count);
  bits.assign(std::bit_ceil(2 * count * kBitsEach / 64), 0);
}

const Slate::ManyNames& Slate::Many() const {
  if (many_.hashes.size() != order_.size()) {
    many_.Reserve(order_.size());
    for (const Slot slot : order_) many_.Add(items_[slot].name->folded_hash);
  }
  return many_;
}

// The place of an item whose name may be the one, or the number of items.
std::size_t Slate::NextOfHash(std::size_t first, std::uint32_t hash) const {
  constexpr std::size_t kFew = 24;
  constexpr std::size_t kRow = 16;
  std::size_t i = first;
  if (order_.size() <= kFew) {
    while (i < order_.size() && items_[order_[i]].name->folded_hash != hash) ++i;
    return i;
  }
  const ManyNames& many = Many();
  if (!many.MayHave(hash)) return order_.size();
  const std::vector<std::uint32_t>& hashes = many.hashes;
  for (; i + kRow <= hashes.size(); i += kRow) {
    unsigned equal = 0;
    for (std::size_t k = 0; k < kRow; ++k) equal |= static_cast<unsigned>(hashes[i + k] == hash);
    if (equal != 0) break;
  }
  while (i < hashes.size() && hashes[i] != hash) ++i;
  return i;
}

ENGSTATUS Slate::Search(std::size_t first, std::uint32_t hash, std::string_view name, Slot* slot) const {
  if ((names_there_ & NameBit(hash)) == 0) return ENG_ERR_NO_ITEM;
  for (std::size_t i = NextOfHash(first, hash); i < order_.size(); i = NextOfHash(i + 1, hash)) {
    if (!SameName(items_[order_[i]].name->text, name)) continue;
    *slot = order_[i];
    return ENG_OK;
  }
  return ENG_ERR_NO_ITEM;
}

ENGSTATUS Slate::FindItem(std::string_view name, Slot* slot) const { return Search(0, FoldedHash(name), name, slot); }

ENGSTATUS Slate::FindNextItem(Slot previous, std::string_view name, Slot* slot) const {
  const auto place = std::find(order_.begin(), order_.end(), previous);
  if (place == order_.end()) return ENG_ERR_NO_ITEM;
  return Search(static_cast<std::size_t>(place - order_.begin()) + 1, FoldedHash(name), name, slot);
}

ENGSTATUS Slate::ItemAt(std::uint32_t index, Slot* slot) const {
  if (index >= order_.size()) return ENG_ERR_NO_ITEM;
  *slot = order_[index];
  return ENG_OK;
}

TIMEDATE Slate::ModifiedOf(Slot slot) const { return items_[slot].stored ? items_[slot].modified : Now(); }

ENGSTATUS Slate::GetValue(Slot slot, Value* value) {
  Item& item = items_[slot];
  const ENGSTATUS status = Materialise(item);
  if (status == ENG_OK) *value = {{item.pool, item.offset}, item.size, item.type};
  return status;
}

ENGSTATUS Slate::GetBytes(Slot slot, Bytes* bytes) {
  Item& item = items_[slot];
  const ENGSTATUS status = Materialise(item);
  if (status == ENG_OK) *bytes = BytesOf(item);
  return status;
}

ENGSTATUS Slate::Materialise(Item& item) {
  if (item.pool != 0) return ENG_OK;
  const std::lock_guard lock(database_->mutex());
  return MaterialiseLocked(item);
}

ENGSTATUS Slate::MaterialiseLocked(Item& item) {
  if (item.pool != 0) return ENG_OK;
  ENGHANDLE pool = 0;
  ENGSTATUS status = memory::Allocate(Kind::kMemory, item.size, memory::Fill::kNone, &pool);
  if (status != ENG_OK) return status;
  {
    const memory::LockedBlock target(pool);
    if (item.aside != 0) {
      status = database_->store().ReadValue(item.aside, item.size, target.bytes());
      if (status == ENG_OK && LoadLittle<std::uint16_t>(target.bytes()) != item.type) status = ENG_ERR_ITEM_DAMAGED;
    } else {
      const Bytes bytes = BytesOf(item);
      if (bytes.empty()) status = ENG_ERR_ITEM_DAMAGED;
      std::copy(bytes.begin(), bytes.end(), target.bytes());
    }
  }
  if (status != ENG_OK) {
    memory::Release(Kind::kMemory, pool);
    return status;
  }
  item.pool = pool;
  item.offset = 0;
  item.own_block = true;
  return ENG_OK;
}

bool Slate::IsLocked(const Item& item) const {
  if (!item.own_block) return false;
  const HandleTable::Slot* slot = handle_table.FindSlot(Kind::kMemory, item.pool);
  return slot && slot->Pins() > 0;
}

void Slate::ReleaseValue(Item& item) {
  if (item.own_block) memory::Release(Kind::kMemory, item.pool);
  item.own_block = false;
  item.pool = 0;
}

// Places of deleted items are used again only when no new one is left, so that an old item ID stays stale for long.
ENGSTATUS Slate::TakeSlot(Slot* slot) {
  if (items_.size() < kMostItems) {
    if (items_.empty()) items_.reserve(16);
    *slot = static_cast<Slot>(items_.size());
    items_.emplace_back();
    return ENG_OK;
  }
  const auto place = std::find_if(items_.begin(), items_.end(), [](const Item& item) { return !item.live; });
  if (place == items_.end()) return ENG_ERR_TOO_MANY_HANDLES;
  *place = Item();
  *slot = static_cast<Slot>(place - items_.begin());
  return ENG_OK;
}

ENGSTATUS Slate::AddItem(std::uint16_t flags, std::string_view name, const NewValue& value, Slot* slot) {
  ForgetSetAside();
  const ItemName* interned = database_->names().Intern(name);
  if (order_.size() == order_.capacity()) order_.reserve(std::max<std::size_t>(16, 2 * order_.size()));
  const ENGSTATUS status = TakeSlot(slot);
  if (status != ENG_OK) return status;
  Item& item = items_[*slot];
  item.name = interned;
  names_there_ |= NameBit(interned->folded_hash);
  item.pool = value.pool;
  item.offset = value.offset;
  item.size = value.size;
  item.flags = flags;
  item.type = value.type;
  item.own_block = value.own_block;
  item.changed = true;
  item.touched = true;
  if (many_.hashes.size() == order_.size()) {
    // As many as there are items, and of other ones, would pass for these.
    many_.IsFull() ? many_.Clear() : many_.Add(interned->folded_hash);
  }
  order_.push_back(*slot);
  modified_ = true;
  return ENG_OK;
}

ENGSTATUS Slate::Append(std::uint16_t flags, std::string_view name, std::uint16_t type, Bytes data, Slot* slot) {
  if (!IsItemName(name)) return ENG_ERR_ITEM_NAME;
  if (data.size() > kLargestValue) return ENG_ERR_ITEM_SIZE;
  NewValue value{.size = static_cast<std::uint32_t>(data.size() + kSmallestValue), .type = type};
  FreshBlock fresh;
  std::uint8_t* bytes = room_.Take(value.size, &value.pool, &value.offset);
  if (!bytes) {
    const ENGSTATUS status = memory::Allocate(Kind::kMemory, value.size, memory::Fill::kNone, &fresh.block);
    if (status != ENG_OK) return status;
    value.pool = fresh.block;
    value.own_block = true;
    bytes = memory::BytesOf(value.pool).data();
  }
  StoreLittle(bytes, type);
  std::copy(data.begin(), data.end(), bytes + kSmallestValue);
  const ENGSTATUS status = AddItem(flags, name, value, slot);
  if (status == ENG_OK) fresh.block = 0;
  return status;
}

namespace {

ENGSTATUS CheckBlock(ENGHANDLE memory, std::uint32_t size) {
  if (HandleTable::KindOf(memory) != Kind::kMemory) return ENG_ERR_INVALID_HANDLE;
  std::uint32_t present = 0;
  const ENGSTATUS status = memory::Size(memory, &present);
  if (status != ENG_OK) return status;
  return size >= kSmallestValue && size <= present ? ENG_OK : ENG_ERR_ITEM_SIZE;
}

}  // namespace

ENGSTATUS Slate::AppendBlock(std::uint16_t flags, std::string_view name, ENGHANDLE memory, std::uint32_t size,
                             Slot* slot) {
  if (!IsItemName(name)) return ENG_ERR_ITEM_NAME;
  const ENGSTATUS status = CheckBlock(memory, size);
  if (status != ENG_OK) return status;
  const auto type = LoadLittle<std::uint16_t>(memory::BytesOf(memory).data());
  return AddItem(flags, name, {.pool = memory, .size = size, .type = type, .own_block = true}, slot);
}

ENGSTATUS Slate::ReplaceBlock(Slot slot, ENGHANDLE memory, std::uint32_t size) {
  const ENGSTATUS status = CheckBlock(memory, size);
  if (status != ENG_OK) return status;
  Item& item = items_[slot];
  const bool same = item.own_block && item.pool == memory;
  if (!same) {
    if (IsLocked(item)) return ENG_ERR_MEMORY_LOCKED;
    ReleaseValue(item);
  }
  item.pool = memory;
  item.offset = 0;
  item.own_block = true;
  item.size = size;
  Touch(slot);
  return ENG_OK;
}

ENGSTATUS Slate::Reallocate(Slot slot, std::uint32_t size) {
  if (size < kSmallestValue || size > kLargestValue) return ENG_ERR_ITEM_SIZE;
  Item& item = items_[slot];
  ENGSTATUS status = item.pool != 0 ? ENGSTATUS{ENG_OK} : Materialise(item);
  if (status != ENG_OK) return status;
  const Bytes old = BytesOf(item);
  if (old.empty()) return ENG_ERR_ITEM_DAMAGED;
  if (item.own_block) {
    status = memory::Resize(Kind::kMemory, item.pool, size);
  } else if (!room_.Holds(item.pool) || !room_.Resize(item.pool, item.offset, item.size, size)) {
    status = MoveToOwnBlock(item, old.first(std::min(size, item.size)), size);
  }
  if (status != ENG_OK) return status;
  if (size > item.size)
    std::ranges::fill(memory::BytesOf(item.pool).subspan(item.offset + item.size, size - item.size), std::uint8_t{0});
  item.size = size;
  item.touched = true;
  item.changed = true;
  modified_ = true;
  return ENG_OK;
}

ENGSTATUS Slate::MoveToOwnBlock(Item& item, Bytes bytes, std::uint32_t size) {
  ENGHANDLE pool = 0;
  const ENGSTATUS status = memory::Allocate(Kind::kMemory, size, memory::Fill::kNone, &pool);
  if (status != ENG_OK) return status;
  std::copy(bytes.begin(), bytes.end(), memory::BytesOf(pool).data());
  item.pool = pool;
  item.offset = 0;
  item.own_block = true;
  return ENG_OK;
}

void Slate::Touch(Slot slot) {
  Item& item = items_[slot];
  item.touched = true;
  item.changed = true;
  modified_ = true;
  // The type word may be what was changed in place.
  const Bytes bytes = item.pool != 0 ? BytesOf(item) : Bytes();
  if (!bytes.empty()) item.type = LoadLittle<std::uint16_t>(bytes.data());
}

void Slate::SetItemFlags(Slot slot, std::uint16_t flags) {
  if (items_[slot].flags == flags) return;
  items_[slot].flags = flags;
  items_[slot].changed = true;
  modified_ = true;
}

void Slate::Drop(Slot slot) {
  Item& item = items_[slot];
  if (item.aside != 0) dropped_.push_back(item.aside);
  ReleaseValue(item);
  item.live = false;
  item.aside = 0;
  // What was added last goes first more often than not.
  const auto place = std::find(order_.rbegin(), order_.rend(), slot).base() - 1;
  if (many_.hashes.size() == order_.size()) many_.hashes.erase(many_.hashes.begin() + (place - order_.begin()));
  order_.erase(place);
  modified_ = true;
}

ENGSTATUS Slate::Delete(Slot slot) {
  if (IsLocked(items_[slot])) return ENG_ERR_MEMORY_LOCKED;
  Drop(slot);
  return ENG_OK;
}

ENGSTATUS Slate::DeleteByName(std::string_view name) {
  std::vector<Slot> found;
  for (Slot slot : order_) {
    if (!SameName(items_[slot].name->text, name)) continue;
    if (IsLocked(items_[slot])) return ENG_ERR_MEMORY_LOCKED;
    found.push_back(slot);
  }
  for (Slot slot : found) Drop(slot);
  return found.empty() ? ENG_ERR_NO_ITEM : ENG_OK;
}

bool Slate::HasLocked(std::string_view name) const {
  return std::ranges::any_of(
      order_, [&](Slot slot) { return IsLocked(items_[slot]) && SameName(items_[slot].name->text, name); });
}

ENGSTATUS Slate::Rename(Slot slot, std::string_view name) {
  if (!IsItemName(name)) return ENG_ERR_ITEM_NAME;
  for (Slot other : order_) {
    if (other != slot && SameName(items_[other].name->text, name)) return ENG_ERR_ITEM_EXISTS;
  }
  ForgetSetAside();
  items_[slot].name = database_->names().Intern(name);
  many_.Clear();
  names_there_ |= NameBit(items_[slot].name->folded_hash);
  items_[slot].changed = true;
  modified_ = true;
  return ENG_OK;
}

ENGSTATUS Slate::SetText(std::string_view name, std::string_view text, std::size_t limit) {
  constexpr std::uint16_t kTypeText = 0x0500;
  if (text.size() > limit) {
    // Not through a character: bytes 10xxxxxx go on with one.
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
    text = text.substr(0, limit);
  }
  std::vector<Slot> old;
  for (Slot slot : order_) {
    if (!SameName(items_[slot].name->text, name)) continue;
    if (IsLocked(items_[slot])) return ENG_ERR_MEMORY_LOCKED;
    old.push_back(slot);
  }
  Slot made = 0;
  const Bytes data(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  const ENGSTATUS status = Append(ENG_ITEM_SUMMARY, name, kTypeText, data, &made);
  if (status != ENG_OK) return status;
  for (Slot slot : old) Drop(slot);
  return ENG_OK;
}

ENGSTATUS ReadValueOf(const std::shared_ptr<Database>& database, std::uint32_t id, std::string_view name,
                      const std::function<void(Bytes, std::uint16_t)>& reader) {
  Slate slate(database);
  ENGSTATUS status = ENG_OK;
  {
    const std::lock_guard lock(database->mutex());
    status = database->store().ReadSlate(
        id, [&slate](const SlateHeader& header, Bytes packed) { return slate.Load(header, packed); });
  }
  Slate::Slot slot = 0;
  Slate::Value value{};
  if (status == ENG_OK) status = slate.FindItem(name, &slot);
  if (status == ENG_OK) status = slate.GetValue(slot, &value);
  if (status == ENG_OK) reader(slate.BytesOf(slate.items_[slot]), value.type);
  return status;
}

ENGSTATUS CheckSlate(Database& database, std::uint32_t id, std::set<Store::ValueId>* values) {
  std::vector<PackedItem> aside;
  ENGSTATUS status = database.store().ReadSlate(id, [&aside](const SlateHeader& header, Bytes packed) {
    PackedReader reader;
    ENGSTATUS read = reader.Start(packed, header.id);
    for (std::uint32_t i = 0; read == ENG_OK && i < reader.count(); ++i) {
      PackedItem item;
      read = reader.Next(&item);
      if (read == ENG_OK && item.aside != 0) aside.push_back(item);
    }
    return read;
  });
  std::vector<std::uint8_t> value;
  for (std::size_t i = 0; status == ENG_OK && i < aside.size(); ++i) {
    value.resize(aside[i].size);
    status = database.store().ReadValue(aside[i].aside, aside[i].size, value.data());
    const bool owned_twice = !values->insert(aside[i].aside).second;
    if (status == ENG_ERR_SLATE_CONFLICT || (status == ENG_OK && owned_twice)) status = ENG_ERR_DB_DAMAGED;
  }
  return status;
}

}  // namespace qcore
