// Values that join those of an item, and items that go one at a time or all together.
#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/values/vqnumber.h"

namespace {

using namespace vqtest;

class Joins : public StoreFixture {
 protected:
  static std::string RawValue(const VQSlate& slate, const char* name) {
    VQItem item;
    EXPECT_EQ(slate.GetItem(name, &item), VQ_OK);
    std::string bytes(item.GetValueSize() - 2, 0);
    EXPECT_EQ(item.Read(0, bytes.size(), bytes.data()), VQ_OK);
    return bytes;
  }
};

// Entries are eight bytes of one letter, ranges sixteen.
std::string Entry(char letter) { return std::string(8, letter); }
std::string Header(int singles, int ranges) { return Bytes({singles, 0, ranges, 0}); }

TEST_F(Joins, SinglesAndRangesStayApart) {
  const std::string range(16, 'R');
  const struct {
    const char* What;
    unsigned short Present;
    std::string Before;
    unsigned short Added;
    std::string Data;
    VQSTATUS Status;
    std::string After;
  } rows[] = {
      {"two numbers", TYPE_NUMBER, Entry('a'), TYPE_NUMBER, Entry('b'), VQ_OK, Header(2, 0) + Entry('a') + Entry('b')},
      {"a single joins a range", TYPE_TIME_RANGE, Header(0, 1) + range, TYPE_TIME, Entry('b'), VQ_OK,
       Header(1, 1) + Entry('b') + range},
      {"a list joins a list", TYPE_TIME_RANGE, Header(1, 1) + Entry('a') + range, TYPE_TIME_RANGE,
       Header(1, 1) + Entry('b') + range, VQ_OK, Header(2, 2) + Entry('a') + Entry('b') + range + range},
      {"an empty one joins", TYPE_NUMBER, Entry('a'), TYPE_NUMBER, "", VQ_OK, Entry('a')},
      {"half a number", TYPE_NUMBER, Entry('a'), TYPE_NUMBER, "half", VQERR_CORRUPTED, Entry('a')},
      {"no header", TYPE_NUMBER, Entry('a'), TYPE_NUMBER_RANGE, "abc", VQERR_CORRUPTED, Entry('a')},
      {"counts past the end", TYPE_NUMBER, Entry('a'), TYPE_NUMBER_RANGE, Header(2, 0) + Entry('b'), VQERR_CORRUPTED,
       Entry('a')},
      {"a time joins a number", TYPE_NUMBER, Entry('a'), TYPE_TIME, Entry('b'), VQERR_INCORRECT_ITEM_TYPE, Entry('a')},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQDocument document;
    ASSERT_EQ(Db.CreateDocument(&document), VQ_OK);
    ASSERT_EQ(document.CreateItem("Value", row.Present, row.Before.data(), row.Before.size()), VQ_OK);
    EXPECT_EQ(document.CreateItem("Value", row.Added, row.Data.data(), row.Data.size(), 0, VQITEMOPTION_APPEND),
              row.Status);
    EXPECT_EQ(RawValue(document, "Value"), row.After);
    EXPECT_EQ(document.GetItemCount(), 1u);
  }
}

TEST_F(Joins, RecordsGoOnInAnotherItem) {
  VQDocument document;
  ASSERT_EQ(Db.CreateDocument(&document), VQ_OK);
  const std::string first = Reference(1) + Text("a"), second = Paragraph() + Text("b");
  ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, first.data(), first.size()), VQ_OK);
  VQRichText body;
  ASSERT_EQ(document.GetItem("Body", &body), VQ_OK);
  ASSERT_EQ(document.CreateItem("Body", TYPE_COMPOSITE, second.data(), second.size(), 0, VQITEMOPTION_APPEND), VQ_OK);
  EXPECT_EQ(Written(body), first + second);
  EXPECT_EQ(document.GetItemCount(), 2u);
  // All pieces of a body have one name, and go together.
  ASSERT_EQ(document.RenameItem(body, "Text"), VQ_OK);
  EXPECT_FALSE(document.HasItem("Body"));
  EXPECT_EQ(Written(body), first + second);
  EXPECT_EQ(document.DeleteItem(&body), VQ_OK);
  EXPECT_TRUE(body.IsNull());
  EXPECT_EQ(document.GetItemCount(), 0u);
}

TEST_F(Joins, AnItemIsDeletedFromItsOwnSlateOnly) {
  VQDocument document = NewDocument("a"), other = NewDocument("b");
  VQText mine, theirs, none;
  ASSERT_EQ(document.GetItem("Subject", &mine), VQ_OK);
  ASSERT_EQ(other.GetItem("Subject", &theirs), VQ_OK);
  EXPECT_EQ(document.DeleteItem(static_cast<VQItem*>(nullptr)), VQERR_NULL_POINTER);
  EXPECT_EQ(document.DeleteItem(&none), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(document.DeleteItem(&theirs), VQERR_NOT_IN_SLATE);
  EXPECT_EQ(TextAt(document, "Subject") + TextAt(other, "Subject"), "ab");
  SetText(document, "More", "m");
  EXPECT_EQ(document.GetItemType("More"), TYPE_TEXT);
  EXPECT_EQ(document.GetItemType("None"), 0u);
  EXPECT_EQ(document.RenameItem("More", "Subject"), VQERR_ITEM_EXISTS);
  ASSERT_EQ(document.DeleteAllItems(), VQ_OK);
  EXPECT_TRUE(mine.IsDeleted());
  ASSERT_EQ(document.Save(), VQ_OK);
  EXPECT_EQ(StoredText(document, "Subject") + StoredText(document, "More"), "--");
}

}  // namespace
