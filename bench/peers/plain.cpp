// Plain loops, the way a user writes them: row-major objects, i-j-k products, Gauss
// elimination with partial pivoting. Compiled twice, with -O2 and -O3, into the
// namespace named by VORX_PLAIN_NS.
#include "peers.h"

#ifndef VORX_PLAIN_NS
#error "VORX_PLAIN_NS names the namespace of this compilation"
#endif

namespace VORX_PLAIN_NS {

template <class T> static T* at(T* p, long bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(p) + bytes);
}
template <class T> static const T* at(const T* p, long bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + bytes);
}

template <class T, int N> void addC(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int j = 0; j < N; ++j) d[k * N + j] = a[k * N + j] + b[k * N + j];
}

template <class T, int N>
void addS(const T* a, const T* b, T* d, long os, long es, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int j = 0; j < N; ++j) {
            long off = static_cast<long>(k) * os + j * es;
            *at(d, off) = *at(a, off) + *at(b, off);
        }
}

template <class T, int N> void addP(T* const* a, T* const* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int j = 0; j < N; ++j) d[j][k] = a[j][k] + b[j][k];
}

template <class T, int N> void addL(T* const* a, T* const* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int j = 0; j < N; ++j) d[k][j] = a[k][j] + b[k][j];
}

template <class T, int N> void addMatT(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j)
                d[k * N * N + i * N + j] = a[k * N * N + i * N + j] + b[j * N + i];
}

template <class T, int N>
void addMatTL(T* const* a, const T* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) d[k][i * N + j] = a[k][i * N + j] + b[j * N + i];
}

template <class T, int N> void mul(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        const T* x = a + k * N * N;
        const T* y = b + k * N * N;
        T* z = d + k * N * N;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) {
                T s = 0;
                for (int l = 0; l < N; ++l) s += x[i * N + l] * y[l * N + j];
                z[i * N + j] = s;
            }
    }
}

template <class T, int N>
void mulS(const T* a, const T* b, T* d, long os, long rs, long es, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        long o = static_cast<long>(k) * os;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) {
                T s = 0;
                for (int l = 0; l < N; ++l)
                    s += *at(a, o + i * rs + l * es) * *at(b, o + l * rs + j * es);
                *at(d, o + i * rs + j * es) = s;
            }
    }
}

template <class T, int N> void mulL(T* const* a, T* const* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) {
                T s = 0;
                for (int l = 0; l < N; ++l) s += a[k][i * N + l] * b[k][l * N + j];
                d[k][i * N + j] = s;
            }
}

// Gauss elimination with partial pivoting and row exchanges in place.
template <class T, int N> static void eliminate(T* m, std::uint32_t* p) {
    for (int i = 0; i < N; ++i) p[i] = i;
    for (int c = 0; c < N - 1; ++c) {
        int best = c;
        T big = m[c * N + c] < 0 ? -m[c * N + c] : m[c * N + c];
        for (int r = c + 1; r < N; ++r) {
            T v = m[r * N + c] < 0 ? -m[r * N + c] : m[r * N + c];
            if (v > big) big = v, best = r;
        }
        if (best != c) {
            for (int j = 0; j < N; ++j) {
                T t = m[c * N + j];
                m[c * N + j] = m[best * N + j];
                m[best * N + j] = t;
            }
            std::uint32_t t = p[c];
            p[c] = p[best];
            p[best] = t;
        }
        for (int r = c + 1; r < N; ++r) {
            T f = m[r * N + c] / m[c * N + c];
            m[r * N + c] = f;
            for (int j = c + 1; j < N; ++j) m[r * N + j] -= f * m[c * N + j];
        }
    }
}

template <class T, int N>
void luDecomp(const T* a, std::uint32_t* perm, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T* m = d + k * N * N;
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        eliminate<T, N>(m, perm + k * N);
    }
}

template <class T, int N> void luSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T m[N * N];
        std::uint32_t p[N];
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        eliminate<T, N>(m, p);
        T* y = x + k * N;
        for (int i = 0; i < N; ++i) {
            T s = b[k * N + p[i]];
            for (int j = 0; j < i; ++j) s -= m[i * N + j] * y[j];
            y[i] = s;
        }
        for (int i = N - 1; i >= 0; --i) {
            T s = y[i];
            for (int j = i + 1; j < N; ++j) s -= m[i * N + j] * y[j];
            y[i] = s / m[i * N + i];
        }
    }
}

#include "instances.inc"
} // namespace VORX_PLAIN_NS
