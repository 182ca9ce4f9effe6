// Matrix subtraction of two matrices, either source possibly transposed, size 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mm_6x6.inc"
