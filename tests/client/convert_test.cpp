// Import and export through the text converter, as a client sees them.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/vq/support/engine_fixture.h"
#include "vq/vq.h"

namespace {

using namespace vqtest;

class Convert : public HomeFixture {
 protected:
  void SetUp() override {
    WriteSettings("ConverterPath=" QUILLON_CONVERTERS
                  "\n"
                  "EDITIMP1=Other,0,missing,,.XYZ\n"
                  "EDITIMP2=Text,0,textconv,,TXT, .md\n"
                  "EDITIMP3=Bad,0," MISBEHAVING_CONVERTER
                  ",,.BAD\n"
                  "EDITEXP1=Text,0,textconv,,.TXT\n");
    ASSERT_EQ(Session.Init(), VQ_OK);
  }
  void TearDown() override {
    VQSetThrowAllErrors(0);
    EXPECT_EQ(Session.Term(1), VQ_OK);
  }
  VQString File(const std::string& name) const { return Home.Path(name).c_str(); }
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Home.Path(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(Home.Path(name), std::ios::binary).rdbuf();
    return bytes.str();
  }
  static VQSTATUS Import(VQRichText& text, const VQString& file, unsigned long options = 0) {
    VQRTCursor cursor;
    if (VQSTATUS status = text.GetEndCursor(&cursor)) return status;
    return text.Import(file, &cursor, options);
  }
  static VQSTATUS Export(VQRichText& text, const VQString& file) {
    VQRTCursor start, end;
    if (VQSTATUS status = text.GetCursor(&start)) return status;
    if (VQSTATUS status = text.GetEndCursor(&end)) return status;
    return text.Export(file, start, end);
  }
  static unsigned CountOf(const VQRichText& text, VQRTTYPE type) {
    unsigned count = 0;
    VQRTObject object;
    VQSTATUS status = text.FindFirst(type, &object);
    for (; status == VQ_OK; ++count) status = text.FindNext(VQRTObject(object), type, &object);
    return count;
  }

  VQQuillonSession Session;
};

TEST_F(Convert, ConvertersThatBreakTheContractChangeNothing) {
  const struct {
    const char* file;
    VQSTATUS status;
  } rows[] = {
      {"refuses.bad", 777},
      {"nothing.bad", VQERR_FILE_OPEN},
      {"source.bad", VQERR_FILE_OPEN},
      {"garbage.bad", VQERR_RT_INVALID},
      {"cut.bad", VQERR_RT_INVALID},
      {"empty.bad", VQERR_CORRUPTED},
  };
  const auto folder = std::filesystem::current_path();
  std::filesystem::current_path(Home.Path("."));
  Write("DEFAULT.CD", "somebody's own");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file);
    Write(row.file, "source");
    VQRichText text;
    ASSERT_EQ(text.Create(), VQ_OK);
    ASSERT_EQ(text.Append("before"), VQ_OK);
    const unsigned long size = text.GetSize();
    EXPECT_EQ(Import(text, File(row.file)), row.status);
    EXPECT_EQ(text.GetSize(), size);
    EXPECT_EQ(Read(row.file), "source");
    EXPECT_FALSE(std::filesystem::exists(Home.Path(std::string(row.file) + ".cd")));
  }
  EXPECT_EQ(Read("DEFAULT.CD"), "somebody's own");
  // The name that a converter is given is as good as any, where nobody's file has it.
  std::filesystem::remove("DEFAULT.CD");
  Write("default.bad", "source");
  VQRichText text;
  ASSERT_EQ(text.Create(), VQ_OK);
  EXPECT_EQ(Import(text, File("default.bad")), VQ_OK);
  EXPECT_FALSE(std::filesystem::exists("DEFAULT.CD"));
  std::filesystem::current_path(folder);
}

TEST_F(Convert, TextComesBackAsItWas) {
  const std::string longLine(50000, 'x'), accents = [] {
    std::string text;
    for (int i = 0; i < 30000; ++i) text += "\xC3\xA9";
    return text;
  }();
  const struct {
    const char* What;
    std::string In, Out;
    unsigned Paragraphs;
  } rows[] = {
      {"nothing", "", "", 0},
      {"no line end", "one", "one", 0},
      {"one line end", "one\n", "one\n", 1},
      {"lines of a paragraph", "a\nb\nc", "a\nb\nc", 0},
      {"an empty line", "a\n\nb\nc\n", "a\n\nb\nc\n", 3},
      {"empty lines alone", "\n\n\n", "\n\n\n", 3},
      {"other line ends", "a\r\nb\rc\r\n\r\nd", "a\nb\nc\n\nd", 2},
      {"byte order mark", "\xEF\xBB\xBFtext", "text", 0},
      {"half a mark", "\xEF\xBB", "\xEF\xBB", 0},
      {"invalid bytes", "a\xFF\x80z\xC3", "a\xFF\x80z\xC3", 0},
      {"a line longer than a run", longLine, longLine, 0},
      {"characters across runs", accents, accents, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    Write("in.txt", row.In);
    VQRichText text;
    ASSERT_EQ(text.Create(), VQ_OK);
    ASSERT_EQ(Import(text, File("in.txt")), VQ_OK);
    EXPECT_EQ(CountOf(text, VQRTTYPE_NEW_PARAGRAPH), row.Paragraphs);
    ASSERT_EQ(Export(text, File("out.txt")), VQ_OK);
    EXPECT_EQ(Read("out.txt"), row.Out);
  }
}

TEST_F(Convert, TextTellsWhatItHasNoSignsFor) {
  const struct {
    const char* What;
    const char* Html;
    const char* Text;
    const char* Report;
  } rows[] = {
      {"nothing", "a<br>b", "a\nb", ""},
      {"formats", "<b>a</b> b <font color=red>c</font>", "a b c", "formats left out: 2\n"},
      {"a link", "<a href='http://x/'>a</a><a>b</a>", "ab", "addresses left out: 1: http://x/\n"},
      {"a picture", "<img src=p.png alt=p>", "p", "pictures left out: 1\n"},
      {"a list and a heading", "<ul><li>a<li>b</ul><h1>c</h1>", "a\nb\nc",
       "style names left out: 3: * Text\nformats left out: 1\n"
       "bullets and numbers of lists left out: 2\n"},
      {"hidden and centred", "<p hidden>a<p align=center>b", "a\nb",
       "hidden paragraphs are shown: 1\nalignments and indentations left out: 1\n"},
      {"a place", "<p id=x>a", "a", "names of places left out: 1: x\n"},
      {"a table", "a<table><tr><td>b<td>c<tr><td>d<p>e<td></table>f", "a\nb\tc\t\nd\ne\t\t\n\nf",
       "style names left out: 4: = Text\ntables became lines with tabs: 1\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    Write("in.html", row.Html);
    VQRichText text;
    VQRTCursor start, end;
    VQText lines;
    ASSERT_EQ(text.Create(), VQ_OK);
    ASSERT_EQ(text.GetCursor(&end), VQ_OK);
    ASSERT_EQ(text.Import(File("in.html"), "htmlconv", &end, 0, nullptr), VQ_OK);
    ASSERT_EQ(text.GetCursor(&start), VQ_OK);
    ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
    ASSERT_EQ(text.Export(File("out.txt"), start, end, 0, &lines), VQ_OK);
    std::string report;
    for (unsigned long i = 0; i < lines.GetCount(); ++i) report += TextOf(VQString(lines[i])) + "\n";
    EXPECT_EQ(Read("out.txt"), row.Text);
    EXPECT_EQ(report, row.Report);
  }
}

TEST_F(Convert, OptionsMakeEachLineAParagraph) {
  Write("in.md", "a\nb\nc\n");
  VQRichText text;
  ASSERT_EQ(text.Create(), VQ_OK);
  ASSERT_EQ(Import(text, File("in.md"), 1), VQ_OK);
  EXPECT_EQ(CountOf(text, VQRTTYPE_NEW_PARAGRAPH), 3U);
  ASSERT_EQ(Import(text, File("in.md")), VQ_OK) << "at the end of what is there";
  VQString plain;
  ASSERT_EQ(text.GetText(&plain), VQ_OK);
  EXPECT_EQ(TextOf(plain), "a\nb\nc\na\nb\nc\n");
}

TEST_F(Convert, RefusalsLeaveTextAndFilesAlone) {
  VQRichText text;
  ASSERT_EQ(text.Create(), VQ_OK);
  ASSERT_EQ(text.Append("kept"), VQ_OK);
  Write("in.abc", "x");
  Write("in.xyz", "x");
  Write("out.txt", "old");
  EXPECT_EQ(Import(text, ""), VQERR_IMPORT_NAME);
  EXPECT_EQ(Import(text, File("in.abc")), VQERR_NO_IMPORT_LIBRARY);
  EXPECT_EQ(Import(text, File("in.xyz")), static_cast<VQSTATUS>(ENG_ERR_LOAD_LIBRARY));
  EXPECT_EQ(Import(text, File("absent.txt")), static_cast<VQSTATUS>(ENG_ERR_FILE_OPEN));
  EXPECT_EQ(text.Import(File("in.abc"), nullptr), VQERR_NO_IMPORT_LIBRARY);
  EXPECT_EQ(Export(text, ""), VQERR_EXPORT_NAME);
  EXPECT_EQ(Export(text, File("out.doc")), VQERR_NO_EXPORT_LIBRARY);
  EXPECT_EQ(Export(text, File("absent/out.txt")), static_cast<VQSTATUS>(ENG_ERR_FILE_WRITE));
  VQString plain;
  ASSERT_EQ(text.GetText(&plain), VQ_OK);
  EXPECT_EQ(TextOf(plain), "kept");
  EXPECT_EQ(Read("out.txt"), "old");
  ASSERT_EQ(Export(text, File("out.txt")), VQ_OK);
  EXPECT_EQ(Read("out.txt"), "kept");
  std::filesystem::create_symlink("out.txt", Home.Path("link.txt"));
  ASSERT_EQ(text.Append(" more"), VQ_OK);
  ASSERT_EQ(Export(text, File("link.txt")), VQ_OK);
  EXPECT_EQ(Read("out.txt"), "kept more") << "links and devices are written through, never replaced";
}

}  // namespace
