#include "qcore/index/sortkey.h"

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"
#include "qcore/text/textlist.h"

namespace qcore::index {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLongestText = 512;
constexpr char kLevelEnd = 1;

// How the key of the root collation writes a run of characters with the usual weight: one byte for up to `most` of
// them, counted from `low` when a lesser weight or the end follows, down from `high` before a greater one.
struct RunForm {
  std::uint8_t low;
  std::uint8_t middle;
  std::uint8_t high;
  std::size_t most;
};
constexpr RunForm kAccentRun{0x05, 0x25, 0x45, 0x21};
constexpr RunForm kCaseRun{0x05, 0x65, 0xC5, 0x61};

struct CollatorCloser {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CollatorCloser>;

Collator OpenCollator(bool ignore_case, bool ignore_accents) {
  UErrorCode error = U_ZERO_ERROR;
  Collator collator(ucol_open("", &error));
  if (U_FAILURE(error)) throw std::bad_alloc();  // its data is linked in: only memory can lack
  ucol_setStrength(collator.get(), ignore_accents ? UCOL_PRIMARY : ignore_case ? UCOL_SECONDARY : UCOL_TERTIARY);
  if (ignore_accents && !ignore_case) ucol_setAttribute(collator.get(), UCOL_CASE_LEVEL, UCOL_ON, &error);
  return collator;
}

const UCollator* CollatorFor(const SortOptions& options) {
  static const std::array<Collator, 4> collators = {OpenCollator(false, false), OpenCollator(true, false),
                                                    OpenCollator(false, true), OpenCollator(true, true)};
  return collators[(options.ignore_case ? 1 : 0) + (options.ignore_accents ? 2 : 0)].get();
}

// With the zero byte at its end.
void AppendIcuKey(std::string_view text, const SortOptions& options, std::string* key) {
  std::array<UChar, 1024> units;
  UErrorCode error = U_ZERO_ERROR;
  std::int32_t count = 0;
  u_strFromUTF8WithSub(units.data(), units.size(), &count, text.data(), static_cast<std::int32_t>(text.size()), 0xFFFD,
                       nullptr, &error);
  const UCollator* collator = CollatorFor(options);
  const std::size_t before = key->size();
  key->resize(before + text.size() * 4 + 16);
  auto* at = reinterpret_cast<std::uint8_t*>(key->data() + before);
  const auto room = static_cast<std::int32_t>(key->size() - before);
  const std::int32_t length = ucol_getSortKey(collator, units.data(), count, at, room);
  key->resize(before + static_cast<std::size_t>(length));
  if (length <= room) return;
  at = reinterpret_cast<std::uint8_t*>(key->data() + before);
  ucol_getSortKey(collator, units.data(), count, at, length);
}

// What a character adds to the parts of a key.
struct AsciiWeight {
  std::array<char, 2> primary;
  std::uint8_t length;    // of `primary`; 0 for a character that keys pass over
  std::uint8_t tertiary;  // 0 for the usual one
};

class AsciiTable {
 public:
  AsciiTable() {
    for (std::size_t code = 0; code < weights_.size(); ++code) usable_ = Learn(code) && usable_;
  }

  // False for a text that is not plain ASCII.
  bool Append(std::string_view text, const SortOptions& options, std::string* key) const {
    if (!usable_ || (options.ignore_accents && !options.ignore_case)) return false;
    std::array<char, 2 * kLongestText + 2> primary;
    std::array<std::uint8_t, kLongestText> tertiary;
    std::size_t length = 0;
    std::size_t characters = 0;
    for (const char character : text) {
      const auto code = static_cast<std::uint8_t>(character);
      if (code >= 0x80) return false;
      const AsciiWeight& weight = weights_[code];
      primary[length] = weight.primary[0];
      primary[length + 1] = weight.primary[1];
      length += weight.length;
      tertiary[characters] = weight.tertiary;
      characters += weight.length != 0;
    }
    std::array<char, 4 * kLongestText> rest;
    std::size_t used = 0;
    if (!options.ignore_accents) {
      rest[used++] = kLevelEnd;
      used += WriteRun(kAccentRun, characters, false, rest.data() + used);
      if (!options.ignore_case) {
        rest[used++] = kLevelEnd;
        used += WriteTertiary({tertiary.data(), characters}, rest.data() + used);
      }
    }
    rest[used++] = 0;
    key->append(primary.data(), length).append(rest.data(), used);
    return true;
  }

 private:
  // primary | 1 | accents | 1 | case | 0, where one character has its own byte in both, or the usual one.
  bool Learn(std::size_t code) {
    std::string key;
    const char character = static_cast<char>(code);
    AppendIcuKey({&character, 1}, {}, &key);
    const std::size_t end = key.find(kLevelEnd);
    if (end == std::string::npos || end > 2) return false;
    AsciiWeight& weight = weights_[code];
    weight = {{}, static_cast<std::uint8_t>(end), 0};
    std::copy_n(key.begin(), end, weight.primary.begin());
    if (end == 0) return key == std::string("\1\1", 3);
    if (key.size() != end + 5) return false;
    const auto tertiary = static_cast<std::uint8_t>(key[end + 3]);
    if (tertiary != kCaseRun.low) weight.tertiary = tertiary;
    return static_cast<std::uint8_t>(key[end + 1]) == kAccentRun.low &&
           (tertiary == kCaseRun.low || tertiary > kCaseRun.high);
  }

  static std::size_t WriteRun(const RunForm& form, std::size_t count, bool greater_follows, char* at) {
    if (count == 0) return 0;
    std::size_t used = 0;
    for (--count; count >= form.most; count -= form.most) at[used++] = static_cast<char>(form.middle);
    at[used++] = static_cast<char>(greater_follows ? form.high - count : form.low + count);
    return used;
  }

  static std::size_t WriteTertiary(std::span<const std::uint8_t> weights, char* at) {
    std::size_t used = 0;
    std::size_t usual = 0;
    for (const std::uint8_t weight : weights) {
      if (weight == 0) {
        ++usual;
        continue;
      }
      used += WriteRun(kCaseRun, usual, true, at + used);
      usual = 0;
      at[used++] = static_cast<char>(weight);
    }
    return used + WriteRun(kCaseRun, usual, false, at + used);
  }

  std::array<AsciiWeight, 128> weights_;
  bool usable_ = true;  // false when a collation of another release does not have that form
};

std::string_view CutAtCharacter(std::string_view text) {
  std::size_t end = kLongestText;
  while (end > 0 && (static_cast<std::uint8_t>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

// Long texts of the same beginning differ by a checksum, without zero bytes.
void AppendSum(std::string_view text, std::string* key) {
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  std::uint64_t sum = std::uint64_t{Checksum(bytes, 1)} << 32 | Checksum(bytes, 2);
  key->back() = kLevelEnd;
  for (int i = 0; i < 16; ++i, sum >>= 4) key->push_back(static_cast<char>(0x20 + (sum & 15)));
  key->push_back(0);
}

void AppendCollated(std::string_view text, const SortOptions& options, std::string* key) {
  static const AsciiTable table;
  const std::string_view head = text.size() > kLongestText ? CutAtCharacter(text) : text;
  if (!table.Append(head, options, key)) AppendIcuKey(head, options, key);
  if (head.size() != text.size()) AppendSum(text, key);
}

void TurnFrom(std::size_t from, const SortOptions& options, std::string* key) {
  if (!options.descending) return;
  for (std::size_t i = from; i < key->size(); ++i) (*key)[i] = static_cast<char>(~(*key)[i]);
}

void AppendBig(std::uint64_t value, std::string* key) {
  char bytes[sizeof value];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<char>(value >> (56 - 8 * i));
  key->append(bytes, sizeof bytes);
}

}  // namespace

void AppendTextKey(std::string_view text, const SortOptions& options, std::string* key) {
  const std::size_t from = key->size();
  key->push_back(static_cast<char>(kTagText));
  AppendCollated(text, options, key);
  TurnFrom(from, options, key);
}

void AppendIcuTextKey(std::string_view text, const SortOptions& options, std::string* key) {
  const std::size_t from = key->size();
  key->push_back(static_cast<char>(kTagText));
  AppendIcuKey(text, options, key);
  TurnFrom(from, options, key);
}

void AppendNumberKey(double number, const SortOptions& options, std::string* key) {
  const std::size_t from = key->size();
  std::uint64_t bits = number == number ? std::bit_cast<std::uint64_t>(number + 0.0) : 0x7FFFFFFFFFFFFFFFu;
  bits = (bits >> 63) != 0 ? ~bits : bits | 0x8000000000000000u;
  key->push_back(static_cast<char>(kTagNumber));
  AppendBig(bits, key);
  TurnFrom(from, options, key);
}

void AppendTimeKey(const TIMEDATE& time, const SortOptions& options, std::string* key) {
  const std::size_t from = key->size();
  const std::uint32_t day = time.DateWord == ENG_TIME_WILD ? ENG_TIME_WILD : time.DateWord & ENG_DATE_MAXIMUM;
  key->push_back(static_cast<char>(kTagTime));
  AppendBig(std::uint64_t{day} << 32 | time.TimeWord, key);
  TurnFrom(from, options, key);
}

void AppendNothingKey(const SortOptions& options, std::string* key) {
  const std::size_t from = key->size();
  key->push_back(static_cast<char>(kTagNothing));
  TurnFrom(from, options, key);
}

void AppendValueKey(Bytes value, const SortOptions& options, std::string* key) {
  constexpr std::size_t kWord = 2;
  constexpr std::size_t kListHead = 4;
  const std::uint16_t type = value.size() >= kWord ? LoadLittle<std::uint16_t>(value.data()) : std::uint16_t{0};
  Bytes data = value.subspan(std::min(kWord, value.size()));
  const auto text = [&data] { return std::string_view(reinterpret_cast<const char*>(data.data()), data.size()); };
  if (type == 0x0501) {
    const auto entries = text::ReadList(data, text::Prefix::kNone);
    if (entries && !entries->empty()) return AppendTextKey(entries->front(), options, key);
    return AppendNothingKey(options, key);
  }
  if (type == 0x0500 && !data.empty()) return AppendTextKey(text(), options, key);
  if (type == 0x0301 || type == 0x0401) {
    // Singles stand before ranges, and a range begins with its lower end.
    const bool any = data.size() >= kListHead && LoadLittle<std::uint32_t>(data.data()) != 0;
    data = any ? data.subspan(kListHead) : Bytes();
  }
  if (data.size() < 8) return AppendNothingKey(options, key);
  if (type == 0x0300 || type == 0x0301) {
    return AppendNumberKey(std::bit_cast<double>(LoadLittle<std::uint64_t>(data.data())), options, key);
  }
  if (type == 0x0400 || type == 0x0401) return AppendTimeKey(LoadTime(data.data()), options, key);
  AppendNothingKey(options, key);
}

void AppendTextMatch(std::string_view text, const SortOptions& options, Match match, std::string* key) {
  const std::size_t from = key->size();
  SortOptions upright = options;
  upright.descending = false;
  AppendTextKey(text, upright, key);
  const std::size_t primary_end = key->find(kLevelEnd, from + 1);
  if (match == Match::kBeginning) {
    key->resize(primary_end != std::string::npos ? primary_end : key->size() - 1);
  } else if (match != Match::kWhole && primary_end != std::string::npos) {
    const bool to_accents = match == Match::kAnyCase && !options.ignore_accents;
    const std::size_t second = to_accents ? key->find(kLevelEnd, primary_end + 1) : primary_end;
    if (second != std::string::npos) key->resize(second + 1);
  }
  TurnFrom(from, options, key);
}

}  // namespace qcore::index
