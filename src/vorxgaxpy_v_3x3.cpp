// Gaxpy of one matrix, one vector and one vector to add, size 3x3: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_v_3x3.inc"
