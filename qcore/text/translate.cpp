#include "qcore/text/translate.h"

#include <unicode/ucasemap.h>

#include <algorithm>
#include <memory>
#include <new>

#include "engine/text.h"
#include "qcore/text/charset.h"
#include "qcore/text/fold.h"

namespace qcore::text {

namespace {

std::unique_ptr<Charset> platform_charset;  // null: UTF-8

enum class Case { kUpper, kLower };

struct CloseCaseMap {
  void operator()(UCaseMap* map) const { ucasemap_close(map); }
};

const UCaseMap* CaseMap() {
  static const std::unique_ptr<UCaseMap, CloseCaseMap> map = [] {
    UErrorCode error = U_ZERO_ERROR;
    UCaseMap* opened = ucasemap_open("", 0, &error);
    if (U_FAILURE(error)) throw std::bad_alloc();
    return std::unique_ptr<UCaseMap, CloseCaseMap>(opened);
  }();
  return map.get();
}

bool IsAscii(Text text) {
  return std::ranges::all_of(text, [](ENGCHAR byte) { return byte < 0x80; });
}

char MapAscii(ENGCHAR byte, Case to) {
  const bool other = to == Case::kUpper ? byte >= 'a' && byte <= 'z' : byte >= 'A' && byte <= 'Z';
  return static_cast<char>(other ? byte ^ 0x20 : byte);
}

// A well-formed run.
std::string MapRun(Text run, Case to) {
  const auto map = to == Case::kUpper ? ucasemap_utf8ToUpper : ucasemap_utf8ToLower;
  const char* source = reinterpret_cast<const char*>(run.data());
  std::string mapped(run.size() * 3 + 8, '\0');  // no character grows to more than three times its bytes
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t length = map(CaseMap(), mapped.data(), static_cast<std::int32_t>(mapped.size()), source,
                                  static_cast<std::int32_t>(run.size()), &error);
  if (U_FAILURE(error)) throw std::bad_alloc();
  mapped.resize(static_cast<std::size_t>(length));
  return mapped;
}

std::size_t WellFormedPrefix(Text text) {
  std::size_t length = 0;
  while (length < text.size()) {
    const Character next = Decode(text.data() + length, text.size() - length);
    if (next.code >= kInvalidBase) break;
    length += next.length;
  }
  return length;
}

std::string MapCase(Text text, Case to) {
  std::string mapped;
  if (IsAscii(text)) {
    mapped.resize(text.size());
    std::ranges::transform(text, mapped.begin(), [to](ENGCHAR byte) { return MapAscii(byte, to); });
    return mapped;
  }
  while (!text.empty()) {
    const std::size_t run = WellFormedPrefix(text);
    if (run != 0) mapped += MapRun(text.first(run), to);
    text = text.subspan(run);
    if (!text.empty()) {
      mapped.push_back(static_cast<char>(text.front()));
      text = text.subspan(1);
    }
  }
  return mapped;
}

std::string StripAccents(Text text) {
  std::string stripped;
  while (!text.empty()) {
    const Character next = Decode(text.data(), text.size());
    const Folded folded = Fold(next.code, ENG_COMPARE_IGNORE_ACCENTS);
    for (std::uint32_t i = 0; i < folded.count; ++i) Append(folded.codes[i], &stripped);
    text = text.subspan(next.length);
  }
  return stripped;
}

std::string Cut(std::string text, std::size_t limit) {
  text.resize(CutLength(AsText(text), limit));
  return text;
}

std::string Copy(Text text, std::size_t limit) {
  return std::string(reinterpret_cast<const char*>(text.data()), CutLength(text, limit));
}

}  // namespace

ENGSTATUS UsePlatformCharset(const std::string& name) {
  if (name.empty() || name == "UTF-8" || name == "utf-8") {
    platform_charset.reset();
    return ENG_OK;
  }
  std::unique_ptr<Charset> charset = Charset::Open(name);
  if (!charset) return ENG_ERR_CONFIG_READ;
  platform_charset = std::move(charset);
  return ENG_OK;
}

std::string Translate(std::uint16_t mode, Text input, std::size_t limit) {
  switch (mode) {
    case ENG_TRANSLATE_PLATFORM_TO_STORE:
      return platform_charset ? platform_charset->ToStore(input, limit) : Copy(input, limit);
    case ENG_TRANSLATE_STORE_TO_PLATFORM:
      return platform_charset ? platform_charset->FromStore(input, limit) : Copy(input, limit);
    case ENG_TRANSLATE_UPPER:
      return Cut(MapCase(input, Case::kUpper), limit);
    case ENG_TRANSLATE_LOWER:
      return Cut(MapCase(input, Case::kLower), limit);
    case ENG_TRANSLATE_STRIP_ACCENTS:
      return Cut(StripAccents(input), limit);
    default:
      return {};
  }
}

}  // namespace qcore::text
