// The process's settings: the settings file that was found at start, and what follows from it.
//
// Safe from any thread. Values are platform text.
#ifndef QUILLON_QCORE_SETTINGS_SETTINGS_H
#define QUILLON_QCORE_SETTINGS_SETTINGS_H

#include <string>
#include <string_view>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::settings {

// Where the settings file is. A `named` path is the file or the directory that holds it; without one the rules of
// engine/process.h apply. Empty when there is none.
std::string Locate(const char* named);

[[nodiscard]] ENGSTATUS Load(const std::string& path);
void Unload();

// Empty for a missing key.
std::string Get(std::string_view key);
// Without a number at its start a value counts as missing.
long GetInt(std::string_view key, long missing);
// The file is read again first, so that what other processes wrote meanwhile stays.
[[nodiscard]] ENGSTATUS Set(std::string_view key, std::string_view value);

// Absolute. Key Directory, seen from the settings file's directory, else that directory.
std::string DataDirectory();
// Key UserName, else the account's name.
std::string UserName();
// From keys, with the defaults of a United States locale; listed in docs/formats/dates-and-numbers.md. The zone is 0.
INTLFORMAT ReadInternational();
// As they were when the settings were loaded.
INTLFORMAT International();

// Copies what fits, never a part of a UTF-8 character, and terminates. Gives the length; 0 for no buffer.
std::uint16_t CopyText(std::string_view text, char* buffer, std::uint16_t size);

}  // namespace qcore::settings

#endif
