// A settings file and a session for the whole program, and files beside them that go when it ends.
#ifndef QUILLON_BENCH_SUPPORT_H
#define QUILLON_BENCH_SUPPORT_H

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "vq/vq.h"

namespace bench {

// Under TMPDIR, else /tmp: what is durable there decides about the figures of durable saves. Throws statuses.
class Home {
 public:
  static Home& Get();
  VQQuillonSession& session() { return session_; }
  std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  // A new store of that name, open.
  VQDatabase Create(const std::string& name);
  VQDatabase Open(const std::string& name);

 private:
  Home();
  ~Home();

  vq::ThrowScope throwing_;
  std::filesystem::path folder_;
  VQQuillonSession session_;
};

// A bare SQLite connection with the store's own settings. Ends the program with SQLite's words on any failure.
class Sqlite {
 public:
  explicit Sqlite(const std::string& path);
  ~Sqlite() { sqlite3_close(connection_); }
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;

  void Run(const char* sql);
  sqlite3_stmt* Prepare(const char* sql);
  // Steps and resets; true if there was a row, for which a reading function is to be called in between.
  void Step(sqlite3_stmt* statement);
  void Check(int code);
  sqlite3* connection() const { return connection_; }

 private:
  sqlite3* connection_ = nullptr;
};

// The same sequence in every run.
class Random {
 public:
  std::uint32_t Below(std::uint32_t bound) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>((state_ >> 33) * bound >> 31);
  }

 private:
  std::uint64_t state_ = 2463534242u;
};

// Words of plain English and some others, lines of about 105 bytes.
std::string Lines(std::size_t bytes);

}  // namespace bench

#endif
