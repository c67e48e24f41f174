#include "qcore/store/names.h"

#include "qcore/handles/sole_thread.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

// Up to eight bytes as one word, the missing ones zero.
std::uint64_t Load(const char* text, std::size_t size) {
  const auto* at = reinterpret_cast<const std::uint8_t*>(text);
  if (size >= 8) return LoadLittle<std::uint64_t>(at);
  if (size >= 4) {
    const std::uint64_t last = LoadLittle<std::uint32_t>(at + size - 4);
    return LoadLittle<std::uint32_t>(at) | last << (8 * size - 32);
  }
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < size; ++i) word |= std::uint64_t{at[i]} << (8 * i);
  return word;
}

// Eight bytes with A to Z as a to z: a byte's top bit tells in one sum that it is at least 'A', in the other that it is
// above 'Z'.
std::uint64_t Fold(std::uint64_t word) {
  constexpr std::uint64_t kEach = 0x0101010101010101u;
  constexpr std::uint64_t kTop = 0x80 * kEach;
  const std::uint64_t low = word & ~kTop;
  const std::uint64_t upper = (low + (0x80 - 'A') * kEach) & ~(low + (0x7F - 'Z') * kEach) & ~word & kTop;
  return word | upper >> 2;
}

}  // namespace

std::uint32_t FoldedHash(std::string_view text) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
  std::uint64_t hash = text.size();
  for (std::size_t at = 0; at < text.size(); at += 8) {
    hash = (hash ^ Fold(Load(text.data() + at, text.size() - at))) * kFactor;
    hash ^= hash >> 32;
  }
  return static_cast<std::uint32_t>(hash);
}

bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t at = 0; at < a.size(); at += 8) {
    const std::size_t rest = a.size() - at;
    if (Fold(Load(a.data() + at, rest)) != Fold(Load(b.data() + at, rest))) return false;
  }
  return true;
}

// Places are taken one behind another from the hash on; half of them at least are free.
ItemName** NameTable::PlaceOf(std::string_view text, std::uint32_t hash) {
  std::size_t at = hash & (places_.size() - 1);
  while (places_[at] && (places_[at]->folded_hash != hash || places_[at]->text != text)) {
    at = (at + 1) & (places_.size() - 1);
  }
  return &places_[at];
}

void NameTable::Spread(std::size_t count) {
  std::vector<ItemName*> places(count);
  places_.swap(places);
  for (ItemName& name : names_) *PlaceOf(name.text, name.folded_hash) = &name;
}

ItemName* NameTable::InternForChange(std::string_view text) {
  const std::uint32_t hash = FoldedHash(text);
  const std::unique_lock lock = LockIfThreaded(mutex_);
  ItemName** place = PlaceOf(text, hash);
  if (*place) return *place;
  if (2 * (names_.size() + 1) > places_.size()) {
    Spread(2 * places_.size());
    place = PlaceOf(text, hash);
  }
  *place = &names_.emplace_back(ItemName{std::string(text), hash});
  return *place;
}

const ItemName* NameTable::Intern(std::string_view text) { return InternForChange(text); }

ENGSTATUS NameTable::Refresh(Store& store) {
  bool gap = false;
  const ENGSTATUS status = store.ReadNames(static_cast<std::uint32_t>(by_number_.size() + 1),
                                           [&](std::uint32_t number, std::string_view text) {
                                             gap = gap || number != by_number_.size() + 1;
                                             if (gap) return;
                                             ItemName* name = InternForChange(text);
                                             name->number = number;
                                             by_number_.push_back(name);
                                           });
  return status == ENG_OK && gap ? ENGSTATUS{ENG_ERR_DB_DAMAGED} : status;
}

ENGSTATUS NameTable::Find(Store& store, std::uint32_t number, const ItemName** name) {
  if (number > by_number_.size()) {
    const ENGSTATUS status = Refresh(store);
    if (status != ENG_OK) return status;
  }
  *name = number >= 1 && number <= by_number_.size() ? by_number_[number - 1] : nullptr;
  return ENG_OK;
}

ENGSTATUS NameTable::Number(Store& store, const ItemName* name, std::uint32_t* number) {
  if (name->number == 0) {
    // Another connection may have stored it meanwhile.
    ENGSTATUS status = Refresh(store);
    if (status != ENG_OK) return status;
    if (name->number == 0) {
      const auto next = static_cast<std::uint32_t>(by_number_.size() + 1);
      status = store.AddName(next, name->text);
      if (status != ENG_OK) return status;
      by_number_.push_back(InternForChange(name->text));
      by_number_.back()->number = next;
    }
  }
  *number = name->number;
  return ENG_OK;
}

void NameTable::ForgetBehind(std::size_t stored) {
  for (std::size_t i = stored; i < by_number_.size(); ++i) by_number_[i]->number = 0;
  if (by_number_.size() > stored) by_number_.resize(stored);
}

}  // namespace qcore
