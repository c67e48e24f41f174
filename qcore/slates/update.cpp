// Writing a slate: one change of the store, all or nothing.
#include <algorithm>

#include "qcore/memory/memory.h"
#include "qcore/slates/slate.h"
#include "qcore/store/moment.h"
#include "qcore/store/objects.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::string_view kReferenceName = "$REF";
constexpr std::size_t kUniversalSize = 16;
constexpr std::uint16_t kDocumentClass = 1;
constexpr std::size_t kListCountSize = 2;
constexpr std::size_t kObjectIdAt = 4;  // behind the type word and the object type

// Opening a slate writes nothing; the day of the last save is what is kept.
TIMEDATE DayOf(const TIMEDATE& moment) { return {ENG_TIME_WILD, moment.DateWord}; }

std::optional<std::uint32_t> ObjectIn(Bytes value) {
  if (value.size() < kObjectIdAt + sizeof(std::uint32_t)) return std::nullopt;
  return LoadLittle<std::uint32_t>(value.data() + kObjectIdAt);
}

}  // namespace

// The ID stands behind the type word, or behind a list count there.
ENGSTATUS Slate::Reference(std::optional<UNIVERSALSLATEID>* parent) {
  parent->reset();
  Slot slot = 0;
  if (FindItem(kReferenceName, &slot) != ENG_OK) return ENG_OK;
  Item& item = items_[slot];
  if (item.aside != 0) {
    const ENGSTATUS status = MaterialiseLocked(item);
    if (status != ENG_OK) return status;
  }
  const Bytes value = BytesOf(item);
  std::size_t at = kSmallestValue;
  if (value.size() < at + kUniversalSize) return ENG_OK;
  if ((value.size() - at) % kUniversalSize == kListCountSize) at += kListCountSize;
  *parent = UNIVERSALSLATEID{LoadTime(value.data() + at), LoadTime(value.data() + at + 8)};
  return ENG_OK;
}

ENGSTATUS Slate::Update(std::uint16_t flags) {
  Pending update{this, header_, {}};
  return WriteAll({&update, 1}, flags);
}

ENGSTATUS Slate::UpdateSeveral(std::span<Slate* const> slates, std::uint16_t flags) {
  std::vector<Pending> updates;
  updates.reserve(slates.size());
  for (Slate* slate : slates) {
    const auto same = [slate](const Pending& other) { return other.slate == slate; };
    if (slate->database_ != slates.front()->database_ || std::ranges::any_of(updates, same)) return ENG_ERR_ARGUMENT;
    updates.push_back({slate, slate->header_, {}});
  }
  return WriteAll(updates, flags);
}

ENGSTATUS Slate::WriteAll(std::span<Pending> updates, std::uint16_t flags) {
  for (const Pending& update : updates) {
    const ENGSTATUS status = update.slate->TakeForeignObjects();
    if (status != ENG_OK) return status;
  }
  Slate& first = *updates.front().slate;
  const std::lock_guard lock(first.database_->mutex());
  for (const Pending& update : updates) {
    const ENGSTATUS status = update.slate->CheckLostObjects();
    if (status != ENG_OK) return status;
  }
  Change change(*first.database_);
  const bool one = updates.size() == 1 && first.WritesOnlyRow(flags);
  ENGSTATUS status = change.Begin(one ? Change::Extent::kOneStatement : Change::Extent::kSeveral);
  for (std::size_t i = 0; status == ENG_OK && i < updates.size(); ++i) {
    Pending& update = updates[i];
    status = update.slate->Write(flags, &update.header, &update.drafts);
    if (status == ENG_OK) status = update.slate->NoteOwnSave(update.header);
  }
  if (status == ENG_OK) status = change.Commit();
  if (status != ENG_OK) return status;
  for (const Pending& update : updates) update.slate->Settle(update.header, update.drafts);
  return ENG_OK;
}

// What a user saves is not unread for that user.
ENGSTATUS Slate::NoteOwnSave(const SlateHeader& header) {
  std::uint32_t list = 0;
  const ENGSTATUS status = database_->store().UnreadNumber(database_->user(), &list);
  if (status != ENG_OK || list == 0 || (header.slate_class & kDocumentClass) == 0) return status;
  return database_->store().NoteOwnSave(list, header.id);
}

// Whether an update has no names, large values or objects to write beside the row.
bool Slate::WritesOnlyRow(std::uint16_t flags) const {
  std::uint32_t list = 0;
  if (database_->store().UnreadNumber(database_->user(), &list) != ENG_OK || list != 0) return false;
  if ((flags & ENG_UPDATE_FORCE) != 0 || had_objects_ || !dropped_.empty()) return false;
  return std::ranges::all_of(order_, [this](Slot slot) {
    const Item& item = items_[slot];
    if (item.name->number == 0) return false;
    if (item.aside != 0 && !item.touched) return true;
    const Bytes value = BytesOf(item);
    return item.aside == 0 && item.size <= kPackedValueLimit && !value.empty() &&
           LoadLittle<std::uint16_t>(value.data()) != kObjectType;
  });
}

ENGSTATUS Slate::Write(std::uint16_t flags, SlateHeader* header, std::vector<Draft>* drafts) {
  const bool forced = (flags & ENG_UPDATE_FORCE) != 0;
  std::vector<Store::ValueId> replaced = dropped_;
  ENGSTATUS status = ENG_OK;
  if (!base_) {
    status = database_->store().NewSlateId(&header->id);
  } else if (forced) {
    status = CheckForced(header, &replaced);
  }
  if (status != ENG_OK) return status;
  const TIMEDATE now = Now();
  ++header->origin.Sequence;
  header->origin.SequenceTime = now;
  header->modified = now;
  header->accessed = DayOf(now);
  if (!base_) header->added = now;
  status = Reference(&header->parent);
  if (status == ENG_OK) status = WriteDrafts(*header, drafts, &replaced);
  if (status == ENG_OK) status = WriteRow(flags, header, *drafts);
  for (std::size_t i = 0; status == ENG_OK && i < replaced.size(); ++i) {
    status = database_->store().FreeValue(replaced[i]);
  }
  return status == ENG_OK ? AdoptObjects(header->id, *drafts, flags) : status;
}

// What the other one stored aside goes away with its row. Values of ours that it has replaced are gone already.
ENGSTATUS Slate::CheckForced(SlateHeader* header, std::vector<Store::ValueId>* replaced) {
  std::vector<Store::ValueId> present;
  std::vector<std::uint32_t> objects;
  bool is_other = false;
  ENGSTATUS status = database_->store().ReadSlate(header->id, [&](const SlateHeader& stored, Bytes packed) {
    is_other = stored.origin.Sequence != base_->origin.Sequence ||
               !SameTime(stored.origin.SequenceTime, base_->origin.SequenceTime);
    header->origin.Sequence = std::max(header->origin.Sequence, stored.origin.Sequence);
    PackedReader reader;
    ENGSTATUS read = reader.Start(packed, stored.id);
    for (std::uint32_t i = 0; read == ENG_OK && i < reader.count(); ++i) {
      PackedItem item;
      read = reader.Next(&item);
      if (read == ENG_OK && item.aside != 0) present.push_back(item.aside);
      if (read != ENG_OK || item.type != kObjectType) continue;
      if (const std::optional<std::uint32_t> object = ObjectIn(item.value)) objects.push_back(*object);
    }
    return read;
  });
  if (status == ENG_OK && is_other) status = CheckForcedObjects(objects);
  if (status != ENG_OK) return status;
  const auto is_present = [&present](Store::ValueId value) {
    return std::find(present.begin(), present.end(), value) != present.end();
  };
  std::erase_if(*replaced, [&](Store::ValueId value) { return !is_present(value); });
  for (Slot slot : order_) {
    Item& item = items_[slot];
    if (item.aside == 0) continue;
    if (is_present(item.aside)) {
      std::erase(present, item.aside);
      continue;
    }
    if (item.pool == 0) return ENG_ERR_SLATE_CONFLICT;
    dropped_.push_back(item.aside);  // a rollback may bring it back
    item.aside = 0;
    item.touched = true;
  }
  for (Store::ValueId value : *replaced) std::erase(present, value);
  replaced->insert(replaced->end(), present.begin(), present.end());
  return ENG_OK;
}

ENGSTATUS Slate::CheckForcedObjects(const std::vector<std::uint32_t>& present) {
  for (Slot slot : order_) {
    const Item& item = items_[slot];
    // A value that stands aside and is not read is as the other save has it, or is missed as all such are.
    if (item.type != kObjectType || !item.stored || item.foreign || (item.aside != 0 && item.pool == 0)) continue;
    const std::optional<std::uint32_t> object = ObjectIn(BytesOf(item));
    const bool named = object && std::find(present.begin(), present.end(), *object) != present.end();
    if (!named && IsObjectGone(item)) return ENG_ERR_SLATE_CONFLICT;
  }
  return ENG_OK;
}

ENGSTATUS Slate::WriteDrafts(const SlateHeader& header, std::vector<Draft>* drafts,
                             std::vector<Store::ValueId>* replaced) {
  drafts->reserve(order_.size());
  const memory::LockedBlock block(packed_);
  for (Slot slot : order_) {
    const Item& item = items_[slot];
    PackedItem packed;
    ENGSTATUS status = database_->names().Number(database_->store(), item.name, &packed.name);
    if (status != ENG_OK) return status;
    packed.flags = item.flags;
    packed.type = item.type;
    packed.size = item.size;
    packed.modified = item.changed ? header.modified : item.modified;
    if (item.kept_size != 0) packed.kept = Bytes(block.bytes() + item.kept_at, item.kept_size);
    status = WriteValue(item, &packed, replaced);
    if (status != ENG_OK) return status;
    drafts->push_back({slot, packed});
  }
  return ENG_OK;
}

ENGSTATUS Slate::WriteValue(const Item& item, PackedItem* packed, std::vector<Store::ValueId>* replaced) {
  if (item.aside != 0 && !item.touched) {
    packed->aside = item.aside;
    return ENG_OK;
  }
  const Bytes value = BytesOf(item);
  if (value.empty()) return ENG_ERR_ITEM_DAMAGED;
  if (item.aside != 0) replaced->push_back(item.aside);
  packed->type = LoadLittle<std::uint16_t>(value.data());
  if (item.size > kPackedValueLimit) return database_->store().WriteValue(value, &packed->aside);
  packed->value = value;
  return ENG_OK;
}

ENGSTATUS Slate::WriteRow(std::uint16_t flags, SlateHeader* header, const std::vector<Draft>& drafts) {
  std::size_t room = rest_size_;
  for (const Draft& draft : drafts) room += draft.packed.value.size() + draft.packed.kept.size();
  PackedWriter writer(static_cast<std::uint32_t>(drafts.size()), room);
  for (const Draft& draft : drafts) writer.Add(draft.packed);
  const memory::LockedBlock block(packed_);
  const Bytes rest = rest_size_ != 0 ? Bytes(block.bytes() + rest_at_, rest_size_) : Bytes();
  const Bytes packed = writer.Finish(rest, header->id);
  if (!base_) return database_->store().InsertSlate(header, packed);
  const ORIGINATORID& origin = header->origin;
  const bool same_universal = SameTime(origin.File, base_->origin.File) && SameTime(origin.Slate, base_->origin.Slate);
  const bool same_parent = header->parent.has_value() == base_->parent.has_value() &&
                           (!header->parent || (SameTime(header->parent->File, base_->parent->File) &&
                                                SameTime(header->parent->Slate, base_->parent->Slate)));
  const bool same_kind = header->slate_class == base_->slate_class && header->flags == base_->flags;
  const SlateVersion expected{base_->origin.Sequence, base_->origin.SequenceTime,
                              same_universal && same_parent && same_kind};
  Store& store = database_->store();
  const ENGSTATUS status = store.UpdateSlate(header, packed, (flags & ENG_UPDATE_FORCE) != 0 ? nullptr : &expected);
  return status == ENG_OK && !same_universal ? store.NoteRenamed() : status;
}

ENGSTATUS Slate::AppendForeign(std::string_view name, Bytes data, const Objects& objects, Slot* slot) {
  const bool other = foreign_.database && (foreign_.database != objects.database || foreign_.owner != objects.owner);
  ENGSTATUS status = other ? TakeForeignObjects() : ENGSTATUS{ENG_OK};
  if (status == ENG_OK) status = Append(0, name, kObjectType, data, slot);
  if (status != ENG_OK) return status;
  items_[*slot].foreign = true;
  foreign_ = objects;
  if (const std::optional<std::uint32_t> object = ObjectIn(BytesOf(items_[*slot]))) {
    ClaimObject(objects.database, *object);
  }
  return ENG_OK;
}

ENGSTATUS Slate::TakeForeignObjects() {
  if (!foreign_.database) return ENG_OK;
  for (Slot slot : order_) {
    const ENGSTATUS status = items_[slot].foreign ? TakeForeignObject(slot) : ENGSTATUS{ENG_OK};
    if (status != ENG_OK) return status;
  }
  foreign_ = {};
  return ENG_OK;
}

// A record that has outlived its object names none afterwards: the number may be that of any object here.
ENGSTATUS Slate::TakeForeignObject(Slot slot) {
  Item& item = items_[slot];
  const std::optional<std::uint32_t> object = ObjectIn(BytesOf(item));
  ObjectInfo info{};
  std::uint32_t copy = 0;
  ENGSTATUS status = object ? GetObjectInfo(*foreign_.database, *object, &info) : ENGSTATUS{ENG_ERR_NO_OBJECT};
  if (status == ENG_OK && info.owner != 0 && info.owner != foreign_.owner) status = ENG_ERR_NO_OBJECT;
  if (status == ENG_OK) status = CopyObject(*foreign_.database, *object, *database_, &copy);
  if (status != ENG_OK && status != ENG_ERR_NO_OBJECT) return status;
  item.foreign = false;
  if (!object) return ENG_OK;
  SetObjectIn(item, copy);
  if (copy != 0) ClaimObject(database_, copy);
  const std::lock_guard lock(database_->mutex());
  if (database_->transaction() != 0) taken_.push_back({database_->transaction(), slot, *object, foreign_});
  return ENG_OK;
}

void Slate::SetObjectIn(Item& item, std::uint32_t object) {
  const std::span<std::uint8_t> block = memory::BytesOf(item.pool != 0 ? item.pool : packed_);
  const std::size_t at = (item.pool != 0 ? item.offset : item.packed_at) + kObjectIdAt;
  if (at + sizeof object <= block.size()) StoreLittle(block.data() + at, object);
}

void Slate::GiveBackForeignObjects(std::uint64_t transaction) {
  for (const Taken& taken : taken_) {
    if (taken.transaction != transaction || !items_[taken.slot].live) continue;
    SetObjectIn(items_[taken.slot], taken.object);
    items_[taken.slot].foreign = true;
    foreign_ = taken.from;
  }
  taken_.clear();
}

// A slate that was never saved has reserved objects, which are the first one's to be saved.
ENGSTATUS Slate::TakeCopiedObjects() {
  const ENGSTATUS status = TakeForeignObjects();
  if (status != ENG_OK) return status;
  for (const Slot slot : order_) {
    items_[slot].foreign = items_[slot].type == kObjectType;
    if (items_[slot].foreign) foreign_ = OwnObjects();
  }
  return TakeForeignObjects();
}

void Slate::ClaimObject(const std::shared_ptr<Database>& database, std::uint32_t object) {
  claims_.reserve(claims_.size() + 1);
  const std::lock_guard lock(database->mutex());
  if (database->Claim(object)) claims_.push_back({database, object});
}

void Slate::GiveUpObjects() {
  while (!claims_.empty()) {
    const std::shared_ptr<Database> database = claims_.back().database;
    std::vector<std::uint32_t> objects;
    for (const Claim& claim : claims_) {
      if (claim.database == database) objects.push_back(claim.object);
    }
    std::erase_if(claims_, [&database](const Claim& claim) { return claim.database == database; });
    database->GiveUp(objects);
  }
}

void Slate::NoteObject(Slot slot) {
  if (const std::optional<std::uint32_t> object = ObjectIn(BytesOf(items_[slot]))) ClaimObject(database_, *object);
  const std::lock_guard lock(database_->mutex());
  const std::uint64_t transaction = database_->transaction();
  if (transaction == 0) return;
  std::erase_if(noted_, [transaction](const Noted& noted) { return noted.transaction != transaction; });
  noted_.push_back({transaction, slot});
}

bool Slate::IsObjectGone(const Item& item) {
  const std::optional<std::uint32_t> object = ObjectIn(BytesOf(item));
  ObjectInfo info{};
  return object && database_->store().GetObject(*object, &info) == ENG_ERR_NO_OBJECT;
}

void Slate::FindLostObjects(std::uint64_t transaction) {
  for (const Noted& noted : noted_) {
    Item& item = items_[noted.slot];
    if (noted.transaction == transaction && item.live) item.lost = IsObjectGone(item);
  }
  noted_.clear();
}

ENGSTATUS Slate::CheckLostObjects() {
  for (const Slot slot : order_) {
    Item& item = items_[slot];
    if (item.lost) item.lost = IsObjectGone(item);
    if (item.lost) return ENG_ERR_NO_OBJECT;
  }
  return ENG_OK;
}

ENGSTATUS Slate::NamedObjects(const std::vector<Draft>& drafts, std::vector<std::uint32_t>* named) {
  for (const Draft& draft : drafts) {
    if (draft.packed.type != kObjectType) continue;
    Item& item = items_[draft.slot];
    const ENGSTATUS status = draft.packed.value.empty() ? MaterialiseLocked(item) : ENGSTATUS{ENG_OK};
    if (status != ENG_OK) return status;
    const std::optional<std::uint32_t> object = ObjectIn(BytesOf(item));
    if (object) named->push_back(*object);
  }
  return ENG_OK;
}

// Reserved objects that an item names become the slate's; those of the slate that no item names any more go away.
// What a save that is overwritten has brought may be there even if this slate never had any.
ENGSTATUS Slate::AdoptObjects(std::uint32_t id, const std::vector<Draft>& drafts, std::uint16_t flags) {
  Store& store = database_->store();
  std::vector<std::uint32_t> named;
  ENGSTATUS status = NamedObjects(drafts, &named);
  const bool forced = (flags & ENG_UPDATE_FORCE) != 0;
  if (status != ENG_OK || (named.empty() && !had_objects_ && !forced)) return status;
  std::vector<std::uint32_t> owned;
  status = store.FindObjects(id, &owned);
  for (std::size_t i = 0; status == ENG_OK && i < named.size(); ++i) {
    ObjectInfo info{};
    status = store.GetObject(named[i], &info);
    if (status == ENG_OK && info.owner == 0) status = store.SetObjectOwner(named[i], id);
    if (status == ENG_ERR_NO_OBJECT) status = ENG_OK;  // a record may outlive its object
  }
  for (std::size_t i = 0; status == ENG_OK && i < owned.size(); ++i) {
    if (std::find(named.begin(), named.end(), owned[i]) == named.end()) status = store.FreeObject(owned[i]);
  }
  return status;
}

void Slate::Settle(const SlateHeader& header, const std::vector<Draft>& drafts) {
  const std::uint64_t transaction = database_->transaction();
  if (transaction != 0 && (!saved_ || saved_->transaction != transaction)) {
    saved_ = std::make_unique<Saved>(Saved{transaction, header_, base_, items_, dropped_});
  }
  header_ = header;
  base_ = header;
  had_objects_ = false;
  for (const Draft& draft : drafts) {
    Item& item = items_[draft.slot];
    item.aside = draft.packed.aside;
    item.type = draft.packed.type;
    item.modified = draft.packed.modified;
    item.stored = true;
    item.changed = false;
    item.touched = false;
    had_objects_ = had_objects_ || item.type == kObjectType;
  }
  dropped_.clear();
  ForgetSetAside();
  modified_ = false;
}

// Values changed since stay as they are; what was noted about the store goes back, and all is to be written again.
void Slate::RevertTo(std::uint64_t transaction) {
  GiveBackForeignObjects(transaction);
  FindLostObjects(transaction);
  if (!saved_ || saved_->transaction != transaction) return;
  ForgetSetAside();
  header_.id = saved_->header.id;
  header_.added = saved_->header.added;
  header_.origin.Sequence = saved_->header.origin.Sequence;
  header_.origin.SequenceTime = saved_->header.origin.SequenceTime;
  base_ = saved_->base;
  dropped_ = saved_->dropped;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    Item& item = items_[i];
    const Item* before = i < saved_->items.size() ? &saved_->items[i] : nullptr;
    item.stored = before && before->stored;
    item.changed = true;
    item.touched = item.pool != 0;  // one that was never read is as it was stored
    if (!before || before->aside == 0) {
      item.aside = 0;
      continue;
    }
    if (!item.live) dropped_.push_back(before->aside);
    if (item.live) item.aside = before->aside;
  }
  std::sort(dropped_.begin(), dropped_.end());
  dropped_.erase(std::unique(dropped_.begin(), dropped_.end()), dropped_.end());
  modified_ = true;
  saved_.reset();
}

}  // namespace qcore
