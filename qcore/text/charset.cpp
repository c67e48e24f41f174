#include "qcore/text/charset.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <array>
#include <new>

namespace qcore::text {

namespace {

// The bytes of one character in the set, or "?".
std::string Encode(UConverter* converter, std::int32_t code) {
  std::array<UChar, 2> units{};
  std::int32_t count = 0;
  if (code >= kInvalidBase) return "?";
  U16_APPEND_UNSAFE(units, count, code);
  std::array<char, 32> bytes{};
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t length =
      ucnv_fromUChars(converter, bytes.data(), static_cast<std::int32_t>(bytes.size()), units.data(), count, &error);
  return U_SUCCESS(error) && length > 0 ? std::string(bytes.data(), static_cast<std::size_t>(length)) : "?";
}

bool ContainsAscii(UConverter* converter) {
  for (std::int32_t code = 1; code < 0x80; ++code) {
    if (Encode(converter, code) != std::string(1, static_cast<char>(code))) return false;
  }
  return true;
}

}  // namespace

void Charset::Close::operator()(UConverter* converter) const { ucnv_close(converter); }

Charset::Converter Charset::OpenConverter(const std::string& name) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &error));
  if (U_FAILURE(error)) return nullptr;
  ucnv_setSubstChars(converter.get(), "?", 1, &error);
  return U_SUCCESS(error) ? std::move(converter) : nullptr;
}

std::unique_ptr<Charset> Charset::Open(const std::string& name) {
  const Converter converter = OpenConverter(name);
  if (!converter || !ContainsAscii(converter.get())) return nullptr;
  return std::unique_ptr<Charset>(new Charset(name));
}

std::string Charset::ToStore(Text platform, std::size_t limit) const {
  const Converter converter = OpenConverter(name_);
  if (!converter) throw std::bad_alloc();
  std::string store;
  const char* at = reinterpret_cast<const char*>(platform.data());
  const char* end = at + platform.size();
  while (at < end) {
    UErrorCode error = U_ZERO_ERROR;
    std::string character;
    const UChar32 code = ucnv_getNextUChar(converter.get(), &at, end, &error);
    if (error == U_INDEX_OUTOFBOUNDS_ERROR) break;
    Append(U_SUCCESS(error) ? code : 0xFFFD, &character);
    if (store.size() + character.size() > limit) break;
    store += character;
  }
  return store;
}

std::string Charset::FromStore(Text store, std::size_t limit) const {
  const Converter converter = OpenConverter(name_);
  if (!converter) throw std::bad_alloc();
  std::string platform;
  while (!store.empty()) {
    const Character next = Decode(store.data(), store.size());
    const std::string character =
        next.code < 0x80 ? std::string(1, static_cast<char>(next.code)) : Encode(converter.get(), next.code);
    if (platform.size() + character.size() > limit) break;
    platform += character;
    store = store.subspan(next.length);
  }
  return platform;
}

}  // namespace qcore::text
