#include "qcore/index/viewindex.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "qcore/folders/folders.h"
#include "qcore/slates/readers.h"
#include "qcore/store/checksum.h"
#include "qcore/store/moment.h"
#include "qcore/store/wire.h"
#include "qcore/time/zone.h"

namespace qcore::index {

namespace {

constexpr std::size_t kMostLogged = 65536;
constexpr std::size_t kKeepAfter = 100000;  // changes of rows, which a start after a crash brings in again
constexpr std::size_t kMostPassed = 1000;   // documents without rows that each opening may look at again
constexpr int kMostRenewals = 3;            // while others keep theirs again and again
constexpr std::uint16_t kClassDocument = 1;

constexpr std::int64_t kSameMoment = 60 * 100;  // hundredths of a second

// Day, month and year are all that tells days apart.
std::tuple<std::int32_t, std::int32_t, std::int32_t> LocalDay(const TIMEDATE& moment) {
  ENGTIME parts{};
  parts.GM = moment;
  static_cast<void>(time::ToParts(time::LocalZone(), &parts));
  return {parts.Year, parts.Month, parts.Day};
}

std::int64_t HundredthsBetween(const TIMEDATE& from, const TIMEDATE& to) {
  constexpr std::int64_t kDay = 24 * 60 * 60 * 100;
  return (std::int64_t{to.DateWord} - from.DateWord) * kDay + std::int64_t{to.TimeWord} - from.TimeWord;
}

using Key = std::tuple<const Database*, const Database*, std::uint32_t>;
std::mutex registry_mutex;
std::map<Key, std::weak_ptr<ViewIndex>>& Registry() {
  static std::map<Key, std::weak_ptr<ViewIndex>> registry;
  return registry;
}

}  // namespace

std::shared_ptr<ViewIndex> ViewIndex::Find(std::shared_ptr<Database> design, std::shared_ptr<Database> entries,
                                           std::uint32_t view) {
  const std::lock_guard lock(registry_mutex);
  auto& registry = Registry();
  std::erase_if(registry, [](const auto& entry) { return entry.second.expired(); });
  std::weak_ptr<ViewIndex>& known = registry[Key(design.get(), entries.get(), view)];
  std::shared_ptr<ViewIndex> index = known.lock();
  if (!index) {
    index = std::make_shared<ViewIndex>(std::move(design), std::move(entries), view);
    known = index;
  }
  return index;
}

ViewIndex::ViewIndex(std::shared_ptr<Database> design, std::shared_ptr<Database> entries, std::uint32_t view)
    : design_database_(std::move(design)), entries_(std::move(entries)), view_(view) {}

template <typename Work>
ENGSTATUS ViewIndex::Caught(const Work& work) {
  try {
    return work();
  } catch (const IndexFault& fault) {
    return fault.status;
  } catch (const std::bad_alloc&) {
    return ENG_ERR_MEMORY;
  }
}

// The index stands with the entries, where a view of the same ID may have its own.
std::uint64_t ViewIndex::OriginSum() const {
  const std::string& path = design_database_->path();
  if (path == entries_->path()) return 0;
  return Checksum({reinterpret_cast<const std::uint8_t*>(path.data()), path.size()}, 1);
}

IndexTree::Identity ViewIndex::identity() const { return {design_->sum + reader_->place_sum() + OriginSum(), names_}; }

ENGSTATUS ViewIndex::ReadDesignIfChanged(bool* changed) {
  *changed = false;
  SlateHeader header;
  {
    const std::lock_guard lock(design_database_->mutex());
    const ENGSTATUS status = design_database_->store().ReadHeader(view_, &header);
    if (status == ENG_ERR_NO_SLATE || (status == ENG_OK && header.deleted)) return ENG_ERR_NO_COLLECTION;
    if (status != ENG_OK) return status;
  }
  const bool restricted =
      std::ranges::any_of(slots_, [](const auto& slot) { return slot.second.tree && slot.second.tree->restricted; });
  const NamesList user = CurrentNames();
  const std::uint64_t names = user.Sum();
  if (design_ && !restricted && names != names_) {
    reader_->SetNames(user);
    names_ = names;
  }
  const bool same_time = header.modified_here.TimeWord == design_time_.TimeWord &&
                         header.modified_here.DateWord == design_time_.DateWord &&
                         header.origin.Sequence == design_sequence_;
  if (design_ && same_time && names == names_) {
    design_touched_ = false;
    return ENG_OK;
  }
  auto design = std::make_unique<Design>();
  const ENGSTATUS status = ReadDesign(design_database_, view_, design.get());
  if (status != ENG_OK) return status;
  *changed = !design_ || design->sum != design_->sum || design->title != design_->title || names != names_;
  design_touched_ = false;
  design_time_ = header.modified_here;
  design_sequence_ = header.origin.Sequence;
  if (!*changed) return ENG_OK;
  auto layout = std::make_unique<ValueLayout>(*design);
  auto reader = std::make_unique<DocumentReader>(entries_, *design, *layout);
  const ENGSTATUS opened = reader->Open();
  if (opened != ENG_OK) return opened;
  for (auto& [number, slot] : slots_) {
    slot.tree.reset();
    ForgetLog(&slot);
  }
  reader_ = std::move(reader);
  members_change_.reset();
  layout_ = std::move(layout);
  design_ = std::move(design);
  names_ = names;
  return ENG_OK;
}

// What has changed since the last call, where that is known.
ENGSTATUS ViewIndex::ReadMembers() {
  if (!design_->folder) return ENG_OK;
  std::vector<std::uint32_t> members;
  std::vector<std::uint32_t> removed;
  std::uint64_t change = 0;
  const std::lock_guard lock(design_database_->mutex());
  ENGSTATUS status = FolderSequence(*design_database_, view_, &change);
  if (status != ENG_OK || members_change_ == change) return status;
  const bool later = members_change_ && *members_change_ < change;
  status = FolderChanges(*design_database_, view_, later ? *members_change_ : 0, &members, &removed);
  if (status != ENG_OK) return status;
  later ? reader_->ChangeMembers(members, removed) : reader_->SetMembers(std::move(members));
  members_change_ = change;
  return ENG_OK;
}

void ViewIndex::FollowReverts(Slot* slot) {
  slot->reverts = reverts_;
  members_change_.reset();  // what was undone may have the numbers of what came after it
}

// The numbers are taken first: what is saved while the documents are read is brought in again by the next update.
ENGSTATUS ViewIndex::Rebuild(Slot* slot) {
  IndexTree& tree = *slot->tree;
  std::uint64_t feed = 0;
  std::uint64_t folder_change = 0;
  FollowReverts(slot);
  {
    const std::lock_guard lock(entries_->mutex());
    const ENGSTATUS status = entries_->store().FeedEnd(&feed);
    if (status != ENG_OK) return status;
  }
  if (design_->folder) {
    const std::lock_guard lock(design_database_->mutex());
    const ENGSTATUS status = FolderSequence(*design_database_, view_, &folder_change);
    if (status != ENG_OK) return status;
  }
  ENGSTATUS status = ReadMembers();
  ForgetLog(slot);
  if (status == ENG_OK) status = Caught([&] { return tree.Build(*reader_); });
  if (status != ENG_OK) return status;
  tree.feed = feed;
  tree.folder_change = folder_change;
  design_touched_ = true;  // what the feed says of the view was passed over
  slot->built = Now();
  slot->built_feed = feed;
  KeepSlot(slot);
  return ENG_OK;
}

ENGSTATUS ViewIndex::ChangedSince(IndexTree& tree, std::uint64_t* feed, std::uint64_t* folder_change,
                                  std::vector<std::uint32_t>* ids) {
  std::vector<std::uint32_t> others;
  {
    const std::lock_guard lock(entries_->mutex());
    const ENGSTATUS status = entries_->store().ReadFeedBehind(tree.feed, [&](const NumberedEntry& entry) {
      *feed = std::max(*feed, entry.feed);
      design_touched_ = design_touched_ || entry.entry.id == view_;
      ((entry.entry.slate_class & kClassDocument) != 0 ? *ids : others).push_back(entry.entry.id);
    });
    if (status != ENG_OK) return status;
  }
  // One that was a document has rows to lose.
  std::ranges::copy_if(others, std::back_inserter(*ids), [&tree](std::uint32_t id) { return tree.Has(id); });
  if (design_->folder) {
    std::vector<std::uint32_t> added;
    std::vector<std::uint32_t> removed;
    const std::lock_guard lock(design_database_->mutex());
    ENGSTATUS status = FolderSequence(*design_database_, view_, folder_change);
    if (status == ENG_OK && *folder_change != tree.folder_change) {
      status = FolderChanges(*design_database_, view_, tree.folder_change, &added, &removed);
    }
    if (status != ENG_OK) return status;
    ids->insert(ids->end(), added.begin(), added.end());
    ids->insert(ids->end(), removed.begin(), removed.end());
  }
  std::sort(ids->begin(), ids->end());
  ids->erase(std::unique(ids->begin(), ids->end()), ids->end());
  return ENG_OK;
}

// Those that hung below what has another universal ID now stand elsewhere, and nothing leads to them any more.
ENGSTATUS ViewIndex::LostParents(const IndexTree& tree, bool* lost) {
  std::uint64_t renamed = 0;
  const std::lock_guard lock(entries_->mutex());
  const ENGSTATUS status = entries_->store().LastRenamed(&renamed);
  *lost = renamed > tree.feed;
  return status;
}

ENGSTATUS ViewIndex::BringIn(Slot* slot) {
  IndexTree& tree = *slot->tree;
  tree.watched = slot->watched;
  std::uint64_t feed = tree.feed;
  std::uint64_t folder_change = tree.folder_change;
  std::vector<std::uint32_t> ids;
  ENGSTATUS status = ChangedSince(tree, &feed, &folder_change, &ids);
  if (status != ENG_OK) return status;
  if (!ids.empty()) {
    status = ReadMembers();
    if (status != ENG_OK) return status;
    // Past a point, reading everything in order costs less than reading much of it in disorder.
    bool needs_build = ids.size() > 1000 + tree.rows().rows() / 2;
    if (!needs_build && (tree.hierarchy() || reader_->selects_below())) {
      status = LostParents(tree, &needs_build);
      if (status != ENG_OK) return status;
    }
    if (!needs_build) status = tree.Update(*reader_, ids, &needs_build);
    if (status != ENG_OK) return status;
    if (needs_build) return Rebuild(slot);
    slot->passed += ids.size();
  }
  tree.feed = feed;
  tree.folder_change = folder_change;
  TakeLog(slot);
  if (tree.unkept() > kKeepAfter) KeepSlot(slot);
  return ENG_OK;
}

// A tree that lost its pages starts again from what is kept. Another process may keep its own meanwhile.
ENGSTATUS ViewIndex::Renew(Slot* slot) {
  ForgetLog(slot);
  FollowReverts(slot);
  slot->built.reset();
  ENGSTATUS brought = ENG_ERR_SLATE_CONFLICT;
  for (int tries = 0; tries < kMostRenewals && brought == ENG_ERR_SLATE_CONFLICT; ++tries) {
    bool found = false;
    const ENGSTATUS status = slot->tree->LoadKept(identity(), &found);
    if (status != ENG_OK) return status;
    if (!found) break;
    brought = Caught([&] {
      const ENGSTATUS members = ReadMembers();
      return members == ENG_OK ? BringIn(slot) : members;
    });
  }
  return brought == ENG_OK ? ENGSTATUS{ENG_OK} : Rebuild(slot);
}

ENGSTATUS ViewIndex::UpdateSlot(Slot* slot) {
  const ENGSTATUS status = Caught([&] { return BringIn(slot); });
  const bool lost = status == ENG_ERR_DB_DAMAGED || status == ENG_ERR_SLATE_CONFLICT;
  return lost ? Renew(slot) : status;
}

ENGSTATUS ViewIndex::TreeFor(std::uint16_t number, Missing missing, Slot** slot) {
  Slot& found = slots_[number];
  *slot = &found;
  if (found.tree) return ENG_OK;
  const auto collation =
      std::ranges::find_if(design_->collations, [number](const Collation& c) { return c.number == number; });
  if (collation == design_->collations.end()) return ENG_ERR_NO_COLLECTION;
  auto tree = std::make_unique<IndexTree>(entries_, view_, *collation, *layout_, design_->hierarchy);
  found.reverts = reverts_;  // before anything is read
  bool kept = false;
  ENGSTATUS status = tree->LoadKept(identity(), &kept);
  if (status != ENG_OK) return status;
  if (!kept && missing == Missing::kRefuse) return ENG_ERR_NO_COLLECTION;
  found.tree = std::move(tree);
  found.built.reset();
  ForgetLog(&found);
  status = kept ? ReadMembers() : Rebuild(&found);
  if (status != ENG_OK) found.tree.reset();
  return status;
}

bool ViewIndex::SavedSinceBuilt(const Slot& slot) const {
  std::uint64_t feed = 0;
  const std::lock_guard lock(entries_->mutex());
  return entries_->store().FeedEnd(&feed) != ENG_OK || feed != slot.built_feed;
}

// An update builds rows that change by themselves anew once a minute at most: it may come with every look at them.
bool ViewIndex::HasAged(const Slot& slot) const {
  if (!reader_->depends_on_time()) return false;
  const TIMEDATE now = Now();
  if (!slot.built || LocalDay(*slot.built) != LocalDay(now)) return true;
  if (HundredthsBetween(*slot.built, now) < kSameMoment) return false;
  return reader_->depends_on_hour() || (reader_->counts_responses() && SavedSinceBuilt(slot));
}

// Rows that change with time are those of an opening: of this one, unless one that is still in use was just before.
bool ViewIndex::HasAgedForOpening(const Slot& slot) const {
  if (!reader_->depends_on_time()) return false;
  if (HasAged(slot)) return true;
  if (reader_->counts_responses() && SavedSinceBuilt(slot)) return true;
  const bool alone = weak_from_this().use_count() <= 1;
  return reader_->depends_on_hour() && alone && Pack(Now()) != Pack(*slot.built);
}

ENGSTATUS ViewIndex::Open(Start start, Missing missing) {
  const std::lock_guard lock(mutex_);
  bool changed = false;
  ENGSTATUS status = start == Start::kAsKept && open_ ? ENGSTATUS{ENG_OK} : ReadDesignIfChanged(&changed);
  Slot* slot = nullptr;
  const bool had_tree = slots_[0].tree != nullptr;
  if (status == ENG_OK) status = TreeFor(0, missing, &slot);
  if (status == ENG_OK) {
    bool fresh = !had_tree && slot->built;
    const bool aged = start == Start::kRebuilt || (start == Start::kUpdated && HasAgedForOpening(*slot));
    if (aged && !fresh) {
      status = Rebuild(slot);
      fresh = true;
    }
    if (status == ENG_OK && start == Start::kUpdated) status = UpdateLocked(fresh ? slot : nullptr);
  }
  open_ = open_ || status == ENG_OK;
  return status;
}

// The documents' change feed tells of the view too when both are in one database.
bool ViewIndex::FeedTellsOfDesign() const {
  const auto slot = slots_.find(0);
  return design_ && design_database_ == entries_ && slot != slots_.end() && slot->second.tree &&
         !slot->second.tree->restricted && !IsStale(slot->second) && !design_touched_;
}

ENGSTATUS ViewIndex::Update() {
  const std::lock_guard lock(mutex_);
  if (FeedTellsOfDesign()) {
    const ENGSTATUS status = UpdateLocked(nullptr);
    if (status != ENG_OK || FeedTellsOfDesign()) return status;
  }
  std::vector<std::uint16_t> used;
  for (const auto& [number, slot] : slots_) {
    if (slot.tree) used.push_back(number);
  }
  bool changed = false;
  ENGSTATUS status = ReadDesignIfChanged(&changed);
  for (std::size_t i = 0; changed && status == ENG_OK && i < used.size(); ++i) {
    Slot* slot = nullptr;
    status = TreeFor(used[i], Missing::kBuild, &slot);
    if (status == ENG_ERR_NO_COLLECTION) status = ENG_OK;  // the new design has no such collation
  }
  return status == ENG_OK ? UpdateLocked(nullptr) : status;
}

ENGSTATUS ViewIndex::Follow(Slot* slot, bool fresh) {
  if (IsStale(*slot)) {
    const ENGSTATUS status = Renew(slot);
    if (status != ENG_OK || slot->built) return status;
  }
  return !fresh && HasAged(*slot) ? Rebuild(slot) : UpdateSlot(slot);
}

ENGSTATUS ViewIndex::UpdateLocked(const Slot* fresh) {
  ENGSTATUS status = ENG_OK;
  for (auto& [number, slot] : slots_) {
    if (slot.tree && status == ENG_OK) status = Follow(&slot, &slot == fresh);
  }
  return status;
}

ENGSTATUS ViewIndex::Prepare(std::uint16_t collation) {
  const std::lock_guard lock(mutex_);
  if (!design_) return ENG_ERR_NO_COLLECTION;
  const auto known = slots_.find(collation);
  if (known != slots_.end() && known->second.tree) return ENG_OK;
  Slot* slot = nullptr;
  const ENGSTATUS status = TreeFor(collation, Missing::kBuild, &slot);
  return status == ENG_OK && !slot->built ? Follow(slot, false) : status;
}

ENGSTATUS ViewIndex::With(std::uint16_t collation, const Use& use) {
  const std::lock_guard lock(mutex_);
  Slot* slot = nullptr;
  ENGSTATUS status = design_ ? TreeFor(collation, Missing::kBuild, &slot) : ENGSTATUS{ENG_ERR_NO_COLLECTION};
  if (status == ENG_OK && IsStale(*slot)) status = Renew(slot);
  for (int renewals = 0; status == ENG_OK; ++renewals) {
    try {
      return use(*slot->tree);
    } catch (const IndexFault& fault) {
      status = fault.status;
    }
    // Damaged pages can't be had at all, another process's can.
    if (status != ENG_ERR_SLATE_CONFLICT || renewals == kMostRenewals) break;
    status = Renew(slot);
  }
  if (status != ENG_ERR_DB_DAMAGED && status != ENG_ERR_SLATE_CONFLICT) return status;
  // A tree that was built here has all its pages, whatever others keep.
  status = Rebuild(slot);
  return status == ENG_OK ? Caught([&] { return use(*slot->tree); }) : status;
}

void ViewIndex::KeepSlot(Slot* slot) {
  // Derived data: what can't be written now, in a database that is read only or in use, comes from the feed again.
  const auto stands = [&] { return !IsStale(*slot); };
  const ENGSTATUS status = Caught([&] { return slot->tree->Keep(identity(), stands); });
  if (status == ENG_OK || status == ENG_ERR_SLATE_CONFLICT) slot->passed = 0;
}

void ViewIndex::Keep() {
  const std::lock_guard lock(mutex_);
  for (auto& [number, slot] : slots_) {
    const bool behind = slot.tree && (slot.tree->unkept() != 0 || slot.passed > kMostPassed);
    if (behind && !IsStale(slot)) KeepSlot(&slot);
  }
}

void ViewIndex::Revert() { ++reverts_; }

void ViewIndex::ForgetLog(Slot* slot) {
  slot->log.clear();
  slot->log_from = ++last_change_;
}

// A document's row that goes and one that comes in the same update are one that moved.
void ViewIndex::TakeLog(Slot* slot) {
  const bool changed = slot->tree->TakeChanged();
  std::vector<RowChange> changes = slot->tree->TakeChanges();
  if (!slot->watched) {
    if (changed) slot->log_from = ++last_change_;
    return;
  }
  std::vector<std::pair<std::uint32_t, std::size_t>> gone;  // by document
  std::vector<std::pair<std::uint32_t, std::size_t>> came;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (changes[i].id == 0) continue;
    if (changes[i].kind == RowEvent::kRemoved) gone.emplace_back(changes[i].id, i);
    if (changes[i].kind == RowEvent::kInserted) came.emplace_back(changes[i].id, i);
  }
  std::ranges::sort(gone);
  std::ranges::sort(came);
  std::vector<bool> paired(changes.size());
  for (auto from = gone.begin(), to = came.begin(); from != gone.end() && to != came.end();) {
    if (from->first == to->first) {
      paired[from++->second] = true;
      changes[to++->second].kind = RowEvent::kMoved;
    } else {
      ++(from->first < to->first ? from : to);
    }
  }
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (!paired[i]) slot->log.push_back({++last_change_, std::move(changes[i])});
  }
  for (; slot->log.size() > kMostLogged; slot->log.pop_front()) slot->log_from = slot->log.front().number;
}

std::uint64_t ViewIndex::StartLog(std::uint16_t collation) {
  slots_[collation].watched = true;
  return last_change_;
}

bool ViewIndex::ChangesBehind(std::uint16_t collation, std::uint64_t number, std::vector<RowChange>* changes) const {
  const auto slot = slots_.find(collation);
  if (slot == slots_.end() || number < slot->second.log_from || number > last_change_) return false;
  const auto& log = slot->second.log;
  auto at = std::upper_bound(log.begin(), log.end(), number,
                             [](std::uint64_t n, const LoggedChange& change) { return n < change.number; });
  for (; at != log.end(); ++at) changes->push_back(at->change);
  return true;
}

std::size_t ViewIndex::Memory() {
  const std::lock_guard lock(mutex_);
  std::size_t memory = 0;
  for (const auto& [number, slot] : slots_) memory += slot.tree ? slot.tree->Memory() : 0;
  return memory;
}

}  // namespace qcore::index
