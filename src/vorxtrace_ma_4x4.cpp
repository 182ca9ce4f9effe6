// Trace of an array of matrices, order 4: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_ma_4x4.inc"
