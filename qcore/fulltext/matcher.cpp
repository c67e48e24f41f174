#include "qcore/fulltext/matcher.h"

#include <algorithm>

#include "qcore/store/names.h"

namespace qcore {

Matcher::Matcher(const TextQuery& query) : query_(query) { TakePhrases(query); }

void Matcher::TakePhrases(const TextQuery& query) {
  for (const TextQuery& part : query.parts) TakePhrases(part);
  if (query.kind != TextQuery::Kind::kPhrase) return;
  std::vector<std::string> words;
  text::Tokenize(text::AsText(query.text), text::TokenUse::kQuery, &words, [](void* to, const text::Token& token) {
    static_cast<std::vector<std::string>*>(to)->emplace_back(token.text);
    return 0;
  });
  Phrase& phrase = phrases_[&query];
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (query.prefix && i + 1 == words.size()) {
      prefixes_.push_back(terms_.size());
      phrase.push_back(terms_.size());
      terms_.push_back({words[i], true, {}});
      continue;
    }
    const auto [known, is_new] = exact_.try_emplace(words[i], terms_.size());
    if (is_new) terms_.push_back({words[i], false, {}});
    phrase.push_back(known->second);
  }
}

void Matcher::Clear() {
  for (Term& term : terms_) term.places.clear();
  stretches_.clear();
  place_ = 0;
}

void Matcher::Place(std::string_view token) {
  const auto found = exact_.find(token);
  if (found != exact_.end()) terms_[found->second].places.push_back(place_);
  for (std::size_t prefix : prefixes_) {
    Term& term = terms_[prefix];
    const bool again = !term.places.empty() && term.places.back() == place_;
    if (!again && token.starts_with(term.text)) term.places.push_back(place_);
  }
}

// Places start at 1, with one left free between stretches.
void Matcher::Add(std::string_view item, std::string_view text) {
  const std::uint32_t begin = ++place_;
  text::Tokenize(text::AsText(text), text::TokenUse::kDocument, this, [](void* to, const text::Token& token) {
    Matcher& matcher = *static_cast<Matcher*>(to);
    if (!token.same_place) ++matcher.place_;
    matcher.Place(token.text);
    return 0;
  });
  stretches_.push_back({std::string(item), begin, place_});
}

bool Matcher::IsIn(std::uint32_t place, std::string_view item) const {
  if (item.empty()) return true;
  const auto behind = std::ranges::upper_bound(stretches_, place, {}, &Stretch::begin);
  return behind != stretches_.begin() && SameName((behind - 1)->item, item);
}

std::vector<Matcher::Occurrence> Matcher::Find(const TextQuery& query, std::string_view item) const {
  const Phrase& phrase = phrases_.at(&query);
  std::vector<Occurrence> found;
  if (phrase.empty()) return found;
  for (std::uint32_t place : terms_[phrase.front()].places) {
    bool whole = IsIn(place, item);
    for (std::size_t i = 1; whole && i < phrase.size(); ++i) {
      const std::vector<std::uint32_t>& places = terms_[phrase[i]].places;
      whole = std::binary_search(places.begin(), places.end(), place + static_cast<std::uint32_t>(i));
    }
    if (whole) found.push_back({place, place + static_cast<std::uint32_t>(phrase.size())});
  }
  return found;
}

bool Matcher::HoldsNear(const TextQuery& query, std::string_view item) const {
  std::vector<std::vector<Occurrence>> all;
  for (const TextQuery& part : query.parts) all.push_back(Find(part, item));
  // Every occurrence in turn as the first one, with the next of each other phrase behind it.
  for (const std::vector<Occurrence>& firsts : all) {
    for (const Occurrence& first : firsts) {
      std::uint32_t last = first.begin;
      bool has_all = true;
      for (const std::vector<Occurrence>& others : all) {
        const auto next = std::ranges::lower_bound(others, first.begin, {}, &Occurrence::begin);
        has_all = has_all && next != others.end();
        if (has_all) last = std::max(last, next->begin);
      }
      if (has_all && last <= first.end + query.distance) return true;
    }
  }
  return false;
}

bool Matcher::Holds(const TextQuery& query, std::string_view item) const {
  const auto holds = [&](const TextQuery& part) { return Holds(part, item); };
  switch (query.kind) {
    case TextQuery::Kind::kPhrase:
      return !Find(query, item).empty();
    case TextQuery::Kind::kAnd:
      return std::ranges::all_of(query.parts, holds);
    case TextQuery::Kind::kOr:
      return std::ranges::any_of(query.parts, holds);
    case TextQuery::Kind::kNot:
      return holds(query.parts[0]) && !holds(query.parts[1]);
    case TextQuery::Kind::kNear:
      return HoldsNear(query, item);
    case TextQuery::Kind::kField:
      return Holds(query.parts[0], query.text);
  }
  return false;
}

}  // namespace qcore
