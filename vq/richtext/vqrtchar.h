// VQRTChar: a character of a run.
#ifndef QUILLON_VQ_RICHTEXT_VQRTCHAR_H
#define QUILLON_VQ_RICHTEXT_VQRTCHAR_H

#include "vq/richtext/vqrtobj.h"

// Follows its character through inserts, deletes and splits; dead (offset 0) once the character or the run is gone.
// The one character of an empty run is a place without text.
class VQ_API VQRTChar : public VQRTElement {
 public:
  VQRTChar() = default;
  VQRTChar(const VQRTObject& object);
  VQRTChar(const VQRTChar& other) : VQRTElement(other) {}
  VQRTChar(VQStylizedTextBody* body, unsigned long offset) : VQRTElement(body, offset) {}
  using VQRTObject::operator=;
  VQRTChar& operator=(const VQRTChar& other) = default;
  VQCLASSID GetClassID() const override;

  // The character alone, "\n" for a line break.
  VQSTATUS GetCharacter(VQString* text) const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
