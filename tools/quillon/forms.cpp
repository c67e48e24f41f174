// quillon forms, form, compute.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/json.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string form;
  std::string document;
  bool keep_going = false;
};

constexpr std::pair<VQRTTYPE, const char*> kKinds[] = {
    {VQRTTYPE_TEXT_FIELD, "text"},         {VQRTTYPE_NUMBER_FIELD, "number"},       {VQRTTYPE_DATETIME_FIELD, "time"},
    {VQRTTYPE_KEYWORDS_FIELD, "keywords"}, {VQRTTYPE_RICH_TEXT_FIELD, "rich text"}, {VQRTTYPE_NAMES_FIELD, "names"},
    {VQRTTYPE_AUTHORS_FIELD, "authors"},   {VQRTTYPE_READERS_FIELD, "readers"},
};

constexpr const char* kComputeOptions[] = {"editable", "computed when composed", "computed", "computed for display"};

struct DescribedField {
  std::string name;
  std::string kind;
  std::string compute;
  bool multi = false;
  bool shared = false;
  std::vector<std::pair<const char*, std::string>> formulas;
  std::vector<std::string> choices;
  std::string help;
};

using FormulaGetter = VQSTATUS (VQFormField::*)(VQFormula*) const;
constexpr std::pair<const char*, FormulaGetter> kFormulas[] = {
    {"value", &VQFormField::GetValueFormula},
    {"translation", &VQFormField::GetInputTranslationFormula},
    {"validation", &VQFormField::GetInputValidationFormula},
};

std::string KindOf(const VQFormField& field) {
  for (const auto& [type, name] : kKinds) {
    if (field.GetType() == type) return name;
  }
  return "field";
}

// Another program may have left a field without any.
void DescribeChoices(const VQKeywordsField& field, DescribedField* described) {
  VQFormula formula;
  VQText choices;
  try {
    const VQCHOICESOPTION option = field.GetChoicesOption();
    if (option == VQCHOICESOPTION_FORMULA) field.GetChoicesFormula(&formula);
    if (option == VQCHOICESOPTION_LIST) field.GetChoicesList(&choices);
  } catch (VQSTATUS status) {
    if (status != VQERR_NO_CHOICES_LIST && status != VQERR_NO_CHOICES_FORMULA) throw;
    return;
  }
  if (!formula.IsNull()) described->formulas.emplace_back("choices", ToText(formula.GetText()));
  for (unsigned long i = 0; i < choices.GetCount(); ++i) described->choices.push_back(ToText(choices[i]));
}

DescribedField Describe(const VQFormField& field) {
  DescribedField described{ToText(field.GetName()),
                           KindOf(field),
                           kComputeOptions[field.GetComputeOption()],
                           field.GetAllowMultiValues() != 0,
                           field.IsShared() != 0,
                           {},
                           {},
                           ToText(field.GetHelpDescription())};
  for (const auto& [name, get] : kFormulas) {
    VQFormula formula;
    if ((field.*get)(&formula) == VQ_OK) described.formulas.emplace_back(name, ToText(formula.GetText()));
  }
  if (field.GetType() == VQRTTYPE_KEYWORDS_FIELD) DescribeChoices(VQKeywordsField(field), &described);
  return described;
}

void PrintField(const DescribedField& field) {
  std::cout << Printable(field.name) << '\t' << field.kind << '\t' << field.compute << (field.multi ? ", list" : "")
            << (field.shared ? ", shared" : "") << '\t';
  const char* separator = "";
  for (const auto& [name, text] : field.formulas) {
    std::cout << separator << name << ": " << Printable(text);
    separator = " | ";
  }
  if (!field.choices.empty()) std::cout << separator << "choices: ";
  for (std::size_t i = 0; i < field.choices.size(); ++i) {
    std::cout << (i == 0 ? "" : ", ") << Printable(field.choices[i]);
  }
  std::cout << '\n';
}

void WriteField(JsonWriter& json, const DescribedField& field) {
  json.BeginObject();
  json.Field("name", field.name);
  json.Field("kind", field.kind);
  json.Field("compute", field.compute);
  json.Key("list");
  json.Boolean(field.multi);
  json.Key("shared");
  json.Boolean(field.shared);
  json.Key("formulas");
  json.BeginObject();
  for (const auto& [name, text] : field.formulas) json.Field(name, text);
  json.EndObject();
  json.Key("choices");
  json.BeginArray();
  for (const std::string& choice : field.choices) json.String(choice);
  json.EndArray();
  json.Field("help", field.help);
  json.EndObject();
}

void OpenForm(VQDatabase& database, const std::string& name, VQForm* form) {
  if (name.empty() || !database.FormExists(FromText(name))) {
    throw Failure{kExitNotFound, "no form is called \"" + Printable(name) + "\""};
  }
  database.GetForm(FromText(name), form);
  form->Open();
}

// A form or field that can't be read is reported, and the list goes on.
void Report(const std::string& what, VQSTATUS status) {
  std::cout.flush();
  std::fprintf(stderr, "quillon: %s: %s\n", Printable(what).c_str(), StatusWords(status).c_str());
}

struct DescribedForm {
  std::int64_t id;
  std::string name;
  std::string alias;
  bool is_default;
  std::int64_t fields;
};

DescribedForm Describe(VQForm form) {
  form.Open();
  VQFormFieldArray fields;
  form.GetFormFields(&fields);
  return {static_cast<std::int64_t>(form.GetSlateID()), ToText(form.GetName()), ToText(form.GetAlias()),
          form.GetIsDefaultForm() != 0, static_cast<std::int64_t>(fields.GetCount())};
}

void WriteForm(JsonWriter& json, const DescribedForm& form) {
  json.BeginObject();
  json.Field("id", form.id);
  json.Field("name", form.name);
  json.Field("alias", form.alias);
  json.Key("default");
  json.Boolean(form.is_default);
  json.Field("fields", form.fields);
  json.EndObject();
}

int List(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQFormArray forms;
  store.database().GetForms(&forms);
  JsonWriter json(std::cout);
  int result = kExitDone;
  if (options.json) json.BeginArray();
  for (unsigned long i = 0; i < forms.GetCount(); ++i) {
    DescribedForm form;
    try {
      form = Describe(forms[i]);
    } catch (VQSTATUS status) {
      Report("form " + std::to_string(i + 1) + " of " + std::to_string(forms.GetCount()), status);
      result = kExitFailed;
      continue;
    }
    if (options.json) {
      WriteForm(json, form);
      continue;
    }
    std::cout << form.id << '\t' << (form.is_default ? "default" : "form") << '\t' << Printable(form.name) << '\t'
              << form.fields << " fields\n";
  }
  if (options.json) json.EndArray();
  return result;
}

// By its place, and by its name where that can be read.
std::string WhichField(const VQFormField& field, unsigned long index) {
  std::string name;
  const bool named = field.GetFormFieldBody()->ReadName(&name) == VQ_OK;
  return "field " + std::to_string(index + 1) + (named ? " (" + name + ")" : "");
}

int ShowFields(const Options& options, const VQFormFieldArray& fields, JsonWriter& json) {
  int result = kExitDone;
  for (unsigned long i = 0; i < fields.GetCount(); ++i) {
    DescribedField field;
    try {
      field = Describe(fields[i]);
    } catch (VQSTATUS status) {
      Report(WhichField(fields[i], i), status);
      result = kExitFailed;
      continue;
    }
    options.json ? WriteField(json, field) : PrintField(field);
  }
  return result;
}

int Show(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQForm form;
  OpenForm(store.database(), arguments.form, &form);
  VQFormFieldArray fields;
  form.GetFormFields(&fields);
  JsonWriter json(std::cout);
  if (options.json) {
    json.BeginObject();
    json.Field("id", static_cast<std::int64_t>(form.GetSlateID()));
    json.Field("name", ToText(form.GetName()));
    json.Field("alias", ToText(form.GetAlias()));
    json.Key("fields");
    json.BeginArray();
  }
  const int result = ShowFields(options, fields, json);
  if (options.json) {
    json.EndArray();
    json.EndObject();
  }
  return result;
}

int Compute(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  if (!arguments.form.empty()) {
    VQForm form;
    OpenForm(store.database(), arguments.form, &form);
    document.SetFormSlate(form.GetName());
  }
  VQString field, message;
  VQSTATUS status = VQ_OK;
  try {
    document.ComputeWithForm(arguments.keep_going, &field, &message);
  } catch (VQSTATUS thrown) {
    status = thrown;
  }
  // What went right is kept when the run was to go on.
  if (status == VQ_OK || arguments.keep_going) document.Save();
  const auto id = static_cast<std::int64_t>(document.GetSlateID());
  if (status != VQ_OK && !field.IsNull()) {
    const std::string words = message.IsNull() ? StatusWords(status) : ToText(message);
    throw Failure{kExitFailed, "field " + Printable(ToText(field)) + ": " + Printable(words)};
  }
  if (status != VQ_OK) throw status;
  if (!options.json) {
    std::cout << "document " << id << " computed\n";
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("document", id);
  json.EndObject();
  return kExitDone;
}

}  // namespace

void AddFormCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* forms = app.add_subcommand("forms", "List forms");
  forms->add_option("store", arguments->store, "The store")->required();
  forms->callback([&options, arguments, result] { *result = List(options, *arguments); });

  CLI::App* form = app.add_subcommand("form", "Show a form's fields");
  form->add_option("store", arguments->store, "The store")->required();
  form->add_option("name", arguments->form, "The form")->required();
  form->callback([&options, arguments, result] { *result = Show(options, *arguments); });

  CLI::App* compute = app.add_subcommand("compute", "Run a document through its form");
  compute->add_option("store", arguments->store, "The store")->required();
  compute->add_option("document", arguments->document, "Its number or its subject")->required();
  compute->add_option("--form", arguments->form, "The form, which the document has from then on");
  compute->add_flag("--continue", arguments->keep_going, "Go on behind a field that fails, and save the others");
  compute->callback([&options, arguments, result] { *result = Compute(options, *arguments); });
}

}  // namespace tool
