// LU back substitution, one matrix for an array of vectors, order given at run time: 32f and 64f, all
// layouts.
#include "lu/backsubst.h"

namespace vorx {

// vorxLUBackSubst_mva_64f_L steps the matrix columns by 4 bytes (lu::FourByteColumns).
template <>
struct Body<tag::LUBackSubst_mva, double, 0, Lay::L> : lu::FourByteColumns<0> {};

}  // namespace vorx

#include "vorxlubacksubst_mva.inc"
