#include "vq/richtext/font.h"

#include <cstring>
#include <string_view>

#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

namespace {

using namespace vq::fontid;

constexpr unsigned kPitchMask = 0x03;
constexpr unsigned kTrueType = 0x04;
constexpr unsigned kMonospaced = 0x08;
constexpr unsigned kFamilyMask = 0xF0;

std::string_view Text(const ENGCHAR* name) {
  const char* text = reinterpret_cast<const char*>(name);
  return {text, strnlen(text, sizeof(CDFACE::Name))};
}

std::uint32_t OwnerFont(const VQRTObjectBody& owner) {
  if (owner.IsType(VQRTTYPE_STYLIZED_TEXT)) return static_cast<const VQStylizedTextBody&>(owner).GetFontID();
  return static_cast<const VQPABStyleNameBody&>(owner).GetFontID();
}

VQSTATUS SetOwnerFont(VQRTObjectBody& owner, std::uint32_t fontID) {
  return vq::Whole(owner, [&] {
    if (owner.IsType(VQRTTYPE_STYLIZED_TEXT)) return static_cast<VQStylizedTextBody&>(owner).SetFontID(fontID);
    return static_cast<VQPABStyleNameBody&>(owner).SetFontID(fontID);
  });
}

}  // namespace

VQFontStyleBody::VQFontStyleBody() : FontID(kDefault), Face(0), Family(0), Name{}, Owner(nullptr) {}

VQFontStyleBody::Font VQFontStyleBody::Current() const {
  Font font{FontID, {Face, Family, {}}};
  std::memcpy(font.Entry.Name, Name, sizeof Name);
  return font;
}

void VQFontStyleBody::Store(const Font& font) {
  FontID = font.FontID;
  Face = font.Entry.Face;
  Family = font.Entry.Family;
  std::memcpy(Name, font.Entry.Name, sizeof Name);
}

VQSTATUS VQFontStyleBody::GetFace(CDFACE* face) const {
  if (IsTableFace(vq::fontid::Face(FontID))) {
    *face = Current().Entry;
    return VQ_OK;
  }
  const CDFACE* standard = StandardFace(vq::fontid::Face(FontID));
  if (standard == nullptr) return VQERR_INVALID_PARAMETER;
  *face = *standard;
  return VQ_OK;
}

bool VQFontStyleBody::IsValid() const {
  return !IsTableFace(vq::fontid::Face(FontID)) || vq::fontid::Face(FontID) == Face;
}

bool VQFontStyleBody::IsEqual(const VQFontStyleBody& other) const {
  if (FontID != other.FontID) return false;
  if (!IsTableFace(vq::fontid::Face(FontID))) return true;
  return Family == other.Family && Text(Name) == Text(other.Name);
}

VQSTATUS VQFontStyleBody::Assign(std::uint32_t fontID, const VQFontTable* table) {
  std::uint8_t face = vq::fontid::Face(fontID);
  if (!IsTableFace(face)) {
    Store({fontID, {}});
    return VQ_OK;
  }
  if (table == nullptr || table->IsNull()) {
    if (Face == 0) {
      Store({WithFace(fontID, VQFACE_HELV), {}});
      return VQ_OK;
    }
    Font font = Current();
    font.FontID = fontID;
    font.Entry.Face = face;
    Store(font);
    return VQ_OK;
  }
  VQFontTableBody& body = *table->GetFontTableBody();
  if (VQSTATUS status = body.Load()) return status;
  Font font{fontID, {}};
  VQSTATUS status = body.FindFace(face, &font.Entry);
  if (status != VQ_OK && status != VQWARN_NOT_FOUND) return status;
  Store(font);
  return VQ_OK;
}

VQSTATUS VQFontStyleBody::AssignName(unsigned family, unsigned pitch, const VQString& name, int trueType,
                                     int monospaced) {
  if (name.IsNull()) return VQERR_NULL_STRING;
  if (name.GetBufLength() >= sizeof Name) return VQERR_STRING_TOO_LONG;
  if ((family & ~kFamilyMask) != 0 || (pitch & ~kPitchMask) != 0) return VQERR_INVALID_PARAMETER;
  if (const CDFACE* standard = StandardFace(name.GetBuf())) {
    if ((family | pitch) != standard->Family) return VQERR_FONT_STANDARD_NAME;
    Store({WithFace(FontID, standard->Face), {}});
    return VQ_OK;
  }
  unsigned bits = family | pitch | (trueType ? kTrueType : 0) | (monospaced ? kMonospaced : 0);
  Font font{WithFace(FontID, kFirstTableFace), {kFirstTableFace, static_cast<std::uint8_t>(bits), {}}};
  std::memcpy(font.Entry.Name, name.GetBuf(), name.GetBufLength());
  Store(font);
  return VQ_OK;
}

VQSTATUS VQFontStyleBody::AssignFace(const CDFACE& face) {
  bool table = IsTableFace(face.Face);
  Store({WithFace(FontID, face.Face), table ? face : CDFACE{}});
  return VQ_OK;
}

void VQFontStyleBody::CopyFont(const VQFontStyleBody& source) { Store(source.Current()); }

VQSTATUS VQFontStyleBody::Refresh() {
  if (Owner == nullptr) return VQ_OK;
  if (Owner->IsClosed()) return VQERR_OBJECT_CLOSED;
  std::uint32_t fontID = OwnerFont(*Owner);
  if (fontID == FontID) return VQ_OK;
  VQFontTable table;
  VQSTATUS status = vq::FontTableOf(*Owner, &table);
  return VQIsError(status) ? status : Assign(fontID, &table);
}

VQSTATUS VQFontStyleBody::Change(Font font) {
  if (Owner != nullptr) {
    if (Owner->IsClosed()) return VQERR_OBJECT_CLOSED;
    if (IsTableFace(vq::fontid::Face(font.FontID))) {
      std::uint8_t number = font.Entry.Face;
      if (VQSTATUS status = vq::EnterFace(*Owner, font.Entry, &number)) return status;
      font.Entry.Face = number;
      font.FontID = WithFace(font.FontID, number);
    }
    if (VQSTATUS status = SetOwnerFont(*Owner, font.FontID)) return status;
  }
  Store(font);
  return VQ_OK;
}

VQSTATUS VQFontStyleBody::Renumber(std::uint8_t face) {
  Font font = Current();
  font.FontID = WithFace(FontID, face);
  if (IsTableFace(face)) font.Entry.Face = face;
  if (Owner != nullptr && OwnerFont(*Owner) != font.FontID) {
    if (VQSTATUS status = SetOwnerFont(*Owner, font.FontID)) return status;
  }
  Store(font);
  return VQ_OK;
}

VQSTATUS VQFontStyleBody::ChangeFontID(std::uint32_t fontID) {
  if (VQSTATUS status = ChangeFaceID(vq::fontid::Face(fontID))) return status;
  Font font = Current();
  font.FontID = WithFace(fontID, vq::fontid::Face(FontID));
  return Change(font);
}

VQSTATUS VQFontStyleBody::ChangeFace(const CDFACE& face) {
  if (!IsTableFace(face.Face)) return VQERR_INVALID_PARAMETER;
  if (Text(face.Name).empty()) return VQERR_NULL_STRING;
  if (Text(face.Name).size() == sizeof face.Name) return VQERR_STRING_TOO_LONG;
  return Change({WithFace(FontID, face.Face), face});
}

VQSTATUS VQFontStyleBody::ChangeFaceID(std::uint8_t face) {
  if (face == vq::fontid::Face(FontID) && IsValid()) return VQ_OK;
  if (!IsTableFace(face)) return Change({WithFace(FontID, face), {}});
  if (Owner == nullptr) return VQERR_INVALID_PARAMETER;
  VQFontTable table;
  VQSTATUS status = vq::FontTableOf(*Owner, &table);
  if (status == VQWARN_NOT_FOUND) return VQERR_INVALID_PARAMETER;
  if (status != VQ_OK) return status;
  if (VQSTATUS loaded = table.GetFontTableBody()->Load()) return loaded;
  Font font{WithFace(FontID, face), {}};
  if (table.GetFontTableBody()->FindFace(face, &font.Entry) != VQ_OK) return VQERR_INVALID_PARAMETER;
  return Change(font);
}

VQSTATUS VQFontStyleBody::ChangeFont(const VQFontStyleBody& source, std::uint32_t mask) {
  Font font = Current();
  if (VQSTATUS status = Merge(source.FontID, mask, &font.FontID)) return status;
  if (mask & VQFONTMASK_FACE) font.Entry = source.Current().Entry;
  return Change(font);
}

VQFontStyle::VQFontStyle(VQFontStyleBody* body) : VQSmartPtr(body) {}

VQFontStyle::VQFontStyle(unsigned long fontID, const VQFontTable* table) {
  vq::ThrowIfError(Ready().Assign(static_cast<std::uint32_t>(fontID), table));
}

VQFontStyle::VQFontStyle(unsigned long fontID, VQSlateBody* slate) {
  VQFontTable table;
  vq::ThrowIfError(vq::FindFontTable(slate, &table));
  vq::ThrowIfError(Ready().Assign(static_cast<std::uint32_t>(fontID), &table));
}

VQFontStyle::VQFontStyle(unsigned char family, unsigned char pitch, const VQString& name, int trueType,
                         int monospaced) {
  vq::ThrowIfError(Ready().AssignName(family, pitch, name, trueType, monospaced));
}

VQFontStyleBody* VQFontStyle::GetFontStyleBody() const { return static_cast<VQFontStyleBody*>(Body); }

VQFontStyleBody& VQFontStyle::Checked() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  vq::ThrowIfError(GetFontStyleBody()->Refresh());
  return *GetFontStyleBody();
}

VQFontStyleBody& VQFontStyle::Ready() {
  if (Body == nullptr) VQSmartPtr::operator=(new VQFontStyleBody);
  return *GetFontStyleBody();
}

int VQFontStyle::operator==(const VQFontStyle& other) const {
  if (Body == other.Body) return 1;
  if (Body == nullptr || other.Body == nullptr) return 0;
  return Checked().IsEqual(other.Checked());
}

VQSTATUS VQFontStyle::Assign(unsigned long fontID, const VQFontTable* table) {
  return vq::Apply(
      Replace([&](VQFontStyleBody& body) { return body.Assign(static_cast<std::uint32_t>(fontID), table); }));
}

VQSTATUS VQFontStyle::Assign(unsigned char family, unsigned char pitch, const VQString& name, int trueType,
                             int monospaced) {
  return vq::Apply(
      Replace([&](VQFontStyleBody& body) { return body.AssignName(family, pitch, name, trueType, monospaced); }));
}

VQSTATUS VQFontStyle::Copy(const VQFontStyle& source) {
  if (source.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (VQSTATUS status = source.GetFontStyleBody()->Refresh()) return vq::Apply(status);
  VQFontStyleBody* body = new VQFontStyleBody;
  body->CopyFont(*source.GetFontStyleBody());
  VQSmartPtr::operator=(body);
  return VQ_OK;
}

// A style outside a text takes the new font in place; one inside a text writes it through.
template <typename Setter>
VQSTATUS VQFontStyle::Replace(Setter set) {
  VQFontStyle fresh(new VQFontStyleBody);
  if (VQSTATUS status = set(*fresh.GetFontStyleBody())) return status;
  return Ready().ChangeFont(*fresh.GetFontStyleBody(), VQFONTMASK_ALL);
}

template <typename Setter>
VQSTATUS VQFontStyle::Change(Setter set) {
  VQFontStyleBody& body = Ready();
  if (VQSTATUS status = body.Refresh()) return vq::Apply(status);
  return vq::Apply(set(body));
}

unsigned short VQFontStyle::GetAttributes() const {
  std::uint16_t attributes = 0;
  vq::ThrowIfError(UnpackAttributes(Packed(Checked().GetFontID()), &attributes));
  return attributes;
}

CDFACE VQFontStyle::GetCDFace() const {
  CDFACE face{};
  vq::ThrowIfError(Checked().GetFace(&face));
  return face;
}

unsigned short VQFontStyle::GetColor() const { return Color(Checked().GetFontID()); }
unsigned char VQFontStyle::GetFaceID() const { return Face(Checked().GetFontID()); }
VQString VQFontStyle::GetFaceName() const {
  CDFACE face = GetCDFace();
  return VQString(face.Name, Text(face.Name).size());
}
unsigned char VQFontStyle::GetFamily() const { return GetCDFace().Family & kFamilyMask; }
unsigned long VQFontStyle::GetFontID() const { return Checked().GetFontID(); }
unsigned char VQFontStyle::GetPitch() const { return GetCDFace().Family & kPitchMask; }
unsigned long VQFontStyle::GetPointSize() const { return Points(Checked().GetFontID()); }

unsigned long VQFontStyle::GetShadowOffset() const {
  std::uint32_t fontID = Checked().GetFontID();
  return fontID & kEffectBit ? fontID / 0x0E000000U + 1 : 0;
}

int VQFontStyle::IsMonospaced() const { return (GetCDFace().Family & kMonospaced) != 0; }
int VQFontStyle::IsTrueType() const { return (GetCDFace().Family & kTrueType) != 0; }
int VQFontStyle::IsValid() const { return Body != nullptr && GetFontStyleBody()->IsValid(); }

VQSTATUS VQFontStyle::GetFontTable(VQFontTable* table) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (table == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQRTObjectBody* owner = GetFontStyleBody()->GetOwner();
  return owner == nullptr ? VQWARN_NOT_FOUND : vq::Apply(vq::FontTableOf(*owner, table));
}

VQSTATUS VQFontStyle::SetAttributes(unsigned short attributes) {
  return Change([&](VQFontStyleBody& body) {
    std::uint8_t packed = 0;
    VQSTATUS status = PackAttributes(attributes, &packed);
    return status != VQ_OK ? status : body.ChangeFontID(WithPacked(body.GetFontID(), packed));
  });
}

VQSTATUS VQFontStyle::SetCDFace(CDFACE face) {
  return Change([&](VQFontStyleBody& body) { return body.ChangeFace(face); });
}

VQSTATUS VQFontStyle::SetColor(unsigned short color) {
  if (color > 0xFF) return vq::Apply(VQERR_COLOR_INDEX);
  return Change([&](VQFontStyleBody& body) {
    return body.ChangeFontID(WithColor(body.GetFontID(), static_cast<std::uint8_t>(color)));
  });
}

VQSTATUS VQFontStyle::SetDefaults() {
  return Change([](VQFontStyleBody& body) { return body.ChangeFontID(kDefault); });
}

VQSTATUS VQFontStyle::SetFaceID(unsigned char face) {
  return Change([&](VQFontStyleBody& body) { return body.ChangeFaceID(face); });
}

VQSTATUS VQFontStyle::SetFontID(unsigned long fontID, unsigned long mask) {
  return Change([&](VQFontStyleBody& body) {
    std::uint32_t merged = body.GetFontID();
    VQSTATUS status = Merge(static_cast<std::uint32_t>(fontID), static_cast<std::uint32_t>(mask), &merged);
    return status != VQ_OK ? status : body.ChangeFontID(merged);
  });
}

VQSTATUS VQFontStyle::SetFontStyle(const VQFontStyle& other, unsigned long mask) {
  if (other.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (VQSTATUS status = other.GetFontStyleBody()->Refresh()) return vq::Apply(status);
  return Change([&](VQFontStyleBody& body) {
    return body.ChangeFont(*other.GetFontStyleBody(), static_cast<std::uint32_t>(mask));
  });
}

VQSTATUS VQFontStyle::SetPointSize(unsigned long points) {
  if (points > 0xFF) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Change([&](VQFontStyleBody& body) {
    return body.ChangeFontID(WithPoints(body.GetFontID(), static_cast<std::uint8_t>(points)));
  });
}
