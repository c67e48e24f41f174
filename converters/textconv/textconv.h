// Plain text in and out of composite records.
//
// In: UTF-8 (a byte order mark is dropped, invalid bytes are kept, a NUL is a line break), lines ended by LF, CR LF or
// CR. Lines that follow one another are one paragraph with line breaks; an empty line stands for itself as an empty
// paragraph. Out: a line feed for each paragraph record and line break, a tab behind each table cell, a line feed
// behind each row. What has no place in plain text stands in the report.
#ifndef QUILLON_CONVERTERS_TEXTCONV_TEXTCONV_H
#define QUILLON_CONVERTERS_TEXTCONV_TEXTCONV_H

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "converters/parts/report.h"
#include "engine/types.h"

namespace textconv {

// Option bits.
inline constexpr std::uint32_t kEachLineAParagraph = 0x0001;

// Streams: memory does not grow with the file.
ENGSTATUS WriteRecords(std::FILE* text, std::FILE* composite, std::uint32_t fontID, std::uint32_t options,
                       conv::Report& report);
// ENG_ERR_RECORD_DAMAGED when the records don't add up.
ENGSTATUS WriteText(std::string_view composite, std::FILE* text, conv::Report& report);

}  // namespace textconv

#endif
