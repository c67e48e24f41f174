#include "qcore/index/collection.h"

#include <algorithm>
#include <unordered_map>

#include "qcore/folders/unread.h"
#include "qcore/idtables/idtable.h"
#include "qcore/index/find.h"
#include "qcore/index/rowbuffer.h"
#include "qcore/index/walk.h"

namespace qcore::index {

namespace {

constexpr std::uint32_t kMasks = ENG_READ_ID | ENG_READ_UNIVERSAL_ID | ENG_READ_CLASS | ENG_READ_SIBLINGS |
                                 ENG_READ_CHILDREN | ENG_READ_DESCENDANTS | ENG_READ_INDENT | ENG_READ_SCORE |
                                 ENG_READ_UNREAD | ENG_READ_POSITION | ENG_READ_SUMMARY;
constexpr std::uint16_t kOpenFlags = 0x0027;  // 0x0020 is accepted and asks for nothing

bool IsHitCode(std::uint16_t code) {
  code &= ENG_GO_MASK;
  return code == ENG_GO_NEXT_HIT || code == ENG_GO_PREV_HIT || code == ENG_GO_CURRENT_HIT ||
         code == ENG_GO_NEXT_UNREAD_HIT || code == ENG_GO_PREV_UNREAD_HIT;
}

// A read goes over rows or over hits, with no step from one to the other.
bool MixesHitsAndRows(std::uint16_t skip, std::uint16_t navigation) {
  const auto moves = [](std::uint16_t code) { return (code & ENG_GO_MASK) != ENG_GO_CURRENT; };
  return moves(skip) && moves(navigation) && IsHitCode(skip) != IsHitCode(navigation);
}

}  // namespace

Collection::Collection(std::shared_ptr<Database> design, std::shared_ptr<Database> entries, std::uint32_t view,
                       ENGHANDLE unread)
    : design_database_(std::move(design)),
      entries_(std::move(entries)),
      index_(ViewIndex::Find(design_database_, entries_, view)),
      unread_(unread) {
  for (const auto& database : {design_database_, entries_}) {
    const std::lock_guard lock(database->mutex());
    database->Register(this);
  }
}

Collection::~Collection() {
  // Others may hold the index; what they change later they write themselves. What is undone until then must be told.
  index_->Keep();
  for (const auto& database : {design_database_, entries_}) {
    const std::lock_guard lock(database->mutex());
    database->Unregister(this);
  }
}

ENGSTATUS Collection::Open(std::shared_ptr<Database> design, std::shared_ptr<Database> entries, std::uint32_t view,
                           std::uint16_t flags, ENGHANDLE unread, ENGHANDLE* handle) {
  if ((flags & ~kOpenFlags) != 0) return ENG_ERR_ARGUMENT;
  if (unread != 0 && !idtable::IsTable(unread)) return ENG_ERR_INVALID_HANDLE;
  if (view == 0) return ENG_ERR_NO_COLLECTION;
  auto collection = std::make_unique<Collection>(std::move(design), std::move(entries), view, unread);
  auto start = ViewIndex::Start::kUpdated;
  if ((flags & ENG_COLLECTION_NO_UPDATE) != 0) start = ViewIndex::Start::kAsKept;
  if ((flags & ENG_COLLECTION_REBUILD) != 0) start = ViewIndex::Start::kRebuilt;
  const bool create = (flags & ENG_COLLECTION_NO_CREATE) == 0;
  const ENGSTATUS status =
      collection->index_->Open(start, create ? ViewIndex::Missing::kBuild : ViewIndex::Missing::kRefuse);
  if (status != ENG_OK) return status;
  *handle = handle_table.Insert(Kind::kCollection, collection.get());
  if (*handle == 0) return ENG_ERR_TOO_MANY_HANDLES;
  collection->handle_ = *handle;
  collection.release();
  return ENG_OK;
}

ENGSTATUS Collection::Close(ENGHANDLE handle) {
  const std::unique_ptr<Collection> collection(
      static_cast<Collection*>(handle_table.Remove(Kind::kCollection, handle)));
  return collection ? ENG_OK : ENG_ERR_INVALID_HANDLE;
}

ENGSTATUS Collection::SetCollation(std::uint16_t number) {
  const ENGSTATUS status = index_->Prepare(number);
  if (status == ENG_OK) collation_ = number;
  return status;
}

ENGSTATUS Collection::Read(const ReadRequest& request, COLLECTIONPOSITION* position, ReadResult* result) {
  if (!Walk::IsCode(request.skip) || !Walk::IsCode(request.navigation) || (request.mask & ~kMasks) != 0 ||
      MixesHitsAndRows(request.skip, request.navigation)) {
    return ENG_ERR_ARGUMENT;
  }
  if (position->Level >= ENG_COLLECTION_LEVELS) return ENG_ERR_ARGUMENT;
  const COLLECTIONPOSITION start = *position;
  const bool hits = IsHitCode(request.skip) || IsHitCode(request.navigation);
  const auto read = [&](IndexTree& tree) {
    *position = start;
    *result = {};
    const ENGSTATUS status =
        hits ? ReadHits(tree, request, position, result) : ReadRows(tree, request, position, result);
    if (status != ENG_OK) *position = start;
    return status;
  };
  return index_->With(collation_, std::cref(read));
}

ENGSTATUS Collection::ReadRows(IndexTree& tree, const ReadRequest& request, COLLECTIONPOSITION* position,
                               ReadResult* result) {
  Walk walk(tree, unread_, &unread_rows_);
  const auto start = walk.SpotAt(*position);
  if (!start) return ENG_ERR_NO_ENTRY;
  Walk::Spot spot = *start;
  const bool to_end = request.skip_count == UINT32_MAX;
  result->skipped = walk.Go(request.skip, request.skip_count, Walk::LimitsOf(request.skip, *position), &spot);
  if (to_end && (request.skip & ENG_GO_MASK) == ENG_GO_CURRENT) result->skipped = 0;
  if (request.count == 0) {
    walk.SetPosition(spot, position);
    return ENG_OK;
  }
  const bool all = result->skipped == request.skip_count || (request.skip & ENG_GO_CONTINUE) != 0;
  if (!all || (spot == Walk::kBefore && tree.rows().rows() == 0)) return ENG_ERR_NO_ENTRY;
  if (spot == Walk::kBefore) spot = 0;
  COLLECTIONPOSITION here = *position;
  PageTree::Cursor cursor = tree.rows().At(static_cast<Rank>(spot));
  if (spot == *start + 1) {
    walk.AdvancePosition(cursor.level(), &here);
  } else if (spot != *start) {
    walk.SetPosition(spot, &here);
  }
  const Walk::Limits limits = Walk::LimitsOf(request.navigation, here);
  const std::uint16_t code = request.navigation & ENG_GO_MASK;
  const bool plain = code == ENG_GO_NEXT && limits.most >= kDeepestLevel;
  const bool within = code == ENG_GO_DESCENDANTS;
  const bool peers = code == ENG_GO_NEXT_PEER;
  Walk::Spot last = spot;
  const Walk::Spot end = within ? Walk::Spot{walk.EndOf(static_cast<Rank>(spot))} : Walk::Spot{tree.rows().rows()};
  RowBuffer buffer(tree, index_->layout(), *entries_, walk, unread_, request.mask, request.count);
  if (index_->marks_rows()) buffer.ExpandMarks();
  for (bool full = false;;) {
    full = !buffer.Add(static_cast<Rank>(spot), cursor, here, 0);
    if (full) {
      result->signals |= ENG_SIGNAL_MORE_TO_DO;
      walk.SetPosition(last, &here);
      break;
    }
    last = spot;
    if (++result->returned == request.count) break;
    if (plain || within) {
      if (spot + 1 >= end || !tree.rows().Next(&cursor) || cursor.level() < limits.least) break;
      ++spot;
      walk.AdvancePosition(cursor.level(), &here);
    } else if (peers) {
      PageTree::Cursor next;
      const Rank behind = walk.EndOf(static_cast<Rank>(spot), cursor, &next);
      if (!next.at_row() || next.level() < cursor.level()) break;
      cursor = next;
      spot = behind;
      ++here.Tumbler[here.Level];
    } else {
      if (code == ENG_GO_CURRENT || walk.Go(request.navigation, 1, limits, &spot) == 0) break;
      cursor = tree.rows().At(static_cast<Rank>(spot));
      walk.SetPosition(spot, &here);
    }
  }
  *position = here;
  result->rows = buffer.Take();
  return ENG_OK;
}

// Unread hits are those that have a row: what has left the view is none to stop at.
std::uint32_t Collection::GoHits(IndexTree& tree, std::uint16_t code, std::uint32_t count, std::uint32_t* hit) const {
  code &= ENG_GO_MASK;
  const auto last = static_cast<std::uint32_t>(hits_.size());
  const bool forward = code == ENG_GO_NEXT_HIT || code == ENG_GO_NEXT_UNREAD_HIT;
  const bool unread = code == ENG_GO_NEXT_UNREAD_HIT || code == ENG_GO_PREV_UNREAD_HIT;
  if (code == ENG_GO_CURRENT_HIT || code == ENG_GO_CURRENT) return count;
  std::uint32_t steps = 0;
  for (std::uint32_t at = *hit; steps < count;) {
    if (forward ? at >= last : at <= 1) break;
    forward ? ++at : --at;
    const std::uint32_t id = hits_[at - 1].id;
    if (unread && (unread_ == 0 || !idtable::Contains(unread_, id) || !tree.Has(id))) continue;
    *hit = at;
    ++steps;
  }
  return steps;
}

ENGSTATUS Collection::ReadHits(IndexTree& tree, const ReadRequest& request, COLLECTIONPOSITION* position,
                               ReadResult* result) {
  std::uint32_t hit = position->Tumbler[0];
  if (position->Level != 0 || hit > hits_.size()) return ENG_ERR_NO_ENTRY;
  result->skipped = GoHits(tree, request.skip, request.skip_count, &hit);
  const bool all = result->skipped == request.skip_count || (request.skip & ENG_GO_CONTINUE) != 0;
  if (request.count == 0) {
    position->Tumbler[0] = hit;
    return ENG_OK;
  }
  if (!all || hits_.empty()) return ENG_ERR_NO_ENTRY;
  hit = std::max(hit, 1u);
  Walk walk(tree, unread_, &unread_rows_);
  RowBuffer buffer(tree, index_->layout(), *entries_, walk, unread_, request.mask, request.count);
  if (index_->marks_rows()) buffer.ExpandMarks();
  for (std::uint32_t passed = 0;;) {
    const std::vector<PlannedRow> rows = tree.RowsOf(hits_[hit - 1].id);
    COLLECTIONPOSITION here = *position;
    here.Tumbler[0] = hit;
    // A document that has left the view since the search is passed over.
    if (!rows.empty()) {
      const Rank rank = tree.rows().RankOf(rows.front().row.key);
      if (!buffer.Add(rank, tree.rows().At(rank), here, hits_[hit - 1].score)) {
        result->signals |= ENG_SIGNAL_MORE_TO_DO;
        break;
      }
      *position = here;
      ++result->returned;
    } else if (++passed > hits_.size()) {
      break;
    }
    const std::uint16_t code = request.navigation & ENG_GO_MASK;
    const bool stays = code == ENG_GO_CURRENT_HIT || code == ENG_GO_CURRENT;
    if (result->returned == request.count || stays || GoHits(tree, code, 1, &hit) == 0) break;
  }
  result->rows = buffer.Take();
  return result->returned != 0 ? ENG_OK : ENG_ERR_NO_ENTRY;
}

ENGSTATUS Collection::FindByKey(const std::vector<Value>& keys, std::uint16_t flags, COLLECTIONPOSITION* position,
                                std::uint32_t* matches) {
  const auto look = [&] {
    return index_->With(collation_, [&](IndexTree& tree) {
      FindResult found;
      const ENGSTATUS status = index::Find(tree, keys, flags, matches ? Wanted::kMatches : Wanted::kPlace, &found);
      if (status != ENG_OK) return status;
      if (matches && !found.together) return ENGSTATUS{ENG_ERR_COUNT_UNSUPPORTED};
      *position = {};
      position->MaxLevel = ENG_COLLECTION_NO_LIMIT;
      Walk(tree.rows()).SetPosition(found.spot, position);
      if (matches) *matches = found.matches;
      return ENGSTATUS{ENG_OK};
    });
  };
  const ENGSTATUS status = look();
  if (status != ENG_ERR_NO_ENTRY || (flags & ENG_FIND_UPDATE) == 0) return status;
  const ENGSTATUS updated = Update();
  return updated == ENG_OK ? look() : updated;
}

ENGSTATUS Collection::GetChanges(std::uint64_t* since, std::vector<COLLECTIONCHANGE>* changes, bool* complete) {
  return index_->With(collation_, [&](IndexTree& tree) {
    *complete = true;
    changes->clear();
    std::vector<RowChange> rows;
    if (*since != 0) *complete = index_->ChangesBehind(collation_, *since, &rows);
    *since = index_->StartLog(collation_);
    Walk walk(tree.rows());
    for (const RowChange& row : rows) {
      COLLECTIONCHANGE change{};
      change.Kind = static_cast<std::uint16_t>(row.kind);
      change.Indent = row.row_kind == RowKind::kDocument ? row.indent : std::uint16_t{0};
      change.ID = row.row_kind == RowKind::kDocument ? row.id : NumberOfRow(row.row_kind, row.key);
      change.Position.MaxLevel = ENG_COLLECTION_NO_LIMIT;
      const bool here = row.kind != RowEvent::kRemoved && tree.rows().Has(row.key);
      walk.SetPosition(here ? Walk::Spot{tree.rows().RankOf(row.key)} : Walk::kBefore, &change.Position);
      changes->push_back(change);
    }
    return ENGSTATUS{ENG_OK};
  });
}

ENGSTATUS Collection::Update() {
  const ENGSTATUS status = index_->Update();
  if (status != ENG_OK || unread_ == 0) return status;
  bool changed = false;
  const ENGSTATUS refreshed = RefreshUnread(*entries_, unread_, &changed);
  return refreshed == ENG_ERR_MEMORY_LOCKED ? ENGSTATUS{ENG_OK} : refreshed;
}

ENGSTATUS Collection::SetHits(std::vector<Hit> hits) {
  return index_->With(collation_, [&](IndexTree& tree) {
    hits_ = hits;
    std::erase_if(hits_, [&tree](const Hit& hit) { return hit.id % 4 != 0 || !tree.Has(hit.id); });
    return ENGSTATUS{ENG_OK};
  });
}

ENGSTATUS Collection::SortAsRows(std::vector<Hit>* hits) {
  return index_->With(collation_, [&](IndexTree& tree) {
    std::unordered_map<std::uint32_t, Rank> ranks;
    for (const Hit& hit : *hits) {
      const std::vector<PlannedRow> rows = hit.id % 4 == 0 ? tree.RowsOf(hit.id) : std::vector<PlannedRow>();
      ranks[hit.id] = rows.empty() ? UINT32_MAX : tree.rows().RankOf(rows.front().row.key);
    }
    std::ranges::stable_sort(*hits, {}, [&ranks](const Hit& hit) { return ranks[hit.id]; });
    return ENGSTATUS{ENG_OK};
  });
}

ENGSTATUS Collection::Documents(std::vector<std::uint32_t>* ids) {
  std::uint32_t highest = 0;
  {
    const std::lock_guard lock(entries_->mutex());
    const ENGSTATUS status = entries_->store().HighestSlate(&highest);
    if (status != ENG_OK) return status;
  }
  return index_->With(collation_, [&](IndexTree& tree) {
    *ids = tree.Documents(highest);
    return ENGSTATUS{ENG_OK};
  });
}

}  // namespace qcore::index
