// Every property of a form's fields, against the bytes that it owns in their records.
#include "tests/vq/support/forms_fixture.h"
#include "tests/vq/support/property_rows.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::Bytes;
using vqtest::Each;
using vqtest::ExtensionRecord;
using vqtest::FieldBytes;
using vqtest::NamedField;
using vqtest::Of;
using vqtest::OnOff;
using vqtest::PropertyRow;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;
using vqtest::With;
using Keywords = VQKeywordsField;
using Names = VQNamesField;

constexpr VQSTATUS kInvalid = VQERR_INVALID_PARAMETER;
constexpr VQSTATUS kRange = VQERR_OUT_OF_RANGE;
constexpr std::size_t kFlags = 4;

// Records of a field with all bits the same, but for those that say what kind it is.
FieldBytes FieldOf(unsigned kind, bool high) {
  constexpr unsigned kKinds =
      FIELD_KEYWORDS | FIELD_NAMES | FIELD_AUTHORS | FIELD_READERS | static_cast<unsigned>(FIELD_REFERENCE);
  FieldBytes field = NamedField("F");
  field.Flags = kind | (high ? 0xFFFF & ~kKinds : 0);
  field.Description = "help";
  field.Tail = "newer";
  return field;
}

template <typename Field>
struct FieldRow : PropertyRow<Field> {
  bool Extended = false;
};

template <typename Field>
std::vector<FieldRow<Field>> ListRows() {
  return {
      {{"not in list",
        Of<&Field::GetAllowValuesNotInList, &Field::SetAllowValuesNotInList, Field>(),
        kFlags,
        0xC000,
        OnOff(0xC000),
        {}}},
      {{"look up", Of<&Field::GetLookUpNames, &Field::SetLookUpNames, Field>(), kFlags, 0x10000, OnOff(0x10000), {}},
       true},
      {{"helper",
        Of<&Field::GetDontDisplayHelperButton, &Field::SetDontDisplayHelperButton, Field>(),
        kFlags,
        0x40000,
        OnOff(0x40000),
        {}},
       true},
      {{"column",
        Of<&Field::GetChoicesViewColumnNumber, &Field::SetChoicesViewColumnNumber, Field>(),
        18,
        0xFFFF,
        Each({0, 1, 65535}),
        {{0x10000, kRange}}},
       true},
  };
}

std::vector<FieldRow<Keywords>> KeywordsRows() {
  return {
      {{"interface",
        Of<&Keywords::GetInterfaceOption, &Keywords::SetInterfaceOption>(),
        kFlags,
        0xC000,
        {{0, 0}, {1, 0x4000}, {2, 0x8000}},
        {{3, kInvalid}}}},
      {{"columns",
        Of<&Keywords::GetInterfaceColumnCount, &Keywords::SetInterfaceColumnCount>(),
        kFlags,
        0x0E000000,
        {{1, 0}, {2, 0x02000000}, {8, 0x0E000000}},
        {{0, kRange}, {9, kRange}, {0x100000001, kRange}}},
       true},
      {{"refresh fields",
        Of<&Keywords::GetRefreshFieldsOnChange, &Keywords::SetRefreshFieldsOnChange>(),
        kFlags,
        0x20000,
        OnOff(0x20000),
        {}},
       true},
      {{"refresh choices",
        Of<&Keywords::GetRefreshChoicesOnDocRefresh, &Keywords::SetRefreshChoicesOnDocRefresh>(),
        8,
        1,
        OnOff(1),
        {}},
       true},
  };
}

std::vector<FieldRow<VQFormField>> FieldRows() {
  using Field = VQFormField;
  return {
      {{"many values",
        Of<&Field::GetAllowMultiValues, &Field::SetAllowMultiValues>(),
        6,
        0xFFFF,
        {{1, TYPE_TEXT_LIST}, {0, TYPE_TEXT}},
        {}}},
      {{"compute",
        Of<&Field::GetComputeOption, &Field::SetComputeOption>(),
        kFlags,
        0x010A,
        {{0, 0x000A}, {1, 0x0108}, {2, 0x0100}, {3, 0}},
        {{4, kInvalid}}}},
      {{"display separator",
        Of<&Field::GetDisplayValueSeparator, &Field::SetDisplayValueSeparator>(),
        8,
        0xF000,
        {{0, 0}, {1, 0x1000}, {2, 0x2000}, {4, 0x3000}, {8, 0x4000}, {16, 0x5000}},
        {}}},
      {{"input separators",
        Of<&Field::GetInputValueSeparators, &Field::SetInputValueSeparators>(),
        8,
        0x001F,
        Each({0, 1, 10, 31}),
        {}}},
      {{"security",
        Of<&Field::GetSecurityFlags, &Field::SetSecurityFlags>(),
        kFlags,
        0x3400,
        Each({0, 0x0400, 0x1000, 0x2000, 0x3400}),
        {{1, kInvalid}, {0x0C00, kInvalid}}}},
      {{"late",
        Of<&Field::GetComputeAfterValidation, &Field::SetComputeAfterValidation>(),
        kFlags,
        0x80000,
        OnOff(0x80000),
        {}},
       true},
      {{"focus", Of<&Field::GetGiveDefaultFocus, &Field::SetGiveDefaultFocus>(), kFlags, 0x100000, OnOff(0x100000), {}},
       true},
  };
}

class FieldProperty : public vqtest::FormsFixture {
 protected:
  static std::string BodyOf(const VQForm& form) {
    VQRichText body;
    EXPECT_EQ(form.GetFormBody(&body), VQ_OK);
    return vqtest::Written(body);
  }
  static VQFormField First(const VQForm& form) {
    VQFormFieldArray fields;
    EXPECT_EQ(form.GetFormFields(&fields), VQ_OK);
    return fields[0];
  }
  template <typename Field>
  void Check(const FieldRow<Field>& row, unsigned kind, bool high) {
    const FieldBytes bytes = FieldOf(kind, high);
    const std::string record = bytes.Record();
    const std::string extension = ExtensionRecord(bytes.Length(), high ? 0xFFFFFFFF : 0, "", "", "later");
    for (const auto& [value, stored] : row.Values) {
      SCOPED_TRACE(row.Name + std::to_string(value));
      VQForm form = FormOfFields(extension + record);
      Field field(First(form));
      ASSERT_EQ(row.Access.Set(field, value), VQ_OK);
      EXPECT_EQ(form.IsModified(), 1);
      const vqtest::StoredBits bits{row.At, row.Mask, stored};
      const std::string after = row.Extended ? With(extension, bits) + record : extension + With(record, bits);
      EXPECT_EQ(BodyOf(form), after);
      EXPECT_EQ(row.Access.Get(Field(First(FormOfFields(after)))), value);
      for (const auto& [refused, status] : row.Refused) {
        EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(field, refused); }), status) << refused;
      }
      EXPECT_EQ(BodyOf(form), after);
    }
  }
  template <typename Field>
  void CheckAll(const std::vector<FieldRow<Field>>& rows, unsigned kind) {
    for (const FieldRow<Field>& row : rows) {
      for (const bool high : {false, true}) Check(row, kind, high);
      Field none;
      EXPECT_EQ(StatusOf([&] { return row.Access.Get(none); }), VQERR_OBJECT_NOT_INITIALIZED) << row.Name;
    }
  }
};

TEST_F(FieldProperty, OwnsItsBitsOfTheRecords) {
  CheckAll(FieldRows(), 0);
  CheckAll(ListRows<Keywords>(), FIELD_KEYWORDS);
  CheckAll(KeywordsRows(), FIELD_KEYWORDS);
  CheckAll(ListRows<Names>(), FIELD_NAMES);
}

TEST_F(FieldProperty, FormatsAreFourBytesEach) {
  const FieldBytes bytes = FieldOf(0, false);
  VQForm form = FormOfFields(bytes.Record());
  VQFormField field = First(form);
  EXPECT_EQ(field.GetNumberFormat().GetDigits(), 1U);
  ASSERT_EQ(field.SetNumberFormat(vqtest::OtherNumberFormat()), VQ_OK);
  ASSERT_EQ(field.SetDatetimeFormat(vqtest::OtherDatetimeFormat()), VQ_OK);
  std::string stored = bytes.Record();
  stored.replace(10, vqtest::kFormatsSize, vqtest::kOtherFormats, vqtest::kFormatsSize);
  EXPECT_EQ(BodyOf(form), stored);
  EXPECT_EQ(field.GetDatetimeFormat().GetTimeFormat(), VQTIMEFORMAT_PARTIAL);
}

// Formulas and names of variable length: what stands behind them moves, and all else stays.
TEST_F(FieldProperty, PartsOfAnyLength) {
  struct Row {
    const char* what;
    VQSTATUS (VQFormField::*get)(VQFormula*) const;
    VQSTATUS (VQFormField::*set)(const VQFormula&);
    std::string FieldBytes::*part;  // null: in the extension
  };
  const Row rows[] = {
      {"value", &VQFormField::GetValueFormula, &VQFormField::SetValueFormula, &FieldBytes::Value},
      {"translation", &VQFormField::GetInputTranslationFormula, &VQFormField::SetInputTranslationFormula,
       &FieldBytes::Translation},
      {"validation", &VQFormField::GetInputValidationFormula, &VQFormField::SetInputValidationFormula,
       &FieldBytes::Validation},
      {"HTML", &VQFormField::GetHTMLAttributesFormula, &VQFormField::SetHTMLAttributesFormula, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    FieldBytes bytes = FieldOf(FIELD_KEYWORDS, true);
    const std::string before = ExtensionRecord(bytes.Length(), 0, "", "View", "later") + bytes.Record();
    VQForm form = FormOfFields(before);
    VQFormField field = First(form);
    VQFormula formula;
    EXPECT_EQ((field.*row.get)(&formula), VQWARN_NOT_FOUND);
    EXPECT_EQ((field.*row.get)(nullptr), VQERR_NULL_POINTER);
    ASSERT_EQ((field.*row.set)(Formula("A + 12345")), VQ_OK);
    const VQFormula source = Formula("A + 12345");
    const std::string code(source.GetCode(), source.GetCodeLength());
    if (row.part != nullptr) bytes.*row.part = code;
    EXPECT_EQ(BodyOf(form),
              ExtensionRecord(bytes.Length(), 0, row.part == nullptr ? code : "", "View", "later") + bytes.Record());
    ASSERT_EQ((field.*row.get)(&formula), VQ_OK);
    EXPECT_EQ(TextOf(formula.GetText()), "A + 12345");
    ASSERT_EQ((field.*row.set)(VQFormula()), VQ_OK);
    EXPECT_EQ(BodyOf(form), before);
  }
}

template <typename Field>
void CheckView(Field field) {
  ASSERT_EQ(field.SetChoicesViewDatabase(Store("people.vlt")), VQ_OK);
  ASSERT_EQ(field.SetChoicesView(Store(std::string(130, 'v'))), VQ_OK);
  ASSERT_EQ(field.SetChoicesViewColumnNumber(2), VQ_OK);
  EXPECT_EQ(field.SetChoicesView(Store(std::string(131, 'v'))), kRange);
  EXPECT_EQ(field.GetChoicesOption(), VQCHOICESOPTION_VIEW);
  EXPECT_EQ(TextOf(field.GetChoicesView()), std::string(130, 'v'));
  EXPECT_EQ(TextOf(field.GetChoicesViewDatabase()), "people.vlt");
  EXPECT_EQ(field.GetChoicesViewColumnNumber(), 2U);
  EXPECT_EQ(field.Validate(), VQ_OK);
}

TEST_F(FieldProperty, ChoicesFromAView) {
  VQForm form = NewForm("Choices");
  CheckView(Keywords(AddField(form, "K", VQRTTYPE_KEYWORDS_FIELD)));
  CheckView(Names(AddField(form, "N", VQRTTYPE_READERS_FIELD)));
  ASSERT_EQ(form.Save(), VQ_OK);
  VQFormField field;
  ASSERT_EQ(ReopenedForm(form).GetFormField(Store("N"), &field), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return Keywords(field); }), VQERR_CONVERSION_FAILED);
  EXPECT_EQ(StatusOf([&] { return Names(First(form)); }), VQERR_CONVERSION_FAILED);
}

// A shared field is of the kind that its definition is: the others' properties are not for it.
TEST_F(FieldProperty, AKindThatTheDefinitionIsNot) {
  VQForm form = NewForm("Kinds");
  VQFormField text = AddField(form, "T");
  ASSERT_EQ(text.Share(), VQ_OK);
  VQSharedField shared;
  ASSERT_EQ(Db.GetSharedField(Store("T"), &shared), VQ_OK);
  VQForm other = NewForm("Other");
  Keywords keywords(AddField(other, "K", VQRTTYPE_KEYWORDS_FIELD));
  ASSERT_EQ(keywords.SetSharedField(shared), VQ_OK);
  EXPECT_EQ(keywords.IsShared(), 1);
  EXPECT_EQ(StatusOf([&] { return keywords.GetLookUpNames(); }), VQERR_INAPPROPRIATE);
  EXPECT_EQ(keywords.SetInterfaceOption(VQINTERFACEOPTION_CHECK_BOXES), VQERR_INAPPROPRIATE);
  EXPECT_EQ(keywords.SetChoicesOption(VQCHOICESOPTION_NONE), VQERR_INAPPROPRIATE);
  EXPECT_EQ(ReturnedStatusOf([&] { return shared.Open(), shared.GetField(&keywords); }), VQERR_CONVERSION_FAILED);
  EXPECT_EQ(keywords.GetComputeOption(), text.GetComputeOption());
  EXPECT_EQ(TextOf(keywords.GetName()), "T");
}

}  // namespace
