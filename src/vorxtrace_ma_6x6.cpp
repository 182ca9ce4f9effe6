// Trace of an array of matrices, order 6: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_ma_6x6.inc"
