#include "qcore/store/paths.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "engine/database.h"
#include "qcore/settings/settings.h"

namespace qcore {

namespace {

constexpr std::string_view kSeparator = "!!";
constexpr std::string_view kEnding = ".vlt";

}  // namespace

ENGSTATUS SplitPath(std::string_view path, PathParts* parts) {
  if (path.size() >= ENG_PATH_SIZE) return ENG_ERR_PATH;
  std::vector<std::string_view> pieces;
  for (std::size_t at = path.find(kSeparator); at != std::string_view::npos; at = path.find(kSeparator)) {
    pieces.push_back(path.substr(0, at));
    path.remove_prefix(at + kSeparator.size());
  }
  pieces.push_back(path);
  if (pieces.size() > 3) return ENG_ERR_PATH;
  PathParts split;
  split.file = pieces.back();
  if (pieces.size() >= 2) split.server = pieces[pieces.size() - 2];
  if (pieces.size() == 3) split.port = pieces.front();
  *parts = std::move(split);
  return ENG_OK;
}

ENGSTATUS BuildPath(const PathParts& parts, std::string* path) {
  std::string built;
  if (!parts.port.empty()) built = parts.port + std::string(kSeparator);
  if (!parts.port.empty() || !parts.server.empty()) built += parts.server + std::string(kSeparator);
  built += parts.file;
  if (built.size() >= ENG_PATH_SIZE) return ENG_ERR_PATH;
  *path = std::move(built);
  return ENG_OK;
}

ENGSTATUS ResolvePath(std::string_view path, std::string* file) {
  PathParts parts;
  const ENGSTATUS status = SplitPath(path, &parts);
  if (status != ENG_OK) return status;
  if (!parts.server.empty()) return ENG_ERR_SERVER;
  std::filesystem::path place(parts.file);
  if (place.is_relative()) place = std::filesystem::path(settings::DataDirectory()) / place;
  place = place.lexically_normal();
  if (!place.has_extension() && !IsDirectory(place.string())) place += kEnding;
  *file = place.string();
  return ENG_OK;
}

bool IsDirectory(const std::string& file) {
  std::error_code error;
  return std::filesystem::is_directory(file, error);
}

}  // namespace qcore
