// Formulas: compiling, checking, turning back into text, and evaluating. The language is described in docs/formulas.md,
// the form of compiled code in code.h.
//
// Everything but an Evaluator is safe from any thread; an Evaluator is used by one at a time.
#ifndef QUILLON_QCORE_FORMULA_FORMULA_H
#define QUILLON_QCORE_FORMULA_FORMULA_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"
#include "qcore/formula/source.h"

namespace qcore::formula {

using Code = std::vector<std::uint8_t>;

// Where a text is wrong, in bytes.
struct Place {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

[[nodiscard]] ENGSTATUS Compile(std::string_view text, Code* code, Place* place);
// ENG_ERR_FORMULA_CODE, ENG_ERR_FORMULA_VERSION. Everything below checks its code by itself.
[[nodiscard]] ENGSTATUS Verify(Bytes code);
// The length that code says of itself; 0 for bytes that can't be code. Looks at kHeaderSize bytes.
inline constexpr std::size_t kHeaderSize = 8;
std::uint32_t LengthOf(const std::uint8_t* code);

enum class Extent { kAll, kSelection };
[[nodiscard]] ENGSTATUS Decompile(Bytes code, Extent extent, std::string* text);

// See engine/formula.h.
[[nodiscard]] ENGSTATUS MergeColumn(Bytes selection, std::string_view name, Bytes column, Code* merged);
[[nodiscard]] ENGSTATUS AddSummaryName(Bytes selection, std::string_view name, Code* merged);

// Bounds of one evaluation, each with its status.
struct Limits {
  std::uint64_t steps = 5'000'000;          // operations, list entries, stretches of text; ENG_ERR_FORMULA_STEPS
  std::uint64_t memory = 32 * 1024 * 1024;  // of intermediate values; ENG_ERR_FORMULA_MEMORY
};

// Code that has been checked and made ready to run. Shared by evaluators.
class Program {
 public:
  [[nodiscard]] static ENGSTATUS Load(Bytes code, std::shared_ptr<const Program>* program);
  virtual ~Program() = default;

  // Section 0 is the selection or the whole formula; columns that were merged in follow, with their names.
  virtual std::size_t section_count() const = 0;
  virtual std::string_view section_name(std::size_t section) const = 0;
  // Columns and summary names in the order in which they were merged.
  virtual const std::vector<std::string>& summary_names() const = 0;
  // Items that the sections read, in the order of the indexes that a Source is asked for.
  virtual const std::vector<std::string>& item_names() const = 0;
  virtual bool has_select() const = 0;
  virtual bool depends_on_time() const = 0;
  // On facts of the database or the view.
  virtual bool depends_on_place() const = 0;
  // The same where look-ups fail, as in a view's formulas.
  virtual bool depends_on_time_alone() const = 0;
  // In which way: within a day, by a document's responses. Else from one day to the next.
  virtual bool depends_on_hour() const = 0;
  virtual bool counts_responses() const = 0;
  virtual bool depends_on_user() const = 0;
  // Whether a value can have ENG_SPECIAL_... marks.
  virtual bool marks_rows() const = 0;
  // Whether selected documents take their responses, or all their descendants, along: see Source::IsBelowSelected.
  virtual bool selects_responses() const = 0;
  virtual bool selects_descendants() const = 0;
  // Whether something other than the item_names is read: items by computed names, attachments, all item names.
  virtual bool reads_any_item() const = 0;
};

struct Result {
  std::uint16_t type = 0;
  Bytes value;  // the type word in front; good until the evaluator's next use
  bool selected = true;
  bool modified = false;
  bool deleted = false;
};

class Evaluator {
 public:
  explicit Evaluator(std::shared_ptr<const Program> program, const Limits& limits = {});
  ~Evaluator();
  Evaluator(Evaluator&&) noexcept;

  const Program& program() const { return *program_; }
  const std::shared_ptr<const Program>& shared_program() const { return program_; }
  // An error value gives its status, with selected false and the other flags as they were found. The evaluator can be
  // used again after any failure.
  [[nodiscard]] ENGSTATUS Evaluate(Source& source, std::size_t section, Result* result);
  // Whether section 0 selects the document: what a view needs of its selection, without making the value.
  [[nodiscard]] ENGSTATUS Selects(Source& source, bool* selected);

 private:
  class State;
  std::shared_ptr<const Program> program_;
  std::unique_ptr<State> state_;
};

}  // namespace qcore::formula

#endif
