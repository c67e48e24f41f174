// Forms in a scratch database, from stored bytes and back.
#ifndef QUILLON_TESTS_VQ_SUPPORT_FORMS_FIXTURE_H
#define QUILLON_TESTS_VQ_SUPPORT_FORMS_FIXTURE_H

#include "engine/records.h"
#include "tests/vq/support/views_fixture.h"
#include "vq/automation/vqformula.h"
#include "vq/forms/vqformb.h"
#include "vq/forms/vqformfa.h"

namespace vqtest {

inline std::string Dword(std::size_t value) { return Word(value & 0xFFFF) + Word(value >> 16); }

// A field record by its parts.
struct FieldBytes {
  unsigned Flags = FIELD_EDITABLE;
  unsigned DataType = TYPE_TEXT;
  std::string Value, Translation, Validation, Name, Description, TextValue, Tail;

  std::string Record() const {
    return vqtest::Record(SIG_CD_FIELD, Word(Flags) + Word(DataType) + Word(0x1A20) + Bytes({1, 2, 3, 4, 5, 6, 7, 2}) +
                                            Dword(0x0A000001) + Word(Value.size()) + Word(Translation.size()) +
                                            Word(0x0102) + Word(Validation.size()) + Word(Name.size()) +
                                            Word(Description.size()) + Word(TextValue.size()) + Value + Translation +
                                            Validation + Name + Description + TextValue + Tail);
  }
  // The record's own length.
  std::size_t Length() const {
    return 36 + Value.size() + Translation.size() + Validation.size() + Name.size() + Description.size() +
           TextValue.size() + Tail.size();
  }
};

inline FieldBytes NamedField(const std::string& name) {
  FieldBytes field;
  field.Name = name;
  return field;
}

// An extension for a field of that record length, with bits and bytes that nobody knows.
inline std::string ExtensionRecord(std::size_t field_length, unsigned long flags1 = 0, const std::string& html = "",
                                   const std::string& view = "", const std::string& tail = "") {
  return Record(SIG_CD_FIELD_EXTENSION, Dword(flags1) + Dword(0x80000000) + "KEPT!!" + Word(3) + Word(html.size()) +
                                            Word(0) + Word(view.size()) + Word(0) + Word(field_length) + Word(0xBEEF) +
                                            html + view + tail);
}

inline std::string InfoRecord(unsigned flags = 0x0080, unsigned flags2 = 0, const std::string& name = "",
                              const std::string& tail = "") {
  return Record(0x86, Word(1) + Word(flags) + Word(0xCAFE) + Word(flags2) + Word(name.size()) + Word(1) +
                          std::string(10, '\x5A') + name + tail);
}

inline std::string LaunchRecord(unsigned type, unsigned hide, unsigned launch, unsigned ole, unsigned copy,
                                const std::string& name = "") {
  return Record(SIG_CD_FORMPART, Dword(type) + Dword(hide) + Dword(launch) + Dword(ole) + Dword(copy) +
                                     Dword(0x11111111) + Dword(0x22222222) + Word(name.size()) + Dword(0x33333333) +
                                     Word(0x4444) + Word(0x5555) + std::string(8, '\x66') + name);
}

class FormsFixture : public ViewsFixture {
 protected:
  // A form of these items, stored, and opened. $Info is added unless it is there.
  VQForm StoredForm(std::vector<StoredItem> items, VQSTATUS* status = nullptr, unsigned long type = 0x10004) {
    VQSlate slate;
    EXPECT_EQ(Db.CreateSlate(type, &slate), VQ_OK);
    SetText(slate, "$TITLE", "Stored");
    const auto has_info = [](const StoredItem& item) { return item.Name == "$Info"; };
    if (std::none_of(items.begin(), items.end(), has_info)) items.push_back({"$Info", TYPE_COMPOSITE, InfoRecord()});
    for (const StoredItem& item : items) {
      if (item.Type == 0xFFFF) continue;  // stands for an item that is not there
      EXPECT_EQ(
          slate.CreateItem(Store(item.Name), item.Type, item.Value.data(), item.Value.size(), 0, VQITEMOPTION_REPLACE),
          VQ_OK);
    }
    // As it stands: the design was not read.
    EXPECT_EQ(slate.GetSlateBody()->VQSlateBody::Save(0), VQ_OK);
    const unsigned long id = slate.GetSlateID();
    slate = VQSlate();
    VQForm form;
    EXPECT_EQ(Db.GetForm(id, &form), VQ_OK);
    const VQSTATUS opened = ReturnedStatusOf([&] { return form.Open(); });
    if (status != nullptr) {
      *status = opened;
    } else {
      EXPECT_EQ(opened, VQ_OK);
    }
    return form;
  }
  VQForm FormOfFields(const std::string& records) { return StoredForm({{"$Body", TYPE_COMPOSITE, records}}); }

  VQForm NewForm(const std::string& name) {
    VQForm form;
    EXPECT_EQ(Db.CreateForm(Store(name), &form), VQ_OK);
    return form;
  }
  VQForm ReopenedForm(const VQForm& form) {
    VQForm again;
    EXPECT_EQ(Db.GetForm(form.GetSlateID(), &again), VQ_OK);
    EXPECT_EQ(again.Open(), VQ_OK);
    return again;
  }

  // An editable field in the form's body.
  static VQFormField AddField(const VQForm& form, const std::string& name, VQRTTYPE type = VQRTTYPE_TEXT_FIELD) {
    VQRichText body;
    EXPECT_EQ(form.GetFormBody(&body), VQ_OK);
    VQFormField field(Store(name), type);
    EXPECT_EQ(field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE), VQ_OK);
    VQRTObject added;
    EXPECT_EQ(body.Append(field, &added), VQ_OK);
    return VQFormField(added);
  }

  static std::string NamesIn(const VQForm& form, VQRTTYPE type = VQRTTYPE_FORM_FIELD) {
    VQFormFieldArray fields;
    EXPECT_EQ(form.GetFormFields(&fields, type), VQ_OK);
    std::string names;
    for (unsigned long i = 0; i < fields.GetCount(); ++i) names += (i == 0 ? "" : "|") + TextOf(fields[i].GetName());
    return names;
  }

  static VQFormula Formula(const std::string& text) { return VQFormula(Store(text)); }
};

}  // namespace vqtest

#endif
