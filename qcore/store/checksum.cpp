#include "qcore/store/checksum.h"

#include <algorithm>

#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::size_t kSumSize = 4;
constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;

// Fewer than eight bytes.
std::uint64_t LoadRest(std::span<const std::uint8_t> bytes) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) word |= std::uint64_t{bytes[i]} << (8 * i);
  return word;
}

std::uint64_t Mix(std::uint64_t state, std::uint64_t word) {
  state = (state ^ word) * kFactor;
  return state ^ (state >> 32);
}

}  // namespace

std::uint32_t Checksum(std::span<const std::uint8_t> bytes, std::uint64_t seed) {
  // Two lanes hide the latency of the multiplication.
  std::uint64_t first = Mix(seed, bytes.size());
  std::uint64_t second = Mix(~seed, bytes.size());
  std::size_t at = 0;
  for (; at + 16 <= bytes.size(); at += 16) {
    first = Mix(first, LoadLittle<std::uint64_t>(bytes.data() + at));
    second = Mix(second, LoadLittle<std::uint64_t>(bytes.data() + at + 8));
  }
  if (at + 8 <= bytes.size()) {
    first = Mix(first, LoadLittle<std::uint64_t>(bytes.data() + at));
    at += 8;
  }
  second = Mix(second, LoadRest(bytes.subspan(at)));
  const std::uint64_t sum = Mix(Mix(first, second), kFactor);
  return static_cast<std::uint32_t>(sum ^ (sum >> 29));
}

std::vector<std::uint8_t> Sealed(std::span<const std::uint8_t> bytes, std::uint64_t seed) {
  std::vector<std::uint8_t> sealed(kSumSize + bytes.size());
  StoreLittle(sealed.data(), Checksum(bytes, seed));
  std::copy(bytes.begin(), bytes.end(), sealed.begin() + kSumSize);
  return sealed;
}

bool Unseal(std::span<const std::uint8_t> sealed, std::uint64_t seed, std::span<const std::uint8_t>* bytes) {
  if (sealed.size() < kSumSize) return false;
  *bytes = sealed.subspan(kSumSize);
  return Checksum(*bytes, seed) == LoadLittle<std::uint32_t>(sealed.data());
}

}  // namespace qcore
