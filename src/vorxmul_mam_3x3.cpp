// Matrix products of an array of matrices by one matrix, size 3x3: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// Closed 32f forms that hold src2 (read whole ahead of the count test) and work a
// row at a time, so dst = src1 gives the product where src1 is read by rows.
// In Pointer layouts mam, mamT and maTm test no table entry (a null entry is
// followed, and src2's table must be valid even at count 0); in List-strided
// layout these three and maTmT test no list entry. The Strided mam and mamT hold
// src2 the same way and have no entries to test.
template <class Tag, Lay L>
struct HeldSrc2_3x3 {
    template <class A, class B, class D>
    static vorxStatus run(A a, uint32_t, uint32_t, B b, uint32_t, uint32_t, D d, uint32_t count)
    {
        return mul::Held<3, false>::run<true>(a, b, d, count);
    }
};

template <> struct Body<tag::Mul_mam, float, 3, Lay::P> : HeldSrc2_3x3<tag::Mul_mam, Lay::P> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::PS2> : HeldSrc2_3x3<tag::Mul_mam, Lay::PS2> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::P> : HeldSrc2_3x3<tag::Mul_mamT, Lay::P> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::PS2> : HeldSrc2_3x3<tag::Mul_mamT, Lay::PS2> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::P> : HeldSrc2_3x3<tag::Mul_maTm, Lay::P> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::PS2> : HeldSrc2_3x3<tag::Mul_maTm, Lay::PS2> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::LS2> : HeldSrc2_3x3<tag::Mul_mam, Lay::LS2> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::LS2> : HeldSrc2_3x3<tag::Mul_mamT, Lay::LS2> {};
template <> struct Body<tag::Mul_maTm, float, 3, Lay::LS2> : HeldSrc2_3x3<tag::Mul_maTm, Lay::LS2> {};
template <> struct Body<tag::Mul_maTmT, float, 3, Lay::LS2> : HeldSrc2_3x3<tag::Mul_maTmT, Lay::LS2> {};
template <> struct Body<tag::Mul_mam, float, 3, Lay::S2> : HeldSrc2_3x3<tag::Mul_mam, Lay::S2> {};
template <> struct Body<tag::Mul_mamT, float, 3, Lay::S2> : HeldSrc2_3x3<tag::Mul_mamT, Lay::S2> {};

}  // namespace vorx

#include "vorxmul_mam_3x3.inc"
