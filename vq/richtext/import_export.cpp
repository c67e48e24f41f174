// Import and export of rich text through converter libraries.
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/converter.h"
#include "engine/memory.h"
#include "engine/process.h"
#include "engine/status.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/recsrc.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/signature.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"
#include "vq/values/vqtext.h"

namespace {

constexpr std::uint32_t kImportFont = 0x0A000101;
constexpr std::size_t kLibraryField = 2;
constexpr std::size_t kArgumentField = 3;
constexpr std::size_t kFirstExtension = 4;
constexpr std::size_t kTypeWord = 2;
constexpr unsigned char kPlainFace = 1;

struct Converter {
  std::string Library;
  unsigned long Options = 0;
};

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) {
    if (c == ',') {
      fields.emplace_back();
    } else if (c != ' ' || !fields.back().empty()) {
      fields.back() += c;
    }
  }
  for (std::string& field : fields) field.erase(field.find_last_not_of(' ') + 1);
  return fields;
}

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// With its dot.
std::string ExtensionOf(const std::string& filename) {
  std::size_t dot = filename.rfind('.');
  std::size_t slash = filename.rfind('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return ".TXT";
  return Upper(filename.substr(dot));
}

bool Lists(const std::vector<std::string>& fields, const std::string& extension) {
  for (std::size_t i = kFirstExtension; i < fields.size(); ++i) {
    std::string listed = Upper(fields[i]);
    if (listed == extension || "." + listed == extension) return true;
  }
  return false;
}

// The first settings row whose list holds the file's extension.
bool FindConverter(const char* key, const std::string& filename, Converter* converter) {
  std::string extension = ExtensionOf(filename);
  char line[4096];
  for (unsigned number = 1; EngEnvGetString((key + std::to_string(number)).c_str(), line, sizeof line) > 0; ++number) {
    std::vector<std::string> fields = Fields(line);
    if (!Lists(fields, extension) || fields[kLibraryField].empty()) continue;
    converter->Library = fields[kLibraryField];
    converter->Options = std::strtoul(fields[kArgumentField].c_str(), nullptr, 10);
    return true;
  }
  return false;
}

// Keeps a converter loaded.
class LoadedConverter {
 public:
  explicit LoadedConverter(const std::string& name) : Handle(0), Entry(nullptr) {
    Status = vq::FromEngine(EngOsLoadLibrary(name.c_str(), 0, &Handle, &Entry));
  }
  ~LoadedConverter() {
    if (Handle != 0) EngOsFreeLibrary(Handle);
  }
  LoadedConverter(const LoadedConverter&) = delete;
  LoadedConverter& operator=(const LoadedConverter&) = delete;

  VQSTATUS Run(ENGCONVERTERBUFFER* buffer, unsigned short mode, std::uint32_t flags, const std::string& file,
               unsigned long options) const {
    if (Status != VQ_OK) return Status;
    auto convert = reinterpret_cast<ENGCONVERTERMAIN>(Entry);
    return vq::FromEngine(convert(buffer, mode, flags, file.c_str(), static_cast<std::uint32_t>(options)));
  }

 private:
  ENGHANDLE Handle;
  void* Entry;
  VQSTATUS Status;
};

// Removes the file it names, at the latest when it goes.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  explicit TemporaryFile(std::string name) : Name(std::move(name)) {}
  ~TemporaryFile() {
    if (!Name.empty()) std::remove(Name.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  VQSTATUS Remove() {
    bool removed = std::remove(Name.c_str()) == 0;
    Name.clear();
    return removed ? VQ_OK : VQERR_FILE_REMOVE;
  }

 private:
  std::string Name;
};

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The file in engine memory of even size.
VQSTATUS ReadIntoBlock(const char* name, ENGHANDLE* block, std::uint32_t* size) {
  File file(std::fopen(name, "rb"));
  if (!file) return VQERR_FILE_OPEN;
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return VQERR_FILE_GET_OFFSET;
  long length = std::ftell(file.get());
  if (length < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return VQERR_FILE_GET_OFFSET;
  if (length < static_cast<long>(kTypeWord) || length > 0x7FFFFFFE) return VQERR_CORRUPTED;
  *size = vq::Padded(static_cast<std::uint32_t>(length));
  if (VQSTATUS status = vq::FromEngine(EngMemAlloc(ENG_MEM_ZERO | ENG_MEM_SHARED, *size, block))) return status;
  std::size_t count = static_cast<std::size_t>(length);
  bool complete = std::fread(EngMemLock(*block), 1, count, file.get()) == count;
  EngMemUnlock(*block);
  if (complete) return VQ_OK;
  EngMemFree(*block);
  return VQERR_FILE_READ;
}

// The lines of a converter's report, which is removed; without one there are none.
VQSTATUS TakeReport(const char* composite, VQText* report) {
  const std::string name = std::string(composite) + ENG_CONVERTER_REPORT_SUFFIX;
  File file(std::fopen(name.c_str(), "rb"));
  if (!file) return errno == ENOENT ? VQ_OK : VQERR_FILE_OPEN;
  TemporaryFile temporary(name);
  std::string line;
  for (int c = std::getc(file.get()); c != EOF; c = std::getc(file.get())) {
    if (c != '\n') {
      line += static_cast<char>(c);
      continue;
    }
    if (VQSTATUS status = report->Insert(report->GetCount(), VQString(line.c_str()))) return status;
    line.clear();
  }
  return std::ferror(file.get()) ? VQERR_FILE_READ : temporary.Remove();
}

std::uint32_t FlagsFor(const VQText* report) { return report ? ENG_CONVERT_WITH_REPORT : 0; }

VQSTATUS ImportWith(const Converter& converter, const std::string& filename, unsigned long options, VQText* report,
                    VQRichText* imported) {
  ENGCONVERTERBUFFER buffer{ENG_CONVERTER_DEFAULT_FILE, kImportFont};
  LoadedConverter library(converter.Library);
  bool taken = access(ENG_CONVERTER_DEFAULT_FILE, F_OK) == 0;
  if (VQSTATUS status = library.Run(&buffer, ENG_CONVERT_IMPORT, FlagsFor(report), filename, options)) {
    return status;
  }
  buffer.FileName[sizeof buffer.FileName - 1] = '\0';
  // A file that the converter did not make is somebody's, and the end of the import would remove it.
  bool own = filename != buffer.FileName && !(taken && std::strcmp(buffer.FileName, ENG_CONVERTER_DEFAULT_FILE) == 0);
  if (!own) return VQERR_FILE_OPEN;
  TemporaryFile temporary(buffer.FileName);
  ENGHANDLE block = 0;
  std::uint32_t size = 0;
  if (VQSTATUS status = ReadIntoBlock(buffer.FileName, &block, &size)) return status;
  *imported = VQRichText(new VQRichTextBody(block, size));
  if (VQSTATUS status = report ? TakeReport(buffer.FileName, report) : VQ_OK) return status;
  return temporary.Remove();
}

// Blocks of a rich text on their way into a file, freed when this goes.
struct Blocks {
  ~Blocks() {
    for (const vq::ItemBlock& block : List) {
      if (block.Memory != 0) EngMemFree(block.Memory);
    }
  }
  std::vector<vq::ItemBlock> List;
};

// A converter has no font table: table faces and effects become plain ones. Without an effect the bits that the mask
// clears are those of raised and lowered text.
std::uint32_t SimpleFont(std::uint32_t font) {
  const std::uint32_t simple = font & vq::fontid::kEffectBit ? font & vq::fontid::kPlainMask : font;
  return vq::fontid::IsTableFace(vq::fontid::Face(simple)) ? vq::fontid::WithFace(simple, kPlainFace) : simple;
}

// Runs whose fonts a converter does not get as they are.
struct LostFonts {
  unsigned long Faces = 0;
  unsigned long Effects = 0;

  void Count(std::uint32_t font) {
    if (vq::fontid::IsTableFace(vq::fontid::Face(font))) ++Faces;
    if ((font & vq::fontid::kEffectBit) != 0) ++Effects;
  }
  VQSTATUS Tell(VQText* report) const {
    const auto add = [report](const char* words, unsigned long count) {
      if (count == 0) return VQSTATUS{VQ_OK};
      return report->Insert(report->GetCount(), VQString((words + std::to_string(count)).c_str()));
    };
    const VQSTATUS status = add("runs in faces of the font table, shown in the usual one: ", Faces);
    return status == VQ_OK ? add("runs with shadows and other effects, shown without: ", Effects) : status;
  }
};

// Makes the fonts of a block's runs simple; what style extensions say is not passed on, and goes.
VQSTATUS SimplifyFonts(unsigned char* bytes, std::uint32_t* size, LostFonts* lost) {
  constexpr std::uint32_t kFont = 4;
  std::uint32_t kept = kTypeWord;
  for (std::uint32_t offset = kTypeWord; offset < *size;) {
    vq::RecordHeader header;
    if (!vq::ReadRecordHeader(bytes + offset, *size - offset, &header)) return VQERR_CORRUPTED;
    if (header.Length > *size - offset) return VQERR_CORRUPTED;
    const std::uint32_t length = std::min(vq::Padded(header.Length), *size - offset);
    if (header.Signature == SIG_CD_TEXT && header.Length >= kFont + 4) {
      const std::uint32_t font = vq::LoadDword(bytes + offset + kFont);
      if (header.Length > kFont + 4) lost->Count(font);
      vq::StoreDword(bytes + offset + kFont, SimpleFont(font));
    }
    if (header.Signature != SIG_CD_TEXT_STYLE_EXT) {
      if (kept != offset) std::memmove(bytes + kept, bytes + offset, length);
      kept += length;
    }
    offset += length;
  }
  *size = kept;
  return VQ_OK;
}

// Only the first block keeps its type word.
VQSTATUS WriteComposite(std::FILE* file, const Blocks& blocks, LostFonts* lost) {
  std::size_t skipped = 0;
  for (const vq::ItemBlock& block : blocks.List) {
    auto* bytes = static_cast<unsigned char*>(EngMemLock(block.Memory));
    if (bytes == nullptr) return VQERR_CORRUPTED;
    std::uint32_t end = block.Size;
    VQSTATUS status = SimplifyFonts(bytes, &end, lost);
    const std::size_t size = end - skipped;
    if (status == VQ_OK && std::fwrite(bytes + skipped, 1, size, file) != size) status = VQERR_FILE_WRITE;
    EngMemUnlock(block.Memory);
    if (status != VQ_OK) return status;
    skipped = kTypeWord;
  }
  return VQ_OK;
}

VQSTATUS MakeTemporary(ENGCONVERTERBUFFER* buffer, File* file) {
  const char* directory = std::getenv("TMPDIR");
  std::string name = std::string(directory && *directory ? directory : "/tmp") + "/quillon-XXXXXX";
  if (name.size() >= sizeof buffer->FileName) return VQERR_FILE_CREATE;
  int descriptor = mkstemp(name.data());
  if (descriptor < 0) return VQERR_FILE_CREATE;
  file->reset(fdopen(descriptor, "wb"));
  std::memcpy(buffer->FileName, name.c_str(), name.size() + 1);
  if (*file) return VQ_OK;
  close(descriptor);
  std::remove(name.c_str());
  return VQERR_FILE_OPEN;
}

VQSTATUS ExportWith(const Converter& converter, VQRichText& range, const std::string& filename, unsigned long options,
                    VQText* report) {
  VQRichTextBody& body = *range.GetRichTextBody();
  if (VQSTATUS status = body.Initialize()) return status;
  Blocks blocks;
  if (VQSTATUS status = body.WriteBlocks(&blocks.List)) return status;
  ENGCONVERTERBUFFER buffer{ENG_CONVERTER_DEFAULT_FILE, kImportFont};
  File file;
  if (VQSTATUS status = MakeTemporary(&buffer, &file)) return status;
  TemporaryFile temporary(buffer.FileName);
  LostFonts lost;
  if (VQSTATUS status = WriteComposite(file.get(), blocks, &lost)) return status;
  if (std::fclose(file.release()) != 0) return VQERR_FILE_CLOSE;
  LoadedConverter library(converter.Library);
  if (VQSTATUS status = library.Run(&buffer, ENG_CONVERT_EXPORT, FlagsFor(report), filename, options)) {
    return status;
  }
  if (VQSTATUS status = report ? TakeReport(buffer.FileName, report) : VQ_OK) return status;
  if (VQSTATUS status = report ? lost.Tell(report) : VQ_OK) return status;
  return temporary.Remove();
}

std::string PlatformText(const VQString& text) { return text.GetPlatformTextPtr(); }

VQSTATUS ImportInto(VQRichText& target, const Converter& converter, const std::string& filename, VQRTCursor* cursor,
                    unsigned long options, VQText* report) {
  if (target.IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (cursor == nullptr) return VQERR_INVALID_PARAMETER;
  if (!cursor->IsValid()) return VQERR_CURSOR_INVALID;
  VQRichText imported;
  VQSTATUS status = ImportWith(converter, filename, options != 0 ? options : converter.Options, report, &imported);
  if (status == VQ_OK) status = target.GetRichTextBody()->Initialize();
  if (status != VQ_OK) return status;
  VQRTContainerBody& top = *target.GetRichTextBody()->GetTop();
  return vq::Whole(top, [&] { return top.TakeIn(imported, cursor); });
}

// Whether the cursors stand at the ends of the text: then nothing has to be copied, and objects there are whole.
bool IsWhole(const VQRichText& source, const VQRTCursor& start, const VQRTCursor& end) {
  if (source.IsNull() || !start.IsValid() || !end.IsValid()) return false;
  VQRichTextBody& body = *source.GetRichTextBody();
  if (body.Initialize() != VQ_OK) return false;
  VQRTCursor first, last;
  if (body.GetTop()->GetCursor(&first) != VQ_OK || body.GetTop()->GetEndCursor(&last) != VQ_OK) return false;
  return start == first && end == last;
}

VQSTATUS ExportFrom(VQRichText& source, const Converter& converter, const std::string& filename,
                    const VQRTCursor& start, const VQRTCursor& end, unsigned long options, VQText* report) {
  if (IsWhole(source, start, end)) {
    return ExportWith(converter, source, filename, options != 0 ? options : converter.Options, report);
  }
  VQRichText range;
  if (VQSTATUS status = source.GetRichText(start, end, &range)) return status;
  return ExportWith(converter, range, filename, options != 0 ? options : converter.Options, report);
}

}  // namespace

VQSTATUS VQRichText::Import(const VQString& filename, VQRTCursor* cursor, unsigned long options, VQText* report) {
  if (filename.IsNull()) return vq::Apply(VQERR_IMPORT_NAME);
  std::string name = PlatformText(filename);
  Converter converter;
  if (!FindConverter("EDITIMP", name, &converter)) return vq::Apply(VQERR_NO_IMPORT_LIBRARY);
  return vq::Apply(ImportInto(*this, converter, name, cursor, options, report));
}

VQSTATUS VQRichText::Import(const VQString& filename, const VQString& library, VQRTCursor* cursor,
                            unsigned long options, VQText* report) {
  if (filename.IsNull()) return vq::Apply(VQERR_IMPORT_NAME);
  if (library.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  return vq::Apply(ImportInto(*this, {PlatformText(library), 0}, PlatformText(filename), cursor, options, report));
}

VQSTATUS VQRichText::Export(const VQString& filename, const VQRTCursor& start, const VQRTCursor& end,
                            unsigned long options, VQText* report) {
  if (filename.IsNull()) return vq::Apply(VQERR_EXPORT_NAME);
  std::string name = PlatformText(filename);
  Converter converter;
  if (!FindConverter("EDITEXP", name, &converter)) return vq::Apply(VQERR_NO_EXPORT_LIBRARY);
  return vq::Apply(ExportFrom(*this, converter, name, start, end, options, report));
}

VQSTATUS VQRichText::Export(const VQString& filename, const VQString& library, const VQRTCursor& start,
                            const VQRTCursor& end, unsigned long options, VQText* report) {
  if (filename.IsNull()) return vq::Apply(VQERR_EXPORT_NAME);
  if (library.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  return vq::Apply(ExportFrom(*this, {PlatformText(library), 0}, PlatformText(filename), start, end, options, report));
}
