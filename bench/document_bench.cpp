// Documents in a store, beside bare SQLite and LMDB with the same bytes.
#include <benchmark/benchmark.h>
#include <lmdb.h>

#include <bit>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/support.h"

namespace {

using bench::Home;
using bench::Sqlite;

constexpr std::uint32_t kDocuments = 100000;
constexpr std::size_t kLargeBody = 1 << 20;

std::string Numbered(const char* text, std::uint32_t number) { return text + std::to_string(number); }

// The bodies' records: three text runs with paragraphs between.
std::vector<unsigned char> SmallBody(std::uint32_t number) {
  std::vector<unsigned char> records;
  for (int i = 0; i < 3; ++i) {
    const std::string text = Numbered("The colour of the light on the water this evening, page ", number * 10 + i);
    const std::size_t length = 8 + text.size();
    const unsigned char head[] = {0x85, 0xFF, static_cast<unsigned char>(length), 0, 1, 0, 0, 10};
    records.insert(records.end(), std::begin(head), std::end(head));
    records.insert(records.end(), text.begin(), text.end());
    if (length & 1) records.push_back(0);
    records.insert(records.end(), {0x81, 2});
  }
  return records;
}

const std::string& Filler() {
  static const std::string text = bench::Lines(400);
  return text;
}

TIMEDATE MomentOf(std::uint32_t number) { return {number % 86400 * 100u, 2460000u + number / 1000}; }

// Through the class library.

void AddText(VQDocument& document, const char* name, const std::string& value) {
  VQText text;
  document.CreateItem(name, &text, VQITEMFLAGS_SUMMARY);
  text.SetValue(VQString(reinterpret_cast<const VQCHAR*>(value.data()), value.size()));
}

void AddNumber(VQDocument& document, const char* name, double value) {
  VQNumbers number;
  document.CreateItem(name, &number, VQITEMFLAGS_SUMMARY);
  number.SetValue(value);
}

void AddMoment(VQDocument& document, const char* name, const TIMEDATE& moment) {
  VQDatetimes times;
  document.CreateItem(name, &times, VQITEMFLAGS_SUMMARY);
  times.SetValue(VQDatetime(moment));
}

void FillDocument(VQDocument& document, std::uint32_t number) {
  AddText(document, "Form", "Memo");
  AddText(document, "Subject", Numbered("The subject of document ", number));
  VQText categories;
  document.CreateItem("Categories", &categories, VQITEMFLAGS_SUMMARY);
  categories << VQString("Letters") << VQString(Numbered("Group ", number % 100).c_str()) << VQString("Kept");
  AddText(document, "From", "Ada Example");
  AddText(document, "SendTo", Numbered("Person ", number % 1000));
  AddNumber(document, "Size", number);
  AddNumber(document, "Price", number / 7.0);
  AddMoment(document, "Posted", MomentOf(number));
  AddMoment(document, "Due", MomentOf(number + 1000));
  AddText(document, "Abstract", Filler().substr(0, 200));
  AddText(document, "Comments", Filler());
  const std::vector<unsigned char> body = SmallBody(number);
  document.CreateItem("Body", TYPE_COMPOSITE, body.data(), body.size());
}

VQDatabase ImportStore(const char* name) {
  VQDatabase database = Home::Get().Create(name);
  database.BeginTransaction();
  for (std::uint32_t i = 0; i < kDocuments; ++i) {
    VQDocument document;
    database.CreateDocument(&document);
    FillDocument(document, i);
    document.Save();
  }
  database.CommitTransaction();
  return database;
}

// The store that the reading benchmarks share, with its documents' identifiers.
struct Shared {
  VQDatabase database = ImportStore("shared.vlt");
  std::vector<unsigned long> ids;

  Shared() {
    VQDocumentArray documents;
    database.GetDocuments(&documents);
    for (unsigned long i = 0; i < documents.GetCount(); ++i) ids.push_back(documents.GetSlateID(i));
  }
  static Shared& Get() {
    static Shared shared;
    return shared;
  }
};

std::size_t ReadText(const VQDocument& document, const char* name) {
  VQText text;
  document.GetItem(name, &text);
  std::size_t sum = 0;
  for (unsigned long i = 0; i < text.GetCount(); ++i) {
    const VQString entry = text[i];
    sum += entry.GetBufLength();
  }
  return sum;
}

double ReadNumber(const VQDocument& document, const char* name) {
  VQNumbers numbers;
  document.GetItem(name, &numbers);
  return numbers[0];
}

std::uint32_t ReadMoment(const VQDocument& document, const char* name) {
  VQDatetimes times;
  document.GetItem(name, &times);
  const VQDatetime moment = times[0];
  return moment.GetTIMEDATE()->TimeWord;
}

double ReadAll(const VQDocument& document, std::vector<unsigned char>* body) {
  double sum = 0;
  for (const char* name : {"Form", "Subject", "Categories", "From", "SendTo", "Abstract", "Comments"}) {
    sum += static_cast<double>(ReadText(document, name));
  }
  for (const char* name : {"Size", "Price"}) sum += ReadNumber(document, name);
  for (const char* name : {"Posted", "Due"}) sum += ReadMoment(document, name);
  VQItem item;
  document.GetItem("Body", &item);
  body->resize(item.GetValueSize() - 2);
  item.Read(0, body->size(), body->data());
  return sum + (*body)[0];
}

void OpenAndReadQuillon(benchmark::State& state) {
  Shared& shared = Shared::Get();
  bench::Random random;
  std::vector<unsigned char> body;
  for (auto _ : state) {
    VQDocument document;
    shared.database.GetDocument(shared.ids[random.Below(kDocuments)], &document);
    document.Open();
    benchmark::DoNotOptimize(ReadAll(document, &body));
  }
}

// The same content in one value: for each item name number, type, length and data.

class Packer {
 public:
  void Put(std::uint16_t name, std::uint16_t type, const void* data, std::size_t size) {
    Word(name), Word(type), Word(static_cast<std::uint16_t>(size));
    Bytes(data, size);
  }
  void Text(std::uint16_t name, const std::string& text) { Put(name, TYPE_TEXT, text.data(), text.size()); }
  const std::string& bytes() const { return bytes_; }

 private:
  void Word(std::uint16_t value) { Bytes(&value, 2); }
  void Bytes(const void* data, std::size_t size) { bytes_.append(static_cast<const char*>(data), size); }

  std::string bytes_;
};

std::string PackDocument(std::uint32_t number) {
  Packer packer;
  packer.Text(0, "Memo");
  packer.Text(1, Numbered("The subject of document ", number));
  packer.Put(2, TYPE_TEXT_LIST, "\3\0\7\0\10\0\4\0LettersGroup 01Kept", 27);
  packer.Text(3, "Ada Example");
  packer.Text(4, Numbered("Person ", number % 1000));
  for (const auto& [name, value] : {std::pair(5, double(number)), std::pair(6, number / 7.0)}) {
    packer.Put(static_cast<std::uint16_t>(name), TYPE_NUMBER, &value, sizeof value);
  }
  for (const auto& [name, value] : {std::pair(7, MomentOf(number)), std::pair(8, MomentOf(number + 1000))}) {
    packer.Put(static_cast<std::uint16_t>(name), TYPE_TIME, &value, sizeof value);
  }
  packer.Text(9, Filler().substr(0, 200));
  packer.Text(10, Filler());
  const std::vector<unsigned char> body = SmallBody(number);
  packer.Put(11, TYPE_COMPOSITE, body.data(), body.size());
  return packer.bytes();
}

std::uint16_t Word(const unsigned char* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }

double DecodeList(const unsigned char* at) {
  const std::uint16_t count = Word(at);
  const unsigned char* text = at + 2 + 2 * count;
  double sum = 0;
  for (std::uint16_t i = 0; i < count; ++i) {
    const std::string entry(reinterpret_cast<const char*>(text), Word(at + 2 + 2 * i));
    text += entry.size();
    sum += static_cast<double>(entry.size());
  }
  return sum;
}

// Makes a string or number of each item, as a program that works without the library would.
double Decode(const unsigned char* at, std::size_t size) {
  const unsigned char* const end = at + size;
  double sum = 0;
  while (at < end) {
    const std::uint16_t type = Word(at + 2);
    const std::uint16_t length = Word(at + 4);
    at += 6;
    double number;
    if (type == TYPE_NUMBER || type == TYPE_TIME) {
      std::memcpy(&number, at, 8);
      sum += number;
    } else if (type == TYPE_TEXT_LIST) {
      sum += DecodeList(at);
    } else {
      const std::string text(reinterpret_cast<const char*>(at), length);
      sum += static_cast<double>(text.size());
    }
    at += length;
  }
  return sum;
}

// The tables of the store's own slates, with their indexes.
constexpr char kTables[] =
    "CREATE TABLE slate(id INTEGER PRIMARY KEY,feed INTEGER NOT NULL,here INTEGER NOT NULL,state INTEGER NOT NULL,"
    "universal BLOB NOT NULL,sequence INTEGER NOT NULL,sequenced INTEGER NOT NULL,modified INTEGER NOT NULL,"
    "added INTEGER NOT NULL,accessed INTEGER NOT NULL,sum INTEGER NOT NULL,parent BLOB,packed BLOB);"
    "CREATE INDEX slate_universal ON slate(universal);"
    "CREATE INDEX slate_feed ON slate(feed,here,state);"
    "CREATE INDEX slate_parent ON slate(parent) WHERE parent IS NOT NULL;"
    "CREATE INDEX slate_design ON slate(state,here) WHERE state&65535<>1;";
constexpr char kInsert[] =
    "INSERT INTO slate(id,feed,here,state,sequence,sequenced,modified,added,accessed,packed,universal,sum) "
    "VALUES(?,?,?,1,1,?3,?3,?3,?3,?,?,?)";
constexpr char kSelect[] =
    "SELECT id,here,state,universal,sequence,sequenced,modified,added,accessed,parent,packed FROM slate WHERE id=?";
constexpr char kUpdate[] = "UPDATE slate SET feed=?2,here=?3,modified=?3,packed=?4 WHERE id=?1";

std::uint32_t PeerId(std::uint32_t number) { return 4 * (number + 1); }

void FillPeer(Sqlite& peer) {
  peer.Run(kTables);
  sqlite3_stmt* insert = peer.Prepare(kInsert);
  peer.Run("BEGIN IMMEDIATE");
  for (std::uint32_t i = 0; i < kDocuments; ++i) {
    const std::string packed = PackDocument(i);
    const std::uint64_t universal[2] = {0x1234567890ABCDEFull, std::uint64_t{__builtin_bswap32(i)} << 32};
    sqlite3_bind_int64(insert, 1, PeerId(i));
    sqlite3_bind_int64(insert, 2, i);
    sqlite3_bind_int64(insert, 3, 0x25A3D0000000 + i);
    sqlite3_bind_blob(insert, 4, packed.data(), static_cast<int>(packed.size()), SQLITE_STATIC);
    sqlite3_bind_blob(insert, 5, universal, sizeof universal, SQLITE_STATIC);
    sqlite3_bind_int64(insert, 6, 0x9E3779B9u + i);
    peer.Step(insert);
  }
  peer.Run("COMMIT");
  sqlite3_finalize(insert);
}

Sqlite& SharedPeer() {
  static const auto peer = [] {
    auto made = std::make_unique<Sqlite>(Home::Get().Path("peer.db"));
    FillPeer(*made);
    return made;
  }();
  return *peer;
}

void OpenAndReadSqlite(benchmark::State& state) {
  Sqlite& peer = SharedPeer();
  sqlite3_stmt* select = peer.Prepare(kSelect);
  bench::Random random;
  for (auto _ : state) {
    sqlite3_bind_int64(select, 1, PeerId(random.Below(kDocuments)));
    if (sqlite3_step(select) != SQLITE_ROW) state.SkipWithError("no row");
    double sum = 0;
    for (int column = 0; column < 9; ++column) sum += static_cast<double>(sqlite3_column_int64(select, column));
    const auto* packed = static_cast<const unsigned char*>(sqlite3_column_blob(select, 10));
    sum += Decode(packed, static_cast<std::size_t>(sqlite3_column_bytes(select, 10)));
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
}

// Ends the program with LMDB's words.
void CheckLmdb(int code) {
  if (code == MDB_SUCCESS) return;
  std::fprintf(stderr, "LMDB: %s\n", mdb_strerror(code));
  std::abort();
}

struct Lmdb {
  MDB_env* environment = nullptr;
  MDB_dbi table = 0;

  Lmdb() {
    CheckLmdb(mdb_env_create(&environment));
    CheckLmdb(mdb_env_set_mapsize(environment, std::size_t{1} << 30));
    CheckLmdb(mdb_env_open(environment, Home::Get().Path("peer.lmdb").c_str(), MDB_NOSUBDIR, 0600));
    MDB_txn* transaction;
    CheckLmdb(mdb_txn_begin(environment, nullptr, 0, &transaction));
    CheckLmdb(mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY, &table));
    for (std::uint32_t i = 0; i < kDocuments; ++i) {
      std::string packed = PackDocument(i);
      MDB_val key{sizeof i, &i};
      MDB_val value{packed.size(), packed.data()};
      CheckLmdb(mdb_put(transaction, table, &key, &value, MDB_APPEND));
    }
    CheckLmdb(mdb_txn_commit(transaction));
  }
  ~Lmdb() { mdb_env_close(environment); }
};

void OpenAndReadLmdb(benchmark::State& state) {
  static Lmdb lmdb;
  bench::Random random;
  for (auto _ : state) {
    MDB_txn* transaction;
    CheckLmdb(mdb_txn_begin(lmdb.environment, nullptr, MDB_RDONLY, &transaction));
    std::uint32_t number = random.Below(kDocuments);
    MDB_val key{sizeof number, &number};
    MDB_val value;
    CheckLmdb(mdb_get(transaction, lmdb.table, &key, &value));
    benchmark::DoNotOptimize(Decode(static_cast<const unsigned char*>(value.mv_data), value.mv_size));
    mdb_txn_abort(transaction);
  }
}

// One item changed, one durable save. The text keeps its length, so that rows don't grow.

std::string Changing(std::uint64_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "change %012llu", static_cast<unsigned long long>(number));
  return text;
}

void SaveOneItem(benchmark::State& state, VQDocument& document) {
  VQText comments;
  document.GetItem("Comments", &comments);
  std::uint64_t number = 0;
  for (auto _ : state) {
    comments.SetValue(Changing(++number).c_str());
    document.Save();
  }
}

void SaveOneItemQuillon(benchmark::State& state) {
  Shared& shared = Shared::Get();
  VQDocument document;
  shared.database.GetDocument(shared.ids[kDocuments / 2], &document);
  document.Open();
  SaveOneItem(state, document);
}

void SaveOneItemBesideLargeBodyQuillon(benchmark::State& state) {
  Shared& shared = Shared::Get();
  VQDocument document;
  shared.database.CreateDocument(&document);
  FillDocument(document, 1);
  VQRichText body;
  document.GetItem("Body", &body);
  const std::string text = bench::Lines(kLargeBody);
  constexpr std::size_t kPart = 60000;
  for (std::size_t at = 0; at < text.size(); at += kPart) {
    const std::string part = text.substr(at, kPart);
    body.Append(VQString(reinterpret_cast<const VQCHAR*>(part.data()), part.size()));
  }
  document.Save();
  body = VQRichText();
  document.Close();
  document.Open();
  SaveOneItem(state, document);
  shared.database.DeleteDocument(&document);
}

void SaveOneItemSqlite(benchmark::State& state) {
  Sqlite& peer = SharedPeer();
  sqlite3_stmt* update = peer.Prepare(kUpdate);
  const std::string packed = PackDocument(kDocuments / 2);
  std::string changed = packed;
  std::uint64_t number = 0;
  for (auto _ : state) {
    changed.replace(packed.size() / 2, 19, Changing(++number));
    sqlite3_bind_int64(update, 1, PeerId(kDocuments / 2));
    sqlite3_bind_int64(update, 2, static_cast<std::int64_t>(kDocuments + number));
    sqlite3_bind_int64(update, 3, static_cast<std::int64_t>(0x25A3E0000000 + number));
    sqlite3_bind_blob(update, 4, changed.data(), static_cast<int>(changed.size()), SQLITE_STATIC);
    peer.Step(update);
  }
  sqlite3_finalize(update);
}

// A new file each time, also in a repetition.
void ImportQuillon(benchmark::State& state) {
  static int number = 0;
  for (auto _ : state) ImportStore(Numbered("import", ++number).c_str());
}

void ImportSqlite(benchmark::State& state) {
  static int number = 0;
  for (auto _ : state) {
    Sqlite peer(Home::Get().Path(Numbered("peer", ++number)));
    FillPeer(peer);
  }
}

BENCHMARK(ImportSqlite)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ImportQuillon)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OpenAndReadSqlite)->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenAndReadLmdb)->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenAndReadQuillon)->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveOneItemSqlite)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(SaveOneItemQuillon)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(SaveOneItemBesideLargeBodyQuillon)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
