#include <algorithm>

#include "converters/textconv/textconv.h"
#include "engine/ods.h"
#include "engine/records.h"
#include "engine/status.h"

namespace textconv {

namespace {

constexpr std::uint16_t kSigParagraph = 0x81;
constexpr std::uint16_t kSigText = 0xFF85;
constexpr std::uint16_t kSigTableCell = 0xA4;
constexpr std::uint16_t kSigTableEnd = 0xA5;
constexpr std::uint32_t kLongestRecord = 0x10400;

struct Header {
  std::uint16_t Signature = 0;
  std::uint32_t Size = 0;    // of the header
  std::uint32_t Length = 0;  // of the record
};

class RecordReader {
 public:
  explicit RecordReader(std::FILE* file) : In(file) {}

  // False at the end, and when the stream breaks off.
  bool NextHeader(Header* header) {
    std::uint32_t word = 0;
    if (!Number(2, &word)) {
      Damaged = Damaged || Partial;
      return false;
    }
    std::uint32_t high = word >> 8;
    *header = {static_cast<std::uint16_t>(high == 0xFF ? word : word & 0xFF), 2, high};
    if (high == 0 || high == 0xFF) {
      unsigned width = high == 0 ? 4 : 2;
      header->Size += width;
      if (!Number(width, &header->Length)) Damaged = true;
    }
    if (header->Length == 0) header->Length = header->Size;
    if (header->Length < header->Size || header->Length > kLongestRecord) Damaged = true;
    return !Damaged;
  }
  bool Number(unsigned width, std::uint32_t* value) {
    *value = 0;
    for (unsigned i = 0; i < width; ++i) {
      int byte = std::getc(In);
      Partial = i > 0;
      if (byte == EOF) return false;
      *value |= static_cast<std::uint32_t>(byte) << (8 * i);
    }
    return true;
  }
  bool Bytes(char* target, std::size_t size) { return std::fread(target, 1, size, In) == size; }
  bool Skip(std::uint32_t size) {
    for (std::uint32_t i = 0; i < size; ++i) {
      if (std::getc(In) == EOF) return false;
    }
    return true;
  }
  void SkipPadding() { std::getc(In); }
  bool IsDamaged() const { return Damaged || std::ferror(In); }

 private:
  std::FILE* In;
  bool Partial = false;
  bool Damaged = false;
};

class TextWriter {
 public:
  TextWriter(RecordReader& records, std::FILE* text) : Records(records), Out(text) {}

  // False when the record's bytes are not all there.
  bool Write(const Header& header) {
    std::uint32_t left = header.Length - header.Size;
    switch (header.Signature) {
      case kSigParagraph:
        std::putc('\n', Out);
        return Records.Skip(left);
      case kSigText:
        return Run(left);
      case kSigTableCell:
        return Cell(left);
      case kSigTableEnd:
        if (InTable) std::fputs("\t\n", Out);
        InTable = false;
        return Records.Skip(left);
      default:
        return Records.Skip(left);
    }
  }

 private:
  bool Run(std::uint32_t left) {
    constexpr std::uint32_t kFontBytes = 4;
    if (left < kFontBytes || !Records.Skip(kFontBytes)) return false;
    char bytes[4096];
    for (left -= kFontBytes; left > 0;) {
      std::uint32_t size = std::min<std::uint32_t>(left, sizeof bytes);
      if (!Records.Bytes(bytes, size)) return false;
      std::replace(bytes, bytes + size, '\0', '\n');
      std::fwrite(bytes, 1, size, Out);
      left -= size;
    }
    return true;
  }
  bool Cell(std::uint32_t left) {
    std::uint32_t row = 0;
    if (left < 1 || !Records.Number(1, &row)) return false;
    if (InTable) std::fputs(row == Row ? "\t" : "\t\n", Out);
    InTable = true;
    Row = row;
    return Records.Skip(left - 1);
  }

  RecordReader& Records;
  std::FILE* Out;
  std::uint32_t Row = 0;
  bool InTable = false;
};

}  // namespace

ENGSTATUS WriteText(std::FILE* composite, std::FILE* text) {
  RecordReader records(composite);
  std::uint32_t type = 0;
  if (!records.Number(2, &type)) return ENG_ERR_RECORD_DAMAGED;
  TextWriter writer(records, text);
  Header header;
  while (records.NextHeader(&header)) {
    if (!writer.Write(header)) return ENG_ERR_RECORD_DAMAGED;
    if (header.Length % 2 != 0) records.SkipPadding();
  }
  if (records.IsDamaged()) return ENG_ERR_RECORD_DAMAGED;
  return std::ferror(text) ? ENG_ERR_FILE_WRITE : ENG_OK;
}

}  // namespace textconv
