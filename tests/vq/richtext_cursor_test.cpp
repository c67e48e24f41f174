// Positions, motion, finds.
#include "tests/vq/support/records.h"

namespace {

using namespace vqtest;

class RichTextCursor : public EngineFixture {};

// Two paragraphs, the second of two runs.
std::string Sample() { return Reference(1) + Text("ab") + Paragraph() + Reference(1) + Text("cd") + Text("e\xC3\xA9"); }

TEST_F(RichTextCursor, WalksThereAndBack) {
  const VQRichText text = RichText(Sample());
  VQRTCursor end;
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  const VQRTCursor start = At(text, 0);
  // One position between each two characters, one more where the paragraph ends.
  EXPECT_EQ(end - start, 7);
  EXPECT_EQ(start - end, -7);
  for (unsigned long n = 0; n <= 7; ++n) {
    SCOPED_TRACE(n);
    EXPECT_TRUE(start + n - n == start);
    EXPECT_TRUE(end - (7 - n) == start + n);
    EXPECT_EQ(start<start + n, n> 0);
  }
  EXPECT_TRUE(start.IsAtStart());
  EXPECT_TRUE((start + 7).IsAtEnd());
  EXPECT_FALSE((start + 6).IsAtEnd());
}

// The paragraph record in the popup separates the runs around it, on the way back as on the way there.
TEST_F(RichTextCursor, PassesAPopupWithoutElements) {
  const VQRichText text = RichText(Text("ab") + Hotspot(1) + Paragraph() + HotspotEnd() + Text("cd"));
  VQRTCursor end;
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  EXPECT_EQ(end - At(text, 0), 5);
  EXPECT_EQ(At(text, 0) - end, -5);
}

TEST_F(RichTextCursor, KnowsOnePlaceBySeveralNames) {
  const VQRichText text = RichText(Sample());
  VQRTObject first, second, third;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &first), VQ_OK);
  ASSERT_EQ(text.FindNext(first, VQRTTYPE_STYLIZED_TEXT, &second), VQ_OK);
  ASSERT_EQ(text.FindNext(second, VQRTTYPE_STYLIZED_TEXT, &third), VQ_OK);
  const auto run = [](const VQRTObject& object) { return VQStylizedText(object).GetStylizedTextBody(); };
  // Neighbouring runs of one paragraph meet in one place; a paragraph record makes two of it.
  EXPECT_TRUE(VQRTCursor(run(second), 2, 1) == VQRTCursor(run(third), 1, 0));
  EXPECT_FALSE(VQRTCursor(run(first), 2, 1) == VQRTCursor(run(second), 1, 0));
  EXPECT_FALSE(first.IsLeftOf(first));
  EXPECT_TRUE(first.IsLeftOf(third));
}

TEST_F(RichTextCursor, StandsInAnEmptyRichText) {
  const VQRichText text = RichText("");
  EXPECT_EQ(text.GetSize(), 0u);
  VQRTCursor start, end;
  ASSERT_EQ(text.GetCursor(&start), VQ_OK);
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  EXPECT_TRUE(start == end);
  EXPECT_EQ(start - end, 0);
  EXPECT_FALSE(text.IsDirty());
}

struct FindRow {
  const char* Pattern;
  unsigned long Options;
  std::vector<unsigned long> Positions;  // of all matches
};

TEST_F(RichTextCursor, FindsText) {
  const VQRichText text =
      RichText(Text("one two one") + Paragraph() + Unknown("one") + Text("One \xC3\x89t\xC3\xA9 aaa"));
  const FindRow rows[] = {
      {"one", 0, {0, 8}},
      {"one", VQRTSEARCH_IGNORE_CASE, {0, 8, 12}},
      {"aa", 0, {20, 21}},
      {"\xC3\xA9", 0, {18}},
      {"ete", VQRTSEARCH_IGNORE_CASE | VQRTSEARCH_IGNORE_ACCENTS, {16}},
      {"neither", 0, {}},
      {"e", VQRTSEARCH_FROM_CURSOR, {2, 10, 14}},
  };
  for (const FindRow& row : rows) {
    SCOPED_TRACE(row.Pattern);
    VQRTCursor cursor = At(text, 0);
    const VQRTCursor start = At(text, 0);
    ASSERT_EQ(cursor.SetSearchOptions(row.Options & ~VQRTSEARCH_FROM_CURSOR), VQ_OK);
    std::vector<unsigned long> forwards, backwards;
    for (VQSTATUS s = cursor.GotoFirst(row.Pattern); s == VQ_OK; s = cursor.GotoNext(row.Pattern)) {
      forwards.push_back(static_cast<unsigned long>(cursor - start));
    }
    for (VQSTATUS s = cursor.GotoLast(row.Pattern); s == VQ_OK; s = cursor.GotoPrevious(row.Pattern)) {
      backwards.insert(backwards.begin(), static_cast<unsigned long>(cursor - start));
    }
    // The unknown record between the paragraphs is an element: one position.
    std::vector<unsigned long> expected = row.Positions;
    for (unsigned long& position : expected) position += position > 11 ? 1 : 0;
    EXPECT_EQ(forwards, expected);
    EXPECT_EQ(backwards, expected);
    if (row.Options & VQRTSEARCH_FROM_CURSOR) {
      ASSERT_EQ(cursor.GotoFirst(row.Pattern), VQ_OK);
      ASSERT_EQ(cursor.SetSearchOptions(row.Options), VQ_OK);
      ASSERT_EQ(cursor.GotoNext(row.Pattern), VQ_OK);
      EXPECT_EQ(static_cast<unsigned long>(cursor - start), expected[0]);
    }
  }
}

TEST_F(RichTextCursor, LooksLeftOfAnElement) {
  const std::string extension = Record(SIG_CD_TEXT_STYLE_EXT, Bytes({1, 0x80, 0, 10}));
  const VQRichText text = RichText(extension + Text("find me") + Unknown("u"));
  VQRTCursor cursor = At(text, 0);
  ASSERT_EQ(cursor.GotoFirst(VQRTTYPE_COMPOSITE_DATA), VQ_OK);
  VQRTObject previous;
  ASSERT_EQ(cursor.GetPreviousObject(&previous), VQ_OK);
  EXPECT_EQ(previous.GetType(), VQRTTYPE_STYLIZED_TEXT);
  ASSERT_EQ(cursor.GotoPrevious("me"), VQ_OK);
  EXPECT_EQ(cursor.GetOffset(), 6u);
}

struct OthersRow {
  const char* What;
  std::string Before;
  unsigned long Stands;    // steps from the start, of the cursor that is not in the edit
  unsigned long From, To;  // another one deletes this
  const char* Inserted;    // and puts this there
  const char* Left;        // of the first cursor, then
};

TEST_F(RichTextCursor, KeepsItsPlaceInOthersEdits) {
  const std::string run = Text("abcdef");
  const OthersRow rows[] = {
      {"behind what goes", run, 5, 1, 3, "", "ade"},
      {"at the end of what goes", run, 3, 1, 3, "", "a"},
      {"inside what goes", run, 2, 1, 4, "", "a"},
      {"at a run's end that goes", run, 6, 4, 6, "", "abcd"},
      {"inside a run's end", run, 5, 4, 6, "", "abcd"},
      {"in a run that is emptied", run, 4, 0, 6, "", ""},
      {"in an empty run that is filled", Text(""), 0, 0, 0, "abc", "abc"},
      {"in front of what comes", run, 2, 4, 4, "xy", "ab"},
      {"behind what comes", run, 5, 4, 4, "xy", "abcdxye"},
      {"in the next run", Text("ab") + Unknown("u") + Text("cde"), 4, 1, 4, "", "a"},
  };
  for (const OthersRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Before);
    VQRTCursor cursor = At(text, row.Stands), from = At(text, row.From), to = At(text, row.To), end;
    ASSERT_EQ(text.Delete(&from, &to), VQ_OK);
    ASSERT_EQ(text.Insert(row.Inserted, &from, 0), VQ_OK);
    VQString left;
    ASSERT_EQ(text.GetText(At(text, 0), cursor, &left), VQ_OK);
    EXPECT_EQ(TextOf(left), row.Left);
    ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
    EXPECT_EQ(cursor == end, Plain(text) == row.Left);
    EXPECT_EQ(cursor.IsAtEnd(), cursor == end);
    ASSERT_EQ(text.Insert("!", &cursor, 0), VQ_OK);
    EXPECT_EQ(Plain(text).substr(0, left.GetBufLength() + 1), row.Left + std::string("!"));
  }
}

// In a run of many characters, odd bytes among them, from both sides.
TEST_F(RichTextCursor, FindsTheSameFromBothSides) {
  std::string bytes;
  for (int i = 0; i < 3000; ++i)
    bytes += i % 97 == 0 ? "needle" : i % 5 == 0 ? "\xC3\xA9" : i % 11 == 0 ? "\xA9\xA9" : "e";
  const VQRichText text = RichText(Text(bytes));
  for (const char* pattern : {"needle", "\xA9", "ee", "\xC3\xA9"}) {
    std::vector<unsigned long> forwards, backwards;
    VQRTCursor cursor = At(text, 0);
    for (VQSTATUS s = cursor.GotoFirst(pattern); s == VQ_OK; s = cursor.GotoNext(pattern)) {
      forwards.push_back(cursor.GetOffset());
    }
    for (VQSTATUS s = cursor.GotoLast(pattern); s == VQ_OK; s = cursor.GotoPrevious(pattern)) {
      backwards.insert(backwards.begin(), cursor.GetOffset());
    }
    EXPECT_GT(forwards.size(), 20u);
    EXPECT_EQ(forwards, backwards) << pattern;
  }
}

TEST_F(RichTextCursor, GoesToTheEndsOfContainers) {
  const VQRichText text =
      RichText(Text("x") + TableBegin() + Cell(0, 0) + Text("ab") + Cell(0, 1) + Text("cd") + TableEnd() + Text("y"));
  VQRTCursor cursor = At(text, 0);
  VQRTObject cell;
  ASSERT_EQ(cursor.GotoNext(VQRTTYPE_TABLE_CELL, &cell), VQ_OK);
  EXPECT_TRUE(cursor.IsValid(cell));
  ASSERT_EQ(cursor.GotoEnd(VQRTTYPE_TABLE_CELL), VQ_OK);
  VQRTCursor next;
  ASSERT_EQ(next.Copy(cursor), VQ_OK);
  ++next;
  EXPECT_FALSE(next.IsValid(cell));
  // Back over the cell's border lands behind its last character.
  --next;
  EXPECT_TRUE(next == cursor);
  EXPECT_FALSE(cursor.IsInsertablePosition(VQRTTYPE_TABLE));
  ASSERT_EQ(cursor.SetScope(VQRTContainer(cell)), VQ_OK);
  EXPECT_TRUE(cursor.IsAtEnd());
  EXPECT_EQ(cursor.GotoNext("c"), VQWARN_NOT_FOUND);
  ASSERT_EQ(cursor.RemoveScope(), VQ_OK);
  EXPECT_EQ(cursor.GotoNext("c"), VQ_OK);
  EXPECT_EQ(cursor.GotoEnd(VQRTTYPE_HOTSPOT), VQWARN_NOT_FOUND);
}

TEST_F(RichTextCursor, RefusesWhatHasGone) {
  VQRichText text = RichText(Text("a") + Unknown("u") + Text("b"));
  VQRTCursor empty, cursor = At(text, 0);
  EXPECT_EQ(empty.GotoFirst(VQRTTYPE_ELEMENT), VQERR_CURSOR_INVALID);
  EXPECT_EQ(StatusOf([&] { ++empty; }), VQERR_CURSOR_INVALID);
  const VQRTCursor other = At(text, 0);
  VQRTObject object;
  ASSERT_EQ(cursor.GotoFirst(VQRTTYPE_COMPOSITE_DATA, &object), VQ_OK);
  ASSERT_EQ(text.Delete(&object), VQ_OK);
  EXPECT_FALSE(cursor.IsValid());
  EXPECT_EQ(StatusOf([&] { return cursor == other; }), VQERR_CURSOR_INVALID);
  VQRTCursor copy = other;
  EXPECT_EQ(ReturnedStatusOf([&] { return copy.Copy(cursor); }), VQERR_CURSOR_INVALID);
  EXPECT_TRUE(copy.IsValid());
  // A character that its run no longer has.
  VQRTCursor end;
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  VQRTObject run = VQRTObject(end.GetElementBody());
  ASSERT_EQ(VQStylizedText(run).SetValue(""), VQ_OK);
  ASSERT_EQ(text.Delete(&run), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return copy.Copy(end); }), VQERR_CURSOR_INVALID);
  EXPECT_EQ(StatusOf([&] { static_cast<void>(end + 1); }), VQERR_CURSOR_INVALID);
  text = VQRichText();
  EXPECT_EQ(StatusOf([&] { return other < other; }), VQERR_CURSOR_INVALID);
}

VQRTObject First(const VQRichText& text, VQRTTYPE type) {
  VQRTObject found;
  EXPECT_EQ(text.FindFirst(type, &found), VQ_OK);
  return found;
}

// Where each motion ends: the text between the start and the cursor, records that are no text left out.
TEST_F(RichTextCursor, MovesByTypeCharacterAndContainer) {
  const std::string records = Reference(1) + Text("ab") + Paragraph() + Reference(1) + Text("cb") + Hotspot(1) +
                              Text("pq") + HotspotEnd() + Paragraph() + Text("zb");
  using Motion = VQSTATUS (*)(VQRTCursor & cursor, const VQRichText& text);
  const struct {
    const char* What;
    const char* From;
    Motion Go;
    VQSTATUS Status;
    const char* Left;
  } rows[] = {
      {"first character", "z", [](VQRTCursor& c, auto&) { return c.GotoFirst('b'); }, VQ_OK, "a"},
      {"last character", "a", [](VQRTCursor& c, auto&) { return c.GotoLast('b'); }, VQ_OK, "ab\ncbpq\nz"},
      {"next character", "c", [](VQRTCursor& c, auto&) { return c.GotoNext('b'); }, VQ_OK, "ab\nc"},
      {"previous character", "z", [](VQRTCursor& c, auto&) { return c.GotoPrevious('b'); }, VQ_OK, "ab\nc"},
      {"no character", "z", [](VQRTCursor& c, auto&) { return c.GotoNext('x'); }, VQWARN_NOT_FOUND, "ab\ncbpq\n"},
      {"last run", "a", [](VQRTCursor& c, auto&) { return c.GotoLast(VQRTTYPE_STYLIZED_TEXT); }, VQ_OK, "ab\ncbpq\n"},
      {"last paragraph", "a", [](VQRTCursor& c, auto&) { return c.GotoLast(VQRTTYPE_NEW_PARAGRAPH); }, VQ_OK,
       "ab\ncbpq\n"},
      {"paragraph before", "z", [](VQRTCursor& c, auto&) { return c.GotoPrevious(VQRTTYPE_NEW_PARAGRAPH); }, VQ_OK,
       "ab\n"},
      {"paragraph before, from inside", "p",
       [](VQRTCursor& c, auto&) { return c.GotoPrevious(VQRTTYPE_NEW_PARAGRAPH); }, VQ_OK, "ab\n"},
      {"paragraph before the first", "c", [](VQRTCursor& c, auto&) { return c.GotoPrevious(VQRTTYPE_NEW_PARAGRAPH); },
       VQ_OK, ""},
      {"popup before", "z", [](VQRTCursor& c, auto&) { return c.GotoPrevious(VQRTTYPE_TEXT_POPUP); }, VQ_OK, "ab\ncb"},
      {"no table before", "z", [](VQRTCursor& c, auto&) { return c.GotoPrevious(VQRTTYPE_TABLE); }, VQWARN_NOT_FOUND,
       "ab\ncbpq\n"},
      {"a type that is none", "z", [](VQRTCursor& c, auto&) { return c.GotoLast(VQRTTYPE_NONE); }, VQERR_OUT_OF_RANGE,
       "ab\ncbpq\n"},
      {"start of the run", "b", [](VQRTCursor& c, auto&) { return c.GotoStart(VQRTTYPE_STYLIZED_TEXT); }, VQ_OK, ""},
      {"end of the popup", "p", [](VQRTCursor& c, auto&) { return c.GotoEnd(VQRTTYPE_TEXT_POPUP); }, VQ_OK, "ab\ncbpq"},
      {"start of all", "z", [](VQRTCursor& c, auto&) { return c.GotoStart(VQRTTYPE_RICH_TEXT); }, VQ_OK, ""},
      {"in no table", "z", [](VQRTCursor& c, auto&) { return c.GotoStart(VQRTTYPE_TABLE); }, VQWARN_NOT_FOUND,
       "ab\ncbpq\n"},
      {"start of a container", "a",
       [](VQRTCursor& c, auto& t) { return c.GotoStart(VQRTContainer(First(t, VQRTTYPE_TEXT_POPUP))); }, VQ_OK,
       "ab\ncb"},
      {"no container", "a", [](VQRTCursor& c, auto&) { return c.GotoStart(VQRTContainer()); }, VQERR_INVALID_PARAMETER,
       ""},
      {"a container", "a", [](VQRTCursor& c, auto& t) { return c.GotoObject(First(t, VQRTTYPE_TEXT_POPUP)); }, VQ_OK,
       "ab\ncb"},
      {"a record", "a", [](VQRTCursor& c, auto& t) { return c.GotoObject(First(t, VQRTTYPE_HOTSPOT_END)); }, VQ_OK,
       "ab\ncbpq\n"},
      {"no object", "a", [](VQRTCursor& c, auto&) { return c.GotoObject(VQRTObject()); }, VQERR_INVALID_PARAMETER, ""},
      {"an object that stands alone", "a", [](VQRTCursor& c, auto&) { return c.GotoObject(VQStylizedText("x")); },
       VQERR_RT_NOT_MEMBER, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      const VQRichText text = RichText(records);
      VQRTCursor cursor = At(text, 0), none;
      ASSERT_EQ(cursor.GotoFirst(VQString(row.From)), VQ_OK);
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Go(cursor, text); }), row.Status);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Go(none, text); }), VQERR_CURSOR_INVALID);
      VQSetThrowAllErrors(0);
      VQString left;
      EXPECT_EQ(text.GetText(At(text, 0), cursor, &left), VQ_OK);
      EXPECT_EQ(TextOf(left), row.Left);
    }
  }
}

// Selections say what they are, and in what.
TEST_F(RichTextCursor, SelectionsStandInOneContainer) {
  const VQRichText text = RichText(Text("ab") + Hotspot(1) + Text("pq") + HotspotEnd() + Text("z"));
  VQRTCursor at = At(text, 0), inside = At(text, 0);
  VQRTContainerBody& top = *text.GetRichTextBody()->GetTop();
  ASSERT_EQ(inside.GotoFirst("q"), VQ_OK);
  VQRTSelection selection;
  EXPECT_EQ(top.IsSelectionValid(at, 2UL, &selection), 1);
  EXPECT_EQ(selection.Container.GetRTObjectBody(), &top);
  EXPECT_EQ(top.IsSelectionValid(at, inside, &selection), 0) << "across the edge of a popup";
  EXPECT_EQ(top.IsSelectionValid(inside, VQRTTYPE_TEXT_POPUP, &selection), 1);
  EXPECT_EQ(selection.Start.GetType(), VQRTTYPE_TEXT_POPUP);
  EXPECT_EQ(top.IsSelectionValid(at, VQRTTYPE_TEXT_POPUP, &selection), 0);
  EXPECT_EQ(top.IsSelectionValid(selection.Start, &selection), 1);
  EXPECT_EQ(top.IsSelectionValid(VQStylizedText("x"), &selection), 0);
  EXPECT_EQ(top.IsSelectionValid(at, 2UL, nullptr), 0);
  VQRichText part;
  for (const int throws : {0, 1}) {
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.GetRichText(at, inside, &part); }), VQERR_RT_SELECTION_INVALID);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.GetRichText(inside, at, &part); }), VQERR_CURSOR_ORDER);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.GetRichText(at, VQRTTYPE_TABLE, &part); }),
              VQERR_RT_SELECTION_INVALID);
    EXPECT_EQ(ReturnedStatusOf([&] { return text.GetRichText(at, inside, nullptr); }), VQERR_INVALID_PARAMETER);
    VQSetThrowAllErrors(0);
  }
  EXPECT_TRUE(part.IsNull());
  VQRTContainer popup;
  EXPECT_EQ(inside.GetParentContainer(VQRTTYPE_HOTSPOT, &popup), VQ_OK);
  EXPECT_EQ(at.GetParentContainer(VQRTTYPE_HOTSPOT, &popup), VQWARN_NOT_FOUND);
  EXPECT_TRUE(at++ == At(text, 0));
  EXPECT_TRUE(at-- == At(text, 1));
  EXPECT_TRUE(inside >= at);
}

}  // namespace
