// A counted B+ tree of rows in key order.
//
// Rows are addressed by rank, counted from 0. Every look-up by rank, by key, by level or by kind takes steps as the
// logarithm of the rows. Pages are read when they are needed; an IndexFault tells that one can't be had, and leaves the
// tree to be thrown away.
#ifndef QUILLON_QCORE_INDEX_PAGETREE_H
#define QUILLON_QCORE_INDEX_PAGETREE_H

#include <array>
#include <functional>
#include <optional>

#include "qcore/index/page.h"

namespace qcore::index {

using Rank = std::uint32_t;

// Follows in which leaves a document's rows lie.
class LeafWatcher {
 public:
  virtual ~LeafWatcher() = default;
  virtual void Came(std::uint32_t id, PageNumber leaf) = 0;
  // No row of the document is in that leaf any more.
  virtual void Went(std::uint32_t id, PageNumber leaf) = 0;
};

class PageTree {
 public:
  // Gives the stored bytes of a page; throws IndexFault.
  using PageReader = std::function<std::vector<std::uint8_t>(PageNumber)>;

  // One row in its leaf, good until the tree changes.
  class Cursor {
   public:
    bool at_row() const { return depth_ != 0; }
    std::uint8_t level() const { return leaf().LevelAt(slot()); }
    RowKind kind() const { return leaf().KindAt(slot()); }
    std::uint8_t indent() const { return leaf().IndentAt(slot()); }
    std::uint32_t id() const { return leaf().IdAt(slot()); }
    std::string key() const { return leaf().KeyAt(slot()); }
    void KeyTo(std::string* key) const { leaf().KeyTo(slot(), key); }
    bool HasKey(std::string_view key) const { return leaf().HasKey(slot(), key); }
    bool KeyStartsWith(std::string_view prefix) const { return leaf().KeyStartsWith(slot(), prefix); }
    Bytes value() const { return leaf().ValueAt(slot()); }
    Row row() const { return leaf().RowAt(slot()); }

   private:
    friend class PageTree;
    static constexpr std::size_t kDeepest = 16;

    const Leaf& leaf() const { return pages_[depth_ - 1]->leaf; }
    std::uint32_t slot() const { return at_[depth_ - 1]; }

    std::array<Page*, kDeepest> pages_{};
    std::array<std::uint32_t, kDeepest> at_{};
    std::size_t depth_ = 0;
  };

  // Both may be null.
  explicit PageTree(const TotalsReader* totals = nullptr, LeafWatcher* watcher = nullptr)
      : totals_(totals), watcher_(watcher) {}

  const Sum& sum() const { return root_.sum; }
  Rank rows() const { return root_.sum.rows; }

  // Whether all rows are of level 0, so that ranks are ordinals.
  bool is_flat() const { return root_.sum.least == 0 && root_.sum.at_least == root_.sum.rows; }

  // Look-ups.
  Cursor At(Rank rank);
  // To the row behind or before; false, and the cursor at no row, when there is none.
  bool Next(Cursor* cursor);
  bool Prev(Cursor* cursor);
  // Rows below the key; Seek goes to the first that is not.
  Rank RankOf(std::string_view key);
  Cursor Seek(std::string_view key, Rank* rank);
  bool Has(std::string_view key);
  std::optional<Rank> NextAtMost(Rank rank, std::uint8_t level);  // the next row of that level or an outer one
  // The same from a row at hand on, to the row found; false, and the cursor at no row, when there is none.
  bool NextAtMost(Cursor* cursor, Rank* rank, std::uint8_t level);
  std::optional<Rank> PrevAtMost(Rank rank, std::uint8_t level);
  std::optional<Rank> NextOfKind(Rank rank, bool document);
  std::optional<Rank> PrevOfKind(Rank rank, bool document);
  // The n-th row of `level` from `from` on, counted from 1; nothing when a row of an outer level comes before it.
  std::optional<Rank> Select(Rank from, std::uint8_t level, std::uint32_t n);
  // What rows first to last - 1 hold.
  Sum Range(Rank first, Rank last);
  // The leaf of that number; null when there is none in memory.
  const Leaf* LeafInMemory(PageNumber leaf) const {
    return leaf < leaves_.size() && leaves_[leaf] ? &leaves_[leaf]->leaf : nullptr;
  }
  // The leaf where a key belongs, null in a tree without rows; and the same, null where it isn't in memory.
  const Leaf* LeafFor(std::string_view key);
  const Leaf* LeafInMemoryFor(std::string_view key) const;

  // Changes. Keys are unique: an insertion of one that is there replaces its row.
  void Insert(const Row& row);
  // `above` gets the key of the row before when that is a category of an outer level: the row was its first one.
  bool Erase(std::string_view key, std::string* above = nullptr);
  bool SetValue(std::string_view key, Bytes value);
  void Clear();

  // Fills an empty tree with rows that come in key order.
  class Builder {
   public:
    explicit Builder(PageTree* tree) : tree_(*tree) {}
    void Add(Row row);
    void Finish();

   private:
    void FlushLeaf();
    PageTree& tree_;
    std::vector<Row> rows_;
    std::size_t size_ = 0;
    std::vector<Child> level_;
  };

  // Keeping.
  void SetReader(PageReader reader) { reader_ = std::move(reader); }
  struct Root {
    PageNumber number = 0;  // 0: no rows
    std::uint8_t height = 0;
    PageNumber next_page = 1;
    Sum sum;
  };
  Root root() const;
  // An empty tree takes a stored one's root.
  void SetRoot(const Root& root);
  // Every changed page, and the numbers of pages that are gone.
  void ForEachChanged(const std::function<void(const Page&)>& visit);
  // Since the last keeping; a new page may have such a number again.
  const std::vector<PageNumber>& Gone() const { return gone_; }
  void MarkKept();
  // Numbers below the next one that no page has.
  const std::vector<PageNumber>& free_numbers() const { return free_; }
  void SetFreeNumbers(std::vector<PageNumber> numbers) { free_ = std::move(numbers); }
  // Reads every page; the first fault is thrown.
  void ReadAll();
  std::size_t Memory() const;

 private:
  Page* Load(Child* child, std::uint8_t height);
  std::uint8_t height() const { return height_; }
  PageNumber NewNumber();
  void Release(Page* page);
  bool NoteLeaf(Page* page);
  std::unique_ptr<Page> NewPage(std::uint8_t height);
  void SetSum(Child* child);
  void SplitLeaf(Page* page, Page* right);
  void SplitChild(Page* parent, std::size_t at);
  // What a change below has done to a page.
  enum class Change { kNone, kSum, kContent };
  struct Erased {
    std::string above;  // see Erase
    std::uint8_t level = 0;
    bool first_in_leaf = false;
  };
  Change InsertBelow(Child* child, std::uint8_t height, const Row& row);
  Change EraseBelow(Child* child, std::uint8_t height, std::string_view key, Erased* erased);
  void EraseInLeaf(Child* child, std::uint32_t at, Erased* erased);
  // False when the children stay as they are.
  bool MergeAround(Page* parent, std::size_t at);
  void FollowChild(Child* child, std::size_t at, const Sum& before);
  void Notice(const Page& leaf, std::uint32_t first, std::uint32_t last);
  void GrowRoot();

  template <typename Fits, typename RowFits>
  std::optional<Rank> Forward(Child* child, std::uint8_t height, Rank base, Rank from, const Fits& fits,
                              const RowFits& row_fits);
  template <typename Fits, typename RowFits>
  std::optional<Rank> Backward(Child* child, std::uint8_t height, Rank base, Rank until, const Fits& fits,
                               const RowFits& row_fits);
  enum class Found { kNo, kYes, kStopped };
  Found SelectBelow(Child* child, std::uint8_t height, Rank base, Rank from, std::uint8_t level, std::uint32_t* n,
                    Rank* rank);
  void RangeBelow(Child* child, std::uint8_t height, Rank base, Rank first, Rank last, Sum* sum);
  bool Descend(Cursor* cursor, bool to_last);

  const TotalsReader* totals_;
  LeafWatcher* watcher_;
  PageReader reader_;
  Child root_;  // number 0 while there are no rows
  std::uint8_t height_ = 0;
  PageNumber next_page_ = 1;
  std::vector<PageNumber> free_;
  std::vector<PageNumber> gone_;
  std::vector<Page*> leaves_;  // by number, those in memory
};

}  // namespace qcore::index

#endif
