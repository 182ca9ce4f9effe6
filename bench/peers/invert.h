// The peers of the inversion rows, one object after another: plain Gauss-Jordan
// loops with partial pivoting, Eigen's inverse(), reference LAPACK getrf + getri.
// Objects are row-major.
#pragma once
#include <cstddef>

#define VORX_BENCH_INVERT_DECLS(ns)                                                           \
    namespace ns {                                                                            \
    template <class T, int N> void invert(const T* a, T* d, std::size_t n);                   \
    /* Strided: objects, rows and elements os, rs, es bytes apart (whole elements) */         \
    template <class T, int N>                                                                 \
    void invertS(const T* a, T* d, long os, long rs, long es, std::size_t n);                 \
    template <class T, int N> void invertL(T* const* a, T* const* d, std::size_t n);          \
    }

VORX_BENCH_INVERT_DECLS(plain_O2)
VORX_BENCH_INVERT_DECLS(plain_O3)
VORX_BENCH_INVERT_DECLS(eigen_peer)

namespace lapack_peer {
// sgetrf + sgetri (dgetrf + dgetri) per object on a copy: the inverse of the
// transpose is the transpose of the inverse, so row-major data needs no transposing.
template <class T, int N> void invert(const T* a, T* d, std::size_t n);
} // namespace lapack_peer
