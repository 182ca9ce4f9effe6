// Matrix addition and subtraction: the family template, its tags, and the packed 32f
// schemes of the fixed sizes in Contiguous and List layouts.
//
// Every scheme computes each element with the one operation of the element loop, so
// packed, mixed and scalar forms give the same bits; they differ only in the moves.
// The packed schemes go through an object row by row (or tile row by tile row): a
// result row is stored as soon as the rows it needs are read, so few registers are
// live, and dst may still be a plain source (its rows are read before they are
// written, and no other row is needed).
#pragma once

#include <type_traits>

#include "elementwise.h"

namespace vorx {

namespace mat {

using sse::R;

// A matrix of N x N floats in row registers (the single source held across objects):
//   3  r[i]: e0, 0, e1, e2 (a 32-bit and a 64-bit move, exactly three elements touched)
//   4  r[i]: e0..e3
//   5  r[i]: e0..e3, s[i]: e4 in lane 0 (one packed and one scalar operation a row)
//   6  r[i]: e0..e3, s[q]: e4, e5 of row 2q in the low half and of row 2q+1 in the high
template <int N>
struct Rows {
    static constexpr int S = N == 5 ? 5 : N == 6 ? 3 : 0;
    R r[N];
    R s[S ? S : 1];
};

template <int N, bool A>
R loadHead(const float* p)
{
    if constexpr (N == 3) return sse::load3(p);
    else return A ? sse::load4a(p) : sse::load4u(p);
}
template <int N, bool A>
void storeHead(float* p, R x)
{
    if constexpr (N == 3) sse::store3(p, x);
    else if constexpr (A) sse::store4a(p, x);
    else sse::store4u(p, x);
}
// Columns 4, 5 of two adjacent rows.                 lanes: r0 e4, r0 e5, r1 e4, r1 e5
inline R loadPair(const float* r0, const float* r1) { return _mm_loadh_pi(sse::load2low(r0 + 4), sse::half(r1 + 4)); }
inline void storePair(float* r0, float* r1, R x)
{
    sse::store2(r0 + 4, x);
    _mm_storeh_pi(sse::half(r1 + 4), x);
}

// A plain object in row registers, rows walked down.
template <int N, bool A, class O>
Rows<N> fetchRows(const O& o)
{
    Rows<N> m{};
    auto r = o.row(0);
    #pragma GCC unroll 16
    for (uint32_t i = 0; i < N; ++i) {
        m.r[i] = loadHead<N, A>(r);
        if constexpr (N == 5) m.s[i] = sse::load1(r + 4);
        if (i + 1 < N) {
            auto next = o.down(r);
            if constexpr (N == 6)
                if (i % 2 == 0) m.s[i / 2] = loadPair(r, next);
            r = next;
        }
    }
    return m;
}

// Row registers stored into an object, rows walked down (the inverse of fetchRows).
template <int N, bool Al, class O>
void storeRows(const O& o, const Rows<N>& m)
{
    float* r = o.row(0);
    #pragma GCC unroll 16
    for (uint32_t i = 0; i < N; ++i) {
        storeHead<N, Al>(r, m.r[i]);
        if constexpr (N == 5) sse::store1(r + 4, m.s[i]);
        if (i + 1 < N) {
            auto next = o.down(r);
            if constexpr (N == 6)
                if (i % 2 == 0) storePair(r, next, m.s[i / 2]);
            r = next;
        }
    }
}

// A transposed 3x3 source: three full-width loads of the stored rows (the fourth lane,
// one element behind each row, is read and dropped), then five shuffles give the
// transposed rows in the 3-column pattern.
template <bool A, class O>
Rows<3> fetchRows3T(const O& stored, int32_t rowStride)
{
    const float* p0 = stored.row(0);
    const float* p1 = stepped(p0, rowStride);
    const float* p2 = stepped(p1, rowStride);
    R s0 = A ? sse::load4a(p0) : sse::load4u(p0);  // a00 a01 a02 x
    R s1 = A ? sse::load4a(p1) : sse::load4u(p1);
    R s2 = A ? sse::load4a(p2) : sse::load4u(p2);
    R lo = _mm_shuffle_ps(s1, s2, 0x00);   // a10 a10 a20 a20
    R hi = _mm_shuffle_ps(s1, s2, 0x99);   // a11 a12 a21 a22
    Rows<3> m{};
    m.r[0] = _mm_shuffle_ps(s0, lo, 0x80);  // a00 a00 a10 a20
    m.r[1] = _mm_shuffle_ps(s0, hi, 0x85);  // a01 a01 a11 a21
    m.r[2] = _mm_shuffle_ps(s0, hi, 0xda);  // a02 a02 a12 a22
    return m;
}

// 2x2 tiles for the transposed forms of 4x4 to 6x6. A tile holds columns c, c+1 of
// row r in its low half and of row r+1 in its high half, by two 64-bit moves.
inline R loadTile(const float* r0, const float* r1)
{
    return _mm_loadh_pi(_mm_loadl_pi(sse::blank(), sse::half(r0)), sse::half(r1));
}
inline void storeTile(float* r0, float* r1, R t)
{
    _mm_storel_pi(sse::half(r0), t);
    _mm_storeh_pi(sse::half(r1), t);
}
// m[r][c] m[r][c+1] m[r+1][c] m[r+1][c+1]  ->  m[r][c] m[r+1][c] m[r][c+1] m[r+1][c+1]
inline R flip(R t) { return _mm_shuffle_ps(t, t, _MM_SHUFFLE(3, 1, 2, 0)); }

// The tile of a source at result tile position (p, q), from the rows r0, r1 (2p and
// 2p+1) that the caller walks; a transposed source's stored tile (q, p) is loaded and
// flipped (storedTile: left in stored orientation).
template <class O, class Row>
R tileOf(const O&, Row r0, Row r1, uint32_t, uint32_t q)
{
    return loadTile(r0 + 2 * q, r1 + 2 * q);
}
template <class O>
R storedTile(const TrObj<O>& v, uint32_t p, uint32_t q)
{
    return loadTile(v.o.row(2 * q) + 2 * p, v.o.row(2 * q + 1) + 2 * p);
}
template <class O, class Row>
R tileOf(const TrObj<O>& v, Row, Row, uint32_t p, uint32_t q) { return flip(storedTile(v, p, q)); }

// N x N in tiles: a grid of (N/2)^2 tiles, and at N = 5 the last row and column as
// scalars of the element loop.
template <int N>
struct Tiles {
    static constexpr uint32_t G = N / 2;
    R t[G * G];
    float edge[2 * N - 1];  // N = 5: column 4 of rows 0..3, then row 4
};

// Alignment bits of an operand for object k: pointer and strides ORed; a list
// entry takes part with its shift.
template <class T>
uintptr_t alignBits(const Direct<T>& v, uint32_t)
{
    return reinterpret_cast<uintptr_t>(v.x) | static_cast<uint32_t>(v.os) | static_cast<uint32_t>(v.rs);
}
template <class T>
uintptr_t alignBits(const ObjTable<T>& v, uint32_t k)
{
    return reinterpret_cast<uintptr_t>(byteAt(v.x[k], v.bs)) | static_cast<uint32_t>(v.rs);
}
template <class V>
uintptr_t alignBits(const Tr<V>& v, uint32_t k) { return alignBits(v.v, k); }

// The alignment test of the dispatching forms: every pointer and stride of the call.
// A function whose test leaves words out names them in its own unit.
struct AlignAll {
    template <class A, class B, class D>
    static bool aligned(const A& a, const B& b, const D& d, uint32_t k)
    {
        return ((alignBits(a, k) | alignBits(b, k) | alignBits(d, k)) & 15) == 0;
    }
};
struct NoAlign {
    template <class A, class B, class D>
    static bool aligned(const A&, const B&, const D&, uint32_t) { return false; }
};
// 3x3 maTm: src1 and its strides only.
struct AlignSrc1 {
    template <class A, class B, class D>
    static bool aligned(const A& a, const B&, const D&, uint32_t k) { return (alignBits(a, k) & 15) == 0; }
};

// The alignment test of vorxAdd_mam_32f_6x6, vorxSub_mam_32f_6x6 and
// vorxAdd_mama_32f_6x6: src1's object stride is the only one in it, so dst's (and
// src2's) may break the alignment the test sees. Callers must keep them multiples of
// 16 whenever the rest is.
struct AlignButLaterObjectStrides {
    template <class B>
    static bool aligned(const Direct<const float>& a, const B& b, const Direct<float>& d, uint32_t)
    {
        uintptr_t bits = reinterpret_cast<uintptr_t>(a.x) | static_cast<uint32_t>(a.os | a.rs) |
                         reinterpret_cast<uintptr_t>(b.x) | static_cast<uint32_t>(b.rs) |
                         reinterpret_cast<uintptr_t>(d.x) | static_cast<uint32_t>(d.rs);
        return (bits & 15) == 0;
    }
};

// A source held in row registers (the single source of an array call, or a 3x3
// transposed object), walked like an object with the row index as its row handle.
template <int N>
struct Held {
    const Rows<N>& m;
    using Row = uint32_t;
    Row row(uint32_t i) const { return i; }
    Row down(Row r) const { return r + 1; }
};

// Row reads of an object at a row's address, or of held rows at a row's index.
template <int N, bool A, class O>
R headOf(const O&, const float* r) { return loadHead<N, A>(r); }
template <int N, bool A>
R headOf(const Held<N>& h, uint32_t i) { return h.m.r[i]; }
template <class O>
R col4Of(const O&, const float* r) { return sse::load1(r + 4); }
template <int N>
R col4Of(const Held<N>& h, uint32_t i) { return h.m.s[i]; }
template <class O>
R pairOf(const O&, const float* r0, const float* r1) { return loadPair(r0, r1); }
template <int N>
R pairOf(const Held<N>& h, uint32_t i, uint32_t) { return h.m.s[i / 2]; }

// One object in row registers: a row (a pair of rows at N = 6) is read from both
// sources, combined and stored before the next is read.
template <class Op, int N, bool Al, class X, class Y, class Z>
[[gnu::always_inline]] inline void rowsObject(const X& a, const Y& b, const Z& d)
{
    auto ra = a.row(0);
    auto rb = b.row(0);
    float* rd = d.row(0);
    #pragma GCC unroll 16
    for (uint32_t i = 0; i < N; i += N == 6 ? 2 : 1) {
        R x = headOf<N, Al>(a, ra);
        R y = headOf<N, Al>(b, rb);
        if constexpr (N == 6) {
            auto ra1 = a.down(ra);
            auto rb1 = b.down(rb);
            float* rd1 = d.down(rd);
            R x1 = headOf<N, Al>(a, ra1);
            R y1 = headOf<N, Al>(b, rb1);
            R xp = pairOf(a, ra, ra1);
            R yp = pairOf(b, rb, rb1);
            storeHead<N, Al>(rd, Op::p(x, y));
            storeHead<N, Al>(rd1, Op::p(x1, y1));
            storePair(rd, rd1, Op::p(xp, yp));
            if (i + 2 < N) {
                ra = a.down(ra1);
                rb = b.down(rb1);
                rd = d.down(rd1);
            }
        } else {
            R xs, ys;
            if constexpr (N == 5) {
                xs = col4Of(a, ra);
                ys = col4Of(b, rb);
            }
            storeHead<N, Al>(rd, Op::p(x, y));
            if constexpr (N == 5) sse::store1(rd + 4, Op::p1(xs, ys));
            if (i + 1 < N) {
                ra = a.down(ra);
                rb = b.down(rb);
                rd = d.down(rd);
            }
        }
    }
}

// Where the objects of every array operand are runs of N x N elements (rows N
// elements apart) though the objects lie apart, as in List layout, each object is one
// pass over its run, with the single source held as a run in result order: at 6x6
// nine packed operations and stores instead of six rows and six pairs, or nine tiles
// of two half stores each. The same elements meet the same operation, so the bits are
// those of the scheme; the scheme's own loads of the single source still come first.
template <class Op, int N, int Single>
struct ObjectRuns {
    static constexpr uint32_t P = N * N;
    dense::Cycle<float, dense::cycleOf<float>(P)> held;

    // A transposed array source is never a run in result order.
    template <class A, class B>
    static constexpr bool possible = (Single == 1 || !isTr<A>) && (Single == 2 || !isTr<B>);

    template <class A, class B, class D>
    static bool apply(const A& a, const B& b, const D& d)
    {
        return dense::objectRun(d, N, N) && (Single == 1 || dense::objectRun(a, N, N)) &&
               (Single == 2 || dense::objectRun(b, N, N));
    }
    template <class A, class B>
    void hold(const A& a, const B& b)
    {
        constexpr uint32_t G = dense::cycleOf<float>(P);
        if constexpr (Single == 1) held = dense::repeat<float, P, G>(only(a), N);
        if constexpr (Single == 2) held = dense::repeat<float, P, G>(only(b), N);
    }
    // Source I of an object: the held run, or the object's own.
    template <int I, class O>
    decltype(auto) source(const O& o) const
    {
        if constexpr (Single == I) return (held);
        else return dense::Flat<float>{o.p};
    }
};

// The array call of a packed form: object after object by its scheme, or, where
// the objects are runs, by ObjectRuns.
template <class Op, int N, int Single, class Before, class Whole, class Object, class A, class B, class D>
[[gnu::always_inline]] inline vorxStatus packedArray(uint32_t count, Before before, Whole whole, Object object,
                                                     const A& a, const B& b, const D& d)
{
    using Runs = ObjectRuns<Op, N, Single>;
    if constexpr (Runs::template possible<A, B>) {
        if (Runs::apply(a, b, d)) {
            Runs runs;
            auto hold = [&] {
                before();
                runs.hold(a, b);
            };
            auto run = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
                dense::object<Op, Runs::P>(d1.p, runs.template source<1>(a1), runs.template source<2>(b1));
            };
            return arrayCallWhole(false, N * N, count, hold, whole, run, a, b, d);
        }
    }
    return arrayCallWhole(false, N * N, count, before, whole, object, a, b, d);
}

}  // namespace mat

// How a packed form of size N holds one source for one object: row registers, the
// 3x3 five-shuffle transposition, or tiles.
enum class Scheme { Rows, Rows3T, Tiles };

// Fixed size N, 32f, Contiguous and List, the packed schemes. `Single` names the
// source that is one matrix in an array call (1, 2, or 0): it is loaded (and
// transposed) once after the table checks, ahead of the count test.
template <class Op, int N, int Single, Scheme S, class Align, class A, class B, class D>
vorxStatus packedMatrices(A a, B b, D d, uint32_t count, bool array)
{
    using namespace mat;
    if constexpr (S == Scheme::Tiles) {
        constexpr uint32_t G = N / 2;
        constexpr bool both = isTr<A> && isTr<B>;
        // The single source's tiles, held across objects; where both sources are
        // transposed the tiles meet in stored orientation and one flip turns the result.
        auto tiles = [&](const auto& v) {
            Tiles<N> m;
            auto r0 = v.row(0);
            #pragma GCC unroll 16
            for (uint32_t p = 0; p < G; ++p) {
                auto r1 = v.down(r0);
                #pragma GCC unroll 16
                for (uint32_t q = 0; q < G; ++q)
                    if constexpr (both) m.t[p * G + q] = storedTile(v, p, q);
                    else m.t[p * G + q] = tileOf(v, r0, r1, p, q);
                if (p + 1 < G) r0 = v.down(r1);
            }
            if constexpr (N == 5) {
                #pragma GCC unroll 16
                for (uint32_t i = 0; i < 4; ++i) m.edge[i] = *v.at(i, 4);
                #pragma GCC unroll 16
                for (uint32_t j = 0; j < 5; ++j) m.edge[4 + j] = *v.at(4, j);
            }
            return m;
        };
        Tiles<N> inv{};
        auto before = [&] {
            if constexpr (Single == 1) inv = tiles(only(a));
            if constexpr (Single == 2) inv = tiles(only(b));
            sse::keep(inv);
        };
        // Tile rows of the result one after the other; each tile is read from both
        // sources, combined and stored before the next.
        auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
            auto tile = [&](const auto& o, auto r0, auto r1, uint32_t p, uint32_t q) {
                if constexpr (both) return storedTile(o, p, q);
                else return tileOf(o, r0, r1, p, q);
            };
            auto ra = a1.row(0);
            auto rb = b1.row(0);
            float* rd = d1.row(0);
            #pragma GCC unroll 16
            for (uint32_t p = 0; p < G; ++p) {
                auto ra1 = a1.down(ra);
                auto rb1 = b1.down(rb);
                float* rd1 = d1.down(rd);
                #pragma GCC unroll 16
                for (uint32_t q = 0; q < G; ++q) {
                    R x = Single == 1 ? inv.t[p * G + q] : tile(a1, ra, ra1, p, q);
                    R y = Single == 2 ? inv.t[p * G + q] : tile(b1, rb, rb1, p, q);
                    R t = Op::p(x, y);
                    if (both) t = flip(t);
                    storeTile(rd + 2 * q, rd1 + 2 * q, t);
                }
                if constexpr (N == 5) {
                    // Column 4 of the two rows, as scalars of the element loop.
                    #pragma GCC unroll 2
                    for (uint32_t h = 0; h < 2; ++h) {
                        float x = Single == 1 ? inv.edge[2 * p + h] : *a1.in(h ? ra1 : ra, 4);
                        float y = Single == 2 ? inv.edge[2 * p + h] : *b1.in(h ? rb1 : rb, 4);
                        (h ? rd1 : rd)[4] = Op::s(x, y);
                    }
                }
                if (p + 1 < G || N == 5) {
                    ra = a1.down(ra1);
                    rb = b1.down(rb1);
                    rd = d1.down(rd1);
                }
            }
            if constexpr (N == 5) {
                // The last row: columns 0..3 as one packed row, column 4 a scalar.
                auto lastRow = [&](const auto& o, auto r, int s) {
                    if (s) return _mm_setr_ps(inv.edge[4], inv.edge[5], inv.edge[6], inv.edge[7]);
                    return _mm_setr_ps(*o.in(r, 0), *o.in(r, 1), *o.in(r, 2), *o.in(r, 3));
                };
                float x4 = Single == 1 ? inv.edge[8] : *a1.in(ra, 4);
                float y4 = Single == 2 ? inv.edge[8] : *b1.in(rb, 4);
                R x = lastRow(a1, ra, Single == 1);
                R y = lastRow(b1, rb, Single == 2);
                sse::store4u(rd, Op::p(x, y));
                rd[4] = Op::s(x4, y4);
            }
        };
        if (!array) {
            if (anyNull(a, b, d)) return kNull;
            object(0, only(a), only(b), only(d));
            return kOk;
        }
        auto whole = [&] { return dense::run<Op, N * N, Single>(a, b, d, N, N, count); };
        return packedArray<Op, N, Single>(count, before, whole, object, a, b, d);
    } else {
        using Yes = std::true_type;
        using No = std::false_type;
        Rows<N> inv{};
        bool alignedCall = false;
        auto before = [&] {
            // Contiguous decides once for the call; List object by object.
            if constexpr (!IsObjTable<D>::value) alignedCall = Align::aligned(a, b, d, 0);
            auto hold = [&](const auto& o) {
                if constexpr (isTr<std::decay_t<decltype(o)>>)
                    inv = alignedCall ? fetchRows3T<true>(o.o, o.o.rs) : fetchRows3T<false>(o.o, o.o.rs);
                else
                    inv = alignedCall ? fetchRows<N, true>(o) : fetchRows<N, false>(o);
            };
            if constexpr (Single == 1) hold(only(a));
            if constexpr (Single == 2) hold(only(b));
            sse::keep(inv);
        };
        // The single source from its held rows; a 3x3 transposed array source is
        // transposed whole first (the five shuffles need all three stored rows).
        auto objectAs = [&](const auto& a1, const auto& b1, const auto& d1, auto al) {
            constexpr bool Al = decltype(al)::value;
            Rows<N> t;
            auto source = [&](const auto& o, auto single) {
                if constexpr (decltype(single)::value) {
                    return Held<N>{inv};
                } else if constexpr (isTr<std::decay_t<decltype(o)>>) {
                    t = fetchRows3T<Al>(o.o, o.o.rs);
                    return Held<N>{t};
                } else {
                    return o;
                }
            };
            auto x = source(a1, std::bool_constant<Single == 1>{});
            auto y = source(b1, std::bool_constant<Single == 2>{});
            rowsObject<Op, N, Al>(x, y, d1);
        };
        auto object = [&](uint32_t k, const auto& a1, const auto& b1, const auto& d1) {
            bool al = IsObjTable<D>::value ? Align::aligned(a, b, d, k) : alignedCall;
            if (al) objectAs(a1, b1, d1, Yes{}); else objectAs(a1, b1, d1, No{});
        };
        if (!array) {
            if (anyNull(a, b, d)) return kNull;
            before();
            object(0, only(a), only(b), only(d));
            return kOk;
        }
        auto whole = [&] { return dense::run<Op, N * N, Single>(a, b, d, N, N, count); };
        return packedArray<Op, N, Single>(count, before, whole, object, a, b, d);
    }
}

// The software pipeline of mam and mamT at 3x3, Contiguous and List: object k is
// loaded while object k-1 is finished and stored; the loop test is count > 1 and the
// last stage always runs, so count 0 computes one object (there is no zero test).
// In List layout the entries go out of step with the objects: src1[0] and the last
// dst entry dst[count-1] first (dst[-1] at count 0), then src1[k] and dst[k-1]
// before object k is loaded and object k-1 stored.
// `src2RowStride` is the stride the rows of src2 are stepped with.
template <class Op, class A, class B, class D>
vorxStatus pipelined3x3(A a, B b, D d, uint32_t count, int32_t src2RowStride)
{
    using namespace mat;
    if (anyNull(a, b, d)) return kNull;
    constexpr bool list = IsObjTable<D>::value;
    const intptr_t last = list ? static_cast<intptr_t>(static_cast<int32_t>(count - 1))
                               : (count ? static_cast<intptr_t>(count - 1) : 0);
    if constexpr (list) {
        if (!a.x[0] || !d.x[last]) return kNull;
    }
    Rows<3> inv;
    if constexpr (isTr<B>) {
        inv = fetchRows3T<false>(only(b.v), src2RowStride);
    } else {
        B b2 = b;
        b2.rs = src2RowStride;
        inv = fetchRows<3, false>(only(b2));
    }
    if constexpr (!list) {
        // At count 1 and over a dense run is one pass (at count 0 the pipeline's last
        // stage computes its one object).
        B b2 = b;
        if constexpr (isTr<B>) b2.v.rs = src2RowStride;
        else b2.rs = src2RowStride;
        if (count && dense::run<Op, 9, 2>(a, b2, d, 3, 3, count)) return kOk;
    }
    auto x = a.first();
    auto z = d.first();
    Rows<3> cur = fetchRows<3, false>(x.obj());
    auto finish = [&](const Rows<3>& m, const auto& d1) {
        rowsObject<Op, 3, false>(Held<3>{m}, Held<3>{inv}, d1);
    };
    for (uint32_t k = 1; k < count; ++k) {
        x.next();
        if (!(x.listed() && z.listed())) return kNull;
        Rows<3> next = fetchRows<3, false>(x.obj());
        finish(cur, z.obj());
        z.next();
        cur = next;
    }
    finish(cur, count ? z.obj() : d.object(last));
    return kOk;
}

// The bodies built on the pipeline. The rows of src2 are stepped with its own row
// stride (mam), or, in the mamT forms that name it, with src1's: their src2RowStride
// is taken and never read.
struct Src2OwnStride {
    template <class A, class B>
    static int32_t rowStride(const A&, const B& b) { return b.rs; }
};
struct Src2AtSrc1Stride {
    template <class A, class B>
    static int32_t rowStride(const A& a, const B&) { return a.rs; }
};
template <class Op, class Stride = Src2OwnStride>
struct Pipelined3x3 {
    template <class A, class B, class D>
    static vorxStatus run(A a, B b, D d, uint32_t, uint32_t, uint32_t count)
    {
        int32_t rs;
        if constexpr (isTr<B>) rs = Stride::rowStride(a, b.v);
        else rs = Stride::rowStride(a, b);
        return pipelined3x3<Op>(a, b, d, count, rs);
    }
};

// A packed row-register body with an alignment test of its own (see the units that
// use it: their test leaves some words out).
template <class Op, int N, int Single, class Align>
struct PackedRowsWith {
    template <class A, class B, class D>
    static vorxStatus run(A a, B b, D d, uint32_t, uint32_t, uint32_t count)
    {
        return packedMatrices<Op, N, Single, Scheme::Rows, Align>(a, b, d, count, true);
    }
};

template <class T> constexpr bool isMat32 = sizeof(T) == 4;

constexpr unsigned sizes(int a = 0, int b = 0, int c = 0) { return (1u << a | 1u << b | 1u << c) & ~1u; }

// The family. Op the arithmetic; Single the source that is one matrix in an array
// call (0: none); ScalarC / ScalarL the fixed sizes that stay element loops in
// Contiguous and List layouts; AlignC / AlignL the sizes with the alignment dispatch.
template <class Op, int Single, unsigned ScalarC, unsigned ScalarL = ScalarC, unsigned AlignC = 0,
          unsigned AlignL = AlignC>
struct MatFamily {
    template <class T, int N, Lay L>
    struct Impl {
        static constexpr bool packed = isMat32<T> && N > 0 && adjacent(L) &&
                                       !((L == Lay::C ? ScalarC : ScalarL) >> N & 1);
        static constexpr bool dispatch = N > 0 && ((L == Lay::C ? AlignC : AlignL) >> N & 1);

        template <class A, class B>
        static constexpr Scheme scheme()
        {
            if constexpr (!isTr<A> && !isTr<B>) return Scheme::Rows;
            else if constexpr (N == 3) return Scheme::Rows3T;
            else return Scheme::Tiles;
        }

        template <class Align, class A, class B, class D>
        static vorxStatus packedRun(A a, B b, D d, uint32_t count, bool array)
        {
            return packedMatrices<Op, N, Single, scheme<A, B>(), Align>(a, b, d, count, array);
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t w, uint32_t h)
        {
            if constexpr (packed && dispatch)
                return packedRun<mat::AlignAll>(a, b, d, 1, false);
            else if constexpr (packed)
                return packedRun<mat::NoAlign>(a, b, d, 1, false);
            else
                return elementwiseSingle<Op, N>(a, b, d, w, h);
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t w, uint32_t h, uint32_t count)
        {
            if constexpr (packed && dispatch)
                return packedRun<mat::AlignAll>(a, b, d, count, true);
            else if constexpr (packed)
                return packedRun<mat::NoAlign>(a, b, d, count, true);
            else
                return elementwiseArray<Op, N * N, Single>(a, b, d, w, h, count);
        }
    };
};

// 3x3 maTm: the full-width loads of src1 go aligned when src1 and its strides allow.
template <class Op, unsigned ScalarC>
struct MatFamilyTm : MatFamily<Op, 2, ScalarC> {
    template <class T, int N, Lay L>
    struct Impl : MatFamily<Op, 2, ScalarC>::template Impl<T, N, L> {
        using Base = typename MatFamily<Op, 2, ScalarC>::template Impl<T, N, L>;
        using Base::run;
        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t w, uint32_t h, uint32_t count)
        {
            if constexpr (Base::packed && N == 3)
                return Base::template packedRun<mat::AlignSrc1>(a, b, d, count, true);
            else
                return Base::run(a, b, d, w, h, count);
        }
    };
};

// Which fixed sizes are element loops (bit N), from the table of packed forms: all
// 3x3 forms with a transposed source but maTm and mamT, some single-object forms.
namespace tag {
constexpr unsigned kAll = sizes(3, 4, 5) | sizes(6);
// Single objects.
struct Add_mm : MatFamily<AddOp, 0, kAll> {};
struct Add_mmT : MatFamily<AddOp, 0, sizes(3, 4, 5)> {};
struct Add_mTm : MatFamily<AddOp, 0, sizes(3, 4, 5)> {};
struct Add_mTmT : MatFamily<AddOp, 0, sizes(3, 4, 5)> {};
struct Sub_mm : MatFamily<SubOp, 0, sizes(5), sizes(5), sizes(4)> {};
struct Sub_mmT : MatFamily<SubOp, 0, sizes(3, 4, 5)> {};
struct Sub_mTm : MatFamily<SubOp, 0, sizes(3, 4, 5)> {};
struct Sub_mTmT : MatFamily<SubOp, 0, sizes(3, 4, 5)> {};
// An array and one matrix.
struct Add_mam : MatFamily<AddOp, 2, 0, 0, sizes(4, 6)> {};
struct Add_mamT : MatFamily<AddOp, 2, 0> {};
struct Add_maTm : MatFamilyTm<AddOp, 0> {};
struct Add_maTmT : MatFamily<AddOp, 2, sizes(3)> {};
struct Sub_mam : MatFamily<SubOp, 2, 0, 0, sizes(4, 5, 6), sizes(4, 6)> {};
struct Sub_mamT : MatFamily<SubOp, 2, 0> {};
struct Sub_maTm : MatFamilyTm<SubOp, 0> {};
struct Sub_maTmT : MatFamily<SubOp, 2, sizes(3)> {};
// One matrix and an array (Sub only: the sum commutes).
struct Sub_mma : MatFamily<SubOp, 1, sizes(3), sizes(3), sizes(4, 5)> {};
struct Sub_mmaT : MatFamily<SubOp, 1, sizes(3)> {};
struct Sub_mTma : MatFamily<SubOp, 1, sizes(3)> {};
struct Sub_mTmaT : MatFamily<SubOp, 1, sizes(3)> {};
// Two arrays.
struct Add_mama : MatFamily<AddOp, 0, sizes(3), sizes(3), sizes(4, 5, 6), sizes(4, 5)> {};
struct Add_mamaT : MatFamily<AddOp, 0, sizes(3, 6), sizes(3, 6)> {};
struct Add_maTma : MatFamily<AddOp, 0, sizes(3)> {};
struct Add_maTmaT : MatFamily<AddOp, 0, sizes(3)> {};
struct Sub_mama : MatFamily<SubOp, 0, sizes(3, 4), sizes(3), sizes(5), sizes(4, 5)> {};
struct Sub_mamaT : MatFamily<SubOp, 0, sizes(3)> {};
struct Sub_maTma : MatFamily<SubOp, 0, sizes(3)> {};
struct Sub_maTmaT : MatFamily<SubOp, 0, sizes(3)> {};
}  // namespace tag

}  // namespace vorx
