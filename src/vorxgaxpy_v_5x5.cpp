// Gaxpy of one matrix, one vector and one vector to add, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_v_5x5.inc"
