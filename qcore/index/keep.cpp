// Indexes in the store: a head, the changed pages, and the directory's parts, written as one.
//
// Where rows are the user's own, there is a copy for each of the last few users, so that users who take turns don't
// build it anew each time. An index that is the same for all is the only one of its collation.
//
//   page key:  slate ID / 4 | 8 bits collation | 2 bits copy | 24 bits page
//              page 0 is the head, from 0x800000 on the directory's parts, before those the free numbers
//   head:      u8 form | u32 view | u64 design | u64 names | u8 restricted | u64 generation | u64 feed | u64 folder
//              u32 root | u8 height | u32 next page | u32 rows | u32 documents | u32 at least | u8 least | totals
#include <algorithm>
#include <array>
#include <bit>
#include <mutex>
#include <utility>

#include "qcore/index/indextree.h"
#include "qcore/store/moment.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::uint8_t kForm = 3;
constexpr int kPageBits = 24;
constexpr int kCopyBits = 2;
constexpr int kCollationBits = 8;
constexpr std::uint32_t kCopies = 1u << kCopyBits;
constexpr std::uint32_t kLastPage = (1u << kPageBits) - 1;
constexpr std::uint32_t kFirstPart = 1u << (kPageBits - 1);
constexpr std::uint32_t kFreeNumbers = kFirstPart - 1;  // that pages have left
constexpr std::uint32_t kHead = 0;

struct Head {
  IndexTree::Identity identity;
  std::uint32_t view = 0;
  bool restricted = false;
  std::uint64_t generation = 0;
  std::uint64_t feed = 0;
  std::uint64_t folder = 0;
  PageTree::Root root;
};

std::vector<std::uint8_t> Encode(const Head& head) {
  std::vector<std::uint8_t> bytes{kForm};
  WireWriter writer(&bytes);
  writer.Put(head.view);
  writer.Put(head.identity.design);
  writer.Put(head.identity.names);
  writer.Put(static_cast<std::uint8_t>(head.restricted));
  writer.Put(head.generation);
  writer.Put(head.feed);
  writer.Put(head.folder);
  writer.Put(head.root.number);
  writer.Put(head.root.height);
  writer.Put(head.root.next_page);
  writer.Put(head.root.sum.rows);
  writer.Put(head.root.sum.documents);
  writer.Put(head.root.sum.at_least);
  writer.Put(head.root.sum.least);
  for (const double total : head.root.sum.totals) writer.Put(std::bit_cast<std::uint64_t>(total));
  return bytes;
}

std::optional<Head> DecodeHead(Bytes bytes, std::size_t totals) {
  constexpr std::uint8_t kHighest = 12;
  WireReader reader(bytes);
  if (reader.Take<std::uint8_t>() != kForm) return std::nullopt;
  Head head;
  head.view = reader.Take<std::uint32_t>();
  head.identity.design = reader.Take<std::uint64_t>();
  head.identity.names = reader.Take<std::uint64_t>();
  head.restricted = reader.Take<std::uint8_t>() != 0;
  head.generation = reader.Take<std::uint64_t>();
  head.feed = reader.Take<std::uint64_t>();
  head.folder = reader.Take<std::uint64_t>();
  PageTree::Root& root = head.root;
  root.number = reader.Take<std::uint32_t>();
  root.height = reader.Take<std::uint8_t>();
  root.next_page = reader.Take<std::uint32_t>();
  root.sum.rows = reader.Take<std::uint32_t>();
  root.sum.documents = reader.Take<std::uint32_t>();
  root.sum.at_least = reader.Take<std::uint32_t>();
  root.sum.least = reader.Take<std::uint8_t>();
  for (std::size_t i = 0; i < totals && root.sum.rows != 0; ++i) {
    root.sum.totals.push_back(std::bit_cast<double>(reader.Take<std::uint64_t>()));
  }
  const bool good = reader.good() && reader.at_end() && root.height <= kHighest && root.next_page <= kFreeNumbers &&
                    (root.number == 0) == (root.sum.rows == 0) && root.number < root.next_page;
  return good ? std::optional(head) : std::nullopt;
}

// Ascending, each as the distance from the one before.
std::vector<std::uint8_t> EncodeNumbers(std::vector<PageNumber> numbers) {
  std::ranges::sort(numbers);
  std::vector<std::uint8_t> bytes;
  WireWriter writer(&bytes);
  PageNumber before = 0;
  for (const PageNumber number : numbers) writer.PutVarint(number - std::exchange(before, number));
  return bytes;
}

std::optional<std::vector<PageNumber>> DecodeNumbers(Bytes bytes, PageNumber next_page) {
  std::vector<PageNumber> numbers;
  WireReader reader(bytes);
  std::uint64_t number = 0;
  while (!reader.at_end()) {
    const std::uint64_t distance = reader.TakeVarint();
    if (!reader.good() || distance == 0 || distance >= next_page - number) return std::nullopt;
    numbers.push_back(static_cast<PageNumber>(number += distance));
  }
  return numbers;
}

using Heads = std::array<std::optional<Head>, kCopies>;

// Of a collation's copies; `first` is the key of the first one's head.
ENGSTATUS ReadHeads(Store& store, std::uint64_t first, std::size_t totals, Heads* heads) {
  for (std::uint32_t copy = 0; copy < kCopies; ++copy) {
    std::vector<std::uint8_t> bytes;
    const ENGSTATUS status = store.ReadPage(first + (std::uint64_t{copy} << kPageBits), &bytes);
    if (status != ENG_OK) return status;
    (*heads)[copy] = DecodeHead(bytes, totals);
  }
  return ENG_OK;
}

bool StandsFor(const Head& head, const IndexTree::Identity& identity, std::uint32_t view) {
  return head.view == view && head.identity.design == identity.design;
}

// For a user's own rows: the one that is the user's, or one that is no use to anyone, or the one not kept for longest.
std::uint32_t ChooseCopy(const Heads& heads, const IndexTree::Identity& identity, std::uint32_t view) {
  const auto worth = [&](const std::optional<Head>& head) -> std::uint64_t {
    if (head && head->restricted && head->identity.names == identity.names) return 0;
    return head && head->restricted && StandsFor(*head, identity, view) ? head->generation + 1 : 1;
  };
  const auto least = std::ranges::min_element(heads, {}, worth);
  return static_cast<std::uint32_t>(least - heads.begin());
}

}  // namespace

std::uint64_t IndexTree::PageKeyOf(std::uint32_t copy, std::uint32_t page) const {
  static_assert(std::uint64_t{1} << (kCollationBits + kCopyBits + kPageBits) == kPagesOfSlate);
  return FirstPageOf(view_) + ((std::uint64_t{collation_.number} << kCopyBits | copy) << kPageBits) + page;
}

std::uint64_t IndexTree::PageKey(std::uint32_t page) const { return PageKeyOf(copy_, page); }

ENGSTATUS IndexTree::ReadStoredLocked(std::uint32_t page, std::vector<std::uint8_t>* bytes) {
  // A page is good for the head that was read with it.
  std::vector<std::uint8_t> head_bytes;
  const ENGSTATUS status = database_->store().ReadPages(PageKey(page), PageKey(kHead), bytes, &head_bytes);
  if (status != ENG_OK) return status;
  const std::optional<Head> head = DecodeHead(head_bytes, totals_.columns());
  return head && head->generation == generation_ ? ENGSTATUS{ENG_OK} : ENGSTATUS{ENG_ERR_SLATE_CONFLICT};
}

std::vector<std::uint8_t> IndexTree::ReadStored(std::uint32_t page) {
  if (!generation_) throw IndexFault{ENG_ERR_DB_DAMAGED};
  std::vector<std::uint8_t> bytes;
  const std::lock_guard lock(database_->mutex());
  const ENGSTATUS status = ReadStoredLocked(page, &bytes);
  if (status != ENG_OK) throw IndexFault{status};
  return bytes;
}

ENGSTATUS IndexTree::LoadKept(const Identity& identity, bool* found) {
  Drop();
  *found = false;
  Heads heads;
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = ReadHeads(database_->store(), PageKeyOf(0, kHead), totals_.columns(), &heads);
    if (status != ENG_OK) return status;
  }
  const auto kept = std::ranges::find_if(heads, [&](const std::optional<Head>& each) {
    return each && StandsFor(*each, identity, view_) && (!each->restricted || each->identity.names == identity.names);
  });
  if (kept == heads.end()) return ENG_OK;
  const std::optional<Head>& head = *kept;
  copy_ = static_cast<std::uint32_t>(kept - heads.begin());
  generation_ = head->generation;
  feed = head->feed;
  folder_change = head->folder;
  restricted = head->restricted;
  tree_.SetRoot(head->root);
  const ENGSTATUS status = LoadFreeNumbers(head->root.next_page);
  if (status != ENG_OK) return status;
  directory_.SetReader([this](std::uint32_t part) { return ReadStored(kFirstPart + part); });
  sound_ = true;
  *found = true;
  return ENG_OK;
}

// What has been written anew since shows with the first page.
ENGSTATUS IndexTree::LoadFreeNumbers(PageNumber next_page) {
  std::vector<std::uint8_t> bytes;
  const std::lock_guard lock(database_->mutex());
  const ENGSTATUS status = ReadStoredLocked(kFreeNumbers, &bytes);
  if (status == ENG_ERR_SLATE_CONFLICT) return ENG_OK;
  auto numbers = DecodeNumbers(bytes, next_page);
  if (status == ENG_OK && numbers) tree_.SetFreeNumbers(std::move(*numbers));
  return status;
}

// Clears the place for an index that is not kept yet.
ENGSTATUS IndexTree::TakeCopy(std::uint32_t copy) {
  copy_ = copy;
  const std::uint32_t last = restricted ? copy : kCopies - 1;
  return database_->store().DropPages(PageKeyOf(copy, kHead), PageKeyOf(last, kLastPage));
}

ENGSTATUS IndexTree::WriteChanged(const Identity& identity, std::uint64_t generation) {
  Store& store = database_->store();
  ENGSTATUS status = tree_.root().next_page <= kFreeNumbers ? ENG_OK : ENG_ERR_DB_FULL;
  const auto write = [&](std::uint32_t page, Bytes bytes) {
    if (status == ENG_OK) status = store.WritePage(PageKey(page), bytes);
  };
  for (const PageNumber gone : tree_.Gone()) {
    if (status == ENG_OK) status = store.DropPages(PageKey(gone), PageKey(gone));
  }
  tree_.ForEachChanged([&](const Page& page) { write(page.number, page.Encode()); });
  directory_.ForEachChanged(
      [&](std::uint32_t part, const std::vector<std::uint8_t>& bytes) { write(kFirstPart + part, bytes); });
  write(kFreeNumbers, EncodeNumbers(tree_.free_numbers()));
  Head head{identity, view_, restricted, generation, feed, folder_change, tree_.root()};
  write(kHead, Encode(head));
  return status;
}

ENGSTATUS IndexTree::Keep(const Identity& identity, const std::function<bool()>& stands) {
  const std::lock_guard lock(database_->mutex());
  if (!stands()) return ENG_ERR_SLATE_CONFLICT;
  qcore::Change change(*database_);
  ENGSTATUS status = change.Begin();
  if (status != ENG_OK) return status;
  Heads heads;
  status = ReadHeads(database_->store(), PageKeyOf(0, kHead), totals_.columns(), &heads);
  if (status != ENG_OK) return status;
  if (generation_ && (!heads[copy_] || heads[copy_]->generation != *generation_)) {
    unkept_ = 0;  // not asked for again before as many changes more
    return ENG_ERR_SLATE_CONFLICT;
  }
  if (!generation_) status = TakeCopy(restricted ? ChooseCopy(heads, identity, view_) : 0);
  if (status != ENG_OK) return status;
  // Never that of an index that was dropped meanwhile.
  // Above those of all copies: the clock alone doesn't tell which was kept last.
  std::uint64_t generation = std::max<std::uint64_t>(1, Pack(Now()));
  for (const std::optional<Head>& head : heads) generation = std::max(generation, head ? head->generation + 1 : 0);
  status = WriteChanged(identity, generation);
  if (status == ENG_OK) status = change.Commit();
  if (status != ENG_OK) return status;
  generation_ = generation;
  tree_.MarkKept();
  directory_.MarkKept();
  unkept_ = 0;
  return ENG_OK;
}

}  // namespace qcore::index
