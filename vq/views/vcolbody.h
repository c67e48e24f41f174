// VQVFColumn: one column of a view or folder.
//
// Columns are made by their view (VQViewFolder::AppendColumn and its like). A change stays in the design until the view
// is saved. A column without a body, or whose view has closed or has deleted it, gives VQERR_OBJECT_NOT_INITIALIZED, or
// throws it where the result is no status. Operations that make no sense in a calendar give VQERR_NOT_FOR_CALENDAR
// there.
#ifndef QUILLON_VQ_VIEWS_VCOLBODY_H
#define QUILLON_VQ_VIEWS_VCOLBODY_H

#include <string>

#include "engine/records.h"
#include "vq/automation/vqformula.h"
#include "vq/values/vqstring.h"

class VQDatetimeFormat;
class VQFontStyle;
class VQNumberFormat;
class VQVFColumnBody;
class VQViewFolder;
class VQViewFolderBody;

enum VQVFSORTOPTION : unsigned int {
  VQVFSORTOPTION_NONE = 0,
  VQVFSORTOPTION_ASCENDING = 1,
  VQVFSORTOPTION_DESCENDING = 2,
};

// What a click on the heading does.
enum VQVFHEADINGSORTOPTION : unsigned int {
  VQVFHEADINGSORTOPTION_NONE = 0,
  VQVFHEADINGSORTOPTION_ASCENDING = 0x100,
  VQVFHEADINGSORTOPTION_DESCENDING = 0x200,
  VQVFHEADINGSORTOPTION_BOTH = 0x300,
  VQVFHEADINGSORTOPTION_VIEW = 0x800,  // opens another view
};

enum VQVFTOTALSOPTION : unsigned int {
  VQVFTOTALSOPTION_NONE = 0,
  VQVFTOTALSOPTION_TOTAL = 4,
  VQVFTOTALSOPTION_AVERAGE_PER_CHILD = 8,
  VQVFTOTALSOPTION_PERCENT_OF_ALL = 12,
  VQVFTOTALSOPTION_PERCENT_OF_PARENT = 16,
  VQVFTOTALSOPTION_AVERAGE_PER_DOCUMENT = 20,
};

// Between the entries of a list.
enum VQVFSEPARATOR : unsigned int {
  VQVFSEPARATOR_NONE = 0,
  VQVFSEPARATOR_SPACE = 0x1000,
  VQVFSEPARATOR_COMMA = 0x2000,
  VQVFSEPARATOR_SEMICOLON = 0x3000,
  VQVFSEPARATOR_NEW_LINE = 0x4000,
};

enum VQVFJUSTIFICATION : unsigned int {
  VQVFJUSTIFICATION_LEFT = 0,
  VQVFJUSTIFICATION_RIGHT = 1,
  VQVFJUSTIFICATION_CENTER = 2,
};

class VQ_API VQVFColumn : public VQSmartPtr {
 public:
  VQVFColumn() = default;
  VQVFColumn(const VQVFColumn&) = default;
  explicit VQVFColumn(VQVFColumnBody* body);
  VQVFColumn& operator=(const VQVFColumn&) = default;
  VQVFColumn& operator=(VQVFColumnBody* body);
  VQCLASSID GetClassID() const override;

  // Of the column's view.
  unsigned long GetColumnCount() const;
  unsigned long GetColumnNumber() const;
  VQSTATUS GetViewFolder(VQViewFolder* view) const;

  VQString GetTitle() const;
  VQSTATUS SetTitle(const VQString& title);
  // Eighths of a character, 8 to 65,535; VQERR_OUT_OF_RANGE.
  unsigned long GetExactWidth() const;
  VQSTATUS SetExactWidth(unsigned long width);
  unsigned long GetWidthInCharacters() const;
  VQSTATUS SetWidthInCharacters(unsigned long characters);
  // A null style gives VQERR_UNINITIALIZED_ARGUMENT. The style's face is entered into the view's font table.
  VQSTATUS GetFontStyle(VQFontStyle* style) const;
  VQSTATUS SetFontStyle(const VQFontStyle& style);
  VQSTATUS GetTitleFontStyle(VQFontStyle* style) const;
  VQSTATUS SetTitleFontStyle(const VQFontStyle& style);
  VQNumberFormat GetNumberFormat() const;
  VQSTATUS SetNumberFormat(const VQNumberFormat& format);
  VQDatetimeFormat GetDatetimeFormat() const;
  VQSTATUS SetDatetimeFormat(const VQDatetimeFormat& format);
  // Enumerations: VQERR_INVALID_PARAMETER for a value that is none of theirs.
  VQVFSEPARATOR GetSeparator() const;
  VQSTATUS SetSeparator(VQVFSEPARATOR separator);
  VQVFJUSTIFICATION GetJustification() const;
  VQSTATUS SetJustification(VQVFJUSTIFICATION justification);
  VQVFJUSTIFICATION GetTitleJustification() const;
  VQSTATUS SetTitleJustification(VQVFJUSTIFICATION justification);

  // The value comes from a field or from a formula; setting one clears the other.
  VQString GetFieldName() const;
  // VQERR_NULL_STRING for an empty one.
  VQSTATUS SetFieldName(const VQString& name);
  // A copy, here and in SetFormula. VQWARN_NOT_FOUND when the column has no formula.
  VQSTATUS GetFormula(VQFormula* formula) const;
  // VQERR_INVALID_PARAMETER for a null one.
  VQSTATUS SetFormula(const VQFormula& formula);
  // The name that the view's index knows the column by; generated at the save where a formula has none.
  // VQERR_COLUMN_NAME_IS_FIELD for a column of a field.
  VQString GetInternalName() const;
  VQSTATUS SetInternalName(const VQString& name);

  VQVFSORTOPTION GetSortOption() const;
  VQSTATUS SetSortOption(VQVFSORTOPTION option);
  int IsSortCaseInsensitive() const;
  VQSTATUS SetIsSortCaseInsensitive(int flag);
  int IsSortAccentInsensitive() const;
  VQSTATUS SetIsSortAccentInsensitive(int flag);
  VQVFHEADINGSORTOPTION GetHeadingSortOption() const;
  VQSTATUS SetHeadingSortOption(VQVFHEADINGSORTOPTION option);
  // VQWARN_NOT_FOUND, and an empty handle, when none is set.
  VQSTATUS GetHeadingSortViewFolder(VQViewFolder* view) const;
  // VQERR_UNINITIALIZED_ARGUMENT for a null view, VQERR_HEADING_SORT_CURRENT_VIEW for the column's own.
  VQSTATUS SetHeadingSortViewFolder(const VQViewFolder& view);
  // 0 when there is no secondary sort.
  unsigned long GetSecondarySortColumn() const;
  // Column number or title. VQERR_NO_SECONDARY_SORT in a view of one column, VQERR_SECONDARY_SORT_CURRENT for the
  // column itself, VQERR_OUT_OF_RANGE, VQWARN_NOT_FOUND.
  VQSTATUS SetSecondarySortColumn(unsigned long index);
  VQSTATUS SetSecondarySortColumn(const VQString& title);
  VQVFSORTOPTION GetSecondarySortOption() const;
  // Switched on anew, the sort is by column 0, or by column 1 in column 0.
  VQSTATUS SetSecondarySortOption(VQVFSORTOPTION option);

  VQVFTOTALSOPTION GetTotalsOption() const;
  // The column's constant value goes at the next save.
  VQSTATUS SetTotalsOption(VQVFTOTALSOPTION option);
  int GetHideDetailRows() const;
  VQSTATUS SetHideDetailRows(int flag);
  int IsCategorized() const;
  // A category separates multiple values too.
  VQSTATUS SetIsCategorized(int flag);
  int GetSeparateMultipleValues() const;
  VQSTATUS SetSeparateMultipleValues(int flag);
  int GetShowResponsesOnly() const;
  VQSTATUS SetShowResponsesOnly(int flag);
  int GetShowTwistie() const;
  VQSTATUS SetShowTwistie(int flag);
  int IsHidden() const;
  VQSTATUS SetIsHidden(int flag);
  int IsResizable() const;
  VQSTATUS SetIsResizable(int flag);
  int GetDisplayValuesAsIcons() const;
  VQSTATUS SetDisplayValuesAsIcons(int flag);
  int GetShowValuesAsLinks() const;
  VQSTATUS SetShowValuesAsLinks(int flag);

  VQVFColumnBody* GetColumnBody() const;

 private:
  enum class Kind { Any, NotCalendar };

  VQSTATUS Check(VQVFColumnBody** body, Kind kind = Kind::Any) const;
  VQVFColumnBody* Require(Kind kind = Kind::Any) const;
  // Runs an edit, which gives a status, and marks the column when it succeeds.
  template <typename Edit>
  VQSTATUS Change(Kind kind, Edit edit);
  using Word = std::uint16_t ViewColumnRecord::*;
  int GetBit(Word word, unsigned mask) const;
  VQSTATUS SetBits(Word word, unsigned mask, unsigned value, Kind kind = Kind::Any);
  VQSTATUS SetBit(Word word, unsigned mask, int flag, Kind kind = Kind::Any);
  VQSTATUS GetFont(bool title, VQFontStyle* style) const;
  VQSTATUS SetFont(bool title, const VQFontStyle& style);
  VQSTATUS PointSecondarySort(VQVFColumnBody* body, unsigned long index);
};

// The decoded column. Counted by the array of its view and by handles.
class VQ_API VQVFColumnBody : public VQBody {
 public:
  // Pending work, settled by the view's save.
  static constexpr unsigned short kChanged = 0x0001;
  static constexpr unsigned short kRecompile = 0x0002;     // the formula, with the internal name
  static constexpr unsigned short kDropConstant = 0x0004;  // the constant value
  static constexpr unsigned short kGenerateName = 0x0008;  // an internal name
  static constexpr unsigned short kNoSummary = 0xFFFF;

  // With the defaults of a new column.
  explicit VQVFColumnBody(VQViewFolderBody* owner);
  // Both records, the texts, the formula and the constant value; unchanged, and of no view.
  VQVFColumnBody(const VQVFColumnBody& other);
  VQVFColumnBody& operator=(const VQVFColumnBody&) = delete;
  VQCLASSID GetClassID() const override;

  ViewColumnRecord& Record() { return ColumnRecord; }
  ViewColumnExtension& Extension() { return ColumnExtension; }
  std::uint32_t GetNumber() const { return ColumnNumber; }
  void SetNumber(std::uint32_t number) { ColumnNumber = number; }
  // Type word and value, empty for none.
  std::string& ConstantValue() { return Constant; }
  VQViewFolderBody* GetOwner() const { return Owner; }
  void SetOwner(VQViewFolderBody* owner) { Owner = owner; }
  std::uint16_t GetDirtyFlags() const { return DirtyFlags; }
  void SetDirtyFlags(unsigned short flags) { DirtyFlags = flags; }
  bool IsPending(unsigned short flag) const { return (DirtyFlags & flag) != 0; }
  const VQString& GetFieldName() const { return FieldName; }
  void SetFieldName(const VQString& name) { FieldName = name; }
  VQFormula& Formula() { return ColumnFormula; }
  bool HasFormula() const;
  const VQString& GetInternalName() const { return InternalName; }
  void SetInternalName(const VQString& name);
  // As they are stored: zero bytes in them read as line feeds, and are written back as long as nobody changes the text.
  void LoadName(std::string_view name);
  void LoadTitle(std::string_view title);
  const std::string& GetStoredName() const { return StoredName; }
  const std::string& GetStoredTitle() const { return StoredTitle; }
  // Ordinal of the column's value in the summary of a row, kNoSummary for none; valid while the view's columns are
  // matched.
  std::uint16_t GetSummaryIndex() const { return SummaryIndex; }
  void SetSummaryIndex(unsigned short index) { SummaryIndex = index; }
  const VQString& GetTitle() const { return Title; }
  void SetTitle(const VQString& title);
  bool HasFlag(unsigned short mask) const { return (ColumnRecord.Flags1 & mask) != 0; }
  void ClearSecondarySort();
  // Marks the column and its view as changed.
  void Touch(unsigned short dirty = kChanged);

 private:
  ViewColumnRecord ColumnRecord;
  ViewColumnExtension ColumnExtension;
  std::uint32_t ColumnNumber;
  std::string Constant;
  VQViewFolderBody* Owner;  // null once the view has let the column go
  std::uint16_t DirtyFlags;
  VQString FieldName;
  VQFormula ColumnFormula;
  VQString InternalName;
  std::string StoredName;
  std::uint16_t SummaryIndex;
  VQString Title;
  std::string StoredTitle;
};

inline VQVFColumnBody* VQVFColumn::GetColumnBody() const { return static_cast<VQVFColumnBody*>(Body); }

#endif
