// Matrix by vector, gaxpy and multiplication by a constant, object by object.
#include "harness.h"
#include "peers/matvec.h"

#include <vorx.h>

namespace {
using namespace vb;

// Which operand is one object for the whole call.
enum class One { None, Matrix, Vector };

// d_k = A_k x_k (plus y_k with `plus`); peers given the elements' steps.
template <class T, int N, bool Plus = false> Op matvecOp(const char* id, const char* title, One one) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N, one == One::Matrix}, {Role::In, elemOf<T>(), 1, N, one == One::Vector}};
    if (Plus) op.operands.push_back({Role::In, elemOf<T>(), 1, N});
    op.operands.push_back({Role::Out, elemOf<T>(), 1, N});
    op.tol = 2 * N + 1;  // N roundings of sums bounded by N, and the addition
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int i = 0; i < N; ++i) {
            long double s = Plus ? c.a[2].at<T>(k, 0, i) : 0;
            for (int j = 0; j < N; ++j) s += static_cast<long double>(c.a[0].at<T>(k, i, j)) * c.a[1].at<T>(k, 0, j);
            out[i] = s;
        }
    };
    if constexpr (Plus) {
        op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::gaxpy<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.p<T>(3), c.n); })
          .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::gaxpy<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.p<T>(3), c.n); })
          .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::gaxpy<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.p<T>(3), c.n); })
          .kernel("BLAS", Lay::C, [](const Ctx& c) { lapack_peer::gaxpy<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.p<T>(3), c.n); });
    } else {
        const long as = one == One::Matrix ? 0 : N * N, xs = one == One::Vector ? 0 : N;
        op.kernel("plain -O2", Lay::C, [=](const Ctx& c) { plain_O2::matvec<T, N>(c.p<T>(0), as, c.p<T>(1), xs, c.p<T>(2), c.n); })
          .kernel("plain -O3", Lay::C, [=](const Ctx& c) { plain_O3::matvec<T, N>(c.p<T>(0), as, c.p<T>(1), xs, c.p<T>(2), c.n); })
          .kernel("Eigen", Lay::C, [=](const Ctx& c) { eigen_peer::matvec<T, N>(c.p<T>(0), as, c.p<T>(1), xs, c.p<T>(2), c.n); })
          .kernel("BLAS", Lay::C, [=](const Ctx& c) { lapack_peer::matvec<T, N>(c.p<T>(0), as, c.p<T>(1), xs, c.p<T>(2), c.n); });
    }
    return op;
}

template <class T, auto Fn> void vorxMava(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.os(1), c.p<T>(2), c.os(2), c.count());
}

// d = a * v, objects of R x C elements.
template <int R, int C> Op scaleOp(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, Elem::F32, R, C}, {Role::Out, Elem::F32, R, C}};
    op.tol = 0.5;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int i = 0; i < R; ++i)
            for (int j = 0; j < C; ++j) out[i * C + j] = static_cast<float>(c.a[0].at<float>(k, i, j) * 1.375L);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::scale<float, R * C>(c.p<float>(0), 1.375f, c.p<float>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::scale<float, R * C>(c.p<float>(0), 1.375f, c.p<float>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::scale<float, R * C>(c.p<float>(0), 1.375f, c.p<float>(1), c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { lapack_peer::scale<float, R * C>(c.p<float>(0), 1.375f, c.p<float>(1), c.n); });
    return op;
}

void registerMatVec() {
    auto& r = registry();
    r.push_back(matvecOp<float, 3>("mul_mv_3x3_32f", "3x3 by 3-vector 32f", One::None));
    r.back().kernel("vorx", Lay::C, vorxMava<float, vorxMul_mava_32f_3x3>);
    r.push_back(matvecOp<float, 4>("mul_mv_4x4_32f", "4x4 by 4-vector 32f", One::None));
    r.back().kernel("vorx", Lay::C, vorxMava<float, vorxMul_mava_32f_4x4>);
    r.push_back(matvecOp<float, 6>("mul_mv_6x6_32f", "6x6 by 6-vector 32f", One::None));
    r.back().kernel("vorx", Lay::C, vorxMava<float, vorxMul_mava_32f_6x6>);
    r.push_back(matvecOp<double, 4>("mul_mv_4x4_64f", "4x4 by 4-vector 64f", One::None));
    r.back().kernel("vorx", Lay::C, vorxMava<double, vorxMul_mava_64f_4x4>);
    r.push_back(matvecOp<float, 4>("mul_mav_4x4_32f", "4x4 matrices by one 4-vector 32f", One::Vector));
    r.back().kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxMul_mav_32f_4x4(c.p<float>(0), c.os(0), c.rs(0), c.p<float>(1), c.p<float>(2), c.os(2), c.count());
    });
    r.push_back(matvecOp<float, 4>("mul_mva_4x4_32f", "one 4x4 by 4-vectors 32f", One::Matrix));
    r.back().kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxMul_mva_32f_4x4(c.p<float>(0), c.rs(0), c.p<float>(1), c.os(1), c.p<float>(2), c.os(2), c.count());
    });

    // 4x4 by 4-vector 32f in the Strided and List layouts.
    Op op = matvecOp<float, 4>("mul_mv_4x4_32f_layouts", "4x4 by 4-vector 32f", One::None);
    op.kernels.clear();
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxMul_mava_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.os(1), c.es(1),
                                c.p<float>(2), c.os(2), c.es(2), c.count());
    });
    op.kernel("vorx", Lay::L, [](const Ctx& c) {
        vorxMul_mava_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.t<float>(1), 0, c.t<float>(2), 0, c.count());
    });
    auto strided = [](auto fn) {
        return [fn](const Ctx& c) { fn(c.p<float>(0), c.os(0), c.p<float>(1), c.os(1), c.p<float>(2), c.os(2), c.es(0), c.n); };
    };
    op.kernel("plain -O2", Lay::S2, strided(plain_O2::matvecS<float, 4>))
      .kernel("plain -O3", Lay::S2, strided(plain_O3::matvecS<float, 4>))
      .kernel("Eigen", Lay::S2, strided(eigen_peer::matvecS<float, 4>))
      .kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::matvecL<float, 4>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); })
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::matvecL<float, 4>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); })
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::matvecL<float, 4>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    r.push_back(std::move(op));

    r.push_back(matvecOp<float, 4, true>("gaxpy_4x4_32f", "gaxpy 4x4 32f", One::Matrix));
    r.back().kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxGaxpy_va_32f_4x4(c.p<float>(0), c.rs(0), c.p<float>(1), c.os(1), c.p<float>(2), c.os(2), c.p<float>(3),
                             c.os(3), c.count());
    });

    r.push_back(scaleOp<4, 4>("scale_m4_32f", "4x4 by a constant 32f"));
    r.back().kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxMul_mac_32f_4x4(c.p<float>(0), c.os(0), c.rs(0), 1.375f, c.p<float>(1), c.os(1), c.rs(1), c.count());
    });
    r.push_back(scaleOp<1, 3>("scale_v3_32f", "3-vector by a constant 32f"));
    r.back().kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxMul_vac_32f_3x1(c.p<float>(0), c.os(0), 1.375f, c.p<float>(1), c.os(1), c.count());
    });
}

const Registrar reg(registerMatVec);
} // namespace
