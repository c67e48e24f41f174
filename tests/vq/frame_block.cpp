// Memory blocks: inline, owned and attached.
#include <string>

#include "engine/records.h"
#include "tests/vq/support/engine_fixture.h"
#include "vq/frame/vqmblock.h"

using namespace vqtest;

namespace {

class Blocks : public SwitchFixture {
 protected:
  static std::string Bytes(VQMemoryBlock& block) {
    std::string bytes(block.GetSize(), 0);
    EXPECT_EQ(block.Read(bytes.size(), bytes.data(), 0), VQ_OK);
    return bytes;
  }
  static void Fill(VQMemoryBlock& block, const std::string& bytes, int engine_memory = 0) {
    ASSERT_EQ(block.Allocate(bytes.size(), engine_memory), VQ_OK);
    ASSERT_EQ(block.Write(bytes.size(), bytes.data(), 0), VQ_OK);
  }
  const std::string Digits = "0123456789";
};

INSTANTIATE_TEST_SUITE_P(Switch, Blocks, ::testing::Values(0, 1));

TEST_P(Blocks, SmallOnesTakeNoEngineMemory) {
  const struct {
    unsigned long Size;
    int Forced;
    std::uint32_t Taken;
  } rows[] = {{24, 0, 0}, {25, 0, 1}, {1, 1, 1}};
  for (const auto& row : rows) {
    VQMemoryBlock block;
    EXPECT_EQ(block.Allocate(row.Size, row.Forced), VQ_OK);
    EXPECT_EQ(Live::Now().Blocks - Baseline.Blocks, row.Taken) << row.Size;
  }
}

TEST_P(Blocks, Refusals) {
  VQMemoryBlock block;
  Fill(block, Digits, 1);
  VQMemoryBlock small;
  Fill(small, "abc");
  VQMemoryBlock none;
  char buffer[32];
  const struct {
    const char* What;
    VQSTATUS Status;
    VQSTATUS Seen;
  } rows[] = {
      {"allocate twice", VQERR_MEMORY_ALREADY_ALLOCATED, ReturnedStatusOf([&] { return block.Allocate(5, 0); })},
      {"allocate over inline data", VQERR_ASSERTION_FAILED, StatusOf([&] { return small.Allocate(5, 0); })},
      {"read behind the end", VQERR_RT_INVALID, ReturnedStatusOf([&] { return block.Read(8, buffer, 3); })},
      {"read with a huge offset", VQERR_RT_INVALID, ReturnedStatusOf([&] { return block.Read(2, buffer, ~0UL); })},
      {"read into nothing", VQERR_INVALID_PARAMETER, ReturnedStatusOf([&] { return block.Read(2, nullptr, 0); })},
      {"write behind the end", VQERR_CORRUPTED, ReturnedStatusOf([&] { return block.Write(11, buffer, 0); })},
      {"write nothing", VQERR_INVALID_PARAMETER, ReturnedStatusOf([&] { return block.Write(0, buffer, 0); })},
      {"unknown structure", VQERR_INVALID_PARAMETER,
       ReturnedStatusOf([&] { return block.ReadODS(0xFFFF, buffer, 0); })},
      {"structure behind the end", VQERR_RT_INVALID,
       ReturnedStatusOf([&] { return block.ReadODS(ODS_TIMEDATE, buffer, 3); })},
      {"move out at the front", VQERR_CORRUPTED, ReturnedStatusOf([&] { return block.Move(3, -5, 4); })},
      {"move out at the end", VQERR_CORRUPTED, ReturnedStatusOf([&] { return block.Move(3, 5, 4); })},
      {"move by nothing", VQERR_OUT_OF_RANGE, ReturnedStatusOf([&] { return block.Move(3, 0, 4); })},
      {"grow", VQERR_ASSERTION_FAILED, ReturnedStatusOf([&] { return block.Resize(11, 0); })},
      {"attach over owned memory", VQERR_ASSERTION_FAILED, ReturnedStatusOf([&] { return block.Attach(1, 0, 4); })},
      {"attach no memory", VQERR_CORRUPTED, ReturnedStatusOf([&] { return none.Attach(0, 0, 100); })},
      {"place of inline data", VQERR_WRONG_SITUATION, StatusOf([&] {
         BLOCKID id;
         return small.GetBlockID(&id);
       })},
      {"part behind the end", VQERR_CORRUPTED, StatusOf([&] {
         VQMemoryBlock part;
         return part.AttachPart(block, 8, 3);
       })},
  };
  for (const auto& row : rows) EXPECT_EQ(row.Seen, row.Status) << row.What;
  EXPECT_EQ(Bytes(block), Digits);
}

TEST_P(Blocks, MoveOverlappingBothWays) {
  VQMemoryBlock block;
  Fill(block, Digits);
  EXPECT_EQ(block.Move(6, 2, 1), VQ_OK);
  EXPECT_EQ(Bytes(block), "0121234569");
  EXPECT_EQ(block.Move(6, -2, 3), VQ_OK);
  EXPECT_EQ(Bytes(block), "0123456569");
}

TEST_P(Blocks, ResizeKeepsTheBytes) {
  VQMemoryBlock block;
  Fill(block, std::string(30, 'x') + Digits);
  EXPECT_EQ(block.Resize(5, 0), VQ_OK);
  EXPECT_TRUE(block.IsInline());
  EXPECT_EQ(Bytes(block), "xxxxx");
  EXPECT_EQ(block.Resize(4, 1), VQ_OK);
  EXPECT_TRUE(block.OwnsMemory());
  EXPECT_EQ(Bytes(block), "xxxx");
  block.Lock();
  EXPECT_EQ(block.Resize(4, 0), VQ_OK);
  EXPECT_TRUE(block.IsLocked());  // destroyed while locked
}

TEST_P(Blocks, MemoryThatOthersLockStays) {
  VQMemoryBlock block;
  Fill(block, Digits, 1);
  ASSERT_NE(EngMemLock(block.GetPool()), nullptr);
  EXPECT_EQ(ReturnedStatusOf([&] { return block.Resize(5, 0); }), VQSTATUS{ENG_ERR_MEMORY_LOCKED});
  EXPECT_EQ(ReturnedStatusOf([&] { return block.Free(); }), VQSTATUS{ENG_ERR_MEMORY_LOCKED});
  EXPECT_EQ(Bytes(block), Digits);
  EXPECT_EQ(EngMemUnlock(block.GetPool()), ENG_OK);
}

TEST_P(Blocks, WindowsLeaveTheOwnersBytes) {
  VQMemoryBlock owner;
  Fill(owner, std::string(20, 'a') + Digits, 1);
  VQMemoryBlock window;
  EXPECT_EQ(window.AttachPart(owner, 10, 20), VQ_OK);
  EXPECT_EQ(Bytes(window), Digits);
  EXPECT_EQ(window.Resize(4, 0), VQ_OK);
  EXPECT_EQ(Bytes(window), "0123");
  EXPECT_EQ(Bytes(owner), std::string(20, 'a') + Digits);
  window.Lock();
  EXPECT_EQ(window.Attach(99, 1, 0), VQ_OK);
  EXPECT_FALSE(window.IsLocked());
  EXPECT_EQ(window.GetPool(), owner.GetPool());
  EXPECT_EQ(owner.Free(), VQ_OK);
  EXPECT_EQ(StatusOf([&] { window.Lock(); }), VQERR_CORRUPTED);
  EXPECT_FALSE(window.IsLocked());
}

TEST_P(Blocks, CopySwapAndRelease) {
  VQMemoryBlock engine;
  Fill(engine, Digits, 1);
  VQMemoryBlock small;
  Fill(small, "abcd");
  EXPECT_EQ(engine.CopyFrom(small, 8, 2), VQ_OK);
  EXPECT_EQ(StatusOf([&] { return engine.CopyFrom(small, 8, 0); }), VQERR_CORRUPTED);
  engine.Swap(small);
  EXPECT_EQ(Bytes(engine), "abcd");
  EXPECT_EQ(Bytes(small), "01234567ab");
  EXPECT_EQ(engine.Release(), 0u);
  const ENGHANDLE handle = small.Release();
  EXPECT_TRUE(small.IsEmpty());
  EXPECT_EQ(EngMemFree(handle), ENG_OK);
}

}  // namespace
