#include "qcore/slates/render.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <utility>

#include "qcore/records/layouts.h"
#include "qcore/settings/settings.h"
#include "qcore/store/wire.h"
#include "qcore/text/number.h"
#include "qcore/text/textlist.h"
#include "qcore/time/timetext.h"

namespace qcore {

namespace {

constexpr std::uint16_t kComposite = 1, kObject = 3, kNumber = 0x0300, kNumberList = 0x0301, kTime = 0x0400,
                        kTimeList = 0x0401, kText = 0x0500, kTextList = 0x0501;
constexpr std::uint16_t kParagraph = 0x81, kReference = 0x83, kStyleName = 0xA6, kFormulaReference = 0xBC,
                        kDefinition = 0xFF82, kOldField = 0xFF84, kRun = 0xFF85, kField = 0xFF8A, kFontTable = 0xFF8B,
                        kFieldExtension = 0xFFB0, kHide = 0xFFBB, kRunStyle = 0xFFC3;
constexpr std::uint32_t kLargestRecord = 0x10400;
constexpr std::size_t kLargestItem = 0xA000;
constexpr std::size_t kLargestRun = 30000;
constexpr std::size_t kFaceSize = 34;
constexpr std::size_t kFontHeader = 6;
constexpr std::uint8_t kFirstFace = 5;
constexpr std::uint8_t kLastFace = 255;
constexpr std::uint32_t kUsualFont = 0x0A000001;
constexpr std::uint32_t kBoldFont = 0x0A000101;
constexpr std::size_t kFieldFixedPart = 36;

struct Header {
  std::uint16_t signature;
  std::uint32_t length;
};

// Nothing for a record that leads out of the bytes.
std::optional<Header> HeaderAt(Bytes rest) {
  if (rest.size() < 2) return std::nullopt;
  const auto word = LoadLittle<std::uint16_t>(rest.data());
  const unsigned form = word >> 8;
  const std::size_t size = form == 0 ? 6 : form == 0xFF ? 4 : 2;
  if (rest.size() < size) return std::nullopt;
  const std::uint32_t stored = form == 0      ? LoadLittle<std::uint32_t>(rest.data() + 2)
                               : form == 0xFF ? LoadLittle<std::uint16_t>(rest.data() + 2)
                                              : form;
  const std::uint32_t length = stored == 0 ? static_cast<std::uint32_t>(size) : stored;
  if (length < size || length > kLargestRecord || length > rest.size()) return std::nullopt;
  return Header{form == 0xFF ? word : static_cast<std::uint16_t>(word & 0xFF), length};
}

std::string_view View(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

template <typename Structure>
std::vector<std::uint8_t> Stored(std::uint16_t code, const Structure& structure) {
  const records::Layout& layout = *records::Find(code);
  std::vector<std::uint8_t> bytes(layout.length);
  records::Write(layout, &structure, reinterpret_cast<std::byte*>(bytes.data()), 1);
  return bytes;
}

// How a field shows its value.
struct Formats {
  NFMT number = text::kGeneralFormat;
  TFMT time = time::kUsualFormat;
};

void AddEntry(std::string* all, std::string_view entry) {
  if (!all->empty()) *all += ", ";
  *all += entry;
}

std::string NumberText(const std::uint8_t* at, const Formats& formats) {
  const double value = std::bit_cast<double>(LoadLittle<std::uint64_t>(at));
  const std::optional<std::string> text = text::FormatNumber(settings::International(), formats.number, value);
  return text ? *text : text::FormatNumber(settings::International(), text::kGeneralFormat, value).value_or("");
}

std::string TimeText(const std::uint8_t* at, const Formats& formats) {
  const TIMEDATE moment = LoadTime(at);
  const std::optional<std::string> text = time::FormatMoment(settings::International(), formats.time, moment);
  return text ? *text : time::FormatMoment(settings::International(), time::kUsualFormat, moment).value_or("");
}

// Single entries behind a list header, then pairs; what the counts say beyond the bytes is not there.
template <typename Show>
std::string ListText(Bytes data, const char* between, Show show) {
  if (data.size() < 4) return {};
  const std::size_t singles = LoadLittle<std::uint16_t>(data.data());
  const std::size_t ranges = LoadLittle<std::uint16_t>(data.data() + 2);
  std::string all;
  std::size_t at = 4;
  for (std::size_t i = 0; i < singles && data.size() - at >= 8; ++i, at += 8) AddEntry(&all, show(data.data() + at));
  for (std::size_t i = 0; i < ranges && data.size() - at >= 16; ++i, at += 16) {
    AddEntry(&all, show(data.data() + at) + between + show(data.data() + at + 8));
  }
  return all;
}

std::string ValueText(Bytes value, const Formats& formats) {
  const Bytes data = value.subspan(kSmallestValue);
  const auto number = [&](const std::uint8_t* at) { return NumberText(at, formats); };
  const auto moment = [&](const std::uint8_t* at) { return TimeText(at, formats); };
  switch (LoadLittle<std::uint16_t>(value.data())) {
    case kText:
      return std::string(View(data));
    case kTextList: {
      std::string all;
      const auto entries = text::ReadList(value, text::Prefix::kType);
      for (std::string_view entry : entries.value_or(text::Entries())) AddEntry(&all, entry);
      return all;
    }
    case kNumber:
      return data.size() >= 8 ? number(data.data()) : std::string();
    case kTime:
      return data.size() >= 8 ? moment(data.data()) : std::string();
    case kNumberList:
      return ListText(data, " - ", number);
    case kTimeList:
      return ListText(data, " - ", moment);
    default:
      return {};
  }
}

}  // namespace

ENGSTATUS RenderTarget::Create(const std::shared_ptr<Database>& database, std::string_view name, ENGHANDLE* handle) {
  ENGHANDLE slate = 0;
  const ENGSTATUS status = Slate::Create(database, &slate);
  if (status != ENG_OK) return status;
  auto target = std::make_unique<RenderTarget>(name, slate);
  target->handle_ = handle_table.Insert(Kind::kRender, target.get());
  if (target->handle_ == 0) return ENG_ERR_TOO_MANY_HANDLES;
  *handle = target.release()->handle_;
  return ENG_OK;
}

ENGSTATUS RenderTarget::Close(ENGHANDLE handle) {
  const std::unique_ptr<RenderTarget> target(static_cast<RenderTarget*>(handle_table.Remove(Kind::kRender, handle)));
  return target ? ENG_OK : ENG_ERR_INVALID_HANDLE;
}

void RenderTarget::CloseAll() {
  for (ENGHANDLE handle : handle_table.All(Kind::kRender)) static_cast<void>(Close(handle));
}

RenderTarget::~RenderTarget() {
  if (slate_ != 0) static_cast<void>(Slate::Close(slate_));
}

void RenderTarget::AddRecord(Bytes record) {
  records_.insert(records_.end(), record.begin(), record.end());
  if (records_.size() % 2 != 0) records_.push_back(0);
  pieces_.push_back({records_.size()});
}

void RenderTarget::AddReference(std::uint16_t paragraph) {
  in_force_ = paragraph;
  AddRecord(Stored(ODS_CDPABREFERENCE, CDPABREFERENCE{{kReference, 4}, paragraph}));
}

// A line break inside its paragraph is a NUL.
void RenderTarget::AddRun(std::uint32_t font, std::string_view text) {
  do {
    std::size_t size = std::min(text.size(), kLargestRun);
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
    const std::size_t taken = size != 0 ? size : std::min(text.size(), kLargestRun);
    const auto length = static_cast<std::uint16_t>(8 + taken);
    std::vector<std::uint8_t> record = Stored(ODS_CDTEXT, CDTEXT{{kRun, length}, font & 0xFFFF4FFF});
    record.insert(record.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(taken));
    std::replace(record.begin() + 8, record.end(), std::uint8_t{'\n'}, std::uint8_t{0});
    AddRecord(record);
    text.remove_prefix(taken);
  } while (!text.empty());
}

void RenderTarget::StartParagraph() {
  if (records_.empty()) return;
  AddRecord(Stored(ODS_CDPARAGRAPH, CDPARAGRAPH{{kParagraph, 2}}));
}

ENGSTATUS RenderTarget::NewParagraphNumber(std::uint16_t* number) {
  if (last_paragraph_ == UINT16_MAX) return ENG_ERR_ITEM_SIZE;
  *number = static_cast<std::uint16_t>(++last_paragraph_);
  return ENG_OK;
}

ENGSTATUS RenderTarget::OpenStyle(std::string_view name, const CDPABDEFINITION* style, std::uint16_t* number) {
  if (finished_) return ENG_ERR_ARGUMENT;
  constexpr std::uint16_t kUsualMargin = 1440;
  CDPABDEFINITION definition{};
  if (style) {
    definition = *style;
  } else {
    definition.LeftMargin = definition.FirstLineMargin = kUsualMargin;
    definition.Flags = 0x0100;
  }
  ENGSTATUS status = NewParagraphNumber(number);
  if (status != ENG_OK) return status;
  definition.Header = {kDefinition, 70};
  definition.PABID = *number;
  AddRecord(Stored(ODS_CDPABDEFINITION, definition));
  if (!name.empty()) {
    CDSTYLENAME record{};
    record.Header = {kStyleName, 44};
    record.PABID = *number;
    std::memcpy(record.StyleName, name.data(), std::min(name.size(), sizeof record.StyleName - 1));
    AddRecord(Stored(ODS_CDSTYLENAME, record));
  }
  AddReference(*number);
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendText(std::uint16_t style, std::uint32_t font, std::string_view text) {
  if (finished_ || style > last_paragraph_) return ENG_ERR_ARGUMENT;
  if (style != 0 && style != in_force_) {
    StartParagraph();
    AddReference(style);
  }
  for (bool first = true;; first = false) {
    if (!first) {
      StartParagraph();
      if (in_force_ != 0) AddReference(in_force_);
    }
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.empty() || end == std::string_view::npos || !first) AddRun(font, line);
    if (end == std::string_view::npos) return ENG_OK;
    text.remove_prefix(end + 1);
  }
}

// Faces keep their numbers where they can.
ENGSTATUS RenderTarget::ReadFonts(Slate& slate, Source* source) {
  Slate::Slot slot = 0;
  Bytes value;
  if (slate.FindItem("$Fonts", &slot) != ENG_OK) return ENG_OK;
  const ENGSTATUS status = slate.GetBytes(slot, &value);
  if (status != ENG_OK) return status;
  if (value.size() < kSmallestValue + kFontHeader) return ENG_OK;
  const Bytes table = value.subspan(kSmallestValue + kFontHeader);
  for (std::size_t at = 0; at + kFaceSize <= table.size(); at += kFaceSize) {
    const Bytes face = table.subspan(at, kFaceSize);
    if (face[0] < kFirstFace) continue;
    std::size_t known = 0;
    while (known < faces_.size() && !std::equal(face.begin() + 1, face.end(), faces_.begin() + known + 1)) {
      known += kFaceSize;
    }
    if (known == faces_.size()) {
      if (known / kFaceSize + kFirstFace > kLastFace) continue;
      faces_.insert(faces_.end(), face.begin(), face.end());
      faces_[known] = static_cast<std::uint8_t>(known / kFaceSize + kFirstFace);
    }
    source->faces[face[0]] = faces_[known];
  }
  return ENG_OK;
}

std::uint32_t RenderTarget::MapFont(std::uint32_t font, const Source& source) {
  const auto face = static_cast<std::uint8_t>(font);
  if (face < kFirstFace) return font;
  const auto found = source.faces.find(face);
  return (font & 0xFFFFFF00) | (found == source.faces.end() ? 1 : found->second);
}

void RenderTarget::MapFontAt(std::vector<std::uint8_t>& record, std::size_t at, const Source& source) {
  if (at + 4 > record.size()) return;
  StoreLittle(record.data() + at, MapFont(LoadLittle<std::uint32_t>(record.data() + at), source));
}

bool RenderTarget::MapParagraph(std::vector<std::uint8_t>& record, std::size_t at, Source& source) {
  if (at + 2 > record.size()) return true;
  const auto old = LoadLittle<std::uint16_t>(record.data() + at);
  auto found = source.paragraphs.find(old);
  if (found == source.paragraphs.end()) {
    std::uint16_t number = 0;
    if (NewParagraphNumber(&number) != ENG_OK) return false;
    found = source.paragraphs.emplace(old, number).first;
  }
  StoreLittle(record.data() + at, found->second);
  return true;
}

ENGSTATUS RenderTarget::AppendRecords(Bytes records, Source& source, Slate* document, Source* values) {
  for (std::size_t at = 0; at < records.size();) {
    const std::optional<Header> header = HeaderAt(records.subspan(at));
    if (!header) return ENG_ERR_RECORD_DAMAGED;
    const Bytes bytes = records.subspan(at, header->length);
    at = std::min<std::size_t>(records.size(), at + header->length + (header->length & 1));
    const bool field = header->signature == kField || header->signature == kOldField;
    if (document && header->signature == kFieldExtension) continue;
    if (document && field) {
      const ENGSTATUS status = AppendField(bytes, source, *document, *values);
      if (status != ENG_OK) return status;
      continue;
    }
    std::vector<std::uint8_t> record(bytes.begin(), bytes.end());
    bool mapped = true;
    switch (header->signature) {
      case kReference:
        mapped = MapParagraph(record, 2, source);
        if (mapped && record.size() >= 4) in_force_ = LoadLittle<std::uint16_t>(record.data() + 2);
        break;
      case kFormulaReference:
        mapped = MapParagraph(record, 2, source) && MapParagraph(record, 4, source);
        break;
      case kDefinition:
      case kHide:
        mapped = MapParagraph(record, 4, source);
        break;
      case kStyleName:
        mapped = MapParagraph(record, 6, source);
        if (record.size() >= 6 && (record[2] & 1) != 0) MapFontAt(record, 44, source);
        break;
      case kRun:
      case kRunStyle:
        MapFontAt(record, 4, source);
        break;
      default:
        break;
    }
    if (!mapped) return ENG_ERR_ITEM_SIZE;
    AddRecord(record);
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendItems(Slate& slate, std::string_view name, Source& source, Slate* document,
                                    Source* values) {
  Slate::Slot slot = 0;
  for (ENGSTATUS found = slate.FindItem(name, &slot); found == ENG_OK; found = slate.FindNextItem(slot, name, &slot)) {
    if (slate.FactsOf(slot).type != kComposite) continue;
    Bytes value;
    ENGSTATUS status = slate.GetBytes(slot, &value);
    if (status == ENG_OK) status = AppendRecords(value.subspan(kSmallestValue), source, document, values);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

// A rich text brings its paragraphs along; behind it the form's go on.
ENGSTATUS RenderTarget::AppendField(Bytes record, Source& form, Slate& document, Source& values) {
  if (record.size() < kFieldFixedPart) return ENG_ERR_RECORD_DAMAGED;
  const auto word = [&record](std::size_t at) { return LoadLittle<std::uint16_t>(record.data() + at); };
  const std::size_t at = kFieldFixedPart + word(22) + word(24) + word(28);
  const std::size_t length = word(30);
  if (at > record.size() || length > record.size() - at) return ENG_ERR_RECORD_DAMAGED;
  Slate::Slot slot = 0;
  const std::string name(View(record.subspan(at, length)));
  if (name.empty() || document.FindItem(name, &slot) != ENG_OK) return ENG_OK;
  if (document.FactsOf(slot).type == kComposite) {
    const std::uint16_t before = in_force_;
    const ENGSTATUS status = AppendItems(document, name, values, nullptr, nullptr);
    if (status == ENG_OK && before != 0 && before != in_force_) AddReference(before);
    return status;
  }
  Formats formats;
  std::memcpy(&formats.number, record.data() + 10, sizeof formats.number);
  std::memcpy(&formats.time, record.data() + 14, sizeof formats.time);
  Bytes value;
  const ENGSTATUS status = document.GetBytes(slot, &value);
  if (status != ENG_OK) return status;
  const std::string text = ValueText(value, formats);
  if (!text.empty()) AddRun(MapFont(LoadLittle<std::uint32_t>(record.data() + 18), form), text);
  return ENG_OK;
}

// The items that are the user's, in their order: a name in bold and its value.
ENGSTATUS RenderTarget::AppendList(Slate& document, Source& values) {
  std::string last;
  for (std::uint32_t i = 0; i < document.ItemCount(); ++i) {
    Slate::Slot slot = 0;
    Bytes value;
    ENGSTATUS status = document.ItemAt(i, &slot);
    const std::string name(document.NameOf(slot));
    if (status != ENG_OK || name.starts_with('$') || name == last) continue;
    const bool composite = document.FactsOf(slot).type == kComposite;
    StartParagraph();
    std::uint16_t style = 0;
    status = OpenStyle({}, nullptr, &style);
    AddRun(kBoldFont, name + ": ");
    if (status == ENG_OK && composite) status = AppendItems(document, name, values, nullptr, nullptr);
    if (status == ENG_OK && !composite) status = document.GetBytes(slot, &value);
    if (status != ENG_OK) return status;
    if (!composite) AddRun(kUsualFont, ValueText(value, Formats()));
    if (composite) last = name;
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendTable(Slate& target, Slate& from, std::string_view name) {
  Slate::Slot slot = 0, made = 0;
  if (from.FindItem(name, &slot) != ENG_OK || target.FindItem(name, &made) == ENG_OK) return ENG_OK;
  Bytes value;
  const ENGSTATUS status = from.GetBytes(slot, &value);
  if (status != ENG_OK) return status;
  return target.Append(0, name, from.FactsOf(slot).type, value.subspan(kSmallestValue), &made);
}

// Records whose objects are gone come along as they are.
ENGSTATUS RenderTarget::AppendFiles(Slate& target, Slate& document) {
  for (std::uint32_t i = 0; i < document.ItemCount(); ++i) {
    Slate::Slot slot = 0, made = 0;
    Bytes value;
    ENGSTATUS status = document.ItemAt(i, &slot);
    if (status != ENG_OK || document.FactsOf(slot).type != kObject) continue;
    status = document.GetBytes(slot, &value);
    if (status != ENG_OK) return status;
    const Bytes data = value.subspan(kSmallestValue);
    status = target.AppendForeign(document.NameOf(slot), data, document.ObjectsOf(slot), &made);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendSlate(Slate* form, Slate& document) {
  Slate* target = Slate::Find(slate_);
  if (finished_ || !target) return ENG_ERR_ARGUMENT;
  Source values, design;
  ENGSTATUS status = ReadFonts(document, &values);
  if (status == ENG_OK && form) status = ReadFonts(*form, &design);
  if (status == ENG_OK) status = AppendTable(*target, document, "$Links");
  if (status == ENG_OK) status = AppendFiles(*target, document);
  if (status != ENG_OK) return status;
  if (!form) return AppendList(document, values);
  StartParagraph();
  return AppendItems(*form, "$Body", design, &document, &values);
}

ENGSTATUS RenderTarget::Finish() {
  Slate* temporary = Slate::Find(slate_);
  if (finished_ || !temporary) return ENG_ERR_ARGUMENT;
  Slate& slate = *temporary;
  Slate::Slot slot = 0;
  ENGSTATUS status = ENG_OK;
  std::size_t start = 0;
  for (std::size_t i = 0; i < pieces_.size() && status == ENG_OK; ++i) {
    const bool last = i + 1 == pieces_.size();
    if (!last && pieces_[i + 1].end - start <= kLargestItem - kSmallestValue) continue;
    const Bytes bytes = Bytes(records_).subspan(start, pieces_[i].end - start);
    status = slate.Append(0, name_, kComposite, bytes, &slot);
    start = pieces_[i].end;
  }
  if (pieces_.empty()) status = slate.Append(0, name_, kComposite, {}, &slot);
  if (status != ENG_OK || faces_.empty()) {
    finished_ = status == ENG_OK;
    return status;
  }
  const auto count = static_cast<std::uint16_t>(faces_.size() / kFaceSize);
  const auto length = static_cast<std::uint16_t>(kFontHeader + faces_.size());
  std::vector<std::uint8_t> table = Stored(ODS_CDFONTTABLE, CDFONTTABLE{{kFontTable, length}, count});
  table.insert(table.end(), faces_.begin(), faces_.end());
  status = slate.Append(0, "$Fonts", kComposite, table, &slot);
  finished_ = status == ENG_OK;
  return status;
}

ENGSTATUS RenderTarget::TakeSlate(ENGHANDLE* slate) {
  if (!finished_ || slate_ == 0) return ENG_ERR_ARGUMENT;
  *slate = std::exchange(slate_, 0);
  return ENG_OK;
}

}  // namespace qcore
