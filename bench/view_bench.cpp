// Views by the class library: a walk over all entries, beside an index-ordered SELECT.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>

#include "bench/support.h"

namespace {

std::string Subject(std::uint32_t number) {
  return "Subject " + std::to_string(number * 2654435761u) + " of a document";
}

// Documents of a text and a number, in a view that is sorted by the text.
struct Documents {
  explicit Documents(std::uint32_t count) : Db(bench::Home::Get().Create("walk" + std::to_string(count))) {
    Db.BeginTransaction();
    for (std::uint32_t i = 0; i < count; ++i) {
      VQDocument document;
      Db.CreateDocument(&document);
      const std::string text = Subject(i);
      const double size = i;
      document.CreateItem("Subject", TYPE_TEXT, text.data(), text.size(), VQITEMFLAGS_SUMMARY);
      document.CreateItem("Size", TYPE_NUMBER, &size, sizeof size, VQITEMFLAGS_SUMMARY);
      document.Save();
    }
    Db.CommitTransaction();
    Db.CreateView("Walk", nullptr, &View);
    View.DeleteColumns(0, View.GetColumnCount());
    View.AppendColumns(2);
    View[0].SetFieldName("Subject");
    View[0].SetSortOption(VQVFSORTOPTION_ASCENDING);
    View[1].SetFieldName("Size");
    View.Save();
    View.Open();
  }

  static Documents& Of(std::int64_t count) {
    static std::map<std::int64_t, std::unique_ptr<Documents>> all;
    auto& documents = all[count];
    if (!documents) documents = std::make_unique<Documents>(static_cast<std::uint32_t>(count));
    return *documents;
  }

  VQDatabase Db;
  VQViewFolder View;
};

void WalkQuillon(benchmark::State& state) {
  Documents& documents = Documents::Of(state.range(0));
  for (auto _ : state) {
    VQVFNavigator navigator;
    documents.View.GetEntries(&navigator);
    VQVFEntry entry;
    double sum = 0;
    for (VQSTATUS s = navigator.Goto(VQNAVIGATE_FIRST, &entry); s == VQ_OK;
         s = navigator.Goto(VQNAVIGATE_NEXT, &entry)) {
      const VQText subject(entry.GetColumnItem(0UL));
      const VQNumbers size(entry.GetColumnItem(1UL));
      const VQString text = subject[0];
      benchmark::DoNotOptimize(text.GetBuf());
      sum += VQNumber(size[0]);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void WalkSqlite(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  static std::map<std::uint32_t, std::unique_ptr<bench::Sqlite>> all;
  auto& sqlite = all[count];
  if (!sqlite) {
    sqlite = std::make_unique<bench::Sqlite>(bench::Home::Get().Path("walk" + std::to_string(count) + ".db"));
    sqlite->Run("CREATE TABLE documents(id INTEGER PRIMARY KEY, subject TEXT, size REAL); BEGIN");
    sqlite3_stmt* insert = sqlite->Prepare("INSERT INTO documents(subject, size) VALUES(?, ?)");
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string text = Subject(i);
      sqlite3_bind_text(insert, 1, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      sqlite3_bind_double(insert, 2, i);
      sqlite->Step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite->Run("COMMIT; CREATE INDEX by_subject ON documents(subject)");
  }
  sqlite3_stmt* select = sqlite->Prepare("SELECT subject, size FROM documents INDEXED BY by_subject ORDER BY subject");
  for (auto _ : state) {
    double sum = 0;
    while (sqlite3_step(select) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_text(select, 0));
      sum += sqlite3_column_double(select, 1);
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(WalkQuillon)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(WalkSqlite)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
