// Large values and objects of the SQLite store: chunks of 64 KB, each behind its checksum.
#include <algorithm>
#include <array>

#include "qcore/store/checksum.h"
#include "qcore/store/sqlite_sql.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

std::uint64_t ChunkId(Store::ValueId value, std::uint64_t number) { return value << 16 | number; }

// The chunk's bytes; none when it is damaged.
Bytes Checked(Bytes data, std::uint64_t id) {
  Bytes bytes;
  return Unseal(data, id, &bytes) && bytes.size() <= SqliteStore::kChunkSize ? bytes : Bytes();
}

// Chunks that are read whole to where their bytes are wanted, by a handle that goes from one to the next without a
// statement. Checksums are looked at four at a time: what was read is good once Finish has said so.
class ChunkReader {
 public:
  explicit ChunkReader(sqlite3* connection) : connection_(connection) {}
  ChunkReader(const ChunkReader&) = delete;
  ChunkReader& operator=(const ChunkReader&) = delete;
  ~ChunkReader() { sqlite3_blob_close(blob_); }

  // The target is as long as the chunk's bytes must be.
  void Read(std::uint64_t id, std::span<std::uint8_t> target) {
    std::array<std::uint8_t, kSealSize> sum;
    if (!Go(id, target.size() + sum.size()) || !Take(sum, 0) || !Take(target, sum.size())) return;
    runs_[waiting_] = {target, id};
    sums_[waiting_] = LoadLittle<std::uint32_t>(sum.data());
    if (++waiting_ == runs_.size()) Finish();
  }
  void Finish() {
    const auto has_first_size = [this](const SeededRun& run) { return run.bytes.size() == runs_[0].bytes.size(); };
    if (waiting_ == runs_.size() && std::ranges::all_of(runs_, has_first_size)) {
      sound_ = sound_ && Checksums(runs_) == sums_;
    } else {
      for (std::size_t i = 0; i < waiting_; ++i) sound_ = sound_ && Checksum(runs_[i].bytes, runs_[i].seed) == sums_[i];
    }
    waiting_ = 0;
  }
  int code() const { return code_; }
  // False once a chunk was not what was written.
  bool sound() const { return sound_; }

 private:
  bool Go(std::uint64_t id, std::size_t size) {
    const auto row = static_cast<sqlite3_int64>(id);
    code_ = blob_ ? sqlite3_blob_reopen(blob_, row)
                  : sqlite3_blob_open(connection_, "main", "chunk", "data", row, 0, &blob_);
    if (code_ != SQLITE_OK) return false;
    sound_ = sound_ && static_cast<std::size_t>(sqlite3_blob_bytes(blob_)) == size;
    return sound_;
  }
  bool Take(std::span<std::uint8_t> target, std::size_t at) {
    code_ = sqlite3_blob_read(blob_, target.data(), static_cast<int>(target.size()), static_cast<int>(at));
    return code_ == SQLITE_OK;
  }

  sqlite3* connection_;
  sqlite3_blob* blob_ = nullptr;
  int code_ = SQLITE_OK;
  bool sound_ = true;
  std::array<SeededRun, 4> runs_{};
  std::array<std::uint32_t, 4> sums_{};
  std::size_t waiting_ = 0;
};

}  // namespace

ENGSTATUS SqliteStore::WriteChunk(ValueId value, std::uint32_t number, Bytes bytes) {
  const std::uint64_t id = ChunkId(value, number);
  const std::vector<std::uint8_t> data = Sealed(bytes, id);
  Use use = Start(Sql::kWriteChunk);
  use.Bind(1, id);
  use.Bind(2, Bytes(data));
  return Finish(use);
}

ENGSTATUS SqliteStore::ReadChunk(ValueId value, std::uint32_t number, std::vector<std::uint8_t>* bytes) {
  const std::uint64_t id = ChunkId(value, number);
  Use use = Start(Sql::kReadChunk);
  use.Bind(1, id);
  if (!use.Row()) return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_DB_DAMAGED} : Result(use.code());
  const Bytes checked = Checked(use.Blob(0), id);
  if (checked.empty()) return ENG_ERR_DB_DAMAGED;
  bytes->assign(checked.begin(), checked.end());
  return ENG_OK;
}

ENGSTATUS SqliteStore::WriteValue(Bytes bytes, ValueId* value) {
  *value = ++counters_.value;
  std::uint32_t number = 0;
  for (std::size_t at = 0; at < bytes.size(); at += kChunkSize, ++number) {
    const ENGSTATUS status = WriteChunk(*value, number, bytes.subspan(at, std::min(kChunkSize, bytes.size() - at)));
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

ENGSTATUS SqliteStore::ReadValue(ValueId value, std::uint32_t size, std::uint8_t* target) {
  Use use = Start(Sql::kReadChunks);
  use.Bind(1, ChunkId(value, 0));
  std::size_t at = 0;
  for (std::uint64_t id = ChunkId(value, 0); use.Row(); ++id) {
    const Bytes bytes = use.Number(0) == id ? Checked(use.Blob(1), id) : Bytes();
    const std::size_t expected = std::min<std::size_t>(kChunkSize, size - at);
    if (bytes.empty() || bytes.size() != expected) return ENG_ERR_DB_DAMAGED;
    std::copy(bytes.begin(), bytes.end(), target + at);
    at += bytes.size();
  }
  if (use.code() != SQLITE_OK) return Result(use.code());
  if (at == size) return ENG_OK;
  return at == 0 ? ENG_ERR_SLATE_CONFLICT : ENG_ERR_DB_DAMAGED;
}

ENGSTATUS SqliteStore::FreeValue(ValueId value) {
  // The highest number must stay known when its row goes.
  if (value == counters_.value) floors_changed_ = true;
  Use use = Start(Sql::kFreeChunks);
  use.Bind(1, ChunkId(value, 0));
  return Finish(use);
}

ENGSTATUS SqliteStore::CreateObject(std::uint16_t object_class, std::uint32_t* object) {
  if (counters_.object >= UINT32_MAX) return ENG_ERR_DB_FULL;
  *object = static_cast<std::uint32_t>(++counters_.object);
  Use use = Start(Sql::kCreateObject);
  use.Bind(1, *object);
  use.Bind(2, object_class);
  use.Bind(3, ++counters_.value);
  floors_changed_ = true;  // the value has no chunk yet
  return Finish(use);
}

ENGSTATUS SqliteStore::ReadObjectRow(std::uint32_t object, ObjectRow* row) {
  Use use = Start(Sql::kGetObject);
  use.Bind(1, object);
  if (!use.Row()) return use.code() == SQLITE_OK ? ENGSTATUS{ENG_ERR_NO_OBJECT} : Result(use.code());
  row->info = {static_cast<std::uint32_t>(use.Number(0)), static_cast<std::uint16_t>(use.Number(1)),
               static_cast<std::uint32_t>(use.Number(2))};
  row->value = use.Number(3);
  return ENG_OK;
}

ENGSTATUS SqliteStore::GetObject(std::uint32_t object, ObjectInfo* info) {
  ObjectRow row;
  const ENGSTATUS status = ReadObjectRow(object, &row);
  if (status == ENG_OK) *info = row.info;
  return status;
}

ENGSTATUS SqliteStore::ReadObject(std::uint32_t object, std::uint32_t offset, std::span<std::uint8_t> out) {
  ObjectRow row;
  ENGSTATUS status = ReadObjectRow(object, &row);
  if (status != ENG_OK) return status;
  if (offset > row.info.size || out.size() > row.info.size - offset) return ENG_ERR_OBJECT_RANGE;
  ChunkReader reader(connection_.get());
  std::vector<std::uint8_t> part;
  for (std::size_t at = 0; at < out.size() && reader.code() == SQLITE_OK && reader.sound();) {
    const std::size_t place = offset + at;
    const std::uint64_t id = ChunkId(row.value, place / kChunkSize);
    const std::size_t start = place % kChunkSize;
    const std::size_t size = std::min(kChunkSize, row.info.size - (place - start));
    const std::size_t count = std::min(out.size() - at, size - start);
    if (count == size) {
      reader.Read(id, out.subspan(at, count));
    } else {
      part.resize(size);
      reader.Read(id, part);
      reader.Finish();
      std::copy_n(part.begin() + static_cast<std::ptrdiff_t>(start), count,
                  out.begin() + static_cast<std::ptrdiff_t>(at));
    }
    at += count;
  }
  reader.Finish();
  status = Result(reader.code());
  return status == ENG_OK && !reader.sound() ? ENGSTATUS{ENG_ERR_DB_DAMAGED} : status;
}

ENGSTATUS SqliteStore::SetObjectSize(std::uint32_t object, std::uint32_t size) {
  Use use = Start(Sql::kResizeObject);
  use.Bind(1, object);
  use.Bind(2, size);
  return Finish(use);
}

ENGSTATUS SqliteStore::WriteObject(std::uint32_t object, std::uint32_t offset, Bytes bytes) {
  ObjectRow row;
  ENGSTATUS status = ReadObjectRow(object, &row);
  if (status != ENG_OK) return status;
  if (bytes.size() > UINT32_MAX - offset) return ENG_ERR_OBJECT_RANGE;
  const std::size_t end = offset + bytes.size();
  if (offset > row.info.size) {
    status = ResizeObject(object, offset);
    if (status != ENG_OK) return status;
    row.info.size = offset;
  }
  std::vector<std::uint8_t> chunk;
  for (std::size_t place = offset; place < end;) {
    const auto number = static_cast<std::uint32_t>(place / kChunkSize);
    const std::size_t start = place % kChunkSize;
    const std::size_t count = std::min(end - place, kChunkSize - start);
    chunk.clear();
    if (std::size_t{number} * kChunkSize < row.info.size) {
      status = ReadChunk(row.value, number, &chunk);
      if (status != ENG_OK) return status;
    }
    if (chunk.size() < start + count) chunk.resize(start + count);
    const Bytes part = bytes.subspan(place - offset, count);
    std::copy(part.begin(), part.end(), chunk.begin() + static_cast<std::ptrdiff_t>(start));
    status = WriteChunk(row.value, number, chunk);
    if (status != ENG_OK) return status;
    place += count;
  }
  return end > row.info.size ? SetObjectSize(object, static_cast<std::uint32_t>(end)) : ENGSTATUS{ENG_OK};
}

ENGSTATUS SqliteStore::ResizeObject(std::uint32_t object, std::uint32_t size) {
  ObjectRow row;
  ENGSTATUS status = ReadObjectRow(object, &row);
  if (status != ENG_OK) return status;
  // The chunk that holds the lesser end changes its length; those behind it come or go whole.
  const std::uint32_t least = std::min(size, row.info.size);
  const auto kept = static_cast<std::uint32_t>(least / kChunkSize);
  std::vector<std::uint8_t> chunk;
  if (least % kChunkSize != 0) {
    status = ReadChunk(row.value, kept, &chunk);
    if (status != ENG_OK) return status;
  }
  Use trim = Start(Sql::kTrimChunks);
  trim.Bind(1, ChunkId(row.value, 0));
  trim.Bind(2, ChunkId(row.value, kept));
  status = Finish(trim);
  for (std::size_t at = std::size_t{kept} * kChunkSize; status == ENG_OK && at < size; at += kChunkSize) {
    chunk.resize(std::min<std::size_t>(kChunkSize, size - at));
    status = WriteChunk(row.value, static_cast<std::uint32_t>(at / kChunkSize), chunk);
    chunk.clear();
  }
  return status == ENG_OK ? SetObjectSize(object, size) : status;
}

ENGSTATUS SqliteStore::SetObjectOwner(std::uint32_t object, std::uint32_t slate) {
  Use use = Start(Sql::kOwnObject);
  use.Bind(1, object);
  use.Bind(2, slate);
  return Finish(use);
}

ENGSTATUS SqliteStore::FreeObject(std::uint32_t object) {
  ObjectRow row;
  ENGSTATUS status = ReadObjectRow(object, &row);
  if (status == ENG_OK) status = FreeValue(row.value);
  if (status != ENG_OK) return status;
  floors_changed_ = true;
  Use use = Start(Sql::kFreeObject);
  use.Bind(1, object);
  return Finish(use);
}

ENGSTATUS SqliteStore::FindObjects(std::uint32_t slate, std::vector<std::uint32_t>* objects) {
  Use use = Start(Sql::kFindObjects);
  use.Bind(1, slate);
  while (use.Row()) objects->push_back(static_cast<std::uint32_t>(use.Number(0)));
  return Result(use.code());
}

}  // namespace qcore
