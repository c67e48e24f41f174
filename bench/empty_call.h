// A function in a shared library of its own, for what the call alone costs.
#ifndef QUILLON_BENCH_EMPTY_CALL_H
#define QUILLON_BENCH_EMPTY_CALL_H

extern "C" __attribute__((visibility("default"))) int EmptyCall(int value);

#endif
