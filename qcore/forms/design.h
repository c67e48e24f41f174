// The fields of a stored form.
#ifndef QUILLON_QCORE_FORMS_DESIGN_H
#define QUILLON_QCORE_FORMS_DESIGN_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/records.h"
#include "qcore/store/database.h"

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

}  // namespace qcore::forms

#endif
