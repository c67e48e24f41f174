#include "qcore/folders/unread.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "qcore/idtables/idtable.h"
#include "qcore/slates/readers.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::uint16_t kDocumentClass = 1;
constexpr std::uint32_t kStep = 4;
constexpr std::uint64_t kLastSlate = 0x7FFFFFF8;
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kFoldAfter = 5000;  // changes

using Ids = std::vector<std::uint32_t>;

// Runs of neighbouring IDs, each as the distance from the end of the one before and its length, in steps.
std::vector<std::uint8_t> Encode(const Ids& ids) {
  std::vector<std::uint8_t> bytes;
  WireWriter writer(&bytes);
  std::uint32_t end = 0;
  for (std::size_t i = 0; i < ids.size();) {
    std::size_t next = i + 1;
    while (next < ids.size() && ids[next] - ids[next - 1] == kStep) ++next;
    writer.PutVarint((ids[i] - end) / kStep);
    writer.PutVarint(next - i);
    end = ids[next - 1] + kStep;
    i = next;
  }
  return bytes;
}

bool Decode(Bytes bytes, Ids* ids) {
  WireReader reader(bytes);
  std::uint64_t end = 0;
  while (reader.good() && !reader.at_end()) {
    const std::uint64_t gap = reader.TakeVarint();
    const std::uint64_t length = reader.TakeVarint();
    if (gap > kLastSlate || length > kLastSlate || end + (gap + length) * kStep > kLastSlate + kStep) return false;
    end += gap * kStep;
    for (std::uint64_t i = 0; i < length; ++i, end += kStep) ids->push_back(static_cast<std::uint32_t>(end));
  }
  return reader.good();
}

Ids Without(const Ids& ids, const Ids& others) {
  Ids rest;
  std::set_difference(ids.begin(), ids.end(), others.begin(), others.end(), std::back_inserter(rest));
  return rest;
}

Ids Joined(const Ids& ids, const Ids& others) {
  Ids all;
  std::set_union(ids.begin(), ids.end(), others.begin(), others.end(), std::back_inserter(all));
  return all;
}

ENGSTATUS ListTable(ENGHANDLE table, Ids* ids) {
  return idtable::ForEach(table, [ids](std::uint32_t id) { ids->push_back(id); });
}

// The stored list with what the feed has brought since. `behind` (may be null) is how much that was.
ENGSTATUS ReadUnread(Store& store, std::string_view user, UnreadList* list, Ids* ids, std::size_t* behind = nullptr) {
  ENGSTATUS status = store.GetUnread(user, list);
  if (status != ENG_OK) return status;
  Ids stored;
  if (!Decode(list->ids, &stored)) return ENG_ERR_DB_DAMAGED;
  std::unordered_map<std::uint32_t, std::uint64_t> own;
  if (list->user != 0) {
    status = store.ReadOwnSaves(list->user, [&own](std::uint32_t id, std::uint64_t feed) { own[id] = feed; });
    if (status != ENG_OK) return status;
  }
  Ids gone;  // deleted or read
  Ids come;
  status = store.ReadFeedBehind(list->feed, [&](const NumberedEntry& change) {
    const FeedEntry& entry = change.entry;
    if (entry.deleted) {
      gone.push_back(entry.id);
    } else if ((entry.slate_class & kDocumentClass) != 0) {
      const auto saved = own.find(entry.id);
      (saved != own.end() && saved->second >= change.feed ? gone : come).push_back(entry.id);
    }
    list->feed = change.feed;
    if (behind) ++*behind;
  });
  std::sort(gone.begin(), gone.end());
  std::sort(come.begin(), come.end());
  *ids = Joined(Without(stored, gone), come);
  return status;
}

ENGSTATUS WriteUnread(Database& database, std::string_view user, UnreadList* list, Ids* ids) {
  Change change(database);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK) status = ReadUnread(database.store(), user, list, ids);
  if (status != ENG_OK) return status;
  list->ids = Encode(*ids);
  status = database.store().PutUnread(user, list);
  return status == ENG_OK ? change.Commit() : status;
}

// Read in one state of the store, whoever else writes.
ENGSTATUS ReadUnreadOnce(Store& store, std::string_view user, UnreadList* list, Ids* ids,
                         std::size_t* behind = nullptr) {
  ENGSTATUS status = store.BeginRead();
  if (status != ENG_OK) return status;
  status = ReadUnread(store, user, list, ids, behind);
  store.EndRead();
  return status;
}

// Makes a list where there is none, and brings one up to date that much has come behind, so that reading it stays
// cheap. The latter may fail, and so may the former where nothing can be written: the feed tells it again.
ENGSTATUS StoreUnread(Database& database, std::string_view user, std::size_t behind, UnreadList* list, Ids* ids) {
  const bool first = list->user == 0;
  if (!first && behind <= kFoldAfter) return ENG_OK;
  UnreadList fresh;
  Ids fresh_ids;
  const ENGSTATUS status = WriteUnread(database, user, &fresh, &fresh_ids);
  if (status == ENG_OK) *ids = std::move(fresh_ids);
  return first && status != ENG_ERR_DB_READ_ONLY ? status : ENGSTATUS{ENG_OK};
}

// What a table stands for, all that it is made of: while nothing of it changes, neither does the table.
struct Stamp {
  std::uint64_t feed = 0;
  std::uint64_t names = 0;  // the user's
  std::uint64_t stored_feed = 0;
  std::vector<std::uint8_t> stored;
  std::uint64_t table = 0;  // its own fingerprint: clients change it too
  bool operator==(const Stamp&) const = default;
};

// Which user a table is for. Handles are not used again for long, so that those that are gone are found by asking.
class Registry {
 public:
  void Add(ENGHANDLE table, std::string_view user) {
    const std::lock_guard lock(mutex_);
    std::erase_if(users_, [](const auto& entry) { return !handle_table.Find(Kind::kIdTable, entry.first); });
    users_[table] = {std::string(user), std::nullopt};
  }
  void SetStamp(ENGHANDLE table, std::optional<Stamp> stamp) {
    const std::lock_guard lock(mutex_);
    const auto found = users_.find(table);
    if (found != users_.end()) found->second.stamp = std::move(stamp);
  }
  bool HasStamp(ENGHANDLE table, const Stamp& stamp) {
    const std::lock_guard lock(mutex_);
    const auto found = users_.find(table);
    return found != users_.end() && found->second.stamp == stamp;
  }
  bool Find(ENGHANDLE table, std::string* user) {
    const std::lock_guard lock(mutex_);
    const auto found = users_.find(table);
    if (found == users_.end()) return false;
    *user = found->second.user;
    return true;
  }

 private:
  std::mutex mutex_;
  struct Known {
    std::string user;
    std::optional<Stamp> stamp;
  };
  std::map<ENGHANDLE, Known> users_;
};

Registry registry;

// Reads a list that is not what the stamp's owner stands for, and completes the stamp.
ENGSTATUS ReadIfChanged(Store& store, std::string_view user, ENGHANDLE table, Stamp* stamp, Ids* ids, bool* same) {
  const bool own = store.InTransaction();
  ENGSTATUS status = store.BeginRead();
  if (status != ENG_OK) return status;
  UnreadList list;
  status = store.FeedEnd(&stamp->feed);
  if (status == ENG_OK) status = store.GetUnread(user, &list);
  stamp->stored_feed = list.feed;
  stamp->stored = list.ids;
  *same = status == ENG_OK && !own && registry.HasStamp(table, *stamp);
  if (status == ENG_OK && !*same) status = ReadUnread(store, user, &list, ids);
  store.EndRead();
  return status;
}

ENGSTATUS CheckUser(std::string_view user) {
  return user.empty() || user.size() > kLongestName ? ENG_ERR_USER_NAME : ENG_OK;
}

// Of `ids`, those that are documents.
ENGSTATUS KeepDocuments(Store& store, Ids* ids) {
  ENGSTATUS failure = ENG_OK;
  std::erase_if(*ids, [&](std::uint32_t id) {
    SlateHeader header;
    const ENGSTATUS status = store.ReadHeader(id, &header);
    if (status != ENG_OK && status != ENG_ERR_NO_SLATE) failure = status;
    return status != ENG_OK || header.deleted || (header.slate_class & kDocumentClass) == 0;
  });
  return failure;
}

}  // namespace

ENGSTATUS GetUnreadTable(Database& database, std::string_view user, bool create, ENGHANDLE* table) {
  ENGSTATUS status = CheckUser(user);
  if (status != ENG_OK) return status;
  UnreadList list;
  Ids ids;
  {
    const std::lock_guard lock(database.mutex());
    std::size_t behind = 0;
    status = ReadUnreadOnce(database.store(), user, &list, &ids, &behind);
    if (status == ENG_OK && create) status = StoreUnread(database, user, behind, &list, &ids);
    if (status == ENG_OK) status = KeepReadable(database, NamesList(user), &ids);
  }
  if (status == ENG_OK) status = idtable::Make(ids, table);
  if (status == ENG_OK) registry.Add(*table, user);
  return status;
}

ENGSTATUS RefreshUnread(Database& database, ENGHANDLE table, bool* changed) {
  *changed = false;
  std::string user;
  if (!registry.Find(table, &user)) return ENG_OK;
  const NamesList names(user);
  Stamp stamp;
  stamp.names = names.Sum();
  stamp.table = idtable::Fingerprint(table);
  Ids ids;
  bool same = false;
  bool own = false;
  {
    const std::lock_guard lock(database.mutex());
    own = database.store().InTransaction();  // what is undone may have the numbers of what comes after it
    ENGSTATUS status = ReadIfChanged(database.store(), user, table, &stamp, &ids, &same);
    if (status == ENG_OK && !same) status = KeepReadable(database, names, &ids);
    if (status != ENG_OK || same) return status;
  }
  const ENGSTATUS status = idtable::Assign(table, ids, changed);
  stamp.table = idtable::Fingerprint(table);
  registry.SetStamp(table, status == ENG_OK && !own ? std::optional(std::move(stamp)) : std::nullopt);
  return status;
}

ENGSTATUS SetUnreadTable(Database& database, std::string_view user, ENGHANDLE before, ENGHANDLE after) {
  Ids old_ids;
  Ids new_ids;
  ENGSTATUS status = CheckUser(user);
  if (status == ENG_OK && before != 0) status = ListTable(before, &old_ids);
  if (status == ENG_OK) status = ListTable(after, &new_ids);
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database.mutex());
  Change change(database);
  status = change.Begin();
  UnreadList list;
  Ids ids;
  if (status == ENG_OK) status = ReadUnread(database.store(), user, &list, &ids);
  // What the user may not read was not in sight, and keeps its place in the list.
  if (before == 0) old_ids = ids;
  if (status == ENG_OK && before == 0) status = KeepReadable(database, NamesList(user), &old_ids);
  Ids added = Without(new_ids, old_ids);
  if (status == ENG_OK) status = KeepDocuments(database.store(), &added);
  if (status != ENG_OK) return status;
  list.ids = Encode(Joined(Without(ids, Without(old_ids, new_ids)), added));
  status = database.store().PutUnread(user, &list);
  return status == ENG_OK ? change.Commit() : status;
}

}  // namespace qcore
