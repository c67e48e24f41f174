// Fields of forms: stored bytes in, a property changed, stored bytes out; and what stands in the way.
#include <functional>

#include "tests/vq/support/forms_fixture.h"
#include "vq/richtext/font.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::Bytes;
using vqtest::ExtensionRecord;
using vqtest::FieldBytes;
using vqtest::NamedField;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;
using vqtest::Word;

class FormField : public vqtest::FormsFixture {
 protected:
  static VQFormField First(const VQForm& form) {
    VQFormFieldArray fields;
    EXPECT_EQ(form.GetFormFields(&fields), VQ_OK);
    return fields[0];
  }
};

TEST_F(FormField, NamesThatAreLegal) {
  struct Row {
    std::string name;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"st1", VQ_OK},
      {"$x", VQ_OK},
      {"a.b", VQ_OK},
      {"a_b", VQ_OK},
      {"Größe", VQ_OK},
      {std::string(32, 'n'), VQ_OK},
      {std::string(33, 'n'), VQERR_OUT_OF_RANGE},
      {"1st", VQERR_FIELD_NAME_CHARACTERS},
      {"", VQERR_NULL_STRING},
      {"a b", VQERR_FIELD_NAME_CHARACTERS},
      {"a-b", VQERR_FIELD_NAME_CHARACTERS},
      {"a\xFF", VQERR_FIELD_NAME_CHARACTERS},
      {std::string("a\0b", 3), VQERR_FIELD_NAME_CHARACTERS},
  };
  VQFormField field(Store("Name"), VQRTTYPE_TEXT_FIELD);
  for (const Row& row : rows) {
    EXPECT_EQ(StatusOf([&] { VQFormField made(Store(row.name), VQRTTYPE_FORM_FIELD); }), row.status) << row.name;
    const std::string before = TextOf(field.GetName());
    EXPECT_EQ(ReturnedStatusOf([&] { return field.SetName(Store(row.name)); }), row.status) << row.name;
    EXPECT_EQ(TextOf(field.GetName()), row.status == VQ_OK ? row.name : before);
  }
  EXPECT_EQ(StatusOf([] { VQFormField made(Store("x"), VQRTTYPE_STYLIZED_TEXT); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([] { VQKeywordsField made(Store("x"), VQRTTYPE_NAMES_FIELD); }), VQERR_INVALID_PARAMETER);
}

// Each kind comes back from the file as what it was.
TEST_F(FormField, KindsSurviveTheFile) {
  VQForm form = NewForm("Kinds");
  std::string names;
  for (unsigned type = VQRTTYPE_TEXT_FIELD; type <= VQRTTYPE_READERS_FIELD; ++type) {
    VQFormField field = AddField(form, "F" + std::to_string(type), static_cast<VQRTTYPE>(type));
    if (type != VQRTTYPE_KEYWORDS_FIELD) continue;
    VQText choices;
    choices << Store("a");
    ASSERT_EQ(VQKeywordsField(field).SetChoicesList(choices), VQ_OK);
  }
  ASSERT_EQ(form.Save(), VQ_OK);
  VQForm again = ReopenedForm(form);
  for (unsigned type = VQRTTYPE_TEXT_FIELD; type <= VQRTTYPE_READERS_FIELD; ++type) {
    VQFormField field;
    ASSERT_EQ(again.GetFormField(Store("F" + std::to_string(type)), &field), VQ_OK);
    EXPECT_EQ(field.GetType(), type);
    EXPECT_EQ(field.GetComputeOption(), VQCOMPUTEOPTION_EDITABLE);
  }
  EXPECT_EQ(NamesIn(again, VQRTTYPE_NAMES_FIELD), "F46|F47|F48");
  EXPECT_EQ(StatusOf([&] { VQKeywordsField wrong(First(again)); }), VQERR_CONVERSION_FAILED);
}

// A change of one part leaves every other byte, with flags, bytes and a tail that nobody knows.
TEST_F(FormField, AChangeTouchesItsOwnBytesAlone) {
  FieldBytes field = NamedField("Subject");
  field.Flags = FIELD_EDITABLE | 0x0020;
  field.Description = "help";
  field.Tail = "newer";
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQFormField&)> edit;
    std::function<void(FieldBytes&)> expected;
  };
  const Row rows[] = {
      {"name", [](VQFormField& f) { return f.SetName(Store("Topic")); }, [](FieldBytes& f) { f.Name = "Topic"; }},
      {"help", [](VQFormField& f) { return f.SetHelpDescription(VQString()); },
       [](FieldBytes& f) { f.Description.clear(); }},
      {"multi", [](VQFormField& f) { return f.SetAllowMultiValues(1); },
       [](FieldBytes& f) { f.DataType = TYPE_TEXT_LIST; }},
      {"security", [](VQFormField& f) { return f.SetSecurityFlags(VQFIELDSECURITY_SIGN); },
       [](FieldBytes& f) { f.Flags |= 0x1000; }},
      {"computed", [](VQFormField& f) { return f.SetComputeOption(VQCOMPUTEOPTION_WHEN_COMPOSED); },
       [](FieldBytes& f) { f.Flags = 0x0020 | 0x0108; }},
      {"value", [](VQFormField& f) { return f.SetValueFormula(Formula("\"x\"")); },
       [](FieldBytes& f) {
         f.Value.assign(VQFormula(Store("\"x\"")).GetCode(), VQFormula(Store("\"x\"")).GetCodeLength());
       }},
  };
  for (const Row& row : rows) {
    VQForm form = FormOfFields(ExtensionRecord(field.Length(), 0x00000800, "", "", "tail") + field.Record());
    VQFormField first = First(form);
    ASSERT_EQ(row.edit(first), VQ_OK) << row.what;
    VQRichText body;
    ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
    FieldBytes expected = field;
    row.expected(expected);
    EXPECT_EQ(vqtest::Values(body)[0].substr(2),
              ExtensionRecord(expected.Length(), 0x00000800, "", "", "tail") + expected.Record())
        << row.what;
  }
}

TEST_F(FormField, ComputeOptionsByTypeAndBits) {
  struct Row {
    unsigned data_type, flags;
    VQCOMPUTEOPTION option;
  };
  const Row rows[] = {
      {TYPE_TEXT, 0x0002, VQCOMPUTEOPTION_EDITABLE},      {TYPE_TEXT, 0x010A, VQCOMPUTEOPTION_EDITABLE},
      {TYPE_TEXT, 0x0108, VQCOMPUTEOPTION_WHEN_COMPOSED}, {TYPE_TEXT, 0x0100, VQCOMPUTEOPTION_COMPUTED},
      {TYPE_TEXT, 0x0008, VQCOMPUTEOPTION_FOR_DISPLAY},   {TYPE_NUMBER, 0x0000, VQCOMPUTEOPTION_FOR_DISPLAY},
      {TYPE_COMPOSITE, 0x0002, VQCOMPUTEOPTION_EDITABLE}, {TYPE_COMPOSITE, 0x0100, VQCOMPUTEOPTION_WHEN_COMPOSED},
  };
  for (const Row& row : rows) {
    FieldBytes field = NamedField("F");
    field.Flags = row.flags;
    field.DataType = row.data_type;
    VQForm form = FormOfFields(field.Record());
    EXPECT_EQ(First(form).GetComputeOption(), row.option) << row.data_type << ' ' << row.flags;
  }
  VQFormField rich(Store("Body"), VQRTTYPE_RICH_TEXT_FIELD);
  EXPECT_EQ(rich.SetComputeOption(VQCOMPUTEOPTION_COMPUTED), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(rich.SetAllowMultiValues(1), VQERR_INAPPROPRIATE);
  EXPECT_EQ(rich.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
}

TEST_F(FormField, SeparatorsKeepEachOther) {
  VQForm form = FormOfFields(NamedField("F").Record());  // delimiters 0x1A20
  VQFormField field = First(form);
  EXPECT_EQ(field.GetDisplayValueSeparator(), VQVALUESEPARATOR_SPACE);
  EXPECT_EQ(field.GetInputValueSeparators(), 0);
  ASSERT_EQ(field.SetInputValueSeparators(VQVALUESEPARATOR_COMMA | VQVALUESEPARATOR_BLANK_LINE), VQ_OK);
  ASSERT_EQ(field.SetDisplayValueSeparator(VQVALUESEPARATOR_NEW_LINE), VQ_OK);
  EXPECT_EQ(field.GetInputValueSeparators(), 18);
  EXPECT_EQ(field.GetDisplayValueSeparator(), VQVALUESEPARATOR_NEW_LINE);
  ASSERT_EQ(field.SetDisplayValueSeparator(static_cast<VQVALUESEPARATOR>(3)), VQ_OK);
  EXPECT_EQ(field.GetDisplayValueSeparator(), VQVALUESEPARATOR_NONE);
  EXPECT_EQ(field.GetInputValueSeparators(), 18);
}

TEST_F(FormField, KeywordsBitsOverwriteEachOther) {
  VQKeywordsField field(Store("K"), VQRTTYPE_KEYWORDS_FIELD);
  ASSERT_EQ(field.SetAllowValuesNotInList(1), VQ_OK);
  EXPECT_EQ(field.GetInterfaceOption(), VQINTERFACEOPTION_CHECK_BOXES);
  ASSERT_EQ(field.SetInterfaceOption(VQINTERFACEOPTION_RADIO_BUTTONS), VQ_OK);
  EXPECT_EQ(field.GetAllowValuesNotInList(), 0);
  EXPECT_EQ(field.SetInterfaceColumnCount(8), VQ_OK);
  EXPECT_EQ(field.SetInterfaceColumnCount(9), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(field.SetInterfaceColumnCount(0), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(field.GetInterfaceColumnCount(), 8U);
  for (unsigned frame = 0; frame < 3; ++frame) {
    ASSERT_EQ(field.SetInterfaceFrameOption(static_cast<VQINTERFACEFRAMEOPTION>(frame)), VQ_OK);
    EXPECT_EQ(field.GetInterfaceFrameOption(), frame);
  }
  EXPECT_EQ(field.SetChoicesViewColumnNumber(0x10000), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(field.SetChoicesView(Store(std::string(131, 'v'))), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(field.SetHelpDescription(Store(std::string(256, 'h'))), VQERR_OUT_OF_RANGE);
  FieldBytes stored = NamedField("K");
  stored.Flags = FIELD_KEYWORDS;
  VQForm form = FormOfFields(ExtensionRecord(stored.Length(), 0x30000000) + stored.Record());
  EXPECT_EQ(StatusOf([&] { return VQKeywordsField(First(form)).GetInterfaceFrameOption(); }), VQERR_INVALID_PARAMETER);
}

TEST_F(FormField, ChoicesHaveOneSource) {
  VQKeywordsField field(Store("K"), VQRTTYPE_KEYWORDS_FIELD);
  field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE);
  VQText choices;
  VQFormula formula;
  EXPECT_EQ(field.GetChoicesOption(), VQCHOICESOPTION_LIST);
  EXPECT_EQ(field.GetChoicesList(&choices), VQERR_NO_CHOICES_LIST);
  EXPECT_EQ(field.GetChoicesFormula(&formula), VQERR_NO_CHOICES_FORMULA);
  EXPECT_EQ(field.Validate(), VQERR_NO_CHOICES_LIST);
  ASSERT_EQ(field.SetChoicesOption(VQCHOICESOPTION_FORMULA), VQ_OK);
  EXPECT_EQ(field.Validate(), VQERR_NO_CHOICES_FORMULA);
  choices << Store("one") << Store("two\nlines") << Store("");
  ASSERT_EQ(field.SetChoicesList(choices), VQ_OK);
  EXPECT_EQ(field.GetChoicesOption(), VQCHOICESOPTION_LIST);
  VQText read;
  ASSERT_EQ(field.GetChoicesList(&read), VQ_OK);
  EXPECT_EQ(read.GetCount(), 3U);
  EXPECT_EQ(TextOf(read[1]), "two\nlines");
  EXPECT_EQ(field.Validate(), VQ_OK);
  ASSERT_EQ(field.SetChoicesFormula(Formula("\"a\":\"b\"")), VQ_OK);
  EXPECT_EQ(field.GetChoicesOption(), VQCHOICESOPTION_FORMULA);
  EXPECT_EQ(field.GetChoicesList(&read), VQERR_NO_CHOICES_LIST);
  ASSERT_EQ(field.SetChoicesView(Store("People")), VQ_OK);
  ASSERT_EQ(field.SetChoicesViewColumnNumber(65535), VQ_OK);
  EXPECT_EQ(field.GetChoicesOption(), VQCHOICESOPTION_VIEW);
  EXPECT_EQ(field.GetChoicesFormula(&formula), VQERR_NO_CHOICES_FORMULA);
  VQNamesField names(Store("N"), VQRTTYPE_AUTHORS_FIELD);
  EXPECT_EQ(names.GetChoicesOption(), VQCHOICESOPTION_NONE);
  EXPECT_EQ(names.SetChoicesOption(VQCHOICESOPTION_LIST), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(names.SetLookUpNames(1), VQ_OK);
  EXPECT_EQ(names.GetLookUpNames(), 1);
  // Whatever another program's bits say.
  FieldBytes listed = NamedField("K");
  listed.Flags = FIELD_EDITABLE | FIELD_KEYWORDS;
  listed.TextValue = Word(1) + Word(1) + "a";
  VQForm form = FormOfFields(ExtensionRecord(listed.Length(), VQCHOICESOPTION_FORMULA) + listed.Record());
  EXPECT_EQ(VQKeywordsField(First(form)).GetChoicesOption(), VQCHOICESOPTION_LIST);
  EXPECT_EQ(form.Save(), VQ_OK);
}

// An extension that was left behind by a program which did not know it must not be taken for the field's own.
TEST_F(FormField, AnExtensionOfAnotherFieldIsRefused) {
  FieldBytes field = NamedField("Subject");
  field.Flags = FIELD_EDITABLE | FIELD_KEYWORDS;
  VQForm form = FormOfFields(ExtensionRecord(field.Length() + 2, 0x00100000) + field.Record());
  VQKeywordsField first(First(form));
  EXPECT_EQ(StatusOf([&] { return first.GetGiveDefaultFocus(); }), VQERR_EDITED_BY_OLDER);
  EXPECT_EQ(first.SetLookUpNames(1), VQERR_EDITED_BY_OLDER);
  VQText choices;
  choices << Store("x");
  EXPECT_EQ(first.SetChoicesList(choices), VQERR_EDITED_BY_OLDER);
  EXPECT_EQ(TextOf(first.GetName()), "Subject");
  ASSERT_EQ(first.SetHelpDescription(Store("h")), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return first.GetGiveDefaultFocus(); }), VQERR_EDITED_BY_OLDER);
}

// Lengths that lie: a status, and the bytes stay.
TEST_F(FormField, RecordsThatLieAreRefused) {
  FieldBytes field = NamedField("Subject");
  field.Value = "code";
  const std::string good = field.Record();
  for (const std::size_t at : {22, 24, 28, 30, 32, 34}) {
    std::string record = good;
    record[at + 1] = '\x7F';
    VQForm form = FormOfFields(record);
    VQFormField first = First(form);
    EXPECT_EQ(StatusOf([&] { return first.GetName(); }), VQERR_CORRUPTED) << at;
    EXPECT_EQ(first.SetHelpDescription(Store("x")), VQERR_CORRUPTED) << at;
    EXPECT_EQ(form.HasFormField(Store("Subject")), 0) << at;
    EXPECT_EQ(ReturnedStatusOf([&] { return form.Save(); }), VQERR_CORRUPTED) << at;
    VQRichText body;
    form.GetFormBody(&body);
    EXPECT_EQ(vqtest::Values(body)[0].substr(2), record) << at;
  }
  for (std::size_t size = 4; size < 36; size += 2) {
    VQForm form = FormOfFields(vqtest::Record(SIG_CD_FIELD, good.substr(4, size - 4)));
    VQFormFieldArray fields;
    ASSERT_EQ(form.GetFormFields(&fields), VQ_OK) << size;
    if (fields.GetCount() == 0) continue;  // no data type either
    EXPECT_EQ(StatusOf([&] { return fields[0].GetName(); }), VQERR_CORRUPTED) << size;
  }
}

TEST_F(FormField, TooMuchForARecord) {
  VQKeywordsField field(Store("K"), VQRTTYPE_KEYWORDS_FIELD);
  VQText choices;
  for (int i = 0; i < 3; ++i) choices << Store(std::string(21000, 'x'));
  ASSERT_EQ(field.SetChoicesList(choices), VQ_OK);
  const unsigned long size = field.GetSize();
  const std::string code = "\"" + std::string(3000, 'y') + "\"";
  EXPECT_EQ(field.SetValueFormula(Formula(code)), VQERR_FIELD_TOO_LARGE);
  EXPECT_EQ(field.GetSize(), size);
}

TEST_F(FormField, FontsGoWithTheFieldIntoAnotherSlate) {
  VQFormField field(Store("F"), VQRTTYPE_TEXT_FIELD);
  VQFontStyle face(0x10, 2, Store("Fancy Face"), 1, 0);
  ASSERT_EQ(face.SetPointSize(18), VQ_OK);
  ASSERT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
  ASSERT_EQ(field.SetFontStyle(face), VQ_OK);
  VQForm form = NewForm("Fonts");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(field), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQForm again = ReopenedForm(form);
  VQFontStyle read;
  ASSERT_EQ(First(again).GetFontStyle(&read), VQ_OK);
  EXPECT_EQ(TextOf(read.GetFaceName()), "Fancy Face");
  EXPECT_EQ(read.GetPointSize(), 18U);
}

TEST_F(FormField, ASharedFieldShowsItsDefinition) {
  VQForm form = NewForm("Orders");
  VQFormField field = AddField(form, "Status");
  ASSERT_EQ(field.SetHelpDescription(Store("old")), VQ_OK);
  EXPECT_EQ(field.Unshare(), VQWARN_FIELD_NOT_SHARED);
  ASSERT_EQ(field.Share(), VQ_OK);
  EXPECT_EQ(field.Share(), VQWARN_FIELD_SHARED);
  EXPECT_EQ(Db.SharedFieldExists(Store("Status")), 1);
  ASSERT_EQ(field.SetHelpDescription(Store("new")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSharedField shared;
  ASSERT_EQ(Db.GetSharedField(Store("Status"), &shared), VQ_OK);
  ASSERT_EQ(shared.Open(), VQ_OK);
  VQFormField definition;
  ASSERT_EQ(shared.GetField(&definition), VQ_OK);
  EXPECT_EQ(TextOf(definition.GetHelpDescription()), "new");
  VQForm other = NewForm("Other");
  VQFormField second = AddField(other, "Placeholder");
  ASSERT_EQ(second.SetSharedField(shared), VQ_OK);
  EXPECT_EQ(TextOf(second.GetHelpDescription()), "new");
  ASSERT_EQ(Db.CreateSharedField(VQFormField(Store("Taken"), VQRTTYPE_TEXT_FIELD), nullptr), VQ_OK);
  ASSERT_EQ(definition.SetName(Store("Taken")), VQ_OK);
  EXPECT_EQ(shared.Save(), VQERR_SHARED_FIELD_EXISTS);
  ASSERT_EQ(definition.SetName(Store("Status")), VQ_OK);
  ASSERT_EQ(shared.Save(), VQ_OK);
  ASSERT_EQ(second.Unshare(), VQ_OK);
  shared.Close();
  ASSERT_EQ(Db.DeleteSharedField(Store("Status")), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return field.GetHelpDescription(); }), VQERR_NO_SHARED_FIELD);
  EXPECT_EQ(field.SetHelpDescription(VQString()), VQERR_NO_SHARED_FIELD);
  EXPECT_EQ(ReturnedStatusOf([&] { return form.Save(); }), VQERR_NO_SHARED_FIELD);
  EXPECT_EQ(TextOf(second.GetHelpDescription()), "new");
  ASSERT_EQ(form.Close(), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return field.IsShared(); }), VQERR_OBJECT_CLOSED);
}

TEST_F(FormField, TwoFieldsOfAFormHaveTwoNames) {
  VQForm form = NewForm("Names");
  AddField(form, "One");
  VQFormField two = AddField(form, "Two");
  EXPECT_EQ(two.SetName(Store("One")), VQERR_FIELD_EXISTS);
  EXPECT_EQ(two.SetName(Store("Two")), VQ_OK);
  EXPECT_EQ(two.SetName(Store("one")), VQ_OK);
  EXPECT_EQ(NamesIn(form), "One|one");
  // In a form that is open as a slate only, too.
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSlate slate;
  VQRichText body;
  VQFormField one;
  ASSERT_EQ(Db.GetSlate(form.GetSlateID(), &slate), VQ_OK);
  ASSERT_EQ(slate.Open(), VQ_OK);
  ASSERT_EQ(slate.GetItem(Store("$Body"), &body), VQ_OK);
  ASSERT_EQ(body.GetFormField(Store("One"), &one), VQ_OK);
  EXPECT_EQ(one.SetName(Store("one")), VQERR_FIELD_EXISTS);
  EXPECT_EQ(one.SetName(Store("Uno")), VQ_OK);
}

}  // namespace
