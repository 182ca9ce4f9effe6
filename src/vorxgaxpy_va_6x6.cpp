// Gaxpy of one matrix with arrays of vectors and of vectors to add, size 6x6: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_va_6x6.inc"
