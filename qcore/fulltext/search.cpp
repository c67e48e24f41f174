#include "qcore/fulltext/search.h"

#include <algorithm>
#include <cmath>

#include "qcore/fulltext/document.h"
#include "qcore/fulltext/index.h"
#include "qcore/fulltext/matcher.h"
#include "qcore/fulltext/query.h"
#include "qcore/idtables/idtable.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::uint32_t kKnownOptions = ENG_FT_COLLECTION | ENG_FT_REFINE | ENG_FT_SCORES | ENG_FT_TABLE |
                                        ENG_FT_BY_DATE | ENG_FT_OLDEST | ENG_FT_BEST | ENG_FT_STEM | ENG_FT_THESAURUS;
constexpr double kBestScore = 100;

struct Candidate {
  std::uint32_t id;
  bool guarded;
  double rank;
  std::uint64_t made = 0;
};

class Search {
 public:
  Search(Database& database, const NamesList& names, const TextQuery& query, std::uint32_t options)
      : database_(database), names_(names), query_(query), options_(options) {}

  // With the mutex held, in one state of the store.
  ENGSTATUS Run(ENGHANDLE table, const TextFilter& keep, std::uint16_t limit) {
    ENGSTATUS status = database_.store().BeginRead();
    if (status != ENG_OK) return status;
    status = ListChanged();
    if (status == ENG_OK) status = List(table, keep);
    if (status == ENG_OK) status = DropUnfit();
    const bool by_date = (options_ & (ENG_FT_SCORES | ENG_FT_BY_DATE)) == ENG_FT_BY_DATE;
    const bool limited = limit != 0 && limit < candidates_.size();
    if (limited && (options_ & ENG_FT_BEST) == 0) Cut(limit, &ById);
    if (status == ENG_OK && by_date) status = ReadDates();
    database_.store().EndRead();
    if (status != ENG_OK) return status;
    if ((options_ & ENG_FT_SCORES) != 0) {
      Cut(limit, &ByRank);
    } else if (by_date) {
      Cut(limit, (options_ & ENG_FT_OLDEST) != 0 ? &OldestFirst : &NewestFirst);
    } else {
      Cut(limit, &ById);
    }
    return ENG_OK;
  }

  std::vector<TextHit> TakeHits() const {
    double best = 0;
    for (const Candidate& candidate : candidates_) best = std::min(best, candidate.rank);
    std::vector<TextHit> hits;
    hits.reserve(candidates_.size());
    for (const Candidate& candidate : candidates_) {
      double score = 0;
      if ((options_ & ENG_FT_SCORES) != 0) {
        score = best < 0 ? std::clamp(std::round(kBestScore * candidate.rank / best), 1.0, kBestScore) : kBestScore;
      }
      hits.push_back({candidate.id, static_cast<std::uint8_t>(score)});
    }
    return hits;
  }

 private:
  using Order = bool (*)(const Candidate&, const Candidate&);

  static bool ById(const Candidate& a, const Candidate& b) { return a.id < b.id; }
  static bool ByRank(const Candidate& a, const Candidate& b) { return a.rank != b.rank ? a.rank < b.rank : ById(a, b); }
  static bool NewestFirst(const Candidate& a, const Candidate& b) {
    return a.made != b.made ? a.made > b.made : ById(a, b);
  }
  static bool OldestFirst(const Candidate& a, const Candidate& b) {
    return a.made != b.made ? a.made < b.made : ById(a, b);
  }

  // Sorts and keeps the first `limit`, 0 for all.
  void Cut(std::size_t limit, Order order) {
    if (limit != 0 && limit < candidates_.size()) {
      std::nth_element(candidates_.begin(), candidates_.begin() + static_cast<std::ptrdiff_t>(limit), candidates_.end(),
                       order);
      candidates_.resize(limit);
    }
    std::sort(candidates_.begin(), candidates_.end(), order);
  }

  ENGSTATUS ListChanged() {
    TextIndexState state;
    ENGSTATUS status = ReadTextIndexState(database_, &state);
    if (status != ENG_OK) return status;
    status = database_.store().ReadFeedBehind(
        state.feed, [this](const NumberedEntry& change) { changed_.push_back(change.entry.id); });
    std::sort(changed_.begin(), changed_.end());
    return status;
  }

  ENGSTATUS List(ENGHANDLE table, const TextFilter& keep) {
    const bool refined = (options_ & ENG_FT_REFINE) != 0;
    const auto rank = (options_ & ENG_FT_SCORES) != 0 ? Store::TextRank::kRanked : Store::TextRank::kNone;
    return database_.store().FindText(query_, rank, [&](const Store::TextHit& hit) {
      if (refined && !idtable::Contains(table, hit.slate)) return;
      if (keep && !keep(hit.slate)) return;
      candidates_.push_back({hit.slate, hit.guarded, hit.rank});
    });
  }

  // Readers, deletions since the index's state, and fields ask for the document itself. A damaged one is no hit: the
  // check of the database names it.
  ENGSTATUS DropUnfit() {
    const bool has_fields = HasFields(query_);
    Matcher matcher(query_);
    ENGSTATUS failure = ENG_OK;
    std::erase_if(candidates_, [&](const Candidate& candidate) {
      const bool changed = std::binary_search(changed_.begin(), changed_.end(), candidate.id);
      if (failure != ENG_OK || (!candidate.guarded && !changed && !has_fields)) return false;
      bool fits = false;
      const ENGSTATUS status = Fits(candidate.id, has_fields ? &matcher : nullptr, &fits);
      if (status != ENG_OK && !IsLost(status)) failure = status;
      return status != ENG_OK || !fits;
    });
    return failure;
  }

  ENGSTATUS Fits(std::uint32_t id, Matcher* matcher, bool* fits) {
    return database_.store().ReadSlate(id, [&](const SlateHeader& header, Bytes packed) {
      Readability readability{};
      ENGSTATUS status = CheckReaders(database_, header.id, packed, names_, &readability);
      *fits = readability.may_read;
      if (status != ENG_OK || !*fits || !matcher) return status;
      matcher->Clear();
      bool guarded = false;
      status = ReadStretches(
          database_, header.id, packed,
          [matcher](std::string_view item, std::string_view text) { matcher->Add(item, text); }, &guarded);
      *fits = matcher->Matches();
      return status;
    });
  }

  ENGSTATUS ReadDates() {
    for (Candidate& candidate : candidates_) {
      SlateHeader header;
      const ENGSTATUS status = database_.store().ReadHeader(candidate.id, &header);
      if (status != ENG_OK && !IsLost(status)) return status;
      candidate.made = status == ENG_OK ? Pack(header.origin.Slate) : 0;
    }
    return ENG_OK;
  }

  Database& database_;
  const NamesList& names_;
  const TextQuery& query_;
  std::uint32_t options_;
  std::vector<std::uint32_t> changed_;
  std::vector<Candidate> candidates_;
};

}  // namespace

ENGSTATUS TextSearch::Open(ENGHANDLE* handle) {
  auto search = std::make_unique<TextSearch>();
  *handle = handle_table.Insert(Kind::kTextSearch, search.get());
  if (*handle == 0) return ENG_ERR_TOO_MANY_HANDLES;
  search.release();
  return ENG_OK;
}

ENGSTATUS TextSearch::Close(ENGHANDLE handle) {
  const std::unique_ptr<TextSearch> search(static_cast<TextSearch*>(handle_table.Remove(Kind::kTextSearch, handle)));
  return search ? ENG_OK : ENG_ERR_INVALID_HANDLE;
}

void TextSearch::CloseAll() {
  for (ENGHANDLE handle : handle_table.All(Kind::kTextSearch)) static_cast<void>(Close(handle));
}

ENGSTATUS SearchText(Database& database, const NamesList& names, std::string_view text, std::uint32_t options,
                     std::uint16_t limit, ENGHANDLE table, const TextFilter& keep, std::vector<TextHit>* hits) {
  hits->clear();
  if ((options & ~kKnownOptions) != 0) return ENG_ERR_ARGUMENT;
  const bool refined = (options & ENG_FT_REFINE) != 0;
  if (refined && !handle_table.Find(Kind::kIdTable, table)) return ENG_ERR_INVALID_HANDLE;
  TextQuery query;
  ENGSTATUS status = ParseTextQuery(text, &query);
  if (status == ENG_OK && (options & ENG_FT_THESAURUS) != 0) status = AddSynonyms(&query);
  if (status != ENG_OK) return status;
  if ((options & ENG_FT_STEM) != 0) AddWordForms(&query);
  const std::lock_guard lock(database.mutex());
  Search search(database, names, query, options);
  status = search.Run(table, keep, limit);
  if (status == ENG_OK) *hits = search.TakeHits();
  return status;
}

}  // namespace qcore
