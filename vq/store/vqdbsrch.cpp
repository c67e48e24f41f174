// VQDatabase: full text and unread lists.
#include <string>

#include "engine/folder.h"
#include "engine/fulltext.h"
#include "engine/idtable.h"
#include "engine/memory.h"
#include "engine/status.h"
#include "vq/frame/session.h"
#include "vq/store/storetext.h"
#include "vq/store/vqdoc.h"
#include "vq/store/vqftarr.h"
#include "vq/store/vqftsrch.h"

namespace {

constexpr std::size_t kLongestQuery = 65535;

using Teller = void (*)(void* context, unsigned long done, unsigned long all);

class SearchHandle {
 public:
  SearchHandle() : Status(vq::FromEngine(EngFtOpen(&Handle))) {}
  SearchHandle(const SearchHandle&) = delete;
  SearchHandle& operator=(const SearchHandle&) = delete;
  ~SearchHandle() {
    if (Handle != 0) EngFtClose(Handle);
  }

  ENGHANDLE Handle = 0;
  VQSTATUS Status;
};

struct Progress {
  Teller Tell;
  void* Context;
};

ENGSTATUS TellProgress(void* context, std::uint32_t done, std::uint32_t all) {
  const Progress& progress = *static_cast<Progress*>(context);
  if (progress.Tell != nullptr) progress.Tell(progress.Context, done, all);
  return ENG_OK;
}

}  // namespace

VQSTATUS VQDatabase::RunFTSearch(const VQString& query, VQDocumentArray* documents, const VQFTSearchOptions& options,
                                 ENGHANDLE restriction) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && documents == nullptr) status = VQERR_NULL_POINTER;
  const std::string text(vq::ViewOf(query));
  if (status == VQ_OK && text.empty()) status = VQERR_NULL_STRING;
  if (status == VQ_OK && text.size() > kLongestQuery) status = VQERR_STRING_TOO_LONG;
  if (status != VQ_OK) return status;
  SearchHandle search;
  if (search.Status != VQ_OK) return search.Status;
  auto bits = static_cast<std::uint32_t>(options.GetOptions());
  if (restriction != 0) bits |= ENG_FT_REFINE;
  std::uint32_t hits = 0;
  ENGHANDLE result = 0;
  const ENGSTATUS found =
      EngFtSearch(body->GetHandle(), &search.Handle, 0, reinterpret_cast<const ENGCHAR*>(text.c_str()), bits,
                  static_cast<std::uint16_t>(options.GetMaxDocuments()), restriction, &hits, nullptr, &result);
  const bool none = (found & ENG_ERROR_MASK) == ENG_ERR_NO_HITS;
  status = vq::FromEngine(found);
  if (status != VQ_OK && !none) return status;
  VQIDTable* table = nullptr;
  try {
    table = new VQFTArrayBody(result);
  } catch (...) {
    if (result != 0) EngMemFree(result);
    throw;
  }
  status = documents->Assign(body, table, VQSLATECLASS_DOCUMENT);
  return status == VQ_OK && none ? VQWARN_NOT_FOUND : status;
}

VQSTATUS VQDatabase::FTSearch(const VQString& query, VQDocumentArray* documents) const {
  return vq::Apply(RunFTSearch(query, documents, VQFTSearchOptions(), 0));
}

VQSTATUS VQDatabase::FTSearch(const VQString& query, VQDocumentArray* documents,
                              const VQFTSearchOptions& options) const {
  return vq::Apply(RunFTSearch(query, documents, options, 0));
}

VQSTATUS VQDatabase::FTSearch(const VQString& query, VQDocumentArray* documents, const VQFTSearchOptions& options,
                              const VQSlateArray& restriction) const {
  if (restriction.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (restriction.GetDatabase().GetDatabaseBody() != GetDatabaseBody()) return vq::Apply(VQERR_DIFFERENT_DATABASE);
  return vq::Apply(RunFTSearch(query, documents, options, restriction.GetIDTable()));
}

VQSTATUS VQDatabase::RunFTIndex(unsigned short options, VQFTIndexStatistics* statistics,
                                void (*progress)(void* context, unsigned long done, unsigned long all), void* context) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status != VQ_OK) return status;
  FT_INDEX_STATS done{};
  Progress teller{progress, context};
  status = vq::FromEngine(EngFtIndex(body->GetHandle(), options, TellProgress, &teller, &done));
  if (statistics != nullptr) statistics->Assign(done);
  return status;
}

VQSTATUS VQDatabase::CreateFTIndex(VQFTIndexStatistics* statistics,
                                   void (*progress)(void* context, unsigned long done, unsigned long all),
                                   void* context) {
  return vq::Apply(RunFTIndex(ENG_FT_INDEX_ANEW, statistics, progress, context));
}

VQSTATUS VQDatabase::UpdateFTIndex(VQFTIndexStatistics* statistics,
                                   void (*progress)(void* context, unsigned long done, unsigned long all),
                                   void* context) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  TIMEDATE indexed{};
  if (status == VQ_OK) status = vq::FromEngine(EngFtGetInfo(body->GetHandle(), &indexed));
  return vq::Apply(status == VQ_OK ? RunFTIndex(0, statistics, progress, context) : status);
}

VQSTATUS VQDatabase::DeleteFTIndex() {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK) status = vq::FromEngine(EngFtDeleteIndex(body->GetHandle()));
  return vq::Apply(status);
}

VQSTATUS VQDatabase::ReadUnread(const VQString& user, VQSlateArray* slates) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates == nullptr) status = VQERR_NULL_POINTER;
  ENGHANDLE table = 0;
  const std::string_view name = vq::ViewOf(user);
  if (status == VQ_OK && name.size() > UINT16_MAX) status = VQERR_STRING_TOO_LONG;
  if (status == VQ_OK) {
    status = vq::FromEngine(EngDbGetUnreadTable(body->GetHandle(), reinterpret_cast<const ENGCHAR*>(name.data()),
                                                static_cast<std::uint16_t>(name.size()), 1, &table));
  }
  return status == VQ_OK ? FillArray(table, VQSLATECLASS_DOCUMENT, slates) : status;
}

VQSTATUS VQDatabase::WriteUnread(const VQString& user, const VQSlateArray* before, const VQSlateArray& after) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  for (const VQSlateArray* slates : {before, &after}) {
    if (status != VQ_OK || slates == nullptr) continue;
    if (slates->IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
    if (status == VQ_OK && slates->GetDatabase().GetDatabaseBody() != body) status = VQERR_DIFFERENT_DATABASE;
  }
  const std::string_view name = vq::ViewOf(user);
  if (status == VQ_OK && name.size() > UINT16_MAX) status = VQERR_STRING_TOO_LONG;
  if (status != VQ_OK) return status;
  return vq::FromEngine(EngDbSetUnreadTable(body->GetHandle(), reinterpret_cast<const ENGCHAR*>(name.data()),
                                            static_cast<std::uint16_t>(name.size()),
                                            before != nullptr ? before->GetIDTable() : 0, after.GetIDTable()));
}

VQString VQDatabase::CurrentUser() const { return RequireOpen()->GetOwnerSession()->GetUserNameText(); }

VQSTATUS VQDatabase::GetUnreadList(VQSlateArray* slates) const {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return status == VQ_OK ? GetUnreadList(slates, CurrentUser()) : vq::Apply(status);
}
VQSTATUS VQDatabase::GetUnreadList(VQSlateArray* slates, const VQString& user) const {
  return vq::Apply(ReadUnread(user, slates));
}
VQSTATUS VQDatabase::SetUnreadList(const VQSlateArray& slates) {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return status == VQ_OK ? SetUnreadList(slates, CurrentUser()) : vq::Apply(status);
}
VQSTATUS VQDatabase::SetUnreadList(const VQSlateArray& slates, const VQString& user) {
  return vq::Apply(WriteUnread(user, nullptr, slates));
}
VQSTATUS VQDatabase::UpdateUnreadList(const VQSlateArray& before, const VQSlateArray& after) {
  VQDatabaseBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return status == VQ_OK ? UpdateUnreadList(before, after, CurrentUser()) : vq::Apply(status);
}
VQSTATUS VQDatabase::UpdateUnreadList(const VQSlateArray& before, const VQSlateArray& after, const VQString& user) {
  return vq::Apply(WriteUnread(user, &before, after));
}
