#include "qcore/memory/memory.h"

#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "tests/qcore/engine.h"

namespace {

using qcore::Kind;

struct Memory : qtest::Engine {
  ENGHANDLE Block(std::uint32_t size) {
    ENGHANDLE handle = 0;
    EXPECT_EQ(EngMemAlloc(ENG_MEM_ZERO, size, &handle), ENG_OK);
    return handle;
  }
};

TEST_F(Memory, ReallocKeepsHandleAndBytes) {
  const ENGHANDLE block = Block(3);
  std::memcpy(EngMemLock(block), "abc", 3);
  ASSERT_EQ(EngMemUnlock(block), ENG_OK);
  for (std::uint32_t size : {100000u, 3u}) {
    ASSERT_EQ(EngMemRealloc(block, size), ENG_OK);
    std::uint32_t now = 0;
    EXPECT_EQ(EngMemGetSize(block, &now), ENG_OK);
    EXPECT_EQ(now, size);
    EXPECT_EQ(std::memcmp(EngMemLock(block), "abc", 3), 0);
    ASSERT_EQ(EngMemUnlock(block), ENG_OK);
  }
  ASSERT_EQ(EngMemRealloc(block, 0), ENG_OK);
  EXPECT_NE(EngMemLock(block), nullptr);
}

TEST_F(Memory, ALockedBlockStays) {
  const ENGHANDLE block = Block(8);
  void* address = EngMemLock(block);
  EXPECT_EQ(EngMemLock(block), address);
  ASSERT_EQ(EngMemUnlock(block), ENG_OK);
  EXPECT_EQ(EngMemFree(block), ENG_ERR_MEMORY_LOCKED);
  EXPECT_EQ(EngMemRealloc(block, 9), ENG_ERR_MEMORY_LOCKED);
  ASSERT_EQ(EngMemUnlock(block), ENG_OK);
  EXPECT_EQ(EngMemUnlock(block), ENG_ERR_ARGUMENT);
  EXPECT_EQ(EngMemFree(block), ENG_OK);
}

TEST_F(Memory, WrongHandlesAreRefusedEverywhere) {
  const ENGHANDLE freed = Block(1);
  ASSERT_EQ(EngMemFree(freed), ENG_OK);
  const ENGHANDLE live = Block(1);
  const ENGHANDLE library_kind = (live & 0x0FFFFFFF) | static_cast<std::uint32_t>(Kind::kLibrary) << 28;
  for (ENGHANDLE wrong : {0u, freed, library_kind, live ^ 0x00200000, 0x1FFFFFFFu, 0xFFFFFFFFu}) {
    std::uint32_t size = 0;
    EXPECT_EQ(EngMemLock(wrong), nullptr) << wrong;
    EXPECT_EQ(EngMemUnlock(wrong), ENG_ERR_INVALID_HANDLE) << wrong;
    EXPECT_EQ(EngMemFree(wrong), ENG_ERR_INVALID_HANDLE) << wrong;
    EXPECT_EQ(EngMemRealloc(wrong, 2), ENG_ERR_INVALID_HANDLE) << wrong;
    EXPECT_EQ(EngMemGetSize(wrong, &size), ENG_ERR_INVALID_HANDLE) << wrong;
  }
}

TEST_F(Memory, AFreedHandleStaysStaleForLong) {
  const ENGHANDLE first = Block(1);
  ASSERT_EQ(EngMemFree(first), ENG_OK);
  for (int i = 0; i < 20000; ++i) {
    const ENGHANDLE next = Block(1);
    ASSERT_NE(next, first) << "after " << i;
    ASSERT_EQ(EngMemFree(next), ENG_OK);
  }
}

TEST_F(Memory, IdTableBlocksLockButDoNotFreeAsMemory) {
  ENGHANDLE table = 0;
  ASSERT_EQ(qcore::memory::Allocate(Kind::kIdTable, 16, qcore::memory::Fill::kZero, &table), ENG_OK);
  EXPECT_NE(EngMemLock(table), nullptr);
  EXPECT_EQ(EngMemUnlock(table), ENG_OK);
  EXPECT_EQ(EngMemFree(table), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(qcore::memory::Free(Kind::kIdTable, table), ENG_OK);
}

TEST_F(Memory, StatisticsFollowWhatIsLive) {
  std::uint32_t blocks = 0, handles = 0;
  std::uint64_t bytes = 0;
  const ENGHANDLE a = Block(10);
  ASSERT_EQ(EngMemRealloc(Block(5), 1), ENG_OK);
  EngMemStatistics(&blocks, &bytes, &handles);
  EXPECT_EQ(blocks, 2u);
  EXPECT_EQ(bytes, 11u);
  EXPECT_EQ(handles, 2u);
  ASSERT_EQ(EngMemFree(a), ENG_OK);
  EngMemStatistics(&blocks, &bytes, &handles);
  EXPECT_EQ(bytes, 1u);
}

TEST_F(Memory, ThreadsLockEachOthersBlocks) {
  const ENGHANDLE shared = Block(8);
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        const ENGHANDLE own = Block(16);
        ASSERT_NE(EngMemLock(shared), nullptr);
        ASSERT_NE(EngMemLock(own), nullptr);
        ASSERT_EQ(EngMemUnlock(own), ENG_OK);
        ASSERT_EQ(EngMemFree(own), ENG_OK);
        ASSERT_EQ(EngMemUnlock(shared), ENG_OK);
      }
    });
  }
  threads.clear();
  EXPECT_EQ(EngMemFree(shared), ENG_OK);
}

TEST_F(Memory, ALockOfOneThreadIsLetGoByAnother) {
  const ENGHANDLE block = Block(8);
  ASSERT_NE(EngMemLock(block), nullptr);
  std::jthread([&] { EXPECT_EQ(EngMemUnlock(block), ENG_OK); }).join();
  EXPECT_EQ(EngMemUnlock(block), ENG_ERR_ARGUMENT);
  EXPECT_EQ(EngMemFree(block), ENG_OK);
}

}  // namespace
