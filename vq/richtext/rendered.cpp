// Documents as they read, put into a rich text.
#include "engine/render.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqtext.h"

namespace {

constexpr char kTemporaryItem[] = "$$$CPPAPITempRTItem$$$";

// A slate that is open while this lives, and closed afterwards if it was before.
class OpenSlate {
 public:
  explicit OpenSlate(const VQSlate& slate) : Slate(slate), WasOpen(slate.IsOpen()) {}
  ~OpenSlate() {
    if (!WasOpen && Slate.IsOpen()) static_cast<void>(vq::Caught([this] { return Slate.Close(); }));
  }
  OpenSlate(const OpenSlate&) = delete;
  OpenSlate& operator=(const OpenSlate&) = delete;

  // Pending changes are what a reader sees.
  [[nodiscard]] VQSTATUS Open() {
    if (Slate.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
    const VQSTATUS status = WasOpen ? VQ_OK : Slate.Open();
    return status == VQ_OK ? Slate.GetSlateBody()->FlushItems() : status;
  }
  VQSlateBody& Body() const { return *Slate.GetSlateBody(); }

 private:
  VQSlate Slate;
  bool WasOpen;
};

class Target {
 public:
  ~Target() {
    if (Handle != 0) EngSlateRenderClose(Handle);
  }

  [[nodiscard]] VQSTATUS Render(VQDatabaseBody& database, ENGHANDLE form, ENGHANDLE document, VQSlate* temporary) {
    ENGSTATUS result =
        EngSlateCreateTemp(database.GetHandle(), reinterpret_cast<const ENGCHAR*>(kTemporaryItem), &Handle);
    if (result == ENG_OK) result = EngSlateRenderToItem(Handle, form, document);
    if (result == ENG_OK) result = EngSlateRenderFinish(Handle, 0, 0, 0, 0);
    ENGHANDLE slate = 0;
    if (result == ENG_OK) result = EngSlateRenderTake(Handle, &slate);
    if (result != ENG_OK) return vq::FromEngine(result);
    const VQSTATUS status = temporary->BindToHandle(&database, slate);
    if (status != VQ_OK) EngSlateClose(slate);
    return status;
  }

 private:
  ENGHANDLE Handle = 0;
};

VQSTATUS Render(const VQSlate& document, const VQSlate& form, VQRichTextBody& text) {
  OpenSlate source(document), design(form);
  VQSTATUS status = text.Initialize();
  if (status == VQ_OK) status = source.Open();
  if (status == VQ_OK && !form.IsNull()) status = design.Open();
  if (status != VQ_OK) return status;
  Target target;
  VQSlate temporary;
  status = target.Render(*source.Body().GetDatabaseBody(), form.IsNull() ? 0 : design.Body().GetHandle(),
                         source.Body().GetHandle(), &temporary);
  VQRichText rendered;
  if (status == VQ_OK) status = temporary.GetItem(kTemporaryItem, &rendered);
  if (status != VQ_OK) return status;
  return vq::Whole(*text.GetTop(), [&] { return text.GetTop()->Append(rendered); });
}

// The form that the document names, null when its database has none of that name.
VQSTATUS FindForm(const VQSlate& document, VQSlate* form) {
  OpenSlate source(document);
  if (VQSTATUS status = source.Open()) return status;
  const std::string name = source.Body().TextOf("Form");
  VQDatabaseBody* database = source.Body().GetDatabaseBody();
  std::uint32_t id = 0;
  const VQSTATUS status = database->FindReferenced(VQSLATECLASS_FORM, VQDESIGNKIND_FORM, name, &id);
  if (status == VQERR_NOT_FOUND) return VQ_OK;
  return status == VQ_OK ? form->BindTo(database, id) : status;
}

}  // namespace

VQSTATUS VQRichText::AppendRenderedDocument(const VQSlate& document) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (document.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(vq::Caught([&] {
    VQSlate form;
    const VQSTATUS status = FindForm(document, &form);
    return status == VQ_OK ? Render(document, form, *GetRichTextBody()) : status;
  }));
}

VQSTATUS VQRichText::AppendRenderedDocument(const VQSlate& document, const VQSlate& form) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (document.IsNull() || form.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(vq::Caught([&] { return Render(document, form, *GetRichTextBody()); }));
}
