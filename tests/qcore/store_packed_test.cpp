// The packed value of a row: unknown bytes are kept, hostile ones give a status.
#include <sqlite3.h>

#include <random>

#include "qcore/slates/packed.h"
#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"
#include "tests/qcore/store_fixture.h"

namespace {

using qcore::Bytes;
using qcore::PackedItem;
using qcore::PackedReader;
using qcore::PackedWriter;

struct Packed : qtest::Database {
  // The row's packed value, or with `value` puts one there.
  std::vector<std::uint8_t> Row(std::uint32_t id, const std::vector<std::uint8_t>* value = nullptr) {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(file().c_str(), &connection), SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    const char* sql = value ? "UPDATE slate SET packed=?2 WHERE id=?1" : "SELECT packed FROM slate WHERE id=?1";
    EXPECT_EQ(sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr), SQLITE_OK);
    sqlite3_bind_int64(statement, 1, id);
    if (value) sqlite3_bind_blob(statement, 2, value->data(), static_cast<int>(value->size()), SQLITE_STATIC);
    std::vector<std::uint8_t> bytes;
    if (sqlite3_step(statement) == SQLITE_ROW) {
      const auto* blob = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement, 0));
      bytes.assign(blob, blob + sqlite3_column_bytes(statement, 0));
    }
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return bytes;
  }
};

Bytes AsBytes(const std::string& text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }
std::string AsText(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

TEST_F(Packed, WhatANewerEngineAddedIsWrittenBack) {
  const std::uint32_t id = Make({{"A", "1"}, {"B", "2"}});
  std::vector<std::uint8_t> before = Row(id);
  PackedReader reader;
  ASSERT_EQ(reader.Start(before, id), ENG_OK);
  PackedWriter writer(2);
  for (const std::string& kept : {std::string("after A"), std::string("after B")}) {
    PackedItem item;
    ASSERT_EQ(reader.Next(&item), ENG_OK);
    item.kept = AsBytes(kept);
    writer.Add(item);
  }
  const Bytes extended = writer.Finish(AsBytes("at the end"), id);
  const std::vector<std::uint8_t> row(extended.begin(), extended.end());
  Row(id, &row);
  const ENGHANDLE slate = OpenSlate(id);
  ASSERT_EQ(EngItemSetText(slate, qtest::Store("New"), qtest::Store("n"), 9), ENG_OK);
  ASSERT_EQ(EngItemReallocate(slate, qtest::Find(slate, "A"), nullptr, 9000), ENG_OK);
  SaveAndClose(slate);
  const std::vector<std::uint8_t> after = Row(id);
  reader = PackedReader();
  ASSERT_EQ(reader.Start(after, id), ENG_OK);
  for (const char* kept : {"after A", "after B", ""}) {
    PackedItem item;
    ASSERT_EQ(reader.Next(&item), ENG_OK);
    EXPECT_EQ(AsText(item.kept), kept);
  }
  EXPECT_EQ(AsText(reader.Rest()), "at the end");
}

// Reads what a row holds to its end; the status at the first fault.
ENGSTATUS ReadAll(Bytes packed) {
  PackedReader reader;
  ENGSTATUS status = reader.Start(packed, 4);
  for (std::uint32_t i = 0; status == ENG_OK && i < reader.count(); ++i) {
    PackedItem item;
    status = reader.Next(&item);
    const bool packed_value = status == ENG_OK && item.aside == 0;
    EXPECT_TRUE(!packed_value || AsText(item.value).size() == item.size);
  }
  EXPECT_TRUE(status != ENG_OK || AsText(reader.Rest()).size() <= packed.size());
  return status;
}

// Bytes that someone sealed with a right checksum are still no reason to read past an end.
TEST(PackedBytes, AnyBytesParseOrGiveAStatus) {
  PackedWriter writer(3);
  PackedItem item;
  item.name = 300;
  const std::string value("\0\5some text", 11);
  item.value = AsBytes(value);
  item.size = static_cast<std::uint32_t>(value.size());
  writer.Add(item);
  writer.Add(item);
  item.aside = 77;
  item.value = {};
  item.size = 9000;
  writer.Add(item);
  const Bytes whole = writer.Finish(AsBytes("rest"), 4);
  ASSERT_EQ(ReadAll(whole), ENG_OK);
  std::mt19937 random(3);
  int good = 0;
  for (int round = 0; round < 200000; ++round) {
    std::vector<std::uint8_t> bytes(whole.begin(), whole.end());
    if (round % 2 == 0) bytes.resize(random() % bytes.size() + 1);
    for (int i = round % 4; i > 0; --i) bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    if (bytes.size() > 4) qcore::StoreLittle(bytes.data(), qcore::Checksum(Bytes(bytes).subspan(4), 4));
    const ENGSTATUS status = ReadAll(bytes);
    ASSERT_TRUE(status == ENG_OK || status == ENG_ERR_ITEM_DAMAGED);
    good += status == ENG_OK;
  }
  EXPECT_GT(good, 0);
}

}  // namespace
