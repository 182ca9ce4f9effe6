// LU back substitution, one matrix for an array of vectors of order 3: 32f and 64f, all
// layouts.
#include "lu/backsubst.h"

namespace vorx {

// vorxLUBackSubst_mva_64f_3x3_L steps the matrix columns by 4 bytes (lu::FourByteColumns).
template <>
struct Body<tag::LUBackSubst_mva, double, 3, Lay::L> : lu::FourByteColumns<3> {};

}  // namespace vorx

#include "vorxlubacksubst_mva_3x3.inc"
