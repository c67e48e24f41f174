// Forms: stored items in, a property changed, stored items out; the list of fields; and what stands in the way.
#include <functional>

#include "tests/vq/support/forms_fixture.h"
#include "vq/richobjects/vqgraphic.h"

namespace {

using vqtest::Bytes;
using vqtest::FieldBytes;
using vqtest::InfoRecord;
using vqtest::LaunchRecord;
using vqtest::NamedField;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::StoredItem;
using vqtest::TextOf;
using vqtest::Word;

class Form : public vqtest::FormsFixture {
 protected:
  std::string BodyOf(const VQForm& form) {
    VQRichText body;
    EXPECT_EQ(form.GetFormBody(&body), VQ_OK);
    return vqtest::Values(body)[0].substr(2);
  }
};

TEST_F(Form, MadeSavedAndReadAgain) {
  VQForm form = NewForm("Order|ord;o");
  EXPECT_EQ(TextOf(form.GetAlias()), "ord|o");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(Store("Customer: ")), VQ_OK);
  AddField(form, "Customer");
  AddField(form, "Amount", VQRTTYPE_NUMBER_FIELD);
  AddField(form, "Due", VQRTTYPE_DATETIME_FIELD);
  EXPECT_EQ(form.IsModified(), 1);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(form.IsModified(), 0);
  EXPECT_EQ(StoredText(form, "$TITLE"), "Order|ord|o");
  EXPECT_EQ(StoredText(form, "$$ScriptName"), "o");
  EXPECT_EQ(StoredText(form, "$Fields"), "Customer|Amount|Due");
  EXPECT_EQ(StoredFlags(form, "Customer"), VQITEMFLAGS_PLACEHOLDER);
  EXPECT_EQ(StoredFlags(form, "$Fields"), VQITEMFLAGS_SUMMARY);
  EXPECT_EQ(StoredValue(form, "Due"), std::string(8, '\0'));
  VQForm again;
  ASSERT_EQ(Db.GetForm(Store("ord"), &again), VQ_OK);
  ASSERT_EQ(again.Open(), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return again.Open(); }), VQWARN_ALREADY_OPEN);
  EXPECT_EQ(TextOf(again.GetName()), "Order");
  EXPECT_EQ(NamesIn(again), "Customer|Amount|Due");
  EXPECT_EQ(NamesIn(again, VQRTTYPE_NUMBER_FIELD), "Amount");
  EXPECT_EQ(again.HasFormField(Store("Nobody")), 0);
  EXPECT_EQ(again.GetAllowAllReaders(), 1);
  EXPECT_EQ(again.GetUserCanOverrideBackground(), 1);
}

// What a save left is gone by the next: fields that were deleted, and the list of an empty form.
TEST_F(Form, FieldsAreThoseOfTheBody) {
  VQForm form = NewForm("Fields");
  AddField(form, "One");
  ASSERT_EQ(form.Save(), VQ_OK);
  AddField(form, "Two");
  EXPECT_EQ(form.HasFormField(Store("Two")), 1);
  VQFormField one;
  ASSERT_EQ(form.GetFormField(Store("One"), &one), VQ_OK);
  ASSERT_EQ(one.SetName(Store("Uno")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Uno|Two");
  EXPECT_EQ(StoredFlags(form, "One"), -1);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Uno|Two");
  VQFormFieldArray fields;
  ASSERT_EQ(form.GetFormFields(&fields), VQ_OK);
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  for (int i = 0; i < 2; ++i) {
    VQRTObject field(fields[0]);
    ASSERT_EQ(body.Delete(&field), VQ_OK);
  }
  EXPECT_EQ(fields.GetCount(), 0U);
  EXPECT_EQ(StatusOf([&] { return fields[0]; }), VQERR_BAD_SUBSCRIPT);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredFlags(form, "$Fields"), -1);
  EXPECT_EQ(StoredFlags(form, "Two"), -1);
}

// A list of names from elsewhere must not take the form's own items away, nor a field's placeholder overwrite them.
TEST_F(Form, FieldListsFromStrangers) {
  const std::string names = Word(5) + Word(6) + Word(5) + Word(7) + Word(6) + Word(4) +
                            "$TITLE"
                            "$Info"
                            "nowhere"
                            "Remark"
                            "$ACT";
  FieldBytes field = NamedField("$Readers");
  VQForm form = StoredForm({{"$Fields", TYPE_TEXT_LIST, names},
                            {"Remark", TYPE_TEXT, "kept"},
                            {"$ACTIONS", 0x1234, "opaque"},
                            {"$Body", TYPE_COMPOSITE, field.Record() + NamedField("Remark").Record()}});
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$TITLE"), "Stored");
  EXPECT_EQ(StoredText(form, "Remark"), "kept");
  EXPECT_EQ(StoredValue(form, "$ACTIONS"), "opaque");
  EXPECT_EQ(StoredFlags(form, "$Readers"), -1);
  EXPECT_EQ(StoredText(form, "$Fields"), "$Readers|Remark");
  EXPECT_EQ(ReopenedForm(form).GetAllowAllReaders(), 1);
}

TEST_F(Form, NamesThatAreRefused) {
  VQForm other = NewForm("Taken|alias");
  ASSERT_EQ(other.Save(), VQ_OK);
  VQForm form = NewForm("Mine");
  struct Row {
    std::string name;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"", VQERR_NULL_STRING},
      {"|B", VQERR_INVALID_PARAMETER},
      {"Taken", VQERR_FORM_EXISTS},
      {"Fresh;alias", VQERR_FORM_EXISTS},
      {std::string(130, 'n'), VQERR_FORM_NAME_TOO_LONG},
      {std::string(100, 'n') + "|" + std::string(30, 'a'), VQERR_FORM_NAME_TOO_LONG},
      {std::string(100, 'n') + "|" + std::string(29, 'a'), VQ_OK},
      {std::string(129, 'n') + "|", VQERR_FORM_NAME_TOO_LONG},  // the alias stays
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ReturnedStatusOf([&] { return form.SetName(Store(row.name)); }), row.status) << row.name;
  }
  EXPECT_EQ(form.SetAlias(Store("alias")), VQERR_FORM_EXISTS);
  EXPECT_EQ(form.SetAlias(Store("|alias")), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(form.SetAlias(VQString()), VQ_OK);
  EXPECT_EQ(form.SetName(Store(std::string(129, 'n'))), VQ_OK);
  EXPECT_EQ(Db.CreateForm(Store("Taken"), &form), VQERR_FORM_EXISTS);
  VQForm nameless;
  ASSERT_EQ(Db.CreateSlate(0x10004, &nameless), VQ_OK);
  EXPECT_EQ(nameless.Save(), VQERR_FORM_NAME_REQUIRED);
  EXPECT_EQ(nameless.IsModified(), 1);
}

// Copies are what a reader of the source would see after its next save, and their names are given anew one by one.
TEST_F(Form, CopiesTakeUnsavedChangesAlong) {
  VQForm source = NewForm("Source|alias"), copy;
  AddField(source, "One");
  ASSERT_EQ(source.SetEditOnOpen(1), VQ_OK);
  for (const char* name : {"Two", "Three"}) {
    AddField(source, name);
    ASSERT_EQ(source.SetWebQueryOpenFormula(Formula(std::string("\"") + name + "\"")), VQ_OK);
    ASSERT_EQ(Db.CreateForm(source, &copy), VQ_OK) << name;
    ASSERT_EQ(copy.Open(), VQ_OK) << name;
    EXPECT_EQ(copy.GetEditOnOpen(), 1);
    VQFormula formula;
    ASSERT_EQ(copy.GetWebQueryOpenFormula(&formula), VQ_OK);
    EXPECT_EQ(TextOf(formula.GetText()), std::string("\"") + name + "\"");
    ASSERT_EQ(source.Save(), VQ_OK);
    EXPECT_EQ(NamesIn(copy), NamesIn(source));
  }
  ASSERT_EQ(Db.CreateForm(source, &copy), VQ_OK) << "with its list made, and nothing else";
  EXPECT_EQ(StoredText(copy, "$Fields"), "One|Two|Three");
  ASSERT_EQ(copy.Open(), VQ_OK);
  EXPECT_EQ(copy.SetName(Store("Source")), VQERR_FORM_EXISTS);
  ASSERT_EQ(copy.SetName(Store("Copy")), VQ_OK);
  EXPECT_EQ(copy.SetAlias(Store("alias")), VQERR_FORM_EXISTS);
  ASSERT_EQ(copy.SetAlias(VQString()), VQ_OK);
  ASSERT_EQ(copy.Save(), VQ_OK);
  EXPECT_EQ(StoredText(copy, "$TITLE"), "Copy");
  VQForm nameless;
  ASSERT_EQ(Db.CreateSlate(0x10004, &nameless), VQ_OK);
  ASSERT_EQ(nameless.SetEditOnOpen(1), VQ_OK);
  VQFormArray forms;
  EXPECT_EQ(ReturnedStatusOf([&] { return Db.CreateForm(nameless, nullptr); }), VQERR_FORM_NAME_REQUIRED);
  ASSERT_EQ(Db.GetForms(&forms), VQ_OK);
  EXPECT_EQ(forms.GetCount(), 4U);
}

// Bits of $Info: a change of one leaves spare words, unknown bits, the name and the tail as they were.
TEST_F(Form, AChangeOfInfoTouchesItsOwnBitsAlone) {
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQForm&)> edit;
    unsigned flags, flags2;  // from 0x8080 and 0x1407
  };
  const Row rows[] = {
      {"type 1", [](VQForm& f) { return f.SetFormType(VQFORMTYPE_RESPONSE); }, 0x8088, 0x1407},
      {"type 2", [](VQForm& f) { return f.SetFormType(VQFORMTYPE_RESPONSE_TO_RESPONSE); }, 0x8084, 0x1407},
      {"mail", [](VQForm& f) { return f.SetShowMailSendOnClose(7); }, 0x8082, 0x1407},
      {"graphic", [](VQForm& f) { return f.SetHideBackgroundGraphicIn16ColorMode(1); }, 0xA080, 0x1407},
      {"version 128", [](VQForm& f) { return f.SetVersioningOption(VQVERSIONINGOPTION_SIBLINGS); }, 0x0080, 0x1487},
      {"version 16384", [](VQForm& f) { return f.SetVersioningOption(VQVERSIONINGOPTION_UPDATES_ARE_RESPONSES); },
       0x4080, 0x1407},
      {"inherit 0", [](VQForm& f) { return f.SetInheritDocumentOption(VQINHERITDOCOPTION_NONE); }, 0x8080, 0x1406},
      {"inherit 1", [](VQForm& f) { return f.SetInheritDocumentOption(VQINHERITDOCOPTION_LINK); }, 0x8080, 0x1403},
      {"inherit 3", [](VQForm& f) { return f.SetInheritDocumentOption(VQINHERITDOCOPTION_RICH_TEXT); }, 0x8080, 0x1405},
      {"context 2", [](VQForm& f) { return f.SetContextPaneOption(VQCONTEXTPANEOPTION_PARENT); }, 0x8080, 0x1437},
      {"anonymous", [](VQForm& f) { return f.SetIsAnonymousForm(1); }, 0x8080, 0x1507},
      {"exchange", [](VQForm& f) { return f.SetDisableFieldExchange(1); }, 0x8080, 0x1C07},
  };
  for (const Row& row : rows) {
    VQForm form = StoredForm(
        {{"$Info", TYPE_COMPOSITE, InfoRecord(0x8080, 0x1407, "Body", "newer!") + vqtest::Unknown("later")}});
    ASSERT_EQ(row.edit(form), VQ_OK) << row.what;
    ASSERT_EQ(form.Save(), VQ_OK) << row.what;
    EXPECT_EQ(StoredValue(form, "$Info"),
              InfoRecord(row.flags, row.flags2, "Body", "newer!") + vqtest::Unknown("later"))
        << row.what;
  }
}

TEST_F(Form, WhatSettersRefuse) {
  VQForm form = NewForm("Limits");
  struct Row {
    const char* what;
    std::function<VQSTATUS()> set;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"type", [&] { return form.SetFormType(static_cast<VQFORMTYPE>(3)); }, VQERR_INVALID_PARAMETER},
      {"versions", [&] { return form.SetVersioningOption(static_cast<VQVERSIONINGOPTION>(1)); },
       VQERR_INVALID_PARAMETER},
      {"object", [&] { return form.SetAutoLaunchObjectType(static_cast<VQAUTOLAUNCHOBJECTTYPE>(1)); },
       VQERR_INVALID_PARAMETER},
      {"in field 0", [&] { return form.SetCreateObjectInFieldOption(static_cast<VQCREATEOBJECTINFIELDOPTION>(0)); },
       VQERR_INVALID_PARAMETER},
      {"in field 3", [&] { return form.SetCreateObjectInFieldOption(static_cast<VQCREATEOBJECTINFIELDOPTION>(3)); },
       VQERR_INVALID_PARAMETER},
      {"launch", [&] { return form.SetLaunchObjectWhenFlags(8); }, VQERR_INVALID_PARAMETER},
      {"hide", [&] { return form.SetHideDocumentWhenFlags(64); }, VQERR_INVALID_PARAMETER},
      {"colour", [&] { return form.SetBackgroundColor(240); }, VQERR_INVALID_PARAMETER},
      {"menu", [&] { return form.SetIncludeInMenuOption(static_cast<VQINCLUDEINMENUOPTION>(3)); },
       VQERR_INVALID_PARAMETER},
      {"inherited name", [&] { return form.SetInheritDocumentFieldName(Store(std::string(231, 'n'))); },
       VQERR_STRING_TOO_LONG},
      {"longest inherited name", [&] { return form.SetInheritDocumentFieldName(Store(std::string(230, 'n'))); }, VQ_OK},
      {"graphic", [&] { return form.SetBackgroundGraphic(VQGraphic()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"no graphic", [&] { return form.GetBackgroundGraphic(std::make_unique<VQGraphic>().get()); }, VQERR_NOT_FOUND},
      {"graphic gone", [&] { return form.RemoveBackgroundGraphic(); }, VQ_OK},
      {"fields of text",
       [&] {
         VQFormFieldArray fields;
         return form.GetFormFields(&fields, VQRTTYPE_STYLIZED_TEXT);
       },
       VQERR_INVALID_PARAMETER},
      {"no field",
       [&] {
         VQFormField field;
         return form.GetFormField(Store("x"), &field);
       },
       VQWARN_NOT_FOUND},
      {"null field", [&] { return form.GetFormField(Store("x"), nullptr); }, VQERR_NULL_POINTER},
      {"another kind of field",
       [&] {
         VQKeywordsField field;
         return form.GetFormField(Store("Text"), &field);
       },
       VQERR_CONVERSION_FAILED},
  };
  AddField(form, "Text");
  for (const Row& row : rows) EXPECT_EQ(ReturnedStatusOf(row.set), row.status) << row.what;
  form.Close();
  EXPECT_EQ(ReturnedStatusOf([&] { return form.SetEditOnOpen(1); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([] { return VQForm().GetEditOnOpen(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

// {stored object settings, what a save makes of them, the mirrors in $Info}
TEST_F(Form, LaunchSettingsAreBroughtIntoOrder) {
  struct Row {
    const char* what;
    unsigned type, hide, launch, ole;
    unsigned hide_after, launch_after, ole_after, flags;
  };
  const Row rows[] = {
      {"all launched, none hidden", 2, 0x38, 7, 2, 0, 7, 2, 0x3F80},
      {"in place", 2, 0x3F, 7, 1, 0, 3, 1, 0x1B80},
      {"all hidden as a dialog", 2, 0x3F, 7, 2, 0x3F, 7, 0, 0x0780},
      {"not launched", 2, 0x3F, 1, 2, 0x09, 1, 2, 0x0180},
      {"type 4", 4, 0x3F, 7, 3, 4, 4, 0, 0x0480},
      {"type 8", 8, 1, 1, 1, 4, 4, 0, 0x0480},
      {"an unknown type", 5, 0x3F, 7, 3, 0x3F, 7, 3, 0x0080},
  };
  for (const Row& row : rows) {
    VQForm form = StoredForm(
        {{"$AUTOLAUNCH", TYPE_COMPOSITE, LaunchRecord(row.type, row.hide, row.launch, row.ole, 4, "Field")}});
    EXPECT_EQ(TextOf(form.GetCreateObjectInFieldName()), "Field");
    ASSERT_EQ(form.SetCreateObjectInFieldOption(VQCREATEOBJECTINFIELDOPTION_NAMED_FIELD), VQ_OK);
    ASSERT_EQ(form.Save(), VQ_OK) << row.what;
    VQForm again = ReopenedForm(form);
    EXPECT_EQ(again.GetHideDocumentWhenFlags(), row.hide_after) << row.what;
    EXPECT_EQ(again.GetLaunchObjectWhenFlags(), row.launch_after) << row.what;
    EXPECT_EQ(again.GetLaunchOLEObjectInPlace() + 2 * again.GetPresentDocumentAsDialog(),
              static_cast<int>(row.ole_after))
        << row.what;
    EXPECT_EQ(StoredValue(form, "$Info"), InfoRecord(row.flags)) << row.what;
    const bool reset = row.type == 4 || row.type == 8;
    EXPECT_EQ(TextOf(again.GetCreateObjectInFieldName()), reset ? "" : "Field") << row.what;
    ASSERT_EQ(again.SetAutoLaunchObjectType(VQAUTOLAUNCHOBJECTTYPE_NONE), VQ_OK);
    ASSERT_EQ(again.Save(), VQ_OK);
    EXPECT_EQ(StoredValue(form, "$AUTOLAUNCH"), "-") << row.what;
  }
  VQForm form = NewForm("Both");
  ASSERT_EQ(form.SetPresentDocumentAsDialog(1), VQ_OK);
  ASSERT_EQ(form.SetLaunchOLEObjectInPlace(0), VQ_OK);
  EXPECT_EQ(form.GetPresentDocumentAsDialog(), 1);
  ASSERT_EQ(form.SetLaunchOLEObjectInPlace(1), VQ_OK);
  EXPECT_EQ(form.GetPresentDocumentAsDialog(), 0);
}

// An item's presence is the property.
TEST_F(Form, ItemsOfProperties) {
  struct Row {
    const char* item;
    std::function<VQSTATUS(VQForm&, int)> set;
    std::function<int(VQForm&)> get;
    int present_for;
    int flags;
  };
  const Row rows[] = {
      {"$ConflictAction", [](VQForm& f, int on) { return f.SetMergeReplicationConflicts(on); },
       [](VQForm& f) { return f.GetMergeReplicationConflicts(); }, 1, 4},
      {"$PublicAccess", [](VQForm& f, int on) { return f.SetAllowPublicAccessUsers(on); },
       [](VQForm& f) { return f.GetAllowPublicAccessUsers(); }, 1, 4},
      {"$KeepPrivate", [](VQForm& f, int on) { return f.SetDisablePrintingAndCopying(on); },
       [](VQForm& f) { return f.GetDisablePrintingAndCopying(); }, 1, 5},
      {"$NoBackgroundOverride", [](VQForm& f, int on) { return f.SetUserCanOverrideBackground(on); },
       [](VQForm& f) { return f.GetUserCanOverrideBackground(); }, 0, 4},
      {"$WebFlags", [](VQForm& f, int on) { return f.SetTreatContentsAsHTML(on); },
       [](VQForm& f) { return f.GetTreatContentsAsHTML(); }, 1, 5},
      {"$FormUsers", [](VQForm& f, int on) { return f.SetAllowAllAuthors(on); },
       [](VQForm& f) { return f.GetAllowAllAuthors(); }, 0, 4},
      {"$Readers", [](VQForm& f, int on) { return f.SetAllowAllReaders(on); },
       [](VQForm& f) { return f.GetAllowAllReaders(); }, 0, 4},
  };
  for (const Row& row : rows) {
    VQForm form = StoredForm({});
    for (const int on : {1, 0, 1}) {
      ASSERT_EQ(row.set(form, on), VQ_OK) << row.item;
      ASSERT_EQ(form.Save(), VQ_OK) << row.item;
      VQForm again = ReopenedForm(form);
      EXPECT_EQ(row.get(again), on) << row.item;
      EXPECT_EQ(StoredFlags(form, row.item), on == row.present_for ? row.flags : -1) << row.item;
    }
  }
}

TEST_F(Form, TextsFormulasAndTheClassWord) {
  VQForm form = NewForm("All");
  VQText names;
  names << Store("Ann") << Store("Bob");
  ASSERT_EQ(form.SetAllowAllReaders(0), VQ_OK);
  ASSERT_EQ(form.SetReaders(names), VQ_OK);
  ASSERT_EQ(form.SetDefaultEncryptionKeys(names), VQ_OK);
  ASSERT_EQ(form.SetInheritsFromTemplateName(Store("Template")), VQ_OK);
  ASSERT_EQ(form.SetWindowTitleFormula(Formula("\"T: \" + Subject")), VQ_OK);
  ASSERT_EQ(form.SetIsDefaultForm(1), VQ_OK);
  ASSERT_EQ(form.SetHideFromR4Clients(1), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQForm again = ReopenedForm(form);
  EXPECT_EQ(StoredText(form, "$Readers"), "Ann|Bob");
  EXPECT_EQ(again.GetSlateType(), 0x18004U);
  EXPECT_EQ(again.GetIsDefaultForm(), 1);
  VQForm found;
  ASSERT_EQ(Db.GetDefaultForm(&found), VQ_OK);
  EXPECT_EQ(found.GetSlateID(), form.GetSlateID());
  VQFormula title;
  ASSERT_EQ(again.GetWindowTitleFormula(&title), VQ_OK);
  EXPECT_EQ(TextOf(title.GetText()), "\"T: \" + Subject");
  EXPECT_EQ(again.GetWebQuerySaveFormula(&title), VQWARN_NOT_FOUND);
  ASSERT_EQ(again.SetHTMLAttributesFormula(title), VQ_OK);
  EXPECT_EQ(again.IsModified(), 0) << "that formula alone does not count";
  ASSERT_EQ(again.SetAllowDesignRefreshToModify(0), VQ_OK);
  ASSERT_EQ(again.SetDefaultEncryptionKeys(VQText()), VQ_OK);
  ASSERT_EQ(again.SetReaders(VQText()), VQ_OK);
  ASSERT_EQ(again.SetIsDefaultForm(0), VQ_OK);
  ASSERT_EQ(again.Save(), VQ_OK);
  EXPECT_NE(StoredValue(form, "$HTMLBodyTag"), "-");
  EXPECT_EQ(StoredText(form, "$Class"), "-");
  EXPECT_EQ(StoredText(form, "$Flags"), "P456789");
  EXPECT_EQ(StoredValue(form, "SecretEncryptionKeys"), "-");
  EXPECT_EQ(StoredValue(form, "$Readers"), Word(1) + Word(0));
  EXPECT_EQ(ReopenedForm(form).GetSlateType(), 0x10004U);
}

TEST_F(Form, DamagedDesignsStayClosed) {
  const std::string info = InfoRecord(0x80, 1, "Body");
  struct Row {
    const char* what;
    std::vector<StoredItem> items;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"no info", {{"$Info", 0xFFFF, ""}}, VQERR_NOT_FOUND},
      {"info of text", {{"$Info", TYPE_TEXT, info}}, VQERR_NOT_FOUND},
      {"another signature", {{"$Info", TYPE_COMPOSITE, vqtest::Record(0x87, std::string(22, '\0'))}}, VQERR_NOT_FOUND},
      {"a paragraph", {{"$Info", TYPE_COMPOSITE, vqtest::Paragraph()}}, VQERR_NOT_FOUND},
      {"an unknown record ahead", {{"$Info", TYPE_COMPOSITE, vqtest::Unknown("x") + info}}, VQERR_NOT_FOUND},
      {"a name that lies", {{"$Info", TYPE_COMPOSITE, Bytes({0x86, 0x18}) + info.substr(2)}}, VQERR_CORRUPTED},
      {"launch signature", {{"$AUTOLAUNCH", TYPE_COMPOSITE, vqtest::Unknown(std::string(46, 'x'))}}, VQERR_NOT_FOUND},
      {"launch cut",
       {{"$AUTOLAUNCH", TYPE_COMPOSITE, vqtest::Record(SIG_CD_FORMPART, std::string(40, 'x'))}},
       VQERR_CORRUPTED},
      {"formula", {{"$WindowTitle", TYPE_TEXT, "x"}}, VQERR_CORRUPTED},
      {"readers", {{"$Readers", TYPE_NUMBER, std::string(8, '\0')}}, VQERR_CORRUPTED},
  };
  for (const Row& row : rows) {
    VQSTATUS status = VQ_OK;
    VQForm form = StoredForm(row.items, &status);
    EXPECT_EQ(status, row.status) << row.what;
    EXPECT_EQ(form.IsOpen(), 0) << row.what;
    EXPECT_EQ(ReturnedStatusOf([&] { return form.SetEditOnOpen(1); }), VQERR_OBJECT_NOT_INITIALIZED) << row.what;
  }
  for (std::size_t size = 0; size < info.size(); ++size) {
    VQSTATUS status = VQ_OK;
    StoredForm({{"$Info", TYPE_COMPOSITE, info.substr(0, size)}}, &status);
    EXPECT_EQ(status, size == 0 ? VQERR_NOT_FOUND : VQERR_CORRUPTED) << size;
  }
  // The length of a name that is not in use is nobody's business.
  std::string unused = InfoRecord(0x80, 0, "Body"), launch = LaunchRecord(2, 0, 1, 0, 2, "Body");
  unused[10] = launch[32] = 99;
  VQForm form = StoredForm({{"$Info", TYPE_COMPOSITE, unused}, {"$AUTOLAUNCH", TYPE_COMPOSITE, launch}});
  ASSERT_EQ(form.SetEditOnOpen(1), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(ReopenedForm(form).GetEditOnOpen(), 1);
}

// Opening a slate as a form that it can't be opened as leaves the slate, and what was changed in it.
TEST_F(Form, ASlateStaysOpenWhenItsDesignIsRefused) {
  VQSTATUS status = VQ_OK;
  const VQForm closed = StoredForm({{"$Info", 0xFFFF, ""}}, &status);
  VQSlate slate;
  ASSERT_EQ(Db.GetSlate(closed.GetSlateID(), &slate), VQ_OK);
  ASSERT_EQ(slate.Open(), VQ_OK);
  SetText(slate, "Note", "unsaved");
  VQForm form(slate);
  EXPECT_EQ(ReturnedStatusOf([&] { return form.Open(); }), VQERR_NOT_FOUND);
  EXPECT_EQ(form.SetEditOnOpen(1), VQERR_FORM_NOT_OPEN);
  ASSERT_EQ(slate.IsOpen(), 1);
  EXPECT_EQ(TextAt(slate, "Note"), "unsaved");
  const std::string info = InfoRecord();
  ASSERT_EQ(slate.CreateItem(Store("$Info"), TYPE_COMPOSITE, info.data(), info.size(), 0, VQITEMOPTION_REPLACE), VQ_OK);
  EXPECT_EQ(form.Open(), VQ_OK);
  EXPECT_EQ(form.GetEditOnOpen(), 0);
}

// Handles in any order: the rich text keeps the form, a field the tree as long as either lives, and all goes in the
// end.
TEST_F(Form, HandlesOutliveEachOther) {
  unsigned long id = 0;
  {
    VQRichText body;
    {
      VQForm form = NewForm("Life");
      AddField(form, "One");
      ASSERT_EQ(form.Save(), VQ_OK);
      id = form.GetSlateID();
      ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
    }
    EXPECT_EQ(body.Append(Store("still here")), VQ_OK);
  }
  VQFormFieldArray fields;
  VQFormField field;
  {
    VQForm form;
    ASSERT_EQ(Db.GetForm(id, &form), VQ_OK);
    ASSERT_EQ(form.Open(), VQ_OK);
    ASSERT_EQ(form.GetFormField(Store("One"), &field), VQ_OK);
    EXPECT_EQ(field.SetHelpDescription(Store("h")), VQ_OK);
    ASSERT_EQ(form.GetFormFields(&fields), VQ_OK);
  }
  EXPECT_EQ(TextOf(fields[0].GetHelpDescription()), "h");
  fields = VQFormFieldArray();
  EXPECT_EQ(StatusOf([&] { return field.GetName(); }), VQERR_OBJECT_CLOSED);
}

TEST_F(Form, SubformsBringTheirFields) {
  const std::string name = "Address" + std::string(100, '.');  // longer than a look-up by name takes
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store(name + "|adr"), &subform), VQ_OK);
  VQRichText inner;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  VQFormField street(Store("Street"), VQRTTYPE_TEXT_FIELD);
  street.SetComputeOption(VQCOMPUTEOPTION_EDITABLE);
  VQRTObject added;
  ASSERT_EQ(inner.Append(street, &added), VQ_OK);
  ASSERT_EQ(inner.Append(VQFormField(Store("Town"), VQRTTYPE_TEXT_FIELD)), VQ_OK);
  EXPECT_EQ(VQFormField(added).SetName(Store("Town")), VQERR_FIELD_EXISTS);
  ASSERT_EQ(inner.DeleteFormField(Store("Town")), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm form = NewForm("Customer");
  AddField(form, "Name");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subform)), VQ_OK);
  ASSERT_EQ(form.GetFormSlateBody()->AddSubform(subform), VQ_OK);
  ASSERT_EQ(form.GetFormSlateBody()->AddSubform(subform), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Name|Street");
  EXPECT_EQ(StoredText(form, "$SubForms"), name);
  VQForm again = ReopenedForm(form);
  EXPECT_EQ(NamesIn(again), "Name|Street");
  EXPECT_EQ(again.GetFormSlateBody()->RemoveSubform(Store("None")), VQERR_NOT_FOUND);
  EXPECT_EQ(again.GetFormSlateBody()->RemoveSubform(Store(name)), VQ_OK);
  VQFormBody unread(Db.GetDatabaseBody(), 0x10004, 0);
  EXPECT_EQ(unread.AddSubform(subform), VQERR_FORM_NOT_OPEN);
  EXPECT_EQ(unread.RemoveSubform(Store(name)), VQERR_FORM_NOT_OPEN);
  EXPECT_EQ(again.HasItem(Store("$SubForms")), 0);
  VQRTObject place;
  ASSERT_EQ(again.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.FindFirst(VQRTTYPE_RT_SUBFORM, &place), VQ_OK);
  VQSubform bound;
  ASSERT_EQ(VQRTSubform(place).GetSubform(&bound), VQ_OK);
  EXPECT_EQ(bound.GetSlateID(), subform.GetSlateID());
  subform = VQSubform();
  again = VQForm();
  ASSERT_EQ(Db.DeleteSubform(Store("adr")), VQ_OK);
  VQForm without = ReopenedForm(form);
  EXPECT_EQ(NamesIn(without), "Name");
  EXPECT_EQ(without.Save(), VQ_OK);
}

// What is changed through a form's list stays changed: in the subform that a field stands in, whatever happens to the
// list until the form is saved.
TEST_F(Form, ChangesReachTheSubform) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  VQRichText inner, body;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  VQFormField inside(Store("Inside"), VQRTTYPE_TEXT_FIELD);
  ASSERT_EQ(inside.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
  ASSERT_EQ(inner.Append(inside), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm form = NewForm("Outer");
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subform)), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  ASSERT_EQ(subform.Close(), VQ_OK);
  VQFormField field;
  ASSERT_EQ(form.GetFormField(Store("Inside"), &field), VQ_OK);
  ASSERT_EQ(field.SetHelpDescription(Store("help")), VQ_OK);
  AddField(form, "Own");
  EXPECT_EQ(NamesIn(form), "Own|Inside");
  ASSERT_EQ(field.SetName(Store("Renamed")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Own|Renamed");
  ASSERT_EQ(subform.Open(), VQ_OK);
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  VQRTObject found;
  ASSERT_EQ(inner.GetFormField(Store("Renamed"), &found), VQ_OK);
  EXPECT_EQ(TextOf(VQFormField(found).GetHelpDescription()), "help");
  ASSERT_EQ(form.GetFormField(Store("Renamed"), &field), VQ_OK);
  ASSERT_EQ(field.SetHelpDescription(Store("mine")), VQ_OK);
  SetText(subform, "Note", "theirs");
  ASSERT_EQ(subform.Save(), VQ_OK);
  EXPECT_EQ(form.Save(), ENG_ERR_SLATE_CONFLICT);
  EXPECT_EQ(form.Save(VQSAVE_FORCE), VQ_OK);
  EXPECT_EQ(StoredText(subform, "Note"), "-");
}

// A name comes into a form once, by whatever operation; what is refused leaves the body as it was.
TEST_F(Form, NamesComeInOnce) {
  VQDatabase elsewhere;
  ASSERT_EQ(Session->CreateDatabase("other", &elsewhere, VQCreateDatabaseOptions()), VQ_OK);
  VQForm far;
  ASSERT_EQ(elsewhere.CreateForm(Store("Far"), &far), VQ_OK);
  VQFormField foreign = AddField(far, "Foreign");
  ASSERT_EQ(foreign.Share(), VQ_OK);
  VQSharedField shared;
  ASSERT_EQ(elsewhere.GetSharedField(Store("Foreign"), &shared), VQ_OK);
  VQFormField alone(Store("Alone"), VQRTTYPE_TEXT_FIELD);
  ASSERT_EQ(alone.SetSharedField(shared), VQ_OK);
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  const VQRTSubform place(subform);
  const VQRichText one = vqtest::RichText(vqtest::Text("a") + NamedField("One").Record());
  const VQRichText twice = vqtest::RichText(NamedField("New").Record() + NamedField("New").Record());
  VQForm form = NewForm("Names");
  AddField(form, "One");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(place), VQ_OK);
  const VQFormField again(Store("One"), VQRTTYPE_NUMBER_FIELD), other(Store("one"), VQRTTYPE_TEXT_FIELD);
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQRTCursor*)> bring;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"a field", [&](VQRTCursor*) { return body.Append(again); }, VQERR_FIELD_EXISTS},
      {"a field at a cursor", [&](VQRTCursor* at) { return body.Insert(again, at); }, VQERR_FIELD_EXISTS},
      {"a new field", [&](VQRTCursor* at) { return body.CreateFormField(Store("One"), VQRTTYPE_TEXT_FIELD, at); },
       VQERR_FIELD_EXISTS},
      {"a new field's name", [&](VQRTCursor* at) { return body.CreateFormField(Store("1"), VQRTTYPE_TEXT_FIELD, at); },
       VQERR_FIELD_NAME_CHARACTERS},
      {"a new field's type", [&](VQRTCursor* at) { return body.CreateFormField(Store("N"), VQRTTYPE_TABLE, at); },
       VQERR_INVALID_PARAMETER},
      {"a handle of another kind",
       [&](VQRTCursor* at) {
         VQKeywordsField wrong;
         return body.CreateFormField(Store("N"), VQRTTYPE_TEXT_FIELD, at, &wrong);
       },
       VQERR_CONVERSION_FAILED},
      {"appended to a handle of another kind",
       [&](VQRTCursor*) {
         VQRTSubform wrong;
         return body.Append(VQFormField(Store("N"), VQRTTYPE_TEXT_FIELD), &wrong);
       },
       VQERR_CONVERSION_FAILED},
      {"no cursor", [&](VQRTCursor*) { return body.CreateFormField(Store("N"), VQRTTYPE_TEXT_FIELD, nullptr); },
       VQERR_INVALID_PARAMETER},
      {"rich text", [&](VQRTCursor*) { return body.Append(one); }, VQERR_FIELD_EXISTS},
      {"rich text at a cursor", [&](VQRTCursor* at) { return body.Insert(one, at); }, VQERR_FIELD_EXISTS},
      {"twice in one", [&](VQRTCursor*) { return body.Append(twice); }, VQERR_FIELD_EXISTS},
      {"a subform", [&](VQRTCursor*) { return body.Append(place); }, VQERR_SUBFORM_EXISTS},
      {"a stranger's shared field", [&](VQRTCursor*) { return body.Append(foreign); },
       VQERR_SHARED_FIELD_OTHER_DATABASE},
      {"the same that stands alone", [&](VQRTCursor*) { return body.Append(alone); },
       VQERR_SHARED_FIELD_OTHER_DATABASE},
      {"another case", [&](VQRTCursor*) { return body.Append(other); }, VQ_OK},
      {"created", [&](VQRTCursor* at) { return body.CreateFormField(Store("Made"), VQRTTYPE_NAMES_FIELD, at); }, VQ_OK},
      {"no form's text", [&](VQRTCursor*) { return VQRichText(twice).Append(twice); }, VQ_OK},
  };
  for (const Row& row : rows) {
    VQRTCursor cursor;
    ASSERT_EQ(body.GetCursor(&cursor), VQ_OK);
    const unsigned long size = body.GetSize();
    EXPECT_EQ(ReturnedStatusOf([&] { return row.bring(&cursor); }), row.status) << row.what;
    if (row.status != VQ_OK) {
      EXPECT_EQ(body.GetSize(), size) << row.what;
    }
  }
  EXPECT_EQ(NamesIn(form), "Made|One|one");
  far = VQForm();
  foreign = alone = VQFormField();
}

// In a table's cell too.
TEST_F(Form, PlacesByName) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm form =
      FormOfFields(vqtest::TableBegin() + vqtest::Cell(0, 0) + NamedField("InCell").Record() + vqtest::TableEnd() +
                   NamedField("Two").Record() + NamedField("Two").Record() + NamedField("").Record());
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subform)), VQ_OK);
  VQRTContainer top;
  ASSERT_EQ(body.GetTopContainer(&top), VQ_OK);
  VQFormField field;
  VQRTSubform place;
  VQRTObject any;
  struct Row {
    const char* what;
    std::function<VQSTATUS()> operation;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"cell", [&] { return body.GetFormField(Store("InCell"), &field); }, VQ_OK},
      {"case", [&] { return top.GetFormField(Store("incell"), &field); }, VQWARN_NOT_FOUND},
      {"nameless", [&] { return top.GetFormField(VQString(), &field); }, VQWARN_NOT_FOUND},
      {"null", [&] { return body.GetFormField(Store("Two"), nullptr); }, VQERR_NULL_POINTER},
      {"a subform is no field", [&] { return body.GetFormField(Store("Sub"), &field); }, VQWARN_NOT_FOUND},
      {"subform", [&] { return body.GetRTSubform(Store("Sub"), &place); }, VQ_OK},
      {"no subform", [&] { return top.GetRTSubform(Store("Two"), &place); }, VQWARN_NOT_FOUND},
      {"OLE object", [&] { return body.GetOLEObject(Store("Two"), &any); }, VQWARN_NOT_FOUND},
      {"delete OLE object", [&] { return top.DeleteOLEObject(Store("Two")); }, VQWARN_NOT_FOUND},
      {"delete cell", [&] { return body.DeleteFormField(Store("InCell")); }, VQ_OK},
      {"deleted", [&] { return body.DeleteFormField(Store("InCell")); }, VQWARN_NOT_FOUND},
      {"delete both", [&] { return top.DeleteFormField(Store("Two")); }, VQ_OK},
      {"delete subform", [&] { return body.DeleteRTSubform(Store("Sub")); }, VQ_OK},
      {"subform gone", [&] { return top.DeleteRTSubform(Store("Sub")); }, VQWARN_NOT_FOUND},
      {"no text", [] { return VQRichText().DeleteFormField(Store("x")); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"no container", [] { return VQRTContainer().DeleteRTSubform(Store("x")); }, VQERR_OBJECT_NOT_INITIALIZED},
  };
  for (const Row& row : rows) EXPECT_EQ(ReturnedStatusOf(row.operation), row.status) << row.what;
  EXPECT_EQ(NamesIn(form), "");
}

// Fields are checked before an item is touched: no placeholder is left that no list names.
TEST_F(Form, ARefusedSaveLeavesNothingBehind) {
  VQForm form = NewForm("Refused");
  VQFormField first = AddField(form, "First");
  VQFormField second = AddField(form, "Second");
  ASSERT_EQ(form.Save(), VQ_OK);
  ASSERT_EQ(second.SetComputeOption(VQCOMPUTEOPTION_COMPUTED), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return form.Save(); }), VQERR_NO_COMPUTED_FORMULA);
  ASSERT_EQ(first.SetName(Store("Renamed")), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return form.Save(); }), VQERR_NO_COMPUTED_FORMULA);
  ASSERT_EQ(second.SetValueFormula(Formula("1")), VQ_OK);
  ASSERT_EQ(first.SetName(Store("Final")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Final|Second");
  for (const std::string& name : {std::string(), std::string("a\0b", 3)}) {
    VQForm odd = FormOfFields(NamedField("First").Record() + NamedField(name).Record());
    EXPECT_EQ(ReturnedStatusOf([&] { return odd.Save(); }), VQERR_FIELD_NAME_CHARACTERS);
    EXPECT_EQ(odd.HasItem(Store("First")), 0);
  }
  for (const char* gone : {"First", "Renamed"}) EXPECT_EQ(StoredFlags(form, gone), -1) << gone;
  for (const char* there : {"Final", "Second"}) EXPECT_EQ(StoredFlags(form, there), VQITEMFLAGS_PLACEHOLDER) << there;
}

// Subforms that insert each other and themselves end, and each brings its fields once.
TEST_F(Form, SubformsInARing) {
  std::vector<VQSubform> subforms(3);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(Db.CreateSubform(Store("S" + std::to_string(i)), &subforms[i]), VQ_OK);
    ASSERT_EQ(subforms[i].Save(), VQ_OK);
  }
  for (int i = 0; i < 3; ++i) {
    VQRichText text;
    ASSERT_EQ(subforms[i].GetSubformBody(&text), VQ_OK);
    for (const VQSubform& inserted : subforms) ASSERT_EQ(text.Append(VQRTSubform(inserted)), VQ_OK);
    VQFormField field(Store("F" + std::to_string(i)), VQRTTYPE_TEXT_FIELD);
    ASSERT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
    ASSERT_EQ(field.SetValueFormula(Formula("\"v\"")), VQ_OK);
    ASSERT_EQ(text.Append(field), VQ_OK);
    ASSERT_EQ(subforms[i].Save(), VQ_OK);
  }
  VQForm form = NewForm("Ring");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subforms[0])), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "F0|F1|F2");
  VQDocument document = NewDocument("x");
  SetText(document, "Form", "Ring");
  ASSERT_EQ(document.ComputeWithForm(0), VQ_OK);
  EXPECT_EQ(TextAt(document, "F0") + TextAt(document, "F2"), "vv");
}

// What a subform brings has its names taken too, and it brings none that is taken.
TEST_F(Form, NamesOfSubformsComeInOnce) {
  std::vector<VQSubform> subforms(3);
  const char* fields[] = {"Street", "Street", "Name"};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(Db.CreateSubform(Store("S" + std::to_string(i)), &subforms[i]), VQ_OK);
    VQRichText text;
    ASSERT_EQ(subforms[i].GetSubformBody(&text), VQ_OK);
    ASSERT_EQ(text.Append(VQFormField(Store(fields[i]), VQRTTYPE_TEXT_FIELD)), VQ_OK);
    ASSERT_EQ(subforms[i].Save(), VQ_OK);
  }
  VQForm form = NewForm("Taken");
  VQRichText body;
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  AddField(form, "Name");
  EXPECT_EQ(ReturnedStatusOf([&] { return body.Append(VQRTSubform(subforms[2])); }), VQERR_FIELD_EXISTS);
  ASSERT_EQ(body.Append(VQRTSubform(subforms[0])), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return body.Append(VQRTSubform(subforms[1])); }), VQERR_FIELD_EXISTS);
  EXPECT_EQ(body.Append(VQFormField(Store("Street"), VQRTTYPE_TEXT_FIELD)), VQERR_FIELD_EXISTS);
  EXPECT_EQ(body.Append(VQFormField(Store("Town"), VQRTTYPE_TEXT_FIELD)), VQ_OK);
  EXPECT_EQ(NamesIn(form), "Name|Town|Street");
  VQFormField street;
  ASSERT_EQ(form.GetFormField(Store("Street"), &street), VQ_OK);
  EXPECT_EQ(street.SetName(Store("Name")), VQERR_FIELD_EXISTS);
  EXPECT_EQ(street.SetName(Store("Road")), VQ_OK);
}

// The list follows what happens in the rich text of a subform.
TEST_F(Form, FieldsComeAndGoInASubform) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  VQRichText inner, body;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  const auto add = [&](const char* name) {
    VQFormField field(Store(name), VQRTTYPE_TEXT_FIELD);
    EXPECT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
    EXPECT_EQ(inner.Append(field), VQ_OK);
  };
  for (const char* name : {"A", "B", "C"}) add(name);
  ASSERT_EQ(subform.Save(), VQ_OK);
  ASSERT_EQ(subform.Close(), VQ_OK);
  VQForm form = NewForm("Outer");
  AddField(form, "Own");
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  VQSubform unopened;
  ASSERT_EQ(Db.GetSubform(Store("Sub"), &unopened), VQ_OK);
  EXPECT_EQ(form.GetFormSlateBody()->AddSubform(unopened), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(unopened)), VQ_OK);
  VQFormFieldArray fields;
  ASSERT_EQ(form.GetFormFields(&fields), VQ_OK);
  ASSERT_EQ(fields[1].GetRichText(&inner), VQ_OK);
  ASSERT_EQ(inner.DeleteFormField(Store("A")), VQ_OK);
  EXPECT_EQ(TextOf(fields[2].GetName()), "C");
  EXPECT_EQ(NamesIn(form), "Own|B|C");
  add("D");
  EXPECT_EQ(form.HasFormField(Store("D")), 1);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "Own|B|C|D");
  EXPECT_EQ(NamesIn(ReopenedForm(form)), "Own|B|C|D");
}

// Names that a subform has by now, stored or not; and what a shared field in one says of its definition.
TEST_F(Form, ChangesInSubformsCountBeforeTheyAreStored) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  VQRichText inner, body;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  const auto editable = [](const char* name) {
    VQFormField field(Store(name), VQRTTYPE_TEXT_FIELD);
    EXPECT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
    return field;
  };
  VQRTObject added;
  ASSERT_EQ(inner.Append(editable("A"), &added), VQ_OK);
  ASSERT_EQ(inner.Append(editable("Shared"), &added), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  ASSERT_EQ(VQFormField(added).Share(), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm form = NewForm("Outer");
  ASSERT_EQ(form.GetFormBody(&body), VQ_OK);
  ASSERT_EQ(body.Append(VQRTSubform(subform)), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQFormField field;
  ASSERT_EQ(form.GetFormField(Store("Shared"), &field), VQ_OK);
  ASSERT_EQ(field.SetHelpDescription(Store("help")), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSharedField shared;
  ASSERT_EQ(Db.GetSharedField(Store("Shared"), &shared), VQ_OK);
  ASSERT_EQ(shared.Open(), VQ_OK);
  ASSERT_EQ(shared.GetField(&field), VQ_OK);
  EXPECT_EQ(TextOf(field.GetHelpDescription()), "help");
  ASSERT_EQ(form.GetFormField(Store("A"), &field), VQ_OK);
  ASSERT_EQ(field.SetName(Store("B")), VQ_OK);
  EXPECT_EQ(body.Append(editable("B")), VQERR_FIELD_EXISTS);
  EXPECT_EQ(body.Append(editable("A")), VQ_OK);
  EXPECT_EQ(body.Append(editable("B")), VQERR_FIELD_EXISTS);
  EXPECT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredText(form, "$Fields"), "A|B|Shared");
}

// An item that is no text, or can't be read as one, is not written over.
TEST_F(Form, ItemsOfOtherTypesStay) {
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
  const struct {
    unsigned short type;
    std::string value;
    VQSTATUS status;
  } rows[] = {
      {TYPE_NUMBER, "12345678", VQERR_INCORRECT_ITEM_TYPE},
      {TYPE_TEXT_LIST, Word(1) + Word(99) + "short", VQERR_CORRUPTED},
      {TYPE_TEXT_LIST, Word(0), VQ_OK},
      {TYPE_TEXT, "", VQ_OK},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.status);
    VQForm form = StoredForm({{"$SubForms", row.type, row.value}, {"$WebFlags", row.type, row.value}});
    EXPECT_EQ(form.GetFormSlateBody()->AddSubform(subform), row.status);
    EXPECT_EQ(form.SetTreatContentsAsHTML(0), VQ_OK);
    EXPECT_EQ(ReturnedStatusOf([&] { return form.SetTreatContentsAsHTML(1); }), row.status);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredValue(form, "$SubForms") == row.value, row.status != VQ_OK);
    EXPECT_EQ(StoredValue(form, "$WebFlags") == row.value, row.status != VQ_OK);
  }
}

// An opening takes the placeholders away and a save puts them back: the same ones, or what the fields want by then.
TEST_F(Form, PlaceholdersGoAndComeBack) {
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQForm&)> edit;
    const char* names;
    const char* type;  // of the second one's placeholder
  };
  const auto second = [](VQForm& form) {
    VQFormField field;
    EXPECT_EQ(form.GetFormField(Store("Two"), &field), VQ_OK);
    return field;
  };
  const Row rows[] = {
      {"nothing", [](VQForm&) { return VQ_OK; }, "One|Two|Three", "times"},
      {"another item", [](VQForm& f) { return f.SetInheritsFromTemplateName("T"); }, "One|Two|Three", "times"},
      {"an item at once", [](VQForm& f) { return f.SetTreatContentsAsHTML(1); }, "One|Two|Three", "times"},
      {"another name", [&](VQForm& f) { return second(f).SetName(Store("Due")); }, "One|Due|Three", "-"},
      {"one field less",
       [](VQForm& f) {
         VQRichText body;
         return f.GetFormBody(&body) == VQ_OK ? body.DeleteFormField(Store("Two")) : VQERR_NOT_FOUND;
       },
       "One|Three", "-"},
      {"one field more", [](VQForm& f) { return AddField(f, "Four"), VQ_OK; }, "One|Two|Three|Four", "times"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    VQForm form = FormOfFields(NamedField("One").Record());
    AddField(form, "Two", VQRTTYPE_NUMBER_FIELD);
    AddField(form, "Three");
    ASSERT_EQ(form.Save(), VQ_OK);
    const unsigned long count = form.GetItemCount();
    VQForm again = ReopenedForm(form);
    EXPECT_EQ(again.GetItemCount(), count);
    EXPECT_EQ(NamesIn(again), "One|Two|Three");
    EXPECT_EQ(again.GetItemCount(), count - 4);
    EXPECT_EQ(again.HasItem(Store("$Fields")) + again.HasItem(Store("Three")), 0);
    ASSERT_EQ(row.edit(again), VQ_OK);
    for (int saves = 0; saves < 2; ++saves) {
      ASSERT_EQ(again.Save(), VQ_OK);
      EXPECT_EQ(StoredText(form, "$Fields"), row.names);
      EXPECT_EQ(StoredFlags(form, "$Fields"), VQITEMFLAGS_SUMMARY);
      EXPECT_EQ(StoredFlags(form, "Three"), VQITEMFLAGS_PLACEHOLDER);
      EXPECT_EQ(StoredValue(form, "Two"), *row.type == '-' ? "-" : std::string(8, '\0'));
    }
    ASSERT_EQ(Db.DeleteForm(&form), VQ_OK);
  }
}

// Another program's placeholder with a value of its own becomes one of ours.
TEST_F(Form, PlaceholdersOfOthersAreWrittenAnew) {
  VQForm form = StoredForm({{"$Body", TYPE_COMPOSITE, NamedField("One").Record()}});
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSlate slate(Db.GetDatabaseBody(), form.GetSlateID());
  ASSERT_EQ(slate.Open(), VQ_OK);
  ASSERT_EQ(slate.DeleteItem(Store("$Fields")), VQ_OK);
  ASSERT_EQ(slate.CreateItem(Store("One"), TYPE_NUMBER, "12345678", 8, VQITEMFLAGS_SIGN, VQITEMOPTION_REPLACE), VQ_OK);
  const std::string list = Word(1) + Word(3) + "One";
  ASSERT_EQ(slate.CreateItem(Store("$Fields"), TYPE_TEXT_LIST, list.data(), list.size(), VQITEMFLAGS_SUMMARY,
                             VQITEMOPTION_REPLACE),
            VQ_OK);
  ASSERT_EQ(slate.GetSlateBody()->VQSlateBody::Save(0), VQ_OK);
  slate.Close();
  VQForm again = ReopenedForm(form);
  ASSERT_EQ(again.Save(), VQ_OK);
  EXPECT_EQ(StoredFlags(form, "One"), VQITEMFLAGS_PLACEHOLDER);
  EXPECT_EQ(StoredValue(form, "One"), "");
}

TEST_F(Form, ManyFieldsInTablesAndOut) {
  std::string records = vqtest::TableBegin() + vqtest::Cell(0, 0) + NamedField("InCell").Record() + vqtest::TableEnd();
  for (int i = 0; i < 600; ++i) records += NamedField("F" + std::to_string(i)).Record();
  VQForm form = FormOfFields(records);
  VQFormFieldArray fields;
  ASSERT_EQ(form.GetFormFields(&fields), VQ_OK);
  EXPECT_EQ(fields.GetCount(), 601U);
  EXPECT_EQ(TextOf(fields[600].GetName()), "F599");
  EXPECT_EQ(TextOf(fields[0].GetName()), "InCell");
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(ReopenedForm(form).HasFormField(Store("F599")), 1);
}

TEST_F(Form, BackgroundGraphicsAreCopies) {
  const std::string graphic = vqtest::Record(SIG_CD_GRAPHIC, std::string(22, '\1'));
  VQForm form = StoredForm({});
  VQRichText source = vqtest::RichText(vqtest::Text("a") + graphic);
  VQRTObject found;
  ASSERT_EQ(source.FindFirst(VQRTTYPE_GRAPHIC, &found), VQ_OK);
  ASSERT_EQ(form.SetBackgroundGraphic(VQGraphic(found)), VQ_OK);
  ASSERT_EQ(form.Save(), VQ_OK);
  EXPECT_EQ(StoredFlags(form, "$Background"), VQITEMFLAGS_SIGN);
  VQForm again = ReopenedForm(form);
  VQGraphic read;
  ASSERT_EQ(again.GetBackgroundGraphic(&read), VQ_OK);
  EXPECT_EQ(read.GetSize(), graphic.size());
  ASSERT_EQ(again.RemoveBackgroundGraphic(), VQ_OK);
  EXPECT_EQ(again.GetBackgroundGraphic(&read), VQERR_NOT_FOUND);
}

TEST_F(Form, DatabasesListAndFindThem) {
  VQForm form = NewForm("A");
  ASSERT_EQ(form.Save(), VQ_OK);
  VQSubform subform;
  ASSERT_EQ(Db.CreateSubform(Store("A"), &subform), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  VQForm copy;
  ASSERT_EQ(Db.CreateForm(form, &copy), VQ_OK);
  VQFormArray forms;
  VQSubformArray subforms;
  ASSERT_EQ(Db.GetForms(&forms), VQ_OK);
  ASSERT_EQ(Db.GetSubforms(&subforms), VQ_OK);
  EXPECT_EQ(forms.GetCount(), 2U);
  EXPECT_EQ(subforms.GetCount(), 1U);
  EXPECT_EQ(Db.SubformExists(Store("A")), 1);
  VQDocument document = NewDocument("x");
  EXPECT_EQ(StatusOf([&] { VQForm wrong(document); }), VQERR_FORM_SLATE_ONLY);
  EXPECT_EQ(StatusOf([&] { VQForm wrong(subform); }), VQERR_FORM_SLATE_ONLY);
  VQForm bound;
  EXPECT_EQ(document.GetFormSlate(&bound), VQ_OK);
  EXPECT_EQ(bound.IsNull(), 1);
  ASSERT_EQ(document.SetFormSlate(Store("A")), VQ_OK);
  ASSERT_EQ(document.GetFormSlate(&bound), VQ_OK);
  EXPECT_EQ(bound.IsNull(), 0);
  ASSERT_EQ(document.SetFormSlate(Store("gone")), VQ_OK);
  ASSERT_EQ(document.GetFormSlate(&bound), VQ_OK);
  EXPECT_EQ(bound.IsNull(), 1);
  form = copy = VQForm();
  ASSERT_EQ(Db.DeleteForm(Store("A")), VQ_OK);
  ASSERT_EQ(Db.DeleteForm(Store("A")), VQ_OK);
  EXPECT_EQ(Db.DeleteForm(Store("A")), VQERR_NOT_FOUND);
}

}  // namespace
