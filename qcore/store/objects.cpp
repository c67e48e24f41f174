#include "qcore/store/objects.h"

#include <algorithm>

#include "qcore/memory/memory.h"

namespace qcore {

namespace {

constexpr std::size_t kWriteSize = std::size_t{1} << 20;
constexpr std::size_t kPieceSize = std::size_t{32} << 20;

}  // namespace

ENGSTATUS FreeObject(Database& database, std::uint32_t object) {
  const std::lock_guard lock(database.mutex());
  Change change(database);
  ENGSTATUS status = change.Begin();
  ObjectInfo info{};
  if (status == ENG_OK) status = database.store().GetObject(object, &info);
  if (status == ENG_OK && info.owner != 0) status = ENG_ERR_NO_OBJECT;
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

ENGSTATUS ReadObjectBytes(Database& database, std::uint32_t object, std::uint32_t offset, std::span<std::uint8_t> out) {
  const std::lock_guard lock(database.mutex());
  Store& store = database.store();
  ENGSTATUS status = store.BeginRead();
  if (status != ENG_OK) return status;
  status = store.ReadObject(object, offset, out);
  store.EndRead();
  return status;
}

ENGSTATUS CopyObject(Database& from, std::uint32_t object, Database& to, std::uint32_t* copy) {
  ObjectInfo info{};
  ENGSTATUS status = GetObjectInfo(from, object, &info);
  std::vector<std::uint8_t> buffer(std::min<std::size_t>(kPieceSize, info.size));
  ObjectWriter writer(to, info.object_class);
  for (std::uint32_t at = 0; status == ENG_OK && at < info.size;) {
    const std::span<std::uint8_t> piece = std::span(buffer).first(std::min<std::size_t>(buffer.size(), info.size - at));
    status = ReadObjectBytes(from, object, at, piece);
    if (status == ENG_OK) status = writer.Append(piece);
    at += static_cast<std::uint32_t>(piece.size());
  }
  if (status == ENG_OK) status = writer.Finish(copy);
  if (status == ENG_OK) writer.Keep();
  return status;
}

ObjectWriter::~ObjectWriter() {
  change_.reset();
  if (lock_.owns_lock()) lock_.unlock();
  // What cannot be freed now goes as a reserved object does.
  if (stored_ && !kept_) static_cast<void>(FreeObject(database_, object_));
}

ENGSTATUS ObjectWriter::BeginPiece() {
  lock_ = std::unique_lock(database_.mutex());
  change_.emplace(database_);
  const ENGSTATUS status = change_->Begin();
  return status == ENG_OK && !stored_ ? database_.store().CreateObject(class_, &object_) : status;
}

ENGSTATUS ObjectWriter::EndPiece() {
  const ENGSTATUS status = change_->Commit();
  if (status == ENG_OK && !stored_) database_.NoteReserved(object_);
  stored_ = stored_ || status == ENG_OK;
  in_piece_ = 0;
  change_.reset();
  lock_.unlock();
  return status;
}

ENGSTATUS ObjectWriter::Append(Bytes bytes) {
  // Whole pieces of the store's own size are never read back to be completed.
  if (!waiting_.empty() || bytes.size() < kWriteSize) {
    const std::size_t room = std::min(bytes.size(), kWriteSize - waiting_.size());
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(room));
    bytes = bytes.subspan(room);
    if (waiting_.size() < kWriteSize) return ENG_OK;
    const ENGSTATUS status = Write(waiting_);
    waiting_.clear();
    if (status != ENG_OK) return status;
  }
  while (bytes.size() >= kWriteSize) {
    const ENGSTATUS status = Write(bytes.first(kWriteSize));
    if (status != ENG_OK) return status;
    bytes = bytes.subspan(kWriteSize);
  }
  waiting_.assign(bytes.begin(), bytes.end());
  return ENG_OK;
}

ENGSTATUS ObjectWriter::Write(Bytes bytes) {
  if (bytes.size() > UINT32_MAX - size_) return ENG_ERR_OBJECT_RANGE;
  ENGSTATUS status = change_ ? ENGSTATUS{ENG_OK} : BeginPiece();
  if (status == ENG_OK) status = database_.store().WriteObject(object_, static_cast<std::uint32_t>(size_), bytes);
  if (status != ENG_OK) return status;
  size_ += bytes.size();
  in_piece_ += bytes.size();
  return in_piece_ >= kPieceSize ? EndPiece() : ENGSTATUS{ENG_OK};
}

ENGSTATUS ObjectWriter::Finish(std::uint32_t* object) {
  ENGSTATUS status = ENG_OK;
  if (!waiting_.empty() || (!stored_ && !change_)) status = Write(waiting_);
  waiting_.clear();
  if (status == ENG_OK && change_) status = EndPiece();
  *object = object_;
  return status;
}

}  // namespace qcore
