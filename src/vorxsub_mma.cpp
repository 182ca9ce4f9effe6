// Matrix subtraction of one matrix and an array of matrices, either source possibly transposed, size given at run time: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mma.inc"
