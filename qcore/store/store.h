// What the engine asks of a place that keeps one database.
//
// Everything above this interface is the same for every kind of store. A store is used by one thread at a time: its
// owner, `Database`, serialises. Operations that write run between Begin and Commit; a failed one leaves the
// transaction to be rolled back unless it says otherwise.
#ifndef QUILLON_QCORE_STORE_STORE_H
#define QUILLON_QCORE_STORE_STORE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"
#include "qcore/store/textquery.h"

namespace qcore {

using Bytes = std::span<const std::uint8_t>;

// The header members of a slate, as they are stored.
struct SlateHeader {
  std::uint32_t id = 0;
  std::uint16_t slate_class = 0;
  std::uint16_t flags = 0;
  bool deleted = false;  // a deletion stub: it has a header and no items
  ORIGINATORID origin{};
  TIMEDATE modified{};
  TIMEDATE modified_here{};  // never falls along the change feed
  TIMEDATE added{};
  TIMEDATE accessed{};
  std::optional<UNIVERSALSLATEID> parent;  // from $REF
};

// The state of a slate that an update builds on.
struct SlateVersion {
  std::uint32_t sequence;
  TIMEDATE sequence_time;
  bool same_place;  // none of the universal ID, the parent, the class and the flags differs from that state
};

// A row of the change feed.
struct FeedEntry {
  std::uint32_t id;
  std::uint16_t slate_class;
  bool deleted;
};

struct ObjectInfo {
  std::uint32_t size;
  std::uint16_t object_class;
  std::uint32_t owner;  // slate ID, 0 while reserved
};

// An entry of the change feed by number: the change that a slate was last in.
struct NumberedEntry {
  std::uint64_t feed;
  FeedEntry entry;
};

// A user's stored unread list.
struct UnreadList {
  std::uint32_t user = 0;  // number of the list, 0 when there is none
  std::uint64_t feed = 0;  // the change that it stands for
  std::vector<std::uint8_t> ids;
};

// Settings by number. Values are bytes in stored form.
enum class Setting : int {
  kFloors = 1,  // the store's own: numbers that were given out and have no row any more
  kClass = 2,
  kFileId = 3,
  kReplica = 4,
  kInfo = 5,
  kBuild = 6,
  kFullText = 7,
  kTrimmed = 8,  // the store's own: entries that have gone from the change feed
  kRenamed = 9,  // the store's own: see LastRenamed
};

// The numbers of the pages of a slate.
inline constexpr std::uint64_t kPagesOfSlate = std::uint64_t{1} << 34;
inline std::uint64_t FirstPageOf(std::uint32_t slate) { return (slate / 4) * kPagesOfSlate; }

class Store {
 public:
  // A large value's number: never used twice in a store, so that a number read earlier is either gone or still means
  // the same bytes.
  using ValueId = std::uint64_t;

  virtual ~Store() = default;

  // Takes the store's write lock. ENG_ERR_DB_IN_USE when it cannot be had in time, ENG_ERR_DB_FAILED_SYNC after a
  // failed sync.
  [[nodiscard]] virtual ENGSTATUS Begin() = 0;
  // Durable when it returns ENG_OK; otherwise nothing of the transaction is left.
  [[nodiscard]] virtual ENGSTATUS Commit() = 0;
  virtual void Rollback() = 0;
  // A part of a transaction that can be undone alone.
  [[nodiscard]] virtual ENGSTATUS Mark() = 0;
  [[nodiscard]] virtual ENGSTATUS ReleaseMark() = 0;
  virtual void RollbackToMark() = 0;
  // False once a failure has ended the transaction by itself.
  virtual bool InTransaction() const = 0;
  // Reads between these see one state. Nested use is the caller's error.
  [[nodiscard]] virtual ENGSTATUS BeginRead() = 0;
  virtual void EndRead() = 0;

  // Slates. `packed` is given the row's packed value, valid during the call only; it is not called for a
  // deletion stub. ENG_ERR_NO_SLATE for an ID that has no row.
  using PackedReader = std::function<ENGSTATUS(const SlateHeader&, Bytes)>;
  [[nodiscard]] virtual ENGSTATUS ReadSlate(std::uint32_t id, const PackedReader& reader) = 0;
  // Every slate that is no deletion stub from ID `first` on, in order, until the reader gives false; a damaged row is
  // passed over.
  using SlateScanner = std::function<bool(const SlateHeader&, Bytes)>;
  [[nodiscard]] virtual ENGSTATUS ScanSlates(std::uint32_t first, const SlateScanner& scanner) = 0;
  [[nodiscard]] virtual ENGSTATUS ReadHeader(std::uint32_t id, SlateHeader* header) = 0;
  [[nodiscard]] virtual ENGSTATUS NewSlateId(std::uint32_t* id) = 0;
  // Both set modified_here, and put the slate at the end of the change feed.
  [[nodiscard]] virtual ENGSTATUS InsertSlate(SlateHeader* header, Bytes packed) = 0;
  // With `expected`, ENG_ERR_SLATE_CONFLICT when the row is not of that version; ENG_ERR_SLATE_DELETED for a
  // deletion stub; ENG_ERR_NO_SLATE. These three change nothing.
  [[nodiscard]] virtual ENGSTATUS UpdateSlate(SlateHeader* header, Bytes packed, const SlateVersion* expected) = 0;
  // The change in which a slate last got another universal ID, which those that refer to it do not follow; 0 for none.
  [[nodiscard]] virtual ENGSTATUS LastRenamed(std::uint64_t* feed) = 0;
  // Of the slate that was updated last.
  [[nodiscard]] virtual ENGSTATUS NoteRenamed() = 0;
  // Turns the row into a deletion stub with the header's origin.
  [[nodiscard]] virtual ENGSTATUS MakeDeletionStub(SlateHeader* header) = 0;
  [[nodiscard]] virtual ENGSTATUS RemoveSlate(const SlateHeader& header) = 0;

  // Large values beside the slates.
  [[nodiscard]] virtual ENGSTATUS WriteValue(Bytes bytes, ValueId* value) = 0;
  // Exactly `size` bytes; ENG_ERR_SLATE_CONFLICT when the value is gone, ENG_ERR_DB_DAMAGED when parts are missing.
  [[nodiscard]] virtual ENGSTATUS ReadValue(ValueId value, std::uint32_t size, std::uint8_t* target) = 0;
  [[nodiscard]] virtual ENGSTATUS FreeValue(ValueId value) = 0;

  // Item names, numbered from 1 without gaps.
  using NameReader = std::function<void(std::uint32_t, std::string_view)>;
  [[nodiscard]] virtual ENGSTATUS ReadNames(std::uint32_t first, const NameReader& reader) = 0;
  [[nodiscard]] virtual ENGSTATUS AddName(std::uint32_t number, std::string_view name) = 0;

  // Searches. ID lists come in ascending order.
  // Entries changed at or after `since` (null: all), newest first.
  using FeedReader = std::function<void(const FeedEntry&)>;
  [[nodiscard]] virtual ENGSTATUS ReadFeed(const TIMEDATE* since, const FeedReader& reader) = 0;
  // The change feed by number, oldest first: entries behind change `behind`. A slate that went without a deletion stub
  // is in it as a deleted one. FeedEnd is the number of the last change.
  using NumberedReader = std::function<void(const NumberedEntry&)>;
  [[nodiscard]] virtual ENGSTATUS ReadFeedBehind(std::uint64_t behind, const NumberedReader& reader) = 0;
  [[nodiscard]] virtual ENGSTATUS FeedEnd(std::uint64_t* feed) = 0;
  // The time of the last change in classes 1 (`kData`) or any other (`kDesign`); all zero when there was none.
  enum class Part { kData, kDesign };
  [[nodiscard]] virtual ENGSTATUS LastChange(Part part, TIMEDATE* moment) = 0;
  // A time that no later change can lie before, for a search that has just been made.
  [[nodiscard]] virtual ENGSTATUS SearchHorizon(TIMEDATE* moment) = 0;
  // ENG_ERR_NO_SLATE. A row that is no deletion stub goes before one.
  [[nodiscard]] virtual ENGSTATUS FindUniversal(const UNIVERSALSLATEID& universal, std::uint32_t* id) = 0;
  [[nodiscard]] virtual ENGSTATUS FindResponses(const UNIVERSALSLATEID& parent, std::vector<std::uint32_t>* ids) = 0;
  // Slates other than documents with a class bit of `mask`.
  [[nodiscard]] virtual ENGSTATUS FindDesign(std::uint16_t mask, std::vector<FeedEntry>* entries) = 0;

  // A missing setting gives ENG_OK and no bytes.
  [[nodiscard]] virtual ENGSTATUS GetSetting(Setting setting, std::vector<std::uint8_t>* value) = 0;
  [[nodiscard]] virtual ENGSTATUS SetSetting(Setting setting, Bytes value) = 0;

  // Objects; ENG_ERR_NO_OBJECT.
  [[nodiscard]] virtual ENGSTATUS CreateObject(std::uint16_t object_class, std::uint32_t* object) = 0;
  [[nodiscard]] virtual ENGSTATUS GetObject(std::uint32_t object, ObjectInfo* info) = 0;
  [[nodiscard]] virtual ENGSTATUS ReadObject(std::uint32_t object, std::uint32_t offset,
                                             std::span<std::uint8_t> out) = 0;
  [[nodiscard]] virtual ENGSTATUS WriteObject(std::uint32_t object, std::uint32_t offset, Bytes bytes) = 0;
  // Cuts or extends with zero bytes.
  [[nodiscard]] virtual ENGSTATUS ResizeObject(std::uint32_t object, std::uint32_t size) = 0;
  [[nodiscard]] virtual ENGSTATUS SetObjectOwner(std::uint32_t object, std::uint32_t slate) = 0;
  [[nodiscard]] virtual ENGSTATUS FreeObject(std::uint32_t object) = 0;
  [[nodiscard]] virtual ENGSTATUS FindObjects(std::uint32_t slate, std::vector<std::uint32_t>* objects) = 0;

  // Members of folders, with a change number for each folder. A slate's deletion takes it out of all folders, with a
  // change each, and drops its own members.
  // One that is as it should be already keeps its change, and one that never was a member gets none.
  [[nodiscard]] virtual ENGSTATUS SetMember(std::uint32_t folder, std::uint32_t slate, std::uint64_t change,
                                            bool present) = 0;
  [[nodiscard]] virtual ENGSTATUS LastMemberChange(std::uint32_t folder, std::uint64_t* change) = 0;
  // Each slate once, with its last change behind `behind`.
  using MemberReader = std::function<void(std::uint32_t slate, bool present)>;
  [[nodiscard]] virtual ENGSTATUS ReadMembers(std::uint32_t folder, std::uint64_t behind,
                                              const MemberReader& reader) = 0;

  // Unread lists by user. A user without a list gives ENG_OK and number 0.
  [[nodiscard]] virtual ENGSTATUS GetUnread(std::string_view user, UnreadList* list) = 0;
  // Gives a new list its number. Notes of own saves up to the list's change go away.
  [[nodiscard]] virtual ENGSTATUS PutUnread(std::string_view user, UnreadList* list) = 0;
  // The number of the user's list, 0 for none; cheap to ask for again and again.
  [[nodiscard]] virtual ENGSTATUS UnreadNumber(std::string_view user, std::uint32_t* number) = 0;
  // Notes that the user of a list has made the last change of a slate.
  [[nodiscard]] virtual ENGSTATUS NoteOwnSave(std::uint32_t user, std::uint32_t slate) = 0;
  using OwnSaveReader = std::function<void(std::uint32_t slate, std::uint64_t feed)>;
  [[nodiscard]] virtual ENGSTATUS ReadOwnSaves(std::uint32_t user, const OwnSaveReader& reader) = 0;

  // The full-text index: one text for each slate. ENG_ERR_NO_FULL_TEXT without one for all but the first two.
  [[nodiscard]] virtual ENGSTATUS CreateTextIndex() = 0;
  // Passes over an index that is not there.
  [[nodiscard]] virtual ENGSTATUS DeleteTextIndex() = 0;
  // Replaces the slate's text. Texts are best put in ascending order of slates. `guarded` comes back with each hit.
  [[nodiscard]] virtual ENGSTATUS PutText(std::uint32_t slate, std::string_view text, bool guarded, bool* replaced) = 0;
  [[nodiscard]] virtual ENGSTATUS DropText(std::uint32_t slate, bool* dropped) = 0;
  // The share of the index that stands for texts which are gone, in hundredths; making the index anew frees it.
  [[nodiscard]] virtual ENGSTATUS TextWaste(std::uint32_t* percent) = 0;
  // Hits in no order; the rank is below 0 and lower for a better hit, 0 without kRanked. A field is passed over: its
  // hits are those of its part. ENG_ERR_TEXT_QUERY for a query that is too large.
  enum class TextRank { kNone, kRanked };
  struct TextHit {
    std::uint32_t slate;
    bool guarded;
    double rank;
  };
  using TextReader = std::function<void(const TextHit&)>;
  [[nodiscard]] virtual ENGSTATUS FindText(const TextQuery& query, TextRank rank, const TextReader& reader) = 0;

  // The highest ID of a slate, 0 for none.
  [[nodiscard]] virtual ENGSTATUS HighestSlate(std::uint32_t* id) = 0;

  // Pages of derived data. A design slate has a stretch of numbers for its own, and its pages go with it. A missing one
  // gives no bytes; a damaged one counts as missing.
  [[nodiscard]] virtual ENGSTATUS ReadPage(std::uint64_t page, std::vector<std::uint8_t>* bytes) = 0;
  // Two of them as they stood at one moment.
  [[nodiscard]] virtual ENGSTATUS ReadPages(std::uint64_t first, std::uint64_t second,
                                            std::vector<std::uint8_t>* first_bytes,
                                            std::vector<std::uint8_t>* second_bytes) = 0;
  [[nodiscard]] virtual ENGSTATUS WritePage(std::uint64_t page, Bytes bytes) = 0;
  // All from `first` to `last`, both included.
  [[nodiscard]] virtual ENGSTATUS DropPages(std::uint64_t first, std::uint64_t last) = 0;

  [[nodiscard]] virtual ENGSTATUS GetSpace(std::uint64_t* used, std::uint64_t* unused) = 0;
  // Checks the store's own structure; ENG_ERR_DB_DAMAGED with the first fault in `report`.
  [[nodiscard]] virtual ENGSTATUS Check(std::string* report) = 0;
  // The same for large values that neither an object nor `known` has, and for objects of slates that are not there.
  [[nodiscard]] virtual ENGSTATUS CheckOwners(const std::set<ValueId>& known, std::string* report) = 0;
  // Frees the values that neither an object nor `known` has.
  [[nodiscard]] virtual ENGSTATUS FreeUnowned(const std::set<ValueId>& known) = 0;
};

}  // namespace qcore

#endif
