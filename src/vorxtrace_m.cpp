// Trace of one matrix, order given at run time: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_m.inc"
