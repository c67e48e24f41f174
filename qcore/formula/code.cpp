#include "qcore/formula/code.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "qcore/formula/functions.h"

namespace qcore::formula {

namespace {

constexpr std::uint8_t kMagic[] = {'Q', 'F'};

std::uint16_t ReadWord(const std::uint8_t* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }

std::string_view AsText(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// Takes a size word and as many bytes from the front of `rest`.
bool TakeSized(Bytes* rest, Bytes* taken) {
  if (rest->size() < 2) return false;
  const std::size_t size = ReadWord(rest->data());
  if (rest->size() - 2 < size) return false;
  *taken = rest->subspan(2, size);
  *rest = rest->subspan(2 + size);
  return true;
}

bool TakeSection(Bytes* rest, Section* section) {
  const Bytes from = *rest;
  const std::uint8_t kind = from[0];
  if (kind < 1 || kind > 3) return false;
  section->kind = static_cast<SectionKind>(kind);
  *rest = from.subspan(1);
  Bytes name;
  if (section->kind != SectionKind::kSelection && (!TakeSized(rest, &name) || name.empty())) return false;
  section->name = AsText(name);
  if (section->kind != SectionKind::kSummaryName && !TakeSized(rest, &section->body)) return false;
  section->whole = from.first(from.size() - rest->size());
  return true;
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

constexpr Operator kOperators[] = {
    {"-", 7},   {"!", 3},  {":", 8},  {"*", 6},   {"/", 6},   {"+", 5},  {"-", 5},  {"=", 4},  {"!=", 4},
    {"<", 4},   {">", 4},  {"<=", 4}, {">=", 4},  {"**", 6},  {"*/", 6}, {"*+", 5}, {"*-", 5}, {"*=", 4},
    {"*!=", 4}, {"*<", 4}, {"*>", 4}, {"*<=", 4}, {"*>=", 4}, {"&", 2},  {"|", 1},
};
static_assert(std::size(kOperators) == static_cast<std::size_t>(Op::kOr) - static_cast<std::size_t>(Op::kNegate) + 1);

}  // namespace

const Operator& OperatorOf(Op op) {
  return kOperators[static_cast<std::size_t>(op) - static_cast<std::size_t>(Op::kNegate)];
}

std::uint32_t LengthOf(const std::uint8_t* code) {
  if (!code || code[0] != kMagic[0] || code[1] != kMagic[1]) return 0;
  const std::uint32_t length = ReadWord(code + 4);
  return length >= kHeaderSize ? length : 0;
}

ENGSTATUS ReadSections(Bytes code, std::vector<Section>* sections) {
  if (code.size() < kHeaderSize || LengthOf(code.data()) != code.size()) return ENG_ERR_FORMULA_CODE;
  if (code[2] > kVersion) return ENG_ERR_FORMULA_VERSION;
  if (code[2] != kVersion || code[3] != 0 || ReadWord(code.data() + 6) != 0) return ENG_ERR_FORMULA_CODE;
  sections->clear();
  std::set<std::pair<SectionKind, std::string>> names;
  for (Bytes rest = code.subspan(kHeaderSize); !rest.empty();) {
    Section section{};
    if (!TakeSection(&rest, &section)) return ENG_ERR_FORMULA_CODE;
    if (sections->empty() != (section.kind == SectionKind::kSelection)) return ENG_ERR_FORMULA_CODE;
    std::string name(section.name);
    std::ranges::transform(name, name.begin(), Lower);
    if (!names.emplace(section.kind, std::move(name)).second) return ENG_ERR_FORMULA_CODE;
    sections->push_back(section);
  }
  return sections->empty() ? ENG_ERR_FORMULA_CODE : ENG_OK;
}

bool IsIdentifier(std::string_view text) {
  if (text.empty() || !StartsIdentifier(static_cast<unsigned char>(text[0]))) return false;
  if (!std::ranges::all_of(text, [](char c) { return ContinuesIdentifier(static_cast<unsigned char>(c)); })) {
    return false;
  }
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), Lower);
  return lower != "select" && lower != "field" && lower != "default" && lower != "rem";
}

bool IsKeyword(std::string_view text) {
  return !text.empty() && text[0] >= 'A' && text[0] <= 'Z' &&
         std::ranges::all_of(text, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

bool Walk::Word(std::uint16_t* word) {
  if (End() - at_ < 2) return false;
  *word = ReadWord(body_.data() + at_);
  at_ += 2;
  return true;
}

bool Walk::ReadConstant() {
  if (at_ >= body_.size()) return false;
  Constant constant{};
  const std::uint8_t kind = body_[at_++];
  if (kind < 1 || kind > 6) return false;
  constant.kind = static_cast<ConstantKind>(kind);
  Bytes rest = body_.subspan(at_);
  const std::size_t fixed = constant.kind == ConstantKind::kRange ? 16 : 8;
  switch (constant.kind) {
    case ConstantKind::kNumber:
    case ConstantKind::kTime:
    case ConstantKind::kRange: {
      if (rest.size() < fixed) return false;
      std::uint32_t words[4];
      for (std::size_t i = 0; i < fixed / 4; ++i) {
        words[i] = ReadWord(rest.data() + 4 * i) | std::uint32_t{ReadWord(rest.data() + 4 * i + 2)} << 16;
      }
      const std::uint64_t bits = words[0] | std::uint64_t{words[1]} << 32;
      std::memcpy(&constant.number, &bits, sizeof bits);
      constant.times = {{words[0], words[1]}, {words[2], words[3]}};
      if (constant.kind == ConstantKind::kNumber && !std::isfinite(constant.number)) return false;
      rest = rest.subspan(fixed);
      break;
    }
    default: {
      Bytes text;
      if (!TakeSized(&rest, &text)) return false;
      constant.text = AsText(text);
      if (constant.kind == ConstantKind::kName && !IsIdentifier(constant.text)) return false;
      if (constant.kind == ConstantKind::kKeyword && !IsKeyword(constant.text)) return false;
    }
  }
  at_ = body_.size() - rest.size();
  constants_.push_back(constant);
  return true;
}

ENGSTATUS Walk::ReadConstants() {
  std::uint16_t count = 0;
  at_ = 0;
  constants_.clear();
  if (!Word(&count)) return ENG_ERR_FORMULA_CODE;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!ReadConstant()) return ENG_ERR_FORMULA_CODE;
  }
  return ENG_OK;
}

bool Walk::Index(ConstantKind kind, std::uint16_t* index) {
  return Word(index) && *index < constants_.size() && constants_[*index].kind == kind;
}

bool Walk::Push(const Entry& entry) {
  if (stack_.size() >= kMostStack || entry.nesting > kMostNesting) return false;
  stack_.push_back(entry);
  return true;
}

bool Walk::Plain(const Entry& entry) const {
  return entry.constant < 0 || constants_[static_cast<std::size_t>(entry.constant)].kind != ConstantKind::kKeyword;
}

bool Walk::DoConstant(Visitor* visitor) {
  std::uint16_t index = 0;
  if (!Word(&index) || index >= constants_.size()) return false;
  if (constants_[index].kind == ConstantKind::kName) return false;
  const Constant& constant = constants_[index];
  const bool digit = constant.kind == ConstantKind::kNumber && !std::signbit(constant.number);
  if (!Push({kTight, 0, index, false, digit})) return false;
  if (visitor) visitor->OnConstant(index);
  return true;
}

bool Walk::DoName(Visitor* visitor) {
  std::uint16_t index = 0;
  if (!Index(ConstantKind::kName, &index) || !Push({kTight, 0, -1, true})) return false;
  if (visitor) visitor->OnName(index);
  return true;
}

bool Walk::DoUnary(Op op, Visitor* visitor) {
  if (stack_.size() == Base() || !Plain(stack_.back())) return false;
  const Entry operand = stack_.back();
  const std::uint8_t binding = OperatorOf(op).binding;
  const bool parentheses = operand.binding < binding || (op == Op::kNegate && operand.digit);
  stack_.pop_back();
  if (!Push({binding, static_cast<std::uint16_t>(operand.nesting + 1 + parentheses), -1})) return false;
  if (visitor) visitor->OnUnary(op, parentheses);
  return true;
}

bool Walk::DoBinary(Op op, Visitor* visitor) {
  if (stack_.size() < Base() + 2) return false;
  const Entry right = stack_.back();
  const Entry left = stack_[stack_.size() - 2];
  if (!Plain(left) || !Plain(right)) return false;
  const std::uint8_t binding = OperatorOf(op).binding;
  const bool left_parentheses = left.binding < binding;
  const bool right_parentheses = right.binding <= binding;
  stack_.resize(stack_.size() - 2);
  const int nesting = std::max(left.nesting + left_parentheses, right.nesting + right_parentheses);
  const bool digit = left.digit && !left_parentheses;
  if (!Push({binding, static_cast<std::uint16_t>(nesting), -1, false, digit})) return false;
  if (visitor) visitor->OnBinary(op, left_parentheses, right_parentheses);
  return true;
}

bool Walk::DoLogic(Op op, Visitor* visitor) {
  std::uint16_t size = 0;
  if (stack_.size() == Base() || !Plain(stack_.back())) return false;
  if (!Word(&size) || size == 0 || size > End() - at_ || frames_.size() > 2 * kMostNesting) return false;
  frames_.push_back({op, 0, 0, 0, stack_.size(), at_ + size});
  if (visitor) visitor->OnLogicBegin(op, stack_.back().binding < OperatorOf(op).binding);
  return true;
}

bool Walk::DoCall(Visitor* visitor) {
  std::uint16_t number = 0;
  std::uint16_t count = 0;
  if (!Word(&number) || !Word(&count)) return false;
  const Function* function = FindFunction(number);
  if (!function || IsLazy(function->form) || !TakesArguments(*function, count)) return false;
  if (stack_.size() < Base() + count) return false;
  int nesting = 0;
  for (std::size_t i = stack_.size() - count; i < stack_.size(); ++i) {
    nesting = std::max<int>(nesting, stack_[i].nesting + 1);
    if (Plain(stack_[i])) continue;
    if (!KnowsKeyword(*function, constants_[static_cast<std::size_t>(stack_[i].constant)].text)) return false;
  }
  stack_.resize(stack_.size() - count);
  if (!Push({kTight, static_cast<std::uint16_t>(nesting), -1})) return false;
  if (visitor) visitor->OnCall(number, count);
  return true;
}

bool Walk::DoLazy(Visitor* visitor) {
  std::uint16_t number = 0;
  std::uint16_t count = 0;
  if (!Word(&number) || !Word(&count)) return false;
  const Function* function = FindFunction(number);
  if (!function || !IsLazy(function->form) || !TakesArguments(*function, count) || count == 0) return false;
  std::uint16_t size = 0;
  if (!Word(&size) || size == 0 || size > End() - at_ || frames_.size() > 2 * kMostNesting) return false;
  frames_.push_back({Op::kLazy, number, count, 0, stack_.size(), at_ + size});
  if (visitor) {
    visitor->OnLazyBegin(number, count);
    visitor->OnArgumentBegin(0);
  }
  return true;
}

// Ends an argument's block: the next one follows, or the value of the whole takes the place of the arguments.
bool Walk::CloseArgument(Visitor* visitor) {
  Frame& frame = frames_.back();
  const Entry argument = stack_.back();
  const Form form = FindFunction(frame.function)->form;
  if (!Plain(argument)) return false;
  if ((form == Form::kIsAvailable || form == Form::kIsUnavailable) && !argument.name) return false;
  if (form == Form::kTransform && frame.argument == 1) {
    if (argument.constant < 0) return false;
    const Constant& variable = constants_[static_cast<std::size_t>(argument.constant)];
    if (variable.kind != ConstantKind::kText || !IsIdentifier(variable.text)) return false;
  }
  if (visitor) visitor->OnArgumentEnd(frame.argument);
  // The deepest argument is kept in the slot of the first.
  if (frame.argument == 0) {
    stack_.back() = {kTight, static_cast<std::uint16_t>(argument.nesting + 1), -1};
  } else {
    stack_.pop_back();
    Entry& whole = stack_.back();
    whole.nesting = std::max(whole.nesting, static_cast<std::uint16_t>(argument.nesting + 1));
  }
  if (stack_.back().nesting > kMostNesting) return false;
  if (++frame.argument < frame.arguments) {
    const std::size_t outer = frames_.size() > 1 ? frames_[frames_.size() - 2].end : body_.size();
    if (outer - at_ < 2) return false;
    const std::size_t size = ReadWord(body_.data() + at_);
    at_ += 2;
    if (size == 0 || size > outer - at_) return false;
    frame.end = at_ + size;
    frame.base = stack_.size();
    if (visitor) visitor->OnArgumentBegin(frame.argument);
    return true;
  }
  const std::uint16_t number = frame.function;
  const std::uint16_t count = frame.arguments;
  frames_.pop_back();
  if (visitor) visitor->OnLazyEnd(number, count);
  return true;
}

bool Walk::CloseBlocks(Visitor* visitor) {
  while (!frames_.empty() && at_ == frames_.back().end) {
    const Frame frame = frames_.back();
    if (stack_.size() != frame.base + 1) return false;
    if (frame.op == Op::kLazy) {
      if (!CloseArgument(visitor)) return false;
      continue;
    }
    const Entry right = stack_.back();
    const Entry left = stack_[stack_.size() - 2];
    if (!Plain(right)) return false;
    const std::uint8_t binding = OperatorOf(frame.op).binding;
    const bool parentheses = right.binding <= binding;
    const bool left_parentheses = left.binding < binding;
    const int nesting = std::max(left.nesting + left_parentheses, right.nesting + parentheses);
    frames_.pop_back();
    stack_.resize(stack_.size() - 2);
    if (!Push({binding, static_cast<std::uint16_t>(nesting), -1, false, left.digit && !left_parentheses})) return false;
    if (visitor) visitor->OnLogicEnd(frame.op, parentheses);
  }
  return true;
}

bool Walk::DoSetTemp(Visitor* visitor) {
  std::uint16_t index = 0;
  if (!Index(ConstantKind::kName, &index) || stack_.size() == Base() || !Plain(stack_.back())) return false;
  const Entry value = stack_.back();
  stack_.pop_back();
  if (!Push({0, static_cast<std::uint16_t>(value.nesting + 1), -1})) return false;
  if (visitor) visitor->OnSet(Op::kSetTemp, index);
  return true;
}

// What stands only between statements or at the end of one.
bool Walk::DoStatement(Op op, Visitor* visitor) {
  std::uint16_t index = 0;
  if (!frames_.empty()) return false;
  if (op == Op::kRemark) {
    if (!stack_.empty() || !Index(ConstantKind::kText, &index)) return false;
    if (visitor) visitor->OnRemark(index);
    return true;
  }
  if (stack_.size() != 1 || !Plain(stack_.back())) return false;
  if (op == Op::kSetItem || op == Op::kSetDefault) {
    if (!Index(ConstantKind::kName, &index)) return false;
    if (visitor) visitor->OnSet(op, index);
  } else if (op == Op::kSelect && visitor) {
    visitor->OnSelect();
  }
  if (op != Op::kEnd && (at_ == body_.size() || body_[at_++] != static_cast<std::uint8_t>(Op::kEnd))) return false;
  stack_.clear();
  ++statements_;
  if (visitor) visitor->OnEnd();
  return true;
}

bool Walk::Step(Visitor* visitor) {
  const Op op = static_cast<Op>(body_[at_++]);
  if (op >= Op::kList && op <= Op::kEachGreaterEqual) return DoBinary(op, visitor);
  switch (op) {
    case Op::kConstant:
      return DoConstant(visitor);
    case Op::kName:
      return DoName(visitor);
    case Op::kNegate:
    case Op::kNot:
      return DoUnary(op, visitor);
    case Op::kAnd:
    case Op::kOr:
      return DoLogic(op, visitor);
    case Op::kCall:
      return DoCall(visitor);
    case Op::kLazy:
      return DoLazy(visitor);
    case Op::kSetTemp:
      return DoSetTemp(visitor);
    case Op::kSetItem:
    case Op::kSetDefault:
    case Op::kSelect:
    case Op::kRemark:
    case Op::kEnd:
      return DoStatement(op, visitor);
    default:
      return false;
  }
}

ENGSTATUS Walk::Run(Visitor* visitor) {
  while (at_ < body_.size()) {
    if (!Step(visitor) || !CloseBlocks(visitor)) return ENG_ERR_FORMULA_CODE;
    // A block that an operand leads out of.
    if (!frames_.empty() && at_ > frames_.back().end) return ENG_ERR_FORMULA_CODE;
  }
  return stack_.empty() && frames_.empty() && statements_ > 0 ? ENG_OK : ENG_ERR_FORMULA_CODE;
}

ENGSTATUS Verify(Bytes code) {
  std::vector<Section> sections;
  ENGSTATUS status = ReadSections(code, &sections);
  for (std::size_t i = 0; status == ENG_OK && i < sections.size(); ++i) {
    if (sections[i].kind == SectionKind::kSummaryName) continue;
    Walk walk(sections[i].body);
    status = walk.ReadConstants();
    if (status == ENG_OK) status = walk.Run(nullptr);
  }
  return status;
}

}  // namespace qcore::formula
