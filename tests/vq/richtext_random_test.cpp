// Random edits against plain lists: of characters with their fonts, and of paragraphs with their alignment; then of
// whole rich texts, with tables and attachments among the paragraphs, against a string.
#include <algorithm>
#include <fstream>
#include <memory>
#include <random>
#include <set>

#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/richobjects/vqrtattach.h"
#include "vq/richtext/font.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rthistory.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrttabl.h"

namespace {

using namespace vqtest;

struct Character {
  char Byte;
  unsigned long Font;  // 0 for the end of a paragraph
  bool operator==(const Character&) const = default;
};
using Characters = std::vector<Character>;

constexpr unsigned long kFonts[] = {0x0A000001, 0x0C000101, 0x0A008001, 0x0A00A003};

std::string Shown(const Characters& characters) {
  std::string shown;
  unsigned long font = 0;
  for (const Character& character : characters) {
    if (character.Font && character.Font != font) shown += "<" + std::to_string(character.Font) + ">";
    if (character.Font) font = character.Font;
    shown += character.Byte;
  }
  return shown;
}

Characters CharactersOf(const VQRichText& text) {
  Characters all;
  VQRTContainer top;
  EXPECT_EQ(text.GetTopContainer(&top), VQ_OK);
  for (VQRTObjectBody* object = top.GetRTContainerBody()->GetFirstChild(); object; object = object->GetNext()) {
    VQString string;
    EXPECT_EQ(object->GetText(&string), VQ_OK);
    const bool run = object->GetType() == VQRTTYPE_STYLIZED_TEXT;
    const unsigned long font = run ? static_cast<VQStylizedTextBody*>(object)->GetFontID() : 0;
    for (const char byte : TextOf(string)) all.push_back({byte, font});
  }
  return all;
}

std::vector<unsigned short> AlignmentsOf(const VQRichText& text) {
  std::vector<unsigned short> all;
  VQRTContainer top;
  EXPECT_EQ(text.GetTopContainer(&top), VQ_OK);
  bool first = true;
  for (VQRTObjectBody* object = top.GetRTContainerBody()->GetFirstChild(); object; object = object->GetNext()) {
    if (object->GetType() == VQRTTYPE_NEW_PARAGRAPH) first = true;
    if (!first || object->GetType() != VQRTTYPE_STYLIZED_TEXT) continue;
    first = false;
    VQParagraphStyle style;
    EXPECT_EQ(text.FindParagraphStyle(VQRTObject(object), &style), VQ_OK);
    all.push_back(style.GetAlignment());
  }
  return all;
}

class RandomRichText : public EngineFixture {
 protected:
  void TearDown() override {
    Text = VQRichText();
    EngineFixture::TearDown();
  }

  std::size_t Below(std::size_t limit) { return Random() % limit; }

  // Characters left of the cursor.
  std::size_t PlaceOf(const VQRTCursor& cursor) {
    VQString left;
    EXPECT_EQ(Text.GetText(At(Text, 0), cursor, &left), VQ_OK);
    return left.GetBufLength();
  }
  VQRTCursor Somewhere(std::size_t* place) {
    const VQRTCursor cursor = At(Text, Below(Model.size() + 1));
    *place = PlaceOf(cursor);
    return cursor;
  }
  std::size_t Paragraph(std::size_t place) {
    return static_cast<std::size_t>(std::count(Model.begin(), Model.begin() + static_cast<long>(place), kEnd));
  }
  void Erase(std::size_t from, std::size_t to) {
    const std::size_t paragraph = Paragraph(from);
    Alignments.erase(Alignments.begin() + static_cast<long>(paragraph) + 1,
                     Alignments.begin() + static_cast<long>(Paragraph(to)) + 1);
    Model.erase(Model.begin() + static_cast<long>(from), Model.begin() + static_cast<long>(to));
  }

  void Insert(VQRTCursor at, std::size_t place) {
    const std::string text = Below(2) ? "xyz" : "p\nq";
    ASSERT_EQ(Text.Insert(Store(text), &at), VQ_OK);
    // Whose font new characters have depends on the runs; all others keep theirs.
    const Characters now = CharactersOf(Text);
    ASSERT_GE(now.size(), place + text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      const Character here = {text[i], text[i] == '\n' ? 0 : now[place + i].Font};
      Model.insert(Model.begin() + static_cast<long>(place + i), here);
    }
    const std::size_t paragraph = Paragraph(place);
    if (text[1] == '\n') Alignments.insert(Alignments.begin() + static_cast<long>(paragraph), Alignments[paragraph]);
    ASSERT_EQ(PlaceOf(at), place + text.size());
  }

  void Merge(VQRTCursor at, std::size_t place, bool next) {
    const auto here = Model.begin() + static_cast<long>(place);
    const auto behind = std::find(here, Model.end(), kEnd);
    const auto before = std::find(std::make_reverse_iterator(here), Model.rend(), kEnd);
    const bool found = next ? behind != Model.end() : before != Model.rend();
    const VQSTATUS status = next ? Text.MergeNextParagraph(&at) : Text.MergePreviousParagraph(&at);
    ASSERT_EQ(status, found ? VQ_OK : VQWARN_NOT_FOUND);
    if (!found) return;
    const auto end = static_cast<std::size_t>((next ? behind : before.base() - 1) - Model.begin());
    Erase(end, end + 1);
  }

  void Style(const VQRTCursor& from, std::size_t first, const VQRTCursor& to, std::size_t last) {
    VQParagraphStyle style;
    const auto alignment = static_cast<unsigned short>(Below(4));
    ASSERT_EQ(style.SetAlignment(alignment), VQ_OK);
    ASSERT_EQ(Text.SetParagraphStyle(from, to, style), VQ_OK);
    for (std::size_t i = Paragraph(first); i <= Paragraph(last); ++i) Alignments[i] = alignment;
  }

  void Font(const VQRTCursor& from, std::size_t first, const VQRTCursor& to, std::size_t last) {
    VQFontStyle style;
    const unsigned long font = kFonts[Below(std::size(kFonts))];
    ASSERT_EQ(style.SetDefaults(), VQ_OK);
    ASSERT_EQ(style.SetFontID(font, 0xFFFFFFFFUL), VQ_OK);
    ASSERT_EQ(Text.SetFontStyle(from, to, style), VQ_OK);
    for (std::size_t i = first; i < last; ++i) Model[i].Font = Model[i].Font ? font : 0;
  }

  static constexpr Character kEnd = {'\n', 0};
  VQRichText Text;
  Characters Model;
  std::vector<unsigned short> Alignments;
  std::mt19937 Random{20241231};
};

TEST_F(RandomRichText, BehavesLikeLists) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(Text.Create(), VQ_OK);
    ASSERT_EQ(Text.Append("first\nsecond paragraph\n\nlast"), VQ_OK);
    Model = CharactersOf(Text);
    Alignments = AlignmentsOf(Text);
    ASSERT_EQ(Alignments.size(), 4u);
    for (int step = 0; step < 40; ++step) {
      const std::size_t what = Below(7);
      SCOPED_TRACE("round " + std::to_string(round) + " step " + std::to_string(step) + " " + std::to_string(what));
      std::size_t first = 0, last = 0;
      VQRTCursor from = Somewhere(&first), to = Somewhere(&last);
      if (from > to) std::swap(from, to), std::swap(first, last);
      switch (what) {
        case 0:
        case 1:
          Insert(from, first);
          break;
        case 2:
          ASSERT_EQ(Text.Delete(&from, &to), VQ_OK);
          Erase(first, last);
          ASSERT_EQ(PlaceOf(from), first);
          break;
        case 3:
          Font(from, first, to, last);
          break;
        case 4:
          Style(from, first, to, last);
          break;
        case 5:
          Merge(from, first, Below(2));
          break;
        default:
          Text = RichText(Written(Text));
      }
      if (HasFatalFailure()) return;
      ASSERT_EQ(Shown(CharactersOf(Text)), Shown(Model));
      ASSERT_EQ(AlignmentsOf(Text), Alignments) << Plain(Text);
    }
  }
}

// A text as one string, and what stands where in it.
struct Flat {
  struct Run {
    VQStylizedTextBody* Body;
    std::size_t Start;
    const VQRTBaseContainerBody* Scope;  // the cell that it is in, or the top
  };
  explicit Flat(const VQRichText& text) {
    EXPECT_EQ(text.GetRichTextBody()->Initialize(), VQ_OK);
    Add(*text.GetRichTextBody()->GetTop());
  }

  std::string Text;
  std::vector<Run> Runs;
  std::vector<VQTableBody*> Tables;

 private:
  void Add(const VQRTBaseContainerBody& scope) {
    bool leads = scope.GetType() == VQRTTYPE_TABLE_CELL;
    for (VQRTObjectBody* child = scope.GetFirstChild(); child; child = child->GetNext()) {
      if (child->GetType() == VQRTTYPE_STYLIZED_TEXT) {
        Runs.push_back({static_cast<VQStylizedTextBody*>(child), Text.size(), &scope});
      }
      VQString own;
      if (child->GetType() == VQRTTYPE_TABLE) {
        AddTable(static_cast<VQTableBody&>(*child));
      } else if (child->GetType() != VQRTTYPE_NEW_PARAGRAPH || !leads) {
        EXPECT_EQ(child->GetText(&own), VQ_OK);
        Text += TextOf(own);
      }
      if (child->GetType() == VQRTTYPE_NEW_PARAGRAPH || child->IsType(VQRTTYPE_BASE_CONTAINER)) leads = false;
    }
  }
  void AddTable(VQTableBody& table) {
    Tables.push_back(&table);
    for (const VQTableCellBody* cell : table.GetCells()) {
      Add(*cell);
      Text += '\t';
      if (static_cast<unsigned long>(cell->GetColumn()) + 1 == table.GetColumns()) Text += '\n';
    }
  }
};

class RandomWhole : public StoreFixture {
 protected:
  struct Place {
    VQRTCursor Cursor;
    std::size_t At;
    const VQRTBaseContainerBody* Scope;
    bool InCell() const { return Scope->GetType() == VQRTTYPE_TABLE_CELL; }
  };

  void SetUp() override {
    StoreFixture::SetUp();
    std::ofstream(Home.Path("file")) << "attached";
    ASSERT_EQ(Session->CreateDatabase("other", &Far, VQCreateDatabaseOptions()), VQ_OK);
    NewBody(Far, &FarDocument, &Source);
    NewBody(Db, &Document, &Body);
    VQRTCursor cursor = At(Source, 3);
    VQTable table;
    ASSERT_EQ(Source.CreateTable(2, 2, &cursor, &table), VQ_OK);
    ASSERT_EQ(table(1, 0).Append("inside"), VQ_OK);
    ASSERT_EQ(Source.GetEndCursor(&cursor), VQ_OK);
    ASSERT_EQ(Source.CreateAttachment(Store(Home.Path("file")), &cursor), VQ_OK);
    ASSERT_EQ(Source.Append("end"), VQ_OK);
    Past = std::make_unique<VQRTHistory>();
    ASSERT_EQ(Past->Watch(Body), VQ_OK);
  }
  void TearDown() override {
    Past.reset();
    Body = Source = VQRichText();
    Document = FarDocument = VQDocument();
    Far = VQDatabase();
    StoreFixture::TearDown();
  }
  static void NewBody(VQDatabase& database, VQDocument* document, VQRichText* body) {
    ASSERT_EQ(database.CreateDocument(document), VQ_OK);
    ASSERT_EQ(document->CreateItem("Body", body), VQ_OK);
    ASSERT_EQ(body->Append("first\nsecond paragraph\n\nlast"), VQ_OK);
  }
  std::size_t Below(std::size_t limit) { return Random() % limit; }

  Place Somewhere(const Flat& flat) {
    const Flat::Run& run = flat.Runs[Below(flat.Runs.size())];
    const std::size_t offset = Below(run.Body->GetByteCount() + 1);
    const bool behind = offset > 0;
    return {VQRTCursor(run.Body, behind ? offset : 1, behind), run.Start + offset, run.Scope};
  }

  // What comes in may bring the ends of paragraphs that a table stands between.
  void ExpectInserted(const std::string& before, std::size_t at, const std::string& what) {
    Model = Flat(Body).Text;
    const std::string left = before.substr(0, at), right = before.substr(at);
    for (const char* ahead : {"", "\n"}) {
      for (const char* behind : {"", "\n"}) {
        if (Model == left + ahead + what + behind + right) return;
      }
    }
    FAIL() << testing::PrintToString(before) << " at " << at << " gives " << testing::PrintToString(Model);
  }
  void ExpectRefused(VQSTATUS status, bool refused) { ASSERT_EQ(VQIsError(status), refused) << std::hex << status; }

  void DeleteBetween(Place from, Place to) {
    if (from.At > to.At || from.Cursor > to.Cursor) std::swap(from, to);
    const bool same = from.Scope == to.Scope;
    ExpectRefused(Body.Delete(&from.Cursor, &to.Cursor), !same);
    if (same) Model.erase(from.At, to.At - from.At);
  }

  // Cells by row and column.
  static std::vector<std::vector<std::string>> Grid(VQTable& table) {
    std::vector<std::vector<std::string>> grid(table.GetRowCount());
    for (unsigned long row = 0; row < grid.size(); ++row) {
      for (unsigned long column = 0; column < table.GetColumnCount(); ++column) {
        VQString text;
        EXPECT_EQ(table(row, column).GetText(&text), VQ_OK);
        grid[row].push_back(TextOf(text));
      }
    }
    return grid;
  }
  static std::string TextOfGrid(const std::vector<std::vector<std::string>>& grid) {
    std::string text;
    for (const auto& row : grid) {
      for (const std::string& cell : row) text += cell + '\t';
      text += '\n';
    }
    return text;
  }
  void ChangeTable(const Flat& flat) {
    if (flat.Tables.empty()) return;
    VQTable table(flat.Tables[Below(flat.Tables.size())]);
    auto grid = Grid(table);
    const std::string before = TextOfGrid(grid);
    const std::size_t row = Below(grid.size()), column = Below(grid[0].size());
    switch (Below(4)) {
      case 0:
        ASSERT_EQ(table.InsertRows(row, 1), VQ_OK);
        grid.insert(grid.begin() + static_cast<long>(row), std::vector<std::string>(grid[0].size()));
        break;
      case 1:
        ASSERT_EQ(table.InsertColumns(column, 1), VQ_OK);
        for (auto& each : grid) each.insert(each.begin() + static_cast<long>(column), std::string());
        break;
      case 2:
        if (VQIsError(table.DeleteRows(row, 1))) break;
        grid.erase(grid.begin() + static_cast<long>(row));
        break;
      default:
        if (VQIsError(table.DeleteColumns(column, 1))) break;
        for (auto& each : grid) each.erase(each.begin() + static_cast<long>(column));
    }
    ASSERT_EQ(Grid(table), grid);
    Model = Flat(Body).Text;
    ASSERT_EQ(Model.size(), flat.Text.size() - before.size() + TextOfGrid(grid).size());
  }

  void Edit(std::size_t what) {
    const Flat flat(Body);
    Place here = Somewhere(flat);
    const Place there = Somewhere(flat);
    const bool inCell = here.InCell();
    VQParagraphStyle style;
    switch (what) {
      case 0:
      case 1: {
        const std::string text = Below(2) ? "xyz" : "p\nq";
        ASSERT_EQ(Body.Insert(Store(text), &here.Cursor), VQ_OK);
        Model.insert(here.At, text);
        return;
      }
      case 2:
      case 3:
        return DeleteBetween(here, there);
      case 4:
        ExpectRefused(Body.CreateTable(2, 2, &here.Cursor), inCell);
        return inCell ? void() : ExpectInserted(flat.Text, here.At, "\t\t\n\t\t\n");
      case 5:
        ExpectRefused(Body.Insert(Source, &here.Cursor), inCell);
        return inCell ? void() : ExpectInserted(flat.Text, here.At, Plain(Source));
      case 6:
        ASSERT_EQ(Body.CreateAttachment(Store(Home.Path("file")), &here.Cursor), VQ_OK);
        return ExpectInserted(flat.Text, here.At, "file - 8 bytes");
      case 7: {
        if (here.Scope != there.Scope) return;
        ASSERT_EQ(style.SetAlignment(static_cast<unsigned short>(Below(4))), VQ_OK);
        const bool ordered = here.Cursor <= there.Cursor;
        ASSERT_EQ(
            Body.SetParagraphStyle(ordered ? here.Cursor : there.Cursor, ordered ? there.Cursor : here.Cursor, style),
            VQ_OK);
        return;
      }
      case 8: {
        VQRichText part;
        const Place end = here.Cursor <= there.Cursor ? there : here,
                    start = here.Cursor <= there.Cursor ? here : there;
        const bool refused = here.Scope != there.Scope;
        ExpectRefused(Body.GetRichText(start.Cursor, end.Cursor, &part), refused);
        if (!refused) {
          ASSERT_EQ(Plain(part), Model.substr(start.At, end.At - start.At));
        }
        return;
      }
      default:
        return ChangeTable(flat);
    }
  }

  void Compare() {
    ASSERT_EQ(Flat(Body).Text, Model);
    ASSERT_EQ(Plain(Body), Model);
    const std::string written = Written(Body);
    const VQRichText again = RichText(written);
    ASSERT_EQ(Flat(again).Text, Model);
    ASSERT_TRUE(Written(again) == written);
    std::set<int> ids;
    const VQRTContainerBody& top = *Body.GetRichTextBody()->GetTop();
    const VQRTObjectBody* object = top.FirstOfType(VQRTTYPE_PAB_DEFINITION);
    for (; object; object = top.NextOfType(object, VQRTTYPE_PAB_DEFINITION)) {
      ASSERT_TRUE(ids.insert(vq::pab::IDsOf(*object).First).second) << vq::pab::IDsOf(*object).First;
    }
  }

  void GoBackAndForth(const std::string& before) {
    const std::string after = Written(Body), model = Model;
    if (after == before) return;
    ASSERT_EQ(Past->Undo(), VQ_OK);
    ASSERT_TRUE(Written(Body) == before);
    if (Below(2)) {
      Model = Flat(Body).Text;
      return;
    }
    ASSERT_EQ(Past->Redo(), VQ_OK);
    ASSERT_TRUE(Written(Body) == after);
    ASSERT_EQ(Flat(Body).Text, model);
  }

  VQDatabase Far;
  VQDocument Document, FarDocument;
  VQRichText Body, Source;
  std::unique_ptr<VQRTHistory> Past;
  std::string Model;
  std::mt19937 Random{71};
};

TEST_F(RandomWhole, BehavesLikeAString) {
  for (int round = 0; round < 12; ++round) {
    ASSERT_EQ(Body.SetValue("first\nsecond paragraph\n\nlast"), VQ_OK);
    Model = Flat(Body).Text;
    ASSERT_EQ(Past->Watch(Body), VQ_OK);
    for (int step = 0; step < 40; ++step) {
      const std::size_t what = Below(10);
      SCOPED_TRACE("round " + std::to_string(round) + " step " + std::to_string(step) + " " + std::to_string(what));
      const std::string before = Written(Body);
      Edit(what);
      if (!HasFatalFailure()) Compare();
      if (!HasFatalFailure() && Below(4) == 0) GoBackAndForth(before);
      if (HasFailure()) return;
      ASSERT_EQ(Past->Begin() | Past->End(), VQ_OK);
      ASSERT_EQ(step % 10 == 9 ? Body.Update() : VQ_OK, VQ_OK);
    }
  }
  EXPECT_EQ(Document.Save(), VQ_OK);
}

}  // namespace
