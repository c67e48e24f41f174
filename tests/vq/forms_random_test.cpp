// Random changes of a form, its subforms and its shared fields against a plain model, in memory and in the file.
// With --gtest_shuffle and --gtest_repeat each round has a seed of its own.
#include <functional>
#include <map>
#include <random>
#include <set>

#include "engine/status.h"
#include "tests/vq/support/forms_fixture.h"
#include "tests/vq/support/property_rows.h"
#include "vq/forms/vqsharfl.h"
#include "vq/forms/vqsubfrm.h"
#include "vq/richtext/font.h"
#include "vq/richtext/rthistory.h"
#include "vq/richtext/rttype.h"

namespace {

using namespace vqtest;
using Strings = std::vector<std::string>;
using Values = std::map<std::string, std::string>;
using Keywords = VQKeywordsField;
using Names = VQNamesField;

// A property as text: of fields by their elements, of forms by themselves.
template <typename Handle>
struct Property {
  VQRTTYPE Type;  // the fields that have it
  Strings Choices;
  std::function<VQSTATUS(const Handle&, const std::string&)> Set;
  std::function<std::string(const Handle&)> Get;
};
template <typename Handle>
using Properties = std::map<std::string, Property<Handle>>;

template <typename Field>
constexpr VQRTTYPE TypeOf() {
  if (std::same_as<Field, Keywords>) return VQRTTYPE_KEYWORDS_FIELD;
  return std::same_as<Field, Names> ? VQRTTYPE_NAMES_FIELD : VQRTTYPE_FORM_FIELD;
}

template <typename Handle, auto Getter, auto Setter,
          typename Field = typename SetterTraits<decltype(Setter)>::OwnerType>
Property<Handle> Number(Strings choices = {"0", "1"}) {
  constexpr auto access = Of<Getter, Setter, Field>();
  return {TypeOf<Field>(), std::move(choices),
          [=](const Handle& handle, const std::string& value) {
            Field field(handle);
            return access.Set(field, std::stoul(value));
          },
          [=](const Handle& handle) { return std::to_string(access.Get(Field(handle))); }};
}

template <typename Handle, auto Getter, auto Setter,
          typename Field = typename SetterTraits<decltype(Setter)>::OwnerType>
Property<Handle> Text(Strings choices) {
  return {TypeOf<Field>(), std::move(choices),
          [=](const Handle& handle, const std::string& value) { return (Field(handle).*Setter)(Store(value)); },
          [=](const Handle& handle) { return TextOf((Field(handle).*Getter)()); }};
}

template <typename Handle, auto Getter, auto Setter,
          typename Field = typename SetterTraits<decltype(Setter)>::OwnerType>
Property<Handle> Code() {
  return {TypeOf<Field>(),
          {"", "1 + A", "\"word\"", "\"" + std::string(700, 'l') + "\""},
          [=](const Handle& handle, const std::string& value) {
            return (Field(handle).*Setter)(value.empty() ? VQFormula() : VQFormula(Store(value)));
          },
          [=](const Handle& handle) {
            VQFormula formula;
            return (Field(handle).*Getter)(&formula) == VQ_OK ? TextOf(formula.GetText()) : std::string();
          }};
}

template <typename Handle, auto Getter, auto Setter,
          typename Field = typename SetterTraits<decltype(Setter)>::OwnerType>
Property<Handle> List() {
  return {TypeOf<Field>(),
          {"", "one", "one|two|", "a longer entry|b"},
          [=](const Handle& handle, const std::string& value) {
            VQText list;
            for (std::size_t at = 0, end = 0; !value.empty() && end != std::string::npos; at = end + 1) {
              end = value.find('|', at);
              list << Store(value.substr(at, end - at));
            }
            return (Field(handle).*Setter)(list);
          },
          [=](const Handle& handle) {
            VQText list;
            VQString joined;
            if ((Field(handle).*Getter)(&list) == VQ_OK) list.GetText(&joined, "|");
            return TextOf(joined);
          }};
}

// Faces of their own, each in the font table of its slate.
Property<VQRTObject> Font() {
  return {VQRTTYPE_FORM_FIELD,
          {"Face One", "Face Two", "Face Three"},
          [](const VQRTObject& handle, const std::string& value) {
            VQFontStyle face(0x10, 2, Store(value), 1, 0);
            EXPECT_EQ(face.SetPointSize(18), VQ_OK);
            return VQFormField(handle).SetFontStyle(face);
          },
          [](const VQRTObject& handle) {
            VQFontStyle face;
            return VQFormField(handle).GetFontStyle(&face) == VQ_OK ? TextOf(face.GetFaceName()) : "none";
          }};
}

template <typename Field>
void AddListProperties(Properties<VQRTObject>* properties, const std::string& kind) {
  using Object = VQRTObject;
  (*properties)[kind + "not in list"] =
      Number<Object, &Field::GetAllowValuesNotInList, &Field::SetAllowValuesNotInList, Field>();
  (*properties)[kind + "look up"] = Number<Object, &Field::GetLookUpNames, &Field::SetLookUpNames, Field>();
  (*properties)[kind + "column"] =
      Number<Object, &Field::GetChoicesViewColumnNumber, &Field::SetChoicesViewColumnNumber, Field>({"0", "65535"});
  (*properties)[kind + "view"] =
      Text<Object, &Field::GetChoicesView, &Field::SetChoicesView, Field>({"", "V", "People"});
  (*properties)[kind + "database"] =
      Text<Object, &Field::GetChoicesViewDatabase, &Field::SetChoicesViewDatabase, Field>({"", "people.vlt"});
}

Properties<VQRTObject> FieldProperties() {
  using Object = VQRTObject;
  using Field = VQFormField;
  Properties<Object> all = {
      {"multi", Number<Object, &Field::GetAllowMultiValues, &Field::SetAllowMultiValues>()},
      {"compute", Number<Object, &Field::GetComputeOption, &Field::SetComputeOption>({"0", "1", "2", "3"})},
      {"shown", Number<Object, &Field::GetDisplayValueSeparator, &Field::SetDisplayValueSeparator>({"0", "4", "16"})},
      {"input", Number<Object, &Field::GetInputValueSeparators, &Field::SetInputValueSeparators>({"0", "7", "31"})},
      {"security", Number<Object, &Field::GetSecurityFlags, &Field::SetSecurityFlags>({"0", "1024", "13312"})},
      {"late", Number<Object, &Field::GetComputeAfterValidation, &Field::SetComputeAfterValidation>()},
      {"focus", Number<Object, &Field::GetGiveDefaultFocus, &Field::SetGiveDefaultFocus>()},
      {"value", Code<Object, &Field::GetValueFormula, &Field::SetValueFormula>()},
      {"translation", Code<Object, &Field::GetInputTranslationFormula, &Field::SetInputTranslationFormula>()},
      {"validation", Code<Object, &Field::GetInputValidationFormula, &Field::SetInputValidationFormula>()},
      {"html", Code<Object, &Field::GetHTMLAttributesFormula, &Field::SetHTMLAttributesFormula>()},
      {"help",
       Text<Object, &Field::GetHelpDescription, &Field::SetHelpDescription>({"", "odd", std::string(255, 'h')})},
      {"font", Font()},
      {"keywords columns",
       Number<Object, &Keywords::GetInterfaceColumnCount, &Keywords::SetInterfaceColumnCount>({"1", "8"})},
      {"keywords frame",
       Number<Object, &Keywords::GetInterfaceFrameOption, &Keywords::SetInterfaceFrameOption>({"0", "1", "2"})},
      {"keywords interface",
       Number<Object, &Keywords::GetInterfaceOption, &Keywords::SetInterfaceOption>({"0", "1", "2"})},
      {"keywords refresh",
       Number<Object, &Keywords::GetRefreshChoicesOnDocRefresh, &Keywords::SetRefreshChoicesOnDocRefresh>()},
      {"keywords choices", Number<Object, &Keywords::GetChoicesOption, &Keywords::SetChoicesOption>({"1", "2", "3"})},
      {"keywords list", List<Object, &Keywords::GetChoicesList, &Keywords::SetChoicesList>()},
      {"keywords formula", Code<Object, &Keywords::GetChoicesFormula, &Keywords::SetChoicesFormula>()},
  };
  AddListProperties<Keywords>(&all, "keywords ");
  AddListProperties<Names>(&all, "names ");
  return all;
}

Properties<VQForm> FormProperties() {
  using Form = VQForm;
  return {
      {"alias", Text<Form, &Form::GetAlias, &Form::SetAlias>({"", "a", "a|bee"})},
      {"template", Text<Form, &Form::GetInheritsFromTemplateName, &Form::SetInheritsFromTemplateName>({"", "T"})},
      {"html", Code<Form, &Form::GetHTMLAttributesFormula, &Form::SetHTMLAttributesFormula>()},
      {"query open", Code<Form, &Form::GetWebQueryOpenFormula, &Form::SetWebQueryOpenFormula>()},
      {"title", Code<Form, &Form::GetWindowTitleFormula, &Form::SetWindowTitleFormula>()},
      {"menu", Number<Form, &Form::GetIncludeInMenuOption, &Form::SetIncludeInMenuOption>({"0", "1", "2"})},
      {"type", Number<Form, &Form::GetFormType, &Form::SetFormType>({"0", "1", "2"})},
      {"versions", Number<Form, &Form::GetVersioningOption, &Form::SetVersioningOption>({"0", "128", "32768"})},
      {"inherit", Number<Form, &Form::GetInheritDocumentOption, &Form::SetInheritDocumentOption>({"0", "1", "3"})},
      {"as HTML", Number<Form, &Form::GetTreatContentsAsHTML, &Form::SetTreatContentsAsHTML>()},
      {"color", Number<Form, &Form::GetBackgroundColor, &Form::SetBackgroundColor>({"1", "35", "239"})},
      {"merge", Number<Form, &Form::GetMergeReplicationConflicts, &Form::SetMergeReplicationConflicts>()},
      {"public", Number<Form, &Form::GetAllowPublicAccessUsers, &Form::SetAllowPublicAccessUsers>()},
      {"private", Number<Form, &Form::GetDisablePrintingAndCopying, &Form::SetDisablePrintingAndCopying>()},
      {"override", Number<Form, &Form::GetUserCanOverrideBackground, &Form::SetUserCanOverrideBackground>()},
      {"keys", List<Form, &Form::GetDefaultEncryptionKeys, &Form::SetDefaultEncryptionKeys>()},
  };
}

struct Field {
  std::string Name;
  VQRTTYPE Type = VQRTTYPE_NONE;
  Values Is;
  int Definition = -1;  // of a shared field, whose own values say nothing
  bool operator==(const Field&) const = default;
};

// A form's body, or a subform's.
struct Part {
  std::vector<Field> Fields;
  std::vector<int> Places;  // of subforms
  bool operator==(const Part&) const = default;
};

struct World {
  Values Form;
  Part Body;
  std::vector<Part> Subforms = std::vector<Part>(3);
  std::vector<Field> Definitions;

  struct Listed {
    Field* Entry;
    int Where;  // the subform, -1 for the form
  };
  // The body's fields, and behind them those of each subform, once.
  std::vector<Listed> List(std::set<int>* subforms = nullptr) {
    std::vector<Listed> list;
    std::set<int> seen;
    Add(Body, -1, &seen, &list);
    if (subforms != nullptr) *subforms = seen;
    return list;
  }
  Field& DesignOf(Field& field) { return field.Definition < 0 ? field : Definitions[field.Definition]; }
  // What a save says.
  VQSTATUS Check() {
    for (const Listed& listed : List()) {
      Values& is = DesignOf(*listed.Entry).Is;
      if (is["compute"] != "0" && is["value"].empty()) return VQERR_NO_COMPUTED_FORMULA;
      if (listed.Entry->Type != VQRTTYPE_KEYWORDS_FIELD) continue;
      if (is["keywords choices"] == "1" && is["keywords list"].empty()) return VQERR_NO_CHOICES_LIST;
      if (is["keywords choices"] == "2" && is["keywords formula"].empty()) return VQERR_NO_CHOICES_FORMULA;
    }
    return VQ_OK;
  }

 private:
  void Add(Part& part, int where, std::set<int>* seen, std::vector<Listed>* list) {
    for (Field& field : part.Fields) list->push_back({&field, where});
    for (const int place : part.Places) {
      if (seen->insert(place).second) Add(Subforms[place], place, seen, list);
    }
  }
};

// What one property does to the others.
void Enter(Values* is, const std::string& name, const std::string& value) {
  (*is)[name] = value;
  const std::string kind = name.starts_with("names ") ? "names " : "keywords ";
  if (name == "keywords interface") (*is)["keywords not in list"] = "0";
  if (name == "keywords not in list") (*is)["keywords interface"] = value;
  const auto select = [&](char option) {
    if (kind == "keywords ") (*is)["keywords choices"] = option;
    if (option != '1') (*is)["keywords list"] = "";
    if (option != '2') (*is)["keywords formula"] = "";
    if (option == '3') return;
    (*is)["keywords view"] = (*is)["keywords database"] = "";
    (*is)["keywords column"] = "0";
  };
  if (name == "keywords choices") select(value[0]);
  if (value.empty() || kind != "keywords ") return;
  if (name == "keywords list") select('1');
  if (name == "keywords formula") select('2');
  if (name == "keywords view" || name == "keywords database") select('3');
}

class RandomForm : public FormsFixture {
 protected:
  void SetUp() override {
    FormsFixture::SetUp();
    Random.seed(static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed()));
    for (int i = 0; i < 3; ++i) {
      VQSubform subform;
      ASSERT_EQ(Db.CreateSubform(Store("Sub" + std::to_string(i)), &subform), VQ_OK);
      ASSERT_EQ(subform.Save(), VQ_OK);
      SubformIDs.push_back(subform.GetSlateID());
    }
    Edited = NewForm("Random");
    ASSERT_EQ(Edited.Save(), VQ_OK);
    for (const auto& [name, property] : OfForms) Stored.Form[name] = property.Get(Edited);
    Reopen();
  }
  void TearDown() override {
    Past = std::make_unique<VQRTHistory>();
    Body = VQRichText();
    Edited = VQForm();
    Past.reset();
    FormsFixture::TearDown();
  }

  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(Random); }
  template <typename List>
  auto& OneOf(List& list) {
    return list[Below(list.size())];
  }

  void Reopen() {
    const unsigned long id = Edited.GetSlateID();
    Body = VQRichText();
    Edited = VQForm();
    ASSERT_EQ(Db.GetForm(id, &Edited), VQ_OK);
    ASSERT_EQ(Edited.Open(), VQ_OK);
    ASSERT_EQ(Edited.GetFormBody(&Body), VQ_OK);
    Live = Stored;
    Touched.clear();
    Watch();
  }
  void Watch() {
    Past = std::make_unique<VQRTHistory>();
    ASSERT_EQ(Past->Watch(Body), VQ_OK);
    States = {{Written(Body), Live.Body}};
    State = 0;
  }

  static std::string Prefix(int where) { return where < 0 ? "F" : "S" + std::to_string(where) + "_"; }
  std::string AnyName(int where) { return Prefix(where) + std::to_string(Below(where < 0 ? 10 : 3)); }
  static Field* Find(Part& part, const std::string& name) {
    for (Field& field : part.Fields) {
      if (field.Name == name) return &field;
    }
    return nullptr;
  }
  Field* FindDefinition(std::vector<Field>& definitions, const std::string& name) {
    const auto found =
        std::find_if(definitions.begin(), definitions.end(), [&](const Field& each) { return each.Name == name; });
    return found == definitions.end() ? nullptr : &*found;
  }
  VQFormField Handle(const Field& field) {
    VQFormField handle;
    EXPECT_EQ(Edited.GetFormField(Store(field.Name), &handle), VQ_OK) << field.Name;
    return handle;
  }

  // A field that stands alone, mostly one that can be saved.
  VQFormField NewField(const std::string& name, Field* field) {
    const auto type = static_cast<VQRTTYPE>(VQRTTYPE_TEXT_FIELD + Below(8));
    VQFormField made(Store(name), type);
    *field = {name, type, {}, -1};
    for (const auto& [each, property] : OfFields) {
      if (vq::IsRTType(type, property.Type)) field->Is[each] = property.Get(made);
    }
    if (Below(8) != 0) SetProperty(made, field, "compute", "0");
    if (type == VQRTTYPE_KEYWORDS_FIELD && Below(8) != 0) SetProperty(made, field, "keywords list", "one");
    return made;
  }
  void SetProperty(const VQRTObject& handle, Field* design, const std::string& name, const std::string& value) {
    VQSTATUS expected = VQ_OK;
    if (design->Type == VQRTTYPE_RICH_TEXT_FIELD && name == "multi") expected = VQERR_INAPPROPRIATE;
    if (design->Type == VQRTTYPE_RICH_TEXT_FIELD && name == "compute" && value > "1")
      expected = VQERR_INVALID_PARAMETER;
    ASSERT_EQ(OfFields[name].Set(handle, value), expected) << name << ' ' << value;
    if (expected == VQ_OK) Enter(&design->Is, name, value);
  }
  void SetAny(const VQRTObject& handle, Field* design) {
    auto property = OfFields.begin();
    std::advance(property, Below(OfFields.size()));
    if (vq::IsRTType(design->Type, property->second.Type)) {
      SetProperty(handle, design, property->first, OneOf(property->second.Choices));
    }
  }

  // Into the form's body or that of a subform of its own.
  void CreateIn(VQRichText& text, Part& part, int where) {
    const std::string name = AnyName(where);
    const VQSTATUS expected = Find(part, name) != nullptr ? VQERR_FIELD_EXISTS : VQ_OK;
    Field field;
    const VQFormField made = NewField(name, &field);
    std::size_t at = Below(part.Fields.size() + 1);
    VQSTATUS status = VQ_OK;
    if (at == part.Fields.size()) {
      status = text.Append(made);
    } else {
      VQRTCursor cursor;
      ASSERT_EQ(text.GetCursor(&cursor), VQ_OK);
      ASSERT_EQ(cursor.GotoFirst(VQRTTYPE_FORM_FIELD), VQ_OK);
      for (std::size_t i = 0; i < at; ++i) ASSERT_EQ(cursor.GotoNext(VQRTTYPE_FORM_FIELD), VQ_OK);
      status = text.Insert(made, &cursor);
    }
    ASSERT_EQ(status, expected) << name;
    if (status == VQ_OK) part.Fields.insert(part.Fields.begin() + static_cast<long>(at), field);
  }
  void DeleteFrom(VQRichText& text, Part& part) {
    if (part.Fields.empty()) return;
    const std::size_t at = Below(part.Fields.size());
    ASSERT_EQ(text.DeleteFormField(Store(part.Fields[at].Name)), VQ_OK);
    part.Fields.erase(part.Fields.begin() + static_cast<long>(at));
  }
  void PlaceIn(VQRichText& text, Part& part) {
    const int which = static_cast<int>(Below(3));
    const auto place = std::find(part.Places.begin(), part.Places.end(), which);
    if (place != part.Places.end() && Below(2) == 0) {
      ASSERT_EQ(text.DeleteRTSubform(Store("Sub" + std::to_string(which))), VQ_OK);
      part.Places.erase(place);
      return;
    }
    const bool there = place != part.Places.end();
    const VQSubform subform(Db.GetDatabaseBody(), SubformIDs[static_cast<std::size_t>(which)]);
    ASSERT_EQ(text.Append(VQRTSubform(subform)), there ? VQERR_SUBFORM_EXISTS : VQ_OK);
    if (!there) part.Places.push_back(which);
  }
  void AppendWords() {
    VQRTCursor end;
    if (Below(4) != 0) {
      ASSERT_EQ(Body.Append(Store(Below(2) == 0 ? "label: " : "two\nlines")), VQ_OK);
    } else {
      ASSERT_EQ(Body.GetEndCursor(&end), VQ_OK);
      ASSERT_EQ(Body.CreateTable(1, 2, &end), VQ_OK);
    }
  }

  void Touch(const World::Listed& listed) {
    if (listed.Entry->Definition >= 0) {
      Touched.insert(listed.Entry->Definition);
    } else if (listed.Where >= 0) {
      Touched.insert(-1 - listed.Where);
    }
  }
  void Rename(const World::Listed& listed) {
    Field& field = *listed.Entry;
    const std::string name = AnyName(listed.Where);
    VQSTATUS expected = VQ_OK;
    for (const World::Listed& other : Live.List()) {
      if (other.Entry != &field && other.Entry->Name == name) expected = VQERR_FIELD_EXISTS;
    }
    const Field* taken = FindDefinition(Stored.Definitions, name);
    const bool shared = field.Definition >= 0;
    if (expected == VQ_OK && shared && taken != nullptr && taken != &Stored.Definitions[field.Definition]) {
      expected = VQERR_SHARED_FIELD_EXISTS;
    }
    ASSERT_EQ(Handle(field).SetName(Store(name)), expected) << field.Name << " to " << name;
    Touch(listed);
    if (listed.Where >= 0) Touched.insert(-1 - listed.Where);
    if (expected != VQ_OK) return;
    field.Name = name;
    if (!shared) return;
    Live.Definitions[field.Definition].Name = name;
    Forget = true;
  }
  void ShareOrNot(const World::Listed& listed) {
    Field& field = *listed.Entry;
    if (listed.Where >= 0) Touched.insert(-1 - listed.Where);
    if (field.Definition >= 0) {
      Field own = Live.Definitions[field.Definition];
      ASSERT_EQ(Handle(field).Unshare(), VQ_OK);
      field = own;
      return;
    }
    const Field* taken = FindDefinition(Stored.Definitions, field.Name);
    ASSERT_EQ(Handle(field).Share(), taken != nullptr ? VQERR_SHARED_FIELD_EXISTS : VQ_OK) << field.Name;
    if (taken != nullptr) return;
    Stored.Definitions.push_back(field);
    Live.Definitions.push_back(field);
    field.Definition = static_cast<int>(Live.Definitions.size()) - 1;
    field.Is.clear();
  }
  void Point(const World::Listed& listed) {
    if (Stored.Definitions.empty()) return;
    Field& field = *listed.Entry;
    const int which = static_cast<int>(Below(Stored.Definitions.size()));
    const Field& definition = Stored.Definitions[which];
    if (!definition.Name.starts_with(Prefix(listed.Where))) return;
    if (Touched.contains(which) || (field.Definition >= 0 && Touched.contains(field.Definition))) return;
    VQSTATUS expected = VQ_OK;
    for (const World::Listed& other : Live.List()) {
      if (other.Entry != &field && other.Entry->Name == definition.Name) expected = VQERR_FIELD_EXISTS;
    }
    VQSharedField shared;
    ASSERT_EQ(Db.GetSharedField(Store(definition.Name), &shared), VQ_OK);
    ASSERT_EQ(Handle(field).SetSharedField(shared), expected) << field.Name << " to " << definition.Name;
    if (listed.Where >= 0) Touched.insert(-1 - listed.Where);
    if (expected == VQ_OK) field = {definition.Name, definition.Type, {}, which};
  }

  // After another handle has stored something that this form has changed too: nothing of the form is stored.
  void SaveInVain() {
    ASSERT_EQ(Edited.Save(), VQSTATUS{ENG_ERR_SLATE_CONFLICT});
    Reopen();
  }
  // Another handle changes a subform and stores it; the form sees it by its next save.
  void ChangeSubform() {
    const std::size_t which = Below(3);
    const int where = static_cast<int>(which);
    const bool changed = Live.Subforms[which] != Stored.Subforms[which];
    if (changed ? Live.Check() != VQ_OK : Touched.contains(-1 - where)) return;
    Part& part = Stored.Subforms[which];
    for (const Field& field : part.Fields) {
      if (field.Definition >= 0 && Touched.contains(field.Definition)) return;
    }
    const Part before = part;
    VQSubform subform(Db.GetDatabaseBody(), SubformIDs[which]);
    VQRichText text;
    ASSERT_EQ(subform.Open(), VQ_OK);
    ASSERT_EQ(subform.GetSubformBody(&text), VQ_OK);
    Below(4) != 0 ? CreateIn(text, part, where) : Below(2) != 0 ? DeleteFrom(text, part) : PlaceIn(text, part);
    ASSERT_EQ(subform.Save(), VQ_OK);
    if (changed) return part != before ? SaveInVain() : Reopen();
    Live.Subforms[which] = part;
    DropUnheld();
    Below(2) != 0 ? Save() : Reopen();
  }
  void ChangeDefinition() {
    if (Stored.Definitions.empty()) return;
    const std::size_t which = Below(Stored.Definitions.size());
    Field& definition = Stored.Definitions[which];
    const Field before = definition;
    const bool changed = Live.Definitions[which] != definition && Live.Check() == VQ_OK;
    VQSharedField shared;
    ASSERT_EQ(Db.GetSharedField(Store(definition.Name), &shared), VQ_OK);
    ASSERT_EQ(shared.Open(), VQ_OK);
    VQFormField field;
    ASSERT_EQ(shared.GetField(&field), VQ_OK);
    SetAny(field, &definition);
    ASSERT_EQ(shared.Save(), VQ_OK);
    if (changed && definition != before) return SaveInVain();
    Reopen();
  }
  void SaveBehindAnother() {
    if (Stored.Check() != VQ_OK || Live.Check() != VQ_OK) return;
    const Values before = Stored.Form;
    VQForm other = ReopenedForm(Edited);
    SetFormProperty(other, &Stored.Form);
    ASSERT_EQ(other.Save(), VQ_OK);
    Stored.Form != before ? SaveInVain() : Reopen();
  }
  void SetFormProperty(VQForm& form, Values* is) {
    auto property = OfForms.begin();
    std::advance(property, Below(OfForms.size()));
    const std::string value = OneOf(property->second.Choices);
    ASSERT_EQ(property->second.Set(form, value), VQ_OK) << property->first;
    (*is)[property->first] = value;
  }

  // What stands in a save's way is mended, and the save tried again.
  void Save() {
    for (VQSTATUS expected = Live.Check(); expected != VQ_OK; expected = Live.Check()) {
      ASSERT_EQ(Edited.Save(), expected);
      for (const World::Listed& listed : Live.List()) {
        Field& design = Live.DesignOf(*listed.Entry);
        if (design.Is["compute"] != "0") SetProperty(Handle(*listed.Entry), &design, "value", "1 + A");
        if (design.Type == VQRTTYPE_KEYWORDS_FIELD && design.Is["keywords choices"] < "3") {
          SetProperty(Handle(*listed.Entry), &design, "keywords list", "one");
        }
      }
    }
    ASSERT_EQ(Edited.Save(), VQ_OK);
    Stored = Live;
    Touched.clear();
    CheckStored();
  }
  void CheckStored() {
    VQForm again = ReopenedForm(Edited);
    std::string names;
    std::set<std::string> placeholders;
    for (const World::Listed& listed : Stored.List()) {
      names += (names.empty() ? "" : "|") + listed.Entry->Name;
      placeholders.insert(listed.Entry->Name);
    }
    EXPECT_EQ(StoredText(Edited, "$Fields"), names.empty() ? "-" : names);
    for (int where = -1; where < 3; ++where) {
      for (int i = 0; i < 10; ++i) {
        const std::string name = Prefix(where) + std::to_string(i);
        EXPECT_EQ(again.HasItem(Store(name)), placeholders.contains(name) ? 1 : 0) << name;
      }
    }
    CheckForm(again, Stored);
  }
  void CopyForm() {
    if (!Touched.empty() || Live.Check() != VQ_OK) return;
    VQForm copy;
    ASSERT_EQ(Db.CreateForm(Edited, &copy), VQ_OK);
    {
      SCOPED_TRACE("copy");
      CheckForm(ReopenedForm(copy), Live);
    }
    ASSERT_EQ(Db.DeleteForm(&copy), VQ_OK);
  }
  void CopyField() {
    if (Live.Body.Fields.empty()) return;
    Field field = OneOf(Live.Body.Fields);
    const std::string name = AnyName(-1);
    if (field.Definition >= 0 || Find(Live.Body, name) != nullptr) return;
    VQFormField copy(Store("Copy"), field.Type);
    ASSERT_EQ(copy.Copy(Handle(field)), VQ_OK);
    ASSERT_EQ(copy.SetName(Store(name)), VQ_OK);
    ASSERT_EQ(Body.Append(copy), VQ_OK);
    field.Name = name;
    Live.Body.Fields.push_back(field);
  }
  // Not past changes of definitions, which are in no body.
  void UndoOrRedo() {
    if (std::any_of(Touched.begin(), Touched.end(), [](int each) { return each >= 0; })) return;
    const bool back = Below(3) != 0;
    const bool possible = back ? State > 0 : State + 1 < States.size();
    ASSERT_EQ(back ? Past->Undo() : Past->Redo(), possible ? VQ_OK : VQWARN_NOT_FOUND);
    if (!possible) return;
    State = back ? State - 1 : State + 1;
    Live.Body = States[State].second;
    ASSERT_EQ(Written(Body), States[State].first);
    DropUnheld();
  }

  void Step() {
    const std::vector<World::Listed> list = Live.List();
    const std::size_t what = Below(17);
    if (what < 4) return CreateIn(Body, Live.Body, -1);
    if (what == 4) return DeleteFrom(Body, Live.Body);
    if (what == 5) return PlaceIn(Body, Live.Body);
    if (what == 6) return AppendWords();
    if (what == 7) return CopyField();
    if (what == 8) return SetFormProperty(Edited, &Live.Form);
    if (list.empty()) return;
    const World::Listed& listed = list[Below(list.size())];
    if (what < 12) {
      Touch(listed);
      return SetAny(Handle(*listed.Entry), &Live.DesignOf(*listed.Entry));
    }
    if (what < 14) return Rename(listed);
    if (what < 16) return ShareOrNot(listed);
    return Point(listed);
  }
  void Walk() {
    const std::size_t what = Below(30);
    if (what < 5) return UndoOrRedo();
    if (what == 5) {
      ChangeSubform();
    } else if (what == 6) {
      ChangeDefinition();
    } else if (what == 7) {
      SaveBehindAnother();
    } else if (what == 8) {
      CopyForm();
    } else if (what < 11) {
      Save();
    } else if (what == 11) {
      Reopen();
    } else {
      ASSERT_EQ(Past->Begin(), VQ_OK);
      Step();
      ASSERT_EQ(Past->End(), VQ_OK);
    }
    DropUnheld();
    Record();
  }
  // Changes of what is no longer in the form are gone.
  void DropUnheld() {
    std::set<int> held, placed;
    for (const World::Listed& listed : Live.List(&placed)) held.insert(listed.Entry->Definition);
    for (int i = 0; i < 3; ++i) {
      if (placed.contains(i)) continue;
      Live.Subforms[i] = Stored.Subforms[i];
      Touched.erase(-1 - i);
    }
    for (int i = 0; i < static_cast<int>(Live.Definitions.size()); ++i) {
      if (held.contains(i)) continue;
      if (Live.Definitions[i].Name != Stored.Definitions[i].Name) Forget = true;
      Live.Definitions[i] = Stored.Definitions[i];
      Touched.erase(i);
    }
  }
  // What the body has become is a step of the history.
  void Record() {
    if (Forget) Watch();
    Forget = false;
    const std::string now = Written(Body);
    if (now == States[State].first) return;
    States.resize(++State);
    States.emplace_back(now, Live.Body);
  }

  static void CheckField(const VQFormField& handle, const Field& field, Field& design,
                         const Properties<VQRTObject>& all, bool fonts) {
    SCOPED_TRACE(field.Name);
    std::string own;
    ASSERT_EQ(handle.GetFormFieldBody()->ReadName(&own), VQ_OK);
    ASSERT_EQ(own, field.Name);
    ASSERT_EQ(handle.GetType(), field.Type);
    ASSERT_EQ(handle.IsShared(), field.Definition >= 0 ? 1 : 0);
    if (!fonts && field.Definition >= 0) return;
    ASSERT_EQ(TextOf(handle.GetName()), field.Name);
    for (const auto& [name, property] : all) {
      if (!vq::IsRTType(field.Type, property.Type) || (name == "font" && !fonts)) continue;
      ASSERT_EQ(property.Get(handle), design.Is[name]) << name;
    }
  }
  void CheckForm(const VQForm& form, World& world) {
    const std::vector<World::Listed> list = world.List();
    VQFormFieldArray fields;
    ASSERT_EQ(form.GetFormFields(&fields), VQ_OK);
    ASSERT_EQ(fields.GetCount(), list.size());
    for (unsigned long i = 0; i < fields.GetCount(); ++i) {
      CheckField(fields[i], *list[i].Entry, world.DesignOf(*list[i].Entry), OfFields, true);
      if (HasFatalFailure()) return;
    }
    for (const auto& [name, property] : OfForms) ASSERT_EQ(property.Get(form), world.Form[name]) << name;
  }
  // The body as records alone.
  void CheckParsed() {
    const VQRichText parsed = RichText(Written(Body));
    VQRTObject found;
    VQSTATUS status = parsed.FindFirst(VQRTTYPE_FORM_FIELD, &found);
    for (Field& field : Live.Body.Fields) {
      ASSERT_EQ(status, VQ_OK);
      CheckField(found, field, field, OfFields, false);
      if (HasFatalFailure()) return;
      const VQRTObject from = found;
      status = parsed.FindNext(from, VQRTTYPE_FORM_FIELD, &found);
    }
    EXPECT_EQ(status, VQWARN_NOT_FOUND);
  }

  Properties<VQRTObject> OfFields = FieldProperties();
  Properties<VQForm> OfForms = FormProperties();
  std::mt19937 Random;
  VQForm Edited;
  VQRichText Body;
  std::vector<unsigned long> SubformIDs;
  World Live, Stored;
  std::set<int> Touched;  // definitions by their index, subforms as -1 - index
  std::unique_ptr<VQRTHistory> Past;
  std::vector<std::pair<std::string, Part>> States;
  std::size_t State = 0;
  bool Forget = false;  // the history can't be gone back to
};

TEST_F(RandomForm, StaysLikeItsModel) {
  for (int step = 0; step < 1000 && !HasFailure(); ++step) {
    SCOPED_TRACE("step " + std::to_string(step));
    Walk();
    if (HasFailure()) break;
    CheckForm(Edited, Live);
    CheckParsed();
  }
  if (!HasFailure()) Save();
}

}  // namespace
