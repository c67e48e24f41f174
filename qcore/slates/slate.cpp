// Opening, closing and copying slates, and their header.
#include "qcore/slates/slate.h"

#include <algorithm>

#include "qcore/idtables/idtable.h"
#include "qcore/memory/memory.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::uint16_t kDocumentClass = 1;
constexpr std::size_t kMoreItems = 4;  // that a change of a few items may add

}  // namespace

ENGSTATUS Slate::Publish(std::unique_ptr<Slate> slate, ENGHANDLE* handle) {
  Slate* published = slate.get();
  published->handle_ = handle_table.Insert(Kind::kSlate, published);
  if (published->handle_ == 0) return ENG_ERR_TOO_MANY_HANDLES;
  *handle = slate.release()->handle_;
  const std::lock_guard lock(published->database_->mutex());
  published->database_->Register(published);
  return ENG_OK;
}

ENGSTATUS Slate::Create(std::shared_ptr<Database> database, ENGHANDLE* handle) {
  auto slate = std::make_unique<Slate>(std::move(database));
  slate->header_.origin = slate->database_->NewOrigin();
  slate->header_.slate_class = kDocumentClass;
  return Publish(std::move(slate), handle);
}

ENGSTATUS Slate::Open(std::shared_ptr<Database> database, std::uint32_t id, ENGHANDLE* handle) {
  auto slate = std::make_unique<Slate>(std::move(database));
  ENGSTATUS status = ENG_OK;
  {
    Database& source = *slate->database_;
    const std::lock_guard lock(source.mutex());
    status = source.store().ReadSlate(
        id, [&slate](const SlateHeader& header, Bytes packed) { return slate->Load(header, packed); });
  }
  return status == ENG_OK ? Publish(std::move(slate), handle) : status;
}

ENGSTATUS Slate::Close(ENGHANDLE handle) {
  const std::unique_ptr<Slate> slate(static_cast<Slate*>(handle_table.Remove(Kind::kSlate, handle)));
  if (!slate) return ENG_ERR_INVALID_HANDLE;
  slate->GiveUpObjects();
  return ENG_OK;
}

// The database frees what is left of its own at once.
void Slate::CloseWithDatabase() {
  std::erase_if(claims_, [this](const Claim& claim) { return claim.database == database_; });
  static_cast<void>(Close(handle_));
}

Slate::~Slate() {
  if (handle_ != 0) {
    const std::lock_guard lock(database_->mutex());
    database_->Unregister(this);
  }
  ForgetSetAside();
  for (const Item& item : items_) {
    if (item.own_block) memory::Release(Kind::kMemory, item.pool);
  }
  if (packed_ != 0) memory::Release(Kind::kMemory, packed_);
  if (responses_ != 0) memory::Release(Kind::kIdTable, responses_);
}

ENGSTATUS Slate::Load(const SlateHeader& header, Bytes packed) {
  header_ = header;
  base_ = header;
  ENGSTATUS status =
      memory::Allocate(Kind::kMemory, static_cast<std::uint32_t>(packed.size()), memory::Fill::kNone, &packed_);
  if (status != ENG_OK) return status;
  const memory::LockedBlock block(packed_);
  std::copy(packed.begin(), packed.end(), block.bytes());
  PackedReader reader;
  status = reader.Start(Bytes(block.bytes(), packed.size()), header.id);
  if (status != ENG_OK) return status;
  if (reader.count() > kMostItems) return ENG_ERR_ITEM_DAMAGED;
  items_.reserve(reader.count() + kMoreItems);
  order_.reserve(reader.count() + kMoreItems);
  for (std::uint32_t i = 0; i < reader.count(); ++i) {
    PackedItem item;
    status = reader.Next(&item);
    if (status == ENG_OK) status = LoadItem(item, block.bytes());
    if (status != ENG_OK) return status;
  }
  rest_size_ = static_cast<std::uint32_t>(reader.Rest().size());
  rest_at_ = static_cast<std::uint32_t>(packed.size()) - rest_size_;
  return ENG_OK;
}

ENGSTATUS Slate::LoadItem(const PackedItem& packed, const std::uint8_t* start) {
  Item item;
  const ENGSTATUS status = database_->names().Find(database_->store(), packed.name, &item.name);
  if (status != ENG_OK) return status;
  if (!item.name) return ENG_ERR_ITEM_DAMAGED;
  names_there_ |= NameBit(item.name->folded_hash);
  item.flags = packed.flags;
  item.type = packed.type;
  item.modified = packed.modified;
  item.size = packed.size;
  item.aside = packed.aside;
  item.stored = true;
  if (!packed.kept.empty()) {
    item.kept_at = static_cast<std::uint32_t>(packed.kept.data() - start);
    item.kept_size = static_cast<std::uint32_t>(packed.kept.size());
  }
  if (packed.aside == 0) {
    item.packed_at = static_cast<std::uint32_t>(packed.value.data() - start);
    if (item.packed_at <= UINT16_MAX) {
      item.pool = packed_;
      item.offset = static_cast<std::uint16_t>(item.packed_at);
    }
  }
  had_objects_ = had_objects_ || item.type == kObjectType;
  order_.push_back(static_cast<Slot>(items_.size()));
  items_.push_back(item);
  return ENG_OK;
}

ENGSTATUS Slate::CopyItem(const Slate& from, const Item& source) {
  Item item = source;
  item.own_block = false;
  if (source.pool == 0 || source.pool == from.packed_) {
    if (source.pool != 0) item.pool = packed_;
  } else {
    const Bytes bytes = from.BytesOf(source);
    if (bytes.empty()) return ENG_ERR_ITEM_DAMAGED;
    const ENGSTATUS status = MoveToOwnBlock(item, bytes, source.size);
    if (status != ENG_OK) return status;
  }
  items_.push_back(item);
  return ENG_OK;
}

ENGSTATUS Slate::Copy(ENGHANDLE* copy) {
  auto slate = std::make_unique<Slate>(database_);
  slate->header_ = header_;
  slate->base_ = base_;
  slate->rest_at_ = rest_at_;
  slate->rest_size_ = rest_size_;
  slate->dropped_ = dropped_;
  slate->modified_ = modified_;
  slate->had_objects_ = had_objects_;
  slate->foreign_ = foreign_;
  if (packed_ != 0) {
    const memory::LockedBlock from(packed_);
    if (!from.bytes()) return ENG_ERR_ITEM_DAMAGED;
    const ENGSTATUS status = memory::Allocate(Kind::kMemory, from.size(), memory::Fill::kNone, &slate->packed_);
    if (status != ENG_OK) return status;
    const memory::LockedBlock to(slate->packed_);
    std::copy_n(from.bytes(), from.size(), to.bytes());
  }
  slate->order_ = order_;
  slate->names_there_ = names_there_;
  slate->items_.reserve(items_.size());
  for (const Item& item : items_) {
    const ENGSTATUS status = slate->CopyItem(*this, item);
    if (status != ENG_OK) return status;
  }
  const ENGSTATUS status = base_ ? ENGSTATUS{ENG_OK} : slate->TakeCopiedObjects();
  if (status != ENG_OK) return status;
  for (const Claim& claim : claims_) slate->ClaimObject(claim.database, claim.object);
  return Publish(std::move(slate), copy);
}

void Slate::SetClass(std::uint16_t slate_class) {
  header_.slate_class = slate_class;
  modified_ = true;
}

void Slate::SetFlags(std::uint16_t flags) {
  header_.flags = flags;
  modified_ = true;
}

void Slate::SetOrigin(const ORIGINATORID& origin) {
  header_.origin = origin;
  modified_ = true;
}

ENGSTATUS Slate::SetId(std::uint32_t id) {
  if (id == header_.id) return ENG_OK;
  return id == 0 ? MakeNew() : ENGSTATUS{ENG_ERR_ARGUMENT};
}

ENGSTATUS Slate::SetDatabase(std::shared_ptr<Database> database) {
  if (database == database_) return ENG_OK;
  const ENGSTATUS status = MakeNew();
  if (status != ENG_OK) return status;
  for (Item& item : items_) {
    if (item.live) item.name = database->names().Intern(item.name->text);
  }
  {
    const std::lock_guard lock(database_->mutex());
    database_->Unregister(this);
  }
  database_ = std::move(database);
  const std::lock_guard lock(database_->mutex());
  database_->Register(this);
  return ENG_OK;
}

// What stands aside belongs to the stored slate, so that a new one needs its own copy first.
ENGSTATUS Slate::MakeNew() {
  ForgetSetAside();
  for (Item& item : items_) {
    const ENGSTATUS status = item.live ? Materialise(item) : ENGSTATUS{ENG_OK};
    if (status != ENG_OK) return status;
  }
  const bool first = !foreign_.database;
  if (first) foreign_ = OwnObjects();
  for (Item& item : items_) {
    item.aside = 0;
    item.touched = true;
    item.changed = true;
    item.foreign = item.foreign || (first && item.type == kObjectType);
  }
  dropped_.clear();
  had_objects_ = false;
  saved_.reset();
  base_.reset();
  header_.id = 0;
  header_.added = {};
  modified_ = true;
  return ENG_OK;
}

ENGSTATUS Slate::GetParent(std::uint32_t* id) {
  *id = 0;
  const std::lock_guard lock(database_->mutex());
  std::optional<UNIVERSALSLATEID> parent;
  ENGSTATUS status = Reference(&parent);
  if (status != ENG_OK || !parent) return status;
  SlateHeader found;
  status = database_->store().FindUniversal(*parent, &found.id);
  if (status == ENG_OK) status = database_->store().ReadHeader(found.id, &found);
  if (status == ENG_OK && !found.deleted) *id = found.id;
  return status == ENG_ERR_NO_SLATE ? ENGSTATUS{ENG_OK} : status;
}

ENGSTATUS Slate::GetResponses(ENGHANDLE* table) {
  std::vector<std::uint32_t> ids;
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = database_->store().FindResponses({header_.origin.File, header_.origin.Slate}, &ids);
    if (status != ENG_OK) return status;
  }
  ENGHANDLE made = 0;
  const ENGSTATUS status = idtable::Make(ids, &made);
  if (status != ENG_OK) return status;
  if (responses_ != 0) memory::Release(Kind::kIdTable, responses_);
  responses_ = made;
  *table = made;
  return ENG_OK;
}

ENGSTATUS Slate::GetResponseCount(std::uint32_t* count) {
  std::vector<std::uint32_t> ids;
  const std::lock_guard lock(database_->mutex());
  const ENGSTATUS status = database_->store().FindResponses({header_.origin.File, header_.origin.Slate}, &ids);
  *count = static_cast<std::uint32_t>(ids.size());
  return status;
}

ENGSTATUS Slate::GetSize(std::uint32_t* size) {
  std::uint64_t sum = 0;
  for (Slot slot : order_) sum += items_[slot].size;
  const std::lock_guard lock(database_->mutex());
  std::vector<std::uint32_t> objects;
  ENGSTATUS status = header_.id == 0 ? ENGSTATUS{ENG_OK} : database_->store().FindObjects(header_.id, &objects);
  for (std::uint32_t object : objects) {
    ObjectInfo info{};
    if (status == ENG_OK) status = database_->store().GetObject(object, &info);
    sum += info.size;
  }
  *size = static_cast<std::uint32_t>(std::min<std::uint64_t>(sum, UINT32_MAX));
  return status;
}

}  // namespace qcore
