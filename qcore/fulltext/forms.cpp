// Words beside the words of a query: English forms, synonyms.
#include <algorithm>
#include <fstream>
#include <functional>
#include <set>

#include "qcore/fulltext/query.h"
#include "qcore/settings/settings.h"
#include "qcore/text/tokens.h"

namespace qcore {

namespace {

constexpr std::size_t kShortestRoot = 3;
constexpr std::size_t kMostForms = 40;

using Words = std::set<std::string>;

// The one word of the text, folded; empty when there are several.
std::string SingleWord(std::string_view text) {
  std::vector<std::string> words;
  text::Tokenize(text::AsText(text), text::TokenUse::kQuery, &words, [](void* to, const text::Token& token) {
    static_cast<std::vector<std::string>*>(to)->emplace_back(token.text);
    return 0;
  });
  return words.size() == 1 ? words.front() : std::string();
}

bool IsVowel(char c) { return std::string_view("aeiou").find(c) != std::string_view::npos; }

bool EndsDoubled(const std::string& word) {
  const std::size_t size = word.size();
  return size > kShortestRoot && word[size - 1] == word[size - 2] && !IsVowel(word.back());
}

// What the word may be a form of, with itself.
Words Roots(const std::string& word) {
  Words roots{word};
  const auto strip = [&](std::string_view ending, std::string_view instead) {
    if (!word.ends_with(ending) || word.size() < ending.size() + kShortestRoot - instead.size()) return;
    std::string root = word.substr(0, word.size() - ending.size());
    if (root.size() < 2) return;
    if (instead.empty() && EndsDoubled(root)) roots.insert(root.substr(0, root.size() - 1));
    root += instead;
    roots.insert(root);
  };
  if (!word.ends_with("ss")) strip("s", "");
  strip("es", "");
  strip("ies", "y");
  for (const char* ending : {"ed", "er", "ers", "ing", "ings"}) {
    strip(ending, "");
    strip(ending, "e");
  }
  strip("ied", "y");
  return roots;
}

void AddForms(const std::string& root, Words* forms) {
  forms->insert(root);
  const char last = root.back();
  const std::string stem = last == 'e' ? root.substr(0, root.size() - 1) : root;
  const bool to_i = last == 'y' && root.size() > 1 && !IsVowel(root[root.size() - 2]);
  const bool hisses = last == 's' || last == 'x' || last == 'z' || root.ends_with("ch") || root.ends_with("sh");
  const std::string base = to_i ? root.substr(0, root.size() - 1) + "i" : stem;
  forms->insert(to_i || hisses ? base + "es" : root + "s");
  for (const char* ending : {"ed", "er", "ers"}) forms->insert(base + ending);
  forms->insert(stem + "ing");
  const std::size_t size = root.size();
  const bool doubles = size >= 3 && !IsVowel(last) && IsVowel(root[size - 2]) && !IsVowel(root[size - 3]) &&
                       last != 'w' && last != 'x' && last != 'y';
  if (!doubles) return;
  for (const char* ending : {"ed", "er", "ers", "ing"}) forms->insert(root + last + ending);
}

Words FormsOf(const std::string& word) {
  Words forms{word};
  const bool is_english =
      word.size() >= kShortestRoot && std::ranges::all_of(word, [](char c) { return c >= 'a' && c <= 'z'; });
  if (!is_english) return forms;
  for (const std::string& root : Roots(word)) {
    if (forms.size() < kMostForms) AddForms(root, &forms);
  }
  return forms;
}

// Replaces each single word by a choice of the words that `others` gives for it. Near takes phrases alone.
void Widen(TextQuery* query, const std::function<Words(const std::string&)>& others) {
  if (query->kind == TextQuery::Kind::kNear) return;
  for (TextQuery& part : query->parts) Widen(&part, others);
  if (query->kind != TextQuery::Kind::kPhrase || query->prefix || query->exact) return;
  const std::string word = SingleWord(query->text);
  const Words words = word.empty() ? Words() : others(word);
  if (words.size() < 2) return;
  TextQuery choice;
  choice.kind = TextQuery::Kind::kOr;
  for (const std::string& each : words) {
    choice.parts.emplace_back();
    choice.parts.back().text = each;
    choice.parts.back().exact = each != word;  // widened once
  }
  *query = std::move(choice);
}

// Words that stand for each other, without the blanks around them.
std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> words;
  for (std::size_t start = 0; start <= line.size();) {
    const std::size_t comma = std::min(line.find(',', start), line.size());
    const std::size_t first = line.find_first_not_of(" \t\r", start);
    if (first < comma) {
      const std::size_t last = line.find_last_not_of(" \t\r", comma - 1);
      words.push_back(line.substr(first, last + 1 - first));
    }
    start = comma + 1;
  }
  return words;
}

}  // namespace

void AddWordForms(TextQuery* query) { Widen(query, FormsOf); }

ENGSTATUS AddSynonyms(TextQuery* query) {
  const std::string file = settings::Get("FullTextThesaurus");
  if (file.empty()) return ENG_OK;
  std::ifstream lines(file);
  if (!lines) return ENG_ERR_FILE_OPEN;
  std::vector<std::vector<std::string>> groups;
  for (std::string line; std::getline(lines, line);) groups.push_back(SplitLine(line));
  if (lines.bad()) return ENG_ERR_FILE_READ;
  Widen(query, [&groups](const std::string& word) {
    Words words{word};
    for (const std::vector<std::string>& group : groups) {
      if (std::ranges::any_of(group, [&](const std::string& each) { return SingleWord(each) == word; })) {
        words.insert(group.begin(), group.end());
      }
    }
    return words;
  });
  return ENG_OK;
}

}  // namespace qcore
