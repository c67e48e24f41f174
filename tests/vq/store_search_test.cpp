// Searches by full text and by formula, and unread lists, through the class library.
#include <functional>

#include "tests/vq/support/store_fixture.h"
#include "vq/automation/vqformula.h"
#include "vq/automation/vqsrchop.h"
#include "vq/store/vqftarr.h"
#include "vq/store/vqftsrch.h"

namespace vqtest {
namespace {

class Searches : public StoreFixture {
 protected:
  static std::string Subjects(const VQDocumentArray& documents) {
    std::string all;
    for (unsigned long i = 0; i < documents.GetCount(); ++i) {
      VQDocument document = documents[i];
      EXPECT_EQ(document.Open(), VQ_OK);
      all += TextAt(document, "Subject") + ";";
    }
    return all;
  }
  std::string Found(const std::string& query, const VQFTSearchOptions& options = VQFTSearchOptions()) {
    VQDocumentArray found;
    const VQSTATUS status = Db.FTSearch(Store(query), &found, options);
    return status == VQ_OK ? Subjects(found) : std::to_string(status);
  }
  std::string Unread(const std::string& user) {
    VQSlateArray unread;
    EXPECT_EQ(Db.GetUnreadList(&unread, Store(user)), VQ_OK);
    return std::to_string(unread.GetCount());
  }
};

TEST_F(Searches, HitsComeInOrderWithScores) {
  VQDocumentArray found;
  EXPECT_NE(Db.FTSearch("apple", &found), VQ_OK) << "no index yet";
  NewDocument("one apple among several other fruits");
  NewDocument("apple");
  NewDocument("pear");
  VQFTIndexStatistics statistics;
  ASSERT_EQ(Db.CreateFTIndex(&statistics), VQ_OK);
  EXPECT_EQ(statistics.GetDocumentsAdded(), 3u);
  EXPECT_EQ(Db.IsFTIndexed(), 1);
  ASSERT_EQ(Db.FTSearch("apples", &found), VQ_OK);
  EXPECT_EQ(Subjects(found), "apple;one apple among several other fruits;");
  EXPECT_EQ(found.IsFTSearch(), 1);
  EXPECT_EQ(found.GetFTSearchScore(0), 100);
  EXPECT_EQ(found[1].GetFTSearchScore(), found.GetFTSearchScore(1));
  EXPECT_LT(found.GetFTSearchScore(1), 100);
  EXPECT_EQ(found.Contains(found.GetSlateID(1)), 1);
  EXPECT_EQ(found.Add(found.GetSlateID(0)), VQERR_INVALID_FOR_FULL_TEXT);
  EXPECT_EQ(found.RemoveAll(), VQERR_INVALID_FOR_FULL_TEXT);
  EXPECT_EQ(StatusOf([&] { return found.GetSlateID(2); }), VQERR_BAD_SUBSCRIPT);
  VQDocumentArray plain;
  ASSERT_EQ(found.Copy(&plain), VQ_OK);
  EXPECT_EQ(plain.IsFTSearch(), 0);
  EXPECT_EQ(plain.Remove(plain.GetSlateID(0)), VQ_OK);
  ASSERT_EQ(Db.FTSearch("apple or pear", &found, VQFTSearchOptions(), plain), VQ_OK);
  EXPECT_EQ(Subjects(found), "apple;");
  EXPECT_EQ(Db.FTSearch("nothing", &found), VQWARN_NOT_FOUND);
  EXPECT_EQ(found.GetCount(), 0u);
  EXPECT_EQ(Db.FTSearch("", &found), VQERR_NULL_STRING);
  EXPECT_EQ(Db.DeleteFTIndex(), VQ_OK);
  EXPECT_EQ(Db.IsFTIndexed(), 0);
  EXPECT_NE(Db.UpdateFTIndex(), VQ_OK);
}

TEST_F(Searches, OptionsSayWhatIsAskedFor) {
  NewDocument("run");
  NewDocument("running");
  ASSERT_EQ(Db.CreateFTIndex(), VQ_OK);
  VQFTSearchOptions options;
  EXPECT_EQ(options.GetMaxDocuments(), 250u);
  EXPECT_EQ(options.GetOptions(), 0x288u);
  EXPECT_EQ(options.SetStemWords(0), VQ_OK);
  EXPECT_EQ(Found("run", options), "run;");
  EXPECT_EQ(options.SetSortOrder(9), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(options.SetMaxDocuments(65536), VQERR_INVALID_PARAMETER);
  for (unsigned long order : {96UL, 32UL, 8UL}) {
    EXPECT_EQ(options.SetSortOrder(order), VQ_OK);
    EXPECT_EQ(options.GetSortOrder(), order);
  }
  EXPECT_EQ(options.GetOptions(), 0x88u);
  EXPECT_EQ(options.SetMaxDocuments(0), VQ_OK);
  EXPECT_EQ(options.SetSortOrder(8), VQ_OK);
  EXPECT_EQ(options.GetOptions(), 0x08u);
  EXPECT_EQ(options.SetMaxDocuments(1), VQ_OK);
  EXPECT_EQ(options.SetStemWords(1), VQ_OK);
  EXPECT_EQ(Found("running", options).size(), std::string("run;").size());
}

TEST_F(Searches, AFormulaSelectsWithinBounds) {
  NewDocument("a1");
  NewDocument("a2");
  NewDocument("b1");
  VQDocumentArray found;
  VQSearchOptions options;
  EXPECT_EQ(options.GetSlateType(), 1u);
  EXPECT_FALSE(VQSearchOptions::IsSet(options.GetCompletedDate()));
  const VQFormula formula("SELECT @Begins(Subject; \"a\")");
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_EQ(Subjects(found), "a1;a2;");
  EXPECT_EQ(options.SetMaxSlates(1), VQ_OK);
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_EQ(Subjects(found), "a1;");
  EXPECT_FALSE(VQSearchOptions::IsSet(options.GetCompletedDate())) << "a2 is still to come";
  EXPECT_EQ(options.SetMaxSlates(0), VQ_OK);
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_TRUE(VQSearchOptions::IsSet(options.GetCompletedDate()));
  EXPECT_EQ(options.SetEndDate(VQString("1.1.1990")), VQ_OK);
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_EQ(options.GetCompletedDate().DateWord, options.GetEndDate().DateWord) << "what is later is still to come";
  options = VQSearchOptions();
  EXPECT_EQ(options.SetBeginDate(VQString("1.1.3000")), VQ_OK);
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_EQ(Subjects(found), "");
  const TIMEDATE before = options.GetBeginDate();
  EXPECT_NE(options.SetBeginDate(VQString("no day at all")), VQ_OK);
  EXPECT_EQ(options.GetBeginDate().DateWord, before.DateWord);
  EXPECT_EQ(options.SetSlateType(8), VQ_OK);
  options = VQSearchOptions();
  ASSERT_EQ(options.SetSlateType(8), VQ_OK);
  ASSERT_EQ(Db.Search(formula, &found, &options), VQ_OK);
  EXPECT_EQ(found.GetCount(), 0u);
  EXPECT_EQ(Db.Search(VQFormula(), &found), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(Db.Search(VQFormula(new VQFormulaBody), &found), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_F(Searches, UnreadListsAreTheUsersOwn) {
  const VQDocument first = NewDocument("first");
  VQSlateArray before;
  ASSERT_EQ(Db.GetUnreadList(&before), VQ_OK);
  EXPECT_EQ(before.GetCount(), 1u);
  EXPECT_EQ(Unread("Jane"), "1");
  VQSlateArray after;
  ASSERT_EQ(before.Copy(&after), VQ_OK);
  ASSERT_EQ(after.Remove(first), VQ_OK);
  EXPECT_EQ(Db.UpdateUnreadList(before, after), VQ_OK);
  ASSERT_EQ(Db.GetUnreadList(&after), VQ_OK);
  EXPECT_EQ(after.GetCount(), 0u);
  NewDocument("second");
  ASSERT_EQ(Db.GetUnreadList(&after), VQ_OK);
  EXPECT_EQ(after.GetCount(), 0u) << "what the user saves is read";
  EXPECT_EQ(Unread("Jane"), "2");
  EXPECT_EQ(Db.SetUnreadList(before), VQ_OK);
  ASSERT_EQ(Db.GetUnreadList(&after), VQ_OK);
  EXPECT_EQ(after.GetCount(), 1u);
  EXPECT_EQ(Db.SetUnreadList(VQSlateArray()), VQERR_UNINITIALIZED_ARGUMENT);
}

TEST_F(Searches, WithoutAnOpenDatabaseThereIsAStatus) {
  VQDocumentArray found;
  const VQSlateArray none(Db);
  const std::function<VQSTATUS(VQDatabase&)> operations[] = {
      [&](VQDatabase& db) { return db.FTSearch("apple", &found); },
      [&](VQDatabase& db) { return db.CreateFTIndex(); },
      [&](VQDatabase& db) { return db.UpdateFTIndex(); },
      [&](VQDatabase& db) { return db.DeleteFTIndex(); },
      [&](VQDatabase& db) { return db.Search(VQFormula("SELECT @All"), &found); },
      [&](VQDatabase& db) { return db.GetUnreadList(&found); },
      [&](VQDatabase& db) { return db.GetUnreadList(&found, "Jane"); },
      [&](VQDatabase& db) { return db.SetUnreadList(none); },
      [&](VQDatabase& db) { return db.UpdateUnreadList(none, none); },
  };
  VQDatabase closed = Db;
  ASSERT_EQ(closed.Close(), VQ_OK);
  for (int place = 0; place < 2 * static_cast<int>(std::size(operations)); ++place) {
    const auto& operation = operations[place / 2];
    VQDatabase null;
    VQSetThrowAllErrors(place % 2);
    EXPECT_EQ(ReturnedStatusOf([&] { return operation(null); }), VQERR_OBJECT_NOT_INITIALIZED) << place;
    EXPECT_EQ(ReturnedStatusOf([&] { return operation(closed); }), VQERR_DATABASE_NOT_OPEN) << place;
  }
}

}  // namespace
}  // namespace vqtest
