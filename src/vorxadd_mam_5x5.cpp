// Matrix addition of an array of matrices and one matrix, either source possibly transposed, size 5x5: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxadd_mam_5x5.inc"
