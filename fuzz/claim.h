// A claim that ends the run when it fails.
#ifndef QUILLON_FUZZ_CLAIM_H
#define QUILLON_FUZZ_CLAIM_H

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void Claim(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "doesn't hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz

#endif
