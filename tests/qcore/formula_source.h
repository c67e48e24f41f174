// A document of a test: items in a map, facts that stand still, look-ups with an answer of their own.
#ifndef QUILLON_TESTS_QCORE_FORMULA_SOURCE_H
#define QUILLON_TESTS_QCORE_FORMULA_SOURCE_H

#include <map>
#include <string>
#include <vector>

#include "qcore/formula/formula.h"
#include "qcore/store/names.h"

namespace qtest {

class MapSource final : public qcore::formula::Source {
 public:
  using Bytes = qcore::formula::Bytes;
  using Value = std::vector<std::uint8_t>;

  std::vector<std::pair<std::string, Value>> items;
  qcore::formula::DocumentFacts facts;
  qcore::formula::DatabaseFacts database{"mail/ada.vlt", "Ada's mail", "852578A1004E3D0F"};
  std::vector<std::string> names{"CN=Ada King/O=Analytics", "Engineers", "[Editor]"};
  bool below_selected = false;

  MapSource() {
    facts.id = 0x8F6;
    facts.origin = {{1, 2}, {3, 4}, 5, {}};
    facts.created = {0x20, 0x25A000};
    facts.parent = UNIVERSALSLATEID{{6, 7}, {8, 9}};
  }

  bool FindItem(std::uint32_t, std::string_view name, qcore::formula::ItemValue* item) override {
    for (const auto& [known, value] : items) {
      if (!qcore::SameName(known, name)) continue;
      *item = ItemOf(value);
      return true;
    }
    return false;
  }
  void ForEachItem(const std::function<void(std::string_view, const qcore::formula::ItemValue&)>& take) override {
    for (const auto& [name, value] : items) take(name, ItemOf(value));
  }
  const qcore::formula::DocumentFacts* Document() override { return &facts; }
  std::uint32_t Size() override { return 1234; }
  std::uint32_t ResponseCount() override { return 3; }
  bool IsBelowSelected(bool deep) override { return below_selected && deep; }
  const qcore::formula::DatabaseFacts* Database() override { return &database; }
  std::string_view ViewTitle() override { return "By date"; }
  std::span<const std::string> UserNames() override { return names; }

  // The look-up as a text; keys that start with "no" find nothing.
  ENGSTATUS LookUp(const qcore::formula::Lookup& lookup, const qcore::formula::TakeValue& take) override {
    const std::string key(lookup.key.begin() + (lookup.key.empty() ? 0 : 2), lookup.key.end());
    if (key.starts_with("no")) return ENG_ERR_NO_ENTRY;
    std::string text = std::string("\0\5", 2) + std::string(lookup.database) + "," + std::string(lookup.view) + ",";
    if (!lookup.key.empty()) text += key + (lookup.partial ? "*," : ",");
    text += lookup.field.empty() ? std::to_string(lookup.column) : std::string(lookup.field);
    take({});
    take({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    return ENG_OK;
  }
  ENGSTATUS Assign(std::string_view name, Bytes value) override {
    std::erase_if(items, [&](const auto& item) { return qcore::SameName(item.first, name); });
    if (!value.empty()) items.emplace_back(name, Value(value.begin(), value.end()));
    return ENG_OK;
  }

 private:
  static qcore::formula::ItemValue ItemOf(const Value& value) {
    return {static_cast<std::uint16_t>(value[0] | value[1] << 8), 0, Bytes(value).subspan(2)};
  }
};

}  // namespace qtest

#endif
