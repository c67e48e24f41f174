#include "qcore/formula/personname.h"

namespace qcore::formula {

namespace {

std::string Upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
  }
  return upper;
}

std::vector<std::string_view> Split(std::string_view name) {
  std::vector<std::string_view> parts;
  for (std::size_t slash = 0; slash != name.npos;) {
    slash = name.find('/');
    parts.push_back(name.substr(0, slash));
    if (slash != name.npos) name.remove_prefix(slash + 1);
  }
  return parts;
}

std::string LabelByPlace(const std::vector<std::string_view>& parts, std::size_t place) {
  if (place == 0) return "CN";
  const bool country = parts.size() > 2 && parts.back().size() == 2;
  const std::size_t organisation = parts.size() - (country ? 2 : 1);
  if (place > organisation) return "C";
  return place == organisation ? "O" : "OU";
}

std::string Joined(const std::vector<NamePart>& parts, bool labels) {
  std::string joined;
  for (const NamePart& part : parts) {
    if (&part != &parts.front()) joined += '/';
    if (labels) joined += part.label + '=';
    joined += part.text;
  }
  return joined;
}

// The organisational unit of that number, 1 for the last one.
std::string_view UnitOf(const std::vector<NamePart>& parts, int number) {
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    if (part->label == "OU" && --number == 0) return part->text;
  }
  return {};
}

// From the top down with backslashes, without the CN.
std::string AsCategories(const std::vector<NamePart>& parts) {
  std::string text;
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    if (part->label == "CN") continue;
    if (!text.empty()) text += '\\';
    text += part->text;
  }
  return text;
}

}  // namespace

std::vector<NamePart> ReadName(std::string_view name) {
  const std::vector<std::string_view> texts = Split(name);
  std::vector<NamePart> parts;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::size_t equals = texts[i].find('=');
    if (equals == texts[i].npos) {
      parts.push_back({LabelByPlace(texts, i), texts[i]});
    } else {
      parts.push_back({Upper(texts[i].substr(0, equals)), texts[i].substr(equals + 1)});
    }
  }
  return parts;
}

std::string NameAs(std::string_view name, std::string_view keyword) {
  std::vector<NamePart> parts = ReadName(name);
  if (keyword == "ABBREVIATE") return Joined(parts, false);
  if (keyword == "CANONICALIZE") return parts.size() == 1 ? std::string(name) : Joined(parts, true);
  if (keyword == "TOKEYWORD") return AsCategories(parts);
  if (keyword == "HIERARCHYONLY") {
    if (parts.front().label == "CN") parts.erase(parts.begin());
    return parts.empty() ? std::string() : Joined(parts, false);
  }
  if (keyword.size() == 3 && keyword.starts_with("OU")) return std::string(UnitOf(parts, keyword[2] - '0'));
  for (const NamePart& part : parts) {
    if (part.label == keyword) return std::string(part.text);
  }
  return {};
}

}  // namespace qcore::formula
