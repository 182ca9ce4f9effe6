// Transpose: dst[j][i] = src[i][j] for a source of `height` rows and `width`
// columns, one matrix or each of an array in turn. Only moves, no arithmetic.
//
// Every member moves one element at a time, source rows in order, but the 32f
// fixed sizes in Contiguous and List layout, which move two-by-two tiles (tiles.h).
#pragma once

#include "../frame/sse.h"
#include "move.h"
#include "tiles.h"

namespace vorx::transpose {

// The run-time Pointer forms index their tables by the other dimension: source
// element (i, j) is entry i*height + j, destination element (j, i) entry
// j*width + i. For a square matrix that is the row-major rule; for any other the
// tables are read as they stand, and must reach the largest of those entries.
template <class S, class D>
void shapePointers(S& s, D& d, uint32_t w, uint32_t h)
{
    s = s.withShape(h, h);
    d = d.withShape(w, w);
}

// One object, source row by source row: a move into dst read transposed.
// `Entries`: the single-matrix Pointer form tests each element's dst entry and then
// its src entry just before the element moves; a null stops it with the elements
// before it moved.
template <bool Entries, class S, class D>
[[gnu::always_inline]] inline bool object(const S& s, const D& d, uint32_t k, uint32_t w, uint32_t h)
{
    if constexpr (Entries) {
        for (uint32_t i = 0; i < h; ++i)
            for (uint32_t j = 0; j < w; ++j) {
                if (!(readOk(d, j, i) && readOk(s, i, j))) return false;
                shape::move(d.at(k, j, i), s.at(k, i, j));
            }
    } else {
        shape::moveObject(s, Tr<D>{d}, k, w, h);
    }
    return true;
}

// Pointer arrays of square matrices whose tables are each one run (element after
// element, the objects of an element E bytes apart; run() in operand.h), and whose
// runs lie apart: element (i, j)'s stretch of count objects moves whole into dst's
// (j, i), four 32f lanes at a time. Every element makes the same move as in the
// object loop, and no byte is both read and written, so the result is the same.
template <class S, class D>
bool stretches(const S& s, const D& d, uint32_t n, uint32_t count)
{
    if constexpr (!IsElemTable<S>::value) {
        return false;
    } else {
        using T = typename D::Elem;
        if (n >= 0x8000 || count > UINT32_MAX / (n * n * sizeof(T))) return false;
        const T* from = s.run(n, n, count);
        T* to = d.run(n, n, count);
        const uintptr_t bytes = static_cast<uintptr_t>(count) * n * n * sizeof(T);
        if (!from || !to || !bytesAt(from, bytes).apart(bytesAt(to, bytes))) return false;
        for (uint32_t i = 0; i < n; ++i)
            for (uint32_t j = 0; j < n; ++j) {
                const T* x = from + (i * n + j) * count;
                T* y = to + (j * n + i) * count;
                uint32_t k = 0;
                if constexpr (sizeof(T) == 4)
                    for (; count - k >= 4; k += 4) sse::store4u(y + k, sse::load4u(x + k));
                for (; k < count; ++k) shape::move(y + k, x + k);
            }
        return true;
    }
}

// The 32f fixed sizes whose rows lie E bytes apart move tiles.
template <class T, int N, Lay L>
constexpr bool tiled = sizeof(T) == 4 && N > 0 && adjacent(L);

template <class T, int N, Lay L>
struct Impl {
    template <class S, class D>
    static vorxStatus run(S s, uint32_t w, uint32_t h, D d)
    {
        if (anyNull(s, d)) return kNull;
        if (N == 0 && (w == 0 || h == 0)) return kBadSize;
        if constexpr (tiled<T, N, L>) {
            Tiles<N>::objects(s, d)(0);
            return kOk;
        } else {
            shapePointers(s, d, w, h);
            return object<L == Lay::P>(s, d, 0, N ? N : w, N ? N : h) ? kOk : kNull;
        }
    }

    // Arrays: the Pointer tables are scanned over width*height entries (src and
    // dst), the List entries tested before each object.
    template <class S, class D>
    static vorxStatus run(S s, uint32_t w, uint32_t h, D d, uint32_t count)
    {
        if constexpr (tiled<T, N, L>) {
            return arrayCall(false, 0, count, nothing, Tiles<N>::objects(s, d), s, d);
        } else {
            shapePointers(s, d, w, h);
            const uint32_t W = N ? N : w, H = N ? N : h;
            auto whole = [&] { return W == H && stretches(s, d, W, count); };
            return arrayCallWhole(N == 0 && (w == 0 || h == 0), W * H, count, nothing, whole,
                                  [&](uint32_t k) { object<false>(s, d, k, W, H); }, s, d);
        }
    }
};

}  // namespace vorx::transpose

namespace vorx::tag {
struct Transpose_m : By<transpose::Impl> {};
struct Transpose_ma : By<transpose::Impl> {};
}  // namespace vorx::tag
