// The packed 32f schemes of matrix by vector at fixed sizes, Contiguous and List.
// Each object's whole result is formed in registers before any of it is stored, in
// a tree of sums fixed per size (p_k the product of matrix column k with x_k; the
// first operand of every sum and product is the one written first, which decides
// which NaN comes out):
//
//   size  plain matrix                              transposed matrix
//   3     (p0+p1)+p2                                (p0+p1)+p2
//   4     (p0+p2)+(p1+p3)                           (p0+p1)+(p2+p3)
//   5     rows 0-3: ((p0+p1)+p4)+(p2+p3)            ((p0+p1)+p4)+(p2+p3)
//         row 4:    ((p0+p2)+p4)+(p1+p3)
//   6     ((p0+p2)+p4)+((p1+p3)+p5)                 ((p0+p1)+(p2+p3))+(p4+p5)
//
// A plain matrix at sizes 4 and 6 goes in 2-by-2 blocks of two rows against paired
// elements of x; the two rows' halves are added last. A transposed matrix holds its
// stored rows, which are the result's lanes, against broadcast elements; so does a
// plain 3x3 once transposed in registers. The plain 5x5 sums rows 0 to 3 across
// lanes in pairs and row 4 in a register of its own.
#pragma once

#include "../elementwise/matrix.h"

namespace vorx::mv {

using sse::R;
using sse::add;
using sse::mul;

// The four-lane moves of the alignment branch, written out: left to itself the
// compiler hoists one branch's loads into the other, and splits an unaligned move
// into two halves.
template <bool A>
inline R load4(const float* p)
{
    R r;
    if (A) __asm__("movaps %1, %0" : "=x"(r) : "m"(*reinterpret_cast<const R*>(p)));
    else __asm__("movups %1, %0" : "=x"(r) : "m"(*reinterpret_cast<const __m128_u*>(p)));
    return r;
}
template <bool A>
inline void store4(float* p, R v)
{
    if (A) __asm__("movaps %1, %0" : "=m"(*reinterpret_cast<R*>(p)) : "x"(v));
    else __asm__("movups %1, %0" : "=m"(*reinterpret_cast<__m128_u*>(p)) : "x"(v));
}
template <int L> inline R lane(R x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(L, L, L, L)); }

// A vector of N floats, also the form of a result:
//   3  lo: e0, 0, e1, e2              4  lo: e0..e3
//   5  lo: e0..e3, hi: e4 in lane 0   6  lo: e0..e3, hi: e4, e5 in lanes 0, 1
// Sizes 4 and 6 move the four-lane part aligned where A.
template <int N>
struct Vec {
    R lo, hi;
    template <bool A>
    static Vec load(const float* p)
    {
        if constexpr (N == 3) return {sse::load3(p), R{}};
        else if constexpr (N == 4) return {load4<A>(p), R{}};
        else if constexpr (N == 5) return {load4<false>(p), sse::load1(p + 4)};
        else return {load4<A>(p), sse::load2(p + 4)};
    }
    template <bool A>
    void store(float* p) const
    {
        if constexpr (N == 3) sse::store3(p, lo);
        else if constexpr (N == 4) store4<A>(p, lo);
        else if constexpr (N == 5) store4<false>(p, lo), sse::store1(p + 4, hi);
        else store4<A>(p, lo), sse::store2(p + 4, hi);
    }
    // + y, element by element (gaxpy's last addition).
    Vec plus(const Vec& y) const { return {add(lo, y.lo), N == 5 ? sse::add1(hi, y.hi) : add(hi, y.hi)}; }
};

template <class V> auto origin(const V& v, uint32_t k) { return v.row(k, 0); }
template <class V> auto origin(const Tr<V>& v, uint32_t k) { return v.v.row(k, 0); }
template <class V> int32_t rowStride(const V& v) { return v.rs; }
template <class V> int32_t rowStride(const Tr<V>& v) { return v.v.rs; }
template <class V> int32_t objectStride(const V& v) { return v.os; }
template <class V> int32_t objectStride(const Tr<V>& v) { return v.v.os; }

// Stored rows, the four-lane head of each aligned where A.
template <int N, bool A>
inline void loadRows(const float* p, int32_t rs, R (&head)[N])
{
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i) {
        const float* r = byteAt(p, step(i, rs));
        head[i] = N == 3 ? sse::load3(r) : load4<A && N != 5>(r);
    }
}

// Transposed matrix: stored row k holds result lanes; x_k broadcast.
template <int N>
struct Trans {
    struct M {
        R r[N];                     // stored row k: elements 0..3 (size 3: e0, 0, e1, e2)
        R s[N > 4 ? N : 1];         // size 5: element 4 in lane 0; size 6: elements 4, 5
    };
    struct X {
        R b[N];                     // x_k in every lane
        R x;                        // the vector as loaded
    };

    template <bool A>
    static M load(const float* p, int32_t rs)
    {
        M m;
        loadRows<N, A>(p, rs, m.r);
        if constexpr (N > 4)
#pragma GCC unroll 6
            for (int k = 0; k < N; ++k) {
                const float* r = byteAt(p, step(k, rs)) + 4;
                m.s[k] = N == 5 ? sse::load1(r) : sse::load2(r);
            }
        return m;
    }
    static X spread(const Vec<N>& x)
    {
        if constexpr (N == 3) return {{lane<0>(x.lo), lane<2>(x.lo), lane<3>(x.lo)}, x.lo};
        else if constexpr (N == 4) return {{lane<0>(x.lo), lane<1>(x.lo), lane<2>(x.lo), lane<3>(x.lo)}, x.lo};
        else if constexpr (N == 5) return {{lane<0>(x.lo), lane<1>(x.lo), lane<2>(x.lo), lane<3>(x.lo), lane<0>(x.hi)}, x.lo};
        else return {{lane<0>(x.lo), lane<1>(x.lo), lane<2>(x.lo), lane<3>(x.lo), lane<0>(x.hi), lane<1>(x.hi)}, x.lo};
    }
    static R tree(const R (&v)[N], const X& x)
    {
        R p[N];
#pragma GCC unroll 6
        for (int k = 0; k < N; ++k) p[k] = mul(v[k], x.b[k]);
        if constexpr (N == 3) return add(add(p[0], p[1]), p[2]);
        else if constexpr (N == 4) return add(add(p[0], p[1]), add(p[2], p[3]));
        else if constexpr (N == 5) return add(add(add(p[0], p[1]), p[4]), add(p[2], p[3]));
        else return add(add(add(p[0], p[1]), add(p[2], p[3])), add(p[4], p[5]));
    }
    static Vec<N> apply(const M& m, const X& x)
    {
        if constexpr (N <= 4) {
            return {tree(m.r, x), R{}};
        } else if constexpr (N == 5) {
            R s[5];  // element 4: scalar products in lane 0, summed in the same tree
#pragma GCC unroll 5
            for (int k = 0; k < 5; ++k) s[k] = sse::mul1(m.s[k], x.b[k]);
            using sse::add1;
            return {tree(m.r, x), add1(add1(add1(s[0], s[1]), s[4]), add1(s[2], s[3]))};
        } else {
            return {tree(m.r, x), tree(m.s, x)};
        }
    }
};

// Plain matrix.
template <int N>
struct Plain;

// 3x3: transposed in registers once loaded, then as a transposed matrix. A matrix
// that changes from object to object is multiplied row by row with x first and its
// products transposed: the same products and sums, three shuffles fewer.
template <>
struct Plain<3> : Trans<3> {
    // ai0, 0, ai1, ai2 in r[i]  ->  a0j, -, a1j, a2j in the result's r[j]
    static M transpose(const R (&r)[3])
    {
        R c0 = _mm_shuffle_ps(r[1], r[2], _MM_SHUFFLE(0, 0, 0, 0));   // a10, a10, a20, a20
        R c1 = _mm_shuffle_ps(r[1], r[2], _MM_SHUFFLE(2, 2, 2, 2));   // a11, a11, a21, a21
        R c2 = _mm_shuffle_ps(r[1], r[2], _MM_SHUFFLE(3, 3, 3, 3));   // a12, a12, a22, a22
        M m;
        m.r[0] = _mm_shuffle_ps(r[0], c0, _MM_SHUFFLE(2, 0, 1, 0));   // a00, 0, a10, a20
        m.r[1] = _mm_shuffle_ps(r[0], c1, _MM_SHUFFLE(2, 0, 2, 2));   // a01, a01, a11, a21
        m.r[2] = _mm_shuffle_ps(r[0], c2, _MM_SHUFFLE(2, 0, 3, 3));   // a02, a02, a12, a22
        return m;
    }
    template <bool A>
    static M load(const float* p, int32_t rs)
    {
        R r[3];
        loadRows<3, A>(p, rs, r);
        return transpose(r);
    }
    template <bool A>
    static Vec<3> direct(const float* p, int32_t rs, const X& x)
    {
        R r[3];
        loadRows<3, A>(p, rs, r);
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i) r[i] = mul(r[i], x.x);  // pi0, 0, pi1, pi2
        M t = transpose(r);
        return {add(add(t.r[0], t.r[1]), t.r[2]), R{}};
    }
};

// Rows r, r+1 against columns c, c+1:              lanes: a[r][c], a[r+1][c], a[r][c+1], a[r+1][c+1]
// times (x_c, x_c, x_c+1, x_c+1). The sum of a row pair's blocks holds the even
// column sum of both rows in lanes 0, 1 and the odd one in lanes 2, 3.
template <int N>
struct Blocks {
    static constexpr int P = N / 2;  // row pairs, and column pairs
    struct M {
        R b[P][3];  // [row pair][column pair]; the third pair at size 6 only
    };
    struct X {
        R b[P];  // x_2c, x_2c, x_2c+1, x_2c+1
    };

    template <bool A>
    static M load(const float* p, int32_t rs)
    {
        R head[N], tail[N];
        loadRows<N, A>(p, rs, head);
        M m;
#pragma GCC unroll 3
        for (int q = 0; q < P; ++q) {
            m.b[q][0] = _mm_unpacklo_ps(head[2 * q], head[2 * q + 1]);
            m.b[q][1] = _mm_unpackhi_ps(head[2 * q], head[2 * q + 1]);
            if constexpr (N == 6) {
                tail[2 * q] = sse::load2(byteAt(p, step(2 * q, rs)) + 4);
                tail[2 * q + 1] = sse::load2(byteAt(p, step(2 * q + 1, rs)) + 4);
                m.b[q][2] = _mm_unpacklo_ps(tail[2 * q], tail[2 * q + 1]);
            }
        }
        return m;
    }
    static X spread(const Vec<N>& x)
    {
        if constexpr (N == 4) return {{_mm_unpacklo_ps(x.lo, x.lo), _mm_unpackhi_ps(x.lo, x.lo)}};
        else return {{_mm_unpacklo_ps(x.lo, x.lo), _mm_unpackhi_ps(x.lo, x.lo), _mm_unpacklo_ps(x.hi, x.hi)}};
    }
    static Vec<N> apply(const M& m, const X& x)
    {
        R s[P];
#pragma GCC unroll 3
        for (int q = 0; q < P; ++q) s[q] = pairSum(m.b[q], x);
        return combine(s);
    }
    // Straight from memory, for a matrix that changes from object to object: each
    // row pair's blocks are used as soon as they are formed.
    template <bool A>
    static Vec<N> direct(const float* p, int32_t rs, const X& x)
    {
        R s[P];
#pragma GCC unroll 3
        for (int q = 0; q < P; ++q) {
            const float* r0 = byteAt(p, step(2 * q, rs));
            const float* r1 = byteAt(p, step(2 * q + 1, rs));
            R b[3];
            R h0 = load4<A>(r0), h1 = load4<A>(r1);
            b[0] = _mm_unpacklo_ps(h0, h1);
            b[1] = _mm_unpackhi_ps(h0, h1);
            if constexpr (N == 6) b[2] = _mm_unpacklo_ps(sse::load2(r0 + 4), sse::load2(r1 + 4));
            s[q] = pairSum(b, x);
        }
        return combine(s);
    }

private:
    static R pairSum(const R (&b)[3], const X& x)
    {
        R s = add(mul(b[0], x.b[0]), mul(b[1], x.b[1]));
        if constexpr (N == 6) s = add(s, mul(b[2], x.b[2]));
        return s;
    }
    static Vec<N> combine(const R (&s)[P])
    {
        // lanes: even sums of rows 0..3 + odd sums of rows 0..3
        R lo = add(_mm_movelh_ps(s[0], s[1]), _mm_movehl_ps(s[1], s[0]));
        if constexpr (N == 4) return {lo, R{}};
        else return {lo, add(s[2], _mm_movehl_ps(s[2], s[2]))};  // rows 4, 5 in lanes 0, 1
    }
};
template <> struct Plain<4> : Blocks<4> {};
template <> struct Plain<6> : Blocks<6> {};

// 5x5: rows 0..3 times x0..x3, summed across lanes in pairs (columns 0+1 and 2+3),
// column 4 as a register of its own; row 4 in a register of its own, halves first.
template <>
struct Plain<5> {
    struct M {
        R r[5];   // columns 0..3 of each row
        R c4;     // a04, a14, a24, a34
        R a44;    // lane 0
    };
    struct X {
        R x, x4;  // x0..x3; x4 in every lane
    };

    template <bool A>
    static M load(const float* p, int32_t rs)
    {
        M m;
        loadRows<5, A>(p, rs, m.r);
        auto at4 = [&](int i) { return byteAt(p, step(i, rs))[4]; };
        m.c4 = _mm_setr_ps(at4(0), at4(1), at4(2), at4(3));
        m.a44 = sse::load1(byteAt(p, step(4, rs)) + 4);
        return m;
    }
    static X spread(const Vec<5>& x) { return {x.lo, lane<0>(x.hi)}; }
    static Vec<5> apply(const M& m, const X& x)
    {
        R p[4];
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) p[i] = mul(m.r[i], x.x);  // row i: p0, p1, p2, p3
        auto pairs = [](R a, R b) {
            // a: p0+p1, a: p2+p3, b: p0+p1, b: p2+p3
            return add(_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)), _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
        };
        R s01 = pairs(p[0], p[1]), s23 = pairs(p[2], p[3]);
        R first = _mm_shuffle_ps(s01, s23, _MM_SHUFFLE(2, 0, 2, 0));   // p0+p1 of rows 0..3
        R second = _mm_shuffle_ps(s01, s23, _MM_SHUFFLE(3, 1, 3, 1));  // p2+p3 of rows 0..3
        R lo = add(add(first, mul(m.c4, x.x4)), second);
        R q = mul(m.r[4], x.x);                                         // p0, p1, p2, p3
        R h = add(q, _mm_movehl_ps(q, q));                              // p0+p2, p1+p3
        R e = sse::add1(sse::add1(h, sse::mul1(m.a44, x.x4)), lane<1>(h));
        return {lo, e};
    }
};

template <int N, bool T>
using Kernel = std::conditional_t<T, Trans<N>, Plain<N>>;

// Gaxpy's third source where it has one.
struct NoAdd {
    const void* top() const { return this; }
};

// The object loops. ArrM, ArrV: the matrix, the vector changes from object to
// object; the one that does not is brought into registers (and shuffled) once,
// ahead of the count test. `Branch`: the moving operands (pointers, object and row
// strides; the shifted entries of a list, object by object) are tested for 16
// bytes and moved aligned when all are; both branches compute the same.
template <int N, bool T, bool ArrM, bool ArrV, bool Branch>
struct Engine {
    using K = Kernel<N, T>;

    template <bool A, class Y, class D>
    [[gnu::always_inline]] static void finish(Vec<N> r, const Y& y, const D& d, uint32_t k)
    {
        if constexpr (!__is_same(Y, NoAdd)) r = r.plus(Vec<N>::template load<A>(y.at(k, 0, 0)));
        r.template store<A>(d.at(k, 0, 0));
    }

    // A single call moves its vectors aligned where they allow it.
    template <bool Single = false, class M, class B, class Y, class D>
    static bool aligned(const M& a, const B& b, const Y& y, const D& d, uint32_t k)
    {
        uintptr_t bits = mat::alignBits(d, k);
        if constexpr (ArrM) bits |= mat::alignBits(a, k);
        if constexpr (ArrV || Single) bits |= mat::alignBits(b, k);
        if constexpr (!__is_same(Y, NoAdd)) bits |= mat::alignBits(y, k);
        return (bits & 15) == 0;
    }

    // The views come by value: stores through __m128 may alias anything, and
    // views in memory would be read again for every object.
    template <class M, class B, class Y, class D>
    static void single(M a, B b, Y y, D d)
    {
        auto run = [&](auto al) {
            constexpr bool A = decltype(al)::value;
            typename K::M m = K::template load<false>(origin(a, 0), rowStride(a));
            Vec<N> r = K::apply(m, K::spread(Vec<N>::template load<A>(b.at(0, 0, 0))));
            finish<A>(r, y, d, 0);
        };
        if (Branch && aligned<true>(a, b, y, d, 0)) run(std::true_type{});
        else run(std::false_type{});
    }

    // A matrix that changes from object to object, from its first row.
    template <bool A>
    static Vec<N> fromMemory(const float* p, int32_t rs, const typename K::X& x)
    {
        if constexpr (requires { K::template direct<A>(p, rs, x); }) return K::template direct<A>(p, rs, x);
        else return K::apply(K::template load<A>(p, rs), x);
    }

    // Contiguous: one pointer per operand, stepped by its object stride; the
    // branch is taken once for the call.
    template <bool A, class M, class B, class Y, class D>
    static void run(const M& a, const B& b, const Y& y, const D& d, uint32_t count, const typename K::M& m,
                    const typename K::X& x)
    {
        const float* pa = origin(a, 0);
        const float* pb = b.x;
        const float* py = nullptr;
        float* pd = d.x;
        const int32_t aos = objectStride(a), rs = rowStride(a), bos = b.os, dos = d.os;
        int32_t yos = 0;
        if constexpr (!__is_same(Y, NoAdd)) py = y.x, yos = y.os;
        for (; count; --count) {
            Vec<N> r;
            if constexpr (ArrM && ArrV) r = fromMemory<A>(pa, rs, K::spread(Vec<N>::template load<A>(pb)));
            else if constexpr (ArrM) r = fromMemory<A>(pa, rs, x);
            else r = K::apply(m, K::spread(Vec<N>::template load<A>(pb)));
            if constexpr (ArrM) pa = byteAt(pa, aos);
            if constexpr (ArrV) pb = byteAt(pb, bos);
            if constexpr (!__is_same(Y, NoAdd)) r = r.plus(Vec<N>::template load<A>(py)), py = byteAt(py, yos);
            r.template store<A>(pd);
            pd = byteAt(pd, dos);
        }
    }

    // List: object k through its entries.
    template <bool A, class M, class B, class Y, class D>
    [[gnu::always_inline]] static void object(const M& a, const B& b, const Y& y, const D& d, uint32_t k,
                                              const typename K::M& m, const typename K::X& x)
    {
        auto xk = [&] { return K::spread(Vec<N>::template load<A>(b.at(k, 0, 0))); };
        if constexpr (ArrM && ArrV) finish<A>(fromMemory<A>(origin(a, k), rowStride(a), xk()), y, d, k);
        else if constexpr (ArrM) finish<A>(fromMemory<A>(origin(a, k), rowStride(a), x), y, d, k);
        else finish<A>(K::apply(m, xk()), y, d, k);
    }

    template <class M, class B, class Y, class D>
    static vorxStatus array(M a, B b, Y y, D d, uint32_t count)
    {
        // No table to scan in these layouts: after the null and size tests of the
        // caller come the single operand, loaded (and shuffled) into registers ahead
        // of the count test, then the count test, and in List layout the entries of
        // each object at its turn.
        typename K::M m;
        typename K::X x;
        if constexpr (!ArrM) {
            m = K::template load<false>(origin(a, 0), rowStride(a));
            sse::keep(m);
        }
        if constexpr (!ArrV) {
            x = K::spread(Vec<N>::template load<false>(b.at(0, 0, 0)));
            sse::keep(x);
        }
        if (count == 0) return kOk;
        if constexpr (!IsObjTable<D>::value) {
            if (Branch && aligned(a, b, y, d, 0)) run<true>(a, b, y, d, count, m, x);
            else run<false>(a, b, y, d, count, m, x);
        } else {
            for (uint32_t k = 0; k < count; ++k) {
                if (!listsOk(k, a, b, y, d)) return kNull;
                if (Branch && aligned(a, b, y, d, k)) object<true>(a, b, y, d, k, m, x);
                else object<false>(a, b, y, d, k, m, x);
            }
        }
        return kOk;
    }
};

}  // namespace vorx::mv
