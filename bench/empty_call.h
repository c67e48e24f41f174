// Functions in a shared library of their own, for what the calls alone cost.
#ifndef QUILLON_BENCH_EMPTY_CALL_H
#define QUILLON_BENCH_EMPTY_CALL_H

extern "C" __attribute__((visibility("default"))) int EmptyCall(int value);
extern "C" __attribute__((visibility("default"))) int OtherEmptyCall(int value);

#endif
