// Trace of an array of matrices, order 5: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_ma_5x5.inc"
