#include "qcore/index/special.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "engine/formula.h"
#include "qcore/text/textlist.h"

namespace qcore::index {

namespace {

using Arguments = std::vector<std::string_view>;

constexpr char kMark = ENG_SPECIAL_MARK;
constexpr char kArgumentEnd = ENG_SPECIAL_ARGUMENT_END;

// The ordinals of a row, or of a row above it, with a separator between; with an empty one the last ordinal alone.
std::string NumberOf(const COLLECTIONPOSITION* position, unsigned above, const Arguments& arguments) {
  if (!position || position->Level < above) return {};
  const unsigned last = std::min<unsigned>(position->Level, ENG_COLLECTION_LEVELS - 1) - above;
  const std::string_view separator = arguments.empty() ? "." : arguments[0];
  std::string number;
  for (unsigned level = separator.empty() ? last : 0; level <= last; ++level) {
    if (!number.empty()) number += separator;
    number += std::to_string(position->Tumbler[level]);
  }
  return number;
}

// The count by itself, or in the text that fits it.
std::string CountText(std::uint32_t count, const Arguments& arguments) {
  std::string text = "%";
  if (!arguments.empty()) text = arguments[count < 2 && arguments.size() > count + 1 ? count + 1 : 0];
  const std::string digits = std::to_string(count);
  for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + digits.size())) {
    text.replace(at, 1, digits);
  }
  return text;
}

std::string Choice(bool yes, std::string_view sign, const Arguments& arguments) {
  if (arguments.empty()) return std::string(yes ? sign : "");
  if (yes) return std::string(arguments[0]);
  return std::string(arguments.size() > 1 ? arguments[1] : "");
}

// Nothing for a letter that means nothing.
std::optional<std::string> Expand(char letter, const Arguments& arguments, const SpecialFacts& facts) {
  switch (letter) {
    case ENG_SPECIAL_DOC_NUMBER:
      return NumberOf(facts.position, 0, arguments);
    case ENG_SPECIAL_DOC_PARENT_NUMBER:
      return NumberOf(facts.position, 1, arguments);
    case ENG_SPECIAL_DOC_LEVEL:
      return std::to_string(facts.position ? facts.position->Level : 0);
    case ENG_SPECIAL_DOC_SIBLINGS:
      return std::to_string(facts.siblings);
    case ENG_SPECIAL_DOC_CHILDREN:
      return CountText(facts.children, arguments);
    case ENG_SPECIAL_DOC_DESCENDANTS:
      return CountText(facts.descendants, arguments);
    case ENG_SPECIAL_IS_CATEGORY:
      return Choice((facts.id & (ENG_ROW_NO_DOCUMENT | ENG_ROW_TOTAL)) == ENG_ROW_NO_DOCUMENT, "*", arguments);
    case ENG_SPECIAL_IS_EXPANDABLE:
      return Choice(facts.children != 0, "+", arguments);
    case ENG_SPECIAL_IS_UNREAD:
      return Choice(facts.unread, "*", arguments);
    case ENG_SPECIAL_DB_TITLE:
      return std::string(facts.db_title);
    case ENG_SPECIAL_VIEW_TITLE:
      return std::string(facts.view_title);
    default:
      return std::nullopt;
  }
}

// What stands between a mark's letter and its end; nothing when it is no row of ended arguments.
std::optional<Arguments> ArgumentsIn(std::string_view text) {
  Arguments arguments;
  while (!text.empty()) {
    const std::size_t end = text.find(kArgumentEnd);
    if (end == std::string_view::npos) return std::nullopt;
    arguments.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return arguments;
}

// What the mark at the front of a text expands to, and its size; nothing when there is no mark.
std::optional<std::string> ExpandFront(std::string_view text, const SpecialFacts& facts, std::size_t* size) {
  const std::size_t end = text.size() < 3 || text[0] != kMark ? std::string_view::npos : text.find(kMark, 2);
  if (end == std::string_view::npos) return std::nullopt;
  *size = end + 1;
  const std::optional<Arguments> arguments = ArgumentsIn(text.substr(2, end - 2));
  return arguments ? Expand(text[1], *arguments, facts) : std::nullopt;
}

}  // namespace

std::size_t FrontMarkSize(std::string_view text) {
  std::size_t size = 0;
  return ExpandFront(text, {}, &size) ? size : 0;
}

std::string ExpandSpecial(std::string_view text, const SpecialFacts& facts) {
  std::string output;
  while (!text.empty()) {
    const std::size_t mark = std::min(text.find(kMark), text.size());
    output += text.substr(0, mark);
    text.remove_prefix(mark);
    std::size_t size = 0;
    const std::optional<std::string> expanded = ExpandFront(text, facts, &size);
    const std::size_t taken = expanded ? size : std::min<std::size_t>(text.size(), 1);
    output += expanded ? std::string_view(*expanded) : text.substr(0, taken);
    text.remove_prefix(taken);
  }
  return output;
}

bool ExpandSpecialValue(bool list, Bytes value, const SpecialFacts& facts, std::vector<std::uint8_t>* expanded) {
  if (!list) {
    const std::string text = ExpandSpecial({reinterpret_cast<const char*>(value.data()), value.size()}, facts);
    expanded->assign(text.begin(), text.end());
    return true;
  }
  const auto entries = text::ReadList(value, text::Prefix::kNone);
  if (!entries) return false;
  std::vector<std::string> texts;
  for (const std::string_view entry : *entries) texts.push_back(ExpandSpecial(entry, facts));
  const auto made = text::WriteList({texts.begin(), texts.end()}, text::Prefix::kNone);
  if (made) expanded->assign(made->begin(), made->end());
  return made.has_value();
}

}  // namespace qcore::index
