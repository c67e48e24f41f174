// Searches in the full-text index.
#ifndef QUILLON_QCORE_FULLTEXT_SEARCH_H
#define QUILLON_QCORE_FULLTEXT_SEARCH_H

#include <functional>
#include <string_view>
#include <vector>

#include "engine/fulltext.h"
#include "qcore/slates/readers.h"
#include "qcore/store/database.h"

namespace qcore {

struct TextHit {
  std::uint32_t id;
  std::uint8_t score;  // 1 to 100, 0 without ENG_FT_SCORES
};

// What a search handle stands for: the names that its searches go by.
class TextSearch {
 public:
  [[nodiscard]] static ENGSTATUS Open(ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Close(ENGHANDLE handle);
  static void CloseAll();
  static TextSearch* Find(ENGHANDLE handle) { return handle_table.FindAs<TextSearch>(Kind::kTextSearch, handle); }

  const NamesList& names() const { return names_; }

 private:
  NamesList names_ = CurrentNames();
};

// Options and statuses are those of EngFtSearch; `table` counts with ENG_FT_REFINE. No hits give ENG_OK and an empty
// list; `keep` (may be null) says of each hit whether it counts, before the limit does.
using TextFilter = std::function<bool(std::uint32_t id)>;
[[nodiscard]] ENGSTATUS SearchText(Database& database, const NamesList& names, std::string_view query,
                                   std::uint32_t options, std::uint16_t limit, ENGHANDLE table, const TextFilter& keep,
                                   std::vector<TextHit>* hits);

}  // namespace qcore

#endif
