// The full-text index of a database: made, brought up to date from the change feed, deleted.
//
// It stands for the state of the database at one place of the change feed. An update goes in parts, each whole in the
// store with its place: one that is broken off or killed goes on from there the next time.
#ifndef QUILLON_QCORE_FULLTEXT_INDEX_H
#define QUILLON_QCORE_FULLTEXT_INDEX_H

#include <functional>

#include "engine/fulltext.h"
#include "qcore/store/database.h"

namespace qcore {

struct TextIndexState {
  std::uint64_t feed = 0;
  TIMEDATE updated{};
};

// With the mutex held. ENG_ERR_NO_FULL_TEXT.
[[nodiscard]] ENGSTATUS ReadTextIndexState(Database& database, TextIndexState* state);

enum class TextUpdate { kChanges, kAnew };
// Called between parts with the changes done and those to do; a status other than 0 breaks off and is returned.
using TextProgress = std::function<ENGSTATUS(std::uint32_t done, std::uint32_t all)>;

// Makes the index where there is none.
[[nodiscard]] ENGSTATUS UpdateTextIndex(Database& database, TextUpdate extent, const TextProgress& progress,
                                        FT_INDEX_STATS* statistics);
// ENG_ERR_NO_FULL_TEXT.
[[nodiscard]] ENGSTATUS DeleteTextIndex(Database& database);

}  // namespace qcore

#endif
