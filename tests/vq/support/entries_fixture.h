// A view of categories, main documents and responses, and its rows as they must come.
#ifndef QUILLON_TESTS_VQ_SUPPORT_ENTRIES_FIXTURE_H
#define QUILLON_TESTS_VQ_SUPPORT_ENTRIES_FIXTURE_H

#include "tests/vq/support/store_fixture.h"
#include "vq/views/vfobserver.h"
#include "vq/views/viewbody.h"

namespace vqtest {

class EntriesFixture : public StoreFixture {
 protected:
  // By category, sorted by subject; columns: Kind, Subject, the row's number, a hidden Size.
  VQViewFolder MakeView(bool categorized) {
    VQViewFolder view;
    EXPECT_EQ(Db.CreateView(categorized ? "Tree" : "Flat", nullptr, &view), VQ_OK);
    EXPECT_EQ(view.DeleteColumns(0, view.GetColumnCount()), VQ_OK);
    EXPECT_EQ(view.AppendColumns(4), VQ_OK);
    const char* fields[] = {"Kind", "Subject", "", "Size"};
    for (unsigned long i = 0; i < 4; ++i) {
      if (*fields[i] != 0) {
        EXPECT_EQ(view[i].SetFieldName(fields[i]), VQ_OK);
      }
    }
    const unsigned long sorted = categorized ? 0 : 1;
    EXPECT_EQ(view[sorted].SetSortOption(VQVFSORTOPTION_ASCENDING), VQ_OK);
    if (categorized) {
      EXPECT_EQ(view[0].SetIsCategorized(1), VQ_OK);
    }
    EXPECT_EQ(view[1].SetSortOption(VQVFSORTOPTION_ASCENDING), VQ_OK);
    EXPECT_EQ(view[1].SetTitle("Subject"), VQ_OK);
    EXPECT_EQ(view[2].SetFormula(VQFormula(VQString("\"const\""))), VQ_OK);
    EXPECT_EQ(view[3].SetIsHidden(1), VQ_OK);
    EXPECT_EQ(view.SetSelectionFormula(VQFormula(VQString("SELECT Subject != \"hidden\""))), VQ_OK);
    EXPECT_EQ(view.SetShowResponseHierarchy(1), VQ_OK);
    EXPECT_EQ(view.Save(), VQ_OK);
    return view;
  }

  VQDocument Add(const std::string& kind, const std::string& subject, const VQDocument* parent = nullptr) {
    VQDocument document = NewDocument(subject);
    SetText(document, "Kind", kind);
    EXPECT_EQ(document.CreateItem("Size", TYPE_TEXT, "9", 1, VQITEMFLAGS_SUMMARY), VQ_OK);
    if (parent != nullptr) {
      EXPECT_EQ(document.MakeResponse(*parent), VQ_OK);
    }
    EXPECT_EQ(document.Save(), VQ_OK);
    return document;
  }

  // a: a1 (r1 (r11), r2), a2; b: b1; c: below it d: d1, and c1 (q1).
  void AddTree() {
    const VQDocument a1 = Add("a", "a1");
    const VQDocument r1 = Add("a", "r1", &a1);
    Add("a", "r11", &r1);
    Add("a", "r2", &a1);
    Add("a", "a2");
    Add("b", "b1");
    Add("c\\d", "d1");
    const VQDocument c1 = Add("c", "c1");
    Add("c", "q1", &c1);
    Add("a", "hidden");
  }

  VQViewFolder OpenTree(unsigned long flags = 0) {
    VQViewFolder view = MakeView(true);
    EXPECT_EQ(view.Open(flags), VQ_OK);
    return view;
  }

  void LimitCache(const char* limit) {
    EXPECT_EQ(Session->SetEnvironmentString("$VQCPPAPI_MAX_CACHE_ENTRIES", limit), VQ_OK);
  }

  static std::string Place(const VQVFPosition& position) { return TextOf(position.GetDocNumber(".")); }
  static std::string Place(const VQVFEntry& entry) {
    VQVFPosition position;
    EXPECT_EQ(entry.GetPosition(&position), VQ_OK);
    return Place(position);
  }
  static std::string Column(const VQVFEntry& entry, unsigned long index, int hidden = 0) {
    const VQItem item = entry.GetColumnItem(index, hidden);
    VQString text;
    if (item.IsNull()) return "-";
    EXPECT_EQ(VQText(item).GetText(&text, "|"), VQ_OK);
    return TextOf(text);
  }
  // Place and name of a row: "1.2 a2".
  static std::string Row(const VQVFEntry& entry) {
    return Place(entry) + " " + (entry.IsCategory() ? Column(entry, 0) : Column(entry, 1));
  }
};

}  // namespace vqtest

#endif
