// The fixed part of a composite record.
#ifndef QUILLON_QCORE_FORMS_FIXED_H
#define QUILLON_QCORE_FORMS_FIXED_H

#include <cstddef>
#include <cstdint>

#include "qcore/records/layouts.h"
#include "qcore/store/store.h"

namespace qcore::forms {

// False for a record that ends within it.
template <typename Record>
bool ReadFixed(std::uint16_t code, Bytes record, Record* fixed) {
  const records::Layout* layout = records::Find(code);
  if (record.size() < layout->length) return false;
  records::Read(*layout, reinterpret_cast<const std::byte*>(record.data()), fixed, 1);
  return true;
}

}  // namespace qcore::forms

#endif
