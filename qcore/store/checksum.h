// A 32-bit checksum over stored bytes, against decay and misplaced pages; no defence against an author.
#ifndef QUILLON_QCORE_STORE_CHECKSUM_H
#define QUILLON_QCORE_STORE_CHECKSUM_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qcore {

// `seed` ties the bytes to their place, so that whole bytes at another place do not pass.
std::uint32_t Checksum(std::span<const std::uint8_t> bytes, std::uint64_t seed);

struct SeededRun {
  std::span<const std::uint8_t> bytes;
  std::uint64_t seed;
};
// The checksums of four runs of one length, in a third of the time that they take one after another.
std::array<std::uint32_t, 4> Checksums(const std::array<SeededRun, 4>& runs);

// Bytes behind their checksum, for small stored values.
inline constexpr std::size_t kSealSize = 4;
std::vector<std::uint8_t> Sealed(std::span<const std::uint8_t> bytes, std::uint64_t seed);
// The bytes of a sealed value; false when the checksum does not fit.
bool Unseal(std::span<const std::uint8_t> sealed, std::uint64_t seed, std::span<const std::uint8_t>* bytes);

}  // namespace qcore

#endif
