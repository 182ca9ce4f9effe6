// Trace of an array of matrices, order 3: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_ma_3x3.inc"
