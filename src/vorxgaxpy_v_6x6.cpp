// Gaxpy of one matrix, one vector and one vector to add, size 6x6: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_v_6x6.inc"
