// quillon show: one document, as items, as text or record by record.
#include <CLI/CLI.hpp>
#include <cinttypes>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "tools/quillon/command.h"
#include "tools/quillon/records.h"
#include "tools/quillon/values.h"

namespace tool {

namespace {

struct Arguments {
  std::string store;
  std::string document;
  std::string item = "Body";
  bool text = false;
  bool records = false;
  bool items = false;
  bool bytes = false;
};

std::string Hexadecimal(Bytes bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// With JSON's escapes, so that line breaks and what isn't UTF-8 can be seen.
std::string Quoted(const std::string& text) {
  std::ostringstream out;
  JsonWriter(out).String(text);
  return out.str();
}

std::string HexNumber(std::uint32_t value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*" PRIX32, digits, value);
  return text;
}

std::string SignatureName(const Record& record, const RecordKind* kind) {
  return kind ? std::string(kind->name) : HexNumber(record.signature, 4);
}

std::string CharactersOf(const Record& record, const RecordKind& kind) {
  const Bytes tail = record.bytes.size() > kind.fixed ? record.bytes.subspan(kind.fixed) : Bytes();
  std::string text(tail.begin(), tail.end());
  for (char& c : text) {
    if (c == '\0') c = '\n';
  }
  return text;
}

std::string NameAt(Bytes bytes, const Field& field) {
  std::string name;
  for (std::size_t i = field.offset; i < bytes.size() && i < field.offset + field.width && bytes[i] != 0; ++i) {
    name += static_cast<char>(bytes[i]);
  }
  return name;
}

std::int64_t NumberAt(Bytes bytes, const Field& field, std::size_t index) {
  const std::uint32_t value = ReadNumber(bytes, field.offset + index * field.width, field.width);
  return field.kind == FieldKind::kSigned ? static_cast<std::int16_t>(value) : static_cast<std::int64_t>(value);
}

// Entries of an array behind the count that stands in front of it aren't part of the record's meaning.
std::size_t ShownCount(Bytes bytes, const Field& field) {
  if (field.count == 1) return 1;
  return std::min<std::size_t>(field.count, ReadNumber(bytes, field.offset - 2u, 2));
}

std::string FieldText(Bytes bytes, const Field& field) {
  if (field.kind == FieldKind::kName) return Quoted(NameAt(bytes, field));
  if (field.kind == FieldKind::kHex) return HexNumber(ReadNumber(bytes, field.offset, field.width), field.width * 2);
  std::string text;
  for (std::size_t i = 0; i < ShownCount(bytes, field); ++i) {
    text += (i == 0 ? "" : ",") + std::to_string(NumberAt(bytes, field, i));
  }
  return field.count == 1 ? text : "[" + text + "]";
}

void PrintRecord(std::size_t item, const Record& record, const Arguments& arguments) {
  const RecordKind* kind = FindRecordKind(record.signature);
  std::printf("%zu:%-8" PRIu32 " %-24s %6zu", item, record.offset, SignatureName(record, kind).c_str(),
              record.bytes.size());
  if (kind) {
    for (const Field& field : kind->fields) {
      std::printf(" %.*s=%s", static_cast<int>(field.name.size()), field.name.data(),
                  FieldText(record.bytes, field).c_str());
    }
    if (kind->text) std::printf(" %s", Quoted(CharactersOf(record, *kind)).c_str());
  }
  if (arguments.bytes) std::printf(" %s", Hexadecimal(record.bytes).c_str());
  std::printf("\n");
}

void WriteField(JsonWriter& json, Bytes bytes, const Field& field) {
  json.Key(field.name);
  if (field.kind == FieldKind::kName) return json.String(NameAt(bytes, field));
  if (field.count == 1) return json.Integer(NumberAt(bytes, field, 0));
  json.BeginArray();
  for (std::size_t i = 0; i < ShownCount(bytes, field); ++i) json.Integer(NumberAt(bytes, field, i));
  json.EndArray();
}

void WriteRecord(JsonWriter& json, std::size_t item, const Record& record, const Arguments& arguments) {
  const RecordKind* kind = FindRecordKind(record.signature);
  json.BeginObject();
  json.Field("item", static_cast<std::int64_t>(item));
  json.Field("offset", static_cast<std::int64_t>(record.offset));
  json.Field("signature", SignatureName(record, kind));
  json.Field("length", static_cast<std::int64_t>(record.bytes.size()));
  if (kind) {
    json.Key("fields");
    json.BeginObject();
    for (const Field& field : kind->fields) WriteField(json, record.bytes, field);
    json.EndObject();
    if (kind->text) json.Field("text", CharactersOf(record, *kind));
  }
  if (arguments.bytes) json.Field("bytes", Hexadecimal(record.bytes));
  json.EndObject();
}

// The items of a name, in order, count as one stream; the number in front of the offset is the item's.
int ShowRecords(const Options& options, const Arguments& arguments, const VQDocument& document) {
  JsonWriter json(std::cout);
  if (options.json) json.BeginArray();
  std::size_t number = 0;
  std::string damage;
  for (const StoredItem& item : ReadItems(document)) {
    if (item.name != arguments.item || item.type != TYPE_COMPOSITE) continue;
    RecordWalk walk{item.value};
    Record record;
    while (walk.Next(&record)) {
      options.json ? WriteRecord(json, number, record, arguments) : PrintRecord(number, record, arguments);
    }
    if (walk.damage()) {
      damage = "item " + std::to_string(number) + ", offset " + std::to_string(walk.offset()) + ": " + walk.damage();
      break;
    }
    ++number;
  }
  if (options.json) json.EndArray();
  std::cout.flush();
  std::fflush(stdout);
  if (!damage.empty()) throw Failure{kExitDifferent, damage};
  if (number == 0) throw Failure{kExitNotFound, "no rich text item " + Printable(arguments.item)};
  return kExitDone;
}

int ShowText(const Options& options, const Arguments& arguments, const VQDocument& document) {
  VQRichText body;
  FindRichText(document, arguments.item, &body);
  const std::string text = RichTextOf(body);
  if (!options.json) {
    std::cout << text;
    if (!text.empty() && text.back() != '\n') std::cout << '\n';
    return kExitDone;
  }
  JsonWriter json(std::cout);
  json.String(text);
  std::cout << '\n';
  return kExitDone;
}

void PrintItems(const std::vector<StoredItem>& items) {
  for (const StoredItem& item : items) {
    std::cout << Printable(item.name) << " (" << TypeName(item.type) << ", " << item.value.size() << " bytes"
              << (item.flags & VQITEMFLAGS_SUMMARY ? ", summary" : "") << "): " << ValueText(item) << '\n';
  }
}

void WriteItems(const std::vector<StoredItem>& items) {
  JsonWriter json(std::cout);
  json.BeginArray();
  for (const StoredItem& item : items) {
    json.BeginObject();
    json.Field("name", item.name);
    json.Field("type", TypeName(item.type));
    json.Field("flags", static_cast<std::int64_t>(item.flags));
    json.Field("size", static_cast<std::int64_t>(item.value.size()));
    json.Key("value");
    WriteValue(json, item);
    json.EndObject();
  }
  json.EndArray();
}

int Run(const Options& options, const Arguments& arguments) {
  Store store(options, arguments.store);
  VQDocument document;
  FindDocument(store.database(), arguments.document, &document);
  if (arguments.text) return ShowText(options, arguments, document);
  if (arguments.records) return ShowRecords(options, arguments, document);
  const std::vector<StoredItem> items = ReadItems(document);
  options.json ? WriteItems(items) : PrintItems(items);
  return kExitDone;
}

}  // namespace

void AddShowCommand(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* show = app.add_subcommand("show", "Show one document: its items, its text or its records");
  show->add_option("store", arguments->store, "The store")->required();
  show->add_option("document", arguments->document, "Number, or the whole Subject")->required();
  auto* items = show->add_flag("--items", arguments->items, "Items with their values (the default)");
  auto* text = show->add_flag("--text", arguments->text, "The rich text as plain text")->excludes(items);
  auto* records =
      show->add_flag("--records", arguments->records, "Each stored record: item:offset, name, length, fields");
  records->excludes(text)->excludes(items);
  show->add_flag("--bytes", arguments->bytes, "With --records: the record's bytes too")->needs(records);
  show->add_option("--item", arguments->item, "The rich text item (default: Body)");
  show->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
