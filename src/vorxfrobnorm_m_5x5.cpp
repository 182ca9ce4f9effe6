// Frobenius norm of one matrix, size 5x5: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_m_5x5.inc"
