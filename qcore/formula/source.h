// What a formula can learn while it is evaluated, and where its assignments go. Each operation has an answer for "there
// is none", so that a source gives only what it has.
#ifndef QUILLON_QCORE_FORMULA_SOURCE_H
#define QUILLON_QCORE_FORMULA_SOURCE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::formula {

using Bytes = std::span<const std::uint8_t>;

struct ItemValue {
  std::uint16_t type = 0;
  std::uint16_t flags = 0;
  Bytes data;  // behind the type word; good until the source is asked for another document
};

struct DocumentFacts {
  std::uint32_t id = 0;  // 0 for a document that was never saved
  ORIGINATORID origin{};
  TIMEDATE created{};
  TIMEDATE modified{};
  TIMEDATE accessed{};
  TIMEDATE added{};
  std::uint16_t slate_class = 1;
  std::optional<UNIVERSALSLATEID> parent;
};

struct DatabaseFacts {
  std::string path;
  std::string title;
  std::string replica;  // 16 hexadecimal digits
};

// What one look-up wants: the values of `column` (from 1), or of the item `field` when it is not empty, in the view's
// documents; with a key, in those that the key finds.
struct Lookup {
  std::string_view database;  // a path; empty for the document's own database
  std::string_view view;
  Bytes key;  // a single value with its type word; empty for none
  std::uint32_t column = 0;
  std::string_view field;
  bool partial = false;  // the key may be the start of the entry
};
// Takes the value of one document with its type word, empty where there is none. May throw, with no lock held.
using TakeValue = std::function<void(Bytes value)>;

class Source {
 public:
  static constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;

  virtual ~Source() = default;

  // The first item of the name, names without ASCII case. `index` is the name's place in Program::item_names, or
  // kNoIndex for a name that was computed. False when the document has none.
  virtual bool FindItem(std::uint32_t index, std::string_view name, ItemValue* item) = 0;
  // Every item in order, those of one name too.
  virtual void ForEachItem(const std::function<void(std::string_view name, const ItemValue&)>&) {}

  // Null without a document.
  virtual const DocumentFacts* Document() { return nullptr; }
  virtual std::uint32_t Size() { return 0; }
  virtual std::uint32_t ResponseCount() { return 0; }
  // Whether the document is a response to, or (`deep`) somewhere below, a document that the selection takes.
  virtual bool IsBelowSelected(bool deep) {
    static_cast<void>(deep);
    return false;
  }

  virtual const DatabaseFacts* Database() { return nullptr; }
  virtual std::string_view ViewTitle() { return {}; }
  // The user's names: the name itself, then groups and "[roles]". Empty stands for the process's user.
  virtual std::span<const std::string> UserNames() { return {}; }
  // Nothing stands for the process's clock.
  virtual std::optional<TIMEDATE> Now() { return std::nullopt; }

  // In the order of the view. ENG_ERR_FORMULA_LOOKUP where there are no look-ups, ENG_ERR_NO_ENTRY for a key that finds
  // nothing.
  [[nodiscard]] virtual ENGSTATUS LookUp(const Lookup& lookup, const TakeValue& take) {
    static_cast<void>(lookup);
    static_cast<void>(take);
    return ENG_ERR_FORMULA_LOOKUP;
  }
  // Takes an assignment; `value` begins with its type word and is empty to remove the item. A source that keeps its
  // document as it is answers ENG_OK and does nothing.
  [[nodiscard]] virtual ENGSTATUS Assign(std::string_view name, Bytes value) {
    static_cast<void>(name);
    static_cast<void>(value);
    return ENG_OK;
  }
};

// No document: formulas that need none.
class NoDocument final : public Source {
 public:
  bool FindItem(std::uint32_t, std::string_view, ItemValue*) override { return false; }
};

}  // namespace qcore::formula

#endif
