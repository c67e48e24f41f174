// HTML in and out: what is carried, and what the report tells of the rest.
#include "tests/converters/converter_fixture.h"

namespace {

using namespace converter_test;
using testing::HasSubstr;

struct HtmlRow {
  const char* What;
  const char* In;
  const char* Out;
  const char* Report = "";
};

void ExpectRows(std::span<const HtmlRow> rows) {
  for (const HtmlRow& row : rows) {
    SCOPED_TRACE(row.What);
    const Converted records = FromHtml(row.In);
    ASSERT_EQ(records.Status, 0U);
    EXPECT_EQ(records.Report, row.Report);
    const Converted html = ToHtml(records.Bytes);
    EXPECT_EQ(html.Bytes, row.Out);
    EXPECT_EQ(html.Report, "");
    // What came out once comes out again.
    EXPECT_EQ(ToHtml(FromHtml(html.Bytes).Bytes).Bytes, row.Out);
  }
}

TEST(HtmlText, IsCarried) {
  const HtmlRow rows[] = {
      {"a space ahead of nothing", "<p><b><i>a </i> </b> </p>", "<p><strong><em>a</em></strong></p>\n"},
      {"elements that hold nothing", "a<wbr>b<wbr/>c</wbr>d", "<p>abcd</p>\n"},
      {"line ends of all kinds", "<pre>\r\n\r\na\rb\r\n</pre><p>c\r\nd",
       "<pre><code>\na\nb\n</code></pre>\n<p>c d</p>\n"},
      {"spaces fold", " <p> a \n b <b> c </b> d </p> ", "<p>a b <strong>c </strong>d</p>\n"},
      {"formats", "<i>i</i><b>b</b><u>u</u><s>s</s><sup>x</sup><sub>y</sub><tt>t</tt>",
       "<p><em>i</em><strong>b</strong><u>u</u><s>s</s><sup>x</sup><sub>y</sub><code>t</code></p>\n"},
      {"nesting stays", "<b><i>x</i></b> <i><b>x</b> y</i> <u><b>1</b>2</u>",
       "<p><strong><em>x</em></strong> <em><strong>x</strong> y</em> <u><strong>1</strong>2</u></p>\n"},
      {"formats by style", "<span style='font-weight:bold;text-decoration:underline'>a</span>",
       "<p><strong><u>a</u></strong></p>\n"},
      {"size, colour, face",
       "<p>plain text here<font color=red face=serif>x</font><span style='font-size:14pt'>y</span>",
       "<p>plain text here<span style=\"font-family:serif;color:#ff0000\">x</span>"
       "<span style=\"font-size:14pt\">y</span></p>\n"},
      {"formats of nothing", "<h1><b></b><i><a href=x>a</a></i></h1>", "<h1><em><a href=\"x\">a</a></em></h1>\n"},
      {"raised excludes lowered", "<sup>a<sub>b</sub></sup>", "<p><sup>a</sup><sub>b</sub></p>\n"},
      {"breaks", "a<br>b<br><br>c<br>", "<p>a<br />\nb<br />\n<br />\nc</p>\n"},
      {"addresses with space around, and lines", "<a href=' http://x/\na\tb '>a</a><img src='\nc.png ' alt=d>",
       "<p><a href=\"http://x/ab\">a</a><img src=\"c.png\" alt=\"d\" /></p>\n"},
      {"a picture of no address", "<img src='' alt=a>", "<p><img src=\"\" alt=\"a\" /></p>\n"},
      {"formats around paragraphs", "<b><p>a<p>b</b><p>c</p><i>d<p title='</i>'>e</p></i>f<u><p>g</u>h",
       "<p><strong>a</strong></p>\n<p><strong>b</strong></p>\n<p>c</p>\n<p><em>d</em></p>\n<p><em>e</em></p>\n"
       "<p>f</p>\n<p>gh</p>\n"},
      {"formats that begin ahead of a table", "<b>f<table><tr><td><p>g<td>h</table><p>i</b>",
       "<p><strong>f</strong></p>\n<table>\n<tbody>\n<tr>\n<td><strong>g</strong></td>\n"
       "<td><strong>h</strong></td>\n</tr>\n</tbody>\n</table>\n<p><strong>i</strong></p>\n"},
      {"formats around centred parts", "<i><center>a</center></i><font color=red><center>b</center>c</font>d",
       "<p style=\"text-align:center\"><em>a</em></p>\n"
       "<p style=\"text-align:center\"><span style=\"color:#ff0000\">b</span></p>\n"
       "<p><span style=\"color:#ff0000\">c</span>d</p>\n"},
      {"formats that end in another part", "<i><center>a</i>b</center>c<ul><li><b>d</ul><p>e</b>f",
       "<p style=\"text-align:center\">ab</p>\n<p>c</p>\n<ul>\n<li><strong>d</strong></li>\n</ul>\n<p>ef</p>\n"},
      {"formats around lists", "<u><ul><li>a<p>b</ul><p>c</u><p>d",
       "<ul>\n<li><u>a</u>\n<p><u>b</u></p>\n</li>\n</ul>\n<p><u>c</u></p>\n<p>d</p>\n"},
      {"spaces ahead of blocks", "<b>a <p>b</b>", "<p><strong>a</strong></p>\n<p><strong>b</strong></p>\n"},
      {"an empty paragraph between", "<p>a</p><p><br></p><p>b</p>", "<p>a</p>\n<p><br /></p>\n<p>b</p>\n"},
      {"references", "&lt;&amp;&gt;&quot;&#65;&eacute;&nbsp;", "<p>&lt;&amp;&gt;&quot;A\xC3\xA9\xC2\xA0</p>\n"},
      {"references without a semicolon",
       "&copy 1 &COPY; &ampx&nbsp&lt&gta &notinx &notin; &timesb; &co <a href='?a&copy=1&copyb&amp'>a</a>&eacute",
       "<p>\u00A9 1 \u00A9 &amp;x\u00A0&lt;&gt;a \u00ACinx \u2209 &amp;timesb; &amp;co "
       "<a href=\"?a&amp;copy=1&amp;copyb&amp;\">a</a>\u00E9</p>\n"},
      {"Latin-1 that says nothing of it", "caf\xE9", "<p>caf\u00E9</p>\n"},
      {"alignment", "<p align=right>r</p><center>c</center><div style='text-align:justify'><p>j</div>",
       "<p style=\"text-align:right\">r</p>\n<p style=\"text-align:center\">c</p>\n"
       "<p style=\"text-align:justify\">j</p>\n"},
      {"margins", "<p style='margin-left:36pt;text-indent:-18pt'>m</p>",
       "<p style=\"margin-left:36pt;text-indent:-18pt\">m</p>\n"},
      {"headings", "<h1>a</h1><h6 align=center>b</h6>", "<h1>a</h1>\n<h6 style=\"text-align:center\">b</h6>\n"},
      {"code", "<pre><code class='language-c'>a\n\n  b\n</code></pre><pre>c<b>d</b></pre>",
       "<pre><code class=\"language-c\">a\n\n  b\n</code></pre>\n<pre><code>c<strong>d</strong>\n</code></pre>\n"},
      {"links", "<a href='x?a=1&b=2' title='t'>a <b>b</b></a><a href=y></a>",
       "<p><a href=\"x?a=1&amp;b=2\" title=\"t\">a <strong>b</strong></a><a href=\"y\"></a></p>\n"},
      {"a link around a table", "<p>p<a href=x><table><tr><td>a</table></a> b",
       "<p>p</p>\n<table>\n<tbody>\n<tr>\n<td><a href=\"x\">a</a></td>\n</tr>\n</tbody>\n</table>\n<p>b</p>\n"},
      {"places", "<p id=top>a<a name=x>b</a></p><h2 id=h>c</h2><div id=d></div><ul><li id=i><img src=p id=q></ul>",
       "<p><span id=\"top\"></span>a<span id=\"x\"></span>b</p>\n<h2><span id=\"h\"></span>c</h2>\n"
       "<ul>\n<li><span id=\"d\"></span><span id=\"i\"></span><span id=\"q\"></span><img src=\"p\" alt=\"\" /></li>\n"
       "</ul>\n"},
      {"hidden from readers", "<p hidden>a</p><div style='display:none'><h2>b</h2></div><p>c</p>",
       "<p hidden>a</p>\n<h2 hidden>b</h2>\n<p>c</p>\n"},
      {"terms and descriptions", "<dl><dt>a<dd>b<dd>c<dl><dt>d<dd>e</dl><dt>f</dl>g",
       "<p>a</p>\n<p style=\"margin-left:36pt\">b</p>\n<p style=\"margin-left:36pt\">c</p>\n"
       "<p style=\"margin-left:36pt\">d</p>\n<p style=\"margin-left:72pt\">e</p>\n<p>f</p>\n<p>g</p>\n"},
      {"quotations", "<q>a <b>b</b></q>", "<p>\u201Ca <strong>b</strong>\u201D</p>\n"},
      {"sizes by words, weights by numbers", "<p>0123456789<span style='font-size:larger;font-weight:700'>a</span>",
       "<p>0123456789<strong><span style=\"font-size:12pt\">a</span></strong></p>\n"},
      {"a link around blocks", "<a href=x><p>a</p><p>b</p></a>",
       "<p><a href=\"x\">a</a></p>\n<p><a href=\"x\">b</a></p>\n"},
      {"pictures", "<img src=a.png alt='A &amp; B' title=t><a href=l><img src=b.png> b</a>",
       "<p><img src=\"a.png\" alt=\"A &amp; B\" title=\"t\" /><a href=\"l\"><img src=\"b.png\" alt=\"\" /> "
       "b</a></p>\n"},
      {"rules and quotes", "<blockquote>a<hr><blockquote><p>b</blockquote></blockquote>",
       "<blockquote>\n<p>a</p>\n<hr />\n<blockquote>\n<p>b</p>\n</blockquote>\n</blockquote>\n"},
      {"lists", "<ul><li>a<ol start=3><li>b</ol><li><p>c<p>d</ul>",
       "<ul>\n<li>a\n<ol start=\"3\">\n<li>b</li>\n</ol>\n</li>\n<li>\n<p>c</p>\n<p>d</p>\n</li>\n</ul>\n"},
      {"an item alone", "<li>a</li>b", "<ul>\n<li>a</li>\n</ul>\n<p>b</p>\n"},
  };
  ExpectRows(rows);
}

TEST(HtmlTables, AreCarried) {
  const HtmlRow rows[] = {
      {"headings and borders", "<table border=1><tr><th>a<th align=center>b<tr><td>c<td></table>",
       "<table border=\"1\">\n<thead>\n<tr>\n<th>a</th>\n<th style=\"text-align:center\">b</th>\n</tr>\n</thead>\n"
       "<tbody>\n<tr>\n<td>c</td>\n<td></td>\n</tr>\n</tbody>\n</table>\n"},
      {"spans", "<table><tr><td rowspan=2>a<td colspan=2>b<tr><td>c<td>d</table>",
       "<table>\n<tr>\n<td rowspan=\"2\">a</td>\n<td colspan=\"2\">b</td>\n</tr>\n<tr>\n<td>c</td>\n<td>d</td>\n"
       "</tr>\n</table>\n"},
      {"spans past the edge", "<table><tr><td rowspan=9 colspan=9>a<td>b</table>",
       "<table>\n<tbody>\n<tr>\n<td colspan=\"9\">a</td>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n"},
      {"borders and colours", "<table><tr><td style='border-left:3px double;background:#ff0000'>a</table>",
       "<table>\n<tbody>\n<tr>\n<td style=\"background-color:#ff0000;border-left:3px double\">a</td>\n</tr>\n"
       "</tbody>\n</table>\n"},
      {"blocks in cells", "<table><tr><td><p>a<ul><li>b</ul><td><h2>c</h2></table>",
       "<table>\n<tbody>\n<tr>\n<td>\n<p>a</p>\n<ul>\n<li>b</li>\n</ul>\n</td>\n<td>\n<h2>c</h2>\n</td>\n</tr>\n"
       "</tbody>\n</table>\n"},
      {"widths of columns", "<table><col width=100><col width=300><tr><td>a<td>b</table>",
       "<table>\n<colgroup>\n<col style=\"width:25%\" />\n<col style=\"width:75%\" />\n</colgroup>\n<tbody>\n<tr>\n"
       "<td>a</td>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n"},
      {"widths of cells", "<table><tr><td colspan=2>a<tr><td style='width:20%'>b<td>c</table>",
       "<table>\n<colgroup>\n<col style=\"width:20%\" />\n<col style=\"width:80%\" />\n</colgroup>\n<tbody>\n<tr>\n"
       "<td colspan=\"2\">a</td>\n</tr>\n<tr>\n<td>b</td>\n<td>c</td>\n</tr>\n</tbody>\n</table>\n"},
      {"columns too narrow for a cell", "<table><tr><td width=1>a<td width=1>b<td width=998>c</table>",
       "<table>\n<colgroup>\n<col style=\"width:1.3%\" />\n<col style=\"width:1.3%\" />\n"
       "<col style=\"width:97.4%\" />\n</colgroup>\n<tbody>\n<tr>\n<td>a</td>\n<td>b</td>\n<td>c</td>\n</tr>\n"
       "</tbody>\n</table>\n"},
      {"fonts of tables and rows",
       "0123<table style='color:red'><tr style='font-weight:bold'><td>a<td style='color:blue'>b</table>",
       "<p>0123</p>\n<table>\n<tbody>\n<tr>\n<td><span style=\"color:#ff0000\"><strong>a</strong></span></td>\n"
       "<td><strong><span style=\"color:#0000ff\">b</span></strong></td>\n</tr>\n</tbody>\n</table>\n"},
      {"the foot goes last", "<table><tfoot><tr><td>b<tbody><tr><td>a</table>",
       "<table>\n<tbody>\n<tr>\n<td>a</td>\n</tr>\n<tr>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n"},
      {"no widths to speak of", "<table><tr><td width=0.01%>a<td width=0.01%>b</table>",
       "<table>\n<tbody>\n<tr>\n<td>a</td>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n"},
      {"indentation in cells", "<table><tr><td style='text-indent:20pt'>a<td><dl><dt>b<dd>c</dl></table>",
       "<table>\n<tbody>\n<tr>\n<td>\n<p style=\"text-indent:20pt\">a</p>\n</td>\n<td>\n<p>b</p>\n"
       "<p style=\"margin-left:36pt\">c</p>\n</td>\n</tr>\n</tbody>\n</table>\n"},
      {"a hidden table", "<table hidden><tr><td>a</table>b",
       "<table>\n<tbody>\n<tr>\n<td>\n<p hidden>a</p>\n</td>\n</tr>\n</tbody>\n</table>\n<p>b</p>\n"},
      {"in an item", "<ul><li>a<table><tr><td>b</table><li>c</ul>",
       "<ul>\n<li>a\n<table>\n<tbody>\n<tr>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n</li>\n<li>c</li>\n</ul>\n"},
      {"a heading first in an item", "<ul><li>a<li><table><tr><th>b</table></ul>",
       "<ul>\n<li>a</li>\n<li>\n<table>\n<thead>\n<tr>\n<th>b</th>\n</tr>\n</thead>\n</table>\n</li>\n</ul>\n"},
      {"two in a row", "<table><tr><td>a</table><table><tr><td>b</table>c",
       "<table>\n<tbody>\n<tr>\n<td>a</td>\n</tr>\n</tbody>\n</table>\n"
       "<table>\n<tbody>\n<tr>\n<td>b</td>\n</tr>\n</tbody>\n</table>\n<p>c</p>\n"},
  };
  ExpectRows(rows);
}

TEST(HtmlReport, TellsWhatIsMissing) {
  const HtmlRow rows[] = {
      {"content that is lost", "<p>a<script>x</script><style>y</style><svg><g/></svg></p>", "<p>a</p>\n",
       "elements left out with their content: 3: script\n"},
      {"heads", "<head><title>t</title><base href=x><link rel=StyleSheet href=y><style>z</style><main>a</main></head>b",
       "<p>a</p>\n<p>b</p>\n", "elements left out with their content: 3: base\n"},
      {"unknown elements", "<blink>a</blink><marquee>b</marquee>", "<p>ab</p>\n",
       "elements left out, their content kept: 2: blink\n"},
      {"nearest ones", "<p>0123456789<font face=Papyrus color=#ff0102 size=7>a</font>",
       "<p>0123456789<span style=\"font-size:24pt;color:#ff0000\">a</span></p>\n",
       "faces replaced by the nearest one: 1: Papyrus\ncolours replaced by the nearest one: 1: #ff0102\n"},
      {"a table in a table", "<table><tr><td>a<table><tr><td>b<td>c</table></table>",
       "<table>\n<tbody>\n<tr>\n<td>\n<p>a</p>\n<p>b</p>\n<p>c</p>\n</td>\n</tr>\n</tbody>\n</table>\n",
       "tables within tables became paragraphs: 1\n"},
      {"properties of styles", "<p style='float:left;color:currentcolor'>a<b hidden style='font-size:huge'>b</b></p>",
       "<p>a<strong>b</strong></p>\n", "properties of styles left out: 3: float\n"},
      {"a table's own layout", "<table width=100% style='margin:3px'><tr><td style='padding:0'>a</table>",
       "<table>\n<tbody>\n<tr>\n<td>a</td>\n</tr>\n</tbody>\n</table>\n",
       "properties of styles left out: 1: padding\nwidths and places of tables left out: 2: width\n"},
      {"attributes of looks", "<body text=blue><ol type=a><li value=3>a</ol><img src=b width=3><hr style='color:red'>",
       "<ol>\n<li>a</li>\n</ol>\n<p><img src=\"b\" alt=\"\" /></p>\n<hr />\n",
       "properties of styles left out: 5: text\n"},
      {"characters that are none", "<p>a&#0;b&#xD800; c&#99999999dead&#x41;", "<p>a\uFFFDb\uFFFD c\uFFFDdeadA</p>\n",
       "bytes or characters replaced: 3\n"},
      {"line breaks at ends of paragraphs", "<p>a<br><br><br></p>b<br><br><hr><p><br></p>c",
       "<p>a</p>\n<p>b</p>\n<hr />\n<p><br /></p>\n<p>c</p>\n", "line breaks at ends of paragraphs left out: 3\n"},
      {"bad bytes in UTF-8",
       "<meta http-equiv=a content='text/html; charset=UTF-8'><p>a\xFF\xC3z\xE2\x82 \u00E9\xC2\x80",
       "<p>a\uFFFD\uFFFDz\uFFFD \u00E9\uFFFD</p>\n", "bytes or characters replaced: 4\n"},
      {"bad bytes among more good ones", "<p>\u00E9\u00E9\xE9", "<p>\u00E9\u00E9\uFFFD</p>\n",
       "bytes or characters replaced: 1\n"},
      {"content of elements that hold nothing", "<embed src=x>a<video><source src=y>b</video>c", "<p>ac</p>\n",
       "elements left out with their content: 2: embed\n"},
      {"a place behind all text", "<p>a</p><p id=b></p>", "<p>a</p>\n", "names of places left out: 1: b\n"},
      {"a link that goes on behind a table", "<a href=x>a<table><tr><td>b</table>c</a>",
       "<p><a href=\"x\">a</a></p>\n<table>\n<tbody>\n<tr>\n<td><a href=\"x\">b</a></td>\n</tr>\n</tbody>\n</table>\n"
       "<p>c</p>\n",
       "links around tables end with them: 1\n"},
  };
  for (const HtmlRow& row : rows) {
    SCOPED_TRACE(row.What);
    const Converted records = FromHtml(row.In);
    EXPECT_EQ(records.Report, row.Report);
    EXPECT_EQ(ToHtml(records.Bytes).Bytes, row.Out);
  }
}

// Records that clients and forms make, and no page can hold.
TEST(HtmlOut, TellsWhatOtherRecordsHold) {
  const auto definition = [](auto change) {
    CDPABDEFINITION style{};
    style.PABID = 7;
    style.LeftMargin = style.FirstLineMargin = conv::kPageMargin;
    style.Flags = conv::kHideFlagsUnlinked;
    change(style);
    return style;
  };
  const auto hotspot = [](std::uint16_t type) { return CDHOTSPOTBEGIN{{}, type, 0, 0}; };
  const auto styled = [&](auto change) {
    return [style = definition(change)](conv::RecordOutput& out) {
      out.Put(conv::kSigDefinition, ODS_CDPABDEFINITION, style);
      out.Put(conv::kSigReference, ODS_CDPABREFERENCE, CDPABREFERENCE{{}, 7});
    };
  };
  const auto spotted = [&](std::uint16_t type) {
    return [begin = hotspot(type)](conv::RecordOutput& out) { out.Put(conv::kSigHotspot, ODS_CDHOTSPOTBEGIN, begin); };
  };
  const auto other = [](std::uint16_t signature) {
    return [signature](conv::RecordOutput& out) { out.PutBytes(signature, "data"); };
  };
  const struct {
    std::function<void(conv::RecordOutput&)> Put;
    const char* Report;
  } rows[] = {
      {styled([](auto& style) { style.Flags |= conv::kPageBreak; }), "page breaks left out: 1\n"},
      {styled([](auto& style) { style.RightMargin = 9000; }),
       "left margins within the page's and right margins left out: 1\n"},
      {styled([](auto& style) { style.LeftMargin = style.FirstLineMargin = 720; }),
       "left margins within the page's and right margins left out: 1\n"},
      {styled([](auto& style) { style.TabCount = 1; }), "tab stops left out: 1\n"},
      {styled([](auto& style) { style.LineSpacing = 1; }), "line and paragraph spacing left out: 1\n"},
      {styled([](auto& style) { style.Flags |= 0x0020; }), "hidden paragraphs are shown: 1\n"},
      {spotted(1), "objects left out: 1: popup\n"},
      {spotted(14), "objects left out: 1: subform\n"},
      {other(0xFF8A), "objects left out: 1: field\n"},
      {other(0xFFAC), "objects left out: 1: section\n"},
      {other(0xFFEE), "objects left out: 1\n"},
  };
  for (const auto& row : rows) {
    conv::RecordOutput output;
    output.Begin();
    row.Put(output);
    output.Put(conv::kSigText, ODS_CDTEXT, CDTEXT{{}, conv::kDefaultFont}, "a");
    const Converted html = ToHtml(output.Bytes());
    EXPECT_EQ(html.Bytes, "<p>a</p>\n");
    EXPECT_EQ(html.Report, row.Report);
  }
}

TEST(HtmlOut, LeadsNowhereThatRunsCode) {
  const Converted html = ToHtml(FromHtml("<a href=' Java\tScript:x'>a</a><img src='data:text/html,x' alt=b>").Bytes);
  EXPECT_EQ(html.Bytes, "<p><a href=\"\">a</a><img src=\"\" alt=\"b\" /></p>\n");
  EXPECT_EQ(html.Report, "addresses left out: 2: JavaScript:x\n");
  EXPECT_EQ(ToHtml(FromHtml(html.Bytes).Bytes).Bytes, html.Bytes);
}

TEST(HtmlIn, TakesTheTextsOwnEncoding) {
  const struct {
    const char* What;
    std::string In;
    const char* Out;
    const char* Report = "";
  } rows[] = {
      {"UTF-8 that says nothing", "<p>\xC3\xA9", "<p>\xC3\xA9</p>\n"},
      {"UTF-8 that says otherwise", "<meta charset=iso-8859-1><p>\xC3\xA9", "<p>\xC3\xA9</p>\n"},
      {"Latin-1 that says so", "<meta charset=iso-8859-1><p>\xE9", "<p>\xC3\xA9</p>\n"},
      {"Latin-1 that says nothing", "<p>\xE9", "<p>\xC3\xA9</p>\n"},
      {"UTF-16", std::string("\xFF\xFE<\0p\0>\0\xE9\0", 10), "<p>\xC3\xA9</p>\n"},
      {"UTF-16, the high byte first, with a pair and half of one",
       {"\xFE\xFF\xD8\x3D\xDE\0\xDC\0\0a", 10},
       "<p>\U0001F600\uFFFDa</p>\n",
       "bytes or characters replaced: 1\n"},
      {"UTF-32", {"\xFF\xFE\0\0<\0\0\0p\0\0\0>\0\0\0\0\xF6\x01\0", 20}, "<p>\U0001F600</p>\n"},
      {"UTF-32, the high byte first, unmarked, cut",
       {"\0\0\0<\0\0\0p\0\0\0>\0\0\0a\0\x11\0\0\0\0", 22},
       "<p>a\uFFFD\uFFFD</p>\n",
       "bytes or characters replaced: 2\n"},
  };
  for (const auto& row : rows) {
    const Converted records = FromHtml(row.In);
    EXPECT_EQ(records.Report, row.Report) << row.What;
    EXPECT_EQ(ToHtml(records.Bytes).Bytes, row.Out) << row.What;
  }
}

TEST(MarkdownIn, PipeTablesAndRawHtml) {
  const struct {
    const char* What;
    const char* In;
    const char* Out;
    const char* Report;
  } rows[] = {
      {"a pipe table", "| a | b |\n|---|--:|\n| *x* \\| `y` | [z](w) |\n| 1 |\n",
       "<table border=\"1\">\n<thead>\n<tr>\n<th>a</th>\n<th style=\"text-align:right\">b</th>\n</tr>\n</thead>\n"
       "<tbody>\n<tr>\n<td><em>x</em> | <code>y</code></td>\n<td style=\"text-align:right\"><a href=\"w\">z</a></td>\n"
       "</tr>\n<tr>\n<td>1</td>\n<td style=\"text-align:right\"></td>\n</tr>\n</tbody>\n</table>\n",
       ""},
      {"dashes of another width", "| a | b |\n|---|\n", "<p>| a | b | |---|</p>\n",
       "line ends within paragraphs became spaces: 1, first in line 1\n"},
      {"formats by tags", "<u>a *b*</u> <sub>c</sub><br><font color=\"red\">d</font><!-- e -->",
       "<p><u>a <em>b</em></u> <sub>c</sub><br />\n<span style=\"color:#ff0000\">d</span></p>\n",
       "raw HTML left out: 1, first in line 1: <!-- e -->\n"},
      {"a table by tags", "x\n\n<table><tr><td rowspan=2>a<td>b<tr><td>c</table>\n",
       "<p>x</p>\n<table>\n<tr>\n<td rowspan=\"2\">a</td>\n<td>b</td>\n</tr>\n<tr>\n<td>c</td>\n</tr>\n</table>\n", ""},
      {"places by tags", "<a name=\"x\"></a>a <b id=\"y\">b</b>\n",
       "<p><span id=\"x\"></span>a <span id=\"y\"></span><strong>b</strong></p>\n", ""},
      {"a link in a link", "[a <f@b.c> d](e)\n", "<p><a href=\"e\">a </a><a href=\"mailto:f@b.c\">f@b.c</a> d</p>\n",
       "links end with the links within them: 1, first in line 1: mailto:f@b.c\n"},
      {"a byte order mark and a NUL", "\xEF\xBB\xBF| a |\n|---|\n| b\xFF |\n",
       "<table "
       "border=\"1\">\n<thead>\n<tr>\n<th>a</th>\n</tr>\n</thead>\n<tbody>\n<tr>\n<td>b\uFFFD</td>\n</tr>\n</tbody>\n"
       "</table>\n",
       "bytes or characters replaced: 1\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    const Converted records = FromMarkdown(row.In);
    EXPECT_EQ(records.Report, row.Report);
    EXPECT_EQ(ToHtml(records.Bytes).Bytes, row.Out);
    // By way of Markdown the same comes back.
    EXPECT_EQ(ToHtml(FromMarkdown(ToMarkdown(records.Bytes).Bytes).Bytes).Bytes, row.Out)
        << ToMarkdown(records.Bytes).Bytes;
  }
}

TEST(MarkdownOut, TellsWhatIsMissing) {
  const struct {
    const char* In;
    const char* Report;
  } rows[] = {
      {"<p hidden>a", "hidden paragraphs are shown: 1\n"},
      {"<table border=1><col width=100><col width=300><tr><th>a<th>b<tr><td>c<td>d</table>",
       "widths of columns left out: 1\n"},
      {"<pre>a<b id=x>b</b></pre>", "names of places left out: 1: x\n"},
      {"<p style='text-indent:3pt'>a", "alignments and indentations left out: 1: text-indent:3pt\n"},
  };
  for (const auto& row : rows) EXPECT_THAT(ToMarkdown(FromHtml(row.In).Bytes).Report, HasSubstr(row.Report)) << row.In;
}

TEST(MarkdownOut, KeepsWhatMarkdownHasNoSignsFor) {
  const char* const rows[] = {
      "<p><strong>bold </strong>x<em>.y</em>z<em>a</em><em>b</em></p>\n",
      "<p>1. no list</p>\n<p># no heading</p>\n<p>- no item</p>\n",
      "<p>a<u>b</u><sup>c</sup><s>d</s><span style=\"font-size:20pt;color:#ff0000\">e</span></p>\n",
      "<p>a<br />\nb</p>\n<h2>a<br />\nb</h2>\n",
      "<p>a<br />\n<br />\n<br />\nb<em>c<br />\n<br />\nd</em></p>\n",
      "<p><strong>a<em>b<u>c</u></em></strong>d <em><strong><u>e</u>f</strong></em></p>\n",
      "<ul>\n<li>a</li>\n</ul>\n<ul>\n<li>b</li>\n</ul>\n<pre><code>c\n</code></pre>\n",
      "<table>\n<tbody>\n<tr>\n<td>\n<pre><code>a\n\nb\n</code></pre>\n</td>\n</tr>\n</tbody>\n</table>\n",
  };
  for (const char* html : rows) {
    const Converted markdown = ToMarkdown(FromHtml(html).Bytes);
    const std::string again = ToHtml(FromMarkdown(markdown.Bytes).Bytes).Bytes;
    // Emphasis gives its outer spaces away.
    EXPECT_THAT(again,
                testing::AnyOf(std::string(html), "<p><strong>bold</strong> x<em>.y</em>z<em>a</em><em>b</em></p>\n"))
        << markdown.Bytes;
  }
}

// Without an empty line between them, blocks in an item would be read as one.
TEST(MarkdownOut, KeepsBlocksInItemsApart) {
  const char* const rows[] = {
      "<li>a<div>b</div></li>",
      "<li>a<ul><li>b</li></ul>c</li>",
      "<li>a<ol start=3><li>b</li></ol></li>",
      "<li>a<hr>b</li>",
      "<li>a<table border=1><tr><th>b<tr><td>c</table>d</li>",
      "<li><blockquote>a<div>b</div></blockquote></li>",
  };
  for (const char* item : rows) {
    const Converted markdown = ToMarkdown(FromHtml("<ul>" + std::string(item) + "<li>z</ul>").Bytes);
    EXPECT_EQ(markdown.Report, "lists got space between their items: 1\n") << item;
    // With space between from the start, it is the same.
    const std::string loose = "<ul>" + std::string(item) + "<li><p>z</ul>";
    std::string expected = ToHtml(FromHtml(loose).Bytes).Bytes;
    std::string again = ToHtml(FromMarkdown(markdown.Bytes).Bytes).Bytes;
    const auto drop = [](std::string& html, std::string_view tag) {
      for (std::size_t at; (at = html.find(tag)) != std::string::npos;) html.erase(at, tag.size());
    };
    for (std::string* html : {&expected, &again}) {
      for (const char* tag : {"<p>", "</p>", "\n"}) drop(*html, tag);
    }
    EXPECT_EQ(again, expected) << markdown.Bytes;
  }
  EXPECT_EQ(ToMarkdown(FromHtml("<ul><li>a<ul><li>b</ul><pre>c</pre>d<li>e</ul>").Bytes).Report, "");
}

TEST(MarkdownOut, LinksStayAsTheyAre) {
  const char* const rows[] = {
      "<p><a href=\"x\" title=\"a\n\n- b &amp;lt; &amp; \\&quot;\">c</a></p>\n",
      "<p><a href=\"x?a=1&amp;lt;2&amp;b\">c</a></p>\n",
      "<p><img src=\"x\" alt=\"c\" title=\"a\n# b\" /></p>\n",
  };
  for (const char* html : rows) {
    const Converted markdown = ToMarkdown(FromHtml(html).Bytes);
    EXPECT_EQ(ToHtml(FromMarkdown(markdown.Bytes).Bytes).Bytes, html) << markdown.Bytes;
  }
  EXPECT_EQ(ToMarkdown(FromMarkdown("[a](<b&#9;&#10;c d>)").Bytes).Bytes, "[a](b%09%0Ac%20d)\n");
}

}  // namespace
