// Engine status numbers. The two top bits of a 16-bit result are flags; the number is result & ENG_ERROR_MASK.
#ifndef QUILLON_ENGINE_STATUS_H
#define QUILLON_ENGINE_STATUS_H

#include "engine/types.h"

#define ENG_OK 0

// process, memory, handles
#define ENG_ERR_MEMORY 257
#define ENG_ERR_INVALID_HANDLE 258
#define ENG_ERR_MEMORY_LOCKED 259
#define ENG_ERR_TOO_MANY_HANDLES 260
#define ENG_ERR_NOT_STARTED 261
#define ENG_ERR_ARGUMENT 262
#define ENG_ERR_INTERNAL 263
#define ENG_ERR_BUFFER_SIZE 264
#define ENG_ERR_ODS_CODE 265
#define ENG_ERR_LOAD_LIBRARY 266
#define ENG_ERR_THREAD 267
#define ENG_ERR_FILE_OPEN 268
#define ENG_ERR_FILE_READ 269
#define ENG_ERR_FILE_WRITE 270
#define ENG_ERR_NO_CONFIG 421
#define ENG_ERR_CONFIG_WRITE 422
#define ENG_ERR_CONFIG_READ 423

// databases and slates
#define ENG_ERR_DB_NOT_FOUND 512
#define ENG_ERR_DB_EXISTS 513
#define ENG_ERR_DB_NOT_STORE 514
#define ENG_ERR_DB_DAMAGED 515
#define ENG_ERR_DB_NEWER 516
#define ENG_ERR_DB_IN_USE 517
#define ENG_ERR_DB_READ_ONLY 518
#define ENG_ERR_DB_FULL 519
#define ENG_ERR_DB_IO 520
#define ENG_ERR_DB_TRANSACTION 521
#define ENG_ERR_DB_FAILED_SYNC 522  // an earlier sync failed: reopen before writing
#define ENG_ERR_DB_IS_DIRECTORY 523
#define ENG_ERR_PATH 524
#define ENG_ERR_SERVER 525
#define ENG_ERR_DB_NO_ACCESS 526  // the file or its directory is closed to this user
#define ENG_ERR_NO_ITEM 546
#define ENG_ERR_ITEM_EXISTS 547
#define ENG_ERR_ITEM_DAMAGED 548
#define ENG_ERR_SLATE_DELETED 549
#define ENG_ERR_NO_SLATE 550
#define ENG_ERR_SLATE_CONFLICT 551
#define ENG_ERR_HEADER_MEMBER 552
#define ENG_ERR_ITEM_NAME 553
#define ENG_ERR_ITEM_SIZE 554
#define ENG_ERR_NO_SPECIAL_SLATE 578
#define ENG_ERR_NO_OBJECT 579
#define ENG_ERR_OBJECT_RANGE 580
#define ENG_ERR_OBJECT_CONTENT 581  // an object that does not hold what its record says
#define ENG_ERR_FOLDER_NAME 592     // empty or above 255 bytes
#define ENG_ERR_FOLDER_EXISTS 593   // a view or folder has the name
#define ENG_ERR_NOT_FOLDER 594
#define ENG_ERR_NOT_DOCUMENT 595
#define ENG_ERR_USER_NAME 596  // empty or above 255 bytes

// formulas: texts
#define ENG_ERR_FORMULA_EMPTY 640      // nothing to compute
#define ENG_ERR_FORMULA_SYNTAX 641     // something cannot stand where it stands
#define ENG_ERR_FORMULA_CHARACTER 642  // a character of no meaning
#define ENG_ERR_FORMULA_TEXT 643       // a text or bracket is not closed
#define ENG_ERR_FORMULA_NUMBER 644     // not a number
#define ENG_ERR_FORMULA_TIME 645       // not a time
#define ENG_ERR_FORMULA_FUNCTION 646   // an unknown @function
#define ENG_ERR_FORMULA_ARGUMENTS 647  // a wrong number of arguments
#define ENG_ERR_FORMULA_KEYWORD 648    // a keyword that the function does not know
#define ENG_ERR_FORMULA_TARGET 649     // nothing that can be assigned to
#define ENG_ERR_FORMULA_NESTING 650    // parts lie too deep in each other
#define ENG_ERR_FORMULA_TOO_LARGE 651  // the code would be above 65,535 bytes
// formulas: code and evaluation
#define ENG_ERR_FORMULA_CODE 656      // bytes that are no code
#define ENG_ERR_FORMULA_VERSION 657   // code of a newer release
#define ENG_ERR_FORMULA_STEPS 658     // the limit of steps
#define ENG_ERR_FORMULA_MEMORY 659    // the limit of memory
#define ENG_ERR_FORMULA_TYPE 660      // an operand or argument of a wrong type
#define ENG_ERR_FORMULA_VALUE 661     // an argument out of range
#define ENG_ERR_FORMULA_DIVISION 662  // division by zero
#define ENG_ERR_FORMULA_DOCUMENT 663  // a fact of the document, and there is none
#define ENG_ERR_FORMULA_LOOKUP 664    // look-ups are not to be had here
#define ENG_ERR_FORMULA_RESULT 665    // the value is too large for an item
#define ENG_ERR_FORMULA_FAILED 666    // the formula says so itself: @Error

// forms
#define ENG_ERR_NO_FORM 672          // the document names a form that is not there, or none where there is no default
#define ENG_ERR_FORM_DESIGN 673      // a form's stored design that can't be read
#define ENG_ERR_COMPUTE_REFUSED 674  // a field's validation formula refuses its value

// collections, values
#define ENG_ERR_NO_COLLECTION 779  // no index, or no view slate
#define ENG_ERR_VIEW_DESIGN 780    // a view's stored design that can't be read
#define ENG_ERR_TOO_MANY_KEYS 816
#define ENG_ERR_NO_ENTRY 1028
#define ENG_ERR_NUMBER_PARSE 1029
#define ENG_ERR_NO_DESIGN_ELEMENT 1030
#define ENG_ERR_TIME_PARSE 1031
#define ENG_ERR_TIME_VALUE 1032
#define ENG_ERR_LIST_DAMAGED 1033
#define ENG_ERR_LIST_INDEX 1034
#define ENG_ERR_LIST_FULL 1035
#define ENG_ERR_COUNT_UNSUPPORTED 1099
#define ENG_ERR_NO_FULL_TEXT 3842
#define ENG_ERR_TEXT_QUERY 3843  // the query is not understood, or too large
#define ENG_ERR_NO_HITS 3874

// text
#define ENG_ERR_TEXT_NOT_FOUND 0x1005
#define ENG_ERR_TEXT_END 0x1006
#define ENG_ERR_RECORD_DAMAGED 0x1007
#define ENG_ERR_TEXT_NESTING 0x1008  // parts of a file to be converted lie too deep in each other

// An operation that this release does not have yet: the base plus its place in engine/later.h.
#define ENG_ERR_NOT_AVAILABLE 0x2000

#endif
