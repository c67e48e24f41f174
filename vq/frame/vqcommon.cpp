// Root class, counted bodies and handles.
#include "vq/frame/vqcommon.h"

#include "vq/frame/objlist.h"
#include "vq/frame/state.h"

unsigned long VQGetAPILibraryVersion() { return VQ_API_LIBRARY_VERSION; }

const char* VQGetAPILibraryVersionText(int) { return "Tamarin C++ API Release 2.01 for Serrano and Quillon 4.5"; }

int VQIsQuillonInitialized() { return vq::IsInitialized(); }

VQQuillonClass::VQQuillonClass() : Element(nullptr), Session(nullptr) {}

VQQuillonClass::VQQuillonClass(const VQQuillonSession* session) : Element(nullptr), Session(session) {}

VQQuillonClass::VQQuillonClass(const VQQuillonClass& other) : Element(nullptr), Session(other.Session) {}

VQQuillonClass& VQQuillonClass::operator=(const VQQuillonClass& other) {
  Session = other.Session;
  return *this;
}

VQQuillonClass::~VQQuillonClass() {
  if (Element != nullptr) Element->Object = nullptr;
}

VQSTATUS VQQuillonClass::Close() { return VQ_OK; }

const char* VQQuillonClass::GetClassName() const { return VQGetClassName(GetClassID()); }

const VQQuillonSession* VQQuillonClass::GetSession() const { return Session; }

int VQQuillonClass::IsBody() const { return 0; }

VQBody::VQBody() : RefCount(0) {}

VQBody::VQBody(const VQQuillonSession* session) : VQQuillonClass(session), RefCount(0) {}

VQBody::~VQBody() = default;

int VQBody::IsBody() const { return 1; }

int VQBody::Release() {
  if (RefCount <= 0) vq::AssertionFailed("RefCount > 0", "VQCOMMON", 349);
  if (--RefCount != 0) return 0;
  delete this;
  return 1;
}

int VQBody::ForceClose() {
  AddReference();
  try {
    Close();
  } catch (...) {
    --RefCount;
    throw;
  }
  return Release();
}

VQSmartPtr::VQSmartPtr(VQBody* body) : Body(body) {
  if (Body != nullptr) Body->AddReference();
}

VQSmartPtr::VQSmartPtr(const VQSmartPtr& other) : VQSmartPtr(other.Body) {}

VQSmartPtr::~VQSmartPtr() { VQSmartPtr::DeleteBody(); }

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
