#include "bench/support.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench {

namespace {

std::filesystem::path MakeFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "quillon-bench-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  std::ofstream(std::filesystem::path(pattern) / "QUILLON.INI") << "UserName=Bench\n";
  return pattern;
}

}  // namespace

Home& Home::Get() {
  static Home home;
  return home;
}

Home::Home() : folder_(MakeFolder()) { session_.Init(folder_.c_str()); }

Home::~Home() {
  session_.Term();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

VQDatabase Home::Create(const std::string& name) {
  VQDatabase database;
  session_.CreateDatabase(Path(name).c_str(), &database, VQCreateDatabaseOptions());
  return database;
}

VQDatabase Home::Open(const std::string& name) {
  VQDatabase database;
  session_.GetDatabase(Path(name).c_str(), &database);
  database.Open();
  return database;
}

Sqlite::Sqlite(const std::string& path) {
  // Without SQLite's own mutex, as the store opens its files.
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  Check(sqlite3_open_v2(path.c_str(), &connection_, flags, nullptr));
  Run("PRAGMA journal_mode=WAL;PRAGMA synchronous=FULL;PRAGMA cell_size_check=ON;PRAGMA trusted_schema=OFF;"
      "PRAGMA mmap_size=0;PRAGMA temp_store=MEMORY;PRAGMA cache_size=-16000;PRAGMA journal_size_limit=16777216");
}

void Sqlite::Run(const char* sql) { Check(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr)); }

sqlite3_stmt* Sqlite::Prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  Check(sqlite3_prepare_v3(connection_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
  return statement;
}

void Sqlite::Step(sqlite3_stmt* statement) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_DONE && code != SQLITE_ROW) Check(code);
  sqlite3_reset(statement);
}

void Sqlite::Check(int code) {
  if (code == SQLITE_OK) return;
  std::fprintf(stderr, "SQLite: %s\n", connection_ ? sqlite3_errmsg(connection_) : sqlite3_errstr(code));
  std::abort();
}

std::string Lines(std::size_t bytes) {
  static constexpr const char* kWords[] = {"the",   "store",   "keeps",   "every", "record", "that",
                                           "a",     "program", "wrote,",  "byte",  "for",    "byte",
                                           "and",   "gives",   "it",      "back",  "when",   "gr\xC3\xBC\xC3\x9F",
                                           "asked", "again",   "colours", "of",    "light",  "on"};
  Random random;
  std::string text;
  text.reserve(bytes + 80);
  std::size_t line = 0;
  while (text.size() < bytes) {
    const std::string_view word = kWords[random.Below(std::size(kWords))];
    text += word;
    line += word.size() + 1;
    text += line > 100 ? '\n' : ' ';
    if (line > 100) line = 0;
  }
  return text;
}

}  // namespace bench
