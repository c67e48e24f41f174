// Full text searches of a view: a navigator over the hits.
#include "engine/fulltext.h"
#include "engine/idtable.h"
#include "engine/status.h"
#include "vq/store/vqftsrch.h"
#include "vq/values/vqstring.h"
#include "vq/views/viewbody.h"

namespace {

constexpr char kFile[] = "VNAVBODY";

VQSTATUS Search(ENGHANDLE database, ENGHANDLE collection, const VQString& query, const VQFTSearchOptions& options,
                ENGHANDLE restriction, std::uint32_t* hits, ENGHANDLE* table) {
  ENGHANDLE search = 0;
  ENGSTATUS result = EngFtOpen(&search);
  if (result != ENG_OK) return vq::FromEngine(result);
  const auto bits = static_cast<std::uint32_t>(options.GetOptions() | ENG_FT_COLLECTION | ENG_FT_TABLE |
                                               (restriction != 0 ? ENG_FT_REFINE : 0U));
  result = EngFtSearch(database, &search, collection, query.GetBuf(), bits,
                       static_cast<std::uint16_t>(options.GetMaxDocuments()), restriction, hits, nullptr, table);
  EngFtClose(search);
  if (result != ENG_OK && *table != 0) {
    EngIdTableDestroy(*table);
    *table = 0;
  }
  return (result & ENG_ERROR_MASK) == ENG_ERR_NO_HITS ? VQWARN_NOT_FOUND : vq::FromEngine(result);
}

}  // namespace

VQSTATUS VQVFNavigatorBody::FTSearch(const VQString& query, const VQFTSearchOptions* options,
                                     VQVFNavigatorBody* restriction) {
  VQ_ASSERT_TEXT(Collection != 0 && !query.IsNull() && !IsRestricted() && !IsSearch() && IDTable == 0,
                 "Collection && !query.IsNull() && !IsRestricted() && !IsSearch() && !IDTable", kFile);
  ENGHANDLE restricted_to = 0;
  const VQFTSearchOptions defaults;
  const VQFTSearchOptions& asked = options != nullptr ? *options : defaults;
  VQSTATUS status = restriction != nullptr ? restriction->GetTable(&restricted_to) : VQ_OK;
  std::uint32_t hits = 0;
  if (status == VQ_OK) {
    const ENGHANDLE entries = ViewFolder->GetEntryDatabase().GetDatabaseBody()->GetHandle();
    status = Search(entries, Collection, query, asked, restricted_to, &hits, &IDTable);
  }
  if (VQIsError(status)) {
    ReleaseAll();
    OpenStatus = status;
    return status;
  }
  Cache.Clear();
  EntryCount = status == VQ_OK ? hits : 0;
  Flags = static_cast<std::uint16_t>((Flags & ~kCategorized) | kFTSearch | kCountKnown);
  if ((asked.GetOptions() & ENG_FT_SCORES) != 0) Flags |= kScored;
  return status;
}

VQSTATUS VQViewFolder::SearchEntries(const VQString& query, VQVFNavigator* navigator, const VQFTSearchOptions* options,
                                     const VQVFNavigator* restriction) {
  VQViewFolderBody* body = nullptr;
  if (VQSTATUS status = CheckEntries(&body)) return status;
  if (query.IsNull()) return VQERR_NULL_STRING;
  if (navigator == nullptr) return VQERR_NULL_POINTER;
  VQVFNavigatorBody* limits = nullptr;
  // *navigator may be the restriction, and the only handle on it.
  VQVFNavigator keep;
  if (restriction != nullptr) {
    if (restriction->IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
    keep = *restriction;
    limits = keep.GetNavigatorBody();
    if (limits->GetCollectionHandle() == 0) return VQERR_MUST_BE_OPEN;
    // Identifiers of another database would name other documents.
    const VQDatabase& own = body->GetEntryDatabase();
    const VQDatabase& theirs = limits->GetViewFolderBody()->GetEntryDatabase();
    if (own.GetDatabaseBody() != theirs.GetDatabaseBody()) return VQERR_DIFFERENT_DATABASE;
  }
  VQVFNavigator found;
  const auto flags = static_cast<std::uint32_t>(body->GetOpenFlags() & ~VQVFOPENFLAGS_REBUILD_INDEX);
  VQSTATUS status = VQVFNavigatorBody::HandOut(body, nullptr, 0, flags, &found);
  if (status == VQ_OK) status = found.GetNavigatorBody()->FTSearch(query, options, limits);
  if (!VQIsError(status)) *navigator = found.GetNavigatorBody();
  return status;
}

VQSTATUS VQViewFolder::FTSearch(const VQString& query, VQVFNavigator* navigator) {
  return vq::Apply(SearchEntries(query, navigator, nullptr, nullptr));
}
VQSTATUS VQViewFolder::FTSearch(const VQString& query, VQVFNavigator* navigator, const VQFTSearchOptions& options) {
  return vq::Apply(SearchEntries(query, navigator, &options, nullptr));
}
VQSTATUS VQViewFolder::FTSearch(const VQString& query, VQVFNavigator* navigator, const VQFTSearchOptions& options,
                                const VQVFNavigator& restriction) {
  return vq::Apply(SearchEntries(query, navigator, &options, &restriction));
}
