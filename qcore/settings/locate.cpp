#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "qcore/settings/settings.h"

namespace qcore::settings {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "QUILLON.INI";

// The file itself, or the one in the directory, as an absolute path.
std::string FileAt(const fs::path& path) {
  std::error_code error;
  const fs::path file = fs::is_directory(path, error) ? path / kFileName : path;
  if (!fs::is_regular_file(file, error)) return {};
  const fs::path absolute = fs::absolute(file, error);
  return error ? std::string() : absolute.string();
}

std::string FileIn(const fs::path& directory) { return FileAt(directory / kFileName); }

std::string FileAlong(std::string_view directories) {
  while (!directories.empty()) {
    const std::size_t end = std::min(directories.find(':'), directories.size());
    const std::string_view directory = directories.substr(0, end);
    std::string found = directory.empty() ? std::string() : FileIn(directory);
    if (!found.empty()) return found;
    directories.remove_prefix(std::min(end + 1, directories.size()));
  }
  return {};
}

}  // namespace

std::string Locate(const char* named) {
  if (named) return FileAt(named);
  const char* home = std::getenv("QUILLON_HOME");
  std::string found = home && *home ? FileIn(home) : std::string();
  if (found.empty()) found = FileIn(".");
  const char* path = std::getenv("PATH");
  return found.empty() && path ? FileAlong(path) : found;
}

}  // namespace qcore::settings
