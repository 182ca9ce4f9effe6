// Inversion in plain loops, as a user writes it: Gauss-Jordan elimination with
// partial pivoting on the matrix beside the identity. Compiled twice, with -O2 and
// -O3, into the namespace named by VORX_PLAIN_NS.
#include "invert.h"

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

// Element (i, j) of one object is x[i * r + j * e] (r, e in elements), likewise y.
template <class T, int N> static void one(const T* x, T* y, long r, long e) {
    T m[N][2 * N];
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) {
            m[i][j] = x[i * r + j * e];
            m[i][N + j] = i == j ? T(1) : T(0);
        }
    for (int c = 0; c < N; ++c) {
        int best = c;
        for (int i = c + 1; i < N; ++i)
            if ((m[i][c] < 0 ? -m[i][c] : m[i][c]) > (m[best][c] < 0 ? -m[best][c] : m[best][c])) best = i;
        if (best != c)
            for (int j = 0; j < 2 * N; ++j) {
                T t = m[c][j];
                m[c][j] = m[best][j];
                m[best][j] = t;
            }
        T p = T(1) / m[c][c];
        for (int j = 0; j < 2 * N; ++j) m[c][j] *= p;
        for (int i = 0; i < N; ++i) {
            if (i == c) continue;
            T f = m[i][c];
            for (int j = 0; j < 2 * N; ++j) m[i][j] -= f * m[c][j];
        }
    }
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) y[i * r + j * e] = m[i][N + j];
}

template <class T, int N> void invert(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) one<T, N>(a + k * N * N, d + k * N * N, N, 1);
}

template <class T, int N> void invertS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) {
        long o = static_cast<long>(k) * os / E;
        one<T, N>(a + o, d + o, rs / E, es / E);
    }
}

template <class T, int N> void invertL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) one<T, N>(a[k], d[k], N, 1);
}

#include "invert_instances.inc"
} // namespace VORX_PLAIN_NS
