// quillon export: a document's rich text into a file.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formats.h"
#include "tools/quillon/json.h"
#include "tools/quillon/pictures.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string file;
  std::string item = "Body";
  std::string format = "auto";
  bool text = false;
  bool no_files = false;
};

void Report(const Options& options, const std::string& file, const std::vector<std::string>& lines) {
  if (!options.json) {
    for (const std::string& line : lines) std::printf("not carried: %s\n", Printable(line).c_str());
    return;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("path", file);
  json.Key("notCarried");
  json.BeginArray();
  for (const std::string& line : lines) json.String(line);
  json.EndArray();
  json.EndObject();
}

int Run(const Options& options, const Arguments& arguments) {
  if (arguments.file.empty()) throw Failure{kExitUsage, "the file needs a name"};
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
  const std::string name = arguments.text ? "text" : arguments.format;
  const Format format = name == "auto" ? FormatOfFile(arguments.file) : FormatOfName(name);
  VQText report;
  OnNamed(arguments.file, [&] {
    if (name == "auto" && format == Format::kText) {
      body.Export(file, start, end, 0, &report);
    } else {
      body.Export(file, ConverterOf(format), start, end, 0, &report);
    }
  });
  std::vector<std::string> lines = LinesOf(report);
  if (format != Format::kText && !arguments.no_files) {
    const auto folder = std::filesystem::absolute(arguments.file).parent_path();
    for (std::string& line : WriteFiles(document, body, folder)) lines.push_back(std::move(line));
  }
  Report(options, ToText(file), lines);
  return kExitDone;
}

}  // namespace

void AddExportCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("export", "Write a document's rich text into a file");
  command->add_option("store", arguments->store, "The store")->required();
  command->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  command->add_option("file", arguments->file, "The file; its extension chooses the converter")->required();
  command->add_option("--format", arguments->format, "auto (by the file's ending), text, markdown or html")
      ->check(CLI::IsMember({"auto", "text", "markdown", "html"}));
  command->add_flag("--no-files", arguments->no_files, "Attachments that the text shows are not written beside it");
  command->add_flag("--text", arguments->text, "The same as --format text");
  command->add_option("--item", arguments->item, "The rich text item (default: Body)");
  command->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
