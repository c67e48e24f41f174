// Tags of an HTML text, ahead of the parser: what it would take too long for, or read in another way than browsers.
#ifndef QUILLON_CONVERTERS_HTML_TAGS_H
#define QUILLON_CONVERTERS_HTML_TAGS_H

#include <string>
#include <string_view>

namespace conv {

constexpr bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }

// Tags have no more than 1,000 attributes; those with more are counted. The text, or *kept, which then holds it.
std::string_view WithoutSurplus(std::string_view html, std::string* kept, unsigned* cut);

// The parser ends formats where a paragraph or a centred part begins; browsers don't. Formats around whole ones that
// end in the same cell or item get names that it does not know. The text, or *marked, which then holds it.
std::string_view MarkFormats(std::string_view html, std::string* marked);
// Of an element: its name without that mark.
std::string NameOfMarked(const std::string& name);

}  // namespace conv

#endif
