// Markdown into a rich text and out of it as HTML, beside libcmark.
#include <benchmark/benchmark.h>
#include <cmark.h>

#include <fstream>
#include <memory>
#include <sstream>

#include "bench/support.h"

namespace {

using bench::Home;

constexpr std::size_t kBytes = 10 << 20;

// Headings, paragraphs with emphasis, code and links, lists, quotes and code blocks, as manuals have them.
const std::string& Markdown() {
  static const std::string text = [] {
    std::istringstream lines(bench::Lines(kBytes));
    std::string all, line;
    for (unsigned number = 0; all.size() < kBytes && std::getline(lines, line); ++number) {
      switch (number % 16) {
        case 0:
          all += "\n## " + line.substr(0, 40) + "\n\n";
          break;
        case 5:
          all += "with *some emphasis*, **more of it**, `code` and [a link](http://example.com/" +
                 std::to_string(number) + " \"title\")\n";
          break;
        case 8:
        case 9:
          all += "\n- " + line + "\n  " + line.substr(0, 50) + "\n";
          break;
        case 11:
          all += "\n> " + line + "\n\n";
          break;
        case 13:
          all += "\n    " + line + "\n    " + line + "\n\n";
          break;
        default:
          all += line + "\n";
      }
    }
    return all;
  }();
  return text;
}

const std::string& File() {
  static const std::string path = [] {
    const std::string name = Home::Get().Path("convert.md");
    std::ofstream(name, std::ios::binary) << Markdown();
    return name;
  }();
  return path;
}

void Fill(VQRichText* text) {
  const VQString file(File().c_str());
  VQRTCursor cursor;
  text->GetEndCursor(&cursor);
  text->Import(file, "mdconv", &cursor);
}

void SetBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Markdown().size()));
}

void ImportMarkdown(benchmark::State& state) {
  File();
  for (auto _ : state) {
    VQRichText text;
    text.Create();
    Fill(&text);
    benchmark::DoNotOptimize(text.GetSize());
  }
  SetBytes(state);
}

void MarkdownByCmark(benchmark::State& state) {
  const std::string& text = Markdown();
  for (auto _ : state) {
    char* html = cmark_markdown_to_html(text.data(), text.size(), CMARK_OPT_VALIDATE_UTF8);
    benchmark::DoNotOptimize(html);
    std::free(html);
  }
  SetBytes(state);
}

// Of a document that is stored.
void ExportHtml(benchmark::State& state) {
  static VQDatabase database = Home::Get().Create("convert.vlt");  // runs are repeated
  VQDocument document;
  database.CreateDocument(&document);
  VQRichText text;
  document.CreateItem("Body", &text);
  Fill(&text);
  document.Save();
  text = VQRichText();
  document.RefreshObjectFromSlateHandle();
  document.GetItem("Body", &text);
  VQRTCursor start, end;
  text.GetCursor(&start);
  text.GetEndCursor(&end);
  const VQString file(Home::Get().Path("convert.html").c_str());
  for (auto _ : state) text.Export(file, "htmlconv", start, end);
  SetBytes(state);
}

void HtmlByCmark(benchmark::State& state) {
  const std::string& text = Markdown();
  const std::unique_ptr<cmark_node, void (*)(cmark_node*)> tree(
      cmark_parse_document(text.data(), text.size(), CMARK_OPT_VALIDATE_UTF8), cmark_node_free);
  for (auto _ : state) {
    char* html = cmark_render_html(tree.get(), CMARK_OPT_DEFAULT);
    benchmark::DoNotOptimize(html);
    std::free(html);
  }
  SetBytes(state);
}

BENCHMARK(ImportMarkdown)->Unit(benchmark::kMillisecond);
BENCHMARK(MarkdownByCmark)->Unit(benchmark::kMillisecond);
BENCHMARK(ExportHtml)->Unit(benchmark::kMillisecond);
BENCHMARK(HtmlByCmark)->Unit(benchmark::kMillisecond);

}  // namespace
