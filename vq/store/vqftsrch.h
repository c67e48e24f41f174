// What a full text search is asked for, and what an update of the index did.
#ifndef QUILLON_VQ_STORE_VQFTSRCH_H
#define QUILLON_VQ_STORE_VQFTSRCH_H

#include "vq/frame/vqcommon.h"

struct FT_INDEX_STATS;

enum VQFTSORTORDER : unsigned long {
  VQFTSORTORDER_RELEVANCE = 8,
  VQFTSORTORDER_NEWEST_FIRST = 32,
  VQFTSORTORDER_OLDEST_FIRST = 96,
};

// By relevance, at most 250 documents, stemmed words.
class VQ_API VQFTSearchOptions : public VQQuillonClass {
 public:
  VQFTSearchOptions();
  VQFTSearchOptions(const VQFTSearchOptions& other);
  VQFTSearchOptions& operator=(const VQFTSearchOptions& other);
  VQCLASSID GetClassID() const override;

  // 0 is no limit.
  unsigned long GetMaxDocuments() const { return MaxDocuments; }
  // VQERR_INVALID_PARAMETER above 65,535.
  VQSTATUS SetMaxDocuments(unsigned long count);
  unsigned long GetSortOrder() const;
  // VQERR_INVALID_PARAMETER for a value that is none of VQFTSORTORDER.
  VQSTATUS SetSortOrder(unsigned long order);
  int GetStemWords() const { return (Options & kStem) != 0; }
  VQSTATUS SetStemWords(int on) { return SetOption(kStem, on); }
  int GetThesaurusWords() const { return (Options & kThesaurus) != 0; }
  VQSTATUS SetThesaurusWords(int on) { return SetOption(kThesaurus, on); }

  // For the library's own code: the engine's bits.
  unsigned long GetOptions() const { return Options; }

 private:
  static constexpr std::uint32_t kSortMask = 0x00E8;
  static constexpr std::uint32_t kBest = 0x0080;
  static constexpr std::uint32_t kStem = 0x0200;
  static constexpr std::uint32_t kThesaurus = 0x0400;

  // A limit keeps the best hits where they are sorted by relevance.
  void SettleLimit();
  VQSTATUS SetOption(std::uint32_t bit, int on);

  std::uint16_t MaxDocuments;
  std::uint32_t Options;
};

class VQ_API VQFTIndexStatistics : public VQQuillonClass {
 public:
  VQFTIndexStatistics();
  VQFTIndexStatistics(const VQFTIndexStatistics& other);
  VQFTIndexStatistics& operator=(const VQFTIndexStatistics& other);
  VQCLASSID GetClassID() const override;

  unsigned long GetDocumentsAdded() const { return DocumentsAdded; }
  unsigned long GetDocumentsUpdated() const { return DocumentsUpdated; }
  unsigned long GetDocumentsDeleted() const { return DocumentsDeleted; }
  unsigned long GetBytesIndexed() const { return BytesIndexed; }

  // For the library's own code.
  void Assign(const FT_INDEX_STATS& statistics);

 private:
  std::uint32_t DocumentsAdded;
  std::uint32_t DocumentsUpdated;
  std::uint32_t DocumentsDeleted;
  std::uint32_t BytesIndexed;
};

#endif
