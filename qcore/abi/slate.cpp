#include "qcore/slates/slate.h"

#include <cstring>

#include "qcore/abi/lookup.h"
#include "qcore/slates/attachment.h"
#include "qcore/slates/remove.h"

using qcore::Database;
using qcore::Slate;
using qcore::SlateHeader;
using qcore::abi::Guard;
using qcore::abi::WithSlate;
using qcore::abi::WithStore;

namespace {

std::string_view Text(const ENGCHAR* text) { return reinterpret_cast<const char*>(text); }

template <typename T>
ENGSTATUS Give(void* target, const T& value) {
  std::memcpy(target, &value, sizeof value);
  return ENG_OK;
}

template <typename T>
T Take(const void* source) {
  T value;
  std::memcpy(&value, source, sizeof value);
  return value;
}

template <typename T>
ENGSTATUS GiveComputed(Slate& slate, ENGSTATUS (Slate::*compute)(T*), void* target) {
  T value{};
  const ENGSTATUS status = (slate.*compute)(&value);
  return status == ENG_OK ? Give(target, value) : status;
}

ENGSTATUS GetMember(Slate& slate, uint16_t member, void* target) {
  const SlateHeader& header = slate.header();
  switch (member) {
    case ENG_SLATE_DB:
      return Give(target, slate.database().handle());
    case ENG_SLATE_ID:
      return Give(target, header.id);
    case ENG_SLATE_ORIGINATOR:
      return Give(target, header.origin);
    case ENG_SLATE_CLASS:
      return Give(target, header.slate_class);
    case ENG_SLATE_MODIFIED:
      return Give(target, header.modified);
    case ENG_SLATE_MODIFIED_HERE:
      return Give(target, header.modified_here);
    case ENG_SLATE_ACCESSED:
      return Give(target, header.accessed);
    case ENG_SLATE_FLAGS:
      return Give(target, header.flags);
    case ENG_SLATE_ADDED:
      return Give(target, header.added);
    case ENG_SLATE_PARENT:
      return GiveComputed(slate, &Slate::GetParent, target);
    case ENG_SLATE_RESPONSE_COUNT:
      return GiveComputed(slate, &Slate::GetResponseCount, target);
    case ENG_SLATE_RESPONSES:
      return GiveComputed(slate, &Slate::GetResponses, target);
    case ENG_SLATE_SIZE:
      return GiveComputed(slate, &Slate::GetSize, target);
    case ENG_SLATE_IS_MODIFIED:
      return Give(target, static_cast<uint16_t>(slate.is_modified()));
    default:
      return ENG_ERR_HEADER_MEMBER;
  }
}

ENGSTATUS SetMember(Slate& slate, uint16_t member, const void* source) {
  switch (member) {
    case ENG_SLATE_DB: {
      std::shared_ptr<Database> database;
      const ENGSTATUS status = Database::FindStore(Take<ENGHANDLE>(source), &database);
      return status == ENG_OK ? slate.SetDatabase(std::move(database)) : status;
    }
    case ENG_SLATE_ID:
      return slate.SetId(Take<uint32_t>(source));
    case ENG_SLATE_ORIGINATOR:
      slate.SetOrigin(Take<ORIGINATORID>(source));
      return ENG_OK;
    case ENG_SLATE_CLASS:
      slate.SetClass(Take<uint16_t>(source));
      return ENG_OK;
    case ENG_SLATE_FLAGS:
      slate.SetFlags(Take<uint16_t>(source));
      return ENG_OK;
    default:
      return ENG_ERR_HEADER_MEMBER;
  }
}

void GiveInfo(const SlateHeader& header, ORIGINATORID* origin, TIMEDATE* modified, uint16_t* slate_class) {
  if (origin) *origin = header.origin;
  if (modified) *modified = header.modified;
  if (slate_class) *slate_class = header.slate_class;
}

}  // namespace

ENGSTATUS EngSlateCreate(ENGHANDLE db, ENGHANDLE* slate) {
  if (!slate) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return Slate::Create(database, slate); });
}

ENGSTATUS EngSlateOpen(ENGHANDLE db, uint32_t id, uint16_t, ENGHANDLE* slate) {
  if (!slate) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    const ENGSTATUS status = qcore::ResolveSlateId(*database, &id);
    return status == ENG_OK ? Slate::Open(database, id, slate) : status;
  });
}

ENGSTATUS EngSlateClose(ENGHANDLE slate) {
  return Guard([&] { return Slate::Close(slate); });
}

ENGSTATUS EngSlateCopy(ENGHANDLE slate, ENGHANDLE* copy) {
  if (!copy) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& source) { return source.Copy(copy); });
}

ENGSTATUS EngSlateUpdate(ENGHANDLE slate, uint16_t flags) {
  return WithSlate(slate, [&](Slate& target) { return target.Update(flags); });
}

ENGSTATUS EngSlateUpdateSeveral(const ENGHANDLE* slates, uint32_t count, uint16_t flags) {
  if (!slates || count == 0) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    std::vector<Slate*> targets;
    for (uint32_t i = 0; i < count; ++i) {
      targets.push_back(Slate::Find(slates[i]));
      if (!targets.back()) return ENG_ERR_INVALID_HANDLE;
    }
    return Slate::UpdateSeveral(targets, flags);
  });
}

ENGSTATUS EngSlateDelete(ENGHANDLE db, uint32_t id, uint16_t flags) {
  return WithStore(db, [&](const auto& database) { return qcore::DeleteSlate(*database, id, flags); });
}

ENGSTATUS EngSlateDeleteList(ENGHANDLE db, ENGHANDLE id_table, uint16_t flags) {
  return WithStore(db, [&](const auto& database) { return qcore::DeleteSlates(*database, id_table, flags); });
}

ENGSTATUS EngDbDeleteSlates(ENGHANDLE db, ENGHANDLE id_table, uint16_t flags) {
  return EngSlateDeleteList(db, id_table, flags);
}

ENGSTATUS EngSlateGetHeader(ENGHANDLE slate, uint16_t member, void* target) {
  if (!target) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& source) { return GetMember(source, member, target); });
}

ENGSTATUS EngSlateSetHeader(ENGHANDLE slate, uint16_t member, const void* source) {
  if (!source) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& target) { return SetMember(target, member, source); });
}

ENGSTATUS EngSlateGetInfo(ENGHANDLE db, uint32_t id, ORIGINATORID* origin, TIMEDATE* modified, uint16_t* slate_class) {
  return EngDbGetSlateInfo(db, id, origin, modified, slate_class, nullptr);
}

ENGSTATUS EngDbGetSlateInfo(ENGHANDLE db, uint32_t id, ORIGINATORID* origin, TIMEDATE* modified, uint16_t* slate_class,
                            uint16_t* flags) {
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    ENGSTATUS status = qcore::ResolveSlateId(*database, &id);
    SlateHeader header;
    if (status == ENG_OK) status = qcore::ReadSlateHeader(*database, id, &header);
    if (status != ENG_OK) return status;
    GiveInfo(header, origin, modified, slate_class);
    if (flags) *flags = header.flags;
    return header.deleted ? ENG_ERR_SLATE_DELETED : ENG_OK;
  });
}

ENGSTATUS EngSlateGetInfoByUniversalID(ENGHANDLE db, const UNIVERSALSLATEID* universal, uint32_t* id,
                                       ORIGINATORID* origin, TIMEDATE* modified, uint16_t* slate_class) {
  if (!universal) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    SlateHeader header;
    const ENGSTATUS status = qcore::FindSlate(*database, *universal, &header);
    if (status != ENG_OK) return status;
    if (id) *id = header.id;
    GiveInfo(header, origin, modified, slate_class);
    return header.deleted ? ENG_ERR_SLATE_DELETED : ENG_OK;
  });
}

ENGSTATUS EngSlateAppendObjectItem(ENGHANDLE slate, const ENGCHAR* name, const ENGFILEDESCRIPTOR* descriptor) {
  if (!name || !descriptor) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& target) { return qcore::AppendObjectItem(target, Text(name), *descriptor); });
}

ENGSTATUS EngSlateAttachFile(ENGHANDLE slate, const ENGCHAR* item_name, const ENGCHAR* name, uint16_t name_length,
                             const char* path, uint16_t flags, BLOCKID* item) {
  if (!item_name || !name || !path) return ENG_ERR_ARGUMENT;
  return WithSlate(slate, [&](Slate& target) {
    Slate::Slot slot = 0;
    const std::string_view text(reinterpret_cast<const char*>(name), name_length);
    const ENGSTATUS status = qcore::AttachFile(target, Text(item_name), text, path, flags, &slot);
    if (status == ENG_OK && item) *item = target.IdOf(slot);
    return status;
  });
}

ENGSTATUS EngItemExtractFile(ENGHANDLE slate, BLOCKID item, const char* path, uint16_t) {
  if (!path) return ENG_ERR_ARGUMENT;
  return qcore::abi::WithItem(slate, item,
                              [&](Slate& source, Slate::Slot slot) { return qcore::ExtractFile(source, slot, path); });
}

ENGSTATUS EngItemCopyObject(ENGHANDLE slate, BLOCKID item, ENGHANDLE target, uint32_t* copy) {
  if (!copy) return ENG_ERR_ARGUMENT;
  return WithStore(target, [&](const auto& database) {
    return qcore::abi::WithItem(slate, item, [&](Slate& source, Slate::Slot slot) {
      return qcore::CopyObjectOf(source, slot, *database, copy);
    });
  });
}

ENGSTATUS EngItemCheckFile(ENGHANDLE slate, BLOCKID item) {
  return qcore::abi::WithItem(slate, item,
                              [](Slate& source, Slate::Slot slot) { return qcore::CheckFile(source, slot); });
}
