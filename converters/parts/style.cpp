#include "converters/parts/style.h"

#include "converters/parts/records.h"

namespace conv {

namespace {

constexpr std::size_t kMostDigits = 9;

struct MarkRow {
  LevelKind Kind;
  Entry How;
  char Mark;
};

constexpr MarkRow kMarks[] = {
    {LevelKind::kQuote, Entry::kBegin, '>'},        {LevelKind::kQuote, Entry::kInside, '|'},
    {LevelKind::kBullet, Entry::kBegin, '*'},       {LevelKind::kBullet, Entry::kNext, '-'},
    {LevelKind::kBullet, Entry::kInside, ':'},      {LevelKind::kNumber, Entry::kNext, '#'},
    {LevelKind::kNumber, Entry::kInside, ';'},      {LevelKind::kCell, Entry::kInside, '='},
    {LevelKind::kHeadingCell, Entry::kInside, '^'},
};

void AppendMark(const Level& level, std::string* text) {
  if (level.Kind == LevelKind::kNumber && level.How == Entry::kBegin) {
    text->append(std::to_string(level.Start)).append(1, '.');
    return;
  }
  const bool cell = level.Kind == LevelKind::kCell || level.Kind == LevelKind::kHeadingCell;
  const Entry how = cell ? Entry::kInside : level.How;
  for (const MarkRow& row : kMarks) {
    if (row.Kind == level.Kind && row.How == how) text->append(1, row.Mark);
  }
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The mark at *text, which moves behind it.
bool TakeMark(std::string_view* text, Level* level) {
  if (text->empty()) return false;
  for (const MarkRow& row : kMarks) {
    if (row.Mark != text->front()) continue;
    *level = {row.Kind, row.How, 1};
    text->remove_prefix(1);
    return true;
  }
  std::size_t digits = 0;
  unsigned start = 0;
  for (; digits < text->size() && digits < kMostDigits && IsDigit((*text)[digits]); ++digits) {
    start = start * 10 + static_cast<unsigned>((*text)[digits] - '0');
  }
  if (digits == 0 || digits == text->size() || (*text)[digits] != '.') return false;
  *level = {LevelKind::kNumber, Entry::kBegin, start};
  text->remove_prefix(digits + 1);
  return true;
}

bool ParseLeaf(std::string_view text, StyleName* name) {
  constexpr std::string_view kHeading = "Heading ";
  constexpr std::string_view kCode = "Code";
  name->What = Leaf::kText;
  if (text == "Text") return true;
  if (text == "Rule") name->What = Leaf::kRule;
  if (text == "Empty") name->What = Leaf::kEmpty;
  if (text.starts_with(kCode) && (text.size() == kCode.size() || text[kCode.size()] == ' ')) {
    name->What = Leaf::kCode;
    name->Language = text.substr(text.size() == kCode.size() ? kCode.size() : kCode.size() + 1);
  }
  if (text.size() == kHeading.size() + 1 && text.starts_with(kHeading) && text.back() >= '1' && text.back() <= '6') {
    name->What = Leaf::kHeading;
    name->Heading = static_cast<unsigned>(text.back() - '0');
  }
  return name->What != Leaf::kText;
}

}  // namespace

std::string MakeStyleName(const std::vector<Level>& levels, Leaf what, unsigned heading, std::string_view language,
                          NameLosses* losses) {
  std::string leaf = "Text";
  if (what == Leaf::kHeading) leaf = "Heading " + std::to_string(heading);
  if (what == Leaf::kRule) leaf = "Rule";
  if (what == Leaf::kEmpty) leaf = "Empty";
  if (what == Leaf::kCode) leaf = "Code";
  std::string name;
  for (const Level& level : levels) {
    const std::size_t before = name.size();
    AppendMark(level, &name);
    if (name.size() + 1 + leaf.size() <= kLongestStyleName) continue;
    name.resize(before);
    losses->Levels = true;
    break;
  }
  if (name.empty() && what == Leaf::kText) return name;
  if (!name.empty()) name += ' ';
  name += leaf;
  if (what != Leaf::kCode || language.empty()) return name;
  if (name.size() + 1 + language.size() <= kLongestStyleName) return name.append(1, ' ').append(language);
  losses->Language = true;
  return name;
}

bool ParseStyleName(std::string_view text, StyleName* name) {
  *name = {};
  Level level;
  while (TakeMark(&text, &level)) name->Levels.push_back(level);
  if (!name->Levels.empty()) {
    if (text.empty() || text.front() != ' ') return false;
    text.remove_prefix(1);
  }
  return ParseLeaf(text, name);
}

}  // namespace conv
