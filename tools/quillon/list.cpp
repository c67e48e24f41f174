// quillon ls: the documents of a store.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formulas.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string select;
  std::string since;
  unsigned long limit = 0;
};

struct Row {
  std::int64_t id;
  std::int64_t size;
  std::string modified;
  std::string form;
  std::string subject;
};

void Print(const Row& row) {
  std::cout << row.id << '\t' << row.size << '\t' << row.modified << '\t' << Printable(row.form) << '\t'
            << Printable(row.subject) << '\n';
}

void Write(JsonWriter& json, const Row& row) {
  json.BeginObject();
  json.Field("id", row.id);
  json.Field("size", row.size);
  json.Field("modified", row.modified);
  json.Field("form", row.form);
  json.Field("subject", row.subject);
  json.EndObject();
}

Row ReadRow(VQDocument& document) {
  return {static_cast<std::int64_t>(document.GetSlateID()), static_cast<std::int64_t>(document.GetSize()),
          TimeText(*document.GetLastModified().GetTIMEDATE()), TextOf(document, "Form"), TextOf(document, "Subject")};
}

void Select(VQDatabase& database, const Arguments& arguments, VQDocumentArray* documents) {
  VQSearchOptions search;
  TIMEDATE since{};
  if (ReadTimeArgument(arguments.since, &since)) {
    search.SetBeginDate(VQDatetime(since));
  } else if (!arguments.since.empty()) {
    throw Failure{kExitUsage, "--since takes time:YYYY-MM-DDTHH:MM:SSZ"};
  }
  search.SetMaxSlates(arguments.limit);
  database.Search(CompileFormula(arguments.select.empty() ? "SELECT @All" : arguments.select), documents, &search);
}

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocumentArray documents;
  Select(store.database(), arguments, &documents);
  const unsigned long count = documents.GetCount();
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  Progress progress(options.progress, "documents", count);
  for (unsigned long i = 0; i < count; ++i) {
    VQDocument document(documents[i]);
    document.Open();
    const Row row = ReadRow(document);
    options.json ? Write(json, row) : Print(row);
    progress.Advance(i + 1);
  }
  if (options.json) json.EndArray();
  return kExitDone;
}

}  // namespace

void AddListCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* list = app.add_subcommand("ls", "List documents: number, bytes, modified, form, subject");
  list->add_option("store", arguments->store, "The store")->required();
  list->add_option("--select", arguments->select, "Only those that this formula selects");
  list->add_option("--since", arguments->since, "Only those saved here at or after time:YYYY-MM-DDTHH:MM:SSZ");
  list->add_option("--limit", arguments->limit, "At most so many")->check(CLI::Range(1UL, 0xFFFFFFFFUL));
  list->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
