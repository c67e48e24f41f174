#include "qcore/idtables/idtable.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

#include "qcore/memory/memory.h"
#include "qcore/store/wire.h"

namespace qcore::idtable {

namespace {

constexpr std::uint32_t kStep = 4;
constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kWideCountSize = 4;
constexpr std::size_t kRunSize = 5;
constexpr std::uint16_t kWide = 0x8000;
constexpr std::uint32_t kMostNarrowRuns = 65535;
constexpr std::uint32_t kMostExtra = 255;
constexpr std::uint32_t kFirstRoom = 8;

struct Run {
  std::uint32_t start;
  std::uint32_t extra;
  std::uint32_t Last() const { return start + extra * kStep; }
};

// A table's bytes. Clients can lock a table and write into it, so that counts are checked against the block.
class Table {
 public:
  explicit Table(ENGHANDLE handle) : slot_(handle_table.FindSlot(Kind::kIdTable, handle)), handle_(handle) {
    if (slot_ && !Adopt()) slot_ = nullptr;
  }

  bool good() const { return slot_ != nullptr; }
  std::uint32_t runs() const { return runs_; }
  std::uint32_t entries() const { return LoadLittle<std::uint32_t>(bytes_ + 8); }

  Run At(std::uint32_t index) const {
    const std::uint8_t* at = RunBytes(index);
    return {LoadLittle<std::uint32_t>(at + 1), at[0]};
  }
  void Put(std::uint32_t index, const Run& run) {
    std::uint8_t* at = RunBytes(index);
    at[0] = static_cast<std::uint8_t>(run.extra);
    StoreLittle(at + 1, run.start);
  }
  void SetEntries(std::uint32_t entries) { StoreLittle(bytes_ + 8, entries); }

  // The number of runs that start at or before `id`.
  std::uint32_t Behind(std::uint32_t id) const {
    if (runs_ > 0 && At(runs_ - 1).start <= id) return runs_;
    std::uint32_t low = 0;
    for (std::uint32_t high = runs_; low < high;) {
      const std::uint32_t middle = low + (high - low) / 2;
      if (At(middle).start <= id) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }
  bool Has(std::uint32_t id) const {
    const std::uint32_t behind = Behind(id);
    if (behind == 0) return false;
    const Run run = At(behind - 1);
    return id <= run.Last() && (id - run.start) % kStep == 0;
  }

  std::string_view RunsAsText() const {
    return {reinterpret_cast<const char*>(bytes_ + RunsAt()), std::size_t{runs_} * kRunSize};
  }

  bool locked() const { return slot_->Pins() > 0; }
  [[nodiscard]] ENGSTATUS SetRuns(std::uint32_t runs);
  [[nodiscard]] ENGSTATUS Open(std::uint32_t index, std::uint32_t count);
  void Shut(std::uint32_t index, std::uint32_t count);

 private:
  bool Adopt();
  bool wide() const { return (LoadLittle<std::uint16_t>(bytes_ + 6) & kWide) != 0; }
  std::size_t RunsAt() const { return wide() ? kHeaderSize + kWideCountSize : kHeaderSize; }
  std::uint8_t* RunBytes(std::uint32_t index) const { return bytes_ + RunsAt() + std::size_t{index} * kRunSize; }
  void StoreRunCount(std::uint32_t runs);

  HandleTable::Slot* slot_;
  ENGHANDLE handle_;
  std::uint8_t* bytes_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t runs_ = 0;
};

bool Table::Adopt() {
  bytes_ = static_cast<std::uint8_t*>(slot_->object.load(std::memory_order_acquire));
  size_ = slot_->size.load(std::memory_order_relaxed);
  if (!bytes_ || size_ < kHeaderSize + kWideCountSize || LoadLittle<std::uint32_t>(bytes_) != kStep) return false;
  runs_ = wide() ? LoadLittle<std::uint32_t>(bytes_ + kHeaderSize) : LoadLittle<std::uint16_t>(bytes_ + 4);
  return (size_ - RunsAt()) / kRunSize >= runs_;
}

void Table::StoreRunCount(std::uint32_t runs) {
  if (wide()) {
    StoreLittle(bytes_ + kHeaderSize, runs);
  } else {
    StoreLittle(bytes_ + 4, static_cast<std::uint16_t>(runs));
  }
  runs_ = runs;
}

// Makes room and changes the form where the count asks for it; the runs that remain keep their places.
ENGSTATUS Table::SetRuns(std::uint32_t runs) {
  const std::uint64_t need = kHeaderSize + kWideCountSize + std::uint64_t{runs} * kRunSize;
  if (need > UINT32_MAX) return ENG_ERR_MEMORY;
  if (need > size_) {
    const std::uint64_t room = std::min<std::uint64_t>(need + need / 2 + kFirstRoom * kRunSize, UINT32_MAX);
    const ENGSTATUS status = memory::Resize(Kind::kIdTable, handle_, static_cast<std::uint32_t>(room));
    if (status != ENG_OK) return status;
    bytes_ = static_cast<std::uint8_t*>(slot_->object.load(std::memory_order_relaxed));
    size_ = static_cast<std::uint32_t>(room);
    StoreLittle(bytes_ + 12, static_cast<std::uint32_t>((size_ - kHeaderSize - kWideCountSize) / kRunSize));
  }
  const bool to_wide = !wide() && runs > kMostNarrowRuns;
  // Back only well below the limit, so that a table at the limit does not change form with every ID.
  const bool to_narrow = wide() && runs <= kMostNarrowRuns / 2;
  if (to_wide || to_narrow) {
    const std::size_t kept = std::size_t{std::min(runs, runs_)} * kRunSize;
    const std::uint8_t* from = RunBytes(0);
    StoreLittle(bytes_ + 4, std::uint16_t{0});
    StoreLittle(bytes_ + 6, to_wide ? kWide : std::uint16_t{0});
    std::memmove(RunBytes(0), from, kept);
  }
  StoreRunCount(runs);
  return ENG_OK;
}

ENGSTATUS Table::Open(std::uint32_t index, std::uint32_t count) {
  const std::uint32_t behind = runs_ - index;
  const ENGSTATUS status = SetRuns(runs_ + count);
  if (status == ENG_OK) std::memmove(RunBytes(index + count), RunBytes(index), std::size_t{behind} * kRunSize);
  return status;
}

void Table::Shut(std::uint32_t index, std::uint32_t count) {
  std::memmove(RunBytes(index), RunBytes(index + count), std::size_t{runs_ - index - count} * kRunSize);
  static_cast<void>(SetRuns(runs_ - count));  // fewer runs need no room
}

// Collects ascending IDs into runs.
class RunBuilder {
 public:
  void Add(std::uint32_t id) {
    ++entries_;
    if (!runs_.empty() && runs_.back().extra < kMostExtra && id - runs_.back().Last() == kStep) {
      ++runs_.back().extra;
    } else {
      runs_.push_back({id, 0});
    }
  }
  [[nodiscard]] ENGSTATUS Store(Table* table) const {
    const ENGSTATUS status = table->SetRuns(static_cast<std::uint32_t>(runs_.size()));
    if (status != ENG_OK) return status;
    for (std::uint32_t i = 0; i < table->runs(); ++i) table->Put(i, runs_[i]);
    table->SetEntries(entries_);
    return ENG_OK;
  }

 private:
  std::vector<Run> runs_;
  std::uint32_t entries_ = 0;
};

class Cursor {
 public:
  explicit Cursor(const Table& table) : table_(table) { Settle(); }
  bool at_end() const { return run_ == table_.runs(); }
  std::uint32_t id() const { return current_.start + offset_ * kStep; }
  void Step() {
    if (offset_ < current_.extra) {
      ++offset_;
      return;
    }
    ++run_;
    offset_ = 0;
    Settle();
  }

 private:
  void Settle() {
    if (!at_end()) current_ = table_.At(run_);
  }

  const Table& table_;
  std::uint32_t run_ = 0;
  std::uint32_t offset_ = 0;
  Run current_{0, 0};
};

ENGSTATUS CheckChange(const Table& table) {
  if (!table.good()) return ENG_ERR_INVALID_HANDLE;
  return table.locked() ? ENG_ERR_MEMORY_LOCKED : ENG_OK;
}

// Puts `id` between runs; `before` is the number of runs that start at or before it.
ENGSTATUS InsertRun(Table* table, std::uint32_t before, std::uint32_t id) {
  const bool has_next = before < table->runs();
  if (before > 0) {
    Run run = table->At(before - 1);
    if (id < run.Last()) {  // among the IDs of a run, but off its step
      const std::uint32_t kept = (id - run.start) / kStep;
      const ENGSTATUS status = table->Open(before, 2);
      if (status != ENG_OK) return status;
      table->Put(before - 1, {run.start, kept});
      table->Put(before, {id, 0});
      table->Put(before + 1, {run.start + (kept + 1) * kStep, run.extra - kept - 1});
      return ENG_OK;
    }
    if (id - run.Last() == kStep && run.extra < kMostExtra) {
      ++run.extra;
      const Run next = has_next ? table->At(before) : Run{0, kMostExtra};
      if (has_next && next.start - id == kStep && run.extra + next.extra + 1 <= kMostExtra) {
        run.extra += next.extra + 1;
        table->Shut(before, 1);
      }
      table->Put(before - 1, run);
      return ENG_OK;
    }
  }
  if (has_next) {
    const Run next = table->At(before);
    if (next.start - id == kStep && next.extra < kMostExtra) {
      table->Put(before, {id, next.extra + 1});
      return ENG_OK;
    }
  }
  const ENGSTATUS status = table->Open(before, 1);
  if (status == ENG_OK) table->Put(before, {id, 0});
  return status;
}

}  // namespace

ENGSTATUS Create(ENGHANDLE* table) {
  const std::size_t size = kHeaderSize + kWideCountSize + kFirstRoom * kRunSize;
  const ENGSTATUS status = memory::Allocate(Kind::kIdTable, size, memory::Fill::kZero, table);
  if (status != ENG_OK) return status;
  const memory::LockedBlock block(*table);
  StoreLittle(block.bytes(), kStep);
  StoreLittle(block.bytes() + 12, kFirstRoom);
  return ENG_OK;
}

ENGSTATUS Make(std::span<const std::uint32_t> ids, ENGHANDLE* table) {
  RunBuilder builder;
  for (std::uint32_t id : ids) builder.Add(id);
  ENGSTATUS status = Create(table);
  if (status != ENG_OK) return status;
  Table made(*table);
  status = builder.Store(&made);
  if (status != ENG_OK) memory::Release(Kind::kIdTable, *table);
  return status;
}

ENGSTATUS Copy(ENGHANDLE table, ENGHANDLE* copy) {
  if (!Table(table).good()) return ENG_ERR_INVALID_HANDLE;
  const memory::LockedBlock from(table);
  const ENGSTATUS status = memory::Allocate(Kind::kIdTable, from.size(), memory::Fill::kNone, copy);
  if (status != ENG_OK) return status;
  const memory::LockedBlock to(*copy);
  std::copy_n(from.bytes(), from.size(), to.bytes());
  return ENG_OK;
}

ENGSTATUS Destroy(ENGHANDLE table) { return memory::Free(Kind::kIdTable, table); }

bool IsTable(ENGHANDLE table) { return Table(table).good(); }

std::uint32_t Entries(ENGHANDLE table) {
  const Table present(table);
  return present.good() ? present.entries() : 0;
}

std::uint64_t Fingerprint(ENGHANDLE table) {
  const Table present(table);
  return present.good() ? std::hash<std::string_view>()(present.RunsAsText()) : 0;
}

ENGSTATUS Insert(ENGHANDLE handle, std::uint32_t id, bool* changed) {
  *changed = false;
  Table table(handle);
  ENGSTATUS status = CheckChange(table);
  if (status != ENG_OK || table.Has(id)) return status;
  status = InsertRun(&table, table.Behind(id), id);
  if (status != ENG_OK) return status;
  table.SetEntries(table.entries() + 1);
  *changed = true;
  return ENG_OK;
}

ENGSTATUS Delete(ENGHANDLE handle, std::uint32_t id, bool* changed) {
  *changed = false;
  Table table(handle);
  const ENGSTATUS status = CheckChange(table);
  if (status != ENG_OK || !table.Has(id)) return status;
  const std::uint32_t index = table.Behind(id) - 1;
  const Run run = table.At(index);
  if (run.extra == 0) {
    table.Shut(index, 1);
  } else if (id == run.start) {
    table.Put(index, {run.start + kStep, run.extra - 1});
  } else if (id == run.Last()) {
    table.Put(index, {run.start, run.extra - 1});
  } else {
    const std::uint32_t kept = (id - run.start) / kStep;
    const ENGSTATUS opened = table.Open(index + 1, 1);
    if (opened != ENG_OK) return opened;
    table.Put(index, {run.start, kept - 1});
    table.Put(index + 1, {id + kStep, run.extra - kept - 1});
  }
  table.SetEntries(table.entries() - 1);
  *changed = true;
  return ENG_OK;
}

ENGSTATUS InsertTable(ENGHANDLE handle, ENGHANDLE other_handle) {
  Table table(handle);
  const Table other(other_handle);
  const ENGSTATUS status = CheckChange(table);
  if (status != ENG_OK) return status;
  if (!other.good()) return ENG_ERR_INVALID_HANDLE;
  RunBuilder sum;
  Cursor a(table);
  Cursor b(other);
  while (!a.at_end() || !b.at_end()) {
    const bool from_a = !a.at_end() && (b.at_end() || a.id() <= b.id());
    const std::uint32_t id = from_a ? a.id() : b.id();
    sum.Add(id);
    if (from_a) a.Step();
    if (!b.at_end() && b.id() == id) b.Step();
  }
  return sum.Store(&table);
}

ENGSTATUS DeleteTable(ENGHANDLE handle, ENGHANDLE other_handle) {
  Table table(handle);
  const Table other(other_handle);
  const ENGSTATUS status = CheckChange(table);
  if (status != ENG_OK) return status;
  if (!other.good()) return ENG_ERR_INVALID_HANDLE;
  RunBuilder rest;
  Cursor b(other);
  for (Cursor a(table); !a.at_end(); a.Step()) {
    while (!b.at_end() && b.id() < a.id()) b.Step();
    if (b.at_end() || b.id() != a.id()) rest.Add(a.id());
  }
  return rest.Store(&table);
}

ENGSTATUS Assign(ENGHANDLE handle, std::span<const std::uint32_t> ids, bool* changed) {
  *changed = false;
  Table table(handle);
  if (!table.good()) return ENG_ERR_INVALID_HANDLE;
  auto id = ids.begin();
  Cursor cursor(table);
  for (; !cursor.at_end() && id != ids.end() && cursor.id() == *id; cursor.Step()) ++id;
  if (cursor.at_end() && id == ids.end()) return ENG_OK;
  const ENGSTATUS status = CheckChange(table);
  if (status != ENG_OK) return status;
  RunBuilder builder;
  for (std::uint32_t each : ids) builder.Add(each);
  *changed = true;
  return builder.Store(&table);
}

ENGSTATUS DeleteAll(ENGHANDLE handle) {
  Table table(handle);
  const ENGSTATUS status = CheckChange(table);
  return status == ENG_OK ? RunBuilder().Store(&table) : status;
}

bool Contains(ENGHANDLE handle, std::uint32_t id) {
  const Table table(handle);
  return table.good() && table.Has(id);
}

bool Next(ENGHANDLE handle, std::uint32_t at_least, std::uint32_t* id) {
  const Table table(handle);
  if (!table.good() || table.runs() == 0) return false;
  const std::uint32_t behind = table.Behind(at_least);
  if (behind > 0) {
    const Run run = table.At(behind - 1);
    if (at_least <= run.Last()) {
      *id = run.start + (at_least - run.start + kStep - 1) / kStep * kStep;
      return true;
    }
  }
  if (behind == table.runs()) return false;
  *id = table.At(behind).start;
  return true;
}

ENGSTATUS ForEach(ENGHANDLE handle, const std::function<void(std::uint32_t)>& visit) {
  const Table table(handle);
  if (!table.good()) return ENG_ERR_INVALID_HANDLE;
  for (Cursor cursor(table); !cursor.at_end(); cursor.Step()) visit(cursor.id());
  return ENG_OK;
}

}  // namespace qcore::idtable
