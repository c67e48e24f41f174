// Slate rows and searches of the SQLite store.
#include <algorithm>
#include <array>

#include "qcore/store/checksum.h"
#include "qcore/store/moment.h"
#include "qcore/store/sqlite_sql.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::size_t kUniversalSize = 16;
constexpr std::uint64_t kDeletedState = std::uint64_t{1} << 32;
constexpr std::uint32_t kSlateStep = 4;
constexpr std::uint16_t kClassDocument = 1;
constexpr std::uint64_t kLastSlate = 0x7FFFFFF8;  // bit 31 of an ID marks deletion in lists

using UniversalBytes = std::array<std::uint8_t, kUniversalSize>;

// Big-endian with the date words first, so that slates made one behind another lie together in the index.
UniversalBytes PackUniversal(const TIMEDATE& file, const TIMEDATE& slate) {
  UniversalBytes bytes;
  const std::uint64_t words[] = {Pack(file), Pack(slate)};
  for (std::size_t i = 0; i < kUniversalSize; ++i) {
    bytes[i] = static_cast<std::uint8_t>(words[i / 8] >> (56 - 8 * (i % 8)));
  }
  return bytes;
}

UNIVERSALSLATEID UnpackUniversal(Bytes bytes) {
  std::uint64_t words[2] = {0, 0};
  for (std::size_t i = 0; i < kUniversalSize; ++i) words[i / 8] = (words[i / 8] << 8) | bytes[i];
  return {Unpack(words[0]), Unpack(words[1])};
}

std::uint64_t PackState(const SlateHeader& header) {
  return std::uint64_t{header.slate_class} | std::uint64_t{header.flags} << 16 | (header.deleted ? kDeletedState : 0);
}

// Over all columns but the place in the feed, which the feed guards, and the packed value, which has its own.
std::uint32_t HeaderSum(const SlateHeader& header) {
  const UNIVERSALSLATEID parent = header.parent.value_or(UNIVERSALSLATEID{});
  const std::uint64_t words[] = {Pack(header.modified_here), PackState(header),      Pack(header.origin.File),
                                 Pack(header.origin.Slate),  header.origin.Sequence, Pack(header.origin.SequenceTime),
                                 Pack(header.modified),      Pack(header.added),     Pack(header.accessed),
                                 header.parent.has_value(),  Pack(parent.File),      Pack(parent.Slate)};
  std::array<std::uint8_t, sizeof words> bytes;
  for (std::size_t i = 0; i < std::size(words); ++i) StoreLittle(bytes.data() + 8 * i, words[i]);
  return Checksum(bytes, header.id);
}

using SumDigits = std::array<std::uint8_t, 10>;

// As ten digits, which SQLite reads as their number, so that all take the same room in the row: SQLite writes a row
// that keeps its length over the former one, in the pages that change.
SumDigits SumColumn(const SlateHeader& header) {
  SumDigits digits;
  std::uint32_t rest = HeaderSum(header);
  for (std::size_t i = digits.size(); i-- > 0; rest /= 10) digits[i] = static_cast<std::uint8_t>('0' + rest % 10);
  return digits;
}

bool TakeHeader(const Use& row, SlateHeader* header) {
  const std::uint64_t state = row.Number(2);
  const Bytes universal = row.Blob(3);
  if (universal.size() != kUniversalSize) return false;
  header->id = static_cast<std::uint32_t>(row.Number(0));
  header->modified_here = Unpack(row.Number(1));
  header->slate_class = static_cast<std::uint16_t>(state);
  header->flags = static_cast<std::uint16_t>(state >> 16);
  header->deleted = (state & kDeletedState) != 0;
  const UNIVERSALSLATEID id = UnpackUniversal(universal);
  header->origin = {id.File, id.Slate, static_cast<std::uint32_t>(row.Number(4)), Unpack(row.Number(5))};
  header->modified = Unpack(row.Number(6));
  header->added = Unpack(row.Number(7));
  header->accessed = Unpack(row.Number(8));
  header->parent.reset();
  if (!row.IsNull(9)) {
    const Bytes parent = row.Blob(9);
    if (parent.size() != kUniversalSize) return false;
    header->parent = UnpackUniversal(parent);
  }
  return static_cast<std::uint32_t>(row.Number(10)) == HeaderSum(*header);
}

// Parameters 1 to 9, the same in all statements that write a row.
void BindHeader(Use& use, const SlateHeader& header, std::uint64_t feed) {
  use.Bind(1, header.id);
  use.Bind(2, feed);
  use.Bind(3, Pack(header.modified_here));
  use.Bind(4, PackState(header));
  use.Bind(5, header.origin.Sequence);
  use.Bind(6, Pack(header.origin.SequenceTime));
  use.Bind(7, Pack(header.modified));
}

}  // namespace

std::optional<LogState> SqliteStore::Committed() const {
  return has_log_ && !InTransaction() ? ReadLogState(connection_.get()) : std::nullopt;
}

// A failure can have ended the transaction by itself.
const SlateHeader* SqliteStore::OwnRow(std::uint32_t id) const {
  const SlateHeader* header = own_.HeaderOf(id);
  return header && InTransaction() ? header : nullptr;
}

ENGSTATUS SqliteStore::ReadSlate(std::uint32_t id, const PackedReader& reader) {
  if (const SlateHeader* own = OwnRow(id)) return reader(*own, own_.packed());
  if (glance_.state && glance_.header.id == id && glance_.state == Committed()) {
    return reader(glance_.header, Bytes(glance_.packed));
  }
  Use use = Start(Sql::kReadSlate);
  use.Bind(1, id);
  if (!use.Row()) return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_NO_SLATE} : Result(use.code());
  SlateHeader header;
  if (!TakeHeader(use, &header)) return ENG_ERR_DB_DAMAGED;
  if (header.deleted) return ENG_ERR_SLATE_DELETED;
  return reader(header, use.Blob(11));
}

ENGSTATUS SqliteStore::ScanSlates(std::uint32_t first, const SlateScanner& scanner) {
  Use use = Start(Sql::kScanSlates);
  use.Bind(1, first);
  SlateHeader header;
  while (use.Row()) {
    if (!TakeHeader(use, &header)) continue;
    if (!scanner(header, use.Blob(11))) return ENG_OK;
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::HighestSlate(std::uint32_t* id) {
  *id = 0;
  Use use = Start(Sql::kHighestSlate);
  if (use.Row()) *id = static_cast<std::uint32_t>(use.Number(0));
  return Result(use.code());
}

ENGSTATUS SqliteStore::ReadHeader(std::uint32_t id, SlateHeader* header) {
  if (const SlateHeader* own = OwnRow(id)) {
    *header = *own;
    return ENG_OK;
  }
  const std::optional<LogState> before = Committed();
  glance_.state.reset();
  Use use = Start(Sql::kReadHeader);
  use.Bind(1, id);
  if (!use.Row()) return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_NO_SLATE} : Result(use.code());
  if (!TakeHeader(use, header)) return ENG_ERR_DB_DAMAGED;
  const Bytes packed = use.Blob(11);
  // The same state on both sides of the read is that of the read.
  if (before && !packed.empty() && before == Committed()) {
    glance_.packed.assign(packed.begin(), packed.end());
    glance_.header = *header;
    glance_.state = before;
  }
  return ENG_OK;
}

ENGSTATUS SqliteStore::NewSlateId(std::uint32_t* id) {
  if (counters_.slate >= kLastSlate) return ENG_ERR_DB_FULL;
  counters_.slate = (counters_.slate / kSlateStep + 1) * kSlateStep;
  *id = static_cast<std::uint32_t>(counters_.slate);
  return ENG_OK;
}

// Times never fall along the feed, even when the clock is put back: a search by time relies on it.
ENGSTATUS SqliteStore::Stamp(SlateHeader* header) {
  const ENGSTATUS status = MakeRoomInFeed();
  if (status != ENG_OK) return status;
  const TIMEDATE now = Now();
  if (Pack(now) > Pack(counters_.here)) counters_.here = now;
  header->modified_here = counters_.here;
  ++counters_.feed;
  return ENG_OK;
}

ENGSTATUS SqliteStore::InsertSlate(SlateHeader* header, Bytes packed) {
  const ENGSTATUS stamped = Stamp(header);
  if (stamped != ENG_OK) return stamped;
  Use use = Start(Sql::kInsertSlate);
  BindHeader(use, *header, counters_.feed);
  use.Bind(8, Pack(header->added));
  use.Bind(9, Pack(header->accessed));
  use.Bind(10, packed);
  const UniversalBytes universal = PackUniversal(header->origin.File, header->origin.Slate);
  use.Bind(11, Bytes(universal));
  UniversalBytes parent;
  if (header->parent) parent = PackUniversal(header->parent->File, header->parent->Slate);
  header->parent ? use.Bind(12, Bytes(parent)) : use.BindNull(12);
  const SumDigits sum = SumColumn(*header);
  use.Bind(13, Bytes(sum));
  const ENGSTATUS status = Finish(use);
  if (status != ENG_OK) return status;
  NoteChange(*header, Trace::kSlate);
  own_.KeepRow(*header, packed);
  return ENG_OK;
}

ENGSTATUS SqliteStore::UpdateSlate(SlateHeader* header, Bytes packed, const SlateVersion* expected) {
  const ENGSTATUS stamped = Stamp(header);
  if (stamped != ENG_OK) return stamped;
  const bool same_place = expected && expected->same_place;
  {
    // Columns that do not change stay out of the statement, and their index pages unwritten.
    Use use = Start(same_place ? Sql::kUpdateSlate : Sql::kUpdateSlateAll);
    BindHeader(use, *header, counters_.feed);
    use.Bind(8, Pack(header->added));
    use.Bind(9, Pack(header->accessed));
    use.Bind(10, packed);
    UniversalBytes universal;
    UniversalBytes parent;
    if (!same_place) {
      universal = PackUniversal(header->origin.File, header->origin.Slate);
      if (header->parent) parent = PackUniversal(header->parent->File, header->parent->Slate);
      use.Bind(11, Bytes(universal));
      header->parent ? use.Bind(12, Bytes(parent)) : use.BindNull(12);
    }
    if (expected) {
      use.Bind(13, expected->sequence);
      use.Bind(14, Pack(expected->sequence_time));
    } else {
      use.BindNull(13);
      use.BindNull(14);
    }
    const SumDigits sum = SumColumn(*header);
    use.Bind(15, Bytes(sum));
    const ENGSTATUS status = Finish(use);
    if (status != ENG_OK) return status;
  }
  if (sqlite3_changes(connection_.get()) != 1) return UpdateMisses(header->id);
  NoteChange(*header, Trace::kSlate);
  own_.KeepRow(*header, packed);
  return ENG_OK;
}

ENGSTATUS SqliteStore::LastRenamed(std::uint64_t* feed) {
  std::vector<std::uint8_t> bytes;
  const ENGSTATUS status = GetSetting(Setting::kRenamed, &bytes);
  WireReader reader(bytes);
  *feed = bytes.empty() ? 0 : reader.Take<std::uint64_t>();
  if (status != ENG_OK) return status;
  return bytes.empty() || reader.good() ? ENG_OK : ENG_ERR_DB_DAMAGED;
}

ENGSTATUS SqliteStore::NoteRenamed() {
  std::vector<std::uint8_t> bytes;
  WireWriter(&bytes).Put(counters_.feed);
  return SetSetting(Setting::kRenamed, bytes);
}

ENGSTATUS SqliteStore::UpdateMisses(std::uint32_t id) {
  SlateHeader present;
  const ENGSTATUS status = ReadHeader(id, &present);
  if (status != ENG_OK) return status;
  return present.deleted ? ENG_ERR_SLATE_DELETED : ENG_ERR_SLATE_CONFLICT;
}

ENGSTATUS SqliteStore::DropBelongings(const SlateHeader& header) {
  const ENGSTATUS status = DropFromLists(header.id);
  if (status != ENG_OK || header.slate_class == kClassDocument) return status;
  const std::uint64_t first = FirstPageOf(header.id);
  return DropPages(first, first + kPagesOfSlate - 1);
}

ENGSTATUS SqliteStore::MakeDeletionStub(SlateHeader* header) {
  header->deleted = true;
  header->parent.reset();
  ENGSTATUS status = Stamp(header);
  if (status == ENG_OK) status = DropBelongings(*header);
  if (status != ENG_OK) return status;
  Use use = Start(Sql::kMakeDeletionStub);
  BindHeader(use, *header, counters_.feed);
  const SumDigits sum = SumColumn(*header);
  use.Bind(8, Bytes(sum));
  const ENGSTATUS made = Finish(use);
  if (made == ENG_OK) NoteChange(*header, Trace::kSlate);
  return made;
}

ENGSTATUS SqliteStore::RemoveSlate(const SlateHeader& header) {
  SlateHeader gone = header;
  const ENGSTATUS stamped = Stamp(&gone);
  if (stamped != ENG_OK) return stamped;
  (header.slate_class == 1 ? counters_.removed_data : counters_.removed_design) = gone.modified_here;
  floors_changed_ = true;
  const ENGSTATUS status = DropBelongings(header);
  if (status != ENG_OK) return status;
  Use use = Start(Sql::kRemoveSlate);
  use.Bind(1, header.id);
  const ENGSTATUS removed = Finish(use);
  gone.deleted = true;
  if (removed == ENG_OK) NoteChange(gone, Trace::kNone);
  return removed;
}

ENGSTATUS SqliteStore::FindUniversal(const UNIVERSALSLATEID& universal, std::uint32_t* id) {
  const UniversalBytes bytes = PackUniversal(universal.File, universal.Slate);
  Use use = Start(Sql::kFindUniversal);
  use.Bind(1, Bytes(bytes));
  if (!use.Row()) return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_NO_SLATE} : Result(use.code());
  *id = static_cast<std::uint32_t>(use.Number(0));
  return ENG_OK;
}

ENGSTATUS SqliteStore::FindResponses(const UNIVERSALSLATEID& parent, std::vector<std::uint32_t>* ids) {
  const UniversalBytes bytes = PackUniversal(parent.File, parent.Slate);
  Use use = Start(Sql::kFindResponses);
  use.Bind(1, Bytes(bytes));
  while (use.Row()) ids->push_back(static_cast<std::uint32_t>(use.Number(0)));
  return Result(use.code());
}

ENGSTATUS SqliteStore::FindDesign(std::uint16_t mask, std::vector<FeedEntry>* entries) {
  Use use = Start(Sql::kFindDesign);
  use.Bind(1, mask);
  while (use.Row()) {
    const std::uint64_t state = use.Number(1);
    entries->push_back(
        {static_cast<std::uint32_t>(use.Number(0)), static_cast<std::uint16_t>(state), (state & kDeletedState) != 0});
  }
  return Result(use.code());
}

}  // namespace qcore
