// Facts of the document, its database and view; selection of responses; look-ups; marks for a view's rows.
#include <cstdio>

#include "engine/formula.h"
#include "engine/records.h"
#include "qcore/formula/functions_support.h"
#include "qcore/store/names.h"

namespace qcore::formula {

namespace {

Value All(Machine&, Arguments) { return Value::Truth(true); }

Value AllChildren(Machine& machine, Arguments) { return Value::Truth(machine.source().IsBelowSelected(false)); }
Value AllDescendants(Machine& machine, Arguments) { return Value::Truth(machine.source().IsBelowSelected(true)); }

Value NoDocument() { return Value::Error(ENG_ERR_FORMULA_DOCUMENT); }

template <TIMEDATE DocumentFacts::*kTime>
Value TimeFact(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? Value::Time(document->*kTime) : NoDocument();
}

Value UniversalText(Machine& machine, const UNIVERSALSLATEID& id) {
  char text[40];
  const int size = std::snprintf(text, sizeof text, "%08X%08X%08X%08X", id.File.DateWord, id.File.TimeWord,
                                 id.Slate.DateWord, id.Slate.TimeWord);
  return machine.Text({text, static_cast<std::size_t>(size)});
}

Value DocumentUniqueId(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? UniversalText(machine, {document->origin.File, document->origin.Slate}) : NoDocument();
}

Value ParentUniqueId(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  if (!document) return NoDocument();
  return document->parent ? UniversalText(machine, *document->parent) : Value();
}

Value SlateId(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  if (!document) return NoDocument();
  char text[12];
  const int size = std::snprintf(text, sizeof text, "%08X", document->id);
  return machine.Text({text, static_cast<std::size_t>(size)});
}

Value IsNewDoc(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? Value::Truth(document->id == 0) : NoDocument();
}

Value IsResponseDoc(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? Value::Truth(document->parent.has_value()) : NoDocument();
}

Value SlateClass(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? Value::Number(document->slate_class) : NoDocument();
}

Value DocSequence(Machine& machine, Arguments) {
  const DocumentFacts* document = machine.source().Document();
  return document ? Value::Number(document->origin.Sequence) : NoDocument();
}

// What asks the store, a look-up among others.
constexpr std::uint64_t kStepsOfStore = 500;

Value Responses(Machine& machine, Arguments) {
  if (!machine.source().Document()) return NoDocument();
  const std::uint32_t count = machine.source().ResponseCount();
  machine.Charge(kStepsOfStore + count);
  return Value::Number(count);
}

Value DocLength(Machine& machine, Arguments) {
  if (!machine.source().Document()) return NoDocument();
  machine.Charge(kStepsOfStore);
  return Value::Number(machine.source().Size());
}

Value DocFields(Machine& machine, Arguments) {
  TextList names(machine);
  machine.source().ForEachItem([&](std::string_view name, const ItemValue&) { names.Add(Kept(machine, name)); });
  return names.Finish();
}

// The file object of an item: u16 kind, u32 object, u16 size of the name, eight bytes, u32 size, created, modified.
struct Attachment {
  std::string_view name;
  double size = 0;
  TIMEDATE modified{};
};

std::optional<Attachment> ReadAttachment(const ItemValue& value) {
  constexpr std::uint16_t kObject = 3;
  constexpr std::size_t kRecord = 36;
  if (value.type != kObject || value.data.size() < kRecord) return std::nullopt;
  const std::uint8_t* const at = value.data.data();
  if ((at[0] & OBJECT_TYPE_MASK) != OBJECT_FILE) return std::nullopt;
  const auto wide = [at](std::size_t offset) {
    return at[offset] | at[offset + 1] << 8 | at[offset + 2] << 16 | std::uint32_t{at[offset + 3]} << 24;
  };
  const std::size_t size = static_cast<std::size_t>(at[6] | at[7] << 8);
  if (size == 0 || value.data.size() - kRecord < size) return std::nullopt;
  return Attachment{
      {reinterpret_cast<const char*>(at + kRecord), size}, static_cast<double>(wide(16)), {wide(28), wide(32)}};
}

template <typename Take>
void ForEachAttachment(Machine& machine, Take take) {
  machine.source().ForEachItem([&](std::string_view, const ItemValue& value) {
    machine.Charge(1);
    const auto attachment = ReadAttachment(value);
    if (attachment) take(*attachment);
  });
}

Value Attachments(Machine& machine, Arguments) {
  double count = 0;
  ForEachAttachment(machine, [&](const Attachment&) { ++count; });
  return Value::Number(count);
}

Value AttachmentNames(Machine& machine, Arguments) {
  TextList names(machine);
  ForEachAttachment(machine, [&](const Attachment& attachment) { names.Add(Kept(machine, attachment.name)); });
  return names.Finish();
}

Value AttachmentLengths(Machine& machine, Arguments) {
  Value sizes;
  bool first = true;
  ForEachAttachment(machine, [&](const Attachment& attachment) {
    const Value size = Value::Number(attachment.size);
    sizes = first ? size : machine.Join(sizes, size);
    first = false;
  });
  return sizes;
}

Value AttachmentModifiedTimes(Machine& machine, Arguments) {
  Value times;
  bool first = true;
  ForEachAttachment(machine, [&](const Attachment& attachment) {
    const Value time = Value::Time(attachment.modified);
    times = first ? time : machine.Join(times, time);
    first = false;
  });
  return times;
}

Value DeleteDocument(Machine& machine, Arguments) {
  if (!machine.source().Document()) return NoDocument();
  machine.Delete();
  return Value::Truth(true);
}

template <std::string DatabaseFacts::*kText>
Value DatabaseFact(Machine& machine, Arguments) {
  const DatabaseFacts* database = machine.source().Database();
  return database ? machine.Text(database->*kText) : NoDocument();
}

Value ViewTitle(Machine& machine, Arguments) { return machine.Text(machine.source().ViewTitle()); }

// The database argument is a path, or a server and a path, which has its place in front.
std::string_view PathOf(Machine& machine, const Value& value) {
  const std::string_view path = value.texts()[value.count - 1].view();
  if (value.count == 1 || value.texts()->size == 0) return path;
  return machine.Text(std::string(value.texts()->view()) + "!!" + std::string(path)).text.view();
}

// Adds what is found to *found.
Value RunLookup(Machine& machine, const Lookup& lookup, std::optional<Value>* found) {
  machine.Charge(kStepsOfStore);
  const ENGSTATUS status = machine.source().LookUp(lookup, [&](Bytes bytes) {
    machine.Charge(1);
    if (bytes.empty() || (*found && (*found)->is_error())) return;
    const Value value = machine.DecodeCopy(bytes);
    *found = *found ? machine.Join(**found, value) : value;
  });
  return status == ENG_OK ? Value() : Value::Error(status);
}

// "" or [NOCACHE]: what is read is never older than the evaluation.
bool IsLookupClass(const Value& value) { return value.is_null() || AreKeywords({&value, 1}, {"NOCACHE"}); }

// Class, database, view, column.
Value DbColumn(Machine& machine, Arguments arguments) {
  if (!IsLookupClass(arguments[0])) return arguments[0].is_text() ? RangeError() : TypeError();
  const auto column = AsInteger(arguments[3]);
  if (!arguments[1].is_text() || !arguments[2].is_text() || !column) return TypeError();
  if (*column < 1) return RangeError();
  Lookup lookup;
  lookup.database = PathOf(machine, arguments[1]);
  lookup.view = FirstText(arguments[2]);
  lookup.column = static_cast<std::uint32_t>(*column);
  std::optional<Value> found;
  const Value failed = RunLookup(machine, lookup, &found);
  return failed.is_error() ? failed : found.value_or(Value());
}

bool HasKeyword(Arguments options, std::string_view keyword) {
  return std::any_of(options.begin(), options.end(),
                     [keyword](const Value& option) { return FirstText(option) == keyword; });
}

// Class, database, view, keys, column number or item name, keywords.
Value DbLookup(Machine& machine, Arguments arguments) {
  const Value& keys = arguments[3];
  if (!IsLookupClass(arguments[0])) return arguments[0].is_text() ? RangeError() : TypeError();
  if (!AreKeywords(arguments.subspan(5), {"PARTIALMATCH", "FAILSILENT"})) return RangeError();
  if (!arguments[1].is_text() || !arguments[2].is_text() || keys.type == Type::kRemoval) return TypeError();
  Lookup lookup;
  lookup.database = PathOf(machine, arguments[1]);
  lookup.view = FirstText(arguments[2]);
  lookup.field = FirstText(arguments[4]);
  lookup.column = static_cast<std::uint32_t>(std::max<std::int64_t>(AsInteger(arguments[4]).value_or(0), 0));
  lookup.partial = HasKeyword(arguments.subspan(5), "PARTIALMATCH");
  if (lookup.field.empty() && lookup.column == 0) return arguments[4].is_number() ? RangeError() : TypeError();
  std::optional<Value> found;
  bool any = false;
  std::vector<std::uint8_t> key;
  for (std::uint32_t i = 0; i < keys.count; ++i) {
    const ENGSTATUS status = Encode(EntryAt(keys, i), &key);
    if (status != ENG_OK) return Value::Error(status);
    lookup.key = key;
    const Value failed = RunLookup(machine, lookup, &found);
    if (failed.is_error() && failed.error != ENG_ERR_NO_ENTRY) return failed;
    any |= !failed.is_error();
  }
  if (any) return found.value_or(Value());
  return HasKeyword(arguments.subspan(5), "FAILSILENT") ? Value() : Value::Error(ENG_ERR_NO_ENTRY);
}

// What only a row of a view knows: a mark that the view replaces. Arguments lose what would end them.
template <char kLetter>
Value Mark(Machine& machine, Arguments arguments) {
  std::string mark = {static_cast<char>(ENG_SPECIAL_MARK), kLetter};
  for (const Value& argument : arguments) {
    if (!argument.is_text()) return TypeError();
    machine.Charge(FirstText(argument).size() / 16);
    for (const char c : FirstText(argument)) {
      if (c != ENG_SPECIAL_MARK && c != ENG_SPECIAL_ARGUMENT_END) mark += c;
    }
    mark += ENG_SPECIAL_ARGUMENT_END;
  }
  mark += static_cast<char>(ENG_SPECIAL_MARK);
  return machine.Text(mark);
}

constexpr Function kFunctions[] = {
    {102, "All", 0, 0, Form::kEager, kNothing, All, nullptr},
    {103, "AllChildren", 0, 0, Form::kEager, kOnResponses, AllChildren, nullptr},
    {104, "AllDescendants", 0, 0, Form::kEager, kOnDescendants, AllDescendants, nullptr},
    {110, "Created", 0, 0, Form::kEager, kNothing, TimeFact<&DocumentFacts::created>, nullptr},
    {111, "Modified", 0, 0, Form::kEager, kNothing, TimeFact<&DocumentFacts::modified>, nullptr},
    {112, "Accessed", 0, 0, Form::kEager, kNothing, TimeFact<&DocumentFacts::accessed>, nullptr},
    {113, "AddedToThisFile", 0, 0, Form::kEager, kNothing, TimeFact<&DocumentFacts::added>, nullptr},
    {114, "DocumentUniqueID", 0, 0, Form::kEager, kNothing, DocumentUniqueId, nullptr},
    {115, "SlateID", 0, 0, Form::kEager, kNothing, SlateId, nullptr},
    {116, "InheritedDocumentUniqueID", 0, 0, Form::kEager, kNothing, ParentUniqueId, nullptr},
    {117, "IsNewDoc", 0, 0, Form::kEager, kNothing, IsNewDoc, nullptr},
    {118, "IsResponseDoc", 0, 0, Form::kEager, kNothing, IsResponseDoc, nullptr},
    {119, "Responses", 0, 0, Form::kEager, kOnCount, Responses, nullptr},
    {120, "DocLength", 0, 0, Form::kEager, kNothing, DocLength, nullptr},
    {121, "Attachments", 0, 0, Form::kEager, kOnItems, Attachments, nullptr},
    {122, "AttachmentNames", 0, 0, Form::kEager, kOnItems, AttachmentNames, nullptr},
    {123, "AttachmentLengths", 0, 0, Form::kEager, kOnItems, AttachmentLengths, nullptr},
    {124, "AttachmentModifiedTimes", 0, 0, Form::kEager, kOnItems, AttachmentModifiedTimes, nullptr},
    {125, "DocFields", 0, 0, Form::kEager, kOnItems, DocFields, nullptr},
    {126, "DocSequence", 0, 0, Form::kEager, kNothing, DocSequence, nullptr},
    {127, "SlateClass", 0, 0, Form::kEager, kNothing, SlateClass, nullptr},
    {128, "DeleteDocument", 0, 0, Form::kEager, kNothing, DeleteDocument, nullptr},
    {130, "DbName", 0, 0, Form::kEager, kOnPlace, DatabaseFact<&DatabaseFacts::path>, nullptr},
    {131, "DbTitle", 0, 0, Form::kEager, kOnPlace, DatabaseFact<&DatabaseFacts::title>, nullptr},
    {132, "ReplicaID", 0, 0, Form::kEager, kOnPlace, DatabaseFact<&DatabaseFacts::replica>, nullptr},
    {133, "ViewTitle", 0, 0, Form::kEager, kOnPlace, ViewTitle, nullptr},
    {134, "DbColumn", 4, 4, Form::kEager, kOnOthers, DbColumn, "NOCACHE"},
    {135, "DbLookup", 5, 7, Form::kEager, kOnOthers, DbLookup, "NOCACHE FAILSILENT PARTIALMATCH"},
    {146, "DocNumber", 0, 1, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_NUMBER>, nullptr},
    {147, "DocLevel", 0, 0, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_LEVEL>, nullptr},
    {148, "DocSiblings", 0, 0, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_SIBLINGS>, nullptr},
    {149, "DocChildren", 0, 3, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_CHILDREN>, nullptr},
    {150, "DocDescendants", 0, 3, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_DESCENDANTS>, nullptr},
    {151, "DocParentNumber", 0, 1, Form::kEager, kOnRow, Mark<ENG_SPECIAL_DOC_PARENT_NUMBER>, nullptr},
    {152, "IsCategory", 0, 2, Form::kEager, kOnRow, Mark<ENG_SPECIAL_IS_CATEGORY>, nullptr},
    {153, "IsExpandable", 0, 2, Form::kEager, kOnRow, Mark<ENG_SPECIAL_IS_EXPANDABLE>, nullptr},
};

}  // namespace

std::span<const Function> DocumentFunctions() { return kFunctions; }

}  // namespace qcore::formula
