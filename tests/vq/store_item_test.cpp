// Item values: ranges, forms, growth and shrinking, in a slate and alone.
#include "tests/vq/support/store_fixture.h"
#include "vq/store/storetext.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"

namespace {

using vqtest::StatusOf;

class Items : public vqtest::StoreFixture {
 protected:
  // An item of those bytes, behind the type word, in an open document.
  VQItem Make(unsigned short type, const std::string& data) {
    EXPECT_EQ(Db.CreateDocument(&Document), VQ_OK);
    VQItem item;
    EXPECT_EQ(Document.CreateItem("Value", type, data.data(), data.size(), 0, VQITEMOPTION_UNIQUE, &item), VQ_OK);
    return item;
  }
  void TearDown() override {
    Document = VQDocument();
    StoreFixture::TearDown();
  }
  static std::string DataOf(const VQItem& item) {
    std::string data(item.GetValueSize() - 2, '\0');
    EXPECT_EQ(item.Read(0, data.size(), data.data()), VQ_OK);
    return data;
  }
  VQDocument Document;
};

// A value in a slate may hold more text than a string: that is said, and never cut.
TEST_F(Items, TextTooLongForAStringIsNotCut) {
  for (const std::size_t size : {65534, 65535, 65536, 70000}) {
    SCOPED_TRACE(size);
    const VQSTATUS expected = size <= 65534 ? VQ_OK : VQERR_STRING_TOO_LONG;
    const VQText text(Make(TYPE_TEXT, std::string(size, 'a')));
    VQString joined;
    unsigned long index = 0;
    EXPECT_EQ(StatusOf([&] { joined = text[0]; }), expected);
    EXPECT_EQ(text.GetText(&joined, ","), expected);
    EXPECT_EQ(VQText(text).FindEntry("b", &index), expected == VQ_OK ? VQWARN_NOT_FOUND : expected);
    EXPECT_EQ(VQText(text).Insert(0, VQString("x")), VQSTATUS{ENG_ERR_LIST_FULL});
    EXPECT_EQ(text.GetValueSize(), size + 2);
  }
}

// A list that a VQText makes holds 65,535 bytes; a larger one from elsewhere is read, and may shrink.
TEST_F(Items, ListsWithManyEntriesStayWhole) {
  for (const unsigned long count : {32765UL, 32766UL, 65535UL}) {
    SCOPED_TRACE(count);
    std::string list{static_cast<char>(count), static_cast<char>(count >> 8)};
    list.append(2 * count, '\0');
    VQText text(Make(TYPE_TEXT_LIST, list));
    EXPECT_EQ(text.GetCount(), count);
    EXPECT_EQ(text.Insert(count, VQString()), VQSTATUS{ENG_ERR_LIST_FULL});
    EXPECT_EQ(text.Insert(0, VQText(text)), VQERR_INVALID_PARAMETER);
    EXPECT_EQ(StatusOf([&] { text[count]; }), VQERR_BAD_SUBSCRIPT);
    EXPECT_EQ(text.GetCount(), count);
    EXPECT_EQ(DataOf(text), list);
    EXPECT_EQ(text.Delete(0, 1), VQ_OK);
    EXPECT_EQ(text.GetCount(), count - 1);
    EXPECT_EQ(text.Insert(0, VQString("abc")), VQSTATUS{ENG_ERR_LIST_FULL});
    EXPECT_EQ(text.Insert(count - 1, VQString("abc")), VQSTATUS{ENG_ERR_LIST_FULL});
    EXPECT_EQ(text.Delete(1, count - 4), VQ_OK);
    EXPECT_EQ(DataOf(text), std::string("\3\0\0\0\0\0\0\0", 8));
  }
}

struct RangeRow {
  const char* what;
  VQSTATUS (*operation)(VQItem&);
  VQSTATUS status;
  const char* after;
};

// Before: the five bytes "abcde", a value of size 7.
TEST_F(Items, BytesOutsideTheValueAreOutOfReach) {
  static char buffer[16];
  const RangeRow rows[] = {
      {"all", [](VQItem& i) { return i.Read(0, 5, buffer); }, VQ_OK, "abcde"},
      {"one too many", [](VQItem& i) { return i.Read(0, 6, buffer); }, VQERR_ITEM_OFFSET, "abcde"},
      {"the bytes the type word adds", [](VQItem& i) { return i.Read(5, 2, buffer); }, VQERR_ITEM_OFFSET, "abcde"},
      {"nothing at the end", [](VQItem& i) { return i.Read(7, 0, buffer); }, VQ_OK, "abcde"},
      {"nothing behind the end", [](VQItem& i) { return i.Read(8, 0, buffer); }, VQERR_ITEM_OFFSET, "abcde"},
      {"sum over the top", [](VQItem& i) { return i.Read(~0UL, 2, buffer); }, VQERR_ITEM_OFFSET, "abcde"},
      {"write", [](VQItem& i) { return i.Write(3, 2, "XY"); }, VQ_OK, "abcXY"},
      {"write over the end", [](VQItem& i) { return i.Write(3, 3, "XYZ"); }, VQERR_ITEM_OFFSET, "abcde"},
      {"write record over the end",
       [](VQItem& i) {
         std::uint32_t w = 0;
         return i.WriteODS(2, 1, &w);
       },
       VQERR_ITEM_OFFSET, "abcde"},
      {"gap", [](VQItem& i) { return i.Expand(2, 1) ? VQERR_CORRUPTED : i.Write(2, 1, "_"); }, VQ_OK, "ab_cde"},
      {"gap at the end", [](VQItem& i) { return i.Expand(5, 1) ? VQERR_CORRUPTED : i.Write(5, 1, "_"); }, VQ_OK,
       "abcde_"},
      {"gap behind the end", [](VQItem& i) { return i.Expand(8, 1); }, VQERR_ITEM_OFFSET, "abcde"},
      {"close", [](VQItem& i) { return i.Shorten(1, 3); }, VQ_OK, "ae"},
      {"close over the end", [](VQItem& i) { return i.Shorten(3, 3); }, VQERR_ITEM_OFFSET, "abcde"},
      {"allocate", [](VQItem& i) { return i.Alloc(9, 0); }, VQERR_INVALID_FOR_SLATE_ITEM, "abcde"},
      {"null", [](VQItem& i) { return i.Write(0, 1, nullptr); }, VQERR_NULL_POINTER, "abcde"},
  };
  for (const RangeRow& row : rows) {
    VQItem item = Make(0x1234, "abcde");
    EXPECT_EQ(row.operation(item), row.status) << row.what;
    EXPECT_EQ(DataOf(item), row.after) << row.what;
  }
}

TEST_F(Items, ValuesOfTheirOwnAreBounded) {
  const std::string bytes(65533, 'x');
  EXPECT_EQ(StatusOf([&] { VQItem item(new VQItemBody(TYPE_TEXT, bytes.data(), 65533)); }), VQ_OK);
  EXPECT_EQ(StatusOf([&] { VQItem item(new VQItemBody(TYPE_TEXT, bytes.data(), 65534)); }), VQERR_INVALID_PARAMETER);
  VQItem item;
  EXPECT_EQ(item.Alloc(1, 0), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(item.Alloc(65536, 0), VQERR_INVALID_PARAMETER);
  EXPECT_TRUE(item.IsNull());
  ASSERT_EQ(item.Alloc(65535, 0), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return item.GetLastModified(); }), VQERR_NOT_IN_SLATE);
  EXPECT_EQ(StatusOf([&] { return item.GetSlate(); }), VQERR_NOT_IN_SLATE);
}

const std::string kEight = "ABCDEFGH";
const std::string kOneHeader{"\x01\x00\x00\x00", 4};
const std::string kNoHeader{"\x00\x00\x00\x00", 4};

struct FormRow {
  const char* what;
  unsigned short type;
  std::string data;
  bool expand;
  unsigned short stored_type;
  std::string stored;
};

TEST_F(Items, SavingChoosesTheSingleOrTheListForm) {
  const FormRow rows[] = {
      {"single stays", TYPE_NUMBER, kEight, false, TYPE_NUMBER, kEight},
      {"list of one collapses", TYPE_NUMBER_RANGE, kOneHeader + kEight, false, TYPE_NUMBER, kEight},
      {"time list of one collapses", TYPE_TIME_RANGE, kOneHeader + kEight, false, TYPE_TIME, kEight},
      {"range of one stays", TYPE_TIME_RANGE, std::string("\0\0\1\0", 4) + kEight + kEight, false, TYPE_TIME_RANGE,
       std::string("\0\0\1\0", 4) + kEight + kEight},
      {"single expands", TYPE_NUMBER, kEight, true, TYPE_NUMBER_RANGE, kOneHeader + kEight},
      {"empty single expands", TYPE_TIME, "", false, TYPE_TIME_RANGE, kNoHeader},
      {"text stays", TYPE_TEXT, "text", true, TYPE_TEXT, "text"},
  };
  for (const FormRow& row : rows) {
    VQItem item = Make(row.type, row.data);
    EXPECT_EQ(item.SetExpandOnSave(row.expand), VQ_OK);
    ASSERT_EQ(Document.Save(), VQ_OK) << row.what;
    EXPECT_EQ(item.GetType(), row.stored_type) << row.what;
    EXPECT_EQ(DataOf(item), row.stored) << row.what;
    VQDocument again;
    ASSERT_EQ(Db.GetDocument(Document.GetSlateID(), &again), VQ_OK);
    ASSERT_EQ(again.Open(), VQ_OK);
    ASSERT_EQ(again.GetItem("Value", &item), VQ_OK);
    EXPECT_EQ(DataOf(item), row.stored) << row.what;
  }
}

struct CountRow {
  const char* what;
  unsigned short type;
  std::string data;
  unsigned long count;
  VQSTATUS status;
};

TEST_F(Items, EntryCountsAreNeverTakenFromADamagedHeader) {
  const CountRow rows[] = {
      {"empty text", TYPE_TEXT, "", 0, VQ_OK},
      {"empty list", TYPE_TEXT_LIST, std::string(2, '\0'), 0, VQ_OK},
      {"list of three", TYPE_TEXT_LIST, std::string("\3\0\1\0\1\0\1\0abc", 11), 3, VQ_OK},
      {"one number and one range", TYPE_NUMBER_RANGE, std::string("\1\0\1\0", 4) + kEight + kEight + kEight, 2, VQ_OK},
      {"more numbers than bytes", TYPE_NUMBER_RANGE, std::string("\2\0\0\0", 4) + kEight, 0, VQERR_CORRUPTED},
      {"half a header", TYPE_NUMBER_RANGE, "ab", 0, VQERR_ITEM_OFFSET},
      {"unknown type", 0x1234, "ab", 1, VQ_OK},
  };
  for (const CountRow& row : rows) {
    VQItem item = Make(row.type, row.data);
    unsigned long count = 0;
    EXPECT_EQ(StatusOf([&] { count = item.GetItemBody()->GetEntryCount(); }), row.status) << row.what;
    EXPECT_EQ(count, row.count) << row.what;
  }
}

TEST_F(Items, MakeListAndCollapseKeepTheEntry) {
  VQItem item = Make(TYPE_NUMBER, kEight);
  ASSERT_EQ(item.GetItemBody()->MakeList(), VQ_OK);
  EXPECT_EQ(DataOf(item), kOneHeader + kEight);
  ASSERT_EQ(item.GetItemBody()->Collapse(), VQ_OK);
  EXPECT_EQ(DataOf(item), kEight);
  ASSERT_EQ(item.GetItemBody()->MakeList(), VQ_OK);
  ASSERT_EQ(item.GetItemBody()->Clear(), VQ_OK);
  EXPECT_EQ(item.GetType(), TYPE_NUMBER);
  EXPECT_EQ(item.GetValueSize(), 2U);
}

TEST_F(Items, AnArrayHoldsThemAllOrThoseWithAFlag) {
  VQItem item = Make(TYPE_NUMBER, kEight);
  SetText(Document, "Subject", "s");
  VQItemArray all;
  ASSERT_EQ(Document.GetItems(&all), VQ_OK);
  ASSERT_EQ(all.GetCount(), 2U);
  EXPECT_EQ(vqtest::TextOf(all[0].GetName()), "Value");
  EXPECT_EQ(all[0].GetItemBody(), item.GetItemBody());
  EXPECT_EQ(StatusOf([&] { return all[2]; }), VQERR_BAD_SUBSCRIPT);
  ASSERT_EQ(Document.GetItems(&all, VQITEMFLAGS_SUMMARY), VQ_OK);
  ASSERT_EQ(all.GetCount(), 1U);
  EXPECT_EQ(vqtest::TextOf(all[0].GetName()), "Subject");
}

}  // namespace
