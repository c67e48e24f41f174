// VQVFPosition: a place in the tree of rows of a view.
//
// A value: copies are separate. The ordinals count from 1 at each level; level 0 is the top.
#ifndef QUILLON_VQ_VIEWS_VFPOSITION_H
#define QUILLON_VQ_VIEWS_VFPOSITION_H

#include <memory>

#include "vq/frame/vqcommon.h"

struct COLLECTIONPOSITION;
class VQString;

class VQ_API VQVFPosition : public VQQuillonClass {
 public:
  // The first row of the top level.
  VQVFPosition();
  // VQERR_NULL_POINTER is thrown for a null one, VQERR_OUT_OF_RANGE for a level above 31.
  explicit VQVFPosition(const COLLECTIONPOSITION* position);
  VQVFPosition(const VQVFPosition& other);
  ~VQVFPosition() override;
  VQVFPosition& operator=(const VQVFPosition& other);
  // Takes the level limits and the ordinals down to the level.
  VQVFPosition& operator=(const COLLECTIONPOSITION* position);
  VQCLASSID GetClassID() const override;

  // By level and ordinals. A null argument throws VQERR_NULL_POINTER, a position without contents
  // VQERR_OBJECT_NOT_INITIALIZED.
  int operator==(const VQVFPosition& other) const;
  int operator==(const COLLECTIONPOSITION* other) const;
  int operator<(const VQVFPosition& other) const;
  int operator>(const VQVFPosition& other) const;
  // -1, 0 or 1: the first ordinal that differs decides, then the shallower one is lower.
  int Compare(const COLLECTIONPOSITION* other) const;
  // 1 for the top level.
  unsigned long GetDocLevel() const;
  // The ordinals in decimal with the separator between them.
  VQString GetDocNumber(const VQString& separator) const;
  void Reset();

  // For the library's own code: the contents, or null.
  COLLECTIONPOSITION* GetPosition() const { return Position.get(); }
  bool IsSet() const { return Position != nullptr; }

 private:
  std::unique_ptr<COLLECTIONPOSITION> Position;
};

#endif
