// Items of stored slates without a slate handle: for work that goes over many slates and wants a few items of each.
//
// A reader is made for the names that are wanted and used for one slate after another.
#ifndef QUILLON_QCORE_SLATES_ROWREADER_H
#define QUILLON_QCORE_SLATES_ROWREADER_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/slates/packed.h"
#include "qcore/store/database.h"

namespace qcore {

// One stored slate, as it is copied out of the store.
struct StoredRow {
  SlateHeader header;
  std::vector<std::uint8_t> packed;
};

class RowReader {
 public:
  explicit RowReader(Database& database);

  // The place of a name among those wanted; names compare without ASCII case. Before the first Take.
  std::uint32_t Want(std::string_view name);

  // The row's bytes must stay as they are until the next Take. ENG_ERR_ITEM_DAMAGED. Uses the database's names: with
  // its mutex held.
  [[nodiscard]] ENGSTATUS Take(const SlateHeader& header, Bytes packed);
  const SlateHeader& header() const { return *header_; }
  // The first item of a wanted name, null for none. A value that stands aside has been read by Value.
  const PackedItem* Item(std::uint32_t place) const { return found_[place].present ? &found_[place].item : nullptr; }
  // Whether an item says who may read or write the slate.
  bool names_readers() const { return names_readers_; }
  // The value with its type word, good until the next Take; empty when there is none or it can't be read. Takes the
  // database's mutex for one that stands aside.
  Bytes Value(std::uint32_t place);
  // Every item in order, those wanted and all others. With the mutex held.
  [[nodiscard]] ENGSTATUS ForEach(const std::function<void(std::string_view, const PackedItem&)>& visit) const;
  // A value that ForEach or Item gave; good until the next Take.
  Bytes ValueOf(const PackedItem& item);

 private:
  static constexpr std::uint16_t kUnknown = 0xFFFF;
  static constexpr std::uint16_t kNotWanted = 0xFFFE;
  struct Found {
    PackedItem item;
    bool present = false;
  };

  [[nodiscard]] ENGSTATUS PlaceOf(std::uint32_t name, std::uint16_t* place);

  Database& database_;
  std::vector<std::string> wanted_;
  std::vector<std::uint16_t> by_number_;  // name number -> place
  std::vector<Found> found_;
  const SlateHeader* header_ = nullptr;
  bool names_readers_ = false;
  Bytes packed_;
  std::vector<std::unique_ptr<std::vector<std::uint8_t>>> aside_;
  std::uint32_t readers_;  // place of $Readers, which must come last: Want needs the rest
};

}  // namespace qcore

#endif
