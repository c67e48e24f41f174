#include "vq/automation/vqformula.h"

#include <cstring>
#include <functional>

#include "engine/formula.h"
#include "engine/memory.h"
#include "vq/store/vqitem.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"

namespace {

bool HoldsType(VQCLASSID handle, unsigned short type) {
  unsigned kind = type & 0xFF00U;
  switch (handle) {
    case VQCLASSID_VQITEM:
      return true;
    case VQCLASSID_VQTEXT:
      return kind == TYPE_TEXT;
    case VQCLASSID_VQNUMBERS:
      return kind == TYPE_NUMBER;
    case VQCLASSID_VQDATETIMES:
      return kind == TYPE_TIME;
    default:
      return false;
  }
}

// A value of its own, with the body that its type has.
VQItemBody* MakeValue(unsigned short type, const unsigned char* data, unsigned long length) {
  switch (type & 0xFF00U) {
    case TYPE_TEXT:
      return new VQTextBody(type, data, length);
    case TYPE_NUMBER:
      return new VQNumbersBody(type, data, length);
    case TYPE_TIME:
      return new VQDatetimesBody(type, data, length);
    default:
      return new VQItemBody(type, data, length);
  }
}

// An item in a slate keeps its body, so that its value is of the kind that the body has, or of any for a plain one.
bool KeepsKind(const VQItem& item, unsigned short type) {
  VQCLASSID body = item.GetItemBody()->GetClassID();
  switch (body) {
    case VQCLASSID_VQTEXTBODY:
      return HoldsType(VQCLASSID_VQTEXT, type);
    case VQCLASSID_VQNUMBERSBODY:
      return HoldsType(VQCLASSID_VQNUMBERS, type);
    case VQCLASSID_VQDATETIMESBODY:
      return HoldsType(VQCLASSID_VQDATETIMES, type);
    default:
      return true;
  }
}

VQSTATUS StoreValue(const unsigned char* value, unsigned length, VQItem* item) {
  if (value == nullptr || length < 2) return VQERR_CORRUPTED;
  unsigned short type = static_cast<unsigned short>(value[0] | value[1] << 8);
  if (!HoldsType(item->GetClassID(), type)) return VQERR_INCORRECT_ITEM_TYPE;
  if (!item->IsNull() && KeepsKind(*item, type)) {
    return item->GetItemBody()->ReplaceValue(type, value + 2, length - 2);
  }
  if (!item->IsNull() && item->IsSlateItem()) return VQERR_INCORRECT_ITEM_TYPE;
  *item = MakeValue(type, value + 2, length - 2);
  return VQ_OK;
}

}  // namespace

VQFormulaBody::~VQFormulaBody() { Close(); }

VQSTATUS VQFormulaBody::Close() {
  DropCode();
  return VQ_OK;
}

void VQFormulaBody::DropCode() {
  if (Compute != 0) EngFormulaComputeStop(Compute);
  if (Block != 0) {
    EngMemUnlock(Block);
    EngMemFree(Block);
  }
  Compute = 0;
  Block = 0;
  Code = nullptr;
  CodeLength = 0;
}

VQSTATUS VQFormulaBody::KeepBlock(ENGHANDLE block, std::uint32_t length) {
  const char* bytes = static_cast<const char*>(EngMemLock(block));
  if (bytes == nullptr) return VQERR_CORRUPTED;
  DropCode();
  Block = block;
  Code = bytes;
  CodeLength = length;
  return VQ_OK;
}

VQSTATUS VQFormulaBody::Compile(const VQString& text, unsigned long* errorOffset, unsigned long* errorLength) {
  if (text.GetBufLength() == 0) return VQERR_NULL_STRING;
  if (text.GetBufLength() > 0xFFFF) return VQERR_STRING_TOO_LONG;
  ENGHANDLE block = 0;
  uint16_t length = 0;
  ENGFORMULAERROR error{};
  VQSTATUS status = vq::FromEngine(
      EngFormulaCompile(text.GetBuf(), static_cast<uint16_t>(text.GetBufLength()), &block, &length, &error));
  if (status != VQ_OK) {
    if (errorOffset != nullptr) *errorOffset = error.Offset;
    if (errorLength != nullptr) *errorLength = error.Length;
    return status;
  }
  if (VQSTATUS kept = KeepBlock(block, length)) {
    EngFormulaRelease(block);
    return kept;
  }
  Text = text;
  return VQ_OK;
}

VQSTATUS VQFormulaBody::TakeCode(const char* code, unsigned long length, int shared) {
  if (code == nullptr || length == 0 || length > 0xFFFFFFFFUL) return VQERR_INVALID_PARAMETER;
  std::uint32_t size = static_cast<std::uint32_t>(length);
  // A part of the code that is held now would go with it: that is copied.
  const std::less<const char*> before;
  const bool own = Code != nullptr && !before(code, Code) && before(code, Code + CodeLength);
  if (shared && !own) {
    DropCode();
    Code = code;
    CodeLength = size;
    Text = VQString();
    return VQ_OK;
  }
  ENGHANDLE block = 0;
  if (VQSTATUS status = vq::FromEngine(EngMemAlloc(0, size, &block))) return status;
  std::memcpy(EngMemLock(block), code, size);
  EngMemUnlock(block);
  if (VQSTATUS status = KeepBlock(block, size)) return status;
  Text = VQString();
  return VQ_OK;
}

VQSTATUS VQFormulaBody::EnsureText() {
  if (!Text.IsNull() || Code == nullptr) return VQ_OK;
  if (VQSTATUS status = vq::FromEngine(EngFormulaVerify(Code, CodeLength))) return status;
  ENGHANDLE block = 0;
  uint16_t length = 0;
  if (VQSTATUS status = vq::FromEngine(EngFormulaDecompile(Code, 0, &block, &length))) return status;
  const void* bytes = EngMemLock(block);
  VQSTATUS status = bytes != nullptr ? VQ_OK : VQERR_CORRUPTED;
  if (length > VQStringBody::kMaximumBytes) status = VQERR_STRING_TOO_LONG;
  if (status == VQ_OK) Text = VQString(static_cast<const VQCHAR*>(bytes), length);
  EngMemUnlock(block);
  EngMemFree(block);
  return status;
}

VQSTATUS VQFormulaBody::EnsureCompute() {
  if (Compute != 0) return VQ_OK;
  if (Code == nullptr) return VQERR_OBJECT_NOT_INITIALIZED;
  if (VQSTATUS status = vq::FromEngine(EngFormulaVerify(Code, CodeLength))) return status;
  return vq::FromEngine(EngFormulaComputeStart(0, Code, &Compute));
}

VQSTATUS VQFormulaBody::Evaluate(ENGHANDLE slate, VQItem* result, unsigned short* flags) {
  if (result == nullptr) return VQERR_INVALID_PARAMETER;
  if (VQSTATUS status = EnsureCompute()) return status;
  ENGHANDLE block = 0;
  uint16_t length = 0, outFlags = 0;
  if (VQSTATUS status = vq::FromEngine(EngFormulaEvaluate(Compute, slate, &block, &length, &outFlags))) return status;
  VQSTATUS status = StoreValue(static_cast<const unsigned char*>(EngMemLock(block)), length, result);
  EngMemUnlock(block);
  EngMemFree(block);
  if (status == VQ_OK && flags != nullptr) *flags = outFlags;
  return status;
}

VQFormula::VQFormula(VQFormulaBody* body) : VQSmartPtr(body) {}

VQFormula::VQFormula(const VQString& text) { vq::ThrowIfError(Init(text)); }

VQFormula::VQFormula(const char* code, unsigned long length, int shared) {
  vq::ThrowIfError(SetCode(code, length, shared));
}

VQFormula& VQFormula::operator=(const VQString& text) {
  vq::ThrowIfError(Init(text));
  return *this;
}

VQFormulaBody& VQFormula::Checked() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return *GetFormulaBody();
}

VQSTATUS VQFormula::Adopt(VQFormulaBody* body, VQSTATUS status) {
  VQFormula made(body);
  if (status == VQ_OK) *this = made;
  return vq::Apply(status);
}

VQSTATUS VQFormula::Init(const VQString& text) { return SetText(text); }

VQSTATUS VQFormula::SetCode(const char* code, unsigned long length, int shared) {
  if (Body != nullptr) return vq::Apply(GetFormulaBody()->TakeCode(code, length, shared));
  VQFormulaBody* body = new VQFormulaBody;
  return Adopt(body, body->TakeCode(code, length, shared));
}

VQSTATUS VQFormula::SetText(const VQString& text, unsigned long* errorOffset, unsigned long* errorLength) {
  if (Body != nullptr) return vq::Apply(GetFormulaBody()->Compile(text, errorOffset, errorLength));
  VQFormulaBody* body = new VQFormulaBody;
  return Adopt(body, body->Compile(text, errorOffset, errorLength));
}

VQSTATUS VQFormula::Evaluate(VQItem* result) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetFormulaBody()->Evaluate(0, result, nullptr));
}

VQSTATUS VQFormula::Evaluate(VQItem* result, const VQSlate& slate, unsigned short* flags) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (slate.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (!slate.IsOpen()) return vq::Apply(VQERR_SLATE_NOT_OPEN);
  return vq::Apply(GetFormulaBody()->Evaluate(slate.GetSlateBody()->GetHandle(), result, flags));
}

const char* VQFormula::GetCode() const {
  if (Checked().GetCode() == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return Checked().GetCode();
}

ENGHANDLE VQFormula::GetCodeHandle() const { return Checked().GetCodeHandle(); }

unsigned long VQFormula::GetCodeLength() const {
  if (Checked().GetCode() == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return Checked().GetCodeLength();
}

VQString VQFormula::GetText() const {
  vq::ThrowIfError(Checked().EnsureText());
  return Checked().GetText();
}
