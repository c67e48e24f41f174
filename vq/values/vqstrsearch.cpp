// Searching in strings and comparing them.
#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/vqstring.h"

namespace {

std::uint16_t BytesFrom(const VQStringBody& body, const VQCHAR* text) {
  return static_cast<std::uint16_t>(body.GetBuf() + body.GetBufLength() - text);
}

VQSTATUS FromSearch(ENGSTATUS result) {
  const VQSTATUS status = vq::FromEngine(result);
  return vq::EngineError(status) == ENG_ERR_TEXT_NOT_FOUND ? VQWARN_NOT_FOUND : status;
}

int CompareTexts(const VQCHAR* first, unsigned long first_bytes, const VQCHAR* second, unsigned long second_bytes,
                 unsigned long flags) {
  vq::ThrowIfError(vq::CheckInitialized());
  if ((flags & ~(ENG_COMPARE_IGNORE_CASE | ENG_COMPARE_IGNORE_ACCENTS)) != 0) vq::Throw(VQERR_INVALID_PARAMETER);
  if (first_bytes > VQStringBody::kMaximumBytes || second_bytes > VQStringBody::kMaximumBytes) {
    vq::Throw(VQERR_STRING_TOO_LONG);
  }
  return EngTextCompare(first, static_cast<std::uint16_t>(first_bytes), second,
                        static_cast<std::uint16_t>(second_bytes), static_cast<std::uint32_t>(flags));
}

unsigned long StoreLength(const VQCHAR* text) {
  unsigned long bytes = 0;
  while (text[bytes] != 0) ++bytes;
  return bytes;
}

}  // namespace

VQSTATUS VQString::BeginSearch(int argument_missing, unsigned long start, const unsigned long* found) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (argument_missing || found == nullptr || start > GetLength()) return VQERR_INVALID_PARAMETER;
  return IsNull() ? VQWARN_NOT_FOUND : VQ_OK;
}

VQSTATUS VQString::Find(const VQString& pattern, unsigned long start, unsigned long* found) const {
  if (const VQSTATUS status = BeginSearch(pattern.IsNull(), start, found)) return vq::Apply(status);
  const VQCHAR* text = GetBuf() + StringBody()->GetOffset(start);
  // The pattern's length is that of its platform text, which must not lead past its store text.
  const unsigned long platform = pattern.GetByteLength();
  const unsigned long bytes = platform < pattern.GetBufLength() ? platform : pattern.GetBufLength();
  const ENGSTATUS result = EngTextFind(&text, BytesFrom(*StringBody(), text), pattern.GetBuf(),
                                       static_cast<std::uint16_t>(bytes), EngTextCharset());
  if (const VQSTATUS status = FromSearch(result)) return vq::Apply(status);
  *found = StringBody()->GetPosition(text);
  return VQ_OK;
}

VQSTATUS VQString::FindChar(const VQString& set, unsigned long start, unsigned long* found) const {
  if (const VQSTATUS status = BeginSearch(set.IsNull(), start, found)) return vq::Apply(status);
  const VQCHAR* text = GetBuf() + StringBody()->GetOffset(start);
  const ENGSTATUS result = EngTextFindAny(&text, BytesFrom(*StringBody(), text), set.GetBuf(), EngTextCharset());
  if (const VQSTATUS status = FromSearch(result)) return vq::Apply(status);
  *found = StringBody()->GetPosition(text);
  return VQ_OK;
}

VQSTATUS VQString::FindWord(WordStep step, unsigned long start, unsigned long* found) const {
  if (const VQSTATUS status = BeginSearch(0, start, found)) return vq::Apply(status);
  const VQCHAR* text = GetBuf() + StringBody()->GetOffset(start);
  if (!step(&text, *StringBody())) return VQWARN_NOT_FOUND;
  *found = StringBody()->GetPosition(text);
  return VQ_OK;
}

VQSTATUS VQString::FindNextWordStart(unsigned long start, unsigned long* found) const {
  const WordStep step = [](const ENGCHAR** text, const VQStringBody& body) {
    return EngTextNextWordStart(text, BytesFrom(body, *text), EngTextCharset());
  };
  return FindWord(step, start, found);
}

VQSTATUS VQString::FindNextWordEnd(unsigned long start, unsigned long* found) const {
  const WordStep step = [](const ENGCHAR** text, const VQStringBody& body) {
    return EngTextNextWordEnd(text, BytesFrom(body, *text), EngTextCharset());
  };
  return FindWord(step, start, found);
}

VQSTATUS VQString::FindPreviousWordStart(unsigned long start, unsigned long* found) const {
  const WordStep step = [](const ENGCHAR** text, const VQStringBody& body) {
    return EngTextPreviousWordStart(text, body.GetBuf(), EngTextCharset());
  };
  return FindWord(step, start, found);
}

VQSTATUS VQString::FindPreviousWordEnd(unsigned long start, unsigned long* found) const {
  const WordStep step = [](const ENGCHAR** text, const VQStringBody& body) {
    return EngTextPreviousWordEnd(text, body.GetBuf(), EngTextCharset());
  };
  return FindWord(step, start, found);
}

VQSTATUS VQString::GetSubString(unsigned long position, unsigned long count, VQString* result) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  const unsigned long length = GetLength();
  if (result == nullptr || count == 0 || position > length || count > length - position) {
    return vq::Apply(VQERR_INVALID_PARAMETER);
  }
  const unsigned long start = StringBody()->GetOffset(position);
  const unsigned long end = StringBody()->GetOffset(position + count);
  *result = VQString(GetBuf() + start, end - start);
  return VQ_OK;
}

int VQStringCompare(const VQCHAR* first, const VQCHAR* second, unsigned long flags) {
  if (first == nullptr || second == nullptr) vq::Throw(VQERR_NULL_POINTER);
  return CompareTexts(first, StoreLength(first), second, StoreLength(second), flags);
}

int VQStringCompare(const VQString& first, const VQString& second, unsigned long flags) {
  return CompareTexts(first.GetBuf(), first.GetBufLength(), second.GetBuf(), second.GetBufLength(), flags);
}

int VQStringCompare(const VQChar& first, const VQChar& second, unsigned long flags) {
  return CompareTexts(first.GetCharPtr(), first.GetByteCount(), second.GetCharPtr(), second.GetByteCount(), flags);
}
