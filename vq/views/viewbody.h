// VQViewFolder: a view or folder, as a design that can be edited and saved, as an index that can be read, and, for a
// folder, as a list of documents.
//
// A handle binds like any slate (vq/store/vqslate.h). Open reads the design and opens the index, which is read through
// a navigator that is built in (vq/views/vnavbody.h); with VQVFOPENFLAGS_DESIGN_ONLY it reads the design alone. A view
// that was never saved is open for its design only; its entries can be read after the first Save and another Open.
//
// On a view that is not open every operation gives the status of the Open that failed, or VQERR_VIEW_NOT_OPEN; thrown
// where the result is no status. A setter changes the design in memory, and Save writes what has changed and leaves all
// else in the slate as it is. Where a property suits only one of them, VQERR_CALENDAR_ONLY, VQERR_NOT_FOR_CALENDAR,
// VQERR_FOLDER_ONLY or VQERR_NOT_FOR_FOLDER is given by its getter and its setter. Enumerations: a value that is none
// of theirs gives VQERR_INVALID_PARAMETER.
#ifndef QUILLON_VQ_VIEWS_VIEWBODY_H
#define QUILLON_VQ_VIEWS_VIEWBODY_H

#include <span>
#include <string>

#include "engine/records.h"
#include "vq/automation/vqformula.h"
#include "vq/store/desflags.h"
#include "vq/store/vqidtab.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqtext.h"
#include "vq/views/vcolbarr.h"
#include "vq/views/ventbody.h"
#include "vq/views/vfindkey.h"
#include "vq/views/vnavbody.h"

namespace vq::viewdesign {
struct Format;
struct SortColumn;
class MergedFormula;
}  // namespace vq::viewdesign

enum VQVFTYPE : unsigned int {
  VQVFTYPE_VIEW = 0,
  VQVFTYPE_FOLDER = 1,
  VQVFTYPE_UNKNOWN = 2,
};

// VQViewFolder::Open flags.
inline constexpr unsigned long VQVFOPENFLAGS_REBUILD_INDEX = 0x00001;
inline constexpr unsigned long VQVFOPENFLAGS_NO_UPDATE = 0x00002;
inline constexpr unsigned long VQVFOPENFLAGS_NO_CREATE = 0x00004;  // an index that does not exist is not made
inline constexpr unsigned long VQVFOPENFLAGS_USE_UNREAD_LIST = 0x10000;
inline constexpr unsigned long VQVFOPENFLAGS_DESIGN_ONLY = 0x20000;  // stands alone

enum VQVFSTYLE : unsigned int { VQVFSTYLE_STANDARD = 0, VQVFSTYLE_CALENDAR = 1 };

enum VQVFSHARINGOPTION : unsigned int {
  VQVFSHARINGOPTION_SHARED = 0,
  VQVFSHARINGOPTION_PRIVATE = 1,
  VQVFSHARINGOPTION_PRIVATE_ON_FIRST_USE = 2,
  VQVFSHARINGOPTION_PRIVATE_ON_FIRST_USE_DESKTOP = 3,
};

enum VQVFUNREADMARKDISPLAY : unsigned int {
  VQVFUNREADMARKDISPLAY_NONE = 0,
  VQVFUNREADMARKDISPLAY_ALL = 4,
  VQVFUNREADMARKDISPLAY_DOCUMENTS = 16,
};

enum VQVFOPENPOSITION : unsigned int {
  VQVFOPENPOSITION_LAST = 0,
  VQVFOPENPOSITION_TOP = 32,
  VQVFOPENPOSITION_BOTTOM = 64,
};

enum VQVFREFRESHOPTION : unsigned int {
  VQVFREFRESHOPTION_MANUAL = 0,
  VQVFREFRESHOPTION_AUTOMATIC = 0x1000,
  VQVFREFRESHOPTION_TOP = 0x2000,
  VQVFREFRESHOPTION_BOTTOM = 0x3000,
};

enum VQVFROWSPACING : unsigned int {
  VQVFROWSPACING_SINGLE = 0,
  VQVFROWSPACING_ONE_POINT_25 = 1,
  VQVFROWSPACING_ONE_POINT_50 = 2,
  VQVFROWSPACING_ONE_POINT_75 = 3,
  VQVFROWSPACING_DOUBLE = 4,
};

enum VQVFHEADINGDISPLAY : unsigned int {
  VQVFHEADINGDISPLAY_NONE = 0,
  VQVFHEADINGDISPLAY_SIMPLE = 1,
  VQVFHEADINGDISPLAY_BEVELED = 2,
};

enum VQVFTIMESLOTDISPLAY : unsigned int {
  VQVFTIMESLOTDISPLAY_NONE = 0,
  VQVFTIMESLOTDISPLAY_SHOWN = 1,
  VQVFTIMESLOTDISPLAY_SHOWN_ON_REQUEST = 2,
};

class VQ_API VQViewFolder : public VQSlate {
 public:
  VQViewFolder();
  // As Assign; a failure throws.
  VQViewFolder(VQDatabaseBody* database, unsigned long id);
  VQViewFolder(const VQViewFolder& other);
  explicit VQViewFolder(const VQSlate& other);
  explicit VQViewFolder(VQViewFolderBody* body);
  ~VQViewFolder();
  // A slate that is no view or folder throws VQERR_INCORRECT_SLATE_TYPE and changes nothing.
  VQViewFolder& operator=(const VQViewFolder& other);
  VQViewFolder& operator=(const VQSlate& other);
  VQViewFolder& operator=(VQSlateBody* body);
  VQCLASSID GetClassID() const override;

  VQSTATUS Close() override;
  // VQWARN_ALREADY_OPEN, except that a view open for its design only goes on to open its index when other flags are
  // asked for. VQERR_INVALID_PARAMETER for unknown flags.
  VQSTATUS Open(unsigned long flags = 0) override;
  // Entries of another database, which must be open or can be opened.
  VQSTATUS Open(unsigned long flags, const VQDatabase& entries);
  VQSTATUS Open(unsigned long flags, const VQString& path, const VQString& server);
  using VQSlate::Open;
  // With bit 0x40000 in the flags the design stays unread; with argument2 the slate stays closed too.
  VQSTATUS CreateSlateBody(unsigned long flags, unsigned long argument, int argument2) override;
  VQSTATUS ValidateSlateType(const VQSlate& other) const override;
  VQSTATUS ValidateSlateType(const VQSlateBody* body) const override;
  VQSTATUS ValidateSlateType(unsigned long type) const override;
  // A body of folder type, its design unread, after a Close. VQERR_VIEW_NOT_SAVED, and no Close, for a slate that is
  // not stored.
  VQSTATUS CreateViewFolderBody();

  VQSTATUS Save(unsigned short flags = 0);

  // Name and alias, split at bars; a third part is dropped. VQERR_NULL_STRING, VQERR_INVALID_PARAMETER for an empty
  // first part, VQERR_VIEW_NAME_TOO_LONG from 64 bytes of name and alias on.
  VQString GetName() const;
  VQSTATUS SetName(const VQString& name);
  VQString GetAlias() const;
  VQSTATUS SetAlias(const VQString& alias);
  VQVFTYPE GetType() const;
  int IsView() const;
  int IsFolder() const;
  int IsCalendar() const;
  int IsCategorized() const;
  int IsPrivate() const;

  int GetAllowAllAuthors() const;
  VQSTATUS SetAllowAllAuthors(int flag);
  int GetAllowAllReaders() const;
  VQSTATUS SetAllowAllReaders(int flag);
  int GetAllowDesignRefreshToModify() const;
  VQSTATUS SetAllowDesignRefreshToModify(int flag);
  int GetAllowPublicAccessUsers() const;
  VQSTATUS SetAllowPublicAccessUsers(int flag);
  // Colours are indexes below 240, else VQERR_INVALID_PARAMETER.
  unsigned short GetAlternateRowColor() const;
  VQSTATUS SetAlternateRowColor(unsigned short color);
  // Of folders. Stored while AllowAllAuthors is off.
  VQText GetAuthors() const;
  VQSTATUS SetAuthors(const VQText& authors);
  unsigned short GetBackgroundColor() const;
  VQSTATUS SetBackgroundColor(unsigned short color);
  // Fonts: a null style gives VQERR_UNINITIALIZED_ARGUMENT. A face of its own goes into the slate's font table.
  VQSTATUS GetBorderFontStyle(VQFontStyle* style) const;
  VQSTATUS SetBorderFontStyle(const VQFontStyle& style);
  unsigned short GetBusyRowColor() const;
  VQSTATUS SetBusyRowColor(unsigned short color);
  VQSTATUS GetCalendarHeaderFontStyle(VQFontStyle* style) const;
  VQSTATUS SetCalendarHeaderFontStyle(const VQFontStyle& style);
  int GetCollapseOnOpen() const;
  VQSTATUS SetCollapseOnOpen(int flag);
  // At most 256 bytes, else VQERR_STRING_TOO_LONG.
  VQString GetComment() const;
  VQSTATUS SetComment(const VQString& comment);
  VQSTATUS GetDateFontStyle(VQFontStyle* style) const;
  VQSTATUS SetDateFontStyle(const VQFontStyle& style);
  unsigned short GetDaySeparatorColor() const;
  VQSTATUS SetDaySeparatorColor(unsigned short color);
  int GetExtendLastColumn() const;
  VQSTATUS SetExtendLastColumn(int flag);
  // Formulas: a copy, both ways; VQWARN_NOT_FOUND for none.
  VQSTATUS GetFormFormula(VQFormula* formula) const;
  VQSTATUS SetFormFormula(const VQFormula& formula);
  int GetGenerateUniqueKeys() const;
  VQSTATUS SetGenerateUniqueKeys(int flag);
  VQVFHEADINGDISPLAY GetHeadingDisplay() const;
  VQSTATUS SetHeadingDisplay(VQVFHEADINGDISPLAY display);
  int GetHideFromBrowsers() const;
  VQSTATUS SetHideFromBrowsers(int flag);
  int GetHideFromClients() const;
  VQSTATUS SetHideFromClients(int flag);
  int GetHideFromR4Clients() const;
  VQSTATUS SetHideFromR4Clients(int flag);
  VQString GetInheritsFromTemplateName() const;
  VQSTATUS SetInheritsFromTemplateName(const VQString& name);
  int GetIsDefaultDesign() const;
  VQSTATUS SetIsDefaultDesign(int flag);
  // A view of the whole database: VQERR_INCORRECT_SLATE_TYPE for a private one. Others keep the mark that they have.
  int GetIsDefaultViewFolder() const;
  VQSTATUS SetIsDefaultViewFolder(int flag);
  // 1 to 5, else VQERR_OUT_OF_RANGE.
  unsigned long GetLinesPerHeading() const;
  VQSTATUS SetLinesPerHeading(unsigned long lines);
  // 1 to 9.
  unsigned long GetLinesPerRow() const;
  VQSTATUS SetLinesPerRow(unsigned long lines);
  VQVFOPENPOSITION GetOpenPosition() const;
  VQSTATUS SetOpenPosition(VQVFOPENPOSITION position);
  // Stored while AllowAllReaders is off.
  VQText GetReaders() const;
  VQSTATUS SetReaders(const VQText& readers);
  VQVFREFRESHOPTION GetRefreshOption() const;
  VQSTATUS SetRefreshOption(VQVFREFRESHOPTION option);
  // VQERR_OUT_OF_RANGE for another value.
  VQVFROWSPACING GetRowSpacing() const;
  VQSTATUS SetRowSpacing(VQVFROWSPACING spacing);
  // Of views.
  VQSTATUS GetSelectionFormula(VQFormula* formula) const;
  VQSTATUS SetSelectionFormula(const VQFormula& formula);
  VQVFSHARINGOPTION GetSharingOption() const;
  int GetShowCalendarConflicts() const;
  VQSTATUS SetShowCalendarConflicts(int flag);
  int GetShowInViewMenu() const;
  VQSTATUS SetShowInViewMenu(int flag);
  int GetShowReplicationConflicts() const;
  VQSTATUS SetShowReplicationConflicts(int flag);
  int GetShowResponseHierarchy() const;
  VQSTATUS SetShowResponseHierarchy(int flag);
  int GetShowSelectionMargin() const;
  VQSTATUS SetShowSelectionMargin(int flag);
  int GetShrinkRows() const;
  VQSTATUS SetShrinkRows(int flag);
  VQVFSTYLE GetStyle() const;
  VQSTATUS SetStyle(VQVFSTYLE style);
  VQVFTIMESLOTDISPLAY GetTimeSlotDisplay() const;
  VQSTATUS SetTimeSlotDisplay(VQVFTIMESLOTDISPLAY display);
  // Minutes: 15, 30, 60 or 120.
  unsigned long GetTimeSlotDuration() const;
  VQSTATUS SetTimeSlotDuration(unsigned long minutes);
  // Hours below 24, else VQERR_OUT_OF_RANGE; VQERR_TIME_SLOTS_OVERLAP unless the end is behind the start.
  unsigned long GetTimeSlotEndHour() const;
  VQSTATUS SetTimeSlotEndHour(unsigned long hour);
  unsigned long GetTimeSlotStartHour() const;
  VQSTATUS SetTimeSlotStartHour(unsigned long hour);
  VQSTATUS GetTimeSlotFontStyle(VQFontStyle* style) const;
  VQSTATUS SetTimeSlotFontStyle(const VQFontStyle& style);
  unsigned short GetTodayColor() const;
  VQSTATUS SetTodayColor(unsigned short color);
  VQSTATUS GetTotalsFontStyle(VQFontStyle* style) const;
  VQSTATUS SetTotalsFontStyle(const VQFontStyle& style);
  int GetTreatContentsAsHTML() const;
  VQSTATUS SetTreatContentsAsHTML(int flag);
  VQSTATUS GetUnreadFontStyle(VQFontStyle* style) const;
  VQSTATUS SetUnreadFontStyle(const VQFontStyle& style);
  VQVFUNREADMARKDISPLAY GetUnreadMarkDisplay() const;
  VQSTATUS SetUnreadMarkDisplay(VQVFUNREADMARKDISPLAY display);
  int GetUseAlternateRowColor() const;
  VQSTATUS SetUseAlternateRowColor(int flag);
  unsigned long GetVersion() const;

  // Columns, by number from 0 or by title without case and accents (VQWARN_NOT_FOUND). A column's handle shares it.
  // VQERR_OUT_OF_RANGE; operator[] throws VQERR_BAD_SUBSCRIPT. Out pointers of the adding operations may be null.
  unsigned long GetColumnCount() const;
  VQSTATUS GetColumn(unsigned long index, VQVFColumn* column) const;
  VQSTATUS GetColumn(const VQString& title, VQVFColumn* column) const;
  VQString GetColumnTitle(unsigned long index) const;
  VQVFColumn operator[](unsigned long index) const;
  // At most 65,535 columns: VQERR_CANT_ADD_COLUMNS.
  VQSTATUS AppendColumn(VQVFColumn* column = nullptr);
  // A copy of a column of any view.
  VQSTATUS AppendColumn(const VQVFColumn& source, VQVFColumn* column = nullptr);
  VQSTATUS AppendColumns(unsigned long count);
  VQSTATUS InsertColumn(unsigned long position, VQVFColumn* column = nullptr);
  VQSTATUS InsertColumn(unsigned long position, const VQVFColumn& source, VQVFColumn* column = nullptr);
  VQSTATUS InsertColumns(unsigned long position, unsigned long count);
  VQSTATUS DeleteColumn(unsigned long index);
  // Releases the handle. VQERR_NOT_OF_THIS_VIEW for a column of another view.
  VQSTATUS DeleteColumn(VQVFColumn* column);
  VQSTATUS DeleteColumns(unsigned long position, unsigned long count);

  // Entries, by the built-in navigator.
  VQSTATUS Find(const VQString& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQString& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQDatetime& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQDatetime& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const double& key, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const double& key, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQVFFindKeys& keys, VQVFEntry* entry = nullptr, unsigned long* count = nullptr,
                VQVFNavigator* navigator = nullptr);
  VQSTATUS Find(const VQVFFindKeys& keys, const VQVFFindOptions& options, VQVFEntry* entry = nullptr,
                unsigned long* count = nullptr, VQVFNavigator* navigator = nullptr);
  // *navigator gets the hits. VQWARN_NOT_FOUND for none, with an empty navigator. VQERR_DIFFERENT_DATABASE for a
  // restriction whose documents are in another database.
  VQSTATUS FTSearch(const VQString& query, VQVFNavigator* navigator);
  VQSTATUS FTSearch(const VQString& query, VQVFNavigator* navigator, const VQFTSearchOptions& options);
  VQSTATUS FTSearch(const VQString& query, VQVFNavigator* navigator, const VQFTSearchOptions& options,
                    const VQVFNavigator& restriction);
  VQSTATUS GetEntries(VQVFNavigator* navigator) const;
  VQSTATUS GetEntry(VQVFEntry* entry);
  VQSTATUS GetEntry(VQVFEntry* entry, const VQVFPosition& position);
  unsigned long GetEntryCount() const;
  VQDatabase GetEntryDatabase() const;
  // Below the present position; `levels` 0 gives VQERR_OUT_OF_RANGE.
  VQSTATUS GetDescendants(VQVFNavigator* navigator) const;
  VQSTATUS GetDescendants(VQVFNavigator* navigator, unsigned long levels) const;
  VQSTATUS GetIDTable(void** table);
  VQSTATUS GetPosition(VQVFPosition* position) const;
  VQSTATUS SetPosition(const VQVFPosition& position);
  VQSTATUS ResetPosition();
  VQSTATUS Goto(VQNAVIGATION code, VQVFEntry* entry = nullptr);
  VQSTATUS Refresh();
  VQSTATUS DeleteAllEntries();
  VQSTATUS DeleteEntries(VQVFEntry* entry, int withDescendants = 0);
  VQSTATUS DeleteEntries(const VQVFPosition& position, int withDescendants = 0);

  // Documents of a folder; VQERR_FOLDER_ONLY for a view. They must be of the folder's database:
  // VQERR_DIFFERENT_DATABASE. VQERR_UNINITIALIZED_ARGUMENT for a null source, VQERR_EMPTY_ARRAY for an empty one. The
  // change is stored at once; the folder's slate is opened anew unless it holds unsaved changes.
  VQSTATUS FolderAddDocument(const VQSlate& document);
  VQSTATUS FolderAddDocument(unsigned long id);
  VQSTATUS FolderAddDocuments(const VQSlateArray& documents);
  VQSTATUS FolderAddDocuments(const VQViewFolder& source);
  VQSTATUS FolderAddDocuments(const VQVFNavigator& source);
  VQSTATUS FolderAddDocuments(void* idtable);
  VQSTATUS FolderRemoveAllDocuments();
  // A slate that was never saved is in no folder: that is no failure.
  VQSTATUS FolderRemoveDocument(const VQSlate& document);
  VQSTATUS FolderRemoveDocument(unsigned long id);
  VQSTATUS FolderRemoveDocuments(const VQSlateArray& documents);
  VQSTATUS FolderRemoveDocuments(const VQViewFolder& source);
  VQSTATUS FolderRemoveDocuments(const VQVFNavigator& source);
  VQSTATUS FolderRemoveDocuments(void* idtable);

  // Called now and then while any view of the process has its index built, with documents done and to do, on the thread
  // that opens or refreshes the view; it must not use the library. Null ends it.
  static VQSTATUS SetIndexProgress(void (*progress)(void* context, unsigned long done, unsigned long all),
                                   void* context);

  VQViewFolderBody* GetViewFolderBody() const;

 private:
  friend class VQDatabase;

  static constexpr unsigned long kAtEnd = ~0UL;

  enum class Suits { All, Calendar, NotCalendar, Folder, View };
  enum class Change { Add, Remove };

  VQSTATUS CheckDesign(VQViewFolderBody** body, Suits suits = Suits::All) const;
  VQViewFolderBody* RequireDesign(Suits suits = Suits::All) const;
  // Runs an edit, which gives a status, and marks the design when it succeeds.
  template <typename Edit>
  VQSTATUS Amend(Suits suits, Edit edit);
  // Families of properties.
  int GetTableBit(unsigned mask, Suits suits = Suits::All) const;
  VQSTATUS SetTableBits(unsigned mask, unsigned value, Suits suits = Suits::All);
  VQSTATUS SetTableBit(unsigned mask, int flag, Suits suits = Suits::All);
  VQSTATUS SetRowBit(unsigned mask, bool on);
  int GetLetter(char letter) const;
  VQSTATUS SetLetter(char letter, int flag);
  int GetState(unsigned long mask) const;
  VQSTATUS SetState(unsigned long mask, int flag, unsigned long more = 0);
  template <auto Field>
  auto GetField(Suits suits) const;
  template <auto Field>
  VQSTATUS SetNumber(Suits suits, unsigned long value, unsigned long lowest, unsigned long highest, VQSTATUS wrong);
  template <auto Field>
  VQSTATUS GetFont(Suits suits, VQFontStyle* style) const;
  template <auto Field>
  VQSTATUS SetFont(Suits suits, const VQFontStyle& style);
  VQSTATUS SetTexts(VQText VQViewFolderBody::*texts, const VQText& value, Suits suits);
  VQSTATUS CopyOut(const VQFormula& formula, VQFormula* copy) const;
  VQSTATUS SetHour(unsigned long hour, bool end);
  VQSTATUS OpenWith(unsigned long flags, const VQDatabase& entries);
  VQSTATUS AddColumn(unsigned long position, const VQVFColumn* source, VQVFColumn* column);
  VQSTATUS CheckEntries(VQViewFolderBody** body) const;
  VQVFNavigator& RequireEntries() const;
  template <typename Operation>
  VQSTATUS WithEntries(Operation operation) const;
  template <typename Key>
  VQSTATUS FindKey(const Key& key, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                   VQVFNavigator* navigator);
  VQSTATUS FindKeys(const VQVFFindKeys& keys, const VQVFFindOptions* options, VQVFEntry* entry, unsigned long* count,
                    VQVFNavigator* navigator);
  [[nodiscard]] VQSTATUS SearchEntries(const VQString& query, VQVFNavigator* navigator,
                                       const VQFTSearchOptions* options, const VQVFNavigator* restriction);
  VQSTATUS MakeNavigator(const VQVFPosition* start, std::uint32_t levels, VQVFNavigator* navigator) const;
  [[nodiscard]] VQSTATUS FindType(VQVFTYPE* type) const;
  [[nodiscard]] VQSTATUS CheckFolder() const;
  VQSTATUS ChangeFolder(Change change, ENGHANDLE table);
  VQSTATUS FolderChanged(VQSTATUS status);
  VQSTATUS ChangeOne(Change change, unsigned long id);
  VQSTATUS ChangeArray(Change change, const VQSlateArray& documents);
  VQSTATUS ChangeTable(Change change, void* idtable);
  VQSTATUS ChangeSlate(Change change, const VQSlate& document);
  VQSTATUS ChangeMany(Change change, const VQDatabase& database, ENGHANDLE table);
  template <typename Source>
  VQSTATUS ChangeFrom(Change change, Source source);
};

// The open view. Operations return their status and leave the throw rule to the handle.
class VQ_API VQViewFolderBody : public VQSlateBody {
 public:
  // The state word.
  static constexpr unsigned long kNew = 0x00000001;
  static constexpr unsigned long kOpen = 0x00000002;
  static constexpr unsigned long kClassChecked = 0x00000004;
  static constexpr unsigned long kOwnsEntryDatabase = 0x00000008;
  static constexpr unsigned long kColumnsMatched = 0x00000010;
  static constexpr unsigned long kDesignChanged = 0x00000020;
  static constexpr unsigned long kDefault = 0x00000040;
  static constexpr unsigned long kColumnsChanged = 0x00000100;
  static constexpr unsigned long kResponsesColumnKnown = 0x00000200;
  static constexpr unsigned long kAllAuthors = 0x00000400;
  static constexpr unsigned long kAllReaders = 0x00000800;
  static constexpr unsigned long kNameChanged = 0x00001000;
  static constexpr unsigned long kUniqueKeys = 0x00002000;
  static constexpr unsigned long kFlagsRead = 0x00004000;
  static constexpr unsigned long kPublicAccess = 0x00008000;
  static constexpr unsigned long kSelectionChanged = 0x00010000;
  static constexpr unsigned long kRebuildFormula = 0x00020000;
  static constexpr unsigned long kNoFormulaTV = 0x00040000;
  static constexpr std::uint32_t kNoResponsesColumn = 0xFFFFFFFF;
  // Internal bits of the open flags.
  static constexpr unsigned long kDesignUnread = 0x40000;
  static constexpr unsigned long kFromFind = 0x80000;

  // The design is not read before Open.
  VQViewFolderBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  ~VQViewFolderBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;
  VQString GetAlias() override;
  VQString GetName() override;
  int IsModified() override;
  VQSTATUS Open(unsigned long flags) override;
  VQSTATUS Save(unsigned short flags) override;
  VQSTATUS Open(unsigned long flags, const VQDatabase& entries);

  // Opens a slate that was never saved, and that nobody has opened yet, for its design.
  [[nodiscard]] VQSTATUS OpenNew();
  VQSTATUS SetName(const VQString& name);
  VQSTATUS SetAlias(const VQString& alias);
  // ENG_ERR_FOLDER_EXISTS when another view or folder of the database has the name.
  [[nodiscard]] VQSTATUS CheckFree(const VQString& name) const;
  // Reads $Flags when the type is not known yet, opening the slate for the moment.
  VQSTATUS GetType(VQVFTYPE* type);
  void SetType(VQVFTYPE type) { Type = type; }
  // An open folder that is a view from its next save on.
  void BecomeView();
  // The slate anew after the engine has changed it; unsaved changes keep it as it is.
  VQSTATUS ReopenUnmodified();

  bool IsDesignOpen() const { return HasState(kOpen); }
  VQSTATUS GetLoadStatus() const { return LoadStatus; }
  bool HasState(unsigned long mask) const { return (DesignFlags & mask) != 0; }
  void SetState(unsigned long mask, bool on);
  bool IsCalendar() const { return Flags.HasLetter('c'); }
  unsigned long GetOpenFlags() const { return OpenFlags; }
  VQDesignFlags& Letters() { return Flags; }
  ViewTableRecord& Table() { return TableRecord; }
  ViewTableExtension& Extension() { return TableExtension; }
  ViewCalendarRecord& Calendar() { return CalendarRecord; }
  VQVFColumnBodyArray& GetColumns() { return Columns; }
  const VQDatabase& GetEntryDatabase() const { return EntryDatabase; }
  // The first column that shows responses only, or kNoResponsesColumn.
  std::uint32_t GetResponsesColumn();
  // The built-in navigator, and the status of reading entries.
  VQVFNavigator& GetNavigator() { return Navigator; }
  VQSTATUS GetNavigatorStatus() const { return NavigatorStatus; }
  // Navigators that close with the view.
  VQObjectList& GetOpenObjects() { return OpenObjects; }
  // What can't be carried along when the columns are others.
  void ForgetTrailer() { FormatTrailer.clear(); }
  [[nodiscard]] VQSTATUS GetFont(std::uint32_t font_id, VQFontStyle* style);
  // VQERR_UNINITIALIZED_ARGUMENT for a null style. Enters a font's face into the slate's table; the font under which
  // the slate knows it.
  [[nodiscard]] VQSTATUS RegisterFont(const VQFontStyle& style, std::uint32_t* font_id);
  // The fonts of a column copied from `source`, null for none, in this view's numbers.
  [[nodiscard]] VQSTATUS TakeFonts(VQViewFolderBody* source, VQVFColumnBody* column);

 private:
  friend class VQViewFolder;

  [[nodiscard]] VQSTATUS CheckFlags(unsigned long flags, const VQDatabase& entries) const;
  [[nodiscard]] VQSTATUS OpenEntries(unsigned long flags);
  [[nodiscard]] VQSTATUS OpenCollection(unsigned long flags);
  // When the stored slate was changed; fails for one that is gone. `modified` may be null.
  [[nodiscard]] VQSTATUS StoredTime(TIMEDATE* modified) const;
  [[nodiscard]] VQSTATUS OpenDesign();
  // The engine's slate anew; the decoded design stays.
  [[nodiscard]] VQSTATUS ReopenSlate();
  void CloseEntries();
  // The reason for which the view can't be used.
  VQSTATUS Fail(VQSTATUS status);
  void ReleaseDesign();

  // Reading.
  void SetDefaults();
  [[nodiscard]] VQSTATUS LoadDesign();
  [[nodiscard]] VQSTATUS ReadItem(std::string_view item, unsigned short* type, std::string* value) const;
  [[nodiscard]] VQSTATUS LoadFormat();
  [[nodiscard]] VQSTATUS AppendDefaultColumn();
  [[nodiscard]] VQSTATUS LoadFlags();
  [[nodiscard]] VQSTATUS LoadCalendar();
  [[nodiscard]] VQSTATUS LoadItems();
  // Clears the state where the item is there.
  [[nodiscard]] VQSTATUS LoadTexts(std::string_view item, VQText* texts, unsigned long state);
  [[nodiscard]] VQSTATUS LoadFormula(std::string_view item, bool selection, VQFormula* formula);
  [[nodiscard]] VQSTATUS LoadUniqueKeys();
  vq::viewdesign::Format Format();

  // Writing.
  [[nodiscard]] VQSTATUS SaveDesign();
  [[nodiscard]] VQSTATUS SaveItems();
  [[nodiscard]] VQSTATUS SaveValue(std::string_view item, unsigned short type, std::string_view value,
                                   unsigned short flags);
  [[nodiscard]] VQSTATUS SaveText(std::string_view item, std::string_view text, unsigned short flags);
  [[nodiscard]] VQSTATUS SaveOrRemove(std::string_view item, bool keep, std::string_view text, unsigned short flags);
  [[nodiscard]] VQSTATUS SaveTexts(std::string_view item, const VQText& texts, unsigned short flags, bool keep);
  [[nodiscard]] VQSTATUS SaveCode(std::string_view item, std::string_view code);
  [[nodiscard]] VQSTATUS Remove(std::string_view item);
  [[nodiscard]] VQSTATUS CheckAlias() const;
  [[nodiscard]] VQSTATUS SaveTitle(bool temporary);
  // For a column's values, in no other column's use.
  std::string NextItemName();
  [[nodiscard]] VQSTATUS SettleColumn(VQVFColumnBody* column);
  [[nodiscard]] VQSTATUS SettleColumns();
  [[nodiscard]] VQSTATUS SaveSelection();
  [[nodiscard]] VQSTATUS MergeColumns(vq::viewdesign::MergedFormula* merged);
  [[nodiscard]] VQSTATUS SaveCollations();
  [[nodiscard]] VQSTATUS SaveCollation(const std::string& item, std::span<const vq::viewdesign::SortColumn> sort,
                                       unsigned char flags);
  [[nodiscard]] VQSTATUS SaveResorts(std::uint32_t index, unsigned* number);
  [[nodiscard]] VQSTATUS SaveTotals();
  [[nodiscard]] VQSTATUS SaveFormat();
  [[nodiscard]] VQSTATUS SaveCalendar();
  [[nodiscard]] VQSTATUS SaveRest();
  [[nodiscard]] VQSTATUS SaveClass();
  [[nodiscard]] VQSTATUS FinishRename(unsigned short flags);

  VQString Alias;
  VQText Authors;
  ViewCalendarRecord CalendarRecord;
  VQSTATUS LoadStatus;  // why the object can't be used
  VQVFColumnBodyArray Columns;
  VQString Comment;
  VQDesignFlags Flags;
  VQDatabase EntryDatabase;
  std::uint32_t ResponsesColumn;
  std::uint32_t DesignFlags;
  VQFormula FormFormula;
  VQString Name;
  VQVFNavigator Navigator;
  VQSTATUS NavigatorStatus;
  VQObjectList OpenObjects;
  VQVFTYPE Type;
  std::uint32_t OpenFlags;
  VQText Readers;
  VQFormula SelectionFormula;
  VQString InheritsFromTemplateName;
  ViewTableRecord TableRecord;
  ViewTableExtension TableExtension;
  std::string FormatTrailer;  // what a newer release wrote behind the format's records
};

inline VQViewFolderBody* VQViewFolder::GetViewFolderBody() const { return static_cast<VQViewFolderBody*>(Body); }

class VQ_API VQViewFolderArray : public VQSlateArray {
 public:
  using VQSlateArray::VQSlateArray;
  VQCLASSID GetClassID() const override;
  VQViewFolder operator[](unsigned long index) const;
};

#endif
