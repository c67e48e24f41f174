// An open collection: a client's handle on the index of a view. The rules for callers stand in engine/collection.h.
#ifndef QUILLON_QCORE_INDEX_COLLECTION_H
#define QUILLON_QCORE_INDEX_COLLECTION_H

#include <memory>
#include <vector>

#include "engine/collection.h"
#include "qcore/index/unreadrows.h"
#include "qcore/index/viewindex.h"
#include "qcore/memory/memory.h"

namespace qcore::index {

// A document that a full-text search has found, in the order that the search gives.
struct Hit {
  std::uint32_t id;
  std::uint16_t score;  // 0 to 100
};

class Collection final : public OpenSlate {
 public:
  [[nodiscard]] static ENGSTATUS Open(std::shared_ptr<Database> design, std::shared_ptr<Database> entries,
                                      std::uint32_t view, std::uint16_t flags, ENGHANDLE unread, ENGHANDLE* handle);
  [[nodiscard]] static ENGSTATUS Close(ENGHANDLE handle);
  static Collection* Find(ENGHANDLE handle) { return handle_table.FindAs<Collection>(Kind::kCollection, handle); }

  Collection(std::shared_ptr<Database> design, std::shared_ptr<Database> entries, std::uint32_t view, ENGHANDLE unread);
  Collection(const Collection&) = delete;
  Collection& operator=(const Collection&) = delete;
  ~Collection();

  // The unread table too, unless it is locked.
  [[nodiscard]] ENGSTATUS Update();
  [[nodiscard]] ENGSTATUS SetCollation(std::uint16_t number);

  struct ReadRequest {
    std::uint16_t skip;
    std::uint32_t skip_count;
    std::uint16_t navigation;
    std::uint32_t count;
    std::uint32_t mask;
  };
  struct ReadResult {
    memory::Draft rows;
    std::uint32_t skipped = 0;
    std::uint32_t returned = 0;
    std::uint16_t signals = 0;
  };
  [[nodiscard]] ENGSTATUS Read(const ReadRequest& request, COLLECTIONPOSITION* position, ReadResult* result);
  [[nodiscard]] ENGSTATUS FindByKey(const std::vector<Value>& keys, std::uint16_t flags, COLLECTIONPOSITION* position,
                                    std::uint32_t* matches);
  [[nodiscard]] ENGSTATUS GetChanges(std::uint64_t* since, std::vector<COLLECTIONCHANGE>* changes, bool* complete);

  // Full text. From then on the hit codes go over these documents; those that have no row are left out.
  [[nodiscard]] ENGSTATUS SetHits(std::vector<Hit> hits);
  // Puts hits into the order in which the collection's rows stand, those without a row last.
  [[nodiscard]] ENGSTATUS SortAsRows(std::vector<Hit>* hits);
  // Every document that has a row, in ascending order.
  [[nodiscard]] ENGSTATUS Documents(std::vector<std::uint32_t>* ids);

  std::size_t Memory() { return index_->Memory(); }
  ViewIndex& index() { return *index_; }

  void CloseWithDatabase() override { static_cast<void>(Close(handle_)); }
  void RevertTo(std::uint64_t) override { index_->Revert(); }

 private:
  [[nodiscard]] ENGSTATUS ReadRows(IndexTree& tree, const ReadRequest& request, COLLECTIONPOSITION* position,
                                   ReadResult* result);
  [[nodiscard]] ENGSTATUS ReadHits(IndexTree& tree, const ReadRequest& request, COLLECTIONPOSITION* position,
                                   ReadResult* result);
  std::uint32_t GoHits(IndexTree& tree, std::uint16_t code, std::uint32_t count, std::uint32_t* hit) const;

  std::shared_ptr<Database> design_database_;
  std::shared_ptr<Database> entries_;
  std::shared_ptr<ViewIndex> index_;
  ENGHANDLE unread_;
  ENGHANDLE handle_ = 0;
  std::uint16_t collation_ = 0;
  std::vector<Hit> hits_;
  UnreadRows unread_rows_;
};

}  // namespace qcore::index

#endif
