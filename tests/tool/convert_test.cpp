// Import and export of Markdown and HTML, as a user runs them.
#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

TEST_F(Commands, MarkdownAndHtmlGoInAndOut) {
  Write("in/page.md", "# Top *em*\n\n- a\n- b\n\nx\ny <kbd>k</kbd><!-- c -->\n");
  Write("in/page.html", "<p>plain <b>bold</b><script>x</script>");
  Write("plain.md", "# no *heading*\n");
  Write("wide.html", std::string("\xFF\xFE<\0p\0>\0\xE9\0", 10));
  const CommandRow rows[] = {
      {"create s.vlt", 0, ""},
      {"import s.vlt in", 0, "not carried: page.md: raw HTML left out: 1, first in line 7: <!-- c -->"},
      {"import s.vlt plain.md --format text", 0, "imported 1 documents"},
      {"import s.vlt plain.md --format word", 2, "not in {"},
      {"--json import s.vlt in/page.html", 0, R"("notCarried":[{"subject":"page.html","lines":["elements left out)"},
      {"import s.vlt wide.html", 0, "imported 1 documents"},
      {"show s.vlt wide.html --text", 0, "\u00E9"},
      {"show s.vlt page.md --text", 0, "Top em"},
      {"show s.vlt plain.md --text", 0, "# no *heading*"},
      {"check s.vlt", 0, "0 faults"},
      {"export s.vlt page.md ''", 2, "needs a name"},
      {"export s.vlt page.md out.html", 0, ""},
      {"export s.vlt page.md out.md", 0, ""},
      {"export s.vlt page.md out.x --format html", 0, ""},
      {"--json export s.vlt page.md out.html", 0, R"("notCarried":[])"},
  };
  RunRows(rows);
  EXPECT_THAT(Read("out.html"),
              HasSubstr("<h1>Top <em>em</em></h1>\n<ul>\n<li>a</li>\n<li>b</li>\n</ul>\n<p>x y <code>"));
  EXPECT_THAT(Read("out.md"), HasSubstr("# Top *em*\n\n  - a\n  - b\n\nx y `k`\n"));
  EXPECT_THAT(Read("out.x"), HasSubstr("<title>out</title>"));
}

TEST_F(Commands, PicturesComeAlong) {
  Write("in/page.md",
        "![a](img/one.png) ![b](two%20two.png) ![c](../secret.png) ![d](link.png) ![e](http://x/y.png)\n");
  Write("in/img/one.png", "one");
  Write("in/two two.png", "two");
  Write("secret.png", "secret");
  fs::create_symlink(folder_ / "secret.png", folder_ / "in/link.png");
  const CommandRow rows[] = {
      {"create s.vlt", 0, ""},
      {"import s.vlt in/page.md", 0, "imported 1 documents"},
      {"export s.vlt page.md out/none.html --no-files", 1, ""},
  };
  RunRows(rows);
  fs::create_directory(folder_ / "out");
  Write("out/two two.png", "mine");
  const Outcome outcome = Run("export s.vlt page.md out/page.html");
  EXPECT_THAT(outcome.output, HasSubstr("not carried: the file two two.png: its place is taken"));
  EXPECT_EQ(Read("out/img/one.png"), "one");
  EXPECT_EQ(Read("out/two two.png"), "mine");
  EXPECT_FALSE(fs::exists(folder_ / "out/link.png")) << "nothing from outside the folder was attached";
  EXPECT_EQ(Read("secret.png"), "secret");
  EXPECT_THAT(Read("out/page.html"), HasSubstr("<img src=\"img/one.png\" alt=\"a\" />"));
}

TEST_F(Commands, FilesOfAnyNameLeaveNothingOutsideTheFolder) {
  const std::string absolute = (folder_ / "absolute.txt").string();
  const struct {
    std::string Name;
    const char* Reason;  // empty for a file that is written
  } rows[] = {
      {"../up.txt", "its name leads out of the folder"},
      {absolute, "its name leads out of the folder"},
      {"..", "its name leads out of the folder"},
      {"sub/", "its name leads out of the folder"},
      {"way/up.txt", "its name leads out of the folder"},
      {std::string(300, 'a'), "File name too long"},
      {"taken.txt", "its place is taken"},
      {"page.html", "its place is taken"},
      {"NUL", ""},
      {"sub/a b%20c.txt", ""},
  };
  Write("page.md", "text\n");
  Write("some.txt", "some");
  Write("out/taken.txt", "mine");
  fs::create_directory_symlink(folder_, folder_ / "out/way");
  ASSERT_EQ(Run("create s.vlt").code, 0);
  ASSERT_EQ(Run("import s.vlt page.md").code, 0);
  for (const auto& row : rows) {
    const Outcome outcome = Run("attach s.vlt page.md some.txt --show-in Body --name '" + row.Name + "'");
    ASSERT_EQ(outcome.code, 0) << outcome.output;
  }
  const Outcome outcome = Run("export s.vlt page.md out/page.html");
  EXPECT_EQ(outcome.code, 0) << outcome.output;
  for (const auto& row : rows) {
    if (*row.Reason != '\0') {
      EXPECT_THAT(outcome.output, HasSubstr("the file " + row.Name + ": " + row.Reason));
    } else {
      EXPECT_EQ(Read("out/" + row.Name), "some") << row.Name;
    }
  }
  EXPECT_FALSE(fs::exists(folder_ / "up.txt"));
  EXPECT_FALSE(fs::exists(absolute));
  EXPECT_EQ(Read("out/taken.txt"), "mine");
  EXPECT_THAT(Read("out/page.html"), HasSubstr("href=\"sub/a%20b%2520c.txt\""));
}

// A file that is replaced keeps its mode, a link stays one, and no name is too long.
TEST_F(Commands, ExportReplacesFilesAsTheyAre) {
  const std::string longest = std::string(250, 'n') + ".html";
  Write("page.md", "text\n");
  Write("shut.html", "old");
  fs::permissions(folder_ / "shut.html", fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("shut.html", folder_ / "link.html");
  const CommandRow rows[] = {
      {"create s.vlt", 0, ""},
      {"import s.vlt page.md", 0, ""},
      {"export s.vlt page.md link.html", 0, ""},
  };
  RunRows(rows);
  EXPECT_EQ(Run("export s.vlt page.md " + longest).code, 0);
  EXPECT_TRUE(fs::is_symlink(folder_ / "link.html"));
  EXPECT_THAT(Read("shut.html"), HasSubstr("<p>text</p>"));
  EXPECT_EQ(fs::status(folder_ / "shut.html").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_THAT(Read(longest), HasSubstr("<p>text</p>"));
}

}  // namespace
}  // namespace tool_test
