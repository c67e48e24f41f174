// Forms, as a user runs the commands.
#include "tests/tool/commands_fixture.h"
#include "vq/vq.h"

namespace tool_test {
namespace {

class FormCommands : public Commands {
 protected:
  // What another program would store: `change` gets the records of the form's rich text, and where field B stands.
  template <typename Change>
  void StoreBody(Change change) {
    VQQuillonSession session;
    ASSERT_EQ(session.Init(), VQ_OK);
    {
      VQDatabase database;
      VQFormArray forms;
      ASSERT_EQ(session.GetDatabase((folder_ / "s.vlt").c_str(), &database), VQ_OK);
      ASSERT_EQ(database.Open(), VQ_OK);
      ASSERT_EQ(database.GetForms(&forms), VQ_OK);
      VQSlate form(forms[0]);
      VQItem body;
      ASSERT_EQ(form.Open(), VQ_OK);
      ASSERT_EQ(form.GetItem("$Body", &body), VQ_OK);
      std::string records(body.GetValueSize() - 2, '\0');
      ASSERT_EQ(body.Read(0, records.size(), records.data()), VQ_OK);
      std::size_t field = records.find("\x8A\xFF");
      while (field != std::string::npos && records[field + 36] != 'B') field = records.find("\x8A\xFF", field + 1);
      ASSERT_NE(field, std::string::npos);
      change(records, field);
      const VQSTATUS changed =
          form.CreateItem("$Body", TYPE_COMPOSITE, records.data(), records.size(), 0, VQITEMOPTION_REPLACE);
      ASSERT_EQ(changed, VQ_OK);
      ASSERT_EQ(form.GetSlateBody()->VQSlateBody::Save(0), VQ_OK);
    }
    ASSERT_EQ(session.Term(), VQ_OK);
  }
};

TEST_F(FormCommands, AFormIsMadeShownAndUsed) {
  Import();
  const CommandRow rows[] = {
      {"forms s.vlt", 0, ""},
      {"form-create s.vlt 'Paper|p' --field Subject --field 'Rank:number=1' --field 'Twice:number,computed=Rank * 2' "
       "--field Kind:keywords,list --choices Kind=essay,note --translate 'Subject=@Trim(Subject)' "
       "--validate 'Rank=@If(Rank > 0; @Success; \"Rank must be positive\")'",
       0, ""},
      {"forms s.vlt", 0, "\tform\tPaper\t4 fields\n"},
      {"--json forms s.vlt", 0, R"("name":"Paper","alias":"p","default":false,"fields":4}])"},
      {"form s.vlt p", 0,
       "Subject\ttext\teditable\ttranslation: @Trim(Subject)\n"
       "Rank\tnumber\teditable\tvalue: 1 | validation: @If(Rank > 0; @Success; \"Rank must be positive\")\n"
       "Twice\tnumber\tcomputed\tvalue: Rank * 2\nKind\tkeywords\teditable, list\tchoices: essay, note\n"},
      {"--json form s.vlt Paper", 0,
       R"({"name":"Twice","kind":"number","compute":"computed","list":false,"shared":false,"formulas":{"value":"Rank * 2"},"choices":[],"help":""})"},
      {"form s.vlt None", 3, "no form is called \"None\""},
      {"compute s.vlt one.txt", 1, "form cannot be found"},
      {"compute s.vlt one.txt --form None", 3, "no form is called \"None\""},
      {"compute s.vlt one.txt --form p", 0, "document 8 computed\n"},
      {"show s.vlt 8 --items", 0, "Twice"},
      {"set s.vlt 8 Rank number:-1", 0, ""},
      {"compute s.vlt 8", 1, "quillon: field Rank: Rank must be positive"},
      {"--json compute s.vlt deep/two.md --form Paper", 0, "{\"document\":4}\n"},
      {"form-create s.vlt Paper --field A", 1, "A form with the specified name already exists"},
      {"form-create s.vlt Bad --field A --field 1A", 1, "quillon: 1A: Illegal characters in the field name"},
      {"form-create s.vlt Bad --field A --field A", 1, "already a member of the form"},
      {"form-create s.vlt '' --field A", 2, "a form needs a name"},
      {"form-create s.vlt '|a' --field A", 2, "a form needs a name"},
      {"form-create s.vlt Bad --field A --field :number=1", 2, "a field needs a name"},
      {"form-create s.vlt Bad --field ''", 2, "a field needs a name"},
      {"form-create s.vlt Bad --field A:loud", 2, "no field option is called \"loud\""},
      {"form-create s.vlt Bad --field A --validate B=1", 2, "the form has no field \"B\""},
      {"form-create s.vlt Bad --field A --choices A=1", 2, "is no keywords field"},
      {"form-create s.vlt Bad --field A:computed", 1, "No formula specified for computed field"},
      {"form-create s.vlt Bad --field 'A=1 + )'", 1, "  1 + )\n      ^"},
      {"form s.vlt Bad", 3, "no form is called"},
      {"compute s.vlt nothing", 3, ""},
  };
  RunRows(rows);
}

// The bytes of a stored form changed by another hand: it is reported, the others are shown.
TEST_F(FormCommands, DamageIsReportedAndTheRestShown) {
  const CommandRow made[] = {
      {"create s.vlt", 0, ""},
      {"form-create s.vlt First --field A --field B", 0, ""},
      {"form-create s.vlt Second --field C", 0, ""},
      {"form s.vlt First", 0, "A\ttext"},
  };
  RunRows(made);
  std::string bytes = Read("s.vlt");
  std::size_t field = bytes.find("\x8A\xFF");
  while (field != std::string::npos && bytes[field + 36] != 'A') field = bytes.find("\x8A\xFF", field + 1);
  ASSERT_NE(field, std::string::npos);
  bytes[field + 31] = '\x7F';
  Write("s.vlt", bytes);
  const CommandRow form_rows[] = {
      {"forms s.vlt", 1, "quillon: form 1 of 2: "},
      {"forms s.vlt", 1, "Second\t1 fields"},
      {"--json forms s.vlt", 1, R"("name":"Second","alias":"","default":false,"fields":1}])"},
      {"form s.vlt First", 1, "quillon: "},
  };
  RunRows(form_rows);
}

TEST_F(FormCommands, OneDamagedFieldIsReportedAndTheRestShown) {
  struct Row {
    const char* what;
    unsigned at;  // in the record
    const char* bytes;
    const char* report;
  };
  const Row rows[] = {
      {"a length that lies", 31, "\x7F", "quillon: field 2: "},
      {"a shared field without its definition", 5, "\x08", "quillon: field 2 (B): "},
      {"a name of other bytes", 36, "\n", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const CommandRow made[] = {{"create s.vlt", 0, ""}, {"form-create s.vlt F --field A --field B --field C", 0, ""}};
    RunRows(made);
    StoreBody([&](std::string& records, std::size_t field) { records.replace(field + row.at, 1, row.bytes); });
    const Outcome shown = Run("form s.vlt F"), json = Run("--json form s.vlt F");
    EXPECT_EQ(shown.code, *row.report == '\0' ? 0 : 1);
    EXPECT_THAT(shown.output, testing::AllOf(HasSubstr("A\ttext"), HasSubstr("C\ttext"), HasSubstr(row.report)));
    EXPECT_THAT(json.output, testing::AllOf(HasSubstr("\"name\":\"C\""), testing::EndsWith("}]}\n")));
    fs::remove(folder_ / "s.vlt");
  }
}

}  // namespace
}  // namespace tool_test
