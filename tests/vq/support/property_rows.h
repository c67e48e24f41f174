// Properties as table rows: a value goes in by the setter, and the bits of a stored record that are its own come out.
#ifndef QUILLON_TESTS_VQ_SUPPORT_PROPERTY_ROWS_H
#define QUILLON_TESTS_VQ_SUPPORT_PROPERTY_ROWS_H

#include <gtest/gtest.h>

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "vq/frame/vqcommon.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"

namespace vqtest {

// A getter and a setter of one property, as numbers. Flags are set to 7, which is as good as 1.
template <typename Object>
struct Accessor {
  unsigned long (*Get)(const Object&);
  VQSTATUS (*Set)(Object&, unsigned long);
};

template <typename>
struct SetterTraits;
template <typename Owner, typename Value>
struct SetterTraits<VQSTATUS (Owner::*)(Value)> {
  using OwnerType = Owner;
  using ValueType = Value;
};

template <auto Getter, auto Setter, typename Object = typename SetterTraits<decltype(Setter)>::OwnerType>
constexpr Accessor<Object> Of() {
  using Value = typename SetterTraits<decltype(Setter)>::ValueType;
  return {[](const Object& object) { return static_cast<unsigned long>((object.*Getter)()); },
          [](Object& object, unsigned long value) {
            if constexpr (std::same_as<Value, int>) {
              return (object.*Setter)(value != 0 ? 7 : 0);
            } else {
              return (object.*Setter)(static_cast<Value>(value));
            }
          }};
}

// Bits of a little-endian word of up to four bytes.
struct StoredBits {
  std::size_t At = 0;
  std::uint32_t Mask = 0;
  std::uint32_t Value = 0;
};

inline std::string With(std::string bytes, const StoredBits& bits) {
  for (unsigned i = 0; i < 4; ++i) {
    const auto mask = static_cast<unsigned char>(bits.Mask >> 8 * i);
    if (mask == 0) continue;
    const auto byte = static_cast<unsigned char>(bytes[bits.At + i]);
    bytes[bits.At + i] = static_cast<char>((byte & ~mask) | (bits.Value >> 8 * i & mask));
  }
  return bytes;
}

using ValueBits = std::vector<std::pair<unsigned long, std::uint32_t>>;
using Refusals = std::vector<std::pair<unsigned long, VQSTATUS>>;

template <typename Object>
struct PropertyRow {
  const char* Name;
  Accessor<Object> Access;
  std::size_t At;
  std::uint32_t Mask;
  ValueBits Values;  // each with the bits that it is stored as
  Refusals Refused;
};

inline ValueBits OnOff(std::uint32_t bit) { return {{1, bit}, {0, 0}}; }
inline ValueBits OffOn(std::uint32_t bit) { return {{1, 0}, {0, bit}}; }
// A value that is stored as it is.
inline ValueBits Each(std::initializer_list<std::uint32_t> values) {
  ValueBits bits;
  for (const std::uint32_t value : values) bits.emplace_back(value, value);
  return bits;
}

// Formats whose eight bytes, numbers first, all differ from the usual ones.
inline VQNumberFormat OtherNumberFormat() {
  VQNumberFormat format;
  EXPECT_EQ(format.SetDigits(200), VQ_OK);
  EXPECT_EQ(format.SetFormat(VQNUMBERFORMAT_CURRENCY), VQ_OK);
  EXPECT_EQ(format.SetParentheses(1), VQ_OK);
  return format;
}
inline VQDatetimeFormat OtherDatetimeFormat() {
  VQDatetimeFormat format;
  EXPECT_EQ(format.SetDateFormat(VQDATEFORMAT_MONTH_DAY), VQ_OK);
  EXPECT_EQ(format.SetTimeFormat(VQTIMEFORMAT_PARTIAL), VQ_OK);
  EXPECT_EQ(format.SetTimeZoneDisplay(VQTIMEZONEDISPLAY_ALWAYS), VQ_OK);
  EXPECT_EQ(format.SetDatetimeDisplay(VQDATETIMEDISPLAY_TIME), VQ_OK);
  return format;
}
inline constexpr char kOtherFormats[] = "\xC8\x03\x02\x00\x02\x01\x02\x01";
inline constexpr std::size_t kFormatsSize = 8;

}  // namespace vqtest

#endif
