// quillon view-create: a view's design.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formulas.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string view;
  std::string select = "SELECT @All";
  std::vector<std::string> columns;
  bool flat = false;
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
    column.SetFormula(CompileFormula(formula));
  }
  if (colon != std::string::npos) SetOptions(column, head.substr(colon + 1));
}

int Create(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQViewFolder view;
  store.database().CreateView(FromText(arguments.view), nullptr, &view);
  view.SetSelectionFormula(CompileFormula(arguments.select));
  if (arguments.flat) view.SetShowResponseHierarchy(0);
  view.DeleteColumns(0, view.GetColumnCount());
  for (const std::string& column : arguments.columns) AddColumn(view, column);
  view.Save();
  if (!options.json) return kExitDone;
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("id", static_cast<std::int64_t>(view.GetSlateID()));
  json.EndObject();
  return kExitDone;
}

}  // namespace

void AddViewCreateCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
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
}

}  // namespace tool
