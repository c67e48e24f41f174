#include "qcore/store/checksum.h"

#include <algorithm>
#include <utility>

#include "qcore/store/wire.h"

namespace qcore {

namespace {

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

// What is behind the last whole step, and the end.
std::uint32_t Fold(std::span<const std::uint8_t> rest, std::uint64_t first, std::uint64_t second) {
  if (rest.size() >= 8) {
    first = Mix(first, LoadLittle<std::uint64_t>(rest.data()));
    rest = rest.subspan(8);
  }
  second = Mix(second, LoadRest(rest));
  const std::uint64_t sum = Mix(Mix(first, second), kFactor);
  return static_cast<std::uint32_t>(sum ^ (sum >> 29));
}

// Each run has two lanes, which hide some of the latency of the multiplication; several runs hide all of it, written
// out so that their states stay in registers.
template <std::size_t... I>
std::array<std::uint32_t, sizeof...(I)> Sums(const std::array<SeededRun, sizeof...(I)>& runs,
                                             std::index_sequence<I...>) {
  const std::size_t size = runs[0].bytes.size();
  const std::array data{runs[I].bytes.data()...};
  std::array first{Mix(runs[I].seed, size)...};
  std::array second{Mix(~runs[I].seed, size)...};
  std::size_t at = 0;
  for (; at + 16 <= size; at += 16) {
    ((first[I] = Mix(first[I], LoadLittle<std::uint64_t>(data[I] + at)),
      second[I] = Mix(second[I], LoadLittle<std::uint64_t>(data[I] + at + 8))),
     ...);
  }
  return {Fold(runs[I].bytes.subspan(at), first[I], second[I])...};
}

}  // namespace

std::uint32_t Checksum(std::span<const std::uint8_t> bytes, std::uint64_t seed) {
  return Sums({SeededRun{bytes, seed}}, std::make_index_sequence<1>())[0];
}

std::array<std::uint32_t, 4> Checksums(const std::array<SeededRun, 4>& runs) {
  return Sums(runs, std::make_index_sequence<4>());
}

std::vector<std::uint8_t> Sealed(std::span<const std::uint8_t> bytes, std::uint64_t seed) {
  std::vector<std::uint8_t> sealed(kSealSize + bytes.size());
  StoreLittle(sealed.data(), Checksum(bytes, seed));
  std::copy(bytes.begin(), bytes.end(), sealed.begin() + kSealSize);
  return sealed;
}

bool Unseal(std::span<const std::uint8_t> sealed, std::uint64_t seed, std::span<const std::uint8_t>* bytes) {
  if (sealed.size() < kSealSize) return false;
  *bytes = sealed.subspan(kSealSize);
  return Checksum(*bytes, seed) == LoadLittle<std::uint32_t>(sealed.data());
}

}  // namespace qcore
