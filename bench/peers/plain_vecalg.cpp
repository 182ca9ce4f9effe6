// Plain loops of the vector algebra, as a user writes them; compiled at -O2 and -O3
// into the namespace named by VORX_PLAIN_NS.
#include "vecalg.h"

#include <cmath>

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

template <class T, int N> void dot(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (int j = 0; j < N; ++j) s += a[k * N + j] * b[k * N + j];
        d[k] = s;
    }
}

template <class T, int N> void dotS(const T* a, const T* b, T* d, long os, long es, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        const char* x = reinterpret_cast<const char*>(a) + static_cast<long>(k) * os;
        const char* y = reinterpret_cast<const char*>(b) + static_cast<long>(k) * os;
        T s = 0;
        for (int j = 0; j < N; ++j)
            s += *reinterpret_cast<const T*>(x + j * es) * *reinterpret_cast<const T*>(y + j * es);
        d[k] = s;
    }
}

template <class T, int N> void dotL(T* const* a, T* const* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (int j = 0; j < N; ++j) s += a[k][j] * b[k][j];
        d[k] = s;
    }
}

template <class T> void cross(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        const T* x = a + 3 * k;
        const T* y = b + 3 * k;
        T* z = d + 3 * k;
        z[0] = x[1] * y[2] - x[2] * y[1];
        z[1] = x[2] * y[0] - x[0] * y[2];
        z[2] = x[0] * y[1] - x[1] * y[0];
    }
}

template <class T, int N> void norm(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (int j = 0; j < N; ++j) s += a[k * N + j] * a[k * N + j];
        d[k] = std::sqrt(s);
    }
}

template <class T, int N> void lcomb(const T* a, T s1, const T* b, T s2, T* d, std::size_t n) {
    for (std::size_t e = 0; e < n * N; ++e) d[e] = a[e] * s1 + b[e] * s2;
}

template <class T> void dotLong(const T* a, const T* b, T* d, std::size_t len, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (std::size_t j = 0; j < len; ++j) s += a[j] * b[j];
        d[k] = s;
    }
}

template <class T> void saxpyLong(const T* a, T s, const T* b, T* d, std::size_t len, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (std::size_t j = 0; j < len; ++j) d[j] = a[j] * s + b[j];
}

#include "vecalg_instances.inc"
template void cross<float>(const float*, const float*, float*, std::size_t);
template void lcomb<float, 3>(const float*, float, const float*, float, float*, std::size_t);
template void lcomb<float, 4>(const float*, float, const float*, float, float*, std::size_t);
} // namespace VORX_PLAIN_NS
