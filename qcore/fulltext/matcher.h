// Holds one document at a time against a query, for what an index over whole documents cannot say: fields.
#ifndef QUILLON_QCORE_FULLTEXT_MATCHER_H
#define QUILLON_QCORE_FULLTEXT_MATCHER_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/store/textquery.h"
#include "qcore/text/tokens.h"

namespace qcore {

class Matcher {
 public:
  // The query must outlive it.
  explicit Matcher(const TextQuery& query);

  // Forgets the document before.
  void Clear();
  void Add(std::string_view item, std::string_view text);
  bool Matches() const { return Holds(query_, {}); }

 private:
  struct Term {
    std::string text;
    bool prefix;
    std::vector<std::uint32_t> places;
  };
  struct Stretch {
    std::string item;
    std::uint32_t begin;
    std::uint32_t end;
  };
  struct Occurrence {
    std::uint32_t begin;
    std::uint32_t end;
  };
  using Phrase = std::vector<std::size_t>;  // terms by number

  void TakePhrases(const TextQuery& query);
  void Place(std::string_view token);
  // `item` empty: anywhere.
  bool Holds(const TextQuery& query, std::string_view item) const;
  bool HoldsNear(const TextQuery& query, std::string_view item) const;
  std::vector<Occurrence> Find(const TextQuery& query, std::string_view item) const;
  bool IsIn(std::uint32_t place, std::string_view item) const;

  const TextQuery& query_;
  std::vector<Term> terms_;
  std::map<std::string, std::size_t, std::less<>> exact_;
  std::vector<std::size_t> prefixes_;
  std::map<const TextQuery*, Phrase> phrases_;
  std::vector<Stretch> stretches_;
  std::uint32_t place_ = 0;
};

}  // namespace qcore

#endif
