// Any bytes as Markdown: the HTML that comes out is that of libcmark for texts without what a store cannot hold, and
// the Markdown that is written of it reads again.
#include "converters/markdown/markdown.h"

#include "converters/html/writer.h"
#include "fuzz/claim.h"
#include "tests/converters/reference.h"

namespace {

std::string HtmlOf(const std::string& records, conv::Report* report) {
  conv::HtmlWriter writer(nullptr, *report);
  fuzz::Claim(conv::Walker(records, writer, *report).Run() == 0, "what was written is whole");
  writer.Finish();
  return writer.Html();
}

bool HoldsAll(const conv::Report& report) {
  using enum conv::Loss;
  for (conv::Loss loss : {kNesting, kInfo, kInvalidText, kLink, kNestedLink, kStyles}) {
    if (report.Count(loss) > 0) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 20000) return 0;
  const std::uint32_t options = data[0] & 1 ? conv::kCommonMarkOnly : 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  conv::RecordOutput records;
  conv::Report report;
  if (conv::ReadMarkdown(text, records, conv::kDefaultFont, options, report) != 0) return 0;
  const std::string html = HtmlOf(records.Bytes(), &report);
  if (options != 0 && HoldsAll(report)) {
    fuzz::Claim(html == converter_test::ReferenceOf(text).Html, "the HTML is libcmark's");
  }
  std::string markdown;
  fuzz::Claim(conv::WriteMarkdown(records.Bytes(), &markdown, report) == 0, "Markdown can be made of it");
  conv::RecordOutput again;
  fuzz::Claim(conv::ReadMarkdown(markdown, again, conv::kDefaultFont, 0, report) == 0, "and it is read");
  HtmlOf(again.Bytes(), &report);
  return 0;
}
