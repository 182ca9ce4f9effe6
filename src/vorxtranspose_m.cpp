// Transpose of one matrix, size given at run time: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_m.inc"
