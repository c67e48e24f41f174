#include "qcore/store/objects.h"

#include "qcore/memory/memory.h"

namespace qcore {

ENGSTATUS FreeObject(Database& database, std::uint32_t object) {
  const std::lock_guard lock(database.mutex());
  Change change(database);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK) status = database.store().FreeObject(object);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS GetObjectInfo(Database& database, std::uint32_t object, ObjectInfo* info) {
  const std::lock_guard lock(database.mutex());
  return database.store().GetObject(object, info);
}

ENGSTATUS ReadObject(Database& database, std::uint32_t object, std::uint32_t offset, std::uint32_t length,
                     ENGHANDLE* memory) {
  const std::lock_guard lock(database.mutex());
  Store& store = database.store();
  ENGSTATUS status = store.BeginRead();
  if (status != ENG_OK) return status;
  // Checked before so large a block is made.
  ObjectInfo info{};
  status = store.GetObject(object, &info);
  if (status == ENG_OK && (offset > info.size || length > info.size - offset)) status = ENG_ERR_OBJECT_RANGE;
  ENGHANDLE made = 0;
  if (status == ENG_OK) status = memory::Allocate(Kind::kMemory, length, memory::Fill::kNone, &made);
  if (status == ENG_OK) {
    const memory::LockedBlock block(made);
    status = store.ReadObject(object, offset, std::span<std::uint8_t>(block.bytes(), length));
  }
  store.EndRead();
  if (status == ENG_OK) {
    *memory = made;
  } else if (made != 0) {
    memory::Release(Kind::kMemory, made);
  }
  return status;
}

ENGSTATUS WriteObject(Database& database, std::uint32_t object, std::uint32_t offset, Bytes bytes, ObjectEnd end) {
  const std::lock_guard lock(database.mutex());
  Change change(database);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK && end == ObjectEnd::kCut) status = database.store().ResizeObject(object, offset);
  if (status == ENG_OK) status = database.store().WriteObject(object, offset, bytes);
  return status == ENG_OK ? change.Commit() : status;
}

}  // namespace qcore
