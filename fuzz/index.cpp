// Stored designs, index pages, row values and find keys of any bytes: read whole and kept within bounds, or refused.
#include <algorithm>

#include "fuzz/claim.h"
#include "qcore/index/design.h"
#include "qcore/index/find.h"
#include "qcore/index/page.h"
#include "qcore/index/values.h"

namespace {

using fuzz::Claim;
using namespace qcore::index;

void CheckDesigns(Bytes bytes) {
  Design design;
  if (DecodeViewFormat(bytes, &design)) {
    std::size_t size = 0;
    for (const Column& column : design.columns) size += column.name.size() + column.formula.size();
    Claim(size <= bytes.size(), "columns lie in the value");
  }
  Collation collation;
  if (!DecodeCollation(bytes, &collation)) return;
  for (const SortColumn& column : collation.columns)
    Claim(column.name.size() <= bytes.size(), "names lie in the value");
}

void CheckPages(Bytes bytes) {
  for (const std::uint8_t height : {0, 1}) {
    const std::unique_ptr<Page> page = Page::Decode(bytes, 1, height, 1);
    if (!page) continue;
    const std::vector<std::uint8_t> again = page->Encode();
    const std::unique_ptr<Page> second = Page::Decode(again, 1, height, 1);
    Claim(second != nullptr && second->Count(nullptr).SameCounts(page->Count(nullptr)), "a page reads back as it was");
    for (std::uint32_t row = 0; row < page->leaf.count(); ++row) {
      const Row read = page->leaf.RowAt(row);
      Claim(page->leaf.LowerBound(read.key) == row, "a key is found where it stands");
    }
  }
}

void CheckValues(Bytes bytes) {
  RowValues values(bytes);
  RowValues::Item item;
  std::size_t size = 0;
  while (values.Next(&item)) size += item.data.size();
  Claim(size <= bytes.size(), "values lie in the row");
  for (const Value& entry : EntriesOf(bytes)) Claim(entry.size() <= bytes.size() + 2, "entries lie in the value");
  std::vector<Value> keys;
  if (DecodeKeys(bytes.data(), bytes.size(), &keys)) {
    std::size_t all = 0;
    for (const Value& key : keys) all += key.size();
    Claim(all <= bytes.size(), "keys lie in the table");
  }
  std::string key;
  AppendValueKey(bytes, {}, &key);
  Claim(!key.empty(), "every value has a key");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 16000) return 0;
  const Bytes bytes(data, size);
  CheckDesigns(bytes);
  CheckPages(bytes);
  CheckValues(bytes);
  return 0;
}
