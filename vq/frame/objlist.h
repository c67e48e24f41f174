// Object lists: how a body keeps track of what it has handed out.
//
// A list holds plain pointers and no counts. An object stands in one list at most and must be on the tracked heap.
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

  virtual VQSTATUS AddObject(VQQuillonClass* object);
  VQSTATUS CheckObject(const VQQuillonClass* object) const;
  void AddElement(VQElement* element);
  void DeleteElement(VQElement* element);
  VQSTATUS GetElement(const VQQuillonClass* object, VQElement** element) const;
  VQQuillonClass* GetFirst() const;
  VQQuillonClass* GetLast() const;
  VQQuillonClass* GetNext(const VQQuillonClass* object) const;
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

  std::uint32_t Count;
  VQElement* First;
  VQElement* Last;
};

class VQ_API VQSortedObjectList : public VQObjectList {
 public:
  VQCLASSID GetClassID() const override;
  // Always VQERR_SORT_KEY_REQUIRED.
  VQSTATUS AddObject(VQQuillonClass* object) override;
  VQSTATUS AddObject(VQQuillonClass* object, unsigned long key);
  VQQuillonClass* FindObject(unsigned long key) const;
  VQElement* FindElement(unsigned long key) const;
  VQSTATUS DeleteElementByKey(unsigned long key);
  VQSTATUS DeleteObjectByKey(unsigned long key);
  VQSTATUS GetKey(const VQQuillonClass* object, unsigned long* key) const;
  unsigned long GetGreatestKey() const;
  VQSTATUS SetKey(const VQQuillonClass* object, unsigned long key);

 private:
  void InsertElement(VQElement* element);
};

#endif
