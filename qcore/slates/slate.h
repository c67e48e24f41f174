// An open slate: a private copy of a slate's header and items.
//
// The packed value of the row lies in one block of engine memory, in which small values are addressed in place; small
// new values share blocks, grown and large ones have their own, and what is stored aside is read when it is asked for.
// A slate is used by one thread at a time; what touches the store takes the database's mutex.
#ifndef QUILLON_QCORE_SLATES_SLATE_H
#define QUILLON_QCORE_SLATES_SLATE_H

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "engine/slate.h"
#include "qcore/memory/memory.h"
#include "qcore/slates/packed.h"
#include "qcore/slates/value_room.h"
#include "qcore/store/database.h"

namespace qcore {

class Slate final : public OpenSlate {
 public:
  // The place of an item among `items_`; part of the item's identity for clients.
  using Slot = std::uint16_t;
  static constexpr std::size_t kMostItems = 65535;

  struct Value {
    BLOCKID place;
    std::uint32_t size;
    std::uint16_t type;
  };

  [[nodiscard]] static ENGSTATUS Create(std::shared_ptr<Database> database, ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Open(std::shared_ptr<Database> database, std::uint32_t id, ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Close(ENGHANDLE handle);
  static Slate* Find(ENGHANDLE handle) { return handle_table.FindAs<Slate>(Kind::kSlate, handle); }

  explicit Slate(std::shared_ptr<Database> database) : database_(std::move(database)) {}
  Slate(const Slate&) = delete;
  Slate& operator=(const Slate&) = delete;
  ~Slate();

  ENGHANDLE handle() const { return handle_; }
  Database& database() const { return *database_; }
  const std::shared_ptr<Database>& shared_database() const { return database_; }
  const SlateHeader& header() const { return header_; }
  bool is_modified() const { return modified_; }
  [[nodiscard]] ENGSTATUS Copy(ENGHANDLE* copy);

  // Header.
  void SetClass(std::uint16_t slate_class);
  void SetFlags(std::uint16_t flags);
  void SetOrigin(const ORIGINATORID& origin);
  // 0 makes it a new slate; any other ID but its own is refused.
  [[nodiscard]] ENGSTATUS SetId(std::uint32_t id);
  [[nodiscard]] ENGSTATUS SetDatabase(std::shared_ptr<Database> database);
  [[nodiscard]] ENGSTATUS GetParent(std::uint32_t* id);
  // The table stays the slate's.
  [[nodiscard]] ENGSTATUS GetResponses(ENGHANDLE* table);
  [[nodiscard]] ENGSTATUS GetResponseCount(std::uint32_t* count);
  [[nodiscard]] ENGSTATUS GetSize(std::uint32_t* size);

  // Items. Slots come from the Find functions and SlotOf and are good until the item is deleted.
  [[nodiscard]] ENGSTATUS SlotOf(BLOCKID item, Slot* slot) const;
  BLOCKID IdOf(Slot slot) const { return {handle_, slot}; }
  // ENG_ERR_NO_ITEM.
  [[nodiscard]] ENGSTATUS FindItem(std::string_view name, Slot* slot) const;
  // With the name's FoldedHash at hand.
  [[nodiscard]] ENGSTATUS FindHashed(std::uint32_t hash, std::string_view name, Slot* slot) const {
    return Search(0, hash, name, slot);
  }
  [[nodiscard]] ENGSTATUS FindNextItem(Slot previous, std::string_view name, Slot* slot) const;
  std::uint32_t ItemCount() const { return static_cast<std::uint32_t>(order_.size()); }
  [[nodiscard]] ENGSTATUS ItemAt(std::uint32_t index, Slot* slot) const;
  std::string_view NameOf(Slot slot) const { return items_[slot].name->text; }
  std::uint16_t FlagsOf(Slot slot) const { return items_[slot].flags; }
  // Type and size, without reading the value.
  Value FactsOf(Slot slot) const { return {{0, 0}, items_[slot].size, items_[slot].type}; }
  // Where the value of an item that was appended or reallocated lies.
  BLOCKID PlaceOf(Slot slot) const { return {items_[slot].pool, items_[slot].offset}; }
  // Reads a value that stands aside.
  [[nodiscard]] ENGSTATUS GetValue(Slot slot, Value* value);
  // The value's bytes, the type word first; good until the slate changes.
  [[nodiscard]] ENGSTATUS GetBytes(Slot slot, Bytes* bytes);
  TIMEDATE ModifiedOf(Slot slot) const;
  // Where the objects are that object values name, and which slate owns them.
  struct Objects {
    std::shared_ptr<Database> database;
    std::uint32_t owner = 0;
  };
  Objects OwnObjects() const { return {database_, header_.id}; }
  // Those of a slate that has become a new one are still the old one's, until the next update copies them.
  Objects ObjectsOf(Slot slot) const { return items_[slot].foreign ? foreign_ : OwnObjects(); }

  [[nodiscard]] ENGSTATUS Append(std::uint16_t flags, std::string_view name, std::uint16_t type, Bytes data,
                                 Slot* slot);
  [[nodiscard]] ENGSTATUS AppendBlock(std::uint16_t flags, std::string_view name, ENGHANDLE memory, std::uint32_t size,
                                      Slot* slot);
  // An item that was just appended for an object that is there: one that is reserved goes with the last slate that was
  // given it, unless it was saved. When a rollback takes it away, an update fails with ENG_ERR_NO_OBJECT until the item
  // goes or names another one.
  void NoteObject(Slot slot);
  // A value that names an object of another slate, which an update copies, or the next value from a third one.
  [[nodiscard]] ENGSTATUS AppendForeign(std::string_view name, Bytes data, const Objects& objects, Slot* slot);
  [[nodiscard]] ENGSTATUS ReplaceBlock(Slot slot, ENGHANDLE memory, std::uint32_t size);
  [[nodiscard]] ENGSTATUS Reallocate(Slot slot, std::uint32_t size);
  void Touch(Slot slot);
  void SetItemFlags(Slot slot, std::uint16_t flags);
  [[nodiscard]] ENGSTATUS Delete(Slot slot);
  [[nodiscard]] ENGSTATUS DeleteByName(std::string_view name);
  // Whether an item of the name can't be deleted now, as somebody has its value locked.
  bool HasLocked(std::string_view name) const;
  [[nodiscard]] ENGSTATUS Rename(Slot slot, std::string_view name);
  // Items that go, and may come back at the end until the next one is added or renamed or the slate is updated:
  // ENG_ERR_NO_ITEM from then on, and for places that are not there; ENG_ERR_MEMORY_LOCKED.
  [[nodiscard]] ENGSTATUS SetAside(std::uint32_t first, std::uint32_t count);
  [[nodiscard]] ENGSTATUS RestoreSetAside();

  // Replaces all items of the name by one summary text of at most `limit` bytes.
  [[nodiscard]] ENGSTATUS SetText(std::string_view name, std::string_view text, std::size_t limit);

  [[nodiscard]] ENGSTATUS Update(std::uint16_t flags);
  // Different slates of one database, all or none: ENG_ERR_ARGUMENT for others.
  [[nodiscard]] static ENGSTATUS UpdateSeveral(std::span<Slate* const> slates, std::uint16_t flags);
  void RevertTo(std::uint64_t transaction) override;
  void CloseWithDatabase() override;

 private:
  friend ENGSTATUS ReadValueOf(const std::shared_ptr<Database>&, std::uint32_t, std::string_view,
                               const std::function<void(Bytes, std::uint16_t)>&);

  struct Item {
    const ItemName* name = nullptr;
    Store::ValueId aside = 0;  // where the stored value is, 0 when it is packed or not stored
    TIMEDATE modified{};
    ENGHANDLE pool = 0;  // 0 while the value is not in memory by itself
    std::uint32_t size = 0;
    std::uint32_t packed_at = 0;  // where an untouched small value lies in the packed block
    std::uint32_t kept_at = 0;    // bytes that are kept, in the packed block
    std::uint32_t kept_size = 0;
    std::uint16_t offset = 0;  // in `pool`
    std::uint16_t flags = 0;
    std::uint16_t type = 0;
    bool live = true;
    bool own_block = false;
    bool stored = false;   // the time is that of a stored item
    bool changed = false;  // anything of it
    bool touched = false;  // the value
    bool foreign = false;  // names an object of `foreign_`
    bool lost = false;     // its object went with a rollback
  };
  struct NewValue {
    ENGHANDLE pool = 0;
    std::uint32_t size = 0;
    std::uint16_t offset = 0;
    std::uint16_t type = 0;
    bool own_block = false;
  };
  // What an update leaves behind in memory, kept for a client's rollback.
  struct Saved {
    std::uint64_t transaction;
    SlateHeader header;
    std::optional<SlateHeader> base;
    std::vector<Item> items;
    std::vector<Store::ValueId> dropped;
  };
  // An object number that a copy's has replaced, kept for a client's rollback, with which the copy goes.
  struct Taken {
    std::uint64_t transaction;
    Slot slot;
    std::uint32_t object;
    Objects from;
  };
  // An item that was appended for an object within a client's transaction.
  struct Noted {
    std::uint64_t transaction;
    Slot slot;
  };
  // The names of many items, so that a search reads few lines of memory: their hashes in the order of the items, and a
  // bit for each that is there or was.
  struct ManyNames {
    static constexpr std::size_t kBitsEach = 16;
    std::vector<std::uint32_t> hashes;
    std::vector<std::uint64_t> bits;

    void Clear() { hashes.clear(); }
    void Reserve(std::size_t count);
    bool MayHave(std::uint32_t hash) const { return (bits[Word(hash)] >> (hash & 63) & 1) != 0; }
    void Add(std::uint32_t hash) {
      hashes.push_back(hash);
      bits[Word(hash)] |= std::uint64_t{1} << (hash & 63);
    }
    bool IsFull() const { return hashes.size() * kBitsEach >= bits.size() * 64; }

   private:
    std::size_t Word(std::uint32_t hash) const { return hash >> 6 & (bits.size() - 1); }
  };
  // What an update writes for one item.
  struct Draft {
    Slot slot;
    PackedItem packed;
  };
  // A reserved object that was given to the slate.
  struct Claim {
    std::shared_ptr<Database> database;
    std::uint32_t object;
  };
  // A slate with what its update writes, which it becomes when that is stored.
  struct Pending {
    Slate* slate;
    SlateHeader header;
    std::vector<Draft> drafts;
  };
  static constexpr std::uint16_t kObjectType = 3;

  [[nodiscard]] static ENGSTATUS Publish(std::unique_ptr<Slate> slate, ENGHANDLE* handle);
  [[nodiscard]] ENGSTATUS Load(const SlateHeader& header, Bytes packed);
  [[nodiscard]] ENGSTATUS LoadItem(const PackedItem& packed, const std::uint8_t* start);
  [[nodiscard]] ENGSTATUS Materialise(Item& item);
  [[nodiscard]] ENGSTATUS MaterialiseLocked(Item& item);
  [[nodiscard]] ENGSTATUS MakeNew();
  [[nodiscard]] ENGSTATUS TakeSlot(Slot* slot);
  [[nodiscard]] ENGSTATUS AddItem(std::uint16_t flags, std::string_view name, const NewValue& value, Slot* slot);
  void ForgetSetAside();
  [[nodiscard]] ENGSTATUS MoveToOwnBlock(Item& item, Bytes bytes, std::uint32_t size);
  [[nodiscard]] ENGSTATUS Search(std::size_t first, std::uint32_t hash, std::string_view name, Slot* slot) const;
  const ManyNames& Many() const;
  std::size_t NextOfHash(std::size_t first, std::uint32_t hash) const;
  [[nodiscard]] ENGSTATUS CopyItem(const Slate& from, const Item& source);
  static std::uint64_t NameBit(std::uint32_t hash) { return std::uint64_t{1} << (hash & 63); }
  bool IsLocked(const Item& item) const;
  // The value's bytes, for a value in memory; empty when a client has freed its block.
  Bytes BytesOf(const Item& item) const;
  // The universal ID in $REF, which is read if it stands aside. With the database's mutex held.
  [[nodiscard]] ENGSTATUS Reference(std::optional<UNIVERSALSLATEID>* parent);
  void ReleaseValue(Item& item);

  bool WritesOnlyRow(std::uint16_t flags) const;
  [[nodiscard]] static ENGSTATUS WriteAll(std::span<Pending> updates, std::uint16_t flags);
  [[nodiscard]] ENGSTATUS NoteOwnSave(const SlateHeader& header);
  [[nodiscard]] ENGSTATUS Write(std::uint16_t flags, SlateHeader* header, std::vector<Draft>* drafts);
  [[nodiscard]] ENGSTATUS CheckForced(SlateHeader* header, std::vector<Store::ValueId>* replaced);
  // Whether an object that an item names has gone with the save that is overwritten, which names `present`.
  [[nodiscard]] ENGSTATUS CheckForcedObjects(const std::vector<std::uint32_t>& present);
  [[nodiscard]] ENGSTATUS WriteDrafts(const SlateHeader& header, std::vector<Draft>* drafts,
                                      std::vector<Store::ValueId>* replaced);
  [[nodiscard]] ENGSTATUS WriteValue(const Item& item, PackedItem* packed, std::vector<Store::ValueId>* replaced);
  [[nodiscard]] ENGSTATUS WriteRow(std::uint16_t flags, SlateHeader* header, const std::vector<Draft>& drafts);
  // The object numbers in the values of the drafts.
  [[nodiscard]] ENGSTATUS NamedObjects(const std::vector<Draft>& drafts, std::vector<std::uint32_t>* named);
  [[nodiscard]] ENGSTATUS AdoptObjects(std::uint32_t id, const std::vector<Draft>& drafts, std::uint16_t flags);
  void ClaimObject(const std::shared_ptr<Database>& database, std::uint32_t object);
  void GiveUpObjects();
  // Gives the values that name objects of `foreign_` copies of them.
  [[nodiscard]] ENGSTATUS TakeForeignObjects();
  [[nodiscard]] ENGSTATUS TakeForeignObject(Slot slot);
  void SetObjectIn(Item& item, std::uint32_t object);
  void GiveBackForeignObjects(std::uint64_t transaction);
  // For a new slate: the objects that only a copy of it named yet.
  [[nodiscard]] ENGSTATUS TakeCopiedObjects();
  bool IsObjectGone(const Item& item);
  void FindLostObjects(std::uint64_t transaction);
  [[nodiscard]] ENGSTATUS CheckLostObjects();
  void Settle(const SlateHeader& header, const std::vector<Draft>& drafts);
  void Drop(Slot slot);

  std::shared_ptr<Database> database_;
  ENGHANDLE handle_ = 0;
  SlateHeader header_;
  std::optional<SlateHeader> base_;  // the stored state that an update builds on; none for a new slate
  ENGHANDLE packed_ = 0;
  ValueRoom room_;
  std::uint32_t rest_at_ = 0;  // bytes behind the records
  std::uint32_t rest_size_ = 0;
  std::vector<Item> items_;        // by slot
  std::vector<Slot> order_;        // live items as they were added
  mutable ManyNames many_;         // once somebody has searched many items
  std::uint64_t names_there_ = 0;  // a bit for each name that an item has or had, most of them different
  std::vector<std::pair<Slot, Item>> set_aside_;
  std::vector<Store::ValueId> dropped_;  // stored values of deleted items, freed by the next update
  ENGHANDLE responses_ = 0;
  bool modified_ = false;
  bool had_objects_ = false;
  Objects foreign_;
  std::vector<Taken> taken_;
  std::vector<Noted> noted_;
  std::vector<Claim> claims_;
  std::unique_ptr<Saved> saved_;
};

inline Bytes Slate::BytesOf(const Item& item) const {
  const Bytes block = memory::BytesOf(item.pool != 0 ? item.pool : packed_);
  const std::uint32_t start = item.pool != 0 ? item.offset : item.packed_at;
  if (start > block.size() || item.size > block.size() - start) return {};
  return block.subspan(start, item.size);
}

// Names have 1 to 65,535 bytes, none of them 0.
bool IsItemName(std::string_view name);
// Reads one item of a stored slate without a handle: the first of that name, while `reader` runs.
[[nodiscard]] ENGSTATUS ReadValueOf(const std::shared_ptr<Database>& database, std::uint32_t id, std::string_view name,
                                    const std::function<void(Bytes, std::uint16_t)>& reader);
// Reads every value of a stored slate, with the database's mutex held, and adds the large ones to `values`; one that is
// there already has two owners, which is damage.
[[nodiscard]] ENGSTATUS CheckSlate(Database& database, std::uint32_t id, std::set<Store::ValueId>* values);

}  // namespace qcore

#endif
