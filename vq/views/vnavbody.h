// VQVFNavigator: a cursor over the entries of a view, or over a part of them.
//
// A navigator covers a whole view, the descendants of one entry, the rows that a Find gave, or the hits of a full
// text search. Handles on one navigator share its collection, and each has a place of its own. VQWARN_NOT_FOUND says
// that there is no such row, and nothing moves. Operations on a navigator without an open collection give the status
// that says why there is none.
#ifndef QUILLON_VQ_VIEWS_VNAVBODY_H
#define QUILLON_VQ_VIEWS_VNAVBODY_H

#include "vq/store/vqdbbody.h"
#include "vq/views/vfcache.h"
#include "vq/views/vfposition.h"

class VQDatetime;
class VQFTSearchOptions;
class VQVFEntry;
class VQVFEntryBody;
class VQVFFindKeys;
class VQVFFindOptions;
class VQVFNavigatorBody;
class VQViewFolder;
class VQViewFolderBody;

namespace vq {
struct EntryRow;
struct NavigatorMove;
class EntryRows;
}  // namespace vq

enum VQNAVIGATION : unsigned int {
  VQNAVIGATE_CHILD = 0,
  VQNAVIGATE_FIRST = 1,
  VQNAVIGATE_FIRST_SIBLING = 2,
  VQNAVIGATE_LAST = 3,
  VQNAVIGATE_LAST_SIBLING = 4,
  VQNAVIGATE_MAIN = 5,
  VQNAVIGATE_NEXT = 6,
  VQNAVIGATE_NEXT_CATEGORY = 7,
  VQNAVIGATE_NEXT_MAIN = 8,
  VQNAVIGATE_NEXT_DOCUMENT = 9,
  // The next row further out: the parent's next peer, and where it has none that of the row above it, and so on.
  VQNAVIGATE_NEXT_PARENT = 10,
  VQNAVIGATE_NEXT_SIBLING = 11,
  VQNAVIGATE_NEXT_UNREAD = 12,
  VQNAVIGATE_NEXT_UNREAD_MAIN = 13,
  VQNAVIGATE_PARENT = 14,
  VQNAVIGATE_PREV = 15,
  VQNAVIGATE_PREV_CATEGORY = 16,
  VQNAVIGATE_PREV_MAIN = 17,
  VQNAVIGATE_PREV_DOCUMENT = 18,
  VQNAVIGATE_PREV_PARENT = 19,  // the parent's previous peer, further out where it has none
  VQNAVIGATE_PREV_SIBLING = 20,
  VQNAVIGATE_PREV_UNREAD = 21,
  VQNAVIGATE_PREV_UNREAD_MAIN = 22,
};

class VQ_API VQVFNavigator : public VQSmartPtr {
 public:
  VQVFNavigator();
  VQVFNavigator(const VQVFNavigator& other);
  explicit VQVFNavigator(VQVFNavigatorBody* body);
  VQVFNavigator& operator=(const VQVFNavigator& other);
  // Shares the body, at its start.
  VQVFNavigator& operator=(VQVFNavigatorBody* body);
  VQCLASSID GetClassID() const override;

  // By ordinal in this navigator, from 0; neighbours of the last one asked for are cheap. Throws VQERR_BAD_SUBSCRIPT
  // and VQERR_NO_ENTRIES.
  VQVFEntry operator[](unsigned long index);
  VQSTATUS Close();
  VQSTATUS DeleteAllEntries();
  // The documents go from the database, with their descendants if asked for; the handle is released.
  VQSTATUS DeleteEntries(VQVFEntry* entry, int withDescendants = 0);
  VQSTATUS DeleteEntries(const VQVFPosition& position, int withDescendants = 0);
  // Every output may be null. The place moves to the first match; *navigator covers the matches.
  VQSTATUS Find(const VQString& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQString& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQDatetime& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQDatetime& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const double& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const double& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQVFFindKeys& keys, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQVFFindKeys& keys, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS GetEntry(VQVFEntry* entry);
  // The entry at a position; the navigator's own place stays. VQERR_OUT_OF_RANGE for one outside the navigator,
  // VQWARN_NOT_FOUND or VQERR_INVALID_PARAMETER where there is no row.
  VQSTATUS GetEntry(VQVFEntry* entry, const VQVFPosition& position);
  unsigned long GetEntryCount() const;
  VQDatabase GetEntryDatabase() const;
  // The documents' table, the navigator's own; good until it is refreshed or closed.
  VQSTATUS GetIDTable(void** table);
  VQSTATUS GetPosition(VQVFPosition* position) const;
  VQSTATUS SetPosition(const VQVFPosition& position);
  VQSTATUS ResetPosition();
  VQSTATUS GetViewFolder(VQViewFolder* view) const;
  // Moves; a null entry asks for the move alone.
  VQSTATUS Goto(VQNAVIGATION code, VQVFEntry* entry = nullptr);
  int IsCategorized() const;
  int IsFTSearch() const;
  // Takes in what has changed since, and starts over. Rows that change with the time or with counts of responses are
  // made anew when the day is another one or a minute has passed.
  VQSTATUS Refresh();

  VQVFNavigatorBody* GetNavigatorBody() const;
  // The status of operations while there is no body.
  void SetStatus(VQSTATUS status) { Status = status; }
  VQSTATUS GetStatus() const { return Status; }

 private:
  friend class VQViewFolder;

  // The body, with an open collection.
  [[nodiscard]] VQSTATUS CheckOpen(VQVFNavigatorBody** body) const;
  VQVFNavigatorBody* RequireOpen() const;
  VQSTATUS FindKeys(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                    VQVFNavigator* navigator);
  template <typename Key>
  VQSTATUS FindKey(const Key& key, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                   VQVFNavigator* navigator);
  // The place is another one than operator[] left.
  VQSTATUS Moved(VQSTATUS status);

  std::uint32_t LastIndex;  // of the last operator[], 0 after any other move
  VQVFPosition Position;
  VQSTATUS Status;
};

class VQ_API VQVFNavigatorBody : public VQBody {
 public:
  // State bits.
  static constexpr unsigned short kCountKnown = 0x0001;
  static constexpr unsigned short kFTSearch = 0x0002;
  static constexpr unsigned short kCategorized = 0x0004;
  static constexpr unsigned short kRestricted = 0x0008;
  static constexpr unsigned short kScored = 0x0010;
  static constexpr unsigned short kFind = 0x0020;
  static constexpr unsigned short kSearch = kFTSearch | kFind;

  // The whole view, or the part below `start`: `count` levels of descendants, 0 for all, or with the Find bit in
  // `flags` that many rows from `start` on. What went wrong goes to *status; VQERR_NOT_FOUND when there is no row below
  // `start`.
  VQVFNavigatorBody(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count, std::uint32_t flags,
                    VQSTATUS* status);
  ~VQVFNavigatorBody() override;
  VQVFNavigatorBody(const VQVFNavigatorBody&) = delete;
  VQVFNavigatorBody& operator=(const VQVFNavigatorBody&) = delete;
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  // As the constructor, for a navigator that is handed out: it counts its view, stands in the view's list, and closes
  // with the view. On failure *navigator is as it was.
  [[nodiscard]] static VQSTATUS HandOut(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count,
                                        std::uint32_t flags, VQVFNavigator* navigator);

  // The one reader of the collection. Null outputs are not asked for; the buffer is the caller's. VQWARN_NOT_FOUND at
  // the end.
  [[nodiscard]] VQSTATUS ReadEntries(COLLECTIONPOSITION* position, unsigned short skip, std::uint32_t skipCount,
                                     unsigned short navigation, std::uint32_t count, std::uint32_t mask,
                                     ENGHANDLE* buffer, std::uint32_t* length, std::uint32_t* skipped,
                                     std::uint32_t* returned, unsigned short* signals);
  // Slate IDs of documents only; the caller destroys *table.
  [[nodiscard]] VQSTATUS BuildIDTable(const COLLECTIONPOSITION& position, unsigned short skip, std::uint32_t skipCount,
                                      unsigned short navigation, std::uint32_t count, ENGHANDLE* table);
  // Searches this navigator, a fresh one over the whole view.
  [[nodiscard]] VQSTATUS FTSearch(const VQString& query, const VQFTSearchOptions* options,
                                  VQVFNavigatorBody* restriction);
  // Outputs may be null. *position is the place to be moved; it stays when nothing is found.
  [[nodiscard]] VQSTATUS Find(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFPosition* position,
                              VQVFEntry* entry, unsigned long* count, VQVFNavigator* navigator);
  // The navigator's own.
  [[nodiscard]] VQSTATUS GetTable(ENGHANDLE* table);
  [[nodiscard]] VQSTATUS GetCount(std::uint32_t* count);

  ENGHANDLE GetCollectionHandle() const { return Collection; }
  // VQERR_DATABASE_NOT_OPEN when the entries' database was closed under the open navigator.
  VQSTATUS GetOpenStatus() const;
  bool HasFlag(unsigned short mask) const { return (Flags & mask) != 0; }
  bool IsFTSearch() const { return HasFlag(kFTSearch); }
  bool IsRestricted() const { return HasFlag(kRestricted); }
  bool IsFind() const { return HasFlag(kFind); }
  bool IsSearch() const { return HasFlag(kSearch); }
  const VQVFPosition& GetStartPosition() const { return StartPosition; }
  VQViewFolderBody* GetViewFolderBody() const { return ViewFolder; }

 private:
  friend class VFCache;
  friend class VQVFEntryBody;
  friend class VQVFNavigator;

  VQSTATUS Open(VQViewFolderBody* view, const VQVFPosition* start, std::uint32_t count, std::uint32_t flags);
  [[nodiscard]] VQSTATUS OpenCollection(std::uint32_t flags);
  [[nodiscard]] VQSTATUS Probe(unsigned short skip);
  void Restrict(std::uint32_t count, bool find);
  VQSTATUS ReleaseAll();
  [[nodiscard]] VQSTATUS Refresh();
  void ForgetRows();

  bool IsEmpty() const { return HasFlag(kCountKnown) && EntryCount == 0; }
  bool Contains(const COLLECTIONPOSITION& position) const;
  bool HasPrefixOfStart(const COLLECTIONPOSITION& position, unsigned levels) const;
  // Limits of a read of this navigator: in the position, and as bits of the code.
  void Limit(COLLECTIONPOSITION* position) const;
  unsigned short LimitBits() const;
  unsigned short StepCode(bool backward) const;
  std::uint32_t EntryMask() const;

  // Whether rows are read towards the start for it.
  static bool IsBackward(VQNAVIGATION code);
  // The code as this kind of navigator takes it; VQWARN_NOT_FOUND where it has no such move.
  [[nodiscard]] VQSTATUS Translate(VQNAVIGATION* code) const;
  [[nodiscard]] VQSTATUS PlanGoto(VQNAVIGATION code, const VQVFPosition& position, vq::NavigatorMove* move);
  [[nodiscard]] VQSTATUS PlanHit(VQNAVIGATION code, vq::NavigatorMove* move) const;
  [[nodiscard]] VQSTATUS PlanFound(VQNAVIGATION code, vq::NavigatorMove* move) const;
  [[nodiscard]] VQSTATUS PlanFromCategory(VQNAVIGATION code, vq::NavigatorMove* move);
  vq::NavigatorMove PlanIndex(std::uint32_t index, std::uint32_t last_index, const VQVFPosition& position) const;
  [[nodiscard]] VQSTATUS IsCategoryAt(const COLLECTIONPOSITION& position, bool* category);
  [[nodiscard]] VQSTATUS MakeMove(const vq::NavigatorMove& move, VQVFPosition* position, VQVFEntry* entry);
  [[nodiscard]] VQSTATUS MakeEntry(const COLLECTIONPOSITION& position, const vq::EntryRow& row, VQVFEntry* entry);

  [[nodiscard]] VQSTATUS Goto(VQNAVIGATION code, VQVFPosition* position, VQVFEntry* entry);
  [[nodiscard]] VQSTATUS GetEntry(const VQVFPosition& position, bool cached, VQVFEntry* entry);
  [[nodiscard]] VQSTATUS GetIndexed(std::uint32_t index, std::uint32_t last_index, VQVFPosition* position,
                                    VQVFEntry* entry);
  // Whether a place can be this navigator's, and whether there is a row.
  [[nodiscard]] VQSTATUS CheckPosition(const VQVFPosition& position) const;
  [[nodiscard]] VQSTATUS CheckRow(const COLLECTIONPOSITION& position);
  [[nodiscard]] VQSTATUS DeleteEntries(VQVFEntryBody* entry, bool with_descendants);
  [[nodiscard]] VQSTATUS DeleteWithDescendants(VQVFEntryBody* entry);
  [[nodiscard]] VQSTATUS DeleteAllEntries();
  [[nodiscard]] VQSTATUS FindInCollection(const VQVFFindKeys& keys, unsigned short flags, bool counted,
                                          COLLECTIONPOSITION* position, std::uint32_t* count);
  [[nodiscard]] VQSTATUS StepOutOfCategory(COLLECTIONPOSITION* position, std::uint32_t* count);

  VFCache Cache;
  ENGHANDLE Collection;
  std::uint32_t EntryCount;
  std::uint16_t Flags;
  ENGHANDLE IDTable;  // 0 until asked for
  VQSTATUS OpenStatus;
  VQVFPosition StartPosition;
  TIMEDATE CreationTime;
  ENGHANDLE UnreadTable;
  VQViewFolderBody* ViewFolder;
  bool CountsView;  // all but the one that is built into the view
};

inline VQVFNavigatorBody* VQVFNavigator::GetNavigatorBody() const { return static_cast<VQVFNavigatorBody*>(Body); }

#endif
