#include "tools/quillon/styles.h"

#include <algorithm>
#include <string>

#include "tools/quillon/command.h"

namespace tool {

namespace {

constexpr unsigned kLetters = 4;  // that a heading has at least

struct LineStyle {
  VQFontStyle font;
  VQParagraphStyle paragraph;
};

LineStyle MakeStyle(unsigned char face, unsigned short attributes, unsigned long points) {
  LineStyle style;
  style.font.SetFaceID(face);
  style.font.SetAttributes(attributes);
  style.font.SetPointSize(points);
  style.paragraph.SetDefaults();
  style.paragraph.SetUnits(VQUNITS_TWIPS);
  return style;
}

LineStyle TitleStyle() {
  LineStyle style = MakeStyle(VQFACE_HELV, VQFONT_BOLD, 16);
  style.paragraph.SetAlignment(2);
  return style;
}

LineStyle HeadingStyle() {
  LineStyle style = MakeStyle(VQFACE_HELV, VQFONT_BOLD, 12);
  style.paragraph.SetKeepParagraphsTogether(1);
  return style;
}

LineStyle QuoteStyle() {
  LineStyle style = MakeStyle(VQFACE_COURIER, 0, 9);
  style.paragraph.SetLeftMargin(2160);
  return style;
}

bool IsBlank(const std::string& line) { return line.find_first_not_of(" \t\r\n\f") == std::string::npos; }

bool IsQuote(const std::string& line) { return line[0] == '\t' || line.starts_with("    "); }

bool IsHeading(const std::string& line) {
  const auto lower = [](char c) { return c >= 'a' && c <= 'z'; };
  const auto upper = [](char c) { return c >= 'A' && c <= 'Z'; };
  return std::ranges::none_of(line, lower) && std::ranges::count_if(line, upper) >= kLetters;
}

void Apply(VQRichText& body, const VQRTObject& object, const LineStyle& style) {
  VQStylizedText run(object);
  run.SetFontStyle(style.font);
  VQRTCursor cursor;
  run.GetCursor(&cursor);
  body.SetParagraphStyle(cursor, style.paragraph);
}

}  // namespace

void StyleText(VQRichText& body) {
  const LineStyle title = TitleStyle();
  const LineStyle heading = HeadingStyle();
  const LineStyle quote = QuoteStyle();
  bool titled = false;
  VQRTObject object;
  VQSTATUS found = body.FindFirst(VQRTTYPE_STYLIZED_TEXT, &object);
  while (found == VQ_OK) {
    VQString text;
    object.GetText(&text);
    const std::string line = ToText(text);
    if (!IsBlank(line)) {
      const LineStyle* style = !titled ? &title : IsHeading(line) ? &heading : IsQuote(line) ? &quote : nullptr;
      if (style) {
        Apply(body, object, *style);
        titled = true;
      }
    }
    const VQRTObject from = object;
    found = body.FindNext(from, VQRTTYPE_STYLIZED_TEXT, &object);
  }
}

}  // namespace tool
