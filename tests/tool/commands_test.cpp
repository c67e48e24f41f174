// The command-line client, run as a user runs it: arguments in, output and exit code out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

struct Outcome {
  int code;
  std::string output;  // both streams
};

class Commands : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "quillon-tool-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    setenv("QUILLON_HOME", folder_.c_str(), 1);
    ASSERT_EQ(Run("init . --converters " QUILLON_CONVERTERS).code, 0);
  }
  void TearDown() override { fs::remove_all(folder_); }

  Outcome Run(const std::string& arguments) const {
    const std::string line = "cd " + folder_.string() + " && " QUILLON_TOOL " " + arguments + " 2>&1";
    FILE* pipe = popen(line.c_str(), "r");
    Outcome outcome{-1, {}};
    char buffer[4096];
    for (std::size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) outcome.output.append(buffer, count);
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
  }

  void Write(const std::string& name, const std::string& text) const {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  std::string Read(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // A store of two documents with a title, a heading and a quotation each.
  void Import() const {
    Write("in/one.txt", "A TITLE\n\nThe colour of the first colour.\nHEADING\n    quoted colour\nend\n");
    Write("in/deep/two.md", "Second\n\nnothing here\n");
    Write("in/none.bin", std::string("\0\1", 2));
    ASSERT_EQ(Run("create s.vlt --title Papers").code, 0);
    const Outcome outcome = Run("import s.vlt in");
    ASSERT_EQ(outcome.code, 0) << outcome.output;
    ASSERT_THAT(outcome.output, HasSubstr("imported 2 documents"));
  }

  fs::path folder_;
};

struct CommandRow {
  const char* arguments;
  int code;
  const char* output;
};

TEST_F(Commands, ExitCodesAndWords) {
  Import();
  Write("no.vlt", "this is no store at all, but long enough to look at");
  Write("cut.vlt", Read("s.vlt").substr(0, 5000));
  const CommandRow rows[] = {
      {"", 2, "subcommand"},
      {"fly s.vlt", 2, "subcommand"},
      {"replace s.vlt one.txt colour", 2, "replacement"},
      {"replace s.vlt one.txt '' x", 2, "empty word"},
      {"ls none.vlt", 1, "does not exist (0x"},
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
      {"show s.vlt one.txt --text", 0, "The colour of the first colour."},
      {"show s.vlt one.txt", 0, "Categories (text"},
      {"show s.vlt deep/two.md", 0, "deep; md"},
      {"show s.vlt one.txt --records", 0, "SIG_CD_PABDEFINITION"},
      {"info s.vlt", 0, "title: Papers"},
      {"check s.vlt", 0, "2 documents checked, 0 faults"},
  };
  for (const CommandRow& row : rows) {
    const Outcome outcome = Run(row.arguments);
    EXPECT_EQ(outcome.code, row.code) << row.arguments << ": " << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr(row.output)) << row.arguments;
  }
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
