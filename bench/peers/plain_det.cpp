// Determinants in plain loops, as a user writes them: the cofactor formulas at 3x3
// and 4x4 (the 4x4 from the six 2x2 minors of each half), Gauss elimination with
// partial pivoting at larger sizes. Compiled twice, with -O2 and -O3, into the
// namespace named by VORX_PLAIN_NS.
#include "det.h"

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

// Element (i, j) of one object is x[i * r + j * e] (r, e in elements).
template <class T, int N> static T one(const T* x, long r, long e) {
    auto a = [&](int i, int j) { return x[i * r + j * e]; };
    if constexpr (N == 3) {
        return a(0, 0) * (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) -
               a(0, 1) * (a(1, 0) * a(2, 2) - a(1, 2) * a(2, 0)) +
               a(0, 2) * (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0));
    } else if constexpr (N == 4) {
        T s0 = a(0, 0) * a(1, 1) - a(1, 0) * a(0, 1), s1 = a(0, 0) * a(1, 2) - a(1, 0) * a(0, 2);
        T s2 = a(0, 0) * a(1, 3) - a(1, 0) * a(0, 3), s3 = a(0, 1) * a(1, 2) - a(1, 1) * a(0, 2);
        T s4 = a(0, 1) * a(1, 3) - a(1, 1) * a(0, 3), s5 = a(0, 2) * a(1, 3) - a(1, 2) * a(0, 3);
        T c5 = a(2, 2) * a(3, 3) - a(3, 2) * a(2, 3), c4 = a(2, 1) * a(3, 3) - a(3, 1) * a(2, 3);
        T c3 = a(2, 1) * a(3, 2) - a(3, 1) * a(2, 2), c2 = a(2, 0) * a(3, 3) - a(3, 0) * a(2, 3);
        T c1 = a(2, 0) * a(3, 2) - a(3, 0) * a(2, 2), c0 = a(2, 0) * a(3, 1) - a(3, 0) * a(2, 1);
        return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
    } else {
        T m[N][N];
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) m[i][j] = a(i, j);
        T det = 1;
        for (int c = 0; c < N; ++c) {
            int best = c;
            for (int i = c + 1; i < N; ++i)
                if ((m[i][c] < 0 ? -m[i][c] : m[i][c]) > (m[best][c] < 0 ? -m[best][c] : m[best][c])) best = i;
            if (best != c) {
                for (int j = c; j < N; ++j) {
                    T t = m[c][j];
                    m[c][j] = m[best][j];
                    m[best][j] = t;
                }
                det = -det;
            }
            det *= m[c][c];
            for (int i = c + 1; i < N; ++i) {
                T f = m[i][c] / m[c][c];
                for (int j = c + 1; j < N; ++j) m[i][j] -= f * m[c][j];
            }
        }
        return det;
    }
}

template <class T, int N> void det(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = one<T, N>(a + k * N * N, N, 1);
}

template <class T, int N> void detS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) d[k] = one<T, N>(a + static_cast<long>(k) * os / E, rs / E, es / E);
}

template <class T, int N> void detL(T* const* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = one<T, N>(a[k], N, 1);
}

#include "det_instances.inc"
} // namespace VORX_PLAIN_NS
