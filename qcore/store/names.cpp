#include "qcore/store/names.h"

#include "qcore/handles/sole_thread.h"

namespace qcore {

namespace {

unsigned char Fold(char byte) {
  const auto c = static_cast<unsigned char>(byte);
  return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c;
}

}  // namespace

std::uint32_t FoldedHash(std::string_view text) {
  std::uint32_t hash = 2166136261u;
  for (char byte : text) hash = (hash ^ Fold(byte)) * 16777619u;
  return hash;
}

bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (Fold(a[i]) != Fold(b[i])) return false;
  }
  return true;
}

ItemName* NameTable::InternForChange(std::string_view text) {
  const std::unique_lock lock = LockIfThreaded(mutex_);
  const auto found = by_text_.find(text);
  if (found != by_text_.end()) return found->second;
  ItemName& name = names_.emplace_back(ItemName{std::string(text), FoldedHash(text)});
  by_text_.emplace(name.text, &name);
  return &name;
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
