// Writes what a walker tells as HTML.
#ifndef QUILLON_CONVERTERS_HTML_WRITER_H
#define QUILLON_CONVERTERS_HTML_WRITER_H

#include <cstdio>
#include <string>

#include "converters/parts/walker.h"

namespace conv {

// Whether a page may lead there: addresses that run code or read local files are not safe.
bool IsSafeAddress(std::string_view address);

class HtmlWriter : public Sink {
 public:
  // Into a file, or into memory when that is null.
  HtmlWriter(std::FILE* file, Report& report) : Out(file), Losses(report) {}

  // Ahead of the walk: a whole page of that title, instead of the blocks alone.
  void BeginPage(std::string_view title);
  // Line ends of texts as references: for HTML within Markdown, which an empty line would end.
  void KeepLinesTogether() { LinesTogether = true; }
  // False when anything could not be written.
  bool Finish();
  const std::string& Html() const { return Buffer; }
  void Clear() { Buffer.clear(); }

  void SetBase(FontID font) override;
  void Open(const BlockInfo& block) override;
  void Close(const BlockInfo& block) override;
  void OpenFormat(const Format& format) override;
  void CloseFormat(const Format& format) override;
  void Text(std::string_view text) override;
  void LineBreak() override;
  void Picture(std::string_view address, std::string_view title, std::string_view text) override;
  void Anchor(std::string_view name) override;

 private:
  enum Sections { kNone, kHead, kBody };

  void Put(std::string_view html) { Buffer.append(html); }
  void FreshLine();
  void Escape(std::string_view text);
  std::size_t Special(std::string_view rest);
  void EscapeAddress(std::string_view address);
  void Attribute(std::string_view name, std::string_view value);
  void OpenText(const BlockInfo& block, std::string_view tag);
  void OpenTable(const BlockInfo& block);
  void OpenRow(const BlockInfo& block);
  void OpenCell(const BlockInfo& block);
  void CloseTable();
  void Style(const std::string& css);
  void Flush(std::size_t limit);

  std::FILE* Out;
  Report& Losses;
  std::string Buffer;
  bool Broken = false;
  bool IsPage = false;
  bool LinesTogether = false;
  bool IsBareText = false;   // the open text has no tag
  bool WasBareText = false;  // and the last one had none
  bool HasCode = false;      // the open code block has something else than line ends
  bool IsCode = false;
  const CDTABLECELL* Usual = nullptr;
  bool HasSections = false;
  bool HasBorder = false;
  Sections Section = kNone;
};

}  // namespace conv

#endif
