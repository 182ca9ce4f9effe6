// Matrix addition of two arrays of matrices, either source possibly transposed, size 3x3: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxadd_mama_3x3.inc"
