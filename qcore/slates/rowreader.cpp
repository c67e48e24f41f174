#include "qcore/slates/rowreader.h"

#include "engine/slate.h"

namespace qcore {

namespace {

constexpr std::uint16_t kReaderFlags = ENG_ITEM_READERS | ENG_ITEM_READERS_WRITERS;

}  // namespace

RowReader::RowReader(Database& database) : database_(database), readers_(Want("$Readers")) {}

std::uint32_t RowReader::Want(std::string_view name) {
  for (std::uint32_t place = 0; place < wanted_.size(); ++place) {
    if (SameName(wanted_[place], name)) return place;
  }
  wanted_.emplace_back(name);
  found_.emplace_back();
  by_number_.clear();
  return static_cast<std::uint32_t>(wanted_.size() - 1);
}

ENGSTATUS RowReader::PlaceOf(std::uint32_t number, std::uint16_t* place) {
  if (number < by_number_.size() && by_number_[number] != kUnknown) {
    *place = by_number_[number];
    return ENG_OK;
  }
  const ItemName* name = nullptr;
  const ENGSTATUS status = database_.names().Find(database_.store(), number, &name);
  if (status != ENG_OK) return status;
  if (!name) return ENG_ERR_ITEM_DAMAGED;
  if (number >= by_number_.size()) by_number_.resize(number + 1, kUnknown);
  *place = kNotWanted;
  for (std::size_t i = 0; i < wanted_.size(); ++i) {
    if (SameName(wanted_[i], name->text)) *place = static_cast<std::uint16_t>(i);
  }
  by_number_[number] = *place;
  return ENG_OK;
}

ENGSTATUS RowReader::Take(const SlateHeader& header, Bytes packed) {
  for (Found& found : found_) found.present = false;
  aside_.clear();
  names_readers_ = false;
  header_ = &header;
  packed_ = packed;
  PackedReader reader;
  ENGSTATUS status = reader.Start(packed, header.id);
  PackedItem item;
  for (std::uint32_t i = 0; status == ENG_OK && i < reader.count(); ++i) {
    status = reader.Next(&item);
    std::uint16_t place = kNotWanted;
    if (status == ENG_OK) status = PlaceOf(item.name, &place);
    names_readers_ = names_readers_ || (item.flags & kReaderFlags) != 0 || (place != kNotWanted && place == readers_);
    if (status == ENG_OK && place != kNotWanted && !found_[place].present) found_[place] = {item, true};
  }
  return status;
}

Bytes RowReader::ValueOf(const PackedItem& item) {
  if (item.aside == 0) return item.value;
  auto value = std::make_unique<std::vector<std::uint8_t>>(item.size);
  const std::lock_guard lock(database_.mutex());
  if (database_.store().ReadValue(item.aside, item.size, value->data()) != ENG_OK) return {};
  aside_.push_back(std::move(value));
  return *aside_.back();
}

Bytes RowReader::Value(std::uint32_t place) {
  Found& found = found_[place];
  if (!found.present) return {};
  if (found.item.aside != 0) {
    found.item.value = ValueOf(found.item);
    found.item.aside = 0;
  }
  return found.item.value;
}

ENGSTATUS RowReader::ForEach(const std::function<void(std::string_view, const PackedItem&)>& visit) const {
  PackedReader reader;
  ENGSTATUS status = reader.Start(packed_, header_->id);
  PackedItem item;
  for (std::uint32_t i = 0; status == ENG_OK && i < reader.count(); ++i) {
    status = reader.Next(&item);
    const ItemName* name = nullptr;
    if (status == ENG_OK) status = database_.names().Find(database_.store(), item.name, &name);
    if (status == ENG_OK && name) visit(name->text, item);
  }
  return status;
}

}  // namespace qcore
