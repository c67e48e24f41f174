// Random edits of paragraphs against plain strings: text moves as it would in a string, references find their
// definitions, and what is written parses to the same.
#include <random>

#include "tests/vq/support/records.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqparstl.h"

namespace {

using namespace vqtest;

class RandomParagraphs : public EngineFixture {
 protected:
  std::size_t Below(std::size_t limit) { return Random() % limit; }

  // A random place, and how much text lies left of it.
  VQRTCursor Somewhere(const VQRichText& text, std::size_t* offset) {
    VQRTCursor start, cursor;
    EXPECT_EQ(text.GetCursor(&start), VQ_OK);
    EXPECT_EQ(cursor.Copy(start), VQ_OK);
    cursor += Below(Plain(text).size() + 1);
    VQString left;
    EXPECT_EQ(text.GetText(start, cursor, &left), VQ_OK);
    *offset = left.GetBufLength();
    return cursor;
  }

  std::mt19937 Random{20240229};
};

// The definition that a reference means, by a walk through the text: the nearest one left of it, or the first one.
VQRTObjectBody* DefinitionByWalk(const VQRTContainerBody& root, const VQRTObjectBody* reference, std::uint16_t pabid) {
  VQRTObjectBody *first = nullptr, *left = nullptr;
  for (VQRTObjectBody* object = root.NextInTree(&root); object; object = root.NextInTree(object)) {
    if (object == reference && left) return left;
    if (object->GetType() != VQRTTYPE_PAB_DEFINITION || vq::pab::IDsOf(*object).First != pabid) continue;
    if (!first) first = object;
    left = object;
    if (reference->IsLeftOf(object)) return first;
  }
  return first;
}

// Identifiers of references that have no definition.
std::string Undefined(const VQRichText& text) {
  VQRTContainer top;
  EXPECT_EQ(text.GetTopContainer(&top), VQ_OK);
  VQRTContainerBody& root = *top.GetRTContainerBody();
  std::string missing;
  VQRTObjectBody* object = root.FirstOfType(VQRTTYPE_PAB_REFERENCE);
  for (; object; object = root.NextOfType(object, VQRTTYPE_PAB_REFERENCE)) {
    const std::uint16_t id = vq::pab::IDsOf(*object).Second;
    VQRTObjectBody* definition = vq::pab::FindByPABID(root, object, VQRTTYPE_PAB_DEFINITION, id);
    EXPECT_EQ(definition, DefinitionByWalk(root, object, id));
    if (!definition) missing += std::to_string(id) + " ";
  }
  return missing;
}

TEST_F(RandomParagraphs, BehaveLikeStrings) {
  std::string definition(66, '\0');
  definition[0] = definition[59] = 1;
  const std::string records = Record(SIG_CD_PABDEFINITION, definition) + Reference(1) + Text("first") + Text("run") +
                              Paragraph() + Reference(1) + Text("") + Paragraph() + Reference(1) + Text("last");
  for (int round = 0; round < 40; ++round) {
    VQRichText text = RichText(records);
    std::string model = Plain(text);
    for (int step = 0; step < 25; ++step) {
      std::size_t from = 0, to = 0;
      VQRTCursor start = Somewhere(text, &from), end = Somewhere(text, &to);
      if (start > end) std::swap(start, end), std::swap(from, to);
      VQRichText part;
      VQParagraphStyle style;
      switch (Below(5)) {
        case 0:
          ASSERT_EQ(text.StartNewParagraph(&start), VQ_OK);
          model.insert(from, "\n");
          break;
        case 1:
          ASSERT_EQ(text.Insert("a\nb", &start), VQ_OK);
          model.insert(from, "a\nb");
          break;
        case 2:
          ASSERT_EQ(text.GetRichText(start, end, &part), VQ_OK);
          ASSERT_EQ(Plain(part), model.substr(from, to - from));
          ASSERT_EQ(Undefined(part), "");
          ASSERT_EQ(text.Insert(part, &end), VQ_OK);
          model.insert(to, model.substr(from, to - from));
          break;
        case 3:
          ASSERT_EQ(text.Delete(&start, &end), VQ_OK);
          model.erase(from, to - from);
          break;
        default:
          ASSERT_EQ(style.SetAlignment(static_cast<unsigned short>(Below(4))), VQ_OK);
          ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
          ASSERT_EQ(text.FindParagraphStyle(start, &style), VQ_OK);
      }
      ASSERT_EQ(Plain(text), model) << "round " << round << " step " << step;
      ASSERT_EQ(Undefined(text), "") << "round " << round << " step " << step;
      ASSERT_EQ(Plain(RichText(Written(text))), model);
    }
  }
}

}  // namespace
