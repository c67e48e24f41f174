// The contract of a converter: a library, loaded at run time, with one entry point named "ConverterMain".
//
// Composite files hold what a composite item holds: the type word 0x0001, then records, each on an even offset.
#ifndef QUILLON_ENGINE_CONVERTER_H
#define QUILLON_ENGINE_CONVERTER_H

#include "engine/types.h"

#define ENG_CONVERTER_ENTRY "ConverterMain"
#define ENG_CONVERTER_DEFAULT_FILE "DEFAULT.CD"

// Modes
#define ENG_CONVERT_IMPORT 3  // `file` is read; the composite file is made and its name put into the buffer
#define ENG_CONVERT_EXPORT 4  // the buffer names the composite file; `file` is written, or replaced

// Flags, in the third argument. What could not be carried is told in a text file beside the composite file, of that
// file's name with the suffix, a line each; no file when all was carried. The caller removes it.
#define ENG_CONVERT_WITH_REPORT 0x00000001
#define ENG_CONVERTER_REPORT_SUFFIX ".report"

// 104 bytes. FileName is platform text with its terminator.
typedef struct ENGCONVERTERBUFFER {
  char FileName[100];
  uint32_t FontID;  // packed font of text that has none of its own
} ENGCONVERTERBUFFER;

// 0, or a status that is passed on; after a failure no file is left behind. The caller removes the composite file.
typedef ENGSTATUS (*ENGCONVERTERMAIN)(ENGCONVERTERBUFFER* buffer, uint16_t mode, uint32_t flags, const char* file,
                                      uint32_t options);

#endif
