#include "qcore/formula/patterns.h"

#include <cstdint>
#include <vector>

#include "qcore/text/utf8.h"

namespace qcore::formula {

namespace {

struct SetRange {
  std::int32_t first;
  std::int32_t last;
};
// One place of a pattern: any number of characters, or one of a set, or not of it.
struct Part {
  bool many = false;
  bool inverse = false;
  std::vector<SetRange> set;

  bool Takes(std::int32_t code) const {
    for (const SetRange& range : set) {
      if (code >= range.first && code <= range.last) return !inverse;
    }
    return inverse;
  }
};

std::vector<std::int32_t> CodesOf(std::string_view text) {
  std::vector<std::int32_t> codes;
  const auto* bytes = reinterpret_cast<const ENGCHAR*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    const text::Character character = text::Decode(bytes + at, text.size() - at);
    codes.push_back(character.code);
    at += character.length;
  }
  return codes;
}

Part Any() { return {false, true, {}}; }
Part Many() { return {true, true, {}}; }
Part One(std::int32_t code) { return {false, false, {{code, code}}}; }

// The set that starts at `at`, which moves to its '}'. One that does not end is a brace by itself.
Part ReadSet(const std::vector<std::int32_t>& codes, std::size_t* at) {
  std::size_t end = *at + 1;
  while (end < codes.size() && codes[end] != '}') ++end;
  if (end == codes.size()) return One('{');
  Part part;
  std::size_t i = *at + 1;
  if (i < end && codes[i] == '!') {
    part.inverse = true;
    ++i;
  }
  for (; i < end; ++i) {
    const bool range = i + 2 < end && codes[i + 1] == '-';
    part.set.push_back({codes[i], codes[range ? i + 2 : i]});
    if (range) i += 2;
  }
  *at = end;
  return part;
}

std::vector<Part> ReadPattern(std::string_view pattern) {
  const std::vector<std::int32_t> codes = CodesOf(pattern);
  std::vector<Part> parts;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] == '\\' && i + 1 < codes.size()) {
      parts.push_back(One(codes[++i]));
    } else if (codes[i] == '{') {
      parts.push_back(ReadSet(codes, &i));
    } else {
      parts.push_back(codes[i] == '?' ? Any() : codes[i] == '*' ? Many() : One(codes[i]));
    }
  }
  return parts;
}

// Going back only to the last place of any number keeps this at text times pattern.
bool Match(std::string_view text, const std::vector<Part>& parts) {
  constexpr std::size_t kNone = SIZE_MAX;
  const auto* const bytes = reinterpret_cast<const ENGCHAR*>(text.data());
  std::size_t at = 0;
  std::size_t part = 0;
  std::size_t many = kNone;
  std::size_t retry = 0;
  while (at < text.size()) {
    const text::Character character = text::Decode(bytes + at, text.size() - at);
    if (part < parts.size() && parts[part].many) {
      many = part++;
      retry = at;
    } else if (part < parts.size() && parts[part].Takes(character.code)) {
      ++part;
      at += character.length;
    } else if (many != kNone) {
      part = many + 1;
      retry += text::Decode(bytes + retry, text.size() - retry).length;
      at = retry;
    } else {
      return false;
    }
  }
  while (part < parts.size() && parts[part].many) ++part;
  return part == parts.size();
}

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

bool MatchesPattern(std::string_view text, std::string_view pattern) { return Match(text, ReadPattern(pattern)); }

bool IsLike(std::string_view text, std::string_view pattern, std::string_view escape) {
  const std::vector<std::int32_t> escapes = CodesOf(escape);
  const std::vector<std::int32_t> codes = CodesOf(pattern);
  std::vector<Part> parts;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (!escapes.empty() && codes[i] == escapes[0] && i + 1 < codes.size()) {
      parts.push_back(One(codes[++i]));
    } else {
      parts.push_back(codes[i] == '_' ? Any() : codes[i] == '%' ? Many() : One(codes[i]));
    }
  }
  return Match(text, parts);
}

std::string SoundexOf(std::string_view text) {
  constexpr std::string_view kClasses = "01230120022455012623010202";
  std::string code;
  char last = 0;
  for (const char c : text) {
    if (!IsLetter(c)) continue;
    const char upper = static_cast<char>(c & ~0x20);
    const char digit = kClasses[static_cast<std::size_t>(upper - 'A')];
    if (code.empty()) {
      code += upper;
    } else if (digit != '0' && digit != last) {
      code += digit;
      if (code.size() == 4) return code;
    }
    // H and W do not part two letters of one class.
    if (upper != 'H' && upper != 'W') last = digit;
  }
  if (!code.empty()) code.resize(4, '0');
  return code;
}

std::string UrlEncoded(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    if (IsLetter(c) || IsDigit(c) || c == '-' || c == '_' || c == '.' || c == '~') {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return encoded;
}

std::string UrlDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%' && at + 2 < text.size() && HexDigit(text[at + 1]) >= 0 && HexDigit(text[at + 2]) >= 0) {
      decoded += static_cast<char>(HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2]));
      at += 2;
    } else {
      decoded += text[at] == '+' ? ' ' : text[at];
    }
  }
  return decoded;
}

}  // namespace qcore::formula
