#include "vq/richtext/vqrtobj.h"

#include "engine/ods.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQRTObject::VQRTObject(const VQRTObject& other) : VQSmartPtr() { Attach(other.GetRTObjectBody(), other.Offset); }

VQRTObject::VQRTObject(VQRTObjectBody* body) : VQSmartPtr(body) {}

VQRTObject::VQRTObject(VQStylizedTextBody* body, unsigned long offset) : VQSmartPtr() {
  if (offset != 0 && (!body || !body->HasPlace(offset))) vq::Throw(VQERR_INVALID_PARAMETER);
  Attach(body, offset);
}

VQRTObject::~VQRTObject() {
  vq::Edit::Forget(this);
  if (Offset != 0) static_cast<VQStylizedTextBody*>(Body)->RemoveRTChar(this);
}

VQRTObject& VQRTObject::operator=(const VQRTObject& other) {
  if (this == &other) return *this;
  ValidateRTType(other);
  Attach(other.GetRTObjectBody(), other.Offset);
  return *this;
}

VQRTObject& VQRTObject::operator=(VQRTObjectBody* body) {
  ValidateRTType(body);
  Attach(body, 0);
  return *this;
}

void VQRTObject::Attach(VQRTObjectBody* body, unsigned long offset) {
  LeaveRun();
  VQSmartPtr::operator=(body);
  if (offset == 0) return;
  static_cast<VQStylizedTextBody*>(body)->AddRTChar(this);
  Offset = offset;
}

void VQRTObject::MoveTo(unsigned long offset, int) { Offset = offset; }

void VQRTObject::PutBack(VQStylizedTextBody* run, unsigned long offset, int rightEdge) {
  VQSmartPtr::operator=(run);
  MoveTo(offset, rightEdge);
}

void VQRTObject::LeaveRun() {
  if (Offset == 0) return;
  auto& run = static_cast<VQStylizedTextBody&>(*Body);
  run.NoteCharacters();
  run.RemoveRTChar(this);
  Offset = 0;
}

int VQRTObject::DeleteBody() {
  LeaveRun();
  return VQSmartPtr::DeleteBody();
}

VQCLASSID VQRTObject::GetClassID() const { return VQCLASSID_VQRTOBJECT; }

VQRTObjectBody* VQRTObject::GetRTObjectBody() const { return static_cast<VQRTObjectBody*>(Body); }

void VQRTObject::ValidateRTType(const VQRTObject& object) const {
  if (object.Offset == 0) return ValidateRTType(object.GetRTObjectBody());
  // A character is an element whatever its run is.
  const VQCLASSID id = GetClassID();
  if (id != VQCLASSID_VQRTOBJECT && id != VQCLASSID_VQRTELEMENT && id != VQCLASSID_VQRTCHAR) {
    vq::Throw(VQERR_CONVERSION_FAILED);
  }
}

void VQRTObject::ValidateRTType(const VQRTObjectBody*) const {}

VQSTATUS VQRTObject::CheckType(const VQRTObject& object) const {
  return vq::Returned([&]() -> VQSTATUS {
    ValidateRTType(object);
    return VQ_OK;
  });
}

namespace {

VQSTATUS Check(const VQRTObject& object) {
  if (object.IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  return object.GetRTObjectBody()->IsClosed() ? VQERR_OBJECT_CLOSED : VQ_OK;
}

VQRTObjectBody& Require(const VQRTObject& object) {
  vq::ThrowIfError(Check(object));
  return *object.GetRTObjectBody();
}

VQSTATUS Neighbour(VQRTObjectBody* body, VQRTObject* out) {
  return vq::Returned([&] {
    *out = body;
    return body ? VQ_OK : VQWARN_NOT_FOUND;
  });
}

}  // namespace

VQSTATUS VQRTObject::Copy(const VQRTObject& source) {
  if (source.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsNull() && GetRTObjectBody()->GetParent()) return vq::Apply(VQERR_RT_ALREADY_MEMBER);
  const VQSTATUS status = CopyRTObject(source, VQRTCOPYOPTIONS_DEEP);
  if (status != VQ_OK || HasOffset() || GetType() == VQRTTYPE_STYLIZED_TEXT) return status;
  VQRTObjectBody* body = GetRTObjectBody();
  if (!body->IsType(VQRTTYPE_CONTAINER) && !body->IsType(VQRTTYPE_LINK)) return status;
  VQRichText from, to;
  VQSTATUS found = source.GetRTObjectBody()->GetRichText(&from);
  if (!VQIsError(found)) found = body->GetRichText(&to);
  if (VQIsError(found)) return vq::Apply(found);
  return vq::Apply(body->ConvertLinks(from.IsNull() ? nullptr : &from, to.IsNull() ? nullptr : &to));
}

VQSTATUS VQRTObject::CopyRTObject(const VQRTObject& source, VQRTCOPYOPTIONS options) {
  if (source.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (const VQSTATUS status = CheckType(source)) return vq::Apply(status);
  if (source.HasOffset()) {
    Attach(source.GetRTObjectBody(), source.Offset);
    return VQ_OK;
  }
  if (HasOffset()) return vq::Apply(VQERR_INAPPROPRIATE);
  if (!IsNull()) return vq::Apply(GetRTObjectBody()->Copy(source.GetRTObjectBody(), options));
  const VQRTObject made(source.GetRTObjectBody()->MakeSame());
  const VQSTATUS status = made.GetRTObjectBody()->Copy(source.GetRTObjectBody(), options);
  if (status == VQ_OK) Attach(made.GetRTObjectBody(), 0);
  return vq::Apply(status);
}

VQSTATUS VQRTObject::FindContainer(VQRTTYPE type, VQRTObject* container) const {
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Returned([&] { return GetRTObjectBody()->FindContainer(type, container); }));
}

VQSTATUS VQRTObject::GetNextSibling(VQRTObject* sibling) const {
  if (!sibling) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : Neighbour(GetRTObjectBody()->GetNext(), sibling));
}

VQSTATUS VQRTObject::GetPreviousSibling(VQRTObject* sibling) const {
  if (!sibling) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : Neighbour(GetRTObjectBody()->GetPrevious(), sibling));
}

VQSTATUS VQRTObject::GetParentContainer(VQRTObject* parent) const {
  if (!parent) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  // A character's parent is its run.
  return vq::Apply(Neighbour(HasOffset() ? GetRTObjectBody() : GetRTObjectBody()->GetParent(), parent));
}

VQSTATUS VQRTObject::GetParentContainer(VQRTTYPE type, VQRTObject* parent) const {
  if (!parent) return vq::Apply(VQERR_INVALID_PARAMETER);
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTObjectBody* from = HasOffset() ? GetRTObjectBody() : GetRTObjectBody()->GetParent();
  const VQSTATUS found =
      vq::Returned([&] { return from ? from->FindContainer(type, parent) : VQSTATUS{VQWARN_NOT_FOUND}; });
  if (found == VQWARN_NOT_FOUND) *parent = static_cast<VQRTObjectBody*>(nullptr);
  return vq::Apply(found);
}

VQSTATUS VQRTObject::GetRichText(VQRichText* richText) const {
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : GetRTObjectBody()->GetRichText(richText));
}

VQRTBaseContainerBody* VQRTObject::GetRTBaseContainerBody() const {
  return IsNull() ? nullptr : GetRTObjectBody()->AsBase();
}

unsigned long VQRTObject::GetSize() const { return Require(*this).GetSize(); }

VQSTATUS VQRTObject::GetText(VQString* text) const {
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : GetRTObjectBody()->GetText(text));
}

VQSTATUS VQRTObject::GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) const {
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : GetRTObjectBody()->GetText(start, end, text));
}

VQRTTYPE VQRTObject::GetType() const {
  if (IsNull()) return VQRTTYPE_NONE;
  return HasOffset() ? VQRTTYPE_CHAR : GetRTObjectBody()->GetType();
}

namespace {

// Whether the container around `beside` would be read back with the object in that place.
VQSTATUS CheckSibling(const VQRTObjectBody& beside, const VQRTObjectBody& object, bool behind) {
  const VQRTBaseContainerBody* parent = beside.GetParent();
  if (!parent || object.GetParent()) return VQ_OK;  // the body's to refuse
  const bool editable = parent->IsType(VQRTTYPE_CONTAINER) && parent->GetType() != VQRTTYPE_STYLIZED_TEXT;
  if (!editable || (behind && beside.GetType() == VQRTTYPE_HOTSPOT_END)) return VQERR_CANT_INSERT_TYPE;
  if (static_cast<const VQRTContainerBody*>(parent)->CanInsertType(object.GetType())) return VQ_OK;
  return parent->IsType(VQRTTYPE_HOTSPOT) ? VQERR_RT_HOTSPOT_CONTENT : VQERR_CANT_INSERT_TYPE;
}

}  // namespace

VQSTATUS VQRTObject::InsertBeside(VQRTObject* object, bool behind) {
  if (!object || object->IsNull() || object->HasOffset()) return VQERR_INVALID_PARAMETER;
  const VQSTATUS status = HasOffset() ? VQERR_INAPPROPRIATE : Check(*this);
  if (status != VQ_OK) return status;
  VQRTObjectBody& body = *GetRTObjectBody();
  VQRTObjectBody& sibling = *object->GetRTObjectBody();
  if (VQSTATUS refused = CheckSibling(body, sibling, behind)) return refused;
  return vq::Whole(body, [&] {
    if (!body.GetParent() || sibling.GetParent() || sibling.IsClosed()) {
      return behind ? body.InsertNextSibling(&sibling) : body.InsertPreviousSibling(&sibling);
    }
    return static_cast<VQRTContainerBody*>(body.GetParent())->TakeIn(*object, body, behind);
  });
}

VQSTATUS VQRTObject::InsertNextSibling(VQRTObject* object) { return vq::Apply(InsertBeside(object, true)); }
VQSTATUS VQRTObject::InsertPreviousSibling(VQRTObject* object) { return vq::Apply(InsertBeside(object, false)); }

int VQRTObject::IsDirty() const { return Require(*this).IsDirty(); }

int VQRTObject::IsLeftOf(const VQRTObject& other) const {
  const VQRTObjectBody& body = Require(*this);
  if (other.IsNull()) return 1;
  Require(other);
  if (HasOffset() && other.HasOffset() && Body == other.Body) return Offset < other.Offset;
  return body.IsLeftOf(other.GetRTObjectBody());
}

int VQRTObject::IsType(VQRTTYPE type) const {
  if (!vq::IsRTTypeNumber(type)) vq::Throw(VQERR_OUT_OF_RANGE);
  return vq::IsRTType(GetType(), type);
}

int VQRTObject::IsValid() const { return !IsNull() && GetRTObjectBody()->IsValid(); }

VQSTATUS VQRTObject::RemoveThis(int keepInTree) {
  if (HasOffset()) return vq::Apply(VQERR_INAPPROPRIATE);
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(vq::Whole(*GetRTObjectBody(), [&] { return GetRTObjectBody()->RemoveThis(keepInTree); }));
}

VQSTATUS VQRTObject::SetDirty(int dirty) {
  const VQSTATUS status = Check(*this);
  return vq::Apply(status != VQ_OK ? status : GetRTObjectBody()->SetDirty(dirty));
}

VQSTATUS VQRTObject::SetOffset(unsigned long offset) {
  if ((offset == 0) != (Offset == 0)) return vq::Apply(VQERR_CORRUPTED);
  if (offset != 0 && !static_cast<VQStylizedTextBody*>(Body)->HasPlace(offset)) {
    return vq::Apply(VQERR_INVALID_PARAMETER);
  }
  if (offset != 0) static_cast<VQStylizedTextBody*>(Body)->NoteCharacters();
  Offset = offset;
  return VQ_OK;
}

VQSTATUS VQRTObject::SetRTChar(VQStylizedTextBody* body, unsigned long offset) {
  if (!body || offset == 0) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (body->IsClosed()) return vq::Apply(VQERR_OBJECT_CLOSED);
  if (!body->HasPlace(offset)) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (const VQSTATUS status = CheckType(VQRTObject(body, offset))) return vq::Apply(status);
  Attach(body, offset);
  return VQ_OK;
}

VQSTATUS VQRTObject::Update() {
  VQRichText richText;
  VQSTATUS status = Check(*this);
  if (status == VQ_OK) status = GetRTObjectBody()->GetRichText(&richText);
  return vq::Apply(status != VQ_OK ? status : richText.GetRichTextBody()->Flush());
}

VQRTElement::VQRTElement(const VQRTObject& object) {
  VQRTElement::ValidateRTType(object.HasOffset() ? nullptr : object.GetRTObjectBody());
  Attach(object.GetRTObjectBody(), object.GetOffset());
}

VQCLASSID VQRTElement::GetClassID() const { return VQCLASSID_VQRTELEMENT; }

void VQRTElement::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_ELEMENT)) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQCompositeData::VQCompositeData(const VQRTObject& object) {
  VQCompositeData::ValidateRTType(object.GetRTObjectBody());
  Attach(object.GetRTObjectBody(), 0);
}

VQCLASSID VQCompositeData::GetClassID() const { return VQCLASSID_VQCOMPOSITEDATA; }

void VQCompositeData::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_COMPOSITE_DATA)) vq::Throw(VQERR_CONVERSION_FAILED);
}

unsigned short VQCompositeData::GetCDSignature() const { return Require(*this).GetCDSignature(); }

VQSTATUS VQCompositeData::Read(unsigned long offset, void* buffer, unsigned long size) const {
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  if (offset > vq::kRecordLimit || size > vq::kRecordLimit) return vq::Apply(VQERR_RT_INVALID);
  return vq::Apply(
      GetRTObjectBody()->ReadRecord(static_cast<std::uint32_t>(offset), buffer, static_cast<std::uint32_t>(size)));
}

VQSTATUS VQCompositeData::ReadODS(unsigned short structureCode, void* target, unsigned long offset) const {
  const VQSTATUS status = Check(*this);
  if (status != VQ_OK) return vq::Apply(status);
  if (offset > vq::kRecordLimit) return vq::Apply(VQERR_RT_INVALID);
  return vq::Apply(GetRTObjectBody()->ReadODS(structureCode, target, static_cast<std::uint32_t>(offset)));
}

VQSTATUS VQCompositeData::CheckWrite(const void* buffer, unsigned long offset) {
  if (!buffer) return VQERR_INVALID_PARAMETER;
  const std::uint32_t size = IsNull() ? 0 : GetRTObjectBody()->GetRecordSize();
  if (offset > size) return VQERR_INVALID_PARAMETER;
  if (IsNull()) Attach(new VQRTElementBody(VQRTTYPE_COMPOSITE_DATA, static_cast<unsigned short>(0)), 0);
  return Check(*this);
}

VQSTATUS VQCompositeData::WriteResult(unsigned long offset) const {
  if (offset != 0) return VQ_OK;
  switch (GetRTObjectBody()->GetCDSignature()) {
    case SIG_CD_PABDEFINITION:
    case SIG_CD_PABFORMULAREF:
    case SIG_CD_PABHIDE:
    case SIG_CD_PABREFERENCE:
    case SIG_CD_PARAGRAPH:
    case SIG_CD_STYLENAME:
    case SIG_CD_TABLEBEGIN:
    case SIG_CD_TABLECELL:
    case SIG_CD_TABLEEND:
    case SIG_CD_TEXT:
      return VQWARN_CD_OTHER_CLASS;
    default:
      return VQ_OK;
  }
}

VQSTATUS VQCompositeData::Write(unsigned long size, void* buffer, unsigned long offset) {
  if (size > vq::kRecordLimit || offset + size > vq::kRecordLimit) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQSTATUS status = CheckWrite(buffer, offset);
  if (status == VQ_OK) {
    status =
        GetRTObjectBody()->WriteRecord(static_cast<std::uint32_t>(offset), buffer, static_cast<std::uint32_t>(size));
  }
  return vq::Apply(status != VQ_OK ? status : WriteResult(offset));
}

VQSTATUS VQCompositeData::WriteODS(unsigned short structureCode, void* source, unsigned long offset) {
  const unsigned long size = EngOdsLength(structureCode);
  if (size == 0 || offset > vq::kRecordLimit - size) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQSTATUS status = CheckWrite(source, offset);
  if (status == VQ_OK) {
    status = GetRTObjectBody()->WriteODS(structureCode, source, static_cast<std::uint32_t>(offset));
  }
  return vq::Apply(status != VQ_OK ? status : WriteResult(offset));
}

VQNewParagraph::VQNewParagraph(const VQRTObject& object) {
  VQNewParagraph::ValidateRTType(object.GetRTObjectBody());
  Attach(object.GetRTObjectBody(), 0);
}

VQCLASSID VQNewParagraph::GetClassID() const { return VQCLASSID_VQNEWPARAGRAPH; }

void VQNewParagraph::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_NEW_PARAGRAPH)) vq::Throw(VQERR_CONVERSION_FAILED);
}
