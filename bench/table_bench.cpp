// A table of 255 rows and 64 columns with text, beside one in a QTextDocument: made, read, a row put in, a column taken
// out, a width set.
#include <benchmark/benchmark.h>

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <chrono>
#include <cstdlib>
#include <memory>

#include "bench/support.h"

namespace {

constexpr unsigned kRows = 255, kColumns = 64;
constexpr unsigned kMiddleRow = kRows / 2, kMiddleColumn = kColumns / 2;

std::string Word(unsigned row, unsigned column) { return std::to_string(row) + " by " + std::to_string(column); }
// The text of a table of longer words is more than one string holds.
std::string ShortWord(unsigned row, unsigned) { return std::to_string(row % 90 + 10); }

using Words = std::string (*)(unsigned row, unsigned column);

struct Ours {
  explicit Ours(Words word = Word) {
    bench::Home::Get();
    Text.Create();
    VQRTCursor cursor;
    Text.GetCursor(&cursor);
    Text.CreateTable(kRows, kColumns, &cursor, &Table);
    for (unsigned row = 0; row < kRows; ++row) {
      for (unsigned column = 0; column < kColumns; ++column)
        Table(row, column).Append(VQString(word(row, column).c_str()));
    }
    Table.SetUnits(VQUNITS_TWIPS);
  }

  VQRichText Text;
  VQTable Table;
};

struct Theirs {
  explicit Theirs(Words words = Word) {
    Document->setUndoRedoEnabled(false);
    Table = QTextCursor(Document.get()).insertTable(kRows, kColumns);
    for (int row = 0; row < static_cast<int>(kRows); ++row) {
      for (int column = 0; column < static_cast<int>(kColumns); ++column) {
        const std::string word = words(static_cast<unsigned>(row), static_cast<unsigned>(column));
        Table->cellAt(row, column)
            .firstCursorPosition()
            .insertText(QString::fromUtf8(word.data(), qsizetype(word.size())));
      }
    }
  }

  // Qt wants an application where fonts are measured.
  static std::unique_ptr<QTextDocument> NewDocument() {
    static int count = 1;
    static char name[] = "table_bench", *names[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    static QGuiApplication application(count, names);
    return std::make_unique<QTextDocument>();
  }

  std::unique_ptr<QTextDocument> Document = NewDocument();
  QTextTable* Table = nullptr;
};

void MakeTableQuillon(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Ours().Table.GetRowCount());
}
void MakeTableQt(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Theirs().Table->rows());
}

void ReadTableQuillon(benchmark::State& state) {
  const Ours ours(ShortWord);
  for (auto _ : state) {
    VQString text;
    ours.Text.GetText(&text);
    benchmark::DoNotOptimize(text.GetBufLength());
  }
}
void ReadTableQt(benchmark::State& state) {
  const Theirs theirs(ShortWord);
  for (auto _ : state) benchmark::DoNotOptimize(theirs.Document->toPlainText().size());
}

void ReadCellsQuillon(benchmark::State& state) {
  const Ours ours;
  for (auto _ : state) {
    unsigned long bytes = 0;
    for (unsigned row = 0; row < kRows; ++row) {
      for (unsigned column = 0; column < kColumns; ++column) {
        VQString text;
        ours.Table(row, column).GetText(&text);
        bytes += text.GetBufLength();
      }
    }
    benchmark::DoNotOptimize(bytes);
  }
}
void ReadCellsQt(benchmark::State& state) {
  const Theirs theirs;
  for (auto _ : state) {
    qsizetype characters = 0;
    for (int row = 0; row < static_cast<int>(kRows); ++row) {
      for (int column = 0; column < static_cast<int>(kColumns); ++column) {
        characters += theirs.Table->cellAt(row, column).firstCursorPosition().block().text().size();
      }
    }
    benchmark::DoNotOptimize(characters);
  }
}

// Times the work alone; what takes it back is not counted.
template <typename Work, typename Undo>
void Time(benchmark::State& state, Work work, Undo undo) {
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    undo();
  }
}

void InsertRowQuillon(benchmark::State& state) {
  Ours ours;
  ours.Table.DeleteRows(kMiddleRow, 1);
  Time(
      state, [&] { ours.Table.InsertRows(kMiddleRow, 1); }, [&] { ours.Table.DeleteRows(kMiddleRow, 1); });
}
void InsertRowQt(benchmark::State& state) {
  Theirs theirs;
  theirs.Table->removeRows(kMiddleRow, 1);
  Time(
      state, [&] { theirs.Table->insertRows(kMiddleRow, 1); }, [&] { theirs.Table->removeRows(kMiddleRow, 1); });
}

void DeleteColumnQuillon(benchmark::State& state) {
  Ours ours;
  Time(
      state, [&] { ours.Table.DeleteColumns(kMiddleColumn, 1); }, [&] { ours.Table.InsertColumns(kMiddleColumn, 1); });
}
void DeleteColumnQt(benchmark::State& state) {
  Theirs theirs;
  Time(
      state, [&] { theirs.Table->removeColumns(kMiddleColumn, 1); },
      [&] { theirs.Table->insertColumns(kMiddleColumn, 1); });
}

// After ours every cell says where it stands.
void SetWidthQuillon(benchmark::State& state) {
  Ours ours;
  ours.Table.SetAutomaticWidth(0);
  double width = 500;
  for (auto _ : state) ours.Table.SetColumnWidth(kMiddleColumn, width = 1100 - width);
}

void SetQtWidth(QTextTable& table, double width) {
  QTextTableFormat format = table.format();
  QList<QTextLength> widths(kColumns, QTextLength(QTextLength::FixedLength, 30));
  widths[kMiddleColumn] = QTextLength(QTextLength::FixedLength, width);
  format.setColumnWidthConstraints(widths);
  table.setFormat(format);
}

// Qt knows it when it has laid the table out.
void SetWidthQt(benchmark::State& state) {
  Theirs theirs;
  double width = 30;
  theirs.Document->documentLayout()->documentSize();
  for (auto _ : state) {
    SetQtWidth(*theirs.Table, width = 70 - width);
    benchmark::DoNotOptimize(theirs.Document->documentLayout()->documentSize());
  }
}

// For the record: without.
void SetWidthQtFormatAlone(benchmark::State& state) {
  Theirs theirs;
  double width = 30;
  for (auto _ : state) SetQtWidth(*theirs.Table, width = 70 - width);
}

BENCHMARK(MakeTableQuillon)->Unit(benchmark::kMillisecond);
BENCHMARK(MakeTableQt)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadTableQuillon)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadTableQt)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadCellsQuillon)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadCellsQt)->Unit(benchmark::kMicrosecond);
BENCHMARK(InsertRowQuillon)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(InsertRowQt)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(DeleteColumnQuillon)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(DeleteColumnQt)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SetWidthQuillon)->Unit(benchmark::kMicrosecond);
BENCHMARK(SetWidthQt)->Unit(benchmark::kMicrosecond);
BENCHMARK(SetWidthQtFormatAlone)->Unit(benchmark::kMicrosecond);

}  // namespace
