#include <cstring>
#include <vector>

#include "tests/qcore/engine.h"

namespace {

using qtest::Store;
using Strings = std::vector<std::string>;

struct TextList : qtest::Engine {
  ENGHANDLE block = 0;
  std::uint16_t size = 0;

  void Create(const Strings& entries) {
    ASSERT_EQ(EngTextListCreate(static_cast<std::uint16_t>(entries.size()), 1, &block, nullptr, &size), ENG_OK);
    for (std::uint16_t i = 0; i < entries.size(); ++i) {
      const auto length = static_cast<std::uint16_t>(entries[i].size());
      ASSERT_EQ(EngTextListSetEntry(block, 1, &size, i, Store(entries[i]), length), ENG_OK);
    }
  }
  Strings Entries() {
    const void* value = EngMemLock(block);
    EXPECT_EQ(EngTextListVerify(value, 1, size), ENG_OK);
    EXPECT_EQ(EngTextListSize(value, 1), size);
    Strings entries;
    for (std::uint16_t i = 0; i < EngTextListCount(value, 1); ++i) {
      const ENGCHAR* text = nullptr;
      std::uint16_t length = 0;
      EXPECT_EQ(EngTextListGetEntry(value, 1, i, &text, &length), ENG_OK);
      entries.emplace_back(reinterpret_cast<const char*>(text), length);
    }
    EXPECT_EQ(EngMemUnlock(block), ENG_OK);
    return entries;
  }
  ENGSTATUS Add(std::uint16_t index, const std::string& text) {
    return EngTextListAddEntry(block, 1, &size, index, Store(text), static_cast<std::uint16_t>(text.size()));
  }
};

TEST_F(TextList, Edits) {
  Create({"one", "", "three"});
  EXPECT_EQ(Entries(), (Strings{"one", "", "three"}));
  EXPECT_EQ(Add(3, "end"), ENG_OK);
  EXPECT_EQ(Add(0, "front"), ENG_OK);
  EXPECT_EQ(Add(6, "x"), ENG_ERR_LIST_INDEX);
  EXPECT_EQ(EngTextListRemoveEntry(block, 1, &size, 2), ENG_OK);
  EXPECT_EQ(EngTextListRemoveEntry(block, 1, &size, 4), ENG_ERR_LIST_INDEX);
  EXPECT_EQ(EngTextListSetEntry(block, 1, &size, 4, Store("x"), 1), ENG_ERR_LIST_INDEX);
  EXPECT_EQ(Entries(), (Strings{"front", "one", "three", "end"}));
  EXPECT_EQ(EngTextListRemoveAll(block, 1, &size), ENG_OK);
  EXPECT_EQ(Entries(), Strings{});
}

TEST_F(TextList, StaysAsItWasWhenFullOrLocked) {
  Create({std::string(40000, 'a')});
  EXPECT_EQ(Add(1, std::string(25527, 'b')), ENG_OK) << "65,535 bytes";
  EXPECT_EQ(Add(0, ""), ENG_ERR_LIST_FULL);
  EXPECT_EQ(size, 65535);
  ASSERT_NE(EngMemLock(block), nullptr);
  EXPECT_EQ(EngTextListRemoveEntry(block, 1, &size, 0), ENG_ERR_MEMORY_LOCKED);
  ASSERT_EQ(EngMemUnlock(block), ENG_OK);
  EXPECT_EQ(Entries().size(), 2u);
}

TEST_F(TextList, ValuesThatLeadOutOfThemselvesAreRefused) {
  const std::string good("\x01\x05\x02\0\x01\0\x02\0abb", 11);
  EXPECT_EQ(EngTextListVerify(good.data(), 1, 11), ENG_OK);
  for (std::uint32_t length = 0; length < 11; ++length) {
    const std::vector<char> cut(good.begin(), good.begin() + length + 1);
    EXPECT_EQ(EngTextListVerify(cut.data(), 1, length), ENG_ERR_LIST_DAMAGED) << length;
  }
  EXPECT_EQ(EngTextListVerify(good.data() + 2, 0, 9), ENG_OK);
  EXPECT_EQ(EngTextListVerify("\0\x05\0\0", 1, 4), ENG_ERR_LIST_DAMAGED) << "another type";
  const ENGCHAR* text = nullptr;
  std::uint16_t length = 0;
  EXPECT_EQ(EngTextListGetEntry(good.data(), 1, 2, &text, &length), ENG_ERR_LIST_INDEX);
  Create({"a"});
  size = 99;
  EXPECT_EQ(Add(0, "x"), ENG_ERR_LIST_DAMAGED) << "a size beyond the block";
}

}  // namespace
