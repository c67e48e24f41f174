// The shared body of number and time values: single entries of 8 bytes, then ranges of 16.
//
// Positions count the singles first and the ranges behind them. A damaged value (counts that its bytes do not hold)
// gives VQERR_CORRUPTED and is left alone. Statuses come without the throw rule.
#ifndef QUILLON_VQ_VALUES_RANGELIST_H
#define QUILLON_VQ_VALUES_RANGELIST_H

#include <cstdint>
#include <vector>

#include "vq/store/vqitem.h"

namespace vq {

class VQ_API RangeListBody : public VQItemBody {
 public:
  static constexpr unsigned long kSingleSize = 8;
  static constexpr unsigned long kRangeSize = 16;

  struct Counts {
    unsigned long Singles = 0;
    unsigned long Ranges = 0;
    unsigned long Total() const { return Singles + Ranges; }
  };
  [[nodiscard]] VQSTATUS GetCounts(Counts* counts);
  // The stored bytes of an entry: 8, or 16 for a range.
  [[nodiscard]] VQSTATUS ReadEntry(unsigned long index, unsigned char* entry, bool* is_range);
  // Writes over an entry of the same size.
  [[nodiscard]] VQSTATUS WriteEntry(unsigned long index, const unsigned char* entry, bool is_range);
  [[nodiscard]] VQSTATUS InsertSingles(unsigned long index, const unsigned char* entries, unsigned long count);
  // `index` counts all positions and is not below the number of singles.
  [[nodiscard]] VQSTATUS InsertRanges(unsigned long index, const unsigned char* entries, unsigned long count);
  [[nodiscard]] VQSTATUS DeleteEntries(unsigned long index, unsigned long count);
  [[nodiscard]] VQSTATUS SetSingle(const unsigned char* entry);
  [[nodiscard]] VQSTATUS SetRange(const unsigned char* entry);
  [[nodiscard]] VQSTATUS SetValueOf(RangeListBody& source);
  // Adds the other's singles and ranges, at one place each.
  [[nodiscard]] VQSTATUS InsertAll(unsigned long single_at, unsigned long range_at, RangeListBody& source);
  // A session is up and the value is there.
  [[nodiscard]] VQSTATUS CheckEditable() const;

 protected:
  RangeListBody(unsigned short single_type, unsigned short type, const void* value, unsigned long length);
  RangeListBody(unsigned short single_type, VQSlateBody* slate, std::string_view name, const ItemPlace& place);

 private:
  struct Lists {
    std::vector<unsigned char> Singles;
    std::vector<unsigned char> Ranges;
  };
  [[nodiscard]] VQSTATUS ReadLists(Lists* lists);
  [[nodiscard]] VQSTATUS WriteLists(const Lists& lists);
  unsigned short ListType() const { return static_cast<unsigned short>(SingleType + 1); }

  std::uint16_t SingleType;
};

}  // namespace vq

#endif
