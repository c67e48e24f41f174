#include "vq/richtext/signature.h"

namespace vq {

bool ReadRecordHeader(const unsigned char* bytes, std::uint32_t available, RecordHeader* header) {
  if (available < 2) return false;
  const std::uint16_t word = LoadWord(bytes);
  const std::uint32_t high = word >> 8;
  header->HeaderSize = high == 0x00 ? 6 : high == 0xFF ? 4 : 2;
  if (available < header->HeaderSize) return false;
  header->Signature = high == 0xFF ? word : static_cast<std::uint16_t>(word & 0xFF);
  header->Length = high == 0x00 ? LoadDword(bytes + 2) : high == 0xFF ? LoadWord(bytes + 2) : high;
  if (header->Length == 0) header->Length = header->HeaderSize;
  return true;
}

void WriteRecordHeader(unsigned char* bytes, std::uint16_t signature, std::uint32_t length) {
  switch (HeaderSize(signature)) {
    case 4:
      StoreWord(bytes, signature);
      StoreWord(bytes + 2, length);
      break;
    case 6:
      StoreWord(bytes, signature & 0xFF);
      StoreWord(bytes + 2, length);
      StoreWord(bytes + 4, length >> 16);
      break;
    default:
      StoreWord(bytes, (signature & 0xFFu) | (length & 0xFF) << 8);
  }
}

void WriteRecordLength(unsigned char* bytes, std::uint32_t length) {
  if (bytes[1] == 0xFF) {
    StoreWord(bytes + 2, length);
  } else if (bytes[1] == 0) {
    StoreWord(bytes + 2, length);
    StoreWord(bytes + 4, length >> 16);
  } else {
    bytes[1] = static_cast<unsigned char>(length);
  }
}

}  // namespace vq
