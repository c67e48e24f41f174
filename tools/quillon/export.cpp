// quillon export: a document's rich text into a file.
#include <CLI/CLI.hpp>
#include <filesystem>

#include "tools/quillon/command.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string file;
  std::string item = "Body";
  bool text = false;
};

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQRichText body;
  FindRichText(document, arguments.item, &body);
  VQRTCursor start;
  body.GetCursor(&start);
  VQRTCursor end;
  body.GetEndCursor(&end);
  const VQString file(std::filesystem::absolute(arguments.file).c_str());
  if (arguments.text) {
    body.Export(file, kTextConverter, start, end);
  } else {
    body.Export(file, start, end);
  }
  if (options.json) PrintPath(options, ToText(file));
  return kExitDone;
}

}  // namespace

void AddExportCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("export", "Write a document's rich text into a file");
  command->add_option("store", arguments->store, "The store")->required();
  command->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  command->add_option("file", arguments->file, "The file; its extension chooses the converter")->required();
  command->add_flag("--text", arguments->text, "As plain text, whatever the extension");
  command->add_option("--item", arguments->item, "The rich text item (default: Body)");
  command->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
