// Matrix addition of two arrays of matrices, either source possibly transposed, size given at run time: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxadd_mama.inc"
