// Container operations that keep paragraph identifiers unique and references valid.
#include <map>
#include <set>

#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqrttabl.h"

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

// Numbers for a text: those above its highest one, then those that none of its objects uses.
class FreeNumbers {
 public:
  FreeNumbers(unsigned highest, const VQRTBaseContainerBody* text)
      : Text(text), Next(highest + 1), End(text ? highest : 0) {}

  // 0 when all are used up.
  std::uint16_t Take() {
    if (!Above) return TakeUnused();
    if (Next <= kHighestPossible) return static_cast<std::uint16_t>(Next++);
    Above = false;
    Next = 1;
    if (Text) Collect();
    return TakeUnused();
  }
  // The highest one of the text with what was taken.
  std::uint16_t Highest() const { return static_cast<std::uint16_t>(Above ? Next - 1 : kHighestPossible); }

 private:
  void Collect() {
    for (const VQRTObjectBody* object : ParagraphObjects(*Text)) {
      vq::PABIDs ids = pab::IDsOf(*object);
      Used.insert({ids.First, ids.Second});
    }
  }
  std::uint16_t TakeUnused() {
    while (Next <= End && Used.contains(static_cast<std::uint16_t>(Next))) ++Next;
    if (Next > End) return 0;
    return static_cast<std::uint16_t>(Next++);
  }

  const VQRTBaseContainerBody* Text;
  unsigned Next;
  unsigned End;  // those above it are given out first
  bool Above = true;
  std::set<std::uint16_t> Used;
};

// New numbers for old ones, given out in the order of first use.
class Renumbering {
 public:
  Renumbering(unsigned highest, const VQRTBaseContainerBody* target) : Free(highest, target) {}

  [[nodiscard]] VQSTATUS Add(std::uint16_t old) {
    if (Numbers.contains(old)) return VQ_OK;
    std::uint16_t number = Free.Take();
    if (number == 0) return VQERR_OUT_OF_RANGE;
    Numbers.emplace(old, number);
    return VQ_OK;
  }
  std::uint16_t operator[](std::uint16_t old) const { return Numbers.at(old); }
  std::uint16_t Highest() const { return Free.Highest(); }

 private:
  FreeNumbers Free;
  std::map<std::uint16_t, std::uint16_t> Numbers;
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

VQSTATUS MoveBefore(VQRTObjectBody* object, VQRTObjectBody* place) {
  VQRTObject hold(object);
  if (VQSTATUS status = object->RemoveThis(1)) return status;
  return place->InsertPreviousSibling(object);
}

// Moves a definition, and what belongs to it, in front of its user unless the user has one further left.
VQSTATUS RescueDefinition(const VQRTBaseContainerBody& root, VQRTObjectBody* definition, VQRTObjectBody* user,
                          Objects* moved) {
  if (pab::FindLeft(root, definition, VQRTTYPE_PAB_DEFINITION, pab::IDsOf(*definition).First)) return VQ_OK;
  VQRTObjectBody* companion = pab::Companion(*definition);
  for (VQRTObjectBody* object : {definition, companion}) {
    if (!object) continue;
    if (VQSTATUS status = MoveBefore(object, user)) return status;
    if (moved) moved->push_back(object);
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQRTContainerBody::GetNewPABID(unsigned short* pabid) {
  if (!pabid) return VQERR_INVALID_PARAMETER;
  VQRTContainerBody& root = pab::Root(*this);
  if (&root != this) return root.GetNewPABID(pabid);
  FreeNumbers numbers(HighestPABID, this);
  std::uint16_t id = numbers.Take();
  if (id == 0) return VQERR_OUT_OF_RANGE;
  HighestPABID = numbers.Highest();
  *pabid = id;
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::ReassignPABIDs(unsigned short highest, unsigned short* newHighestPABID,
                                           VQRTContainerBody* target) {
  VQ_ASSERT(newHighestPABID, "VQRTCONT");
  Objects objects = ParagraphObjects(*this);
  Defined defined(objects);
  VQRTObjectBody* fallback = target ? target->FirstOfType(VQRTTYPE_PAB_REFERENCE) : nullptr;
  auto isForeign = [&](vq::PABIDs ids) { return fallback && !defined.Definitions.contains(ids.Second); };

  Renumbering numbers(highest, target);
  for (const VQRTObjectBody* object : objects) {
    vq::PABIDs ids;
    if (VQSTATUS status = vq::ReadPABIDs(*object, &ids)) return status;
    if (object->IsType(VQRTTYPE_PAB_REFERENCE) && isForeign(ids)) continue;
    VQSTATUS status = defined.Any.contains(ids.First) ? numbers.Add(ids.First) : VQ_OK;
    if (status == VQ_OK) status = numbers.Add(ids.Second);
    if (status != VQ_OK) return status;
  }

  for (VQRTObjectBody* object : objects) {
    vq::PABIDs ids = pab::IDsOf(*object);
    vq::PABIDs mapped;
    if (object->IsType(VQRTTYPE_PAB_REFERENCE) && isForeign(ids)) {
      mapped = pab::IDsOf(*fallback);
    } else {
      mapped.Second = numbers[ids.Second];
      mapped.First = defined.Any.contains(ids.First) ? numbers[ids.First] : mapped.Second;
    }
    if (mapped.First == ids.First && mapped.Second == ids.Second) continue;
    if (VQSTATUS status = vq::WritePABIDs(*object, mapped)) return status;
  }
  *newHighestPABID = numbers.Highest();
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
  if (definitions.empty()) return VQ_OK;
  // Before anything moves: an index that was made for the occasion is not told of moves.
  std::vector<VQRTObjectBody*> users;
  pab::IndexOf index(root);
  for (const VQRTObjectBody* definition : definitions) {
    users.push_back(index->FindUser(behind, pab::IDsOf(*definition).First));
  }
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    if (!users[i]) continue;
    if (VQSTATUS status = RescueDefinition(root, definitions[i], users[i], moved)) return status;
  }
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::RestoreParagraphs() {
  if (!IsType(VQRTTYPE_RICH_TEXT) && !IsType(VQRTTYPE_TABLE_CELL)) return VQ_OK;
  VQRTObjectBody* object = GetFirstChild();
  const bool cell = IsType(VQRTTYPE_TABLE_CELL);
  while (object && !pab::IsContent(object) && !object->IsType(VQRTTYPE_PAB_REFERENCE)) {
    if (!cell && object->IsType(VQRTTYPE_NEW_PARAGRAPH)) break;
    object = object->GetNext();
  }
  if (!object || !object->IsType(VQRTTYPE_PAB_REFERENCE)) {
    unsigned short pabid = cell ? static_cast<VQTableCellBody*>(this)->GetColumnPABID() : 0;
    if (VQSTATUS status = pabid == 0 ? GetNewPABID(&pabid) : VQ_OK) return status;
    VQRTObject reference = vq::MakePABReference({pabid, pabid});
    if (VQSTATUS status = pab::InsertAt({this, object}, reference.GetRTObjectBody())) return status;
  }
  if (FirstOfType(VQRTTYPE_STYLIZED_TEXT)) return VQ_OK;
  VQRTObject text;
  if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
  return Append(text.GetRTObjectBody());
}
