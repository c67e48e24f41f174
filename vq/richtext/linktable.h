// The link table of a slate, which the links of its rich texts point into by position.
//
// It stands in the items "$Links", of a form or subform "$FormLinks". Its records are kept as they are stored: links
// are not given other positions. A text with links comes into a slate whose table is another one not at all, rather
// than with links that lead elsewhere.
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
  // Into a slate that has none; on failure it still has none.
  [[nodiscard]] VQSTATUS Write(VQSlateBody& slate) const;
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

// For an object on its way from one rich text to another: the table goes along when the target has none.
// VQERR_WRONG_SITUATION, and nothing is changed, for links when both have tables and these differ.
[[nodiscard]] VQSTATUS BringLinks(const VQRTObjectBody& object, VQRichTextBody* source, VQRichTextBody* target);

}  // namespace vq

#endif
