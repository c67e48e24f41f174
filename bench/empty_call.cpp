#include "bench/empty_call.h"

int EmptyCall(int value) { return value; }
int OtherEmptyCall(int value) { return value; }
