// quillon views, view, view-create, find.
#include "tools/quillon/views.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>

#include "tools/quillon/command.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string view;
  std::string select = "SELECT @All";
  std::vector<std::string> columns;
  std::vector<std::string> keys;
  std::string comparison = "equal";
  std::uint64_t from = 1;
  std::uint64_t count = 0;
  bool flat = false;
  bool categories = false;
};

struct ColumnOption {
  const char* name;
  void (*set)(VQVFColumn& column);
};

constexpr ColumnOption kColumnOptions[] = {
    {"sorted", [](VQVFColumn& column) { column.SetSortOption(VQVFSORTOPTION_ASCENDING); }},
    {"descending", [](VQVFColumn& column) { column.SetSortOption(VQVFSORTOPTION_DESCENDING); }},
    {"categorized",
     [](VQVFColumn& column) {
       if (column.GetSortOption() == VQVFSORTOPTION_NONE) column.SetSortOption(VQVFSORTOPTION_ASCENDING);
       column.SetIsCategorized(1);
     }},
    {"separate", [](VQVFColumn& column) { column.SetSeparateMultipleValues(1); }},
    {"nocase", [](VQVFColumn& column) { column.SetIsSortCaseInsensitive(1); }},
    {"noaccent", [](VQVFColumn& column) { column.SetIsSortAccentInsensitive(1); }},
    {"hidden", [](VQVFColumn& column) { column.SetIsHidden(1); }},
    {"responses", [](VQVFColumn& column) { column.SetShowResponsesOnly(1); }},
    {"total", [](VQVFColumn& column) { column.SetTotalsOption(VQVFTOTALSOPTION_TOTAL); }},
    {"average", [](VQVFColumn& column) { column.SetTotalsOption(VQVFTOTALSOPTION_AVERAGE_PER_DOCUMENT); }},
};

bool IsItemName(const std::string& text) {
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0]))) return false;
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '$'; });
}

void SetOptions(VQVFColumn& column, const std::string& options) {
  for (std::size_t at = 0; at <= options.size();) {
    const std::size_t end = std::min(options.find(',', at), options.size());
    const std::string name = options.substr(at, end - at);
    const auto* option = std::find_if(std::begin(kColumnOptions), std::end(kColumnOptions),
                                      [&](const ColumnOption& each) { return name == each.name; });
    if (option == std::end(kColumnOptions)) throw Failure{kExitUsage, "no column option is called \"" + name + "\""};
    option->set(column);
    at = end + 1;
  }
}

// TITLE[:OPTION,...]=FORMULA
void AddColumn(VQViewFolder& view, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw Failure{kExitUsage, "a column is TITLE[:OPTION,...]=FORMULA: " + text};
  const std::string head = text.substr(0, equals);
  const std::string formula = text.substr(equals + 1);
  const std::size_t colon = head.find(':');
  VQVFColumn column;
  view.AppendColumn(&column);
  column.SetTitle(FromText(head.substr(0, colon)));
  if (IsItemName(formula)) {
    column.SetFieldName(FromText(formula));
  } else {
    column.SetFormula(VQFormula(FromText(formula)));
  }
  if (colon != std::string::npos) SetOptions(column, head.substr(colon + 1));
}

int Create(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  store.database().CreateView(FromText(arguments.view), nullptr, &view);
  try {
    view.SetSelectionFormula(VQFormula(FromText(arguments.select)));
    if (arguments.flat) view.SetShowResponseHierarchy(0);
    view.DeleteColumns(0, view.GetColumnCount());
    for (const std::string& column : arguments.columns) AddColumn(view, column);
    view.Save();
  } catch (...) {
    // The view was stored when it was made: half a design is not left behind.
    view.Close();
    store.database().DeleteViewFolder(&view);
    throw;
  }
  if (!options.json) return kExitDone;
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("id", static_cast<std::int64_t>(view.GetSlateID()));
  json.EndObject();
  return kExitDone;
}

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

// Calls `row` for up to `count` entries (0: all) from the navigator's row `from` on, counted from 1.
template <class Row>
void Walk(VQVFNavigator& navigator, bool categories, std::uint64_t from, std::uint64_t count, Row row) {
  const VQNAVIGATION next = categories ? VQNAVIGATE_NEXT_CATEGORY : VQNAVIGATE_NEXT;
  VQVFEntry entry;
  VQSTATUS status = VQ_OK;
  if (from > 1 && !categories) {
    if (from > navigator.GetEntryCount()) return;
    entry = navigator[static_cast<unsigned long>(from - 1)];
    VQVFPosition position;
    entry.GetPosition(&position);
    navigator.SetPosition(position);
  } else {
    status = navigator.Goto(VQNAVIGATE_FIRST, &entry);
    for (std::uint64_t i = 1; i < from && status == VQ_OK; ++i) status = navigator.Goto(next, &entry);
  }
  for (std::uint64_t done = 0; status == VQ_OK && (count == 0 || done < count); ++done) {
    row(entry);
    status = navigator.Goto(next, &entry);
  }
}

void ShowRows(const Options& options, const Arguments& arguments, VQViewFolder& view, VQVFNavigator& navigator) {
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  Walk(navigator, arguments.categories, arguments.from, arguments.count, [&](const VQVFEntry& entry) {
    const ViewRow row = ReadViewRow(entry, view);
    options.json ? WriteViewRow(json, row) : PrintViewRow(row);
  });
  if (options.json) json.EndArray();
}

int Show(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  OpenView(store.database(), arguments.view, &view);
  VQVFNavigator navigator;
  view.GetEntries(&navigator);
  ShowRows(options, arguments, view, navigator);
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
  std::size_t end = 0;
  if (text.starts_with("number:")) {
    const std::string digits = text.substr(7);
    const double number = digits.empty() ? 0 : std::stod(digits, &end);
    if (digits.empty() || end != digits.size()) throw Failure{kExitUsage, "no number: " + digits};
    keys.Append(number);
    return;
  }
  keys.Append(FromText(text));
}

int Find(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  OpenView(store.database(), arguments.view, &view);
  VQVFFindKeys keys;
  for (const std::string& key : arguments.keys) AppendKey(keys, key);
  VQVFEntry entry;
  VQVFNavigator found;
  unsigned long count = 0;
  const VQSTATUS status = view.Find(keys, FindOptionsOf(arguments.comparison), &entry, &count, &found);
  if (status != VQ_OK) throw Failure{kExitNotFound, "no row of \"" + arguments.view + "\" has that key"};
  ShowRows(options, arguments, view, found);
  return kExitDone;
}

}  // namespace

void OpenView(VQDatabase& database, const std::string& name, VQViewFolder* view) {
  if (!database.ViewFolderExists(FromText(name))) {
    throw Failure{kExitNotFound, "no view or folder is called \"" + name + "\""};
  }
  database.GetViewFolder(FromText(name), view);
  view->Open();
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
  std::cout << row.place << '\t' << (row.id ? std::to_string(row.id) : row.kind) << '\t'
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
  view->add_option("--from", arguments->from, "First row, counted from 1")->check(CLI::PositiveNumber);
  view->add_option("--count", arguments->count, "At most so many rows");
  view->add_flag("--categories", arguments->categories, "Only the rows of categories");
  view->callback([&options, arguments, result] { *result = Show(options, *arguments); });

  CLI::App* create = app.add_subcommand("view-create", "Make a view");
  create->add_option("store", arguments->store, "The store")->required();
  create->add_option("name", arguments->view, "Its name")->required();
  create->add_option("--select", arguments->select, "Formula that selects documents");
  create
      ->add_option("--column", arguments->columns,
                   "TITLE[:OPTION,...]=FORMULA, once for each column; options: sorted descending categorized\n"
                   "separate nocase noaccent hidden responses total average")
      ->required();
  create->add_flag("--flat", arguments->flat, "Responses stand among the documents");
  create->callback([&options, arguments, result] { *result = Create(options, *arguments); });

  CLI::App* find = app.add_subcommand("find", "Show the rows that a key finds");
  find->add_option("store", arguments->store, "The store")->required();
  find->add_option("view", arguments->view, "A view or folder")->required();
  find->add_option("key", arguments->keys, "A text, or number:VALUE, for each sorted column")->required();
  find->add_option("--comparison", arguments->comparison, "equal (default), less, greater")
      ->check(CLI::IsMember({"equal", "less", "greater"}));
  find->add_option("--count", arguments->count, "At most so many rows");
  find->callback([&options, arguments, result] { *result = Find(options, *arguments); });
}

}  // namespace tool
