// Pairs of functions, hpp_<n> through vorx.hpp and c_<n> with the C call written out:
// zero_overhead.sh requires the same instructions of each pair.
#include <span>

#include "vorx.hpp"

using A4 = std::array<float, 4>;
using M4 = std::array<A4, 4>;

extern "C" {
int hpp_1(const float* a, const float* b, float* d, uint32_t n)
{
    return int(vorx::add(vorx::vec_array<4>(a, 16, n), vorx::vec<4>(b), vorx::vec_array<4>(d, 16, n)));
}
int c_1(const float* a, const float* b, float* d, uint32_t n) { return vorxAdd_vav_32f_4x1(a, 16, b, d, 16, n); }

int hpp_2(const float* const* a, const float* b, float* const* d, uint32_t n)
{
    return int(vorx::mul(vorx::transposed(vorx::mat<4, 4>(b)), vorx::transposed(vorx::mat_list<4, 4>(a, 0, 16, n)),
                         vorx::mat_list<4, 4>(d, 0, 16, n)));
}
int c_2(const float* const* a, const float* b, float* const* d, uint32_t n)
{
    return vorxMul_mTmaT_32f_4x4_L(b, 16, a, 0, 16, d, 0, 16, n);
}

int hpp_3(std::span<const M4> m, std::span<const A4> p, std::span<A4> d)
{
    return int(vorx::mul(vorx::mat_array(m), vorx::vec_array(p), vorx::vec_array(d)));
}
int c_3(std::span<const M4> m, std::span<const A4> p, std::span<A4> d)
{
    return vorxMul_mava_32f_4x4(m[0][0].data(), 64, 16, p[0].data(), 16, d[0].data(), 16, uint32_t(m.size()));
}

int hpp_4(const double* const* a, uint32_t* perm, double* const* d, uint32_t size, int32_t es, uint32_t n)
{
    return int(vorx::lu_decomp(vorx::mat_list_strided(a, size, size, 8, 96, es, n), perm,
                               vorx::mat_list_strided(d, size, size, 8, 96, es, n)));
}
int c_4(const double* const* a, uint32_t* perm, double* const* d, uint32_t size, int32_t es, uint32_t n)
{
    return vorxLUDecomp_ma_64f_LS2(a, 8, 96, es, perm, d, 8, 96, es, size, n);
}

int hpp_5(const double* const* a, double* r, uint32_t n)
{
    return int(vorx::det(vorx::mat_array_elems<3, 3>(a, 4, n), r));
}
int c_5(const double* const* a, double* r, uint32_t n) { return vorxDet_ma_64f_3x3_P(a, 4, r, n); }

int hpp_6(const float* a, int32_t os, int32_t es, float* const* d, uint32_t len, uint32_t n)
{
    return int(vorx::copy(vorx::vec_array_strided(a, len, os, es, n), vorx::vec_list_strided(d, len, 0, 4, n)));
}
int c_6(const float* a, int32_t os, int32_t es, float* const* d, uint32_t len, uint32_t n)
{
    return vorxCopy_va_32f_SL(a, os, es, d, 0, 4, len, n);
}

int hpp_7(const float* a, float s, float* d)
{
    return int(vorx::sub(s, vorx::vec<3>(a), vorx::vec<3>(d)));
}
int c_7(const float* a, float s, float* d) { return vorxSub_cv_32f_3x1(a, s, d); }
}
