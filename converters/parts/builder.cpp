#include "converters/parts/builder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace conv {

namespace {

constexpr std::uint16_t kIndent = 360;
constexpr unsigned kWidestMargin = 60000;
constexpr std::int16_t kTab = 720;
constexpr std::uint16_t kLooseSpacing = 1;
constexpr std::size_t kMostStyles = 60000;
// Well below the 20 KB from which readers begin to refuse a run.
constexpr std::size_t kRunBytes = 0x4000;
constexpr std::size_t kLongestAddress = 0x4000;
constexpr std::uint8_t kHeadingSizes[] = {10, 24, 18, 14, 12, 11, 9};

// Not within a character.
std::size_t CutAt(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t cut = limit;
  while (cut > limit - 4 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return cut;
}

// Of a table's width, for each column: what a page says of it comes out the same again.
constexpr unsigned kParts = 1000;

// Those too narrow for a cell get what one needs, and the others share the rest.
std::vector<unsigned> PartsOf(const std::vector<unsigned>& widths) {
  constexpr unsigned kLeast = (kNarrowestColumn * kParts + kTableWidth - 1) / kTableWidth;
  std::vector<bool> narrow(widths.size());
  double rest = kParts;
  double sum = 0;
  for (unsigned width : widths) sum += width;
  for (bool found = true; found;) {
    found = false;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (narrow[i] || widths[i] * rest >= kLeast * sum) continue;
      narrow[i] = found = true;
      rest -= kLeast;
      sum -= widths[i];
    }
  }
  std::vector<unsigned> parts;
  double shared = 0;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const double before = std::round(shared);
    if (!narrow[i]) shared += widths[i] * rest / sum;
    parts.push_back(narrow[i] ? kLeast : static_cast<unsigned>(std::round(shared) - before));
  }
  return parts;
}

// Right edges of the columns in a table that begins at 0.
std::vector<unsigned> EdgesOf(const std::vector<unsigned>& widths) {
  const auto count = static_cast<unsigned>(widths.size());
  std::vector<unsigned> edges;
  if (std::ranges::count(widths, widths.front()) == std::ssize(widths)) {
    for (unsigned i = 1; i <= count; ++i) edges.push_back(kTableWidth / count * i);
    return edges;
  }
  unsigned behind = 0;
  for (unsigned part : PartsOf(widths)) {
    behind += part;
    edges.push_back((behind * kTableWidth + kParts / 2) / kParts);
  }
  return edges;
}

}  // namespace

Builder::Builder(RecordOutput& output, FontID base, Report& report)
    : Out(output), Base(base & ~kAttributes), Losses(report) {
  Out.Begin();
}

void Builder::OpenQuote() { Levels.push_back({OpenLevel::kQuote, {LevelKind::kQuote, Entry::kBegin}}); }

void Builder::OpenList(bool numbered, unsigned start) {
  Levels.push_back({OpenLevel::kList, {numbered ? LevelKind::kNumber : LevelKind::kBullet, Entry::kBegin, start}});
}

void Builder::OpenItem() {
  const Level mark = Levels.empty() ? Level{LevelKind::kBullet} : Levels.back().Mark;
  Levels.push_back({OpenLevel::kItem, mark});
}

void Builder::Close() {
  if (Levels.empty()) return;
  EndParagraph();
  const OpenLevel level = Levels.back();
  const bool standsAlone = level.Kind == OpenLevel::kQuote || level.Kind == OpenLevel::kItem;
  if (standsAlone && !level.Used) {
    BeginParagraph({.What = Leaf::kEmpty, .Tight = true});
    EndParagraph();
  }
  if (level.Kind == OpenLevel::kCell && !level.Used) {
    BeginParagraph({});
    EndParagraph();
  }
  Levels.pop_back();
  // The list's later items are next ones.
  if (level.Kind == OpenLevel::kItem && !Levels.empty()) Levels.back().Mark.How = Entry::kNext;
  if (level.Kind != OpenLevel::kTable) return;
  Out.Put(kSigTableEnd, ODS_CDTABLEEND, CDTABLEEND{});
  Table.Open = false;
  BehindTable = true;
}

FontID Builder::BaseFont(unsigned heading) const {
  return heading == 0 || heading >= std::size(kHeadingSizes) ? Base : WithSize(Base, kHeadingSizes[heading]);
}

std::uint16_t Builder::LeftMargin(const Paragraph& paragraph) const {
  unsigned margin = Table.Open ? Table.Left : kPageMargin;
  bool inside = !Table.Open;
  for (const OpenLevel& level : Levels) {
    if (level.Kind == OpenLevel::kCell) inside = true;
    if (inside && (level.Kind == OpenLevel::kQuote || level.Kind == OpenLevel::kItem)) margin += kIndent;
  }
  // A cell's text stays in its cell.
  const unsigned widest = Table.Open ? std::max<unsigned>(Table.Left, Table.Right - kIndent) : kWidestMargin;
  return static_cast<std::uint16_t>(std::min(margin + paragraph.Indent, widest));
}

// Identifier of the style for a paragraph that stands here.
std::uint16_t Builder::StyleFor(const Paragraph& paragraph) {
  Marks.clear();
  for (OpenLevel& level : Levels) {
    const bool marks =
        level.Kind == OpenLevel::kQuote || level.Kind == OpenLevel::kItem || level.Kind == OpenLevel::kCell;
    if (marks) Marks.push_back(level.Mark);
    if (level.Kind == OpenLevel::kQuote || level.Kind == OpenLevel::kItem) level.Mark.How = Entry::kInside;
    level.Used = true;
  }
  NameLosses losses;
  const std::string name = MakeStyleName(Marks, paragraph.What, paragraph.Heading, paragraph.Language, &losses);
  if (losses.Levels) Losses.Add(Loss::kNesting);
  if (losses.Language) Losses.Add(Loss::kInfo, 0, paragraph.Language);
  const std::uint16_t left = LeftMargin(paragraph);
  const std::uint32_t numbers[] = {left,
                                   paragraph.Justify,
                                   (paragraph.Tight ? 0U : 1U) | (paragraph.Hidden ? 2U : 0U),
                                   static_cast<std::uint32_t>(paragraph.FirstLineIndent),
                                   Table.Open ? Table.Number : 0U,
                                   Table.Open ? Table.Right : 0U};
  Key.assign(reinterpret_cast<const char*>(numbers), sizeof numbers).append(name);
  const auto found = Styles.find(Key);
  if (found != Styles.end()) return found->second;
  if (Styles.size() >= kMostStyles) {
    Losses.Add(Loss::kStyles);
    return 1;
  }
  const auto id = static_cast<std::uint16_t>(Styles.size() + 1);
  Styles.emplace(Key, id);
  DefineStyle(id, name, paragraph, left);
  return id;
}

void Builder::DefineStyle(std::uint16_t id, const std::string& name, const Paragraph& paragraph, std::uint16_t left) {
  CDPABDEFINITION definition{};
  definition.PABID = id;
  definition.JustifyMode = paragraph.Justify;
  definition.LeftMargin = left;
  definition.RightMargin = Table.Open ? Table.Right : 0;
  definition.FirstLineMargin = static_cast<std::uint16_t>(
      std::clamp<std::int32_t>(left + paragraph.FirstLineIndent, 0, static_cast<std::int32_t>(kWidestMargin)));
  definition.SpacingBelow = !Marks.empty() && !paragraph.Tight && !Table.Open ? kLooseSpacing : 0;
  definition.Tabs[0] = kTab;
  definition.Flags = Table.Open ? kCellParagraphFlags : kHideFlagsUnlinked;
  if (paragraph.Hidden) definition.Flags |= kHideReading;
  if (!Marks.empty() && Marks.back().How != Entry::kInside && Marks.back().Kind == LevelKind::kBullet) {
    definition.Flags |= kBulletStyle;
  }
  if (!Marks.empty() && Marks.back().How != Entry::kInside && Marks.back().Kind == LevelKind::kNumber) {
    definition.Flags |= kNumberStyle;
  }
  Out.Put(kSigDefinition, ODS_CDPABDEFINITION, definition);
  if (name.empty()) return;
  CDSTYLENAME style{};
  style.Flags = kStyleHasFont;
  style.PABID = id;
  std::memcpy(style.StyleName, name.data(), std::min(name.size(), kLongestStyleName));
  const FontID font = paragraph.What == Leaf::kCode ? WithFace(Base, kMono) : BaseFont(paragraph.Heading);
  char bytes[4];
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<char>(font >> (8 * i));
  Out.Put(kSigStyleName, ODS_CDSTYLENAME, style, {bytes, sizeof bytes});
}

// What has to stand between the last paragraph or table and the next.
void Builder::Separate() {
  if (!AtStart) Out.Put(kSigParagraph, ODS_CDPARAGRAPH, CDPARAGRAPH{});
  AtStart = false;
  BehindTable = false;
}

// The first definition in a column styles the rows that are put in later: a heading's comes behind it.
void Builder::DefineColumn(const Paragraph& paragraph) {
  if (Levels.empty() || Levels.back().Mark.Kind != LevelKind::kHeadingCell) return;
  // Nothing stands in the levels yet.
  std::vector<OpenLevel> levels = Levels;
  Levels.back().Mark.Kind = LevelKind::kCell;
  StyleFor(paragraph);
  Levels = std::move(levels);
}

void Builder::BeginParagraph(const Paragraph& paragraph) {
  EndParagraph();
  Separate();
  DefineColumn(paragraph);
  LastStyle = StyleFor(paragraph);
  Out.Put(kSigReference, ODS_CDPABREFERENCE, CDPABREFERENCE{{}, LastStyle});
  HasParagraph = true;
  HasRun = false;
  IsEmpty = true;
  TextFont = paragraph.What == Leaf::kCode ? WithFace(Base, kMono) : BaseFont(paragraph.Heading);
}

void Builder::EndParagraph() {
  if (!HasParagraph) return;
  if (!Run.empty()) WriteRun();
  // A run at the end is where a cursor can stand.
  if (!HasRun) Mark(TextFont);
  HasParagraph = false;
}

void Builder::WriteRun() {
  std::string_view rest = Run;
  while (!rest.empty()) {
    const std::size_t size = CutAt(rest, kRunBytes);
    Out.Put(kSigText, ODS_CDTEXT, CDTEXT{{}, RunFont}, rest.substr(0, size));
    rest.remove_prefix(size);
  }
  HasRun = true;
  IsEmpty = false;
  Run.clear();
}

void Builder::Text(std::string_view text, FontID font) {
  if (text.empty()) return;
  if (font != RunFont && !Run.empty()) WriteRun();
  RunFont = font;
  Run.append(text);
}

void Builder::Mark(FontID font) {
  if (!Run.empty()) WriteRun();
  Out.Put(kSigText, ODS_CDTEXT, CDTEXT{{}, font});
  HasRun = true;
  IsEmpty = false;
}

void Builder::Anchor(std::string_view name) {
  if (name.size() > kLongestAddress) return Losses.Add(Loss::kAnchor, 0, name);
  if (!Run.empty()) WriteRun();
  if (IsEmpty) Mark(TextFont);
  Out.PutBytes(kSigAnchor, name);
  HasRun = false;
}

void Builder::BeginLink(const Link& link) {
  if (!Run.empty()) WriteRun();
  if (IsEmpty) Mark(TextFont);
  std::string data;
  for (std::string_view part : {link.Url, link.Title, link.Picture, link.PictureTitle}) {
    if (part.size() > kLongestAddress) {
      Losses.Add(Loss::kLink, 0, part);
      part = {};
    }
    data.append(part).append(1, '\0');
  }
  data.erase(data.find_last_not_of('\0') + 1);
  CDHOTSPOTBEGIN begin{};
  begin.Type = kHotspotLink;
  begin.Flags = kHotspotUrl | (link.IsPicture ? kHotspotPicture : 0) | (link.IsContinued ? kHotspotContinued : 0);
  begin.DataLength = static_cast<std::uint16_t>(data.size());
  Out.Put(kSigHotspot, ODS_CDHOTSPOTBEGIN, begin, data);
}

void Builder::EndLink() {
  if (!Run.empty()) WriteRun();
  Out.Put(kSigHotspotEnd, ODS_CDHOTSPOTEND, CDHOTSPOTEND{});
  HasRun = false;
}

void Builder::OpenTable(const std::vector<unsigned>& widths) {
  EndParagraph();
  // A table stands behind a paragraph record, and that behind a text.
  if (AtStart || BehindTable) BeginParagraph({}), EndParagraph();
  Separate();
  for (OpenLevel& level : Levels) {
    if (level.Kind == OpenLevel::kTable || level.Kind == OpenLevel::kCell) continue;
    level.Used = true;
  }
  Out.Put(kSigTableBegin, ODS_CDTABLEBEGIN,
          CDTABLEBEGIN{{}, kPageMargin, kUsualColumnSpacing, kUsualRowSpacing, 0, 0, kTableDefaultFlags});
  Levels.push_back({OpenLevel::kTable, {}});
  Table.Open = true;
  ++Table.Number;
  Table.Lefts.assign(1, kPageMargin);
  for (unsigned edge : EdgesOf(widths)) Table.Lefts.push_back(static_cast<std::uint16_t>(kPageMargin + edge));
}

void Builder::OpenCell(unsigned row, unsigned column, const Cell& cell) {
  Table.Left = Table.Lefts[column];
  Table.Right = Table.Lefts[column + 1];
  CDTABLECELL record{};
  record.Row = static_cast<std::uint8_t>(row);
  record.Column = static_cast<std::uint8_t>(column);
  record.LeftMargin = Table.Left;
  record.RightMargin = Table.Right;
  record.FractionalWidth = static_cast<std::uint16_t>(Table.Right - Table.Left);
  record.Border = cell.Border;
  record.Flags = static_cast<std::uint8_t>(kCellDefaultFlags | (cell.HasBackground ? kCellHasBackground : 0));
  record.BorderWidth = cell.BorderWidth;
  record.RowSpan = static_cast<std::uint8_t>(cell.RowSpan);
  record.ColumnSpan = static_cast<std::uint8_t>(cell.ColumnSpan);
  record.BackgroundColor = cell.Background;
  Out.Put(kSigTableCell, ODS_CDTABLECELL, record);
  const LevelKind kind = cell.Heading ? LevelKind::kHeadingCell : LevelKind::kCell;
  Levels.push_back({OpenLevel::kCell, {kind, Entry::kInside}});
}

bool Builder::Finish() {
  while (!Levels.empty()) Close();
  EndParagraph();
  if (BehindTable || AtStart) BeginParagraph({}), EndParagraph();
  return Out.Finish();
}

}  // namespace conv
