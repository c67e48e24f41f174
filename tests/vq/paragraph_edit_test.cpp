// Paragraph records under edits: identifiers, references, and the rhythm of paragraph, reference, text.
#include <functional>

#include "tests/vq/support/records.h"
#include "vq/automation/vqformula.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqstyltx.h"

namespace {

using namespace vqtest;

class Paragraphs : public EngineFixture {};

std::string Definition(int pabid, int alignment = 0) {
  std::string data(66, '\0');
  data[0] = static_cast<char>(pabid);
  data[2] = static_cast<char>(alignment);
  data[59] = 1;
  return Record(SIG_CD_PABDEFINITION, data);
}
std::string FormulaReference(int source, int destination) {
  return Record(SIG_CD_PABFORMULAREF, Bytes({source, 0, destination, 0}));
}
std::string Hide(int pabid) { return Record(SIG_CD_PABHIDE, Bytes({pabid, 0}) + std::string(8, '\0') + "code"); }

// The tree in short: D definition, H hide, N name, R reference, F formula reference, P paragraph, text in brackets.
std::string Shape(const VQRTBaseContainerBody& container) {
  std::string shape;
  for (VQRTObjectBody* object = container.GetFirstChild(); object; object = object->GetNext()) {
    vq::PABIDs ids = vq::pab::IDsOf(*object);
    VQString text;
    switch (object->GetType()) {
      case VQRTTYPE_PAB_DEFINITION:
        shape += "D" + std::to_string(ids.First);
        break;
      case VQRTTYPE_PAB_HIDE:
        shape += "H" + std::to_string(ids.First);
        break;
      case VQRTTYPE_PAB_STYLE_NAME:
        shape += "N" + std::to_string(ids.First);
        break;
      case VQRTTYPE_PAB_REFERENCE:
        shape += "R" + std::to_string(ids.First);
        break;
      case VQRTTYPE_PAB_FORMULA_REFERENCE:
        shape += "F" + std::to_string(ids.First) + "/" + std::to_string(ids.Second);
        break;
      case VQRTTYPE_NEW_PARAGRAPH:
        shape += "P";
        break;
      default:
        EXPECT_EQ(object->GetText(&text), VQ_OK);
        shape += "[" + TextOf(text) + "]";
    }
  }
  return shape;
}
std::string Shape(const VQRichText& text) {
  VQRTContainer top;
  EXPECT_EQ(text.GetTopContainer(&top), VQ_OK);
  return Shape(*top.GetRTContainerBody());
}

// Puts the cursor before the first character `at`, or at the end.
VQRTCursor Before(const VQRichText& text, const char* at) {
  VQRTCursor cursor;
  EXPECT_EQ(*at ? text.GetCursor(&cursor) : text.GetEndCursor(&cursor), VQ_OK);
  if (*at) {
    EXPECT_EQ(cursor.GotoFirst(VQString(at)), VQ_OK);
  }
  return cursor;
}

const std::string kTwo = Definition(3) + Reference(3) + Text("ab") + Paragraph() + Reference(3) + Text("cd");

TEST_F(Paragraphs, StartAndMerge) {
  const auto start = [](VQRichText& text, VQRTCursor& cursor) { return text.StartNewParagraph(&cursor); };
  const auto next = [](VQRichText& text, VQRTCursor& cursor) { return text.MergeNextParagraph(&cursor); };
  const auto previous = [](VQRichText& text, VQRTCursor& cursor) { return text.MergePreviousParagraph(&cursor); };
  const struct {
    const char* What;
    std::string Records;
    const char* At;
    VQSTATUS (*Edit)(VQRichText&, VQRTCursor&);
    VQSTATUS Status;
    const char* After;
    const char* Typed;  // after "x" goes in at the cursor
  } rows[] = {
      {"in a run", kTwo, "b", start, VQ_OK, "D3R3[a]PR3[b]PR3[cd]", "D3R3[a]PR3[xb]PR3[cd]"},
      {"at the end", kTwo, "", start, VQ_OK, "D3R3[ab]PR3[cd]PR3[]", "D3R3[ab]PR3[cd]PR3[x]"},
      {"at a start", kTwo, "c", start, VQ_OK, "D3R3[ab]PR3[]PR3[cd]", "D3R3[ab]PR3[]PR3[xcd]"},
      {"without a reference", Text("ab"), "b", start, VQ_OK, "[a]PR1[b]", "[a]PR1[xb]"},
      {"of a formula reference", FormulaReference(2, 1) + Text("ab"), "b", start, VQ_OK, "F2/1[a]PF2/1[b]",
       "F2/1[a]PF2/1[xb]"},
      {"with the next", kTwo, "a", next, VQ_OK, "D3R3[ab][cd]", "D3R3[xab][cd]"},
      {"with the one before", kTwo, "d", previous, VQ_OK, "D3R3[ab][cd]", "D3R3[ab][cxd]"},
      {"with none", kTwo, "d", next, VQWARN_NOT_FOUND, "D3R3[ab]PR3[cd]", "D3R3[ab]PR3[cxd]"},
      {"with an empty one", Reference(1) + Text("a") + Paragraph() + Reference(2) + Text(""), "a", next, VQ_OK, "R1[a]",
       "R1[xa]"},
      {"definitions in between", Reference(1) + Text("a") + Paragraph() + Definition(2) + Reference(2) + Text("b"), "a",
       next, VQ_OK, "R1[a]D2[b]", "R1[xa]D2[b]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Records);
    VQRTCursor cursor = Before(text, row.At);
    EXPECT_EQ(row.Edit(text, cursor), row.Status);
    EXPECT_EQ(Shape(text), row.After);
    EXPECT_EQ(text.Insert("x", &cursor), VQ_OK);
    EXPECT_EQ(Shape(text), row.Typed);
  }
}

// Each insertion has identifiers of its own, also where a text goes into itself, at any place.
TEST_F(Paragraphs, EveryInsertionIsNumberedAnew) {
  VQRichText target = RichText(kTwo);
  const VQRichText source = RichText(Definition(3) + FormulaReference(7, 3) + Hide(7) + Text("s"));
  VQRTCursor cursor = Before(target, "d");
  for (int i = 0; i < 2; ++i) ASSERT_EQ(target.Insert(source, &cursor), VQ_OK);
  EXPECT_EQ(Shape(target), "D3R3[ab]PR3[c]D4F5/4H5[s]D6F7/6H7[s][d]");
  VQRichText self = RichText(kTwo);
  VQRTCursor inside = Before(self, "b");
  ASSERT_EQ(self.Insert(self, &inside), VQ_OK);
  EXPECT_EQ(Shape(self), "D3R3[a]D4R4[ab]PR4[cd][b]PR3[cd]");
  ASSERT_EQ(self.Insert("x", &inside), VQ_OK);
  EXPECT_EQ(Plain(self), "aab\ncdxb\ncd");
}

// Hotspots do not part a paragraph, cells do; tables and elements are passed whole.
TEST_F(Paragraphs, MergesThroughWhatStandsBetween) {
  const auto next = [](VQRichText& text, VQRTCursor& cursor) { return text.MergeNextParagraph(&cursor); };
  const auto previous = [](VQRichText& text, VQRTCursor& cursor) { return text.MergePreviousParagraph(&cursor); };
  const std::string head = Reference(1) + Text("a"), part = Paragraph() + Reference(1);
  const auto popup = [](const std::string& inside) { return Hotspot(1) + inside + HotspotEnd(); };
  const auto table = [](const std::string& cell) { return TableBegin() + Cell(0, 0) + cell + TableEnd(); };
  const std::string button = Hotspot(3) + Record(SIG_CD_BUTTON, "b") + Text("in") + HotspotEnd();
  const struct {
    const char* What;
    std::string Records;
    const char* At;
    VQSTATUS (*Edit)(VQRichText&, VQRTCursor&);
    VQSTATUS Status;
    std::string After;
  } rows[] = {
      {"out of a popup", head + popup(Text("p")) + part + Text("z"), "p", next, VQ_OK,
       head + popup(Text("p")) + Text("z")},
      {"into a popup", head + part + popup(Text("p")), "a", next, VQ_OK, head + popup(Text("p"))},
      {"back into a popup", head + popup(Text("p")) + part + Text("z"), "z", previous, VQ_OK,
       head + popup(Text("p")) + Text("z")},
      {"back out of a popup", head + part + popup(Text("p")), "p", previous, VQ_OK, head + popup(Text("p"))},
      {"in a popup", head + popup(Text("p") + part + Text("q")), "p", next, VQ_OK, head + popup(Text("p") + Text("q"))},
      {"of a popup that ends with one", head + popup(Text("p") + part) + Text("z"), "p", next, VQ_OK,
       head + popup(Text("p")) + Text("z")},
      {"from within to within", head + popup(Text("p")) + part + popup(Text("q")), "q", previous, VQ_OK,
       head + popup(Text("p")) + popup(Text("q"))},
      {"over a table", head + table(Text("c")) + part + Text("z"), "a", next, VQ_OK,
       head + table(Text("c")) + Text("z")},
      {"with a table", head + part + table(part + Text("c")), "a", next, VQERR_RT_SELECTION_INVALID,
       head + part + table(part + Text("c"))},
      {"back to a table", head + table(Text("c")) + part + Text("z"), "z", previous, VQERR_RT_SELECTION_INVALID,
       head + table(Text("c")) + part + Text("z")},
      {"out of a cell", head + part + table(part + Text("c")) + part + Text("z"), "c", next, VQWARN_NOT_FOUND,
       head + part + table(part + Text("c")) + part + Text("z")},
      {"back out of a cell", head + part + table(part + Text("c")), "c", previous, VQWARN_NOT_FOUND,
       head + part + table(part + Text("c"))},
      {"back to a button", head + button + part + Text("z"), "z", previous, VQ_OK, head + button + Text("z")},
      {"with a button", head + part + button, "a", next, VQ_OK, head + button},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Records);
    VQRTCursor cursor = Before(text, row.At);
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Edit(text, cursor); }), row.Status);
    EXPECT_EQ(Written(text), row.After);
    EXPECT_TRUE(cursor.IsValid());
  }
}

// The new paragraph goes behind a subform, on whichever side of it the cursor stands.
TEST_F(Paragraphs, StartBehindASubform) {
  const std::string subform = Hotspot(14) + HotspotEnd();
  for (const int edge : {0, 1}) {
    VQRichText text = RichText(Reference(2) + subform + Text("z"));
    VQRTObject object;
    ASSERT_EQ(text.FindFirst(VQRTTYPE_RT_SUBFORM, &object), VQ_OK);
    VQRTCursor cursor(object, edge);
    ASSERT_EQ(text.StartNewParagraph(&cursor), VQ_OK);
    EXPECT_EQ(Written(text), Reference(2) + subform + Paragraph() + Reference(2) + Text("z"));
    ASSERT_EQ(text.Insert("x", &cursor), VQ_OK);
    EXPECT_EQ(Plain(text), "\nxz");
  }
  VQRichText last = RichText(Reference(2) + subform);
  VQRTCursor cursor;
  ASSERT_EQ(last.GetEndCursor(&cursor), VQ_OK);
  ASSERT_EQ(last.StartNewParagraph(&cursor), VQ_OK);
  EXPECT_EQ(Written(last), Reference(2) + subform + Paragraph() + Reference(2) + Text(""));
}

TEST_F(Paragraphs, MergingRefuses) {
  for (const int throws : {0, 1}) {
    VQRichText text = RichText(kTwo);
    VQRTCursor start = Before(text, "b"), end = Before(text, "c"), none;
    VQSetThrowAllErrors(throws);
    for (VQRTCursor* bad : {static_cast<VQRTCursor*>(nullptr), &none}) {
      EXPECT_EQ(ReturnedStatusOf([&] { return text.MergeParagraphs(&start, bad); }), VQERR_INVALID_PARAMETER);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.MergeParagraphs(bad, &end); }), VQERR_INVALID_PARAMETER);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.MergeNextParagraph(bad); }), VQERR_INVALID_PARAMETER);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.MergePreviousParagraph(bad); }), VQERR_INVALID_PARAMETER);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.StartNewParagraph(bad); }), VQERR_INVALID_PARAMETER);
    }
    EXPECT_EQ(ReturnedStatusOf([&] { return text.MergeParagraphs(&end, &start); }), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.MergeParagraphs(&start, &start); }), VQERR_INVALID_PARAMETER);
    VQSetThrowAllErrors(0);
    EXPECT_EQ(Written(text), kTwo);
  }
}

TEST_F(Paragraphs, DeletingKeepsDefinitionsThatAreStillUsed) {
  const std::string after = Paragraph() + Reference(2) + Text("z");
  const struct {
    const char* What;
    std::string Records;
    const char* After;
  } rows[] = {
      {"used behind",
       Reference(1) + Text("ab") + Paragraph() + Definition(2) + Hide(2) + Reference(2) + Text("cd") + after,
       "R1[a][d]PD2H2R2[z]"},
      {"not used behind", Reference(1) + Text("ab") + Paragraph() + Definition(3) + Reference(3) + Text("cd") + after,
       "R1[a][d]PR2[z]"},
      {"defined further left",
       Definition(2) + Reference(1) + Text("ab") + Paragraph() + Definition(2) + Reference(2) + Text("cd") + after,
       "D2R1[a][d]PR2[z]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Records);
    VQRTCursor start = Before(text, "b"), end = Before(text, "d");
    EXPECT_EQ(text.Delete(&start, &end), VQ_OK);
    EXPECT_EQ(Shape(text), row.After);
  }
}

TEST_F(Paragraphs, InsertedTextGetsNumbersOfItsOwn) {
  const std::string source = Definition(3) + Hide(3) + Definition(4) + FormulaReference(3, 4) + Text("s") +
                             Paragraph() + Reference(9) + Text("t");
  VQRichText target = RichText(kTwo);
  VQRTCursor cursor = Before(target, "d");
  ASSERT_EQ(target.Insert(RichText(source), &cursor), VQ_OK);
  EXPECT_EQ(Shape(target), "D3R3[ab]PR3[c]D4H4D5F4/5[s]PR3[t][d]");
  ASSERT_EQ(target.Insert("x", &cursor), VQ_OK);
  ASSERT_EQ(target.Append(RichText(source)), VQ_OK);
  EXPECT_EQ(Shape(target), "D3R3[ab]PR3[c]D4H4D5F4/5[s]PR3[tx][d]D6H6D7F6/7[s]PR3[t]");
  ASSERT_EQ(target.Append(target), VQ_OK) << "a text into itself";
  EXPECT_EQ(Plain(target).size(), 2 * (std::string("ab\ncs\ntxds\nt").size()));
}

// Numbers that a client has given out are not new any more.
TEST_F(Paragraphs, ClientsNumbersAreTaken) {
  const struct {
    const char* What;
    VQSTATUS (*Edit)(VQRichText&, VQRTCursor&);
  } rows[] = {
      {"a reference put in", [](VQRichText& text, VQRTCursor& at) { return text.Insert(VQPABReference(9), &at); }},
      {"a reference at the end", [](VQRichText& text, VQRTCursor&) { return text.Append(VQPABReference(9)); }},
      {"a reference beside a run",
       [](VQRichText& text, VQRTCursor&) {
         VQRTObject run;
         VQPABReference reference(9);
         const VQSTATUS status = text.FindLast(VQRTTYPE_STYLIZED_TEXT, &run);
         return status == VQ_OK ? run.InsertPreviousSibling(&reference) : status;
       }},
      {"a reference set",
       [](VQRichText& text, VQRTCursor&) {
         VQRTObject reference;
         const VQSTATUS status = text.FindLast(VQRTTYPE_PAB_REFERENCE, &reference);
         return status == VQ_OK ? VQPABReference(reference).SetPABID(9) : status;
       }},
      {"a definition set",
       [](VQRichText& text, VQRTCursor&) {
         VQRTObject definition;
         const VQSTATUS status = text.FindFirst(VQRTTYPE_PAB_DEFINITION, &definition);
         return status == VQ_OK ? VQPABDefinition(definition).SetPABID(9) : status;
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(kTwo);
    VQRTCursor at = Before(text, "d");
    ASSERT_EQ(row.Edit(text, at), VQ_OK);
    unsigned short number = 0;
    ASSERT_EQ(text.GetRichTextBody()->GetTop()->GetNewPABID(&number), VQ_OK);
    EXPECT_EQ(number, 10);
  }
}

// At the end of a popup nothing follows that could hold the cursor.
TEST_F(Paragraphs, WhatEndsWithAParagraphComesIntoAPopup) {
  VQRichText text = RichText(kTwo + Hotspot(1) + Text("p") + HotspotEnd() + Text("z"));
  VQRTObject popup;
  VQRTCursor cursor;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_TEXT_POPUP, &popup), VQ_OK);
  ASSERT_EQ(VQRTContainer(popup).GetEndCursor(&cursor), VQ_OK);
  ASSERT_EQ(text.Insert(RichText(Reference(1) + Text("q") + Paragraph()), &cursor), VQ_OK);
  ASSERT_EQ(text.Insert("x", &cursor), VQ_OK);
  EXPECT_EQ(Plain(text), "ab\ncdpqx\nz");
}

// A text that comes without a reference can be styled where it comes first.
TEST_F(Paragraphs, TheFirstTextGetsAReference) {
  VQParagraphStyle style;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  for (const bool append : {true, false}) {
    VQRichText text;
    VQRTCursor start;
    ASSERT_EQ(text.Create(), VQ_OK);
    ASSERT_EQ(append ? VQ_OK : text.GetCursor(&start), VQ_OK);
    const VQRichText plain = RichText(Text("ab") + Paragraph() + Text("c"));
    ASSERT_EQ(append ? text.Append(plain) : text.Insert(plain, &start), VQ_OK);
    ASSERT_EQ(text.SetParagraphStyle(Before(text, "a"), style), VQ_OK);
    EXPECT_EQ(Shape(text), append ? "D2R2[ab]P[c]" : "D3R3[ab]P[c]");
  }
}

TEST_F(Paragraphs, NumbersBelowAreUsedWhenTheHighestIsTaken) {
  const std::string highest = Record(SIG_CD_PABREFERENCE, Bytes({0xFF, 0xFF}));
  VQRichText target = RichText(kTwo + Paragraph() + highest + Text("z"));
  ASSERT_EQ(target.Append(RichText(Definition(3) + Hide(3) + Definition(4) + FormulaReference(3, 4) + Text("s"))),
            VQ_OK);
  EXPECT_EQ(Shape(target), "D3R3[ab]PR3[cd]PR65535[z]D1H1D2F1/2[s]");
  VQParagraphStyle style;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  ASSERT_EQ(target.SetParagraphStyle(Before(target, "z"), style), VQ_OK);
  EXPECT_EQ(Shape(target), "D3R3[ab]PR3[cd]PD4R4[z]D1H1D2F1/2[s]");
}

// The first paragraph of what comes needs a number too.
TEST_F(Paragraphs, ATextWithAllNumbersComesWholeOrNotAtAll) {
  std::string records = Text("a");
  for (int number = 1; number < 0xFFFF; ++number) records += Paragraph() + Reference(number);
  for (const bool all : {false, true}) {
    VQRichText target = RichText(Text(""));
    VQRTCursor cursor = At(target, 0);
    if (all) records += Paragraph() + Reference(0xFFFF);
    ASSERT_EQ(target.Insert(RichText(records), &cursor), all ? VQERR_OUT_OF_RANGE : VQ_OK);
    EXPECT_EQ(target.GetRichTextBody()->GetTop()->GetChildCount(), all ? 1u : 1u + 2u * 0xFFFF);
    EXPECT_EQ(target.Insert("b", &cursor), VQ_OK);
  }
}

TEST_F(Paragraphs, ADamagedRunLeavesTheRunsBeforeIt) {
  const std::string records = Reference(1) + Text("ab") + Paragraph() + Reference(1) + Text("cd") + Text("ef");
  VQRichText text = RichText(records);
  VQRTCursor start = At(text, 1), end;
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  VQRTObject damaged;
  ASSERT_EQ(text.FindLast(VQRTTYPE_STYLIZED_TEXT, &damaged), VQ_OK);
  ASSERT_EQ(damaged.GetRTObjectBody()->GetPrevious()->WriteRecord(2, "\x40", 1), VQ_OK);
  std::string before;
  const auto shape = [&] {
    std::string all;
    VQRTContainerBody& top = *text.GetRichTextBody()->GetTop();
    for (VQRTObjectBody* run = top.FirstOfType(VQRTTYPE_STYLIZED_TEXT); run; run = run->GetNext()) {
      const vq::RecordBytes bytes(*run);
      all.append(bytes.Get(), bytes.Get() + bytes.GetSize());
    }
    return all;
  };
  before = shape();
  VQFontStyle font;
  ASSERT_EQ(font.SetFontID(0x0C008101, 0xFFFFFFFFUL), VQ_OK);
  EXPECT_EQ(text.SetFontStyle(start, end, font), VQERR_RT_INVALID);
  EXPECT_EQ(shape(), before);
  EXPECT_EQ(start, At(text, 1));
}

TEST_F(Paragraphs, StylesInTextsThatAreFullOrDamaged) {
  const std::string damaged = Record(SIG_CD_PABDEFINITION, Bytes({5, 0})) +
                              Record(SIG_CD_STYLENAME, Bytes({0, 0, 0, 0, 5, 0})) + Reference(5) + Text("z");
  const struct {
    const char* What;
    std::string Behind;
    unsigned char HighestFace;
    VQSTATUS Status;
    const char* Shape;
    unsigned Face;
  } rows[] = {
      {"no room for the face", "", 255, VQERR_TOO_MANY_FONTS, "D3R3[ab]PR3[cd]", 1},
      {"a damaged definition", damaged, 9, VQ_OK, "D3D6N6R6[ab]PR3[cd]D0N0R5[z]", 10},
  };
  for (const auto& row : rows) {
    for (int throwing : {0, 1}) {
      SCOPED_TRACE(row.What);
      VQRichText text = RichText(kTwo + row.Behind);
      VQFontTable table;
      ASSERT_EQ(text.GetRichTextBody()->FindOrMakeFontTable(&table), VQ_OK);
      ASSERT_EQ(table.Append(row.HighestFace, 0x12, "Last"), VQ_OK);
      VQNamedStyle named(VQString("Quote"));
      ASSERT_EQ(named.SetFontStyle(VQFontStyle(0x10, 2, "Garden", 0, 0)), VQ_OK);
      VQRTCursor at = Before(text, "a");
      VQSetThrowAllErrors(throwing);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.SetParagraphStyle(at, named); }), row.Status);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(Shape(text), row.Shape);
      VQRTObject run;
      ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
      EXPECT_EQ(static_cast<VQStylizedTextBody*>(run.GetRTObjectBody())->GetFontID() & 0xFF, row.Face);
    }
  }
}

TEST_F(Paragraphs, StylesAreFoundAfterTheirDefinitionsChange) {
  using Edit = std::function<VQSTATUS(VQRTContainerBody & top, VQPABDefinition first, VQPABDefinition second)>;
  const struct {
    const char* What;
    Edit Change;
    unsigned First, Second;  // alignments
  } rows[] = {
      {"nothing", [](auto&, auto, auto) { return VQ_OK; }, 1, 2},
      {"another number", [](auto&, auto first, auto) { return first.SetPABID(9); }, 0, 2},
      {"a number in use", [](auto&, auto first, auto) { return first.SetPABID(4); }, 0, 2},
      {"a nearer one", [](auto&, auto first, auto second) { return first.SetPABID(4), second.SetPABID(3); }, 2, 1},
      {"gone", [](auto&, auto first, auto) { return first.GetRTObjectBody()->Delete(); }, 0, 2},
      {"taken along", [](auto&, auto, auto second) { return second.RemoveThis(1), second.SetPABID(3); }, 1, 0},
      {"behind its use",
       [](auto& top, auto first, auto) { return first.RemoveThis(1), top.Append(first.GetRTObjectBody()); }, 1, 2},
      {"another record",
       [](auto&, auto first, auto second) { return first.CopyRTObject(second, VQRTCOPYOPTIONS_KEEP_LINKS); }, 0, 2},
      {"a new text", [](auto& top, auto, auto) { return top.DeleteAllChildren(), top.Append("ab", 0); }, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text =
        RichText(Definition(3, 1) + Reference(3) + Text("a") + Definition(4, 2) + Reference(4) + Text("b"));
    VQParagraphStyle style;
    ASSERT_EQ(text.FindParagraphStyle(Before(text, "a"), &style), VQ_OK);
    VQRTContainerBody& top = *text.GetRichTextBody()->GetTop();
    VQRTObject first(top.FirstOfType(VQRTTYPE_PAB_DEFINITION)), second(top.LastOfType(VQRTTYPE_PAB_DEFINITION));
    ASSERT_EQ(row.Change(top, VQPABDefinition(first), VQPABDefinition(second)), VQ_OK);
    ASSERT_EQ(text.FindParagraphStyle(Before(text, "a"), &style), VQ_OK);
    EXPECT_EQ(style.GetAlignment(), row.First);
    ASSERT_EQ(text.FindParagraphStyle(Before(text, "b"), &style), VQ_OK);
    EXPECT_EQ(style.GetAlignment(), row.Second);
  }
}

TEST_F(Paragraphs, SelectionsBringTheirDefinitions) {
  const std::string records = Definition(3) + Hide(3) + Reference(3) + Text("abc") + Paragraph() + Reference(3) +
                              Text("def") + Paragraph() + FormulaReference(3, 5) + Text("g") + Definition(5);
  const struct {
    const char *From, *To, *Shape;
  } rows[] = {
      {"b", "c", "D3H3R3[b]"},  {"c", "f", "D3H3R3[c]PR3[de]"}, {"d", "g", "D3H3R3[def]PD5F3/5[]"},
      {"g", "", "D5H3F3/5[g]"}, {"e", "e", "D3H3R3[]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Shape);
    VQRichText text = RichText(records), selected;
    EXPECT_EQ(text.GetRichText(Before(text, row.From), Before(text, row.To), &selected), VQ_OK);
    EXPECT_EQ(Shape(selected), row.Shape);
    EXPECT_FALSE(text.IsDirty());
  }
}

TEST_F(Paragraphs, StylesAreSharedFoundAndRedefined) {
  VQRichText text = RichText(kTwo);
  VQParagraphStyle style, found;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(Before(text, "d"), style), VQ_OK);
  EXPECT_EQ(Shape(text), "D3R3[ab]PD4R4[cd]");
  ASSERT_EQ(text.SetParagraphStyle(Before(text, "b"), style), VQ_OK);
  EXPECT_EQ(Shape(text), "D3D4R4[ab]PR4[cd]") << "the definition moves in front of its first use";
  ASSERT_EQ(text.FindParagraphStyle(Before(text, "c"), &found), VQ_OK);
  EXPECT_TRUE(found == style);
  ASSERT_EQ(found.SetAlignment(1), VQ_OK);
  ASSERT_EQ(text.FindParagraphStyle(Before(text, "c"), &found), VQ_OK);
  EXPECT_EQ(found.GetAlignment(), 2) << "a found style is a value";

  VQNamedStyle named(VQString("Quote"), style);
  ASSERT_EQ(text.SetParagraphStyle(Before(text, "c"), named), VQ_OK);
  EXPECT_EQ(Shape(text), "D3D4R4[ab]PD5N5R5[cd]");
  ASSERT_EQ(named.SetAlignment(3), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(Before(text, "a"), named), VQ_OK);
  EXPECT_EQ(Shape(text), "D3D4D5N5R5[ab]PR5[cd]");
  ASSERT_EQ(text.FindParagraphStyle(Before(text, "d"), &found), VQ_OK);
  ASSERT_TRUE(found.IsNamed());
  EXPECT_EQ(found.GetAlignment(), 3);
  EXPECT_EQ(text.SetParagraphStyle(Before(text, "d"), Before(text, "a"), style), VQERR_INVALID_PARAMETER);
  VQRichText bare = RichText(Text("ab"));
  EXPECT_EQ(bare.SetParagraphStyle(Before(bare, "b"), style), VQERR_RT_NOT_MEMBER);
  VQRichText cell = RichText(kTwo + TableBegin() + Cell(0, 0) + Text("z") + TableEnd());
  EXPECT_EQ(cell.SetParagraphStyle(Before(cell, "z"), style), VQERR_RT_NOT_MEMBER) << "the reference is not the cell's";
}

TEST_F(Paragraphs, NewTextsCanBeStyledAndFilled) {
  const struct {
    const char* What;
    VQSTATUS (*First)(VQRichText&);
    const char *Shape, *Styled;
  } rows[] = {
      {"nothing", [](VQRichText&) -> VQSTATUS { return VQ_OK; }, "", "D2R2[]"},
      {"text", [](VQRichText& t) { return t.Append("a\nb"); }, "R1[a]PR1[b]", "D2R2[a]PR1[b]"},
      {"text in place of other", [](VQRichText& t) { return t.Append("z") != VQ_OK ? 1 : t.SetValue("a"); }, "R2[a]",
       "D3R3[a]"},
      {"an object", [](VQRichText& t) { return t.Append(VQStylizedText("a")); }, "R1[a]", "D2R2[a]"},
      {"a paragraph with its reference", [](VQRichText& t) { return t.Append(RichText(Reference(7) + Text("a"))); },
       "R1[a]", "D2R2[a]"},
      {"rich text at a cursor",
       [](VQRichText& t) {
         VQRTCursor cursor;
         return t.GetCursor(&cursor) != VQ_OK ? 1 : t.Insert(RichText(kTwo), &cursor);
       },
       "D2R2[ab]PR2[cd]", "D2D3R3[ab]PR2[cd]"},
      {"rich text without a reference",
       [](VQRichText& t) {
         VQRTCursor cursor;
         return t.GetCursor(&cursor) != VQ_OK ? 1 : t.Insert(RichText(Text("a")), &cursor);
       },
       "R2[a]", "D3R3[a]"},
  };
  VQParagraphStyle style, found;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text;
    ASSERT_EQ(text.Create(), VQ_OK);
    ASSERT_EQ(row.First(text), VQ_OK);
    EXPECT_EQ(Shape(text), row.Shape);
    ASSERT_EQ(text.SetParagraphStyle(At(text, 0), style), VQ_OK);
    EXPECT_EQ(Shape(text), row.Styled);
    ASSERT_EQ(text.FindParagraphStyle(At(text, 0), &found), VQ_OK);
    EXPECT_TRUE(found == style);
  }
}

TEST_F(Paragraphs, AFullFontTableRefusesAndChangesNothing) {
  const VQFontStyle face(0x20, 2, "Quadrata", 0, 0);
  VQStylizedText run("run");
  ASSERT_EQ(run.SetFontStyle(face), VQ_OK);
  VQRichText other;
  ASSERT_EQ(other.Create(), VQ_OK);
  ASSERT_EQ(other.Append("one\n"), VQ_OK);
  ASSERT_EQ(other.Append(run), VQ_OK);
  VQNamedStyle named(VQString("Quote"), VQParagraphStyle(CDPABDEFINITION{}), face);
  const struct {
    const char* What;
    std::function<VQSTATUS(VQRichText& text, VQRTCursor at)> Edit;
  } rows[] = {
      {"append an object", [&](VQRichText& text, VQRTCursor) { return text.Append(run); }},
      {"insert an object", [&](VQRichText& text, VQRTCursor at) { return text.Insert(run, &at); }},
      {"append a text", [&](VQRichText& text, VQRTCursor) { return text.Append(other); }},
      {"insert a text", [&](VQRichText& text, VQRTCursor at) { return text.Insert(other, &at); }},
      {"a font", [&](VQRichText& text, VQRTCursor at) { return text.SetFontStyle(at, at + 1, face); }},
      {"a named style", [&](VQRichText& text, VQRTCursor at) { return text.SetParagraphStyle(at, named); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(kTwo);
    VQFontTable table;
    ASSERT_EQ(text.GetRichTextBody()->FindOrMakeFontTable(&table), VQ_OK);
    ASSERT_EQ(table.Append(255, 0x12, "Last"), VQ_OK);
    EXPECT_EQ(row.Edit(text, Before(text, "b")), VQERR_TOO_MANY_FONTS);
    EXPECT_EQ(Written(text), kTwo);
    EXPECT_EQ(table.GetCount(), 1u);
  }
}

TEST_F(Paragraphs, FacesFollowTheirRuns) {
  VQRichText source, target;
  ASSERT_EQ(source.Create(), VQ_OK);
  ASSERT_EQ(target.Create(), VQ_OK);
  ASSERT_EQ(source.Append("one"), VQ_OK);
  ASSERT_EQ(target.Append("two"), VQ_OK);
  VQFontStyle quadrata(0x20, 2, "Quadrata", 0, 0), ronda(0x20, 2, "Ronda", 0, 0), found;
  ASSERT_EQ(source.SetFontStyle(Before(source, "o"), Before(source, ""), quadrata), VQ_OK);
  ASSERT_EQ(target.SetFontStyle(Before(target, "t"), Before(target, ""), ronda), VQ_OK);
  VQRichText part;
  ASSERT_EQ(source.GetRichText(Before(source, "n"), Before(source, ""), &part), VQ_OK);
  ASSERT_EQ(target.Append(part), VQ_OK);
  VQFontTable table;
  ASSERT_EQ(target.GetFontTable(&table), VQ_OK);
  EXPECT_EQ(table.GetCount(), 2U);
  VQRTCursor cursor = Before(target, "n");
  ASSERT_EQ(cursor.GetFontStyle(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetFaceName()), "Quadrata");
  EXPECT_EQ(found.GetFaceID(), 6);
  ASSERT_EQ(target.Append(VQStylizedText("x")), VQ_OK);
  VQStylizedText lone("y");
  ASSERT_EQ(lone.SetFontStyle(VQFontStyle(0x20, 2, "Tersa", 0, 0)), VQ_OK);
  ASSERT_EQ(target.Append(lone), VQ_OK);
  EXPECT_EQ(table.GetCount(), 3U);
  VQRTObject run;
  VQStylizedText beside("z");
  ASSERT_EQ(beside.SetFontStyle(VQFontStyle(0x20, 2, "Vela", 0, 0)), VQ_OK);
  ASSERT_EQ(target.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
  ASSERT_EQ(run.InsertNextSibling(&beside), VQ_OK);
  EXPECT_EQ(table.GetCount(), 4U);
  ASSERT_EQ(beside.GetFontStyle(&found), VQ_OK);
  EXPECT_EQ(found.GetFaceID(), 8);
}

// Texts that were put together have a name more than once; a style that says two things at once is refused.
TEST_F(Paragraphs, ANameMeansOneStyle) {
  const auto named = [](int pabid) {
    return Record(SIG_CD_STYLENAME, Bytes({2, 0, 0, 0, pabid, 0}) + "Quote" + std::string(31, '\0'));
  };
  VQRichText text =
      RichText(Definition(3, 1) + named(3) + Reference(3) + Text("a") + Paragraph() + Definition(4, 2) + named(4) +
               Reference(4) + Text("b") + Paragraph() + Definition(5) + Hide(5) + FormulaReference(5, 4) + Text("c"));
  VQNamedStyle style(VQString("Quote"));
  VQParagraphStyle found;
  ASSERT_EQ(style.SetAlignment(3), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(Before(text, "a"), style), VQ_OK);
  for (const char* word : {"a", "b", "c"}) {
    ASSERT_EQ(text.FindParagraphStyle(Before(text, word), &found), VQ_OK);
    EXPECT_EQ(found.GetAlignment(), 3) << word;
  }
  const std::string before = Written(text);
  for (const int throws : {0, 1}) {
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.SetParagraphStyle(Before(text, "a"), found); }), VQERR_INAPPROPRIATE);
    VQSetThrowAllErrors(0);
    EXPECT_EQ(Written(text), before);
  }
  ASSERT_EQ(found.SetHideIfFormula(VQFormula()), VQ_OK);
  EXPECT_EQ(text.SetParagraphStyle(Before(text, "c"), found), VQ_OK);
}

}  // namespace
