// The array that holds the hits of a full text search.
#ifndef QUILLON_VQ_STORE_VQFTARR_H
#define QUILLON_VQ_STORE_VQFTARR_H

#include "vq/store/vqidtab.h"

// The hits of a search in their order, with scores where the order was by relevance. The engine's table of them is
// made when it is first asked for. Changes give VQERR_INVALID_FOR_FULL_TEXT.
class VQ_API VQFTArrayBody : public VQIDTable {
 public:
  // Takes the engine's result buffer over; 0 is an empty result. VQERR_CORRUPTED, thrown, for a buffer that is too
  // small for what it says; it stays the caller's then.
  explicit VQFTArrayBody(ENGHANDLE result);
  ~VQFTArrayBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQFTARRAYBODY; }

  VQSTATUS Add(std::uint32_t id) override;
  VQSTATUS AddTable(ENGHANDLE table) override;
  int Contains(std::uint32_t id) override;
  unsigned long GetCount() override;
  std::uint32_t GetID(unsigned long index) override;
  ENGHANDLE GetHandle() override;
  VQSTATUS Remove(std::uint32_t id) override;
  VQSTATUS RemoveTable(ENGHANDLE table) override;
  VQSTATUS RemoveAll() override;
  int IsFullText() const override { return 1; }
  // Throws VQERR_BAD_SUBSCRIPT.
  unsigned short GetScore(unsigned long index) const override;

 private:
  VQSTATUS RefuseChange() const;

  std::uint32_t ResultCount = 0;
  ENGHANDLE ResultTable = 0;
  ENGHANDLE ResultBlock = 0;
  const unsigned char* Result = nullptr;
};

#endif
