// The fields of a stored form.
#ifndef QUILLON_QCORE_FORMS_DESIGN_H
#define QUILLON_QCORE_FORMS_DESIGN_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/records.h"
#include "qcore/slates/slate.h"

namespace qcore::forms {

struct Field {
  std::string name;
  std::uint16_t flags = 0;
  std::uint16_t data_type = 0;
  bool late = false;  // computed after validation
  NFMT number_format{};
  TFMT time_format{};
  std::vector<std::uint8_t> value;  // code of the formulas
  std::vector<std::uint8_t> translation;
  std::vector<std::uint8_t> validation;
};

// The form that a document of that form name is computed with; ENG_ERR_NO_FORM.
[[nodiscard]] ENGSTATUS FindForm(const std::shared_ptr<Database>& database, std::string_view name, std::uint32_t* id);
// In stream order, those of a subform where it is inserted first. A subform or a definition that is missing has none;
// ENG_ERR_FORM_DESIGN for records that can't be read.
[[nodiscard]] ENGSTATUS ReadFields(const std::shared_ptr<Database>& database, std::uint32_t form,
                                   std::vector<Field>* fields);
// The same of a form that is open, as it stands there.
[[nodiscard]] ENGSTATUS ReadFields(Slate& form, std::vector<Field>* fields);
// Name of the subform that a hotspot record inserts; empty for any other hotspot. ENG_ERR_FORM_DESIGN.
[[nodiscard]] ENGSTATUS ReadSubformName(Bytes record, std::string_view* name);
// Calls with the open subform; one that is gone is passed over.
[[nodiscard]] ENGSTATUS WithSubform(const std::shared_ptr<Database>& database, std::string_view name,
                                    const std::function<ENGSTATUS(Slate&)>& take);

// How deep subforms are read in each other.
inline constexpr unsigned kDeepestSubform = 8;

}  // namespace qcore::forms

#endif
