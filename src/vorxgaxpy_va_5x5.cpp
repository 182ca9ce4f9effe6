// Gaxpy of one matrix with arrays of vectors and of vectors to add, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_va_5x5.inc"
