#include "qcore/settings/inifile.h"

#include <algorithm>

namespace qcore {

namespace {

constexpr std::string_view kBlank = " \t\r\n\v\f";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

struct Setting {
  std::string_view key;
  std::string_view value;
};

std::optional<Setting> SettingIn(std::string_view line) {
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  const std::string_view text = Trim(line);
  const std::size_t equals = text.find('=');
  if (text.starts_with(';') || text.starts_with('[') || equals == std::string_view::npos) return std::nullopt;
  return Setting{Trim(text.substr(0, equals)), Trim(text.substr(equals + 1))};
}

bool HasKey(std::string_view line, std::string_view key) {
  const std::optional<Setting> setting = SettingIn(line);
  return setting && IniFile::SameKey(setting->key, key);
}

bool CanStand(std::string_view text) {
  return Trim(text) == text && text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

std::string_view LineEnd(std::string_view line) {
  if (line.ends_with("\r\n")) return "\r\n";
  return line.ends_with('\n') ? "\n" : "";
}

}  // namespace

IniFile::IniFile(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    const std::size_t length = end == std::string_view::npos ? bytes.size() : end + 1;
    lines_.emplace_back(bytes.substr(0, length));
    bytes.remove_prefix(length);
  }
}

bool IniFile::SameKey(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return Lower(x) == Lower(y); });
}

std::optional<std::string_view> IniFile::Get(std::string_view key) const {
  for (const std::string& line : lines_) {
    const std::optional<Setting> setting = SettingIn(line);
    if (setting && SameKey(setting->key, key)) return setting->value;
  }
  return std::nullopt;
}

bool IniFile::Set(std::string_view key, std::string_view value) {
  if (key.empty() || key.front() == ';' || key.front() == '[' || key.find('=') != std::string_view::npos) return false;
  if (!CanStand(key) || !CanStand(value)) return false;
  if (value.empty()) {
    std::erase_if(lines_, [&](const std::string& line) { return HasKey(line, key); });
    return true;
  }
  const std::string setting = std::string(key) + "=" + std::string(value);
  const auto old = std::ranges::find_if(lines_, [&](const std::string& line) { return HasKey(line, key); });
  if (old != lines_.end()) {
    *old = setting + std::string(LineEnd(*old));
    return true;
  }
  const std::string end(lines_.empty() || LineEnd(lines_.front()).empty() ? "\n" : LineEnd(lines_.front()));
  if (!lines_.empty() && LineEnd(lines_.back()).empty()) lines_.back() += end;
  lines_.push_back(setting + end);
  return true;
}

std::string IniFile::Bytes() const {
  std::string bytes;
  for (const std::string& line : lines_) bytes += line;
  return bytes;
}

}  // namespace qcore
