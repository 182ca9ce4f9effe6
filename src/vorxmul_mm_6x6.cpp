// Matrix products of one matrix by one matrix, size 6x6: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// vorxMul_mm_32f_6x6_S2, vorxMul_mmT_32f_6x6_S2 and vorxMul_mTmT_32f_6x6_S2 gather
// all of op(src2) first, then each row of op(src1), and sum each element as a tree,
// ((p0 + p1) + (p2 + p3)) + (p4 + p5): their results differ in the last bits from
// the left-to-right sums of every other form (vorxMul_mTm_32f_6x6_S2 among them).
struct PairwiseSix {
    [[gnu::always_inline]] static mul::R sum(const mul::R (&p)[6])
    {
        using sse::add;
        return add(add(add(p[0], p[1]), add(p[2], p[3])), add(p[4], p[5]));
    }
};
struct TreeSum6x6 {
    template <class A, class B, class D>
    static vorxStatus run(A a, uint32_t, uint32_t, B b, uint32_t, uint32_t, D d)
    {
        return mul::Held<6, PairwiseSix>::run(a, b, d);
    }
};

template <> struct Body<tag::Mul_mm, float, 6, Lay::S2> : TreeSum6x6 {};
template <> struct Body<tag::Mul_mmT, float, 6, Lay::S2> : TreeSum6x6 {};
template <> struct Body<tag::Mul_mTmT, float, 6, Lay::S2> : TreeSum6x6 {};

}  // namespace vorx

#include "vorxmul_mm_6x6.inc"
