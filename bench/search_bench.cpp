// Full text beside bare FTS5 without contents, and ID tables beside CRoaring.
#include <benchmark/benchmark.h>
#include <roaring/roaring.h>

#include <cstring>
#include <memory>
#include <vector>

#include "bench/support.h"
#include "engine/engine.h"

namespace {

using bench::Home;
using bench::Sqlite;

constexpr std::uint32_t kTexts = 50000;
constexpr std::size_t kTextBytes = 600;
constexpr std::uint16_t kTextType = 0x0500;
constexpr std::uint16_t kLimit = 250;

void Check(ENGSTATUS status) {
  if (status == ENG_OK) return;
  std::fprintf(stderr, "engine status %u\n", status);
  std::abort();
}

// Words that fall off as in plain text, each text with a number of its own.
const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    bench::Random random;
    std::vector<std::string> made(kTexts);
    for (std::uint32_t i = 0; i < kTexts; ++i) {
      std::string& text = made[i];
      while (text.size() < kTextBytes) {
        const std::uint32_t bound = 1 + random.Below(1 + random.Below(20000));
        text += "word" + std::to_string(random.Below(bound)) + " ";
      }
      text += "number" + std::to_string(i);
    }
    return made;
  }();
  return texts;
}

struct Query {
  const char* label;
  const char* text;
  const char* peer;
};
constexpr Query kQueries[] = {{"common", "word1", "word1"},
                              {"rare", "number25000", "number25000"},
                              {"two words", "word3 word70", "word3 word70"},
                              {"phrase", "\"word1 word2\"", "\"word1 word2\""}};

ENGHANDLE MakeStore(const std::string& name) {
  const std::string path = Home::Get().Path(name + ".vlt");
  ENGHANDLE db = 0;
  Check(EngDbCreate(path.c_str(), 255, 0));
  Check(EngDbOpen(path.c_str(), &db));
  Check(EngDbBegin(db));
  for (const std::string& text : Texts()) {
    ENGHANDLE slate = 0;
    Check(EngSlateCreate(db, &slate));
    Check(EngItemAppend(slate, 0, reinterpret_cast<const ENGCHAR*>("Text"), 4, kTextType, text.data(),
                        static_cast<std::uint32_t>(text.size()), nullptr, nullptr));
    Check(EngSlateUpdate(slate, 0));
    Check(EngSlateClose(slate));
  }
  Check(EngDbCommit(db));
  return db;
}

ENGHANDLE Store() {
  static const ENGHANDLE db = MakeStore("texts");
  return db;
}

std::unique_ptr<Sqlite> MakePeer(const std::string& name) {
  auto peer = std::make_unique<Sqlite>(Home::Get().Path(name + ".db"));
  peer->Run("CREATE VIRTUAL TABLE words USING fts5(body,content='')");
  return peer;
}

void FillPeer(Sqlite& peer) {
  peer.Run("BEGIN");
  sqlite3_stmt* insert = peer.Prepare("INSERT INTO words(rowid,body) VALUES(?,?)");
  std::int64_t row = 0;
  for (const std::string& text : Texts()) {
    sqlite3_bind_int64(insert, 1, ++row);
    sqlite3_bind_text(insert, 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    peer.Step(insert);
  }
  sqlite3_finalize(insert);
  peer.Run("COMMIT");
}

void IndexTexts(benchmark::State& state) {
  Store();
  for (auto _ : state) {
    Check(EngFtIndex(Store(), 0, nullptr, nullptr, nullptr));
    state.PauseTiming();
    Check(EngFtDeleteIndex(Store()));
    state.ResumeTiming();
  }
}

void IndexFts5(benchmark::State& state) {
  Texts();
  static int number = 0;
  for (auto _ : state) FillPeer(*MakePeer("index" + std::to_string(++number)));
}

void SearchTexts(benchmark::State& state) {
  static const bool indexed = EngFtIndex(Store(), 0, nullptr, nullptr, nullptr) == ENG_OK;
  const Query& query = kQueries[state.range(0)];
  state.SetLabel(query.label);
  ENGHANDLE search = 0;
  Check(indexed ? EngFtOpen(&search) : ENG_ERR_NO_FULL_TEXT);
  std::uint32_t hits = 0;
  for (auto _ : state) {
    ENGHANDLE result = 0;
    Check(EngFtSearch(Store(), &search, 0, reinterpret_cast<const ENGCHAR*>(query.text), ENG_FT_SCORES | ENG_FT_BEST,
                      kLimit, 0, &hits, nullptr, &result));
    Check(EngMemFree(result));
  }
  state.counters["hits"] = hits;
  Check(EngFtClose(search));
}

void SearchFts5(benchmark::State& state) {
  static const std::unique_ptr<Sqlite> peer = [] {
    auto made = MakePeer("search");
    FillPeer(*made);
    return made;
  }();
  const Query& query = kQueries[state.range(0)];
  state.SetLabel(query.label);
  sqlite3_stmt* select = peer->Prepare("SELECT rowid,rank FROM words WHERE words MATCH ? ORDER BY rank LIMIT 250");
  std::int64_t hits = 0;
  for (auto _ : state) {
    sqlite3_bind_text(select, 1, query.peer, -1, SQLITE_STATIC);
    for (hits = 0; sqlite3_step(select) == SQLITE_ROW; ++hits) {
      benchmark::DoNotOptimize(sqlite3_column_int64(select, 0) + sqlite3_column_double(select, 1));
    }
    sqlite3_reset(select);
  }
  state.counters["hits"] = static_cast<double>(hits);
  sqlite3_finalize(select);
}

constexpr std::uint32_t kIds = 1000000;
enum Order { kForward, kBack, kAtRandom };

// Seven eighths of all documents, as a selection leaves them: runs of a few.
const std::vector<std::uint32_t>& Ids() {
  static const std::vector<std::uint32_t> ids = [] {
    bench::Random random;
    std::vector<std::uint32_t> made;
    for (std::uint32_t id = 4; made.size() < kIds; id += 4) {
      if (random.Below(8) < 7) made.push_back(id);
    }
    return made;
  }();
  return ids;
}

const std::vector<std::uint32_t>& Positions(std::int64_t order) {
  static std::vector<std::uint32_t> positions[3];
  std::vector<std::uint32_t>& wanted = positions[order];
  bench::Random random;
  for (std::uint32_t i = static_cast<std::uint32_t>(wanted.size()); i < kIds; ++i) {
    wanted.push_back(order == kForward ? i : order == kBack ? kIds - 1 - i : random.Below(kIds));
  }
  return wanted;
}

constexpr const char* kLabels[] = {"forward", "back", "at random"};

void WalkIdTable(benchmark::State& state) {
  ENGHANDLE table = 0;
  Check(EngIdTableCreate(4, &table));
  for (std::uint32_t id : Ids()) Check(EngIdTableInsert(table, id, nullptr));
  VQIDTable ids(table);
  const std::vector<std::uint32_t>& positions = Positions(state.range(0));
  // A jump at random walks over the runs between: fewer of them show what one costs.
  const std::size_t steps = state.range(0) == kAtRandom ? 1000 : kIds;
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < steps; ++i) sum += ids.GetID(positions[i]);
    benchmark::DoNotOptimize(sum);
  }
  state.SetLabel(kLabels[state.range(0)]);
  state.SetItemsProcessed(static_cast<std::int64_t>(steps) * state.iterations());
}

void WalkRoaring(benchmark::State& state) {
  roaring_bitmap_t* bitmap = roaring_bitmap_of_ptr(Ids().size(), Ids().data());
  roaring_bitmap_run_optimize(bitmap);
  const std::vector<std::uint32_t>& positions = Positions(state.range(0));
  const std::size_t steps = state.range(0) == kAtRandom ? 1000 : kIds;
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < steps; ++i) {
      std::uint32_t id = 0;
      roaring_bitmap_select(bitmap, positions[i], &id);
      sum += id;
    }
    benchmark::DoNotOptimize(sum);
  }
  roaring_bitmap_free(bitmap);
  state.SetLabel(kLabels[state.range(0)]);
  state.SetItemsProcessed(static_cast<std::int64_t>(steps) * state.iterations());
}

BENCHMARK(IndexTexts)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(IndexFts5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(SearchTexts)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);
BENCHMARK(SearchFts5)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);
BENCHMARK(WalkIdTable)->DenseRange(kForward, kAtRandom)->Unit(benchmark::kMillisecond);
BENCHMARK(WalkRoaring)->DenseRange(kForward, kAtRandom)->Unit(benchmark::kMillisecond);

}  // namespace
