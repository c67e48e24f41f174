// quillon formula: compile, decompile, eval.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formulas.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string text;
  std::string code;
  std::string store;
  std::string document;
};

// Characters of the terminal, where each control is a "?".
std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0) != 0x80; }));
}

// The line that has the error, and carets under it.
std::string MarkedLine(const std::string& text, std::size_t offset, std::size_t length) {
  offset = std::min(offset, text.size());
  const std::size_t before = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
  const std::size_t begin = before == std::string::npos ? 0 : before + 1;
  const std::size_t end = std::min(text.find('\n', offset), text.size());
  const std::size_t stop = std::min(offset + length, end);
  const std::size_t carets = stop > offset ? CountCharacters(Printable(text.substr(offset, stop - offset))) : 1;
  return "  " + Printable(text.substr(begin, end - begin)) + "\n  " +
         std::string(CountCharacters(Printable(text.substr(begin, offset - begin))), ' ') +
         std::string(std::max<std::size_t>(carets, 1), '^');
}

std::string Hexadecimal(const VQFormula& formula) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (unsigned long i = 0; i < formula.GetCodeLength(); ++i) {
    const auto byte = static_cast<unsigned char>(formula.GetCode()[i]);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string FromHexadecimal(const std::string& text) {
  const auto digit = [](char c) { return c >= 'a' ? c - 'a' + 10 : (c >= 'A' ? c - 'A' + 10 : c - '0'); };
  if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    throw Failure{kExitUsage, "code is pairs of hexadecimal digits"};
  }
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    bytes += static_cast<char>(digit(text[i]) << 4 | digit(text[i + 1]));
  }
  return bytes;
}

void PrintText(const Options& options, const char* name, const std::string& text) {
  if (!options.json) {
    std::cout << Printable(text) << '\n';
    return;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field(name, text);
  json.EndObject();
}

int Compile(const Options& options, const Arguments& arguments) {
  const Store up(options);
  PrintText(options, "code", Hexadecimal(CompileFormula(arguments.text)));
  return kExitDone;
}

int Decompile(const Options& options, const Arguments& arguments) {
  const Store up(options);
  const std::string code = FromHexadecimal(arguments.code);
  const VQFormula formula(code.data(), code.size());
  PrintText(options, "text", ToText(formula.GetText()));
  return kExitDone;
}

void ShowResult(const Options& options, const VQItem& result, unsigned short flags) {
  const StoredItem value = ReadItem(result);
  if (!options.json) {
    std::cout << ValueText(value) << '\n';
    return;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("type", TypeName(value.type));
  json.Key("value");
  WriteValue(json, value);
  const std::pair<const char*, unsigned> facts[] = {
      {"selected", ENG_FORMULA_SELECTED}, {"modified", ENG_FORMULA_MODIFIED}, {"deleted", ENG_FORMULA_DELETED}};
  for (const auto& [name, bit] : facts) {
    json.Key(name);
    json.Boolean((flags & bit) != 0);
  }
  json.EndObject();
}

int EvaluateAlone(const Options& options, const Arguments& arguments) {
  const Store up(options);
  VQItem result;
  CompileFormula(arguments.text).Evaluate(&result);
  ShowResult(options, result, 0);
  return kExitDone;
}

int Evaluate(const Options& options, const Arguments& arguments) {
  if (arguments.store.empty()) return EvaluateAlone(options, arguments);
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  VQItem result;
  unsigned short flags = 0;
  CompileFormula(arguments.text).Evaluate(&result, document, &flags);
  ShowResult(options, result, flags);
  return kExitDone;
}

}  // namespace

VQFormula CompileFormula(const std::string& text) {
  VQFormula formula;
  unsigned long offset = 0;
  unsigned long length = 0;
  try {
    formula.SetText(FromText(text), &offset, &length);
  } catch (VQSTATUS status) {
    if (text.empty()) throw;
    throw Failure{kExitFailed, StatusWords(status) + "\n" + MarkedLine(text, offset, length)};
  }
  return formula;
}

void AddFormulaCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* formula = app.add_subcommand("formula", "Compile, decompile or evaluate a formula");
  formula->require_subcommand(1);
  CLI::App* compile = formula->add_subcommand("compile", "Its code, in hexadecimal; an error's place is marked");
  compile->add_option("text", arguments->text, "The formula")->required();
  compile->callback([&options, arguments, result] { *result = Compile(options, *arguments); });

  CLI::App* decompile = formula->add_subcommand("decompile", "The text of code");
  decompile->add_option("code", arguments->code, "As compile writes it")->required();
  decompile->callback([&options, arguments, result] { *result = Decompile(options, *arguments); });

  CLI::App* eval = formula->add_subcommand("eval", "Its value; nothing is changed");
  eval->add_option("text", arguments->text, "The formula")->required();
  CLI::Option* store = eval->add_option("--store", arguments->store, "The store of the document");
  CLI::Option* document = eval->add_option("--document", arguments->document, "Number, or the whole Subject");
  store->needs(document);
  document->needs(store);
  eval->callback([&options, arguments, result] { *result = Evaluate(options, *arguments); });
}

}  // namespace tool
