#include "converters/parts/inlines.h"

#include <algorithm>

namespace conv {

namespace {

constexpr std::pair<FontID, FormatKind> kBits[] = {
    {kItalic, FormatKind::kEmphasis},         {kBold, FormatKind::kStrong},
    {kUnderline, FormatKind::kUnderline},     {kStrikeout, FormatKind::kStrikeout},
    {kSuperscript, FormatKind::kSuperscript}, {kSubscript, FormatKind::kSubscript},
};

FontID Apply(const FontChange& change, FontID font) {
  // Raised and lowered text exclude each other.
  if (change.Set & (kSuperscript | kSubscript)) font &= ~(kSuperscript | kSubscript);
  font = (font | change.Set) & ~change.Clear;
  if (change.NewFace) font = WithFace(font, *change.NewFace);
  if (change.NewSize) font = WithSize(font, *change.NewSize);
  if (change.NewColor) font = WithColor(font, *change.NewColor);
  return font;
}

}  // namespace

void Inlines::Begin(FontID base) {
  Base = base;
  Shown.clear();
  IsLinkOpen = false;
  IsMatched = false;
  Recompute();
}

void Inlines::Recompute() {
  FontID font = Base;
  for (Element& element : Elements) element.Font = font = Apply(element.Change, font);
}

unsigned Inlines::Open(const FontChange& change) {
  const FontID font = Apply(change, Font());
  // One that changes nothing has nothing to take back, and there may be any number of them.
  if (font == Font()) return ++Numbers;
  Elements.push_back({++Numbers, change, font});
  IsMatched = false;
  return Numbers;
}

void Inlines::Close(unsigned number) {
  std::erase_if(Elements, [&](const Element& element) { return element.Number == number; });
  Recompute();
  IsMatched = false;
}

void Inlines::CloseAll() {
  Elements.clear();
  IsMatched = false;
}

std::vector<Inlines::Opened> Inlines::Expected() const {
  std::vector<Opened> formats;
  const auto has = [&](FormatKind kind) {
    return std::ranges::any_of(formats, [&](const Opened& format) { return format.Kind == kind; });
  };
  FontID before = Base;
  for (const Element& element : Elements) {
    for (const auto& row : kBits) {
      const FontID bit = row.first & ~Base;
      if (!(element.Font & bit)) std::erase_if(formats, [&](const Opened& f) { return f.Kind == row.second; });
      if ((element.Font & bit) && !has(row.second)) formats.push_back({row.second, element.Number, 0});
    }
    const bool code = FaceOf(element.Font) == kMono && FaceOf(Base) != kMono;
    if (code && !has(FormatKind::kCode)) formats.push_back({FormatKind::kCode, element.Number, 0});
    if (!code) std::erase_if(formats, [](const Opened& f) { return f.Kind == FormatKind::kCode; });
    FontID look = element.Font & ~kAttributes;
    if (code) look = WithFace(look, FaceOf(Base));
    if (look != before) {
      std::erase_if(formats, [](const Opened& f) { return f.Kind == FormatKind::kFont; });
      if (look != (Base & ~kAttributes)) formats.push_back({FormatKind::kFont, element.Number, look});
    }
    before = look;
  }
  return formats;
}

FontID Inlines::FontOf(const std::vector<Opened>& formats, std::size_t count) const {
  FontID font = Base;
  for (std::size_t i = 0; i < count; ++i) {
    for (const auto& [bit, kind] : kBits) {
      if (kind == formats[i].Kind) font |= bit;
    }
    if (formats[i].Kind == FormatKind::kFont) {
      const std::uint8_t face = FaceOf(font) == kMono ? std::uint8_t{kMono} : FaceOf(formats[i].Look);
      font = WithFace(formats[i].Look | (font & kAttributes), face);
    }
    if (formats[i].Kind == FormatKind::kCode) font = WithFace(font, kMono);
  }
  return font;
}

// Empty runs, until the walker will have the formats open in the order of the elements.
void Inlines::Match(bool textFollows) {
  if (IsMatched) return;
  IsMatched = true;
  std::vector<Opened> expected = Expected();
  if (expected == Shown) return;
  const std::size_t same = static_cast<std::size_t>(std::ranges::mismatch(Shown, expected).in1 - Shown.begin());
  const auto rest = expected.begin() + static_cast<std::ptrdiff_t>(same);
  const bool reopened = same < Shown.size() && std::any_of(rest, expected.end(), [&](const Opened& format) {
                          return format.Kind == Shown[same].Kind && format.Look == Shown[same].Look;
                        });
  if (reopened) Out.Mark(FontOf(expected, same));
  std::size_t done = same;
  const auto sorted = [&] {
    return std::is_sorted(expected.begin() + static_cast<std::ptrdiff_t>(done), expected.end(),
                          [](const Opened& a, const Opened& b) { return a.Kind < b.Kind; });
  };
  while (!sorted()) Out.Mark(FontOf(expected, ++done));
  if (!textFollows) Out.Mark(FontOf(expected, expected.size()));
  Shown = std::move(expected);
}

void Inlines::Text(std::string_view text) {
  if (text.empty()) return;
  Match(true);
  Out.Text(text, Font());
}

void Inlines::BeginLink(std::string_view url, std::string_view title) {
  EndLink();
  Match(false);
  Url = url;
  Title = title;
  Out.BeginLink({.Url = Url, .Title = Title});
  IsLinkOpen = true;
  ShownAtLink = Shown.size();
}

void Inlines::EndLink() {
  if (!IsLinkOpen) return;
  Out.EndLink();
  IsLinkOpen = false;
  if (Shown.size() > ShownAtLink) Shown.resize(ShownAtLink);
  IsMatched = false;
}

void Inlines::Anchor(std::string_view name) {
  Match(false);
  Out.Anchor(name);
}

void Inlines::Picture(std::string_view address, std::string_view title, std::string_view text) {
  Match(false);
  Link link{.Picture = address, .PictureTitle = title, .IsPicture = true};
  if (IsLinkOpen) {
    Out.EndLink();
    link.Url = Url;
    link.Title = Title;
    link.IsContinued = true;
  }
  Out.BeginLink(link);
  Out.Text(text, Font());
  Out.EndLink();
  if (IsLinkOpen) Out.BeginLink({.Url = Url, .Title = Title, .IsContinued = true});
}

}  // namespace conv
