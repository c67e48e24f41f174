// VQIDTable: changes, and positions reached by the runs of the stored table or by the engine's scan.
#include "vq/store/vqidtab.h"

#include <algorithm>

#include "engine/idtable.h"
#include "engine/memory.h"
#include "engine/ods.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

namespace {

constexpr std::uint32_t kRunSize = 5;
constexpr std::uint16_t kNotInRuns = 0x8000;
constexpr std::uint32_t kScanStride = 16;

std::uint32_t RunStart(const unsigned char* run) {
  return vq::LoadWord(run + 1) | static_cast<std::uint32_t>(vq::LoadWord(run + 3)) << 16;
}

}  // namespace

VQIDTable::VQIDTable()
    : Closed(0),
      RunOffset(0),
      CurrentID(0),
      CurrentIndex(0),
      RunPtr(nullptr),
      FirstRun(nullptr),
      UseScan(0),
      LastRun(nullptr),
      Count(0),
      Handle(0),
      LockedPtr(nullptr),
      Header{},
      WindowStride(0) {}

VQIDTable::VQIDTable(ENGHANDLE table)
    : Closed(0),
      RunOffset(0),
      CurrentID(0),
      CurrentIndex(0),
      RunPtr(nullptr),
      FirstRun(nullptr),
      UseScan(0),
      LastRun(nullptr),
      Count(0),
      Handle(table),
      LockedPtr(nullptr),
      Header{},
      WindowStride(0) {
  try {
    Refresh();
  } catch (...) {
    // The caller keeps its table when there is no object to own it.
    UnlockTable();
    throw;
  }
}

VQIDTable::~VQIDTable() { VQIDTable::Close(); }

VQCLASSID VQIDTable::GetClassID() const { return VQCLASSID_VQIDTABLE; }

VQSTATUS VQIDTable::Close() {
  if (Closed != 0) return VQWARN_NOT_OPEN;
  Closed = 1;
  UnlockTable();
  VQSTATUS status = VQ_OK;
  if (Handle != 0) status = vq::FromEngine(EngIdTableDestroy(Handle));
  Handle = 0;
  Count = 0;
  std::vector<Registration> bodies;
  bodies.swap(Bodies);
  for (const Registration& entry : bodies) {
    entry.Body->TableGone(this);
    entry.Body->Release();
  }
  return status;
}

VQSTATUS VQIDTable::CheckUsable() const { return Closed != 0 ? VQERR_OBJECT_NOT_INITIALIZED : VQ_OK; }

void VQIDTable::LockTable() {
  if (LockedPtr != nullptr) return;
  LockedPtr = static_cast<unsigned char*>(EngMemLock(Handle));
  if (LockedPtr == nullptr) vq::Throw(VQERR_INVALID_PARAMETER);
}

void VQIDTable::UnlockTable() {
  if (LockedPtr == nullptr) return;
  LockedPtr = nullptr;
  FirstRun = LastRun = RunPtr = nullptr;
  EngMemUnlock(Handle);
}

void VQIDTable::Refresh() {
  UseScan = 0;
  Count = EngIdTableEntries(Handle);
  std::uint32_t size = 0;
  vq::ThrowIfError(vq::FromEngine(EngMemGetSize(Handle, &size)));
  LockTable();
  ReadRuns(size);
  CurrentIndex = 0;
}

void VQIDTable::ReadRuns(std::uint32_t size) {
  const std::uint32_t header = EngOdsLength(ODS_IDTABLEHEADER);
  if (size < header) vq::Throw(VQERR_CORRUPTED);
  void* cursor = LockedPtr;
  vq::ThrowIfError(vq::FromEngine(EngOdsRead(&cursor, ODS_IDTABLEHEADER, &Header, 1)));
  if ((Header.Flags & kNotInRuns) != 0) {
    UseScan = 1;
    UnlockTable();
    EngIdTableScan(Handle, 1, &CurrentID);
    ScanMarks.assign(1, CurrentID);
    ScanWindow.clear();
    return;
  }
  if ((size - header) / kRunSize < Header.RunCount) vq::Throw(VQERR_CORRUPTED);
  FirstRun = RunPtr = LastRun = LockedPtr + header;
  RunOffset = 0;
  if (Header.RunCount > 1) LastRun += (Header.RunCount - 1U) * kRunSize;
}

// The engine refuses to change a locked table. A failed change leaves the set as the engine left it.
VQSTATUS VQIDTable::Changed(ENGSTATUS result) {
  Refresh();
  return vq::FromEngine(result);
}

VQSTATUS VQIDTable::Add(std::uint32_t id) {
  if (Closed != 0) return CheckUsable();
  VQ_ASSERT_TEXT(id, "slateid", "VQIDTAB");
  UnlockTable();
  return Changed(EngIdTableInsert(Handle, id, nullptr));
}

VQSTATUS VQIDTable::AddTable(ENGHANDLE table) {
  if (Closed != 0) return CheckUsable();
  VQ_ASSERT_TEXT(table && EngIdTableEntries(table), "idtable && IDEntries(idtable)", "VQIDTAB");
  UnlockTable();
  return Changed(EngIdTableInsertTable(Handle, table));
}

VQSTATUS VQIDTable::Remove(std::uint32_t id) {
  if (Closed != 0) return CheckUsable();
  UnlockTable();
  return Changed(EngIdTableDelete(Handle, id, nullptr));
}

VQSTATUS VQIDTable::RemoveTable(ENGHANDLE table) {
  if (Closed != 0) return CheckUsable();
  VQ_ASSERT_TEXT(table && EngIdTableEntries(table), "idtable && IDEntries(idtable)", "VQIDTAB");
  UnlockTable();
  return Changed(EngIdTableDeleteTable(Handle, table));
}

VQSTATUS VQIDTable::RemoveAll() {
  if (Closed != 0) return CheckUsable();
  UnlockTable();
  return Changed(EngIdTableDeleteAll(Handle));
}

int VQIDTable::Contains(std::uint32_t id) {
  vq::ThrowIfError(CheckUsable());
  VQ_ASSERT_TEXT(id, "slateid", "VQIDTAB");
  return EngIdTableLookup(Handle, id) != 0;
}

unsigned long VQIDTable::GetCount() {
  vq::ThrowIfError(CheckUsable());
  return Count;
}

ENGHANDLE VQIDTable::GetHandle() {
  vq::ThrowIfError(CheckUsable());
  return Handle;
}

VQSTATUS VQIDTable::AddBody(VQSlateBody* body) {
  if (Closed != 0) return CheckUsable();
  if (body == nullptr) return VQERR_NULL_POINTER;
  const std::uint32_t id = body->GetID();
  auto place = std::lower_bound(Bodies.begin(), Bodies.end(), id,
                                [](const Registration& entry, std::uint32_t key) { return entry.ID < key; });
  for (auto same = place; same != Bodies.end() && same->ID == id; ++same) {
    if (same->Body == body) return VQ_OK;
  }
  try {
    Bodies.insert(place, {id, body});
  } catch (VQSTATUS status) {
    return status;
  }
  body->AddReference();
  body->SetTable(this);
  return VQ_OK;
}

VQSlateBody* VQIDTable::FindBody(std::uint32_t id) {
  vq::ThrowIfError(CheckUsable());
  const auto place = std::lower_bound(Bodies.begin(), Bodies.end(), id,
                                      [](const Registration& entry, std::uint32_t key) { return entry.ID < key; });
  for (auto entry = place; entry != Bodies.end() && entry->ID == id; ++entry) {
    if (entry->Body->IsOpen()) return entry->Body;
  }
  return nullptr;
}

// By the object, since a first save may have given it another identifier meanwhile.
VQSTATUS VQIDTable::RemoveBody(VQSlateBody* body) {
  if (Closed != 0) return CheckUsable();
  const auto entry = std::find_if(Bodies.begin(), Bodies.end(), [&](const Registration& r) { return r.Body == body; });
  if (entry == Bodies.end()) return VQERR_NOT_IN_LIST;
  Bodies.erase(entry);
  body->TableGone(this);
  body->Release();
  return VQ_OK;
}

std::uint32_t VQIDTable::GetID(unsigned long index) {
  vq::ThrowIfError(CheckUsable());
  if (index >= Count) vq::Throw(VQERR_BAD_SUBSCRIPT);
  if (UseScan != 0) return ScanTo(static_cast<std::uint32_t>(index));
  if (LockedPtr == nullptr) Refresh();
  if (index == 0) {
    RunPtr = FirstRun;
    RunOffset = 0;
  } else if (index == Count - 1UL) {
    RunPtr = LastRun;
    RunOffset = LastRun[0];
  } else if (index > CurrentIndex) {
    MoveForward(index - CurrentIndex);
  } else if (index < CurrentIndex) {
    MoveBackward(CurrentIndex - index);
  }
  CurrentIndex = static_cast<std::uint32_t>(index);
  return RunStart(RunPtr) + RunOffset * Header.Step;
}

void VQIDTable::StepRun(bool forward) {
  if (RunPtr == (forward ? LastRun : FirstRun)) {
    CurrentIndex = 0;
    RunPtr = FirstRun;
    RunOffset = 0;
    vq::Throw(VQERR_BAD_SUBSCRIPT);
  }
  RunPtr = forward ? RunPtr + kRunSize : RunPtr - kRunSize;
}

void VQIDTable::MoveForward(unsigned long distance) {
  const unsigned long rest = Extra() - RunOffset;
  if (distance <= rest) {
    RunOffset = static_cast<std::uint8_t>(RunOffset + distance);
    return;
  }
  distance -= rest;
  StepRun(true);
  while (distance > Extra() + 1UL) {
    distance -= Extra() + 1UL;
    StepRun(true);
  }
  RunOffset = static_cast<std::uint8_t>(distance - 1);
}

void VQIDTable::MoveBackward(unsigned long distance) {
  if (distance <= RunOffset) {
    RunOffset = static_cast<std::uint8_t>(RunOffset - distance);
    return;
  }
  distance -= RunOffset;
  StepRun(false);
  while (distance > Extra() + 1UL) {
    distance -= Extra() + 1UL;
    StepRun(false);
  }
  RunOffset = static_cast<std::uint8_t>(Extra() + 1UL - distance);
}

// From the nearest known position before it: the one asked for last, or a mark. A step back fills the window, in which
// the next steps back lie.
std::uint32_t VQIDTable::ScanTo(std::uint32_t index) {
  const auto stride = std::min(index / kScanStride, static_cast<std::uint32_t>(ScanMarks.size() - 1));
  if (index < CurrentIndex) {
    FillWindow(stride);
    const std::size_t place = index - stride * kScanStride;
    if (place >= ScanWindow.size()) vq::Throw(VQERR_BAD_SUBSCRIPT);
    CurrentID = ScanWindow[place];
    CurrentIndex = index;
    return CurrentID;
  }
  if (stride * kScanStride > CurrentIndex) {
    CurrentID = ScanMarks[stride];
    CurrentIndex = stride * kScanStride;
  }
  while (CurrentIndex < index) {
    if (EngIdTableScan(Handle, 0, &CurrentID) == 0) vq::Throw(VQERR_BAD_SUBSCRIPT);
    ++CurrentIndex;
    if (CurrentIndex == ScanMarks.size() * kScanStride) ScanMarks.push_back(CurrentID);
  }
  return CurrentID;
}

void VQIDTable::FillWindow(std::uint32_t stride) {
  if (!ScanWindow.empty() && WindowStride == stride) return;
  ScanWindow.clear();
  ScanWindow.reserve(kScanStride);
  WindowStride = stride;
  std::uint32_t id = ScanMarks[stride];
  do {
    ScanWindow.push_back(id);
  } while (ScanWindow.size() < kScanStride && EngIdTableScan(Handle, 0, &id) != 0);
}
