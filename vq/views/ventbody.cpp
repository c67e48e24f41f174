// VQVFEntry and VQVFEntryBody: a row and its statistics.
#include "vq/views/ventbody.h"

#include <cstring>

#include "vq/store/storetext.h"
#include "vq/store/vqdoc.h"
#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/viewbody.h"

namespace {

VQVFENTRYTYPE TypeOf(const vq::EntryRow& row) {
  if ((row.ID & ENG_ROW_NO_DOCUMENT) != 0) {
    return (row.ID & ENG_ROW_TOTAL) != 0 ? VQVFENTRYTYPE_TOTAL : VQVFENTRYTYPE_CATEGORY;
  }
  return row.IndentLevels == 0 ? VQVFENTRYTYPE_MAIN_TOPIC : VQVFENTRYTYPE_RESPONSE;
}

}  // namespace

VQVFEntryBody::VQVFEntryBody(VQVFNavigatorBody* navigator, const COLLECTIONPOSITION& position, const vq::EntryRow& row)
    : VQBody(navigator->GetSession()),
      ChildCount(0),
      DescendantCount(0),
      Summary(new unsigned char[row.SummarySize]),
      SummarySize(row.SummarySize),
      Flags(0),
      IndentLevels(row.IndentLevels),
      Navigator(navigator),
      ViewFolder(navigator->GetViewFolderBody()),
      SlateID(row.ID),
      Position(&position),
      FTSearchScore(0),
      SiblingCount(0),
      Time(navigator->CreationTime),
      Type(TypeOf(row)),
      AnyUnread(0),
      UnreadTable(navigator->UnreadTable) {
  std::memcpy(Summary.get(), row.Summary, row.SummarySize);
  if (row.Unread != 0 && UnreadTable != 0) Flags |= kUnread;
  if (navigator->IsFTSearch()) {
    // A flat result has no statistics to read.
    Flags |= kFullText | kStatistics;
    SiblingCount = navigator->EntryCount;
  }
  if (navigator->HasFlag(VQVFNavigatorBody::kScored)) FTSearchScore = row.FTScore;
  Navigator->AddReference();
  ViewFolder->AddReference();
}

VQVFEntryBody::~VQVFEntryBody() {
  ++RefCount;
  VQVFEntryBody::Close();
}

VQSTATUS VQVFEntryBody::Close() {
  if (Navigator == nullptr) return VQWARN_NOT_OPEN;
  Summary.reset();
  SummarySize = 0;
  UnreadTable = 0;
  VQVFNavigatorBody* navigator = Navigator;
  VQViewFolderBody* view = ViewFolder;
  Navigator = nullptr;
  ViewFolder = nullptr;
  navigator->Release();
  view->Release();
  return VQ_OK;
}

VQCLASSID VQVFEntryBody::GetClassID() const { return VQCLASSID_VQVFENTRYBODY; }

// The view, while the navigator reads from it.
VQSTATUS VQVFEntryBody::CheckView(VQViewFolderBody** view) const {
  if (Navigator == nullptr) return VQERR_OBJECT_CLOSED;
  if (VQSTATUS status = Navigator->GetOpenStatus()) return status;
  *view = ViewFolder;
  return ViewFolder->IsDesignOpen() ? VQ_OK : ViewFolder->GetLoadStatus();
}

VQSTATUS VQVFEntryBody::ReadStatistics() {
  if ((Flags & kStatistics) != 0) return VQ_OK;
  VQViewFolderBody* view = nullptr;
  if (VQSTATUS status = CheckView(&view)) return status;
  COLLECTIONPOSITION at = *Position.GetPosition();
  vq::EntryRows rows;
  const VQSTATUS status = Navigator->ReadEntries(&at, ENG_GO_CURRENT, 0, ENG_GO_CURRENT, 1, vq::kStatisticsMask,
                                                 &rows.Buffer, &rows.Length, nullptr, &rows.Returned, nullptr);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQERR_READ_ENTRIES : status;
  const unsigned char* bytes = rows.Lock();
  if (bytes == nullptr || rows.Length < vq::kStatisticsSize) return VQERR_READ_ENTRIES;
  SiblingCount = vq::LoadLong(bytes);
  ChildCount = vq::LoadLong(bytes + 4);
  DescendantCount = vq::LoadLong(bytes + 8);
  AnyUnread = vq::LoadWord(bytes + 12);
  if (VQSTATUS recounted = RecountDescendants()) return recounted;
  Flags |= kStatistics;
  return VQ_OK;
}

// The engine counts the documents of the whole view; a navigator has its levels, and rows that are no documents.
VQSTATUS VQVFEntryBody::RecountDescendants() {
  const bool restricted = Navigator->IsRestricted();
  const std::uint8_t deepest = Navigator->GetStartPosition().GetPosition()->MaxLevel;
  const bool limited = restricted && deepest < ENG_COLLECTION_NO_LIMIT;
  if (restricted && Position.GetPosition()->Level >= deepest) {
    ChildCount = DescendantCount = 0;
    return VQ_OK;
  }
  if (!limited && !Navigator->HasFlag(VQVFNavigatorBody::kCategorized)) return VQ_OK;
  COLLECTIONPOSITION from = *Position.GetPosition();
  if (limited) from.MaxLevel = deepest;
  const auto code = static_cast<unsigned short>(limited ? ENG_GO_DESCENDANTS | ENG_GO_MAX_LEVEL : ENG_GO_DESCENDANTS);
  std::uint32_t skipped = 0;
  const VQSTATUS status = Navigator->ReadEntries(&from, code, vq::kToTheEnd, ENG_GO_CURRENT, 0, 0, nullptr, nullptr,
                                                 &skipped, nullptr, nullptr);
  if (VQIsError(status)) return status;
  DescendantCount = status == VQ_OK ? skipped : 0;
  return VQ_OK;
}

VQVFEntry::VQVFEntry() = default;
VQVFEntry::VQVFEntry(const VQVFEntry& other) = default;
VQVFEntry::VQVFEntry(VQVFEntryBody* body) : VQSmartPtr(body) {}
VQVFEntry& VQVFEntry::operator=(const VQVFEntry& other) = default;

VQVFEntry& VQVFEntry::operator=(VQVFEntryBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQVFEntry::GetClassID() const { return VQCLASSID_VQVFENTRY; }

VQVFEntryBody* VQVFEntry::Require() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetEntryBody();
}

VQVFEntryBody* VQVFEntry::RequireStatistics() const {
  VQVFEntryBody* body = Require();
  vq::ThrowIfError(body->ReadStatistics());
  return body;
}

unsigned long VQVFEntry::GetChildCount() const { return RequireStatistics()->GetChildCount(); }
unsigned long VQVFEntry::GetDescendantCount() const { return RequireStatistics()->GetDescendantCount(); }
unsigned long VQVFEntry::GetSiblingCount() const { return RequireStatistics()->GetSiblingCount(); }

unsigned long VQVFEntry::GetDocLevel() const { return Require()->GetPosition().GetDocLevel(); }
unsigned short VQVFEntry::GetFTSearchScore() const { return Require()->GetFTSearchScore(); }
unsigned long VQVFEntry::GetIndentLevels() const { return Require()->GetIndentLevels(); }
unsigned long VQVFEntry::GetSlateID() const { return Require()->GetSlateID(); }
VQVFENTRYTYPE VQVFEntry::GetType() const { return Require()->GetType(); }
int VQVFEntry::IsCategory() const { return GetType() == VQVFENTRYTYPE_CATEGORY; }
int VQVFEntry::IsMainTopic() const { return GetType() == VQVFENTRYTYPE_MAIN_TOPIC; }
int VQVFEntry::IsResponse() const { return GetType() == VQVFENTRYTYPE_RESPONSE; }
int VQVFEntry::IsTotal() const { return GetType() == VQVFENTRYTYPE_TOTAL; }
int VQVFEntry::IsUnread() const { return Require()->IsUnread(); }

VQSTATUS VQVFEntry::GetPosition(VQVFPosition* position) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (position == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  *position = GetEntryBody()->GetPosition();
  return VQ_OK;
}

VQSTATUS VQVFEntry::GetViewFolder(VQViewFolder* view) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (view == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  if (GetEntryBody()->GetViewFolderBody() == nullptr) return vq::Apply(VQERR_OBJECT_CLOSED);
  *view = GetEntryBody()->GetViewFolderBody();
  return VQ_OK;
}

VQSTATUS VQVFEntry::GetDocument(VQDocument* document) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (document == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  const VQVFEntryBody* entry = GetEntryBody();
  const VQVFENTRYTYPE type = entry->GetType();
  if (type != VQVFENTRYTYPE_MAIN_TOPIC && type != VQVFENTRYTYPE_RESPONSE) {
    return vq::Apply(VQERR_NO_DOCUMENT_FOR_CATEGORY);
  }
  if (entry->GetViewFolderBody() == nullptr) return vq::Apply(VQERR_OBJECT_CLOSED);
  const VQDatabase& entries = entry->GetViewFolderBody()->GetEntryDatabase();
  const VQSTATUS status = document->BindTo(entries.GetDatabaseBody(), entry->GetSlateID());
  if (status == VQ_OK) document->SetFTSearchScore(entry->GetFTSearchScore());
  return vq::Apply(status);
}
