// Words and signs of formula text.
#ifndef QUILLON_QCORE_FORMULA_LEXER_H
#define QUILLON_QCORE_FORMULA_LEXER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/types.h"
#include "qcore/formula/code.h"

namespace qcore::formula {

enum class TokenKind {
  kEnd,
  kName,
  kFunction,  // @Name or @@number@@; `text` without the signs
  kReserved,  // SELECT, FIELD, DEFAULT, REM, also as @@SELECT@@; `text` in lower case
  kNumber,
  kText,
  kTime,
  kRange,
  kKeyword,  // [WORD]; `text` in upper case
  kBinary,   // `op`; '-' is kSubtract and ':' is kList
  kNot,
  kAssign,
  kSemicolon,
  kOpen,
  kClose,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  Op op = Op::kEnd;
  bool by_number = false;  // a function
  double number = 0;
  TIMEDATE_PAIR times{};
  std::string text;
  Place place;
};

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) { Skip(); }

  // On a failure the token's place is that of what is wrong.
  [[nodiscard]] ENGSTATUS Next(Token* token);

 private:
  void Skip();
  ENGSTATUS ReadName(Token* token);
  ENGSTATUS ReadNumber(Token* token);
  ENGSTATUS ReadQuoted(Token* token);
  ENGSTATUS ReadBraces(Token* token);
  ENGSTATUS ReadBracket(Token* token);
  ENGSTATUS ReadAt(Token* token);
  ENGSTATUS ReadSign(Token* token);

  std::string_view text_;
  std::size_t at_ = 0;
};

// The word of a time in decompiled code: "@@time word:date word@@", for a range twice with '-' between.
bool ParseExactTimes(std::string_view text, TIMEDATE_PAIR* times, bool* range);
// As a literal is read, by the process's settings.
bool ParseTimes(std::string_view text, TIMEDATE_PAIR* times, bool* range);

}  // namespace qcore::formula

#endif
