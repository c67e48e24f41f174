// The engine's stores alone, beside bare SQLite with the rows and the schema of the engine's own file.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/support.h"
#include "engine/engine.h"

namespace {

using bench::Home;
using bench::Sqlite;

constexpr std::uint32_t kDocuments = 100000;
constexpr std::uint32_t kLargeParts = 18;
constexpr std::uint16_t kText = 0x0500;

struct Field {
  const char* name;
  std::uint16_t type;
  std::size_t size;
};
// Twelve items, about 1 KB.
constexpr Field kFields[] = {{"Form", kText, 4},       {"Subject", kText, 31},   {"Categories", kText, 27},
                             {"From", kText, 11},      {"SendTo", kText, 10},    {"Size", 0x0300, 8},
                             {"Price", 0x0300, 8},     {"Posted", 0x0400, 8},    {"Due", 0x0400, 8},
                             {"Abstract", kText, 200}, {"Comments", kText, 400}, {"Body", 0x0001, 220}};

void Check(ENGSTATUS status) {
  if (status == ENG_OK) return;
  std::fprintf(stderr, "engine status %u\n", status);
  std::abort();
}

const ENGCHAR* Name(const char* name) { return reinterpret_cast<const ENGCHAR*>(name); }
std::uint16_t NameLength(const char* name) { return static_cast<std::uint16_t>(std::strlen(name)); }

std::string DataOf(const Field& field, std::uint32_t number) {
  std::string data = std::to_string(number);
  data.resize(field.size, static_cast<char>('a' + number % 26));
  return data;
}

void Fill(ENGHANDLE slate, std::uint32_t number) {
  for (const Field& field : kFields) {
    const std::string data = DataOf(field, number);
    Check(EngItemAppend(slate, ENG_ITEM_SUMMARY, Name(field.name), NameLength(field.name), field.type, data.data(),
                        static_cast<std::uint32_t>(data.size()), nullptr, nullptr));
  }
}

ENGHANDLE OpenStore(const std::string& path) {
  ENGHANDLE db = 0;
  Check(EngDbOpen(path.c_str(), &db));
  return db;
}

std::vector<std::uint32_t> Import(ENGHANDLE db) {
  std::vector<std::uint32_t> ids(kDocuments);
  Check(EngDbBegin(db));
  for (std::uint32_t i = 0; i < kDocuments; ++i) {
    ENGHANDLE slate = 0;
    Check(EngSlateCreate(db, &slate));
    Fill(slate, i);
    Check(EngSlateUpdate(slate, 0));
    Check(EngSlateGetHeader(slate, ENG_SLATE_ID, &ids[i]));
    Check(EngSlateClose(slate));
  }
  Check(EngDbCommit(db));
  return ids;
}

struct Shared {
  std::string path = Home::Get().Path("engine.vlt");
  ENGHANDLE db = 0;
  std::vector<std::uint32_t> ids;

  Shared() {
    Check(EngDbCreate(path.c_str(), 255, 0));
    db = OpenStore(path);
    ids = Import(db);
  }
  static Shared& Get() {
    static Shared shared;
    return shared;
  }
};

void OpenAndReadEngine(benchmark::State& state) {
  Shared& shared = Shared::Get();
  bench::Random random;
  for (auto _ : state) {
    ENGHANDLE slate = 0;
    Check(EngSlateOpen(shared.db, shared.ids[random.Below(kDocuments)], 0, &slate));
    for (const Field& field : kFields) {
      BLOCKID value;
      std::uint32_t size = 0;
      Check(EngSlateGetItemInfo(slate, Name(field.name), NameLength(field.name), nullptr, nullptr, &value, &size));
      const char* bytes = static_cast<const char*>(EngMemLock(value.Pool)) + value.Block;
      benchmark::DoNotOptimize(std::string(bytes + 2, size - 2));
      Check(EngMemUnlock(value.Pool));
    }
    Check(EngSlateClose(slate));
  }
}

// The same rows, with a string made of each span that is as long as an item's data.
void OpenAndReadRows(benchmark::State& state) {
  Shared& shared = Shared::Get();
  Sqlite peer(shared.path);
  sqlite3_stmt* select = peer.Prepare(
      "SELECT id,here,state,universal,sequence,sequenced,modified,added,accessed,parent,packed FROM slate WHERE id=?");
  bench::Random random;
  for (auto _ : state) {
    sqlite3_bind_int64(select, 1, shared.ids[random.Below(kDocuments)]);
    if (sqlite3_step(select) != SQLITE_ROW) state.SkipWithError("no row");
    std::int64_t sum = 0;
    for (int column = 0; column < 9; ++column) sum += sqlite3_column_int64(select, column);
    benchmark::DoNotOptimize(sum);
    const char* packed = static_cast<const char*>(sqlite3_column_blob(select, 10));
    for (const Field& field : kFields) {
      benchmark::DoNotOptimize(std::string(packed, field.size));
      packed += field.size;
    }
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
}

void SaveRepeatedly(benchmark::State& state, ENGHANDLE slate) {
  std::uint32_t number = 100000;
  for (auto _ : state) {
    const std::string text = "change " + std::to_string(++number);
    Check(EngItemSetText(slate, Name("Comments"), Name(text.c_str()), UINT16_MAX));
    Check(EngSlateUpdate(slate, 0));
  }
  Check(EngSlateClose(slate));
}

void SaveEngine(benchmark::State& state) {
  Shared& shared = Shared::Get();
  ENGHANDLE slate = 0;
  Check(EngSlateOpen(shared.db, shared.ids[kDocuments / 2], 0, &slate));
  SaveRepeatedly(state, slate);
}

void SaveEngineBesideLargeBody(benchmark::State& state) {
  ENGHANDLE slate = 0;
  Check(EngSlateCreate(Shared::Get().db, &slate));
  Fill(slate, 1);
  const std::string part(60000, 'x');
  for (std::uint32_t i = 0; i < kLargeParts; ++i) {
    Check(EngItemAppend(slate, 0, Name("Body"), 4, 1, part.data(), static_cast<std::uint32_t>(part.size()), nullptr,
                        nullptr));
  }
  Check(EngSlateUpdate(slate, 0));
  SaveRepeatedly(state, slate);
}

// A database with the schema of the engine's file.
std::unique_ptr<Sqlite> EmptyPeer(const std::string& name) {
  auto peer = std::make_unique<Sqlite>(Home::Get().Path(name));
  Sqlite store(Shared::Get().path);
  sqlite3_stmt* schema = store.Prepare("SELECT sql FROM sqlite_schema WHERE tbl_name='slate' ORDER BY rowid");
  while (sqlite3_step(schema) == SQLITE_ROW) peer->Run(reinterpret_cast<const char*>(sqlite3_column_text(schema, 0)));
  sqlite3_finalize(schema);
  return peer;
}

using Row = std::vector<sqlite3_value*>;

std::vector<Row> ReadRows() {
  std::vector<Row> rows;
  Sqlite store(Shared::Get().path);
  sqlite3_stmt* select = store.Prepare("SELECT * FROM slate ORDER BY id");
  while (sqlite3_step(select) == SQLITE_ROW && rows.size() < kDocuments) {
    Row& row = rows.emplace_back();
    for (int i = 0; i < 12; ++i) row.push_back(sqlite3_value_dup(sqlite3_column_value(select, i)));
  }
  sqlite3_finalize(select);
  return rows;
}

// Rows as they are in the engine's file, held in memory.
const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = ReadRows();
  return rows;
}

void InsertRows(Sqlite& peer) {
  sqlite3_stmt* insert = peer.Prepare("INSERT INTO slate VALUES(?,?,?,?,?,?,?,?,?,?,?,?)");
  peer.Run("BEGIN IMMEDIATE");
  for (const Row& row : Rows()) {
    for (int i = 0; i < 12; ++i) sqlite3_bind_value(insert, i + 1, row[static_cast<std::size_t>(i)]);
    peer.Step(insert);
  }
  peer.Run("COMMIT");
  sqlite3_finalize(insert);
}

void SaveRow(benchmark::State& state) {
  static const std::unique_ptr<Sqlite> peer = [] {
    auto made = EmptyPeer("saves.db");
    InsertRows(*made);
    return made;
  }();
  sqlite3_stmt* update =
      peer->Prepare("UPDATE slate SET feed=?2,here=here+1,modified=modified+1,packed=?3 WHERE id=?1");
  std::string packed(620, 'x');  // as long as the engine's row after its change
  std::int64_t number = kDocuments;
  for (auto _ : state) {
    packed[static_cast<std::size_t>(++number) % packed.size()] ^= 1;
    sqlite3_bind_int64(update, 1, Shared::Get().ids[kDocuments / 2]);
    sqlite3_bind_int64(update, 2, number);
    sqlite3_bind_blob(update, 3, packed.data(), static_cast<int>(packed.size()), SQLITE_STATIC);
    peer->Step(update);
  }
  sqlite3_finalize(update);
}

void ImportEngine(benchmark::State& state) {
  static int number = 0;
  for (auto _ : state) {
    const std::string path = Home::Get().Path("import" + std::to_string(++number) + ".vlt");
    Check(EngDbCreate(path.c_str(), 255, 0));
    const ENGHANDLE db = OpenStore(path);
    Import(db);
    Check(EngDbClose(db));
  }
}

void ImportRows(benchmark::State& state) {
  static int number = 0;
  Rows();
  for (auto _ : state) InsertRows(*EmptyPeer("rows" + std::to_string(++number) + ".db"));
}

BENCHMARK(OpenAndReadRows);
BENCHMARK(OpenAndReadEngine);
BENCHMARK(SaveRow)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveEngine)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveEngineBesideLargeBody)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(ImportRows)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImportEngine)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
