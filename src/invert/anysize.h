// Inversion of any order from 2 up by the adjugate, in the caller's scratch: the
// determinant by the elimination of det/elim.h, then every cofactor by an
// elimination of its own of order size - 1 on rows copied afresh from the source,
// each times the one reciprocal of the determinant. No factor is reused between
// cofactors; the cost grows as the fifth power of the order.
#pragma once

#include "det/elim.h"
#include "frame/checks.h"
#include "frame/pairs.h"

namespace vorx::inv {

// Object n. The determinant stage fails the object (-10, its dst untouched) where
// the determinant family would give 0.0. In a cofactor a failed pivot is no failure:
// the running product becomes 0.0, the elimination stops, the last-pivot test still
// runs on the rows as they stand, and a failed last pivot makes the minor 0.0.
// In 64f the running products, the determinant, its reciprocal and the minors stay
// at register width; only the working rows and dst are rounded, by their stores.
// `AsCopied`: a single Pointer matrix tests src[k] then dst[k] as element k is copied.
template <class T, bool AsCopied, class S, class D>
vorxStatus adjugate(const S& src, const D& dst, uint32_t n, uint32_t size, const elim::Work<T>& w)
{
    using W = elim::Wide<T>;
    for (uint32_t i = 0; i < size; ++i) {
        w.perm[i] = i;
        for (uint32_t j = 0; j < size; ++j) {
            if constexpr (AsCopied)
                if (!src.entry(i * size + j) || !dst.entry(i * size + j)) return kNull;
            elim::take(w.at(i, j), src, n, i, j);
        }
    }
    int sign = 1;
    elim::Running<T> det;
    if (!elim::reduce(w, size, sign, det) || !elim::lastPasses(w.at(size - 1))) return kZeroDivide;
    const W inv = W(1) / det.with(w.at(size - 1), sign);
    const uint32_t m = size - 1;
    for (uint32_t i = 0; i < size; ++i)
        for (uint32_t j = 0; j < size; ++j) {
            for (uint32_t q = 0; q < m; ++q) {
                w.perm[q] = q;
                const uint32_t r = q + (q >= i);
                for (uint32_t p = 0; p < m; ++p) elim::take(w.at(q, p), src, n, r, p + (p >= j));
            }
            int sg = 1;
            elim::Running<T> minor;
            if (!elim::reduce(w, m, sg, minor)) minor.v = 0;
            const T last = w.at(m - 1);
            const W cofactor = elim::lastPasses(last) ? minor.with(last, sg) : W(0);
            *dst.at(n, j, i) = static_cast<T>(elim::times(elim::times(cofactor, inv), W((i + j) & 1 ? -1 : 1)));
        }
    return kOk;
}

template <class T>
struct AnySize {
    template <class S, class D>
    static vorxStatus run(S s, uint32_t size, T* scratch, D d, uint32_t count)
    {
        if (anyNull(s) || !scratch || anyNull(d)) return kNull;
        if (size == 0) return kBadSize;
        s = s.withShape(size, size);
        d = d.withShape(size, size);
        if (!pairsOk(s, d, size * size)) return kNull;
        const elim::Work<T> w = elim::workIn(scratch, size);
        for (uint32_t n = 0; n < count; ++n) {
            if (!listsOk(n, d, s)) return kNull;
            if (vorxStatus st = adjugate<T, false>(s, d, n, size, w); st != kOk) return st;
        }
        return kOk;
    }
    template <class S, class D>
    static vorxStatus run(S s, uint32_t size, T* scratch, D d)
    {
        if (anyNull(s) || !scratch || anyNull(d)) return kNull;
        if (size == 0) return kBadSize;
        return adjugate<T, IsElemTable<S>::value>(s.withShape(size, size), d.withShape(size, size), 0, size,
                                                  elim::workIn(scratch, size));
    }
};

}  // namespace vorx::inv
