#include "converters/html/tags.h"

#include <algorithm>
#include <cctype>
#include <span>
#include <vector>

#include "converters/html/css.h"

namespace conv {

namespace {

// The parser looks through all attributes of a tag at each of them.
constexpr unsigned kMostAttributes = 1000;
constexpr std::string_view kMark = "format-";

// Where the value ends that begins there.
std::size_t ValueEnd(std::string_view html, std::size_t at) {
  while (at < html.size() && IsSpace(html[at])) ++at;
  if (at < html.size() && (html[at] == '"' || html[at] == '\'')) {
    const std::size_t end = html.find(html[at], at + 1);
    return end == std::string_view::npos ? html.size() : end + 1;
  }
  while (at < html.size() && !IsSpace(html[at]) && html[at] != '>') ++at;
  return at;
}

// Goes through a tag from its name to its end. *surplus is where the attributes above the limit begin.
std::size_t TagEnd(std::string_view html, std::size_t at, std::size_t* surplus) {
  unsigned attributes = 0;
  bool between = false;
  while (at < html.size() && html[at] != '>') {
    if (html[at] == '=') {
      at = ValueEnd(html, at + 1);
      between = true;
      continue;
    }
    const bool begins = between && !IsSpace(html[at]) && html[at] != '/';
    if (begins && attributes++ == kMostAttributes) *surplus = at;
    between = IsSpace(html[at]) || html[at] == '/';
    ++at;
  }
  return at;
}

bool IsOneOf(std::string_view name, std::span<const std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

bool IsFormat(std::string_view name) {
  constexpr std::string_view kNames[] = {"b", "big", "font", "i", "s", "small", "strike", "tt", "u"};
  return IsOneOf(name, kNames);
}

// A format that is open ahead of it goes on behind it, and its end within is none.
bool IsScope(std::string_view name) {
  constexpr std::string_view kNames[] = {"center", "dl", "ol", "table", "ul"};
  return IsOneOf(name, kNames);
}

// Formats that have begun in the one ahead of it don't reach into it.
bool IsItem(std::string_view name) { return name == "dd" || name == "dt" || name == "li"; }

bool IsTablePart(std::string_view name) {
  constexpr std::string_view kNames[] = {"caption", "tbody", "td", "tfoot", "th", "thead", "tr"};
  return IsOneOf(name, kNames);
}

bool IsBlock(std::string_view name) {
  constexpr std::string_view kNames[] = {"blockquote", "body", "div", "form", "h1",   "h2", "h3",
                                         "h4",         "h5",   "h6",  "hr",   "html", "p",  "pre"};
  return IsScope(name) || IsItem(name) || IsTablePart(name) || IsOneOf(name, kNames);
}

// In lower case; of a long one the begin.
std::string NameAt(std::string_view html, std::size_t at) {
  constexpr std::size_t kLongestName = 12;
  std::size_t size = 0;
  const std::string_view rest = html.substr(at, kLongestName);
  while (size < rest.size() && std::isalnum(static_cast<unsigned char>(rest[size]))) ++size;
  return Lower(rest.substr(0, size));
}

// Whether a block's begin or end comes next, or the text's end.
bool IsAtBlock(std::string_view html, std::size_t at) {
  while (at < html.size() && IsSpace(html[at])) ++at;
  if (at == html.size()) return true;
  if (html[at] != '<') return false;
  return IsBlock(NameAt(html, at + (html.substr(at).starts_with("</") ? 2 : 1)));
}

// Finds the names of formats that hold paragraphs.
class FormatFinder {
 public:
  explicit FormatFinder(std::string_view html) : Html(html) {}

  // The tag's name, and behind its '>'.
  void Take(std::size_t name, std::size_t end) {
    const std::string tag = NameAt(Html, name);
    const bool ends = Html[name - 1] == '/';
    PassBoundary(tag, ends);
    if (IsBlock(tag)) InParagraph = tag == "p" && !ends;
    if (!ends && (tag == "p" || tag == "center")) ++Paragraphs;
    if (!IsFormat(tag)) return;
    if (ends) {
      Close(tag, name, end);
    } else if (Open.size() < kMostOpen) {
      Open.push_back({tag, name, Paragraphs});
    }
  }
  std::vector<std::size_t> Sorted() {
    std::ranges::sort(Places);
    return Places;
  }

 private:
  static constexpr std::size_t kMostOpen = 100;
  struct Format {
    std::string Name;
    std::size_t Place;
    std::size_t Paragraphs;  // and centred parts, that have begun before it
  };

  struct Scope {
    std::string Name;
    std::size_t Formats;  // that are open around it
  };

  std::size_t Floor() const { return Scopes.empty() ? 0 : Scopes.back().Formats; }
  void PassBoundary(const std::string& tag, bool ends) {
    if (IsScope(tag) && !ends) return Scopes.push_back({tag, Open.size()});
    if (tag == "body" || tag == "html") {
      Scopes.clear();
    } else if (IsScope(tag) || IsTablePart(tag)) {
      const std::string_view around = IsScope(tag) ? std::string_view(tag) : "table";
      while (!Scopes.empty() && Scopes.back().Name != around) {
        // Nothing in a table ends what is around it.
        Scopes.back().Name == "table" ? Scopes.clear() : Scopes.pop_back();
      }
    } else if (!IsItem(tag)) {
      return;
    }
    Open.resize(Floor());
    if (IsScope(tag) && !Scopes.empty()) Scopes.pop_back();
  }

  void Close(const std::string& tag, std::size_t name, std::size_t end) {
    const auto last = std::prev(Open.rend(), static_cast<std::ptrdiff_t>(Floor()));
    const auto begin = std::ranges::find(Open.rbegin(), last, tag, &Format::Name);
    if (begin == last) return;
    // An open paragraph that goes on behind the format would end with it.
    const bool whole = !InParagraph || IsAtBlock(Html, end);
    if (begin->Paragraphs != Paragraphs && whole) Places.insert(Places.end(), {begin->Place, name});
    Open.erase(std::next(begin).base());
  }

  std::string_view Html;
  std::vector<Format> Open;
  std::vector<Scope> Scopes;
  std::size_t Paragraphs = 0;
  bool InParagraph = false;
  std::vector<std::size_t> Places;
};

// Calls with the place of each tag's name; gives where to go on.
template <typename Work>
void ForEachTag(std::string_view html, Work work) {
  for (std::size_t at = 0; (at = html.find('<', at)) != std::string_view::npos;) {
    ++at;
    if (at < html.size() && html[at] == '/') ++at;
    if (at < html.size() && std::isalpha(static_cast<unsigned char>(html[at]))) at = work(at);
  }
}

}  // namespace

std::string_view WithoutSurplus(std::string_view html, std::string* kept, unsigned* cut) {
  std::size_t start = 0;
  ForEachTag(html, [&](std::size_t name) {
    std::size_t surplus = 0;
    const std::size_t end = TagEnd(html, name, &surplus);
    if (surplus == 0) return end;
    kept->append(html.substr(start, surplus - start));
    start = end;
    ++*cut;
    return end;
  });
  return start == 0 ? html : kept->append(html.substr(start));
}

std::string_view MarkFormats(std::string_view html, std::string* marked) {
  FormatFinder finder(html);
  ForEachTag(html, [&](std::size_t name) {
    std::size_t surplus = 0;
    const std::size_t end = TagEnd(html, name, &surplus);
    finder.Take(name, std::min(end + 1, html.size()));
    return end;
  });
  std::size_t start = 0;
  for (std::size_t place : finder.Sorted()) {
    marked->append(html.substr(start, place - start)).append(kMark);
    start = place;
  }
  return start == 0 ? html : marked->append(html.substr(start));
}

std::string NameOfMarked(const std::string& name) { return name.starts_with(kMark) ? name.substr(kMark.size()) : name; }

}  // namespace conv
