#include "tools/quillon/formats.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "tools/quillon/command.h"

namespace tool {

namespace {

constexpr std::pair<const char*, Format> kEndings[] = {
    {".md", Format::kMarkdown}, {".markdown", Format::kMarkdown}, {".mkd", Format::kMarkdown},
    {".html", Format::kHtml},   {".htm", Format::kHtml},          {".xhtml", Format::kHtml},
};

}  // namespace

Format FormatOfFile(const std::string& file) {
  std::string ending = std::filesystem::path(file).extension().string();
  std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto* row = std::ranges::find(kEndings, ending, [](const auto& each) { return std::string(each.first); });
  return row == std::end(kEndings) ? Format::kText : row->second;
}

Format FormatOfName(const std::string& name) {
  if (name == "markdown") return Format::kMarkdown;
  return name == "html" ? Format::kHtml : Format::kText;
}

const char* ConverterOf(Format format) {
  if (format == Format::kMarkdown) return "mdconv";
  return format == Format::kHtml ? "htmlconv" : kTextConverter;
}

std::vector<std::string> LinesOf(const VQText& report) {
  std::vector<std::string> lines;
  for (unsigned long i = 0; i < report.GetCount(); ++i) lines.push_back(ToText(report[i]));
  return lines;
}

}  // namespace tool
