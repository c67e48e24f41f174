// Text with formats that nest, into a paragraph of a builder.
//
// A run knows its formats, not how they nest. A walker opens those that a run brings in the order of FormatKind, and
// closes down to the first that it lacks; where the source nests otherwise, empty runs lead the way.
#ifndef QUILLON_CONVERTERS_PARTS_INLINES_H
#define QUILLON_CONVERTERS_PARTS_INLINES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "converters/parts/builder.h"
#include "converters/parts/walker.h"

namespace conv {

// What an element changes of the font around it.
struct FontChange {
  FontID Set = 0;    // attributes
  FontID Clear = 0;  // attributes
  std::optional<std::uint8_t> NewFace = {};
  std::optional<std::uint8_t> NewSize = {};
  std::optional<std::uint8_t> NewColor = {};
  bool IsEmpty() const { return Set == 0 && Clear == 0 && !NewFace && !NewSize && !NewColor; }
};

class Inlines {
 public:
  explicit Inlines(Builder& builder) : Out(builder) {}

  // At the begin of a paragraph whose text has that font. Formats that are open go on.
  void Begin(FontID base);
  // Gives a number to close it by. Formats may close in any order.
  unsigned Open(const FontChange& change);
  void Close(unsigned number);
  void CloseAll();
  // Whether an open element has set the attribute.
  bool Has(FontID attribute) const { return (Font() & attribute) != 0; }
  FontID Font() const { return Elements.empty() ? Base : Elements.back().Font; }

  void Text(std::string_view text);
  void LineBreak() { Text(std::string_view("\0", 1)); }
  // A link in a link ends that.
  void BeginLink(std::string_view url, std::string_view title);
  void EndLink();
  bool InLink() const { return IsLinkOpen; }
  void Picture(std::string_view address, std::string_view title, std::string_view text);
  void Anchor(std::string_view name);

 private:
  struct Element {
    unsigned Number;
    FontChange Change;
    FontID Font;  // with all around it
  };
  // A format as the walker will open it.
  struct Opened {
    FormatKind Kind;
    unsigned Number;
    FontID Look;
    bool operator==(const Opened& other) const = default;
  };

  void Recompute();
  std::vector<Opened> Expected() const;
  FontID FontOf(const std::vector<Opened>& formats, std::size_t count) const;
  void Match(bool textFollows);

  Builder& Out;
  FontID Base = kDefaultFont;
  unsigned Numbers = 0;
  std::vector<Element> Elements;
  std::vector<Opened> Shown;  // as the walker has them open
  bool IsMatched = true;
  bool IsLinkOpen = false;
  std::size_t ShownAtLink = 0;
  std::string Url, Title;
};

}  // namespace conv

#endif
