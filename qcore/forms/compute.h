// Running an open slate through its form.
#ifndef QUILLON_QCORE_FORMS_COMPUTE_H
#define QUILLON_QCORE_FORMS_COMPUTE_H

#include <map>
#include <string>
#include <vector>

#include "qcore/forms/design.h"

namespace qcore::forms {

struct Failure {
  std::string field;
  std::string message;
};

enum class OnError { kStop, kContinue };

// See EngSlateCompute. The first failure's status; *failure says where it was.
[[nodiscard]] ENGSTATUS ComputeSlate(Slate& slate, OnError on_error, Failure* failure);

struct NameLess {
  bool operator()(std::string_view a, std::string_view b) const;
};
// What a field shows other than its item.
struct Shown {
  NFMT number_format;
  TFMT time_format;
  std::vector<std::uint8_t> value;  // its type word first; empty where it shows its item
};
using ShownFields = std::map<std::string, Shown, NameLess>;

// The fields as a reader of the document sees them: those for display, and computed ones that have no item yet, by
// their formulas, in their order. The slate stays as it is. The first formula's failure ends it.
[[nodiscard]] ENGSTATUS ComputeForDisplay(Slate& slate, std::vector<Field> fields, ShownFields* shown);

}  // namespace qcore::forms

#endif
