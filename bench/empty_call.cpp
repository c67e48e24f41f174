#include "bench/empty_call.h"

int EmptyCall(int value) { return value; }
