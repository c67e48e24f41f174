// An open slate as what formulas read.
//
// Assignments wait until Apply, so that values which are in use stay and a formula that fails changes nothing.
#ifndef QUILLON_QCORE_FORMULA_SLATESOURCE_H
#define QUILLON_QCORE_FORMULA_SLATESOURCE_H

#include <optional>
#include <string>
#include <vector>

#include "qcore/formula/ancestors.h"
#include "qcore/formula/formula.h"
#include "qcore/formula/lookups.h"
#include "qcore/slates/slate.h"

namespace qcore::formula {

enum class Assignments { kDropped, kKept };

DatabaseFacts FactsOf(Database& database);

class SlateSource : public Source {
 public:
  // `hashes` are the folded hashes of the program's item names, or empty.
  SlateSource(Slate& slate, Assignments assignments, std::span<const std::uint32_t> hashes = {})
      : slate_(slate), assignments_(assignments), hashes_(hashes) {}

  // Without them nobody is below a selected slate, and there are no look-ups.
  void SetSurroundings(Ancestors* ancestors, LateLookups* lookups) {
    ancestors_ = ancestors;
    lookups_ = lookups;
  }

  bool FindItem(std::uint32_t index, std::string_view name, ItemValue* item) override;
  void ForEachItem(const std::function<void(std::string_view, const ItemValue&)>& take) override;
  const DocumentFacts* Document() override;
  std::uint32_t Size() override;
  std::uint32_t ResponseCount() override;
  bool IsBelowSelected(bool deep) override;
  const DatabaseFacts* Database() override;
  [[nodiscard]] ENGSTATUS LookUp(const Lookup& lookup, const TakeValue& take) override;
  [[nodiscard]] ENGSTATUS Assign(std::string_view name, Bytes value) override;

  // Puts what was assigned into the slate. On a failure what came before it is there.
  [[nodiscard]] ENGSTATUS Apply();

 private:
  struct Assigned {
    std::string name;
    std::vector<std::uint8_t> value;  // empty: the item goes
  };

  bool ReadItem(Slate::Slot slot, ItemValue* item);

  Slate& slate_;
  Assignments assignments_;
  std::span<const std::uint32_t> hashes_;
  Ancestors* ancestors_ = nullptr;
  LateLookups* lookups_ = nullptr;
  std::vector<Assigned> assigned_;
  std::vector<std::vector<std::uint8_t>> replaced_;
  std::optional<DocumentFacts> document_;
  std::optional<DatabaseFacts> database_;
};

}  // namespace qcore::formula

#endif
