// Text in the store character set, counted in characters.
//
// A string holds at most 65,534 bytes of store text (UTF-8) and no NUL: a NUL inside a given length becomes a line
// feed. Positions and lengths are in characters unless a name says bytes. Platform text (`char`) is translated on the
// way in and out, which needs an initialised session, as does everything that counts or compares characters; without
// one they give VQERR_NOT_INITIALIZED. GetBuf, GetBufLength and store text in and out work without a session.
#ifndef QUILLON_VQ_VALUES_VQSTRING_H
#define QUILLON_VQ_VALUES_VQSTRING_H

#include <memory>

#include "vq/frame/vqcommon.h"

class VQChar;
class VQText;

// The counted text behind VQString and VQChar. Its operations write in place, whoever shares the body.
class VQ_API VQStringBody : public VQBody {
 public:
  static constexpr unsigned long kMaximumBytes = 65534;

  VQStringBody();
  ~VQStringBody() override;
  VQCLASSID GetClassID() const override;

  const VQCHAR* GetBuf() const { return Text ? Text.get() : Short; }
  unsigned long GetBufLength() const { return ByteLength; }
  unsigned long GetLength() { return CharCount != 0 ? CharCount : CountCharacters(); }
  const char* GetPlatformTextPtr();
  // Byte offset of a character; throws VQERR_NOT_FOUND behind the end. A walk forward costs one step a character.
  unsigned long GetOffset(unsigned long position);
  // Position of the character that starts at `place` of GetBuf.
  unsigned long GetPosition(const VQCHAR* place);

  // The text given replaces all; failures leave the old text.
  [[nodiscard]] VQSTATUS TakeStoreText(const VQCHAR* text, unsigned long bytes);
  [[nodiscard]] VQSTATUS TakePlatformText(const char* text, unsigned long bytes);
  // Replaces `old_bytes` at byte `offset` by `new_bytes` of `text`, which may lie in this very text.
  [[nodiscard]] VQSTATUS Splice(unsigned long offset, unsigned long old_bytes, const VQCHAR* text,
                                unsigned long new_bytes);
  // One of the engine's case and accent modes over the whole text.
  [[nodiscard]] VQSTATUS Translate(unsigned short mode);
  void Clear();

 private:
  // Bytes that a body holds by itself: most names and words need no second allocation.
  static constexpr std::uint32_t kShortBytes = 23;

  VQCHAR* Contents();
  void DropCaches();
  unsigned long CountCharacters();
  [[nodiscard]] VQSTATUS SpliceAside(unsigned long offset, unsigned long old_bytes, const VQCHAR* text,
                                     unsigned long new_bytes);

  std::uint32_t CharCount;
  std::uint32_t CursorOffset;
  std::uint32_t CursorPosition;
  std::unique_ptr<char[]> PlatformText;
  std::unique_ptr<VQCHAR[]> Text;  // null while the text is in Short
  VQCHAR Short[kShortBytes + 1];
  std::uint32_t ByteLength;
  std::uint32_t Capacity;  // bytes that fit beside the terminator
};

// A string. Copies share the text until one of them is changed. Operations with a status result leave the text as it
// was when they fail; constructors and operators throw.
class VQ_API VQString : public VQSmartPtr {
 public:
  VQString();
  VQString(const VQString& other);
  VQString(const VQCHAR* text) { Setup(text); }
  VQString(const VQCHAR* text, unsigned long bytes) { Setup(text, bytes); }
  VQString(const char* text) { Setup(text); }
  VQString(const char* text, unsigned long bytes) { Setup(text, bytes); }
  VQString(const VQChar& character);
  // Null gives an empty string.
  explicit VQString(VQStringBody* body);
  // Decimal digits.
  VQString(unsigned long number);

  // Give a new text to a handle; a null pointer is an empty text. Platform text that takes all 65,534 bytes of store
  // text counts as too long.
  void Setup(const char* text);
  void Setup(const char* text, unsigned long bytes);
  void Setup(const VQCHAR* text);
  void Setup(const VQCHAR* text, unsigned long bytes);

  VQString& operator=(const VQString& other);
  VQString& operator=(const VQCHAR* text);
  VQString& operator=(const char* text) { return Assign(text); }
  VQString& operator=(const VQChar& character);
  VQString& operator=(unsigned long number);
  VQString& operator=(const VQStringBody* body);
  VQString& Assign(const char* text);

  VQCLASSID GetClassID() const override;
  // Whether the text is empty.
  int IsNull() const override;

  // Store text, never null, good until the next change.
  const VQCHAR* GetBuf() const;
  // Bytes of store text.
  unsigned long GetBufLength() const;
  // Characters. VQERR_STRING_SIZE is thrown if the engine cannot count them.
  unsigned long GetLength() const;
  // Bytes of the platform text.
  unsigned long GetByteLength() const;
  // Platform text, never null, good until the next change. NULs that the translation brings in are line feeds.
  const char* GetPlatformTextPtr() const;

  // VQERR_STRING_TOO_LONG past 65,534 bytes.
  VQSTATUS Append(const VQString& text);
  VQString& operator+=(const VQString& text);
  VQString& operator<<(const VQString& text);
  // VQERR_INVALID_PARAMETER for an empty text or a position behind the end.
  VQSTATUS Insert(unsigned long position, const VQString& text);
  VQSTATUS Delete(unsigned long position, unsigned long count);
  // Replaces as many characters as `text` has, fewer at the end.
  VQSTATUS Replace(unsigned long position, const VQString& text);
  VQSTATUS Replace(unsigned long position, unsigned long count, const VQString& text);
  VQSTATUS ToLower();
  VQSTATUS ToUpper();
  VQSTATUS RemoveAccent();
  // Unshares the text, since the character can be written through. VQERR_INVALID_PARAMETER at or behind the end.
  VQChar operator[](int position);
  VQChar operator[](unsigned long position);
  VQChar operator[](int position) const;
  VQChar operator[](unsigned long position) const;

  // Searches from a character position; VQWARN_NOT_FOUND leaves *found alone.
  VQSTATUS Find(const VQString& pattern, unsigned long start, unsigned long* found) const;
  // The first character that is one of `set`.
  VQSTATUS FindChar(const VQString& set, unsigned long start, unsigned long* found) const;
  VQSTATUS FindNextWordStart(unsigned long start, unsigned long* found) const;
  VQSTATUS FindNextWordEnd(unsigned long start, unsigned long* found) const;
  VQSTATUS FindPreviousWordStart(unsigned long start, unsigned long* found) const;
  VQSTATUS FindPreviousWordEnd(unsigned long start, unsigned long* found) const;

  // `result` may be this string.
  VQSTATUS GetSubString(unsigned long position, unsigned long count, VQString* result) const;
  // Splits at any character of `separators`, empty pieces dropped. Flags: 1 trim white space, 2 split once.
  // VQWARN_NOT_FOUND if there was no separator; *result then holds the whole text.
  VQSTATUS Parse(const VQString& separators, VQText* result, unsigned short flags = 0) const;

 private:
  VQStringBody* StringBody() const { return static_cast<VQStringBody*>(Body); }
  VQStringBody* PrepareToModify();
  VQSTATUS TranslateWith(unsigned short mode);
  [[nodiscard]] VQSTATUS BeginSearch(int argument_missing, unsigned long start, const unsigned long* found) const;
  using WordStep = int (*)(const ENGCHAR** text, const VQStringBody& body);
  VQSTATUS FindWord(WordStep step, unsigned long start, unsigned long* found) const;
};

// One character of a string, for reading and writing. It holds the string's text, and writing through it changes every
// string that shares the text by then. The class tests and changes throw: VQERR_OBJECT_NOT_INITIALIZED without a text.
class VQ_API VQChar : public VQQuillonClass {
 public:
  VQChar();
  VQChar(VQStringBody* body, unsigned long position);
  VQChar(const VQChar& other);
  explicit VQChar(char c, int store = 0) : VQChar() { Setup(c, store); }
  ~VQChar() override {
    if (StringBody != nullptr) StringBody->Release();
  }
  // Writes the other character's bytes into this string.
  VQChar& operator=(const VQChar& other);
  VQChar& operator=(char c) { return Assign(c, 0); }
  // A platform character, or with `store` a byte of store text.
  VQChar& Assign(char c, int store);
  // Makes this a one-character string of its own.
  void Setup(char c, int store);

  VQCLASSID GetClassID() const override;
  unsigned long GetByteCount() const;
  // The character as one byte, 0 if it takes more; a NUL is given as 10.
  char GetChar(int store = 0) const;
  // Store text at the character.
  const VQCHAR* GetCharPtr() const;
  const VQCHAR* GetTextPtr() const;

  int IsAlnum() const;
  int IsAlpha() const;
  int IsArith() const;
  int IsCntrl() const;
  int IsDigit() const;
  int IsLower() const;
  int IsPunct() const;
  int IsSpace() const;
  int IsUpper() const;
  int IsNull() const;

  VQChar& ToLower();
  VQChar& ToUpper();
  VQChar& RemoveAccent();

 private:
  friend class VQString;

  VQChar(VQStringBody& body, std::uint32_t position);
  void Attach(VQStringBody* body);
  void CheckBody() const;
  [[nodiscard]] VQSTATUS ReplaceBytes(const VQCHAR* text, unsigned long bytes);
  VQChar& TranslateWith(unsigned short mode);

  VQStringBody* StringBody;
  std::uint32_t Position;
};

inline VQChar VQString::operator[](unsigned long position) const { return (*const_cast<VQString*>(this))[position]; }

// Flags: 1 ignore case, 2 ignore accents; with 0 the order is that of the bytes. Negative, 0 or positive. Other flags
// throw VQERR_INVALID_PARAMETER.
VQ_API int VQStringCompare(const VQCHAR* first, const VQCHAR* second, unsigned long flags = 0);
VQ_API int VQStringCompare(const VQString& first, const VQString& second, unsigned long flags = 0);
VQ_API int VQStringCompare(const VQChar& first, const VQChar& second, unsigned long flags = 0);

#endif
