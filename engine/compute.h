// Running a document through its form.
#ifndef QUILLON_ENGINE_COMPUTE_H
#define QUILLON_ENGINE_COMPUTE_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Which field stopped a run, or was the first that failed, and what its validation formula had to say; without a
// terminator, cut at a character.
typedef struct ENGCOMPUTEFAILURE {
  uint16_t FieldLength;  // 0 when no field is to blame
  uint16_t MessageLength;
  ENGCHAR Field[256];
  ENGCHAR Message[1024];
} ENGCOMPUTEFAILURE;

// Runs the open slate through the stored form that its item Form names, or the database's default form when it names
// none. Fields of the form's $Body, and of the subforms where it inserts them, are computed in their order; shared
// fields as their definitions say:
//
// - an editable field whose item is missing gets its default value;
// - a computed field gets its value anew, one that is computed when composed only in a slate that was never saved; one
//   for display has its value for the other formulas of this run alone;
// - an editable field's input translation makes its value anew.
//
// Then each editable field's validation formula is evaluated: a number other than 0, or an empty text, accepts the
// value, anything else refuses it with ENG_ERR_COMPUTE_REFUSED, a text being the message. Fields that are computed
// after validation come last. A text result of a field of numbers or times is read as one, and theirs in a field of
// texts becomes text; ENG_ERR_FORMULA_TYPE, ENG_ERR_NUMBER_PARSE, ENG_ERR_TIME_PARSE.
//
// The first failure ends the run, and the slate is as it was. With `continue_on_error` the run goes on, all that could
// be computed is in the slate, and the result is the first failure. Nothing is saved. `failure` may be null.
// ENG_ERR_NO_FORM, ENG_ERR_FORM_DESIGN.
ENG_API ENGSTATUS EngSlateCompute(ENGHANDLE slate, uint16_t reserved1, int continue_on_error,
                                  ENGCOMPUTEFAILURE* failure, void* reserved2);

#ifdef __cplusplus
}
#endif

#endif
