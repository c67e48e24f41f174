// Any bytes as a form's body and as a document's rich text: one is rendered through the other, or a status; what comes
// out is read.
#include <algorithm>

#include "fuzz/support.h"

namespace {

void Put(VQSlate& slate, const char* name, const std::string& records) {
  fuzz::Claim(slate.CreateItem(name, TYPE_COMPOSITE, records.data(), records.size(), 0, VQITEMOPTION_REPLACE) == VQ_OK,
              "an item takes them");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 20000) return 0;
  VQDocument& document = fuzz::World::Get().document();
  static VQSlate form;
  if (form.IsNull()) {
    VQDatabase database = document.GetDatabase();
    constexpr unsigned long kForm = VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16;
    fuzz::Claim(database.CreateSlate(kForm, &form) == VQ_OK, "a form can be made");
  }
  const std::size_t split = std::min<std::size_t>(size, 1 + data[0] * size / 255);
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  Put(form, "$Body", bytes.substr(1, split - 1));
  Put(document, "Body", bytes.substr(split));
  for (const bool through : {true, false}) {
    VQRichText text;
    VQString words;
    text.Create();
    const VQSTATUS status =
        through ? text.AppendRenderedDocument(document, form) : text.AppendRenderedDocument(document);
    if (status == VQ_OK) fuzz::Claim(text.GetText(&words) == VQ_OK, "what was rendered is read");
  }
  return 0;
}
