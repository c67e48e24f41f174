// Item names of one database: each text once in memory, with the number that stands for it in stored slates.
#ifndef QUILLON_QCORE_STORE_NAMES_H
#define QUILLON_QCORE_STORE_NAMES_H

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/store/store.h"

namespace qcore {

struct ItemName {
  std::string text;
  std::uint32_t folded_hash;
  std::uint32_t number = 0;  // 0 while it is not stored; guarded by the database
};

// Names compare without ASCII case.
std::uint32_t FoldedHash(std::string_view text);
bool SameName(std::string_view a, std::string_view b);

// Name objects live as long as the table. Intern is safe from any thread; all else is guarded by the database.
class NameTable {
 public:
  const ItemName* Intern(std::string_view text);
  // Null when the store does not know the number.
  [[nodiscard]] ENGSTATUS Find(Store& store, std::uint32_t number, const ItemName** name);
  // Gives the name a number within the running transaction if it has none.
  [[nodiscard]] ENGSTATUS Number(Store& store, const ItemName* name, std::uint32_t* number);
  std::size_t stored() const { return by_number_.size(); }
  // Forgets the numbers behind the first `stored`: the transaction that gave them is undone.
  void ForgetBehind(std::size_t stored);

 private:
  static constexpr std::size_t kFirstPlaces = 64;  // a power of two, as all that follow

  ItemName* InternForChange(std::string_view text);
  ItemName** PlaceOf(std::string_view text, std::uint32_t hash);
  void Spread(std::size_t count);
  [[nodiscard]] ENGSTATUS Refresh(Store& store);

  std::mutex mutex_;  // guards the two below
  std::deque<ItemName> names_;
  std::vector<ItemName*> places_ = std::vector<ItemName*>(kFirstPlaces);  // by hash; null where there is none
  std::vector<ItemName*> by_number_;
};

}  // namespace qcore

#endif
