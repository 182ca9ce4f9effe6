// LU back substitution, one matrix for an array of vectors of order 4: 32f and 64f, all
// layouts.
#include "lu/backsubst.h"

namespace vorx {

// vorxLUBackSubst_mva_64f_4x4_L steps the matrix columns by 4 bytes (lu::FourByteColumns).
template <>
struct Body<tag::LUBackSubst_mva, double, 4, Lay::L> : lu::FourByteColumns<4> {};

}  // namespace vorx

#include "vorxlubacksubst_mva_4x4.inc"
