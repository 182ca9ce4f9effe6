// Frobenius norm of one matrix, size 3x3: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_m_3x3.inc"
