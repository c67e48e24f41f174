// Objects of a database: byte ranges beside the slates.
#ifndef QUILLON_QCORE_STORE_OBJECTS_H
#define QUILLON_QCORE_STORE_OBJECTS_H

#include "qcore/store/database.h"

namespace qcore {

[[nodiscard]] ENGSTATUS FreeObject(Database& database, std::uint32_t object);
[[nodiscard]] ENGSTATUS GetObjectInfo(Database& database, std::uint32_t object, ObjectInfo* info);
// The range in a new block, which is the caller's. ENG_ERR_OBJECT_RANGE.
[[nodiscard]] ENGSTATUS ReadObject(Database& database, std::uint32_t object, std::uint32_t offset, std::uint32_t length,
                                   ENGHANDLE* memory);

enum class ObjectEnd { kKeep, kCut };  // what happens to bytes behind the range
[[nodiscard]] ENGSTATUS WriteObject(Database& database, std::uint32_t object, std::uint32_t offset, Bytes bytes,
                                    ObjectEnd end);

}  // namespace qcore

#endif
