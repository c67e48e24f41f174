// Rich text: parse, save, edit, find; beside pugixml, memcpy and memmem.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <string.h>

#include <cstring>
#include <map>
#include <pugixml.hpp>

#include "bench/support.h"

namespace {

using bench::Home;

constexpr std::size_t kLarge = 6200000;  // bytes of text, in a stream of 7 MB with 180 thousand records
constexpr char kWord[] = "needleword";   // stands once, in the middle
constexpr char kOther[] = "haystraw00";  // as long

// `bytes` of lines with the word in the middle.
std::string TextWithWord(std::size_t bytes) {
  std::string text = bench::Lines(bytes);
  const std::size_t middle = text.find(' ', text.size() / 2);
  return text.insert(middle + 1, std::string(kWord) + " ");
}

VQString Store(const std::string& text) { return VQString(reinterpret_cast<const VQCHAR*>(text.data()), text.size()); }

// A document with a body of so many bytes of text, saved; made once for each size. Lines become paragraphs.
unsigned long DocumentOf(VQDatabase& database, std::size_t bytes) {
  VQDocument document;
  database.CreateDocument(&document);
  VQRichText body;
  document.CreateItem("Body", &body);
  const std::string text = TextWithWord(bytes);
  constexpr std::size_t kPart = 60000;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = std::min(at + kPart, text.size());
    while (end < text.size() && text[end - 1] != '\n') --end;
    body.Append(Store(text.substr(at, end - at)));
    at = end;
  }
  document.Save();
  return document.GetSlateID();
}

struct Shared {
  VQDatabase database = Home::Get().Create("rich.vlt");
  std::map<std::size_t, unsigned long> ids;

  static Shared& Get() {
    static Shared shared;
    return shared;
  }
  // An open document with a body of that size.
  VQDocument Open(std::size_t bytes) {
    unsigned long& id = ids[bytes];
    if (id == 0) id = DocumentOf(database, bytes);
    VQDocument document;
    database.GetDocument(id, &document);
    document.Open();
    return document;
  }
};

// Bytes of the heap, what it took in pages of its own included.
std::uint64_t MemoryInUse() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

void ParseQuillon(benchmark::State& state) {
  VQDocument document = Shared::Get().Open(kLarge);
  double memory = 0;
  std::size_t stream = 1;
  for (auto _ : state) {
    state.PauseTiming();
    VQRichText body;
    document.GetItem("Body", &body);
    const std::uint64_t before = MemoryInUse();
    state.ResumeTiming();
    {
      VQRTContainer top;
      body.GetTopContainer(&top);
      state.PauseTiming();
      memory = static_cast<double>(MemoryInUse() - before);
      stream = body.GetSize();
      state.ResumeTiming();
    }
    body = VQRichText();  // the last handle: the tree goes
  }
  state.counters["memory/stream"] = memory / static_cast<double>(stream);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream));
}

// The same runs and paragraphs as elements.
std::string Xml(const std::string& text) {
  std::string xml = "<body>";
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    xml += "<t f=\"0A000001\">" + text.substr(at, end - at) + "</t><p/>";
    at = end + 1;
  }
  return xml + "</body>";
}

void ParsePugixml(benchmark::State& state) {
  const std::string xml = Xml(TextWithWord(kLarge));
  double memory = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::uint64_t before = MemoryInUse();
    state.ResumeTiming();
    pugi::xml_document document;
    if (!document.load_buffer(xml.data(), xml.size())) state.SkipWithError("not parsed");
    state.PauseTiming();
    memory = static_cast<double>(MemoryInUse() - before);
    state.ResumeTiming();
  }
  state.counters["memory/stream"] = memory / static_cast<double>(xml.size());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(xml.size()));
}

void Memcpy(benchmark::State& state) {
  const std::string from(kLarge, 'x');
  std::string to(kLarge, 'y');
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::ClobberMemory();
  }
}

// Getting the body and updating it without a change.
void UpdateUntouched(benchmark::State& state) {
  VQDocument document = Shared::Get().Open(kLarge);
  for (auto _ : state) {
    VQRichText body;
    document.GetItem("Body", &body);
    body.Update();
  }
}

void SaveUntouched(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    VQDocument document = Shared::Get().Open(kLarge);
    state.ResumeTiming();
    VQRichText body;
    document.GetItem("Body", &body);
    document.Save();
  }
}

void Replace(VQRichText& body, VQRTCursor* cursor, const char* from, const char* to) {
  if (cursor->GotoFirst(from) != VQ_OK) throw VQSTATUS{VQERR_NOT_FOUND};
  body.Insert(to, cursor, 0);
  body.Delete(cursor, std::strlen(from));
}

// A parsed tree: one word changed and the whole body written into its items. The store's own write isn't in it.
void UpdateOneWord(benchmark::State& state) {
  VQDocument document = Shared::Get().Open(kLarge);
  VQRichText body;
  document.GetItem("Body", &body);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  const char* from = kWord;
  const char* to = kOther;
  for (auto _ : state) {
    state.PauseTiming();
    Replace(body, &cursor, from, to);
    std::swap(from, to);
    state.ResumeTiming();
    body.Update();
  }
}

// The edits alone, in bodies of three sizes; the tree is parsed before.
void InsertAndDeleteWord(benchmark::State& state) {
  VQDocument document = Shared::Get().Open(static_cast<std::size_t>(state.range(0)));
  VQRichText body;
  document.GetItem("Body", &body);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  cursor.GotoFirst(kWord);
  const VQString word = "colour ";
  for (auto _ : state) {
    body.Insert(word, &cursor, 0);
    cursor -= word.GetLength();
    body.Delete(&cursor, word.GetLength());
  }
}

void FindWordMemmem(benchmark::State& state) {
  const std::string text = TextWithWord(kLarge);
  for (auto _ : state) {
    benchmark::DoNotOptimize(memmem(text.data(), text.size(), kWord, std::strlen(kWord)));
  }
}

void FindWordByCursor(benchmark::State& state) {
  VQDocument document = Shared::Get().Open(kLarge);
  VQRichText body;
  document.GetItem("Body", &body);
  VQRTCursor start;
  body.GetCursor(&start);
  const VQString word = kWord;
  for (auto _ : state) {
    VQRTCursor cursor;
    cursor.Copy(start);
    if (cursor.GotoFirst(word) != VQ_OK) state.SkipWithError("not found");
  }
}

BENCHMARK(ParsePugixml)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseQuillon)->Unit(benchmark::kMillisecond);
BENCHMARK(Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(UpdateUntouched)->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveUntouched)->Unit(benchmark::kMicrosecond)->Iterations(20)->UseRealTime();
BENCHMARK(UpdateOneWord)->Unit(benchmark::kMicrosecond);
BENCHMARK(InsertAndDeleteWord)->Arg(100000)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kNanosecond);
BENCHMARK(FindWordMemmem)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindWordByCursor)->Unit(benchmark::kMicrosecond);

}  // namespace
