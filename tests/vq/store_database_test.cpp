// Databases: opening, properties, lists, special slates, design elements, transactions.
#include <fstream>
#include <functional>

#include "engine/engine.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/store/dbarray.h"
#include "vq/store/desflags.h"
#include "vq/store/storetext.h"
#include "vq/values/vqdtime.h"

namespace {

using vqtest::StatusOf;
using vqtest::TextOf;

class Databases : public vqtest::StoreFixture {
 protected:
  VQSlate NewDesign(unsigned long type, const std::string& title) {
    VQSlate slate;
    EXPECT_EQ(Db.CreateSlate(type, &slate), VQ_OK);
    SetText(slate, "$TITLE", title);
    EXPECT_EQ(slate.Save(), VQ_OK);
    return slate;
  }
};

TEST_F(Databases, OpenAndCloseAlternate) {
  EXPECT_EQ(Db.Open(), VQWARN_ALREADY_OPEN);
  EXPECT_EQ(Db.Close(), VQ_OK);
  EXPECT_EQ(Db.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(Db.Open(0x40000), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([&] { return Db.GetTitle(); }), VQERR_DATABASE_NOT_OPEN);
  EXPECT_EQ(Db.SetTitle("x"), VQERR_DATABASE_NOT_OPEN);
  EXPECT_EQ(TextOf(Db.GetFilename()).substr(0, 4), "main");
  EXPECT_EQ(Session->SetDatabaseOpenFlags(0x500), VQ_OK);  // one bit of the mask is enough, others pass
  EXPECT_EQ(Db.Open(VQDBOPENFLAGS_OF_SESSION), VQ_OK);
  EXPECT_EQ(Db.GetDatabaseOpenFlags(), 0x500u);
  VQDatabase nothing;
  EXPECT_FALSE(nothing.IsOpen());
  EXPECT_EQ(nothing.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(nothing.Open(), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { return nothing.IsRemote(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_F(Databases, HandlesOutliveTheSessionClosed) {
  const VQDocument document = NewDocument("x");
  EXPECT_EQ(Session->Term(1), VQWARN_LEAKED);
  EXPECT_FALSE(Db.IsOpen());
  EXPECT_EQ(Db.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(Db.Open(), VQERR_NOT_INITIALIZED);
  EXPECT_EQ(VQDocument(document).Save(), VQERR_SLATE_NOT_OPEN);
  Session.reset();
  EXPECT_EQ(Db.Open(0), VQERR_NOT_INITIALIZED);
  VQQuillonSession another;
  ASSERT_EQ(another.Init(), VQ_OK);
  EXPECT_EQ(Db.Open(), VQERR_NOT_INITIALIZED);  // its own session is gone
}

TEST_F(Databases, BadFilesAreRefusedAtOpen) {
  std::filesystem::create_directory(Home.Path("folder"));
  std::ofstream(Home.Path("text.vlt")) << "this is no store at all, only a line of text";
  VQDatabase database;
  ASSERT_EQ(Session->GetDatabase("folder", &database), VQ_OK);
  EXPECT_EQ(database.Open(), VQERR_PATH_IS_DIRECTORY);
  ASSERT_EQ(Session->GetDatabase("text", &database), VQ_OK);
  EXPECT_EQ(vq::EngineError(database.Open()), unsigned{ENG_ERR_DB_NOT_STORE});
  EXPECT_FALSE(database.IsOpen());
  EXPECT_EQ(Session->GetDatabase("", &database), VQERR_INVALID_DATABASE_PATH);
  EXPECT_EQ(Session->GetDatabase("main", nullptr), VQERR_NULL_POINTER);
  EXPECT_EQ(Session->CreateDatabase("main", &database, VQCreateDatabaseOptions()), VQERR_DATABASE_EXISTS);
}

TEST_F(Databases, TheEnginesHandleCanBeTakenAndGiven) {
  VQDocument document = NewDocument("x");
  void* handle = Db.GetDatabaseHandle(0);
  EXPECT_TRUE(Db.IsNull());
  EXPECT_FALSE(document.IsOpen());
  ASSERT_EQ(Session->GetDatabase(handle, &Db), VQ_OK);
  EXPECT_TRUE(Db.IsOpen());
  EXPECT_EQ(TextOf(Db.GetFilename()), "main.vlt");
  EXPECT_EQ(Session->GetDatabase(static_cast<void*>(nullptr), &Db), VQERR_INVALID_PARAMETER);
}

struct FlagRow {
  const char* what;
  int (VQDatabase::*get)() const;
  VQSTATUS (VQDatabase::*set)(int);
  unsigned mask;
  bool inverted;
};

TEST_F(Databases, ReplicationPropertiesAreBitsOfTheRecord) {
  const FlagRow rows[] = {
      {"disable", &VQDatabase::GetDisableReplication, &VQDatabase::SetDisableReplication, 0x0004, false},
      {"hide", &VQDatabase::GetHideDesign, &VQDatabase::SetHideDesign, 0x0020, false},
      {"list", &VQDatabase::GetListInDatabaseCatalog, &VQDatabase::SetListInDatabaseCatalog, 0x0040, true},
      {"old", &VQDatabase::GetRemoveOldDocuments, &VQDatabase::SetRemoveOldDocuments, 0x0080, false},
      {"never", &VQDatabase::GetNeverReplicate, &VQDatabase::SetNeverReplicate, 0x0100, false},
      {"dialog", &VQDatabase::GetShowInOpenDatabaseDialog, &VQDatabase::SetShowInOpenDatabaseDialog, 0x0400, true},
      {"send", &VQDatabase::GetReplicateSendDeletions, &VQDatabase::SetReplicateSendDeletions, 0x1000, true},
  };
  const ENGHANDLE handle = vq::ToHandle(Db.GetDatabaseHandle());
  ASSERT_EQ(Db.SetReplicationPriority(VQREPLICATIONPRIORITY_LOW), VQ_OK);
  for (const FlagRow& row : rows) {
    for (const int flag : {1, 0}) {
      ASSERT_EQ((Db.*row.set)(flag), VQ_OK) << row.what;
      REPLICAINFO info{};
      ASSERT_EQ(EngDbGetReplicaInfo(handle, &info), ENG_OK);
      EXPECT_EQ((info.Flags & row.mask) != 0, (flag != 0) != row.inverted) << row.what;
      EXPECT_EQ((Db.*row.get)(), flag) << row.what;
    }
  }
  EXPECT_EQ(Db.GetReplicationPriority(), VQREPLICATIONPRIORITY_LOW);
  EXPECT_EQ(Db.SetRemoveOldDocumentsDays(65536), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(Db.SetRemoveOldDocumentsDays(90), VQ_OK);
  EXPECT_EQ(Db.GetRemoveOldDocumentsDays(), 90U);
}

TEST_F(Databases, InfoTextsLiveSideBySideAndInTheIcon) {
  ASSERT_EQ(Db.SetTitle("A title"), VQ_OK);
  ASSERT_EQ(Db.SetTemplateName("Mine"), VQ_OK);
  VQText categories;
  categories << VQString("one") << VQString("two");
  ASSERT_EQ(Db.SetDatabaseCatalogCategories(categories), VQ_OK);
  EXPECT_EQ(Db.GetDatabaseCatalogCategories().GetCount(), 2U);
  EXPECT_FALSE(Db.GetReplicateSendTitleAndCatalogInfo());
  VQSlate icon;
  EXPECT_EQ(Db.GetIcon(&icon), VQWARN_NOT_FOUND);
  ASSERT_EQ(Db.CreateIcon(&icon), VQ_OK);
  ASSERT_EQ(icon.Save(), VQ_OK);
  ASSERT_EQ(icon.Close(), VQ_OK);
  ASSERT_EQ(Db.SetReplicateSendTitleAndCatalogInfo(1), VQ_OK);
  ASSERT_EQ(Db.SetTitle("Another"), VQ_OK);
  ASSERT_EQ(icon.Open(), VQ_OK);
  EXPECT_EQ(TextAt(icon, "$TITLE").substr(0, 7), "Another");
  ASSERT_EQ(Db.SetReplicateSendTitleAndCatalogInfo(0), VQ_OK);
  EXPECT_FALSE(Db.GetReplicateSendTitleAndCatalogInfo());
  ASSERT_EQ(Db.Close(), VQ_OK);
  ASSERT_EQ(Db.Open(), VQ_OK);
  EXPECT_EQ(TextOf(Db.GetTitle()), "Another");
  EXPECT_EQ(TextOf(Db.GetTemplateName()), "Mine");
}

TEST_F(Databases, ListsClassesAndWhatChangedSince) {
  VQDocument first = NewDocument("first");
  NewDesign(VQSLATECLASS_FORM, "A form");
  VQSlateArray all;
  ASSERT_EQ(Db.GetSlates(&all), VQ_OK);
  EXPECT_EQ(all.GetCount(), 2U);
  VQDocumentArray documents;
  ASSERT_EQ(Db.GetDocuments(&documents), VQ_OK);
  ASSERT_EQ(documents.GetCount(), 1U);
  EXPECT_EQ(documents[0].GetSlateID(), first.GetSlateID());
  VQDatetime until;
  ASSERT_EQ(Db.GetModifiedSlates(VQDatetime(VQDATETIMESPECIAL_MINIMUM), &all, VQSLATECLASS_DOCUMENT, &until), VQ_OK);
  EXPECT_EQ(all.GetCount(), 1U);
  VQDocument second = NewDocument("second");
  const unsigned long id = first.GetSlateID();
  ASSERT_EQ(Db.DeleteSlate(&first), VQ_OK);
  ASSERT_EQ(Db.GetModifiedSlates(until, &all, VQSLATECLASS_DOCUMENT, nullptr), VQ_OK);
  EXPECT_TRUE(all.Contains(second));
  EXPECT_TRUE(all.Contains(id | 0x80000000UL));
  EXPECT_EQ(Db.GetModifiedSlates(VQDatetime(), &all, VQSLATECLASS_DOCUMENT, nullptr), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(Db.GetSlate(0x100000000UL | second.GetSlateID(), &second), VQERR_INVALID_PARAMETER);
}

TEST_F(Databases, FindsDesignElementsByKindAndAnyOfTheirNames) {
  NewDesign(VQSLATECLASS_FORM | VQDESIGNKIND_SUBFORM << 16, "Order");
  const VQSlate form = NewDesign(VQSLATECLASS_FORM, "Order|ord");
  EXPECT_TRUE(Db.FormExists("Order"));
  EXPECT_TRUE(Db.FormExists("ord;ignored"));
  EXPECT_FALSE(Db.FormExists("order"));
  EXPECT_TRUE(Db.SubformExists("Order"));
  EXPECT_FALSE(Db.SubformExists("ord"));
  EXPECT_FALSE(Db.ViewFolderExists("Order"));
  VQSlate found;
  ASSERT_EQ(Db.GetDesignSlate(VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16, "ord", &found), VQ_OK);
  EXPECT_EQ(found.GetSlateID(), form.GetSlateID());
  EXPECT_EQ(found.GetSlateType(), VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16);
  VQDocument document;
  EXPECT_EQ(Db.GetDesignSlate(VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16, "ord", &document),
            VQERR_INCORRECT_SLATE_TYPE);
  EXPECT_TRUE(document.IsNull());
  const std::string longest(64, 'n');
  EXPECT_EQ(StatusOf([&] { return Db.FormExists(VQString(longest.c_str())); }), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return Db.FormExists(VQString((longest + "n").c_str())); }), VQERR_SLATE_NAME_TOO_LONG);
  EXPECT_EQ(StatusOf([&] { return Db.FormExists("|x"); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(TextOf(form.GetName()), "Order");
  EXPECT_EQ(TextOf(form.GetAlias()), "ord");
  EXPECT_EQ(Db.CreateSlate(VQSLATECLASS_DOCUMENT | 3UL << 16, &found), VQERR_INVALID_PARAMETER);
}

TEST_F(Databases, SpecialSlatesReplaceTheOnesBefore) {
  VQDocument about;
  EXPECT_EQ(Db.GetAboutDatabaseDocument(&about), VQWARN_NOT_FOUND);
  ASSERT_EQ(Db.CreateAboutDatabaseDocument(&about), VQ_OK);
  ASSERT_EQ(about.Save(), VQ_OK);
  const unsigned long first = about.GetSlateID();
  VQDocument source = NewDocument("read me");
  ASSERT_EQ(Db.CreateAboutDatabaseDocument(source, &about), VQ_OK);
  ASSERT_EQ(Db.GetAboutDatabaseDocument(&about), VQ_OK);
  EXPECT_NE(about.GetSlateID(), first);
  ASSERT_EQ(about.Open(), VQ_OK);
  EXPECT_EQ(TextAt(about, "Subject"), "read me");
}

TEST_F(Databases, ATransactionIsOneChange) {
  ASSERT_EQ(Db.BeginTransaction(), VQ_OK);
  EXPECT_EQ(vq::EngineError(Db.BeginTransaction()), unsigned{ENG_ERR_DB_TRANSACTION});
  { VQDocument dropped = NewDocument("dropped"); }
  ASSERT_EQ(Db.RollbackTransaction(), VQ_OK);
  ASSERT_EQ(Db.BeginTransaction(), VQ_OK);
  { VQDocument kept = NewDocument("kept"); }
  ASSERT_EQ(Db.CommitTransaction(), VQ_OK);
  EXPECT_EQ(vq::EngineError(Db.CommitTransaction()), unsigned{ENG_ERR_DB_TRANSACTION});
  VQDocumentArray documents;
  ASSERT_EQ(Db.GetDocuments(&documents), VQ_OK);
  ASSERT_EQ(documents.GetCount(), 1U);
  VQDocument only = documents[0];
  ASSERT_EQ(only.Open(), VQ_OK);
  EXPECT_EQ(TextAt(only, "Subject"), "kept");
}

TEST_F(Databases, DirectoriesAreSearched) {
  std::filesystem::create_directory(Home.Path("below"));
  VQDatabase deep;
  ASSERT_EQ(Session->CreateDatabase("below/deep", &deep, VQCreateDatabaseOptions()), VQ_OK);
  VQDatabaseArray found;
  ASSERT_EQ(Session->GetDatabases(&found, "", "", 0), VQ_OK);
  EXPECT_EQ(found.GetCount(), 1U);
  ASSERT_EQ(Session->GetDatabases(&found, "", "", 4), VQ_OK);
  EXPECT_EQ(found.GetCount(), 2U);
  EXPECT_EQ(StatusOf([&] { return found[2]; }), VQERR_BAD_SUBSCRIPT);
  const TIMEDATE replica = deep.GetReplicaID();
  VQDatabase same;
  ASSERT_EQ(Session->GetDatabase(replica, &same), VQ_OK);
  EXPECT_EQ(TextOf(same.GetFilename()), "deep.vlt");
  EXPECT_EQ(Session->GetDatabase(TIMEDATE{1, 2}, &same), VQWARN_NOT_FOUND);
  ASSERT_EQ(deep.Close(), VQ_OK);
  ASSERT_EQ(Session->DeleteDatabase(&deep), VQ_OK);
  EXPECT_TRUE(deep.IsNull());
  EXPECT_FALSE(std::filesystem::exists(Home.Path("below/deep.vlt")));
}

TEST_F(Databases, ResponsesFormATree) {
  VQDocument top = NewDocument("top");
  VQDocument child = NewDocument("child");
  VQDocument grandchild = NewDocument("grandchild");
  VQDocument none;
  EXPECT_EQ(child.GetParentDocument(&none), VQWARN_NOT_FOUND);
  ASSERT_EQ(child.MakeResponse(top), VQ_OK);
  ASSERT_EQ(child.Save(), VQ_OK);
  ASSERT_EQ(grandchild.MakeResponse(child), VQ_OK);
  ASSERT_EQ(grandchild.Save(), VQ_OK);
  EXPECT_TRUE(child.IsResponse());
  ASSERT_EQ(grandchild.GetParentDocument(&none), VQ_OK);
  EXPECT_EQ(none.GetSlateID(), child.GetSlateID());
  VQDocumentArray responses;
  ASSERT_EQ(top.GetResponses(&responses), VQ_OK);
  ASSERT_EQ(responses.GetCount(), 1U);
  EXPECT_EQ(responses.GetSlateID(0), child.GetSlateID());
  // A circle must not hold the walk.
  ASSERT_EQ(top.MakeResponse(grandchild), VQ_OK);
  ASSERT_EQ(top.Save(), VQ_OK);
  ASSERT_EQ(top.GetAllResponses(&responses), VQ_OK);
  EXPECT_EQ(responses.GetCount(), 2U);
  EXPECT_FALSE(responses.Contains(top));
  grandchild.Close();
  EXPECT_EQ(child.MakeResponse(grandchild), VQERR_RESPONSE_DATABASE);
}

TEST_F(Databases, FormNames) {
  VQDocument document = NewDocument("x");
  VQString name("before");
  ASSERT_EQ(document.GetFormSlate(&name), VQ_OK);
  EXPECT_TRUE(name.IsNull());
  EXPECT_EQ(document.SetFormSlate(VQString()), VQERR_NULL_STRING);
  EXPECT_EQ(document.SetFormSlate(VQText()), VQERR_NULL_POINTER);
  ASSERT_EQ(document.SetFormSlate(VQString("Memo")), VQ_OK);
  ASSERT_EQ(document.GetFormSlate(&name), VQ_OK);
  EXPECT_EQ(TextOf(name), "Memo");
  EXPECT_EQ(document.GetCategories().GetCount(), 0U);
}

// With the switch off no argument makes an operation with a status throw.
TEST_F(Databases, ATextOfAClosedSlateIsAStatus) {
  VQDocument document = NewDocument("x");
  VQDocument other = NewDocument("gone");
  VQText gone;
  ASSERT_EQ(other.GetItem("Subject", &gone), VQ_OK);
  ASSERT_EQ(other.Close(), VQ_OK);
  VQText deleted;
  SetText(document, "Short", "s");
  ASSERT_EQ(document.GetItem("Short", &deleted), VQ_OK);
  ASSERT_EQ(document.DeleteItem("Short"), VQ_OK);
  const std::pair<const char*, std::function<VQSTATUS()>> rows[] = {
      {"form", [&] { return document.SetFormSlate(gone); }},
      {"categories", [&] { return Db.SetDatabaseCatalogCategories(gone); }},
      {"keys", [&] { return document.Encrypt(gone); }},
      {"keys of a copy", [&] { return Db.CreateEncryptedSlate(document, gone, &other); }},
      {"copy", [&] { return document.CreateItem("Copy", gone); }},
      {"copy of a deleted item", [&] { return document.CreateItem(deleted); }},
  };
  for (const auto& [what, operation] : rows) {
    SCOPED_TRACE(what);
    EXPECT_EQ(vqtest::ReturnedStatusOf(operation), VQERR_ITEM_UNINITIALIZED);
  }
  EXPECT_EQ(document.GetItemCount(), 1U);
}

struct LetterRow {
  const char* read;
  const char* written;
};

TEST(DesignFlags, LettersComeBackInTheirOrder) {
  const LetterRow rows[] = {
      {"", ""},
      {"43nwYVRPdOMQmuutsXqLJIfESBTpoGFcy@i#WxUNHDCA", "ACDHNUxW#i@ycFGopTBSEfIJLqXstumQMOdPRVYnw3456789"},
      {"?F~1", "F?~1"},
      {"56789", ""},
      {"4", "456789"},
      {"\xC3\xA9Q", "Q\xC3\xA9"},
  };
  for (const LetterRow& row : rows) {
    VQDesignFlags flags;
    flags.Parse(row.read);
    EXPECT_EQ(flags.Build(), row.written);
  }
}

}  // namespace
