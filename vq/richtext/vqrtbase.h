// VQRTBaseContainerBody and VQRTElementBody: objects that can hold others.
#ifndef QUILLON_VQ_RICHTEXT_VQRTBASE_H
#define QUILLON_VQ_RICHTEXT_VQRTBASE_H

#include "vq/richtext/vqrtobjb.h"

// Children in order, with a range of index values that covers the subtree. Finds go through the subtree in stream
// order, an object before its children; VQRTTYPE_ELEMENT and VQRTTYPE_CHAR also give the characters of text runs,
// as handles with an offset. A find without a hit gives VQWARN_NOT_FOUND and leaves its output alone.
class VQ_API VQRTBaseContainerBody : public VQRTObjectBody {
 public:
  VQRTBaseContainerBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  VQRTBaseContainerBody(VQRTTYPE type, unsigned short signature);
  ~VQRTBaseContainerBody() override;

  // Closes and releases the children first.
  VQSTATUS Close() override;
  VQCLASSID GetClassID() const override;

  VQSTATUS ConvertLinks(VQRichText* source, VQRichText* target) override;
  VQSTATUS ConvertObjects(VQRichText* source, VQRichText* target) override;
  VQSTATUS CarryObjects(VQSlateBody* slate) override;
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  unsigned long GetEndIndexValue() const override;
  unsigned long GetIndexCount() const override;
  using VQRTObjectBody::GetText;
  VQSTATUS GetText(VQString* text) override;
  VQSTATUS GetText(const VQRTCursor& start, const VQRTCursor& end, VQString* text) override;
  VQSTATUS RemoveThis(int keepInTree) override;
  VQSTATUS ShiftLinkIndex(int kind, unsigned long delta) override;
  using VQRTObjectBody::SetFontStyle;
  VQSTATUS SetFontStyle(const VQRTCursor& start, const VQRTCursor& end, const VQFontStyle& style,
                        unsigned long mask) override;
  unsigned long GetSize() const override;
  int IsValid() const override;
  VQSTATUS ConvertFonts(VQItem* table) override;
  VQSTATUS SetDirty(int dirty) override;
  VQSTATUS Update(vq::RecordWriter& writer) override;
  VQRTObjectBody* MakeSame() const override;

  virtual VQSTATUS AppendChild(VQRTObject* child);
  // Appends copies of what lies between the cursors in `source`, or puts them before `before` when it is given.
  virtual VQSTATUS CopyChildren(const VQRTCursor& start, const VQRTCursor& end, VQRTBaseContainerBody* source,
                                VQRTObject* before);
  virtual VQSTATUS FindFirst(VQRTTYPE type, VQRTObject* found);
  virtual VQSTATUS FindLast(VQRTTYPE type, VQRTObject* found);
  virtual VQSTATUS FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found);
  virtual VQSTATUS FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found);
  // At the first element.
  virtual VQSTATUS GetCursor(VQRTCursor* cursor);
  virtual int HasChildren() const;
  virtual VQSTATUS DeleteAllChildren();

  VQRTObjectBody* GetFirstChild() const { return FirstChild; }
  VQRTObjectBody* GetLastChild() const { return LastChild; }
  std::uint32_t GetChildCount() const { return ChildCount; }
  // Whether the object lies in this subtree, or is its top.
  int Contains(const VQRTObjectBody* object) const;

  // As AppendChild, for bodies: VQERR_RT_ALREADY_MEMBER when it has a parent.
  [[nodiscard]] VQSTATUS Append(VQRTObjectBody* child);

  // Puts detached objects, in this order, in front of one of the children (null: at the end), all at once.
  [[nodiscard]] VQSTATUS LinkAll(const std::vector<VQRTObject>& objects, VQRTObjectBody* before);

  // Takes over all children of another tree's container, in front of one of its own (null: at the end). Their records
  // must not lie in blocks that stay with the other tree: see VQRichTextBody::MoveInto.
  [[nodiscard]] VQSTATUS TakeChildren(VQRTBaseContainerBody& from, VQRTObjectBody* before);

  // The object behind (before) one in stream order inside this subtree; null at the end. Descends into children.
  VQRTObjectBody* NextInTree(const VQRTObjectBody* object) const;
  VQRTObjectBody* PreviousInTree(const VQRTObjectBody* object) const;
  // The next (previous) object of a type in stream order; characters play no part. Null when there is none.
  VQRTObjectBody* NextOfType(const VQRTObjectBody* object, VQRTTYPE type) const;
  VQRTObjectBody* PreviousOfType(const VQRTObjectBody* object, VQRTTYPE type) const;
  VQRTObjectBody* FirstOfType(VQRTTYPE type) const;
  VQRTObjectBody* LastOfType(VQRTTYPE type) const;

 protected:
  friend class VQRTObjectBody;
  friend class VQRichTextParser;
  friend class vq::Edit;

  // Puts a detached object between two neighbours of this container and gives it its place in the order.
  [[nodiscard]] VQSTATUS Link(VQRTObjectBody* child, VQRTObjectBody* previous, VQRTObjectBody* next, bool countBack);
  void Unlink(VQRTObjectBody* child);
  // Before the object leaves this tree, or its children do: the rich text's index of them.
  void ForgetParagraphs(VQRTObjectBody* leaving) const;
  // The block that a new child stands in, or behind, cannot stay as it is.
  static void OutdateAround(const VQRTObjectBody& child, const VQRTBaseContainerBody& top);
  void LinkPointers(VQRTObjectBody* child, VQRTObjectBody* previous, VQRTObjectBody* next);
  void UnlinkPointers(VQRTObjectBody* child);
  VQSTATUS CloseChildren();
  // A child has come, has gone or stands for something else. For bodies with WatchesChildren.
  virtual void ChildrenChanged() {}
  // Many children at once: LinkUnnumbered for each, then NumberRun for those from `first` up to `next` (null: to the
  // end), or NumberChildren for all.
  void LinkUnnumbered(VQRTObjectBody* child, VQRTObjectBody* next);
  [[nodiscard]] VQSTATUS NumberRun(VQRTObjectBody* first, VQRTObjectBody* next);
  [[nodiscard]] VQSTATUS NumberRun(VQRTObjectBody* first, VQRTObjectBody* next, unsigned long slots);
  [[nodiscard]] VQSTATUS NumberChildren();
  // Gives index values a gap apart, one to the start and, but for leaves, one to the end of each object; the last one.
  static unsigned long NumberFrom(VQRTObjectBody* first, const VQRTObjectBody* next, unsigned long value,
                                  unsigned long gap);
  // Of a top that has been in order before.
  void NumberAgain();
  bool IsRoomy() const;
  // Of a top: with that between two objects there is no need to renumber.
  unsigned long EnoughGap() const;
  [[nodiscard]] VQSTATUS RenumberTree(VQRTObjectBody* before);
  // Adds to the values of all that stands behind the place in front of a child (null: the end), and to the ends of what
  // the place is in.
  void MoveUp(VQRTObjectBody* before, std::uint32_t distance);
  // For so many values in front of a child (null: at the end).
  bool MakeRoom(VQRTObjectBody* before, unsigned long slots);
  // Spreads the subtree evenly over this container's range, or over its first half to leave room for appending.
  [[nodiscard]] VQSTATUS Renumber(bool leaveRoom = false);

  std::uint32_t ChildCount;
  std::uint32_t EndIndexValue;
  VQRTObjectBody* FirstChild;
  VQRTObjectBody* LastChild;
  VQRichTextBody* RichText;  // in the top container alone
};

// A leaf element, with room for the parts that some kinds have.
class VQ_API VQRTElementBody : public VQRTBaseContainerBody {
 public:
  VQRTElementBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  VQRTElementBody(VQRTTYPE type, unsigned short signature);
  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
};

inline VQRTBaseContainerBody* VQRTObjectBody::AsBase() {
  return HoldsChildren ? static_cast<VQRTBaseContainerBody*>(this) : nullptr;
}
inline const VQRTBaseContainerBody* VQRTObjectBody::AsBase() const {
  return HoldsChildren ? static_cast<const VQRTBaseContainerBody*>(this) : nullptr;
}

#endif
