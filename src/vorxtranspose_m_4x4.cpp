// Transpose of one matrix, size 4x4: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_m_4x4.inc"
