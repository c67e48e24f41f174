// Container operations that keep paragraph identifiers unique and references valid.
#include <array>
#include <memory>
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

// Something for each identifier; many are few and near each other.
template <typename Value>
class ByID {
 public:
  Value& operator[](std::uint16_t id) {
    std::unique_ptr<Page>& page = Pages[id >> 8];
    if (!page) page = std::make_unique<Page>();
    return (*page)[id & 0xFF];
  }

 private:
  using Page = std::array<Value, 0x100>;
  std::array<std::unique_ptr<Page>, 0x100> Pages;
};

// What a text says of an identifier.
struct Meaning {
  bool HasDefinition = false;
  bool HasRecord = false;    // a definition, or what a formula reference takes its formula or name from
  std::uint16_t Number = 0;  // the new one, 0 while there is none
};

struct Paragraph {
  VQRTObjectBody* Object;
  vq::PABIDs Old, IDs;
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
  std::vector<std::uint16_t> ids(1);
  const VQSTATUS status = GetNewPABIDs(&ids);
  if (status == VQ_OK) *pabid = ids.front();
  return status;
}

VQSTATUS VQRTContainerBody::GetNewPABIDs(std::vector<std::uint16_t>* pabids) {
  VQRTContainerBody& root = pab::Root(*this);
  if (&root != this) return root.GetNewPABIDs(pabids);
  FreeNumbers numbers(HighestPABID, this);
  for (std::uint16_t& id : *pabids) {
    id = numbers.Take();
    if (id == 0) return VQERR_OUT_OF_RANGE;
  }
  if (!pabids->empty()) HighestPABID = numbers.Highest();
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::ReassignPABIDs(unsigned short highest, unsigned short* newHighestPABID,
                                           VQRTContainerBody* target) {
  VQ_ASSERT(newHighestPABID, "VQRTCONT");
  std::vector<Paragraph> paragraphs;
  ByID<Meaning> meanings;
  VQRTObjectBody* object = FirstOfType(VQRTTYPE_PAB_OBJECT);
  for (; object; object = NextOfType(object, VQRTTYPE_PAB_OBJECT)) {
    vq::PABIDs ids;
    // A record that ends before its identifier stays as it is.
    if (vq::ReadPABIDs(*object, &ids) != VQ_OK) continue;
    Paragraph& paragraph = paragraphs.emplace_back(Paragraph{object, ids, {}});
    paragraph.IDs = paragraph.Old;
    if (object->IsType(VQRTTYPE_PAB_REFERENCE)) continue;
    Meaning& meaning = meanings[paragraph.IDs.First];
    meaning.HasRecord = true;
    if (object->GetType() == VQRTTYPE_PAB_DEFINITION) meaning.HasDefinition = true;
  }
  const VQRTObjectBody* fallback = target ? target->FirstOfType(VQRTTYPE_PAB_REFERENCE) : nullptr;
  const vq::PABIDs foreign = fallback ? pab::IDsOf(*fallback) : vq::PABIDs{};

  FreeNumbers numbers(highest, target);
  const auto renumber = [&](std::uint16_t* id) {
    std::uint16_t& number = meanings[*id].Number;
    if (number == 0) number = numbers.Take();
    *id = number;
    return number != 0;
  };
  for (Paragraph& paragraph : paragraphs) {
    vq::PABIDs& ids = paragraph.IDs;
    if (fallback && paragraph.Object->IsType(VQRTTYPE_PAB_REFERENCE) && !meanings[ids.Second].HasDefinition) {
      ids = foreign;
      continue;
    }
    const bool own = meanings[ids.First].HasRecord;
    if (own && !renumber(&ids.First)) return VQERR_OUT_OF_RANGE;
    if (!renumber(&ids.Second)) return VQERR_OUT_OF_RANGE;
    if (!own) ids.First = ids.Second;
  }
  for (const Paragraph& paragraph : paragraphs) {
    if (paragraph.IDs.First == paragraph.Old.First && paragraph.IDs.Second == paragraph.Old.Second) continue;
    if (VQSTATUS status = vq::WritePABIDs(*paragraph.Object, paragraph.IDs)) return status;
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
