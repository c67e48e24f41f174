// VQRichText: the rich text of an item, and of the later items of its name.
#ifndef QUILLON_VQ_RICHTEXT_VQRTBODY_H
#define QUILLON_VQ_RICHTEXT_VQRTBODY_H

#include <bitset>
#include <memory>
#include <string_view>
#include <vector>

#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtobj.h"
#include "vq/store/vqcomposite.h"

class VQText;

// What the session's parser error handler is told.
struct VQRTPARSERERRORDATA {
  VQRichText* RichText;
  std::uint32_t Offset;  // in the stream, over all items
  std::uint16_t Signature;
  std::uint32_t RecordLength;  // without padding
  VQSTATUS Status;
};

namespace vq {

class LinkTable;
class PABIndex;

// What there is in a text to adapt to the tables of another one.
struct TextFindings {
  bool Fonts = false;
  bool Others = false;                   // objects of kinds that may have fonts, links and stored objects
  std::bitset<VQRTTYPE_COUNT> Children;  // their types
};
TextFindings Survey(const VQRTBaseContainerBody& text);

// Builds the body for a composite item that is in the slate.
VQItemBody* MakeRichTextBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place);

}  // namespace vq

// Parsed on first use. A clean tree is never written; a dirty one goes back into items of at most 40,960 bytes, a
// longer record alone in its item.
class VQ_API VQRichTextBody : public VQCompositeItemBody {
 public:
  enum InitStates : std::uint8_t { kNotParsed = 0, kParsing = 1, kParsed = 2 };

  // An empty rich text that stands alone.
  VQRichTextBody();
  // A rich text that stands alone over a composite value in engine memory (type word first), which it takes over.
  VQRichTextBody(ENGHANDLE memory, unsigned long size);
  VQRichTextBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  ~VQRichTextBody() override;

  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;
  VQSTATUS Clear() override;
  int IsDirty() override;
  VQSTATUS Rebound() override;
  void ForgetContent() override { DropTree(); }
  // The tree goes with the values that it looks into.
  void MarkDeleted() override;
  VQSTATUS AddBlockID(const BLOCKID& item, const BLOCKID& value, unsigned long size) override;
  // Writes a dirty tree into the items; those whose records are as they were read stay untouched. On failure the tree
  // stays dirty and the items are what they were; so it is with a tree that could not be read again, which gives
  // VQERR_RT_INVALID or what the parser would give.
  VQSTATUS Flush() override;
  // Into another slate the fonts go along: runs get the face numbers that the faces have there. So does the link table:
  // behind that of the slate, when it is another one; VQERR_WRONG_SITUATION for tables that cannot be joined.
  VQSTATUS CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags, vq::ItemPlace* first) override;
  // As Append of a rich text; the items are written.
  VQSTATUS Join(VQItemBody* source) override;

  int IsInitialized() const { return InitState == kParsed; }
  // Parses if that has not been done. A failure leaves the body unparsed and the items alone.
  [[nodiscard]] VQSTATUS Initialize();
  // Another number whenever objects have come into the tree or have left it.
  std::uint32_t GetStructure() const { return Structure; }
  void NoteStructure() { ++Structure; }
  // The top of the tree; null until parsed.
  VQRTContainerBody* GetTop() const { return Top; }
  // Of the parsed tree; made when first asked for.
  vq::PABIndex& GetPABIndex();
  // Null when nobody has asked for it.
  vq::PABIndex* FindPABIndex() const { return Paragraphs.get(); }
  void DropPABIndex();
  // The slate's font table, or one of its own where the rich text stands alone. VQWARN_NOT_FOUND when there is none.
  [[nodiscard]] VQSTATUS FindFontTable(VQFontTable* table);
  // The same, made when there is none.
  [[nodiscard]] VQSTATUS FindOrMakeFontTable(VQFontTable* table);
  // The slate's link table, or the one that a rich text that stands alone brought along; empty when there is none.
  [[nodiscard]] VQSTATUS FindLinks(vq::LinkTable* links);
  // Behind those that are there.
  [[nodiscard]] VQSTATUS TakeLinks(const vq::LinkTable& links);
  // A copy that stands alone, with copies of the tables; a text that has not been parsed stays so.
  [[nodiscard]] VQSTATUS CopyTo(VQRichText* copy, vq::TextFindings* found);
  // All that a rich text which stands alone holds goes into a container of another one, in front of `before` (null: at
  // the end). This text is empty afterwards.
  [[nodiscard]] VQSTATUS MoveInto(VQRTBaseContainerBody& container, VQRTObjectBody* before);
  // For a rich text that stands alone: copies of the other one's font table, face numbers included, and link table.
  [[nodiscard]] VQSTATUS TakeTables(VQRichTextBody& source);
  // A font table that was made for nothing goes.
  void DropFontTable();
  // Runs the font work of a style that enters this rich text: a table face goes into the slate's font table.
  [[nodiscard]] VQSTATUS AddFontToTable(VQFontStyleBody& style);
  // The values as they would be stored, in engine memory that becomes the caller's; the tree stays as it is.
  [[nodiscard]] VQSTATUS WriteBlocks(std::vector<vq::ItemBlock>* blocks);

 private:
  friend class VQRichTextParser;

  using Loaded = vq::LoadedBlock;

  [[nodiscard]] VQSTATUS Parse();
  void LoadBlocks();
  static void ReleaseBlocks(std::vector<Loaded>& blocks);
  [[nodiscard]] VQSTATUS StoreTree();
  // Makes the blocks the value of a rich text that stands alone.
  [[nodiscard]] VQSTATUS TakeBlocks(std::vector<vq::ItemBlock>& blocks);
  // What is to be stored in a slate that the text is copied into, empty if nothing is.
  // Its links are then that much further on.
  [[nodiscard]] VQSTATUS LinksFor(VQSlateBody* slate, vq::LinkTable* links, unsigned long* shift);
  [[nodiscard]] VQSTATUS CopyWithTables(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                        unsigned long shift, vq::ItemPlace* first);
  // Whether what the values hold is what the tree holds, or would hold.
  bool IsAsStored() const;
  [[nodiscard]] VQSTATUS CopyValues(VQRichText* copy);
  [[nodiscard]] VQSTATUS CopyTree(VQRichText* copy);
  // Whether the text shows stored objects.
  [[nodiscard]] VQSTATUS FindObjects(bool* found);
  void FreeExtraBlocks();
  void DropTree();
  // A block's value has moved; a value of another size means other content.
  void MoveBlock(std::size_t index, const BLOCKID& value, std::uint32_t size);

  VQRTContainerBody* Top;  // counted
  InitStates InitState;
  std::uint32_t Structure = 0;
  std::vector<Loaded> Blocks;  // of the parsed tree, one for each item, in order
  std::unique_ptr<vq::PABIndex> Paragraphs;
  VQItem OwnFonts;                          // font table of a rich text that stands alone, null until it has one
  std::unique_ptr<vq::LinkTable> OwnLinks;  // the same of links
};

// Handle on a rich text. The first navigation or edit parses it; a stream that cannot be parsed gives its status each
// time. Container operations work on the whole text: see VQRTContainer for what they do, and for cursors.
class VQ_API VQRichText : public VQItem {
 public:
  VQRichText() = default;
  VQRichText(const VQRichText& other) : VQItem(other) {}
  // Throws VQERR_INCORRECT_ITEM_TYPE for an item that is no rich text.
  VQRichText(const VQItem& item);
  explicit VQRichText(VQRichTextBody* body);
  VQRichText& operator=(const VQRichText& other) = default;
  VQRichText& operator=(const VQItem& item);
  VQCLASSID GetClassID() const override;

  // Gives the handle an empty rich text that stands alone.
  VQSTATUS Create();

  VQRichText& operator<<(const VQString& text);
  VQRichText& operator<<(const VQRichText& richText);
  VQRichText& operator<<(const VQRTObject& object);
  VQSTATUS Append(const VQString& text, int convertNewlines = 1);
  VQSTATUS Append(const VQRichText& richText);
  VQSTATUS Append(const VQRTObject& object, VQRTObject* appended = nullptr);
  // Appends a document as it reads: through the form, a slate whose $Body has fields, each shown as its item's value;
  // or through the form that its item Form names, and without one as a list of its items. Fonts, links and attachments
  // come along. A closed document or form is opened for it and closed again. VQERR_OBJECT_NOT_INITIALIZED,
  // VQERR_UNINITIALIZED_ARGUMENT.
  VQSTATUS AppendRenderedDocument(const VQSlate& document);
  VQSTATUS AppendRenderedDocument(const VQSlate& document, const VQSlate& form);
  VQSTATUS ClearHotspot(VQRTObject* hotspot);
  VQSTATUS ClearHotspotRange(const VQRTCursor& start, const VQRTCursor& end);
  // An empty table at the cursor, which goes into the text behind it. VQERR_ROW_COUNT above 255, VQERR_COLUMN_COUNT
  // above 64, VQERR_ZERO_ROWS_COLUMNS; VQERR_CANT_INSERT_TYPE in a table, VQERR_RT_HOTSPOT_CONTENT in a hotspot.
  VQSTATUS CreateTable(unsigned long rows, unsigned long columns, VQRTCursor* cursor, VQTable* table = nullptr);
  // See VQRTContainerBody; `created` may be null.
  VQSTATUS CreateAttachment(const VQString& path, VQRTCursor* cursor, VQRTObject* created = nullptr);
  VQSTATUS CreateAttachment(const VQString& path, const VQString& name, VQRTCursor* cursor,
                            VQRTObject* created = nullptr);
  VQSTATUS CreateAttachment(const VQAttachment& source, VQRTCursor* cursor, VQRTObject* created = nullptr);
  VQSTATUS CreateAttachment(const VQAttachment& source, const VQString& displayText, VQRTCursor* cursor,
                            VQRTObject* created = nullptr);
  VQSTATUS CreateFormField(const VQString& name, VQRTTYPE type, VQRTCursor* cursor, VQRTObject* created = nullptr);
  VQSTATUS GetAttachment(const VQString& name, VQRTObject* found) const;
  VQSTATUS DeleteAttachment(const VQString& name);
  VQSTATUS GetFormField(const VQString& name, VQRTObject* found) const;
  VQSTATUS DeleteFormField(const VQString& name);
  VQSTATUS GetRTSubform(const VQString& name, VQRTObject* found) const;
  VQSTATUS DeleteRTSubform(const VQString& name);
  VQSTATUS GetOLEObject(const VQString& name, VQRTObject* found) const;
  VQSTATUS DeleteOLEObject(const VQString& name);
  VQSTATUS Delete(VQRTCursor* start, VQRTCursor* end);
  VQSTATUS Delete(VQRTCursor* start, unsigned long count);
  VQSTATUS Delete(VQRTObject* object);
  // Runs the range through a converter that the EDITEXP settings name for the file's extension, or through the
  // library named. What the converter could not carry is appended to the report, a line for each kind.
  VQSTATUS Export(const VQString& filename, const VQRTCursor& start, const VQRTCursor& end, unsigned long options = 0,
                  VQText* report = nullptr);
  VQSTATUS Export(const VQString& filename, const VQString& library, const VQRTCursor& start, const VQRTCursor& end,
                  unsigned long options = 0, VQText* report = nullptr);
  VQSTATUS FindFirst(VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindLast(VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style) const;
  VQSTATUS FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style) const;
  // At the start (end) of the text; an empty rich text gets an empty run to stand on.
  VQSTATUS GetCursor(VQRTCursor* cursor) const;
  VQSTATUS GetEndCursor(VQRTCursor* cursor) const;
  VQSTATUS GetFontTable(VQFontTable* table) const;
  VQSTATUS GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTObject& object, VQRichText* richText) const;
  // Bytes of all records.
  unsigned long GetSize() const;
  VQSTATUS GetText(VQString* text) const;
  VQSTATUS GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) const;
  // Runs the file through a converter that the EDITIMP settings name for its extension, or through the library
  // named, and inserts the result at the cursor. The report is as that of Export.
  VQSTATUS Import(const VQString& filename, VQRTCursor* cursor, unsigned long options = 0, VQText* report = nullptr);
  VQSTATUS Import(const VQString& filename, const VQString& library, VQRTCursor* cursor, unsigned long options = 0,
                  VQText* report = nullptr);
  VQSTATUS Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines = 1);
  VQSTATUS Insert(const VQRichText& richText, VQRTCursor* cursor);
  VQSTATUS Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted = nullptr);
  int IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) const;
  VQSTATUS MergeNextParagraph(VQRTCursor* cursor);
  VQSTATUS MergeParagraphs(VQRTCursor* start, VQRTCursor* end);
  VQSTATUS MergePreviousParagraph(VQRTCursor* cursor);
  VQSTATUS SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                        unsigned long mask = 0xFFFFFFFFUL);
  VQSTATUS SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end, const VQParagraphStyle& style);
  VQSTATUS SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style);
  VQSTATUS SetValue(const VQString& text, int convertNewlines = 1);
  VQSTATUS StartNewParagraph(VQRTCursor* cursor);
  // Writes a dirty tree into the items of the open slate, as saving the slate does.
  VQSTATUS Update();

  VQRichTextBody* GetRichTextBody() const { return static_cast<VQRichTextBody*>(Body); }
  // The parsed top container.
  VQSTATUS GetTopContainer(VQRTContainer* container) const;

 private:
  // The top of the parsed tree, or the status that says why there is none.
  [[nodiscard]] VQSTATUS Top(VQRTContainerBody** top) const;
  template <typename Operation>
  VQSTATUS Run(Operation operation) const;
};

#endif
