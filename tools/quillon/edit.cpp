// quillon note, set: a response to a document, an item's value.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/json.h"
#include "tools/quillon/views.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string text;
  std::string form = "Note";
  std::string item;
  std::vector<std::string> values;
  std::string watch;
};

int RunNote(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument parent;
  FindDocument(store.database(), arguments.document, &parent);
  VQDocument note;
  store.database().CreateDocument(&note);
  note.MakeResponse(parent);
  SetItem(note, "Form", {arguments.form});
  SetItem(note, "Subject", {arguments.text});
  note.Save();
  const auto id = static_cast<std::int64_t>(note.GetSlateID());
  const auto of = static_cast<std::int64_t>(parent.GetSlateID());
  if (!options.json) {
    std::cout << "document " << id << ": a note on document " << of << '\n';
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("document", id);
  json.Field("parent", of);
  json.EndObject();
  return kExitDone;
}

const char* NameOf(VQVFCHANGEKIND kind) {
  switch (kind) {
    case VQVFCHANGEKIND_INSERTED:
      return "inserted";
    case VQVFCHANGEKIND_REMOVED:
      return "removed";
    case VQVFCHANGEKIND_MOVED:
      return "moved";
    case VQVFCHANGEKIND_CHANGED:
      return "changed";
  }
  return "";
}

struct Change {
  std::string kind;
  std::string row;
  std::int64_t id;    // 0 for a row that is no document
  std::string place;  // empty for a row that is gone
};

Change Describe(const VQVFChange& change) {
  static constexpr const char* kRows[] = {"category", "document", "response", "total"};
  const bool document = change.Type == VQVFENTRYTYPE_MAIN_TOPIC || change.Type == VQVFENTRYTYPE_RESPONSE;
  return {NameOf(change.Kind), kRows[change.Type], document ? static_cast<std::int64_t>(change.SlateID) : 0,
          change.IsGone ? std::string() : ToText(change.Position.GetDocNumber("."))};
}

void PrintChange(const Change& change) {
  std::cout << change.kind << '\t' << (change.place.empty() ? "-" : change.place) << '\t'
            << (change.id ? std::to_string(change.id) : change.row) << '\n';
}

void WriteChange(JsonWriter& json, const Change& change) {
  json.BeginObject();
  json.Field("change", change.kind);
  json.Field("row", change.row);
  if (change.id) json.Field("id", change.id);
  if (!change.place.empty()) json.Field("position", change.place);
  json.EndObject();
}

void ReportChanges(const Options& options, VQVFObserver& observer) {
  std::vector<VQVFChange> changes;
  int complete = 1;
  observer.GetChanges(&changes, &complete);
  if (!complete) throw Failure{kExitFailed, "the view was built anew"};
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  for (const VQVFChange& each : changes) {
    const Change change = Describe(each);
    options.json ? WriteChange(json, change) : PrintChange(change);
  }
  if (options.json) json.EndArray();
}

int RunSet(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQViewFolder view;
  VQVFObserver observer;
  if (!arguments.watch.empty()) {
    OpenView(options, store.database(), arguments.watch, &view);
    observer.Register(view);
  }
  SetItem(document, arguments.item, arguments.values);
  document.Save();
  if (observer.IsRegistered()) ReportChanges(options, observer);
  return kExitDone;
}

}  // namespace

void AddEditCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* note = app.add_subcommand("note", "Make a note on a document, as its response");
  note->add_option("store", arguments->store, "The store")->required();
  note->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  note->add_option("text", arguments->text, "What it says: its Subject")->required();
  note->add_option("--form", arguments->form, "Its item Form (default: Note)");
  note->callback([&options, arguments, result] { *result = RunNote(options, *arguments); });

  CLI::App* set = app.add_subcommand("set", "Give an item of a document its values");
  set->add_option("store", arguments->store, "The store")->required();
  set->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  set->add_option("item", arguments->item, "The item's name")->required();
  set->add_option("value", arguments->values, "Texts, or number:VALUE or time:YYYY-MM-DD[THH:MM[:SS]Z] for all of them")
      ->required();
  set->add_option("--watch", arguments->watch, "Tell what becomes of the rows of this view");
  set->callback([&options, arguments, result] { *result = RunSet(options, *arguments); });
}

}  // namespace tool
