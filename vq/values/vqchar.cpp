// One character of a string.
#include <cstring>

#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/vqstring.h"

namespace {

constexpr char kFile[] = "VQSTRING";
constexpr char kLineFeed = 10;

}  // namespace

VQChar::VQChar() : StringBody(nullptr), Position(0) {}

// A string's own: the position is below the length.
VQChar::VQChar(VQStringBody& body, std::uint32_t position) : StringBody(&body), Position(position) {
  body.AddReference();
}

VQChar::VQChar(VQStringBody* body, unsigned long position)
    : StringBody(nullptr), Position(static_cast<std::uint32_t>(position)) {
  if (body == nullptr) vq::AssertionFailed("string", kFile, 104);
  if (position >= body->GetLength()) vq::AssertionFailed("pos < string->GetLength()", kFile, 107);
  Attach(body);
}

VQChar::VQChar(const VQChar& other) : VQQuillonClass(other), StringBody(nullptr), Position(other.Position) {
  Attach(other.StringBody);
}

void VQChar::Attach(VQStringBody* body) {
  VQStringBody* old = StringBody;
  StringBody = body;
  if (body != nullptr) body->AddReference();
  if (old != nullptr) old->Release();
}

void VQChar::CheckBody() const {
  if (StringBody == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
}

VQCLASSID VQChar::GetClassID() const { return VQCLASSID_VQCHAR; }

VQSTATUS VQChar::ReplaceBytes(const VQCHAR* text, unsigned long bytes) {
  return StringBody->Splice(StringBody->GetOffset(Position), GetByteCount(), text, bytes);
}

// A character without a string gets one of its own.
VQChar& VQChar::operator=(const VQChar& other) {
  if (this == &other) return *this;
  VQCHAR bytes[8];
  const unsigned long count = other.GetByteCount();
  std::memcpy(bytes, other.GetCharPtr(), count);
  if (StringBody == nullptr) Attach(new VQStringBody);
  VQQuillonClass::operator=(other);
  vq::ThrowIfError(ReplaceBytes(bytes, count));
  return *this;
}

VQChar& VQChar::Assign(char c, int store) {
  CheckBody();
  vq::ThrowIfError(vq::CheckInitialized());
  VQCHAR bytes[5] = {static_cast<VQCHAR>(c)};
  std::uint16_t count = 1;
  if (!store) count = EngTextTranslate(ENG_TRANSLATE_PLATFORM_TO_STORE, &c, 1, bytes, sizeof bytes);
  if (count == 1 && bytes[0] == 0) bytes[0] = kLineFeed;
  vq::ThrowIfError(ReplaceBytes(bytes, count));
  return *this;
}

void VQChar::Setup(char c, int store) {
  vq::ThrowIfError(vq::CheckInitialized());
  const VQCHAR* byte = reinterpret_cast<const VQCHAR*>(&c);
  const VQString text = store ? VQString(byte, 1) : VQString(&c, 1);
  auto body = std::make_unique<VQStringBody>();
  vq::ThrowIfError(body->TakeStoreText(text.GetBuf(), text.GetBufLength()));
  Attach(body.release());
  Position = 0;
}

const VQCHAR* VQChar::GetTextPtr() const {
  if (StringBody == nullptr) vq::AssertionFailed("Body", kFile, 418);
  return StringBody->GetBuf() + StringBody->GetOffset(Position);
}

// The session comes first; with a body, finding the place looks for it.
const VQCHAR* VQChar::GetCharPtr() const {
  if (StringBody == nullptr) vq::Throw(vq::IsInitialized() ? VQERR_OBJECT_NOT_INITIALIZED : VQERR_NOT_INITIALIZED);
  return GetTextPtr();
}

unsigned long VQChar::GetByteCount() const {
  CheckBody();
  const unsigned long offset = StringBody->GetOffset(Position);
  std::uint32_t size = 0;
  EngTextSpanBytes(StringBody->GetBuf() + offset, static_cast<std::uint32_t>(StringBody->GetBufLength() - offset), 1,
                   &size);
  return size;
}

char VQChar::GetChar(int store) const {
  const VQCHAR* text = GetCharPtr();
  unsigned long count = GetByteCount();
  char result[4] = {};
  if (store) {
    result[0] = static_cast<char>(*text);
  } else {
    count = EngTextTranslate(ENG_TRANSLATE_STORE_TO_PLATFORM, text, static_cast<std::uint16_t>(count), result,
                             sizeof result);
  }
  if (count != 1) return 0;
  return result[0] == 0 ? kLineFeed : result[0];
}

int VQChar::IsAlnum() const { return EngCharIsAlnum(GetCharPtr(), EngTextCharset()); }

int VQChar::IsAlpha() const { return EngCharIsAlpha(GetCharPtr(), EngTextCharset()); }

int VQChar::IsArith() const { return EngCharIsArith(GetCharPtr(), EngTextCharset()); }

int VQChar::IsCntrl() const { return EngCharIsCntrl(GetCharPtr(), EngTextCharset()); }

int VQChar::IsDigit() const { return EngCharIsDigit(GetCharPtr(), EngTextCharset()); }

int VQChar::IsLower() const { return EngCharIsLower(GetCharPtr(), EngTextCharset()); }

int VQChar::IsPunct() const { return EngCharIsPunct(GetCharPtr(), EngTextCharset()); }

int VQChar::IsSpace() const { return EngCharIsSpace(GetCharPtr(), EngTextCharset()); }

int VQChar::IsUpper() const { return EngCharIsUpper(GetCharPtr(), EngTextCharset()); }

int VQChar::IsNull() const { return StringBody == nullptr || *GetCharPtr() == 0; }

VQChar& VQChar::TranslateWith(unsigned short mode) {
  const VQCHAR* text = GetCharPtr();
  const unsigned long size = GetByteCount();
  VQ_ASSERT(size, kFile);
  VQCHAR result[16];  // one character can become three
  const std::uint16_t count = EngTextTranslate(mode, text, static_cast<std::uint16_t>(size), result, sizeof result);
  vq::ThrowIfError(ReplaceBytes(result, count));
  return *this;
}

VQChar& VQChar::ToLower() { return TranslateWith(ENG_TRANSLATE_LOWER); }

VQChar& VQChar::ToUpper() { return TranslateWith(ENG_TRANSLATE_UPPER); }

VQChar& VQChar::RemoveAccent() { return TranslateWith(ENG_TRANSLATE_STRIP_ACCENTS); }

VQChar VQString::operator[](unsigned long position) {
  vq::ThrowIfError(vq::CheckInitialized());
  VQStringBody* body = Body != nullptr && Body->GetRefCount() == 1 ? StringBody() : PrepareToModify();
  if (position >= body->GetLength()) vq::Throw(VQERR_INVALID_PARAMETER);
  return VQChar(*body, static_cast<std::uint32_t>(position));
}

VQChar VQString::operator[](int position) {
  if (position < 0) vq::Throw(VQERR_INVALID_PARAMETER);
  return (*this)[static_cast<unsigned long>(position)];
}

VQChar VQString::operator[](int position) const { return (*const_cast<VQString*>(this))[position]; }
