// Characters, calls across the boundary, and strings.
#include <benchmark/benchmark.h>
#include <unicode/utf8.h>

#include <cstring>

#include "bench/empty_call.h"
#include "bench/support.h"
#include "engine/engine.h"

namespace {

constexpr std::size_t kTextBytes = 60000;

const std::string& Text() {
  static const std::string text = bench::Lines(kTextBytes).substr(0, kTextBytes);
  return text;
}

VQString Store(const std::string& text) { return VQString(reinterpret_cast<const VQCHAR*>(text.data()), text.size()); }

void CountCharacters(benchmark::State& state, std::int64_t characters) {
  state.counters["per_char"] = benchmark::Counter(
      static_cast<double>(characters), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void ScanIcuU8Next(benchmark::State& state) {
  const std::string& text = Text();
  std::int64_t characters = 0;
  for (auto _ : state) {
    characters = 0;
    std::uint32_t sum = 0;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(text.size()); ++characters) {
      UChar32 c;
      U8_NEXT(text.data(), i, static_cast<std::int32_t>(text.size()), c);
      sum += static_cast<std::uint32_t>(c);
    }
    benchmark::DoNotOptimize(sum);
  }
  CountCharacters(state, characters);
}
BENCHMARK(ScanIcuU8Next);

void ScanEngTextNextChar(benchmark::State& state) {
  bench::Home::Get();
  const std::string& text = Text();
  std::int64_t characters = 0;
  for (auto _ : state) {
    const auto* at = reinterpret_cast<const ENGCHAR*>(text.data());
    const ENGCHAR* const end = at + text.size();
    for (characters = 0; at < end; ++characters) {
      const auto left = static_cast<std::uint16_t>(end - at);
      if (EngTextNextChar(&at, left, 0, 0) == 0) break;
    }
    benchmark::DoNotOptimize(at);
  }
  CountCharacters(state, characters);
}
BENCHMARK(ScanEngTextNextChar);

void ScanVQStringByPosition(benchmark::State& state) {
  bench::Home::Get();
  const VQString text = Store(Text());
  const unsigned long length = text.GetLength();
  for (auto _ : state) {
    unsigned sum = 0;
    for (unsigned long i = 0; i < length; ++i) sum += *text[i].GetCharPtr();
    benchmark::DoNotOptimize(sum);
  }
  CountCharacters(state, static_cast<std::int64_t>(length));
}
BENCHMARK(ScanVQStringByPosition);

void CallEmpty(benchmark::State& state) {
  int value = 1;
  for (auto _ : state) benchmark::DoNotOptimize(value = EmptyCall(value));
}
BENCHMARK(CallEmpty);

// The calls of the pair below and nothing else: two functions in turn are more than one function twice, since the
// processor has two more jumps to foresee.
void CallEmptyPair(benchmark::State& state) {
  int values[8] = {};
  std::size_t turn = 0;
  for (auto _ : state) {
    const int value = values[++turn & 7];
    benchmark::DoNotOptimize(EmptyCall(value));
    OtherEmptyCall(value);
  }
}
BENCHMARK(CallEmptyPair);

// One block again and again, and eight in turn: the changes of one block's count wait for each other.
void CallEngMemLockAndUnlock(benchmark::State& state) {
  bench::Home::Get();
  ENGHANDLE handles[8] = {};
  for (ENGHANDLE& handle : handles) vq::ThrowIfError(EngMemAlloc(0, 100, &handle));
  const auto mask = static_cast<std::size_t>(state.range(0) - 1);
  std::size_t turn = 0;
  for (auto _ : state) {
    const ENGHANDLE handle = handles[++turn & mask];
    benchmark::DoNotOptimize(EngMemLock(handle));
    EngMemUnlock(handle);
  }
  for (ENGHANDLE handle : handles) EngMemFree(handle);
}
BENCHMARK(CallEngMemLockAndUnlock)->Arg(1)->Arg(8);

// Strings of the state's length, beside the standard library's.
void CopyStdString(benchmark::State& state) {
  const std::string text = Text().substr(0, static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::string copy = text;
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(CopyStdString)->Arg(20)->Arg(60000);

void CopyVQString(benchmark::State& state) {
  bench::Home::Get();
  const VQString text = Store(Text().substr(0, static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    VQString copy = text;
    benchmark::DoNotOptimize(&copy);
  }
}
BENCHMARK(CopyVQString)->Arg(20)->Arg(60000);

constexpr int kAppends = 1000;

void AppendStdString(benchmark::State& state) {
  const std::string word = "colour of light ";
  for (auto _ : state) {
    std::string text;
    for (int i = 0; i < kAppends; ++i) text += word;
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(AppendStdString);

void AppendVQString(benchmark::State& state) {
  bench::Home::Get();
  const VQString word = "colour of light ";
  for (auto _ : state) {
    VQString text;
    for (int i = 0; i < kAppends; ++i) text += word;
    benchmark::DoNotOptimize(&text);
  }
}
BENCHMARK(AppendVQString);

// A list of the state's length, entry by entry.
void AppendVQText(benchmark::State& state) {
  bench::Home::Get();
  const VQString entry = "entry";
  for (auto _ : state) {
    VQText list;
    for (std::int64_t i = 0; i < state.range(0); ++i) list << entry;
    benchmark::DoNotOptimize(&list);
  }
  state.counters["per_entry"] = benchmark::Counter(
      static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(AppendVQText)->Arg(1000)->Arg(8000);

void CompareMemcmp(benchmark::State& state) {
  const std::string first = Text().substr(0, static_cast<std::size_t>(state.range(0)));
  const std::string second = first;
  for (auto _ : state) benchmark::DoNotOptimize(std::memcmp(first.data(), second.data(), first.size()));
}
BENCHMARK(CompareMemcmp)->Arg(20)->Arg(60000);

// Flags: 0 bytes, 1 without case.
void CompareVQString(benchmark::State& state) {
  bench::Home::Get();
  const std::string text = Text().substr(0, static_cast<std::size_t>(state.range(0)));
  const VQString first = Store(text);
  const VQString second = Store(text);
  const auto flags = static_cast<unsigned long>(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(VQStringCompare(first, second, flags));
}
BENCHMARK(CompareVQString)->ArgsProduct({{20, 60000}, {0, 1}});

}  // namespace
