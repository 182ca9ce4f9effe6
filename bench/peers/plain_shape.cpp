// Plain loops of the matrix functionals and the moves, as a user writes them.
// Compiled twice, into the namespace named by VORX_PLAIN_NS.
#include "shape.h"

#include <cmath>

namespace VORX_PLAIN_NS {

template <class T, int N> void frobNorm(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (int e = 0; e < N * N; ++e) s += a[k * N * N + e] * a[k * N * N + e];
        d[k] = std::sqrt(s);
    }
}

template <class T, int N> void trace(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T s = 0;
        for (int i = 0; i < N; ++i) s += a[k * N * N + i * N + i];
        d[k] = s;
    }
}

template <class T, int N> void transpose(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) d[k * N * N + j * N + i] = a[k * N * N + i * N + j];
}

template <class T, int N> void transposeL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) d[k][j * N + i] = a[k][i * N + j];
}

template <class T, int N> void transposeP(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) d[j * N + i][k] = a[i * N + j][k];
}

template <class T, int N> void copyListToStrided(T* const* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int e = 0; e < N * N; ++e) d[k * 2 * N * N + 2 * e] = a[k][e];
}

#include "shape_instances.inc"
} // namespace VORX_PLAIN_NS
