#include "vq/richtext/fonttable.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "engine/ods.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/signature.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqstring.h"

namespace {

std::string_view Text(const ENGCHAR* name) {
  const char* text = reinterpret_cast<const char*>(name);
  return {text, strnlen(text, sizeof(CDFACE::Name))};
}

// A face entry from its parts; names that the entry cannot hold with their terminator are refused.
VQSTATUS MakeFace(unsigned face, unsigned family, const char* name, CDFACE* target) {
  if (name == nullptr) return VQERR_INVALID_PARAMETER;
  VQString text(name);
  if (text.GetBufLength() >= sizeof target->Name) return VQERR_STRING_TOO_LONG;
  *target = {static_cast<uint8_t>(face), static_cast<uint8_t>(family), {}};
  std::memcpy(target->Name, text.GetBuf(), text.GetBufLength());
  return VQ_OK;
}

}  // namespace

VQItemBody* vq::MakeFontTableBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place) {
  return new VQFontTableBody(slate, name, place);
}

VQFontTableBody::VQFontTableBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : VQCompositeItemBody(slate, name, place) {
  if (slate->GetFontTable() == nullptr) slate->SetFontTable(this);
}

VQFontTableBody::~VQFontTableBody() { Close(); }

VQSTATUS VQFontTableBody::Close() {
  VQSlateBody* slate = GetSlateBody();
  bool registered = slate != nullptr && slate->GetFontTable() == this;
  if (registered) slate->SetFontTable(nullptr);
  return VQCompositeItemBody::Close();
}

VQSTATUS VQFontTableBody::Load() { return HighestFace != 0 ? VQ_OK : ReadEntries(); }

VQSTATUS VQFontTableBody::Rebound() {
  VQSTATUS status = VQCompositeItemBody::Rebound();
  if (!IsDirty()) HighestFace = 0;
  return status;
}

VQSTATUS VQFontTableBody::ReadEntries() {
  VQ_ASSERT(HighestFace == 0, "FONT");
  std::vector<CDFACE> faces;
  if (GetValueSize() > 2) {
    CDFONTTABLE header{};
    if (VQSTATUS status = ReadODS(0, ODS_CDFONTTABLE, &header)) return status;
    if (header.Header.Signature != SIG_CD_FONTTABLE) return VQERR_CORRUPTED;
    if (header.Fonts > kMaxFonts) return VQERR_TOO_MANY_FONTS;
    faces.resize(header.Fonts);
    unsigned long offset = EngOdsLength(ODS_CDFONTTABLE);
    for (CDFACE& face : faces) {
      if (VQSTATUS status = ReadODS(offset, ODS_CDFACE, &face)) return status;
      offset += EngOdsLength(ODS_CDFACE);
    }
  }
  Entries = std::move(faces);
  HighestFace = vq::fontid::kFirstTableFace - 1;
  for (const CDFACE& face : Entries) HighestFace = std::max<unsigned>(HighestFace, face.Face);
  return VQ_OK;
}

unsigned long VQFontTableBody::PositionOf(unsigned face) const {
  auto found = std::ranges::find_if(Entries, [&](const CDFACE& entry) { return entry.Face == face; });
  return static_cast<unsigned long>(found - Entries.begin());
}

unsigned long VQFontTableBody::PositionOf(const ENGCHAR* name) const {
  auto found = std::ranges::find_if(Entries, [&](const CDFACE& entry) { return Text(entry.Name) == Text(name); });
  return static_cast<unsigned long>(found - Entries.begin());
}

VQSTATUS VQFontTableBody::CheckRoom(const CDFACE& face) const {
  if (face.Face != 0 && !vq::fontid::IsTableFace(face.Face)) return VQERR_INVALID_PARAMETER;
  if (Text(face.Name).empty()) return VQERR_NULL_STRING;
  if (Text(face.Name).size() == sizeof face.Name) return VQERR_STRING_TOO_LONG;
  if (face.Face != 0 && PositionOf(face.Face) < Entries.size()) return VQERR_FONT_EXISTS;
  if (PositionOf(face.Name) < Entries.size()) return VQERR_FONT_EXISTS;
  return Entries.size() >= kMaxFonts || HighestFace >= kMaxFonts ? VQERR_TOO_MANY_FONTS : VQ_OK;
}

VQSTATUS VQFontTableBody::Insert(unsigned long position, const CDFACE& face) {
  if (position > Entries.size()) return VQERR_OUT_OF_RANGE;
  if (VQSTATUS status = CheckRoom(face)) return status;
  unsigned number = face.Face;
  if (number == 0) {
    // A face that was given below the highest one may have left numbers above it in use.
    number = HighestFace + 1;
    while (PositionOf(number) < Entries.size()) ++number;
    if (number > kMaxFonts) return VQERR_TOO_MANY_FONTS;
  }
  auto place = Entries.insert(Entries.begin() + static_cast<std::ptrdiff_t>(position), face);
  place->Face = static_cast<uint8_t>(number);
  HighestFace = number;
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQFontTableBody::AddFace(unsigned family, const ENGCHAR* name, unsigned char* faceOut) {
  unsigned long position = PositionOf(name);
  if (position == Entries.size()) {
    CDFACE face{0, static_cast<uint8_t>(family), {}};
    std::string_view text = Text(name);
    std::memcpy(face.Name, text.data(), text.size());
    if (VQSTATUS status = Insert(position, face)) return status;
  }
  *faceOut = Entries[position].Face;
  return VQ_OK;
}

VQSTATUS VQFontTableBody::Erase(unsigned long position, unsigned long count) {
  if (position > Entries.size() || count > Entries.size() - position) return VQERR_OUT_OF_RANGE;
  if (count == 0) return VQ_OK;
  auto first = Entries.begin() + static_cast<std::ptrdiff_t>(position);
  auto last = first + static_cast<std::ptrdiff_t>(count);
  bool highest = std::any_of(first, last, [&](const CDFACE& face) { return face.Face == HighestFace; });
  Entries.erase(first, last);
  if (highest) {
    HighestFace = vq::fontid::kFirstTableFace - 1;
    for (const CDFACE& face : Entries) HighestFace = std::max<unsigned>(HighestFace, face.Face);
  }
  SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQFontTableBody::Merge(VQFontTableBody& other) {
  if (VQSTATUS status = other.Load()) return status;
  const Contents before = GetContents();
  for (const CDFACE& face : other.Entries) {
    unsigned char ignored = 0;
    VQSTATUS status = AddFace(face.Family, face.Name, &ignored);
    if (status == VQ_OK) continue;
    SetContents(before);
    return status;
  }
  return VQ_OK;
}

void VQFontTableBody::SetContents(const Contents& contents) {
  HighestFace = contents.HighestFace;
  Entries = contents.Entries;
  SetDirty(contents.Dirty);
}

VQSTATUS VQFontTableBody::TakeBack(const Contents& contents) {
  const bool grown = Entries.size() != contents.Entries.size();
  SetContents(contents);
  if (!grown || Entries.empty()) return VQ_OK;
  SetDirty(1);
  return Flush();
}

VQSTATUS VQFontTableBody::TakeFaces(VQFontTableBody& other) {
  if (VQSTATUS status = other.Load()) return status;
  Entries = other.Entries;
  HighestFace = other.HighestFace;
  if (!Entries.empty()) SetDirty(1);
  return VQ_OK;
}

VQSTATUS VQFontTableBody::FindFace(unsigned face, CDFACE* target) {
  if (target == nullptr) return VQERR_INVALID_PARAMETER;
  if (!vq::fontid::IsTableFace(face)) {
    const CDFACE* standard = vq::fontid::StandardFace(face);
    if (standard == nullptr) return VQERR_INVALID_PARAMETER;
    *target = *standard;
    return VQ_OK;
  }
  unsigned long position = PositionOf(face);
  bool found = position < Entries.size();
  *target = found ? Entries[position] : vq::fontid::FallbackFace(static_cast<uint8_t>(face));
  return found ? VQ_OK : VQWARN_NOT_FOUND;
}

VQSTATUS VQFontTableBody::FindName(const ENGCHAR* name, CDFACE* target) {
  if (name == nullptr || target == nullptr) return VQERR_INVALID_PARAMETER;
  unsigned long position = PositionOf(name);
  bool found = position < Entries.size();
  *target = found ? Entries[position] : vq::fontid::FallbackFace(0);
  return found ? VQ_OK : VQWARN_NOT_FOUND;
}

VQSTATUS VQFontTableBody::Flush() {
  if (!IsDirty() || HighestFace == 0) return VQCompositeItemBody::Flush();
  if (Entries.empty()) return VQERR_FONT_REQUIRED;
  VQ_ASSERT(HighestFace != 0, "FONT");
  std::vector<unsigned char> value(EngOdsLength(ODS_CDFONTTABLE) + Entries.size() * EngOdsLength(ODS_CDFACE));
  CDFONTTABLE header{{SIG_CD_FONTTABLE, static_cast<uint16_t>(value.size())}, static_cast<uint16_t>(Entries.size())};
  void* cursor = value.data();
  if (VQSTATUS status = vq::FromEngine(EngOdsWrite(&cursor, ODS_CDFONTTABLE, &header, 1))) return status;
  VQSTATUS status =
      vq::FromEngine(EngOdsWrite(&cursor, ODS_CDFACE, Entries.data(), static_cast<uint16_t>(Entries.size())));
  if (status != VQ_OK) return status;
  if (VQSTATUS replaced = ReplaceValue(TYPE_COMPOSITE, value.data(), value.size())) return replaced;
  return VQCompositeItemBody::Flush();
}

VQFontTable::VQFontTable(VQFontTableBody* body) : VQItem(body) {}

VQFontTable::VQFontTable(const VQItem& item) { VQItem::operator=(item); }

VQFontTableBody* VQFontTable::GetFontTableBody() const { return static_cast<VQFontTableBody*>(Body); }

VQFontTableBody& VQFontTable::Checked() const {
  RequireBody();
  VQFontTableBody& body = *GetFontTableBody();
  vq::ThrowIfError(body.Load());
  return body;
}

namespace {

// A table that is ready for a status operation, or why it is not.
VQSTATUS Ready(VQFontTableBody* body) { return body == nullptr ? VQERR_OBJECT_NOT_INITIALIZED : body->Load(); }

}  // namespace

int VQFontTable::operator==(const VQFontTable& other) const {
  if (Body == other.Body) return 1;
  if (Body == nullptr || other.Body == nullptr) return 0;
  auto same = [](const CDFACE& a, const CDFACE& b) {
    return a.Face == b.Face && a.Family == b.Family && Text(a.Name) == Text(b.Name);
  };
  return std::ranges::equal(Checked().Faces(), other.Checked().Faces(), same);
}

VQFontTable& VQFontTable::operator<<(const CDFACE& face) {
  VQFontTableBody& body = Checked();
  vq::ThrowIfError(body.Insert(body.Faces().size(), face));
  return *this;
}

CDFACE VQFontTable::operator[](unsigned long position) const {
  const std::vector<CDFACE>& faces = Checked().Faces();
  if (position >= faces.size()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return faces[position];
}

VQSTATUS VQFontTable::AddFace(unsigned char pitchAndFamily, const char* name, unsigned char* faceOut) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  if (faceOut == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  CDFACE face{};
  if (VQSTATUS status = MakeFace(0, pitchAndFamily, name, &face)) return vq::Apply(status);
  return vq::Apply(GetFontTableBody()->AddFace(face.Family, face.Name, faceOut));
}

VQSTATUS VQFontTable::Append(const CDFACE& face) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return Insert(GetFontTableBody()->Faces().size(), face);
}

VQSTATUS VQFontTable::Append(const VQFontStyle& style) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return Insert(GetFontTableBody()->Faces().size(), style);
}

VQSTATUS VQFontTable::Append(unsigned char face, unsigned char pitchAndFamily, const char* name) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return Insert(GetFontTableBody()->Faces().size(), face, pitchAndFamily, name);
}

VQSTATUS VQFontTable::Insert(unsigned long position, const CDFACE& face) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return vq::Apply(GetFontTableBody()->Insert(position, face));
}

VQSTATUS VQFontTable::Insert(unsigned long position, const VQFontStyle& style) {
  if (style.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (!vq::fontid::IsTableFace(style.GetFaceID())) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Insert(position, style.GetCDFace());
}

VQSTATUS VQFontTable::Insert(unsigned long position, unsigned char face, unsigned char pitchAndFamily,
                             const char* name) {
  CDFACE entry{};
  if (VQSTATUS status = MakeFace(face, pitchAndFamily, name, &entry)) return vq::Apply(status);
  return Insert(position, entry);
}

VQSTATUS VQFontTable::DeleteByFaceID(unsigned char face) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  VQFontTableBody& body = *GetFontTableBody();
  unsigned long position = body.PositionOf(face);
  return position == body.Faces().size() ? VQWARN_NOT_FOUND : vq::Apply(body.Erase(position, 1));
}

VQSTATUS VQFontTable::DeleteByName(const char* name) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  if (name == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQFontTableBody& body = *GetFontTableBody();
  unsigned long position = body.PositionOf(VQString(name).GetBuf());
  return position == body.Faces().size() ? VQWARN_NOT_FOUND : vq::Apply(body.Erase(position, 1));
}

VQSTATUS VQFontTable::DeleteByPosition(unsigned long position, unsigned long count) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return vq::Apply(GetFontTableBody()->Erase(position, count));
}

unsigned long VQFontTable::GetCount() const { return Checked().Faces().size(); }

VQSTATUS VQFontTable::GetCDFaceByFaceID(unsigned char face, CDFACE* target) const {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return vq::Apply(GetFontTableBody()->FindFace(face, target));
}

VQSTATUS VQFontTable::GetCDFaceByName(const char* name, CDFACE* target) const {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  if (name == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(GetFontTableBody()->FindName(VQString(name).GetBuf(), target));
}

VQSTATUS VQFontTable::GetCDFaceByPosition(unsigned long position, CDFACE* target) const {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  if (target == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  const std::vector<CDFACE>& faces = GetFontTableBody()->Faces();
  if (position >= faces.size()) return vq::Apply(VQERR_OUT_OF_RANGE);
  *target = faces[position];
  return VQ_OK;
}

namespace {

// Turns a face answer into a style, the answer's warning kept.
VQSTATUS AsStyle(VQSTATUS answer, const CDFACE& face, VQFontStyle* target) {
  if (VQIsError(answer)) return answer;
  if (target == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQFontStyleBody* body = new VQFontStyleBody;
  *target = VQFontStyle(body);
  VQSTATUS status = body->AssignFace(face);
  return status != VQ_OK ? vq::Apply(status) : answer;
}

}  // namespace

VQSTATUS VQFontTable::GetFaceByFaceID(unsigned char face, VQFontStyle* target) const {
  CDFACE entry{};
  VQSTATUS answer = GetCDFaceByFaceID(face, &entry);
  return AsStyle(answer, entry, target);
}

VQSTATUS VQFontTable::GetFaceByName(const char* name, VQFontStyle* target) const {
  CDFACE entry{};
  VQSTATUS answer = GetCDFaceByName(name, &entry);
  return AsStyle(answer, entry, target);
}

VQSTATUS VQFontTable::GetFaceByPosition(unsigned long position, VQFontStyle* target) const {
  CDFACE entry{};
  VQSTATUS answer = GetCDFaceByPosition(position, &entry);
  return AsStyle(answer, entry, target);
}

VQSTATUS VQFontTable::Merge(const VQFontTable& other) {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  if (other.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(GetFontTableBody()->Merge(*other.GetFontTableBody()));
}

VQSTATUS VQFontTable::Update() {
  if (VQSTATUS status = Ready(GetFontTableBody())) return vq::Apply(status);
  return vq::Apply(GetFontTableBody()->IsDirty() ? GetFontTableBody()->Flush() : VQ_OK);
}
