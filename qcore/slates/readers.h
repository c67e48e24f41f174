// Who may read a slate: the row filter of indexes, folders and searches.
//
// A slate is restricted when an item that has ENG_ITEM_READERS, or is named $Readers, holds a name. Then only those
// may read it whom such an item, or one with ENG_ITEM_READERS_WRITERS, names. Names compare without case and in their
// abbreviated form: "CN=Jane Doe/O=Acme" is "Jane Doe/Acme". A readers' item that cannot be read restricts to nobody.
#ifndef QUILLON_QCORE_SLATES_READERS_H
#define QUILLON_QCORE_SLATES_READERS_H

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "qcore/slates/packed.h"
#include "qcore/store/database.h"

namespace qcore {

// All names that a user goes by: the name itself, its hierarchical wildcards ("*/Acme") and "*". Groups and roles can
// be added. Equal lists compare equal, so that what was filtered by one can be kept for it.
class NamesList {
 public:
  explicit NamesList(std::string_view user);

  void Add(std::string_view name);
  bool Has(std::string_view name) const;
  bool operator==(const NamesList&) const = default;
  // One number for the whole list, the same whenever the names are.
  std::uint64_t Sum() const;

 private:
  std::unordered_set<std::string> names_;  // in comparable form
};

// The names of the user that the engine runs for.
NamesList CurrentNames();

bool IsReadersItem(std::uint16_t flags, std::string_view name);

// Decides over one slate; give it every item.
class ReadersCheck {
 public:
  explicit ReadersCheck(const NamesList& names) : names_(names) {}

  // Whether the item takes part, so that its value is worth fetching.
  static bool Wants(std::uint16_t flags, std::string_view name);
  // `value` starts with its type word.
  void Item(std::uint16_t flags, std::string_view name, Bytes value);
  bool restricted() const { return restricted_; }
  bool may_read() const { return !restricted_ || named_; }

 private:
  const NamesList& names_;
  bool restricted_ = false;
  bool named_ = false;
};

struct Readability {
  bool restricted;  // whether the answer depends on the names
  bool may_read;
};

// Over a stored row, with the database's mutex held. Inside Store::ReadSlate it may be called on what the reader gets.
[[nodiscard]] ENGSTATUS CheckReaders(Database& database, std::uint32_t id, Bytes packed, const NamesList& names,
                                     Readability* readability);
// The same by ID. ENG_ERR_SLATE_DELETED, ENG_ERR_NO_SLATE.
[[nodiscard]] ENGSTATUS CheckReaders(Database& database, std::uint32_t id, const NamesList& names,
                                     Readability* readability);

// Whether the engine's user may read a slate that is there; false where that can't be told. Takes the mutex.
bool IsReadable(Database& database, std::uint32_t id);

// Statuses of a slate that nobody can read: it is gone or damaged.
bool IsLost(ENGSTATUS status);
// Leaves those of `ids`, in ascending order, that exist and may be read; what is damaged goes too. With the database's
// mutex held. Slates without readers are remembered until they change, so that a list costs its reading once.
[[nodiscard]] ENGSTATUS KeepReadable(Database& database, const NamesList& names, std::vector<std::uint32_t>* ids);

}  // namespace qcore

#endif
