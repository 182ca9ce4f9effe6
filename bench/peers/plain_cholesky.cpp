// Cholesky factorisation and solve in plain loops, as a user writes them: L[i][j]
// divided by L[j][j], the diagonal a square root. Compiled twice, with -O2 and -O3,
// into the namespace named by VORX_PLAIN_NS.
#include <cmath>

#include "cholesky.h"

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

// Element (i, j) of one object is a[i * r + j * e] (r, e in elements).
template <class T, int N> static void factor(const T* a, T* l, long r, long e) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j <= i; ++j) {
            T s = a[i * r + j * e];
            for (int k = 0; k < j; ++k) s -= l[i * r + k * e] * l[j * r + k * e];
            l[i * r + j * e] = i == j ? std::sqrt(s) : s / l[j * r + j * e];
        }
}

template <class T, int N> void cholDecomp(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) factor<T, N>(a + k * N * N, d + k * N * N, N, 1);
}

template <class T, int N> void cholDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k)
        factor<T, N>(a + static_cast<long>(k) * os / E, d + static_cast<long>(k) * os / E, rs / E, es / E);
}

template <class T, int N> void cholDecompL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) factor<T, N>(a[k], d[k], N, 1);
}

template <class T, int N> void cholSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T l[N * N];
        factor<T, N>(a + k * N * N, l, N, 1);
        T* y = x + k * N;
        for (int i = 0; i < N; ++i) {
            T s = b[k * N + i];
            for (int j = 0; j < i; ++j) s -= l[i * N + j] * y[j];
            y[i] = s / l[i * N + i];
        }
        for (int i = N - 1; i >= 0; --i) {
            T s = y[i];
            for (int j = i + 1; j < N; ++j) s -= l[j * N + i] * y[j];
            y[i] = s / l[i * N + i];
        }
    }
}

#include "cholesky_instances.inc"
} // namespace VORX_PLAIN_NS
