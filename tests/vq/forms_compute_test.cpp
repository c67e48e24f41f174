// Documents run through their forms: {fields, document before, document after}, and what a failure leaves.
#include "tests/vq/support/forms_fixture.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::FieldBytes;
using vqtest::ReturnedStatusOf;
using vqtest::Store;
using vqtest::StoredItem;
using vqtest::TextOf;

std::string Code(const std::string& text) {
  if (text.empty()) return {};
  const VQFormula formula(Store(text));
  return {formula.GetCode(), formula.GetCodeLength()};
}

struct FieldRow {
  std::string name, value, translation, validation;
  unsigned flags = FIELD_EDITABLE;
  unsigned data_type = TYPE_TEXT;
  bool late = false;

  std::string Records() const {
    FieldBytes field = vqtest::NamedField(name);
    field.Flags = flags;
    field.DataType = data_type;
    field.Value = Code(value);
    field.Translation = Code(translation);
    field.Validation = Code(validation);
    return (late ? vqtest::ExtensionRecord(field.Length(), FIELDEXTENSION_COMPUTE_LATE) : "") + field.Record();
  }
};

class ComputeWithForm : public vqtest::FormsFixture {
 protected:
  void MakeForm(const std::vector<FieldRow>& fields) {
    std::string records;
    for (const FieldRow& field : fields) records += field.Records();
    if (!Form.IsNull()) {
      ASSERT_EQ(Db.DeleteForm(&Form), VQ_OK);
    }
    Form = FormOfFields(records);
  }
  void TearDown() override {
    Form = VQForm();
    FormsFixture::TearDown();
  }
  VQDocument Unsaved(const std::vector<std::pair<std::string, std::string>>& items) {
    VQDocument document;
    EXPECT_EQ(Db.CreateDocument(&document), VQ_OK);
    SetText(document, "Form", "Stored");
    for (const auto& [name, text] : items) SetText(document, name, text);
    return document;
  }
  VQForm Form;
};

constexpr unsigned kComputed = FIELD_COMPUTED;
constexpr unsigned kComposed = FIELD_COMPUTED | FIELD_WHEN_COMPOSED;
constexpr unsigned kDisplay = 0;

TEST_F(ComputeWithForm, WhatARunMakesOfADocument) {
  struct Row {
    const char* what;
    std::vector<FieldRow> fields;
    std::vector<std::pair<std::string, std::string>> before, after;  // "-" for no item
  };
  const Row rows[] = {
      {"a default for what is missing",
       {{"A", "\"x\"", "", ""}, {"B", "\"y\"", "", ""}},
       {{"A", "mine"}},
       {{"A", "mine"}, {"B", "y"}}},
      {"computed anew", {{"A", "B + \"!\"", "", "", kComputed}}, {{"A", "old"}, {"B", "b"}}, {{"A", "b!"}}},
      {"in the order of the fields",
       {{"A", "B", "", "", kComputed}, {"B", "\"1\"", "", "", kComputed}, {"C", "B", "", "", kComputed}},
       {{"B", "0"}},
       {{"A", "0"}, {"B", "1"}, {"C", "1"}}},
      {"translated before what uses it",
       {{"A", "", "@UpperCase(A)", ""}, {"B", "A", "", "", kComputed}},
       {{"A", "x"}},
       {{"A", "X"}, {"B", "X"}}},
      {"the default is translated too", {{"A", "\"x\"", "A + A", ""}}, {}, {{"A", "xx"}}},
      {"nothing to translate", {{"A", "", "A + A", ""}}, {}, {{"A", "-"}}},
      {"for display, and for others",
       {{"A", "\"shown\"", "", "", kDisplay}, {"B", "A", "", "", kComputed}},
       {},
       {{"A", "-"}, {"B", "shown"}}},
      {"composed in a new document", {{"A", "\"x\"", "", "", kComposed}}, {{"A", "old"}}, {{"A", "x"}}},
      {"behind validation",
       {{"A", "B", "", "", kComputed, TYPE_TEXT, true}, {"B", "\"b\"", "", "", kComputed}},
       {{"B", "0"}},
       {{"A", "b"}}},
      {"an assignment of a formula",
       {{"A", "FIELD B := \"set\"; \"a\"", "", "", kComputed}},
       {},
       {{"A", "a"}, {"B", "set"}}},
      {"a number in a field of texts", {{"A", "2 * 3", "", "", kComputed}}, {}, {{"A", "6"}}},
      {"a list of texts as numbers",
       {{"N", "\"1\":\"2.5\"", "", "", kComputed, TYPE_NUMBER}, {"A", "N * 2", "", "", kComputed}},
       {},
       {{"A", "2|5"}}},
      {"a number from an empty text", {{"N", "\"\"", "", "", kComputed, TYPE_NUMBER}}, {}, {{"N", ""}}},
      {"a time in a field of texts", {{"A", "[03/01/2026]", "", "", kComputed}}, {}, {{"A", "03/01/2026"}}},
      {"a value that a formula has taken away",
       {{"A", "FIELD A := @DeleteField; \"x\"", "", ""}, {"B", "FIELD C := @DeleteField; \"b\"", "", "", kComputed}},
       {{"C", "c"}},
       {{"A", "x"}, {"B", "b"}, {"C", "-"}}},
      {"a default that is empty", {{"A", "\"\"", "\"t\"", ""}}, {}, {{"A", "t"}}},
      {"late, but in the order of the fields",
       {{"A", "C", "", "", kComputed, TYPE_TEXT, true}, {"C", "\"c\"", "", "", kComputed, TYPE_TEXT, true}},
       {{"C", "0"}},
       {{"A", "0"}, {"C", "c"}}},
      {"the default is validated", {{"A", "\"d\"", "", "@If(A = \"d\"; \"\"; \"no\")"}}, {}, {{"A", "d"}}},
      {"accepted", {{"A", "", "", "@If(A = \"x\"; @Success; \"no\")"}}, {{"A", "x"}}, {{"A", "x"}}},
  };
  for (const Row& row : rows) {
    MakeForm(row.fields);
    VQDocument document = Unsaved(row.before);
    EXPECT_EQ(document.ComputeWithForm(0), VQ_OK) << row.what;
    for (const auto& [name, text] : row.after) EXPECT_EQ(TextAt(document, name), text) << row.what << ' ' << name;
  }
}

TEST_F(ComputeWithForm, AFailureNamesItsField) {
  struct Row {
    const char* what;
    std::vector<FieldRow> fields;
    VQSTATUS status;
    const char *field, *message;
  };
  const FieldRow first{"First", "\"new\"", "", "", kComputed};
  const Row rows[] = {
      {"refused with words", {first, {"A", "", "", "\"too short\""}}, ENG_ERR_COMPUTE_REFUSED, "A", "too short"},
      {"refused by name",
       {first, {"A", "", "", "@If(A = \"a\"; @Failure(\"not a\"); @Success)"}},
       ENG_ERR_COMPUTE_REFUSED,
       "A",
       "not a"},
      {"refused by an empty text", {first, {"A", "", "", "@Failure(\"\")"}}, ENG_ERR_COMPUTE_REFUSED, "A", ""},
      {"refused by a list", {first, {"A", "", "", "\"a\":\"b\""}}, ENG_ERR_COMPUTE_REFUSED, "A", ""},
      {"validated although it is missing",
       {first, {"B", "", "", "@Failure(\"no B\")"}},
       ENG_ERR_COMPUTE_REFUSED,
       "B",
       "no B"},
      {"the first of two", {first, {"A", "", "", "\"1\""}, {"B", "", "", "\"2\""}}, ENG_ERR_COMPUTE_REFUSED, "A", "1"},
      {"refused without", {first, {"A", "", "", "0"}}, ENG_ERR_COMPUTE_REFUSED, "A", ""},
      {"the formula fails", {first, {"B", "1 / 0", "", "", kComputed}}, ENG_ERR_FORMULA_DIVISION, "B", ""},
      {"the wrong type", {first, {"N", "[01/02/2026]", "", "", kComputed, TYPE_NUMBER}}, ENG_ERR_FORMULA_TYPE, "N", ""},
      {"no number", {first, {"N", "\"many\"", "", "", kComputed, TYPE_NUMBER}}, ENG_ERR_NUMBER_PARSE, "N", ""},
  };
  for (const Row& row : rows) {
    MakeForm(row.fields);
    for (const int go_on : {0, 1}) {
      VQDocument document = Unsaved({{"A", "a"}, {"First", "old"}});
      VQString field, message;
      EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(go_on, &field, &message); }), row.status)
          << row.what;
      EXPECT_EQ(TextOf(field), row.field) << row.what;
      EXPECT_EQ(TextOf(message), row.message) << row.what;
      EXPECT_EQ(TextAt(document, "First"), go_on != 0 ? "new" : "old") << row.what;
      EXPECT_EQ(document.HasItem(Store("N")), 0) << row.what;
    }
  }
}

// A line break is a zero byte in an item: as a name it must fail before the run changes anything.
TEST_F(ComputeWithForm, ANameThatNoItemCanHave) {
  MakeForm({{"First", "\"new\"", "", "", kComputed}, {"Last", "@SetField(A; \"x\")", "", "", kComputed}});
  VQDocument document = Unsaved({{"First", "old"}, {"A", std::string("two\0lines", 9)}});
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), ENG_ERR_ITEM_NAME);
  EXPECT_EQ(TextAt(document, "First"), "old");
}

// An item that somebody holds is asked for before another one changes.
TEST_F(ComputeWithForm, AnItemThatIsLocked) {
  MakeForm({{"First", "\"new\"", "", "", kComputed}, {"Held", "\"new\"", "", "", kComputed}});
  VQDocument document = Unsaved({{"First", "old"}, {"Held", std::string(20000, 'x')}});
  const auto slate = document.GetSlateBody()->GetHandle();
  BLOCKID value{};
  ASSERT_EQ(EngSlateGetItemInfo(slate, reinterpret_cast<const ENGCHAR*>("Held"), 4, nullptr, nullptr, &value, nullptr),
            ENG_OK);
  ASSERT_NE(EngMemLock(value.Pool), nullptr);
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), ENG_ERR_MEMORY_LOCKED);
  EXPECT_EQ(TextAt(document, "First"), "old");
  EngMemUnlock(value.Pool);
  EXPECT_EQ(document.ComputeWithForm(0), VQ_OK);
  EXPECT_EQ(TextAt(document, "First") + TextAt(document, "Held"), "newnew");
}

// Records that a newer release has written, or a program that does not know extensions.
TEST_F(ComputeWithForm, WhatBelongsToNoField) {
  FieldBytes odd = vqtest::NamedField("Odd");
  odd.DataType = 0x0700;
  odd.Flags = kComputed;
  odd.Value = Code("\"odd\"");
  FieldBytes now = vqtest::NamedField("Now");
  now.Flags = kComputed;
  now.Value = Code("Later");
  FieldBytes later = vqtest::NamedField("Later");
  later.Flags = kComputed;
  later.Value = Code("\"set\"");
  const auto late = [](std::size_t length) { return vqtest::ExtensionRecord(length, FIELDEXTENSION_COMPUTE_LATE); };
  struct Row {
    const char* what;
    std::string records;
    const char* value;  // of Now, which is "set" when it was computed late
  };
  const Row rows[] = {
      {"its own", late(now.Length()) + now.Record(), "set"},
      {"of another length", late(now.Length() + 2) + now.Record(), "old"},
      {"not directly ahead", late(now.Length()) + vqtest::Text("x") + now.Record(), "old"},
      {"of an unknown field", late(odd.Length()) + odd.Record() + now.Record(), "old"},
      {"cut off", vqtest::Record(SIG_CD_FIELD_EXTENSION, "12345678") + now.Record(), "old"},
  };
  for (const Row& row : rows) {
    Form = FormOfFields(row.records + later.Record());
    VQDocument document = Unsaved({{"Later", "old"}});
    EXPECT_EQ(document.ComputeWithForm(0), VQ_OK) << row.what;
    EXPECT_EQ(TextAt(document, "Now"), row.value) << row.what;
    EXPECT_EQ(TextAt(document, "Odd"), "-") << row.what;
    ASSERT_EQ(Db.DeleteForm(&Form), VQ_OK);
  }
}

// What a stored document keeps, the flags that items get, and handles that were there before the run.
TEST_F(ComputeWithForm, StoredDocumentsAndItems) {
  MakeForm({{"Made", "\"once\"", "", "", kComposed},
            {"Who", "\"CN=Ann\"", "", "", kComputed | FIELD_READERS},
            {"Sum", "\"12.5\"", "", "", kComputed | FIELD_SIGN, TYPE_NUMBER},
            {"Text", "\"rich\"", "", "", kComputed, TYPE_COMPOSITE},
            {"Shown", "\"shown\"", "", "", FIELD_WHEN_COMPOSED},  // for display, whatever that bit says
            {"Uses", "Shown", "", "", kComputed}});
  VQDocument document = NewDocument("x");
  SetText(document, "Form", "Stored");
  SetText(document, "Who", "nobody");
  ASSERT_EQ(document.Save(), VQ_OK);
  VQText who;
  ASSERT_EQ(document.GetItem(Store("Who"), &who), VQ_OK);
  ASSERT_EQ(document.ComputeWithForm(0), VQ_OK);
  EXPECT_EQ(who.IsDeleted(), 1);
  EXPECT_EQ(TextAt(document, "Made"), "-");
  EXPECT_EQ(TextAt(document, "Shown"), "-");
  EXPECT_EQ(TextAt(document, "Uses"), "shown");
  EXPECT_EQ(TextAt(document, "Who"), "CN=Ann");
  VQItem item;
  ASSERT_EQ(document.GetItem(Store("Who"), &item), VQ_OK);
  EXPECT_EQ(item.GetFlags(), VQITEMFLAGS_SUMMARY | VQITEMFLAGS_NAMES | VQITEMFLAGS_READERS);
  VQItem sum;
  ASSERT_EQ(document.GetItem(Store("Sum"), &sum), VQ_OK);
  EXPECT_EQ(sum.GetType(), TYPE_NUMBER);
  EXPECT_EQ(sum.GetFlags(), VQITEMFLAGS_SUMMARY | VQITEMFLAGS_SIGN);
  VQRichText text;
  VQString words;
  ASSERT_EQ(document.GetItem(Store("Text"), &text), VQ_OK);
  ASSERT_EQ(text.GetText(&words), VQ_OK);
  EXPECT_EQ(TextOf(words), "rich");
  ASSERT_EQ(document.Save(), VQ_OK);
  ASSERT_EQ(document.ComputeWithForm(0), VQ_OK);
  EXPECT_EQ(document.IsModified(), 0) << "the same values change nothing";
}

TEST_F(ComputeWithForm, WhichForm) {
  VQDocument document = NewDocument("x");
  VQString field;
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0, &field, nullptr); }), ENG_ERR_NO_FORM);
  EXPECT_EQ(TextOf(field), "");
  SetText(document, "Form", "Nowhere");
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), ENG_ERR_NO_FORM);
  MakeForm({{"A", "\"default\"", "", ""}});
  ASSERT_EQ(Form.SetIsDefaultForm(1), VQ_OK);
  ASSERT_EQ(Form.Save(), VQ_OK);
  ASSERT_EQ(document.DeleteItem(Store("Form")), VQ_OK);
  ASSERT_EQ(document.ComputeWithForm(0), VQ_OK);
  EXPECT_EQ(TextAt(document, "A"), "default");
  MakeForm({});
  VQRichText body;
  ASSERT_EQ(Form.GetFormBody(&body), VQ_OK);
  SetText(document, "Form", "Stored");
  EXPECT_EQ(document.ComputeWithForm(1), VQ_OK);
  document.Close();
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), VQERR_SLATE_NOT_OPEN);
}

// Fields of subforms stand where they are inserted; shared ones are as their definitions say.
TEST_F(ComputeWithForm, SubformsAndSharedFields) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  VQRichText inner;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  VQFormField total(Store("Total"), VQRTTYPE_NUMBER_FIELD);
  ASSERT_EQ(total.SetComputeOption(VQCOMPUTEOPTION_COMPUTED), VQ_OK);
  ASSERT_EQ(total.SetValueFormula(Formula("Price * 2")), VQ_OK);
  ASSERT_EQ(inner.Append(total), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm form = NewForm("Outer");
  VQFormField price = AddField(form, "Price", VQRTTYPE_NUMBER_FIELD);
  ASSERT_EQ(price.SetValueFormula(Formula("21")), VQ_OK);
  ASSERT_EQ(price.Share(), VQ_OK);
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subform)), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQDocument document = Unsaved({});
  SetText(document, "Form", "Outer");
  ASSERT_EQ(document.ComputeWithForm(0), VQ_OK);
  VQNumbers read;
  ASSERT_EQ(document.GetItem(Store("Total"), &read), VQ_OK);
  EXPECT_EQ(static_cast<double>(read[0]), 42);
}

TEST_F(ComputeWithForm, DamagedFormsGiveAStatus) {
  const std::string good = FieldRow{"A", "\"a\"", "\"b\"", "\"\""}.Records();
  for (std::size_t size = 2; size < good.size(); size += 2) {
    VQSTATUS status = VQ_OK;
    Form = StoredForm({{"$Body", TYPE_COMPOSITE, good.substr(0, size)}}, &status);
    VQDocument document = Unsaved({});
    EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(1); }), ENG_ERR_FORM_DESIGN) << size;
    Form = VQForm();
    ASSERT_EQ(Db.DeleteForm(Store("Stored")), VQ_OK);
  }
  FieldBytes field = vqtest::NamedField("A");
  field.Value = "no code at all";
  Form = FormOfFields(field.Record());
  VQDocument document = Unsaved({});
  EXPECT_EQ(ReturnedStatusOf([&] { return document.ComputeWithForm(0); }), ENG_ERR_FORMULA_CODE);
}

}  // namespace
