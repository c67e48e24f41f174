// Each allocation of the library fails once: the client meets a status, loses nothing and can ask again.
#include <gtest/gtest.h>

#include <new>

#include "engine/engine.h"
#include "tests/home.h"
#include "tests/seam/seam.h"
#include "vq/vq.h"

namespace {

unsigned long gAllocations = 0;
unsigned long gFailAt = 0;

// By the throwing form of the same kind, so that each delete meets its own new.
void* Allocate(std::size_t size, void* (*allocator)(std::size_t)) noexcept {
  if (gFailAt != 0 && ++gAllocations == gFailAt) return nullptr;
  try {
    return allocator(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

namespace seam {

void ArmMemory(unsigned long n) {
  gAllocations = 0;
  gFailAt = n;
}

bool MemoryFailed() { return gFailAt != 0 && gAllocations >= gFailAt; }

}  // namespace seam

// The library's memory comes this way, the test's own does not.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size, ::operator new); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size, ::operator new[]); }

namespace {

class Memory : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Session.Init(), VQ_OK);
    ASSERT_EQ(Session.CreateDatabase("day", &Database, VQCreateDatabaseOptions()), VQ_OK);
  }
  void TearDown() override {
    gFailAt = 0;
    ASSERT_EQ(Database.Close(), VQ_OK);
    Database = VQDatabase();
    EXPECT_EQ(Session.Term(1), VQ_OK);
  }

  static std::uint32_t Handles() {
    std::uint32_t blocks = 0, handles = 0;
    std::uint64_t bytes = 0;
    EngMemStatistics(&blocks, &bytes, &handles);
    return blocks + handles;
  }

  void WriteDocument() {
    VQDocument document;
    ASSERT_EQ(Database.CreateDocument(&document), VQ_OK);
    VQText names;
    ASSERT_EQ(document.CreateItem("Names", &names), VQ_OK);
    names << VQString("the first of the names") << VQString("the second one");
    VQRichText body;
    ASSERT_EQ(document.CreateItem("Body", &body), VQ_OK);
    body << VQString("old words");
    ASSERT_EQ(document.Save(), VQ_OK);
    Id = document.GetSlateID();
  }

  // Once more where the failure struck. Anything but a status ends the test.
  template <class Step>
  void Must(Step step) {
    const auto once = [&]() -> VQSTATUS {
      try {
        return step();
      } catch (VQSTATUS status) {
        return status;
      }
    };
    VQSTATUS status = once();
    if (VQIsError(status) && gAllocations >= gFailAt) {
      EXPECT_TRUE(status == VQERR_INSUFFICIENT_MEMORY || status == ENG_ERR_MEMORY) << std::hex << status;
      status = once();
    }
    EXPECT_EQ(status, VQ_OK);
  }

  // True where the n-th allocation of the day was one of the library's.
  bool RunWithFailure(unsigned long n) {
    WriteDocument();
    gAllocations = 0;
    gFailAt = n;
    VQDocument document;
    VQText names;
    VQRichText body;
    Must([&] { return Database.GetDocument(Id, &document); });
    Must([&] { return document.Open(); });
    Must([&] { return document.GetItem("Names", &names); });
    Must([&] { return names.SetValue(VQString("one long enough for a block")); });
    Must([&] { return names.Insert(1, VQString("another that is long enough")); });
    Must([&] { return document.GetItem("Body", &body); });
    Must([&] {
      VQRTCursor cursor;
      const VQSTATUS status = body.GetCursor(&cursor);
      return status == VQ_OK ? cursor.GotoLast(VQString("words")) : status;
    });
    Must([&] { return body.Append(VQString(" more")); });
    Must([&] { return body.Append(VQString("lines\nof text that is long enough"), 1); });
    Must([&] {
      VQRTCursor start, end;
      VQSTATUS status = body.GetCursor(&start);
      if (status == VQ_OK) status = body.GetEndCursor(&end);
      VQFontStyle style(0xC0, 0, "Memory Face", 1, 0);
      return status == VQ_OK ? body.SetFontStyle(start, end, style) : status;
    });
    Must([&] {
      VQText parts;
      VQSTATUS status = VQString("one part that is long;another one that is long").Parse(";", &parts);
      if (status == VQ_OK) status = document.CreateItem("Copy", parts, 0, VQITEMOPTION_REPLACE);
      VQString joined;
      return status == VQ_OK ? parts.GetText(&joined, " and the ") : status;
    });
    Must([&] {
      VQDatetimes times;
      VQDatetime now;
      now.SetDate(2, 29, 2024);
      const VQSTATUS status = document.CreateItem("Times", &times, 0, VQITEMOPTION_REPLACE);
      if (status != VQ_OK) return status;
      times << now << VQDatetimeRange(now);
      return times.Delete(0, 1);
    });
    Must([&] {
      VQItemArray items;
      const VQSTATUS status = document.GetItems(&items);
      return status == VQ_OK && items.GetCount() < 4 ? VQERR_CORRUPTED : status;
    });
    Must([&] { return document.Save(); });
    Must([&] {
      VQDocument copy;
      const VQSTATUS status = Database.CreateDocument(document, &copy);
      return status == VQ_OK ? Database.DeleteDocument(&copy) : status;
    });
    Must([&] {
      VQDocumentArray all;
      VQSTATUS status = Database.GetDocuments(&all);
      if (status != VQ_OK) return status;
      VQDocument first = all[0];
      status = first.Open();
      EXPECT_EQ(first.IsOpen(), status == VQ_OK);
      return status;
    });
    const bool struck = gAllocations >= n;
    gFailAt = 0;
    return struck;
  }

  ClientHome Home;
  VQQuillonSession Session;
  VQDatabase Database;
  unsigned long Id = 0;
};

TEST_F(Memory, EachAllocationMayFailOnce) {
  ASSERT_FALSE(RunWithFailure(2000));
  const std::uint32_t handles = Handles();
  unsigned long n = 1;
  while (n < 2000 && !HasFailure()) {
    SCOPED_TRACE(n);
    if (!RunWithFailure(n)) break;
    VQDocument document;
    VQText names;
    ASSERT_EQ(Database.GetDocument(Id, &document), VQ_OK);
    ASSERT_EQ(document.Open(), VQ_OK);
    ASSERT_EQ(document.GetItem("Names", &names), VQ_OK);
    EXPECT_EQ(names.GetCount(), 2U);
    document.Close();
    EXPECT_EQ(Handles(), handles);
    ++n;
  }
  EXPECT_GT(n, 100U) << "the library's allocations must come by here";
}

}  // namespace
