#include "vq/automation/vqscript.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

constexpr unsigned long kMostCode = 0xFFFFFFFFUL;
constexpr unsigned long kMostSource = 65534;

VQString SourceOf(const char* source, unsigned long length) {
  if (source == nullptr && length != 0) vq::Throw(VQERR_NULL_POINTER);
  if (length > kMostSource) vq::Throw(VQERR_STRING_TOO_LONG);
  return VQString(reinterpret_cast<const VQCHAR*>(source), length);
}

// What the machine has no room for leaves the script as it was.
template <typename Change>
VQSTATUS WithRoom(Change change) {
  try {
    return vq::Caught(change);
  } catch (const std::bad_alloc&) {
    return VQERR_INSUFFICIENT_MEMORY;
  }
}

}  // namespace

VQTamarinScriptBody::~VQTamarinScriptBody() { Close(); }

VQTamarinScript::VQTamarinScript(VQTamarinScriptBody* body) : VQSmartPtr(body) {}

VQTamarinScript::VQTamarinScript(const VQString& source) { vq::ThrowIfError(SetSource(source)); }

VQTamarinScript::VQTamarinScript(const char* source, unsigned long sourceLength)
    : VQTamarinScript(SourceOf(source, sourceLength)) {}

VQTamarinScript::VQTamarinScript(const VQString& source, const char* code, unsigned long codeLength)
    : VQTamarinScript(source) {
  vq::ThrowIfError(SetObjectCode(code, codeLength));
}

VQTamarinScript::VQTamarinScript(const char* source, unsigned long sourceLength, const char* code,
                                 unsigned long codeLength)
    : VQTamarinScript(SourceOf(source, sourceLength), code, codeLength) {}

const VQTamarinScriptBody& VQTamarinScript::Checked() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return *GetScriptBody();
}

VQSTATUS VQTamarinScript::PrepareToModify() {
  if (Body == nullptr) {
    VQSmartPtr::operator=(new VQTamarinScriptBody);
  } else if (Body->GetRefCount() > 1) {
    VQSmartPtr::operator=(new VQTamarinScriptBody(*GetScriptBody()));
  }
  return VQ_OK;
}

VQString VQTamarinScript::GetSource() const { return Checked().Source; }

VQSTATUS VQTamarinScript::SetSource(const VQString& source) {
  const VQString kept = source;
  if (VQSTATUS status = PrepareToModify()) return vq::Apply(status);
  GetScriptBody()->Source = kept;
  return VQ_OK;
}

unsigned long VQTamarinScript::GetSourceCodeLength() const { return Checked().Source.GetBufLength(); }

int VQTamarinScript::HasSource() const { return Checked().Source.GetBufLength() != 0; }

const char* VQTamarinScript::GetObjectCode() const { return HasObjectCode() ? Checked().ObjectCode.data() : nullptr; }

unsigned long VQTamarinScript::GetObjectCodeLength() const { return Checked().ObjectCode.size(); }

int VQTamarinScript::HasObjectCode() const { return !Checked().ObjectCode.empty(); }

VQSTATUS VQTamarinScript::SetObjectCode(const char* code, unsigned long length) {
  if (code == nullptr && length != 0) return vq::Apply(VQERR_NULL_POINTER);
  if (length > kMostCode) return vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(WithRoom([&] {
    std::vector<char> copy(code, code + length);
    const VQSTATUS status = PrepareToModify();
    if (status == VQ_OK) GetScriptBody()->ObjectCode.swap(copy);
    return status;
  }));
}

VQSTATUS VQTamarinScript::SetObjectCodeLength(unsigned long length) {
  if (length > kMostCode) return vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(WithRoom([&] {
    if (VQSTATUS status = PrepareToModify()) return status;
    std::vector<char>& code = GetScriptBody()->ObjectCode;
    code.resize(length);
    if (length == 0) code.shrink_to_fit();
    return VQ_OK;
  }));
}

VQSTATUS VQTamarinScript::ReadObjectCode(unsigned long offset, char* buffer, unsigned long length) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (buffer == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  const std::vector<char>& code = GetScriptBody()->ObjectCode;
  if (offset > code.size()) return vq::Apply(VQERR_OUT_OF_RANGE);
  const char* const from = code.data() + offset;
  std::copy_n(from, std::min<unsigned long>(length, code.size() - offset), buffer);
  return VQ_OK;
}

VQSTATUS VQTamarinScript::WriteObjectCode(unsigned long offset, const char* buffer, unsigned long length) {
  if (buffer == nullptr && length != 0) return vq::Apply(VQERR_NULL_POINTER);
  if (offset > kMostCode || length > kMostCode - offset) return vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(WithRoom([&] {
    const std::vector<char> bytes(buffer, buffer + length);
    if (VQSTATUS status = PrepareToModify()) return status;
    std::vector<char>& code = GetScriptBody()->ObjectCode;
    if (code.size() < offset + length) code.resize(offset + length);
    std::copy(bytes.begin(), bytes.end(), code.begin() + static_cast<std::ptrdiff_t>(offset));
    return VQ_OK;
  }));
}
