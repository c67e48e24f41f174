#include <string>

#include "converters/textconv/textconv.h"
#include "engine/ods.h"
#include "engine/records.h"
#include "engine/status.h"

namespace textconv {

namespace {

constexpr std::uint16_t kTypeComposite = 0x0001;
constexpr std::uint16_t kSigParagraph = 0x81;
constexpr std::uint16_t kSigDefinition = 0xFF82;
constexpr std::uint16_t kSigReference = 0x83;
constexpr std::uint16_t kSigText = 0xFF85;
constexpr std::uint16_t kPABID = 1;
constexpr std::uint16_t kMargin = 1440;
constexpr std::int16_t kTab = 720;
constexpr std::uint16_t kHideFlagsUnlinked = 0x0100;
// Well below the 20 KB from which readers begin to refuse a run.
constexpr std::size_t kRunBytes = 0x4000;
constexpr std::size_t kLongestCharacter = 4;

class RecordFile {
 public:
  RecordFile(std::FILE* file, std::uint32_t fontID) : Out(file), FontID(fontID) {}

  void Begin() {
    Put(ODS_WORD, kTypeComposite);
    CDPABDEFINITION definition{};
    definition.Header = {kSigDefinition, EngOdsLength(ODS_CDPABDEFINITION)};
    definition.PABID = kPABID;
    definition.LeftMargin = kMargin;
    definition.FirstLineMargin = kMargin;
    definition.Tabs[0] = kTab;
    definition.Flags = kHideFlagsUnlinked;
    Put(ODS_CDPABDEFINITION, definition);
    Reference();
  }
  void NewParagraph() {
    EndParagraph();
    Put(ODS_CDPARAGRAPH, CDPARAGRAPH{{kSigParagraph, static_cast<std::uint8_t>(EngOdsLength(ODS_CDPARAGRAPH))}});
    Reference();
  }
  // A NUL byte is a line break.
  void Character(char byte) {
    if (Run.size() >= kRunBytes && (static_cast<unsigned char>(byte) & 0xC0) != 0x80) WriteRun();
    if (Run.size() >= kRunBytes + kLongestCharacter) WriteRun();
    Run += byte;
  }
  void EndParagraph() {
    if (!Run.empty() || !HasRun) WriteRun();
  }
  bool Failed() const { return Broken; }

 private:
  template <typename Record>
  void Put(std::uint16_t code, const Record& record) {
    char bytes[128];
    void* cursor = bytes;
    std::size_t length = EngOdsLength(code);
    if (length > sizeof bytes || EngOdsWrite(&cursor, code, &record, 1) != ENG_OK) Broken = true;
    if (!Broken) Write(bytes, length);
  }
  void Reference() {
    Put(ODS_CDPABREFERENCE,
        CDPABREFERENCE{{kSigReference, static_cast<std::uint8_t>(EngOdsLength(ODS_CDPABREFERENCE))}, kPABID});
    HasRun = false;
  }
  void WriteRun() {
    std::size_t length = EngOdsLength(ODS_CDTEXT) + Run.size();
    Put(ODS_CDTEXT, CDTEXT{{kSigText, static_cast<std::uint16_t>(length)}, FontID});
    Write(Run.data(), Run.size());
    if (length % 2 != 0) Write("", 1);
    Run.clear();
    HasRun = true;
  }
  void Write(const char* bytes, std::size_t size) {
    if (std::fwrite(bytes, 1, size, Out) != size) Broken = true;
  }

  std::FILE* Out;
  std::uint32_t FontID;
  std::string Run;
  bool HasRun = false;
  bool Broken = false;
};

// Characters of a text file with every kind of line end as a line feed, and no byte order mark.
class LineReader {
 public:
  explicit LineReader(std::FILE* file) : In(file) {
    std::size_t count = 0;
    while (count < sizeof kMark && (Ahead[count] = std::getc(In)) == kMark[count]) ++count;
    if (count == sizeof kMark) return;
    // Not a mark: what was read is text.
    Pending = count + 1;
  }
  int Next() {
    int byte = Raw();
    if (byte != '\r') return byte;
    byte = Raw();
    if (byte != '\n') Back = byte, HasBack = true;
    return '\n';
  }

 private:
  static constexpr unsigned char kMark[3] = {0xEF, 0xBB, 0xBF};

  int Raw() {
    if (HasBack) {
      HasBack = false;
      return Back;
    }
    if (Taken < Pending) return Ahead[Taken++];
    return std::getc(In);
  }

  std::FILE* In;
  int Ahead[3] = {};
  std::size_t Pending = 0;
  std::size_t Taken = 0;
  int Back = 0;
  bool HasBack = false;
};

}  // namespace

ENGSTATUS WriteRecords(std::FILE* text, std::FILE* composite, std::uint32_t fontID, std::uint32_t options,
                       conv::Report& report) {
  RecordFile records(composite, fontID);
  records.Begin();
  LineReader lines(text);
  bool eachLine = (options & kEachLineAParagraph) != 0;
  bool lineIsEmpty = true;
  int byte = lines.Next();
  while (byte != EOF && !records.Failed()) {
    if (byte != '\n') {
      if (byte == '\0') report.Add(conv::Loss::kInvalidText);
      records.Character(static_cast<char>(byte));
      lineIsEmpty = false;
      byte = lines.Next();
      continue;
    }
    byte = lines.Next();
    bool nextIsEmpty = byte == '\n' || byte == EOF;
    if (eachLine || lineIsEmpty || nextIsEmpty) {
      records.NewParagraph();
    } else {
      records.Character('\0');
    }
    lineIsEmpty = true;
  }
  records.EndParagraph();
  if (std::ferror(text)) return ENG_ERR_FILE_READ;
  return records.Failed() ? ENG_ERR_FILE_WRITE : ENG_OK;
}

}  // namespace textconv
