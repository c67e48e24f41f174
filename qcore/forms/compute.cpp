#include "qcore/forms/compute.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "qcore/forms/convert.h"
#include "qcore/forms/design.h"
#include "qcore/formula/formula.h"
#include "qcore/formula/lookups.h"
#include "qcore/formula/slatesource.h"
#include "qcore/store/names.h"
#include "qcore/text/textlist.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kComposite = 0x0001;
constexpr std::uint16_t kNumber = 0x0300;
constexpr std::uint16_t kText = 0x0500;
constexpr std::size_t kTypeWord = 2;

std::uint16_t WordAt(formula::Bytes bytes) { return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8); }

bool IsEditable(const Field& field) { return (field.flags & FIELD_EDITABLE) != 0; }
bool IsForDisplay(const Field& field) {
  return !IsEditable(field) && field.data_type != kComposite && (field.flags & FIELD_COMPUTED) == 0;
}
bool IsWhenComposed(const Field& field) {
  constexpr unsigned kBoth = FIELD_COMPUTED | FIELD_WHEN_COMPOSED;
  return field.data_type != kComposite && (field.flags & kBoth) == kBoth;
}

std::uint16_t ItemFlags(const Field& field) {
  unsigned flags = field.data_type == kComposite ? 0 : ENG_ITEM_SUMMARY;
  if ((field.flags & (FIELD_NAMES | FIELD_AUTHORS | FIELD_READERS)) != 0) flags |= ENG_ITEM_NAMES;
  if ((field.flags & FIELD_AUTHORS) != 0) flags |= ENG_ITEM_READERS_WRITERS;
  if ((field.flags & FIELD_READERS) != 0) flags |= ENG_ITEM_READERS;
  if ((field.flags & FIELD_PROTECTED) != 0) flags |= ENG_ITEM_PROTECTED;
  if ((field.flags & FIELD_SIGN) != 0) flags |= ENG_ITEM_SIGN;
  if ((field.flags & FIELD_SEAL) != 0) flags |= ENG_ITEM_SEAL;
  return static_cast<std::uint16_t>(flags);
}

// The slate as the run has made it so far: values for display, which never reach it, and what the present formula has
// assigned, which stays only if that succeeds.
class FormSource final : public formula::SlateSource {
 public:
  explicit FormSource(Slate& slate) : SlateSource(slate, formula::Assignments::kKept) {}

  bool FindItem(std::uint32_t index, std::string_view name, formula::ItemValue* item) override {
    for (auto each = pending_.rbegin(); each != pending_.rend(); ++each) {
      if (SameName(each->name, name)) return Give(*each, item);
    }
    for (const Named& each : display_) {
      if (SameName(each.name, name)) return Give(each, item);
    }
    return SlateSource::FindItem(index, name, item);
  }

  ENGSTATUS Assign(std::string_view name, formula::Bytes value) override {
    if (!IsItemName(name)) return ENG_ERR_ITEM_NAME;
    pending_.push_back({std::string(name), {value.begin(), value.end()}});
    return ENG_OK;
  }
  // What one formula has assigned.
  [[nodiscard]] ENGSTATUS Keep() {
    ENGSTATUS status = ENG_OK;
    for (const Named& each : pending_) {
      if (status == ENG_OK) status = SlateSource::Assign(each.name, each.value);
    }
    pending_.clear();
    return status;
  }
  void Drop() { pending_.clear(); }
  void Show(const std::string& name, std::vector<std::uint8_t> value) {
    std::erase_if(display_, [&](const Named& each) { return SameName(each.name, name); });
    display_.push_back({name, std::move(value)});
  }

 private:
  struct Named {
    std::string name;
    std::vector<std::uint8_t> value;  // empty: the item is gone
  };

  static bool Give(const Named& named, formula::ItemValue* item) {
    if (named.value.size() < kTypeWord) return false;
    *item = {WordAt(named.value), 0, formula::Bytes(named.value).subspan(kTypeWord)};
    return true;
  }

  std::vector<Named> pending_;
  std::vector<Named> display_;
};

class Run {
 public:
  Run(Slate& slate, std::vector<Field> fields)
      : slate_(slate), fields_(std::move(fields)), source_(slate), lookups_(&slate.shared_database()) {
    source_.SetSurroundings(nullptr, &lookups_);
  }

  ENGSTATUS Compute(OnError on_error, Failure* failure) {
    ENGSTATUS first = ENG_OK;
    using Step = ENGSTATUS (Run::*)(const Field&);
    for (const Step step : {&Run::Enter, &Run::Validate, &Run::ComputeLate}) {
      for (const Field& field : fields_) {
        const ENGSTATUS status = (this->*step)(field);
        if (status == ENG_OK) continue;
        if (first == ENG_OK) *failure = {field.name, message_};
        if (first == ENG_OK) first = status;
        message_.clear();
        if (on_error == OnError::kStop) return first;
      }
    }
    const ENGSTATUS applied = Apply();
    return first == ENG_OK ? applied : first;
  }

  ENGSTATUS Show(ShownFields* shown) {
    for (const Field& field : fields_) {
      Shown& entry = shown->try_emplace(field.name, Shown{field.number_format, field.time_format, {}}).first->second;
      if (IsEditable(field) || field.data_type == kComposite || field.value.empty()) continue;
      if (IsWhenComposed(field) && slate_.header().id != 0) continue;
      formula::ItemValue present;
      const bool stored = source_.FindItem(formula::Source::kNoIndex, field.name, &present);
      if (stored && !IsForDisplay(field)) continue;
      if (ENGSTATUS status = Evaluate(field, field.value, true); status != ENG_OK) return status;
      source_.Show(field.name, value_);
      entry.value = value_;
    }
    return ENG_OK;
  }

 private:
  // Evaluates and leaves the value, in the field's type, in value_.
  ENGSTATUS Evaluate(const Field& field, const std::vector<std::uint8_t>& code, bool convert) {
    std::shared_ptr<const formula::Program> program;
    ENGSTATUS status = formula::Program::Load(code, &program);
    if (status != ENG_OK) return status;
    formula::Evaluator evaluator(program);
    formula::Result result;
    status = evaluator.Evaluate(source_, 0, &result);
    if (status == ENG_OK) {
      value_.assign(result.value.begin(), result.value.end());
      if (convert) status = Convert(result.value, field, &value_);
    }
    if (status == ENG_OK) return source_.Keep();
    source_.Drop();
    return status;
  }

  ENGSTATUS Store(const Field& field) {
    formula::ItemValue present;
    const bool there = source_.FindItem(formula::Source::kNoIndex, field.name, &present);
    const formula::Bytes data = formula::Bytes(value_).subspan(kTypeWord);
    if (there && present.type == WordAt(value_) && std::ranges::equal(present.data, data)) return ENG_OK;
    stored_.push_back(&field);
    if (ENGSTATUS status = source_.Assign(field.name, value_); status != ENG_OK) return status;
    return source_.Keep();
  }

  ENGSTATUS ComputeField(const Field& field) {
    if (field.value.empty() || (IsWhenComposed(field) && slate_.header().id != 0)) return ENG_OK;
    if (ENGSTATUS status = Evaluate(field, field.value, true); status != ENG_OK) return status;
    if (!IsForDisplay(field)) return Store(field);
    source_.Show(field.name, value_);
    return ENG_OK;
  }

  ENGSTATUS Enter(const Field& field) {
    if (!IsEditable(field)) return field.late ? ENGSTATUS{ENG_OK} : ComputeField(field);
    formula::ItemValue present;
    bool there = source_.FindItem(formula::Source::kNoIndex, field.name, &present);
    if (!there && !field.value.empty()) {
      ENGSTATUS status = Evaluate(field, field.value, true);
      if (status == ENG_OK) status = Store(field);
      if (status != ENG_OK) return status;
      there = true;
    }
    if (!there || field.translation.empty()) return ENG_OK;
    const ENGSTATUS status = Evaluate(field, field.translation, true);
    return status == ENG_OK ? Store(field) : status;
  }

  ENGSTATUS Validate(const Field& field) {
    if (!IsEditable(field) || field.validation.empty()) return ENG_OK;
    if (ENGSTATUS status = Evaluate(field, field.validation, false); status != ENG_OK) return status;
    if (value_.size() < kTypeWord) return ENG_ERR_COMPUTE_REFUSED;
    const formula::Bytes data = formula::Bytes(value_).subspan(kTypeWord);
    if (WordAt(value_) == kText) {
      if (data.empty()) return ENG_OK;
      message_.assign(data.begin(), data.end());
      return ENG_ERR_COMPUTE_REFUSED;
    }
    double number = 0;
    if (WordAt(value_) == kNumber && data.size() == sizeof number) std::memcpy(&number, data.data(), sizeof number);
    return number != 0 ? ENGSTATUS{ENG_OK} : ENGSTATUS{ENG_ERR_COMPUTE_REFUSED};
  }

  ENGSTATUS ComputeLate(const Field& field) {
    return !IsEditable(field) && field.late ? ComputeField(field) : ENGSTATUS{ENG_OK};
  }

  ENGSTATUS Apply() {
    ENGSTATUS status = source_.Apply();
    for (const Field* field : stored_) {
      Slate::Slot slot = 0;
      if (status != ENG_OK || slate_.FindItem(field->name, &slot) != ENG_OK) continue;
      slate_.SetItemFlags(slot, ItemFlags(*field));
    }
    return status;
  }

  Slate& slate_;
  std::vector<Field> fields_;
  FormSource source_;
  formula::LateLookups lookups_;
  std::vector<std::uint8_t> value_;  // of the last formula, its type word first
  std::vector<const Field*> stored_;
  std::string message_;
};

// A form's name may come with its synonyms: the first one names it.
std::string FirstName(std::string_view names) {
  const std::string_view first = names.substr(0, names.find_first_of("|;"));
  return std::string(first.empty() ? names : first);
}

// Of the first entry of the item Form.
ENGSTATUS FormName(Slate& slate, std::string* name) {
  Slate::Slot slot = 0;
  ENGSTATUS status = slate.FindItem("Form", &slot);
  if ((status & ENG_ERROR_MASK) == ENG_ERR_NO_ITEM) return ENG_OK;
  Bytes value;
  if (status == ENG_OK) status = slate.GetBytes(slot, &value);
  if (status != ENG_OK || value.size() < kTypeWord) return status;
  if (WordAt(value) == kText) {
    *name = FirstName({reinterpret_cast<const char*>(value.data()) + kTypeWord, value.size() - kTypeWord});
    return ENG_OK;
  }
  const auto entries = text::ReadList({value.data(), value.size()}, text::Prefix::kType);
  if (entries && !entries->empty()) *name = FirstName(entries->front());
  return ENG_OK;
}

}  // namespace

ENGSTATUS ComputeSlate(Slate& slate, OnError on_error, Failure* failure) {
  std::string name;
  std::uint32_t form = 0;
  std::vector<Field> fields;
  ENGSTATUS status = FormName(slate, &name);
  if (status == ENG_OK) status = FindForm(slate.shared_database(), name, &form);
  if (status == ENG_OK) status = ReadFields(slate.shared_database(), form, &fields);
  return status == ENG_OK ? Run(slate, std::move(fields)).Compute(on_error, failure) : status;
}

ENGSTATUS ComputeForDisplay(Slate& slate, std::vector<Field> fields, ShownFields* shown) {
  return Run(slate, std::move(fields)).Show(shown);
}

bool NameLess::operator()(std::string_view a, std::string_view b) const {
  const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::lexicographical_compare(a, b, {}, folded, folded);
}

}  // namespace qcore::forms
