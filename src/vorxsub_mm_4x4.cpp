// Matrix subtraction of two matrices, either source possibly transposed, size 4x4: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mm_4x4.inc"
