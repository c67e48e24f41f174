// Texts and records from strangers: a status or a sensible result, in time that grows with their size.
#include "engine/status.h"
#include "tests/converters/converter_fixture.h"

namespace {

using namespace converter_test;
using testing::HasSubstr;

std::string Repeat(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

// Names that differ.
std::string Numbered(std::string_view name, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += std::string(name) + std::to_string(i) + " ";
  return all;
}

// Every way out of what came in.
void ExpectConvertible(const Converted& records) {
  ASSERT_EQ(records.Status, 0U);
  EXPECT_EQ(ToHtml(records.Bytes).Status, 0U);
  EXPECT_EQ(ToMarkdown(records.Bytes).Status, 0U);
}

TEST(Hostile, MarkdownIsRead) {
  constexpr std::size_t kMany = 20000;
  const std::string texts[] = {
      Repeat(">", kMany) + "a",
      Repeat("- ", kMany) + "a",
      Repeat("1. ", kMany),
      Repeat("*a **b ", kMany),
      Repeat("[", kMany) + Repeat("](x)", kMany),
      Repeat("![", kMany) + Repeat("](x)", kMany),
      Repeat("`", kMany) + " " + Repeat("``", kMany),
      Repeat("| ", kMany) + "\n" + Repeat("|-", kMany) + "\n" + Repeat("| x\n", 300),
      Repeat("<b>", kMany),
      Repeat("<b>", kMany) + "a" + Repeat("</b>", kMany),
      Repeat("<b>a<i>b", kMany),
      Repeat("<font color=red>a<font color=blue>b", kMany),
      Repeat("<a name=x>", kMany) + Repeat("</i>", kMany),
      Repeat("***a** b ", kMany),
      "a\n|-|\n" + Repeat("| <b>\n", kMany),
      Repeat("<div>", kMany) + "\n\n" + Repeat("</div>", kMany),
      Repeat("- a\n", 1000000 / 4),
      "[x](" + Repeat("y", 100000) + ")",
      "```" + Repeat("l", 100000) + "\ncode",
      std::string("\0\0\xFF\xC3", 4),
      std::string(100000, '\0'),
  };
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 20));
    ExpectConvertible(FromMarkdown(text));
  }
}

TEST(Hostile, HtmlIsReadOrRefused) {
  const struct {
    std::string Text;
    ENGSTATUS Status;
  } rows[] = {
      {Repeat("<div>", 900) + "a", ENG_OK},
      {Repeat("<div>", 100000), ENG_ERR_TEXT_NESTING},
      {Repeat("<b>", 100000) + Repeat("</i>", 100000), ENG_ERR_TEXT_NESTING},
      {Repeat("</b>", 300000), ENG_OK},
      {Repeat("<p>a", 300000), ENG_OK},
      {Repeat("<br>", 300000), ENG_OK},
      {"<ul>" + Repeat("<li>x", 300000), ENG_OK},
      {Repeat("<table><tr><td>", 300), ENG_OK},
      {Repeat("<b><i>x</b>", 20000), ENG_OK},
      {Repeat("<b>", 900) + Repeat("a<br>", 20000), ENG_OK},
      {Repeat("<font size=1>a<font size=7>b", 400) + Repeat("<u>c</u>", 5000), ENG_OK},
      {Repeat("<a href=x><table><tr><td>", 200), ENG_OK},
      {Repeat("<a href=x><table></table>", 20000), ENG_OK},
      {Repeat("<dl><dt>", 400) + Repeat("<dd>x", 20000), ENG_OK},
      {Repeat("<p id=x>", 100000), ENG_OK},
      {Repeat("<q>", 900) + Repeat("<div hidden>", 900), ENG_ERR_TEXT_NESTING},
      {"<table><colgroup>" + Repeat("<col span=1000 width=99999999>", 1000) + "<tr><td>a", ENG_OK},
      {"<a " + Repeat("b=c ", 50000) + ">x", ENG_OK},
      {"<p " + Numbered("a", 300000) + "title='>' lang=\"" + Numbered("b", 5000) + "\">x", ENG_OK},
      {"<a href='" + Repeat("x", 1000000) + "'>x</a><img src='" + Repeat("y", 1000000) + "'>", ENG_OK},
      {"<a href=x" + Repeat("<", 10000), ENG_OK},
      {"<!--" + Repeat("-", 100000), ENG_OK},
      {std::string("<p>\0a\0</p>", 10), ENG_OK},
      {"\xFF\xFE<", ENG_OK},
      {"<table><tr>" + Repeat("<td colspan=1000 rowspan=65535>", 1000), ENG_OK},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Text.substr(0, 20));
    const Converted records = FromHtml(row.Text);
    EXPECT_EQ(records.Status, row.Status);
    if (row.Status == ENG_OK) ExpectConvertible(records);
  }
}

TEST(Hostile, LargeTablesLoseNothing) {
  std::string html = "<table>";
  for (int row = 0; row < 300; ++row) {
    html += "<tr>";
    for (int column = 0; column < 100; ++column) html += "<td>" + std::to_string(row * 100 + column) + "x";
  }
  const Converted records = FromHtml(html);
  EXPECT_THAT(records.Report, HasSubstr("tables with too many rows became several: 1"));
  EXPECT_THAT(records.Report, HasSubstr("cells of too many columns moved into the last one: 10800"));
  const std::string out = ToHtml(records.Bytes).Bytes;
  std::size_t at = 0;
  for (int cell = 0; cell < 30000 && at != std::string::npos; ++cell) {
    at = out.find(">" + std::to_string(cell) + "x<", at);
    ASSERT_NE(at, std::string::npos) << cell;
  }
}

// Cut anywhere, and with any byte changed: whole records are still shown, broken ones give the status.
TEST(Hostile, RecordsCutAndChanged) {
  const std::string whole =
      FromHtml("<ul><li>a<table border=1><tr><td rowspan=2>b<td>c<tr><td>d</table></ul><h1>e</h1><a href=x>f</a>")
          .Bytes;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const Converted html = ToHtml(whole.substr(0, size));
    EXPECT_TRUE(html.Status == ENG_OK || html.Status == ENG_ERR_RECORD_DAMAGED);
    ToMarkdown(whole.substr(0, size));
  }
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const char byte : {'\0', '\xFF', '\xA3', '\xA4', '\xA5', '\1'}) {
      std::string changed = whole;
      changed[i] = byte;
      ToHtml(changed);
      ToMarkdown(changed);
    }
  }
}

// Others may have put anything into the record of a place.
TEST(Hostile, PlacesOfOthers) {
  const struct {
    std::string Data;
    const char* Out;
    const char* Report;
  } rows[] = {
      {"x", "<p><span id=\"x\"></span>a</p>\n", ""},
      {std::string("x\0y", 3), "<p><span id=\"x\"></span>a</p>\n", ""},
      {"", "<p>a</p>\n", "names of places left out: 1\n"},
      {"\1\2", "<p>a</p>\n", "names of places left out: 1:   \n"},
      {"x\xFF", "<p>a</p>\n", "names of places left out: 1: x\xFF\n"},
      {"\"><script>", "<p><span id=\"&quot;&gt;&lt;script&gt;\"></span>a</p>\n", ""},
  };
  for (const auto& row : rows) {
    conv::RecordOutput output;
    output.Begin();
    output.PutBytes(conv::kSigAnchor, row.Data);
    output.Put(conv::kSigText, ODS_CDTEXT, CDTEXT{{}, conv::kDefaultFont}, "a");
    const Converted html = ToHtml(output.Bytes());
    EXPECT_EQ(html.Bytes, row.Out);
    EXPECT_EQ(html.Report, row.Report);
  }
}

}  // namespace
