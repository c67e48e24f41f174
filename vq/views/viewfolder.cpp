// VQViewFolder: binding, opening, and columns.
#include "vq/frame/session.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

VQViewFolder::VQViewFolder() = default;
VQViewFolder::VQViewFolder(VQDatabaseBody* database, unsigned long id) { Assign(database, id); }
VQViewFolder::VQViewFolder(const VQViewFolder& other) = default;
VQViewFolder::VQViewFolder(const VQSlate& other) { *this = other; }
VQViewFolder::VQViewFolder(VQViewFolderBody* body) : VQSlate(body) {}
VQViewFolder::~VQViewFolder() = default;

VQViewFolder& VQViewFolder::operator=(const VQViewFolder& other) {
  VQSlate::operator=(other);
  return *this;
}

VQViewFolder& VQViewFolder::operator=(const VQSlate& other) {
  VQSlate::operator=(other);
  return *this;
}

VQViewFolder& VQViewFolder::operator=(VQSlateBody* body) {
  VQSlate::operator=(body);
  return *this;
}

VQCLASSID VQViewFolder::GetClassID() const { return VQCLASSID_VQVIEWFOLDER; }

VQSTATUS VQViewFolder::ValidateSlateType(const VQSlate& other) const {
  if (other.IsNull()) return VQ_OK;
  const VQCLASSID handle = other.GetClassID();
  const VQSlateBody* body = other.GetSlateBody();
  const bool fits =
      handle == VQCLASSID_VQVIEWFOLDER ||
      (handle == VQCLASSID_VQSLATE && (body == nullptr || body->GetClassID() == VQCLASSID_VQVIEWFOLDERBODY));
  return fits ? ValidateSlateType(other.GetSlateType()) : VQERR_INCORRECT_SLATE_TYPE;
}

VQSTATUS VQViewFolder::ValidateSlateType(const VQSlateBody* body) const {
  return body->GetClassID() == VQCLASSID_VQVIEWFOLDERBODY ? ValidateSlateType(body->GetType())
                                                          : VQERR_INCORRECT_SLATE_TYPE;
}

// A deletion stub has no kind.
VQSTATUS VQViewFolder::ValidateSlateType(unsigned long type) const {
  const unsigned long slate_class = type & VQSLATECLASS_ALL;
  const unsigned long kind = type >> 16;
  const bool view_class = slate_class == VQSLATECLASS_VIEW || slate_class == (VQSLATECLASS_VIEW | VQSLATECLASS_PRIVATE);
  return view_class && (kind == VQDESIGNKIND_VIEW || kind == 0) ? VQ_OK : VQERR_INCORRECT_SLATE_TYPE;
}

VQSTATUS VQViewFolder::Close() { return VQSlate::Close(); }

VQSTATUS VQViewFolder::CreateSlateBody(unsigned long flags, unsigned long argument, int argument2) {
  if (argument2 == 0) {
    const unsigned long open_flags = flags & ~VQViewFolderBody::kDesignUnread;
    VQSTATUS status = VQSlate::CreateSlateBody(0, argument, 0);
    if (status != VQ_OK || (flags & VQViewFolderBody::kDesignUnread) != 0) return status;
    return vq::Apply(GetViewFolderBody()->Open(open_flags));
  }
  if (Body != nullptr) return VQ_OK;
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  VQDatabaseBody* database = GetDatabaseBody();
  if (database == nullptr || !database->IsOpen()) return vq::Apply(VQERR_DATABASE_NOT_OPEN);
  const VQSTATUS status = ValidateSlateType(GetSlateType());
  if (status == VQ_OK) AttachClosed(new VQViewFolderBody(database, GetSlateType(), 0));
  return vq::Apply(status);
}

VQSTATUS VQViewFolder::CreateViewFolderBody() {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (GetSlateID() == 0) return vq::Apply(VQERR_VIEW_NOT_SAVED);
  const VQSTATUS closed = Close();
  if (VQIsError(closed)) return closed;
  const VQSTATUS status = CreateSlateBody(VQViewFolderBody::kDesignUnread, 0, 0);
  if (status == VQ_OK) GetViewFolderBody()->SetType(VQVFTYPE_FOLDER);
  return status;
}

VQSTATUS VQViewFolder::Open(unsigned long flags) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return OpenWith(flags, GetDatabase());
}

VQSTATUS VQViewFolder::OpenWith(unsigned long flags, const VQDatabase& entries) {
  VQSTATUS status = CreateSlateBody(0, 0, 1);
  if (status != VQ_OK) return status;
  VQDatabaseBody* own = GetDatabaseBody();
  if (!own->IsOpen()) return vq::Apply(VQERR_DATABASE_NOT_OPEN);
  status = GetViewFolderBody()->Open(flags, entries);
  if (status == VQ_OK) BodyOpened();
  return vq::Apply(status);
}

VQSTATUS VQViewFolder::Open(unsigned long flags, const VQDatabase& entries) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if ((flags & VQVFOPENFLAGS_DESIGN_ONLY) != 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  return OpenWith(flags, entries);
}

VQSTATUS VQViewFolder::Open(unsigned long flags, const VQString& path, const VQString& server) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if ((flags & VQVFOPENFLAGS_DESIGN_ONLY) != 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQDatabase entries;
  const VQSTATUS status = GetDatabaseBody()->GetOwnerSession()->GetDatabase(path, &entries, server);
  return status == VQ_OK ? OpenWith(flags, entries) : status;
}

VQSTATUS VQViewFolder::CheckDesign(VQViewFolderBody** body, Suits suits) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (Body == nullptr) return VQERR_VIEW_NOT_OPEN;
  VQViewFolderBody* view = GetViewFolderBody();
  if (VQSTATUS status = view->OpenNew()) return status;
  if (!view->IsDesignOpen()) return view->GetLoadStatus();
  const bool folder = view->Type == VQVFTYPE_FOLDER;
  if (suits == Suits::Calendar && !view->IsCalendar()) return VQERR_CALENDAR_ONLY;
  if (suits == Suits::NotCalendar && view->IsCalendar()) return VQERR_NOT_FOR_CALENDAR;
  if (suits == Suits::Folder && !folder) return VQERR_FOLDER_ONLY;
  if (suits == Suits::View && folder) return VQERR_NOT_FOR_FOLDER;
  *body = view;
  return VQ_OK;
}

VQSTATUS VQViewFolder::Save(unsigned short flags) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  return status == VQ_OK ? VQSlate::Save(flags) : vq::Apply(status);
}

VQViewFolderBody* VQViewFolder::RequireDesign(Suits suits) const {
  VQViewFolderBody* body = nullptr;
  vq::ThrowIfError(CheckDesign(&body, suits));
  return body;
}

// A view that is not open is looked into for the moment.
VQSTATUS VQViewFolder::FindType(VQVFTYPE* type) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  VQViewFolder view(*this);
  const VQSTATUS status = view.CreateSlateBody(0, 0, 1);
  return status == VQ_OK ? view.GetViewFolderBody()->GetType(type) : status;
}

VQVFTYPE VQViewFolder::GetType() const {
  VQVFTYPE type = VQVFTYPE_UNKNOWN;
  if (VQSTATUS status = FindType(&type)) vq::Throw(status);
  return type;
}

int VQViewFolder::IsView() const { return GetType() == VQVFTYPE_VIEW; }
int VQViewFolder::IsFolder() const { return GetType() == VQVFTYPE_FOLDER; }
int VQViewFolder::IsCalendar() const { return RequireDesign()->IsCalendar(); }
int VQViewFolder::IsPrivate() const { return GetSharingOption() == VQVFSHARINGOPTION_PRIVATE; }

int VQViewFolder::IsCategorized() const {
  const VQVFColumnBodyArray& columns = RequireDesign()->GetColumns();
  for (std::uint32_t i = 0; i < columns.GetCount(); ++i) {
    if (columns[i]->HasFlag(VIEWCOLUMN_CATEGORIZED)) return 1;
  }
  return 0;
}

unsigned long VQViewFolder::GetColumnCount() const { return RequireDesign()->GetColumns().GetCount(); }

VQSTATUS VQViewFolder::GetColumn(unsigned long index, VQVFColumn* column) const {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckDesign(&body);
  if (status == VQ_OK && column == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && index >= body->GetColumns().GetCount()) status = VQERR_OUT_OF_RANGE;
  if (status == VQ_OK) *column = body->GetColumns()[static_cast<std::uint32_t>(index)];
  return vq::Apply(status);
}

VQSTATUS VQViewFolder::GetColumn(const VQString& title, VQVFColumn* column) const {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckDesign(&body);
  if (status == VQ_OK && column == nullptr) status = VQERR_NULL_POINTER;
  std::uint32_t index = 0;
  if (status == VQ_OK) status = body->GetColumns().Find(title, &index);
  if (status == VQ_OK) *column = body->GetColumns()[index];
  return vq::Apply(status == VQERR_NOT_FOUND ? VQWARN_NOT_FOUND : status);
}

VQString VQViewFolder::GetColumnTitle(unsigned long index) const {
  const VQVFColumnBodyArray& columns = RequireDesign()->GetColumns();
  if (index >= columns.GetCount()) vq::Throw(VQERR_OUT_OF_RANGE);
  return columns[static_cast<std::uint32_t>(index)]->GetTitle();
}

VQVFColumn VQViewFolder::operator[](unsigned long index) const {
  const VQVFColumnBodyArray& columns = RequireDesign()->GetColumns();
  if (index >= columns.GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return VQVFColumn(columns[static_cast<std::uint32_t>(index)]);
}

VQSTATUS VQViewFolder::AddColumn(unsigned long position, const VQVFColumn* source, VQVFColumn* column) {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckDesign(&body);
  if (status == VQ_OK && source != nullptr && source->IsNull()) status = VQERR_UNINITIALIZED_ARGUMENT;
  if (status != VQ_OK) return vq::Apply(status);
  VQVFColumnBodyArray& columns = body->GetColumns();
  const VQVFColumn added(source != nullptr ? new VQVFColumnBody(*source->GetColumnBody()) : new VQVFColumnBody(body));
  // Two formulas of one name would be one.
  VQVFColumnBody* made = added.GetColumnBody();
  if (made->HasFormula() && columns.HasName(made->GetStoredName())) {
    made->SetInternalName(VQString());
    made->SetDirtyFlags(VQVFColumnBody::kGenerateName | VQVFColumnBody::kRecompile);
  }
  const unsigned long at = position == kAtEnd ? columns.GetCount() : position;
  if (at > columns.GetCount()) return vq::Apply(VQERR_OUT_OF_RANGE);
  if (source != nullptr) status = body->TakeFonts(source->GetColumnBody()->GetOwner(), made);
  if (status == VQ_OK) status = columns.Insert(static_cast<std::uint32_t>(at), made);
  if (status == VQ_OK && column != nullptr) *column = added;
  return vq::Apply(status);
}

VQSTATUS VQViewFolder::AppendColumn(VQVFColumn* column) { return AddColumn(kAtEnd, nullptr, column); }
VQSTATUS VQViewFolder::AppendColumn(const VQVFColumn& source, VQVFColumn* column) {
  return AddColumn(kAtEnd, &source, column);
}
VQSTATUS VQViewFolder::InsertColumn(unsigned long position, VQVFColumn* column) {
  return AddColumn(position, nullptr, column);
}
VQSTATUS VQViewFolder::InsertColumn(unsigned long position, const VQVFColumn& source, VQVFColumn* column) {
  return AddColumn(position, &source, column);
}

VQSTATUS VQViewFolder::AppendColumns(unsigned long count) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  return status == VQ_OK ? InsertColumns(body->GetColumns().GetCount(), count) : vq::Apply(status);
}

VQSTATUS VQViewFolder::InsertColumns(unsigned long position, unsigned long count) {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckDesign(&body);
  if (status != VQ_OK) return vq::Apply(status);
  VQVFColumnBodyArray& columns = body->GetColumns();
  if (position > columns.GetCount() || count == 0) return vq::Apply(VQERR_OUT_OF_RANGE);
  if (count > VQVFColumnBodyArray::kMaximum) return vq::Apply(VQERR_CANT_ADD_COLUMNS);
  return vq::Apply(columns.InsertNew(static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(count)));
}

VQSTATUS VQViewFolder::DeleteColumn(unsigned long index) { return DeleteColumns(index, 1); }

VQSTATUS VQViewFolder::DeleteColumns(unsigned long position, unsigned long count) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  if (status != VQ_OK) return vq::Apply(status);
  constexpr unsigned long kMost = VQVFColumnBodyArray::kMaximum;
  if (position > kMost || count > kMost) return vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(body->GetColumns().Delete(static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(count)));
}

VQSTATUS VQViewFolder::DeleteColumn(VQVFColumn* column) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  if (status != VQ_OK) return vq::Apply(status);
  if (column == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQVFColumnBody* gone = column->GetColumnBody();
  if (gone == nullptr || gone->GetOwner() == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const VQVFColumnBodyArray& columns = body->GetColumns();
  const std::uint32_t number = gone->GetNumber();
  if (number >= columns.GetCount() || columns[number] != gone) return vq::Apply(VQERR_NOT_OF_THIS_VIEW);
  column->DeleteBody();
  return DeleteColumn(number);
}

VQCLASSID VQViewFolderArray::GetClassID() const { return VQCLASSID_VQVIEWFOLDERARRAY; }

VQViewFolder VQViewFolderArray::operator[](unsigned long index) const {
  RequireTable();
  VQViewFolder view;
  vq::ThrowIfError(GetSlate(index, &view));
  return view;
}
