#include "qcore/text/tokens.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "engine/text.h"
#include "qcore/text/classes.h"
#include "qcore/text/fold.h"

namespace qcore::text {

namespace {

constexpr std::uint32_t kFoldAll = ENG_COMPARE_IGNORE_CASE | ENG_COMPARE_IGNORE_ACCENTS;

enum class Kind : std::uint8_t { kNone, kWord, kSpaceless };

struct Interval {
  std::int32_t first;
  std::int32_t last;
};

constexpr Interval kSpaceless[] = {
    {0x0E01, 0x0EFF},    // Thai, Lao
    {0x1000, 0x109F},    // Myanmar
    {0x1100, 0x11FF},    // Hangul letters
    {0x1780, 0x17FF},    // Khmer
    {0x3005, 0x3007},    // iteration marks and zero of Han
    {0x3041, 0x30FF},    // kana
    {0x3105, 0x318F},    // bopomofo, Hangul letters
    {0x31A0, 0x31FF},    // the rest of both
    {0x3400, 0x9FFF},    // Han
    {0xAC00, 0xD7FF},    // Hangul
    {0xF900, 0xFAFF},    // Han for compatibility
    {0xFF66, 0xFFDC},    // half-width kana and Hangul
    {0x1B000, 0x1B16F},  // more kana
    {0x20000, 0x3FFFF},  // more Han
};

Kind Classify(std::int32_t code) {
  if (!IsWord(code)) return Kind::kNone;
  if (code < kSpaceless[0].first) return Kind::kWord;
  for (const Interval& interval : kSpaceless) {
    if (code >= interval.first && code <= interval.last) return Kind::kSpaceless;
  }
  return Kind::kWord;
}

std::string FoldToText(std::int32_t code) {
  std::string folded;
  const Folded codes = Fold(code, kFoldAll);
  for (std::uint32_t i = 0; i < codes.count; ++i) Append(codes.codes[i], &folded);
  return folded;
}

// What is known of the characters below kTableSize, which most texts with letters are made of.
constexpr std::int32_t kTableSize = 0x600;
constexpr unsigned char kAscii = 0x80;
struct Entry {
  Kind kind = Kind::kNone;
  std::uint8_t length = 0;
  std::array<char, 6> folded{};
  bool fits = true;
};

const std::array<Entry, kTableSize>& Table() {
  static const std::array<Entry, kTableSize> table = [] {
    std::array<Entry, kTableSize> made;
    for (std::int32_t code = 0; code < kTableSize; ++code) {
      Entry& entry = made[static_cast<std::size_t>(code)];
      entry.kind = Classify(code);
      const std::string folded = FoldToText(code);
      entry.fits = folded.size() <= entry.folded.size();
      if (!entry.fits) continue;
      entry.length = static_cast<std::uint8_t>(folded.size());
      std::memcpy(entry.folded.data(), folded.data(), folded.size());
    }
    return made;
  }();
  return table;
}

// What a word takes of each; none of those that are no word's.
using Ascii = std::array<char, kAscii>;

const Ascii& AsciiWords() {
  static const Ascii words = [] {
    Ascii made{};
    for (std::size_t code = 0; code < made.size(); ++code) {
      const Entry& entry = Table()[code];
      if (entry.kind == Kind::kWord) made[code] = entry.folded[0];
    }
    return made;
  }();
  return words;
}

class Tokenizer {
 public:
  Tokenizer(Text text, TokenUse use, void* context, TokenSink sink)
      : table_(Table()), ascii_(AsciiWords()), text_(text), use_(use), context_(context), sink_(sink) {}

  int Run() {
    int stopped = 0;
    while (stopped == 0 && at_ < text_.size()) {
      const Character character = Decode(text_.data() + at_, text_.size() - at_);
      const Kind kind = KindOf(character.code);
      if (kind == Kind::kWord) {
        stopped = TakeWord();
      } else if (kind == Kind::kSpaceless) {
        stopped = TakeSpaceless();
      } else if (character.code == kStretchEnd && use_ == TokenUse::kDocument) {
        stopped = Give({{&kStretchEnd, 1}, at_, at_ + 1, false});
        ++at_;
      } else {
        at_ += character.length;
      }
    }
    return stopped;
  }

 private:
  Kind KindOf(std::int32_t code) const {
    return code < kTableSize ? table_[static_cast<std::size_t>(code)].kind : Classify(code);
  }

  // A query's last single character is left out unless something follows: the pair before it says it already.
  int Give(const Token& token) {
    if (pending_.empty()) return sink_(context_, token);
    const std::string held = std::move(pending_);
    pending_.clear();
    const int stopped = sink_(context_, {held, pending_start_, pending_start_ + held.size(), false});
    return stopped != 0 ? stopped : sink_(context_, token);
  }

  int TakeWord() {
    const std::size_t start = at_;
    std::size_t length = 0;
    for (;;) {
      length = TakeAscii(length);
      if (at_ == text_.size() || text_[at_] < kAscii) break;
      const Character character = Decode(text_.data() + at_, text_.size() - at_);
      if (character.code < kTableSize) {
        const Entry& entry = table_[static_cast<std::size_t>(character.code)];
        if (entry.kind != Kind::kWord) break;
        if (entry.fits) {
          Add({entry.folded.data(), entry.length}, &length);
          at_ += character.length;
          continue;
        }
      } else if (Classify(character.code) != Kind::kWord) {
        break;
      }
      Add(FoldToText(character.code), &length);
      at_ += character.length;
    }
    // Accents alone are no word.
    return length == 0 ? 0 : Give({{word_.data(), length}, start, at_, false});
  }

  // Up to the first character that is no word's or no ASCII; gives the word's length.
  std::size_t TakeAscii(std::size_t length) {
    const std::uint8_t* const start = text_.data() + at_;
    const std::uint8_t* const end = text_.data() + text_.size();
    char* const to = word_.data() + length;
    const std::size_t room = word_.size() - length;
    std::size_t taken = 0;
    for (const std::uint8_t* next = start;; ++next, ++taken) {
      const char folded = next != end && *next < kAscii ? ascii_[*next] : '\0';
      if (folded == '\0') break;
      if (taken < room) to[taken] = folded;
    }
    at_ += taken;
    return length + std::min(taken, room);
  }

  void Add(std::string_view folded, std::size_t* length) {
    if (*length + folded.size() > word_.size()) return;
    std::memcpy(word_.data() + *length, folded.data(), folded.size());
    *length += folded.size();
  }

  std::string_view Bytes(std::size_t start, std::size_t end) const {
    return {reinterpret_cast<const char*>(text_.data()) + start, end - start};
  }

  int TakeSpaceless() {
    std::size_t first = at_;
    Character character = Decode(text_.data() + at_, text_.size() - at_);
    int stopped = 0;
    for (bool alone = true; stopped == 0; alone = false) {
      const std::size_t second = first + character.length;
      const bool pair = second < text_.size() && NextIsSpaceless(second, &character);
      if (use_ == TokenUse::kDocument) {
        stopped = Give({Bytes(first, second), first, second, false});
        if (pair && stopped == 0) stopped = Give({Bytes(first, second + character.length), first, second, true});
      } else if (pair) {
        stopped = Give({Bytes(first, second + character.length), first, second + character.length, false});
      } else if (alone) {
        stopped = Give({Bytes(first, second), first, second, false});
      } else {
        pending_ = Bytes(first, second);
        pending_start_ = first;
      }
      first = second;
      if (!pair) break;
    }
    at_ = first;
    return stopped;
  }

  bool NextIsSpaceless(std::size_t at, Character* next) const {
    *next = Decode(text_.data() + at, text_.size() - at);
    return next->code >= kSpaceless[0].first && KindOf(next->code) == Kind::kSpaceless;
  }

  const std::array<Entry, kTableSize>& table_;
  const Ascii& ascii_;
  Text text_;
  TokenUse use_;
  void* context_;
  TokenSink sink_;
  std::size_t at_ = 0;
  std::array<char, kLongestToken> word_;
  std::string pending_;
  std::size_t pending_start_ = 0;
};

}  // namespace

int Tokenize(Text text, TokenUse use, void* context, TokenSink sink) {
  return Tokenizer(text, use, context, sink).Run();
}

}  // namespace qcore::text
