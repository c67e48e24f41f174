// The text of a settings file.
//
// Lines of `key=value`; white space around both is not part of them. Keys compare without case (ASCII), and the first
// line of a key counts. Lines that start with ';' or '[' and lines without '=' say nothing. Whatever is not changed is
// written back byte for byte: comments, sections, blanks, line ends, bytes of any value.
#ifndef QUILLON_QCORE_SETTINGS_INIFILE_H
#define QUILLON_QCORE_SETTINGS_INIFILE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qcore {

class IniFile {
 public:
  IniFile() = default;
  explicit IniFile(std::string_view bytes);

  std::optional<std::string_view> Get(std::string_view key) const;
  // Changes the key's first line, or adds one at the end; an empty value takes all lines of the key out. False, and
  // nothing changes, for a key or value that could not be read back as it is.
  [[nodiscard]] bool Set(std::string_view key, std::string_view value);
  std::string Bytes() const;

  static bool SameKey(std::string_view a, std::string_view b);

 private:
  std::vector<std::string> lines_;  // with their line ends
};

}  // namespace qcore

#endif
