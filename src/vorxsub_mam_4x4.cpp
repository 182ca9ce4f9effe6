// Matrix subtraction of an array of matrices and one matrix, either source possibly transposed, size 4x4: 32f and 64f, all layouts.
#include "elementwise/matrix.h"
#include "vorxsub_mam_4x4.inc"
