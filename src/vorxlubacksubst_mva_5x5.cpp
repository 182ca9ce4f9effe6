// LU back substitution, one matrix for an array of vectors of order 5: 32f and 64f, all
// layouts.
#include "lu/backsubst.h"

namespace vorx {

// vorxLUBackSubst_mva_64f_5x5_L steps the matrix columns by 4 bytes (lu::FourByteColumns).
template <>
struct Body<tag::LUBackSubst_mva, double, 5, Lay::L> : lu::FourByteColumns<5> {};

}  // namespace vorx

#include "vorxlubacksubst_mva_5x5.inc"
