// What `new` and the standard containers inside the library get their memory by. The linker leads the library's own
// calls here and no client's: a client meets "Insufficient memory" as a status, and never an exception that it does not
// know. Memory still comes from the process's one allocator, so that either side may free what the other has taken.
#include <cstddef>
#include <new>

#include "vq/frame/vqcommon.h"

namespace {

void* Checked(void* memory) {
  if (memory == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  return memory;
}

}  // namespace

// The names that the linker's --wrap gives to operator new and operator new[].
extern "C" {
void* __wrap__Znwm(std::size_t size);
void* __wrap__Znam(std::size_t size);

// Each keeps to its kind, as its delete does.
void* __wrap__Znwm(std::size_t size) { return Checked(::operator new(size, std::nothrow)); }
void* __wrap__Znam(std::size_t size) { return Checked(::operator new[](size, std::nothrow)); }
}
