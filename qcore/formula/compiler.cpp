// From text to code in one pass: operands are written as they are read, operators behind them.
#include <charconv>
#include <cstring>
#include <unordered_map>

#include "qcore/formula/code.h"
#include "qcore/formula/code_writer.h"
#include "qcore/formula/formula.h"
#include "qcore/formula/functions.h"
#include "qcore/formula/lexer.h"

namespace qcore::formula {

namespace {

// Thrown from inside a body and caught where it is compiled.
struct Fault {
  ENGSTATUS status;
  Place place;
};

class Compiler {
 public:
  explicit Compiler(std::string_view text) : text_(text), lexer_(text) {
    Read(&token_);
    Read(&ahead_);
  }

  Code CompileAll() {
    CodeWriter code;
    code.AddSection(SectionKind::kSelection, {}, CompileBody());
    while (token_.kind != TokenKind::kEnd) {
      const bool column = IsWord("column");
      const Place place = ahead_.place;
      Advance();
      const std::string name = Take(TokenKind::kText).text;
      if (name.empty() || code.Has(column ? SectionKind::kColumn : SectionKind::kSummaryName, name)) {
        throw Fault{ENG_ERR_FORMULA_TARGET, place};
      }
      code.AddSection(column ? SectionKind::kColumn : SectionKind::kSummaryName, name, {});
      if (column) code.ReplaceBody(CompileBody());
      while (token_.kind == TokenKind::kSemicolon) Advance();
      if (token_.kind != TokenKind::kEnd && !StartsSection()) throw Unexpected();
    }
    if (code.size() > kMostCode) throw Fault{ENG_ERR_FORMULA_TOO_LARGE, Whole()};
    return code.Finish();
  }

  Place Whole() const { return {0, static_cast<std::uint32_t>(text_.size())}; }

 private:
  void Read(Token* token) {
    const ENGSTATUS status = lexer_.Next(token);
    if (status != ENG_OK) throw Fault{status, token->place};
  }
  void Advance() {
    token_ = std::move(ahead_);
    Read(&ahead_);
  }
  Fault Unexpected() const { return {ENG_ERR_FORMULA_SYNTAX, token_.place}; }
  Token Take(TokenKind kind) {
    if (token_.kind != kind) throw Unexpected();
    Token taken = std::move(token_);
    Advance();
    return taken;
  }

  // COLUMN and SUMMARY are words of their own only in front of a text.
  bool IsWord(std::string_view lower) const {
    if (token_.kind != TokenKind::kName || ahead_.kind != TokenKind::kText || token_.text.size() != lower.size()) {
      return false;
    }
    for (std::size_t i = 0; i < lower.size(); ++i) {
      if ((token_.text[i] | 0x20) != lower[i]) return false;
    }
    return true;
  }
  bool StartsSection() const { return IsWord("column") || IsWord("summary"); }

  std::vector<std::uint8_t> CompileBody() {
    body_ = BodyWriter();
    const std::uint32_t begin = token_.place.offset;
    bool computes = false;
    while (token_.kind != TokenKind::kEnd && !StartsSection()) {
      if (token_.kind == TokenKind::kSemicolon) {
        Advance();
        continue;
      }
      computes |= Statement();
      if (token_.kind != TokenKind::kEnd && token_.kind != TokenKind::kSemicolon) throw Unexpected();
      if (body_.size() > kMostCode) throw Fault{ENG_ERR_FORMULA_TOO_LARGE, Whole()};
    }
    const Place place{begin, token_.place.offset - begin};
    if (!computes) throw Fault{ENG_ERR_FORMULA_EMPTY, place};
    std::vector<std::uint8_t> body = body_.Finish();
    Walk walk(body);
    // What the walk has bounds for and the text none: values that wait at the same time.
    if (body.size() > kMostCode || walk.ReadConstants() != ENG_OK || walk.Run(nullptr) != ENG_OK) {
      throw Fault{ENG_ERR_FORMULA_TOO_LARGE, place};
    }
    return body;
  }

  // False for a remark.
  bool Statement() {
    if (token_.kind != TokenKind::kReserved) {
      Expression();
      body_.Put(Op::kEnd);
      return true;
    }
    const std::string word = token_.text;
    Advance();
    if (word == "rem") {
      body_.Put(Op::kRemark, body_.Text(ConstantKind::kText, Take(TokenKind::kText).text));
      return false;
    }
    if (word == "select") {
      Expression();
      body_.Put(Op::kSelect);
    } else {
      const std::uint16_t name = body_.Text(ConstantKind::kName, Take(TokenKind::kName).text);
      Take(TokenKind::kAssign);
      Expression();
      body_.Put(word == "field" ? Op::kSetItem : Op::kSetDefault, name);
    }
    body_.Put(Op::kEnd);
    return true;
  }

  // One level of nesting for as long as it lives.
  class Level {
   public:
    explicit Level(Compiler* compiler) : compiler_(compiler) {
      if (++compiler_->nesting_ > kMostNesting) throw Fault{ENG_ERR_FORMULA_NESTING, compiler_->token_.place};
    }
    ~Level() { --compiler_->nesting_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

   private:
    Compiler* compiler_;
  };

  void Expression() {
    if (token_.kind != TokenKind::kName || ahead_.kind != TokenKind::kAssign) return Binary(1);
    const Level level(this);
    const std::uint16_t name = body_.Text(ConstantKind::kName, token_.text);
    Advance();
    Advance();
    Expression();
    body_.Put(Op::kSetTemp, name);
  }

  void Binary(std::uint8_t least) {
    Unary();
    while (token_.kind == TokenKind::kBinary) {
      const Op op = token_.op;
      const std::uint8_t binding = OperatorOf(op).binding;
      if (binding < least) return;
      Advance();
      if (op == Op::kAnd || op == Op::kOr) {
        body_.Put(op);
        const std::size_t block = body_.BeginBlock();
        Binary(binding + 1);
        body_.EndBlock(block);
      } else {
        Binary(binding + 1);
        body_.Put(op);
      }
    }
  }

  bool IsSign(Op op) const { return token_.kind == TokenKind::kBinary && token_.op == op; }

  void Unary() {
    const bool negate = IsSign(Op::kSubtract);
    if (negate && ahead_.kind == TokenKind::kNumber) {
      Advance();
      token_.number = -token_.number;
      return Primary();
    }
    if (!negate && !IsSign(Op::kAdd) && token_.kind != TokenKind::kNot) return Primary();
    const bool invert = token_.kind == TokenKind::kNot;
    const Level level(this);
    Advance();
    Binary(static_cast<std::uint8_t>(OperatorOf(invert ? Op::kNot : Op::kNegate).binding + 1));
    if (negate || invert) body_.Put(invert ? Op::kNot : Op::kNegate);
  }

  void Primary() {
    switch (token_.kind) {
      case TokenKind::kNumber:
        body_.Put(Op::kConstant, body_.Number(token_.number));
        break;
      case TokenKind::kText:
        body_.Put(Op::kConstant, body_.Text(ConstantKind::kText, token_.text));
        break;
      case TokenKind::kTime:
      case TokenKind::kRange:
        body_.Put(Op::kConstant, body_.Times(token_.times, token_.kind == TokenKind::kRange));
        break;
      case TokenKind::kName:
        body_.Put(Op::kName, body_.Text(ConstantKind::kName, token_.text));
        break;
      case TokenKind::kFunction:
        return Call();
      case TokenKind::kOpen: {
        const Level level(this);
        Advance();
        Expression();
        if (token_.kind != TokenKind::kClose) throw Unexpected();
        break;
      }
      case TokenKind::kKeyword:
        throw Fault{ENG_ERR_FORMULA_KEYWORD, token_.place};
      default:
        throw Unexpected();
    }
    Advance();
  }

  const Function* TakeFunction(Place* place) {
    *place = token_.place;
    const Function* function = nullptr;
    if (token_.by_number) {
      std::uint16_t number = 0;
      const char* const end = token_.text.data() + token_.text.size();
      const auto parsed = std::from_chars(token_.text.data(), end, number);
      if (parsed.ec == std::errc()) function = FindFunction(number);
    } else {
      function = FindFunction(token_.text);
    }
    if (!function) throw Fault{ENG_ERR_FORMULA_FUNCTION, *place};
    Advance();
    return function;
  }

  void Call() {
    Place place;
    const Function& function = *TakeFunction(&place);
    const bool lazy = IsLazy(function.form);
    std::size_t count_at = 0;
    if (lazy) {
      body_.Put(Op::kLazy, function.number);
      count_at = body_.at();
      body_.Word(0);
    }
    const std::uint32_t count = Arguments(function);
    if (!TakesArguments(function, count)) throw Fault{ENG_ERR_FORMULA_ARGUMENTS, place};
    if (lazy) {
      body_.PatchWord(count_at, count);
    } else {
      body_.Put(Op::kCall, function.number);
      body_.Word(count);
    }
  }

  std::uint32_t Arguments(const Function& function) {
    if (token_.kind != TokenKind::kOpen) return 0;
    const Level level(this);
    Advance();
    std::uint32_t count = 0;
    if (token_.kind != TokenKind::kClose) {
      Argument(function, count++);
      while (token_.kind == TokenKind::kSemicolon) {
        Advance();
        Argument(function, count++);
        if (body_.size() > kMostCode) throw Fault{ENG_ERR_FORMULA_TOO_LARGE, Whole()};
      }
    }
    Take(TokenKind::kClose);
    return count;
  }

  void Argument(const Function& function, std::uint32_t index) {
    const Place place = token_.place;
    const std::size_t block = IsLazy(function.form) ? body_.BeginBlock() : 0;
    const bool ends = ahead_.kind == TokenKind::kSemicolon || ahead_.kind == TokenKind::kClose;
    if (function.form == Form::kIsAvailable || function.form == Form::kIsUnavailable) {
      if (token_.kind != TokenKind::kName || !ends) throw Unexpected();
    } else if (function.form == Form::kTransform && index == 1) {
      if (token_.kind != TokenKind::kText || !ends || !IsIdentifier(token_.text)) {
        throw Fault{ENG_ERR_FORMULA_TARGET, place};
      }
    }
    if (token_.kind == TokenKind::kKeyword) {
      if (!ends || !KnowsKeyword(function, token_.text)) throw Fault{ENG_ERR_FORMULA_KEYWORD, place};
      body_.Put(Op::kConstant, body_.Text(ConstantKind::kKeyword, token_.text));
      Advance();
    } else {
      Expression();
    }
    if (IsLazy(function.form)) body_.EndBlock(block);
  }

  std::string_view text_;
  Lexer lexer_;
  Token token_;
  Token ahead_;
  BodyWriter body_;
  std::uint32_t nesting_ = 0;
};

}  // namespace

ENGSTATUS Compile(std::string_view text, Code* code, Place* place) {
  if (text.size() > kMostText) {
    *place = {0, static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), UINT32_MAX))};
    return ENG_ERR_FORMULA_TOO_LARGE;
  }
  try {
    Compiler compiler(text);
    *code = compiler.CompileAll();
    return ENG_OK;
  } catch (const Fault& fault) {
    *place = fault.place;
    return fault.status;
  }
}

}  // namespace qcore::formula
