// A page's bytes, ahead of the parser.
#ifndef QUILLON_CONVERTERS_HTML_SOURCE_H
#define QUILLON_CONVERTERS_HTML_SOURCE_H

#include <string>
#include <string_view>

namespace conv {

enum class Encoding { kAscii, kUtf8, kDamagedUtf8, kOther };

// Whether it is UTF-16 or UTF-32, which its first bytes tell. *utf8 then holds the page, with U+FFFD where there is no
// character, and their number is added.
bool DecodeWide(std::string_view html, std::string* utf8, unsigned* replaced);
// UTF-8 with other bytes in it is damaged where the page says that it is UTF-8, or says nothing and has more characters
// of that than other bytes.
Encoding EncodingOf(std::string_view html);
// With U+FFFD where bytes are no UTF-8, and the number of places.
std::string Repaired(std::string_view html, unsigned* replaced);

bool NeedsCleaning(std::string_view html);
// With line feeds as line ends, references that end without a semicolon as browsers know them, and U+FFFD for
// characters that no page may hold; these are counted.
std::string Cleaned(std::string_view html, unsigned* replaced);

}  // namespace conv

#endif
