// Trace of one matrix, order 4: 32f and 64f, all layouts.
#include "functional/trace.h"
#include "vorxtrace_m_4x4.inc"
