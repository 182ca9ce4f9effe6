// LU back substitution, one matrix for an array of vectors of order 6: 32f and 64f, all
// layouts.
#include "lu/backsubst.h"

namespace vorx {

// vorxLUBackSubst_mva_64f_6x6_L steps the matrix columns by 4 bytes (lu::FourByteColumns).
template <>
struct Body<tag::LUBackSubst_mva, double, 6, Lay::L> : lu::FourByteColumns<6> {};

}  // namespace vorx

#include "vorxlubacksubst_mva_6x6.inc"
