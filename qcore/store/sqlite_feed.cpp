// The change feed of the SQLite store.
//
// Blocks of changes are appended and never altered: a slate's former entry stays until the feed is trimmed, so that a
// change writes no page but the last. The entries of a transaction wait in memory and are written with its commit.
// Stores of earlier versions have an index on the slates instead, and a table of those that went without leaving a
// deletion stub.
#include <algorithm>
#include <unordered_map>

#include "qcore/store/feed.h"
#include "qcore/store/moment.h"
#include "qcore/store/sqlite_sql.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::size_t kBlock = 256;
constexpr std::size_t kMostWaiting = 8192;
// Entries that others have replaced, beside as many as there are slates, before they go.
constexpr std::uint64_t kMostReplaced = 4096;
constexpr std::uint64_t kDeletedState = std::uint64_t{1} << 32;
constexpr std::uint32_t kSlateStep = 4;
constexpr std::uint16_t kClassDocument = 1;

}  // namespace

void SqliteStore::NoteChange(const SlateHeader& header, Trace trace) {
  const NumberedEntry change{counters_.feed, {header.id, header.slate_class, header.deleted}};
  own_.Note(change);
  waiting_.push_back({change, Pack(header.modified_here), trace == Trace::kNone});
}

// A part that may be undone alone keeps what came before it in memory.
ENGSTATUS SqliteStore::MakeRoomInFeed() {
  return waiting_.size() < kMostWaiting || marked_ ? ENGSTATUS{ENG_OK} : WriteFeed();
}

ENGSTATUS SqliteStore::WriteFeed() {
  const ENGSTATUS status = AppendToFeed(waiting_);
  if (status == ENG_OK) waiting_.clear();
  return status;
}

ENGSTATUS SqliteStore::AppendToFeed(std::span<const FeedRecord> records) {
  for (std::size_t at = 0; at < records.size(); at += kBlock) {
    const std::span<const FeedRecord> part = records.subspan(at, std::min(kBlock, records.size() - at));
    const std::vector<std::uint8_t> block = EncodeFeedBlock(part);
    Use use = Start(Sql::kAppendToFeed);
    use.Bind(1, part.back().change.feed);
    use.Bind(2, part.back().here);
    use.Bind(3, Bytes(block));
    const ENGSTATUS status = Finish(use);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

std::uint64_t SqliteStore::Replaced() const {
  const std::uint64_t kept = counters_.slate / kSlateStep + counters_.trimmed;
  return counters_.feed - std::min(counters_.feed, kept);
}

// What every slate has one entry of stays, those of slates that went too.
ENGSTATUS SqliteStore::TrimFeedWhenDue() {
  if (Replaced() <= kMostReplaced + counters_.slate / kSlateStep) return ENG_OK;
  std::vector<FeedRecord> records;
  ENGSTATUS status = ReadBlocks(0, &records);
  if (status == ENG_ERR_DB_DAMAGED) {
    // Whoever reads it is told; saves go on, and try no more before as many changes.
    counters_.trimmed += Replaced();
    return ENG_OK;
  }
  if (status != ENG_OK) return status;
  KeepLast(&records);
  status = Run(Sql::kClearFeed);
  if (status == ENG_OK) status = AppendToFeed(records);
  if (status != ENG_OK) return status;
  counters_.trimmed += Replaced();
  std::vector<std::uint8_t> trimmed;
  WireWriter(&trimmed).Put(counters_.trimmed);
  return SetSetting(Setting::kTrimmed, trimmed);
}

ENGSTATUS SqliteStore::ReadBlocks(std::uint64_t behind, std::vector<FeedRecord>* records) {
  {
    Use use = Start(Sql::kReadBlocksBehind);
    use.Bind(1, behind);
    while (use.Row()) {
      if (!DecodeFeedBlock(use.Number(0), use.Number(1), use.Blob(2), records)) return ENG_ERR_DB_DAMAGED;
    }
    if (use.code() != SQLITE_OK) return Result(use.code());
  }
  if (writing_ && InTransaction()) records->insert(records->end(), waiting_.begin(), waiting_.end());
  const auto first = std::ranges::find_if(*records, [behind](const FeedRecord& r) { return r.change.feed > behind; });
  records->erase(records->begin(), first);
  return ENG_OK;
}

// Of a store of version 1 or 2, within a transaction.
ENGSTATUS SqliteStore::ReadIndexedFeed(std::uint64_t behind, std::vector<FeedRecord>* records) {
  const auto read = [&](Sql which, bool gone) {
    Use use = Start(which);
    use.Bind(1, behind);
    while (use.Row()) {
      const std::uint64_t state = use.Number(2);
      const FeedEntry entry{static_cast<std::uint32_t>(use.Number(1)), static_cast<std::uint16_t>(state),
                            (state & kDeletedState) != 0};
      records->push_back({{use.Number(0), entry}, gone ? 0 : use.Number(3), gone});
    }
    return Result(use.code());
  };
  ENGSTATUS status = read(Sql::kReadIndexedFeed, false);
  if (status == ENG_OK && version_ > kOldestVersion) status = read(Sql::kReadRemoved, true);
  std::ranges::sort(*records, {}, [](const FeedRecord& record) { return record.change.feed; });
  // Those that went have no time of their own there.
  std::uint64_t here = 0;
  for (FeedRecord& record : *records) here = record.here = std::max(here, record.here);
  return status;
}

ENGSTATUS SqliteStore::ReadRecords(std::uint64_t behind, std::vector<FeedRecord>* records) {
  if (HasFeedTable()) return ReadBlocks(behind, records);
  // Another process may bring the table meanwhile.
  const bool alone = !InTransaction();
  ENGSTATUS status = BeginRead();
  if (status != ENG_OK) return status;
  status = HasFeedTable() ? ReadBlocks(behind, records) : ReadIndexedFeed(behind, records);
  if (alone) EndRead();
  return status;
}

ENGSTATUS SqliteStore::ReadNewest(const std::function<bool(const FeedRecord&)>& visit) {
  SlateSet seen;
  std::vector<FeedRecord> records;
  const auto newest = [&] {
    for (auto at = records.rbegin(); at != records.rend(); ++at) {
      if (seen.Add(at->change.entry.id) && !at->gone && !visit(*at)) return false;
    }
    return true;
  };
  if (!HasFeedTable()) {
    const ENGSTATUS status = ReadRecords(0, &records);
    if (status == ENG_OK) newest();
    return status;
  }
  if (writing_ && InTransaction()) records = waiting_;
  Use use = Start(Sql::kReadBlocks);
  while (newest() && use.Row()) {
    records.clear();
    if (!DecodeFeedBlock(use.Number(0), use.Number(1), use.Blob(2), &records)) return ENG_ERR_DB_DAMAGED;
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::ReadFeed(const TIMEDATE* since, const FeedReader& reader) {
  return ReadNewest([&](const FeedRecord& record) {
    if (since && record.here < Pack(*since)) return false;
    reader(record.change.entry);
    return true;
  });
}

ENGSTATUS SqliteStore::ReadFeedBehind(std::uint64_t behind, const NumberedReader& reader) {
  if (own_.Knows(behind) && InTransaction()) {
    own_.Read(behind, reader);
    return ENG_OK;
  }
  std::vector<FeedRecord> records;
  const ENGSTATUS status = ReadRecords(behind, &records);
  if (status != ENG_OK) return status;
  KeepLast(&records);
  for (const FeedRecord& record : records) reader(record.change);
  return ENG_OK;
}

ENGSTATUS SqliteStore::CheckFeed(std::string* report) {
  std::vector<FeedRecord> records;
  const ENGSTATUS status = ReadRecords(0, &records);
  if (status == ENG_ERR_DB_DAMAGED) *report = "change feed";
  if (status != ENG_OK) return status;
  KeepLast(&records);
  std::unordered_map<std::uint32_t, std::uint64_t> places;
  for (const FeedRecord& record : records) places.emplace(record.change.entry.id, record.change.feed);
  Statement statement;
  const int prepared = statement.Prepare(connection_.get(), "SELECT id,feed FROM slate");
  Use use(statement.get(), prepared);
  while (use.Row()) {
    const auto place = places.find(static_cast<std::uint32_t>(use.Number(0)));
    if (place != places.end() && place->second == use.Number(1)) continue;
    *report = "change feed: slate " + std::to_string(use.Number(0));
    return ENG_ERR_DB_DAMAGED;
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::LastEntry(std::uint64_t* feed, std::uint64_t* here) {
  *feed = 0;
  *here = 0;
  if (!HasFeedTable()) {
    std::vector<FeedRecord> records;
    const ENGSTATUS status = ReadRecords(0, &records);
    if (status != ENG_OK || records.empty()) return status;
    *feed = records.back().change.feed;
    *here = records.back().here;
    return ENG_OK;
  }
  if (writing_ && InTransaction() && !waiting_.empty()) {
    *feed = waiting_.back().change.feed;
    *here = waiting_.back().here;
    return ENG_OK;
  }
  Use use = Start(Sql::kLastBlock);
  if (use.Row()) {
    *feed = use.Number(0);
    *here = use.Number(1);
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::FeedEnd(std::uint64_t* feed) {
  std::uint64_t here = 0;
  return LastEntry(feed, &here);
}

ENGSTATUS SqliteStore::LastChange(Part part, TIMEDATE* moment) {
  std::uint64_t last = 0;
  if (part == Part::kData) {
    const ENGSTATUS status = ReadNewest([&last](const FeedRecord& record) {
      if (record.change.entry.slate_class == kClassDocument) last = record.here;
      return last == 0;
    });
    if (status != ENG_OK) return status;
  } else {
    Use use = Start(Sql::kLastDesign);
    if (use.Row()) last = use.Number(0);
    if (use.code() != SQLITE_OK) return Result(use.code());
  }
  std::vector<std::uint8_t> floors;
  const ENGSTATUS status = GetSetting(Setting::kFloors, &floors);
  if (status != ENG_OK) return status;
  if (!floors.empty()) {
    WireReader reader(floors);
    reader.Skip(4 * sizeof(std::uint64_t) + (part == Part::kData ? 0 : sizeof(std::uint64_t)));
    last = std::max(last, reader.Take<std::uint64_t>());
    if (!reader.good()) return ENG_ERR_DB_DAMAGED;
  }
  *moment = Unpack(last);
  return ENG_OK;
}

// A change takes its time while it holds the write lock. Whoever gets the lock knows that every later change carries a
// later time than now; without it only the last committed time is certain.
ENGSTATUS SqliteStore::SearchHorizon(TIMEDATE* moment) {
  std::uint64_t feed = 0;
  std::uint64_t last = 0;
  ENGSTATUS status = LastEntry(&feed, &last);
  if (status != ENG_OK) return status;
  if (ReadOnly()) status = ENG_ERR_DB_READ_ONLY;
  if (status == ENG_OK && !InTransaction()) {
    sqlite3_busy_timeout(connection_.get(), 0);
    status = Run(Sql::kBegin);
    sqlite3_busy_timeout(connection_.get(), BusyMilliseconds());
    if (status == ENG_OK) status = Run(Sql::kCommit);
  }
  const bool others_write = status == ENG_ERR_DB_IN_USE || status == ENG_ERR_DB_READ_ONLY;
  *moment = others_write ? Unpack(last) : Unpack(std::max(last, Pack(Now())));
  return others_write ? ENGSTATUS{ENG_OK} : status;
}

}  // namespace qcore
