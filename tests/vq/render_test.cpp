// Documents as they read: through a form, and as a list of their items.
#include "engine/render.h"

#include <fstream>
#include <iterator>

#include "engine/records.h"
#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/automation/vqformula.h"
#include "vq/forms/vqformb.h"
#include "vq/richobjects/vqrtattach.h"
#include "vq/richtext/fonttable.h"
#include "vq/values/vqnumber.h"

namespace {

using namespace vqtest;

std::string Word(std::size_t value) { return Bytes({static_cast<int>(value & 255), static_cast<int>(value >> 8)}); }

// A field record with nothing but its name, in 10 point bold.
std::string Field(const std::string& name, const std::string& nameLength = "") {
  const std::string fixed = Word(0) + Word(0x0501) + Word(0) + Bytes({8, 0, 0, 0}) + Bytes({0, 0, 0, 2}) +
                            Bytes({1, 1, 0, 10}) + Word(0) + Word(0) + Word(0) + Word(0) +
                            (nameLength.empty() ? Word(name.size()) : nameLength) + Word(0) + Word(0);
  return Record(0xFF8A, fixed + name);
}

// A field of texts with a value formula.
std::string Computed(const std::string& name, int flags, const std::string& formula) {
  const VQFormula compiled(Store(formula));
  const std::string code(compiled.GetCode(), compiled.GetCodeLength());
  return Record(0xFF8A, Word(static_cast<std::size_t>(flags)) + Word(0x0500) + Word(0) + Bytes({8, 0, 0, 0}) +
                            Bytes({0, 0, 0, 2}) + Bytes({1, 1, 0, 10}) + Word(code.size()) + Word(0) + Word(0) +
                            Word(0) + Word(name.size()) + Word(0) + Word(0) + code + name);
}
constexpr int kDisplay = 0;
constexpr int kStored = FIELD_COMPUTED;
constexpr int kComposed = FIELD_COMPUTED | FIELD_WHEN_COMPOSED;

// The place of a subform, with something inside that stands for it.
std::string Inserted(const std::string& name, const std::string& inside = Text("here")) {
  return Record(SIG_CD_HOTSPOTBEGIN, Word(14) + Bytes({0, 0, 0, 0}) + Word(name.size() + 1) + name + '\0') + inside +
         HotspotEnd();
}
std::string Link() { return Record(SIG_CD_LINK_A, Word(0)); }
std::string LinkHotspot() { return Record(SIG_CD_HOTSPOTBEGIN, Word(11) + Bytes({0, 0, 0, 0}) + Word(2) + Word(0)); }

class Rendered : public StoreFixture {
 protected:
  VQSlate NewForm(const std::string& name, const std::string& body, const std::string& flags = "") {
    VQSlate form;
    EXPECT_EQ(Db.CreateSlate(VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16, &form), VQ_OK);
    SetText(form, "$TITLE", name);
    if (!flags.empty()) SetText(form, "$Flags", flags);
    EXPECT_EQ(form.CreateItem("$Body", TYPE_COMPOSITE, body.data(), body.size()), VQ_OK);
    EXPECT_EQ(form.Save(), VQ_OK);
    return form;
  }
  struct Outcome {
    std::string text, table;
    std::size_t links = 0, lead = 0;  // of them so many somewhere
  };
  Outcome RenderedBy(const VQSlate& form, const VQDocument& document) {
    Outcome outcome;
    ENGHANDLE target = 0, made = 0;
    EXPECT_EQ(EngSlateCreateTemp(Db.GetDatabaseBody()->GetHandle(), reinterpret_cast<const ENGCHAR*>("R"), &target),
              ENG_OK);
    EXPECT_EQ(EngSlateRenderToItem(target, form.GetSlateBody()->GetHandle(), document.GetSlateBody()->GetHandle()),
              ENG_OK);
    EXPECT_EQ(EngSlateRenderFinish(target, 0, 0, 0, 0), ENG_OK);
    EXPECT_EQ(EngSlateRenderTake(target, &made), ENG_OK);
    EXPECT_EQ(EngSlateRenderClose(target), ENG_OK);
    VQSlate rendered;
    VQRichText text, table;
    VQString words;
    EXPECT_EQ(rendered.BindToHandle(Db.GetDatabaseBody(), made), VQ_OK);
    EXPECT_EQ(rendered.GetItem("R", &text), VQ_OK);
    EXPECT_EQ(text.GetText(&words), VQ_OK);
    outcome.text = TextOf(words);
    for (const VQRTTYPE type : {VQRTTYPE_LINK, VQRTTYPE_LINK_HOTSPOT}) {
      VQRTObject link;
      for (VQSTATUS status = text.FindFirst(type, &link); status == VQ_OK; ++outcome.links) {
        unsigned char position[2] = {};
        const std::uint32_t offset = type == VQRTTYPE_LINK ? 4 : 12;
        EXPECT_EQ(link.GetRTObjectBody()->ReadRecord(offset, position, sizeof position), VQ_OK);
        outcome.lead += position[0] + position[1] == 0;
        status = text.FindNext(VQRTObject(link), type, &link);
      }
    }
    if (rendered.GetItem("$Links", &table) == VQ_OK) outcome.table = Written(table);
    return outcome;
  }
  // What a text says after `append`; its status where that fails.
  template <typename Append>
  static std::string TextAfter(Append append) {
    VQRichText text;
    EXPECT_EQ(text.Create(), VQ_OK);
    if (const VQSTATUS status = append(text)) return "?" + std::to_string(status);
    VQString all;
    EXPECT_EQ(text.GetText(&all), VQ_OK);
    return TextOf(all);
  }
};

TEST_F(Rendered, FieldsBecomeTheirValues) {
  VQDocument document = NewDocument("a subject");
  SetText(document, "Form", "Memo");
  VQNumbers number;
  VQText list;
  ASSERT_EQ(document.CreateItem("Price", &number), VQ_OK);
  number << 12.5;
  ASSERT_EQ(document.CreateItem("Names", &list), VQ_OK);
  list << VQString("Ann") << VQString("Bob");
  const struct {
    const char* title;
    std::string body, text;
  } rows[] = {
      {"a text", Text("Subject: ") + Field("Subject"), "Subject: a subject"},
      {"a number", Field("Price") + Text(" each"), "12.5 each"},
      {"a list", Field("Names"), "Ann, Bob"},
      {"a missing item", Text("<") + Field("None") + Text(">"), "<>"},
      {"an extension ahead", Record(0xFFB0, std::string(20, 0)) + Field("Subject"), "a subject"},
      {"paragraphs", Reference(1) + Text("a") + Paragraph() + Reference(2) + Field("Subject"), "a\na subject"},
      {"an unknown record", Unknown("x") + Field("Subject"), "a subject"},
      {"a name that leads out", Field("Subject", Word(200)), "?4103"},
      {"a record that leads out", Field("Subject") + Bytes({0x85, 0xFF, 200, 0}), "?4103"},
      {"a short field", Record(0xFF8A, "short"), "?4103"},
  };
  for (const auto& row : rows) {
    const VQSlate form = NewForm("F", row.body);
    EXPECT_EQ(TextAfter([&](VQRichText& text) { return text.AppendRenderedDocument(document, form); }), row.text)
        << row.title;
  }
  const auto alone = [&](VQRichText& text) { return text.AppendRenderedDocument(document); };
  EXPECT_EQ(TextAfter(alone), "Subject: a subject\nForm: Memo\nPrice: 12.5\nNames: Ann, Bob");
  NewForm("Memo", Text("memo ") + Field("Subject"));
  EXPECT_EQ(TextAfter(alone), "memo a subject") << "the form that the document names";
  ASSERT_EQ(document.Save(), VQ_OK);
  ASSERT_EQ(document.Close(), VQ_OK);
  EXPECT_EQ(TextAfter(alone), "memo a subject");
  EXPECT_FALSE(document.IsOpen()) << "as it was";
}

// A rendering that fails leaves the text, and all slates closed that were; a document can go into a text of its own.
TEST_F(Rendered, LeavesAllAsItWas) {
  VQDocument document = NewDocument("s");
  VQRichText body;
  ASSERT_EQ(document.CreateItem("Body", &body), VQ_OK);
  ASSERT_EQ(body.Append("kept"), VQ_OK);
  ASSERT_EQ(document.Save(), VQ_OK);
  VQSlate bad = NewForm("Bad", Text("x") + Record(0xFF8A, "short")), good = NewForm("Good", Text("<") + Field("Body"));
  for (const int throws : {0, 1}) {
    VQRichText text = RichText(Text("before")), none;
    ASSERT_EQ(document.Close(), VQ_OK);
    ASSERT_EQ(bad.Close(), VQ_OK);
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.AppendRenderedDocument(document, bad); }), 4103u);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.AppendRenderedDocument(VQSlate()); }), VQERR_UNINITIALIZED_ARGUMENT);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.AppendRenderedDocument(document, VQSlate()); }),
              VQERR_UNINITIALIZED_ARGUMENT);
    EXPECT_EQ(ReturnedStatusOf([&] { return none.AppendRenderedDocument(document); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(VQGetThrowAllErrors(), throws);
    VQSetThrowAllErrors(0);
    EXPECT_FALSE(document.IsOpen() || bad.IsOpen());
    EXPECT_EQ(Written(text), Text("before"));
    ASSERT_EQ(document.Open(), VQ_OK);
    ASSERT_EQ(bad.Open(), VQ_OK);
  }
  ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
  ASSERT_EQ(body.Append("!"), VQ_OK);
  ASSERT_EQ(body.AppendRenderedDocument(document, good), VQ_OK);
  EXPECT_EQ(Plain(body), "kept!<kept!");
  EXPECT_FALSE(document.HasItem("$$$CPPAPITempRTItem$$$"));
}

// The form that a document names, whatever else has the name: by its name, an alias, or all of them.
TEST_F(Rendered, TheFormThatADocumentNames) {
  NewForm("Memo", Text("a subform"), "U");
  NewForm("Memo|memo", Text("the form"));
  NewForm("Only a subform", Text("a subform"), "U");
  const std::string name(100, 'n');
  NewForm(name, Text("a long name"));
  const struct {
    std::string named, text;
    bool found;
  } rows[] = {
      {"Memo", "the form", true},         {"memo", "the form", true},  {"Memo|memo", "the form", true},
      {"Memo;gone", "the form", true},    {name, "a long name", true}, {"Only a subform", "", false},
      {std::string(600, 'n'), "", false}, {"|Memo", "", false},
  };
  for (const auto& row : rows) {
    VQDocument document = NewDocument("s");
    SetText(document, "Form", row.named);
    const std::string all = "Subject: s\nForm: " + row.named;
    EXPECT_EQ(TextAfter([&](VQRichText& text) { return text.AppendRenderedDocument(document); }),
              row.found ? row.text : all);
    EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), row.found ? VQ_OK : ENG_ERR_NO_FORM)
        << row.named;
    VQForm form;
    ASSERT_EQ(document.GetFormSlate(&form), VQ_OK) << row.named;
    EXPECT_EQ(form.IsNull(), !row.found) << row.named;
  }
}

// What a reader sees: the formulas of fields that are not stored, over a document that stays as it is.
TEST_F(Rendered, FormulasOfFieldsAreRun) {
  VQDocument document = NewDocument("a");
  SetText(document, "Kept", "old");
  NewForm("Sub", Text("(") + Computed("Inner", kDisplay, "Outer + \"i\"") + Text(")"), "U");
  NewForm("Loop", Text(".") + Inserted("Loop"), "U");
  NewForm("Wide", Inserted("Wide") + Inserted("Wide") + Inserted("Wide") + Inserted("Wide"), "U");
  const struct {
    const char* title;
    std::string body, text;
  } rows[] = {
      {"for display", Computed("D", kDisplay, "Subject + \"!\""), "a!"},
      {"for display, whatever is stored", Computed("Kept", kDisplay, "\"new\""), "new"},
      {"computed and stored", Computed("Kept", kStored, "\"new\""), "old"},
      {"computed and not stored", Computed("C", kStored, "\"c\""), "c"},
      {"only of new documents", Computed("C", kComposed, "\"c\""), ""},
      {"a default that nobody took", Computed("E", FIELD_EDITABLE, "\"e\""), ""},
      {"one of another", Computed("A", kDisplay, "\"1\"") + Computed("B", kDisplay, "a + \"2\""), "112"},
      {"a formula that fails", Computed("F", kDisplay, "1 + \"a\""), "?" + std::to_string(ENG_ERR_FORMULA_TYPE)},
      {"a subform", Computed("Outer", kDisplay, "\"o\"") + Inserted("Sub") + Text("."), "o(oi)."},
      {"a subform that is gone", Text("<") + Inserted("None") + Text(">"), "<>"},
      {"a place with hotspots", Inserted("Sub", Hotspot(77) + Hotspot(3) + Hotspot(3) + HotspotEnd()) + Text("."),
       "(i)."},
      {"a subform in itself", Inserted("Loop"), "........"},
      {"and many times", Inserted("Wide"), "?4103"},
      {"other hotspots", Hotspot(1) + Text("x") + HotspotEnd(), "x"},
  };
  for (const auto& row : rows) {
    const VQSlate form = NewForm("F", row.body);
    EXPECT_EQ(TextAfter([&](VQRichText& text) { return text.AppendRenderedDocument(document, form); }), row.text)
        << row.title;
  }
  const std::string place = Inserted("Sub") + Text("."), rest = Text("here") + HotspotEnd() + Text(".");
  VQSlate split = NewForm("F", place.substr(0, place.size() - rest.size()));
  ASSERT_EQ(split.CreateItem("$Body", TYPE_COMPOSITE, rest.data(), rest.size(), 0, VQITEMOPTION_APPEND), VQ_OK);
  EXPECT_EQ(TextAfter([&](VQRichText& text) { return text.AppendRenderedDocument(document, split); }), "(i).")
      << "a subform's place in two items";
  EXPECT_EQ(TextAt(document, "Kept") + TextAt(document, "C") + TextAt(document, "D"), "old--") << "as it was";
  const VQSlate form = NewForm("F", Computed("C", kComposed, "\"c\""));
  ASSERT_EQ(Db.CreateDocument(&document), VQ_OK);
  EXPECT_EQ(TextAfter([&](VQRichText& text) { return text.AppendRenderedDocument(document, form); }), "c");
}

// A link leads where it did, without a table nowhere, or is not there.
TEST_F(Rendered, LinksComeWithTheirTable) {
  const struct {
    const char* title;
    std::string form_table, document_table, table;
    std::size_t links, lead;
  } rows[] = {
      {"none", "", "", "", 3, 0},        {"the form's", "f", "", "f", 3, 1}, {"the document's", "", "d", "d", 3, 2},
      {"the same", "s", "s", "s", 3, 3}, {"two", "f", "d", "d", 2, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    VQDocument document = NewDocument("s");
    const std::string value = Text("v") + Link() + LinkHotspot() + Text("w") + HotspotEnd();
    ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, value.data(), value.size()), VQ_OK);
    VQSlate form = NewForm("F", Text("f") + Link() + Field("Body"));
    const auto put = [](VQSlate& slate, const char* name, const std::string& table) {
      const std::string records = Unknown(table);
      if (!table.empty()) {
        EXPECT_EQ(slate.CreateItem(name, TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
      }
      EXPECT_EQ(slate.Save(), VQ_OK);
    };
    put(document, "$Links", row.document_table);
    put(form, "$FormLinks", row.form_table);
    const auto rendered = RenderedBy(form, document);
    EXPECT_EQ(rendered.table, row.table.empty() ? "" : Unknown(row.table));
    EXPECT_EQ(rendered.links, row.links);
    EXPECT_EQ(rendered.lead, row.lead);
    EXPECT_EQ(rendered.text, "fvw");
  }
}

// Paragraph numbers and faces of form and document are each their own; attachments come along.
TEST_F(Rendered, RichTextsInFields) {
  VQDocument document = NewDocument("s"), target = NewDocument("t");
  VQRichText body, text;
  VQFontTable fonts;
  unsigned char face = 0;
  ASSERT_EQ(document.CreateItem("Body", &body), VQ_OK);
  ASSERT_EQ(body.Append("first\nsecond "), VQ_OK);
  VQRTCursor cursor;
  std::ofstream(Home.Path("file")) << "bytes";
  ASSERT_EQ(body.GetEndCursor(&cursor), VQ_OK);
  ASSERT_EQ(body.CreateAttachment(Store(Home.Path("file")), &cursor), VQ_OK);
  ASSERT_EQ(document.CreateItem("$Fonts", &fonts), VQ_OK);
  ASSERT_EQ(fonts.AddFace(0x22, "Garamond", &face), VQ_OK);
  ASSERT_EQ(document.Save(), VQ_OK);
  const VQSlate form = NewForm("F", Reference(1) + Text("[") + Field("Body") + Text("]"));
  ASSERT_EQ(target.CreateItem("Body", &text), VQ_OK);
  ASSERT_EQ(text.AppendRenderedDocument(document, form), VQ_OK);
  ASSERT_EQ(target.Save(), VQ_OK);
  ASSERT_EQ(Db.DeleteSlate(&document), VQ_OK);
  VQString all;
  ASSERT_EQ(text.GetText(&all), VQ_OK);
  EXPECT_EQ(TextOf(all), "[first\nsecond file - 5 bytes]");
  VQAttachment attachment;
  ASSERT_EQ(target.GetAttachment("file", &attachment), VQ_OK);
  EXPECT_EQ(attachment.Detach(Store(Home.Path("out"))), VQ_OK);
}

// What a form of another database inserts and shows is its own; files that share a name stay two.
TEST_F(Rendered, FormsElsewhereBringTheirOwn) {
  const auto write = [this](const char* bytes) {
    std::ofstream(Home.Path("file")) << bytes;
    return Store(Home.Path("file"));
  };
  VQDatabase second;
  ASSERT_EQ(Session->CreateDatabase("second", &second, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document = NewDocument("s"), target = NewDocument("t");
  NewForm("Sub", Text("another one"), "U");
  ASSERT_EQ(document.CreateAttachment(write("document's")), VQ_OK);
  std::swap(Db, second);
  NewForm("Sub", Text("(") + Computed("Inner", kDisplay, "Subject + \"i\"") + Text(")"), "U");
  VQSlate form = NewForm("F", Inserted("Sub") + Text(" "));
  std::swap(Db, second);
  VQRichText design, text, all;
  VQRTCursor cursor;
  ASSERT_EQ(form.GetItem("$Body", &design), VQ_OK);
  ASSERT_EQ(design.GetEndCursor(&cursor), VQ_OK);
  ASSERT_EQ(design.CreateAttachment(write("form's"), &cursor), VQ_OK);
  ASSERT_EQ(design.Append(RichText(Field("Body"))), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQAttachment attached;
  ASSERT_EQ(document.GetAttachment("file", &attached), VQ_OK);
  ASSERT_EQ(document.CreateItem("Body", &all), VQ_OK);
  ASSERT_EQ(all.Append(VQRTAttachment(attached)), VQ_OK);
  ASSERT_EQ(target.CreateItem("Body", &text), VQ_OK);
  ASSERT_EQ(text.AppendRenderedDocument(document, form), VQ_OK);
  ASSERT_EQ(target.Save(), VQ_OK);
  EXPECT_EQ(Plain(text), "(si) file - 6 bytesfile - 10 bytes");
  std::string shown;
  VQRTObject found;
  for (VQSTATUS status = text.FindFirst(VQRTTYPE_ATTACHMENT, &found); status == VQ_OK;
       status = text.FindNext(VQRTObject(found), VQRTTYPE_ATTACHMENT, &found)) {
    const VQRTAttachment attachment(found);
    EXPECT_EQ(attachment.Detach(Store(Home.Path("out"))), VQ_OK);
    std::ifstream out(Home.Path("out"));
    shown += TextOf(attachment.GetAttachmentName()) + "=" + std::string(std::istreambuf_iterator<char>(out), {}) + ";";
  }
  EXPECT_EQ(shown, "file=form's;file(1)=document's;");
}

// The engine's own operations: styled text, then a document, in one target.
TEST_F(Rendered, TargetsOfTheEngine) {
  VQDocument document = NewDocument("s");
  const ENGHANDLE db = Db.GetDatabaseBody()->GetHandle(), slate = document.GetSlateBody()->GetHandle();
  const auto* name = reinterpret_cast<const ENGCHAR*>("R");
  const auto* words = reinterpret_cast<const ENGCHAR*>("one\r\ntwo");
  ENGHANDLE target = 0, made = 0;
  std::uint16_t style = 0;
  ASSERT_EQ(EngSlateCreateTemp(db, name, &target), ENG_OK);
  EXPECT_EQ(EngSlateRenderTake(target, &made), ENG_ERR_ARGUMENT) << "before it is finished";
  EXPECT_EQ(EngSlateRenderAppend(target, 7, 0x0A0B0001, words, 8, 0), ENG_ERR_ARGUMENT) << "no such style";
  ASSERT_EQ(EngSlateRenderOpenStyle(target, reinterpret_cast<const ENGCHAR*>("Normal"), nullptr, &style), ENG_OK);
  ASSERT_EQ(EngSlateRenderAppend(target, style, 0x0A0B0001, words, 8, 0), ENG_OK);
  VQDocument broken = NewDocument("b");
  const std::string records = Text("lost") + Bytes({0x85, 0xFF, 200, 0});
  ASSERT_EQ(broken.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
  const VQSlate form = NewForm("F", Reference(1) + Text("lost") + Field("Body"));
  EXPECT_EQ(EngSlateRenderToItem(target, form.GetSlateBody()->GetHandle(), broken.GetSlateBody()->GetHandle()),
            ENG_ERR_RECORD_DAMAGED);
  ASSERT_EQ(EngSlateRenderToItem(target, 0, slate), ENG_OK);
  ASSERT_EQ(EngSlateRenderFinish(target, 0, 0, 0, 0), ENG_OK);
  EXPECT_EQ(EngSlateRenderAppend(target, 0, 0, words, 8, 0), ENG_ERR_ARGUMENT);
  ASSERT_EQ(EngSlateRenderTake(target, &made), ENG_OK);
  EXPECT_EQ(EngSlateRenderTake(target, &made), ENG_ERR_ARGUMENT);
  EXPECT_EQ(EngSlateRenderClose(target), ENG_OK);
  EXPECT_EQ(EngSlateRenderClose(target), ENG_ERR_INVALID_HANDLE);
  VQSlate rendered;
  ASSERT_EQ(rendered.BindToHandle(Db.GetDatabaseBody(), made), VQ_OK);
  VQRichText text;
  VQString all;
  ASSERT_EQ(rendered.GetItem("R", &text), VQ_OK);
  ASSERT_EQ(text.GetText(&all), VQ_OK);
  EXPECT_EQ(TextOf(all), "one\ntwo\nSubject: s");
}

}  // namespace
