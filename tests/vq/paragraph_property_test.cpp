// Every property of a paragraph style, of its tabs and of a named style, against the bytes that it owns.
#include <functional>

#include "tests/vq/support/property_rows.h"
#include "tests/vq/support/records.h"
#include "vq/automation/vqformula.h"
#include "vq/richtext/vqparstl.h"

namespace {

using namespace vqtest;
using Style = VQParagraphStyle;
using Rows = std::vector<PropertyRow<Style>>;

constexpr VQSTATUS kInvalid = VQERR_INVALID_PARAMETER;
constexpr std::size_t kFlags = 62;

class ParagraphProperty : public EngineFixture {};

std::string BytesOf(const VQRTObjectBody& record) {
  std::string bytes(record.GetRecordSize(), '\0');
  EXPECT_EQ(record.ReadRecord(0, bytes.data(), record.GetRecordSize()), VQ_OK);
  return bytes;
}
std::string BytesOf(const Style& style) { return BytesOf(style.GetParagraphStyleBody()->Definition()); }

Style MakeStyle(unsigned short flags) {
  CDPABDEFINITION record{};
  record.LeftMargin = record.FirstLineMargin = 1440;
  record.Flags = flags;
  record.Flags2 = flags == PABFLAG_HIDE_UNLINK ? 0 : 0xFFFF;
  Style style(record, VQUNITS_TWIPS);
  style.GetParagraphStyleBody()->Definition().SetIndentation(360);
  return style;
}

Rows WordRows() {
  return {
      {"Alignment", Of<&Style::GetAlignment, &Style::SetAlignment>(), 6, 0xFFFF, Each({0, 4, 0xFFFF}), {}},
      {"LineSpacing", Of<&Style::GetLineSpacing, &Style::SetLineSpacing>(), 8, 0xFFFF, Each({0, 2, 0xFFFF}), {}},
      {"SpacingAbove", Of<&Style::GetSpacingAbove, &Style::SetSpacingAbove>(), 10, 0xFFFF, Each({0, 0xFFFF}), {}},
      {"SpacingBelow", Of<&Style::GetSpacingBelow, &Style::SetSpacingBelow>(), 12, 0xFFFF, Each({0, 0xFFFF}), {}},
      {"RightMargin",
       Of<&Style::GetRightMargin, &Style::SetRightMargin>(),
       16,
       0xFFFF,
       Each({0, 64800}),
       {{64801, kInvalid}, {0x10000, kInvalid}}},
      {"FirstLineIndentation",
       Of<&Style::GetFirstLineIndentation, &Style::SetFirstLineIndentation>(),
       18,
       0xFFFF,
       {{0, 1440}, {1, 1800}, {2, 1080}},
       {{3, kInvalid}}},
      {"ListStyle",
       Of<&Style::GetListStyle, &Style::SetListStyle>(),
       kFlags,
       0x1400,
       {{0, 0}, {1, 0x400}, {2, 0x1000}},
       {{3, kInvalid}}},
      {"HideFromBrowsers", Of<&Style::GetHideFromBrowsers, &Style::SetHideFromBrowsers>(), 68, 1, OnOff(1), {}},
  };
}

template <auto Getter, auto Setter>
PropertyRow<Style> Flag(const char* name, std::uint32_t bit) {
  return {name, Of<Getter, Setter>(), kFlags, bit, OnOff(bit), {}};
}

Rows FlagRows() {
  return {
      Flag<&Style::GetPageBreakBefore, &Style::SetPageBreakBefore>("PageBreakBefore", 0x0001),
      Flag<&Style::GetKeepParagraphsTogether, &Style::SetKeepParagraphsTogether>("KeepParagraphsTogether", 0x0002),
      Flag<&Style::GetKeepLinesTogether, &Style::SetKeepLinesTogether>("KeepLinesTogether", 0x0004),
      Flag<&Style::GetHideWhenReading, &Style::SetHideWhenReading>("HideWhenReading", 0x0010),
      Flag<&Style::GetHideWhenEditing, &Style::SetHideWhenEditing>("HideWhenEditing", 0x0020),
      Flag<&Style::GetHideWhenPrinting, &Style::SetHideWhenPrinting>("HideWhenPrinting", 0x0040),
      Flag<&Style::GetHideWhenCopying, &Style::SetHideWhenCopying>("HideWhenCopying", 0x0200),
      Flag<&Style::GetHideWhenReadingPreview, &Style::SetHideWhenReadingPreview>("ReadingPreview", 0x2000),
      Flag<&Style::GetHideWhenEditingPreview, &Style::SetHideWhenEditingPreview>("EditingPreview", 0x4000),
      Flag<&Style::GetHideFromClients, &Style::SetHideFromClients>("HideFromClients", 0x8000),
  };
}

TEST_F(ParagraphProperty, OwnsItsBits) {
  for (const Rows& rows : {WordRows(), FlagRows()}) {
    for (const PropertyRow<Style>& row : rows) {
      SCOPED_TRACE(row.Name);
      // All flags but that of reading, which hides when printing too.
      for (const unsigned short flags : {0x0100, 0xFFEF}) {
        for (const auto& [value, bits] : row.Values) {
          Style style = MakeStyle(flags);
          ASSERT_EQ(row.Access.Set(style, value), VQ_OK) << value;
          EXPECT_EQ(row.Access.Get(style), value);
          EXPECT_EQ(BytesOf(style), With(BytesOf(MakeStyle(flags)), {row.At, row.Mask, bits})) << value;
        }
      }
      for (const int throws : {0, 1}) {
        VQSetThrowAllErrors(throws);
        Style style = MakeStyle(0x0100), none;
        for (const auto& [value, status] : row.Refused) {
          EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(style, value); }), status) << value;
        }
        EXPECT_EQ(BytesOf(style), BytesOf(MakeStyle(0x0100)));
        EXPECT_EQ(StatusOf([&] { return row.Access.Get(none) > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
        ASSERT_EQ(row.Access.Set(none, row.Values[0].first), VQ_OK) << "a style is made";
        EXPECT_EQ(row.Access.Get(none), row.Values[0].first);
        VQSetThrowAllErrors(0);
      }
    }
  }
}

// Whatever is set, the hide flags of an older writer come into the arrangement with previews of their own.
TEST_F(ParagraphProperty, BringsOldFlagsIntoTheNewArrangement) {
  const struct {
    unsigned short Before, After;  // with a page break set
  } rows[] = {{0x0000, 0x0101}, {0x0010, 0x2111}, {0x0020, 0x4121}, {0x0230, 0x6331}, {0x0130, 0x0131}};
  for (const auto& row : rows) {
    Style style = MakeStyle(0);
    CDPABDEFINITION record = style.GetCDPABDefinition();
    record.Flags = row.Before;
    ASSERT_EQ(style.GetParagraphStyleBody()->Definition().SetRecord(record), VQ_OK);
    const bool old = (row.Before & PABFLAG_HIDE_UNLINK) == 0;
    EXPECT_EQ(style.GetHideWhenReadingPreview() != 0, old && (row.Before & 0x10) != 0);
    EXPECT_EQ(style.GetHideWhenEditingPreview() != 0, old && (row.Before & 0x20) != 0);
    ASSERT_EQ(style.SetPageBreakBefore(1), VQ_OK);
    EXPECT_EQ(style.GetCDPABDefinition().Flags, row.After);
  }
  Style style = MakeStyle(0x0110);
  EXPECT_TRUE(style.GetHideWhenPrinting());
  ASSERT_EQ(style.SetHideWhenPrinting(0), VQ_OK);
  EXPECT_TRUE(style.GetHideWhenPrinting()) << "hidden when reading";
}

TEST_F(ParagraphProperty, DefaultsAreThoseOfANewStyle) {
  Style style = MakeStyle(0xFFEF), fresh;
  ASSERT_EQ(fresh.SetUnits(VQUNITS_TWIPS), VQ_OK);
  ASSERT_EQ(style.GetParagraphStyleBody()->SetPABID(7), VQ_OK);
  const std::string code("\x01\x00\x7F", 3);
  ASSERT_EQ(style.SetHideIfFormula(VQFormula(code.data(), code.size())), VQ_OK);
  ASSERT_EQ(style.SetHideIfFormula(VQFormula()), VQ_OK);
  EXPECT_EQ(style.GetPABID(), 7) << "the hide formula takes no identifier with it";
  EXPECT_EQ(style.GetHideIfFormula(), 0);
  ASSERT_EQ(style.SetFirstLineIndentationValue(720), VQ_OK);
  EXPECT_EQ(style.GetFirstLineIndentationValue(), 0) << "there is none";
  ASSERT_EQ(style.SetFirstLineIndentation(VQINDENTATION_OUTDENT), VQ_OK);
  EXPECT_EQ(style.GetFirstLineIndentationValue(), 720);
  ASSERT_EQ(style.SetDefaults(), VQ_OK);
  EXPECT_EQ(style.GetPABID(), 7);
  EXPECT_EQ(style.GetUnits(), VQUNITS_TWIPS);
  EXPECT_TRUE(style == fresh);
  EXPECT_EQ(fresh.GetLeftMargin(), 1440);
  EXPECT_EQ(BytesOf(fresh).substr(kFlags, 2), Bytes({0, 1}));
  EXPECT_EQ(BytesOf(fresh).substr(20, 4), Bytes({0, 0, 0xD0, 2})) << "no tab, and what the first would be";
  ASSERT_EQ(style.SetCDPABDefinitionFlags2(0x8001), VQ_OK);
  EXPECT_TRUE(style.GetHideFromBrowsers());
  EXPECT_FALSE(style == fresh);
}

// Positions are in the list's own units, the edits are edits of the style.
TEST_F(ParagraphProperty, TabsAreTheStyles) {
  const struct {
    VQUNITS Units;
    double Position;
  } rows[] = {{VQUNITS_INCHES, 1.5}, {VQUNITS_CENTIMETERS, 3.81}, {VQUNITS_TWIPS, 2160}};
  for (const auto& row : rows) {
    VQTabs tabs(row.Units);
    EXPECT_EQ(tabs.GetUnits(), row.Units);
    ASSERT_EQ(tabs.Add(row.Position, VQTABALIGNMENT_DECIMAL), VQ_OK);
    EXPECT_DOUBLE_EQ(tabs[0], row.Position);
    Style style;
    ASSERT_EQ(style.SetTabs(tabs), VQ_OK);
    EXPECT_EQ(style.GetCDPABDefinition().Tabs[0], 2160);
    VQTabs own;
    ASSERT_EQ(style.GetTabs(&own), VQ_OK);
    VQTABALIGNMENT alignment = VQTABALIGNMENT_LEFT;
    EXPECT_EQ(own.GetAlignment(row.Position, &alignment), VQ_OK);
    EXPECT_EQ(alignment, VQTABALIGNMENT_DECIMAL);
    EXPECT_EQ(own.SetAlignment(row.Position, VQTABALIGNMENT_CENTER), VQ_OK);
    EXPECT_EQ(style.GetCDPABDefinition().TabTypes, 3u);
    EXPECT_EQ(own.SetInterval(row.Position * 5, VQTABALIGNMENT_RIGHT), VQ_OK);
    EXPECT_EQ(own.GetCount(), 3u);
    EXPECT_EQ(style.GetCDPABDefinition().Tabs[2], 32400);
    EXPECT_EQ(own.RemoveAll(), VQ_OK);
    EXPECT_EQ(BytesOf(style).substr(20, 42), std::string(42, '\0'));
    EXPECT_EQ(tabs.GetCount(), 1u) << "of another list";
  }
}

// A list stays that of its style whatever becomes of the style's settings.
TEST_F(ParagraphProperty, TabsStayTheStyles) {
  const struct {
    const char* What;
    std::function<VQSTATUS(VQNamedStyle&)> Edit;
  } rows[] = {
      {"defaults", [](VQNamedStyle& style) { return style.SetDefaults(); }},
      {"plain defaults", [](VQNamedStyle& style) { return style.VQParagraphStyle::SetDefaults(); }},
      {"another's settings", [](VQNamedStyle& style) { return style.Redefine(MakeStyle(PABFLAG_HIDE_UNLINK)); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQNamedStyle style(VQString("Quote"));
    VQTabs tabs;
    ASSERT_EQ(style.GetTabs(&tabs), VQ_OK);
    ASSERT_EQ(tabs.SetUnits(VQUNITS_TWIPS), VQ_OK);
    ASSERT_EQ(tabs.Add(500), VQ_OK);
    ASSERT_EQ(row.Edit(style), VQ_OK);
    EXPECT_EQ(tabs.GetCount(), 0u);
    ASSERT_EQ(tabs.SetUnits(VQUNITS_TWIPS), VQ_OK);
    ASSERT_EQ(tabs.Add(700), VQ_OK);
    EXPECT_EQ(style.GetCDPABDefinition().Tabs[0], 700);
  }
}

TEST_F(ParagraphProperty, TabsRefuse) {
  for (const int throws : {0, 1}) {
    VQTabs tabs(VQUNITS_TWIPS), none;
    for (int i = 1; i <= 20; ++i) ASSERT_EQ(tabs.Add(100.0 * i), VQ_OK);
    VQTABALIGNMENT alignment = VQTABALIGNMENT_LEFT;
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.Add(5000.0); }), VQERR_TABS_FULL);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.Add(32768.0); }), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.Add(0.0 / 0.0); }), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.GetAlignment(5, &alignment); }), VQWARN_NOT_FOUND);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.GetAlignment(100, nullptr); }), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.SetUnits(static_cast<VQUNITS>(4)); }), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(StatusOf([&] { return tabs[20] > 0; }), VQERR_BAD_SUBSCRIPT);
    EXPECT_EQ(tabs[19], 2000);
    EXPECT_EQ(tabs.Remove(100), VQ_OK);
    EXPECT_EQ(ReturnedStatusOf([&] { return tabs.Add(201.0); }), VQWARN_TAB_EXISTS);
    EXPECT_EQ(tabs.GetCount(), 19u);
    EXPECT_EQ(StatusOf([&] { return none.GetCount(); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(StatusOf([&] { return none.GetUnits() > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(ReturnedStatusOf([&] { return none.GetAlignment(1, &alignment); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(ReturnedStatusOf([&] { return none.SetInterval(1e-4); }), VQERR_INVALID_PARAMETER) << "under two twips";
    EXPECT_EQ(ReturnedStatusOf([&] { return Style().SetTabs(VQTabs()); }), VQERR_UNINITIALIZED_ARGUMENT);
    EXPECT_EQ(ReturnedStatusOf([&] { return Style().GetTabs(&tabs); }), VQERR_OBJECT_NOT_INITIALIZED);
    VQSetThrowAllErrors(0);
  }
}

// Without a unit a list is in what the settings say.
TEST_F(ParagraphProperty, UnitsFollowTheSettings) {
  INTLFORMAT settings{};
  ASSERT_EQ(EngIntlGet(&settings), ENG_OK);
  const VQUNITS usual = settings.Flags & ENG_INTL_METRIC ? VQUNITS_CENTIMETERS : VQUNITS_INCHES;
  Style style;
  ASSERT_EQ(style.SetUnits(VQUNITS_DEFAULT), VQ_OK);
  EXPECT_EQ(style.GetUnits(), usual);
  EXPECT_EQ(VQTabs(VQUNITS_DEFAULT).GetUnits(), usual);
}

std::string NameBytes(const VQNamedStyle& style) { return BytesOf(style.GetNamedStyleBody()->StyleName()); }

TEST_F(ParagraphProperty, ANameOwnsItsFlagsAndItsOwner) {
  VQNamedStyle style(VQString("Quote"));
  const std::string plain = NameBytes(style);
  ASSERT_EQ(plain.size(), 44u);
  ASSERT_EQ(style.AssignToCycleList(), VQ_OK);
  EXPECT_EQ(NameBytes(style), With(plain, {2, 2, 2}));
  EXPECT_TRUE(style.IsOnCycleList());
  ENGCHAR user[256] = {};
  ASSERT_EQ(EngUserNameGet(user), ENG_OK);
  const std::string owner = std::string(reinterpret_cast<const char*>(user)) + '\0';
  for (int again = 0; again < 2; ++again) {
    ASSERT_EQ(style.SetIsAvailableToAllDocuments(5), VQ_OK);
    EXPECT_EQ(style.GetIsAvailableToAllDocuments(), 1);
    EXPECT_EQ(TextOf(style.GetUserName()) + '\0', owner);
  }
  std::string expected = With(With(plain, {2, 6, 6}), {1, 0xFF, static_cast<std::uint32_t>(46 + owner.size())});
  expected += Bytes({static_cast<int>(owner.size()), 0}) + owner;
  if (expected.size() % 2 != 0) expected += '\0';
  EXPECT_EQ(NameBytes(style), expected);
  ASSERT_EQ(style.SetFontStyle(VQFontStyle(0x20, 2, "Quadrata", 0, 0)), VQ_OK);
  EXPECT_EQ(TextOf(style.GetUserName()) + '\0', owner) << "behind the font";
  ASSERT_EQ(style.SetDefaults(), VQ_OK);
  EXPECT_FALSE(style.HasFontStyle());
  EXPECT_EQ(NameBytes(style), expected) << "name, owner and list stay";
  ASSERT_EQ(style.SetIsAvailableToAllDocuments(0), VQ_OK);
  EXPECT_TRUE(style.GetUserName().IsNull());
  ASSERT_EQ(style.RemoveFromCycleList(), VQ_OK);
  EXPECT_EQ(NameBytes(style), plain);
}

TEST_F(ParagraphProperty, NamedStylesCompareNameAndSettings) {
  VQNamedStyle style(VQString("Quote")), same(VQString("Quote")), other(VQString("Other"));
  const auto equal = [&](const VQNamedStyle& with) {
    VQNamedStyleBody& body = *with.GetNamedStyleBody();
    return style.IsEqual(VQPABDefinition(&body.Definition()), VQPABStyleName(&body.StyleName()));
  };
  ASSERT_EQ(same.GetNamedStyleBody()->SetPABID(9), VQ_OK);
  EXPECT_TRUE(equal(same)) << "whatever the identifiers";
  EXPECT_FALSE(equal(other));
  ASSERT_EQ(same.SetSpacingBelow(1), VQ_OK);
  EXPECT_FALSE(equal(same));
  EXPECT_EQ(StatusOf([&] { return style.IsEqual(VQPABDefinition(), VQPABStyleName()); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([] { return VQNamedStyle().GetName().IsNull(); }), VQERR_OBJECT_NOT_INITIALIZED);
  const std::string code("\x01\x00\x7F", 3);
  const VQParagraphStyle hidden(CDPABDEFINITION{}, VQFormula(code.data(), code.size()), VQUNITS_TWIPS);
  EXPECT_EQ(hidden.GetHideIfFormula(), 1);
  EXPECT_EQ(style.Redefine(hidden), VQERR_INAPPROPRIATE);
}

}  // namespace
