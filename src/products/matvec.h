// Matrix by vector, dst = op(src1) * src2, and gaxpy, dst = src1 * src2 + src3: the
// family templates, their checks, and the element loops under the three precision
// regimes of the products. The packed 32f schemes are in packedmv.h.
//
// Every form runs R = src1Height results of K = src1Width terms (gaxpy: height and
// width); the conformity test reads the stored shape (src1Width = src2Len plain,
// src1Height = src2Len transposed), so a non-square transposed call runs the plain
// bounds over the transposed addressing.
#pragma once

#include "matmul.h"
#include "packedmv.h"

namespace vorx::mv {

// Gaxpy's last step: src3[i] is read after the dot part has been stored, so a dst on
// src3 adds the dot part to itself. 64f Contiguous and Strided add it to the running
// sum in the register, the other layouts to the element read back.
inline void addLast(float& s, float* p, float y)
{
    s = sse::add(s, y);
    *p = s;
}
inline void addLast(long double& s, double* p, double y)
{
    s = s + wide(y);
    *p = static_cast<double>(s);
}
inline void addLast(int, double* p, double y) { *p = roundToDouble(wide(*p) + wide(y)); }

// One object of the element loops: for i upward dst[i] is set to +0.0, then every
// partial sum is stored as it arises, k upward. `Entries`: a single-object Pointer
// call tests the dst entry (and gaxpy's src3 entry before it) before the element,
// and per k the entries it reads: matrix then vector, gaxpy vector then matrix. A
// transposed matrix is tested at the running index i*src1Height + k (the one read
// lies at k*src1Height + i). Returns false at a null entry, what was done standing.
// Inlined into each body, so that a fixed size unrolls its constant bounds. A quiet
// sum (see `Forms::quiet`) stores each element once and mends the sign of a zero
// sum after the object. `oa`, `ob`, `od`: object k of the matrix, the vector and
// dst; the views themselves serve the entry tests and gaxpy's src3.
template <class Sum, bool Entries, class OA, class OB, class OD, class A, class B, class Y, class D>
[[gnu::always_inline]] inline bool rows(const OA& oa, const OB& ob, const OD& od, uint32_t k, const A& a, const B& b,
                                        const Y& y, const D& d, uint32_t R, uint32_t K)
{
    constexpr bool gaxpy = !__is_same(Y, NoAdd);
#pragma GCC unroll 6
    for (uint32_t i = 0; i < R; ++i) {
        if (Entries && !((!gaxpy || readOk(y, 0, i)) && readOk(d, 0, i))) return false;
        auto* p = od.at(0, i);
        auto s = Sum::start(p);
#pragma GCC unroll 6
        for (uint32_t n = 0; n < K; ++n) {
            if (Entries && !(gaxpy ? readOk(b, 0, n) && elementOk(a, i, n) : elementOk(a, i, n) && readOk(b, 0, n)))
                return false;
            mul::term<Sum>(s, p, n, *oa.at(i, n), *ob.at(0, n));
        }
        if constexpr (gaxpy) addLast(s, p, *y.at(k, 0, i));
        if constexpr (mul::isQuiet<Sum>) Sum::end(s, p);
    }
    if constexpr (mul::isQuiet<Sum>) mul::mendObject<0>(od, 1, R);
    return true;
}
// The quiet 32f sums of a fixed size, column by column: each vector element is read
// once and every row's sum takes its term n in turn, so each sum runs in the order
// of `rows`.
template <int N, class OA, class OB, class OD>
[[gnu::always_inline]] inline void columns(const OA& oa, const OB& ob, const OD& od)
{
    using Sum = mul::SumF32Quiet;
    float s[N];
    float* const none = nullptr;  // quiet terms store nothing
#pragma GCC unroll 6
    for (uint32_t n = 0; n < N; ++n) {
        const float x = *ob.at(0, n);
#pragma GCC unroll 6
        for (uint32_t i = 0; i < N; ++i) mul::term<Sum>(s[i], none, n, *oa.at(i, n), x);
    }
#pragma GCC unroll 6
    for (uint32_t i = 0; i < N; ++i) Sum::end(s[i], od.at(0, i));
    mul::mendObject<0>(od, 1, N);
}
template <class Sum, bool Entries, class A, class B, class Y, class D>
[[gnu::always_inline]] inline bool rows(uint32_t k, const A& a, const B& b, const Y& y, const D& d, uint32_t R,
                                        uint32_t K)
{
    return rows<Sum, Entries>(a.object(k), b.object(k), d.object(k), k, a, b, y, d, R, K);
}

// One body for both families. `T1`: src1 read transposed; `ArrM`, `ArrV`: src1,
// src2 are arrays; `Y`: gaxpy's src3 (NoAdd for matrix by vector); `Branch`: the
// fixed sizes (bit N) with the alignment branch, per layout.
template <class T, int N, Lay L, bool T1, bool ArrM, bool ArrV, unsigned Branch>
struct Forms {
    using Sum = mul::SumOf<T, L>;
    static constexpr bool packed = sizeof(T) == 4 && N > 0 && adjacent(L);
    using Packed = Engine<N ? N : 4, T1, ArrM, ArrV, (Branch >> N & 1) != 0>;

    template <class A, class B, class Y, class D>
    static vorxStatus single(A a, B b, Y y, D d, uint32_t R, uint32_t K)
    {
        if constexpr (packed) {
            Packed::single(a, b, y, d);
            return kOk;
        } else {
            a = a.withShape(R, K);
            auto v = d.withShape(1, R);
            if (quiet(a, b, y, v, R, K, 1)) return kOk;
            return rows<Sum, L == Lay::P>(0, a, b, y, v, R, K) ? kOk : kNull;
        }
    }

    // Where no dst object shares a byte with a matrix or a vector of the call (all
    // of them Contiguous or Strided, so that their spans bound them), nothing reads
    // the partial sums back: every object runs with the products' quiet sums, which
    // store each element once. Not for gaxpy, whose src3 may be dst.
    template <class A, class B, class Y, class D>
    static bool quiet(const A& a, const B& b, const Y& y, const D& d, uint32_t R, uint32_t K, uint32_t count)
    {
        if constexpr (std::is_void_v<typename Sum::Quiet> || !__is_same(Y, NoAdd)) {
            return false;
        } else {
            if (!spansApart(count, Shaped{d, 1u, R}, Shaped{a, R, K}, Shaped{b, 1u, K})) return false;
            auto object = [&](uint32_t k, const auto& oa, const auto& ob, const auto& od) {
                if constexpr (sizeof(T) == 4 && N > 0) columns<N>(oa, ob, od);
                else rows<typename Sum::Quiet, false>(oa, ob, od, k, a, b, y, d, R, K);
            };
            eachObject(count, object, first(a), first(b), first(d));
            return true;
        }
    }

    // `entriesB`, `entriesD`: how many entries of the src2 and dst tables the scan
    // of a Pointer call tests.
    template <class A, class B, class Y, class D>
    static vorxStatus array(A a, B b, Y y, D d, uint32_t R, uint32_t K, uint32_t entriesB, uint32_t entriesD,
                            uint32_t count)
    {
        if constexpr (packed) {
            return Packed::array(a, b, y, d, count);
        } else {
            a = a.withShape(R, K);
            if (!(tableOk(a, R * K) && tableOk(b, entriesB) && tableOk(y, R) && tableOk(d, entriesD)))
                return kNull;
            auto object = [&](uint32_t k) { rows<Sum, false>(k, a, b, y, d, R, K); };
            auto whole = [&] { return quiet(a, b, y, d, R, K, count); };
            return arrayCallWhole(false, 0, count, nothing, whole, object, a, b, y, d);
        }
    }
};

// Matrix by vector. The checks: src1Width, then src1Height zero, then conformity.
template <bool T1, bool ArrM, bool ArrV, unsigned BranchC = 0, unsigned BranchL = BranchC>
struct MatVec {
    template <class T, int N, Lay L>
    struct Impl : Forms<T, N, L, T1, ArrM, ArrV, L == Lay::C ? BranchC : BranchL> {
        using Base = Forms<T, N, L, T1, ArrM, ArrV, L == Lay::C ? BranchC : BranchL>;
        static bool sizesBad(uint32_t w, uint32_t h, uint32_t len)
        {
            return N == 0 && (w == 0 || h == 0 || (T1 ? h : w) != len);
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, uint32_t w, uint32_t h, B b, uint32_t len, D d)
        {
            if (anyNull(a, b, d)) return kNull;
            if (sizesBad(w, h, len)) return kBadSize;
            return Base::single(a, b, NoAdd{}, d, h, w);
        }

        // The scan tests src2Len entries of src2 and src1Width of dst in a transposed
        // call (plain: src1Width and src1Height), though it reads src1Width and writes
        // src1Height: short or long where the matrix is not square.
        template <class A, class B, class D>
        static vorxStatus run(A a, uint32_t w, uint32_t h, B b, uint32_t len, D d, uint32_t count)
        {
            if (anyNull(a, b, d)) return kNull;
            if (sizesBad(w, h, len)) return kBadSize;
            return Base::array(a, b, NoAdd{}, d, h, w, T1 ? len : w, T1 ? w : h, count);
        }
    };
};

// Gaxpy: one plain matrix of any shape; width, then height zero; no conformity.
template <bool Arr, unsigned Branch>
struct Gaxpy {
    template <class T, int N, Lay L>
    struct Impl : Forms<T, N, L, false, false, Arr, Branch> {
        using Base = Forms<T, N, L, false, false, Arr, Branch>;

        template <class A, class B, class Y, class D>
        static vorxStatus run(A a, B b, Y y, D d, uint32_t w, uint32_t h)
        {
            if (anyNull(a, b, y, d)) return kNull;
            if (N == 0 && (w == 0 || h == 0)) return kBadSize;
            return Base::single(a, b, y, d, h, w);
        }

        template <class A, class B, class Y, class D>
        static vorxStatus run(A a, B b, Y y, D d, uint32_t w, uint32_t h, uint32_t count)
        {
            if (anyNull(a, b, y, d)) return kNull;
            if (N == 0 && (w == 0 || h == 0)) return kBadSize;
            return Base::array(a, b, y, d, h, w, w, h, count);
        }
    };
};

}  // namespace vorx::mv

namespace vorx::tag {
using mv::MatVec, mv::Gaxpy;
// code        transposed  matrix array  vector array  alignment branch (Contiguous, List)
struct Mul_mv    : MatVec<false, false, false> {};
struct Mul_mTv   : MatVec<true,  false, false> {};
struct Mul_mva   : MatVec<false, false, true,  sizes(4, 6)> {};
struct Mul_mTva  : MatVec<true,  false, true,  sizes(4, 6)> {};
struct Mul_mav   : MatVec<false, true,  false, sizes(4, 6)> {};
struct Mul_maTv  : MatVec<true,  true,  false, sizes(4)> {};
struct Mul_mava  : MatVec<false, true,  true,  sizes(4, 6)> {};
struct Mul_maTva : MatVec<true,  true,  true,  sizes(4)> {};
struct Gaxpy_v   : Gaxpy<false, sizes(4)> {};
struct Gaxpy_va  : Gaxpy<true,  sizes(4)> {};
}  // namespace vorx::tag
