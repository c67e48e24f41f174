// Objects of a database: byte ranges beside the slates.
#ifndef QUILLON_QCORE_STORE_OBJECTS_H
#define QUILLON_QCORE_STORE_OBJECTS_H

#include <mutex>
#include <optional>

#include "qcore/store/database.h"

namespace qcore {

// A reserved one; ENG_ERR_NO_OBJECT for one that a slate owns.
[[nodiscard]] ENGSTATUS FreeObject(Database& database, std::uint32_t object);
[[nodiscard]] ENGSTATUS GetObjectInfo(Database& database, std::uint32_t object, ObjectInfo* info);
// The range in a new block, which is the caller's. ENG_ERR_OBJECT_RANGE.
[[nodiscard]] ENGSTATUS ReadObject(Database& database, std::uint32_t object, std::uint32_t offset, std::uint32_t length,
                                   ENGHANDLE* memory);

enum class ObjectEnd { kKeep, kCut };  // what happens to bytes behind the range
[[nodiscard]] ENGSTATUS WriteObject(Database& database, std::uint32_t object, std::uint32_t offset, Bytes bytes,
                                    ObjectEnd end);

// The range into bytes that the caller has. ENG_ERR_OBJECT_RANGE.
[[nodiscard]] ENGSTATUS ReadObjectBytes(Database& database, std::uint32_t object, std::uint32_t offset,
                                        std::span<std::uint8_t> out);
// A new reserved object with the bytes of another, which may be one of another database.
[[nodiscard]] ENGSTATUS CopyObject(Database& from, std::uint32_t object, Database& to, std::uint32_t* copy);

// A new object, written from its start to its end. It is stored in pieces, each in a change of its own, so that neither
// memory nor the log grows with it; until a slate names it, it is a reserved one. It goes again unless it is kept.
// While a piece is being written no other thread has the database.
class ObjectWriter {
 public:
  ObjectWriter(Database& database, std::uint16_t object_class) : database_(database), class_(object_class) {}
  ObjectWriter(const ObjectWriter&) = delete;
  ObjectWriter& operator=(const ObjectWriter&) = delete;
  ~ObjectWriter();

  [[nodiscard]] ENGSTATUS Append(Bytes bytes);
  // All bytes are there.
  [[nodiscard]] ENGSTATUS Finish(std::uint32_t* object);
  void Keep() { kept_ = true; }

 private:
  [[nodiscard]] ENGSTATUS Write(Bytes bytes);
  [[nodiscard]] ENGSTATUS BeginPiece();
  [[nodiscard]] ENGSTATUS EndPiece();

  Database& database_;
  std::uint16_t class_;
  bool kept_ = false;
  bool stored_ = false;  // a piece of it
  std::uint32_t object_ = 0;
  std::uint64_t size_ = 0;
  std::size_t in_piece_ = 0;
  std::vector<std::uint8_t> waiting_;  // less than is written at once
  std::unique_lock<std::mutex> lock_;
  std::optional<Change> change_;
};

}  // namespace qcore

#endif
