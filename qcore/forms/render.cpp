#include "qcore/forms/render.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "qcore/forms/fixed.h"
#include "qcore/forms/valuetext.h"
#include "qcore/records/layouts.h"
#include "qcore/store/wire.h"
#include "qcore/text/composite.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kComposite = 1;
constexpr std::uint16_t kParagraph = 0x81, kReference = 0x83, kStyleName = 0xA6, kFormulaReference = 0xBC,
                        kDefinition = 0xFF82, kOldField = 0xFF84, kRun = 0xFF85, kField = 0xFF8A, kFontTable = 0xFF8B,
                        kFieldExtension = 0xFFB0, kHide = 0xFFBB, kRunStyle = 0xFFC3, kLinkA = 0xFF91, kLinkB = 0xFF92,
                        kHotspot = 0xFFA9, kHotspotV4 = 0xFFAD, kHotspotEnd = 0xAA, kHotspotEndOld = 0xAE;
constexpr std::size_t kLargestItem = 0xA000;
// Well below the 20 KB from which readers begin to refuse a run.
constexpr std::size_t kLargestRun = 0x4000;
// In one form: a subform may insert itself, more than once.
constexpr unsigned kMostSubforms = 250;
constexpr std::size_t kFaceSize = 34;
constexpr std::size_t kFontHeader = 6;
constexpr std::uint8_t kFirstFace = 5;
constexpr std::uint8_t kLastFace = 255;
constexpr std::string_view kLinks = "$Links", kFormLinks = "$FormLinks";
constexpr std::uint32_t kUsualFont = 0x0A000001;
constexpr std::uint32_t kBoldFont = 0x0A000101;

std::string_view View(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

template <typename Structure>
std::vector<std::uint8_t> Stored(std::uint16_t code, const Structure& structure) {
  const records::Layout& layout = *records::Find(code);
  std::vector<std::uint8_t> bytes(layout.length);
  records::Write(layout, &structure, reinterpret_cast<std::byte*>(bytes.data()), 1);
  return bytes;
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

namespace {

// Whether readers take the record for the begin of a hotspot. A button of the older kind may have several.
bool Opens(std::uint16_t signature, Bytes record, bool* twice) {
  constexpr std::uint16_t kButton = 3;
  constexpr std::uint16_t kTypes[] = {1, 2, kButton, 4, 11, 14, 15};
  CDHOTSPOTBEGIN begin{};
  if (!ReadFixed(ODS_CDHOTSPOTBEGIN, record, &begin)) return false;
  const bool second = begin.Type == kButton && *twice;
  *twice = begin.Type == kButton && signature == kHotspotV4;
  return !second && std::ranges::find(kTypes, begin.Type) != std::end(kTypes);
}

void LoseLink(std::vector<std::uint8_t>& record, std::size_t at) {
  constexpr std::uint16_t kNowhere = 0xFFFF;
  if (at + 2 <= record.size()) StoreLittle(record.data() + at, kNowhere);
}

// A hotspot that leads somewhere by its own record: there is no link before its end.
bool LeadsByItself(Bytes record, Bytes behind) {
  constexpr std::uint16_t kLink = 11;
  constexpr std::uint32_t kAddress = 0x10000000;
  CDHOTSPOTBEGIN begin{};
  if (!ReadFixed(ODS_CDHOTSPOTBEGIN, record, &begin) || begin.Type != kLink || (begin.Flags & kAddress) != 0)
    return false;
  for (std::size_t at = 0; at < behind.size();) {
    const auto header = text::RecordAt({behind.data() + at, behind.size() - at});
    if (!header || header->signature == kHotspotEnd || header->signature == kHotspotEndOld) return true;
    if (header->signature == kLinkA || header->signature == kLinkB) return false;
    at += header->length + (header->length & 1);
  }
  return true;
}

}  // namespace

ENGSTATUS RenderTarget::AppendRecords(Bytes records, Source& source, Reading* reading) {
  for (std::size_t at = 0; at < records.size();) {
    const auto header = text::RecordAt({records.data() + at, records.size() - at});
    if (!header) return ENG_ERR_RECORD_DAMAGED;
    const std::uint16_t signature = header->signature;
    const Bytes bytes = records.subspan(at, header->length);
    at = std::min<std::size_t>(records.size(), at + header->length + (header->length & 1));
    const bool hotspot = signature == kHotspot || signature == kHotspotV4;
    const bool end = signature == kHotspotEnd || signature == kHotspotEndOld;
    if (reading && source.inside > 0) {
      if (hotspot && Opens(signature, bytes, &source.twice)) ++source.inside;
      if (end) {
        --source.inside;
        source.twice = false;
      }
      continue;
    }
    ENGSTATUS status = ENG_OK;
    std::string_view subform;
    if (reading && hotspot) status = ReadSubformName(bytes, &subform);
    if (status != ENG_OK) return ENG_ERR_RECORD_DAMAGED;
    if (!subform.empty()) {
      source.inside = 1;
      status = AppendSubform(subform, source, *reading);
    } else if (reading && (signature == kField || signature == kOldField)) {
      status = AppendField(bytes, source, *reading);
    } else if (hotspot && LeadsByItself(bytes, records.subspan(at)) && !(source.has_links && source.has_table)) {
      std::vector<std::uint8_t> record(bytes.begin(), bytes.end());
      LoseLink(record, records::Find(ODS_CDHOTSPOTBEGIN)->length);
      AddRecord(record);
    } else if (!reading || signature != kFieldExtension) {
      status = AppendRecord(signature, bytes, source);
    }
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendRecord(std::uint16_t signature, Bytes bytes, Source& source) {
  std::vector<std::uint8_t> record(bytes.begin(), bytes.end());
  bool mapped = true;
  switch (signature) {
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
    case kLinkA:
    case kLinkB:
      if (!source.has_links) return ENG_OK;
      if (!source.has_table) LoseLink(record, 4);
      break;
    case kHotspot:
    case kHotspotV4:
      if (ENGSTATUS status = CarryFile(record, source); status != ENG_OK) return status;
      break;
    default:
      break;
  }
  if (!mapped) return ENG_ERR_ITEM_SIZE;
  AddRecord(record);
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendItems(Slate& slate, std::string_view name, Source& source, Reading* reading) {
  Slate::Slot slot = 0;
  for (ENGSTATUS found = slate.FindItem(name, &slot); found == ENG_OK; found = slate.FindNextItem(slot, name, &slot)) {
    if (slate.FactsOf(slot).type != kComposite) continue;
    Bytes value;
    ENGSTATUS status = slate.GetBytes(slot, &value);
    if (status == ENG_OK) status = AppendRecords(value.subspan(kSmallestValue), source, reading);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

// A rich text brings its paragraphs along; behind it the form's go on.
ENGSTATUS RenderTarget::AppendField(Bytes record, Source& form, Reading& reading) {
  const records::Layout& layout = *records::Find(ODS_FIELD);
  if (record.size() < layout.length) return ENG_ERR_RECORD_DAMAGED;
  FieldRecord field{};
  records::Read(layout, reinterpret_cast<const std::byte*>(record.data()), &field, 1);
  const std::size_t at = std::size_t{layout.length} + field.DefaultValueLength + field.InputTranslationLength +
                         field.InputValidationLength;
  if (at > record.size() || field.NameLength > record.size() - at) return ENG_ERR_RECORD_DAMAGED;
  const std::string name(View(record.subspan(at, field.NameLength)));
  if (name.empty()) return ENG_OK;
  Formats formats{field.NumberFormat, field.TimeFormat};
  const auto shown = reading.shown.find(name);
  const bool computed = shown != reading.shown.end() && !shown->second.value.empty();
  // A shared field's formats stand in its definition.
  if (shown != reading.shown.end()) formats = {shown->second.number_format, shown->second.time_format};
  Slate::Slot slot = 0;
  Slate& document = reading.document;
  Bytes value;
  if (computed) {
    value = shown->second.value;
  } else {
    if (document.FindItem(name, &slot) != ENG_OK) return ENG_OK;
    if (document.FactsOf(slot).type == kComposite) {
      const std::uint16_t before = in_force_;
      const ENGSTATUS status = AppendItems(document, name, reading.values, nullptr);
      if (status == ENG_OK && before != 0 && before != in_force_) AddReference(before);
      return status;
    }
    if (ENGSTATUS status = document.GetBytes(slot, &value); status != ENG_OK) return status;
  }
  const std::string text = value.size() < kSmallestValue ? std::string() : ValueText(value, formats);
  if (!text.empty()) AddRun(MapFont(field.FontID, form), text);
  return ENG_OK;
}

// A form that another database lends brings its subforms from there.
ENGSTATUS RenderTarget::AppendSubform(std::string_view name, const Source& form, Reading& reading) {
  if (reading.depth == kDeepestSubform) return ENG_OK;
  if (++reading.subforms > kMostSubforms) return ENG_ERR_RECORD_DAMAGED;
  ++reading.depth;
  const ENGSTATUS status = WithSubform(form.slate.shared_database(), name, [&](Slate& subform) {
    return AppendThroughForm(subform, *Slate::Find(slate_), reading);
  });
  --reading.depth;
  return status;
}

ENGSTATUS RenderTarget::AppendThroughForm(Slate& form, Slate& target, Reading& reading) {
  Source design(form);
  const std::uint16_t before = in_force_;
  ENGSTATUS status = ReadFonts(form, &design);
  if (status == ENG_OK) status = ReadLinks(target, form, &design);
  if (status == ENG_OK) status = AppendItems(form, "$Body", design, &reading);
  if (status == ENG_OK && reading.depth > 0 && before != 0 && before != in_force_) AddReference(before);
  return status;
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
    if (status == ENG_OK && composite) status = AppendItems(document, name, values, nullptr);
    if (status == ENG_OK && !composite) status = document.GetBytes(slot, &value);
    if (status != ENG_OK) return status;
    if (!composite) AddRun(kUsualFont, ValueText(value, Formats()));
    if (composite) last = name;
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::ReadLinks(Slate& target, Slate& from, Source* source) {
  const auto read = [](Slate& slate, std::string_view name, std::vector<std::vector<std::uint8_t>>* parts) {
    Slate::Slot slot = 0;
    ENGSTATUS found = slate.FindItem(name, &slot);
    for (; found == ENG_OK; found = slate.FindNextItem(slot, name, &slot)) {
      Bytes value;
      if (ENGSTATUS status = slate.GetBytes(slot, &value); status != ENG_OK) return status;
      parts->emplace_back(value.begin(), value.end());
    }
    return ENGSTATUS{ENG_OK};
  };
  std::vector<std::vector<std::uint8_t>> theirs, present;
  ENGSTATUS status = read(from, kLinks, &theirs);
  if (status == ENG_OK && theirs.empty()) status = read(from, kFormLinks, &theirs);
  if (status == ENG_OK) status = read(target, kLinks, &present);
  source->has_table = !theirs.empty();
  source->has_links = present.empty() || !source->has_table || theirs == present;
  if (status != ENG_OK || !present.empty()) return status;
  for (const std::vector<std::uint8_t>& part : theirs) {
    Slate::Slot made = 0;
    const Bytes bytes(part);
    status = target.Append(0, kLinks, LoadLittle<std::uint16_t>(part.data()), bytes.subspan(kSmallestValue), &made);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

ENGSTATUS RenderTarget::AppendSlate(Slate* form, Slate& document) {
  const std::size_t records = records_.size(), pieces = pieces_.size();
  const std::uint16_t before = in_force_;
  const ENGSTATUS status = AppendDocument(form, document);
  if (status == ENG_OK) return status;
  records_.resize(records);
  pieces_.resize(pieces);
  in_force_ = before;
  return status;
}

ENGSTATUS RenderTarget::AppendDocument(Slate* form, Slate& document) {
  Slate* target = Slate::Find(slate_);
  if (finished_ || !target) return ENG_ERR_ARGUMENT;
  Reading reading{document, Source(document), {}};
  ENGSTATUS status = ENG_OK;
  if (form) {
    std::vector<Field> fields;
    status = ReadFields(*form, &fields);
    if ((status & ENG_ERROR_MASK) == ENG_ERR_FORM_DESIGN) return ENG_ERR_RECORD_DAMAGED;
    if (status == ENG_OK) status = ComputeForDisplay(document, std::move(fields), &reading.shown);
  }
  if (status == ENG_OK) status = ReadFonts(document, &reading.values);
  if (status == ENG_OK) status = ReadLinks(*target, document, &reading.values);
  if (status != ENG_OK) return status;
  if (!form) return AppendList(document, reading.values);
  StartParagraph();
  return AppendThroughForm(*form, *target, reading);
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

}  // namespace qcore::forms
