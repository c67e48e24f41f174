// Object lists: how a body keeps track of what it has handed out.
//
// A list holds plain pointers and no counts. An object stands in one list at most and must be on the tracked heap.
// When it goes, its element stays behind, empty: walks meet a null object there. An element or object that is not this
// list's gives VQERR_NOT_IN_LIST, a null one VQERR_NULL_POINTER. A list belongs to its owner's thread.
#ifndef QUILLON_VQ_FRAME_OBJLIST_H
#define QUILLON_VQ_FRAME_OBJLIST_H

#include "vq/frame/vqcommon.h"

class VQObjectList;

class VQ_API VQElement {
 public:
  explicit VQElement(VQQuillonClass* object);
  ~VQElement();
  VQElement(const VQElement&) = delete;
  VQElement& operator=(const VQElement&) = delete;

  VQElement* Next;
  VQElement* Previous;
  VQQuillonClass* Object;  // cleared when the object goes
  VQObjectList* ObjectList;
  std::uint32_t SortKey;  // used by sorted lists
};

class VQ_API VQObjectList : public VQQuillonClass {
 public:
  VQObjectList();
  ~VQObjectList() override;
  VQObjectList(const VQObjectList&) = delete;
  VQObjectList& operator=(const VQObjectList&) = delete;
  VQCLASSID GetClassID() const override;

  // Appends. Statuses of CheckObject, or VQERR_INSUFFICIENT_MEMORY.
  virtual VQSTATUS AddObject(VQQuillonClass* object);
  // VQERR_ALREADY_IN_LIST, this or another; VQERR_NOT_ON_HEAP. Never throws.
  VQSTATUS CheckObject(const VQQuillonClass* object) const;
  // Appends an element, which the list owns from then on.
  void AddElement(VQElement* element);
  // Destroys the element; the object lives on, in no list. An assertion for an element of another list.
  void DeleteElement(VQElement* element);
  // Never throws.
  VQSTATUS GetElement(const VQQuillonClass* object, VQElement** element) const;
  VQQuillonClass* GetFirst() const;
  VQQuillonClass* GetLast() const;
  // The list that the object stands in, null for none.
  static VQObjectList* GetListOf(const VQQuillonClass* object);
  // Null behind the last, and for an object of no list or another; a null object starts at GetFirst.
  VQQuillonClass* GetNext(const VQQuillonClass* object) const;
  // As GetNext, towards the first; a null object starts at GetLast.
  VQQuillonClass* GetPrevious(const VQQuillonClass* object) const;
  unsigned long GetCount() const { return Count; }
  // The object lives on.
  VQSTATUS RemoveObject(VQQuillonClass* object);
  // As RemoveObject; then the object is destroyed unless it is a body that handles hold.
  VQSTATUS DeleteObject(VQQuillonClass* object);
  // Newest first; a body that handles hold is closed and stays.
  void DeleteAllObjects();

 protected:
  void CheckInvariant() const;

  // An element that holds the object; null without memory.
  VQElement* MakeElement(VQQuillonClass* object);

  std::uint32_t Count;
  VQElement* First;
  VQElement* Last;

 private:
  VQElement* Spare;  // the last element that was destroyed, for the next object
};

// Ordered by key, a sparse array. Of equal keys the newest stands in front, but behind the last element's. Keys that
// are not there give null or VQWARN_NOT_FOUND; a search is linear.
class VQ_API VQSortedObjectList : public VQObjectList {
 public:
  VQCLASSID GetClassID() const override;
  // Always VQERR_SORT_KEY_REQUIRED.
  VQSTATUS AddObject(VQQuillonClass* object) override;
  // Keys have 32 bits; VQERR_OUT_OF_RANGE above.
  VQSTATUS AddObject(VQQuillonClass* object, unsigned long key);
  VQQuillonClass* FindObject(unsigned long key) const;
  VQElement* FindElement(unsigned long key) const;
  // The object lives on.
  VQSTATUS DeleteElementByKey(unsigned long key);
  // Destroys the object too, unless it is a body that handles hold.
  VQSTATUS DeleteObjectByKey(unsigned long key);
  VQSTATUS GetKey(const VQQuillonClass* object, unsigned long* key) const;
  // 0 for an empty list.
  unsigned long GetGreatestKey() const;
  // VQERR_OUT_OF_RANGE for a key that would change the order; one equal to a neighbour's keeps it.
  VQSTATUS SetKey(const VQQuillonClass* object, unsigned long key);

 private:
  void InsertElement(VQElement* element);
};

#endif
