// Several slates updated as one: all of them or none, by themselves and within a client's transaction.
#include <functional>

#include "tests/qcore/fault_vfs.h"
#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Append;
using qtest::Data;
using qtest::FaultVfs;
using qtest::Header;
using qtest::Repeated;

// Opened through the shim, which must be there first.
struct Shim {
  FaultVfs vfs;
};

class Several : public Shim, public qtest::Database {
 protected:
  ENGHANDLE Changed(std::uint32_t id) const {
    const ENGHANDLE slate = id != 0 ? OpenSlate(id) : NewSlate();
    EXPECT_EQ(Append(slate, "New", Repeated(9000, 'n')), ENG_OK);
    return slate;
  }
  bool IsStored(std::uint32_t id) const {
    const ENGHANDLE slate = OpenSlate(id);
    const bool stored = Data(slate, "New") == Repeated(9000, 'n');
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    return stored;
  }
  static ENGSTATUS Update(const std::vector<ENGHANDLE>& slates, std::uint16_t flags = 0) {
    return EngSlateUpdateSeveral(slates.data(), static_cast<std::uint32_t>(slates.size()), flags);
  }
};

// {what happens to the third one before the update of the three, status}
TEST_F(Several, AllAreStoredOrNone) {
  struct Row {
    const char* what;
    std::function<void(std::uint32_t)> meanwhile;
    std::uint16_t flags;
    ENGSTATUS status;
  };
  const auto save = [this](std::uint32_t id) {
    const ENGHANDLE slate = OpenSlate(id);
    EXPECT_EQ(Append(slate, "Theirs", "1"), ENG_OK);
    SaveAndClose(slate);
  };
  const Row rows[] = {
      {"nothing", [](std::uint32_t) {}, 0, ENG_OK},
      {"saved", save, 0, ENG_ERR_SLATE_CONFLICT},
      {"saved, forced", save, ENG_UPDATE_FORCE, ENG_OK},
      {"deleted", [this](std::uint32_t id) { EXPECT_EQ(EngSlateDelete(db_, id, 0), ENG_OK); }, 0,
       ENG_ERR_SLATE_DELETED},
  };
  for (const bool inside : {false, true}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.what + std::to_string(inside));
      const std::uint32_t earlier = Make({{"A", "0"}}), first = Make({{"A", "1"}}), third = Make({{"A", "3"}});
      const ENGHANDLE ahead = Changed(earlier);
      const std::vector<ENGHANDLE> slates = {Changed(first), Changed(0), Changed(third)};
      row.meanwhile(third);
      if (inside) {
        ASSERT_EQ(EngDbBegin(db_), ENG_OK);
      }
      EXPECT_EQ(EngSlateUpdate(ahead, 0), ENG_OK);
      const std::size_t count = Search(1).size();
      EXPECT_EQ(Update(slates, row.flags), row.status);
      const bool stored = row.status == ENG_OK;
      EXPECT_EQ(Search(1).size(), count + stored);
      EXPECT_EQ(IsStored(first), stored);
      EXPECT_EQ(qtest::IdOf(slates[1]) != 0, stored);
      for (const ENGHANDLE slate : slates) EXPECT_EQ(Header<std::uint16_t>(slate, ENG_SLATE_IS_MODIFIED), !stored);
      if (inside) {
        ASSERT_EQ(EngDbCommit(db_), ENG_OK);
      }
      EXPECT_TRUE(IsStored(earlier));
      if (!stored) {
        EXPECT_EQ(Update({slates[1], slates[0]}), ENG_OK) << "again, without the third";
      }
      EXPECT_TRUE(IsStored(first));
      EXPECT_TRUE(IsStored(qtest::IdOf(slates[1])));
      for (const ENGHANDLE slate : slates) EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      EXPECT_EQ(EngSlateClose(ahead), ENG_OK);
    }
  }
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Several, WhatIsRefused) {
  ASSERT_EQ(EngDbCreate("other", 255, 0), ENG_OK);
  const ENGHANDLE other = Open("other");
  ENGHANDLE far = 0;
  ASSERT_EQ(EngSlateCreate(other, &far), ENG_OK);
  const ENGHANDLE near = Changed(0);
  EXPECT_EQ(EngSlateUpdateSeveral(nullptr, 1, 0), ENG_ERR_ARGUMENT);
  EXPECT_EQ(Update({}), ENG_ERR_ARGUMENT);
  EXPECT_EQ(Update({near, near}), ENG_ERR_ARGUMENT);
  EXPECT_EQ(Update({near, far}), ENG_ERR_ARGUMENT);
  EXPECT_EQ(Update({near, 0}), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(qtest::IdOf(near) + qtest::IdOf(far), 0U);
  EXPECT_EQ(EngSlateClose(near), ENG_OK);
  EXPECT_EQ(EngDbClose(other), ENG_OK);
}

// Two handles on one slate, the second forced over the first: what is taken back leaves no value that nobody has.
TEST_F(Several, OneSlateTwiceTakenBack) {
  for (const bool inside : {false, true}) {
    SCOPED_TRACE(inside);
    const std::uint32_t id = Make({{"Big", Repeated(9000, 'a')}}), gone = Make({{"A", "1"}});
    const ENGHANDLE theirs = OpenSlate(id), ours = Changed(id), lost = Changed(gone);
    EXPECT_EQ(Data(ours, "Big"), Repeated(9000, 'a'));
    EXPECT_EQ(EngItemDelete(theirs, qtest::Find(theirs, "Big")), ENG_OK);
    EXPECT_EQ(Update({theirs, ours}), ENG_ERR_SLATE_CONFLICT);
    if (inside) {
      ASSERT_EQ(EngDbBegin(db_), ENG_OK);
      EXPECT_EQ(Update({theirs, ours}, ENG_UPDATE_FORCE), ENG_OK);
      ASSERT_EQ(EngDbRollback(db_), ENG_OK);
    } else {
      EXPECT_EQ(EngSlateDelete(db_, gone, 0), ENG_OK);
      EXPECT_EQ(Update({theirs, ours, lost}, ENG_UPDATE_FORCE), ENG_ERR_SLATE_DELETED);
    }
    EXPECT_FALSE(IsStored(id));
    EXPECT_EQ(EngSlateUpdate(ours, 0), ENG_OK);
    EXPECT_EQ(EngSlateUpdate(theirs, 0), ENG_ERR_SLATE_CONFLICT);
    EXPECT_EQ(Data(ours, "Big"), Repeated(9000, 'a'));
    EXPECT_EQ(Check(), ENG_OK);
    for (const ENGHANDLE slate : {theirs, ours, lost}) EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  }
}

// Each write of the log fails once, and each sync.
TEST_F(Several, AFailedWriteLeavesNone) {
  for (const qtest::Operation operation : {qtest::Operation::kWrite, qtest::Operation::kSync}) {
    const bool sync = operation == qtest::Operation::kSync;
    int failed = 0;
    for (int n = 0; failed == n; ++n) {
      SCOPED_TRACE(std::to_string(sync) + std::to_string(n));
      const std::uint32_t first = Make({{"A", "1"}}), second = Make({{"A", "2"}});
      const std::vector<ENGHANDLE> slates = {Changed(first), Changed(second)};
      FaultVfs::hook = [=](qtest::Operation asked, qtest::FileKind kind) mutable {
        const bool hit = asked == operation && kind == qtest::FileKind::kLog && n-- == 0;
        return !hit ? SQLITE_OK : sync ? SQLITE_IOERR_FSYNC : SQLITE_FULL;
      };
      const ENGSTATUS status = Update(slates);
      FaultVfs::hook = nullptr;
      if (status != ENG_OK) {
        ++failed;
        EXPECT_FALSE(IsStored(first) || IsStored(second));
        EXPECT_EQ(Update(slates), sync ? ENG_ERR_DB_FAILED_SYNC : ENG_OK);
      }
      EXPECT_EQ(IsStored(first), status == ENG_OK || !sync);
      for (const ENGHANDLE slate : slates) EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      Reopen();
      EXPECT_EQ(IsStored(first), IsStored(second));
    }
    EXPECT_GT(failed, 0);
  }
}

}  // namespace
