// From formula to collection to view: what a client sees of a view that it has designed.
#include "tests/vq/support/views_fixture.h"

namespace {

using vqtest::Store;
using vqtest::TextOf;

class ViewChain : public vqtest::ViewsFixture {
 protected:
  // Subjects sorted, under their category, with the doubled size.
  VQViewFolder MakeView() {
    VQViewFolder view;
    EXPECT_EQ(Db.CreateView("Chain", nullptr, &view), VQ_OK);
    EXPECT_EQ(view.DeleteColumns(0, view.GetColumnCount()), VQ_OK);
    EXPECT_EQ(view.AppendColumns(3), VQ_OK);
    EXPECT_EQ(view[0].SetFieldName("Kind"), VQ_OK);
    EXPECT_EQ(view[0].SetIsCategorized(1), VQ_OK);
    EXPECT_EQ(view[0].SetSortOption(VQVFSORTOPTION_ASCENDING), VQ_OK);
    EXPECT_EQ(view[1].SetFieldName("Subject"), VQ_OK);
    EXPECT_EQ(view[1].SetSortOption(VQVFSORTOPTION_DESCENDING), VQ_OK);
    EXPECT_EQ(view[2].SetFormula(VQFormula(VQString("Subject + \"!\""))), VQ_OK);
    EXPECT_EQ(view.SetSelectionFormula(VQFormula(VQString("SELECT Subject != \"hidden\""))), VQ_OK);
    EXPECT_EQ(view.SetShowInViewMenu(1), VQ_OK);
    return view;
  }

  void Add(const std::string& kind, const std::string& subject) {
    VQDocument document = NewDocument(subject);
    SetText(document, "Kind", kind);
    EXPECT_EQ(document.Save(), VQ_OK);
  }

  // One line a row: level, then the columns' texts.
  static std::string Rows(VQViewFolder& view) {
    std::string rows;
    VQVFNavigator entries;
    EXPECT_EQ(view.GetEntries(&entries), VQ_OK);
    for (unsigned long i = 0; i < entries.GetEntryCount(); ++i) {
      const VQVFEntry entry = entries[i];
      rows += std::to_string(entry.GetDocLevel());
      for (unsigned long column = 0; column < view.GetColumnCount(); ++column) {
        const VQItem value = entry.GetColumnItem(column);
        VQString text;
        if (!value.IsNull()) VQText(value).GetText(&text, "|");
        rows += " " + (value.IsNull() ? std::string("-") : TextOf(text));
      }
      rows += "\n";
    }
    return rows;
  }
};

TEST_F(ViewChain, ADesignedViewIsReadAndFollowsItsDocuments) {
  Add("b", "one");
  Add("a", "two");
  Add("a", "three");
  Add("a", "hidden");
  VQViewFolder view = MakeView();
  EXPECT_EQ(vqtest::StatusOf([&] { return view.GetEntryCount(); }), VQERR_DESIGN_ONLY);
  EXPECT_EQ(view.Open(), VQERR_VIEW_NOT_SAVED);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(view.Open(VQVFOPENFLAGS_NO_CREATE), VQERR_COLLECTION_NO_CREATE);
  ASSERT_EQ(view.Open(), VQ_OK);
  EXPECT_EQ(Rows(view), "1 a - -\n2 - two two!\n2 - three three!\n1 b - -\n2 - one one!\n");
  EXPECT_EQ(view.IsModified(), 0);
  Add("b", "zero");
  ASSERT_EQ(view.Refresh(), VQ_OK);
  EXPECT_EQ(view.GetEntryCount(), 6U);
  VQVFEntry found;
  ASSERT_EQ(view.Find(VQString("b"), &found), VQ_OK);
  EXPECT_EQ(found.GetChildCount(), 2U);
  ASSERT_EQ(view.Close(), VQ_OK);
}

TEST_F(ViewChain, AChangedDesignShowsOtherRows) {
  Add("b", "one");
  Add("a", "two");
  VQViewFolder view = MakeView();
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Open(), VQ_OK);
  ASSERT_EQ(view[0].SetIsCategorized(0), VQ_OK);
  ASSERT_EQ(view[0].SetSortOption(VQVFSORTOPTION_NONE), VQ_OK);
  ASSERT_EQ(view.DeleteColumn(2UL), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Refresh(), VQ_OK);
  EXPECT_EQ(Rows(view), "1 a two\n1 b one\n");
}

TEST_F(ViewChain, AFolderShowsWhatAViewGivesIt) {
  Add("a", "one");
  Add("a", "two");
  Add("a", "hidden");
  VQViewFolder view = MakeView();
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Open(), VQ_OK);
  VQViewFolder folder;
  VQViewFolder closed(Db.GetDatabaseBody(), view.GetSlateID());
  ASSERT_EQ(Db.CreateFolder("Picked", VQVFSHARINGOPTION_SHARED, &closed, &folder), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocuments(view), VQ_OK);
  ASSERT_EQ(folder.Open(), VQ_OK);
  EXPECT_EQ(Rows(folder), "1 a - -\n2 - two two!\n2 - one one!\n");
  VQVFEntry found;
  VQVFNavigator one;
  ASSERT_EQ(folder.Find(VQString("a"), &found), VQ_OK);
  ASSERT_EQ(folder.FolderRemoveDocuments(view), VQ_OK);
  ASSERT_EQ(folder.Refresh(), VQ_OK);
  EXPECT_EQ(folder.GetEntryCount(), 0U);
}

}  // namespace
