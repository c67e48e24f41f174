// quillon index, search: full text.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/views.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string query;
  std::string view;
  std::string field;
  std::string order = "relevance";
  unsigned long limit = 250;
  bool exact = false;
  bool index = false;
  bool anew = false;
  bool remove = false;
};

// The engine's "there is no full text index".
constexpr VQSTATUS kNoIndex = 3842;

VQFTIndexStatistics UpdateIndex(const Options& options, VQDatabase& database, bool anew) {
  Progress progress(options.progress, "indexing texts", 0);
  VQFTIndexStatistics statistics;
  if (!anew) {
    try {
      database.UpdateFTIndex(&statistics, ShowProgress, &progress);
      return statistics;
    } catch (VQSTATUS status) {
      if (vq::EngineError(status) != kNoIndex) throw;
    }
  }
  database.CreateFTIndex(&statistics, ShowProgress, &progress);
  return statistics;
}

int RunIndex(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  if (arguments.remove) {
    store.database().DeleteFTIndex();
    return kExitDone;
  }
  const VQFTIndexStatistics statistics = UpdateIndex(options, store.database(), arguments.anew);
  const std::pair<const char*, unsigned long> numbers[] = {{"added", statistics.GetDocumentsAdded()},
                                                           {"updated", statistics.GetDocumentsUpdated()},
                                                           {"deleted", statistics.GetDocumentsDeleted()},
                                                           {"bytes", statistics.GetBytesIndexed()}};
  if (!options.json) {
    for (const auto& [name, number] : numbers) std::cout << name << ": " << number << '\n';
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  for (const auto& [name, number] : numbers) json.Field(name, static_cast<std::int64_t>(number));
  json.EndObject();
  return kExitDone;
}

constexpr std::pair<const char*, VQFTSORTORDER> kOrders[] = {
    {"relevance", VQFTSORTORDER_RELEVANCE},
    {"newest", VQFTSORTORDER_NEWEST_FIRST},
    {"oldest", VQFTSORTORDER_OLDEST_FIRST},
};

VQFTSearchOptions SearchOptions(const Arguments& arguments) {
  VQFTSearchOptions search;
  for (const auto& [name, order] : kOrders) {
    if (arguments.order == name) search.SetSortOrder(order);
  }
  search.SetMaxDocuments(arguments.limit);
  search.SetStemWords(arguments.exact ? 0 : 1);
  return search;
}

VQString QueryOf(const Arguments& arguments) {
  if (arguments.field.empty()) return FromText(arguments.query);
  if (arguments.field.find(']') != std::string::npos) throw Failure{kExitUsage, "no item is called so"};
  return FromText("[" + arguments.field + "] CONTAINS (" + arguments.query + ")");
}

void SearchView(const Options& options, const Arguments& arguments, VQDatabase& database) {
  VQViewFolder view;
  OpenView(options, database, arguments.view, &view);
  VQVFNavigator hits;
  if (view.FTSearch(QueryOf(arguments), &hits, SearchOptions(arguments)) != VQ_OK) {
    throw Failure{kExitNotFound, "nothing found"};
  }
  ShowRows(options, view, hits, {});
}

struct Hit {
  std::int64_t score;
  std::int64_t id;
  std::string subject;
};

void PrintHit(const Hit& hit) {
  if (hit.score) std::cout << hit.score;
  std::cout << '\t' << hit.id << '\t' << Printable(hit.subject) << '\n';
}

void WriteHit(JsonWriter& json, const Hit& hit) {
  json.BeginObject();
  if (hit.score) json.Field("score", hit.score);
  json.Field("id", hit.id);
  json.Field("subject", hit.subject);
  json.EndObject();
}

void SearchStore(const Options& options, const Arguments& arguments, VQDatabase& database) {
  VQDocumentArray hits;
  if (database.FTSearch(QueryOf(arguments), &hits, SearchOptions(arguments)) != VQ_OK) {
    throw Failure{kExitNotFound, "nothing found"};
  }
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  for (unsigned long i = 0; i < hits.GetCount(); ++i) {
    VQDocument document(hits[i]);
    document.Open();
    const Hit hit{hits.GetFTSearchScore(i), static_cast<std::int64_t>(hits.GetSlateID(i)), TextOf(document, "Subject")};
    options.json ? WriteHit(json, hit) : PrintHit(hit);
  }
  if (options.json) json.EndArray();
}

int RunSearch(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  if (arguments.index) UpdateIndex(options, store.database(), false);
  arguments.view.empty() ? SearchStore(options, arguments, store.database())
                         : SearchView(options, arguments, store.database());
  return kExitDone;
}

}  // namespace

void AddSearchCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* index = app.add_subcommand("index", "Make the full text index, or bring it up to date");
  index->add_option("store", arguments->store, "The store")->required();
  CLI::Option* anew = index->add_flag("--anew", arguments->anew, "From nothing");
  index->add_flag("--delete", arguments->remove, "Take it away")->excludes(anew);
  index->callback([&options, arguments, result] { *result = RunIndex(options, *arguments); });

  CLI::App* search = app.add_subcommand("search", "Find documents by their text: score, number, subject");
  search->add_option("store", arguments->store, "The store")->required();
  search->add_option("query", arguments->query, "Words, \"phrases\", AND, OR, NOT, NEAR, beginnings*")->required();
  search->add_option("--view", arguments->view, "Only rows of this view, shown as its rows");
  search->add_option("--field", arguments->field, "Only in items of this name");
  search->add_option("--order", arguments->order, "relevance (default), newest, oldest")
      ->check(CLI::IsMember({"relevance", "newest", "oldest"}));
  search->add_option("--limit", arguments->limit, "At most so many (default: 250; 0: all)")
      ->check(CLI::Range(0, 65535));
  search->add_flag("--exact", arguments->exact, "Only the words as they stand, without their other forms");
  search->add_flag("--index", arguments->index, "Bring the index up to date first");
  search->callback([&options, arguments, result] { *result = RunSearch(options, *arguments); });
}

}  // namespace tool
