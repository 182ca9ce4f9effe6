// Matrix subtraction of two arrays of matrices, either source possibly transposed, size 5x5: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mama_5x5.inc"
