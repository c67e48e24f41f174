// Views of 10 thousand, 100 thousand and a million documents, beside SQLite tables with the same rows and keys, and
// LMDB.
#include <benchmark/benchmark.h>
#include <lmdb.h>

#include <cstring>
#include <map>
#include <memory>

#include "bench/support.h"
#include "engine/engine.h"
#include "qcore/index/collection.h"
#include "qcore/index/sortkey.h"

namespace {

using bench::Home;
using bench::Random;
using bench::Sqlite;

constexpr std::uint16_t kText = 0x0500;
constexpr std::uint16_t kNumber = 0x0300;
constexpr std::uint32_t kCategories = 500;
constexpr std::uint32_t kReadMask = ENG_READ_ID | ENG_READ_CLASS | ENG_READ_INDENT | ENG_READ_UNREAD | ENG_READ_SUMMARY;

void Check(ENGSTATUS status) {
  if (status == ENG_OK) return;
  std::fprintf(stderr, "engine status %u\n", status);
  std::abort();
}

const ENGCHAR* Text(const std::string& text) { return reinterpret_cast<const ENGCHAR*>(text.data()); }
std::uint16_t Length(const std::string& text) { return static_cast<std::uint16_t>(text.size()); }

struct Content {
  std::string category;
  std::string name;
  double size;
};

Content ContentOf(std::uint32_t number) {
  const std::uint32_t mixed = number * 2654435761u;
  return {"Category " + std::to_string(mixed % kCategories), "Subject " + std::to_string(mixed >> 8),
          static_cast<double>(mixed % 10007)};
}

void Append(ENGHANDLE slate, const std::string& name, std::uint16_t type, const void* data, std::size_t size) {
  Check(EngItemAppend(slate, ENG_ITEM_SUMMARY, Text(name), Length(name), type, data, static_cast<std::uint32_t>(size),
                      nullptr, nullptr));
}

void AppendContent(ENGHANDLE slate, const Content& content) {
  Append(slate, "Category", kText, content.category.data(), content.category.size());
  Append(slate, "Name", kText, content.name.data(), content.name.size());
  Append(slate, "Size", kNumber, &content.size, sizeof content.size);
}

void Put16(std::string* bytes, unsigned value) {
  bytes->push_back(static_cast<char>(value));
  bytes->push_back(static_cast<char>(value >> 8));
}

std::string Code(const std::string& text) {
  ENGHANDLE code = 0;
  std::uint16_t length = 0;
  ENGFORMULAERROR error{};
  Check(EngFormulaCompile(Text(text), Length(text), &code, &length, &error));
  std::string bytes(static_cast<const char*>(EngMemLock(code)), length);
  Check(EngMemUnlock(code));
  Check(EngFormulaRelease(code));
  return bytes;
}

struct ViewColumn {
  std::string name;
  unsigned flags;
};

std::uint32_t MakeView(ENGHANDLE db, const std::vector<ViewColumn>& columns, const std::string& selection) {
  std::string format = {1, 0};
  std::string names;
  std::string descriptors;
  for (const unsigned word : {static_cast<unsigned>(columns.size()), 0u, 2u, 0u}) Put16(&format, word);
  for (const ViewColumn& column : columns) {
    for (const unsigned word : {0x4356u, column.flags, unsigned{Length(column.name)}, 0u, 0u, 0u, 80u, 1u, 0u, 0u}) {
      Put16(&format, word);
    }
    format.append(12, '\0');
    descriptors += {0, 0x66, static_cast<char>((column.flags & 2) != 0 ? 7 : 0)};
    Put16(&descriptors, static_cast<unsigned>(names.size()));
    Put16(&descriptors, Length(column.name));
    names += column.name;
  }
  std::string collation;
  Put16(&collation, static_cast<unsigned>(6 + descriptors.size() + names.size()));
  Put16(&collation, static_cast<unsigned>(columns.size()));
  collation += std::string("\0\x44", 2) + descriptors + names;
  format += names;
  ENGHANDLE slate = 0;
  Check(EngSlateCreate(db, &slate));
  const std::uint16_t view_class = 8;
  Check(EngSlateSetHeader(slate, ENG_SLATE_CLASS, &view_class));
  Append(slate, "$ViewFormat", 5, format.data(), format.size());
  Append(slate, "$Collation", 2, collation.data(), collation.size());
  const std::string code = selection.empty() ? std::string() : Code(selection);
  if (!code.empty()) Append(slate, "$Formula", 0x0600, code.data(), code.size());
  Check(EngSlateUpdate(slate, 0));
  std::uint32_t id = 0;
  Check(EngSlateGetHeader(slate, ENG_SLATE_ID, &id));
  Check(EngSlateClose(slate));
  return id;
}

std::string KeyOf(const std::string& text) {
  std::string key;
  qcore::index::AppendTextKey(text, {}, &key);
  return key;
}

// Documents, three views, and the peers' tables of one size.
class Set {
 public:
  static Set& Get(std::uint32_t count) {
    static std::map<std::uint32_t, std::unique_ptr<Set>> sets;
    std::unique_ptr<Set>& set = sets[count];
    if (!set) set.reset(new Set(count));
    return *set;
  }

  std::uint32_t count;
  std::string path;
  ENGHANDLE db = 0;
  std::vector<std::uint32_t> ids;
  std::uint32_t categorised = 0;  // with a selection
  std::uint32_t by_items = 0;     // the same without
  std::uint32_t flat = 0;         // by name
  std::unique_ptr<Sqlite> peer;

 private:
  explicit Set(std::uint32_t documents) : count(documents) {
    const std::string name = "index" + std::to_string(count);
    path = Home::Get().Path(name + ".vlt");
    Check(EngDbCreate(path.c_str(), 255, 0));
    Check(EngDbOpen(path.c_str(), &db));
    peer = std::make_unique<Sqlite>(Home::Get().Path(name + ".peer"));
    peer->Run("CREATE TABLE doc(id INTEGER PRIMARY KEY,k1 BLOB,k2 BLOB,category TEXT,name TEXT,size REAL,body BLOB);");
    peer->Run(
        "CREATE TABLE view(id INTEGER,k1 BLOB,k2 BLOB,size REAL,category TEXT,name TEXT);"
        "CREATE UNIQUE INDEX view_key ON view(k1,k2,size,id);"
        "CREATE TABLE flat(k BLOB,id INTEGER,name TEXT,size REAL,PRIMARY KEY(k,id))WITHOUT ROWID;");
    Fill();
    peer->Run("INSERT INTO view SELECT id,k1,k2,size,category,name FROM doc");
    peer->Run("INSERT INTO flat SELECT k2,id,name,size FROM doc ORDER BY k2,id");
    categorised = MakeView(db, {{"Category", 3}, {"Name", 1}, {"Size", 1}}, "SELECT Size >= 0");
    by_items = MakeView(db, {{"Category", 3}, {"Name", 1}, {"Size", 1}}, "");
    flat = MakeView(db, {{"Name", 1}, {"Size", 1}}, "");
  }

  void Fill() {
    const std::string body(300, 'b');
    sqlite3_stmt* insert = peer->Prepare("INSERT INTO doc VALUES(?,?,?,?,?,?,?)");
    peer->Run("BEGIN");
    Check(EngDbBegin(db));
    for (std::uint32_t i = 0; i < count; ++i) {
      const Content content = ContentOf(i);
      ENGHANDLE slate = 0;
      Check(EngSlateCreate(db, &slate));
      AppendContent(slate, content);
      Append(slate, "Body", kText, body.data(), body.size());
      Check(EngSlateUpdate(slate, 0));
      std::uint32_t id = 0;
      Check(EngSlateGetHeader(slate, ENG_SLATE_ID, &id));
      ids.push_back(id);
      Check(EngSlateClose(slate));
      const std::string k1 = KeyOf(content.category);
      const std::string k2 = KeyOf(content.name);
      sqlite3_bind_int64(insert, 1, id);
      sqlite3_bind_blob(insert, 2, k1.data(), static_cast<int>(k1.size()), SQLITE_STATIC);
      sqlite3_bind_blob(insert, 3, k2.data(), static_cast<int>(k2.size()), SQLITE_STATIC);
      sqlite3_bind_text(insert, 4, content.category.data(), static_cast<int>(content.category.size()), SQLITE_STATIC);
      sqlite3_bind_text(insert, 5, content.name.data(), static_cast<int>(content.name.size()), SQLITE_STATIC);
      sqlite3_bind_double(insert, 6, content.size);
      sqlite3_bind_blob(insert, 7, body.data(), static_cast<int>(body.size()), SQLITE_STATIC);
      peer->Step(insert);
    }
    Check(EngDbCommit(db));
    peer->Run("COMMIT");
    sqlite3_finalize(insert);
  }
};

Set& SetOf(const benchmark::State& state) { return Set::Get(static_cast<std::uint32_t>(state.range(0))); }

class Opened {
 public:
  Opened(Set& set, std::uint32_t view, std::uint16_t flags = 0) {
    Check(EngCollectionOpen(set.db, set.db, view, flags, 0, &handle_, nullptr, nullptr, nullptr, nullptr));
  }
  ~Opened() { Check(EngCollectionClose(handle_)); }
  ENGHANDLE get() const { return handle_; }

 private:
  ENGHANDLE handle_ = 0;
};

COLLECTIONPOSITION Place(std::uint32_t ordinal) {
  COLLECTIONPOSITION position{};
  position.MaxLevel = ENG_COLLECTION_NO_LIMIT;
  position.Tumbler[0] = ordinal;
  return position;
}

void Build(benchmark::State& state, std::uint32_t Set::*view) {
  Set& set = SetOf(state);
  for (auto _ : state) const Opened opened(set, set.*view, ENG_COLLECTION_REBUILD);
  state.counters["documents/s"] = benchmark::Counter(set.count, benchmark::Counter::kIsIterationInvariantRate);
}
void BuildQuillon(benchmark::State& state) { Build(state, &Set::categorised); }
void BuildQuillonWithoutFormula(benchmark::State& state) { Build(state, &Set::by_items); }

void BuildSqlite(benchmark::State& state) {
  Set& set = SetOf(state);
  for (auto _ : state) {
    set.peer->Run(
        "BEGIN;DELETE FROM view;INSERT INTO view SELECT id,k1,k2,size,category,name FROM doc WHERE size>=0;"
        "COMMIT");
  }
}

void GoToOrdinalQuillon(benchmark::State& state) {
  Set& set = SetOf(state);
  const Opened opened(set, set.flat);
  Random random;
  for (auto _ : state) {
    COLLECTIONPOSITION position = Place(set.count / 2 + random.Below(1000));
    ENGHANDLE block = 0;
    Check(EngCollectionRead(opened.get(), &position, ENG_GO_CURRENT, 0, ENG_GO_CURRENT, 1, ENG_READ_ID, &block, nullptr,
                            nullptr, nullptr, nullptr));
    Check(EngMemFree(block));
  }
}

void GoToOrdinalSqlite(benchmark::State& state) {
  Set& set = SetOf(state);
  sqlite3_stmt* select = set.peer->Prepare("SELECT id FROM flat ORDER BY k,id LIMIT 1 OFFSET ?");
  Random random;
  for (auto _ : state) {
    sqlite3_bind_int64(select, 1, set.count / 2 + random.Below(1000));
    if (sqlite3_step(select) != SQLITE_ROW) state.SkipWithError("no row");
    benchmark::DoNotOptimize(sqlite3_column_int64(select, 0));
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
}

void FindByKeyQuillon(benchmark::State& state) {
  Set& set = SetOf(state);
  const Opened opened(set, set.flat);
  Random random;
  for (auto _ : state) {
    const std::string name = ContentOf(random.Below(set.count)).name;
    std::string table;
    Put16(&table, static_cast<unsigned>(10 + name.size()));
    for (const unsigned word : {1u, 0u, static_cast<unsigned>(2 + name.size()), unsigned{kText}}) Put16(&table, word);
    table += name;
    COLLECTIONPOSITION position{};
    Check(EngCollectionFind(opened.get(), table.data(), 0, &position, nullptr));
    benchmark::DoNotOptimize(position);
  }
}

// What the row above spends before it looks.
void MakeFindKey(benchmark::State& state) {
  Random random;
  const auto count = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(KeyOf(ContentOf(random.Below(count)).name));
}

class Lmdb {
 public:
  explicit Lmdb(Set& set) {
    mdb_env_create(&environment_);
    mdb_env_set_mapsize(environment_, std::size_t{1} << 30);
    const std::string path = Home::Get().Path("lmdb" + std::to_string(set.count));
    mdb_env_open(environment_, path.c_str(), MDB_NOSUBDIR | MDB_NOSYNC, 0600);
    MDB_txn* write = nullptr;
    mdb_txn_begin(environment_, nullptr, 0, &write);
    mdb_dbi_open(write, nullptr, 0, &database_);
    for (std::uint32_t i = 0; i < set.count; ++i) {
      std::string key = KeyOf(ContentOf(i).name);
      MDB_val k{key.size(), key.data()};
      MDB_val v{sizeof set.ids[i], &set.ids[i]};
      mdb_put(write, database_, &k, &v, 0);
    }
    mdb_txn_commit(write);
    mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &read_);
  }
  ~Lmdb() {
    mdb_txn_abort(read_);
    mdb_env_close(environment_);
  }
  bool Find(std::string key) {
    MDB_val k{key.size(), key.data()};
    MDB_val v{};
    const bool found = mdb_get(read_, database_, &k, &v) == MDB_SUCCESS;
    benchmark::DoNotOptimize(v);
    return found;
  }

 private:
  MDB_env* environment_ = nullptr;
  MDB_dbi database_ = 0;
  MDB_txn* read_ = nullptr;
};

void FindByKeyLmdb(benchmark::State& state) {
  Set& set = SetOf(state);
  Lmdb lmdb(set);
  Random random;
  for (auto _ : state) {
    if (!lmdb.Find(KeyOf(ContentOf(random.Below(set.count)).name))) state.SkipWithError("no key");
  }
}

// Both columns of every row are looked at.
void WalkRowsQuillon(benchmark::State& state) {
  Set& set = SetOf(state);
  const Opened opened(set, set.flat);
  for (auto _ : state) {
    COLLECTIONPOSITION position = Place(0);
    std::uint16_t signals = ENG_SIGNAL_MORE_TO_DO;
    std::uint64_t rows = 0;
    std::uint64_t sum = 0;
    while ((signals & ENG_SIGNAL_MORE_TO_DO) != 0) {
      ENGHANDLE block = 0;
      std::uint32_t length = 0;
      std::uint32_t returned = 0;
      Check(EngCollectionRead(opened.get(), &position, ENG_GO_NEXT, 1, ENG_GO_NEXT, UINT32_MAX, kReadMask, &block,
                              &length, nullptr, &returned, &signals));
      const auto* at = static_cast<const unsigned char*>(EngMemLock(block));
      for (std::uint32_t row = 0; row < returned; ++row) {
        std::uint16_t words[6];
        std::memcpy(words, at + 10, sizeof words);  // size, items, two pairs of lengths
        const unsigned char* name = at + 10 + 12 + words[2];
        sum += name[2] + name[words[3] + words[4] + 2];
        at += 10 + words[0];
      }
      rows += returned;
      Check(EngMemUnlock(block));
      Check(EngMemFree(block));
    }
    benchmark::DoNotOptimize(sum);
    if (rows != set.count) state.SkipWithError("rows are missing");
  }
  state.counters["rows/s"] = benchmark::Counter(set.count, benchmark::Counter::kIsIterationInvariantRate);
}

void WalkRowsSqlite(benchmark::State& state) {
  Set& set = SetOf(state);
  sqlite3_stmt* select = set.peer->Prepare("SELECT id,name,size FROM flat ORDER BY k,id");
  for (auto _ : state) {
    std::uint64_t sum = 0;
    while (sqlite3_step(select) == SQLITE_ROW) {
      sum += static_cast<std::uint64_t>(sqlite3_column_int64(select, 0)) + sqlite3_column_text(select, 1)[0];
      sum += static_cast<std::uint64_t>(sqlite3_column_double(select, 2));
    }
    sqlite3_reset(select);
    benchmark::DoNotOptimize(sum);
  }
  state.counters["rows/s"] = benchmark::Counter(set.count, benchmark::Counter::kIsIterationInvariantRate);
  sqlite3_finalize(select);
}

void ListCategoriesQuillon(benchmark::State& state) {
  Set& set = SetOf(state);
  const Opened opened(set, set.by_items);
  for (auto _ : state) {
    COLLECTIONPOSITION position = Place(0);
    ENGHANDLE block = 0;
    std::uint32_t returned = 0;
    Check(EngCollectionRead(opened.get(), &position, ENG_GO_NEXT, 1, ENG_GO_NEXT_PEER, UINT32_MAX,
                            ENG_READ_ID | ENG_READ_DESCENDANTS | ENG_READ_SUMMARY, &block, nullptr, nullptr, &returned,
                            nullptr));
    Check(EngMemFree(block));
    if (returned != kCategories) state.SkipWithError("categories are missing");
  }
}

void ListCategoriesSqlite(benchmark::State& state) {
  Set& set = SetOf(state);
  sqlite3_stmt* select = set.peer->Prepare("SELECT category,count(*) FROM view GROUP BY k1");
  for (auto _ : state) {
    while (sqlite3_step(select) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_int64(select, 1));
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
}

void ChangeAndReadQuillon(benchmark::State& state) {
  Set& set = SetOf(state);
  const Opened opened(set, set.by_items);
  Random random;
  Check(EngDbBegin(set.db));
  for (auto _ : state) {
    ENGHANDLE slate = 0;
    Check(EngSlateOpen(set.db, set.ids[random.Below(set.count)], 0, &slate));
    const std::string name = "Changed " + std::to_string(random.Below(1000000));
    Check(EngItemSetText(slate, Text("Name"), Text(name), UINT16_MAX));
    Check(EngSlateUpdate(slate, 0));
    Check(EngSlateClose(slate));
    Check(EngCollectionUpdate(opened.get()));
    COLLECTIONPOSITION position = Place(1 + random.Below(kCategories));
    ENGHANDLE block = 0;
    Check(EngCollectionRead(opened.get(), &position, ENG_GO_CHILD, 1, ENG_GO_CURRENT, 1, kReadMask, &block, nullptr,
                            nullptr, nullptr, nullptr));
    Check(EngMemFree(block));
  }
  Check(EngDbRollback(set.db));
}

void ChangeAndReadSqlite(benchmark::State& state) {
  Set& set = SetOf(state);
  sqlite3_stmt* document = set.peer->Prepare("UPDATE doc SET name=?2,k2=?3 WHERE id=?1");
  sqlite3_stmt* row = set.peer->Prepare("UPDATE view SET name=?2,k2=?3 WHERE rowid=?1");
  sqlite3_stmt* select = set.peer->Prepare("SELECT id,category,name,size FROM view WHERE k1=? ORDER BY k1,k2 LIMIT 1");
  Random random;
  set.peer->Run("BEGIN");
  for (auto _ : state) {
    const std::uint32_t at = random.Below(set.count);
    const std::string name = "Changed " + std::to_string(random.Below(1000000));
    const std::string key = KeyOf(name);
    for (sqlite3_stmt* update : {document, row}) {
      sqlite3_bind_int64(update, 1, update == row ? at + 1 : set.ids[at]);
      sqlite3_bind_text(update, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
      sqlite3_bind_blob(update, 3, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
      set.peer->Step(update);
    }
    const std::string category = KeyOf("Category " + std::to_string(random.Below(kCategories)));
    sqlite3_bind_blob(select, 1, category.data(), static_cast<int>(category.size()), SQLITE_STATIC);
    if (sqlite3_step(select) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_text(select, 2));
    sqlite3_reset(select);
  }
  set.peer->Run("ROLLBACK");
  for (sqlite3_stmt* statement : {document, row, select}) sqlite3_finalize(statement);
}

constexpr std::string_view kAscii = "Minutes of the meeting on Thursday, 12 March";

void SortKeyQuillon(benchmark::State& state) {
  std::string key;
  for (auto _ : state) {
    key.clear();
    qcore::index::AppendTextKey(kAscii, {}, &key);
    benchmark::DoNotOptimize(key.data());
  }
}

void SortKeyIcu(benchmark::State& state) {
  std::string key;
  for (auto _ : state) {
    key.clear();
    qcore::index::AppendIcuTextKey(kAscii, {}, &key);
    benchmark::DoNotOptimize(key.data());
  }
}

// The counter is the row; the time is that of reading every page of a kept index.
void Memory(benchmark::State& state) {
  Set& set = SetOf(state);
  { const Opened opened(set, set.by_items, ENG_COLLECTION_REBUILD); }
  double bytes = 0;
  for (auto _ : state) {
    const Opened opened(set, set.by_items);
    auto* collection = qcore::index::Collection::Find(opened.get());
    Check(collection->index().With(0, [](qcore::index::IndexTree& tree) {
      tree.rows().ReadAll();
      return ENGSTATUS{ENG_OK};
    }));
    bytes = static_cast<double>(collection->Memory()) / (set.count + kCategories);
  }
  state.counters["bytes a row"] = bytes;
}

void Sizes(benchmark::internal::Benchmark* row) {
  for (const std::int64_t size : {10000, 100000, 1000000}) row->Arg(size);
}

BENCHMARK(BuildQuillon)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BuildQuillonWithoutFormula)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BuildSqlite)->Apply(Sizes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(GoToOrdinalQuillon)->Apply(Sizes);
BENCHMARK(GoToOrdinalSqlite)->Apply(Sizes);
BENCHMARK(FindByKeyQuillon)->Apply(Sizes);
BENCHMARK(MakeFindKey)->Apply(Sizes);
BENCHMARK(FindByKeyLmdb)->Apply(Sizes);
BENCHMARK(WalkRowsQuillon)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(WalkRowsSqlite)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(ListCategoriesQuillon)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(ListCategoriesSqlite)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChangeAndReadQuillon)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChangeAndReadSqlite)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortKeyQuillon);
BENCHMARK(SortKeyIcu);
BENCHMARK(Memory)->Apply(Sizes)->Unit(benchmark::kMillisecond);

}  // namespace
