#include "qcore/text/classes.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <string_view>

#include "qcore/text/utf8.h"

namespace qcore::text {

namespace {

bool IsAsciiAlpha(std::int32_t code) { return (code | 0x20) >= 'a' && (code | 0x20) <= 'z'; }
bool IsAsciiDigit(std::int32_t code) { return code >= '0' && code <= '9'; }

bool IsAscii(Class which, std::int32_t code) {
  switch (which) {
    case Class::kAlnum:
      return IsAsciiAlpha(code) || IsAsciiDigit(code);
    case Class::kAlpha:
      return IsAsciiAlpha(code);
    case Class::kArith:
      return code != 0 && std::string_view("+-*/%^<=>").find(static_cast<char>(code)) != std::string_view::npos;
    case Class::kCntrl:
      return code < 0x20 || code == 0x7F;
    case Class::kDigit:
      return IsAsciiDigit(code);
    case Class::kLower:
      return code >= 'a' && code <= 'z';
    case Class::kPunct:
      return code > 0x20 && code < 0x7F && !IsAsciiAlpha(code) && !IsAsciiDigit(code);
    case Class::kSpace:
      return code == ' ' || (code >= '\t' && code <= '\r');
    case Class::kUpper:
      return code >= 'A' && code <= 'Z';
  }
  return false;
}

bool IsUnicode(Class which, std::int32_t code) {
  switch (which) {
    case Class::kAlnum:
      return u_isUAlphabetic(code) || u_isdigit(code);
    case Class::kAlpha:
      return u_isUAlphabetic(code);
    case Class::kArith:
      return u_charType(code) == U_MATH_SYMBOL;
    case Class::kCntrl:
      return u_charType(code) == U_CONTROL_CHAR;
    case Class::kDigit:
      return u_isdigit(code);
    case Class::kLower:
      return u_isULowercase(code);
    case Class::kPunct:
      return u_ispunct(code);
    case Class::kSpace:
      return u_isUWhiteSpace(code);
    case Class::kUpper:
      return u_isUUppercase(code);
  }
  return false;
}

}  // namespace

bool Is(Class which, std::int32_t code) {
  if (code >= kInvalidBase) return false;
  return code < 0x80 ? IsAscii(which, code) : IsUnicode(which, code);
}

bool IsWord(std::int32_t code) {
  if (code < 0x80) return IsAsciiAlpha(code) || IsAsciiDigit(code);
  if (code >= kInvalidBase) return false;
  return u_isUAlphabetic(code) || (U_GET_GC_MASK(code) & (U_GC_L_MASK | U_GC_ND_MASK | U_GC_M_MASK)) != 0;
}

bool IsAccent(std::int32_t code) {
  constexpr std::uint8_t kKanaVoicing = 8;
  if (code < 0x300 || code >= kInvalidBase || u_charType(code) != U_NON_SPACING_MARK) return false;
  UErrorCode error = U_ZERO_ERROR;
  return uscript_getScript(code, &error) == USCRIPT_INHERITED && u_getCombiningClass(code) != kKanaVoicing;
}

}  // namespace qcore::text
