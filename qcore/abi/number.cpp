#include "engine/number.h"

#include "engine/status.h"
#include "qcore/abi/guard.h"
#include "qcore/abi/output.h"
#include "qcore/settings/settings.h"
#include "qcore/text/number.h"

namespace text = qcore::text;
using qcore::abi::Guard;

ENGSTATUS EngNumberParse(const INTLFORMAT* settings, const NFMT* format, const ENGCHAR** cursor, uint16_t length,
                         double* result) {
  if (!cursor || !*cursor || !result) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const INTLFORMAT own = settings ? *settings : qcore::settings::International();
    const auto number =
        text::ParseNumber(own, format ? *format : text::kGeneralFormat, qcore::abi::Terminated(*cursor, length));
    if (!number) return ENG_ERR_NUMBER_PARSE;
    *cursor += number->length;
    *result = number->value;
    return ENG_OK;
  });
}

ENGSTATUS EngNumberToText(const INTLFORMAT* settings, const NFMT* format, const double* value, ENGCHAR* buffer,
                          uint16_t size, uint16_t* length) {
  if (!value || !buffer || !length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const INTLFORMAT own = settings ? *settings : qcore::settings::International();
    const auto result = text::FormatNumber(own, format ? *format : text::kGeneralFormat, *value);
    return result ? qcore::abi::Output(*result, buffer, size, length) : ENGSTATUS{ENG_ERR_ARGUMENT};
  });
}
