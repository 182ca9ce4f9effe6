// Matrix by matrix, object by object. The vorx rows appear once the library exports
// the family.
#include "harness.h"
#include "peers/peers.h"

#include <vorx.h>

namespace {
using namespace vb;

// The vorx kernel of a row, or nothing while the library does not export the family.
#ifdef VORX_HAVE_MUL
#define VORX_MUL(kernel) kernel
#else
#define VORX_MUL(kernel) nullptr
#endif

template <class T, int N> Op mulMama(const char* id, const char* title, Run vorx) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::In, elemOf<T>(), N, N},
                   {Role::Out, elemOf<T>(), N, N}};
    op.tol = 2 * N; // N roundings of sums bounded by N
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) {
                long double s = 0;
                for (int l = 0; l < N; ++l)
                    s += static_cast<long double>(c.a[0].at<T>(k, i, l)) * c.a[1].at<T>(k, l, j);
                out[i * N + j] = s;
            }
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::mul<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::mul<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::mul<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("BLAS", Lay::C, [](const Ctx& c) { lapack_peer::mul<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); });
    if (vorx) op.kernel("vorx", Lay::C, std::move(vorx));
    return op;
}

template <class T>
using Mama = vorxStatus (*)(const T*, int32_t, int32_t, const T*, int32_t, int32_t, T*, int32_t,
                            int32_t, uint32_t);
template <class T, Mama<T> Fn> void vorxC(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.os(1), c.rs(1), c.p<T>(2), c.os(2), c.rs(2), c.count());
}

using MamaL = vorxStatus (*)(const float* const*, int32_t, int32_t, const float* const*, int32_t, int32_t,
                             float* const*, int32_t, int32_t, uint32_t);
template <MamaL Fn> void vorxL(const Ctx& c) {
    Fn(c.t<float>(0), 0, c.rs(0), c.t<float>(1), 0, c.rs(1), c.t<float>(2), 0, c.rs(2), c.count());
}

// The List-layout kernels of an N x N 32f row.
template <int N> void addList(Op& op, Run vorx) {
    op.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::mulL<float, N>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); })
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::mulL<float, N>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); })
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::mulL<float, N>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    if (vorx) op.kernel("vorx", Lay::L, std::move(vorx));
}

void registerMul() {
    auto& r = registry();
    r.push_back(mulMama<float, 3>("mul_mama_3x3_32f", "3x3 by 3x3 32f",
                          VORX_MUL((vorxC<float, vorxMul_mama_32f_3x3>))));
    r.push_back(mulMama<float, 4>("mul_mama_4x4_32f", "4x4 by 4x4 32f",
                          VORX_MUL((vorxC<float, vorxMul_mama_32f_4x4>))));
    r.push_back(mulMama<float, 6>("mul_mama_6x6_32f", "6x6 by 6x6 32f",
                          VORX_MUL((vorxC<float, vorxMul_mama_32f_6x6>))));
    r.push_back(mulMama<double, 4>("mul_mama_4x4_64f", "4x4 by 4x4 64f",
                          VORX_MUL((vorxC<double, vorxMul_mama_64f_4x4>))));

    // 4x4 32f in the Strided and List layouts, 3x3 and 6x6 in the List layout.
    Op op = mulMama<float, 4>("mul_mama_4x4_32f_layouts", "4x4 by 4x4 32f", nullptr);
    op.kernels.clear();
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::mulS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); })
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::mulS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); })
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::mulS<float, 4>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); });
    addList<4>(op, VORX_MUL((vorxL<vorxMul_mama_32f_4x4_L>)));
#ifdef VORX_HAVE_MUL
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxMul_mama_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.os(1), c.rs(1), c.es(1),
                                c.p<float>(2), c.os(2), c.rs(2), c.es(2), c.count());
    });
#endif
    r.push_back(std::move(op));
    Op op3 = mulMama<float, 3>("mul_mama_3x3_32f_layouts", "3x3 by 3x3 32f", nullptr);
    op3.kernels.clear();
    addList<3>(op3, VORX_MUL((vorxL<vorxMul_mama_32f_3x3_L>)));
    r.push_back(std::move(op3));
    Op op6 = mulMama<float, 6>("mul_mama_6x6_32f_layouts", "6x6 by 6x6 32f", nullptr);
    op6.kernels.clear();
    addList<6>(op6, VORX_MUL((vorxL<vorxMul_mama_32f_6x6_L>)));
    r.push_back(std::move(op6));
}

const Registrar reg(registerMul);
} // namespace
