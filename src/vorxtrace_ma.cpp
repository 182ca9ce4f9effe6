// Trace of an array of matrices, order given at run time: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_ma.inc"
