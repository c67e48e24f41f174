// VQVFEntry: one row of a view, a category, a main topic, a response or a total.
//
// An entry is a private copy of the row as it was read; statistics are read on first need. It keeps its navigator and
// its view alive; once these are closed, statistics and column values throw the status that says so. Operations on a
// null entry throw VQERR_OBJECT_NOT_INITIALIZED.
#ifndef QUILLON_VQ_VIEWS_VENTBODY_H
#define QUILLON_VQ_VIEWS_VENTBODY_H

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "vq/views/vnavbody.h"

class VQDocument;
class VQItem;
class VQVFEntryBody;
class VQViewFolder;

enum VQVFENTRYTYPE : unsigned int {
  VQVFENTRYTYPE_CATEGORY = 0,
  VQVFENTRYTYPE_MAIN_TOPIC = 1,
  VQVFENTRYTYPE_RESPONSE = 2,
  VQVFENTRYTYPE_TOTAL = 3,
};

class VQ_API VQVFEntry : public VQSmartPtr {
 public:
  VQVFEntry();
  VQVFEntry(const VQVFEntry& other);
  explicit VQVFEntry(VQVFEntryBody* body);
  VQVFEntry& operator=(const VQVFEntry& other);
  VQVFEntry& operator=(VQVFEntryBody* body);
  VQCLASSID GetClassID() const override;

  unsigned long GetChildCount() const;
  unsigned long GetDescendantCount() const;
  unsigned long GetSiblingCount() const;
  // A null item for a column that has no value on a row of this type, or that is hidden unless asked for.
  VQItem GetColumnItem(unsigned long index, int includeHidden = 0) const;
  VQItem GetColumnItem(const VQString& title, int includeHidden = 0) const;
  unsigned long GetDocLevel() const;
  // Bound, not opened. VQERR_NO_DOCUMENT_FOR_CATEGORY for a category or total.
  VQSTATUS GetDocument(VQDocument* document) const;
  unsigned short GetFTSearchScore() const;
  unsigned long GetIndentLevels() const;
  unsigned long GetSlateID() const;
  VQSTATUS GetPosition(VQVFPosition* position) const;
  VQVFENTRYTYPE GetType() const;
  VQSTATUS GetViewFolder(VQViewFolder* view) const;
  int IsCategory() const;
  int IsMainTopic() const;
  int IsResponse() const;
  int IsTotal() const;
  int IsUnread() const;

  VQVFEntryBody* GetEntryBody() const;

 private:
  VQVFEntryBody* Require() const;
  VQVFEntryBody* RequireStatistics() const;
};

class VQ_API VQVFEntryBody : public VQBody {
 public:
  // State bits.
  static constexpr unsigned short kFullText = 0x0001;
  static constexpr unsigned short kUnread = 0x0002;
  static constexpr unsigned short kStatistics = 0x0004;

  // A copy of the row as it was read.
  VQVFEntryBody(VQVFNavigatorBody* navigator, const COLLECTIONPOSITION& position, const vq::EntryRow& row);
  ~VQVFEntryBody() override;
  VQVFEntryBody(const VQVFEntryBody&) = delete;
  VQVFEntryBody& operator=(const VQVFEntryBody&) = delete;
  // Lets go of navigator and view.
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  [[nodiscard]] VQSTATUS ReadStatistics();
  [[nodiscard]] VQSTATUS GetColumnItem(unsigned long index, int includeHidden, VQItem* item);

  std::uint32_t GetChildCount() const { return ChildCount; }
  std::uint32_t GetDescendantCount() const { return DescendantCount; }
  std::uint32_t GetSiblingCount() const { return SiblingCount; }
  std::uint16_t GetIndentLevels() const { return IndentLevels; }
  std::uint32_t GetSlateID() const { return SlateID; }
  std::uint16_t GetFTSearchScore() const { return FTSearchScore; }
  const VQVFPosition& GetPosition() const { return Position; }
  VQVFENTRYTYPE GetType() const { return Type; }
  bool IsUnread() const { return (Flags & kUnread) != 0; }
  VQVFNavigatorBody* GetNavigatorBody() const { return Navigator; }
  VQViewFolderBody* GetViewFolderBody() const { return ViewFolder; }
  // The view, while the navigator reads from it.
  [[nodiscard]] VQSTATUS CheckView(VQViewFolderBody** view) const;

 private:
  [[nodiscard]] VQSTATUS RecountDescendants();
  bool ShowsColumn(VQViewFolderBody* view, std::uint32_t index, bool include_hidden) const;
  void MatchColumns(VQViewFolderBody* view) const;
  // Type word and value of the summary's item, if it has that name.
  bool FindValue(std::uint16_t index, std::string_view name, std::span<const unsigned char>* value) const;
  [[nodiscard]] VQSTATUS ConstantItem(VQViewFolderBody* view, std::string_view constant, VQItem* item);
  [[nodiscard]] VQSTATUS FormulaItem(VQViewFolderBody* view, VQFormula& formula, VQItem* item);
  [[nodiscard]] VQSTATUS ExpandConstant(VQViewFolderBody* view, std::string_view constant, std::string* expanded);

  std::uint32_t ChildCount;
  std::uint32_t DescendantCount;
  std::unique_ptr<unsigned char[]> Summary;
  std::uint32_t SummarySize;
  std::uint16_t Flags;
  std::uint16_t IndentLevels;
  VQVFNavigatorBody* Navigator;  // counted
  VQViewFolderBody* ViewFolder;  // counted, null once the entry is closed
  std::uint32_t SlateID;
  VQVFPosition Position;
  std::uint16_t FTSearchScore;
  std::uint32_t SiblingCount;
  TIMEDATE Time;  // the navigator's at the moment of reading
  VQVFENTRYTYPE Type;
  std::uint16_t AnyUnread;
  ENGHANDLE UnreadTable;  // the navigator's
};

inline VQVFEntryBody* VQVFEntry::GetEntryBody() const { return static_cast<VQVFEntryBody*>(Body); }

#endif
