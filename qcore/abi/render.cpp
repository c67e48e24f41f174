#include "engine/render.h"

#include <utility>

#include "qcore/abi/lookup.h"
#include "qcore/forms/render.h"

using qcore::Slate;
using qcore::abi::Guard;
using qcore::abi::WithSlate;
using qcore::abi::WithStore;
using qcore::forms::RenderTarget;

namespace {

std::string_view Text(const ENGCHAR* text) { return reinterpret_cast<const char*>(text); }

template <typename Body>
ENGSTATUS WithTarget(ENGHANDLE handle, Body&& body) {
  return Guard([&]() -> ENGSTATUS {
    RenderTarget* target = RenderTarget::Find(handle);
    return target ? body(*target) : ENGSTATUS{ENG_ERR_INVALID_HANDLE};
  });
}

}  // namespace

ENGSTATUS EngSlateCreateTemp(ENGHANDLE db, const ENGCHAR* name, ENGHANDLE* target) {
  if (!name || !target || name[0] == 0) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return RenderTarget::Create(database, Text(name), target); });
}

ENGSTATUS EngSlateRenderOpenStyle(ENGHANDLE target, const ENGCHAR* name, const CDPABDEFINITION* style,
                                  uint16_t* opened) {
  uint16_t number = 0;
  if (!name) return ENG_ERR_ARGUMENT;
  return WithTarget(
      target, [&](RenderTarget& render) { return render.OpenStyle(Text(name), style, opened ? opened : &number); });
}

ENGSTATUS EngSlateRenderAppend(ENGHANDLE target, uint16_t style, uint32_t font, const ENGCHAR* text, uint32_t length,
                               uint32_t) {
  if (!text && length != 0) return ENG_ERR_ARGUMENT;
  const std::string_view words(reinterpret_cast<const char*>(text), length);
  return WithTarget(target, [&](RenderTarget& render) { return render.AppendText(style, font, words); });
}

ENGSTATUS EngSlateRenderToItem(ENGHANDLE target, ENGHANDLE form, ENGHANDLE slate) {
  Slate* design = form != 0 ? Slate::Find(form) : nullptr;
  if (form != 0 && !design) return ENG_ERR_INVALID_HANDLE;
  return WithTarget(target, [&](RenderTarget& render) {
    return WithSlate(slate, [&](Slate& document) { return render.AppendSlate(design, document); });
  });
}

ENGSTATUS EngSlateRenderFinish(ENGHANDLE target, uint32_t, uint32_t, uint32_t, uint32_t) {
  return WithTarget(target, [](RenderTarget& render) { return render.Finish(); });
}

ENGSTATUS EngSlateRenderTake(ENGHANDLE target, ENGHANDLE* slate) {
  if (!slate) return ENG_ERR_ARGUMENT;
  return WithTarget(target, [&](RenderTarget& render) { return render.TakeSlate(slate); });
}

ENGSTATUS EngSlateRenderClose(ENGHANDLE target) {
  return Guard([&] { return RenderTarget::Close(target); });
}
