// How views look.
#ifndef QUILLON_ENGINE_VIEW_H
#define QUILLON_ENGINE_VIEW_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// The background value, one of 16 basic colours, by which older releases show a colour index below 240: indexes stand
// in rows of 16, and each takes the basic colour at the head of its column. ENG_ERR_ARGUMENT for other indexes.
ENG_API ENGSTATUS EngColorToLegacy(uint16_t color_index, uint16_t* legacy);

#ifdef __cplusplus
}
#endif

#endif
