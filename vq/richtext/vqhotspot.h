// VQHotspot and VQHotspotEnd: stretches of a rich text that do something when they are clicked.
#ifndef QUILLON_VQ_RICHTEXT_VQHOTSPOT_H
#define QUILLON_VQ_RICHTEXT_VQHOTSPOT_H

#include "vq/richtext/vqrtobj.h"

// A hotspot of any kind, VQRTTYPE_HOTSPOT and below: a container whose children are what it shows, its parts and, as
// the last one, its end. GetType tells the kind. What stands behind the fixed part of the begin record is the kind's
// own and is given as bytes. Getters throw on a null or closed handle.
class VQ_API VQHotspot : public VQRTContainer {
 public:
  VQHotspot() = default;
  VQHotspot(const VQRTObject& object);
  VQHotspot(const VQHotspot& other) : VQRTContainer(other) {}
  using VQRTObject::operator=;
  VQHotspot& operator=(const VQHotspot& other) = default;
  VQCLASSID GetClassID() const override;

  unsigned short GetCDSignature() const;
  // Words of the begin record: the kind's number, and bits that depend on it. VQERR_RT_INVALID (thrown) for a record
  // that ends before them.
  unsigned short GetHotspotType() const;
  unsigned long GetHotspotFlags() const;
  // Bytes behind the fixed part of the begin record, and a stretch of them: VQERR_RT_INVALID beyond the last.
  unsigned long GetDataLength() const;
  VQSTATUS ReadData(unsigned long offset, void* buffer, unsigned long size) const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

// The record that ends a hotspot.
class VQ_API VQHotspotEnd : public VQRTObject {
 public:
  VQHotspotEnd() = default;
  // A record of its own: SIG_CD_HOTSPOTEND (0xAE) or SIG_CD_HOTSPOTEND_OLD (0xAA), else VQERR_INVALID_PARAMETER is
  // thrown.
  explicit VQHotspotEnd(unsigned short signature);
  VQHotspotEnd(const VQRTObject& object);
  VQHotspotEnd(const VQHotspotEnd& other) : VQRTObject(other) {}
  using VQRTObject::operator=;
  VQHotspotEnd& operator=(const VQHotspotEnd& other) = default;
  VQCLASSID GetClassID() const override;

  unsigned short GetCDSignature() const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
