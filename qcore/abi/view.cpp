#include "engine/view.h"

#include "engine/status.h"

namespace {

constexpr uint16_t kColors = 240;
constexpr uint16_t kBasicColors = 16;

}  // namespace

ENGSTATUS EngColorToLegacy(uint16_t color_index, uint16_t* legacy) {
  if (legacy == nullptr || color_index >= kColors) return ENG_ERR_ARGUMENT;
  *legacy = color_index % kBasicColors;
  return ENG_OK;
}
