// Columns: the body, and what a column is of.
#include "vq/views/vcolbody.h"

#include "vq/store/storetext.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

VQVFColumnBody::VQVFColumnBody(VQViewFolderBody* owner)
    : ColumnRecord(vq::viewdesign::DefaultColumn()),
      ColumnExtension(vq::viewdesign::DefaultColumnExtension()),
      ColumnNumber(0),
      Owner(owner),
      DirtyFlags(0),
      SummaryIndex(kNoSummary) {}

VQVFColumnBody::VQVFColumnBody(const VQVFColumnBody& other)
    : VQBody(other),
      ColumnRecord(other.ColumnRecord),
      ColumnExtension(other.ColumnExtension),
      ColumnNumber(0),
      Constant(other.Constant),
      Owner(nullptr),
      DirtyFlags(static_cast<std::uint16_t>(other.DirtyFlags & ~kChanged)),
      FieldName(other.FieldName),
      InternalName(other.InternalName),
      StoredName(other.StoredName),
      SummaryIndex(other.SummaryIndex),
      Title(other.Title),
      StoredTitle(other.StoredTitle) {
  vq::ThrowIfError(vq::viewdesign::CopyFormula(other.ColumnFormula, &ColumnFormula));
}

VQCLASSID VQVFColumnBody::GetClassID() const { return VQCLASSID_VQVFCOLUMNBODY; }

bool VQVFColumnBody::HasFormula() const { return vq::viewdesign::HasCode(ColumnFormula); }

void VQVFColumnBody::SetInternalName(const VQString& name) {
  InternalName = name;
  StoredName = vq::ViewOf(name);
}

void VQVFColumnBody::SetTitle(const VQString& title) {
  Title = title;
  StoredTitle = vq::ViewOf(title);
}

void VQVFColumnBody::LoadName(std::string_view name) {
  InternalName = vq::StringOf(name);
  StoredName = name;
}

void VQVFColumnBody::LoadTitle(std::string_view title) {
  Title = vq::StringOf(title);
  StoredTitle = title;
}

void VQVFColumnBody::ClearSecondarySort() {
  ColumnRecord.Flags1 &= static_cast<std::uint16_t>(~(VIEWCOLUMN_SECOND_SORT | VIEWCOLUMN_SECOND_DESCENDING));
  ColumnExtension.SecondarySortColumn = 0;
}

void VQVFColumnBody::Touch(unsigned short dirty) {
  DirtyFlags |= static_cast<std::uint16_t>(dirty | kChanged);
  Owner->SetState(VQViewFolderBody::kDesignChanged | VQViewFolderBody::kColumnsChanged, true);
}

VQVFColumn::VQVFColumn(VQVFColumnBody* body) : VQSmartPtr(body) {}

VQVFColumn& VQVFColumn::operator=(VQVFColumnBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQVFColumn::GetClassID() const { return VQCLASSID_VQVFCOLUMN; }

VQSTATUS VQVFColumn::Check(VQVFColumnBody** body, Kind kind) const {
  if (Body == nullptr || GetColumnBody()->GetOwner() == nullptr) return VQERR_OBJECT_NOT_INITIALIZED;
  if (kind == Kind::NotCalendar && GetColumnBody()->GetOwner()->IsCalendar()) return VQERR_NOT_FOR_CALENDAR;
  *body = GetColumnBody();
  return VQ_OK;
}

VQVFColumnBody* VQVFColumn::Require(Kind kind) const {
  VQVFColumnBody* body = nullptr;
  vq::ThrowIfError(Check(&body, kind));
  return body;
}

unsigned long VQVFColumn::GetColumnCount() const { return Require()->GetOwner()->GetColumns().GetCount(); }
unsigned long VQVFColumn::GetColumnNumber() const { return Require()->GetNumber(); }

VQSTATUS VQVFColumn::GetViewFolder(VQViewFolder* view) const {
  VQVFColumnBody* body = nullptr;
  VQSTATUS status = Check(&body);
  if (status == VQ_OK && view == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK) *view = body->GetOwner();
  return vq::Apply(status);
}
