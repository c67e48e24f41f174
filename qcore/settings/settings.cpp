#include "qcore/settings/settings.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <limits>
#include <mutex>
#include <shared_mutex>

#include "qcore/settings/filereplace.h"
#include "qcore/settings/inifile.h"

namespace qcore::settings {

namespace {

std::shared_mutex mutex;
IniFile file;
std::string file_path;  // empty while down
INTLFORMAT international;

std::string AccountName() {
  std::array<char, 4096> buffer{};
  struct passwd entry {};
  struct passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && *found->pw_name) {
    return found->pw_name;
  }
  return "uid " + std::to_string(geteuid());
}

}  // namespace

ENGSTATUS Load(const std::string& path) {
  std::optional<std::string> bytes = ReadSmallFile(path);
  if (!bytes) return ENG_ERR_CONFIG_READ;
  {
    std::unique_lock lock(mutex);
    file = IniFile(*bytes);
    file_path = path;
  }
  const INTLFORMAT read = ReadInternational();
  std::unique_lock lock(mutex);
  international = read;
  return ENG_OK;
}

INTLFORMAT International() {
  {
    std::shared_lock lock(mutex);
    if (!file_path.empty()) return international;
  }
  return ReadInternational();
}

void Unload() {
  std::unique_lock lock(mutex);
  file = IniFile();
  file_path.clear();
}

std::string Get(std::string_view key) {
  std::shared_lock lock(mutex);
  return std::string(file.Get(key).value_or(std::string_view()));
}

long GetInt(std::string_view key, long missing) {
  const std::string value = Get(key);
  const char* begin = value.c_str();
  if (*begin == '+') ++begin;
  long number = 0;
  const auto [end, error] = std::from_chars(begin, value.data() + value.size(), number);
  if (error == std::errc::result_out_of_range) {
    return *begin == '-' ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
  }
  return error == std::errc() ? number : missing;
}

ENGSTATUS Set(std::string_view key, std::string_view value) {
  std::unique_lock lock(mutex);
  if (file_path.empty()) return ENG_ERR_NOT_STARTED;
  IniFile changed;
  const ReplaceResult result = ChangeFile(file_path, [&](std::string& bytes) {
    changed = IniFile(bytes);
    const bool fits = changed.Set(key, value);
    if (fits) bytes = changed.Bytes();
    return fits;
  });
  if (result == ReplaceResult::kRefused) return ENG_ERR_ARGUMENT;
  if (result == ReplaceResult::kFailed) return ENG_ERR_CONFIG_WRITE;
  file = std::move(changed);
  return ENG_OK;
}

std::string DataDirectory() {
  const std::string directory = Get("Directory");
  std::shared_lock lock(mutex);
  const std::filesystem::path own = std::filesystem::path(file_path).parent_path();
  return directory.empty() ? own.string() : (own / directory).lexically_normal().string();
}

std::string UserName() {
  std::string name = Get("UserName");
  return name.empty() ? AccountName() : name;
}

std::uint16_t CopyText(std::string_view text, char* buffer, std::uint16_t size) {
  if (!buffer || size == 0) return 0;
  std::size_t length = std::min<std::size_t>(text.size(), size - 1u);
  if (length < text.size()) {
    // At most three bytes continue a character; more are invalid bytes, each a character of its own.
    std::size_t start = length;
    while (start > 0 && length - start < 3 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) --start;
    if ((static_cast<unsigned char>(text[start]) & 0xC0) == 0xC0) length = start;
  }
  text.copy(buffer, length);
  buffer[length] = 0;
  return static_cast<std::uint16_t>(length);
}

}  // namespace qcore::settings
