// A file of 256 MB into a store and out again, beside SQLite's incremental blobs of the same file, and a copy of it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "bench/support.h"

namespace {

using bench::Home;
using bench::Sqlite;

constexpr int kFileSize = 256 << 20;
constexpr int kPiece = 1 << 20;

void Require(bool done, const char* what) {
  if (done) return;
  std::perror(what);
  std::abort();
}

// Text that compresses about as documents do.
const std::string& Source() {
  static const std::string path = [] {
    const std::string lines = bench::Lines(kPiece);
    std::ofstream out(Home::Get().Path("source"), std::ios::binary);
    bench::Random random;
    for (int i = 0; i < kFileSize / kPiece; ++i) {
      std::string piece = lines;
      for (int n = 0; n < kPiece / 64; ++n) piece[random.Below(kPiece)] = static_cast<char>('a' + random.Below(26));
      out << piece;
    }
    Require(out.good(), "source");
    return Home::Get().Path("source");
  }();
  return path;
}

class File {
 public:
  File(const std::string& path, int flags) : fd_(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    Require(fd_ >= 0, path.c_str());
  }
  ~File() { close(fd_); }
  void Read(std::vector<char>& piece) { Require(read(fd_, piece.data(), piece.size()) == kPiece, "read"); }
  void Write(const std::vector<char>& piece) { Require(write(fd_, piece.data(), piece.size()) == kPiece, "write"); }

 private:
  int fd_;
};

// What the process has held at most since the last call of Reset.
class Peak {
 public:
  static void Reset() { std::ofstream("/proc/self/clear_refs") << 5; }
  static double Megabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmHWM:")) return std::atof(line.c_str() + 6) / 1024;
    }
    return 0;
  }
};

template <typename Prepare, typename Work>
void Measure(benchmark::State& state, Prepare prepare, Work work) {
  const std::string& source = Source();
  for (auto _ : state) {
    state.PauseTiming();
    prepare();
    Peak::Reset();
    state.ResumeTiming();
    work(source);
  }
  state.counters["peak_MB"] = Peak::Megabytes();
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFileSize));
}

class OurStore {
 public:
  explicit OurStore(int compress) : compress_(compress) {}
  void Make() {
    document_ = VQDocument();
    database_ = VQDatabase();
    std::filesystem::remove(Home::Get().Path("attach.vlt"));
    database_ = Home::Get().Create("attach.vlt");
    database_.CreateDocument(&document_);
  }
  void Attach(const std::string& source) {
    document_.CreateAttachment(source.c_str(), nullptr, compress_);
    document_.Save();
  }
  void Detach() { document_.Detach("source", Home::Get().Path("out").c_str()); }

 private:
  VQDatabase database_;
  VQDocument document_;
  int compress_;
};

class TheirStore {
 public:
  void Make() {
    sqlite_.reset();
    for (const char* end : {"", "-wal", "-shm"}) std::filesystem::remove(Home::Get().Path("attach.db") + end);
    sqlite_ = std::make_unique<Sqlite>(Home::Get().Path("attach.db"));
    sqlite_->Run("CREATE TABLE file(id INTEGER PRIMARY KEY, data BLOB)");
  }
  void Attach(const std::string& source) {
    File in(source, O_RDONLY);
    std::vector<char> piece(kPiece);
    sqlite_->Run(("BEGIN IMMEDIATE;INSERT INTO file VALUES(1, zeroblob(" + std::to_string(kFileSize) + "))").c_str());
    sqlite3_blob* blob = Open(1);
    for (int at = 0; at < kFileSize; at += kPiece) {
      in.Read(piece);
      sqlite_->Check(sqlite3_blob_write(blob, piece.data(), kPiece, at));
    }
    sqlite3_blob_close(blob);

    sqlite_->Run("COMMIT");
  }
  void Detach() {
    File out(Home::Get().Path("out"), O_WRONLY | O_CREAT | O_TRUNC);
    std::vector<char> piece(kPiece);
    sqlite3_blob* blob = Open(0);
    for (int at = 0; at < kFileSize; at += kPiece) {
      sqlite_->Check(sqlite3_blob_read(blob, piece.data(), kPiece, at));
      out.Write(piece);
    }
    sqlite3_blob_close(blob);
  }

 private:
  sqlite3_blob* Open(int write) {
    sqlite3_blob* blob = nullptr;
    sqlite_->Check(sqlite3_blob_open(sqlite_->connection(), "main", "file", "data", 1, write, &blob));
    return blob;
  }

  std::unique_ptr<Sqlite> sqlite_;
};

void AttachQuillon(benchmark::State& state) {
  OurStore store(static_cast<int>(state.range(0)));
  Measure(
      state, [&] { store.Make(); }, [&](const std::string& source) { store.Attach(source); });
}
BENCHMARK(AttachQuillon)->Arg(0)->Arg(1)->ArgName("compressed")->Unit(benchmark::kMillisecond)->UseRealTime();

void AttachSqlite(benchmark::State& state) {
  TheirStore store;
  Measure(
      state, [&] { store.Make(); }, [&](const std::string& source) { store.Attach(source); });
}
BENCHMARK(AttachSqlite)->Unit(benchmark::kMillisecond)->UseRealTime();

// A new file each time: one that is replaced waits for the disk with ours, and does not with the peer.
void RemoveOut() { std::filesystem::remove(Home::Get().Path("out")); }

void DetachQuillon(benchmark::State& state) {
  OurStore store(static_cast<int>(state.range(0)));
  store.Make();
  store.Attach(Source());
  Measure(state, RemoveOut, [&](const std::string&) { store.Detach(); });
}
BENCHMARK(DetachQuillon)->Arg(0)->Arg(1)->ArgName("compressed")->Unit(benchmark::kMillisecond)->UseRealTime();

void DetachSqlite(benchmark::State& state) {
  TheirStore store;
  store.Make();
  store.Attach(Source());
  Measure(state, RemoveOut, [&](const std::string&) { store.Detach(); });
}
BENCHMARK(DetachSqlite)->Unit(benchmark::kMillisecond)->UseRealTime();

void CopyFile(benchmark::State& state) {
  Measure(
      state, [] {},
      [](const std::string& source) {
        File in(source, O_RDONLY), out(Home::Get().Path("out"), O_WRONLY | O_CREAT | O_TRUNC);
        std::vector<char> piece(kPiece);
        for (int at = 0; at < kFileSize; at += kPiece) {
          in.Read(piece);
          out.Write(piece);
        }
      });
}
BENCHMARK(CopyFile)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
