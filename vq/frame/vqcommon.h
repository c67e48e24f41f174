// The object frame: root class, counted bodies, handles, the throw rule and assertions.
//
// A handle is kept by value and shares a counted body; assignment shares, and the last handle to go destroys the
// body, whose destructor calls its own Close. Bodies and plain objects made with `new` live on the tracked heap.
// A body and every handle on it belong to one thread at a time.
#ifndef QUILLON_VQ_FRAME_VQCOMMON_H
#define QUILLON_VQ_FRAME_VQCOMMON_H

#include <cstddef>
#include <cstdint>

#include "engine/types.h"
#include "vq/frame/classid.h"
#include "vq/frame/export.h"
#include "vq/frame/status.h"

class VQElement;
class VQQuillonSession;

using VQCHAR = unsigned char;

inline constexpr unsigned long VQ_API_LIBRARY_VERSION = 201;

// 201.
VQ_API unsigned long VQGetAPILibraryVersion();
VQ_API const char* VQGetAPILibraryVersionText(int reserved = 0);
// 1 while any session of the process is initialised, else 0.
VQ_API int VQIsQuillonInitialized();

// The tracked heap. VQNew throws VQERR_INSUFFICIENT_MEMORY, and VQERR_CANT_ALLOCATE_IN_DELETE_ALL while the last
// session's end runs. VQDelete takes null; a pointer that VQNew did not give throws VQERR_NOT_ALLOCATED_BY_VQNEW.
VQ_API void* VQNew(unsigned int size);
VQ_API void VQDelete(void* object);

// Root of bodies and plain objects.
class VQ_API VQQuillonClass {
 public:
  virtual ~VQQuillonClass() {
    if (Element != nullptr) LeaveElement();
  }
  // 0; bodies with open resources override it, and a second Close gives VQWARN_NOT_OPEN.
  virtual VQSTATUS Close();
  virtual VQCLASSID GetClassID() const = 0;
  virtual const char* GetClassName() const;
  virtual const VQQuillonSession* GetSession() const;
  virtual int IsBody() const;
  // Whether the object came from VQNew.
  virtual int IsOnHeap() const;

  static void* operator new(std::size_t size);
  static void* operator new(std::size_t, void* place) { return place; }
  static void operator delete(void* object);
  static void operator delete(void*, void*) {}

 protected:
  VQQuillonClass() : Element(nullptr), Session(nullptr) {}
  explicit VQQuillonClass(const VQQuillonSession* session) : Element(nullptr), Session(session) {}
  // Copies the session; list membership never passes.
  VQQuillonClass(const VQQuillonClass& other) : Element(nullptr), Session(other.Session) {}
  VQQuillonClass& operator=(const VQQuillonClass& other) {
    Session = other.Session;
    return *this;
  }

 private:
  friend class VQElement;
  friend class VQObjectList;
  friend class VQSortedObjectList;

  // The list keeps an empty element and never a dangling one.
  void LeaveElement();

  VQElement* Element;  // the list element that holds this object, null in no list

 protected:
  const VQQuillonSession* Session;
};

class VQ_API VQBody : public VQQuillonClass {
 public:
  ~VQBody() override;
  int IsBody() const override;

  // The three steps by which everything that counts a body holds and releases it. Release destroys at zero and
  // tells whether it did.
  void AddReference() { ++RefCount; }
  int Release() {
    if (RefCount <= 1 + OwnReferences) return ReleaseLast();
    --RefCount;
    return 0;
  }
  std::int32_t GetRefCount() const { return RefCount; }
  // Without those of the body's own parts.
  std::int32_t GetOutsideRefCount() const { return RefCount - OwnReferences; }
  // Close of a body that handles may still hold: afterwards it is destroyed unless they do; 1 if destroyed. What the
  // Close gives or throws is lost, so that a walk over many bodies reaches them all.
  int ForceClose();

 protected:
  VQBody();
  explicit VQBody(const VQQuillonSession* session);
  // The handles of one body are not those of its copy.
  VQBody(const VQBody& other) : VQQuillonClass(other), RefCount(0), OwnReferences(0) {}
  VQBody& operator=(const VQBody& other) {
    VQQuillonClass::operator=(other);
    return *this;
  }

  // Called when the last reference from outside is about to go: what counts this body and is kept by it may be let go
  // of, so that they do not keep each other.
  virtual void ReleaseOwnParts() {}

  std::int32_t RefCount;
  std::int32_t OwnReferences;  // those among RefCount that parts of this body hold

 private:
  int ReleaseLast();
};

// Base of all handles.
class VQ_API VQSmartPtr {
 public:
  ~VQSmartPtr() {
    if (Body != nullptr) Body->Release();
  }

  // Detaches; 1 if that destroyed the body.
  virtual int DeleteBody();
  virtual VQCLASSID GetClassID() const = 0;
  virtual const char* GetClassName() const;
  virtual const VQQuillonSession* GetSession() const;
  virtual int IsNull() const;

 protected:
  VQSmartPtr() : Body(nullptr) {}
  explicit VQSmartPtr(VQBody* body) : Body(body) {
    if (Body != nullptr) Body->AddReference();
  }
  VQSmartPtr(const VQSmartPtr& other) : VQSmartPtr(other.Body) {}
  VQSmartPtr& operator=(const VQSmartPtr& other);
  VQSmartPtr& operator=(VQBody* body);

  VQBody* Body;
};

namespace vq {

// The throw rule, where every public operation with a status result ends.
VQ_API VQSTATUS Apply(VQSTATUS status);
// The way out of operations without a status result.
[[noreturn]] VQ_API void Throw(VQSTATUS status);
// Throws unless the status is 0 or a warning.
inline void ThrowIfError(VQSTATUS status) {
  if (VQIsError(status)) Throw(status);
}

// What an operation gives or throws, for operations with a status that read by ones without.
template <class Operation>
[[nodiscard]] VQSTATUS Caught(Operation&& operation) {
  try {
    return operation();
  } catch (VQSTATUS status) {
    return status;
  }
}

// The same for operations with a status that write into a caller's handle, which may not take the object. Assertions
// go on.
template <class Operation>
[[nodiscard]] VQSTATUS Returned(Operation&& operation) {
  try {
    return operation();
  } catch (VQSTATUS status) {
    if (status == VQERR_ASSERTION_FAILED) throw;
    return status;
  }
}

// Engine results are narrowed here and nowhere else.
constexpr VQSTATUS FromEngine(ENGSTATUS result) { return result; }
constexpr unsigned EngineError(VQSTATUS status) { return static_cast<unsigned>(status & 0x3FFF); }

[[noreturn]] VQ_API void AssertionFailed(const char* expression, const char* file, unsigned line);

// Runs a stretch with the throw switch on and sets it back on every way out.
class ThrowScope {
 public:
  ThrowScope() : Saved(VQGetThrowAllErrors()) { VQSetThrowAllErrors(1); }
  ~ThrowScope() { VQSetThrowAllErrors(Saved); }
  ThrowScope(const ThrowScope&) = delete;
  ThrowScope& operator=(const ThrowScope&) = delete;

 private:
  int Saved;
};

}  // namespace vq

// Stays in force in the shipped library. `file` is the source's name in upper case.
#define VQ_ASSERT_TEXT(condition, text, file)                      \
  do {                                                             \
    if (!(condition)) ::vq::AssertionFailed(text, file, __LINE__); \
  } while (false)
#define VQ_ASSERT(condition, file) VQ_ASSERT_TEXT(condition, #condition, file)

#endif
