// An open database: a store, its item names, and the slates that are open in it.
//
// One mutex serialises the store. Slates hold their database; the handle table holds one reference for the client.
#ifndef QUILLON_QCORE_STORE_DATABASE_H
#define QUILLON_QCORE_STORE_DATABASE_H

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/database.h"
#include "qcore/handles/handles.h"
#include "qcore/store/names.h"
#include "qcore/store/openfiles.h"
#include "qcore/store/store.h"

namespace qcore {

// What a database asks of the slates that are open in it; they stand in a higher room.
class OpenSlate {
 public:
  virtual void CloseWithDatabase() = 0;
  // Undoes what updates of the given transaction noted in memory. With the database's mutex held.
  virtual void RevertTo(std::uint64_t transaction) = 0;

 protected:
  ~OpenSlate() = default;
};

// Slates that are known to be readable for everybody, by ID / 4, as of change `feed`.
struct OpenToAll {
  std::uint64_t feed = 0;
  std::vector<bool> slates;
};

class Database {
 public:
  // A database or, for a path that names one, a directory.
  [[nodiscard]] static ENGSTATUS Open(const std::string& path, ENGHANDLE* handle);
  // Null for a handle that is no open database.
  static std::shared_ptr<Database> Find(ENGHANDLE handle);
  // As Find, for operations that need a store. ENG_ERR_INVALID_HANDLE, ENG_ERR_DB_IS_DIRECTORY.
  [[nodiscard]] static ENGSTATUS FindStore(ENGHANDLE handle, std::shared_ptr<Database>* database);
  [[nodiscard]] static ENGSTATUS Close(ENGHANDLE handle);
  // For the end of the engine.
  static void CloseAll();

  Database(std::string path, std::unique_ptr<Store> store);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  const std::string& path() const { return path_; }
  bool is_directory() const { return !store_; }
  ENGHANDLE handle() const { return handle_; }
  NameTable& names() { return names_; }
  // Who the engine ran for when the database was opened, in store text.
  const std::string& user() const { return user_; }

  [[nodiscard]] ENGSTATUS BeginTransaction();
  [[nodiscard]] ENGSTATUS CommitTransaction();
  [[nodiscard]] ENGSTATUS RollbackTransaction();

  [[nodiscard]] ENGSTATUS CreateObject(std::uint16_t object_class, std::uint32_t* object);
  // Ends claims. An object goes with the last one, unless a slate owns it; what can't go now goes with the handle.
  void GiveUp(const std::vector<std::uint32_t>& objects);
  // A fresh universal ID with an empty sequence.
  ORIGINATORID NewOrigin();

  // The rest is used with the mutex held.
  std::mutex& mutex() { return mutex_; }
  Store& store() { return *store_; }
  OpenToAll& open_to_all() { return open_to_all_; }
  // Serial of the running client transaction, 0 outside of one.
  std::uint64_t transaction() const { return transaction_; }
  // A new object that goes with the handle unless a slate comes to own it.
  void NoteReserved(std::uint32_t object) { reserved_objects_.try_emplace(object, 0); }
  // An open slate names an object: false unless it is one of these.
  [[nodiscard]] bool Claim(std::uint32_t object);
  bool HasReserved(std::uint32_t object) const { return reserved_objects_.contains(object); }
  void Register(OpenSlate* slate) { slates_.insert(slate); }
  void Unregister(OpenSlate* slate) { slates_.erase(slate); }

 private:
  friend class Change;

  void CloseSlates();
  void FreeReservedObjects();
  // Puts everything in memory back to where it was before the client's transaction.
  void RevertMemory();

  std::string path_;
  std::optional<OpenStoreFile> open_file_;  // goes behind the store
  std::unique_ptr<Store> store_;
  std::string user_;
  NameTable names_;
  OpenToAll open_to_all_;
  std::mutex mutex_;
  ENGHANDLE handle_ = 0;
  std::uint64_t transaction_ = 0;
  std::uint64_t last_transaction_ = 0;
  std::size_t names_at_begin_ = 0;
  std::set<OpenSlate*> slates_;
  std::map<std::uint32_t, std::uint32_t> reserved_objects_;  // and how many slates claim each
  TIMEDATE origin_file_{};  // random, counted up while origins fall into one hundredth of a second
  TIMEDATE last_origin_{};
};

// A piece of writing that happens as a whole or not at all: a transaction of its own, or a part of the client's.
// Use with the database's mutex held.
class Change {
 public:
  explicit Change(Database& database) : database_(database) {}
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;
  ~Change();

  // How many statements write. One is whole or nothing by itself, and needs no mark inside a client's transaction.
  enum class Extent { kOneStatement, kSeveral };

  [[nodiscard]] ENGSTATUS Begin(Extent extent = Extent::kSeveral);
  [[nodiscard]] ENGSTATUS Commit();

 private:
  Database& database_;
  std::size_t names_ = 0;
  bool marked_ = false;
  bool open_ = false;
};

}  // namespace qcore

#endif
