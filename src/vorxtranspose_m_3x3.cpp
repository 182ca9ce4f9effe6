// Transpose of one matrix, size 3x3: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_m_3x3.inc"
