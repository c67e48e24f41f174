// The engine's own readers over any bytes: numbers, moments and ranges as text, text lists, composites as plain text.
#include "engine/engine.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/claim.h"

namespace {

using fuzz::Claim;

// Bytes that end where their allocation ends.
struct Exact {
  explicit Exact(const std::string& text) : bytes(text.begin(), text.end()) { bytes.shrink_to_fit(); }
  std::uint16_t size() const { return static_cast<std::uint16_t>(bytes.size()); }
  const ENGCHAR* data() const { return bytes.data(); }
  std::vector<ENGCHAR> bytes;
};

void ReadNumber(const Exact& text, const INTLFORMAT* settings, const NFMT& format) {
  const ENGCHAR* at = text.data();
  double value = 0;
  if (EngNumberParse(settings, &format, &at, text.size(), &value) != 0) return;
  Claim(at > text.data() && at <= text.data() + text.size(), "a number takes something, and stays inside");
  ENGCHAR buffer[80];
  std::uint16_t length = 0;
  EngNumberToText(settings, &format, &value, buffer, sizeof buffer, &length);
}

// Seconds are the least that is shown, and years of more than four digits aren't read.
void ReadBack(const TIMEDATE& moment, const ENGCHAR* shown, std::uint16_t length) {
  constexpr std::uint32_t kYear10000 = 5373485;
  if (moment.DateWord != ENG_TIME_WILD && moment.DateWord >= kYear10000) return;
  const ENGCHAR* at = shown;
  TIMEDATE again{};
  Claim(EngTimeParse(nullptr, nullptr, &at, length, &again) == 0 && at == shown + length, "what is shown can be read");
  const std::uint32_t lost = moment.TimeWord == ENG_TIME_WILD ? 0 : moment.TimeWord % 100;
  Claim(again.DateWord == moment.DateWord && again.TimeWord == moment.TimeWord - lost, "as the same moment");
}

void ReadMoment(const Exact& text, const INTLFORMAT* settings, const TFMT& format) {
  const ENGCHAR* at = text.data();
  TIMEDATE moment;
  TIMEDATE_PAIR pair;
  ENGCHAR buffer[80];
  std::uint16_t length = 0;
  if (EngTimeParse(settings, &format, &at, text.size(), &moment) == 0) {
    Claim(at > text.data() && at <= text.data() + text.size(), "a moment takes something, and stays inside");
    Claim(EngTimeToText(nullptr, nullptr, &moment, buffer, sizeof buffer, &length) == 0, "what was read can be shown");
    ReadBack(moment, buffer, length);
  }
  at = text.data();
  if (EngTimeRangeParse(settings, &format, &at, text.size(), &pair) == 0) {
    EngTimeRangeToText(settings, &format, &pair, buffer, sizeof buffer, &length);
  }
  if (text.size() < sizeof moment) return;
  std::memcpy(&moment, text.data(), sizeof moment);
  EngTimeToText(settings, &format, &moment, buffer, sizeof buffer, &length);
  EngTimeAdjust(&moment, 1, -1, 30, -400, 13, -1);
}

void ReadList(const Exact& value) {
  if (value.size() == 0 || EngTextListVerify(value.data(), 1, value.size()) != 0) return;
  const std::uint16_t count = EngTextListCount(value.data(), 1);
  for (std::uint16_t i = 0; i < count; ++i) {
    const ENGCHAR* entry = nullptr;
    std::uint16_t length = 0;
    Claim(EngTextListGetEntry(value.data(), 1, i, &entry, &length) == 0, "a verified list has its entries");
    Claim(entry + length <= value.data() + value.size(), "an entry lies inside");
  }
}

ENGHANDLE BlockOf(const Exact& bytes) {
  ENGHANDLE block = 0;
  Claim(EngMemAlloc(0, bytes.size(), &block) == 0, "there is memory");
  if (bytes.size() != 0) std::memcpy(EngMemLock(block), bytes.data(), bytes.size());
  if (bytes.size() != 0) EngMemUnlock(block);
  return block;
}

void EditBlocks(const Exact& bytes) {
  const ENGHANDLE block = BlockOf(bytes);
  ENGHANDLE text = 0;
  std::uint32_t length = 0;
  const auto* separator = reinterpret_cast<const ENGCHAR*>("\r\n");
  if (EngTextFromComposite({block, 0}, 0, bytes.size(), separator, bytes.size() % 40, &text, &length) == 0) {
    Claim(EngMemFree(text) == 0, "the text is ours");
  }
  std::uint16_t size = bytes.size();
  EngTextListAddEntry(block, 1, &size, 0, separator, 2);
  EngTextListRemoveEntry(block, 1, &size, 1);
  Claim(EngMemFree(block) == 0, "nothing keeps a lock");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 8 || size > 16000) return 0;
  const NFMT number{data[0], data[1], data[2], 0};
  const TFMT time{static_cast<std::uint8_t>(data[3] % 5), static_cast<std::uint8_t>(data[4] % 4),
                  static_cast<std::uint8_t>(data[5] % 4), static_cast<std::uint8_t>(data[6] % 5)};
  const Exact text(std::string(reinterpret_cast<const char*>(data + 8), size - 8));
  INTLFORMAT settings{};
  std::memcpy(static_cast<void*>(&settings), data + 8, std::min(size - 8, sizeof settings));
  for (const INTLFORMAT* used : {static_cast<const INTLFORMAT*>(nullptr), static_cast<const INTLFORMAT*>(&settings)}) {
    ReadNumber(text, used, number);
    ReadMoment(text, used, time);
  }
  ReadList(text);
  EditBlocks(text);
  return 0;
}
