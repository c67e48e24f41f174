#include "converters/parts/walker.h"

#include <algorithm>
#include <map>
#include <utility>

#include "converters/parts/utf8.h"
#include "engine/status.h"

namespace conv {

namespace {

constexpr int kIndent = 360;
// Looked up once: each text has one.
const std::uint32_t kTextHeader = EngOdsLength(ODS_CDTEXT);

// What a reader of the report knows it by.
std::string_view NameOfObject(std::uint16_t signature) {
  constexpr std::pair<std::uint16_t, std::string_view> kNames[] = {
      {0x84, "field"},           {0xFF84, "field"},         {0xFF8A, "field"},      {0xFF91, "document link"},
      {0xFF92, "document link"}, {0xFF93, "script"},        {0x95, "picture"},      {0x99, "picture"},
      {0x9D, "picture"},         {0xFFA7, "linked object"}, {0xFFAB, "button"},     {0xFFAC, "section"},
      {0xFFB0, "field"},         {0xFFB1, "action"},        {0xFFBE, "action bar"}, {0xFFCA, "applet"},
  };
  for (const auto& [number, name] : kNames) {
    if (number == signature) return name;
  }
  return {};
}

std::string_view NameOfHotspot(std::uint16_t type) {
  constexpr std::pair<std::uint16_t, std::string_view> kNames[] = {
      {1, "popup"},          {2, "action"},   {3, "button"},  {4, "attachment"},
      {11, "document link"}, {14, "subform"}, {15, "applet"},
  };
  for (const auto& [number, name] : kNames) {
    if (number == type) return name;
  }
  return {};
}

// Others may put something else into a place's record.
bool IsName(std::string_view text) {
  if (text.empty()) return false;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = Utf8Length(text.substr(i));
    if (size == 0 || static_cast<unsigned char>(text[i]) <= ' ') return false;
    i += size;
  }
  return true;
}

}  // namespace

Walker::Walker(std::string_view value, Sink& sink, Report& report) : Records(value), Out(sink), Losses(report) {
  Undefined.Definition.LeftMargin = Undefined.Definition.FirstLineMargin = kPageMargin;
}

ENGSTATUS Walker::Run() {
  const std::size_t start = Records.GetOffset();
  Collect();
  if (Records.IsDamaged()) return ENG_ERR_RECORD_DAMAGED;
  Records.SetOffset(start);
  Out.SetBase(Base);
  Record record;
  while (!IsDamaged && Records.Next(&record)) Handle(record);
  if (IsDamaged) return ENG_ERR_RECORD_DAMAGED;
  EndParagraph();
  FlushEmptyParagraphs(1);
  if (Table.IsOpen) EndTable();
  CloseLevels(0);
  return ENG_OK;
}

// Styles are known ahead of their use, wherever they stand; the font that most text is in is the base.
void Walker::Collect() {
  std::map<FontID, std::size_t> fonts;
  FontID last = 0;
  std::size_t* count = nullptr;
  bool plain = true;  // headings and code have fonts of their own
  Record record;
  while (Records.Next(&record)) {
    if (record.Signature == kSigDefinition) Define(record);
    if (record.Signature == kSigStyleName) NameStyle(record);
    if (record.Signature == kSigReference) plain = StyleOf(record.Word(2)).Name.What == Leaf::kText;
    if (record.Signature != kSigText || !plain) continue;
    const FontID font = record.Dword(4) & ~kAttributes;
    if (FaceOf(font) == kMono) continue;
    if (!count || font != last) count = &fonts[font];
    *count += record.Length - std::min(record.Length, kTextHeader);
    last = font;
  }
  std::size_t most = 0;
  for (const auto& [font, bytes] : fonts) {
    if (bytes > most) Base = font, most = bytes;
  }
  CurrentBase = Base;
}

void Walker::Define(const Record& record) {
  const auto definition = record.Read<CDPABDEFINITION>(ODS_CDPABDEFINITION);
  Style& style = Styles[definition.PABID];
  style = {};
  style.Definition = definition;
}

void Walker::NameStyle(const Record& record) {
  const auto name = record.Read<CDSTYLENAME>(ODS_CDSTYLENAME);
  const auto found = Styles.find(name.PABID);
  if (found == Styles.end()) return;
  const char* text = reinterpret_cast<const char*>(name.StyleName);
  const std::string_view words(text, std::find(text, text + sizeof name.StyleName, '\0') - text);
  found->second.IsNamed = ParseStyleName(words, &found->second.Name);
  if (!found->second.IsNamed) Losses.Add(Loss::kStyleName, 0, words);
  if (name.Flags & kStyleHasFont) found->second.Font = record.Dword(EngOdsLength(ODS_CDSTYLENAME));
}

void Walker::Handle(const Record& record) {
  switch (record.Signature) {
    case kSigText:
      return HandleText(record);
    case kSigReference:
      Reference = record.Word(2);
      return;
    case kSigFormulaReference:
      Reference = record.Word(4);
      return;
    case kSigParagraph:
      return BreakParagraph();
    case kSigHotspot:
    case kSigV4Hotspot:
      return BeginHotspot(record);
    case kSigHotspotEnd:
    case kSigHotspotEndOld:
      return EndHotspot();
    case kSigTableBegin:
      return BeginTable(record);
    case kSigTableCell:
      return BeginCell(record);
    case kSigTableEnd:
      return EndTable();
    case kSigAnchor:
      return HandleAnchor(record);
    case kSigDefinition:
    case kSigStyleName:
    case kSigHide:
    case kSigTextStyle:
      return;
    default:
      Losses.Add(Loss::kObject, 0, NameOfObject(record.Signature));
  }
}

const Walker::Style& Walker::StyleOf(std::uint16_t reference) const {
  const auto found = Styles.find(reference);
  return found == Styles.end() ? Undefined : found->second;
}

// Paragraphs

// A paragraph record ends the paragraph in front of it.
void Walker::BreakParagraph() {
  if (!IsBreakExpected) HasParagraph = true;
  EndParagraph();
  IsBreakExpected = false;
}

BlockInfo Walker::InfoOf(const Style& style) const {
  constexpr Block kBlocks[] = {Block::kText, Block::kHeading, Block::kCode, Block::kRule, Block::kText};
  BlockInfo info;
  info.Kind = kBlocks[static_cast<std::size_t>(style.Name.What)];
  info.Number = style.Name.Heading;
  info.Language = style.Name.Language;
  const CDPABDEFINITION& definition = style.Definition;
  info.Justify = definition.JustifyMode;
  info.Hidden = (definition.Flags & kHideReading & kHideFlags) != 0 || (definition.Flags2 & 1) != 0;
  const bool inItem = Levels.size() > LevelFloor && Levels.back().Kind != LevelKind::kQuote;
  info.Tight = inItem && definition.SpacingBelow == 0 && definition.SpacingAbove == 0;
  const int levels = static_cast<int>(Levels.size() - LevelFloor);
  const int page = Table.InCell ? Table.Record.LeftMargin : kPageMargin;
  const int own = definition.LeftMargin - page - levels * kIndent;
  const bool unnamedList = !style.IsNamed && levels > 0;
  const int room = Table.InCell ? Table.Room : 0;
  if (!unnamedList && own > room) info.Indent = own;
  if (!unnamedList) info.FirstLineIndent = definition.FirstLineMargin - definition.LeftMargin;
  if (Table.InCell && !Table.Nested) info.Plain = Table.Next > 0 && !Table.Cells[Table.Next - 1].IsBlock;
  return info;
}

void Walker::BeginParagraph() {
  FlushEmptyParagraphs(0);
  const Style& style = StyleOf(Reference);
  EnterLevels(LevelsOf(style), style.Definition.LeftMargin);
  Current = InfoOf(style);
  if (Current.Kind == Block::kRule) Current.Kind = Block::kText;  // somebody wrote in it
  // From others than readers, or as a formula tells.
  constexpr unsigned kOtherHiding = (kHideFlags & ~kHideReading) | kHideFormula;
  if (!Current.Hidden && (style.Definition.Flags & kOtherHiding) != 0) Losses.Add(Loss::kHidden);
  const CDPABDEFINITION& definition = style.Definition;
  if (definition.Flags & kPageBreak) Losses.Add(Loss::kPageBreak);
  const bool cut = definition.RightMargin != 0 || definition.LeftMargin < kPageMargin;
  if (cut && !Table.InCell) Losses.Add(Loss::kMargin);
  if (definition.TabCount > 0) Losses.Add(Loss::kTabs);
  const bool ownSpace = Levels.size() == LevelFloor && definition.SpacingBelow != 0;
  if (ownSpace || definition.SpacingAbove != 0 || definition.LineSpacing != 0) Losses.Add(Loss::kSpacing);
  CurrentBase = Current.Kind == Block::kCode ? WithFace(Base, kMono) : Base;
  if (style.Font != 0 && Current.Kind != Block::kText) CurrentBase = style.Font;
  Out.Open(Current);
  IsParagraphOpen = true;
  IsBehindTable = false;
  IsFontKnown = false;
  LastFont = CurrentBase;
  for (FontID font : Marks) MatchFormats(font);
  Marks.clear();
}

void Walker::EndParagraph() {
  SettleLink();
  while (!Hotspots.empty()) EndHotspot();
  SettleLink();
  if (IsParagraphOpen) {
    CloseFormats(0);
    Out.Close(Current);
  } else if (HasParagraph) {
    EndEmptyParagraph();
  }
  Marks.clear();
  IsParagraphOpen = HasParagraph = false;
}

void Walker::EndEmptyParagraph() {
  const Style& style = StyleOf(Reference);
  const std::vector<Level> levels = LevelsOf(style);
  const Leaf leaf = style.Name.What;
  const bool beginsItem = !levels.empty() && levels.back().How != Entry::kInside;
  if (leaf == Leaf::kText && !beginsItem) {
    if (!IsBehindTable) EmptyOnes.push_back(Reference);
    return;
  }
  FlushEmptyParagraphs(0);
  EnterLevels(levels, style.Definition.LeftMargin);
  IsBehindTable = false;
  if (leaf == Leaf::kEmpty || leaf == Leaf::kText) return;
  const BlockInfo info = InfoOf(style);
  Out.Open(info);
  Out.Close(info);
}

void Walker::FlushEmptyParagraphs(std::size_t dropped) {
  const std::size_t count = EmptyOnes.size() > dropped ? EmptyOnes.size() - dropped : 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Style& style = StyleOf(EmptyOnes[i]);
    EnterLevels(LevelsOf(style), style.Definition.LeftMargin);
    BlockInfo info = InfoOf(style);
    info.Empty = true;
    Out.Open(info);
    Out.Close(info);
  }
  EmptyOnes.clear();
}

// Levels

// Those of the style's name; without one, what list style and margin tell.
std::vector<Level> Walker::LevelsOf(const Style& style) const {
  if (style.IsNamed) {
    const std::vector<Level>& levels = style.Name.Levels;
    auto first = levels.end();
    while (Table.InCell && first != levels.begin() && first[-1].Kind != LevelKind::kCell &&
           first[-1].Kind != LevelKind::kHeadingCell) {
      --first;
    }
    return {Table.InCell ? first : levels.begin(), levels.end()};
  }
  const std::uint16_t flags = style.Definition.Flags;
  const std::uint16_t margin = style.Definition.LeftMargin;
  const bool listed = (flags & (kBulletStyle | kNumberStyle)) != 0;
  const std::uint16_t page = Table.InCell ? Table.Record.LeftMargin : kPageMargin;
  std::vector<Level> levels;
  for (std::size_t i = LevelFloor; i < Levels.size(); ++i) {
    const bool around = listed ? Levels[i].Margin < margin : Levels[i].Margin <= margin && margin > page;
    if (!around) break;
    levels.push_back({Levels[i].Kind, Entry::kInside});
  }
  if (listed) levels.push_back({flags & kBulletStyle ? LevelKind::kBullet : LevelKind::kNumber, Entry::kNext});
  return levels;
}

void Walker::EnterLevels(const std::vector<Level>& levels, std::uint16_t margin) {
  std::size_t same = 0;
  for (; same < levels.size() && LevelFloor + same < Levels.size(); ++same) {
    const Level& level = levels[same];
    const OpenLevel& open = Levels[LevelFloor + same];
    if (level.Kind != open.Kind || level.How == Entry::kBegin) break;
    if (level.How == Entry::kInside) continue;
    CloseLevels(LevelFloor + same + 1);
    Out.Close({.Kind = Block::kItem});
    Out.Open({.Kind = Block::kItem});
    ++same;
    break;
  }
  CloseLevels(LevelFloor + same);
  for (; same < levels.size(); ++same) OpenOne(levels[same], margin);
}

void Walker::OpenOne(const Level& level, std::uint16_t margin) {
  constexpr Block kBlocks[] = {Block::kQuote, Block::kBulletList, Block::kNumberList, Block::kQuote, Block::kQuote};
  BlockInfo info;
  info.Kind = kBlocks[static_cast<std::size_t>(level.Kind)];
  info.Number = level.Start;
  Out.Open(info);
  if (info.Kind != Block::kQuote) Out.Open({.Kind = Block::kItem});
  Levels.push_back({level.Kind, info, margin});
}

void Walker::CloseLevels(std::size_t keep) {
  for (; Levels.size() > keep; Levels.pop_back()) {
    if (Levels.back().Kind != LevelKind::kQuote) Out.Close({.Kind = Block::kItem});
    Out.Close(Levels.back().Info);
  }
}

// Text

// A table holds cells alone.
bool Walker::IsMisplaced() {
  IsDamaged = IsDamaged || (Table.IsOpen && !Table.InCell);
  return IsDamaged;
}

void Walker::HandleText(const Record& record) {
  if (IsMisplaced()) return;
  const std::string_view text = record.Tail(kTextHeader);
  const FontID font = record.Dword(4);
  HasParagraph = true;
  if (!text.empty()) return ShowText(font, text);
  if (IsParagraphOpen) {
    SettleLink();
    MatchFormats(font);
  } else {
    Marks.push_back(font);
  }
}

void Walker::ShowText(FontID font, std::string_view text) {
  SettleLink();
  if (!IsParagraphOpen) BeginParagraph();
  if (InPicture) {
    PictureText.append(text);
    return;
  }
  if (!IsFontKnown || font != LastFont) MatchFormats(font);
  TellFormats();
  EmitText(text);
}

void Walker::EmitText(std::string_view text) {
  std::size_t end = text.find('\0');
  while (end != std::string_view::npos) {
    if (end > 0) Out.Text(text.substr(0, end));
    if (Current.Kind == Block::kCode) {
      Out.Text("\n");
    } else {
      Out.LineBreak();
    }
    text.remove_prefix(end + 1);
    end = text.find('\0');
  }
  if (!text.empty()) Out.Text(text);
}

void Walker::HandleAnchor(const Record& record) {
  if (IsMisplaced()) return;
  std::string_view name = record.Tail(4);
  name = name.substr(0, name.find('\0'));
  if (!IsName(name) || InPicture) return Losses.Add(Loss::kAnchor, 0, name);
  HasParagraph = true;
  SettleLink();
  if (!IsParagraphOpen) BeginParagraph();
  TellFormats();
  Out.Anchor(name);
}

void Walker::FindWanted(FontID font) {
  constexpr std::pair<FontID, FormatKind> kBits[] = {
      {kItalic, FormatKind::kEmphasis},         {kBold, FormatKind::kStrong},
      {kUnderline, FormatKind::kUnderline},     {kStrikeout, FormatKind::kStrikeout},
      {kSuperscript, FormatKind::kSuperscript}, {kSubscript, FormatKind::kSubscript},
  };
  Wanted.clear();
  const FontID effect = font & 0x8000 ? kSuperscript | kSubscript : 0;
  const FontID own = font & ~CurrentBase & ~effect;
  for (const auto& [bit, kind] : kBits) {
    if (own & bit) Wanted.push_back({.Kind = kind});
  }
  const bool code = FaceOf(font) == kMono && FaceOf(CurrentBase) != kMono;
  if (code) Wanted.push_back({.Kind = FormatKind::kCode});
  FontID look = font & ~kAttributes;
  if (code) look = WithFace(look, FaceOf(CurrentBase));
  const FontID around = CurrentBase & ~kAttributes;
  if (look != around) Wanted.push_back({.Kind = FormatKind::kFont, .Font = look, .Around = around});
}

void Walker::MatchFormats(FontID font) {
  FindWanted(font);
  std::size_t keep = LinkPlace;
  while (keep < Formats.size() && std::ranges::find(Wanted, Formats[keep]) != Wanted.end()) ++keep;
  CloseFormats(keep);
  for (const Format& format : Wanted) {
    if (std::ranges::find(Formats, format) != Formats.end()) continue;
    Formats.push_back(format);
  }
  LastFont = font;
  IsFontKnown = true;
}

void Walker::TellFormats() {
  for (; Told < Formats.size(); ++Told) Out.OpenFormat(Formats[Told]);
}

void Walker::CloseFormats(std::size_t keep) {
  for (; Formats.size() > keep; Formats.pop_back()) {
    if (Told < Formats.size()) continue;
    Out.CloseFormat(Formats.back());
    --Told;
  }
  if (LinkPlace > Formats.size()) LinkPlace = 0;
}

// Hotspots

void Walker::BeginHotspot(const Record& record) {
  if (IsMisplaced()) return;
  const auto begin = record.Read<CDHOTSPOTBEGIN>(ODS_CDHOTSPOTBEGIN);
  const std::string_view data = record.Tail(EngOdsLength(ODS_CDHOTSPOTBEGIN));
  HasParagraph = true;
  const bool outermost = Hotspots.empty();
  const bool link = outermost && begin.Type == kHotspotLink && (begin.Flags & kHotspotUrl) != 0;
  const bool file = outermost && begin.Type == kHotspotAttachment;
  if (link) BeginLink(data.substr(0, begin.DataLength), begin.Flags);
  // The data of an attachment's begins with its name.
  if (file) BeginLink(AddressOf(data.substr(0, std::min<std::size_t>(begin.DataLength, data.find('\0')))), 0);
  if (!link && !file) Losses.Add(Loss::kObject, 0, NameOfHotspot(begin.Type));
  Hotspots.push_back(link || file ? kHotspotLink : static_cast<HotspotKind>(0));
}

// In an address some characters of a file's name would mean something else.
std::string_view Walker::AddressOf(std::string_view name) {
  if (name.find_first_of("%?#:\\") == std::string_view::npos) return name;
  std::string& address = Addresses.emplace_back();
  for (char c : name) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    if (std::string_view("%?#:\\").find(c) == std::string_view::npos) {
      address += c;
    } else {
      address.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return address;
}

void Walker::BeginLink(std::string_view data, std::uint32_t flags) {
  std::string_view parts[4];
  for (std::string_view& part : parts) {
    part = data.substr(0, data.find('\0'));
    data.remove_prefix(std::min(data.size(), part.size() + 1));
  }
  const Format link{.Kind = FormatKind::kLink, .Url = parts[0], .Title = parts[1]};
  const bool continued = (flags & kHotspotContinued) != 0 && IsLinkEnding && Formats[LinkPlace - 1] == link;
  if (continued) IsLinkEnding = false;
  SettleLink();
  if (!IsParagraphOpen) BeginParagraph();
  InPicture = (flags & kHotspotPicture) != 0;
  PictureText.clear();
  PictureAddress = parts[2];
  PictureTitle = parts[3];
  IsFontKnown = false;
  MatchHotspot();
  if (continued || (InPicture && link.Url.empty())) return;
  Formats.push_back(link);
  TellFormats();
  LinkPlace = Formats.size();
}

void Walker::MatchHotspot() {
  RecordInput ahead = Records;
  FontID attributes = kAttributes;
  FontID look = 0;
  Record record;
  while (ahead.Next(&record)) {
    const std::uint16_t signature = record.Signature;
    if (signature == kSigHotspotEnd || signature == kSigHotspotEndOld || signature == kSigParagraph) break;
    if (signature != kSigText) continue;
    const FontID font = record.Dword(4);
    attributes &= font;
    const FontID own = font & ~kAttributes;
    look = look == 0 || look == own ? own : CurrentBase & ~kAttributes;
  }
  if (look == 0) return;
  FindWanted(attributes | look);
  std::size_t keep = LinkPlace;
  while (keep < Formats.size() && std::ranges::find(Wanted, Formats[keep]) != Wanted.end()) ++keep;
  CloseFormats(keep);
}

void Walker::EndHotspot() {
  if (Hotspots.empty()) return;
  const HotspotKind kind = Hotspots.back();
  Hotspots.pop_back();
  if (kind != kHotspotLink) return;
  if (InPicture) {
    TellFormats();
    Out.Picture(PictureAddress, PictureTitle, PictureText);
  }
  InPicture = false;
  IsLinkEnding = LinkPlace > 0;
}

void Walker::SettleLink() {
  if (!IsLinkEnding) return;
  IsLinkEnding = false;
  CloseFormats(LinkPlace - 1);
  LinkPlace = 0;
  IsFontKnown = false;
}

}  // namespace conv
