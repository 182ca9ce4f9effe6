// Matrix subtraction of two arrays of matrices, either source possibly transposed, size 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mama_6x6.inc"
