// Stored items as they are, and what their bytes say.
#ifndef QUILLON_TOOLS_QUILLON_VALUES_H
#define QUILLON_TOOLS_QUILLON_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/quillon/json.h"
#include "vq/vq.h"

namespace tool {

struct StoredItem {
  std::string name;
  std::uint16_t type;
  std::uint16_t flags;
  std::vector<unsigned char> value;  // type word included

  bool operator==(const StoredItem&) const = default;
};

StoredItem ReadItem(const VQItem& item);
// In the slate's order. The slate is open.
std::vector<StoredItem> ReadItems(const VQSlate& slate);

// "text list", or the number in hexadecimal.
std::string TypeName(std::uint16_t type);
// 2026-11-21T02:31:34.00Z, with a "*" for a half that is absent.
std::string TimeText(const TIMEDATE& time);
// A moment from the seconds since 1970.
TIMEDATE TimeFromUnix(std::int64_t seconds);

// For people, on one line; composite and unknown values as their size.
std::string ValueText(const StoredItem& item);
// The value alone: a text or number, an array for a list, null for what isn't decoded.
void WriteValue(JsonWriter& json, const StoredItem& item);

// number:VALUE; false for an argument that stands for a text, Failure{kExitUsage} for a value that is no number.
bool ReadNumberArgument(const std::string& text, double* number);
// The same for time:YYYY-MM-DD, a day alone, or time:YYYY-MM-DDTHH:MM[:SS[.HH]]Z, as TimeText writes it.
bool ReadTimeArgument(const std::string& text, TIMEDATE* moment);
// In place of what the open document has under that name: all texts, numbers or times (Failure{kExitUsage}).
void SetItem(VQDocument& document, const std::string& name, const std::vector<std::string>& values);

}  // namespace tool

#endif
