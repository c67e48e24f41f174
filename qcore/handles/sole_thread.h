// Locks that a process with a single thread does without.
#ifndef QUILLON_QCORE_HANDLES_SOLE_THREAD_H
#define QUILLON_QCORE_HANDLES_SOLE_THREAD_H

#include <sys/single_threaded.h>

#include <mutex>

namespace qcore {

// For short stretches that start no thread: while one runs in a process of a single thread, no other can come up.
inline std::unique_lock<std::mutex> LockIfThreaded(std::mutex& mutex) {
  if (__libc_single_threaded) return std::unique_lock(mutex, std::defer_lock);
  return std::unique_lock(mutex);
}

}  // namespace qcore

#endif
