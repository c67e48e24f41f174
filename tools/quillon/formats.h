// Kinds of files that documents are imported from and exported to.
#ifndef QUILLON_TOOLS_QUILLON_FORMATS_H
#define QUILLON_TOOLS_QUILLON_FORMATS_H

#include <string>
#include <vector>

#include "vq/vq.h"

namespace tool {

enum class Format { kText, kMarkdown, kHtml };

// The text converter's option.
inline constexpr unsigned long kEachLineAParagraph = 1;

// By the file's ending; text for one that is not known.
Format FormatOfFile(const std::string& file);
// "text", "markdown" or "html".
Format FormatOfName(const std::string& name);
// Name of the converter library.
const char* ConverterOf(Format format);
// Entries of a report.
std::vector<std::string> LinesOf(const VQText& report);

}  // namespace tool

#endif
