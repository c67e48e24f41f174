// What a full-text index is asked: a tree of words and phrases.
#ifndef QUILLON_QCORE_STORE_TEXTQUERY_H
#define QUILLON_QCORE_STORE_TEXTQUERY_H

#include <cstdint>
#include <string>
#include <vector>

namespace qcore {

struct TextQuery {
  enum class Kind {
    kPhrase,  // `text`, of one word or several
    kAnd,
    kOr,
    kNot,   // the first part without the second
    kNear,  // phrases with at most `distance` words between them
    kField  // the one part, within items of the name `text`
  };
  Kind kind = Kind::kPhrase;
  std::string text;
  bool exact = false;   // as it was written: no other forms of the word
  bool prefix = false;  // the phrase's last word is the start of one
  std::uint32_t distance = 0;
  std::vector<TextQuery> parts;
};

}  // namespace qcore

#endif
