// The C++ interface: every built name reached through vorx.hpp, and what the header
// adds over the C calls (adapters, transposed views, checked calls, statuses).
#include <gtest/gtest.h>
#if __has_include(<Eigen/Core>)
#include <Eigen/Core>
#endif

#include <array>
#include <cstring>
#include <span>
#include <vector>

#include "cpp_calls.h"
#include "every_name.h"

const char* vt_called = nullptr;

TEST(CppHeader, EveryBuiltNameIsReachedByItsOperands)
{
    Calls c;
    cppCallsAll(c);
    EXPECT_EQ(c.calls, kCppCalls);
    EXPECT_EQ(static_cast<int>(c.names.size()), kCppCalls);
    EXPECT_EQ(&vorx::version(), vorxGetLibVersion());
    for (const auto& w : c.wrong) ADD_FAILURE() << w;
}

// Adapters and views give the C function the addresses and strides it would get
// written out by hand: compare with the C call on the same data, bit for bit.
TEST(CppHeader, AdaptersPassTheLayoutOfTheContainer)
{
    std::vector<std::array<float, 4>> pts(7), viaHpp(7), viaC(7);
    std::array<std::array<float, 4>, 4> m{};
    for (int k = 0; k < 7; ++k)
        for (int j = 0; j < 4; ++j) pts[k][j] = static_cast<float>(k * 4 + j) * 0.37f - 3;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) m[i][j] = static_cast<float>(i - 2 * j) * 0.5f + (i == j);
    const auto& cm = m;
    ASSERT_EQ(vorx::mul(vorx::mat(cm), vorx::vec_array(std::span(std::as_const(pts))),
                        vorx::vec_array(std::span(viaHpp))),
              vorx::status::ok);
    ASSERT_EQ(vorxMul_mva_32f_4x4(m[0].data(), 16, pts[0].data(), 16, viaC[0].data(), 16, 7), 0);
    EXPECT_EQ(std::memcmp(viaHpp.data(), viaC.data(), sizeof(float) * 28), 0);

    // Run-time sizes, a transposed source and element-pointer tables: a stored 4x3
    // matrix read as 3x4 plus a 3x4 one (width 4, height 3 are the operation's).
    double a[12], b[12], d[12], e[12];
    const double *ta[12], *tb[12];
    double *td[12], *te[12];
    for (int i = 0; i < 12; ++i) {
        a[i] = i * 1.25 - 4, b[i] = 7 - i * 0.5;
        ta[i] = &a[11 - i], tb[i] = &b[(5 * i) % 12], td[i] = &d[i], te[i] = &e[i];
    }
    ASSERT_EQ(vorx::add(vorx::transposed(vorx::mat_elems(ta, 4, 3, 0)), vorx::mat_elems(tb, 3, 4, 0),
                        vorx::mat_elems(td, 3, 4, 0)),
              vorx::status::ok);
    ASSERT_EQ(vorxAdd_mTm_64f_P(ta, 0, tb, 0, te, 0, 4, 3), 0);
    EXPECT_EQ(std::memcmp(d, e, sizeof d), 0);
    EXPECT_EQ(d[1], a[11 - 3] + b[5]);  // result (0, 1): stored (1, 0), entry 3, plus (0, 1), entry 1
}

TEST(CppHeader, CheckedCallsThrowTheTypeOfTheStatus)
{
    std::array<double, 9> singular{}, out{};
    uint32_t perm[3];
    EXPECT_THROW(vorx::checked::lu_decomp(vorx::mat<3, 3>(singular.data()), perm, vorx::mat<3, 3>(out.data())),
                 vorx::zero_divide);
    float* none[3] = {nullptr, nullptr, nullptr};
    try {
        vorx::checked::add(vorx::vec_elems<3>(none, 0), vorx::vec_elems<3>(none, 0), vorx::vec_elems<3>(none, 0));
        ADD_FAILURE() << "no exception";
    } catch (const vorx::error& e) {
        EXPECT_EQ(e.code(), vorx::status::null_pointer);
        EXPECT_NE(dynamic_cast<const vorx::null_pointer*>(&e), nullptr);
    }
    float v[2] = {1, 2}, w[2];
    EXPECT_THROW(vorx::checked::add(vorx::vec(v, 0), vorx::vec(v, 0), vorx::vec(w, 0)), vorx::bad_size);
    std::array<float, 9> spd = {4, 1, 0, 1, 3, 0, 0, 0, -1}, l{};
    EXPECT_THROW(vorx::checked::cholesky_decomp(vorx::mat<3, 3>(spd.data()), vorx::mat<3, 3>(l.data())),
                 vorx::not_positive_definite);
}

#if __has_include(<Eigen/Core>)
// A column-major Eigen matrix is the transposed view of what it stores: the product
// of two of them is the mTmT form, and must be Eigen's product.
TEST(CppHeader, EigenMatricesInTheirStorageOrder)
{
    Eigen::Matrix4d a, b;
    Eigen::Vector4d v, w;
    for (int i = 0; i < 4; ++i) {
        v(i) = 1 - i;
        for (int j = 0; j < 4; ++j) a(i, j) = i + 2 * j, b(i, j) = (i == j) - 0.25 * j;
    }
    Eigen::Matrix<double, 4, 4, Eigen::RowMajor> d;
    ASSERT_EQ(vorx::mul(vorx::mat(a), vorx::mat(b), vorx::mat(d)), vorx::status::ok);
    EXPECT_EQ(d, a * b);  // small integers and quarters: exact either way
    ASSERT_EQ(vorx::mul(vorx::mat(a), vorx::vec(v), vorx::vec(w)), vorx::status::ok);
    EXPECT_EQ(w, a * v);
}
#endif
