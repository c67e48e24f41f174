// ID tables against std::set, and their stored form.
#include <algorithm>
#include <random>
#include <set>

#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Ids;

struct IdTables : qtest::Engine {
  ENGHANDLE Table(const std::vector<std::uint32_t>& ids) {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    for (std::uint32_t id : ids) EXPECT_EQ(EngIdTableInsert(table, id, nullptr), ENG_OK);
    return table;
  }
};

std::vector<std::uint8_t> Runs(ENGHANDLE table) {
  const auto* bytes = static_cast<const std::uint8_t*>(EngMemLock(table));
  const std::size_t count = bytes[4] | bytes[5] << 8;
  const std::vector<std::uint8_t> runs(bytes + 16, bytes + 16 + 5 * count);
  EXPECT_EQ(EngMemUnlock(table), ENG_OK);
  return runs;
}

TEST_F(IdTables, RunForm) {
  struct Row {
    std::vector<std::uint32_t> ids;
    std::uint32_t removed;
    std::vector<std::uint8_t> runs;
  };
  for (const Row& row : {Row{{4, 8, 12}, 0, {2, 4, 0, 0, 0}}, Row{{12, 4, 8}, 0, {2, 4, 0, 0, 0}},
                         Row{{4, 8, 12}, 8, {0, 4, 0, 0, 0, 0, 12, 0, 0, 0}}, Row{{4, 8, 12}, 4, {1, 8, 0, 0, 0}},
                         Row{{4, 12, 6}, 0, {0, 4, 0, 0, 0, 0, 6, 0, 0, 0, 0, 12, 0, 0, 0}},
                         Row{{4, 8, 6}, 0, {0, 4, 0, 0, 0, 0, 6, 0, 0, 0, 0, 8, 0, 0, 0}}, Row{{4}, 4, {}}}) {
    const ENGHANDLE table = Table(row.ids);
    if (row.removed != 0) {
      EXPECT_EQ(EngIdTableDelete(table, row.removed, nullptr), ENG_OK);
    }
    EXPECT_EQ(Runs(table), row.runs);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }
}

// Dense IDs make runs, sparse ones drive the table past 65,535 runs and back.
TEST_F(IdTables, AgreesWithASet) {
  std::mt19937 random(7);
  for (const auto& [range, rounds] : {std::pair(1000u, 20000), std::pair(4000000u, 150000)}) {
    const ENGHANDLE table = Table({});
    std::set<std::uint32_t> expected;
    for (int i = 0; i < rounds; ++i) {
      const std::uint32_t id = random() % range * 4;
      int changed = 2;
      if (random() % 3 != 0) {
        ASSERT_EQ(EngIdTableInsert(table, id, &changed), ENG_OK);
        ASSERT_EQ(changed, expected.insert(id).second);
      } else {
        ASSERT_EQ(EngIdTableDelete(table, id, &changed), ENG_OK);
        ASSERT_EQ(changed, static_cast<int>(expected.erase(id)));
      }
    }
    EXPECT_TRUE(std::ranges::equal(Ids(table), expected));
    while (expected.size() > 20000) {
      ASSERT_EQ(EngIdTableDelete(table, *expected.rbegin(), nullptr), ENG_OK);
      expected.erase(std::prev(expected.end()));
    }
    EXPECT_TRUE(std::ranges::equal(Ids(table), expected));
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }
}

TEST_F(IdTables, WholeTables) {
  const ENGHANDLE table = Table({4, 8, 16});
  const ENGHANDLE other = Table({8, 12, 40});
  ENGHANDLE copy = 0;
  ASSERT_EQ(EngIdTableCopy(table, &copy), ENG_OK);
  EXPECT_EQ(EngIdTableInsertTable(table, other), ENG_OK);
  EXPECT_EQ(Ids(table), (std::vector<std::uint32_t>{4, 8, 12, 16, 40}));
  EXPECT_EQ(EngIdTableDeleteTable(copy, other), ENG_OK);
  EXPECT_EQ(Ids(copy), (std::vector<std::uint32_t>{4, 16}));
  EXPECT_EQ(EngIdTableInsertTable(table, table), ENG_OK);
  EXPECT_EQ(EngIdTableEntries(table), 5u);
  EXPECT_EQ(EngIdTableLookup(table, 12), 1);
  EXPECT_EQ(EngIdTableLookup(table, 13), 0);
  EXPECT_EQ(EngIdTableDeleteAll(table), ENG_OK);
  EXPECT_EQ(EngIdTableEntries(table), 0u);
  for (ENGHANDLE handle : {table, other, copy}) EXPECT_EQ(EngIdTableDestroy(handle), ENG_OK);
}

TEST_F(IdTables, Refusals) {
  const ENGHANDLE table = Table({4});
  ENGHANDLE block = 0;
  ASSERT_EQ(EngMemAlloc(0, 64, &block), ENG_OK);
  EXPECT_EQ(EngIdTableInsert(block, 4, nullptr), ENG_ERR_INVALID_HANDLE);
  auto* bytes = static_cast<std::uint8_t*>(EngMemLock(table));
  EXPECT_EQ(EngIdTableInsert(table, 8, nullptr), ENG_ERR_MEMORY_LOCKED);
  EXPECT_EQ(EngIdTableDelete(table, 4, nullptr), ENG_ERR_MEMORY_LOCKED);
  EXPECT_EQ(EngIdTableDestroy(table), ENG_ERR_MEMORY_LOCKED);
  bytes[5] = 0xFF;  // more runs than the block has room for
  EXPECT_EQ(EngMemUnlock(table), ENG_OK);
  EXPECT_EQ(EngIdTableInsert(table, 8, nullptr), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngIdTableEntries(table), 0u);
  EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  EXPECT_EQ(EngIdTableInsert(table, 8, nullptr), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngIdTableCreate(2, &block), ENG_ERR_ARGUMENT);
}

}  // namespace
