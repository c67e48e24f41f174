#include "engine/fulltext.h"

#include <algorithm>

#include "qcore/abi/lookup.h"
#include "qcore/fulltext/index.h"
#include "qcore/fulltext/search.h"
#include "qcore/idtables/idtable.h"
#include "qcore/index/collection.h"
#include "qcore/memory/memory.h"
#include "qcore/store/wire.h"

using qcore::TextHit;
using qcore::TextSearch;
using qcore::abi::Guard;
using qcore::abi::WithStore;
using qcore::index::Collection;

namespace {

using Hits = std::vector<TextHit>;

ENGSTATUS MakeTable(const Hits& hits, ENGHANDLE* result) {
  std::vector<uint32_t> ids;
  for (const TextHit& hit : hits) ids.push_back(hit.id);
  std::sort(ids.begin(), ids.end());
  return qcore::idtable::Make(ids, result);
}

ENGSTATUS MakeBuffer(const Hits& hits, bool scores, ENGHANDLE* result) {
  const std::size_t each = sizeof(uint32_t) + (scores ? 1 : 0);
  const std::size_t size = ENG_FT_RESULT_HEADER + hits.size() * each;
  if (size > UINT32_MAX) return ENG_ERR_MEMORY;
  const ENGSTATUS status =
      qcore::memory::Allocate(qcore::Kind::kMemory, static_cast<uint32_t>(size), qcore::memory::Fill::kZero, result);
  if (status != ENG_OK) return status;
  const qcore::memory::LockedBlock block(*result);
  unsigned char* at = block.bytes();
  qcore::StoreLittle(at, static_cast<uint32_t>(hits.size()));
  at[4] = scores ? ENG_FT_RESULT_SCORES : 0;
  at += ENG_FT_RESULT_HEADER;
  for (const TextHit& hit : hits) {
    qcore::StoreLittle(at, hit.id);
    at += sizeof(uint32_t);
  }
  for (std::size_t i = 0; scores && i < hits.size(); ++i) at[i] = hits[i].score;
  return ENG_OK;
}

// Without an order of its own a search over rows goes by theirs.
ENGSTATUS GiveHits(Collection& rows, uint32_t options, Hits* found) {
  std::vector<qcore::index::Hit> hits;
  for (const TextHit& hit : *found) hits.push_back({hit.id, hit.score});
  ENGSTATUS status = ENG_OK;
  if ((options & (ENG_FT_SCORES | ENG_FT_BY_DATE)) == 0) status = rows.SortAsRows(&hits);
  if (status != ENG_OK) return status;
  for (std::size_t i = 0; i < hits.size(); ++i) (*found)[i] = {hits[i].id, static_cast<uint8_t>(hits[i].score)};
  return (options & ENG_FT_COLLECTION) != 0 ? rows.SetHits(std::move(hits)) : status;
}

}  // namespace

ENGSTATUS EngFtIndex(ENGHANDLE db, uint16_t options, ENGFTPROGRESS progress, void* context,
                     FT_INDEX_STATS* statistics) {
  if ((options & ~ENG_FT_INDEX_ANEW) != 0) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) {
    qcore::TextProgress tell;
    if (progress) tell = [&](uint32_t done, uint32_t all) { return progress(context, done, all); };
    const auto extent = options == 0 ? qcore::TextUpdate::kChanges : qcore::TextUpdate::kAnew;
    FT_INDEX_STATS done{};
    const ENGSTATUS status = qcore::UpdateTextIndex(*database, extent, tell, &done);
    if (statistics) *statistics = done;
    return status;
  });
}

ENGSTATUS EngFtDeleteIndex(ENGHANDLE db) {
  return WithStore(db, [](const auto& database) { return qcore::DeleteTextIndex(*database); });
}

ENGSTATUS EngFtGetInfo(ENGHANDLE db, TIMEDATE* last_indexed) {
  if (!last_indexed) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) {
    const std::lock_guard lock(database->mutex());
    qcore::TextIndexState state;
    const ENGSTATUS status = qcore::ReadTextIndexState(*database, &state);
    if (status == ENG_OK) *last_indexed = state.updated;
    return status;
  });
}

ENGSTATUS EngFtOpen(ENGHANDLE* search) {
  if (!search) return ENG_ERR_ARGUMENT;
  return Guard([&] { return TextSearch::Open(search); });
}

ENGSTATUS EngFtClose(ENGHANDLE search) {
  return Guard([&] { return TextSearch::Close(search); });
}

ENGSTATUS EngFtSearch(ENGHANDLE db, ENGHANDLE* search, ENGHANDLE collection, const ENGCHAR* query, uint32_t options,
                      uint16_t limit, ENGHANDLE table, uint32_t* hits, ENGHANDLE*, ENGHANDLE* result) {
  if (!search || !query || !hits || !result) return ENG_ERR_ARGUMENT;
  *hits = 0;
  *result = 0;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    const TextSearch* open = TextSearch::Find(*search);
    auto* rows = collection == 0 ? nullptr : Collection::Find(collection);
    if (!open || (collection != 0 && !rows)) return ENG_ERR_INVALID_HANDLE;
    if (rows && &rows->index().entries() != database.get()) return ENG_ERR_ARGUMENT;
    std::vector<uint32_t> documents;
    ENGSTATUS status = rows ? rows->Documents(&documents) : ENGSTATUS{ENG_OK};
    if (status != ENG_OK) return status;
    qcore::TextFilter keep;
    if (rows) keep = [&documents](uint32_t id) { return std::ranges::binary_search(documents, id); };
    Hits found;
    status = qcore::SearchText(*database, open->names(), reinterpret_cast<const char*>(query), options, limit, table,
                               keep, &found);
    if (status == ENG_OK && rows) status = GiveHits(*rows, options, &found);
    if (status == ENG_OK && found.empty()) status = ENG_ERR_NO_HITS;
    if (status != ENG_OK) return status;
    const bool scores = (options & ENG_FT_SCORES) != 0;
    status = (options & ENG_FT_TABLE) != 0 ? MakeTable(found, result) : MakeBuffer(found, scores, result);
    if (status == ENG_OK) *hits = static_cast<uint32_t>(found.size());
    return status;
  });
}
