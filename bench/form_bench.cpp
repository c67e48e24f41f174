// Forms: a form of 500 fields opened, its fields listed, and saved; beside parsing its body alone.
#include <benchmark/benchmark.h>

#include "bench/support.h"

namespace {

using bench::Home;

constexpr int kFields = 500;

// Stored once: labels, fields with a formula each, paragraphs.
struct Stored {
  VQDatabase Database;
  unsigned long Form = 0;

  static Stored& Get() {
    static Stored stored;
    return stored;
  }

 private:
  Stored() : Database(Home::Get().Create("forms.vlt")) {
    VQForm form;
    Database.CreateForm(VQString("Large"), &form);
    VQRichText body;
    form.GetFormBody(&body);
    for (int i = 0; i < kFields; ++i) {
      const std::string name = "Field" + std::to_string(i);
      VQFormField field(VQString(name.c_str()), i % 5 == 0 ? VQRTTYPE_NUMBER_FIELD : VQRTTYPE_TEXT_FIELD);
      field.SetComputeOption(VQCOMPUTEOPTION_EDITABLE);
      field.SetInputTranslationFormula(VQFormula(VQString(("@Trim(" + name + ")").c_str())));
      body << VQString((name + ": ").c_str());
      body.Append(field);
      body << VQString("\n");
    }
    form.Save();
    Form = form.GetSlateID();
  }
};

void OpenAndListFields(Stored& stored, VQForm* form) {
  stored.Database.GetForm(stored.Form, form);
  form->Open();
  VQFormFieldArray fields;
  form->GetFormFields(&fields);
  const unsigned long count = fields.GetCount();
  for (unsigned long i = 0; i < count; ++i) benchmark::DoNotOptimize(fields[i].GetName());
}

void OpenAndParse(Stored& stored, VQSlate* slate, VQRTContainer* top) {
  stored.Database.GetSlate(stored.Form, slate);
  slate->Open();
  VQRichText body;
  slate->GetItem(VQString("$Body"), &body);
  body.GetTopContainer(top);
}

void OpenListSave(benchmark::State& state) {
  Stored& stored = Stored::Get();
  for (auto _ : state) {
    VQForm form;
    OpenAndListFields(stored, &form);
    form.Save();
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(OpenListSave)->Unit(benchmark::kMicrosecond);

void OpenAndList(benchmark::State& state) {
  Stored& stored = Stored::Get();
  for (auto _ : state) {
    VQForm form;
    OpenAndListFields(stored, &form);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(OpenAndList)->Unit(benchmark::kMicrosecond);

// The peer: the slate opened and its body parsed.
void ParseBody(benchmark::State& state) {
  Stored& stored = Stored::Get();
  for (auto _ : state) {
    VQSlate slate;
    VQRTContainer top;
    OpenAndParse(stored, &slate, &top);
    benchmark::DoNotOptimize(top);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(ParseBody)->Unit(benchmark::kMicrosecond);

// The peer of a save: the slate opened, its body parsed, one item set, saved.
void ParseAndSave(benchmark::State& state) {
  Stored& stored = Stored::Get();
  for (auto _ : state) {
    VQSlate slate;
    VQRTContainer top;
    OpenAndParse(stored, &slate, &top);
    slate.CreateItem(VQString("$UpdatedBy"), TYPE_TEXT, "x", 1, 0, VQITEMOPTION_REPLACE);
    slate.GetSlateBody()->VQSlateBody::Save(0);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(ParseAndSave)->Unit(benchmark::kMicrosecond);

}  // namespace
