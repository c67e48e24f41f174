// Paragraph styles, tabs and named styles as values.
#include "tests/vq/support/engine_fixture.h"
#include "vq/automation/vqformula.h"
#include "vq/richtext/tabstops.h"
#include "vq/richtext/vqparstl.h"

namespace {

using namespace vqtest;

class ParagraphStyle : public EngineFixture {};

std::string Tabs(const CDPABDEFINITION& record) {
  std::string text;
  for (unsigned i = 0; i < record.TabCount; ++i) {
    text += std::to_string(record.Tabs[i]) + "LRDC"[vq::tabs::Alignment(record, i)] + " ";
  }
  return text;
}

CDPABDEFINITION WithTabs(unsigned count, unsigned alignment = 0) {
  CDPABDEFINITION record{};
  for (unsigned i = 1; i <= count; ++i) EXPECT_EQ(vq::tabs::Add(&record, 100L * i, alignment), VQ_OK);
  return record;
}

TEST(TabStops, KeepOrderAlignmentAndLimits) {
  using namespace vq::tabs;
  const struct {
    const char* What;
    unsigned Present, PresentAlignment;
    VQSTATUS (*Edit)(CDPABDEFINITION*);
    VQSTATUS Status;
    const char* After;
  } rows[] = {
      {"between others", 2, 1, [](CDPABDEFINITION* r) { return Add(r, 150, 2); }, VQ_OK, "100R 150D 200R "},
      {"one twip away", 2, 0, [](CDPABDEFINITION* r) { return Add(r, 101, 1); }, VQWARN_TAB_EXISTS, "100L 200L "},
      {"two twips away", 2, 0, [](CDPABDEFINITION* r) { return Add(r, 102, 1); }, VQ_OK, "100L 102R 200L "},
      {"negative, same place", 1, 0, [](CDPABDEFINITION* r) { return Add(r, -100, 1); }, VQWARN_TAB_EXISTS, "100L "},
      {"negative, in order", 2, 0, [](CDPABDEFINITION* r) { return Add(r, -150, 3); }, VQ_OK, "100L -150C 200L "},
      {"too far", 0, 0, [](CDPABDEFINITION* r) { return Add(r, 32768, 0); }, VQERR_INVALID_PARAMETER, ""},
      {"alignment unknown", 0, 0, [](CDPABDEFINITION* r) { return Add(r, 5, 4); }, VQERR_INVALID_PARAMETER, ""},
      {"remove", 3, 3, [](CDPABDEFINITION* r) { return Remove(r, 200); }, VQ_OK, "100C 300C "},
      {"remove absent", 1, 0, [](CDPABDEFINITION* r) { return Remove(r, 7); }, VQWARN_NOT_FOUND, "100L "},
      {"realign", 2, 0, [](CDPABDEFINITION* r) { return SetAlignment(r, 200, 2); }, VQ_OK, "100L 200D "},
      {"realign absent", 1, 0, [](CDPABDEFINITION* r) { return SetAlignment(r, 7, 2); }, VQWARN_NOT_FOUND, "100L "},
      {"every 15000", 9, 1, [](CDPABDEFINITION* r) { return SetInterval(r, 15000, 1); }, VQ_OK, "15000R 30000R "},
      {"no distance", 1, 0, [](CDPABDEFINITION* r) { return SetInterval(r, 0, 0); }, VQERR_INVALID_PARAMETER, "100L "},
  };
  for (const auto& row : rows) {
    CDPABDEFINITION record = WithTabs(row.Present, row.PresentAlignment);
    EXPECT_EQ(row.Edit(&record), row.Status) << row.What;
    EXPECT_EQ(Tabs(record), row.After) << row.What;
  }
}

TEST(TabStops, NeverLoseAnAlignmentBeyondTheSixteenth) {
  CDPABDEFINITION full = WithTabs(20);
  EXPECT_EQ(vq::tabs::Add(&full, 5000, 0), VQERR_TABS_FULL);
  EXPECT_EQ(vq::tabs::SetAlignment(&full, 1700, 1), VQERR_OUT_OF_RANGE);
  CDPABDEFINITION aligned = WithTabs(16, 1);
  EXPECT_EQ(vq::tabs::Add(&aligned, 50, 0), VQERR_TABS_FULL);
  EXPECT_EQ(vq::tabs::Add(&aligned, 5000, 0), VQ_OK);
  full.TabCount = 60000;
  EXPECT_EQ(vq::tabs::Count(full), 20U);
}

struct MarginRow {
  const char* What;
  VQSTATUS (*Edit)(VQParagraphStyle&);
  VQSTATUS Status;
  double Left, First;
};

TEST_F(ParagraphStyle, FirstLineFollowsTheMargin) {
  const MarginRow rows[] = {
      {"indent", [](VQParagraphStyle& s) { return s.SetFirstLineIndentation(VQINDENTATION_INDENT); }, VQ_OK, 1440,
       1800},
      {"outdent", [](VQParagraphStyle& s) { return s.SetFirstLineIndentation(VQINDENTATION_OUTDENT); }, VQ_OK, 1440,
       1080},
      {"outdent, then to the edge",
       [](VQParagraphStyle& s) {
         s.SetFirstLineIndentation(VQINDENTATION_OUTDENT);
         return s.SetLeftMargin(0);
       },
       VQERR_PARAGRAPH_MARGIN, 1440, 1080},
      {"outdent, then just far enough",
       [](VQParagraphStyle& s) {
         s.SetFirstLineIndentation(VQINDENTATION_OUTDENT);
         return s.SetLeftMargin(360);
       },
       VQ_OK, 360, 0},
      {"indent past the end",
       [](VQParagraphStyle& s) {
         s.SetLeftMargin(64800);
         return s.SetFirstLineIndentation(VQINDENTATION_INDENT);
       },
       VQERR_PARAGRAPH_MARGIN, 64800, 64800},
      {"wider indent",
       [](VQParagraphStyle& s) {
         s.SetFirstLineIndentation(VQINDENTATION_INDENT);
         return s.SetFirstLineIndentationValue(720);
       },
       VQ_OK, 1440, 2160},
      {"indent too wide", [](VQParagraphStyle& s) { return s.SetFirstLineIndentationValue(64801); },
       VQERR_INVALID_PARAMETER, 1440, 1440},
      {"negative", [](VQParagraphStyle& s) { return s.SetLeftMargin(-1); }, VQERR_INVALID_PARAMETER, 1440, 1440},
      {"too far", [](VQParagraphStyle& s) { return s.SetLeftMargin(64801); }, VQERR_INVALID_PARAMETER, 1440, 1440},
      {"not a number", [](VQParagraphStyle& s) { return s.SetLeftMargin(0.0 / 0.0); }, VQERR_INVALID_PARAMETER, 1440,
       1440},
      {"a first line of its own, then the margin",
       [](VQParagraphStyle& s) {
         s.SetFirstLineMargin(1000);
         return s.SetLeftMargin(2000);
       },
       VQ_OK, 2000, 1560},
      {"first line too far", [](VQParagraphStyle& s) { return s.SetFirstLineMargin(64801); }, VQERR_INVALID_PARAMETER,
       1440, 1440},
      {"right too far", [](VQParagraphStyle& s) { return s.SetRightMargin(1e9); }, VQERR_INVALID_PARAMETER, 1440, 1440},
  };
  for (const MarginRow& row : rows) {
    VQParagraphStyle style;
    ASSERT_EQ(style.SetUnits(VQUNITS_TWIPS), VQ_OK);
    EXPECT_EQ(row.Edit(style), row.Status) << row.What;
    EXPECT_EQ(style.GetLeftMargin(), row.Left) << row.What;
    EXPECT_EQ(style.GetFirstLineMargin(), row.First) << row.What;
  }
}

TEST_F(ParagraphStyle, ReadsHideFlagsInBothArrangements) {
  CDPABDEFINITION old{};
  VQParagraphStyle style(old);
  VQPABDefinitionBody& body = style.GetParagraphStyleBody()->Definition();
  old.Flags = PABFLAG_HIDE_READING;
  ASSERT_EQ(body.SetRecord(old), VQ_OK);
  EXPECT_TRUE(style.GetHideWhenPrinting());
  EXPECT_TRUE(style.GetHideWhenReadingPreview());
  EXPECT_FALSE(style.GetHideWhenEditingPreview());
  ASSERT_EQ(style.SetHideWhenReading(0), VQ_OK);
  EXPECT_EQ(style.GetCDPABDefinition().Flags, PABFLAG_HIDE_UNLINK | PABFLAG_HIDE_READING_PREVIEW);
  EXPECT_EQ(StatusOf([&] { return style.SetCDPABDefinitionFlags(PABFLAG_HIDE_READING); }), VQERR_ASSERTION_FAILED);
  EXPECT_EQ(style.SetListStyle(VQLISTSTYLE_2), VQ_OK);
  EXPECT_EQ(style.SetListStyle(VQLISTSTYLE_1), VQ_OK);
  EXPECT_EQ(style.GetListStyle(), VQLISTSTYLE_1);
}

TEST_F(ParagraphStyle, CopiesPartAndCompareBySettings) {
  VQParagraphStyle style, same, copy;
  ASSERT_EQ(style.SetUnits(VQUNITS_CENTIMETERS), VQ_OK);
  ASSERT_EQ(style.SetLeftMargin(2.54), VQ_OK);
  EXPECT_DOUBLE_EQ(style.GetLeftMargin(), 2.54);
  VQTabs tabs;
  ASSERT_EQ(style.GetTabs(&tabs), VQ_OK);
  ASSERT_EQ(tabs.SetUnits(VQUNITS_INCHES), VQ_OK);
  ASSERT_EQ(tabs.Add(1.5), VQ_OK);
  EXPECT_EQ(style.GetCDPABDefinition().Tabs[0], 2160);
  EXPECT_EQ(StatusOf([&] { return tabs[1] > 0; }), VQERR_BAD_SUBSCRIPT);
  ASSERT_EQ(copy.Copy(style), VQ_OK);
  EXPECT_TRUE(copy == style);
  ASSERT_EQ(tabs.Remove(1.5), VQ_OK);
  EXPECT_FALSE(copy == style);
  ASSERT_EQ(same.SetSpacingAbove(0), VQ_OK);
  EXPECT_TRUE(same == style) << "a tab that came and went leaves no trace";
  EXPECT_EQ(StatusOf([] { return VQParagraphStyle().GetAlignment() > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_F(ParagraphStyle, HideFormulaComesAndGoes) {
  VQParagraphStyle style;
  const std::string code("\x01\x00\x7F", 3);
  ASSERT_EQ(style.SetHideIfFormula(VQFormula(code.data(), code.size())), VQ_OK);
  VQFormula found;
  ASSERT_EQ(style.GetHideIfFormula(&found), 1);
  EXPECT_EQ(std::string(found.GetCode(), found.GetCodeLength()), code);
  EXPECT_EQ(style.SetHideIfFormula(VQFormula()), VQ_OK);
  EXPECT_EQ(style.GetHideIfFormula(), 0);
  EXPECT_EQ(style.GetCDPABDefinition().Flags, PABFLAG_HIDE_UNLINK);
  VQFormula fresh;
  EXPECT_NE(fresh.SetText("1+"), VQ_OK);
  EXPECT_EQ(fresh.SetText(""), VQERR_NULL_STRING);
  EXPECT_TRUE(fresh.IsNull());
}

TEST_F(ParagraphStyle, NamedStylesKeepNameAndFont) {
  VQNamedStyle style(VQString("Z\xC3\xA4hlung mit einem sehr langen Nam\xC3\xA4n"));
  EXPECT_EQ(TextOf(style.GetName()), "Z\xC3\xA4hlung mit einem sehr langen Nam");
  EXPECT_FALSE(style.HasFontStyle());
  VQFontStyle font(0x20, 2, "Quadrata", 1, 0);
  ASSERT_EQ(font.SetPointSize(14), VQ_OK);
  ASSERT_EQ(style.SetFontStyle(font), VQ_OK);
  ASSERT_EQ(style.AssignToCycleList(), VQ_OK);
  VQParagraphStyle plain;
  ASSERT_EQ(plain.SetAlignment(3), VQ_OK);
  ASSERT_EQ(style.Redefine(plain), VQ_OK);
  VQNamedStyle copy;
  ASSERT_EQ(copy.Copy(style), VQ_OK);
  EXPECT_EQ(copy.GetAlignment(), 3);
  EXPECT_TRUE(copy.IsOnCycleList());
  VQFontStyle found;
  ASSERT_EQ(copy.GetFontStyle(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetFaceName()), "Quadrata");
  EXPECT_EQ(found.GetPointSize(), 14U);
  ASSERT_EQ(found.SetPointSize(9), VQ_OK);
  ASSERT_EQ(style.GetFontStyle(&found), VQ_OK);
  EXPECT_EQ(found.GetPointSize(), 14U) << "a copy's font is its own";
  EXPECT_EQ(style.SetHideIfFormula(VQFormula("x", 1)), VQERR_INAPPROPRIATE);
}

}  // namespace
