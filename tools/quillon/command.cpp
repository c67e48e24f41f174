#include "tools/quillon/command.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "tools/quillon/formulas.h"
#include "tools/quillon/json.h"

namespace tool {

namespace {

void Start(VQQuillonSession& session, const Options& options) {
  if (options.config.empty()) {
    session.Init();
  } else {
    session.Init(options.config.c_str());
  }
}

bool ParseNumber(const std::string& text, unsigned long* number) {
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, *number);
  return parsed.ec == std::errc() && parsed.ptr == end;
}

}  // namespace

Store::Store(const Options& options) { Start(session_, options); }

Store::Store(const Options& options, const std::string& path) : Store(options) {
  OnNamed(path, [&] { Open(path, &database_); });
}

void Store::Open(const std::string& path, VQDatabase* database) {
  vq::ThrowIfError(session_.GetDatabase(StorePath(path), database));
  vq::ThrowIfError(database->Open());
}

VQString StorePath(const std::string& path) {
  if (path.empty() || path.find("!!") != std::string::npos) return VQString(path.c_str());
  return VQString(std::filesystem::absolute(path).lexically_normal().c_str());
}

namespace {

bool FindNumbered(VQDatabase& database, unsigned long number, VQDocument* document) {
  VQDocumentArray documents;
  database.GetDocuments(&documents);
  if (number == 0 || !documents.Contains(number)) return false;
  database.GetDocument(number, document);
  document->Open();
  return true;
}

// The engine looks at all documents, and only those of that text are opened.
bool FindSubject(VQDatabase& database, const std::string& subject, VQDocument* document) {
  std::string text;
  for (const char c : subject) {
    if (c == '"' || c == '\\') text += '\\';
    text += c;
  }
  VQDocumentArray documents;
  database.Search(CompileFormula("SELECT Subject = \"" + text + "\""), &documents);
  for (unsigned long i = 0; i < documents.GetCount(); ++i) {
    VQDocument candidate(documents[i]);
    candidate.Open();
    if (TextOf(candidate, "Subject") != subject) continue;
    *document = candidate;
    return true;
  }
  return false;
}

// In the order of the records. A cell's text is ended by a tab, the last one of a row by a line feed too.
class TextOfObjects {
 public:
  void Add(const VQRTObject& object) {
    if (object.IsType(VQRTTYPE_TABLE)) {
      tables_.push_back({});
    } else if (object.IsType(VQRTTYPE_TABLE_CELL) && !tables_.empty()) {
      Cell(VQTableCell(object).GetRowIndex());
    } else if (object.IsType(VQRTTYPE_TABLE_END) && !tables_.empty()) {
      if (tables_.back().has_cell) text_ += "\t\n";
      tables_.pop_back();
      opens_cell_ = false;
    } else if (object.IsType(VQRTTYPE_STYLIZED_TEXT) || object.IsType(VQRTTYPE_NEW_PARAGRAPH)) {
      VQString piece;
      object.GetText(&piece);
      // The paragraph that a cell begins with ends nothing.
      if (!opens_cell_ || object.IsType(VQRTTYPE_STYLIZED_TEXT)) text_ += ToText(piece);
      opens_cell_ = false;
    }
  }
  std::string Take() { return std::move(text_); }

 private:
  struct Table {
    bool has_cell = false;
    unsigned long row = 0;
  };
  void Cell(unsigned long row) {
    Table& table = tables_.back();
    if (table.has_cell) text_ += row == table.row ? "\t" : "\t\n";
    table = {true, row};
    opens_cell_ = true;
  }

  std::string text_;
  std::vector<Table> tables_;  // around the object
  bool opens_cell_ = false;
};

}  // namespace

void FindDocument(VQDatabase& database, const std::string& key, VQDocument* document) {
  unsigned long number = 0;
  const bool found =
      ParseNumber(key, &number) ? FindNumbered(database, number, document) : FindSubject(database, key, document);
  if (!found) throw Failure{kExitNotFound, "no document " + Printable(key)};
}

std::string RichTextOf(const VQRichText& body) {
  TextOfObjects text;
  VQRTObject object;
  VQSTATUS found = body.FindFirst(VQRTTYPE_OBJECT, &object);
  while (found == VQ_OK) {
    text.Add(object);
    const VQRTObject from = object;
    found = body.FindNext(from, VQRTTYPE_OBJECT, &object);
  }
  return text.Take();
}

void FindRichText(const VQDocument& document, const std::string& name, VQRichText* body) {
  const VQString wanted = FromText(name);
  if (document.GetItemType(wanted) == TYPE_COMPOSITE) {
    vq::ThrowIfError(document.GetItem(wanted, body));
    return;
  }
  throw Failure{kExitNotFound, "no rich text item " + Printable(name)};
}

std::string ToText(const VQString& text) {
  return std::string(reinterpret_cast<const char*>(text.GetBuf()), text.GetBufLength());
}

VQString FromText(std::string_view text) { return VQString(reinterpret_cast<const VQCHAR*>(text.data()), text.size()); }

std::string Printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    const auto byte = static_cast<unsigned char>(text[0]);
    // C0 and C1 controls could drive the terminal.
    const bool control = byte < 0x20 || byte == 0x7F || (byte == 0xC2 && length == 2 && (text[1] & 0xE0) == 0x80);
    result += length == 0 || control ? "?" : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

std::string TextOf(VQDocument& document, const char* item) {
  VQText text;
  const unsigned long type = document.GetItemType(item);
  if (type != TYPE_TEXT && type != TYPE_TEXT_LIST) return {};
  if (document.GetItem(item, &text) != VQ_OK || text.GetCount() == 0) return {};
  return ToText(text[0]);
}

std::string StatusWords(VQSTATUS status) {
  char words[512];
  VQGetErrorMessageText(status, words, sizeof words);
  return words;
}

void FailOn(std::string_view name, VQSTATUS status) {
  char number[16];
  std::snprintf(number, sizeof number, "0x%08lX", status);
  throw Failure{kExitFailed, Printable(name) + ": " + StatusWords(status) + " (" + number + ")"};
}

void PrintPath(const Options& options, const std::string& path) {
  if (!options.json) {
    std::cout << Printable(path) << '\n';
    return;
  }
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Field("path", path);
  json.EndObject();
}

}  // namespace tool
