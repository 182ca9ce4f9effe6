// Transpose of one matrix, size 6x6: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_m_6x6.inc"
