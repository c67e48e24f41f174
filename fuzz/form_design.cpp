// Stored forms of any bytes: they open whole or give their status, save what they read, and documents run through them
// to a value or a status.
#include "engine/slate.h"
#include "fuzz/support.h"

namespace {

using fuzz::Claim;

void SetItem(VQSlate& slate, const char* name, unsigned short type, std::string_view value) {
  const VQSTATUS status = slate.CreateItem(VQString(name), type, value.data(), value.size(), 0, VQITEMOPTION_REPLACE);
  Claim(status == VQ_OK, "an item can be set");
}

std::string ValueOf(const VQSlate& slate, const char* name) {
  VQItem item;
  if (slate.GetItem(VQString(name), &item) != VQ_OK) return {};
  std::string value(item.GetValueSize(), '\0');
  Claim(item.Read(0, value.size() - 2, value.data() + 2) == VQ_OK, "an item can be read");
  return value;
}

// What designs can refer to: the shared field "Shared", and the subform "Sub", which has it and stands in itself.
void MakeReferenced(VQDatabase& database) {
  VQFormField shared("Shared", VQRTTYPE_TEXT_FIELD);
  Claim(shared.SetComputeOption(VQCOMPUTEOPTION_EDITABLE) == VQ_OK, "a field can be edited");
  VQSharedField definition;
  Claim(database.CreateSharedField(shared, &definition) == VQ_OK, "a shared field can be made");
  VQSubform subform;
  VQRichText body;
  Claim(database.CreateSubform("Sub", &subform) == VQ_OK && subform.Save() == VQ_OK, "a subform can be made");
  Claim(subform.GetSubformBody(&body) == VQ_OK, "it has a body");
  shared.SetName("InSub");
  VQRTObject added;
  Claim(body.Append(shared, &added) == VQ_OK && body.Append(shared, &added) != VQ_OK, "a name comes in once");
  shared.SetName("Other");
  Claim(body.Append(shared, &added) == VQ_OK, "another one too");
  Claim(VQFormField(added).SetSharedField(definition) == VQ_OK, "a field can be shared");
  Claim(body.Append(VQRTSubform(subform)) == VQ_OK && subform.Save() == VQ_OK, "it can stand in itself");
}

// Fields of subforms and shared ones too: each has its properties, or a status.
void ReadFields(const VQForm& form) {
  VQFormFieldArray fields;
  if (form.GetFormFields(&fields) != VQ_OK) return;
  for (unsigned long i = 0; i < fields.GetCount(); ++i) {
    const VQFormField field = fields[i];
    static_cast<void>(vq::Caught([&] { return field.GetName(), VQ_OK; }));
    static_cast<void>(vq::Caught([&] { return field.GetComputeOption(), VQ_OK; }));
    static_cast<void>(vq::Caught([&] { return field.Validate(); }));
  }
}

}  // namespace

// The first byte cuts the rest into $Info, $AUTOLAUNCH, $Fields and $Body.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const VQDatabase database = fuzz::World::Get().document().GetDatabase();
  VQDatabase owner(database);
  static const bool made = (MakeReferenced(owner), true);
  static_cast<void>(made);
  std::string_view rest(reinterpret_cast<const char*>(data) + 3, size - 3);
  const auto cut = [&](std::size_t length) {
    const std::string_view part = rest.substr(0, length);
    rest.remove_prefix(part.size());
    return part;
  };
  VQSlate slate;
  Claim(owner.CreateSlate(0x10004, &slate) == VQ_OK, "a form's slate can be made");
  SetItem(slate, "$TITLE", TYPE_TEXT, "Fuzz");
  SetItem(slate, "$Info", TYPE_COMPOSITE, cut(data[0]));
  if (data[1] != 0) SetItem(slate, "$AUTOLAUNCH", TYPE_COMPOSITE, cut(data[1]));
  if (data[2] != 0) SetItem(slate, "$Fields", TYPE_TEXT_LIST, cut(data[2]));
  SetItem(slate, "$Body", TYPE_COMPOSITE, rest);
  Claim(slate.GetSlateBody()->VQSlateBody::Save(0) == VQ_OK, "it can be stored as it stands");
  const unsigned long id = slate.GetSlateID();
  slate = VQSlate();

  VQDocument document;
  Claim(owner.CreateDocument(&document) == VQ_OK, "a document can be made");
  SetItem(document, "Form", TYPE_TEXT, "Fuzz");
  static_cast<void>(document.ComputeWithForm(1));
  document.Close();

  VQForm form;
  Claim(owner.GetForm(id, &form) == VQ_OK, "a form can be bound");
  if (form.Open() == VQ_OK) {
    const std::string body = ValueOf(form, "$Body");
    ReadFields(form);
    form.SetEditOnOpen(form.GetEditOnOpen());
    const VQSTATUS saved = form.Save();
    if (saved == VQ_OK) {
      Claim(ValueOf(form, "$Body") == body, "a body that nobody has changed is as it was");
      form.Close();
      Claim(form.Open() == VQ_OK, "what was saved opens again");
    }
  }
  Claim(owner.DeleteForm(&form) == VQ_OK, "it can be deleted");
  return 0;
}
