// Gaxpy of one matrix with arrays of vectors and of vectors to add, sizes given at run time: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_va.inc"
