// quillon ls: the documents of a store.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
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

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocumentArray documents;
  store.database().GetDocuments(&documents);
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
  list->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
