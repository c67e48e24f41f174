#include "vq/store/vqftsrch.h"

#include "engine/fulltext.h"

namespace {

constexpr std::uint16_t kDefaultLimit = 250;
constexpr unsigned long kHighestLimit = 65535;

}  // namespace

VQFTSearchOptions::VQFTSearchOptions()
    : MaxDocuments(kDefaultLimit), Options(VQFTSORTORDER_RELEVANCE | kBest | kStem) {}
VQFTSearchOptions::VQFTSearchOptions(const VQFTSearchOptions& other) = default;
VQFTSearchOptions& VQFTSearchOptions::operator=(const VQFTSearchOptions& other) = default;
VQCLASSID VQFTSearchOptions::GetClassID() const { return VQCLASSID_VQFTSEARCHOPTIONS; }

void VQFTSearchOptions::SettleLimit() {
  const bool best = MaxDocuments != 0 && (Options & VQFTSORTORDER_RELEVANCE) != 0;
  Options = best ? Options | kBest : Options & ~kBest;
}

VQSTATUS VQFTSearchOptions::SetMaxDocuments(unsigned long count) {
  if (count > kHighestLimit) return vq::Apply(VQERR_INVALID_PARAMETER);
  MaxDocuments = static_cast<std::uint16_t>(count);
  SettleLimit();
  return VQ_OK;
}

unsigned long VQFTSearchOptions::GetSortOrder() const {
  if ((Options & VQFTSORTORDER_RELEVANCE) != 0) return VQFTSORTORDER_RELEVANCE;
  return (Options & ENG_FT_OLDEST) != 0 ? VQFTSORTORDER_OLDEST_FIRST : VQFTSORTORDER_NEWEST_FIRST;
}

VQSTATUS VQFTSearchOptions::SetSortOrder(unsigned long order) {
  if (order != VQFTSORTORDER_RELEVANCE && order != VQFTSORTORDER_NEWEST_FIRST && order != VQFTSORTORDER_OLDEST_FIRST) {
    return vq::Apply(VQERR_INVALID_PARAMETER);
  }
  Options = (Options & ~kSortMask) | static_cast<std::uint32_t>(order);
  SettleLimit();
  return VQ_OK;
}

VQSTATUS VQFTSearchOptions::SetOption(std::uint32_t bit, int on) {
  Options = on != 0 ? Options | bit : Options & ~bit;
  return VQ_OK;
}

VQFTIndexStatistics::VQFTIndexStatistics()
    : DocumentsAdded(0), DocumentsUpdated(0), DocumentsDeleted(0), BytesIndexed(0) {}
VQFTIndexStatistics::VQFTIndexStatistics(const VQFTIndexStatistics& other) = default;
VQFTIndexStatistics& VQFTIndexStatistics::operator=(const VQFTIndexStatistics& other) = default;
VQCLASSID VQFTIndexStatistics::GetClassID() const { return VQCLASSID_VQFTINDEXSTATISTICS; }

void VQFTIndexStatistics::Assign(const FT_INDEX_STATS& statistics) {
  DocumentsAdded = statistics.DocsAdded;
  DocumentsUpdated = statistics.DocsUpdated;
  DocumentsDeleted = statistics.DocsDeleted;
  BytesIndexed = statistics.BytesIndexed;
}
