// quillon form-create: a form's design.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/formulas.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string form;
  std::vector<std::string> fields;
  std::vector<std::string> translations;
  std::vector<std::string> validations;
  std::vector<std::string> choices;
  bool is_default = false;
};

constexpr std::pair<const char*, VQRTTYPE> kKinds[] = {
    {"text", VQRTTYPE_TEXT_FIELD},         {"number", VQRTTYPE_NUMBER_FIELD},      {"time", VQRTTYPE_DATETIME_FIELD},
    {"keywords", VQRTTYPE_KEYWORDS_FIELD}, {"richtext", VQRTTYPE_RICH_TEXT_FIELD}, {"names", VQRTTYPE_NAMES_FIELD},
    {"authors", VQRTTYPE_AUTHORS_FIELD},   {"readers", VQRTTYPE_READERS_FIELD},
};
constexpr std::pair<const char*, VQCOMPUTEOPTION> kComputeOptions[] = {
    {"computed", VQCOMPUTEOPTION_COMPUTED},
    {"composed", VQCOMPUTEOPTION_WHEN_COMPOSED},
    {"display", VQCOMPUTEOPTION_FOR_DISPLAY},
};

struct Head {
  std::string name;
  VQRTTYPE kind = VQRTTYPE_TEXT_FIELD;
  VQCOMPUTEOPTION compute = VQCOMPUTEOPTION_EDITABLE;
  bool list = false;
};

void SetOption(Head* head, const std::string& option) {
  for (const auto& [name, kind] : kKinds) {
    if (option == name) {
      head->kind = kind;
      return;
    }
  }
  for (const auto& [name, compute] : kComputeOptions) {
    if (option == name) {
      head->compute = compute;
      return;
    }
  }
  if (option != "list") throw Failure{kExitUsage, "no field option is called \"" + option + "\""};
  head->list = true;
}

// NAME[:OPTION,...]
Head ReadHead(const std::string& text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  Head head;
  head.name = text.substr(0, colon);
  for (std::size_t at = colon + 1; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    SetOption(&head, text.substr(at, end - at));
    at = end + 1;
  }
  if (head.name.empty()) throw Failure{kExitUsage, "a field needs a name: \"" + text + "\""};
  return head;
}

std::pair<std::string, std::string> Split(const std::string& text, const char* form) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw Failure{kExitUsage, std::string(form) + ": " + text};
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void AddField(const VQForm& form, VQRichText& body, const std::string& text) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const Head head = ReadHead(text.substr(0, equals));
  if (form.HasFormField(FromText(head.name))) throw VQSTATUS{VQERR_FIELD_EXISTS};
  VQFormField field(FromText(head.name), head.kind);
  const bool rich = head.kind == VQRTTYPE_RICH_TEXT_FIELD && head.compute != VQCOMPUTEOPTION_EDITABLE;
  field.SetComputeOption(rich ? VQCOMPUTEOPTION_WHEN_COMPOSED : head.compute);
  if (head.list) field.SetAllowMultiValues(1);
  if (equals < text.size()) field.SetValueFormula(CompileFormula(text.substr(equals + 1)));
  body << FromText(head.name + ": ");
  body.Append(field);
  body << FromText("\n");
}

VQFormField FindField(const VQForm& form, const std::string& name) {
  VQFormField field;
  if (form.GetFormField(FromText(name), &field) != VQ_OK) {
    throw Failure{kExitUsage, "the form has no field \"" + name + "\""};
  }
  return field;
}

void SetChoices(const VQForm& form, const std::string& text) {
  const auto [name, list] = Split(text, "choices are NAME=A,B,...");
  VQText choices;
  for (std::size_t at = 0; at <= list.size();) {
    const std::size_t end = std::min(list.find(',', at), list.size());
    choices << FromText(list.substr(at, end - at));
    at = end + 1;
  }
  const VQFormField field = FindField(form, name);
  if (field.GetType() != VQRTTYPE_KEYWORDS_FIELD) throw Failure{kExitUsage, "\"" + name + "\" is no keywords field"};
  VQKeywordsField(field).SetChoicesList(choices);
}

int Create(const Options& options, const Arguments& arguments) {
  if (arguments.form.find_first_of("|;") == 0 || arguments.form.empty()) {
    throw Failure{kExitUsage, "a form needs a name: \"" + arguments.form + "\""};
  }
  Store store(options, arguments.store);
  VQForm form;
  store.database().CreateForm(FromText(arguments.form), &form);
  VQRichText body;
  form.GetFormBody(&body);
  for (const std::string& field : arguments.fields) {
    OnNamed(field, [&] { AddField(form, body, field); });
  }
  for (const std::string& text : arguments.translations) {
    const auto [name, formula] = Split(text, "a translation is NAME=FORMULA");
    FindField(form, name).SetInputTranslationFormula(CompileFormula(formula));
  }
  for (const std::string& text : arguments.validations) {
    const auto [name, formula] = Split(text, "a validation is NAME=FORMULA");
    FindField(form, name).SetInputValidationFormula(CompileFormula(formula));
  }
  for (const std::string& text : arguments.choices) SetChoices(form, text);
  if (arguments.is_default) form.SetIsDefaultForm(1);
  form.Save();
  if (!options.json) return kExitDone;
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("id", static_cast<std::int64_t>(form.GetSlateID()));
  json.EndObject();
  return kExitDone;
}

}  // namespace

void AddFormCreateCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* create = app.add_subcommand("form-create", "Make a form");
  create->add_option("store", arguments->store, "The store")->required();
  create->add_option("name", arguments->form, "Its name, with aliases behind bars")->required();
  create
      ->add_option("--field", arguments->fields,
                   "NAME[:OPTION,...][=FORMULA], once for each field; the formula is the default or computed value;\n"
                   "options: text number time keywords richtext names authors readers, computed composed display, list")
      ->required();
  create->add_option("--translate", arguments->translations, "NAME=FORMULA: what makes an entered value anew");
  create->add_option("--validate", arguments->validations, "NAME=FORMULA: @Success, or a text that refuses the value");
  create->add_option("--choices", arguments->choices, "NAME=A,B,...: values of a keywords field");
  create->add_flag("--default", arguments->is_default, "For documents that name no form");
  create->callback([&options, arguments, result] { *result = Create(options, *arguments); });
}

}  // namespace tool
