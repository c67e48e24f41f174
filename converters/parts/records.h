// The stream of composite records, written to a file or to memory and read from memory.
#ifndef QUILLON_CONVERTERS_PARTS_RECORDS_H
#define QUILLON_CONVERTERS_PARTS_RECORDS_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "engine/ods.h"
#include "engine/records.h"
#include "engine/types.h"

namespace conv {

enum Signature : std::uint16_t {
  kSigParagraph = 0x81,
  kSigReference = 0x83,
  kSigTableBegin = 0xA3,
  kSigTableCell = 0xA4,
  kSigTableEnd = 0xA5,
  kSigStyleName = 0xA6,
  kSigHotspotEndOld = 0xAA,
  kSigHotspotEnd = 0xAE,
  kSigFormulaReference = 0xBC,
  kSigDefinition = 0xFF82,
  kSigText = 0xFF85,
  kSigHotspot = 0xFFA9,
  kSigV4Hotspot = 0xFFAD,
  kSigHide = 0xFFBB,
  kSigTextStyle = 0xFFC3,
  kSigAnchor = 0xFFCB,
};

enum HotspotKind : std::uint16_t { kHotspotAttachment = 4, kHotspotLink = 11 };

// Flags of a link hotspot that leads to an address. Its data is up to four texts with a NUL between: the address, its
// title, the address of a picture that it shows, the picture's title.
inline constexpr std::uint32_t kHotspotUrl = 0x10000000;
inline constexpr std::uint32_t kHotspotPicture = 0x00000001;    // the text in it stands for the picture
inline constexpr std::uint32_t kHotspotContinued = 0x00000002;  // of the same link as the hotspot in front of it

// Paragraph definition
inline constexpr std::uint16_t kPageMargin = 1440;
inline constexpr std::uint16_t kPageBreak = 0x0001;
inline constexpr std::uint16_t kHideFlagsUnlinked = 0x0100;
inline constexpr std::uint16_t kBulletStyle = 0x0400;
inline constexpr std::uint16_t kNumberStyle = 0x1000;
inline constexpr std::uint16_t kHideFlags = 0xE270;
inline constexpr std::uint16_t kHideFormula = 0x0800;
inline constexpr std::uint16_t kHideReading = 0x2010;  // in a document and in its preview
enum Justify : std::uint16_t { kJustifyLeft, kJustifyRight, kJustifyFull, kJustifyCenter };

// Style name
inline constexpr std::uint32_t kStyleHasFont = 0x00000001;
inline constexpr std::size_t kLongestStyleName = 35;

// Table
inline constexpr unsigned kMostRows = 255;
inline constexpr unsigned kMostColumns = 64;
inline constexpr unsigned kTableWidth = 28800;
inline constexpr unsigned kNarrowestColumn = 361;
inline constexpr std::uint16_t kTableDefaultFlags = 3;
inline constexpr std::uint16_t kTableV4Spacing = 0x0002;
inline constexpr std::uint16_t kTableBorderStyles = 0x000C;
inline constexpr std::uint16_t kUsualColumnSpacing = 40;
inline constexpr std::uint16_t kUsualRowSpacing = 60;
inline constexpr std::uint8_t kUsualBorder = 0x55;
inline constexpr std::uint16_t kUsualWidth = 0x1111;
inline constexpr std::uint8_t kCellDefaultFlags = 2;
inline constexpr std::uint8_t kCellHasBackground = 1;
inline constexpr std::uint16_t kCellParagraphFlags = 0x0186;

// Into a file, or into memory when that is null.
class RecordOutput {
 public:
  explicit RecordOutput(std::FILE* file = nullptr) : Out(file) {}

  void Begin();  // the type word
  // A structure whose header is filled in here, and what stands behind it.
  template <typename Record>
  void Put(std::uint16_t signature, std::uint16_t code, Record record, std::string_view tail = {}) {
    const std::size_t length = EngOdsLength(code) + tail.size();
    if constexpr (requires { record.Header; }) {
      using Width = decltype(record.Header.Length);
      record.Header.Signature = static_cast<decltype(record.Header.Signature)>(signature);
      record.Header.Length = static_cast<Width>(length);
    }
    Write(code, &record, tail);
  }
  // A record of no structure, in word form.
  void PutBytes(std::uint16_t signature, std::string_view data);
  // What is buffered, written out. False when anything could not be written.
  bool Finish();
  const std::string& Bytes() const { return Buffer; }
  bool Failed() const { return Broken; }

 private:
  void Write(std::uint16_t code, const void* record, std::string_view tail);
  void Append(std::string_view head, std::string_view tail);

  std::FILE* Out;
  std::string Buffer;
  bool Broken = false;
};

struct Record {
  std::uint16_t Signature = 0;
  const unsigned char* Bytes = nullptr;  // header included
  std::uint32_t Length = 0;

  // Zero beyond the end.
  std::uint8_t Byte(std::uint32_t offset) const { return offset < Length ? Bytes[offset] : 0; }
  std::uint16_t Word(std::uint32_t offset) const {
    return static_cast<std::uint16_t>(Byte(offset) | Byte(offset + 1) << 8);
  }
  std::uint32_t Dword(std::uint32_t offset) const { return Word(offset) | std::uint32_t{Word(offset + 2)} << 16; }
  std::string_view Tail(std::uint32_t offset) const {
    if (offset >= Length) return {};
    return {reinterpret_cast<const char*>(Bytes) + offset, Length - offset};
  }
  // The structure of that code; zeros in place of bytes that the record lacks.
  template <typename Structure>
  Structure Read(std::uint16_t code) const {
    Structure structure{};
    Decode(code, &structure);
    return structure;
  }

 private:
  void Decode(std::uint16_t code, void* structure) const;
};

// Walks the records of a composite value.
class RecordInput {
 public:
  explicit RecordInput(std::string_view value);
  // False at the end, and where the stream is damaged.
  bool Next(Record* record);
  bool IsDamaged() const { return Damaged; }
  std::size_t GetOffset() const { return Offset; }
  void SetOffset(std::size_t offset) { Offset = offset; }

 private:
  std::string_view Value;
  std::size_t Offset;
  bool Damaged;
};

}  // namespace conv

#endif
