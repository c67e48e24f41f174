// Views as the commands show them.
#ifndef QUILLON_TOOLS_QUILLON_VIEWS_H
#define QUILLON_TOOLS_QUILLON_VIEWS_H

#include <string>
#include <vector>

#include "tools/quillon/command.h"
#include "tools/quillon/values.h"

namespace tool {

// The view or folder of that name, opened with VQViewFolder::Open's flags; Failure{kExitNotFound}.
void OpenView(const Options& options, VQDatabase& database, const std::string& name, VQViewFolder* view,
              unsigned long flags = 0);

// One row: its place, what it stands for, and the values of the columns that are not hidden.
struct ViewRow {
  std::string place;
  std::string kind;
  std::int64_t id;
  std::int64_t indent;
  std::int64_t score;
  bool unread;
  struct Cell {
    std::string title;
    bool filled;
    StoredItem value;
  };
  std::vector<Cell> cells;
};

ViewRow ReadViewRow(const VQVFEntry& entry, const VQViewFolder& view);
void PrintViewRow(const ViewRow& row);
void WriteViewRow(JsonWriter& json, const ViewRow& row);

struct RowRange {
  std::uint64_t from = 1;   // counted from 1
  std::uint64_t count = 0;  // 0: all
  bool categories = false;  // pass over other rows
};

void ShowRows(const Options& options, const VQViewFolder& view, VQVFNavigator& navigator, const RowRange& range);

}  // namespace tool

#endif
