// VQTamarinScript: a script as source text and as object code. The library understands neither.
//
// Handles share a body until one of them changes it: a change goes to a body of its own. Setters give an unattached
// handle a body; anything else on one gives VQERR_OBJECT_NOT_INITIALIZED, thrown where the result is no status. An
// operation that fails leaves the script as it was. Object code has 4 GB at most: VQERR_OUT_OF_RANGE, or
// VQERR_INSUFFICIENT_MEMORY where there is no room for it.
#ifndef QUILLON_VQ_AUTOMATION_VQSCRIPT_H
#define QUILLON_VQ_AUTOMATION_VQSCRIPT_H

#include <vector>

#include "vq/frame/vqcommon.h"
#include "vq/values/vqstring.h"

class VQ_API VQTamarinScriptBody : public VQBody {
 public:
  VQTamarinScriptBody() = default;
  ~VQTamarinScriptBody() override;
  VQTamarinScriptBody(const VQTamarinScriptBody& other) = default;
  VQTamarinScriptBody& operator=(const VQTamarinScriptBody&) = delete;

  VQCLASSID GetClassID() const override { return VQCLASSID_VQTAMARINSCRIPTBODY; }

  VQString Source;
  std::vector<char> ObjectCode;
};

class VQ_API VQTamarinScript : public VQSmartPtr {
 public:
  VQTamarinScript() = default;
  VQTamarinScript(const VQTamarinScript&) = default;
  explicit VQTamarinScript(VQTamarinScriptBody* body);
  explicit VQTamarinScript(const VQString& source);
  // Bytes of source; more than a VQString holds throw VQERR_STRING_TOO_LONG.
  VQTamarinScript(const char* source, unsigned long sourceLength);
  VQTamarinScript(const VQString& source, const char* code, unsigned long codeLength);
  VQTamarinScript(const char* source, unsigned long sourceLength, const char* code, unsigned long codeLength);
  VQTamarinScript& operator=(const VQTamarinScript&) = default;
  VQCLASSID GetClassID() const override { return VQCLASSID_VQTAMARINSCRIPT; }

  VQString GetSource() const;
  VQSTATUS SetSource(const VQString& source);
  // In bytes.
  unsigned long GetSourceCodeLength() const;
  int HasSource() const;

  // Good until the script is changed; null without object code.
  const char* GetObjectCode() const;
  unsigned long GetObjectCodeLength() const;
  VQSTATUS SetObjectCode(const char* code, unsigned long length);
  // Cuts, or adds zero bytes; 0 frees the code.
  VQSTATUS SetObjectCodeLength(unsigned long length);
  int HasObjectCode() const;
  // At most what is there. VQERR_OUT_OF_RANGE for an offset past the end.
  VQSTATUS ReadObjectCode(unsigned long offset, char* buffer, unsigned long length) const;
  // Grows the code where the bytes lead past its end; a gap is filled with zero bytes.
  VQSTATUS WriteObjectCode(unsigned long offset, const char* buffer, unsigned long length);

  // Gives the handle a body that it shares with none.
  VQSTATUS PrepareToModify();

  VQTamarinScriptBody* GetScriptBody() const { return static_cast<VQTamarinScriptBody*>(Body); }

 private:
  const VQTamarinScriptBody& Checked() const;
};

#endif
