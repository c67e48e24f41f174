// Sort keys: bytes whose order is the order of typed values.
//
//   tag | data         tag 0x10 no value, 0x20 number, 0x30 time, 0x40 text
//   number: 8 bytes, big-endian, in the order of numbers (-0 is 0, not-a-numbers last)
//   time:   8 bytes, date before time; an absent half comes last
//   text:   the key of the root collation, ended by one zero byte
//
// No key is the beginning of another. A descending key has all bits of all its bytes turned.
#ifndef QUILLON_QCORE_INDEX_SORTKEY_H
#define QUILLON_QCORE_INDEX_SORTKEY_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/types.h"

namespace qcore::index {

// What a column's order leaves out, and its direction.
struct SortOptions {
  bool descending = false;
  bool ignore_case = false;
  bool ignore_accents = false;

  bool operator==(const SortOptions&) const = default;
};

inline constexpr std::uint8_t kTagNothing = 0x10;
inline constexpr std::uint8_t kTagNumber = 0x20;
inline constexpr std::uint8_t kTagTime = 0x30;
inline constexpr std::uint8_t kTagText = 0x40;

// How much of a text key has to agree for a find.
enum class Match {
  kWhole,      // the same key
  kAnyCase,    // the same but for case
  kAnyAccent,  // the same but for case and accents
  kBeginning,  // texts that begin with it, whatever their case and accents
};

// Each appends to `key`. Safe from any thread.
void AppendTextKey(std::string_view text, const SortOptions& options, std::string* key);
void AppendNumberKey(double number, const SortOptions& options, std::string* key);
void AppendTimeKey(const TIMEDATE& time, const SortOptions& options, std::string* key);
void AppendNothingKey(const SortOptions& options, std::string* key);
// The first entry of a value with its type word: text, number or time, or a list of them. Other types, damaged values
// and empty ones have no value.
void AppendValueKey(std::span<const std::uint8_t> value, const SortOptions& options, std::string* key);
// The bytes that the keys of all texts that match begin with.
void AppendTextMatch(std::string_view text, const SortOptions& options, Match match, std::string* key);

// The text key by ICU alone, for the comparison of the two ways.
void AppendIcuTextKey(std::string_view text, const SortOptions& options, std::string* key);

}  // namespace qcore::index

#endif
