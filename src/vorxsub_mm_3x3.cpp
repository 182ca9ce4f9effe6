// Matrix subtraction of two matrices, either source possibly transposed, size 3x3: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mm_3x3.inc"
