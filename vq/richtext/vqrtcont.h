// VQRTContainerBody: a container with the editing operations.
#ifndef QUILLON_VQ_RICHTEXT_VQRTCONT_H
#define QUILLON_VQ_RICHTEXT_VQRTCONT_H

#include "vq/richtext/vqrtbase.h"

namespace vq {
struct TextFindings;
}

// Edits check their arguments first and change nothing when they refuse. Through the handles they also take back what
// they have done when they fail half-way, out of memory say: text, tables of fonts and links and the cursors in the
// text are as before, so that the same can be asked for again. Cursors that an edit takes by pointer are moved behind
// what was inserted, or to where something was deleted; null ones give VQERR_INVALID_PARAMETER, invalid ones
// VQERR_CURSOR_INVALID. Operations that create objects of later kinds stand with those kinds.
class VQ_API VQRTContainerBody : public VQRTBaseContainerBody {
 public:
  VQRTContainerBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  VQRTContainerBody(VQRTTYPE type, unsigned short signature);
  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  // In an empty container these make an empty run to stand on, in a rich text with a paragraph reference ahead, which
  // is no edit.
  VQSTATUS GetCursor(VQRTCursor* cursor) override;

  // Takes the style that a client gave and makes of it what suits the paragraphs of this container.
  virtual VQSTATUS AdjustParagraphStyle(const VQParagraphStyle& style, VQParagraphStyle* adjusted);
  // With convertNewlines each newline starts a paragraph, without it becomes a line break in the paragraph.
  using VQRTBaseContainerBody::Append;
  // The first content of a rich text gets a paragraph reference ahead of it, so that its style can be set.
  virtual VQSTATUS Append(const VQString& text, int convertNewlines);
  virtual VQSTATUS Append(const VQRichText& richText);
  virtual VQSTATUS Append(const VQRTObject& object, VQRTObject* appended);
  // Takes a hotspot away; what it shows stays in its place. VQERR_INAPPROPRIATE for another object.
  virtual VQSTATUS ClearHotspot(VQRTObject* hotspot);
  // The same for all hotspots between the cursors and around the first of them; VQWARN_NOT_FOUND when there are none.
  virtual VQSTATUS ClearHotspotRange(const VQRTCursor& start, const VQRTCursor& end);
  // Shows an attachment at the cursor: a file, under its own name or another one, that is attached to the slate; or an
  // attachment, which is copied when it is another slate's. VQERR_ATTACHMENT_NO_SLATE for a rich text that stands
  // alone, VQERR_ATTACHMENT_SIGNED, VQERR_ATTACHMENT_UNINITIALIZED. `created` may be null.
  virtual VQSTATUS CreateAttachment(const VQString& path, VQRTCursor* cursor, VQRTObject* created);
  virtual VQSTATUS CreateAttachment(const VQString& path, const VQString& name, VQRTCursor* cursor,
                                    VQRTObject* created);
  virtual VQSTATUS CreateAttachment(const VQAttachment& source, VQRTCursor* cursor, VQRTObject* created);
  virtual VQSTATUS CreateAttachment(const VQAttachment& source, const VQString& displayText, VQRTCursor* cursor,
                                    VQRTObject* created);
  // A new field at the cursor, which goes behind it, as VQFormField makes one. `created` may be null. In a form or a
  // subform VQERR_FIELD_EXISTS for a name that is taken there, as for fields that other operations bring (in a form
  // also by its subforms); and VQERR_SUBFORM_EXISTS for a second place of a subform, VQERR_SHARED_FIELD_OTHER_DATABASE
  // for a shared field of another database.
  virtual VQSTATUS CreateFormField(const VQString& name, VQRTTYPE type, VQRTCursor* cursor, VQRTObject* created);
  // An empty table at the cursor, which goes into the text behind it; `table` may be null. VQERR_ROW_COUNT,
  // VQERR_COLUMN_COUNT, VQERR_ZERO_ROWS_COLUMNS; VQERR_CANT_INSERT_TYPE in a table, VQERR_RT_HOTSPOT_CONTENT.
  virtual VQSTATUS CreateTable(unsigned long rows, unsigned long columns, VQRTCursor* cursor, VQTable* table);
  // The two cursors end up at the place of the deletion. VQERR_CURSOR_ORDER, VQERR_RT_SELECTION_INVALID. A paragraph
  // record of its own is refused with VQERR_WRONG_SITUATION, the end record of a structure or a cell with
  // VQERR_INAPPROPRIATE.
  virtual VQSTATUS Delete(VQRTCursor* start, VQRTCursor* end);
  virtual VQSTATUS Delete(VQRTCursor* start, unsigned long count);
  virtual VQSTATUS Delete(VQRTObject* object);
  using VQRTObjectBody::Delete;
  // Before the objects from `first` up to `behind` (null: to the end) go: definitions in between that references
  // further right still use move in front of the first such reference, with the hide or name that follows them.
  // `moved`, which may be null, gets what was moved: it can stand directly in front of `behind`.
  virtual VQSTATUS DeleteRepairLinks(VQRTObjectBody* first, VQRTObjectBody* behind,
                                     std::vector<VQRTObjectBody*>* moved = nullptr);
  virtual VQSTATUS FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style);
  virtual VQSTATUS FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style);
  // An equal style's definition in this container and, if any, the hide or style name that belongs to it.
  virtual VQSTATUS FindSameParagraphStyle(const VQParagraphStyle& style, VQPABDefinition* definition,
                                          VQRTObject* companion);
  virtual VQSTATUS GetEndCursor(VQRTCursor* cursor);
  virtual VQSTATUS GetNewPABID(unsigned short* pabid);
  // A range as a rich text of its own: every reference in it comes with its definition.
  virtual VQSTATUS GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText);
  virtual VQSTATUS GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText);
  virtual VQSTATUS GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText);
  virtual VQSTATUS GetRichText(const VQRTObject& object, VQRichText* richText);
  using VQRTObjectBody::GetRichText;
  // The place of the subform of that exact name. VQWARN_NOT_FOUND.
  virtual VQSTATUS GetRTSubform(const VQString& name, VQRTObject* found);
  virtual VQSTATUS Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines);
  // The run that an empty rich text was given to stand on goes when content takes its place.
  virtual VQSTATUS Insert(const VQRichText& richText, VQRTCursor* cursor);
  // The same for a rich text that stands alone and is nobody else's: its objects move, and whatever the result, it is
  // of no use afterwards.
  VQSTATUS TakeIn(VQRichText& incoming, VQRTCursor* cursor);
  // Puts a detached object that this container takes beside one of its children, with what goes along with it.
  [[nodiscard]] VQSTATUS TakeIn(const VQRTObject& incoming, VQRTObjectBody& beside, bool behind);
  // A copy of the object; `inserted` may be null.
  virtual VQSTATUS Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted);
  // Inserts `object` itself (a detached one) when `copy` is 0, else a deep copy. The core of all object insertion:
  // splits the run that the cursor stands in and repairs the neighbours.
  virtual VQSTATUS InsertAt(const VQRTObject& object, int copy, VQRTObject* inserted, VQRTCursor* cursor);
  virtual int CanInsertType(VQRTTYPE type) const;
  virtual int IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection);
  virtual int IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection);
  virtual int IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection);
  int IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) override;
  // Paragraphs between two cursors become one, as does that of a cursor with its neighbour; also where they stand in a
  // hotspot. VQWARN_NOT_FOUND without a neighbour or a separator, VQERR_RT_SELECTION_INVALID across cells and with a
  // table, VQERR_CURSOR_INVALID for a cursor of another text, VQERR_INVALID_PARAMETER for null ones and a wrong order;
  // nothing is changed then.
  virtual VQSTATUS MergeNextParagraph(VQRTCursor* cursor);
  virtual VQSTATUS MergeParagraphs(VQRTCursor* start, VQRTCursor* end);
  virtual VQSTATUS MergePreviousParagraph(VQRTCursor* cursor);
  // Gives every identifier in this container a new number behind `highest`, or one that `target` does not use when
  // there are none left (none at all: "Function parameter is out of range", nothing changed); references without a
  // definition here take the identifier of the first reference in `target`.
  virtual VQSTATUS ReassignPABIDs(unsigned short highest, unsigned short* newHighestPABID, VQRTContainerBody* target);
  // Sets the references from `start` up to, not with, `end` (null: to the last) to the pair of identifiers: that of
  // the hide formula or style name, and that of the definition.
  virtual VQSTATUS ResetPABReferences(VQRTObjectBody* start, VQRTObjectBody* end, unsigned short source,
                                      unsigned short destination);
  virtual VQSTATUS SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end, const VQParagraphStyle& style);
  virtual VQSTATUS SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style);
  // Replaces the whole content by the text.
  virtual VQSTATUS SetValue(const VQString& text, int convertNewlines);
  virtual VQSTATUS StartNewParagraph(VQRTCursor* cursor);
  // By exact names. Getters give the first, deletions take all of the name away, DeleteAttachment with the attachment
  // itself, off the slate, where the rest of the text does not show it. VQWARN_NOT_FOUND, also for an OLE object, whose
  // record says no name.
  virtual VQSTATUS GetFormField(const VQString& name, VQRTObject* found);
  virtual VQSTATUS DeleteFormField(const VQString& name);
  virtual VQSTATUS DeleteRTSubform(const VQString& name);
  virtual VQSTATUS GetAttachment(const VQString& name, VQRTObject* found);
  virtual VQSTATUS DeleteAttachment(const VQString& name);
  virtual VQSTATUS GetOLEObject(const VQString& name, VQRTObject* found);
  virtual VQSTATUS DeleteOLEObject(const VQString& name);
  virtual VQSTATUS SetTopContainer(VQRichTextBody* richText);

  // After a deletion: a reference stands at the start and at least one text, empty if need be, is left.
  [[nodiscard]] VQSTATUS RestoreParagraphs();

  unsigned short GetHighestPABID() const { return HighestPABID; }
  void SetHighestPABID(unsigned short pabid) { HighestPABID = pabid; }
  // As many new identifiers as there are elements, all of them different; VQERR_OUT_OF_RANGE, and none is used up, when
  // there are not so many left. They are not new any more only once they stand in the text.
  [[nodiscard]] VQSTATUS GetNewPABIDs(std::vector<std::uint16_t>* pabids);
  // Remembers an identifier that was met, if it is the highest so far.
  void RegisterPABID(unsigned short pabid) {
    if (pabid > HighestPABID) HighestPABID = pabid;
  }

 private:
  // `source` is the text that `incoming` is a copy of; null when it is of none.
  VQSTATUS TakeIn(VQRichText& incoming, const vq::TextFindings& found, VQRTCursor* cursor, VQRichTextBody* source);
  // In a rich text that holds nothing yet: the reference that its first paragraph is styled by.
  [[nodiscard]] VQSTATUS BeginText();
  [[nodiscard]] VQSTATUS EnsureElement();
  [[nodiscard]] VQSTATUS CheckInsert(const VQRTObject& object, int copy, const VQRTCursor* cursor) const;
  [[nodiscard]] VQSTATUS PlaceAt(VQRTObjectBody* object, const VQRTCursor& cursor);
  // Of a checked object that is in the right tables already: puts it there, with its neighbours, and moves the cursor.
  [[nodiscard]] VQSTATUS PlaceNew(const VQRTObject& object, VQRTCursor* cursor);
  // Behind what was inserted.
  [[nodiscard]] VQSTATUS MoveBehind(const VQRTObject& placed, VQRTCursor* cursor);
  [[nodiscard]] VQSTATUS CheckLines(const VQString& text, const VQRTCursor& cursor) const;
  // The same for text that starts a run of its own.
  [[nodiscard]] VQSTATUS CheckNewText(const VQString& text, int convertNewlines) const;
  // Parts the run at the cursor where it could not hold the first line as well.
  [[nodiscard]] VQSTATUS PartRun(const VQString& text, VQRTCursor* cursor);
  [[nodiscard]] VQSTATUS InsertLine(const VQString& line, VQRTCursor* cursor);
  [[nodiscard]] VQSTATUS DeleteAcross(VQRTCursor* start, VQRTCursor* end);

  std::uint16_t HighestPABID;  // in the top container
};

#endif
