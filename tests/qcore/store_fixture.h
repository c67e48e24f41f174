// A database on the real engine, and verbs over it.
#ifndef QUILLON_TESTS_QCORE_STORE_FIXTURE_H
#define QUILLON_TESTS_QCORE_STORE_FIXTURE_H

#include <sqlite3.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/qcore/engine.h"

namespace qtest {

inline constexpr std::uint16_t kText = 0x0500;
inline constexpr std::uint16_t kTextList = 0x0501;
inline constexpr std::uint16_t kObject = 0x0003;

inline std::uint16_t Length(const std::string& text) { return static_cast<std::uint16_t>(text.size()); }

inline ENGSTATUS Append(ENGHANDLE slate, const std::string& name, const std::string& data, std::uint16_t type = kText,
                        BLOCKID* item = nullptr) {
  return EngItemAppend(slate, ENG_ITEM_SUMMARY, Store(name), Length(name), type, data.data(),
                       static_cast<std::uint32_t>(data.size()), item, nullptr);
}

inline BLOCKID Find(ENGHANDLE slate, const std::string& name) {
  BLOCKID item{};
  EXPECT_EQ(EngSlateGetItemInfo(slate, Store(name), Length(name), &item, nullptr, nullptr, nullptr), ENG_OK) << name;
  return item;
}

// The bytes behind the type word; "?" and the status where there are none.
inline std::string DataAt(ENGHANDLE slate, BLOCKID item) {
  BLOCKID value{};
  std::uint32_t size = 0;
  const ENGSTATUS status = EngItemQuery(slate, item, nullptr, 0, nullptr, nullptr, nullptr, &value, &size);
  if (status != ENG_OK) return "?" + std::to_string(status);
  const char* bytes = static_cast<const char*>(EngMemLock(value.Pool)) + value.Block;
  std::string data(bytes + 2, size - 2);
  EXPECT_EQ(EngMemUnlock(value.Pool), ENG_OK);
  return data;
}

inline std::string Data(ENGHANDLE slate, const std::string& name) {
  BLOCKID item{};
  const ENGSTATUS status = EngSlateGetItemInfo(slate, Store(name), Length(name), &item, nullptr, nullptr, nullptr);
  return status == ENG_OK ? DataAt(slate, item) : "?" + std::to_string(status);
}

// Every item in order, as name and data.
inline std::vector<std::pair<std::string, std::string>> Items(ENGHANDLE slate) {
  std::vector<std::pair<std::string, std::string>> items;
  std::uint32_t count = 0;
  EXPECT_EQ(EngSlateItemCount(slate, &count), ENG_OK);
  for (std::uint32_t i = 0; i < count; ++i) {
    BLOCKID item{};
    EXPECT_EQ(EngSlateItemAt(slate, i, &item), ENG_OK);
    std::string name(64, ' ');
    std::uint16_t length = 0;
    EXPECT_EQ(EngItemQuery(slate, item, reinterpret_cast<ENGCHAR*>(name.data()), 64, &length, nullptr, nullptr, nullptr,
                           nullptr),
              ENG_OK);
    name.resize(length);
    items.emplace_back(name, DataAt(slate, item));
  }
  return items;
}

template <typename T>
T Header(ENGHANDLE slate, std::uint16_t member) {
  T value{};
  EXPECT_EQ(EngSlateGetHeader(slate, member, &value), ENG_OK) << member;
  return value;
}

inline std::uint32_t IdOf(ENGHANDLE slate) { return Header<std::uint32_t>(slate, ENG_SLATE_ID); }

inline std::vector<std::uint32_t> Ids(ENGHANDLE table) {
  std::vector<std::uint32_t> ids;
  std::uint32_t id = 0;
  for (int first = 1; EngIdTableScan(table, first, &id) != 0; first = 0) ids.push_back(id);
  EXPECT_EQ(EngIdTableEntries(table), ids.size());
  return ids;
}

inline std::string Repeated(std::size_t size, char seed) {
  std::string text(size, seed);
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(seed + static_cast<char>(i * i % 89));
  return text;
}

class Database : public Engine {
 protected:
  explicit Database(const std::string& settings = "Directory=data\n") : Engine(settings) {
    std::filesystem::create_directory(folder_.File("data"));
    EXPECT_EQ(EngDbCreate("main", 255, 0), ENG_OK);
    db_ = Open();
  }
  ~Database() override {
    if (db_ != 0) {
      EXPECT_EQ(EngDbClose(db_), ENG_OK);
    }
  }

  std::string file() const { return folder_.File("data/main.vlt"); }
  // With the database closed, or looked into by a connection that the engine knows nothing of.
  void Execute(const char* sql) const {
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(file().c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(connection);
    EXPECT_EQ(sqlite3_close(connection), SQLITE_OK);
  }
  std::int64_t Count(const char* sql) const {
    sqlite3* connection = nullptr;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_open(file().c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(connection);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    const std::int64_t count = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return count;
  }
  // With the database closed: makes it what an earlier version of the schema was, or version 3 with its former index.
  void MakeVersion(int version) const {
    Execute(
        "DROP INDEX slate_design;CREATE INDEX slate_design ON slate(state,here) WHERE state&65535<>1;"
        "UPDATE slate SET sum=sum&4294967295");
    if (version > 2) return;
    Execute(
        "DROP TABLE change;DELETE FROM setting WHERE key=8;CREATE INDEX slate_feed ON slate(feed,here,state);"
        "CREATE TABLE removed(feed INTEGER PRIMARY KEY,id INTEGER NOT NULL,state INTEGER NOT NULL);"
        "PRAGMA user_version=2");
    if (version > 1) return;
    Execute(
        "DROP TABLE removed;DROP TABLE member;DROP TABLE unread;DROP TABLE own;DROP TABLE page;PRAGMA user_version=1");
  }
  static ENGHANDLE Open(const char* path = "main") {
    ENGHANDLE db = 0;
    EXPECT_EQ(EngDbOpen(path, &db), ENG_OK);
    return db;
  }
  void Reopen() {
    EXPECT_EQ(EngDbClose(db_), ENG_OK);
    db_ = Open();
  }
  ENGHANDLE NewSlate() const {
    ENGHANDLE slate = 0;
    EXPECT_EQ(EngSlateCreate(db_, &slate), ENG_OK);
    return slate;
  }
  ENGHANDLE OpenSlate(std::uint32_t id) const {
    ENGHANDLE slate = 0;
    EXPECT_EQ(EngSlateOpen(db_, id, 0, &slate), ENG_OK) << id;
    return slate;
  }
  std::uint32_t SaveAndClose(ENGHANDLE slate) const {
    EXPECT_EQ(EngSlateUpdate(slate, 0), ENG_OK);
    const std::uint32_t id = IdOf(slate);
    EXPECT_EQ(EngSlateClose(slate), ENG_OK);
    return id;
  }
  std::uint32_t Make(const std::vector<std::pair<std::string, std::string>>& items,
                     std::uint16_t slate_class = 1) const {
    const ENGHANDLE slate = NewSlate();
    EXPECT_EQ(EngSlateSetHeader(slate, ENG_SLATE_CLASS, &slate_class), ENG_OK);
    for (const auto& [name, data] : items) EXPECT_EQ(Append(slate, name, data), ENG_OK);
    return SaveAndClose(slate);
  }
  std::vector<std::uint32_t> Search(std::uint16_t mask, const TIMEDATE* since = nullptr,
                                    TIMEDATE* until = nullptr) const {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngDbSearchClass(db_, mask, since, until, &table), ENG_OK);
    const std::vector<std::uint32_t> ids = Ids(table);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
    return ids;
  }
  ENGSTATUS Check() const {
    char report[200] = "";
    const ENGSTATUS status = EngDbCheck(db_, report, sizeof report);
    EXPECT_EQ(status == ENG_OK, report[0] == 0);
    return status;
  }

  ENGHANDLE db_ = 0;
};

}  // namespace qtest

#endif
