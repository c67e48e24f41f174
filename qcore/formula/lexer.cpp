#include "qcore/formula/lexer.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "qcore/time/timetext.h"
#include "qcore/time/zone.h"

namespace qcore::formula {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v' || c == '\0'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string Cased(std::string_view text, bool upper) {
  std::string cased(text);
  for (char& c : cased) {
    if (upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
    if (!upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return cased;
}

bool IsReserved(std::string_view lower) {
  return lower == "select" || lower == "field" || lower == "default" || lower == "rem";
}

struct Sign {
  std::string_view text;
  TokenKind kind;
  Op op;
};

// Longer ones first.
constexpr Sign kSigns[] = {
    {"*!=", TokenKind::kBinary, Op::kEachNotEqual},
    {"*<>", TokenKind::kBinary, Op::kEachNotEqual},
    {"*<=", TokenKind::kBinary, Op::kEachLessEqual},
    {"*>=", TokenKind::kBinary, Op::kEachGreaterEqual},
    {"**", TokenKind::kBinary, Op::kEachMultiply},
    {"*/", TokenKind::kBinary, Op::kEachDivide},
    {"*+", TokenKind::kBinary, Op::kEachAdd},
    {"*-", TokenKind::kBinary, Op::kEachSubtract},
    {"*=", TokenKind::kBinary, Op::kEachEqual},
    {"*<", TokenKind::kBinary, Op::kEachLess},
    {"*>", TokenKind::kBinary, Op::kEachGreater},
    {":=", TokenKind::kAssign, Op::kEnd},
    {"!=", TokenKind::kBinary, Op::kNotEqual},
    {"=!", TokenKind::kBinary, Op::kNotEqual},
    {"<>", TokenKind::kBinary, Op::kNotEqual},
    {"><", TokenKind::kBinary, Op::kNotEqual},
    {"<=", TokenKind::kBinary, Op::kLessEqual},
    {">=", TokenKind::kBinary, Op::kGreaterEqual},
    {"=<", TokenKind::kBinary, Op::kLessEqual},
    {"=>", TokenKind::kBinary, Op::kGreaterEqual},
    {":", TokenKind::kBinary, Op::kList},
    {"*", TokenKind::kBinary, Op::kMultiply},
    {"/", TokenKind::kBinary, Op::kDivide},
    {"+", TokenKind::kBinary, Op::kAdd},
    {"-", TokenKind::kBinary, Op::kSubtract},
    {"=", TokenKind::kBinary, Op::kEqual},
    {"<", TokenKind::kBinary, Op::kLess},
    {">", TokenKind::kBinary, Op::kGreater},
    {"&", TokenKind::kBinary, Op::kAnd},
    {"|", TokenKind::kBinary, Op::kOr},
    {"!", TokenKind::kNot, Op::kNot},
    {";", TokenKind::kSemicolon, Op::kEnd},
    {"(", TokenKind::kOpen, Op::kEnd},
    {")", TokenKind::kClose, Op::kEnd},
};

// "time:date" in hexadecimal digits.
bool ParseExact(std::string_view text, TIMEDATE* moment) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return false;
  const char* const middle = text.data() + colon;
  const char* const end = text.data() + text.size();
  const auto time = std::from_chars(text.data(), middle, moment->TimeWord, 16);
  const auto date = std::from_chars(middle + 1, end, moment->DateWord, 16);
  return time.ec == std::errc() && time.ptr == middle && date.ec == std::errc() && date.ptr == end;
}

}  // namespace

bool ParseExactTimes(std::string_view text, TIMEDATE_PAIR* times, bool* range) {
  if (text.size() < 7 || !text.starts_with("@@") || !text.ends_with("@@")) return false;
  text = text.substr(2, text.size() - 4);
  const std::size_t dash = text.find('-');
  *range = dash != std::string_view::npos;
  times->Upper = {ENG_TIME_WILD, ENG_TIME_WILD};
  if (!ParseExact(text.substr(0, dash), &times->Lower)) return false;
  return !*range || ParseExact(text.substr(dash + 1), &times->Upper);
}

bool ParseTimes(std::string_view text, TIMEDATE_PAIR* times, bool* range) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  const INTLFORMAT settings = time::OwnSettings();
  const auto moment = time::ParseMoment(settings, time::kUsualFormat, text);
  *range = false;
  if (moment && moment->length == text.size()) {
    *times = {moment->moment, {ENG_TIME_WILD, ENG_TIME_WILD}};
    return true;
  }
  const auto pair = time::ParseRange(settings, time::kUsualFormat, text);
  if (!pair || pair->length != text.size()) return false;
  *times = pair->pair;
  *range = true;
  return true;
}

void Lexer::Skip() {
  while (at_ < text_.size() && IsSpace(text_[at_])) ++at_;
}

ENGSTATUS Lexer::ReadName(Token* token) {
  const std::size_t begin = at_;
  while (at_ < text_.size() && ContinuesIdentifier(static_cast<unsigned char>(text_[at_]))) ++at_;
  token->kind = TokenKind::kName;
  token->text = text_.substr(begin, at_ - begin);
  std::string lower = Cased(token->text, false);
  if (!IsReserved(lower)) return ENG_OK;
  token->kind = TokenKind::kReserved;
  token->text = std::move(lower);
  return ENG_OK;
}

ENGSTATUS Lexer::ReadNumber(Token* token) {
  const char* const begin = text_.data() + at_;
  const auto parsed = std::from_chars(begin, text_.data() + text_.size(), token->number);
  at_ = static_cast<std::size_t>(parsed.ptr - text_.data());
  if (parsed.ptr == begin) ++at_;
  while (at_ < text_.size() && ContinuesIdentifier(static_cast<unsigned char>(text_[at_]))) {
    ++at_;
    token->kind = TokenKind::kName;
  }
  const bool whole = token->kind != TokenKind::kName;
  token->kind = TokenKind::kNumber;
  return whole && parsed.ec == std::errc() && std::isfinite(token->number) ? ENG_OK : ENG_ERR_FORMULA_NUMBER;
}

// A backslash takes the next byte as it is.
ENGSTATUS Lexer::ReadQuoted(Token* token) {
  token->kind = TokenKind::kText;
  for (++at_; at_ < text_.size(); ++at_) {
    if (text_[at_] == '"') {
      ++at_;
      return ENG_OK;
    }
    if (text_[at_] == '\\' && at_ + 1 < text_.size()) ++at_;
    token->text += text_[at_];
  }
  return ENG_ERR_FORMULA_TEXT;
}

ENGSTATUS Lexer::ReadBraces(Token* token) {
  const std::size_t end = text_.find('}', at_);
  token->kind = TokenKind::kText;
  if (end == std::string_view::npos) {
    at_ = text_.size();
    return ENG_ERR_FORMULA_TEXT;
  }
  token->text = text_.substr(at_ + 1, end - at_ - 1);
  at_ = end + 1;
  return ENG_OK;
}

ENGSTATUS Lexer::ReadBracket(Token* token) {
  const std::size_t end = text_.find(']', at_);
  if (end == std::string_view::npos) {
    at_ = text_.size();
    return ENG_ERR_FORMULA_TEXT;
  }
  const std::string_view inside = text_.substr(at_ + 1, end - at_ - 1);
  at_ = end + 1;
  std::string upper = Cased(inside, true);
  if (IsKeyword(upper)) {
    token->kind = TokenKind::kKeyword;
    token->text = std::move(upper);
    return ENG_OK;
  }
  bool range = false;
  if (!ParseExactTimes(inside, &token->times, &range) && !ParseTimes(inside, &token->times, &range)) {
    return ENG_ERR_FORMULA_TIME;
  }
  token->kind = range ? TokenKind::kRange : TokenKind::kTime;
  return ENG_OK;
}

// @Name, @@number@@ or @@WORD@@.
ENGSTATUS Lexer::ReadAt(Token* token) {
  const bool twice = text_.substr(at_).starts_with("@@");
  at_ += twice ? 2 : 1;
  const std::size_t begin = at_;
  while (at_ < text_.size() && (IsLetter(text_[at_]) || IsDigit(text_[at_]) || text_[at_] == '_')) ++at_;
  token->kind = TokenKind::kFunction;
  token->text = text_.substr(begin, at_ - begin);
  if (!twice) return token->text.empty() ? ENG_ERR_FORMULA_FUNCTION : ENG_OK;
  if (!text_.substr(at_).starts_with("@@")) return ENG_ERR_FORMULA_FUNCTION;
  at_ += 2;
  token->by_number = !token->text.empty() && std::ranges::all_of(token->text, IsDigit);
  if (token->by_number) return ENG_OK;
  token->text = Cased(token->text, false);
  token->kind = TokenKind::kReserved;
  return IsReserved(token->text) ? ENG_OK : ENG_ERR_FORMULA_FUNCTION;
}

ENGSTATUS Lexer::ReadSign(Token* token) {
  const std::string_view rest = text_.substr(at_);
  const auto* sign = std::ranges::find_if(kSigns, [rest](const Sign& s) { return rest.starts_with(s.text); });
  if (sign == std::end(kSigns)) {
    ++at_;
    return ENG_ERR_FORMULA_CHARACTER;
  }
  token->kind = sign->kind;
  token->op = sign->op;
  at_ += sign->text.size();
  return ENG_OK;
}

ENGSTATUS Lexer::Next(Token* token) {
  *token = {};
  const std::size_t begin = at_;
  ENGSTATUS status = ENG_OK;
  if (at_ < text_.size()) {
    const char c = text_[at_];
    const bool number = IsDigit(c) || (c == '.' && at_ + 1 < text_.size() && IsDigit(text_[at_ + 1]));
    status = StartsIdentifier(static_cast<unsigned char>(c)) ? ReadName(token)
             : number                                        ? ReadNumber(token)
             : c == '"'                                      ? ReadQuoted(token)
             : c == '{'                                      ? ReadBraces(token)
             : c == '['                                      ? ReadBracket(token)
             : c == '@'                                      ? ReadAt(token)
                                                             : ReadSign(token);
  }
  token->place = {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(at_ - begin)};
  Skip();
  return status;
}

}  // namespace qcore::formula
