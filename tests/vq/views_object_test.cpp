// Views and folders as objects: opening, names, columns, folders, and how databases make and find them.
#include <functional>

#include "engine/folder.h"
#include "tests/vq/support/views_fixture.h"
#include "vq/richtext/font.h"

namespace {

using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

class ViewObject : public vqtest::ViewsFixture {
 protected:
  // Titles of the columns, each with its secondary sort column.
  static std::string Columns(const VQViewFolder& view) {
    std::string text;
    for (unsigned long i = 0; i < view.GetColumnCount(); ++i) {
      const VQVFColumn column = view[i];
      text += TextOf(column.GetTitle());
      if (column.GetSecondarySortOption() != VQVFSORTOPTION_NONE) {
        text += std::to_string(column.GetSecondarySortColumn());
      }
      EXPECT_EQ(column.GetColumnNumber(), i);
    }
    return text;
  }

  // Columns a, b, c and d.
  VQViewFolder FourColumns() {
    VQViewFolder view = NewView("Four");
    EXPECT_EQ(view.AppendColumns(4), VQ_OK);
    for (unsigned long i = 0; i < 4; ++i) {
      EXPECT_EQ(view[i].SetTitle(Store(std::string(1, static_cast<char>('a' + i)))), VQ_OK);
    }
    return view;
  }

  std::string Names(const VQViewFolderArray& views) {
    std::string names;
    for (unsigned long i = 0; i < views.GetCount(); ++i) names += "|" + StoredText(views[i], "$TITLE");
    return names;
  }
};

TEST_F(ViewObject, NamesHaveRoomForSixtyThreeBytes) {
  VQViewFolder view = NewView("old");
  struct Row {
    std::string name;
    VQSTATUS status;
    std::string now;
    std::string alias;
  };
  const std::string forty(40, 'n');
  const Row rows[] = {
      {"", VQERR_NULL_STRING, "old", ""},
      {std::string(64, 'x'), VQERR_VIEW_NAME_TOO_LONG, "old", ""},
      {std::string(63, 'x'), VQ_OK, std::string(63, 'x'), ""},
      {"A|B|C", VQ_OK, "A", "B"},
      {"|B", VQERR_INVALID_PARAMETER, "A", "B"},
      {std::string(63, 'x'), VQERR_VIEW_NAME_TOO_LONG, "A", "B"},
      {forty, VQ_OK, forty, "B"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(view.SetName(Store(row.name)), row.status) << row.name;
    EXPECT_EQ(TextOf(view.GetName()), row.now);
    EXPECT_EQ(TextOf(view.GetAlias()), row.alias);
  }
  EXPECT_EQ(view.SetAlias(Store(std::string(24, 'a'))), VQERR_VIEW_NAME_TOO_LONG);
}

TEST_F(ViewObject, SecondarySortsFollowTheirColumn) {
  struct Row {
    std::function<VQSTATUS(VQViewFolder&)> edit;
    VQSTATUS status;
    std::string columns;
  };
  const Row rows[] = {
      {[](VQViewFolder& v) { return v.DeleteColumn(0UL); }, VQ_OK, "b1cd"},
      {[](VQViewFolder& v) { return v.DeleteColumn(2UL); }, VQ_OK, "abd"},
      {[](VQViewFolder& v) { return v.DeleteColumn(3UL); }, VQ_OK, "ab2c"},
      {[](VQViewFolder& v) { return v.DeleteColumns(2, 2); }, VQ_OK, "ab"},
      {[](VQViewFolder& v) { return v.DeleteColumns(0, 4); }, VQ_OK, ""},
      {[](VQViewFolder& v) { return v.DeleteColumns(2, 3); }, VQERR_OUT_OF_RANGE, "ab2cd"},
      {[](VQViewFolder& v) { return v.DeleteColumns(1, 0); }, VQERR_OUT_OF_RANGE, "ab2cd"},
      {[](VQViewFolder& v) { return v.InsertColumns(2, 3); }, VQ_OK, "ab5cd"},
      {[](VQViewFolder& v) { return v.InsertColumn(3, v[1]); }, VQ_OK, "ab2cb2d"},
      {[](VQViewFolder& v) { return v.InsertColumn(5); }, VQERR_OUT_OF_RANGE, "ab2cd"},
      {[](VQViewFolder& v) { return v.InsertColumns(0, 65532); }, VQERR_CANT_ADD_COLUMNS, "ab2cd"},
      {[](VQViewFolder& v) { return v[1].SetSecondarySortColumn(1); }, VQERR_SECONDARY_SORT_CURRENT, "ab2cd"},
      {[](VQViewFolder& v) { return v[1].SetSecondarySortColumn(4); }, VQERR_OUT_OF_RANGE, "ab2cd"},
      {[](VQViewFolder& v) { return v[1].SetSecondarySortColumn(Store("D")); }, VQ_OK, "ab3cd"},
      {[](VQViewFolder& v) { return v[1].SetSecondarySortColumn(Store("e")); }, VQWARN_NOT_FOUND, "ab2cd"},
      {[](VQViewFolder& v) { return v[0].SetSecondarySortOption(VQVFSORTOPTION_DESCENDING); }, VQ_OK, "a1b2cd"},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    VQViewFolder view = FourColumns();
    ASSERT_EQ(view[1].SetSecondarySortColumn(2), VQ_OK);
    EXPECT_EQ(rows[i].edit(view), rows[i].status) << i;
    std::string found = Columns(view);
    found.erase(std::remove(found.begin(), found.end(), ' '), found.end());
    EXPECT_EQ(found, rows[i].columns) << i;
  }
}

TEST_F(ViewObject, ColumnsRefuseWhatMakesNoSense) {
  VQViewFolder view = NewView("One");
  ASSERT_EQ(view.AppendColumns(1), VQ_OK);
  VQVFColumn column = view[0];
  VQFormula formula;
  struct Row {
    const char* what;
    std::function<VQSTATUS()> operation;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"width 7", [&] { return column.SetExactWidth(7); }, VQERR_OUT_OF_RANGE},
      {"width 8", [&] { return column.SetWidthInCharacters(1); }, VQ_OK},
      {"width 65536", [&] { return column.SetWidthInCharacters(8192); }, VQERR_OUT_OF_RANGE},
      {"second of one", [&] { return column.SetSecondarySortColumn(0UL); }, VQERR_NO_SECONDARY_SORT},
      {"totals", [&] { return column.SetTotalsOption(static_cast<VQVFTOTALSOPTION>(5)); }, VQERR_INVALID_PARAMETER},
      {"sort", [&] { return column.SetSortOption(static_cast<VQVFSORTOPTION>(3)); }, VQERR_INVALID_PARAMETER},
      {"no font", [&] { return column.SetFontStyle(VQFontStyle()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"own view", [&] { return column.SetHeadingSortViewFolder(view); }, VQERR_HEADING_SORT_CURRENT_VIEW},
      {"no view", [&] { return column.SetHeadingSortViewFolder(VQViewFolder()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"no field", [&] { return column.SetFieldName(VQString()); }, VQERR_NULL_STRING},
      {"no formula", [&] { return column.SetFormula(VQFormula()); }, VQERR_INVALID_PARAMETER},
      {"a field", [&] { return column.SetFieldName("Subject"); }, VQ_OK},
      {"field's formula", [&] { return column.GetFormula(&formula); }, VQWARN_NOT_FOUND},
      {"field's name", [&] { return column.SetInternalName("x"); }, VQERR_COLUMN_NAME_IS_FIELD},
      {"category", [&] { return column.SetIsCategorized(1); }, VQ_OK},
      {"calendar", [&] { return view.SetStyle(VQVFSTYLE_CALENDAR); }, VQ_OK},
      {"category there", [&] { return column.SetIsCategorized(0); }, VQERR_NOT_FOR_CALENDAR},
      {"deleted", [&] { return view.DeleteColumn(0UL); }, VQ_OK},
      {"of no view", [&] { return column.SetTitle("x"); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"of no view", [&] { return view.DeleteColumn(&column); }, VQERR_UNINITIALIZED_ARGUMENT},
  };
  for (const Row& row : rows) EXPECT_EQ(ReturnedStatusOf(row.operation), row.status) << row.what;
}

// A formula that a client goes on editing is not the column's.
TEST_F(ViewObject, FormulasAreCopiedBothWays) {
  VQViewFolder view = NewView("V");
  ASSERT_EQ(view.AppendColumns(1), VQ_OK);
  VQFormula formula(VQString("\"one\""));
  ASSERT_EQ(view[0].SetFormula(formula), VQ_OK);
  ASSERT_EQ(formula.SetText("\"two\""), VQ_OK);
  VQFormula found;
  ASSERT_EQ(view[0].GetFormula(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetText()), "\"one\"");
}

TEST_F(ViewObject, FlagsOfOpen) {
  ASSERT_EQ(Db.CreateView("V", nullptr, nullptr), VQ_OK);
  VQViewFolder view;
  EXPECT_EQ(view.Open(), VQERR_OBJECT_NOT_INITIALIZED);
  ASSERT_EQ(Db.GetViewFolder("V", &view), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return view.GetColumnCount(); }), VQERR_VIEW_NOT_OPEN);
  EXPECT_EQ(view.Open(0x20001), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(view.Open(0x80000), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(view.Open(VQVFOPENFLAGS_DESIGN_ONLY, Db), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(view.Open(0, VQDatabase()), VQERR_UNINITIALIZED_ARGUMENT);
  ASSERT_EQ(view.Open(VQVFOPENFLAGS_DESIGN_ONLY), VQ_OK);
  EXPECT_EQ(view.Open(VQVFOPENFLAGS_DESIGN_ONLY), VQWARN_ALREADY_OPEN);
  const VQVFColumn column = view[0];
  VQViewFolder shared(view);
  ASSERT_EQ(view.Close(), VQ_OK);
  EXPECT_EQ(view.Close(), VQWARN_NOT_OPEN);
  EXPECT_EQ(StatusOf([&] { return column.GetTitle(); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { return shared.GetName(); }), VQERR_VIEW_NOT_OPEN);
  ASSERT_EQ(shared.Open(VQVFOPENFLAGS_DESIGN_ONLY), VQ_OK);
  EXPECT_EQ(TextOf(shared.GetName()), "V");
}

TEST_F(ViewObject, ARenamedFolderTakesItsTrueNameInTheEnd) {
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateFolder("In_box", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  ASSERT_EQ(folder.SetName("Out_box|O"), VQ_OK);
  ASSERT_EQ(folder.Save(), VQ_OK);
  EXPECT_EQ(StoredText(folder, "$TITLE"), "Out_box|O");
  EXPECT_EQ(StoredText(folder, "$Name"), "Out_box|O");
  EXPECT_EQ(folder.IsModified(), 0);
  // A name that is taken leaves the folder unsaved, under its temporary title, until it has another.
  ASSERT_EQ(Db.CreateView("Taken", nullptr, nullptr), VQ_OK);
  ASSERT_EQ(folder.SetName("Taken"), VQ_OK);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(folder.Save(), ENG_ERR_FOLDER_EXISTS);
    EXPECT_EQ(folder.IsModified(), 1);
    EXPECT_EQ(StoredText(folder, "$TITLE"), "Taken$|O");
  }
  ASSERT_EQ(folder.SetName("Out_box"), VQ_OK);
  ASSERT_EQ(folder.Save(), VQ_OK);
  EXPECT_EQ(StoredText(folder, "$TITLE"), "Out_box|O");
  EXPECT_EQ(folder.IsModified(), 0);
  EXPECT_EQ(Db.ViewFolderExists("Out_box"), 1);
  EXPECT_EQ(Db.ViewFolderExists("In_box"), 0);
  EXPECT_EQ(folder.SetSelectionFormula(VQFormula(VQString("SELECT 1"))), VQERR_NOT_FOR_FOLDER);
}

TEST_F(ViewObject, AnotherElementsNameIsNoAlias) {
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateView("Taken|T", nullptr, nullptr), VQ_OK);
  ASSERT_EQ(Db.CreateFolder("Folder", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  ASSERT_EQ(folder.Save(), VQ_OK);
  const std::pair<const char*, VQSTATUS> rows[] = {
      {"T", ENG_ERR_FOLDER_EXISTS}, {"Taken", ENG_ERR_FOLDER_EXISTS}, {"Own", VQ_OK}, {"Own", VQ_OK}, {"", VQ_OK}};
  std::string stored = "Folder";
  for (const auto& [alias, status] : rows) {
    ASSERT_EQ(folder.SetAlias(alias), VQ_OK);
    EXPECT_EQ(ReturnedStatusOf([&] { return folder.Save(); }), status) << alias;
    if (status == VQ_OK) stored = *alias != 0 ? std::string("Folder|") + alias : "Folder";
    EXPECT_EQ(StoredText(folder, "$TITLE"), stored) << alias;
  }
}

TEST_F(ViewObject, AViewThatIsGoneSaysSo) {
  VQViewFolder view;
  ASSERT_EQ(Db.CreateView("Gone", nullptr, nullptr), VQ_OK);
  ASSERT_EQ(Db.GetViewFolder("Gone", &view), VQ_OK);
  ASSERT_EQ(Db.DeleteViewFolder("Gone"), VQ_OK);
  for (const unsigned long flags : {0UL, VQVFOPENFLAGS_NO_CREATE, VQVFOPENFLAGS_DESIGN_ONLY}) {
    EXPECT_EQ(ReturnedStatusOf([&] { return view.Open(flags); }), ENG_ERR_SLATE_DELETED) << flags;
    EXPECT_EQ(StatusOf([&] { return view.GetEntryCount(); }), ENG_ERR_SLATE_DELETED) << flags;
  }
}

TEST_F(ViewObject, WhatOutlivesItsDatabaseSaysSo) {
  const VQDocument document = NewDocument("d");
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateFolder("F", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  ASSERT_EQ(folder.Save(), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocument(document), VQ_OK);
  ASSERT_EQ(folder.Open(VQVFOPENFLAGS_USE_UNREAD_LIST), VQ_OK);
  const VQVFColumn column = folder[0];
  VQVFNavigator navigator;
  ASSERT_EQ(folder.GetEntries(&navigator), VQ_OK);
  VQVFEntry entry;
  ASSERT_EQ(navigator.Goto(VQNAVIGATE_FIRST, &entry), VQ_OK);
  const VQSlateArray array(navigator);
  ASSERT_EQ(folder.SetComment("lost"), VQ_OK);
  ASSERT_EQ(Db.Close(), VQ_OK);
  struct Row {
    const char* what;
    std::function<VQSTATUS()> operation;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"name", [&] { return folder.GetName(), VQ_OK; }, VQERR_VIEW_NOT_OPEN},
      {"rows", [&] { return folder.GetEntryCount(), VQ_OK; }, VQERR_VIEW_NOT_OPEN},
      {"column", [&] { return column.GetTitle(), VQ_OK; }, VQERR_OBJECT_NOT_INITIALIZED},
      {"navigator", [&] { return navigator.Goto(VQNAVIGATE_FIRST, &entry); }, VQERR_NO_COLLECTION},
      {"save", [&] { return folder.Save(); }, VQERR_VIEW_NOT_OPEN},
      {"members", [&] { return folder.FolderAddDocument(document); }, VQERR_DATABASE_NOT_OPEN},
      {"open", [&] { return folder.Open(); }, VQERR_DATABASE_NOT_OPEN},
      {"slate", [&] { return array[0].Open(); }, VQERR_DATABASE_NOT_OPEN},
  };
  for (const Row& row : rows) EXPECT_EQ(StatusOf(row.operation), row.status) << row.what;
  EXPECT_EQ(array.GetCount(), 1U);
  ASSERT_EQ(Db.Open(), VQ_OK);
  ASSERT_EQ(folder.Open(), VQ_OK);
  EXPECT_EQ(folder.GetEntryCount(), 1U);
  EXPECT_EQ(TextOf(folder.GetComment()), "");
}

TEST_F(ViewObject, DatabasesMakeAndListViews) {
  VQViewFolder view;
  ASSERT_EQ(Db.CreateView("Source", nullptr, &view), VQ_OK);
  ASSERT_EQ(view.AppendColumns(2), VQ_OK);
  ASSERT_EQ(view.SetComment("copied along"), VQ_OK);
  EXPECT_EQ(Db.CreateView("Copy", &view, nullptr), VQERR_INVALID_PARAMETER);
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Close(), VQ_OK);
  ASSERT_EQ(Db.CreateView("Copy", &view, nullptr), VQ_OK);
  ASSERT_EQ(Db.CreateViewFolder("Copy 2", view, nullptr), VQ_OK);
  ASSERT_EQ(Db.CreateFolder("Kept", VQVFSHARINGOPTION_SHARED, &view, nullptr), VQ_OK);
  EXPECT_EQ(Db.CreateViewFolder("Kept", view, nullptr), ENG_ERR_FOLDER_EXISTS);
  VQViewFolder dropped;
  ASSERT_EQ(Db.CreateView("Dropped", nullptr, &dropped), VQ_OK);
  dropped = VQViewFolder();
  VQViewFolderArray found;
  ASSERT_EQ(Db.GetViews(&found), VQ_OK);
  EXPECT_EQ(Names(found), "|Source|Copy|Copy 2");
  ASSERT_EQ(Db.GetFolders(&found), VQ_OK);
  EXPECT_EQ(Names(found), "|Kept");
  VQViewFolder copy;
  ASSERT_EQ(Db.GetViewFolder("Copy 2", &copy), VQ_OK);
  ASSERT_EQ(copy.Open(VQVFOPENFLAGS_DESIGN_ONLY), VQ_OK);
  EXPECT_EQ(TextOf(copy.GetComment()), "copied along");
  EXPECT_EQ(copy.GetColumnCount(), view.Open(VQVFOPENFLAGS_DESIGN_ONLY) == VQ_OK ? view.GetColumnCount() : 0);
  EXPECT_EQ(copy.IsView(), 1);
  ASSERT_EQ(Db.DeleteViewFolder("Kept"), VQ_OK);
  EXPECT_EQ(Db.CreateFolder(Store(std::string(64, 'x')), VQVFSHARINGOPTION_SHARED, nullptr, nullptr),
            VQERR_STRING_TOO_LONG);
  EXPECT_EQ(Db.CreateView("", nullptr, nullptr), VQERR_NULL_STRING);
  EXPECT_EQ(Db.CreateFolder("x", VQVFSHARINGOPTION_PRIVATE_ON_FIRST_USE, nullptr, nullptr), VQERR_INVALID_PARAMETER);
}

TEST_F(ViewObject, APrivateFolderIsItsOwners) {
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateFolder("Mine", VQVFSHARINGOPTION_PRIVATE, nullptr, &folder), VQ_OK);
  EXPECT_EQ(folder.GetSlateType(), 0xE1008U);
  EXPECT_EQ(folder.IsPrivate(), 1);
  EXPECT_EQ(folder.SetIsDefaultViewFolder(1), VQERR_INCORRECT_SLATE_TYPE);
  ASSERT_EQ(folder.Save(), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocument(NewDocument("d")), VQ_OK);
  VQViewFolder again;
  ASSERT_EQ(Db.GetViewFolder("Mine", &again), VQ_OK);
  ASSERT_EQ(again.Open(), VQ_OK);
  EXPECT_EQ(again.GetEntryCount(), 1U);
  VQViewFolderArray found;
  ASSERT_EQ(Db.GetViewFolders(&found), VQ_OK);
  EXPECT_EQ(found.GetCount(), 1U);
  ASSERT_EQ(EngEnvSetString("UserName", "CN=Another/O=Acme"), ENG_OK);
  ASSERT_EQ(Db.GetViewFolders(&found), VQ_OK);
  EXPECT_EQ(found.GetCount(), 0U);
}

TEST_F(ViewObject, ACopyOfTheDefaultViewIsAnotherView) {
  VQViewFolder view;
  ASSERT_EQ(Db.CreateView("Main", nullptr, &view), VQ_OK);
  ASSERT_EQ(view.SetIsDefaultViewFolder(1), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  ASSERT_EQ(view.Close(), VQ_OK);
  VQViewFolder copy;
  ASSERT_EQ(Db.CreateViewFolder("Copy", view, &copy), VQ_OK);
  EXPECT_EQ(copy.GetIsDefaultViewFolder(), 0);
}

// Numbers of faces are those of a view's own table.
TEST_F(ViewObject, ACopiedColumnKeepsItsFonts) {
  const auto style = [](const char* name) {
    VQFontStyle made;
    EXPECT_EQ(made.Assign(0x20, 2, VQString(name), 1, 0), VQ_OK);
    return made;
  };
  VQViewFolder from = NewView("From");
  ASSERT_EQ(from.AppendColumns(1), VQ_OK);
  ASSERT_EQ(from[0].SetFontStyle(style("Plain")), VQ_OK);
  ASSERT_EQ(from[0].SetTitleFontStyle(style("Broad")), VQ_OK);
  VQViewFolder to = NewView("To");
  ASSERT_EQ(to.SetUnreadFontStyle(style("Broad")), VQ_OK);
  ASSERT_EQ(to.AppendColumn(from[0]), VQ_OK);
  VQFontStyle found;
  ASSERT_EQ(to[0].GetFontStyle(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetFaceName()), "Plain");
  ASSERT_EQ(to[0].GetTitleFontStyle(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetFaceName()), "Broad");
}

TEST_F(ViewObject, FoldersTakeDocumentsOfTheirDatabase) {
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateFolder("F", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  ASSERT_EQ(Db.CreateView("V", nullptr, nullptr), VQ_OK);
  VQViewFolder view;
  ASSERT_EQ(Db.GetViewFolder("V", &view), VQ_OK);
  const VQDocument document = NewDocument("d");
  VQDocument fresh;
  ASSERT_EQ(Db.CreateDocument(&fresh), VQ_OK);
  VQDatabase other;
  ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
  VQDocument foreign;
  ASSERT_EQ(other.CreateDocument(&foreign), VQ_OK);
  ASSERT_EQ(foreign.Save(), VQ_OK);
  VQSlateArray one(Db);
  VQViewFolder gone;
  ASSERT_EQ(Db.CreateFolder("Gone", VQVFSHARINGOPTION_SHARED, nullptr, nullptr), VQ_OK);
  ASSERT_EQ(Db.GetViewFolder("Gone", &gone), VQ_OK);
  ASSERT_EQ(Db.DeleteViewFolder("Gone"), VQ_OK);
  struct Row {
    const char* what;
    std::function<VQSTATUS()> operation;
    VQSTATUS status;
    unsigned long count;
  };
  const Row rows[] = {
      {"to a view", [&] { return view.FolderAddDocument(document); }, VQERR_FOLDER_ONLY, 0},
      {"to no folder", [&] { return gone.FolderAddDocument(document); }, ENG_ERR_SLATE_DELETED, 0},
      {"copied", [&] { return Db.CreateViewFolder("x", gone, nullptr); }, ENG_ERR_SLATE_DELETED, 0},
      {"null", [&] { return folder.FolderAddDocument(VQSlate()); }, VQERR_UNINITIALIZED_ARGUMENT, 0},
      {"not saved", [&] { return folder.FolderAddDocument(fresh); }, VQERR_SLATE_NOT_SAVED, 0},
      {"foreign", [&] { return folder.FolderAddDocument(foreign); }, VQERR_DIFFERENT_DATABASE, 0},
      {"no number", [&] { return folder.FolderAddDocument(0UL); }, VQERR_INVALID_PARAMETER, 0},
      {"no array", [&] { return folder.FolderAddDocuments(VQSlateArray()); }, VQERR_UNINITIALIZED_ARGUMENT, 0},
      {"empty array", [&] { return folder.FolderAddDocuments(one); }, VQERR_EMPTY_ARRAY, 0},
      {"no table", [&] { return folder.FolderAddDocuments(static_cast<void*>(nullptr)); }, VQERR_INVALID_PARAMETER, 0},
      {"one", [&] { return folder.FolderAddDocument(document); }, VQ_OK, 1},
      {"never in it", [&] { return folder.FolderRemoveDocument(fresh); }, VQ_OK, 1},
      {"out", [&] { return folder.FolderRemoveDocument(document); }, VQ_OK, 0},
      {"again", [&] { return one.Add(document), folder.FolderAddDocuments(one); }, VQ_OK, 1},
      {"all out", [&] { return folder.FolderRemoveAllDocuments(); }, VQ_OK, 0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ReturnedStatusOf(row.operation), row.status) << row.what;
    ENGHANDLE table = 0;
    ASSERT_EQ(
        EngFolderGetTable(Db.GetDatabaseBody()->GetHandle(), static_cast<std::uint32_t>(folder.GetSlateID()), &table),
        ENG_OK);
    EXPECT_EQ(EngIdTableEntries(table), row.count) << row.what;
    EngIdTableDestroy(table);
  }
  // Unsaved changes of the design outlast a change of the documents.
  ASSERT_EQ(folder.SetComment("kept"), VQ_OK);
  ASSERT_EQ(folder.FolderAddDocument(document), VQ_OK);
  ASSERT_EQ(folder.Save(), VQ_OK);
  EXPECT_EQ(StoredText(folder, "$Comment"), "kept");
}

}  // namespace
