// The peers of the QR rows. Every factor is row-major in the form vorx leaves: R on
// and above the diagonal, below it the tail of each reflector whose head is 1 (the
// LAPACK and Eigen convention too); a square matrix gets no reflector for its last
// column (theirs there is the identity). Strides are in bytes.
#pragma once
#include <cstddef>

#define VORX_BENCH_QR_DECLS(ns)                                                                \
    namespace ns {                                                                             \
    /* M x N factors, object by object: packed, strided, through a list */                     \
    template <class T, int M, int N> void qrDecomp(const T* a, T* d, std::size_t n);           \
    template <class T, int M, int N>                                                           \
    void qrDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n);                \
    template <class T, int M, int N> void qrDecompL(T* const* a, T* const* d, std::size_t n);  \
    /* solve a x = b for each object, factor and back substitution */                          \
    template <class T, int N> void qrSolve(const T* a, const T* b, T* x, std::size_t n);       \
    }

VORX_BENCH_QR_DECLS(plain_O2)
VORX_BENCH_QR_DECLS(plain_O3)
VORX_BENCH_QR_DECLS(eigen_peer)

namespace lapack_peer {
// sgeqrf/dgeqrf per object, through a column-major copy and back.
template <class T, int M, int N> void qrDecomp(const T* a, T* d, std::size_t n);
// dgeqrf, dormqr and dtrtrs per object.
template <class T, int N> void qrSolve(const T* a, const T* b, T* x, std::size_t n);
} // namespace lapack_peer
