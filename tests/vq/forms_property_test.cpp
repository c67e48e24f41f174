// Every property of a form, against the bytes that it owns in the stored design; and the ways to a stored design.
#include <functional>

#include "tests/vq/support/forms_fixture.h"
#include "tests/vq/support/property_rows.h"

namespace {

using vqtest::Each;
using vqtest::InfoRecord;
using vqtest::LaunchRecord;
using vqtest::Of;
using vqtest::OnOff;
using vqtest::PropertyRow;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;
using vqtest::With;
using vqtest::Word;

constexpr VQSTATUS kInvalid = VQERR_INVALID_PARAMETER;
constexpr std::size_t kFlags = 4;
constexpr std::size_t kFlags2 = 8;

std::vector<PropertyRow<VQForm>> InfoRows() {
  return {
      {"inherit values",
       Of<&VQForm::GetInheritFormulaValues, &VQForm::SetInheritFormulaValues>(),
       kFlags,
       0x0001,
       OnOff(0x0001),
       {}},
      {"send", Of<&VQForm::GetShowMailSendOnClose, &VQForm::SetShowMailSendOnClose>(), kFlags, 2, OnOff(2), {}},
      {"type",
       Of<&VQForm::GetFormType, &VQForm::SetFormType>(),
       kFlags,
       0x000C,
       {{0, 0}, {1, 8}, {2, 4}},
       {{3, kInvalid}}},
      {"refresh",
       Of<&VQForm::GetRefreshFieldsAutomatically, &VQForm::SetRefreshFieldsAutomatically>(),
       kFlags,
       0x0010,
       OnOff(0x0010),
       {}},
      {"store", Of<&VQForm::GetStoreFormInDocument, &VQForm::SetStoreFormInDocument>(), kFlags, 0x20, OnOff(0x20), {}},
      {"graphic",
       Of<&VQForm::GetHideBackgroundGraphicIn16ColorMode, &VQForm::SetHideBackgroundGraphicIn16ColorMode>(),
       kFlags,
       0x2000,
       OnOff(0x2000),
       {}},
      // The upper byte of the first word and the lower one of the second.
      {"versions",
       Of<&VQForm::GetVersioningOption, &VQForm::SetVersioningOption>(),
       kFlags + 1,
       0x800000C0,
       {{0, 0}, {128, 0x80000000}, {16384, 0x40}, {32768, 0x80}},
       {{1, kInvalid}, {0xC000, kInvalid}, {0x10080, kInvalid}}},
      {"no inherited document",
       Of<&VQForm::GetInheritDocumentOption, &VQForm::SetInheritDocumentOption>(),
       kFlags2,
       0x0001,
       {{0, 0}},
       {{4, kInvalid}}},
      {"inherited document",
       Of<&VQForm::GetInheritDocumentOption, &VQForm::SetInheritDocumentOption>(),
       kFlags2,
       0x0007,
       {{1, 3}, {2, 7}, {3, 5}},
       {}},
      {"edit", Of<&VQForm::GetEditOnOpen, &VQForm::SetEditOnOpen>(), kFlags2, 0x08, OnOff(0x08), {}},
      {"no pane",
       Of<&VQForm::GetContextPaneOption, &VQForm::SetContextPaneOption>(),
       kFlags2,
       0x0010,
       {{0, 0}},
       {{3, kInvalid}}},
      {"pane",
       Of<&VQForm::GetContextPaneOption, &VQForm::SetContextPaneOption>(),
       kFlags2,
       0x0030,
       {{1, 0x10}, {2, 0x30}},
       {}},
      {"own versions",
       Of<&VQForm::GetCreateVersionsAutomatically, &VQForm::SetCreateVersionsAutomatically>(),
       kFlags2,
       0x0040,
       OnOff(0x0040),
       {}},
      {"anonymous", Of<&VQForm::GetIsAnonymousForm, &VQForm::SetIsAnonymousForm>(), kFlags2, 0x100, OnOff(0x100), {}},
      {"exchange",
       Of<&VQForm::GetDisableFieldExchange, &VQForm::SetDisableFieldExchange>(),
       kFlags2,
       0x0800,
       OnOff(0x0800),
       {}},
  };
}

class FormProperty : public vqtest::FormsFixture {
 protected:
  VQForm WithInfo(const std::string& info) { return StoredForm({{"$Info", TYPE_COMPOSITE, info}}); }
  VQForm WithLaunch(const std::string& record) { return StoredForm({{"$AUTOLAUNCH", TYPE_COMPOSITE, record}}); }
  VQForm WithLetters(const std::string& letters) {
    return StoredForm({{"$Flags", TYPE_TEXT_LIST, Word(1) + Word(letters.size()) + letters}});
  }
  static void CheckRefused(const PropertyRow<VQForm>& row, VQForm form) {
    const unsigned long before = row.Access.Get(form);
    for (const auto& [value, status] : row.Refused) {
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(form, value); }), status) << value;
      EXPECT_EQ(row.Access.Get(form), before) << value;
      EXPECT_EQ(form.IsModified(), 0) << value;
    }
  }
  static VQText People() {
    VQText people;
    people << Store("Ann") << Store("Bob");
    return people;
  }
};

TEST_F(FormProperty, OwnsItsBitsOfInfo) {
  for (const PropertyRow<VQForm>& row : InfoRows()) {
    for (const unsigned bits : {0U, 0xFFFFU}) {
      // A name that was not in use goes when the option is turned on.
      const bool starts = bits == 0 && row.Mask == 0x0007;
      const std::string before = InfoRecord(bits, bits, starts ? "" : "Body", "later!");
      for (const auto& [value, stored] : row.Values) {
        SCOPED_TRACE(row.Name + std::to_string(value));
        VQForm form = WithInfo(before);
        ASSERT_EQ(row.Access.Set(form, value), VQ_OK);
        EXPECT_EQ(form.IsModified(), 1);
        ASSERT_EQ(form.Save(), VQ_OK);
        EXPECT_EQ(StoredValue(form, "$Info"), With(before, {row.At, row.Mask, stored}));
        EXPECT_EQ(row.Access.Get(ReopenedForm(form)), value);
      }
    }
    SCOPED_TRACE(row.Name);
    CheckRefused(row, WithInfo(InfoRecord()));
    VQForm closed(WithInfo(InfoRecord()));
    ASSERT_EQ(closed.Close(), VQ_OK);
    EXPECT_EQ(StatusOf([&] { return row.Access.Get(closed); }), VQERR_OBJECT_NOT_INITIALIZED);
  }
}

TEST_F(FormProperty, ColourAndInheritedName) {
  VQForm form = WithInfo(InfoRecord(0x80, 1, "Body"));
  const auto color = Of<&VQForm::GetBackgroundColor, &VQForm::SetBackgroundColor>();
  EXPECT_EQ(TextOf(form.GetInheritDocumentFieldName()), "Body");
  ASSERT_EQ(color.Set(form, 35), VQ_OK);
  ASSERT_EQ(form.SetInheritDocumentFieldName(Store("Other")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(form, "$Info"),
            With(With(InfoRecord(0x80, 1, "Other"), {2, 0xFFFF, 3}), {12, 0xFFFF, 35}).substr(0, 30));
  EXPECT_EQ(color.Get(ReopenedForm(form)), 35U);
  EXPECT_EQ(TextOf(ReopenedForm(form).GetInheritDocumentFieldName()), "Other");
}

// With the launch bits and the OLE flags that keep Save from changing more.
struct LaunchRow : PropertyRow<VQForm> {
  unsigned Launch = 0;
  unsigned OleFlags = 0;
};

TEST_F(FormProperty, OwnsItsWordsOfTheLaunchRecord) {
  const LaunchRow rows[] = {
      {{"in place", Of<&VQForm::GetLaunchOLEObjectInPlace, &VQForm::SetLaunchOLEObjectInPlace>(), 16, 3, {{1, 1}}, {}},
       0,
       2},
      {{"not in place",
        Of<&VQForm::GetLaunchOLEObjectInPlace, &VQForm::SetLaunchOLEObjectInPlace>(),
        16,
        1,
        {{0, 0}},
        {}},
       3,
       3},
      {{"dialog", Of<&VQForm::GetPresentDocumentAsDialog, &VQForm::SetPresentDocumentAsDialog>(), 16, 3, {{1, 2}}, {}},
       0,
       1},
      {{"no dialog",
        Of<&VQForm::GetPresentDocumentAsDialog, &VQForm::SetPresentDocumentAsDialog>(),
        16,
        2,
        {{0, 0}},
        {}},
       3,
       3},
      {{"in field",
        Of<&VQForm::GetCreateObjectInFieldOption, &VQForm::SetCreateObjectInFieldOption>(),
        20,
        0xFFFFFFFF,
        Each({1, 2, 4}),
        {{0, kInvalid}, {3, kInvalid}, {5, kInvalid}, {8, kInvalid}}}},
      {{"launch",
        Of<&VQForm::GetLaunchObjectWhenFlags, &VQForm::SetLaunchObjectWhenFlags>(),
        12,
        0xFFFFFFFF,
        Each({0, 1, 7}),
        {{8, kInvalid}, {0x80000001, kInvalid}}}},
      {{"hide",
        Of<&VQForm::GetHideDocumentWhenFlags, &VQForm::SetHideDocumentWhenFlags>(),
        8,
        0xFFFFFFFF,
        Each({0, 7, 0x3F}),
        {{64, kInvalid}, {0x80000001, kInvalid}}},
       7},
      {{"object",
        Of<&VQForm::GetAutoLaunchObjectType, &VQForm::SetAutoLaunchObjectType>(),
        4,
        0xFFFFFFFF,
        Each({2}),
        {{1, kInvalid}, {3, kInvalid}, {0x80000002, kInvalid}}}},
  };
  for (const LaunchRow& row : rows) {
    SCOPED_TRACE(row.Name);
    const std::string before = LaunchRecord(2, 0, row.Launch, row.OleFlags, 4, "Field");
    for (const auto& [value, stored] : row.Values) {
      VQForm form = WithLaunch(before);
      ASSERT_EQ(row.Access.Set(form, value), VQ_OK);
      ASSERT_EQ(form.Save(), VQ_OK);
      EXPECT_EQ(StoredValue(form, "$AUTOLAUNCH"), With(before, {row.At, row.Mask, stored})) << value;
      EXPECT_EQ(row.Access.Get(ReopenedForm(form)), value);
    }
    CheckRefused(row, WithLaunch(before));
  }
  VQForm form = WithLaunch(LaunchRecord(2, 0, 0, 0, 4, "Field"));
  ASSERT_EQ(form.SetCreateObjectInFieldName(Store("Body")), VQ_OK);
  EXPECT_EQ(form.SetCreateObjectInFieldName(Store(std::string(32768, 'n'))), VQERR_STRING_TOO_LONG);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(form, "$AUTOLAUNCH"), LaunchRecord(2, 0, 0, 0, 4, "Body"));
}

struct LetterRow {
  const char* name;
  vqtest::Accessor<VQForm> access;
  unsigned long value;
  const char* before;
  const char* after;
};

TEST_F(FormProperty, LettersGoAndComeAlone) {
  const auto menu = Of<&VQForm::GetIncludeInMenuOption, &VQForm::SetIncludeInMenuOption>();
  const auto search = Of<&VQForm::GetIncludeInSearchBuilder, &VQForm::SetIncludeInSearchBuilder>();
  const auto refresh = Of<&VQForm::GetAllowDesignRefreshToModify, &VQForm::SetAllowDesignRefreshToModify>();
  const auto browsers = Of<&VQForm::GetHideFromBrowsers, &VQForm::SetHideFromBrowsers>();
  const auto clients = Of<&VQForm::GetHideFromClients, &VQForm::SetHideFromClients>();
  const auto older = Of<&VQForm::GetHideFromR4Clients, &VQForm::SetHideFromR4Clients>();
  const LetterRow rows[] = {
      {"in the menu", menu, 0, "CHK", "K"},     {"nowhere", menu, 1, "CK", "HK"},
      {"in the dialog", menu, 2, "HK", "CK"},   {"not searched", search, 0, "K", "DK"},
      {"searched", search, 1, "DK", "K"},       {"kept back", refresh, 0, "K", "PK"},
      {"refreshed", refresh, 1, "PK", "K"},     {"no browsers", browsers, 1, "K", "wK"},
      {"browsers", browsers, 0, "wK", "K"},     {"no clients", clients, 1, "K", "nK"},
      {"clients", clients, 0, "nK", "K"},       {"no older ones", older, 1, "K", "456789K"},
      {"older ones", older, 0, "456789K", "K"},
  };
  for (const LetterRow& row : rows) {
    SCOPED_TRACE(row.name);
    VQForm form = WithLetters(row.before);
    EXPECT_NE(row.access.Get(form), row.value);
    ASSERT_EQ(row.access.Set(form, row.value), VQ_OK);
    EXPECT_EQ(form.IsModified(), 1);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredText(form, "$Flags"), row.after);
    EXPECT_EQ(row.access.Get(ReopenedForm(form)), row.value);
    EXPECT_EQ(StoredValue(form, "$Info"), InfoRecord());
  }
}

TEST_F(FormProperty, TextsOfTheirOwn) {
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQForm&)> edit;
    const char* item;
    const char* text;  // "-" for no item
    int flags;
  };
  const Row rows[] = {
      {"all may write", [](VQForm& f) { return f.SetAuthors(People()); }, "$FormUsers", "-", -1},
      {"some may", [](VQForm& f) { return f.SetAllowAllAuthors(0); }, "$FormUsers", "Ann|Bob", 0x0004},
      {"nobody", [](VQForm& f) { return f.SetAuthors(VQText()); }, "$FormUsers", "", 0x0004},
      {"all again", [](VQForm& f) { return f.SetAllowAllAuthors(1); }, "$FormUsers", "-", -1},
      {"readers", [](VQForm& f) { return f.SetReaders(People()); }, "$Readers", "-", -1},
      {"some read", [](VQForm& f) { return f.SetAllowAllReaders(0); }, "$Readers", "Ann|Bob", 0x0004},
      {"keys", [](VQForm& f) { return f.SetDefaultEncryptionKeys(People()); }, "SecretEncryptionKeys", "Ann|Bob", 4},
      {"template", [](VQForm& f) { return f.SetInheritsFromTemplateName("T"); }, "$Class", "T", 0x0004},
      {"kept back", [](VQForm& f) { return f.SetAllowDesignRefreshToModify(0); }, "$Class", "-", -1},
      {"allowed", [](VQForm& f) { return f.SetAllowDesignRefreshToModify(1); }, "$Class", "T", 0x0004},
  };
  VQForm form = StoredForm({});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_EQ(row.edit(form), VQ_OK);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredText(form, row.item), row.text);
    EXPECT_EQ(StoredFlags(form, row.item), row.flags);
  }
  const VQForm read = ReopenedForm(form);
  VQText authors, readers, keys;
  ASSERT_EQ(read.GetAuthors(&authors), VQ_OK);
  ASSERT_EQ(read.GetReaders(&readers), VQ_OK);
  ASSERT_EQ(read.GetDefaultEncryptionKeys(&keys), VQ_OK);
  EXPECT_EQ(authors.GetCount(), 0U);
  EXPECT_EQ(readers.GetCount() + keys.GetCount(), 4U);
  EXPECT_EQ(TextOf(read.GetInheritsFromTemplateName()), "T");
  EXPECT_EQ(read.GetAuthors(nullptr), VQERR_NULL_POINTER);
}

TEST_F(FormProperty, FormulasAreItemsOfCode) {
  struct Row {
    const char* item;
    VQSTATUS (VQForm::*get)(VQFormula*) const;
    VQSTATUS (VQForm::*set)(const VQFormula&);
  };
  const Row rows[] = {
      {"$HTMLBodyTag", &VQForm::GetHTMLAttributesFormula, &VQForm::SetHTMLAttributesFormula},
      {"$WEBQueryOpen", &VQForm::GetWebQueryOpenFormula, &VQForm::SetWebQueryOpenFormula},
      {"$WEBQuerySave", &VQForm::GetWebQuerySaveFormula, &VQForm::SetWebQuerySaveFormula},
      {"$WindowTitle", &VQForm::GetWindowTitleFormula, &VQForm::SetWindowTitleFormula},
  };
  VQForm form = StoredForm({});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.item);
    VQFormula formula = Formula("\"left alone\"");
    EXPECT_EQ((form.*row.get)(&formula), VQWARN_NOT_FOUND);
    EXPECT_EQ((form.*row.get)(nullptr), VQERR_NULL_POINTER);
    EXPECT_EQ(TextOf(formula.GetText()), "\"left alone\"");
    ASSERT_EQ((form.*row.set)(Formula("1 + A")), VQ_OK);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredFlags(form, row.item), 1);
    ASSERT_EQ((ReopenedForm(form).*row.get)(&formula), VQ_OK);
    EXPECT_EQ(TextOf(formula.GetText()), "1 + A");
    ASSERT_EQ((form.*row.set)(VQFormula()), VQ_OK);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredFlags(form, row.item), -1);
  }
}

class FormDatabase : public vqtest::FormsFixture {
 protected:
  // By each key there is; what is of another kind is refused, and the handle left empty.
  template <typename Handle, typename Get>
  void CheckWays(const Handle& made, Get get) {
    Handle found;
    EXPECT_EQ(get(made.GetSlateID(), &found), VQ_OK);
    EXPECT_EQ(found.GetSlateID(), made.GetSlateID());
    found = Handle();
    EXPECT_EQ(get(made.GetUniversalID(), &found), VQ_OK);
    EXPECT_EQ(found.GetSlateID(), made.GetSlateID());
    ENGHANDLE handle = 0;
    const auto id = static_cast<std::uint32_t>(made.GetSlateID());
    ASSERT_EQ(EngSlateOpen(Db.GetDatabaseBody()->GetHandle(), id, 0, &handle), ENG_OK);
    found = Handle();
    EXPECT_EQ(get(vq::FromHandle(handle), &found), VQ_OK);
    EXPECT_EQ(found.IsOpen(), 1);
    EXPECT_EQ(found.GetSlateID(), made.GetSlateID());
    const Handle copied(found);
    EXPECT_EQ(copied.GetSlateBody(), found.GetSlateBody());
    EXPECT_EQ(Handle(Db.GetDatabaseBody(), id).GetSlateID(), made.GetSlateID());
    const VQDocument document = NewDocument("x");
    EXPECT_TRUE(VQIsError(ReturnedStatusOf([&] { return get(document.GetSlateID(), &found); })));
    EXPECT_TRUE(VQIsError(StatusOf([&] { return Handle(static_cast<const VQSlate&>(document)); })));
  }
  template <typename Array>
  static void CheckArray(const Array& array, unsigned long id) {
    ASSERT_EQ(array.GetCount(), 1U);
    EXPECT_EQ(array[0].GetSlateID(), id);
    EXPECT_EQ(StatusOf([&] { return array[1]; }), VQERR_BAD_SUBSCRIPT);
  }
};

TEST_F(FormDatabase, DesignsAreFoundByAnyKey) {
  VQForm form = NewForm("F");
  VQFormField field = AddField(form, "Shared");
  ASSERT_EQ(field.Share(), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("S"), &subform), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQSharedField shared;
  ASSERT_EQ(Db.GetSharedField(Store("Shared"), &shared), VQ_OK);
  CheckWays(form, [&](auto key, VQForm* found) { return Db.GetForm(key, found); });
  CheckWays(subform, [&](auto key, VQSubform* found) { return Db.GetSubform(key, found); });
  CheckWays(shared, [&](auto key, VQSharedField* found) { return Db.GetSharedField(key, found); });
  VQFormArray forms;
  ASSERT_EQ(Db.GetForms(&forms), VQ_OK);
  CheckArray(forms, form.GetSlateID());
  VQSubformArray subforms;
  ASSERT_EQ(Db.GetSubforms(&subforms), VQ_OK);
  CheckArray(subforms, subform.GetSlateID());
  VQSharedFieldArray fields;
  ASSERT_EQ(Db.GetSharedFields(&fields), VQ_OK);
  CheckArray(fields, shared.GetSlateID());
  EXPECT_EQ(Db.GetSharedFields(nullptr), VQERR_NULL_POINTER);
}

// A copy is stored at once; the source may go.
TEST_F(FormDatabase, DesignsAreCopiedAndDeleted) {
  VQSubform subform, copy;
  ASSERT_EQ(Db.CreateSubform(Store("S"), &subform), VQ_OK);
  VQRichText text;
  ASSERT_EQ(subform.GetSubformBody(&text), VQ_OK);
  ASSERT_EQ(text.Append(Store("words")), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return VQSubform().SetName(Store("x")); }), VQERR_OBJECT_NOT_INITIALIZED);
  ASSERT_EQ(Db.CreateSubform(subform, &copy), VQ_OK);
  EXPECT_EQ(copy.SetName(Store("S")), VQERR_SUBFORM_NOT_UNIQUE);
  EXPECT_EQ(copy.SetName(VQString()), VQERR_NULL_STRING);
  EXPECT_EQ(copy.SetName(Store(std::string(130, 'n'))), VQERR_SUBFORM_NAME_TOO_LONG);
  ASSERT_EQ(copy.SetName(Store("Copy|c")), VQ_OK);
  ASSERT_EQ(copy.GetSubformSlateBody()->Save(0), VQ_OK);
  ASSERT_EQ(Db.DeleteSubform(&subform), VQ_OK);
  ASSERT_EQ(Db.GetSubform(Store("c"), &subform), VQ_OK);
  ASSERT_EQ(subform.Open(), VQ_OK);
  ASSERT_EQ(subform.GetSubformBody(&text), VQ_OK);
  EXPECT_EQ(vqtest::Plain(text), "words");
  const VQRTSubform place(subform);
  EXPECT_EQ(TextOf(place.GetSubformName()), "Copy");
  VQSubform empty;
  EXPECT_EQ(ReturnedStatusOf([&] { return Db.CreateSubform(empty, &copy); }), VQERR_UNINITIALIZED_ARGUMENT);
  VQForm none, made;
  EXPECT_EQ(ReturnedStatusOf([&] { return Db.CreateForm(none, &made); }), VQERR_UNINITIALIZED_ARGUMENT);
}

TEST_F(FormDatabase, ASharedFieldTakesAnotherDesign) {
  const VQFormField first(Store("First"), VQRTTYPE_TEXT_FIELD), second(Store("Second"), VQRTTYPE_NUMBER_FIELD);
  VQSharedField shared, copy;
  ASSERT_EQ(Db.CreateSharedField(first, &shared), VQ_OK);
  ASSERT_EQ(Db.CreateSharedField(VQFormField(Store("Taken"), VQRTTYPE_TEXT_FIELD), nullptr), VQ_OK);
  EXPECT_EQ(Db.CreateSharedField(first, nullptr), VQERR_SHARED_FIELD_EXISTS);
  ASSERT_EQ(shared.Open(), VQ_OK);
  EXPECT_EQ(shared.SetField(VQFormField()), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(shared.SetField(VQFormField(Store("Taken"), VQRTTYPE_TEXT_FIELD)), VQERR_SHARED_FIELD_EXISTS);
  ASSERT_EQ(shared.SetField(second), VQ_OK);
  ASSERT_EQ(shared.Save(), VQ_OK);
  ASSERT_EQ(Db.GetSharedField(Store("Second"), &shared), VQ_OK);
  EXPECT_EQ(Db.SharedFieldExists(Store("First")), 0);
  ASSERT_EQ(shared.Open(), VQ_OK);
  VQFormField field;
  ASSERT_EQ(shared.GetField(&field), VQ_OK);
  EXPECT_EQ(field.GetDataType(), TYPE_NUMBER);
  ASSERT_EQ(Db.CreateSharedField(shared, &copy), VQ_OK);
  ASSERT_EQ(copy.GetField(&field), VQ_OK);
  EXPECT_EQ(TextOf(field.GetName()), "Second");
  copy.Close();
  ASSERT_EQ(Db.DeleteSharedField(&shared), VQ_OK);
  EXPECT_EQ(Db.SharedFieldExists(Store("Second")), 1) << "the copy";
  ASSERT_EQ(Db.DeleteSharedField(&copy), VQ_OK);
  EXPECT_EQ(Db.SharedFieldExists(Store("Second")), 0);
}

}  // namespace
