#include "qcore/forms/design.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "qcore/forms/fixed.h"
#include "qcore/records/layouts.h"
#include "qcore/slates/readers.h"
#include "qcore/slates/search.h"
#include "qcore/slates/slate.h"
#include "qcore/text/composite.h"
#include "qcore/text/textlist.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kFormClass = 0x0004;
constexpr std::uint16_t kFieldClass = 0x0400;
constexpr std::uint16_t kDefaultForm = 0x8004;
constexpr std::string_view kSubformLetter = "U";
constexpr std::string_view kOtherKinds = "UW#i@y";  // letters of elements of the class that are no forms
constexpr std::uint16_t kComposite = 0x0001;
constexpr std::uint16_t kNumber = 0x0300;
constexpr std::uint16_t kTime = 0x0400;
constexpr std::uint16_t kText = 0x0500;
constexpr std::size_t kTypeWord = 2;

constexpr std::uint16_t kSigField = 0xFF8A;
constexpr std::uint16_t kSigFieldOld = 0xFF84;
constexpr std::uint16_t kSigExtension = 0xFFB0;
constexpr std::uint16_t kSigHotspot = 0xFFA9;
constexpr std::uint16_t kSigHotspotV4 = 0xFFAD;
constexpr std::uint16_t kHotspotSubform = 14;

constexpr std::size_t kMostFields = 20000;

// An open stored slate, for as long as this lives.
class OpenedSlate {
 public:
  OpenedSlate() = default;
  ~OpenedSlate() {
    if (handle_ != 0) static_cast<void>(Slate::Close(handle_));
  }
  OpenedSlate(const OpenedSlate&) = delete;
  OpenedSlate& operator=(const OpenedSlate&) = delete;
  [[nodiscard]] ENGSTATUS Open(const std::shared_ptr<Database>& database, std::uint32_t id) {
    return Slate::Open(database, id, &handle_);
  }
  Slate& slate() const { return *Slate::Find(handle_); }

 private:
  ENGHANDLE handle_ = 0;
};

std::uint16_t WordAt(Bytes bytes, std::size_t at) { return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8); }

// The entries of the first item of the name, split at bars.
std::vector<std::string> NamesOf(const std::shared_ptr<Database>& database, std::uint32_t id, std::string_view item) {
  std::vector<std::string> names;
  const auto split = [&](std::string_view text) {
    for (std::size_t at = 0; at <= text.size();) {
      const std::size_t end = std::min(text.find('|', at), text.size());
      names.emplace_back(text.substr(at, end - at));
      at = end + 1;
    }
  };
  const auto take = [&](Bytes value, std::uint16_t) {
    if (value.size() < kTypeWord) return;
    const Bytes data = value.subspan(kTypeWord);
    if (WordAt(value, 0) == kText) return split({reinterpret_cast<const char*>(data.data()), data.size()});
    const auto entries = text::ReadList({value.data(), value.size()}, text::Prefix::kType);
    if (!entries) return;
    for (const std::string_view entry : *entries) split(entry);
  };
  // A slate that went meanwhile has no names.
  static_cast<void>(ReadValueOf(database, id, item, take));
  return names;
}

enum class Kind { kForm, kSubform };

bool IsKind(const std::shared_ptr<Database>& database, std::uint32_t id, Kind kind) {
  const std::vector<std::string> flags = NamesOf(database, id, "$Flags");
  const std::string_view letters = flags.empty() ? std::string_view() : std::string_view(flags.front());
  return kind == Kind::kSubform ? letters.find(kSubformLetter) != std::string_view::npos
                                : letters.find_first_of(kOtherKinds) == std::string_view::npos;
}

// An element of another kind may have the name as well.
ENGSTATUS FindKind(const std::shared_ptr<Database>& database, std::string_view name, Kind kind, std::uint32_t* id) {
  ENGSTATUS status = FindDesign(database, kFormClass, name, id);
  if (status != ENG_OK || IsKind(database, *id, kind)) return status;
  std::vector<std::uint32_t> all;
  TIMEDATE until{};
  status = ListClass(*database, kFormClass, nullptr, &until, &all);
  for (const std::uint32_t candidate : all) {
    const std::vector<std::string> names = NamesOf(database, candidate, "$TITLE");
    if (std::ranges::find(names, name) == names.end() || !IsKind(database, candidate, kind)) continue;
    if (!IsReadable(*database, candidate)) continue;
    *id = candidate;
    return ENG_OK;
  }
  return status == ENG_OK ? ENGSTATUS{ENG_ERR_NO_DESIGN_ELEMENT} : status;
}

bool IsGone(ENGSTATUS status) {
  const unsigned error = status & ENG_ERROR_MASK;
  return error == ENG_ERR_NO_DESIGN_ELEMENT || error == ENG_ERR_SLATE_DELETED || error == ENG_ERR_NO_SLATE;
}

// The stretches of records in the items $Body.
template <typename Take>
ENGSTATUS ForEachRecord(Slate& slate, Take take) {
  Slate::Slot slot = 0;
  ENGSTATUS found = slate.FindItem("$Body", &slot);
  for (; found == ENG_OK; found = slate.FindNextItem(slot, "$Body", &slot)) {
    Bytes value;
    if (ENGSTATUS status = slate.GetBytes(slot, &value); status != ENG_OK) return status;
    if (value.size() < kTypeWord || WordAt(value, 0) != kComposite) continue;
    for (Bytes rest = value.subspan(kTypeWord); !rest.empty();) {
      const auto record = text::RecordAt({rest.data(), rest.size()});
      if (!record) return ENG_ERR_FORM_DESIGN;
      if (ENGSTATUS status = take(record->signature, rest.first(record->length)); status != ENG_OK) return status;
      rest = rest.subspan(std::min<std::size_t>(record->length + (record->length & 1), rest.size()));
    }
  }
  return (found & ENG_ERROR_MASK) == ENG_ERR_NO_ITEM ? ENGSTATUS{ENG_OK} : found;
}

class Reader {
 public:
  Reader(const std::shared_ptr<Database>& database, std::vector<Field>* fields)
      : database_(database), fields_(fields) {}

  ENGSTATUS ReadForm(std::uint32_t form) {
    OpenedSlate opened;
    if (ENGSTATUS status = opened.Open(database_, form); status != ENG_OK) return status;
    return ReadBody(opened.slate(), 0);
  }
  ENGSTATUS ReadBody(Slate& form, unsigned depth) {
    Ahead ahead;
    return ForEachRecord(form, [&](std::uint16_t signature, Bytes record) -> ENGSTATUS {
      const Bytes extension = ahead.Pass(signature, record);
      if (IsField(signature)) return AddField(record, extension);
      return signature == kSigHotspot || signature == kSigHotspotV4 ? AddSubform(record, depth) : ENGSTATUS{ENG_OK};
    });
  }

 private:
  // The extension directly ahead of a record, which is the field's then.
  struct Ahead {
    Bytes extension;
    Bytes Pass(std::uint16_t signature, Bytes record) {
      return std::exchange(extension, signature == kSigExtension ? record : Bytes());
    }
  };

  static bool IsField(std::uint16_t signature) { return signature == kSigField || signature == kSigFieldOld; }
  // One that goes with another field's length was left behind by a program that does not know extensions.
  static bool IsLate(Bytes extension, Bytes field) {
    FieldExtensionRecord fixed{};
    return ReadFixed(ODS_FIELDEXTENSION, extension, &fixed) && fixed.FieldLength == field.size() &&
           (fixed.Flags1 & FIELDEXTENSION_COMPUTE_LATE) != 0;
  }
  // Records of other types are no fields.
  static bool HasKnownType(const Field& field) {
    const unsigned family = field.data_type & ~1U;
    return field.data_type == kComposite || family == kNumber || family == kTime || family == kText;
  }

  static ENGSTATUS Decode(Bytes record, Field* field) {
    FieldRecord fixed{};
    if (!ReadFixed(ODS_FIELD, record, &fixed)) return ENG_ERR_FORM_DESIGN;
    Bytes rest = record.subspan(records::Find(ODS_FIELD)->length);
    const auto take = [&](std::size_t length, auto* part) {
      if (length > rest.size()) return false;
      part->assign(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length));
      rest = rest.subspan(length);
      return true;
    };
    const bool whole = take(fixed.DefaultValueLength, &field->value) &&
                       take(fixed.InputTranslationLength, &field->translation) &&
                       take(fixed.InputValidationLength, &field->validation) && take(fixed.NameLength, &field->name);
    if (!whole) return ENG_ERR_FORM_DESIGN;
    field->flags = fixed.Flags;
    field->data_type = fixed.DataType;
    field->number_format = fixed.NumberFormat;
    field->time_format = fixed.TimeFormat;
    return ENG_OK;
  }

  ENGSTATUS AddField(Bytes record, Bytes extension) {
    if (fields_->size() == kMostFields) return ENG_ERR_FORM_DESIGN;
    Field field;
    if (ENGSTATUS status = Decode(record, &field); status != ENG_OK) return status;
    field.late = IsLate(extension, record);
    if ((field.flags & FIELD_REFERENCE) != 0) return AddShared(field.name);
    if (HasKnownType(field)) fields_->push_back(std::move(field));
    return ENG_OK;
  }

  ENGSTATUS AddShared(std::string_view name) {
    std::uint32_t id = 0;
    OpenedSlate opened;
    ENGSTATUS status = FindDesign(database_, kFieldClass, name, &id);
    if (status == ENG_OK) status = opened.Open(database_, id);
    if (status != ENG_OK) return IsGone(status) ? ENGSTATUS{ENG_OK} : status;
    Ahead ahead;
    bool added = false;
    return ForEachRecord(opened.slate(), [&](std::uint16_t signature, Bytes record) -> ENGSTATUS {
      const Bytes extension = ahead.Pass(signature, record);
      if (added || !IsField(signature)) return ENG_OK;
      Field field;
      if (ENGSTATUS read = Decode(record, &field); read != ENG_OK) return read;
      field.late = IsLate(extension, record);
      added = true;
      // A definition that points elsewhere defines nothing.
      if ((field.flags & FIELD_REFERENCE) == 0 && HasKnownType(field)) fields_->push_back(std::move(field));
      return ENG_OK;
    });
  }

  ENGSTATUS AddSubform(Bytes record, unsigned depth) {
    std::string_view name;
    const ENGSTATUS status = ReadSubformName(record, &name);
    if (status != ENG_OK || name.empty() || depth == kDeepestSubform) return status;
    return WithSubform(database_, name, [&](Slate& subform) {
      return subforms_.insert(subform.header().id).second ? ReadBody(subform, depth + 1) : ENGSTATUS{ENG_OK};
    });
  }

  const std::shared_ptr<Database>& database_;
  std::vector<Field>* fields_;
  std::set<std::uint32_t> subforms_;  // whose fields are there
};

}  // namespace

ENGSTATUS FindForm(const std::shared_ptr<Database>& database, std::string_view name, std::uint32_t* id) {
  const ENGSTATUS status =
      name.empty() ? FindSpecialSlate(*database, kDefaultForm, id) : FindKind(database, name, Kind::kForm, id);
  const unsigned error = status & ENG_ERROR_MASK;
  const bool none = error == ENG_ERR_NO_DESIGN_ELEMENT || error == ENG_ERR_NO_SPECIAL_SLATE;
  return none ? ENGSTATUS{ENG_ERR_NO_FORM} : status;
}

ENGSTATUS ReadFields(const std::shared_ptr<Database>& database, std::uint32_t form, std::vector<Field>* fields) {
  return Reader(database, fields).ReadForm(form);
}

ENGSTATUS ReadFields(Slate& form, std::vector<Field>* fields) {
  return Reader(form.shared_database(), fields).ReadBody(form, 0);
}

ENGSTATUS ReadSubformName(Bytes record, std::string_view* name) {
  CDHOTSPOTBEGIN begin{};
  const std::size_t fixed = records::Find(ODS_CDHOTSPOTBEGIN)->length;
  *name = {};
  if (!ReadFixed(ODS_CDHOTSPOTBEGIN, record, &begin) || begin.Type != kHotspotSubform) return ENG_OK;
  if (begin.DataLength > record.size() - fixed) return ENG_ERR_FORM_DESIGN;
  *name = {reinterpret_cast<const char*>(record.data()) + fixed, begin.DataLength};
  *name = name->substr(0, name->find('\0'));
  return ENG_OK;
}

ENGSTATUS WithSubform(const std::shared_ptr<Database>& database, std::string_view name,
                      const std::function<ENGSTATUS(Slate&)>& take) {
  std::uint32_t id = 0;
  OpenedSlate opened;
  ENGSTATUS status = FindKind(database, name, Kind::kSubform, &id);
  if (status == ENG_OK) status = opened.Open(database, id);
  if (status != ENG_OK) return IsGone(status) ? ENGSTATUS{ENG_OK} : status;
  return take(opened.slate());
}

}  // namespace qcore::forms
