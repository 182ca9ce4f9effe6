// Plain loops for matrix by vector, gaxpy and scaling, as a user writes them.
// Compiled twice, -O2 and -O3, into the namespace VORX_PLAIN_NS names.
#include "matvec.h"

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

template <class T> static const T* at(const T* p, long bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + bytes);
}

template <class T, int N>
void matvec(const T* a, long aStep, const T* x, long xStep, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        const T* m = a + k * aStep;
        const T* v = x + k * xStep;
        for (int i = 0; i < N; ++i) {
            T s = 0;
            for (int j = 0; j < N; ++j) s += m[i * N + j] * v[j];
            d[k * N + i] = s;
        }
    }
}

template <class T, int N>
void matvecS(const T* a, long aos, const T* x, long xos, T* d, long dos, long es, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i) {
            T s = 0;
            for (int j = 0; j < N; ++j)
                s += *at(a, long(k) * aos + (i * N + j) * es) * *at(x, long(k) * xos + j * es);
            *const_cast<T*>(at(d, long(k) * dos + i * es)) = s;
        }
}

template <class T, int N> void matvecL(T* const* a, T* const* x, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i) {
            T s = 0;
            for (int j = 0; j < N; ++j) s += a[k][i * N + j] * x[k][j];
            d[k][i] = s;
        }
}

template <class T, int N> void gaxpy(const T* a, const T* x, const T* y, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i) {
            T s = 0;
            for (int j = 0; j < N; ++j) s += a[i * N + j] * x[k * N + j];
            d[k * N + i] = s + y[k * N + i];
        }
}

template <class T, int E> void scale(const T* a, T v, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n * E; ++k) d[k] = a[k] * v;
}

#include "matvec_instances.inc"
template void matvecS<float, 4>(const float*, long, const float*, long, float*, long, long, std::size_t);
template void matvecL<float, 4>(float* const*, float* const*, float* const*, std::size_t);
} // namespace VORX_PLAIN_NS
