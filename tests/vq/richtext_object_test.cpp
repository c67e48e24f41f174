// Objects of a rich text: their neighbours, what holds them, what typed handles take, what a record's bytes say.
#include "engine/ods.h"
#include "tests/vq/support/records.h"
#include "vq/richobjects/vqgraphic.h"
#include "vq/richtext/vqhotspot.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrttabl.h"

namespace {

using namespace vqtest;

class RichTextObjects : public EngineFixture {};

std::string Definition(int pabid) {
  std::string data(66, '\0');
  data[0] = static_cast<char>(pabid);
  data[59] = 1;
  return Record(SIG_CD_PABDEFINITION, data);
}
std::string StyleName() {
  return Record(SIG_CD_STYLENAME, Bytes({2, 0, 0, 0, 5, 0}) + "Quote" + std::string(31, '\0'));
}

// One of each.
std::string Sample() {
  return Definition(5) + StyleName() + Record(SIG_CD_PABHIDE, Bytes({5, 0}) + std::string(8, '\0') + "code") +
         Reference(5) + Text("ab") + Paragraph() + Record(SIG_CD_PABFORMULAREF, Bytes({6, 0, 5, 0})) + Text("cd") +
         Hotspot(1) + Text("p") + HotspotEnd() + Unknown("u") + TableBegin() + Cell(0, 0) + Text("c") + TableEnd() +
         Text("z");
}

VQRTObject First(const VQRichText& text, VQRTTYPE type) {
  VQRTObject found;
  EXPECT_EQ(text.FindFirst(type, &found), VQ_OK) << type;
  return found;
}

// Of an answer that may be none.
std::string TypeOf(VQSTATUS status, const VQRTObject& object) {
  if (status == VQWARN_NOT_FOUND) return object.IsNull() ? "-" : "stale";
  return status == VQ_OK ? std::to_string(object.GetType()) : "?" + std::to_string(status);
}

TEST_F(RichTextObjects, KnowTheirNeighbours) {
  const VQRichText text = RichText(Sample());
  const struct {
    VQRTTYPE Type;
    const char *Previous, *Next, *Parent, *Cell;
  } rows[] = {
      {VQRTTYPE_PAB_DEFINITION, "-", "59", "31", "-"}, {VQRTTYPE_STYLIZED_TEXT, "55", "30", "31", "-"},
      {VQRTTYPE_TEXT_POPUP, "6", "3", "31", "-"},      {VQRTTYPE_HOTSPOT_END, "6", "-", "26", "-"},
      {VQRTTYPE_TABLE, "3", "6", "31", "-"},           {VQRTTYPE_TABLE_CELL, "-", "60", "32", "-"},
      {VQRTTYPE_TABLE_END, "33", "-", "32", "-"},      {VQRTTYPE_RICH_TEXT, "-", "-", "-", "-"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Type);
    VQRTContainer top;
    ASSERT_EQ(text.GetTopContainer(&top), VQ_OK);
    const VQRTObject object = row.Type == VQRTTYPE_RICH_TEXT ? VQRTObject(top) : First(text, row.Type);
    for (const int throws : {0, 1}) {
      VQSetThrowAllErrors(throws);
      VQRTObject found(object);
      EXPECT_EQ(TypeOf(object.GetPreviousSibling(&found), found), row.Previous);
      found = object;
      EXPECT_EQ(TypeOf(object.GetNextSibling(&found), found), row.Next);
      found = object;
      EXPECT_EQ(TypeOf(object.GetParentContainer(&found), found), row.Parent);
      found = object;
      EXPECT_EQ(TypeOf(object.GetParentContainer(VQRTTYPE_TABLE_CELL, &found), found), row.Cell);
      VQRichText owner;
      EXPECT_EQ(object.GetRichText(&owner), VQ_OK);
      EXPECT_EQ(owner.GetRichTextBody(), text.GetRichTextBody());
      EXPECT_TRUE(object.IsValid());
      VQSetThrowAllErrors(0);
    }
  }
  VQRTObject run;
  ASSERT_EQ(VQTableCell(First(text, VQRTTYPE_TABLE_CELL)).FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
  VQRTObject cell;
  EXPECT_EQ(run.FindContainer(VQRTTYPE_TABLE, &cell), VQ_OK);
  EXPECT_EQ(run.FindContainer(VQRTTYPE_HOTSPOT, &cell), VQWARN_NOT_FOUND);
  EXPECT_EQ(run.FindContainer(VQRTTYPE_NONE, &cell), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(StatusOf([&] { return run.IsType(static_cast<VQRTTYPE>(70)); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(cell.GetType(), VQRTTYPE_TABLE);
}

using Refusal = VQSTATUS (*)(VQRTObject& object);

// With what a null handle and one whose object has gone give.
TEST_F(RichTextObjects, RefuseWhatCannotBe) {
  const struct {
    const char* What;
    Refusal Run;
    VQSTATUS Live;
  } rows[] = {
      {"no sibling", [](VQRTObject& o) { return o.GetNextSibling(nullptr); }, VQERR_INVALID_PARAMETER},
      {"no text", [](VQRTObject& o) { return o.GetText(nullptr); }, VQERR_INVALID_PARAMETER},
      {"no rich text", [](VQRTObject& o) { return o.GetRichText(nullptr); }, VQERR_INVALID_PARAMETER},
      {"no container", [](VQRTObject& o) { return o.FindContainer(VQRTTYPE_TABLE, nullptr); }, VQERR_INVALID_PARAMETER},
      {"an object with a parent beside it", [](VQRTObject& o) { return o.InsertNextSibling(&o); },
       VQERR_RT_ALREADY_MEMBER},
      {"an object with a parent ahead", [](VQRTObject& o) { return o.InsertPreviousSibling(&o); },
       VQERR_RT_ALREADY_MEMBER},
      {"a copy of itself", [](VQRTObject& o) { return o.CopyRTObject(o, VQRTCOPYOPTIONS_DEEP); },
       VQERR_INVALID_PARAMETER},
      {"an offset for a node", [](VQRTObject& o) { return o.SetOffset(1); }, VQERR_CORRUPTED},
      {"a removal", [](VQRTObject& o) { return o.RemoveThis(); }, VQ_OK},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      VQRichText text = RichText(Sample());
      VQRTObject none, gone = First(text, VQRTTYPE_COMPOSITE_DATA), live = First(text, VQRTTYPE_STYLIZED_TEXT);
      ASSERT_EQ(gone.GetRTObjectBody()->Delete(), VQ_OK);
      const std::string before = Written(text);
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Run(live); }), row.Live);
      EXPECT_TRUE(VQIsError(ReturnedStatusOf([&] { return row.Run(none); })));
      EXPECT_TRUE(VQIsError(ReturnedStatusOf([&] { return row.Run(gone); })));
      VQSetThrowAllErrors(0);
      EXPECT_EQ(Written(text) == before, row.Live != VQ_OK);
      EXPECT_EQ(gone.GetRTObjectBody()->Close(), VQWARN_NOT_OPEN) << "twice is a warning";
    }
  }
  VQRichText text = RichText(Sample());
  VQRTObject member = First(text, VQRTTYPE_STYLIZED_TEXT);
  EXPECT_EQ(member.Copy(VQStylizedText("x")), VQERR_RT_ALREADY_MEMBER);
  for (const auto& read : {+[](const VQRTObject& o) { return static_cast<unsigned long>(o.IsDirty()); },
                           +[](const VQRTObject& o) { return o.GetSize(); },
                           +[](const VQRTObject& o) { return static_cast<unsigned long>(o.IsLeftOf(VQRTObject())); }}) {
    EXPECT_EQ(StatusOf([&] { return read(VQRTObject()) > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
  }
}

// What a handle cannot hold is refused before anything is done.
TEST_F(RichTextObjects, WrongHandlesAreGivenNothing) {
  using Run = VQSTATUS (*)(VQRichText & text, VQRTObject & run, VQRTCursor & cursor, VQTableCell & wrong);
  const struct {
    const char* What;
    Run Do;
  } rows[] = {
      {"find", [](auto& t, auto&, auto&, auto& w) { return t.FindFirst(VQRTTYPE_STYLIZED_TEXT, &w); }},
      {"next", [](auto&, auto& r, auto&, auto& w) { return r.GetNextSibling(&w); }},
      {"parent", [](auto&, auto& r, auto&, auto& w) { return r.GetParentContainer(&w); }},
      {"container", [](auto&, auto& r, auto&, auto& w) { return r.FindContainer(VQRTTYPE_RICH_TEXT, &w); }},
      {"copy", [](auto&, auto& r, auto&, auto& w) { return w.Copy(r); }},
      {"character",
       [](auto&, auto& r, auto&, auto& w) { return w.SetRTChar(VQStylizedText(r).GetStylizedTextBody(), 1); }},
      {"insert", [](auto& t, auto&, auto& c, auto& w) { return t.Insert(VQStylizedText("x"), &c, &w); }},
      {"append", [](auto& t, auto&, auto&, auto& w) { return t.Append(VQStylizedText("x"), &w); }},
      {"field", [](auto& t, auto&, auto& c, auto& w) { return t.CreateFormField("F", VQRTTYPE_TEXT_FIELD, &c, &w); }},
      {"cursor", [](auto&, auto&, auto& c, auto& w) { return c.GetRTObject(&w); }},
      {"right of it", [](auto&, auto&, auto& c, auto& w) { return c.GetNextObject(&w); }},
      {"left of it", [](auto&, auto&, auto& c, auto& w) { return c.GetPreviousObject(&w); }},
      {"motion", [](auto&, auto&, auto& c, auto& w) { return c.GotoNext(VQRTTYPE_TABLE, &w); }},
  };
  for (const auto& row : rows) {
    for (const int throws : {0, 1}) {
      SCOPED_TRACE(row.What);
      VQRichText text = RichText(Sample());
      VQRTObject run = First(text, VQRTTYPE_STYLIZED_TEXT);
      VQRTCursor cursor = At(text, 1);
      VQTableCell wrong;
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Do(text, run, cursor, wrong); }), VQERR_CONVERSION_FAILED);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(Written(text), Sample());
      EXPECT_TRUE(wrong.IsNull() && cursor == At(text, 1));
    }
  }
}

// A character is a place in its run.
TEST_F(RichTextObjects, CharactersAreNoNodes) {
  VQRichText text = RichText(Text("abc"));
  VQRTObject run = First(text, VQRTTYPE_STYLIZED_TEXT), character, next, parent;
  VQStylizedTextBody* body = VQStylizedText(run).GetStylizedTextBody();
  ASSERT_EQ(character.SetRTChar(body, 2), VQ_OK);
  EXPECT_EQ(character.GetType(), VQRTTYPE_CHAR);
  EXPECT_TRUE(character.IsType(VQRTTYPE_ELEMENT));
  EXPECT_EQ(character.RemoveThis(), VQERR_INAPPROPRIATE);
  EXPECT_EQ(character.InsertNextSibling(&next), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(text.FindNext(character, VQRTTYPE_OBJECT, &next), VQ_OK);
  EXPECT_EQ(next.GetOffset(), 3u);
  EXPECT_EQ(text.FindNext(next, VQRTTYPE_OBJECT, &next), VQWARN_NOT_FOUND);
  EXPECT_TRUE(character.IsLeftOf(next));
  EXPECT_EQ(character.GetParentContainer(&parent), VQ_OK);
  EXPECT_EQ(parent, run);
  EXPECT_EQ(character.SetOffset(0), VQERR_CORRUPTED);
  EXPECT_EQ(character.SetOffset(1), VQ_OK);
  EXPECT_EQ(character.SetOffset(4), VQERR_INVALID_PARAMETER) << "behind the run";
  VQString letter;
  EXPECT_EQ(VQRTChar(character).GetCharacter(&letter), VQ_OK);
  EXPECT_EQ(TextOf(letter), "a");
  for (unsigned long offset : {0UL, 4UL, 0x100000001UL}) {
    EXPECT_EQ(next.SetRTChar(body, offset), VQERR_INVALID_PARAMETER) << offset;
  }
  EXPECT_EQ(next.GetOffset(), 3u);
  EXPECT_EQ(StatusOf([&] { return VQRTObject(body, 4).GetOffset(); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([&] { return VQRTCursor(body, 4, 0).GetOffset(); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(VQStylizedText(run).SplitText(0x100000002UL), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(body->RemoveText(1, 0x100000001UL), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(Plain(text), "abc");
}

template <typename Handle>
VQSTATUS Taken(const VQRTObject& object) {
  return StatusOf([&] { return Handle(object).IsNull(); });
}
template <typename Handle>
VQSTATUS Assigned(const VQRTObject& object) {
  return StatusOf([&] {
    Handle handle;
    handle = object;
    return handle.IsNull();
  });
}

TEST_F(RichTextObjects, TypedHandlesTakeTheirTypes) {
  const VQRichText text = RichText(Sample() + Record(SIG_CD_GRAPHIC, "g"));
  const struct {
    const char* What;
    VQSTATUS (*Make)(const VQRTObject&);
    VQSTATUS (*Assign)(const VQRTObject&);
    std::vector<VQRTTYPE> Takes;
  } rows[] = {
      {"element", Taken<VQRTElement>, Assigned<VQRTElement>, {VQRTTYPE_COMPOSITE_DATA, VQRTTYPE_GRAPHIC}},
      {"composite data", Taken<VQCompositeData>, Assigned<VQCompositeData>, {VQRTTYPE_COMPOSITE_DATA}},
      {"paragraph", Taken<VQNewParagraph>, Assigned<VQNewParagraph>, {VQRTTYPE_NEW_PARAGRAPH}},
      {"run", Taken<VQStylizedText>, Assigned<VQStylizedText>, {VQRTTYPE_STYLIZED_TEXT}},
      {"table", Taken<VQTable>, Assigned<VQTable>, {VQRTTYPE_TABLE}},
      {"cell", Taken<VQTableCell>, Assigned<VQTableCell>, {VQRTTYPE_TABLE_CELL}},
      {"container",
       Taken<VQRTContainer>,
       Assigned<VQRTContainer>,
       {VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_TABLE, VQRTTYPE_TABLE_CELL, VQRTTYPE_TEXT_POPUP}},
      {"hotspot", Taken<VQHotspot>, Assigned<VQHotspot>, {VQRTTYPE_TEXT_POPUP}},
      {"hotspot end", Taken<VQHotspotEnd>, Assigned<VQHotspotEnd>, {VQRTTYPE_HOTSPOT_END}},
      {"graphic", Taken<VQGraphic>, Assigned<VQGraphic>, {VQRTTYPE_GRAPHIC}},
      {"definition", Taken<VQPABDefinition>, Assigned<VQPABDefinition>, {VQRTTYPE_PAB_DEFINITION}},
      {"reference",
       Taken<VQPABReference>,
       Assigned<VQPABReference>,
       {VQRTTYPE_PAB_REFERENCE, VQRTTYPE_PAB_FORMULA_REFERENCE}},
      {"formula reference",
       Taken<VQPABFormulaReference>,
       Assigned<VQPABFormulaReference>,
       {VQRTTYPE_PAB_FORMULA_REFERENCE}},
      {"hide", Taken<VQPABHide>, Assigned<VQPABHide>, {VQRTTYPE_PAB_HIDE}},
      {"style name", Taken<VQPABStyleName>, Assigned<VQPABStyleName>, {VQRTTYPE_PAB_STYLE_NAME}},
      {"character", Taken<VQRTChar>, Assigned<VQRTChar>, {}},
  };
  const VQRTTYPE types[] = {VQRTTYPE_COMPOSITE_DATA, VQRTTYPE_NEW_PARAGRAPH, VQRTTYPE_STYLIZED_TEXT,
                            VQRTTYPE_TABLE,          VQRTTYPE_TABLE_CELL,    VQRTTYPE_TABLE_END,
                            VQRTTYPE_TEXT_POPUP,     VQRTTYPE_HOTSPOT_END,   VQRTTYPE_GRAPHIC,
                            VQRTTYPE_PAB_DEFINITION, VQRTTYPE_PAB_REFERENCE, VQRTTYPE_PAB_FORMULA_REFERENCE,
                            VQRTTYPE_PAB_HIDE,       VQRTTYPE_PAB_STYLE_NAME};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const VQRTTYPE type : types) {
      const VQRTObject object = First(text, type);
      ASSERT_EQ(object.GetType() == type || type == VQRTTYPE_PAB_REFERENCE, true);
      const bool takes = std::find(row.Takes.begin(), row.Takes.end(), type) != row.Takes.end();
      EXPECT_EQ(row.Make(object), takes ? VQ_OK : VQERR_CONVERSION_FAILED) << type;
      EXPECT_EQ(row.Assign(object), takes ? VQ_OK : VQERR_CONVERSION_FAILED) << type;
    }
    EXPECT_EQ(row.Make(VQRTObject()), VQ_OK);
    EXPECT_EQ(row.Assign(VQRTObject()), VQ_OK);
  }
}

// References change their kind where they stand; every record keeps what else it says.
TEST_F(RichTextObjects, ParagraphRecordsTellAndTakeIdentifiers) {
  VQRichText text = RichText(Sample());
  VQPABReference reference(First(text, VQRTTYPE_PAB_REFERENCE));
  EXPECT_EQ(reference.GetPABID(), 5);
  ASSERT_EQ(reference.SetPABID(7, 8), VQ_OK);
  EXPECT_EQ(reference.GetType(), VQRTTYPE_PAB_FORMULA_REFERENCE);
  EXPECT_EQ(VQPABFormulaReference(reference).GetSourcePABID(), 7);
  EXPECT_EQ(reference.GetPABID(), 8);
  ASSERT_EQ(reference.SetPABID(9), VQ_OK);
  EXPECT_EQ(reference.GetType(), VQRTTYPE_PAB_REFERENCE);
  EXPECT_EQ(reference.GetSourcePABID(), 9);
  VQPABHide hide(First(text, VQRTTYPE_PAB_HIDE));
  VQPABDefinition definition(First(text, VQRTTYPE_PAB_DEFINITION));
  VQPABStyleName name(First(text, VQRTTYPE_PAB_STYLE_NAME));
  ASSERT_EQ(hide.SetPABID(0x1234), VQ_OK);
  ASSERT_EQ(definition.SetPABID(0x1234), VQ_OK);
  ASSERT_EQ(name.SetPABID(0x1234), VQ_OK);
  EXPECT_EQ(hide.GetPABID() == definition.GetPABID() && name.GetPABID() == 0x1234, true);
  EXPECT_EQ(TextOf(name.GetName()), "Quote");
  EXPECT_EQ(definition.GetCDPABDefinition().Flags, 0x100);
  std::string expected = Sample();
  for (const std::string& record : {Definition(5), StyleName(), Record(SIG_CD_PABHIDE, Bytes({5, 0}))}) {
    const std::size_t at = expected.find(record.substr(0, 2));
    expected.replace(expected.find(Bytes({5, 0}), at), 2, Bytes({0x34, 0x12}));
  }
  expected.replace(expected.find(Reference(5)), 4, Reference(9));
  EXPECT_EQ(Written(text), expected);
  for (const int throws : {0, 1}) {
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([] { return VQPABReference().SetPABID(1); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(ReturnedStatusOf([] { return VQPABDefinition().SetPABID(1); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(ReturnedStatusOf([] { return VQPABStyleName().SetPABID(1); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(StatusOf([] { return VQPABHide().GetPABID(); }), VQERR_OBJECT_NOT_INITIALIZED);
    VQSetThrowAllErrors(0);
  }
}

TEST_F(RichTextObjects, DirtGoesUpAndBytesAreRead) {
  VQRichText text = RichText(Sample());
  VQRTObject run = First(text, VQRTTYPE_STYLIZED_TEXT);
  EXPECT_FALSE(run.IsDirty());
  ASSERT_EQ(run.SetDirty(1), VQ_OK);
  EXPECT_TRUE(run.IsDirty() && text.IsDirty());
  ASSERT_EQ(run.Update(), VQ_OK);
  EXPECT_FALSE(run.IsDirty() || text.IsDirty());
  EXPECT_EQ(VQStylizedText("x").Update(), VQWARN_NOT_FOUND) << "it stands in no text";
  EXPECT_EQ(Written(text), Sample());
  EXPECT_EQ(run.GetRTObjectBody()->WriteValueBlock(), VQERR_WRONG_SITUATION) << "it has no bytes of its own";
  VQString words;
  EXPECT_EQ(run.GetText(At(text, 0), At(text, 1), &words), VQ_OK);
  EXPECT_EQ(First(text, VQRTTYPE_TEXT_POPUP).GetText(At(text, 0), At(text, 1), &words), VQERR_CURSOR_INVALID);
  const VQCompositeData data(First(text, VQRTTYPE_COMPOSITE_DATA));
  std::uint16_t word = 0;
  EXPECT_EQ(data.ReadODS(ODS_WORD, &word, 0), VQ_OK);
  EXPECT_EQ(word, data.GetCDSignature());
  EXPECT_EQ(data.ReadODS(ODS_WORD, &word, 6), VQERR_RT_INVALID);
  EXPECT_EQ(data.ReadODS(ODS_WORD, &word, ~0UL), VQERR_RT_INVALID);
  EXPECT_EQ(StatusOf([] { return VQRichText(VQItem()).IsNull(); }), VQ_OK);
}

}  // namespace
