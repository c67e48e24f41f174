// Random edits against plain lists: of characters with their fonts, and of paragraphs with their alignment.
#include <algorithm>
#include <random>

#include "tests/vq/support/records.h"
#include "vq/richtext/font.h"
#include "vq/richtext/vqparstl.h"

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

}  // namespace
