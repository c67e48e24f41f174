// The link table of a slate, which the links of its rich texts point into by position.
//
// It stands in the items "$Links", of a form or subform "$FormLinks": composite values with a record for each link. A
// link's record has its position behind the header, a link hotspot without such a record behind the fixed part of its
// own. Links keep their positions where the tables are equal or the target has none; else the links of the source are
// put behind those of the target, and positions change. Tables of other values are kept as they are and take no more.
#ifndef QUILLON_VQ_RICHTEXT_LINKTABLE_H
#define QUILLON_VQ_RICHTEXT_LINKTABLE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vq/frame/vqcommon.h"

class VQRTObjectBody;
class VQRichTextBody;
class VQSlateBody;

namespace vq {

class LinkTable {
 public:
  // Empty for a slate that has none.
  [[nodiscard]] VQSTATUS Read(VQSlateBody& slate);
  // Behind what the slate has; on failure nothing of it is there.
  [[nodiscard]] VQSTATUS Write(VQSlateBody& slate, std::vector<BLOCKID>* items = nullptr) const;
  // The records of all links; VQERR_WRONG_SITUATION for a table that has other values.
  [[nodiscard]] VQSTATUS GetLinks(std::vector<std::string>* links) const;
  void Add(const LinkTable& other) { Parts.insert(Parts.end(), other.Parts.begin(), other.Parts.end()); }
  static LinkTable Of(const std::string& records);
  bool IsEmpty() const { return Parts.empty(); }
  bool operator==(const LinkTable&) const = default;

 private:
  struct Part {
    std::uint16_t Type;
    std::uint16_t Flags;
    std::string Data;
    bool operator==(const Part&) const = default;
  };
  std::vector<Part> Parts;
};

bool IsLinkTableName(std::string_view name);

// Whether the object is, or holds, a link that points into a table.
bool HoldsLinks(const VQRTObjectBody& object);

// For an object on its way from one rich text to another: the links that it has stand in the target's table afterwards.
// VQERR_WRONG_SITUATION, and nothing is changed, for tables that cannot be joined, VQERR_OUT_OF_RANGE for too many
// links.
[[nodiscard]] VQSTATUS BringLinks(VQRTObjectBody& object, VQRichTextBody* source, VQRichTextBody* target);
// All links in an object lead nowhere afterwards.
[[nodiscard]] VQSTATUS LoseLinks(VQRTObjectBody& object);
// The same by a distance for all links in an object.
[[nodiscard]] VQSTATUS ShiftLinks(VQRTObjectBody& object, unsigned long distance);

}  // namespace vq

#endif
