// Plain text of composite records.
#ifndef QUILLON_QCORE_TEXT_COMPOSITE_H
#define QUILLON_QCORE_TEXT_COMPOSITE_H

#include <optional>
#include <string>
#include <string_view>

#include "qcore/text/utf8.h"

namespace qcore::text {

// A record's signature, of its high byte alone in byte and long form, and its length without the padding byte.
struct CompositeRecord {
  std::uint16_t signature;
  std::uint32_t length;
};
// The record at the front of `rest`; nothing for one that leads out of it or that is above the format's bound.
std::optional<CompositeRecord> RecordAt(Text rest);

// Text runs are joined. The separator stands for each paragraph record, each NUL in a run (a line break inside its
// paragraph), and in front of a table cell or behind a table where a line has been begun. Lines of more than
// `line_width` characters are folded with the separator, at a space where there is one; 0 folds nothing. Other records
// say nothing. Nothing for a record that leads out of the stretch or that is above the format's bound.
std::optional<std::string> FromComposite(Text records, std::string_view separator, std::uint16_t line_width);

}  // namespace qcore::text

#endif
