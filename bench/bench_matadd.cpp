// Matrix addition with a transposed single source: each object of an array plus one
// matrix read transposed. The vorx rows appear once the library exports the family.
#include "harness.h"
#include "peers/peers.h"

#include <vorx.h>

namespace {
using namespace vb;

// The vorx kernels of a row, or nothing while the library does not export the family.
#ifdef VORX_HAVE_MATADD
#define VORX_MATADD(kernel) kernel
#else
#define VORX_MATADD(kernel) nullptr
#endif

template <int N> Op addMamT(const char* id, const char* title, Run vorxC, Run vorxL) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, Elem::F32, N, N}, {Role::In, Elem::F32, N, N, true},
                   {Role::Out, Elem::F32, N, N}};
    op.tol = 0.5;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j)
                out[i * N + j] = static_cast<float>(c.a[0].at<float>(k, i, j) +
                                                    static_cast<long double>(c.a[1].at<float>(0, j, i)));
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::addMatT<float, N>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::addMatT<float, N>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::addMatT<float, N>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.n); })
      .kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::addMatTL<float, N>(c.t<float>(0), c.p<float>(1), c.t<float>(2), c.n); })
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::addMatTL<float, N>(c.t<float>(0), c.p<float>(1), c.t<float>(2), c.n); })
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::addMatTL<float, N>(c.t<float>(0), c.p<float>(1), c.t<float>(2), c.n); });
    if (vorxC) op.kernel("vorx", Lay::C, std::move(vorxC)).kernel("vorx", Lay::L, std::move(vorxL));
    return op;
}

using MamT = vorxStatus (*)(const float*, int32_t, int32_t, const float*, int32_t, float*, int32_t,
                            int32_t, uint32_t);
using MamTL = vorxStatus (*)(const float* const*, int32_t, int32_t, const float*, int32_t,
                             float* const*, int32_t, int32_t, uint32_t);
template <MamT Fn> void vorxC(const Ctx& c) {
    Fn(c.p<float>(0), c.os(0), c.rs(0), c.p<float>(1), c.rs(1), c.p<float>(2), c.os(2), c.rs(2), c.count());
}
template <MamTL Fn> void vorxL(const Ctx& c) {
    Fn(c.t<float>(0), 0, c.rs(0), c.p<float>(1), c.rs(1), c.t<float>(2), 0, c.rs(2), c.count());
}

void registerMatAdd() {
    auto& r = registry();
    r.push_back(addMamT<3>("add_mamT_3x3_32f", "3x3 + 3x3 transposed 32f",
                          VORX_MATADD(vorxC<vorxAdd_mamT_32f_3x3>),
                          VORX_MATADD(vorxL<vorxAdd_mamT_32f_3x3_L>)));
    r.push_back(addMamT<6>("add_mamT_6x6_32f", "6x6 + 6x6 transposed 32f",
                          VORX_MATADD(vorxC<vorxAdd_mamT_32f_6x6>),
                          VORX_MATADD(vorxL<vorxAdd_mamT_32f_6x6_L>)));
}

const Registrar reg(registerMatAdd);
} // namespace
