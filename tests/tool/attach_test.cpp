// Files attached to documents and written out again, as a user does it.
#include <sys/stat.h>

#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

TEST_F(Commands, FilesGoInAndOut) {
  Import();
  const std::string bytes = std::string(70000, 'x') + '\0' + "end";
  Write("plan.pdf", bytes);
  Write("empty", "");
  const CommandRow rows[] = {
      {"attach s.vlt one.txt plan.pdf empty", 0, "plan.pdf: 70004 bytes\nempty: 0 bytes"},
      {"attach s.vlt one.txt plan.pdf --compress --show-in Body", 0, "plan(1).pdf: 70004 bytes"},
      {"attach s.vlt one.txt plan.pdf --name ../../evil", 0, "../../evil: "},
      {"--json attach s.vlt one.txt empty --name n", 0, "[{\"name\":\"n\",\"size\":0}]"},
      {"attach s.vlt one.txt plan.pdf empty --name n", 2, "one name"},
      {"attach s.vlt one.txt empty none", 3, "no file none"},
      {"attach s.vlt one.txt .", 3, "no file ."},
      {"attach s.vlt nobody empty", 3, "no document"},
      {"attach s.vlt one.txt empty --show-in Nothing", 3, "no rich text item"},
      {"show s.vlt one.txt", 0, "$FILE (object, "},
      {"show s.vlt one.txt", 0, "attachment plan(1).pdf, 70004 bytes, "},
      {"show s.vlt one.txt", 0, ", compressed, in rich text"},
      {"--json show s.vlt one.txt", 0, "\"attachment\":\"../../evil\",\"path\":\"plan.pdf\",\"size\":70004"},
      {"show s.vlt one.txt --text", 0, "plan(1).pdf - 70004 bytes"},
      {"detach s.vlt one.txt none", 3, "no attachment none"},
      {"detach s.vlt one.txt plan.pdf", 1, "plan.pdf exists"},
      {"detach s.vlt one.txt plan.pdf -o out.pdf", 0, "out.pdf"},
      {"detach s.vlt one.txt 'plan(1).pdf' -o out.pdf", 0, "out.pdf"},
      {"detach s.vlt one.txt empty -o nowhere/empty", 1, "0x"},
      {"detach s.vlt one.txt plan.pdf -o link", 0, "target"},
      {"detach s.vlt one.txt plan.pdf -o here", 1, "0x"},
      {"detach s.vlt one.txt plan.pdf -o piped", 0, ""},
      {"detach s.vlt one.txt empty -o /dev/stdout | wc -c", 0, "0\n"},
      {"detach s.vlt one.txt plan.pdf -o sink", 0, ""},
      {"detach s.vlt one.txt plan.pdf -o /dev/full", 1, "cannot write to /dev/full"},
      {"detach s.vlt one.txt ../../evil", 0, "evil"},
      {"check s.vlt", 0, "2 documents checked, 0 faults"},
      {"compact s.vlt", 0, "bytes after"},
      {"detach s.vlt one.txt 'plan(1).pdf'", 0, "plan(1).pdf"},
  };
  Write("target", "old");
  fs::create_symlink("target", folder_ / "link");
  fs::create_symlink(".", folder_ / "here");
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", folder_ / "piped");
  fs::create_symlink("/dev/null", folder_ / "sink");
  FILE* reader = popen(("cd " + folder_.string() + " && timeout 60 cat pipe >got").c_str(), "r");
  RunRows(rows);
  EXPECT_EQ(pclose(reader), 0);
  EXPECT_TRUE(Read("target") == bytes && fs::is_symlink(folder_ / "link"));
  EXPECT_TRUE(Read("out.pdf") == bytes && Read("got") == bytes);
  EXPECT_TRUE(fs::is_fifo(folder_ / "pipe") && fs::is_symlink(folder_ / "piped") && fs::is_symlink(folder_ / "sink"));
  EXPECT_TRUE(Read("evil") == bytes) << "in this folder, under the last part of the name";
  EXPECT_TRUE(Read("plan(1).pdf") == bytes);
  EXPECT_EQ(Run("show s.vlt one.txt").output.find("attachment n/"), std::string::npos);
}

TEST_F(Commands, NamesThatAreNoFileNames) {
  Import();
  Write("f", "x");
  for (const char* name : {"..", "a/..", "a/", "'a\tb'", "'\\.'"}) {
    const std::string quoted = name;
    ASSERT_EQ(Run("attach s.vlt one.txt f --name " + quoted).code, 0) << name;
    EXPECT_EQ(Run("detach s.vlt one.txt " + quoted).code, 2) << name;
  }
}

}  // namespace
}  // namespace tool_test
