// Database paths: "[port!!]server!!file".
#ifndef QUILLON_QCORE_STORE_PATHS_H
#define QUILLON_QCORE_STORE_PATHS_H

#include <string>
#include <string_view>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore {

struct PathParts {
  std::string port;
  std::string server;
  std::string file;
};

// ENG_ERR_PATH for more than three parts or more bytes than a path holds.
[[nodiscard]] ENGSTATUS SplitPath(std::string_view path, PathParts* parts);
[[nodiscard]] ENGSTATUS BuildPath(const PathParts& parts, std::string* path);
// The absolute local file: relative ones start from the data directory; without an ending it gets ".vlt", unless a
// directory has just that name. An empty file is the data directory. ENG_ERR_SERVER when
// a server is named.
[[nodiscard]] ENGSTATUS ResolvePath(std::string_view path, std::string* file);
bool IsDirectory(const std::string& file);

}  // namespace qcore

#endif
