// The peers of matrix by vector, gaxpy and scaling: one object after another,
// row-major, strides in elements where the names say `step` (0: one object for all)
// and in bytes otherwise.
#pragma once
#include <cstddef>

#define VORX_MATVEC_PEER_DECLS(ns)                                                                  \
    namespace ns {                                                                                  \
    /* d_k = A_k x_k; a single A or x has step 0 */                                                 \
    template <class T, int N>                                                                       \
    void matvec(const T* a, long aStep, const T* x, long xStep, T* d, std::size_t n);               \
    template <class T, int N>                                                                       \
    void matvecS(const T* a, long aos, const T* x, long xos, T* d, long dos, long es, std::size_t n); \
    template <class T, int N> void matvecL(T* const* a, T* const* x, T* const* d, std::size_t n);   \
    /* d_k = A x_k + y_k, one A */                                                                  \
    template <class T, int N> void gaxpy(const T* a, const T* x, const T* y, T* d, std::size_t n);  \
    /* d = a * v over n objects of E elements */                                                    \
    template <class T, int E> void scale(const T* a, T v, T* d, std::size_t n);                     \
    }

VORX_MATVEC_PEER_DECLS(plain_O2)
VORX_MATVEC_PEER_DECLS(plain_O3)
VORX_MATVEC_PEER_DECLS(eigen_peer)

namespace lapack_peer {
// sgemv/dgemv per object: a row-major A x is the column-major A' x.
template <class T, int N> void matvec(const T* a, long aStep, const T* x, long xStep, T* d, std::size_t n);
// y copied to d, then gemv with beta 1.
template <class T, int N> void gaxpy(const T* a, const T* x, const T* y, T* d, std::size_t n);
// scopy then sscal per object.
template <class T, int E> void scale(const T* a, T v, T* d, std::size_t n);
} // namespace lapack_peer
