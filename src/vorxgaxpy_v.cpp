// Gaxpy of one matrix, one vector and one vector to add, sizes given at run time: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_v.inc"
