// Calls that must not compile, one per CASE, each with the message it must give.
#include "vorx.hpp"

void calls(float* a, double* b, const float* c, float** t)
{
#if CASE == 0  // the same operands, combined rightly
    (void)vorx::add(vorx::vec<3>(a), vorx::vec<3>(a), vorx::vec<3>(a));
    (void)vorx::cross_product(vorx::vec<3>(a), vorx::vec<3>(a), vorx::vec<3>(a));
    (void)vorx::add(vorx::vec_list<3>(t, 0, 2), vorx::vec<3>(c), vorx::vec_list<3>(t, 0, 2));
    (void)vorx::det(vorx::mat<3, 3>(b), b);
    (void)b;
#elif CASE == 1
    (void)vorx::add(vorx::vec<3>(a), vorx::mat<3, 3>(a), vorx::vec<3>(a));  // expect: vorx::add takes
#elif CASE == 2
    (void)vorx::cross_product(vorx::vec(a, 3), vorx::vec(a, 3), vorx::vec(a, 3));  // expect: vorx::cross_product has
#elif CASE == 3
    (void)vorx::add(vorx::vec<3>(a), vorx::vec<3>(b), vorx::vec<3>(a));  // expect: share one element type
#elif CASE == 4
    (void)vorx::add(vorx::vec<3>(a), vorx::vec<3>(a), vorx::vec<3>(c));  // expect: outputs be writable
#elif CASE == 5
    (void)vorx::add(vorx::vec_list<3>(t, 0, 2), vorx::vec_strided<3>(a, 8), vorx::vec_list<3>(t, 0, 2));  // expect: a single operand is contiguous in C and L
#elif CASE == 6
    (void)vorx::transposed(vorx::vec<3>(a));  // expect: only a matrix view reads transposed
#elif CASE == 7
    vorx::add(vorx::vec<3>(a), vorx::vec<3>(a), vorx::vec<3>(a));  // expect: nodiscard
#elif CASE == 8
    (void)vorx::det(vorx::mat(b, 3, 3, 24), b);  // expect: vorx::det has
#elif CASE == 9
    (void)vorx::lu_decomp(vorx::transposed(vorx::mat<3, 3>(a)), (uint32_t*)nullptr, vorx::mat<3, 3>(a));  // expect: vorx::lu_decomp takes
#elif CASE == 10
    (void)vorx::add(vorx::vec<3>(a), vorx::vec<4>(a), vorx::vec<3>(a));  // expect: share one element type and fixed size
#endif
}
