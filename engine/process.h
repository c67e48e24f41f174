// Process and thread start-up, settings file, loaded converters, status texts.
#ifndef QUILLON_ENGINE_PROCESS_H
#define QUILLON_ENGINE_PROCESS_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Starts are counted; each needs its EngTerm. The first one reads the settings file: QUILLON.INI in the
// directory that QUILLON_HOME names, else in the working directory, else along PATH. None found is
// ENG_ERR_NO_CONFIG and the engine stays down. argv may name a settings file with "=path" as an argument.
ENG_API ENGSTATUS EngInit(int argc, char** argv);
// As EngInit with the settings file, or the directory that holds it, named.
ENG_API ENGSTATUS EngInitWithConfig(const char* path);
// The last end closes every database, loaded library and memory block that is still open.
ENG_API void EngTerm(void);
// Counted for each thread. ENG_ERR_NOT_STARTED while the engine is down; an end without a start is ENG_ERR_THREAD.
ENG_API ENGSTATUS EngThreadInit(void);
ENG_API ENGSTATUS EngThreadTerm(void);

// Settings keys compare without case. A missing key reads as 0 or as length 0 with an empty buffer.
// `size` counts the terminator; a longer value is cut at a character boundary.
ENG_API long EngEnvGetInt(const char* key);
ENG_API uint16_t EngEnvGetString(const char* key, char* buffer, uint16_t size);
// Writes replace the file as a whole (write aside, sync, rename) and keep what other processes wrote meanwhile; an
// empty value removes the key. ENG_ERR_ARGUMENT for a key or value that would not read back as it is,
// ENG_ERR_CONFIG_WRITE; both leave file and settings as they were.
ENG_API ENGSTATUS EngEnvSetInt(const char* key, long value);
ENG_API ENGSTATUS EngEnvSetString(const char* key, const char* value);

// The directory that relative database paths start from: key Directory, else the settings file's own.
// Absolute, up to 256 bytes with terminator; gives the length. A longer path gives an empty one and 0.
ENG_API uint16_t EngDataDirectory(char* buffer);

// Shared libraries with one entry point named "ConverterMain"; a name without a slash is looked up in the
// directories of key ConverterPath, then beside the engine and in the folder "quillon" there, as it stands, with ".so"
// and with "lib" and ".so". ENG_ERR_LOAD_LIBRARY if it cannot be loaded.
ENG_API ENGSTATUS EngOsLoadLibrary(const char* name, uint32_t reserved, ENGHANDLE* handle, void** entry);
ENG_API ENGSTATUS EngOsFreeLibrary(ENGHANDLE handle);
// Slots 0 to 15. A converter reads them back with EngOsGetCallback.
ENG_API ENGSTATUS EngOsSetCallback(uint32_t slot, void* callback);
ENG_API void* EngOsGetCallback(uint32_t slot);

// English text of an engine status in platform characters; its length, 0 when there is none.
// `size` counts the terminator.
ENG_API uint16_t EngStatusText(ENGHANDLE module, ENGSTATUS status, char* buffer, uint16_t size);

// The current user: settings key UserName, else the account that the process runs under. Up to 256 bytes with
// terminator for EngUserNameGet.
ENG_API ENGSTATUS EngUserNameGet(ENGCHAR* buffer);
ENG_API ENGSTATUS EngNameGetUser(ENGCHAR* buffer, uint16_t size);

// Whole-process settings that formats take, as read from the settings file at start.
ENG_API ENGSTATUS EngIntlGet(INTLFORMAT* settings);

#ifdef __cplusplus
}
#endif

#endif
