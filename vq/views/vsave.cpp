// VQViewFolderBody: writing the design items that have changed.
#include <algorithm>

#include "engine/database.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/frame/throwrule.h"
#include "vq/store/storetext.h"
#include "vq/views/mergedformula.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace design = vq::viewdesign;

namespace {

constexpr unsigned short kSignedSummary = VQITEMFLAGS_SIGN | VQITEMFLAGS_SUMMARY;
constexpr std::size_t kLongCode = 1024;  // from here on no summary
constexpr std::string_view kSelectAll = "@@SELECT@@ @@102@@";

std::string TextList(const std::vector<std::string>& entries) {
  std::string value(2 + 2 * entries.size(), '\0');
  auto* words = reinterpret_cast<unsigned char*>(value.data());
  vq::StoreWord(words, static_cast<unsigned>(entries.size()));
  for (const std::string& entry : entries) {
    words += 2;
    vq::StoreWord(words, static_cast<unsigned>(entry.size()));
  }
  for (const std::string& entry : entries) value += entry;
  return value;
}

}  // namespace

VQSTATUS VQViewFolderBody::SaveDesign() {
  const vq::OwnThrowRule throwing(true);
  try {
    if (HasState(kNew | kDesignChanged)) return SaveItems();
    return Flags.IsDirty() ? Flags.Write(this) : VQ_OK;
  } catch (VQSTATUS thrown) {
    return thrown;
  }
}

VQSTATUS VQViewFolderBody::SaveItems() {
  if (Name.IsNull()) return VQERR_VIEW_NAME_REQUIRED;
  VQSTATUS status = CheckAlias();
  if (status == VQ_OK) status = SettleColumns();
  if (status == VQ_OK) status = SaveTitle(Type == VQVFTYPE_FOLDER && HasState(kNameChanged));
  if (status == VQ_OK) status = SaveOrRemove("$PublicAccess", HasState(kPublicAccess), "1", VQITEMFLAGS_SUMMARY);
  if (status == VQ_OK) status = SaveSelection();
  if (status == VQ_OK && HasState(kColumnsChanged)) status = SaveCollations();
  if (status == VQ_OK) status = SaveFormat();
  if (status == VQ_OK) status = SaveCalendar();
  if (status == VQ_OK) status = SaveRest();
  if (status == VQ_OK) SetState(kDesignChanged | kColumnsChanged, false);
  return status;
}

VQSTATUS VQViewFolderBody::SaveValue(std::string_view item, unsigned short type, std::string_view value,
                                     unsigned short flags) {
  return CreateItem(item, type, value.data(), value.size(), flags, VQITEMOPTION_REPLACE, nullptr);
}

// Line breaks are zero bytes in stored text.
VQSTATUS VQViewFolderBody::SaveText(std::string_view item, std::string_view text, unsigned short flags) {
  std::string value(text);
  std::replace(value.begin(), value.end(), '\n', '\0');
  return SaveValue(item, TYPE_TEXT, value, flags);
}

VQSTATUS VQViewFolderBody::Remove(std::string_view item) {
  const VQSTATUS status = DeleteItems(item);
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQSTATUS VQViewFolderBody::SaveOrRemove(std::string_view item, bool keep, std::string_view text, unsigned short flags) {
  return keep ? SaveText(item, text, flags) : Remove(item);
}

// The engine refuses a folder's name when a view or folder has it; so must be its alias.
VQSTATUS VQViewFolderBody::CheckAlias() const {
  if (Type != VQVFTYPE_FOLDER || Alias.IsNull()) return VQ_OK;
  const std::vector<std::string> stored = NamesInTitle();
  return std::find(stored.begin(), stored.end(), vq::ViewOf(Alias)) != stored.end() ? VQ_OK : CheckFree(Alias);
}

VQSTATUS VQViewFolderBody::CheckFree(const VQString& name) const {
  std::uint32_t found = 0;
  const std::string text(vq::ViewOf(name));
  const ENGSTATUS result =
      EngDesignFind(GetDatabaseBody()->GetHandle(), VQSLATECLASS_VIEW, vq::EngineText(text), &found);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_DESIGN_ELEMENT) return VQ_OK;
  if (result == ENG_OK && found != GetID()) return vq::FromEngine(ENG_ERR_FOLDER_EXISTS);
  return vq::FromEngine(result);
}

// A folder takes its true name by a rename in the engine, once it is stored. Further synonyms, between name and alias,
// stay until the name changes.
VQSTATUS VQViewFolderBody::SaveTitle(bool temporary) {
  if (!temporary && !HasState(kNameChanged)) {
    const std::vector<std::string> stored = NamesInTitle();
    if (stored.size() > 2 && stored.front() == vq::ViewOf(Name) && stored.back() == vq::ViewOf(Alias)) return VQ_OK;
  }
  std::string title(vq::ViewOf(Name));
  if (temporary) {
    std::replace(title.begin(), title.end(), '_', '$');
    title += '$';
  }
  if (!Alias.IsNull()) title.append("|").append(vq::ViewOf(Alias));
  VQSTATUS status = SaveText("$TITLE", title, kSignedSummary);
  if (status == VQ_OK && Type == VQVFTYPE_FOLDER) status = SaveText("$Name", title, kSignedSummary);
  return status;
}

std::string VQViewFolderBody::NextItemName() {
  std::string name;
  do {
    name = "$" + std::to_string(TableRecord.ItemSequenceNumber++);
  } while (Columns.HasName(name));
  return name;
}

// What a column has pending. Nothing here reaches the slate, and doing it twice does no harm.
VQSTATUS VQViewFolderBody::SettleColumn(VQVFColumnBody* column) {
  unsigned short dirty = column->GetDirtyFlags();
  if ((dirty & VQVFColumnBody::kDropConstant) != 0) column->ConstantValue().clear();
  dirty &= static_cast<unsigned short>(~VQVFColumnBody::kDropConstant);
  column->SetDirtyFlags(dirty);
  if (!column->ConstantValue().empty()) return VQ_OK;
  if ((dirty & VQVFColumnBody::kGenerateName) != 0) {
    if (column->HasFormula() && column->GetInternalName().IsNull()) {
      column->LoadName(NextItemName());
    }
    dirty &= static_cast<unsigned short>(~VQVFColumnBody::kGenerateName);
  }
  if ((dirty & VQVFColumnBody::kRecompile) != 0 && column->HasFormula()) {
    VQFormulaBody* formula = column->Formula().GetFormulaBody();
    if (VQSTATUS status = formula->EnsureText()) return status;
    if (VQSTATUS status = formula->Compile(VQString(formula->GetText()), nullptr, nullptr)) return status;
  }
  column->SetDirtyFlags(dirty & static_cast<unsigned short>(~VQVFColumnBody::kRecompile));
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::SettleColumns() {
  VQSTATUS status = VQ_OK;
  for (std::uint32_t i = 0; status == VQ_OK && i < Columns.GetCount(); ++i) status = SettleColumn(Columns[i]);
  return status;
}

VQSTATUS VQViewFolderBody::SaveSelection() {
  if (!design::HasCode(SelectionFormula)) {
    if (VQSTATUS status = design::CompileFormula(vq::StringOf(kSelectAll), &SelectionFormula)) return status;
    if (!HasState(kSelectionChanged)) SetState(kSelectionChanged | kNoFormulaTV, true);
  }
  if (!HasState(kSelectionChanged | kRebuildFormula)) return VQ_OK;
  design::MergedFormula merged(SelectionFormula);
  VQSTATUS status = MergeColumns(&merged);
  if (status == VQ_OK) status = SaveCode("$Formula", merged.Code());
  if (status == VQ_OK) status = SaveText("$FormulaClass", "1", kSignedSummary);
  if (status == VQ_OK && !HasState(kNoFormulaTV)) status = SaveText("$FormulaTV", {}, VQITEMFLAGS_SUMMARY);
  if (status == VQ_OK) status = Remove("$SelQuery");
  if (status == VQ_OK) SetState(kSelectionChanged | kRebuildFormula, false);
  return status;
}

VQSTATUS VQViewFolderBody::MergeColumns(design::MergedFormula* merged) {
  VQSTATUS status = VQ_OK;
  for (std::uint32_t i = 0; status == VQ_OK && i < Columns.GetCount(); ++i) {
    VQVFColumnBody& column = *Columns[i];
    if (!column.ConstantValue().empty()) continue;
    const std::string& name = column.GetStoredName();
    if (name.empty()) continue;
    status = column.HasFormula() ? merged->AddColumn(name, design::CodeOf(column.Formula())) : merged->AddName(name);
  }
  if (status == VQ_OK && (TableRecord.Flags & VIEWTABLE_CONFLICTS) != 0) status = merged->AddName("$Conflict");
  if (status == VQ_OK && (TableRecord.Flags & VIEWTABLE_FLAT) == 0) status = merged->AddName("$REF");
  if (status == VQ_OK && !merged->IsMerged()) status = merged->AddName("$$$$");
  return status;
}

VQSTATUS VQViewFolderBody::SaveCode(std::string_view item, std::string_view code) {
  return SaveValue(item, design::kTypeFormula, code, code.size() < kLongCode ? kSignedSummary : VQITEMFLAGS_SIGN);
}

VQSTATUS VQViewFolderBody::SaveCollations() {
  VQSTATUS status = DeleteItemsOfType(design::kTypeCollation);
  unsigned number = 1;
  for (std::uint32_t i = 0; status == VQ_OK && i < Columns.GetCount(); ++i) status = SaveResorts(i, &number);
  std::vector<design::SortColumn> sorted;
  for (std::uint32_t i = 0; i < Columns.GetCount(); ++i) {
    if (Columns[i]->HasFlag(VIEWCOLUMN_SORTED)) sorted.push_back({i, design::Direction::OfColumn});
  }
  const unsigned char flags = HasState(kUniqueKeys) ? COLLATION_UNIQUE : 0;
  if (status == VQ_OK && !sorted.empty()) status = SaveCollation("$Collation", sorted, flags);
  return status == VQ_OK ? SaveTotals() : status;
}

VQSTATUS VQViewFolderBody::SaveCollation(const std::string& item, std::span<const design::SortColumn> sort,
                                         unsigned char flags) {
  std::string value;
  if (VQSTATUS status = design::WriteCollation(Columns, sort, flags, &value)) return status;
  return SaveValue(item, design::kTypeCollation, value, VQITEMFLAGS_SUMMARY);
}

// The sort orders that a click on a column's heading changes to.
VQSTATUS VQViewFolderBody::SaveResorts(std::uint32_t index, unsigned* number) {
  VQVFColumnBody& column = *Columns[index];
  const std::uint32_t second = column.Extension().SecondarySortColumn;
  const bool has_second = column.HasFlag(VIEWCOLUMN_SECOND_SORT) && second < Columns.GetCount();
  const design::Direction second_order =
      column.HasFlag(VIEWCOLUMN_SECOND_DESCENDING) ? design::Direction::Descending : design::Direction::Ascending;
  const std::pair<unsigned, design::Direction> orders[] = {
      {VIEWCOLUMN_RESORT_ASCENDING, design::Direction::Ascending},
      {VIEWCOLUMN_RESORT_DESCENDING, design::Direction::Descending},
  };
  for (const auto& [bit, order] : orders) {
    if (!column.HasFlag(static_cast<unsigned short>(bit))) continue;
    std::vector<design::SortColumn> sort{{index, order}};
    if (has_second) sort.push_back({second, second_order});
    if (VQSTATUS status = SaveCollation("$Collation" + std::to_string((*number)++), sort, 0)) return status;
  }
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::SaveTotals() {
  std::vector<std::string> totals;
  for (std::uint32_t i = 0; i < Columns.GetCount(); ++i) {
    const unsigned option = Columns[i]->Record().Flags2 & VIEWCOLUMN_TOTAL_MASK;
    if (option != 0) totals.push_back(std::to_string(option / 4));
  }
  if (totals.empty()) return Remove("$Totals");
  return SaveValue("$Totals", TYPE_TEXT_LIST, TextList(totals), kSignedSummary);
}

VQSTATUS VQViewFolderBody::SaveFormat() {
  std::string value;
  VQSTATUS status = design::WriteFormat(Format(), &value);
  if (status == VQ_OK) status = SaveValue("$ViewFormat", design::kTypeViewFormat, value, kSignedSummary);
  if (status != VQ_OK) return status;
  for (std::uint32_t i = 0; i < Columns.GetCount(); ++i) Columns[i]->SetDirtyFlags(0);
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::SaveCalendar() {
  if (!IsCalendar()) return Remove("$CalendarFormat");
  std::string value;
  const VQSTATUS status = design::WriteCalendar(CalendarRecord, &value);
  return status == VQ_OK ? SaveValue("$CalendarFormat", design::kTypeCalendar, value, kSignedSummary) : status;
}

VQSTATUS VQViewFolderBody::SaveTexts(std::string_view item, const VQText& texts, unsigned short flags, bool keep) {
  if (!keep) return Remove(item);
  if (texts.IsNull()) return SaveText(item, {}, flags);
  return CreateCopy(item, texts.GetItemBody(), flags, VQITEMOPTION_REPLACE, nullptr);
}

VQSTATUS VQViewFolderBody::SaveRest() {
  const std::string_view form = design::CodeOf(FormFormula);
  VQSTATUS status = form.empty() ? Remove("$FormFormula") : SaveCode("$FormFormula", form);
  if (status == VQ_OK) status = SaveText("$Comment", vq::ViewOf(Comment), kSignedSummary);
  if (status == VQ_OK && HasState(kColumnsChanged)) Flags.SetLetter('T', false);
  if (status == VQ_OK) status = Flags.Write(this);
  const bool inherits = !Flags.HasLetter('P') && !InheritsFromTemplateName.IsNull();
  if (status == VQ_OK) {
    status = SaveOrRemove("$Class", inherits, vq::ViewOf(InheritsFromTemplateName), VQITEMFLAGS_SUMMARY);
  }
  constexpr unsigned short kReaderFlags = VQITEMFLAGS_READERS | VQITEMFLAGS_SUMMARY | VQITEMFLAGS_SIGN;
  constexpr unsigned short kUpdaterFlags = VQITEMFLAGS_READERS_WRITERS | VQITEMFLAGS_SUMMARY | VQITEMFLAGS_SIGN;
  if (status == VQ_OK) status = SaveTexts("$Readers", Readers, kReaderFlags, !HasState(kAllReaders));
  if (status == VQ_OK && Type == VQVFTYPE_FOLDER) {
    status = SaveTexts("$Updaters", Authors, kUpdaterFlags, !HasState(kAllAuthors));
  }
  return status == VQ_OK ? SaveClass() : status;
}

VQSTATUS VQViewFolderBody::SaveClass() {
  const std::uint16_t bits = HasState(kDefault) ? GetSlateClass() | VQSLATECLASS_DEFAULT
                                                : static_cast<std::uint16_t>(GetSlateClass() & ~VQSLATECLASS_DEFAULT);
  if (bits == GetSlateClass()) return VQ_OK;
  SetDirty();
  return vq::FromEngine(EngSlateSetHeader(GetHandle(), ENG_SLATE_CLASS, &bits));
}
