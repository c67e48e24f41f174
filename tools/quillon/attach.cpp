// quillon attach, detach: files of a document.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::string store;
  std::string document;
  std::vector<std::string> files;
  std::string name;
  std::string output;
  std::string item;
  bool compress = false;
};

struct Attached {
  std::string name;
  std::int64_t size;
};

Attached AttachOne(VQDocument& document, const Arguments& arguments, const std::string& file) {
  VQAttachment attachment;
  const VQString path(file.c_str());
  OnNamed(file, [&] {
    if (arguments.name.empty()) {
      document.CreateAttachment(path, &attachment, arguments.compress);
    } else {
      document.CreateAttachment(path, FromText(arguments.name), &attachment, arguments.compress);
    }
  });
  if (!arguments.item.empty()) {
    VQRichText body;
    FindRichText(document, arguments.item, &body);
    body.Append(VQRTAttachment(attachment));
  }
  return {ToText(attachment.GetAttachmentName()), static_cast<std::int64_t>(attachment.GetFileSize())};
}

void ReportAttached(const Options& options, const std::vector<Attached>& all) {
  if (!options.json) {
    for (const Attached& each : all) std::cout << Printable(each.name) << ": " << each.size << " bytes\n";
    return;
  }
  JsonWriter json(std::cout);
  json.BeginArray();
  for (const Attached& each : all) {
    json.BeginObject();
    json.Field("name", each.name);
    json.Field("size", each.size);
    json.EndObject();
  }
  json.EndArray();
}

// All of them or none.
int RunAttach(const Options& options, const Arguments& arguments) {
  if (!arguments.name.empty() && arguments.files.size() > 1) throw Failure{kExitUsage, "one name for several files"};
  for (const std::string& file : arguments.files) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) throw Failure{kExitNotFound, "no file " + Printable(file)};
  }
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  std::vector<Attached> all;
  for (const std::string& file : arguments.files) all.push_back(AttachOne(document, arguments, file));
  document.Save();
  ReportAttached(options, all);
  return kExitDone;
}

// The name is what whoever wrote the document chose: of it only the last part is taken, only into the present folder,
// and no file there goes for it.
fs::path PlaceFor(const std::string& name) {
  const std::size_t slash = name.find_last_of("/\\");
  const std::string last = slash == std::string::npos ? name : name.substr(slash + 1);
  const bool plain = !last.empty() && last != "." && last != ".." && Printable(last) == last;
  if (!plain) throw Failure{kExitUsage, "the name is not one for a file here: -o names another one"};
  std::error_code error;
  if (fs::exists(fs::symlink_status(last, error))) {
    throw Failure{kExitFailed, Printable(last) + " exists: -o replaces it or names another place"};
  }
  return last;
}

// The library would put the file in the place of a link; whoever names one means what it leads to.
fs::path LedTo(const fs::path& place) {
  std::error_code error;
  if (!fs::is_symlink(place, error)) return place;
  const fs::path target = fs::canonical(place, error);
  if (error) throw Failure{kExitFailed, Printable(place.string()) + " is a link to no file"};
  return target;
}

bool TakesBytes(const fs::path& place) {
  std::error_code error;
  const fs::file_status present = fs::status(place, error);
  return fs::is_fifo(present) || fs::is_character_file(present);
}

class Folder {
 public:
  Folder() {
    std::string pattern = (fs::temp_directory_path() / "quillon-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw Failure{kExitFailed, "no folder for what is on its way"};
    path_ = pattern;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// The library makes files, whole ones. A pipe or a device gets the bytes of one when all of it is there.
void Send(const VQAttachment& attachment, const fs::path& place) {
  const Folder folder;
  const fs::path whole = folder.path() / "file";
  attachment.Detach(VQString(whole.c_str()));
  std::ifstream in(whole, std::ios::binary);
  std::ofstream out(place, std::ios::binary);
  if (attachment.GetFileSize() > 0) out << in.rdbuf();
  if (!in || !out.flush()) throw Failure{kExitFailed, "cannot write to " + Printable(place.string())};
}

int RunDetach(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQAttachment attachment;
  if (document.GetAttachment(FromText(arguments.name), &attachment) != VQ_OK) {
    throw Failure{kExitNotFound, "no attachment " + Printable(arguments.name)};
  }
  if (!arguments.output.empty() && TakesBytes(arguments.output)) {
    Send(attachment, arguments.output);
    return kExitDone;
  }
  const fs::path place = arguments.output.empty() ? PlaceFor(arguments.name) : LedTo(arguments.output);
  OnNamed(place.string(), [&] { attachment.Detach(VQString(place.c_str())); });
  PrintPath(options, place.string());
  return kExitDone;
}

}  // namespace

void AddAttachCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* attach = app.add_subcommand("attach", "Attach files to a document");
  attach->add_option("store", arguments->store, "The store")->required();
  attach->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  attach->add_option("file", arguments->files, "The files")->required();
  attach->add_option("--name", arguments->name, "Another name than the file's own");
  attach->add_option("--show-in", arguments->item, "A rich text item that is to show them, at its end");
  attach->add_flag("--compress", arguments->compress, "Store them compressed");
  attach->callback([&options, arguments, result] { *result = RunAttach(options, *arguments); });

  CLI::App* detach = app.add_subcommand("detach", "Write an attached file to the file system");
  detach->add_option("store", arguments->store, "The store")->required();
  detach->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  detach->add_option("name", arguments->name, "The attachment, as show tells it")->required();
  detach->add_option("-o,--output", arguments->output,
                     "Where to (default: its name, in this folder, if that is free); a pipe or a device too");
  detach->callback([&options, arguments, result] { *result = RunDetach(options, *arguments); });
}

}  // namespace tool
