// JSON to a stream, value by value. Nesting and commas are kept here, so that a command only names what it has.
#ifndef QUILLON_TOOLS_QUILLON_JSON_H
#define QUILLON_TOOLS_QUILLON_JSON_H

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

namespace tool {

class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : out_(out) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  void Key(std::string_view name);

  // UTF-8; a byte that is no part of a valid character comes out as U+FFFD, since JSON has no other way to say it.
  void String(std::string_view text);
  void Integer(std::int64_t value);
  // The shortest form that reads back the same; null for what JSON cannot say (infinities, not a number).
  void Number(double value);
  void Boolean(bool value);
  void Null();

  void Field(std::string_view name, std::string_view text) { Key(name), String(text); }
  void Field(std::string_view name, std::int64_t value) { Key(name), Integer(value); }

 private:
  void Open(char bracket);
  void Close(char bracket);
  void Separate();
  void Quote(std::string_view text);

  std::ostream& out_;
  std::vector<bool> filled_;  // for each open bracket, whether it holds a value already
  bool after_key_ = false;
};

// Length of the valid UTF-8 character that the text starts with, 0 if there is none.
std::size_t Utf8Length(std::string_view text);

}  // namespace tool

#endif
