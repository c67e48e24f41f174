// Views as the commands show them.
#ifndef QUILLON_TOOLS_QUILLON_VIEWS_H
#define QUILLON_TOOLS_QUILLON_VIEWS_H

#include <string>
#include <vector>

#include "tools/quillon/values.h"

namespace tool {

// The view or folder of that name, open; Failure{kExitNotFound}.
void OpenView(VQDatabase& database, const std::string& name, VQViewFolder* view);

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

}  // namespace tool

#endif
