// Markdown in and out of composite records: CommonMark as libcmark reads and writes it, and pipe tables.
#ifndef QUILLON_CONVERTERS_MARKDOWN_MARKDOWN_H
#define QUILLON_CONVERTERS_MARKDOWN_MARKDOWN_H

#include <cstdio>
#include <string>
#include <string_view>

#include "converters/parts/records.h"
#include "converters/parts/report.h"
#include "engine/types.h"

namespace conv {

// Option bit: CommonMark alone. Pipe tables are text, and raw HTML is left out.
inline constexpr std::uint32_t kCommonMarkOnly = 0x0010;

ENGSTATUS ReadMarkdown(std::string_view source, RecordOutput& output, std::uint32_t font, std::uint32_t options,
                       Report& report);
// ENG_ERR_RECORD_DAMAGED when the records don't add up.
ENGSTATUS WriteMarkdown(std::string_view composite, std::string* text, Report& report);

}  // namespace conv

#endif
