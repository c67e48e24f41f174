// Record streams for tests: build them by name, read them back from a rich text.
#ifndef QUILLON_TESTS_VQ_SUPPORT_RECORDS_H
#define QUILLON_TESTS_VQ_SUPPORT_RECORDS_H

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtchar.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"

namespace vqtest {

inline std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes += static_cast<char>(value);
  return bytes;
}

// One record in the form of its signature, with the padding byte.
inline std::string Record(std::uint16_t signature, const std::string& data, char pad = 0) {
  std::string record(vq::HeaderSize(signature), '\0');
  vq::WriteRecordHeader(reinterpret_cast<unsigned char*>(record.data()), signature,
                        static_cast<std::uint32_t>(record.size() + data.size()));
  record += data;
  if (record.size() % 2 != 0) record += pad;
  return record;
}

inline std::string Text(const std::string& text, char pad = 0) {
  return Record(SIG_CD_TEXT, Bytes({1, 0, 0, 10}) + text, pad);
}
inline std::string Paragraph() { return Record(SIG_CD_PARAGRAPH, ""); }
inline std::string Reference(int pabid) { return Record(SIG_CD_PABREFERENCE, Bytes({pabid & 255, pabid >> 8})); }
inline std::string Hotspot(int type, std::uint32_t flags = 0) {
  const int f = static_cast<int>(flags >> 16);
  return Record(SIG_CD_V4HOTSPOTBEGIN, Bytes({type, 0, 0, 0, f & 255, f >> 8, 0, 0}));
}
inline std::string HotspotEnd() { return Record(SIG_CD_HOTSPOTEND, ""); }
inline std::string TableBegin() { return Record(SIG_CD_TABLEBEGIN, std::string(12, '\1')); }
inline std::string Cell(int row, int column) {
  return Record(SIG_CD_TABLECELL, Bytes({row, column}) + std::string(14, '\0'));
}
inline std::string TableEnd() { return Record(SIG_CD_TABLEEND, std::string(4, '\0')); }
// A record that no class knows.
inline std::string Unknown(const std::string& data) { return Record(0xFFE1, data, '\x5A'); }

// A rich text that stands alone over one value.
inline VQRichText RichText(const std::string& records) {
  ENGHANDLE memory = 0;
  const std::string value = Bytes({1, 0}) + records;
  EngMemAlloc(0, static_cast<std::uint32_t>(value.size()), &memory);
  std::memcpy(EngMemLock(memory), value.data(), value.size());
  EngMemUnlock(memory);
  return VQRichText(new VQRichTextBody(memory, static_cast<unsigned long>(value.size())));
}

// The values that the tree would be stored as.
inline std::vector<std::string> Values(const VQRichText& text) {
  std::vector<vq::ItemBlock> blocks;
  EXPECT_EQ(text.GetRichTextBody()->WriteBlocks(&blocks), VQ_OK);
  std::vector<std::string> values;
  for (const vq::ItemBlock& block : blocks) {
    values.emplace_back(static_cast<const char*>(EngMemLock(block.Memory)), block.Size);
    EngMemUnlock(block.Memory);
    EngMemFree(block.Memory);
  }
  return values;
}

// All records, without the type words.
inline std::string Written(const VQRichText& text) {
  std::string records;
  for (const std::string& value : Values(text)) records += value.substr(2);
  return records;
}

inline std::string Plain(const VQRichText& text) {
  VQString string;
  EXPECT_EQ(text.GetText(&string), VQ_OK);
  return TextOf(string);
}

inline VQRTCursor At(const VQRichText& text, unsigned long position) {
  VQRTCursor cursor;
  EXPECT_EQ(text.GetCursor(&cursor), VQ_OK);
  cursor += position;
  return cursor;
}

}  // namespace vqtest

#endif
