// Matrix products of an array of matrices by one matrix, size 3x3: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// Closed 32f forms that hold src2 (read whole ahead of the count test) and work a
// row at a time, so dst = src1 gives the product where src1 is read by rows.
// In Pointer layouts mam, mamT and maTm test no table entry (a null entry is
// followed, and src2's table must be valid even at count 0); in List-strided
// layout these three and maTmT test no list entry. The Strided mam and mamT hold
// src2 the same way and have no entries to test.
template <> struct Body<tag::Mul_mam, float, 3, Lay::P> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::PS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::P> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::PS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::P> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::PS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::LS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::LS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::LS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_maTmT, float, 3, Lay::LS2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::S2> : mul::HeldArray<3, true> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::S2> : mul::HeldArray<3, true> {};

}  // namespace vorx

#include "vorxmul_mam_3x3.inc"
