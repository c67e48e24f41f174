// Edits that are taken back and done again: the records are byte for byte what they were.
#include <random>

#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/richtext/font.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rthistory.h"
#include "vq/richtext/vqparstl.h"

namespace {

using namespace vqtest;

class History : public StoreFixture {
 protected:
  void SetUp() override {
    StoreFixture::SetUp();
    ASSERT_EQ(Body.Create(), VQ_OK);
    ASSERT_EQ(Body.Append("first\nsecond paragraph\n\nlast"), VQ_OK);
    Past = std::make_unique<VQRTHistory>();
    ASSERT_EQ(Past->Watch(Body), VQ_OK);
  }
  void TearDown() override {
    Past.reset();
    Body = VQRichText();
    StoreFixture::TearDown();
  }
  std::size_t Below(std::size_t limit) { return Random() % limit; }

  void Append(const std::string& text) { ASSERT_EQ(Body.Append(Store(text)), VQ_OK); }

  void EditSomewhere() {
    const std::size_t length = Plain(Body).size() + 1;
    VQRTCursor from = At(Body, Below(length)), to = At(Body, Below(length));
    if (from > to) std::swap(from, to);
    VQParagraphStyle paragraph;
    VQFontStyle font;
    ASSERT_EQ(font.SetDefaults(), VQ_OK);
    switch (Below(7)) {
      case 0:
        ASSERT_EQ(Body.Insert("some words", &from), VQ_OK);
        break;
      case 1:
        ASSERT_EQ(Body.Insert("one\ntwo\n", &to), VQ_OK);
        break;
      case 2:
        ASSERT_FALSE(VQIsError(Body.MergeNextParagraph(&from)));
        break;
      case 3:
        ASSERT_EQ(font.SetFontID(0x0C000101 + 0x01000000 * static_cast<unsigned long>(Below(3)), 0xFFFFFFFFUL), VQ_OK);
        ASSERT_EQ(Body.SetFontStyle(from, to, font), VQ_OK);
        break;
      case 4:
        ASSERT_EQ(paragraph.SetAlignment(static_cast<unsigned short>(Below(4))), VQ_OK);
        ASSERT_EQ(Body.SetParagraphStyle(from, to, paragraph), VQ_OK);
        break;
      case 5:
        ASSERT_EQ(Body.Append(RichText(Reference(1) + Hotspot(4) + Text("in") + HotspotEnd() + Unknown("abc"))), VQ_OK);
        break;
      default:
        (void)Body.Delete(&from, &to);  // may be refused across a hotspot's bounds, which is no edit
    }
  }

  VQRichText Body;
  std::unique_ptr<VQRTHistory> Past;
  std::mt19937 Random{20260506};
};

TEST_F(History, RandomEditsGoBackAndForth) {
  std::vector<std::string> states = {Written(Body)};
  std::size_t at = 0;
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const bool grouped = Below(3) != 0;
    if (grouped) {
      ASSERT_EQ(Past->Begin(), VQ_OK);
    }
    for (std::size_t edits = 1 + Below(3); edits > 0; --edits) EditSomewhere();
    if (HasFatalFailure()) return;
    if (grouped) {
      ASSERT_EQ(Past->End(), VQ_OK);
    }
    const std::string now = Written(Body);
    if (now != states[at]) {
      states.resize(++at);
      states.push_back(now);
    }
    // Edits outside of a group become a step when they are first asked for.
    for (std::size_t walk = Below(8) + (grouped ? 0 : 1); walk > 0; --walk) {
      const bool back = Below(3) != 0;
      const bool possible = back ? at > 0 : at + 1 < states.size();
      ASSERT_EQ(back ? Past->Undo() : Past->Redo(), possible ? VQ_OK : VQWARN_NOT_FOUND);
      if (possible) at = back ? at - 1 : at + 1;
      ASSERT_EQ(Written(Body), states[at]);
      ASSERT_EQ(Past->GetUndoCount(), at);
    }
  }
}

TEST_F(History, WhatWasTakenBackIsStored) {
  VQDocument document = NewDocument("history");
  VQRichText stored;
  ASSERT_EQ(document.CreateItem("Body", &stored), VQ_OK);
  ASSERT_EQ(stored.Append("kept\n"), VQ_OK);
  ASSERT_EQ(Past->Watch(stored), VQ_OK);
  const std::string before = Written(stored);
  ASSERT_EQ(stored.Append("gone"), VQ_OK);
  ASSERT_EQ(document.Save(), VQ_OK);
  VQRTCursor cursor;
  ASSERT_EQ(Past->Undo(&cursor), VQ_OK);
  EXPECT_EQ(Written(stored), before);
  EXPECT_EQ(cursor, At(stored, 5));
  ASSERT_EQ(document.Save(), VQ_OK);

  VQDocument again;
  VQRichText reread;
  ASSERT_EQ(Db.GetDocument(document.GetSlateID(), &again), VQ_OK);
  ASSERT_EQ(again.Open(), VQ_OK);
  ASSERT_EQ(again.GetItem("Body", &reread), VQ_OK);
  EXPECT_EQ(Written(reread), before);
  ASSERT_EQ(Past->Redo(), VQ_OK);
  EXPECT_EQ(Plain(stored), "kept\ngone");
  ASSERT_EQ(document.Close(), VQ_OK);
  EXPECT_TRUE(VQIsError(Past->Undo()));
}

TEST_F(History, GroupsAndStepsThatAreRefused) {
  VQRTHistory none;
  EXPECT_EQ(none.Watch(VQRichText()), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(none.Begin(), VQERR_NOT_INITIALIZED);
  EXPECT_EQ(none.Undo(), VQERR_NOT_INITIALIZED);
  EXPECT_EQ(Past->Undo(), VQWARN_NOT_FOUND);
  EXPECT_EQ(Past->End(), VQERR_WRONG_SITUATION);
  ASSERT_EQ(Past->Begin(), VQ_OK);
  EXPECT_EQ(Past->Begin(), VQERR_WRONG_SITUATION);
  EXPECT_EQ(Past->Undo(), VQERR_WRONG_SITUATION);
  EXPECT_EQ(Past->Redo(), VQERR_WRONG_SITUATION);
  ASSERT_EQ(Past->End(), VQ_OK);
  EXPECT_EQ(Past->GetUndoCount(), 0u) << "nothing was changed";
}

TEST_F(History, EmptyGroupsKeepWhatCanBeDoneAgain) {
  Append(" more");
  ASSERT_EQ(Past->Undo(), VQ_OK);
  ASSERT_EQ(Past->Begin(), VQ_OK);
  ASSERT_EQ(Past->End(), VQ_OK);
  EXPECT_EQ(Past->GetRedoCount(), 1u);
  const std::string before = Written(Body);
  ASSERT_EQ(Past->Begin(), VQ_OK);
  Append(" other");
  ASSERT_EQ(Past->Cancel(), VQ_OK);
  EXPECT_EQ(Written(Body), before);
  EXPECT_EQ(Past->GetRedoCount(), 1u);
  Append(" third");
  EXPECT_EQ(Past->Redo(), VQWARN_NOT_FOUND);
  EXPECT_EQ(Past->GetUndoCount(), 1u);
}

TEST_F(History, HandlesOutsideOfTheChangeStay) {
  VQRTCursor early = At(Body, 2);
  VQRTCursor late = At(Body, Plain(Body).size());
  ASSERT_EQ(Body.Insert("!", &late), VQ_OK);
  ASSERT_EQ(Past->Undo(), VQ_OK);
  VQString left;
  ASSERT_EQ(Body.GetText(At(Body, 0), early, &left), VQ_OK);
  EXPECT_EQ(TextOf(left), "fi");
  EXPECT_FALSE(late.IsValid());
}

TEST_F(History, LimitDropsTheOldestSteps) {
  for (const char* text : {" a", " b", " c", " d"}) {
    Append(text);
    ASSERT_EQ(Past->Begin(), VQ_OK);
    ASSERT_EQ(Past->End(), VQ_OK);
  }
  EXPECT_EQ(Past->GetUndoCount(), 4u);
  const std::size_t all = Past->GetSize();
  ASSERT_EQ(Past->SetLimit(all / 2), VQ_OK);
  EXPECT_LE(Past->GetSize(), all / 2);
  ASSERT_EQ(Past->SetLimit(1), VQ_OK);
  EXPECT_EQ(Past->GetUndoCount(), 1u);
  ASSERT_EQ(Past->Undo(), VQ_OK);
  EXPECT_EQ(Plain(Body), "first\nsecond paragraph\n\nlast a b c");
  ASSERT_EQ(Past->Clear(), VQ_OK);
  EXPECT_EQ(Past->GetRedoCount(), 0u);
  EXPECT_EQ(Past->GetSize(), 0u);
}

// A number that comes back is taken, also where the text was read anew without it.
TEST_F(History, NumbersThatComeBackAreTaken) {
  VQDocument document = NewDocument("history");
  VQRichText stored;
  ASSERT_EQ(document.CreateItem("Body", &stored), VQ_OK);
  ASSERT_EQ(stored.Append("a\nb"), VQ_OK);
  VQParagraphStyle style;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  ASSERT_EQ(stored.SetParagraphStyle(At(stored, 2), style), VQ_OK);
  ASSERT_EQ(Past->Watch(stored), VQ_OK);
  VQRTCursor start = At(stored, 1), end = At(stored, 3);
  ASSERT_EQ(stored.Delete(&start, &end), VQ_OK);
  ASSERT_EQ(document.Save(), VQ_OK);
  ASSERT_EQ(document.RefreshObjectFromSlateHandle(), VQ_OK);
  ASSERT_EQ(Past->Undo(), VQ_OK);
  ASSERT_EQ(style.SetAlignment(1), VQ_OK);
  ASSERT_EQ(stored.SetParagraphStyle(At(stored, 0), style), VQ_OK);
  VQRTObject first, second;
  ASSERT_EQ(stored.FindFirst(VQRTTYPE_PAB_DEFINITION, &first), VQ_OK);
  ASSERT_EQ(stored.FindLast(VQRTTYPE_PAB_DEFINITION, &second), VQ_OK);
  EXPECT_NE(vq::pab::IDsOf(*first.GetRTObjectBody()).First, vq::pab::IDsOf(*second.GetRTObjectBody()).First);
}

// Records that the parser takes in one place only.
TEST_F(History, StructuresComeBackWhole) {
  const std::string graphic =
      Record(SIG_CD_GRAPHIC, "g") + Record(SIG_CD_BITMAPHEADER, "h") + Record(SIG_CD_BITMAPSEGMENT, "s");
  const std::string table = TableBegin() + Cell(0, 0) + Text("x") + Cell(0, 1) + Text("y") + TableEnd();
  for (const std::string& structure : {graphic, table, Hotspot(4) + Text("in") + HotspotEnd(), Unknown("data")}) {
    const std::string records = Reference(1) + Text("a") + Paragraph() + structure + Text("b");
    Body = RichText(records);
    ASSERT_EQ(Past->Watch(Body), VQ_OK);
    ASSERT_EQ(Body.SetValue("all new"), VQ_OK);
    const std::string after = Written(Body);
    ASSERT_EQ(Past->Undo(), VQ_OK);
    EXPECT_EQ(Written(Body), records);
    ASSERT_EQ(Past->Redo(), VQ_OK);
    EXPECT_EQ(Written(Body), after);
  }
}

}  // namespace
