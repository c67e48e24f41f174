// quillon diff: two copies of a store, document by document, byte for byte.
#include <CLI/CLI.hpp>
#include <array>
#include <cstring>
#include <iostream>
#include <map>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"
#include "tools/quillon/records.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string before;
  std::string after;
};

using UniversalKey = std::array<unsigned char, sizeof(UNIVERSALSLATEID)>;
using Index = std::map<UniversalKey, unsigned long>;

UniversalKey KeyOf(const VQDocument& document) {
  UniversalKey key{};
  std::memcpy(key.data(), document.GetUniversalID(), key.size());
  return key;
}

Index IndexOf(VQDatabase& database) {
  VQDocumentArray documents;
  database.GetDocuments(&documents);
  Index index;
  for (unsigned long i = 0; i < documents.GetCount(); ++i) {
    const VQDocument document(documents[i]);
    index.emplace(KeyOf(document), document.GetSlateID());
  }
  return index;
}

std::vector<StoredItem> ItemsOf(VQDatabase& database, unsigned long id) {
  VQDocument document;
  database.GetDocument(id, &document);
  document.Open();
  return ReadItems(document);
}

// One name's values on both sides. Rich text is compared as one stream of records, since a change may move records
// from one item of the name to the next.
struct NamedValues {
  std::vector<const StoredItem*> before;
  std::vector<const StoredItem*> after;
};

struct ItemChange {
  std::string name;
  bool rich_text;
  std::size_t before;  // changed records or values
  std::size_t after;
  std::size_t same;
};

struct DocumentChange {
  unsigned long id;
  std::vector<ItemChange> items;
};

struct Difference {
  std::vector<DocumentChange> changed;
  std::vector<unsigned long> added;
  std::vector<unsigned long> removed;
  std::int64_t same = 0;

  bool empty() const { return changed.empty() && added.empty() && removed.empty(); }
};

// The records' bytes, or the whole value where they can't be told apart.
void AddPieces(const StoredItem& item, std::vector<std::string_view>* pieces) {
  const std::string_view value(reinterpret_cast<const char*>(item.value.data()), item.value.size());
  if (item.type != TYPE_COMPOSITE) return pieces->push_back(value);
  RecordWalk walk{item.value};
  for (Record record; walk.Next(&record);) pieces->push_back(value.substr(record.offset, record.bytes.size()));
  if (walk.damage()) pieces->push_back(value.substr(walk.offset()));
}

std::vector<std::string_view> Pieces(const std::vector<const StoredItem*>& items) {
  std::vector<std::string_view> pieces;
  for (const StoredItem* item : items) AddPieces(*item, &pieces);
  return pieces;
}

// What both start with and end with is the same; what lies between has changed.
ItemChange ComparePieces(const std::string& name, const NamedValues& values) {
  const auto before = Pieces(values.before);
  const auto after = Pieces(values.after);
  const std::size_t shorter = std::min(before.size(), after.size());
  std::size_t head = 0;
  while (head < shorter && before[head] == after[head]) ++head;
  std::size_t tail = 0;
  while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  const bool rich = !values.after.empty() && values.after[0]->type == TYPE_COMPOSITE;
  return {name, rich, before.size() - head - tail, after.size() - head - tail, head + tail};
}

bool SameKind(const NamedValues& values) {
  const auto kind = [](const std::vector<const StoredItem*>& items) {
    return items.empty() ? std::pair<int, int>(-1, -1) : std::pair<int, int>(items[0]->type, items[0]->flags);
  };
  return kind(values.before) == kind(values.after);
}

std::vector<ItemChange> CompareItems(const std::vector<StoredItem>& before, const std::vector<StoredItem>& after) {
  std::map<std::string, NamedValues> names;
  for (const StoredItem& item : before) names[item.name].before.push_back(&item);
  for (const StoredItem& item : after) names[item.name].after.push_back(&item);
  std::vector<ItemChange> changes;
  for (const auto& [name, values] : names) {
    ItemChange change = ComparePieces(name, values);
    if (change.before != 0 || change.after != 0 || !SameKind(values)) changes.push_back(std::move(change));
  }
  return changes;
}

Difference Compare(const Options& options, VQDatabase& before, VQDatabase& after) {
  const Index old_index = IndexOf(before);
  Index new_index = IndexOf(after);
  Difference difference;
  Progress progress(options.progress, "comparing", old_index.size());
  std::uint64_t done = 0;
  for (const auto& [key, id] : old_index) {
    progress.Advance(++done);
    const auto found = new_index.find(key);
    if (found == new_index.end()) {
      difference.removed.push_back(id);
      continue;
    }
    auto changes = CompareItems(ItemsOf(before, id), ItemsOf(after, found->second));
    if (changes.empty()) {
      ++difference.same;
    } else {
      difference.changed.push_back({found->second, std::move(changes)});
    }
    new_index.erase(found);
  }
  for (const auto& [key, id] : new_index) difference.added.push_back(id);
  return difference;
}

void Print(const Difference& difference) {
  for (const DocumentChange& document : difference.changed) {
    for (const ItemChange& item : document.items) {
      const char* pieces = item.rich_text ? "records" : "values";
      std::cout << "document " << document.id << ", " << Printable(item.name) << ": " << item.before << " -> "
                << item.after << ' ' << pieces << " changed, " << item.same << " the same\n";
    }
  }
  std::cout << difference.changed.size() << " documents changed, " << difference.added.size() << " added, "
            << difference.removed.size() << " removed, " << difference.same << " the same\n";
}

void WriteIds(JsonWriter& json, const char* name, const std::vector<unsigned long>& ids) {
  json.Key(name);
  json.BeginArray();
  for (const unsigned long id : ids) json.Integer(static_cast<std::int64_t>(id));
  json.EndArray();
}

void Write(const Difference& difference) {
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Key("changed");
  json.BeginArray();
  for (const DocumentChange& document : difference.changed) {
    for (const ItemChange& item : document.items) {
      json.BeginObject();
      json.Field("document", static_cast<std::int64_t>(document.id));
      json.Field("item", item.name);
      json.Field("before", static_cast<std::int64_t>(item.before));
      json.Field("after", static_cast<std::int64_t>(item.after));
      json.Field("same", static_cast<std::int64_t>(item.same));
      json.EndObject();
    }
  }
  json.EndArray();
  WriteIds(json, "added", difference.added);
  WriteIds(json, "removed", difference.removed);
  json.Field("same", difference.same);
  json.EndObject();
}

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.before);
  VQDatabase after;
  OnNamed(arguments.after, [&] { store.Open(arguments.after, &after); });
  const Difference difference = Compare(options, store.database(), after);
  options.json ? Write(difference) : Print(difference);
  return difference.empty() ? kExitDone : kExitDifferent;
}

}  // namespace

void AddDiffCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* diff = app.add_subcommand("diff", "Compare two copies of a store, document by document, byte for byte");
  diff->add_option("before", arguments->before, "A store")->required();
  diff->add_option("after", arguments->after, "A copy of it, changed since")->required();
  diff->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
