// What a program that reads the tool's JSON relies on.
#include "tools/quillon/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

struct TextRow {
  std::string_view text;
  std::string_view json;
};

TEST(JsonWriter, EscapesWhatJsonCannotHold) {
  const TextRow rows[] = {
      {"plain", R"("plain")"},
      {"a\"b\\c/d", R"("a\"b\\c/d")"},
      {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
      {std::string_view("\0\x1f\x7f", 3), R"("\u0000\u001f\u007f")"},
      {"gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80", "\"gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80\""},
      {"cut \xE2\x82", "\"cut \xEF\xBF\xBD\xEF\xBF\xBD\""},
      {"\xC0\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                  // overlong
      {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},  // a surrogate
      {"\xF4\x90\x80\x80x", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDx\""},
  };
  for (const TextRow& row : rows) {
    std::ostringstream out;
    tool::JsonWriter(out).String(row.text);
    EXPECT_EQ(out.str(), row.json);
  }
}

TEST(JsonWriter, PutsCommasBetweenValuesOnly) {
  std::ostringstream out;
  tool::JsonWriter json(out);
  json.BeginObject();
  json.Field("a", 1);
  json.Key("b");
  json.BeginArray();
  json.BeginObject();
  json.EndObject();
  json.Null();
  json.Number(0.1);
  json.Number(std::numeric_limits<double>::infinity());
  json.EndArray();
  json.Key("c");
  json.Boolean(true);
  json.EndObject();
  EXPECT_EQ(out.str(), "{\"a\":1,\"b\":[{},null,0.1,null],\"c\":true}\n");
}

}  // namespace
