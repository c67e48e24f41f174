// quillon import: text, Markdown and HTML files into a store, one document a file.
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formats.h"
#include "tools/quillon/pictures.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/styles.h"
#include "tools/quillon/values.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

struct Arguments {
  std::string store;
  std::vector<std::string> sources;
  std::string form = "Text";
  std::string format = "auto";
  bool plain = false;
  bool no_files = false;
  bool join_lines = false;
};

struct Source {
  fs::path path;
  std::string subject;
  std::uint64_t size;
};

struct Found {
  std::vector<Source> files;
  std::uint64_t bytes = 0;
  std::int64_t skipped = 0;            // no text, no plain file, or not readable
  std::vector<std::string> passed_by;  // of these, the ones that were named
};

// What could not be carried of a file.
struct Lost {
  std::string subject;
  std::vector<std::string> lines;
};

// A file is text unless a NUL stands in its first 8 KB; pages say by a mark that they are in UTF-16.
bool IsText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  char head[8192];
  file.read(head, sizeof head);
  const auto count = file.gcount();
  const std::string_view bytes(head, static_cast<std::size_t>(count));
  const bool marked = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  if (marked && FormatOfFile(path.string()) == Format::kHtml) return true;
  return (count > 0 || file.eof()) && bytes.find('\0') == std::string_view::npos;
}

// Whether the file is one to import.
bool AddFile(const fs::path& path, const std::string& subject, Found* found) {
  std::error_code error;
  const std::uint64_t size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
  if (error || !fs::is_regular_file(path, error) || !IsText(path)) {
    ++found->skipped;
    return false;
  }
  found->files.push_back({path, subject, size});
  found->bytes += size;
  return true;
}

// Links below a folder are passed over: what they point to would come twice.
void AddFolder(const fs::path& folder, Found* found) {
  const auto options = fs::directory_options::skip_permission_denied;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, options)) {
    if (entry.is_symlink() || !(entry.is_regular_file() || entry.is_directory())) {
      ++found->skipped;
    } else if (entry.is_regular_file()) {
      AddFile(entry.path(), entry.path().lexically_relative(folder).string(), found);
    }
  }
}

Found FindFiles(const std::vector<std::string>& sources) {
  Found found;
  for (const std::string& source : sources) {
    const fs::path path(source);
    if (fs::is_directory(path)) {
      AddFolder(path, &found);
    } else if (fs::exists(path)) {
      if (!AddFile(path, path.filename().string(), &found)) found.passed_by.push_back(source);
    } else {
      throw Failure{kExitNotFound, "no file or folder " + Printable(source)};
    }
  }
  std::ranges::sort(found.files, {}, &Source::subject);
  return found;
}

void AddText(VQDocument& document, const char* name, const std::string& value) {
  VQText text;
  document.CreateItem(name, &text, VQITEMFLAGS_SUMMARY);
  text.SetValue(FromText(value));
}

// Behind a dot, unless it begins like a number of a version.
std::string EndingOf(const fs::path& name) {
  const std::string ending = name.extension().string();
  return ending.size() > 1 && (ending[1] < '0' || ending[1] > '9') ? ending.substr(1) : "text";
}

constexpr std::pair<std::uint64_t, const char*> kSizes[] = {{1 << 14, "small"}, {1 << 16, "middling"}};

// The folders that the file lies in, its ending, and how large it is.
void AddCategories(VQDocument& document, const Source& source) {
  VQText categories;
  document.CreateItem("Categories", &categories, VQITEMFLAGS_SUMMARY);
  const fs::path subject(source.subject);
  for (const fs::path& part : subject.parent_path()) categories << FromText(part.string());
  categories << FromText(EndingOf(subject));
  const auto* size =
      std::find_if(std::begin(kSizes), std::end(kSizes), [&](const auto& each) { return source.size < each.first; });
  categories << (size == std::end(kSizes) ? "large" : size->second);
}

void AddSize(VQDocument& document, std::uint64_t size) {
  VQNumbers number;
  document.CreateItem("Size", &number, VQITEMFLAGS_SUMMARY);
  number.SetValue(static_cast<double>(size));
}

// When the file changed, and from then to now as a range.
void AddTimes(VQDocument& document, const Source& source) {
  struct stat state;
  if (stat(source.path.c_str(), &state) != 0) throw Failure{kExitFailed, source.path.string() + " is gone"};
  const TIMEDATE changed = TimeFromUnix(state.st_mtime);
  VQDatetimes time;
  document.CreateItem("FileTime", &time, VQITEMFLAGS_SUMMARY);
  time.SetValue(VQDatetime(changed));
  VQDatetimes covers;
  document.CreateItem("Covers", &covers, VQITEMFLAGS_SUMMARY);
  covers.SetValue(VQDatetimeRange(TIMEDATE_PAIR{changed, TimeFromUnix(std::time(nullptr))}));
}

// An ending that no settings row knows is read as plain text: everything that gets here is.
void ImportBody(VQRichText& body, const fs::path& path, const Arguments& arguments, VQText* report) {
  const VQString file(fs::absolute(path).c_str());
  const Format format = arguments.format == "auto" ? FormatOfFile(path.string()) : FormatOfName(arguments.format);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  if (format != Format::kText) return void(body.Import(file, ConverterOf(format), &cursor, 0, report));
  const unsigned long options = arguments.join_lines ? 0 : kEachLineAParagraph;
  const bool named = arguments.format != "auto";
  try {
    if (!named) return void(body.Import(file, &cursor, options, report));
  } catch (VQSTATUS status) {
    if (status != VQERR_NO_IMPORT_LIBRARY) throw;
  }
  body.Import(file, ConverterOf(format), &cursor, options, report);
}

void ImportFile(VQDatabase& database, const Arguments& arguments, const Source& source, std::vector<Lost>* lost) {
  VQDocument document;
  database.CreateDocument(&document);
  AddText(document, "Form", arguments.form);
  AddText(document, "Subject", source.subject);
  AddCategories(document, source);
  AddSize(document, source.size);
  AddTimes(document, source);
  VQRichText body;
  document.CreateItem("Body", &body);
  VQText report;
  ImportBody(body, source.path, arguments, &report);
  const Format format =
      arguments.format == "auto" ? FormatOfFile(source.path.string()) : FormatOfName(arguments.format);
  if (!arguments.plain && format == Format::kText) StyleText(body);
  std::vector<std::string> lines = LinesOf(report);
  if (!arguments.no_files) {
    for (std::string& line : AttachPictures(document, body, source.path.parent_path())) {
      lines.push_back(std::move(line));
    }
  }
  document.Save();
  if (!lines.empty()) lost->push_back({source.subject, std::move(lines)});
}

void ImportFiles(VQDatabase& database, const Options& options, const Arguments& arguments, const Found& found,
                 std::vector<Lost>* lost) {
  Progress progress(options.progress, "importing", found.files.size());
  std::uint64_t done = 0;
  for (const Source& source : found.files) {
    try {
      ImportFile(database, arguments, source, lost);
    } catch (VQSTATUS status) {
      throw Failure{kExitFailed, Printable(source.path.string()) + ": " + StatusWords(status)};
    }
    progress.Advance(++done);
  }
}

// All or none: a failure takes back what was imported before it.
void ImportAll(VQDatabase& database, const Options& options, const Arguments& arguments, const Found& found,
               std::vector<Lost>* lost) {
  database.BeginTransaction();
  try {
    ImportFiles(database, options, arguments, found, lost);
    database.CommitTransaction();
  } catch (...) {
    const bool was_throwing = VQGetThrowAllErrors() != 0;
    VQSetThrowAllErrors(0);
    database.RollbackTransaction();  // the first failure is the one to tell
    VQSetThrowAllErrors(was_throwing);
    throw;
  }
}

void ReportLosses(JsonWriter& json, const std::vector<Lost>& lost) {
  json.Key("notCarried");
  json.BeginArray();
  for (const Lost& each : lost) {
    json.BeginObject();
    json.Field("subject", each.subject);
    json.Key("lines");
    json.BeginArray();
    for (const std::string& line : each.lines) json.String(line);
    json.EndArray();
    json.EndObject();
  }
  json.EndArray();
}

void Report(const Options& options, const Found& found, const std::vector<Lost>& lost, double seconds) {
  const auto documents = static_cast<std::int64_t>(found.files.size());
  const double megabytes = static_cast<double>(found.bytes) / 1e6;
  if (options.json) {
    JsonWriter json(std::cout);
    json.BeginObject();
    json.Field("documents", documents);
    json.Field("bytes", static_cast<std::int64_t>(found.bytes));
    json.Field("skipped", found.skipped);
    json.Key("passedOver");
    json.BeginArray();
    for (const std::string& path : found.passed_by) json.String(path);
    json.EndArray();
    json.Key("seconds");
    json.Number(seconds);
    ReportLosses(json, lost);
    json.EndObject();
    return;
  }
  std::printf("imported %lld documents, %.2f MB, in %.2f s", static_cast<long long>(documents), megabytes, seconds);
  if (found.skipped > 0) std::printf(" (passed over %lld: links, or no text)", static_cast<long long>(found.skipped));
  std::printf("\n");
  for (const std::string& path : found.passed_by) {
    std::printf("passed over: %s: no text file\n", Printable(path).c_str());
  }
  for (const Lost& each : lost) {
    for (const std::string& line : each.lines) {
      std::printf("not carried: %s: %s\n", Printable(each.subject).c_str(), Printable(line).c_str());
    }
  }
}

int Run(const Options& options, const Arguments& arguments) {
  const Found found = FindFiles(arguments.sources);
  if (found.files.empty()) {
    const std::string first = found.passed_by.empty() ? "" : ": " + Printable(found.passed_by.front()) + " is none";
    throw Failure{kExitNotFound, "no text files there" + first};
  }
  Store store(options, arguments.store);
  const auto start = std::chrono::steady_clock::now();
  std::vector<Lost> lost;
  ImportAll(store.database(), options, arguments, found, &lost);
  Report(options, found, lost, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  return kExitDone;
}

}  // namespace

void AddImportCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("import", "Import text, Markdown and HTML files, one document a file, in one transaction");
  command->add_option("store", arguments->store, "The store")->required();
  command->add_option("sources", arguments->sources, "Files, and folders with all below them")->required();
  command->add_option("--form", arguments->form, "Item Form of the documents (default: Text)");
  command->add_option("--format", arguments->format, "auto (by the file's ending), text, markdown or html")
      ->check(CLI::IsMember({"auto", "text", "markdown", "html"}));
  command->add_flag("--no-files", arguments->no_files, "Pictures of the file's folder are not attached");
  command->add_flag("--plain", arguments->plain, "Plain text in one font and one paragraph style throughout");
  command->add_flag("--join-lines", arguments->join_lines, "Lines without an empty one between are one paragraph");
  command->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
