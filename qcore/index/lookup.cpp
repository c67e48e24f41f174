#include "qcore/index/lookup.h"

#include <string>
#include <vector>

#include "qcore/index/collection.h"
#include "qcore/index/find.h"
#include "qcore/slates/search.h"
#include "qcore/slates/slate.h"
#include "qcore/store/paths.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::uint16_t kClassView = 0x0008;
constexpr std::uint32_t kMask = ENG_READ_ID | ENG_READ_INDENT | ENG_READ_SUMMARY;

// A database that a look-up has opened for itself.
class OpenedDatabase {
 public:
  explicit OpenedDatabase(std::string file) : file_(std::move(file)) {}
  ~OpenedDatabase() {
    if (handle_ != 0) static_cast<void>(Database::Close(handle_));
  }
  OpenedDatabase(const OpenedDatabase&) = delete;
  OpenedDatabase& operator=(const OpenedDatabase&) = delete;

  ENGSTATUS Open(std::shared_ptr<Database>* database) {
    const ENGSTATUS status = handle_ == 0 ? Database::Open(file_, &handle_) : ENGSTATUS{ENG_OK};
    return status == ENG_OK ? Database::FindStore(handle_, database) : status;
  }
  const std::string& file() const { return file_; }

 private:
  std::string file_;
  ENGHANDLE handle_ = 0;
};

struct View {
  std::shared_ptr<Database> database;
  std::string name;
  std::unique_ptr<Collection> rows;
};

// What a look-up reads of each document.
struct Source {
  std::string column;      // internal name
  bool category = false;   // whose value stands for all documents of the category
  bool below = false;      // documents that hang below others too
  std::string_view field;  // instead of the column
};

// Goes over the rows that a collection has read, with mask kMask.
class Rows {
 public:
  explicit Rows(Bytes bytes) : reader_(bytes) {}

  bool Next() {
    if (!reader_.good() || reader_.at_end()) return false;
    id_ = reader_.Take<std::uint32_t>();
    indent_ = reader_.Take<std::uint16_t>();
    const std::size_t start = reader_.position();
    const auto size = reader_.Take<std::uint16_t>();
    items_ = reader_.Take<std::uint16_t>();
    lengths_ = reader_.Skip(std::size_t{items_} * 4);
    values_ = reader_.Skip(size - (reader_.position() - start));
    return reader_.good();
  }
  bool is_document() const { return (id_ & ENG_ROW_NO_DOCUMENT) == 0; }
  bool is_below() const { return indent_ != 0; }
  std::uint32_t id() const { return id_; }
  Bytes Value(std::string_view name) const {
    const std::uint8_t* at = values_;
    for (std::uint16_t i = 0; i < items_; ++i) {
      const auto name_size = LoadLittle<std::uint16_t>(lengths_ + 4 * i);
      const auto size = LoadLittle<std::uint16_t>(lengths_ + 4 * i + 2);
      if (name == std::string_view(reinterpret_cast<const char*>(at), name_size)) return {at + name_size, size};
      at += name_size + size;
    }
    return {};
  }

 private:
  WireReader reader_;
  std::uint32_t id_ = 0;
  std::uint16_t indent_ = 0;
  std::uint16_t items_ = 0;
  const std::uint8_t* lengths_ = nullptr;
  const std::uint8_t* values_ = nullptr;
};

class ViewLookups final : public formula::Lookups {
 public:
  explicit ViewLookups(std::shared_ptr<Database> own) : own_(std::move(own)) {}

  ENGSTATUS LookUp(const formula::Lookup& lookup, const formula::TakeValue& take) override {
    View* view = nullptr;
    Source source;
    std::vector<Stretch> stretches;
    ENGSTATUS status = FindView(lookup, &view);
    if (status == ENG_OK) {
      status =
          view->rows->index().With(0, [&](IndexTree& tree) { return Plan(*view, tree, lookup, &source, &stretches); });
    }
    if (status != ENG_OK) return status;
    last_.clear();
    for (const Stretch& stretch : stretches) {
      status = ReadStretch(*view, stretch, source, take);
      if (status != ENG_OK) return status;
    }
    return ENG_OK;
  }

 private:
  ENGSTATUS FindDatabase(std::string_view path, std::shared_ptr<Database>* database) {
    if (path.empty()) {
      *database = own_;
      return own_ ? ENG_OK : ENG_ERR_FORMULA_DOCUMENT;
    }
    std::string file;
    const ENGSTATUS status = ResolvePath(path, &file);
    if (status != ENG_OK) return status;
    if (own_ && own_->path() == file) {
      *database = own_;
      return ENG_OK;
    }
    for (const auto& opened : databases_) {
      if (opened->file() == file) return opened->Open(database);
    }
    databases_.push_back(std::make_unique<OpenedDatabase>(std::move(file)));
    return databases_.back()->Open(database);
  }

  ENGSTATUS FindView(const formula::Lookup& lookup, View** view) {
    std::shared_ptr<Database> database;
    ENGSTATUS status = FindDatabase(lookup.database, &database);
    if (status != ENG_OK) return status;
    for (View& known : views_) {
      if (known.database != database || known.name != lookup.view) continue;
      *view = &known;
      return ENG_OK;
    }
    std::uint32_t id = 0;
    status = FindDesign(database, kClassView, lookup.view, &id);
    if (status != ENG_OK) return status;
    auto rows = std::make_unique<Collection>(database, database, id, 0);
    status = rows->index().Open(ViewIndex::Start::kUpdated, ViewIndex::Missing::kBuild);
    if (status != ENG_OK) return status;
    views_.push_back({database, std::string(lookup.view), std::move(rows)});
    *view = &views_.back();
    return ENG_OK;
  }

  // Which rows, and what of them.
  static ENGSTATUS Plan(const View& view, IndexTree& tree, const formula::Lookup& lookup, Source* source,
                        std::vector<Stretch>* stretches) {
    stretches->clear();
    source->field = lookup.field;
    source->below = lookup.key.empty();
    if (lookup.field.empty()) {
      const auto& columns = view.rows->index().design().columns;
      if (lookup.column < 1 || lookup.column > columns.size()) return ENG_ERR_FORMULA_VALUE;
      const Column& column = columns[lookup.column - 1];
      if (!column.in_summary()) return ENG_ERR_FORMULA_VALUE;
      source->column = column.name;
      for (const RowPlanner::Sorted& sorted : tree.planner().sorted()) {
        source->category |= sorted.category && SameName(sorted.column.name, column.name);
      }
    }
    if (lookup.key.empty()) {
      stretches->push_back({0, tree.rows().rows()});
      return ENG_OK;
    }
    const Value key(lookup.key.begin(), lookup.key.end());
    const std::uint16_t flags = lookup.partial ? ENG_FIND_PARTIAL : 0;
    const ENGSTATUS status = FindStretches(tree, key, flags, stretches);
    if (status == ENG_ERR_ARGUMENT) return ENG_ERR_FORMULA_TYPE;
    return status == ENG_OK && stretches->empty() ? ENGSTATUS{ENG_ERR_NO_ENTRY} : status;
  }

  ENGSTATUS ReadStretch(View& view, const Stretch& stretch, const Source& source, const formula::TakeValue& take) {
    for (Rank rank = stretch.first; rank < stretch.end;) {
      COLLECTIONPOSITION position{};
      const ENGSTATUS placed = view.rows->index().With(0, [&](IndexTree& tree) {
        position.MaxLevel = ENG_COLLECTION_NO_LIMIT;
        Walk(tree.rows()).SetPosition(rank, &position);
        return ENGSTATUS{ENG_OK};
      });
      if (placed != ENG_OK) return placed;
      Collection::ReadResult read;
      ENGSTATUS status = view.rows->Read({ENG_GO_CURRENT, 0, ENG_GO_NEXT, stretch.end - rank, kMask}, &position, &read);
      // Rows that have gone meanwhile.
      if (status == ENG_ERR_NO_ENTRY || (status == ENG_OK && read.returned == 0)) return ENG_OK;
      if (status == ENG_OK) status = TakeRows(view, read.rows.written(), source, take);
      if (status != ENG_OK) return status;
      rank += read.returned;
    }
    return ENG_OK;
  }

  ENGSTATUS TakeRows(const View& view, Bytes bytes, const Source& source, const formula::TakeValue& take) {
    for (Rows rows(bytes); rows.Next();) {
      if (!rows.is_document() || (rows.is_below() && !source.below)) continue;
      if (!source.field.empty()) {
        const ENGSTATUS status = TakeField(view, rows.id(), source.field, take);
        if (status != ENG_OK) return status;
        continue;
      }
      const Bytes value = rows.Value(source.column);
      const bool again = source.category && std::ranges::equal(value, last_);
      if (source.category) last_.assign(value.begin(), value.end());
      take(again ? Bytes() : value);
    }
    return ENG_OK;
  }

  static ENGSTATUS TakeField(const View& view, std::uint32_t id, std::string_view field,
                             const formula::TakeValue& take) {
    Value value;
    const ENGSTATUS status = ReadValueOf(
        view.database, id, field, [&value](Bytes bytes, std::uint16_t) { value.assign(bytes.begin(), bytes.end()); });
    // A document that has gone since has none.
    const bool none = status == ENG_ERR_NO_ITEM || status == ENG_ERR_NO_SLATE || status == ENG_ERR_SLATE_DELETED;
    if (status != ENG_OK && !none) return status;
    take(value);
    return ENG_OK;
  }

  std::shared_ptr<Database> own_;
  std::vector<std::unique_ptr<OpenedDatabase>> databases_;
  std::vector<View> views_;  // which go before their databases
  Value last_;               // of the category column
};

}  // namespace

std::unique_ptr<formula::Lookups> MakeLookups(std::shared_ptr<Database> own) {
  return std::make_unique<ViewLookups>(std::move(own));
}

}  // namespace qcore::index
