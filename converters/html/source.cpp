#include "converters/html/source.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>

#include "converters/html/css.h"
#include "converters/parts/utf8.h"

namespace conv {

namespace {

constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;

// Names that go without a semicolon: those of the characters from U+00A0 on, and some more.
constexpr std::string_view kLatinNames[] = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",    "copy",   "ordf",
    "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn", "sup2",   "sup3",   "acute",  "micro",
    "para",   "middot", "cedil",  "sup1",   "ordm",   "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave",
    "Aacute", "Acirc",  "Atilde", "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",
    "Igrave", "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde", "Ouml",
    "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",  "szlig",  "agrave", "aacute",
    "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil", "egrave", "eacute", "ecirc",  "euml",   "igrave",
    "iacute", "icirc",  "iuml",   "eth",    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide",
    "oslash", "ugrave", "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml"};
constexpr unsigned kFirstLatin = 0xA0;
constexpr std::pair<std::string_view, unsigned> kOtherNames[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'},   {"quot", '"'},  {"AMP", '&'},
    {"LT", '<'},  {"GT", '>'}, {"QUOT", '"'}, {"COPY", 0xA9}, {"REG", 0xAE}};
constexpr std::size_t kLongestName = 6;

unsigned CharacterOf(std::string_view name) {
  for (const auto& [each, character] : kOtherNames) {
    if (each == name) return character;
  }
  const auto* latin = std::ranges::find(kLatinNames, name);
  if (latin == std::end(kLatinNames)) return 0;
  return kFirstLatin + static_cast<unsigned>(latin - std::begin(kLatinNames));
}

bool IsLetterOrDigit(char c) { return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z'); }

// How long a reference is that stands at the begin and whose number is none of a character, which the parser would
// leave out; 0 for others.
std::size_t BadReference(std::string_view text) {
  if (!text.starts_with("&#")) return 0;
  const bool hex = text.size() > 2 && (text[2] | 0x20) == 'x';
  const char* digits = text.data() + (hex ? 3 : 2);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits, text.data() + text.size(), number, hex ? 16 : 10);
  if (end == digits) return 0;
  const bool control = number < 0x20 && number != '\t' && number != '\n' && number != '\r';
  const bool bad = error != std::errc() || control || (number >= 0xD800 && number < 0xE000) || number > 0x10FFFF;
  const auto length = static_cast<std::size_t>(end - text.data());
  return !bad ? 0 : length + (text.substr(length).starts_with(';') ? 1 : 0);
}

// The name at the start of a reference that goes without a semicolon, and its character. In a tag it is no part of a
// longer word, so that addresses stay as they are; with a semicolon the longer word is another name, for the parser.
std::string_view OpenReference(std::string_view text, bool inTag, unsigned* character) {
  const auto* end = std::find_if_not(text.begin() + 1, text.end(), IsLetterOrDigit);
  const std::string_view word(text.begin() + 1, end);
  const char behind = end == text.end() ? '\0' : *end;
  if (word.size() <= kLongestName && (*character = CharacterOf(word)) != 0) {
    return inTag && behind == '=' ? std::string_view() : word;
  }
  if (inTag || behind == ';') return {};
  for (std::size_t size = std::min(word.size(), kLongestName); size >= 2; --size) {
    *character = CharacterOf(word.substr(0, size));
    if (*character != 0) return word.substr(0, size);
  }
  return {};
}

// The label in the page's first kilobyte, in lower case; empty for none.
std::string DeclaredEncoding(std::string_view html) {
  constexpr std::size_t kSearched = 1024;
  constexpr std::string_view kMark = "charset=";
  if (html.starts_with("\xEF\xBB\xBF")) return "utf-8";
  const std::string head = Lower(html.substr(0, kSearched));
  const std::size_t at = head.find(kMark);
  if (at == std::string::npos) return {};
  const std::size_t start = head.find_first_not_of("\"' ", at + kMark.size());
  if (start == std::string::npos) return {};
  return head.substr(start, head.find_first_of("\"' ;/>", start) - start);
}

// Bytes at the start that are no character, but may be the beginning of one.
std::size_t BadLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t most = byte(0) < 0xC2 ? 1 : byte(0) < 0xE0 ? 2 : 3;
  std::size_t length = 1;
  while (length < std::min(most, text.size()) && (byte(length) & 0xC0) == 0x80) ++length;
  return length;
}

struct WideForm {
  std::string_view Start;
  std::size_t Unit;
  bool BigEndian;
  std::size_t Mark;  // bytes at the start that are no text
};

const WideForm* FormOf(std::string_view html) {
  static constexpr WideForm kForms[] = {
      {{"\xFF\xFE\0\0", 4}, 4, false, 4}, {{"\0\0\xFE\xFF", 4}, 4, true, 4}, {{"<\0\0\0", 4}, 4, false, 0},
      {{"\0\0\0<", 4}, 4, true, 0},       {"\xFF\xFE", 2, false, 2},         {"\xFE\xFF", 2, true, 2},
  };
  const auto* form = std::ranges::find_if(kForms, [&](const WideForm& each) { return html.starts_with(each.Start); });
  return form == std::end(kForms) ? nullptr : form;
}

// Of bytes that the text ends within, a number that is no character's.
std::uint32_t UnitAt(std::string_view html, std::size_t at, const WideForm& form) {
  if (html.size() - at < form.Unit) return kNoCharacter;
  std::uint32_t unit = 0;
  for (std::size_t i = 0; i < form.Unit; ++i) {
    const std::size_t from = form.BigEndian ? i : form.Unit - 1 - i;
    unit = unit << 8 | static_cast<unsigned char>(html[at + from]);
  }
  return unit;
}

void AppendUtf8(std::uint32_t character, std::string* text) {
  const auto put = [&](std::uint32_t byte) { text->push_back(static_cast<char>(byte)); };
  if (character < 0x80) return put(character);
  const unsigned more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr std::uint32_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
  put(kFirst[more] | character >> 6 * more);
  for (unsigned left = more; left > 0; --left) put(0x80 | (character >> 6 * (left - 1) & 0x3F));
}

}  // namespace

bool DecodeWide(std::string_view html, std::string* utf8, unsigned* replaced) {
  const WideForm* form = FormOf(html);
  if (!form) return false;
  for (std::size_t at = form->Mark; at < html.size(); at += form->Unit) {
    std::uint32_t character = UnitAt(html, at, *form);
    if (form->Unit == 2 && character >> 10 == 0xD800 >> 10 && at + 2 < html.size()) {
      const std::uint32_t second = UnitAt(html, at + 2, *form);
      if (second >> 10 == 0xDC00 >> 10) {
        character = 0x10000 + ((character & 0x3FF) << 10 | (second & 0x3FF));
        at += 2;
      }
    }
    const bool control = character >= 0x80 && character < 0xA0;
    if (character >= 0x110000 || character >> 11 == 0xD800 >> 11 || control) {
      utf8->append(kReplacement);
      ++*replaced;
    } else {
      AppendUtf8(character, utf8);
    }
  }
  return true;
}

Encoding EncodingOf(std::string_view html) {
  std::size_t characters = 0, bad = 0;
  for (std::size_t i = 0; i < html.size();) {
    if (static_cast<unsigned char>(html[i]) < 0x80) {
      ++i;
      continue;
    }
    const std::size_t size = Utf8Length(html.substr(i));
    ++(size == 0 ? bad : characters);
    i += size == 0 ? BadLength(html.substr(i)) : size;
  }
  if (bad == 0) return characters == 0 ? Encoding::kAscii : Encoding::kUtf8;
  const std::string declared = DeclaredEncoding(html);
  const bool utf8 = declared == "utf-8" || declared == "utf8" || (declared.empty() && characters > bad);
  return utf8 ? Encoding::kDamagedUtf8 : Encoding::kOther;
}

std::string Repaired(std::string_view html, unsigned* replaced) {
  std::string repaired;
  for (std::size_t i = 0; i < html.size();) {
    const std::size_t size = Utf8Length(html.substr(i));
    repaired.append(size == 0 ? kReplacement : html.substr(i, size));
    if (size == 0) ++*replaced;
    i += size == 0 ? BadLength(html.substr(i)) : size;
  }
  return repaired;
}

bool NeedsCleaning(std::string_view html) { return html.find_first_of({"\0\r&", 3}) != std::string_view::npos; }

std::string Cleaned(std::string_view html, unsigned* replaced) {
  constexpr std::string_view kReplacementReference = "&#xFFFD;";
  std::string cleaned;
  std::size_t start = 0;
  bool inTag = false;
  for (std::size_t i; (i = html.find_first_of(std::string_view("\0\r&", 3), start)) != std::string_view::npos;) {
    const std::string_view passed = html.substr(start, i - start);
    const std::size_t bracket = passed.find_last_of("<>");
    if (bracket != std::string_view::npos) inTag = passed[bracket] == '<';
    cleaned.append(passed);
    start = i + 1;
    unsigned character = 0;
    if (html[i] == '\r') {
      if (html.substr(start, 1) != "\n") cleaned += '\n';
    } else if (html[i] == '\0') {
      cleaned.append(kReplacementReference);
      ++*replaced;
    } else if (const std::size_t length = BadReference(html.substr(i))) {
      cleaned.append(kReplacementReference);
      ++*replaced;
      start = i + length;
    } else if (const std::string_view name = OpenReference(html.substr(i), inTag, &character); !name.empty()) {
      start += name.size();
      cleaned.append("&#").append(std::to_string(character)).append(html.substr(start, 1) == ";" ? "" : ";");
    } else {
      cleaned += '&';
    }
  }
  return cleaned.append(html.substr(start));
}

}  // namespace conv
