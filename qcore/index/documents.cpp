#include "qcore/index/documents.h"

#include <algorithm>

namespace qcore::index {

namespace {

constexpr std::uint16_t kClassDocument = 0x0001;
constexpr std::size_t kBatch = 256;

}  // namespace

ValueLayout::ValueLayout(const Design& design) {
  for (const Column& column : design.columns) {
    if (!column.in_summary()) continue;
    columns_.push_back(&column);
    names_.push_back(column.name);
  }
  for (const Collation& collation : design.collations) {
    for (const SortColumn& column : collation.columns) {
      if (Find(column.name) == names_.size()) names_.push_back(column.name);
    }
  }
}

std::size_t ValueLayout::Find(std::string_view name) const {
  return static_cast<std::size_t>(
      std::find_if(names_.begin(), names_.end(), [name](const std::string& n) { return SameName(n, name); }) -
      names_.begin());
}

class DocumentReader::Formulas {};

DocumentReader::DocumentReader(std::shared_ptr<Database> database, const Design& design, const ValueLayout& layout)
    : database_(std::move(database)), design_(design), layout_(layout), rows_(*database_) {
  for (std::size_t value = 0; value < layout_.size(); ++value) places_.push_back(rows_.Want(layout_.name(value)));
}

DocumentReader::~DocumentReader() = default;

ENGSTATUS DocumentReader::Open() { return ENG_OK; }

bool DocumentReader::selects_below() const { return false; }

bool DocumentReader::IsMember(std::uint32_t id) const {
  return !members_ || std::binary_search(members_->begin(), members_->end(), id);
}

ENGSTATUS DocumentReader::CheckReaders(Document* document, bool* may_read) {
  std::vector<std::pair<std::string, PackedItem>> items;
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = rows_.ForEach([&items](std::string_view name, const PackedItem& item) {
      if (ReadersCheck::Wants(item.flags, name)) items.emplace_back(name, item);
    });
    if (status != ENG_OK) return status;
  }
  ReadersCheck check(user_names_);
  for (const auto& [name, item] : items) check.Item(item.flags, name, rows_.ValueOf(item));
  document->restricted = check.restricted();
  *may_read = check.may_read();
  return ENG_OK;
}

ENGSTATUS DocumentReader::Evaluate(const StoredRow& row, Document* document) {
  const SlateHeader& header = row.header;
  document->id = header.id;
  document->universal = {header.origin.File, header.origin.Slate};
  document->parent = header.parent;
  document->selected = false;
  document->restricted = false;
  if (header.slate_class != kClassDocument || header.id % 4 != 0 || !IsMember(header.id)) return ENG_OK;
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = rows_.Take(header, row.packed);
    // A document that can't be read has no row; the check of the database names it.
    if (status == ENG_ERR_ITEM_DAMAGED) return ENG_OK;
    if (status != ENG_OK) return status;
  }
  bool may_read = true;
  if (rows_.names_readers()) {
    const ENGSTATUS status = CheckReaders(document, &may_read);
    if (status != ENG_OK || !may_read) return status;
  }
  document->selected = true;
  document->values.resize(layout_.size());
  for (std::size_t value = 0; value < layout_.size(); ++value) {
    const Bytes bytes = rows_.Value(places_[value]);
    document->values[value].assign(bytes.begin(), bytes.end());
  }
  return ENG_OK;
}

ENGSTATUS DocumentReader::Read(std::uint32_t id, Document* document) {
  StoredRow row;
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = database_->store().ReadSlate(id, [&row](const SlateHeader& header, Bytes packed) {
      row.header = header;
      row.packed.assign(packed.begin(), packed.end());
      return ENGSTATUS{ENG_OK};
    });
    if (status == ENG_ERR_NO_SLATE || status == ENG_ERR_SLATE_DELETED) {
      *document = Document();
      document->id = id;
      return ENG_OK;
    }
    if (status != ENG_OK) return status;
  }
  return Evaluate(row, document);
}

ENGSTATUS DocumentReader::ReadAll(const Visitor& visit) {
  std::vector<StoredRow> batch(kBatch);
  Document document;
  for (std::uint32_t first = 0;;) {
    std::size_t count = 0;
    {
      const std::lock_guard lock(database_->mutex());
      const ENGSTATUS status = database_->store().ScanSlates(first, [&](const SlateHeader& header, Bytes packed) {
        batch[count].header = header;
        batch[count].packed.assign(packed.begin(), packed.end());
        return ++count < batch.size();
      });
      if (status != ENG_OK) return status;
    }
    for (std::size_t i = 0; i < count; ++i) {
      ENGSTATUS status = Evaluate(batch[i], &document);
      if (status == ENG_OK) status = visit(document);
      if (status != ENG_OK) return status;
    }
    if (count < batch.size()) return ENG_OK;
    first = batch.back().header.id + 1;
  }
}

}  // namespace qcore::index
