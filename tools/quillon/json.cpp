#include "tools/quillon/json.h"

#include <charconv>
#include <cmath>

namespace tool {

namespace {

// Lowest code point that a character of each length may stand for.
constexpr std::uint32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};

std::size_t LengthFromLead(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

const char* ShortEscape(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\b':
      return "\\b";
    case '\f':
      return "\\f";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return nullptr;
  }
}

}  // namespace

std::size_t Utf8Length(std::string_view text) {
  if (text.empty()) return 0;
  const std::size_t length = LengthFromLead(static_cast<unsigned char>(text[0]));
  if (length < 2) return length;
  if (length > text.size()) return 0;
  std::uint32_t point = static_cast<unsigned char>(text[0]) & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return 0;
    point = point << 6 | (byte & 0x3F);
  }
  const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
  return point < kLowest[length] || surrogate || point > 0x10FFFF ? 0 : length;
}

void JsonWriter::Key(std::string_view name) {
  Separate();
  Quote(name);
  out_ << ':';
  after_key_ = true;
}

void JsonWriter::String(std::string_view text) {
  Separate();
  Quote(text);
}

void JsonWriter::Integer(std::int64_t value) {
  Separate();
  out_ << value;
}

void JsonWriter::Number(double value) {
  if (!std::isfinite(value)) return Null();
  Separate();
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out_.write(digits, end - digits);
}

void JsonWriter::Boolean(bool value) {
  Separate();
  out_ << (value ? "true" : "false");
}

void JsonWriter::Null() {
  Separate();
  out_ << "null";
}

void JsonWriter::Open(char bracket) {
  Separate();
  out_ << bracket;
  filled_.push_back(false);
}

// A line ends with the outermost bracket, so that several values in a row can be read line by line.
void JsonWriter::Close(char bracket) {
  filled_.pop_back();
  out_ << bracket;
  if (filled_.empty()) out_ << '\n';
}

void JsonWriter::Separate() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (filled_.empty()) return;
  if (filled_.back()) out_ << ',';
  filled_.back() = true;
}

void JsonWriter::Quote(std::string_view text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  out_ << '"';
  while (!text.empty()) {
    const char c = text[0];
    std::size_t length = Utf8Length(text);
    if (length == 0) {
      out_ << "\xEF\xBF\xBD";
      length = 1;
    } else if (const char* escape = ShortEscape(c)) {
      out_ << escape;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      out_ << "\\u00" << kDigits[c >> 4 & 15] << kDigits[c & 15];
    } else {
      out_.write(text.data(), static_cast<std::streamsize>(length));
    }
    text.remove_prefix(length);
  }
  out_ << '"';
}

}  // namespace tool
