// String bodies, and the making and changing of strings.
#include "vq/values/vqstring.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <new>

#include "engine/engine.h"
#include "vq/frame/state.h"

namespace {

constexpr VQCHAR kEmptyText[1] = {0};
constexpr unsigned long kMaximum = VQStringBody::kMaximumBytes;
constexpr unsigned long kLineFeed = 10;
// A long text is translated in pieces that fit the engine's 16-bit limits, with up to three bytes out for each byte in.
constexpr std::uint32_t kPieceCharacters = 5000;

template <class Element>
std::unique_ptr<Element[]> Allocate(unsigned long count) {
  std::unique_ptr<Element[]> buffer(new (std::nothrow) Element[count]);
  if (!buffer) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  return buffer;
}

template <class Element>
void ReplaceNuls(Element* text, unsigned long bytes) {
  const auto find = [end = text + bytes](Element* from) {
    return static_cast<Element*>(std::memchr(from, 0, static_cast<std::size_t>(end - from)));
  };
  for (Element* at = text; (at = find(at)) != nullptr; ++at) *at = static_cast<Element>(kLineFeed);
}

// Eight bytes at a time; the last ones may be looked at twice.
bool IsAscii(const VQCHAR* text, unsigned long bytes) {
  constexpr unsigned long kWord = sizeof(std::uint64_t);
  if (bytes < kWord) return std::all_of(text, text + bytes, [](VQCHAR byte) { return byte < 0x80; });
  std::uint64_t any = 0;
  const auto look = [&any](const VQCHAR* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    any |= word;
  };
  for (unsigned long at = 0; at + kWord <= bytes; at += kWord) look(text + at);
  look(text + bytes - kWord);
  return (any & 0x8080808080808080u) == 0;
}

unsigned long StoreLength(const VQCHAR* text) {
  return text == nullptr ? 0 : std::strlen(reinterpret_cast<const char*>(text));
}

std::uint16_t TranslateText(unsigned short mode, const void* text, unsigned long bytes, void* out, unsigned long room) {
  return EngTextTranslate(mode, text, static_cast<std::uint16_t>(bytes), out, static_cast<std::uint16_t>(room));
}

unsigned long SpanBytes(const VQCHAR* text, unsigned long bytes, std::uint32_t characters) {
  std::uint32_t span = 0;
  EngTextSpanBytes(text, static_cast<std::uint32_t>(bytes), characters, &span);
  return span;
}

// `out` has room for three times the bytes.
unsigned long TranslatePieces(unsigned short mode, const VQCHAR* text, unsigned long bytes, void* out) {
  unsigned long total = 0;
  for (unsigned long at = 0; at < bytes;) {
    const unsigned long piece = SpanBytes(text + at, bytes - at, kPieceCharacters);
    total += TranslateText(mode, text + at, piece, static_cast<char*>(out) + total, 3 * piece);
    at += piece;
  }
  return total;
}

// Whether the store text stands for all of the platform text, by the way back.
bool IsWhole(const VQCHAR* text, unsigned long length, unsigned long platform_bytes) {
  auto back = Allocate<char>(3 * length);
  return TranslatePieces(ENG_TRANSLATE_STORE_TO_PLATFORM, text, length, back.get()) >= platform_bytes;
}

std::unique_ptr<VQStringBody> MakeStoreBody(const VQCHAR* text, unsigned long bytes) {
  auto body = std::make_unique<VQStringBody>();
  vq::ThrowIfError(body->TakeStoreText(text, bytes));
  return body;
}

std::unique_ptr<VQStringBody> MakePlatformBody(const char* text, unsigned long bytes) {
  auto body = std::make_unique<VQStringBody>();
  vq::ThrowIfError(body->TakePlatformText(text, bytes));
  return body;
}

}  // namespace

VQStringBody::VQStringBody()
    : CharCount(0), CursorOffset(0), CursorPosition(0), Short{}, ByteLength(0), Capacity(kShortBytes) {}

VQStringBody::~VQStringBody() = default;

VQCLASSID VQStringBody::GetClassID() const { return VQCLASSID_VQSTRINGBODY; }

VQCHAR* VQStringBody::Contents() { return Text ? Text.get() : Short; }

void VQStringBody::DropCaches() {
  PlatformText.reset();
  CharCount = 0;
  CursorOffset = 0;
  CursorPosition = 0;
}

void VQStringBody::Clear() {
  Text.reset();
  Short[0] = 0;
  ByteLength = 0;
  Capacity = kShortBytes;
  DropCaches();
}

VQSTATUS VQStringBody::TakeStoreText(const VQCHAR* text, unsigned long bytes) {
  if (text == nullptr) bytes = 0;
  if (bytes > kMaximum) return VQERR_STRING_TOO_LONG;
  if (bytes == 0) {
    Clear();
    return VQ_OK;
  }
  // The text given may lie in this very one.
  if (bytes <= kShortBytes) {
    std::memmove(Short, text, bytes);
    Text.reset();
    Capacity = kShortBytes;
  } else {
    auto copy = Allocate<VQCHAR>(bytes + 1);
    std::memcpy(copy.get(), text, bytes);
    Text = std::move(copy);
    Capacity = static_cast<std::uint32_t>(bytes);
  }
  Contents()[bytes] = 0;
  ReplaceNuls(Contents(), bytes);
  ByteLength = static_cast<std::uint32_t>(bytes);
  DropCaches();
  return VQ_OK;
}

VQSTATUS VQStringBody::TakePlatformText(const char* text, unsigned long bytes) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (text == nullptr || bytes == 0) return TakeStoreText(nullptr, 0);
  if (bytes > kMaximum) return VQERR_STRING_TOO_LONG;
  // Every platform character set contains ASCII.
  const auto* plain = reinterpret_cast<const VQCHAR*>(text);
  if (IsAscii(plain, bytes)) return TakeStoreText(plain, bytes);
  const unsigned long limit = std::min(3 * bytes, kMaximum);
  auto work = Allocate<VQCHAR>(limit);
  const unsigned long length = TranslateText(ENG_TRANSLATE_PLATFORM_TO_STORE, text, bytes, work.get(), limit);
  // A cut limit may have cut the text: at the limit, or short of it where the next character had no room.
  const bool limit_was_cut = limit < 3 * bytes;
  if (limit_was_cut && length + 3 >= limit && (length == limit || !IsWhole(work.get(), length, bytes))) {
    return VQERR_STRING_TOO_LONG;
  }
  return TakeStoreText(work.get(), length);
}

VQSTATUS VQStringBody::SpliceAside(unsigned long offset, unsigned long old_bytes, const VQCHAR* text,
                                   unsigned long new_bytes) {
  const unsigned long total = ByteLength - old_bytes + new_bytes;
  unsigned long capacity = total;
  if (total > Capacity) capacity = std::min(std::max<unsigned long>(total, ByteLength + ByteLength / 2), kMaximum);
  auto copy = Allocate<VQCHAR>(capacity + 1);
  const VQCHAR* old = GetBuf();
  std::memcpy(copy.get(), old, offset);
  std::memcpy(copy.get() + offset, text, new_bytes);
  std::memcpy(copy.get() + offset + new_bytes, old + offset + old_bytes, ByteLength - offset - old_bytes + 1);
  Text = std::move(copy);
  ByteLength = static_cast<std::uint32_t>(total);
  Capacity = static_cast<std::uint32_t>(capacity);
  DropCaches();
  return VQ_OK;
}

VQSTATUS VQStringBody::Splice(unsigned long offset, unsigned long old_bytes, const VQCHAR* text,
                              unsigned long new_bytes) {
  const unsigned long total = ByteLength - old_bytes + new_bytes;
  if (total > kMaximum) return VQERR_STRING_TOO_LONG;
  const std::less<const VQCHAR*> before;
  const bool own = !before(text, Contents()) && !before(Contents() + ByteLength, text);
  if (total > Capacity || own) return SpliceAside(offset, old_bytes, text, new_bytes);
  VQCHAR* place = Contents() + offset;
  std::memmove(place + new_bytes, place + old_bytes, ByteLength - offset - old_bytes + 1);
  std::memcpy(place, text, new_bytes);
  ByteLength = static_cast<std::uint32_t>(total);
  DropCaches();
  return VQ_OK;
}

VQSTATUS VQStringBody::Translate(unsigned short mode) {
  if (ByteLength == 0) return VQ_OK;
  auto work = Allocate<VQCHAR>(3 * static_cast<unsigned long>(ByteLength));
  const unsigned long total = TranslatePieces(mode, GetBuf(), ByteLength, work.get());
  return TakeStoreText(work.get(), total);
}

unsigned long VQStringBody::CountCharacters() {
  if (ByteLength == 0) return 0;
  if (EngTextSpanChars(GetBuf(), ByteLength, &CharCount) != ENG_OK) vq::Throw(VQERR_STRING_SIZE);
  return CharCount;
}

const char* VQStringBody::GetPlatformTextPtr() {
  if (PlatformText) return PlatformText.get();
  if (ByteLength == 0) return "";
  auto text = Allocate<char>(3 * static_cast<unsigned long>(ByteLength) + 1);
  const unsigned long total = TranslatePieces(ENG_TRANSLATE_STORE_TO_PLATFORM, GetBuf(), ByteLength, text.get());
  text[total] = 0;
  ReplaceNuls(text.get(), total);
  PlatformText = std::move(text);
  return PlatformText.get();
}

unsigned long VQStringBody::GetOffset(unsigned long position) {
  vq::ThrowIfError(vq::CheckInitialized());
  if (position == 0) return 0;
  if (position == CursorPosition) return CursorOffset;
  if (position > ByteLength) vq::Throw(VQERR_NOT_FOUND);
  if (CharCount == ByteLength) return position;  // each character is one byte
  if (position < CursorPosition) CursorPosition = CursorOffset = 0;
  // A scan steps on by one, and a step over ASCII needs no call.
  const auto steps = static_cast<std::uint32_t>(position - CursorPosition);
  std::uint32_t span = 1;
  const bool plain = steps == 1 && CursorOffset < ByteLength && GetBuf()[CursorOffset] < 0x80;
  if (!plain && EngTextSpanBytes(GetBuf() + CursorOffset, ByteLength - CursorOffset, steps, &span) != ENG_OK) {
    vq::Throw(VQERR_NOT_FOUND);
  }
  CursorOffset += span;
  CursorPosition += steps;
  return CursorOffset;
}

unsigned long VQStringBody::GetPosition(const VQCHAR* place) {
  const auto offset = static_cast<std::uint32_t>(place - GetBuf());
  if (offset < CursorOffset) CursorPosition = CursorOffset = 0;
  std::uint32_t count = 0;
  if (EngTextSpanChars(GetBuf() + CursorOffset, offset - CursorOffset, &count) != ENG_OK) vq::Throw(VQERR_STRING_SIZE);
  CursorOffset = offset;
  CursorPosition += count;
  return CursorPosition;
}

VQString::VQString() : VQSmartPtr(new VQStringBody) {}

VQString::VQString(const VQString& other) : VQSmartPtr(other) {}

VQString::VQString(const VQChar& character) { Setup(character.GetCharPtr(), character.GetByteCount()); }

VQString::VQString(VQStringBody* body) : VQSmartPtr(body != nullptr ? body : new VQStringBody) {}

VQString::VQString(unsigned long number) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  Setup(reinterpret_cast<const VQCHAR*>(digits), static_cast<unsigned long>(end - digits));
}

void VQString::Setup(const char* text) { Setup(text, text == nullptr ? 0 : std::strlen(text)); }

void VQString::Setup(const char* text, unsigned long bytes) {
  if (Body != nullptr && Body->GetRefCount() == 1) {
    vq::ThrowIfError(StringBody()->TakePlatformText(text, bytes));
  } else {
    VQSmartPtr::operator=(MakePlatformBody(text, bytes).release());
  }
}

void VQString::Setup(const VQCHAR* text) { Setup(text, StoreLength(text)); }

void VQString::Setup(const VQCHAR* text, unsigned long bytes) {
  if (Body != nullptr && Body->GetRefCount() == 1) {
    vq::ThrowIfError(StringBody()->TakeStoreText(text, bytes));
  } else {
    VQSmartPtr::operator=(MakeStoreBody(text, bytes).release());
  }
}

VQString& VQString::operator=(const VQString& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQString& VQString::operator=(const VQCHAR* text) {
  if ((text == nullptr || *text == 0) && Body != nullptr && Body->GetRefCount() == 1) {
    StringBody()->Clear();
  } else {
    Setup(text);
  }
  return *this;
}

VQString& VQString::Assign(const char* text) {
  if ((text == nullptr || *text == 0) && Body != nullptr && Body->GetRefCount() == 1) {
    StringBody()->Clear();
  } else {
    Setup(text);
  }
  return *this;
}

VQString& VQString::operator=(const VQChar& character) { return *this = VQString(character); }

VQString& VQString::operator=(unsigned long number) { return *this = VQString(number); }

VQString& VQString::operator=(const VQStringBody* body) {
  VQSmartPtr::operator=(body != nullptr ? const_cast<VQStringBody*>(body) : new VQStringBody);
  return *this;
}

VQCLASSID VQString::GetClassID() const { return VQCLASSID_VQSTRING; }

int VQString::IsNull() const { return GetBufLength() == 0; }

const VQCHAR* VQString::GetBuf() const { return Body == nullptr ? kEmptyText : StringBody()->GetBuf(); }

unsigned long VQString::GetBufLength() const { return Body == nullptr ? 0 : StringBody()->GetBufLength(); }

unsigned long VQString::GetLength() const {
  vq::ThrowIfError(vq::CheckInitialized());
  return Body == nullptr ? 0 : StringBody()->GetLength();
}

unsigned long VQString::GetByteLength() const { return IsNull() ? 0 : std::strlen(GetPlatformTextPtr()); }

const char* VQString::GetPlatformTextPtr() const {
  vq::ThrowIfError(vq::CheckInitialized());
  return Body == nullptr ? "" : StringBody()->GetPlatformTextPtr();
}

// The private copy that a change is made on.
VQStringBody* VQString::PrepareToModify() {
  if (Body == nullptr) {
    VQSmartPtr::operator=(new VQStringBody);
  } else if (Body->GetRefCount() > 1) {
    VQSmartPtr::operator=(MakeStoreBody(GetBuf(), GetBufLength()).release());
  }
  return StringBody();
}

VQSTATUS VQString::Append(const VQString& text) {
  if (text.IsNull()) return VQ_OK;
  VQStringBody* body = PrepareToModify();
  return vq::Apply(body->Splice(body->GetBufLength(), 0, text.GetBuf(), text.GetBufLength()));
}

VQString& VQString::operator+=(const VQString& text) {
  vq::ThrowIfError(Append(text));
  return *this;
}

VQString& VQString::operator<<(const VQString& text) { return *this += text; }

VQSTATUS VQString::Insert(unsigned long position, const VQString& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  VQStringBody* body = PrepareToModify();
  if (text.IsNull() || position > body->GetLength()) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(body->Splice(body->GetOffset(position), 0, text.GetBuf(), text.GetBufLength()));
}

VQSTATUS VQString::Delete(unsigned long position, unsigned long count) { return Replace(position, count, VQString()); }

VQSTATUS VQString::Replace(unsigned long position, const VQString& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  const unsigned long length = GetLength();
  if (position >= length) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Replace(position, std::min(text.GetLength(), length - position), text);
}

VQSTATUS VQString::Replace(unsigned long position, unsigned long count, const VQString& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  VQStringBody* body = PrepareToModify();
  const unsigned long length = body->GetLength();
  if (count == 0 || position >= length || count > length - position) return vq::Apply(VQERR_INVALID_PARAMETER);
  const unsigned long start = body->GetOffset(position);
  const unsigned long end = body->GetOffset(position + count);
  return vq::Apply(body->Splice(start, end - start, text.GetBuf(), text.GetBufLength()));
}

VQSTATUS VQString::TranslateWith(unsigned short mode) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  return vq::Apply(PrepareToModify()->Translate(mode));
}

VQSTATUS VQString::ToLower() { return TranslateWith(ENG_TRANSLATE_LOWER); }

VQSTATUS VQString::ToUpper() { return TranslateWith(ENG_TRANSLATE_UPPER); }

VQSTATUS VQString::RemoveAccent() { return TranslateWith(ENG_TRANSLATE_STRIP_ACCENTS); }
