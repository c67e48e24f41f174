// Handles on rich text objects: VQRTObject, VQRTElement, VQRTContainer, VQCompositeData, VQNewParagraph.
#ifndef QUILLON_VQ_RICHTEXT_VQRTOBJ_H
#define QUILLON_VQ_RICHTEXT_VQRTOBJ_H

#include "vq/richtext/rtfwd.h"
#include "vq/richtext/rttype.h"

// Any object of a rich text, or a character of a run when Offset is not 0: a character is a place, not a node, and
// shares the body of its run. Handles share; Copy and CopyRTObject make separate objects. A null handle gives
// VQERR_OBJECT_NOT_INITIALIZED, one whose object has gone VQERR_OBJECT_CLOSED. Getters of neighbours and finds give
// VQWARN_NOT_FOUND and a null (finds: an untouched) output when there is none. Assigning an object of the wrong
// type to a typed handle throws VQERR_CONVERSION_FAILED; operations that hand one out give it as their status.
class VQ_API VQRTObject : public VQSmartPtr {
 public:
  VQRTObject() = default;
  VQRTObject(const VQRTObject& other);
  explicit VQRTObject(VQRTObjectBody* body);
  // On a character; 0 stands for the run itself.
  VQRTObject(VQStylizedTextBody* body, unsigned long offset);
  ~VQRTObject();
  VQRTObject& operator=(const VQRTObject& other);
  VQRTObject& operator=(VQRTObjectBody* body);

  int DeleteBody() override;
  VQCLASSID GetClassID() const override;
  int operator==(const VQRTObject& other) const { return Body == other.Body && Offset == other.Offset; }
  int operator!=(const VQRTObject& other) const { return !(*this == other); }

  // A deep copy into a handle that is null or whose object stands in no container; links and stored objects are
  // carried over to this object's rich text.
  VQSTATUS Copy(const VQRTObject& source);
  VQSTATUS CopyRTObject(const VQRTObject& source, VQRTCOPYOPTIONS options);
  VQSTATUS FindContainer(VQRTTYPE type, VQRTObject* container) const;
  VQSTATUS GetNextSibling(VQRTObject* sibling) const;
  VQSTATUS GetPreviousSibling(VQRTObject* sibling) const;
  VQSTATUS GetParentContainer(VQRTObject* parent) const;
  VQSTATUS GetParentContainer(VQRTTYPE type, VQRTObject* parent) const;
  VQSTATUS GetRichText(VQRichText* richText) const;
  // Null when the object cannot hold others.
  VQRTBaseContainerBody* GetRTBaseContainerBody() const;
  unsigned long GetSize() const;
  VQSTATUS GetText(VQString* text) const;
  VQSTATUS GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) const;
  VQRTTYPE GetType() const;  // VQRTTYPE_NONE for a null handle
  int HasOffset() const { return Offset != 0; }
  unsigned long GetOffset() const { return Offset; }
  // Puts a detached object beside this one, with its fonts and stored objects; what is beside it stays as it is.
  // VQERR_RT_ALREADY_MEMBER, VQERR_RT_NOT_MEMBER when this one stands in no container, VQERR_CANT_INSERT_TYPE or
  // VQERR_RT_HOTSPOT_CONTENT where the container does not take the object: text between the cells of a table, say.
  VQSTATUS InsertNextSibling(VQRTObject* object);
  VQSTATUS InsertPreviousSibling(VQRTObject* object);
  int IsDirty() const;
  int IsLeftOf(const VQRTObject& other) const;
  // Whether the object is of the type or of one below it. VQERR_OUT_OF_RANGE (thrown) for types outside 1 to 69;
  // 0 for a null handle.
  int IsType(VQRTTYPE type) const;
  int IsValid() const;
  // VQ_OK, or VQERR_CONVERSION_FAILED for an object that this handle can't be assigned.
  [[nodiscard]] VQSTATUS CheckType(const VQRTObject& object) const;
  VQSTATUS RemoveThis(int keepInTree = 1);
  VQSTATUS SetDirty(int dirty);
  // VQERR_CORRUPTED for a change between zero and non-zero, VQERR_INVALID_PARAMETER for a place behind the run's end.
  VQSTATUS SetOffset(unsigned long offset);
  // Makes this a handle on a character: of places behind the run's end there are none, VQERR_INVALID_PARAMETER.
  VQSTATUS SetRTChar(VQStylizedTextBody* body, unsigned long offset);
  // Writes the rich text that the object stands in back into its items, as VQRichText::Update. VQWARN_NOT_FOUND when it
  // stands in none.
  VQSTATUS Update();

  VQRTObjectBody* GetRTObjectBody() const;

 protected:
  friend class VQStylizedTextBody;
  friend class vq::Edit;

  void ValidateRTType(const VQRTObject& object) const;
  virtual void ValidateRTType(const VQRTObjectBody* body) const;
  // Shares a body without the type check; for constructors and for finds.
  void Attach(VQRTObjectBody* body, unsigned long offset);
  // By a run whose character under this handle has gone, or has come: to this one, or to its right edge.
  virtual void MoveTo(unsigned long offset, int rightEdge);
  virtual int GetEdge() const { return 0; }
  void LeaveRun();
  // By an edit that was taken back: the run knows this handle.
  void PutBack(VQStylizedTextBody* run, unsigned long offset, int rightEdge);

  unsigned long Offset = 0;

 private:
  VQSTATUS InsertBeside(VQRTObject* object, bool behind);
};

// An element: a character of a run, or a leaf object of type VQRTTYPE_ELEMENT.
class VQ_API VQRTElement : public VQRTObject {
 public:
  VQRTElement() = default;
  VQRTElement(const VQRTObject& object);
  VQRTElement(const VQRTElement& other) : VQRTObject(other) {}
  VQRTElement(VQStylizedTextBody* body, unsigned long offset) : VQRTObject(body, offset) {}
  using VQRTObject::operator=;
  VQRTElement& operator=(const VQRTElement& other) = default;
  VQCLASSID GetClassID() const override;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// A container that can be edited. See VQRTContainerBody for what edits do to cursors. Append and Insert put copies.
class VQ_API VQRTContainer : public VQRTElement {
 public:
  VQRTContainer() = default;
  VQRTContainer(const VQRTObject& object);
  VQRTContainer(const VQRTContainer& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQRTContainer& operator=(const VQRTContainer& other) = default;
  VQCLASSID GetClassID() const override;

  // Text with its newlines as paragraphs; these throw.
  VQRTContainer& operator<<(const VQString& text);
  VQRTContainer& operator<<(const VQRichText& richText);
  VQRTContainer& operator<<(const VQRTObject& object);

  VQSTATUS Append(const VQString& text, int convertNewlines = 1);
  VQSTATUS Append(const VQRichText& richText);
  VQSTATUS Append(const VQRTObject& object, VQRTObject* appended = nullptr);
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
  VQSTATUS FindFirst(VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindLast(VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const;
  VQSTATUS FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) const;
  // The default style where the paragraph has none of its own.
  VQSTATUS FindParagraphStyle(const VQRTObject& object, VQParagraphStyle* style) const;
  VQSTATUS FindParagraphStyle(const VQRTCursor& cursor, VQParagraphStyle* style) const;
  VQSTATUS GetCursor(VQRTCursor* cursor) const;
  VQSTATUS GetEndCursor(VQRTCursor* cursor) const;
  VQSTATUS GetRichText(const VQRTCursor& start, const VQRTCursor& end, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTCursor& start, unsigned long count, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTCursor& start, VQRTTYPE type, VQRichText* richText) const;
  VQSTATUS GetRichText(const VQRTObject& object, VQRichText* richText) const;
  using VQRTObject::GetRichText;
  VQSTATUS Insert(const VQString& text, VQRTCursor* cursor, int convertNewlines = 1);
  VQSTATUS Insert(const VQRichText& richText, VQRTCursor* cursor);
  VQSTATUS Insert(const VQRTObject& object, VQRTCursor* cursor, VQRTObject* inserted = nullptr);
  int CanInsertType(VQRTTYPE type) const;
  // Whether what lies between the cursors, behind one, around one, or an object is whole, so that it can be taken out.
  int IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection) const;
  int IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) const;
  VQSTATUS MergeNextParagraph(VQRTCursor* cursor);
  VQSTATUS MergeParagraphs(VQRTCursor* start, VQRTCursor* end);
  VQSTATUS MergePreviousParagraph(VQRTCursor* cursor);
  VQSTATUS SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                        unsigned long mask = 0xFFFFFFFFUL);
  // An equal definition of the container is used again; that of a named style becomes what the style is wherever its
  // name is defined. VQERR_INVALID_PARAMETER for null handles, a wrong order and cursors in two cells,
  // VQERR_RT_NOT_MEMBER where no paragraph reference stands; VQERR_INAPPROPRIATE for a named style that came with a
  // hide formula of another paragraph.
  VQSTATUS SetParagraphStyle(const VQRTCursor& start, const VQRTCursor& end, const VQParagraphStyle& style);
  VQSTATUS SetParagraphStyle(const VQRTCursor& cursor, const VQParagraphStyle& style);
  VQSTATUS SetValue(const VQString& text, int convertNewlines = 1);
  VQSTATUS StartNewParagraph(VQRTCursor* cursor);

  VQRTContainerBody* GetRTContainerBody() const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// One record that the library has no class for, as bytes. Offsets are from the record's start, header included.
class VQ_API VQCompositeData : public VQRTElement {
 public:
  VQCompositeData() = default;
  VQCompositeData(const VQRTObject& object);
  VQCompositeData(const VQCompositeData& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQCompositeData& operator=(const VQCompositeData& other) = default;
  VQCLASSID GetClassID() const override;

  unsigned short GetCDSignature() const;
  VQSTATUS Read(unsigned long offset, void* buffer, unsigned long size) const;
  VQSTATUS ReadODS(unsigned short structureCode, void* target, unsigned long offset) const;
  // Overwrites or extends, and makes a record where there is none. VQERR_INVALID_PARAMETER for a null buffer and an
  // offset behind the end. VQWARN_CD_OTHER_CLASS when the record now has a signature that a load gives to another
  // class.
  VQSTATUS Write(unsigned long size, void* buffer, unsigned long offset);
  VQSTATUS WriteODS(unsigned short structureCode, void* source, unsigned long offset);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;

 private:
  VQSTATUS CheckWrite(const void* buffer, unsigned long offset);
  VQSTATUS WriteResult(unsigned long offset) const;
};

// The record that ends one paragraph and starts the next. A default handle is null.
class VQ_API VQNewParagraph : public VQRTElement {
 public:
  VQNewParagraph() = default;
  VQNewParagraph(const VQRTObject& object);
  VQNewParagraph(const VQNewParagraph& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQNewParagraph& operator=(const VQNewParagraph& other) = default;
  VQCLASSID GetClassID() const override;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
