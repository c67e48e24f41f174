// Container operations that give a part of a rich text as one of its own.
#include <set>

#include "vq/richtext/pabtree.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqstyltx.h"

namespace pab = vq::pab;

namespace {

// An empty rich text that stands alone, with the source's tables.
VQSTATUS MakeRichText(const VQRTContainerBody& source, VQRichText* richText) {
  VQRichTextBody* body = new VQRichTextBody;
  *richText = VQRichText(body);
  if (VQSTATUS status = body->Initialize()) return status;
  VQRichTextBody* owner = source.GetRichTextBody();
  return owner ? body->TakeTables(*owner) : VQ_OK;
}

// Copies records of the source in front of references of the selection whose identifiers it does not define.
class Completer {
 public:
  Completer(const VQRTBaseContainerBody& source, VQRTObjectBody* start, VQRTContainerBody& copy)
      : Source(source), Start(start), Copy(copy) {}

  VQSTATUS Run() {
    std::vector<VQRTObjectBody*> objects;
    VQRTObjectBody* object = Copy.FirstOfType(VQRTTYPE_PAB_OBJECT);
    for (; object; object = Copy.NextOfType(object, VQRTTYPE_PAB_OBJECT)) objects.push_back(object);
    for (VQRTObjectBody* seen : objects) {
      vq::PABIDs ids = pab::IDsOf(*seen);
      Copy.RegisterPABID(ids.First);
      Copy.RegisterPABID(ids.Second);
      VQSTATUS status = seen->IsType(VQRTTYPE_PAB_REFERENCE) ? Complete(seen, ids) : VQ_OK;
      if (status != VQ_OK) return status;
      Seen.insert({ids.First, ids.Second});
    }
    return VQ_OK;
  }

 private:
  VQSTATUS Complete(VQRTObjectBody* reference, vq::PABIDs ids) {
    if (!Seen.contains(ids.Second)) {
      if (VQSTATUS status = CopyDefinition(reference, ids.Second)) return status;
    }
    if (ids.First == ids.Second || Seen.contains(ids.First)) return VQ_OK;
    VQRTObjectBody* companion = Find(VQRTTYPE_PAB_HIDE, ids.First);
    if (!companion) companion = Find(VQRTTYPE_PAB_STYLE_NAME, ids.First);
    return companion ? CopyBefore(companion, reference) : VQ_OK;
  }

  VQSTATUS CopyDefinition(VQRTObjectBody* reference, std::uint16_t pabid) {
    VQRTObjectBody* definition = Find(VQRTTYPE_PAB_DEFINITION, pabid);
    if (!definition) return VQ_OK;
    if (VQSTATUS status = CopyBefore(definition, reference)) return status;
    VQRTObjectBody* companion = pab::Companion(*definition);
    if (!companion) companion = Find(VQRTTYPE_PAB_HIDE, pabid);
    return companion ? CopyBefore(companion, reference) : VQ_OK;
  }

  VQRTObjectBody* Find(VQRTTYPE type, std::uint16_t pabid) const {
    return pab::FindByPABID(Source, Start, type, pabid);
  }

  static VQSTATUS CopyBefore(VQRTObjectBody* object, VQRTObjectBody* reference) {
    VQRTObject copy;
    if (VQSTATUS status = pab::CopyOf(object, &copy)) return status;
    return reference->InsertPreviousSibling(copy.GetRTObjectBody());
  }

  const VQRTBaseContainerBody& Source;
  VQRTObjectBody* Start;
  VQRTContainerBody& Copy;
  std::set<std::uint16_t> Seen;
};

// The first paragraph of the selection gets the reference that was in force at its start in the source.
VQSTATUS GiveFirstReference(VQRTContainerBody& source, VQRTObjectBody* start, VQRTContainerBody& copy) {
  VQRTObjectBody* object = copy.GetFirstChild();
  while (object && object->IsType(VQRTTYPE_PAB_OBJECT)) {
    if (object->IsType(VQRTTYPE_PAB_REFERENCE)) return VQ_OK;
    object = object->GetNext();
  }
  VQRTObjectBody* inForce = pab::ReferenceFor(source, start);
  vq::PABIDs ids;
  if (inForce) {
    ids = pab::IDsOf(*inForce);
  } else {
    unsigned short pabid = 0;
    if (VQSTATUS status = source.GetNewPABID(&pabid)) return status;
    ids = {pabid, pabid};
  }
  return pab::InsertAt({&copy, object}, vq::MakePABReference(ids).GetRTObjectBody());
}

VQSTATUS Finish(VQRTContainerBody& source, VQRTObjectBody* start, VQRTContainerBody& copy) {
  const VQRTObjectBody* last = copy.GetLastChild();
  if (!last || !pab::IsContent(last)) {
    VQRTObject text;
    if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
    if (VQSTATUS status = copy.Append(text.GetRTObjectBody())) return status;
  }
  if (VQSTATUS status = GiveFirstReference(source, start, copy)) return status;
  return Completer(source, start, copy).Run();
}

// The paragraph record that a cell begins with ends nothing.
VQSTATUS DropCellStart(VQRTContainerBody& copy) {
  VQRTObjectBody* object = copy.GetFirstChild();
  while (object && object->IsType(VQRTTYPE_PAB_OBJECT)) object = object->GetNext();
  return object && object->GetType() == VQRTTYPE_NEW_PARAGRAPH ? object->Delete() : VQ_OK;
}

}  // namespace

VQSTATUS pab::CompleteReferences(const VQRTBaseContainerBody& source, VQRTObjectBody* start, VQRTContainerBody& copy) {
  return Completer(source, start, copy).Run();
}

VQSTATUS VQRTContainerBody::GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText) {
  if (!richText) return VQERR_INVALID_PARAMETER;
  VQRTSelection selection;
  if (!start.IsValid() || !end.IsValid()) return VQERR_CURSOR_INVALID;
  if (start > end) return VQERR_CURSOR_ORDER;
  if (!IsSelectionValid(start, end, &selection)) return VQERR_RT_SELECTION_INVALID;
  VQRichText made;
  if (VQSTATUS status = MakeRichText(*this, &made)) return status;
  VQRTContainerBody& copy = *made.GetRichTextBody()->GetTop();
  if (start != end) {
    VQRTBaseContainerBody* container = selection.Container.GetRTBaseContainerBody();
    VQRTBaseContainerBody* source = container ? container : this;
    if (VQSTATUS status = copy.CopyChildren(start, end, source, nullptr)) return status;
  }
  if (VQSTATUS status = Finish(pab::Root(*this), start.GetElementBody(), copy)) return status;
  *richText = made;
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText) {
  if (!start.IsValid()) return VQERR_CURSOR_INVALID;
  VQRTCursor end;
  if (VQSTATUS status = end.Copy(start)) return status;
  end += count;
  return GetRichText(start, end, richText);
}

VQSTATUS VQRTContainerBody::GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText) {
  VQRTSelection selection;
  if (!start.IsValid()) return VQERR_CURSOR_INVALID;
  if (!IsSelectionValid(start, type, &selection)) return VQERR_RT_SELECTION_INVALID;
  return GetRichText(selection.Start, richText);
}

VQSTATUS VQRTContainerBody::GetRichText(const VQRTObject& object, VQRichText* richText) {
  if (!richText || object.IsNull()) return VQERR_INVALID_PARAMETER;
  VQRTObjectBody* body = object.GetRTObjectBody();
  if (object.HasOffset()) {
    VQRTElement character(object);
    return GetRichText(VQRTCursor(character, 0), VQRTCursor(character, 1), richText);
  }
  if (!Contains(body)) return VQERR_RT_NOT_MEMBER;
  // Of a whole text and of a cell their content; other parts of structures are nothing of their own.
  const bool content = body->GetType() == VQRTTYPE_RICH_TEXT || body->GetType() == VQRTTYPE_TABLE_CELL;
  if (!content && !vq::StandsAlone(body->GetType())) return VQERR_RT_SELECTION_INVALID;
  VQRichText made;
  if (VQSTATUS status = MakeRichText(*this, &made)) return status;
  VQRTContainerBody& copy = *made.GetRichTextBody()->GetTop();
  if (vq::StandsAlone(body->GetType())) {
    VQRTObject child;
    if (VQSTATUS status = pab::CopyOf(body, &child)) return status;
    if (VQSTATUS status = copy.Append(child.GetRTObjectBody())) return status;
  } else {
    const VQRTCursor open;
    if (VQSTATUS status = copy.CopyChildren(open, open, body->AsBase(), nullptr)) return status;
    if (VQSTATUS status = body->GetType() == VQRTTYPE_TABLE_CELL ? DropCellStart(copy) : VQ_OK) return status;
  }
  if (VQSTATUS status = Finish(pab::Root(*this), body, copy)) return status;
  *richText = made;
  return VQ_OK;
}
