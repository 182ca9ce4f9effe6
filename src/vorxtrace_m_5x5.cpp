// Trace of one matrix, order 5: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_m_5x5.inc"
