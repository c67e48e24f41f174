// The code of $Formula: the selection, with the columns' formulas and the names that rows carry merged in.
#ifndef QUILLON_VQ_VIEWS_MERGEDFORMULA_H
#define QUILLON_VQ_VIEWS_MERGEDFORMULA_H

#include <string>
#include <string_view>

#include "engine/memory.h"
#include "vq/automation/vqformula.h"

namespace vq::viewdesign {

class MergedFormula {
 public:
  explicit MergedFormula(const VQFormula& selection);
  // A name that rows carry. Failures leave the code as it was.
  [[nodiscard]] VQSTATUS AddName(std::string_view name);
  // A column's formula under its name.
  [[nodiscard]] VQSTATUS AddColumn(std::string_view name, std::string_view code);
  // Whether anything was added.
  bool IsMerged() const { return HasNames; }
  const std::string& Code() const { return Bytes; }

 private:
  [[nodiscard]] VQSTATUS Take(ENGSTATUS result, ENGHANDLE made, std::uint16_t length);

  std::string Bytes;
  bool HasNames = false;
};

}  // namespace vq::viewdesign

#endif
