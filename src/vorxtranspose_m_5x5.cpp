// Transpose of one matrix, size 5x5: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_m_5x5.inc"
