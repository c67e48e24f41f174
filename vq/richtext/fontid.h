// The packed font of a text run, and the faces that every store knows.
//
//   31      24 23      16 15       8 7        0
//   +---------+----------+----------+----------+
//   |  points |  colour  |  packed  |   face   |
//   +---------+----------+----------+----------+
//
// packed: bits 0 to 3 plain attributes; high nibble one of 0x00, 0x10 superscript, 0x20 subscript, 0x80 shadow,
// 0x90 emboss, 0xA0 extrude. Bit 0x8000 of the whole therefore says that an effect is set.
#ifndef QUILLON_VQ_RICHTEXT_FONTID_H
#define QUILLON_VQ_RICHTEXT_FONTID_H

#include <cstdint>

#include "engine/records.h"
#include "vq/frame/status.h"

namespace vq::fontid {

inline constexpr std::uint32_t kDefault = 0x0A000001;
inline constexpr std::uint32_t kEffectBit = 0x8000;
// What a reader without style extensions sees.
inline constexpr std::uint32_t kPlainMask = 0xFFFF4FFF;
inline constexpr unsigned kFirstTableFace = 5;

constexpr std::uint8_t Face(std::uint32_t id) { return static_cast<std::uint8_t>(id); }
constexpr std::uint8_t Packed(std::uint32_t id) { return static_cast<std::uint8_t>(id >> 8); }
constexpr std::uint8_t Color(std::uint32_t id) { return static_cast<std::uint8_t>(id >> 16); }
constexpr std::uint8_t Points(std::uint32_t id) { return static_cast<std::uint8_t>(id >> 24); }
constexpr std::uint32_t WithFace(std::uint32_t id, std::uint8_t face) { return (id & 0xFFFFFF00) | face; }
constexpr std::uint32_t WithPacked(std::uint32_t id, std::uint8_t packed) {
  return (id & 0xFFFF00FF) | (std::uint32_t{packed} << 8);
}
constexpr std::uint32_t WithColor(std::uint32_t id, std::uint8_t color) {
  return (id & 0xFF00FFFF) | (std::uint32_t{color} << 16);
}
constexpr std::uint32_t WithPoints(std::uint32_t id, std::uint8_t points) {
  return (id & 0x00FFFFFF) | (std::uint32_t{points} << 24);
}
constexpr bool IsTableFace(unsigned face) { return face >= kFirstTableFace; }

// VQERR_INVALID_PARAMETER for a combination that cannot be; the output is then left alone.
[[nodiscard]] VQSTATUS PackAttributes(std::uint16_t attributes, std::uint8_t* packed);
[[nodiscard]] VQSTATUS UnpackAttributes(std::uint8_t packed, std::uint16_t* attributes);

// `mask`: low 16 bits choose attributes, then colour, face and size. Changes *id only on success.
[[nodiscard]] VQSTATUS Merge(std::uint32_t other, std::uint32_t mask, std::uint32_t* id);

// A standard face that is offered by name, by its number or by its name; null otherwise.
const CDFACE* StandardFace(unsigned face);
const CDFACE* StandardFace(const ENGCHAR* name);
// What look-ups answer for a face that is not there.
CDFACE FallbackFace(std::uint8_t face);

}  // namespace vq::fontid

#endif
