// Any bytes as the records of an export: HTML and Markdown of them, or a status.
#include "converters/html/writer.h"
#include "converters/markdown/markdown.h"
#include "fuzz/claim.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 20000) return 0;
  const std::string_view records(reinterpret_cast<const char*>(data), size);
  conv::Report report;
  conv::HtmlWriter writer(nullptr, report);
  const ENGSTATUS html = conv::Walker(records, writer, report).Run();
  std::string markdown;
  const ENGSTATUS text = conv::WriteMarkdown(records, &markdown, report);
  fuzz::Claim(html == text, "both ways out judge the records alike");
  return 0;
}
