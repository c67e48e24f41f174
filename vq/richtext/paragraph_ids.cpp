// Container operations that keep paragraph identifiers unique and references valid.
#include <map>
#include <set>

#include "vq/richtext/pabtree.h"

namespace pab = vq::pab;

namespace {

constexpr unsigned kHighestPossible = 0xFFFF;

using Objects = std::vector<VQRTObjectBody*>;

Objects ParagraphObjects(const VQRTBaseContainerBody& container) {
  Objects objects;
  VQRTObjectBody* object = container.FirstOfType(VQRTTYPE_PAB_OBJECT);
  for (; object; object = container.NextOfType(object, VQRTTYPE_PAB_OBJECT)) objects.push_back(object);
  return objects;
}

// New numbers for old ones, given out in the order of first use.
class Renumbering {
 public:
  explicit Renumbering(unsigned highest) : Next(highest + 1) {}

  void Add(std::uint16_t old) {
    if (Numbers.emplace(old, static_cast<std::uint16_t>(Next)).second) ++Next;
  }
  std::uint16_t operator[](std::uint16_t old) const { return Numbers.at(old); }
  unsigned Highest() const { return Next - 1; }

 private:
  std::map<std::uint16_t, std::uint16_t> Numbers;
  unsigned Next;
};

// Identifiers that a text defines: settings, and what a formula reference takes its formula from.
struct Defined {
  explicit Defined(const Objects& objects) {
    for (const VQRTObjectBody* object : objects) {
      if (object->IsType(VQRTTYPE_PAB_REFERENCE)) continue;
      std::uint16_t id = pab::IDsOf(*object).First;
      Any.insert(id);
      if (object->IsType(VQRTTYPE_PAB_DEFINITION)) Definitions.insert(id);
    }
  }
  std::set<std::uint16_t> Definitions;
  std::set<std::uint16_t> Any;
};

bool Uses(const VQRTObjectBody& reference, std::uint16_t pabid) {
  vq::PABIDs ids = pab::IDsOf(reference);
  return ids.First == pabid || ids.Second == pabid;
}

// The first reference at or behind `from` that uses the identifier.
VQRTObjectBody* UserBehind(const VQRTBaseContainerBody& root, VQRTObjectBody* from, std::uint16_t pabid) {
  VQRTObjectBody* object = from;
  while (object && !(object->IsType(VQRTTYPE_PAB_REFERENCE) && Uses(*object, pabid))) {
    object = root.NextOfType(object, VQRTTYPE_PAB_REFERENCE);
  }
  return object;
}

VQSTATUS MoveBefore(VQRTObjectBody* object, VQRTObjectBody* place) {
  VQRTObject hold(object);
  if (VQSTATUS status = object->RemoveThis(1)) return status;
  return place->InsertPreviousSibling(object);
}

VQSTATUS RescueDefinition(const VQRTBaseContainerBody& root, VQRTObjectBody* definition, VQRTObjectBody* behind,
                          Objects* moved) {
  std::uint16_t pabid = pab::IDsOf(*definition).First;
  VQRTObjectBody* user = UserBehind(root, behind, pabid);
  if (!user || pab::FindLeft(root, definition, VQRTTYPE_PAB_DEFINITION, pabid)) return VQ_OK;
  VQRTObjectBody* companion = pab::Companion(*definition);
  for (VQRTObjectBody* object : {definition, companion}) {
    if (!object) continue;
    if (VQSTATUS status = MoveBefore(object, user)) return status;
    if (moved) moved->push_back(object);
  }
  return VQ_OK;
}

// A number that no object of the text uses, for texts that have used up the highest one.
unsigned FreeNumber(const VQRTBaseContainerBody& root) {
  std::set<std::uint16_t> used;
  for (const VQRTObjectBody* object : ParagraphObjects(root)) {
    vq::PABIDs ids = pab::IDsOf(*object);
    used.insert({ids.First, ids.Second});
  }
  for (unsigned id = 1; id <= kHighestPossible; ++id) {
    if (!used.contains(static_cast<std::uint16_t>(id))) return id;
  }
  return 0;
}

}  // namespace

VQSTATUS VQRTContainerBody::GetNewPABID(unsigned short* pabid) {
  if (!pabid) return VQERR_INVALID_PARAMETER;
  VQRTContainerBody& root = pab::Root(*this);
  if (&root != this) return root.GetNewPABID(pabid);
  if (HighestPABID < kHighestPossible) {
    *pabid = ++HighestPABID;
    return VQ_OK;
  }
  unsigned id = FreeNumber(*this);
  if (id == 0) return VQERR_OUT_OF_RANGE;
  *pabid = static_cast<unsigned short>(id);
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::ReassignPABIDs(unsigned short highest, unsigned short* newHighestPABID,
                                           VQRTContainerBody* target) {
  VQ_ASSERT(newHighestPABID, "VQRTCONT");
  Objects objects = ParagraphObjects(*this);
  Defined defined(objects);
  VQRTObjectBody* fallback = target ? target->FirstOfType(VQRTTYPE_PAB_REFERENCE) : nullptr;
  auto isForeign = [&](vq::PABIDs ids) { return fallback && !defined.Definitions.contains(ids.Second); };

  Renumbering numbers(highest);
  for (const VQRTObjectBody* object : objects) {
    vq::PABIDs ids;
    if (VQSTATUS status = vq::ReadPABIDs(*object, &ids)) return status;
    if (object->IsType(VQRTTYPE_PAB_REFERENCE) && isForeign(ids)) continue;
    if (defined.Any.contains(ids.First)) numbers.Add(ids.First);
    numbers.Add(ids.Second);
  }
  if (numbers.Highest() > kHighestPossible) return VQERR_OUT_OF_RANGE;

  for (VQRTObjectBody* object : objects) {
    vq::PABIDs ids = pab::IDsOf(*object);
    vq::PABIDs mapped;
    if (object->IsType(VQRTTYPE_PAB_REFERENCE) && isForeign(ids)) {
      mapped = pab::IDsOf(*fallback);
    } else {
      mapped.Second = numbers[ids.Second];
      mapped.First = defined.Any.contains(ids.First) ? numbers[ids.First] : mapped.Second;
    }
    if (VQSTATUS status = vq::WritePABIDs(*object, mapped)) return status;
  }
  *newHighestPABID = static_cast<unsigned short>(numbers.Highest());
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::ResetPABReferences(VQRTObjectBody* start, VQRTObjectBody* end, unsigned short source,
                                               unsigned short destination) {
  if (!start) return VQERR_INVALID_PARAMETER;
  for (VQRTObjectBody* reference = start; reference != end;) {
    if (!reference) return VQERR_CORRUPTED;
    if (VQSTATUS status = vq::WritePABIDs(*reference, {source, destination})) return status;
    reference = NextOfType(reference, VQRTTYPE_PAB_REFERENCE);
    if (!reference && !end) break;
  }
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::DeleteRepairLinks(VQRTObjectBody* first, VQRTObjectBody* behind,
                                              std::vector<VQRTObjectBody*>* moved) {
  if (!first) return VQERR_INVALID_PARAMETER;
  VQRTContainerBody& root = pab::Root(*this);
  Objects definitions;
  for (VQRTObjectBody* object = first; object && object != behind; object = root.NextInTree(object)) {
    if (object->IsType(VQRTTYPE_PAB_DEFINITION)) definitions.push_back(object);
  }
  for (VQRTObjectBody* definition : definitions) {
    if (VQSTATUS status = RescueDefinition(root, definition, behind, moved)) return status;
  }
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::RestoreParagraphs() {
  if (!IsType(VQRTTYPE_RICH_TEXT) && !IsType(VQRTTYPE_TABLE_CELL)) return VQ_OK;
  VQRTObjectBody* object = GetFirstChild();
  while (object && object->IsType(VQRTTYPE_PAB_OBJECT) && !object->IsType(VQRTTYPE_PAB_REFERENCE)) {
    object = object->GetNext();
  }
  if (!object || !object->IsType(VQRTTYPE_PAB_REFERENCE)) {
    unsigned short pabid = 0;
    if (VQSTATUS status = GetNewPABID(&pabid)) return status;
    VQRTObject reference = vq::MakePABReference({pabid, pabid});
    if (VQSTATUS status = pab::InsertAt({this, object}, reference.GetRTObjectBody())) return status;
  }
  if (FirstOfType(VQRTTYPE_STYLIZED_TEXT)) return VQ_OK;
  VQRTObject text;
  if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
  return Append(text.GetRTObjectBody());
}
