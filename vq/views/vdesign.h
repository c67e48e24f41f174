// The stored form of a view's design items, and what their parts are by default.
#ifndef QUILLON_VQ_VIEWS_VDESIGN_H
#define QUILLON_VQ_VIEWS_VDESIGN_H

#include <span>
#include <string>
#include <string_view>

#include "engine/records.h"
#include "vq/automation/formulacode.h"
#include "vq/frame/vqcommon.h"

class VQFormula;
class VQString;
class VQVFColumnBodyArray;
class VQViewFolderBody;

namespace vq::viewdesign {

// Item types of design items.
inline constexpr unsigned short kTypeCollation = 0x0002;
inline constexpr unsigned short kTypeViewFormat = 0x0005;
inline constexpr unsigned short kTypeCalendar = 0x0018;
inline constexpr unsigned short kTypeFormula = 0x0600;

ViewTableRecord DefaultTable();
ViewCalendarRecord DefaultCalendar();
ViewColumnRecord DefaultColumn();
ViewColumnExtension DefaultColumnExtension();

// A $ViewFormat value, without its type word.
struct Format {
  ViewTableRecord* Table;
  ViewTableExtension* Extension;
  VQVFColumnBodyArray* Columns;
  std::string* Trailer;  // what stands behind the last record
};
// VQERR_INVALID_VIEW, VQERR_VIEW_VERSION. After a failure there are no columns.
[[nodiscard]] VQSTATUS ReadFormat(std::string_view value, const Format& format, VQViewFolderBody* owner);
// VQERR_OUT_OF_RANGE when a part is too long for its size field.
[[nodiscard]] VQSTATUS WriteFormat(const Format& format, std::string* value);
// Gives the fields that an older release did not store their defaults; VQERR_INVALID_VIEW for another length.
[[nodiscard]] VQSTATUS CompleteExtension(ViewTableExtension* extension);

// A $CalendarFormat value; VQERR_INVALID_CALENDAR_VIEW.
[[nodiscard]] VQSTATUS ReadCalendar(std::string_view value, ViewCalendarRecord* record);
[[nodiscard]] VQSTATUS WriteCalendar(const ViewCalendarRecord& record, std::string* value);

// The header of a $Collation value; VQERR_INVALID_VIEW when it is cut off.
[[nodiscard]] VQSTATUS ReadCollation(std::string_view value, CollationHeader* header);

// One column of a sort order, as a column says or in a direction of its own.
enum class Direction { OfColumn, Ascending, Descending };
struct SortColumn {
  std::uint32_t Column;
  Direction Order;
};
// VQERR_OUT_OF_RANGE for more than a collation holds.
[[nodiscard]] VQSTATUS WriteCollation(const VQVFColumnBodyArray& columns, std::span<const SortColumn> sort,
                                      unsigned char flags, std::string* value);

using vq::CodeOf;
using vq::CompileFormula;
using vq::CopyFormula;
using vq::HasCode;
using vq::TakeCode;
// From code that anyone may have written; the text is that of the selection alone where `selection` is set. No bytes
// give an empty formula.
[[nodiscard]] VQSTATUS LoadFormula(std::string_view code, bool selection, VQFormula* formula);

}  // namespace vq::viewdesign

#endif
