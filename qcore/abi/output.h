// Texts across the boundary.
#ifndef QUILLON_QCORE_ABI_OUTPUT_H
#define QUILLON_QCORE_ABI_OUTPUT_H

#include <cstring>
#include <string_view>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::abi {

// The text up to its NUL, at most `length` bytes.
inline std::string_view Terminated(const ENGCHAR* text, std::size_t length) {
  const char* begin = reinterpret_cast<const char*>(text);
  return {begin, strnlen(begin, length)};
}

// All of the text or nothing; terminated where there is room.
[[nodiscard]] inline ENGSTATUS Output(std::string_view text, ENGCHAR* buffer, std::uint16_t size,
                                      std::uint16_t* length) {
  if (text.size() > size) return ENG_ERR_BUFFER_SIZE;
  std::memcpy(buffer, text.data(), text.size());
  if (text.size() < size) buffer[text.size()] = 0;
  *length = static_cast<std::uint16_t>(text.size());
  return ENG_OK;
}

}  // namespace qcore::abi

#endif
