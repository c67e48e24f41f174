// The fault switches: of the wrapped engine operations, and of the library's own allocations. Each counts, and fails
// one.
#ifndef QUILLON_TESTS_SEAM_SEAM_H
#define QUILLON_TESTS_SEAM_SEAM_H

#include "engine/types.h"

namespace seam {

inline constexpr ENGSTATUS kFailure = 520;  // ENG_ERR_DB_IO

// The n-th call from now fails, once; 0 only counts.
void Arm(unsigned long n);
// Calls since Arm.
unsigned long Calls();
// The operation that failed, null while none has.
const char* Failed();

bool Fails(const char* operation);

// The same for the library's memory.
void ArmMemory(unsigned long n);
bool MemoryFailed();

}  // namespace seam

#endif
