// Arrays of slates that are made of entries.
#include "engine/idtable.h"
#include "vq/views/viewbody.h"

namespace {

// A navigator's documents, and the database that they stand in.
struct Documents {
  VQVFNavigator Source;
  ENGHANDLE Table = 0;
  VQDatabase Database;
};

VQSTATUS Collect(const VQVFNavigator& navigator, Documents* documents) {
  if (navigator.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  documents->Source = navigator;
  VQVFNavigatorBody* body = documents->Source.GetNavigatorBody();
  if (VQSTATUS status = body->GetOpenStatus()) return status;
  documents->Database = body->GetViewFolderBody()->GetEntryDatabase();
  return body->GetTable(&documents->Table);
}

VQSTATUS Collect(const VQViewFolder& view, Documents* documents) {
  if (view.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQViewFolderBody* body = view.GetViewFolderBody();
  if (body == nullptr) return VQERR_VIEW_NOT_OPEN;
  if (VQSTATUS status = body->GetNavigatorStatus()) return status;
  return Collect(body->GetNavigator(), documents);
}

template <typename Source>
VQSTATUS CopyDocuments(const Source& source, Documents* documents, ENGHANDLE* copy) {
  if (VQSTATUS status = Collect(source, documents)) return status;
  return vq::FromEngine(EngIdTableCopy(documents->Table, copy));
}

}  // namespace

template <typename Source>
void VQSlateArray::TakeEntries(const Source& source) {
  Documents documents;
  ENGHANDLE copy = 0;
  vq::ThrowIfError(CopyDocuments(source, &documents, &copy));
  CreateVQIDTable(copy);
  Database = documents.Database;
  SlateClass = VQSLATECLASS_DOCUMENT;
}

VQSlateArray::VQSlateArray(const VQViewFolder& view) : SlateClass(0) { TakeEntries(view); }
VQSlateArray::VQSlateArray(const VQVFNavigator& navigator) : SlateClass(0) { TakeEntries(navigator); }

template <typename Source>
VQSTATUS VQSlateArray::ChangeByEntries(const Source& source, bool add) {
  VQSTATUS status = Body != nullptr ? VQ_OK : VQERR_OBJECT_NOT_INITIALIZED;
  Documents documents;
  if (status == VQ_OK) status = Collect(source, &documents);
  if (status == VQ_OK && add && documents.Database.GetDatabaseBody() != Database.GetDatabaseBody()) {
    status = VQERR_DIFFERENT_DATABASE;
  }
  if (status != VQ_OK) return vq::Apply(status);
  void* table = vq::FromHandle(documents.Table);
  return add ? Add(table) : Remove(table);
}

VQSTATUS VQSlateArray::Add(const VQViewFolder& view) { return ChangeByEntries(view, true); }
VQSTATUS VQSlateArray::Add(const VQVFNavigator& navigator) { return ChangeByEntries(navigator, true); }
VQSTATUS VQSlateArray::Remove(const VQViewFolder& view) { return ChangeByEntries(view, false); }
VQSTATUS VQSlateArray::Remove(const VQVFNavigator& navigator) { return ChangeByEntries(navigator, false); }
