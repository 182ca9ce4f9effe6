// Gaxpy of one matrix with arrays of vectors and of vectors to add, size 4x4: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_va_4x4.inc"
