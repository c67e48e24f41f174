// The converters by themselves, on texts in memory; and a session that imports and exports files through them.
#ifndef QUILLON_TESTS_CONVERTERS_CONVERTER_FIXTURE_H
#define QUILLON_TESTS_CONVERTERS_CONVERTER_FIXTURE_H

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "converters/html/reader.h"
#include "converters/html/writer.h"
#include "converters/markdown/markdown.h"
#include "tests/vq/support/engine_fixture.h"
#include "vq/vq.h"

namespace converter_test {

struct Converted {
  ENGSTATUS Status = 0;
  std::string Bytes;
  std::string Report;
};

inline Converted FromMarkdown(std::string_view text, std::uint32_t options = 0) {
  conv::RecordOutput output;
  conv::Report report;
  const ENGSTATUS status = conv::ReadMarkdown(text, output, conv::kDefaultFont, options, report);
  return {status, output.Bytes(), report.Text()};
}

inline Converted FromHtml(std::string_view html) {
  conv::RecordOutput output;
  conv::Report report;
  const ENGSTATUS status = conv::ReadHtml(html, output, conv::kDefaultFont, report);
  return {status, output.Bytes(), report.Text()};
}

inline Converted ToHtml(const std::string& records) {
  conv::Report report;
  conv::HtmlWriter writer(nullptr, report);
  const ENGSTATUS status = conv::Walker(records, writer, report).Run();
  writer.Finish();
  return {status, writer.Html(), report.Text()};
}

inline Converted ToMarkdown(const std::string& records) {
  Converted converted;
  conv::Report report;
  converted.Status = conv::WriteMarkdown(records, &converted.Bytes, report);
  converted.Report = report.Text();
  return converted;
}

// Through files and a rich text, as a client converts.
class ConverterFixture : public vqtest::HomeFixture {
 protected:
  void SetUp() override {
    WriteSettings("ConverterPath=" QUILLON_CONVERTERS
                  "\nEDITIMP1=M,0,mdconv,,MD\nEDITIMP2=H,0,htmlconv,,HTML\n"
                  "EDITEXP1=M,0,mdconv,,MD\nEDITEXP2=H,0,htmlconv,,HTML\n");
    ASSERT_EQ(Session.Init(), VQ_OK);
  }
  void TearDown() override { EXPECT_EQ(Session.Term(1), VQ_OK); }

  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Home.Path(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(Home.Path(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  // Both append to the report.
  VQSTATUS Import(const std::string& name, VQRichText* text, unsigned long options, std::string* report) const {
    VQRTCursor cursor;
    VQText lines;
    if (VQSTATUS status = text->GetEndCursor(&cursor)) return status;
    const VQSTATUS status = text->Import(Home.Path(name).c_str(), &cursor, options, &lines);
    *report += Joined(lines);
    return status;
  }
  VQSTATUS Export(VQRichText& text, const std::string& name, std::string* report) const {
    VQRTCursor start, end;
    VQText lines;
    if (VQSTATUS status = text.GetCursor(&start)) return status;
    if (VQSTATUS status = text.GetEndCursor(&end)) return status;
    const VQSTATUS status = text.Export(Home.Path(name).c_str(), start, end, 0, &lines);
    *report += Joined(lines);
    return status;
  }
  // What stands in the body of a page.
  static std::string BodyOf(const std::string& page) {
    constexpr std::string_view kBegin = "<body>\n";
    const std::size_t begin = page.find(kBegin);
    const std::size_t end = page.rfind("</body>");
    return begin == std::string::npos ? "no body" : page.substr(begin + kBegin.size(), end - begin - kBegin.size());
  }
  static std::string Joined(const VQText& lines) {
    std::string joined;
    for (unsigned long i = 0; i < lines.GetCount(); ++i) joined += vqtest::TextOf(VQString(lines[i])) + "\n";
    return joined;
  }

  VQQuillonSession Session;
};

}  // namespace converter_test

#endif
