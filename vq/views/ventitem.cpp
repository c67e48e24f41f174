// Column values of an entry: from the row's summary, from the column's constant, or from its formula.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/collection.h"
#include "engine/idtable.h"
#include "engine/status.h"
#include "engine/text.h"
#include "vq/store/storetext.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"
#include "vq/views/entryrow.h"
#include "vq/views/viewbody.h"

namespace {

constexpr char kMarker = 0x7F;
constexpr std::size_t kTypeWord = 2;
constexpr std::size_t kLargestValue = 0xFFFF;
constexpr std::size_t kSmallestExpansion = 128;

const unsigned char* Bytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

// A value that stands alone, of the class of its type; other types and no value give a null item.
void MakeItem(std::span<const unsigned char> value, VQItem* item) {
  if (value.size() <= kTypeWord) return;
  const unsigned char* data = value.data() + kTypeWord;
  const unsigned long size = value.size() - kTypeWord;
  const unsigned short type = vq::LoadWord(value.data());
  switch (type) {
    case TYPE_NUMBER:
    case TYPE_NUMBER_RANGE:
      *item = new VQNumbersBody(type, data, size);
      break;
    case TYPE_TIME:
    case TYPE_TIME_RANGE:
      *item = new VQDatetimesBody(type, data, size);
      break;
    case TYPE_TEXT:
    case TYPE_TEXT_LIST:
      *item = new VQTextBody(type, data, size);
      break;
    default:
      break;
  }
}

bool HasMarkers(std::string_view constant) {
  if (constant.size() <= kTypeWord) return false;
  const unsigned short type = vq::LoadWord(Bytes(constant));
  return (type == TYPE_TEXT || type == TYPE_TEXT_LIST) && constant.find(kMarker, kTypeWord) != std::string_view::npos;
}

// What the engine takes to expand the markers for one row.
struct Expansion {
  std::uint32_t ID;
  const COLLECTIONPOSITION* Position;
  unsigned char Statistics[3 * sizeof(std::uint32_t)];
  ENGHANDLE Table;
  VQString DatabaseTitle;
  VQString ViewTitle;
};

// The output starts with four times the text's length and grows for long titles.
VQSTATUS ExpandText(const Expansion& row, std::string_view text, std::string* expanded) {
  std::size_t room = std::max(kSmallestExpansion, 4 * text.size());
  for (;; room *= 4) {
    expanded->resize(std::min(room, kLargestValue));
    std::uint16_t length = 0;
    const ENGSTATUS result = EngCollectionTranslateSpecial(
        vq::EngineText(text), static_cast<std::uint16_t>(text.size()), reinterpret_cast<ENGCHAR*>(expanded->data()),
        static_cast<std::uint16_t>(expanded->size()), row.ID, row.Position, row.Statistics, nullptr, row.Table,
        row.DatabaseTitle.GetBuf(), row.ViewTitle.GetBuf(), &length);
    if (result == ENG_OK) expanded->resize(length);
    if (result != ENG_ERR_BUFFER_SIZE || room >= kLargestValue) return vq::FromEngine(result);
  }
}

void AppendWord(std::string* bytes, std::size_t word) {
  bytes->push_back(static_cast<char>(word & 0xFF));
  bytes->push_back(static_cast<char>(word >> 8));
}

// `list` and the result have the type word.
VQSTATUS ExpandList(const Expansion& row, std::string_view list, std::string* expanded) {
  VQSTATUS status = vq::FromEngine(EngTextListVerify(list.data(), 1, static_cast<std::uint32_t>(list.size())));
  if (status != VQ_OK) return status;
  const std::uint16_t count = EngTextListCount(list.data(), 1);
  std::string lengths;
  std::string texts;
  for (std::uint16_t i = 0; status == VQ_OK && i < count; ++i) {
    const ENGCHAR* text = nullptr;
    std::uint16_t length = 0;
    std::string one;
    status = vq::FromEngine(EngTextListGetEntry(list.data(), 1, i, &text, &length));
    if (status == VQ_OK) status = ExpandText(row, {reinterpret_cast<const char*>(text), length}, &one);
    AppendWord(&lengths, one.size());
    texts += one;
    if (2 * kTypeWord + lengths.size() + texts.size() > kLargestValue) return VQERR_CANT_TRANSLATE_SPECIAL;
  }
  expanded->assign(list.substr(0, 2 * kTypeWord));
  *expanded += lengths;
  *expanded += texts;
  return status;
}

// The table that tells what is unread, or an empty one for the time of an expansion.
class UnreadSet {
 public:
  explicit UnreadSet(ENGHANDLE table) : Table(table), Own(table == 0) {
    if (Own) Result = EngIdTableCreate(sizeof(std::uint32_t), &Table);
  }
  ~UnreadSet() {
    if (Own && Table != 0) EngIdTableDestroy(Table);
  }
  UnreadSet(const UnreadSet&) = delete;
  UnreadSet& operator=(const UnreadSet&) = delete;

  ENGHANDLE Table;
  bool Own;
  ENGSTATUS Result = ENG_OK;
};

}  // namespace

bool VQVFEntryBody::ShowsColumn(VQViewFolderBody* view, std::uint32_t index, bool include_hidden) const {
  const VQVFColumnBody* column = view->GetColumns()[index];
  const bool category = Type == VQVFENTRYTYPE_CATEGORY;
  if (category != column->HasFlag(VIEWCOLUMN_CATEGORIZED)) return false;
  if (Type != VQVFENTRYTYPE_RESPONSE && column->HasFlag(VIEWCOLUMN_RESPONSES_ONLY)) return false;
  if (Type == VQVFENTRYTYPE_RESPONSE && index > view->GetResponsesColumn()) return false;
  return include_hidden || !column->HasFlag(VIEWCOLUMN_HIDDEN);
}

bool VQVFEntryBody::FindValue(std::uint16_t index, std::string_view name, std::span<const unsigned char>* value) const {
  return vq::FindInSummary({Summary.get(), SummarySize}, index, name, value);
}

// Columns and values stand in the same order; columns that the rows lack are passed over.
void VQVFEntryBody::MatchColumns(VQViewFolderBody* view) const {
  VQVFColumnBodyArray& columns = view->GetColumns();
  std::uint16_t next = 0;
  for (std::uint32_t i = 0; i < columns.GetCount(); ++i) {
    std::span<const unsigned char> value;
    const bool found = FindValue(next, vq::ViewOf(columns[i]->GetInternalName()), &value);
    columns[i]->SetSummaryIndex(found ? next : VQVFColumnBody::kNoSummary);
    if (found) ++next;
  }
  // A category's row may lack values.
  view->SetState(VQViewFolderBody::kColumnsMatched, Type != VQVFENTRYTYPE_CATEGORY);
}

VQSTATUS VQVFEntryBody::ExpandConstant(VQViewFolderBody* view, std::string_view constant, std::string* expanded) {
  if (VQSTATUS status = ReadStatistics()) return status;
  const UnreadSet unread(UnreadTable);
  if (unread.Result != ENG_OK) return vq::FromEngine(unread.Result);
  Expansion row{SlateID,        Position.GetPosition(), {}, unread.Table, view->GetEntryDatabase().GetTitle(),
                view->GetName()};
  const std::uint32_t counts[] = {SiblingCount, ChildCount, DescendantCount};
  for (std::size_t i = 0; i < std::size(counts); ++i) {
    vq::StoreWord(row.Statistics + 4 * i, counts[i] & 0xFFFF);
    vq::StoreWord(row.Statistics + 4 * i + 2, counts[i] >> 16);
  }
  if (vq::LoadWord(Bytes(constant)) == TYPE_TEXT_LIST) return ExpandList(row, constant, expanded);
  std::string text;
  const VQSTATUS status = ExpandText(row, constant.substr(kTypeWord), &text);
  if (text.size() > kLargestValue - kTypeWord) return VQERR_CANT_TRANSLATE_SPECIAL;
  *expanded = std::string(constant.substr(0, kTypeWord)) + text;
  return status;
}

VQSTATUS VQVFEntryBody::ConstantItem(VQViewFolderBody* view, std::string_view constant, VQItem* item) {
  if (!HasMarkers(constant)) {
    MakeItem({Bytes(constant), constant.size()}, item);
    return VQ_OK;
  }
  std::string expanded;
  try {
    if (ExpandConstant(view, constant, &expanded) != VQ_OK) return VQERR_CANT_TRANSLATE_SPECIAL;
  } catch (VQSTATUS) {
    return VQERR_CANT_TRANSLATE_SPECIAL;
  }
  MakeItem({Bytes(expanded), expanded.size()}, item);
  return VQ_OK;
}

// A column that the rows lack, as in a design that lost its format: its formula's marks stand for this row too.
VQSTATUS VQVFEntryBody::FormulaItem(VQViewFolderBody* view, VQFormula& formula, VQItem* item) {
  VQItem result;
  const VQSTATUS status = formula.GetFormulaBody()->Evaluate(0, &result, nullptr);
  if (status != VQ_OK || result.IsNull()) return VQERR_CANT_EVALUATE_COLUMN;
  const VQItemLock value(result.GetItemBody());
  if (value.Value() == nullptr) return VQERR_CANT_EVALUATE_COLUMN;
  const std::string bytes(reinterpret_cast<const char*>(value.Value()), result.GetItemBody()->GetValueSize());
  if (VQSTATUS failed = ConstantItem(view, bytes, item)) return failed;
  if (item->IsNull()) *item = result;
  return VQ_OK;
}

VQSTATUS VQVFEntryBody::GetColumnItem(unsigned long index, int includeHidden, VQItem* item) {
  VQViewFolderBody* view = nullptr;
  if (VQSTATUS status = CheckView(&view)) return status;
  if (index >= view->GetColumns().GetCount()) return VQERR_OUT_OF_RANGE;
  const auto number = static_cast<std::uint32_t>(index);
  if (!ShowsColumn(view, number, includeHidden != 0)) return VQ_OK;
  VQVFColumnBody* column = view->GetColumns()[number];
  const std::string_view name = vq::ViewOf(column->GetInternalName());
  std::span<const unsigned char> value;
  // What was matched may be older than the row: the index follows a design that others change.
  const bool matched = view->HasState(VQViewFolderBody::kColumnsMatched);
  bool found = matched && FindValue(column->GetSummaryIndex(), name, &value);
  if (!found && (!matched || column->GetSummaryIndex() != VQVFColumnBody::kNoSummary)) {
    MatchColumns(view);
    found = FindValue(column->GetSummaryIndex(), name, &value);
  }
  if (found) MakeItem(value, item);
  if (found) return VQ_OK;
  if (!column->ConstantValue().empty()) return ConstantItem(view, column->ConstantValue(), item);
  return column->HasFormula() ? FormulaItem(view, column->Formula(), item) : VQ_OK;
}

VQItem VQVFEntry::GetColumnItem(unsigned long index, int includeHidden) const {
  VQItem item;
  vq::ThrowIfError(Require()->GetColumnItem(index, includeHidden, &item));
  return item;
}

VQItem VQVFEntry::GetColumnItem(const VQString& title, int includeHidden) const {
  VQVFEntryBody* entry = Require();
  std::uint32_t index = 0;
  VQViewFolderBody* view = nullptr;
  vq::ThrowIfError(entry->CheckView(&view));
  vq::ThrowIfError(view->GetColumns().Find(title, &index));
  return GetColumnItem(index, includeHidden);
}
