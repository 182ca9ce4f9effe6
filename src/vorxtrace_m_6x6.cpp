// Trace of one matrix, order 6: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_m_6x6.inc"
