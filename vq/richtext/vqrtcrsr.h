// VQRTCursor: a position in a rich text.
#ifndef QUILLON_VQ_RICHTEXT_VQRTCRSR_H
#define QUILLON_VQ_RICHTEXT_VQRTCRSR_H

#include "vq/richtext/vqrtobj.h"

// The bounds of what an operation works on.
struct VQRTSelection {
  VQRTObject Start;
  VQRTObject End;
  VQRTObject Container;
};

class VQ_API VQRTCursorBody : public VQBody {
 public:
  VQRTCursorBody() = default;
  VQRTCursorBody(const VQRTCursorBody&) = delete;
  VQRTCursorBody& operator=(const VQRTCursorBody&) = delete;
  VQCLASSID GetClassID() const override;

 private:
  friend class VQRTCursor;

  // Takes the edge along where the run moves its handles.
  class Element : public VQRTElement {
   public:
    explicit Element(int* rightEdge) : RightEdge(rightEdge) {}
    Element(const Element&) = delete;
    using VQRTElement::operator=;
    Element& operator=(const Element& other) {
      VQRTElement::operator=(other);
      return *this;
    }

   private:
    void MoveTo(unsigned long offset, int rightEdge) override;
    int GetEdge() const override { return *RightEdge; }

    int* RightEdge;
  };

  int RightEdge = 0;
  Element RTElement{&RightEdge};
  VQRTContainer Scope;
  unsigned long SearchOptions = 0;
};

// A position is an element and one of its sides; elements are characters and leaf objects, an empty run counts as
// one. After one element and before the next of the same paragraph are the same position and compare equal. A cursor
// follows its character when the text around it changes; when that is deleted the cursor stands where it was, and when
// the run or another element goes the cursor is invalid, and then operations give, or operators throw,
// VQERR_CURSOR_INVALID. Assignment shares the position, Copy takes one of its own. A scope limits all motion to a
// container. Finds without a hit give VQWARN_NOT_FOUND and leave the cursor alone.
class VQ_API VQRTCursor : public VQSmartPtr {
 public:
  VQRTCursor() = default;
  VQRTCursor(const VQRTCursor& other) : VQSmartPtr(other) {}
  VQRTCursor(const VQRTElement& element, int rightEdge);
  VQRTCursor(VQStylizedTextBody* body, unsigned long offset, int rightEdge);
  VQRTCursor& operator=(const VQRTCursor& other);
  VQCLASSID GetClassID() const override;

  VQSTATUS Assign(VQStylizedTextBody* body, unsigned long offset, int rightEdge);
  VQSTATUS Assign(const VQRTElement& element, int rightEdge);
  VQSTATUS Copy(const VQRTCursor& other);

  VQRTCursor operator+(unsigned long count) const;
  VQRTCursor operator-(unsigned long count) const;
  VQRTCursor& operator+=(unsigned long count);
  VQRTCursor& operator-=(unsigned long count);
  VQRTCursor& operator++();
  VQRTCursor operator++(int);
  VQRTCursor& operator--();
  VQRTCursor operator--(int);
  // Signed distance in positions: positive when this cursor is right of the other. Costs as much as it counts.
  long operator-(const VQRTCursor& other) const;
  int operator<(const VQRTCursor& other) const;
  int operator<=(const VQRTCursor& other) const;
  int operator>(const VQRTCursor& other) const;
  int operator>=(const VQRTCursor& other) const;
  int operator==(const VQRTCursor& other) const;
  int operator!=(const VQRTCursor& other) const;

  VQSTATUS GetFontStyle(VQFontStyle* style) const;
  // The object right (left) of the position, which may be a paragraph record.
  VQSTATUS GetNextObject(VQRTObject* object) const;
  VQSTATUS GetPreviousObject(VQRTObject* object) const;
  // The character's place in its run, 0 on another element.
  unsigned long GetOffset() const;
  int GetRightEdge() const;
  VQSTATUS GetParagraphStyle(VQParagraphStyle* style) const;
  VQSTATUS GetParentContainer(VQRTTYPE type, VQRTContainer* container) const;
  // The element that the cursor stands on.
  VQSTATUS GetRTObject(VQRTObject* object) const;

  VQSTATUS GotoStart(VQRTTYPE type);
  VQSTATUS GotoStart(const VQRTContainer& container);
  VQSTATUS GotoEnd(VQRTTYPE type);
  VQSTATUS GotoEnd(const VQRTContainer& container);
  VQSTATUS GotoFirst(VQRTTYPE type, VQRTObject* object = nullptr);
  VQSTATUS GotoFirst(const VQString& text);
  VQSTATUS GotoFirst(char character);
  VQSTATUS GotoLast(VQRTTYPE type, VQRTObject* object = nullptr);
  VQSTATUS GotoLast(const VQString& text);
  VQSTATUS GotoLast(char character);
  VQSTATUS GotoNext(VQRTTYPE type, VQRTObject* object = nullptr);
  VQSTATUS GotoNext(const VQString& text);
  VQSTATUS GotoNext(char character);
  VQSTATUS GotoPrevious(VQRTTYPE type, VQRTObject* object = nullptr);
  VQSTATUS GotoPrevious(const VQString& text);
  VQSTATUS GotoPrevious(char character);
  VQSTATUS GotoObject(const VQRTObject& object);

  int IsAtEnd() const;
  int IsAtStart() const;
  int IsInsertablePosition(VQRTTYPE type) const;
  int IsValid() const;
  // Also asks whether the position lies in the container.
  int IsValid(const VQRTObject& container) const;
  int IsValid(const VQRTBaseContainerBody* container) const;

  VQSTATUS RemoveScope();
  VQSTATUS SetScope(const VQRTContainer& container);
  // VQRTSEARCH bits.
  VQSTATUS SetSearchOptions(unsigned long options);

  VQRTCursorBody* GetCursorBody() const;
  // The body of the element that the cursor stands on; null for an empty cursor.
  VQRTObjectBody* GetElementBody() const;
  // Spells the position as before an element where that is the same place.
  void Normalize() const;

 private:
  void Require() const;
  // What motion stays inside: the scope, else the top container, else the element itself.
  VQRTBaseContainerBody* ScopeBody() const;
  bool AtEmptyText() const;
  // Which has no right edge to step on, except at the very end.
  bool OnAttachment() const;
  // Goes to the element that stands for an object that was found.
  void Adopt(const VQRTObject& object);
  static bool Crosses(const VQRTBaseContainerBody& scope, const VQRTObjectBody* left, VQRTObjectBody* right);
  [[nodiscard]] VQSTATUS CheckMotion(VQRTTYPE type) const;
  [[nodiscard]] VQSTATUS CheckSearch(const VQString& text) const;
  VQSTATUS Arrive(VQSTATUS status, const VQRTObject& found, VQRTObject* object);
  [[nodiscard]] VQSTATUS GotoContainerEnd(VQRTObjectBody* container, bool end);
  [[nodiscard]] VQSTATUS GotoTypeEnd(VQRTTYPE type, bool end);
  [[nodiscard]] VQSTATUS SearchFrom(VQRTObjectBody* object, const VQString& text, unsigned long start, bool backwards);
};

#endif
