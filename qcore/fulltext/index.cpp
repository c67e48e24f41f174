#include "qcore/fulltext/index.h"

#include <algorithm>
#include <vector>

#include "qcore/fulltext/document.h"
#include "qcore/store/moment.h"
#include "qcore/store/wire.h"
#include "qcore/text/tokens.h"

namespace qcore {

namespace {

constexpr std::uint16_t kDocumentClass = 1;
constexpr std::size_t kPart = 10000;
constexpr std::uint32_t kWasteLimit = 60;  // percent

ENGSTATUS WriteState(Store& store, const TextIndexState& state) {
  std::vector<std::uint8_t> bytes;
  WireWriter writer(&bytes);
  writer.Put(state.feed);
  writer.PutTime(state.updated);
  return store.SetSetting(Setting::kFullText, bytes);
}

ENGSTATUS MakeAnew(Database& database) {
  Change change(database);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK) status = database.store().CreateTextIndex();
  if (status == ENG_OK) status = WriteState(database.store(), {0, Now()});
  return status == ENG_OK ? change.Commit() : status;
}

void Count(std::uint64_t amount, std::uint32_t* counter) {
  *counter = static_cast<std::uint32_t>(std::min<std::uint64_t>(*counter + amount, UINT32_MAX));
}

class Updater {
 public:
  Updater(Database& database, FT_INDEX_STATS* statistics) : database_(database), statistics_(statistics) {}

  // What has changed since the index's place, in one list, so that parts do not walk the feed again.
  ENGSTATUS List() {
    const std::lock_guard lock(database_.mutex());
    TextIndexState state;
    const ENGSTATUS status = ReadTextIndexState(database_, &state);
    return status == ENG_OK ? ListBehind(state.feed) : status;
  }
  bool at_end() const { return next_ == changes_.size(); }
  std::uint32_t done() const { return static_cast<std::uint32_t>(next_); }
  std::uint32_t all() const { return static_cast<std::uint32_t>(changes_.size()); }

  // One part, whole or not at all. Another process may have been faster: then its place is the index's. Or it has made
  // the index anew meanwhile, whose place lies before ours.
  ENGSTATUS TakePart() {
    const std::lock_guard lock(database_.mutex());
    Change change(database_);
    ENGSTATUS status = change.Begin();
    TextIndexState present;
    if (status == ENG_OK) status = ReadTextIndexState(database_, &present);
    if (status == ENG_OK && present.feed < feed_) status = ListBehind(present.feed);
    if (status != ENG_OK) return status;
    while (!at_end() && changes_[next_].feed <= present.feed) ++next_;
    const FT_INDEX_STATS before = *statistics_;
    const std::size_t end = std::min(next_ + kPart, changes_.size());
    status = TakeChanges(next_, end);
    const std::uint64_t feed = end == 0 ? present.feed : std::max(present.feed, changes_[end - 1].feed);
    if (status == ENG_OK) status = WriteState(database_.store(), {feed, Now()});
    if (status == ENG_OK) status = change.Commit();
    if (status != ENG_OK) {
      *statistics_ = before;
      return status;
    }
    next_ = end;
    feed_ = feed;
    return ENG_OK;
  }

 private:
  ENGSTATUS ListBehind(std::uint64_t feed) {
    changes_.clear();
    next_ = 0;
    feed_ = feed;
    return database_.store().ReadFeedBehind(feed, [this](const NumberedEntry& entry) { changes_.push_back(entry); });
  }

  // By slate, as the index takes them best.
  ENGSTATUS TakeChanges(std::size_t begin, std::size_t end) {
    std::vector<NumberedEntry> part(changes_.begin() + static_cast<std::ptrdiff_t>(begin),
                                    changes_.begin() + static_cast<std::ptrdiff_t>(end));
    std::ranges::stable_sort(part, {}, [](const NumberedEntry& entry) { return entry.entry.id; });
    ENGSTATUS status = ENG_OK;
    for (std::size_t i = 0; status == ENG_OK && i < part.size(); ++i) status = TakeOne(part[i].entry);
    return status;
  }

  ENGSTATUS TakeOne(const FeedEntry& entry) {
    if (entry.deleted || (entry.slate_class & kDocumentClass) == 0) return Drop(entry.id);
    text_.clear();
    bool guarded = false;
    const ENGSTATUS status = database_.store().ReadSlate(entry.id, [&](const SlateHeader& header, Bytes packed) {
      return ReadStretches(
          database_, header.id, packed, [this](std::string_view, std::string_view text) { AddStretch(text); },
          &guarded);
    });
    // It has been deleted since, or cannot be read: then nothing of it is to be found.
    const bool unreadable = status == ENG_ERR_SLATE_DELETED || status == ENG_ERR_NO_SLATE ||
                            status == ENG_ERR_ITEM_DAMAGED || status == ENG_ERR_DB_DAMAGED;
    if (unreadable) return Drop(entry.id);
    return status == ENG_OK ? Put(entry.id, guarded) : status;
  }

  void AddStretch(std::string_view text) {
    if (text.empty()) return;
    if (!text_.empty()) text_ += text::kStretchEnd;
    text_ += text;
  }

  ENGSTATUS Put(std::uint32_t id, bool guarded) {
    bool replaced = false;
    const ENGSTATUS status = database_.store().PutText(id, text_, guarded, &replaced);
    if (status != ENG_OK) return status;
    Count(1, replaced ? &statistics_->DocsUpdated : &statistics_->DocsAdded);
    Count(text_.size(), &statistics_->BytesIndexed);
    return ENG_OK;
  }

  ENGSTATUS Drop(std::uint32_t id) {
    bool dropped = false;
    const ENGSTATUS status = database_.store().DropText(id, &dropped);
    if (status == ENG_OK && dropped) Count(1, &statistics_->DocsDeleted);
    return status;
  }

  Database& database_;
  FT_INDEX_STATS* statistics_;
  std::uint64_t feed_ = 0;  // the place that next_ stands for
  std::vector<NumberedEntry> changes_;
  std::size_t next_ = 0;
  std::string text_;
};

// Too much of an index that stands for texts which are gone costs every search.
bool IsWorn(Database& database) {
  std::uint32_t waste = 0;
  return database.store().TextWaste(&waste) == ENG_OK && waste > kWasteLimit;
}

}  // namespace

ENGSTATUS ReadTextIndexState(Database& database, TextIndexState* state) {
  std::vector<std::uint8_t> bytes;
  const ENGSTATUS status = database.store().GetSetting(Setting::kFullText, &bytes);
  if (status != ENG_OK) return status;
  if (bytes.empty()) return ENG_ERR_NO_FULL_TEXT;
  WireReader reader(bytes);
  state->feed = reader.Take<std::uint64_t>();
  state->updated.TimeWord = reader.Take<std::uint32_t>();
  state->updated.DateWord = reader.Take<std::uint32_t>();
  return reader.good() ? ENG_OK : ENG_ERR_DB_DAMAGED;
}

ENGSTATUS UpdateTextIndex(Database& database, TextUpdate extent, const TextProgress& progress,
                          FT_INDEX_STATS* statistics) {
  *statistics = {};
  ENGSTATUS status = ENG_OK;
  {
    const std::lock_guard lock(database.mutex());
    TextIndexState state;
    status = ReadTextIndexState(database, &state);
    const bool missing = status == ENG_ERR_NO_FULL_TEXT;
    if (missing) status = ENG_OK;
    if (status != ENG_OK) return status;
    if (missing || extent == TextUpdate::kAnew || IsWorn(database)) status = MakeAnew(database);
  }
  Updater updater(database, statistics);
  if (status == ENG_OK) status = updater.List();
  bool first = true;  // an update without changes renews the time
  while (status == ENG_OK && (first || !updater.at_end())) {
    first = false;
    status = updater.TakePart();
    if (status == ENG_OK && progress) status = progress(updater.done(), updater.all());
  }
  return status;
}

ENGSTATUS DeleteTextIndex(Database& database) {
  const std::lock_guard lock(database.mutex());
  TextIndexState state;
  ENGSTATUS status = ReadTextIndexState(database, &state);
  if (status != ENG_OK) return status;
  Change change(database);
  status = change.Begin();
  if (status == ENG_OK) status = database.store().DeleteTextIndex();
  if (status == ENG_OK) status = database.store().SetSetting(Setting::kFullText, {});
  return status == ENG_OK ? change.Commit() : status;
}

}  // namespace qcore
