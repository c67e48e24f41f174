// Little-endian words of a stored value.
#ifndef QUILLON_VQ_STORE_STOREWORD_H
#define QUILLON_VQ_STORE_STOREWORD_H

#include <cstdint>

namespace vq {

inline std::uint16_t LoadWord(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline void StoreWord(unsigned char* bytes, unsigned value) {
  bytes[0] = static_cast<unsigned char>(value);
  bytes[1] = static_cast<unsigned char>(value >> 8);
}

}  // namespace vq

#endif
