#include <memory>

#include "engine/database.h"
#include "qcore/abi/lookup.h"
#include "qcore/memory/memory.h"
#include "qcore/store/objects.h"

using qcore::Database;
using qcore::ObjectEnd;
using qcore::abi::WithStore;

namespace {

ENGSTATUS Write(ENGHANDLE db, uint32_t object, uint32_t offset, ENGHANDLE memory, uint32_t size, ObjectEnd end) {
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    const qcore::memory::LockedBlock block(memory);
    if (!block.bytes()) return ENG_ERR_INVALID_HANDLE;
    if (size > block.size()) return ENG_ERR_BUFFER_SIZE;
    return qcore::WriteObject(*database, object, offset, qcore::Bytes(block.bytes(), size), end);
  });
}

}  // namespace

ENGSTATUS EngObjectCreate(ENGHANDLE db, uint16_t object_class, uint32_t* object) {
  if (!object) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return database->CreateObject(object_class, object); });
}

ENGSTATUS EngObjectFree(ENGHANDLE db, uint32_t object) {
  return WithStore(db, [&](const auto& database) { return qcore::FreeObject(*database, object); });
}

ENGSTATUS EngObjectGetSize(ENGHANDLE db, uint32_t object, uint32_t* size, uint16_t* object_class) {
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    qcore::ObjectInfo info{};
    const ENGSTATUS status = qcore::GetObjectInfo(*database, object, &info);
    if (status != ENG_OK) return status;
    if (size) *size = info.size;
    if (object_class) *object_class = info.object_class;
    return ENG_OK;
  });
}

ENGSTATUS EngObjectRead(ENGHANDLE db, uint32_t object, uint32_t offset, uint32_t length, ENGHANDLE* memory) {
  if (!memory) return ENG_ERR_ARGUMENT;
  *memory = 0;
  return WithStore(db,
                   [&](const auto& database) { return qcore::ReadObject(*database, object, offset, length, memory); });
}

ENGSTATUS EngObjectWrite(ENGHANDLE db, uint32_t object, ENGHANDLE memory, uint32_t size) {
  return Write(db, object, 0, memory, size, ObjectEnd::kCut);
}

ENGSTATUS EngObjectWriteRange(ENGHANDLE db, uint32_t object, uint32_t offset, ENGHANDLE memory, uint32_t size) {
  return Write(db, object, offset, memory, size, ObjectEnd::kKeep);
}
