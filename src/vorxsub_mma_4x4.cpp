// Matrix subtraction of one matrix and an array of matrices, either source possibly transposed, size 4x4: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mma_4x4.inc"
