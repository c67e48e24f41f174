// What a record stream becomes, and that it comes back byte for byte.
#include <random>

#include "tests/vq/support/records.h"
#include "vq/store/vqcreate.h"
#include "vq/store/vqdoc.h"

namespace {

using namespace vqtest;

class RichTextParse : public EngineFixture {};

struct StreamRow {
  const char* What;
  std::string Records;
  std::vector<VQRTTYPE> Types;  // in stream order
};

std::vector<StreamRow> StreamRows() {
  const std::string bold = Record(SIG_CD_TEXT_STYLE_EXT, Bytes({1, 0x80, 0, 10}));
  const std::string applet = Record(SIG_CD_HOTSPOTBEGIN, Bytes({15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}));
  const std::string field = Record(SIG_CD_FIELD, Bytes({2, 0, 0, 5}) + std::string(28, '\2'));
  const std::string stranger = Record(SIG_CD_FIELD, std::string(32, '\2'));
  const std::string extension = Record(SIG_CD_FIELD_EXTENSION, "xy");
  return {
      {"nothing", "", {}},
      {"a paragraph",
       Paragraph() + Reference(3) + Text("ab"),
       {VQRTTYPE_NEW_PARAGRAPH, VQRTTYPE_PAB_REFERENCE, VQRTTYPE_STYLIZED_TEXT}},
      {"two equal references", Reference(3) + Reference(3), {VQRTTYPE_PAB_REFERENCE, VQRTTYPE_PAB_REFERENCE}},
      {"a pad byte that is not 0", Text("abc", '\x7F') + Text("d"), {VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_STYLIZED_TEXT}},
      {"an unknown record", Unknown("data1"), {VQRTTYPE_COMPOSITE_DATA}},
      {"a length of 0", Bytes({0xE1, 0xFF, 0, 0}), {VQRTTYPE_COMPOSITE_DATA}},
      {"a style extension", bold + Text("b"), {VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_TEXT_STYLE_EXT}},
      {"a style extension ahead of no text", bold + Paragraph(), {VQRTTYPE_COMPOSITE_DATA, VQRTTYPE_NEW_PARAGRAPH}},
      {"a popup",
       Hotspot(1) + Text("t") + HotspotEnd(),
       {VQRTTYPE_TEXT_POPUP, VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_HOTSPOT_END}},
      {"a formula popup", Hotspot(1, 0x00100000) + HotspotEnd(), {VQRTTYPE_FORMULA_POPUP, VQRTTYPE_HOTSPOT_END}},
      {"a URL", Hotspot(11, 0x10000000) + HotspotEnd(), {VQRTTYPE_URL_LINK, VQRTTYPE_HOTSPOT_END}},
      {"an applet", applet + HotspotEnd(), {VQRTTYPE_JAVA_APPLET, VQRTTYPE_HOTSPOT_END}},
      {"a hotspot of no known type", Hotspot(77), {VQRTTYPE_COMPOSITE_DATA}},
      {"an end without a beginning", HotspotEnd(), {VQRTTYPE_COMPOSITE_DATA}},
      {"a button with two begins",
       Hotspot(3) + Hotspot(3) + Record(SIG_CD_BUTTON, "b") + HotspotEnd(),
       {VQRTTYPE_BUTTON, VQRTTYPE_BUTTON_PART, VQRTTYPE_BUTTON_PART, VQRTTYPE_HOTSPOT_END}},
      {"a button part alone", Record(SIG_CD_BUTTON, "b"), {VQRTTYPE_COMPOSITE_DATA}},
      {"a field with its extension", extension + field, {VQRTTYPE_TEXT_FIELD, VQRTTYPE_FIELD_EXTENSION}},
      {"a field of no known type", extension + stranger, {VQRTTYPE_COMPOSITE_DATA, VQRTTYPE_COMPOSITE_DATA}},
      {"an extension without a field",
       extension + Text("a") + extension,
       {VQRTTYPE_COMPOSITE_DATA, VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_COMPOSITE_DATA}},
      {"a table",
       TableBegin() + Cell(0, 0) + Text("a") + Cell(0, 1) + TableEnd(),
       {VQRTTYPE_TABLE, VQRTTYPE_TABLE_CELL, VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_TABLE_CELL, VQRTTYPE_TABLE_END}},
      {"a link over two cells",
       TableBegin() + Cell(0, 0) + Hotspot(11) + Text("a") + Cell(0, 1) + Text("b") + HotspotEnd() + TableEnd(),
       {VQRTTYPE_TABLE, VQRTTYPE_TABLE_CELL, VQRTTYPE_LINK_HOTSPOT, VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_TABLE_CELL,
        VQRTTYPE_STYLIZED_TEXT, VQRTTYPE_HOTSPOT_END, VQRTTYPE_TABLE_END}},
      {"a graphic",
       Record(SIG_CD_GRAPHIC, "g") + Record(SIG_CD_BITMAPHEADER, "h") + Record(SIG_CD_BITMAPSEGMENT, "s") +
           Record(SIG_CD_COLORTABLE, "c") + Text("a"),
       {VQRTTYPE_GRAPHIC, VQRTTYPE_BITMAP, VQRTTYPE_BITMAP_SEGMENT, VQRTTYPE_BITMAP_COLOR_TABLE,
        VQRTTYPE_STYLIZED_TEXT}},
      {"an OLE end alone", Record(SIG_CD_OLEEND, ""), {VQRTTYPE_COMPOSITE_DATA}},
  };
}

TEST_F(RichTextParse, GivesTheTreeAndTheSameBytes) {
  for (const StreamRow& row : StreamRows()) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Records);
    VQRTContainer top;
    ASSERT_EQ(text.GetTopContainer(&top), VQ_OK);
    std::vector<VQRTTYPE> types;
    const VQRTContainerBody* body = top.GetRTContainerBody();
    for (const VQRTObjectBody* object = body->NextInTree(body); object; object = body->NextInTree(object)) {
      types.push_back(object->GetType());
    }
    EXPECT_EQ(types, row.Types);
    EXPECT_FALSE(text.IsDirty());
    EXPECT_EQ(Written(text), row.Records);
  }
}

struct FailureRow {
  const char* What;
  std::string Records;
  VQSTATUS Status;
};

TEST_F(RichTextParse, RefusesDamageAndKeepsTheValue) {
  std::string nested;
  for (int i = 0; i < 11; ++i) nested += Hotspot(1);
  const FailureRow rows[] = {
      {"a record above the limit", Bytes({0xE0, 0, 1, 4, 1, 0}), VQERR_CORRUPTED},
      {"a record longer than the value", Bytes({0x85, 0xFF, 40, 0, 1, 2}), VQERR_RT_INVALID},
      {"half a header", Bytes({0x85, 0xFF}), VQERR_RT_INVALID},
      {"one byte", Bytes({0x81}), VQERR_RT_INVALID},
      {"eleven open hotspots", nested, VQERR_RT_STACK_OVERFLOW},
      {"an open hotspot", Hotspot(1) + Text("a"), VQERR_RT_TRUNCATED},
      {"a cell without a table", Cell(0, 0), VQERR_RT_CORRUPT_TABLE},
      {"a table end in a popup", TableBegin() + Cell(0, 0) + Hotspot(1) + TableEnd(), VQERR_RT_CORRUPT_TABLE},
      {"a segment ahead of its header", Record(SIG_CD_GRAPHIC, "") + Record(SIG_CD_BITMAPSEGMENT, ""),
       VQERR_RT_CORRUPT_GRAPHIC},
      {"a segment behind the colours",
       Record(SIG_CD_GRAPHIC, "") + Record(SIG_CD_BITMAPHEADER, "") + Record(SIG_CD_COLORTABLE, "") +
           Record(SIG_CD_BITMAPSEGMENT, ""),
       VQERR_RT_CORRUPT_GRAPHIC},
  };
  for (const FailureRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Records);
    VQString string;
    VQRichText whole = RichText(Text("ab"));
    VQRTCursor cursor = At(whole, 1);
    for (const int throws : {0, 1}) {
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.GetText(&string); }), row.Status);
      EXPECT_EQ(ReturnedStatusOf([&] { return text.Append("x"); }), row.Status);
      EXPECT_EQ(ReturnedStatusOf([&] { return whole.Append(text); }), row.Status);
      EXPECT_EQ(ReturnedStatusOf([&] { return whole.Insert(text, &cursor); }), row.Status);
      EXPECT_EQ(StatusOf([&] { return text.GetSize() > 0; }), row.Status);
      EXPECT_EQ(VQGetThrowAllErrors(), throws);
      VQSetThrowAllErrors(0);
    }
    EXPECT_EQ(text.GetValueSize(), row.Records.size() + 2);
    EXPECT_FALSE(text.IsDirty() || whole.IsDirty());
    EXPECT_EQ(Written(whole), Text("ab"));
  }
}

VQSTATUS Refuse(const VQRTPARSERERRORDATA&) { throw static_cast<VQSTATUS>(VQERR_OUT_OF_RANGE); }
VQSTATUS Clear(const VQRTPARSERERRORDATA& data) {
  VQString text;
  const bool segment = data.Signature == SIG_CD_BITMAPSEGMENT;
  EXPECT_EQ(data.Status, segment ? VQERR_RT_CORRUPT_GRAPHIC : VQERR_RT_TRUNCATED);
  EXPECT_EQ(data.Offset, segment ? 18u : 58u);
  EXPECT_EQ(data.RecordLength, segment ? 7u : 0u);
  EXPECT_EQ(data.RichText->GetText(&text), VQERR_WRONG_SITUATION);
  EXPECT_EQ(data.RichText->GetItemBody()->Close(), VQERR_WRONG_SITUATION);
  return VQ_OK;
}

TEST_F(RichTextParse, AsksTheHandler) {
  const std::string graphic = Record(SIG_CD_GRAPHIC, "") + Record(SIG_CD_BITMAPSEGMENT, "s");
  const std::string records = Text("a") + graphic + Text("b") + Hotspot(1) + Text("c");
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("damaged", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
  VQRichText body;
  ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
  VQString text;
  Session->SetRTParserErrorHandler(&Refuse);
  for (int again = 0; again < 2; ++again) EXPECT_EQ(body.GetText(&text), VQERR_OUT_OF_RANGE);
  Session->SetRTParserErrorHandler(&Clear);
  EXPECT_EQ(body.GetText(&text), VQ_OK);
  EXPECT_EQ(TextOf(text), "ab");
  EXPECT_FALSE(body.IsDirty());
  Session->SetRTParserErrorHandler(nullptr);
}

TEST_F(RichTextParse, RefusesWhatIsClosed) {
  VQRichText parsed = RichText(Text("a")), fresh = RichText(Text("a"));
  EXPECT_EQ(Plain(parsed), "a");
  VQRTContainer top;
  ASSERT_EQ(parsed.GetTopContainer(&top), VQ_OK);
  for (VQRichText* text : {&parsed, &fresh}) {
    ASSERT_EQ(text->GetRichTextBody()->Close(), VQ_OK);
    EXPECT_EQ(text->GetRichTextBody()->Close(), VQWARN_NOT_OPEN);
    for (const int throws : {0, 1}) {
      VQString string;
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return text->GetText(&string); }), VQERR_OBJECT_CLOSED);
      EXPECT_EQ(ReturnedStatusOf([&] { return text->Append("b"); }), VQERR_OBJECT_CLOSED);
      EXPECT_EQ(ReturnedStatusOf([&] { return RichText("").Append(*text); }), VQERR_OBJECT_CLOSED);
      EXPECT_EQ(ReturnedStatusOf([&] { return top.Append("b"); }), VQERR_OBJECT_CLOSED);
      VQSetThrowAllErrors(0);
    }
  }
  const VQRichText empty = RichText("");
  ASSERT_EQ(empty.GetTopContainer(&top), VQ_OK);
  EXPECT_EQ(top.GetRTContainerBody()->GetIndexCount(), 1u);
  EXPECT_EQ(top.GetRTContainerBody()->GetIndexValue(), VQRT_MIN_INDEX_VALUE);
}

TEST_F(RichTextParse, CountsTheMissingPadByteOnlyWhereItIs) {
  std::string records = Text("abc");
  records.pop_back();
  VQRichText text = RichText(records);
  EXPECT_EQ(text.GetSize(), 11u);
  EXPECT_EQ(Plain(text), "abc");
}

TEST_F(RichTextParse, TakesAnyBytes) {
  std::mt19937 random(4711);
  const std::string known = Text("word") + Paragraph() + Reference(1) + Hotspot(1) + HotspotEnd() + TableBegin() +
                            Cell(0, 0) + TableEnd() + Unknown("xyz");
  int parsed = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string records = known;
    for (unsigned hits = random() % 4; hits > 0; --hits)
      records[random() % records.size()] = static_cast<char>(random());
    VQRichText text = RichText(records);
    if (StatusOf([&] { return text.GetRichTextBody()->Initialize(); }) != VQ_OK) continue;
    ++parsed;
    EXPECT_EQ(Written(text), records);
  }
  EXPECT_GT(parsed, 500);
}

}  // namespace
