#include "vq/richtext/fontid.h"

#include <array>
#include <bit>
#include <cstring>

namespace vq::fontid {

namespace {

// 0x40 has no name here; it travels with the plain bits.
constexpr std::uint16_t kPlain = 0x004F;
constexpr std::uint16_t kExclusive = 0x03B0;

constexpr std::uint32_t kMaskColor = 0x10000;
constexpr std::uint32_t kMaskFace = 0x20000;
constexpr std::uint32_t kMaskSize = 0x40000;

struct Code {
  std::uint16_t attribute;
  std::uint8_t packed;
};
constexpr Code kCodes[] = {{0x000, 0x00}, {0x010, 0x10}, {0x020, 0x20}, {0x080, 0x80}, {0x100, 0x90}, {0x200, 0xA0}};

constexpr CDFACE kStandard[] = {
    {0, 0x12, "Tms Rmn"},
    {1, 0x22, "Helv"},
    {4, 0x31, "Courier"},
};

const char* Characters(const ENGCHAR* text) { return reinterpret_cast<const char*>(text); }

}  // namespace

VQSTATUS PackAttributes(std::uint16_t attributes, std::uint8_t* packed) {
  std::uint16_t exclusive = attributes & kExclusive;
  if (std::popcount(exclusive) > 1 || (attributes & ~(kPlain | kExclusive)) != 0) return VQERR_INVALID_PARAMETER;
  for (const Code& code : kCodes) {
    if (code.attribute == exclusive) *packed = static_cast<std::uint8_t>((attributes & kPlain) | code.packed);
  }
  return VQ_OK;
}

VQSTATUS UnpackAttributes(std::uint8_t packed, std::uint16_t* attributes) {
  if ((packed & 0x30) == 0x30) return VQERR_INVALID_PARAMETER;
  for (const Code& code : kCodes) {
    if (code.packed == (packed & 0xB0)) *attributes = static_cast<std::uint16_t>((packed & kPlain) | code.attribute);
  }
  return VQ_OK;
}

VQSTATUS Merge(std::uint32_t other, std::uint32_t mask, std::uint32_t* id) {
  if (mask == 0xFFFFFFFF) {
    *id = other;
    return VQ_OK;
  }
  std::uint32_t merged = *id;
  if (std::uint16_t chosen = static_cast<std::uint16_t>(mask); chosen != 0) {
    std::uint16_t own = 0, others = 0;
    std::uint8_t packed = 0;
    if (VQSTATUS status = UnpackAttributes(Packed(*id), &own)) return status;
    if (VQSTATUS status = UnpackAttributes(Packed(other), &others)) return status;
    std::uint16_t mixed = static_cast<std::uint16_t>((own & ~chosen) | (others & chosen));
    if (VQSTATUS status = PackAttributes(mixed, &packed)) return status;
    merged = WithPacked(merged, packed);
  }
  if (mask & kMaskColor) merged = WithColor(merged, Color(other));
  if (mask & kMaskFace) merged = WithFace(merged, Face(other));
  if (mask & kMaskSize) merged = WithPoints(merged, Points(other));
  *id = merged;
  return VQ_OK;
}

const CDFACE* StandardFace(unsigned face) {
  for (const CDFACE& entry : kStandard) {
    if (entry.Face == face) return &entry;
  }
  return nullptr;
}

const CDFACE* StandardFace(const ENGCHAR* name) {
  for (const CDFACE& entry : kStandard) {
    if (std::strcmp(Characters(entry.Name), Characters(name)) == 0) return &entry;
  }
  return nullptr;
}

CDFACE FallbackFace(std::uint8_t face) { return {face, 0, "MS_SERIF"}; }

}  // namespace vq::fontid
