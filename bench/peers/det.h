// The peers of the determinant rows, one object after another, each result stored
// at d[k]: plain loops (the cofactor formulas at 3x3 and 4x4, Gauss elimination with
// partial pivoting at 6x6), Eigen's determinant(), reference LAPACK getrf. Objects
// are row-major.
#pragma once
#include <cstddef>

#define VORX_BENCH_DET_DECLS(ns)                                                              \
    namespace ns {                                                                            \
    template <class T, int N> void det(const T* a, T* d, std::size_t n);                      \
    /* Strided: objects, rows and elements os, rs, es bytes apart (whole elements) */         \
    template <class T, int N> void detS(const T* a, T* d, long os, long rs, long es, std::size_t n); \
    template <class T, int N> void detL(T* const* a, T* d, std::size_t n);                    \
    }

VORX_BENCH_DET_DECLS(plain_O2)
VORX_BENCH_DET_DECLS(plain_O3)
VORX_BENCH_DET_DECLS(eigen_peer)

namespace lapack_peer {
// sgetrf/dgetrf per object on a copy (det A = det A', so no transposition), then the
// product of the diagonal with the sign of the exchanges.
template <class T, int N> void det(const T* a, T* d, std::size_t n);
} // namespace lapack_peer
