// quillon create, info, check, compact: a store as a whole.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/records.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string title;
  bool overwrite = false;
  bool count = false;
};

int RunCreate(const Options& options, const Arguments& arguments) {
  Store up(options);
  VQCreateDatabaseOptions create;
  create.SetTitle(FromText(arguments.title));
  create.SetOverwriteExisting(arguments.overwrite ? 1 : 0);
  VQDatabase database;
  OnNamed(arguments.store,
          [&] { vq::ThrowIfError(up.session().CreateDatabase(StorePath(arguments.store), &database, create)); });
  PrintPath(options, ToText(database.GetFilepath()));
  return kExitDone;
}

struct Totals {
  std::int64_t documents = 0;
  std::int64_t items = 0;
  std::int64_t records = 0;
  std::int64_t value_bytes = 0;
};

std::int64_t CountRecords(const StoredItem& item) {
  if (item.type != TYPE_COMPOSITE) return 0;
  std::int64_t count = 0;
  RecordWalk walk{item.value};
  for (Record record; walk.Next(&record);) ++count;
  return count;
}

Totals CountAll(const Options& options, VQDatabase& database) {
  VQDocumentArray documents;
  database.GetDocuments(&documents);
  Totals totals;
  totals.documents = static_cast<std::int64_t>(documents.GetCount());
  Progress progress(options.progress, "counting", documents.GetCount());
  for (unsigned long i = 0; i < documents.GetCount(); ++i) {
    VQDocument document(documents[i]);
    document.Open();
    for (const StoredItem& item : ReadItems(document)) {
      ++totals.items;
      totals.records += CountRecords(item);
      totals.value_bytes += static_cast<std::int64_t>(item.value.size());
    }
    progress.Advance(i + 1);
  }
  return totals;
}

std::string MomentText(const VQDatetime& moment) { return TimeText(*moment.GetTIMEDATE()); }

// Two words, the date word first, as identifiers are written.
std::string IdentifierText(const TIMEDATE& id) {
  char text[18];
  std::snprintf(text, sizeof text, "%08X:%08X", id.DateWord, id.TimeWord);
  return text;
}

struct Info {
  std::vector<std::pair<std::string, std::string>> texts;
  std::vector<std::pair<std::string, std::int64_t>> numbers;
};

Info ReadInfo(const Options& options, const Arguments& arguments, VQDatabase& database) {
  Info info;
  info.texts = {{"path", ToText(database.GetFilepath())},
                {"title", ToText(database.GetTitle())},
                {"replica", IdentifierText(database.GetReplicaID())},
                {"created", MomentText(database.GetCreated())},
                {"modified", MomentText(database.GetLastModified())}};
  info.numbers = {{"bytes", static_cast<std::int64_t>(database.GetSize())},
                  {"build", static_cast<std::int64_t>(database.GetBuild())}};
  if (arguments.count) {
    const Totals totals = CountAll(options, database);
    info.numbers.insert(info.numbers.end(), {{"documents", totals.documents},
                                             {"items", totals.items},
                                             {"records", totals.records},
                                             {"value bytes", totals.value_bytes}});
    return info;
  }
  VQDocumentArray documents;
  database.GetDocuments(&documents);
  info.numbers.emplace_back("documents", static_cast<std::int64_t>(documents.GetCount()));
  return info;
}

int RunInfo(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  const Info info = ReadInfo(options, arguments, store.database());
  if (!options.json) {
    for (const auto& [name, text] : info.texts) std::cout << name << ": " << Printable(text) << '\n';
    for (const auto& [name, number] : info.numbers) std::cout << name << ": " << number << '\n';
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  for (const auto& [name, text] : info.texts) json.Field(name, text);
  for (const auto& [name, number] : info.numbers) json.Field(name, number);
  json.EndObject();
  return kExitDone;
}

struct Fault {
  std::int64_t document;  // 0 for the store itself
  std::string what;
};

void CheckRecords(std::int64_t document, const StoredItem& item, std::vector<Fault>* faults) {
  RecordWalk walk{item.value};
  for (Record record; walk.Next(&record);) {
    const RecordKind* kind = FindRecordKind(record.signature);
    if (!kind || record.bytes.size() >= kind->fixed) continue;
    faults->push_back({document, item.name + ", offset " + std::to_string(record.offset) + ": " +
                                     std::string(kind->name) + " is shorter than its fixed part"});
  }
  if (walk.damage()) {
    faults->push_back({document, item.name + ", offset " + std::to_string(walk.offset()) + ": " + walk.damage()});
  }
}

// Parses each rich text once, as an edit would.
void CheckTree(const VQDocument& document, const StoredItem& item, std::vector<Fault>* faults) {
  VQRichText body;
  VQRTContainer top;
  document.GetItem(FromText(item.name), &body);
  body.GetTopContainer(&top);
  if (!top.IsValid()) {
    faults->push_back({static_cast<std::int64_t>(document.GetSlateID()), item.name + ": the tree isn't valid"});
  }
}

void CheckAttachments(const VQDocument& document, std::vector<Fault>* faults) {
  VQItemArray attachments;
  document.GetAttachments(&attachments);
  for (unsigned long i = 0; i < attachments.GetCount(); ++i) {
    const VQAttachment attachment(attachments[i]);
    try {
      attachment.Check();
    } catch (VQSTATUS status) {
      faults->push_back({static_cast<std::int64_t>(document.GetSlateID()),
                         "attachment " + ToText(attachment.GetAttachmentName()) + ": " + StatusWords(status)});
    }
  }
}

void CheckDocument(VQDocument& document, std::vector<Fault>* faults) {
  const auto id = static_cast<std::int64_t>(document.GetSlateID());
  try {
    document.Open();
    std::string parsed;
    for (const StoredItem& item : ReadItems(document)) {
      if (item.type != TYPE_COMPOSITE || item.name == "$Fonts") continue;
      CheckRecords(id, item, faults);
      if (item.name != parsed) CheckTree(document, item, faults);
      parsed = item.name;
    }
    CheckAttachments(document, faults);
  } catch (VQSTATUS status) {
    faults->push_back({id, StatusWords(status)});
  }
}

void CheckFile(VQDatabase& database, std::vector<Fault>* faults, std::string* note) {
  VQString report;
  try {
    database.Check(&report);
    *note = ToText(report);
  } catch (VQSTATUS status) {
    const std::string detail = ToText(report);
    faults->push_back({0, StatusWords(status) + (detail.empty() ? "" : ": " + detail)});
  }
}

void ReportFaults(const Options& options, const std::vector<Fault>& faults, unsigned long documents,
                  const std::string& note) {
  if (!options.json) {
    if (!note.empty()) std::cout << "store: " << Printable(note) << '\n';
    for (const Fault& fault : faults) {
      std::cout << (fault.document ? "document " + std::to_string(fault.document) : "store") << ": "
                << Printable(fault.what) << '\n';
    }
    std::cout << documents << " documents checked, " << faults.size() << " faults\n";
    return;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("documents", static_cast<std::int64_t>(documents));
  json.Key("faults");
  json.BeginArray();
  for (const Fault& fault : faults) {
    json.BeginObject();
    json.Field("document", fault.document);
    json.Field("what", fault.what);
    json.EndObject();
  }
  json.EndArray();
  if (!note.empty()) json.Field("note", note);
  json.EndObject();
}

// The engine's "The database is damaged".
constexpr VQSTATUS kDamaged = 515;

int RunCheck(const Options& options, const Arguments& arguments) {
  Store store(options);
  std::vector<Fault> faults;
  try {
    store.Open(arguments.store, &store.database());
  } catch (VQSTATUS status) {
    if (status != kDamaged) throw;
    ReportFaults(options, {{0, StatusWords(status)}}, 0, {});
    return kExitDifferent;
  }
  std::string note;
  CheckFile(store.database(), &faults, &note);
  VQDocumentArray documents;
  store.database().GetDocuments(&documents);
  const unsigned long count = documents.GetCount();
  Progress progress(options.progress, "checking", count);
  for (unsigned long i = 0; i < count; ++i) {
    VQDocument document(documents[i]);
    CheckDocument(document, &faults);
    progress.Advance(i + 1);
  }
  ReportFaults(options, faults, count, note);
  return faults.empty() ? kExitDone : kExitDifferent;
}

int RunCompact(const Options& options, const Arguments& arguments) {
  Store store(options);
  unsigned long before = 0, after = 0;
  store.session().CompactDatabase(StorePath(arguments.store), &before, &after);
  if (!options.json) {
    std::cout << before << " bytes before, " << after << " bytes after\n";
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("before", static_cast<std::int64_t>(before));
  json.Field("after", static_cast<std::int64_t>(after));
  json.EndObject();
  return kExitDone;
}

using Command = int (*)(const Options&, const Arguments&);

CLI::App* Add(CLI::App& app, const char* name, const char* what, Command command, std::shared_ptr<Arguments> arguments,
              Options& options, int* result) {
  CLI::App* added = app.add_subcommand(name, what);
  added->add_option("store", arguments->store, "The store")->required();
  added->callback([&options, arguments, result, command] { *result = command(options, *arguments); });
  return added;
}

}  // namespace

void AddStoreCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* create = Add(app, "create", "Make an empty store", RunCreate, arguments, options, result);
  create->add_option("--title", arguments->title, "Its title");
  create->add_flag("--overwrite", arguments->overwrite, "Replace a store that is there");
  CLI::App* info = Add(app, "info", "Tell what a store is", RunInfo, arguments, options, result);
  info->add_flag("--count", arguments->count, "Count items and records too, which reads every document");
  Add(app, "check", "Check a store and every record stream in it", RunCheck, arguments, options, result);
  Add(app, "compact", "Give a store's unused bytes back", RunCompact, arguments, options, result);
}

}  // namespace tool
