#include "qcore/store/sqlite_statement.h"

namespace qcore {

ENGSTATUS StatusOfSqlite(int code) {
  if (code == SQLITE_IOERR_NOMEM) return ENG_ERR_MEMORY;
  switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return ENG_OK;
    case SQLITE_NOMEM:
      return ENG_ERR_MEMORY;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return ENG_ERR_DB_IN_USE;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return ENG_ERR_DB_READ_ONLY;
    case SQLITE_FULL:
      return ENG_ERR_DB_FULL;
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
      return ENG_ERR_DB_IO;
    case SQLITE_NOTADB:
      return ENG_ERR_DB_NOT_STORE;
    // A statement or a value that the schema does not take: the schema is not what this engine wrote.
    case SQLITE_ERROR:
    case SQLITE_SCHEMA:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_FORMAT:
    case SQLITE_CORRUPT:
      return ENG_ERR_DB_DAMAGED;
    case SQLITE_TOOBIG:
      return ENG_ERR_ITEM_SIZE;
    default:
      return ENG_ERR_INTERNAL;
  }
}

ENGSTATUS OpenConnection(const std::string& file, int flags, Connection* connection) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  connection->reset(opened);
  return StatusOfSqlite(code);
}

ENGSTATUS Execute(sqlite3* connection, const char* sql) {
  return StatusOfSqlite(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr));
}

ENGSTATUS QueryNumber(sqlite3* connection, const char* sql, std::int64_t* value) {
  Statement statement;
  const int prepared = statement.Prepare(connection, sql);
  Use use(statement.get(), prepared);
  if (!use.Row())
    return prepared == SQLITE_OK && use.code() == SQLITE_OK ? ENG_ERR_DB_DAMAGED : StatusOfSqlite(use.code());
  *value = static_cast<std::int64_t>(use.Number(0));
  return ENG_OK;
}

}  // namespace qcore
