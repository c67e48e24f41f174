#include "qcore/fulltext/document.h"

#include "qcore/slates/readers.h"
#include "qcore/store/wire.h"
#include "qcore/text/composite.h"
#include "qcore/text/textlist.h"

namespace qcore {

namespace {

constexpr std::uint16_t kTypeComposite = 0x0001;
constexpr std::uint16_t kTypeText = 0x0500;

bool IsCovered(std::uint16_t type, std::string_view name) {
  const bool own = !name.empty() && name.front() == '$';
  return !own && (type == kTypeText || type == text::kTextListType || type == kTypeComposite);
}

void GiveStretches(std::string_view name, Bytes value, const StretchReader& reader) {
  const std::uint16_t type = value.size() >= kSmallestValue ? LoadLittle<std::uint16_t>(value.data()) : 0;
  const Bytes data = value.subspan(type == 0 ? value.size() : kSmallestValue);
  if (type == kTypeText) reader(name, {reinterpret_cast<const char*>(data.data()), data.size()});
  if (type == text::kTextListType) {
    const std::optional<text::Entries> entries = text::ReadList(value, text::Prefix::kType);
    for (std::string_view entry : entries.value_or(text::Entries())) reader(name, entry);
  }
  if (type == kTypeComposite) {
    const std::optional<std::string> plain = text::FromComposite(data, "\n", 0);
    if (plain) reader(name, *plain);
  }
}

}  // namespace

ENGSTATUS ReadStretches(Database& database, std::uint32_t id, Bytes packed, const StretchReader& reader,
                        bool* guarded) {
  const NamesList nobody{std::string_view()};
  ReadersCheck check(nobody);
  PackedReader items;
  ENGSTATUS status = items.Start(packed, id);
  std::vector<std::uint8_t> large;
  for (std::uint32_t i = 0; status == ENG_OK && i < items.count(); ++i) {
    PackedItem item;
    status = items.Next(&item);
    const ItemName* name = nullptr;
    if (status == ENG_OK) status = database.names().Find(database.store(), item.name, &name);
    if (status != ENG_OK) break;
    if (!name) return ENG_ERR_ITEM_DAMAGED;
    const bool covered = IsCovered(item.type, name->text);
    if (!covered && !ReadersCheck::Wants(item.flags, name->text)) continue;
    if (item.aside != 0) {
      large.resize(item.size);
      status = database.store().ReadValue(item.aside, item.size, large.data());
      if (status != ENG_OK) break;
      item.value = large;
    }
    check.Item(item.flags, name->text, item.value);
    if (covered) GiveStretches(name->text, item.value, reader);
  }
  *guarded = check.restricted();
  return status;
}

}  // namespace qcore
