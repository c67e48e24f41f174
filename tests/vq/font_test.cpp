// Packed fonts, font styles, font tables, and faces that follow their runs.
#include "vq/richtext/font.h"

#include "tests/vq/support/records.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/fonttable.h"
#include "vq/store/vqcreate.h"
#include "vq/store/vqdbbody.h"
#include "vq/store/vqdoc.h"

namespace {

using namespace vqtest;

class Font : public EngineFixture {};

TEST(FontID, PacksOneExclusiveAttribute) {
  const struct {
    unsigned Attributes;
    VQSTATUS Status;
    unsigned Packed;
  } rows[] = {
      {0x00F, VQ_OK, 0x0F},
      {0x010, VQ_OK, 0x10},
      {0x021, VQ_OK, 0x21},
      {0x080, VQ_OK, 0x80},
      {0x102, VQ_OK, 0x92},
      {0x200, VQ_OK, 0xA0},
      {0x030, VQERR_INVALID_PARAMETER, 0},
      {0x180, VQERR_INVALID_PARAMETER, 0},
      {0x220, VQERR_INVALID_PARAMETER, 0},
      {0x800, VQERR_INVALID_PARAMETER, 0},
  };
  for (const auto& row : rows) {
    std::uint8_t packed = 0;
    std::uint16_t back = 0;
    EXPECT_EQ(vq::fontid::PackAttributes(static_cast<std::uint16_t>(row.Attributes), &packed), row.Status);
    EXPECT_EQ(packed, row.Packed) << row.Attributes;
    if (row.Status != VQ_OK) continue;
    EXPECT_EQ(vq::fontid::UnpackAttributes(packed, &back), VQ_OK);
    EXPECT_EQ(back, row.Attributes);
  }
  std::uint16_t ignored = 0;
  for (unsigned packed : {0xB0U, 0x30U, 0x3FU}) {
    EXPECT_EQ(vq::fontid::UnpackAttributes(static_cast<std::uint8_t>(packed), &ignored), VQERR_INVALID_PARAMETER);
  }
}

TEST_F(Font, StylesMergeByMaskAndRefuseWhole) {
  VQFontStyle style, other;
  ASSERT_EQ(style.SetAttributes(VQFONT_BOLD | VQFONT_SUPERSCRIPT), VQ_OK);
  ASSERT_EQ(other.SetFontID(0x18078004, VQFONTMASK_ALL), VQ_OK);
  EXPECT_EQ(style.SetFontStyle(other, VQFONT_SHADOW), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(style.GetFontID(), 0x0A001101U) << "unchanged by the refusal";
  EXPECT_EQ(style.SetFontStyle(other, VQFONT_SUPERSCRIPT | VQFONT_SHADOW | VQFONTMASK_SIZE), VQ_OK);
  EXPECT_EQ(style.GetFontID(), 0x18008101U);
  EXPECT_EQ(style.GetShadowOffset(), 2U);
  EXPECT_EQ(style.SetFontStyle(other, VQFONTMASK_FACE | VQFONTMASK_COLOR), VQ_OK);
  EXPECT_EQ(TextOf(style.GetFaceName()), "Courier");
  EXPECT_EQ(style.SetAttributes(0x30), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(style.SetFaceID(9), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(style.SetCDFace({4, 0x20, "Low"}), VQERR_INVALID_PARAMETER);
  ASSERT_EQ(style.SetFaceID(2), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return style.GetPitch() > 0; }), VQERR_INVALID_PARAMETER);
}

TEST_F(Font, NamesOfStandardFacesMustFit) {
  EXPECT_EQ(VQFontStyle(0x30, 1, "Courier", 0, 0).GetFaceID(), VQFACE_COURIER);
  const auto made = [](unsigned char family, unsigned char pitch, const std::string& name) {
    return StatusOf([&] { return VQFontStyle(family, pitch, Store(name), 0, 0).IsValid(); });
  };
  EXPECT_EQ(made(0x30, 2, "Courier"), VQERR_FONT_STANDARD_NAME);
  EXPECT_EQ(made(0x30, 2, std::string(31, 'n')), VQ_OK);
  EXPECT_EQ(made(0x30, 2, std::string(33, 'n')), VQERR_STRING_TOO_LONG);
  VQFontStyle trueType(0x40, 2, "Quadrata", 1, 0);
  EXPECT_EQ(trueType.GetFamily(), 0x40);
  EXPECT_EQ(trueType.GetPitch(), 2);
  EXPECT_TRUE(trueType.IsTrueType());
  EXPECT_FALSE(trueType.IsMonospaced());
}

TEST_F(Font, TableAnswersMissesAndKeepsNumbers) {
  VQFontTable table(new VQFontTableBody);
  CDFACE face{};
  EXPECT_EQ(table.GetCDFaceByFaceID(4, &face), VQ_OK);
  EXPECT_EQ(face.Family, 0x31);
  EXPECT_EQ(table.GetCDFaceByName("None", &face), VQWARN_NOT_FOUND);
  EXPECT_STREQ(reinterpret_cast<const char*>(face.Name), "MS_SERIF");
  EXPECT_EQ(table.Append(3, 0x20, "Low"), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(table.Append(9, 0x20, "Nine"), VQ_OK);
  EXPECT_EQ(table.Append(0, 0x20, "Ten"), VQ_OK);
  EXPECT_EQ(table.Insert(0, 9, 0x20, "Other"), VQERR_FONT_EXISTS);
  EXPECT_EQ(table.Insert(0, 0, 0x20, "Ten"), VQERR_FONT_EXISTS);
  EXPECT_EQ(table.Insert(5, 0, 0x20, "Far"), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(table.Insert(0, 8, 0x20, "Eight"), VQ_OK);
  unsigned char number = 0;
  EXPECT_EQ(table.AddFace(0x20, "New", &number), VQ_OK);
  EXPECT_EQ(number, 11) << "9 and 10 are in use";
  EXPECT_EQ(table.AddFace(0x20, "Eight", &number), VQ_OK);
  EXPECT_EQ(number, 8);
  EXPECT_EQ(table.DeleteByName("New"), VQ_OK);
  EXPECT_EQ(table.DeleteByPosition(2, 2), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(table.AddFace(0x20, "Newer", &number), VQ_OK);
  EXPECT_EQ(number, 11) << "a freed highest number is used again";
  EXPECT_EQ(table.Append(255, 0x20, "Last"), VQ_OK);
  EXPECT_EQ(table.Append(100, 0x20, "Late"), VQERR_TOO_MANY_FONTS);
}

std::string NamesIn(const VQFontTable& table) {
  std::string names;
  for (unsigned long i = 0; i < table.GetCount(); ++i) {
    names += reinterpret_cast<const char*>(table[i].Name) + std::to_string(table[i].Face) + " ";
  }
  return names;
}

TEST_F(Font, TableTakesAndGivesEntriesInEveryForm) {
  const CDFACE nine{9, 0x22, "Nine"}, low{3, 0x22, "Low"}, nameless{8, 0x22, ""};
  const VQFontStyle style(0x10, 2, "Own", 1, 0), helv(0x20, 2, "Helv", 0, 0);
  const struct {
    const char* What;
    VQSTATUS (*Edit)(VQFontTable& table, const CDFACE& face, const VQFontStyle& style);
    const CDFACE* Face;
    const VQFontStyle* Style;
    VQSTATUS Status;
    const char* After;
  } rows[] = {
      {"append", [](VQFontTable& t, auto& f, auto&) { return t.Append(f); }, &nine, &style, VQ_OK, "Six6 Ten10 Nine9 "},
      {"<<", [](VQFontTable& t, auto& f, auto&) { return t << f, VQSTATUS{VQ_OK}; }, &nine, &style, VQ_OK,
       "Six6 Ten10 Nine9 "},
      {"a low face", [](VQFontTable& t, auto& f, auto&) { return t.Append(f); }, &low, &style, VQERR_INVALID_PARAMETER,
       "Six6 Ten10 "},
      {"no name", [](VQFontTable& t, auto& f, auto&) { return t.Append(f); }, &nameless, &style, VQERR_NULL_STRING,
       "Six6 Ten10 "},
      {"insert a style", [](VQFontTable& t, auto&, auto& s) { return t.Insert(1, s); }, &nine, &style, VQ_OK,
       "Six6 Own5 Ten10 "},
      {"a style of a standard face", [](VQFontTable& t, auto&, auto& s) { return t.Append(s); }, &nine, &helv,
       VQERR_INVALID_PARAMETER, "Six6 Ten10 "},
      {"no style", [](VQFontTable& t, auto&, auto&) { return t.Append(VQFontStyle()); }, &nine, &style,
       VQERR_UNINITIALIZED_ARGUMENT, "Six6 Ten10 "},
      {"delete a face", [](VQFontTable& t, auto&, auto&) { return t.DeleteByFaceID(10); }, &nine, &style, VQ_OK,
       "Six6 "},
      {"delete none", [](VQFontTable& t, auto&, auto&) { return t.DeleteByFaceID(7); }, &nine, &style, VQWARN_NOT_FOUND,
       "Six6 Ten10 "},
      {"delete no name", [](VQFontTable& t, auto&, auto&) { return t.DeleteByName(nullptr); }, &nine, &style,
       VQERR_INVALID_PARAMETER, "Six6 Ten10 "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      VQFontTable table(new VQFontTableBody), none;
      ASSERT_EQ(table.Append(6, 0x22, "Six"), VQ_OK);
      ASSERT_EQ(table.Append(10, 0x22, "Ten"), VQ_OK);
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Edit(table, *row.Face, *row.Style); }), row.Status);
      const VQSTATUS null = StatusOf([&] { return row.Edit(none, *row.Face, *row.Style); });
      EXPECT_EQ(null, VQERR_OBJECT_NOT_INITIALIZED);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(NamesIn(table), row.After);
    }
  }
}

// Styles and entries by face, name and position; a miss can still be shown.
TEST_F(Font, TableGivesStyles) {
  VQFontTable table(new VQFontTableBody);
  ASSERT_EQ(table.Append(6, 0x12, "Six"), VQ_OK);
  const struct {
    const char* What;
    VQSTATUS (*Get)(const VQFontTable&, VQFontStyle*);
    VQSTATUS Status;
    const char* Name;
    unsigned Face;
  } rows[] = {
      {"a face", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByFaceID(6, s); }, VQ_OK, "Six", 6},
      {"a standard face", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByFaceID(4, s); }, VQ_OK,
       "Courier", 4},
      {"a face that has no name", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByFaceID(2, s); },
       VQERR_INVALID_PARAMETER, "-", 0},
      {"a face that is gone", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByFaceID(7, s); },
       VQWARN_NOT_FOUND, "MS_SERIF", 7},
      {"a name", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByName("Six", s); }, VQ_OK, "Six", 6},
      {"a name that is not there", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByName("six", s); },
       VQWARN_NOT_FOUND, "Tms Rmn", 0},
      {"no name", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByName(nullptr, s); },
       VQERR_INVALID_PARAMETER, "-", 0},
      {"a position", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByPosition(0, s); }, VQ_OK, "Six", 6},
      {"a position behind", [](const VQFontTable& t, VQFontStyle* s) { return t.GetFaceByPosition(1, s); },
       VQERR_OUT_OF_RANGE, "-", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      VQFontStyle style;
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Get(table, &style); }), row.Status);
      EXPECT_TRUE(VQIsError(ReturnedStatusOf([&] { return row.Get(table, nullptr); })));
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Get(VQFontTable(), &style); }), VQERR_OBJECT_NOT_INITIALIZED);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(style.IsNull() ? "-" : TextOf(style.GetFaceName()), row.Name);
      if (!style.IsNull()) {
        EXPECT_EQ(style.GetFaceID(), row.Face);
      }
    }
  }
  EXPECT_EQ(StatusOf([&] { return table[1].Face > 0; }), VQERR_BAD_SUBSCRIPT);
}

TEST_F(Font, TablesMergeByName) {
  VQFontTable table(new VQFontTableBody), other(new VQFontTableBody), full(new VQFontTableBody);
  ASSERT_EQ(table.Append(5, 0x22, "A"), VQ_OK);
  ASSERT_EQ(other.Append(5, 0x22, "B"), VQ_OK);
  ASSERT_EQ(other.Append(9, 0x12, "A"), VQ_OK);
  ASSERT_EQ(full.Append(254, 0x22, "Z"), VQ_OK);
  ASSERT_EQ(table.Merge(other), VQ_OK);
  EXPECT_EQ(NamesIn(table), "A5 B6 ");
  EXPECT_EQ(table[0].Family, 0x22) << "what is there stays";
  EXPECT_FALSE(table == other);
  ASSERT_EQ(table.Merge(table), VQ_OK);
  EXPECT_EQ(NamesIn(table), "A5 B6 ");
  EXPECT_EQ(full.Merge(other), VQERR_TOO_MANY_FONTS);
  EXPECT_EQ(NamesIn(full), "Z254 ") << "all or none";
  EXPECT_EQ(table.Merge(VQFontTable()), VQERR_UNINITIALIZED_ARGUMENT);
  VQFontTable many(new VQFontTableBody);
  unsigned char number = 0;
  for (int i = 0; i < 251; ++i) ASSERT_EQ(many.AddFace(0x22, ("F" + std::to_string(i)).c_str(), &number), VQ_OK);
  EXPECT_EQ(number, 255);
  EXPECT_EQ(many.AddFace(0x22, "More", &number), VQERR_TOO_MANY_FONTS) << "with fewer than 255 entries";
}

// A table that takes its place in a document, is emptied, and is read back.
TEST_F(Font, TableIsStoredWithItsDocument) {
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("fonts", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  VQFontTable table;
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("$Fonts", &table), VQ_OK);
  ASSERT_EQ(table.Append(9, 0x22, "Nine"), VQ_OK);
  ASSERT_EQ(table.Update(), VQ_OK);
  EXPECT_EQ(table.GetValueSize(), 42u);
  for (const int throws : {0, 1}) {
    ASSERT_EQ(table.DeleteByPosition(0, table.GetCount()), VQ_OK);
    VQSetThrowAllErrors(throws);
    EXPECT_EQ(ReturnedStatusOf([&] { return table.Update(); }), VQERR_FONT_REQUIRED);
    VQSetThrowAllErrors(0);
    ASSERT_EQ(table.Append(9, 0x22, "Nine"), VQ_OK);
  }
  ASSERT_EQ(document.Save(), VQ_OK);
  VQDocument again;
  VQFontTable read;
  ASSERT_EQ(database.GetDocument(document.GetSlateID(), &again), VQ_OK);
  ASSERT_EQ(again.Open(), VQ_OK);
  ASSERT_EQ(again.GetItem("$Fonts", &read), VQ_OK);
  EXPECT_EQ(NamesIn(read), "Nine9 ");
  EXPECT_TRUE(read == table);
  EXPECT_EQ(TextOf(VQFontStyle(0x0A000009, again.GetSlateBody()).GetFaceName()), "Nine");
  VQFontStyle other(0x0A000009, &read), same(0x0A000009, &table);
  EXPECT_TRUE(other == same);
  ASSERT_EQ(other.SetColor(7), VQ_OK);
  EXPECT_EQ(other.GetColor(), 7);
  EXPECT_EQ(other.SetColor(256), VQERR_COLOR_INDEX);
  EXPECT_FALSE(other == same);
  EXPECT_EQ(other.GetFontTable(&table), VQWARN_NOT_FOUND) << "it is in no text";
}

std::string FaceOfFirstRun(const VQRichText& text) {
  VQRTObject object;
  EXPECT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &object), VQ_OK);
  VQFontStyle font;
  EXPECT_EQ(VQStylizedText(object).GetFontStyle(&font), VQ_OK);
  return TextOf(font.GetFaceName());
}

// A document with a body of one run in the named face.
unsigned long Store(VQDatabase& database, const char* face) {
  VQDocument document;
  VQRichText body;
  EXPECT_EQ(database.CreateDocument(&document), VQ_OK);
  EXPECT_EQ(document.CreateItem("Body", &body), VQ_OK);
  EXPECT_EQ(body.Append("text"), VQ_OK);
  EXPECT_EQ(body.SetFontStyle(At(body, 0), At(body, 4), VQFontStyle(0x20, 2, face, 0, 0)), VQ_OK);
  EXPECT_EQ(document.Save(), VQ_OK);
  return document.GetSlateID();
}

TEST_F(Font, FacesAreSavedAndCarriedToOtherDocuments) {
  VQDatabase database;
  ASSERT_EQ(Session->CreateDatabase("fonts", &database, VQCreateDatabaseOptions()), VQ_OK);
  const unsigned long first = Store(database, "Quadrata"), second = Store(database, "Ronda");
  for (const char* way : {"append", "item", "join"}) {
    SCOPED_TRACE(way);
    VQDocument from, to;
    VQRichText source, copied;
    VQFontTable table;
    ASSERT_EQ(database.GetDocument(first, &from), VQ_OK);
    ASSERT_EQ(from.Open(), VQ_OK);
    ASSERT_EQ(database.GetDocument(second, &to), VQ_OK);
    ASSERT_EQ(to.Open(), VQ_OK);
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    EXPECT_EQ(FaceOfFirstRun(source), "Quadrata");
    if (way == std::string("item")) {
      ASSERT_EQ(to.CreateItem("Copy", source, 0, VQITEMOPTION_UNIQUE, &copied), VQ_OK);
    } else if (way == std::string("join")) {
      ASSERT_EQ(to.CreateItem("Empty", &copied), VQ_OK);
      ASSERT_EQ(source.Append(std::string(20000, '\n').c_str(), 1), VQ_OK) << "several items";
      ASSERT_EQ(to.CreateItem("Empty", source, 0, VQITEMOPTION_APPEND, &copied), VQ_OK);
      EXPECT_EQ(Plain(copied).size(), 20004U);
    } else {
      ASSERT_EQ(to.CreateItem("Appended", &copied), VQ_OK);
      ASSERT_EQ(copied.Append(source), VQ_OK);
    }
    EXPECT_EQ(FaceOfFirstRun(copied), "Quadrata");
    ASSERT_EQ(to.Save(), VQ_OK);
    ASSERT_EQ(to.GetItem("$Fonts", &table), VQ_OK);
    EXPECT_EQ(table.GetCount(), 2U);
  }
  ASSERT_EQ(database.Close(), VQ_OK);
}

TEST_F(Font, KeepsWhatIsBehindAnExtension) {
  VQRichText text = RichText(Record(SIG_CD_TEXT_STYLE_EXT, Bytes({1, 0x80, 0, 10}) + "more") + Text("a") + Text("b"));
  VQRTObject run;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
  VQStylizedText first(run);
  const unsigned long font = first.GetStylizedTextBody()->GetFontID() ^ 0x100;
  ASSERT_EQ(first.GetStylizedTextBody()->SetFontID(font), VQ_OK);
  const std::string written = Written(text);
  EXPECT_NE(written.find("more"), std::string::npos);
  VQRichText again = RichText(written);
  EXPECT_EQ(Written(again), written);
  ASSERT_EQ(again.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run), VQ_OK);
  EXPECT_EQ(VQStylizedText(run).GetStylizedTextBody()->GetFontID(), font);
}

}  // namespace
