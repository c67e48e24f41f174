#include "qcore/slates/search.h"

#include <algorithm>
#include <set>

#include "qcore/idtables/idtable.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/slate.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::uint32_t kDeletedBit = 0x80000000u;
constexpr std::string_view kTitleName = "$TITLE";
constexpr std::uint16_t kTypeText = 0x0500;
constexpr std::uint16_t kTypeTextList = 0x0501;
constexpr std::uint16_t kClassForm = 0x0004;
constexpr std::uint16_t kClassView = 0x0008;

bool IsSynonym(std::string_view titles, std::string_view name) {
  while (true) {
    const std::size_t bar = titles.find('|');
    if (titles.substr(0, bar) == name) return true;
    if (bar == std::string_view::npos) return false;
    titles.remove_prefix(bar + 1);
  }
}

// A text is one entry; each entry of a list may hold several names.
bool HasTitle(Bytes value, std::uint16_t type, std::string_view name) {
  const auto text = [](const std::uint8_t* at, std::size_t size) {
    return std::string_view(reinterpret_cast<const char*>(at), size);
  };
  WireReader reader(value);
  reader.Take<std::uint16_t>();
  if (type == kTypeText) return IsSynonym(text(value.data() + kSmallestValue, value.size() - kSmallestValue), name);
  const std::uint16_t count = reader.Take<std::uint16_t>();
  const std::uint8_t* lengths = reader.Skip(std::size_t{count} * 2);
  for (std::uint16_t i = 0; lengths && i < count; ++i) {
    const std::uint16_t length = LoadLittle<std::uint16_t>(lengths + 2 * i);
    const std::uint8_t* entry = reader.Skip(length);
    if (entry && IsSynonym(text(entry, length), name)) return true;
  }
  return false;
}

}  // namespace

namespace {

ENGSTATUS ListFeed(Database& database, std::uint16_t mask, const TIMEDATE* since, DeletionStubs deleted,
                   TIMEDATE* until, std::vector<std::uint32_t>* ids) {
  const auto classes = static_cast<std::uint16_t>(mask & ~kDefaultDesign);
  const std::lock_guard lock(database.mutex());
  Store& store = database.store();
  ENGSTATUS status = until ? store.SearchHorizon(until) : ENGSTATUS{ENG_OK};
  if (status == ENG_OK) {
    status = store.ReadFeed(since, [&](const FeedEntry& entry) {
      if ((entry.slate_class & classes) == 0) return;
      if (!entry.deleted) ids->push_back(entry.id);
      if (entry.deleted && deleted == DeletionStubs::kListed) ids->push_back(entry.id | kDeletedBit);
    });
  }
  std::sort(ids->begin(), ids->end());
  return status;
}

}  // namespace

ENGSTATUS ListClass(Database& database, std::uint16_t mask, const TIMEDATE* since, TIMEDATE* until,
                    std::vector<std::uint32_t>* ids) {
  return ListFeed(database, mask, since, DeletionStubs::kLeftOut, until, ids);
}

ENGSTATUS SearchClass(Database& database, std::uint16_t mask, const TIMEDATE* since, DeletionStubs deleted,
                      TIMEDATE* until, ENGHANDLE* table) {
  std::vector<std::uint32_t> ids;
  const ENGSTATUS status = ListFeed(database, mask, since, deleted, until, &ids);
  return status == ENG_OK ? idtable::Make(ids, table) : status;
}

ENGSTATUS KeepReadable(Database& database, ENGHANDLE table) {
  std::vector<std::uint32_t> ids;
  ENGSTATUS status = idtable::ForEach(table, [&ids](std::uint32_t id) { ids.push_back(id); });
  if (status != ENG_OK) return status;
  {
    const std::lock_guard lock(database.mutex());
    status = KeepReadable(database, CurrentNames(), &ids);
  }
  bool changed = false;
  return status == ENG_OK ? idtable::Assign(table, ids, &changed) : status;
}

ENGSTATUS FindSpecialSlate(Database& database, std::uint16_t selector, std::uint32_t* id) {
  const auto slate_class = static_cast<std::uint16_t>(selector & ~kDefaultDesign);
  std::vector<FeedEntry> entries;
  {
    const std::lock_guard lock(database.mutex());
    const ENGSTATUS status = database.store().FindDesign(slate_class, &entries);
    if (status != ENG_OK) return status;
  }
  const bool one_of_many = slate_class == kClassForm || slate_class == kClassView;
  std::erase_if(entries, [&](const FeedEntry& entry) {
    return entry.deleted || (one_of_many && (entry.slate_class & kDefaultDesign) == 0);
  });
  if (entries.empty()) return ENG_ERR_NO_SPECIAL_SLATE;
  const auto marked = std::find_if(entries.begin(), entries.end(),
                                   [](const FeedEntry& entry) { return (entry.slate_class & kDefaultDesign) != 0; });
  *id = marked != entries.end() ? marked->id : entries.front().id;
  return ENG_OK;
}

ENGSTATUS FindDesign(const std::shared_ptr<Database>& database, std::uint16_t slate_class, std::string_view name,
                     std::uint32_t* id) {
  std::vector<FeedEntry> entries;
  {
    const std::lock_guard lock(database->mutex());
    const auto mask = static_cast<std::uint16_t>(slate_class & ~kDefaultDesign);
    const ENGSTATUS status = database->store().FindDesign(mask, &entries);
    if (status != ENG_OK) return status;
  }
  for (const FeedEntry& entry : entries) {
    if (entry.deleted) continue;
    bool found = false;
    const ENGSTATUS status = ReadValueOf(database, entry.id, kTitleName, [&](Bytes value, std::uint16_t type) {
      found = (type == kTypeText || type == kTypeTextList) && HasTitle(value, type, name);
    });
    // One deleted since the list was read is none.
    if (status != ENG_OK && status != ENG_ERR_NO_ITEM && status != ENG_ERR_SLATE_DELETED) return status;
    if (!found || !IsReadable(*database, entry.id)) continue;
    *id = entry.id;
    return ENG_OK;
  }
  return ENG_ERR_NO_DESIGN_ELEMENT;
}

namespace {

ENGSTATUS CheckSlates(Database& database, std::set<Store::ValueId>* values, std::string* report) {
  std::vector<FeedEntry> entries;
  ENGSTATUS status =
      database.store().ReadFeed(nullptr, [&entries](const FeedEntry& entry) { entries.push_back(entry); });
  SlateHeader header;
  for (std::size_t i = 0; status == ENG_OK && i < entries.size(); ++i) {
    const std::uint32_t id = entries[i].id;
    status = entries[i].deleted ? database.store().ReadHeader(id, &header) : CheckSlate(database, id, values);
    if (status != ENG_OK) *report = "slate " + std::to_string(id);
  }
  return status == ENG_ERR_ITEM_DAMAGED ? ENGSTATUS{ENG_ERR_DB_DAMAGED} : status;
}

}  // namespace

// All of it sees one state, whatever others save meanwhile.
namespace {

ENGSTATUS NoteReserved(Database& database, std::string* report) {
  std::vector<std::uint32_t> objects;
  ENGSTATUS status = database.store().FindObjects(0, &objects);
  std::uint64_t bytes = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; status == ENG_OK && i < objects.size(); ++i) {
    if (database.HasReserved(objects[i])) continue;
    ObjectInfo info{};
    status = database.store().GetObject(objects[i], &info);
    bytes += info.size;
    ++count;
  }
  if (status == ENG_OK && count > 0) {
    *report = std::to_string(count) + " objects of " + std::to_string(bytes) + " bytes belong to no slate";
  }
  return status;
}

}  // namespace

ENGSTATUS CheckDatabase(Database& database, std::string* report) {
  const std::lock_guard lock(database.mutex());
  Store& store = database.store();
  ENGSTATUS status = store.BeginRead();
  if (status != ENG_OK) return status;
  std::set<Store::ValueId> values;
  status = store.Check(report);
  if (status == ENG_OK) status = CheckSlates(database, &values, report);
  if (status == ENG_OK) status = store.CheckOwners(values, report);
  if (status == ENG_OK) status = NoteReserved(database, report);
  store.EndRead();
  return status;
}

}  // namespace qcore
