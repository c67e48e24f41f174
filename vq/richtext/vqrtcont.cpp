#include "vq/richtext/vqrtcont.h"

#include <algorithm>
#include <cstring>

#include "vq/richtext/fontplace.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/objectguard.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQRTContainerBody::VQRTContainerBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset,
                                     std::uint32_t length)
    : VQRTBaseContainerBody(type, source, offset, length), HighestPABID(0) {}

VQRTContainerBody::VQRTContainerBody(VQRTTYPE type, unsigned short signature)
    : VQRTBaseContainerBody(type, signature), HighestPABID(0) {}

VQCLASSID VQRTContainerBody::GetClassID() const { return VQCLASSID_VQRTCONTAINERBODY; }

VQRTObjectBody* VQRTContainerBody::MakeSame() const {
  return new VQRTContainerBody(GetType(), static_cast<unsigned short>(0));
}

VQSTATUS VQRTContainerBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  const VQSTATUS status = VQRTBaseContainerBody::Copy(source, options);
  if (status == VQ_OK && source->IsType(VQRTTYPE_CONTAINER)) {
    HighestPABID = static_cast<VQRTContainerBody*>(source)->HighestPABID;
  }
  return status;
}

VQSTATUS VQRTContainerBody::SetTopContainer(VQRichTextBody* richText) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (Parent) return VQERR_RT_ALREADY_MEMBER;
  SetType(VQRTTYPE_RICH_TEXT);
  IndexValue = static_cast<std::uint32_t>(VQRT_MIN_INDEX_VALUE);
  EndIndexValue = static_cast<std::uint32_t>(VQRT_MAX_INDEX_VALUE);
  RichText = richText;
  return VQ_OK;
}

int VQRTContainerBody::CanInsertType(VQRTTYPE type) const {
  const bool table = vq::IsRTType(type, VQRTTYPE_TABLE);
  if (IsType(VQRTTYPE_TABLE) || !vq::StandsAlone(type)) return 0;
  if (IsType(VQRTTYPE_HOTSPOT)) return !table && !vq::IsRTType(type, VQRTTYPE_HOTSPOT);
  return !table || !vq::EnclosingTable(this);
}

VQSTATUS VQRTContainerBody::BeginText() {
  if (FirstChild || GetType() != VQRTTYPE_RICH_TEXT) return VQ_OK;
  unsigned short pabid = 0;
  if (const VQSTATUS status = GetNewPABID(&pabid)) return status;
  return Append(vq::MakePABReference({pabid, pabid}).GetRTObjectBody());
}

VQSTATUS VQRTContainerBody::EnsureElement() {
  VQRTObject first;
  const VQSTATUS status = FindFirst(VQRTTYPE_ELEMENT, &first);
  if (status != VQWARN_NOT_FOUND || !CanInsertType(VQRTTYPE_STYLIZED_TEXT)) return status;
  const bool dirty = IsDirty() != 0;
  if (const VQSTATUS begun = BeginText()) return begun;
  const VQRTObject run(new VQStylizedTextBody());
  VQRTObjectBody* before = LastChild && LastChild->GetType() == VQRTTYPE_HOTSPOT_END ? LastChild : nullptr;
  const VQSTATUS linked = before ? before->InsertPreviousSibling(run.GetRTObjectBody()) : Append(run.GetRTObjectBody());
  if (!dirty && !Parent) SetFlag(VQRTOBJECTBODY_DIRTY, false);
  return linked;
}

VQSTATUS VQRTContainerBody::GetCursor(VQRTCursor* cursor) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  const VQSTATUS status = EnsureElement();
  return status != VQ_OK ? status : VQRTBaseContainerBody::GetCursor(cursor);
}

VQSTATUS VQRTContainerBody::GetEndCursor(VQRTCursor* cursor) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  VQSTATUS status = EnsureElement();
  VQRTObject last;
  if (status == VQ_OK) status = FindLast(VQRTTYPE_ELEMENT, &last);
  if (status != VQ_OK) return status;
  const VQRTElement element(last);
  const bool empty =
      element.HasOffset() && static_cast<VQStylizedTextBody*>(element.GetRTObjectBody())->GetByteCount() == 0;
  return cursor->Assign(element, !empty);
}

VQSTATUS VQRTContainerBody::Append(const VQString& text, int convertNewlines) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!CanInsertType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQRTObjectBody* last = LastChild;
  if (!last || last->GetType() != VQRTTYPE_STYLIZED_TEXT) {
    const VQSTATUS fits = CheckNewText(text, convertNewlines);
    if (fits != VQ_OK) return fits;
    if (const VQSTATUS begun = BeginText()) return begun;
    last = new VQStylizedTextBody();
    const VQRTObject hold(last);
    VQRTObjectBody* before = LastChild && LastChild->GetType() == VQRTTYPE_HOTSPOT_END ? LastChild : nullptr;
    const VQSTATUS status = before ? before->InsertPreviousSibling(last) : Append(last);
    if (status != VQ_OK) return status;
  }
  VQRTCursor cursor;
  const VQSTATUS status = static_cast<VQStylizedTextBody*>(last)->GetEndCursor(&cursor);
  return status != VQ_OK ? status : Insert(text, &cursor, convertNewlines);
}

namespace {

// Of tables and hotspots.
bool HoldsParagraphs(const VQRTObject& object) {
  const VQRTObjectBody* body = object.GetRTObjectBody();
  if (!body->IsType(VQRTTYPE_CONTAINER) || body->GetType() == VQRTTYPE_STYLIZED_TEXT) return false;
  return body->AsBase()->FirstOfType(VQRTTYPE_PAB_OBJECT) != nullptr;
}

// A deep copy; that of a structure with the definitions that its paragraphs use, wherever they stand.
VQSTATUS CopyForInsert(const VQRTObject& object, VQRTObject* copy) {
  if (VQSTATUS status = copy->CopyRTObject(object, VQRTCOPYOPTIONS_DEEP)) return status;
  VQRTObjectBody* body = object.GetRTObjectBody();
  const VQRTBaseContainerBody* top = body->GetTop();
  if (!top || !HoldsParagraphs(*copy)) return VQ_OK;
  return vq::pab::CompleteReferences(*top, body, static_cast<VQRTContainerBody&>(*copy->GetRTObjectBody()));
}

// Identifiers in what comes in mean other things where it comes from.
VQSTATUS RenewParagraphs(const VQRTObject& incoming, VQRTContainerBody& root) {
  if (incoming.GetRTObjectBody()->IsType(VQRTTYPE_PAB_OBJECT)) {
    // A client's own number is one that is taken.
    const vq::PABIDs ids = vq::pab::IDsOf(*incoming.GetRTObjectBody());
    root.RegisterPABID(std::max(ids.First, ids.Second));
  }
  if (!HoldsParagraphs(incoming)) return VQ_OK;
  if (incoming.GetType() == VQRTTYPE_TABLE) return VQTable(incoming).GetTableBody()->RenewIdentifiers(root);
  unsigned short highest = 0;
  auto& container = static_cast<VQRTContainerBody&>(*incoming.GetRTObjectBody());
  if (VQSTATUS status = container.ReassignPABIDs(root.GetHighestPABID(), &highest, &root)) return status;
  root.SetHighestPABID(highest);
  return VQ_OK;
}

}  // namespace

VQSTATUS VQRTContainerBody::TakeIn(const VQRTObject& incoming, VQRTObjectBody& beside, bool behind) {
  VQRTObjectBody& body = *incoming.GetRTObjectBody();
  VQSTATUS status = vq::CheckAdmitted(GetRichTextBody(), body, nullptr);
  if (status != VQ_OK) return status;
  vq::FontGuard fonts(GetRichTextBody());
  vq::ObjectGuard objects(GetRichTextBody());
  status = vq::EnterFacesOf(body, *this);
  if (status == VQ_OK) status = RenewParagraphs(incoming, vq::pab::Root(*this));
  if (status == VQ_OK) status = vq::BringObjects(body, GetRichTextBody());
  if (status == VQ_OK) status = behind ? beside.InsertNextSibling(&body) : beside.InsertPreviousSibling(&body);
  if (status == VQ_OK) status = vq::EnterFonts(body);
  if (VQIsError(status)) return status;
  fonts.Keep();
  objects.Keep();
  return status;
}

VQSTATUS VQRTContainerBody::Append(const VQRTObject& object, VQRTObject* appended) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (object.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (object.HasOffset()) return VQERR_RT_CHARACTERS;
  if (!CanInsertType(object.GetType())) return VQERR_CANT_INSERT_TYPE;
  VQRTObject copy;
  VQSTATUS status = appended ? appended->CheckType(object) : VQ_OK;
  if (status == VQ_OK) {
    status =
        vq::CheckAdmitted(GetRichTextBody(), *object.GetRTObjectBody(), object.GetRTObjectBody()->GetRichTextBody());
  }
  if (status == VQ_OK) status = CopyForInsert(object, &copy);
  vq::FontGuard fonts(GetRichTextBody());
  vq::ObjectGuard objects(GetRichTextBody());
  if (status == VQ_OK) status = vq::EnterFacesOf(*copy.GetRTObjectBody(), *this);
  if (status == VQ_OK) status = RenewParagraphs(copy, vq::pab::Root(*this));
  if (status == VQ_OK) status = vq::BringObjects(*copy.GetRTObjectBody(), GetRichTextBody());
  if (status == VQ_OK)
    status = vq::BringLinks(*copy.GetRTObjectBody(), object.GetRTObjectBody()->GetRichTextBody(), GetRichTextBody());
  if (status == VQ_OK && vq::pab::IsContent(copy.GetRTObjectBody())) status = BeginText();
  if (status == VQ_OK) status = Append(copy.GetRTObjectBody());
  if (status == VQ_OK) status = vq::EnterFonts(*copy.GetRTObjectBody());
  if (status == VQ_OK) status = copy.GetRTObjectBody()->AdjustNeighbours(1, 1, nullptr);
  if (VQIsError(status)) return status;
  fonts.Keep();
  objects.Keep();
  if (status == VQ_OK && appended) *appended = copy;
  return status;
}

VQSTATUS VQRTContainerBody::Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted) {
  return InsertAt(object, 1, inserted, cursor);
}

VQSTATUS VQRTContainerBody::CheckInsert(const VQRTObject& object, int copy, const VQRTCursor* cursor) const {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (object.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (object.HasOffset()) return VQERR_RT_CHARACTERS;
  if (object.GetRTObjectBody()->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (!copy && object.GetRTObjectBody()->GetParent()) return VQERR_RT_ALREADY_MEMBER;
  if (!cursor->IsValid()) return VQERR_CURSOR_INVALID;
  if (!Contains(cursor->GetElementBody())) return VQERR_RT_NOT_MEMBER;
  const VQRTTYPE type = object.GetType();
  for (const VQRTObjectBody* around = cursor->GetElementBody()->GetParent(); around; around = around->GetParent()) {
    if (!around->IsType(VQRTTYPE_CONTAINER)) continue;
    const auto* container = static_cast<const VQRTContainerBody*>(around);
    if (container->CanInsertType(type)) break;
    return container->IsType(VQRTTYPE_HOTSPOT) ? VQERR_RT_HOTSPOT_CONTENT : VQERR_CANT_INSERT_TYPE;
  }
  return cursor->IsInsertablePosition(type) ? VQ_OK : VQERR_CANT_INSERT_TYPE;
}

VQSTATUS VQRTContainerBody::PlaceAt(VQRTObjectBody* object, const VQRTCursor& cursor) {
  const vq::TextPlace place(cursor);
  VQStylizedTextBody* run = place.Run();
  const unsigned long count = run ? run->GetCharacterCount() : 1;
  if (!run && !place.Node->GetParent()) return VQERR_CURSOR_NO_PARENT;
  if (run && !run->GetParent()) return VQERR_CURSOR_NO_PARENT;
  if (place.Before == 0) return place.Node->InsertPreviousSibling(object);
  if (run && place.Before < count) {
    const VQSTATUS status = run->SplitText(place.Before + 1);
    if (status != VQ_OK) return status;
  }
  return place.Node->InsertNextSibling(object);
}

VQSTATUS VQRTContainerBody::InsertAt(const VQRTObject& object, int copy, VQRTObject* inserted, VQRTCursor* cursor) {
  VQSTATUS status = CheckInsert(object, copy, cursor);
  if (status == VQ_OK && inserted) status = inserted->CheckType(object);
  if (status == VQ_OK) {
    status =
        vq::CheckAdmitted(GetRichTextBody(), *object.GetRTObjectBody(), object.GetRTObjectBody()->GetRichTextBody());
  }
  if (status != VQ_OK) return status;
  VQRTObject placed;
  if (copy) {
    status = CopyForInsert(object, &placed);
    if (status != VQ_OK) return status;
  } else {
    placed = object;
  }
  VQRTObjectBody* body = placed.GetRTObjectBody();
  vq::FontGuard fonts(GetRichTextBody());
  vq::ObjectGuard objects(GetRichTextBody());
  status = vq::EnterFacesOf(*body, *this);
  if (status == VQ_OK) status = RenewParagraphs(placed, vq::pab::Root(*this));
  if (status == VQ_OK) status = vq::BringObjects(*body, GetRichTextBody());
  if (status == VQ_OK) status = vq::BringLinks(*body, object.GetRTObjectBody()->GetRichTextBody(), GetRichTextBody());
  if (status == VQ_OK) status = PlaceAt(body, *cursor);
  if (status == VQ_OK) status = vq::EnterFonts(*body);
  if (status == VQ_OK) status = MoveBehind(placed, cursor);
  if (VQIsError(status)) return status;
  fonts.Keep();
  objects.Keep();
  if (status == VQ_OK && inserted) *inserted = placed;
  return status;
}

VQSTATUS VQRTContainerBody::PlaceNew(const VQRTObject& object, VQRTCursor* cursor) {
  const VQSTATUS status = PlaceAt(object.GetRTObjectBody(), *cursor);
  return status != VQ_OK ? status : MoveBehind(object, cursor);
}

VQSTATUS VQRTContainerBody::MoveBehind(const VQRTObject& placed, VQRTCursor* cursor) {
  VQRTObjectBody* body = placed.GetRTObjectBody();
  VQSTATUS status = VQ_OK;
  // On its last element, or before what follows a record that is no place.
  VQRTObject element;
  VQRTBaseContainerBody* container = body->IsType(VQRTTYPE_CONTAINER) ? body->AsBase() : nullptr;
  if (container && container->FindLast(VQRTTYPE_ELEMENT, &element) == VQ_OK) {
    status = cursor->GotoEnd(VQRTContainer(placed));
  } else if (body->IsType(VQRTTYPE_ELEMENT)) {
    status = cursor->Assign(VQRTElement(placed), 1);
  } else if (FindNext(placed, VQRTTYPE_ELEMENT, &element) == VQ_OK) {
    status = cursor->Assign(VQRTElement(element), 0);
  }
  return status != VQ_OK ? status : body->AdjustNeighbours(1, 1, cursor);
}

namespace {

constexpr unsigned long kLongestRun = vq::kItemTarget - 8;  // of text, in bytes

// Runs `work` over the lines of the text; -1 for the line behind the last newline.
template <typename Work>
VQSTATUS ForEachLine(const VQString& text, Work work) {
  const VQCHAR* at = text.GetBuf();
  const VQCHAR* end = at + text.GetBufLength();
  for (;;) {
    const VQCHAR* stop = std::find(at, end, static_cast<VQCHAR>('\n'));
    const VQSTATUS status = work(at, static_cast<unsigned long>(stop - at), stop == end);
    if (VQIsError(status) || stop == end) return status;
    at = stop + 1;
  }
}

}  // namespace

VQSTATUS VQRTContainerBody::CheckLines(const VQString& text, const VQRTCursor& cursor) const {
  const vq::TextPlace place(cursor);
  const VQStylizedTextBody* run = place.Run();
  std::uint32_t left = 0;
  if (run) {
    if (const VQSTATUS status = run->SpanBytes(place.Before, &left)) return status;
  }
  // The first line goes on from what stands left of the cursor, the last one ends with what stands right of it.
  unsigned long present = left;
  const unsigned long right = run ? run->GetByteCount() - left : 0;
  return ForEachLine(text, [&](const VQCHAR*, unsigned long bytes, bool last) {
    const unsigned long whole = present + bytes + (last ? right : 0);
    present = 0;
    return whole > kLongestRun ? VQERR_TEXT_TOO_LONG : VQ_OK;
  });
}

VQSTATUS VQRTContainerBody::PartRun(const VQString& text, VQRTCursor* cursor) {
  const vq::TextPlace place(*cursor);
  VQStylizedTextBody* run = place.Run();
  const VQCHAR* start = text.GetBuf();
  const VQCHAR* end = std::find(start, start + text.GetBufLength(), static_cast<VQCHAR>('\n'));
  if (!run || run->GetByteCount() + static_cast<unsigned long>(end - start) <= kLongestRun) return VQ_OK;
  if (place.Before == 0) {
    VQRTObject empty;
    if (const VQSTATUS status = vq::pab::MakeEmptyText(run, &empty)) return status;
    if (const VQSTATUS status = run->InsertPreviousSibling(empty.GetRTObjectBody())) return status;
    return vq::pab::PutCursor(cursor, empty.GetRTObjectBody(), false);
  }
  if (place.Before == run->GetCharacterCount()) return VQ_OK;
  if (const VQSTATUS status = run->SplitText(place.Before + 1)) return status;
  return cursor->Assign(run, place.Before, 1);
}

VQSTATUS VQRTContainerBody::CheckNewText(const VQString& text, int convertNewlines) const {
  if (convertNewlines) return CheckLines(text, VQRTCursor());
  return text.GetBufLength() > kLongestRun ? VQERR_TEXT_TOO_LONG : VQ_OK;
}

VQSTATUS VQRTContainerBody::InsertLine(const VQString& line, VQRTCursor* cursor) {
  if (line.GetBufLength() == 0) return VQ_OK;
  if (VQStylizedTextBody* run = vq::TextPlace(*cursor).Run()) return run->Insert(line, cursor, 0);
  auto* run = new VQStylizedTextBody();
  const VQRTObject hold(run);
  const VQSTATUS status = run->InsertText(0, line);
  if (VQIsError(status)) return status;
  const VQSTATUS placed = InsertAt(hold, 0, nullptr, cursor);
  return placed != VQ_OK ? placed : status;
}

VQSTATUS VQRTContainerBody::Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines) {
  if (!cursor) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!cursor->IsValid()) return VQERR_CURSOR_INVALID;
  if (!Contains(cursor->GetElementBody())) return VQERR_RT_NOT_MEMBER;
  if (!convertNewlines || !std::memchr(text.GetBuf(), '\n', text.GetBufLength())) return InsertLine(text, cursor);
  VQSTATUS status = CheckLines(text, *cursor);
  VQSTATUS result = VQ_OK;
  if (status == VQ_OK) status = PartRun(text, cursor);
  if (status != VQ_OK) return status;
  status = ForEachLine(text, [&](const VQCHAR* line, unsigned long bytes, bool last) {
    const VQSTATUS inserted = bytes > 0 ? InsertLine(VQString(line, bytes), cursor) : VQ_OK;
    if (VQIsError(inserted)) return inserted;
    if (inserted != VQ_OK) result = inserted;
    return last ? VQ_OK : StartNewParagraph(cursor);
  });
  return VQIsError(status) ? status : result;
}

VQSTATUS VQRTContainerBody::SetValue(const VQString& text, int convertNewlines) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!CanInsertType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQSTATUS status = CheckNewText(text, convertNewlines);
  if (status != VQ_OK) return status;
  // A hotspot's end and its parts belong to the container, not to its text, and so does what a cell begins with.
  bool begins = GetType() == VQRTTYPE_TABLE_CELL;
  for (VQRTObjectBody *child = FirstChild, *next; child; child = next) {
    next = child->GetNext();
    const VQRTTYPE type = child->GetType();
    if (type == VQRTTYPE_HOTSPOT_END || type == VQRTTYPE_ACTION_PART || type == VQRTTYPE_BUTTON_PART) continue;
    begins = begins && !vq::pab::IsContent(child);
    if (begins) continue;
    status = child->Delete();
    if (status != VQ_OK) return status;
  }
  return Append(text, convertNewlines);
}
