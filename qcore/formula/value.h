// Values while a formula runs: lists of texts, numbers or times, with at least one entry, or an error.
//
// A value of one entry holds it; more stand in the arena, in the program's constants, or in the source's item, whose
// bytes texts point into. Values are copied freely and own nothing.
#ifndef QUILLON_QCORE_FORMULA_VALUE_H
#define QUILLON_QCORE_FORMULA_VALUE_H

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::formula {

enum class Type : std::uint32_t { kText, kNumber, kTime, kError, kRemoval };

struct TextRef {
  const char* data = "";
  std::size_t size = 0;

  std::string_view view() const { return {data, size}; }
};

// Whether short texts are the same, without a call; the first bytes and the last may overlap.
inline bool SameBytes(const char* left, const char* right, std::size_t size) {
  const auto differs = [=]<typename Word>(Word, std::size_t at) {
    Word a;
    Word b;
    std::memcpy(&a, left + at, sizeof a);
    std::memcpy(&b, right + at, sizeof b);
    return a != b;
  };
  if (size > 16) return std::memcmp(left, right, size) == 0;
  if (size >= 8) return !differs(std::uint64_t{}, 0) && !differs(std::uint64_t{}, size - 8);
  if (size >= 4) return !differs(std::uint32_t{}, 0) && !differs(std::uint32_t{}, size - 4);
  for (std::size_t i = 0; i < size; ++i) {
    if (left[i] != right[i]) return false;
  }
  return true;
}
inline bool SameText(const TextRef& left, const TextRef& right) {
  return left.size == right.size && SameBytes(left.data, right.data, left.size);
}
// Copies as SameBytes compares, and gives what lies behind.
inline char* PutBytes(char* target, const char* source, std::size_t size) {
  const auto move = [=]<typename Word>(Word word, std::size_t at) {
    std::memcpy(&word, source + at, sizeof word);
    std::memcpy(target + at, &word, sizeof word);
  };
  if (size > 16) {
    std::memcpy(target, source, size);
  } else if (size >= 8) {
    move(std::uint64_t{}, 0);
    move(std::uint64_t{}, size - 8);
  } else if (size >= 4) {
    move(std::uint32_t{}, 0);
    move(std::uint32_t{}, size - 4);
  } else {
    for (std::size_t i = 0; i < size; ++i) target[i] = source[i];
  }
  return target + size;
}

// A time, or a range of times when `upper` is no wild card in both halves.
struct Moment {
  TIMEDATE lower;
  TIMEDATE upper;

  bool is_range() const { return upper.DateWord != ENG_TIME_WILD || upper.TimeWord != ENG_TIME_WILD; }
};

struct Value {
  Type type = Type::kText;
  std::uint32_t count = 1;
  union {
    TextRef text;
    double number;
    Moment moment;
    ENGSTATUS error;
    const TextRef* text_list;
    const double* number_list;
    const Moment* moment_list;
    std::uint64_t words[2];
  };

  Value() : text() {}
  // Member by member, in the widths in which they are written: a wider read would wait for the writes.
  Value(const Value& other) : type(other.type), count(other.count), words{other.words[0], other.words[1]} {}
  Value& operator=(const Value& other) {
    type = other.type;
    count = other.count;
    words[0] = other.words[0];
    words[1] = other.words[1];
    return *this;
  }
  static Value Number(double number) {
    Value value(Type::kNumber);
    value.number = number;
    return value;
  }
  static Value Truth(bool truth) { return Number(truth ? 1 : 0); }
  static Value Text(const char* data, std::size_t size) {
    Value value;
    value.text = {data, size};
    return value;
  }
  // For texts that outlive the evaluation.
  static Value Text(std::string_view text) { return Text(text.data(), text.size()); }
  static Value Time(const TIMEDATE& moment) { return Range({moment, {ENG_TIME_WILD, ENG_TIME_WILD}}); }
  static Value Range(const Moment& moment) {
    Value value(Type::kTime);
    value.moment = moment;
    return value;
  }
  static Value Error(ENGSTATUS status) {
    Value value(Type::kError);
    value.error = status;
    return value;
  }
  static Value Removal() { return Value(Type::kRemoval); }
  // Of `count` entries, 1 at least, which stay where they are.
  static Value Texts(const TextRef* texts, std::uint32_t count) {
    if (count == 1) return Text(texts->data, texts->size);
    Value value(Type::kText, count);
    value.text_list = texts;
    return value;
  }
  static Value Numbers(const double* numbers, std::uint32_t count) {
    if (count == 1) return Number(*numbers);
    Value value(Type::kNumber, count);
    value.number_list = numbers;
    return value;
  }
  static Value Moments(const Moment* moments, std::uint32_t count) {
    if (count == 1) return Range(*moments);
    Value value(Type::kTime, count);
    value.moment_list = moments;
    return value;
  }

  bool is_text() const { return type == Type::kText; }
  bool is_number() const { return type == Type::kNumber; }
  bool is_time() const { return type == Type::kTime; }
  bool is_error() const { return type == Type::kError; }
  // One empty text, which is also what a missing item gives.
  bool is_null() const { return type == Type::kText && count == 1 && text.size == 0; }

  const TextRef* texts() const { return count == 1 ? &text : text_list; }
  const double* numbers() const { return count == 1 ? &number : number_list; }
  const Moment* moments() const { return count == 1 ? &moment : moment_list; }

 private:
  explicit Value(Type of, std::uint32_t entries = 1) : type(of), count(entries), words{0, 0} {}
};

// Memory of one evaluation, taken back as a whole. Throws LimitReached at its limit and std::bad_alloc.
struct LimitReached {
  ENGSTATUS status;
};

class Arena {
 public:
  explicit Arena(std::uint64_t limit) : limit_(limit) {}

  void* Allocate(std::size_t size) {
    size = (size + 15) & ~std::size_t{15};
    if (size > static_cast<std::size_t>(end_ - next_)) return Refill(size);
    char* result = next_;
    next_ += size;
    return result;
  }
  template <typename T>
  T* Array(std::size_t count) {
    if (count > limit_ / sizeof(T)) throw LimitReached{ENG_ERR_FORMULA_MEMORY};
    return static_cast<T*>(Allocate(count * sizeof(T)));
  }
  const char* Copy(std::string_view text) {
    char* copy = Array<char>(text.size());
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    return copy;
  }
  // Room that is taken elsewhere counts too.
  void Spend(std::size_t size) {
    if (size > limit_ || used_ > limit_ - size) throw LimitReached{ENG_ERR_FORMULA_MEMORY};
    used_ += size;
  }
  void Reset() {
    used_ = 0;
    if (blocks_.size() > 1) blocks_.erase(blocks_.begin(), blocks_.end() - 1);
    if (!blocks_.empty() && blocks_.back().size > kMostKept) blocks_.clear();
    next_ = nullptr;
    end_ = nullptr;
    if (blocks_.empty()) return;
    next_ = blocks_.back().bytes.get();
    end_ = next_ + blocks_.back().size;
    used_ = blocks_.back().size;
  }

 private:
  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
  };

  // What an idle arena holds on to.
  static constexpr std::size_t kMostKept = 1u << 20;

  [[gnu::noinline]] void* Refill(std::size_t size) {
    constexpr std::size_t kFirst = 8192;
    if (size > limit_ || used_ > limit_ - size) throw LimitReached{ENG_ERR_FORMULA_MEMORY};
    const std::size_t grown = blocks_.empty() ? kFirst : std::min(blocks_.back().size * 2, kMostKept);
    const std::size_t wanted = std::max(size, grown);
    blocks_.push_back({std::unique_ptr<char[]>(new char[wanted]), wanted});
    used_ += wanted;
    next_ = blocks_.back().bytes.get() + size;
    end_ = blocks_.back().bytes.get() + wanted;
    return blocks_.back().bytes.get();
  }

  std::uint64_t limit_;
  std::uint64_t used_ = 0;
  std::vector<Block> blocks_;
  char* next_ = nullptr;
  char* end_ = nullptr;
};

}  // namespace qcore::formula

#endif
