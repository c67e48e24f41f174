// The command-line client, run as a user runs it: arguments in, output and exit code out.
#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

TEST_F(Commands, ExitCodesAndWords) {
  Import();
  Write("no.vlt", "this is no store at all, but long enough to look at");
  Write("cut.vlt", Read("s.vlt").substr(0, 5000));
  const CommandRow rows[] = {
      {"", 2, "subcommand"},
      {"fly s.vlt", 2, "quillon: no subcommand is called \"fly\""},
      {"replace s.vlt one.txt colour", 2, "replacement"},
      {"replace s.vlt one.txt '' x", 2, "empty word"},
      {"ls none.vlt", 1, "quillon: none.vlt: The database file does not exist (0x"},
      {"ls no.vlt", 1, "not a database (0x"},
      {"ls cut.vlt", 1, "damaged (0x"},
      {"check cut.vlt", 4, "store: The database is damaged"},
      {"--json check cut.vlt", 4, "{\"documents\":0,\"faults\":[{\"document\":0"},
      {"--json create new.vlt", 0, "new.vlt\"}"},
      {"--config /nowhere ls s.vlt", 1, "quillon init"},
      {"create s.vlt", 1, "exists"},
      {"init .", 1, "--force"},
      {"show s.vlt 4711", 3, "no document 4711"},
      {"show s.vlt one.txt --records --item Subject", 3, "no rich text item"},
      {"show s.vlt one.txt --text --item Subject", 3, "no rich text item"},
      {"show s.vlt one.txt --text --item Missing", 3, "no rich text item"},
      {"replace s.vlt two.md colour color", 3, "no document two.md"},
      {"replace s.vlt deep/two.md colour color", 3, "isn't in the text"},
      {"import s.vlt nowhere", 3, "no file or folder"},
      {"import s.vlt s.vlt", 3, "no text files there: s.vlt is none"},
      {"import s.vlt /dev/null", 3, "no text files there: /dev/null is none"},
      {"export s.vlt one.txt nowhere/a.html", 1, "quillon: nowhere/a.html: The file could not be written (0x"},
      {"show s.vlt one.txt --text", 0, "The colour of the first colour."},
      {"show s.vlt one.txt", 0, "Categories (text"},
      {"show s.vlt deep/two.md", 0, "deep; md"},
      {"show s.vlt one.txt --records", 0, "SIG_CD_PABDEFINITION"},
      {"info s.vlt", 0, "title: Papers"},
      {"check s.vlt", 0, "2 documents checked, 0 faults"},
  };
  RunRows(rows);
}

TEST_F(Commands, ReplaceChangesOneRecordAndNothingElse) {
  Import();
  fs::copy_file(folder_ / "s.vlt", folder_ / "before.vlt");
  EXPECT_EQ(Run("diff before.vlt s.vlt").code, 0);
  EXPECT_EQ(Run("replace s.vlt one.txt colour color").code, 0);
  const Outcome outcome = Run("diff before.vlt s.vlt");
  EXPECT_EQ(outcome.code, 4) << outcome.output;
  EXPECT_THAT(outcome.output, HasSubstr("Body: 1 -> 1 records changed"));
  EXPECT_THAT(outcome.output, HasSubstr("1 documents changed, 0 added, 0 removed, 1 the same"));
  EXPECT_THAT(Run("show s.vlt one.txt --text").output, HasSubstr("The color of the first colour."));
}

TEST_F(Commands, LongBodiesAreReadToTheirEnd) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += "line number " + std::to_string(i) + " of many\n";
  Write("long.txt", text + "the last word\n");
  ASSERT_EQ(Run("create s.vlt").code, 0);
  ASSERT_EQ(Run("import s.vlt long.txt").code, 0);
  fs::copy_file(folder_ / "s.vlt", folder_ / "before.vlt");
  EXPECT_THAT(Run("show s.vlt long.txt").output, testing::ContainsRegex("Body .*\nBody .*\nBody "));
  EXPECT_THAT(Run("show s.vlt long.txt --records").output, HasSubstr("\"the last word\""));
  EXPECT_EQ(Run("replace s.vlt long.txt last first").code, 0);
  EXPECT_THAT(Run("diff before.vlt s.vlt").output, HasSubstr("Body: 1 -> 1 records changed"));
  ASSERT_EQ(Run("export s.vlt long.txt out.txt").code, 0);
  EXPECT_EQ(Read("out.txt"), text + "the first word\n");
}

struct ReplaceRow {
  const char* arguments;  // behind the document
  const char* before;
  const char* after;
};

TEST_F(Commands, ReplaceAll) {
  ASSERT_EQ(Run("create s.vlt").code, 0);
  const ReplaceRow rows[] = {
      {"ab x --all", "ababab", "xxx"},
      {"a aa --all", "aXa", "aaXaa"},
      {"WORD w --all --ignore-case", "Word word WORDs", "w w ws"},
      {"b '' --all", "abcb", "ac"},
      {"ü u --all", "für über", "fur uber"},
  };
  int number = 0;
  for (const ReplaceRow& row : rows) {
    const std::string name = "r" + std::to_string(number++) + ".txt";
    Write(name, std::string("top\n\nq ") + row.before + " z\n");
    ASSERT_EQ(Run("import s.vlt " + name).code, 0);
    EXPECT_EQ(Run("replace s.vlt " + name + " " + row.arguments).code, 0) << row.before;
    EXPECT_THAT(Run("show s.vlt " + name + " --text").output, HasSubstr(std::string("q ") + row.after + " z\n"));
  }
}

TEST_F(Commands, TextComesBackAsItWentIn) {
  Import();
  ASSERT_EQ(Run("export s.vlt one.txt out.txt").code, 0);
  EXPECT_EQ(Read("out.txt"), Read("in/one.txt"));
  ASSERT_EQ(Run("export s.vlt one.txt out.unknown").code, 1);
  ASSERT_EQ(Run("export s.vlt one.txt out.unknown --text").code, 0);
  EXPECT_EQ(Read("out.unknown"), Read("in/one.txt"));
}

}  // namespace
}  // namespace tool_test
