// Container operations that find, compare and set paragraph styles.
#include <map>
#include <tuple>
#include <vector>

#include "vq/richtext/fontplace.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/richtext/vqstyltx.h"

namespace pab = vq::pab;

namespace {

VQSTATUS ObjectAt(const VQRTCursor& cursor, bool right, VQRTObject* object) {
  if (!cursor.IsValid()) return VQERR_CURSOR_INVALID;
  VQSTATUS status = right ? cursor.GetNextObject(object) : cursor.GetPreviousObject(object);
  if (status != VQWARN_NOT_FOUND) return status;
  return right ? cursor.GetPreviousObject(object) : cursor.GetNextObject(object);
}

VQSTATUS StyleOf(VQPABDefinitionBody* definition, VQRTObjectBody* hide, VQRTObjectBody* name, VQParagraphStyle* style) {
  if (!name) {
    VQParagraphStyleBody* body = new VQParagraphStyleBody;
    VQParagraphStyle made(body);
    VQSTATUS status = body->CopySettings(definition, hide);
    if (status == VQ_OK) *style = made;
    return status;
  }
  VQNamedStyleBody* body = new VQNamedStyleBody;
  VQNamedStyle made(body);
  if (VQSTATUS status = body->CopySettings(definition, hide)) return status;
  if (VQSTATUS status = body->CopyName(static_cast<VQPABStyleNameBody*>(name))) return status;
  *style = made;
  return VQ_OK;
}

// A search for a hide record goes through the whole text, so it is for definitions that say they have one.
bool HasHideFormula(const VQRTObjectBody& definition) {
  CDPABDEFINITION record{};
  VQSTATUS status = static_cast<const VQPABDefinitionBody&>(definition).GetRecord(&record);
  return status == VQ_OK && (record.Flags & PABFLAG_HIDE_IF_FORMULA) != 0;
}

// Where a style is set: the container, the references that it is set on.
struct StyleRange {
  VQRTContainerBody* Container = nullptr;
  VQRTObjectBody* First = nullptr;
  VQRTObjectBody* Last = nullptr;
  VQRTObjectBody* Behind = nullptr;  // the reference behind the last one, null at the end
};

// A table's end counts as the table's last cell.
VQRTObjectBody* CellOf(VQRTObjectBody* object) {
  if (object->IsType(VQRTTYPE_TABLE_END)) {
    while (object && !object->IsType(VQRTTYPE_TABLE_CELL)) object = object->GetPrevious();
    return object;
  }
  while (object && !object->IsType(VQRTTYPE_TABLE_CELL)) object = object->GetParent();
  return object;
}

VQSTATUS FindRange(VQRTContainerBody& root, const VQRTCursor& start, const VQRTCursor& end, StyleRange* range) {
  if (!start.IsValid(&root) || !end.IsValid(&root)) return VQERR_RT_NOT_MEMBER;
  VQRTObject first, last;
  if (VQSTATUS status = ObjectAt(start, true, &first)) return status;
  if (VQSTATUS status = ObjectAt(end, false, &last)) return status;
  VQRTObjectBody* firstCell = CellOf(first.GetRTObjectBody());
  VQRTObjectBody* lastCell = CellOf(last.GetRTObjectBody());
  if (firstCell && firstCell != lastCell) {
    // What stands right of a cell's end is the next cell.
    if (CellOf(start.GetElementBody()) != lastCell) return VQERR_INVALID_PARAMETER;
    first = VQRTObject(start.GetElementBody());
    firstCell = lastCell;
  }
  range->Container = firstCell ? static_cast<VQRTContainerBody*>(firstCell) : &root;
  range->First = pab::ReferenceFor(*range->Container, first.GetRTObjectBody());
  if (!range->First) return VQERR_RT_NOT_MEMBER;
  range->Last = pab::ReferenceFor(*range->Container, last.GetRTObjectBody());
  if (!range->Last || range->Last->IsLeftOf(range->First)) range->Last = range->First;
  range->Behind = range->Container->NextOfType(range->Last, VQRTTYPE_PAB_REFERENCE);
  return VQ_OK;
}

// The font of a named style, null without one. The text's table takes its face before anything else is changed, as it
// may be full.
VQSTATUS PrepareFont(const StyleRange& range, const VQParagraphStyle& style, VQFontStyle* font) {
  VQNamedStyleBody* named = VQNamedStyle(style).GetNamedStyleBody();
  VQSTATUS status = named->StyleName().GetFontStyle(font);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  return vq::EnterStyle(*range.First, *font);
}

VQSTATUS SetFonts(const StyleRange& range, const VQFontStyle& font) {
  if (font.IsNull()) return VQ_OK;
  VQRTObjectBody* object = range.Container->NextInTree(range.First);
  for (; object && object != range.Behind; object = range.Container->NextInTree(object)) {
    if (!object->IsType(VQRTTYPE_STYLIZED_TEXT)) continue;
    VQSTATUS status = static_cast<VQStylizedTextBody*>(object)->ApplyFontStyle(font, VQFONTMASK_ALL);
    if (VQIsError(status)) return status;
  }
  return VQ_OK;
}

// Takes an object that stands right of the first reference out and puts it in front, so that it precedes its use.
VQSTATUS MoveInFront(VQRTObjectBody* object, VQRTObjectBody* reference) {
  if (!object || object->IsLeftOf(reference)) return VQ_OK;
  VQRTObject hold(object);
  if (VQSTATUS status = object->RemoveThis(1)) return status;
  return reference->InsertPreviousSibling(object);
}

VQSTATUS PutCopy(VQRTObjectBody* source, std::uint16_t pabid, VQRTObjectBody* reference) {
  VQRTObject copy;
  if (VQSTATUS status = pab::CopyOf(source, &copy)) return status;
  VQRTObjectBody* body = copy.GetRTObjectBody();
  if (VQSTATUS status = vq::WritePABIDs(*body, {pabid, pabid})) return status;
  if (VQSTATUS status = reference->InsertPreviousSibling(body)) return status;
  return body->IsType(VQRTTYPE_PAB_STYLE_NAME) ? vq::EnterFonts(*body) : VQ_OK;
}

// Puts the style's records in front of the reference under a new identifier.
VQSTATUS PutRecords(VQParagraphStyleBody& style, std::uint16_t pabid, VQRTObjectBody* reference) {
  bool named = style.GetClassID() == VQCLASSID_VQNAMEDSTYLEBODY;
  VQPABStyleNameBody* name = named ? &static_cast<VQNamedStyleBody&>(style).StyleName() : nullptr;
  VQRTObjectBody* hide = style.Hide().GetRTObjectBody();
  if (hide) VQ_ASSERT_TEXT(name == nullptr, "stylename.IsNull()", "VQRTCONT");
  if (name) VQ_ASSERT_TEXT(hide == nullptr, "pabhide.IsNull()", "VQRTCONT");
  if (VQSTATUS status = PutCopy(&style.Definition(), pabid, reference)) return status;
  VQRTObjectBody* companion = hide ? hide : static_cast<VQRTObjectBody*>(name);
  return companion ? PutCopy(companion, pabid, reference) : VQ_OK;
}

// A named style is redefined wherever the text uses its name.
VQSTATUS Redefine(VQNamedStyleBody& style, VQPABDefinitionBody* definition, VQPABStyleNameBody* name) {
  vq::PABIDs definitionIDs = pab::IDsOf(*definition);
  vq::PABIDs nameIDs = pab::IDsOf(*name);
  if (VQSTATUS status = definition->Copy(&style.Definition(), VQRTCOPYOPTIONS_KEEP_LINKS)) return status;
  if (VQSTATUS status = vq::WritePABIDs(*definition, definitionIDs)) return status;
  if (VQSTATUS status = name->Copy(&style.StyleName(), VQRTCOPYOPTIONS_KEEP_LINKS)) return status;
  if (VQSTATUS status = vq::WritePABIDs(*name, nameIDs)) return status;
  return vq::EnterFonts(*name);
}

enum class Match { kNone, kSame, kSameName };

Match MatchOfNamed(VQNamedStyleBody& style, const VQPABDefinitionBody& definition, const VQPABStyleNameBody& name) {
  bool equal = false;
  if (style.CompareNamed(definition, name, &equal) == VQ_OK && equal) return Match::kSame;
  VQPABStyleNameBody::Fields own, other;
  bool read = style.StyleName().Read(&own) == VQ_OK && name.Read(&other) == VQ_OK;
  return read && own.Name == other.Name ? Match::kSameName : Match::kNone;
}

// Whether this definition of the text is the style, or one to be redefined as it. What cannot be read is neither.
Match MatchOf(const VQParagraphStyle& style, const VQPABDefinitionBody& definition, const VQRTObjectBody* companion) {
  bool isName = companion && companion->IsType(VQRTTYPE_PAB_STYLE_NAME);
  if (style.IsNamed() != isName) return Match::kNone;
  VQParagraphStyleBody& body = *style.GetParagraphStyleBody();
  if (isName) {
    const VQPABStyleNameBody& name = static_cast<const VQPABStyleNameBody&>(*companion);
    return MatchOfNamed(static_cast<VQNamedStyleBody&>(body), definition, name);
  }
  bool equal = false;
  return body.Compare(definition, companion, &equal) == VQ_OK && equal ? Match::kSame : Match::kNone;
}

using ReferenceList = std::vector<VQRTObjectBody*>;

// A definition that says the same, null for none, and what belongs to it.
struct EqualStyle {
  VQPABDefinition Definition;
  VQRTObject Companion;
};

VQSTATUS FindEqual(VQRTContainerBody& container, const VQParagraphStyle& style, EqualStyle* equal) {
  const VQSTATUS found = container.FindSameParagraphStyle(style, &equal->Definition, &equal->Companion);
  return VQIsError(found) ? found : VQ_OK;
}

// The identifiers for references from `first` on: those of the equal definition, or of records of their own.
VQSTATUS PlaceStyle(const EqualStyle& equal, const VQParagraphStyle& style, std::uint16_t pabid, VQRTObjectBody* first,
                    vq::PABIDs* ids) {
  if (equal.Definition.IsNull()) {
    *ids = {pabid, pabid};
    return PutRecords(*style.GetParagraphStyleBody(), pabid, first);
  }
  *ids = pab::IDsOf(*equal.Definition.GetRTObjectBody());
  if (!equal.Companion.IsNull()) ids->First = pab::IDsOf(*equal.Companion.GetRTObjectBody()).First;
  if (VQSTATUS status = MoveInFront(equal.Definition.GetRTObjectBody(), first)) return status;
  return MoveInFront(equal.Companion.GetRTObjectBody(), first);
}

VQSTATUS WriteAll(const ReferenceList& references, const vq::PABIDs& ids) {
  for (VQRTObjectBody* reference : references) {
    if (VQSTATUS status = vq::WritePABIDs(*reference, ids)) return status;
  }
  return VQ_OK;
}

// Cells of a column that one definition styles. They keep their margins.
struct CellsOfColumn {
  VQTableCellBody* First;
  VQParagraphStyle Style;
  ReferenceList References;
};

// The references of a range: those in tables that it goes around or ends in, by columns, and the others.
struct SplitRange {
  ReferenceList Outside;
  std::vector<CellsOfColumn> Cells;
};

VQSTATUS Split(const StyleRange& range, const VQParagraphStyle& style, SplitRange* split) {
  const bool inCell = range.Container->GetType() == VQRTTYPE_TABLE_CELL;
  std::map<std::tuple<const VQRTObjectBody*, std::int32_t, std::uint16_t>, std::size_t> groups;
  for (VQRTObjectBody* reference = range.First; reference && reference != range.Behind;
       reference = range.Container->NextOfType(reference, VQRTTYPE_PAB_REFERENCE)) {
    auto* cell = inCell ? nullptr : static_cast<VQTableCellBody*>(CellOf(reference));
    if (!cell) {
      split->Outside.push_back(reference);
      continue;
    }
    const std::uint16_t present = pab::IDsOf(*cell->GetFirstReference()).Second;
    const auto [at, isNew] = groups.try_emplace({cell->GetParent(), cell->GetColumn(), present}, split->Cells.size());
    if (isNew) {
      split->Cells.push_back({cell, VQParagraphStyle(), {}});
      if (VQSTATUS status = cell->AdjustParagraphStyle(style, &split->Cells.back().Style)) return status;
    }
    split->Cells[at->second].References.push_back(reference);
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQRTContainerBody::AdjustParagraphStyle(const VQParagraphStyle& style, VQParagraphStyle* adjusted) {
  if (style.IsNull() || !adjusted) return VQERR_INVALID_PARAMETER;
  *adjusted = style.GetParagraphStyleBody()->Clone();
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style) {
  if (object.IsNull() || !style) return VQERR_INVALID_PARAMETER;
  VQRTContainerBody& root = pab::Root(*this);
  VQRTObjectBody* body = object.GetRTObjectBody();
  if (body->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (!root.Contains(body)) return VQERR_RT_NOT_MEMBER;
  VQRTObjectBody* reference = pab::ReferenceFor(root, body);
  if (!reference && !root.PreviousInTree(body)) reference = root.NextOfType(body, VQRTTYPE_PAB_REFERENCE);
  vq::PABIDs ids;
  VQRTObjectBody* definition = nullptr;
  if (reference) {
    if (VQSTATUS status = vq::ReadPABIDs(*reference, &ids)) return status;
    definition = pab::FindByPABID(root, reference, VQRTTYPE_PAB_DEFINITION, ids.Second);
  }
  if (!definition) {
    *style = VQParagraphStyle(new VQParagraphStyleBody);
    return VQ_OK;
  }
  VQRTObjectBody* companion = pab::Companion(*definition);
  VQRTObjectBody* name = companion && companion->IsType(VQRTTYPE_PAB_STYLE_NAME) ? companion : nullptr;
  VQRTObjectBody* hide = companion && !name && ids.First == ids.Second ? companion : nullptr;
  if (!hide && (HasHideFormula(*definition) || ids.First != ids.Second)) {
    hide = pab::FindByPABID(root, reference, VQRTTYPE_PAB_HIDE, ids.First);
  }
  return StyleOf(static_cast<VQPABDefinitionBody*>(definition), hide, name, style);
}

VQSTATUS VQRTContainerBody::FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style) {
  VQRTObject object;
  if (VQSTATUS status = ObjectAt(cursor, true, &object)) return status;
  return FindParagraphStyle(object, style);
}

VQSTATUS VQRTContainerBody::FindSameParagraphStyle(const VQParagraphStyle& style, VQPABDefinition* definition,
                                                   VQRTObject* companion) {
  if (style.IsNull() || !definition || !companion) return VQERR_INVALID_PARAMETER;
  CDPABDEFINITION settings{};
  if (VQSTATUS status = style.GetParagraphStyleBody()->Definition().GetRecord(&settings)) return status;
  pab::IndexOf index(pab::Root(*this));
  const vq::PABIndex::Objects& objects = style.IsNamed() ? index->GetNames() : index->GetDefinitions(settings);
  VQSTATUS found = VQWARN_NOT_FOUND;
  for (auto at = objects.lower_bound(this); at != objects.end(); ++at) {
    VQRTObjectBody* object = style.IsNamed() ? pab::NamedBy(**at) : *at;
    if ((*at)->GetIndexValue() > EndIndexValue) break;
    if (!object) continue;
    const VQRTObjectBody* table = vq::EnclosingTable(object);
    if (table && Contains(table)) continue;
    VQPABDefinitionBody* candidate = static_cast<VQPABDefinitionBody*>(object);
    VQRTObjectBody* behind = pab::Companion(*candidate);
    Match match = MatchOf(style, *candidate, behind);
    if (match == Match::kNone) continue;
    if (match == Match::kSameName) {
      VQNamedStyleBody& named = static_cast<VQNamedStyleBody&>(*style.GetParagraphStyleBody());
      if (VQSTATUS status = Redefine(named, candidate, static_cast<VQPABStyleNameBody*>(behind))) return status;
    }
    if (found != VQ_OK) {
      *definition = VQPABDefinition(candidate);
      *companion = behind ? VQRTObject(behind) : VQRTObject();
    }
    found = VQ_OK;
    // Texts that were put together define a name once each.
    if (!style.IsNamed()) break;
  }
  return found;
}

VQSTATUS VQRTContainerBody::SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end,
                                              const VQParagraphStyle& style) {
  if (style.IsNull() || start.IsNull() || end.IsNull()) return VQERR_INVALID_PARAMETER;
  if (!start.IsValid() || !end.IsValid()) return VQERR_CURSOR_INVALID;
  if (start > end) return VQERR_INVALID_PARAMETER;
  if (style.IsNamed() && !style.GetParagraphStyleBody()->Hide().IsNull()) return VQERR_INAPPROPRIATE;
  StyleRange range;
  if (VQSTATUS status = FindRange(pab::Root(*this), start, end, &range)) return status;
  VQParagraphStyle adjusted;
  if (VQSTATUS status = range.Container->AdjustParagraphStyle(style, &adjusted)) return status;
  SplitRange split;
  if (VQSTATUS status = Split(range, style, &split)) return status;
  VQFontStyle font;
  vq::FontGuard fonts(GetRichTextBody());
  if (adjusted.IsNamed()) {
    if (VQSTATUS status = PrepareFont(range, adjusted, &font)) return status;
  }
  VQRTContainerBody& root = pab::Root(*this);
  const unsigned short highest = root.GetHighestPABID();
  std::vector<std::uint16_t> pabids(split.Cells.size());
  if (VQSTATUS status = GetNewPABIDs(&pabids)) return status;
  EqualStyle equal;
  if (VQSTATUS status = FindEqual(*range.Container, adjusted, &equal)) return status;
  if (equal.Definition.IsNull()) {
    // All at once: where numbers are scarce, those asked for next are the same until these are used.
    root.SetHighestPABID(highest);
    pabids.push_back(0);
    if (VQSTATUS status = GetNewPABIDs(&pabids)) return status;
  }
  if (VQSTATUS status = SetFonts(range, font)) return status;
  vq::PABIDs ids;
  if (VQSTATUS status = PlaceStyle(equal, adjusted, pabids.empty() ? 0 : pabids.back(), range.First, &ids))
    return status;
  if (split.Cells.empty()) {
    VQSTATUS status = range.Container->ResetPABReferences(range.First, range.Behind, ids.First, ids.Second);
    if (status == VQ_OK) fonts.Keep();
    return status;
  }
  if (VQSTATUS status = WriteAll(split.Outside, ids)) return status;
  for (std::size_t i = 0; i < split.Cells.size(); ++i) {
    const CellsOfColumn& cells = split.Cells[i];
    EqualStyle same;
    if (VQSTATUS status = FindEqual(*cells.First, cells.Style, &same)) return status;
    if (VQSTATUS status = PlaceStyle(same, cells.Style, pabids[i], cells.References.front(), &ids)) return status;
    if (VQSTATUS status = WriteAll(cells.References, ids)) return status;
  }
  fonts.Keep();
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style) {
  return SetParagraphStyle(cursor, cursor, style);
}

VQSTATUS VQRTCursor::GetParagraphStyle(VQParagraphStyle* style) const {
  if (!style) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  VQRTBaseContainerBody* top = GetElementBody()->GetTop();
  if (!top || !top->IsType(VQRTTYPE_CONTAINER)) return vq::Apply(VQERR_CURSOR_NO_PARENT);
  return vq::Apply(static_cast<VQRTContainerBody*>(top)->FindParagraphStyle(*this, style));
}
