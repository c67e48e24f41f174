// Two processes on one database: the later save of a document hears of the earlier one, loses nothing, and may insist;
// folders, unread lists and full text see what the other process did.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "tests/home.h"
#include "vq/vq.h"

namespace {

constexpr VQSTATUS kConflict = 551;
constexpr char kOther[] = "QUILLON_TEST_OTHER_PROCESS";  // the document that the other process saves

std::string First(const VQSlate& slate, const char* name) {
  VQText text;
  EXPECT_EQ(slate.GetItem(name, &text), VQ_OK);
  const VQString first = text[0];
  return {reinterpret_cast<const char*>(first.GetBuf()), first.GetBufLength()};
}

// What the other process does: this program, started anew.
TEST(OtherProcess, Saves) {
  const char* id = ::getenv(kOther);
  if (id == nullptr) GTEST_SKIP() << "runs within TwoProcesses";
  VQQuillonSession session;
  VQDatabase database;
  VQDocument document;
  VQText subject;
  ASSERT_EQ(session.Init(), VQ_OK);
  ASSERT_EQ(session.GetDatabase("day", &database), VQ_OK);
  ASSERT_EQ(database.Open(), VQ_OK);
  ASSERT_EQ(database.GetDocument(std::stoul(id), &document), VQ_OK);
  ASSERT_EQ(document.Open(), VQ_OK);
  ASSERT_EQ(document.GetItem("Subject", &subject), VQ_OK);
  ASSERT_EQ(subject.SetValue("theirs"), VQ_OK);
  ASSERT_EQ(document.CreateItem("Large", TYPE_TEXT, std::string(30000, 'x').data(), 30000), VQ_OK);
  ASSERT_EQ(document.Save(), VQ_OK);
}

TEST(OtherProcess, AddsAndChanges) {
  const char* id = ::getenv(kOther);
  if (id == nullptr) GTEST_SKIP() << "runs within TwoProcesses";
  VQQuillonSession session;
  VQDatabase database;
  VQDocument fresh;
  VQDocument changed;
  VQViewFolder folder;
  ASSERT_EQ(session.Init(), VQ_OK);
  ASSERT_EQ(session.GetDatabase("day", &database), VQ_OK);
  ASSERT_EQ(database.Open(), VQ_OK);
  ASSERT_EQ(database.CreateDocument(&fresh), VQ_OK);
  ASSERT_EQ(fresh.CreateItem("Subject", TYPE_TEXT, "fresh pear", 10), VQ_OK);
  ASSERT_EQ(fresh.Save(), VQ_OK);
  ASSERT_EQ(database.GetDocument(std::stoul(id), &changed), VQ_OK);
  ASSERT_EQ(changed.Open(), VQ_OK);
  ASSERT_EQ(changed.CreateItem("More", TYPE_TEXT, "ripe pear", 9), VQ_OK);
  ASSERT_EQ(changed.Save(), VQ_OK);
  ASSERT_EQ(database.GetViewFolder("Kept", &folder), VQ_OK);
  ASSERT_EQ(folder.Open(), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocument(fresh), VQ_OK);
  ASSERT_EQ(folder.FolderRemoveDocument(changed), VQ_OK);
}

class TwoProcesses : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Session.Init(), VQ_OK);
    ASSERT_EQ(Session.CreateDatabase("day", &Database, VQCreateDatabaseOptions()), VQ_OK);
    ASSERT_EQ(Database.CreateDocument(&Mine), VQ_OK);
    ASSERT_EQ(Mine.CreateItem("Subject", TYPE_TEXT, "old", 3), VQ_OK);
    VQRichText body;
    ASSERT_EQ(Mine.CreateItem("Body", &body), VQ_OK);
    body << VQString("words");
    ASSERT_EQ(Mine.Save(), VQ_OK);
  }
  void TearDown() override {
    Mine = VQDocument();
    Database = VQDatabase();
    EXPECT_EQ(Session.Term(1), VQ_OK);
  }

  void SaveInOtherProcess() const { RunInOtherProcess("Saves"); }
  void RunInOtherProcess(const std::string& test) const {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = kOther + ("=" + std::to_string(Mine.GetSlateID())) + " '" + self +
                                "' --gtest_filter=OtherProcess." + test + " >'" + Home.Path("log") + "' 2>&1";
    ASSERT_EQ(::system(command.c_str()), 0);
  }
  VQDocument Stored() const {
    VQDocument document;
    EXPECT_EQ(Database.GetDocument(Mine.GetSlateID(), &document), VQ_OK);
    EXPECT_EQ(document.Open(), VQ_OK);
    return document;
  }

  // Subjects of the documents of an array.
  static std::string Subjects(const VQSlateArray& slates) {
    std::string all;
    for (unsigned long i = 0; i < slates.GetCount(); ++i) {
      VQSlate slate = slates[i];
      EXPECT_EQ(slate.Open(), VQ_OK);
      all += First(slate, "Subject") + ";";
    }
    return all;
  }

  ClientHome Home;
  VQQuillonSession Session;
  VQDatabase Database;
  VQDocument Mine;
};

TEST_F(TwoProcesses, TheLaterSaveLosesNothingAndMayInsist) {
  VQText subject;
  VQRichText body;
  ASSERT_EQ(Mine.GetItem("Subject", &subject), VQ_OK);
  ASSERT_EQ(subject.SetValue("mine"), VQ_OK);
  ASSERT_EQ(Mine.GetItem("Body", &body), VQ_OK);
  ASSERT_EQ(body.Append(VQString(" and more")), VQ_OK);
  SaveInOtherProcess();
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(Mine.Save() & 0x3FFF, kConflict);
    EXPECT_EQ(First(Mine, "Subject"), "mine");
    EXPECT_EQ(Mine.HasItem("Large"), 0);
    EXPECT_EQ(First(Stored(), "Subject"), "theirs");
    EXPECT_EQ(Stored().HasItem("Large"), 1);
  }
  EXPECT_EQ(Mine.Save(VQSAVE_FORCE), VQ_OK);
  EXPECT_EQ(First(Stored(), "Subject"), "mine");
  EXPECT_EQ(Stored().HasItem("Large"), 0);
  VQString text;
  ASSERT_EQ(Stored().GetItem("Body", &body), VQ_OK);
  EXPECT_EQ(body.GetText(&text), VQ_OK);
  EXPECT_EQ(VQStringCompare(text, VQString("words and more")), 0) << text.GetPlatformTextPtr();
  SaveInOtherProcess();  // which forgets nothing of what was forced
  EXPECT_EQ(First(Stored(), "Subject"), "theirs");
  EXPECT_EQ(Stored().HasItem("Body"), 1);
  EXPECT_EQ(Database.Check(&text), VQ_OK) << text.GetPlatformTextPtr();
}

TEST_F(TwoProcesses, ListsAndSearchesSeeTheOthersDocuments) {
  VQViewFolder folder;
  VQSlateArray unread;
  VQFTIndexStatistics statistics;
  VQDocumentArray found;
  ASSERT_EQ(Database.CreateFolder("Kept", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  ASSERT_EQ(folder.Open(), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocument(Mine), VQ_OK);
  ASSERT_EQ(Database.CreateFTIndex(), VQ_OK);
  ASSERT_EQ(Database.GetUnreadList(&unread, "Jane"), VQ_OK);
  ASSERT_EQ(Database.SetUnreadList(VQSlateArray(Database), "Jane"), VQ_OK);
  RunInOtherProcess("AddsAndChanges");
  ASSERT_EQ(Database.GetUnreadList(&unread, "Jane"), VQ_OK);
  EXPECT_EQ(Subjects(unread), "old;fresh pear;");
  EXPECT_EQ(Database.FTSearch("pear", &found), VQWARN_NOT_FOUND);
  ASSERT_EQ(Database.UpdateFTIndex(&statistics), VQ_OK);
  EXPECT_EQ(statistics.GetDocumentsAdded(), 1u);
  EXPECT_EQ(statistics.GetDocumentsUpdated(), 1u);
  ASSERT_EQ(Database.FTSearch("fresh", &found), VQ_OK);
  EXPECT_EQ(Subjects(found), "fresh pear;");
  ASSERT_EQ(Database.FTSearch("pear", &found), VQ_OK);
  EXPECT_EQ(found.GetCount(), 2u);
  ASSERT_EQ(folder.Refresh(), VQ_OK);
  EXPECT_EQ(Subjects(VQSlateArray(folder)), "fresh pear;");
}

}  // namespace
