// Reading a small file whole, and changing it so that a reader sees the old bytes or the new ones, never a part.
#ifndef QUILLON_QCORE_SETTINGS_FILEREPLACE_H
#define QUILLON_QCORE_SETTINGS_FILEREPLACE_H

#include <functional>
#include <optional>
#include <string>

namespace qcore {

// Nothing for a file that is missing, no regular file, unreadable or above 16 MB.
std::optional<std::string> ReadSmallFile(const std::string& path);

enum class ReplaceResult { kDone, kRefused, kFailed };

// Reads the file, lets `change` edit the bytes (false refuses), and puts the result in the file's place by a synced
// rename. Processes that change the same file so wait for each other. Links are followed; mode and, as far as the
// process may, owner are kept.
ReplaceResult ChangeFile(const std::string& path, const std::function<bool(std::string&)>& change);

}  // namespace qcore

#endif
