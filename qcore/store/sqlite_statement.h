// SQLite connections and prepared statements, held by scope.
#ifndef QUILLON_QCORE_STORE_SQLITE_STATEMENT_H
#define QUILLON_QCORE_STORE_SQLITE_STATEMENT_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "qcore/store/store.h"

namespace qcore {

// The engine status for a SQLite result code, extended or not.
ENGSTATUS StatusOfSqlite(int code);

struct ConnectionCloser {
  void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

// Opens a file that must exist, or a file URI, with extended result codes and without SQLite's own mutex.
[[nodiscard]] ENGSTATUS OpenConnection(const std::string& file, int flags, Connection* connection);
[[nodiscard]] ENGSTATUS Execute(sqlite3* connection, const char* sql);
// The first column of the first row as a number.
[[nodiscard]] ENGSTATUS QueryNumber(sqlite3* connection, const char* sql, std::int64_t* value);

class Statement {
 public:
  Statement() = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement_); }

  // Kept for many uses.
  [[nodiscard]] int Prepare(sqlite3* connection, const char* sql) {
    if (statement_) return SQLITE_OK;
    return sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
  }
  sqlite3_stmt* get() const { return statement_; }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

// One use of a prepared statement: bind, step, read, and at the end of the scope reset. Bound bytes must outlive it.
class Use {
 public:
  Use(sqlite3_stmt* statement, int prepared) : statement_(statement), code_(prepared) {}
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
  ~Use() {
    if (statement_) sqlite3_reset(statement_);
  }

  void Bind(int index, std::uint64_t value) {
    Keep(sqlite3_bind_int64(statement_, index, static_cast<sqlite3_int64>(value)));
  }
  void Bind(int index, Bytes value) {
    // A null address would bind NULL.
    static constexpr std::uint8_t kNothing = 0;
    Keep(sqlite3_bind_blob64(statement_, index, value.empty() ? &kNothing : value.data(), value.size(), SQLITE_STATIC));
  }
  void BindText(int index, std::string_view value) {
    Keep(sqlite3_bind_text64(statement_, index, value.data() ? value.data() : "", value.size(), SQLITE_STATIC,
                             SQLITE_UTF8));
  }
  void BindNull(int index) { Keep(sqlite3_bind_null(statement_, index)); }

  // True for a row. False at the end or on failure, which status() tells.
  bool Row() {
    if (code_ != SQLITE_OK && code_ != SQLITE_ROW) return false;
    code_ = sqlite3_step(statement_);
    return code_ == SQLITE_ROW;
  }
  int code() const { return code_ == SQLITE_ROW || code_ == SQLITE_DONE ? SQLITE_OK : code_; }

  std::uint64_t Number(int column) const {
    return static_cast<std::uint64_t>(sqlite3_column_int64(statement_, column));
  }
  double Real(int column) const { return sqlite3_column_double(statement_, column); }
  bool IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  Bytes Blob(int column) const {
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return bytes ? Bytes(bytes, static_cast<std::size_t>(size)) : Bytes();
  }

 private:
  void Keep(int code) {
    if (code_ == SQLITE_OK) code_ = code;
  }

  sqlite3_stmt* statement_;
  int code_;
};

}  // namespace qcore

#endif
