#include "qcore/formula/program.h"

#include <algorithm>

namespace qcore::formula {

// Turns one body into instructions.
class Lowering final : public Visitor {
 public:
  Lowering(LoadedProgram* program, RunSection* section, const std::vector<Constant>& constants)
      : program_(program), section_(section), constants_(constants), made_(constants.size(), kNone) {}

  void OnConstant(std::uint16_t index) override {
    if (made_[index] == kNone) made_[index] = AddConstant(ValueOf(constants_[index]));
    PushConstant(made_[index]);
  }
  void OnName(std::uint16_t index) override {
    const std::uint32_t slot = SlotOf(constants_[index].text);
    const bool temp = std::ranges::find(set_, slot) != set_.end();
    if (!temp) Reads(slot);
    Put({temp ? Run::kTemp : Run::kName, 0, slot});
    Push({kNone, kNone, false, true});
  }

  void OnUnary(Op op, bool) override {
    const std::uint32_t constant = Pop().constant;
    Push({kNone, kNone, op == Op::kNot});
    if (op == Op::kNegate && IsSingleNumber(constant)) {
      code().pop_back();
      Pop();
      return PushConstant(AddConstant(Value::Number(-program_->constants_[constant].number)));
    }
    Put({op == Op::kNegate ? Run::kNegate : Run::kNot});
  }

  void OnBinary(Op op, bool, bool) override {
    const Entry right = Pop();
    const Entry left = Pop();
    // Lists on the right are joined when the code runs: here each would leave a copy of all that is on the left.
    if (op == Op::kList && left.constant != kNone && right.constant != kNone &&
        program_->constants_[right.constant].count == 1 &&
        program_->constants_[left.constant].type == program_->constants_[right.constant].type) {
      code().resize(code().size() - 2);
      return PushConstant(Joined(left.constant, right.constant));
    }
    if (op >= Op::kEqual && op <= Op::kGreaterEqual) return Comparison(op, left.name, right.constant);
    if (op == Op::kAdd) return Addition(left.sum);
    const bool arithmetic = op >= Op::kMultiply && op <= Op::kSubtract;
    Push({kNone, kNone, op >= Op::kEachEqual});
    if (arithmetic && IsSingleNumber(right.constant)) {
      code().back() = {Run::kArithmeticConstant, static_cast<std::uint16_t>(op), right.constant};
      return;
    }
    Put({arithmetic ? Run::kArithmetic : Run::kBinary, static_cast<std::uint16_t>(op)});
  }

  void OnLogicBegin(Op op, bool) override {
    Pop();
    pending_.push_back({Here(), {}, {}, 0});
    Put({op == Op::kAnd ? Run::kAnd : Run::kOr});
    ++depth_;
  }
  void OnLogicEnd(Op, bool) override {
    if (!Pop().truth) Put({Run::kTruth});
    code()[pending_.back().start].b = Here();
    pending_.pop_back();
    Push({kNone, kNone, true});
    --depth_;
  }

  void OnCall(std::uint16_t number, std::uint16_t arguments) override {
    const Function* function = FindFunction(number);
    for (std::uint16_t i = 0; i < arguments; ++i) Pop();
    Push();
    program_->depends_ |= function->depends;
    if (function->form == Form::kReturn) {
      Put({Run::kReturn});
    } else {
      Put({Run::kCall, arguments, 0, 0, function});
    }
  }

  void OnLazyBegin(std::uint16_t number, std::uint16_t arguments) override {
    form_.push_back({FindFunction(number)->form, arguments});
    pending_.push_back({Here(), {}, {}, 0});
    ++depth_;
  }
  void OnArgumentBegin(std::uint16_t argument) override {
    Pending& pending = pending_.back();
    if (form_.back().form == Form::kFor && argument == 1) pending.start = Here();
  }
  void OnArgumentEnd(std::uint16_t argument) override;
  void OnLazyEnd(std::uint16_t, std::uint16_t) override {
    for (const std::uint32_t at : pending_.back().to_end) code()[at].b = Here();
    for (const std::uint32_t at : pending_.back().errors_to_end) code()[at].c = Here();
    pending_.pop_back();
    form_.pop_back();
    --depth_;
    Pop();
    Push();
  }

  void OnSet(Op op, std::uint16_t name) override {
    const std::uint32_t slot = SlotOf(constants_[name].text);
    if (op == Op::kSetTemp && depth_ == 0) set_.push_back(slot);
    if (op != Op::kSetTemp) Reads(slot);
    Pop();
    Push();
    Put({op == Op::kSetTemp ? Run::kSetTemp : op == Op::kSetItem ? Run::kSetItem : Run::kSetDefault, 0, slot});
  }
  void OnSelect() override {
    section_->selects = true;
    Put({Run::kSelect});
  }
  void OnRemark(std::uint16_t) override {}
  void OnEnd() override {
    Pop();
    Put({Run::kPop});
  }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // What is known of a value on the stack.
  struct Entry {
    std::uint32_t constant;  // which one it is; never one that a jump leads behind
    std::uint32_t sum;       // the kArithmetic or kAddMany that adds it up
    bool truth;              // 0, 1 or an error
    bool name = false;       // a name by itself
  };
  // An operation with blocks whose end is not known yet.
  struct Pending {
    std::uint32_t start;
    std::vector<std::uint32_t> to_end;
    std::vector<std::uint32_t> errors_to_end;
    std::uint32_t condition;  // the branch that the next argument's end completes
  };
  struct Lazy {
    Form form;
    std::uint16_t arguments;
  };

  bool IsSingleNumber(std::uint32_t constant) const {
    return constant != kNone && program_->constants_[constant].is_number() && program_->constants_[constant].count == 1;
  }
  std::vector<Instruction>& code() { return section_->instructions; }
  std::uint32_t Here() { return static_cast<std::uint32_t>(code().size()); }
  void Put(const Instruction& instruction) { code().push_back(instruction); }
  void Push() { Push({kNone, kNone, false}); }
  void Push(const Entry& entry) {
    stack_.push_back(entry);
    program_->most_stack_ = std::max(program_->most_stack_, static_cast<std::uint32_t>(stack_.size()));
  }
  Entry Pop() {
    const Entry top = stack_.back();
    stack_.pop_back();
    return top;
  }
  void PushConstant(std::uint32_t constant) {
    Put({Run::kConstant, 0, constant});
    Push({constant, kNone, false});
  }
  std::uint32_t AddConstant(const Value& value) {
    program_->constants_.push_back(value);
    return static_cast<std::uint32_t>(program_->constants_.size() - 1);
  }

  static Value ValueOf(const Constant& constant) {
    switch (constant.kind) {
      case ConstantKind::kNumber:
        return Value::Number(constant.number);
      case ConstantKind::kTime:
        return Value::Time(constant.times.Lower);
      case ConstantKind::kRange:
        return Value::Range({constant.times.Lower, constant.times.Upper});
      default:
        return Value::Text(constant.text);
    }
  }

  std::uint32_t SlotOf(std::string_view name) {
    const std::uint32_t known = program_->FindSlot(name);
    if (known != kNone) return known;
    const auto made = static_cast<std::uint32_t>(program_->slots_.size());
    program_->slots_.push_back({std::string(name)});
    program_->slots_by_name_.emplace(name, made);
    return made;
  }
  void Reads(std::uint32_t slot) {
    if (program_->slots_[slot].item != Source::kNoIndex) return;
    program_->slots_[slot].item = static_cast<std::uint32_t>(program_->item_names_.size());
    program_->item_names_.push_back(program_->slots_[slot].name);
  }

  template <typename T>
  static std::vector<T>* Extend(std::deque<std::vector<T>>* lists, const T* left, std::uint32_t left_count,
                                const T* right, std::uint32_t right_count) {
    if (lists->empty() || left_count == 1 || lists->back().data() != left) {
      lists->emplace_back(left, left + left_count);
    }
    lists->back().insert(lists->back().end(), right, right + right_count);
    return &lists->back();
  }

  // A list of two constants. The left one, if it is a list, was made for this.
  std::uint32_t Joined(std::uint32_t left_index, std::uint32_t right_index) {
    const Value left = program_->constants_[left_index];
    const Value right = program_->constants_[right_index];
    const std::uint32_t count = left.count + right.count;
    const Value joined =
        left.is_text()
            ? Value::Texts(Extend(&program_->text_lists_, left.texts(), left.count, right.texts(), right.count)->data(),
                           count)
        : left.is_number()
            ? Value::Numbers(
                  Extend(&program_->number_lists_, left.numbers(), left.count, right.numbers(), right.count)->data(),
                  count)
            : Value::Moments(
                  Extend(&program_->moment_lists_, left.moments(), left.count, right.moments(), right.count)->data(),
                  count);
    if (left.count == 1) return AddConstant(joined);
    program_->constants_[left_index] = joined;
    return left_index;
  }

  void Comparison(Op op, bool named, std::uint32_t right) {
    Push({kNone, kNone, true});
    if (right == kNone) {
      Put({Run::kCompare, static_cast<std::uint16_t>(op)});
      return;
    }
    // An item against a constant, as selections have it, is one instruction.
    code().pop_back();
    Instruction& left = code().back();
    if (named && left.run == Run::kName) {
      const Run run = IsSingleNumber(right) ? Run::kNameCompareNumber : Run::kNameCompare;
      left = {run, static_cast<std::uint16_t>(op), left.b, right};
    } else {
      Put({Run::kCompareConstant, static_cast<std::uint16_t>(op), right});
    }
  }
  // A sum grows by an operand that is one instruction.
  void Addition(std::uint32_t sum) {
    if (sum != kNone && sum + 2 == Here()) {
      const std::uint16_t count = code()[sum].run == Run::kAddMany ? code()[sum].a : std::uint16_t{2};
      code().erase(code().end() - 2);
      Put({Run::kAddMany, static_cast<std::uint16_t>(count + 1)});
      program_->most_stack_ = std::max(program_->most_stack_, static_cast<std::uint32_t>(stack_.size()) + count + 1);
    } else {
      Put({Run::kArithmetic, static_cast<std::uint16_t>(Op::kAdd)});
    }
    Push({kNone, Here() - 1, false});
  }

  void EndOfIf(std::uint16_t argument);
  void EndOfLoop(std::uint16_t argument, std::uint16_t condition);
  void EndOfFor(std::uint16_t argument);
  void EndOfTransform(std::uint16_t argument);
  void EndOfAvailable(Form form);
  void Branch(Pending* pending) {
    pending->condition = Here();
    pending->errors_to_end.push_back(Here());
    Put({Run::kCondition});
  }
  void Jump(Pending* pending) {
    pending->to_end.push_back(Here());
    Put({Run::kJump});
  }
  // A loop that ran to its end gives 1.
  void FinishLoop(std::uint32_t begin, std::uint32_t condition) {
    Put({Run::kLoop, 0, begin});
    code()[condition].b = Here();
    Put({Run::kConstant, 0, AddConstant(Value::Number(1))});
  }

  LoadedProgram* program_;
  RunSection* section_;
  const std::vector<Constant>& constants_;
  std::vector<std::uint32_t> made_;
  std::vector<Entry> stack_;
  std::vector<Pending> pending_;
  std::vector<Lazy> form_;
  std::vector<std::uint32_t> set_;  // slots that hold a temporary from here on
  std::uint32_t depth_ = 0;
};

void Lowering::EndOfIf(std::uint16_t argument) {
  Pending& pending = pending_.back();
  const bool last = argument + 1 == form_.back().arguments;
  if (argument % 2 == 0 && !last) return Branch(&pending);
  if (last) return;
  Jump(&pending);
  code()[pending.condition].b = Here();
}

// While and DoWhile.
void Lowering::EndOfLoop(std::uint16_t argument, std::uint16_t condition) {
  Pending& pending = pending_.back();
  const bool last = argument + 1 == form_.back().arguments;
  if (argument == condition) {
    Branch(&pending);
  } else {
    Put({Run::kPop});
  }
  if (last) FinishLoop(pending.start, pending.condition);
}

// The step stands between the condition and the statements, which run first.
void Lowering::EndOfFor(std::uint16_t argument) {
  Pending& pending = pending_.back();
  if (argument == 1) {
    Branch(&pending);
    Put({Run::kJump});
    return;
  }
  Put({Run::kPop});
  const std::uint32_t step = pending.condition + 2;
  if (argument == 2) {
    Put({Run::kLoop, 0, pending.start});
    code()[pending.condition + 1].b = Here();
  }
  if (argument + 1 == form_.back().arguments) FinishLoop(step, pending.condition);
}

void Lowering::EndOfTransform(std::uint16_t argument) {
  Pending& pending = pending_.back();
  if (argument == 0) {
    pending.errors_to_end.push_back(Here());
    Put({Run::kIterate});
  } else if (argument == 1) {
    const std::uint32_t slot = SlotOf(program_->constants_[code().back().b].texts()->view());
    code().pop_back();
    code().back().b = slot;
    pending.start = Here();
    pending.to_end.push_back(Here());
    Put({Run::kNext});
  } else {
    pending.to_end.push_back(Here());
    Put({Run::kCollect});
    Put({Run::kLoop, 0, pending.start});
  }
}

void Lowering::EndOfAvailable(Form form) {
  const std::uint32_t slot = code().back().b;
  Reads(slot);
  code().back() = {Run::kIsAvailable, form == Form::kIsUnavailable, slot};
}

void Lowering::OnArgumentEnd(std::uint16_t argument) {
  Pending& pending = pending_.back();
  const Lazy lazy = form_.back();
  // One entry of the stack stands for the whole while it grows.
  Pop();
  if (argument > 0) Pop();
  Push();
  switch (lazy.form) {
    case Form::kIf:
      return EndOfIf(argument);
    case Form::kDo:
      if (argument + 1 < lazy.arguments) Put({Run::kPop});
      return;
    case Form::kIfError:
      if (argument > 0) return;
      pending.to_end.push_back(Here());
      return Put({Run::kIfError});
    case Form::kWhile:
      return EndOfLoop(argument, 0);
    case Form::kDoWhile:
      return EndOfLoop(argument, lazy.arguments - 1);
    case Form::kFor:
      return EndOfFor(argument);
    case Form::kTransform:
      return EndOfTransform(argument);
    default:
      return EndOfAvailable(lazy.form);
  }
}

bool LessName::operator()(std::string_view a, std::string_view b) const {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::ranges::lexicographical_compare(a, b, {}, lower, lower);
}

std::uint32_t LoadedProgram::FindSlot(std::string_view name) const {
  const auto found = slots_by_name_.find(name);
  return found != slots_by_name_.end() ? found->second : Source::kNoIndex;
}

ENGSTATUS LoadedProgram::LoadCode(Bytes code) {
  code_.assign(code.begin(), code.end());
  std::vector<Section> sections;
  ENGSTATUS status = ReadSections(code_, &sections);
  for (std::size_t i = 0; status == ENG_OK && i < sections.size(); ++i) {
    if (i > 0) summary_names_.emplace_back(sections[i].name);
    if (sections[i].kind == SectionKind::kSummaryName) continue;
    Walk walk(sections[i].body);
    status = walk.ReadConstants();
    if (status != ENG_OK) return status;
    sections_.push_back({std::string(sections[i].name), {}, false});
    Lowering lowering(this, &sections_.back(), walk.constants());
    status = walk.Run(&lowering);
    // The value of the last statement is that of all.
    if (status == ENG_OK) sections_.back().instructions.back() = {Run::kReturn};
  }
  return status;
}

ENGSTATUS Program::Load(Bytes code, std::shared_ptr<const Program>* program) {
  auto loaded = std::make_shared<LoadedProgram>();
  const ENGSTATUS status = loaded->LoadCode(code);
  if (status == ENG_OK) *program = std::move(loaded);
  return status;
}

}  // namespace qcore::formula
