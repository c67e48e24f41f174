// The store that keeps a database in one SQLite file.
//
// The file is in WAL mode with full syncs. SQLite releases before 3.51.3 can damage a WAL file when one connection
// checkpoints while another restarts the log; therefore no checkpoint runs by itself, and ours holds SQLite's own write
// lock on the log, so that no connection of any process can write meanwhile.
#ifndef QUILLON_QCORE_STORE_SQLITE_STORE_H
#define QUILLON_QCORE_STORE_SQLITE_STORE_H

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qcore/store/feed.h"
#include "qcore/store/frozen.h"
#include "qcore/store/own_changes.h"
#include "qcore/store/sqlite_log.h"
#include "qcore/store/sqlite_statement.h"
#include "qcore/store/store.h"

namespace qcore {

class SqliteStore final : public Store {
 public:
  static constexpr std::uint32_t kApplicationId = 0x51565354;
  static constexpr std::int64_t kSchemaVersion = 3;
  static constexpr std::int64_t kOldestVersion = 1;  // read as it is, as those above, and brought up with a change
  static constexpr std::size_t kChunkSize = 65536;

  // What a new database starts with.
  struct Creation {
    std::uint16_t database_class;
    TIMEDATE file_id;
    TIMEDATE replica_id;
  };

  // `file` is an absolute path. A store that this user can only read opens; its changes give ENG_ERR_DB_READ_ONLY.
  // Where no log can be made either, a change by somebody else gives ENG_ERR_DB_IN_USE from then on: open it again.
  [[nodiscard]] static ENGSTATUS Open(const std::string& file, std::unique_ptr<SqliteStore>* store);
  // Makes the file aside and puts it in place when it is complete and synced.
  [[nodiscard]] static ENGSTATUS Create(const std::string& file, const Creation& creation, bool overwrite);
  [[nodiscard]] static ENGSTATUS Delete(const std::string& file);
  // sizes: bytes before and after.
  [[nodiscard]] static ENGSTATUS Compact(const std::string& file, std::array<std::uint64_t, 2>* sizes);

  ENGSTATUS Begin() override;
  ENGSTATUS Commit() override;
  void Rollback() override;
  ENGSTATUS Mark() override;
  ENGSTATUS ReleaseMark() override;
  void RollbackToMark() override;
  bool InTransaction() const override;
  ENGSTATUS BeginRead() override;
  void EndRead() override;

  ENGSTATUS ReadSlate(std::uint32_t id, const PackedReader& reader) override;
  ENGSTATUS ScanSlates(std::uint32_t first, const SlateScanner& scanner) override;
  ENGSTATUS HighestSlate(std::uint32_t* id) override;
  ENGSTATUS ReadPage(std::uint64_t page, std::vector<std::uint8_t>* bytes) override;
  ENGSTATUS ReadPages(std::uint64_t first, std::uint64_t second, std::vector<std::uint8_t>* first_bytes,
                      std::vector<std::uint8_t>* second_bytes) override;
  ENGSTATUS WritePage(std::uint64_t page, Bytes bytes) override;
  ENGSTATUS DropPages(std::uint64_t first, std::uint64_t last) override;
  ENGSTATUS ReadHeader(std::uint32_t id, SlateHeader* header) override;
  ENGSTATUS NewSlateId(std::uint32_t* id) override;
  ENGSTATUS InsertSlate(SlateHeader* header, Bytes packed) override;
  ENGSTATUS UpdateSlate(SlateHeader* header, Bytes packed, const SlateVersion* expected) override;
  ENGSTATUS LastRenamed(std::uint64_t* feed) override;
  ENGSTATUS NoteRenamed() override;
  ENGSTATUS MakeDeletionStub(SlateHeader* header) override;
  ENGSTATUS RemoveSlate(const SlateHeader& header) override;

  ENGSTATUS WriteValue(Bytes bytes, ValueId* value) override;
  ENGSTATUS ReadValue(ValueId value, std::uint32_t size, std::uint8_t* target) override;
  ENGSTATUS FreeValue(ValueId value) override;

  ENGSTATUS ReadNames(std::uint32_t first, const NameReader& reader) override;
  ENGSTATUS AddName(std::uint32_t number, std::string_view name) override;

  ENGSTATUS ReadFeed(const TIMEDATE* since, const FeedReader& reader) override;
  ENGSTATUS LastChange(Part part, TIMEDATE* moment) override;
  ENGSTATUS SearchHorizon(TIMEDATE* moment) override;
  ENGSTATUS FindUniversal(const UNIVERSALSLATEID& universal, std::uint32_t* id) override;
  ENGSTATUS FindResponses(const UNIVERSALSLATEID& parent, std::vector<std::uint32_t>* ids) override;
  ENGSTATUS FindDesign(std::uint16_t mask, std::vector<FeedEntry>* entries) override;

  ENGSTATUS GetSetting(Setting setting, std::vector<std::uint8_t>* value) override;
  ENGSTATUS SetSetting(Setting setting, Bytes value) override;

  ENGSTATUS CreateObject(std::uint16_t object_class, std::uint32_t* object) override;
  ENGSTATUS GetObject(std::uint32_t object, ObjectInfo* info) override;
  ENGSTATUS ReadObject(std::uint32_t object, std::uint32_t offset, std::span<std::uint8_t> out) override;
  ENGSTATUS WriteObject(std::uint32_t object, std::uint32_t offset, Bytes bytes) override;
  ENGSTATUS ResizeObject(std::uint32_t object, std::uint32_t size) override;
  ENGSTATUS SetObjectOwner(std::uint32_t object, std::uint32_t slate) override;
  ENGSTATUS FreeObject(std::uint32_t object) override;
  ENGSTATUS FindObjects(std::uint32_t slate, std::vector<std::uint32_t>* objects) override;

  ENGSTATUS ReadFeedBehind(std::uint64_t behind, const NumberedReader& reader) override;
  ENGSTATUS FeedEnd(std::uint64_t* feed) override;
  ENGSTATUS SetMember(std::uint32_t folder, std::uint32_t slate, std::uint64_t change, bool present) override;
  ENGSTATUS LastMemberChange(std::uint32_t folder, std::uint64_t* change) override;
  ENGSTATUS ReadMembers(std::uint32_t folder, std::uint64_t behind, const MemberReader& reader) override;
  ENGSTATUS GetUnread(std::string_view user, UnreadList* list) override;
  ENGSTATUS PutUnread(std::string_view user, UnreadList* list) override;
  ENGSTATUS UnreadNumber(std::string_view user, std::uint32_t* number) override;
  ENGSTATUS NoteOwnSave(std::uint32_t user, std::uint32_t slate) override;
  ENGSTATUS ReadOwnSaves(std::uint32_t user, const OwnSaveReader& reader) override;

  ENGSTATUS CreateTextIndex() override;
  ENGSTATUS DeleteTextIndex() override;
  ENGSTATUS PutText(std::uint32_t slate, std::string_view text, bool guarded, bool* replaced) override;
  ENGSTATUS DropText(std::uint32_t slate, bool* dropped) override;
  ENGSTATUS TextWaste(std::uint32_t* percent) override;
  ENGSTATUS FindText(const TextQuery& query, TextRank rank, const TextReader& reader) override;

  ENGSTATUS GetSpace(std::uint64_t* used, std::uint64_t* unused) override;
  ENGSTATUS Check(std::string* report) override;
  ENGSTATUS CheckOwners(const std::set<ValueId>& known, std::string* report) override;
  ENGSTATUS FreeUnowned(const std::set<ValueId>& known) override;

 private:
  // The highest numbers given out, known while no other connection has committed.
  struct Counters {
    std::uint64_t slate = 0;
    std::uint64_t feed = 0;
    std::uint64_t value = 0;
    std::uint64_t object = 0;
    TIMEDATE here{};          // the last time in the change feed
    TIMEDATE removed_data{};  // when a slate last went without a deletion stub
    TIMEDATE removed_design{};
    std::uint64_t trimmed = 0;  // entries that have gone from the change feed, about
  };
  struct ObjectRow {
    ObjectInfo info;
    ValueId value;
  };
  // The row that ReadHeader last met, for the ReadSlate that usually follows: good while nobody has committed.
  struct Glance {
    std::optional<LogState> state;
    SlateHeader header;
    std::vector<std::uint8_t> packed;
  };
  enum class Sql : std::size_t;
  static constexpr std::size_t kStatements = 80;
  static const char* const kSql[];

  explicit SqliteStore(Connection connection) : connection_(std::move(connection)) {}

  // False once somebody else has begun to write to a store that is read without a log.
  bool IsSound() const { return !frozen_ || frozen_->IsUnchanged(); }

  [[nodiscard]] static ENGSTATUS CheckIdentity(const std::string& file);
  [[nodiscard]] static ENGSTATUS Fill(const std::string& file, const Creation& creation);
  [[nodiscard]] static ENGSTATUS Replace(const std::string& fresh, const std::string& file);
  // How long a writer waits for another: settings key StoreBusyTimeout, else 10 seconds.
  static int BusyMilliseconds();
  [[nodiscard]] ENGSTATUS Configure();
  bool ReadOnly() const;
  Use Start(Sql which);
  // Runs a statement to its end.
  [[nodiscard]] ENGSTATUS Finish(Use& use);
  [[nodiscard]] ENGSTATUS Run(Sql which);
  // Every result passes here, so that a failed sync is noticed.
  [[nodiscard]] ENGSTATUS Result(int code);
  // What is kept for a slate beside its row goes with it.
  [[nodiscard]] ENGSTATUS DropBelongings(const SlateHeader& header);
  [[nodiscard]] ENGSTATUS LoadCounters();
  // Brings a store of an older version up to this one, within the running transaction.
  [[nodiscard]] ENGSTATUS Upgrade();
  // Of the schema; another process may bring it up.
  std::int64_t Version();
  // Whether the tables of version 2 are there, and the feed of version 3.
  bool IsUpgraded() { return Version() > kOldestVersion; }
  bool HasFeedTable() { return Version() >= kSchemaVersion; }
  // The engine's words are known to SQLite by a tokenizer of the connection.
  [[nodiscard]] ENGSTATUS UseTokenizer();
  [[nodiscard]] ENGSTATUS RequireTextIndex();
  // The number under which SQLite has the slate's text, 0 for none.
  [[nodiscard]] ENGSTATUS FindTextNumber(std::uint32_t slate, std::uint64_t* number);
  // Whether the index never had a text of the slate, as far as that is known without a look at it.
  [[nodiscard]] ENGSTATUS IsNewText(std::uint32_t slate, bool* is_new);
  [[nodiscard]] ENGSTATUS NewTextNumber(std::uint32_t slate, std::uint64_t* number);
  [[nodiscard]] ENGSTATUS RunWith(Sql which, std::uint64_t number);
  [[nodiscard]] ENGSTATUS ReadNumbers(Sql which, std::vector<std::uint64_t>* numbers);
  // What a slate's removal means for the lists that name it.
  [[nodiscard]] ENGSTATUS DropFromLists(std::uint32_t id);
  [[nodiscard]] ENGSTATUS ReadFloors(Bytes floors);
  [[nodiscard]] ENGSTATUS WriteFloors();
  [[nodiscard]] ENGSTATUS ReadObjectRow(std::uint32_t object, ObjectRow* row);
  [[nodiscard]] ENGSTATUS ReadChunk(ValueId value, std::uint32_t number, std::vector<std::uint8_t>* bytes);
  [[nodiscard]] ENGSTATUS WriteChunk(ValueId value, std::uint32_t number, Bytes bytes);
  [[nodiscard]] ENGSTATUS SetObjectSize(std::uint32_t object, std::uint32_t size);
  [[nodiscard]] ENGSTATUS CheckObjects(std::string* report);
  [[nodiscard]] ENGSTATUS FindUnowned(const std::set<ValueId>& known, std::vector<ValueId>* values);
  [[nodiscard]] ENGSTATUS UpdateMisses(std::uint32_t id);
  // Nothing in a transaction, whose own changes nobody else sees, and without a log.
  std::optional<LogState> Committed() const;
  // Gives a slate that is about to be written its place in the feed.
  [[nodiscard]] ENGSTATUS Stamp(SlateHeader* header);
  // The header of a slate that the transaction has just written, null for others.
  const SlateHeader* OwnRow(std::uint32_t id) const;
  // After a change of a slate, which Stamp has given its number. What is left of a slate that was removed.
  enum class Trace { kSlate, kNone };
  void NoteChange(const SlateHeader& header, Trace trace);
  [[nodiscard]] ENGSTATUS MakeRoomInFeed();
  [[nodiscard]] ENGSTATUS WriteFeed();
  [[nodiscard]] ENGSTATUS AppendToFeed(std::span<const FeedRecord> records);
  // Entries in the feed that later ones of the same slate have replaced, about.
  std::uint64_t Replaced() const;
  [[nodiscard]] ENGSTATUS TrimFeedWhenDue();
  // Entries behind a number in their order, replaced ones among them.
  [[nodiscard]] ENGSTATUS ReadRecords(std::uint64_t behind, std::vector<FeedRecord>* records);
  [[nodiscard]] ENGSTATUS ReadBlocks(std::uint64_t behind, std::vector<FeedRecord>* records);
  [[nodiscard]] ENGSTATUS ReadIndexedFeed(std::uint64_t behind, std::vector<FeedRecord>* records);
  // Each slate's last entry, newest first, but for those that went, until the visitor gives false.
  [[nodiscard]] ENGSTATUS ReadNewest(const std::function<bool(const FeedRecord&)>& visit);
  [[nodiscard]] ENGSTATUS LastEntry(std::uint64_t* feed, std::uint64_t* here);
  // Whether every slate is where the feed has it.
  [[nodiscard]] ENGSTATUS CheckFeed(std::string* report);
  void CheckpointWhenDue();
  [[nodiscard]] int CheckpointAlone();

  static int OnCommit(void* store, sqlite3* connection, const char* schema, int frames);

  std::optional<FrozenFile> frozen_;
  Connection connection_;
  std::array<Statement, kStatements> statements_;
  Counters counters_;
  std::int64_t seen_version_ = -1;
  bool counters_known_ = false;
  bool floors_changed_ = false;
  std::int64_t version_ = 0;
  bool has_tokenizer_ = false;
  // The list of the user asked for last, known while no other connection has committed.
  std::string unread_user_;
  std::optional<std::uint32_t> unread_number_;
  std::optional<std::uint64_t> text_end_;  // the highest first number of a text, known within a transaction
  bool has_log_ = false;
  bool writing_ = false;
  bool sync_failed_ = false;
  int log_frames_ = 0;
  Glance glance_;
  OwnChanges own_;
  std::vector<FeedRecord> waiting_;    // changes of the transaction that are not in the feed yet
  std::optional<std::size_t> marked_;  // how many were waiting before the part that may be undone
};

}  // namespace qcore

#endif
