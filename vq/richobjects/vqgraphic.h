// VQGraphic: a picture in a rich text.
#ifndef QUILLON_VQ_RICHOBJECTS_VQGRAPHIC_H
#define QUILLON_VQ_RICHOBJECTS_VQGRAPHIC_H

#include "vq/richtext/vqrtobj.h"

// A graphic record with what belongs to it: a bitmap or a metafile, its segments and tables. The records are kept as
// they are; what is in them is the business of who draws. A default handle is null.
class VQ_API VQGraphic : public VQRTElement {
 public:
  VQGraphic() = default;
  VQGraphic(const VQRTObject& object);
  VQGraphic(const VQGraphic& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQGraphic& operator=(const VQGraphic& other) = default;
  VQCLASSID GetClassID() const override;

  unsigned short GetCDSignature() const;
  // VQRTTYPE_BITMAP or the kind of metafile; VQRTTYPE_NONE for a graphic without a picture.
  VQRTTYPE GetPictureType() const;
  // Segments and tables of the picture.
  unsigned long GetPartCount() const;
  // All its records as they stand in a stream, padding included: GetSize() bytes. VQERR_INVALID_PARAMETER for another
  // size.
  VQSTATUS GetRecords(void* buffer, unsigned long size) const;
  // Makes this handle a new graphic that stands alone from the records of one. VQERR_RT_GRAPHIC_INVALID for anything
  // else, VQERR_INVALID_PARAMETER for none; the handle then stays as it was.
  VQSTATUS SetRecords(const void* records, unsigned long size);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
