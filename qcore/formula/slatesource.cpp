#include "qcore/formula/slatesource.h"

#include <cstdio>
#include <utility>

#include "qcore/store/info.h"
#include "qcore/store/names.h"
#include "qcore/store/properties.h"

namespace qcore::formula {

namespace {

std::uint16_t WordOf(const std::vector<std::uint8_t>& bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

}  // namespace

// The block stays where it is as long as the slate is not changed.
bool SlateSource::ReadItem(Slate::Slot slot, ItemValue* item) {
  Bytes value;
  if (slate_.GetBytes(slot, &value) != ENG_OK || value.size() < kSmallestValue) return false;
  *item = {static_cast<std::uint16_t>(value[0] | value[1] << 8), slate_.FlagsOf(slot), value.subspan(kSmallestValue)};
  return true;
}

bool SlateSource::FindItem(std::uint32_t index, std::string_view name, ItemValue* item) {
  for (const Assigned& assigned : assigned_) {
    if (!SameName(assigned.name, name)) continue;
    if (assigned.value.empty()) return false;
    *item = {WordOf(assigned.value), 0, Bytes(assigned.value).subspan(2)};
    return true;
  }
  Slate::Slot slot = 0;
  const std::uint32_t hash = index < hashes_.size() ? hashes_[index] : FoldedHash(name);
  return slate_.FindHashed(hash, name, &slot) == ENG_OK && ReadItem(slot, item);
}

void SlateSource::ForEachItem(const std::function<void(std::string_view, const ItemValue&)>& take) {
  Slate::Slot slot = 0;
  ItemValue item;
  for (std::uint32_t i = 0; slate_.ItemAt(i, &slot) == ENG_OK; ++i) {
    if (ReadItem(slot, &item)) take(slate_.NameOf(slot), item);
  }
}

const DocumentFacts* SlateSource::Document() {
  if (document_) return &*document_;
  const SlateHeader& header = slate_.header();
  document_ = DocumentFacts{header.id,       header.origin, header.origin.Slate, header.modified,
                            header.accessed, header.added,  header.slate_class,  header.parent};
  return &*document_;
}

std::uint32_t SlateSource::Size() {
  std::uint32_t size = 0;
  return slate_.GetSize(&size) == ENG_OK ? size : 0;
}

std::uint32_t SlateSource::ResponseCount() {
  std::uint32_t count = 0;
  return slate_.GetResponseCount(&count) == ENG_OK ? count : 0;
}

bool SlateSource::IsBelowSelected(bool deep) {
  return ancestors_ && ancestors_->AnySelected(slate_.header().parent, deep);
}

ENGSTATUS SlateSource::LookUp(const Lookup& lookup, const TakeValue& take) {
  return lookups_ ? lookups_->LookUp(lookup, take) : Source::LookUp(lookup, take);
}

DatabaseFacts FactsOf(Database& database) {
  DatabaseFacts facts;
  facts.path = database.path();
  std::string info;
  if (GetInfoText(database, &info) == ENG_OK) facts.title = InfoField(info, 0);
  REPLICAINFO replica{};
  if (GetReplicaInfo(database, &replica) == ENG_OK) {
    char text[20];
    std::snprintf(text, sizeof text, "%08X%08X", replica.ID.DateWord, replica.ID.TimeWord);
    facts.replica = text;
  }
  return facts;
}

const DatabaseFacts* SlateSource::Database() {
  if (!database_) database_ = FactsOf(slate_.database());
  return &*database_;
}

ENGSTATUS SlateSource::Assign(std::string_view name, Bytes value) {
  if (assignments_ == Assignments::kDropped) return ENG_OK;
  if (!IsItemName(name)) return ENG_ERR_ITEM_NAME;
  for (Assigned& assigned : assigned_) {
    if (!SameName(assigned.name, name)) continue;
    // Values that point into the former one are still in use.
    replaced_.push_back(std::exchange(assigned.value, {value.begin(), value.end()}));
    return ENG_OK;
  }
  assigned_.push_back({std::string(name), {value.begin(), value.end()}});
  return ENG_OK;
}

// All items are asked before one is changed.
ENGSTATUS SlateSource::Apply() {
  for (const Assigned& assigned : assigned_) {
    if (slate_.HasLocked(assigned.name)) return ENG_ERR_MEMORY_LOCKED;
  }
  for (const Assigned& assigned : assigned_) {
    Slate::Slot slot = 0;
    const bool present = slate_.FindItem(assigned.name, &slot) == ENG_OK;
    const std::uint16_t flags = present ? slate_.FlagsOf(slot) : std::uint16_t{ENG_ITEM_SUMMARY};
    ENGSTATUS status = present ? slate_.DeleteByName(assigned.name) : ENGSTATUS{ENG_OK};
    if (status == ENG_OK && !assigned.value.empty()) {
      const Bytes data = Bytes(assigned.value).subspan(2);
      status = slate_.Append(flags, assigned.name, WordOf(assigned.value), data, &slot);
    }
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

}  // namespace qcore::formula
