// Documents: binding, opening, the item cache, saving and what stands in its way.
#include <cstring>

#include "engine/engine.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/store/storetext.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

class Slates : public vqtest::StoreFixture {};

TEST_F(Slates, SavesAndFindsItemsAgainWhateverTheCaseOfTheName) {
  VQDocument document = NewDocument("first");
  const unsigned long id = document.GetSlateID();
  EXPECT_NE(id, 0U);
  ASSERT_EQ(document.Close(), VQ_OK);
  EXPECT_EQ(document.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(document.GetSlateID(), id);
  ASSERT_EQ(document.Open(), VQ_OK);
  EXPECT_EQ(TextAt(document, "sUBJECT"), "first");
  EXPECT_EQ(TextAt(document, "Missing"), "-");
  EXPECT_EQ(document.GetItemCount(), 1U);
}

TEST_F(Slates, HandlesOnOneItemShareItsBody) {
  VQDocument document = NewDocument("before");
  VQText one;
  VQText two;
  ASSERT_EQ(document.GetItem("Subject", &one), VQ_OK);
  ASSERT_EQ(document.GetItem("SUBJECT", &two), VQ_OK);
  ASSERT_EQ(one.SetValue(VQString("after")), VQ_OK);
  EXPECT_EQ(TextOf(VQString(two[0])), "after");
  EXPECT_EQ(two.GetItemBody(), one.GetItemBody());
}

// A change must reach the file although its handle is gone by the time of the save.
TEST_F(Slates, KeepsChangesOfItemsWhoseHandlesWent) {
  VQDocument document = NewDocument("before");
  {
    VQText text;
    ASSERT_EQ(document.GetItem("Subject", &text), VQ_OK);
    ASSERT_EQ(text.Write(0, 3, "AFT"), VQ_OK);
  }
  EXPECT_TRUE(document.IsModified());
  ASSERT_EQ(document.Save(), VQ_OK);
  EXPECT_EQ(StoredText(document, "Subject"), "AFTore");
  EXPECT_FALSE(document.IsModified());
}

TEST_F(Slates, ItemsOutliveTheirSlateWithoutItsValue) {
  VQDocument document = NewDocument("text");
  VQText text;
  ASSERT_EQ(document.GetItem("Subject", &text), VQ_OK);
  ASSERT_EQ(document.Close(), VQ_OK);
  char byte = 0;
  EXPECT_EQ(text.Read(0, 1, &byte), VQERR_ITEM_UNINITIALIZED);
  EXPECT_EQ(text.SetValue(VQString("x")), VQERR_ITEM_UNINITIALIZED);
  ASSERT_EQ(document.Open(), VQ_OK);
  EXPECT_EQ(text.Read(0, 1, &byte), VQERR_ITEM_UNINITIALIZED);
  EXPECT_EQ(TextAt(document, "Subject"), "text");
}

TEST_F(Slates, ItemsStayUsableAcrossSaves) {
  VQDocument document = NewDocument("one");
  VQText text;
  ASSERT_EQ(document.GetItem("Subject", &text), VQ_OK);
  for (const char* value : {"two", "a text that is a good deal longer", ""}) {
    ASSERT_EQ(text.SetValue(VQString(value)), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
    EXPECT_EQ(StoredText(document, "Subject"), value);
  }
}

TEST_F(Slates, AConflictLeavesTheSlateOpenAndDirty) {
  VQDocument mine = NewDocument("start");
  VQDocument theirs;
  ASSERT_EQ(Db.GetDocument(mine.GetSlateID(), &theirs), VQ_OK);
  ASSERT_EQ(theirs.Open(), VQ_OK);
  SetText(theirs, "Subject", "theirs");
  ASSERT_EQ(theirs.Save(), VQ_OK);
  VQText subject;
  ASSERT_EQ(mine.GetItem("Subject", &subject), VQ_OK);
  ASSERT_EQ(subject.SetValue(VQString("mine")), VQ_OK);
  EXPECT_EQ(vq::EngineError(mine.Save()), unsigned{ENG_ERR_SLATE_CONFLICT});
  EXPECT_TRUE(subject.IsDirty());
  EXPECT_TRUE(mine.IsOpen());
  EXPECT_TRUE(mine.IsModified());
  EXPECT_EQ(TextAt(mine, "Subject"), "mine");
  EXPECT_EQ(StoredText(mine, "Subject"), "theirs");
  EXPECT_EQ(mine.Save(VQSAVE_FORCE), VQ_OK);
  EXPECT_EQ(StoredText(mine, "Subject"), "mine");
}

TEST_F(Slates, BindsDeletionStubsAndRefusesUnknownIdentifiers) {
  VQDocument document = NewDocument("gone");
  const unsigned long id = document.GetSlateID();
  ASSERT_EQ(Db.DeleteDocument(&document), VQ_OK);
  EXPECT_TRUE(document.IsNull());
  VQSlate stub;
  ASSERT_EQ(Db.GetSlate(id, &stub), VQ_OK);
  EXPECT_FALSE(stub.IsNull());
  EXPECT_TRUE(stub.IsDeleted());
  EXPECT_EQ(stub.GetSlateID(), id | 0x80000000UL);
  EXPECT_EQ(vq::EngineError(stub.Open()), unsigned{ENG_ERR_SLATE_DELETED});
  EXPECT_EQ(vq::EngineError(Db.GetSlate(id + 100, &stub)), unsigned{ENG_ERR_NO_SLATE});
  EXPECT_TRUE(stub.IsNull());
}

TEST_F(Slates, CopiedHandlesShareTheOpenSlate) {
  VQDocument document = NewDocument("shared");
  VQDocument copy(document);
  VQDocument other;
  ASSERT_EQ(Db.GetDocument(document.GetSlateID(), &other), VQ_OK);
  ASSERT_EQ(other.Open(), VQ_OK);
  EXPECT_EQ(copy.GetSlateBody(), document.GetSlateBody());
  EXPECT_NE(other.GetSlateBody(), document.GetSlateBody());
  ASSERT_EQ(copy.Close(), VQ_OK);
  EXPECT_FALSE(document.IsOpen());
  EXPECT_EQ(document.Save(), VQERR_SLATE_NOT_OPEN);
  EXPECT_EQ(document.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(document.Open(), VQ_OK);
}

TEST_F(Slates, ClosingTheDatabaseClosesThem) {
  VQDocument document = NewDocument("x");
  ASSERT_EQ(Db.Close(), VQ_OK);
  EXPECT_FALSE(document.IsOpen());
  EXPECT_EQ(document.Open(), VQERR_DATABASE_NOT_OPEN);
  ASSERT_EQ(Db.Open(), VQ_OK);
  EXPECT_EQ(document.Open(), VQ_OK);
}

TEST_F(Slates, TheEngineSlateCanBeTakenAndGiven) {
  VQDocument document = NewDocument("raw");
  SetText(document, "Added", "with it");
  void* handle = document.GetSlateHandle(0);
  EXPECT_TRUE(document.IsNull());
  ASSERT_EQ(Db.GetDocument(handle, &document), VQ_OK);
  EXPECT_EQ(TextAt(document, "Added"), "with it");
  EXPECT_EQ(Db.GetSlate(static_cast<void*>(nullptr), &document), VQERR_INVALID_PARAMETER);
}

struct OptionRow {
  const char* what;
  unsigned long type;
  std::string data;
  VQITEMOPTION option;
  VQSTATUS status;
  std::string after;
};

// Before: Subject "a".
TEST_F(Slates, CreateItemFollowsItsOption) {
  const std::string list{"\x02\x00\x01\x00\x01\x00pq", 8};
  const OptionRow rows[] = {
      {"unique", TYPE_TEXT, "b", VQITEMOPTION_UNIQUE, VQERR_ITEM_EXISTS, "a"},
      {"replace", TYPE_TEXT, "b", VQITEMOPTION_REPLACE, VQ_OK, "b"},
      {"join text", TYPE_TEXT, "b", VQITEMOPTION_APPEND, VQ_OK, "a|b"},
      {"join list", TYPE_TEXT_LIST, list, VQITEMOPTION_APPEND, VQ_OK, "a|p|q"},
      {"join damaged", TYPE_TEXT_LIST, list.substr(0, 5), VQITEMOPTION_APPEND, ENG_ERR_LIST_DAMAGED, "a"},
      {"other kind", TYPE_NUMBER, "12345678", VQITEMOPTION_APPEND, VQERR_INCORRECT_ITEM_TYPE, "a"},
      {"no option", TYPE_TEXT, "b", static_cast<VQITEMOPTION>(7), VQERR_INVALID_PARAMETER, "a"},
  };
  for (const OptionRow& row : rows) {
    VQDocument document = NewDocument("a");
    EXPECT_EQ(document.CreateItem("subject", row.type, row.data.data(), row.data.size(), 0, row.option), row.status)
        << row.what;
    EXPECT_EQ(TextAt(document, "Subject"), row.after) << row.what;
    EXPECT_EQ(document.GetItemCount(), 1U) << row.what;
  }
  VQDocument document = NewDocument("a");
  VQText itself;
  ASSERT_EQ(document.GetItem("Subject", &itself), VQ_OK);
  EXPECT_EQ(document.CreateItem(itself, VQITEMOPTION_APPEND), VQ_OK);
  EXPECT_EQ(TextAt(document, "Subject"), "a|a");
}

TEST_F(Slates, ATypedHandleRefusesOtherValuesBeforeAnythingIsMade) {
  VQDocument document = NewDocument("a");
  VQNumbers numbers;
  EXPECT_EQ(document.GetItem("Subject", &numbers), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(document.CreateItem("New", TYPE_TEXT, "x", 1, 0, VQITEMOPTION_UNIQUE, &numbers), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_FALSE(document.HasItem("New"));
  EXPECT_EQ(document.CreateItem("", TYPE_TEXT, "x", 1), VQERR_NAME_REQUIRED);
  EXPECT_TRUE(numbers.IsNull());
}

TEST_F(Slates, DeletedItemsAreGoneForTheirHandlesAndAfterTheSave) {
  VQDocument document = NewDocument("a");
  VQText text;
  ASSERT_EQ(document.GetItem("Subject", &text), VQ_OK);
  ASSERT_EQ(document.DeleteItem(VQString("subject")), VQ_OK);
  EXPECT_EQ(document.DeleteItem(VQString("subject")), VQWARN_NOT_FOUND);
  EXPECT_TRUE(text.IsDeleted());
  EXPECT_EQ(text.SetValue(VQString("x")), VQERR_ITEM_UNINITIALIZED);
  EXPECT_FALSE(document.HasItem("Subject"));
  ASSERT_EQ(document.Save(), VQ_OK);
  EXPECT_EQ(StoredText(document, "Subject"), "-");
}

TEST_F(Slates, RenamesOneItemOrAllOfAName) {
  VQDocument document = NewDocument("a");
  SetText(document, "Other", "o");
  VQText text;
  ASSERT_EQ(document.GetItem("Subject", &text), VQ_OK);
  EXPECT_EQ(document.RenameItem("Subject", "Other"), VQERR_ITEM_EXISTS);
  EXPECT_EQ(document.RenameItem("Missing", "New"), VQWARN_NOT_FOUND);
  ASSERT_EQ(document.RenameItem(text, "Title"), VQ_OK);
  EXPECT_EQ(TextOf(text.GetName()), "Title");
  const BLOCKID none{};
  const ENGHANDLE slate = vq::ToHandle(document.GetSlateHandle());
  BLOCKID made = none;
  ASSERT_EQ(EngItemAppend(slate, 0, vq::EngineText("Title"), 5, TYPE_TEXT, "b", 1, &made, nullptr), ENG_OK);
  ASSERT_EQ(document.RenameItem("Title", "Several"), VQ_OK);
  EXPECT_EQ(TextOf(VQString(text[0])), "a");
  EXPECT_FALSE(document.HasItem("Title"));
  EXPECT_EQ(document.GetItemCount(), 3U);
  ASSERT_EQ(document.RenameItem(text, "Alone"), VQ_OK);
  EXPECT_EQ(TextAt(document, "Several"), "b");
}

TEST_F(Slates, CopiesGoIntoAnotherDatabaseAsNewSlates) {
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument source = NewDocument("saved");
  VQText text;
  ASSERT_EQ(source.GetItem("Subject", &text), VQ_OK);
  ASSERT_EQ(text.SetValue(VQString("pending")), VQ_OK);
  VQDocument copy;
  ASSERT_EQ(other.CreateDocument(source, &copy), VQ_OK);
  EXPECT_EQ(TextAt(copy, "Subject"), "pending");
  EXPECT_NE(std::memcmp(copy.GetUniversalID(), source.GetUniversalID(), sizeof(UNIVERSALSLATEID)), 0);
  EXPECT_EQ(copy.GetDatabaseBody(), other.GetDatabaseBody());
  EXPECT_EQ(StoredText(source, "Subject"), "saved");
  ASSERT_EQ(source.Close(), VQ_OK);
  EXPECT_EQ(other.CreateSlate(source, nullptr), VQ_OK);
  EXPECT_FALSE(source.IsOpen());
  VQSlate nothing;
  EXPECT_EQ(other.CreateSlate(nothing, &copy), VQERR_UNINITIALIZED_ARGUMENT);
  ASSERT_EQ(other.CreateDocument(source, &source), VQ_OK);
  EXPECT_EQ(TextAt(source, "Subject"), "saved");
  EXPECT_EQ(source.GetDatabaseBody(), other.GetDatabaseBody());
}

TEST_F(Slates, CryptographyAnswersWithTheEnginesStatusAndChangesNothing) {
  VQDocument document = NewDocument("plain");
  EXPECT_EQ(document.Sign(), ENG_ERR_NOT_AVAILABLE + EngLater_SlateSign);
  EXPECT_EQ(document.Decrypt(), ENG_ERR_NOT_AVAILABLE + EngLater_SlateDecrypt);
  EXPECT_EQ(document.Encrypt(VQENCRYPTOPTION_PUBLIC_KEY), ENG_ERR_NOT_AVAILABLE + EngLater_SlateEncrypt);
  EXPECT_EQ(document.Encrypt(VQString()), VQERR_NULL_STRING);
  VQDocument copy;
  EXPECT_EQ(Db.CreateEncryptedSlate(document, VQString("key"), &copy), ENG_ERR_NOT_AVAILABLE + EngLater_SlateEncrypt);
  EXPECT_TRUE(copy.IsNull());
  VQDocumentArray all;
  ASSERT_EQ(Db.GetDocuments(&all), VQ_OK);
  EXPECT_EQ(all.GetCount(), 1U);
}

struct ClosedRow {
  const char* what;
  VQSTATUS (*operation)(VQSlate&);
};

TEST_F(Slates, OperationsNameTheStateTheyMiss) {
  const ClosedRow rows[] = {
      {"Save", [](VQSlate& s) { return s.Save(); }},
      {"GetItem",
       [](VQSlate& s) {
         VQItem item;
         return s.GetItem("x", &item);
       }},
      {"CreateItem", [](VQSlate& s) { return s.CreateItem("x", TYPE_TEXT, "x", 1); }},
      {"DeleteItem", [](VQSlate& s) { return s.DeleteItem(VQString("x")); }},
      {"HasItem", [](VQSlate& s) { return StatusOf([&] { return s.HasItem("x"); }); }},
      {"GetSize", [](VQSlate& s) { return StatusOf([&] { static_cast<void>(s.GetSize()); }); }},
  };
  VQDocument closed = NewDocument("x");
  closed.Close();
  for (const ClosedRow& row : rows) {
    VQSlate unbound;
    EXPECT_EQ(row.operation(unbound), VQERR_OBJECT_NOT_INITIALIZED) << row.what;
    EXPECT_EQ(row.operation(closed), VQERR_SLATE_NOT_OPEN) << row.what;
  }
}

}  // namespace
