#include <algorithm>
#include <unordered_map>
#include <utility>

#include "converters/parts/fonts.h"
#include "converters/parts/records.h"
#include "converters/textconv/textconv.h"
#include "engine/status.h"

namespace textconv {

namespace {

using conv::Loss;
using conv::Record;

class TextWriter {
 public:
  TextWriter(std::FILE* text, conv::Report& report) : Out(text), Losses(report) {}

  void Write(const Record& record) {
    const bool opensCell = OpensCell;
    OpensCell = opensCell && StylesParagraphs(record.Signature);
    switch (record.Signature) {
      case conv::kSigParagraph:
        if (!opensCell) std::putc('\n', Out);
        return EndParagraph();
      case conv::kSigText:
        return Run(record);
      case conv::kSigTableBegin:
        return Losses.Add(Loss::kTable);
      case conv::kSigTableCell:
        return Cell(record.Byte(2));
      case conv::kSigTableEnd:
        if (InTable) std::fputs("\t\n", Out);
        InTable = false;
        return EndParagraph();
      case conv::kSigHotspot:
      case conv::kSigV4Hotspot:
        return Hotspot(record);
      case conv::kSigReference:
        Reference = record.Word(2);
        return;
      case conv::kSigFormulaReference:
        Reference = record.Word(4);
        return;
      case conv::kSigDefinition:
        return Define(record.Read<CDPABDEFINITION>(ODS_CDPABDEFINITION));
      case conv::kSigStyleName:
        return NameStyle(record.Read<CDSTYLENAME>(ODS_CDSTYLENAME));
      case conv::kSigAnchor:
        return Losses.Add(Loss::kAnchor, 0, record.Tail(4));
      case conv::kSigHotspotEnd:
      case conv::kSigHotspotEndOld:
      case conv::kSigHide:
      case conv::kSigTextStyle:
        return;
      default:
        return Losses.Add(Loss::kObject);
    }
  }

 private:
  // Of a paragraph style, what plain text has no signs for.
  struct Style {
    bool IsHidden = false;
    bool IsListed = false;
    bool IsAligned = false;
    std::string Name;
  };

  void Define(const CDPABDEFINITION& definition) {
    Style& style = Styles[definition.PABID];
    style = {};
    style.IsHidden = (definition.Flags & (conv::kHideFlags | conv::kHideFormula)) != 0;
    style.IsListed = (definition.Flags & (conv::kBulletStyle | conv::kNumberStyle)) != 0;
    style.IsAligned = definition.JustifyMode != conv::kJustifyLeft ||
                      definition.FirstLineMargin != definition.LeftMargin ||
                      (!InTable && !style.IsListed && definition.LeftMargin > conv::kPageMargin);
  }
  void NameStyle(const CDSTYLENAME& name) {
    const char* text = reinterpret_cast<const char*>(name.StyleName);
    Styles[name.PABID].Name.assign(text, std::find(text, text + sizeof name.StyleName, '\0'));
  }
  void Run(const Record& record) {
    const std::string_view text = record.Tail(EngOdsLength(ODS_CDTEXT));
    if (text.empty()) return;
    BeginParagraph();
    if (record.Dword(4) != conv::kDefaultFont) Losses.Add(Loss::kAttribute);
    std::string_view rest = text;
    for (std::size_t end; (end = rest.find('\0')) != std::string_view::npos; rest.remove_prefix(end + 1)) {
      std::fwrite(rest.data(), 1, end, Out);
      std::putc('\n', Out);
    }
    std::fwrite(rest.data(), 1, rest.size(), Out);
  }
  // Tells of its style once.
  void BeginParagraph() {
    if (std::exchange(InParagraph, true)) return;
    const auto found = Styles.find(Reference);
    if (found == Styles.end()) return;
    const Style& style = found->second;
    if (style.IsHidden) Losses.Add(Loss::kHidden);
    if (style.IsListed) Losses.Add(Loss::kListSigns);
    if (style.IsAligned) Losses.Add(Loss::kAlignment);
    if (!style.Name.empty()) Losses.Add(Loss::kStyleName, 0, style.Name);
  }
  void EndParagraph() { InParagraph = false; }
  static bool StylesParagraphs(std::uint16_t signature) {
    return signature == conv::kSigDefinition || signature == conv::kSigReference || signature == conv::kSigStyleName ||
           signature == conv::kSigHide || signature == conv::kSigFormulaReference;
  }
  void Cell(std::uint8_t row) {
    if (InTable) std::fputs(row == Row ? "\t" : "\t\n", Out);
    InTable = OpensCell = true;
    Row = row;
    EndParagraph();
  }
  void Hotspot(const Record& record) {
    const auto begin = record.Read<CDHOTSPOTBEGIN>(ODS_CDHOTSPOTBEGIN);
    const std::string_view data = record.Tail(EngOdsLength(ODS_CDHOTSPOTBEGIN));
    const std::string_view name = data.substr(0, data.find('\0'));
    const bool link = begin.Type == conv::kHotspotLink && (begin.Flags & conv::kHotspotUrl) != 0;
    if (!link) return Losses.Add(Loss::kObject, 0, begin.Type == conv::kHotspotAttachment ? name : "");
    if ((begin.Flags & conv::kHotspotContinued) == 0 && !name.empty()) Losses.Add(Loss::kLink, 0, name);
    if ((begin.Flags & conv::kHotspotPicture) != 0) Losses.Add(Loss::kImage);
  }

  std::FILE* Out;
  conv::Report& Losses;
  std::unordered_map<std::uint16_t, Style> Styles;
  std::uint16_t Reference = 0;
  bool InParagraph = false;
  std::uint8_t Row = 0;
  bool InTable = false;
  // No content yet: the paragraph record ahead of it ends nothing.
  bool OpensCell = false;
};

}  // namespace

ENGSTATUS WriteText(std::string_view composite, std::FILE* text, conv::Report& report) {
  conv::RecordInput records(composite);
  TextWriter writer(text, report);
  Record record;
  while (records.Next(&record)) writer.Write(record);
  if (records.IsDamaged()) return ENG_ERR_RECORD_DAMAGED;
  return std::ferror(text) ? ENG_ERR_FILE_WRITE : ENG_OK;
}

}  // namespace textconv
