// Documents as an index sees them: selected or not, with their columns' values.
#ifndef QUILLON_QCORE_INDEX_DOCUMENTS_H
#define QUILLON_QCORE_INDEX_DOCUMENTS_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "qcore/index/design.h"
#include "qcore/index/values.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/rowreader.h"

namespace qcore::index {

struct Document {
  std::uint32_t id = 0;
  UNIVERSALSLATEID universal{};
  std::optional<UNIVERSALSLATEID> parent;
  bool selected = false;
  bool restricted = false;    // whether its selection depends on the user
  std::vector<Value> values;  // by value number
};

// Which values an index needs of a document: those of the summary columns first, then what else is sorted by.
class ValueLayout {
 public:
  explicit ValueLayout(const Design& design);

  std::size_t size() const { return names_.size(); }
  std::size_t summary_size() const { return columns_.size(); }
  const std::string& name(std::size_t value) const { return names_[value]; }
  // The column of a summary value.
  const Column& column(std::size_t value) const { return *columns_[value]; }
  std::size_t Find(std::string_view name) const;

 private:
  std::vector<const Column*> columns_;
  std::vector<std::string> names_;
};

// Reads and evaluates documents. Used by one thread at a time.
class DocumentReader {
 public:
  // The design stays the caller's. Members restrict to a folder's documents.
  DocumentReader(std::shared_ptr<Database> database, const Design& design, const ValueLayout& layout);
  ~DocumentReader();

  // Statuses of the selection's code.
  [[nodiscard]] ENGSTATUS Open();
  // For a folder: its members in ascending order.
  void SetMembers(std::vector<std::uint32_t> members);
  // Lists in ascending order.
  void ChangeMembers(const std::vector<std::uint32_t>& added, const std::vector<std::uint32_t>& removed);
  // Whose readers' lists count from now on.
  void SetNames(const NamesList& names);
  // What was found out of documents above others holds for one batch of documents: call it before each.
  void ForgetAbove() { above_.reset(); }

  // ENG_OK with nothing selected for a slate that is gone or no document. A damaged document is not selected.
  [[nodiscard]] ENGSTATUS Read(std::uint32_t id, Document* document);
  // Every document from the lowest ID on; the visitor's status other than ENG_OK ends it. Not within a transaction of
  // another thread: others may save between the parts that are read.
  using Visitor = std::function<ENGSTATUS(Document&)>;
  [[nodiscard]] ENGSTATUS ReadAll(const Visitor& visit);
  // Whether a change of a document can change the selection of those below it.
  bool selects_below() const;
  // Whether values have marks that each row expands.
  bool marks_rows() const;
  // Whether rows change by themselves: at all, within a day, by responses, by what is elsewhere, or with the user.
  bool depends_on_time() const;
  bool depends_on_hour() const;
  bool counts_responses() const;
  bool depends_on_user() const;
  // Over the facts of the database and the view that values depend on, 0 if they do not: as of Open.
  std::uint64_t place_sum() const { return place_sum_; }

 private:
  class Formulas;
  class RowSource;

  template <typename Test>
  bool AnyProgram(Test test) const;
  [[nodiscard]] ENGSTATUS CheckReaders(Document* document, bool* may_read);
  [[nodiscard]] ENGSTATUS Evaluate(const StoredRow& row, Document* document);
  bool IsMember(std::uint32_t id) const;
  // A document above others.
  struct Above {
    bool selected = false;  // by itself
    std::optional<bool> any_above;
    std::optional<UNIVERSALSLATEID> parent;
  };

  [[nodiscard]] ENGSTATUS OpenAbove();
  Above& LookAbove(const UNIVERSALSLATEID& universal);
  bool IsBelowSelected(const SlateHeader& header, bool deep);
  bool Selects();
  void ComputeValue(std::size_t value, Value* target);

  std::shared_ptr<Database> database_;
  const Design& design_;
  const ValueLayout& layout_;
  RowReader rows_;
  StoredRow room_;                     // for the next one that is read
  std::vector<std::uint32_t> places_;  // in rows_, by value number
  std::optional<std::vector<std::uint32_t>> members_;
  NamesList user_names_ = CurrentNames();
  std::unique_ptr<RowSource> source_;
  std::unique_ptr<Formulas> formulas_;
  std::unique_ptr<DocumentReader> above_;                           // for the selection of those above a response
  std::map<std::pair<std::uint64_t, std::uint64_t>, Above> known_;  // of above_: by universal ID
  std::uint64_t place_sum_ = 0;
  bool is_above_ = false;  // looks at no document above, and computes no values
};

}  // namespace qcore::index

#endif
