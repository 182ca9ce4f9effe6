// Vector algebra: dot products, cross products, L2 norms and linear combinations of
// 3- and 4-vectors in 32f (arrays in Contiguous layout, the 4-vector dot also Strided
// and List), the 4-vector dot in 64f, and the long run-time dot product and saxpy of
// 1,000 elements (one pair of vectors, called once per object).
#include "harness.h"
#include "peers/vecalg.h"

#include <vorx.h>

namespace {
using namespace vb;

constexpr int kLong = 1000;

// The scalar results of every kernel lie adjacent, whatever the layout of the sources.
template <class T> void adjacentResults(const Ctx& c, std::size_t k, long double* out) { *out = c.p<T>(2)[k]; }

template <class T, int N> long double dotOf(const Ctx& c, std::size_t k) {
    long double s = 0;
    for (int j = 0; j < N; ++j) s += static_cast<long double>(c.a[0].at<T>(k, 0, j)) * c.a[1].at<T>(k, 0, j);
    return s;
}

template <class T, int N> Op dot(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), 1, N}, {Role::In, elemOf<T>(), 1, N}, {Role::Out, elemOf<T>(), 1, 1}};
    op.tol = 2 * N;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) { *out = dotOf<T, N>(c, k); };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::dot<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::dot<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::dot<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { blas_peer::dot<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); });
    return op;
}

template <class T, auto Fn> void vorxDotVava(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.p<T>(1), c.os(1), c.p<T>(2), c.count());
}

// The 4-vector dot with its sources Strided and in Lists.
Op dotLayouts() {
    Op op = dot<float, 4>("dot_v4_32f_layouts", "4-vector dot 32f");
    op.kernels.clear();
    const Canon res = adjacentResults<float>;
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxDotProduct_vava_32f_4x1_S2(c.p<float>(0), c.os(0), c.es(0), c.p<float>(1), c.os(1), c.es(1), c.p<float>(2), c.count());
    }, res);
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::dotS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n); }, res)
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::dotS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n); }, res)
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::dotS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n); }, res)
      .kernel("BLAS", Lay::S2, [](const Ctx& c) { blas_peer::dotS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n); }, res);
    op.kernel("vorx", Lay::L, [](const Ctx& c) {
        vorxDotProduct_vava_32f_4x1_L(c.t<float>(0), 0, c.t<float>(1), 0, c.p<float>(2), c.count());
    }, res);
    op.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::dotL<float, 4>(c.t<float>(0), c.t<float>(1), c.p<float>(2), c.n); }, res)
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::dotL<float, 4>(c.t<float>(0), c.t<float>(1), c.p<float>(2), c.n); }, res)
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::dotL<float, 4>(c.t<float>(0), c.t<float>(1), c.p<float>(2), c.n); }, res)
      .kernel("BLAS", Lay::L, [](const Ctx& c) { blas_peer::dotL<float, 4>(c.t<float>(0), c.t<float>(1), c.p<float>(2), c.n); }, res);
    return op;
}

Op cross() {
    Op op;
    op.id = "cross_v3_32f";
    op.title = "3-vector cross 32f";
    op.operands = {{Role::In, Elem::F32, 1, 3}, {Role::In, Elem::F32, 1, 3}, {Role::Out, Elem::F32, 1, 3}};
    op.tol = 4;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        auto a = [&](int j) { return static_cast<long double>(c.a[0].at<float>(k, 0, j)); };
        auto b = [&](int j) { return static_cast<long double>(c.a[1].at<float>(k, 0, j)); };
        for (int i = 0; i < 3; ++i) out[i] = a((i + 1) % 3) * b((i + 2) % 3) - a((i + 2) % 3) * b((i + 1) % 3);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::cross<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::cross<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::cross<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          vorxCrossProduct_vava_32f_3x1(c.p<float>(0), c.os(0), c.p<float>(1), c.os(1), c.p<float>(2), c.os(2), c.count());
      });
    return op;
}

template <int N, auto Fn> Op norm(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, Elem::F32, 1, N}, {Role::Out, Elem::F32, 1, 1}};
    op.tol = 8;  // the estimate and one Newton step are not the correctly rounded root
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        long double s = 0;
        for (int j = 0; j < N; ++j) s += static_cast<long double>(c.a[0].at<float>(k, 0, j)) * c.a[0].at<float>(k, 0, j);
        *out = std::sqrt(s);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::norm<float, N>(c.p<float>(0), c.p<float>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::norm<float, N>(c.p<float>(0), c.p<float>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::norm<float, N>(c.p<float>(0), c.p<float>(1), c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { blas_peer::norm<float, N>(c.p<float>(0), c.p<float>(1), c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) { Fn(c.p<float>(0), c.os(0), c.p<float>(1), c.count()); });
    return op;
}

constexpr float kScale1 = 0.75f, kScale2 = -1.25f;

template <int N, auto Fn> Op lcomb(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, Elem::F32, 1, N}, {Role::In, Elem::F32, 1, N}, {Role::Out, Elem::F32, 1, N}};
    op.tol = 2;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int j = 0; j < N; ++j)
            out[j] = static_cast<long double>(c.a[0].at<float>(k, 0, j)) * kScale1 +
                     static_cast<long double>(c.a[1].at<float>(k, 0, j)) * kScale2;
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::lcomb<float, N>(c.p<float>(0), kScale1, c.p<float>(1), kScale2, c.p<float>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::lcomb<float, N>(c.p<float>(0), kScale1, c.p<float>(1), kScale2, c.p<float>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::lcomb<float, N>(c.p<float>(0), kScale1, c.p<float>(1), kScale2, c.p<float>(2), c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          Fn(c.p<float>(0), c.os(0), kScale1, c.p<float>(1), c.os(1), kScale2, c.p<float>(2), c.os(2), c.count());
      });
    return op;
}

// One pair of 1,000-element vectors, the call made once per object.
Op dotLong() {
    Op op;
    op.id = "dot_long_32f";
    op.title = "1000-element dot 32f";
    op.operands = {{Role::In, Elem::F32, 1, kLong, true}, {Role::In, Elem::F32, 1, kLong, true}, {Role::Out, Elem::F32, 1, 1}};
    op.tol = 2 * kLong;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) { *out = dotOf<float, kLong>(c, k); };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::dotLong<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::dotLong<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::dotLong<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { blas_peer::dotLong<float>(c.p<float>(0), c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          for (std::size_t k = 0; k < c.n; ++k) vorxDotProduct_vv_32f(c.p<float>(0), c.p<float>(1), c.p<float>(2) + k, kLong);
      });
    return op;
}

Op saxpyLong() {
    Op op;
    op.id = "saxpy_long_32f";
    op.title = "1000-element saxpy 32f";
    op.operands = {{Role::In, Elem::F32, 1, kLong, true}, {Role::In, Elem::F32, 1, kLong, true},
                   {Role::Out, Elem::F32, 1, kLong, true}};
    op.tol = 1;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int j = 0; j < kLong; ++j)
            out[j] = static_cast<float>(c.a[0].at<float>(k, 0, j) * kScale1) + static_cast<long double>(c.a[1].at<float>(k, 0, j));
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::saxpyLong<float>(c.p<float>(0), kScale1, c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::saxpyLong<float>(c.p<float>(0), kScale1, c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::saxpyLong<float>(c.p<float>(0), kScale1, c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { blas_peer::saxpyLong<float>(c.p<float>(0), kScale1, c.p<float>(1), c.p<float>(2), kLong, c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          for (std::size_t k = 0; k < c.n; ++k) vorxSaxpy_vv_32f(c.p<float>(0), kScale1, c.p<float>(1), c.p<float>(2), kLong);
      });
    return op;
}

void registerVecAlg() {
    auto& r = registry();
    r.push_back(dot<float, 3>("dot_v3_32f", "3-vector dot 32f"));
    r.back().kernel("vorx", Lay::C, vorxDotVava<float, vorxDotProduct_vava_32f_3x1>);
    r.push_back(dot<float, 4>("dot_v4_32f", "4-vector dot 32f"));
    r.back().kernel("vorx", Lay::C, vorxDotVava<float, vorxDotProduct_vava_32f_4x1>);
    r.push_back(dotLayouts());
    r.push_back(dot<double, 4>("dot_v4_64f", "4-vector dot 64f"));
    r.back().kernel("vorx", Lay::C, vorxDotVava<double, vorxDotProduct_vava_64f_4x1>);
    r.push_back(cross());
    r.push_back(norm<3, vorxL2Norm_va_32f_3x1>("norm_v3_32f", "3-vector L2 norm 32f"));
    r.push_back(norm<4, vorxL2Norm_va_32f_4x1>("norm_v4_32f", "4-vector L2 norm 32f"));
    r.push_back(lcomb<3, vorxLComb_vava_32f_3x1>("lcomb_v3_32f", "3-vector linear combination 32f"));
    r.push_back(lcomb<4, vorxLComb_vava_32f_4x1>("lcomb_v4_32f", "4-vector linear combination 32f"));
    r.push_back(dotLong());
    r.push_back(saxpyLong());
}

const Registrar reg(registerVecAlg);
} // namespace
