// From code back to text, with the parentheses that are needed and no others; and sections put together anew.
#include <array>
#include <charconv>
#include <cstdio>

#include "qcore/formula/code.h"
#include "qcore/formula/code_writer.h"
#include "qcore/formula/formula.h"
#include "qcore/formula/functions.h"
#include "qcore/formula/lexer.h"
#include "qcore/store/names.h"
#include "qcore/time/timetext.h"
#include "qcore/time/zone.h"

namespace qcore::formula {

namespace {

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

bool SameTimes(const TIMEDATE& a, const TIMEDATE& b) { return a.TimeWord == b.TimeWord && a.DateWord == b.DateWord; }

std::string Exactly(const TIMEDATE& moment) {
  char text[32];
  std::snprintf(text, sizeof text, "%08X:%08X", moment.TimeWord, moment.DateWord);
  return text;
}

// As a user would write it where that is read as the same time, else exactly.
std::string TimesText(const Constant& constant) {
  const bool range = constant.kind == ConstantKind::kRange;
  const INTLFORMAT settings = time::OwnSettings();
  const TIMEDATE_PAIR& times = constant.times;
  auto text = time::FormatMoment(settings, time::kUsualFormat, times.Lower);
  if (text && range) {
    const auto upper = time::FormatMoment(settings, time::kUsualFormat, times.Upper);
    text = upper ? std::optional(*text + " - " + *upper) : std::nullopt;
  }
  TIMEDATE_PAIR parsed{};
  bool parsed_range = false;
  if (text && text->find(']') == std::string::npos && ParseTimes(*text, &parsed, &parsed_range) &&
      parsed_range == range && SameTimes(parsed.Lower, times.Lower) &&
      (!range || SameTimes(parsed.Upper, times.Upper))) {
    return '[' + *text + ']';
  }
  return "[@@" + Exactly(times.Lower) + (range ? '-' + Exactly(times.Upper) : std::string()) + "@@]";
}

std::string ConstantText(const Constant& constant) {
  switch (constant.kind) {
    case ConstantKind::kNumber: {
      std::array<char, 32> digits;
      return {digits.data(), std::to_chars(digits.begin(), digits.end(), constant.number).ptr};
    }
    case ConstantKind::kText:
      return Quoted(constant.text);
    case ConstantKind::kKeyword:
      return '[' + std::string(constant.text) + ']';
    case ConstantKind::kName:
      return std::string(constant.text);
    default:
      return TimesText(constant);
  }
}

void Enclose(std::string* text) { *text = '(' + *text + ')'; }

// Texts of more than kMostText bytes are not made: code that strangers wrote may name a long text many times.
class TextMaker final : public Visitor {
 public:
  explicit TextMaker(const std::vector<Constant>& constants) : constants_(constants) {}

  bool too_long() const { return size_ > kMostText; }
  std::string Take() { return std::move(statements_); }

  void OnConstant(std::uint16_t index) override {
    if (Grows(constants_[index].text.size())) stack_.push_back(ConstantText(constants_[index]));
  }
  void OnName(std::uint16_t index) override { OnConstant(index); }

  void OnUnary(Op op, bool parentheses) override {
    if (!Grows(1)) return;
    if (parentheses) Enclose(&stack_.back());
    stack_.back().insert(0, OperatorOf(op).text);
  }
  void OnBinary(Op op, bool left_parentheses, bool right_parentheses) override {
    if (!Grows(1)) return;
    const std::string right = Pop();
    if (left_parentheses) Enclose(&stack_.back());
    Join(op, right, right_parentheses);
  }
  void OnLogicBegin(Op, bool left_parentheses) override {
    if (Grows(1) && left_parentheses) Enclose(&stack_.back());
  }
  void OnLogicEnd(Op op, bool right_parentheses) override {
    if (!Grows(1)) return;
    const std::string right = Pop();
    Join(op, right, right_parentheses);
  }

  void OnCall(std::uint16_t function, std::uint16_t arguments) override {
    std::string text = '@' + std::string(FindFunction(function)->name);
    if (!Grows(text.size())) return;
    const std::size_t first = stack_.size() - arguments;
    for (std::size_t i = first; i < stack_.size(); ++i) {
      text += i == first ? "(" : "; ";
      text += stack_[i];
    }
    if (arguments > 0) text += ')';
    stack_.resize(first);
    stack_.push_back(std::move(text));
  }
  // The call's text grows in the place of its first argument.
  void OnLazyBegin(std::uint16_t function, std::uint16_t) override {
    if (Grows(1)) stack_.push_back('@' + std::string(FindFunction(function)->name));
  }
  void OnArgumentBegin(std::uint16_t) override {}
  void OnArgumentEnd(std::uint16_t argument) override {
    if (!Grows(1)) return;
    const std::string text = Pop();
    stack_.back() += argument == 0 ? "(" : "; ";
    stack_.back() += text;
  }
  void OnLazyEnd(std::uint16_t, std::uint16_t) override {
    if (Grows(1)) stack_.back() += ')';
  }

  void OnSet(Op op, std::uint16_t name) override {
    if (!Grows(constants_[name].text.size())) return;
    const char* const word = op == Op::kSetItem ? "FIELD " : op == Op::kSetDefault ? "DEFAULT " : "";
    stack_.back().insert(0, word + std::string(constants_[name].text) + " := ");
  }
  void OnSelect() override {
    if (Grows(1)) stack_.back().insert(0, "SELECT ");
  }
  void OnRemark(std::uint16_t index) override {
    if (Grows(constants_[index].text.size())) Add("REM " + ConstantText(constants_[index]));
  }
  void OnEnd() override {
    if (Grows(1)) Add(Pop());
  }

 private:
  // Counts what every operation adds at least. False from the moment on when it is too much; nothing is made then.
  bool Grows(std::size_t size) {
    size_ += size;
    return !too_long();
  }
  std::string Pop() {
    std::string text = std::move(stack_.back());
    stack_.pop_back();
    return text;
  }
  void Join(Op op, const std::string& right, bool parentheses) {
    std::string& text = stack_.back();
    const bool close = op == Op::kList;
    if (!close) text += ' ';
    text += OperatorOf(op).text;
    if (!close) text += ' ';
    if (parentheses) text += '(';
    text += right;
    if (parentheses) text += ')';
  }
  void Add(const std::string& statement) {
    if (!statements_.empty()) statements_ += "; ";
    statements_ += statement;
  }

  const std::vector<Constant>& constants_;
  std::vector<std::string> stack_;
  std::string statements_;
  std::size_t size_ = 0;
};

ENGSTATUS BodyText(Bytes body, std::string* text) {
  Walk walk(body);
  ENGSTATUS status = walk.ReadConstants();
  if (status != ENG_OK) return status;
  TextMaker maker(walk.constants());
  status = walk.Run(&maker);
  if (status != ENG_OK) return status;
  if (!maker.too_long()) *text += maker.Take();
  return maker.too_long() || text->size() > kMostText ? ENGSTATUS{ENG_ERR_FORMULA_TOO_LARGE} : status;
}

// Whole code of which the first section is taken over, and the others but one of that kind and name.
ENGSTATUS CopyWithout(Bytes code, SectionKind kind, std::string_view name, CodeWriter* writer) {
  ENGSTATUS status = Verify(code);
  if (status != ENG_OK) return status;
  std::vector<Section> sections;
  status = ReadSections(code, &sections);
  for (const Section& section : sections) {
    if (section.kind != kind || !SameName(section.name, name)) writer->AddWhole(section);
  }
  return status;
}

ENGSTATUS FinishMerged(CodeWriter* writer, Code* merged) {
  if (writer->size() > kMostCode) return ENG_ERR_FORMULA_TOO_LARGE;
  *merged = writer->Finish();
  return ENG_OK;
}

}  // namespace

ENGSTATUS Decompile(Bytes code, Extent extent, std::string* text) {
  std::vector<Section> sections;
  ENGSTATUS status = ReadSections(code, &sections);
  std::string made;
  for (std::size_t i = 0; status == ENG_OK && i < sections.size(); ++i) {
    const Section& section = sections[i];
    if (i > 0 && extent == Extent::kSelection) continue;
    if (section.kind == SectionKind::kColumn) made += "; COLUMN " + Quoted(section.name) + "; ";
    if (section.kind == SectionKind::kSummaryName) {
      made += "; SUMMARY " + Quoted(section.name);
    } else {
      status = BodyText(section.body, &made);
    }
  }
  if (status == ENG_OK) *text = std::move(made);
  return status;
}

ENGSTATUS MergeColumn(Bytes selection, std::string_view name, Bytes column, Code* merged) {
  if (name.empty() || name.size() > kMostCode) return ENG_ERR_ARGUMENT;
  ENGSTATUS status = Verify(column);
  std::vector<Section> parts;
  if (status == ENG_OK) status = ReadSections(column, &parts);
  CodeWriter writer;
  if (status == ENG_OK) status = CopyWithout(selection, SectionKind::kColumn, name, &writer);
  if (status != ENG_OK) return status;
  writer.AddSection(SectionKind::kColumn, name, parts[0].body);
  return FinishMerged(&writer, merged);
}

ENGSTATUS AddSummaryName(Bytes selection, std::string_view name, Code* merged) {
  if (name.empty() || name.size() > kMostCode) return ENG_ERR_ARGUMENT;
  CodeWriter writer;
  const ENGSTATUS status = CopyWithout(selection, SectionKind::kSummaryName, name, &writer);
  if (status != ENG_OK) return status;
  writer.AddSection(SectionKind::kSummaryName, name, {});
  return FinishMerged(&writer, merged);
}

}  // namespace qcore::formula
