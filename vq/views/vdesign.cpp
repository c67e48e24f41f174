// The stored form of $ViewFormat, $CalendarFormat and $Collation.
#include "vq/views/vdesign.h"

#include <algorithm>
#include <vector>

#include "engine/ods.h"
#include "vq/views/vcolbarr.h"

namespace vq::viewdesign {

namespace {

constexpr std::uint8_t kVersion = 1;
constexpr std::uint32_t kPlainFont = 0x0A000001;
constexpr std::uint32_t kSmallBoldFont = 0x08000101;
constexpr std::uint32_t kSmallFont = 0x08000001;

// Stored bytes that are taken from the front.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : Left(bytes) {}
  std::size_t Size() const { return Left.size(); }
  std::string_view Rest() const { return Left; }
  std::string_view Take(std::size_t size) {
    const std::string_view taken = Left.substr(0, size);
    Left.remove_prefix(size);
    return taken;
  }
  bool Has(unsigned short code, std::size_t count) const { return count * EngOdsLength(code) <= Left.size(); }
  // Of a record that is there.
  template <typename Record>
  VQSTATUS Read(unsigned short code, Record* record) {
    void* cursor = const_cast<char*>(Take(EngOdsLength(code)).data());
    return FromEngine(EngOdsRead(&cursor, code, record, 1));
  }

 private:
  std::string_view Left;
};

template <typename Record>
VQSTATUS Append(unsigned short code, const Record& record, std::string* bytes) {
  const std::size_t at = bytes->size();
  bytes->resize(at + EngOdsLength(code));
  void* cursor = bytes->data() + at;
  return FromEngine(EngOdsWrite(&cursor, code, &record, 1));
}

VQSTATUS ReadColumn(Reader* records, Reader* data, VQVFColumnBody* column) {
  ViewColumnRecord& record = column->Record();
  if (VQSTATUS status = records->Read(ODS_VIEWCOLUMN, &record)) return status;
  if (record.Signature != VIEWCOLUMN_SIGNATURE) return VQERR_INVALID_VIEW;
  const std::size_t sum =
      std::size_t{record.ItemNameSize} + record.TitleSize + record.FormulaSize + record.ConstantValueSize;
  if (sum > data->Size()) return VQERR_INVALID_VIEW;
  column->LoadName(data->Take(record.ItemNameSize));
  column->LoadTitle(data->Take(record.TitleSize));
  const std::string_view code = data->Take(record.FormulaSize);
  column->ConstantValue() = data->Take(record.ConstantValueSize);
  if (!code.empty()) return TakeCode(code, &column->Formula());
  column->SetFieldName(column->GetInternalName());
  return VQ_OK;
}

VQSTATUS ReadColumns(Reader* data, const Format& format, VQViewFolderBody* owner) {
  const std::uint32_t count = format.Table->Columns;
  Reader records(data->Take(std::size_t{count} * EngOdsLength(ODS_VIEWCOLUMN)));
  VQSTATUS status = format.Columns->Reserve(count);
  for (std::uint32_t i = 0; status == VQ_OK && i < count; ++i) {
    VQVFColumn column(new VQVFColumnBody(owner));
    status = ReadColumn(&records, data, column.GetColumnBody());
    if (status == VQ_OK) status = format.Columns->Load(column.GetColumnBody());
  }
  return status;
}

VQSTATUS ReadExtensions(Reader* data, const Format& format) {
  format.Extension->Length = 0;
  const bool whole = data->Has(ODS_VIEWTABLEEXTENSION, 1);
  VQSTATUS status = whole ? data->Read(ODS_VIEWTABLEEXTENSION, format.Extension) : VQ_OK;
  if (status == VQ_OK) status = CompleteExtension(format.Extension);
  const std::uint32_t count = format.Table->Columns;
  if (status != VQ_OK || !whole || !data->Has(ODS_VIEWCOLUMNEXTENSION, count)) return status;
  for (std::uint32_t i = 0; status == VQ_OK && i < count; ++i) {
    ViewColumnExtension& extension = (*format.Columns)[i]->Extension();
    status = data->Read(ODS_VIEWCOLUMNEXTENSION, &extension);
    if (status == VQ_OK && extension.Signature != VIEWCOLUMNEXTENSION_SIGNATURE) status = VQERR_INVALID_VIEW;
  }
  *format.Trailer = data->Rest();
  return status;
}

VQSTATUS SetSizes(VQVFColumnBody* column) {
  const std::size_t sizes[] = {column->GetStoredName().size(), column->GetStoredTitle().size(),
                               CodeOf(column->Formula()).size(), column->ConstantValue().size()};
  if (*std::max_element(std::begin(sizes), std::end(sizes)) > 0xFFFF) return VQERR_OUT_OF_RANGE;
  ViewColumnRecord& record = column->Record();
  record.ItemNameSize = static_cast<std::uint16_t>(sizes[0]);
  record.TitleSize = static_cast<std::uint16_t>(sizes[1]);
  record.FormulaSize = static_cast<std::uint16_t>(sizes[2]);
  record.ConstantValueSize = static_cast<std::uint16_t>(sizes[3]);
  return VQ_OK;
}

CollationDescriptor DescriptorOf(VQVFColumnBody* column, Direction order) {
  CollationDescriptor descriptor{};
  descriptor.Signature = COLLATIONDESCRIPTOR_SIGNATURE;
  descriptor.KeyType = column->HasFlag(VIEWCOLUMN_CATEGORIZED) ? COLLATE_KEY_CATEGORY : COLLATE_KEY_ITEM;
  const bool descending =
      order == Direction::OfColumn ? column->HasFlag(VIEWCOLUMN_DESCENDING) : order == Direction::Descending;
  if (descending) descriptor.Flags |= COLLATE_DESCENDING;
  if (column->HasFlag(VIEWCOLUMN_CASE_INSENSITIVE)) descriptor.Flags |= COLLATE_CASE_INSENSITIVE;
  if (column->HasFlag(VIEWCOLUMN_ACCENT_INSENSITIVE)) descriptor.Flags |= COLLATE_ACCENT_INSENSITIVE;
  if ((column->Record().Flags2 & VIEWCOLUMN_SEPARATE_VALUES) != 0) descriptor.Flags |= COLLATE_SEPARATE_VALUES;
  return descriptor;
}

}  // namespace

ViewTableRecord DefaultTable() { return {kVersion, 0, 0, 0, VIEWTABLE_CONFLICTS, 0}; }

ViewCalendarRecord DefaultCalendar() {
  ViewCalendarRecord record{};
  record.Version = kVersion;
  record.Spare1 = 0xFF;
  record.DateFont = record.TimeSlotFont = kSmallFont;
  record.HeaderFont = 0x0A000101;
  record.TodayColor = 2;
  record.BusyRowColor = 1;
  record.TimeSlotStart = 8 * 60;
  record.TimeSlotEnd = 18 * 60;
  record.TimeSlotDuration = 60;
  return record;
}

ViewColumnRecord DefaultColumn() {
  ViewColumnRecord record{};
  record.Signature = VIEWCOLUMN_SIGNATURE;
  record.DisplayWidth = 80;
  record.FontID = kPlainFont;
  record.DatetimeFormat.Structure = 2;
  record.DataType = 2;
  return record;
}

ViewColumnExtension DefaultColumnExtension() {
  ViewColumnExtension extension{};
  extension.Signature = VIEWCOLUMNEXTENSION_SIGNATURE;
  extension.TitleFont = kSmallBoldFont;
  return extension;
}

VQSTATUS CompleteExtension(ViewTableExtension* extension) {
  const std::uint16_t length = EngOdsLength(ODS_VIEWTABLEEXTENSION);
  if (extension->Length == 0) {
    *extension = {};
    extension->Length = length;
    extension->LegacyBackground = 1;
    extension->BorderFont = kSmallBoldFont;
    extension->UnreadFont = kPlainFont;
    extension->TotalsFont = 0x0A0E0101;
    extension->AlternateRowColor = 1;
  }
  if (extension->Length != length) return VQERR_INVALID_VIEW;
  if (extension->Signature == VIEWTABLEEXTENSION_SIGNATURE) return VQ_OK;
  extension->Signature = VIEWTABLEEXTENSION_SIGNATURE;
  extension->LinesPerRow = extension->LinesPerHeading = 1;
  extension->RowSpacing = extension->WebFlags = 0;
  extension->BackgroundColor = extension->LegacyBackground;
  std::fill(std::begin(extension->Spare3), std::end(extension->Spare3), 0);
  return VQ_OK;
}

VQSTATUS ReadFormat(std::string_view value, const Format& format, VQViewFolderBody* owner) {
  Reader data(value);
  if (!data.Has(ODS_VIEWTABLE, 1)) return VQERR_INVALID_VIEW;
  if (VQSTATUS status = data.Read(ODS_VIEWTABLE, format.Table)) return status;
  if (format.Table->Version != kVersion || format.Table->Style != 0) return VQERR_VIEW_VERSION;
  if (!data.Has(ODS_VIEWCOLUMN, format.Table->Columns)) return VQERR_INVALID_VIEW;
  VQSTATUS status = ReadColumns(&data, format, owner);
  if (status == VQ_OK) status = ReadExtensions(&data, format);
  if (status != VQ_OK) format.Columns->Release();
  return status;
}

VQSTATUS WriteFormat(const Format& format, std::string* value) {
  const VQVFColumnBodyArray& columns = *format.Columns;
  format.Table->Columns = static_cast<std::uint16_t>(columns.GetCount());
  VQSTATUS status = Append(ODS_VIEWTABLE, *format.Table, value);
  for (std::uint32_t i = 0; status == VQ_OK && i < columns.GetCount(); ++i) {
    status = SetSizes(columns[i]);
    if (status == VQ_OK) status = Append(ODS_VIEWCOLUMN, columns[i]->Record(), value);
  }
  for (std::uint32_t i = 0; status == VQ_OK && i < columns.GetCount(); ++i) {
    VQVFColumnBody& column = *columns[i];
    *value += column.GetStoredName();
    *value += column.GetStoredTitle();
    *value += CodeOf(column.Formula());
    *value += column.ConstantValue();
  }
  if (status == VQ_OK) status = Append(ODS_VIEWTABLEEXTENSION, *format.Extension, value);
  for (std::uint32_t i = 0; status == VQ_OK && i < columns.GetCount(); ++i) {
    status = Append(ODS_VIEWCOLUMNEXTENSION, columns[i]->Extension(), value);
  }
  *value += *format.Trailer;
  return status;
}

VQSTATUS ReadCalendar(std::string_view value, ViewCalendarRecord* record) {
  Reader data(value);
  if (!data.Has(ODS_VIEWCALENDAR, 1)) return VQERR_INVALID_CALENDAR_VIEW;
  ViewCalendarRecord read{};
  if (VQSTATUS status = data.Read(ODS_VIEWCALENDAR, &read)) return status;
  if (read.Version != kVersion) return VQERR_INVALID_CALENDAR_VIEW;
  *record = read;
  return VQ_OK;
}

VQSTATUS WriteCalendar(const ViewCalendarRecord& record, std::string* value) {
  return Append(ODS_VIEWCALENDAR, record, value);
}

VQSTATUS ReadCollation(std::string_view value, CollationHeader* header) {
  Reader data(value);
  return data.Has(ODS_COLLATION, 1) ? data.Read(ODS_COLLATION, header) : VQERR_INVALID_VIEW;
}

VQSTATUS WriteCollation(const VQVFColumnBodyArray& columns, std::span<const SortColumn> sort, unsigned char flags,
                        std::string* value) {
  std::string descriptors;
  std::string names;
  for (const SortColumn& key : sort) {
    CollationDescriptor descriptor = DescriptorOf(columns[key.Column], key.Order);
    const std::string& name = columns[key.Column]->GetStoredName();
    if (names.size() > 0xFFFF || name.size() > 0xFFFF) return VQERR_OUT_OF_RANGE;
    descriptor.NameOffset = static_cast<std::uint16_t>(names.size());
    descriptor.NameLength = static_cast<std::uint16_t>(name.size());
    names += name;
    if (VQSTATUS status = Append(ODS_COLLATIONDESCRIPTOR, descriptor, &descriptors)) return status;
  }
  const std::size_t size = EngOdsLength(ODS_COLLATION) + descriptors.size() + names.size();
  if (size > 0xFFFF) return VQERR_OUT_OF_RANGE;
  const CollationHeader header{static_cast<std::uint16_t>(size), static_cast<std::uint16_t>(sort.size()), flags,
                               COLLATION_SIGNATURE};
  if (VQSTATUS status = Append(ODS_COLLATION, header, value)) return status;
  *value += descriptors + names;
  return VQ_OK;
}

}  // namespace vq::viewdesign
