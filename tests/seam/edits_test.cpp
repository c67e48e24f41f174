// Each edit of a rich text is done whole or not at all: each allocation of the library, and each call of the engine,
// fails once. Then text and tables are what they were, and the same edit at the same cursors succeeds.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <random>

#include "engine/engine.h"
#include "tests/home.h"
#include "tests/seam/seam.h"
#include "vq/vq.h"

namespace {

std::string Word(unsigned value) { return {static_cast<char>(value), static_cast<char>(value >> 8)}; }
std::string Record(unsigned signature, const std::string& data) {
  return Word(signature) + Word(static_cast<unsigned>(data.size() + 4)) + data;
}
std::string Link(unsigned position) { return Record(0xFF91, Word(position)); }
std::string Shown(const std::string& text) { return Record(0xFF85, std::string("\1\0\0\12", 4) + text); }
// With a run that it shows.
std::string Popup() { return Record(0xFFAD, Word(1) + std::string(6, '\0')) + Shown("it shows") + Word(0x02AE); }

// What the rich text would be stored as, without its type words.
std::string RecordsOf(const VQRichText& text) {
  std::vector<vq::ItemBlock> blocks;
  EXPECT_EQ(text.GetRichTextBody()->WriteBlocks(&blocks), VQ_OK);
  std::string records;
  for (const vq::ItemBlock& block : blocks) {
    records.append(static_cast<const char*>(EngMemLock(block.Memory)) + 2, block.Size - 2);
    EngMemUnlock(block.Memory);
    EngMemFree(block.Memory);
  }
  return records;
}

struct Texts {
  VQDocument Document;
  VQRichText Body, Other;
  VQRTCursor Start, End;  // in the first paragraph and in the last
  VQTable Table;
  VQFontStyle Font;
  VQParagraphStyle Style;
  VQNamedStyle Named;
};

class Edits : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(Home.Path("file")) << "attached";
    ASSERT_EQ(Session.Init(), VQ_OK);
    ASSERT_EQ(Session.CreateDatabase("edits", &Database, VQCreateDatabaseOptions()), VQ_OK);
    Target = Build("target", 1, Link(0) + Popup() + Shown("end."));
    Source = Build("source", 2, Link(0));
  }
  void TearDown() override {
    Disarm();
    Target = Source = VQDocument();
    ASSERT_EQ(Database.Close(), VQ_OK);
    Database = VQDatabase();
    EXPECT_EQ(Session.Term(1), VQ_OK);
  }
  static void Disarm() {
    seam::Arm(0);
    seam::ArmMemory(0);
  }

  // A document with faces, styles, a table, an attachment and a link.
  VQDocument Build(const char* words, int number, const std::string& more) {
    VQDocument document;
    VQRichText body;
    EXPECT_EQ(Database.CreateDocument(&document), VQ_OK);
    EXPECT_EQ(document.CreateItem("Body", &body), VQ_OK);
    EXPECT_EQ(body.Append(VQString(words) += " one\ntwo\nthree and more"), VQ_OK);
    VQRTCursor start, end;
    EXPECT_EQ(body.GetCursor(&start), VQ_OK);
    end = start + 3;
    VQNamedStyle named;
    EXPECT_EQ(named.SetName(words), VQ_OK);
    EXPECT_EQ(body.SetFontStyle(start, end, VQFontStyle(0xC0, 0, words, 1, 0)), VQ_OK);
    EXPECT_EQ(body.SetParagraphStyle(start, end, named), VQ_OK);
    EXPECT_EQ(body.GetEndCursor(&end), VQ_OK);
    if (number == 2) {
      EXPECT_EQ(body.CreateAttachment(Home.Path("file").c_str(), &end), VQ_OK);
    }
    VQTable table;
    EXPECT_EQ(start.GotoFirst("three"), VQ_OK);
    EXPECT_EQ(body.CreateTable(2, 2, &start, &table), VQ_OK);
    EXPECT_EQ(table(1, 1).Append("inside"), VQ_OK);
    const std::string records = RecordsOf(body) + more;
    EXPECT_EQ(document.DeleteItem("Body"), VQ_OK);
    EXPECT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, records.data(), records.size()), VQ_OK);
    const std::string link = Record(0xFFE1, std::string(4, static_cast<char>(number)));
    EXPECT_EQ(document.CreateItem("$Links", TYPE_COMPOSITE, link.data(), link.size()), VQ_OK);
    EXPECT_EQ(document.Save(), VQ_OK);
    return document;
  }

  void Open(Texts* texts) {
    ASSERT_EQ(Database.CreateDocument(Target, &texts->Document), VQ_OK);
    if (!texts->Document.IsOpen()) {
      ASSERT_EQ(texts->Document.Open(), VQ_OK);
    }
    ASSERT_EQ(texts->Document.GetItem("Body", &texts->Body), VQ_OK);
    ASSERT_EQ(Source.GetItem("Body", &texts->Other), VQ_OK);
    ASSERT_EQ(texts->Body.GetCursor(&texts->Start), VQ_OK);
    texts->Start += 4;
    ASSERT_EQ(texts->Body.GetCursor(&texts->End), VQ_OK);
    ASSERT_EQ(texts->End.GotoLast("and"), VQ_OK);
    VQRTObject table;
    ASSERT_EQ(texts->Body.FindFirst(VQRTTYPE_TABLE, &table), VQ_OK);
    texts->Table = table;
    texts->Font = VQFontStyle(0xC0, 0, "New Face", 1, 0);
    ASSERT_EQ(texts->Font.SetFontID(texts->Font.GetFontID() | 0x8000, 0xFF00), VQ_OK);
    ASSERT_EQ(texts->Style.SetAlignment(3), VQ_OK);
    ASSERT_EQ(texts->Named.SetName("new"), VQ_OK);
    VQFontStyle font(0xC0, 0, "Name's Face", 1, 0);
    ASSERT_EQ(texts->Named.SetFontStyle(font), VQ_OK);
  }
  // Text, faces and all other items.
  static std::string Seen(const Texts& texts) {
    std::string seen = RecordsOf(texts.Body);
    VQFontTable fonts;
    if (texts.Body.GetFontTable(&fonts) == VQ_OK) seen += "/" + std::to_string(fonts.GetCount());
    VQItemArray items;
    VQDocument document = texts.Document;
    EXPECT_EQ(document.GetItems(&items), VQ_OK);
    for (unsigned long i = 0; i < items.GetCount(); ++i) {
      const VQString name = items[i].GetName();
      seen += "/" + std::string(reinterpret_cast<const char*>(name.GetBuf()), name.GetBufLength());
    }
    return seen;
  }

  using Edit = std::function<VQSTATUS(Texts&)>;
  using Switch = void (*)(unsigned long);
  using Question = bool (*)();
  static VQSTATUS Try(const Edit& edit, Texts& texts) {
    try {
      return edit(texts);
    } catch (VQSTATUS status) {
      return status;
    }
  }
  // What operations on text, records and the size of a block give is an answer: they have nothing to fail in.
  static bool AnsweredWrongly() {
    const std::string failed = seam::Failed() ? seam::Failed() : "";
    return failed.starts_with("EngText") || failed.starts_with("EngOds") || failed == "EngMemGetSize";
  }
  void FailEach(const Edit& edit, Switch arm, Question struck) {
    std::string expected;
    {
      Texts texts;
      Open(&texts);
      const VQSTATUS status = Try(edit, texts);
      ASSERT_FALSE(VQIsError(status)) << std::hex << status;
      expected = Seen(texts);
    }
    unsigned long n = 1;
    for (bool more = true; more; ++n) {
      SCOPED_TRACE(n);
      Texts texts;
      Open(&texts);
      const std::string before = Seen(texts);
      ASSERT_NE(before, expected);
      arm(n);
      VQSTATUS status = Try(edit, texts);
      const VQSTATUS first = status;
      more = struck();
      const bool wrong = AnsweredWrongly();
      Disarm();
      if (wrong) continue;
      if (VQIsError(status)) {
        ASSERT_EQ(Seen(texts), before) << std::hex << status;
        status = Try(edit, texts);
      }
      ASSERT_FALSE(VQIsError(status)) << std::hex << status;
      ASSERT_EQ(Seen(texts), expected) << std::hex << first;
    }
    EXPECT_GT(n, 2u);
  }

  struct Row {
    const char* what;
    Edit edit;
  };
  std::vector<Row> Rows() const {
    const std::string file = Home.Path("file");
    return {
        {"a line", [](Texts& t) { return t.Body.Insert("words that are many", &t.Start); }},
        {"lines", [](Texts& t) { return t.Body.Insert("some words\nand others\n\nthe last", &t.Start); }},
        {"lines at the end", [](Texts& t) { return t.Body.Append("some words\nand others\n\nthe last"); }},
        {"a rich text at the end", [](Texts& t) { return t.Body.Append(t.Other); }},
        {"a rich text", [](Texts& t) { return t.Body.Insert(t.Other, &t.Start); }},
        {"an object", [](Texts& t) { return t.Body.Insert(t.Table, &t.Start); }},
        {"an object at the end", [](Texts& t) { return t.Body.Append(t.Table); }},
        {"a paragraph", [](Texts& t) { return t.Body.StartNewParagraph(&t.Start); }},
        {"a font", [](Texts& t) { return t.Body.SetFontStyle(t.Start, t.End, t.Font); }},
        {"a style", [](Texts& t) { return t.Body.SetParagraphStyle(t.Start, t.End, t.Style); }},
        {"a named style", [](Texts& t) { return t.Body.SetParagraphStyle(t.Start, t.End, t.Named); }},
        {"a table", [](Texts& t) { return t.Body.CreateTable(3, 2, &t.Start); }},
        {"rows", [](Texts& t) { return t.Table.InsertRows(0, 2); }},
        {"columns", [](Texts& t) { return t.Table.InsertColumns(1, 1); }},
        {"fewer rows", [](Texts& t) { return t.Table.DeleteRows(0, 1); }},
        {"fewer columns", [](Texts& t) { return t.Table.DeleteColumns(0, 1); }},
        {"a width", [](Texts& t) { return t.Table.SetColumnSpacing(0.1); }},
        {"a range goes", [](Texts& t) { return t.Body.Delete(&t.Start, &t.End); }},
        {"a table goes", [](Texts& t) { return t.Body.Delete(&t.Table); }},
        {"another value", [](Texts& t) { return t.Body.SetValue("one\ntwo"); }},
        {"one paragraph of two", [](Texts& t) { return t.Body.MergeNextParagraph(&t.Start); }},
        {"no hotspot",
         [](Texts& t) {
           VQRTCursor end;
           const VQSTATUS status = t.Body.GetEndCursor(&end);
           return status == VQ_OK ? t.Body.ClearHotspotRange(t.Start, end) : status;
         }},
        {"an attachment", [file](Texts& t) { return t.Body.CreateAttachment(file.c_str(), &t.Start); }},
    };
  }

  ClientHome Home;
  VQQuillonSession Session;
  VQDatabase Database;
  VQDocument Target, Source;
};

TEST_F(Edits, AreWholeOrNotDoneOutOfMemory) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.what);
    FailEach(row.edit, seam::ArmMemory, seam::MemoryFailed);
  }
}

TEST_F(Edits, AreWholeOrNotDoneWhenTheEngineFails) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.what);
    FailEach(row.edit, seam::Arm, [] { return seam::Failed() != nullptr; });
  }
}

// At random places one after the other: refused or out of memory, nothing has happened.
TEST_F(Edits, AtRandomPlaces) {
  std::mt19937 random(20250101);
  const std::vector<Row> rows = Rows();
  const char* rounds = std::getenv("QUILLON_ROUNDS");
  for (int round = rounds ? std::atoi(rounds) : 6; round > 0; --round) {
    Texts texts;
    Open(&texts);
    for (int step = 0; step < 30; ++step) {
      const Row& row = rows[random() % rows.size()];
      SCOPED_TRACE(std::to_string(round) + " " + std::to_string(step) + " " + row.what);
      VQRTObject table;
      ASSERT_EQ(texts.Body.GetCursor(&texts.Start), VQ_OK);
      texts.Start += random() % 60;
      texts.End = texts.Start + random() % 30;
      if (texts.Body.FindFirst(VQRTTYPE_TABLE, &table) == VQ_OK) texts.Table = table;
      const std::string before = Seen(texts);
      seam::ArmMemory(1 + random() % 80);
      VQSTATUS status = Try(row.edit, texts);
      Disarm();
      if (VQIsError(status)) {
        ASSERT_EQ(Seen(texts), before) << std::hex << status;
        status = Try(row.edit, texts);
      }
      if (VQIsError(status)) {
        ASSERT_EQ(Seen(texts), before) << std::hex << status;
      }
      ASSERT_TRUE(texts.Body.GetRichTextBody()->IsInitialized());
    }
    ASSERT_EQ(texts.Document.Save(), VQ_OK);
  }
}

}  // namespace
