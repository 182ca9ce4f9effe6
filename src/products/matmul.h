// Matrix by matrix products: dst = op(src1) * op(src2) for one pair or for arrays,
// op the identity or a transposition. The family template, its checks table, the
// three precision regimes of the element loops, and the held-rows scheme of the
// closed fixed-size forms. The packed 32f row-broadcast scheme is in packed.h.
#pragma once

#include "../frame/checks.h"
#include "../frame/x87.h"
#include "packed.h"

#include <type_traits>

namespace vorx::mul {

// The four sizes of a call, as the checks table names them.
enum Sz { W1, H1, W2, H2 };

struct Sizes {
    uint32_t v[4];
    uint32_t operator[](Sz s) const { return v[s]; }
};

// The running sum of one element, per precision regime. Every regime sets the
// element to +0.0 first and writes every partial sum at once, so that an aliased
// source reads what has been written so far.
//   32f: each product and each partial sum rounded to single.
struct SumF32Quiet;
struct SumF32 {
    using Quiet = SumF32Quiet;
    using Acc = float;
    static float start(float* p) { *p = 0.0f; return 0.0f; }
    static void step(float& s, float* p, float x, float y)
    {
        s = sse::add(s, sse::mul(x, y));
        *p = s;
    }
};
//   64f Contiguous and Strided: the sum stays in an x87 register at full width and
//   a rounded copy is stored after each step; the final element is rounded once.
struct SumX87Quiet;
struct SumX87Reg {
    using Quiet = SumX87Quiet;
    using Acc = long double;
    static long double start(double* p) { *p = 0.0; return 0.0L; }
    // A double store of the long double rounds it once, and the register goes on
    // unrounded; nothing reads the stored copy back but an aliased source.
    static void step(long double& s, double* p, double x, double y)
    {
        s = s + wide(x) * wide(y);
        *p = static_cast<double>(s);
    }
};
//   64f Pointer and List layouts: the sum lives only in dst; the extended product
//   is added to dst as read back, and rounded to double at every step.
struct SumX87Mem {
    using Quiet = void;
    using Acc = int;
    static int start(double* p) { *p = 0.0; return 0; }
    static void step(int&, double* p, double x, double y)
    {
        *p = roundToDouble(wide(*p) + wide(x) * wide(y));
    }
};

// Where dst shares no memory with the object's sources nothing can read the partial
// sums that 32f and the register regime store: there each element is stored once,
// at the end, from the same register (`Quiet`).
//
// The quiet sums also start from the first product instead of adding it to +0.0,
// and mend the sign of a zero sum once the object is stored (`mendZeroStart`, in a
// pass of its own so that the element loops keep their registers): an add less per
// element on the x87 unit, which bounds the 64f products.
struct SumF32Quiet {
    using Quiet = void;
    using Acc = float;
    static float start(float*) { return 0.0f; }
    static float first(float x, float y) { return sse::mul(x, y); }
    static void step(float& s, float*, float x, float y) { s = sse::add(s, sse::mul(x, y)); }
    static void end(float s, float* p) { *p = s; }
};
struct SumX87Quiet {
    using Quiet = void;
    using Acc = long double;
    static long double start(double*) { return 0.0L; }
    static long double first(double x, double y) { return wide(x) * wide(y); }
    static void step(long double& s, double*, double x, double y) { s = s + wide(x) * wide(y); }
    static void end(long double s, double* p) { *p = static_cast<double>(s); }
};
inline void mend(float* p)
{
    if (negativeZero(p)) [[unlikely]] *p = sse::add(0.0f, *p);  // as mendZeroStart
}
inline void mend(double* p) { mendZeroStart(p); }
// The mending pass over an object of R x C elements that a quiet sum has stored.
template <int N, class O>
[[gnu::always_inline]] inline void mendObject(const O& o, uint32_t R, uint32_t C)
{
    eachElement<N>(o, R, C, [](uint32_t, uint32_t, auto* p) { mend(p); });
}
template <class Sum> constexpr bool isQuiet = std::is_same_v<Sum, SumF32Quiet> || std::is_same_v<Sum, SumX87Quiet>;

// Term n of an element's sum, the products' and the matrix by vector's.
template <class Sum, class S, class T>
[[gnu::always_inline]] inline void term(S& s, T* p, uint32_t n, T x, T y)
{
    if constexpr (isQuiet<Sum>)
        if (n == 0) {
            s = Sum::first(x, y);
            return;
        }
    Sum::step(s, p, x, y);
}

template <class T, Lay L> struct SumFor { using type = SumX87Mem; };
template <Lay L> struct SumFor<float, L> { using type = SumF32; };
template <> struct SumFor<double, Lay::C> { using type = SumX87Reg; };
template <> struct SumFor<double, Lay::S2> { using type = SumX87Reg; };
template <class T, Lay L> using SumOf = typename SumFor<T, L>::type;

// One object of the element loops: i, j, k upward, the rows of src1 and dst walked
// down. `Entries`: a single-object Pointer call tests the dst entry of each element
// before zeroing it, and then, for each k, the src1 entry and the src2 entry before
// reading them. Returns false at a null entry, with the elements before it written.
// A fixed size N passes its bounds as constants: the same loops, each row unrolled.
template <class Sum, bool Entries, int N, class A, class B, class D>
[[gnu::always_inline]] inline bool scalarObject(const A& a, const B& b, const D& d, uint32_t R,
                                                uint32_t C, uint32_t K)
{
    if constexpr (!std::is_void_v<typename Sum::Quiet> && !Entries && !IsElemTable<D>::value) {
        R = N ? N : R, C = N ? N : C, K = N ? N : K;
        Extent e = d.extent(R, C);
        if (e.apart(a.extent(R, K)) && e.apart(b.extent(K, C))) {
            scalarObject<typename Sum::Quiet, false, N>(a, b, d, R, C, K);
            return true;
        }
    }
    auto ra = a.row(0);
    auto rd = d.row(0);
    for (uint32_t i = 0; i < (N ? N : R); ++i) {
#pragma GCC unroll 6
        for (uint32_t j = 0; j < (N ? N : C); ++j) {
            if (Entries && !readOk(d, i, j)) return false;
            auto* p = d.in(rd, j);
            auto s = Sum::start(p);
#pragma GCC unroll 6
            for (uint32_t n = 0; n < (N ? N : K); ++n) {
                if (Entries && !(readOk(a, i, n) && readOk(b, n, j))) return false;
                term<Sum>(s, p, n, *a.in(ra, n), *b.at(n, j));
            }
            if constexpr (isQuiet<Sum>) Sum::end(s, p);
        }
        ra = a.down(ra);
        rd = d.down(rd);
    }
    if constexpr (isQuiet<Sum>) mendObject<N>(d, R, C);
    return true;
}

// The closed forms that hold op(src2) while they work (a few fixed-size Strided,
// Pointer and List-strided forms): op(src2) is read whole, once for a single src2
// (ahead of the count test) or once per object for an array src2; then each row of
// op(src1) is read whole before its result row is stored, one element at a time,
// j upward. So dst may be src1 where src1 is read by rows, and src2 where src2 is
// an array. These forms test no table or list entry. `Order` sums the N products
// of an element: left to right here; three 6x6 Strided forms have an order of
// their own, beside them in their unit.
//
// op(src2) is held in registers, four columns to a register (G registers a row);
// a lane computes the sum of one element exactly as a scalar loop would (each
// product and each partial sum rounded to single), so the lanes of a result row
// are computed together. The lanes past column N-1 repeat the last column and are
// never stored.
struct LeftToRight {
    template <int N>
    [[gnu::always_inline]] static R sum(const R (&p)[N])
    {
        R s = p[0];
#pragma GCC unroll 6
        for (int n = 1; n < N; ++n) s = sse::add(s, p[n]);
        return s;
    }
};

template <int N, class Order = LeftToRight>
struct Held {
    static constexpr int G = (N + 3) / 4;
    using Rows = R[N][G];

    template <class B>
    static R gather(const B& b, typename B::Row row, uint32_t g)
    {
        float e[4];
#pragma GCC unroll 4
        for (uint32_t l = 0; l < 4; ++l) {
            uint32_t j = 4 * g + l < N ? 4 * g + l : N - 1;
            e[l] = *b.in(row, j);
        }
        return _mm_setr_ps(e[0], e[1], e[2], e[3]);
    }

    template <class B>
    static void load(const B& b, Rows& s2)
    {
        auto row = b.row(0);
#pragma GCC unroll 6
        for (uint32_t n = 0; n < N; ++n) {
#pragma GCC unroll 2
            for (uint32_t g = 0; g < G; ++g) s2[n][g] = gather(b, row, g);
            if (n + 1 < N) row = b.down(row);
        }
    }

    template <class A, class D>
    static void object(const A& a, const Rows& s2, const D& d)
    {
        auto ra = a.row(0);
        auto rd = d.row(0);
        for (uint32_t i = 0; i < N; ++i) {
            R r[N];
#pragma GCC unroll 6
            for (uint32_t n = 0; n < N; ++n) r[n] = _mm_set1_ps(*a.in(ra, n));
            R sum[G];
#pragma GCC unroll 2
            for (uint32_t g = 0; g < G; ++g) {
                R p[N];
#pragma GCC unroll 6
                for (uint32_t n = 0; n < N; ++n) p[n] = sse::mul(r[n], s2[n][g]);
                sum[g] = Order::sum(p);
            }
#pragma GCC unroll 2
            for (uint32_t g = 0; g < G; ++g) {
                R v = sum[g];
                sse::store1(d.in(rd, 4 * g), v);
                if (4 * g + 1 < N) sse::store1(d.in(rd, 4 * g + 1), _mm_shuffle_ps(v, v, 1));
                if (4 * g + 2 < N) sse::store1(d.in(rd, 4 * g + 2), _mm_movehl_ps(v, v));
                if (4 * g + 3 < N) sse::store1(d.in(rd, 4 * g + 3), _mm_shuffle_ps(v, v, 3));
            }
            if (i + 1 < N) {
                ra = a.down(ra);
                rd = d.down(rd);
            }
        }
    }

    template <class A, class B, class D>
    static vorxStatus run(A a, B b, D d)
    {
        if (anyNull(a, b, d)) return kNull;
        a = a.withShape(N, N);
        b = b.withShape(N, N);
        d = d.withShape(N, N);
        Rows s2;
        load(only(b), s2);
        object(only(a), s2, only(d));
        return kOk;
    }

    template <bool SingleSrc2, class A, class B, class D>
    static vorxStatus run(A a, B b, D d, uint32_t count)
    {
        if (anyNull(a, b, d)) return kNull;
        a = a.withShape(N, N);
        b = b.withShape(N, N);
        d = d.withShape(N, N);
        Rows s2;
        if (SingleSrc2) {
            load(only(b), s2);
            sse::keep(s2);  // a single src2 is read ahead of the count test
        }
        auto each = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
            if (!SingleSrc2) load(b1, s2);
            object(a1, s2, d1);
        };
        return eachObject<false>(count, each, a.first(), b.first(), d.first());
    }
};

// The body of a closed array form (a full specialisation in its unit derives from
// it): op(src2) held once for a single src2, or per object for an array src2.
template <int N, bool SingleSrc2>
struct HeldArray {
    template <class A, class B, class D>
    static vorxStatus run(A a, uint32_t, uint32_t, B b, uint32_t, uint32_t, D d, uint32_t count)
    {
        return Held<N>::template run<SingleSrc2>(a, b, d, count);
    }
};

// The family. S1T, S2T: which source is read transposed; Arr1, Arr2: which source
// is an array. The checks table of the code: `Third` the third size tested for
// zero, `CA` != `CB` the conformity test, `DA`*`DB` the dst entries that the table
// scan of a Pointer array call tests (the square of the inner dimension where the
// sizes conform, not the result's R*C).
template <bool S1T, bool S2T, bool Arr1, bool Arr2, Sz Third, Sz CA, Sz CB, Sz DA, Sz DB>
struct Family {
    template <class T, int N, Lay L>
    struct Impl {
        using Sum = SumOf<T, L>;
        static constexpr bool packed = sizeof(T) == 4 && N > 0 && adjacent(L);
        using Scheme = Packed<N, !(Arr1 || Arr2), S1T, S2T, Arr2>;

        static bool sizesBad(const Sizes& s)
        {
            if (N > 0) return false;
            return s[H1] == 0 || s[W1] == 0 || s[Third] == 0 || s[CA] != s[CB];
        }

        // Loop bounds: R = src1Height, C = src2Width, K = src2Height.
        template <class A, class B, class D>
        static vorxStatus run(A a, uint32_t w1, uint32_t h1, B b, uint32_t w2, uint32_t h2, D d)
        {
            return within(a, w1, h1, b, w2, h2, d, w2, h2);
        }

        // One object with result columns C and inner length K.
        template <class A, class B, class D>
        static vorxStatus within(A a, uint32_t w1, uint32_t h1, B b, uint32_t w2, uint32_t h2, D d,
                                 uint32_t C, uint32_t K)
        {
            if constexpr (packed) {
                if (anyNull(a, b, d)) return kNull;
                Scheme::single(only(a), only(b), only(d));
                return kOk;
            } else {
                if (anyNull(a, b, d)) return kNull;
                Sizes s{{w1, h1, w2, h2}};
                if (sizesBad(s)) return kBadSize;
                a = a.withShape(h1, w1);
                b = b.withShape(h2, w2);
                d = d.withShape(h1, w2);
                constexpr bool entries = L == Lay::P;
                bool done = scalarObject<Sum, entries, N>(only(a), only(b), only(d), h1, C, K);
                return done ? kOk : kNull;
            }
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, uint32_t w1, uint32_t h1, B b, uint32_t w2, uint32_t h2, D d,
                              uint32_t count)
        {
            if (anyNull(a, b, d)) return kNull;
            Sizes s{{w1, h1, w2, h2}};
            if (sizesBad(s)) return kBadSize;
            if constexpr (packed) {
                typename Scheme::Src2 held{};
                auto before = [&] {
                    if (!Arr2) {
                        held.load(only(b));
                        sse::keep(held);
                    }
                };
                auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
                    Scheme::object(a1, b1, d1, held);
                };
                return arrayCall(false, 0, count, before, object, a, b, d);
            } else {
                a = a.withShape(h1, w1);
                b = b.withShape(h2, w2);
                d = d.withShape(h1, w2);
                if (!(tableOk(a, w1 * h1) && tableOk(b, w2 * h2) && tableOk(d, s[DA] * s[DB])))
                    return kNull;
                auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
                    scalarObject<Sum, false, N>(a1, b1, d1, h1, w2, h2);
                };
                // Where dst's span shares no byte with either source's, every object
                // is apart: the quiet sums, without the test per object.
                auto whole = [&] {
                    if constexpr (!std::is_void_v<typename Sum::Quiet>) {
                        const uint32_t R = N ? N : h1, C = N ? N : w2, K = N ? N : h2;
                        if (spansApart(count, Shaped{d, R, C}, Shaped{a, R, K}, Shaped{b, K, C})) {
                            auto quiet = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
                                scalarObject<typename Sum::Quiet, false, N>(a1, b1, d1, h1, w2, h2);
                            };
                            eachObject(count, quiet, first(a), first(b), first(d));
                            return true;
                        }
                    }
                    return false;
                };
                return arrayCallWhole(false, 0, count, nothing, whole, object, a, b, d);
            }
        }
    };
};

}  // namespace vorx::mul

namespace vorx::tag {
using mul::Family, mul::W1, mul::H1, mul::W2, mul::H2;
// code          S1T    S2T    Arr1   Arr2   third zero  conformity  dst scan
struct Mul_mm     : Family<false, false, false, false, W2, W1, H2, W1, H2> {};
struct Mul_mmT    : Family<false, true,  false, false, H2, W1, W2, W1, W2> {};
struct Mul_mTm    : Family<true,  false, false, false, W2, H1, H2, H1, H2> {};
struct Mul_mTmT   : Family<true,  true,  false, false, H2, H1, W2, H1, W2> {};
// mam tests src2Height for zero, not src2Width.
struct Mul_mam    : Family<false, false, true,  false, H2, H2, W1, W1, H2> {};
struct Mul_mamT   : Family<false, true,  true,  false, H2, W1, W2, W1, W2> {};
struct Mul_maTm   : Family<true,  false, true,  false, W2, H1, H2, H1, H2> {};
struct Mul_maTmT  : Family<true,  true,  true,  false, H2, H1, W2, H1, W2> {};
// mma and mama compare src1Height with src2Width, as the transposed-transposed
// codes do, and never compare src1Width with src2Height.
struct Mul_mma    : Family<false, false, false, true,  H2, H1, W2, W1, H2> {};
struct Mul_mmaT   : Family<false, true,  false, true,  H2, W1, W2, W1, W2> {};
struct Mul_mTma   : Family<true,  false, false, true,  W2, H1, H2, H1, H2> {};
struct Mul_mTmaT  : Family<true,  true,  false, true,  H2, H1, W2, H1, W2> {};
struct Mul_mama   : Family<false, false, true,  true,  H2, H1, W2, W1, H2> {};
struct Mul_mamaT  : Family<false, true,  true,  true,  H2, W1, W2, W1, W2> {};
struct Mul_maTma  : Family<true,  false, true,  true,  W2, H1, H2, H1, H2> {};
struct Mul_maTmaT : Family<true,  true,  true,  true,  H2, H1, W2, H1, W2> {};
}  // namespace vorx::tag
