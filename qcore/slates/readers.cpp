#include "qcore/slates/readers.h"

#include <algorithm>

#include "engine/slate.h"
#include "engine/text.h"
#include "qcore/settings/settings.h"
#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"
#include "qcore/text/fold.h"
#include "qcore/text/textlist.h"
#include "qcore/text/translate.h"

namespace qcore {

namespace {

constexpr std::string_view kReadersName = "$Readers";
constexpr std::string_view kParts[] = {"cn=", "ou=", "o=", "c="};
constexpr std::uint16_t kTypeText = 0x0500;
constexpr std::uint32_t kSlateStep = 4;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string Folded(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  text::FoldedWalk walk(text::AsText(text), ENG_COMPARE_IGNORE_CASE);
  for (std::int32_t code = walk.Next(); code != text::FoldedWalk::kEnd; code = walk.Next()) {
    text::Append(code, &folded);
  }
  return folded;
}

// Folded, every part without its "CN=" and the like.
std::string Comparable(std::string_view name) {
  const std::string folded = Folded(Trimmed(name));
  std::string result;
  for (std::string_view rest = folded; !rest.empty();) {
    const std::size_t slash = rest.find('/');
    std::string_view part = rest.substr(0, slash);
    for (std::string_view label : kParts) {
      if (!part.starts_with(label)) continue;
      part.remove_prefix(label.size());
      break;
    }
    result += part;
    if (slash == std::string_view::npos) break;
    result += '/';
    rest.remove_prefix(slash + 1);
  }
  return result;
}

}  // namespace

NamesList::NamesList(std::string_view user) {
  names_.insert("*");
  const std::string name = Comparable(user);
  if (name.empty()) return;
  for (std::size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1)) {
    names_.insert("*" + name.substr(slash));
  }
  names_.insert(name);
}

void NamesList::Add(std::string_view name) {
  std::string comparable = Comparable(name);
  if (!comparable.empty()) names_.insert(std::move(comparable));
}

bool NamesList::Has(std::string_view name) const { return names_.contains(Comparable(name)); }

std::uint64_t NamesList::Sum() const {
  std::uint64_t sum = names_.size();
  for (const std::string& name : names_) {
    const Bytes bytes(reinterpret_cast<const std::uint8_t*>(name.data()), name.size());
    sum += std::uint64_t{Checksum(bytes, 1)} << 32 | Checksum(bytes, 2);
  }
  return sum;
}

NamesList CurrentNames() {
  const std::string platform = settings::UserName();
  return NamesList(text::Translate(ENG_TRANSLATE_PLATFORM_TO_STORE, text::AsText(platform), UINT16_MAX));
}

bool IsReadersItem(std::uint16_t flags, std::string_view name) {
  return (flags & ENG_ITEM_READERS) != 0 || SameName(name, kReadersName);
}

bool ReadersCheck::Wants(std::uint16_t flags, std::string_view name) {
  return (flags & ENG_ITEM_READERS_WRITERS) != 0 || IsReadersItem(flags, name);
}

void ReadersCheck::Item(std::uint16_t flags, std::string_view name, Bytes value) {
  if (!Wants(flags, name)) return;
  const bool readers = IsReadersItem(flags, name);
  const auto take = [&](std::string_view entry) {
    entry = Trimmed(entry);
    if (entry.empty()) return;
    restricted_ = restricted_ || readers;
    named_ = named_ || names_.Has(entry);
  };
  const std::uint16_t type = value.size() >= kSmallestValue ? LoadLittle<std::uint16_t>(value.data()) : 0;
  if (type == kTypeText) {
    const Bytes text = value.subspan(kSmallestValue);
    take({reinterpret_cast<const char*>(text.data()), text.size()});
    return;
  }
  const std::optional<text::Entries> entries =
      type == text::kTextListType ? text::ReadList(text::Text(value), text::Prefix::kType) : std::nullopt;
  if (!entries) restricted_ = restricted_ || readers;
  for (std::string_view entry : entries.value_or(text::Entries())) take(entry);
}

ENGSTATUS CheckReaders(Database& database, std::uint32_t id, Bytes packed, const NamesList& names,
                       Readability* readability) {
  ReadersCheck check(names);
  PackedReader reader;
  ENGSTATUS status = reader.Start(packed, id);
  std::vector<std::uint8_t> large;
  for (std::uint32_t i = 0; status == ENG_OK && i < reader.count(); ++i) {
    PackedItem item;
    status = reader.Next(&item);
    const ItemName* name = nullptr;
    if (status == ENG_OK) status = database.names().Find(database.store(), item.name, &name);
    if (status != ENG_OK) break;
    if (!name) return ENG_ERR_ITEM_DAMAGED;
    if (!ReadersCheck::Wants(item.flags, name->text)) continue;
    if (item.aside != 0) {
      large.resize(item.size);
      status = database.store().ReadValue(item.aside, item.size, large.data());
      item.value = large;
    }
    if (status == ENG_OK) check.Item(item.flags, name->text, item.value);
  }
  *readability = {check.restricted(), check.may_read()};
  return status;
}

ENGSTATUS CheckReaders(Database& database, std::uint32_t id, const NamesList& names, Readability* readability) {
  return database.store().ReadSlate(id, [&](const SlateHeader& header, Bytes packed) {
    return CheckReaders(database, header.id, packed, names, readability);
  });
}

bool IsReadable(Database& database, std::uint32_t id) {
  const NamesList names = CurrentNames();
  const std::lock_guard lock(database.mutex());
  Readability readability{};
  return CheckReaders(database, id, names, &readability) == ENG_OK && readability.may_read;
}

bool IsLost(ENGSTATUS status) {
  return status == ENG_ERR_SLATE_DELETED || status == ENG_ERR_NO_SLATE || status == ENG_ERR_ITEM_DAMAGED ||
         status == ENG_ERR_DB_DAMAGED;
}

namespace {

// Forgets what has changed. Change numbers inside a client's transaction may be given again after it, so that nothing
// is remembered there.
ENGSTATUS RenewOpenSlates(Database& database, OpenToAll* open) {
  if (database.transaction() != 0) {
    open->slates.clear();
    return ENG_OK;
  }
  if (open->slates.empty()) return database.store().FeedEnd(&open->feed);
  return database.store().ReadFeedBehind(open->feed, [open](const NumberedEntry& change) {
    const std::size_t place = change.entry.id / kSlateStep;
    if (place < open->slates.size()) open->slates[place] = false;
    open->feed = change.feed;
  });
}

ENGSTATUS DropUnreadable(Database& database, const NamesList& names, std::vector<std::uint32_t>* ids) {
  OpenToAll& open = database.open_to_all();
  ENGSTATUS failure = RenewOpenSlates(database, &open);
  if (failure != ENG_OK) return failure;
  const bool remember = database.transaction() == 0;
  if (remember) open.slates.resize(std::max<std::size_t>(open.slates.size(), ids->back() / kSlateStep + 1));
  std::erase_if(*ids, [&](std::uint32_t id) {
    if (failure != ENG_OK || (remember && open.slates[id / kSlateStep])) return false;
    Readability readability{};
    const ENGSTATUS status = CheckReaders(database, id, names, &readability);
    if (IsLost(status)) return true;
    failure = status;
    if (remember) open.slates[id / kSlateStep] = status == ENG_OK && !readability.restricted;
    return !readability.may_read;
  });
  return failure;
}

}  // namespace

ENGSTATUS KeepReadable(Database& database, const NamesList& names, std::vector<std::uint32_t>* ids) {
  if (ids->empty()) return ENG_OK;
  const ENGSTATUS status = database.store().BeginRead();
  if (status != ENG_OK) return status;
  const ENGSTATUS kept = DropUnreadable(database, names, ids);
  database.store().EndRead();
  return kept;
}

}  // namespace qcore
