// quillon replace: a word in a document's rich text, found by a cursor.
#include <CLI/CLI.hpp>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string word;
  std::string replacement;
  std::string item = "Body";
  bool all = false;
  bool ignore_case = false;
};

// The new word goes in front of the old one before that is cut out, so that it takes the old one's font even where
// the word is all that its run holds.
void ReplaceAt(VQRichText& body, VQRTCursor* cursor, const VQString& word, const VQString& replacement) {
  body.Insert(replacement, cursor, 0);
  body.Delete(cursor, word.GetLength());
}

std::int64_t ReplaceIn(VQRichText& body, const Arguments& arguments) {
  const VQString word = FromText(arguments.word);
  const VQString replacement = FromText(arguments.replacement);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  cursor.SetSearchOptions(arguments.ignore_case ? VQRTSEARCH_IGNORE_CASE : 0);
  std::int64_t count = 0;
  VQSTATUS found = cursor.GotoFirst(word);
  while (found == VQ_OK) {
    ReplaceAt(body, &cursor, word, replacement);
    ++count;
    if (!arguments.all) break;
    found = cursor.GotoNext(word);
  }
  return count;
}

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQRichText body;
  FindRichText(document, arguments.item, &body);
  const std::int64_t count = ReplaceIn(body, arguments);
  if (count == 0) throw Failure{kExitNotFound, "\"" + Printable(arguments.word) + "\" isn't in the text"};
  document.Save();
  if (options.json) {
    JsonWriter json(std::cout);
    json.BeginObject();
    json.Field("document", static_cast<std::int64_t>(document.GetSlateID()));
    json.Field("replaced", count);
    json.EndObject();
  } else {
    std::cout << "document " << document.GetSlateID() << ": " << count << " replaced\n";
  }
  return kExitDone;
}

}  // namespace

void AddReplaceCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* replace = app.add_subcommand("replace", "Find a word in a document's rich text, replace it and save");
  replace->add_option("store", arguments->store, "The store")->required();
  replace->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  replace->add_option("word", arguments->word, "What to find")->required();
  replace->add_option("replacement", arguments->replacement, "What to put in its place")->required();
  replace->add_option("--item", arguments->item, "The rich text item (default: Body)");
  replace->add_flag("--all", arguments->all, "Every place, not the first alone");
  replace->add_flag("--ignore-case", arguments->ignore_case, "Find it in any case");
  replace->callback([&options, arguments, result] {
    if (arguments->word.empty()) throw Failure{kExitUsage, "an empty word can't be found"};
    *result = Run(options, *arguments);
  });
}

}  // namespace tool
