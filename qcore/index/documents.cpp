#include "qcore/index/documents.h"

#include <algorithm>
#include <iterator>

#include "qcore/formula/formula.h"
#include "qcore/formula/slatesource.h"
#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::uint16_t kClassDocument = 0x0001;
constexpr std::size_t kBatch = 256;
constexpr std::size_t kNoCode = SIZE_MAX;

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

// A stored row as what formulas read.
class DocumentReader::RowSource final : public formula::Source {
 public:
  RowSource(RowReader& rows, DocumentReader& owner) : rows_(rows), owner_(owner) {}

  // Names that a program reads, by the indexes that it asks with.
  void SetPlaces(const std::vector<std::uint32_t>* places) { places_ = places; }
  void Start() { facts_.reset(); }

  bool FindItem(std::uint32_t index, std::string_view name, formula::ItemValue* item) override {
    if (index != kNoIndex && index < places_->size()) return Take((*places_)[index], item);
    bool found = false;
    ForEachItem([&](std::string_view present, const formula::ItemValue& value) {
      if (found || !SameName(present, name)) return;
      *item = value;
      found = true;
    });
    return found;
  }

  void ForEachItem(const std::function<void(std::string_view, const formula::ItemValue&)>& take) override {
    std::vector<std::pair<std::string, PackedItem>> items;
    {
      const std::lock_guard lock(owner_.database_->mutex());
      const ENGSTATUS status =
          rows_.ForEach([&items](std::string_view name, const PackedItem& item) { items.emplace_back(name, item); });
      if (status != ENG_OK) return;
    }
    for (const auto& [name, item] : items) {
      const Bytes value = rows_.ValueOf(item);
      if (value.size() >= kSmallestValue) take(name, {item.type, item.flags, value.subspan(kSmallestValue)});
    }
  }

  const formula::DocumentFacts* Document() override {
    if (facts_) return &*facts_;
    const SlateHeader& header = rows_.header();
    facts_ = formula::DocumentFacts{header.id,       header.origin, header.origin.Slate, header.modified,
                                    header.accessed, header.added,  header.slate_class,  header.parent};
    return &*facts_;
  }

  std::uint32_t Size() override {
    std::uint32_t size = 0;
    const std::lock_guard lock(owner_.database_->mutex());
    const ENGSTATUS status = rows_.ForEach([&size](std::string_view, const PackedItem& item) { size += item.size; });
    return status == ENG_OK ? size : 0;
  }

  std::uint32_t ResponseCount() override {
    std::vector<std::uint32_t> ids;
    const ORIGINATORID& origin = rows_.header().origin;
    const std::lock_guard lock(owner_.database_->mutex());
    const ENGSTATUS status = owner_.database_->store().FindResponses({origin.File, origin.Slate}, &ids);
    return status == ENG_OK ? static_cast<std::uint32_t>(ids.size()) : 0;
  }

  const formula::DatabaseFacts* Database() override {
    if (!database_) database_ = formula::FactsOf(*owner_.database_);
    return &*database_;
  }
  std::string_view ViewTitle() override { return owner_.design_.title; }
  bool IsBelowSelected(bool deep) override { return owner_.IsBelowSelected(rows_.header(), deep); }

 private:
  bool Take(std::uint32_t place, formula::ItemValue* item) {
    const PackedItem* packed = rows_.Item(place);
    if (!packed) return false;
    const std::uint16_t type = packed->type;
    const std::uint16_t flags = packed->flags;
    const Bytes value = rows_.Value(place);
    if (value.size() < kSmallestValue) return false;
    *item = {type, flags, value.subspan(kSmallestValue)};
    return true;
  }

  RowReader& rows_;
  DocumentReader& owner_;
  const std::vector<std::uint32_t>* places_ = nullptr;
  std::optional<formula::DocumentFacts> facts_;
  std::optional<formula::DatabaseFacts> database_;
};

// The view's compiled code: the selection with the columns that were merged into it, and columns that stand alone.
class DocumentReader::Formulas {
 public:
  ENGSTATUS Load(Bytes code, RowReader* rows) {
    std::shared_ptr<const formula::Program> program;
    const ENGSTATUS status = formula::Program::Load(code, &program);
    if (status != ENG_OK) return status;
    Code& made = codes_.emplace_back(formula::Evaluator(program));
    for (const std::string& name : program->item_names()) made.places.push_back(rows->Want(name));
    return ENG_OK;
  }

  struct Code {
    explicit Code(formula::Evaluator e) : evaluator(std::move(e)) {}
    formula::Evaluator evaluator;
    std::vector<std::uint32_t> places;
  };
  // Where a column's value comes from; no code for an item of the column's name.
  struct Origin {
    std::optional<std::size_t> code;
    std::size_t section = 0;
  };

  bool has_selection = false;
  std::vector<Code>& codes() { return codes_; }
  std::vector<Origin> origins;  // by value number

 private:
  std::vector<Code> codes_;
};

DocumentReader::DocumentReader(std::shared_ptr<Database> database, const Design& design, const ValueLayout& layout)
    : database_(std::move(database)),
      design_(design),
      layout_(layout),
      rows_(*database_),
      source_(std::make_unique<RowSource>(rows_, *this)),
      formulas_(std::make_unique<Formulas>()) {
  for (std::size_t value = 0; value < layout_.size(); ++value) places_.push_back(rows_.Want(layout_.name(value)));
}

DocumentReader::~DocumentReader() = default;

ENGSTATUS DocumentReader::Open() {
  Formulas& formulas = *formulas_;
  formulas.origins.resize(layout_.size());
  if (!design_.selection.empty()) {
    const ENGSTATUS status = formulas.Load(design_.selection, &rows_);
    if (status != ENG_OK) return status;
    formulas.has_selection = true;
    const formula::Program& program = formulas.codes().front().evaluator.program();
    for (std::size_t section = 1; section < program.section_count(); ++section) {
      const std::size_t value = layout_.Find(program.section_name(section));
      if (value < layout_.size()) formulas.origins[value] = {0, section};
    }
  }
  for (std::size_t value = 0; value < layout_.summary_size(); ++value) {
    const Column& column = layout_.column(value);
    if (formulas.origins[value].code || column.formula.empty()) continue;
    // A column whose code can't be used has no values; the other columns have.
    if (formulas.Load(column.formula, &rows_) == ENG_OK) {
      formulas.origins[value] = {formulas.codes().size() - 1, 0};
    } else {
      formulas.origins[value] = {kNoCode, 0};
    }
  }
  if (!AnyProgram([](const formula::Program& program) { return program.depends_on_place(); })) return ENG_OK;
  const formula::DatabaseFacts& facts = *source_->Database();
  place_sum_ = 1;
  for (const std::string_view text : {std::string_view(facts.path), std::string_view(facts.title),
                                      std::string_view(facts.replica), std::string_view(design_.title)}) {
    const Bytes bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    place_sum_ = place_sum_ << 32 ^ Checksum(bytes, place_sum_);
  }
  return ENG_OK;
}

bool DocumentReader::selects_below() const {
  if (!formulas_->has_selection) return false;
  const formula::Program& program = formulas_->codes().front().evaluator.program();
  return program.selects_responses() || program.selects_descendants();
}

template <typename Test>
bool DocumentReader::AnyProgram(Test test) const {
  return std::ranges::any_of(formulas_->codes(),
                             [test](const Formulas::Code& code) { return test(code.evaluator.program()); });
}

bool DocumentReader::marks_rows() const {
  return AnyProgram([](const formula::Program& program) { return program.marks_rows(); });
}

bool DocumentReader::depends_on_time() const {
  return AnyProgram([](const formula::Program& program) { return program.depends_on_time_alone(); });
}

bool DocumentReader::depends_on_hour() const {
  return AnyProgram([](const formula::Program& program) { return program.depends_on_hour(); });
}

bool DocumentReader::counts_responses() const {
  return AnyProgram([](const formula::Program& program) { return program.counts_responses(); });
}

bool DocumentReader::depends_on_user() const {
  return AnyProgram([](const formula::Program& program) { return program.depends_on_user(); });
}

void DocumentReader::SetMembers(std::vector<std::uint32_t> members) {
  members_ = std::move(members);
  above_.reset();
}

void DocumentReader::ChangeMembers(const std::vector<std::uint32_t>& added, const std::vector<std::uint32_t>& removed) {
  std::vector<std::uint32_t> stay;
  std::vector<std::uint32_t> all;
  std::ranges::set_difference(*members_, removed, std::back_inserter(stay));
  std::ranges::set_union(stay, added, std::back_inserter(all));
  SetMembers(std::move(all));
}

void DocumentReader::SetNames(const NamesList& names) {
  user_names_ = names;
  above_.reset();
}

ENGSTATUS DocumentReader::OpenAbove() {
  if (above_) return ENG_OK;
  auto above = std::make_unique<DocumentReader>(database_, design_, layout_);
  above->is_above_ = true;
  above->members_ = members_;
  above->user_names_ = user_names_;
  const ENGSTATUS status = above->Open();
  if (status == ENG_OK) above_ = std::move(above);
  return status;
}

// One that is not there, or can't be read, ends the way up.
DocumentReader::Above& DocumentReader::LookAbove(const UNIVERSALSLATEID& universal) {
  const auto [at, fresh] = above_->known_.try_emplace({Pack(universal.File), Pack(universal.Slate)});
  Above& above = at->second;
  if (!fresh) return above;
  std::uint32_t id = 0;
  {
    const std::lock_guard lock(database_->mutex());
    if (database_->store().FindUniversal(universal, &id) != ENG_OK) return above;
  }
  Document document;
  if (above_->Read(id, &document) == ENG_OK) above = {document.selected, std::nullopt, document.parent};
  return above;
}

// Goes up from a response. What its parents are selected for by themselves is asked of a reader of its own.
bool DocumentReader::IsBelowSelected(const SlateHeader& header, bool deep) {
  if (is_above_ || OpenAbove() != ENG_OK) return false;
  if (!deep) return header.parent && LookAbove(*header.parent).selected;
  std::vector<Above*> way;
  bool found = false;
  for (std::optional<UNIVERSALSLATEID> at = header.parent; at;) {
    Above& above = LookAbove(*at);
    found = above.selected || above.any_above.value_or(false);
    if (found || above.any_above) break;
    above.any_above = false;  // where a circle of responses ends
    way.push_back(&above);
    at = above.parent;
  }
  for (Above* above : way) above->any_above = found;
  return found;
}

bool DocumentReader::Selects() {
  if (!formulas_->has_selection) return true;
  Formulas::Code& code = formulas_->codes().front();
  source_->SetPlaces(&code.places);
  bool selected = false;
  // A document on which the selection fails is not selected.
  return code.evaluator.Selects(*source_, &selected) == ENG_OK && selected;
}

void DocumentReader::ComputeValue(std::size_t value, Value* target) {
  const Formulas::Origin& origin = formulas_->origins[value];
  if (!origin.code) {
    const Bytes bytes = rows_.Value(places_[value]);
    target->assign(bytes.begin(), bytes.end());
    return;
  }
  target->clear();
  if (*origin.code == kNoCode) return;
  Formulas::Code& code = formulas_->codes()[*origin.code];
  source_->SetPlaces(&code.places);
  formula::Result result;
  // A column that fails has no value on this row.
  if (code.evaluator.Evaluate(*source_, origin.section, &result) != ENG_OK) return;
  target->assign(result.value.begin(), result.value.end());
}

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
  source_->Start();
  document->selected = Selects();
  if (!document->selected || is_above_) return ENG_OK;
  document->values.resize(layout_.size());
  for (std::size_t value = 0; value < layout_.size(); ++value) ComputeValue(value, &document->values[value]);
  return ENG_OK;
}

ENGSTATUS DocumentReader::Read(std::uint32_t id, Document* document) {
  if (!is_above_ && !IsMember(id)) {
    *document = Document();
    document->id = id;
    return ENG_OK;
  }
  StoredRow row = std::move(room_);  // formulas may ask for other documents
  {
    const std::lock_guard lock(database_->mutex());
    const ENGSTATUS status = database_->store().ReadSlate(id, [&row](const SlateHeader& header, Bytes packed) {
      row.header = header;
      row.packed.assign(packed.begin(), packed.end());
      return ENGSTATUS{ENG_OK};
    });
    if (IsLost(status)) {
      *document = Document();
      document->id = id;
      return ENG_OK;
    }
    if (status != ENG_OK) return status;
  }
  const ENGSTATUS status = Evaluate(row, document);
  room_ = std::move(row);
  return status;
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
