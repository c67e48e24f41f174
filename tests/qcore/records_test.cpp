#include "engine/records.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "qcore/records/layouts.h"
#include "tests/qcore/engine.h"

namespace {

using Bytes = std::vector<unsigned char>;

TEST(Records, RandomBytesDecodeAndEncodeToThemselves) {
  std::mt19937 random(1);
  for (const qcore::records::Layout& layout : qcore::records::All()) {
    constexpr std::uint16_t kCount = 3;
    Bytes stored(std::size_t{layout.length} * kCount);
    std::ranges::generate(stored, [&] { return static_cast<unsigned char>(random()); });
    Bytes host(std::size_t{layout.host_size} * kCount), again(stored.size());
    void* cursor = stored.data();
    ASSERT_EQ(EngOdsRead(&cursor, layout.code, host.data(), kCount), ENG_OK);
    EXPECT_EQ(cursor, stored.data() + stored.size()) << layout.code;
    cursor = again.data();
    ASSERT_EQ(EngOdsWrite(&cursor, layout.code, host.data(), kCount), ENG_OK);
    EXPECT_EQ(again, stored) << layout.code;
  }
}

TEST(Records, LengthsAreTheFormats) {
  const std::map<std::uint16_t, std::uint16_t> lengths = {
      {0, 2},     {1, 4},     {10, 8},     {13, 2},     {15, 4},     {31, 16},    {0x6D, 2},  {0x6E, 70}, {0x6F, 4},
      {0x71, 8},  {0x72, 24}, {0x76, 36},  {0x77, 6},   {0x78, 34},  {0xB0, 14},  {0xB1, 18}, {0xB2, 6},  {0xBC, 44},
      {0xE6, 12}, {0xE7, 2},  {0x156, 32}, {0x15E, 50}, {0x166, 14}, {0x167, 6},  {0x1FC, 8}, {0x204, 6}, {0x1D, 10},
      {0x1E, 32}, {0x2B, 38}, {0x1AC, 46}, {0x3B, 6},   {0x3C, 7},   {0x201, 58}, {0x3A, 36},
  };
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    const auto known = lengths.find(static_cast<std::uint16_t>(code));
    ASSERT_EQ(EngOdsLength(static_cast<std::uint16_t>(code)), known == lengths.end() ? 0 : known->second) << code;
  }
}

TEST(Records, FieldsStandWhereTheFormatPutsThem) {
  Bytes stored(70);
  for (std::size_t i = 0; i < stored.size(); ++i) stored[i] = static_cast<unsigned char>(i);
  void* cursor = stored.data();
  CDPABDEFINITION definition{};
  ASSERT_EQ(EngOdsRead(&cursor, ODS_CDPABDEFINITION, &definition, 1), ENG_OK);
  EXPECT_EQ(definition.TabCount, 0x1514);
  EXPECT_EQ(definition.Tabs[19], 0x3D3C);
  EXPECT_EQ(definition.TabTypes, 0x43424140u);
  CDSTYLENAME style{};
  cursor = stored.data();
  ASSERT_EQ(EngOdsRead(&cursor, ODS_CDSTYLENAME, &style, 1), ENG_OK);
  EXPECT_EQ(style.Flags, 0x05040302u);
  EXPECT_EQ(style.PABID, 0x0706);
  EXPECT_EQ(style.StyleName[35], 43);
}

TEST(Records, AnUnknownCodeMovesNothing) {
  Bytes stored(4, 0x55), host(4, 0xAA);
  void* cursor = stored.data();
  EXPECT_EQ(EngOdsRead(&cursor, 9, host.data(), 1), ENG_ERR_ODS_CODE);
  EXPECT_EQ(EngOdsWrite(&cursor, 0xFFFF, host.data(), 1), ENG_ERR_ODS_CODE);
  EXPECT_EQ(cursor, stored.data());
  EXPECT_EQ(stored, Bytes(4, 0x55));
  EXPECT_EQ(host, Bytes(4, 0xAA));
}

}  // namespace
