// Full disks, failed syncs, kills, two writers at once, and damaged files.
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "tests/qcore/fault_vfs.h"
#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Append;
using qtest::Data;
using qtest::FaultVfs;
using qtest::FileKind;
using qtest::Header;
using qtest::Items;
using qtest::Operation;
using qtest::Repeated;
using qtest::Store;

// Puts the shim in place before the fixture opens its database.
struct Shim {
  FaultVfs vfs;
};
struct Faults : Shim, qtest::Database {};

// Fails the n-th operation of a kind on the log, counted from 0.
FaultVfs::Hook FailLog(Operation operation, int n, int code) {
  return [=](Operation asked, FileKind kind) mutable {
    return asked == operation && kind == FileKind::kLog && n-- == 0 ? code : SQLITE_OK;
  };
}

struct Fault {
  const char* title;
  Operation operation;
  int code;
  ENGSTATUS status;
  ENGSTATUS retry;  // by the same handle
};

TEST_F(Faults, AFailedSaveLeavesTheStoreAsItWas) {
  const Fault faults[] = {
      {"full disk", Operation::kWrite, SQLITE_FULL, ENG_ERR_DB_FULL, ENG_OK},
      {"short write", Operation::kWrite, SQLITE_IOERR_WRITE, ENG_ERR_DB_IO, ENG_OK},
      {"failed sync", Operation::kSync, SQLITE_IOERR_FSYNC, ENG_ERR_DB_IO, ENG_ERR_DB_FAILED_SYNC},
  };
  for (const Fault& fault : faults) {
    int failed = 0;
    for (int n = 0; failed == n; ++n) {
      SCOPED_TRACE(fault.title + std::to_string(n));
      const std::uint32_t id = Make({{"A", "1"}, {"Body", Repeated(9000, 'a')}});
      ENGHANDLE slate = OpenSlate(id);
      Append(slate, "New " + std::string(fault.title), Repeated(9000, 'b'));
      ASSERT_EQ(EngItemDelete(slate, qtest::Find(slate, "Body")), ENG_OK);
      FaultVfs::hook = FailLog(fault.operation, n, fault.code);
      const ENGSTATUS status = EngSlateUpdate(slate, 0);
      FaultVfs::hook = nullptr;
      if (status != ENG_OK) {
        ++failed;
        EXPECT_EQ(status, fault.status);
        EXPECT_EQ(Header<std::uint16_t>(slate, ENG_SLATE_IS_MODIFIED), 1);
        const ENGHANDLE before = OpenSlate(id);
        EXPECT_EQ(Data(before, "Body"), Repeated(9000, 'a'));
        EXPECT_EQ(EngSlateClose(before), ENG_OK);
        EXPECT_EQ(EngSlateUpdate(slate, 0), fault.retry);
      }
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      Reopen();
      slate = OpenSlate(id);
      const bool saved = status == ENG_OK || fault.retry == ENG_OK;
      EXPECT_EQ(Data(slate, "New " + std::string(fault.title)), saved ? Repeated(9000, 'b') : "?546");
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      EXPECT_EQ(Check(), ENG_OK);
    }
    EXPECT_GT(failed, 0);
  }
}

TEST_F(Faults, AFullDiskEndsATransaction) {
  const std::uint32_t kept = Make({{"A", "1"}});
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  const ENGHANDLE slate = OpenSlate(kept);
  Append(slate, "B", "2");
  ASSERT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
  FaultVfs::hook = FailLog(Operation::kWrite, 0, SQLITE_FULL);
  EXPECT_EQ(EngDbCommit(db_), ENG_ERR_DB_FULL);
  FaultVfs::hook = nullptr;
  EXPECT_EQ(Header<std::uint16_t>(slate, ENG_SLATE_IS_MODIFIED), 1);
  EXPECT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
  EXPECT_EQ(Items(slate).size(), 2u);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

// A large row whose items keep their sizes takes few pages of the log: that where it begins, and the end of the feed.
TEST_F(Faults, ARowThatKeepsItsLengthIsWrittenOver) {
  std::vector<std::pair<std::string, std::string>> items;
  for (int i = 0; i < 300; ++i) items.emplace_back("Item" + std::to_string(i), "a text of some length");
  const std::uint32_t id = Make(items);
  int writes = 0;
  constexpr int kSaves = 32;
  for (int save = 0; save < kSaves; ++save) {
    const ENGHANDLE slate = OpenSlate(id);
    ASSERT_EQ(EngItemTouch(slate, qtest::Find(slate, "Item0")), ENG_OK);
    FaultVfs::hook = [&](Operation operation, FileKind kind) {
      writes += operation == Operation::kWrite && kind == FileKind::kLog ? 1 : 0;
      return SQLITE_OK;
    };
    SaveAndClose(slate);
    FaultVfs::hook = nullptr;
  }
  EXPECT_LT(writes, 6 * kSaves);
  // As earlier programs compare it, and as some of them wrote it.
  const char* const plain =
      "SELECT count(*) FROM slate WHERE length(sum)=10 AND CAST(sum AS INTEGER) BETWEEN 0 AND 4294967295";
  EXPECT_EQ(Count(plain), 1);
  Execute("UPDATE slate SET sum=CAST(sum AS INTEGER)-4294967296");
  EXPECT_EQ(Data(OpenSlate(id), "Item0"), "a text of some length");
}

// A checkpoint writes to the store itself. While it does, no connection may start to write, since that could restart
// the log under it.
TEST_F(Faults, NobodyWritesDuringACheckpoint) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "SELECT count(*) FROM slate", nullptr, nullptr, nullptr), SQLITE_OK);
  int tried = 0;
  int refused = 0;
  FaultVfs::hook = [&](Operation, FileKind kind) {
    if (kind != FileKind::kStore || tried > 50) return SQLITE_OK;
    ++tried;
    if (sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_BUSY) {
      ++refused;
    } else {
      sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    return SQLITE_OK;
  };
  Make({{"Body", Repeated(5000000, 'a')}});
  FaultVfs::hook = nullptr;
  sqlite3_close(other);
  EXPECT_GT(tried, 10);
  EXPECT_EQ(refused, tried);
  EXPECT_EQ(Check(), ENG_OK);
}

struct Crashes : qtest::Database {};

// Saves documents until it is killed, and tells each acknowledged one.
[[noreturn]] void SaveForever(int pipe, const std::string& name) {
  ENGHANDLE db = 0;
  if (EngDbOpen("main", &db) != ENG_OK) _exit(1);
  for (std::uint32_t i = 0;; ++i) {
    ENGHANDLE slate = 0;
    EngSlateCreate(db, &slate);
    Append(slate, name + std::to_string(i % 50), std::to_string(i));
    Append(slate, "Body", Repeated(3000 + i % 5 * 4000, 'a'));
    if (EngSlateUpdate(slate, 0) != ENG_OK) _exit(2);
    std::uint32_t id = 0;
    EngSlateGetHeader(slate, ENG_SLATE_ID, &id);
    EngSlateClose(slate);
    if (write(pipe, &id, sizeof id) != sizeof id) _exit(3);
  }
}

TEST_F(Crashes, AKillLosesNoAcknowledgedSave) {
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  std::vector<std::uint32_t> acknowledged;
  for (int round = 0; round < 12; ++round) {
    int ends[2][2];
    pid_t children[2];
    for (int i = 0; i < 2; ++i) {
      ASSERT_EQ(pipe(ends[i]), 0);
      children[i] = fork();
      if (children[i] == 0) SaveForever(ends[i][1], "Name" + std::to_string(i) + "_" + std::to_string(round));
      close(ends[i][1]);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(15 + 7 * round));
    for (int i = 0; i < 2; ++i) {
      kill(children[i], SIGKILL);
      int status = 0;
      ASSERT_EQ(waitpid(children[i], &status, 0), children[i]);
      EXPECT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
      for (std::uint32_t id = 0; read(ends[i][0], &id, sizeof id) == sizeof id;) acknowledged.push_back(id);
      close(ends[i][0]);
    }
  }
  db_ = Open();
  EXPECT_GT(acknowledged.size(), 12u);
  for (std::uint32_t id : acknowledged) {
    const ENGHANDLE slate = OpenSlate(id);
    EXPECT_EQ(Items(slate).size(), 2u);
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  }
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Crashes, ThreadsCountTogether) {
  const std::uint32_t id = Make({{"Count", "0"}});
  const auto count = [id](int rounds) {
    ENGHANDLE db = 0;
    ASSERT_EQ(EngDbOpen("main", &db), ENG_OK);
    while (rounds > 0) {
      ENGHANDLE slate = 0;
      ASSERT_EQ(EngSlateOpen(db, id, 0, &slate), ENG_OK);
      const std::string next = std::to_string(std::stoi(Data(slate, "Count")) + 1);
      ASSERT_EQ(EngItemSetText(slate, Store("Count"), Store(next), 100), ENG_OK);
      const ENGSTATUS status = EngSlateUpdate(slate, 0);
      ASSERT_TRUE(status == ENG_OK || status == ENG_ERR_SLATE_CONFLICT) << status;
      if (status == ENG_OK) --rounds;
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    }
    EXPECT_EQ(EngDbClose(db), ENG_OK);
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) threads.emplace_back(count, 200);
  for (std::thread& thread : threads) thread.join();
  const ENGHANDLE slate = OpenSlate(id);
  EXPECT_EQ(Data(slate, "Count"), "600");
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

// Another process holds the write lock: writers wait and then say so; a search still reads.
struct Busy : qtest::Database {
  Busy() : Database("Directory=data\nStoreBusyTimeout=30\n") {}
};

TEST_F(Busy, BesideAnOpenTransaction) {
  qtest::StandingClock clock;
  const std::uint32_t id = Make({{"A", "1"}});
  const ENGHANDLE other = Open();
  ASSERT_EQ(EngDbBegin(other), ENG_OK);
  ENGHANDLE theirs = 0;
  ASSERT_EQ(EngSlateCreate(other, &theirs), ENG_OK);
  clock.Sleep(std::chrono::seconds(1));
  ASSERT_EQ(EngSlateUpdate(theirs, 0), ENG_OK);
  const std::uint32_t late = qtest::IdOf(theirs);
  clock.Sleep(std::chrono::seconds(1));
  const ENGHANDLE mine = OpenSlate(id);
  EXPECT_EQ(EngSlateUpdate(mine, 0), ENG_ERR_DB_IN_USE);
  EXPECT_EQ(EngDbBegin(db_), ENG_ERR_DB_IN_USE);
  TIMEDATE until{};
  EXPECT_EQ(Search(1, nullptr, &until), std::vector<std::uint32_t>{id});
  ASSERT_EQ(EngDbCommit(other), ENG_OK);
  EXPECT_EQ(Search(1, &until), (std::vector<std::uint32_t>{id, late})) << "committed after the search, saved before it";
  EXPECT_EQ(EngSlateUpdate(mine, 0), ENG_OK);
  EXPECT_EQ(EngDbClose(other), ENG_OK);
}

// A store of several pages and kinds of rows, to be damaged.
struct Damage : qtest::Database {
  Damage() {
    for (int i = 0; i < 40; ++i) ids_.push_back(Make({{"Subject", Repeated(300, 'a')}, {"Number", std::to_string(i)}}));
    ids_.push_back(Make({{"Body", Repeated(100000, 'b')}}));
    ids_.push_back(Make({{"$TITLE", "Main"}}, 4));
    for (std::uint32_t id : ids_) {
      const ENGHANDLE slate = OpenSlate(id);
      items_.push_back(Items(slate));
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    }
    EXPECT_EQ(EngDbClose(db_), ENG_OK);
    db_ = 0;
    whole_ = folder_.Read("data/main.vlt");
  }

  // Opens and reads everything; each item is what it was or a status is given. Tells whether a fault was noticed.
  bool ReadsRightOrFails() {
    ENGHANDLE db = 0;
    if (EngDbOpen("main", &db) != ENG_OK) return true;
    bool noticed = false;
    for (std::size_t i = 0; i < ids_.size(); ++i) {
      ENGHANDLE slate = 0;
      if (EngSlateOpen(db, ids_[i], 0, &slate) != ENG_OK) {
        noticed = true;
        continue;
      }
      for (const auto& [name, data] : items_[i]) {
        const std::string read = Data(slate, name);
        if (read[0] == '?') noticed = true;
        EXPECT_TRUE(read == data || read[0] == '?') << name;
      }
    }
    ENGHANDLE table = 0;
    if (EngDbSearchClass(db, 0x7FFF, nullptr, nullptr, &table) == ENG_OK) {
      EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    }
    if (EngDbCheck(db, nullptr, 0) != ENG_OK) noticed = true;
    EXPECT_EQ(EngDbClose(db), ENG_OK);
    return noticed;
  }

  std::vector<std::uint32_t> ids_;
  std::vector<std::vector<std::pair<std::string, std::string>>> items_;
  std::string whole_;
};

TEST_F(Damage, FlippedBytesGiveAStatus) {
  int noticed = 0;
  int pages = 0;
  for (std::size_t page = 0; page < whole_.size(); page += 4096, ++pages) {
    bool any = false;
    for (std::size_t at : {std::size_t{0}, std::size_t{3}, std::size_t{9}, std::size_t{200}, std::size_t{4000}}) {
      std::string bytes = whole_;
      for (std::size_t i = 0; i < 4; ++i) bytes[page + at + i] = static_cast<char>(bytes[page + at + i] ^ 0x5A);
      folder_.Write("data/main.vlt", bytes);
      SCOPED_TRACE(page + at);
      any = ReadsRightOrFails() || any;
      EXPECT_EQ(folder_.Read("data/main.vlt"), bytes) << "a damaged store is not written to";
    }
    noticed += any;
  }
  EXPECT_EQ(noticed, pages);
}

TEST_F(Damage, CutFilesGiveAStatus) {
  for (std::size_t size : {whole_.size() - 1, whole_.size() - 4096, whole_.size() / 2, std::size_t{4096},
                           std::size_t{99}, std::size_t{0}}) {
    SCOPED_TRACE(size);
    folder_.Write("data/main.vlt", whole_.substr(0, size));
    EXPECT_TRUE(ReadsRightOrFails());
    EXPECT_EQ(folder_.Read("data/main.vlt"), whole_.substr(0, size));
  }
}

TEST_F(Damage, ForeignAndNewerFilesAreLeftAlone) {
  for (const auto& [offset, byte, status] :
       {std::tuple(63, '\4', ENG_ERR_DB_NEWER), std::tuple(63, '\0', ENG_ERR_DB_DAMAGED),
        std::tuple(68, 'x', ENG_ERR_DB_NOT_STORE), std::tuple(0, 'x', ENG_ERR_DB_NOT_STORE)}) {
    std::string bytes = whole_;
    bytes[static_cast<std::size_t>(offset)] = byte;
    folder_.Write("data/main.vlt", bytes);
    ENGHANDLE db = 0;
    EXPECT_EQ(EngDbOpen("main", &db), status);
    EXPECT_EQ(db, 0u);
    EXPECT_EQ(folder_.Read("data/main.vlt"), bytes);
  }
}

// Changes that no page check can see. ID 4 is the first document.
TEST_F(Damage, RowsThatDoNotFitTogetherAreFound) {
  const struct {
    const char* sql;
    ENGSTATUS open;
    const char* report;
  } rows[] = {
      {"UPDATE slate SET modified=modified+1 WHERE id=4", ENG_ERR_DB_DAMAGED, "slate 4"},
      {"UPDATE slate SET accessed=0 WHERE id=4", ENG_ERR_DB_DAMAGED, "slate 4"},
      {"UPDATE slate SET state=8 WHERE id=4", ENG_ERR_DB_DAMAGED, "slate 4"},
      {"UPDATE slate SET universal=zeroblob(16) WHERE id=4", ENG_ERR_DB_DAMAGED, "slate 4"},
      {"UPDATE slate SET parent=universal WHERE id=4", ENG_ERR_DB_DAMAGED, "slate 4"},
      {"INSERT INTO chunk VALUES(99<<16,zeroblob(9))", ENG_OK, "value 99 has no owner"},
      {"INSERT INTO object VALUES(7,0,0,10000,98)", ENG_OK, "object 7 has no slate"},
      {"DELETE FROM chunk WHERE id&65535=1", ENG_OK, "slate 164"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.sql);
    folder_.Write("data/main.vlt", whole_);
    Execute(row.sql);
    const ENGHANDLE db = Open();
    ENGHANDLE slate = 0;
    EXPECT_EQ(EngSlateOpen(db, ids_[0], 0, &slate), row.open);
    char report[200] = "";
    EXPECT_EQ(EngDbCheck(db, report, sizeof report), ENG_ERR_DB_DAMAGED);
    EXPECT_STREQ(report, row.report);
    EXPECT_EQ(EngDbClose(db), ENG_OK);
  }
}

// The store is clean again when the last damaged slate is gone. ID 164 is the one with a large value.
TEST_F(Damage, DamagedSlatesCanBeDeleted) {
  const struct {
    const char* sql;
    std::uint16_t flags;
  } rows[] = {
      {"UPDATE slate SET modified=modified+1 WHERE id=164", 0},
      {"UPDATE slate SET packed=zeroblob(90) WHERE id=164", 0},
      {"UPDATE slate SET packed=zeroblob(90) WHERE id=164", ENG_UPDATE_NO_STUB},
      {"UPDATE slate SET packed=zeroblob(90) WHERE id IN (4,164)", 0},
      {"UPDATE slate SET universal=x'00' WHERE id IN (4,164)", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.sql);
    folder_.Write("data/main.vlt", whole_);
    Execute(row.sql);
    const ENGHANDLE db = Open();
    EXPECT_EQ(EngDbCheck(db, nullptr, 0), ENG_ERR_DB_DAMAGED);
    EXPECT_EQ(EngSlateDelete(db, 164, row.flags), ENG_OK);
    EXPECT_EQ(EngSlateDelete(db, 4, row.flags), ENG_OK);
    char report[200] = "";
    EXPECT_EQ(EngDbCheck(db, report, sizeof report), ENG_OK) << report;
    EXPECT_EQ(EngDbClose(db), ENG_OK);
  }
}

// As somebody else where the test runs as the superuser, whom no permission stops.
TEST_F(Damage, PermissionsThatAreMissingAreNamed) {
  const struct {
    mode_t directory;
    mode_t file;
    ENGSTATUS open;
    ENGSTATUS create;
  } rows[] = {{0755 & ~0200, 0644, ENG_OK, ENG_ERR_DB_NO_ACCESS},
              {0755 & ~0200, 0666, ENG_OK, ENG_ERR_DB_NO_ACCESS},
              {0755 & ~0200, 0600, ENG_ERR_DB_NO_ACCESS, ENG_ERR_DB_NO_ACCESS},
              {0777, 0200, ENG_ERR_DB_NO_ACCESS, ENG_OK},
              {0777, 0444, ENG_OK, ENG_OK}};
  const std::string data = folder_.File("data");
  ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
  for (const auto& row : rows) {
    ASSERT_EQ(chmod(file().c_str(), row.file), 0);
    ASSERT_EQ(chmod(data.c_str(), row.directory), 0);
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
    ENGHANDLE db = 0;
    EXPECT_EQ(EngDbOpen("main", &db), row.open);
    if (db != 0) {
      EXPECT_EQ(EngDbBegin(db), ENG_ERR_DB_READ_ONLY);
      EXPECT_EQ(EngDbClose(db), ENG_OK);
    }
    EXPECT_EQ(EngDbCreate("fresh", 255, 1), row.create);
    ASSERT_EQ(seteuid(user), 0);
    ASSERT_EQ(chmod(data.c_str(), 0777), 0);
  }
}

// A reader who cannot make a log sees what is stored, or hears that it changes: never a state that was not.
TEST_F(Damage, AReaderWithoutALogHearsOfChanges) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a second user";
  const std::string data = folder_.File("data");
  ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
  ASSERT_EQ(chmod(data.c_str(), 0755), 0);
  ASSERT_EQ(rename(file().c_str(), folder_.File("data/a?b#c%20.vlt").c_str()), 0);
  const auto open_as_reader = [] {
    ENGHANDLE db = 0;
    EXPECT_EQ(seteuid(65534), 0);
    EXPECT_EQ(EngDbOpen("a?b#c%20", &db), ENG_OK);
    EXPECT_EQ(seteuid(0), 0);
    return db;
  };
  ENGCHAR info[ENG_INFO_SIZE];
  const auto read = [&info](ENGHANDLE db) { return EngDbGetInfo(db, info); };
  const ENGHANDLE before = open_as_reader();
  EXPECT_EQ(read(before), ENG_OK);
  ENGHANDLE writer = 0;
  ASSERT_EQ(EngDbOpen("a?b#c%20", &writer), ENG_OK);
  ASSERT_EQ(EngDbSetInfo(writer, reinterpret_cast<const ENGCHAR*>("changed")), ENG_OK);
  EXPECT_EQ(read(before), ENG_ERR_DB_IN_USE);
  const ENGHANDLE beside = open_as_reader();  // by the writer's log
  EXPECT_EQ(read(beside), ENG_OK);
  EXPECT_STREQ(reinterpret_cast<const char*>(info), "changed");
  EXPECT_EQ(EngDbClose(beside), ENG_OK);
  EXPECT_EQ(EngDbClose(writer), ENG_OK);
  EXPECT_EQ(read(before), ENG_ERR_DB_IN_USE);
  EXPECT_EQ(EngDbClose(before), ENG_OK);
  const ENGHANDLE after = open_as_reader();
  EXPECT_EQ(read(after), ENG_OK);
  EXPECT_STREQ(reinterpret_cast<const char*>(info), "changed");
  EXPECT_EQ(EngDbClose(after), ENG_OK);
}

}  // namespace
