// quillon folder, unread: lists of documents that are kept by hand, or for a user.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/views.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string folder;
  std::vector<std::string> add;
  std::vector<std::string> remove;
  bool create = false;
  bool personal = false;
  std::string like;
  bool clear = false;
  std::string user;
  std::vector<std::string> read;
  std::vector<std::string> unread;
};

// All of them, or Failure{kExitNotFound}.
VQSlateArray FindDocuments(VQDatabase& database, const std::vector<std::string>& keys) {
  VQSlateArray documents(database);
  for (const std::string& key : keys) {
    VQDocument document;
    FindDocument(database, key, &document);
    documents.Add(document);
  }
  return documents;
}

void ListDocuments(const Options& options, const VQSlateArray& documents) {
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  for (unsigned long i = 0; i < documents.GetCount(); ++i) {
    VQDocument document(documents[i]);
    document.Open();
    const auto id = static_cast<std::int64_t>(document.GetSlateID());
    const std::string subject = TextOf(document, "Subject");
    if (!options.json) {
      std::cout << id << '\t' << Printable(subject) << '\n';
      continue;
    }
    json.BeginObject();
    json.Field("id", id);
    json.Field("subject", subject);
    json.EndObject();
  }
  if (options.json) json.EndArray();
}

void CreateFolder(const Options& options, const Arguments& arguments, VQDatabase& database) {
  if (database.ViewFolderExists(FromText(arguments.folder))) {
    throw Failure{kExitFailed, "there is a view or folder \"" + Printable(arguments.folder) + "\""};
  }
  VQViewFolder like;
  if (!arguments.like.empty()) {
    OpenView(options, database, arguments.like, &like, VQVFOPENFLAGS_DESIGN_ONLY);
    like.Close();  // a template must not be open
  }
  const VQVFSHARINGOPTION sharing = arguments.personal ? VQVFSHARINGOPTION_PRIVATE : VQVFSHARINGOPTION_SHARED;
  database.CreateFolder(FromText(arguments.folder), sharing, like.IsNull() ? nullptr : &like, nullptr);
}

void OpenFolder(const Options& options, const Arguments& arguments, VQDatabase& database, VQViewFolder* folder) {
  if (arguments.create) CreateFolder(options, arguments, database);
  OpenView(options, database, arguments.folder, folder);
  if (!folder->IsFolder()) throw Failure{kExitFailed, "\"" + Printable(arguments.folder) + "\" is no folder"};
}

int RunFolder(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  // Before anything is changed.
  const VQSlateArray add = FindDocuments(store.database(), arguments.add);
  const VQSlateArray remove = FindDocuments(store.database(), arguments.remove);
  VQViewFolder folder;
  OpenFolder(options, arguments, store.database(), &folder);
  if (arguments.clear) folder.FolderRemoveAllDocuments();
  if (add.GetCount() != 0) folder.FolderAddDocuments(add);
  if (remove.GetCount() != 0) folder.FolderRemoveDocuments(remove);
  folder.Refresh();
  ListDocuments(options, VQSlateArray(folder));
  return kExitDone;
}

int RunUnread(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  const VQString user = arguments.user.empty() ? store.session().GetUserNameText() : FromText(arguments.user);
  const VQSlateArray read = FindDocuments(store.database(), arguments.read);
  const VQSlateArray unread = FindDocuments(store.database(), arguments.unread);
  VQSlateArray list;
  store.database().GetUnreadList(&list, user);
  if (read.GetCount() != 0 || unread.GetCount() != 0) {
    store.database().UpdateUnreadList(read, unread, user);
    store.database().GetUnreadList(&list, user);
  }
  ListDocuments(options, list);
  return kExitDone;
}

}  // namespace

void AddFolderCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* folder = app.add_subcommand("folder", "Change a folder's documents and list them: number, subject");
  folder->add_option("store", arguments->store, "The store")->required();
  folder->add_option("name", arguments->folder, "The folder")->required();
  CLI::Option* create = folder->add_flag("--create", arguments->create, "Make it first");
  folder->add_flag("--private", arguments->personal, "With --create: the user's own")->needs(create);
  folder->add_option("--like", arguments->like, "With --create: a view or folder whose columns it gets")->needs(create);
  folder->add_flag("--clear", arguments->clear, "Take all documents out, before others are added");
  folder->add_option("--add", arguments->add, "Numbers or whole Subjects");
  folder->add_option("--remove", arguments->remove, "Numbers or whole Subjects");
  folder->callback([&options, arguments, result] { *result = RunFolder(options, *arguments); });

  CLI::App* unread = app.add_subcommand("unread", "Mark documents for a user and list the unread ones");
  unread->add_option("store", arguments->store, "The store")->required();
  unread->add_option("--user", arguments->user, "Whose list (default: of the settings file's user)");
  CLI::Option* read = unread->add_option("--mark-read", arguments->read, "Numbers or whole Subjects");
  unread->add_option("--mark-unread", arguments->unread, "Numbers or whole Subjects")->excludes(read);
  unread->callback([&options, arguments, result] { *result = RunUnread(options, *arguments); });
}

}  // namespace tool
