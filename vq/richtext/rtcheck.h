// What must hold before a tree is written, so that the parser takes the records back.
#ifndef QUILLON_VQ_RICHTEXT_RTCHECK_H
#define QUILLON_VQ_RICHTEXT_RTCHECK_H

#include <array>

#include "vq/richtext/rtfwd.h"
#include "vq/richtext/rttype.h"

namespace vq {

// Whether a client may put an object of the type into a text: other types are parts of some structure, which without
// it nobody could read.
bool StandsAlone(VQRTTYPE type);

// Whether a record of the type opens a structure in the stream, or closes one.
bool ChangesNesting(VQRTTYPE type);

bool IsGraphicHeader(VQRTTYPE type);
// A header or a part of one.
bool IsGraphicRecord(VQRTTYPE type);
// The header that a part belongs to.
VQRTTYPE GraphicHeaderOf(VQRTTYPE part);

// The object's type as the parser will see it, for an opaque record by its signature.
VQRTTYPE StreamType(const VQRTObjectBody& object);

// The length for the header of an object whose fixed part is written anew: what its record has behind that stays in it.
std::uint32_t LengthWithRest(const VQRTObjectBody& object, unsigned short code);

// The parser's stack as the objects make it in stream order.
class StreamCheck {
 public:
  // VQERR_RT_INVALID for a record whose header claims other bytes than are there, VQERR_RT_CORRUPT_TABLE for cells and
  // table ends outside of tables, VQERR_RT_CORRUPT_GRAPHIC for parts of a graphic in a wrong order,
  // VQERR_RT_STACK_OVERFLOW for too deep a nesting.
  [[nodiscard]] VQSTATUS Take(const VQRTObjectBody& object);
  // At the end.
  bool IsClosed() const { return Depth == 0; }
  // Ahead of records that open and close for themselves.
  bool IsOutside() const { return Depth == 0 && Graphic == VQRTTYPE_NONE; }

 private:
  static constexpr unsigned kMostOpen = 10;

  VQRTTYPE Top() const { return Depth == 0 ? VQRTTYPE_NONE : Open[Depth - 1]; }
  [[nodiscard]] VQSTATUS TakeType(VQRTTYPE type);
  [[nodiscard]] VQSTATUS TakeCell();
  [[nodiscard]] VQSTATUS TakeGraphicRecord(VQRTTYPE type);
  [[nodiscard]] VQSTATUS Push(VQRTTYPE type);
  VQSTATUS Pop();

  std::array<VQRTTYPE, kMostOpen> Open{};
  unsigned Depth = 0;
  VQRTTYPE Graphic = VQRTTYPE_NONE;  // or the header in it, until a record of another kind
  bool SegmentsOver = false;
};

}  // namespace vq

#endif
