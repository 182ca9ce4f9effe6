// Frobenius norm of one matrix, size 6x6: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_m_6x6.inc"
