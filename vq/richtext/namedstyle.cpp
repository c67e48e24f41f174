#include <algorithm>

#include "engine/process.h"
#include "vq/richtext/vqparstl.h"

namespace {

using Fields = VQPABStyleNameBody::Fields;

constexpr std::size_t kLongestName = 35;
constexpr std::size_t kLengthWord = 2;

// The most whole characters that the record's field can hold.
std::string CutName(const VQString& name) {
  std::size_t bytes = name.GetBufLength();
  if (bytes > kLongestName) {
    bytes = kLongestName;
    while (bytes > 0 && (name.GetBuf()[bytes] & 0xC0) == 0x80) --bytes;
    if (bytes == 0) bytes = kLongestName;
  }
  return std::string(reinterpret_cast<const char*>(name.GetBuf()), bytes);
}

VQString StoreText(const std::string& text) {
  return VQString(reinterpret_cast<const VQCHAR*>(text.data()), text.size());
}

template <typename Edit>
VQSTATUS ChangeName(VQPABStyleNameBody& record, Edit edit) {
  Fields fields;
  if (VQSTATUS status = record.Read(&fields)) return status;
  edit(fields);
  return record.Write(fields);
}

// Bytes of the user name, with its length word, in front of whatever else stands behind the font.
std::size_t UserNameBytes(const Fields& fields) {
  if ((fields.Flags & STYLENAMEFLAG_FOR_ALL_DOCUMENTS) == 0 || fields.Tail.size() < kLengthWord) return 0;
  const auto* tail = reinterpret_cast<const unsigned char*>(fields.Tail.data());
  return kLengthWord + std::min<std::size_t>(vq::LoadWord(tail), fields.Tail.size() - kLengthWord);
}

// Length word, the current user's name, terminator.
VQSTATUS CurrentUserName(std::string* bytes) {
  ENGCHAR name[256] = {};
  if (VQSTATUS status = vq::FromEngine(EngUserNameGet(name))) return status;
  const std::string text(reinterpret_cast<const char*>(name));
  const std::size_t size = text.size() + 1;
  *bytes = {static_cast<char>(size & 0xFF), static_cast<char>(size >> 8)};
  *bytes += text + '\0';
  return VQ_OK;
}

bool HasHide(const VQParagraphStyle& style) { return !style.GetParagraphStyleBody()->Hide().IsNull(); }

}  // namespace

VQNamedStyleBody::VQNamedStyleBody() : PABStyleName(new VQPABStyleNameBody) {}

VQSTATUS VQNamedStyleBody::SetPABID(std::uint16_t pabid) {
  if (VQSTATUS status = VQParagraphStyleBody::SetPABID(pabid)) return status;
  return vq::WritePABIDs(StyleName(), {pabid, pabid});
}

VQSTATUS VQNamedStyleBody::CompareNamed(const VQPABDefinitionBody& definition, const VQPABStyleNameBody& name,
                                        bool* equal) {
  if (VQSTATUS status = Compare(definition, nullptr, equal)) return status;
  Fields own, other;
  if (VQSTATUS status = StyleName().Read(&own)) return status;
  if (VQSTATUS status = name.Read(&other)) return status;
  *equal = *equal && own.Flags == other.Flags && own.Name == other.Name && own.FontID == other.FontID &&
           own.Tail == other.Tail;
  return VQ_OK;
}

VQSTATUS VQNamedStyleBody::CopyName(VQPABStyleNameBody* name) {
  return StyleName().Copy(name, VQRTCOPYOPTIONS_SHALLOW);
}

VQParagraphStyle VQNamedStyleBody::Clone() {
  VQNamedStyleBody* body = new VQNamedStyleBody;
  VQParagraphStyle copy(body);
  vq::ThrowIfError(body->CopySettings(&Definition(), Hide().GetRTObjectBody()));
  vq::ThrowIfError(body->CopyName(&StyleName()));
  return copy;
}

VQNamedStyle::VQNamedStyle(const VQString& name) { vq::ThrowIfError(SetName(name)); }

VQNamedStyle::VQNamedStyle(const VQString& name, const VQParagraphStyle& style) : VQNamedStyle(name) {
  vq::ThrowIfError(Redefine(style));
}

VQNamedStyle::VQNamedStyle(const VQString& name, const VQParagraphStyle& style, const VQFontStyle& font)
    : VQNamedStyle(name, style) {
  vq::ThrowIfError(SetFontStyle(font));
}

VQNamedStyle::VQNamedStyle(const VQParagraphStyle& style) {
  if (style.IsNull()) return;
  if (style.IsNamed()) {
    VQSmartPtr::operator=(style.GetParagraphStyleBody());
  } else {
    vq::ThrowIfError(Redefine(style));
  }
}

VQNamedStyle::VQNamedStyle(VQNamedStyleBody* body) : VQParagraphStyle(body) {}

VQParagraphStyleBody* VQNamedStyle::MakeBody(VQUNITS units) const {
  VQNamedStyleBody* body = new VQNamedStyleBody;
  body->Definition().SetUnits(units);
  body->Definition().SetTabUnits(units);
  return body;
}

VQNamedStyleBody* VQNamedStyle::GetNamedStyleBody() const {
  return IsNamed() ? static_cast<VQNamedStyleBody*>(GetParagraphStyleBody()) : nullptr;
}

VQNamedStyleBody& VQNamedStyle::Named() const {
  Checked();
  VQNamedStyleBody* body = GetNamedStyleBody();
  if (body == nullptr) vq::Throw(VQERR_CONVERSION_FAILED);
  return *body;
}

VQNamedStyleBody& VQNamedStyle::ReadyNamed() {
  Ready();
  return Named();
}

VQSTATUS VQNamedStyle::Copy(const VQParagraphStyle& source) {
  if (source.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (!source.IsNamed()) return Redefine(source);
  if (source.GetParagraphStyleBody() == GetParagraphStyleBody()) return VQ_OK;
  VQParagraphStyle copy = source.GetParagraphStyleBody()->Clone();
  VQSmartPtr::operator=(copy.GetParagraphStyleBody());
  return VQ_OK;
}

VQSTATUS VQNamedStyle::Redefine(const VQParagraphStyle& style) {
  if (style.IsNull()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (HasHide(style)) return vq::Apply(VQERR_INAPPROPRIATE);
  VQNamedStyleBody& body = ReadyNamed();
  if (style.GetParagraphStyleBody() == &body) return VQ_OK;
  unsigned short pabid = GetPABID();
  if (VQSTATUS status = body.CopySettings(&style.GetParagraphStyleBody()->Definition(), nullptr)) {
    return vq::Apply(status);
  }
  return vq::Apply(body.SetPABID(pabid));
}

VQSTATUS VQNamedStyle::SetDefaults() {
  VQNamedStyleBody& body = ReadyNamed();
  if (VQSTATUS status = VQParagraphStyle::SetDefaults()) return status;
  return vq::Apply(body.StyleName().SetFontStyle(VQFontStyle()));
}

int VQNamedStyle::IsEqual(const VQPABDefinition& definition, const VQPABStyleName& name) const {
  VQNamedStyleBody& body = Named();
  if (definition.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (name.IsNull()) return 0;
  bool equal = false;
  vq::ThrowIfError(body.CompareNamed(*definition.GetPABDefinitionBody(), *name.GetPABStyleNameBody(), &equal));
  return equal;
}

VQString VQNamedStyle::GetName() const {
  Fields fields;
  vq::ThrowIfError(Named().StyleName().Read(&fields));
  return StoreText(fields.Name);
}

VQSTATUS VQNamedStyle::SetName(const VQString& name) {
  if (name.IsNull()) return vq::Apply(VQERR_NULL_STRING);
  return vq::Apply(ChangeName(ReadyNamed().StyleName(), [&](Fields& fields) { fields.Name = CutName(name); }));
}

VQString VQNamedStyle::GetUserName() const {
  Fields fields;
  vq::ThrowIfError(Named().StyleName().Read(&fields));
  const std::size_t bytes = UserNameBytes(fields);
  if (bytes == 0) return VQString();
  const std::string text = fields.Tail.substr(kLengthWord, bytes - kLengthWord);
  return StoreText(text.substr(0, text.find('\0')));
}

VQSTATUS VQNamedStyle::SetOnCycleList(int on) {
  return vq::Apply(ChangeName(ReadyNamed().StyleName(), [on](Fields& fields) {
    constexpr auto kBit = static_cast<std::uint32_t>(STYLENAMEFLAG_ON_CYCLE_LIST);
    fields.Flags = on ? fields.Flags | kBit : fields.Flags & ~kBit;
  }));
}

VQSTATUS VQNamedStyle::AssignToCycleList() { return SetOnCycleList(1); }
VQSTATUS VQNamedStyle::RemoveFromCycleList() { return SetOnCycleList(0); }
VQSTATUS VQNamedStyle::SetIsAvailableToAllDocuments(int flag) {
  constexpr auto kBit = static_cast<std::uint32_t>(STYLENAMEFLAG_FOR_ALL_DOCUMENTS);
  std::string owner;
  VQSTATUS status = flag ? CurrentUserName(&owner) : VQ_OK;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(ChangeName(ReadyNamed().StyleName(), [&](Fields& fields) {
    const bool present = (fields.Flags & kBit) != 0;
    if (present == (flag != 0)) return;
    fields.Tail.erase(0, UserNameBytes(fields));
    fields.Tail.insert(0, owner);
    fields.Flags ^= kBit;
  }));
}

namespace {

int HasFlag(VQPABStyleNameBody& record, unsigned long bit) {
  Fields fields;
  vq::ThrowIfError(record.Read(&fields));
  return (fields.Flags & bit) != 0;
}

}  // namespace

int VQNamedStyle::IsOnCycleList() const { return HasFlag(Named().StyleName(), STYLENAMEFLAG_ON_CYCLE_LIST); }
int VQNamedStyle::GetIsAvailableToAllDocuments() const {
  return HasFlag(Named().StyleName(), STYLENAMEFLAG_FOR_ALL_DOCUMENTS);
}
int VQNamedStyle::HasFontStyle() const { return HasFlag(Named().StyleName(), STYLENAMEFLAG_HAS_FONT); }

VQSTATUS VQNamedStyle::GetFontStyle(VQFontStyle* style) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (style == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(Named().StyleName().GetFontStyle(style));
}

VQSTATUS VQNamedStyle::SetFontStyle(const VQFontStyle& style) {
  return vq::Apply(ReadyNamed().StyleName().SetFontStyle(style));
}
