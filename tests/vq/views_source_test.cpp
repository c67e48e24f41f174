// Where views come from and where their entries do: bound by every key, entries of another database, folders and arrays
// filled from views and navigators.
#include <functional>

#include "engine/database.h"
#include "engine/folder.h"
#include "engine/slate.h"
#include "tests/vq/support/views_fixture.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

struct Step {
  const char* what;
  std::function<VQSTATUS()> operation;
  VQSTATUS status;
};

class ViewSource : public vqtest::ViewsFixture, public ::testing::WithParamInterface<int> {
 protected:
  // All with the throw switch as the test has it.
  static void Run(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      VQSetThrowAllErrors(GetParam());
      const VQSTATUS status = StatusOf(step.operation);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(status, step.status) << step.what;
    }
  }

  VQViewFolder SubjectView(const char* name) {
    VQViewFolder view;
    EXPECT_EQ(Db.CreateView(name, nullptr, &view), VQ_OK);
    EXPECT_EQ(view.AppendColumns(1), VQ_OK);
    EXPECT_EQ(view[view.GetColumnCount() - 1].SetFieldName("Subject"), VQ_OK);
    EXPECT_EQ(view.Save(), VQ_OK);
    EXPECT_EQ(view.Close(), VQ_OK);
    return view;
  }

  VQViewFolder NewFolder(const char* name) {
    VQViewFolder folder;
    EXPECT_EQ(Db.CreateFolder(name, VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
    EXPECT_EQ(folder.Save(), VQ_OK);
    EXPECT_EQ(folder.Open(), VQ_OK);
    return folder;
  }
};

INSTANTIATE_TEST_SUITE_P(Switch, ViewSource, ::testing::Values(0, 1));

TEST_P(ViewSource, ViewsAreBoundByEveryKey) {
  const VQViewFolder made = SubjectView("V");
  const VQDocument document = NewDocument("d");
  const UNIVERSALSLATEID universal = *made.GetUniversalID();
  const UNIVERSALSLATEID of_document = *document.GetUniversalID();
  ENGHANDLE handle = 0;
  const auto id = static_cast<std::uint32_t>(made.GetSlateID());
  ASSERT_EQ(EngSlateOpen(Db.GetDatabaseBody()->GetHandle(), id, 0, &handle), ENG_OK);
  VQViewFolder view;
  VQSlate plain;
  const auto name = [](const VQViewFolder& of) { return TextOf(of.GetName()) == "V" ? VQ_OK : VQERR_NOT_FOUND; };
  Run({
      {"universal", [&] { return Db.GetViewFolder(&universal, &view); }, VQ_OK},
      {"no target", [&] { return Db.GetViewFolder(&universal, nullptr); }, VQERR_NULL_POINTER},
      {"of a document", [&] { return Db.GetViewFolder(&of_document, &view); }, VQERR_INCORRECT_SLATE_TYPE},
      {"number of a document", [&] { return Db.GetViewFolder(document.GetSlateID(), &view); },
       VQERR_INCORRECT_SLATE_TYPE},
      {"no handle", [&] { return Db.GetViewFolder(static_cast<void*>(nullptr), &view); }, VQERR_INVALID_PARAMETER},
      {"handle", [&] { return Db.GetViewFolder(vq::FromHandle(handle), &view); }, VQ_OK},
      {"not read yet", [&] { return name(view); }, VQERR_VIEW_NOT_OPEN},
      {"its design", [&] { return view.Open(VQVFOPENFLAGS_DESIGN_ONLY); }, VQ_OK},
      {"its entries", [&] { return view.Open(); }, VQ_OK},
      {"again", [&] { return view.Open(); }, VQWARN_ALREADY_OPEN},
      {"closed", [&] { return view.Close(); }, VQ_OK},
      {"a slate", [&] { return Db.GetSlate(made.GetSlateID(), &plain); }, VQ_OK},
      {"bound from it", [&] { return VQViewFolder(plain).Open(); }, VQ_OK},
      {"the slate opened", [&] { return plain.Open(); }, VQ_OK},
      {"shared, not read", [&] { return name(VQViewFolder(plain)); }, VQERR_VIEW_NOT_OPEN},
      {"read", [&] { return VQViewFolder(plain).Open(); }, VQ_OK},
      {"by its body", [&] { return name(VQViewFolder(static_cast<VQViewFolderBody*>(plain.GetSlateBody()))); }, VQ_OK},
      {"assigned", [&] { return view = plain, name(view); }, VQ_OK},
      {"a document", [&] { return view = static_cast<const VQSlate&>(document), VQ_OK; }, VQERR_INCORRECT_SLATE_TYPE},
      {"still the view", [&] { return name(view); }, VQ_OK},
      {"deleted", [&] { return Db.DeleteViewFolder(&view); }, VQ_OK},
      {"gone", [&] { return Db.GetViewFolder("V", &view); }, VQERR_NOT_FOUND},
  });
}

TEST_P(ViewSource, EntriesCanBeThoseOfAnotherDatabase) {
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  NewDocument("here");
  for (const char* subject : {"there", "there too"}) {
    VQDocument document;
    ASSERT_EQ(other.CreateDocument(&document), VQ_OK);
    SetText(document, "Subject", subject);
    ASSERT_EQ(document.Save(), VQ_OK);
  }
  VQViewFolder view = SubjectView("V");
  const VQString path = other.GetFilepath();
  VQVFNavigator rows;
  VQVFEntry entry;
  const auto count = [&](unsigned long rows_expected) {
    return [&view, rows_expected] { return view.GetEntryCount() == rows_expected ? VQ_OK : VQERR_NOT_FOUND; };
  };
  Run({
      {"the design alone", [&] { return view.Open(VQVFOPENFLAGS_DESIGN_ONLY, path, ""); }, VQERR_INVALID_PARAMETER},
      {"no path", [&] { return view.Open(0, "", ""); }, VQERR_INVALID_DATABASE_PATH},
      {"no file", [&] { return view.Open(0, "nowhere", ""); }, ENG_ERR_DB_NOT_FOUND},
      {"told again", [&] { return view.GetName(), VQ_OK; }, ENG_ERR_DB_NOT_FOUND},
      {"by path", [&] { return view.Open(0, path, ""); }, VQ_OK},
      {"its rows", count(2), VQ_OK},
      {"of another", [&] { return VQSlateArray(Db).Add(view); }, VQERR_DIFFERENT_DATABASE},
      {"a navigator", [&] { return view.GetEntries(&rows); }, VQ_OK},
      {"closed", [&] { return view.Close(); }, VQ_OK},
      {"and its navigator", [&] { return rows.Goto(VQNAVIGATE_FIRST, &entry); }, VQERR_NO_COLLECTION},
      {"in an open one", [&] { return view.Open(0, other); }, VQ_OK},
      {"its rows", count(2), VQ_OK},
      {"a navigator", [&] { return view.GetEntries(&rows); }, VQ_OK},
      {"closed under it", [&] { return other.Close(); }, VQ_OK},
      {"rows", [&] { return view.Goto(VQNAVIGATE_FIRST, &entry); }, VQERR_DATABASE_NOT_OPEN},
      {"count", count(2), VQERR_DATABASE_NOT_OPEN},
      {"more", [&] { return view.GetEntries(&rows); }, VQERR_DATABASE_NOT_OPEN},
      {"the navigator's", [&] { return rows.Refresh(); }, VQERR_DATABASE_NOT_OPEN},
      {"documents", [&] { return VQSlateArray(view), VQ_OK; }, VQERR_DATABASE_NOT_OPEN},
      {"the design", [&] { return view.SetComment("x"), view.Save(); }, VQ_OK},
      {"closed", [&] { return view.Close(); }, VQ_OK},
      {"opened along", [&] { return view.Open(0, other); }, VQ_OK},
      {"its rows", count(2), VQ_OK},
      {"and closed along", [&] { return view.Close() == VQ_OK && other.IsOpen() == 0 ? VQ_OK : VQERR_NOT_FOUND; },
       VQ_OK},
      {"its own", [&] { return view.Open(); }, VQ_OK},
      {"its rows", count(1), VQ_OK},
  });
}

TEST_P(ViewSource, FoldersAndArraysTakeWhatASourceShows) {
  for (int i = 0; i < 3; ++i) NewDocument("d");
  VQViewFolder first = NewFolder("First");
  VQViewFolder second = NewFolder("Second");
  VQViewFolder view = SubjectView("V");
  const VQViewFolder closed(Db.GetDatabaseBody(), view.GetSlateID());
  ASSERT_EQ(view.Open(), VQ_OK);
  VQVFNavigator rows;
  ASSERT_EQ(view.GetEntries(&rows), VQ_OK);
  const VQVFNavigator none;
  VQSlateArray array(Db);
  VQSlateArray missing;
  const unsigned long one = VQSlateArray(view).GetSlateID(1);
  const auto holds = [](VQViewFolder& folder, unsigned long count) {
    return [&folder, count] {
      if (VQSTATUS status = folder.Refresh()) return status;
      return folder.GetEntryCount() == count ? VQ_OK : VQERR_NOT_FOUND;
    };
  };
  Run({
      {"closed source", [&] { return first.FolderAddDocuments(closed); }, VQERR_VIEW_NOT_OPEN},
      {"null view", [&] { return first.FolderRemoveDocuments(VQViewFolder()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"null navigator", [&] { return first.FolderAddDocuments(none); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"empty folder", [&] { return first.FolderAddDocuments(second); }, VQERR_EMPTY_ARRAY},
      {"not in it either", [&] { return first.FolderRemoveDocuments(second); }, VQERR_EMPTY_ARRAY},
      {"a view's number", [&] { return first.FolderAddDocument(view.GetSlateID()); }, ENG_ERR_NOT_DOCUMENT},
      {"nobody's number", [&] { return first.FolderAddDocument(0x7000UL); }, ENG_ERR_NO_SLATE},
      {"number 0", [&] { return first.FolderRemoveDocument(0UL); }, VQERR_INVALID_PARAMETER},
      {"navigator", [&] { return first.FolderAddDocuments(rows); }, VQ_OK},
      {"all three", holds(first, 3), VQ_OK},
      {"its own", [&] { return first.FolderAddDocuments(first); }, VQ_OK},
      {"one out", [&] { return first.FolderRemoveDocument(one); }, VQ_OK},
      {"two", holds(first, 2), VQ_OK},
      {"folder", [&] { return second.FolderAddDocuments(first); }, VQ_OK},
      {"two there", holds(second, 2), VQ_OK},
      {"array of the folder", [&] { return array.Add(second); }, VQ_OK},
      {"array out", [&] { return first.FolderRemoveDocuments(array); }, VQ_OK},
      {"none", holds(first, 0), VQ_OK},
      {"array out again", [&] { return first.FolderRemoveDocuments(array); }, VQ_OK},
      {"table", [&] { return first.FolderAddDocuments(vq::FromHandle(array.GetIDTable())); }, VQ_OK},
      {"table out", [&] { return first.FolderRemoveDocuments(vq::FromHandle(array.GetIDTable())); }, VQ_OK},
      {"itself out", [&] { return second.FolderRemoveDocuments(second); }, VQ_OK},
      {"none", holds(second, 0), VQ_OK},
      {"navigator out", [&] { return second.FolderRemoveDocuments(rows); }, VQ_OK},
      {"view out", [&] { return view.FolderRemoveAllDocuments(); }, VQERR_FOLDER_ONLY},
      {"view into the array", [&] { return array.Add(view); }, VQ_OK},
      {"all", [&] { return array.GetCount() == 3 ? VQ_OK : VQERR_NOT_FOUND; }, VQ_OK},
      {"view out of it", [&] { return array.Remove(view); }, VQ_OK},
      {"navigator into it", [&] { return array.Add(rows); }, VQ_OK},
      {"emptied", [&] { return array.RemoveAll(); }, VQ_OK},
      {"empty", [&] { return array.GetSlateID(0), VQ_OK; }, VQERR_BAD_SUBSCRIPT},
      {"null into it", [&] { return array.Add(VQViewFolder()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"closed into it", [&] { return array.Add(closed); }, VQERR_VIEW_NOT_OPEN},
      {"empty into it", [&] { return array.Add(first); }, VQERR_EMPTY_ARRAY},
      {"into none", [&] { return missing.Add(view); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"out of none", [&] { return missing.Remove(rows); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"emptied none", [&] { return missing.RemoveAll(); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"of closed", [&] { return VQSlateArray(closed), VQ_OK; }, VQERR_VIEW_NOT_OPEN},
      {"of none", [&] { return VQSlateArray(none), VQ_OK; }, VQERR_UNINITIALIZED_ARGUMENT},
  });
}

}  // namespace
