// VQVFNavigatorBody: moves, by code and by ordinal.
#include "engine/status.h"
#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/viewbody.h"

namespace {

constexpr unsigned kCodes = VQNAVIGATE_PREV_UNREAD_MAIN + 1;

// What the engine takes for a code in a navigator over rows as they stand in the view.
constexpr unsigned char kEngineCodes[kCodes] = {
    ENG_GO_CHILD,         ENG_GO_CURRENT,          ENG_GO_FIRST_PEER,
    ENG_GO_NEXT,          ENG_GO_LAST_PEER,        ENG_GO_MAIN,
    ENG_GO_NEXT,          ENG_GO_NEXT_CATEGORY,    ENG_GO_NEXT_MAIN,
    ENG_GO_NEXT_DOCUMENT, ENG_GO_NEXT_PARENT,      ENG_GO_NEXT_PEER,
    ENG_GO_NEXT_UNREAD,   ENG_GO_NEXT_UNREAD_MAIN, ENG_GO_PARENT,
    ENG_GO_PREV,          ENG_GO_PREV_CATEGORY,    ENG_GO_PREV_MAIN,
    ENG_GO_PREV_DOCUMENT, ENG_GO_PREV_PARENT,      ENG_GO_PREV_PEER,
    ENG_GO_PREV_UNREAD,   ENG_GO_PREV_UNREAD_MAIN,
};

bool IsUnreadCode(VQNAVIGATION code) {
  return code == VQNAVIGATE_NEXT_UNREAD || code == VQNAVIGATE_NEXT_UNREAD_MAIN || code == VQNAVIGATE_PREV_UNREAD ||
         code == VQNAVIGATE_PREV_UNREAD_MAIN;
}

// Codes that lead to the same move among hits, and among the rows of a find. None leads to `kNoMove`.
constexpr auto kNoMove = static_cast<VQNAVIGATION>(kCodes);

VQNAVIGATION AmongHits(VQNAVIGATION code) {
  switch (code) {
    case VQNAVIGATE_FIRST:
    case VQNAVIGATE_FIRST_SIBLING:
      return VQNAVIGATE_FIRST;
    case VQNAVIGATE_LAST:
    case VQNAVIGATE_LAST_SIBLING:
      return VQNAVIGATE_LAST;
    case VQNAVIGATE_MAIN:
      return VQNAVIGATE_MAIN;
    case VQNAVIGATE_NEXT:
    case VQNAVIGATE_NEXT_MAIN:
    case VQNAVIGATE_NEXT_DOCUMENT:
    case VQNAVIGATE_NEXT_SIBLING:
      return VQNAVIGATE_NEXT;
    case VQNAVIGATE_PREV:
    case VQNAVIGATE_PREV_MAIN:
    case VQNAVIGATE_PREV_DOCUMENT:
    case VQNAVIGATE_PREV_SIBLING:
      return VQNAVIGATE_PREV;
    case VQNAVIGATE_NEXT_UNREAD:
    case VQNAVIGATE_NEXT_UNREAD_MAIN:
      return VQNAVIGATE_NEXT_UNREAD;
    case VQNAVIGATE_PREV_UNREAD:
    case VQNAVIGATE_PREV_UNREAD_MAIN:
      return VQNAVIGATE_PREV_UNREAD;
    default:
      return kNoMove;
  }
}

// All rows of a find are peers: categories, or documents.
VQNAVIGATION AmongFound(VQNAVIGATION code, bool categories) {
  switch (code) {
    case VQNAVIGATE_NEXT_CATEGORY:
      return categories ? VQNAVIGATE_NEXT : kNoMove;
    case VQNAVIGATE_PREV_CATEGORY:
      return categories ? VQNAVIGATE_PREV : kNoMove;
    case VQNAVIGATE_MAIN:
    case VQNAVIGATE_NEXT_MAIN:
    case VQNAVIGATE_NEXT_DOCUMENT:
    case VQNAVIGATE_PREV_MAIN:
    case VQNAVIGATE_PREV_DOCUMENT:
    case VQNAVIGATE_NEXT_UNREAD_MAIN:
    case VQNAVIGATE_PREV_UNREAD_MAIN:
      return categories ? kNoMove : AmongHits(code);
    default:
      return AmongHits(code);
  }
}

void StepOver(std::uint32_t* ordinal, std::uint32_t first, std::uint32_t count, VQNAVIGATION code, bool* moved) {
  const std::uint32_t last = first + count - 1;
  *moved = code == VQNAVIGATE_NEXT ? *ordinal < last : *ordinal > first;
  if (*moved) *ordinal += code == VQNAVIGATE_NEXT ? 1U : ~0U;
}

}  // namespace

bool VQVFNavigatorBody::IsBackward(VQNAVIGATION code) {
  return code == VQNAVIGATE_FIRST_SIBLING || code == VQNAVIGATE_LAST || code == VQNAVIGATE_MAIN ||
         code >= VQNAVIGATE_PARENT;
}

VQSTATUS VQVFNavigatorBody::Translate(VQNAVIGATION* code) const {
  const bool category_code = *code == VQNAVIGATE_NEXT_CATEGORY || *code == VQNAVIGATE_PREV_CATEGORY;
  if (IsFTSearch()) {
    *code = AmongHits(*code);
  } else if (IsFind()) {
    *code = AmongFound(*code, HasFlag(kCategorized));
  } else if (category_code && !HasFlag(kCategorized)) {
    *code = kNoMove;
  }
  return *code == kNoMove ? VQWARN_NOT_FOUND : VQ_OK;
}

// The hit's number is the place.
VQSTATUS VQVFNavigatorBody::PlanHit(VQNAVIGATION code, vq::NavigatorMove* move) const {
  bool moved = true;
  std::uint32_t* hit = &move->From.Tumbler[0];
  move->Exact = code == VQNAVIGATE_MAIN;
  if (code == VQNAVIGATE_FIRST) *hit = 1;
  if (code == VQNAVIGATE_LAST) *hit = EntryCount;
  if (code == VQNAVIGATE_NEXT || code == VQNAVIGATE_PREV) StepOver(hit, 1, EntryCount, code, &moved);
  if (IsUnreadCode(code)) {
    move->Skip = code == VQNAVIGATE_NEXT_UNREAD ? ENG_GO_NEXT_UNREAD_HIT : ENG_GO_PREV_UNREAD_HIT;
    move->SkipCount = 1;
    move->MustMove = true;
  }
  return moved ? VQ_OK : VQWARN_NOT_FOUND;
}

VQSTATUS VQVFNavigatorBody::PlanFound(VQNAVIGATION code, vq::NavigatorMove* move) const {
  const COLLECTIONPOSITION& start = *StartPosition.GetPosition();
  const std::uint32_t first = start.Tumbler[start.Level];
  std::uint32_t* ordinal = &move->From.Tumbler[start.Level];
  bool moved = true;
  if (code == VQNAVIGATE_FIRST) *ordinal = first;
  if (code == VQNAVIGATE_LAST) *ordinal = first + EntryCount - 1;
  if (code == VQNAVIGATE_NEXT || code == VQNAVIGATE_PREV) StepOver(ordinal, first, EntryCount, code, &moved);
  if (code == VQNAVIGATE_MAIN || IsUnreadCode(code)) {
    move->Skip = static_cast<unsigned short>(kEngineCodes[code] | LimitBits());
    move->SkipCount = 1;
    move->MustMove = true;
  }
  return moved ? VQ_OK : VQWARN_NOT_FOUND;
}

VQSTATUS VQVFNavigatorBody::IsCategoryAt(const COLLECTIONPOSITION& position, bool* category) {
  COLLECTIONPOSITION at = position;
  vq::EntryRows rows;
  const VQSTATUS status = ReadEntries(&at, ENG_GO_CURRENT, 0, ENG_GO_CURRENT, 1, ENG_READ_ID, &rows.Buffer,
                                      &rows.Length, nullptr, &rows.Returned, nullptr);
  if (status != VQ_OK) return status;
  const unsigned char* bytes = rows.Lock();
  if (bytes == nullptr || rows.Length < sizeof(std::uint32_t)) return VQERR_READ_ENTRIES;
  const std::uint32_t id = vq::LoadLong(bytes);
  *category = (id & ENG_ROW_NO_DOCUMENT) != 0 && (id & ENG_ROW_TOTAL) == 0;
  return VQ_OK;
}

// From a category the engine knows no main topic: the first document below is the one.
VQSTATUS VQVFNavigatorBody::PlanFromCategory(VQNAVIGATION code, vq::NavigatorMove* move) {
  bool category = false;
  if (VQSTATUS status = IsCategoryAt(move->From, &category)) return status;
  if (!category) return VQ_OK;
  if (code == VQNAVIGATE_MAIN) return VQWARN_NOT_FOUND;
  const auto next_document = static_cast<unsigned short>(ENG_GO_NEXT_DOCUMENT | LimitBits());
  if (code == VQNAVIGATE_NEXT_MAIN) {
    move->Skip = next_document;
    return VQ_OK;
  }
  COLLECTIONPOSITION at = move->From;
  vq::EntryRows rows;
  const VQSTATUS status = ReadEntries(&at, next_document, 1, ENG_GO_CURRENT, 1, ENG_READ_UNREAD, &rows.Buffer,
                                      &rows.Length, nullptr, &rows.Returned, nullptr);
  if (status != VQ_OK) return status;
  const unsigned char* bytes = rows.Lock();
  if (bytes == nullptr || rows.Length < sizeof(std::uint16_t)) return VQERR_READ_ENTRIES;
  move->From = at;
  Limit(&move->From);
  if ((bytes[0] | bytes[1]) != 0) {
    move->SkipCount = 0;
    move->MustMove = false;
  }
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::PlanGoto(VQNAVIGATION code, const VQVFPosition& position, vq::NavigatorMove* move) {
  *move = vq::NavigatorMove{*position.GetPosition(), ENG_GO_CURRENT, 0, false, IsBackward(code), false};
  if (IsFTSearch()) return PlanHit(code, move);
  Limit(&move->From);
  if (IsFind()) return PlanFound(code, move);
  move->Skip = static_cast<unsigned short>(kEngineCodes[code] | LimitBits());
  move->SkipCount = 1;
  move->MustMove = code != VQNAVIGATE_FIRST_SIBLING && code != VQNAVIGATE_LAST_SIBLING;
  if (code == VQNAVIGATE_FIRST || code == VQNAVIGATE_LAST) {
    move->From = *StartPosition.GetPosition();
    move->SkipCount = code == VQNAVIGATE_LAST ? vq::kToTheEnd : 0;
    move->Skip |= ENG_GO_CONTINUE;
    move->MustMove = false;
  }
  const bool from_category =
      code == VQNAVIGATE_MAIN || code == VQNAVIGATE_NEXT_MAIN || code == VQNAVIGATE_NEXT_UNREAD_MAIN;
  return from_category && HasFlag(kCategorized) ? PlanFromCategory(code, move) : VQ_OK;
}

vq::NavigatorMove VQVFNavigatorBody::PlanIndex(std::uint32_t index, std::uint32_t last_index,
                                               const VQVFPosition& position) const {
  const bool backward = index < last_index;
  const std::uint32_t distance = backward ? last_index - index : index - last_index;
  vq::NavigatorMove move{*StartPosition.GetPosition(), StepCode(false), index, false, false, true};
  if (IsFTSearch()) {
    move.From.Tumbler[0] = index + 1;
    move.SkipCount = 0;
    move.Backward = backward;
  } else if (index > distance) {
    move.From = *position.GetPosition();
    move.Skip = StepCode(backward);
    move.SkipCount = distance;
    move.Backward = backward;
  }
  Limit(&move.From);
  return move;
}

// One read that moves and, where an entry is wanted, fetches.
VQSTATUS VQVFNavigatorBody::MakeMove(const vq::NavigatorMove& move, VQVFPosition* position, VQVFEntry* entry) {
  COLLECTIONPOSITION at = move.From;
  vq::EntryRows rows;
  const bool wanted = entry != nullptr;
  const bool hits = IsFTSearch();
  const unsigned short here = hits ? ENG_GO_CURRENT_HIT : ENG_GO_CURRENT;
  const unsigned short navigation = hits && !move.Exact ? StepCode(move.Backward) : here;
  if (!wanted && hits && move.SkipCount == 0) {
    *position = &at;
    return VQ_OK;
  }
  // A place that was made from ordinals is looked at.
  const bool reads = wanted || move.SkipCount == 0;
  VQSTATUS status =
      ReadEntries(&at, move.Skip, move.SkipCount, navigation, reads ? 1 : 0, wanted ? EntryMask() : ENG_READ_ID,
                  reads ? &rows.Buffer : nullptr, &rows.Length, &rows.Skipped, &rows.Returned, &rows.Signals);
  if (status != VQ_OK) return status;
  if (move.MustMove && rows.Skipped == 0) return VQWARN_NOT_FOUND;
  if (move.Misses(at) || !Contains(at)) return VQWARN_NOT_FOUND;
  if (wanted) {
    const unsigned char* bytes = rows.Lock();
    vq::EntryRow row;
    std::size_t used = 0;
    if (bytes == nullptr) return VQERR_READ_ENTRIES;
    status = vq::ReadRow(bytes, rows.Length, hits, nullptr, &row, &used);
    if (status == VQ_OK) status = MakeEntry(at, row, entry);
  }
  if (status == VQ_OK) *position = &at;
  return status;
}

VQSTATUS VQVFNavigatorBody::Goto(VQNAVIGATION code, VQVFPosition* position, VQVFEntry* entry) {
  if (Collection == 0) return OpenStatus;
  if (IsEmpty()) return VQWARN_NOT_FOUND;
  if (static_cast<unsigned>(code) >= kCodes || !position->IsSet()) return VQERR_INVALID_PARAMETER;
  if (!Contains(*position->GetPosition())) return VQERR_INVALID_PARAMETER;
  if (IsUnreadCode(code) && UnreadTable == 0) return VQERR_UNREAD_LIST_REQUIRED;
  if (VQSTATUS status = Translate(&code)) return status;
  VQSTATUS status = Cache.GotoEntry(code, position, entry);
  if (status != VQWARN_NO_CACHE) return status;
  vq::NavigatorMove move;
  status = PlanGoto(code, *position, &move);
  return status == VQ_OK ? MakeMove(move, position, entry) : status;
}

VQSTATUS VQVFNavigatorBody::CheckPosition(const VQVFPosition& position) const {
  if (IsEmpty()) return VQERR_NO_ENTRIES;
  if (!position.IsSet()) return VQERR_UNINITIALIZED_ARGUMENT;
  return Contains(*position.GetPosition()) ? VQ_OK : VQERR_OUT_OF_RANGE;
}

VQSTATUS VQVFNavigatorBody::CheckRow(const COLLECTIONPOSITION& position) {
  if (IsFTSearch()) return VQ_OK;
  // The engine reads the first row from the place before it.
  if (position.Level == 0 && position.Tumbler[0] == 0) return VQERR_INVALID_PARAMETER;
  bool category = false;
  const VQSTATUS status = IsCategoryAt(position, &category);
  return status == VQWARN_NOT_FOUND ? VQERR_INVALID_PARAMETER : status;
}

VQSTATUS VQVFNavigatorBody::GetEntry(const VQVFPosition& position, bool cached, VQVFEntry* entry) {
  if (Collection == 0) return OpenStatus;
  if (entry == nullptr) return VQERR_NULL_POINTER;
  if (VQSTATUS status = CheckPosition(position)) return status;
  VQSTATUS status = Cache.GetEntry(position, entry, !cached);
  if (status != VQWARN_NO_CACHE) return status;
  const vq::NavigatorMove move{*position.GetPosition(), ENG_GO_CURRENT, 0, false, false, true};
  VQVFPosition reached;
  status = MakeMove(move, &reached, entry);
  return status == VQWARN_NOT_FOUND ? VQERR_INVALID_PARAMETER : status;
}

VQSTATUS VQVFNavigatorBody::GetIndexed(std::uint32_t index, std::uint32_t last_index, VQVFPosition* position,
                                       VQVFEntry* entry) {
  if (IsEmpty()) return VQERR_NO_ENTRIES;
  if (IsSearch() && index >= EntryCount) return VQERR_BAD_SUBSCRIPT;
  VQSTATUS status = Cache.GetIndexedEntry(index, last_index, position, entry);
  if (status == VQWARN_NO_CACHE) status = MakeMove(PlanIndex(index, last_index, *position), position, entry);
  return status == VQWARN_NOT_FOUND ? VQERR_BAD_SUBSCRIPT : status;
}
