// VQVFNavigatorBody: opening, closing, reading, what is inside.
#include "vq/views/vnavbody.h"

#include <algorithm>
#include <cstring>

#include "engine/collection.h"
#include "engine/folder.h"
#include "engine/idtable.h"
#include "engine/memory.h"
#include "engine/process.h"
#include "engine/status.h"
#include "engine/time.h"
#include "vq/store/storetext.h"
#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/viewbody.h"

namespace {

constexpr char kFile[] = "VNAVBODY";
constexpr std::uint16_t kOpenCurrent = 0x0020;  // asked for by all but the navigators of a find
constexpr std::size_t kUserNameSize = 256;

VQSTATUS OpenUnreadTable(ENGHANDLE database, ENGHANDLE* table) {
  ENGCHAR user[kUserNameSize];
  ENGSTATUS result = EngUserNameGet(user);
  if (result != ENG_OK) return vq::FromEngine(result);
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(user));
  return vq::FromEngine(EngDbGetUnreadTable(database, user, static_cast<std::uint16_t>(length), 1, table));
}

}  // namespace

VQVFNavigatorBody::VQVFNavigatorBody(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count,
                                     std::uint32_t flags, VQSTATUS* status)
    : VQBody(view->GetSession()),
      Collection(0),
      EntryCount(0),
      Flags(0),
      IDTable(0),
      OpenStatus(VQERR_NO_COLLECTION),
      CreationTime{},
      UnreadTable(0),
      ViewFolder(nullptr),
      CountsView(false) {
  Cache.Bind(this);
  *status = Open(view, start, count, flags);
  if (*status == VQ_OK) return;
  ReleaseAll();
  OpenStatus = *status;
}

VQVFNavigatorBody::~VQVFNavigatorBody() {
  // What is built and released while closing must not bring the count to zero a second time.
  ++RefCount;
  ReleaseAll();
}

VQCLASSID VQVFNavigatorBody::GetClassID() const { return VQCLASSID_VQVFNAVIGATORBODY; }

VQSTATUS VQVFNavigatorBody::HandOut(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count,
                                    std::uint32_t flags, VQVFNavigator* navigator) {
  VQSTATUS status = VQ_OK;
  VQVFNavigator made(new VQVFNavigatorBody(view, start, count, flags, &status));
  VQVFNavigatorBody* body = made.GetNavigatorBody();
  if (status == VQ_OK) status = view->GetOpenObjects().AddObject(body);
  if (status != VQ_OK) return status;
  view->AddReference();
  body->CountsView = true;
  *navigator = body;
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::GetOpenStatus() const {
  if (Collection == 0) return OpenStatus;
  return ViewFolder->GetEntryDatabase().IsOpen() ? VQ_OK : VQERR_DATABASE_NOT_OPEN;
}

VQSTATUS VQVFNavigatorBody::Open(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count,
                                 std::uint32_t flags) {
  if (start != nullptr && !start->IsSet()) return VQERR_UNINITIALIZED_ARGUMENT;
  const bool find = (flags & VQViewFolderBody::kFromFind) != 0;
  ViewFolder = view;
  if (VQSTATUS status = OpenCollection(flags)) return status;
  if (start != nullptr) StartPosition = *start;
  const VQSTATUS status = Probe(start != nullptr && !find ? ENG_GO_CHILD : ENG_GO_CURRENT);
  if (VQIsError(status)) return status;
  if (status == VQWARN_NOT_FOUND) {
    if (start != nullptr) return VQERR_NOT_FOUND;
    Flags |= kCountKnown;
  } else if (start != nullptr) {
    Restrict(count, find);
  }
  EngTimeNow(&CreationTime);
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::OpenCollection(std::uint32_t flags) {
  const ENGHANDLE entries = ViewFolder->GetEntryDatabase().GetDatabaseBody()->GetHandle();
  if (entries == 0) return VQERR_DATABASE_NOT_OPEN;
  if ((flags & VQVFOPENFLAGS_USE_UNREAD_LIST) != 0) {
    if (VQSTATUS status = OpenUnreadTable(entries, &UnreadTable)) return status;
  }
  // The rows of a find are those that were found: nothing is brought in between.
  const bool find = (flags & VQViewFolderBody::kFromFind) != 0;
  const std::uint32_t engine_flags =
      find ? ENG_COLLECTION_NO_UPDATE | (flags & 0xFFFF & ~std::uint32_t{ENG_COLLECTION_REBUILD})
           : kOpenCurrent | (flags & 0xFFFF);
  return vq::FromEngine(EngCollectionOpen(ViewFolder->GetDatabaseBody()->GetHandle(), entries, ViewFolder->GetID(),
                                          static_cast<std::uint16_t>(engine_flags), UnreadTable, &Collection, nullptr,
                                          nullptr, nullptr, nullptr));
}

// Reads the first row's identifier. The start position becomes its place.
VQSTATUS VQVFNavigatorBody::Probe(unsigned short skip) {
  COLLECTIONPOSITION position = *StartPosition.GetPosition();
  vq::EntryRows rows;
  const VQSTATUS status = ReadEntries(&position, skip, skip == ENG_GO_CURRENT ? 0 : 1, ENG_GO_CURRENT, 1, ENG_READ_ID,
                                      &rows.Buffer, &rows.Length, nullptr, &rows.Returned, nullptr);
  if (status != VQ_OK) return status;
  const unsigned char* bytes = rows.Lock();
  if (bytes == nullptr || rows.Length < sizeof(std::uint32_t)) return VQERR_READ_ENTRIES;
  const std::uint32_t id = vq::LoadLong(bytes);
  const bool category = (id & ENG_ROW_NO_DOCUMENT) != 0 && (id & ENG_ROW_TOTAL) == 0;
  Flags = static_cast<std::uint16_t>(category ? Flags | kCategorized : Flags & ~kCategorized);
  StartPosition = &position;
  return VQ_OK;
}

void VQVFNavigatorBody::Restrict(std::uint32_t count, bool find) {
  COLLECTIONPOSITION* start = StartPosition.GetPosition();
  Flags |= kRestricted;
  const auto level = static_cast<std::uint8_t>(start->Level);
  start->MinLevel = level;
  if (find) {
    start->MaxLevel = level;
    EntryCount = count;
    Flags |= kCountKnown | kFind;
    return;
  }
  constexpr std::uint32_t kNoLimit = ENG_COLLECTION_NO_LIMIT;
  const std::uint32_t deepest = count == 0 || count > kNoLimit ? kNoLimit : std::min(level + count - 1, kNoLimit);
  start->MaxLevel = static_cast<std::uint8_t>(deepest);
}

VQSTATUS VQVFNavigatorBody::Close() {
  if (Collection == 0 && ViewFolder == nullptr) return VQWARN_NOT_OPEN;
  return ReleaseAll();
}

// Everything goes, and the first failure is told. The view goes last: it may have been kept alive by this object only.
VQSTATUS VQVFNavigatorBody::ReleaseAll() {
  Cache.Close();
  VQSTATUS status = VQ_OK;
  if (Collection != 0) status = vq::FromEngine(EngCollectionClose(Collection));
  if (IDTable != 0) EngIdTableDestroy(IDTable);
  if (UnreadTable != 0) EngIdTableDestroy(UnreadTable);
  Collection = IDTable = UnreadTable = 0;
  EntryCount = 0;
  Flags = 0;
  OpenStatus = VQERR_NO_COLLECTION;
  StartPosition.Reset();
  CreationTime = TIMEDATE{};
  VQViewFolderBody* view = ViewFolder;
  ViewFolder = nullptr;
  if (!CountsView) return status;
  CountsView = false;
  // Not in the list any more where the view itself closes its navigators.
  VQElement* element = nullptr;
  if (view->GetOpenObjects().GetElement(this, &element) == VQ_OK) view->GetOpenObjects().DeleteElement(element);
  view->Release();
  return status;
}

VQSTATUS VQVFNavigatorBody::ReadEntries(COLLECTIONPOSITION* position, unsigned short skip, std::uint32_t skipCount,
                                        unsigned short navigation, std::uint32_t count, std::uint32_t mask,
                                        ENGHANDLE* buffer, std::uint32_t* length, std::uint32_t* skipped,
                                        std::uint32_t* returned, unsigned short* signals) {
  ENGHANDLE block = 0;
  std::uint32_t rows = 0;
  const ENGSTATUS result = EngCollectionRead(Collection, position, skip, skipCount, navigation, count, mask,
                                             buffer != nullptr ? &block : nullptr, length, skipped, &rows, signals);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_ENTRY) return VQWARN_NOT_FOUND;
  if (result != ENG_OK) return vq::FromEngine(result);
  if (returned != nullptr) *returned = rows;
  if (buffer != nullptr && (block == 0 || rows == 0)) {
    if (block != 0) EngMemFree(block);
    return VQWARN_NOT_FOUND;
  }
  if (buffer != nullptr) *buffer = block;
  return VQ_OK;
}

bool VQVFNavigatorBody::HasPrefixOfStart(const COLLECTIONPOSITION& position, unsigned levels) const {
  const std::uint32_t* start = StartPosition.GetPosition()->Tumbler;
  return std::equal(start, start + levels, position.Tumbler);
}

bool VQVFNavigatorBody::Contains(const COLLECTIONPOSITION& position) const {
  if (IsFTSearch()) return position.Level == 0 && position.Tumbler[0] - 1 < EntryCount;
  if (!IsRestricted()) return true;
  const COLLECTIONPOSITION& start = *StartPosition.GetPosition();
  if (IsFind()) {
    return position.Level == start.Level && HasPrefixOfStart(position, start.Level) &&
           position.Tumbler[start.Level] - start.Tumbler[start.Level] < EntryCount;
  }
  VQ_ASSERT_TEXT(start.Level != 0 && start.Level == start.MinLevel, "start->Level && start->Level == start->MinLevel",
                 kFile);
  return position.Level >= start.MinLevel && position.Level <= start.MaxLevel &&
         HasPrefixOfStart(position, start.Level);
}

void VQVFNavigatorBody::Limit(COLLECTIONPOSITION* position) const {
  if (!IsRestricted()) return;
  const COLLECTIONPOSITION& start = *StartPosition.GetPosition();
  position->MinLevel = start.MinLevel;
  if (start.MaxLevel < ENG_COLLECTION_NO_LIMIT) position->MaxLevel = start.MaxLevel;
}

unsigned short VQVFNavigatorBody::LimitBits() const {
  if (!IsRestricted()) return 0;
  const bool deep = StartPosition.GetPosition()->MaxLevel >= ENG_COLLECTION_NO_LIMIT;
  return deep ? ENG_GO_MIN_LEVEL : ENG_GO_MIN_LEVEL | ENG_GO_MAX_LEVEL;
}

unsigned short VQVFNavigatorBody::StepCode(bool backward) const {
  if (IsFTSearch()) return backward ? ENG_GO_PREV_HIT : ENG_GO_NEXT_HIT;
  return static_cast<unsigned short>((backward ? ENG_GO_PREV : ENG_GO_NEXT) | LimitBits());
}

std::uint32_t VQVFNavigatorBody::EntryMask() const { return IsFTSearch() ? vq::kHitMask : vq::kEntryMask; }

VQSTATUS VQVFNavigatorBody::GetCount(std::uint32_t* count) {
  if (!HasFlag(kCountKnown)) {
    COLLECTIONPOSITION from{};
    from.MaxLevel = ENG_COLLECTION_NO_LIMIT;
    if (IsRestricted()) {
      from = *StartPosition.GetPosition();
      --from.Level;
    }
    std::uint32_t skipped = 0;
    const VQSTATUS status = ReadEntries(&from, StepCode(false), vq::kToTheEnd, ENG_GO_CURRENT, 0, 0, nullptr, nullptr,
                                        &skipped, nullptr, nullptr);
    if (VQIsError(status)) return status;
    EntryCount = status == VQ_OK ? skipped : 0;
    Flags |= kCountKnown;
  }
  *count = EntryCount;
  return VQ_OK;
}

void VQVFNavigatorBody::ForgetRows() {
  EntryCount = 0;
  Flags = static_cast<std::uint16_t>(Flags & ~kCountKnown);
  if (IDTable != 0) EngIdTableDestroy(IDTable);
  IDTable = 0;
  Cache.Clear();
}

VQSTATUS VQVFNavigatorBody::Refresh() {
  if (IsSearch()) return VQERR_INVALID_FOR_SEARCH_NAVIGATOR;
  if (VQSTATUS status = vq::FromEngine(EngCollectionUpdate(Collection))) return status;
  ForgetRows();
  EngTimeNow(&CreationTime);
  const VQSTATUS status = Probe(ENG_GO_CURRENT);
  if (VQIsError(status)) return status;
  if (status == VQWARN_NOT_FOUND) Flags |= kCountKnown;
  return VQ_OK;
}

VQSTATUS VQVFNavigatorBody::MakeEntry(const COLLECTIONPOSITION& position, const vq::EntryRow& row, VQVFEntry* entry) {
  *entry = new VQVFEntryBody(this, position, row);
  return VQ_OK;
}
