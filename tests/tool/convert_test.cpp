// Import and export of Markdown and HTML, as a user runs them.
#include "tests/tool/commands_fixture.h"

namespace tool_test {
namespace {

TEST_F(Commands, MarkdownAndHtmlGoInAndOut) {
  Write("in/page.md", "# Top *em*\n\n- a\n- b\n\nx\ny <kbd>k</kbd><!-- c -->\n");
  Write("in/page.html", "<p>plain <b>bold</b><script>x</script>");
  Write("plain.md", "# no *heading*\n");
  const CommandRow rows[] = {
      {"create s.vlt", 0, ""},
      {"import s.vlt in", 0, "not carried: page.md: raw HTML left out: 1, first in line 7: <!-- c -->"},
      {"import s.vlt plain.md --format text", 0, "imported 1 documents"},
      {"import s.vlt plain.md --format word", 2, "not in {"},
      {"--json import s.vlt in/page.html", 0, R"("notCarried":[{"subject":"page.html","lines":["elements left out)"},
      {"show s.vlt page.md --text", 0, "Top em"},
      {"show s.vlt plain.md --text", 0, "# no *heading*"},
      {"check s.vlt", 0, "0 faults"},
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

}  // namespace
}  // namespace tool_test
