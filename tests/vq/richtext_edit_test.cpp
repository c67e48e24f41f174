// Edits: what they make of the records, what they refuse, what becomes of the store.
#include <algorithm>
#include <random>

#include "tests/vq/support/records.h"
#include "vq/richtext/font.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/vqhotspot.h"
#include "vq/store/vqcreate.h"
#include "vq/store/vqdbbody.h"
#include "vq/store/vqdoc.h"

namespace {

using namespace vqtest;

class RichTextEdit : public EngineFixture {};

struct EditRow {
  const char* What;
  std::string Before;
  unsigned long From, To;  // positions: this range goes
  const char* Inserted;    // and this comes, newlines as line breaks
  std::string After;
};

TEST_F(RichTextEdit, ChangesOnlyWhatItMust) {
  const std::string head = Unknown("odd") + Reference(1);
  const EditRow rows[] = {
      {"a word", head + Text("one two"), 5, 8, "2", head + Text("one 2")},
      {"at the start", Text("bc"), 0, 0, "a", Text("abc")},
      {"at the end", Text("ab"), 2, 2, "c", Text("abc")},
      {"nothing", Text("ab", '\x11'), 1, 1, "", Text("ab")},
      {"all of a run", Reference(1) + Text("ab"), 0, 2, "", Reference(1) + Text("")},
      {"bytes of one character", Text("a\xC3\xA9z"), 1, 2, "\xE2\x82\xAC", Text("a\xE2\x82\xACz")},
      {"a line break", Text("ab"), 1, 1, "\n", Text(std::string("a\0b", 3))},
      {"an element", Text("a") + Unknown("u") + Text("b"), 1, 2, "", Text("a") + Text("b")},
      {"over two runs", Text("abc") + Unknown("u") + Text("def"), 2, 5, "-", Text("ab-") + Text("ef")},
      {"up to a run's end", Text("ab") + Text("cd"), 1, 4, "", Text("a")},
      {"beside an element", Unknown("u"), 1, 1, "t", Unknown("u") + Text("t")},
  };
  for (const EditRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Before);
    VQRTCursor start = At(text, row.From), end = At(text, row.To);
    EXPECT_EQ(text.Delete(&start, &end), VQ_OK);
    EXPECT_EQ(text.Insert(row.Inserted, &start, 0), VQ_OK);
    std::string written = Written(text);
    // A deletion over elements leaves a reference at the start, which these rows do without.
    if (row.After.find('\x83') == std::string::npos && written.compare(0, 2, "\x83\x04") == 0) written.erase(0, 4);
    EXPECT_EQ(written, row.After);
    ASSERT_EQ(text.Update(), VQ_OK);
    EXPECT_FALSE(text.IsDirty());
    EXPECT_TRUE(start.IsValid());
  }
}

TEST_F(RichTextEdit, TakesEffectsOffARange) {
  const std::string extension = Record(SIG_CD_TEXT_STYLE_EXT, Bytes({1, 0x80, 0, 10}));
  VQRichText text = RichText(Text("a") + extension + Text("b") + extension + Text("cd") + Text("e"));
  VQFontStyle plain;
  ASSERT_EQ(plain.SetDefaults(), VQ_OK);
  ASSERT_EQ(text.SetFontStyle(At(text, 0), At(text, 3), plain), VQ_OK);
  EXPECT_EQ(Written(text), Text("a") + Text("b") + Text("c") + extension + Text("d") + Text("e"));
}

TEST_F(RichTextEdit, MovesCharactersWithTheText) {
  VQRichText text = RichText(Text("abcdef"));
  VQRTObject object;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &object), VQ_OK);
  VQStylizedText run(object);
  VQStylizedTextBody* body = run.GetStylizedTextBody();
  VQRTChar b(body, 2), d(body, 4), f(body, 6);
  const auto letters = [&] {
    std::string all;
    for (const VQRTChar* character : {&b, &d, &f}) {
      VQString letter;
      all += character->GetCharacter(&letter) == VQ_OK ? TextOf(letter) : "?";
    }
    return all;
  };
  ASSERT_EQ(body->InsertText(2, "xyz"), VQ_OK);
  EXPECT_EQ(letters(), "bdf");
  ASSERT_EQ(run.SplitText(7), VQ_OK);
  EXPECT_EQ(letters(), "bdf");
  EXPECT_EQ(d.GetOffset(), 1u);
  EXPECT_NE(static_cast<VQRTObject&>(b).GetRTObjectBody(), d.GetRTObjectBody());
  ASSERT_EQ(body->RemoveText(1, 3), VQ_OK);
  EXPECT_EQ(letters(), "ydf");
  EXPECT_EQ(run.SplitText(1), VQERR_INVALID_PARAMETER);
  ASSERT_EQ(body->SetValue("", 0), VQ_OK);
  EXPECT_EQ(b.GetOffset(), 1u);
  ASSERT_EQ(object.RemoveThis(), VQ_OK);
  object = VQRTObject();
  run = VQStylizedText();
  EXPECT_EQ(letters(), "df");
}

struct SizeRow {
  unsigned long Bytes;
  VQSTATUS Status;
};

TEST_F(RichTextEdit, HoldsARunToItsLimit) {
  for (const SizeRow& row : {SizeRow{20472, VQ_OK}, SizeRow{20473, VQWARN_TEXT_OVER_20K},
                             SizeRow{40952, VQWARN_TEXT_OVER_20K}, SizeRow{40953, VQERR_TEXT_TOO_LONG}}) {
    SCOPED_TRACE(row.Bytes);
    VQStylizedText run(VQString("ab"));
    EXPECT_EQ(run.Append(Store(std::string(row.Bytes - 2, 'x'))), row.Status);
    EXPECT_EQ(run.GetByteCount(), VQIsError(row.Status) ? 2 : row.Bytes);
  }
  VQStylizedText run;
  EXPECT_EQ(run.Append("a\nb", 1), VQERR_TEXT_NEWLINES);
  EXPECT_TRUE(run.IsNull());
}

// As other writers may leave them: they can be cut down, not made longer.
TEST_F(RichTextEdit, CutsARunAboveTheLimit) {
  VQRichText text = RichText(Text(std::string(50000, 'x')));
  VQRTCursor start = At(text, 3), end = At(text, 4), behind = At(text, 9);
  EXPECT_EQ(text.Insert("y", &start), VQERR_TEXT_TOO_LONG);
  ASSERT_EQ(text.Delete(&start, &end), VQ_OK);
  EXPECT_EQ(behind.GetOffset(), 8u);
  ASSERT_EQ(text.StartNewParagraph(&start), VQ_OK);
  EXPECT_EQ(Plain(text), "xxx\n" + std::string(49996, 'x'));
  VQRichText other = RichText(Unknown("u"));
  EXPECT_EQ(other.Append(Store(std::string(40953, 'x')), 0), VQERR_TEXT_TOO_LONG);
  EXPECT_FALSE(other.IsDirty());
}

// Lines of a text go to the two sides of the place; what counts is what each run ends up with.
TEST_F(RichTextEdit, HoldsTheLinesOfATextToTheLimit) {
  const struct {
    unsigned long Left, Right, First, Last;
    VQSTATUS Status;
  } rows[] = {
      {25000, 15000, 10000, 10000, VQWARN_TEXT_OVER_20K}, {0, 40000, 10000, 100, VQWARN_TEXT_OVER_20K},
      {40000, 0, 100, 21000, VQWARN_TEXT_OVER_20K},       {30000, 10000, 10953, 1, VQERR_TEXT_TOO_LONG},
      {30000, 10000, 1, 30953, VQERR_TEXT_TOO_LONG},      {0, 40000, 1, 953, VQERR_TEXT_TOO_LONG},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.First);
    const std::string left(row.Left, 'l'), right(row.Right, 'r'), first(row.First, 'f'), last(row.Last, 'e');
    VQRichText text = RichText(Reference(1) + Text(left + right));
    VQRTCursor cursor = At(text, row.Left);
    EXPECT_EQ(text.Insert(Store(first + "\n" + last), &cursor), row.Status);
    const bool refused = VQIsError(row.Status);
    EXPECT_EQ(Plain(text), refused ? left + right : left + first + "\n" + last + right);
    EXPECT_EQ(text.IsDirty(), refused ? 0 : 1);
  }
}

// A place beside another object is no way around what its container takes.
TEST_F(RichTextEdit, PutsSiblingsWhereALoadLeavesThem) {
  const std::string table = TableBegin() + Cell(0, 0) + Text("a") + Cell(0, 1) + Text("b") + TableEnd();
  const std::string popup = Hotspot(1) + Text("a") + HotspotEnd();
  const struct {
    const char* Beside;
    std::string Records;
    VQRTTYPE Type;
    VQSTATUS Previous, Next;
  } rows[] = {
      {"a run", Text("a"), VQRTTYPE_STYLIZED_TEXT, VQ_OK, VQ_OK},
      {"a table", table, VQRTTYPE_TABLE, VQ_OK, VQ_OK},
      {"a cell", table, VQRTTYPE_TABLE_CELL, VQERR_CANT_INSERT_TYPE, VQERR_CANT_INSERT_TYPE},
      {"a run in a cell", table, VQRTTYPE_STYLIZED_TEXT, VQ_OK, VQ_OK},
      {"a table's end", table, VQRTTYPE_TABLE_END, VQERR_CANT_INSERT_TYPE, VQERR_CANT_INSERT_TYPE},
      {"a hotspot's end", popup, VQRTTYPE_HOTSPOT_END, VQ_OK, VQERR_CANT_INSERT_TYPE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Beside);
    VQRichText text = RichText(row.Records);
    VQRTObject object;
    ASSERT_EQ(text.FindFirst(row.Type, &object), VQ_OK);
    VQStylizedText one(VQString("one")), two(VQString("two"));
    EXPECT_EQ(object.InsertPreviousSibling(&one), row.Previous);
    EXPECT_EQ(object.InsertNextSibling(&two), row.Next);
    EXPECT_EQ(Plain(RichText(Written(text))), Plain(text));
  }
}

TEST_F(RichTextEdit, ClearsHotspotsAndKeepsWhatTheyShow) {
  const std::string part = Record(SIG_CD_ACTION_PART, "part"), link = Record(SIG_CD_LINK_A, "link");
  const std::string begin = TableBegin() + Cell(0, 0), other = Cell(0, 1) + Text("b");
  const std::string head = Reference(1) + Text("x") + Paragraph() + Reference(1), tail = Paragraph() + Text("z");
  const struct {
    const char* What;
    std::string Before, After;
  } rows[] = {
      {"a popup", Text("x") + Hotspot(1) + Text("a") + Text("b") + HotspotEnd() + Text("y"),
       Text("x") + Text("a") + Text("b") + Text("y")},
      {"an action with its parts", Hotspot(2) + part + Text("a") + HotspotEnd(), Text("a")},
      {"a link with its record", Hotspot(11) + link + Text("a") + Paragraph() + Text("b") + HotspotEnd(),
       Text("a") + Paragraph() + Text("b")},
      {"one that shows nothing", head + Hotspot(1) + HotspotEnd() + tail, head + Text("") + tail},
      {"a link over two cells", begin + Hotspot(11) + Text("a") + other + HotspotEnd() + TableEnd(),
       begin + Text("a") + other + TableEnd()},
      {"two", Hotspot(1) + Text("a") + HotspotEnd() + Hotspot(1) + Text("b") + HotspotEnd(), Text("a") + Text("b")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText one = RichText(row.Before), all = RichText(row.Before);
    VQRTObject object;
    while (one.FindFirst(VQRTTYPE_HOTSPOT, &object) == VQ_OK) {
      EXPECT_EQ(VQHotspot(object).GetCDSignature(), SIG_CD_V4HOTSPOTBEGIN);
      ASSERT_EQ(one.ClearHotspot(&object), VQ_OK);
    }
    EXPECT_EQ(Written(one), row.After);
    VQRTCursor start, end;
    ASSERT_EQ(all.GetCursor(&start), VQ_OK);
    ASSERT_EQ(all.GetEndCursor(&end), VQ_OK);
    EXPECT_EQ(all.ClearHotspotRange(start, end), VQ_OK);
    EXPECT_EQ(Written(all), row.After);
    ASSERT_EQ(all.GetCursor(&start), VQ_OK);
    EXPECT_EQ(all.ClearHotspotRange(start, start), VQWARN_NOT_FOUND);
    ASSERT_EQ(all.FindFirst(VQRTTYPE_STYLIZED_TEXT, &object), VQ_OK);
    EXPECT_EQ(all.ClearHotspot(&object), VQERR_INAPPROPRIATE);
    EXPECT_EQ(StatusOf([&] { return VQHotspot(object).GetHotspotType(); }), VQERR_CONVERSION_FAILED);
  }
  EXPECT_EQ(StatusOf([] { return VQHotspotEnd(SIG_CD_PARAGRAPH).GetCDSignature(); }), VQERR_INVALID_PARAMETER);
}

TEST_F(RichTextEdit, ReadsTheDataOfAHotspot) {
  VQRichText text = RichText(Record(SIG_CD_V4HOTSPOTBEGIN, Bytes({11, 0, 0, 0, 0, 0x10, 3, 0}) + "url") + HotspotEnd());
  VQRTObject object;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_URL_LINK, &object), VQ_OK);
  const VQHotspot link(object);
  EXPECT_EQ(link.GetHotspotType(), 11);
  EXPECT_EQ(link.GetHotspotFlags(), 0x10000000u);
  ASSERT_EQ(link.GetDataLength(), 3u);
  std::string url(3, ' ');
  EXPECT_EQ(link.ReadData(0, url.data(), 3), VQ_OK);
  EXPECT_EQ(url, "url");
  EXPECT_EQ(link.ReadData(1, url.data(), 3), VQERR_RT_INVALID) << "the padding byte is no data";
}

struct UnreadableRow {
  const char* What;
  std::string Records;
  VQRTTYPE Type;  // of the first object that is copied
  VQRTCOPYOPTIONS Options;
  VQSTATUS Append, Write, Select;
};

// What a load would not take back never gets into the store.
TEST_F(RichTextEdit, WritesNothingThatCannotBeRead) {
  const std::string table = TableBegin() + Cell(0, 0) + Text("a") + TableEnd(), popup = Hotspot(1) + HotspotEnd();
  const auto deep = VQRTCOPYOPTIONS_DEEP, shallow = VQRTCOPYOPTIONS_SHALLOW;
  const VQSTATUS refused = VQERR_CANT_INSERT_TYPE, odd = VQERR_RT_SELECTION_INVALID, bad = VQERR_RT_INVALID;
  const std::string spanning =
      TableBegin() + Cell(0, 0) + Hotspot(11) + Text("a") + Cell(0, 1) + Text("b") + HotspotEnd() + TableEnd();
  const UnreadableRow rows[] = {
      {"a cell", table, VQRTTYPE_TABLE_CELL, deep, refused, VQ_OK, VQ_OK},
      {"a table's end", table, VQRTTYPE_TABLE_END, deep, refused, VQ_OK, odd},
      {"a hotspot's end", popup, VQRTTYPE_HOTSPOT_END, deep, refused, VQ_OK, odd},
      {"a table", table, VQRTTYPE_TABLE, deep, VQ_OK, VQ_OK, VQ_OK},
      {"a table without its cells", table, VQRTTYPE_TABLE, shallow, VQ_OK, bad, VQ_OK},
      {"a hotspot without its end", popup, VQRTTYPE_TEXT_POPUP, shallow, VQ_OK, bad, VQ_OK},
      {"the start of a link", spanning, VQRTTYPE_LINK_HOTSPOT, deep, VQ_OK, bad, VQ_OK},
      {"a table with a link over two cells", spanning, VQRTTYPE_TABLE, deep, VQ_OK, VQ_OK, VQ_OK},
  };
  for (const UnreadableRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText source = RichText(row.Records), target = RichText(Text("kept")), part;
    VQRTObject object, copy;
    ASSERT_EQ(source.FindFirst(row.Type, &object), VQ_OK);
    ASSERT_EQ(copy.CopyRTObject(object, row.Options), VQ_OK);
    EXPECT_EQ(target.Append(copy), row.Append);
    EXPECT_EQ(target.Update(), row.Write);
    EXPECT_EQ(target.GetValueSize() > 14, row.Append == VQ_OK && row.Write == VQ_OK);
    EXPECT_EQ(source.GetRichText(object, &part), row.Select);
  }
}

struct RecordsRow {
  const char* What;
  std::string Before;
  std::vector<std::string> Appended;  // as a client's own records
  VQSTATUS Write;
};

// What a client puts together from records is held to what the parser will make of it.
TEST_F(RichTextEdit, ReadsAClientsRecordsAsALoadWill) {
  std::string deep, ends, graphic = Record(SIG_CD_GRAPHIC, "");
  for (int i = 0; i < 9; ++i) deep += Hotspot(1), ends += HotspotEnd();
  const std::string segment = Record(SIG_CD_BITMAPSEGMENT, "s"), header = Record(SIG_CD_BITMAPHEADER, "h");
  const RecordsRow rows[] = {
      {"a cell alone", Text("a"), {Cell(0, 0)}, VQERR_RT_CORRUPT_TABLE},
      {"a hotspot without its end", Text("a"), {Hotspot(1)}, VQERR_RT_INVALID},
      {"bytes behind a record", Text("a"), {Paragraph() + "xx"}, VQERR_RT_INVALID},
      {"a table", Text("a"), {TableBegin(), Cell(0, 0), TableEnd()}, VQ_OK},
      {"a button's second begin", Text("a"), {Hotspot(3), Hotspot(3), HotspotEnd()}, VQ_OK},
      {"a graphic in nine popups", deep + graphic + Text("a") + ends, {Unknown("u")}, VQ_OK},
      {"a part behind its graphic", Text("a") + graphic, {segment}, VQERR_RT_CORRUPT_GRAPHIC},
      {"a header and a part", Text("a") + graphic, {header, segment}, VQ_OK},
      {"a part behind other records", graphic + Text("a"), {segment}, VQ_OK},
  };
  for (const RecordsRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Before);
    for (std::string record : row.Appended) {
      VQCompositeData data;
      ASSERT_FALSE(VQIsError(data.Write(record.size(), record.data(), 0)));
      ASSERT_EQ(text.Append(data), VQ_OK);
    }
    EXPECT_EQ(text.Update(), row.Write);
    if (row.Write != VQ_OK) continue;
    const VQRichText again = RichText(Written(text));
    EXPECT_EQ(again.GetRichTextBody()->Initialize(), VQ_OK);
  }
}

TEST_F(RichTextEdit, WritesItemsOfBoundedSize) {
  std::string records;
  while (records.size() < 90000) records += Text(std::string(990 + records.size() % 7, 'w'));
  VQRichText text = RichText(records);
  VQRTCursor cursor = At(text, 0);
  ASSERT_EQ(text.Insert("x", &cursor), VQ_OK);
  const std::vector<std::string> values = Values(text);
  ASSERT_EQ(values.size(), 3u);
  std::string joined;
  for (const std::string& value : values) {
    EXPECT_LE(value.size(), 40960u);
    joined += value.substr(2);
    EXPECT_EQ(Written(RichText(value.substr(2))), value.substr(2)) << "a record is split";
  }
  EXPECT_EQ(joined.size(), text.GetSize());
  ASSERT_EQ(text.Update(), VQ_OK);
  // The tree looks into the new values now.
  EXPECT_EQ(Written(text), joined);
  ASSERT_EQ(text.Insert("y", &cursor), VQ_OK);
  ASSERT_EQ(text.Update(), VQ_OK);
  EXPECT_EQ(Written(text).substr(8, 4), "xyww");
}

TEST_F(RichTextEdit, RenumbersWhenThereIsNoRoom) {
  VQRichText text = RichText(Text("last"));
  VQRTObject last;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &last), VQ_OK);
  for (int i = 0; i < 1000; ++i) {
    VQStylizedText run(VQString(static_cast<unsigned long>(i)));
    ASSERT_EQ(last.InsertPreviousSibling(&run), VQ_OK);
  }
  VQRTObject before, object;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &before), VQ_OK);
  int count = 1;
  for (; text.FindNext(before, VQRTTYPE_STYLIZED_TEXT, &object) == VQ_OK; before = object, ++count) {
    ASSERT_TRUE(before.IsLeftOf(object));
    ASSERT_FALSE(object.IsLeftOf(before));
  }
  EXPECT_EQ(count, 1001);
}

TEST_F(RichTextEdit, GivesTextOfRanges) {
  const std::string table = TableBegin() + Cell(0, 0) + Text("a1") + Cell(0, 1) + Text("b1") + Cell(1, 0) + Text("a2") +
                            Cell(1, 1) + Text("b2") + TableEnd();
  VQRichText text = RichText(Text("one") + Paragraph() + Text("two") + table + Text("end"));
  EXPECT_EQ(Plain(text), "one\ntwoa1\tb1\t\na2\tb2\t\nend");
  const auto range = [&](const char* from, const char* to, VQSTATUS expected) {
    VQRTCursor start = At(text, 0), end = At(text, 0);
    EXPECT_EQ(start.GotoFirst(from), VQ_OK);
    EXPECT_EQ(end.GotoFirst(to), VQ_OK);
    VQString string;
    EXPECT_EQ(text.GetText(start, end, &string), expected);
    return TextOf(string);
  };
  EXPECT_EQ(range("ne", "wo", VQ_OK), "ne\nt");
  EXPECT_EQ(range("b1", "2", VQ_OK), "b1\t\na");
  EXPECT_EQ(range("one", "b1", VQERR_RT_SELECTION_INVALID), "");
  EXPECT_EQ(range("two", "one", VQERR_CURSOR_ORDER), "");
}

TEST_F(RichTextEdit, CompositeDataWritesAndWarns) {
  VQCompositeData data;
  std::string record = Unknown("abc");
  EXPECT_EQ(data.Write(record.size(), record.data(), 1), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(data.Write(record.size(), record.data(), 0), VQ_OK);
  EXPECT_EQ(data.GetCDSignature(), 0xFFE1);
  EXPECT_EQ(data.Write(2, nullptr, 0), VQERR_INVALID_PARAMETER);
  record = Paragraph();
  EXPECT_EQ(data.Write(record.size(), record.data(), 0), VQWARN_CD_OTHER_CLASS);
  char back[9];
  EXPECT_EQ(data.Read(0, back, 9), VQERR_RT_INVALID);
  EXPECT_EQ(VQCompositeData().Read(0, back, 1), VQERR_OBJECT_NOT_INITIALIZED);
  VQRTObject copy;
  ASSERT_EQ(copy.Copy(data), VQ_OK);
  EXPECT_EQ(StatusOf([&] { VQNewParagraph wrong(copy); }), VQERR_CONVERSION_FAILED);
  VQStylizedText run(VQString("a"));
  EXPECT_EQ(run.GetStylizedTextBody()->AppendChild(&copy), VQERR_RT_CHARACTERS);
  EXPECT_EQ(run.Append(VQStylizedText(VQString("b")), nullptr), VQERR_RT_CHARACTERS);
  VQCompositeData none;
  EXPECT_EQ(none.WriteODS(9999, back, 0), VQERR_INVALID_PARAMETER);
  EXPECT_TRUE(none.IsNull());
  // A header that claims more than there is would swallow what comes behind.
  record = Bytes({0xE1, 0xFF, 100, 0});
  ASSERT_EQ(data.Write(record.size(), record.data(), 0), VQ_OK);
  VQRichText text = RichText(Text("a"));
  ASSERT_EQ(text.Append(data), VQ_OK);
  EXPECT_EQ(text.Update(), VQERR_RT_INVALID);
}

// The main job: another session's document, one word, saved.
TEST_F(RichTextEdit, SavesAWordThroughTheStore) {
  std::string records;
  for (int i = 0; records.size() < 60000; ++i) {
    records += Paragraph() + Reference(1) + Text("line of text number " + std::to_string(i));
  }
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("edit", &database, VQCreateDatabaseOptions()), VQ_OK);
  unsigned long id = 0;
  {
    VQDocument document;
    ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
    ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
    id = document.GetSlateID();
    VQRichText body;
    ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
    EXPECT_FALSE(body.GetRichTextBody()->IsInitialized());
    VQRTCursor cursor;
    ASSERT_EQ(body.GetCursor(&cursor), VQ_OK);
    ASSERT_EQ(cursor.GotoFirst("number 700"), VQ_OK);
    ASSERT_EQ(body.Delete(&cursor, 6), VQ_OK);
    ASSERT_EQ(body.Insert("no.", &cursor, 0), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
    // The tree lives on over the saved values.
    ASSERT_EQ(cursor.GotoNext("701"), VQ_OK);
    ASSERT_EQ(document.Close(), VQ_OK);
    EXPECT_FALSE(cursor.IsValid());
  }
  VQDocument document;
  ASSERT_EQ(database.GetDocument(id, &document), VQ_OK);
  ASSERT_EQ(document.Open(), VQ_OK);
  EXPECT_EQ(document.GetItemCount(), 2u);
  VQRichText body;
  ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
  std::string expected = records;
  const std::string before = Text("line of text number 700"), after = Text("line of text no. 700");
  expected.replace(expected.find(before), before.size(), after);
  EXPECT_EQ(Written(body), expected);
}

// The values of a body's items as the slate has them.
std::vector<std::string> ItemValues(const VQRichText& text) {
  const VQRichTextBody& body = *text.GetRichTextBody();
  std::vector<vq::ItemPlace> places{{{}, body.GetValueBlock(), static_cast<std::uint32_t>(text.GetValueSize()), 0}};
  places.insert(places.end(), body.GetExtraPlaces().begin(), body.GetExtraPlaces().end());
  std::vector<std::string> values;
  for (const vq::ItemPlace& place : places) {
    const vq::MemoryLock lock(place.Value.Pool);
    values.emplace_back(reinterpret_cast<const char*>(lock.GetBytes()) + place.Value.Block, place.Size);
  }
  return values;
}

void EditSomewhere(VQRichText& text, std::mt19937& random) {
  VQRTCursor at;
  ASSERT_EQ(text.GetCursor(&at), VQ_OK);
  if (at.GotoFirst(("line of text " + std::to_string(random() % 4000)).c_str()) != VQ_OK) return;
  VQFontStyle style;
  ASSERT_EQ(at.GetFontStyle(&style), VQ_OK);
  VQRTCursor end = at + random() % 60;
  switch (random() % 5) {
    case 0:
      EXPECT_EQ(text.Insert("word ", &at, 0), VQ_OK);
      break;
    case 1:
      text.Delete(&at, &end);  // refused across the edge of a table
      break;
    case 2:
      EXPECT_EQ(text.StartNewParagraph(&end), VQ_OK);
      break;
    case 3:
      EXPECT_EQ(text.Insert(Store(std::string(3000, 'x')), &at, 0), VQ_OK);
      break;
    default:
      style.SetFontID(style.GetFontID() ^ 0x8000, 0xFFFFFFFFUL);
      EXPECT_EQ(text.SetFontStyle(at, end, style), VQ_OK);
  }
}

// Whatever was edited between two updates, the items hold what the tree holds, and those that no edit touched stay.
TEST_F(RichTextEdit, UpdatesOnlyTheItemsThatChanged) {
  const std::string bold = Record(SIG_CD_TEXT_STYLE_EXT, Bytes({1, 0x80, 0, 10}));
  std::string records = Reference(1);
  for (int i = 0; records.size() < 300000; ++i) {
    records += Paragraph() + Reference(1 + i % 3) + Text("line of text " + std::to_string(i)) + bold + Text("strong");
    if (i % 7 == 0) records += Hotspot(1) + Text("popup") + HotspotEnd() + Unknown(std::string(i % 90, 'u'));
    if (i % 50 == 0) records += TableBegin() + Cell(0, 0) + Text("a") + Cell(0, 1) + bold + Text("b") + TableEnd();
  }
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("items", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  VQRichText text;
  ASSERT_EQ(document.CreateItem("Body", &text), VQ_OK);
  ASSERT_EQ(text.Append(RichText(records)), VQ_OK);
  ASSERT_EQ(text.Update(), VQ_OK);

  std::mt19937 random(5);
  std::vector<std::string> before = ItemValues(text);
  std::size_t kept = 0;
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    for (int edits = 1 + random() % 3; edits > 0; --edits) EditSomewhere(text, random);
    const std::string expected = Written(text);
    ASSERT_EQ(text.Update(), VQ_OK);
    EXPECT_FALSE(text.IsDirty());
    ASSERT_EQ(Written(text), expected) << "the tree reads other bytes now";
    const std::vector<std::string> after = ItemValues(text);
    std::string stored;
    for (std::size_t i = 0; i < after.size(); ++i) {
      EXPECT_LE(after[i].size(), 40960u);
      stored += after[i].substr(2);
      kept += std::count(before.begin(), before.end(), after[i]) > 0;
    }
    ASSERT_EQ(stored, expected);
    before = after;
  }
  EXPECT_GT(kept, 60 * before.size() / 3);
  EXPECT_LT(before.size(), 2 * text.GetSize() / 40960 + 2) << "small items are left over";
}

TEST_F(RichTextEdit, EndsWithTheItemThatItStoodIn) {
  const std::string records = Text("old") + Unknown("u");
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("replaced", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
  VQRichText old, replaced;
  ASSERT_EQ(document.GetItem("Body", &old), VQ_OK);
  const VQRTCursor cursor = At(old, 1);
  VQRTContainer top;
  ASSERT_EQ(old.GetTopContainer(&top), VQ_OK);
  VQRichText other = RichText(Text("new"));
  VQRTObject run;
  ASSERT_EQ(other.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
  EXPECT_EQ(run.InsertNextSibling(&top), VQERR_CANT_INSERT_TYPE);
  ASSERT_EQ(document.CreateItem("Body", other, 0, VQITEMOPTION_REPLACE, &replaced), VQ_OK);
  EXPECT_EQ(Plain(replaced), "new");
  EXPECT_FALSE(cursor.IsValid());
  VQString text;
  EXPECT_EQ(old.GetText(&text), VQERR_ITEM_UNINITIALIZED);
  EXPECT_EQ(replaced.Append(old), VQERR_ITEM_UNINITIALIZED);
}

TEST_F(RichTextEdit, ReadsAfreshWhatCameThroughTheEngine) {
  const std::string records = Text("old");
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("refreshed", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
  VQRichText body;
  ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
  const VQRTCursor cursor = At(body, 1);
  ASSERT_EQ(Plain(body), "old");
  const BLOCKID& value = body.GetRichTextBody()->GetValueBlock();
  {
    const vq::MemoryLock lock(value.Pool);
    std::memcpy(lock.GetBytes() + value.Block + 2, Text("new").data(), records.size());
  }
  ASSERT_EQ(document.RefreshObjectFromSlateHandle(), VQ_OK);
  EXPECT_EQ(Plain(body), "new");
  EXPECT_FALSE(cursor.IsValid());
}

// The same face has another number in the other document.
TEST_F(RichTextEdit, TakesItsFontsToAnotherDocument) {
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("fonts", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument source, target;
  const auto make = [&](VQDocument* document, const char* face) {
    EXPECT_EQ(database.CreateDocument(document), VQ_OK);
    VQFontTable table;
    EXPECT_EQ(document->CreateItem("$Fonts", &table), VQ_OK);
    unsigned char number = 0;
    EXPECT_EQ(table.AddFace(0x22, face, &number), VQ_OK);
    EXPECT_EQ(number, 5);
  };
  make(&source, "Alpha");
  make(&target, "Beta");
  const std::string run = Record(SIG_CD_TEXT, Bytes({5, 0, 0, 10}) + "ab");
  ASSERT_EQ(source.CreateItem("Body", TYPE_COMPOSITE, run.data(), run.size()), VQ_OK);
  VQRichText body, copy;
  ASSERT_EQ(source.GetItem("Body", &body), VQ_OK);
  ASSERT_EQ(target.CreateItem(body, VQITEMOPTION_UNIQUE, &copy), VQ_OK);
  EXPECT_EQ(Written(copy), Record(SIG_CD_TEXT, Bytes({6, 0, 0, 10}) + "ab"));
  EXPECT_EQ(Written(body), run);
  VQFontTable merged;
  ASSERT_EQ(target.GetItem("$Fonts", &merged), VQ_OK);
  EXPECT_EQ(merged.GetCount(), 2u);
}

}  // namespace
