// Handles on references and hide records.
#include "vq/automation/vqformula.h"
#include "vq/richtext/vqpabdef.h"

namespace {

void RequireType(const VQRTObjectBody* body, VQRTTYPE type) {
  if (body != nullptr && !body->IsType(type)) vq::Throw(VQERR_CONVERSION_FAILED);
}

vq::PABIDs IdentifiersOf(const VQRTObject& object) {
  if (object.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  vq::PABIDs ids;
  vq::ThrowIfError(vq::ReadPABIDs(*object.GetRTObjectBody(), &ids));
  return ids;
}

VQSTATUS SetIdentifiers(const VQRTObject& object, vq::PABIDs ids) {
  if (object.IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(vq::WritePABIDs(*object.GetRTObjectBody(), ids));
}

}  // namespace

VQPABReference::VQPABReference(unsigned short pabid) { *this = vq::MakePABReference({pabid, pabid}); }
VQPABReference::VQPABReference(const VQRTObject& object) { *this = object; }

void VQPABReference::ValidateRTType(const VQRTObjectBody* body) const { RequireType(body, VQRTTYPE_PAB_REFERENCE); }

unsigned short VQPABReference::GetPABID() const { return IdentifiersOf(*this).Second; }
unsigned short VQPABReference::GetSourcePABID() const { return IdentifiersOf(*this).First; }
VQSTATUS VQPABReference::SetPABID(unsigned short pabid) { return SetIdentifiers(*this, {pabid, pabid}); }
VQSTATUS VQPABReference::SetPABID(unsigned short source, unsigned short destination) {
  return SetIdentifiers(*this, {source, destination});
}

VQPABFormulaReference::VQPABFormulaReference(const VQRTObject& object) { *this = object; }

void VQPABFormulaReference::ValidateRTType(const VQRTObjectBody* body) const {
  RequireType(body, VQRTTYPE_PAB_FORMULA_REFERENCE);
}

VQPABHide::VQPABHide(const VQRTObject& object) { *this = object; }

void VQPABHide::ValidateRTType(const VQRTObjectBody* body) const { RequireType(body, VQRTTYPE_PAB_HIDE); }

unsigned short VQPABHide::GetPABID() const { return IdentifiersOf(*this).First; }
VQSTATUS VQPABHide::SetPABID(unsigned short pabid) { return SetIdentifiers(*this, {pabid, pabid}); }

VQSTATUS VQPABHide::GetFormula(VQFormula* formula) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (formula == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  std::string code;
  if (VQSTATUS status = vq::ReadHideFormula(*GetRTObjectBody(), &code)) return vq::Apply(status);
  if (code.empty()) return VQWARN_NOT_FOUND;
  VQFormula made;
  VQSTATUS status = made.SetCode(code.data(), code.size());
  if (status == VQ_OK) *formula = made;
  return status;
}

VQSTATUS VQPABHide::SetFormula(const VQFormula& formula) {
  if (formula.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (formula.GetFormulaBody()->GetCode() == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  std::string code(formula.GetCode(), formula.GetCodeLength());
  VQRTObject target = Body != nullptr ? VQRTObject(*this) : vq::MakePABHide(0);
  vq::PABIDs ids;
  if (VQSTATUS status = vq::ReadPABIDs(*target.GetRTObjectBody(), &ids)) return vq::Apply(status);
  if (VQSTATUS status = vq::WriteHideFormula(*target.GetRTObjectBody(), ids.First, code)) return vq::Apply(status);
  *this = target;
  return VQ_OK;
}
