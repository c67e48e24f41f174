// A form saved with what was changed through its fields in other slates: all of it is stored, or nothing.
#include <functional>

#include "tests/vq/support/forms_fixture.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

class FormSave : public vqtest::FormsFixture {
 protected:
  void TearDown() override {
    Outer = VQForm();
    Body = VQRichText();
    FormsFixture::TearDown();
  }
  static VQFormField Editable(const std::string& name) {
    VQFormField field(Store(name), VQRTTYPE_TEXT_FIELD);
    EXPECT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
    return field;
  }
  // A form "Outer" with the fields Own and Status, which is shared, and a subform with the field Inside.
  void MakeForm() {
    VQSubform subform;
    ASSERT_EQ(Db.CreateSubform(Store("Sub"), &subform), VQ_OK);
    VQRichText inner;
    ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
    ASSERT_EQ(inner.Append(Editable("Inside")), VQ_OK);
    ASSERT_EQ(subform.Save(), VQ_OK);
    Outer = NewForm("Outer");
    AddField(Outer, "Own");
    ASSERT_EQ(AddField(Outer, "Status").Share(), VQ_OK);
    ASSERT_EQ(Outer.GetFormBody(&Body), VQ_OK);
    ASSERT_EQ(Body.Append(VQRTSubform(subform)), VQ_OK);
    ASSERT_EQ(Outer.Save(), VQ_OK);
  }
  VQFormField FieldOf(const char* name) const {
    VQFormField field;
    EXPECT_EQ(Outer.GetFormField(Store(name), &field), VQ_OK) << name;
    return field;
  }
  // A name for the shared field, a text for the one in the subform, and a new field of its own.
  void ChangeAll() {
    ASSERT_EQ(FieldOf("Inside").SetHelpDescription(Store("help")), VQ_OK);
    ASSERT_EQ(FieldOf("Status").SetName(Store("State")), VQ_OK);
    AddField(Outer, "More");
  }
  // As another client finds it: the form's fields, the shared fields, the text.
  std::string Stored() {
    std::string found = Db.FormExists(Store("Outer")) != 0 ? StoredText(Outer, "$Fields") : "";
    for (const char* name : {"Status", "State"}) found += Db.SharedFieldExists(Store(name)) != 0 ? "+" : "-";
    VQSubform subform;
    if (Db.SubformExists(Store("Sub")) == 0) return found;
    EXPECT_EQ(Db.GetSubform(Store("Sub"), &subform), VQ_OK);
    EXPECT_EQ(subform.Open(), VQ_OK);
    VQRichText inner;
    VQRTObject inside;
    EXPECT_EQ(subform.GetSubformBody(&inner), VQ_OK);
    EXPECT_EQ(inner.GetFormField(Store("Inside"), &inside), VQ_OK);
    return found + TextOf(VQFormField(inside).GetHelpDescription());
  }
  void SaveOther(unsigned long id) {
    VQSlate slate;
    ASSERT_EQ(Db.GetSlate(id, &slate), VQ_OK);
    ASSERT_EQ(slate.Open(), VQ_OK);
    SetText(slate, "Theirs", "x");
    ASSERT_EQ(slate.GetSlateBody()->VQSlateBody::Save(0), VQ_OK);
  }
  unsigned long SubformID() const {
    VQSubform subform;
    EXPECT_EQ(Db.GetSubform(Store("Sub"), &subform), VQ_OK);
    return subform.GetSlateID();
  }
  unsigned long SharedID(const char* name) const {
    VQSharedField shared;
    EXPECT_EQ(Db.GetSharedField(Store(name), &shared), VQ_OK);
    return shared.GetSlateID();
  }

  VQForm Outer;
  VQRichText Body;
};

// {what others do before the save, its status, what mends it}
TEST_F(FormSave, AllIsStoredOrNothing) {
  const auto force = [this] { return Outer.Save(VQSAVE_FORCE); };
  const auto again = [this] { return Outer.Save(); };
  const std::string after = "Own|State|More|Inside-+help";
  struct Row {
    const char* what;
    std::function<void()> meanwhile;
    VQSTATUS status;
    std::function<VQSTATUS()> mend;
    std::string mended;
  };
  const Row rows[] = {
      {"form saved", [&] { SaveOther(Outer.GetSlateID()); }, ENG_ERR_SLATE_CONFLICT, force, after},
      {"subform saved", [&] { SaveOther(SubformID()); }, ENG_ERR_SLATE_CONFLICT, force, after},
      {"definition saved", [&] { SaveOther(SharedID("Status")); }, ENG_ERR_SLATE_CONFLICT, force, after},
      {"form deleted", [&] { EXPECT_EQ(Db.DeleteForm(Store("Outer")), VQ_OK); }, ENG_ERR_SLATE_DELETED, again, ""},
      {"subform deleted", [&] { EXPECT_EQ(Db.DeleteSubform(Store("Sub")), VQ_OK); }, ENG_ERR_SLATE_DELETED,
       [&] {
         EXPECT_EQ(Body.DeleteRTSubform(Store("Sub")), VQ_OK);
         return Outer.Save();
       },
       "Own|State|More-+"},
      {"name taken", [&] { EXPECT_EQ(Db.CreateSharedField(Editable("State"), nullptr), VQ_OK); },
       VQERR_SHARED_FIELD_EXISTS,
       [&] {
         EXPECT_EQ(Db.DeleteSharedField(Store("State")), VQ_OK);
         return Outer.Save();
       },
       after},
      {"a field that is refused", [&] { ASSERT_EQ(FieldOf("Own").SetComputeOption(VQCOMPUTEOPTION_COMPUTED), VQ_OK); },
       VQERR_NO_COMPUTED_FORMULA,
       [&] {
         EXPECT_EQ(FieldOf("Own").SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
         return Outer.Save();
       },
       after},
      {"nothing", [] {}, VQ_OK, again, after},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    MakeForm();
    ChangeAll();
    row.meanwhile();
    const std::string stood = row.status == VQ_OK ? after : Stored();
    EXPECT_EQ(ReturnedStatusOf([&] { return Outer.Save(); }), row.status);
    EXPECT_EQ(Stored(), stood);
    EXPECT_EQ(NamesIn(Outer), "Own|State|More|Inside");
    EXPECT_EQ(TextOf(FieldOf("Inside").GetHelpDescription()), "help");
    if (!row.mended.empty()) {
      EXPECT_EQ(row.mend(), VQ_OK);
      EXPECT_EQ(Stored(), row.mended);
    }
    Outer = VQForm();
    Body = VQRichText();
    // What is there of them.
    for (const char* name : {"Status", "State"}) ReturnedStatusOf([&] { return Db.DeleteSharedField(Store(name)); });
    ReturnedStatusOf([&] { return Db.DeleteSubform(Store("Sub")); });
    ReturnedStatusOf([&] { return Db.DeleteForm(Store("Outer")); });
  }
}

// In the client's transaction the save is a part of it, and what was rolled back is saved again.
TEST_F(FormSave, AClientsTransactionTakesItBack) {
  MakeForm();
  ChangeAll();
  const std::string before = Stored();
  ASSERT_EQ(Db.BeginTransaction(), VQ_OK);
  ASSERT_EQ(Outer.Save(), VQ_OK);
  EXPECT_EQ(Stored(), "Own|State|More|Inside-+help");
  ASSERT_EQ(Db.RollbackTransaction(), VQ_OK);
  EXPECT_EQ(Stored(), before);
}

// A client's handle on a field of a subform lives as long as nobody else stores the subform.
TEST_F(FormSave, HandlesOnFieldsOfSubformsStay) {
  MakeForm();
  VQFormField inside = FieldOf("Inside");
  ASSERT_EQ(Outer.Save(), VQ_OK);
  EXPECT_EQ(TextOf(inside.GetName()), "Inside");
  AddField(Outer, "More");
  EXPECT_EQ(NamesIn(Outer), "Own|Status|More|Inside");
  ASSERT_EQ(inside.SetHelpDescription(Store("late")), VQ_OK);
  ASSERT_EQ(Outer.Save(), VQ_OK);
  EXPECT_EQ(Stored(), "Own|Status|More|Inside+-late");
  VQSubform subform;
  ASSERT_EQ(Db.GetSubform(Store("Sub"), &subform), VQ_OK);
  ASSERT_EQ(subform.Open(), VQ_OK);
  VQRichText inner;
  ASSERT_EQ(subform.GetSubformBody(&inner), VQ_OK);
  ASSERT_EQ(inner.Append(Editable("Another")), VQ_OK);
  ASSERT_EQ(subform.Save(), VQ_OK);
  ASSERT_EQ(Outer.Save(), VQ_OK);
  EXPECT_EQ(StoredText(Outer, "$Fields"), "Own|Status|More|Inside|Another");
  EXPECT_EQ(StatusOf([&] { return inside.GetName(); }), VQERR_OBJECT_CLOSED);
}

}  // namespace
