// Householder QR as a user writes it: row-major objects, the column norm with
// std::sqrt, the tail scaled by a division, each column reflected by its own dot
// product. Compiled twice, with -O2 and -O3, into the namespace named by VORX_PLAIN_NS.
#include "qr.h"

#include <cmath>
#include <cstdint>

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {
namespace {

// Element (i, j) of one object: row stride and element stride in bytes.
template <class T> struct View {
    T* p;
    long rs, es;
    T& operator()(int i, int j) const {
        return *reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(p) + i * rs + j * es);
    }
};

template <class T, int M, int N> void factor(View<T> d) {
    for (int k = 0; k < (M == N ? N - 1 : N); ++k) {
        T s = 0;
        for (int i = k; i < M; ++i) s += d(i, k) * d(i, k);
        T norm = std::sqrt(s), a = d(k, k);
        T c = a > 0 ? a + norm : a - norm;
        T vv = 1;
        for (int i = k + 1; i < M; ++i) {
            d(i, k) /= c;
            vv += d(i, k) * d(i, k);
        }
        T beta = -2 / vv;
        d(k, k) = a > 0 ? -norm : norm;
        for (int j = k + 1; j < N; ++j) {
            T t = d(k, j);
            for (int i = k + 1; i < M; ++i) t += d(i, k) * d(i, j);
            t *= beta;
            d(k, j) += t;
            for (int i = k + 1; i < M; ++i) d(i, j) += d(i, k) * t;
        }
    }
}

template <class T, int M, int N> void copyFactor(View<const T> a, View<T> d) {
    for (int i = 0; i < M; ++i)
        for (int j = 0; j < N; ++j) d(i, j) = a(i, j);
    factor<T, M, N>(d);
}

} // namespace

template <class T, int M, int N> void qrDecomp(const T* a, T* d, std::size_t n) {
    const long rs = N * sizeof(T), es = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) copyFactor<T, M, N>({a + k * M * N, rs, es}, {d + k * M * N, rs, es});
}

template <class T, int M, int N>
void qrDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        long at = static_cast<long>(k) * os;
        copyFactor<T, M, N>({&View<const T>{a, at, 0}(1, 0), rs, es}, {&View<T>{d, at, 0}(1, 0), rs, es});
    }
}

template <class T, int M, int N> void qrDecompL(T* const* a, T* const* d, std::size_t n) {
    const long rs = N * sizeof(T), es = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) copyFactor<T, M, N>({a[k], rs, es}, {d[k], rs, es});
}

template <class T, int N> void qrSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T f[N * N], y[N];
        const long rs = N * sizeof(T), es = sizeof(T);
        copyFactor<T, N, N>({a + k * N * N, rs, es}, {f, rs, es});
        for (int i = 0; i < N; ++i) y[i] = b[k * N + i];
        // Q' b, reflector by reflector, then R x = Q' b from the bottom.
        for (int j = 0; j < N - 1; ++j) {
            T vv = 1, t = y[j];
            for (int i = j + 1; i < N; ++i) vv += f[i * N + j] * f[i * N + j], t += f[i * N + j] * y[i];
            t *= -2 / vv;
            y[j] += t;
            for (int i = j + 1; i < N; ++i) y[i] += f[i * N + j] * t;
        }
        T* r = x + k * N;
        for (int i = N - 1; i >= 0; --i) {
            T s = y[i];
            for (int j = i + 1; j < N; ++j) s -= f[i * N + j] * r[j];
            r[i] = s / f[i * N + i];
        }
    }
}

#include "qr_instances.inc"

} // namespace VORX_PLAIN_NS
