// VQVFNavigator and its body: opening, closing and the one reader.
#include "vq/views/vnavbody.h"

#include <algorithm>

#include "engine/collection.h"
#include "engine/folder.h"
#include "engine/idtable.h"
#include "engine/memory.h"
#include "engine/process.h"
#include "engine/status.h"
#include "engine/time.h"
#include "vq/store/storetext.h"
#include "vq/views/viewbody.h"

namespace {

constexpr std::uint16_t kFindUpdates = 0x0020;
constexpr std::size_t kUserName = 256;

}  // namespace

VQVFNavigator::VQVFNavigator() : LastIndex(0), Status(VQERR_OBJECT_NOT_INITIALIZED) {}
VQVFNavigator::VQVFNavigator(const VQVFNavigator& other) = default;
VQVFNavigator::VQVFNavigator(VQVFNavigatorBody* body) : VQVFNavigator() { *this = body; }
VQVFNavigator& VQVFNavigator::operator=(const VQVFNavigator& other) = default;

VQVFNavigator& VQVFNavigator::operator=(VQVFNavigatorBody* body) {
  VQSmartPtr::operator=(body);
  if (body != nullptr) Position = body->GetStartPosition();
  LastIndex = 0;
  Status = VQERR_OBJECT_NOT_INITIALIZED;
  return *this;
}

VQCLASSID VQVFNavigator::GetClassID() const { return VQCLASSID_VQVFNAVIGATOR; }

VQVFNavigatorBody::VQVFNavigatorBody(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count,
                                     std::uint32_t flags, VQSTATUS* status)
    : VQBody(view->GetSession()) {
  Reset();
  ViewFolder = view;
  Cache.Bind(this);
  *status = OpenCollection(start, count, flags);
  if (*status == VQ_OK) return;
  VQVFNavigatorBody::Close();
  OpenStatus = *status;
}

VQVFNavigatorBody::~VQVFNavigatorBody() {
  try {
    VQVFNavigatorBody::Close();
  } catch (...) {
    // The status of a close that a destructor runs is lost.
  }
}

VQCLASSID VQVFNavigatorBody::GetClassID() const { return VQCLASSID_VQVFNAVIGATORBODY; }

void VQVFNavigatorBody::Reset() {
  Collection = IDTable = UnreadTable = 0;
  EntryCount = 0;
  Flags = 0;
  OpenStatus = VQERR_NO_COLLECTION;
  CreationTime = {};
  ViewFolder = nullptr;
  StartPosition.Reset();
}

VQSTATUS VQVFNavigatorBody::OpenCollection(const VQVFPosition* start, std::uint32_t count, std::uint32_t flags) {
  if (start != nullptr && !start->IsSet()) return VQERR_UNINITIALIZED_ARGUMENT;
  const ENGHANDLE entries = ViewFolder->GetEntryDatabase().GetDatabaseBody()->GetHandle();
  const bool from_find = (flags & VQViewFolderBody::kFromFind) != 0;
  if ((flags & VQVFOPENFLAGS_USE_UNREAD_LIST) != 0) {
    ENGCHAR user[kUserName]{};
    ENGSTATUS result = EngUserNameGet(user);
    const auto length = static_cast<std::uint16_t>(std::find(user, user + kUserName - 1, 0) - user);
    if (result == ENG_OK) result = EngDbGetUnreadTable(entries, user, length, 1, &UnreadTable);
    if (result != ENG_OK) return vq::FromEngine(result);
  }
  const auto engine_flags = static_cast<std::uint16_t>((flags & 0xFFFF) | (from_find ? 0 : kFindUpdates));
  VQSTATUS status =
      vq::FromEngine(EngCollectionOpen(ViewFolder->GetDatabaseBody()->GetHandle(), entries, ViewFolder->GetID(),
                                       engine_flags, UnreadTable, &Collection, nullptr, nullptr, nullptr, nullptr));
  if (status != VQ_OK) return status;
  if (start != nullptr) StartPosition = *start;
  std::uint32_t first = 0;
  status = ReadFirst(start != nullptr && !from_find, &first);
  if (status == VQWARN_NOT_FOUND && start != nullptr) return VQERR_NOT_FOUND;
  if (VQIsError(status)) return status;
  if (status == VQWARN_NOT_FOUND) Flags |= kCountKnown;
  if (status == VQ_OK && (first & ENG_ROW_NO_DOCUMENT) != 0) Flags |= kCategorized;
  if (status == VQ_OK && start != nullptr) TakeStart(*start, count, from_find);
  EngTimeNow(&CreationTime);
  return VQ_OK;
}

void VQVFNavigatorBody::TakeStart(const VQVFPosition& start, std::uint32_t count, bool from_find) {
  COLLECTIONPOSITION& place = *StartPosition.GetPosition();
  const std::uint32_t level = start.GetPosition()->Level;
  place.MinLevel = static_cast<std::uint8_t>(level);
  Flags |= kRestricted;
  if (from_find) {
    place.MaxLevel = place.MinLevel;
    EntryCount = count;
    Flags |= kFind | kCountKnown;
    return;
  }
  constexpr std::uint32_t kNoLimit = ENG_COLLECTION_NO_LIMIT;
  place.MaxLevel =
      static_cast<std::uint8_t>(count == 0 || count > kNoLimit ? kNoLimit : std::min(kNoLimit, level + count - 1));
}

VQSTATUS VQVFNavigatorBody::ReadFirst(bool below, std::uint32_t* id) {
  COLLECTIONPOSITION place = *StartPosition.GetPosition();
  ENGHANDLE buffer = 0;
  std::uint32_t length = 0;
  std::uint32_t returned = 0;
  const VQSTATUS status = ReadEntries(&place, below ? ENG_GO_CHILD : ENG_GO_CURRENT, below ? 1 : 0, ENG_GO_CURRENT, 1,
                                      ENG_READ_ID, &buffer, &length, nullptr, &returned, nullptr);
  if (status != VQ_OK) return status;
  const auto* bytes = static_cast<const unsigned char*>(EngMemLock(buffer));
  const bool whole = bytes != nullptr && length >= sizeof(std::uint32_t);
  if (whole) *id = vq::LoadWord(bytes) | static_cast<std::uint32_t>(vq::LoadWord(bytes + 2)) << 16;
  if (bytes != nullptr) EngMemUnlock(buffer);
  EngMemFree(buffer);
  return whole ? VQ_OK : VQERR_CORRUPTED;
}

VQSTATUS VQVFNavigatorBody::ReadEntries(COLLECTIONPOSITION* position, unsigned short skip, std::uint32_t skipCount,
                                        unsigned short navigation, std::uint32_t count, std::uint32_t mask,
                                        ENGHANDLE* buffer, std::uint32_t* length, std::uint32_t* skipped,
                                        std::uint32_t* returned, unsigned short* signals) {
  const ENGSTATUS result = EngCollectionRead(Collection, position, skip, skipCount, navigation, count, mask, buffer,
                                             length, skipped, returned, signals);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_ENTRY) return VQWARN_NOT_FOUND;
  if (result != ENG_OK || buffer == nullptr) return vq::FromEngine(result);
  if (*buffer != 0 && (returned == nullptr || *returned != 0)) return VQ_OK;
  if (*buffer != 0) EngMemFree(*buffer);
  *buffer = 0;
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQVFNavigatorBody::Close() {
  Cache.Close();
  const bool was_open = Collection != 0;
  // The collection reads the unread table to its end.
  const VQSTATUS status = was_open ? vq::FromEngine(EngCollectionClose(Collection)) : VQWARN_NOT_OPEN;
  if (IDTable != 0) EngIdTableDestroy(IDTable);
  if (UnreadTable != 0) EngIdTableDestroy(UnreadTable);
  Reset();
  return status;
}
