#include "vq/richtext/vqstyltx.h"

#include <algorithm>
#include <cstring>

#include "engine/records.h"
#include "engine/text.h"
#include "vq/richtext/font.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrtwrit.h"
#include "vq/values/vqstring.h"

namespace {

constexpr std::uint32_t kFixedPart = 8;
constexpr std::uint32_t kWarningSize = 0x5000;
// Attribute bits that only the extension carries.
constexpr unsigned long kEffectBit = 0x8000;
constexpr unsigned long kPlainFont = 0xFFFF4FFF;

}  // namespace

VQStylizedTextBody::VQStylizedTextBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTContainerBody(VQRTTYPE_STYLIZED_TEXT, source, offset, length), FontStyle(nullptr) {}

VQStylizedTextBody::VQStylizedTextBody()
    : VQRTContainerBody(VQRTTYPE_STYLIZED_TEXT, static_cast<unsigned short>(0)), FontStyle(nullptr) {
  static constexpr unsigned char kEmptyRun[kFixedPart] = {0x85, 0xFF, kFixedPart, 0, 0x01, 0x00, 0x00, 0x0A};
  Content.Resize(kFixedPart);
  std::memcpy(Content.GetBytes(), kEmptyRun, kFixedPart);
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, true);
}

VQStylizedTextBody::~VQStylizedTextBody() { VQStylizedTextBody::Close(); }

VQSTATUS VQStylizedTextBody::Close() {
  if (Closed) return VQWARN_NOT_OPEN;
  if (RTChars) {
    NoteCharacters();
    for (VQRTObject* character : RTChars->Handles) character->Offset = 0;
    RTChars.reset();
  }
  if (FontStyle) {
    FontStyle->SetOwner(nullptr);
    FontStyle->Release();
    FontStyle = nullptr;
  }
  return VQRTContainerBody::Close();
}

VQCLASSID VQStylizedTextBody::GetClassID() const { return VQCLASSID_VQSTYLIZEDTEXTBODY; }

VQRTObjectBody* VQStylizedTextBody::MakeSame() const { return new VQStylizedTextBody(); }

VQSTATUS VQStylizedTextBody::GetText(VQString* text) {
  if (!text) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  const TextBytes bytes(*this);
  *text = bytes.Size > 0 ? VQString(bytes.Text, bytes.Size) : VQString();
  return VQ_OK;
}

VQSTATUS VQStylizedTextBody::AppendChild(VQRTObject* child) {
  if (!child || child->IsNull()) return VQERR_INVALID_PARAMETER;
  if (child->GetType() != VQRTTYPE_TEXT_STYLE_EXT) return VQERR_RT_CHARACTERS;
  return VQRTContainerBody::AppendChild(child);
}

VQSTATUS VQStylizedTextBody::FindFirst(VQRTTYPE type, VQRTObject* found) {
  if (!found) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (type != VQRTTYPE_ELEMENT && type != VQRTTYPE_CHAR) return VQRTContainerBody::FindFirst(type, found);
  *found = VQRTObject(this, 1);
  return VQ_OK;
}

VQSTATUS VQStylizedTextBody::FindLast(VQRTTYPE type, VQRTObject* found) {
  if (!found) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (type != VQRTTYPE_ELEMENT && type != VQRTTYPE_CHAR) return VQRTContainerBody::FindLast(type, found);
  *found = VQRTObject(this, std::max(1UL, GetCharacterCount()));
  return VQ_OK;
}

VQSTATUS VQStylizedTextBody::GetCursor(VQRTCursor* cursor) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  return cursor->Assign(this, 1, 0);
}

VQSTATUS VQStylizedTextBody::GetEndCursor(VQRTCursor* cursor) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  const unsigned long count = GetCharacterCount();
  return cursor->Assign(this, std::max(1UL, count), count != 0);
}

int VQStylizedTextBody::CanInsertType(VQRTTYPE type) const {
  return type == VQRTTYPE_STYLIZED_TEXT || type == VQRTTYPE_CHAR || type == VQRTTYPE_TEXT_STYLE_EXT;
}

VQStylizedTextBody::TextBytes::TextBytes(const VQStylizedTextBody& run) : Record(run), Text(nullptr), Size(0) {
  vq::RecordHeader header;
  if (!vq::ReadRecordHeader(Record.Get(), Record.GetSize(), &header) || header.Length <= kFixedPart) return;
  Text = Record.Get() + kFixedPart;
  Size = std::min(header.Length, Record.GetSize()) - std::min(kFixedPart, Record.GetSize());
}

unsigned long VQStylizedTextBody::GetByteCount() const { return TextBytes(*this).Size; }

VQSTATUS VQStylizedTextBody::CheckRoom(unsigned long byteCount) {
  const unsigned long total = kFixedPart + byteCount + (byteCount & 1);
  if (total > vq::kItemTarget) return VQERR_TEXT_TOO_LONG;
  return total > kWarningSize ? VQWARN_TEXT_OVER_20K : VQ_OK;
}

void VQStylizedTextBody::Replace(std::uint32_t offset, std::uint32_t oldBytes, const unsigned char* text,
                                 std::uint32_t newBytes) {
  const auto count = static_cast<std::uint32_t>(GetByteCount());
  MakeValue(kFixedPart);
  Content.Reserve(vq::Padded(kFixedPart + count - oldBytes + newBytes));
  if (vq::Edit* edit = vq::Edit::Of(*this)) {
    edit->Splices(*this, kFixedPart + count, kFixedPart + offset, oldBytes, newBytes);
  }
  Content.Resize(kFixedPart + count);  // without the padding byte
  if (Content.GetBytes()[1] != 0xFF) vq::WriteRecordHeader(Content.GetBytes(), SIG_CD_TEXT, kFixedPart);
  Content.Splice(kFixedPart + offset, oldBytes, newBytes);
  if (newBytes > 0) std::memcpy(Content.GetBytes() + kFixedPart + offset, text, newBytes);
  vq::WriteRecordLength(Content.GetBytes(), Content.GetSize());
  Content.Resize(vq::Padded(Content.GetSize()));
  VQ_ASSERT_TEXT(GetRecordSize() % 2 == 0, "VQRTObjectBody::GetSize()%2 == 0", "VQRTOBJB");
}

VQSTATUS VQStylizedTextBody::InsertText(unsigned long charOffset, const VQString& text) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!IsValid()) return VQERR_RT_INVALID;
  if (!CanInsertType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  const unsigned long oldBytes = GetByteCount(), bytes = text.GetBufLength();
  std::uint32_t prefix = 0;
  VQSTATUS status = oldBytes == 0 ? VQ_OK : SpanBytes(charOffset, &prefix);
  if (status != VQ_OK || bytes == 0) return status;
  status = CheckRoom(oldBytes + bytes);
  if (VQIsError(status)) return status;
  std::uint32_t characters = 0;
  if (EngTextSpanChars(text.GetBuf(), static_cast<std::uint32_t>(bytes), &characters) != 0) return VQERR_STRING_SIZE;

  std::vector<unsigned char> record(text.GetBuf(), text.GetBuf() + bytes);
  NoteCharacters();
  std::replace(record.begin(), record.end(), static_cast<unsigned char>('\n'), static_cast<unsigned char>(0));
  Replace(prefix, 0, record.data(), static_cast<std::uint32_t>(bytes));
  if (!RTChars) return status;
  for (VQRTObject* character : RTChars->Handles) {
    if (oldBytes == 0) {
      character->MoveTo(characters, 1);  // the place in an empty run is no character
    } else if (character->Offset > charOffset) {
      character->Offset += characters;
    }
  }
  return status;
}

VQSTATUS VQStylizedTextBody::RemoveText(unsigned long first, unsigned long count) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!IsValid()) return VQERR_RT_INVALID;
  if (count == 0) return VQ_OK;
  std::uint32_t from = 0, to = 0;
  if (first == 0 || SpanBytes(first - 1, &from) != VQ_OK || SpanBytes(first - 1 + count, &to) != VQ_OK) {
    return VQERR_INVALID_PARAMETER;
  }
  NoteCharacters();
  const unsigned long left = RTChars ? GetCharacterCount() - count : 0;
  Replace(from, to - from, nullptr, 0);
  if (!RTChars) return VQ_OK;
  for (VQRTObject* character : RTChars->Handles) {
    if (character->Offset < first) continue;
    if (character->Offset >= first + count) {
      character->Offset -= count;
    } else if (first <= left || left == 0) {
      character->MoveTo(first, 0);
    } else {
      character->MoveTo(left, 1);  // nothing behind it
    }
  }
  return VQ_OK;
}

VQSTATUS VQStylizedTextBody::SetValue(const VQString& text, int convertNewlines) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (convertNewlines && std::memchr(text.GetBuf(), '\n', text.GetBufLength())) return VQERR_TEXT_NEWLINES;
  const auto bytes = static_cast<std::uint32_t>(text.GetBufLength());
  const VQSTATUS status = CheckRoom(bytes);
  if (VQIsError(status)) return status;
  std::uint32_t characters = 0;
  if (bytes > 0 && EngTextSpanChars(text.GetBuf(), bytes, &characters) != 0) return VQERR_STRING_SIZE;
  if (RTChars) {
    NoteCharacters();
    for (VQRTObject* character : RTChars->Handles) {
      if (characters == 0 && character->Offset == 1) character->MoveTo(1, 0);
      if (character->Offset > std::max<std::uint32_t>(characters, 1)) character->Offset = 0;
    }
    std::erase_if(RTChars->Handles, [](const VQRTObject* character) { return character->Offset == 0; });
  }
  Replace(0, static_cast<std::uint32_t>(GetByteCount()), text.GetBuf(), bytes);
  return status;
}

VQSTATUS VQStylizedTextBody::Append(const VQString& text, int convertNewlines) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (convertNewlines && std::memchr(text.GetBuf(), '\n', text.GetBufLength())) return VQERR_TEXT_NEWLINES;
  return InsertText(GetCharacterCount(), text);
}

VQSTATUS VQStylizedTextBody::Append(const VQRTObject& object, VQRTObject*) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  return object.IsNull() ? VQERR_UNINITIALIZED_ARGUMENT : VQERR_RT_CHARACTERS;
}

VQSTATUS VQStylizedTextBody::Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!cursor->IsValid(this)) return VQERR_CURSOR_INVALID;
  if (convertNewlines && std::memchr(text.GetBuf(), '\n', text.GetBufLength())) return VQERR_TEXT_NEWLINES;
  const unsigned long before = vq::TextPlace(*cursor).Before;
  const VQSTATUS status = InsertText(before, text);
  if (VQIsError(status) || text.GetBufLength() == 0) return status;
  const VQSTATUS moved = cursor->Assign(this, before + text.GetLength(), 1);
  return moved != VQ_OK ? moved : status;
}

VQSTATUS VQStylizedTextBody::SplitText(unsigned long offset) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const unsigned long count = GetCharacterCount();
  if (count < 2 || offset < 2 || offset > count) return VQERR_INVALID_PARAMETER;
  if (!Parent) return VQERR_RT_NOT_MEMBER;
  std::uint32_t prefix = 0;
  VQSTATUS status = SpanBytes(offset - 1, &prefix);
  if (status != VQ_OK) return status;

  auto* tail = new VQStylizedTextBody();
  const VQRTObject hold(tail);
  status = tail->Copy(this, VQRTCOPYOPTIONS_DEEP);
  if (status != VQ_OK) return status;
  tail->Replace(0, prefix, nullptr, 0);
  // What may fail comes first: a tail that stands there with all of this would be text twice.
  MakeValue(kFixedPart);
  status = InsertNextSibling(tail);
  if (status != VQ_OK) return status;
  Replace(prefix, static_cast<std::uint32_t>(GetByteCount()) - prefix, nullptr, 0);
  MoveCharacters(offset, tail);
  return VQ_OK;
}

void VQStylizedTextBody::MoveCharacters(unsigned long offset, VQStylizedTextBody* target) {
  if (!RTChars) return;
  std::vector<VQRTObject*> moving;
  for (VQRTObject* character : RTChars->Handles) {
    if (character->Offset >= offset) moving.push_back(character);
  }
  for (VQRTObject* character : moving) character->Attach(target, character->Offset - offset + 1);
}

unsigned long VQStylizedTextBody::GetFontID() const {
  std::uint32_t id = static_cast<std::uint32_t>(VQ_DEFAULT_FONT_ID);
  const VQRTObjectBody* from = this;
  if (GetFirstChild() && GetFirstChild()->GetType() == VQRTTYPE_TEXT_STYLE_EXT) from = GetFirstChild();
  CDTEXT record;
  const unsigned short code = from == this ? ODS_CDTEXT : ODS_CDTEXTSTYLEEXT;
  static_assert(sizeof(CDTEXT) == sizeof(CDTEXTSTYLEEXT));
  if (from->ReadODS(code, &record, 0) == VQ_OK) id = record.FontID;
  return id;
}

VQSTATUS VQStylizedTextBody::SetFontID(unsigned long fontID) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!IsValid()) return VQERR_RT_INVALID;
  const bool extended = (fontID & kEffectBit) != 0;
  VQRTObjectBody* extension = GetFirstChild();
  if (!extended && extension) {
    const VQSTATUS status = extension->Delete();
    if (status != VQ_OK) return status;
  }
  if (extended) {
    const std::uint32_t length = extension ? vq::LengthWithRest(*extension, ODS_CDTEXTSTYLEEXT) : kFixedPart;
    const CDTEXTSTYLEEXT record = {{SIG_CD_TEXT_STYLE_EXT, static_cast<std::uint16_t>(length)},
                                   static_cast<std::uint32_t>(fontID)};
    const VQRTObject hold(extension ? extension : new VQRTObjectBody(VQRTTYPE_TEXT_STYLE_EXT, SIG_CD_TEXT_STYLE_EXT));
    VQSTATUS status = hold.GetRTObjectBody()->WriteODS(ODS_CDTEXTSTYLEEXT, &record, 0);
    if (status == VQ_OK && !extension) status = VQRTBaseContainerBody::Append(hold.GetRTObjectBody());
    if (status != VQ_OK) return status;
  }
  const std::uint32_t plain = static_cast<std::uint32_t>(extended ? fontID & kPlainFont : fontID);
  const CDTEXT record = {{SIG_CD_TEXT, static_cast<std::uint16_t>(kFixedPart + GetByteCount())}, plain};
  return WriteODS(ODS_CDTEXT, &record, 0);
}

void VQStylizedTextBody::NoteCharacters() {
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->MovesCharacters(*this);
}

void VQStylizedTextBody::AddRTChar(VQRTObject* character) {
  VQ_ASSERT_TEXT(character, "rtchar", "VQRTCHAR");
  NoteCharacters();
  if (!RTChars) RTChars = std::make_unique<Characters>();
  RTChars->Handles.push_back(character);
}

void VQStylizedTextBody::RemoveRTChar(VQRTObject* character) {
  if (!RTChars) return;  // closed: all are cut loose
  // The newest handles go first as a rule.
  std::vector<VQRTObject*>& handles = RTChars->Handles;
  const auto found = std::find(handles.rbegin(), handles.rend(), character);
  VQ_ASSERT_TEXT(found != handles.rend(), "i < Count", "VQRTCHAR");
  *found = handles.back();
  handles.pop_back();
  if (handles.empty()) RTChars.reset();
}
