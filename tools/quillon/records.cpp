#include "tools/quillon/records.h"

#include <algorithm>
#include <iterator>

namespace tool {

namespace {

constexpr std::uint32_t kLongestRecord = 0x10400;

using enum FieldKind;

constexpr Field kDefinition[] = {
    {"PABID", 4, 2, kUnsigned},
    {"JustifyMode", 6, 2, kUnsigned},
    {"LineSpacing", 8, 2, kUnsigned},
    {"SpacingAbove", 10, 2, kUnsigned},
    {"SpacingBelow", 12, 2, kUnsigned},
    {"LeftMargin", 14, 2, kUnsigned},
    {"RightMargin", 16, 2, kUnsigned},
    {"FirstLineMargin", 18, 2, kUnsigned},
    {"TabCount", 20, 2, kUnsigned},
    {"Tabs", 22, 2, kSigned, 20},
    {"Flags", 62, 2, kHex},
    {"TabTypes", 64, 4, kHex},
    {"Flags2", 68, 2, kHex},
};
constexpr Field kReference[] = {{"PABID", 2, 2, kUnsigned}};
constexpr Field kText[] = {{"FontID", 4, 4, kHex}};
constexpr Field kFontTable[] = {{"Fonts", 4, 2, kUnsigned}};
constexpr Field kTableBegin[] = {
    {"LeftMargin", 2, 2, kUnsigned},       {"HorizCellSpace", 4, 2, kUnsigned},   {"VertCellSpace", 6, 2, kUnsigned},
    {"V4HorizCellSpace", 8, 2, kUnsigned}, {"V4VertCellSpace", 10, 2, kUnsigned}, {"Flags", 12, 2, kHex},
};
constexpr Field kTableCell[] = {
    {"Row", 2, 1, kUnsigned},         {"Column", 3, 1, kUnsigned},           {"LeftMargin", 4, 2, kUnsigned},
    {"RightMargin", 6, 2, kUnsigned}, {"FractionalWidth", 8, 2, kUnsigned},  {"Border", 10, 1, kHex},
    {"Flags", 11, 1, kHex},           {"BorderWidth", 12, 2, kHex},          {"RowSpan", 14, 1, kUnsigned},
    {"ColumnSpan", 15, 1, kUnsigned}, {"BackgroundColor", 16, 2, kUnsigned},
};
constexpr Field kStyleName[] = {{"Flags", 2, 4, kHex}, {"PABID", 6, 2, kUnsigned}, {"StyleName", 8, 36, kName}};
constexpr Field kHide[] = {{"PABID", 4, 2, kUnsigned}};
constexpr Field kFormulaReference[] = {{"SourcePABID", 2, 2, kUnsigned}, {"DestPABID", 4, 2, kUnsigned}};

// Sorted by signature.
constexpr RecordKind kKinds[] = {
    {0x81, "SIG_CD_PARAGRAPH", 2, {}},
    {0x83, "SIG_CD_PABREFERENCE", 4, kReference},
    {0x95, "SIG_CD_BITMAPHEADER", 6, {}},
    {0x96, "SIG_CD_BITMAPSEGMENT", 6, {}},
    {0x97, "SIG_CD_COLORTABLE", 6, {}},
    {0x98, "SIG_CD_PATTERNTABLE", 6, {}},
    {0x99, "SIG_CD_GRAPHIC", 6, {}},
    {0x9A, "SIG_CD_PMMETASEG", 6, {}},
    {0x9B, "SIG_CD_WINMETASEG", 6, {}},
    {0x9C, "SIG_CD_MACMETASEG", 6, {}},
    {0x9D, "SIG_CD_CGMMETA", 6, {}},
    {0x9E, "SIG_CD_PMMETAHEADER", 6, {}},
    {0x9F, "SIG_CD_WINMETAHEADER", 6, {}},
    {0xA0, "SIG_CD_MACMETAHEADER", 6, {}},
    {0xA3, "SIG_CD_TABLEBEGIN", 14, kTableBegin},
    {0xA4, "SIG_CD_TABLECELL", 18, kTableCell},
    {0xA5, "SIG_CD_TABLEEND", 6, {}},
    {0xA6, "SIG_CD_STYLENAME", 44, kStyleName},
    {0xAA, "SIG_CD_HOTSPOTEND_OLD", 2, {}},
    {0xAE, "SIG_CD_HOTSPOTEND", 2, {}},
    {0xBC, "SIG_CD_PABFORMULAREF", 6, kFormulaReference},
    {0xC5, "SIG_CD_TRANSPARENCYTABLE", 6, {}},
    {0xFF82, "SIG_CD_PABDEFINITION", 70, kDefinition},
    {0xFF84, "SIG_CD_FIELD_OLD", 4, {}},
    {0xFF85, "SIG_CD_TEXT", 8, kText, true},
    {0xFF88, "SIG_CD_BITMAPCOPY", 4, {}},
    {0xFF8A, "SIG_CD_FIELD", 4, {}},
    {0xFF8B, "SIG_CD_FONTTABLE", 6, kFontTable},
    {0xFF91, "SIG_CD_LINK_A", 4, {}},
    {0xFF92, "SIG_CD_LINK_B", 4, {}},
    {0xFF93, "SIG_CD_AGENT_JAVA", 4, {}},
    {0xFFA7, "SIG_CD_OLEBEGIN", 4, {}},
    {0xFFA8, "SIG_CD_OLEEND", 4, {}},
    {0xFFA9, "SIG_CD_HOTSPOTBEGIN", 4, {}},
    {0xFFAB, "SIG_CD_BUTTON", 4, {}},
    {0xFFAC, "SIG_CD_SECTIONBAR", 4, {}},
    {0xFFAD, "SIG_CD_V4HOTSPOTBEGIN", 4, {}},
    {0xFFB0, "SIG_CD_FIELD_EXTENSION", 4, {}},
    {0xFFB1, "SIG_CD_ACTION_PART", 4, {}},
    {0xFFBB, "SIG_CD_PABHIDE", 6, kHide},
    {0xFFBE, "SIG_CD_ACTIONBAR", 4, {}},
    {0xFFBF, "SIG_CD_FORMPART", 4, {}},
    {0xFFC3, "SIG_CD_TEXT_STYLE_EXT", 8, kText},
    {0xFFCA, "SIG_CD_ACTIVEOBJECT_PART", 4, {}},
    {0xFFCB, "SIG_CD_ANCHOR", 4, {}},
};
static_assert(std::ranges::is_sorted(kKinds, {}, &RecordKind::signature));

}  // namespace

const RecordKind* FindRecordKind(std::uint16_t signature) {
  const auto found = std::ranges::lower_bound(kKinds, signature, {}, &RecordKind::signature);
  return found != std::end(kKinds) && found->signature == signature ? &*found : nullptr;
}

std::uint32_t ReadNumber(Bytes bytes, std::size_t offset, std::size_t width) {
  if (offset + width > bytes.size()) return 0;
  std::uint32_t value = 0;
  for (std::size_t i = width; i-- > 0;) value = value << 8 | bytes[offset + i];
  return value;
}

bool RecordWalk::Refuse(const char* what) {
  damage_ = what;
  return false;
}

bool RecordWalk::Next(Record* record) {
  if (damage_ || offset_ >= value_.size()) return false;
  const Bytes rest = value_.subspan(offset_);
  if (rest.size() < 2) return Refuse("a single byte where a record should start");
  const std::uint32_t word = ReadNumber(rest, 0, 2);
  const std::uint32_t form = word >> 8;
  const std::size_t header = form == 0 ? 6 : form == 0xFF ? 4 : 2;
  if (rest.size() < header) return Refuse("the value ends within a record's header");
  std::uint32_t length = form == 0 ? ReadNumber(rest, 2, 4) : form == 0xFF ? ReadNumber(rest, 2, 2) : form;
  if (length == 0) length = static_cast<std::uint32_t>(header);
  if (length < header) return Refuse("a record is shorter than its header");
  if (length > kLongestRecord) return Refuse("a record is longer than any can be");
  if (length > rest.size()) return Refuse("the value ends within a record");
  record->offset = static_cast<std::uint32_t>(offset_);
  record->signature = static_cast<std::uint16_t>(form == 0xFF ? word : word & 0xFF);
  record->bytes = rest.first(length);
  offset_ += length + (length & 1);
  return true;
}

}  // namespace tool
