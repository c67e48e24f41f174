#include "qcore/store/info.h"

#include <algorithm>
#include <array>

namespace qcore {

namespace {

constexpr char kSeparator = '\n';

}  // namespace

std::string_view CutText(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
  return text.substr(0, limit);
}

std::string_view InfoField(std::string_view info, std::size_t field) {
  for (; field > 0; --field) {
    const std::size_t end = info.find(kSeparator);
    if (end == std::string_view::npos) return {};
    info.remove_prefix(end + 1);
  }
  return info.substr(0, info.find(kSeparator));
}

std::string ChangeInfo(std::string_view info, std::size_t field, std::string_view value) {
  std::array<std::string, kInfoFields> fields;
  std::size_t taken = kInfoFields - 1;  // separators
  for (std::size_t i = 0; i < kInfoFields; ++i) {
    if (i != field) fields[i] = InfoField(info, i);
    taken += fields[i].size();
  }
  fields[field] = CutText(value, taken < kInfoLimit ? kInfoLimit - taken : 0);
  std::replace(fields[field].begin(), fields[field].end(), kSeparator, ' ');
  std::string changed;
  for (std::size_t i = 0; i < kInfoFields; ++i) {
    if (i > 0) changed += kSeparator;
    changed += fields[i];
  }
  changed.erase(changed.find_last_not_of(kSeparator) + 1);
  return changed;
}

}  // namespace qcore
