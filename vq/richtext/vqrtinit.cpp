#include "vq/richtext/vqrtinit.h"

#include <algorithm>
#include <utility>

#include "engine/records.h"
#include "vq/frame/session.h"
#include "vq/richtext/rtmakers.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/richtext/vqstyltx.h"

namespace {

constexpr std::uint32_t kTypeWord = 2;

}  // namespace

VQRichTextParser::VQRichTextParser(VQRichTextBody& body) : Body(body), Stack{} {}

VQRichTextParser::~VQRichTextParser() {
  if (Pending) Pending->Release();
}

// Sorted by signature.
const VQRichTextParser::Rule VQRichTextParser::kRules[] = {
    {SIG_CD_PARAGRAPH, &VQRichTextParser::AddPlain, VQRTTYPE_NEW_PARAGRAPH},
    {SIG_CD_PABREFERENCE, &VQRichTextParser::AddPABObject, VQRTTYPE_PAB_REFERENCE},
    {SIG_CD_BITMAPHEADER, &VQRichTextParser::AddGraphicHeader, VQRTTYPE_BITMAP},
    {SIG_CD_BITMAPSEGMENT, &VQRichTextParser::AddGraphicPart, VQRTTYPE_BITMAP_SEGMENT},
    {SIG_CD_COLORTABLE, &VQRichTextParser::AddGraphicPart, VQRTTYPE_BITMAP_COLOR_TABLE},
    {SIG_CD_PATTERNTABLE, &VQRichTextParser::AddGraphicPart, VQRTTYPE_BITMAP_PATTERN_TABLE},
    {SIG_CD_GRAPHIC, &VQRichTextParser::BeginGraphic, VQRTTYPE_GRAPHIC},
    {SIG_CD_PMMETASEG, &VQRichTextParser::AddGraphicPart, VQRTTYPE_PM_METAFILE_SEGMENT},
    {SIG_CD_WINMETASEG, &VQRichTextParser::AddGraphicPart, VQRTTYPE_WIN_METAFILE_SEGMENT},
    {SIG_CD_MACMETASEG, &VQRichTextParser::AddGraphicPart, VQRTTYPE_MAC_METAFILE_SEGMENT},
    {SIG_CD_CGMMETA, &VQRichTextParser::AddGraphicHeader, VQRTTYPE_CGM_METAFILE},
    {SIG_CD_PMMETAHEADER, &VQRichTextParser::AddGraphicHeader, VQRTTYPE_PM_METAFILE},
    {SIG_CD_WINMETAHEADER, &VQRichTextParser::AddGraphicHeader, VQRTTYPE_WIN_METAFILE},
    {SIG_CD_MACMETAHEADER, &VQRichTextParser::AddGraphicHeader, VQRTTYPE_MAC_METAFILE},
    {SIG_CD_TABLEBEGIN, &VQRichTextParser::BeginTable, VQRTTYPE_TABLE},
    {SIG_CD_TABLECELL, &VQRichTextParser::AddCell, VQRTTYPE_TABLE_CELL},
    {SIG_CD_TABLEEND, &VQRichTextParser::EndTable, VQRTTYPE_TABLE_END},
    {SIG_CD_STYLENAME, &VQRichTextParser::AddStyleName, VQRTTYPE_PAB_STYLE_NAME},
    {SIG_CD_HOTSPOTEND_OLD, &VQRichTextParser::EndHotspot, VQRTTYPE_HOTSPOT_END},
    {SIG_CD_HOTSPOTEND, &VQRichTextParser::EndHotspot, VQRTTYPE_HOTSPOT_END},
    {SIG_CD_PABFORMULAREF, &VQRichTextParser::AddPABObject, VQRTTYPE_PAB_FORMULA_REFERENCE},
    {SIG_CD_TRANSPARENCYTABLE, &VQRichTextParser::AddGraphicPart, VQRTTYPE_BITMAP_TRANSPARENCY_TABLE},
    {SIG_CD_PABDEFINITION, &VQRichTextParser::AddDefinition, VQRTTYPE_PAB_DEFINITION},
    {SIG_CD_FIELD_OLD, &VQRichTextParser::AddField, VQRTTYPE_FORM_FIELD},
    {SIG_CD_TEXT, &VQRichTextParser::AddText, VQRTTYPE_STYLIZED_TEXT},
    {SIG_CD_FIELD, &VQRichTextParser::AddField, VQRTTYPE_FORM_FIELD},
    {SIG_CD_LINK_A, &VQRichTextParser::AddElement, VQRTTYPE_LINK},
    {SIG_CD_LINK_B, &VQRichTextParser::AddElement, VQRTTYPE_LINK},
    {SIG_CD_OLEBEGIN, &VQRichTextParser::BeginOLE, VQRTTYPE_OLE_OBJECT},
    {SIG_CD_OLEEND, &VQRichTextParser::EndOLE, VQRTTYPE_OLE_OBJECT_END},
    {SIG_CD_HOTSPOTBEGIN, &VQRichTextParser::BeginHotspot, VQRTTYPE_HOTSPOT},
    {SIG_CD_BUTTON, &VQRichTextParser::AddPart, VQRTTYPE_BUTTON_PART},
    {SIG_CD_V4HOTSPOTBEGIN, &VQRichTextParser::BeginHotspot, VQRTTYPE_HOTSPOT},
    {SIG_CD_FIELD_EXTENSION, &VQRichTextParser::AddFieldExtension, VQRTTYPE_FIELD_EXTENSION},
    {SIG_CD_ACTION_PART, &VQRichTextParser::AddPart, VQRTTYPE_ACTION_PART},
    {SIG_CD_PABHIDE, &VQRichTextParser::AddPABObject, VQRTTYPE_PAB_HIDE},
    {SIG_CD_TEXT_STYLE_EXT, &VQRichTextParser::AddTextStyle, VQRTTYPE_TEXT_STYLE_EXT},
    {SIG_CD_ACTIVEOBJECT_PART, &VQRichTextParser::AddPart, VQRTTYPE_ACTIVE_PART},
    {SIG_CD_ANCHOR, &VQRichTextParser::AddElement, VQRTTYPE_ANCHOR_LOCATION},
};

const VQRichTextParser::Rule* VQRichTextParser::FindRule(std::uint16_t signature) {
  const Rule* rule = std::lower_bound(std::begin(kRules), std::end(kRules), signature,
                                      [](const Rule& r, std::uint16_t s) { return r.Signature < s; });
  return rule != std::end(kRules) && rule->Signature == signature ? rule : nullptr;
}

VQSTATUS VQRichTextParser::Run() {
  VQSTATUS status = VQ_OK;
  SpreadIndex();
  for (std::size_t i = 0; i < Body.Blocks.size() && status == VQ_OK; ++i) {
    status = ParseBlock(i);
    StreamOffset += Body.Blocks[i].Size;
  }
  if (status == VQ_OK) status = Finish();
  if (status != VQ_OK || Index < VQRT_MAX_INDEX_VALUE) return status;
  return Body.Top->Renumber(true);  // far more records than their bytes let expect
}

// Half of the range stays free for what is appended. An object takes two gaps, three when it is left open.
void VQRichTextParser::SpreadIndex() {
  constexpr std::uint64_t kUsualRecord = 16, kWideGap = 100000;
  std::uint64_t bytes = 0;
  for (const VQRichTextBody::Loaded& block : Body.Blocks) bytes += block.Size;
  const std::uint64_t gaps = 3 * (bytes / kUsualRecord + 1);
  Gap = static_cast<std::uint32_t>(std::min(kWideGap, VQRT_MAX_INDEX_VALUE / 2 / gaps));
  Index = VQRT_MIN_INDEX_VALUE;
}

VQSTATUS VQRichTextParser::ParseBlock(std::size_t index) {
  const VQRichTextBody::Loaded& block = Body.Blocks[index];
  const vq::MemoryLock lock(block.Source->GetPool());
  std::uint32_t capacity = 0;
  if (!lock.GetBytes() || EngMemGetSize(block.Source->GetPool(), &capacity) != 0) return VQERR_ITEM_UNINITIALIZED;
  if (block.Source->GetBase() > capacity || block.Size > capacity - block.Source->GetBase()) return VQERR_CORRUPTED;
  const unsigned char* value = lock.GetBytes() + block.Source->GetBase();
  if (Pending) {  // leads an object of another block: neither can stay while the other is written
    Pending->Content.GetSource()->SetOutdated();
    block.Source->SetOutdated();
  }
  const bool outside = Depth == 0;
  for (std::uint32_t offset = kTypeWord; offset < block.Size;) {
    vq::RecordHeader header;
    if (!vq::ReadRecordHeader(value + offset, block.Size - offset, &header)) return VQERR_RT_INVALID;
    if (header.Length > vq::kRecordLimit) return VQERR_CORRUPTED;
    if (header.Length > block.Size - offset) return VQERR_RT_INVALID;
    const std::uint32_t padded = vq::Padded(header.Length);
    const Record record = {block.Source, offset, std::min(padded, block.Size - offset), header.Signature,
                           value + offset};
    offset += padded;
    Next = NextSignature(index, value, offset);
    const VQSTATUS status = Dispatch(record);
    if (status != VQ_OK) return status;
  }
  block.Source->SetLast(LastRead);
  block.Source->SetBalanced(outside && Depth == 0);
  return VQ_OK;
}

std::uint16_t VQRichTextParser::NextSignature(std::size_t index, const unsigned char* value,
                                              std::uint32_t offset) const {
  vq::RecordHeader header;
  if (offset < Body.Blocks[index].Size) {
    return vq::ReadRecordHeader(value + offset, Body.Blocks[index].Size - offset, &header) ? header.Signature : 0;
  }
  for (++index; index < Body.Blocks.size(); ++index) {
    const VQRichTextBody::Loaded& next = Body.Blocks[index];
    if (next.Size <= kTypeWord) continue;
    const vq::MemoryLock lock(next.Source->GetPool());
    if (!lock.GetBytes()) return 0;
    const unsigned char* bytes = lock.GetBytes() + next.Source->GetBase() + kTypeWord;
    return vq::ReadRecordHeader(bytes, next.Size - kTypeWord, &header) ? header.Signature : 0;
  }
  return 0;
}

VQSTATUS VQRichTextParser::Dispatch(const Record& record) {
  const Rule* rule = FindRule(record.Signature);
  const bool graphicRecord = rule && (rule->Handle == &VQRichTextParser::AddGraphicHeader ||
                                      rule->Handle == &VQRichTextParser::AddGraphicPart);
  if (!graphicRecord) CloseGraphic();
  if (!rule) return AddOpaque(record);
  RuleType = rule->Type;
  return (this->*rule->Handle)(record);
}

VQSTATUS VQRichTextParser::Finish() {
  CloseGraphic();
  if (Depth == 0) return VQ_OK;
  const VQSTATUS status = Report(VQERR_RT_TRUNCATED, nullptr);
  if (status != VQ_OK) return status;
  VQRTBaseContainerBody* outermost = Stack[0].Object;
  Depth = 0;
  return outermost->Delete();
}

VQSTATUS VQRichTextParser::Report(VQSTATUS status, const Record* record) {
  const VQQuillonSession* session = Body.GetSession();
  const VQRTPARSERERRORHANDLER handler =
      session && session->IsInitialized() ? session->GetRTParserErrorHandler() : nullptr;
  if (!handler) return status;
  VQRichText richText(&Body);
  VQRTPARSERERRORDATA data = {&richText, StreamOffset, 0, 0, status};
  if (record) {
    data.Offset += record->Offset;
    data.Signature = record->Signature;
    vq::RecordHeader header;
    if (vq::ReadRecordHeader(record->Bytes, record->Size, &header)) data.RecordLength = header.Length;
  }
  try {
    return handler(data);
  } catch (VQSTATUS thrown) {
    return thrown;  // by an operation that the handler called
  }
}

VQRTBaseContainerBody* VQRichTextParser::Container() const { return Depth == 0 ? Body.Top : Stack[Depth - 1].AddTo; }

void VQRichTextParser::Add(VQRTObjectBody* object) {
  VQRTBaseContainerBody* container = Container();
  container->LinkPointers(object, container->LastChild, nullptr);
  LastAdded = object;
  LastRead = object;
  Index += Gap;
  object->IndexValue = static_cast<std::uint32_t>(Index);
  if (VQRTBaseContainerBody* inside = object->AsBase()) {
    Index += Gap;
    inside->EndIndexValue = static_cast<std::uint32_t>(Index);
  }
}

void VQRichTextParser::TakePending(VQRTBaseContainerBody* object) {
  if (!Pending) return;
  object->LinkPointers(Pending, nullptr, nullptr);
  Pending->IndexValue = object->IndexValue + Gap / 2;
  std::exchange(Pending, nullptr)->Release();
}

VQSTATUS VQRichTextParser::Push(VQRTBaseContainerBody* object) {
  if (Depth == kStackSize) return VQERR_RT_STACK_OVERFLOW;
  Stack[Depth++] = {object, object};
  return VQ_OK;
}

void VQRichTextParser::Pop() {
  const Open& open = Stack[--Depth];
  // A link that spans cells ended, as a container, with its first cell.
  if (open.AddTo != open.Object) return;
  Index += Gap;
  open.Object->EndIndexValue = static_cast<std::uint32_t>(Index);
}

VQSTATUS VQRichTextParser::AddAndPush(VQRTBaseContainerBody* object) {
  Add(object);
  return Push(object);
}

VQSTATUS VQRichTextParser::AddPlain(const Record& record) {
  Add(new VQRTObjectBody(static_cast<VQRTTYPE>(RuleType), record.Source, record.Offset, record.Size));
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddElement(const Record& record) {
  Add(new VQRTElementBody(static_cast<VQRTTYPE>(RuleType), record.Source, record.Offset, record.Size));
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddOpaque(const Record& record) {
  Add(new VQRTElementBody(VQRTTYPE_COMPOSITE_DATA, record.Source, record.Offset, record.Size));
  return VQ_OK;
}

void VQRichTextParser::FlushPending() {
  if (!Pending) return;
  // A subform does not take it: it is a record like any other that has no place.
  auto* opaque = new VQRTElementBody(VQRTTYPE_COMPOSITE_DATA, static_cast<unsigned short>(0));
  opaque->Content = std::move(Pending->Content);
  std::exchange(Pending, nullptr)->Release();
  Add(opaque);
}

void VQRichTextParser::Register(const Record& record, std::uint32_t offset) {
  if (offset + 2 <= record.Size) Body.Top->RegisterPABID(vq::LoadWord(record.Bytes + offset));
}

VQSTATUS VQRichTextParser::AddDefinition(const Record& record) {
  Add(new VQPABDefinitionBody(record.Source, record.Offset, record.Size));
  Register(record, 4);
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddStyleName(const Record& record) {
  Add(new VQPABStyleNameBody(record.Source, record.Offset, record.Size));
  Register(record, 6);
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddPABObject(const Record& record) {
  const auto type = static_cast<VQRTTYPE>(RuleType);
  Add(new VQRTObjectBody(type, record.Source, record.Offset, record.Size));
  Register(record, type == VQRTTYPE_PAB_HIDE ? 4 : 2);
  if (type == VQRTTYPE_PAB_FORMULA_REFERENCE) Register(record, 4);
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddTextStyle(const Record& record) {
  if (TopIs(VQRTTYPE_FORM_FIELD) || Next != SIG_CD_TEXT) return AddOpaque(record);
  Pending = new VQRTObjectBody(VQRTTYPE_TEXT_STYLE_EXT, record.Source, record.Offset, record.Size);
  Pending->AddReference();
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddText(const Record& record) {
  if (TopIs(VQRTTYPE_SUBFORM)) {
    FlushPending();
    return AddOpaque(record);
  }
  auto* text = new VQStylizedTextBody(record.Source, record.Offset, record.Size);
  // A subform takes the empty text that stands for it.
  VQRTBaseContainerBody* subform = LastAdded && LastAdded->IsType(VQRTTYPE_SUBFORM) ? LastAdded->AsBase() : nullptr;
  if (subform && text->GetByteCount() == 0 && Push(subform) == VQ_OK) {
    Add(text);
    Pop();
  } else {
    Add(text);
  }
  TakePending(text);
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddFieldExtension(const Record& record) {
  if (Next != SIG_CD_FIELD && Next != SIG_CD_FIELD_OLD) return AddOpaque(record);
  Pending = new VQRTObjectBody(VQRTTYPE_FIELD_EXTENSION, record.Source, record.Offset, record.Size);
  Pending->AddReference();
  return VQ_OK;
}

VQRTTYPE VQRichTextParser::FieldType(const unsigned char* bytes, std::uint32_t size) {
  constexpr std::uint32_t kFlags = 4;
  constexpr std::uint32_t kDataType = 6;
  if (size < kDataType + 2) return VQRTTYPE_NONE;
  const std::uint16_t flags = vq::LoadWord(bytes + kFlags);
  switch (vq::LoadWord(bytes + kDataType)) {
    case TYPE_COMPOSITE:
      return VQRTTYPE_RICH_TEXT_FIELD;
    case TYPE_NUMBER:
    case TYPE_NUMBER_RANGE:
      return VQRTTYPE_NUMBER_FIELD;
    case TYPE_TIME:
    case TYPE_TIME_RANGE:
      return VQRTTYPE_DATETIME_FIELD;
    case TYPE_TEXT:
    case TYPE_TEXT_LIST:
      if ((flags & FIELD_READERS) != 0) return VQRTTYPE_READERS_FIELD;
      if ((flags & FIELD_AUTHORS) != 0) return VQRTTYPE_AUTHORS_FIELD;
      if ((flags & FIELD_NAMES) != 0) return VQRTTYPE_NAMES_FIELD;
      return (flags & FIELD_KEYWORDS) != 0 ? VQRTTYPE_KEYWORDS_FIELD : VQRTTYPE_TEXT_FIELD;
    default:
      return VQRTTYPE_NONE;
  }
}

VQSTATUS VQRichTextParser::AddField(const Record& record) {
  const VQRTTYPE type = FieldType(record.Bytes, record.Size);
  if (type == VQRTTYPE_NONE) {
    FlushPending();
    return AddOpaque(record);
  }
  VQRTElementBody* field = vq::MakeRTElement(type, record.Source, record.Offset, record.Size);
  Add(field);
  TakePending(field);
  return VQ_OK;
}
