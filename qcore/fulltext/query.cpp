#include "qcore/fulltext/query.h"

#include <algorithm>
#include <charconv>

#include "qcore/text/tokens.h"

namespace qcore {

namespace {

constexpr std::size_t kLongestQuery = 65535;
constexpr int kDeepest = 32;
constexpr std::size_t kMostUnits = 512;
constexpr std::uint32_t kUsualDistance = 10;
constexpr std::uint32_t kLargestDistance = 10000;

struct Lexeme {
  enum class Kind { kEnd, kWord, kQuoted, kName, kOpen, kClose, kAnd, kOr, kNot, kNear, kField, kContains, kBad };
  Kind kind = Kind::kEnd;
  std::string text;
  std::uint32_t distance = 0;
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool IsKeyword(std::string_view text, std::string_view keyword) {
  return std::ranges::equal(
      text, keyword, [](char a, char b) { return (a >= 'a' && a <= 'z' ? static_cast<char>(a - 'a' + 'A') : a) == b; });
}

Lexeme Word(std::string_view text) {
  using Kind = Lexeme::Kind;
  constexpr std::pair<std::string_view, Kind> kKeywords[] = {{"AND", Kind::kAnd},     {"OR", Kind::kOr},
                                                             {"NOT", Kind::kNot},     {"NEAR", Kind::kNear},
                                                             {"FIELD", Kind::kField}, {"CONTAINS", Kind::kContains}};
  for (const auto& [keyword, kind] : kKeywords) {
    if (IsKeyword(text, keyword)) return {kind, std::string(text), kUsualDistance};
  }
  if (text.size() > 5 && IsKeyword(text.substr(0, 5), "NEAR/")) {
    std::uint32_t distance = 0;
    const auto [end, error] = std::from_chars(text.data() + 5, text.data() + text.size(), distance);
    const bool good = error == std::errc() && end == text.data() + text.size() && distance <= kLargestDistance;
    return {good ? Kind::kNear : Kind::kBad, std::string(text), distance};
  }
  return {Kind::kWord, std::string(text), 0};
}

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  Lexeme Next() {
    using Kind = Lexeme::Kind;
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
    if (at_ == text_.size()) return {};
    switch (text_[at_]) {
      case '(':
        return Sign(Kind::kOpen);
      case ')':
        return Sign(Kind::kClose);
      case '&':
        return Sign(Kind::kAnd);
      case '|':
        return Sign(Kind::kOr);
      case '!':
        return Sign(Kind::kNot);
      case '"':
        return Until('"', Kind::kQuoted);
      case '[':
        return Until(']', Kind::kName);
      default:
        break;
    }
    const std::size_t start = at_;
    while (at_ < text_.size() && !IsBlank(text_[at_]) && kSigns.find(text_[at_]) == std::string_view::npos) ++at_;
    return Word(text_.substr(start, at_ - start));
  }

 private:
  static constexpr std::string_view kSigns = "()&|!\"[";

  Lexeme Sign(Lexeme::Kind kind) {
    ++at_;
    return {kind, {}, 0};
  }
  Lexeme Until(char end, Lexeme::Kind kind) {
    const std::size_t close = text_.find(end, at_ + 1);
    if (close == std::string_view::npos) return {Lexeme::Kind::kBad, {}, 0};
    const std::string_view inside = text_.substr(at_ + 1, close - at_ - 1);
    at_ = close + 1;
    return {kind, std::string(inside), 0};
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

bool HasWords(std::string_view text) {
  return text::Tokenize(text::AsText(text), text::TokenUse::kQuery, nullptr,
                        [](void*, const text::Token&) { return 1; }) != 0;
}

// Each function takes one rule of the grammar; false ends the parse.
class Parser {
 public:
  explicit Parser(std::string_view text) : lexer_(text), next_(lexer_.Next()) {}

  bool Parse(TextQuery* query) { return TakeOr(query, 0) && next_.kind == Lexeme::Kind::kEnd; }

 private:
  using Kind = Lexeme::Kind;

  void Step() { next_ = lexer_.Next(); }
  bool StartsUnit() const {
    return next_.kind == Kind::kWord || next_.kind == Kind::kQuoted || next_.kind == Kind::kName ||
           next_.kind == Kind::kOpen || next_.kind == Kind::kField;
  }
  // Adds a part to a node of the kind, which is made of what stands there when it is another.
  static void Join(TextQuery::Kind kind, TextQuery* query, TextQuery part) {
    if (query->kind != kind || kind == TextQuery::Kind::kNot) {
      TextQuery first = std::move(*query);
      *query = TextQuery();
      query->kind = kind;
      query->parts.push_back(std::move(first));
    }
    query->parts.push_back(std::move(part));
  }

  bool TakeOr(TextQuery* query, int depth) {
    if (depth > kDeepest || !TakeAnd(query, depth)) return false;
    while (next_.kind == Kind::kOr) {
      Step();
      TextQuery part;
      if (!TakeAnd(&part, depth)) return false;
      Join(TextQuery::Kind::kOr, query, std::move(part));
    }
    return true;
  }

  bool TakeAnd(TextQuery* query, int depth) {
    if (!TakeNear(query, depth)) return false;
    while (next_.kind == Kind::kAnd || next_.kind == Kind::kNot || StartsUnit()) {
      if (next_.kind == Kind::kAnd) Step();
      const bool without = next_.kind == Kind::kNot;
      if (without) Step();
      TextQuery part;
      if (!TakeNear(&part, depth)) return false;
      Join(without ? TextQuery::Kind::kNot : TextQuery::Kind::kAnd, query, std::move(part));
    }
    return true;
  }

  bool TakeNear(TextQuery* query, int depth) {
    if (!TakeUnit(query, depth)) return false;
    while (next_.kind == Kind::kNear) {
      const std::uint32_t distance = next_.distance;
      Step();
      TextQuery part;
      if (!TakeUnit(&part, depth) || part.kind != TextQuery::Kind::kPhrase) return false;
      if (query->kind != TextQuery::Kind::kPhrase && query->kind != TextQuery::Kind::kNear) return false;
      Join(TextQuery::Kind::kNear, query, std::move(part));
      query->distance = std::max(query->distance, distance);
    }
    return true;
  }

  bool TakeUnit(TextQuery* query, int depth) {
    if (++units_ > kMostUnits) return false;
    const Lexeme taken = next_;
    Step();
    switch (taken.kind) {
      case Kind::kWord:
        return TakeWord(taken.text, query);
      case Kind::kQuoted:
        query->text = taken.text;
        query->exact = true;
        return HasWords(query->text);
      case Kind::kOpen: {
        if (!TakeOr(query, depth + 1) || next_.kind != Kind::kClose) return false;
        Step();
        return true;
      }
      case Kind::kField: {
        const std::string name = next_.text;
        const bool named = next_.kind == Kind::kWord || next_.kind == Kind::kQuoted || next_.kind == Kind::kName;
        Step();
        return named && TakeField(name, query, depth);
      }
      case Kind::kName:
        return TakeField(taken.text, query, depth);
      default:
        return false;
    }
  }

  bool TakeWord(const std::string& word, TextQuery* query) {
    query->prefix = word.back() == '*';
    query->text = query->prefix ? word.substr(0, word.size() - 1) : word;
    return query->text.find_first_of("*?") == std::string::npos && HasWords(query->text);
  }

  bool TakeField(const std::string& name, TextQuery* query, int depth) {
    if (name.empty() || next_.kind != Kind::kContains) return false;
    Step();
    query->kind = TextQuery::Kind::kField;
    query->text = name;
    query->parts.emplace_back();
    return depth < kDeepest && TakeUnit(&query->parts.back(), depth + 1);
  }

  Lexer lexer_;
  Lexeme next_;
  std::size_t units_ = 0;
};

}  // namespace

ENGSTATUS ParseTextQuery(std::string_view text, TextQuery* query) {
  *query = TextQuery();
  if (text.size() > kLongestQuery) return ENG_ERR_TEXT_QUERY;
  return Parser(text).Parse(query) ? ENG_OK : ENG_ERR_TEXT_QUERY;
}

bool HasFields(const TextQuery& query) {
  return query.kind == TextQuery::Kind::kField || std::ranges::any_of(query.parts, HasFields);
}

}  // namespace qcore
