// Formulas: texts that compute values from a document. The language is described in docs/formulas.md.
//
// Compiled code says its own length; it may be kept anywhere and be evaluated by any thread. Operations that take a
// `code_length` look at no more bytes than that and check the code first: ENG_ERR_FORMULA_CODE, or
// ENG_ERR_FORMULA_VERSION for code of a newer release. New code comes in a block of engine memory.
#ifndef QUILLON_ENGINE_FORMULA_H
#define QUILLON_ENGINE_FORMULA_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Where a text is wrong, in bytes.
typedef struct ENGFORMULAERROR {
  uint32_t Offset;
  uint32_t Length;
} ENGFORMULAERROR;

// EngFormulaDecompile: the selection alone, without the columns and summary names that were merged into it.
#define ENG_DECOMPILE_SELECTION 0x0001

// EngFormulaComputeStart: assignments change the items of the slate, which is not saved. Without it nothing changes.
#define ENG_COMPUTE_ASSIGN 0x0001

// What an evaluation found out.
#define ENG_FORMULA_SELECTED 0x0001  // SELECT gave true, or there is no SELECT
#define ENG_FORMULA_MODIFIED 0x0002  // an assignment gives an item another value than it has
#define ENG_FORMULA_DELETED 0x0004   // the formula asks for the document to be deleted

// EngFormulaGetInfo selectors
#define ENG_FORMULA_INFO_TIME 0       // uint16_t: 1 when it depends on the time, or on other documents
#define ENG_FORMULA_INFO_RESPONSES 1  // uint16_t: 1 when responses (bit 0) or descendants (bit 1) are selected
#define ENG_FORMULA_INFO_SELECTS 2    // uint16_t: 1 when there is a SELECT
#define ENG_FORMULA_INFO_COLUMNS 3    // uint16_t: columns that were merged in
#define ENG_FORMULA_INFO_LENGTH 4     // uint32_t: bytes of the code

// EngFormulaGetNames
#define ENG_FORMULA_NAMES_READ 0     // items that the selection and the columns read
#define ENG_FORMULA_NAMES_SUMMARY 1  // columns and summary names, as they were merged in
#define ENG_FORMULA_NAMES_COLUMNS 2  // columns alone

// @DocNumber and its like give marks that a row of a view replaces (EngCollectionTranslateSpecial): ENG_SPECIAL_MARK, a
// letter, the arguments, each with ENG_SPECIAL_ARGUMENT_END behind it, and ENG_SPECIAL_MARK.
#define ENG_SPECIAL_MARK 0x7F
#define ENG_SPECIAL_ARGUMENT_END 0x1F
#define ENG_SPECIAL_DOC_NUMBER 'N'         // [separator]: "2.1.5"; with an empty one the last number alone
#define ENG_SPECIAL_DOC_LEVEL 'L'          // depth, 0 for the top
#define ENG_SPECIAL_DOC_SIBLINGS 'S'       // entries of the same parent, the row among them
#define ENG_SPECIAL_DOC_CHILDREN 'C'       // [text, text for none, text for one], '%' in a text is the count
#define ENG_SPECIAL_DOC_DESCENDANTS 'D'    // as the children
#define ENG_SPECIAL_DOC_PARENT_NUMBER 'P'  // [separator], as the number
#define ENG_SPECIAL_IS_CATEGORY 'G'        // [text for yes, text for no], "*" and "" without them
#define ENG_SPECIAL_IS_EXPANDABLE 'X'      // [text for yes, text for no], "+" and "" without them
#define ENG_SPECIAL_IS_UNREAD 'U'          // as the category; no function gives this mark, nor the next two
#define ENG_SPECIAL_DB_TITLE 'T'
#define ENG_SPECIAL_VIEW_TITLE 'V'

// On a failure with *error filled the text is wrong there; statuses ENG_ERR_FORMULA_... of engine/status.h.
ENG_API ENGSTATUS EngFormulaCompile(const ENGCHAR* text, uint16_t length, ENGHANDLE* code, uint16_t* code_length,
                                    ENGFORMULAERROR* error);
// The text compiles to the same code; ENG_ERR_FORMULA_TOO_LARGE for one above 65,535 bytes. The code is taken to be as
// long as it says.
ENG_API ENGSTATUS EngFormulaDecompile(const void* code, uint16_t flags, ENGHANDLE* text, uint16_t* length);
// Checks bytes that a stranger may have written.
ENG_API ENGSTATUS EngFormulaVerify(const void* code, uint32_t code_length);
// The selection's code with a column's formula in it under the column's name; one of that name is replaced.
ENG_API ENGSTATUS EngFormulaMergeColumn(const void* selection, uint32_t selection_length, const ENGCHAR* name,
                                        uint16_t name_length, const void* column, uint32_t column_length,
                                        ENGHANDLE* code, uint16_t* code_length);
// The selection's code with the name of an item that rows shall carry; a name that is there already stays once.
ENG_API ENGSTATUS EngFormulaAddSummaryName(const void* selection, uint32_t selection_length, const ENGCHAR* name,
                                           uint16_t name_length, ENGHANDLE* code, uint16_t* code_length);
// A text list value with its type word. `which` is ENG_FORMULA_NAMES_...
ENG_API ENGSTATUS EngFormulaGetNames(const void* code, uint32_t code_length, uint16_t which, ENGHANDLE* list,
                                     uint16_t* size);
// Frees a block of code.
ENG_API ENGSTATUS EngFormulaRelease(ENGHANDLE code);

// A compute handle keeps what it needs of the code. One thread at a time.
ENG_API ENGSTATUS EngFormulaComputeStart(uint16_t flags, const void* code, ENGHANDLE* compute);
ENG_API ENGSTATUS EngFormulaComputeStop(ENGHANDLE compute);
ENG_API ENGSTATUS EngFormulaGetInfo(ENGHANDLE compute, uint16_t selector, void* target);
// A block with the type word and the value of the selection or the whole formula; slate 0 is no document. An error
// value is a failure with its status; *flags are set all the same.
ENG_API ENGSTATUS EngFormulaEvaluate(ENGHANDLE compute, ENGHANDLE slate, ENGHANDLE* result, uint16_t* length,
                                     uint16_t* flags);
// As EngFormulaEvaluate into the caller's buffer. ENG_ERR_BUFFER_SIZE with the length that is needed in *length.
ENG_API ENGSTATUS EngFormulaEvaluateTo(ENGHANDLE compute, ENGHANDLE slate, void* buffer, uint32_t size,
                                       uint32_t* length, uint16_t* flags);

// The slates of a class mask that the code selects and the user may read. `since` and `until` bound the time of the
// last change in this file; both may be null. `limit` keeps the lowest IDs, 0 all. A slate on which the code fails is
// not selected. *completed (may be null) is the moment to pass as `since` next time: `until` where that is earlier, and
// `since` again (both words wild for none) where the limit left slates out. The caller destroys *table.
ENG_API ENGSTATUS EngDbSearchFormula(ENGHANDLE db, const void* code, uint32_t code_length, uint16_t class_mask,
                                     const TIMEDATE* since, const TIMEDATE* until, uint32_t limit, TIMEDATE* completed,
                                     ENGHANDLE* table);

#ifdef __cplusplus
}
#endif

#endif
