// quillon views, view, find.
#include "tools/quillon/views.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string view;
  std::vector<std::string> keys;
  std::string comparison = "equal";
  RowRange range;
  bool unread = false;
};

struct Listed {
  std::int64_t id;
  std::string kind;
  std::string name;
  std::vector<std::string> columns;
};

Listed Describe(VQViewFolder& view) {
  view.Open();
  Listed listed{static_cast<std::int64_t>(view.GetSlateID()),
                view.IsFolder() ? "folder" : (view.IsCalendar() ? "calendar" : "view"),
                ToText(view.GetName()),
                {}};
  for (unsigned long i = 0; i < view.GetColumnCount(); ++i) listed.columns.push_back(ToText(view.GetColumnTitle(i)));
  view.Close();
  return listed;
}

void PrintListed(const Listed& listed) {
  std::cout << listed.id << '\t' << listed.kind << '\t' << Printable(listed.name) << '\t';
  for (std::size_t i = 0; i < listed.columns.size(); ++i) std::cout << (i ? " | " : "") << Printable(listed.columns[i]);
  std::cout << '\n';
}

void WriteListed(JsonWriter& json, const Listed& listed) {
  json.BeginObject();
  json.Field("id", listed.id);
  json.Field("kind", listed.kind);
  json.Field("name", listed.name);
  json.Key("columns");
  json.BeginArray();
  for (const std::string& title : listed.columns) json.String(title);
  json.EndArray();
  json.EndObject();
}

int List(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolderArray views;
  store.database().GetViewFolders(&views);
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  for (unsigned long i = 0; i < views.GetCount(); ++i) {
    VQViewFolder view(views[i]);
    const Listed listed = Describe(view);
    options.json ? WriteListed(json, listed) : PrintListed(listed);
  }
  if (options.json) json.EndArray();
  return kExitDone;
}

// The navigator's row `from`, counted from 1; VQWARN_NOT_FOUND when it has no such row.
VQSTATUS GoTo(VQVFNavigator& navigator, const RowRange& range, VQNAVIGATION next, VQVFEntry* entry) {
  if (range.from > 1 && !range.categories) {
    if (range.from > navigator.GetEntryCount()) return VQWARN_NOT_FOUND;
    *entry = navigator[static_cast<unsigned long>(range.from - 1)];
    VQVFPosition position;
    entry->GetPosition(&position);
    return navigator.SetPosition(position);
  }
  VQSTATUS status = navigator.Goto(VQNAVIGATE_FIRST, entry);
  if (status == VQ_OK && range.categories && !entry->IsCategory()) status = navigator.Goto(next, entry);
  for (std::uint64_t i = 1; i < range.from && status == VQ_OK; ++i) status = navigator.Goto(next, entry);
  return status;
}

int Show(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  OpenView(options, store.database(), arguments.view, &view, arguments.unread ? VQVFOPENFLAGS_USE_UNREAD_LIST : 0);
  VQVFNavigator navigator;
  view.GetEntries(&navigator);
  ShowRows(options, view, navigator, arguments.range);
  return kExitDone;
}

constexpr std::pair<const char*, VQVFCOMPARISON> kComparisons[] = {
    {"equal", VQVFCOMPARISON_EQUAL},
    {"less", VQVFCOMPARISON_LESS},
    {"greater", VQVFCOMPARISON_GREATER},
};

VQVFFindOptions FindOptionsOf(const std::string& comparison) {
  VQVFFindOptions options;
  for (const auto& [name, value] : kComparisons) {
    if (comparison == name) options.SetComparison(value);
  }
  return options;
}

void AppendKey(VQVFFindKeys& keys, const std::string& text) {
  double number = 0;
  TIMEDATE moment{};
  if (ReadNumberArgument(text, &number)) {
    keys.Append(number);
  } else if (ReadTimeArgument(text, &moment)) {
    keys.Append(VQDatetime(moment));
  } else {
    keys.Append(FromText(text));
  }
}

int Find(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  OpenView(options, store.database(), arguments.view, &view);
  VQVFFindKeys keys;
  for (const std::string& key : arguments.keys) AppendKey(keys, key);
  VQVFEntry entry;
  VQVFNavigator found;
  unsigned long count = 0;
  const VQSTATUS status = view.Find(keys, FindOptionsOf(arguments.comparison), &entry, &count, &found);
  if (status != VQ_OK) throw Failure{kExitNotFound, "no row of \"" + arguments.view + "\" has that key"};
  ShowRows(options, view, found, arguments.range);
  return kExitDone;
}

}  // namespace

void OpenView(const Options& options, VQDatabase& database, const std::string& name, VQViewFolder* view,
              unsigned long flags) {
  if (!database.ViewFolderExists(FromText(name))) {
    throw Failure{kExitNotFound, "no view or folder is called \"" + Printable(name) + "\""};
  }
  database.GetViewFolder(FromText(name), view);
  Progress progress(options.progress, "building the index", 0);
  VQViewFolder::SetIndexProgress(ShowProgress, &progress);
  try {
    view->Open(flags);
  } catch (...) {
    VQViewFolder::SetIndexProgress(nullptr, nullptr);
    throw;
  }
  VQViewFolder::SetIndexProgress(nullptr, nullptr);
}

void ShowRows(const Options& options, const VQViewFolder& view, VQVFNavigator& navigator, const RowRange& range) {
  const VQNAVIGATION next = range.categories ? VQNAVIGATE_NEXT_CATEGORY : VQNAVIGATE_NEXT;
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  VQVFEntry entry;
  VQSTATUS status = GoTo(navigator, range, next, &entry);
  for (std::uint64_t done = 0; status == VQ_OK && (range.count == 0 || done < range.count); ++done) {
    const ViewRow row = ReadViewRow(entry, view);
    if (!options.json && navigator.IsFTSearch()) std::cout << (row.score ? std::to_string(row.score) : "") << '\t';
    options.json ? WriteViewRow(json, row) : PrintViewRow(row);
    status = navigator.Goto(next, &entry);
  }
  if (options.json) json.EndArray();
}

ViewRow ReadViewRow(const VQVFEntry& entry, const VQViewFolder& view) {
  VQVFPosition position;
  entry.GetPosition(&position);
  const char* kind = entry.IsCategory() ? "category"
                     : entry.IsTotal()  ? "total"
                                        : (entry.IsResponse() ? "response" : "document");
  const bool slate = !entry.IsCategory() && !entry.IsTotal();
  ViewRow row{ToText(position.GetDocNumber(FromText("."))),
              kind,
              slate ? static_cast<std::int64_t>(entry.GetSlateID()) : 0,
              static_cast<std::int64_t>(entry.GetIndentLevels()),
              static_cast<std::int64_t>(entry.GetFTSearchScore()),
              entry.IsUnread() != 0,
              {}};
  for (unsigned long i = 0; i < view.GetColumnCount(); ++i) {
    if (view[i].IsHidden()) continue;
    const VQItem item = entry.GetColumnItem(i);
    row.cells.push_back(
        {ToText(view.GetColumnTitle(i)), !item.IsNull(), item.IsNull() ? StoredItem{} : ReadItem(item)});
  }
  return row;
}

void PrintViewRow(const ViewRow& row) {
  std::cout << row.place << (row.unread ? "*" : "") << '\t' << (row.id ? std::to_string(row.id) : row.kind) << '\t'
            << std::string(static_cast<std::size_t>(row.indent) * 2, ' ');
  const char* between = "";
  for (const ViewRow::Cell& cell : row.cells) {
    if (!cell.filled) continue;
    std::cout << between << Printable(ValueText(cell.value));
    between = " | ";
  }
  std::cout << '\n';
}

void WriteViewRow(JsonWriter& json, const ViewRow& row) {
  json.BeginObject();
  json.Field("position", row.place);
  json.Field("kind", row.kind);
  if (row.id) json.Field("id", row.id);
  json.Field("indent", row.indent);
  if (row.score) json.Field("score", row.score);
  json.Key("unread");
  json.Boolean(row.unread);
  json.Key("columns");
  json.BeginObject();
  for (const ViewRow::Cell& cell : row.cells) {
    if (!cell.filled) continue;
    json.Key(cell.title);
    WriteValue(json, cell.value);
  }
  json.EndObject();
  json.EndObject();
}

void AddViewCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* views = app.add_subcommand("views", "List views and folders: number, kind, name, columns");
  views->add_option("store", arguments->store, "The store")->required();
  views->callback([&options, arguments, result] { *result = List(options, *arguments); });

  CLI::App* view = app.add_subcommand("view", "Show rows: place, document, indented columns");
  view->add_option("store", arguments->store, "The store")->required();
  view->add_option("name", arguments->view, "A view or folder")->required();
  view->add_option("--from", arguments->range.from, "First row, counted from 1")->check(CLI::Range(1UL, 0xFFFFFFFFUL));
  view->add_option("--count", arguments->range.count, "At most so many rows");
  view->add_flag("--categories", arguments->range.categories, "Only the rows of categories");
  view->add_flag("--unread", arguments->unread, "Mark what the user has not read with \"*\"");
  view->callback([&options, arguments, result] { *result = Show(options, *arguments); });

  CLI::App* find = app.add_subcommand("find", "Show the rows that a key finds");
  find->add_option("store", arguments->store, "The store")->required();
  find->add_option("view", arguments->view, "A view or folder")->required();
  find->add_option("key", arguments->keys,
                   "A text, number:VALUE or time:YYYY-MM-DD[THH:MM[:SS]Z], for each sorted column")
      ->required();
  find->add_option("--comparison", arguments->comparison, "equal (default), less, greater")
      ->check(CLI::IsMember({"equal", "less", "greater"}));
  find->add_option("--count", arguments->range.count, "At most so many rows");
  find->callback([&options, arguments, result] { *result = Find(options, *arguments); });
}

}  // namespace tool
