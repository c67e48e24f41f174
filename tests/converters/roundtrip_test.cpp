// Markdown through a rich text to HTML, held against what libcmark makes of the same text.
#include <cstdio>
#include <cstdlib>

#include "tests/converters/converter_fixture.h"
#include "tests/converters/reference.h"

namespace {

using namespace converter_test;
namespace fs = std::filesystem;

constexpr std::string_view kReplaced = "bytes or characters replaced";

// Text of a file, unpacked where it is packed.
std::string TextOfFile(const fs::path& path) {
  const std::string command = (path.extension() == ".gz" ? "zcat '" : "cat '") + path.string() + "'";
  std::string text;
  FILE* pipe = popen(command.c_str(), "r");
  char bytes[4096];
  for (std::size_t count; (count = fread(bytes, 1, sizeof bytes, pipe)) > 0;) text.append(bytes, count);
  pclose(pipe);
  return text;
}

std::vector<fs::path> MarkdownFiles(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  const auto options = fs::directory_options::skip_permission_denied;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, options, error)) {
    const std::string name = entry.path().filename().string();
    const bool markdown = name.ends_with(".md") || name.ends_with(".md.gz") || name.ends_with(".markdown");
    if (markdown && entry.is_regular_file()) files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

std::string LinesFor(const std::map<std::string, unsigned>& losses) {
  std::string lines;
  for (const auto& [words, count] : losses) lines += words + ": " + std::to_string(count) + "\n";
  return lines;
}

// Without places and details, in the order of the words.
std::map<std::string, unsigned> CountsOf(const std::string& report) {
  std::map<std::string, unsigned> counts;
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(": ");
    counts[line.substr(0, colon)] += static_cast<unsigned>(std::atoi(line.c_str() + colon + 2));
  }
  return counts;
}

class RoundTrip : public ConverterFixture {
 protected:
  // HTML of the file's text by way of a rich text; the reports of both ways.
  std::string Through(const std::string& markdown, std::string* report) {
    Write("in.md", markdown);
    VQRichText text;
    EXPECT_EQ(text.Create(), VQ_OK);
    EXPECT_EQ(Import("in.md", &text, conv::kCommonMarkOnly, report), VQ_OK);
    EXPECT_EQ(Export(text, "out.html", report), VQ_OK);
    return BodyOf(Read("out.html"));
  }
  void ExpectAsCmark(const fs::path& file) {
    SCOPED_TRACE(file);
    const std::string markdown = TextOfFile(file);
    Reference reference = ReferenceOf(markdown);
    std::string report;
    EXPECT_EQ(Through(markdown, &report), reference.Html);
    auto counts = CountsOf(report);
    counts.erase(std::string(kReplaced));
    EXPECT_EQ(LinesFor(counts), LinesFor(reference.Losses)) << "the report lists what is missing, and nothing else";
  }
};

TEST_F(RoundTrip, OwnDocumentsComeOutAsCmarkWritesThem) {
  const auto files = MarkdownFiles(QUILLON_TEST_DATA "/markdown");
  ASSERT_GE(files.size(), 7U);
  for (const fs::path& file : files) ExpectAsCmark(file);
}

TEST_F(RoundTrip, DocumentsOfPackagesComeOutAsCmarkWritesThem) {
  const auto files = MarkdownFiles("/usr/share/doc");
  if (files.empty()) GTEST_SKIP() << "no Markdown files under /usr/share/doc";
  for (const fs::path& file : files) ExpectAsCmark(file);
}

// A table made by a client, with spacing and a border of its own.
TEST_F(RoundTrip, TablesOfClientsComeOut) {
  VQRichText text;
  VQRTCursor cursor;
  VQTable table;
  std::string report;
  ASSERT_EQ(text.Create(), VQ_OK);
  ASSERT_EQ(text.GetCursor(&cursor), VQ_OK);
  ASSERT_EQ(text.CreateTable(1, 2, &cursor, &table), VQ_OK);
  ASSERT_EQ(Export(text, "plain.html", &report), VQ_OK);
  EXPECT_EQ(report, "");
  EXPECT_THAT(Read("plain.html"),
              testing::HasSubstr("<table border=\"1\">\n<tbody>\n<tr>\n<td></td>\n<td></td>\n</tr>"));
  ASSERT_EQ(table.SetColumnSpacing(0.5), VQ_OK);
  ASSERT_EQ(table.SetColumnWidth(0, 2), VQ_OK);
  ASSERT_EQ(Export(text, "spaced.html", &report), VQ_OK);
  EXPECT_EQ(report, "widths and places of tables left out: 1\n");
  EXPECT_THAT(Read("spaced.html"), testing::HasSubstr("<colgroup>\n<col style=\"width:"));
}

// Spaces at the ends of a paragraph mean nothing in either.
std::string WithoutSpacesAtEnds(const std::string& html) {
  std::istringstream lines(html);
  std::string trimmed;
  for (std::string line; std::getline(lines, line);) {
    for (const char* end : {"</p>", "</li>"}) {
      const std::size_t at = line.find(end);
      if (at == std::string::npos) continue;
      const std::size_t last = line.find_last_not_of(' ', at - 1);
      line.erase(last + 1, at - last - 1);
    }
    for (std::size_t at; (at = line.find("<p> ")) != std::string::npos;) line.erase(at + 3, 1);
    trimmed += line + "\n";
  }
  return trimmed;
}

TEST(MarkdownOut, OwnDocumentsReadTheSameWhenWrittenAgain) {
  for (const fs::path& file : MarkdownFiles(QUILLON_TEST_DATA "/markdown")) {
    SCOPED_TRACE(file);
    const std::string records = FromMarkdown(TextOfFile(file), conv::kCommonMarkOnly).Bytes;
    const Converted markdown = ToMarkdown(records);
    ASSERT_EQ(markdown.Status, 0U);
    const std::string again = FromMarkdown(markdown.Bytes).Bytes;
    EXPECT_EQ(WithoutSpacesAtEnds(ToHtml(again).Bytes), WithoutSpacesAtEnds(ToHtml(records).Bytes)) << markdown.Bytes;
  }
}

TEST_F(RoundTrip, PagesPassTidy) {
  if (std::system("command -v tidy >/dev/null") != 0) GTEST_SKIP() << "tidy is not installed";
  for (const fs::path& file : MarkdownFiles(QUILLON_TEST_DATA "/markdown")) {
    SCOPED_TRACE(file);
    std::string report;
    Through(TextOfFile(file), &report);
    const std::string command = "tidy -q -e -utf8 " + Home.Path("out.html") + " 2>" + Home.Path("tidy.txt");
    const int status = std::system(command.c_str());
    EXPECT_LT(WEXITSTATUS(status), 2) << Read("tidy.txt");
  }
}

}  // namespace
