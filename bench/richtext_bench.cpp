// Rich text: parse, save, edit, find; beside pugixml, memcpy and memmem.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <string.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <pugixml.hpp>

#include "bench/support.h"
#include "engine/memory.h"

namespace {

using bench::Home;

constexpr std::size_t kLarge = 7000000;  // bytes of records: 180 thousand of them
constexpr char kWord[] = "needleword";   // stands once, in the middle
constexpr char kOther[] = "haystraw00";  // as long
constexpr char kLonger[] = "many-haystraws";

void AddWord(std::string& bytes, unsigned word) {
  bytes += static_cast<char>(word & 0xFF);
  bytes += static_cast<char>(word >> 8 & 0xFF);
}

// A body as composite records and, with the same content, as XML: an element for each record, an attribute for each
// field. Each paragraph is a paragraph record, a reference and two runs in different fonts, with a paragraph
// definition before every fiftieth of them.
class Content {
 public:
  explicit Content(std::size_t bytes) {
    const std::string text = bench::Lines(bytes);
    Xml = "<body>";
    std::size_t at = 0;
    bool placed = false;
    for (unsigned paragraph = 0; Stream.size() < bytes; ++paragraph) {
      const std::size_t end = text.find('\n', at);
      std::string line = text.substr(at, end - at) + ' ';
      line += text.substr(end + 1, text.find(' ', end + 30) - end - 1);
      at = end + 1;
      if (paragraph > 0) AddParagraph();
      if (paragraph % 50 == 0) AddDefinition(1 + paragraph / 50);
      AddReference(1 + paragraph / 50);
      const std::size_t cut = line.find(' ', line.size() / 3);
      if (!placed && Stream.size() > bytes / 2) {
        line.insert(cut, std::string(" ") + kWord);
        placed = true;
      }
      AddRun(kFonts[0], line.substr(0, cut));
      AddRun(kFonts[paragraph % std::size(kFonts)], line.substr(cut));
    }
    Xml += "</body>";
  }

  std::string Stream;
  std::string Xml;
  std::size_t Records = 0;

 private:
  static constexpr std::uint32_t kFonts[] = {0x0A000101, 0x0C000201, 0x0A000002, 0x0E030304};

  void AddRun(std::uint32_t font, std::string_view text) {
    AddWord(Stream, 0xFF85);
    AddWord(Stream, static_cast<unsigned>(8 + text.size()));
    AddWord(Stream, font);
    AddWord(Stream, font >> 16);
    Stream += text;
    if (text.size() % 2) Stream += '\0';
    char tag[32];
    std::snprintf(tag, sizeof tag, "<run font=\"%08X\">", static_cast<unsigned>(font));
    (Xml += tag).append(text) += "</run>";
    ++Records;
  }
  void AddParagraph() {
    AddWord(Stream, 0x0281);
    Xml += "<paragraph/>";
    ++Records;
  }
  void AddReference(unsigned id) {
    AddWord(Stream, 0x0483);
    AddWord(Stream, id);
    Xml += "<reference id=\"" + std::to_string(id) + "\"/>";
    ++Records;
  }
  void AddDefinition(unsigned id) {
    const unsigned margin = 1440 + 20 * (id % 40);
    AddWord(Stream, 0xFF82);
    for (const unsigned field : {70u, id, 0u, 0u, 0u, 0u, margin, 0u, margin, 1u}) AddWord(Stream, field);
    for (unsigned tab = 0; tab < 20; ++tab) AddWord(Stream, tab == 0 ? 720 : 0);
    for (const unsigned field : {0x0100u, 0u, 0u, 0u}) AddWord(Stream, field);
    const std::string left = std::to_string(margin);
    Xml += "<definition id=\"" + std::to_string(id) + "\" justify=\"0\" line=\"0\" above=\"0\" below=\"0\" left=\"" +
           left + "\" right=\"0\" first=\"" + left + "\" tabs=\"720\" flags=\"256\" tabtypes=\"0\" flags2=\"0\"/>";
    ++Records;
  }
};

const Content& ContentOf(std::size_t bytes) {
  static std::map<std::size_t, Content> contents;
  return contents.try_emplace(bytes, bytes).first->second;
}

// A document with that content as its body, saved.
unsigned long DocumentOf(VQDatabase& database, std::size_t bytes) {
  VQDocument document;
  database.CreateDocument(&document);
  VQRichText body;
  document.CreateItem("Body", &body);
  const std::string& stream = ContentOf(bytes).Stream;
  ENGHANDLE memory = 0;
  vq::ThrowIfError(vq::FromEngine(EngMemAlloc(0, static_cast<std::uint32_t>(stream.size()) + 2, &memory)));
  auto* value = static_cast<char*>(EngMemLock(memory));
  std::memcpy(value, "\1\0", 2);
  std::memcpy(value + 2, stream.data(), stream.size());
  EngMemUnlock(memory);
  body.Append(VQRichText(new VQRichTextBody(memory, stream.size() + 2)));
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
  state.counters["records"] = static_cast<double>(ContentOf(kLarge).Records);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream));
}

// load_buffer parses a copy of its own, so that the source stays as it is, as the items do; the DOM's end is timed too.
void ParsePugixml(benchmark::State& state) {
  const std::string& xml = ContentOf(kLarge).Xml;
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
  state.counters["memory/stream"] = memory / static_cast<double>(ContentOf(kLarge).Stream.size());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(xml.size()));
}

void Memcpy(benchmark::State& state) {
  const std::string& from = ContentOf(kLarge).Stream;
  std::string to(from.size(), 'y');
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
void UpdateOneWord(benchmark::State& state, const char* to) {
  VQDocument document = Shared::Get().Open(kLarge);
  VQRichText body;
  document.GetItem("Body", &body);
  VQRTCursor cursor;
  body.GetCursor(&cursor);
  const char* from = kWord;
  for (auto _ : state) {
    state.PauseTiming();
    Replace(body, &cursor, from, to);
    std::swap(from, to);
    state.ResumeTiming();
    body.Update();
  }
}

// The same with the store's part: update and durable save.
void SaveOneWord(benchmark::State& state) {
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
    document.Save();
  }
  if (from != kWord) Replace(body, &cursor, from, kWord);  // other rows look for it
  document.Save();
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

constexpr char kLine[] = "A line of a text with many paragraphs.";

VQRichText Paragraphs(unsigned count) {
  constexpr unsigned kLines = 500;  // that go in at once
  std::string lines;
  for (unsigned line = 0; line < kLines; ++line) lines += std::string(kLine) + "\n";
  Home::Get();
  VQRichText text;
  text.Create();
  for (unsigned line = 0; line < count; line += kLines) text.Append(lines.c_str());
  return text;
}

void StyleAll(VQRichText& text, bool ownStyles) {
  unsigned number = 0;
  VQRTObject run;
  for (VQSTATUS found = text.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run); found == VQ_OK; ++number) {
    VQParagraphStyle style, same;
    style.SetSpacingAbove(static_cast<unsigned short>(1 + (ownStyles ? number : number % 3)));
    VQRTCursor cursor;
    VQStylizedText(run).GetCursor(&cursor);
    text.SetParagraphStyle(cursor, style);
    text.FindParagraphStyle(run, &same);
    if (same != style) throw VQSTATUS{VQERR_NOT_FOUND};
    found = text.FindNext(VQRTObject(run), VQRTTYPE_STYLIZED_TEXT, &run);
  }
}

void CountEach(benchmark::State& state, const char* what, double count) {
  state.counters[what] =
      benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Each paragraph of a text gets one of three styles, or one of its own, and is asked for it: time for a paragraph.
void StyleParagraphs(benchmark::State& state, bool ownStyles) {
  const auto count = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    VQRichText text = Paragraphs(count);
    state.ResumeTiming();
    StyleAll(text, ownStyles);
  }
  CountEach(state, "a paragraph", count);
}

// All paragraphs but one are deleted, one at a time, each with the definition that it brought.
void DeleteStyledParagraphs(benchmark::State& state) {
  const auto count = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    VQRichText text = Paragraphs(count);
    StyleAll(text, true);
    VQRTCursor cursor;
    text.GetCursor(&cursor);
    state.ResumeTiming();
    for (unsigned i = 1; i < count; ++i) {
      if (text.Delete(&cursor, std::strlen(kLine)) != VQ_OK) throw VQSTATUS{VQERR_NOT_FOUND};
    }
  }
  CountEach(state, "a paragraph", count);
}

// Character by character through one run of the length given, two bytes each.
void StepCursor(benchmark::State& state) {
  Home::Get();
  std::string letters;
  for (std::int64_t i = 0; i < state.range(0); ++i) letters += "\xC3\xA9";
  VQRichText text;
  text.Create();
  text.Append(VQString(reinterpret_cast<const VQCHAR*>(letters.data()), letters.size()));
  for (auto _ : state) {
    VQRTCursor cursor;
    text.GetCursor(&cursor);
    for (std::int64_t i = 0; i < state.range(0); ++i) cursor += 1;
    benchmark::DoNotOptimize(&cursor);
  }
  CountEach(state, "a step", static_cast<double>(state.range(0)));
}

void FindWordMemmem(benchmark::State& state) {
  const std::string& text = ContentOf(kLarge).Stream;
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

constexpr std::size_t kInserted = 10000000;

// The values of a body as they would be stored.
void Write(const VQRichText& body) {
  std::vector<vq::ItemBlock> blocks;
  vq::ThrowIfError(body.GetRichTextBody()->WriteBlocks(&blocks));
  for (const vq::ItemBlock& block : blocks) EngMemFree(block.Memory);
}

// Two stored bodies of 10 MB, not parsed yet. An edit stays in a document while that is open.
struct TwoBodies {
  TwoBodies() {
    for (std::size_t i = 0; i < std::size(Bodies); ++i) {
      Documents[i] = Shared::Get().Open(kInserted + i);
      Documents[i].GetItem("Body", &Bodies[i]);
    }
  }
  VQDocument Documents[2];
  VQRichText Bodies[2];
};

// Each is parsed, written and closed.
void ParseAndWriteBoth(benchmark::State& state) {
  std::optional<TwoBodies> two;
  for (auto _ : state) {
    state.PauseTiming();
    two.reset();
    two.emplace();
    state.ResumeTiming();
    for (VQRichText& body : two->Bodies) {
      Write(body);
      body = VQRichText();
    }
  }
}

// One goes into the middle of the other, which is written into its items; both are closed.
void InsertRichText(benchmark::State& state) {
  std::optional<TwoBodies> two;
  for (auto _ : state) {
    state.PauseTiming();
    two.reset();
    two.emplace();
    state.ResumeTiming();
    VQRTCursor cursor;
    two->Bodies[0].GetCursor(&cursor);
    state.PauseTiming();
    vq::ThrowIfError(cursor.GotoFirst(kWord));
    state.ResumeTiming();
    vq::ThrowIfError(two->Bodies[0].Insert(two->Bodies[1], &cursor));
    two->Bodies[0].Update();
    cursor = VQRTCursor();
    for (VQRichText& body : two->Bodies) body = VQRichText();
  }
}

BENCHMARK(ParsePugixml)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseQuillon)->Unit(benchmark::kMillisecond);
BENCHMARK(Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(UpdateUntouched)->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveUntouched)->Unit(benchmark::kMicrosecond)->Iterations(20)->UseRealTime();
BENCHMARK_CAPTURE(UpdateOneWord, SameLength, kOther)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(UpdateOneWord, OtherLength, kLonger)->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveOneWord)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(InsertAndDeleteWord)->Arg(100000)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kNanosecond);
BENCHMARK(ParseAndWriteBoth)->Unit(benchmark::kMillisecond);
BENCHMARK(InsertRichText)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(StyleParagraphs, ThreeStyles, false)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(StyleParagraphs, OwnStyles, true)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(DeleteStyledParagraphs)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(StepCursor)->Arg(500)->Arg(5000)->Arg(15000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindWordMemmem)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindWordByCursor)->Unit(benchmark::kMicrosecond);

}  // namespace
