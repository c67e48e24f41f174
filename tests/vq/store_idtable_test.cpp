// ID tables and slate arrays: positions by runs, shared bodies, what may not be added.
#include <functional>

#include "engine/engine.h"
#include "tests/vq/support/store_fixture.h"

namespace {

using vqtest::StatusOf;

class Tables : public vqtest::StoreFixture {};

// Runs of one, of 256 and across gaps, walked in every way that moves the position.
TEST_F(Tables, EveryWalkGivesTheSameIdentifiers) {
  VQSlateArray array(Db);
  std::vector<unsigned long> ids;
  for (unsigned long i = 0; i < 700; ++i) ids.push_back(4 + 4 * i);
  for (unsigned long i = 0; i < 20; ++i) ids.push_back(5000 + 1000 * i);
  for (unsigned long i = 0; i < 5; ++i) ids.push_back(100000 + 4 * i);
  for (const unsigned long id : ids) ASSERT_EQ(array.Add(id), VQ_OK);
  ASSERT_EQ(array.GetCount(), ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) ASSERT_EQ(array.GetSlateID(i), ids[i]) << i;
  for (std::size_t i = ids.size(); i-- > 0;) ASSERT_EQ(array.GetSlateID(i), ids[i]) << i;
  std::size_t at = 0;
  for (int step = 0; step < 5000; ++step) {
    at = (at * 31 + 257) % ids.size();
    ASSERT_EQ(array.GetSlateID(at), ids[at]) << at;
  }
  EXPECT_EQ(StatusOf([&] { static_cast<void>(array.GetSlateID(ids.size())); }), VQERR_BAD_SUBSCRIPT);
  EXPECT_EQ(array.GetSlateID(ids.size() - 1), ids.back());
  ASSERT_EQ(array.Remove(ids[3]), VQ_OK);
  EXPECT_EQ(array.GetSlateID(3), ids[4]);
}

// More runs than the form of runs has room for. Steps back that began at the front each time would not end.
TEST_F(Tables, ATableOfManyRunsIsWalkedBothWays) {
  constexpr unsigned long kCount = 66000;
  const auto id = [](unsigned long index) { return 8 + 8 * index + (index >= 5000 ? 4 : 0); };
  VQSlateArray array(Db);
  for (unsigned long i = 0; i < kCount; ++i) ASSERT_EQ(array.Add(id(i)), VQ_OK);
  IDTABLEHEADER header{};
  void* cursor = EngMemLock(array.GetIDTable());
  EXPECT_EQ(EngOdsRead(&cursor, ODS_IDTABLEHEADER, &header, 1), ENG_OK);
  EXPECT_EQ(EngMemUnlock(array.GetIDTable()), ENG_OK);
  ASSERT_EQ(header.Flags & 0x8000, 0x8000);
  unsigned long wrong = 0;
  for (unsigned long i = 0; i < kCount; ++i) wrong += array.GetSlateID(i) != id(i);
  for (unsigned long i = kCount; i-- > 0;) wrong += array.GetSlateID(i) != id(i);
  for (unsigned long i = 0, at = 0; i < 2000; ++i, at = (at * 31 + 2570) % kCount) {
    wrong += array.GetSlateID(at) != id(at);
  }
  EXPECT_EQ(wrong, 0U);
  ASSERT_EQ(array.Remove(id(3)), VQ_OK);
  EXPECT_EQ(array.GetSlateID(kCount - 2), id(kCount - 1));
  EXPECT_EQ(array.GetSlateID(3), id(4));
}

struct AddRow {
  const char* what;
  VQSTATUS (*operation)(VQSlateArray& array, VQDatabase& database);
  VQSTATUS status;
};

TEST_F(Tables, RefusalsLeaveTheSetAlone) {
  const AddRow rows[] = {
      {"empty handle", [](VQSlateArray& a, VQDatabase&) { return a.Add(VQSlate()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"unsaved slate",
       [](VQSlateArray& a, VQDatabase& db) {
         VQDocument fresh;
         db.CreateDocument(&fresh);
         return a.Add(fresh);
       },
       VQERR_SLATE_NOT_SAVED},
      {"slate closed before it was saved",
       [](VQSlateArray& a, VQDatabase& db) {
         VQDocument fresh;
         db.CreateDocument(&fresh);
         fresh.Close();
         return a.Add(fresh);
       },
       VQERR_SLATE_NOT_SAVED},
      {"no identifier", [](VQSlateArray& a, VQDatabase&) { return a.Add(0UL); }, VQERR_INVALID_PARAMETER},
      {"array that is none", [](VQSlateArray& a, VQDatabase&) { return a.Add(VQSlateArray()); },
       VQERR_UNINITIALIZED_ARGUMENT},
      {"empty array", [](VQSlateArray& a, VQDatabase& db) { return a.Add(VQSlateArray(db)); }, VQERR_EMPTY_ARRAY},
      {"no table", [](VQSlateArray& a, VQDatabase&) { return a.Add(static_cast<void*>(nullptr)); },
       VQERR_INVALID_PARAMETER},
  };
  VQSlateArray array(Db);
  ASSERT_EQ(array.Add(8UL), VQ_OK);
  for (const AddRow& row : rows) {
    EXPECT_EQ(row.operation(array, Db), row.status) << row.what;
    EXPECT_EQ(array.GetCount(), 1U) << row.what;
    VQSlateArray none;
    EXPECT_EQ(row.operation(none, Db), VQERR_OBJECT_NOT_INITIALIZED) << row.what;
  }
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  VQSlateArray foreign(other);
  ASSERT_EQ(foreign.Add(8UL), VQ_OK);
  EXPECT_EQ(array.Add(foreign), VQERR_DIFFERENT_DATABASE);
  VQSlate stranger;
  ASSERT_EQ(other.CreateSlate(VQSLATECLASS_DOCUMENT, &stranger), VQ_OK);
  ASSERT_EQ(stranger.Save(), VQ_OK);
  ASSERT_EQ(array.Add(stranger.GetSlateID()), VQ_OK);
  EXPECT_EQ(array.Remove(stranger), VQERR_DIFFERENT_DATABASE);
  EXPECT_EQ(array.Contains(stranger.GetSlateID()), 1);
  EXPECT_EQ(Db.DeleteSlates(foreign), VQERR_DIFFERENT_DATABASE);
  EXPECT_EQ(Db.DeleteSlates(VQSlateArray(Db)), VQERR_EMPTY_ARRAY);
}

TEST_F(Tables, HandlesOfOneSlateShareItsOpenBody) {
  NewDocument("only");
  VQDocumentArray documents;
  ASSERT_EQ(Db.GetDocuments(&documents), VQ_OK);
  VQDocument first;
  VQDocument second;
  ASSERT_EQ(documents.GetSlate(0, &first), VQ_OK);
  ASSERT_EQ(first.Open(), VQ_OK);
  ASSERT_EQ(documents.GetSlate(0, &second), VQ_OK);
  EXPECT_TRUE(second.IsOpen());
  SetText(second, "Subject", "seen by both");
  EXPECT_EQ(TextAt(first, "Subject"), "seen by both");
  ASSERT_EQ(first.Close(), VQ_OK);
  EXPECT_FALSE(second.IsOpen());
  ASSERT_EQ(documents.GetSlate(0, &first), VQ_OK);
  EXPECT_FALSE(first.IsOpen());
}

// The array keeps no slate open that nobody else holds.
TEST_F(Tables, TheLastHandleClosesItsSlate) {
  NewDocument("only");
  VQDocumentArray documents;
  ASSERT_EQ(Db.GetDocuments(&documents), VQ_OK);
  const vqtest::Live before = vqtest::Live::Now();
  {
    VQDocument document = documents[0];
    ASSERT_EQ(document.Open(), VQ_OK);
  }
  EXPECT_EQ(vqtest::Live::Now().Handles, before.Handles);
}

TEST_F(Tables, AHandleThatTakesAnotherSlateLeavesItsArray) {
  NewDocument("mine").Close();
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  VQDocumentArray documents;
  ASSERT_EQ(Db.GetDocuments(&documents), VQ_OK);
  VQDocument document = documents[0];
  ASSERT_EQ(other.CreateDocument(&document), VQ_OK);
  SetText(document, "Subject", "foreign");
  ASSERT_EQ(document.Save(), VQ_OK);
  ASSERT_EQ(document.GetSlateID(), documents.GetSlateID(0));
  document.Close();
  ASSERT_EQ(document.Open(), VQ_OK);
  VQDocument mine = documents[0];
  ASSERT_EQ(mine.Open(), VQ_OK);
  EXPECT_EQ(TextAt(mine, "Subject"), "mine");
}

TEST_F(Tables, AClosedTableSaysSo) {
  ENGHANDLE handle = 0;
  ASSERT_EQ(EngIdTableCreate(4, &handle), ENG_OK);
  VQSlateArray array(Db);
  ASSERT_EQ(array.Add(8UL), VQ_OK);
  const ENGHANDLE other = array.GetIDTable();
  const VQDocument document = NewDocument("d");
  VQIDTable* table = new VQIDTable(handle);
  VQSlateArray hold;
  ASSERT_EQ(hold.Assign(Db.GetDatabaseBody(), table, VQSLATECLASS_DOCUMENT), VQ_OK);
  ASSERT_EQ(table->AddBody(document.GetSlateBody()), VQ_OK);
  EXPECT_EQ(table->FindBody(static_cast<std::uint32_t>(document.GetSlateID())), document.GetSlateBody());
  ASSERT_EQ(table->Close(), VQ_OK);
  EXPECT_EQ(table->Close(), VQWARN_NOT_OPEN);
  const std::function<VQSTATUS()> operations[] = {
      [&] { return table->Add(8); },
      [&] { return table->AddTable(other); },
      [&] { return table->AddBody(nullptr); },
      [&] { return table->Contains(8), VQ_OK; },
      [&] { return table->GetCount(), VQ_OK; },
      [&] { return table->FindBody(8), VQ_OK; },
      [&] { return table->GetID(0), VQ_OK; },
      [&] { return table->GetHandle(), VQ_OK; },
      [&] { return table->Remove(8); },
      [&] { return table->RemoveTable(other); },
      [&] { return table->RemoveAll(); },
      [&] { return table->RemoveBody(document.GetSlateBody()); },
  };
  for (const auto& operation : operations) EXPECT_EQ(StatusOf(operation), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_F(Tables, ACopyIsASetOfItsOwn) {
  VQSlateArray array(Db);
  ASSERT_EQ(array.Add(4UL), VQ_OK);
  VQSlateArray copy;
  ASSERT_EQ(array.Copy(&copy), VQ_OK);
  ASSERT_EQ(copy.Add(8UL), VQ_OK);
  EXPECT_EQ(array.GetCount(), 1U);
  ASSERT_EQ(array.Add(copy), VQ_OK);
  EXPECT_TRUE(array.Contains(8UL));
  ASSERT_EQ(array.Remove(copy), VQ_OK);
  EXPECT_EQ(array.GetCount(), 0U);
  EXPECT_EQ(VQSlateArray().Copy(&copy), VQERR_OBJECT_NOT_INITIALIZED);
}

}  // namespace
