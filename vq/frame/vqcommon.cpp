// Root class, counted bodies and handles.
#include "vq/frame/vqcommon.h"

#include "vq/frame/objlist.h"
#include "vq/frame/state.h"

unsigned long VQGetAPILibraryVersion() { return VQ_API_LIBRARY_VERSION; }

const char* VQGetAPILibraryVersionText(int) { return "Tamarin C++ API Release 2.01 for Serrano and Quillon 4.5"; }

int VQIsQuillonInitialized() { return vq::IsInitialized(); }

void VQQuillonClass::LeaveElement() { Element->Object = nullptr; }

VQSTATUS VQQuillonClass::Close() { return VQ_OK; }

const char* VQQuillonClass::GetClassName() const { return VQGetClassName(GetClassID()); }

const VQQuillonSession* VQQuillonClass::GetSession() const { return Session; }

int VQQuillonClass::IsBody() const { return 0; }

VQBody::VQBody() : RefCount(0), OwnReferences(0) {}

VQBody::VQBody(const VQQuillonSession* session) : VQQuillonClass(session), RefCount(0), OwnReferences(0) {}

VQBody::~VQBody() = default;

int VQBody::IsBody() const { return 1; }

int VQBody::ReleaseLast() {
  if (RefCount <= 0) vq::AssertionFailed("RefCount > 0", "VQCOMMON", 349);
  if (OwnReferences != 0) ReleaseOwnParts();
  if (RefCount > 1) {
    --RefCount;
    return 0;
  }
  RefCount = 0;
  delete this;
  return 1;
}

int VQBody::ForceClose() {
  AddReference();
  try {
    Close();
  } catch (...) {
    // Nobody is there to hear of it.
  }
  return Release();
}

VQSmartPtr& VQSmartPtr::operator=(const VQSmartPtr& other) {
  if (this == &other) return *this;
  return operator=(other.Body);
}

// The new body is in place before the old one goes, so that assigning the present body, or a throw out of the old one's
// destructor, leaves a sound handle.
VQSmartPtr& VQSmartPtr::operator=(VQBody* body) {
  VQBody* old = Body;
  Body = body;
  if (body != nullptr) body->AddReference();
  if (old != nullptr) old->Release();
  return *this;
}

int VQSmartPtr::DeleteBody() {
  VQBody* old = Body;
  if (old == nullptr) return 0;
  Body = nullptr;
  return old->Release();
}

const char* VQSmartPtr::GetClassName() const { return VQGetClassName(GetClassID()); }

const VQQuillonSession* VQSmartPtr::GetSession() const { return Body == nullptr ? nullptr : Body->GetSession(); }

int VQSmartPtr::IsNull() const { return Body == nullptr; }
