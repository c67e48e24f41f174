// Records of fields of any bytes: they are read whole or refused, an edit of one part leaves the others, and what is
// read is written back byte for byte.
#include "fuzz/support.h"
#include "vq/automation/formulacode.h"
#include "vq/forms/fieldedit.h"
#include "vq/values/vqnumber.h"

namespace {

using fuzz::Claim;

void CheckViews(const std::string& bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  vq::FieldView field{};
  std::string built;
  if (vq::ReadField(data, bytes.size(), &field) == VQ_OK) {
    Claim(vq::BuildField(field, &built) == VQ_OK, "a field that was read can be written");
    Claim(bytes.compare(4, built.size() - 4, built, 4) == 0, "byte for byte");
  }
  vq::FieldExtensionView extension{};
  if (vq::ReadExtension(data, bytes.size(), &extension) != VQ_OK) return;
  Claim(vq::BuildExtension(extension, &built) == VQ_OK, "an extension that was read can be written");
  Claim(bytes.compare(4, built.size() - 4, built, 4) == 0, "byte for byte");
}

// Every getter gives a value or a status.
void ReadAll(const VQFormField& field) {
  VQFormula formula;
  VQText choices;
  static_cast<void>(vq::Caught([&] { return field.GetName(), VQ_OK; }));
  static_cast<void>(vq::Caught([&] { return field.GetComputeOption(), VQ_OK; }));
  static_cast<void>(vq::Caught([&] { return field.GetGiveDefaultFocus(), VQ_OK; }));
  static_cast<void>(vq::Caught([&] { return field.GetValueFormula(&formula); }));
  static_cast<void>(vq::Caught([&] { return field.GetHTMLAttributesFormula(&formula); }));
  static_cast<void>(vq::Caught([&] { return field.Validate(); }));
  if (field.GetType() != VQRTTYPE_KEYWORDS_FIELD) return;
  const VQKeywordsField keywords(field);
  static_cast<void>(vq::Caught([&] { return keywords.GetChoicesList(&choices); }));
  static_cast<void>(vq::Caught([&] { return keywords.GetChoicesOption(), VQ_OK; }));
  static_cast<void>(vq::Caught([&] { return keywords.GetInterfaceFrameOption(), VQ_OK; }));
}

void CheckEdits(VQFormField field) {
  const std::string help = "edited";
  std::string tail;
  const VQSTATUS read = field.GetFormFieldBody()->WithField([&](const vq::FieldView& view) {
    tail = std::string(view.Parts[vq::kFieldTextValue]) + std::string(view.Tail);
    return VQ_OK;
  });
  const VQSTATUS set = vq::Caught([&] { return field.SetHelpDescription(VQString(help.c_str())); });
  if (field.IsShared()) return;
  Claim((read == VQ_OK) == (set == VQ_OK) || set == VQERR_FIELD_TOO_LARGE, "what can be read can be changed");
  if (set != VQ_OK) return;
  const VQSTATUS again = field.GetFormFieldBody()->WithField([&](const vq::FieldView& view) {
    Claim(view.Parts[vq::kFieldDescription] == help, "the part is what it was set to");
    Claim(std::string(view.Parts[vq::kFieldTextValue]) + std::string(view.Tail) == tail, "others are as they were");
    return VQ_OK;
  });
  Claim(again == VQ_OK, "and it can be read again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static_cast<void>(fuzz::World::Get());
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  CheckViews(bytes);
  // The bytes as the records of a rich text.
  ENGHANDLE memory = 0;
  const std::string value = std::string("\1\0", 2) + bytes;
  if (EngMemAlloc(0, static_cast<std::uint32_t>(value.size()), &memory) != 0) return 0;
  std::copy(value.begin(), value.end(), static_cast<char*>(EngMemLock(memory)));
  EngMemUnlock(memory);
  const VQRichText text(new VQRichTextBody(memory, static_cast<unsigned long>(value.size())));
  VQRTObject found;
  VQSTATUS status = text.FindFirst(VQRTTYPE_FORM_FIELD, &found);
  for (int count = 0; status == VQ_OK && count < 16; ++count) {
    const VQFormField field(found);
    ReadAll(field);
    CheckEdits(field);
    const VQRTObject from(found);
    status = text.FindNext(from, VQRTTYPE_FORM_FIELD, &found);
  }
  return 0;
}
