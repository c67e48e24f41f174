// Files attached to slates: there and back, copied, refused, and cut off in the middle.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "engine/records.h"
#include "tests/qcore/fault_vfs.h"
#include "tests/qcore/store_fixture.h"

namespace {

using qtest::Data;
using qtest::Repeated;
using qtest::Store;

constexpr const char* kItem = "$FILE";

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

FILEOBJECT RecordIn(std::string data) {
  FILEOBJECT file{};
  if (data.size() < EngOdsLength(ODS_FILEOBJECT)) return file;
  void* cursor = data.data();
  EXPECT_EQ(EngOdsRead(&cursor, ODS_FILEOBJECT, &file, 1), ENG_OK);
  return file;
}

struct Shim {
  qtest::FaultVfs vfs;
};

struct Attachments : Shim, qtest::Database {
  std::string Path(const std::string& name) const { return folder_.File(name); }
  std::string NewFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }
  ENGSTATUS Attach(ENGHANDLE slate, const std::string& path, const std::string& name = "a",
                   std::uint16_t flags = 0) const {
    return EngSlateAttachFile(slate, Store(kItem), Store(name), qtest::Length(name), path.c_str(), flags, nullptr);
  }
  ENGSTATUS Extract(ENGHANDLE slate, const std::string& path) const {
    return EngItemExtractFile(slate, qtest::Find(slate, kItem), path.c_str(), 0);
  }
  std::uint32_t MakeWithFile(const std::string& bytes, std::uint16_t flags = 0) const {
    const ENGHANDLE slate = NewSlate();
    EXPECT_EQ(Attach(slate, NewFile("source", bytes), "a", flags), ENG_OK);
    return SaveAndClose(slate);
  }
  // What an extraction gives now, or "?" and the status; nothing but the file itself may be in the folder afterwards.
  std::string Extracted(std::uint32_t id, ENGHANDLE db = 0) const {
    std::filesystem::create_directory(Path("out"));
    ENGHANDLE slate = 0;
    EXPECT_EQ(EngSlateOpen(db ? db : db_, id, 0, &slate), ENG_OK);
    const ENGSTATUS status = Extract(slate, Path("out/file"));
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    const std::string bytes = status == ENG_OK ? ReadFile(Path("out/file")) : "?" + std::to_string(status);
    std::filesystem::remove(Path("out/file"));
    EXPECT_TRUE(std::filesystem::is_empty(Path("out")));
    std::filesystem::remove_all(Path("out"));
    return bytes;
  }
};

TEST_F(Attachments, FilesOfEverySizeComeBack) {
  const std::size_t sizes[] = {0, 1, 65535, 65536, 65537, 1 << 20, (1 << 20) + 1, (33 << 20) + 5};
  for (const std::size_t size : sizes) {
    for (const std::uint16_t flags : {0, ENG_ATTACH_COMPRESS}) {
      SCOPED_TRACE(std::to_string(size) + (flags ? " compressed" : ""));
      const std::string bytes = Repeated(size, 'a');
      const std::uint32_t id = MakeWithFile(bytes, flags);
      Reopen();
      const ENGHANDLE slate = OpenSlate(id);
      const FILEOBJECT file = RecordIn(Data(slate, kItem));
      EXPECT_EQ(file.FileSize, size);
      EXPECT_EQ(file.CompressionType & COMPRESS_MASK, flags ? 1 : 0);
      std::uint32_t stored = 0;
      EXPECT_EQ(EngObjectGetSize(db_, file.Header.ObjectID, &stored, nullptr), ENG_OK);
      if (size > 65535) {
        EXPECT_EQ(stored < size / 2, flags != 0);
      }
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      EXPECT_TRUE(Extracted(id) == bytes);
    }
  }
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Attachments, TimeAndAttributesGoAlong) {
  const std::string source = NewFile("source", "x");
  const timespec times[2] = {{0, UTIME_OMIT}, {86400 * 365, 250000000}};
  ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
  ASSERT_EQ(chmod(source.c_str(), 0400), 0);
  const ENGHANDLE slate = NewSlate();
  ASSERT_EQ(Attach(slate, source), ENG_OK);
  const FILEOBJECT file = RecordIn(Data(slate, kItem));
  EXPECT_EQ(file.FileAttributes, FILEATTRIBUTE_READ_ONLY | FILEATTRIBUTE_PRIVATE);
  EXPECT_EQ(file.FileModified.TimeWord, 25u);
  EXPECT_EQ(file.FileModified.DateWord, 2440588u + 365);
  NewFile("target", "what was there");
  ASSERT_EQ(Extract(slate, Path("target")), ENG_OK) << "an unsaved one can be read too";
  struct stat info {};
  ASSERT_EQ(stat(Path("target").c_str(), &info), 0);
  EXPECT_EQ(info.st_mtim.tv_sec, times[1].tv_sec);
  EXPECT_EQ(info.st_mtim.tv_nsec, times[1].tv_nsec);
  EXPECT_EQ(info.st_mode & 0777, 0400u);
  EXPECT_EQ(ReadFile(Path("target")), "x");
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Attachments, WhatIsNoFileIsRefused) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  const std::string file = NewFile("file", "x");
  const struct {
    const char* title;
    std::string path;
    std::string name;
    ENGSTATUS status;
  } rows[] = {
      {"missing", Path("none"), "a", ENG_ERR_FILE_OPEN},
      {"folder", Path("data"), "a", ENG_ERR_FILE_OPEN},
      {"pipe", Path("pipe"), "a", ENG_ERR_FILE_OPEN},
      {"empty path", "", "a", ENG_ERR_FILE_OPEN},
      {"attachment without a name", file, "", ENG_ERR_ARGUMENT},
      {"a NUL in the name", file, std::string("a\0b", 3), ENG_ERR_ARGUMENT},
  };
  const ENGHANDLE slate = NewSlate();
  for (const auto& row : rows) EXPECT_EQ(Attach(slate, row.path, row.name), row.status) << row.title;
  std::uint32_t count = 1;
  EXPECT_EQ(EngSlateItemCount(slate, &count), ENG_OK);
  EXPECT_EQ(count, 0u);
  ASSERT_EQ(Attach(slate, file), ENG_OK);
  ASSERT_EQ(symlink("file", Path("link").c_str()), 0);
  ASSERT_EQ(symlink("pipe", Path("piped").c_str()), 0);
  for (const char* path : {"data", "pipe", "piped", "no/file", "file/", ""}) {
    EXPECT_EQ(Extract(slate, Path(path)), ENG_ERR_FILE_OPEN) << path;
  }
  NewFile("file", "stays");
  EXPECT_EQ(Extract(slate, Path("link")), ENG_OK);
  EXPECT_EQ(ReadFile(Path("file")), "stays") << "a link is replaced, not followed";
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

TEST_F(Attachments, RecordsThatLie) {
  const std::uint32_t other = MakeWithFile("another slate's secret");
  const ENGHANDLE victim = OpenSlate(other);
  const FILEOBJECT secret = RecordIn(Data(victim, kItem));
  EXPECT_EQ(EngSlateClose(victim), ENG_OK);
  using Edit = void (*)(FILEOBJECT&, const FILEOBJECT&);
  const struct {
    const char* title;
    Edit edit;
    ENGSTATUS status;
  } rows[] = {
      {"more bytes than there are", [](FILEOBJECT& f, const FILEOBJECT&) { ++f.FileSize; }, ENG_ERR_OBJECT_CONTENT},
      {"fewer bytes", [](FILEOBJECT& f, const FILEOBJECT&) { --f.FileSize; }, ENG_ERR_OBJECT_CONTENT},
      {"said to be plain", [](FILEOBJECT& f, const FILEOBJECT&) { f.CompressionType = 0; }, ENG_ERR_OBJECT_CONTENT},
      {"object gone", [](FILEOBJECT& f, const FILEOBJECT&) { f.Header.ObjectID = 0x7FFFFFFF; }, ENG_ERR_NO_OBJECT},
      {"no object", [](FILEOBJECT& f, const FILEOBJECT&) { f.Header.ObjectID = 0; }, ENG_ERR_NO_OBJECT},
      {"another slate's object",
       [](FILEOBJECT& f, const FILEOBJECT& s) {
         f = s;
         f.FileNameLength = 1;
       },
       ENG_ERR_NO_OBJECT},
      {"name past the value", [](FILEOBJECT& f, const FILEOBJECT&) { f.FileNameLength = 0xFFFF; },
       ENG_ERR_ITEM_DAMAGED},
      {"no file", [](FILEOBJECT& f, const FILEOBJECT&) { f.Header.ObjectType = 3; }, ENG_ERR_ITEM_DAMAGED},
  };
  for (const auto& row : rows) {
    const std::uint32_t id = MakeWithFile(Repeated(3000, 'a'), ENG_ATTACH_COMPRESS);
    const ENGHANDLE slate = OpenSlate(id);
    std::string data = Data(slate, kItem);
    FILEOBJECT file = RecordIn(data);
    row.edit(file, secret);
    void* cursor = data.data();
    ASSERT_EQ(EngOdsWrite(&cursor, ODS_FILEOBJECT, &file, 1), ENG_OK);
    ASSERT_EQ(EngItemDelete(slate, qtest::Find(slate, kItem)), ENG_OK);
    ASSERT_EQ(qtest::Append(slate, kItem, data, qtest::kObject), ENG_OK);
    SaveAndClose(slate);
    EXPECT_EQ(Extracted(id), "?" + std::to_string(row.status)) << row.title;
  }
  EXPECT_EQ(Extracted(other), "another slate's secret");
}

// Compressed streams cut at every byte, and with every byte wrong.
TEST_F(Attachments, DamagedStreams) {
  const ENGHANDLE slate = NewSlate();
  ASSERT_EQ(Attach(slate, NewFile("source", Repeated(300, 'a')), "a", ENG_ATTACH_COMPRESS), ENG_OK);
  const std::uint32_t object = RecordIn(Data(slate, kItem)).Header.ObjectID;
  std::uint32_t size = 0;
  ENGHANDLE memory = 0;
  ASSERT_EQ(EngObjectGetSize(db_, object, &size, nullptr), ENG_OK);
  ASSERT_EQ(EngObjectRead(db_, object, 0, size, &memory), ENG_OK);
  auto* bytes = static_cast<unsigned char*>(EngMemLock(memory));
  for (std::uint32_t i = 0; i < size; ++i) {
    ASSERT_EQ(EngObjectWrite(db_, object, memory, i), ENG_OK);
    EXPECT_EQ(Extract(slate, Path("out")), ENG_ERR_OBJECT_CONTENT) << "cut at " << i;
    bytes[i] ^= 0xFF;
    ASSERT_EQ(EngObjectWrite(db_, object, memory, size), ENG_OK);
    EXPECT_EQ(Extract(slate, Path("out")), ENG_ERR_OBJECT_CONTENT) << "wrong at " << i;
    bytes[i] ^= 0xFF;
  }
  EXPECT_FALSE(std::filesystem::exists(Path("out")));
  EngMemUnlock(memory);
  EXPECT_EQ(EngMemFree(memory), ENG_OK);
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
}

// A slate made from another one, here or in another database, has objects of its own.
TEST_F(Attachments, CopiesOfSlatesHaveTheirOwn) {
  ASSERT_EQ(EngDbCreate("second", 255, 0), ENG_OK);
  const ENGHANDLE second = Open("second");
  const std::string bytes = Repeated(200000, 'a');
  for (const ENGHANDLE target : {db_, second}) {
    for (const bool in_transaction : {false, true}) {
      SCOPED_TRACE(std::to_string(target == db_) + std::to_string(in_transaction));
      const std::uint32_t id = MakeWithFile(bytes);
      const ENGHANDLE source = OpenSlate(id);
      ENGHANDLE copy = 0;
      ASSERT_EQ(EngSlateCopy(source, &copy), ENG_OK);
      EXPECT_EQ(EngSlateClose(source), ENG_OK);
      ORIGINATORID origin{};
      const std::uint32_t none = 0;
      ASSERT_EQ(EngDbNewOrigin(target, &origin), ENG_OK);
      ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_ORIGINATOR, &origin), ENG_OK);
      ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_ID, &none), ENG_OK);
      ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_DB, &target), ENG_OK);
      ASSERT_EQ(Extract(copy, Path("before")), ENG_OK) << "the source's, before it is saved";
      if (in_transaction) {
        ASSERT_EQ(EngDbBegin(target), ENG_OK);
        ASSERT_EQ(EngSlateUpdate(copy, 0), ENG_OK);
        ASSERT_EQ(EngDbRollback(target), ENG_OK);
      }
      const std::uint32_t copied = SaveAndClose(copy);
      ASSERT_EQ(EngSlateDelete(db_, id, 0), ENG_OK);
      EXPECT_TRUE(Extracted(copied, target) == bytes);
      char report[200];
      EXPECT_EQ(EngDbCheck(target, report, sizeof report), ENG_OK) << report;
    }
  }
  EXPECT_EQ(EngDbClose(second), ENG_OK);
}

// A value that stands aside of the row still says whose object it is.
TEST_F(Attachments, LongNamesKeepTheirObjects) {
  const std::string name(9000, 'n');
  ENGHANDLE slate = NewSlate();
  ASSERT_EQ(Attach(slate, NewFile("source", "bytes"), name), ENG_OK);
  const std::uint32_t id = SaveAndClose(slate);
  Reopen();
  slate = OpenSlate(id);
  ASSERT_EQ(qtest::Append(slate, "A", "1"), ENG_OK);
  SaveAndClose(slate);
  Reopen();
  EXPECT_EQ(Extracted(id), "bytes");
}

// Closing a descriptor of a store's file drops the locks that the process has on it; another file in its place, all.
TEST_F(Attachments, OpenStoresAreNoFiles) {
  const std::uint32_t id = MakeWithFile("bytes");
  const ENGHANDLE slate = OpenSlate(id);
  std::filesystem::create_hard_link(file(), Path("link"));
  std::filesystem::create_symlink(file() + "-wal", Path("log"));
  for (const std::string& path : {file(), file() + "-wal", file() + "-shm", Path("link"), Path("log")}) {
    EXPECT_EQ(Attach(slate, path), ENG_ERR_FILE_OPEN) << path;
    EXPECT_EQ(Extract(slate, path), ENG_ERR_FILE_OPEN) << path;
  }
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(Check(), ENG_OK);
  EXPECT_EQ(Extracted(id), "bytes");
  ASSERT_EQ(EngDbCreate("second", 255, 0), ENG_OK);
  const ENGHANDLE closed = NewSlate();
  EXPECT_EQ(Attach(closed, Path("data/second.vlt")), ENG_OK) << "one that is closed is a file";
  EXPECT_EQ(EngSlateClose(closed), ENG_OK);
}

// An object goes with the transaction that made it; a slate that still names it says so.
TEST_F(Attachments, RollbackTakesTheFileAlong) {
  const std::uint32_t id = MakeWithFile("old");
  const struct {
    const char* title;
    bool attach_before, save;
    ENGSTATUS status;
  } rows[] = {
      {"made in it", false, false, ENG_ERR_NO_OBJECT},
      {"made and saved in it", false, true, ENG_ERR_NO_OBJECT},
      {"saved in it", true, true, ENG_OK},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const ENGHANDLE slate = OpenSlate(id);
    const std::string path = NewFile("source", "new");
    if (row.attach_before) {
      ASSERT_EQ(Attach(slate, path), ENG_OK);
    }
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    if (!row.attach_before) {
      ASSERT_EQ(Attach(slate, path), ENG_OK);
    }
    if (row.save) {
      ASSERT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
    }
    ASSERT_EQ(EngDbRollback(db_), ENG_OK);
    EXPECT_EQ(EngSlateUpdate(slate, 0), row.status);
    if (row.status != ENG_OK) {
      BLOCKID last{};
      ASSERT_EQ(EngSlateItemAt(slate, 1, &last), ENG_OK);
      EXPECT_EQ(EngItemExtractFile(slate, last, Path("out").c_str(), 0), row.status);
      ASSERT_EQ(EngItemDelete(slate, last), ENG_OK);
      EXPECT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
    }
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    EXPECT_EQ(Extracted(id), "old");
    EXPECT_EQ(Check(), ENG_OK);
  }
}

// Of a slate that was never saved too, whichever is saved first.
TEST_F(Attachments, CopiesOfNewSlatesHaveTheirOwn) {
  for (const bool copy_first : {false, true}) {
    const ENGHANDLE slate = NewSlate();
    ASSERT_EQ(Attach(slate, NewFile("source", "bytes")), ENG_OK);
    ENGHANDLE copy = 0;
    ORIGINATORID origin{};
    ASSERT_EQ(EngSlateCopy(slate, &copy), ENG_OK);
    ASSERT_EQ(EngDbNewOrigin(db_, &origin), ENG_OK);
    ASSERT_EQ(EngSlateSetHeader(copy, ENG_SLATE_ORIGINATOR, &origin), ENG_OK);
    const std::uint32_t first = SaveAndClose(copy_first ? copy : slate);
    const std::uint32_t second = SaveAndClose(copy_first ? slate : copy);
    EXPECT_EQ(Extracted(first) + Extracted(second), "bytesbytes");
    ASSERT_EQ(EngSlateDelete(db_, first, 0), ENG_OK);
    EXPECT_EQ(Extracted(second), "bytes");
    EXPECT_EQ(Check(), ENG_OK);
  }
}

// What a slate was given goes when it is closed unsaved, and not before anybody else who has it.
TEST_F(Attachments, UnsavedFilesGoWithTheirSlates) {
  const std::string path = NewFile("source", "bytes");
  const auto objects = [this] { return Count("SELECT count(*) FROM object"); };
  const auto copy_of = [](ENGHANDLE slate) {
    ENGHANDLE copy = 0;
    EXPECT_EQ(EngSlateCopy(slate, &copy), ENG_OK);
    return copy;
  };
  const ENGHANDLE slate = NewSlate(), copy = copy_of(slate);
  ASSERT_EQ(Attach(slate, path), ENG_OK);
  const ENGHANDLE second = copy_of(slate);
  const FILEOBJECT file = RecordIn(Data(slate, kItem));
  const std::string name = "a";
  const ENGFILEDESCRIPTOR descriptor{file, Store(name), qtest::Length(name), 0};
  ASSERT_EQ(EngSlateAppendObjectItem(copy, Store(kItem), &descriptor), ENG_OK);
  EXPECT_EQ(objects(), 2) << "the copy of a new slate has its own";
  EXPECT_EQ(EngSlateClose(slate), ENG_OK);
  EXPECT_EQ(Extract(copy, Path("out")), ENG_OK) << "still given to this one";
  EXPECT_EQ(EngSlateClose(second), ENG_OK);
  EXPECT_EQ(objects(), 1);
  EXPECT_EQ(EngSlateClose(copy), ENG_OK);
  EXPECT_EQ(objects(), 0);

  const std::uint32_t id = MakeWithFile("old");
  for (const bool saved : {false, true}) {
    const ENGHANDLE changed = OpenSlate(id);
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    ASSERT_EQ(Attach(changed, path), ENG_OK);
    if (saved) {
      ASSERT_EQ(EngSlateUpdate(changed, 0), ENG_OK);
    }
    EXPECT_EQ(EngSlateClose(changed), ENG_OK);
    ASSERT_EQ(saved ? EngDbCommit(db_) : EngDbRollback(db_), ENG_OK);
    EXPECT_EQ(objects(), saved ? 2 : 1);
  }
  std::uint32_t reserved = 0;
  ASSERT_EQ(EngObjectCreate(db_, OBJECT_FILE, &reserved), ENG_OK);
  EXPECT_EQ(EngSlateClose(OpenSlate(id)), ENG_OK);
  EXPECT_EQ(objects(), 3) << "one that no slate was given stays reserved";
  EXPECT_EQ(Check(), ENG_OK);
}

// A save that overwrites another one frees what that had attached, and does not name what it has taken away.
TEST_F(Attachments, ForcedSaves) {
  using Change = ENGSTATUS (*)(const Attachments&, ENGHANDLE);
  const auto remove = [](const Attachments&, ENGHANDLE slate) {
    return EngItemDelete(slate, qtest::Find(slate, kItem));
  };
  const auto add = [](const Attachments& test, ENGHANDLE slate) { return test.Attach(slate, test.Path("new"), "b"); };
  const auto word = [](const Attachments&, ENGHANDLE slate) { return qtest::Append(slate, "A", "1"); };
  const struct {
    const char* title;
    bool with_file;
    Change theirs, ours;
    ENGSTATUS status;
    int objects;
  } rows[] = {
      {"they add the first file", false, add, word, ENG_OK, 0},
      {"they add another file", true, add, word, ENG_OK, 1},
      {"both add one", true, add, add, ENG_OK, 2},
      {"they remove ours", true, remove, word, ENG_ERR_SLATE_CONFLICT, 0},
      {"both remove it", true, remove, remove, ENG_OK, 0},
      {"we remove it", true, word, remove, ENG_OK, 0},
  };
  NewFile("new", "new");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const ENGHANDLE fresh = NewSlate();
    if (row.with_file) {
      ASSERT_EQ(Attach(fresh, NewFile("old", "old")), ENG_OK);
    }
    const std::uint32_t id = SaveAndClose(fresh);
    const ENGHANDLE ours = OpenSlate(id), theirs = OpenSlate(id);
    ASSERT_EQ(row.theirs(*this, theirs), ENG_OK);
    SaveAndClose(theirs);
    ASSERT_EQ(row.ours(*this, ours), ENG_OK);
    EXPECT_EQ(EngSlateUpdate(ours, 0), ENG_ERR_SLATE_CONFLICT);
    EXPECT_EQ(EngSlateUpdate(ours, ENG_UPDATE_FORCE), row.status);
    EXPECT_EQ(EngSlateClose(ours), ENG_OK);
    EXPECT_EQ(Count("SELECT count(*) FROM object"), row.objects);
    EXPECT_EQ(Check(), ENG_OK);
    ASSERT_EQ(EngSlateDelete(db_, id, 0), ENG_OK);
  }
}

// Chunks that are not what was written, the first, within four and at the end: what was in the place stays.
TEST_F(Attachments, DamagedChunks) {
  const std::uint32_t id = MakeWithFile(Repeated(5 * 65536 + 100, 'a'));
  EXPECT_EQ(EngDbClose(db_), ENG_OK);
  const std::string sound = ReadFile(file());
  const struct {
    const char* edit;
    ENGSTATUS status;
  } rows[] = {
      {"UPDATE chunk SET data=CAST(substr(data,1,60)||x'FF'||substr(data,62) AS BLOB)", ENG_ERR_DB_DAMAGED},
      {"UPDATE chunk SET data=substr(data,1,length(data)-1)", ENG_ERR_DB_DAMAGED},
      {"UPDATE chunk SET data=CAST(data||x'00' AS BLOB)", ENG_ERR_DB_DAMAGED},
      {"UPDATE chunk SET data=x''", ENG_ERR_DB_DAMAGED},
      {"UPDATE chunk SET data=7", ENG_ERR_DB_DAMAGED},
      {"UPDATE chunk SET data=(SELECT data FROM chunk AS other WHERE other.id=chunk.id+1-2*(chunk.id&1))",
       ENG_ERR_DB_DAMAGED},
      {"DELETE FROM chunk", ENG_ERR_DB_DAMAGED},
      {"UPDATE object SET size=size-1;DELETE FROM chunk", ENG_ERR_OBJECT_CONTENT},
      {"UPDATE object SET size=size+1;DELETE FROM chunk", ENG_ERR_OBJECT_CONTENT},
      {"DELETE FROM object;DELETE FROM chunk", ENG_ERR_NO_OBJECT},
  };
  NewFile("data/target", "what was there");
  for (const auto& row : rows) {
    for (const int number : {0, 2, 3, 4, 5}) {
      SCOPED_TRACE(row.edit + (" at " + std::to_string(number)));
      std::ofstream(file(), std::ios::binary) << sound;
      Execute((row.edit + (" WHERE id&65535=" + std::to_string(number))).c_str());
      db_ = Open();
      const ENGHANDLE slate = OpenSlate(id);
      EXPECT_EQ(Extract(slate, Path("data/target")), row.status);
      EXPECT_EQ(EngSlateClose(slate), ENG_OK);
      EXPECT_EQ(EngDbClose(db_), ENG_OK);
    }
  }
  db_ = 0;
  EXPECT_EQ(ReadFile(Path("data/target")), "what was there");
  for (const auto& entry : std::filesystem::directory_iterator(Path("data"))) {
    EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << entry;
  }
}

// The source becomes shorter while it is read; a disk that is full when it is written leaves what was there.
TEST_F(Attachments, FilesThatChangeAndDisksThatAreFull) {
  const std::string path = NewFile("source", Repeated(40 << 20, 'a'));
  const ENGHANDLE slate = NewSlate();
  qtest::FaultVfs::hook = [&path](qtest::Operation operation, qtest::FileKind) {
    return operation == qtest::Operation::kWrite && truncate(path.c_str(), 100000) != 0 ? SQLITE_IOERR : SQLITE_OK;
  };
  EXPECT_EQ(Attach(slate, path), ENG_OK);
  qtest::FaultVfs::hook = nullptr;
  const std::uint32_t id = SaveAndClose(slate);
  const std::string bytes = Extracted(id);
  EXPECT_TRUE(!bytes.empty() && Repeated(40 << 20, 'a').starts_with(bytes));

  NewFile("data/target", "what was there");
  const ENGHANDLE again = OpenSlate(id);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{50000, before.rlim_max};
  signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const ENGSTATUS status = Extract(again, Path("data/target"));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(status, ENG_ERR_FILE_WRITE);
  EXPECT_EQ(ReadFile(Path("data/target")), "what was there");
  for (const auto& entry : std::filesystem::directory_iterator(Path("data"))) {
    EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << entry;
  }
  EXPECT_EQ(EngSlateClose(again), ENG_OK);
}

// A full disk in the middle, and a kill: the slate is as it was, and nothing of the file is left in the end.
TEST_F(Attachments, CutOffInTheMiddle) {
  const std::uint32_t id = MakeWithFile("old");
  const std::string big = NewFile("big", Repeated(40 << 20, 'a'));
  std::uint64_t used = 0, unused = 0;
  ASSERT_EQ(EngDbGetSpace(db_, &used, &unused), ENG_OK);
  for (const bool killed : {false, true}) {
    int writes = 0;
    const auto hook = [&writes, killed](qtest::Operation operation, qtest::FileKind) {
      if (operation != qtest::Operation::kWrite || ++writes < 18000) return SQLITE_OK;
      if (killed) raise(SIGKILL);
      return SQLITE_FULL;
    };
    EXPECT_EQ(EngDbClose(db_), ENG_OK);
    const pid_t child = fork();
    if (child == 0) {
      ENGHANDLE db = 0;
      ENGHANDLE slate = 0;
      if (EngDbOpen("main", &db) != ENG_OK || EngSlateOpen(db, id, 0, &slate) != ENG_OK) _exit(1);
      qtest::FaultVfs::hook = hook;
      const ENGSTATUS status = Attach(slate, big);
      qtest::FaultVfs::hook = nullptr;
      const bool closed = EngSlateClose(slate) == ENG_OK && EngDbClose(db) == ENG_OK;
      _exit(status == ENG_ERR_DB_FULL && closed ? 0 : 2);
    }
    int result = 0;
    ASSERT_EQ(waitpid(child, &result, 0), child);
    EXPECT_EQ(killed ? WIFSIGNALED(result) : WIFEXITED(result) && WEXITSTATUS(result) == 0, true);
    if (killed) {
      db_ = Open();
      char report[200];
      EXPECT_EQ(EngDbCheck(db_, report, sizeof report), ENG_OK);
      EXPECT_STREQ(report, "1 objects of 33554432 bytes belong to no slate");
      EXPECT_EQ(EngDbClose(db_), ENG_OK);
      EXPECT_EQ(EngDbCompact("main", 0, nullptr), ENG_OK);
    }
    db_ = Open();
    EXPECT_EQ(Check(), ENG_OK);
    EXPECT_EQ(Extracted(id), "old");
    std::uint64_t now = 0;
    EXPECT_EQ(EngDbGetSpace(db_, &now, &unused), ENG_OK);
    EXPECT_LE(now, used + 100000) << killed;
  }
}

}  // namespace
