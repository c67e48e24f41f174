// Style name records: fixed part, a font if the flags say so, a user name.
#include <cstring>

#include "engine/ods.h"
#include "vq/richtext/font.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/values/vqstring.h"

namespace {

constexpr std::uint32_t kFontBytes = 4;
constexpr std::size_t kLongestRecord = 0xFE;

std::string_view TextOf(const ENGCHAR* name, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(name);
  return {text, strnlen(text, size)};
}

}  // namespace

VQPABStyleNameBody::VQPABStyleNameBody()
    : VQRTObjectBody(VQRTTYPE_PAB_STYLE_NAME, SIG_CD_STYLENAME), FontStyle(nullptr) {
  Fields fields;
  fields.Name = "NoName";
  vq::ThrowIfError(Write(fields));
}

VQPABStyleNameBody::VQPABStyleNameBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTObjectBody(VQRTTYPE_PAB_STYLE_NAME, source, offset, length), FontStyle(nullptr) {}

VQPABStyleNameBody::~VQPABStyleNameBody() { DropFontStyle(); }

VQSTATUS VQPABStyleNameBody::Close() {
  DropFontStyle();
  return VQRTObjectBody::Close();
}

void VQPABStyleNameBody::DropFontStyle() {
  if (FontStyle == nullptr) return;
  FontStyle->SetOwner(nullptr);
  FontStyle->Release();
  FontStyle = nullptr;
}

VQFontStyleBody* VQPABStyleNameBody::OwnFontStyle() {
  if (FontStyle == nullptr) {
    FontStyle = new VQFontStyleBody;
    FontStyle->AddReference();
    FontStyle->SetOwner(this);
  }
  return FontStyle;
}

VQSTATUS VQPABStyleNameBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (VQSTATUS status = VQRTObjectBody::Copy(source, options)) return status;
  DropFontStyle();
  // A name outside a rich text knows its face by its font style alone.
  VQFontStyle font;
  VQSTATUS status = static_cast<VQPABStyleNameBody*>(source)->GetFontStyle(&font);
  if (status == VQ_OK) OwnFontStyle()->CopyFont(*font.GetFontStyleBody());
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQSTATUS VQPABStyleNameBody::Read(Fields* fields) const {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  if (GetCDSignature() != SIG_CD_STYLENAME) return VQERR_RT_DIFFERENT_TYPE;
  CDSTYLENAME record{};
  if (VQSTATUS status = ReadODS(ODS_CDSTYLENAME, &record, 0)) return status;
  *fields = {record.Flags, record.PABID, std::string(TextOf(record.StyleName, sizeof record.StyleName)), 0, ""};
  std::uint32_t offset = EngOdsLength(ODS_CDSTYLENAME);
  std::uint32_t end = std::min<std::uint32_t>(record.Header.Length, GetRecordSize());
  if (end < offset) return VQERR_CORRUPTED;
  if (record.Flags & STYLENAMEFLAG_HAS_FONT) {
    if (end - offset < kFontBytes) {
      // A font was promised and none is there: it becomes the default one, and so does the record when rewritten.
      fields->FontID = vq::fontid::kDefault;
      fields->Flags &= ~static_cast<std::uint32_t>(STYLENAMEFLAG_FOR_ALL_DOCUMENTS);
      return VQ_OK;
    }
    if (VQSTATUS status = ReadODS(ODS_DWORD, &fields->FontID, offset)) return status;
    offset += kFontBytes;
  }
  fields->Tail.resize(end - offset);
  return fields->Tail.empty() ? VQ_OK : ReadRecord(offset, fields->Tail.data(), end - offset);
}

VQSTATUS VQPABStyleNameBody::Write(const Fields& fields) {
  bool hasFont = (fields.Flags & STYLENAMEFLAG_HAS_FONT) != 0;
  std::size_t fixed = EngOdsLength(ODS_CDSTYLENAME);
  std::size_t size = fixed + (hasFont ? kFontBytes : 0) + fields.Tail.size();
  if (size > kLongestRecord) return VQERR_STRING_TOO_LONG;
  CDSTYLENAME record{{SIG_CD_STYLENAME, static_cast<uint8_t>(size)}, fields.Flags, fields.PABID, {}};
  std::memcpy(record.StyleName, fields.Name.data(), std::min(fields.Name.size(), sizeof record.StyleName - 1));
  std::string bytes(size, '\0');
  void* cursor = bytes.data();
  if (VQSTATUS status = vq::FromEngine(EngOdsWrite(&cursor, ODS_CDSTYLENAME, &record, 1))) return status;
  if (hasFont) {
    if (VQSTATUS status = vq::FromEngine(EngOdsWrite(&cursor, ODS_DWORD, &fields.FontID, 1))) return status;
  }
  bytes.replace(size - fields.Tail.size(), std::string::npos, fields.Tail);
  return SetRecord(bytes.data(), static_cast<std::uint32_t>(size));
}

std::uint32_t VQPABStyleNameBody::GetFontID() const {
  Fields fields;
  bool hasFont = Read(&fields) == VQ_OK && (fields.Flags & STYLENAMEFLAG_HAS_FONT) != 0;
  return hasFont ? fields.FontID : vq::fontid::kDefault;
}

VQSTATUS VQPABStyleNameBody::SetFontID(std::uint32_t fontID) {
  Fields fields;
  if (VQSTATUS status = Read(&fields)) return status;
  fields.Flags |= STYLENAMEFLAG_HAS_FONT;
  fields.FontID = fontID;
  return Write(fields);
}

VQSTATUS VQPABStyleNameBody::GetFontStyle(VQFontStyle* style) {
  Fields fields;
  if (VQSTATUS status = Read(&fields)) return status;
  if ((fields.Flags & STYLENAMEFLAG_HAS_FONT) == 0) {
    VQ_ASSERT_TEXT(FontStyle == nullptr, "FontStyle.IsNull()", "VQPABDEF");
    return VQWARN_NOT_FOUND;
  }
  if (FontStyle == nullptr) {
    VQFontTable table;
    VQSTATUS found = vq::FontTableOf(*this, &table);
    if (VQIsError(found)) return found;
    if (VQSTATUS status = OwnFontStyle()->Assign(fields.FontID, &table)) {
      DropFontStyle();
      return status;
    }
  }
  VQ_ASSERT_TEXT(FontStyle != nullptr, "!FontStyle.IsNull()", "VQPABDEF");
  *style = VQFontStyle(FontStyle);
  return VQ_OK;
}

VQSTATUS VQPABStyleNameBody::SetFontStyle(const VQFontStyle& style) {
  Fields fields;
  if (VQSTATUS status = Read(&fields)) return status;
  if (style.IsNull()) {
    fields.Flags &= ~static_cast<std::uint32_t>(STYLENAMEFLAG_HAS_FONT);
    fields.FontID = 0;
    if (VQSTATUS status = Write(fields)) return status;
    DropFontStyle();
    return VQ_OK;
  }
  if (VQSTATUS status = SetFontID(GetFontID())) return status;
  VQFontStyle own;
  VQSTATUS status = GetFontStyle(&own);
  if (status == VQ_OK) status = own.GetFontStyleBody()->ChangeFont(*style.GetFontStyleBody(), VQFONTMASK_ALL);
  if (status == VQ_OK) return VQ_OK;
  DropFontStyle();
  VQSTATUS undone = Write(fields);
  return undone != VQ_OK ? undone : status;
}

VQSTATUS VQPABStyleNameBody::ConvertFonts(VQItem* table) {
  VQFontStyle style;
  VQSTATUS status = GetFontStyle(&style);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  return vq::ConvertFont(style, table);
}

VQPABStyleName::VQPABStyleName(const VQRTObject& object) { *this = object; }
VQPABStyleName::VQPABStyleName(VQPABStyleNameBody* body) { Attach(body, 0); }

void VQPABStyleName::ValidateRTType(const VQRTObjectBody* body) const {
  if (body != nullptr && !body->IsType(VQRTTYPE_PAB_STYLE_NAME)) vq::Throw(VQERR_CONVERSION_FAILED);
}

VQPABStyleNameBody* VQPABStyleName::GetPABStyleNameBody() const {
  return static_cast<VQPABStyleNameBody*>(GetRTObjectBody());
}

unsigned short VQPABStyleName::GetPABID() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  vq::PABIDs ids;
  vq::ThrowIfError(vq::ReadPABIDs(*GetRTObjectBody(), &ids));
  return ids.First;
}

VQSTATUS VQPABStyleName::SetPABID(unsigned short pabid) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(vq::WritePABIDs(*GetRTObjectBody(), {pabid, pabid}));
}

VQString VQPABStyleName::GetName() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  VQPABStyleNameBody::Fields fields;
  vq::ThrowIfError(GetPABStyleNameBody()->Read(&fields));
  return VQString(reinterpret_cast<const VQCHAR*>(fields.Name.data()), fields.Name.size());
}
