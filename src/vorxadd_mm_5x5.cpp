// Matrix addition of two matrices, either source possibly transposed, size 5x5: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxadd_mm_5x5.inc"
