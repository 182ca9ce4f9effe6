// Trace of one matrix, order 3: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_m_3x3.inc"
