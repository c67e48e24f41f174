// The stored form of compiled formulas, and the one walk over it.
//
//   header    "QF" | u8 version 1 | u8 0 | u16 length of all | u16 0
//   section   u8 kind | [u16 size, name] | [u16 size, body]      the selection first, then columns and summary names
//   body      u16 count of constants | constants | operations
//   constant  u8 kind | number: f64; time: 8 bytes; range: 16 bytes; text, name, keyword: u16 size, bytes
//
// Operations are in postfix order; words are little-endian. What may be left out (`&`, `|`, branches, loops) stands as
// a block: u16 size and operations that leave one value. A statement ends with kEnd.
//
// Stored code is a stranger's: nothing reads it but Sections and Walk, which check every size, index, count and depth
// before use. Constants are held to what the compiler makes, so that decompiled text always compiles.
#ifndef QUILLON_QCORE_FORMULA_CODE_H
#define QUILLON_QCORE_FORMULA_CODE_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"
#include "qcore/formula/formula.h"

namespace qcore::formula {

inline constexpr std::uint8_t kVersion = 1;
inline constexpr std::size_t kMostCode = 65535;
inline constexpr std::size_t kMostText = 65535;
// Parentheses, arguments and signs within each other.
inline constexpr std::uint32_t kMostNesting = 200;
// Values on the stack at once.
inline constexpr std::uint32_t kMostStack = 4096;

enum class SectionKind : std::uint8_t { kSelection = 1, kColumn = 2, kSummaryName = 3 };
enum class ConstantKind : std::uint8_t { kNumber = 1, kText = 2, kTime = 3, kRange = 4, kName = 5, kKeyword = 6 };

enum class Op : std::uint8_t {
  kConstant = 1,  // u16 constant
  kName,          // u16 constant: a temporary or an item
  kNegate,
  kNot,
  kList,
  kMultiply,
  kDivide,
  kAdd,
  kSubtract,
  kEqual,
  kNotEqual,
  kLess,
  kGreater,
  kLessEqual,
  kGreaterEqual,
  kEachMultiply,  // each entry with each
  kEachDivide,
  kEachAdd,
  kEachSubtract,
  kEachEqual,
  kEachNotEqual,
  kEachLess,
  kEachGreater,
  kEachLessEqual,
  kEachGreaterEqual,
  kAnd,         // block
  kOr,          // block
  kCall,        // u16 function, u16 arguments
  kLazy,        // u16 function, u16 arguments, a block for each
  kSetTemp,     // u16 constant; the value stays
  kSetItem,     // as kSetTemp, only in front of kEnd
  kSetDefault,  // as kSetItem
  kSelect,      // only in front of kEnd
  kRemark,      // u16 constant, between statements
  kEnd,
  kLast = kEnd,
};

// How tightly operators bind; 0 is an assignment, kTight everything that needs no parentheses.
inline constexpr std::uint8_t kTight = 9;
struct Operator {
  const char* text;
  std::uint8_t binding;
};
// For kNegate to kOr.
const Operator& OperatorOf(Op op);

struct Constant {
  ConstantKind kind;
  double number = 0;
  TIMEDATE_PAIR times{};
  std::string_view text;
};

struct Section {
  SectionKind kind;
  std::string_view name;
  Bytes body;
  Bytes whole;
};
// ENG_ERR_FORMULA_CODE, ENG_ERR_FORMULA_VERSION. The sections point into `code`; their bodies are not looked at.
[[nodiscard]] ENGSTATUS ReadSections(Bytes code, std::vector<Section>* sections);

// Whether a name can be written as it is: no reserved word, and of letters, digits, '_', '$', '.' and what is not
// ASCII.
bool IsIdentifier(std::string_view text);
inline bool StartsIdentifier(unsigned char c) {
  return c >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$';
}
inline bool ContinuesIdentifier(unsigned char c) { return StartsIdentifier(c) || (c >= '0' && c <= '9') || c == '.'; }
bool IsKeyword(std::string_view text);

// Takes what a walk finds, in the order of the code. `Begin` operations announce a block, whose end follows.
class Visitor {
 public:
  virtual ~Visitor() = default;
  virtual void OnConstant(std::uint16_t index) = 0;
  virtual void OnName(std::uint16_t index) = 0;
  virtual void OnUnary(Op op, bool parentheses) = 0;
  virtual void OnBinary(Op op, bool left_parentheses, bool right_parentheses) = 0;
  virtual void OnLogicBegin(Op op, bool left_parentheses) = 0;
  virtual void OnLogicEnd(Op op, bool right_parentheses) = 0;
  virtual void OnCall(std::uint16_t function, std::uint16_t arguments) = 0;
  virtual void OnLazyBegin(std::uint16_t function, std::uint16_t arguments) = 0;
  virtual void OnArgumentBegin(std::uint16_t argument) = 0;
  virtual void OnArgumentEnd(std::uint16_t argument) = 0;
  virtual void OnLazyEnd(std::uint16_t function, std::uint16_t arguments) = 0;
  virtual void OnSet(Op op, std::uint16_t name) = 0;
  virtual void OnSelect() = 0;
  virtual void OnRemark(std::uint16_t index) = 0;
  virtual void OnEnd() = 0;
};

// One body. Constants are read first.
class Walk {
 public:
  explicit Walk(Bytes body) : body_(body) {}

  // ENG_ERR_FORMULA_CODE.
  [[nodiscard]] ENGSTATUS ReadConstants();
  const std::vector<Constant>& constants() const { return constants_; }
  // Checks all operations, and tells them to `visitor` unless that is null. What was told before a fault is void.
  [[nodiscard]] ENGSTATUS Run(Visitor* visitor);

 private:
  // What is known of a value on the stack.
  struct Entry {
    std::uint8_t binding;
    std::uint16_t nesting;
    std::int32_t constant;  // -1 when it is computed
    bool name = false;      // a name by itself
    bool digit = false;     // its text begins with a number, which would take a '-' in front of it for its own
  };
  struct Frame {
    Op op;
    std::uint16_t function;
    std::uint16_t arguments;
    std::uint16_t argument;
    std::size_t base;  // of the stack, where the block's value will stand
    std::size_t end;
  };

  bool ReadConstant();
  bool Word(std::uint16_t* word);
  bool Index(ConstantKind kind, std::uint16_t* index);
  bool Step(Visitor* visitor);
  bool CloseBlocks(Visitor* visitor);
  bool Push(const Entry& entry);
  bool Plain(const Entry& entry) const;  // not a keyword
  bool DoUnary(Op op, Visitor* visitor);
  bool DoBinary(Op op, Visitor* visitor);
  bool DoLogic(Op op, Visitor* visitor);
  bool DoCall(Visitor* visitor);
  bool DoLazy(Visitor* visitor);
  bool CloseArgument(Visitor* visitor);
  bool DoStatement(Op op, Visitor* visitor);
  bool DoConstant(Visitor* visitor);
  bool DoName(Visitor* visitor);
  bool DoSetTemp(Visitor* visitor);
  // The bottom of the running block's part of the stack.
  std::size_t Base() const { return frames_.empty() ? 0 : frames_.back().base; }
  std::size_t End() const { return frames_.empty() ? body_.size() : frames_.back().end; }

  Bytes body_;
  std::size_t at_ = 0;
  std::vector<Constant> constants_;
  std::vector<Entry> stack_;
  std::vector<Frame> frames_;
  std::uint32_t statements_ = 0;
};

}  // namespace qcore::formula

#endif
