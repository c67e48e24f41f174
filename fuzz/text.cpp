// Text operations on any bytes: nothing is read behind the end, nothing is lost, and the ways of counting agree.
#include "engine/text.h"

#include <algorithm>
#include <vector>

#include "fuzz/support.h"

namespace {

using fuzz::Claim;

// Steps through with EngTextNextChar up to the first NUL.
std::uint32_t StepThrough(const std::string& text) {
  const auto* at = reinterpret_cast<const ENGCHAR*>(text.c_str());
  const ENGCHAR* const end = at + text.size();
  std::uint32_t count = 0;
  while (at < end) {
    const ENGCHAR* const before = at;
    const std::uint16_t stepped = EngTextNextChar(&at, static_cast<std::uint16_t>(end - at), 0, EngTextCharset());
    Claim(stepped > 0 && at == before + stepped && at <= end, "a step goes forward and not behind the end");
    ++count;
  }
  return count;
}

void CheckCounts(const std::string& text) {
  const auto* bytes = reinterpret_cast<const ENGCHAR*>(text.data());
  const auto length = static_cast<std::uint32_t>(text.size());
  std::uint32_t characters = 0;
  Claim(EngTextSpanChars(bytes, length, &characters) == 0, "a span can be counted");
  std::uint32_t back = 0;
  Claim(EngTextSpanBytes(bytes, length, characters, &back) == 0 && back == length, "all characters are all bytes");
  if (text.find('\0') == std::string::npos) Claim(StepThrough(text) == characters, "steps are characters");
}

void CheckOperations(const std::string& first, const std::string& second) {
  const VQString a(reinterpret_cast<const VQCHAR*>(first.data()), first.size());
  const VQString b(reinterpret_cast<const VQCHAR*>(second.data()), second.size());
  for (const unsigned long flags : {0ul, 1ul, 2ul, 3ul}) {
    const int order = VQStringCompare(a, b, flags);
    const int reverse = VQStringCompare(b, a, flags);
    Claim((order > 0) == (reverse < 0) && (order == 0) == (reverse == 0), "an order has two sides");
    Claim(VQStringCompare(a, a, flags) == 0, "a text is itself");
  }
  VQString joined = a;
  if (joined.Append(b) == VQ_OK) Claim(joined.GetBufLength() == a.GetBufLength() + b.GetBufLength(), "no byte is lost");
  unsigned long found = 0;
  if (!b.IsNull() && joined.Find(b, 0, &found) == VQ_OK) Claim(found <= joined.GetLength(), "a find lies inside");
  VQString changed = a;
  changed.ToUpper();
  changed.ToLower();
  changed.RemoveAccent();
  unsigned long at = 0;
  while (a.FindNextWordStart(at, &found) == VQ_OK && found > at) at = found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::World::Get();
  if (size == 0 || size > 16000) return 0;
  const std::size_t split = 1 + data[0] % size;
  const std::string all(reinterpret_cast<const char*>(data), size);
  CheckCounts(all);
  CheckOperations(all.substr(0, split), all.substr(split));
  return 0;
}
