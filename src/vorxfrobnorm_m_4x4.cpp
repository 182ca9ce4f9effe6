// Frobenius norm of one matrix, size 4x4: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_m_4x4.inc"
