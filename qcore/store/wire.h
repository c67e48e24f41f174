// Little-endian fields in byte sequences.
#ifndef QUILLON_QCORE_STORE_WIRE_H
#define QUILLON_QCORE_STORE_WIRE_H

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

#include "engine/types.h"

namespace qcore {

// Compilers make no single load of the byte loops by themselves at the usual level.
template <typename T>
T LoadLittle(const std::uint8_t* at) {
  static_assert(std::is_unsigned_v<T>);
  T value = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, at, sizeof value);
  } else {
    for (std::size_t i = sizeof(T); i-- > 0;) value = static_cast<T>(std::uint64_t{value} << 8 | at[i]);
  }
  return value;
}

template <typename T>
void StoreLittle(std::uint8_t* at, T value) {
  static_assert(std::is_unsigned_v<T>);
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(at, &value, sizeof value);
  } else {
    for (std::size_t i = 0; i < sizeof(T); ++i) at[i] = static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * i));
  }
}

inline std::uint64_t Pack(const TIMEDATE& moment) { return (std::uint64_t{moment.DateWord} << 32) | moment.TimeWord; }

inline TIMEDATE Unpack(std::uint64_t packed) {
  return {static_cast<std::uint32_t>(packed), static_cast<std::uint32_t>(packed >> 32)};
}

inline TIMEDATE LoadTime(const std::uint8_t* at) {
  return {LoadLittle<std::uint32_t>(at), LoadLittle<std::uint32_t>(at + 4)};
}

inline void StoreTime(std::uint8_t* at, const TIMEDATE& moment) {
  StoreLittle(at, moment.TimeWord);
  StoreLittle(at + 4, moment.DateWord);
}

inline bool SameTime(const TIMEDATE& a, const TIMEDATE& b) {
  return a.TimeWord == b.TimeWord && a.DateWord == b.DateWord;
}

// Reads fields one behind another and never past the end: a read that does not fit gives zero and spoils the reader.
class WireReader {
 public:
  explicit WireReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  template <typename T>
  T Take() {
    const std::uint8_t* at = Skip(sizeof(T));
    return at ? LoadLittle<T>(at) : T{0};
  }
  // Seven bits a byte, the lowest first.
  std::uint64_t TakeVarint() {
    std::uint64_t value = 0;
    for (int shift = 0; shift < 64; shift += 7) {
      const std::uint8_t byte = Take<std::uint8_t>();
      value |= std::uint64_t{byte & 0x7Fu} << shift;
      if (byte < 0x80) return value;
    }
    good_ = false;
    return 0;
  }
  // The bytes stepped over, null when there are not so many.
  const std::uint8_t* Skip(std::size_t count) {
    if (!good_ || count > bytes_.size() - at_) {
      good_ = false;
      return nullptr;
    }
    at_ += count;
    return bytes_.data() + at_ - count;
  }
  bool good() const { return good_; }
  bool at_end() const { return at_ == bytes_.size(); }
  std::size_t position() const { return at_; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  bool good_ = true;
};

class WireWriter {
 public:
  explicit WireWriter(std::vector<std::uint8_t>* target) : target_(*target) {}

  template <typename T>
  void Put(T value) {
    StoreLittle(Grow(sizeof(T)), value);
  }
  void PutVarint(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) target_.push_back(static_cast<std::uint8_t>(value | 0x80));
    target_.push_back(static_cast<std::uint8_t>(value));
  }
  void PutTime(const TIMEDATE& moment) { StoreTime(Grow(8), moment); }
  void PutBytes(std::span<const std::uint8_t> bytes) { target_.insert(target_.end(), bytes.begin(), bytes.end()); }

 private:
  std::uint8_t* Grow(std::size_t count) {
    target_.resize(target_.size() + count);
    return target_.data() + target_.size() - count;
  }

  std::vector<std::uint8_t>& target_;
};

}  // namespace qcore

#endif
