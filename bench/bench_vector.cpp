// Vector addition: 3- and 4-vectors in both types, and the 3-vector 32f sum in the
// other layouts to show what a layout costs.
#include "harness.h"
#include "peers/peers.h"

#include <vorx.h>

namespace {
using namespace vb;

// dst = src1 + src2, one vector per object; the sum rounded once to T.
template <class T, int N> Op vectorAdd(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), 1, N}, {Role::In, elemOf<T>(), 1, N},
                   {Role::Out, elemOf<T>(), 1, N}};
    op.tol = 0.5; // one rounding of the exact sum
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int j = 0; j < N; ++j)
            out[j] = static_cast<T>(c.a[0].at<T>(k, 0, j) + static_cast<long double>(c.a[1].at<T>(k, 0, j)));
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::addC<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::addC<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::addC<T, N>(c.p<T>(0), c.p<T>(1), c.p<T>(2), c.n); });
    return op;
}

// vorx's Contiguous call for the array-by-array sum.
template <class T, auto Fn> void vorxVava(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.p<T>(1), c.os(1), c.p<T>(2), c.os(2), c.count());
}

void registerVectorAdd() {
    auto& r = registry();
    r.push_back(vectorAdd<float, 3>("add_v3_32f", "3-vector add 32f"));
    r.back().kernel("vorx", Lay::C, vorxVava<float, vorxAdd_vava_32f_3x1>);
    r.push_back(vectorAdd<float, 4>("add_v4_32f", "4-vector add 32f"));
    r.back().kernel("vorx", Lay::C, vorxVava<float, vorxAdd_vava_32f_4x1>);
    r.push_back(vectorAdd<double, 3>("add_v3_64f", "3-vector add 64f"));
    r.back().kernel("vorx", Lay::C, vorxVava<double, vorxAdd_vava_64f_3x1>);
    r.push_back(vectorAdd<double, 4>("add_v4_64f", "4-vector add 64f"));
    r.back().kernel("vorx", Lay::C, vorxVava<double, vorxAdd_vava_64f_4x1>);

    // The same 3-vector sum in the Strided, Pointer and List layouts.
    Op op = vectorAdd<float, 3>("add_v3_32f_layouts", "3-vector add 32f");
    op.kernels.clear();
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxAdd_vava_32f_3x1_S2(c.p<float>(0), c.os(0), c.es(0), c.p<float>(1), c.os(1), c.es(1),
                                c.p<float>(2), c.os(2), c.es(2), c.count());
    });
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) {
        plain_O2::addS<float, 3>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n);
    });
    op.kernel("plain -O3", Lay::S2, [](const Ctx& c) {
        plain_O3::addS<float, 3>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n);
    });
    op.kernel("Eigen", Lay::S2, [](const Ctx& c) {
        eigen_peer::addS<float, 3>(c.p<float>(0), c.p<float>(1), c.p<float>(2), c.os(0), c.es(0), c.n);
    });
    op.kernel("vorx", Lay::P, [](const Ctx& c) {
        vorxAdd_vava_32f_3x1_P(c.t<float>(0), 0, c.t<float>(1), 0, c.t<float>(2), 0, c.count());
    });
    op.kernel("plain -O2", Lay::P, [](const Ctx& c) { plain_O2::addP<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    op.kernel("plain -O3", Lay::P, [](const Ctx& c) { plain_O3::addP<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    op.kernel("Eigen", Lay::P, [](const Ctx& c) { eigen_peer::addP<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    op.kernel("vorx", Lay::L, [](const Ctx& c) {
        vorxAdd_vava_32f_3x1_L(c.t<float>(0), 0, c.t<float>(1), 0, c.t<float>(2), 0, c.count());
    });
    op.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::addL<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    op.kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::addL<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    op.kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::addL<float, 3>(c.t<float>(0), c.t<float>(1), c.t<float>(2), c.n); });
    r.push_back(std::move(op));
}

const Registrar reg(registerVectorAdd);
} // namespace
