// quillon table: the tables of a document's rich text, and rows and columns put in and taken out.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string item = "Body";
  unsigned long table = 0;  // from 1; 0 for all of them, or for the first where one is changed
  unsigned long insert_row = 0;
  unsigned long delete_row = 0;
  unsigned long insert_column = 0;
  unsigned long delete_column = 0;
  std::vector<std::string> cells;

  bool changes() const { return insert_row || delete_row || insert_column || delete_column; }
};

std::vector<VQTable> TablesOf(const VQRichText& body) {
  std::vector<VQTable> tables;
  VQRTObject found;
  for (VQSTATUS status = body.FindFirst(VQRTTYPE_TABLE, &found); status == VQ_OK;
       status = body.FindNext(VQRTObject(tables.back()), VQRTTYPE_TABLE, &found)) {
    tables.emplace_back(found);
  }
  return tables;
}

// On one line: what starts a new one in the cell, and tabs, become blanks. A cell that a damaged table lacks is empty.
std::string CellText(const VQTable& table, unsigned long row, unsigned long column) {
  VQString text;
  try {
    table(row, column).GetText(&text);
  } catch (VQSTATUS status) {
    if (status != VQERR_RT_INVALID) throw;
  }
  std::string shown = ToText(text);
  std::ranges::replace_if(
      shown, [](char c) { return c == '\n' || c == '\t' || c == '\r'; }, ' ');
  return shown;
}

void PrintTable(const VQTable& table, std::size_t number) {
  std::cout << "table " << number << ": " << table.GetRowCount() << " rows, " << table.GetColumnCount() << " columns\n";
  for (unsigned long row = 0; row < table.GetRowCount(); ++row) {
    for (unsigned long column = 0; column < table.GetColumnCount(); ++column) {
      std::cout << (column ? "\t" : "") << Printable(CellText(table, row, column));
    }
    std::cout << '\n';
  }
}

void WriteTable(JsonWriter& json, const VQTable& table, std::size_t number) {
  json.BeginObject();
  json.Field("table", static_cast<std::int64_t>(number));
  json.Key("rows");
  json.BeginArray();
  for (unsigned long row = 0; row < table.GetRowCount(); ++row) {
    json.BeginArray();
    for (unsigned long column = 0; column < table.GetColumnCount(); ++column) {
      json.String(CellText(table, row, column));
    }
    json.EndArray();
  }
  json.EndArray();
  json.EndObject();
}

// One behind the last appends.
void InsertRow(VQTable& table, const Arguments& arguments) {
  const unsigned long row = arguments.insert_row - 1;
  if (arguments.cells.size() > table.GetColumnCount()) {
    throw Failure{kExitUsage, "the table has " + std::to_string(table.GetColumnCount()) + " columns"};
  }
  row == table.GetRowCount() ? table.AppendRows(1) : table.InsertRows(row, 1);
  for (unsigned long column = 0; column < arguments.cells.size(); ++column) {
    if (!arguments.cells[column].empty()) table(row, column).Append(FromText(arguments.cells[column]));
  }
}

void InsertColumn(VQTable& table, const Arguments& arguments) {
  const unsigned long column = arguments.insert_column - 1;
  if (arguments.cells.size() > table.GetRowCount()) {
    throw Failure{kExitUsage, "the table has " + std::to_string(table.GetRowCount()) + " rows"};
  }
  column == table.GetColumnCount() ? table.AppendColumns(1) : table.InsertColumns(column, 1);
  for (unsigned long row = 0; row < arguments.cells.size(); ++row) {
    if (!arguments.cells[row].empty()) table(row, column).Append(FromText(arguments.cells[row]));
  }
}

void Change(VQTable& table, const Arguments& arguments) {
  if (arguments.insert_row) InsertRow(table, arguments);
  if (arguments.insert_column) InsertColumn(table, arguments);
  if (arguments.delete_row) table.DeleteRows(arguments.delete_row - 1, 1);
  if (arguments.delete_column) table.DeleteColumns(arguments.delete_column - 1, 1);
}

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQRichText body;
  FindRichText(document, arguments.item, &body);
  std::vector<VQTable> tables = TablesOf(body);
  const std::size_t wanted = arguments.table ? arguments.table : arguments.changes() ? 1 : 0;
  if (tables.empty() || wanted > tables.size()) {
    throw Failure{kExitNotFound, "the text has " + std::to_string(tables.size()) + " tables"};
  }
  if (arguments.changes()) {
    Change(tables[wanted - 1], arguments);
    document.Save();
  }
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (wanted && i + 1 != wanted) continue;
    options.json ? WriteTable(json, tables[i], i + 1) : PrintTable(tables[i], i + 1);
  }
  if (options.json) json.EndArray();
  return kExitDone;
}

}  // namespace

void AddTableCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* table = app.add_subcommand("table", "Show the tables of a document's rich text; change one, and save");
  const auto position = CLI::Range(1UL, 256UL);
  table->add_option("store", arguments->store, "The store")->required();
  table->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  table->add_option("cells", arguments->cells, "Texts of the cells of a row or column that is put in");
  table->add_option("--item", arguments->item, "The rich text item (default: Body)");
  table->add_option("--table", arguments->table, "Its number in the text, from 1")->check(CLI::Range(1UL, 999999UL));
  auto* change = table->add_option_group("change", "One of");
  change->add_option("--insert-row", arguments->insert_row, "Put a row in here; one behind the last appends it")
      ->check(position);
  change->add_option("--insert-column", arguments->insert_column, "The same with a column")->check(position);
  change->add_option("--delete-row", arguments->delete_row, "Take this row out")->check(position);
  change->add_option("--delete-column", arguments->delete_column, "Take this column out")->check(position);
  change->require_option(0, 1);
  table->callback([&options, arguments, result] {
    if (!arguments->cells.empty() && !arguments->insert_row && !arguments->insert_column) {
      throw Failure{kExitUsage, "texts go with --insert-row or --insert-column"};
    }
    *result = Run(options, *arguments);
  });
}

}  // namespace tool
