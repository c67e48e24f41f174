// VQStylizedText: a run of characters in one font.
#ifndef QUILLON_VQ_RICHTEXT_VQSTYLTX_H
#define QUILLON_VQ_RICHTEXT_VQSTYLTX_H

#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtobj.h"

inline constexpr unsigned long VQ_DEFAULT_FONT_ID = 0x0A000001;

// One text record, with a style extension as its only child where the font needs one. Offsets are in characters,
// from 1 for the first. A NUL byte in the record is a line break and reads as a newline.
class VQ_API VQStylizedTextBody : public VQRTContainerBody {
 public:
  VQStylizedTextBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // An empty run in the default font.
  VQStylizedTextBody();
  ~VQStylizedTextBody() override;

  // Cuts every character handle loose.
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
  using VQRTContainerBody::Append;
  using VQRTContainerBody::GetRichText;
  using VQRTContainerBody::GetText;
  using VQRTContainerBody::Insert;
  VQSTATUS GetText(VQString* text) override;
  VQSTATUS SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                        unsigned long mask) override;
  VQSTATUS SetFontStyle(const VQRTCursor& cursor, const VQFontStyle& style) override;
  VQSTATUS ConvertFonts(VQItem* table) override;
  // Takes the face along that a table font of the source stands for.
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  VQSTATUS AppendChild(VQRTObject* child) override;
  VQSTATUS CopyChildren(const VQRTCursor& start, const VQRTCursor& end, VQRTBaseContainerBody* source,
                        VQRTObject* before) override;
  VQSTATUS FindFirst(VQRTTYPE type, VQRTObject* found) override;
  VQSTATUS FindLast(VQRTTYPE type, VQRTObject* found) override;
  VQSTATUS GetCursor(VQRTCursor* cursor) override;
  VQSTATUS Append(const VQString& text, int convertNewlines) override;
  // Refused with VQERR_RT_CHARACTERS.
  VQSTATUS Append(const VQRTObject& object, VQRTObject* appended) override;
  VQSTATUS GetEndCursor(VQRTCursor* cursor) override;
  VQSTATUS Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines) override;
  int CanInsertType(VQRTTYPE type) const override;
  VQSTATUS SetValue(const VQString& text, int convertNewlines) override;

  // The search slot. On a hit in this run *offset is the character found. `start` is the first character that a
  // match may start at; backwards the last one. Options are VQRTSEARCH bits.
  virtual VQSTATUS FindText(const VQString& text, unsigned long options, unsigned long start, int backwards,
                            unsigned long* offset);

  unsigned long GetByteCount() const;
  unsigned long GetCharacterCount() const;
  // Bytes of the first characters; VQERR_INVALID_PARAMETER when there are fewer.
  [[nodiscard]] VQSTATUS SpanBytes(unsigned long characters, std::uint32_t* size) const;
  // Whether there is a character at the offset, from 1; an empty run has the place 1.
  bool HasPlace(unsigned long offset) const;
  // VQWARN_TEXT_OVER_20K above 20 KB, VQERR_TEXT_TOO_LONG above 40 KB with nothing changed.
  [[nodiscard]] VQSTATUS InsertText(unsigned long charOffset, const VQString& text);
  // Cuts characters [first, first + count) out; handles in them move to `first`.
  [[nodiscard]] VQSTATUS RemoveText(unsigned long first, unsigned long count);
  // The character at `offset`, 2 to the count, becomes the first of a new run behind this one.
  [[nodiscard]] VQSTATUS SplitText(unsigned long offset);

  // With all its bits: those of the extension, if there is one.
  unsigned long GetFontID() const;
  // Writes the record's font and makes, updates or drops the extension.
  [[nodiscard]] VQSTATUS SetFontID(unsigned long fontID);
  // The run's font as a style that writes through to this run; made on first need and kept.
  VQSTATUS FindTableFont(VQFontStyle* style) override;
  [[nodiscard]] VQSTATUS GetFontStyle(VQFontStyle* style);
  // Applies the masked part of a style to the whole run; a table face is added to the rich text's font table.
  [[nodiscard]] VQSTATUS ApplyFontStyle(const VQFontStyle& style, unsigned long mask);

  // Character handles announce themselves. An offset of 0 makes a handle dead.
  void AddRTChar(VQRTObject* character);
  void RemoveRTChar(VQRTObject* character);
  // Comes before these where the handle lives on, and before all that moves handles.
  void NoteCharacters();
  unsigned long GetRTCharCount() const { return RTChars ? RTChars->Handles.size() : 0; }

 private:
  friend class vq::Edit;

  // The characters of a run while it stays as it is.
  struct TextBytes {
    explicit TextBytes(const VQStylizedTextBody& run);

    vq::RecordBytes Record;
    const unsigned char* Text;
    std::uint32_t Size;
  };

  // A place in the run, as characters and as bytes that lie left of it.
  struct Place {
    std::uint32_t Characters = 0;
    std::uint32_t Bytes = 0;
  };
  // The character handles and, for as long as there are any, what has been counted: a cursor that steps through a long
  // run, or searches it, counts from its last place.
  struct Characters {
    static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;

    std::vector<VQRTObject*> Handles;
    std::uint32_t Count = kUnknown;
    Place Last;
  };
  // Null without handles; forgets what no longer holds.
  Characters* Known() const;
  Place LastPlace(const TextBytes& text) const;
  // The place behind so many characters; behind the last one when there are fewer.
  Place PlaceOf(const TextBytes& text, std::uint32_t characters) const;
  // The place at a character's first byte.
  Place PlaceAtByte(const TextBytes& text, std::uint32_t bytes) const;

  // The limit and the warning for a run of so many bytes.
  [[nodiscard]] static VQSTATUS CheckRoom(unsigned long byteCount);
  // Bytes for bytes, with the record's length kept right; CheckRoom comes before what makes a run longer.
  void Replace(std::uint32_t offset, std::uint32_t oldBytes, const unsigned char* text, std::uint32_t newBytes);
  void MoveCharacters(unsigned long offset, VQStylizedTextBody* target);

  VQFontStyleBody& OwnFontStyle();
  void DropFontStyle();

  std::unique_ptr<Characters> RTChars;
  VQFontStyleBody* FontStyle;  // counted, null until asked for; Close takes this run out of it as its owner
};

// Handle on a run. Offsets and failures as with the body; a null handle gives VQERR_OBJECT_NOT_INITIALIZED.
class VQ_API VQStylizedText : public VQRTContainer {
 public:
  VQStylizedText() = default;
  // A run of its own that holds the text; newlines become line breaks.
  explicit VQStylizedText(const VQString& text);
  VQStylizedText(const VQRTObject& object);
  VQStylizedText(const VQStylizedText& other) : VQRTContainer(other) {}
  explicit VQStylizedText(VQStylizedTextBody* body);
  using VQRTObject::operator=;
  VQStylizedText& operator=(const VQStylizedText& other) = default;

  VQCLASSID GetClassID() const override;
  using VQRTContainer::Append;
  // Makes a run where the handle has none. VQERR_TEXT_NEWLINES for a newline with convertNewlines.
  VQSTATUS Append(const VQString& text, int convertNewlines = 0);
  unsigned long GetByteCount() const;
  unsigned long GetCharacterCount() const;
  VQSTATUS GetFontStyle(VQFontStyle* style) const;
  VQSTATUS SetFontStyle(const VQFontStyle& style);
  VQSTATUS SplitText(unsigned long offset);

  VQStylizedTextBody* GetStylizedTextBody() const;

 protected:
  using VQRTContainer::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
