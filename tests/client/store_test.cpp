// A client's whole day with the store, through the shared library alone: the same with statuses returned and thrown.
#include <gtest/gtest.h>

#include <string>

#include "tests/home.h"
#include "vq/vq.h"

namespace {

VQString Text(const std::string& text) {
  return {reinterpret_cast<const VQCHAR*>(text.data()), static_cast<unsigned long>(text.size())};
}

std::string First(const VQSlate& slate, const char* name) {
  VQText text;
  EXPECT_EQ(slate.GetItem(name, &text), VQ_OK);
  const VQString first = text[0];
  return {reinterpret_cast<const char*>(first.GetBuf()), first.GetBufLength()};
}

// The failure of a status operation: returned with the switch off, thrown with it on.
template <class Operation>
VQSTATUS FailureOf(Operation&& operation) {
  try {
    const VQSTATUS status = operation();
    EXPECT_TRUE(VQGetThrowAllErrors() == 0 || !VQIsError(status)) << std::hex << status;
    return status;
  } catch (VQSTATUS status) {
    EXPECT_NE(VQGetThrowAllErrors(), 0);
    return status;
  }
}

class Client : public ::testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    VQSetThrowAllErrors(GetParam());
    ASSERT_EQ(Session.Init(), VQ_OK);
  }
  void TearDown() override {
    VQSetThrowAllErrors(0);
    EXPECT_EQ(Session.Term(1), VQ_OK);
  }

  ClientHome Home;
  VQQuillonSession Session;
};

TEST_P(Client, WritesManyDocumentsAndReadsThemInAnotherOpen) {
  unsigned long id = 0;
  {
    VQDatabase database;
    ASSERT_EQ(Session.CreateDatabase("day", &database, VQCreateDatabaseOptions()), VQ_OK);
    ASSERT_EQ(database.BeginTransaction(), VQ_OK);
    for (unsigned long i = 0; i < 100; ++i) {
      VQDocument document;
      ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
      VQText subject;
      ASSERT_EQ(document.CreateItem("Subject", &subject), VQ_OK);
      subject << VQString("number") << VQString(i);
      VQNumbers count;
      ASSERT_EQ(document.CreateItem("Count", &count), VQ_OK);
      count << static_cast<double>(i);
      ASSERT_EQ(document.SetFormSlate(VQString("Memo")), VQ_OK);
      ASSERT_EQ(document.Save(), VQ_OK);
      if (i == 42) id = document.GetSlateID();
    }
    ASSERT_EQ(database.CommitTransaction(), VQ_OK);
  }
  VQDatabase database;
  ASSERT_EQ(Session.GetDatabase("day", &database), VQ_OK);
  ASSERT_EQ(database.Open(), VQ_OK);
  VQDocumentArray documents;
  ASSERT_EQ(database.GetDocuments(&documents), VQ_OK);
  EXPECT_EQ(documents.GetCount(), 100U);
  VQDocument document;
  ASSERT_EQ(database.GetDocument(id, &document), VQ_OK);
  ASSERT_EQ(document.Open(), VQ_OK);
  VQText subject;
  ASSERT_EQ(document.GetItem("Subject", &subject), VQ_OK);
  ASSERT_EQ(subject.GetCount(), 2U);
  EXPECT_EQ(VQStringCompare(VQString(subject[1]), VQString(42UL), 0), 0);
  VQNumbers count;
  ASSERT_EQ(document.GetItem("Count", &count), VQ_OK);
  EXPECT_EQ(static_cast<double>(count[0]), 42.0);
  EXPECT_EQ(count.GetType(), TYPE_NUMBER);
}

TEST_P(Client, FailuresComeByTheThrowRuleAndLoseNothing) {
  VQDatabase database;
  ASSERT_EQ(Session.CreateDatabase("day", &database, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument document;
  EXPECT_EQ(FailureOf([&] { return document.Open(); }), VQERR_OBJECT_NOT_INITIALIZED);
  ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
  ASSERT_EQ(document.CreateItem("Subject", TYPE_TEXT, "kept", 4), VQ_OK);
  EXPECT_EQ(FailureOf([&] { return document.CreateItem("Subject", TYPE_TEXT, "x", 1); }), VQERR_ITEM_EXISTS);
  VQNumbers numbers;
  EXPECT_EQ(FailureOf([&] { return document.GetItem("Subject", &numbers); }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(FailureOf([&] { return document.GetItem("None", &numbers); }), VQWARN_NOT_FOUND);
  ASSERT_EQ(document.Save(), VQ_OK);
  VQDocument other;
  ASSERT_EQ(database.GetDocument(document.GetSlateID(), &other), VQ_OK);
  ASSERT_EQ(other.Open(), VQ_OK);
  ASSERT_EQ(other.CreateItem("Subject", TYPE_TEXT, "theirs", 6, 0, VQITEMOPTION_REPLACE), VQ_OK);
  ASSERT_EQ(other.Save(), VQ_OK);
  ASSERT_EQ(document.CreateItem("Subject", TYPE_TEXT, "mine", 4, 0, VQITEMOPTION_REPLACE), VQ_OK);
  EXPECT_EQ(FailureOf([&] { return document.Save(); }), VQSTATUS{551});
  EXPECT_EQ(First(document, "Subject"), "mine");
  EXPECT_EQ(document.Save(VQSAVE_FORCE), VQ_OK);
  EXPECT_EQ(FailureOf([&] { return database.CreateSlate(document, nullptr); }), VQ_OK);
  ASSERT_EQ(database.Close(), VQ_OK);
  EXPECT_EQ(FailureOf([&] { return document.Open(); }), VQERR_DATABASE_NOT_OPEN);
  EXPECT_EQ(FailureOf([&] { return database.SetTitle(Text("x")); }), VQERR_DATABASE_NOT_OPEN);
}

INSTANTIATE_TEST_SUITE_P(ThrowSwitch, Client, ::testing::Values(0, 1));

}  // namespace
