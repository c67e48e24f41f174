// The texts of a stored slate that full text covers: text and text list items, names among them, and rich text. Items
// whose names start with "$" are the engine's and the library's own and are left out.
#ifndef QUILLON_QCORE_FULLTEXT_DOCUMENT_H
#define QUILLON_QCORE_FULLTEXT_DOCUMENT_H

#include <functional>
#include <string_view>

#include "qcore/store/database.h"

namespace qcore {

// Called for each stretch: a text, one entry of a list, one rich text item. What cannot be read as its type is left
// out.
using StretchReader = std::function<void(std::string_view item, std::string_view text)>;

// With the database's mutex held, over a stored row. `guarded` tells whether the slate has readers.
[[nodiscard]] ENGSTATUS ReadStretches(Database& database, std::uint32_t id, Bytes packed, const StretchReader& reader,
                                      bool* guarded);

}  // namespace qcore

#endif
