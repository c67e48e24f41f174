// State that the library keeps once for the process.
#ifndef QUILLON_VQ_FRAME_STATE_H
#define QUILLON_VQ_FRAME_STATE_H

#include "vq/frame/status.h"

namespace vq {

struct ProcessState {
  int ThrowAllErrors = 0;
  int InitCount = 0;  // sessions initialised for the process
  char AssertionText[512] = {};
};
extern ProcessState gState;

inline bool IsInitialized() { return gState.InitCount != 0; }
// The guard that opens operations on the engine.
[[nodiscard]] inline VQSTATUS CheckInitialized() { return IsInitialized() ? VQ_OK : VQERR_NOT_INITIALIZED; }

// Library start and end, counted.
[[nodiscard]] VQSTATUS StartLibrary(unsigned long version);
// VQWARN_LEAKED when the last end found objects on the tracked heap.
[[nodiscard]] VQSTATUS EndLibrary();

// Closes or destroys every object on the tracked heap; how many there were.
unsigned long VQDeleteAllObjects();
// Objects on the tracked heap now.
unsigned long CountTrackedObjects();

}  // namespace vq

#endif
