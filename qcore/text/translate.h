// Translation of whole texts: cases, accents, and the platform's character set.
//
// The platform's set is UTF-8 unless the settings key PlatformCharset names another that contains ASCII as it is.
#ifndef QUILLON_QCORE_TEXT_TRANSLATE_H
#define QUILLON_QCORE_TEXT_TRANSLATE_H

#include <string>

#include "engine/status.h"
#include "qcore/text/utf8.h"

namespace qcore::text {

// Empty means UTF-8. ENG_ERR_CONFIG_READ for a set that is unknown or does not contain ASCII; the old one stays.
// Not while other threads translate.
[[nodiscard]] ENGSTATUS UsePlatformCharset(const std::string& name);

// `mode` is ENG_TRANSLATE_...; an unknown one gives an empty text. At most `limit` bytes of whole characters.
std::string Translate(std::uint16_t mode, Text input, std::size_t limit);

}  // namespace qcore::text

#endif
