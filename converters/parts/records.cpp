#include "converters/parts/records.h"

#include <algorithm>
#include <cstring>

#include "engine/status.h"

namespace conv {

namespace {

constexpr std::uint16_t kTypeComposite = 1;
constexpr std::size_t kTypeWord = 2;
constexpr std::uint32_t kLongestRecord = 0x10400;
constexpr std::size_t kBufferSize = 1 << 18;
constexpr std::size_t kLongestStructure = 128;

}  // namespace

void RecordOutput::Begin() {
  const std::uint16_t type = kTypeComposite;
  Write(ODS_WORD, &type, {});
}

void RecordOutput::Write(std::uint16_t code, const void* record, std::string_view tail) {
  char bytes[kLongestStructure];
  void* cursor = bytes;
  const std::size_t length = EngOdsLength(code);
  if (length == 0 || length > sizeof bytes || EngOdsWrite(&cursor, code, record, 1) != ENG_OK) {
    Broken = true;
    return;
  }
  Append({bytes, length}, tail);
}

void RecordOutput::PutBytes(std::uint16_t signature, std::string_view data) {
  const std::size_t length = 4 + data.size();
  const char head[] = {static_cast<char>(signature), static_cast<char>(signature >> 8), static_cast<char>(length),
                       static_cast<char>(length >> 8)};
  Append({head, sizeof head}, data);
}

void RecordOutput::Append(std::string_view head, std::string_view tail) {
  Buffer.append(head).append(tail);
  if ((head.size() + tail.size()) % 2 != 0) Buffer += '\0';
  if (Out && Buffer.size() >= kBufferSize) {
    if (std::fwrite(Buffer.data(), 1, Buffer.size(), Out) != Buffer.size()) Broken = true;
    Buffer.clear();
  }
}

bool RecordOutput::Finish() {
  if (Out && std::fwrite(Buffer.data(), 1, Buffer.size(), Out) != Buffer.size()) Broken = true;
  return !Broken;
}

void Record::Decode(std::uint16_t code, void* structure) const {
  unsigned char bytes[kLongestStructure] = {};
  const std::size_t length = EngOdsLength(code);
  if (length > sizeof bytes) return;
  std::memcpy(bytes, Bytes, std::min<std::size_t>(length, Length));
  void* cursor = bytes;
  EngOdsRead(&cursor, code, structure, 1);
}

RecordInput::RecordInput(std::string_view value) : Value(value), Offset(kTypeWord), Damaged(value.size() < kTypeWord) {}

bool RecordInput::Next(Record* record) {
  if (Damaged || Offset >= Value.size()) return false;
  const auto* bytes = reinterpret_cast<const unsigned char*>(Value.data()) + Offset;
  const std::size_t left = Value.size() - Offset;
  Damaged = true;
  if (left < 2) return false;
  const std::uint8_t high = bytes[1];
  std::uint32_t header = 2;
  std::uint32_t length = high;
  if (high == 0xFF) header = 4;
  if (high == 0) header = 6;
  if (left < header) return false;
  if (high == 0xFF) length = bytes[2] | bytes[3] << 8;
  if (high == 0) length = bytes[2] | bytes[3] << 8 | bytes[4] << 16 | std::uint32_t{bytes[5]} << 24;
  if (length == 0) length = header;
  if (length < header || length > kLongestRecord || length > left) return false;
  record->Signature = static_cast<std::uint16_t>(high == 0xFF ? bytes[0] | 0xFF00 : bytes[0]);
  record->Bytes = bytes;
  record->Length = length;
  Offset += length + length % 2;
  Damaged = false;
  return true;
}

}  // namespace conv
