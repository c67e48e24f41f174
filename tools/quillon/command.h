// What the command families share: the options of the whole tool, exit codes, failures, and the way to a store.
#ifndef QUILLON_TOOLS_QUILLON_COMMAND_H
#define QUILLON_TOOLS_QUILLON_COMMAND_H

#include <string>
#include <string_view>

#include "vq/vq.h"

namespace CLI {
class App;
}

namespace tool {

enum ExitCode {
  kExitDone = 0,
  kExitFailed = 1,     // the words of the status are on standard error
  kExitUsage = 2,      // the command line was wrong; nothing was done
  kExitNotFound = 3,   // no such document, or the word isn't in it; nothing was changed
  kExitDifferent = 4,  // check found damage, or diff a difference
};

// Name of the converter library for plain text.
inline constexpr char kTextConverter[] = "textconv";

struct Options {
  std::string config;  // QUILLON.INI or its directory; empty lets the engine search
  bool json = false;
  bool progress = false;
};

// Thrown by commands where no status says what is wrong.
struct Failure {
  ExitCode code;
  std::string words;
};

// Runs work on what has a name; a status that it throws becomes Failure{kExitFailed} with the name ahead of its words.
template <typename Work>
void OnNamed(std::string_view name, Work work);

// A session that is up, and stores opened in it. Operations throw statuses as long as one of these lives.
class Store {
 public:
  explicit Store(const Options& options);
  Store(const Options& options, const std::string& path);

  VQQuillonSession& session() { return session_; }
  VQDatabase& database() { return database_; }
  void Open(const std::string& path, VQDatabase* database);

 private:
  vq::ThrowScope throwing_;
  VQQuillonSession session_;
  VQDatabase database_;
};

// A path of the file system as the library takes it: absolute, unless it names a server.
VQString StorePath(const std::string& path);

// The document with that number, or the first whose Subject is that text, for which all documents are looked through;
// Failure{kExitNotFound}.
void FindDocument(VQDatabase& database, const std::string& key, VQDocument* document);

// All the text of a rich text, of any length: runs, a line feed for each paragraph record, and a table's rows as lines
// with a tab behind each cell.
std::string RichTextOf(const VQRichText& body);
// The rich text item of that name; Failure{kExitNotFound}.
void FindRichText(const VQDocument& document, const std::string& name, VQRichText* body);

std::string ToText(const VQString& text);
VQString FromText(std::string_view text);
// Fit for a terminal: control characters come out as "?".
std::string Printable(std::string_view text);
// First entry of a text item, empty without one.
std::string TextOf(VQDocument& document, const char* item);
std::string StatusWords(VQSTATUS status);
// Throws it.
[[noreturn]] void FailOn(std::string_view name, VQSTATUS status);
// The answer of a command that makes a file: its path.
void PrintPath(const Options& options, const std::string& path);

// Each family adds its commands; what runs returns an exit code through *result.
void AddSettingsCommands(CLI::App& app, Options& options, int* result);  // init
void AddStoreCommands(CLI::App& app, Options& options, int* result);     // create, info, check, compact
void AddImportCommand(CLI::App& app, Options& options, int* result);
void AddExportCommand(CLI::App& app, Options& options, int* result);
void AddListCommand(CLI::App& app, Options& options, int* result);
void AddShowCommand(CLI::App& app, Options& options, int* result);
void AddReplaceCommand(CLI::App& app, Options& options, int* result);
void AddDiffCommand(CLI::App& app, Options& options, int* result);
void AddTableCommand(CLI::App& app, Options& options, int* result);
void AddViewCommands(CLI::App& app, Options& options, int* result);  // views, view, find
void AddViewCreateCommand(CLI::App& app, Options& options, int* result);
void AddFormCommands(CLI::App& app, Options& options, int* result);  // forms, form, compute
void AddFormCreateCommand(CLI::App& app, Options& options, int* result);
void AddFolderCommands(CLI::App& app, Options& options, int* result);  // folder, unread
void AddSearchCommands(CLI::App& app, Options& options, int* result);  // index, search
void AddFormulaCommand(CLI::App& app, Options& options, int* result);
void AddEditCommands(CLI::App& app, Options& options, int* result);    // note, set
void AddAttachCommands(CLI::App& app, Options& options, int* result);  // attach, detach

template <typename Work>
void OnNamed(std::string_view name, Work work) {
  try {
    work();
  } catch (VQSTATUS status) {
    FailOn(name, status);
  }
}

}  // namespace tool

#endif
