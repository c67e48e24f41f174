// Any bytes as HTML: records that a walker shows as HTML and as Markdown, or a status.
#include "converters/html/reader.h"
#include "converters/html/writer.h"
#include "converters/markdown/markdown.h"
#include "fuzz/claim.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 20000) return 0;
  conv::RecordOutput records;
  conv::Report report;
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  if (conv::ReadHtml(html, records, conv::kDefaultFont, report) != 0) return 0;
  conv::HtmlWriter writer(nullptr, report);
  fuzz::Claim(conv::Walker(records.Bytes(), writer, report).Run() == 0, "what was written is whole");
  fuzz::Claim(writer.Finish(), "memory takes it");
  std::string markdown;
  fuzz::Claim(conv::WriteMarkdown(records.Bytes(), &markdown, report) == 0, "and Markdown can be made of it");
  report.Text();
  return 0;
}
