// Rendering: styled text and whole documents, written one behind another into a rich text.
//
// A target collects records; EngSlateRenderFinish puts them as items of the target's name on a temporary slate, with
// the font table, the link table and the attachments that they refer to. After a failure what was appended before
// stays.
#ifndef QUILLON_ENGINE_RENDER_H
#define QUILLON_ENGINE_RENDER_H

#include "engine/records.h"
#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

ENG_API ENGSTATUS EngSlateCreateTemp(ENGHANDLE db, const ENGCHAR* name, ENGHANDLE* target);
// The paragraphs that follow have this style and carry its name; null is the usual paragraph. `opened` (may be null)
// gets its number, for EngSlateRenderAppend.
ENG_API ENGSTATUS EngSlateRenderOpenStyle(ENGHANDLE target, const ENGCHAR* name, const CDPABDEFINITION* style,
                                          uint16_t* opened);
// Text in a packed font, of the style with that number or, for 0, of the one in force. Line ends start paragraphs.
ENG_API ENGSTATUS EngSlateRenderAppend(ENGHANDLE target, uint16_t style, uint32_t font, const ENGCHAR* text,
                                       uint32_t length, uint32_t reserved);
// A document through a form: the form's $Body, with those of its subforms, and in place of each field, in its font
// and formats, the value of the item. Subforms are those of the form's database. Fields for display, and computed
// ones that have no item, show what their formulas give for the document, which stays as it is. A form of 0 lists
// the document's items. Links of form, subforms and document come along as long as their slates have the same link
// table; others are left out, their text stays. Those of a slate without a table lead nowhere.
// ENG_ERR_RECORD_DAMAGED for records that lead out of their items; the status of a formula that fails.
ENG_API ENGSTATUS EngSlateRenderToItem(ENGHANDLE target, ENGHANDLE form, ENGHANDLE slate);
ENG_API ENGSTATUS EngSlateRenderFinish(ENGHANDLE target, uint32_t reserved1, uint32_t reserved2, uint32_t reserved3,
                                       uint32_t reserved4);
// After EngSlateRenderFinish the temporary slate becomes the caller's, once; ENG_ERR_ARGUMENT otherwise.
ENG_API ENGSTATUS EngSlateRenderTake(ENGHANDLE target, ENGHANDLE* slate);
// A slate that nobody has taken goes with it.
ENG_API ENGSTATUS EngSlateRenderClose(ENGHANDLE target);

#ifdef __cplusplus
}
#endif

#endif
